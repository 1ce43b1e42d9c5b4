#include "platform/pseudowire/PseudowireId.h"

#include <ostream>

#include "platform/ovo/TextScan.h"

namespace Pseudowire {

Zel::String PseudowireId::stringValue() const { return Zel::valueToStrep(value_); }

Zel::String valueToStrep(const PseudowireId& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireId* out) {
  Zel::StrIt p = it;
  uint64_t v;
  if (!Ovo::TextScan::decimal(p, end, &v) || v > UINT32_MAX) {
    Zel::throwRangeException("Invalid PseudowireId");
  }
  it = p;
  *out = PseudowireId(static_cast<uint32_t>(v));
}

std::ostream& operator<<(std::ostream& os, const PseudowireId& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireId& v) { o.putU32(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, PseudowireId* v) { *v = PseudowireId(i.nextU32()); }

}  // namespace Pseudowire
