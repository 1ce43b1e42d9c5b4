// The identifiers: LdpIdentifier, and the key types built on it (LdpSessionId,
// LdpAdjId, LdpFecSessionId, Via, LdpMsgIdFecMappingInfo) plus the P2MP opaque id.
// Their string forms, refusals, order, hashes (collections keyed by them depend on
// the exact functions) and attribute-log encodings.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "core/LdpTypes.h"
#include "fec/LdpP2mpFec.h"
#include "platform/zel/Hash.h"

using namespace Ldp;
using Mpls::FwdEqvClass;
using Ovo::IntfId;
using Ovo::IpAddr;
using Ovo::IpGenAddr;

namespace {

// The integer mix of the identifiers' hashes, written out from its definition.
uint32_t mix(uint32_t x) {
  const uint32_t a = x * 32767u - 1u;
  const uint32_t b = (a ^ (a >> 12)) * 5u;
  const uint32_t c = (b ^ (b >> 4)) * 2057u;
  return c ^ (c >> 16);
}

template <class F>
void expectRangeError(F&& f, std::string_view message) {
  try {
    f();
    ADD_FAILURE() << "no exception, expected \"" << message << "\"";
  } catch (const Zel::RangeException& e) {
    EXPECT_EQ(e.message().view(), message);
  }
}

template <class T>
T parsedPrefix(std::string_view text, std::string* rest) {
  Zel::String s(text);
  Zel::StrIt it = s.begin();
  T v{};
  sequenceToValue(it, s.end(), &v);
  *rest = std::string(it, s.end());
  return v;
}

// Parses all of `text`.
template <class T>
T parsed(std::string_view text) {
  std::string rest;
  T v = parsedPrefix<T>(text, &rest);
  EXPECT_EQ(rest, "") << "parsing \"" << text << "\"";
  return v;
}

// `text` is refused with `message`; the target and the cursor are left unchanged.
template <class T>
void expectRefused(std::string_view text, std::string_view message, const T& sentinel) {
  SCOPED_TRACE(testing::Message() << "parsing \"" << text << "\"");
  Zel::String s(text);
  Zel::StrIt it = s.begin();
  T out = sentinel;
  expectRangeError([&] { sequenceToValue(it, s.end(), &out); }, message);
  EXPECT_TRUE(out == sentinel);
  EXPECT_TRUE(it == s.begin());
}

// `v` prints as `text`, which reads back to an equal value with an equal hash.
template <class T>
void expectForm(const T& v, std::string_view text) {
  SCOPED_TRACE(testing::Message() << "form \"" << text << "\"");
  EXPECT_EQ(valueToStrep(v).view(), text);
  T back = parsed<T>(text);
  EXPECT_TRUE(back == v);
  EXPECT_EQ(back.hash(), v.hash());
}

// `ascending` is strictly increasing under operator<, and only equal to itself.
template <class T>
void expectAscending(const std::vector<T>& ascending) {
  for (size_t i = 0; i < ascending.size(); ++i) {
    for (size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] < ascending[j], i < j) << ascending[i] << " < " << ascending[j];
      EXPECT_EQ(ascending[i] == ascending[j], i == j) << ascending[i] << " == " << ascending[j];
    }
  }
}

// Writes each value as one record, then reads them back in order.
template <class T>
void expectLogRoundTrip(const std::vector<T>& values) {
  Zel::NboAttrLog::Out out;
  for (size_t i = 0; i < values.size(); ++i) {
    out.attrBegin(static_cast<Zel::AttributeId>(100 + i));
    attrLogWrite(out, values[i]);
    out.attrEnd();
  }
  Zel::NboAttrLog::In in(out.bytes());
  for (size_t i = 0; i < values.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "logging " << values[i]);
    ASSERT_EQ(in.nextAttrId(), 100 + i);
    T back{};
    attrLogRead(in, &back);
    EXPECT_TRUE(back == values[i]) << back;
    EXPECT_EQ(in.remaining(), 0u);
  }
  EXPECT_TRUE(in.atEnd());
}

