// The label message parsers: Mapping, Request, Withdraw, Release and Abort Request,
// each rule with the texts and codes of its failures, the TLVs they record, and
// their string forms.

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
using LdpTest::wildcardFec;

namespace {

PduBuilder msg(uint32_t type) { return PduBuilder::bare().message(type, 77); }

const std::vector<uint8_t> prefix10 = LdpTest::prefixElement(1, 16, {10, 1});
// An element type no FEC parser knows: the FEC TLV parser refuses it.
const std::vector<uint8_t> badElement = {0x7F, 0x00};

TEST(MsgParserLabelMapping, RecordsItsTlvsInThePacket) {
  Zel::Ptr<Ovo::Pkt> pkt = msg(LdpLabelMapping_)
                               .fec({prefix10})
                               .genLabel(0x12345)
                               .labelReqMsgId(9)
                               .hopCount(3)
                               .pathVector({0x01010101})
                               .pathVector({0x02020202, 0x03030303})  // the later one counts
                               .tlv(0x3E10, {}, LdpTest::uBit)        // skipped
                               .pwStatus(0x11)
                               .pkt();
  Zel::Ptr<LdpLabelMappingMsgParser> p = ldpLabelMappingMsgParserFactory(pkt, 0);
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_TRUE(p->initialized());
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->msgFecTlv()), pkt->front() + 8);
  ASSERT_EQ(p->ldpFecTlvParser()->fecElements(), 1u);
  EXPECT_EQ(p->ldpFecTlvParser()->offset(), 8u);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->msgGenLabelTlv()), pkt->front() + 18);
  EXPECT_EQ(p->msgPwStatusTlv()->type(), pwStatusTlv_);
  EXPECT_EQ(p->msgStatusTlv(), nullptr);
  EXPECT_EQ(p->stringValue(),
            "LDP Label Mapping Msg:\n   Msg Id: 77,\n   FEC: " +
                p->ldpFecTlvParser()->stringValue().str() +
                "\n   GenLabelTlv: L(74565)\n   LabelReqMsgIdTlv: ID(9)\n   LdpHopCountTlv: 3"
                "\n   LdpPathVectorTlv: [2.2.2.2, 3.3.3.3]\n   " +
                p->msgPwStatusTlv()->stringValue().str());

  // The U and F bits of a TLV's type field do not change what it is.
  p = ldpLabelMappingMsgParserFactory(
      msg(LdpLabelMapping_).fec({prefix10}).tlv(genLabelTlv_, {0, 0, 0, 3}, LdpTest::fBit).pkt(),
      0);
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->stringValue(), "LDP Label Mapping Msg:\n   Msg Id: 77,\n   FEC: " +
                                  p->ldpFecTlvParser()->stringValue().str() +
                                  "\n   GenLabelTlv: L(3)");
}

