// The generated configuration types of model/LdpConfig.types: Config, ProtoConfig, their
// children and collections, Statistics, and the value types LdpProtoParamSetting and
// LdpFecBindingInfo.

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

TEST(Config, KeyedByVrfWithANotifyingInterfaceCollection) {
  Zel::Ptr<Config> c = configFactory(L3::VrfName("red"));
  EXPECT_EQ(c->vrfName(), L3::VrfName("red"));
  EXPECT_EQ(c->name(), "red");
  ConfigWatch w(c);
  Zel::Ptr<LdpIntfConfig> e1 = c->intfConfigCollIs("Ethernet1");
  ASSERT_TRUE(e1);
  EXPECT_EQ(e1->fullName(), "red/intfConfigColl/Ethernet1");
  EXPECT_EQ(c->intfConfigCollIs("Ethernet1"), e1);
  c->intfConfigCollDel("Ethernet1");
  EXPECT_EQ(w.take(), (Strings{"intfConfigColl:Ethernet1", "intfConfigColl:Ethernet1"}));
  EXPECT_EQ(c->intfConfigColl("Ethernet1"), nullptr);
  EXPECT_EQ(e1->parent(), nullptr);
}

class ConfigCollWatch : public LdpConfigColl::NotifieeConst {
 public:
  explicit ConfigCollWatch(const Zel::Ptr<const LdpConfigColl>& c) { notifierIs(c); }
  void onConfig(const L3::VrfName& v) override { seen.push_back("config:" + v.value().str()); }
  void onInitialized() override { seen.push_back("initialized"); }
  Strings take() { return std::exchange(seen, {}); }
  Strings seen;
};

TEST(LdpConfigColl, HandleInitializedMakesTheDefaultConfigOnce) {
  Zel::Ptr<LdpConfigColl> coll = ldpConfigCollFactory("ldpConfig");
  ConfigCollWatch w(coll);
  EXPECT_FALSE(coll->initialized());
  coll->handleInitialized();
  Zel::Ptr<Config> def = coll->config(L3::VrfName("default"));
  ASSERT_TRUE(def);
  EXPECT_TRUE(coll->initialized());
  EXPECT_EQ(def->fullName(), "ldpConfig/config/default");
  EXPECT_EQ(w.take(), (Strings{"config:default", "initialized"}));
  Zel::GenericIf(coll).invoke(260);  // again, through reflection
  EXPECT_EQ(coll->configs(), 1u);
  EXPECT_EQ(coll->config(L3::VrfName("default")), def);
  EXPECT_EQ(w.take(), Strings{});
}

class ProtoConfigWatch : public ProtoConfig::NotifieeConst {
 public:
  explicit ProtoConfigWatch(const Zel::Ptr<const ProtoConfig>& c) { notifierIs(c); }
  void onLdpProtoParam() override { seen.push_back("ldpProtoParam"); }
  void onFecFilter() override { seen.push_back("fecFilter"); }
  Strings take() { return std::exchange(seen, {}); }
  Strings seen;
};

TEST(ProtoConfig, ProtoParamNamedAfterItsVrfAndDefaultsOfItsOwn) {
  Zel::Ptr<LdpProtoConfigColl> coll = ldpProtoConfigCollFactory("ldpProtoConfig");
  Zel::Ptr<ProtoConfig> p = coll->protoConfigIs(L3::VrfName("red"));
  Zel::Ptr<LdpProtoParam> param = p->ldpProtoParam();
  ASSERT_TRUE(param);
  EXPECT_EQ(param->fullName(), "ldpProtoConfig/protoConfig/red/ldpProtoParam/red");
  EXPECT_EQ(p->fecFilter(), nullptr);

  // Graceful restart starts as speaker with no timeouts, unlike the operator's
  // configuration; the transport address is the IPv4 any address, not unset.
  Zel::Ptr<Config> c = configFactory(L3::VrfName("red"));
  EXPECT_EQ(p->grOperMode(), grModeSpeaker_);
  EXPECT_EQ(c->grOperMode(), grModeDisabled_);
  EXPECT_EQ(p->grMaxRecoveryTimeout(), 0.0);
  EXPECT_EQ(c->grMaxRecoveryTimeout(), 30.0);
  EXPECT_EQ(p->ipTransportAddr(), Ovo::IpGenAddr(Ovo::IpAddr(0)));
  EXPECT_EQ(p->runningState(), ldpStopped_);
}

