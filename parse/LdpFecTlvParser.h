#pragma once
// The FEC TLV parser: reads one FEC TLV (0x0100) of a received message and turns
// each FEC element into an element object: an Mpls::FwdEqvClass for wildcard,
// prefix and host-address elements, a PW FEC for the PW id element, and an
// LdpP2mpFecElement for the P2MP element. The first failing element ends parsing;
// elements stored before it remain, and statusCode()/reason() describe the failure.

#include <cstdint>
#include <variant>

#include "fec/LdpP2mpFec.h"
#include "model/LdpProtoParam.h"
#include "parse/LdpTlvParser.h"
#include "platform/mpls/FwdEqvClass.h"
#include "platform/zel/Recycled.h"
#include "platform/zel/SmallVec.h"
#include "pw/PwTypes.h"

namespace Ldp {

// One FEC element as parsed; immutable once stored in a parser. It holds one of
// three payloads, readable only for the matching element kinds (reading another is
// a programming error).
class LdpFecTlvElement : public Zel::PtrInterface, public Zel::Recycled {
 public:
  LdpFecElementType type() const { return type_; }
  // Each element kind has its own form; the base's must never be called.
  virtual Zel::String stringValue() const;

  // Wildcard, prefix and host-address elements.
  const Mpls::FwdEqvClass& fwdEqvCls() const;
  void fwdEqvClsIs(const Mpls::FwdEqvClass& fec);
  // The PW id element.
  const PwFwdEqvClassInfo& pwFwdEqvCls() const;
  void pwFwdEqvClsIs(const PwFwdEqvClassInfo& pw);
  // The P2MP element.
  const LdpP2mpFecElement& p2mpFecElem() const;
  void p2mpFecElemIs(const LdpP2mpFecElement& p2mp);

 protected:
  explicit LdpFecTlvElement(LdpFecElementType type) : type_(type) {}
  ~LdpFecTlvElement() override = default;

 private:
  LdpFecElementType type_;
  std::variant<std::monostate, Mpls::FwdEqvClass, PwFwdEqvClassInfo, LdpP2mpFecElement> payload_;
};

#define LDP_FEC_TLV_ELEMENT(Name, Type)            \
  class Name : public LdpFecTlvElement {           \
   public:                                         \
    Zel::String stringValue() const override;      \
                                                   \
   protected:                                      \
    Name() : LdpFecTlvElement(Type) {}             \
    template <class T, class... A>                 \
    friend Zel::Ptr<T> Zel::allocate(A&&... args); \
  }

LDP_FEC_TLV_ELEMENT(LdpFecTlvWildcardElement, wildcardElement_);
LDP_FEC_TLV_ELEMENT(LdpFecTlvPrefixElement, prefixElement_);
LDP_FEC_TLV_ELEMENT(LdpFecTlvHostAddrElement, hostAddrElement_);
LDP_FEC_TLV_ELEMENT(LdpFecTlvP2mpElement, p2mpElement_);
LDP_FEC_TLV_ELEMENT(LdpFecTlvPwIdElement, pwIdElement_);
#undef LDP_FEC_TLV_ELEMENT

// Empty elements of each kind.
Zel::Ptr<LdpFecTlvWildcardElement> ldpFecTlvWildcardElementFactory();
Zel::Ptr<LdpFecTlvPrefixElement> ldpFecTlvPrefixElementFactory();
Zel::Ptr<LdpFecTlvHostAddrElement> ldpFecTlvHostAddrElementFactory();
Zel::Ptr<LdpFecTlvP2mpElement> ldpFecTlvP2mpElementFactory();
Zel::Ptr<LdpFecTlvPwIdElement> ldpFecTlvPwIdElementFactory();

class LdpFecTlvParser : public LdpTlvParser {
 public:
  // Protocol settings; null means strict handling of the wildcard element.
  const Zel::Ptr<const LdpProtoParam>& ldpProtoParam() const { return ldpProtoParam_; }

  // The elements in TLV order, index from 0 (null when absent).
  Zel::Ptr<const LdpFecTlvElement> fecElement(uint32_t index) const;
  void fecElementIs(uint32_t index, const Zel::Ptr<const LdpFecTlvElement>& element);
  void fecElementDel(uint32_t index);
  void fecElementDelAll();
  void fecElementNotify(uint32_t index);
  uint32_t fecElements() const;

  // A wildcard element, or a PW id element naming no PW id, was seen.
  bool hasWildcardFecElement() const { return hasWildcardFecElement_; }
  void hasWildcardFecElementIs(bool b) { hasWildcardFecElement_ = b; }

  LdpStatusCode statusCode() const { return statusCode_; }
  void statusCodeIs(LdpStatusCode code) { statusCode_ = code; }
  const Zel::String& reason() const { return reason_; }
  void reasonIs(const Zel::String& reason) { reason_ = reason; }
  bool valid() const { return statusCode_ == success_; }

  Zel::String stringValue() const;

 protected:
  LdpFecTlvParser(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset,
                  const Zel::Ptr<const LdpProtoParam>& protoParam);
  ~LdpFecTlvParser() override;
  template <class T, class... A>
  friend Zel::Ptr<T> Zel::allocate(A&&... args);

  void handleInitialized();
  void parseElements();

 private:
  Zel::Ptr<const LdpProtoParam> ldpProtoParam_;
  bool hasWildcardFecElement_ = false;
  LdpStatusCode statusCode_ = success_;
  Zel::String reason_;
  // The elements, each entry holding one reference. The usual one or two fit in the
  // parser itself; parseElements() sizes the one buffer that more of them need.
  Zel::SmallIndexColl<const LdpFecTlvElement*, 2> fecElement_;
};

Zel::Ptr<LdpFecTlvParser> ldpFecTlvParserFactory(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset,
                                                 const Zel::Ptr<const LdpProtoParam>& protoParam);

// Parse one element from `cursor` (a packet offset) up to `end`, advance cursor past
// it, and return the verdict; failures also set the parser's reason. A P2MP element
// is its FEC TLV's only element: its opaque values must end exactly at `end`.
LdpStatusCode parseFecTlvP2mpElement(LdpFecTlvParser* parser, uint32_t& cursor, uint32_t end,
                                     LdpFecTlvP2mpElement& element);
LdpStatusCode parseFecTlvPwIdElement(LdpFecTlvParser* parser, uint32_t& cursor, uint32_t end,
                                     LdpFecTlvPwIdElement& element);

}  // namespace Ldp
