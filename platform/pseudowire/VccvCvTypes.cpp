#include "platform/pseudowire/VccvCvTypes.h"

#include <ostream>

#include "platform/pseudowire/HexForm.h"

namespace Pseudowire {

Zel::String VccvCvTypes::stringValue() const { return HexForm::text(bits_, 2); }

Zel::String valueToStrep(const VccvCvTypes& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, VccvCvTypes* out) {
  uint32_t v;
  if (!HexForm::read(it, end, 2, &v)) Zel::throwRangeException("Invalid VccvCvTypes");
  *out = VccvCvTypes(static_cast<uint8_t>(v));
}

std::ostream& operator<<(std::ostream& os, const VccvCvTypes& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const VccvCvTypes& v) { o.putU8(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, VccvCvTypes* v) { *v = VccvCvTypes(i.nextU8()); }

}  // namespace Pseudowire
