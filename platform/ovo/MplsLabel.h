#pragma once
// MplsLabel: a 20-bit MPLS label value, held in 32 bits so that two values
// outside the label space can be carried:
//   noLabel (also named null) = 0x100000 (1048576): "no label"; the default.
//   luWithdraw = 0x800000 (8388608): the label of a labeled-unicast withdrawal.
// Values 0 (min) .. 0xFFFFF (max) are real labels. Any value up to luWithdraw is
// accepted; a larger one is refused by the constructor, valueIs(), the parser and
// attrLogRead() alike with
//   "MplsLabel::value < MplsLabel::min or > MplsLabel::luWithdraw not allowed"
// and the target is left unchanged.
//
// String form: decimal, "16"; noLabel prints as "1048576". The parser reads a run
// of decimal digits (no sign; leading zeros accepted); no digits at all fails
// with "Invalid MplsLabel".
// Attribute log: 4 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class MplsLabel {
 public:
  static constexpr uint32_t min = 0;
  static constexpr uint32_t max = 0xFFFFF;
  static constexpr uint32_t noLabel = 0x100000;
  static constexpr uint32_t null = noLabel;
  static constexpr uint32_t luWithdraw = 0x800000;

  MplsLabel() = default;
  explicit MplsLabel(uint32_t value) : value_(checked(value)) {}

  uint32_t value() const { return value_; }
  void valueIs(uint32_t value) { value_ = checked(value); }

  // True for noLabel, the default.
  bool operator!() const { return value_ == noLabel; }
  bool operator==(const MplsLabel&) const = default;
  auto operator<=>(const MplsLabel&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

  // `value` when it is at most luWithdraw; otherwise throws the range message.
  static uint32_t checked(uint32_t value);

 private:
  uint32_t value_ = noLabel;
};

Zel::String valueToStrep(const MplsLabel& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, MplsLabel* out);
std::ostream& operator<<(std::ostream& os, const MplsLabel& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const MplsLabel& v);
void attrLogRead(Zel::NboAttrLog::In& i, MplsLabel* v);

}  // namespace Ovo
