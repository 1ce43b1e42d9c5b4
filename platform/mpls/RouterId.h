#pragma once
// RouterId: the IPv4 router id of an LSR (an Ovo::IpAddr). The default is 0.0.0.0,
// which stands for "no router id yet".
//
// String form: the dotted quad, "10.0.0.1", as IpAddr writes and reads it (the
// parser stops right after the fourth octet). Failure: "Invalid RouterId".
// Name: entities are created by router id, so a RouterId converts implicitly to a
// Zel::Name, its string form.
// Order: by address. hash() is the address's.
// Attribute log: 4 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpAddr.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Mpls {

class RouterId {
 public:
  constexpr RouterId() = default;
  constexpr explicit RouterId(Ovo::IpAddr value) : value_(value) {}

  constexpr Ovo::IpAddr value() const { return value_; }
  void valueIs(Ovo::IpAddr value) { value_ = value; }

  bool operator!() const { return !value_; }
  bool operator==(const RouterId&) const = default;
  auto operator<=>(const RouterId&) const = default;

  uint32_t hash() const { return value_.hash(); }
  Zel::String stringValue() const { return value_.stringValue(); }
  // The name of an entity created by this router id.
  operator Zel::Name() const { return stringValue(); }

 private:
  Ovo::IpAddr value_;
};

Zel::String valueToStrep(const RouterId& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, RouterId* out);
std::ostream& operator<<(std::ostream& os, const RouterId& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const RouterId& v);
void attrLogRead(Zel::NboAttrLog::In& i, RouterId* v);

}  // namespace Mpls
