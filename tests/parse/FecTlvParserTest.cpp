// The FEC TLV parser: every element kind but the PW id (PwIdElementTest), each
// failure with its status and text, the wildcard rules under both settings, the
// P2MP element's extent, the trace, the element collection and the assertions
// that guard the payloads.
//
// FEC TLVs are built inside a Label Mapping message of a PDU, and the packet has
// three leading octets, so packet offsets differ from PDU offsets.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parse/LdpFecTlvParser.h"
#include "tests/parse/ParserChecks.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;
using LdpTest::genericLspId;
using LdpTest::hostElement;
using LdpTest::p2mpElement;
using LdpTest::PduBuilder;
using LdpTest::prefixElement;
using LdpTest::wildcardFec;
using Ovo::IpAddr;
using Ovo::IpGenAddr;
using Ovo::IpGenPrefix;
using Bytes = std::vector<uint8_t>;

namespace {

constexpr size_t lead = 3;
// Packet offset of the FEC TLV: the lead, the PDU header and the message header.
constexpr uint32_t fecTlvOffset = lead + 10 + 8;

PduBuilder mapping() {
  return PduBuilder(LdpIdentifier(0x0A000001, 0)).message(LdpLabelMapping_, 9);
}

Zel::Ptr<LdpFecTlvParser> parse(const PduBuilder& pdu,
                                const Zel::Ptr<const LdpProtoParam>& param = nullptr) {
  return ldpFecTlvParserFactory(pdu.pkt(lead), fecTlvOffset, param);
}

Zel::Ptr<LdpFecTlvParser> parse(const std::vector<Bytes>& elements,
                                const Zel::Ptr<const LdpProtoParam>& param = nullptr) {
  return parse(mapping().fec(elements), param);
}

Zel::Ptr<const LdpProtoParam> lenient() {
  Zel::Ptr<LdpProtoParam> p = ldpProtoParamFactory("ldp");
  p->fecTlvStrictPrefixWildcardOnlyElementIs(false);
  return p;
}

IpGenAddr v4(uint32_t a) { return IpGenAddr(IpAddr(a)); }

std::vector<std::string> forms(const LdpFecTlvParser& p) {
  std::vector<std::string> v;
  for (uint32_t i = 0; i < p.fecElements(); ++i) v.push_back(p.fecElement(i)->stringValue().str());
  return v;
}

// Parsing `elements` fails with `code` and `reason`, keeping the first `kept`.
void fails(const std::vector<Bytes>& elements, LdpStatusCode code, const char* reason,
           uint32_t kept = 0, const Zel::Ptr<const LdpProtoParam>& param = nullptr) {
  SCOPED_TRACE(reason);
  Zel::Ptr<LdpFecTlvParser> p = parse(elements, param);
  EXPECT_FALSE(p->valid());
  EXPECT_EQ(p->statusCode(), code);
  EXPECT_EQ(p->reason(), reason);
  EXPECT_EQ(p->fecElements(), kept);
  EXPECT_EQ(p->stringValue(), std::string("Error FecTlv: ") + reason);
}

TEST(FecTlvParser, PrefixAndHostElements) {
  const Bytes v6Host = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  Zel::Ptr<LdpFecTlvParser> p = parse({
      prefixElement(1, 24, {10, 1, 2}),
      prefixElement(1, 23, {10, 1, 3}),  // the bit past PreLen is cleared
      prefixElement(1, 0, {}),
      prefixElement(1, 32, {192, 168, 0, 1}),
      prefixElement(2, 32, {0x20, 0x01, 0x0d, 0xb8}),
      hostElement(1, {10, 0, 0, 1}),
      hostElement(2, v6Host),
  });
  ASSERT_TRUE(p->valid()) << p->reason();
  EXPECT_FALSE(p->hasWildcardFecElement());
  EXPECT_EQ(forms(*p),
            (std::vector<std::string>{"10.1.2.0/24", "10.1.2.0/23", "0.0.0.0/0", "192.168.0.1/32",
                                      "2001:db8::/32", "10.0.0.1/32", "2001:db8::1/128"}));
  EXPECT_EQ(p->fecElement(0)->type(), prefixElement_);
  EXPECT_EQ(p->fecElement(0)->fwdEqvCls(),
            Mpls::FwdEqvClass::forPrefix(IpGenPrefix(v4(0x0A010200), 24)));
  EXPECT_EQ(p->fecElement(5)->type(), hostAddrElement_);
  EXPECT_EQ(p->fecElement(5)->fwdEqvCls(), Mpls::FwdEqvClass::forHost(v4(0x0A000001)));
  EXPECT_FALSE(p->fecElement(7));
}

TEST(FecTlvParser, PrefixAndHostFailures) {
  fails({prefixElement(1, 8, {10}), {0x02, 0x00, 0x01}}, malformedTlv_,
        "Invalid FEC Prefix Element: TLV value is too small", 1);
  fails({prefixElement(3, 8, {10})}, unsupportedAddressFamily_,
        "Invalid FEC Prefix Element address family 0x3");
  fails({prefixElement(1, 24, {10, 1})}, malformedTlv_,
        "Invalid FEC Prefix Element: prefix bits: 24, remaining packet octets: 2");
  fails({prefixElement(1, 33, {10, 1, 2, 3, 4})}, malformedTlv_,
        "Invalid FEC Prefix Element: PreLen 33 is too large for IPv4");
  fails({prefixElement(2, 129, Bytes(17, 0))}, malformedTlv_,
        "Invalid FEC Prefix Element: PreLen 129 is too large for IPv6");
  fails({{0x03, 0x00}}, malformedTlv_, "Invalid FEC Host Address Element: TLV value is too small");
  fails({hostElement(0xABCD, {10, 0, 0, 1})}, unsupportedAddressFamily_,
        "Invalid FEC Host Address Element address family 0xabcd");
  fails({{0x03, 0x00, 0x01, 4, 10, 0, 0}}, malformedTlv_,
        "Invalid FEC Host Address Element: hostAddrLen: 4, remaining packet octets: 3");
  fails({hostElement(1, {10, 0, 0})}, malformedTlv_,
        "Invalid FEC Host Addr Element: hostAddrLen 3 is not valid IPv4 size");
  fails({prefixElement(1, 8, {10}), hostElement(2, {10, 0, 0, 1})}, malformedTlv_,
        "Invalid FEC Host Addr Element: hostAddrLen 4 is not valid IPv6 size", 1);
  fails({prefixElement(1, 8, {10}), {0x05, 0x01, 0x00, 0x01}}, unknownFec_,
        "Unhandled FEC TLV Element type 0x05", 1);
}

TEST(FecTlvParser, WildcardMustStandAloneUnlessLenient) {
  Zel::Ptr<LdpFecTlvParser> p = parse({wildcardFec()});
  ASSERT_TRUE(p->valid()) << p->reason();
  EXPECT_TRUE(p->hasWildcardFecElement());
  EXPECT_EQ(p->fecElement(0)->type(), wildcardElement_);
  EXPECT_EQ(p->fecElement(0)->fwdEqvCls(), Mpls::FwdEqvClass::wildcard());
  EXPECT_EQ(p->stringValue(), "FecTlv(1): Wildcard");

  // Strict without protocol settings, and by default.
  const char* alone = "FEC TLV Wildcard Element must be the only FEC Element in the FEC TLV";
  for (const Zel::Ptr<const LdpProtoParam>& param :
       {Zel::Ptr<const LdpProtoParam>(),
        Zel::Ptr<const LdpProtoParam>(ldpProtoParamFactory("x"))}) {
    fails({wildcardFec(), prefixElement(1, 8, {10})}, unknownFec_, alone, 0, param);
    fails({prefixElement(1, 8, {10}), wildcardFec()}, unknownFec_, alone, 1, param);
  }

  p = parse({wildcardFec(), prefixElement(1, 8, {10})}, lenient());
  ASSERT_TRUE(p->valid()) << p->reason();
  EXPECT_TRUE(p->hasWildcardFecElement());
  EXPECT_EQ(p->stringValue(), "FecTlv(2): Wildcard, 10.0.0.0/8");
  EXPECT_EQ(p->ldpProtoParam()->fecTlvStrictPrefixWildcardOnlyElement(), false);
}

TEST(FecTlvParser, P2mpElement) {
  Zel::Ptr<LdpFecTlvParser> p = parse({p2mpElement(1, {10, 0, 0, 1}, genericLspId(5))});
  ASSERT_TRUE(p->valid()) << p->reason();
  ASSERT_EQ(p->fecElements(), 1u);
  const LdpFecTlvElement& e = *p->fecElement(0);
  EXPECT_EQ(e.type(), p2mpElement_);
  EXPECT_EQ(e.p2mpFecElem().rootIp(), v4(0x0A000001));
  EXPECT_EQ(e.p2mpFecElem().opaqueStr(), Zel::String("\x01\x00\x04\x00\x00\x00\x05", 7));
  EXPECT_EQ(e.stringValue(), "10.0.0.1_\\x01\\x00\\x04\\x00\\x00\\x00\\x05");
  EXPECT_FALSE(p->hasWildcardFecElement());

  p = parse({p2mpElement(1, {10, 0, 0, 1}, {0xAB})});
  EXPECT_EQ(p->stringValue(), "FecTlv(1): 10.0.0.1_\\xab");
  // IPv6 root, no opaque values; a short IPv4 root is zero-filled.
  p = parse({p2mpElement(2, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}, {})});
  EXPECT_EQ(p->stringValue(), "FecTlv(1): 2001:db8::2_");
  p = parse({p2mpElement(1, {10, 9}, {0xFF})});
  EXPECT_EQ(p->stringValue(), "FecTlv(1): 10.9.0.0_\\xff");

