// The single-TLV parsers: fields read in place at an offset, bit setters that patch
// the packet, validation and string forms, and TLVs that do not lie within the
// packet.

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "parse/LdpTlvParser.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::PduBuilder;

namespace {

uint32_t u32At(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t at) {
  const uint8_t* p = pkt->front() + at;
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

TEST(TlvParsers, SettersPatchOnlyTheirBits) {
  const Zel::Ptr<Ovo::Pkt> pkt =
      PduBuilder::bare()
          .tlv(statusTlv_, {0x80, 0, 0, 5, 1, 2, 3, 4, 0x01, 0x00})
          .tlv(ftSessionTlv_, {0x80, 0x0A, 0xAB, 0xCD, 1, 2, 3, 4, 5, 6, 7, 8})
          .pkt(2);
  auto status = ldpStatusTlvParserFactory(pkt, 2);
  status->statusForwardUnknownIs(true);
  EXPECT_EQ(u32At(pkt, 6), 0xC0000005u);
  status->statusErrorIs(false);
  EXPECT_EQ(u32At(pkt, 6), 0x40000005u);
  EXPECT_FALSE(status->statusError());
  EXPECT_TRUE(status->statusForwardUnknown());
  EXPECT_EQ(u32At(pkt, 10), 0x01020304u);

  // Flags R, S and C; the L bit takes bit 0 of the argument only.
  const uint32_t ft = 16;
  auto ftSession = ldpFtSessionTlvParserFactory(pkt, ft);
  ftSession->learnFromNetworkIs(3);
  EXPECT_EQ(u32At(pkt, ft + 4), 0x800BABCDu);
  EXPECT_TRUE(ftSession->learnFromNetwork());
  ftSession->learnFromNetworkIs(0xFFFE);
  EXPECT_EQ(u32At(pkt, ft + 4), 0x800AABCDu);
  EXPECT_FALSE(ftSession->learnFromNetwork());
}

TEST(TlvParsers, PwStatusFlagsByBit) {
  // Each fault bit is set in a different combination of the three words.
  const Zel::Ptr<Ovo::Pkt> pkt = PduBuilder::bare()
                                     .tlv(pwStatusTlv_, {0, 0, 0, 0x09})
                                     .tlv(pwStatusTlv_, {0x80, 0, 0, 0x1A})
                                     .tlv(pwStatusTlv_, {0, 0, 0, 0x14})
                                     .tlv(pwStatusTlv_, {0, 0, 0, 0})
                                     .tlv(pwStatusTlv_, {0, 0})
                                     .pkt();
  const std::vector<std::vector<bool>> expected = {{true, false, false, true, false},
                                                   {false, true, false, true, true},
                                                   {false, false, true, false, true}};
  for (uint32_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(i);
    auto p = ldpPwStatusTlvParserFactory(pkt, 8 * i);
    EXPECT_FALSE(p->pwForwarding());
    EXPECT_EQ(p->pwNotForwarding(), expected[i][0]);
    EXPECT_EQ(p->localACIngrRecvFault(), expected[i][1]);
    EXPECT_EQ(p->localACEgrTransFault(), expected[i][2]);
    EXPECT_EQ(p->localPsnPwIngrRecvFault(), expected[i][3]);
    EXPECT_EQ(p->localPsnPwEgrTransFault(), expected[i][4]);
    EXPECT_EQ(p->validate(), success_);
  }
  EXPECT_TRUE(ldpPwStatusTlvParserFactory(pkt, 24)->pwForwarding());
  // Truncated at the packet's end: absent, and absent is not forwarding.
  auto truncated = ldpPwStatusTlvParserFactory(pkt, 32);
  EXPECT_EQ(truncated->header2(), nullptr);
  EXPECT_FALSE(truncated->pwForwarding());
  EXPECT_EQ(truncated->validate(), badTlvLength_);
}

TEST(TlvParsers, AbsentUnlessTheWholeTlvLiesInThePacket) {
  auto expectAbsent = [](const Zel::Ptr<LdpPathVectorTlvParser>& p) {
    EXPECT_EQ(p->header2(), nullptr);
    EXPECT_EQ(p->lsrIdNum(), 0u);
    EXPECT_EQ(p->validate(), badTlvLength_);
    EXPECT_EQ(p->stringValue(), "");
  };
  // Three ids whose last octet is cut off; then a length that would wrap to a
  // total of 0 in 16 bits.
  const PduBuilder threeIds = PduBuilder::bare().tlv(pathVectorTlv_, std::vector<uint8_t>(12, 1));
  expectAbsent(ldpPathVectorTlvParserFactory(PduBuilder(threeIds).truncateTo(15).pkt(), 0));
  expectAbsent(ldpPathVectorTlvParserFactory(PduBuilder(threeIds).tlvLength(0xFFFC).pkt(), 0));
  expectAbsent(ldpPathVectorTlvParserFactory(nullptr, 0));
  // Offsets whose 4 header octets are not all in the packet, and one past its end.
  for (uint32_t offset : {14u, 16u, 17u}) {
    SCOPED_TRACE(offset);
    expectAbsent(ldpPathVectorTlvParserFactory(threeIds.pkt(), offset));
  }
  // Ending right at the packet's end is present.
  EXPECT_EQ(ldpPathVectorTlvParserFactory(threeIds.pkt(), 0)->validate(), success_);

  // A status TLV claiming 2 value octets at the end of the packet: its length fits
  // but the overlay's 14 octets do not. Nothing reads, nothing is written.
  const Zel::Ptr<Ovo::Pkt> shortStatus = PduBuilder::bare().tlv(statusTlv_, {0x80, 0}).pkt(4);
  const std::vector<uint8_t> before(shortStatus->front(), shortStatus->front() + 10);
  auto status = ldpStatusTlvParserFactory(shortStatus, 4);
  EXPECT_EQ(status->header2(), nullptr);
  EXPECT_FALSE(status->statusError());
  EXPECT_EQ(status->validate(), badTlvLength_);
  status->statusErrorIs(false);
  status->statusForwardUnknownIs(true);
  EXPECT_EQ(std::memcmp(shortStatus->front(), before.data(), before.size()), 0);

  // The same TLV with octets after it: the overlay is in the packet and judges the
  // length itself.
  const Zel::Ptr<Ovo::Pkt> padded =
      PduBuilder::bare().tlv(statusTlv_, {0x80, 0}).raw(std::vector<uint8_t>(8, 0)).pkt();
  auto paddedStatus = ldpStatusTlvParserFactory(padded, 0);
  EXPECT_NE(paddedStatus->header2(), nullptr);
  EXPECT_TRUE(paddedStatus->statusError());
  EXPECT_EQ(paddedStatus->validate(), badTlvLength_);
  EXPECT_EQ(paddedStatus->stringValue(), "Error LdpStatusTlv: badTlvLength");
}

}  // namespace
