#include "tools/ldpdump/TcpReassembler.h"

#include <algorithm>
#include <cstring>

#include "parse/LdpPduParser.h"
#include "tools/ldpdump/BigEndian.h"

namespace LdpDump {

namespace {

// The PDU header and the first message header: what the PDU parser reads before
// its verdict, and what resynchronising checks.
constexpr size_t headerOctets = 18;
constexpr size_t minFramedTotal = 14;
constexpr size_t maxTotal = Ldp::LdpPduParser::maxPduTotalLength;

// Whether a header at `p` (4 octets) frames a PDU by its length.
bool frames(const uint8_t* p, size_t* total) {
  *total = size_t{get16(p + 2)} + 4;
  return get16(p) == 1 && *total >= minFramedTotal && *total <= maxTotal;
}

}  // namespace

bool pduHeaderValidates(const uint8_t* p) {
  size_t total = 0;
  if (!frames(p, &total) || total < headerOctets) return false;
  const uint16_t msgType = get16(p + 10);
  if (!(msgType & 0x8000) && !Ldp::LdpMsgTypeEnumType().isEnumerator(msgType)) return false;
  const size_t msgTotal = size_t{get16(p + 12)} + 4;
  return msgTotal >= 8 && msgTotal <= total - 10;
}

size_t FlowKeyHash::operator()(const FlowKey& k) const {
  uint64_t h = 1469598103934665603ull;
  auto mix = [&h](const uint8_t* p, size_t n) {
    for (size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 1099511628211ull;
  };
  mix(k.src.octets, k.src.family == 4 ? 4 : 16);
  mix(k.dst.octets, k.dst.family == 4 ? 4 : 16);
  h ^= uint64_t{k.sport} << 16 | k.dport;
  return static_cast<size_t>(h * 1099511628211ull);
}

TcpReassembler::TcpReassembler(TcpSink& sink) : sink_(sink) {}
TcpReassembler::~TcpReassembler() = default;

TcpReassembler::Stream* TcpReassembler::streamFor(const FlowKey& key, bool create) {
  auto it = streams_.find(key);
  if (it != streams_.end()) return it->second;
  if (!create) return nullptr;
  order_.push_back(std::make_unique<Stream>());
  Stream* s = order_.back().get();
  s->key = key;
  streams_.emplace(key, s);
  return s;
}

void TcpReassembler::reset(Stream& s, uint32_t seq, bool synced) {
  s.started = true;
  s.sawSyn = false;
  s.closed = false;
  s.synced = synced;
  s.next = seq;
  s.nextPos = 0;
  s.skipped = 0;
  s.buf.clear();
  s.held.clear();
  s.heldOctets = 0;
  ++counters_.streams;
}

void TcpReassembler::segment(const Segment& seg, const FrameRef& frame) {
  const bool syn = seg.flags & tcpSyn;
  const bool data = seg.payloadLen > 0;
  if (!syn && !data && !(seg.flags & (tcpFin | tcpRst))) return;  // a bare ACK

  FlowKey key;
  key.src = seg.src;
  key.dst = seg.dst;
  key.sport = seg.sport;
  key.dport = seg.dport;
  Stream* s = streamFor(key, syn || data);
  if (!s) return;

  uint32_t seq = seg.seq;
  const uint8_t* p = seg.payload;
  size_t n = seg.payloadLen;
  if (syn) {
    if (!(s->sawSyn && seq == s->isn)) {  // not a retransmitted SYN
      if (s->started && !s->closed) close(*s, frame);
      reset(*s, seq + 1, true);
      s->sawSyn = true;
      s->isn = seq;
    }
    ++seq;  // the SYN takes one sequence number; data may follow it
  } else if (data && !s->started) {
    reset(*s, seq, false);  // the capture began inside the connection
  }

  if (n > 0 && s->started && !s->closed) {
    ++counters_.segments;
    const int32_t d = static_cast<int32_t>(seq - s->next);
    if (d < 0) {
      const uint64_t behind = static_cast<uint32_t>(-static_cast<int64_t>(d));
      if (behind >= n) {
        ++counters_.retransmitted;
        counters_.retransmittedOctets += n;
        n = 0;
      } else {
        counters_.overlapOctets += behind;
        p += behind;
        n -= behind;
        seq = s->next;
      }
    }
    if (n > 0) {
      if (seq == s->next) {
        deliver(*s, p, n, frame.number, frame);
        drain(*s, frame);
      } else {
        hold(*s, static_cast<uint32_t>(seq - s->next), p, n, frame);
      }
    }
  }

  if ((seg.flags & (tcpFin | tcpRst)) && s->started && !s->closed) {
    // A FIN in order ends the stream; so does any RST. A FIN ahead of a hole is
    // left to the end of input.
    const bool inOrder = static_cast<uint32_t>(seq + n) == s->next && s->held.empty();
    if ((seg.flags & tcpRst) || inOrder) {
      close(*s, frame);
      if (seg.flags & tcpFin) ++s->next;
    }
  }
  if (seg.flags & tcpRst) {  // the connection is gone in both directions
    FlowKey back;
    back.src = key.dst;
    back.dst = key.src;
    back.sport = key.dport;
    back.dport = key.sport;
    Stream* r = streamFor(back, false);
    if (r && r->started && !r->closed) close(*r, frame);
  }
}

void TcpReassembler::advance(Stream& s, size_t n) {
  s.next += static_cast<uint32_t>(n);
  s.nextPos += n;
}

void TcpReassembler::deliver(Stream& s, const uint8_t* p, size_t n, uint64_t dataFrame,
                             const FrameRef& frame) {
  advance(s, n);
  while (n > 0) {
    if (s.buf.empty()) {
      const size_t used = scan(s, p, n, false, dataFrame, n, dataFrame, frame);
      if (used < n) {
        s.buf.assign(p + used, p + n);
        s.bufFirstFrame = dataFrame;
      }
      return;
    }
    // Append only what the framing needs, so that the PDUs after it are framed
    // in place.
    const size_t take = std::min(std::max<size_t>(wanted(s), 1), n);
    const size_t old = s.buf.size();
    s.buf.insert(s.buf.end(), p, p + take);
    p += take;
    n -= take;
    const size_t used =
        scan(s, s.buf.data(), s.buf.size(), false, s.bufFirstFrame, old, dataFrame, frame);
    if (used >= old) s.bufFirstFrame = dataFrame;
    s.buf.erase(s.buf.begin(), s.buf.begin() + static_cast<ptrdiff_t>(used));
  }
}

size_t TcpReassembler::wanted(const Stream& s) const {
  const size_t have = s.buf.size();
  if (!s.synced) return headerOctets;
  if (have < 4) return 4 - have;
  size_t total = 0;
  if (frames(s.buf.data(), &total)) return total > have ? total - have : 0;
  return have < headerOctets ? headerOctets - have : 0;
}

size_t TcpReassembler::scan(Stream& s, const uint8_t* p, size_t n, bool final, uint64_t firstFrame,
                            size_t oldOctets, uint64_t restFrame, const FrameRef& frame) {
  size_t i = 0;
  auto pdu = [&](size_t len) {
    sink_.tcpPdu(s.key, p + i, len, i < oldOctets ? firstFrame : restFrame, frame);
  };
  for (;;) {
    if (!s.synced) {
      const size_t from = i;
      while (n - i >= headerOctets && !pduHeaderValidates(p + i)) ++i;
      if (n - i < headerOctets && final) i = n;
      s.skipped += i - from;
      if (n - i < headerOctets) return i;
      s.synced = true;
      if (s.skipped > 0) {
        ++counters_.resyncs;
        counters_.skippedOctets += s.skipped;
        sink_.tcpEvent(s.key, StreamEvent{StreamEventKind::resync, s.skipped, 0}, frame);
        s.skipped = 0;
      }
    }
    const size_t avail = n - i;
    size_t total = 0;
    if (avail >= 4 && frames(p + i, &total)) {
      if (avail >= total) {
        pdu(total);
        i += total;
        continue;
      }
    } else if (avail >= headerOctets || (final && avail >= 4)) {
      // A header that cannot frame a PDU: the parser judges it, then resynchronise.
      pdu(std::min(avail, headerOctets));
      i += 1;
      s.synced = false;
      continue;
    }
    if (final && avail > 0) {
      ++counters_.incomplete;
      sink_.tcpEvent(s.key, StreamEvent{StreamEventKind::incomplete, avail, 0}, frame);
      i = n;
    }
    return i;
  }
}

void TcpReassembler::hold(Stream& s, uint64_t ahead, const uint8_t* p, size_t n,
                          const FrameRef& frame) {
  ++counters_.held;
  const uint64_t at = s.nextPos + ahead;
  // Make room: a hole that keeps more than the window waiting is given up on.
  while (at > s.nextPos && (at + n - s.nextPos > windowOctets || s.heldOctets + n > windowOctets)) {
    gapTo(s, s.held.empty() ? at : std::min(s.held.begin()->first, at), frame);
    drain(s, frame);
  }
  if (at <= s.nextPos) {  // the hole is closed: deliver what is still new
    const uint64_t seen = s.nextPos - at;
    if (seen >= n) {
      ++counters_.retransmitted;
      counters_.retransmittedOctets += n;
      return;
    }
    counters_.overlapOctets += seen;
    deliver(s, p + seen, n - seen, frame.number, frame);
    drain(s, frame);
    return;
  }
  Held& h = s.held[at];
  if (h.data.size() >= n) {
    ++counters_.retransmitted;
    counters_.retransmittedOctets += n;
    return;
  }
  s.heldOctets += n - h.data.size();
  h.data.assign(p, p + n);
  h.frame = frame.number;
}

void TcpReassembler::drain(Stream& s, const FrameRef& frame) {
  while (!s.held.empty() && s.held.begin()->first <= s.nextPos) {
    auto it = s.held.begin();
    Held h = std::move(it->second);
    const uint64_t at = it->first;
    s.held.erase(it);
    s.heldOctets -= h.data.size();
    const uint64_t seen = s.nextPos - at;
    if (seen >= h.data.size()) {
      ++counters_.retransmitted;
      counters_.retransmittedOctets += h.data.size();
      continue;
    }
    counters_.overlapOctets += seen;
    deliver(s, h.data.data() + seen, h.data.size() - seen, h.frame, frame);
  }
}

void TcpReassembler::gapTo(Stream& s, uint64_t to, const FrameRef& frame) {
  const uint64_t missing = to - s.nextPos;
  const uint64_t dropped = s.buf.size();
  ++counters_.gaps;
  counters_.gapOctets += missing;
  sink_.tcpEvent(s.key, StreamEvent{StreamEventKind::gap, missing, dropped}, frame);
  s.buf.clear();
  s.skipped = 0;
  s.synced = false;
  advance(s, missing);
}

void TcpReassembler::close(Stream& s, const FrameRef& frame) {
  while (!s.held.empty()) {
    gapTo(s, s.held.begin()->first, frame);
    drain(s, frame);
  }
  if (!s.buf.empty()) {
    std::vector<uint8_t> rest;
    rest.swap(s.buf);
    scan(s, rest.data(), rest.size(), true, s.bufFirstFrame, rest.size(), s.bufFirstFrame, frame);
  }
  if (s.skipped > 0) {
    ++counters_.resyncs;
    counters_.skippedOctets += s.skipped;
    sink_.tcpEvent(s.key, StreamEvent{StreamEventKind::resync, s.skipped, 0}, frame);
    s.skipped = 0;
  }
  s.closed = true;
}

void TcpReassembler::finish(const FrameRef& last) {
  for (const std::unique_ptr<Stream>& s : order_) {
    if (s->started && !s->closed) close(*s, last);
  }
}

}  // namespace LdpDump
