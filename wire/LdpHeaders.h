#pragma once
// Overlays on the three LDP header levels: the PDU header (10 octets), the message
// header (8) and the TLV header (4). An overlay's storage is the wire octets: a
// parser takes the address of the packet's bytes at an offset, and every accessor
// reads or writes the packet in place. Overlays are never owned (NrcPtrInterface)
// and a default-constructed one is all zeros.
//
// totalLength() of a header is its length field + 4 computed in 16 bits, so a
// length field of 0xFFFC gives 0.

#include "core/LdpTypes.h"
#include "platform/ovo/NetU16.h"
#include "platform/ovo/NetU32.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Type.h"

namespace Ldp {

// The bit-field writers of the header, TLV and element overlays.
namespace TlvDetail {
// `word` with the bits under `mask` replaced by those of `bits`.
template <class T>
constexpr T withBits(T word, T mask, T bits) {
  return static_cast<T>((word & ~mask) | (bits & mask));
}
template <class T>
constexpr T withFlag(T word, T mask, bool on) {
  return withBits<T>(word, mask, on ? mask : T(0));
}
}  // namespace TlvDetail

// The first 16 bits of a message header: bit 15 the U bit, bits 14..0 the type.
class LdpHdrMsgUbitAndTypeField {
 public:
  LdpHdrMsgUbitAndTypeField() = default;
  explicit LdpHdrMsgUbitAndTypeField(uint16_t raw) { raw_.valueIs(raw); }

  uint16_t raw() const { return raw_.value(); }
  bool unknown() const { return raw() >> 15; }
  void unknownIs(bool b) { raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), 0x8000, b)); }
  LdpMsgType type() const { return static_cast<LdpMsgType>(raw() & 0x7FFF); }
  void typeIs(uint32_t t) {
    raw_.valueIs(TlvDetail::withBits<uint16_t>(raw(), 0x7FFF, static_cast<uint16_t>(t)));
  }

  bool operator==(const LdpHdrMsgUbitAndTypeField& o) const { return raw() == o.raw(); }
  bool operator<(const LdpHdrMsgUbitAndTypeField& o) const { return raw() < o.raw(); }

 private:
  Ovo::NetU16 raw_;
};

// The first 16 bits of a TLV header: bit 15 U, bit 14 F, bits 13..0 the type.
class LdpTlvTypeField {
 public:
  LdpTlvTypeField() = default;
  explicit LdpTlvTypeField(uint16_t raw) { raw_.valueIs(raw); }

  uint16_t raw() const { return raw_.value(); }
  bool unknown() const { return raw() >> 15; }
  void unknownIs(bool b) { raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), 0x8000, b)); }
  bool forwardUnknown() const { return (raw() >> 14) & 1; }
  void forwardUnknownIs(bool b) { raw_.valueIs(TlvDetail::withFlag<uint16_t>(raw(), 0x4000, b)); }
  LdpTlvType type() const { return static_cast<LdpTlvType>(raw() & 0x3FFF); }
  void typeIs(uint32_t t) {
    raw_.valueIs(TlvDetail::withBits<uint16_t>(raw(), 0x3FFF, static_cast<uint16_t>(t)));
  }

  bool operator==(const LdpTlvTypeField& o) const { return raw() == o.raw(); }
  bool operator<(const LdpTlvTypeField& o) const { return raw() < o.raw(); }

 private:
  Ovo::NetU16 raw_;
};

// Reflection forms: "Value('Ldp::LdpHdrMsgUbitAndTypeField', ** {'unknown': False,
// 'type': LdpHello})" and likewise with 'forwardUnknown' for the TLV field.
Zel::String valueToStrep(const LdpHdrMsgUbitAndTypeField& v);
Zel::String valueToStrep(const LdpTlvTypeField& v);

class LdpPduHdr : public Zel::NrcPtrInterface {
 public:
  uint16_t version() const { return version_.value(); }
  void versionIs(uint16_t v) { version_.valueIs(v); }
  uint16_t length() const { return length_.value(); }
  void lengthIs(uint16_t v) { length_.valueIs(v); }
  uint16_t totalLength() const { return static_cast<uint16_t>(length() + 4); }
  LdpIdentifier ldpId() const { return LdpIdentifier(lsrId_.value(), labelSpace_.value()); }
  void ldpIdIs(const LdpIdentifier& id) {
    lsrId_.valueIs(id.lsrId().value());
    labelSpace_.valueIs(id.labelSpace().value());
  }

