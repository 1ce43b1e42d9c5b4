// The generated enumerations: their registered descriptors, the free functions of
// each type (Instance, stringValue, valueToStrep, operator<<, sequenceToValue), the
// documented handling of unknown values (platform/zel/Type.h).

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/LdpTypes.h"
#include "platform/zel/Type.h"
#include "tests/support/ValueChecks.h"

using namespace Ldp;
using namespace LdpTest;

namespace {

// The free functions of one enumeration, with the type erased so that one table
// can drive the same checks over every type.
struct FreeEnum {
  const char* name;
  const Zel::EnumType& (*type)();
  uint32_t (*byValue)(unsigned);
  uint32_t (*byName)(const Zel::String&);
  Zel::String (*stringValueOf)(uint32_t);
  Zel::String (*strepOf)(uint32_t);
  std::string (*streamed)(uint32_t);
  uint32_t (*parse)(Zel::StrIt&, const Zel::StrIt&);
};

#define LDP_FREE_ENUM(qualified, T, instance)                                       \
  FreeEnum {                                                                        \
    qualified, []() -> const Zel::EnumType& { return Zel::EnumTraits<T>::type(); }, \
        [](unsigned v) { return static_cast<uint32_t>(instance(v)); },              \
        [](const Zel::String& s) { return static_cast<uint32_t>(instance(s)); },    \
        [](uint32_t v) { return stringValue(static_cast<T>(v)); },                  \
        [](uint32_t v) { return valueToStrep(static_cast<T>(v)); },                 \
        [](uint32_t v) { return LdpTest::streamed(static_cast<T>(v)); },            \
        [](Zel::StrIt& it, const Zel::StrIt& end) {                                 \
          T out{};                                                                  \
          sequenceToValue(it, end, &out);                                           \
          return static_cast<uint32_t>(out);                                        \
        }                                                                           \
  }
#define LDP_FREE(T) LDP_FREE_ENUM("Ldp::" #T, T, T##Instance)

const std::vector<FreeEnum>& freeEnums() {
  using Xs = LdpXsessionNotification;
  static const std::vector<FreeEnum> all = {
      LDP_FREE(LdpLabelDistCtrl),
      LDP_FREE(LdpLabelRetention),
      LDP_FREE(LdpLabelAdvDspl),
      LDP_FREE(LdpRunningState),
      LDP_FREE(ConfigState),
      LDP_FREE(LdpIgpSyncMode),
      LDP_FREE(LdpGrOperationalMode),
      LDP_FREE(GrState),
      LDP_FREE(GrMembership),
      LDP_FREE(LdpSessionRole),
      LDP_FREE(SessionState),
      LDP_FREE(SessionOpState),
      LDP_FREE(LdpAdjType),
      LDP_FREE(LdpTargetMembership),
      LDP_FREE(LdpFecLspRole),
      LDP_FREE(LdpFecDeliveryType),
      LDP_FREE(LdpFecConfigMembership),
      LDP_FREE(FecConfigChange),
      LDP_FREE_ENUM("Ldp::LdpXsessionNotification::LdpXsessionNotificationType",
                    Xs::LdpXsessionNotificationType, Xs::LdpXsessionNotificationTypeInstance),
      LDP_FREE(LdpPeerLabelState),
      LDP_FREE(LdpLocalLabelState),
      LDP_FREE(LdpLabelUnassignedReason),
      LDP_FREE(LabelAllocStatusEnum),
      LDP_FREE(LdpFecElementType),
      LDP_FREE(LdpPwIntfParamSubTlvType),
      LDP_FREE(PwStatusMethod),
      LDP_FREE(PwFecSessionMember),
      LDP_FREE(PwFecSessionStatusState),
      LDP_FREE(LdpMsgType),
      LDP_FREE(LdpTlvType),
      LDP_FREE(LdpStatusCode),
  };
  return all;
}

// The enumerations without free functions: only their descriptors are generated.
const std::vector<std::string> kDescriptorOnly = {"Ldp::LdpP2mpFecSessionEvent",
                                                  "Ldp::LdpP2mpFecStateMembership",
                                                  "Ldp::LdpP2mpOpaqueValueTypeEnum"};

// Every enumeration of core/LdpEnums.types, by the name its descriptor is registered under.
std::vector<std::string> allEnumNames() {
  std::vector<std::string> names(kDescriptorOnly);
  for (const FreeEnum& f : freeEnums()) names.emplace_back(f.name);
  return names;
}
const std::vector<std::string> kAllEnumNames = allEnumNames();

// Which of them the registry held before main() ran: libLdp's static initialisers
// run before the test binary's own.
std::vector<std::string> registeredAtLoad() {
  std::vector<std::string> found;
  for (const std::string& n : kAllEnumNames) {
    if (Zel::ZelType::lookup(n)) found.push_back(n);
  }
  return found;
}
const std::vector<std::string> kRegisteredAtLoad = registeredAtLoad();

const Zel::EnumType* enumType(std::string_view qualifiedName) {
  return dynamic_cast<const Zel::EnumType*>(Zel::ZelType::lookup(qualifiedName));
}

std::string refusal(std::string_view type, std::string_view text) {
  return "Invalid " + std::string(type) + ": '" + std::string(text) + "'";
}

TEST(EnumRegistry, EveryEnumerationIsRegisteredAtLoad) {
  EXPECT_EQ(kRegisteredAtLoad, kAllEnumNames);
  for (const std::string& n : kAllEnumNames) {
    const Zel::ZelType* t = Zel::ZelType::lookup(n);
    ASSERT_NE(t, nullptr) << n;
    EXPECT_EQ(std::string_view(t->name()), n);
  }
  // The nested enumeration is registered under its qualified name only.
  EXPECT_EQ(Zel::ZelType::lookup("Ldp::LdpXsessionNotificationType"), nullptr);
  // The registered descriptor is the type's own.
  for (const FreeEnum& f : freeEnums()) EXPECT_EQ(enumType(f.name), &f.type()) << f.name;
  EXPECT_EQ(enumType("Ldp::LdpP2mpFecSessionEvent"), &LdpP2mpFecSessionEventEnumType());
  EXPECT_EQ(enumType("Ldp::LdpP2mpFecStateMembership"), &LdpP2mpFecStateMembershipEnumType());
  EXPECT_EQ(enumType("Ldp::LdpP2mpOpaqueValueTypeEnum"), &LdpP2mpOpaqueValueTypeEnumEnumType());
}

TEST(EnumRegistry, DescriptorOnlyEnumerationsNameTheirValues) {
  EXPECT_EQ(LdpP2mpOpaqueValueTypeEnumEnumType().valueToStrep(255).view(),
            "p2mpExtendedOpaqueType");
  EXPECT_EQ(Zel::valueToStrep(p2mpFecMemberStatic_).view(), "p2mpFecMemberStatic");
}

TEST(EnumFreeFunctions, EveryEnumeratorRoundTrips) {
  for (const FreeEnum& f : freeEnums()) {
    SCOPED_TRACE(f.name);
    const Zel::EnumType& t = f.type();
    ASSERT_GT(t.enumeratorCount(), 0u);
    std::set<std::string> names;
    std::set<uint32_t> values;
    for (const auto& e : t.enumerators()) {
      SCOPED_TRACE(e.name);
      names.insert(e.name);
      values.insert(e.value);
      EXPECT_TRUE(t.isEnumerator(e.value));
      EXPECT_STREQ(t.enumeratorName(e.value), e.name);
      EXPECT_EQ(f.stringValueOf(e.value).view(), e.name);
      EXPECT_EQ(f.strepOf(e.value).view(), e.name);
      EXPECT_EQ(f.streamed(e.value), e.name);
      EXPECT_EQ(f.byValue(e.value), e.value);
      EXPECT_EQ(f.byName(e.name), e.value);
      Zel::String text(std::string(e.name) + ", next");
      Zel::StrIt it = text.begin();
      EXPECT_EQ(f.parse(it, text.end()), e.value);
      EXPECT_EQ(std::string_view(it, text.end()), ", next");
    }
    EXPECT_EQ(names.size(), t.enumeratorCount()) << "duplicate names";
    EXPECT_EQ(values.size(), t.enumeratorCount()) << "duplicate values";
  }
}

TEST(EnumFreeFunctions, UnknownNumbersRoundTripAsDecimal) {
  for (const FreeEnum& f : freeEnums()) {
    SCOPED_TRACE(f.name);
    const Zel::EnumType& t = f.type();
    uint32_t maxValue = 0;
    for (const auto& e : t.enumerators()) maxValue = std::max(maxValue, e.value);
    for (uint32_t u : {maxValue + 1, 0xFFFFFFFFu}) {
      ASSERT_FALSE(t.isEnumerator(u));
      EXPECT_EQ(t.enumeratorName(u), nullptr);
      const std::string decimal = std::to_string(u);
      EXPECT_EQ(f.byValue(u), u);
      EXPECT_EQ(f.stringValueOf(u).view(), decimal);
      EXPECT_EQ(f.strepOf(u).view(), decimal);
      EXPECT_EQ(f.streamed(u), decimal);
      EXPECT_EQ(f.byName(Zel::String(decimal)), u);
    }
  }
  // A number between two enumerators is no enumerator either; leading zeros still read.
  EXPECT_EQ(stringValue(LdpFecElementTypeInstance(10)), "10");
  EXPECT_EQ(LdpFecElementTypeInstance(Zel::String("0010")), LdpFecElementTypeInstance(10));
}

TEST(EnumFreeFunctions, OtherTextIsRefusedNamingTheType) {
  for (const FreeEnum& f : freeEnums()) {
    SCOPED_TRACE(f.name);
    std::string wrongCase = f.type().enumerators().front().name;
    wrongCase[0] = static_cast<char>(std::isupper(static_cast<unsigned char>(wrongCase[0]))
                                         ? std::tolower(wrongCase[0])
                                         : std::toupper(wrongCase[0]));
    for (std::string text : {wrongCase, std::string(), std::string("nonsense"), std::string("-1"),
                             std::string("+1"), std::string("0x1"), std::string("4294967296"),
                             std::string("nonsense trailing"), std::string("99999999999999999999"),
                             std::string(f.type().enumerators().front().name) + " trailing"}) {
      SCOPED_TRACE(text);
      expectRangeError([&] { f.byName(Zel::String(text)); }, refusal(f.name, text));
    }
  }
}

TEST(EnumFreeFunctions, SequenceToValueStopsAtTheEndOfTheName) {
  expectStops<LdpLabelDistCtrl>("orderedCtrl, 'valid': True})", "orderedCtrl", ", 'valid': True})");
  expectStops<LdpIgpSyncMode>("on off", "on", " off");
  expectStops<LdpFecElementType>("10-x", "10", "-x");
  // A refusal quotes the whole word and leaves the cursor and the target.
  expectRefused("orderedCtrlX, more", "Invalid Ldp::LdpLabelDistCtrl: 'orderedCtrlX'",
                independentCtrl_);
  expectRefused("4294967296}", "Invalid Ldp::LdpLabelDistCtrl: '4294967296'", independentCtrl_);
}

TEST(EnumFreeFunctions, StatusCodesWithBit31) {
  const auto ignore = static_cast<LdpStatusCode>(0x80000004u);
  EXPECT_EQ(ignore, unknownMessageTypeIgnore_);
  EXPECT_EQ(stringValue(ignore), "unknownMessageTypeIgnore");
  EXPECT_EQ(static_cast<uint32_t>(LdpStatusCodeInstance(Zel::String("mLdpChange"))), 0x80000105u);
  // Bit 31 alone is no code; it still round-trips, unsigned.
  const auto bit31 = static_cast<LdpStatusCode>(0x80000000u);
  EXPECT_EQ(stringValue(bit31), "2147483648");
  EXPECT_EQ(LdpStatusCodeInstance(Zel::String("2147483648")), bit31);
  // The attribute log holds the four octets.
  expectLogged(unknownMessageTypeIgnore_, {0x80, 0, 0, 4});
}

}  // namespace
