// The generated enumerations: their registered descriptors, the free functions of
// each type (Instance, stringValue, valueToStrep, operator<<, sequenceToValue), the
// documented handling of unknown values (platform/zel/Type.h), and the wire code
// tables checked against the protocol numbers.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "core/LdpTypes.h"
#include "platform/zel/Type.h"

using namespace Ldp;

namespace {

// Every enumeration of core/LdpEnums.types, by the name its descriptor is registered under.
const std::vector<std::string> kAllEnumNames = {
    "Ldp::LdpLabelDistCtrl",
    "Ldp::LdpLabelRetention",
    "Ldp::LdpLabelAdvDspl",
    "Ldp::LdpRunningState",
    "Ldp::ConfigState",
    "Ldp::LdpIgpSyncMode",
    "Ldp::LdpGrOperationalMode",
    "Ldp::GrState",
    "Ldp::GrMembership",
    "Ldp::LdpSessionRole",
    "Ldp::SessionState",
    "Ldp::SessionOpState",
    "Ldp::LdpAdjType",
    "Ldp::LdpTargetMembership",
    "Ldp::LdpFecLspRole",
    "Ldp::LdpFecDeliveryType",
    "Ldp::LdpFecConfigMembership",
    "Ldp::FecConfigChange",
    "Ldp::LdpXsessionNotification::LdpXsessionNotificationType",
    "Ldp::LdpPeerLabelState",
    "Ldp::LdpLocalLabelState",
    "Ldp::LdpLabelUnassignedReason",
    "Ldp::LabelAllocStatusEnum",
    "Ldp::LdpP2mpFecSessionEvent",
    "Ldp::LdpP2mpFecStateMembership",
    "Ldp::LdpFecElementType",
    "Ldp::LdpPwIntfParamSubTlvType",
    "Ldp::LdpP2mpOpaqueValueTypeEnum",
    "Ldp::PwStatusMethod",
    "Ldp::PwFecSessionMember",
    "Ldp::PwFecSessionStatusState",
    "Ldp::LdpMsgType",
    "Ldp::LdpTlvType",
    "Ldp::LdpStatusCode",
};

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

std::vector<std::string> enumeratorNames(const Zel::EnumType& t) {
  std::vector<std::string> names;
  for (const auto& e : t.enumerators()) names.emplace_back(e.name);
  return names;
}

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
        [](uint32_t v) {                                                            \
          const T e = static_cast<T>(v);                                            \
          return valueToStrep(e);                                                   \
        },                                                                          \
        [](uint32_t v) {                                                            \
          std::ostringstream os;                                                    \
          os << static_cast<T>(v);                                                  \
          return os.str();                                                          \
        },                                                                          \
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

// Expects `f` to throw a RangeException carrying `message`.
template <class F>
void expectRangeError(F&& f, std::string_view message) {
  try {
    f();
    ADD_FAILURE() << "no exception, expected \"" << message << "\"";
  } catch (const Zel::RangeException& e) {
    EXPECT_EQ(e.message().view(), message);
  }
}

std::string refusal(std::string_view type, std::string_view text) {
  return "Invalid " + std::string(type) + ": '" + std::string(text) + "'";
}

// Parses the start of `text` as a T; `rest` receives what the parser left.
template <class T>
T parsedPrefix(std::string_view text, std::string* rest) {
  Zel::String s(text);
  Zel::StrIt it = s.begin();
  T v{};
  sequenceToValue(it, s.end(), &v);
  *rest = std::string(it, s.end());
  return v;
}

template <class T>
std::string streamed(const T& v) {
  std::ostringstream os;
  os << v;
  return os.str();
}

// ---------------------------------------------------------------- descriptors

TEST(EnumRegistry, EveryEnumerationIsRegisteredAtLoad) {
  EXPECT_EQ(kRegisteredAtLoad, kAllEnumNames);
  for (const std::string& n : kAllEnumNames) {
    SCOPED_TRACE(n);
    const Zel::ZelType* t = Zel::ZelType::lookup(n);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->kind(), Zel::ZelType::Kind::enumeration);
    EXPECT_EQ(std::string_view(t->name()), n);
    ASSERT_NE(dynamic_cast<const Zel::EnumType*>(t), nullptr);
  }
  // The nested enumeration is registered under its qualified name only.
  EXPECT_EQ(Zel::ZelType::lookup("Ldp::LdpXsessionNotificationType"), nullptr);
  EXPECT_EQ(Zel::ZelType::lookup("LdpLabelDistCtrl"), nullptr);
}

