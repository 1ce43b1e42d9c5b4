#include "platform/mpls/FwdEqvClass.h"

#include <ostream>

#include "platform/zel/Assert.h"
#include "platform/zel/Hash.h"

namespace Mpls {

FwdEqvClass FwdEqvClass::wildcard() {
  FwdEqvClass f;
  f.kind_ = Kind::wildcard;
  return f;
}

FwdEqvClass FwdEqvClass::forPrefix(const Ovo::IpGenPrefix& prefix) {
  if (!prefix) Zel::throwRangeException("Invalid FwdEqvClass");
  FwdEqvClass f;
  f.kind_ = prefix.isV4() ? Kind::ipv4Prefix : Kind::ipv6Prefix;
  f.prefix_ = prefix;
  return f;
}

FwdEqvClass FwdEqvClass::forHost(const Ovo::IpGenAddr& address) {
  if (!address) Zel::throwRangeException("Invalid FwdEqvClass");
  FwdEqvClass f;
  f.kind_ = address.isV4() ? Kind::ipv4Host : Kind::ipv6Host;
  f.prefix_ = Ovo::IpGenPrefix(address, address.bitLength());
  return f;
}

const Ovo::IpGenPrefix& FwdEqvClass::prefix() const {
  ZEL_ASSERT(isPrefix());
  return prefix_;
}

const Ovo::IpGenAddr& FwdEqvClass::hostAddr() const {
  ZEL_ASSERT(isHost());
  return prefix_.address();
}

uint32_t FwdEqvClass::hash() const {
  Zel::Hash h;
  h.mix(static_cast<uint32_t>(kind_));
  h.mix(prefix_.hash());
  return h.result();
}

Zel::String FwdEqvClass::stringValue() const {
  switch (kind_) {
    case Kind::none:
      return "none";
    case Kind::wildcard:
      return "wildcard";
    case Kind::ipv4Prefix:
    case Kind::ipv6Prefix:
      return prefix_.stringValue();
    case Kind::ipv4Host:
    case Kind::ipv6Host:
      return Zel::String("host:") + prefix_.address().stringValue().view();
  }
  return "none";
}

Zel::String valueToStrep(const FwdEqvClass& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, FwdEqvClass* out) {
  Zel::StrIt p = it;
  FwdEqvClass f;
  try {
    if (Zel::acceptString(p, end, "none")) {
      // f stays none
    } else if (Zel::acceptString(p, end, "wildcard")) {
      f = FwdEqvClass::wildcard();
    } else if (Zel::acceptString(p, end, "host:")) {
      Ovo::IpGenAddr a;
      sequenceToValue(p, end, &a);
      f = FwdEqvClass::forHost(a);
    } else {
      Ovo::IpGenPrefix prefix;
      sequenceToValue(p, end, &prefix);
      f = FwdEqvClass::forPrefix(prefix);
    }
  } catch (const Zel::RangeException&) {
    Zel::throwRangeException("Invalid FwdEqvClass");
  }
  it = p;
  *out = f;
}

std::ostream& operator<<(std::ostream& os, const FwdEqvClass& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const FwdEqvClass& v) {
  o.putU8(static_cast<uint8_t>(v.kind()));
  if (v.isPrefix()) {
    attrLogWrite(o, v.prefix());
  } else if (v.isHost()) {
    attrLogWrite(o, v.hostAddr());
  }
}

void attrLogRead(Zel::NboAttrLog::In& i, FwdEqvClass* v) {
  using Kind = FwdEqvClass::Kind;
  auto kind = static_cast<Kind>(i.nextU8());
  FwdEqvClass f;
  switch (kind) {
    case Kind::none:
      break;
    case Kind::wildcard:
      f = FwdEqvClass::wildcard();
      break;
    case Kind::ipv4Prefix:
    case Kind::ipv6Prefix: {
      Ovo::IpGenPrefix prefix;
      attrLogRead(i, &prefix);
      f = FwdEqvClass::forPrefix(prefix);
      break;
    }
    case Kind::ipv4Host:
    case Kind::ipv6Host: {
      Ovo::IpGenAddr a;
      attrLogRead(i, &a);
      f = FwdEqvClass::forHost(a);
      break;
    }
    default:
      Zel::throwRangeException("Invalid FwdEqvClass");
  }
  if (f.kind() != kind) Zel::throwRangeException("Invalid FwdEqvClass");
  *v = f;
}

}  // namespace Mpls
