// Replication: one attribute change with an attached adapter writing it to the log,
// against the same change with no adapter, in the same run; the octets a change puts
// on the log; and mirroring 10,000 sessions' status from scratch (time and octets).

#include <benchmark/benchmark.h>

#include "model/LdpSession.h"
#include "platform/zel/AttrLogWriter.h"

namespace {

using namespace Ldp;

LdpSessionId sessionId(uint32_t i) { return LdpSessionId(LdpIdentifier(0x0A000000u + i, 0)); }

// Runs `change` once per iteration; the transport takes the log's bytes away now and
// then. Counts the octets written per change.
template <class Change>
void measureChanges(benchmark::State& state, Zel::NboAttrLog::Writer& w, Change change) {
  w.out()->clear();
  size_t written = 0;
  for (auto _ : state) {
    change();
    if (w.out()->size() > (1 << 16)) {
      written += w.out()->size();
      w.out()->clear();
    }
  }
  written += w.out()->size();
  state.counters["logBytesPerChange"] =
      static_cast<double>(written) / static_cast<double>(state.iterations());
}

void changeKeepAlive(benchmark::State& state, bool attached) {
  Zel::Ptr<LdpSessionStatusColl> coll = ldpSessionStatusCollFactory("status");
  Zel::Ptr<LdpSessionStatus> s = coll->sessionStatusIs(sessionId(1));
  Zel::Ptr<Zel::NboAttrLog::Writer> w = new Zel::NboAttrLog::Writer(new Zel::NboAttrLog::Out);
  if (attached) w->rootIs(coll);
  uint16_t v = 30;
  measureChanges(state, *w, [&] {
    v = static_cast<uint16_t>(v == 30 ? 31 : 30);
    s->peerKeepAliveTimeIs(v);
  });
}
void BM_AttributeChange(benchmark::State& state) { changeKeepAlive(state, false); }
void BM_AttributeChangeWithAdapter(benchmark::State& state) { changeKeepAlive(state, true); }
BENCHMARK(BM_AttributeChange);
BENCHMARK(BM_AttributeChangeWithAdapter);

// Changes alternating between two sessions: each record needs a select record first.
void BM_AttributeChangeWithAdapterTwoSessions(benchmark::State& state) {
  Zel::Ptr<LdpSessionStatusColl> coll = ldpSessionStatusCollFactory("status");
  Zel::Ptr<LdpSessionStatus> s[2] = {coll->sessionStatusIs(sessionId(1)),
                                     coll->sessionStatusIs(sessionId(2))};
  Zel::Ptr<Zel::NboAttrLog::Writer> w = new Zel::NboAttrLog::Writer(new Zel::NboAttrLog::Out);
  w->rootIs(coll);
  uint64_t n = 0;
  measureChanges(state, *w, [&] {
    ++n;
    s[n & 1]->fatalRetryCountIs(n);
  });
}
BENCHMARK(BM_AttributeChangeWithAdapterTwoSessions);

void BM_ResyncTenThousandSessions(benchmark::State& state) {
  Zel::Ptr<LdpSessionStatusColl> coll = ldpSessionStatusCollFactory("status");
  for (uint32_t i = 0; i < 10000; ++i) {
    Zel::Ptr<LdpSessionStatus> s = coll->sessionStatusIs(sessionId(i));
    s->sessionStateIs(stateOperational_);
    s->sessionStateLogEntryCollIs("log")->addSessionStateLogEntry(
        LdpSessionStateLogEntry(1.0, stateOperational_, LdpStatusCode(), "up"));
  }
  size_t bytes = 0;
  for (auto _ : state) {
    Zel::Ptr<Zel::NboAttrLog::Writer> w = new Zel::NboAttrLog::Writer(new Zel::NboAttrLog::Out);
    w->rootIs(coll);
    bytes = w->out()->size();
    benchmark::DoNotOptimize(bytes);
    state.PauseTiming();  // detaching is not the resynchronisation
    w = nullptr;
    state.ResumeTiming();
  }
  state.counters["logBytes"] = static_cast<double>(bytes);
  state.counters["logBytesPerSession"] = static_cast<double>(bytes) / 10000.0;
}
BENCHMARK(BM_ResyncTenThousandSessions)->Unit(benchmark::kMillisecond);

}  // namespace
