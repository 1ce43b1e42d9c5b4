#pragma once
// TCP reassembly for ldpdump: turns the segments of port 646 connections into LDP
// PDUs, one byte stream per direction.
//
// Each direction is put back in sequence order. Segments wholly before the next
// expected octet (retransmissions) are dropped and overlapping ones trimmed;
// segments ahead of it are held (copied) until the octets before them arrive. A
// hole that is still open when the held octets would exceed windowOctets, or when
// the stream ends, is a gap: the missing octets are reported, an unfinished PDU
// before the hole is dropped, and framing resynchronises.
//
// Framing: in step with the stream, a PDU header of version 1 and a total length
// (length field + 4) from 14 to LdpPduParser::maxPduTotalLength frames the next
// PDU by its length. Any other header is handed to the sink as it is (at most 18
// octets: enough for the PDU parser's verdict) and framing resynchronises.
// Resynchronising scans forward one octet at a time for a header that validates:
// version 1, a total length from 18 to the maximum, and a first message of a known
// type (or with the U bit set) whose total length (at least 8) fits in the PDU;
// the octets passed over are reported.
//
// Connections: a SYN starts a stream at its sequence number + 1, in step; data
// seen without a SYN starts one at its own sequence number, resynchronising (a
// capture may begin inside a PDU). A new SYN, a FIN, an RST and the end of input
// close a stream: held segments are drained across their gaps and an unfinished
// PDU is reported as incomplete.
//
// PDUs wholly inside one segment are handed over in place; only the octets of a
// PDU that spans segments, and held segments, are copied.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "tools/ldpdump/LinkDecode.h"

namespace LdpDump {

// A frame of the input: its number from 1 (the line number for hex input) and
// its capture time.
struct FrameRef {
  uint64_t number = 0;
  int64_t sec = 0;
  int32_t usec = 0;
};

// One direction of a connection.
struct FlowKey {
  IpAddress src, dst;
  uint16_t sport = 0, dport = 0;
  bool operator==(const FlowKey& o) const {
    return sport == o.sport && dport == o.dport && src == o.src && dst == o.dst;
  }
};

struct FlowKeyHash {
  size_t operator()(const FlowKey& k) const;
};

enum class StreamEventKind : uint8_t {
  gap,         // `octets` of sequence space never seen; `dropped` octets of a PDU discarded
  resync,      // `octets` passed over to find a PDU header
  incomplete,  // the stream closed `octets` into a PDU
};

struct StreamEvent {
  StreamEventKind kind;
  uint64_t octets = 0;
  uint64_t dropped = 0;
};

class TcpSink {
 public:
  virtual ~TcpSink() = default;
  // A PDU's octets, valid during the call only. Its first octet came in
  // `firstFrame`; `frame` completed it.
  virtual void tcpPdu(const FlowKey& flow, const uint8_t* data, size_t len, uint64_t firstFrame,
                      const FrameRef& frame) = 0;
  virtual void tcpEvent(const FlowKey& flow, const StreamEvent& event, const FrameRef& frame) = 0;
};

struct TcpCounters {
  uint64_t streams = 0;        // streams started (SYN, or data without one)
  uint64_t segments = 0;       // segments with data
  uint64_t retransmitted = 0;  // segments wholly seen before, dropped
  uint64_t retransmittedOctets = 0;
  uint64_t overlapOctets = 0;  // octets trimmed from partly seen segments
  uint64_t held = 0;           // segments that arrived ahead of a hole
  uint64_t gaps = 0;
  uint64_t gapOctets = 0;
  uint64_t resyncs = 0;
  uint64_t skippedOctets = 0;
  uint64_t incomplete = 0;
};

class TcpReassembler {
 public:
  // The most octets held ahead of a hole, per direction.
  static constexpr uint32_t windowOctets = 256 * 1024;

  explicit TcpReassembler(TcpSink& sink);
  ~TcpReassembler();
  TcpReassembler(const TcpReassembler&) = delete;
  TcpReassembler& operator=(const TcpReassembler&) = delete;

  // A TCP segment of a port 646 connection (transport tcp).
  void segment(const Segment& s, const FrameRef& frame);
  // Closes every stream, in the order they started; `last` is the input's last frame.
  void finish(const FrameRef& last);

  const TcpCounters& counters() const { return counters_; }

 private:
  struct Held {
    std::vector<uint8_t> data;
    uint64_t frame;
  };
  struct Stream {
    FlowKey key;
    bool started = false;
    bool sawSyn = false;
    bool closed = false;
    bool synced = false;
    uint32_t isn = 0;          // the SYN's sequence number
    uint32_t next = 0;         // sequence number of the next octet expected
    uint64_t nextPos = 0;      // its position in the stream
    uint64_t skipped = 0;      // octets passed over since the last header
    std::vector<uint8_t> buf;  // octets of an unfinished PDU or header (no gaps)
    uint64_t bufFirstFrame = 0;
    std::map<uint64_t, Held> held;  // by stream position
    size_t heldOctets = 0;
  };

  Stream* streamFor(const FlowKey& key, bool create);
  void reset(Stream& s, uint32_t seq, bool synced);
  // In-order octets at the stream's next position.
  // `dataFrame` is the frame the octets came in; `frame` the one being read.
  void deliver(Stream& s, const uint8_t* p, size_t n, uint64_t dataFrame, const FrameRef& frame);
  // Octets ahead of a hole, `ahead` octets past the next position.
  void hold(Stream& s, uint64_t ahead, const uint8_t* p, size_t n, const FrameRef& frame);
  // Delivers held segments that the next position has reached.
  void drain(Stream& s, const FrameRef& frame);
  // Gives up on the octets up to stream position `to`.
  void gapTo(Stream& s, uint64_t to, const FrameRef& frame);
  // Drains across every gap, flushes what is left and marks the stream closed.
  void close(Stream& s, const FrameRef& frame);
  // Frames PDUs from `p`; returns the octets consumed. `final`: nothing follows.
  // The first `oldOctets` came in frame `firstFrame`, the rest in `restFrame`.
  size_t scan(Stream& s, const uint8_t* p, size_t n, bool final, uint64_t firstFrame,
              size_t oldOctets, uint64_t restFrame, const FrameRef& frame);
  // Octets the framing wants appended to buf before it can go on.
  size_t wanted(const Stream& s) const;
  void advance(Stream& s, size_t n);

  TcpSink& sink_;
  TcpCounters counters_;
  std::vector<std::unique_ptr<Stream>> order_;
  std::unordered_map<FlowKey, Stream*, FlowKeyHash> streams_;
};

// Whether the octets at `p` (at least 18) hold a header to resynchronise on.
bool pduHeaderValidates(const uint8_t* p);

}  // namespace LdpDump
