#include "platform/zel/Format.h"

#include <cstdio>
#include <memory>

namespace Zel {

String vformat(const char* fmt, va_list args) {
  // Trace and error texts fit in this; a longer one costs a second pass.
  char buf[256];
  va_list again;
  va_copy(again, args);
  const int n = std::vsnprintf(buf, sizeof buf, fmt, args);
  if (n < 0) {
    va_end(again);
    return String();
  }
  const size_t len = static_cast<size_t>(n);
  if (len < sizeof buf) {
    va_end(again);
    return String(buf, len);
  }
  const std::unique_ptr<char[]> big(new char[len + 1]);
  std::vsnprintf(big.get(), len + 1, fmt, again);
  va_end(again);
  return String(big.get(), len);
}

String format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  String s = vformat(fmt, args);
  va_end(args);
  return s;
}

}  // namespace Zel
