// Cost of validating a received PDU and finding its messages, per message, beside
// a bare loop that only steps over the same message headers (the floor). The PDUs
// hold Label Mapping-sized messages, each with a FEC TLV (one prefix element) and a
// Generic Label TLV. allocsPerPdu counts operator new calls while parsing.
//
// BM_ParseMixedStream takes a session's steady traffic (mostly Label Mappings with
// prefix FECs, some Hellos and KeepAlives) to per-message verdicts through
// ldpMsgParserGet(): messages per second, the ratio of its time to the bare header
// walk over the same stream (timed in the same iterations, both in thread CPU
// time), and heap allocations (global operator new calls) per message: by the
// message parsers alone, and with the PDU parsers' share. Parser objects take
// recycled blocks, so in the steady state only a PDU's offset buffer beyond its
// inline capacity reaches the heap.

#include <benchmark/benchmark.h>

#include <time.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "parse/LdpGenMsgParser.h"
#include "parse/LdpMsgParser.h"

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

// A PDU of one Hello (common hello, IPv4 transport address, configuration sequence
// number) or of one KeepAlive.
std::vector<uint8_t> helloPdu() {
  std::vector<uint8_t> v;
  put16(v, 1);
  put16(v, 6 + 32);
  v.insert(v.end(), {0x0A, 0x00, 0x00, 0x01, 0x00, 0x00});
  put16(v, LdpHello_);
  put16(v, 28);
  v.insert(v.end(), {0x00, 0x00, 0x00, 0x07});
  put16(v, commonHelloTlv_);
  put16(v, 4);
  v.insert(v.end(), {0x00, 0x0F, 0x00, 0x00});
  put16(v, ipv4TransportAddrTlv_);
  put16(v, 4);
  v.insert(v.end(), {0x0A, 0x00, 0x00, 0x01});
  put16(v, configSeqNumTlv_);
  put16(v, 4);
  v.insert(v.end(), {0x00, 0x00, 0x00, 0x01});
  return v;
}

std::vector<uint8_t> keepAlivePdu() {
  std::vector<uint8_t> v;
  put16(v, 1);
  put16(v, 6 + 8);
  v.insert(v.end(), {0x0A, 0x00, 0x00, 0x01, 0x00, 0x00});
  put16(v, LdpKeepAlive_);
  put16(v, 4);
  v.insert(v.end(), {0x00, 0x00, 0x00, 0x08});
  return v;
}

// 32 PDUs of 4 to 16 Label Mappings, with a Hello and a KeepAlive PDU after every
// third: 320 Label Mappings among 340 messages.
std::vector<Zel::Ptr<Ovo::Pkt>> mixedStream(uint32_t* messages) {
  std::vector<Zel::Ptr<Ovo::Pkt>> stream;
  *messages = 0;
  auto add = [&](const std::vector<uint8_t>& v, uint32_t n) {
    stream.push_back(Ovo::pktFactory(v.data(), v.size()));
    *messages += n;
  };
  for (int i = 0; i < 32; ++i) {
    const int mappings = 4 + (i % 4) * 4;
    add(labelMappingPdu(mappings), static_cast<uint32_t>(mappings));
    if (i % 3 == 2) {
      add(helloPdu(), 1);
      add(keepAlivePdu(), 1);
    }
  }
  return stream;
}

// The floor: step over every PDU's message headers.
uint32_t walkHeaders(const std::vector<Zel::Ptr<Ovo::Pkt>>& stream) {
  uint32_t found = 0;
  for (const Zel::Ptr<Ovo::Pkt>& pkt : stream) {
    const uint8_t* front = pkt->front();
    const size_t end = pkt->frontBytes();
    for (size_t cursor = sizeof(LdpPduHdr); cursor < end; ++found) {
      benchmark::DoNotOptimize(cursor);
      cursor += overlay<LdpMsgHdr>(front + cursor)->totalLength();
    }
  }
  return found;
}

// Every PDU parsed, then every message to its verdict; `msgAllocs` receives the
// allocations made by the message parsers alone.
uint32_t parseToVerdicts(const std::vector<Zel::Ptr<Ovo::Pkt>>& stream, uint64_t* msgAllocs) {
  uint32_t valid = 0;
  for (const Zel::Ptr<Ovo::Pkt>& pkt : stream) {
    Zel::Ptr<LdpPduParser> pdu = ldpPduParserFactory(pkt, 0);
    const uint32_t n = pdu->messageNum();
    const uint64_t before = allocations;
    for (uint32_t m = 0; m < n; ++m) {
      LdpMsgParser::Ptr p = ldpMsgParserGet(pkt, pdu->messageOffset(m));
      valid += p->validMsg() ? 1 : 0;
    }
    *msgAllocs += allocations - before;
  }
  return valid;
}

// This thread's CPU time in seconds: other processes on the machine do not count.
double cpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

void BM_ParseMixedStream(benchmark::State& state) {
  uint32_t messages = 0;
  const std::vector<Zel::Ptr<Ovo::Pkt>> stream = mixedStream(&messages);
  // The walk is far shorter than the parse: repeat it so the clock's own cost
  // does not dominate its time.
  constexpr int walkRepeats = 32;
  double parseTime = 0;
  double walkTime = 0;
  uint64_t allocs = 0;
  uint64_t msgAllocs = 0;
  for (auto _ : state) {
    const uint64_t before = allocations;
    const double t0 = cpuSeconds();
    const uint32_t valid = parseToVerdicts(stream, &msgAllocs);
    const double t1 = cpuSeconds();
    allocs += allocations - before;
    uint32_t walked = 0;
    for (int r = 0; r < walkRepeats; ++r) walked += walkHeaders(stream);
    const double t2 = cpuSeconds();
    parseTime += t1 - t0;
    walkTime += t2 - t1;
    state.SetIterationTime(t1 - t0);
    if (valid != messages || walked != messages * walkRepeats) state.SkipWithError("bad parse");
  }
  const double parsed = static_cast<double>(state.iterations()) * messages;
  state.SetItemsProcessed(state.iterations() * messages);
  state.counters["ratioToHeaderWalk"] = parseTime / walkTime * walkRepeats;
  state.counters["allocsPerMsg"] = static_cast<double>(msgAllocs) / parsed;
  state.counters["allocsPerMsgWithPdu"] = static_cast<double>(allocs) / parsed;
}
BENCHMARK(BM_ParseMixedStream)->UseManualTime();

}  // namespace
