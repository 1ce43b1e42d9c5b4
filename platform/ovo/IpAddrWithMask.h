#pragma once
// IpAddrWithMask: an IPv4 address with a mask length 0..32, as configured on an
// interface: the host bits are kept ("10.0.0.1/24" is not "10.0.0.0/24").
//
// String form: "<dotted quad>/<length>", "10.0.0.1/24". The parser reads an IpAddr,
// a '/', and a decimal length (no sign; leading zeros accepted) and stops after
// the length's digits; the '/' and length are required. Failure, and a length
// above 32 given to the constructor: "Invalid IpAddrWithMask".
// Default: 0.0.0.0/0.
// Order: by address, then length.
// Attribute log: the address (4 octets, network order), then 1 octet length.

#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpAddr.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class IpAddrWithMask {
 public:
  static constexpr unsigned maxLen = 32;

  IpAddrWithMask() = default;
  IpAddrWithMask(IpAddr address, unsigned len);

  IpAddr address() const { return address_; }
  unsigned len() const { return len_; }
  // The mask as an address: /24 gives 255.255.255.0.
  IpAddr mask() const;
  // The address with the host bits cleared: 10.0.0.1/24 gives 10.0.0.0.
  IpAddr subnet() const { return IpAddr(address_.value() & mask().value()); }

  bool operator!() const { return *this == IpAddrWithMask(); }
  bool operator==(const IpAddrWithMask&) const = default;
  auto operator<=>(const IpAddrWithMask&) const = default;

  uint32_t hash() const;
  Zel::String stringValue() const;

 private:
  IpAddr address_;
  uint8_t len_ = 0;
};

Zel::String valueToStrep(const IpAddrWithMask& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpAddrWithMask* out);
std::ostream& operator<<(std::ostream& os, const IpAddrWithMask& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const IpAddrWithMask& v);
void attrLogRead(Zel::NboAttrLog::In& i, IpAddrWithMask* v);

}  // namespace Ovo
