// Whole PDUs of a session's life, from discovery to teardown, through the PDU parser
// and ldpMsgParserGet(): each message gets its class and the TLVs it carries; then
// one corrupted octet at each interesting place gives the expected verdict.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "parse/LdpMsgParser.h"
#include "parse/LdpPduParser.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using namespace LdpTest;

namespace {

const LdpIdentifier kLocal(0x0A000001, 0);
const LdpIdentifier kPeer(0x0A000002, 0);
// Interface MTU 1500: the PW id element's one interface parameter.
const std::vector<uint8_t> kMtu = {0x01, 0x04, 0x05, 0xDC};

// The PDUs a speaker sends, in order.
std::vector<PduBuilder> sessionPdus() {
  return {
      PduBuilder(kLocal)
          .message(LdpHello_, 1)
          .commonHello(15)
          .ipv4Transport(0x0A000001)
          .configSeqNum(1),
      PduBuilder(kLocal)
          .message(LdpHello_, 2)
          .commonHello(45, true, true)
          .ipv4Transport(0x0A000001)
          .configSeqNum(2),
      PduBuilder(kLocal)
          .message(LdpInit_, 3)
          .sessionParams(180, false, false, 0, 0, kPeer)
          .ftSession(0x0001, 120000, 0)
          .capability(unrecognizedNotificationCapabilityTlv_, true)
          .capability(typedWildcardFecCapabilityTlv_, true)
          .capability(dynamicCapabilityTlv_, true),
      PduBuilder(kLocal)
          .message(LdpKeepAlive_, 4)
          .message(LdpAddress_, 5)
          .ipv4AddressList({0x0A000001, 0x0A010001, 0xC0A80001}),
      PduBuilder(kLocal)
          .message(LdpLabelMapping_, 6)
          .fec({prefixElement(1, 16, {10, 1})})
          .genLabel(3)
          .message(LdpLabelMapping_, 7)
          .fec({hostElement(1, {10, 0, 0, 1})})
          .genLabel(16001)
          .hopCount(1)
          .message(LdpLabelMapping_, 8)
          .fec({prefixElement(1, 24, {192, 168, 0}), prefixElement(1, 24, {192, 168, 1})})
          .genLabel(16002)
          .labelReqMsgId(11)
          .message(LdpLabelMapping_, 9)
          .fec({p2mpElement(1, {10, 0, 0, 9}, genericLspId(1))})
          .genLabel(16003)
          .message(LdpLabelMapping_, 10)
          .fec({pwIdFec(0x0005, 0, 100, kMtu)})
          .genLabel(16004)
          .pwStatus(0),
      PduBuilder(kLocal)
          .message(LdpLabelRequest_, 11)
          .fec({prefixElement(1, 16, {10, 2})})
          .hopCount(1)
          .pathVector({0x0A000001})
          .message(LdpLabelWithdraw_, 12)
          .fec({wildcardFec()})
          .message(LdpLabelRelease_, 13)
          .fec({prefixElement(1, 16, {10, 1})})
          .genLabel(3)
          .message(LdpLabelAbortReq_, 14)
          .fec({prefixElement(1, 16, {10, 2})})
          .labelReqMsgId(11)
          .message(LdpLabelWithdraw_, 15)
          .fec({pwIdFec(0x0005, 7, std::nullopt)}),
      PduBuilder(kLocal)
          .message(LdpNotification_, 16)
          .status(pwStatus_)
          .pwStatus(0x00000001)
          .fec({pwIdFec(0x0005, 0, 100, kMtu)})
          .message(LdpCapability_, 17)
          .capability(typedWildcardFecCapabilityTlv_, false)
          .message(LdpNotification_, 18)
          .status(0x80000000 | shutdown_),
  };
}

template <class T>
const T& as(const LdpMsgParser::Ptr& p) {
  return static_cast<const T&>(*p);
}

LdpFecElementType firstElement(const LdpMsgParser::Ptr& p) {
  return p->ldpFecTlvParser()->fecElement(0)->type();
}

TEST(EndToEnd, EveryMessageOfASessionIsAccepted) {
  // The class of each message, PDU by PDU ("" for the base parser).
  const std::vector<std::vector<std::string>> classes = {
      {"Hello"},
      {"Hello"},
      {"Init"},
      {"", "Address"},
      {"LabelMapping", "LabelMapping", "LabelMapping", "LabelMapping", "LabelMapping"},
      {"LabelRequest", "LabelWithdraw", "LabelRelease", "LabelAbortReq", "LabelWithdraw"},
      {"Notification", "", "Notification"},
  };
  const std::vector<PduBuilder> pdus = sessionPdus();
  ASSERT_EQ(pdus.size(), classes.size());
  std::vector<std::vector<LdpMsgParser::Ptr>> msgs(pdus.size());
  for (size_t i = 0; i < pdus.size(); ++i) {
    Zel::Ptr<Ovo::Pkt> pkt = pdus[i].pkt();
    Zel::Ptr<LdpPduParser> pdu = ldpPduParserFactory(pkt, 0);
    ASSERT_TRUE(pdu->validLdpPdu()) << i << ": " << pdu->reason();
    ASSERT_EQ(pdu->messageNum(), classes[i].size()) << i;
    for (uint32_t m = 0; m < pdu->messageNum(); ++m) {
      LdpMsgParser::Ptr p = ldpMsgParserGet(pkt, pdu->messageOffset(m));
      ASSERT_TRUE(p->validMsg()) << i << "/" << m << ": " << p->reason();
      EXPECT_EQ(p->fwkType()->name(), "Ldp::Ldp" + classes[i][m] + "MsgParser") << i << "/" << m;
      msgs[i].push_back(p);
    }
  }
  using Hello = LdpHelloMsgParser;
  using Mapping = LdpLabelMappingMsgParser;
  EXPECT_EQ(as<Hello>(msgs[0][0]).msgIpTransportTlv()->ipAddr(), Ovo::IpAddr(0x0A000001));
  EXPECT_EQ(as<Hello>(msgs[0][0]).msgConfigSeqTlv()->configSeqNum(), 1u);
  EXPECT_FALSE(as<Hello>(msgs[0][0]).msgCommonHelloTlv()->targetedHello());
  EXPECT_TRUE(as<Hello>(msgs[1][0]).msgCommonHelloTlv()->requestSendTargetedHello());
  const auto& init = as<LdpInitMsgParser>(msgs[2][0]);
  EXPECT_EQ(init.msgSessionParamTlv()->recvLdpIdentifier(), kPeer);
  EXPECT_TRUE(init.msgFtSessionTlv()->ftFlags().learnFromNetwork());
  ASSERT_EQ(init.capabilitiesNum(), 3u);
  EXPECT_EQ(init.capabilitiesIter()[0].key, dynamicCapabilityTlv_);
  EXPECT_EQ(init.capabilitiesIter()[2].key, unrecognizedNotificationCapabilityTlv_);
  EXPECT_EQ(msgs[3][0]->type(), LdpKeepAlive_);
  EXPECT_EQ(as<LdpAddressMsgParser>(msgs[3][1]).addressListTlv()->numAddress(), 3u);
  EXPECT_EQ(firstElement(msgs[4][0]), prefixElement_);
  EXPECT_EQ(as<Mapping>(msgs[4][0]).msgGenLabelTlv()->label(), 3u);
  EXPECT_EQ(firstElement(msgs[4][1]), hostAddrElement_);
  EXPECT_EQ(as<Mapping>(msgs[4][1]).msgHopCountTlv()->hopCount(), 1);
  EXPECT_EQ(msgs[4][2]->ldpFecTlvParser()->fecElements(), 2u);
  EXPECT_EQ(as<Mapping>(msgs[4][2]).msgReqMsgIdTlv()->reqMsgId(), 11u);
  EXPECT_EQ(firstElement(msgs[4][3]), p2mpElement_);
  EXPECT_EQ(firstElement(msgs[4][4]), pwIdElement_);
  EXPECT_NE(as<Mapping>(msgs[4][4]).msgPwStatusTlv(), nullptr);
  EXPECT_EQ(as<LdpLabelRequestMsgParser>(msgs[5][0]).msgPathVectorTlv()->lsrIdNum(), 1u);
  EXPECT_TRUE(msgs[5][1]->ldpFecTlvParser()->hasWildcardFecElement());
  EXPECT_EQ(as<LdpLabelReleaseMsgParser>(msgs[5][2]).msgGenLabelTlv()->label(), 3u);
  EXPECT_EQ(as<LdpLabelAbortReqMsgParser>(msgs[5][3]).msgReqMsgIdTlv()->reqMsgId(), 11u);
  EXPECT_EQ(firstElement(msgs[5][4]), pwIdElement_);  // every PW of group 7
  EXPECT_TRUE(msgs[5][4]->ldpFecTlvParser()->hasWildcardFecElement());
  EXPECT_EQ(msgs[6][0]->msgStatusTlv()->statusData(), pwStatus_);
  EXPECT_NE(as<LdpNotificationMsgParser>(msgs[6][0]).msgPwStatusTlv(), nullptr);
  EXPECT_EQ(firstElement(msgs[6][0]), pwIdElement_);
  EXPECT_EQ(msgs[6][1]->type(), LdpCapability_);
  EXPECT_TRUE(msgs[6][2]->msgStatusTlv()->statusError());
  EXPECT_EQ(msgs[6][2]->msgFecTlv(), nullptr);
}

// One octet changed: where it is (PDU, message, TLV, octet within), its new value,
// and the verdict of the message (or of the PDU when msg is -1). A null reason
// stands for the FEC TLV parser's own.
struct Corruption {
  int pdu;
  int msg;
  int tlv;  // -1: the message header
  uint32_t at;
  uint8_t value;
  LdpStatusCode code;
  const char* reason;
};

TEST(EndToEnd, OneCorruptedOctetGivesItsVerdict) {
  const std::vector<Corruption> cases = {
      // Link hello: PDU version, message type (U bit clear and set), TLV types.
      {0, -1, 0, 1, 2, badVersion_, "LDP Version 2 not supported"},
      {0, 0, -1, 0, 0x05, unknownMessageType_, "Unknown Message Type: 1280"},
      {0, 0, -1, 0, 0x85, unknownMessageTypeIgnore_, "Unknown Message Type: 1280"},
      {0, 0, 0, 1, 0xFF, unknownTlv_, "Unknown TLV Type: 1279"},
      {0, 0, 1, 1, 0x03, malformedTlv_, "Invalid size for LdpIp6TransportAddrTlv"},
      {0, 0, 1, 1, 0x00, missingMessageParams_,
       "LdpCommonHelloTlv is not the 1st TLV in the message"},
      {1, 0, 0, 0, 0x01, missingMessageParams_, "Missing LdpCommonHelloTlv"},
      // Init: session parameters, FT flags, TLV order, a capability's U bit.
      {2, 0, 0, 5, 2, badVersion_, "badVersion"},
      {2, 0, 0, 7, 2, sessionRejectBadKeepAliveTime_, "sessionRejectBadKeepAliveTime"},
      {2, 0, 0, 10, 0xFF, rejectMaxPduLength_, "rejectMaxPduLength"},
      {2, 0, 1, 5, 0x03, malformedTlv_, "malformedTlv"},
      {2, 0, 0, 1, 0x03, missingMessageParams_, "1st TLV is not commonSessionParam TLV"},
      {2, 0, 2, 0, 0x06, unknownTlv_, "Unknown TLV Type: 1539"},
      // Address.
      {3, 1, 0, 5, 0x03, unsupportedAddressFamily_, "unsupportedAddressFamily"},
      {3, 1, 0, 1, 0x03, missingMessageParams_, "Missing LdpAddressListTlv"},
      // Label Mappings: FEC elements, TLV types and positions.
      {4, 0, 0, 4, 0x01, unknownFec_, nullptr},  // the prefix element made a wildcard
      {4, 0, 0, 6, 0x07, unsupportedAddressFamily_, nullptr},
      {4, 0, 0, 0, 0x02, missingMessageParams_, "LdpGenLabelTlv is not the 2nd TLV in the message"},
      {4, 0, 0, 1, 0x03, malformedTlv_, "Invalid size for LdpHopCountTlv"},
      {4, 1, 1, 0, 0x01, missingMessageParams_, "FecTlv is not the 1st TLV in the message"},
      {4, 1, 2, 1, 0x04, badTlvLength_, "LdpPathVectorTlv validation failure"},
      {4, 3, 0, 4, 0x01, unknownFec_, nullptr},  // the P2MP element made a wildcard
      {4, 4, 0, 6, 0x7F, unknownFec_, nullptr},  // an unknown PW type
      {4, 4, 2, 1, 0x6B, unknownTlv_, "Unknown TLV Type: 2411"},
      // Request, Withdraw, Release, Abort.
      {5, 0, 0, 1, 0x01, missingMessageParams_, "Missing LdpFecTlv"},
      {5, 1, 0, 4, 0x02, malformedTlv_, nullptr},  // the wildcard made a prefix element
      {5, 2, 1, 0, 0x03, malformedTlv_, "Invalid size for LdpStatusTlv"},
      {5, 3, 0, 4, 0x01, unknownFec_, nullptr},
      {5, 3, 1, 1, 0x01, unknownTlv_, "Unknown TLV Type: 1537"},
      // Notifications.
      {6, 0, 0, 7, 0x0A, success_, ""},  // no longer a PW status: the rest is not read
      {6, 0, 1, 0, 0x81, missingMessageParams_, "2nd TLV is not PW Status TLV"},
      {6, 0, 2, 4, 0x02, missingMessageParams_, "PW FEC TLV has no FEC elements"},
      {6, 2, 0, 7, 0x28, missingMessageParams_, "Missing PW Status TLVs"},
      {6, 2, 0, 0, 0x04, missingMessageParams_, "1st TLV is not Status TLV"},
  };
  const std::vector<PduBuilder> pdus = sessionPdus();
  for (const Corruption& c : cases) {
    SCOPED_TRACE("PDU " + std::to_string(c.pdu) + ", message " + std::to_string(c.msg) + ", TLV " +
                 std::to_string(c.tlv) + ", octet " + std::to_string(c.at));
    std::vector<uint8_t> octets = pdus[c.pdu].bytes();
    Zel::Ptr<Ovo::Pkt> clean = Ovo::pktFactory(octets.data(), octets.size());
    uint32_t at = c.at;
    uint32_t msgOffset = 0;
    if (c.msg >= 0) {
      msgOffset = ldpPduParserFactory(clean, 0)->messageOffset(static_cast<uint32_t>(c.msg));
      at += c.tlv < 0 ? msgOffset
                      : ldpMsgParserGet(clean, msgOffset)->tlvOffset(static_cast<uint32_t>(c.tlv));
    }
    octets.at(at) = c.value;
    Zel::Ptr<Ovo::Pkt> pkt = Ovo::pktFactory(octets.data(), octets.size());
    Zel::Ptr<LdpPduParser> pdu = ldpPduParserFactory(pkt, 0);
    if (c.msg < 0) {
      EXPECT_EQ(pdu->statusCode(), c.code);
      EXPECT_EQ(pdu->reason(), c.reason);
      continue;
    }
    ASSERT_TRUE(pdu->validLdpPdu()) << pdu->reason();
    LdpMsgParser::Ptr p = ldpMsgParserGet(pkt, msgOffset);
    EXPECT_EQ(p->statusCode(), c.code) << p->reason();
    if (c.reason) {
      EXPECT_EQ(p->reason(), c.reason);
    } else {
      ASSERT_NE(p->ldpFecTlvParser(), nullptr);
      EXPECT_FALSE(p->reason().empty());
      EXPECT_EQ(p->reason(), p->ldpFecTlvParser()->reason());
    }
  }
}

}  // namespace
