// The PDU, message and TLV header overlays: the known-TLV rule, the type setters
// that must keep the flag bits, the string form and field placement in the octets.

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

#include "wire/LdpHdr.h"

using namespace Ldp;

namespace {

// The TLV types RFC 5036 and its extensions define that this library reads.
std::set<uint32_t> knownTlvTypes() {
  std::set<uint32_t> s = {0x100, 0x101, 0x103, 0x104,  0x200,  0x201,  0x202, 0x300, 0x301,
                          0x302, 0x303, 0x400, 0x401,  0x402,  0x403,  0x500, 0x501, 0x502,
                          0x503, 0x600, 0x96A, 0x3E00, 0x3EFF, 0x3F00, 0x3FFF};
  for (uint32_t t = 0x506; t <= 0x50F; ++t) s.insert(t);
  return s;
}

// A TLV header with the given first 16 bits and length 0.
std::vector<uint8_t> tlvHdrBytes(uint16_t typeField) {
  return {static_cast<uint8_t>(typeField >> 8), static_cast<uint8_t>(typeField), 0, 0};
}

LdpStatusCode validated(uint16_t typeField) {
  std::vector<uint8_t> b = tlvHdrBytes(typeField);
  return overlay<LdpTlvHdr>(b.data())->validateTlvHdr();
}

}  // namespace

// Every 14-bit type under all four U/F combinations: a known type passes whatever
// the flags; an unknown one is ignored silently exactly when U is set.
TEST(TlvHdrValidate, EveryTypeAndFlagCombination) {
  const std::set<uint32_t> known = knownTlvTypes();
  for (uint32_t t = 0; t <= 0x3FFF; ++t) {
    const bool isKnown = known.count(t) > 0;
    EXPECT_EQ(ldpTlvTypeKnown(t), isKnown) << std::hex << t;
    for (uint16_t flags : {0x0000, 0x4000, 0x8000, 0xC000}) {
      const LdpStatusCode expected =
          isKnown ? success_ : (flags & 0x8000 ? unknownMessageTypeIgnore_ : unknownTlv_);
      ASSERT_EQ(validated(static_cast<uint16_t>(flags | t)), expected)
          << std::hex << "type " << t << " flags " << flags;
    }
  }
}

TEST(TlvHdr, FieldsInPlaceAndTypeKeepsFlags) {
  std::vector<uint8_t> b = {0xAA, 0xC0, 0x00, 0x00, 0x00, 0xBB};
  LdpTlvHdr* h = overlay<LdpTlvHdr>(b.data() + 1);
  EXPECT_TRUE(h->unknown());
  EXPECT_TRUE(h->forwardUnknown());
  h->typeIs(0x0101);
  EXPECT_EQ(b[1], 0xC1);
  EXPECT_EQ(b[2], 0x01);
  EXPECT_TRUE(h->unknown() && h->forwardUnknown());
  EXPECT_EQ(h->type(), addrListTlv_);
  h->typeIs(0xFFFF);  // bits above the 14-bit type do not reach the flags
  EXPECT_EQ(b[1], 0xFF);
  h->unknownIs(false);
  EXPECT_EQ(b[1], 0x7F);
  EXPECT_EQ(b[2], 0xFF);
  h->forwardUnknownIs(false);
  EXPECT_EQ(b[1], 0x3F);

  h->lengthIs(0x1234);
  EXPECT_EQ(b[3], 0x12);
  EXPECT_EQ(b[4], 0x34);
  EXPECT_EQ(h->value(), b.data() + 5);
  EXPECT_EQ(b[0], 0xAA);
  EXPECT_EQ(b[5], 0xBB);
  EXPECT_EQ(h->totalLength(), 0x1238);
  h->lengthIs(0xFFFC);
  EXPECT_EQ(h->totalLength(), 0);
}

TEST(MsgHdr, FieldsInPlaceAndTypeKeepsUBit) {
  std::vector<uint8_t> b(8);
  LdpMsgHdr* m = overlay<LdpMsgHdr>(b.data());
  m->typeIs(0x4100);
  EXPECT_EQ(b[0], 0x41);
  EXPECT_EQ(b[1], 0x00);
  EXPECT_FALSE(m->unknown());
  m->unknownIs(true);
  m->typeIs(0x4100);
  EXPECT_EQ(b[0], 0xC1);
  EXPECT_TRUE(m->unknown());
  m->typeIs(0xFFFF);
  EXPECT_EQ(m->type(), static_cast<LdpMsgType>(0x7FFF));
  m->unknownIs(false);
  EXPECT_EQ(b[0], 0x7F);
  EXPECT_EQ(b[1], 0xFF);

  m->lengthIs(0xFFFC);
  m->msgIdIs(0x01020304);
  EXPECT_EQ(std::vector<uint8_t>(b.begin() + 2, b.end()),
            (std::vector<uint8_t>{0xFF, 0xFC, 0x01, 0x02, 0x03, 0x04}));
  EXPECT_EQ(m->totalLength(), 0);
  EXPECT_EQ(m->msgId(), 0x01020304u);
}

TEST(PduHdr, FieldsInPlaceAndStringForm) {
  std::vector<uint8_t> b = {0x00, 0x01, 0x00, 0x1E, 10, 1, 2, 3, 0x00, 0x05};
  LdpPduHdr* p = overlay<LdpPduHdr>(b.data());
  EXPECT_EQ(p->version(), 1);
  EXPECT_EQ(p->length(), 30);
  EXPECT_EQ(p->totalLength(), 34);
  EXPECT_EQ(p->ldpId(), LdpIdentifier(0x0A010203, 5));
  EXPECT_EQ(p->stringValue(), "LdpPduHdr: Ver(1),Len(30),LdpId: 10.1.2.3:5");

  p->ldpIdIs(LdpIdentifier(0xC0A80001, 0x0102));
  p->versionIs(0x0203);
  p->lengthIs(0xFFFC);
  EXPECT_EQ(b, (std::vector<uint8_t>{0x02, 0x03, 0xFF, 0xFC, 192, 168, 0, 1, 0x01, 0x02}));
  EXPECT_EQ(p->totalLength(), 0);
  EXPECT_EQ(p->stringValue(), "LdpPduHdr: Ver(515),Len(65532),LdpId: 192.168.0.1:258");
}
