#include "platform/ovo/IpAddr.h"

#include <cstdio>
#include <ostream>

#include "platform/ovo/TextScan.h"

namespace Ovo {

Zel::String IpAddr::stringValue() const {
  char buf[16];
  int n = std::snprintf(buf, sizeof buf, "%u.%u.%u.%u", value_ >> 24, (value_ >> 16) & 0xFF,
                        (value_ >> 8) & 0xFF, value_ & 0xFF);
  return Zel::String(buf, static_cast<size_t>(n));
}

Zel::String valueToStrep(const IpAddr& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpAddr* out) {
  Zel::StrIt p = it;
  uint32_t v;
  if (!TextScan::dottedQuad(p, end, &v)) Zel::throwRangeException("Invalid IpAddr");
  it = p;
  *out = IpAddr(v);
}

std::ostream& operator<<(std::ostream& os, const IpAddr& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const IpAddr& v) { o.putU32(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, IpAddr* v) { *v = IpAddr(i.nextU32()); }

}  // namespace Ovo