  const Bytes root = {10, 0, 0, 1};
  fails({prefixElement(1, 8, {10}), p2mpElement(1, root, {})}, unknownFec_,
        "FEC TLV P2MP Element must be the only FEC Element in the FEC TLV", 1);
  fails({{0x06, 0x00, 0x01}}, malformedTlv_, "Invalid FEC P2MP Element: TLV value is too small");
  fails({{0x06, 0x00, 0x01, 4, 10, 0, 0}}, malformedTlv_,
        "Invalid FEC P2MP Element: RootIp Len Octets: 4, remaining packet octets: 3");
  fails({p2mpElement(1, {10, 0, 0, 1, 0}, {})}, malformedTlv_,
        "Invalid FEC P2MP Element: RootIpLen 5 is too large for IPv4");
  fails({p2mpElement(2, Bytes(17, 1), {})}, malformedTlv_,
        "Invalid FEC P2MP Element: RootIpLen 17 is too large for IPv6");
  fails({p2mpElement(0x10, root, {})}, unsupportedAddressFamily_,
        "Invalid FEC P2MP Element address family 0x10");
  fails({{0x06, 0x00, 0x01, 4, 10, 0, 0, 1, 0x00}}, malformedTlv_,
        "Invalid FEC P2MP Element: Packet length is too small to read opaqueLength");
  const char* mismatch = "Invalid FEC P2MP Element: Opaque length and Opaque value dont match";
  fails({p2mpElement(1, root, {0xAB}, 2)}, malformedTlv_, mismatch);
  // The element runs to the TLV's end: nothing may follow it.
  fails({p2mpElement(1, root, {0xAB}), wildcardFec()}, malformedTlv_, mismatch);
}

