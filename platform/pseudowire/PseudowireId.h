#pragma once
// PseudowireId: the 32-bit PW id of the PW id FEC element (RFC 4447 §5.2), which
// together with the PW type names a pseudowire between two PEs. 0 is the default;
// on the wire it is no valid PW id (a PW id element without one names a group).
//
// String form: decimal, "100". The parser reads a run of decimal digits (no sign;
// leading zeros accepted); no digits, or a value above 4294967295, fails with
// "Invalid PseudowireId".
// Order: numeric. Attribute log: 4 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire {

class PseudowireId {
 public:
  constexpr PseudowireId() = default;
  constexpr explicit PseudowireId(uint32_t value) : value_(value) {}

  constexpr uint32_t value() const { return value_; }
  void valueIs(uint32_t value) { value_ = value; }

  bool operator!() const { return value_ == 0; }
  bool operator==(const PseudowireId&) const = default;
  auto operator<=>(const PseudowireId&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

 private:
  uint32_t value_ = 0;
};

Zel::String valueToStrep(const PseudowireId& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireId* out);
std::ostream& operator<<(std::ostream& os, const PseudowireId& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireId& v);
void attrLogRead(Zel::NboAttrLog::In& i, PseudowireId* v);

}  // namespace Pseudowire
