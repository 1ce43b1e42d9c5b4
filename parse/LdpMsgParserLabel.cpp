// The parsers of the label messages: Mapping, Request, Withdraw, Release and Abort
// Request. Each carries a FEC TLV as its first TLV.

#include "parse/LdpMsgParser.h"
#include "platform/zel/Assert.h"

namespace Ldp {

namespace {

using TlvRule = LdpMsgParser::TlvRule;

constexpr TlvRule genLabelRule = {4, false, "Invalid size for LdpGenLabelTlv",
                                  "LdpGenLabelTlv validation failure"};
constexpr TlvRule reqMsgIdRule = {4, false, "Invalid size for LdpLabelReqMsgIdTlv",
                                  "LdpLabelReqMsgIdTlv validation failure"};
constexpr TlvRule hopCountRule = {1, false, "Invalid size for LdpHopCountTlv",
                                  "LdpHopCountTlv validation failure"};
constexpr TlvRule pathVectorRule = {1, true, "Invalid size for LdpPathVectorTlv",
                                    "LdpPathVectorTlv validation failure"};
constexpr TlvRule pwStatusRule = {4, false, "Invalid size for LdpPwStatusTlv",
                                  "LdpPwStatusTlv validation failure"};
constexpr TlvRule statusRule = {10, false, "Invalid size for LdpStatusTlv",
                                "LdpStatusTlv validation failure"};

constexpr const char* missingFec = "Missing LdpFecTlv";

}  // namespace

Zel::Ptr<LdpLabelMappingMsgParser> ldpLabelMappingMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset) {
  return Zel::allocate<LdpLabelMappingMsgParser>(pkt, offset);
}
Zel::Ptr<LdpLabelRequestMsgParser> ldpLabelRequestMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset) {
  return Zel::allocate<LdpLabelRequestMsgParser>(pkt, offset);
}
Zel::Ptr<LdpLabelWithdrawMsgParser> ldpLabelWithdrawMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                     uint32_t offset) {
  return Zel::allocate<LdpLabelWithdrawMsgParser>(pkt, offset);
}
Zel::Ptr<LdpLabelReleaseMsgParser> ldpLabelReleaseMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset) {
  return Zel::allocate<LdpLabelReleaseMsgParser>(pkt, offset);
}
Zel::Ptr<LdpLabelAbortReqMsgParser> ldpLabelAbortReqMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                     uint32_t offset) {
  return Zel::allocate<LdpLabelAbortReqMsgParser>(pkt, offset);
}

// --- Label Mapping

void LdpLabelMappingMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpLabelMapping_);
  if (!tlvNumAtLeast(2, "Message does not have at least 2 TLV")) return;
  walkTlvs([this](uint32_t i, const LdpTlvHdr& tlv) {
    switch (tlv.type()) {
      case fecTlv_:
        firstFecIs(i, tlv, {true, "LDP Mapping Msg can not have Wildcard FEC TLV"});
        break;
      case genLabelTlv_:
        secondTlvIs(i, tlv, msgGenLabelTlv_, genLabelRule,
                    "LdpGenLabelTlv is not the 2nd TLV in the message");
        break;
      case labelReqMsgIdTlv_:
        tlvIs(tlv, msgReqMsgIdTlv_, reqMsgIdRule);
        break;
      case hopCountTlv_:
        tlvIs(tlv, msgHopCountTlv_, hopCountRule);
        break;
      case pathVectorTlv_:
        tlvIs(tlv, msgPathVectorTlv_, pathVectorRule);
        break;
      case pwStatusTlv_:
        tlvIs(tlv, msgPwStatusTlv_, pwStatusRule);
        break;
      default:
        break;
    }
  });
  if (validMsg() && present(msgFecTlv_, missingFec)) {
    present(msgGenLabelTlv_, "Missing LdpGenLabelTlv");
  }
}

