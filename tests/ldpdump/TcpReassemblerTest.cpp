// TCP reassembly: PDUs split across segments and packed into one, out-of-order
// and retransmitted segments, gaps and resynchronisation, connection starts and
// ends, sequence number wraparound.

#include "tools/ldpdump/TcpReassembler.h"

#include <gtest/gtest.h>

#include <random>

#include "core/LdpTypes.h"
#include "tests/support/PduBuilder.h"
#include "tools/ldpdump/CaptureWriter.h"

using namespace LdpDump;
using LdpTest::PduBuilder;

namespace {

const Ldp::LdpIdentifier kId(0xC0000201, 0);

// A KeepAlive PDU (18 octets) with message id `id`.
Bytes keepAlive(uint32_t id) { return PduBuilder(kId).message(Ldp::LdpKeepAlive_, id).bytes(); }

// A Label Mapping PDU (37 octets).
Bytes mapping(uint32_t id, uint32_t label) {
  return PduBuilder(kId)
      .message(Ldp::LdpLabelMapping_, id)
      .fec({LdpTest::prefixElement(1, 24, {10, 1, 2})})
      .genLabel(label)
      .bytes();
}

Bytes cat(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& p : parts) all.insert(all.end(), p.begin(), p.end());
  return all;
}

Bytes slice(const Bytes& b, size_t from, size_t to) {
  return Bytes(b.begin() + static_cast<ptrdiff_t>(from), b.begin() + static_cast<ptrdiff_t>(to));
}

struct Recorder : TcpSink {
  struct Pdu {
    Bytes data;
    uint64_t firstFrame;
    uint64_t frame;
  };
  struct Event {
    StreamEventKind kind;
    uint64_t octets;
    uint64_t dropped;
    uint64_t frame;
  };
  void tcpPdu(const FlowKey&, const uint8_t* data, size_t len, uint64_t firstFrame,
              const FrameRef& frame) override {
    pdus.push_back(Pdu{Bytes(data, data + len), firstFrame, frame.number});
  }
  void tcpEvent(const FlowKey&, const StreamEvent& e, const FrameRef& frame) override {
    events.push_back(Event{e.kind, e.octets, e.dropped, frame.number});
  }
  std::vector<Pdu> pdus;
  std::vector<Event> events;
};

// One direction of a connection from 192.0.2.2:49152 to 192.0.2.1:646.
class Stream {
 public:
  explicit Stream(TcpReassembler& r, uint32_t isn = 1000) : r_(r), isn_(isn) {}
  void syn() { send(isn_, tcpSyn, {}); }
  // Data at `offset` octets after the SYN's sequence number + 1.
  void data(uint32_t offset, const Bytes& payload, uint8_t flags = tcpAck) {
    send(isn_ + 1 + offset, flags, payload);
  }
  void send(uint32_t seq, uint8_t flags, const Bytes& payload) {
    Segment s;
    s.src = ipv4(192, 0, 2, 2);
    s.dst = ipv4(192, 0, 2, 1);
    s.sport = 49152;
    s.dport = ldpPort;
    s.transport = Transport::tcp;
    s.seq = seq;
    s.flags = flags;
    s.payload = payload.data();
    s.payloadLen = static_cast<uint32_t>(payload.size());
    FrameRef f;
    f.number = ++frame_;
    r_.segment(s, f);
  }
  void finish() {
    FrameRef f;
    f.number = frame_;
    r_.finish(f);
  }
  uint64_t frame() const { return frame_; }

 private:
  TcpReassembler& r_;
  uint32_t isn_;
  uint64_t frame_ = 0;
};

class TcpReassemblerTest : public ::testing::Test {
 protected:
  Recorder sink;
  TcpReassembler r{sink};
  Stream s{r};
};

TEST_F(TcpReassemblerTest, SplitsASegmentThatCarriesSeveralPdus) {
  const Bytes a = keepAlive(1), b = mapping(2, 16), c = keepAlive(3);
  s.syn();
  s.data(0, cat({a, b, c}));
  ASSERT_EQ(sink.pdus.size(), 3u);
  EXPECT_EQ(sink.pdus[0].data, a);
  EXPECT_EQ(sink.pdus[1].data, b);
  EXPECT_EQ(sink.pdus[2].data, c);
  EXPECT_EQ(sink.pdus[1].firstFrame, 2u);
  EXPECT_EQ(sink.pdus[1].frame, 2u);
  EXPECT_TRUE(sink.events.empty());
}

