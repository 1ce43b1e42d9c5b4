#pragma once
// IpGenPrefix: an IPv4 or IPv6 prefix, an IpGenAddr and a length (0..32 for IPv4,
// 0..128 for IPv6), or the unset prefix (the default: unset address, length 0).
// A prefix holds no host bits: the constructor clears the bits beyond the length,
// so 10.0.0.1/8 and 10.0.0.0/8 are the same prefix, 10.0.0.0/8.
//
// String form: "<address>/<length>", "10.0.0.0/8", "2001:db8::/32" (the address as
// IpGenAddr prints it); the unset prefix is "none". The parser reads "none", or an
// IPv4/IPv6 address (as IpGenAddr reads it), a '/', and a decimal length (no sign;
// leading zeros accepted), stopping after the length's digits; the '/' and
// length are required. Host bits in the text are accepted and cleared.
// Failure, and a bad length (or an unset address with a length) given to the
// constructor: "Invalid IpGenPrefix".
// Order: by address (so by family first), then length.
// Attribute log: the address as IpGenAddr logs it, then 1 octet length.

#include <cstdint>
#include <iosfwd>

#include "platform/ovo/IpGenAddr.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/StringForm.h"

namespace Ovo {

class IpGenPrefix {
 public:
  IpGenPrefix() = default;
  IpGenPrefix(const IpGenAddr& address, unsigned len);

  const IpGenAddr& address() const { return address_; }
  unsigned len() const { return len_; }
  IpGenAddr::Family family() const { return address_.family(); }
  bool isV4() const { return address_.isV4(); }
  bool isV6() const { return address_.isV6(); }

  bool operator!() const { return !address_; }
  bool operator==(const IpGenPrefix&) const = default;
  auto operator<=>(const IpGenPrefix&) const = default;

  uint32_t hash() const;
  Zel::String stringValue() const;

 private:
  IpGenAddr address_;
  uint8_t len_ = 0;
};

Zel::String valueToStrep(const IpGenPrefix& v);
void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpGenPrefix* out);
std::ostream& operator<<(std::ostream& os, const IpGenPrefix& v);
void attrLogWrite(Zel::NboAttrLog::Out& o, const IpGenPrefix& v);
void attrLogRead(Zel::NboAttrLog::In& i, IpGenPrefix* v);

}  // namespace Ovo
