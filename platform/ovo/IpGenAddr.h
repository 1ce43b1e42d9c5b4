#pragma once
// IpGenAddr: an IPv4 or IPv6 address, or the unset address (the default).
//
// Family: unset, ipv4 or ipv6. The address is held as 16 octets in network
// order, those of the address "taken as IPv6": an IPv4 address a.b.c.d holds its
// IPv4-mapped form ::ffff:a.b.c.d, the unset address holds zeros. The family is
// part of the value: 10.0.0.1 (ipv4) and ::ffff:10.0.0.1 (ipv6) are different
// values, though asV6() of both is the same and so is hashAsV6().
//
// String form:
//   unset  "none"
//   ipv4   dotted quad, "10.0.0.1" (as IpAddr)
//   ipv6   RFC 5952 canonical text: lower-case hex, no leading zeros in a group,
//          the longest run of two or more zero groups (the first of equal runs)
//          written "::", a single zero group written "0". IPv4-mapped addresses
//          (::ffff:0:0/96) end in a dotted quad, "::ffff:10.0.0.1" (RFC 5952 §5);
//          every other address is all hex ("::102:304", not "::1.2.3.4").
// The parser reads "none", a dotted quad, or any RFC 4291 IPv6 text: full,
// compressed with one "::", either case, 1..4 hex digits per group, optionally
// ending in a dotted quad in the place of the last two groups. The text is taken
// as IPv6 when its first ':' comes before any character other than a hex digit.
// Parsing stops at the first character that cannot continue the address. Within
// the hex part a ':' must lead on to a group or be half of the one "::", so
// ":::", "1:" and "1:_" are errors rather than stopping points; after a trailing
// dotted quad the address is complete ("::ffff:1.2.3.4:5" stops before ":5").
// Failure: "Invalid IpGenAddr".
// Order: by family (unset < ipv4 < ipv6), then by the octets.
// Attribute log: 1 family octet (0 unset, 4 ipv4, 6 ipv6), then the address in
// network order: no octets (unset), 4 (ipv4) or 16 (ipv6).

#include <array>
#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpAddr.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class IpGenAddr {
 public:
  enum class Family : uint8_t { unset = 0, ipv4 = 4, ipv6 = 6 };
  using Octets = std::array<uint8_t, 16>;

  IpGenAddr() = default;
  explicit IpGenAddr(IpAddr v4);
  explicit IpGenAddr(const Octets& v6);

  Family family() const { return family_; }
  bool isV4() const { return family_ == Family::ipv4; }
  bool isV6() const { return family_ == Family::ipv6; }
  // The IPv4 address; only for an ipv4 address.
  IpAddr v4() const;
  // The 16 octets of the address taken as IPv6, network order (see above).
  const Octets& v6Octets() const { return octets_; }
  // The address taken as IPv6: an ipv4 address gives its mapped form
  // ::ffff:a.b.c.d; an ipv6 address and the unset address are returned as they are.
  IpGenAddr asV6() const;
  // asV6().hash(): equal for an IPv4 address and its IPv4-mapped IPv6 address.
  uint32_t hashAsV6() const;
  // Whether this is an ipv6 address in ::ffff:0:0/96.
  bool isV4Mapped() const;
  // The address length in bits: 0, 32 or 128.
  unsigned bitLength() const;

  bool operator!() const { return family_ == Family::unset; }
  bool operator==(const IpGenAddr&) const = default;
  auto operator<=>(const IpGenAddr&) const = default;

  uint32_t hash() const;
  Zel::String stringValue() const;

 private:
  Family family_ = Family::unset;
  Octets octets_{};
};

Zel::String valueToStrep(const IpGenAddr& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpGenAddr* out);
std::ostream& operator<<(std::ostream& os, const IpGenAddr& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const IpGenAddr& v);
void attrLogRead(Zel::NboAttrLog::In& i, IpGenAddr* v);

}  // namespace Ovo