TEST_F(TcpReassemblerTest, JoinsAPduThatSpansSegments) {
  // Cut inside the length field, then inside the message, then after the PDU.
  const Bytes a = mapping(1, 16), b = keepAlive(2);
  const Bytes all = cat({a, b});
  s.syn();
  s.data(0, slice(all, 0, 3));
  s.data(3, slice(all, 3, 20));
  EXPECT_TRUE(sink.pdus.empty());
  s.data(20, slice(all, 20, all.size()));
  ASSERT_EQ(sink.pdus.size(), 2u);
  EXPECT_EQ(sink.pdus[0].data, a);
  EXPECT_EQ(sink.pdus[0].firstFrame, 2u);
  EXPECT_EQ(sink.pdus[0].frame, 4u);
  EXPECT_EQ(sink.pdus[1].data, b);
  EXPECT_EQ(sink.pdus[1].firstFrame, 4u);
}

TEST_F(TcpReassemblerTest, HoldsSegmentsThatArriveAheadOfAHole) {
  const Bytes a = mapping(1, 16), b = keepAlive(2), c = mapping(3, 17);
  s.syn();
  s.data(static_cast<uint32_t>(a.size() + b.size()), c);
  s.data(static_cast<uint32_t>(a.size()), b);
  EXPECT_TRUE(sink.pdus.empty());
  s.data(0, a);
  ASSERT_EQ(sink.pdus.size(), 3u);
  EXPECT_EQ(sink.pdus[0].data, a);
  EXPECT_EQ(sink.pdus[1].data, b);
  EXPECT_EQ(sink.pdus[2].data, c);
  EXPECT_EQ(sink.pdus[2].firstFrame, 2u);  // the held segment's frame
  EXPECT_EQ(sink.pdus[2].frame, 4u);       // completed when the hole filled
  EXPECT_EQ(r.counters().held, 2u);
  s.finish();
  EXPECT_TRUE(sink.events.empty());
}

TEST_F(TcpReassemblerTest, DropsRetransmissionsAndTrimsOverlaps) {
  const Bytes a = mapping(1, 16), b = mapping(2, 17), c = keepAlive(3);
  const Bytes all = cat({a, b, c});
  s.syn();
  s.data(0, a);
  s.data(0, a);  // the same segment again
  // Overlaps the end of `a` by 5 octets and brings `b` and part of `c`.
  s.data(static_cast<uint32_t>(a.size() - 5), slice(all, a.size() - 5, a.size() + b.size() + 4));
  // A held segment whose first 4 octets a later one brings as well.
  const size_t ab = a.size() + b.size();
  s.data(static_cast<uint32_t>(ab + 6), slice(all, ab + 6, all.size()));
  s.data(static_cast<uint32_t>(ab + 4), slice(all, ab + 4, ab + 10));
  ASSERT_EQ(sink.pdus.size(), 3u);
  EXPECT_EQ(sink.pdus[0].data, a);
  EXPECT_EQ(sink.pdus[1].data, b);
  EXPECT_EQ(sink.pdus[2].data, c);
  EXPECT_EQ(r.counters().retransmitted, 1u);
  EXPECT_EQ(r.counters().overlapOctets, 5u + 4u);
  s.finish();
  EXPECT_TRUE(sink.events.empty());
}

