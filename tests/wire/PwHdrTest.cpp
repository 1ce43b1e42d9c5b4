// The pseudowire overlays: where each field sits in the octets, setters that leave
// the neighbouring bits alone, every validate() rule at its boundary, the string
// forms and the type assertions.
//
// Buffers are exactly as long as the element, so a read past it shows up under the
// address sanitizer.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/PduBuilder.h"
#include "tests/wire/OverlayBytes.h"
#include "wire/LdpPwHdr.h"

using namespace Ldp;
using LdpTest::as;
using LdpTest::Bytes;
using LdpTest::pwSubTlv;
using Pseudowire::GroupId;
using Pseudowire::PseudowireId;
using Pseudowire::PseudowireLdpStatusFlags;
using Pseudowire::PseudowireType;
using Pseudowire::VccvCvTypes;

namespace {

TEST(PwIdElementHdr, FieldsInPlaceAndSettersKeepTheirNeighbours) {
  Bytes b = {0x80, 0x80, 0x05, 0x04, 0x00, 0x00, 0x01, 0x02, 0xAB, 0xCD, 0xEF, 0x01};
  LdpFecTlvPwIdElementHdr* h = as<LdpFecTlvPwIdElementHdr>(b);
  EXPECT_EQ(h->elementType(), 0x80);
  EXPECT_EQ(h->totalLength(), 12u);
  EXPECT_EQ(h->stringValue(),
            "LdpFecTlvPwIdElementHdr: pwType(ethernet), cbit(1), groupId(258), pwInfoLen(4), "
            "pwId(2882400001)");

  h->controlWordIs(false);
  EXPECT_EQ(h->typeField().raw(), 0x0005);
  h->pwTypeIs(PseudowireType(PseudowireType::max));
  h->controlWordIs(true);
  EXPECT_EQ(h->typeField().raw(), 0xFFFF);
  h->pwTypeIs(PseudowireType(PseudowireType::ethernetTagged));
  EXPECT_EQ(h->typeField().raw(), 0x8004);
  h->groupIdIs(GroupId(0xFFFFFFFE));
  h->pwIdIs(PseudowireId(7));
  h->pwInfoLengthIs(0x10);
  EXPECT_EQ(b, (Bytes{0x80, 0x80, 0x04, 0x10, 0xFF, 0xFF, 0xFF, 0xFE, 0, 0, 0, 7}));
  EXPECT_EQ(h->intfParams(), b.data() + 12);

  // Below 4 the PW info length does not reach the PW id, whatever the octets say.
  h->pwInfoLengthIs(3);
  EXPECT_EQ(h->pwId(), PseudowireId());
  h->pwInfoLengthIs(0);
  EXPECT_EQ(h->pwId(), PseudowireId());
  EXPECT_EQ(h->totalLength(), 8u);
}

TEST(PwIdElementHdr, HeadAndPwIdRules) {
  struct Case {
    uint16_t typeField;
    uint8_t infoLength;
    uint32_t pwId;
    LdpStatusCode head, whole;
  };
  const Case cases[] = {
      {0x0005, 0, 0, success_, success_},  // no PW id: a group wildcard
      {0x0001, 4, 1, success_, success_},  // the first and last known types
      {0x0019, 4, 1, success_, success_},
      {0x0005, 3, 1, badTlvLength_, badTlvLength_},
      {0x0005, 4, 0, success_, malformedTlv_},
      {0x0000, 4, 1, unknownFec_, unknownFec_},
      {0x001A, 4, 1, unknownFec_, unknownFec_},
      {0x8000, 2, 1, unknownFec_, unknownFec_},  // the type is judged before the length
  };
  for (const Case& c : cases) {
    Bytes b = {0x80, 0, 0, c.infoLength, 0, 0, 0, 9, 0, 0, 0, 0};
    b[1] = static_cast<uint8_t>(c.typeField >> 8);
    b[2] = static_cast<uint8_t>(c.typeField);
    b[11] = static_cast<uint8_t>(c.pwId);
    const LdpFecTlvPwIdElementHdr* h = as<LdpFecTlvPwIdElementHdr>(b);
    SCOPED_TRACE(testing::Message() << std::hex << c.typeField << "/" << int(c.infoLength));
    EXPECT_EQ(h->validateHead(), c.head);
    EXPECT_EQ(h->validate(), c.whole);
    if (c.whole != success_) {
      EXPECT_EQ(h->stringValue(),
                "Error LdpFecTlvPwIdElementHdr: " + std::string(stringValue(c.whole).view()));
    }
  }
  // The head alone (8 octets) is enough for an element without a PW id.
  Bytes head = {0x80, 0x00, 0x07, 0x00, 0x00, 0x00, 0x00, 0x05};
  EXPECT_EQ(as<LdpFecTlvPwIdElementHdr>(head)->stringValue(),
            "LdpFecTlvPwIdElementHdr: pwType(ppp), cbit(0), groupId(5), pwInfoLen(0), pwId(0)");
}

// A sub-TLV of fixed size passes with length 4 only.
template <class T>
void expectFourOctetsOnly(uint8_t type) {
  for (uint8_t len : {0, 2, 3, 4, 5, 6}) {
    Bytes b = pwSubTlv(type, len);
    EXPECT_EQ(as<T>(b)->validate(), len == 4 ? success_ : badTlvLength_)
        << int(type) << "/" << int(len);
  }
}

TEST(PwIntfParamSubTlvs, LengthRulesAndForms) {
  expectFourOctetsOnly<LdpPwIntfMtuSubTlv>(0x01);
  expectFourOctetsOnly<LdpPwRequestedVlanIdSubTlv>(0x06);
  expectFourOctetsOnly<LdpPwFragIndicatorSubTlv>(0x09);
  expectFourOctetsOnly<LdpPwVccvParamSubTlv>(0x0C);

  Bytes mtu = {0x01, 0x04, 0x05, 0xDC};
  EXPECT_EQ(as<LdpPwIntfMtuSubTlv>(mtu)->stringValue(), "LdpPwIntfMtuSubTlv: 1500");
  as<LdpPwIntfMtuSubTlv>(mtu)->mtuIs(0xFFFF);
  EXPECT_EQ(mtu, (Bytes{0x01, 0x04, 0xFF, 0xFF}));
  mtu[1] = 6;
  EXPECT_EQ(as<LdpPwIntfMtuSubTlv>(mtu)->stringValue(), "Error LdpPwIntfMtuSubTlv: badTlvLength");

  Bytes vlan = {0x06, 0x04, 0x0F, 0xFE};
  EXPECT_EQ(as<LdpPwRequestedVlanIdSubTlv>(vlan)->stringValue(),
            "LdpPwRequestedVlanIdSubTlv: 4094");
  // The VLAN range is the parser's rule, not the overlay's.
  as<LdpPwRequestedVlanIdSubTlv>(vlan)->vlanIdIs(0xFFFF);
  EXPECT_EQ(as<LdpPwRequestedVlanIdSubTlv>(vlan)->validate(), success_);

  Bytes frag = {0x09, 0x04, 0x00, 0x00};
  EXPECT_EQ(as<LdpPwFragIndicatorSubTlv>(frag)->stringValue(), "LdpPwFragIndicatorSubTlv: 0x0000");

  Bytes vccv = {0x0C, 0x04, 0x03, 0x12};
  LdpPwVccvParamSubTlv* v = as<LdpPwVccvParamSubTlv>(vccv);
  EXPECT_EQ(v->stringValue(), "LdpPwVccvParamSubTlv: cc(0x03), cv(0x12)");
  v->vccvField().cvTypesIs(VccvCvTypes(VccvCvTypes::lspPing));
  EXPECT_EQ(vccv, (Bytes{0x0C, 0x04, 0x03, 0x02}));
  v->vccvField().ccTypesIs(0x80);
  EXPECT_EQ(vccv, (Bytes{0x0C, 0x04, 0x80, 0x02}));
}

TEST(PwIntfParamSubTlvs, DescriptionLengthAndText) {
  // At most 80 octets of text; the length counts the two header octets.
  for (uint8_t len : {2, 3, 81, 82}) {
    Bytes b = pwSubTlv(0x03, len, 'a');
    EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->validate(), success_) << int(len);
    EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->description(), std::string(len - 2u, 'a'));
  }
  // 0 and 1 wrap around to 254 and 255 octets of text: too long, and nothing is read.
  for (uint8_t len : {0, 1, 83, 255}) {
    Bytes b = pwSubTlv(0x03, len, 'a');
    EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->validate(), badTlvLength_) << int(len);
  }
  Bytes empty = pwSubTlv(0x03, 1);
  EXPECT_EQ(as<LdpPwIntfDescSubTlv>(empty)->description(), "");

  Bytes b = {0x03, 0x08, 't', 'o', ' ', 'c', 'e', '~'};
  EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->stringValue(), "LdpPwIntfDescSubTlv: \"to ce~\"");
  // Printable ASCII only: control characters, DEL and bytes above 0x7F are refused.
  for (uint8_t bad : {0x00, 0x09, 0x1F, 0x7F, 0x80, 0xFF}) {
    b[4] = bad;
    EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->validate(), malformedTlv_) << int(bad);
  }
  b[4] = ' ';
  EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->validate(), success_);
  b[7] = 0;
  EXPECT_EQ(as<LdpPwIntfDescSubTlv>(b)->stringValue(), "Error LdpPwIntfDescSubTlv: malformedTlv");
}

