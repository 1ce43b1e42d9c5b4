#include "platform/ovo/MplsLabel.h"

#include <ostream>

#include "platform/ovo/TextScan.h"

namespace Ovo {

uint32_t MplsLabel::checked(uint32_t value) {
  if (value > luWithdraw) {
    Zel::throwRangeException(
        "MplsLabel::value < MplsLabel::min or > MplsLabel::luWithdraw not allowed");
  }
  return value;
}

Zel::String MplsLabel::stringValue() const { return Zel::valueToStrep(value_); }

Zel::String valueToStrep(const MplsLabel& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, MplsLabel* out) {
  Zel::StrIt p = it;
  uint64_t v;
  if (!TextScan::decimal(p, end, &v)) Zel::throwRangeException("Invalid MplsLabel");
  MplsLabel label(static_cast<uint32_t>(v > UINT32_MAX ? UINT32_MAX : v));
  it = p;
  *out = label;
}

std::ostream& operator<<(std::ostream& os, const MplsLabel& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const MplsLabel& v) { o.putU32(v.value()); }

void attrLogRead(Zel::NboAttrLog::In& i, MplsLabel* v) { *v = MplsLabel(i.nextU32()); }

}  // namespace Ovo
