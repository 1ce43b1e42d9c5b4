#include "tools/ldpdump/Dumper.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstring>
#include <ctime>

#include "parse/LdpGenMsgParser.h"
#include "parse/LdpMsgParser.h"
#include "platform/ovo/Pkt.h"

namespace LdpDump {

using Ldp::LdpStatusCode;

namespace {

// Problems listed in the text summary; the rest are only counted.
constexpr size_t listedProblems = 20;
// Output is written out in blocks of about this size.
constexpr size_t flushOctets = 1 << 16;

// What the assertion handler throws while a Dumper exists.
struct ParserAssertion {
  const char* text;
  const char* file;
  int line;
};

[[noreturn]] void throwingHandler(const char* text, const char* file, int line) {
  throw ParserAssertion{text, file, line};
}

Zel::String assertionReason(const ParserAssertion& a) {
  const char* slash = std::strrchr(a.file, '/');
  char text[256];
  std::snprintf(text, sizeof text, "parser assertion failed: %s (%s:%d)", a.text,
                slash ? slash + 1 : a.file, a.line);
  return Zel::String(text);
}

uint16_t get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }

// The E bit of a Notification carrying `code`; a code the library has no answer for
// (none that its parsers give) counts as advisory.
bool eBitOf(LdpStatusCode code) {
  return Ldp::LdpStatusCodeEnumType().isEnumerator(code) && Ldp::statusCodeEBitForStatusCode(code);
}

// A string form; a failed assertion while building it gives its text instead.
template <class F>
std::string safeText(F&& form) {
  try {
    return std::string(form().view());
  } catch (const ParserAssertion& a) {
    return std::string(assertionReason(a).view());
  }
}

void append(std::string& s, uint64_t v) {
  char text[24];
  s.append(text, std::to_chars(text, text + sizeof text, v).ptr);
}

void appendHex(std::string& s, uint32_t v, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*" PRIX32, digits, v);
  s += text;
}

void jsonString(std::string& s, std::string_view v) {
  s += '"';
  for (char c : v) {
    switch (c) {
      case '"':
        s += "\\\"";
        break;
      case '\\':
        s += "\\\\";
        break;
      case '\n':
        s += "\\n";
        break;
      case '\t':
        s += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char esc[8];
          std::snprintf(esc, sizeof esc, "\\u%04x", static_cast<unsigned>(c));
          s += esc;
        } else {
          s += c;
        }
    }
  }
  s += '"';
}

const char* jsonBool(bool b) { return b ? "true" : "false"; }

// An enumerator's name, or null for a number that is none.
const char* msgTypeName(uint32_t type) { return Ldp::LdpMsgTypeEnumType().enumeratorName(type); }
const char* tlvTypeName(uint32_t type) { return Ldp::LdpTlvTypeEnumType().enumeratorName(type); }
const char* statusName(LdpStatusCode code) {
  const char* name = Ldp::LdpStatusCodeEnumType().enumeratorName(code);
  return name ? name : "unknown";
}

void appendAddress(std::string& s, const IpAddress& a, uint16_t port) {
  if (a.family == 6) {
    s += '[';
    s += a.str();
    s += ']';
  } else {
    s += a.str();
  }
  s += ':';
  append(s, port);
}

}  // namespace

Action actionFor(LdpStatusCode code) {
  if (code == Ldp::success_) return Action::accept;
  if (code == Ldp::unknownMessageTypeIgnore_) return Action::ignore;
  return Action::notify;
}

// One PDU as the parsers judged it.
struct Dumper::Judged {
  struct Msg {
    Ldp::LdpMsgParser::Ptr parser;  // null when the parser's assertion failed
    uint32_t offset = 0;
    LdpStatusCode code = Ldp::success_;
    Zel::String reason;
  };
  size_t len = 0;
  Zel::Ptr<Ovo::Pkt> pkt;
  Zel::Ptr<Ldp::LdpPduParser> pdu;  // null when the parser's assertion failed
  LdpStatusCode pduCode = Ldp::success_;
  Zel::String pduReason;
  std::vector<Msg> msgs;
  bool invalidMsg = false;

  bool invalidPdu() const { return actionFor(pduCode) == Action::notify; }
  bool invalid() const { return invalidPdu() || invalidMsg; }
};

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

// --- Text

