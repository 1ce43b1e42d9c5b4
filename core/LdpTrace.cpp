#include "core/LdpTrace.h"

#include <algorithm>
#include <cstdarg>
#include <mutex>

namespace Ldp {

namespace {

// Constant-initialised, so that handles of any translation unit can register
// during the library's dynamic initialisation, whatever its order.
constinit std::mutex handlesMutex;
constinit TraceHandle* firstHandle = nullptr;

void stderrSink(const TraceHandle& handle, int level, std::string_view text) {
  std::fprintf(stderr, "%s[%d] %.*s\n", handle.name(), level, static_cast<int>(text.size()),
               text.data());
}

TraceSink sink_ = stderrSink;

}  // namespace

TraceHandle::TraceHandle(const char* name) : name_(name) {
  const std::lock_guard<std::mutex> lock(handlesMutex);
  TraceHandle** link = &firstHandle;
  while (*link) link = &(*link)->next_;
  *link = this;
}

TraceHandle::~TraceHandle() {
  const std::lock_guard<std::mutex> lock(handlesMutex);
  for (TraceHandle** link = &firstHandle; *link; link = &(*link)->next_) {
    if (*link == this) {
      *link = next_;
      break;
    }
  }
}

void TraceHandle::levelIs(int level) { limit_ = std::clamp(level, -1, 9) + 1; }

TraceHandle traceLdp("Ldp");
TraceHandle traceParse("LdpParse");
TraceHandle traceWire("LdpWire");
TraceHandle traceFec("LdpFec");

std::vector<TraceHandle*> traceHandles() {
  const std::lock_guard<std::mutex> lock(handlesMutex);
  std::vector<TraceHandle*> handles;
  for (TraceHandle* h = firstHandle; h; h = h->next_) handles.push_back(h);
  return handles;
}

TraceHandle* traceHandle(std::string_view name) {
  for (TraceHandle* h : traceHandles()) {
    if (name == h->name()) return h;
  }
  return nullptr;
}

void traceLevelIs(int level) {
  for (TraceHandle* h : traceHandles()) h->levelIs(level);
}

int traceLevel() {
  int level = -1;
  for (const TraceHandle* h : traceHandles()) level = std::max(level, h->level());
  return level;
}

TraceSink traceSinkIs(TraceSink sink) {
  TraceSink old = sink_;
  sink_ = sink ? sink : stderrSink;
  return old;
}

void trace(const TraceHandle& handle, int level, const char* format, ...) {
  char buf[512];
  va_list args;
  va_start(args, format);
  int n = std::vsnprintf(buf, sizeof buf, format, args);
  va_end(args);
  if (n < 0) return;
  size_t len = static_cast<size_t>(n) < sizeof buf ? static_cast<size_t>(n) : sizeof buf - 1;
  sink_(handle, level, std::string_view(buf, len));
}

}  // namespace Ldp
