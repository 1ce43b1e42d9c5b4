// The discovery, session and address message parsers: Notification (with the PW
// status rules), Hello, Init, Capability with the capability map, Address and
// Address Withdraw.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parse/LdpMsgParser.h"
#include "tests/parse/ParserChecks.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::expectRefusals;
using LdpTest::parsed;
using LdpTest::PduBuilder;
using LdpTest::Refusal;

namespace {

PduBuilder msg(uint32_t type) { return PduBuilder::bare().message(type, 9); }

const std::vector<uint8_t> pwFec = LdpTest::pwIdFec(0x0005, 7, 100);
const LdpIdentifier kPeer(0x0A000002, 0);

PduBuilder pwNotification() { return msg(LdpNotification_).status(pwStatus_); }

TEST(MsgParserNotification, OnlyAPwStatusLooksPastTheStatusTlv) {
  // Other codes: what follows the Status TLV is not examined.
  LdpMsgParser::Ptr p;
  for (uint32_t code : {0x27u, 0x29u, uint32_t{noRoute_}}) {
    p = parsed(msg(LdpNotification_).status(code).tlv(hopCountTlv_, {}));
    EXPECT_TRUE(p->validMsg()) << code << ": " << p->reason();
  }
  p = parsed(msg(LdpNotification_).status(0x80000000 | shutdown_, 4, LdpInit_));
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->msgStatusTlv()->statusData(), shutdown_);
  EXPECT_EQ(p->msgFecTlv(), nullptr);
  EXPECT_EQ(p->stringValue(),
            "LDP Notification Msg:\n   Msg Id: 9,\n   " + p->msgStatusTlv()->stringValue().str());

  p = parsed(pwNotification().pwStatus(0x1).fec({pwFec}));
  ASSERT_TRUE(p->validMsg()) << p->reason();
  const auto& n = static_cast<const LdpNotificationMsgParser&>(*p);
  EXPECT_EQ(n.msgPwStatusTlv()->type(), pwStatusTlv_);
  EXPECT_EQ(p->ldpFecTlvParser()->fecElement(0)->type(), pwIdElement_);
  EXPECT_EQ(p->stringValue(), "LDP Notification Msg:\n   Msg Id: 9,\n   " +
                                  p->msgStatusTlv()->stringValue().str() + "\n   " +
                                  n.msgPwStatusTlv()->stringValue().str() +
                                  "\n   FEC: " + p->ldpFecTlvParser()->stringValue().str());

  expectRefusals(
      {
          {msg(LdpNotification_), missingMessageParams_, "Missing Status TLV"},
          {msg(LdpNotification_).hopCount(1).status(shutdown_), missingMessageParams_,
           "1st TLV is not Status TLV"},
          {msg(LdpNotification_).tlv(statusTlv_, std::vector<uint8_t>(9, 0)), malformedTlv_,
           "Status TLV is not the right size"},
          {msg(LdpNotification_).tlv(statusTlv_, std::vector<uint8_t>(11, 0)), malformedTlv_,
           "Status TLV is not the right size"},
          {pwNotification().pwStatus(1), missingMessageParams_, "Missing PW Status TLVs"},
          {pwNotification().fec({pwFec}).pwStatus(1), missingMessageParams_,
           "2nd TLV is not PW Status TLV"},
          {pwNotification().tlv(pwStatusTlv_, {0, 0, 1}).fec({pwFec}), badTlvLength_,
           "LdpPwStatusTlv validation failure"},
          {pwNotification().pwStatus(1).hopCount(1), missingMessageParams_,
           "FecTlv is not the 3rd TLV in the message"},
          {pwNotification().pwStatus(1).fec({}), missingMessageParams_,
           "PW FEC TLV has no FEC elements"},
          // The element list decides, not the FEC parser's verdict.
          {pwNotification().pwStatus(1).fec({{0x7F}}), missingMessageParams_,
           "PW FEC TLV has no FEC elements"},
          {pwNotification().pwStatus(1).fec({LdpTest::hostElement(1, {0, 0, 0, 1})}),
           missingMessageParams_, "PW FEC TLV element is not PWID FEC element"},
      },
      "Invalid LDP Notification Msg: ");
}

