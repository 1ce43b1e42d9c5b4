#include "tools/ldpdump/Dumper.h"

#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "tools/ldpdump/DumpFormat.h"
#include "tools/ldpdump/JudgedPdu.h"

namespace LdpDump {

using Ldp::LdpStatusCode;

namespace {

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
  const std::vector<Count> types = byKey(byType_);
  for (const Count& c : types) {
    char name[32];
    const char* known = msgTypeName(c.key);
    if (!known) std::snprintf(name, sizeof name, "type 0x%04" PRIX32, c.key);
    row(2, known ? known : name, c.messages);
  }
  row(2, "invalid", invalidMessages_);
  row(2, "ignored silently", ignoredMessages_);
  const std::vector<Count> verdicts = byKey(byVerdict_);
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

}  // namespace LdpDump