const LdpIdentifier kId1(0x01010101, 0);        // 1.1.1.1:0
const LdpIdentifier kId2(0x0A000001, 7);        // 10.0.0.1:7
const LdpIdentifier kIdBig(0xC0A80101, 65535);  // 192.168.1.1:65535

IntfId intf(const char* name) { return IntfId(Zel::String(name)); }
IpGenAddr addr(const char* text) { return parsed<IpGenAddr>(text); }
FwdEqvClass fec(const char* text) { return parsed<FwdEqvClass>(text); }

// ---------------------------------------------------------------- the mix

TEST(LdpHashMix, MatchesItsDefinition) {
  // Values computed outside C++ (uint32 wrapping arithmetic).
  EXPECT_EQ(ldpHashMix(0), 0xCAA3CAA3u);
  EXPECT_EQ(ldpHashMix(1), 0x12D60BF6u);
  EXPECT_EQ(ldpHashMix(0x0A000001), 0x51590679u);
  EXPECT_EQ(ldpHashMix(0xC0A80101), 0x0AE7806Fu);
  EXPECT_EQ(ldpHashMix(0x80000000), 0x6551E551u);
  EXPECT_EQ(ldpHashMix(0xFFFFFFFF), 0xBD55FC18u);
  for (uint32_t x : {0u, 1u, 0x01010101u, 0x7FFFFFFFu, 0xDEADBEEFu, 0xFFFFFFFEu}) {
    EXPECT_EQ(ldpHashMix(x), mix(x)) << std::hex << x;
  }
}

// ---------------------------------------------------------------- LdpIdentifier

TEST(LdpIdentifier, FieldsInNetworkOrder) {
  EXPECT_EQ(kId2.lsrId().value(), 0x0A000001u);
  EXPECT_EQ(kId2.labelSpace().value(), 7u);
  const uint8_t* lsr = kId2.lsrId().octets();
  EXPECT_EQ(std::vector<uint8_t>(lsr, lsr + 4), (std::vector<uint8_t>{10, 0, 0, 1}));
  const uint8_t* ls = kId2.labelSpace().octets();
  EXPECT_EQ(std::vector<uint8_t>(ls, ls + 2), (std::vector<uint8_t>{0, 7}));
  EXPECT_TRUE(!LdpIdentifier());
  EXPECT_FALSE(!kId1);
  EXPECT_FALSE(!LdpIdentifier(0, 1));
}

TEST(LdpIdentifier, Form) {
  expectForm(LdpIdentifier(), "0.0.0.0:0");
  expectForm(kId1, "1.1.1.1:0");
  expectForm(kId2, "10.0.0.1:7");
  expectForm(kIdBig, "192.168.1.1:65535");
  EXPECT_EQ(kId2.stringValue(), "10.0.0.1:7");
  std::ostringstream os;
  os << kId2;
  EXPECT_EQ(os.str(), "10.0.0.1:7");

  // The parser stops after the last digit of the label space.
  std::string rest;
  EXPECT_EQ(parsedPrefix<LdpIdentifier>("10.0.0.1:7_Ethernet1", &rest), kId2);
  EXPECT_EQ(rest, "_Ethernet1");
}

TEST(LdpIdentifier, Refusals) {
  for (const char* text : {"", "x", "10.0.0.1", "10.0.0.1:", "10.0.0.1 :0", "10.0.0.1:x",
                           "10.0.0.1:-1", "10.0.0.1:65536", "10.0.0.256:0", "10.0.0:0"}) {
    expectRefused(text, "Invalid LdpIdentifier", kId1);
  }
}

TEST(LdpIdentifier, Hash) {
  for (const LdpIdentifier& id :
       {LdpIdentifier(), kId1, kId2, kIdBig, LdpIdentifier(0xFFFFFFFF, 65535)}) {
    EXPECT_EQ(id.hash(), mix(id.lsrId().value()) + id.labelSpace().value()) << id;
  }
  // The sum wraps.
  EXPECT_EQ(LdpIdentifier(0xFFFFFFFF, 65535).hash(), 0xBD55FC18u + 65535u);
  EXPECT_EQ(LdpIdentifier(0xFFFFFFFF, 65535).hash(), 0xBD56FC17u);
}

