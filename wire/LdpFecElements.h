#pragma once
// Overlays on the FEC elements of a FEC TLV (0x0100). Each element starts with a
// one-octet LdpFecElementType; the overlays below lay the element's fixed head over
// the packet's octets and reach the variable part that follows it. Multi-octet
// fields are big-endian; the Nbo accessors give the raw field.
//
//   wildcard  0x01  type
//   prefix    0x02  type, family (2), prefixBits (1), ceil(prefixBits / 8) octets
//   host      0x03  type, family (2), hostAddrLen (1, octets), the address
//   P2MP      0x06  type, family (2), rootIpLenOctets (1), the root address,
//                   opaque length (2), the opaque values (RFC 6388)
//
// The overlays check nothing about the packet: accessors of the variable part read
// and write past the fixed head, so a parser checks the element's extent against
// the TLV before using them. The address readers assert a family of 1 or 2 and a
// length within that family's address; the writers store a whole element (head and
// octets) and need the room for it.

#include <cstdint>

#include "core/LdpTypes.h"
#include "platform/ovo/AddressFamily.h"
#include "platform/ovo/IpGenAddr.h"
#include "platform/ovo/IpGenPrefix.h"
#include "platform/ovo/NetU16.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Type.h"

namespace Ldp {

// The octets of an address of family `f`: 4 for IPv4, 16 for any other family.
inline unsigned familyOctets(Ovo::AddressFamily f) {
  return f == Ovo::AddressFamily::ipv4 ? 4 : 16;
}

// The first octet of every FEC element.
class LdpFecTlvElementHdrTypeField {
 public:
  LdpFecTlvElementHdrTypeField() = default;
  explicit LdpFecTlvElementHdrTypeField(uint8_t raw) : raw_(raw) {}

  uint8_t raw() const { return raw_; }
  LdpFecElementType type() const { return static_cast<LdpFecElementType>(raw_); }
  void typeIs(LdpFecElementType t) { raw_ = static_cast<uint8_t>(t); }

  bool operator==(const LdpFecTlvElementHdrTypeField& o) const { return raw_ == o.raw_; }
  bool operator<(const LdpFecTlvElementHdrTypeField& o) const { return raw_ < o.raw_; }

 private:
  uint8_t raw_ = 0;
};

// "Value('Ldp::LdpFecTlvElementHdrTypeField', ** {'type': prefixElement})"
Zel::String valueToStrep(const LdpFecTlvElementHdrTypeField& v);

class LdpFecTlvElementHdr : public Zel::NrcPtrInterface {
 public:
  const LdpFecTlvElementHdrTypeField& typeField() const { return typeField_; }
  LdpFecElementType type() const { return typeField_.type(); }
  void typeIs(LdpFecElementType t) { typeField_.typeIs(t); }

  const Zel::ZelType* fwkType() const;

 private:
  LdpFecTlvElementHdrTypeField typeField_;
};

class LdpFecTlvWildcardElementHdr : public LdpFecTlvElementHdr {
 public:
  const Zel::ZelType* fwkType() const;
};

// The head shared by the prefix, host-address and P2MP elements: the type, the
// address family and a one-octet length whose unit depends on the element.
class LdpFecTlvAddrElementHdr : public LdpFecTlvElementHdr {
 public:
  const Ovo::NetU16& familyNbo() const { return familyNbo_; }
  Ovo::AddressFamily family() const { return static_cast<Ovo::AddressFamily>(familyNbo_.value()); }
  void familyIs(Ovo::AddressFamily f) { familyNbo_.valueIs(static_cast<uint16_t>(f)); }
  // Whether family() is IPv4 or IPv6.
  bool familyKnown() const {
    return family() == Ovo::AddressFamily::ipv4 || family() == Ovo::AddressFamily::ipv6;
  }

 protected:
  uint8_t lengthField() const { return length_; }
  void lengthFieldIs(uint8_t v) { length_ = v; }
  // The octets after the four-octet head.
  const uint8_t* tail() const { return reinterpret_cast<const uint8_t*>(this) + 4; }
  uint8_t* tail() { return reinterpret_cast<uint8_t*>(this) + 4; }
  // The address of family() made of the first `octets` octets at `p`, the rest zero.
  Ovo::IpGenAddr addrOf(const uint8_t* p, unsigned octets) const;
  // Stores the family of `a` (set) and its first `octets` octets at tail().
  void addrIs(const Ovo::IpGenAddr& a, unsigned octets);

