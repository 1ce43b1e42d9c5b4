#pragma once
// Range failures: a value handed to a value type (or a string form that does not
// parse) is refused with a RangeException carrying a fixed message. The target
// of the failed operation is left unchanged.

#include <exception>

#include "platform/zel/String.h"

namespace Zel {

class RangeException : public std::exception {
 public:
  explicit RangeException(String message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.charPtr(); }
  const String& message() const { return message_; }

 private:
  String message_;
};

[[noreturn]] void throwRangeException(const String& message);

// An existing child asked for again with other construction arguments:
// "<type> '<name>' cannot be re-instantiated with a different '<attr>'".
[[noreturn]] void throwReinstantiation(const char* type, const String& name, const char* attr);

// A null handed to a mutator that needs an object:
// "Null <param> not allowed for <type>::<attr>".
[[noreturn]] void throwNullRefused(const char* param, const char* type, const char* attr);

}  // namespace Zel
