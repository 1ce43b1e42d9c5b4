#pragma once
// Dumper::Judged, the verdicts on one PDU: filled in by the judging in Dumper.cpp,
// read by the output in DumperText.cpp and DumperJson.cpp. Internal to ldpdump.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "parse/LdpMsgParser.h"
#include "parse/LdpPduParser.h"
#include "platform/ovo/Pkt.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/String.h"
#include "tools/ldpdump/Dumper.h"

namespace LdpDump {

// One PDU as the parsers judged it.
struct Dumper::Judged {
  struct Msg {
    Ldp::LdpMsgParser::Ptr parser;  // null when the parser's assertion failed
    uint32_t offset = 0;
    Ldp::LdpStatusCode code = Ldp::success_;
    Zel::String reason;
  };
  size_t len = 0;
  Zel::Ptr<Ovo::Pkt> pkt;
  Zel::Ptr<Ldp::LdpPduParser> pdu;  // null when the parser's assertion failed
  Ldp::LdpStatusCode pduCode = Ldp::success_;
  Zel::String pduReason;
  std::vector<Msg> msgs;
  bool invalidMsg = false;

  bool invalidPdu() const { return actionFor(pduCode) == Action::notify; }
  bool invalid() const { return invalidPdu() || invalidMsg; }
};

}  // namespace LdpDump
