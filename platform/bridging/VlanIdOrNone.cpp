#include "platform/bridging/VlanIdOrNone.h"

#include <ostream>

#include "platform/ovo/TextScan.h"

namespace Bridging {

uint16_t VlanIdOrNone::checked(uint16_t value) {
  if (value > max) Zel::throwRangeException("VlanIdOrNone::value > 4094 not allowed");
  return value;
}

Zel::String VlanIdOrNone::stringValue() const {
  return isNone() ? Zel::String("none") : Zel::valueToStrep(value_);
}

Zel::String valueToStrep(const VlanIdOrNone& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, VlanIdOrNone* out) {
  Zel::StrIt p = it;
  if (Zel::acceptString(p, end, "none")) {
    *out = VlanIdOrNone();
    it = p;
    return;
  }
  uint64_t v;
  if (!Ovo::TextScan::decimal(p, end, &v) || v < VlanIdOrNone::min || v > VlanIdOrNone::max) {
    Zel::throwRangeException("Invalid VlanIdOrNone");
  }
  *out = VlanIdOrNone(static_cast<uint16_t>(v));
  it = p;
}

std::ostream& operator<<(std::ostream& os, const VlanIdOrNone& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const VlanIdOrNone& v) { o.putU16(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, VlanIdOrNone* v) { *v = VlanIdOrNone(i.nextU16()); }

}  // namespace Bridging
