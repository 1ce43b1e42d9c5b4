// The generated configuration types of model/LdpConfig.types: Config, its children and
// collection, and the value types LdpProtoParamSetting and LdpFecBindingInfo.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "model/LdpConfig.h"
#include "platform/zel/GenericIf.h"

using namespace Ldp;
using Strings = std::vector<std::string>;

namespace {

class ConfigWatch : public Config::NotifieeConst {
 public:
  explicit ConfigWatch(const Zel::Ptr<const Config>& c) { notifierIs(c); }
  void onIntfConfigColl(const Zel::Name& n) override {
    seen.push_back("intfConfigColl:" + n.str());
  }
  Strings take() { return std::exchange(seen, {}); }
  Strings seen;
};

Zel::AttributeId idOf(const Zel::ZelType& t, const char* attr) {
  const Zel::AttrDesc* a = t.attr(attr);
  return a ? a->id : 0;
}

TEST(Config, FactoryGivesKeyAndDefaults) {
  Zel::Ptr<Config> c = configFactory(L3::VrfName("red"));
  EXPECT_EQ(c->vrfName(), L3::VrfName("red"));
  EXPECT_EQ(c->name(), "red");
  EXPECT_FALSE(c->enabled());
  EXPECT_EQ(c->helloHoldTime(), 15);
  EXPECT_EQ(c->helloInterval(), 5);
  EXPECT_EQ(c->targetedHelloHoldTime(), 45);
  EXPECT_EQ(c->targetedHelloInterval(), 15);
  EXPECT_EQ(c->linkReadyTimeout(), 60.0);
  EXPECT_EQ(c->linkReadyDelay(), 5.0);
  EXPECT_EQ(c->grOperMode(), grModeDisabled_);
  EXPECT_EQ(c->grHoldingTimeout(), 30.0);
  EXPECT_EQ(c->grReconnectTimeout(), 30.0);
  EXPECT_EQ(c->grNeighborLivenessTimeout(), 30.0);
  EXPECT_EQ(c->grMaxRecoveryTimeout(), 30.0);
  EXPECT_EQ(c->ldpLabelDistCtrl(), orderedCtrl_);
  EXPECT_EQ(c->ldpLabelAdvDspl(), unSolicited_);
  EXPECT_EQ(c->ldpLabelRetention(), liberalRetention_);
  EXPECT_TRUE(!c->ldpProtoParamSetting());
  EXPECT_EQ(c->intfConfigColls(), 0u);
  EXPECT_EQ(Config::linkReadyTimeoutDefault(), 60.0);
  EXPECT_EQ(Config::md5PasswordDefault(), "");
}

TEST(Config, IntfConfigColl) {
  Zel::Ptr<Config> c = configFactory(L3::VrfName("red"));
  ConfigWatch w(c);
  Zel::Ptr<LdpIntfConfig> e1 = c->intfConfigCollIs("Ethernet1");
  ASSERT_TRUE(e1);
  EXPECT_EQ(e1->igpSync(), useGlobal_);
  EXPECT_EQ(e1->fullName(), "red/intfConfigColl/Ethernet1");
  EXPECT_EQ(c->intfConfigCollIs("Ethernet1"), e1);
  c->intfConfigCollDel("Ethernet1");
  EXPECT_EQ(w.take(), (Strings{"intfConfigColl:Ethernet1", "intfConfigColl:Ethernet1"}));
  EXPECT_EQ(c->intfConfigColl("Ethernet1"), nullptr);
  EXPECT_EQ(e1->parent(), nullptr);
}

TEST(Config, AttributeIds) {
  const Zel::ZelType& t = Config::zelType();
  const std::vector<std::pair<const char*, Zel::AttributeId>> ids = {
      {"vrfName", 258},
      {"enabled", 259},
      {"ipTransportAddrIntfId", 260},
      {"staticFecBindingColl", 265},
      {"staticP2mpFecBindingColl", 266},
      {"ldpProtoParamSetting", 267},
      {"md5PasswordDefault", 272},
      {"ldpNeighborClearRequest", 273},
      {"staticTarget", 274},
      {"intfConfigColl", 284},
      {"ldpEnabledIntf", 287},
      {"grMaxRecoveryTimeout", 292},
  };
  for (const auto& [name, id] : ids) EXPECT_EQ(idOf(t, name), id) << name;
  EXPECT_EQ(idOf(LdpIntfConfig::zelType(), "igpSync"), 258u);
  EXPECT_EQ(idOf(LdpConfigColl::zelType(), "config"), 258u);
  EXPECT_EQ(idOf(LdpConfigColl::zelType(), "initialized"), 259u);
  EXPECT_EQ(idOf(LdpConfigColl::zelType(), "handleInitialized"), 260u);
}

TEST(LdpConfigColl, HandleInitializedMakesTheDefaultConfigOnce) {
  Zel::Ptr<LdpConfigColl> coll = ldpConfigCollFactory("ldpConfig");
  EXPECT_FALSE(coll->initialized());
  coll->handleInitialized();
  Zel::Ptr<Config> def = coll->config(L3::VrfName("default"));
  ASSERT_TRUE(def);
  EXPECT_TRUE(coll->initialized());
  EXPECT_EQ(def->fullName(), "ldpConfig/config/default");
  Zel::GenericIf(coll).invoke(260);  // again, through reflection
  EXPECT_EQ(coll->configs(), 1u);
  EXPECT_EQ(coll->config(L3::VrfName("default")), def);
}

TEST(LdpProtoParamSetting, IdsAndBitViews) {
  const Zel::ZelType& t = LdpProtoParamSetting::zelType();
  EXPECT_EQ(idOf(t, "value"), 2u);
  EXPECT_EQ(idOf(t, "bitAnvlTestCompatible"), 3u);
  EXPECT_EQ(idOf(t, "bitPwStatusMethodLabelWithdraw"), 7u);
  EXPECT_EQ(idOf(t, "anvlTestCompatible"), 8u);
  EXPECT_EQ(idOf(t, "pwStatusMethodLabelWithdraw"), 12u);

  LdpProtoParamSetting p(0x300);
  EXPECT_TRUE(p.edgeRouterRole());
  EXPECT_TRUE(p.pwStatusMethodLabelWithdraw());
  EXPECT_FALSE(p.anvlTestCompatible());
  EXPECT_FALSE(p.anvlTestAdvDsplForce());
  EXPECT_FALSE(p.anvlTestAllFecs());
  p.anvlTestAllFecsIs(true);
  EXPECT_EQ(p.value(), 0x308u);
  p.edgeRouterRoleIs(false);
  EXPECT_EQ(p.value(), 0x208u);
  p.edgeRouterRoleIs(false);
  EXPECT_EQ(p.value(), 0x208u);
}

TEST(LdpFecBindingInfo, IdsAndNoLabelDefaults) {
  const Zel::ZelType& t = LdpFecBindingInfo::zelType();
  EXPECT_EQ(idOf(t, "inputLabel"), 2u);
  EXPECT_EQ(idOf(t, "outputLabel"), 3u);
  EXPECT_EQ(idOf(t, "nexthopIntfIp"), 4u);

  LdpFecBindingInfo b;
  EXPECT_EQ(b.inputLabel().value(), 1048576u);
  EXPECT_EQ(b.outputLabel().value(), 1048576u);
  EXPECT_TRUE(!b);
  b.outputLabelIs(Ovo::MplsLabel(16));
  EXPECT_FALSE(!b);
  EXPECT_FALSE(!LdpFecBindingInfo(Ovo::MplsLabel(3), Ovo::MplsLabel(), Ovo::IpGenAddr()));
}

}  // namespace
