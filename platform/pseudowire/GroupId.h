#pragma once
// GroupId: the 32-bit group id of the PW id FEC element (RFC 4447 §5.2). A PE
// gives the pseudowires it wants to withdraw or report on together the same group
// id (for example, those of one physical port); 0 is the default.
//
// String form: decimal, "5". The parser reads a run of decimal digits (no sign;
// leading zeros accepted); no digits, or a value above 4294967295, fails with
// "Invalid GroupId".
// Order: numeric. Attribute log: 4 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire {

class GroupId {
 public:
  constexpr GroupId() = default;
  constexpr explicit GroupId(uint32_t value) : value_(value) {}

  constexpr uint32_t value() const { return value_; }
  void valueIs(uint32_t value) { value_ = value; }

  bool operator!() const { return value_ == 0; }
  bool operator==(const GroupId&) const = default;
  auto operator<=>(const GroupId&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

 private:
  uint32_t value_ = 0;
};

Zel::String valueToStrep(const GroupId& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, GroupId* out);
std::ostream& operator<<(std::ostream& os, const GroupId& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const GroupId& v);
void attrLogRead(Zel::NboAttrLog::In& i, GroupId* v);

}  // namespace Pseudowire
