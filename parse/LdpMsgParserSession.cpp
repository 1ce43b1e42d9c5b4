// The parsers of the discovery, session and address messages: Notification, Hello,
// Init, Capability, Address and Address Withdraw.

#include "parse/LdpMsgParser.h"
#include "platform/zel/Assert.h"

namespace Ldp {

namespace {

using TlvRule = LdpMsgParser::TlvRule;

// Notification.
constexpr TlvRule statusRule = {10, false, "Status TLV is not the right size", nullptr};
// validate() judges the PW Status TLV's length.
constexpr TlvRule pwStatusRule = {0, true, "", "LdpPwStatusTlv validation failure"};
// Hello.
constexpr TlvRule commonHelloRule = {4, false, "Invalid size for LdpCommonHelloTlv",
                                     "LdpCommonHelloTlv validation failure"};
constexpr TlvRule ipTransportRule = {4, false, "Invalid size for LdpIpTransportAddrTlv",
                                     "LdpIpTransportAddrTlv validation failure"};
constexpr TlvRule configSeqRule = {4, false, "Invalid size for LdpConfigSeqNumTlv",
                                   "LdpConfigSeqNumTlv validation failure"};
constexpr TlvRule ip6TransportRule = {16, false, "Invalid size for LdpIp6TransportAddrTlv",
                                      "LdpIp6TransportAddrTlv validation failure"};
// Init.
constexpr TlvRule sessionParamRule = {
    14, false, "LdpCommonSessionParamTlv TLV is not the right size", nullptr};
constexpr TlvRule ftSessionRule = {12, false, "LdpFtSession TLV is not the right size (%d)",
                                   nullptr};
// Address and Address Withdraw: validate() judges the length.
constexpr TlvRule addressListRule = {0, true, "", nullptr};

}  // namespace

Zel::Ptr<LdpNotificationMsgParser> ldpNotificationMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset) {
  return Zel::allocate<LdpNotificationMsgParser>(pkt, offset);
}
Zel::Ptr<LdpHelloMsgParser> ldpHelloMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                     uint32_t offset) {
  return Zel::allocate<LdpHelloMsgParser>(pkt, offset);
}
Zel::Ptr<LdpInitMsgParser> ldpInitMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpInitMsgParser>(pkt, offset);
}
Zel::Ptr<LdpCapabilityMsgParser> ldpCapabilityMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                               uint32_t offset) {
  return Zel::allocate<LdpCapabilityMsgParser>(pkt, offset);
}
Zel::Ptr<LdpAddressMsgParser> ldpAddressMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                         uint32_t offset) {
  return Zel::allocate<LdpAddressMsgParser>(pkt, offset);
}
Zel::Ptr<LdpAddressWithdrawMsgParser> ldpAddressWithdrawMsgParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpAddressWithdrawMsgParser>(pkt, offset);
}

// --- Notification

// Only a PW status notification (RFC 4447) has rules beyond its Status TLV: the PW
// Status TLV second and a FEC TLV led by a PW id element third.
void LdpNotificationMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpNotification_);
  if (!tlvNumAtLeast(1, "Missing Status TLV") ||
      !tlvTypeIs(0, statusTlv_, "1st TLV is not Status TLV") ||
      !tlvIs(tlvAt(0), msgStatusTlv_, statusRule) || msgStatusTlv_->statusData() != pwStatus_) {
    return;
  }
  if (!tlvNumAtLeast(3, "Missing PW Status TLVs") ||
      !tlvTypeIs(1, pwStatusTlv_, "2nd TLV is not PW Status TLV") ||
      !tlvIs(tlvAt(1), msgPwStatusTlv_, pwStatusRule) ||
      !tlvTypeIs(2, fecTlv_, "FecTlv is not the 3rd TLV in the message")) {
    return;
  }
  // The elements decide, not the FEC parser's verdict.
  fecIs(tlvAt(2), {false, nullptr});
  const Zel::Ptr<const LdpFecTlvElement> first = ldpFecTlvParser()->fecElement(0);
  if (present(first.ptr(), "PW FEC TLV has no FEC elements") && first->type() != pwIdElement_) {
    failureIs(missingMessageParams_, "PW FEC TLV element is not PWID FEC element");
  }
}

Zel::String LdpNotificationMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Notification Msg: ");
  ZEL_ASSERT(msgStatusTlv());
  Form form = validForm("LDP Notification Msg:\n");
  form.item(msgStatusTlv_).item(msgPwStatusTlv_);
  if (msgFecTlv_) form.item(ldpFecTlvParser()->stringValue().view(), "FEC: ");
  return form.done();
}