TEST(EnumRegistry, DescriptorIsTheTypesOwn) {
  for (const FreeEnum& f : freeEnums()) {
    EXPECT_EQ(enumType(f.name), &f.type()) << f.name;
  }
  EXPECT_EQ(enumType("Ldp::LdpP2mpFecSessionEvent"), &LdpP2mpFecSessionEventEnumType());
  EXPECT_EQ(enumType("Ldp::LdpP2mpFecStateMembership"), &LdpP2mpFecStateMembershipEnumType());
  EXPECT_EQ(enumType("Ldp::LdpP2mpOpaqueValueTypeEnum"), &LdpP2mpOpaqueValueTypeEnumEnumType());
  EXPECT_EQ(enumType("Ldp::LdpXsessionNotification::LdpXsessionNotificationType"),
            &Zel::EnumTraits<LdpXsessionNotification::LdpXsessionNotificationType>::type());
}

TEST(EnumRegistry, EnumeratorsInDeclarationOrder) {
  using V = std::vector<std::string>;
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpLabelAdvDspl")),
            (V{"onDemand", "unSolicited", "unknownAdvDspl"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpIgpSyncMode")), (V{"off", "on", "useGlobal"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpFecDeliveryType")),
            (V{"Unknown", "Local", "Remote", "Egress"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpXsessionNotification::LdpXsessionNotificationType")),
            (V{"ldpXsessionUnknown", "ldpXsessionMapping", "ldpXsessionRequest",
               "ldpXsessionMappingLoopDetection", "ldpXsessionRequestLoopDetection"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpP2mpFecSessionEvent")),
            (V{"LdpP2mpFecSessionEventNone", "LdpP2mpFecSessionEventNotifier",
               "LdpP2mpFecSessionEventWorkQueue"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpP2mpOpaqueValueTypeEnum")),
            (V{"p2mpReservedOpaqueType", "p2mpGenericLspIdentifier", "p2mpExtendedOpaqueType"}));

  const Zel::EnumType& fet = LdpFecElementTypeEnumType();
  ASSERT_EQ(fet.enumeratorCount(), 14u);
  EXPECT_STREQ(fet.enumerators().front().name, "wildcardElement");
  EXPECT_STREQ(fet.enumerators()[9].name, "pwIdElement");
  EXPECT_STREQ(fet.enumerators().back().name, "pwP2mpDownstreamElement");
}

TEST(EnumRegistry, TableSizes) {
  EXPECT_EQ(LdpTlvTypeEnumType().enumeratorCount(), 36u);
  EXPECT_EQ(LdpStatusCodeEnumType().enumeratorCount(), 37u);
  EXPECT_EQ(LdpMsgTypeEnumType().enumeratorCount(), 12u);
}

// The three "descriptor only" enumerations have no generated free functions.
template <class E>
concept HasFreeFunctions = requires(E e, Zel::StrIt it, E* out) {
  Ldp::stringValue(e);
  Ldp::sequenceToValue(it, it, out);
};

TEST(EnumRegistry, DescriptorOnlyEnumerations) {
  static_assert(HasFreeFunctions<LdpLabelDistCtrl>);
  static_assert(HasFreeFunctions<LdpXsessionNotification::LdpXsessionNotificationType>);
  static_assert(!HasFreeFunctions<LdpP2mpFecSessionEvent>);
  static_assert(!HasFreeFunctions<LdpP2mpFecStateMembership>);
  static_assert(!HasFreeFunctions<LdpP2mpOpaqueValueTypeEnum>);
  // Their descriptors still name and parse their values.
  EXPECT_EQ(LdpP2mpOpaqueValueTypeEnumEnumType().valueToStrep(255).view(),
            "p2mpExtendedOpaqueType");
  EXPECT_EQ(Zel::valueToStrep(p2mpFecMemberStatic_).view(), "p2mpFecMemberStatic");
}

// ---------------------------------------------------------------- every type, every enumerator

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

// ---------------------------------------------------------------- particular cases

TEST(EnumFreeFunctions, Instances) {
  EXPECT_EQ(LdpFecElementTypeInstance(128), pwIdElement_);
  EXPECT_EQ(LdpFecElementTypeInstance(Zel::String("pwIdElement")), pwIdElement_);
  EXPECT_EQ(LdpIgpSyncModeInstance(Zel::String("useGlobal")), useGlobal_);
  EXPECT_EQ(static_cast<uint32_t>(LdpIgpSyncModeInstance(Zel::String("useGlobal"))), 3u);
  EXPECT_EQ(stringValue(LdpFecDeliveryTypeInstance(2)), "Remote");

  using Xs = LdpXsessionNotification;
  EXPECT_EQ(Xs::LdpXsessionNotificationTypeInstance(Zel::String("ldpXsessionRequest")),
            Xs::ldpXsessionRequest_);
  EXPECT_EQ(Xs::LdpXsessionNotificationTypeInstance(3u), Xs::ldpXsessionMappingLoopDetection_);
  EXPECT_EQ(stringValue(Xs::ldpXsessionRequestLoopDetection_), "ldpXsessionRequestLoopDetection");
}

TEST(EnumFreeFunctions, ValueThatIsNoEnumerator) {
  LdpFecElementType ten = LdpFecElementTypeInstance(10);
  EXPECT_EQ(static_cast<uint32_t>(ten), 10u);
  EXPECT_FALSE(LdpFecElementTypeEnumType().isEnumerator(10));
  EXPECT_EQ(stringValue(ten), "10");
  EXPECT_EQ(valueToStrep(ten), "10");
  EXPECT_EQ(streamed(ten), "10");
  EXPECT_EQ(LdpFecElementTypeInstance(Zel::String("10")), ten);
  // Leading zeros are still a decimal number.
  EXPECT_EQ(LdpFecElementTypeInstance(Zel::String("0010")), ten);
  EXPECT_EQ(LdpFecElementTypeInstance(Zel::String("4294967295")),
            static_cast<LdpFecElementType>(0xFFFFFFFFu));
}

TEST(EnumFreeFunctions, IrregularNamesPrintExactly) {
  EXPECT_EQ(stringValue(unSolicited_), "unSolicited");
  EXPECT_EQ(stringValue(pwGenIdelement_), "pwGenIdelement");
  EXPECT_EQ(stringValue(Unknown_), "Unknown");
  EXPECT_EQ(stringValue(off_), "off");
  EXPECT_EQ(stringValue(on_), "on");
  EXPECT_EQ(LdpLabelAdvDsplInstance(Zel::String("unSolicited")), unSolicited_);
  EXPECT_EQ(LdpFecElementTypeInstance(Zel::String("pwGenIdelement")), pwGenIdelement_);
  EXPECT_EQ(LdpFecDeliveryTypeInstance(Zel::String("Unknown")), Unknown_);
  EXPECT_EQ(LdpIgpSyncModeInstance(Zel::String("off")), off_);
  EXPECT_EQ(LdpIgpSyncModeInstance(Zel::String("on")), on_);
}

TEST(EnumFreeFunctions, NamesAreCaseSensitive) {
  for (const char* text : {"unsolicited", "UnSolicited", "UNSOLICITED"}) {
    expectRangeError([&] { LdpLabelAdvDsplInstance(Zel::String(text)); },
                     refusal("Ldp::LdpLabelAdvDspl", text));
  }
  // The regular spelling of an irregular name is not the name.
  expectRangeError([] { LdpFecElementTypeInstance(Zel::String("pwGenIdElement")); },
                   "Invalid Ldp::LdpFecElementType: 'pwGenIdElement'");
  expectRangeError([] { LdpFecDeliveryTypeInstance(Zel::String("unknown")); },
                   "Invalid Ldp::LdpFecDeliveryType: 'unknown'");
  expectRangeError([] { LdpIgpSyncModeInstance(Zel::String("Off")); },
                   "Invalid Ldp::LdpIgpSyncMode: 'Off'");
  expectRangeError(
      [] {
        LdpXsessionNotification::LdpXsessionNotificationTypeInstance(
            Zel::String("LdpXsessionMapping"));
      },
      "Invalid Ldp::LdpXsessionNotification::LdpXsessionNotificationType: "
      "'LdpXsessionMapping'");
}

TEST(EnumFreeFunctions, SequenceToValueStopsAtTheEndOfTheName) {
  std::string rest;
  EXPECT_EQ(parsedPrefix<LdpLabelDistCtrl>("orderedCtrl", &rest), orderedCtrl_);
  EXPECT_EQ(rest, "");
  EXPECT_EQ(static_cast<uint32_t>(parsedPrefix<LdpLabelDistCtrl>("orderedCtrl", &rest)), 2u);
  EXPECT_EQ(parsedPrefix<LdpLabelDistCtrl>("orderedCtrl, 'valid': True})", &rest), orderedCtrl_);
  EXPECT_EQ(rest, ", 'valid': True})");
  EXPECT_EQ(parsedPrefix<LdpLabelDistCtrl>("orderedCtrl})", &rest), orderedCtrl_);
  EXPECT_EQ(rest, "})");
  EXPECT_EQ(parsedPrefix<LdpIgpSyncMode>("on off", &rest), on_);
  EXPECT_EQ(rest, " off");
  EXPECT_EQ(parsedPrefix<LdpFecElementType>("10-x", &rest), LdpFecElementTypeInstance(10));
  EXPECT_EQ(rest, "-x");
}

TEST(EnumFreeFunctions, RefusalLeavesCursorAndTarget) {
  Zel::String text("orderedCtrlX, more");
  Zel::StrIt it = text.begin();
  LdpLabelDistCtrl out = independentCtrl_;
  expectRangeError([&] { sequenceToValue(it, text.end(), &out); },
                   "Invalid Ldp::LdpLabelDistCtrl: 'orderedCtrlX'");
  EXPECT_TRUE(it == text.begin());
  EXPECT_EQ(out, independentCtrl_);

  Zel::String big("4294967296}");
  it = big.begin();
  expectRangeError([&] { sequenceToValue(it, big.end(), &out); },
                   "Invalid Ldp::LdpLabelDistCtrl: '4294967296'");
  EXPECT_TRUE(it == big.begin());
  EXPECT_EQ(out, independentCtrl_);
}

TEST(EnumFreeFunctions, StatusCodesWithBit31) {
  const auto ignore = static_cast<LdpStatusCode>(0x80000004u);
  EXPECT_EQ(ignore, unknownMessageTypeIgnore_);
  EXPECT_EQ(stringValue(ignore), "unknownMessageTypeIgnore");
  EXPECT_EQ(LdpStatusCodeInstance(Zel::String("unknownMessageTypeIgnore")), ignore);
  EXPECT_EQ(LdpStatusCodeInstance(0x80000004u), ignore);
  EXPECT_EQ(stringValue(mLdpChange_), "mLdpChange");
  EXPECT_EQ(static_cast<uint32_t>(LdpStatusCodeInstance(Zel::String("mLdpChange"))), 0x80000105u);
  // Bit 31 alone is no code; it still round-trips, unsigned.
  const auto bit31 = static_cast<LdpStatusCode>(0x80000000u);
  EXPECT_EQ(stringValue(bit31), "2147483648");
  EXPECT_EQ(LdpStatusCodeInstance(Zel::String("2147483648")), bit31);
}

TEST(EnumFreeFunctions, AttributeLogIsFourOctets) {
  Zel::NboAttrLog::Out out;
  out.attrBegin(1);
  attrLogWrite(out, unknownMessageTypeIgnore_);
  out.attrEnd();
  EXPECT_EQ(out.bytes(), (std::vector<uint8_t>{0, 0, 0, 1, 0, 0, 0, 4, 0x80, 0, 0, 4}));
  Zel::NboAttrLog::In in(out.bytes());
  ASSERT_EQ(in.nextAttrId(), 1u);
  LdpStatusCode back = success_;
  attrLogRead(in, &back);
  EXPECT_EQ(back, unknownMessageTypeIgnore_);
}

// ---------------------------------------------------------------- wire tables against the RFCs

template <class E>
void expectWireValues(const std::vector<std::pair<E, uint32_t>>& table) {
  for (const auto& [code, number] : table) {
    EXPECT_EQ(static_cast<uint32_t>(code), number) << code;
  }
}

TEST(EnumWireTables, MessageTypes) {
  // RFC 5036 §3.7 and RFC 5561 (Capability).
  expectWireValues<LdpMsgType>({
      {LdpNotification_, 0x0001},
      {LdpHello_, 0x0100},
      {LdpInit_, 0x0200},
      {LdpKeepAlive_, 0x0201},
      {LdpCapability_, 0x0202},
      {LdpAddress_, 0x0300},
      {LdpAddressWithdraw_, 0x0301},
      {LdpLabelMapping_, 0x0400},
      {LdpLabelRequest_, 0x0401},
      {LdpLabelWithdraw_, 0x0402},
      {LdpLabelRelease_, 0x0403},
      {LdpLabelAbortReq_, 0x0404},
  });
}

TEST(EnumWireTables, TlvTypes) {
  // RFC 5036 §3.4, RFC 3479 (FT), RFC 4447 (PW status), RFC 5561, RFC 5918, RFC 6388, RFC 6389.
  expectWireValues<LdpTlvType>({
      {fecTlv_, 0x0100},
      {addrListTlv_, 0x0101},
      {hopCountTlv_, 0x0103},
      {pathVectorTlv_, 0x0104},
      {genLabelTlv_, 0x0200},
      {atmLabelTlv_, 0x0201},
      {frLabelTlv_, 0x0202},
      {statusTlv_, 0x0300},
      {extStatusTlv_, 0x0301},
      {retPduTlv_, 0x0302},
      {retMsgTlv_, 0x0303},
      {commonHelloTlv_, 0x0400},
      {ipv4TransportAddrTlv_, 0x0401},
      {configSeqNumTlv_, 0x0402},
      {ipv6TransportAddrTlv_, 0x0403},
      {commonSessionParamTlv_, 0x0500},
      {atmSessionTlv_, 0x0501},
      {frSessionTlv_, 0x0502},
      {ftSessionTlv_, 0x0503},
      {dynamicCapabilityTlv_, 0x0506},
      {upstreamLabelAssignmentCapabilityTlv_, 0x0507},
      {p2mpCapabilityTlv_, 0x0508},
      {mp2mpCapabilityTlv_, 0x0509},
      {mbbCapabilityTlv_, 0x050A},
      {typedWildcardFecCapabilityTlv_, 0x050B},
      {labelReqMsgIdTlv_, 0x0600},
      {pwStatusTlv_, 0x096A},
      {vendorPrivTlvBegin_, 0x3E00},
      {vendorPrivTlvEnd_, 0x3EFF},
      {expTlvBegin_, 0x3F00},
      {expTlvEnd_, 0x3FFF},
  });
  // Every TLV type fits the 14-bit type field.
  for (const auto& e : LdpTlvTypeEnumType().enumerators()) {
    EXPECT_LE(e.value, 0x3FFFu) << e.name;
  }
}

TEST(EnumWireTables, StatusCodes) {
  // RFC 5036 §3.9 and RFC 4447 §8.1; the codes with bit 31 set are local.
  expectWireValues<LdpStatusCode>({
      {success_, 0x00},
      {badLdpId_, 0x01},
      {badVersion_, 0x02},
      {badPduLength_, 0x03},
      {unknownMessageType_, 0x04},
      {badMessageLength_, 0x05},
      {unknownTlv_, 0x06},
      {badTlvLength_, 0x07},
      {malformedTlv_, 0x08},
      {holdTimerExpired_, 0x09},
      {shutdown_, 0x0A},
      {loopDetected_, 0x0B},
      {unknownFec_, 0x0C},
      {noRoute_, 0x0D},
      {noLabelResources_, 0x0E},
      {labelResourcesAvailable_, 0x0F},
      {rejectNoHello_, 0x10},
      {rejectParamAdvMode_, 0x11},
      {rejectMaxPduLength_, 0x12},
      {rejectParamLabelRange_, 0x13},
      {keepAliveExpired_, 0x14},
      {labelRequestAborted_, 0x15},
      {missingMessageParams_, 0x16},
      {unsupportedAddressFamily_, 0x17},
      {sessionRejectBadKeepAliveTime_, 0x18},
      {internalError_, 0x19},
      {illegalCBit_, 0x24},
      {wrongCBit_, 0x25},
      {pwStatus_, 0x28},
  });
  for (const auto& e : LdpStatusCodeEnumType().enumerators()) {
    // Wire codes leave the E and F bits (31, 30) clear; local codes set bit 31.
    if (e.value & 0x80000000u) {
      EXPECT_EQ(e.value & 0x7FFFFE00u, 0u) << e.name;
    } else {
      EXPECT_LE(e.value, 0x3FFFFFFFu) << e.name;
    }
  }
}

TEST(EnumWireTables, FecElementsAndPwSubTlvs) {
  // RFC 5036 §3.4.1, RFC 3212, RFC 5918, RFC 6388, RFC 4447 §5.2/§5.3.
  expectWireValues<LdpFecElementType>({
      {wildcardElement_, 0x01},
      {prefixElement_, 0x02},
      {hostAddrElement_, 0x03},
      {crLspElement_, 0x04},
      {typedWildcardElement_, 0x05},
      {p2mpElement_, 0x06},
      {mp2mpUpElement_, 0x07},
      {mp2mpDownElement_, 0x08},
      {pwIdElement_, 0x80},
      {pwGenIdelement_, 0x81},
  });
  // RFC 4446 §3.3 interface parameter sub-TLVs.
  expectWireValues<LdpPwIntfParamSubTlvType>({
      {intfMtu_, 0x01},
      {intfDesc_, 0x03},
      {requestedVlanId_, 0x06},
      {fragIndicator_, 0x09},
      {vccvParam_, 0x0C},
  });
  // RFC 6388 §2.3 opaque value types.
  EXPECT_EQ(static_cast<uint32_t>(p2mpGenericLspIdentifier_), 1u);
  EXPECT_EQ(static_cast<uint32_t>(p2mpExtendedOpaqueType_), 255u);
}

}  // namespace
