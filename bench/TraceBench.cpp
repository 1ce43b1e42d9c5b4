// One trace record through Blink (a ring file in the temporary directory, size
// setting 24) against the same record through the text trace into a sink that
// discards it, with three integers and with an integer and a string; and the cost
// of either trace point when it is off.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "core/LdpBlink.h"
#include "core/LdpTrace.h"

namespace {

const char* const fec = "10.1.0.0/16";

// Blink recording into a file of its own while alive.
class Recording {
 public:
  explicit Recording(benchmark::State& state)
      : path_((std::filesystem::temp_directory_path() /
               ("ldp-tracebench-" + std::to_string(getpid()) + ".bl"))
                  .string()) {
    if (const std::string error = Ldp::Blink::start(path_); !error.empty()) {
      state.SkipWithError(error.c_str());
    }
  }
  ~Recording() {
    Ldp::Blink::stop();
    std::remove(path_.c_str());
  }

 private:
  std::string path_;
};

// The text trace at level 6 into a sink that discards, while alive.
class Texting {
 public:
  Texting() : oldSink_(Ldp::traceSinkIs([](const Ldp::TraceHandle&, int, std::string_view) {})) {
    Ldp::traceParse.levelIs(6);
  }
  ~Texting() {
    Ldp::traceParse.levelIs(-1);
    Ldp::traceSinkIs(oldSink_);
  }

 private:
  Ldp::TraceSink oldSink_;
};

void BM_BlinkThreeIntegers(benchmark::State& state) {
  const Recording on(state);
  uint32_t i = 0;
  for (auto _ : state) {
    LDP_BLINK("   Msg/TLV %u: offset %u, size %u", i, i + 4, 20u);
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_TextThreeIntegers(benchmark::State& state) {
  const Texting on;
  uint32_t i = 0;
  for (auto _ : state) {
    LDP_TRACE_TO(Ldp::traceParse, 6, "   Msg/TLV %u: offset %u, size %u", i, i + 4, 20u);
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_BlinkIntegerAndString(benchmark::State& state) {
  const Recording on(state);
  uint32_t i = 0;
  for (auto _ : state) {
    LDP_BLINK("      FEC TLV element %u %s", i, fec);
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_TextIntegerAndString(benchmark::State& state) {
  const Texting on;
  uint32_t i = 0;
  for (auto _ : state) {
    LDP_TRACE_TO(Ldp::traceParse, 6, "      FEC TLV element %u %s", i, fec);
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_BlinkOff(benchmark::State& state) {
  uint32_t i = 0;
  for (auto _ : state) {
    LDP_BLINK("   Msg/TLV %u: offset %u, size %u", i, i + 4, 20u);
    benchmark::DoNotOptimize(++i);
  }
}

void BM_TextOff(benchmark::State& state) {
  uint32_t i = 0;
  for (auto _ : state) {
    LDP_TRACE_TO(Ldp::traceParse, 6, "   Msg/TLV %u: offset %u, size %u", i, i + 4, 20u);
    benchmark::DoNotOptimize(++i);
  }
}

}  // namespace

BENCHMARK(BM_BlinkThreeIntegers);
BENCHMARK(BM_TextThreeIntegers);
BENCHMARK(BM_BlinkIntegerAndString);
BENCHMARK(BM_TextIntegerAndString);
BENCHMARK(BM_BlinkOff);
BENCHMARK(BM_TextOff);
