#pragma once
// VccvCvTypes: the connectivity-verification types a PE offers for a pseudowire's
// VCCV (RFC 5085 §8.1, RFC 5885 §3.3), the second value octet of the VCCV
// parameter sub-TLV. A bit set; bits without a name are kept as they are.
//   0x01 icmpPing
//   0x02 lspPing
//   0x04 bfdIpUdpFault        BFD, IP/UDP encapsulated, fault detection only
//   0x08 bfdIpUdpFaultStatus  BFD, IP/UDP encapsulated, fault detection and status
//   0x10 bfdAchFault          BFD, PW-ACH encapsulated, fault detection only
//   0x20 bfdAchFaultStatus    BFD, PW-ACH encapsulated, fault detection and status
//
// String form: "0x" and two lower-case hex digits, "0x03". The parser reads "0x"
// (or "0X") and one or two hex digits; anything else fails with
// "Invalid VccvCvTypes".
// Default: no bits. Order: numeric. Attribute log: 1 octet.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire {

class VccvCvTypes {
 public:
  static constexpr uint8_t icmpPing = 0x01;
  static constexpr uint8_t lspPing = 0x02;
  static constexpr uint8_t bfdIpUdpFault = 0x04;
  static constexpr uint8_t bfdIpUdpFaultStatus = 0x08;
  static constexpr uint8_t bfdAchFault = 0x10;
  static constexpr uint8_t bfdAchFaultStatus = 0x20;

  constexpr VccvCvTypes() = default;
  constexpr explicit VccvCvTypes(uint8_t bits) : bits_(bits) {}

  constexpr uint8_t value() const { return bits_; }
  void valueIs(uint8_t bits) { bits_ = bits; }
  // Whether every bit of `mask` is set.
  bool has(uint8_t mask) const { return (bits_ & mask) == mask; }
  // Sets or clears the bits of `mask`, leaving the others.
  void flagIs(uint8_t mask, bool on) {
    bits_ = static_cast<uint8_t>(on ? bits_ | mask : bits_ & ~mask);
  }

  bool operator!() const { return bits_ == 0; }
  bool operator==(const VccvCvTypes&) const = default;
  auto operator<=>(const VccvCvTypes&) const = default;

  uint32_t hash() const { return Zel::hashInteger(bits_); }
  Zel::String stringValue() const;

 private:
  uint8_t bits_ = 0;
};

Zel::String valueToStrep(const VccvCvTypes& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, VccvCvTypes* out);
std::ostream& operator<<(std::ostream& os, const VccvCvTypes& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const VccvCvTypes& v);
void attrLogRead(Zel::NboAttrLog::In& i, VccvCvTypes* v);

}  // namespace Pseudowire
