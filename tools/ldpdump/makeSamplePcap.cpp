// Writes examples/sample.pcap: two LSRs, A (LSR id 192.0.2.1) and B (192.0.2.2), on
// the link 198.51.100.0/24, over Ethernet. Link hellos (IPv4 and IPv6), targeted
// hellos, then one TCP session (B is active: its transport address is the higher):
// Init with FT session and capabilities, KeepAlive, Address, Label Mappings with
// prefix and host FECs (one PDU split across two segments, segments carrying
// several PDUs, two segments captured out of order), a Label Request answered by a
// mapping, a P2MP mapping, a PW id mapping with interface parameters and a PW
// status Notification, Label Withdraw and Release, a retransmitted segment, and a
// shutdown Notification. Deliberately malformed PDUs and messages show the
// verdicts: a hello of version 2, a hello with an absurd PDU length, a Common Hello
// TLV of the wrong size, a non-LDP datagram on port 646, a mapping without its
// Label TLV, a mapping of the wildcard FEC, an unknown TLV without the U bit, and
// an unknown message type with the U bit set (ignored silently).
//
// Usage: makeSamplePcap OUT.pcap

#include <cstdio>

#include "core/LdpTypes.h"
#include "tests/support/PduBuilder.h"
#include "tools/ldpdump/CaptureWriter.h"

using namespace LdpDump;
using LdpTest::PduBuilder;

namespace {

const Ldp::LdpIdentifier idA(0xC0000201, 0);  // 192.0.2.1:0
const Ldp::LdpIdentifier idB(0xC0000202, 0);  // 192.0.2.2:0
constexpr uint32_t lsrA = 0xC0000201;
constexpr uint32_t lsrB = 0xC0000202;
constexpr int64_t start = 1714564800;  // 2024-05-01T12:00:00Z

// Status words: the E bit, then the code.
constexpr uint32_t eBit = 0x80000000;
constexpr uint32_t shutdownCode = 0x0A;
constexpr uint32_t missingParamsCode = 0x16;
constexpr uint32_t pwStatusCode = 0x28;

// TLV types the library does not know: the Dual-Stack capability (RFC 7552), and
// an arbitrary unassigned one.
constexpr uint32_t dualStackTlv = 0x0701;
constexpr uint32_t unassignedTlv = 0x0ABC;
// The capabilities an Init announces.
constexpr uint32_t dynamicCap = 0x0506, p2mpCap = 0x0508, typedWildcardCap = 0x050B,
                   unrecognizedNotifCap = 0x0603;
// An unassigned message type, sent with the U bit.
constexpr uint32_t unassignedMsg = 0x3F10;
// An Ethernet PW (RFC 4448) and its MTU interface parameter (1500).
constexpr uint16_t pwEthernet = 0x0005;
const std::vector<uint8_t> mtu1500 = {0x01, 0x04, 0x05, 0xDC};

class Sample {
 public:
  Sample() {
    a_.addr = ipv4(198, 51, 100, 1);
    a_.mac = {0x02, 0x00, 0x5E, 0x00, 0x00, 0x01};
    b_.addr = ipv4(198, 51, 100, 2);
    b_.mac = {0x02, 0x00, 0x5E, 0x00, 0x00, 0x02};
  }

  void at(int64_t ms) { ms_ = ms; }
  void put(const Bytes& frame) {
    out_.frame(start + ms_ / 1000, static_cast<int32_t>(ms_ % 1000) * 1000, frame);
    ms_ += 1;
  }
  // A hello over UDP from `from` (an address of A or B) to `to`.
  void udp(const Endpoint& from, const IpAddress& src, const IpAddress& dst, uint16_t sport,
           const Bytes& pdu, uint8_t ttl) {
    put(ethernet(from.mac, macFor(dst, from.mac == a_.mac ? b_.mac : a_.mac),
                 ipPacket(src, dst, 17, udpDatagram(src, dst, sport, ldpPort, pdu), ttl)));
  }

