#include "platform/zel/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Zel {

namespace {
AssertionHandler handler_ = nullptr;
}

AssertionHandler assertionHandlerIs(AssertionHandler handler) {
  AssertionHandler old = handler_ ? handler_ : defaultAssertionHandler;
  handler_ = handler;
  return old;
}

void defaultAssertionHandler(const char* text, const char* file, int line) {
  std::fprintf(stderr, "Assertion failed: %s (%s:%d)\n", text, file, line);
  std::fflush(stderr);
}

void assertionFailed(const char* text, const char* file, int line) {
  (handler_ ? handler_ : defaultAssertionHandler)(text, file, line);
  std::abort();
}

}  // namespace Zel
