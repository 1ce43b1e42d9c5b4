// Mpls::FwdEqvClass: the FEC value.

#include <gtest/gtest.h>

#include "platform/mpls/FwdEqvClass.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using Mpls::FwdEqvClass;
using Kind = Mpls::FwdEqvClass::Kind;
using Ovo::IpGenAddr;
using Ovo::IpGenPrefix;

namespace {

IpGenAddr addr(const char* text) { return parsed<IpGenAddr>(text); }
IpGenPrefix prefix(const char* text) { return parsed<IpGenPrefix>(text); }
FwdEqvClass fec(const char* text) { return parsed<FwdEqvClass>(text); }

TEST(FwdEqvClass, Kinds) {
  EXPECT_TRUE(!FwdEqvClass());
  EXPECT_FALSE(!FwdEqvClass::wildcard());

  FwdEqvClass p4 = FwdEqvClass::forPrefix(prefix("10.0.0.0/8"));
  EXPECT_EQ(p4.kind(), Kind::ipv4Prefix);
  EXPECT_FALSE(p4.isHost());
  EXPECT_EQ(FwdEqvClass::forPrefix(prefix("2001:db8::/32")).kind(), Kind::ipv6Prefix);

  FwdEqvClass h6 = FwdEqvClass::forHost(addr("2001:db8::1"));
  EXPECT_EQ(h6.kind(), Kind::ipv6Host);
  EXPECT_EQ(h6.hostAddr(), addr("2001:db8::1"));
  EXPECT_EQ(FwdEqvClass::forHost(addr("10.0.0.1")).kind(), Kind::ipv4Host);

  // A host FEC is not the full-length prefix FEC of its address.
  EXPECT_NE(FwdEqvClass::forHost(addr("10.0.0.1")), fec("10.0.0.1/32"));

  expectRangeError([] { FwdEqvClass::forPrefix(IpGenPrefix()); }, "Invalid FwdEqvClass");
  expectRangeError([] { FwdEqvClass::forHost(IpGenAddr()); }, "Invalid FwdEqvClass");
}

TEST(FwdEqvClassDeathTest, AccessorOfTheWrongKind) {
  EXPECT_DEATH(FwdEqvClass::wildcard().prefix(), "isPrefix\\(\\)");
  EXPECT_DEATH(fec("10.0.0.0/8").hostAddr(), "isHost\\(\\)");
}

TEST(FwdEqvClass, Forms) {
  expectForm(FwdEqvClass(), "none");
  expectForm(FwdEqvClass::wildcard(), "wildcard");
  expectForm(FwdEqvClass::forPrefix(prefix("0.0.0.0/0")), "0.0.0.0/0");
  expectForm(FwdEqvClass::forPrefix(prefix("2001:db8::/32")), "2001:db8::/32");
  expectForm(FwdEqvClass::forHost(addr("10.0.0.1")), "host:10.0.0.1");
  expectForm(FwdEqvClass::forHost(addr("::1")), "host:::1");
  expectForm(FwdEqvClass::forHost(addr("::ffff:10.0.0.1")), "host:::ffff:10.0.0.1");
  EXPECT_EQ(fec("10.1.2.3/8"), fec("10.0.0.0/8"));  // host bits cleared
  EXPECT_EQ(fec("host:2001:DB8:0::1").stringValue(), "host:2001:db8::1");
  expectStops<FwdEqvClass>("wildcard_1", "wildcard", "_1");
  expectStops<FwdEqvClass>("host:10.0.0.1/32", "host:10.0.0.1", "/32");
}

TEST(FwdEqvClass, RefusesBadTexts) {
  const FwdEqvClass keep = FwdEqvClass::wildcard();
  expectAllRefused({"", "x", "wild", "Wildcard", "NONE", "host", "host:", "host: 10.0.0.1",
                    "host:none", "hosts:10.0.0.1", "host:10.0.0", "10.0.0.1", "10.0.0.0/33",
                    "2001:db8::", "2001:db8::/129", "/8", " 10.0.0.0/8"},
                   "Invalid FwdEqvClass", keep);
}

TEST(FwdEqvClass, OrderedByKindThenAddressThenLengthAndLog) {
  expectOrdered<FwdEqvClass>({FwdEqvClass(), FwdEqvClass::wildcard(), fec("0.0.0.0/0"),
                              fec("10.0.0.0/8"), fec("10.0.0.0/16"), fec("11.0.0.0/8"), fec("::/0"),
                              fec("2001:db8::/32"), fec("host:0.0.0.0"), fec("host:10.0.0.1"),
                              fec("host:::"), fec("host:::1")});

  expectLogged(FwdEqvClass(), {0});
  expectLogged(FwdEqvClass::wildcard(), {1});
  expectLogged(fec("10.0.0.0/8"), {2, 4, 10, 0, 0, 0, 8});
  expectLogged(fec("2001:db8::/32"),
               {3, 6, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32});
  expectLogged(fec("host:10.0.0.1"), {4, 4, 10, 0, 0, 1});
  expectLogged(fec("host:::1"), {5, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
  const FwdEqvClass keep = FwdEqvClass::wildcard();
  expectLogRefused<FwdEqvClass>({6}, "Invalid FwdEqvClass", keep);
  expectLogRefused<FwdEqvClass>({2, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                                "Invalid FwdEqvClass", keep);          // ipv4Prefix kind, v6 prefix
  expectLogRefused<FwdEqvClass>({4, 0}, "Invalid FwdEqvClass", keep);  // host, unset address
}

}  // namespace
