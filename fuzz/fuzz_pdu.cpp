// Input: one received PDU. Every message of a valid PDU goes through the message
// dispatcher, every parser prints its string form, and every result must pass the
// parser oracles.

#include <cstddef>
#include <cstdint>

#include "fuzz/FuzzSupport.h"
#include "fuzz/ParserOracles.h"
#include "parse/LdpMsgParser.h"
#include "parse/LdpPduParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  LdpFuzz::runInput([&] {
    Zel::Ptr<Ovo::Pkt> pkt = LdpFuzz::packetOf(data, size);
    Zel::Ptr<Ldp::LdpPduParser> pdu = Ldp::ldpPduParserFactory(pkt, 0);
    (void)pdu->stringValue();
    LdpFuzz::checkPduParser(*pdu);
    if (!pdu->validLdpPdu()) return;
    for (uint32_t i = 0; i < pdu->messageNum(); ++i) {
      Ldp::LdpMsgParser::Ptr msg = Ldp::ldpMsgParserGet(pkt, pdu->messageOffset(i));
      (void)msg->stringValue();
      LdpFuzz::checkMsgParser(*msg);
    }
  });
  return 0;
}
