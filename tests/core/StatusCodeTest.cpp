// The protocol meaning of the status codes: the E bit a Notification carries
// (RFC 5036 §3.9) and the operator-facing session state text.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/LdpTypes.h"

using namespace Ldp;

namespace {

// RFC 5036 §3.9: the codes whose Notification is fatal (E = 1). Every other code
// of the table, including the local ones with bit 31 set, has E = 0.
const std::set<std::string> kFatal = {"badLdpId",           "badVersion",
                                      "badPduLength",       "badMessageLength",
                                      "badTlvLength",       "malformedTlv",
                                      "holdTimerExpired",   "shutdown",
                                      "rejectNoHello",      "rejectParamAdvMode",
                                      "rejectMaxPduLength", "rejectParamLabelRange",
                                      "keepAliveExpired",   "sessionRejectBadKeepAliveTime",
                                      "internalError"};

TEST(StatusCodeEBit, FullColumn) {
  const Zel::EnumType& t = LdpStatusCodeEnumType();
  ASSERT_EQ(t.enumeratorCount(), 37u);
  size_t fatal = 0;
  for (const auto& e : t.enumerators()) {
    const bool expected = kFatal.count(e.name) > 0;
    EXPECT_EQ(statusCodeEBitForStatusCode(static_cast<LdpStatusCode>(e.value)), expected) << e.name;
    fatal += expected;
  }
  EXPECT_EQ(fatal, kFatal.size()) << "a fatal code of the table is missing from the enumeration";
}

TEST(StatusCodeEBitDeathTest, ValueOutsideTheTableFailsTheAssertion) {
  EXPECT_DEATH(statusCodeEBitForStatusCode(static_cast<Ldp::LdpStatusCode>(26)),
               "!\"Missing status code E-bit definition\"");
}

TEST(StatusCodeSessionState, Texts) {
  EXPECT_EQ(sessionStateStrForStatusCode(ipChange_), "ipChange");
  EXPECT_EQ(sessionStateStrForStatusCode(tcpConnectionClosed_), "TCP connection closed");
  EXPECT_EQ(sessionStateStrForStatusCode(keepAliveExpired_), "keepAlive timer expired");
  EXPECT_EQ(sessionStateStrForStatusCode(mLdpChange_), "capability change - mLDP");
  EXPECT_EQ(sessionStateStrForStatusCode(static_cast<LdpStatusCode>(0x80000042u)),
            "attempting to establish TCP connection");
  for (const auto& e : LdpStatusCodeEnumType().enumerators()) {
    EXPECT_FALSE(sessionStateStrForStatusCode(static_cast<LdpStatusCode>(e.value)).empty())
        << e.name;
  }
  // Codes without a text of their own give their name; values outside the table, their number.
  EXPECT_EQ(sessionStateStrForStatusCode(wrongCBit_), "wrongCBit");
  EXPECT_EQ(sessionStateStrForStatusCode(unknownMessageTypeIgnore_), "unknownMessageTypeIgnore");
  EXPECT_EQ(sessionStateStrForStatusCode(static_cast<LdpStatusCode>(26)), "26");
  EXPECT_EQ(sessionStateStrForStatusCode(static_cast<LdpStatusCode>(0x80000000u)), "2147483648");
}

}  // namespace