void Dumper::timeText(int64_t sec, int32_t usec) {
  if (sec != timeSec_) {
    const time_t t = static_cast<time_t>(sec);
    struct tm tm;
    gmtime_r(&t, &tm);
    std::strftime(timeCache_, sizeof timeCache_, "%Y-%m-%dT%H:%M:%S", &tm);
    timeSec_ = sec;
  }
  char frac[16];
  std::snprintf(frac, sizeof frac, ".%06dZ", static_cast<int>(usec));
  buf_ += timeCache_;
  buf_ += frac;
}

void Dumper::originText(const PduOrigin& o) {
  buf_ += '#';
  append(buf_, o.frame);
  if (o.hasTime) {
    buf_ += ' ';
    timeText(o.sec, o.usec);
  }
  if (o.src && o.hasTransport) {
    buf_ += ' ';
    appendAddress(buf_, *o.src, o.sport);
    buf_ += " > ";
    appendAddress(buf_, *o.dst, o.dport);
  } else if (o.src) {
    buf_ += ' ';
    buf_ += o.src->str();
    buf_ += " > ";
    buf_ += o.dst->str();
  }
  if (o.hasTransport) {
    buf_ += o.transport == Transport::udp   ? " UDP"
            : o.transport == Transport::tcp ? " TCP"
                                            : " hex";
  }
}

void Dumper::verdictText(LdpStatusCode code, const Zel::String& reason) {
  buf_ += "   => ";
  buf_ += statusName(code);
  switch (actionFor(code)) {
    case Action::accept:
      return;
    case Action::ignore:
      buf_ += ": ignore silently";
      break;
    case Action::notify: {
      const bool fatal = eBitOf(code);
      buf_ += ": send Notification, status ";
      appendHex(buf_, (fatal ? 0x80000000u : 0u) | (static_cast<uint32_t>(code) & 0x3FFFFFFFu), 8);
      buf_ += fatal ? " (E=1, fatal: the session closes)" : " (E=0, advisory)";
      break;
    }
  }
  buf_ += "; ";
  buf_ += reason.view();
}

void Dumper::writeText(const PduOrigin& origin, const Judged& j) {
  originText(origin);
  if (origin.firstFrame != origin.frame) {
    buf_ += " (from #";
    append(buf_, origin.firstFrame);
    buf_ += ')';
  }
  buf_ += '\n';
  if (!j.pdu || !j.pdu->validLdpPdu()) {
    if (j.pdu && j.len >= sizeof(Ldp::LdpPduHdr)) {
      buf_ += safeText([&] { return j.pdu->header()->stringValue(); });
      buf_ += '\n';
    }
    buf_ += "Error LDP PDU: ";
    buf_ += j.pduReason.view();
    buf_ += '\n';
    verdictText(j.pduCode, j.pduReason);
    buf_ += "\n\n";
    return;
  }
  buf_ += safeText([&] { return j.pdu->header()->stringValue(); });
  buf_ += '\n';
  const size_t total = j.pdu->totalLength();
  if (j.len > total) {
    buf_ += "   (";
    append(buf_, j.len - total);
    buf_ += " octets after the PDU are not part of it)\n";
  }
  for (size_t i = 0; i < j.msgs.size(); ++i) {
    const Judged::Msg& m = j.msgs[i];
    if (options_.quiet && actionFor(m.code) != Action::notify) continue;
    append(buf_, i);
    buf_ += ": ";
    if (m.parser) {
      buf_ += safeText([&] { return m.parser->stringValue(); });
    } else {
      buf_ += "Message Error: ";
      buf_ += m.reason.view();
    }
    buf_ += '\n';
    verdictText(m.code, m.reason);
    if (m.code == Ldp::success_ && m.parser) {
      // TLVs that the receiver passes over: unknown types with the U bit set.
      for (uint32_t t = 0; t < m.parser->tlvNum(); ++t) {
        const auto* tlv = Ldp::overlay<Ldp::LdpTlvHdr>(j.pkt->front() + m.parser->tlvOffset(t));
        if (tlv->validateTlvHdr() != Ldp::unknownMessageTypeIgnore_) continue;
        buf_ += "; ignored unknown TLV ";
        appendHex(buf_, tlv->typeField().raw() & 0x3FFFu, 4);
        buf_ += " (U bit set)";
      }
    }
    buf_ += '\n';
  }
  buf_ += '\n';
}

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

