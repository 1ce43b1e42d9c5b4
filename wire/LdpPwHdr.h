#pragma once
// Overlays on the pseudowire elements of RFC 4447: the PW id FEC element (0x80)
// inside a FEC TLV, the interface-parameter sub-TLVs that follow it, and the PW
// Status TLV (0x096A). As with the TLV overlays, an overlay's storage is the wire
// octets, every accessor reads or writes the packet in place, multi-octet fields
// are big-endian, and setters change only their own field.
//
// validate() never looks beyond what the element's own length field announces and
// never throws: it returns the status code of the first rule that fails, or
// success. The sub-TLV overlays assert their type first (the parser dispatches on
// it). stringValue() gives the trace form of an element that validates, and
// otherwise "Error <class>: " followed by the status code's name.

#include <cstdint>
#include <string_view>

#include "core/LdpTypes.h"
#include "platform/ovo/NetU16.h"
#include "platform/ovo/NetU32.h"
#include "platform/pseudowire/GroupId.h"
#include "platform/pseudowire/PseudowireId.h"
#include "platform/pseudowire/PseudowireLdpStatusFlags.h"
#include "platform/pseudowire/PseudowireType.h"
#include "platform/pseudowire/VccvCvTypes.h"
#include "platform/zel/Ptr.h"
#include "wire/LdpHeaders.h"
#include "wire/LdpPwHdr.gen.h"

namespace Ldp {

// Octets 1 and 2 of the PW id element: bit 15 the control word (C) bit, bits 14..0
// the PW type.
class LdpFecTlvPwIdElementHdrTypeField {
 public:
  LdpFecTlvPwIdElementHdrTypeField() = default;
  explicit LdpFecTlvPwIdElementHdrTypeField(uint16_t raw) { raw_.valueIs(raw); }

  uint16_t raw() const { return raw_.value(); }
  bool controlWord() const { return raw() >> 15; }
  void controlWordIs(bool b) { raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), 0x8000, b)); }
  Pseudowire::PseudowireType pwType() const {
    return Pseudowire::PseudowireType(static_cast<uint16_t>(raw() & 0x7FFF));
  }
  void pwTypeIs(Pseudowire::PseudowireType t) {
    raw_.valueIs(TlvDetail::withBits<uint16_t>(raw(), 0x7FFF, t.value()));
  }

 private:
  Ovo::NetU16 raw_;
};

// The PW id FEC element (RFC 4447 §5.2):
//   0  element type (0x80)        1  C bit and PW type      3  PW info length
//   4  group id                   8  PW id                 12  interface parameters
// The PW info length counts the PW id and the interface parameters: the element is
// headLength + pwInfoLength() octets. A PW info length of 0 names no PW id (all
// the pseudowires of the group); the PW id is read only when the length covers it.
class LdpFecTlvPwIdElementHdr : public Zel::NrcPtrInterface {
 public:
  // The octets up to and including the group id.
  static constexpr uint32_t headLength = 8;
  static constexpr uint8_t pwIdLength = 4;

  uint8_t elementType() const { return elementType_; }
  void elementTypeIs(uint8_t t) { elementType_ = t; }
  const LdpFecTlvPwIdElementHdrTypeField& typeField() const { return typeField_; }
  LdpFecTlvPwIdElementHdrTypeField& typeField() { return typeField_; }
  bool controlWord() const { return typeField_.controlWord(); }
  void controlWordIs(bool b) { typeField_.controlWordIs(b); }
  Pseudowire::PseudowireType pwType() const { return typeField_.pwType(); }
  void pwTypeIs(Pseudowire::PseudowireType t) { typeField_.pwTypeIs(t); }
  uint8_t pwInfoLength() const { return pwInfoLength_; }
  void pwInfoLengthIs(uint8_t v) { pwInfoLength_ = v; }
  Pseudowire::GroupId groupId() const { return Pseudowire::GroupId(groupIdNbo_.value()); }
  void groupIdIs(Pseudowire::GroupId id) { groupIdNbo_.valueIs(id.value()); }
  // The PW id; 0 when the PW info length is below 4.
  Pseudowire::PseudowireId pwId() const {
    return Pseudowire::PseudowireId(pwInfoLength_ >= pwIdLength ? pwIdNbo_.value() : 0);
  }
  // Stores the PW id; the PW info length must cover it already.
  void pwIdIs(Pseudowire::PseudowireId id);
  uint32_t totalLength() const { return headLength + pwInfoLength_; }
  // The first interface-parameter sub-TLV, right after the PW id; only meaningful
  // when the PW info length is above 4.
  const uint8_t* intfParams() const { return reinterpret_cast<const uint8_t*>(this) + 12; }