TEST(LdpIdentifier, Order) {
  expectAscending<LdpIdentifier>(
      {LdpIdentifier(), LdpIdentifier(0, 1), kId1, LdpIdentifier(0x01010101, 1), kId2, kIdBig});
}

TEST(LdpIdentifier, AttributeLog) {
  Zel::NboAttrLog::Out out;
  attrLogWrite(out, kIdBig);
  EXPECT_EQ(out.bytes(), (std::vector<uint8_t>{192, 168, 1, 1, 0xFF, 0xFF}));
  expectLogRoundTrip<LdpIdentifier>({LdpIdentifier(), kId1, kIdBig});
}

// ---------------------------------------------------------------- LdpSessionId

TEST(LdpSessionId, FormIsTheIdentifiers) {
  const LdpSessionId s(kId2);
  EXPECT_EQ(s.stringValue(), "10.0.0.1:7");
  expectForm(s, "10.0.0.1:7");
  EXPECT_EQ(s.hash(), kId2.hash());
  Zel::String text("1.1.1.1:0");
  Zel::StrIt it = text.begin();
  EXPECT_EQ(LdpSessionId(it, text.end()), LdpSessionId(kId1));
  EXPECT_TRUE(!LdpSessionId());
  expectAscending<LdpSessionId>({LdpSessionId(), LdpSessionId(kId1), LdpSessionId(kId2)});
}

TEST(LdpSessionId, RefusalNamesTheAttribute) {
  const LdpSessionId sentinel(kId1);
  expectRefused("10.0.0.1:x", "Invalid value for attribute 'peerLdpId': Invalid LdpIdentifier",
                sentinel);
  expectRefused("bogus", "Invalid value for attribute 'peerLdpId': Invalid LdpIdentifier",
                sentinel);
  // The same through the type-erased operations of its descriptor.
  const Zel::ValueOps* ops = LdpSessionId::zelType().valueOps();
  ASSERT_NE(ops, nullptr);
  Zel::String bad("10.0.0.1");
  Zel::StrIt it = bad.begin();
  LdpSessionId out = sentinel;
  expectRangeError([&] { ops->parse(it, bad.end(), &out); },
                   "Invalid value for attribute 'peerLdpId': Invalid LdpIdentifier");
  EXPECT_EQ(out, sentinel);
}

TEST(LdpSessionId, AttributeLog) {
  expectLogRoundTrip<LdpSessionId>({LdpSessionId(), LdpSessionId(kIdBig)});
}

// ---------------------------------------------------------------- LdpAdjId

TEST(LdpAdjId, TargetedAndLinkForms) {
  const LdpAdjId target(kId1, IntfId(), IpAddr(0x0A000001));
  EXPECT_EQ(target.stringValue(), "1.1.1.1:0_TARGET_10.0.0.1");
  EXPECT_EQ(target.adjType(), LdpTargetAdj_);
  EXPECT_EQ(static_cast<uint32_t>(target.adjType()), 2u);
  expectForm(target, "1.1.1.1:0_TARGET_10.0.0.1");

  const LdpAdjId link(kId1, intf("Ethernet1"), IpAddr());
  EXPECT_EQ(link.stringValue(), "1.1.1.1:0_Ethernet1");
  EXPECT_EQ(link.adjType(), LdpLinkAdj_);
  EXPECT_EQ(static_cast<uint32_t>(link.adjType()), 1u);
  expectForm(link, "1.1.1.1:0_Ethernet1");

  expectForm(LdpAdjId(kIdBig, intf("Ethernet1/1.100"), IpAddr()),
             "192.168.1.1:65535_Ethernet1/1.100");
  expectForm(LdpAdjId(kId2, intf("Port-Channel10"), IpAddr()), "10.0.0.1:7_Port-Channel10");
  // An interface that happens to be called TARGET is still a link adjacency.
  expectForm(LdpAdjId(kId1, intf("TARGET"), IpAddr()), "1.1.1.1:0_TARGET");
  // The default value is a targeted adjacency to 0.0.0.0.
  expectForm(LdpAdjId(), "0.0.0.0:0_TARGET_0.0.0.0");
}

