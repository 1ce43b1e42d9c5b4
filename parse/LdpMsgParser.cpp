// The base message parser (header check, shared per-type steps, string forms), the
// capability parser, the dispatcher and the type descriptors of every parser class.

#include "parse/LdpMsgParser.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "platform/zel/Assert.h"
#include "platform/zel/Format.h"

namespace Ldp {

namespace {

using Zel::AttrKind;

// The largest message this parser accepts (length field + 4).
constexpr uint16_t maxMsgTotalLength = 4096;

bool knownMsgType(LdpMsgType type) {
  switch (type) {
    case LdpNotification_:
    case LdpHello_:
    case LdpInit_:
    case LdpKeepAlive_:
    case LdpCapability_:
    case LdpAddress_:
    case LdpAddressWithdraw_:
    case LdpLabelMapping_:
    case LdpLabelRequest_:
    case LdpLabelWithdraw_:
    case LdpLabelRelease_:
    case LdpLabelAbortReq_:
      return true;
  }
  return false;
}

// Attribute ids: from 258 for the base, plus 128 for each level of derivation.
constexpr Zel::AttributeId depth1 = 386;
constexpr Zel::AttributeId depth2 = 514;

const Zel::ZelType msgParserType("Ldp::LdpMsgParser", Zel::ZelType::Kind::entity, nullptr,
                                 {{"pkt", 258, AttrKind::constant, "Ovo::Pkt"},
                                  {"offset", 259, AttrKind::constant, "U32"},
                                  {"msgHdr", 260, AttrKind::constant, "LdpMsgHdr"},
                                  {"unknown", 261, AttrKind::constant, "bool"},
                                  {"type", 262, AttrKind::constant, "LdpMsgType"},
                                  {"msgId", 263, AttrKind::constant, "U32"},
                                  {"length", 264, AttrKind::constant, "U16"},
                                  {"totalLength", 265, AttrKind::constant, "U16"},
                                  {"stringValue", 266, AttrKind::constant, "Zel::String"},
                                  {"tlvGroupParser", 267, AttrKind::constant, "LdpTlvGroupParser"},
                                  {"tlvNum", 268, AttrKind::constant, "U32"},
                                  {"tlvOffset", 269, AttrKind::valueCollection, "U32"},
                                  {"validMsg", 270, AttrKind::constant, "bool"},
                                  {"reason", 271, AttrKind::constant, "Zel::String"},
                                  {"statusCode", 272, AttrKind::constant, "LdpStatusCode"},
                                  {"msgFecTlv", 273, AttrKind::constant, "LdpTlvHdr"},
                                  {"ldpFecTlvParser", 274, AttrKind::constant, "LdpFecTlvParser"},
                                  {"msgStatusTlv", 275, AttrKind::constant, "LdpStatusTlv"},
                                  {"handleHeader", 276, AttrKind::function, "void"}});

const Zel::ZelType capabilityParserType(
    "Ldp::LdpCapabilityParser", Zel::ZelType::Kind::entity, &msgParserType,
    {{"capabilities", depth1, AttrKind::valueCollection, "LdpCapabilityParameterTlv"},
     {"parseCapabilityTlvs", depth1 + 1, AttrKind::function, "void"}});

// A derived parser's descriptor: initialized, handleInitialized, then its TLVs.
struct MsgParserType : Zel::ZelType {
  MsgParserType(const char* name, const Zel::ZelType* base,
                std::initializer_list<std::pair<const char*, const char*>> tlvs)
      : Zel::ZelType(name, Kind::entity, base, attrs(base, tlvs)) {}

