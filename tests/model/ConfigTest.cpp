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
