// The TLV overlays: field placement in the octets, bit setters that must leave the
// other bits alone, every validate() rule at its boundary, the string forms and the
// type assertions.
//
// Buffers are exactly as long as the TLV, so a read past the TLV shows up under
// the address sanitizer.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/Traced.h"
#include "tests/wire/OverlayBytes.h"
#include "wire/LdpHdr.h"

using namespace Ldp;
using LdpTest::as;
using LdpTest::Bytes;
using LdpTest::traced;
using LdpTest::traces;
using Ovo::IpAddr;
using Ovo::IpGenAddr;

namespace {

// A TLV of `type` whose length field is `len`, with `len` value octets (or
// `valueOctets` of them when given).
Bytes tlv(uint16_t type, uint16_t len, int valueOctets = -1) {
  Bytes b(4 + static_cast<size_t>(valueOctets < 0 ? len : valueOctets));
  b[0] = static_cast<uint8_t>(type >> 8);
  b[1] = static_cast<uint8_t>(type);
  b[2] = static_cast<uint8_t>(len >> 8);
  b[3] = static_cast<uint8_t>(len);
  return b;
}

Bytes tlv(uint16_t type, std::initializer_list<uint8_t> value) {
  Bytes b = tlv(type, static_cast<uint16_t>(value.size()));
  std::copy(value.begin(), value.end(), b.begin() + 4);
  return b;
}

// The length rule of a fixed-size TLV: `good` passes, one less or one more fails
// with badTlvLength and the error form.
template <class T>
void expectLengthRule(uint16_t type, uint16_t good, const std::string& errorPrefix) {
  SCOPED_TRACE(errorPrefix);
  Bytes ok = tlv(type, good);
  EXPECT_EQ(as<T>(ok)->validate(), success_);
  for (int len : {good - 1, good + 1}) {
    if (len < 0) continue;
    Bytes bad = tlv(type, static_cast<uint16_t>(len));
    EXPECT_EQ(as<T>(bad)->validate(), badTlvLength_) << len;
    EXPECT_EQ(as<T>(bad)->stringValue(), errorPrefix + "badTlvLength") << len;
  }
}

}  // namespace

TEST(FixedLengthTlvs, LengthRuleAndErrorForms) {
  expectLengthRule<LdpCommonHelloTlv>(0x0400, 4, "Error LdpCommonHelloTlv: ");
  expectLengthRule<LdpIpTransportAddrTlv>(0x0401, 4, "Error IpTransportAddrTlv: ");
  expectLengthRule<LdpConfigSeqNumTlv>(0x0402, 4, "Error ConfigSeqNumTlv: ");
  expectLengthRule<LdpIp6TransportAddrTlv>(0x0403, 16, "Error Ip6TransportAddrTlv: ");
  expectLengthRule<LdpGenLabelTlv>(0x0200, 4, "Error GenLabelTlv: ");
  expectLengthRule<LdpLabelReqMsgIdTlv>(0x0600, 4, "Error LabelReqMsgIdTlv: ");
  expectLengthRule<LdpHopCountTlv>(0x0103, 1, "Error LdpHopCountTlv: ");
  expectLengthRule<LdpStatusTlv>(0x0300, 10, "Error LdpStatusTlv: ");
}