  static std::vector<Zel::AttrDesc> attrs(
      const Zel::ZelType* base, std::initializer_list<std::pair<const char*, const char*>> tlvs) {
    Zel::AttributeId id = base == &msgParserType ? depth1 : depth2;
    std::vector<Zel::AttrDesc> v = {{"initialized", id, AttrKind::constant, "bool"},
                                    {"handleInitialized", id + 1, AttrKind::function, "void"}};
    id += 2;
    for (const auto& [name, type] : tlvs) v.push_back({name, id++, AttrKind::constant, type});
    return v;
  }
};

const MsgParserType notificationType("Ldp::LdpNotificationMsgParser", &msgParserType,
                                     {{"msgPwStatusTlv", "LdpPwStatusTlv"}});
const MsgParserType helloType("Ldp::LdpHelloMsgParser", &msgParserType,
                              {{"msgCommonHelloTlv", "LdpCommonHelloTlv"},
                               {"msgIpTransportTlv", "LdpIpTransportAddrTlv"},
                               {"msgIp6TransportTlv", "LdpIp6TransportAddrTlv"},
                               {"msgConfigSeqTlv", "LdpConfigSeqNumTlv"}});
const MsgParserType initType("Ldp::LdpInitMsgParser", &capabilityParserType,
                             {{"msgSessionParamTlv", "LdpCommonSessionParamTlv"},
                              {"msgFtSessionTlv", "LdpFtSessionTlv"}});
const MsgParserType capabilityType("Ldp::LdpCapabilityMsgParser", &capabilityParserType, {});
const MsgParserType addressType("Ldp::LdpAddressMsgParser", &msgParserType,
                                {{"addressListTlv", "LdpAddressListTlv"}});
const MsgParserType addressWithdrawType("Ldp::LdpAddressWithdrawMsgParser", &msgParserType,
                                        {{"addressListTlv", "LdpAddressListTlv"}});
const MsgParserType labelMappingType("Ldp::LdpLabelMappingMsgParser", &msgParserType,
                                     {{"msgGenLabelTlv", "LdpGenLabelTlv"},
                                      {"msgReqMsgIdTlv", "LdpLabelReqMsgIdTlv"},
                                      {"msgHopCountTlv", "LdpHopCountTlv"},
                                      {"msgPathVectorTlv", "LdpPathVectorTlv"},
                                      {"msgPwStatusTlv", "LdpPwStatusTlv"}});
const MsgParserType labelRequestType("Ldp::LdpLabelRequestMsgParser", &msgParserType,
                                     {{"msgHopCountTlv", "LdpHopCountTlv"},
                                      {"msgPathVectorTlv", "LdpPathVectorTlv"}});
const MsgParserType labelWithdrawType("Ldp::LdpLabelWithdrawMsgParser", &msgParserType,
                                      {{"msgGenLabelTlv", "LdpGenLabelTlv"}});
const MsgParserType labelReleaseType("Ldp::LdpLabelReleaseMsgParser", &msgParserType,
                                     {{"msgGenLabelTlv", "LdpGenLabelTlv"}});
const MsgParserType labelAbortReqType("Ldp::LdpLabelAbortReqMsgParser", &msgParserType,
                                      {{"msgReqMsgIdTlv", "LdpLabelReqMsgIdTlv"}});

// The derived parser of each message type that has one, or null.
LdpMsgParser::Ptr derivedParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset, LdpMsgType type) {
  switch (type) {
    case LdpNotification_:
      return ldpNotificationMsgParserFactory(pkt, offset);
    case LdpHello_:
      return ldpHelloMsgParserFactory(pkt, offset);
    case LdpInit_:
      return ldpInitMsgParserFactory(pkt, offset);
    case LdpAddress_:
      return ldpAddressMsgParserFactory(pkt, offset);
    case LdpAddressWithdraw_:
      return ldpAddressWithdrawMsgParserFactory(pkt, offset);
    case LdpLabelMapping_:
      return ldpLabelMappingMsgParserFactory(pkt, offset);
    case LdpLabelRequest_:
      return ldpLabelRequestMsgParserFactory(pkt, offset);
    case LdpLabelWithdraw_:
      return ldpLabelWithdrawMsgParserFactory(pkt, offset);
    case LdpLabelRelease_:
      return ldpLabelReleaseMsgParserFactory(pkt, offset);
    case LdpLabelAbortReq_:
      return ldpLabelAbortReqMsgParserFactory(pkt, offset);
    default:
      return nullptr;
  }
}

}  // namespace

