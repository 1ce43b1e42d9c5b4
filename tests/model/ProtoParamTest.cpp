// LdpProtoParam: its constants as reflection reads them, and notification of the
// switches.

#include <gtest/gtest.h>

#include "model/LdpProtoParam.h"

using namespace Ldp;

namespace {

TEST(LdpProtoParam, ReflectionReadsConstantsThroughTheirStringForms) {
  const Zel::ZelType* t = Zel::ZelType::lookup("Ldp::LdpProtoParam");
  ASSERT_NE(t, nullptr);
  Zel::Ptr<LdpProtoParam> p = ldpProtoParamFactory("ldp");
  EXPECT_EQ(t->attr("ldpUdpPort")->read(*p), "646");
  EXPECT_EQ(t->attr("ldpNewAdjHelloWaitTime")->read(*p), "0.1");
  EXPECT_EQ(t->attr("serviceName")->read(*p), "'ldp'");
  EXPECT_EQ(t->attr("serviceName")->kind, Zel::AttrKind::constant);
  EXPECT_EQ(t->attr("fecTlvStrictPrefixWildcardOnlyElement")->kind, Zel::AttrKind::mutableAttr);
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
