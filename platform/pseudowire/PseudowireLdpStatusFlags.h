#pragma once
// PseudowireLdpStatusFlags: the 32-bit status word of the PW Status TLV (RFC 4447
// §5.4.2, codes of RFC 4446 §3.5). A bit set; 0 means the pseudowire forwards.
//   bit 0 pwNotForwarding
//   bit 1 localACIngrRecvFault     local attachment circuit (ingress) receive fault
//   bit 2 localACEgrTransFault     local attachment circuit (egress) transmit fault
//   bit 3 localPsnPwIngrRecvFault  local PSN-facing PW (ingress) receive fault
//   bit 4 localPsnPwEgrTransFault  local PSN-facing PW (egress) transmit fault
// Other bits are kept as they are.
//
// String form: "0x" and eight lower-case hex digits, "0x00000003". The parser
// reads "0x" (or "0X") and one to eight hex digits; anything else fails with
// "Invalid PseudowireLdpStatusFlags".
// Default: 0. Order: numeric. Attribute log: 4 octets, network order.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire {

class PseudowireLdpStatusFlags {
 public:
  static constexpr uint32_t pwNotForwardingBit = 1u << 0;
  static constexpr uint32_t localACIngrRecvFaultBit = 1u << 1;
  static constexpr uint32_t localACEgrTransFaultBit = 1u << 2;
  static constexpr uint32_t localPsnPwIngrRecvFaultBit = 1u << 3;
  static constexpr uint32_t localPsnPwEgrTransFaultBit = 1u << 4;

  constexpr PseudowireLdpStatusFlags() = default;
  constexpr explicit PseudowireLdpStatusFlags(uint32_t bits) : bits_(bits) {}

  constexpr uint32_t value() const { return bits_; }
  void valueIs(uint32_t bits) { bits_ = bits; }

  bool pwNotForwarding() const { return bits_ & pwNotForwardingBit; }
  void pwNotForwardingIs(bool on) { flagIs(pwNotForwardingBit, on); }
  bool localACIngrRecvFault() const { return bits_ & localACIngrRecvFaultBit; }
  void localACIngrRecvFaultIs(bool on) { flagIs(localACIngrRecvFaultBit, on); }
  bool localACEgrTransFault() const { return bits_ & localACEgrTransFaultBit; }
  void localACEgrTransFaultIs(bool on) { flagIs(localACEgrTransFaultBit, on); }
  bool localPsnPwIngrRecvFault() const { return bits_ & localPsnPwIngrRecvFaultBit; }
  void localPsnPwIngrRecvFaultIs(bool on) { flagIs(localPsnPwIngrRecvFaultBit, on); }
  bool localPsnPwEgrTransFault() const { return bits_ & localPsnPwEgrTransFaultBit; }
  void localPsnPwEgrTransFaultIs(bool on) { flagIs(localPsnPwEgrTransFaultBit, on); }

  bool operator!() const { return bits_ == 0; }
  bool operator==(const PseudowireLdpStatusFlags&) const = default;
  auto operator<=>(const PseudowireLdpStatusFlags&) const = default;

  uint32_t hash() const { return Zel::hashInteger(bits_); }
  Zel::String stringValue() const;

 private:
  void flagIs(uint32_t bit, bool on) { bits_ = on ? bits_ | bit : bits_ & ~bit; }

  uint32_t bits_ = 0;
};

Zel::String valueToStrep(const PseudowireLdpStatusFlags& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireLdpStatusFlags* out);
std::ostream& operator<<(std::ostream& os, const PseudowireLdpStatusFlags& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireLdpStatusFlags& v);
void attrLogRead(Zel::NboAttrLog::In& i, PseudowireLdpStatusFlags* v);

}  // namespace Pseudowire
