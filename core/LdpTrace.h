#pragma once
// The library's trace facility: one text trace with levels 0 (always of interest)
// to 9 (the most detail). A message is formatted only when its level is enabled,
// so trace points cost one comparison on hot paths. Output goes to a sink: stderr
// by default, replaceable so that tests and the agent can capture it.

#include <cstdio>
#include <string_view>

namespace Ldp {

using TraceSink = void (*)(int level, std::string_view text);

// Messages at levels up to `level` are emitted; -1 (the default) emits none.
void traceLevelIs(int level);
int traceLevel();
// Installs `sink` (nullptr restores the stderr sink) and returns the previous one.
TraceSink traceSinkIs(TraceSink sink);

// Formats like printf and hands the text to the sink; use LDP_TRACE.
[[gnu::format(printf, 2, 3)]] void trace(int level, const char* format, ...);

namespace TraceDetail {
extern int level_;
}

}  // namespace Ldp

#define LDP_TRACE(lvl, ...)                                                    \
  do {                                                                         \
    if ((lvl) <= ::Ldp::TraceDetail::level_) ::Ldp::trace((lvl), __VA_ARGS__); \
  } while (0)
