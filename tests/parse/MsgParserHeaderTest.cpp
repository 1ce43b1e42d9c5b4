// The message header check in its order of checks, the dispatcher, the base
// parser's attributes and string forms, the type descriptors, and the utilities.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "parse/LdpMsgParser.h"
#include "parse/LdpUtils.h"
#include "tests/parse/ParserChecks.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::parsed;
using LdpTest::PduBuilder;

namespace {

PduBuilder msg(uint32_t type, uint16_t bits = LdpTest::noBits) {
  return PduBuilder::bare().message(type, 0x2A, bits);
}

void expectRefused(const PduBuilder& b, LdpStatusCode code, const std::string& reason) {
  LdpMsgParser::Ptr p = parsed(b);
  EXPECT_FALSE(p->validMsg()) << reason;
  EXPECT_EQ(p->statusCode(), code) << reason;
  EXPECT_EQ(p->reason(), reason);
  EXPECT_EQ(p->fwkType()->name(), std::string("Ldp::LdpMsgParser")) << reason;
  EXPECT_EQ(p->stringValue(), "Message Error: " + reason);
}

TEST(MsgParserHeader, TypesOutsideTheKnownRangesAreUnknown) {
  // Just outside each known range.
  for (uint32_t type : {0x0000u, 0x0002u, 0x0101u, 0x0203u, 0x0302u, 0x0405u, 0x7FFFu}) {
    const std::string reason = "Unknown Message Type: " + std::to_string(type);
    expectRefused(msg(type), unknownMessageType_, reason);
    expectRefused(msg(type, LdpTest::uBit), unknownMessageTypeIgnore_, reason);
  }
  // The type is judged before the size: two octets are enough to read it.
  expectRefused(msg(0x0500).truncateTo(2), unknownMessageType_, "Unknown Message Type: 1280");
}

TEST(MsgParserHeader, SizeAndLengthFieldBounds) {
  // The size in the text is the packet's, lead octets included.
  expectRefused(msg(LdpKeepAlive_).truncateTo(7), malformedTlv_, "MSG too small, size = 10");
  // One octet of a type that no second octet would make known.
  expectRefused(msg(0x0500).truncateTo(1), malformedTlv_, "MSG too small, size = 4");
  EXPECT_EQ(ldpMsgParserGet(msg(LdpKeepAlive_).pkt(3), 11)->reason(), "MSG too small, size = 11");

  expectRefused(msg(LdpKeepAlive_).msgLength(3), malformedTlv_,
                "MSG length field too small, length = 7");
  expectRefused(msg(LdpKeepAlive_).msgLength(0xFFFC), malformedTlv_,
                "MSG length field too small, length = 0");
  expectRefused(msg(LdpKeepAlive_).msgLength(0xFFFB), malformedTlv_,
                "MSG length field too big, length = 65535");
  const PduBuilder largest =
      msg(LdpKeepAlive_).tlv(vendorPrivTlvBegin_, std::vector<uint8_t>(4084, 0));
  EXPECT_EQ(largest.bytes()[3], 0xFC);  // length field 4092
  EXPECT_TRUE(parsed(largest)->validMsg()) << parsed(largest)->reason();
  expectRefused(PduBuilder(largest).raw({0}), malformedTlv_,
                "MSG length field too big, length = 4097");
}

TEST(MsgParserHeader, TheTlvWalkAndEachTlvHeader) {
  // The walker's own verdicts.
  expectRefused(msg(LdpKeepAlive_).msgLength(12), badTlvLength_, "Packet is too small, size: 11");
  expectRefused(msg(LdpHello_).commonHello(15).tlvLength(5), badTlvLength_,
                "Msg/Tlv is corrupted/truncated");
  // A 3-octet TLV (length field 0xFFFF) ending the message has no header of its
  // own, even though the packet holds the octet after it.
  expectRefused(msg(LdpKeepAlive_).tlv(vendorPrivTlvBegin_, {}).tlvLength(0xFFFF).msgLength(7),
                badTlvLength_, "Msg/Tlv header is corrupted");

  // Unknown TLVs: only the U bit lets them pass; the text gives the 14-bit type.
  expectRefused(msg(LdpKeepAlive_).tlv(0x0102, {}), unknownTlv_, "Unknown TLV Type: 258");
  expectRefused(msg(LdpKeepAlive_).tlv(0x0102, {}, LdpTest::fBit), unknownTlv_,
                "Unknown TLV Type: 258");
  expectRefused(msg(LdpKeepAlive_).genLabel(1).tlv(unrecognizedNotificationCapabilityTlv_, {0x80}),
                unknownTlv_, "Unknown TLV Type: 1539");
  LdpMsgParser::Ptr p =
      parsed(msg(LdpKeepAlive_).tlv(0x0102, {}, LdpTest::uBit).tlv(expTlvEnd_, {1, 2}).genLabel(1));
  ASSERT_TRUE(p->validMsg()) << p->reason();
  EXPECT_EQ(p->tlvNum(), 3u);
  EXPECT_EQ(p->tlvOffset(0), 11u);
  EXPECT_EQ(p->tlvOffset(1), 15u);
  EXPECT_EQ(p->tlvOffset(2), 21u);
  EXPECT_EQ(p->tlvOffset(3), 0u);
}

TEST(MsgParserHeader, TheBaseParserReadsTheHeaderInPlace) {
  Zel::Ptr<Ovo::Pkt> pkt = msg(LdpKeepAlive_, LdpTest::uBit).pkt(3);
  Zel::Ptr<LdpMsgParser> p = ldpMsgParserFactory(pkt, 3);
  ASSERT_TRUE(p->validMsg());
  EXPECT_EQ(p->pkt(), pkt);
  EXPECT_EQ(p->offset(), 3u);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->msgHdr()), pkt->front() + 3);
  EXPECT_TRUE(p->unknown());
  EXPECT_EQ(p->length(), 4);
  EXPECT_EQ(p->totalLength(), 8);
  EXPECT_FALSE(p->initialized());
  EXPECT_EQ(p->stringValue(), "LdpKeepAlive, Id: 0x0000002a, numTlv: 0");
  EXPECT_EQ(parsed(msg(LdpCapability_).capability(p2mpCapabilityTlv_, true))->stringValue(),
            "LdpCapability, Id: 0x0000002a, numTlv: 1");

  // Fields past the end of the packet read as 0.
  p = ldpMsgParserFactory(msg(LdpKeepAlive_, LdpTest::uBit).truncateTo(1).pkt(), 0);
  EXPECT_EQ(p->tlvGroupParser(), nullptr);
  EXPECT_FALSE(p->unknown());
  EXPECT_EQ(p->type(), 0u);
  p = ldpMsgParserFactory(msg(LdpKeepAlive_).truncateTo(6).pkt(), 0);
  EXPECT_EQ(p->type(), LdpKeepAlive_);
  EXPECT_EQ(p->msgId(), 0u);
  EXPECT_EQ(p->totalLength(), 0);
}

