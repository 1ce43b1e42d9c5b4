#include "platform/ovo/IpAddrWithMask.h"

#include <ostream>

#include "platform/ovo/TextScan.h"
#include "platform/zel/Hash.h"

namespace Ovo {

IpAddrWithMask::IpAddrWithMask(IpAddr address, unsigned len) : address_(address) {
  if (len > maxLen) Zel::throwRangeException("Invalid IpAddrWithMask");
  len_ = static_cast<uint8_t>(len);
}

IpAddr IpAddrWithMask::mask() const { return IpAddr(len_ == 0 ? 0 : ~uint32_t(0) << (32 - len_)); }

uint32_t IpAddrWithMask::hash() const {
  Zel::Hash h;
  h.mix(address_.value());
  h.mix(len_);
  return h.result();
}

Zel::String IpAddrWithMask::stringValue() const {
  return address_.stringValue() + "/" + Zel::valueToStrep(len_).view();
}

Zel::String valueToStrep(const IpAddrWithMask& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpAddrWithMask* out) {
  Zel::StrIt p = it;
  uint32_t a;
  uint64_t len;
  if (!TextScan::dottedQuad(p, end, &a) || !Zel::acceptString(p, end, "/") ||
      !TextScan::decimal(p, end, &len) || len > IpAddrWithMask::maxLen) {
    Zel::throwRangeException("Invalid IpAddrWithMask");
  }
  it = p;
  *out = IpAddrWithMask(IpAddr(a), static_cast<unsigned>(len));
}

std::ostream& operator<<(std::ostream& os, const IpAddrWithMask& v) {
  return os << v.stringValue();
}

void attrLogWrite(Zel::NboAttrLog::Out& o, const IpAddrWithMask& v) {
  o.putU32(v.address().value());
  o.putU8(static_cast<uint8_t>(v.len()));
}

void attrLogRead(Zel::NboAttrLog::In& i, IpAddrWithMask* v) {
  IpAddr a(i.nextU32());
  unsigned len = i.nextU8();
  *v = IpAddrWithMask(a, len);
}

}  // namespace Ovo
