#include "wire/LdpFecElements.h"

#include <cstring>

#include "platform/zel/Assert.h"

namespace Ldp {

namespace {

const Zel::ZelType elementHdrType("Ldp::LdpFecTlvElementHdr", Zel::ZelType::Kind::overlay, nullptr,
                                  {});
const Zel::ZelType wildcardElementHdrType("Ldp::LdpFecTlvWildcardElementHdr",
                                          Zel::ZelType::Kind::overlay, &elementHdrType, {});
const Zel::ZelType prefixElementHdrType("Ldp::LdpFecTlvPrefixElementHdr",
                                        Zel::ZelType::Kind::overlay, &elementHdrType, {});
const Zel::ZelType hostAddressElementHdrType("Ldp::LdpFecTlvHostAddressElementHdr",
                                             Zel::ZelType::Kind::overlay, &elementHdrType, {});
const Zel::ZelType p2mpElementHdrType("Ldp::LdpFecTlvP2mpElementHdr", Zel::ZelType::Kind::overlay,
                                      &elementHdrType, {});

}  // namespace

Zel::String valueToStrep(const LdpFecTlvElementHdrTypeField& v) {
  return Zel::String("Value('Ldp::LdpFecTlvElementHdrTypeField', ** {'type': ") +
         valueToStrep(v.type()).view() + "})";
}

const Zel::ZelType* LdpFecTlvElementHdr::fwkType() const { return &elementHdrType; }
const Zel::ZelType* LdpFecTlvWildcardElementHdr::fwkType() const { return &wildcardElementHdrType; }
const Zel::ZelType* LdpFecTlvPrefixElementHdr::fwkType() const { return &prefixElementHdrType; }
const Zel::ZelType* LdpFecTlvHostAddressElementHdr::fwkType() const {
  return &hostAddressElementHdrType;
}
const Zel::ZelType* LdpFecTlvP2mpElementHdr::fwkType() const { return &p2mpElementHdrType; }

// --- LdpFecTlvAddrElementHdr

Ovo::IpGenAddr LdpFecTlvAddrElementHdr::addrOf(const uint8_t* p, unsigned octets) const {
  ZEL_ASSERT(familyKnown());
  ZEL_ASSERT(octets <= familyOctets(family()));
  if (family() == Ovo::AddressFamily::ipv4) {
    uint8_t o[4] = {};
    std::memcpy(o, p, octets);
    return Ovo::IpGenAddr(Ovo::IpAddr((uint32_t(o[0]) << 24) | (uint32_t(o[1]) << 16) |
                                      (uint32_t(o[2]) << 8) | o[3]));
  }
  Ovo::IpGenAddr::Octets o{};
  std::memcpy(o.data(), p, octets);
  return Ovo::IpGenAddr(o);
}

void LdpFecTlvAddrElementHdr::addrIs(const Ovo::IpGenAddr& a, unsigned octets) {
  ZEL_ASSERT(!!a);
  ZEL_ASSERT(octets <= a.bitLength() / 8);
  familyIs(a.isV4() ? Ovo::AddressFamily::ipv4 : Ovo::AddressFamily::ipv6);
  // An IPv4 address is held in its mapped form, which ends in the address.
  std::memcpy(tail(), a.v6Octets().data() + (a.isV4() ? 12 : 0), octets);
}

// --- LdpFecTlvPrefixElementHdr

Ovo::IpGenPrefix LdpFecTlvPrefixElementHdr::prefix() const {
  ZEL_ASSERT(familyKnown());
  ZEL_ASSERT(prefixBits() <= 8 * familyOctets(family()));
  return Ovo::IpGenPrefix(addrOf(prefixValue(), prefixOctets()), prefixBits());
}

void LdpFecTlvPrefixElementHdr::prefixIs(const Ovo::IpGenPrefix& p) {
  prefixBitsIs(static_cast<uint8_t>(p.len()));
  addrIs(p.address(), prefixOctets());
}

// --- LdpFecTlvHostAddressElementHdr

Ovo::IpGenAddr LdpFecTlvHostAddressElementHdr::hostAddr() const {
  return addrOf(hostAddrValue(), hostAddrLen());
}

void LdpFecTlvHostAddressElementHdr::hostAddrIs(const Ovo::IpGenAddr& a) {
  hostAddrLenIs(static_cast<uint8_t>(a.bitLength() / 8));
  addrIs(a, hostAddrLen());
}

// --- LdpFecTlvP2mpElementHdr

Ovo::IpGenAddr LdpFecTlvP2mpElementHdr::rootIp() const {
  return addrOf(rootIpValue(), rootIpLenOctets());
}

void LdpFecTlvP2mpElementHdr::rootIpIs(const Ovo::IpGenAddr& a) {
  rootIpLenOctetsIs(static_cast<uint8_t>(a.bitLength() / 8));
  addrIs(a, rootIpLenOctets());
}

}  // namespace Ldp
