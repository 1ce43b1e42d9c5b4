#pragma once
// The one assertion facility of the code base. A failed assertion reports the
// asserted expression's text exactly as written and stops the process. The
// handler is replaceable so that tests and fuzz targets can observe a failure;
// a handler that returns still ends in abort().

namespace Zel {

using AssertionHandler = void (*)(const char* text, const char* file, int line);

// Installs `handler` (nullptr restores the default) and returns the previous one.
AssertionHandler assertionHandlerIs(AssertionHandler handler);

// The default handler: prints "Assertion failed: <text> (<file>:<line>)" on stderr.
void defaultAssertionHandler(const char* text, const char* file, int line);

[[noreturn]] void assertionFailed(const char* text, const char* file, int line);

}  // namespace Zel

#define ZEL_ASSERT(cond) \
  ((cond) ? static_cast<void>(0) : ::Zel::assertionFailed(#cond, __FILE__, __LINE__))

// The same, reporting `text` (a string literal) instead of the expression, for
// invariants whose stated meaning is clearer than their code.
#define ZEL_ASSERT_TEXT(cond, text) \
  ((cond) ? static_cast<void>(0) : ::Zel::assertionFailed(text, __FILE__, __LINE__))
