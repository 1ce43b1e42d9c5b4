#include "parse/LdpFecTlvParser.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "core/LdpTrace.h"
#include "platform/zel/Assert.h"
#include "platform/zel/Format.h"
#include "wire/LdpFecElements.h"

namespace Ldp {

namespace {

// Records a failure's text on the parser and returns its code.
[[gnu::format(printf, 3, 4)]] LdpStatusCode failure(LdpFecTlvParser* parser, LdpStatusCode code,
                                                    const char* format, ...) {
  va_list args;
  va_start(args, format);
  parser->reasonIs(Zel::vformat(format, args));
  va_end(args);
  LDP_TRACE_TO(traceParse, 6, "%s", parser->reason().charPtr());
  return code;
}

uint16_t familyNumber(const LdpFecTlvAddrElementHdr& hdr) { return hdr.familyNbo().value(); }

// Prefix element at `cursor`, which is below `end`.
LdpStatusCode parsePrefixElement(LdpFecTlvParser* parser, uint32_t& cursor, uint32_t end,
                                 Mpls::FwdEqvClass* fec) {
  if (end - cursor < sizeof(LdpFecTlvPrefixElementHdr)) {
    return failure(parser, malformedTlv_, "Invalid FEC Prefix Element: TLV value is too small");
  }
  const auto* hdr = overlay<LdpFecTlvPrefixElementHdr>(parser->pkt()->front() + cursor);
  if (!hdr->familyKnown()) {
    return failure(parser, unsupportedAddressFamily_,
                   "Invalid FEC Prefix Element address family 0x%hx", familyNumber(*hdr));
  }
  const uint32_t remaining = end - cursor - 4;
  if (hdr->prefixOctets() > remaining) {
    return failure(parser, malformedTlv_,
                   "Invalid FEC Prefix Element: prefix bits: %d, remaining packet octets: %u",
                   hdr->prefixBits(), remaining);
  }
  if (hdr->prefixOctets() > familyOctets(hdr->family())) {
    return failure(parser, malformedTlv_,
                   hdr->family() == Ovo::AddressFamily::ipv4
                       ? "Invalid FEC Prefix Element: PreLen %d is too large for IPv4"
                       : "Invalid FEC Prefix Element: PreLen %d is too large for IPv6",
                   hdr->prefixBits());
  }
  const Ovo::IpGenPrefix prefix = hdr->prefix();
  LDP_TRACE_TO(
      traceParse, 6,
      "         Prefix FEC Element, Address Family: %hu, PreLen: %d (%u octets), Prefix: %s",
      familyNumber(*hdr), hdr->prefixBits(), hdr->prefixOctets(), prefix.stringValue().charPtr());
  *fec = Mpls::FwdEqvClass::forPrefix(prefix);
  cursor += hdr->elementOctets();
  return success_;
}

// Host address element at `cursor`, which is below `end`.
LdpStatusCode parseHostAddrElement(LdpFecTlvParser* parser, uint32_t& cursor, uint32_t end,
                                   Mpls::FwdEqvClass* fec) {
  if (end - cursor < sizeof(LdpFecTlvHostAddressElementHdr)) {
    return failure(parser, malformedTlv_,
                   "Invalid FEC Host Address Element: TLV value is too small");
  }
  const auto* hdr = overlay<LdpFecTlvHostAddressElementHdr>(parser->pkt()->front() + cursor);
  if (!hdr->familyKnown()) {
    return failure(parser, unsupportedAddressFamily_,
                   "Invalid FEC Host Address Element address family 0x%hx", familyNumber(*hdr));
  }
  const uint32_t remaining = end - cursor - 4;
  if (hdr->hostAddrLen() > remaining) {
    return failure(parser, malformedTlv_,
                   "Invalid FEC Host Address Element: hostAddrLen: %d, remaining packet octets: %u",
                   hdr->hostAddrLen(), remaining);
  }
  if (hdr->hostAddrLen() != familyOctets(hdr->family())) {
    return failure(parser, malformedTlv_,
                   hdr->family() == Ovo::AddressFamily::ipv4
                       ? "Invalid FEC Host Addr Element: hostAddrLen %d is not valid IPv4 size"
                       : "Invalid FEC Host Addr Element: hostAddrLen %d is not valid IPv6 size",
                   hdr->hostAddrLen());
  }
  const Ovo::IpGenAddr addr = hdr->hostAddr();
  LDP_TRACE_TO(traceParse, 6,
               "         Host Address FEC Element, Address Family: %hu, HostAddrLen: %d, Addr: %s",
               familyNumber(*hdr), hdr->hostAddrLen(), addr.stringValue().charPtr());
  *fec = Mpls::FwdEqvClass::forHost(addr);
  cursor += hdr->elementOctets();
  return success_;
}

// The form of a prefix or host FEC as a prefix: a host address has its full length.
Zel::String prefixForm(const Mpls::FwdEqvClass& fec) {
  if (fec.isPrefix()) return fec.prefix().stringValue();
  if (fec.isHost())
    return Ovo::IpGenPrefix(fec.hostAddr(), fec.hostAddr().bitLength()).stringValue();
  return fec.stringValue();
}

}  // namespace

// --- Elements

Zel::String LdpFecTlvElement::stringValue() const {
  ZEL_ASSERT_TEXT(false, "Internal Error. To be implemented in derived classes");
  return Zel::String();
}

const Mpls::FwdEqvClass& LdpFecTlvElement::fwdEqvCls() const {
  ZEL_ASSERT_TEXT(type_ == wildcardElement_ || type_ == prefixElement_ || type_ == hostAddrElement_,
                  "fwdEqvCls valid for Ip Fec Tlvs only");
  static const Mpls::FwdEqvClass none;
  const auto* fec = std::get_if<Mpls::FwdEqvClass>(&payload_);
  return fec ? *fec : none;
}

void LdpFecTlvElement::fwdEqvClsIs(const Mpls::FwdEqvClass& fec) {
  ZEL_ASSERT_TEXT(type_ == wildcardElement_ || type_ == prefixElement_ || type_ == hostAddrElement_,
                  "fwdEqvCls valid for Ip Fec Tlvs only");
  payload_ = fec;
}

const PwFwdEqvClassInfo& LdpFecTlvElement::pwFwdEqvCls() const {
  ZEL_ASSERT_TEXT(type_ == pwIdElement_, "pwFwdEqvCls valid for Pw Fec Tlvs only");
  static const PwFwdEqvClassInfo none;
  const auto* pw = std::get_if<PwFwdEqvClassInfo>(&payload_);
  return pw ? *pw : none;
}

void LdpFecTlvElement::pwFwdEqvClsIs(const PwFwdEqvClassInfo& pw) {
  ZEL_ASSERT_TEXT(type_ == pwIdElement_, "pwFwdEqvCls valid for Pw Fec Tlvs only");
  payload_ = pw;
}

const LdpP2mpFecElement& LdpFecTlvElement::p2mpFecElem() const {
  ZEL_ASSERT_TEXT(type_ == p2mpElement_, "p2mpFecElem valid for P2mp Fec Tlvs only");
  static const LdpP2mpFecElement none;
  const auto* p2mp = std::get_if<LdpP2mpFecElement>(&payload_);
  return p2mp ? *p2mp : none;
}

void LdpFecTlvElement::p2mpFecElemIs(const LdpP2mpFecElement& p2mp) {
  ZEL_ASSERT_TEXT(type_ == p2mpElement_, "p2mpFecElem valid for P2mp Fec Tlvs only");
  payload_ = p2mp;
}

Zel::String LdpFecTlvWildcardElement::stringValue() const { return "Wildcard"; }

Zel::String LdpFecTlvPrefixElement::stringValue() const { return prefixForm(fwdEqvCls()); }

Zel::String LdpFecTlvHostAddrElement::stringValue() const { return prefixForm(fwdEqvCls()); }

Zel::String LdpFecTlvP2mpElement::stringValue() const {
  ZEL_ASSERT(type() == p2mpElement_);
  const LdpP2mpFecElement& p2mp = p2mpFecElem();
  std::string s(p2mp.rootIp().stringValue().view());
  s += '_';
  char octet[8];
  for (char c : p2mp.opaqueStr().view()) {
    std::snprintf(octet, sizeof octet, "\\x%02x", static_cast<unsigned>(static_cast<uint8_t>(c)));
    s += octet;
  }
  return Zel::String(s);
}

Zel::String LdpFecTlvPwIdElement::stringValue() const { return pwFwdEqvCls().stringValue(); }

Zel::Ptr<LdpFecTlvWildcardElement> ldpFecTlvWildcardElementFactory() {
  return Zel::allocate<LdpFecTlvWildcardElement>();
}

Zel::Ptr<LdpFecTlvPrefixElement> ldpFecTlvPrefixElementFactory() {
  return Zel::allocate<LdpFecTlvPrefixElement>();
}

Zel::Ptr<LdpFecTlvHostAddrElement> ldpFecTlvHostAddrElementFactory() {
  return Zel::allocate<LdpFecTlvHostAddrElement>();
}

Zel::Ptr<LdpFecTlvP2mpElement> ldpFecTlvP2mpElementFactory() {
  return Zel::allocate<LdpFecTlvP2mpElement>();
}

Zel::Ptr<LdpFecTlvPwIdElement> ldpFecTlvPwIdElementFactory() {
  return Zel::allocate<LdpFecTlvPwIdElement>();
}

// --- The parser

Zel::Ptr<LdpFecTlvParser> ldpFecTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset,
                                                 const Zel::Ptr<const LdpProtoParam>& protoParam) {
  return Zel::allocate<LdpFecTlvParser>(pkt, offset, protoParam);
}

