// The identifiers: LdpIdentifier, and the key types built on it (LdpSessionId,
// LdpAdjId, LdpFecSessionId, Via, LdpMsgIdFecMappingInfo) plus the P2MP opaque id.
// Their string forms, refusals, order, hashes (collections keyed by them depend on
// the exact functions) and attribute-log encodings.

#include <gtest/gtest.h>

#include <vector>

#include "core/LdpTypes.h"
#include "fec/LdpP2mpFec.h"
#include "tests/support/ValueChecks.h"

using namespace Ldp;
using namespace LdpTest;
using Mpls::FwdEqvClass;
using Ovo::IntfId;
using Ovo::IpAddr;
using Ovo::IpGenAddr;

namespace {

// The hash of an identifier: the integer mix of the LSR id plus the label space.
uint32_t idHash(const LdpIdentifier& id) {
  return ldpHashMix(id.lsrId().value()) + id.labelSpace().value();
}

const LdpIdentifier kId1(0x01010101, 0);        // 1.1.1.1:0
const LdpIdentifier kId2(0x0A000001, 7);        // 10.0.0.1:7
const LdpIdentifier kIdBig(0xC0A80101, 65535);  // 192.168.1.1:65535
const LdpIdentifier kIdMax(0xFFFFFFFF, 65535);

IntfId intf(const char* name) { return IntfId(Zel::String(name)); }
IpGenAddr addr(const char* text) { return parsed<IpGenAddr>(text); }
FwdEqvClass fec(const char* text) { return parsed<FwdEqvClass>(text); }

TEST(LdpIdentifier, FieldsFormsAndRefusals) {
  EXPECT_TRUE(!LdpIdentifier());
  EXPECT_FALSE(!LdpIdentifier(0, 1));

  expectForm(LdpIdentifier(), "0.0.0.0:0");
  expectForm(kId2, "10.0.0.1:7");
  expectForm(kIdBig, "192.168.1.1:65535");
  expectStops<LdpIdentifier>("10.0.0.1:7_Ethernet1", "10.0.0.1:7", "_Ethernet1");
  expectAllRefused({"", "10.0.0.1", "10.0.0.1:", "10.0.0.1 :0", "10.0.0.1:x", "10.0.0.1:-1",
                    "10.0.0.1:65536", "10.0.0.256:0", "10.0.0:0"},
                   "Invalid LdpIdentifier", kId1);
}

TEST(LdpIdentifier, HashOrderAndLog) {
  for (const LdpIdentifier& id : {LdpIdentifier(), kId1, kId2, kIdBig}) {
    EXPECT_EQ(id.hash(), idHash(id)) << id;
  }
  EXPECT_EQ(kIdMax.hash(), 0xBD56FC17u);  // the sum wraps
  expectAscending<LdpIdentifier>(
      {LdpIdentifier(), LdpIdentifier(0, 1), kId1, LdpIdentifier(0x01010101, 1), kId2, kIdBig});
  expectLogged(kIdBig, {192, 168, 1, 1, 0xFF, 0xFF});
  expectLogRefused<LdpIdentifier>({1, 1, 1, 1}, "NboAttrLog::In: record truncated", kId2);
}

TEST(LdpSessionId, IsTheIdentifierUnderAnAttributeName) {
  const LdpSessionId s(kId2);
  expectForm(s, "10.0.0.1:7");
  EXPECT_EQ(s.hash(), kId2.hash());
  Zel::String text("1.1.1.1:0");
  Zel::StrIt it = text.begin();
  EXPECT_EQ(LdpSessionId(it, text.end()), LdpSessionId(kId1));
  EXPECT_TRUE(!LdpSessionId());
  expectAscending<LdpSessionId>({LdpSessionId(), LdpSessionId(kId1), LdpSessionId(kId2)});
  expectLogRoundTrip<LdpSessionId>({LdpSessionId(), LdpSessionId(kIdBig)});

  const char* refusal = "Invalid value for attribute 'peerLdpId': Invalid LdpIdentifier";
  const LdpSessionId sentinel(kId1);
  expectRefused("10.0.0.1:x", refusal, sentinel);
  // The same through the type-erased operations of its descriptor.
  const Zel::ValueOps* ops = LdpSessionId::zelType().valueOps();
  ASSERT_NE(ops, nullptr);
  Zel::String bad("10.0.0.1");
  it = bad.begin();
  LdpSessionId out = sentinel;
  expectRangeError([&] { ops->parse(it, bad.end(), &out); }, refusal);
  EXPECT_EQ(out, sentinel);
}

TEST(LdpAdjId, TargetedAndLinkForms) {
  const LdpAdjId target(kId1, IntfId(), IpAddr(0x0A000001));
  EXPECT_EQ(target.adjType(), LdpTargetAdj_);
  expectForm(target, "1.1.1.1:0_TARGET_10.0.0.1");

  const LdpAdjId link(kId1, intf("Ethernet1"), IpAddr());
  EXPECT_EQ(link.adjType(), LdpLinkAdj_);
  expectForm(link, "1.1.1.1:0_Ethernet1");

  // An interface that happens to be called TARGET is still a link adjacency.
  const LdpAdjId named(kId1, intf("TARGET"), IpAddr());
  EXPECT_EQ(named.stringValue(), "1.1.1.1:0_TARGET");
  EXPECT_EQ(parsed<LdpAdjId>("1.1.1.1:0_TARGET"), named);
  // The default value is a targeted adjacency to 0.0.0.0.
  expectForm(LdpAdjId(), "0.0.0.0:0_TARGET_0.0.0.0");
}

TEST(LdpAdjId, StringValueIsReplacesAllOrNothing) {
  LdpAdjId v;
  v.stringValueIs("1.1.1.1:0_Ethernet1");
  EXPECT_EQ(v, LdpAdjId(kId1, intf("Ethernet1"), IpAddr()));
  v.stringValueIs("10.0.0.1:7_TARGET_10.0.0.2");
  // Full success replaces every field: the interface is gone.
  EXPECT_EQ(v, LdpAdjId(kId2, IntfId(), IpAddr(0x0A000002)));

  const LdpAdjId before(kId2, intf("Ethernet3"), IpAddr(0x0A000009));
  for (const char* text : {"", "1.1.1.1:0", "1.1.1.1:0_", "1.1.1.1:0_Ethernet1 junk",
                           "1.1.1.1:0_Ethernet1_x", "1.1.1.1:0_TARGET_", "1.1.1.1:0_TARGET_10.0.0",
                           "1.1.1.1:0_TARGET_10.0.0.1x", "1.1.1.1:0-Ethernet1"}) {
    SCOPED_TRACE(text);
    LdpAdjId w = before;
    expectRangeError([&] { w.stringValueIs(text); }, "Invalid LdpAdjId");
    EXPECT_EQ(w, before);
  }
  // sequenceToValue refuses the same way and keeps the cursor.
  expectRefused("1.1.1.1:0_TARGET_300.0.0.1", "Invalid LdpAdjId", before);
  expectRefused("1.1.1.1:0_", "Invalid LdpAdjId", before);
}

TEST(LdpAdjId, HashLeavesOutTheTargetAddressOrderIsByFields) {
  const LdpAdjId a(kId1, IntfId(), IpAddr(0x0A000001));
  const LdpAdjId b(kId1, IntfId(), IpAddr(0x0A000002));
  EXPECT_EQ(a.hash(), b.hash());
  EXPECT_NE(a, b);
  EXPECT_EQ(LdpAdjId(kIdMax, intf("Vlan10"), IpAddr()).hash(),
            idHash(kIdMax) + intf("Vlan10").hash());

  expectAscending<LdpAdjId>({
      LdpAdjId(kId1, IntfId(), IpAddr(0x0A000001)),
      LdpAdjId(kId1, IntfId(), IpAddr(0x0A000002)),
      LdpAdjId(kId1, intf("Ethernet1"), IpAddr()),
      LdpAdjId(kId1, intf("Ethernet1"), IpAddr(0x01000000)),
      LdpAdjId(kId1, intf("Ethernet10"), IpAddr()),
      LdpAdjId(kId1, intf("Ethernet2"), IpAddr()),
      LdpAdjId(LdpIdentifier(0x01010101, 1), IntfId(), IpAddr()),
      LdpAdjId(kId2, IntfId(), IpAddr()),
  });
  // Identifier, interface name as a string, address.
  expectLogged(LdpAdjId(kId1, intf("Et1"), IpAddr(0x0A000001)),
               {1, 1, 1, 1, 0, 0, 0, 0, 0, 3, 'E', 't', '1', 10, 0, 0, 1});
  expectLogRoundTrip<LdpAdjId>({LdpAdjId(), LdpAdjId(kId1, IntfId(), IpAddr(0x0A000001))});
}

TEST(LdpFecSessionId, FormsRefusalsHashOrderAndLog) {
  const LdpFecSessionId v(fec("10.0.0.0/8"), LdpSessionId(kId1));
  expectForm(v, "10.0.0.0/8_1.1.1.1:0");
  expectForm(LdpFecSessionId(fec("host:2001:db8::1"), LdpSessionId(kIdBig)),
             "host:2001:db8::1_192.168.1.1:65535");
  expectForm(LdpFecSessionId(), "none_0.0.0.0:0");

  LdpFecSessionId w;
  w.stringValueIs("2001:db8::/32_10.0.0.1:7");
  EXPECT_EQ(w, LdpFecSessionId(fec("2001:db8::/32"), LdpSessionId(kId2)));
  const LdpFecSessionId before = w;
  for (const char* text : {"10.0.0.0/8", "10.0.0.0/8_", "10.0.0.0/8_1.1.1.1:0 ",
                           "10.0.0.0/8-1.1.1.1:0", "_1.1.1.1:0"}) {
    expectRangeError([&] { w.stringValueIs(text); }, "Invalid LdpFecSessionId");
    EXPECT_EQ(w, before) << text;
  }
  expectRefused("10.0.0.0/8_x", "Invalid LdpFecSessionId", before);

  const LdpFecSessionId hostMax(fec("host:10.0.0.1"), LdpSessionId(kIdMax));
  EXPECT_EQ(hostMax.hash(), fec("host:10.0.0.1").hash() + idHash(kIdMax));
  // By FEC first, then session.
  expectAscending<LdpFecSessionId>({
      LdpFecSessionId(fec("10.0.0.0/8"), LdpSessionId(kId1)),
      LdpFecSessionId(fec("10.0.0.0/8"), LdpSessionId(kId2)),
      LdpFecSessionId(fec("11.0.0.0/8"), LdpSessionId(kId1)),
  });
  expectLogRoundTrip<LdpFecSessionId>(
      {LdpFecSessionId(), LdpFecSessionId(fec("host:2001:db8::1"), LdpSessionId(kIdBig))});
}

TEST(Via, FormsRefusalsHashAndLog) {
  const Via v(addr("10.0.0.1"), intf("Ethernet1"));
  EXPECT_EQ(v.stringValue(), "10.0.0.1-Ethernet1");
  EXPECT_EQ(Via(addr("fe80::1"), intf("Vlan10")).stringValue(), "fe80::1-Vlan10");
  expectForm(v, "Value('Ldp::Via', ** {'hop': 10.0.0.1, 'intfId': Ethernet1})");
  expectForm(Via(), "Value('Ldp::Via', ** {'hop': none, 'intfId': })");

  const Via sentinel(addr("10.0.0.9"), intf("Ethernet9"));
  expectRefused("10.0.0.1-Ethernet1", "Expected 'Value('Ldp::Via', ** {'", sentinel);
  expectRefused("Value('Ldp::Via', ** {'hop': 10.0.0, 'intfId': Ethernet1})",
                "Invalid value for attribute 'hop': Invalid IpGenAddr", sentinel);
  expectRefused("Value('Ldp::Via', ** {'hop': 10.0.0.1, 'intfId': Ethernet1)", "Expected '})'",
                sentinel);

  // An IPv4 hop and its IPv4-mapped IPv6 form share a hash but are different values.
  const Via v4(addr("10.0.0.1"), intf("Ethernet1"));
  const Via mapped(addr("::ffff:10.0.0.1"), intf("Ethernet1"));
  EXPECT_EQ(v4.hash(), mapped.hash());
  expectAscending<Via>({v4, mapped});
  expectLogRoundTrip<Via>({Via(), v4, Via(addr("2001:db8::1"), IntfId())});
}

TEST(LdpMsgIdFecMappingInfo, FormLogAndNot) {
  expectForm(LdpMsgIdFecMappingInfo(),
             "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': none, 'msgType': 0, "
             "'valid': False})");
  expectForm(LdpMsgIdFecMappingInfo(fec("host:2001:db8::1"), LdpLabelAbortReq_, true),
             "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': host:2001:db8::1, "
             "'msgType': LdpLabelAbortReq, 'valid': True})");
  expectRefused(
      "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': none, 'msgType': ldpLabelRequest, "
      "'valid': False})",
      "Invalid value for attribute 'msgType': Invalid Ldp::LdpMsgType: 'ldpLabelRequest'",
      LdpMsgIdFecMappingInfo(fec("10.0.0.0/8"), LdpHello_, true));
  expectLogRoundTrip<LdpMsgIdFecMappingInfo>(
      {LdpMsgIdFecMappingInfo(),
       LdpMsgIdFecMappingInfo(fec("10.0.0.0/8"), LdpLabelRequest_, true)});

  EXPECT_TRUE(!LdpMsgIdFecMappingInfo());
  // Any one field off its default makes the value non-empty.
  EXPECT_FALSE(!LdpMsgIdFecMappingInfo(FwdEqvClass(), static_cast<LdpMsgType>(0), true));
}

TEST(IdentifierAttributeLog, StreamOperatorOnPtrOutWritesTheValue) {
  Zel::Ptr<Zel::NboAttrLog::Out> out = Zel::allocate<Zel::NboAttrLog::Out>();
  out << LdpSessionId(kId2) << LdpAdjId(kId1, intf("Et1"), IpAddr());
  Zel::NboAttrLog::Out expected;
  attrLogWrite(expected, LdpSessionId(kId2));
  attrLogWrite(expected, LdpAdjId(kId1, intf("Et1"), IpAddr()));
  EXPECT_EQ(out->bytes(), expected.bytes());
}

TEST(LdpP2mpFecGenericOpaqueId, FormsRefusalsOrderAndLog) {
  const LdpP2mpFecGenericOpaqueId v(addr("10.0.0.1"), 5);
  expectForm(v, "10.0.0.1_5");
  expectForm(LdpP2mpFecGenericOpaqueId(addr("2001:db8::1"), 4294967295u), "2001:db8::1_4294967295");
  expectAscending<LdpP2mpFecGenericOpaqueId>({
      LdpP2mpFecGenericOpaqueId(addr("10.0.0.1"), 5),
      LdpP2mpFecGenericOpaqueId(addr("10.0.0.1"), 6),
      LdpP2mpFecGenericOpaqueId(addr("10.0.0.2"), 1),
      LdpP2mpFecGenericOpaqueId(addr("::1"), 0),
  });
  expectLogRoundTrip<LdpP2mpFecGenericOpaqueId>(
      {LdpP2mpFecGenericOpaqueId(), v, LdpP2mpFecGenericOpaqueId(addr("2001:db8::1"), 0)});

  const LdpP2mpFecGenericOpaqueId sentinel(addr("10.0.0.9"), 9);
  expectAllRefused({"", "10.0.0.1", "10.0.0.1_", "10.0.0.1-5", "10.0.0.1_-5", "10.0.0.1_4294967296",
                    "_5", "10.0.0_5"},
                   "Invalid LdpP2mpFecGenericOpaqueId", sentinel);
}

}  // namespace
