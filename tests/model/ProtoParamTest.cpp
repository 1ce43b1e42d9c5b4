// LdpProtoParam: attribute ids as other processes see them, the defaults, and
// notification of the switches.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "model/LdpProtoParam.h"

using namespace Ldp;

namespace {

TEST(LdpProtoParam, AttributeIdsAndDefaults) {
  const Zel::ZelType* t = Zel::ZelType::lookup("Ldp::LdpProtoParam");
  ASSERT_NE(t, nullptr);
  // Ids 258 on, in this order; 283..287 are the switches, the rest constants.
  std::istringstream names(
      "ldpUdpPort ldpTcpPort ldpPktBufferSize ldpProtocolVersion defaultMaxPduLength "
      "msgTypeIgnoreBegin tlvTypeIgnoreBegin infiniteHelloHoldTime ldpNewAdjHelloWaitTime "
      "ldpNewSessionWaitTime defaultBasicHelloInterval defaultBasicHelloHoldTime "
      "defaultTargetHelloInterval defaultTargetHelloHoldTime defaultSessionKeepAliveTime "
      "defaultRetryBackoffTime defaultMaxRetryBackoffTime ldpNonFatalSessionRetryTime "
      "ldpImmediateHelloWaitTime ldpIpTos ldpIpChangeSessionRetryTime ldpIdChangeSessionRetryTime "
      "ldpMldpChangeSessionRetryTime ldpTcpConnExponentialBackoffRetries "
      "ldpMaxStartListenerRetries tlvIpTransportAddrIncude tlvIpTransportUnknownBit "
      "tlvConfigSeqNumInclude tlvConfigSeqNumUnknownBit fecTlvStrictPrefixWildcardOnlyElement "
      "serviceName defaultGrHoldingTimeout defaultGrReconnectTimeout "
      "defaultGrNeighborLivenessTimeout defaultGrMaxRecoveryTimeout ldpProtoConfigSmDelay "
      "ldpRootSmDelay");
  Zel::AttributeId id = 258;
  for (std::string name; names >> name;) {
    const Zel::AttrDesc* a = t->attr(name);
    ASSERT_NE(a, nullptr) << name;
    EXPECT_EQ(a->id, id) << name;
    EXPECT_EQ(a->kind,
              id >= 283 && id <= 287 ? Zel::AttrKind::mutableAttr : Zel::AttrKind::constant)
        << name;
    ++id;
  }
  EXPECT_EQ(id, 295u);
  EXPECT_EQ(t->ownAttrs().size(), 37u);

  Zel::Ptr<LdpProtoParam> p = ldpProtoParamFactory("ldp");
  EXPECT_TRUE(p->tlvIpTransportAddrIncude());
  EXPECT_FALSE(p->tlvIpTransportUnknownBit());
  EXPECT_TRUE(p->tlvConfigSeqNumInclude());
  EXPECT_FALSE(p->tlvConfigSeqNumUnknownBit());
  EXPECT_TRUE(p->fecTlvStrictPrefixWildcardOnlyElement());
  EXPECT_EQ(LdpProtoParam::ldpPktBufferSize(), 9600u);
  EXPECT_EQ(LdpProtoParam::infiniteHelloHoldTime(), 0xFFFF);
  EXPECT_EQ(LdpProtoParam::ldpIpTos(), 192);
  // Reflection reads values through their string forms.
  EXPECT_EQ(t->attr("ldpUdpPort")->read(*p), "646");
  EXPECT_EQ(t->attr("ldpNewAdjHelloWaitTime")->read(*p), "0.1");
  EXPECT_EQ(t->attr("defaultMaxRetryBackoffTime")->read(*p), "120");
  EXPECT_EQ(t->attr("serviceName")->read(*p), "'ldp'");
}

class StrictWatch : public LdpProtoParam::NotifieeConst {
 public:
  explicit StrictWatch(const Zel::Ptr<const LdpProtoParam>& p) { notifierIs(p); }
  void onFecTlvStrictPrefixWildcardOnlyElement() override { ++strict; }
  void onTlvConfigSeqNumInclude() override { ++other; }
  int strict = 0;
  int other = 0;
};

TEST(LdpProtoParam, SwitchChangesNotify) {
  Zel::Ptr<LdpProtoParam> p = ldpProtoParamFactory("ldp");
  StrictWatch w(p);
  p->fecTlvStrictPrefixWildcardOnlyElementIs(true);  // unchanged: no notification
  EXPECT_EQ(w.strict, 0);
  p->fecTlvStrictPrefixWildcardOnlyElementIs(false);
  EXPECT_FALSE(p->fecTlvStrictPrefixWildcardOnlyElement());
  EXPECT_EQ(w.strict, 1);
  EXPECT_EQ(w.other, 0);
}

}  // namespace
