// PDU validation in its order of checks, the message offsets, the string form, and
// the single-TLV parser base.

#include "parse/LdpPduParser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parse/LdpGenMsgParser.h"
#include "parse/LdpTlvParser.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::PduBuilder;

namespace {

const LdpIdentifier kId(0x0A000001, 0);

// 26 octets: the header and a Hello with one Common Hello Parameters TLV.
PduBuilder hello() {
  return PduBuilder(kId).message(LdpHello_, 7).tlv(commonHelloTlv_, {0x00, 0x0F, 0x00, 0x00}).end();
}

void expectRefused(const PduBuilder& pdu, LdpStatusCode code, const char* reason) {
  Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(pdu.pkt(), 0);
  EXPECT_FALSE(p->validLdpPdu()) << reason;
  EXPECT_EQ(p->statusCode(), code) << reason;
  EXPECT_EQ(p->reason(), reason);
  EXPECT_EQ(p->stringValue(), std::string("Error LDP PDU: ") + reason);
}

TEST(LdpPduParser, FindsEveryMessageOfAValidPdu) {
  Zel::Ptr<Ovo::Pkt> pkt = hello()
                               .message(LdpKeepAlive_, 8)
                               .message(0x3F00, 9, LdpTest::uBit)  // no such type
                               .end()
                               .pkt(3);
  Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(pkt, 3);
  ASSERT_TRUE(p->validLdpPdu()) << p->reason();
  EXPECT_TRUE(p->initialized());
  EXPECT_TRUE(p->reason().empty());
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->header()), pkt->front() + 3);
  EXPECT_EQ(p->totalLength(), 42);
  ASSERT_EQ(p->messageNum(), 3u);
  EXPECT_EQ(p->messageOffset(0), 13u);
  EXPECT_EQ(p->messageOffset(1), 29u);
  EXPECT_EQ(p->messageOffset(2), 37u);
  EXPECT_EQ(p->messageOffset(3), 0u);
  EXPECT_EQ(p->tlvGroupParser()->name(), "");
  EXPECT_EQ(p->tlvGroupParser()->offset(), 13u);
  EXPECT_EQ(p->tlvGroupParser()->size(), 32u);
  EXPECT_EQ(p->stringValue(),
            "LdpPduHdr: Ver(1),Len(38),LdpId: 10.0.0.1:0\n"
            "0: LDP Hello Msg:\n"
            "   Msg Id: 7,\n"
            "   CommonHelloTlv: HT(15),0,0\n"
            "1: LdpKeepAlive, Id: 0x00000008, numTlv: 0\n"
            "2: Message Error: Unknown Message Type: 16128\n");

  // Octets after the PDU are not part of it.
  p = ldpPduParserFactory(hello().message(LdpKeepAlive_, 8).pduLength(22).pkt(), 0);
  EXPECT_TRUE(p->validLdpPdu());
  EXPECT_EQ(p->messageNum(), 1u);
}

TEST(LdpPduParser, RefusesAPacketTooSmallForAHeaderAndAMessageHeader) {
  expectRefused(hello().truncateTo(17), badPduLength_, "PDU too small, size = 17");
  // The text gives the whole packet, not what follows the offset.
  Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(hello().truncateTo(17).pkt(2), 2);
  EXPECT_EQ(p->reason(), "PDU too small, size = 19");
  EXPECT_EQ(p->messageNum(), 0u);
  EXPECT_TRUE(
      ldpPduParserFactory(PduBuilder(kId).message(LdpKeepAlive_, 1).pkt(), 0)->validLdpPdu());
}

TEST(LdpPduParser, LengthFieldBounds) {
  std::vector<uint8_t> filler(9600 - 18, 0);
  EXPECT_TRUE(ldpPduParserFactory(PduBuilder(kId).message(LdpHello_, 1).raw(filler).pkt(), 0)
                  ->validLdpPdu());  // length field 9596
  const PduBuilder big = PduBuilder(kId).message(LdpHello_, 1).raw(filler);
  expectRefused(PduBuilder(big).pduLength(9597), badPduLength_,
                "PDU length field too big, length = 9601");
  expectRefused(PduBuilder(big).pduLength(0xFFFB), badPduLength_,
                "PDU length field too big, length = 65535");
  expectRefused(hello().pduLength(0xFFFC), badPduLength_, "PDU length field too small, length = 0");
  expectRefused(hello().pduLength(9), badPduLength_, "PDU length field too small, length = 13");

  // Length 10: one 4-octet message, too short to hold its id.
  Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(
      PduBuilder(kId).message(LdpKeepAlive_, 1).msgLength(0).pduLength(10).pkt(), 0);
  ASSERT_TRUE(p->validLdpPdu()) << p->reason();
  EXPECT_EQ(p->stringValue(),
            "LdpPduHdr: Ver(1),Len(10),LdpId: 10.0.0.1:0\n"
            "0: Message Error: MSG length field too small, length = 4\n");
}

