#pragma once
// VlanIdOrNone: an IEEE 802.1Q VLAN id, 1 to 4094, or none (the default). The
// reserved ids 0 and 4095 are no VLAN of their own: 0 stands for none, as in the
// VLAN field of a priority-tagged frame, and 4095 is refused.
//
// The constructor, valueIs() and attrLogRead() take 0 (none) to 4094; a larger
// value is refused with "VlanIdOrNone::value > 4094 not allowed" and the target is
// left unchanged.
// String form: "none", or the id in decimal, "100". The parser reads "none" or a
// run of decimal digits giving 1..4094; anything else (including "0", whose
// value's form is "none") fails with "Invalid VlanIdOrNone".
// Order: none first, then by id. Attribute log: 2 octets, network order, 0 for none.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Bridging {

class VlanIdOrNone {
 public:
  static constexpr uint16_t none = 0;
  static constexpr uint16_t min = 1;
  static constexpr uint16_t max = 4094;

  VlanIdOrNone() = default;
  explicit VlanIdOrNone(uint16_t value) : value_(checked(value)) {}

  // The id, 0 for none.
  uint16_t value() const { return value_; }
  void valueIs(uint16_t value) { value_ = checked(value); }
  bool isNone() const { return value_ == none; }

  bool operator!() const { return isNone(); }
  bool operator==(const VlanIdOrNone&) const = default;
  auto operator<=>(const VlanIdOrNone&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

  // `value` when it is at most max; otherwise throws the range message.
  static uint16_t checked(uint16_t value);

 private:
  uint16_t value_ = none;
};

Zel::String valueToStrep(const VlanIdOrNone& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, VlanIdOrNone* out);
std::ostream& operator<<(std::ostream& os, const VlanIdOrNone& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const VlanIdOrNone& v);
void attrLogRead(Zel::NboAttrLog::In& i, VlanIdOrNone* v);

}  // namespace Bridging
