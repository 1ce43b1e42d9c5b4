// The state model at the size of a large router: bytes per entity, and creating and
// finding 100,000 sessions' configuration, status and statistics, each against plain
// std::unordered_map<LdpSessionId, std::shared_ptr<struct>> tables in the same run.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "fec/MplsLabelSet.h"
#include "model/LdpSession.h"

namespace {

using namespace Ldp;

constexpr int kSessions = 100000;

std::vector<LdpSessionId> sessionIds() {
  std::vector<LdpSessionId> ids;
  ids.reserve(kSessions);
  for (int i = 0; i < kSessions; ++i) {
    ids.emplace_back(LdpIdentifier(0x0A000000u + static_cast<uint32_t>(i), 0));
  }
  return ids;
}

// Heap bytes per object made by `make`, averaged over `count` objects that are kept.
template <class Make>
double heapBytesEach(int count, Make make) {
  std::vector<decltype(make(0))> held;
  held.reserve(count);
  struct mallinfo2 before = mallinfo2();
  for (int i = 0; i < count; ++i) held.push_back(make(i));
  struct mallinfo2 after = mallinfo2();
  return static_cast<double>(after.uordblks - before.uordblks) / count;
}

void BM_LdpSessionStatusBytes(benchmark::State& state) {
  const std::vector<LdpSessionId> ids = sessionIds();
  double bytes = 0;
  for (auto _ : state) {
    bytes = heapBytesEach(kSessions, [&](int i) { return ldpSessionStatusFactory(ids[i]); });
  }
  state.counters["sizeof"] = sizeof(LdpSessionStatus);
  state.counters["heapBytesEach"] = bytes;
}
BENCHMARK(BM_LdpSessionStatusBytes)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_MplsLabelSetBytes(benchmark::State& state) {
  const Mpls::FwdEqvClass fec =
      Mpls::FwdEqvClass::forPrefix(Ovo::IpGenPrefix(Ovo::IpGenAddr(Ovo::IpAddr(0x0A000000u)), 8));
  const Zel::Name name("labels");
  double bytes = 0;
  for (auto _ : state) {
    bytes = heapBytesEach(kSessions, [&](int i) {
      Zel::Ptr<MplsLabelSet> s = mplsLabelSetFactory(name, fec);
      for (uint32_t l = 0; l < 4; ++l) s->mplsLabelIs(Ovo::MplsLabel(16 + 4 * i + l), true);
      return s;
    });
  }
  state.counters["sizeof"] = sizeof(MplsLabelSet);
  state.counters["heapBytesEach"] = bytes;
}
BENCHMARK(BM_MplsLabelSetBytes)->Iterations(1)->Unit(benchmark::kMillisecond);

// The baseline: plain records with the same fields, collections as standard maps.
struct PlainConfig {
  LdpIdentifier localLdpIdentifier;
  Ovo::IpGenAddr peerIpAddr;
  uint32_t role = 0, peerStatusCode = 0;
  Zel::String reason;
  uint16_t keepAliveTime = 30, keepAliveTxInterval = 10, maxPduLength = 4096, peerConfigSeqNum = 0;
};
struct PlainStatus {
  LdpIdentifier localLdpIdentifier;
  bool tcpClientConnEnabled = false, addressMsgRcvd = false, addressMsgTsmt = false;
  bool operGrSupported = false;
  double tcpClientConnReqTime = 0, sessionUptime = 0, sessionStateLastChange = 0;
  double sessionExpireTime = 0, peerGrReconnectTimeout = 0, peerGrPeerRecoveryTimeout = 0;
  uint16_t peerKeepAliveTime = 30, peerKeepAliveTxInterval = 10, peerMaxPduLength = 4096;
  uint16_t operKeepAliveTime = 30, operMaxPduLength = 4096, operKeepAliveTxInterval = 10;
  uint16_t localPort = 0, peerPort = 0;
  uint32_t peerLabelAdvDspl = 3, operLabelAdvDspl = 2, sessionState = 0, sessionOpState = 0;
  uint32_t code = 0, peerLabelRescAvailableCount = 0, operGrState = 0;
  uint64_t fatalRetryCount = 0;
  Zel::String sessionStateReason;
  Ovo::IpGenAddr localIpAddr, peerIpAddr;
  std::unordered_map<uint32_t, bool> peerCapability;
  std::unordered_map<uint32_t, uint64_t> sessionStateCount;
  std::unordered_map<Ovo::IpGenAddr, bool, Zel::HashOf<Ovo::IpGenAddr>> peerIntfIp;
  std::shared_ptr<int> sessionStateLogEntryColl;
};
struct PlainStatistics {
  std::unordered_map<uint32_t, LdpMsgIdFecMappingInfo> ldpMsgIdFecMappingInfo;
  uint64_t ldpPduRxCount = 0, ldpPduTxCount = 0, ldpPduRxErrorCount = 0;
  std::unordered_map<uint32_t, PwMsgIdFecMappingInfo> pwLocalMsgIdInfo, pwRemoteMsgIdInfo;
  std::unordered_map<uint32_t, uint64_t> ldpMsgRxCount, ldpMsgTxCount;
  std::unordered_map<uint32_t, uint64_t> ldpMsgNotificationRxCount, ldpMsgNotificationTxCount;
};
struct IdHash {
  size_t operator()(const LdpSessionId& id) const { return id.hash(); }
};
template <class T>
using PlainTable = std::unordered_map<LdpSessionId, std::shared_ptr<T>, IdHash>;

struct Tables {
  Zel::Ptr<LdpSessionConfigColl> config = ldpSessionConfigCollFactory("config");
  Zel::Ptr<LdpSessionStatusColl> status = ldpSessionStatusCollFactory("status");
  Zel::Ptr<LdpSessionStatisticsColl> statistics = ldpSessionStatisticsCollFactory("statistics");
  void fill(const std::vector<LdpSessionId>& ids) {
    for (const LdpSessionId& id : ids) {
      config->sessionConfigIs(id);
      status->sessionStatusIs(id);
      statistics->sessionStatisticsIs(id);
    }
  }
};
struct PlainTables {
  PlainTable<PlainConfig> config;
  PlainTable<PlainStatus> status;
  PlainTable<PlainStatistics> statistics;
  void fill(const std::vector<LdpSessionId>& ids) {
    for (const LdpSessionId& id : ids) {
      config.emplace(id, std::make_shared<PlainConfig>());
      status.emplace(id, std::make_shared<PlainStatus>());
      statistics.emplace(id, std::make_shared<PlainStatistics>());
    }
  }
};

template <class T>
void createSessions(benchmark::State& state) {
  const std::vector<LdpSessionId> ids = sessionIds();
  for (auto _ : state) {
    T tables;
    tables.fill(ids);
    benchmark::DoNotOptimize(tables);
    state.PauseTiming();  // destruction is not creation
    { T gone = std::move(tables); }
    state.ResumeTiming();
  }
  state.counters["nsPerSession"] =
      benchmark::Counter(static_cast<double>(kSessions) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
void BM_CreateSessions(benchmark::State& state) { createSessions<Tables>(state); }
void BM_CreateSessionsBaseline(benchmark::State& state) { createSessions<PlainTables>(state); }
BENCHMARK(BM_CreateSessions)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CreateSessionsBaseline)->Unit(benchmark::kMillisecond);

// Finds each session's three records, in a shuffled order.
std::vector<LdpSessionId> shuffled() {
  std::vector<LdpSessionId> ids = sessionIds();
  uint64_t x = 88172645463325252ull;
  for (size_t i = ids.size() - 1; i > 0; --i) {
    x ^= x << 13, x ^= x >> 7, x ^= x << 17;
    std::swap(ids[i], ids[x % (i + 1)]);
  }
  return ids;
}

void BM_FindSessions(benchmark::State& state) {
  Tables t;
  t.fill(sessionIds());
  const std::vector<LdpSessionId> order = shuffled();
  for (auto _ : state) {
    for (const LdpSessionId& id : order) {
      benchmark::DoNotOptimize(t.config->sessionConfig(id).ptr());
      benchmark::DoNotOptimize(t.status->sessionStatus(id).ptr());
      benchmark::DoNotOptimize(t.statistics->sessionStatistics(id).ptr());
    }
  }
  state.counters["nsPerSession"] =
      benchmark::Counter(static_cast<double>(kSessions) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
void BM_FindSessionsBaseline(benchmark::State& state) {
  PlainTables t;
  t.fill(sessionIds());
  const std::vector<LdpSessionId> order = shuffled();
  for (auto _ : state) {
    for (const LdpSessionId& id : order) {
      benchmark::DoNotOptimize(t.config.find(id)->second.get());
      benchmark::DoNotOptimize(t.status.find(id)->second.get());
      benchmark::DoNotOptimize(t.statistics.find(id)->second.get());
    }
  }
  state.counters["nsPerSession"] =
      benchmark::Counter(static_cast<double>(kSessions) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_FindSessions)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindSessionsBaseline)->Unit(benchmark::kMillisecond);

}  // namespace
