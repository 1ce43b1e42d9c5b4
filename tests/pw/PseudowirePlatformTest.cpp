// The pseudowire and bridging platform values: PW ids, group ids, PW types, the
// VCCV and status bit sets, the request key and the VLAN id.

#include <gtest/gtest.h>

#include "platform/bridging/VlanIdOrNone.h"
#include "platform/pseudowire/GroupId.h"
#include "platform/pseudowire/PseudowireId.h"
#include "platform/pseudowire/PseudowireLdpRequestKey.h"
#include "platform/pseudowire/PseudowireLdpStatusFlags.h"
#include "platform/pseudowire/PseudowireType.h"
#include "platform/pseudowire/VccvCvTypes.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using Bridging::VlanIdOrNone;
using Pseudowire::GroupId;
using Pseudowire::PseudowireId;
using Pseudowire::PseudowireLdpRequestKey;
using Pseudowire::PseudowireLdpStatusFlags;
using Pseudowire::PseudowireType;
using Pseudowire::VccvCvTypes;

namespace {

// PW ids and group ids share one implementation; each has its own failure text.
TEST(PseudowireIdAndGroupId, FormsRefusalsOrderAndLog) {
  expectForm(PseudowireId(), "0");
  expectForm(GroupId(0xFFFFFFFF), "4294967295");
  EXPECT_EQ(parsed<PseudowireId>("007"), PseudowireId(7));
  for (const char* bad : {"", "4294967296", "-1", "+1", "x1", " 1"}) {
    expectRefused(bad, "Invalid PseudowireId", PseudowireId(3));
    expectRefused(bad, "Invalid GroupId", GroupId(3));
  }
  expectOrdered<PseudowireId>({PseudowireId(), PseudowireId(1), PseudowireId(0x80000000)});
  expectOrdered<GroupId>({GroupId(), GroupId(5), GroupId(0xFFFFFFFF)});
  expectLogged(PseudowireId(0x01020304), {1, 2, 3, 4});
  expectLogged(GroupId(0xA0B0C0D0), {0xA0, 0xB0, 0xC0, 0xD0});
}

TEST(PseudowireType, FormsParsingRangeOrderAndLog) {
  // Known codes, the first and last included, print as names; the rest as numbers.
  expectForm(PseudowireType(1), "frameRelayDlciMartini");
  expectForm(PseudowireType(0x19), "frameRelayDlci");
  for (uint16_t unknown : {0x0000, 0x001A, 0x7FFF}) {
    EXPECT_FALSE(PseudowireType(unknown).isKnown()) << unknown;
    EXPECT_EQ(PseudowireType(unknown).name(), nullptr);
  }
  expectForm(PseudowireType(), "0x0000");
  expectForm(PseudowireType(0x001A), "0x001a");
  expectForm(PseudowireType(0x7FFF), "0x7fff");
  // A known code given as a number reads back as itself.
  EXPECT_EQ(parsed<PseudowireType>("0X1a"), PseudowireType(0x1A));
  EXPECT_EQ(parsed<PseudowireType>("0x5"), PseudowireType(5));
  expectStops<PseudowireType>("ethernet:cbit1", "ethernet", ":cbit1");
  expectStops<PseudowireType>("0x0004:x", "ethernetTagged", ":x");
  expectAllRefused(
      {"", "Ethernet", "ether", "ethernetX", "0x", "0x8000", "0x00005", "0xg", "5", ":"},
      "Invalid PseudowireType", PseudowireType(7));
  const char* range = "PseudowireType::value > 0x7fff not allowed";
  expectRangeError([] { PseudowireType(0x8000); }, range);
  PseudowireType t(PseudowireType::ppp);
  expectRangeError([&] { t.valueIs(0xFFFF); }, range);
  EXPECT_EQ(t, PseudowireType(PseudowireType::ppp));

  expectOrdered<PseudowireType>({PseudowireType(), PseudowireType(1), PseudowireType(5),
                                 PseudowireType(0x19), PseudowireType(0x1A),
                                 PseudowireType(0x7FFF)});
  expectLogged(PseudowireType(0x0104), {0x01, 0x04});
  expectLogRefused<PseudowireType>({0x80, 0x05}, range, PseudowireType(7));
}

TEST(VccvCvTypes, BitsFormsAndLog) {
  VccvCvTypes v;
  EXPECT_TRUE(!v);
  v.flagIs(VccvCvTypes::lspPing | VccvCvTypes::bfdAchFaultStatus, true);
  EXPECT_EQ(v.value(), 0x22);
  EXPECT_TRUE(v.has(VccvCvTypes::lspPing));
  EXPECT_FALSE(v.has(VccvCvTypes::lspPing | VccvCvTypes::icmpPing));
  v = VccvCvTypes(0xFF);
  v.flagIs(VccvCvTypes::bfdIpUdpFault, false);
  EXPECT_EQ(v.value(), 0xFB);

  expectForm(VccvCvTypes(), "0x00");
  expectForm(VccvCvTypes(0xFF), "0xff");
  EXPECT_EQ(parsed<VccvCvTypes>("0X2"), VccvCvTypes(2));
  expectAllRefused({"", "2", "0x", "0x100", "x02"}, "Invalid VccvCvTypes", VccvCvTypes(1));
  expectOrdered<VccvCvTypes>({VccvCvTypes(), VccvCvTypes(1), VccvCvTypes(0x80)});
  expectLogged(VccvCvTypes(0x12), {0x12});
}

TEST(PseudowireLdpStatusFlags, NamedBitsFormsAndLog) {
  PseudowireLdpStatusFlags f;
  f.pwNotForwardingIs(true);
  f.localACIngrRecvFaultIs(true);
  f.localACEgrTransFaultIs(true);
  f.localPsnPwIngrRecvFaultIs(true);
  f.localPsnPwEgrTransFaultIs(true);
  EXPECT_EQ(f.value(), 0x1Fu);
  // Each setter clears only its own bit, and each getter reads only its own.
  PseudowireLdpStatusFlags g(0xFFFFFFFF);
  g.pwNotForwardingIs(false);
  g.localACEgrTransFaultIs(false);
  g.localPsnPwEgrTransFaultIs(false);
  EXPECT_EQ(g.value(), 0xFFFFFFEAu);
  g.localACIngrRecvFaultIs(false);
  g.localPsnPwIngrRecvFaultIs(false);
  EXPECT_EQ(g.value(), 0xFFFFFFE0u);
  const PseudowireLdpStatusFlags odd(0x15);
  EXPECT_TRUE(odd.pwNotForwarding() && odd.localACEgrTransFault() && odd.localPsnPwEgrTransFault());
  EXPECT_FALSE(odd.localACIngrRecvFault() || odd.localPsnPwIngrRecvFault());

  expectForm(PseudowireLdpStatusFlags(0x1F), "0x0000001f");
  expectForm(PseudowireLdpStatusFlags(0xDEADBEEF), "0xdeadbeef");
  EXPECT_EQ(parsed<PseudowireLdpStatusFlags>("0x3"), PseudowireLdpStatusFlags(3));
  expectAllRefused({"", "3", "0x", "0x123456789"}, "Invalid PseudowireLdpStatusFlags",
                   PseudowireLdpStatusFlags(1));
  expectOrdered<PseudowireLdpStatusFlags>(
      {PseudowireLdpStatusFlags(), PseudowireLdpStatusFlags(1), PseudowireLdpStatusFlags(0x10)});
  expectLogged(PseudowireLdpStatusFlags(0x11), {0, 0, 0, 0x11});
}

TEST(PseudowireLdpRequestKey, FormsRefusalsOrderAndLog) {
  const Ovo::IpGenAddr v4 = parsed<Ovo::IpGenAddr>("10.0.0.2");
  const Ovo::IpGenAddr v6 = parsed<Ovo::IpGenAddr>("2001:db8::2");
  expectForm(PseudowireLdpRequestKey(), "none_0");
  expectForm(PseudowireLdpRequestKey(v4, PseudowireId(100)), "10.0.0.2_100");
  expectForm(PseudowireLdpRequestKey(v6, PseudowireId(7)), "2001:db8::2_7");
  expectAllRefused({"", "10.0.0.2", "10.0.0.2_", "10.0.0.2-1", "x_1", "_1"},
                   "Invalid PseudowireLdpRequestKey", PseudowireLdpRequestKey(v4, PseudowireId(1)));
  // By peer first: a larger PW id towards a smaller address comes before.
  expectOrdered<PseudowireLdpRequestKey>(
      {PseudowireLdpRequestKey(), PseudowireLdpRequestKey(v4, PseudowireId(1)),
       PseudowireLdpRequestKey(v4, PseudowireId(9)), PseudowireLdpRequestKey(v6, PseudowireId(2))});
  expectLogged(PseudowireLdpRequestKey(v4, PseudowireId(100)), {4, 10, 0, 0, 2, 0, 0, 0, 100});
  expectLogRoundTrip<PseudowireLdpRequestKey>({PseudowireLdpRequestKey(v6, PseudowireId(7))});
}

TEST(VlanIdOrNone, RangeFormsOrderAndLog) {
  const char* range = "VlanIdOrNone::value > 4094 not allowed";
  EXPECT_TRUE(VlanIdOrNone(0).isNone());  // the wire's "no VLAN"
  EXPECT_EQ(VlanIdOrNone(4094).value(), 4094);
  expectRangeError([] { VlanIdOrNone(4095); }, range);
  VlanIdOrNone v(100);
  expectRangeError([&] { v.valueIs(0xFFFF); }, range);
  EXPECT_EQ(v.value(), 100);

  expectForm(VlanIdOrNone(), "none");
  expectForm(VlanIdOrNone(4094), "4094");
  expectAllRefused({"", "0", "4095", "99999999999999999999", "-1", "None", "vlan1"},
                   "Invalid VlanIdOrNone", VlanIdOrNone(7));
  expectOrdered<VlanIdOrNone>(
      {VlanIdOrNone(), VlanIdOrNone(1), VlanIdOrNone(100), VlanIdOrNone(4094)});
  expectLogged(VlanIdOrNone(), {0, 0});
  expectLogged(VlanIdOrNone(0x0FFE), {0x0F, 0xFE});
  expectLogRefused<VlanIdOrNone>({0x0F, 0xFF}, range, VlanIdOrNone(7));
}

}  // namespace