TEST(ProtoConfig, ReplacingAChildNotifiesOnce) {
  Zel::Ptr<ProtoConfig> p = protoConfigFactory(L3::VrfName("red"));
  ProtoConfigWatch w(p);
  Zel::Ptr<LdpProtoParam> red = p->ldpProtoParam();
  EXPECT_EQ(p->ldpProtoParamIs("red"), red);
  Zel::Ptr<LdpProtoParam> blue = p->ldpProtoParamIs("blue");
  EXPECT_NE(blue, red);
  EXPECT_EQ(red->parent(), nullptr);
  EXPECT_EQ(w.take(), Strings{"ldpProtoParam"});

  Zel::Ptr<LdpFecFilter> f1 = p->fecFilterIs("f1");
  EXPECT_EQ(p->fecFilterIs("f1"), f1);
  EXPECT_EQ(w.take(), Strings{"fecFilter"});
  Zel::Ptr<LdpFecFilter> f2 = p->fecFilterIs("f2");
  EXPECT_EQ(p->fecFilter(), f2);
  EXPECT_EQ(f1->parent(), nullptr);
  EXPECT_EQ(w.take(), Strings{"fecFilter"});
}

TEST(ConfigCollections, ReflectionIds) {
  Zel::Ptr<ProtoConfig> p = protoConfigFactory(L3::VrfName("red"));
  p->ldpEnabledIntfIs(Ovo::IntfId("Ethernet3"));
  EXPECT_EQ(Zel::GenericIf(p).collectionKeys(289), std::vector<Zel::String>{"Ethernet3"});
  EXPECT_EQ(Zel::GenericIf(p).attribute(272), "64");  // ldpHopCountMax

  Zel::Ptr<Statistics> s = statisticsFactory("statistics");
  s->fecCountFilteredInc(3);
  s->fecCountFilteredDec();
  s->messageIdInc();
  s->sessionStatisticsCollIs("sessions");
  Zel::GenericIf g(s);
  EXPECT_EQ(g.attribute(261), "2");
  EXPECT_EQ(g.attribute(258), "1");
  EXPECT_EQ(g.attribute(259), "'sessions'");

  Zel::Ptr<LdpEnabledVrfColl> vrfs = ldpEnabledVrfCollFactory("enabledVrfs");
  vrfs->enabledVrfIs(L3::VrfName("red"), true);
  EXPECT_EQ(Zel::GenericIf(vrfs).collectionValue(258, "'red'"), "True");
}

TEST(LdpProtoParamSetting, BitViewsReadAndWriteTheirOwnBit) {
  LdpProtoParamSetting p(0x300);
  EXPECT_TRUE(p.edgeRouterRole());
  EXPECT_TRUE(p.pwStatusMethodLabelWithdraw());
  EXPECT_FALSE(p.anvlTestCompatible() || p.anvlTestAdvDsplForce() || p.anvlTestAllFecs());
  p.anvlTestAllFecsIs(true);
  EXPECT_EQ(p.value(), 0x308u);
  p.edgeRouterRoleIs(false);
  EXPECT_EQ(p.value(), 0x208u);
  p.edgeRouterRoleIs(false);
  EXPECT_EQ(p.value(), 0x208u);
}

TEST(LdpFecBindingInfo, EmptyOnlyWhenBothLabelsAreNoLabel) {
  LdpFecBindingInfo b;
  EXPECT_TRUE(!b);
  b.outputLabelIs(Ovo::MplsLabel(16));
  EXPECT_FALSE(!b);
  EXPECT_FALSE(!LdpFecBindingInfo(Ovo::MplsLabel(3), Ovo::MplsLabel(), Ovo::IpGenAddr()));
}

}  // namespace
