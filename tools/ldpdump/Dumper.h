#pragma once
// The judging and output half of ldpdump: every PDU goes through the library's
// parsers (ldpPduParserFactory, then ldpMsgParserGet per message) and is printed
// as text or JSON with its verdicts, and counted for the summary.
//
// A verdict is the parser's status code and reason with what a receiving LSR does
// about it: accept (success), ignore silently (unknownMessageTypeIgnore), or send a
// Notification with that status code, fatal when statusCodeEBitForStatusCode()
// sets its E bit. Only verdicts that call for a Notification make a PDU or message
// invalid (for -q and the exit status).
//
// A failed assertion inside a parser is caught (the assertion handler is replaced
// while a Dumper exists) and becomes the verdict internalError with the asserted
// text as the reason, so that one bad PDU cannot stop the decoding.

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/LdpTypes.h"
#include "platform/zel/Assert.h"
#include "tools/ldpdump/LinkDecode.h"
#include "tools/ldpdump/TcpReassembler.h"

namespace LdpDump {

enum class Format : uint8_t { text, json };

struct DumpOptions {
  Format format = Format::text;
  bool quiet = false;         // print only invalid PDUs and messages, and stream problems
  bool perPdu = true;         // print PDUs at all (off for --stats alone)
  bool stats = false;         // print the summary at the end
  uint64_t maxPdus = 0;       // stop after this many PDUs; 0: no limit
  bool flushEachPdu = false;  // live capture: write each PDU out at once
};

// Where a PDU came from. src and dst are null for hex input.
struct PduOrigin {
  Transport transport = Transport::hex;
  bool hasTransport = true;  // false for a frame that got no further than IP
  uint64_t frame = 0;
  uint64_t firstFrame = 0;
  bool hasTime = false;
  int64_t sec = 0;
  int32_t usec = 0;
  const IpAddress* src = nullptr;
  const IpAddress* dst = nullptr;
  uint16_t sport = 0, dport = 0;

  // The origin of a PDU carried whole by one frame between two endpoints.
  static PduOrigin of(Transport transport, const FrameRef& frame, const IpAddress& src,
                      const IpAddress& dst, uint16_t sport, uint16_t dport) {
    PduOrigin o;
    o.transport = transport;
    o.frame = o.firstFrame = frame.number;
    o.hasTime = true;
    o.sec = frame.sec;
    o.usec = frame.usec;
    o.src = &src;
    o.dst = &dst;
    o.sport = sport;
    o.dport = dport;
    return o;
  }
};

// What a receiving LSR does about a verdict.
enum class Action : uint8_t { accept, ignore, notify };
Action actionFor(Ldp::LdpStatusCode code);

class Dumper : public TcpSink {
 public:
  Dumper(const DumpOptions& options, FILE* out);
  ~Dumper() override;
  Dumper(const Dumper&) = delete;
  Dumper& operator=(const Dumper&) = delete;

  // Judges and prints one PDU (the octets are not kept).
  void pdu(const PduOrigin& origin, const uint8_t* data, size_t len);
  // Counts a decoded frame; reports fragments and truncated or malformed frames.
  void frame(const FrameRef& ref, const FrameDecode& decoded);
  void tcpPdu(const FlowKey& flow, const uint8_t* data, size_t len, uint64_t firstFrame,
              const FrameRef& frame) override;
  void tcpEvent(const FlowKey& flow, const StreamEvent& event, const FrameRef& frame) override;
  // Prints the summary (when asked for) and writes everything out.
  void finish(const TcpCounters& tcp);
  void flush();

  // The -c limit has been reached.
  bool limitReached() const { return options_.maxPdus && pdus_ >= options_.maxPdus; }
  // Some PDU or message calls for a Notification.
  bool anyInvalid() const { return invalidPdus_ + invalidMessages_ > 0; }
  uint64_t pdus() const { return pdus_; }

 private:
  struct Judged;
  struct Count {
    uint32_t key;
    uint64_t pdus = 0;
    uint64_t messages = 0;
  };

  void judge(const uint8_t* data, size_t len, Judged& j);
  void count(const PduOrigin& origin, const Judged& j);
  void writeText(const PduOrigin& origin, const Judged& j);
  void writeJson(const PduOrigin& origin, const Judged& j);
  void originText(const PduOrigin& origin);
  void originJson(const PduOrigin& origin);
  void verdictText(Ldp::LdpStatusCode code, const Zel::String& reason);
  void verdictJson(Ldp::LdpStatusCode code, const Zel::String& reason);
  void timeText(int64_t sec, int32_t usec);
  void eventOut(const PduOrigin& origin, const char* kind, uint64_t octets,
                const std::string& detail);
  void statsText(const TcpCounters& tcp);
  void statsJson(const TcpCounters& tcp);
  Count& countFor(std::vector<Count>& v, uint32_t key);
  // A copy of `v` in ascending key order, for the summaries.
  static std::vector<Count> byKey(const std::vector<Count>& v);
  void maybeFlush();

  DumpOptions options_;
  FILE* out_;
  std::string buf_;
  std::unique_ptr<Judged> judged_;  // reused from PDU to PDU
  Zel::AssertionHandler oldHandler_;

  uint64_t frames_ = 0, ldpFrames_ = 0, otherFrames_ = 0, fragments_ = 0, truncated_ = 0,
           malformed_ = 0, cutSegments_ = 0;
  uint64_t pdus_ = 0, pdusBy_[3] = {}, invalidPdus_ = 0;
  uint64_t messages_ = 0, invalidMessages_ = 0, ignoredMessages_ = 0, assertions_ = 0;
  std::vector<Count> byType_;     // messages by type
  std::vector<Count> byVerdict_;  // PDU and message verdicts by status code
  std::vector<std::string> problems_;
  uint64_t moreProblems_ = 0;
  int64_t timeSec_ = -1;  // the second that timeCache_ spells
  char timeCache_[24] = {};
};

}  // namespace LdpDump