const Zel::ZelType* LdpMsgParser::fwkType() const { return &msgParserType; }
const Zel::ZelType* LdpCapabilityParser::fwkType() const { return &capabilityParserType; }
const Zel::ZelType* LdpNotificationMsgParser::fwkType() const { return &notificationType; }
const Zel::ZelType* LdpHelloMsgParser::fwkType() const { return &helloType; }
const Zel::ZelType* LdpInitMsgParser::fwkType() const { return &initType; }
const Zel::ZelType* LdpCapabilityMsgParser::fwkType() const { return &capabilityType; }
const Zel::ZelType* LdpAddressMsgParser::fwkType() const { return &addressType; }
const Zel::ZelType* LdpAddressWithdrawMsgParser::fwkType() const { return &addressWithdrawType; }
const Zel::ZelType* LdpLabelMappingMsgParser::fwkType() const { return &labelMappingType; }
const Zel::ZelType* LdpLabelRequestMsgParser::fwkType() const { return &labelRequestType; }
const Zel::ZelType* LdpLabelWithdrawMsgParser::fwkType() const { return &labelWithdrawType; }
const Zel::ZelType* LdpLabelReleaseMsgParser::fwkType() const { return &labelReleaseType; }
const Zel::ZelType* LdpLabelAbortReqMsgParser::fwkType() const { return &labelAbortReqType; }

// --- The dispatcher

LdpMsgParser::Ptr ldpMsgParserGet(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  ZEL_ASSERT(pkt);
  ZEL_ASSERT(pkt->front());
  ZEL_ASSERT(pkt->frontBytes());
  // The derived parser is built straight away from the type in the header; only a
  // message that fails the header check pays for a second, base parser, which is
  // what it gets (as if the base parser had been built first). A type that cannot
  // be read falls through to the base parser's checks and assertions.
  if (offset <= pkt->frontBytes() && pkt->frontBytes() - offset >= 2) {
    const LdpMsgType type = overlay<LdpMsgHdr>(pkt->front() + offset)->type();
    if (LdpMsgParser::Ptr derived = derivedParser(pkt, offset, type)) {
      if (derived->validMsg()) return derived;
      LdpMsgParser::Ptr base = ldpMsgParserFactory(pkt, offset);
      return base->validMsg() ? derived : base;
    }
  }
  return ldpMsgParserFactory(pkt, offset);
}

// --- LdpMsgParser

Zel::Ptr<LdpMsgParser> ldpMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpMsgParser>(pkt, offset);
}

LdpMsgParser::LdpMsgParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset)
    : pkt_(pkt), offset_(offset) {
  msgHdr_ = pkt_ ? overlay<LdpMsgHdr>(pkt_->front() + offset_) : nullptr;
  handleHeader();
}

void LdpMsgParser::handleHeader() {
  ZEL_ASSERT(msgHdr_);
  ZEL_ASSERT(pkt_->frontBytes() >= offset_);
  const size_t frontBytes = pkt_->frontBytes();
  const size_t available = frontBytes - offset_;
  // The type comes first: a message too short to hold it is too small.
  if (available >= 2 && !knownMsgType(msgHdr_->type())) {
    failureIs(
        msgHdr_->unknown() ? unknownMessageTypeIgnore_ : unknownMessageType_,
        Zel::format("Unknown Message Type: %" PRIu32, static_cast<uint32_t>(msgHdr_->type())));
    return;
  }
  if (available < sizeof(LdpMsgHdr)) {
    failureIs(malformedTlv_, Zel::format("MSG too small, size = %zu", frontBytes));
    return;
  }
  const uint16_t total = msgHdr_->totalLength();
  if (total > maxMsgTotalLength) {
    failureIs(malformedTlv_, Zel::format("MSG length field too big, length = %d", total));
    return;
  }
  if (total < sizeof(LdpMsgHdr)) {
    failureIs(malformedTlv_, Zel::format("MSG length field too small, length = %d", total));
    return;
  }

  tlvGroupParser_ = ldpTlvGroupParserFactory(Zel::String());
  tlvGroupParser_->pktIs(pkt_);
  tlvGroupParser_->offsetIs(offset_ + static_cast<uint32_t>(sizeof(LdpMsgHdr)));
  tlvGroupParser_->sizeIs(total - static_cast<uint32_t>(sizeof(LdpMsgHdr)));
  tlvGroupParser_->parseTlvGroup();
  if (!tlvGroupParser_->valid()) {
    failureIs(tlvGroupParser_->statusCode(), tlvGroupParser_->reason());
    return;
  }

  // Each offset is looked up once: as the end of the TLV before, then as its own.
  const uint32_t n = tlvNum();
  const uint32_t end = offset_ + total;
  for (uint32_t i = 0, at = tlvOffset(0); i < n; ++i) {
    // A TLV of 1 to 3 octets (length field 0xFFFD to 0xFFFF) has no header of its
    // own: the octets the header would take belong to what follows it.
    const uint32_t next = i + 1 < n ? tlvOffset(i + 1) : end;
    if (next - at < sizeof(LdpTlvHdr)) {
      failureIs(badTlvLength_, "Msg/Tlv header is corrupted");
      return;
    }
    const LdpTlvHdr& tlv = *overlay<LdpTlvHdr>(pkt_->front() + at);
    const LdpStatusCode code = tlv.validateTlvHdr();
    if (code != success_ && code != unknownMessageTypeIgnore_) {
      failureIs(code, Zel::format("Unknown TLV Type: %" PRIu32, static_cast<uint32_t>(tlv.type())));
      return;
    }
    at = next;
  }
}

