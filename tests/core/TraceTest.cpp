// The text trace's handles: registration at load and by construction, one level per
// handle, and the handle each message names to the sink.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/LdpTrace.h"
#include "parse/LdpPduParser.h"
#include "tests/support/PduBuilder.h"

using namespace Ldp;

namespace {

using Seen = std::vector<std::pair<std::string, std::string>>;  // handle, text
Seen seen;

// Collects what reaches the sink while alive; restores sink and levels after.
class Capture {
 public:
  Capture()
      : oldSink_(traceSinkIs([](const TraceHandle& h, int, std::string_view text) {
          seen.emplace_back(h.name(), text);
        })) {
    for (TraceHandle* h : traceHandles()) oldLevels_.emplace_back(h, h->level());
    traceLevelIs(-1);
    seen.clear();
  }
  ~Capture() {
    traceSinkIs(oldSink_);
    for (auto [h, level] : oldLevels_) h->levelIs(level);
  }

 private:
  TraceSink oldSink_;
  std::vector<std::pair<TraceHandle*, int>> oldLevels_;
};

std::vector<std::string> names() {
  std::vector<std::string> v;
  for (const TraceHandle* h : traceHandles()) v.emplace_back(h->name());
  return v;
}

TEST(TraceHandles, LibraryHandlesAreRegisteredAtLoadAndOthersWhileTheyLive) {
  EXPECT_EQ(names(), (std::vector<std::string>{"Ldp", "LdpParse", "LdpWire", "LdpFec"}));
  EXPECT_EQ(traceHandle("LdpParse"), &traceParse);
  EXPECT_EQ(traceHandle("Ldpparse"), nullptr);
  {
    TraceHandle agent("LdpAgentTest");
    EXPECT_EQ(names().back(), "LdpAgentTest");
    EXPECT_EQ(traceHandle("LdpAgentTest"), &agent);
    EXPECT_EQ(agent.level(), -1);
  }
  EXPECT_EQ(traceHandle("LdpAgentTest"), nullptr);
  EXPECT_EQ(names().size(), 4u);
}

TEST(TraceHandles, EachHandleGatesItsOwnTracePointsByLevel) {
  Capture capture;
  int evaluated = 0;
  const auto arg = [&] { return ++evaluated; };
  traceParse.levelIs(6);
  EXPECT_EQ(traceLevel(), 6);
  LDP_TRACE_TO(traceParse, 6, "parse %d", arg());
  LDP_TRACE_TO(traceParse, 7, "too detailed %d", arg());
  LDP_TRACE_TO(traceWire, 0, "wire off %d", arg());
  LDP_TRACE(0, "default off %d", arg());
  traceLdp.levelIs(0);
  LDP_TRACE(0, "default %d", arg());
  EXPECT_EQ(seen, (Seen{{"LdpParse", "parse 1"}, {"Ldp", "default 2"}}));
  EXPECT_EQ(evaluated, 2) << "a disabled trace point evaluated its arguments";

  traceLdp.levelIs(42);
  EXPECT_EQ(traceLdp.level(), 9);
  traceLdp.levelIs(-7);
  EXPECT_EQ(traceLdp.level(), -1);
  traceLevelIs(3);
  for (const TraceHandle* h : traceHandles()) EXPECT_EQ(h->level(), 3) << h->name();
}

TEST(TraceHandles, ParserTracesGoThroughLdpParse) {
  Capture capture;
  const auto parse = [] {
    const LdpIdentifier id(0x0A000001, 0);
    return ldpPduParserFactory(LdpTest::PduBuilder(id)
                                   .message(LdpHello_, 7)
                                   .tlv(commonHelloTlv_, {0x00, 0x0F, 0x00, 0x00})
                                   .end()
                                   .pkt(),
                               0)
        ->validLdpPdu();
  };
  traceLevelIs(9);
  traceParse.levelIs(-1);
  EXPECT_TRUE(parse());
  EXPECT_TRUE(seen.empty()) << seen.front().first << ": " << seen.front().second;
  traceLevelIs(-1);
  traceParse.levelIs(8);
  EXPECT_TRUE(parse());
  ASSERT_FALSE(seen.empty());
  for (const auto& [handle, text] : seen) EXPECT_EQ(handle, "LdpParse") << text;
}

}  // namespace
