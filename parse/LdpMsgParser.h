#pragma once
// The message parsers: each takes one LDP message at a packet offset, checks its
// header and TLVs against the rules of its message type, and exposes the TLVs it
// found as overlays on the packet (nothing is copied; a parser holds its packet so
// the overlays stay valid for as long as the parser lives).
//
// LdpMsgParser checks the message header and splits the TLVs; one derived class per
// message type adds that type's TLV rules. ldpMsgParserGet() picks the class. A
// parser is checked when it is built and never changes afterwards: read validMsg(),
// statusCode() and reason() (the first failure found), then the TLV attributes
// (null when absent). No parser throws; violated preconditions (no header, an
// offset past the packet, a derived parser over another message type) fail an
// assertion.
//
// The per-type checks share one order: the minimum TLV count, then one walk over
// the TLVs in message order (position, length, validate(); the first failure ends
// it; a repeated optional TLV replaces the earlier one), then the presence of the
// required TLVs. Position and presence failures are missingMessageParams, a wrong
// length field malformedTlv, a failed validate() its own code, a forbidden wildcard
// FEC unknownFec. TLVs are matched by their 14-bit type; the U and F bits play no
// part once the header check has let a TLV through.
//
// Valid string forms are a title line, "   Msg Id: <id>," and then each present
// TLV on a line of its own, indented by three spaces.
//
// Objects per message: the parser, its LdpTlvGroupParser (up to eight TLV offsets
// inline) and, for messages with a FEC TLV, the LdpFecTlvParser with its element
// objects: two for a Hello or KeepAlive, four for a Label Mapping of one prefix.
// Their blocks are recycled (Zel::Recycled), so a steady stream allocates nothing
// from the heap. Reasons are built only on failure; capability maps of up to four
// entries are inline. ldpMsgParserGet() builds the derived parser directly; only
// a message that fails the header check costs a second, base parser.

#include <cstdint>
#include <string>
#include <string_view>

#include "core/LdpTypes.h"
#include "parse/LdpFecTlvParser.h"
#include "parse/LdpTlvGroupParser.h"
#include "platform/ovo/Pkt.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Recycled.h"
#include "platform/zel/SmallVec.h"
#include "platform/zel/String.h"
#include "platform/zel/Type.h"
#include "wire/LdpHeaders.h"
#include "wire/LdpPwHdr.h"
#include "wire/LdpTlvs.h"

namespace Ldp {

class LdpMsgParser : public Zel::PtrInterface, public Zel::Recycled {
 public:
  using Ptr = Zel::Ptr<LdpMsgParser>;

  const Zel::Ptr<Ovo::Pkt>& pkt() const { return pkt_; }
  // Packet offset of the message header.
  uint32_t offset() const { return offset_; }
  const LdpMsgHdr* msgHdr() const { return msgHdr_; }
  // The header fields; 0 for a field that lies past the end of the packet.
  bool unknown() const { return headerHas(2) && msgHdr_->unknown(); }
  LdpMsgType type() const { return headerHas(2) ? msgHdr_->type() : LdpMsgType(0); }
  uint32_t msgId() const { return headerHas(8) ? msgHdr_->msgId() : 0; }
  uint16_t length() const { return headerHas(8) ? msgHdr_->length() : 0; }
  uint16_t totalLength() const { return headerHas(8) ? msgHdr_->totalLength() : 0; }

  // The walker over the TLV area (null when the header check stopped before it).
  const Zel::Ptr<LdpTlvGroupParser>& tlvGroupParser() const { return tlvGroupParser_; }
  uint32_t tlvNum() const { return tlvGroupParser_ ? tlvGroupParser_->tlvNum() : 0; }
  // Packet offset of the index-th TLV header (0 when absent).
  uint32_t tlvOffset(uint32_t index) const {
    return tlvGroupParser_ ? tlvGroupParser_->tlvOffset(index) : 0;
  }

  bool validMsg() const { return statusCode_ == success_; }
  LdpStatusCode statusCode() const { return statusCode_; }
  const Zel::String& reason() const { return reason_; }
  // The per-type check has run (never for a base parser).
  bool initialized() const { return initialized_; }

  // The FEC TLV of a message that carries one, and its parser.
  const LdpTlvHdr* msgFecTlv() const { return msgFecTlv_; }
  const Zel::Ptr<LdpFecTlvParser>& ldpFecTlvParser() const { return ldpFecTlvParser_; }
  // Builds the FEC TLV parser for the TLV at `offset`, which must lie in this
  // message of this parser's packet (a null protoParam means strict handling).
  void ldpFecTlvParserIs(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset,
                         const Zel::Ptr<const LdpProtoParam>& protoParam);
  // Set by the Notification, Label Withdraw and Label Release parsers.
  const LdpStatusTlv* msgStatusTlv() const { return msgStatusTlv_; }