// --- JSON

void Dumper::originJson(const PduOrigin& o) {
  buf_ += "\"frame\":";
  append(buf_, o.frame);
  buf_ += ",\"firstFrame\":";
  append(buf_, o.firstFrame);
  buf_ += ",\"time\":";
  if (o.hasTime) {
    buf_ += '"';
    timeText(o.sec, o.usec);
    buf_ += '"';
  } else {
    buf_ += "null";
  }
  const bool ports = o.hasTransport && o.transport != Transport::hex;
  buf_ += ",\"src\":";
  if (o.src) {
    jsonString(buf_, o.src->str());
  } else {
    buf_ += "null";
  }
  buf_ += ",\"dst\":";
  if (o.dst) {
    jsonString(buf_, o.dst->str());
  } else {
    buf_ += "null";
  }
  buf_ += ",\"sport\":";
  if (ports) {
    append(buf_, o.sport);
  } else {
    buf_ += "null";
  }
  buf_ += ",\"dport\":";
  if (ports) {
    append(buf_, o.dport);
  } else {
    buf_ += "null";
  }
  buf_ += ",\"transport\":";
  if (o.hasTransport) {
    jsonString(buf_, transportName(o.transport));
  } else {
    buf_ += "null";
  }
}

void Dumper::verdictJson(LdpStatusCode code, const Zel::String& reason) {
  const Action action = actionFor(code);
  const bool eBit = action == Action::notify && eBitOf(code);
  buf_ += "{\"code\":";
  append(buf_, static_cast<uint32_t>(code));
  buf_ += ",\"name\":";
  jsonString(buf_, statusName(code));
  buf_ += ",\"eBit\":";
  buf_ += jsonBool(eBit);
  buf_ += ",\"fatal\":";
  buf_ += jsonBool(eBit);
  buf_ += ",\"action\":";
  jsonString(buf_, action == Action::accept   ? "accept"
                   : action == Action::ignore ? "ignore"
                                              : "notify");
  buf_ += ",\"reason\":";
  jsonString(buf_, reason.view());
  buf_ += '}';
}

void Dumper::writeJson(const PduOrigin& origin, const Judged& j) {
  buf_ += '{';
  originJson(origin);
  buf_ += ",\"octets\":";
  append(buf_, j.len);
  buf_ += ",\"pdu\":{\"version\":";
  const uint8_t* front = j.pkt->front();
  if (j.len >= 4) {
    append(buf_, get16(front));
    buf_ += ",\"length\":";
    append(buf_, get16(front + 2));
  } else {
    buf_ += "null,\"length\":null";
  }
  buf_ += ",\"ldpId\":";
  if (j.len >= sizeof(Ldp::LdpPduHdr)) {
    jsonString(buf_, Ldp::overlay<Ldp::LdpPduHdr>(front)->ldpId().stringValue().view());
  } else {
    buf_ += "null";
  }
  buf_ += ",\"verdict\":";
  verdictJson(j.pduCode, j.pduReason);
  buf_ += "},\"messages\":[";
  bool first = true;
  for (size_t i = 0; i < j.msgs.size(); ++i) {
    const Judged::Msg& m = j.msgs[i];
    if (options_.quiet && actionFor(m.code) != Action::notify) continue;
    if (!first) buf_ += ',';
    first = false;
    const uint8_t* hdr = front + m.offset;
    const size_t avail = j.len - m.offset;
    buf_ += "{\"index\":";
    append(buf_, i);
    const uint32_t type = avail >= 2 ? get16(hdr) & 0x7FFFu : 0;
    buf_ += ",\"type\":";
    append(buf_, type);
    buf_ += ",\"typeName\":";
    if (const char* name = msgTypeName(type)) {
      jsonString(buf_, name);
    } else {
      buf_ += "null";
    }
    buf_ += ",\"id\":";
    append(buf_, avail >= 8 ? uint32_t{get16(hdr + 4)} << 16 | get16(hdr + 6) : 0u);
    buf_ += ",\"uBit\":";
    buf_ += jsonBool(avail >= 1 && (hdr[0] & 0x80));
    buf_ += ",\"length\":";
    append(buf_, avail >= 4 ? get16(hdr + 2) : 0u);
    buf_ += ",\"tlvs\":[";
    const uint32_t tlvs = m.parser ? m.parser->tlvNum() : 0;
    for (uint32_t t = 0; t < tlvs; ++t) {
      const auto* tlv = Ldp::overlay<Ldp::LdpTlvHdr>(front + m.parser->tlvOffset(t));
      const uint32_t tlvType = tlv->typeField().raw() & 0x3FFFu;
      if (t) buf_ += ',';
      buf_ += "{\"type\":";
      append(buf_, tlvType);
      buf_ += ",\"name\":";
      if (const char* name = tlvTypeName(tlvType)) {
        jsonString(buf_, name);
      } else {
        buf_ += "null";
      }
      buf_ += ",\"uBit\":";
      buf_ += jsonBool(tlv->unknown());
      buf_ += ",\"fBit\":";
      buf_ += jsonBool(tlv->forwardUnknown());
      buf_ += ",\"length\":";
      append(buf_, tlv->length());
      buf_ += ",\"known\":";
      buf_ += jsonBool(tlv->validateTlvHdr() == Ldp::success_);
      buf_ += '}';
    }
    buf_ += ']';
    if (m.parser && m.parser->ldpFecTlvParser()) {
      const Ldp::LdpFecTlvParser& fec = *m.parser->ldpFecTlvParser();
      buf_ += ",\"fec\":[";
      for (uint32_t e = 0; e < fec.fecElements(); ++e) {
        if (e) buf_ += ',';
        const auto element = fec.fecElement(e);
        jsonString(buf_, element ? safeText([&] { return element->stringValue(); }) : "");
      }
      buf_ += "],\"fecVerdict\":";
      verdictJson(fec.statusCode(), fec.reason());
    }
    buf_ += ",\"verdict\":";
    verdictJson(m.code, m.reason);
    buf_ += '}';
  }
  buf_ += "]}\n";
}

