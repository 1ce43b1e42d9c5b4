#pragma once
// The single-TLV parsers: typed views over one TLV at a known packet offset, for
// code that holds a packet and an offset rather than a message parser. Each names
// the fields of its TLV, forwards validate() and stringValue() to the TLV overlay
// of wire/, and a few patch bits of the TLV in place. Nothing is copied and nothing
// is checked until validate() is called.
//
// header2() is the TLV seen as its overlay, or null when the overlay could read
// outside the packet: no packet or no header, or fewer octets from offset() to the
// end of the packet than either the overlay's fixed part or the header plus all
// that its length field covers. A TLV whose length runs past the packet is
// therefore absent as a whole, and no accessor, validate() or stringValue() of the
// overlay ever reads beyond the packet's front bytes.
//
// When header2() is null every accessor returns 0, false or the default value,
// setters write nothing, stringValue() is empty and validate() returns
// badTlvLength (the TLV does not fit where it is said to be).
//
// The TLV at offset() must be of the parser's type: validate() forwards to the
// overlay, and the overlays whose type a parser is expected to know assert it.

#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include "parse/LdpTlvParser.h"
#include "platform/ovo/IpAddr.h"
#include "platform/ovo/IpGenAddr.h"
#include "wire/LdpPwHdr.h"
#include "wire/LdpTlvs.h"

namespace Ldp {

// Whether the octets from p.offset() to the end of p's packet hold both `fixedSize`
// octets and the TLV header plus what its length field covers.
bool ldpTlvFitsPacket(const LdpTlvParser& p, uint32_t fixedSize);

// The shape every single-TLV parser shares; Tlv is the TLV's overlay.
template <class Tlv>
class LdpTlvValueParser : public LdpTlvParser {
  static_assert(std::is_base_of_v<LdpTlvHdr, Tlv> && sizeof(Tlv) >= sizeof(LdpTlvHdr));

 public:
  const Tlv* header2() const { return fits() ? static_cast<const Tlv*>(header()) : nullptr; }
  Tlv* header2() { return fits() ? static_cast<Tlv*>(header()) : nullptr; }

  LdpStatusCode validate() const {
    const Tlv* tlv = header2();
    return tlv ? tlv->validate() : badTlvLength_;
  }
  Zel::String stringValue() const {
    const Tlv* tlv = header2();
    return tlv ? tlv->stringValue() : Zel::String();
  }

 protected:
  LdpTlvValueParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) : LdpTlvParser(pkt, offset) {}
  ~LdpTlvValueParser() override = default;

  // What `get` (a const member of Tlv or a callable taking const Tlv&) reads, or the
  // value-initialized result when header2() is null.
  template <class Get>
  auto field(Get get) const {
    using R = std::remove_cvref_t<std::invoke_result_t<Get, const Tlv&>>;
    const Tlv* tlv = header2();
    return tlv ? R(std::invoke(get, *tlv)) : R{};
  }
  // Applies `set` with `args` to the TLV in the packet; nothing when header2() is null.
  template <class Set, class... A>
  void patch(Set set, A&&... args) {
    if (Tlv* tlv = header2()) std::invoke(set, *tlv, std::forward<A>(args)...);
  }

 private:
  bool fits() const { return ldpTlvFitsPacket(*this, sizeof(Tlv)); }
};

// The constructor, reached only through Zel::allocate from the class's factory.
#define LDP_TLV_VALUE_PARSER_CTOR(Name)                                                    \
 protected:                                                                                \
  Name(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) : LdpTlvValueParser(pkt, offset) {} \
  template <class T, class... A>                                                           \
  friend Zel::Ptr<T> Zel::allocate(A&&... args)

class LdpCommonHelloTlvParser : public LdpTlvValueParser<LdpCommonHelloTlv> {
 public:
  uint16_t holdTime() const { return field(&LdpCommonHelloTlv::holdTime); }
  bool targetedHello() const { return field(&LdpCommonHelloTlv::targetedHello); }
  bool requestSendTargetedHello() const {
    return field(&LdpCommonHelloTlv::requestSendTargetedHello);
  }
  LDP_TLV_VALUE_PARSER_CTOR(LdpCommonHelloTlvParser);
};

class LdpCommonSessionParamTlvParser : public LdpTlvValueParser<LdpCommonSessionParamTlv> {
 public:
  uint16_t protocolVersion() const { return field(&LdpCommonSessionParamTlv::protocolVersion); }
  uint16_t keepAliveTime() const { return field(&LdpCommonSessionParamTlv::keepAliveTime); }
  uint16_t maxPduLength() const { return field(&LdpCommonSessionParamTlv::maxPduLength); }
  LdpIdentifier recvLdpIdentifier() const {
    return field(&LdpCommonSessionParamTlv::recvLdpIdentifier);
  }
  LDP_TLV_VALUE_PARSER_CTOR(LdpCommonSessionParamTlvParser);
};

class LdpStatusTlvParser : public LdpTlvValueParser<LdpStatusTlv> {
 public:
  // The E and F bits of the status word, then its low 30 bits.
  bool statusError() const { return field(&LdpStatusTlv::statusError); }
  void statusErrorIs(bool b) { patch(&LdpStatusTlv::statusErrorIs, b); }
  bool statusForwardUnknown() const { return field(&LdpStatusTlv::statusForwardUnknown); }
  void statusForwardUnknownIs(bool b) { patch(&LdpStatusTlv::statusForwardUnknownIs, b); }
  LdpStatusCode statusData() const { return field(&LdpStatusTlv::statusData); }
  uint32_t msgId() const { return field(&LdpStatusTlv::msgId); }
  LdpMsgType msgType() const { return field(&LdpStatusTlv::msgType); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpStatusTlvParser);
};