TEST(MsgParserHeader, TheDispatcherPicksTheClassOfTheType) {
  // (The end-to-end suite checks the class of every other message type.)
  const std::vector<std::pair<PduBuilder, const char*>> cases = {
      {msg(LdpKeepAlive_), "Ldp::LdpMsgParser"},
      {msg(LdpAddressWithdraw_).ipv4AddressList({1}), "Ldp::LdpAddressWithdrawMsgParser"},
      {msg(LdpLabelRelease_).fec({LdpTest::wildcardFec()}), "Ldp::LdpLabelReleaseMsgParser"},
  };
  for (const auto& [b, name] : cases) {
    LdpMsgParser::Ptr p = parsed(b);
    EXPECT_TRUE(p->validMsg()) << name << ": " << p->reason();
    EXPECT_EQ(p->fwkType(), Zel::ZelType::lookup(name));
    EXPECT_TRUE(p->fwkType()->isKindOf(Zel::ZelType::lookup("Ldp::LdpMsgParser")));
    EXPECT_EQ(p->initialized(), std::string(name) != "Ldp::LdpMsgParser") << name;
  }
  // A derived type whose header fails gets the base parser; a per-type failure
  // keeps the derived one.
  expectRefused(msg(LdpLabelMapping_).msgLength(3), malformedTlv_,
                "MSG length field too small, length = 7");
  LdpMsgParser::Ptr p = parsed(msg(LdpLabelMapping_).genLabel(3));
  EXPECT_EQ(p->fwkType()->name(), std::string("Ldp::LdpLabelMappingMsgParser"));
  EXPECT_EQ(p->stringValue(),
            "Invalid LDP Label Mapping Msg: Message does not have at least 2 TLV");

  EXPECT_TRUE(Zel::ZelType::lookup("Ldp::LdpInitMsgParser")
                  ->isKindOf(Zel::ZelType::lookup("Ldp::LdpCapabilityParser")));
}

