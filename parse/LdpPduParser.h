#pragma once
// LdpPduParser validates the header of a received LDP PDU and finds where each of
// its messages begins, with an LdpTlvGroupParser over the PDU's message octets. It
// copies nothing: header() is an overlay on the packet and every message is one
// recorded packet offset.
//
// ldpPduParserFactory() returns a parser that has been validated already: read
// validLdpPdu(), then messageNum() and messageOffset(i). A failure sets
// statusCode() and reason(); broken invariants (no header, offset past the packet)
// fail an assertion. A failure inside the messages is malformedTlv here, and the
// group parser keeps the precise text and code.

#include <cstdint>

#include "core/LdpTypes.h"
#include "parse/LdpTlvGroupParser.h"
#include "platform/ovo/Pkt.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Recycled.h"
#include "platform/zel/String.h"
#include "wire/LdpHeaders.h"

namespace Ldp {

class LdpPduParser : public Zel::PtrInterface, public Zel::Recycled {
 public:
  // The largest PDU this parser accepts (length field + 4).
  static constexpr uint16_t maxPduTotalLength = 9600;

  const Zel::Ptr<Ovo::Pkt>& pkt() const { return pkt_; }
  // Packet offset of the PDU header.
  uint32_t offset() const { return offset_; }
  LdpPduHdr* header() { return header_; }
  const LdpPduHdr* header() const { return header_; }
  void headerIs(LdpPduHdr* header) { header_ = header; }
  LdpStatusCode statusCode() const { return statusCode_; }
  const Zel::String& reason() const { return reason_; }
  bool validLdpPdu() const { return statusCode_ == success_; }
  bool initialized() const { return initialized_; }

  // The walker over the PDU's messages.
  const Zel::Ptr<LdpTlvGroupParser>& tlvGroupParser() const { return tlvGroupParser_; }
  // Replaces the walker with a new, empty one.
  void tlvGroupParserIs(const Zel::String& name) {
    tlvGroupParser_ = ldpTlvGroupParserFactory(name);
  }
  void tlvGroupParserDel() { tlvGroupParser_ = nullptr; }
  uint32_t messageNum() const { return tlvGroupParser_ ? tlvGroupParser_->tlvNum() : 0; }
  // Packet offset of the index-th message header (0 when absent).
  uint32_t messageOffset(uint32_t index) const {
    return tlvGroupParser_ ? tlvGroupParser_->tlvOffset(index) : 0;
  }

  uint16_t version() const { return header_->version(); }
  uint16_t length() const { return header_->length(); }
  uint16_t totalLength() const { return header_->totalLength(); }
  LdpIdentifier ldpIdentifier() const { return header_->ldpId(); }

  // The PDU header, then each message as "\n<index>: " and the string form of its
  // parser from ldpMsgParserGet(); "Error LDP PDU: <reason>" for a PDU that failed
  // validation.
  Zel::String stringValue() const;

 protected:
  LdpPduParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
  ~LdpPduParser() override = default;
  template <class T, class... A>
  friend Zel::Ptr<T> Zel::allocate(A&&... args);

  // Points header() at the packet's octets at offset(); checks nothing.
  void handleHeader();
  // Validates the header and walks the messages.
  void handleInitialized();

 private:
  void validate();
  void failureIs(LdpStatusCode code, const Zel::String& text);

  Zel::Ptr<Ovo::Pkt> pkt_;
  uint32_t offset_;
  LdpPduHdr* header_ = nullptr;
  LdpStatusCode statusCode_ = success_;
  bool initialized_ = false;
  Zel::String reason_;
  Zel::Ptr<LdpTlvGroupParser> tlvGroupParser_;
};

Zel::Ptr<LdpPduParser> ldpPduParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);

}  // namespace Ldp