// The base's constructor has laid the TLV header over the packet.
LdpFecTlvParser::LdpFecTlvParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset,
                                 const Zel::Ptr<const LdpProtoParam>& protoParam)
    : LdpTlvParser(pkt, offset), ldpProtoParam_(protoParam) {
  handleInitialized();
}

LdpFecTlvParser::~LdpFecTlvParser() {
  for (size_t i = 0; i < fecElement_.indexEnd(); ++i) {
    if (const LdpFecTlvElement* const* e = fecElement_.find(i)) (*e)->deleteRef();
  }
}

void LdpFecTlvParser::handleInitialized() { parseElements(); }

Zel::Ptr<const LdpFecTlvElement> LdpFecTlvParser::fecElement(uint32_t index) const {
  const LdpFecTlvElement* const* e = fecElement_.find(index);
  return e ? Zel::Ptr<const LdpFecTlvElement>(*e) : nullptr;
}

void LdpFecTlvParser::fecElementIs(uint32_t index,
                                   const Zel::Ptr<const LdpFecTlvElement>& element) {
  if (!element) {
    fecElementDel(index);
    return;
  }
  const LdpFecTlvElement* const* slot = fecElement_.find(index);
  const LdpFecTlvElement* old = slot ? *slot : nullptr;
  if (old == element.ptr()) return;
  element->newRef();
  fecElement_.set(index, element.ptr());
  if (old) old->deleteRef();
  fecElementNotify(index);
}

