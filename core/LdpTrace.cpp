#include "core/LdpTrace.h"

#include <cstdarg>

namespace Ldp {

namespace TraceDetail {
int level_ = -1;
}

namespace {

void stderrSink(int level, std::string_view text) {
  std::fprintf(stderr, "ldp[%d] %.*s\n", level, static_cast<int>(text.size()), text.data());
}

TraceSink sink_ = stderrSink;

}  // namespace

void traceLevelIs(int level) { TraceDetail::level_ = level; }
int traceLevel() { return TraceDetail::level_; }

TraceSink traceSinkIs(TraceSink sink) {
  TraceSink old = sink_;
  sink_ = sink ? sink : stderrSink;
  return old;
}

void trace(int level, const char* format, ...) {
  char buf[512];
  va_list args;
  va_start(args, format);
  int n = std::vsnprintf(buf, sizeof buf, format, args);
  va_end(args);
  if (n < 0) return;
  size_t len = static_cast<size_t>(n) < sizeof buf ? static_cast<size_t>(n) : sizeof buf - 1;
  sink_(level, std::string_view(buf, len));
}

}  // namespace Ldp