void LdpMsgParser::initializedIs(bool b) {
  if (!b || initialized_) return;
  initialized_ = true;
  if (validMsg()) handleInitialized();
}

void LdpMsgParser::ldpFecTlvParserIs(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset,
                                     const Zel::Ptr<const LdpProtoParam>& protoParam) {
  ZEL_ASSERT(pkt == pkt_);
  ZEL_ASSERT_TEXT(offset >= offset_ + sizeof(LdpMsgHdr) && offset < offset_ + totalLength(),
                  "the FEC TLV lies in the message");
  ldpFecTlvParser_ = ldpFecTlvParserFactory(pkt, offset, protoParam);
}

Zel::String LdpMsgParser::stringValue() const {
  if (!validMsg()) return Zel::String("Message Error: ") + reason_.view();
  char rest[48];
  std::snprintf(rest, sizeof rest, ", Id: 0x%08" PRIx32 ", numTlv: %" PRIu32, msgId(), tlvNum());
  return Ldp::stringValue(type()) + rest;
}

// --- Shared steps of the per-type checks

void LdpMsgParser::failureIs(LdpStatusCode code, const Zel::String& text) {
  statusCode_ = code;
  reason_ = text;
}

bool LdpMsgParser::tlvNumAtLeast(uint32_t n, const char* text) {
  if (tlvNum() >= n) return true;
  failureIs(missingMessageParams_, text);
  return false;
}

bool LdpMsgParser::tlvIndexIs(uint32_t index, uint32_t required, const char* text) {
  if (index == required) return true;
  failureIs(missingMessageParams_, text);
  return false;
}

bool LdpMsgParser::tlvTypeIs(uint32_t index, LdpTlvType type, const char* text) {
  if (tlvAt(index).type() == type) return true;
  failureIs(missingMessageParams_, text);
  return false;
}

bool LdpMsgParser::present(const void* tlv, const char* text) {
  if (tlv) return true;
  failureIs(missingMessageParams_, text);
  return false;
}

const LdpTlvHdr& LdpMsgParser::tlvAt(uint32_t index) const {
  return *overlay<LdpTlvHdr>(pkt_->front() + tlvOffset(index));
}

bool LdpMsgParser::lengthFits(const LdpTlvHdr& tlv, const TlvRule& rule) {
  if (lengthOk(tlv, rule.length, rule.orMore)) return true;
  failureIs(malformedTlv_, Zel::format(rule.sizeText, tlv.length()));
  return false;
}

bool LdpMsgParser::validated(LdpStatusCode code, const TlvRule& rule) {
  if (code == success_) return true;
  failureIs(code, rule.invalidText ? Zel::String(rule.invalidText) : Ldp::stringValue(code));
  return false;
}

bool LdpMsgParser::fecIs(const LdpTlvHdr& tlv, const FecRule& rule) {
  msgFecTlv_ = &tlv;
  ldpFecTlvParserIs(
      pkt_, static_cast<uint32_t>(reinterpret_cast<const uint8_t*>(&tlv) - pkt_->front()), nullptr);
  if (rule.takeVerdict && !ldpFecTlvParser_->valid()) {
    failureIs(ldpFecTlvParser_->statusCode(), ldpFecTlvParser_->reason());
    return false;
  }
  if (rule.wildcardText && ldpFecTlvParser_->hasWildcardFecElement()) {
    failureIs(unknownFec_, rule.wildcardText);
    return false;
  }
  return true;
}

