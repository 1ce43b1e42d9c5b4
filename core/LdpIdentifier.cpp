#include "core/LdpIdentifier.h"

#include <ostream>

#include "platform/ovo/IpAddr.h"

namespace Ldp {

uint32_t ldpHashMix(uint32_t x) {
  uint32_t a = x * 32767u - 1u;
  uint32_t b = (a ^ (a >> 12)) * 5u;
  uint32_t c = (b ^ (b >> 4)) * 2057u;
  return c ^ (c >> 16);
}

uint32_t LdpIdentifier::hash() const { return ldpHashMix(lsrId_.value()) + labelSpace_.value(); }

Zel::String LdpIdentifier::stringValue() const {
  return Ovo::IpAddr(lsrId_.value()).stringValue() + ":" +
         Zel::valueToStrep(labelSpace_.value()).view();
}

Zel::String valueToStrep(const LdpIdentifier& v) { return v.stringValue(); }

std::ostream& operator<<(std::ostream& os, const LdpIdentifier& v) { return os << v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpIdentifier* out) {
  Zel::StrIt p = it;
  Ovo::IpAddr lsrId;
  uint16_t labelSpace = 0;
  try {
    sequenceToValue(p, end, &lsrId);
    Zel::needString(p, end, ":");
    Zel::sequenceToValue(p, end, &labelSpace);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid LdpIdentifier");
  }
  *out = LdpIdentifier(lsrId.value(), labelSpace);
  it = p;
}

void attrLogWrite(Zel::NboAttrLog::Out& out, const LdpIdentifier& v) {
  out.putU32(v.lsrId().value());
  out.putU16(v.labelSpace().value());
}

void attrLogRead(Zel::NboAttrLog::In& in, LdpIdentifier* v) {
  uint32_t lsrId = in.nextU32();
  *v = LdpIdentifier(lsrId, in.nextU16());
}

}  // namespace Ldp
