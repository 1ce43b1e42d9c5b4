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

std::vector<std::string> enumeratorNames(const Zel::EnumType& t) {
  std::vector<std::string> names;
  for (const auto& e : t.enumerators()) names.emplace_back(e.name);
  return names;
}

std::string refusal(std::string_view type, std::string_view text) {
  return "Invalid " + std::string(type) + ": '" + std::string(text) + "'";
}

TEST(EnumRegistry, EveryEnumerationIsRegisteredAtLoad) {
  EXPECT_EQ(kRegisteredAtLoad, kAllEnumNames);
  for (const std::string& n : kAllEnumNames) {
    const Zel::ZelType* t = Zel::ZelType::lookup(n);
    ASSERT_NE(t, nullptr) << n;
    EXPECT_EQ(t->kind(), Zel::ZelType::Kind::enumeration) << n;
    EXPECT_EQ(std::string_view(t->name()), n);
    EXPECT_NE(enumType(n), nullptr) << n;
  }
  // The nested enumeration is registered under its qualified name only.
  EXPECT_EQ(Zel::ZelType::lookup("Ldp::LdpXsessionNotificationType"), nullptr);
  EXPECT_EQ(Zel::ZelType::lookup("LdpLabelDistCtrl"), nullptr);
  // The registered descriptor is the type's own.
  for (const FreeEnum& f : freeEnums()) EXPECT_EQ(enumType(f.name), &f.type()) << f.name;
  EXPECT_EQ(enumType("Ldp::LdpP2mpFecSessionEvent"), &LdpP2mpFecSessionEventEnumType());
  EXPECT_EQ(enumType("Ldp::LdpP2mpFecStateMembership"), &LdpP2mpFecStateMembershipEnumType());
  EXPECT_EQ(enumType("Ldp::LdpP2mpOpaqueValueTypeEnum"), &LdpP2mpOpaqueValueTypeEnumEnumType());
}

TEST(EnumRegistry, EnumeratorsInDeclarationOrder) {
  using V = std::vector<std::string>;
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpLabelAdvDspl")),
            (V{"onDemand", "unSolicited", "unknownAdvDspl"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpXsessionNotification::LdpXsessionNotificationType")),
            (V{"ldpXsessionUnknown", "ldpXsessionMapping", "ldpXsessionRequest",
               "ldpXsessionMappingLoopDetection", "ldpXsessionRequestLoopDetection"}));
  EXPECT_EQ(enumeratorNames(*enumType("Ldp::LdpP2mpOpaqueValueTypeEnum")),
            (V{"p2mpReservedOpaqueType", "p2mpGenericLspIdentifier", "p2mpExtendedOpaqueType"}));
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

// `table` holds "name=hex" entries: each named enumerator of E has that number.
template <class E>
void expectWireValues(const std::string& table) {
  std::istringstream in(table);
  std::string entry;
  while (in >> entry) {
    const size_t eq = entry.find('=');
    const uint32_t number = static_cast<uint32_t>(std::stoul(entry.substr(eq + 1), nullptr, 16));
    EXPECT_EQ(static_cast<uint32_t>(parsed<E>(entry.substr(0, eq))), number) << entry;
  }
}

TEST(EnumWireTables, MessageAndTlvTypes) {
  // RFC 5036 §3.7 and RFC 5561 (Capability).
  expectWireValues<LdpMsgType>(
      "LdpNotification=0001 LdpHello=0100 LdpInit=0200 LdpKeepAlive=0201 LdpCapability=0202 "
      "LdpAddress=0300 LdpAddressWithdraw=0301 LdpLabelMapping=0400 LdpLabelRequest=0401 "
      "LdpLabelWithdraw=0402 LdpLabelRelease=0403 LdpLabelAbortReq=0404");

  // RFC 5036 §3.4, RFC 3479 (FT), RFC 4447 (PW status), RFC 5561, RFC 5918, RFC 6388, RFC 6389.
  expectWireValues<LdpTlvType>(
      "fecTlv=0100 addrListTlv=0101 hopCountTlv=0103 pathVectorTlv=0104 genLabelTlv=0200 "
      "atmLabelTlv=0201 frLabelTlv=0202 statusTlv=0300 extStatusTlv=0301 retPduTlv=0302 "
      "retMsgTlv=0303 commonHelloTlv=0400 ipv4TransportAddrTlv=0401 configSeqNumTlv=0402 "
      "ipv6TransportAddrTlv=0403 commonSessionParamTlv=0500 atmSessionTlv=0501 "
      "frSessionTlv=0502 ftSessionTlv=0503 dynamicCapabilityTlv=0506 "
      "upstreamLabelAssignmentCapabilityTlv=0507 p2mpCapabilityTlv=0508 "
      "mp2mpCapabilityTlv=0509 mbbCapabilityTlv=050A typedWildcardFecCapabilityTlv=050B "
      "labelReqMsgIdTlv=0600 pwStatusTlv=096A vendorPrivTlvBegin=3E00 vendorPrivTlvEnd=3EFF "
      "expTlvBegin=3F00 expTlvEnd=3FFF");
  // Every TLV type fits the 14-bit type field.
  for (const auto& e : LdpTlvTypeEnumType().enumerators()) {
    EXPECT_LE(e.value, 0x3FFFu) << e.name;
  }
}

TEST(EnumWireTables, StatusCodesAndFecElements) {
  // RFC 5036 §3.9 and RFC 4447 §8.1; the codes with bit 31 set are local.
  expectWireValues<LdpStatusCode>(
      "success=00 badLdpId=01 badVersion=02 badPduLength=03 unknownMessageType=04 "
      "badMessageLength=05 unknownTlv=06 badTlvLength=07 malformedTlv=08 "
      "holdTimerExpired=09 shutdown=0A loopDetected=0B unknownFec=0C noRoute=0D "
      "noLabelResources=0E labelResourcesAvailable=0F rejectNoHello=10 "
      "rejectParamAdvMode=11 rejectMaxPduLength=12 rejectParamLabelRange=13 "
      "keepAliveExpired=14 labelRequestAborted=15 missingMessageParams=16 "
      "unsupportedAddressFamily=17 sessionRejectBadKeepAliveTime=18 internalError=19 "
      "illegalCBit=24 wrongCBit=25 pwStatus=28");
  for (const auto& e : LdpStatusCodeEnumType().enumerators()) {
    // Wire codes leave the E and F bits (31, 30) clear; local codes set bit 31.
    if (e.value & 0x80000000u) {
      EXPECT_EQ(e.value & 0x7FFFFE00u, 0u) << e.name;
    } else {
      EXPECT_LE(e.value, 0x3FFFFFFFu) << e.name;
    }
  }
  // RFC 5036 §3.4.1, RFC 3212, RFC 5918, RFC 6388, RFC 4447 §5.2/§5.3.
  expectWireValues<LdpFecElementType>(
      "wildcardElement=01 prefixElement=02 hostAddrElement=03 crLspElement=04 "
      "typedWildcardElement=05 p2mpElement=06 mp2mpUpElement=07 mp2mpDownElement=08 "
      "pwIdElement=80 pwGenIdelement=81");
}

}  // namespace
