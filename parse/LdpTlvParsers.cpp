#include "parse/LdpTlvParsers.h"

namespace Ldp {

bool ldpTlvFitsPacket(const LdpTlvParser& p, uint32_t fixedSize) {
  if (!p.pkt() || !p.header()) return false;
  const size_t frontBytes = p.pkt()->frontBytes();
  if (p.offset() > frontBytes) return false;
  const size_t room = frontBytes - p.offset();
  // fixedSize covers the header, so the length field is read only once it fits; the
  // sum is taken in full width so that a length near 0xFFFF does not wrap.
  return room >= fixedSize && room >= sizeof(LdpTlvHdr) + size_t{p.header()->length()};
}

Zel::Ptr<LdpCommonHelloTlvParser> ldpCommonHelloTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                 uint32_t offset) {
  return Zel::allocate<LdpCommonHelloTlvParser>(pkt, offset);
}

Zel::Ptr<LdpCommonSessionParamTlvParser> ldpCommonSessionParamTlvParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpCommonSessionParamTlvParser>(pkt, offset);
}

Zel::Ptr<LdpStatusTlvParser> ldpStatusTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                       uint32_t offset) {
  return Zel::allocate<LdpStatusTlvParser>(pkt, offset);
}

Zel::Ptr<LdpGenLabelTlvParser> ldpGenLabelTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                           uint32_t offset) {
  return Zel::allocate<LdpGenLabelTlvParser>(pkt, offset);
}

Zel::Ptr<LdpLabelReqMsgIdTlvParser> ldpLabelReqMsgIdTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                     uint32_t offset) {
  return Zel::allocate<LdpLabelReqMsgIdTlvParser>(pkt, offset);
}

Zel::Ptr<LdpAddressListTlvParser> ldpAddressListTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                 uint32_t offset) {
  return Zel::allocate<LdpAddressListTlvParser>(pkt, offset);
}

Zel::Ptr<LdpIpTransportAddrTlvParser> ldpIpTransportAddrTlvParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpIpTransportAddrTlvParser>(pkt, offset);
}

Zel::Ptr<LdpIp6TransportAddrTlvParser> ldpIp6TransportAddrTlvParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return Zel::allocate<LdpIp6TransportAddrTlvParser>(pkt, offset);
}

Zel::Ptr<LdpConfigSeqNumTlvParser> ldpConfigSeqNumTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset) {
  return Zel::allocate<LdpConfigSeqNumTlvParser>(pkt, offset);
}

Zel::Ptr<LdpHopCountTlvParser> ldpHopCountTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                           uint32_t offset) {
  return Zel::allocate<LdpHopCountTlvParser>(pkt, offset);
}

Zel::Ptr<LdpPathVectorTlvParser> ldpPathVectorTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                               uint32_t offset) {
  return Zel::allocate<LdpPathVectorTlvParser>(pkt, offset);
}

Zel::Ptr<LdpPwStatusTlvParser> ldpPwStatusTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                           uint32_t offset) {
  return Zel::allocate<LdpPwStatusTlvParser>(pkt, offset);
}

Zel::Ptr<LdpFtSessionTlvParser> ldpFtSessionTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                             uint32_t offset) {
  return Zel::allocate<LdpFtSessionTlvParser>(pkt, offset);
}

}  // namespace Ldp
