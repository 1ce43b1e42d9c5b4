// The element walker: offsets recorded, every failure with its text, the trace, and
// the invariants that abort.

#include "parse/LdpTlvGroupParser.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/LdpTrace.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::PduBuilder;

namespace {

Zel::Ptr<LdpTlvGroupParser> walk(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset, uint32_t size) {
  Zel::Ptr<LdpTlvGroupParser> g = ldpTlvGroupParserFactory("tlvs");
  g->pktIs(pkt);
  g->offsetIs(offset);
  g->sizeIs(size);
  EXPECT_TRUE(g->parseTlvGroup());
  return g;
}

std::vector<uint32_t> offsets(const LdpTlvGroupParser& g) {
  std::vector<uint32_t> v;
  for (uint32_t i = 0; i < g.tlvNum(); ++i) v.push_back(g.tlvOffset(i));
  return v;
}

// Two TLVs of 8 and 12 octets at packet offset 5; the packet is 25 octets.
Zel::Ptr<Ovo::Pkt> twoTlvs() {
  return PduBuilder::bare()
      .tlv(fecTlv_, {1, 2, 3, 4})
      .tlv(genLabelTlv_, {0, 0, 0, 0, 0, 0, 0, 16})
      .pkt(5);
}

void expectFailure(const LdpTlvGroupParser& g, const char* reason, std::vector<uint32_t> kept) {
  EXPECT_FALSE(g.valid());
  EXPECT_EQ(g.statusCode(), badTlvLength_);
  EXPECT_EQ(g.reason(), reason);
  EXPECT_EQ(offsets(g), kept);
  EXPECT_EQ(g.tlvOffset(static_cast<uint32_t>(kept.size())), 0u);
}

TEST(LdpTlvGroupParser, RecordsEveryElementWithinTheGroup) {
  Zel::Ptr<LdpTlvGroupParser> g = walk(twoTlvs(), 5, 20);
  EXPECT_TRUE(g->valid());
  EXPECT_EQ(g->statusCode(), success_);
  EXPECT_TRUE(g->reason().empty());
  EXPECT_EQ(offsets(*g), (std::vector<uint32_t>{5, 13}));
  EXPECT_EQ(g->name(), "tlvs");

  // An empty group is valid, even right at the end of the packet.
  for (uint32_t offset : {5u, 25u}) {
    g = walk(twoTlvs(), offset, 0);
    EXPECT_TRUE(g->valid());
    EXPECT_EQ(g->tlvNum(), 0u);
  }

  // Lengths 0xFFFF, 0xFFFE, 0xFFFD make elements of 3, 2 and 1 octets: the walk
  // goes on after each (the headers overlap the following elements).
  const uint8_t octets[] = {0xEE, 0xEE, 0x01, 0x00, 0xFF, 0xFF, 0x00, 0xFF, 0xFE, 0xFF, 0xFD};
  g = walk(Ovo::pktFactory(octets, sizeof octets), 2, 6);
  EXPECT_TRUE(g->valid()) << g->reason();
  EXPECT_EQ(offsets(*g), (std::vector<uint32_t>{2, 5, 7}));

  // Past the inline storage of the offsets.
  PduBuilder many = PduBuilder::bare();
  for (int i = 0; i < 20; ++i) many.tlv(hopCountTlv_, {static_cast<uint8_t>(i)});
  g = walk(many.pkt(), 0, 100);
  ASSERT_EQ(g->tlvNum(), 20u);
  for (uint32_t i = 0; i < 20; ++i) EXPECT_EQ(g->tlvOffset(i), 5 * i);
}

TEST(LdpTlvGroupParser, FailuresKeepTheOffsetsFoundBeforeThem) {
  expectFailure(*walk(twoTlvs(), 5, 18), "Msg/Tlv is corrupted/truncated", {5});
  expectFailure(*walk(twoTlvs(), 5, 21), "Packet is too small, size: 25", {});
  expectFailure(*walk(twoTlvs(), 25, 1), "Packet is too small, size: 25", {});
  // Two octets after the first TLV: no room for a header in the packet.
  expectFailure(*walk(PduBuilder::bare().tlv(fecTlv_, {1, 2, 3, 4}).raw({4, 0}).pkt(), 0, 10),
                "Msg/Tlv header is corrupted", {0});
  // A header past the group but inside the packet is read; its element overruns.
  expectFailure(*walk(twoTlvs(), 5, 10), "Msg/Tlv is corrupted/truncated", {5});

  // Walking again starts from success.
  Zel::Ptr<LdpTlvGroupParser> g = walk(twoTlvs(), 5, 18);
  g->sizeIs(20);
  g->parseTlvGroup();
  EXPECT_TRUE(g->valid());
  EXPECT_TRUE(g->reason().empty());
  EXPECT_EQ(offsets(*g), (std::vector<uint32_t>{5, 13}));
}

class Recorder : public LdpTlvGroupParser::Notifiee {
 public:
  void onTlvOffset(uint32_t index) override { seen.push_back(index); }
  std::vector<uint32_t> seen;
};

TEST(LdpTlvGroupParser, OffsetCollectionNotifiesEveryChange) {
  Zel::Ptr<LdpTlvGroupParser> g = ldpTlvGroupParserFactory("");
  Recorder r;
  g->notifieeIs(&r);
  g->tlvOffsetIs(1, 40);
  g->tlvOffsetIs(1, 40);  // unchanged: no notification
  g->tlvOffsetIs(1, 44);
  g->tlvOffsetIs(0, 0);
  g->tlvOffsetDel(3);  // absent: no notification
  g->tlvOffsetNotify(7);
  EXPECT_EQ(r.seen, (std::vector<uint32_t>{1, 1, 0, 7}));
  EXPECT_EQ(g->tlvNum(), 2u);
  EXPECT_EQ(g->tlvOffset(1), 44u);

  r.seen.clear();
  g->tlvOffsetDel(0);
  EXPECT_EQ(g->tlvNum(), 1u);
  EXPECT_EQ(g->tlvOffset(1), 44u);
  g->tlvOffsetIs(4, 60);
  g->tlvOffsetDelAll();
  EXPECT_EQ(g->tlvNum(), 0u);
  EXPECT_EQ(g->tlvOffset(4), 0u);
  EXPECT_EQ(r.seen, (std::vector<uint32_t>{0, 4, 4, 1}));

  r.seen.clear();
  g->pktIs(twoTlvs());
  g->offsetIs(5);
  g->sizeIs(20);
  g->parseTlvGroup();
  EXPECT_EQ(r.seen, (std::vector<uint32_t>{0, 1}));
  g->notifieeIs(nullptr);
}

TEST(LdpTlvGroupParserDeathTest, BrokenInvariantsAbort) {
  EXPECT_DEATH(walk(twoTlvs(), 26, 0), "Assertion failed: pkt_->frontBytes\\(\\) >= offset_");
  // A length field of 0xFFFC would make an element of 0 octets.
  Zel::Ptr<Ovo::Pkt> pkt = PduBuilder::bare().tlv(fecTlv_, {}).tlvLength(0xFFFC).pkt();
  EXPECT_DEATH(walk(pkt, 0, 4), "Assertion failed: header->totalLength\\(\\) > 0");
}

}  // namespace
