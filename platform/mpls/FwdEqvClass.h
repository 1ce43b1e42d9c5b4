#pragma once
// FwdEqvClass: the forwarding equivalence class that keys an LDP FEC entity.
//
// Kinds (in this order, which is also the order of values):
//   none        the default: no FEC
//   wildcard    the Wildcard FEC element (RFC 5036 §3.4.1)
//   ipv4Prefix  an IPv4 prefix (an IpGenPrefix)
//   ipv6Prefix  an IPv6 prefix
//   ipv4Host    an IPv4 host address (an IpGenAddr)
//   ipv6Host    an IPv6 host address
// A host FEC is distinct from the full-length prefix FEC of the same address.
//
// String form:
//   none        "none"
//   wildcard    "wildcard"
//   prefix      the IpGenPrefix form, "10.0.0.0/8", "2001:db8::/32"
//   host        "host:" and the IpGenAddr form, "host:10.0.0.1", "host:2001:db8::1"
// No form contains '_', ',', '}' or a space, so a FEC can be followed by any of
// them in a longer text. The parser reads one of these forms and stops after it
// (a prefix's host bits are cleared as IpGenPrefix does). Failure, and an unset
// prefix or address given to forPrefix() / forHost(): "Invalid FwdEqvClass".
// Order: by kind, then address, then length. hash() covers all three.
// Attribute log: 1 kind octet (0 none, 1 wildcard, 2 ipv4Prefix, 3 ipv6Prefix,
// 4 ipv4Host, 5 ipv6Host), then the IpGenPrefix encoding for a prefix kind, the
// IpGenAddr encoding for a host kind, nothing for none and wildcard. A reader
// refuses a kind outside 0..5 or a family that does not match the kind.

#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpGenAddr.h"
#include "platform/ovo/IpGenPrefix.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Mpls {

class FwdEqvClass {
 public:
  enum class Kind : uint8_t { none, wildcard, ipv4Prefix, ipv6Prefix, ipv4Host, ipv6Host };

  FwdEqvClass() = default;
  static FwdEqvClass wildcard();
  static FwdEqvClass forPrefix(const Ovo::IpGenPrefix& prefix);
  static FwdEqvClass forHost(const Ovo::IpGenAddr& address);

  Kind kind() const { return kind_; }
  bool isPrefix() const { return kind_ == Kind::ipv4Prefix || kind_ == Kind::ipv6Prefix; }
  bool isHost() const { return kind_ == Kind::ipv4Host || kind_ == Kind::ipv6Host; }
  // The prefix; only for a prefix kind.
  const Ovo::IpGenPrefix& prefix() const;
  // The host address; only for a host kind.
  const Ovo::IpGenAddr& hostAddr() const;

  bool operator!() const { return kind_ == Kind::none; }
  bool operator==(const FwdEqvClass&) const = default;
  auto operator<=>(const FwdEqvClass&) const = default;

  uint32_t hash() const;
  Zel::String stringValue() const;

 private:
  Kind kind_ = Kind::none;
  // A prefix kind's prefix; a host kind's address with its full length (/32, /128).
  Ovo::IpGenPrefix prefix_;
};

Zel::String valueToStrep(const FwdEqvClass& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, FwdEqvClass* out);
std::ostream& operator<<(std::ostream& os, const FwdEqvClass& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const FwdEqvClass& v);
void attrLogRead(Zel::NboAttrLog::In& i, FwdEqvClass* v);

}  // namespace Mpls
