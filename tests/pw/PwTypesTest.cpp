// The pseudowire FEC types: string forms and their parsers, order, validity, and
// the trace and reflection forms of the parameters.

#include <gtest/gtest.h>

#include "pw/PwTypes.h"
#include "tests/support/ValueChecks.h"

using namespace Ldp;
using namespace LdpTest;
using Bridging::VlanIdOrNone;
using Pseudowire::GroupId;
using Pseudowire::PseudowireId;
using Pseudowire::PseudowireType;
using Pseudowire::VccvCvTypes;

namespace {

const PseudowireType kEthernet(PseudowireType::ethernet);
const PseudowireType kTagged(PseudowireType::ethernetTagged);

PwFwdEqvClass pw(uint32_t id, PseudowireType type, bool controlWord) {
  return PwFwdEqvClass(PseudowireId(id), type, controlWord);
}

TEST(PwFwdEqvClass, FormsAndRefusals) {
  expectForm(pw(100, kEthernet, true), "pw100:ethernet:cbit1");
  expectForm(pw(7, PseudowireType(0x1A), false), "pw7:0x001a:cbit0");
  EXPECT_EQ(parsed<PwFwdEqvClass>("pw7:0x0005:cbit1"), pw(7, kEthernet, true));
  expectAllRefused(
      {"", "pw", "100:ethernet:cbit1", "PW100:ethernet:cbit1", "pw:ethernet:cbit1",
       "pw100ethernet:cbit1", "pw100:ether:cbit1", "pw100:ethernet", "pw100:ethernet:cbit",
       "pw100:ethernet:cbit2", "pw100:ethernet:c1", "pw4294967296:ethernet:cbit0"},
      "Invalid PwFwdEqvClass", pw(1, kTagged, true));

  PwFwdEqvClass fec = pw(1, kTagged, true);
  fec.stringValueIs("pw9:hdlc:cbit0");
  EXPECT_EQ(fec, pw(9, PseudowireType(PseudowireType::hdlc), false));
  // The whole text must be one FEC; a refused text leaves the target as it was.
  for (const char* bad : {"pw9:hdlc:cbit0 ", "pw9:hdlc:cbit01", "pw9:hdlc"}) {
    expectRangeError([&] { fec.stringValueIs(bad); }, "Invalid PwFwdEqvClass");
    EXPECT_EQ(fec, pw(9, PseudowireType(PseudowireType::hdlc), false)) << bad;
  }
}

TEST(PwFwdEqvClass, OrderByIdThenTypeThenControlWord) {
  expectOrdered<PwFwdEqvClass>({PwFwdEqvClass(), pw(1, PseudowireType(0x7FFF), true),
                                pw(2, kTagged, false), pw(2, kTagged, true),
                                pw(2, kEthernet, false), pw(2, kEthernet, true),
                                pw(3, PseudowireType(), false)});
  expectLogRoundTrip<PwFwdEqvClass>({pw(100, kEthernet, true), pw(7, PseudowireType(0x1A), false)});
}

TEST(PwFecSessionId, FormsValidityAndOrder) {
  const LdpSessionId peerA(LdpIdentifier(0x0A000002, 0));
  const LdpSessionId peerB(LdpIdentifier(0x0A000003, 0));
  const PwFecSessionId id(pw(100, kEthernet, true), peerA);
  expectForm(id, "pw100:ethernet:cbit1_10.0.0.2:0");
  expectForm(PwFecSessionId(), "pw0:0x0000:cbit0_0.0.0.0:0");
  expectAllRefused({"", "pw100:ethernet:cbit1", "pw100:ethernet:cbit1_",
                    "pw100:ethernet:cbit1-10.0.0.2:0", "pw100:ethernet_10.0.0.2:0", "_10.0.0.2:0"},
                   "Invalid PwFecSessionId", id);
  PwFecSessionId set;
  set.stringValueIs("pw5:ppp:cbit0_10.0.0.3:2");
  EXPECT_EQ(set, PwFecSessionId(pw(5, PseudowireType(PseudowireType::ppp), false),
                                LdpSessionId(LdpIdentifier(0x0A000003, 2))));
  expectRangeError([&] { set.stringValueIs("pw5:ppp:cbit0_10.0.0.3:2_"); },
                   "Invalid PwFecSessionId");
  EXPECT_EQ(set.stringValue(), "pw5:ppp:cbit0_10.0.0.3:2");

  // Valid exactly when the FEC names a PW id; type, control word and peer play no part.
  EXPECT_TRUE(PwFecSessionId(pw(1, PseudowireType(), false), LdpSessionId()).isValid());
  EXPECT_FALSE(PwFecSessionId().isValid());
  EXPECT_FALSE(PwFecSessionId(pw(0, kEthernet, true), peerA).isValid());

  expectOrdered<PwFecSessionId>({PwFecSessionId(pw(1, kEthernet, false), peerB),
                                 PwFecSessionId(pw(1, kEthernet, true), peerA),
                                 PwFecSessionId(pw(1, kEthernet, true), peerB),
                                 PwFecSessionId(pw(2, kTagged, false), peerA)});
}

PwFwdEqvClassParams sampleParams() {
  return PwFwdEqvClassParams(GroupId(5), 1500, "to ce1", VlanIdOrNone(100), true, 0x03,
                             VccvCvTypes(VccvCvTypes::lspPing));
}

TEST(PwFwdEqvClassParams, TraceAndReflectionForms) {
  EXPECT_EQ(sampleParams().stringValue(),
            "groupId=5 mtu=1500 intfDescription=\"to ce1\" reqVlanId=100 fragCapable=True "
            "vccvCcTypes=3 vccvCvTypes=0x02");
  expectForm(sampleParams(),
             "Value('Ldp::PwFwdEqvClassParams', ** {'groupId': 5, 'mtu': 1500, "
             "'intfDescription': 'to ce1', 'requestedVlanId': 100, 'fragCapable': True, "
             "'vccvCcTypes': 3, 'vccvCvTypes': 0x02})");
  expectLogRoundTrip<PwFwdEqvClassParams>({sampleParams(), PwFwdEqvClassParams()});
}

TEST(PwFwdEqvClassInfo, ConstructionAndForms) {
  const PwFwdEqvClassInfo info(pw(100, kEthernet, true), sampleParams());
  EXPECT_EQ(info.intfParamFlags(), LdpPwIntfParamFlags());
  EXPECT_EQ(info.stringValue(),
            "pw100:ethernet:cbit1 groupId=5 mtu=1500 intfDescription=\"to ce1\" reqVlanId=100 "
            "fragCapable=True vccvCcTypes=3 vccvCvTypes=0x02");

  const PwFwdEqvClassInfo flagged(pw(100, kEthernet, true), sampleParams(),
                                  LdpPwIntfParamFlags(true, false, false, false, false));
  EXPECT_NE(flagged, info);  // the same parameters, told apart by what was present
  EXPECT_EQ(parsed<PwFwdEqvClassInfo>(valueToStrep(flagged).view()), flagged);
  expectLogRoundTrip<PwFwdEqvClassInfo>({flagged, PwFwdEqvClassInfo()});
}

}  // namespace
