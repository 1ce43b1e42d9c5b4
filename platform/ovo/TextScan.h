#pragma once
// Scanning helpers shared by the parsers of the network value types (Ovo, L3,
// Mpls). Each helper works on the cursor it is given and reports success; the
// parsers scan with a local copy of their iterator and commit it only when the
// whole value was read, so a failed parse moves nothing.

#include <cstdint>

#include "platform/zel/StringForm.h"

namespace Ovo::TextScan {

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The value of a hexadecimal digit (either case), or -1.
inline int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Reads the longest run of decimal digits at `p` (at least one; no sign). The
// value saturates at UINT64_MAX, so an over-long run is simply "too large" for
// every caller's range check. With `noLeadingZero` a run of more than one digit
// that starts with '0' is refused.
inline bool decimal(Zel::StrIt& p, const Zel::StrIt& end, uint64_t* out,
                    bool noLeadingZero = false) {
  Zel::StrIt q = p;
  uint64_t v = 0;
  while (q != end && isDigit(*q)) {
    auto d = static_cast<uint64_t>(*q - '0');
    v = v > (UINT64_MAX - d) / 10 ? UINT64_MAX : v * 10 + d;
    ++q;
  }
  if (q == p) return false;
  if (noLeadingZero && q - p > 1 && *p == '0') return false;
  p = q;
  *out = v;
  return true;
}

// Reads a dotted quad: exactly four decimal octets 0..255 separated by '.'. An
// octet has no sign and no leading zero ("0" itself is fine; "010" is refused,
// as it reads as octal to inet_aton). Stops right after the fourth octet.
inline bool dottedQuad(Zel::StrIt& p, const Zel::StrIt& end, uint32_t* out) {
  Zel::StrIt q = p;
  uint32_t v = 0;
  for (int i = 0; i < 4; ++i) {
    if (i > 0) {
      if (q == end || *q != '.') return false;
      ++q;
    }
    uint64_t octet;
    if (!decimal(q, end, &octet, true) || octet > 255) return false;
    v = (v << 8) | static_cast<uint32_t>(octet);
  }
  p = q;
  *out = v;
  return true;
}

}  // namespace Ovo::TextScan
