#pragma once
// The library's text trace: named trace handles, each with a level from 0 (always of
// interest) to 9 (the most detail). A message is formatted only when its handle's
// level admits it, so a disabled trace point costs one comparison. Output goes to a
// sink: stderr by default, replaceable so that tests and the agent can capture it.
//
// The library's handles register themselves when the library is loaded:
//   "Ldp"       general messages (LDP_TRACE)
//   "LdpParse"  the PDU, message and TLV parsers (parse/)
//   "LdpWire"   checks of values laid over packet octets (wire/)
//   "LdpFec"    FEC filtering (fec/)
// The agent may define handles of its own; they join the list when constructed.
// The fast binary trace is in core/LdpBlink.h.

#include <cstdio>
#include <string_view>
#include <vector>

namespace Ldp {

class TraceHandle {
 public:
  // Registers the handle (disabled) under `name`, which must outlive it.
  explicit TraceHandle(const char* name);
  ~TraceHandle();
  TraceHandle(const TraceHandle&) = delete;
  TraceHandle& operator=(const TraceHandle&) = delete;

  const char* name() const { return name_; }
  // Messages at levels up to `level` are emitted; -1 emits none.
  void levelIs(int level);
  int level() const { return limit_ - 1; }

  // One past the highest level emitted, so that a handle that is still
  // zero-initialised (used before its constructor ran) emits nothing.
  int limit_ = 0;

 private:
  friend std::vector<TraceHandle*> traceHandles();
  const char* name_;
  TraceHandle* next_ = nullptr;
};

extern TraceHandle traceLdp;
extern TraceHandle traceParse;
extern TraceHandle traceWire;
extern TraceHandle traceFec;

// The registered handles in the order of registration.
std::vector<TraceHandle*> traceHandles();
// The handle named `name`, or nullptr.
TraceHandle* traceHandle(std::string_view name);

// Sets the level of every registered handle.
void traceLevelIs(int level);
// The highest level among the handles (-1 when all are disabled).
int traceLevel();

using TraceSink = void (*)(const TraceHandle& handle, int level, std::string_view text);
// Installs `sink` (nullptr restores the stderr sink) and returns the previous one.
TraceSink traceSinkIs(TraceSink sink);

// Formats like printf and hands the text to the sink; use LDP_TRACE_TO.
[[gnu::format(printf, 3, 4)]] void trace(const TraceHandle& handle, int level, const char* format,
                                         ...);

}  // namespace Ldp

#define LDP_TRACE_TO(handle, lvl, ...)                                       \
  do {                                                                       \
    if ((lvl) < (handle).limit_) ::Ldp::trace((handle), (lvl), __VA_ARGS__); \
  } while (0)

#define LDP_TRACE(lvl, ...) LDP_TRACE_TO(::Ldp::traceLdp, lvl, __VA_ARGS__)
