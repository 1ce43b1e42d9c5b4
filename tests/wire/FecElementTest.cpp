// FEC element overlays and P2MP opaque values: field placement in the octets,
// the variable parts that follow each head, the writers, the value types' forms,
// and the assertions that guard the address readers.
//
// Buffers are exactly as long as the element, so a read or write past it shows up
// under the address sanitizer.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fec/LdpP2mpFec.h"
#include "tests/support/ValueChecks.h"
#include "tests/wire/OverlayBytes.h"
#include "wire/LdpHdr.h"

using namespace Ldp;
using LdpTest::as;
using LdpTest::Bytes;
using Ovo::AddressFamily;
using Ovo::IpAddr;
using Ovo::IpGenAddr;
using Ovo::IpGenPrefix;

namespace {

IpGenAddr v4(uint32_t a) { return IpGenAddr(IpAddr(a)); }

IpGenAddr v6(std::initializer_list<uint8_t> leading) {
  IpGenAddr::Octets o{};
  std::copy(leading.begin(), leading.end(), o.begin());
  return IpGenAddr(o);
}

// The parser's tests read elements through these overlays; here, the writers and
// the fields that move with the root length.
TEST(FecElementHdr, WritersStoreWholeElements) {
  Bytes w(7, 0xEE);
  auto* prefix = as<LdpFecTlvPrefixElementHdr>(w);
  prefix->typeIs(prefixElement_);
  prefix->prefixIs(IpGenPrefix(v4(0x0A010200), 23));  // only the prefix octets
  EXPECT_EQ(w, (Bytes{0x02, 0x00, 0x01, 23, 10, 1, 2}));
  EXPECT_EQ(prefix->elementOctets(), 7u);
  prefix->prefixBitsIs(25);
  EXPECT_EQ(prefix->prefixOctets(), 4u);

  Bytes h6(20, 0xEE);
  auto* host = as<LdpFecTlvHostAddressElementHdr>(h6);
  host->hostAddrIs(v6({0x20, 0x01, 0x0d, 0xb8}));
  EXPECT_EQ(h6,
            (Bytes{0xEE, 0, 2, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(host->hostAddr().stringValue(), "2001:db8::");

  Bytes p(11, 0xEE);
  auto* p2mp = as<LdpFecTlvP2mpElementHdr>(p);
  p2mp->typeIs(p2mpElement_);
  p2mp->rootIpIs(v4(0xC0A80001));
  p2mp->opaqueLength().opaqueLengthIs(1);
  EXPECT_EQ(p2mp->opaqueValue(), p.data() + 10);
  EXPECT_EQ(p, (Bytes{0x06, 0x00, 0x01, 4, 192, 168, 0, 1, 0x00, 0x01, 0xEE}));
  EXPECT_EQ(p2mp->elementOctets(), 11u);
  EXPECT_EQ(valueToStrep(p2mp->typeField()),
            "Value('Ldp::LdpFecTlvElementHdrTypeField', ** {'type': p2mpElement})");
  // A shorter root is zero-filled; the opaque fields move with the root length.
  p2mp->rootIpLenOctetsIs(2);
  EXPECT_EQ(p2mp->rootIp(), v4(0xC0A80000));
  EXPECT_EQ(p2mp->opaqueLength().opaqueLength(), 0x0001);
  EXPECT_EQ(p2mp->opaqueValue(), p.data() + 8);
}

TEST(FecElementHdr, AddressReadersAssertFamilyAndLength) {
  Bytes family3 = {0x02, 0x00, 0x03, 8, 10};
  EXPECT_FALSE(as<LdpFecTlvPrefixElementHdr>(family3)->familyKnown());
  EXPECT_DEATH(as<LdpFecTlvPrefixElementHdr>(family3)->prefix(),
               "Assertion failed: familyKnown\\(\\)");
  Bytes long4 = {0x02, 0x00, 0x01, 33, 10, 0, 0, 0, 0};
  EXPECT_DEATH(as<LdpFecTlvPrefixElementHdr>(long4)->prefix(),
               "Assertion failed: prefixBits\\(\\) <= 8 \\* familyOctets\\(family\\(\\)\\)");
  Bytes host5 = {0x03, 0x00, 0x01, 5, 10, 0, 0, 0, 1};
  EXPECT_DEATH(as<LdpFecTlvHostAddressElementHdr>(host5)->hostAddr(),
               "Assertion failed: octets <= familyOctets\\(family\\(\\)\\)");
}

TEST(P2mpOpaqueValue, GenericLspIdLayoutAndForms) {
  const LdpGenericLSPId id(0x01020304);
  Bytes octets(reinterpret_cast<const uint8_t*>(&id), reinterpret_cast<const uint8_t*>(&id) + 7);
  EXPECT_EQ(octets, (Bytes{0x01, 0x00, 0x04, 0x01, 0x02, 0x03, 0x04}));
  EXPECT_EQ(as<LdpGenericLSPId>(octets)->opaqueId(), 0x01020304u);
  EXPECT_TRUE(*as<LdpGenericLSPId>(octets) == id);

  EXPECT_TRUE(!LdpGenericLSPId());
  EXPECT_FALSE(!id);
  EXPECT_FALSE(LdpGenericLSPId(0) == LdpGenericLSPId());  // type and length differ
  LdpTest::expectForm(LdpGenericLSPId(),
                      "Value('Ldp::LdpGenericLSPId', ** {'type': p2mpReservedOpaqueType, "
                      "'opaqueLenNbo': 0, 'opaqueId': 0})");
  LdpTest::expectForm(id,
                      "Value('Ldp::LdpGenericLSPId', ** {'type': p2mpGenericLspIdentifier, "
                      "'opaqueLenNbo': 4, 'opaqueId': 16909060})");
  LdpTest::expectRefused<LdpGenericLSPId>(
      "Value('Ldp::LdpGenericLSPId', ** {'type': p2mpGenericLspIdentifier, 'opaqueLenNbo': 4})",
      "Invalid LdpGenericLSPId", id);
  LdpTest::expectLogged(id, Bytes{0x01, 0x00, 0x04, 0x01, 0x02, 0x03, 0x04});
  EXPECT_NE(id.hash(), LdpGenericLSPId(0x01020305).hash());
}

TEST(P2mpOpaqueValue, BasicHeaderOverlaysAnyValue) {
  Bytes b = {0xFF, 0x01, 0x2C, 0xAB};
  auto* h = as<LdpMPBasicOpaqueValueElementHdr>(b);
  EXPECT_EQ(h->type(), p2mpExtendedOpaqueType_);
  EXPECT_EQ(h->opaqueLen(), 300);
  EXPECT_EQ(h->value(), b.data() + 3);
  LdpTest::expectForm(*h,
                      "Value('Ldp::LdpMPBasicOpaqueValueElementHdr', ** {'type': "
                      "p2mpExtendedOpaqueType, 'opaqueLenNbo': 300})");
  // A type that is no enumerator prints as its number.
  h->typeIs(static_cast<LdpP2mpOpaqueValueTypeEnum>(7));
  h->opaqueLenIs(1);
  EXPECT_EQ(b, (Bytes{0x07, 0x00, 0x01, 0xAB}));
  LdpTest::expectForm(*h,
                      "Value('Ldp::LdpMPBasicOpaqueValueElementHdr', ** {'type': 7, "
                      "'opaqueLenNbo': 1})");
}

TEST(LdpP2mpFecElement, EqualityAndForms) {
  const Zel::String opaque("\x01\x00\x04\x00\x00\x00\x05", 7);
  const LdpP2mpFecElement a(v4(0x0A000001), opaque);
  const LdpP2mpFecElement b(v4(0x0A000001), Zel::String(std::string(opaque.view())));
  EXPECT_TRUE(a == b);
  EXPECT_EQ(a.stringValue(), Zel::String("10.0.0.1_") + opaque.view());
  EXPECT_FALSE(a == LdpP2mpFecElement(v4(0x0A000002), opaque));
  EXPECT_FALSE(a == LdpP2mpFecElement(v4(0x0A000001), Zel::String("\x01", 1)));
  EXPECT_TRUE(!LdpP2mpFecElement());
  EXPECT_FALSE(!LdpP2mpFecElement(IpGenAddr(), opaque));
  LdpTest::expectForm(a,
                      "Value('Ldp::LdpP2mpFecElement', ** {'rootIp': 10.0.0.1, "
                      "'opaqueStr': '\\x01\\x00\\x04\\x00\\x00\\x00\\x05'})");
}

}  // namespace
