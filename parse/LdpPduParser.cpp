#include "parse/LdpPduParser.h"

#include <cinttypes>
#include <cstdio>
#include <string>

#include "parse/LdpMsgParser.h"
#include "platform/zel/Assert.h"
#include "platform/zel/Format.h"

namespace Ldp {

namespace {
// The PDU header and the header of one message must fit in the packet.
constexpr size_t minPduBytes = sizeof(LdpPduHdr) + sizeof(LdpMsgHdr);
// The smallest total length: the 10-octet header and one 4-octet element.
constexpr uint16_t minPduTotalLength = 14;
}  // namespace

Zel::Ptr<LdpPduParser> ldpPduParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpPduParser>(pkt, offset);
}

LdpPduParser::LdpPduParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset)
    : pkt_(pkt), offset_(offset) {
  handleHeader();
  tlvGroupParserIs("");
  handleInitialized();
}

void LdpPduParser::handleHeader() {
  header_ = pkt_ ? overlay<LdpPduHdr>(pkt_->front() + offset_) : nullptr;
}

void LdpPduParser::handleInitialized() {
  validate();
  initialized_ = true;
}

void LdpPduParser::failureIs(LdpStatusCode code, const Zel::String& text) {
  statusCode_ = code;
  reason_ = text;
}

void LdpPduParser::validate() {
  ZEL_ASSERT(header_);
  ZEL_ASSERT(pkt_->frontBytes() >= offset_);
  const size_t frontBytes = pkt_->frontBytes();
  if (frontBytes - offset_ < minPduBytes) {
    failureIs(badPduLength_, Zel::format("PDU too small, size = %zu", frontBytes));
    return;
  }
  const uint16_t total = header_->totalLength();
  if (total > maxPduTotalLength) {
    failureIs(badPduLength_, Zel::format("PDU length field too big, length = %d", total));
    return;
  }
  if (total < minPduTotalLength) {
    failureIs(badPduLength_, Zel::format("PDU length field too small, length = %d", total));
    return;
  }
  if (header_->version() != 1) {
    failureIs(badVersion_, Zel::format("LDP Version %d not supported", header_->version()));
    return;
  }
  // The messages follow the header; the length field counts the LDP identifier.
  tlvGroupParser_->pktIs(pkt_);
  tlvGroupParser_->offsetIs(offset_ + static_cast<uint32_t>(sizeof(LdpPduHdr)));
  tlvGroupParser_->sizeIs(total - static_cast<uint32_t>(sizeof(LdpPduHdr)));
  tlvGroupParser_->parseTlvGroup();
  if (tlvGroupParser_->valid()) {
    statusCode_ = success_;
  } else {
    failureIs(malformedTlv_, "LDP PDU Messages are malformed");
  }
}

Zel::String LdpPduParser::stringValue() const {
  if (!validLdpPdu()) return Zel::String("Error LDP PDU: ") + reason_.view();
  std::string out(header_->stringValue().view());
  const uint32_t n = messageNum();
  for (uint32_t i = 0; i < n; ++i) {
    char index[16];
    std::snprintf(index, sizeof index, "\n%" PRIu32 ": ", i);
    out += index;
    out += ldpMsgParserGet(pkt_, messageOffset(i))->stringValue().view();
  }
  out += '\n';
  return Zel::String(out);
}

}  // namespace Ldp
