#pragma once
// The opaque values of a P2MP FEC element (RFC 6388 §2.3). Each value starts with
// a one-octet LdpP2mpOpaqueValueTypeEnum and a two-octet length of the value that
// follows. Both types are byte-exact: LdpMPBasicOpaqueValueElementHdr overlays the
// head of any opaque value in place; LdpGenericLSPId is the whole generic LSP
// identifier value (type 1, length 4, a 4-octet id), usable as an overlay and as a
// plain value (default all zeros).
//
// Reflection forms (the Nbo fields print their host value):
//   "Value('Ldp::LdpMPBasicOpaqueValueElementHdr', ** {'type': <type>, 'opaqueLenNbo': <n>})"
//   "Value('Ldp::LdpGenericLSPId', ** {'type': <type>, 'opaqueLenNbo': <n>, 'opaqueId': <id>})"
// with <type> the enumerator's name (a number when it is none). Both parse back;
// a text that is not such a form is refused with "Invalid <type name>".
// Attribute log of LdpGenericLSPId: its 7 octets.

#include <cstdint>
#include <iosfwd>

#include "core/LdpTypes.h"
#include "platform/ovo/NetU16.h"
#include "platform/ovo/NetU32.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/StringForm.h"
#include "platform/zel/Type.h"

namespace Ldp {

class LdpMPBasicOpaqueValueElementHdr : public Zel::NrcPtrInterface {
 public:
  LdpMPBasicOpaqueValueElementHdr() = default;
  LdpMPBasicOpaqueValueElementHdr(LdpP2mpOpaqueValueTypeEnum type, uint16_t opaqueLen)
      : type_(static_cast<uint8_t>(type)), opaqueLenNbo_(opaqueLen) {}

  LdpP2mpOpaqueValueTypeEnum type() const { return static_cast<LdpP2mpOpaqueValueTypeEnum>(type_); }
  void typeIs(LdpP2mpOpaqueValueTypeEnum t) { type_ = static_cast<uint8_t>(t); }
  const Ovo::NetU16& opaqueLenNbo() const { return opaqueLenNbo_; }
  // Octets of the value after this header.
  uint16_t opaqueLen() const { return opaqueLenNbo_.value(); }
  void opaqueLenIs(uint16_t v) { opaqueLenNbo_.valueIs(v); }
  const uint8_t* value() const { return reinterpret_cast<const uint8_t*>(this) + 3; }
  uint8_t* value() { return reinterpret_cast<uint8_t*>(this) + 3; }

  bool operator==(const LdpMPBasicOpaqueValueElementHdr& o) const {
    return type_ == o.type_ && opaqueLenNbo_ == o.opaqueLenNbo_;
  }
  const Zel::ZelType* fwkType() const;

 private:
  uint8_t type_ = 0;
  Ovo::NetU16 opaqueLenNbo_;
};

class LdpGenericLSPId {
 public:
  LdpGenericLSPId() = default;
  // The generic LSP identifier `opaqueId`: type p2mpGenericLspIdentifier, length 4.
  explicit LdpGenericLSPId(uint32_t opaqueId)
      : hdr_(p2mpGenericLspIdentifier_, 4), opaqueIdNbo_(opaqueId) {}

  const LdpMPBasicOpaqueValueElementHdr& hdr() const { return hdr_; }
  LdpP2mpOpaqueValueTypeEnum type() const { return hdr_.type(); }
  void typeIs(LdpP2mpOpaqueValueTypeEnum t) { hdr_.typeIs(t); }
  const Ovo::NetU16& opaqueLenNbo() const { return hdr_.opaqueLenNbo(); }
  uint16_t opaqueLen() const { return hdr_.opaqueLen(); }
  void opaqueLenIs(uint16_t v) { hdr_.opaqueLenIs(v); }
  const Ovo::NetU32& opaqueIdNbo() const { return opaqueIdNbo_; }
  uint32_t opaqueId() const { return opaqueIdNbo_.value(); }
  void opaqueIdIs(uint32_t v) { opaqueIdNbo_.valueIs(v); }

  bool operator==(const LdpGenericLSPId& o) const {
    return hdr_ == o.hdr_ && opaqueIdNbo_ == o.opaqueIdNbo_;
  }
  // True when all seven octets are zero.
  bool operator!() const { return *this == LdpGenericLSPId(); }
  uint32_t hash() const;

 private:
  LdpMPBasicOpaqueValueElementHdr hdr_;
  Ovo::NetU32 opaqueIdNbo_;
};

static_assert(sizeof(LdpMPBasicOpaqueValueElementHdr) == 3 &&
              alignof(LdpMPBasicOpaqueValueElementHdr) == 1);
static_assert(sizeof(LdpGenericLSPId) == 7 && alignof(LdpGenericLSPId) == 1);

Zel::String valueToStrep(const LdpMPBasicOpaqueValueElementHdr& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpMPBasicOpaqueValueElementHdr* out);
std::ostream& operator<<(std::ostream& os, const LdpMPBasicOpaqueValueElementHdr& v);

Zel::String valueToStrep(const LdpGenericLSPId& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, LdpGenericLSPId* out);
std::ostream& operator<<(std::ostream& os, const LdpGenericLSPId& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const LdpGenericLSPId& v);
void attrLogRead(Zel::NboAttrLog::In& i, LdpGenericLSPId* v);

}  // namespace Ldp
