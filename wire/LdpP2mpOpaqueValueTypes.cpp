#include "wire/LdpP2mpOpaqueValueTypes.h"

#include <cstring>
#include <ostream>

#include "platform/zel/Hash.h"

namespace Ldp {

namespace {

const Zel::ZelType opaqueValueElementHdrType("Ldp::LdpMPBasicOpaqueValueElementHdr",
                                             Zel::ZelType::Kind::overlay, nullptr, {});

// The header's fields as they appear inside both forms.
std::string hdrFields(const LdpMPBasicOpaqueValueElementHdr& v) {
  std::string s = "'type': ";
  s += Zel::valueToStrep(v.type()).view();
  s += ", 'opaqueLenNbo': ";
  s += Zel::valueToStrep(v.opaqueLen()).view();
  return s;
}

LdpMPBasicOpaqueValueElementHdr hdrFieldsFrom(Zel::StrIt& p, const Zel::StrIt& end) {
  Zel::needString(p, end, "'type': ");
  LdpP2mpOpaqueValueTypeEnum type;
  Zel::sequenceToValue(p, end, &type);
  Zel::needString(p, end, ", 'opaqueLenNbo': ");
  uint16_t len;
  Zel::sequenceToValue(p, end, &len);
  return LdpMPBasicOpaqueValueElementHdr(type, len);
}

}  // namespace

const Zel::ZelType* LdpMPBasicOpaqueValueElementHdr::fwkType() const {
  return &opaqueValueElementHdrType;
}

Zel::String valueToStrep(const LdpMPBasicOpaqueValueElementHdr& v) {
  return Zel::String("Value('Ldp::LdpMPBasicOpaqueValueElementHdr', ** {" + hdrFields(v) + "})");
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpMPBasicOpaqueValueElementHdr* out) {
  Zel::StrIt p = it;
  LdpMPBasicOpaqueValueElementHdr v;
  try {
    Zel::needString(p, end, "Value('Ldp::LdpMPBasicOpaqueValueElementHdr', ** {");
    v = hdrFieldsFrom(p, end);
    Zel::needString(p, end, "})");
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid LdpMPBasicOpaqueValueElementHdr");
  }
  *out = v;
  it = p;
}

std::ostream& operator<<(std::ostream& os, const LdpMPBasicOpaqueValueElementHdr& v) {
  return os << valueToStrep(v);
}

uint32_t LdpGenericLSPId::hash() const { return Zel::hashBytes(this, sizeof *this); }

Zel::String valueToStrep(const LdpGenericLSPId& v) {
  return Zel::String("Value('Ldp::LdpGenericLSPId', ** {" + hdrFields(v.hdr()) +
                     ", 'opaqueId': " + std::string(Zel::valueToStrep(v.opaqueId()).view()) + "})");
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpGenericLSPId* out) {
  Zel::StrIt p = it;
  LdpGenericLSPId v;
  try {
    Zel::needString(p, end, "Value('Ldp::LdpGenericLSPId', ** {");
    const LdpMPBasicOpaqueValueElementHdr hdr = hdrFieldsFrom(p, end);
    Zel::needString(p, end, ", 'opaqueId': ");
    uint32_t id;
    Zel::sequenceToValue(p, end, &id);
    Zel::needString(p, end, "})");
    v.typeIs(hdr.type());
    v.opaqueLenIs(hdr.opaqueLen());
    v.opaqueIdIs(id);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid LdpGenericLSPId");
  }
  *out = v;
  it = p;
}

std::ostream& operator<<(std::ostream& os, const LdpGenericLSPId& v) {
  return os << valueToStrep(v);
}

void attrLogWrite(Zel::NboAttrLog::Out& o, const LdpGenericLSPId& v) { o.putBytes(&v, sizeof v); }

void attrLogRead(Zel::NboAttrLog::In& i, LdpGenericLSPId* v) {
  std::memcpy(static_cast<void*>(v), i.nextBytes(sizeof *v), sizeof *v);
}

}  // namespace Ldp
