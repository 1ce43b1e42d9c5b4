// Costs of the generated entity conventions: setters with and without a change and
// reactor, and the memory taken by one small entity.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <string>
#include <vector>

#include "model/LdpConfig.h"

namespace {

using namespace Ldp;

class CountingReactor : public Config::NotifieeConst {
 public:
  explicit CountingReactor(const Zel::Ptr<const Config>& c) { notifierIs(c); }
  void onHelloHoldTime() override { ++calls; }
  uint64_t calls = 0;
};

// An unchanged write: one comparison, no visit.
void BM_XIsUnchanged(benchmark::State& state) {
  Zel::Ptr<Config> c = configFactory(L3::VrfName("default"));
  CountingReactor reactor(c);
  c->helloHoldTimeIs(20);
  for (auto _ : state) {
    c->helloHoldTimeIs(20);
    benchmark::ClobberMemory();
  }
  if (reactor.calls != 1) state.SkipWithError("unchanged write notified");
}
BENCHMARK(BM_XIsUnchanged);

// A changing write with `state.range(0)` reactors registered.
void BM_XIsChanged(benchmark::State& state) {
  Zel::Ptr<Config> c = configFactory(L3::VrfName("default"));
  std::vector<std::unique_ptr<CountingReactor>> reactors;
  for (int i = 0; i < state.range(0); ++i) reactors.push_back(std::make_unique<CountingReactor>(c));
  uint16_t v = 0;
  for (auto _ : state) {
    c->helloHoldTimeIs(++v);
    benchmark::ClobberMemory();
  }
  for (auto& r : reactors) {
    if (r->calls != static_cast<uint64_t>(state.iterations())) state.SkipWithError("missed a call");
  }
}
BENCHMARK(BM_XIsChanged)->Arg(0)->Arg(1);

// Memory of one LdpIntfConfig: the object itself and its heap footprint (the
// allocation of the object and of its name), averaged over many entities.
void BM_LdpIntfConfigBytes(benchmark::State& state) {
  constexpr int count = 100000;
  std::vector<Zel::Name> names;
  for (int i = 0; i < count; ++i) names.emplace_back("Ethernet" + std::to_string(i));
  std::vector<Zel::Ptr<LdpIntfConfig>> held;
  held.reserve(count);
  size_t heapPerEntity = 0;
  for (auto _ : state) {
    state.PauseTiming();
    held.clear();
    names.clear();
    struct mallinfo2 before = mallinfo2();
    for (int i = 0; i < count; ++i) {
      held.push_back(ldpIntfConfigFactory(Zel::Name("Ethernet" + std::to_string(i))));
    }
    struct mallinfo2 after = mallinfo2();
    heapPerEntity = (after.uordblks - before.uordblks) / count;
    state.ResumeTiming();
  }
  state.counters["sizeof"] = sizeof(LdpIntfConfig);
  state.counters["heapBytesWithName"] = static_cast<double>(heapPerEntity);
}
BENCHMARK(BM_LdpIntfConfigBytes)->Iterations(1);

}  // namespace