TEST(MsgParserLabelMapping, RefusesEachBrokenRule) {
  const PduBuilder fec = msg(LdpLabelMapping_).fec({prefix10});
  expectRefusals(
      {
          {PduBuilder(fec), missingMessageParams_, "Message does not have at least 2 TLV"},
          {msg(LdpLabelMapping_).hopCount(1).fec({prefix10}).genLabel(3), missingMessageParams_,
           "FecTlv is not the 1st TLV in the message"},
          {msg(LdpLabelMapping_).fec({wildcardFec()}).genLabel(3), unknownFec_,
           "LDP Mapping Msg can not have Wildcard FEC TLV"},
          {PduBuilder(fec).hopCount(1).genLabel(3), missingMessageParams_,
           "LdpGenLabelTlv is not the 2nd TLV in the message"},
          {PduBuilder(fec).tlv(genLabelTlv_, {0, 0, 3}), malformedTlv_,
           "Invalid size for LdpGenLabelTlv"},
          {PduBuilder(fec).tlv(genLabelTlv_, {0, 0, 0, 3, 0}), malformedTlv_,
           "Invalid size for LdpGenLabelTlv"},
          {PduBuilder(fec).genLabel(3).tlv(labelReqMsgIdTlv_, {0, 0, 0, 0, 1}), malformedTlv_,
           "Invalid size for LdpLabelReqMsgIdTlv"},
          {PduBuilder(fec).genLabel(3).tlv(hopCountTlv_, {}), malformedTlv_,
           "Invalid size for LdpHopCountTlv"},
          {PduBuilder(fec).genLabel(3).tlv(hopCountTlv_, {1, 2}), malformedTlv_,
           "Invalid size for LdpHopCountTlv"},
          {PduBuilder(fec).genLabel(3).pathVector({}), malformedTlv_,
           "Invalid size for LdpPathVectorTlv"},
          {PduBuilder(fec).genLabel(3).tlv(pathVectorTlv_, {1, 1, 1}), badTlvLength_,
           "LdpPathVectorTlv validation failure"},
          {PduBuilder(fec).genLabel(3).tlv(pwStatusTlv_, {0, 0, 1}), malformedTlv_,
           "Invalid size for LdpPwStatusTlv"},
          // The first failure ends the walk.
          {PduBuilder(fec).genLabel(3).tlv(hopCountTlv_, {}).pathVector({}), malformedTlv_,
           "Invalid size for LdpHopCountTlv"},
          {PduBuilder(fec).hopCount(1), missingMessageParams_, "Missing LdpGenLabelTlv"},
          {msg(LdpLabelMapping_).hopCount(1).genLabel(3), missingMessageParams_,
           "Missing LdpFecTlv"},
      },
      "Invalid LDP Label Mapping Msg: ");

  // A FEC TLV its parser refuses gives that parser's verdict.
  LdpMsgParser::Ptr p = parsed(msg(LdpLabelMapping_).fec({prefix10, badElement}).genLabel(3));
  ASSERT_NE(p->ldpFecTlvParser(), nullptr);
  EXPECT_FALSE(p->ldpFecTlvParser()->valid());
  EXPECT_EQ(p->statusCode(), p->ldpFecTlvParser()->statusCode());
  EXPECT_EQ(p->reason(), p->ldpFecTlvParser()->reason());
  EXPECT_FALSE(p->reason().empty());
  // The walk stopped at the FEC.
  EXPECT_EQ(static_cast<const LdpLabelMappingMsgParser&>(*p).msgGenLabelTlv(), nullptr);
}

TEST(MsgParserLabelRequest, RulesAndForm) {
  LdpMsgParser::Ptr p = parsed(msg(LdpLabelRequest_)
                                   .fec({LdpTest::hostElement(1, {10, 0, 0, 2})})
                                   .genLabel(3)  // not a Request TLV: skipped
                                   .hopCount(0)
                                   .pathVector({0x01010101}));
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->stringValue(), "LDP Label Request Msg:\n   Msg Id: 77,\n   FEC: " +
                                  p->ldpFecTlvParser()->stringValue().str() +
                                  "\n   LdpHopCountTlv: 0\n   LdpPathVectorTlv: [1.1.1.1]");
  EXPECT_TRUE(parsed(msg(LdpLabelRequest_).fec({prefix10}))->validMsg());

  expectRefusals(
      {
          {msg(LdpLabelRequest_), missingMessageParams_, "Message does not have at least 1 TLV"},
          {msg(LdpLabelRequest_).fec({wildcardFec()}), unknownFec_,
           "LDP Request Msg can not have Wildcard FEC TLV"},
          {msg(LdpLabelRequest_).hopCount(1).fec({prefix10}), missingMessageParams_,
           "FecTlv is not the 1st TLV in the message"},
          {msg(LdpLabelRequest_).hopCount(1), missingMessageParams_, "Missing LdpFecTlv"},
      },
      "Invalid LDP Label Request Msg: ");
  p = parsed(msg(LdpLabelRequest_).fec({badElement}));
  EXPECT_EQ(p->reason(), p->ldpFecTlvParser()->reason());
  EXPECT_FALSE(p->validMsg());
}

