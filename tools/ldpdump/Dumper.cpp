#include "tools/ldpdump/Dumper.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "parse/LdpMsgParser.h"
#include "parse/LdpPduParser.h"
#include "platform/ovo/Pkt.h"
#include "tools/ldpdump/DumpFormat.h"
#include "tools/ldpdump/JudgedPdu.h"

namespace LdpDump {

using Ldp::LdpStatusCode;

namespace {

// Problems listed in the text summary; the rest are only counted.
constexpr size_t listedProblems = 20;
// Output is written out in blocks of about this size.
constexpr size_t flushOctets = 1 << 16;

[[noreturn]] void throwingHandler(const char* text, const char* file, int line) {
  throw ParserAssertion{text, file, line};
}

}  // namespace

Action actionFor(LdpStatusCode code) {
  if (code == Ldp::success_) return Action::accept;
  if (code == Ldp::unknownMessageTypeIgnore_) return Action::ignore;
  return Action::notify;
}

Dumper::Dumper(const DumpOptions& options, FILE* out)
    : options_(options),
      out_(out),
      judged_(std::make_unique<Judged>()),
      oldHandler_(Zel::assertionHandlerIs(throwingHandler)) {
  buf_.reserve(flushOctets * 2);
}

Dumper::~Dumper() {
  flush();
  Zel::assertionHandlerIs(oldHandler_);
}

void Dumper::flush() {
  if (!buf_.empty()) std::fwrite(buf_.data(), 1, buf_.size(), out_);
  buf_.clear();
  std::fflush(out_);
}

void Dumper::maybeFlush() {
  if (options_.flushEachPdu || buf_.size() >= flushOctets) {
    std::fwrite(buf_.data(), 1, buf_.size(), out_);
    buf_.clear();
    if (options_.flushEachPdu) std::fflush(out_);
  }
}

std::vector<Dumper::Count> Dumper::byKey(const std::vector<Count>& v) {
  std::vector<Count> sorted = v;
  std::sort(sorted.begin(), sorted.end(),
            [](const Count& a, const Count& b) { return a.key < b.key; });
  return sorted;
}

Dumper::Count& Dumper::countFor(std::vector<Count>& v, uint32_t key) {
  // A handful of keys, one of them most of the time: a linear search that moves
  // each key it finds to the front (the summary sorts them again).
  if (!v.empty() && v.front().key == key) return v.front();
  for (size_t i = 1; i < v.size(); ++i) {
    if (v[i].key == key) {
      std::swap(v[0], v[i]);
      return v.front();
    }
  }
  v.push_back(Count{key});
  std::swap(v.front(), v.back());
  return v.front();
}

// --- Judging

void Dumper::judge(const uint8_t* data, size_t len, Judged& j) {
  j.len = len;
  j.pkt = Ovo::pktFactory(data, len);
  j.msgs.clear();
  j.invalidMsg = false;
  try {
    j.pdu = Ldp::ldpPduParserFactory(j.pkt, 0);
    j.pduCode = j.pdu->statusCode();
    j.pduReason = j.pdu->reason();
  } catch (const ParserAssertion& a) {
    j.pdu = nullptr;
    j.pduCode = Ldp::internalError_;
    j.pduReason = assertionReason(a);
    ++assertions_;
  }
  if (!j.pdu || !j.pdu->validLdpPdu()) return;
  const uint32_t n = j.pdu->messageNum();
  j.msgs.resize(n);
  for (uint32_t i = 0; i < n; ++i) {
    Judged::Msg& m = j.msgs[i];
    m.offset = j.pdu->messageOffset(i);
    try {
      m.parser = Ldp::ldpMsgParserGet(j.pkt, m.offset);
      m.code = m.parser->statusCode();
      m.reason = m.parser->reason();
    } catch (const ParserAssertion& a) {
      m.parser = nullptr;
      m.code = Ldp::internalError_;
      m.reason = assertionReason(a);
      ++assertions_;
    }
    if (actionFor(m.code) == Action::notify) j.invalidMsg = true;
  }
}

void Dumper::count(const PduOrigin& origin, const Judged& j) {
  ++pdus_;
  ++pdusBy_[static_cast<int>(origin.transport)];
  if (j.invalidPdu()) ++invalidPdus_;
  ++countFor(byVerdict_, j.pduCode).pdus;
  auto note = [&](std::string text) {
    if (problems_.size() < listedProblems) {
      problems_.push_back(std::move(text));
    } else {
      ++moreProblems_;
    }
  };
  if (j.invalidPdu()) {
    std::string text = "#";
    append(text, origin.frame);
    text += " PDU: ";
    text += statusName(j.pduCode);
    text += " (";
    text += j.pduReason.view();
    text += ')';
    note(std::move(text));
  }
  for (size_t i = 0; i < j.msgs.size(); ++i) {
    const Judged::Msg& m = j.msgs[i];
    ++messages_;
    const uint32_t type = m.parser ? static_cast<uint32_t>(m.parser->type())
                                   : get16(j.pkt->front() + m.offset) & 0x7FFFu;
    ++countFor(byType_, type).messages;
    ++countFor(byVerdict_, m.code).messages;
    switch (actionFor(m.code)) {
      case Action::accept:
        break;
      case Action::ignore:
        ++ignoredMessages_;
        break;
      case Action::notify: {
        ++invalidMessages_;
        std::string text = "#";
        append(text, origin.frame);
        text += " message ";
        append(text, i);
        text += ' ';
        const char* name = msgTypeName(type);
        if (name) {
          text += name;
        } else {
          appendHex(text, type, 4);
        }
        text += ": ";
        text += statusName(m.code);
        text += " (";
        text += m.reason.view();
        text += ')';
        note(std::move(text));
        break;
      }
    }
  }
}

void Dumper::pdu(const PduOrigin& origin, const uint8_t* data, size_t len) {
  if (limitReached()) return;
  Judged& j = *judged_;
  judge(data, len, j);
  count(origin, j);
  if (options_.perPdu && (!options_.quiet || j.invalid())) {
    if (options_.format == Format::json) {
      writeJson(origin, j);
    } else {
      writeText(origin, j);
    }
    maybeFlush();
  }
  // Drop the parsers now rather than at the next PDU.
  j.msgs.clear();
  j.pdu = nullptr;
  j.pkt = nullptr;
}

void Dumper::tcpPdu(const FlowKey& flow, const uint8_t* data, size_t len, uint64_t firstFrame,
                    const FrameRef& frame) {
  PduOrigin o;
  o.transport = Transport::tcp;
  o.frame = frame.number;
  o.firstFrame = firstFrame;
  o.hasTime = true;
  o.sec = frame.sec;
  o.usec = frame.usec;
  o.src = &flow.src;
  o.dst = &flow.dst;
  o.sport = flow.sport;
  o.dport = flow.dport;
  pdu(o, data, len);
}

// --- Stream events and frame problems

void Dumper::eventOut(const PduOrigin& o, const char* kind, uint64_t octets,
                      const std::string& detail) {
  if (!options_.perPdu) return;
  if (options_.format == Format::json) {
    buf_ += "{\"event\":";
    jsonString(buf_, kind);
    buf_ += ',';
    originJson(o);
    buf_ += ",\"octets\":";
    append(buf_, octets);
    buf_ += ",\"detail\":";
    jsonString(buf_, detail);
    buf_ += "}\n";
  } else {
    originText(o);
    buf_ += ' ';
    buf_ += kind;
    buf_ += ": ";
    buf_ += detail;
    buf_ += "\n\n";
  }
  maybeFlush();
}

void Dumper::tcpEvent(const FlowKey& flow, const StreamEvent& event, const FrameRef& frame) {
  PduOrigin o = PduOrigin::of(Transport::tcp, frame, flow.src, flow.dst, flow.sport, flow.dport);
  std::string detail;
  switch (event.kind) {
    case StreamEventKind::gap:
      append(detail, event.octets);
      detail += " octets never captured";
      if (event.dropped) {
        detail += ", ";
        append(detail, event.dropped);
        detail += " octets of an unfinished PDU dropped";
      }
      detail += "; resynchronising";
      eventOut(o, "gap", event.octets, detail);
      break;
    case StreamEventKind::resync:
      append(detail, event.octets);
      detail += " octets passed over to the next PDU header";
      eventOut(o, "resync", event.octets, detail);
      break;
    case StreamEventKind::incomplete:
      detail = "the stream ended ";
      append(detail, event.octets);
      detail += " octets into a PDU";
      eventOut(o, "incomplete", event.octets, detail);
      break;
  }
}

void Dumper::frame(const FrameRef& ref, const FrameDecode& d) {
  ++frames_;
  const char* kind = nullptr;
  switch (d.kind) {
    case FrameKind::ldp:
      ++ldpFrames_;
      if (!d.segment.cut) return;
      ++cutSegments_;
      kind = "truncated";
      break;
    case FrameKind::other:
      ++otherFrames_;
      return;
    case FrameKind::fragment:
      ++fragments_;
      kind = "fragment";
      break;
    case FrameKind::truncated:
      ++truncated_;
      kind = "truncated";
      break;
    case FrameKind::malformed:
      ++malformed_;
      kind = "malformed";
      break;
  }
  PduOrigin o;
  o.frame = o.firstFrame = ref.number;
  o.hasTime = true;
  o.sec = ref.sec;
  o.usec = ref.usec;
  const bool ports = d.kind == FrameKind::ldp;
  if (d.segment.src.family) {
    o.src = &d.segment.src;
    o.dst = &d.segment.dst;
  }
  o.transport = d.segment.transport;
  o.sport = d.segment.sport;
  o.dport = d.segment.dport;
  std::string detail = ports ? "the capture holds only part of this segment's payload" : d.detail;
  o.hasTransport = ports;
  eventOut(o, kind, ports ? d.segment.payloadLen : 0, detail);
}

// --- Summary

void Dumper::finish(const TcpCounters& tcp) {
  if (options_.stats) {
    if (options_.format == Format::json) {
      statsJson(tcp);
    } else {
      statsText(tcp);
    }
  }
  flush();
}

}  // namespace LdpDump