 private:
  Ovo::NetU16 familyNbo_;
  uint8_t length_ = 0;
};

class LdpFecTlvPrefixElementHdr : public LdpFecTlvAddrElementHdr {
 public:
  uint8_t prefixBits() const { return lengthField(); }
  void prefixBitsIs(uint8_t bits) { lengthFieldIs(bits); }
  // ceil(prefixBits / 8): the prefix octets that follow the head.
  unsigned prefixOctets() const { return (prefixBits() + 7u) / 8; }
  const uint8_t* prefixValue() const { return tail(); }
  uint8_t* prefixValue() { return tail(); }
  unsigned elementOctets() const { return 4 + prefixOctets(); }

  // The prefix of prefixBits() bits (bits past it in the last octet are cleared).
  Ovo::IpGenPrefix prefix() const;
  // Stores family, length and the prefix octets of `p` (set).
  void prefixIs(const Ovo::IpGenPrefix& p);

  const Zel::ZelType* fwkType() const;
};

class LdpFecTlvHostAddressElementHdr : public LdpFecTlvAddrElementHdr {
 public:
  // The address length in octets.
  uint8_t hostAddrLen() const { return lengthField(); }
  void hostAddrLenIs(uint8_t octets) { lengthFieldIs(octets); }
  const uint8_t* hostAddrValue() const { return tail(); }
  uint8_t* hostAddrValue() { return tail(); }
  unsigned elementOctets() const { return 4 + hostAddrLen(); }

  Ovo::IpGenAddr hostAddr() const;
  // Stores family, length (4 or 16) and the octets of `a` (set).
  void hostAddrIs(const Ovo::IpGenAddr& a);

  const Zel::ZelType* fwkType() const;
};

// The total length of a P2MP element's opaque values.
class LdpFecTlvP2mpOpaqueLength : public Zel::NrcPtrInterface {
 public:
  const Ovo::NetU16& opaqueLengthNbo() const { return opaqueLengthNbo_; }
  uint16_t opaqueLength() const { return opaqueLengthNbo_.value(); }
  void opaqueLengthIs(uint16_t v) { opaqueLengthNbo_.valueIs(v); }

 private:
  Ovo::NetU16 opaqueLengthNbo_;
};

class LdpFecTlvP2mpElementHdr : public LdpFecTlvAddrElementHdr {
 public:
  uint8_t rootIpLenOctets() const { return lengthField(); }
  void rootIpLenOctetsIs(uint8_t octets) { lengthFieldIs(octets); }
  const uint8_t* rootIpValue() const { return tail(); }
  uint8_t* rootIpValue() { return tail(); }
  // The opaque length field and the opaque values follow the root address.
  const LdpFecTlvP2mpOpaqueLength& opaqueLength() const {
    return *reinterpret_cast<const LdpFecTlvP2mpOpaqueLength*>(tail() + rootIpLenOctets());
  }
  LdpFecTlvP2mpOpaqueLength& opaqueLength() {
    return *reinterpret_cast<LdpFecTlvP2mpOpaqueLength*>(tail() + rootIpLenOctets());
  }
  const uint8_t* opaqueValue() const { return tail() + rootIpLenOctets() + 2; }
  uint8_t* opaqueValue() { return tail() + rootIpLenOctets() + 2; }
  unsigned elementOctets() const {
    return 4 + rootIpLenOctets() + 2 + opaqueLength().opaqueLength();
  }

  // The root address: the rootIpLenOctets() octets, zero-filled to the family's size.
  Ovo::IpGenAddr rootIp() const;
  // Stores family, length (4 or 16) and the octets of `a` (set). The opaque length
  // and values move with the root length: write them after this.
  void rootIpIs(const Ovo::IpGenAddr& a);

  const Zel::ZelType* fwkType() const;
};

static_assert(sizeof(LdpFecTlvElementHdrTypeField) == 1);
static_assert(sizeof(LdpFecTlvElementHdr) == 1);
static_assert(alignof(LdpFecTlvElementHdr) == 1);
static_assert(sizeof(LdpFecTlvWildcardElementHdr) == 1);
static_assert(sizeof(LdpFecTlvAddrElementHdr) == 4 && alignof(LdpFecTlvAddrElementHdr) == 1);
static_assert(sizeof(LdpFecTlvPrefixElementHdr) == 4 && alignof(LdpFecTlvPrefixElementHdr) == 1);
static_assert(sizeof(LdpFecTlvHostAddressElementHdr) == 4 &&
              alignof(LdpFecTlvHostAddressElementHdr) == 1);
static_assert(sizeof(LdpFecTlvP2mpOpaqueLength) == 2 && alignof(LdpFecTlvP2mpOpaqueLength) == 1);
static_assert(sizeof(LdpFecTlvP2mpElementHdr) == 4 && alignof(LdpFecTlvP2mpElementHdr) == 1);

}  // namespace Ldp