TEST(FixedLengthTlvs, FieldsAndStringForms) {
  Bytes a = tlv(0x0401, {10, 0, 0, 1});
  EXPECT_EQ(as<LdpIpTransportAddrTlv>(a)->stringValue(), "10.0.0.1");
  as<LdpIpTransportAddrTlv>(a)->ipAddrIs(IpAddr(0xC0A80102));
  EXPECT_EQ(a, tlv(0x0401, {192, 168, 1, 2}));

  Bytes a6 = tlv(0x0403, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
  EXPECT_EQ(as<LdpIp6TransportAddrTlv>(a6)->stringValue(), "2001:db8::1");
  as<LdpIp6TransportAddrTlv>(a6)->ip6AddrIs(IpGenAddr(IpAddr(0x0A000001)));
  EXPECT_EQ(as<LdpIp6TransportAddrTlv>(a6)->stringValue(), "::ffff:10.0.0.1");

  // Values with the top bit set tell an unsigned format from a signed one.
  Bytes seq = tlv(0x0402, {0xFF, 0xFF, 0xFF, 0xFE});
  EXPECT_EQ(as<LdpConfigSeqNumTlv>(seq)->stringValue(), "ConfigSeqNumTlv: 4294967294");
  as<LdpConfigSeqNumTlv>(seq)->configSeqNumIs(0x01020304);
  EXPECT_EQ(seq, tlv(0x0402, {1, 2, 3, 4}));

  Bytes id = tlv(0x0600, {0x80, 0, 0, 1});
  EXPECT_EQ(as<LdpLabelReqMsgIdTlv>(id)->stringValue(), "LabelReqMsgIdTlv: ID(2147483649)");
}

TEST(CommonHelloTlv, FieldsBitsAndForm) {
  Bytes b = tlv(0x0400, {0x00, 0x0F, 0x80, 0x00});
  LdpCommonHelloTlv* h = as<LdpCommonHelloTlv>(b);
  EXPECT_EQ(h->stringValue(), "CommonHelloTlv: HT(15),1,0");
  h->requestSendTargetedHelloIs(true);
  h->targetedHelloIs(false);
  EXPECT_EQ(b[6], 0x40);
  EXPECT_EQ(h->stringValue(), "CommonHelloTlv: HT(15),0,1");
  // The reserved bits survive both setters, either way.
  b[6] = 0x3F;
  b[7] = 0xFF;
  h->targetedHelloIs(true);
  h->requestSendTargetedHelloIs(true);
  EXPECT_EQ(b[6], 0xFF);
  h->targetedHelloIs(false);
  h->requestSendTargetedHelloIs(false);
  EXPECT_EQ(h->targetHelloField().raw(), 0x3FFF);
  h->holdTimeIs(0xFFFE);
  EXPECT_EQ(b, tlv(0x0400, {0xFF, 0xFE, 0x3F, 0xFF}));
}

TEST(GenLabelTlv, LabelKeepsTheHigh12Bits) {
  Bytes b = tlv(0x0200, {0xFF, 0xF0, 0x00, 0x10});
  LdpGenLabelTlv* l = as<LdpGenLabelTlv>(b);
  EXPECT_EQ(l->label(), 16u);
  l->labelIs(17);
  EXPECT_EQ(b, tlv(0x0200, {0xFF, 0xF0, 0x00, 0x11}));
  l->labelIs(0xFFFFFFFF);  // only 20 bits are the label's
  EXPECT_EQ(b, tlv(0x0200, {0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(l->stringValue(), "GenLabelTlv: L(1048575)");
  b[4] = 0;
  b[5] = 0x0F;
  l->labelIs(0);
  EXPECT_EQ(b, tlv(0x0200, {0x00, 0x00, 0x00, 0x00}));
}

namespace {
// A valid common session parameters TLV: version 1, keepalive 180, A set,
// max PDU 4096, receiver 10.0.0.1:0.
Bytes sessionParams() {
  return tlv(0x0500, {0, 1, 0, 180, 0x80, 0, 0x10, 0x00, 10, 0, 0, 1, 0, 0});
}
}  // namespace

TEST(CommonSessionParamTlv, FieldsAndForms) {
  Bytes b = sessionParams();
  LdpCommonSessionParamTlv* p = as<LdpCommonSessionParamTlv>(b);
  EXPECT_EQ(p->stringValue(),
            "LdpCommonSessionParamTlv: KA(180), A(1), D(0), PduLen(4096), 10.0.0.1:0");
  EXPECT_EQ(p->adField().labelAdvDspl(), onDemand_);
  p->adField().loopDetectIs(true);
  p->adField().downstreamOnDemandIs(false);
  EXPECT_EQ(b[8], 0x40);
  b[8] = 0x3F;  // reserved bits stay
  p->adField().downstreamOnDemandIs(true);
  p->adField().loopDetectIs(true);
  p->pathVecLimIs(0xFE);
  p->recvLdpIdentifierIs(LdpIdentifier(0x01020304, 0x0506));
  p->keepAliveTimeIs(0x0708);
  p->maxPduLengthIs(0);
  EXPECT_EQ(b, tlv(0x0500, {0, 1, 7, 8, 0xFF, 0xFE, 0, 0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(p->stringValue(),
            "LdpCommonSessionParamTlv: KA(1800), A(1), D(1), PduLen(0), 1.2.3.4:1286");
  p->protocolVersionIs(2);
  EXPECT_EQ(p->stringValue(), "Error LdpCommonSessionParamTlv: badVersion");
}

TEST(CommonSessionParamTlv, RulesInOrderWithTraces) {
  const std::string version = "   Rejected. Protocol version is not 1";
  const std::string keepAlive = "   Rejected. keepAliveTime is out of range.";
  const std::string maxPdu = "   Rejected. maxPduLength is out of range.";
  struct Case {
    uint16_t version, keepAlive, maxPdu;
    LdpStatusCode rc;
    std::vector<std::string> traces;
  };
  const Case cases[] = {
      {1, 3, 9600, success_, {}},
      {1, 180, 0, success_, {}},
      {1, 2, 4096, sessionRejectBadKeepAliveTime_, {keepAlive}},
      {1, 180, 9601, rejectMaxPduLength_, {maxPdu}},
      {0, 180, 4096, badVersion_, {version}},
      {2, 1, 9601, badVersion_, {version}},
      {1, 1, 65535, sessionRejectBadKeepAliveTime_, {keepAlive}},
  };
  for (const Case& c : cases) {
    Bytes b = sessionParams();
    LdpCommonSessionParamTlv* p = as<LdpCommonSessionParamTlv>(b);
    p->protocolVersionIs(c.version);
    p->keepAliveTimeIs(c.keepAlive);
    p->maxPduLengthIs(c.maxPdu);
    EXPECT_EQ(traced([&] { return p->validate(); }), c.rc) << c.version << "/" << c.keepAlive;
    EXPECT_EQ(traces, c.traces) << c.version << "/" << c.keepAlive;
  }
  // The header and length rules come first, before any field is looked at.
  for (uint16_t len : {13, 15}) {
    Bytes b = tlv(0x0500, len);
    EXPECT_EQ(traced([&] { return as<LdpCommonSessionParamTlv>(b)->validate(); }), badTlvLength_);
    EXPECT_TRUE(traces.empty());
  }
  Bytes unknown = sessionParams();
  unknown[1] = 0x05;  // 0x0505 is no type of ours
  EXPECT_EQ(as<LdpCommonSessionParamTlv>(unknown)->validate(), unknownTlv_);
  unknown[0] |= 0x80;
  EXPECT_EQ(as<LdpCommonSessionParamTlv>(unknown)->validate(), unknownMessageTypeIgnore_);
}

TEST(AddressListTlv, CountRuleAndValidate) {
  struct Case {
    uint16_t family, len;
    uint32_t count;
    LdpStatusCode rc;
  };
  const Case cases[] = {{1, 10, 2, success_},
                        {1, 6, 1, success_},
                        {1, 9, 0, malformedTlv_},
                        {1, 11, 0, malformedTlv_},
                        {1, 2, 0, malformedTlv_},
                        {1, 0, 0, malformedTlv_},
                        {2, 18, 1, success_},
                        {2, 34, 2, success_},
                        {2, 17, 0, malformedTlv_},
                        {2, 10, 0, malformedTlv_},
                        {2, 2, 0, malformedTlv_},
                        {3, 10, 0, unsupportedAddressFamily_},
                        {0, 6, 0, unsupportedAddressFamily_},
                        {3, 1, 0, malformedTlv_}};  // the family is not inside the TLV
  for (const Case& c : cases) {
    Bytes b = tlv(0x0101, c.len, c.len < 2 ? 2 : c.len);
    b[4] = static_cast<uint8_t>(c.family >> 8);
    b[5] = static_cast<uint8_t>(c.family);
    const LdpAddressListTlv* a = as<LdpAddressListTlv>(b);
    EXPECT_EQ(a->numAddress(), c.count) << c.family << "/" << c.len;
    EXPECT_EQ(a->validate(), c.rc) << c.family << "/" << c.len;
  }
  Bytes unknown = tlv(0x0102, {0, 1, 10, 0, 0, 1});
  EXPECT_EQ(as<LdpAddressListTlv>(unknown)->validate(), unknownTlv_);
}

TEST(AddressListTlv, AddressesAndForms) {
  Bytes v4 = tlv(0x0101, {0, 1, 10, 0, 0, 1, 192, 168, 3, 4});
  const LdpAddressListTlv* a = as<LdpAddressListTlv>(v4);
  EXPECT_EQ(a->address(1), IpGenAddr(IpAddr(0xC0A80304)));
  EXPECT_EQ(a->stringValue(), "LdpAddressListTlv( IPv4, 2, 10.0.0.1, ... )");

  Bytes v6 = tlv(0x0101, {0, 2, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x12});
  const LdpAddressListTlv* a6 = as<LdpAddressListTlv>(v6);
  EXPECT_EQ(a6->stringValue(), "LdpAddressListTlv( IPv6, 1, fe80::12, ... )");

  v4[3] = 9;
  EXPECT_EQ(a->stringValue(), "LdpAddressListTlv( Invalid TLV )");
  v4[3] = 10;
  v4[5] = 3;
  EXPECT_EQ(a->stringValue(), "LdpAddressListTlv( Invalid TLV )");
}

TEST(AddressListTlvDeathTest, AddressPastTheCount) {
  Bytes b = tlv(0x0101, {0, 1, 10, 0, 0, 1, 10, 0, 0, 2});
  const LdpAddressListTlv* a = as<LdpAddressListTlv>(b);
  EXPECT_DEATH(a->address(2), "offset < numAddress\\(\\)");
  b[3] = 9;  // no whole list: not even the first address may be read
  EXPECT_DEATH(a->address(0), "offset < numAddress\\(\\)");
}

TEST(PathVectorTlv, CountPositionsAndForms) {
  // Two ids inside the length field and a third octet group past it.
  Bytes b = tlv(0x0104, 8, 12);
  const uint8_t ids[] = {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
  std::copy(std::begin(ids), std::end(ids), b.begin() + 4);
  const LdpPathVectorTlv* p = as<LdpPathVectorTlv>(b);
  EXPECT_EQ(p->lsrId(2), IpAddr());
  EXPECT_EQ(p->lsrIdPosition(IpAddr(0x01010101)), 1u);
  EXPECT_EQ(p->lsrIdPosition(IpAddr(0x02020202)), 2u);
  EXPECT_EQ(p->lsrIdPosition(IpAddr(0x03030303)), 0u);
  EXPECT_EQ(p->validate(), success_);
  EXPECT_EQ(p->stringValue(), "LdpPathVectorTlv: [1.1.1.1, 2.2.2.2]");
  b[3] = 4;
  EXPECT_EQ(p->stringValue(), "LdpPathVectorTlv: [1.1.1.1]");
  EXPECT_EQ(p->lsrIdPosition(IpAddr(0x02020202)), 0u);

  for (uint16_t len : {0, 2, 6, 7}) {
    b[3] = static_cast<uint8_t>(len);
    EXPECT_EQ(p->lsrIdNum(), 0u) << len;
    EXPECT_EQ(p->lsrIdPosition(IpAddr(0x01010101)), 0u) << len;
    EXPECT_EQ(p->lsrId(0), IpAddr()) << len;
    EXPECT_EQ(p->validate(), badTlvLength_) << len;
  }
  EXPECT_EQ(p->stringValue(), "Error LdpPathVectorTlv: badTlvLength");
}

TEST(StatusTlv, StatusWordBits) {
  Bytes b = tlv(0x0300, {0xC0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  LdpStatusTlv* s = as<LdpStatusTlv>(b);
  s->statusDataIs(pwStatus_);
  EXPECT_EQ(s->statusCode().raw(), 0xC0000028u);
  EXPECT_EQ(s->statusData(), pwStatus_);
  s->statusErrorIs(false);
  EXPECT_EQ(s->statusCode().raw(), 0x40000028u);
  s->statusForwardUnknownIs(false);
  s->statusCode().errorIs(true);
  EXPECT_EQ(s->statusCode().raw(), 0x80000028u);
  s->statusDataIs(success_);
  EXPECT_EQ(s->statusCode().raw(), 0x80000000u);
  // A local code keeps only its low 30 bits and cannot touch E or F.
  s->statusCode().errorIs(false);
  s->statusCode().forwardUnknownIs(true);
  s->statusDataIs(unknownMessageTypeIgnore_);
  EXPECT_EQ(s->statusCode().raw(), 0x40000004u);
  EXPECT_EQ(s->statusData(), unknownMessageType_);
  b[4] = 0xFF;
  EXPECT_EQ(s->statusData(), static_cast<LdpStatusCode>(0x3F000004));
  // The TLV header's own F bit is not the status word's.
  s->forwardUnknownIs(true);
  EXPECT_EQ(b[0], 0x43);
  EXPECT_EQ(b[4], 0xFF);
}

TEST(StatusTlv, FieldsAndForm) {
  Bytes b = tlv(0x0300, 10);
  LdpStatusTlv* s = as<LdpStatusTlv>(b);
  s->unknownIs(true);
  s->statusErrorIs(true);
  s->statusDataIs(shutdown_);
  s->msgIdIs(0xFFFFFFFF);
  s->msgTypeIs(0x0400);
  EXPECT_EQ(b, (Bytes{0x83, 0x00, 0, 10, 0x80, 0, 0, 0x0A, 0xFF, 0xFF, 0xFF, 0xFF, 0x04, 0x00}));
  EXPECT_EQ(s->stringValue(),
            "StatusTlv(shutdown): LdpLabelMapping:4294967295 u(1), fu(0), e(1), efu(0)");
  s->unknownIs(false);
  s->forwardUnknownIs(true);
  s->statusErrorIs(false);
  s->statusForwardUnknownIs(true);
  s->msgIdIs(0);
  s->msgTypeIs(0);
  EXPECT_EQ(s->stringValue(), "StatusTlv(shutdown): 0:0 u(0), fu(1), e(0), efu(1)");
}

TEST(FtSessionTlv, FlagRuleLengthAndForms) {
  Bytes b = tlv(0x0503, 12);
  LdpFtSessionTlv* f = as<LdpFtSessionTlv>(b);
  const std::vector<unsigned> allowed = {1, 2, 6, 8, 10, 12, 14};
  for (unsigned low = 0; low < 16; ++low) {
    const bool ok = std::find(allowed.begin(), allowed.end(), low) != allowed.end();
    for (uint8_t high : {0x00, 0x80, 0x7F}) {  // R and the reserved bits play no part
      b[4] = high;
      b[5] = static_cast<uint8_t>(low | (high == 0x7F ? 0xF0 : 0));
      EXPECT_EQ(f->validate(), ok ? success_ : malformedTlv_) << low << " " << int(high);
    }
  }
  b[4] = 0;
  b[5] = 0x4;
  EXPECT_EQ(f->stringValue(), "Invalid FtSessionTlv: malformedTlv");

  // Each setter touches its own bit only, whatever the others hold.
  b[4] = 0x7F;
  b[5] = 0xF0;
  f->ftFlags().learnFromNetworkIs(true);
  f->ftFlags().reconnectIs(true);
  f->ftFlags().allLabelProtIs(true);
  EXPECT_EQ(b[4], 0xFF);
  EXPECT_EQ(b[5], 0xF5);
  f->ftFlags().learnFromNetworkIs(false);
  f->ftFlags().reconnectIs(false);
  f->ftFlags().saveStateIs(true);
  f->ftFlags().checkPointIs(true);
  EXPECT_EQ(b[4], 0x7F);
  EXPECT_EQ(b[5], 0xFE);
  b[4] = 0x80;
  b[5] = 0x0E;
  f->ftReconnectTimeoutIs(0xFFFFFFFF);
  f->ftRecoveryTimeIs(120000);
  f->reservedIs(0xABCD);
  EXPECT_EQ(b, (Bytes{0x05, 0x03, 0, 12, 0x80, 0x0E, 0xAB, 0xCD, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x01,
                      0xD4, 0xC0}));
  EXPECT_EQ(f->stringValue(),
            "LdpFtSessionTlv: R(1), S(1), A(1), C(1), L(0), FTReconnect(4294967295), "
            "FTRecovery(120000)");

  for (uint16_t len : {11, 13}) {
    Bytes bad = tlv(0x0503, len);
    bad[5] = 0x1;
    EXPECT_EQ(as<LdpFtSessionTlv>(bad)->validate(), badTlvLength_) << len;
  }
  b[1] = 0x04;  // 0x0504 is no type of ours
  EXPECT_EQ(f->validate(), unknownTlv_);
}

TEST(CapabilityParameterTlv, StateBitIsTheTopBit) {
  Bytes b = tlv(0x0506, {0x7F, 0xAA});
  LdpCapabilityParameterTlv* c = as<LdpCapabilityParameterTlv>(b);
  EXPECT_FALSE(c->state());
  c->stateIs(true);
  EXPECT_EQ(b, tlv(0x0506, {0xFF, 0xAA}));
  c->stateIs(false);
  EXPECT_EQ(b, tlv(0x0506, {0x7F, 0xAA}));
}

TEST(TlvDeathTest, ValidateOnAnotherTypeAborts) {
  Bytes b = tlv(0x0101, 16);  // an address list: the type of none of these
  EXPECT_DEATH(as<LdpStatusTlv>(b)->validate(), "type\\(\\) == statusTlv_");
  EXPECT_DEATH(as<LdpGenLabelTlv>(b)->validate(), "type\\(\\) == genLabelTlv_");
  EXPECT_DEATH(as<LdpLabelReqMsgIdTlv>(b)->validate(), "type\\(\\) == labelReqMsgIdTlv_");
  EXPECT_DEATH(as<LdpCommonHelloTlv>(b)->validate(), "type\\(\\) == commonHelloTlv_");
  EXPECT_DEATH(as<LdpIpTransportAddrTlv>(b)->validate(), "type\\(\\) == ipv4TransportAddrTlv_");
  EXPECT_DEATH(as<LdpConfigSeqNumTlv>(b)->validate(), "type\\(\\) == configSeqNumTlv_");
  EXPECT_DEATH(as<LdpIp6TransportAddrTlv>(b)->validate(), "type\\(\\) == ipv6TransportAddrTlv_");
  EXPECT_DEATH(as<LdpHopCountTlv>(b)->validate(), "type\\(\\) == hopCountTlv_");
  EXPECT_DEATH(as<LdpPathVectorTlv>(b)->stringValue(), "type\\(\\) == pathVectorTlv_");
  // The U and F bits are not part of the type.
  Bytes flagged = tlv(0xC300, 10);
  EXPECT_EQ(as<LdpStatusTlv>(flagged)->validate(), success_);
}
