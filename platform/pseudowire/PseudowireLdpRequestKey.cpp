#include "platform/pseudowire/PseudowireLdpRequestKey.h"

#include <ostream>

#include "platform/zel/Hash.h"

namespace Pseudowire {

uint32_t PseudowireLdpRequestKey::hash() const {
  Zel::Hash h;
  h.mix(peerAddr_.hash());
  h.mix(pwId_.value());
  return h.result();
}

Zel::String PseudowireLdpRequestKey::stringValue() const {
  return peerAddr_.stringValue() + "_" + pwId_.stringValue().view();
}

Zel::String valueToStrep(const PseudowireLdpRequestKey& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireLdpRequestKey* out) {
  Zel::StrIt p = it;
  Ovo::IpGenAddr peer;
  PseudowireId id;
  try {
    sequenceToValue(p, end, &peer);
    Zel::needString(p, end, "_");
    sequenceToValue(p, end, &id);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid PseudowireLdpRequestKey");
  }
  *out = PseudowireLdpRequestKey(peer, id);
  it = p;
}

std::ostream& operator<<(std::ostream& os, const PseudowireLdpRequestKey& v) {
  return os << v.stringValue();
}

void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireLdpRequestKey& v) {
  attrLogWrite(o, v.peerAddr());
  attrLogWrite(o, v.pwId());
}

void attrLogRead(Zel::NboAttrLog::In& i, PseudowireLdpRequestKey* v) {
  Ovo::IpGenAddr peer;
  PseudowireId id;
  attrLogRead(i, &peer);
  attrLogRead(i, &id);
  *v = PseudowireLdpRequestKey(peer, id);
}

}  // namespace Pseudowire
