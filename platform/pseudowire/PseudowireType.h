#pragma once
// PseudowireType: the 15-bit PW type code of the PW id FEC element (RFC 4447
// §5.2), from the IANA "MPLS Pseudowire Types" registry of RFC 4446 §3.2.
//
// Known types are exactly the codes RFC 4446 itself allocated, 0x0001 to 0x0019;
// codes registered later, the reserved code 0 and unassigned codes are carried as
// numbers but are not known (isKnown() is false), so a PW id element naming one is
// refused as an unknown FEC. Names (the string form of a known type):
//   0x0001 frameRelayDlciMartini  Frame Relay DLCI (Martini mode)
//   0x0002 atmAal5SduVcc          ATM AAL5 SDU VCC transport
//   0x0003 atmTransparentCell     ATM transparent cell transport
//   0x0004 ethernetTagged         Ethernet tagged mode
//   0x0005 ethernet               Ethernet (raw mode)
//   0x0006 hdlc                   HDLC
//   0x0007 ppp                    PPP
//   0x0008 sonetSdhCem            SONET/SDH circuit emulation service over MPLS
//   0x0009 atmNToOneVcc           ATM n-to-one VCC cell transport
//   0x000A atmNToOneVpc           ATM n-to-one VPC cell transport
//   0x000B ipLayer2               IP layer 2 transport
//   0x000C atmOneToOneVcc         ATM one-to-one VCC cell mode
//   0x000D atmOneToOneVpc         ATM one-to-one VPC cell mode
//   0x000E atmAal5PduVcc          ATM AAL5 PDU VCC transport
//   0x000F frameRelayPort         Frame Relay port mode
//   0x0010 sonetSdhCep            SONET/SDH circuit emulation over packet
//   0x0011 satopE1                structure-agnostic E1 over packet
//   0x0012 satopT1                structure-agnostic T1 (DS1) over packet
//   0x0013 satopE3                structure-agnostic E3 over packet
//   0x0014 satopT3                structure-agnostic T3 (DS3) over packet
//   0x0015 cesopsnBasic           CESoPSN basic mode
//   0x0016 tdmoipAal1             TDMoIP AAL1 mode
//   0x0017 cesopsnCas             CESoPSN TDM with CAS
//   0x0018 tdmoipAal2             TDMoIP AAL2 mode
//   0x0019 frameRelayDlci         Frame Relay DLCI
//
// String form: the name of a known type; any other code "0x" and four lower-case
// hex digits ("0x001a"). Names are letters and digits only, so a type can be
// followed by ':', '_', ',', '}' or a space in a longer text. The parser reads
// "0x" (or "0X") and one to four hex digits of a code up to 0x7fff, or else the
// run of letters and digits at the cursor, which must be a name; anything else
// fails with "Invalid PseudowireType".
// The constructor and valueIs() refuse a code above 0x7fff with
// "PseudowireType::value > 0x7fff not allowed" (wire readers mask the C bit off
// first, so they never see this).
// Default: 0. Order: numeric. Attribute log: 2 octets, network order; a logged
// code above 0x7fff is refused with the range message.

#include <cstdint>
#include <iosfwd>

#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Pseudowire {

class PseudowireType {
 public:
  static constexpr uint16_t max = 0x7FFF;
  static constexpr uint16_t frameRelayDlciMartini = 0x0001;
  static constexpr uint16_t atmAal5SduVcc = 0x0002;
  static constexpr uint16_t atmTransparentCell = 0x0003;
  static constexpr uint16_t ethernetTagged = 0x0004;
  static constexpr uint16_t ethernet = 0x0005;
  static constexpr uint16_t hdlc = 0x0006;
  static constexpr uint16_t ppp = 0x0007;
  static constexpr uint16_t sonetSdhCem = 0x0008;
  static constexpr uint16_t atmNToOneVcc = 0x0009;
  static constexpr uint16_t atmNToOneVpc = 0x000A;
  static constexpr uint16_t ipLayer2 = 0x000B;
  static constexpr uint16_t atmOneToOneVcc = 0x000C;
  static constexpr uint16_t atmOneToOneVpc = 0x000D;
  static constexpr uint16_t atmAal5PduVcc = 0x000E;
  static constexpr uint16_t frameRelayPort = 0x000F;
  static constexpr uint16_t sonetSdhCep = 0x0010;
  static constexpr uint16_t satopE1 = 0x0011;
  static constexpr uint16_t satopT1 = 0x0012;
  static constexpr uint16_t satopE3 = 0x0013;
  static constexpr uint16_t satopT3 = 0x0014;
  static constexpr uint16_t cesopsnBasic = 0x0015;
  static constexpr uint16_t tdmoipAal1 = 0x0016;
  static constexpr uint16_t cesopsnCas = 0x0017;
  static constexpr uint16_t tdmoipAal2 = 0x0018;
  static constexpr uint16_t frameRelayDlci = 0x0019;

  PseudowireType() = default;
  explicit PseudowireType(uint16_t value) : value_(checked(value)) {}

  uint16_t value() const { return value_; }
  void valueIs(uint16_t value) { value_ = checked(value); }

  bool isKnown() const { return name() != nullptr; }
  // The name of a known type, nullptr for any other code.
  const char* name() const;

  bool operator!() const { return value_ == 0; }
  bool operator==(const PseudowireType&) const = default;
  auto operator<=>(const PseudowireType&) const = default;

  uint32_t hash() const { return Zel::hashInteger(value_); }
  Zel::String stringValue() const;

  // `value` when it is at most max; otherwise throws the range message.
  static uint16_t checked(uint16_t value);

 private:
  uint16_t value_ = 0;
};

Zel::String valueToStrep(const PseudowireType& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, PseudowireType* out);
std::ostream& operator<<(std::ostream& os, const PseudowireType& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const PseudowireType& v);
void attrLogRead(Zel::NboAttrLog::In& i, PseudowireType* v);

}  // namespace Pseudowire
