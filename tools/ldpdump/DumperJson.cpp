#include "tools/ldpdump/Dumper.h"

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "parse/LdpFecTlvParser.h"
#include "tools/ldpdump/DumpFormat.h"
#include "tools/ldpdump/JudgedPdu.h"

namespace LdpDump {

using Ldp::LdpStatusCode;

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

namespace {

const char* jsonBool(bool b) { return b ? "true" : "false"; }

// A name as a JSON string, or null when there is none.
void jsonNameOrNull(std::string& s, const char* name) {
  if (name) {
    jsonString(s, name);
  } else {
    s += "null";
  }
}

// A TLV type's name, or null for a number that is none.
const char* tlvTypeName(uint32_t type) { return Ldp::LdpTlvTypeEnumType().enumeratorName(type); }

}  // namespace

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
    jsonNameOrNull(buf_, msgTypeName(type));
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
      jsonNameOrNull(buf_, tlvTypeName(tlvType));
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
  const std::vector<Count> types = byKey(byType_);
  for (size_t i = 0; i < types.size(); ++i) {
    if (i) buf_ += ',';
    buf_ += "{\"type\":";
    append(buf_, types[i].key);
    buf_ += ",\"typeName\":";
    jsonNameOrNull(buf_, msgTypeName(types[i].key));
    buf_ += ',';
    field("count", types[i].messages);
    buf_ += '}';
  }
  buf_ += "]},\"verdicts\":[";
  const std::vector<Count> verdicts = byKey(byVerdict_);
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

}  // namespace LdpDump