// --- Hello

void LdpHelloMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpHello_);
  if (!tlvNumAtLeast(1, "Message has 0 TLV")) return;
  walkTlvs([this](uint32_t i, const LdpTlvHdr& tlv) {
    switch (tlv.type()) {
      case commonHelloTlv_:
        if (tlvIndexIs(i, 0, "LdpCommonHelloTlv is not the 1st TLV in the message")) {
          tlvIs(tlv, msgCommonHelloTlv_, commonHelloRule);
        }
        break;
      // One transport address family per hello.
      case ipv4TransportAddrTlv_:
        if (msgIp6TransportTlv_) {
          failureIs(malformedTlv_, "LdpIpv6TransportAddrTlv already existed");
        } else {
          tlvIs(tlv, msgIpTransportTlv_, ipTransportRule);
        }
        break;
      case ipv6TransportAddrTlv_:
        if (msgIpTransportTlv_) {
          failureIs(malformedTlv_, "LdpIpv4TransportAddrTlv already existed");
        } else {
          tlvIs(tlv, msgIp6TransportTlv_, ip6TransportRule);
        }
        break;
      case configSeqNumTlv_:
        tlvIs(tlv, msgConfigSeqTlv_, configSeqRule);
        break;
      default:
        break;
    }
  });
  if (validMsg()) present(msgCommonHelloTlv_, "Missing LdpCommonHelloTlv");
}

Zel::String LdpHelloMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Hello Msg: ");
  ZEL_ASSERT(msgCommonHelloTlv());
  return validForm("LDP Hello Msg:\n")
      .item(msgCommonHelloTlv_)
      .item(msgIpTransportTlv_)
      .item(msgConfigSeqTlv_)
      .item(msgIp6TransportTlv_)
      .done();
}

// --- Init

void LdpInitMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpInit_);
  if (!tlvNumAtLeast(1, "Missing CommonSessionParam TLV")) return;
  parseCapabilityTlvs();
  walkTlvs([this](uint32_t i, const LdpTlvHdr& tlv) {
    if (tlv.type() == commonSessionParamTlv_) {
      if (tlvIndexIs(i, 0, "CommonSessionParamTlv is not the 1st TLV in the message")) {
        tlvIs(tlv, msgSessionParamTlv_, sessionParamRule);
      }
    } else if (i == 0) {
      failureIs(missingMessageParams_, "1st TLV is not commonSessionParam TLV");
    } else if (tlv.type() == ftSessionTlv_) {
      tlvIs(tlv, msgFtSessionTlv_, ftSessionRule);
    }
  });
}

Zel::String LdpInitMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Init Msg: ");
  ZEL_ASSERT(msgSessionParamTlv());
  Form form = validForm("LDP Init Msg:\n");
  form.item(msgSessionParamTlv_).item(msgFtSessionTlv_);
  capabilitiesForm(form);
  return form.done();
}

// --- Capability

void LdpCapabilityMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpCapability_);
  parseCapabilityTlvs();
}

Zel::String LdpCapabilityMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Capability Msg: ");
  Form form = validForm("LDP Capability Msg:\n", false);
  capabilitiesForm(form);
  return form.done();
}

// --- Address and Address Withdraw

void LdpMsgParser::checkAddressList(const LdpAddressListTlv*& list) {
  if (!tlvNumAtLeast(1, "Message does not have at least 1 TLV")) return;
  walkTlvs([&](uint32_t i, const LdpTlvHdr& tlv) {
    if (tlv.type() == addrListTlv_ &&
        tlvIndexIs(i, 0, "AddressListTlv is not the 1st TLV in the message")) {
      tlvIs(tlv, list, addressListRule);
    }
  });
  if (validMsg()) present(list, "Missing LdpAddressListTlv");
}

void LdpAddressMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpAddress_);
  checkAddressList(addressListTlv_);
}

Zel::String LdpAddressMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Address Msg: ");
  ZEL_ASSERT(addressListTlv());
  return validForm("LDP Address Msg:\n").item(addressListTlv_).done();
}

void LdpAddressWithdrawMsgParser::handleInitialized() {
  ZEL_ASSERT(msgHdr_->type() == LdpAddressWithdraw_);
  checkAddressList(addressListTlv_);
}

Zel::String LdpAddressWithdrawMsgParser::stringValue() const {
  if (!validMsg()) return invalidForm("Invalid LDP Address Withdraw Msg: ");
  ZEL_ASSERT(addressListTlv());
  return validForm("LDP Address Withdraw Msg:\n").item(addressListTlv_).done();
}

}  // namespace Ldp