  // What a per-type check asks of one TLV it records.
  struct TlvRule {
    uint16_t length;          // the length field required,
    bool orMore;              // or any larger one
    const char* sizeText;     // reason (malformedTlv) for another length; "%d": the length
    const char* invalidText;  // reason when validate() fails; null: the code's name
  };
  // How a message treats its FEC TLV.
  struct FecRule {
    bool takeVerdict;          // the FEC parser's failure is the message's
    const char* wildcardText;  // reason (unknownFec) for a wildcard; null: allowed
  };

  // Invalid: "Message Error: <reason>"; valid: "<type name>, Id: 0x<id>, numTlv: <n>".
  virtual Zel::String stringValue() const;
  virtual const Zel::ZelType* fwkType() const;

 protected:
  LdpMsgParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
  ~LdpMsgParser() override = default;
  template <class T, class... A>
  friend Zel::Ptr<T> Zel::allocate(A&&... args);

  // The header check: type, size, length field, the TLV walk, each TLV header.
  void handleHeader();
  // Marks the parser initialized and, when the header check passed, runs the
  // per-type check; once.
  void initializedIs(bool b);
  virtual void handleInitialized() {}

  // --- Steps shared by the per-type checks; each records the failure it finds
  // and returns false.

  void failureIs(LdpStatusCode code, const Zel::String& text);
  bool tlvNumAtLeast(uint32_t n, const char* text);
  bool tlvIndexIs(uint32_t index, uint32_t required, const char* text);
  // The TLV at `index` is of `type`.
  bool tlvTypeIs(uint32_t index, LdpTlvType type, const char* text);
  bool present(const void* tlv, const char* text);
  const LdpTlvHdr& tlvAt(uint32_t index) const;
  // Runs check(index, tlv) over the TLVs in message order until one fails.
  template <class F>
  void walkTlvs(F&& check) {
    for (uint32_t i = 0; i < tlvNum() && validMsg(); ++i) check(i, tlvAt(i));
  }
  // Judges the length, records the TLV in `slot`, then judges its validate().
  template <class Tlv>
  bool tlvIs(const LdpTlvHdr& tlv, const Tlv*& slot, const TlvRule& rule) {
    if (!lengthFits(tlv, rule)) return false;
    slot = static_cast<const Tlv*>(&tlv);
    return validated(slot->validate(), rule);
  }
  static bool lengthOk(const LdpTlvHdr& tlv, uint16_t length, bool orMore) {
    return tlv.length() == length || (orMore && tlv.length() > length);
  }
  bool lengthFits(const LdpTlvHdr& tlv, const TlvRule& rule);
  bool validated(LdpStatusCode code, const TlvRule& rule);
  // Records the FEC TLV and builds its parser, then applies `rule`.
  bool fecIs(const LdpTlvHdr& tlv, const FecRule& rule);
  // The FEC TLV of a label message: first in the message.
  bool firstFecIs(uint32_t index, const LdpTlvHdr& tlv, const FecRule& rule);
  // The TLV that must follow the FEC TLV of a label message: second in the message
  // (`text` otherwise), then judged as tlvIs() does.
  template <class Tlv>
  bool secondTlvIs(uint32_t index, const LdpTlvHdr& tlv, const Tlv*& slot, const TlvRule& rule,
                   const char* text) {
    return tlvIndexIs(index, 1, text) && tlvIs(tlv, slot, rule);
  }
  // The whole check of Label Withdraw and Label Release, which differ only in
  // how they treat the FEC.
  void checkLabelReturn(const FecRule& fec, const LdpGenLabelTlv*& label);
  // The whole check of Address and Address Withdraw.
  void checkAddressList(const LdpAddressListTlv*& list);

  // A valid form under construction: the title line and the id line, then one
  // line per item.
  class Form {
   public:
    Form(const char* title, uint32_t msgId, bool idComma);
    // Adds "\n   <label><text>".
    Form& item(std::string_view text, std::string_view label = {});
    // Adds the TLV's own form when it is present.
    template <class Tlv>
    Form& item(const Tlv* tlv) {
      return tlv ? item(tlv->stringValue().view()) : *this;
    }
    Zel::String done() const { return Zel::String(out_); }

   private:
    std::string out_;
  };
  // "<title>   Msg Id: <id>" with a trailing comma when `idComma`.
  Form validForm(const char* title, bool idComma = true) const;
  // The same, then the FEC: "FEC: <FEC TLV parser's form>".
  Form fecForm(const char* title) const;
  Zel::String invalidForm(const char* prefix) const;

  const Zel::Ptr<Ovo::Pkt> pkt_;
  const uint32_t offset_;
  const LdpMsgHdr* msgHdr_ = nullptr;
  const LdpTlvHdr* msgFecTlv_ = nullptr;
  const LdpStatusTlv* msgStatusTlv_ = nullptr;