TEST(LdpPduParser, RefusesOtherVersionsAfterTheLength) {
  expectRefused(hello().version(2), badVersion_, "LDP Version 2 not supported");
  expectRefused(hello().version(0), badVersion_, "LDP Version 0 not supported");
  expectRefused(hello().version(2).pduLength(9), badPduLength_,
                "PDU length field too small, length = 13");
  EXPECT_EQ(ldpPduParserFactory(hello().version(2).pkt(), 0)->tlvGroupParser()->pkt(), nullptr);
}

TEST(LdpPduParser, MalformedMessagesKeepTheWalkersTextAndOffsets) {
  struct Case {
    PduBuilder pdu;
    const char* groupReason;
    uint32_t found;
  };
  const std::vector<Case> cases = {
      {hello().pduLength(30), "Packet is too small, size: 30", 0},
      {hello().message(LdpKeepAlive_, 8).msgLength(40), "Msg/Tlv is corrupted/truncated", 1},
      {hello().raw({0x02, 0x01}), "Msg/Tlv header is corrupted", 1},
  };
  for (const Case& c : cases) {
    Zel::Ptr<Ovo::Pkt> pkt = c.pdu.pkt(4);
    Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(pkt, 4);
    EXPECT_EQ(p->statusCode(), malformedTlv_);
    EXPECT_EQ(p->reason(), "LDP PDU Messages are malformed");
    EXPECT_EQ(p->tlvGroupParser()->statusCode(), badTlvLength_);
    EXPECT_EQ(p->tlvGroupParser()->reason(), c.groupReason);
    EXPECT_EQ(p->messageNum(), c.found) << c.groupReason;
    EXPECT_EQ(p->messageOffset(0), c.found ? 14u : 0u);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(p->header()), pkt->front() + 4);
    EXPECT_EQ(p->stringValue(), "Error LDP PDU: LDP PDU Messages are malformed");
  }
}

TEST(LdpPduParser, HoldsThePacketUntilDropped) {
  Zel::Ptr<Ovo::Pkt> pkt = hello().pkt();
  Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(pkt, 0);
  EXPECT_GT(pkt->references(), 1u);
  Zel::Ptr<LdpTlvGroupParser> walker = p->tlvGroupParser();
  p->tlvGroupParserDel();
  EXPECT_EQ(p->messageNum(), 0u);
  EXPECT_EQ(p->messageOffset(0), 0u);
  p->tlvGroupParserIs("again");
  EXPECT_EQ(p->tlvGroupParser()->name(), "again");
  EXPECT_EQ(p->tlvGroupParser()->tlvNum(), 0u);
  p = nullptr;
  EXPECT_EQ(walker->tlvOffset(0), 10u);
  walker = nullptr;
  EXPECT_EQ(pkt->references(), 1u);
}

TEST(LdpPduParserDeathTest, BrokenInvariantsAbort) {
  EXPECT_DEATH(ldpPduParserFactory(hello().pkt(), 27),
               "Assertion failed: pkt_->frontBytes\\(\\) >= offset_");
  EXPECT_DEATH(ldpPduParserFactory(nullptr, 0), "Assertion failed: header_");
  EXPECT_DEATH(ldpPduParserFactory(hello().message(LdpKeepAlive_, 8).msgLength(0xFFFC).pkt(), 0),
               "Assertion failed: header->totalLength\\(\\) > 0");
}

TEST(LdpTlvParser, OverlaysTheTlvInThePacket) {
  Zel::Ptr<Ovo::Pkt> pkt = PduBuilder(kId)
                               .message(LdpHello_, 7)
                               .tlv(commonHelloTlv_, {0x00, 0x0F, 0x00, 0x00})
                               .tlv(0x3E05, {1}, LdpTest::uBit | LdpTest::fBit)
                               .pkt();
  Zel::Ptr<LdpTlvParser> t = ldpTlvParserFactory(pkt, 26);
  EXPECT_EQ(t->offset(), 26u);
  EXPECT_EQ(t->pkt(), pkt);
  EXPECT_EQ(t->header()->type(), 0x3E05u);
  EXPECT_TRUE(t->header()->unknown());
  EXPECT_TRUE(t->header()->forwardUnknown());
  t = ldpTlvParserFactory(pkt, 18);
  const LdpTlvParser& view = *t;
  EXPECT_EQ(view.header()->type(), commonHelloTlv_);
  EXPECT_EQ(view.header()->value()[1], 0x0F);
  t->header()->lengthIs(9);  // writes the packet: nothing was copied
  EXPECT_EQ(pkt->front()[21], 9);
}

}  // namespace
