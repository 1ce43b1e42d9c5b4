// A program outside the project that uses the installed libLdp: it parses two PDUs
// (a Hello, then the same with a bad version field) and builds a VRF's configuration.
// It prints what it saw; scripts/consumer-test compares that with expected.txt.

#include <cstdint>
#include <cstdio>
#include <vector>

#include "model/LdpConfig.h"
#include "parse/LdpMsgParser.h"
#include "parse/LdpPduParser.h"
#include "platform/ovo/Pkt.h"

namespace {

// A PDU from LSR 10.0.0.1, label space 0, holding one Hello (message id 7) with a
// Common Hello Parameters TLV: hold time 15 s, targeted, request targeted hellos.
const std::vector<uint8_t> kHelloPdu = {
    0x00, 0x01, 0x00, 0x16, 0x0A, 0x00, 0x00, 0x01, 0x00, 0x00,  // PDU header
    0x01, 0x00, 0x00, 0x0C, 0x00, 0x00, 0x00, 0x07,              // Hello, length 12, id 7
    0x04, 0x00, 0x00, 0x04, 0x00, 0x0F, 0xC0, 0x00,              // Common Hello Parameters
};

void parse(const char* name, const std::vector<uint8_t>& octets) {
  const Zel::Ptr<Ovo::Pkt> pkt = Ovo::pktFactory(octets.data(), octets.size());
  const Zel::Ptr<Ldp::LdpPduParser> pdu = Ldp::ldpPduParserFactory(pkt, 0);
  std::printf("%s: pdu %s (%s)", name, pdu->validLdpPdu() ? "valid" : "invalid",
              Ldp::stringValue(pdu->statusCode()).charPtr());
  if (!pdu->validLdpPdu()) {
    std::printf(": %s\n", pdu->reason().charPtr());
    return;
  }
  std::printf(", lsr %s, %u message(s)\n", pdu->ldpIdentifier().stringValue().charPtr(),
              pdu->messageNum());
  for (uint32_t i = 0; i < pdu->messageNum(); ++i) {
    const Ldp::LdpMsgParser::Ptr msg = Ldp::ldpMsgParserGet(pkt, pdu->messageOffset(i));
    std::printf("  message %u: %s id %u %s", i, Ldp::stringValue(msg->type()).charPtr(),
                msg->msgId(), msg->validMsg() ? "valid" : "invalid");
    if (const auto* hello = dynamic_cast<const Ldp::LdpHelloMsgParser*>(msg.ptr())) {
      if (const Ldp::LdpCommonHelloTlv* params = hello->msgCommonHelloTlv()) {
        std::printf(", hold time %u, targeted %d, request targeted %d", params->holdTime(),
                    params->targetedHello(), params->requestSendTargetedHello());
      }
    }
    std::printf("\n");
  }
}

}  // namespace

int main() {
  parse("hello", kHelloPdu);
  std::vector<uint8_t> badVersion = kHelloPdu;
  badVersion[1] = 0x02;
  parse("version 2", badVersion);

  const Zel::Ptr<Ldp::Config> config = Ldp::configFactory(L3::VrfName("blue"));
  const uint16_t defaultHoldTime = config->helloHoldTime();
  config->helloHoldTimeIs(static_cast<uint16_t>(defaultHoldTime + 30));
  std::printf("config %s: hello hold time %u (default %u)\n",
              config->vrfName().stringValue().charPtr(), config->helloHoldTime(), defaultHoldTime);
  return 0;
}