void LdpFecTlvParser::fecElementDel(uint32_t index) {
  const LdpFecTlvElement* const* slot = fecElement_.find(index);
  if (!slot) return;
  const LdpFecTlvElement* old = *slot;
  fecElement_.del(index);
  old->deleteRef();
  fecElementNotify(index);
}

void LdpFecTlvParser::fecElementDelAll() {
  for (size_t i = fecElement_.indexEnd(); i-- > 0;) fecElementDel(static_cast<uint32_t>(i));
}

void LdpFecTlvParser::fecElementNotify(uint32_t index) {
  LDP_TRACE_TO(traceParse, 8, "      FEC TLV element %" PRIu32 " %s", index,
               fecElement_.find(index) ? "stored" : "removed");
}

uint32_t LdpFecTlvParser::fecElements() const { return static_cast<uint32_t>(fecElement_.size()); }

Zel::String LdpFecTlvParser::stringValue() const {
  if (!valid()) return Zel::String("Error FecTlv: ") + reason_.view();
  std::string s = "FecTlv(" + std::to_string(fecElements()) + "): ";
  const char* separator = "";
  for (size_t i = 0; i < fecElement_.indexEnd(); ++i) {
    if (const LdpFecTlvElement* const* e = fecElement_.find(i)) {
      s += separator;
      s += (*e)->stringValue().view();
      separator = ", ";
    }
  }
  return Zel::String(s);
}

