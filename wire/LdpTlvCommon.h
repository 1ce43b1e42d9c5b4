#pragma once
// What the .cpp files of the TLV overlays share; internal to wire/: the type
// descriptor of a TLV overlay, the error form of stringValue() and the
// fixed-length rule of validate().

#include <cstdint>

#include "core/LdpTypes.h"
#include "wire/LdpHeaders.h"

namespace Ldp::TlvCommon {

// The type descriptor of the TLV overlay `name`: an overlay whose base is the TLV
// header.
inline Zel::ZelType tlvType(const char* name) {
  static const LdpTlvHdr hdr{};
  return Zel::ZelType(name, Zel::ZelType::Kind::overlay, hdr.fwkType(), {});
}

// `prefix` followed by the name of `code`.
inline Zel::String errorForm(const char* prefix, LdpStatusCode code) {
  return Zel::String(prefix) + Ldp::stringValue(code).view();
}

// success when the length field of `tlv` (a TLV or a PW sub-TLV) is `expected`,
// else badTlvLength.
template <class Tlv>
LdpStatusCode lengthCheck(const Tlv& tlv, uint16_t expected) {
  return tlv.length() == expected ? success_ : badTlvLength_;
}

}  // namespace Ldp::TlvCommon
