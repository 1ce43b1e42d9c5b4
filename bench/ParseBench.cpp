// Cost of validating a received PDU and finding its messages, per message, beside
// a bare loop that only steps over the same message headers (the floor). The PDUs
// hold Label Mapping-sized messages, each with a FEC TLV (one prefix element) and a
// Generic Label TLV. allocsPerPdu counts operator new calls while parsing.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "parse/LdpGenMsgParser.h"

namespace {
// Benchmarks run on one thread: a plain count adds next to nothing to an allocation.
uint64_t allocations = 0;
// Out of line so that g++ does not pair the free() with the operator new call
// sites it inlines into (-Wmismatched-new-delete).
[[gnu::noinline]] void freeBlock(void* p) { std::free(p); }
}  // namespace

void* operator new(size_t n) {
  ++allocations;
  if (void* p = std::malloc(n ? n : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { freeBlock(p); }
void operator delete(void* p, size_t) noexcept { freeBlock(p); }

namespace {

using namespace Ldp;

void put16(std::vector<uint8_t>& v, uint16_t x) {
  v.push_back(static_cast<uint8_t>(x >> 8));
  v.push_back(static_cast<uint8_t>(x));
}

// A PDU of `messages` Label Mappings of 27 octets each.
std::vector<uint8_t> labelMappingPdu(int messages) {
  std::vector<uint8_t> v;
  put16(v, 1);                                              // version
  put16(v, static_cast<uint16_t>(6 + 27 * messages));       // length
  v.insert(v.end(), {0x0A, 0x00, 0x00, 0x01, 0x00, 0x00});  // LDP identifier
  for (int i = 0; i < messages; ++i) {
    put16(v, LdpLabelMapping_);
    put16(v, 23);
    v.insert(v.end(), {0x00, 0x00, 0x01, static_cast<uint8_t>(i)});  // message id
    put16(v, fecTlv_);
    put16(v, 7);
    v.insert(v.end(), {0x02, 0x00, 0x01, 24, 0x0A, 0x01, static_cast<uint8_t>(i)});  // prefix
    put16(v, genLabelTlv_);
    put16(v, 4);
    v.insert(v.end(), {0x00, 0x00, 0x10, static_cast<uint8_t>(i)});
  }
  return v;
}

void perMessageCounters(benchmark::State& state, int messages, uint64_t allocs) {
  state.SetItemsProcessed(state.iterations() * messages);
  state.counters["timePerMsg"] = benchmark::Counter(
      messages, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["allocsPerPdu"] =
      static_cast<double>(allocs) / static_cast<double>(state.iterations());
}

// ldpPduParserFactory: the header checks and the walk over the messages.
void BM_ParsePdu(benchmark::State& state) {
  const int messages = static_cast<int>(state.range(0));
  const std::vector<uint8_t> octets = labelMappingPdu(messages);
  Zel::Ptr<Ovo::Pkt> pkt = Ovo::pktFactory(octets.data(), octets.size());
  const uint64_t before = allocations;
  for (auto _ : state) {
    Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(pkt, 0);
    benchmark::DoNotOptimize(p->messageOffset(static_cast<uint32_t>(messages - 1)));
    if (p->messageNum() != static_cast<uint32_t>(messages)) state.SkipWithError("bad parse");
  }
  perMessageCounters(state, messages, allocations - before);
}
BENCHMARK(BM_ParsePdu)->Arg(8)->Arg(20);

// The floor: read each message's length field and step over the message.
void BM_StepMessageHeaders(benchmark::State& state) {
  const int messages = static_cast<int>(state.range(0));
  const std::vector<uint8_t> octets = labelMappingPdu(messages);
  Zel::Ptr<Ovo::Pkt> pkt = Ovo::pktFactory(octets.data(), octets.size());
  const uint64_t before = allocations;
  for (auto _ : state) {
    const uint8_t* front = pkt->front();
    const size_t end = pkt->frontBytes();
    int found = 0;
    for (size_t cursor = sizeof(LdpPduHdr); cursor < end; ++found) {
      benchmark::DoNotOptimize(cursor);
      cursor += overlay<LdpMsgHdr>(front + cursor)->totalLength();
    }
    if (found != messages) state.SkipWithError("bad walk");
  }
  perMessageCounters(state, messages, allocations - before);
}
BENCHMARK(BM_StepMessageHeaders)->Arg(8)->Arg(20);

}  // namespace