void LdpFecTlvParser::parseElements() {
  ZEL_ASSERT(pkt());
  const size_t frontBytes = pkt()->frontBytes();
  ZEL_ASSERT_TEXT(offset() <= frontBytes, "offset_ <= pkt_->frontBytes()");
  fecElementDelAll();
  hasWildcardFecElement_ = false;
  statusCode_ = success_;
  if (!reason_.empty()) reason_ = Zel::String();

  if (frontBytes - offset() < sizeof(LdpTlvHdr) ||
      frontBytes - offset() - sizeof(LdpTlvHdr) < header()->length()) {
    statusCode_ = failure(this, badTlvLength_, "FEC TLV is too small, size: %zu", frontBytes);
    return;
  }
  const uint32_t begin = offset() + static_cast<uint32_t>(sizeof(LdpTlvHdr));
  const uint32_t end = begin + header()->length();
  LDP_TRACE_TO(traceParse, 6, "   Parse FEC TLV frontBytes: %zu, offset: %" PRIu32 ", TLV len: %u",
               frontBytes, offset(), unsigned{header()->length()});

  const bool strict = !ldpProtoParam_ || ldpProtoParam_->fecTlvStrictPrefixWildcardOnlyElement();
  const uint8_t* front = pkt()->front();
  uint32_t cursor = begin;
  for (uint32_t index = 0; cursor < end; ++index) {
    const uint32_t at = cursor;
    const auto* elementHdr = overlay<LdpFecTlvElementHdr>(front + cursor);
    const uint8_t type = elementHdr->typeField().raw();
    LDP_TRACE_TO(traceParse, 6,
                 "      Msg/TLV/FecTlvElement %" PRIu32 ": offset %" PRIu32 ", type 0x%02x", index,
                 cursor, unsigned{type});
    LdpStatusCode rc = success_;
    Zel::Ptr<LdpFecTlvElement> element;
    switch (type) {
      case wildcardElement_: {
        cursor += 1;
        if (strict && (index != 0 || cursor != end)) {
          rc = failure(this, unknownFec_,
                       "FEC TLV Wildcard Element must be the only FEC Element in the FEC TLV");
          break;
        }
        LDP_TRACE_TO(traceParse, 6, "         Wildcard FEC Element");
        Zel::Ptr<LdpFecTlvWildcardElement> e = ldpFecTlvWildcardElementFactory();
        e->fwdEqvClsIs(Mpls::FwdEqvClass::wildcard());
        element = e;
        hasWildcardFecElement_ = true;
        break;
      }
      case prefixElement_: {
        Mpls::FwdEqvClass fec;
        rc = parsePrefixElement(this, cursor, end, &fec);
        if (rc != success_) break;
        Zel::Ptr<LdpFecTlvPrefixElement> e = ldpFecTlvPrefixElementFactory();
        e->fwdEqvClsIs(fec);
        element = e;
        break;
      }
      case hostAddrElement_: {
        Mpls::FwdEqvClass fec;
        rc = parseHostAddrElement(this, cursor, end, &fec);
        if (rc != success_) break;
        Zel::Ptr<LdpFecTlvHostAddrElement> e = ldpFecTlvHostAddrElementFactory();
        e->fwdEqvClsIs(fec);
        element = e;
        break;
      }
      case p2mpElement_: {
        if (index != 0) {
          rc = failure(this, unknownFec_,
                       "FEC TLV P2MP Element must be the only FEC Element in the FEC TLV");
          break;
        }
        Zel::Ptr<LdpFecTlvP2mpElement> e = ldpFecTlvP2mpElementFactory();
        rc = parseFecTlvP2mpElement(this, cursor, end, *e);
        element = e;
        break;
      }
      case pwIdElement_: {
        Zel::Ptr<LdpFecTlvPwIdElement> e = ldpFecTlvPwIdElementFactory();
        rc = parseFecTlvPwIdElement(this, cursor, end, *e);
        if (rc != success_) break;
        // A PW id element without a PW id stands for every PW of its group.
        if (e->pwFwdEqvCls().fwdEqvClass().pwId() == Pseudowire::PseudowireId()) {
          hasWildcardFecElement_ = true;
        }
        element = e;
        break;
      }
      default:
        rc = failure(this, unknownFec_, "Unhandled FEC TLV Element type 0x%02hhx", type);
        break;
    }
    if (rc != success_) {
      statusCode_ = rc;
      return;
    }
    ZEL_ASSERT(cursor > at && cursor <= end);
    // Inline storage full: make room for the rest at once. Every element but a
    // wildcard takes at least 4 octets, which bounds the count of those left.
    if (index == fecElement_.capacity()) fecElement_.reserve(index + 1 + (end - cursor) / 4);
    fecElementIs(index, element);
  }
  LDP_TRACE_TO(traceParse, 6, "FEC TLV parsed %" PRIu32 " elements", fecElements());
}

