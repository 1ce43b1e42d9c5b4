#pragma once
// Helpers the parser suites share: the message parser of a built message and the
// check of a list of refusals (and, through Traced.h, the trace a parse writes).

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parse/LdpMsgParser.h"
#include "tests/support/PduBuilder.h"
#include "tests/support/Traced.h"

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

}  // namespace LdpTest