TEST_F(TcpReassemblerTest, ReportsAGapAndResynchronisesAtTheNextHeader) {
  const Bytes a = mapping(1, 16), b = mapping(2, 17), c = keepAlive(3), d = mapping(4, 18);
  const Bytes all = cat({a, b, c, d});
  const size_t lostFrom = a.size() + 10, lostTo = a.size() + 30;
  s.syn();
  s.data(0, slice(all, 0, lostFrom));  // `a` and the first 10 octets of `b`
  s.data(static_cast<uint32_t>(lostTo), slice(all, lostTo, all.size()));
  ASSERT_EQ(sink.pdus.size(), 1u);
  s.finish();
  ASSERT_EQ(sink.events.size(), 2u);
  EXPECT_EQ(sink.events[0].kind, StreamEventKind::gap);
  EXPECT_EQ(sink.events[0].octets, lostTo - lostFrom);
  EXPECT_EQ(sink.events[0].dropped, 10u);
  EXPECT_EQ(sink.events[1].kind, StreamEventKind::resync);
  EXPECT_EQ(sink.events[1].octets, b.size() - 30);  // the rest of `b`
  ASSERT_EQ(sink.pdus.size(), 3u);
  EXPECT_EQ(sink.pdus[1].data, c);
  EXPECT_EQ(sink.pdus[2].data, d);
  EXPECT_EQ(r.counters().gaps, 1u);
  EXPECT_EQ(r.counters().resyncs, 1u);
}

TEST_F(TcpReassemblerTest, GivesUpOnAHoleOnceTheWindowIsFull) {
  const Bytes a = keepAlive(1);
  s.syn();
  // 18 octets missing, then keepalives beyond the window.
  const size_t count = TcpReassembler::windowOctets / a.size() + 2;
  for (size_t i = 1; i <= count && sink.events.empty(); ++i) {
    s.data(static_cast<uint32_t>(i * a.size()), a);
  }
  ASSERT_FALSE(sink.events.empty()) << "the window never filled";
  EXPECT_EQ(sink.events[0].kind, StreamEventKind::gap);
  EXPECT_EQ(sink.events[0].octets, a.size());
  EXPECT_EQ(sink.events[0].frame, s.frame());
  // Everything held was delivered once the hole was given up on.
  EXPECT_EQ(sink.pdus.size(), s.frame() - 1);
}

TEST_F(TcpReassemblerTest, StartsInsideAConnectionWithoutItsSyn) {
  const Bytes a = mapping(1, 16), b = keepAlive(2);
  s.data(100, cat({slice(a, 11, a.size()), b}));  // begins inside `a`
  s.data(100 + static_cast<uint32_t>(a.size() - 11 + b.size()), a);
  ASSERT_EQ(sink.pdus.size(), 2u);
  EXPECT_EQ(sink.pdus[0].data, b);
  EXPECT_EQ(sink.pdus[1].data, a);
  ASSERT_EQ(sink.events.size(), 1u);
  EXPECT_EQ(sink.events[0].kind, StreamEventKind::resync);
  EXPECT_EQ(sink.events[0].octets, a.size() - 11);
}

TEST_F(TcpReassemblerTest, HandsAHeaderThatCannotFrameToTheParserThenResynchronises) {
  Bytes bad = mapping(1, 16);
  bad[1] = 2;  // version 2
  const Bytes b = keepAlive(2);
  s.syn();
  s.data(0, cat({bad, b}));
  ASSERT_EQ(sink.pdus.size(), 2u);
  EXPECT_EQ(sink.pdus[0].data, slice(bad, 0, 18));
  EXPECT_EQ(sink.pdus[1].data, b);
  ASSERT_EQ(sink.events.size(), 1u);
  EXPECT_EQ(sink.events[0].octets, bad.size() - 1);

  // A length field of 0 and one beyond the largest PDU are handed over the same way.
  for (uint16_t length : {0, 9597}) {
    sink.pdus.clear();
    Bytes odd = keepAlive(3);
    odd[2] = static_cast<uint8_t>(length >> 8);
    odd[3] = static_cast<uint8_t>(length);
    Recorder other;
    TcpReassembler fresh(other);
    Stream t(fresh);
    t.syn();
    t.data(0, cat({odd, b}));
    ASSERT_EQ(other.pdus.size(), 2u) << length;
    EXPECT_EQ(other.pdus[0].data, odd);
    EXPECT_EQ(other.pdus[1].data, b);
  }
}

