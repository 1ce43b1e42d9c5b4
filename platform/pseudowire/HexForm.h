#pragma once
// The hexadecimal form shared by the pseudowire code and bit-set types: "0x" and a
// fixed number of lower-case digits. Internal to platform/pseudowire.

#include <cstdint>
#include <cstdio>

#include "platform/ovo/TextScan.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire::HexForm {

// "0x" and `digits` lower-case hex digits of `v`.
inline Zel::String text(uint32_t v, int digits) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "0x%0*x", digits, static_cast<unsigned>(v));
  return Zel::String(buf);
}

// Reads "0x" (or "0X") and the run of hex digits after it, which must hold 1 to
// `maxDigits` digits. Commits `p` only on success.
inline bool read(Zel::StrIt& p, const Zel::StrIt& end, unsigned maxDigits, uint32_t* out) {
  Zel::StrIt q = p;
  if (end - q < 2 || q[0] != '0' || (q[1] != 'x' && q[1] != 'X')) return false;
  q += 2;
  uint32_t v = 0;
  unsigned n = 0;
  for (int d; q != end && (d = Ovo::TextScan::hexValue(*q)) >= 0; ++q, ++n) {
    if (n == maxDigits) return false;
    v = v * 16 + static_cast<uint32_t>(d);
  }
  if (n == 0) return false;
  p = q;
  *out = v;
  return true;
}

}  // namespace Pseudowire::HexForm