 private:
  // The first `n` octets of the header lie in the packet.
  bool headerHas(size_t n) const { return msgHdr_ && pkt_->frontBytes() - offset_ >= n; }

  Zel::Ptr<LdpTlvGroupParser> tlvGroupParser_;
  Zel::Ptr<LdpFecTlvParser> ldpFecTlvParser_;
  LdpStatusCode statusCode_ = success_;
  bool initialized_ = false;
  Zel::String reason_;
};

// The parser of the message at `offset`: the derived parser of its type, or the
// base parser for a KeepAlive, a Capability, or a message that failed the header
// check. The packet must have front bytes.
LdpMsgParser::Ptr ldpMsgParserGet(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);

Zel::Ptr<LdpMsgParser> ldpMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);

// The capability parameter TLVs of an Init or Capability message (RFC 5561), by
// TLV type in ascending order.
class LdpCapabilityParser : public LdpMsgParser {
 public:
  struct Entry {
    LdpTlvType key;
    const LdpCapabilityParameterTlv* value;
  };

  // The TLV of `type`, or null.
  const LdpCapabilityParameterTlv* capabilities(LdpTlvType type) const;
  bool capabilitiesHas(LdpTlvType type) const { return capabilities(type) != nullptr; }
  // Inserts, or replaces the TLV of `type`.
  void capabilitiesIs(LdpTlvType type, const LdpCapabilityParameterTlv* tlv);
  void capabilitiesDel(LdpTlvType type);
  void capabilitiesDelAll() { capabilities_.clear(); }
  uint32_t capabilitiesNum() const { return static_cast<uint32_t>(capabilities_.size()); }
  // Entries (.key, .value) in ascending type order.
  const Zel::SmallVec<Entry, 4>& capabilitiesIter() const { return capabilities_; }

  const Zel::ZelType* fwkType() const override;

 protected:
  LdpCapabilityParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
  ~LdpCapabilityParser() override = default;

  // Records every capability TLV of the message; a wrong length stops the walk
  // with "<type name> TLV is not the right size" (malformedTlv).
  void parseCapabilityTlvs();
  // Adds one item per capability: "<type name>: State(<S bit>)".
  void capabilitiesForm(Form& form) const;

 private:
  Zel::SmallVec<Entry, 4> capabilities_;
};

// The members every derived parser declares. Its constructor runs the per-type
// check at once: a parser is complete when its factory returns it.
#define LDP_MSG_PARSER_CLASS_COMMON(Name, Base)                              \
 public:                                                                     \
  Zel::String stringValue() const override;                                  \
  const Zel::ZelType* fwkType() const override;                              \
                                                                             \
 protected:                                                                  \
  Name(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) : Base(pkt, offset) { \
    initializedIs(true);                                                     \
  }                                                                          \
  ~Name() override = default;                                                \
  template <class T, class... A>                                             \
  friend Zel::Ptr<T> Zel::allocate(A&&... args);                             \
  void handleInitialized() override;                                         \
                                                                             \
 public:

class LdpNotificationMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpNotificationMsgParser, LdpMsgParser)
  // Present when the status code is pwStatus.
  const LdpPwStatusTlv* msgPwStatusTlv() const { return msgPwStatusTlv_; }

 private:
  const LdpPwStatusTlv* msgPwStatusTlv_ = nullptr;
};

class LdpHelloMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpHelloMsgParser, LdpMsgParser)
  const LdpCommonHelloTlv* msgCommonHelloTlv() const { return msgCommonHelloTlv_; }
  const LdpIpTransportAddrTlv* msgIpTransportTlv() const { return msgIpTransportTlv_; }
  const LdpIp6TransportAddrTlv* msgIp6TransportTlv() const { return msgIp6TransportTlv_; }
  const LdpConfigSeqNumTlv* msgConfigSeqTlv() const { return msgConfigSeqTlv_; }

 private:
  const LdpCommonHelloTlv* msgCommonHelloTlv_ = nullptr;
  const LdpIpTransportAddrTlv* msgIpTransportTlv_ = nullptr;
  const LdpIp6TransportAddrTlv* msgIp6TransportTlv_ = nullptr;
  const LdpConfigSeqNumTlv* msgConfigSeqTlv_ = nullptr;
};

class LdpInitMsgParser : public LdpCapabilityParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpInitMsgParser, LdpCapabilityParser)
  const LdpCommonSessionParamTlv* msgSessionParamTlv() const { return msgSessionParamTlv_; }
  const LdpFtSessionTlv* msgFtSessionTlv() const { return msgFtSessionTlv_; }

 private:
  const LdpCommonSessionParamTlv* msgSessionParamTlv_ = nullptr;
  const LdpFtSessionTlv* msgFtSessionTlv_ = nullptr;
};

