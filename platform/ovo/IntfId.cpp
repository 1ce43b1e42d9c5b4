#include "platform/ovo/IntfId.h"

#include <ostream>

namespace Ovo {

IntfId::IntfId(const Zel::String& name) {
  for (char c : name.view()) {
    if (!nameChar(c)) Zel::throwRangeException("Invalid IntfId");
  }
  name_ = name;
}

Zel::String valueToStrep(const IntfId& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IntfId* out) {
  Zel::StrIt p = it;
  while (p != end && IntfId::nameChar(*p)) ++p;
  IntfId id(Zel::String(it, static_cast<size_t>(p - it)));
  it = p;
  *out = id;
}

std::ostream& operator<<(std::ostream& os, const IntfId& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const IntfId& v) { o.putString(v.name()); }

void attrLogRead(Zel::NboAttrLog::In& i, IntfId* v) { *v = IntfId(i.nextString()); }

}  // namespace Ovo
