// Cost of taking received PDUs to per-message verdicts, beside the floor: a bare
// loop that only steps over the same message headers.
//
// BM_ParseMessage/<type> and BM_ParseMixedStream each parse a stream of PDUs:
// every PDU through ldpPduParserFactory(), then every message to its verdict
// through ldpMsgParserGet(). A per-type stream is 16 PDUs of 16 messages of that
// type, each as a session carries it; the mixed stream is a session's steady
// traffic (mostly Label Mappings with prefix FECs, some Hellos and KeepAlives).
// Counters: nsPerMsg and items_per_second (messages per second) for the parse;
// ratioToHeaderWalk, the parse time over the walk time, both timed in the same
// iterations in thread CPU time; allocsPerMsg, heap allocations (global operator
// new calls) per message by the message parsers, and allocsPerMsgWithPdu with the
// PDU parsers' share.
//
// BM_ParsePdu is the PDU parser alone on PDUs of 8 and 20 Label Mappings.

#include <benchmark/benchmark.h>

#include <time.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "parse/LdpGenMsgParser.h"
#include "parse/LdpMsgParser.h"
#include "tests/support/PduBuilder.h"

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
using LdpTest::PduBuilder;
using Stream = std::vector<Zel::Ptr<Ovo::Pkt>>;

const LdpIdentifier local(0x0A000001, 0);
const LdpIdentifier peer(0x0A000002, 0);

// Adds one message of a type, with message id `id`, to a PDU under construction.
struct MessageKind {
  const char* name;
  std::function<void(PduBuilder&, uint32_t id)> add;
};

std::vector<uint8_t> prefix(uint32_t id) {
  return LdpTest::prefixElement(1, 24,
                                {10, static_cast<uint8_t>(id >> 8), static_cast<uint8_t>(id)});
}

const std::vector<MessageKind>& messageKinds() {
  static const std::vector<MessageKind> kinds = {
      {"Notification",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpNotification_, id).status(0x80000000 | shutdown_);
       }},
      {"Hello",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpHello_, id).commonHello(15).ipv4Transport(0x0A000001).configSeqNum(1);
       }},
      {"Init",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpInit_, id)
             .sessionParams(180, false, false, 0, 0, peer)
             .ftSession(0x0001, 120000, 120000)
             .capability(dynamicCapabilityTlv_, true)
             .capability(typedWildcardFecCapabilityTlv_, true);
       }},
      {"KeepAlive", [](PduBuilder& b, uint32_t id) { b.message(LdpKeepAlive_, id); }},
      {"Capability",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpCapability_, id).capability(typedWildcardFecCapabilityTlv_, false);
       }},
      {"Address",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpAddress_, id).ipv4AddressList({0x0A000001, 0x0A010001, 0x0A020001});
       }},
      {"AddressWithdraw",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpAddressWithdraw_, id).ipv4AddressList({0x0A010001});
       }},
      {"LabelMapping",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpLabelMapping_, id).fec({prefix(id)}).genLabel(16000 + id);
       }},
      {"LabelMappingPw",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpLabelMapping_, id)
             .fec({LdpTest::pwIdFec(0x0005, 7, id, LdpTest::pwSubTlv(0x01, 4, 0x05))})
             .genLabel(16000 + id);
       }},
      {"LabelRequest",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpLabelRequest_, id).fec({prefix(id)}).hopCount(1).pathVector({0x0A000001});
       }},
      {"LabelWithdraw",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpLabelWithdraw_, id).fec({prefix(id)}).genLabel(16000 + id);
       }},
      {"LabelRelease",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpLabelRelease_, id).fec({prefix(id)}).genLabel(16000 + id);
       }},
      {"LabelAbortReq",
       [](PduBuilder& b, uint32_t id) {
         b.message(LdpLabelAbortReq_, id).fec({prefix(id)}).labelReqMsgId(id - 1);
       }},
  };
  return kinds;
}

const MessageKind& kind(const char* name) {
  for (const MessageKind& k : messageKinds()) {
    if (std::string(k.name) == name) return k;
  }
  std::abort();
}

// A PDU of `count` messages of one kind, ids from `firstId`.
Zel::Ptr<Ovo::Pkt> pduOf(const MessageKind& k, int count, uint32_t firstId = 1) {
  PduBuilder b(local);
  for (int i = 0; i < count; ++i) k.add(b, firstId + static_cast<uint32_t>(i));
  return b.pkt();
}

// 32 PDUs of 4 to 16 Label Mappings, with a Hello and a KeepAlive PDU after every
// third: 320 Label Mappings among 340 messages.
Stream mixedStream() {
  Stream stream;
  for (int i = 0; i < 32; ++i) {
    stream.push_back(pduOf(kind("LabelMapping"), 4 + (i % 4) * 4, 1 + 16 * i));
    if (i % 3 == 2) {
      stream.push_back(pduOf(kind("Hello"), 1));
      stream.push_back(pduOf(kind("KeepAlive"), 1));
    }
  }
  return stream;
}

// The floor: step over every PDU's message headers.
uint32_t walkHeaders(const Stream& stream) {
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
uint32_t parseToVerdicts(const Stream& stream, uint64_t* msgAllocs) {
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

void parseStream(benchmark::State& state, const Stream& stream) {
  const uint32_t messages = walkHeaders(stream);
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
  state.counters["nsPerMsg"] = parseTime / parsed * 1e9;
  state.counters["ratioToHeaderWalk"] = parseTime / walkTime * walkRepeats;
  state.counters["allocsPerMsg"] = static_cast<double>(msgAllocs) / parsed;
  state.counters["allocsPerMsgWithPdu"] = static_cast<double>(allocs) / parsed;
}

const bool registered = [] {
  for (const MessageKind& k : messageKinds()) {
    benchmark::RegisterBenchmark(("BM_ParseMessage/" + std::string(k.name)).c_str(),
                                 [&k](benchmark::State& state) {
                                   Stream stream;
                                   for (int i = 0; i < 16; ++i) {
                                     stream.push_back(pduOf(k, 16, 1 + 16 * i));
                                   }
                                   parseStream(state, stream);
                                 })
        ->UseManualTime();
  }
  benchmark::RegisterBenchmark("BM_ParseMixedStream", [](benchmark::State& state) {
    parseStream(state, mixedStream());
  })->UseManualTime();
  return true;
}();

// ldpPduParserFactory alone: the header checks and the walk over the messages.
void BM_ParsePdu(benchmark::State& state) {
  const int messages = static_cast<int>(state.range(0));
  const Zel::Ptr<Ovo::Pkt> pkt = pduOf(kind("LabelMapping"), messages);
  const uint64_t before = allocations;
  for (auto _ : state) {
    Zel::Ptr<LdpPduParser> p = ldpPduParserFactory(pkt, 0);
    benchmark::DoNotOptimize(p->messageOffset(static_cast<uint32_t>(messages - 1)));
    if (p->messageNum() != static_cast<uint32_t>(messages)) state.SkipWithError("bad parse");
  }
  state.SetItemsProcessed(state.iterations() * messages);
  state.counters["allocsPerPdu"] =
      static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ParsePdu)->Arg(8)->Arg(20);

}  // namespace
