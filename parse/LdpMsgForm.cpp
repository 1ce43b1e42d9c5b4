#include "parse/LdpMsgForm.h"

#include <cinttypes>
#include <cstdio>
#include <string>

namespace Ldp {

Zel::String ldpMsgHdrForm(const LdpMsgHdr& hdr) {
  std::string out("LdpMsg: ");
  out += stringValue(hdr.type()).view();
  char rest[64];
  // totalLength() wraps to 0..3 for the largest length fields: those are short too.
  if (hdr.totalLength() >= sizeof(LdpMsgHdr)) {
    std::snprintf(rest, sizeof rest, ", U(%d), Len(%d), Id(%" PRIu32 ")", hdr.unknown() ? 1 : 0,
                  hdr.length(), hdr.msgId());
  } else {
    std::snprintf(rest, sizeof rest, ", U(%d), Len(%d), Id(truncated)", hdr.unknown() ? 1 : 0,
                  hdr.length());
  }
  out += rest;
  return Zel::String(out);
}

}  // namespace Ldp