// --- Summary

void Dumper::statsText(const TcpCounters& tcp) {
  char line[160];
  auto row = [&](int indent, const char* label, uint64_t value, const char* extra = "") {
    std::snprintf(line, sizeof line, "%*s%-*s %10" PRIu64 "%s\n", indent, "", 34 - indent, label,
                  value, extra);
    buf_ += line;
  };
  buf_ += "== ldpdump summary\n";
  row(0, "frames", frames_);
  row(2, "TCP or UDP port 646", ldpFrames_);
  row(2, "other traffic", otherFrames_);
  row(2, "IP fragments (not reassembled)", fragments_);
  row(2, "truncated", truncated_ + cutSegments_);
  row(2, "malformed", malformed_);
  row(0, "PDUs", pdus_);
  row(2, "UDP", pdusBy_[static_cast<int>(Transport::udp)]);
  row(2, "TCP", pdusBy_[static_cast<int>(Transport::tcp)]);
  row(2, "hex", pdusBy_[static_cast<int>(Transport::hex)]);
  row(2, "invalid", invalidPdus_);
  row(0, "messages", messages_);
  std::vector<Count> types = byType_;
  std::sort(types.begin(), types.end(),
            [](const Count& a, const Count& b) { return a.key < b.key; });
  for (const Count& c : types) {
    char name[32];
    const char* known = msgTypeName(c.key);
    if (!known) std::snprintf(name, sizeof name, "type 0x%04" PRIX32, c.key);
    row(2, known ? known : name, c.messages);
  }
  row(2, "invalid", invalidMessages_);
  row(2, "ignored silently", ignoredMessages_);
  std::vector<Count> verdicts = byVerdict_;
  std::sort(verdicts.begin(), verdicts.end(),
            [](const Count& a, const Count& b) { return a.key < b.key; });
  std::snprintf(line, sizeof line, "%-34s %10s %10s  %s\n", "verdicts", "PDUs", "messages",
                "receiver");
  buf_ += line;
  for (const Count& c : verdicts) {
    const auto code = static_cast<LdpStatusCode>(c.key);
    const Action action = actionFor(code);
    const char* receiver = action == Action::accept   ? "accepts"
                           : action == Action::ignore ? "ignores silently"
                           : eBitOf(code)             ? "Notification, E=1 (fatal)"
                                                      : "Notification, E=0";
    std::snprintf(line, sizeof line, "  %-32s %10" PRIu64 " %10" PRIu64 "  %s\n", statusName(code),
                  c.pdus, c.messages, receiver);
    buf_ += line;
  }
  row(0, "TCP streams", tcp.streams);
  row(2, "segments with data", tcp.segments);
  row(2, "retransmitted (dropped)", tcp.retransmitted);
  row(2, "out of order (held)", tcp.held);
  row(2, "gaps", tcp.gaps);
  row(4, "octets missing", tcp.gapOctets);
  row(2, "resyncs", tcp.resyncs);
  row(4, "octets passed over", tcp.skippedOctets);
  row(2, "PDUs cut off by the stream's end", tcp.incomplete);
  if (assertions_) row(0, "parser assertions caught", assertions_);
  if (!problems_.empty()) {
    buf_ += "invalid PDUs and messages\n";
    for (const std::string& p : problems_) {
      buf_ += "  ";
      buf_ += p;
      buf_ += '\n';
    }
    if (moreProblems_) {
      std::snprintf(line, sizeof line, "  ... and %" PRIu64 " more\n", moreProblems_);
      buf_ += line;
    }
  }
}

