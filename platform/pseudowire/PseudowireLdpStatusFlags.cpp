#include "platform/pseudowire/PseudowireLdpStatusFlags.h"

#include <ostream>

#include "platform/pseudowire/HexForm.h"

namespace Pseudowire {

Zel::String PseudowireLdpStatusFlags::stringValue() const { return HexForm::text(bits_, 8); }

Zel::String valueToStrep(const PseudowireLdpStatusFlags& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireLdpStatusFlags* out) {
  uint32_t v;
  if (!HexForm::read(it, end, 8, &v)) Zel::throwRangeException("Invalid PseudowireLdpStatusFlags");
  *out = PseudowireLdpStatusFlags(v);
}

std::ostream& operator<<(std::ostream& os, const PseudowireLdpStatusFlags& v) {
  return os << v.stringValue();
}

void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireLdpStatusFlags& v) {
  o.putU32(v.value());
}

void attrLogRead(Zel::NboAttrLog::In& i, PseudowireLdpStatusFlags* v) {
  *v = PseudowireLdpStatusFlags(i.nextU32());
}

}  // namespace Pseudowire