// Not built by ldpMsgParserGet(): a caller that needs the capability view of a
// Capability message builds it with ldpCapabilityMsgParserFactory().
class LdpCapabilityMsgParser : public LdpCapabilityParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpCapabilityMsgParser, LdpCapabilityParser)
};

class LdpAddressMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpAddressMsgParser, LdpMsgParser)
  const LdpAddressListTlv* addressListTlv() const { return addressListTlv_; }

 private:
  const LdpAddressListTlv* addressListTlv_ = nullptr;
};

class LdpAddressWithdrawMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpAddressWithdrawMsgParser, LdpMsgParser)
  const LdpAddressListTlv* addressListTlv() const { return addressListTlv_; }

 private:
  const LdpAddressListTlv* addressListTlv_ = nullptr;
};

class LdpLabelMappingMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpLabelMappingMsgParser, LdpMsgParser)
  const LdpGenLabelTlv* msgGenLabelTlv() const { return msgGenLabelTlv_; }
  const LdpLabelReqMsgIdTlv* msgReqMsgIdTlv() const { return msgReqMsgIdTlv_; }
  const LdpHopCountTlv* msgHopCountTlv() const { return msgHopCountTlv_; }
  const LdpPathVectorTlv* msgPathVectorTlv() const { return msgPathVectorTlv_; }
  const LdpPwStatusTlv* msgPwStatusTlv() const { return msgPwStatusTlv_; }

 private:
  const LdpGenLabelTlv* msgGenLabelTlv_ = nullptr;
  const LdpLabelReqMsgIdTlv* msgReqMsgIdTlv_ = nullptr;
  const LdpHopCountTlv* msgHopCountTlv_ = nullptr;
  const LdpPathVectorTlv* msgPathVectorTlv_ = nullptr;
  const LdpPwStatusTlv* msgPwStatusTlv_ = nullptr;
};

class LdpLabelRequestMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpLabelRequestMsgParser, LdpMsgParser)
  const LdpHopCountTlv* msgHopCountTlv() const { return msgHopCountTlv_; }
  const LdpPathVectorTlv* msgPathVectorTlv() const { return msgPathVectorTlv_; }

 private:
  const LdpHopCountTlv* msgHopCountTlv_ = nullptr;
  const LdpPathVectorTlv* msgPathVectorTlv_ = nullptr;
};

class LdpLabelWithdrawMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpLabelWithdrawMsgParser, LdpMsgParser)
  const LdpGenLabelTlv* msgGenLabelTlv() const { return msgGenLabelTlv_; }

 private:
  const LdpGenLabelTlv* msgGenLabelTlv_ = nullptr;
};

// Accepts a FEC TLV whose elements its own parser rejects: the consumer reads the
// verdict from ldpFecTlvParser().
class LdpLabelReleaseMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpLabelReleaseMsgParser, LdpMsgParser)
  const LdpGenLabelTlv* msgGenLabelTlv() const { return msgGenLabelTlv_; }

 private:
  const LdpGenLabelTlv* msgGenLabelTlv_ = nullptr;
};

class LdpLabelAbortReqMsgParser : public LdpMsgParser {
  LDP_MSG_PARSER_CLASS_COMMON(LdpLabelAbortReqMsgParser, LdpMsgParser)
  const LdpLabelReqMsgIdTlv* msgReqMsgIdTlv() const { return msgReqMsgIdTlv_; }

 private:
  const LdpLabelReqMsgIdTlv* msgReqMsgIdTlv_ = nullptr;
};

#undef LDP_MSG_PARSER_CLASS_COMMON

// Each builds the parser of its class over the message at `offset` and checks it.
Zel::Ptr<LdpNotificationMsgParser> ldpNotificationMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset);
Zel::Ptr<LdpHelloMsgParser> ldpHelloMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                     uint32_t offset);
Zel::Ptr<LdpInitMsgParser> ldpInitMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
Zel::Ptr<LdpCapabilityMsgParser> ldpCapabilityMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                               uint32_t offset);
Zel::Ptr<LdpAddressMsgParser> ldpAddressMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                         uint32_t offset);
Zel::Ptr<LdpAddressWithdrawMsgParser> ldpAddressWithdrawMsgParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
Zel::Ptr<LdpLabelMappingMsgParser> ldpLabelMappingMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset);
Zel::Ptr<LdpLabelRequestMsgParser> ldpLabelRequestMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset);
Zel::Ptr<LdpLabelWithdrawMsgParser> ldpLabelWithdrawMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                     uint32_t offset);
Zel::Ptr<LdpLabelReleaseMsgParser> ldpLabelReleaseMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset);
Zel::Ptr<LdpLabelAbortReqMsgParser> ldpLabelAbortReqMsgParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                     uint32_t offset);

}  // namespace Ldp