class LdpGenLabelTlvParser : public LdpTlvValueParser<LdpGenLabelTlv> {
 public:
  uint32_t label() const { return field(&LdpGenLabelTlv::label); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpGenLabelTlvParser);
};

class LdpLabelReqMsgIdTlvParser : public LdpTlvValueParser<LdpLabelReqMsgIdTlv> {
 public:
  uint32_t reqMsgId() const { return field(&LdpLabelReqMsgIdTlv::reqMsgId); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpLabelReqMsgIdTlvParser);
};

class LdpAddressListTlvParser : public LdpTlvValueParser<LdpAddressListTlv> {
 public:
  uint16_t family() const { return field(&LdpAddressListTlv::family); }
  uint32_t numAddress() const { return field(&LdpAddressListTlv::numAddress); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpAddressListTlvParser);
};

class LdpIpTransportAddrTlvParser : public LdpTlvValueParser<LdpIpTransportAddrTlv> {
 public:
  Ovo::IpAddr ipAddr() const { return field(&LdpIpTransportAddrTlv::ipAddr); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpIpTransportAddrTlvParser);
};

class LdpIp6TransportAddrTlvParser : public LdpTlvValueParser<LdpIp6TransportAddrTlv> {
 public:
  // The unset address when header2() is null.
  Ovo::IpGenAddr ip6Addr() const { return field(&LdpIp6TransportAddrTlv::ip6Addr); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpIp6TransportAddrTlvParser);
};

class LdpConfigSeqNumTlvParser : public LdpTlvValueParser<LdpConfigSeqNumTlv> {
 public:
  uint32_t configSeqNum() const { return field(&LdpConfigSeqNumTlv::configSeqNum); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpConfigSeqNumTlvParser);
};

class LdpHopCountTlvParser : public LdpTlvValueParser<LdpHopCountTlv> {
 public:
  uint8_t hopCount() const { return field(&LdpHopCountTlv::hopCount); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpHopCountTlvParser);
};

class LdpPathVectorTlvParser : public LdpTlvValueParser<LdpPathVectorTlv> {
 public:
  uint32_t lsrIdNum() const { return field(&LdpPathVectorTlv::lsrIdNum); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpPathVectorTlvParser);
};

class LdpPwStatusTlvParser : public LdpTlvValueParser<LdpPwStatusTlv> {
 public:
  // No fault bit is set; false when header2() is null.
  bool pwForwarding() const { return field(&LdpPwStatusTlv::pwForwarding); }
  bool pwNotForwarding() const { return flag(&Flags::pwNotForwarding); }
  bool localACIngrRecvFault() const { return flag(&Flags::localACIngrRecvFault); }
  bool localACEgrTransFault() const { return flag(&Flags::localACEgrTransFault); }
  bool localPsnPwIngrRecvFault() const { return flag(&Flags::localPsnPwIngrRecvFault); }
  bool localPsnPwEgrTransFault() const { return flag(&Flags::localPsnPwEgrTransFault); }
  LDP_TLV_VALUE_PARSER_CTOR(LdpPwStatusTlvParser);

 private:
  using Flags = Pseudowire::PseudowireLdpStatusFlags;
  bool flag(bool (Flags::*bit)() const) const {
    return field([bit](const LdpPwStatusTlv& t) { return (t.flags().*bit)(); });
  }
};

class LdpFtSessionTlvParser : public LdpTlvValueParser<LdpFtSessionTlv> {
 public:
  // The L bit (bit 0 of the FT flags).
  bool learnFromNetwork() const {
    return field([](const LdpFtSessionTlv& t) { return t.ftFlags().learnFromNetwork(); });
  }
  // Writes bit 0 of `v` to the L bit; the other flag bits stay as they are.
  void learnFromNetworkIs(uint16_t v) {
    patch([v](LdpFtSessionTlv& t) { t.ftFlags().learnFromNetworkIs(v & 1); });
  }
  LDP_TLV_VALUE_PARSER_CTOR(LdpFtSessionTlvParser);
};

#undef LDP_TLV_VALUE_PARSER_CTOR

Zel::Ptr<LdpCommonHelloTlvParser> ldpCommonHelloTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                 uint32_t offset);
Zel::Ptr<LdpCommonSessionParamTlvParser> ldpCommonSessionParamTlvParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
Zel::Ptr<LdpStatusTlvParser> ldpStatusTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                       uint32_t offset);
Zel::Ptr<LdpGenLabelTlvParser> ldpGenLabelTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                           uint32_t offset);
Zel::Ptr<LdpLabelReqMsgIdTlvParser> ldpLabelReqMsgIdTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                     uint32_t offset);
Zel::Ptr<LdpAddressListTlvParser> ldpAddressListTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                 uint32_t offset);
Zel::Ptr<LdpIpTransportAddrTlvParser> ldpIpTransportAddrTlvParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
Zel::Ptr<LdpIp6TransportAddrTlvParser> ldpIp6TransportAddrTlvParserFactory(
    const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset);
Zel::Ptr<LdpConfigSeqNumTlvParser> ldpConfigSeqNumTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                                   uint32_t offset);
Zel::Ptr<LdpHopCountTlvParser> ldpHopCountTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                           uint32_t offset);
Zel::Ptr<LdpPathVectorTlvParser> ldpPathVectorTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                               uint32_t offset);
Zel::Ptr<LdpPwStatusTlvParser> ldpPwStatusTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                           uint32_t offset);
Zel::Ptr<LdpFtSessionTlvParser> ldpFtSessionTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt,
                                                             uint32_t offset);

}  // namespace Ldp