LdpStatusCode parseFecTlvP2mpElement(LdpFecTlvParser* parser, uint32_t& cursor, uint32_t end,
                                     LdpFecTlvP2mpElement& element) {
  ZEL_ASSERT(cursor <= end && end <= parser->pkt()->frontBytes());
  if (end - cursor < sizeof(LdpFecTlvP2mpElementHdr)) {
    return failure(parser, malformedTlv_, "Invalid FEC P2MP Element: TLV value is too small");
  }
  const auto* hdr = overlay<LdpFecTlvP2mpElementHdr>(parser->pkt()->front() + cursor);
  const uint32_t remaining = end - cursor - 4;
  const unsigned rootLen = hdr->rootIpLenOctets();
  if (rootLen > remaining) {
    return failure(parser, malformedTlv_,
                   "Invalid FEC P2MP Element: RootIp Len Octets: %d, remaining packet octets: %u",
                   hdr->rootIpLenOctets(), remaining);
  }
  if (hdr->family() == Ovo::AddressFamily::ipv4) {
    if (rootLen > 4) {
      return failure(parser, malformedTlv_,
                     "Invalid FEC P2MP Element: RootIpLen %d is too large for IPv4",
                     hdr->rootIpLenOctets());
    }
  } else if (hdr->family() == Ovo::AddressFamily::ipv6) {
    if (rootLen > 16) {
      return failure(parser, malformedTlv_,
                     "Invalid FEC P2MP Element: RootIpLen %d is too large for IPv6",
                     hdr->rootIpLenOctets());
    }
  } else {
    return failure(parser, unsupportedAddressFamily_,
                   "Invalid FEC P2MP Element address family 0x%hx", familyNumber(*hdr));
  }
  if (remaining - rootLen < sizeof(LdpFecTlvP2mpOpaqueLength)) {
    return failure(parser, malformedTlv_,
                   "Invalid FEC P2MP Element: Packet length is too small to read opaqueLength");
  }
  // The element is the FEC TLV's only one, so its opaque values end with the TLV.
  const uint32_t opaqueLen = hdr->opaqueLength().opaqueLength();
  if (opaqueLen != remaining - rootLen - sizeof(LdpFecTlvP2mpOpaqueLength)) {
    return failure(parser, malformedTlv_,
                   "Invalid FEC P2MP Element: Opaque length and Opaque value dont match");
  }
  const LdpP2mpFecElement p2mp(
      hdr->rootIp(), Zel::String(reinterpret_cast<const char*>(hdr->opaqueValue()), opaqueLen));
  LDP_TRACE_TO(
      traceParse, 6,
      "         P2MP FEC Element, Address Family: %hu, RootIpLen: %u, Root: %s, OpaqueLen: "
      "%" PRIu32,
      familyNumber(*hdr), rootLen, p2mp.rootIp().stringValue().charPtr(), opaqueLen);
  element.p2mpFecElemIs(p2mp);
  cursor += hdr->elementOctets();
  return success_;
}

}  // namespace Ldp