TEST(PwStatusTlv, StatusWordForwardingAndForms) {
  Bytes b = {0x09, 0x6A, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00};
  LdpPwStatusTlv* s = as<LdpPwStatusTlv>(b);
  EXPECT_EQ(s->validate(), success_);
  EXPECT_TRUE(s->pwForwarding());
  EXPECT_EQ(s->stringValue(), "LdpPwStatusTlv: 0x00000000");

  PseudowireLdpStatusFlags f;
  f.localPsnPwEgrTransFaultIs(true);
  f.pwNotForwardingIs(true);
  s->flagsIs(f);
  EXPECT_EQ(b, (Bytes{0x09, 0x6A, 0x00, 0x04, 0x00, 0x00, 0x00, 0x11}));
  EXPECT_FALSE(s->pwForwarding());
  EXPECT_TRUE(s->flags().localPsnPwEgrTransFault());
  EXPECT_FALSE(s->flags().localACIngrRecvFault());
  b[4] = 0x80;  // a bit with no name still means "not forwarding"
  b[7] = 0x00;
  EXPECT_FALSE(s->pwForwarding());
  EXPECT_EQ(s->stringValue(), "LdpPwStatusTlv: 0x80000000");

  for (uint8_t len : {3, 5, 0}) {
    Bytes bad = {0x09, 0x6A, 0x00, len, 0, 0, 0, 0, 0};
    EXPECT_EQ(as<LdpPwStatusTlv>(bad)->validate(), badTlvLength_) << int(len);
    EXPECT_EQ(as<LdpPwStatusTlv>(bad)->stringValue(), "Error LdpPwStatusTlv: badTlvLength");
  }
  // The header rule comes first: an unknown type is refused whatever the length.
  Bytes unknown = {0x09, 0x6B, 0x00, 0x04, 0, 0, 0, 0};
  EXPECT_EQ(as<LdpPwStatusTlv>(unknown)->validate(), unknownTlv_);
  unknown[0] |= 0x80;
  EXPECT_EQ(as<LdpPwStatusTlv>(unknown)->validate(), unknownMessageTypeIgnore_);
  EXPECT_EQ(as<LdpPwStatusTlv>(unknown)->stringValue(),
            "Error LdpPwStatusTlv: unknownMessageTypeIgnore");
}

