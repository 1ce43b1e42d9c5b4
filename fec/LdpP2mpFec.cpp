#include "fec/LdpP2mpFec.gen.h"

namespace Ldp {

Zel::String LdpP2mpFecGenericOpaqueId::stringValue() const {
  return rootIp_.stringValue() + "_" + Zel::valueToStrep(gOpaqueId_).view();
}

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpP2mpFecGenericOpaqueId* out) {
  Zel::StrIt p = it;
  Ovo::IpGenAddr root;
  uint32_t id = 0;
  try {
    sequenceToValue(p, end, &root);
    Zel::needString(p, end, "_");
    Zel::sequenceToValue(p, end, &id);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid LdpP2mpFecGenericOpaqueId");
  }
  *out = LdpP2mpFecGenericOpaqueId(root, id);
  it = p;
}

Zel::String LdpP2mpFecElement::stringValue() const {
  return rootIp_.stringValue() + "_" + opaqueStr_.view();
}

}  // namespace Ldp
