#include "platform/ovo/Port.h"

#include <ostream>

#include "platform/ovo/TextScan.h"

namespace Ovo {

Zel::String Port::stringValue() const { return Zel::valueToStrep(value_); }

Zel::String valueToStrep(const Port& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, Port* out) {
  Zel::StrIt p = it;
  uint64_t v;
  if (!TextScan::decimal(p, end, &v) || v > UINT16_MAX) Zel::throwRangeException("Invalid Port");
  it = p;
  *out = Port(static_cast<uint16_t>(v));
}

std::ostream& operator<<(std::ostream& os, const Port& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const Port& v) { o.putU16(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, Port* v) { *v = Port(i.nextU16()); }

}  // namespace Ovo
