#include "platform/l3/VrfName.h"

#include <ostream>

namespace L3 {

const Zel::String& VrfName::checked(const Zel::String& name) {
  if (name.size() > maxLength) {
    Zel::throwRangeException("VrfName::bytes > VrfName::maxLength not allowed");
  }
  return name;
}

Zel::String valueToStrep(const VrfName& v) { return Zel::valueToStrep(v.value()); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, VrfName* out) {
  Zel::StrIt p = it;
  Zel::String s;
  Zel::sequenceToValue(p, end, &s);
  VrfName name(s);
  it = p;
  *out = name;
}

std::ostream& operator<<(std::ostream& os, const VrfName& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const VrfName& v) { o.putString(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, VrfName* v) { *v = VrfName(i.nextString()); }

}  // namespace L3