  // "LdpPduHdr: Ver(<version>),Len(<length field>),LdpId: <identifier>"
  Zel::String stringValue() const;
  const Zel::ZelType* fwkType() const;

 private:
  Ovo::NetU16 version_;
  Ovo::NetU16 length_;
  Ovo::NetU32 lsrId_;
  Ovo::NetU16 labelSpace_;
};

class LdpMsgHdr : public Zel::NrcPtrInterface {
 public:
  const LdpHdrMsgUbitAndTypeField& typeField() const { return typeField_; }
  LdpMsgType type() const { return typeField_.type(); }
  // Stores (old & 0x8000) | (t & 0x7FFF): the U bit is kept.
  void typeIs(uint32_t t) { typeField_.typeIs(t); }
  bool unknown() const { return typeField_.unknown(); }
  void unknownIs(bool b) { typeField_.unknownIs(b); }
  uint16_t length() const { return length_.value(); }
  void lengthIs(uint16_t v) { length_.valueIs(v); }
  uint16_t totalLength() const { return static_cast<uint16_t>(length() + 4); }
  uint32_t msgId() const { return msgId_.value(); }
  void msgIdIs(uint32_t v) { msgId_.valueIs(v); }

  const Zel::ZelType* fwkType() const;

 private:
  LdpHdrMsgUbitAndTypeField typeField_;
  Ovo::NetU16 length_;
  Ovo::NetU32 msgId_;
};

class LdpTlvHdr : public Zel::NrcPtrInterface {
 public:
  const LdpTlvTypeField& typeField() const { return typeField_; }
  LdpTlvType type() const { return typeField_.type(); }
  // Stores (old & 0xC000) | (t & 0x3FFF): the U and F bits are kept.
  void typeIs(uint32_t t) { typeField_.typeIs(t); }
  bool unknown() const { return typeField_.unknown(); }
  void unknownIs(bool b) { typeField_.unknownIs(b); }
  bool forwardUnknown() const { return typeField_.forwardUnknown(); }
  void forwardUnknownIs(bool b) { typeField_.forwardUnknownIs(b); }
  uint16_t length() const { return length_.value(); }
  void lengthIs(uint16_t v) { length_.valueIs(v); }
  uint16_t totalLength() const { return static_cast<uint16_t>(length() + 4); }
  // The value octets that follow the header.
  const uint8_t* value() const { return reinterpret_cast<const uint8_t*>(this) + 4; }
  uint8_t* value() { return reinterpret_cast<uint8_t*>(this) + 4; }

  // success for a known TLV type; otherwise unknownMessageTypeIgnore when the U bit
  // is set (ignore silently), else unknownTlv. The F bit plays no part.
  LdpStatusCode validateTlvHdr() const;
  const Zel::ZelType* fwkType() const;

 private:
  LdpTlvTypeField typeField_;
  Ovo::NetU16 length_;
};

// Whether `t` is a TLV type this library understands. 0x603 (the unrecognized
// notification capability) is deliberately not one; the vendor-private and
// experimental range markers are, the codes between them are not.
bool ldpTlvTypeKnown(uint32_t t);

static_assert(sizeof(LdpHdrMsgUbitAndTypeField) == 2 && alignof(LdpHdrMsgUbitAndTypeField) == 1);
static_assert(sizeof(LdpTlvTypeField) == 2 && alignof(LdpTlvTypeField) == 1);
static_assert(sizeof(LdpPduHdr) == 10 && alignof(LdpPduHdr) == 1);
static_assert(sizeof(LdpMsgHdr) == 8 && alignof(LdpMsgHdr) == 1);
static_assert(sizeof(LdpTlvHdr) == 4 && alignof(LdpTlvHdr) == 1);

// Overlays a header type on the octets at `p`.
template <class Hdr>
Hdr* overlay(uint8_t* p) {
  return reinterpret_cast<Hdr*>(p);
}
template <class Hdr>
const Hdr* overlay(const uint8_t* p) {
  return reinterpret_cast<const Hdr*>(p);
}

}  // namespace Ldp
