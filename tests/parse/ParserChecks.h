#pragma once
// Helpers the parser suites share: the message parser of a built message, the
// check of a list of refusals, and the collection of the trace a parse writes.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "core/LdpTrace.h"
#include "parse/LdpMsgParser.h"
#include "tests/support/PduBuilder.h"

namespace LdpTest {

// The parser ldpMsgParserGet() gives for the message of `b`, placed after 3 lead
// octets.
inline Ldp::LdpMsgParser::Ptr parsed(const PduBuilder& b) {
  return Ldp::ldpMsgParserGet(b.pkt(3), 3);
}

// A message its parser refuses, with the code and reason expected.
struct Refusal {
  PduBuilder msg;
  Ldp::LdpStatusCode code;
  std::string reason;
};

// Each case is refused with its code and reason, and its string form is `prefix`
// followed by the reason.
inline void expectRefusals(const std::vector<Refusal>& cases, const std::string& prefix) {
  for (const Refusal& c : cases) {
    Ldp::LdpMsgParser::Ptr p = parsed(c.msg);
    EXPECT_EQ(p->statusCode(), c.code) << c.reason;
    EXPECT_EQ(p->reason(), c.reason);
    EXPECT_EQ(p->stringValue(), prefix + c.reason);
  }
}

// The traces the last traced() collected.
inline std::vector<std::string> traces;

// Runs `f` with the traces of level 6 and below collected in `traces`, and
// returns what `f` returns. The previous sink and level are restored.
template <class F>
auto traced(F f) {
  traces.clear();
  const Ldp::TraceSink oldSink =
      Ldp::traceSinkIs([](int, std::string_view text) { traces.emplace_back(text); });
  const int oldLevel = Ldp::traceLevel();
  Ldp::traceLevelIs(6);
  auto result = f();
  Ldp::traceSinkIs(oldSink);
  Ldp::traceLevelIs(oldLevel);
  return result;
}

}  // namespace LdpTest
