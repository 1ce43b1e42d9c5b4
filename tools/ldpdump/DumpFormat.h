#pragma once
// Helpers that Dumper.cpp, DumperText.cpp and DumperJson.cpp share, internal to
// ldpdump: the exception a failed parser assertion becomes while a Dumper exists,
// and the number, name and string forms the output is built from.

#include <charconv>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "core/LdpTypes.h"
#include "platform/zel/String.h"
#include "tools/ldpdump/BigEndian.h"

namespace LdpDump {

// What the assertion handler throws while a Dumper exists.
struct ParserAssertion {
  const char* text;
  const char* file;
  int line;
};

// The reason a failed assertion gives as its verdict: its text, file and line.
inline Zel::String assertionReason(const ParserAssertion& a) {
  const char* slash = std::strrchr(a.file, '/');
  char text[256];
  std::snprintf(text, sizeof text, "parser assertion failed: %s (%s:%d)", a.text,
                slash ? slash + 1 : a.file, a.line);
  return Zel::String(text);
}

// The E bit of a Notification carrying `code`; a code the library has no answer for
// (none that its parsers give) counts as advisory.
inline bool eBitOf(Ldp::LdpStatusCode code) {
  return Ldp::LdpStatusCodeEnumType().isEnumerator(code) && Ldp::statusCodeEBitForStatusCode(code);
}

// A string form; a failed assertion while building it gives its text instead.
template <class F>
std::string safeText(F&& form) {
  try {
    return std::string(form().view());
  } catch (const ParserAssertion& a) {
    return std::string(assertionReason(a).view());
  }
}

// Appends v in decimal.
inline void append(std::string& s, uint64_t v) {
  char text[24];
  s.append(text, std::to_chars(text, text + sizeof text, v).ptr);
}

// Appends v as 0x and at least `digits` upper-case hex digits.
inline void appendHex(std::string& s, uint32_t v, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*" PRIX32, digits, v);
  s += text;
}

// Appends v as a quoted JSON string (defined in DumperJson.cpp).
void jsonString(std::string& s, std::string_view v);

// A message type's name, or null for a number that is none.
inline const char* msgTypeName(uint32_t type) {
  return Ldp::LdpMsgTypeEnumType().enumeratorName(type);
}

// A status code's name, or "unknown" for a number that is none.
inline const char* statusName(Ldp::LdpStatusCode code) {
  const char* name = Ldp::LdpStatusCodeEnumType().enumeratorName(code);
  return name ? name : "unknown";
}

}  // namespace LdpDump
