// Zel::HashMap2018 against std::unordered_map: insertion into an empty map, finds
// that all hit, and erasure of every key, each over the same 1,000,000 distinct
// pseudo-random uint32 keys (fixed seed). Both maps use their default hash
// (HashOf<uint32_t> / std::hash<uint32_t>) and no reserve().
//
// Finds and erasures visit the keys in a second, independent shuffle of the
// insertion order: in insertion order std::unordered_map would walk its nodes in
// allocation order, a prefetch-friendly pattern real lookups do not have.
// Building the map for the erase benchmark, and destroying the map after the
// insert benchmark, are outside the timed region.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <unordered_map>
#include <vector>

#include "platform/zel/HashMap2018.h"

namespace {

constexpr size_t keyCount = 1000000;

struct Keys {
  std::vector<uint32_t> insertOrder;
  std::vector<uint32_t> lookupOrder;
};

const Keys& keys() {
  static const Keys k = [] {
    Keys out;
    std::mt19937 rng(20180417);
    std::vector<uint32_t> v;
    v.reserve(keyCount + keyCount / 50);
    while (v.size() < keyCount) {
      while (v.size() < keyCount + keyCount / 100) v.push_back(static_cast<uint32_t>(rng()));
      std::sort(v.begin(), v.end());
      v.erase(std::unique(v.begin(), v.end()), v.end());
    }
    std::shuffle(v.begin(), v.end(), rng);
    v.resize(keyCount);
    out.insertOrder = v;
    std::shuffle(v.begin(), v.end(), rng);
    out.lookupOrder = std::move(v);
    return out;
  }();
  return k;
}

// Uniform face of the two maps.
struct HashMap2018 {
  Zel::HashMap2018<uint32_t, uint32_t> m;
  void insert(uint32_t k, uint32_t v) { m.insert(k, v); }
  const uint32_t* find(uint32_t k) const { return m.find(k); }
  bool erase(uint32_t k) { return m.erase(k); }
  size_t size() const { return m.size(); }
};

struct StdUnorderedMap {
  std::unordered_map<uint32_t, uint32_t> m;
  void insert(uint32_t k, uint32_t v) { m.try_emplace(k, v); }
  const uint32_t* find(uint32_t k) const {
    const auto it = m.find(k);
    return it == m.end() ? nullptr : &it->second;
  }
  bool erase(uint32_t k) { return m.erase(k) == 1; }
  size_t size() const { return m.size(); }
};

template <class Map>
void fill(Map& map) {
  for (uint32_t k : keys().insertOrder) map.insert(k, k ^ 0x5A5A5A5Au);
}

template <class Map>
void BM_Insert(benchmark::State& state) {
  const Keys& k = keys();
  std::optional<Map> map;
  for (auto _ : state) {
    map.emplace();
    for (uint32_t key : k.insertOrder) map->insert(key, key ^ 0x5A5A5A5Au);
    benchmark::DoNotOptimize(map->size());
    state.PauseTiming();
    if (map->size() != keyCount) state.SkipWithError("lost a key");
    map.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * keyCount));
}

template <class Map>
void BM_FindHit(benchmark::State& state) {
  const Keys& k = keys();
  Map map;
  fill(map);
  for (auto _ : state) {
    uint64_t sum = 0;
    size_t hits = 0;
    for (uint32_t key : k.lookupOrder) {
      const uint32_t* v = map.find(key);
      if (v) {
        sum += *v;
        ++hits;
      }
    }
    benchmark::DoNotOptimize(sum);
    if (hits != keyCount) state.SkipWithError("missed a key");
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * keyCount));
}

template <class Map>
void BM_Erase(benchmark::State& state) {
  const Keys& k = keys();
  Map full;
  fill(full);
  std::optional<Map> map;
  for (auto _ : state) {
    state.PauseTiming();
    map.emplace(full);
    state.ResumeTiming();
    size_t erased = 0;
    for (uint32_t key : k.lookupOrder) erased += map->erase(key);
    benchmark::DoNotOptimize(erased);
    state.PauseTiming();
    if (erased != keyCount || map->size() != 0) state.SkipWithError("erase missed a key");
    map.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * keyCount));
}

BENCHMARK_TEMPLATE(BM_Insert, HashMap2018)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Insert, StdUnorderedMap)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_FindHit, HashMap2018)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_FindHit, StdUnorderedMap)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Erase, HashMap2018)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Erase, StdUnorderedMap)->Unit(benchmark::kMillisecond);

}  // namespace
