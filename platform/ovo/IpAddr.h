#pragma once
// IpAddr: an IPv4 address, held as a host-order uint32_t (10.0.0.1 is 0x0A000001).
//
// String form: the dotted quad "10.0.0.1". The parser reads exactly four decimal
// octets 0..255 separated by '.', with no sign and no leading zeros ("010" is
// refused, as inet_aton would read it as octal), and stops right after the
// fourth octet. Failure: "Invalid IpAddr".
// Default: 0.0.0.0.
// Attribute log: 4 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class IpAddr {
 public:
  constexpr IpAddr() = default;
  constexpr explicit IpAddr(uint32_t value) : value_(value) {}

  constexpr uint32_t value() const { return value_; }
  void valueIs(uint32_t value) { value_ = value; }

  bool operator!() const { return value_ == 0; }
  bool operator==(const IpAddr&) const = default;
  auto operator<=>(const IpAddr&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

 private:
  uint32_t value_ = 0;
};

Zel::String valueToStrep(const IpAddr& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpAddr* out);
std::ostream& operator<<(std::ostream& os, const IpAddr& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const IpAddr& v);
void attrLogRead(Zel::NboAttrLog::In& i, IpAddr* v);

}  // namespace Ovo