// Withdraw and Release share their rules but for the FEC parser's verdict, and
// Release shares the Request form's error prefix.
TEST(MsgParserLabelWithdrawAndRelease, RulesAndForms) {
  struct Kind {
    uint32_t type;
    const char* title;
    const char* prefix;
  };
  for (const Kind& k :
       {Kind{LdpLabelWithdraw_, "LDP Label Withdraw Msg:\n", "Invalid LDP Label Withdraw Msg: "},
        Kind{LdpLabelRelease_, "LDP Label Release Msg:\n", "Invalid LDP Label Request Msg: "}}) {
    LdpMsgParser::Ptr p = parsed(msg(k.type).fec({wildcardFec()}));
    ASSERT_TRUE(p->validMsg()) << p->reason();
    EXPECT_TRUE(p->ldpFecTlvParser()->hasWildcardFecElement());
    EXPECT_EQ(p->stringValue(), std::string(k.title) + "   Msg Id: 77,\n   FEC: " +
                                    p->ldpFecTlvParser()->stringValue().str());

    p = parsed(msg(k.type).fec({prefix10}).genLabel(16).status(0x80000000 | noLabelResources_));
    ASSERT_TRUE(p->validMsg()) << p->reason();
    ASSERT_NE(p->msgStatusTlv(), nullptr);
    EXPECT_EQ(p->msgStatusTlv()->statusData(), noLabelResources_);
    EXPECT_EQ(p->stringValue(),
              std::string(k.title) +
                  "   Msg Id: 77,\n   FEC: " + p->ldpFecTlvParser()->stringValue().str() +
                  "\n   GenLabelTlv: L(16)\n   " + p->msgStatusTlv()->stringValue().str());

    expectRefusals(
        {
            {msg(k.type), missingMessageParams_, "Message does not have at least 1 TLV"},
            {msg(k.type).genLabel(16).fec({prefix10}), missingMessageParams_,
             "Label Tlv is not the 2nd TLV in the message"},
            {msg(k.type).fec({prefix10}).status(0).genLabel(16), missingMessageParams_,
             "Label Tlv is not the 2nd TLV in the message"},
            {msg(k.type).fec({prefix10}).tlv(genLabelTlv_, {0, 0, 0, 16, 0}), malformedTlv_,
             "Invalid size for LdpGenLabelTlv"},
            {msg(k.type).fec({prefix10}).tlv(statusTlv_, std::vector<uint8_t>(9, 0)), malformedTlv_,
             "Invalid size for LdpStatusTlv"},
            {msg(k.type).status(0), missingMessageParams_, "Missing LdpFecTlv"},
        },
        k.prefix);

    // Withdraw takes the FEC parser's verdict; Release leaves it to the consumer.
    p = parsed(msg(k.type).fec({badElement}).genLabel(16));
    EXPECT_FALSE(p->ldpFecTlvParser()->valid());
    if (k.type == LdpLabelWithdraw_) {
      EXPECT_EQ(p->statusCode(), p->ldpFecTlvParser()->statusCode());
      EXPECT_EQ(p->reason(), p->ldpFecTlvParser()->reason());
    } else {
      EXPECT_TRUE(p->validMsg()) << p->reason();
      EXPECT_NE(static_cast<const LdpLabelReleaseMsgParser&>(*p).msgGenLabelTlv(), nullptr);
    }
  }
}

TEST(MsgParserLabelAbortReq, RulesAndForm) {
  LdpMsgParser::Ptr p = parsed(msg(LdpLabelAbortReq_).fec({prefix10}).labelReqMsgId(12));
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->stringValue(), "LDP Label Abort Request Msg:\n   Msg Id: 77,\n   FEC: " +
                                  p->ldpFecTlvParser()->stringValue().str() +
                                  "\n   LabelReqMsgIdTlv: ID(12)");
  expectRefusals(
      {
          {msg(LdpLabelAbortReq_).fec({prefix10}), missingMessageParams_,
           "Message does not have at least 2 TLV"},
          {msg(LdpLabelAbortReq_).fec({wildcardFec()}).labelReqMsgId(1), unknownFec_,
           "LDP Abort Msg can not have Wildcard FEC TLV"},
          {msg(LdpLabelAbortReq_).fec({prefix10}).hopCount(1).labelReqMsgId(1),
           missingMessageParams_, "LdpLabelReqMsgIdTlv is not the 2nd TLV in the message"},
          {msg(LdpLabelAbortReq_).fec({prefix10}).tlv(labelReqMsgIdTlv_, {0, 0, 1}), malformedTlv_,
           "Invalid size for LdpLabelReqMsgIdTlv"},
          {msg(LdpLabelAbortReq_).fec({prefix10}).hopCount(1), missingMessageParams_,
           "Missing LdpLabelReqMsgIdTlv"},
          {msg(LdpLabelAbortReq_).hopCount(1).labelReqMsgId(1), missingMessageParams_,
           "Missing LdpFecTlv"},
      },
      "Invalid LDP Label Abort Request Msg: ");
}

}  // namespace
