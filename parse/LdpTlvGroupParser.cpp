#include "parse/LdpTlvGroupParser.h"

#include <algorithm>
#include <cinttypes>

#include "core/LdpTrace.h"
#include "platform/zel/Assert.h"
#include "platform/zel/Format.h"
#include "wire/LdpHeaders.h"

namespace Ldp {

Zel::Ptr<LdpTlvGroupParser> ldpTlvGroupParserFactory(const Zel::String& name) {
  return Zel::allocate<LdpTlvGroupParser>(name);
}

void LdpTlvGroupParser::tlvOffsetDelAll() {
  if (tlvOffset_.size() == 0) return;
  // A notifiee may drop the last reference to this parser.
  Zel::Ptr<const LdpTlvGroupParser> keep(this);
  for (size_t i = tlvOffset_.indexEnd(); i-- > 0;) tlvOffsetDel(static_cast<uint32_t>(i));
}

void LdpTlvGroupParser::reserveOffsets(uint32_t found, uint32_t consumed) {
  // Project the count from the average element so far, so that a group of like
  // elements needs one buffer. The projection is capped at one entry per 4 octets
  // left (a regular element's least size): 1-3 octet elements cannot inflate it.
  ZEL_ASSERT(consumed > 0);  // first called once the inline capacity is full
  const uint64_t remaining = size_ - consumed;
  const uint64_t projected = uint64_t{found} * size_ / consumed + 1;
  tlvOffset_.reserve(static_cast<size_t>(std::min(projected, found + remaining / 4 + 1)));
}

void LdpTlvGroupParser::failureIs(const Zel::String& text) {
  statusCode_ = badTlvLength_;
  reason_ = text;
}

bool LdpTlvGroupParser::parseTlvGroup() {
  ZEL_ASSERT(pkt_);
  ZEL_ASSERT(pkt_->frontBytes() >= offset_);
  const size_t frontBytes = pkt_->frontBytes();
  statusCode_ = success_;
  if (!reason_.empty()) reason_ = Zel::String();
  LDP_TRACE_TO(traceParse, 8, "Parse packet frontBytes: %zu, offset: %" PRIu32 ", size %" PRIu32,
               frontBytes, offset_, size_);
  if (size_ == 0) return true;
  if (size_ > frontBytes - offset_) {
    failureIs(Zel::format("Packet is too small, size: %zu", frontBytes));
    return true;
  }

  // consumed <= size_ at the top of every round, so cursor < frontBytes.
  const uint8_t* front = pkt_->front();
  uint32_t consumed = 0;
  uint32_t cursor = offset_;
  for (uint32_t i = 0;; ++i) {
    if (frontBytes - cursor < sizeof(LdpTlvHdr)) {
      failureIs("Msg/Tlv header is corrupted");
      return true;
    }
    // Messages and TLVs share the type and length layout of a TLV header.
    const LdpTlvHdr* header = overlay<LdpTlvHdr>(front + cursor);
    ZEL_ASSERT(header->totalLength() > 0);
    const uint32_t size = header->totalLength();
    LDP_TRACE_TO(traceParse, 6, "   Msg/TLV %" PRIu32 ": offset %" PRIu32 ", size %" PRIu32, i,
                 cursor, size);
    if (size > size_ - consumed) {
      failureIs("Msg/Tlv is corrupted/truncated");
      return true;
    }
    if (i == tlvOffset_.capacity()) reserveOffsets(i, consumed);
    consumed += size;
    tlvOffsetIs(i, cursor);
    cursor += size;
    if (consumed == size_) return true;
  }
}

}  // namespace Ldp