bool LdpMsgParser::firstFecIs(uint32_t index, const LdpTlvHdr& tlv, const FecRule& rule) {
  return tlvIndexIs(index, 0, "FecTlv is not the 1st TLV in the message") && fecIs(tlv, rule);
}

// --- String forms

LdpMsgParser::Form::Form(const char* title, uint32_t msgId, bool idComma) : out_(title) {
  char id[32];
  std::snprintf(id, sizeof id, "   Msg Id: %" PRIu32 "%s", msgId, idComma ? "," : "");
  out_ += id;
}

LdpMsgParser::Form& LdpMsgParser::Form::item(std::string_view text, std::string_view label) {
  out_ += "\n   ";
  out_ += label;
  out_ += text;
  return *this;
}

LdpMsgParser::Form LdpMsgParser::validForm(const char* title, bool idComma) const {
  ZEL_ASSERT(msgHdr());
  return Form(title, msgId(), idComma);
}

LdpMsgParser::Form LdpMsgParser::fecForm(const char* title) const {
  ZEL_ASSERT(msgFecTlv());
  Form form = validForm(title);
  form.item(ldpFecTlvParser_->stringValue().view(), "FEC: ");
  return form;
}

Zel::String LdpMsgParser::invalidForm(const char* prefix) const {
  return Zel::String(prefix) + reason_.view();
}

// --- LdpCapabilityParser

LdpCapabilityParser::LdpCapabilityParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset)
    : LdpMsgParser(pkt, offset) {}

namespace {
bool keyLess(const LdpCapabilityParser::Entry& e, LdpTlvType key) { return e.key < key; }
}  // namespace

const LdpCapabilityParameterTlv* LdpCapabilityParser::capabilities(LdpTlvType type) const {
  const Entry* at = std::lower_bound(capabilities_.begin(), capabilities_.end(), type, keyLess);
  return at != capabilities_.end() && at->key == type ? at->value : nullptr;
}

void LdpCapabilityParser::capabilitiesIs(LdpTlvType type, const LdpCapabilityParameterTlv* tlv) {
  Entry* at = std::lower_bound(capabilities_.begin(), capabilities_.end(), type, keyLess);
  if (at != capabilities_.end() && at->key == type) {
    at->value = tlv;
    return;
  }
  const size_t pos = static_cast<size_t>(at - capabilities_.begin());
  capabilities_.push_back(Entry{type, tlv});  // may move the entries
  std::rotate(capabilities_.begin() + pos, capabilities_.end() - 1, capabilities_.end());
}

void LdpCapabilityParser::capabilitiesDel(LdpTlvType type) {
  Entry* at = std::lower_bound(capabilities_.begin(), capabilities_.end(), type, keyLess);
  if (at == capabilities_.end() || at->key != type) return;
  std::copy(at + 1, capabilities_.end(), at);
  capabilities_.pop_back();
}

void LdpCapabilityParser::parseCapabilityTlvs() {
  walkTlvs([this](uint32_t, const LdpTlvHdr& tlv) {
    // The capabilities that are only the S bit, and those with further data.
    bool orMore = false;
    switch (tlv.type()) {
      case dynamicCapabilityTlv_:
      case upstreamLabelAssignmentCapabilityTlv_:
      case p2mpCapabilityTlv_:
      case mp2mpCapabilityTlv_:
      case mbbCapabilityTlv_:
      case typedWildcardFecCapabilityTlv_:
      case mrtCapabilityTlv_:
      case unrecognizedNotificationCapabilityTlv_:
        break;
      case multiTopologyCapabilityTlv_:
      case stateAdvertisementControlCapabilityTlv_:
      case targetedApplicationCapabilityTlv_:
        orMore = true;
        break;
      default:
        return;
    }
    if (lengthOk(tlv, 1, orMore)) {
      capabilitiesIs(tlv.type(), static_cast<const LdpCapabilityParameterTlv*>(&tlv));
    } else {
      failureIs(malformedTlv_, Ldp::stringValue(tlv.type()) + " TLV is not the right size");
    }
  });
}

void LdpCapabilityParser::capabilitiesForm(Form& form) const {
  for (const Entry& e : capabilities_) {
    char state[16];
    std::snprintf(state, sizeof state, ": State(%u)", e.value->state() ? 1u : 0u);
    form.item((Ldp::stringValue(e.key) + state).view());
  }
}

}  // namespace Ldp