TEST(LdpAdjId, StringValueIs) {
  LdpAdjId v;
  v.stringValueIs("1.1.1.1:0_Ethernet1");
  EXPECT_EQ(v, LdpAdjId(kId1, intf("Ethernet1"), IpAddr()));
  v.stringValueIs("10.0.0.1:7_TARGET_10.0.0.2");
  // Full success replaces every field: the interface is gone.
  EXPECT_EQ(v, LdpAdjId(kId2, IntfId(), IpAddr(0x0A000002)));
  EXPECT_EQ(v.adjType(), LdpTargetAdj_);
}

TEST(LdpAdjId, StringValueIsRefusalLeavesTheValue) {
  const LdpAdjId before(kId2, intf("Ethernet3"), IpAddr(0x0A000009));
  for (const char* text :
       {"x", "", "1.1.1.1:0", "1.1.1.1:0_", "1.1.1.1:0_Ethernet1 ", "1.1.1.1:0_Ethernet1 junk",
        "1.1.1.1:0_Ethernet1_x", "1.1.1.1:0_TARGET_", "1.1.1.1:0_TARGET_10.0.0.256",
        "1.1.1.1:0_TARGET_10.0.0", "1.1.1.1:0_TARGET_10.0.0.1x", "1.1.1.1:0-Ethernet1",
        "1.1.1.1_Ethernet1"}) {
    SCOPED_TRACE(text);
    LdpAdjId v = before;
    expectRangeError([&] { v.stringValueIs(text); }, "Invalid LdpAdjId");
    EXPECT_EQ(v, before);
    EXPECT_EQ(v.intfId(), intf("Ethernet3"));
    EXPECT_EQ(v.targetIpAddr(), IpAddr(0x0A000009));
  }
  // sequenceToValue refuses the same way and keeps the cursor.
  expectRefused("1.1.1.1:0_TARGET_300.0.0.1", "Invalid LdpAdjId", before);
  expectRefused("1.1.1.1:0_", "Invalid LdpAdjId", before);
}

TEST(LdpAdjId, HashLeavesOutTheTargetAddress) {
  const LdpAdjId a(kId1, IntfId(), IpAddr(0x0A000001));
  const LdpAdjId b(kId1, IntfId(), IpAddr(0x0A000002));
  EXPECT_EQ(a.hash(), b.hash());
  EXPECT_NE(a, b);
  EXPECT_TRUE(a < b);
  EXPECT_FALSE(b < a);

  for (const LdpAdjId& v : {a, LdpAdjId(kIdBig, intf("Ethernet1"), IpAddr()),
                            LdpAdjId(LdpIdentifier(0xFFFFFFFF, 65535), intf("Vlan10"), IpAddr())}) {
    const LdpIdentifier& id = v.ldpIdentifier();
    EXPECT_EQ(v.hash(), mix(id.lsrId().value()) + id.labelSpace().value() + v.intfId().hash()) << v;
  }
  EXPECT_EQ(LdpAdjId(kId1, intf("Ethernet1"), IpAddr()).hash(),
            0xC747F8B0u + Zel::String("Ethernet1").hash());
}

TEST(LdpAdjId, OrderIsLexicographicOverFields) {
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
}

TEST(LdpAdjId, AttributeLog) {
  expectLogRoundTrip<LdpAdjId>({LdpAdjId(), LdpAdjId(kId1, IntfId(), IpAddr(0x0A000001)),
                                LdpAdjId(kIdBig, intf("Ethernet1/1.100"), IpAddr(0x0A000003))});
  // Identifier, interface name as a string, address.
  Zel::NboAttrLog::Out out;
  attrLogWrite(out, LdpAdjId(kId1, intf("Et1"), IpAddr(0x0A000001)));
  EXPECT_EQ(out.bytes(),
            (std::vector<uint8_t>{1, 1, 1, 1, 0, 0, 0, 0, 0, 3, 'E', 't', '1', 10, 0, 0, 1}));
}