TEST(MsgParserHeader, HoldsThePacketAndItsParsers) {
  Zel::Ptr<Ovo::Pkt> pkt =
      msg(LdpLabelMapping_).fec({LdpTest::hostElement(1, {0, 0, 0, 1})}).genLabel(3).pkt();
  LdpMsgParser::Ptr p = ldpMsgParserGet(pkt, 0);
  Zel::Ptr<LdpTlvGroupParser> walker = p->tlvGroupParser();
  Zel::Ptr<LdpFecTlvParser> fec = p->ldpFecTlvParser();
  EXPECT_EQ(walker->references(), 2u);
  EXPECT_EQ(fec->references(), 2u);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->msgFecTlv()), pkt->front() + 8);
  p = nullptr;
  EXPECT_EQ(walker->references(), 1u);
  EXPECT_EQ(fec->references(), 1u);
  walker = nullptr;
  fec = nullptr;
  EXPECT_EQ(pkt->references(), 1u);
}

TEST(MsgParserUtils, HopCountAndReentryGuard) {
  EXPECT_EQ(hopCountInc(0), 0);
  EXPECT_EQ(hopCountInc(1), 2);
  EXPECT_EQ(hopCountInc(253), 254);
  bool busy = false;
  {
    ReentrantAssert guard(&busy);
    EXPECT_TRUE(busy);
  }
  EXPECT_FALSE(busy);
}

TEST(MsgParserDeathTest, BrokenPreconditionsAbort) {
  EXPECT_DEATH(hopCountInc(254), "Assertion failed: rcvdHopCount <= 253");
  EXPECT_DEATH(
      {
        bool busy = false;
        ReentrantAssert outer(&busy);
        ReentrantAssert inner(&busy);
      },
      "Assertion failed: !\\*flag");
  EXPECT_DEATH(ldpMsgParserGet(Ovo::pktFactory(nullptr, 0), 0),
               "Assertion failed: pkt->frontBytes\\(\\)");
  EXPECT_DEATH(ldpMsgParserGet(msg(LdpKeepAlive_).pkt(), 9),
               "Assertion failed: pkt_->frontBytes\\(\\) >= offset_");
  EXPECT_DEATH(ldpMsgParserFactory(nullptr, 0), "Assertion failed: msgHdr_");

  // Each derived parser over a message of another type.
  using Factory = std::function<void(const Zel::Ptr<Ovo::Pkt>&)>;
  const std::vector<std::pair<Factory, const char*>> factories = {
      {[](auto& k) { ldpNotificationMsgParserFactory(k, 0); }, "LdpNotification_"},
      {[](auto& k) { ldpHelloMsgParserFactory(k, 0); }, "LdpHello_"},
      {[](auto& k) { ldpInitMsgParserFactory(k, 0); }, "LdpInit_"},
      {[](auto& k) { ldpCapabilityMsgParserFactory(k, 0); }, "LdpCapability_"},
      {[](auto& k) { ldpAddressMsgParserFactory(k, 0); }, "LdpAddress_"},
      {[](auto& k) { ldpAddressWithdrawMsgParserFactory(k, 0); }, "LdpAddressWithdraw_"},
      {[](auto& k) { ldpLabelMappingMsgParserFactory(k, 0); }, "LdpLabelMapping_"},
      {[](auto& k) { ldpLabelRequestMsgParserFactory(k, 0); }, "LdpLabelRequest_"},
      {[](auto& k) { ldpLabelWithdrawMsgParserFactory(k, 0); }, "LdpLabelWithdraw_"},
      {[](auto& k) { ldpLabelReleaseMsgParserFactory(k, 0); }, "LdpLabelRelease_"},
      {[](auto& k) { ldpLabelAbortReqMsgParserFactory(k, 0); }, "LdpLabelAbortReq_"},
  };
  const Zel::Ptr<Ovo::Pkt> keepAlive = msg(LdpKeepAlive_).pkt();
  for (const auto& [make, type] : factories) {
    EXPECT_DEATH(make(keepAlive),
                 std::string("Assertion failed: msgHdr_->type\\(\\) == ") + type + " \\(");
  }
  // A failed header check is a verdict, not a type mismatch.
  EXPECT_EQ(ldpHelloMsgParserFactory(msg(LdpKeepAlive_).msgLength(0).pkt(), 0)->reason(),
            "MSG length field too small, length = 4");
}

}  // namespace