  PcapWriter out_;
  Endpoint a_, b_;
  int64_t ms_ = 0;
};

Bytes octets(uint32_t v, size_t n = 4) {
  Bytes b;
  for (size_t i = 0; i < n; ++i) b.push_back(static_cast<uint8_t>(v >> (24 - 8 * i)));
  return b;
}
// IPv4 FEC elements.
Bytes prefix4(uint32_t addr, uint8_t bits) {
  return LdpTest::prefixElement(1, bits, octets(addr, (bits + 7u) / 8));
}
Bytes host4(uint32_t addr) { return LdpTest::hostElement(1, octets(addr)); }
Bytes p2mp4(uint32_t root, uint32_t lspId) {
  return LdpTest::p2mpElement(1, octets(root), LdpTest::genericLspId(lspId));
}

Bytes cat(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& p : parts) all.insert(all.end(), p.begin(), p.end());
  return all;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: makeSamplePcap OUT.pcap\n");
    return 2;
  }
  Sample s;
  const IpAddress allRouters = ipv4(224, 0, 0, 2);
  const IpAddress allRouters6 = ipAddress("ff02::2");
  const IpAddress loA = ipv4(192, 0, 2, 1), loB = ipv4(192, 0, 2, 2);
  const IpAddress llA = ipAddress("fe80::1"), llB = ipAddress("fe80::2");
  const std::vector<uint8_t> trA6 = {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

  // --- Discovery: link hellos (IPv4, then IPv6 with the Dual-Stack TLV), targeted hellos.
  s.at(0);
  s.udp(s.a_, s.a_.addr, allRouters, ldpPort,
        PduBuilder(idA)
            .message(Ldp::LdpHello_, 1)
            .commonHello(15)
            .ipv4Transport(lsrA)
            .configSeqNum(1)
            .bytes(),
        1);
  s.at(350);
  s.udp(s.b_, s.b_.addr, allRouters, ldpPort,
        PduBuilder(idB).message(Ldp::LdpHello_, 1).commonHello(15).ipv4Transport(lsrB).bytes(), 1);
  s.at(400);
  s.udp(s.a_, llA, allRouters6, ldpPort,
        PduBuilder(idA)
            .message(Ldp::LdpHello_, 2)
            .commonHello(15)
            .ipv6Transport(trA6)
            .tlv(dualStackTlv, {0x40, 0x00, 0x00, 0x00}, LdpTest::uBit)
            .bytes(),
        255);
  s.at(450);
  {
    std::vector<uint8_t> trB6 = trA6;
    trB6[15] = 2;
    s.udp(s.b_, llB, allRouters6, ldpPort,
          PduBuilder(idB)
              .message(Ldp::LdpHello_, 3)
              .commonHello(15)
              .ipv6Transport(trB6)
              .tlv(dualStackTlv, {0x40, 0x00, 0x00, 0x00}, LdpTest::uBit)
              .bytes(),
          255);
  }
  s.at(600);
  s.udp(s.a_, loA, loB, ldpPort,
        PduBuilder(idA)
            .message(Ldp::LdpHello_, 3)
            .commonHello(45, true, true)
            .ipv4Transport(lsrA)
            .bytes(),
        64);
  s.at(650);
  s.udp(
      s.b_, loB, loA, ldpPort,
      PduBuilder(idB).message(Ldp::LdpHello_, 2).commonHello(45, true).ipv4Transport(lsrB).bytes(),
      64);

  // --- Malformed hellos: each is judged on its own, no session involved.
  s.at(900);
  s.udp(s.b_, s.b_.addr, allRouters, ldpPort,
        PduBuilder(idB)
            .version(2)
            .message(Ldp::LdpHello_, 3)
            .commonHello(15)
            .ipv4Transport(lsrB)
            .bytes(),
        1);
  s.at(950);
  s.udp(s.b_, s.b_.addr, allRouters, ldpPort,
        PduBuilder(idB).pduLength(60000).message(Ldp::LdpHello_, 4).commonHello(15).bytes(), 1);
  s.at(1000);
  s.udp(s.b_, s.b_.addr, allRouters, ldpPort,
        PduBuilder(idB)
            .message(Ldp::LdpHello_, 5)
            .tlv(Ldp::commonHelloTlv_, {0x00, 0x0F, 0x00, 0x00, 0x00, 0x00})
            .bytes(),
        1);
  s.at(1100);
  {
    const std::string text = "not an LDP PDU\n";
    s.udp(s.b_, s.b_.addr, s.a_.addr, 53000, Bytes(text.begin(), text.end()), 64);
  }

  // --- The session: B (192.0.2.2) connects to A.
  Endpoint cb = s.b_, sa = s.a_;
  cb.addr = loB;
  cb.port = 49152;
  sa.addr = loA;
  sa.port = ldpPort;
  TcpConnection tcp(cb, sa, 0x1A2B3C4D, 0x5E6F7081);
  const int B = 0, A = 1;
  s.at(1200);
  s.put(tcp.syn());
  s.put(tcp.synAck());
  s.put(tcp.ack(B));

  const Bytes initB = PduBuilder(idB)
                          .message(Ldp::LdpInit_, 10)
                          .sessionParams(180, false, false, 0, 4096, idA)
                          .ftSession(0x0001, 120000, 120000)
                          .capability(dynamicCap, true)
                          .capability(p2mpCap, true)
                          .capability(typedWildcardCap, true)
                          .capability(unrecognizedNotifCap, true)
                          .bytes();
  const Bytes initA = PduBuilder(idA)
                          .message(Ldp::LdpInit_, 20)
                          .sessionParams(180, false, false, 0, 4096, idB)
                          .ftSession(0x0001, 120000, 120000)
                          .capability(dynamicCap, true)
                          .capability(p2mpCap, true)
                          .bytes();
  const Bytes keepAliveA = PduBuilder(idA).message(Ldp::LdpKeepAlive_, 21).bytes();
  const Bytes keepAliveB = PduBuilder(idB).message(Ldp::LdpKeepAlive_, 11).bytes();
  s.at(1210);
  s.put(tcp.data(B, initB));
  s.put(tcp.data(A, cat({initA, keepAliveA})));  // two PDUs in one segment
  s.put(tcp.data(B, keepAliveB));

  const Bytes addressA =
      PduBuilder(idA).message(Ldp::LdpAddress_, 22).ipv4AddressList({lsrA, 0xC6336401}).bytes();
  const Bytes addressB =
      PduBuilder(idB).message(Ldp::LdpAddress_, 12).ipv4AddressList({lsrB, 0xC6336402}).bytes();
  // A's mappings: prefix FECs and a host FEC, in one PDU that spans two segments.
  const Bytes mappingsA = PduBuilder(idA)
                              .message(Ldp::LdpLabelMapping_, 23)
                              .fec({prefix4(0xCB007100, 24)})
                              .genLabel(16)
                              .message(Ldp::LdpLabelMapping_, 24)
                              .fec({prefix4(0x0A0A0000, 16)})
                              .genLabel(17)
                              .message(Ldp::LdpLabelMapping_, 25)
                              .fec({host4(lsrA)})
                              .genLabel(3)
                              .message(Ldp::LdpLabelMapping_, 26)
                              .fec({prefix4(lsrA, 32)})
                              .genLabel(3)
                              .bytes();
  const Bytes mappingsB = PduBuilder(idB)
                              .message(Ldp::LdpLabelMapping_, 13)
                              .fec({prefix4(lsrB, 32)})
                              .genLabel(3)
                              .bytes();
  s.at(1250);
  s.put(tcp.data(A, cat({addressA, Bytes(mappingsA.begin(), mappingsA.begin() + 40)})));
  s.put(tcp.data(B, cat({addressB, mappingsB})));
  s.put(tcp.data(A, Bytes(mappingsA.begin() + 40, mappingsA.end())));

  // A Label Request from B, answered with a mapping that names it.
  s.at(1400);
  s.put(tcp.data(
      B,
      PduBuilder(idB).message(Ldp::LdpLabelRequest_, 14).fec({prefix4(0xC6336400, 24)}).bytes()));
  s.put(tcp.data(A, PduBuilder(idA)
                        .message(Ldp::LdpLabelMapping_, 27)
                        .fec({prefix4(0xC6336400, 24)})
                        .genLabel(18)
                        .labelReqMsgId(14)
                        .bytes()));

  // mLDP: a P2MP mapping rooted at A; then a PW id mapping with its MTU. The capture
  // sees the second segment first (out of order).
  const Bytes p2mpSegment = tcp.data(A, PduBuilder(idA)
                                            .message(Ldp::LdpLabelMapping_, 28)
                                            .fec({p2mp4(lsrA, 7)})
                                            .genLabel(19)
                                            .bytes());
  const Bytes pwSegment = tcp.data(A, PduBuilder(idA)
                                          .message(Ldp::LdpLabelMapping_, 29)
                                          .fec({LdpTest::pwIdFec(pwEthernet, 0, 100, mtu1500)})
                                          .genLabel(20)
                                          .pwStatus(0)
                                          .bytes());
  s.at(1500);
  s.put(pwSegment);
  s.put(p2mpSegment);
  s.at(1600);
  s.put(tcp.data(B, PduBuilder(idB)
                        .message(Ldp::LdpLabelMapping_, 15)
                        .fec({LdpTest::pwIdFec(pwEthernet, 0, 100, mtu1500)})
                        .genLabel(21)
                        .pwStatus(0)
                        .bytes()));
  // B's attachment circuit goes down: PW status "not forwarding".
  s.at(5000);
  s.put(tcp.data(B, PduBuilder(idB)
                        .message(Ldp::LdpNotification_, 16)
                        .status(pwStatusCode)
                        .pwStatus(0x00000001)
                        .fec({LdpTest::pwIdFec(pwEthernet, 0, 100)})
                        .bytes()));

  // Malformed messages on the session: advisory errors (E=0) and an ignored one.
  s.at(6000);
  s.put(tcp.data(A, PduBuilder(idA)
                        .message(Ldp::LdpLabelMapping_, 30)
                        .fec({prefix4(0xCB007110, 28)})
                        .bytes()));  // no Label TLV
  s.put(tcp.data(B, PduBuilder(idB)
                        .message(Ldp::LdpNotification_, 17)
                        .status(missingParamsCode, 30, Ldp::LdpLabelMapping_)
                        .bytes()));
  s.at(6100);
  s.put(tcp.data(A, cat({PduBuilder(idA)
                             .message(Ldp::LdpLabelMapping_, 31)
                             .fec({LdpTest::wildcardFec()})
                             .genLabel(22)
                             .bytes(),
                         PduBuilder(idA)
                             .message(unassignedMsg, 32, LdpTest::uBit)
                             .tlv(0x3E00, {0x00, 0x00, 0x00, 0x09})
                             .bytes()})));
  s.put(tcp.data(B, PduBuilder(idB)
                        .message(Ldp::LdpAddress_, 18)
                        .ipv4AddressList({0xC6336402})
                        .tlv(unassignedTlv, {0x00, 0x01})
                        .bytes()));

  // Withdraw and release of 10.10.0.0/16; A sends its withdraw twice (a retransmission).
  s.at(8000);
  const uint32_t withdrawSeq = tcp.seq(A);
  const Bytes withdraw = PduBuilder(idA)
                             .message(Ldp::LdpLabelWithdraw_, 33)
                             .fec({prefix4(0x0A0A0000, 16)})
                             .genLabel(17)
                             .bytes();
  s.put(tcp.data(A, withdraw));
  s.at(8200);
  s.put(tcp.dataAt(A, withdrawSeq, withdraw));
  s.put(tcp.data(B, PduBuilder(idB)
                        .message(Ldp::LdpLabelRelease_, 19)
                        .fec({prefix4(0x0A0A0000, 16)})
                        .genLabel(17)
                        .bytes()));
  s.put(tcp.ack(A));

  // A shuts the session down, and both sides close.
  s.at(10000);
  s.put(tcp.data(
      A, PduBuilder(idA).message(Ldp::LdpNotification_, 34).status(eBit | shutdownCode).bytes()));
  s.put(tcp.fin(A));
  s.put(tcp.fin(B));
  s.put(tcp.ack(A));

  if (!s.out_.save(argv[1])) {
    std::perror(argv[1]);
    return 1;
  }
  std::printf("%s: %zu frames\n", argv[1], s.out_.frames());
  return 0;
}