TEST(FecTlvParser, TlvMustFitThePacket) {
  // The length field runs one octet past the packet.
  PduBuilder pdu = mapping().fec({prefixElement(1, 8, {10})}).tlvLength(6);
  const size_t size = lead + pdu.bytes().size();
  Zel::Ptr<LdpFecTlvParser> p = parse(pdu);
  EXPECT_EQ(p->statusCode(), badTlvLength_);
  EXPECT_EQ(p->reason(), "FEC TLV is too small, size: " + std::to_string(size));
  EXPECT_EQ(p->fecElements(), 0u);

  // The packet ends inside the TLV header, or right at its start.
  for (size_t cut : {size_t{2}, size_t{0}}) {
    Zel::Ptr<Ovo::Pkt> pkt = mapping().fec({wildcardFec()}).truncateTo(18 + cut).pkt(lead);
    p = ldpFecTlvParserFactory(pkt, fecTlvOffset, nullptr);
    EXPECT_EQ(p->statusCode(), badTlvLength_) << cut;
    EXPECT_EQ(p->reason(), "FEC TLV is too small, size: " + std::to_string(lead + 18 + cut));
  }

  // An empty FEC TLV is valid and has no elements; a TLV ending before the packet
  // does leaves the rest alone.
  p = parse(mapping().fec({}));
  EXPECT_TRUE(p->valid());
  EXPECT_EQ(p->stringValue(), "FecTlv(0): ");
  p = parse(mapping().fec({hostElement(1, {10, 0, 0, 1})}).raw({0xFF, 0xFF}));
  EXPECT_TRUE(p->valid()) << p->reason();

  Zel::Ptr<Ovo::Pkt> pkt = mapping().pkt(lead);
  EXPECT_DEATH(ldpFecTlvParserFactory(pkt, static_cast<uint32_t>(pkt->frontBytes() + 1), nullptr),
               "offset_ <= pkt_->frontBytes\\(\\)");
}

