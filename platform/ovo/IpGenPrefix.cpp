#include "platform/ovo/IpGenPrefix.h"

#include <ostream>

#include "platform/ovo/TextScan.h"
#include "platform/zel/Hash.h"

namespace Ovo {

IpGenPrefix::IpGenPrefix(const IpGenAddr& address, unsigned len) {
  if (len > address.bitLength()) Zel::throwRangeException("Invalid IpGenPrefix");
  len_ = static_cast<uint8_t>(len);
  if (address.isV4()) {
    uint32_t mask = len == 0 ? 0 : ~uint32_t(0) << (32 - len);
    address_ = IpGenAddr(IpAddr(address.v4().value() & mask));
  } else if (address.isV6()) {
    IpGenAddr::Octets o = address.v6Octets();
    for (unsigned i = 0; i < 16; ++i) {
      unsigned kept = len > 8 * i ? len - 8 * i : 0;  // bits of octet i inside the prefix
      if (kept < 8) o[i] &= static_cast<uint8_t>(0xFF00u >> kept);
    }
    address_ = IpGenAddr(o);
  }
}

uint32_t IpGenPrefix::hash() const {
  Zel::Hash h;
  h.mix(address_.hash());
  h.mix(len_);
  return h.result();
}

Zel::String IpGenPrefix::stringValue() const {
  if (!address_) return "none";
  return address_.stringValue() + "/" + Zel::valueToStrep(len_).view();
}

Zel::String valueToStrep(const IpGenPrefix& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpGenPrefix* out) {
  Zel::StrIt p = it;
  if (Zel::acceptString(p, end, "none")) {
    it = p;
    *out = IpGenPrefix();
    return;
  }
  IpGenAddr a;
  try {
    sequenceToValue(p, end, &a);
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid IpGenPrefix");
  }
  uint64_t len;
  if (!Zel::acceptString(p, end, "/") || !TextScan::decimal(p, end, &len) || len > a.bitLength()) {
    Zel::throwRangeException("Invalid IpGenPrefix");
  }
  IpGenPrefix prefix(a, static_cast<unsigned>(len));
  it = p;
  *out = prefix;
}

std::ostream& operator<<(std::ostream& os, const IpGenPrefix& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const IpGenPrefix& v) {
  attrLogWrite(o, v.address());
  o.putU8(static_cast<uint8_t>(v.len()));
}

void attrLogRead(Zel::NboAttrLog::In& i, IpGenPrefix* v) {
  IpGenAddr a;
  attrLogRead(i, &a);
  unsigned len = i.nextU8();
  *v = IpGenPrefix(a, len);
}

}  // namespace Ovo
