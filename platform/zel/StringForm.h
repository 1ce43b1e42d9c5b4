#pragma once
// String forms ("streps") of values, and the helpers that parse them back.
//
// valueToStrep(v) gives the form that sequenceToValue(it, end, &v) reads back.
// Parsing advances `it` past what it consumed and throws RangeException on
// failure. The forms of the primitive types are:
//   bool     True | False
//   integers decimal, '-' only for signed types
//   double   shortest decimal that reads back to the same double
//   String   single-quoted, with \\ \' and \xHH escapes for other bytes outside 0x20..0x7E

#include <cstdint>
#include <string>
#include <type_traits>

#include "platform/zel/Exception.h"
#include "platform/zel/String.h"

namespace Zel {

using StrIt = String::IteratorConst;

// Consumes `literal` at `it` or throws "Expected '<literal>'".
void needString(StrIt& it, const StrIt& end, std::string_view literal);
// Consumes `literal` at `it` when it is there; tells whether it was.
bool acceptString(StrIt& it, const StrIt& end, std::string_view literal);

String valueToStrep(bool v);
String valueToStrep(double v);
String valueToStrep(const String& v);
String valueToStrep(int64_t v);
String valueToStrep(uint64_t v);
template <class T>
requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) String valueToStrep(T v) {
  if constexpr (std::is_signed_v<T>) {
    return valueToStrep(static_cast<int64_t>(v));
  } else {
    return valueToStrep(static_cast<uint64_t>(v));
  }
}

void sequenceToValue(StrIt& it, const StrIt& end, bool* out);
void sequenceToValue(StrIt& it, const StrIt& end, double* out);
void sequenceToValue(StrIt& it, const StrIt& end, String* out);
// Integers: parsed as 64-bit, then range-checked against [lo, hi].
int64_t sequenceToSigned(StrIt& it, const StrIt& end, int64_t lo, int64_t hi);
uint64_t sequenceToUnsigned(StrIt& it, const StrIt& end, uint64_t hi);
template <class T>
requires(std::is_integral_v<T> &&
         !std::is_same_v<T, bool>) void sequenceToValue(StrIt& it, const StrIt& end, T* out) {
  if constexpr (std::is_signed_v<T>) {
    *out = static_cast<T>(sequenceToSigned(it, end, INT64_C(-1) << (8 * sizeof(T) - 1),
                                           static_cast<int64_t>(~0ull >> (65 - 8 * sizeof(T)))));
  } else {
    *out = static_cast<T>(sequenceToUnsigned(it, end, ~0ull >> (64 - 8 * sizeof(T))));
  }
}

// Parses one attribute value; a failure is rethrown as
// "Invalid value for attribute '<attrName>': <reason>".
[[noreturn]] void rethrowNamingAttribute(const char* attrName, const RangeException& e);
template <class T>
T deserializeAttr(StrIt& it, const StrIt& end, const char* attrName) {
  T v{};
  try {
    sequenceToValue(it, end, &v);
  } catch (const RangeException& e) {
    rethrowNamingAttribute(attrName, e);
  }
  return v;
}

// Parses a whole text as a T: the value must use up every character.
template <class T>
T parseWhole(const String& text, const char* failure) {
  StrIt it = text.begin();
  const StrIt end = text.end();
  T v{};
  try {
    sequenceToValue(it, end, &v);
  } catch (const RangeException&) {
    throwRangeException(failure);
  }
  if (it != end) throwRangeException(failure);
  return v;
}

}  // namespace Zel
