#pragma once
// Port: a 16-bit TCP or UDP port number.
//
// String form: decimal, "646". The parser reads a run of decimal digits (no
// sign; leading zeros are accepted, as for Zel integers); a value above 65535
// fails. Failure: "Invalid Port".
// Default: 0.
// Attribute log: 2 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class Port {
 public:
  constexpr Port() = default;
  constexpr explicit Port(uint16_t value) : value_(value) {}

  constexpr uint16_t value() const { return value_; }
  void valueIs(uint16_t value) { value_ = value; }

  bool operator!() const { return value_ == 0; }
  bool operator==(const Port&) const = default;
  auto operator<=>(const Port&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

 private:
  uint16_t value_ = 0;
};

Zel::String valueToStrep(const Port& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, Port* out);
std::ostream& operator<<(std::ostream& os, const Port& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const Port& v);
void attrLogRead(Zel::NboAttrLog::In& i, Port* v);

}  // namespace Ovo