TEST(FecTlvParser, ElementCollection) {
  std::vector<Bytes> many;
  for (uint8_t i = 0; i < 9; ++i) many.push_back(prefixElement(1, 32, {10, 0, 0, i}));
  Zel::Ptr<LdpFecTlvParser> p = parse(many);
  ASSERT_TRUE(p->valid()) << p->reason();
  ASSERT_EQ(p->fecElements(), 9u);
  EXPECT_EQ(p->fecElement(8)->stringValue(), "10.0.0.8/32");

  // The parser holds one reference to each element, and drops it when the entry goes.
  Zel::Ptr<const LdpFecTlvElement> third = p->fecElement(2);
  EXPECT_EQ(third->references(), 2u);
  p->fecElementDel(2);
  EXPECT_EQ(third->references(), 1u);
  EXPECT_FALSE(p->fecElement(2));
  EXPECT_EQ(p->fecElements(), 8u);
  EXPECT_EQ(p->fecElement(3)->stringValue(), "10.0.0.3/32");  // the others stay put
  EXPECT_EQ(p->stringValue(),
            "FecTlv(8): 10.0.0.0/32, 10.0.0.1/32, 10.0.0.3/32, 10.0.0.4/32, "
            "10.0.0.5/32, 10.0.0.6/32, 10.0.0.7/32, 10.0.0.8/32");

  // Replacing an entry swaps the references.
  Zel::Ptr<const LdpFecTlvElement> first = p->fecElement(0);
  p->fecElementIs(0, third);
  EXPECT_EQ(third->references(), 2u);
  EXPECT_EQ(first->references(), 1u);
  p->fecElementIs(0, nullptr);
  EXPECT_EQ(third->references(), 1u);

  p->fecElementDelAll();
  EXPECT_EQ(p->fecElements(), 0u);
  Zel::Ptr<const LdpFecTlvElement> last = parse(many)->fecElement(8);
  EXPECT_EQ(last->references(), 1u);  // the parser is gone
}

class BaseFormElement : public LdpFecTlvElement {
 public:
  BaseFormElement() : LdpFecTlvElement(crLspElement_) {}
  Zel::String stringValue() const override { return LdpFecTlvElement::stringValue(); }
};

TEST(FecTlvParser, PayloadsReadableOnlyForTheirKinds) {
  Zel::Ptr<LdpFecTlvParser> p = parse({prefixElement(1, 8, {10})});
  const LdpFecTlvElement& prefix = *p->fecElement(0);
  EXPECT_DEATH(prefix.pwFwdEqvCls(), "pwFwdEqvCls valid for Pw Fec Tlvs only");
  Zel::Ptr<LdpFecTlvPwIdElement> pw = ldpFecTlvPwIdElementFactory();
  EXPECT_DEATH(pw->fwdEqvClsIs(Mpls::FwdEqvClass::wildcard()),
               "fwdEqvCls valid for Ip Fec Tlvs only");
  Zel::Ptr<LdpFecTlvP2mpElement> p2mp = ldpFecTlvP2mpElementFactory();
  EXPECT_DEATH(p2mp->fwdEqvCls(), "fwdEqvCls valid for Ip Fec Tlvs only");
  EXPECT_DEATH(prefix.p2mpFecElem(), "p2mpFecElem valid for P2mp Fec Tlvs only");
  Zel::Ptr<BaseFormElement> base = Zel::allocate<BaseFormElement>();
  EXPECT_DEATH(base->stringValue(), "Internal Error. To be implemented in derived classes");

  p2mp->p2mpFecElemIs(LdpP2mpFecElement(v4(0x0A000001), Zel::String("\x00\x10", 2)));
  EXPECT_EQ(p2mp->stringValue(), "10.0.0.1_\\x00\\x10");
}

}  // namespace