// ---------------------------------------------------------------- LdpFecSessionId

TEST(LdpFecSessionId, Form) {
  const LdpFecSessionId v(fec("10.0.0.0/8"), LdpSessionId(kId1));
  EXPECT_EQ(v.stringValue(), "10.0.0.0/8_1.1.1.1:0");
  expectForm(v, "10.0.0.0/8_1.1.1.1:0");
  expectForm(LdpFecSessionId(fec("host:2001:db8::1"), LdpSessionId(kIdBig)),
             "host:2001:db8::1_192.168.1.1:65535");
  expectForm(LdpFecSessionId(FwdEqvClass::wildcard(), LdpSessionId(kId2)), "wildcard_10.0.0.1:7");
  expectForm(LdpFecSessionId(), "none_0.0.0.0:0");
}

TEST(LdpFecSessionId, StringValueIs) {
  LdpFecSessionId v;
  v.stringValueIs("2001:db8::/32_10.0.0.1:7");
  EXPECT_EQ(v, LdpFecSessionId(fec("2001:db8::/32"), LdpSessionId(kId2)));

  const LdpFecSessionId before = v;
  for (const char* text : {"x", "10.0.0.0/8", "10.0.0.0/8_", "10.0.0.0/8_1.1.1.1",
                           "10.0.0.0/8_1.1.1.1:0 ", "10.0.0.0/8-1.1.1.1:0", "_1.1.1.1:0"}) {
    SCOPED_TRACE(text);
    expectRangeError([&] { v.stringValueIs(text); }, "Invalid LdpFecSessionId");
    EXPECT_EQ(v, before);
  }
  expectRefused("10.0.0.0/8_x", "Invalid LdpFecSessionId", before);
}

TEST(LdpFecSessionId, HashAndOrder) {
  for (const LdpFecSessionId& v :
       {LdpFecSessionId(), LdpFecSessionId(fec("10.0.0.0/8"), LdpSessionId(kIdBig)),
        LdpFecSessionId(fec("host:10.0.0.1"), LdpSessionId(LdpIdentifier(0xFFFFFFFF, 65535)))}) {
    const LdpIdentifier& id = v.ldpSessionId().peerLdpId();
    EXPECT_EQ(v.hash(), v.fwdEqvClass().hash() + mix(id.lsrId().value()) + id.labelSpace().value())
        << v;
  }
  // By FEC first, then session.
  expectAscending<LdpFecSessionId>({
      LdpFecSessionId(fec("10.0.0.0/8"), LdpSessionId(kId1)),
      LdpFecSessionId(fec("10.0.0.0/8"), LdpSessionId(kId2)),
      LdpFecSessionId(fec("11.0.0.0/8"), LdpSessionId(kId1)),
  });
}

TEST(LdpFecSessionId, AttributeLog) {
  expectLogRoundTrip<LdpFecSessionId>(
      {LdpFecSessionId(), LdpFecSessionId(fec("10.0.0.0/8"), LdpSessionId(kId1)),
       LdpFecSessionId(fec("host:2001:db8::1"), LdpSessionId(kIdBig))});
}

// ---------------------------------------------------------------- Via

TEST(Via, Forms) {
  const Via v(addr("10.0.0.1"), intf("Ethernet1"));
  EXPECT_EQ(v.stringValue(), "10.0.0.1-Ethernet1");
  EXPECT_EQ(Via(addr("fe80::1"), intf("Vlan10")).stringValue(), "fe80::1-Vlan10");

  expectForm(v, "Value('Ldp::Via', ** {'hop': 10.0.0.1, 'intfId': Ethernet1})");
  expectForm(Via(addr("2001:db8::1"), intf("Ethernet1/1.100")),
             "Value('Ldp::Via', ** {'hop': 2001:db8::1, 'intfId': Ethernet1/1.100})");
  expectForm(Via(), "Value('Ldp::Via', ** {'hop': none, 'intfId': })");
  std::ostringstream os;
  os << v;
  EXPECT_EQ(os.str(), "Value('Ldp::Via', ** {'hop': 10.0.0.1, 'intfId': Ethernet1})");
}

