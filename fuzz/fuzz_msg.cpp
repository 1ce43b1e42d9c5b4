// Input: one message. The whole input goes through the message dispatcher. Then
// the first octet picks one of the derived parsers' factories, which is applied to
// the remaining octets; a derived factory requires a message of its own type, so
// the type field of those octets is set to that type (keeping the U bit). Each
// result must pass the parser oracles.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "fuzz/ParserOracles.h"
#include "parse/LdpMsgParser.h"

namespace {

using Factory = Ldp::LdpMsgParser::Ptr (*)(const Zel::Ptr<Ovo::Pkt>&, uint32_t);

struct Derived {
  Ldp::LdpMsgType type;
  Factory factory;
};

template <auto F>
Ldp::LdpMsgParser::Ptr build(const Zel::Ptr<Ovo::Pkt>& pkt, uint32_t offset) {
  return F(pkt, offset);
}

const Derived derived[] = {
    {Ldp::LdpNotification_, build<Ldp::ldpNotificationMsgParserFactory>},
    {Ldp::LdpHello_, build<Ldp::ldpHelloMsgParserFactory>},
    {Ldp::LdpInit_, build<Ldp::ldpInitMsgParserFactory>},
    {Ldp::LdpCapability_, build<Ldp::ldpCapabilityMsgParserFactory>},
    {Ldp::LdpAddress_, build<Ldp::ldpAddressMsgParserFactory>},
    {Ldp::LdpAddressWithdraw_, build<Ldp::ldpAddressWithdrawMsgParserFactory>},
    {Ldp::LdpLabelMapping_, build<Ldp::ldpLabelMappingMsgParserFactory>},
    {Ldp::LdpLabelRequest_, build<Ldp::ldpLabelRequestMsgParserFactory>},
    {Ldp::LdpLabelWithdraw_, build<Ldp::ldpLabelWithdrawMsgParserFactory>},
    {Ldp::LdpLabelRelease_, build<Ldp::ldpLabelReleaseMsgParserFactory>},
    {Ldp::LdpLabelAbortReq_, build<Ldp::ldpLabelAbortReqMsgParserFactory>},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The dispatcher requires a packet with octets.
  if (size == 0) return 0;
  LdpFuzz::runInput([&] {
    Zel::Ptr<Ovo::Pkt> pkt = LdpFuzz::packetOf(data, size);
    const Ldp::LdpMsgParser::Ptr p = Ldp::ldpMsgParserGet(pkt, 0);
    (void)p->stringValue();
    LdpFuzz::checkMsgParser(*p);
    LdpFuzz::checkDeterministic(*p, [&] { return Ldp::ldpMsgParserGet(pkt, 0); });
  });
  if (size < 3) return 0;
  const Derived& pick = derived[data[0] % std::size(derived)];
  std::vector<uint8_t> msg(data + 1, data + size);
  msg[0] = static_cast<uint8_t>((msg[0] & 0x80) | ((pick.type >> 8) & 0x7F));
  msg[1] = static_cast<uint8_t>(pick.type & 0xFF);
  LdpFuzz::runInput([&] {
    Zel::Ptr<Ovo::Pkt> pkt = LdpFuzz::packetOf(msg.data(), msg.size());
    const Ldp::LdpMsgParser::Ptr p = pick.factory(pkt, 0);
    (void)p->stringValue();
    LdpFuzz::checkMsgParser(*p);
  });
  return 0;
}