TEST(PwHdrDeathTest, TypeAssertions) {
  Bytes b = pwSubTlv(0x02, 4);  // the type of none of these
  EXPECT_DEATH(as<LdpPwIntfMtuSubTlv>(b)->validate(), "type\\(\\) == Ldp::intfMtu_");
  EXPECT_DEATH(as<LdpPwIntfDescSubTlv>(b)->validate(), "type\\(\\) == Ldp::intfDesc_");
  EXPECT_DEATH(as<LdpPwRequestedVlanIdSubTlv>(b)->validate(),
               "type\\(\\) == Ldp::requestedVlanId_");
  EXPECT_DEATH(as<LdpPwFragIndicatorSubTlv>(b)->validate(), "type\\(\\) == Ldp::fragIndicator_");
  EXPECT_DEATH(as<LdpPwVccvParamSubTlv>(b)->stringValue(), "type\\(\\) == Ldp::vccvParam_");
  Bytes element = {0x81, 0, 5, 0, 0, 0, 0, 0};
  EXPECT_DEATH(as<LdpFecTlvPwIdElementHdr>(element)->validate(),
               "elementType\\(\\) == Ldp::pwIdElement_");
  // Without a PW info length that covers it there is no PW id to write.
  element[0] = 0x80;
  EXPECT_DEATH(as<LdpFecTlvPwIdElementHdr>(element)->pwIdIs(PseudowireId(1)),
               "pwInfoLength\\(\\) >= pwIdLength");
}

}  // namespace