TEST(MsgParserHello, RulesAndForm) {
  Zel::Ptr<LdpHelloMsgParser> p = ldpHelloMsgParserFactory(msg(LdpHello_)
                                                               .commonHello(15, true, true)
                                                               .ipv4Transport(1)
                                                               .ipv4Transport(0x0A000001)
                                                               .configSeqNum(3)
                                                               .pkt(),
                                                           0);
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->msgIp6TransportTlv(), nullptr);
  EXPECT_EQ(p->stringValue(),  // the later IPv4 transport address counts
            "LDP Hello Msg:\n   Msg Id: 9,\n   CommonHelloTlv: HT(15),1,1\n   10.0.0.1\n"
            "   ConfigSeqNumTlv: 3");
  std::vector<uint8_t> v6(16, 0);
  v6[0] = 0x20;
  v6[1] = 0x01;
  v6[15] = 1;
  p = ldpHelloMsgParserFactory(msg(LdpHello_).commonHello(0).ipv6Transport(v6).pkt(), 0);
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->stringValue(),
            "LDP Hello Msg:\n   Msg Id: 9,\n   CommonHelloTlv: HT(0),0,0\n   2001::1");

  expectRefusals(
      {
          {msg(LdpHello_), missingMessageParams_, "Message has 0 TLV"},
          {msg(LdpHello_).ipv4Transport(1), missingMessageParams_, "Missing LdpCommonHelloTlv"},
          {msg(LdpHello_).ipv4Transport(1).commonHello(15), missingMessageParams_,
           "LdpCommonHelloTlv is not the 1st TLV in the message"},
          {msg(LdpHello_).tlv(commonHelloTlv_, {0, 15, 0}), malformedTlv_,
           "Invalid size for LdpCommonHelloTlv"},
          {msg(LdpHello_).commonHello(15).tlv(ipv4TransportAddrTlv_, {1, 1, 1, 1, 1}),
           malformedTlv_, "Invalid size for LdpIpTransportAddrTlv"},
          {msg(LdpHello_).commonHello(15).tlv(configSeqNumTlv_, {0, 0, 1}), malformedTlv_,
           "Invalid size for LdpConfigSeqNumTlv"},
          {msg(LdpHello_).commonHello(15).ipv6Transport(std::vector<uint8_t>(15, 0)), malformedTlv_,
           "Invalid size for LdpIp6TransportAddrTlv"},
          {msg(LdpHello_).commonHello(15).ipv6Transport(v6).ipv4Transport(1), malformedTlv_,
           "LdpIpv6TransportAddrTlv already existed"},
          {msg(LdpHello_).commonHello(15).ipv4Transport(1).ipv6Transport(v6), malformedTlv_,
           "LdpIpv4TransportAddrTlv already existed"},
      },
      "Invalid LDP Hello Msg: ");
}