  // The rules of the 8-octet head: the PW type is known (else unknownFec), and the
  // PW info length is 0 or at least 4 (else badTlvLength). Reads nothing after it.
  LdpStatusCode validateHead() const;
  // validateHead(), then a PW id that is present must not be 0 (else malformedTlv).
  // The sub-TLVs are left to their own overlays.
  LdpStatusCode validate() const;
  // "LdpFecTlvPwIdElementHdr: pwType(ethernet), cbit(1), groupId(5), pwInfoLen(4),
  // pwId(100)"
  Zel::String stringValue() const;

 private:
  uint8_t elementType_;
  LdpFecTlvPwIdElementHdrTypeField typeField_;
  uint8_t pwInfoLength_;
  Ovo::NetU32 groupIdNbo_;
  Ovo::NetU32 pwIdNbo_;
};

// The header of an interface-parameter sub-TLV: octet 0 the type, octet 1 the
// length, which counts these two octets too.
class LdpPwIntfParamSubTlv : public Zel::NrcPtrInterface {
 public:
  static constexpr uint8_t headerLength = 2;

  LdpPwIntfParamSubTlvType type() const { return static_cast<LdpPwIntfParamSubTlvType>(type_); }
  void typeIs(uint8_t t) { type_ = t; }
  uint8_t length() const { return length_; }
  void lengthIs(uint8_t v) { length_ = v; }
  const uint8_t* value() const { return reinterpret_cast<const uint8_t*>(this) + headerLength; }
  uint8_t* value() { return reinterpret_cast<uint8_t*>(this) + headerLength; }

 private:
  uint8_t type_;
  uint8_t length_;
};

// Interface MTU (0x01): the MTU in octets.
class LdpPwIntfMtuSubTlv : public LdpPwIntfParamSubTlv {
 public:
  uint16_t mtu() const { return mtuNbo_.value(); }
  void mtuIs(uint16_t v) { mtuNbo_.valueIs(v); }

  // Length 4, else badTlvLength.
  LdpStatusCode validate() const;
  // "LdpPwIntfMtuSubTlv: 1500"
  Zel::String stringValue() const;

 private:
  Ovo::NetU16 mtuNbo_;
};

// Interface description (0x03): length - 2 octets of text, at most 80 of them.
// The text must be printable ASCII (0x20 to 0x7E): it is an operator's
// description, shown as it is in traces and the state model, and a control
// character or a byte that is no ASCII would garble both.
class LdpPwIntfDescSubTlv : public LdpPwIntfParamSubTlv {
 public:
  static constexpr uint8_t maxDescriptionLength = 80;

  // The length - 2 octets of text (none when the length is below 2).
  std::string_view description() const {
    const size_t n = length() < headerLength ? 0 : length() - headerLength;
    return std::string_view(reinterpret_cast<const char*>(value()), n);
  }

  // length - 2, taken as an octet, at most 80 (else badTlvLength, so a length of 0
  // or 1 fails too); then every octet of the text printable ASCII (else
  // malformedTlv).
  LdpStatusCode validate() const;
  // "LdpPwIntfDescSubTlv: \"<text>\""
  Zel::String stringValue() const;
};

// Requested VLAN id (0x06, RFC 4448 §6.1). The VLAN id range is the parser's rule.
class LdpPwRequestedVlanIdSubTlv : public LdpPwIntfParamSubTlv {
 public:
  uint16_t vlanId() const { return vlanIdNbo_.value(); }
  void vlanIdIs(uint16_t v) { vlanIdNbo_.valueIs(v); }

  // Length 4, else badTlvLength.
  LdpStatusCode validate() const;
  // "LdpPwRequestedVlanIdSubTlv: 100"
  Zel::String stringValue() const;

 private:
  Ovo::NetU16 vlanIdNbo_;
};

// Fragmentation indicator (0x09, RFC 4623): its presence says the sender can
// reassemble fragmented PW packets; the two value octets carry nothing else.
class LdpPwFragIndicatorSubTlv : public LdpPwIntfParamSubTlv {
 public:
  uint16_t indicator() const { return indicatorNbo_.value(); }
  void indicatorIs(uint16_t v) { indicatorNbo_.valueIs(v); }

  // Length 4, else badTlvLength.
  LdpStatusCode validate() const;
  // "LdpPwFragIndicatorSubTlv: 0x0000"
  Zel::String stringValue() const;

 private:
  Ovo::NetU16 indicatorNbo_;
};