TEST_F(TcpReassemblerTest, ANewSynStartsANewStream) {
  const Bytes a = mapping(1, 16), b = keepAlive(2);
  s.syn();
  s.data(0, slice(a, 0, 20));
  Stream again(r, 5000);
  again.send(5000, tcpSyn, {});
  EXPECT_EQ(r.counters().streams, 2u);
  ASSERT_EQ(sink.events.size(), 1u);
  EXPECT_EQ(sink.events[0].kind, StreamEventKind::incomplete);
  EXPECT_EQ(sink.events[0].octets, 20u);
  again.data(0, b);
  ASSERT_EQ(sink.pdus.size(), 1u);
  EXPECT_EQ(sink.pdus[0].data, b);
}

TEST_F(TcpReassemblerTest, AFinEndsTheStreamAndReportsAPduCutOff) {
  const Bytes a = mapping(1, 16), b = keepAlive(2);
  s.syn();
  s.data(0, cat({b, slice(a, 0, 25)}), tcpAck | tcpFin);
  ASSERT_EQ(sink.pdus.size(), 1u);
  ASSERT_EQ(sink.events.size(), 1u);
  EXPECT_EQ(sink.events[0].kind, StreamEventKind::incomplete);
  EXPECT_EQ(sink.events[0].octets, 25u);
  s.data(0, b);  // a retransmission after the FIN
  s.finish();
  EXPECT_EQ(sink.pdus.size(), 1u);
  EXPECT_EQ(sink.events.size(), 1u);
}

TEST_F(TcpReassemblerTest, FollowsSequenceNumbersAcrossTheirWrap) {
  Stream w(r, 0xFFFFFFF0u);
  const Bytes a = mapping(1, 16), b = mapping(2, 17);
  w.syn();
  w.data(0, slice(a, 0, 10));
  w.data(static_cast<uint32_t>(a.size()), b);  // past the wrap, ahead of a hole
  w.data(10, slice(a, 10, a.size()));
  ASSERT_EQ(sink.pdus.size(), 2u);
  EXPECT_EQ(sink.pdus[0].data, a);
  EXPECT_EQ(sink.pdus[1].data, b);
  EXPECT_TRUE(sink.events.empty());
}

TEST_F(TcpReassemblerTest, PassesOverAStreamThatIsNotLdp) {
  std::string text;
  while (text.size() < 5000) text += "GET /index.html HTTP/1.1\r\nHost: example\r\n\r\n";
  const Bytes http(text.begin(), text.end());
  s.syn();
  for (size_t at = 0; at < http.size(); at += 1000) {
    s.data(static_cast<uint32_t>(at), slice(http, at, std::min(at + 1000, http.size())));
  }
  s.finish();
  // The first header is judged; nothing after it validates.
  ASSERT_EQ(sink.pdus.size(), 1u);
  EXPECT_EQ(sink.pdus[0].data, slice(http, 0, 18));
  ASSERT_EQ(sink.events.size(), 1u);
  EXPECT_EQ(sink.events[0].kind, StreamEventKind::resync);
  EXPECT_EQ(sink.events[0].octets, http.size() - 1);
}

TEST_F(TcpReassemblerTest, AccountsForEveryOctetOfRandomData) {
  std::mt19937 random(646);
  Bytes noise(200000);
  for (uint8_t& o : noise) o = static_cast<uint8_t>(random());
  s.syn();
  for (size_t at = 0; at < noise.size(); at += 1000) {
    s.data(static_cast<uint32_t>(at), slice(noise, at, at + 1000));
  }
  s.finish();
  // Each octet is in a framed PDU, passed over, or in a PDU cut off at the end;
  // a header that cannot frame is handed over and then passed over from its
  // second octet, so those octets count twice.
  uint64_t accounted = r.counters().skippedOctets, twice = 0;
  for (const Recorder::Pdu& p : sink.pdus) {
    accounted += p.data.size();
    const size_t total = size_t{p.data[2]} << 8 | p.data[3];
    const bool framed = p.data[0] == 0 && p.data[1] == 1 && total + 4 == p.data.size();
    if (!framed) twice += p.data.size() - 1;
  }
  for (const Recorder::Event& e : sink.events) {
    if (e.kind == StreamEventKind::incomplete) accounted += e.octets;
  }
  EXPECT_EQ(accounted - twice, noise.size());
}

}  // namespace