TEST(MsgParserInit, SessionParametersFtSessionAndCapabilities) {
  const PduBuilder session = msg(LdpInit_).sessionParams(180, false, true, 0, 4096, kPeer);
  Zel::Ptr<LdpInitMsgParser> p =
      ldpInitMsgParserFactory(PduBuilder(session)
                                  .ftSession(0x8008, 1000, 2000)
                                  .capability(typedWildcardFecCapabilityTlv_, true)
                                  .capability(dynamicCapabilityTlv_, true)
                                  .capability(p2mpCapabilityTlv_, false)
                                  .pkt(),
                              0);
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->msgSessionParamTlv()->keepAliveTime(), 180);
  EXPECT_EQ(p->msgFtSessionTlv()->ftRecoveryTime(), 2000u);
  ASSERT_EQ(p->capabilitiesNum(), 3u);
  EXPECT_EQ(p->capabilitiesIter()[0].key, dynamicCapabilityTlv_);
  EXPECT_EQ(p->stringValue(), "LDP Init Msg:\n   Msg Id: 9,\n   " +
                                  p->msgSessionParamTlv()->stringValue().str() + "\n   " +
                                  p->msgFtSessionTlv()->stringValue().str() +
                                  "\n   dynamicCapabilityTlv: State(1)"
                                  "\n   p2mpCapabilityTlv: State(0)"
                                  "\n   typedWildcardFecCapabilityTlv: State(1)");

  expectRefusals(
      {
          {msg(LdpInit_), missingMessageParams_, "Missing CommonSessionParam TLV"},
          {msg(LdpInit_).ftSession(0x8008, 1, 1).sessionParams(180, false, true, 0, 0, kPeer),
           missingMessageParams_, "1st TLV is not commonSessionParam TLV"},
          {PduBuilder(session).sessionParams(180, false, true, 0, 0, kPeer), missingMessageParams_,
           "CommonSessionParamTlv is not the 1st TLV in the message"},
          {msg(LdpInit_).tlv(commonSessionParamTlv_, std::vector<uint8_t>(13, 0)), malformedTlv_,
           "LdpCommonSessionParamTlv TLV is not the right size"},
          {msg(LdpInit_).sessionParams(2, false, true, 0, 0, kPeer), sessionRejectBadKeepAliveTime_,
           "sessionRejectBadKeepAliveTime"},
          {PduBuilder(session).tlv(ftSessionTlv_, std::vector<uint8_t>(11, 0)), malformedTlv_,
           "LdpFtSession TLV is not the right size (11)"},
          {PduBuilder(session).ftSession(0x8000, 1, 1), malformedTlv_, "malformedTlv"},
          // The capabilities are read before the session parameters are judged.
          {msg(LdpInit_)
               .sessionParams(2, false, true, 0, 0, kPeer)
               .capability(p2mpCapabilityTlv_, true, {0}),
           malformedTlv_, "p2mpCapabilityTlv TLV is not the right size"},
      },
      "Invalid LDP Init Msg: ");
}

TEST(MsgParserCapability, LengthRuleOfEveryCapabilityType) {
  const std::vector<LdpTlvType> stateOnly = {
      dynamicCapabilityTlv_, upstreamLabelAssignmentCapabilityTlv_,
      p2mpCapabilityTlv_,    mp2mpCapabilityTlv_,
      mbbCapabilityTlv_,     typedWildcardFecCapabilityTlv_,
      mrtCapabilityTlv_,     unrecognizedNotificationCapabilityTlv_};
  const std::vector<LdpTlvType> withData = {multiTopologyCapabilityTlv_,
                                            stateAdvertisementControlCapabilityTlv_,
                                            targetedApplicationCapabilityTlv_};
  for (const auto& [types, orMore] : {std::pair{stateOnly, false}, std::pair{withData, true}}) {
    for (LdpTlvType type : types) {
      const std::string name = Ldp::stringValue(type).str();
      const std::string wrong = name + " TLV is not the right size";
      Zel::Ptr<LdpCapabilityMsgParser> p =
          ldpCapabilityMsgParserFactory(msg(LdpCapability_).capability(type, true).pkt(), 0);
      EXPECT_TRUE(p->validMsg()) << name << ": " << p->reason();
      EXPECT_TRUE(p->capabilitiesHas(type)) << name;
      p = ldpCapabilityMsgParserFactory(
          msg(LdpCapability_).capability(type, true, {1, 2, 3, 4}).pkt(), 0);
      EXPECT_EQ(p->validMsg(), orMore) << name;
      EXPECT_EQ(p->reason(), orMore ? "" : wrong);
      p = ldpCapabilityMsgParserFactory(msg(LdpCapability_)
                                            .tlv(type, {}, LdpTest::uBit)
                                            .capability(dynamicCapabilityTlv_, true)
                                            .pkt(),
                                        0);
      EXPECT_EQ(p->statusCode(), malformedTlv_) << name;
      EXPECT_EQ(p->stringValue(), "Invalid LDP Capability Msg: " + wrong);
      EXPECT_EQ(p->capabilitiesNum(), 0u) << name;  // the walk stopped at the first
    }
  }
}