// The value of the VCCV parameter sub-TLV (RFC 5085 §8.1): the control channel
// types, then the connectivity verification types.
class LdpPwVccvParamField {
 public:
  LdpPwVccvParamField() = default;
  LdpPwVccvParamField(uint8_t ccTypes, Pseudowire::VccvCvTypes cvTypes)
      : ccTypes_(ccTypes), cvTypes_(cvTypes.value()) {}

  uint8_t ccTypes() const { return ccTypes_; }
  void ccTypesIs(uint8_t v) { ccTypes_ = v; }
  Pseudowire::VccvCvTypes cvTypes() const { return Pseudowire::VccvCvTypes(cvTypes_); }
  void cvTypesIs(Pseudowire::VccvCvTypes v) { cvTypes_ = v.value(); }

 private:
  uint8_t ccTypes_ = 0;
  uint8_t cvTypes_ = 0;
};

// VCCV parameter (0x0C).
class LdpPwVccvParamSubTlv : public LdpPwIntfParamSubTlv {
 public:
  const LdpPwVccvParamField& vccvField() const { return vccvField_; }
  LdpPwVccvParamField& vccvField() { return vccvField_; }
  uint8_t ccTypes() const { return vccvField_.ccTypes(); }
  Pseudowire::VccvCvTypes cvTypes() const { return vccvField_.cvTypes(); }

  // Length 4, else badTlvLength.
  LdpStatusCode validate() const;
  // "LdpPwVccvParamSubTlv: cc(0x01), cv(0x02)"
  Zel::String stringValue() const;

 private:
  LdpPwVccvParamField vccvField_;
};

// The value of the PW Status TLV: the 32-bit status word.
class LdpPwStatusField {
 public:
  LdpPwStatusField() = default;
  explicit LdpPwStatusField(Pseudowire::PseudowireLdpStatusFlags flags) { flagsIs(flags); }

  Pseudowire::PseudowireLdpStatusFlags flags() const {
    return Pseudowire::PseudowireLdpStatusFlags(flagsNbo_.value());
  }
  void flagsIs(Pseudowire::PseudowireLdpStatusFlags f) { flagsNbo_.valueIs(f.value()); }
  // No fault bit is set.
  bool pwForwarding() const { return flagsNbo_.value() == 0; }

 private:
  Ovo::NetU32 flagsNbo_;
};

// PW Status (0x096A, RFC 4447 §5.4.2).
class LdpPwStatusTlv : public LdpTlvHdr {
 public:
  const LdpPwStatusField& statusField() const { return statusField_; }
  LdpPwStatusField& statusField() { return statusField_; }
  Pseudowire::PseudowireLdpStatusFlags flags() const { return statusField_.flags(); }
  void flagsIs(Pseudowire::PseudowireLdpStatusFlags f) { statusField_.flagsIs(f); }
  bool pwForwarding() const { return statusField_.pwForwarding(); }

  // validateTlvHdr(), then length 4, else badTlvLength.
  LdpStatusCode validate() const;
  // "LdpPwStatusTlv: 0x00000000"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  LdpPwStatusField statusField_;
};

static_assert(sizeof(LdpFecTlvPwIdElementHdrTypeField) == 2 &&
              alignof(LdpFecTlvPwIdElementHdrTypeField) == 1);
static_assert(sizeof(LdpFecTlvPwIdElementHdr) == 12 && alignof(LdpFecTlvPwIdElementHdr) == 1);
static_assert(sizeof(LdpPwIntfParamSubTlv) == 2 && alignof(LdpPwIntfParamSubTlv) == 1);
static_assert(sizeof(LdpPwIntfMtuSubTlv) == 4 && alignof(LdpPwIntfMtuSubTlv) == 1);
static_assert(sizeof(LdpPwIntfDescSubTlv) == 2 && alignof(LdpPwIntfDescSubTlv) == 1);
static_assert(sizeof(LdpPwRequestedVlanIdSubTlv) == 4 && alignof(LdpPwRequestedVlanIdSubTlv) == 1);
static_assert(sizeof(LdpPwFragIndicatorSubTlv) == 4 && alignof(LdpPwFragIndicatorSubTlv) == 1);
static_assert(sizeof(LdpPwVccvParamField) == 2 && alignof(LdpPwVccvParamField) == 1);
static_assert(sizeof(LdpPwVccvParamSubTlv) == 4 && alignof(LdpPwVccvParamSubTlv) == 1);
static_assert(sizeof(LdpPwStatusField) == 4 && alignof(LdpPwStatusField) == 1);
static_assert(sizeof(LdpPwStatusTlv) == 8 && alignof(LdpPwStatusTlv) == 1);

}  // namespace Ldp
