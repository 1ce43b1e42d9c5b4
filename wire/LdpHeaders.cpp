#include "wire/LdpHeaders.h"

#include "platform/zel/Format.h"

namespace Ldp {

namespace {
const Zel::ZelType pduHdrType("Ldp::LdpPduHdr", Zel::ZelType::Kind::overlay, nullptr, {});
const Zel::ZelType msgHdrType("Ldp::LdpMsgHdr", Zel::ZelType::Kind::overlay, nullptr, {});
const Zel::ZelType tlvHdrType("Ldp::LdpTlvHdr", Zel::ZelType::Kind::overlay, nullptr, {});
}  // namespace

const Zel::ZelType* LdpPduHdr::fwkType() const { return &pduHdrType; }
const Zel::ZelType* LdpMsgHdr::fwkType() const { return &msgHdrType; }
const Zel::ZelType* LdpTlvHdr::fwkType() const { return &tlvHdrType; }

Zel::String valueToStrep(const LdpHdrMsgUbitAndTypeField& v) {
  return Zel::String("Value('Ldp::LdpHdrMsgUbitAndTypeField', ** {'unknown': ") +
         Zel::valueToStrep(v.unknown()).view() + ", 'type': " + valueToStrep(v.type()).view() +
         "})";
}

Zel::String valueToStrep(const LdpTlvTypeField& v) {
  return Zel::String("Value('Ldp::LdpTlvTypeField', ** {'unknown': ") +
         Zel::valueToStrep(v.unknown()).view() +
         ", 'forwardUnknown': " + Zel::valueToStrep(v.forwardUnknown()).view() +
         ", 'type': " + valueToStrep(v.type()).view() + "})";
}

Zel::String LdpPduHdr::stringValue() const {
  return Zel::format("LdpPduHdr: Ver(%d),Len(%d),LdpId: ", version(), length()) +
         ldpId().stringValue().view();
}

bool ldpTlvTypeKnown(uint32_t t) {
  switch (t) {
    case 0x100:
    case 0x101:
    case 0x103:
    case 0x104:
    case 0x200:
    case 0x201:
    case 0x202:
    case 0x300:
    case 0x301:
    case 0x302:
    case 0x303:
    case 0x400:
    case 0x401:
    case 0x402:
    case 0x403:
    case 0x500:
    case 0x501:
    case 0x502:
    case 0x503:
    case 0x600:
    case 0x96A:
    case 0x3E00:
    case 0x3EFF:
    case 0x3F00:
    case 0x3FFF:
      return true;
    default:
      return t >= 0x506 && t <= 0x50F;
  }
}

LdpStatusCode LdpTlvHdr::validateTlvHdr() const {
  if (ldpTlvTypeKnown(type())) return success_;
  return unknown() ? unknownMessageTypeIgnore_ : unknownTlv_;
}

}  // namespace Ldp