TEST(MsgParserCapability, TheMapIsOrderedByTypeAndKeepsTheLastTlv) {
  Zel::Ptr<Ovo::Pkt> pkt = msg(LdpCapability_)
                               .capability(p2mpCapabilityTlv_, true)
                               .hopCount(1)  // not a capability: skipped
                               .capability(dynamicCapabilityTlv_, true)
                               .capability(dynamicCapabilityTlv_, false)
                               .pkt();
  Zel::Ptr<LdpCapabilityMsgParser> p = ldpCapabilityMsgParserFactory(pkt, 0);
  ASSERT_TRUE(p->validMsg()) << p->reason();
  ASSERT_EQ(p->capabilitiesNum(), 2u);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->capabilities(dynamicCapabilityTlv_)),
            pkt->front() + 23);
  EXPECT_FALSE(p->capabilities(dynamicCapabilityTlv_)->state());
  EXPECT_EQ(p->capabilities(mbbCapabilityTlv_), nullptr);
  EXPECT_EQ(p->stringValue(),
            "LDP Capability Msg:\n   Msg Id: 9\n   dynamicCapabilityTlv: State(0)\n"
            "   p2mpCapabilityTlv: State(1)");

  // Inserted in order, past the inline entries too; deleted from the middle.
  const LdpCapabilityParameterTlv* p2mp = p->capabilities(p2mpCapabilityTlv_);
  for (LdpTlvType t : {mrtCapabilityTlv_, upstreamLabelAssignmentCapabilityTlv_, mbbCapabilityTlv_})
    p->capabilitiesIs(t, p2mp);
  p->capabilitiesDel(upstreamLabelAssignmentCapabilityTlv_);
  p->capabilitiesDel(mp2mpCapabilityTlv_);  // absent
  std::vector<LdpTlvType> keys;
  for (const auto& e : p->capabilitiesIter()) keys.push_back(e.key);
  EXPECT_EQ(keys, (std::vector<LdpTlvType>{dynamicCapabilityTlv_, p2mpCapabilityTlv_,
                                           mbbCapabilityTlv_, mrtCapabilityTlv_}));
  p->capabilitiesDelAll();
  EXPECT_EQ(p->capabilitiesNum(), 0u);
  EXPECT_EQ(ldpCapabilityMsgParserFactory(msg(LdpCapability_).pkt(), 0)->stringValue(),
            "LDP Capability Msg:\n   Msg Id: 9");
}

TEST(MsgParserAddress, BothAddressMessages) {
  struct Kind {
    uint32_t type;
    std::string name;
  };
  for (const Kind& k :
       {Kind{LdpAddress_, "Address"}, Kind{LdpAddressWithdraw_, "Address Withdraw"}}) {
    LdpMsgParser::Ptr p = parsed(msg(k.type).ipv4AddressList({0x0A000001, 0x0A000002}).hopCount(1));
    ASSERT_TRUE(p->validMsg()) << p->reason();
    EXPECT_EQ(
        p->stringValue(),
        "LDP " + k.name + " Msg:\n   Msg Id: 9,\n   LdpAddressListTlv( IPv4, 2, 10.0.0.1, ... )");
    expectRefusals(
        {
            {msg(k.type), missingMessageParams_, "Message does not have at least 1 TLV"},
            {msg(k.type).hopCount(1).ipv4AddressList({1}), missingMessageParams_,
             "AddressListTlv is not the 1st TLV in the message"},
            {msg(k.type).hopCount(1), missingMessageParams_, "Missing LdpAddressListTlv"},
            {msg(k.type).tlv(addrListTlv_, {0, 3, 1, 1, 1, 1}), unsupportedAddressFamily_,
             "unsupportedAddressFamily"},
            {msg(k.type).tlv(addrListTlv_, {0}), malformedTlv_, "malformedTlv"},
            {msg(k.type).tlv(addrListTlv_, {0, 1, 1, 1, 1}), malformedTlv_, "malformedTlv"},
        },
        "Invalid LDP " + k.name + " Msg: ");
  }
  Zel::Ptr<LdpAddressWithdrawMsgParser> w =
      ldpAddressWithdrawMsgParserFactory(msg(LdpAddressWithdraw_).ipv4AddressList({7}).pkt(), 0);
  EXPECT_EQ(w->addressListTlv()->address(0), Ovo::IpGenAddr(Ovo::IpAddr(7)));
}

}  // namespace
