// The PW id FEC element as the FEC TLV parser reads it: the FEC and interface
// parameters it yields, the group wildcard, and each failure with its status code
// and reason, at the boundaries of every rule.
//
// The FEC TLVs are built after 3 lead octets, so that packet offsets and TLV
// offsets differ.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "parse/LdpPwGenMsgParser.h"
#include "tests/parse/ParserChecks.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::PduBuilder;
using LdpTest::pwSubTlv;
using LdpTest::traced;
using LdpTest::traces;
using Pseudowire::GroupId;
using Pseudowire::PseudowireId;
using Pseudowire::PseudowireType;
using Pseudowire::VccvCvTypes;

namespace {

using Bytes = std::vector<uint8_t>;

// The head of a PW id element: C bit and PW type, PW info length, group id.
Bytes head(uint16_t typeField, uint8_t infoLength, uint32_t groupId = 5) {
  return {0x80,
          static_cast<uint8_t>(typeField >> 8),
          static_cast<uint8_t>(typeField),
          infoLength,
          static_cast<uint8_t>(groupId >> 24),
          static_cast<uint8_t>(groupId >> 16),
          static_cast<uint8_t>(groupId >> 8),
          static_cast<uint8_t>(groupId)};
}

// An Ethernet PW element with the C bit, group 5, `pwId` and the sub-TLV octets
// `params`; the PW info length is computed.
Bytes element(uint32_t pwId, const Bytes& params = {}) {
  Bytes b = head(0x8005, static_cast<uint8_t>(4 + params.size()));
  for (int shift = 24; shift >= 0; shift -= 8) b.push_back(static_cast<uint8_t>(pwId >> shift));
  b.insert(b.end(), params.begin(), params.end());
  return b;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Zel::Ptr<LdpFecTlvParser> parseFecTlv(const Bytes& value) {
  return ldpFecTlvParserFactory(PduBuilder::bare().tlv(fecTlv_, value).pkt(3), 3, nullptr);
}

struct Failure {
  const char* what;
  Bytes value;
  LdpStatusCode code;
  std::string reason;
};

void expectFailures(const std::vector<Failure>& cases) {
  for (const Failure& c : cases) {
    SCOPED_TRACE(c.what);
    const Zel::Ptr<LdpFecTlvParser> p = parseFecTlv(c.value);
    EXPECT_EQ(p->statusCode(), c.code);
    EXPECT_EQ(p->reason().view(), c.reason);
    EXPECT_EQ(p->fecElements(), 0u);
    EXPECT_FALSE(p->hasWildcardFecElement());
  }
}

TEST(PwIdElement, FecAndEveryParameter) {
  // MTU 1500, description "to ce1", VLAN 4094, fragmentation, VCCV CC 0x03 and CV 0x12.
  const Bytes value =
      element(100, Bytes{0x01, 4, 0x05, 0xDC} + Bytes{0x03, 8, 't', 'o', ' ', 'c', 'e', '1'} +
                       Bytes{0x06, 4, 0x0F, 0xFE} + pwSubTlv(0x09, 4) + Bytes{0x0C, 4, 0x03, 0x12});
  const Zel::Ptr<LdpFecTlvParser> p = parseFecTlv(value);
  ASSERT_EQ(p->statusCode(), success_) << p->reason();
  EXPECT_EQ(p->reason().view(), "");
  ASSERT_EQ(p->fecElements(), 1u);
  EXPECT_FALSE(p->hasWildcardFecElement());
  EXPECT_EQ(p->fecElement(0)->type(), pwIdElement_);
  EXPECT_EQ(p->fecElement(0)->stringValue(),
            "pw100:ethernet:cbit1 groupId=5 mtu=1500 intfDescription=\"to ce1\" reqVlanId=4094 "
            "fragCapable=True vccvCcTypes=3 vccvCvTypes=0x12");
  EXPECT_EQ(p->fecElement(0)->pwFwdEqvCls().intfParamFlags(),
            LdpPwIntfParamFlags(true, true, true, true, true));
}

TEST(PwIdElement, UnknownSubTlvsAreSkippedAndAbsentOnesLeftAtDefault) {
  Bytes value = element(7, pwSubTlv(0x02, 6, 0xAA) + pwSubTlv(0x01, 4) + pwSubTlv(0x7F, 4));
  value[21] = 0x40;  // MTU 64
  const Zel::Ptr<LdpFecTlvParser> p = traced([&] { return parseFecTlv(value); });

  ASSERT_EQ(p->statusCode(), success_) << p->reason();
  const PwFwdEqvClassInfo& info = p->fecElement(0)->pwFwdEqvCls();
  EXPECT_EQ(info.fwdEqvClass().pwId(), PseudowireId(7));
  EXPECT_EQ(info.params(), PwFwdEqvClassParams(GroupId(5), 64, "", Bridging::VlanIdOrNone(), false,
                                               0, VccvCvTypes()));
  EXPECT_EQ(info.intfParamFlags(), LdpPwIntfParamFlags(true, false, false, false, false));
  const auto ignored = [](const char* code) {
    return std::count(traces.begin(), traces.end(),
                      std::string("Ignoring unrecognized PW intf sub-TLV (code ") + code + ")");
  };
  EXPECT_EQ(ignored("0x02"), 1);
  EXPECT_EQ(ignored("0x7f"), 1);
}

TEST(PwIdElement, GroupWildcardAndPlaceInTheTlv) {
  // PW info length 0: no PW id, no parameters, the group alone.
  const Zel::Ptr<LdpFecTlvParser> w = parseFecTlv(head(0x0004, 0, 0xFFFFFFFF));
  ASSERT_EQ(w->statusCode(), success_) << w->reason();
  EXPECT_TRUE(w->hasWildcardFecElement());
  const PwFwdEqvClassInfo& info = w->fecElement(0)->pwFwdEqvCls();
  EXPECT_EQ(info.fwdEqvClass(),
            PwFwdEqvClass(PseudowireId(), PseudowireType(PseudowireType::ethernetTagged), false));
  EXPECT_EQ(info.params().groupId(), GroupId(0xFFFFFFFF));
  EXPECT_EQ(info.intfParamFlags(), LdpPwIntfParamFlags());

  // After another element, the PW element is read from where that one ended, and
  // runs to the end of the TLV.
  const Bytes prefix = {0x02, 0x00, 0x01, 24, 10, 0, 0};
  const Zel::Ptr<LdpFecTlvParser> p = parseFecTlv(prefix + element(9, pwSubTlv(0x01, 4, 0x01)));
  ASSERT_EQ(p->statusCode(), success_) << p->reason();
  ASSERT_EQ(p->fecElements(), 2u);
  EXPECT_EQ(p->fecElement(1)->pwFwdEqvCls().fwdEqvClass().pwId(), PseudowireId(9));
  EXPECT_EQ(p->fecElement(1)->pwFwdEqvCls().params().mtu(), 0x0101u);
  EXPECT_FALSE(p->hasWildcardFecElement());
}

TEST(PwIdElement, HeadFailures) {
  const char* const e = "Invalid FEC PW ID Element: ";
  const Bytes id1 = {0, 0, 0, 1};
  expectFailures({
      {"7 octets", Bytes{0x80, 0x00, 0x05, 0x00, 0x00, 0x00, 0x00}, malformedTlv_,
       std::string(e) + "TLV is too small"},
      {"unknown type", head(0x001A, 4) + id1, unknownFec_,
       std::string(e) + "Unknown PW type 0x001a"},
      {"C bit and type 0", head(0x8000, 4) + id1, unknownFec_,
       std::string(e) + "Unknown PW type 0x0000"},
      {"type before length", head(0x7FFF, 2), unknownFec_,
       std::string(e) + "Unknown PW type 0x7fff"},
      {"info length 2", head(0x0005, 2) + Bytes{0, 1}, badTlvLength_,
       std::string(e) + "TLV value length must be 0 or >= 4"},
      {"info length 2, nothing after", head(0x0005, 2), badTlvLength_,
       std::string(e) + "TLV value length must be 0 or >= 4"},
      {"info length 3", head(0x0005, 3) + Bytes{0, 0, 1}, badTlvLength_,
       std::string(e) + "TLV value length must be 0 or >= 4"},
      {"more octets than announced", head(0x0005, 4) + id1 + id1, badTlvLength_,
       std::string(e) + "TLV value length mismatch. Expected 4 octets but found 8 octets."},
      {"group wildcard with octets after it", head(0x0005, 0) + id1, badTlvLength_,
       std::string(e) + "TLV value length mismatch. Expected 0 octets but found 4 octets."},
      {"PW id cut short", head(0x0005, 4) + Bytes{0, 0, 1}, badTlvLength_,
       std::string(e) + "TLV value is too small"},
      {"sub-TLVs cut short", head(0x0005, 8) + id1 + Bytes{0x01, 0x04}, badTlvLength_,
       std::string(e) + "TLV value is too small"},
      {"PW id 0", head(0x0005, 4) + Bytes{0, 0, 0, 0}, malformedTlv_,
       std::string(e) + "PW ID cannot be 0"},
  });
}

TEST(PwIdElement, SubTlvFailures) {
  const std::string e = "Invalid PW Intf param element: ";
  const Bytes vlan4095 = {0x06, 4, 0x0F, 0xFF};
  Bytes descTab = pwSubTlv(0x03, 5, 'a');
  descTab[3] = '\t';
  expectFailures({
      {"one octet left", element(1, pwSubTlv(0x01, 4) + Bytes{0x01}), malformedTlv_,
       e + "TLV is too small"},
      {"length 3", element(1, pwSubTlv(0x01, 3) + Bytes{0}), malformedTlv_,
       e + "TLV value is too small"},
      {"length 0", element(1, Bytes{0x01, 0x00}), malformedTlv_, e + "TLV value is too small"},
      {"length past the element", element(1, pwSubTlv(0x01, 4) + Bytes{0x09, 0x05, 0, 0}),
       malformedTlv_, e + "Unrecognized packet invalid length"},
      {"MTU length 6", element(1, pwSubTlv(0x01, 6)), badTlvLength_,
       e + "PW MTU validation failure"},
      {"description of 81 octets", element(1, pwSubTlv(0x03, 83, 'a')), badTlvLength_,
       e + "PW Description validation failure"},
      {"description with a tab", element(1, descTab), malformedTlv_,
       e + "PW Description validation failure"},
      {"VLAN length 5", element(1, pwSubTlv(0x06, 5)), badTlvLength_,
       e + "Requested VLAN Id validation failure"},
      {"VLAN 4095", element(1, vlan4095), malformedTlv_, e + "Vlan id out of bounds (4095)"},
      {"fragmentation length 6", element(1, pwSubTlv(0x09, 6)), badTlvLength_,
       e + "Fragmentation indicator validation failure"},
      {"VCCV length 5", element(1, pwSubTlv(0x0C, 5)), badTlvLength_,
       e + "VCCV param validation failure"},
      // The walk stops at the first failure: a later, worse sub-TLV is not reached.
      {"first failure wins", element(1, pwSubTlv(0x01, 6) + vlan4095), badTlvLength_,
       e + "PW MTU validation failure"},
  });
}

TEST(PwIdElement, ParameterBoundariesThatPass) {
  const Bytes vlan4094 = {0x06, 4, 0x0F, 0xFE};
  const Zel::Ptr<LdpFecTlvParser> p =
      parseFecTlv(element(0xFFFFFFFF, pwSubTlv(0x03, 82, '~') + vlan4094 + pwSubTlv(0x06, 4)));
  ASSERT_EQ(p->statusCode(), success_) << p->reason();
  const PwFwdEqvClassInfo& info = p->fecElement(0)->pwFwdEqvCls();
  EXPECT_EQ(info.fwdEqvClass().pwId(), PseudowireId(0xFFFFFFFF));
  EXPECT_EQ(info.params().intfDescription(), std::string(80, '~'));
  // The later VLAN sub-TLV counts; VLAN 0 asks for no VLAN.
  EXPECT_EQ(info.params().requestedVlanId(), Bridging::VlanIdOrNone());
  EXPECT_TRUE(info.intfParamFlags().requestedVlanId());

  const Zel::Ptr<LdpFecTlvParser> q = parseFecTlv(element(1, vlan4094));
  ASSERT_EQ(q->statusCode(), success_) << q->reason();
  EXPECT_EQ(q->fecElement(0)->pwFwdEqvCls().params().requestedVlanId(),
            Bridging::VlanIdOrNone(4094));
}

}  // namespace