TEST(Via, Refusals) {
  const Via sentinel(addr("10.0.0.9"), intf("Ethernet9"));
  expectRefused("10.0.0.1-Ethernet1", "Expected 'Value('Ldp::Via', ** {'", sentinel);
  expectRefused("Value('Ldp::Via', ** {'hop': 10.0.0, 'intfId': Ethernet1})",
                "Invalid value for attribute 'hop': Invalid IpGenAddr", sentinel);
  expectRefused("Value('Ldp::Via', ** {'hop': 10.0.0.1, 'intfId': Ethernet1)", "Expected '})'",
                sentinel);
}

TEST(Via, Hash) {
  for (const Via& v : {Via(), Via(addr("10.0.0.1"), intf("Ethernet1")),
                       Via(addr("2001:db8::1"), intf("Vlan10"))}) {
    Zel::Hash h;
    h.mix(v.hop().hashAsV6());
    h.mix(v.intfId().hash());
    EXPECT_EQ(v.hash(), h.result()) << v;
  }
  // An IPv4 hop and its IPv4-mapped IPv6 form share a hash but are different values.
  const Via v4(addr("10.0.0.1"), intf("Ethernet1"));
  const Via mapped(addr("::ffff:10.0.0.1"), intf("Ethernet1"));
  EXPECT_EQ(v4.hash(), mapped.hash());
  EXPECT_NE(v4, mapped);
  EXPECT_TRUE(v4 < mapped);
}

TEST(Via, AttributeLog) {
  expectLogRoundTrip<Via>(
      {Via(), Via(addr("10.0.0.1"), intf("Ethernet1")), Via(addr("2001:db8::1"), IntfId())});
}

// ---------------------------------------------------------------- LdpMsgIdFecMappingInfo

TEST(LdpMsgIdFecMappingInfo, ReflectionForm) {
  expectForm(LdpMsgIdFecMappingInfo(),
             "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': none, 'msgType': 0, "
             "'valid': False})");
  expectForm(LdpMsgIdFecMappingInfo(fec("10.0.0.0/8"), LdpLabelRequest_, true),
             "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': 10.0.0.0/8, 'msgType': "
             "LdpLabelRequest, 'valid': True})");
  expectForm(LdpMsgIdFecMappingInfo(fec("host:2001:db8::1"), LdpLabelAbortReq_, false),
             "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': host:2001:db8::1, "
             "'msgType': LdpLabelAbortReq, 'valid': False})");
  expectRefused(
      "Value('Ldp::LdpMsgIdFecMappingInfo', ** {'fwdEqvClass': none, 'msgType': ldpLabelRequest, "
      "'valid': False})",
      "Invalid value for attribute 'msgType': Invalid Ldp::LdpMsgType: 'ldpLabelRequest'",
      LdpMsgIdFecMappingInfo(fec("10.0.0.0/8"), LdpHello_, true));
}

TEST(LdpMsgIdFecMappingInfo, NotIsTrueOnlyForTheDefault) {
  EXPECT_TRUE(!LdpMsgIdFecMappingInfo());
  EXPECT_FALSE(!LdpMsgIdFecMappingInfo(fec("10.0.0.0/8"), static_cast<LdpMsgType>(0), false));
  EXPECT_FALSE(!LdpMsgIdFecMappingInfo(FwdEqvClass(), LdpLabelMapping_, false));
  EXPECT_FALSE(!LdpMsgIdFecMappingInfo(FwdEqvClass(), static_cast<LdpMsgType>(0), true));
}

TEST(LdpMsgIdFecMappingInfo, AttributeLog) {
  expectLogRoundTrip<LdpMsgIdFecMappingInfo>(
      {LdpMsgIdFecMappingInfo(),
       LdpMsgIdFecMappingInfo(fec("10.0.0.0/8"), LdpLabelRequest_, true)});
}

