#include "parse/LdpTlvParser.h"

namespace Ldp {

Zel::Ptr<LdpTlvParser> ldpTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpTlvParser>(pkt, offset);
}

LdpTlvParser::LdpTlvParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset)
    : pkt_(pkt), offset_(offset) {
  handleHeader();
}

void LdpTlvParser::handleHeader() {
  header_ = pkt_ ? overlay<LdpTlvHdr>(pkt_->front() + offset_) : nullptr;
}

}  // namespace Ldp
