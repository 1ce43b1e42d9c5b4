#include "fec/LdpFecFilter.h"

#include "core/LdpTrace.h"

namespace Ldp {

namespace {

// Whether the first `bits` bits of a and b are equal; both of one family.
bool topBitsEqual(const Ovo::IpGenAddr& a, const Ovo::IpGenAddr& b, unsigned bits) {
  if (a.isV4()) {
    const uint32_t mask = bits >= 32 ? ~uint32_t{0} : ~(~uint32_t{0} >> bits);
    return ((a.v4().value() ^ b.v4().value()) & mask) == 0;
  }
  const Ovo::IpGenAddr::Octets& x = a.v6Octets();
  const Ovo::IpGenAddr::Octets& y = b.v6Octets();
  size_t i = 0;
  for (; bits >= 8; bits -= 8, ++i) {
    if (x[i] != y[i]) return false;
  }
  const auto mask = static_cast<uint8_t>(0xff00u >> bits);
  return bits == 0 || ((x[i] ^ y[i]) & mask) == 0;
}

// Whether `entry` matches the FEC address/len; the conditions in the order of LdpFecFilter.h.
bool matches(const Acl::PrefixListEntry& entry, const Ovo::IpGenAddr& address, unsigned len) {
  if (entry.eq != 0 && entry.eq != len) return false;
  if (entry.le != 0 && entry.le < len) return false;
  if (entry.ge != 0 && entry.ge > len) return false;
  const unsigned p = entry.prefix.len();
  if (p > len) return false;
  if (p == 0) return true;
  return entry.prefix.family() == address.family() &&
         topBitsEqual(address, entry.prefix.address(), p);
}

}  // namespace

bool LdpFecFilter::isPermittedFec(const Mpls::FwdEqvClass& fec) const {
  LDP_TRACE_TO(traceFec, 8, "LdpFecFilter::isPermittedFec fec: %s", fec.stringValue().charPtr());
  if (!prefixList_) return true;
  Ovo::IpGenAddr address;
  unsigned len = 0;
  if (fec.isPrefix()) {
    address = fec.prefix().address();
    len = fec.prefix().len();
  } else if (fec.isHost()) {
    address = fec.hostAddr();
    len = address.bitLength();
  } else {
    return false;  // wildcard or none: nothing for an entry to match
  }
  for (const auto& e : *prefixList_) {
    if (matches(e.value, address, len)) return e.value.action == Acl::PrefixListAction::permit;
  }
  return false;
}

}  // namespace Ldp
