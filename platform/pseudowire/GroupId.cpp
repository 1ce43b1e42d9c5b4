#include "platform/pseudowire/GroupId.h"

#include <ostream>

#include "platform/ovo/TextScan.h"

namespace Pseudowire {

Zel::String GroupId::stringValue() const { return Zel::valueToStrep(value_); }

Zel::String valueToStrep(const GroupId& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, GroupId* out) {
  Zel::StrIt p = it;
  uint64_t v;
  if (!Ovo::TextScan::decimal(p, end, &v) || v > UINT32_MAX) {
    Zel::throwRangeException("Invalid GroupId");
  }
  it = p;
  *out = GroupId(static_cast<uint32_t>(v));
}

std::ostream& operator<<(std::ostream& os, const GroupId& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const GroupId& v) { o.putU32(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, GroupId* v) { *v = GroupId(i.nextU32()); }

}  // namespace Pseudowire
