// The PDU builder's octets: the parser suites rely on its lengths being right.

#include "tests/support/PduBuilder.h"

#include <gtest/gtest.h>

#include "core/LdpTypes.h"

using namespace Ldp;
using LdpTest::PduBuilder;
using Octets = std::vector<uint8_t>;

namespace {

TEST(PduBuilder, ComputesEveryLengthField) {
  EXPECT_EQ(PduBuilder(LdpIdentifier(0x0A000001, 2))
                .message(LdpHello_, 7)
                .tlv(commonHelloTlv_, {0x00, 0x0F, 0x00, 0x00})
                .end()
                .message(LdpKeepAlive_, 0x01020304)  // left open: bytes() closes it
                .bytes(),
            (Octets{0x00, 0x01, 0x00, 0x1E, 0x0A, 0x00, 0x00, 0x01, 0x00, 0x02,  // PDU header
                    0x01, 0x00, 0x00, 0x0C, 0x00, 0x00, 0x00, 0x07,              // Hello
                    0x04, 0x00, 0x00, 0x04, 0x00, 0x0F, 0x00, 0x00,              // its TLV
                    0x02, 0x01, 0x00, 0x04, 0x01, 0x02, 0x03, 0x04}));           // KeepAlive
}

TEST(PduBuilder, BreaksFieldsOnRequest) {
  using LdpTest::fBit;
  using LdpTest::uBit;
  PduBuilder b = PduBuilder(LdpIdentifier(0x0A000001, 0))
                     .version(2)
                     .pduLength(0x1234)
                     .message(LdpLabelMapping_, 1, uBit)
                     .msgLength(3)
                     .tlv(fecTlv_, {0xAA}, uBit | fBit)
                     .tlvLength(0xFFFF)
                     .raw({0xBB})
                     .end();
  const Octets full = {0x00, 0x02, 0x12, 0x34, 0x0A, 0x00, 0x00, 0x01, 0x00,
                       0x00, 0x84, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01,  // U bit, length 3
                       0xC1, 0x00, 0xFF, 0xFF, 0xAA, 0xBB};                   // U and F bits
  EXPECT_EQ(b.bytes(), full);

  // A message already ended is patched in place.
  EXPECT_EQ(b.msgLength(0x0102).bytes()[13], 0x02);
  EXPECT_EQ(b.truncateTo(11).bytes(), Octets(full.begin(), full.begin() + 11));

  Zel::Ptr<Ovo::Pkt> pkt = PduBuilder::bare().tlv(genLabelTlv_, {}).raw({0x01}).pkt(2);
  ASSERT_EQ(pkt->frontBytes(), 7u);
  EXPECT_EQ(Octets(pkt->front(), pkt->front() + 7),
            (Octets{0xEE, 0xEE, 0x02, 0x00, 0x00, 0x00, 0x01}));
}

}  // namespace