void Dumper::statsJson(const TcpCounters& tcp) {
  auto field = [&](const char* name, uint64_t value) {
    buf_ += '"';
    buf_ += name;
    buf_ += "\":";
    append(buf_, value);
  };
  // "a":1,"b":2,... for a run of counters.
  auto fields = [&](std::initializer_list<std::pair<const char*, uint64_t>> list) {
    const char* sep = "";
    for (const auto& [name, value] : list) {
      buf_ += sep;
      field(name, value);
      sep = ",";
    }
  };
  buf_ += "{\"stats\":{";
  fields({{"frames", frames_},
          {"ldpFrames", ldpFrames_},
          {"otherFrames", otherFrames_},
          {"fragments", fragments_},
          {"truncatedFrames", truncated_ + cutSegments_},
          {"malformedFrames", malformed_}});
  buf_ += ",\"pdus\":{";
  fields({{"udp", pdusBy_[static_cast<int>(Transport::udp)]},
          {"tcp", pdusBy_[static_cast<int>(Transport::tcp)]},
          {"hex", pdusBy_[static_cast<int>(Transport::hex)]},
          {"total", pdus_},
          {"invalid", invalidPdus_}});
  buf_ += "},\"messages\":{";
  fields({{"total", messages_}, {"invalid", invalidMessages_}, {"ignored", ignoredMessages_}});
  buf_ += ",\"byType\":[";
  std::vector<Count> types = byType_;
  std::sort(types.begin(), types.end(),
            [](const Count& a, const Count& b) { return a.key < b.key; });
  for (size_t i = 0; i < types.size(); ++i) {
    if (i) buf_ += ',';
    buf_ += "{\"type\":";
    append(buf_, types[i].key);
    buf_ += ",\"typeName\":";
    if (const char* name = msgTypeName(types[i].key)) {
      jsonString(buf_, name);
    } else {
      buf_ += "null";
    }
    buf_ += ',';
    field("count", types[i].messages);
    buf_ += '}';
  }
  buf_ += "]},\"verdicts\":[";
  std::vector<Count> verdicts = byVerdict_;
  std::sort(verdicts.begin(), verdicts.end(),
            [](const Count& a, const Count& b) { return a.key < b.key; });
  for (size_t i = 0; i < verdicts.size(); ++i) {
    if (i) buf_ += ',';
    buf_ += "{\"code\":";
    append(buf_, verdicts[i].key);
    buf_ += ",\"name\":";
    jsonString(buf_, statusName(static_cast<LdpStatusCode>(verdicts[i].key)));
    buf_ += ',';
    field("pdus", verdicts[i].pdus);
    buf_ += ',';
    field("messages", verdicts[i].messages);
    buf_ += '}';
  }
  buf_ += "],\"tcp\":{";
  fields({{"streams", tcp.streams},
          {"segments", tcp.segments},
          {"retransmitted", tcp.retransmitted},
          {"held", tcp.held},
          {"gaps", tcp.gaps},
          {"gapOctets", tcp.gapOctets},
          {"resyncs", tcp.resyncs},
          {"skippedOctets", tcp.skippedOctets},
          {"incomplete", tcp.incomplete}});
  buf_ += "},";
  field("parserAssertions", assertions_);
  buf_ += "}}\n";
}

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