Zel::String LdpLabelMappingMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Label Mapping Msg: ");
  ZEL_ASSERT(msgGenLabelTlv());
  return fecForm("LDP Label Mapping Msg:\n")
      .item(msgGenLabelTlv_)
      .item(msgReqMsgIdTlv_)
      .item(msgHopCountTlv_)
      .item(msgPathVectorTlv_)
      .item(msgPwStatusTlv_)
      .done();
}

// --- Label Request

void LdpLabelRequestMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpLabelRequest_);
  if (!tlvNumAtLeast(1, "Message does not have at least 1 TLV")) return;
  walkTlvs([this](uint32_t i, const LdpTlvHdr& tlv) {
    switch (tlv.type()) {
      case fecTlv_:
        firstFecIs(i, tlv, {true, "LDP Request Msg can not have Wildcard FEC TLV"});
        break;
      case hopCountTlv_:
        tlvIs(tlv, msgHopCountTlv_, hopCountRule);
        break;
      case pathVectorTlv_:
        tlvIs(tlv, msgPathVectorTlv_, pathVectorRule);
        break;
      default:
        break;
    }
  });
  if (validMsg()) present(msgFecTlv_, missingFec);
}

Zel::String LdpLabelRequestMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Label Request Msg: ");
  return fecForm("LDP Label Request Msg:\n").item(msgHopCountTlv_).item(msgPathVectorTlv_).done();
}

// --- Label Withdraw and Label Release

void LdpMsgParser::checkLabelReturn(const FecRule& fec, const LdpGenLabelTlv*& label) {
  if (!tlvNumAtLeast(1, "Message does not have at least 1 TLV")) return;
  walkTlvs([&](uint32_t i, const LdpTlvHdr& tlv) {
    switch (tlv.type()) {
      case fecTlv_:
        firstFecIs(i, tlv, fec);
        break;
      case genLabelTlv_:
        secondTlvIs(i, tlv, label, genLabelRule, "Label Tlv is not the 2nd TLV in the message");
        break;
      case statusTlv_:
        tlvIs(tlv, msgStatusTlv_, statusRule);
        break;
      default:
        break;
    }
  });
  if (validMsg()) present(msgFecTlv_, missingFec);
}

void LdpLabelWithdrawMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpLabelWithdraw_);
  checkLabelReturn({true, nullptr}, msgGenLabelTlv_);
}

Zel::String LdpLabelWithdrawMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Label Withdraw Msg: ");
  return fecForm("LDP Label Withdraw Msg:\n").item(msgGenLabelTlv_).item(msgStatusTlv_).done();
}

void LdpLabelReleaseMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpLabelRelease_);
  checkLabelReturn({false, nullptr}, msgGenLabelTlv_);
}

// The Release form shares the Request form's error prefix.
Zel::String LdpLabelReleaseMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Label Request Msg: ");
  return fecForm("LDP Label Release Msg:\n").item(msgGenLabelTlv_).item(msgStatusTlv_).done();
}

// --- Label Abort Request

void LdpLabelAbortReqMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpLabelAbortReq_);
  if (!tlvNumAtLeast(2, "Message does not have at least 2 TLV")) return;
  walkTlvs([this](uint32_t i, const LdpTlvHdr& tlv) {
    switch (tlv.type()) {
      case fecTlv_:
        firstFecIs(i, tlv, {true, "LDP Abort Msg can not have Wildcard FEC TLV"});
        break;
      case labelReqMsgIdTlv_:
        secondTlvIs(i, tlv, msgReqMsgIdTlv_, reqMsgIdRule,
                    "LdpLabelReqMsgIdTlv is not the 2nd TLV in the message");
        break;
      default:
        break;
    }
  });
  if (validMsg() && present(msgFecTlv_, missingFec)) {
    present(msgReqMsgIdTlv_, "Missing LdpLabelReqMsgIdTlv");
  }
}

Zel::String LdpLabelAbortReqMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Label Abort Request Msg: ");
  return fecForm("LDP Label Abort Request Msg:\n").item(msgReqMsgIdTlv_).done();
}

}  // namespace Ldp