// ---------------------------------------------------------------- the attribute log through
// Ptr<Out>

TEST(IdentifierAttributeLog, StreamOperatorWritesTheValue) {
  Zel::Ptr<Zel::NboAttrLog::Out> out = Zel::allocate<Zel::NboAttrLog::Out>();
  out << LdpSessionId(kId2) << LdpAdjId(kId1, intf("Et1"), IpAddr());
  Zel::NboAttrLog::Out expected;
  attrLogWrite(expected, LdpSessionId(kId2));
  attrLogWrite(expected, LdpAdjId(kId1, intf("Et1"), IpAddr()));
  EXPECT_EQ(out->bytes(), expected.bytes());
}

TEST(IdentifierAttributeLog, TruncatedValueIsRefused) {
  Zel::NboAttrLog::Out out;
  out.attrBegin(5);
  out.putU32(0x01010101);  // an LdpIdentifier without its label space
  out.attrEnd();
  Zel::NboAttrLog::In in(out.bytes());
  ASSERT_EQ(in.nextAttrId(), 5u);
  LdpIdentifier v;
  expectRangeError([&] { attrLogRead(in, &v); }, "NboAttrLog::In: record truncated");
}

// ---------------------------------------------------------------- LdpP2mpFecGenericOpaqueId

TEST(LdpP2mpFecGenericOpaqueId, Form) {
  const LdpP2mpFecGenericOpaqueId v(addr("10.0.0.1"), 5);
  EXPECT_EQ(v.stringValue(), "10.0.0.1_5");
  EXPECT_EQ(valueToStrep(v), "10.0.0.1_5");
  EXPECT_EQ(parsed<LdpP2mpFecGenericOpaqueId>("10.0.0.1_5"), v);
  EXPECT_EQ(parsed<LdpP2mpFecGenericOpaqueId>("2001:db8::1_4294967295"),
            LdpP2mpFecGenericOpaqueId(addr("2001:db8::1"), 4294967295u));
  std::string rest;
  EXPECT_EQ(parsedPrefix<LdpP2mpFecGenericOpaqueId>("10.0.0.1_5, x", &rest), v);
  EXPECT_EQ(rest, ", x");
  expectAscending<LdpP2mpFecGenericOpaqueId>({
      LdpP2mpFecGenericOpaqueId(addr("10.0.0.1"), 5),
      LdpP2mpFecGenericOpaqueId(addr("10.0.0.1"), 6),
      LdpP2mpFecGenericOpaqueId(addr("10.0.0.2"), 1),
      LdpP2mpFecGenericOpaqueId(addr("::1"), 0),
  });
}

TEST(LdpP2mpFecGenericOpaqueId, Refusals) {
  const LdpP2mpFecGenericOpaqueId sentinel(addr("10.0.0.9"), 9);
  for (const char* text : {"x", "", "10.0.0.1", "10.0.0.1_", "10.0.0.1-5", "10.0.0.1_-5",
                           "10.0.0.1_4294967296", "_5", "10.0.0_5"}) {
    expectRefused(text, "Invalid LdpP2mpFecGenericOpaqueId", sentinel);
  }
  expectRangeError(
      [] {
        Zel::parseWhole<LdpP2mpFecGenericOpaqueId>("10.0.0.1_5x",
                                                   "Invalid LdpP2mpFecGenericOpaqueId");
      },
      "Invalid LdpP2mpFecGenericOpaqueId");
}

TEST(LdpP2mpFecGenericOpaqueId, AttributeLog) {
  expectLogRoundTrip<LdpP2mpFecGenericOpaqueId>(
      {LdpP2mpFecGenericOpaqueId(), LdpP2mpFecGenericOpaqueId(addr("10.0.0.1"), 5),
       LdpP2mpFecGenericOpaqueId(addr("2001:db8::1"), 0xFFFFFFFFu)});
}

}  // namespace
