// The Ovo network primitives: octet integers, packets, addresses, prefixes,
// interface ids, MPLS labels, ports.

#include <gtest/gtest.h>

#include "platform/ovo/IntfId.h"
#include "platform/ovo/IpAddr.h"
#include "platform/ovo/IpAddrWithMask.h"
#include "platform/ovo/IpGenAddr.h"
#include "platform/ovo/IpGenPrefix.h"
#include "platform/ovo/MplsLabel.h"
#include "platform/ovo/NetU16.h"
#include "platform/ovo/NetU32.h"
#include "platform/ovo/Pkt.h"
#include "platform/ovo/Port.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;
using Ovo::IntfId;
using Ovo::IpAddr;
using Ovo::IpAddrWithMask;
using Ovo::IpGenAddr;
using Ovo::IpGenPrefix;
using Ovo::MplsLabel;
using Ovo::Port;

namespace {

IpGenAddr v4(const char* text) {
  IpGenAddr a = parsed<IpGenAddr>(text);
  EXPECT_TRUE(a.isV4()) << text;
  return a;
}
IpGenAddr v6(const char* text) {
  IpGenAddr a = parsed<IpGenAddr>(text);
  EXPECT_TRUE(a.isV6()) << text;
  return a;
}

// An LDP PDU header (RFC 5036 §3.1) as a byte-exact overlay.
struct PduHeader {
  Ovo::NetU16 version;
  Ovo::NetU16 length;
  Ovo::NetU32 lsrId;
  Ovo::NetU16 labelSpace;
};
static_assert(sizeof(PduHeader) == 10 && alignof(PduHeader) == 1);
static_assert(Ovo::NetU16(0x1234).value() == 0x1234);
static_assert(Ovo::NetU32(0xDEADBEEF).value() == 0xDEADBEEF);

TEST(NetInt, BigEndianOctetsAtAnyAlignment) {
  EXPECT_FALSE(Ovo::NetU16(7) == Ovo::NetU16(0x0700));

  // One spare octet first, so the header starts at an odd address.
  uint8_t buf[11] = {0xFF, 0x00, 0x01, 0x00, 0x0E, 10, 0, 0, 1, 0x00, 0x00};
  auto* h = reinterpret_cast<PduHeader*>(buf + 1);
  EXPECT_EQ(h->length.value(), 14);
  EXPECT_EQ(h->lsrId.value(), 0x0A000001u);
  h->length.valueIs(0xABCD);
  h->labelSpace.valueIs(0x0102);
  EXPECT_EQ(buf[3], 0xAB);
  EXPECT_EQ(buf[4], 0xCD);
  EXPECT_EQ(buf[9], 0x01);
  EXPECT_EQ(buf[10], 0x02);
}

TEST(Pkt, OwnsACountedCopyOfTheOctets) {
  uint8_t src[5] = {1, 2, 3, 4, 5};
  Zel::Ptr<Ovo::Pkt> p = Ovo::pktFactory(src, sizeof src);
  src[0] = 99;
  ASSERT_EQ(p->frontBytes(), 5u);
  EXPECT_EQ(p->front()[0], 1);
  const Ovo::Pkt& c = *p;
  // The octets follow the object in the same allocation.
  EXPECT_EQ(c.front(), reinterpret_cast<const uint8_t*>(p.ptr()) + sizeof(Ovo::Pkt));
  {
    Zel::Ptr<Ovo::Pkt> q = p;
    EXPECT_EQ(p->references(), 2u);
  }
  EXPECT_EQ(p->references(), 1u);
  EXPECT_EQ(Ovo::pktFactory(nullptr, 0)->frontBytes(), 0u);
}

TEST(IpAddr, FormsRefusalsOrderHashAndLog) {
  expectForm(IpAddr(), "0.0.0.0");
  expectForm(IpAddr(0xC0A80AFE), "192.168.10.254");
  expectForm(IpAddr(0xFFFFFFFF), "255.255.255.255");
  EXPECT_TRUE(!IpAddr());
  expectStops<IpAddr>("1.2.3.4.5", "1.2.3.4", ".5");
  expectStops<IpAddr>("1.2.3.4a", "1.2.3.4", "a");
  expectAllRefused({"", "1.2.3", "1.2.3.", "1.2.3.256", "1.2.3.4444", "01.2.3.4", "1.2.3.00",
                    "+1.2.3.4", "1..2.3", " 1.2.3.4", "99999999999999999999999.1.1.1"},
                   "Invalid IpAddr", IpAddr(0x01020304));
  expectOrdered<IpAddr>(
      {IpAddr(), IpAddr(1), IpAddr(0x0A000001), IpAddr(0x0B000000), IpAddr(0xFFFFFFFF)});
  expectLogged(IpAddr(0x0A000001), {10, 0, 0, 1});
}

TEST(IpGenAddr, FamiliesAndTheIpv6View) {
  IpGenAddr none;
  EXPECT_TRUE(!none);
  IpGenAddr a(IpAddr(0x0A000001));
  IpGenAddr b = v6("2001:db8::1");

  // An IPv4 address taken as IPv6 is its IPv4-mapped form.
  IpGenAddr mapped = v6("::ffff:10.0.0.1");
  EXPECT_TRUE(mapped.isV4Mapped());
  EXPECT_FALSE(a.isV4Mapped());
  EXPECT_NE(a, mapped);  // the family is part of the value
  EXPECT_EQ(a.asV6(), mapped);
  EXPECT_EQ(a.v6Octets(), mapped.v6Octets());
  EXPECT_EQ(a.hashAsV6(), mapped.hash());
  EXPECT_NE(a.hash(), mapped.hash());
  EXPECT_EQ(b.asV6(), b);
  EXPECT_EQ(none.asV6(), none);
}

// RFC 5952: what each spelling prints as; the printed form reads back.
TEST(IpGenAddr, FormsAndWhereParsingStops) {
  expectForm(IpGenAddr(), "none");
  expectForm(IpGenAddr(IpAddr()), "0.0.0.0");
  expectForm(IpGenAddr(IpAddr(0x0A000001)), "10.0.0.1");
  const std::pair<const char*, const char*> cases[] = {
      {"0:0:0:0:0:0:0:0", "::"},
      {"0:0:0:0:0:0:0:1", "::1"},
      {"2001:0db8:0000:0000:0000:0000:0000:0001", "2001:db8::1"},  // leading zeros dropped
      {"2001:DB8::A", "2001:db8::a"},                              // lower case
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},               // first of equal runs
      {"2001:0:0:1:0:0:0:1", "2001:0:0:1::1"},                     // longest run
      {"2001:db8::1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},             // one zero group: no "::"
      {"1:2:3:4:5:6:7::", "1:2:3:4:5:6:7:0"},
      {"fe80:0:0:0:1::", "fe80::1:0:0:0"},
      {"::1.2.3.4", "::102:304"},                      // IPv4-compatible: all hex
      {"1:2:3:4:5:6:1.2.3.4", "1:2:3:4:5:6:102:304"},  // trailing quad read
      {"::ffff:a00:1", "::ffff:10.0.0.1"},             // IPv4-mapped: dotted quad
      {"0:0:0:0:0:FFFF:0.0.0.0", "::ffff:0.0.0.0"},
      {"FFFF:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
  };
  for (auto [text, canonical] : cases) {
    EXPECT_EQ(v6(text).stringValue(), canonical) << text;
    expectForm(v6(canonical), canonical);
  }
  // Nearly IPv4-mapped addresses print in hex.
  for (const char* canonical :
       {"1:2:3:4:5:6:7:8", "::fffe:a00:1", "1::ffff:a00:1", "64:ff9b::a00:1"}) {
    expectForm(v6(canonical), canonical);
  }

  expectStops<IpGenAddr>("2001:db8::/32", "2001:db8::", "/32");
  expectStops<IpGenAddr>("1::g", "1::", "g");
  expectStops<IpGenAddr>("::ffff:1.2.3.4:5", "::ffff:1.2.3.4", ":5");  // nothing follows a quad
  expectStops<IpGenAddr>("10.0.0.1:646", "10.0.0.1", ":646");
  expectStops<IpGenAddr>("none/0", "none", "/0");
}

TEST(IpGenAddr, RefusalsOrderHashAndLog) {
  expectAllRefused({"", "nope", ":", ":1", "1:", "1:_", "1:::2", "1::2::3", "12345::", "g::",
                    "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1:2:3:4:5:6:7:8::", "::1:2:3:4:5:6:7:8",
                    "1:2:3:4:5:6:7:1.2.3.4", "::1.2.3", "::256.0.0.1", "::01.2.3.4", "-1.2.3.4"},
                   "Invalid IpGenAddr", v4("1.2.3.4"));

  expectOrdered<IpGenAddr>({IpGenAddr(), v4("0.0.0.0"), v4("10.0.0.1"), v4("255.255.255.255"),
                            v6("::"), v6("::1"), v6("::ffff:0.0.0.0"), v6("2001:db8::"),
                            v6("ffff::")});
  expectLogged(IpGenAddr(), {0});
  expectLogged(v4("10.0.0.1"), {4, 10, 0, 0, 1});
  expectLogged(v6("2001:db8::1"), {6, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
  expectLogRefused<IpGenAddr>({5, 10, 0, 0, 1}, "Invalid IpGenAddr", v4("1.2.3.4"));
  expectLogRefused<IpGenAddr>({6, 1, 2, 3}, "NboAttrLog::In: record truncated", v4("1.2.3.4"));
}

TEST(IpAddrWithMask, KeepsTheHostBitsFormsRefusalsOrderAndLog) {
  IpAddrWithMask m(IpAddr(0x0A000001), 24);
  EXPECT_EQ(m.address(), IpAddr(0x0A000001));
  EXPECT_EQ(m.mask(), IpAddr(0xFFFFFF00));
  EXPECT_EQ(m.subnet(), IpAddr(0x0A000000));
  EXPECT_EQ(IpAddrWithMask(IpAddr(1), 0).mask(), IpAddr(0));
  EXPECT_EQ(IpAddrWithMask(IpAddr(1), 32).mask(), IpAddr(0xFFFFFFFF));

  expectForm(IpAddrWithMask(), "0.0.0.0/0");
  expectForm(IpAddrWithMask(IpAddr(0xFFFFFFFF), 32), "255.255.255.255/32");
  expectStops<IpAddrWithMask>("10.0.0.1/24/8", "10.0.0.1/24", "/8");
  EXPECT_EQ(parsed<IpAddrWithMask>("10.0.0.1/024"), IpAddrWithMask(IpAddr(0x0A000001), 24));
  expectAllRefused({"", "10.0.0.1", "10.0.0.1/", "10.0.0.1/33", "10.0.0.1/-1", "10.0.0.1/+8", "/8",
                    "10.0.0/8", "10.0.0.1 /8", "::/0"},
                   "Invalid IpAddrWithMask", IpAddrWithMask(IpAddr(0x01020304), 8));
  expectRangeError([] { IpAddrWithMask(IpAddr(), 33); }, "Invalid IpAddrWithMask");
  expectOrdered<IpAddrWithMask>(
      {IpAddrWithMask(), IpAddrWithMask(IpAddr(0), 8), IpAddrWithMask(IpAddr(0x0A000000), 8),
       IpAddrWithMask(IpAddr(0x0A000000), 24), IpAddrWithMask(IpAddr(0x0A000001), 8)});
  expectLogged(IpAddrWithMask(IpAddr(0x0A000001), 24), {10, 0, 0, 1, 24});
  expectLogRefused<IpAddrWithMask>({10, 0, 0, 1, 33}, "Invalid IpAddrWithMask",
                                   IpAddrWithMask(IpAddr(1), 1));
}

TEST(IpGenPrefix, ClearsTheHostBitsFormsRefusalsOrderAndLog) {
  IpGenPrefix p(v4("10.1.2.3"), 8);
  EXPECT_EQ(p.address(), v4("10.0.0.0"));
  EXPECT_EQ(IpGenPrefix(v6("2001:db8:ffff::1"), 33).stringValue(), "2001:db8:8000::/33");
  EXPECT_EQ(IpGenPrefix(v6("ffff::"), 0).stringValue(), "::/0");
  EXPECT_EQ(IpGenPrefix(v4("255.255.255.255"), 0).stringValue(), "0.0.0.0/0");
  EXPECT_EQ(parsed<IpGenPrefix>("10.1.2.3/8"), p);
  EXPECT_TRUE(!IpGenPrefix());
  EXPECT_FALSE(!IpGenPrefix(v4("0.0.0.0"), 0));  // 0.0.0.0/0 is a real prefix

  expectForm(IpGenPrefix(), "none");
  for (const char* canonical :
       {"0.0.0.0/0", "10.0.0.1/32", "::/0", "2001:db8::1/128", "::ffff:10.0.0.0/104"}) {
    expectForm(parsed<IpGenPrefix>(canonical), canonical);
  }
  expectStops<IpGenPrefix>("10.0.0.0/8/9", "10.0.0.0/8", "/9");
  expectStops<IpGenPrefix>("none/0", "none", "/0");
  expectAllRefused({"", "10.0.0.0", "10.0.0.0/", "10.0.0.0/33", "10.0.0.0/-1", "10.0.0.0/x",
                    "2001:db8::/129", "1.2.3/8", "/8", "10.0.0.0/99999999999999999999999"},
                   "Invalid IpGenPrefix", IpGenPrefix(v4("1.0.0.0"), 8));
  expectRangeError([] { IpGenPrefix(v6("::"), 129); }, "Invalid IpGenPrefix");
  expectRangeError([] { IpGenPrefix(IpGenAddr(), 1); }, "Invalid IpGenPrefix");
  EXPECT_EQ(IpGenPrefix(IpGenAddr(), 0), IpGenPrefix());
  expectOrdered<IpGenPrefix>({IpGenPrefix(), parsed<IpGenPrefix>("0.0.0.0/0"),
                              parsed<IpGenPrefix>("10.0.0.0/8"), parsed<IpGenPrefix>("10.0.0.0/16"),
                              parsed<IpGenPrefix>("11.0.0.0/8"), parsed<IpGenPrefix>("::/0"),
                              parsed<IpGenPrefix>("2001:db8::/32")});
  expectLogged(IpGenPrefix(), {0, 0});
  expectLogged(parsed<IpGenPrefix>("10.0.0.0/8"), {4, 10, 0, 0, 0, 8});
  expectLogged(parsed<IpGenPrefix>("2001:db8::/32"),
               {6, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32});
  expectLogRefused<IpGenPrefix>({4, 10, 0, 0, 0, 33}, "Invalid IpGenPrefix", IpGenPrefix());
  expectLogRefused<IpGenPrefix>({0, 1}, "Invalid IpGenPrefix", IpGenPrefix());
}

TEST(IntfId, FormsRefusalsOrderHashAndLog) {
  expectForm(IntfId(), "");
  for (const char* name : {"Ethernet1/1.100", "Port-Channel10", "Ethernet3/1:2"}) {
    expectForm(IntfId(name), name);
  }
  EXPECT_TRUE(!IntfId());
  // The parser reads the longest run of name characters, possibly empty.
  expectStops<IntfId>("Ethernet1'", "Ethernet1", "'");
  expectStops<IntfId>("_Ethernet1", "", "_Ethernet1");
  for (const char* bad : {"Ethernet 1", "Eth_1", "Eth,1", "Eth}1", "Eth'1", "Eth\"1"}) {
    expectRangeError([&] { IntfId{Zel::String(bad)}; }, "Invalid IntfId");
  }
  Zel::NboAttrLog::Out o;
  o.putString("Eth_1");
  expectLogRefused<IntfId>(o.bytes(), "Invalid IntfId", IntfId("Vlan1"));
  expectOrdered<IntfId>({IntfId(), IntfId("Ethernet1"), IntfId("Ethernet1/1"), IntfId("Ethernet10"),
                         IntfId("Ethernet2"), IntfId("Vlan10")});
  expectLogged(IntfId("Vlan10"), {0, 0, 0, 6, 'V', 'l', 'a', 'n', '1', '0'});
  expectLogged(IntfId(), {0, 0, 0, 0});
}

constexpr const char* kLabelRange =
    "MplsLabel::value < MplsLabel::min or > MplsLabel::luWithdraw not allowed";

TEST(MplsLabel, RangeFormsOrderHashAndLog) {
  EXPECT_FALSE(!MplsLabel(0));  // label 0 is a label; the default is none

  MplsLabel l(16);
  l.valueIs(MplsLabel::luWithdraw);
  EXPECT_EQ(l.value(), 0x800000u);
  l.valueIs(16);
  expectRangeError([&] { l.valueIs(0x800001); }, kLabelRange);
  EXPECT_EQ(l.value(), 16u);
  expectRangeError([] { MplsLabel(0x800001); }, kLabelRange);
  EXPECT_EQ(MplsLabel(0x7FFFFF).value(), 0x7FFFFFu);  // beyond max, below luWithdraw: kept

  expectForm(MplsLabel(), "1048576");
  expectForm(MplsLabel(MplsLabel::max), "1048575");
  expectForm(MplsLabel(MplsLabel::luWithdraw), "8388608");
  EXPECT_EQ(parsed<MplsLabel>("0016"), MplsLabel(16));
  expectRefused("8388609", kLabelRange, MplsLabel(3));
  expectRefused("99999999999999999999999", kLabelRange, MplsLabel(3));
  expectAllRefused({"", "-1", "+1", "x", " 1"}, "Invalid MplsLabel", MplsLabel(3));
  expectOrdered<MplsLabel>({MplsLabel(0), MplsLabel(3), MplsLabel(16), MplsLabel(MplsLabel::max),
                            MplsLabel(), MplsLabel(MplsLabel::luWithdraw)});
  expectLogged(MplsLabel(), {0, 0x10, 0, 0});
  expectLogged(MplsLabel(MplsLabel::luWithdraw), {0, 0x80, 0, 0});
  expectLogRefused<MplsLabel>({0, 0x80, 0, 1}, kLabelRange, MplsLabel(16));
}

TEST(Port, FormsOrderHashAndLog) {
  expectForm(Port(), "0");
  expectForm(Port(65535), "65535");
  expectAllRefused({"", "65536", "99999999999999999999999", "-1", "+1", "x"}, "Invalid Port",
                   Port(7));
  expectOrdered<Port>({Port(), Port(1), Port(646), Port(65535)});
  expectLogged(Port(646), {0x02, 0x86});
}

}  // namespace
