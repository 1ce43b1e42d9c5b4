#include "platform/mpls/RouterId.h"

#include <ostream>

namespace Mpls {

Zel::String valueToStrep(const RouterId& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, RouterId* out) {
  Zel::StrIt p = it;
  Ovo::IpAddr a;
  try {
    sequenceToValue(p, end, &a);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid RouterId");
  }
  it = p;
  *out = RouterId(a);
}

std::ostream& operator<<(std::ostream& os, const RouterId& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const RouterId& v) { attrLogWrite(o, v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, RouterId* v) {
  Ovo::IpAddr a;
  attrLogRead(i, &a);
  *v = RouterId(a);
}

}  // namespace Mpls
