#pragma once
// printf-style formatting into a Zel::String: the one place where code turns a
// format and its arguments into a String. The text is never cut short: a short
// one is formatted on the stack, a longer one formatted again at its full size.

#include <cstdarg>

#include "platform/zel/String.h"

namespace Zel {

// What printf would write for `fmt` and the arguments; empty when the format
// fails (an encoding error).
[[gnu::format(printf, 1, 2)]] String format(const char* fmt, ...);
// The same with the arguments as a va_list, for a function that takes its own
// `...`. `args` is used up, as by vprintf.
[[gnu::format(printf, 1, 0)]] String vformat(const char* fmt, va_list args);

}  // namespace Zel
