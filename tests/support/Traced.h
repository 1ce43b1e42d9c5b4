#pragma once
// Collects the trace a piece of code writes, for the suites that check it.

#include <string>
#include <string_view>
#include <vector>

#include "core/LdpTrace.h"

namespace LdpTest {

// The traces the last traced() collected.
inline std::vector<std::string> traces;

// Runs `f` with the traces of level 6 and below collected in `traces`, and
// returns what `f` returns. The previous sink and level are restored.
template <class F>
auto traced(F f) {
  traces.clear();
  const Ldp::TraceSink oldSink = Ldp::traceSinkIs(
      [](const Ldp::TraceHandle&, int, std::string_view text) { traces.emplace_back(text); });
  const int oldLevel = Ldp::traceLevel();
  Ldp::traceLevelIs(6);
  auto result = f();
  Ldp::traceSinkIs(oldSink);
  Ldp::traceLevelIs(oldLevel);
  return result;
}

}  // namespace LdpTest
