// Frame decoding: each link type down to the UDP or TCP payload of port 646,
// VLAN tags, IPv6 extension headers, fragments, and frames cut short.

#include "tools/ldpdump/LinkDecode.h"

#include <gtest/gtest.h>
#include <pcap/dlt.h>

#include "tools/ldpdump/CaptureWriter.h"

using namespace LdpDump;

namespace {

const std::array<uint8_t, 6> macA = {0x02, 0, 0, 0, 0, 1}, macB = {0x02, 0, 0, 0, 0, 2};
const IpAddress srcA = ipv4(198, 51, 100, 1), dstB = ipv4(198, 51, 100, 2);
const Bytes payload = {0x00, 0x01, 0x00, 0x0E, 1, 2, 3, 4, 5, 6, 7, 8};

Bytes udp4(uint16_t sport = ldpPort, uint16_t dport = ldpPort) {
  return ipPacket(srcA, dstB, 17, udpDatagram(srcA, dstB, sport, dport, payload));
}

FrameDecode decode(int linkType, const Bytes& frame, size_t caplen = SIZE_MAX) {
  return decodeFrame(linkType, frame.data(), std::min(caplen, frame.size()));
}

Bytes payloadOf(const FrameDecode& d) {
  return Bytes(d.segment.payload, d.segment.payload + d.segment.payloadLen);
}

void expectLdpUdp(const FrameDecode& d) {
  ASSERT_EQ(d.kind, FrameKind::ldp) << d.detail;
  EXPECT_EQ(d.segment.transport, Transport::udp);
  EXPECT_EQ(d.segment.src.str(), "198.51.100.1");
  EXPECT_EQ(d.segment.dst.str(), "198.51.100.2");
  EXPECT_EQ(payloadOf(d), payload);
  EXPECT_FALSE(d.segment.cut);
}

Bytes cat(const Bytes& a, const Bytes& b) {
  Bytes all = a;
  all.insert(all.end(), b.begin(), b.end());
  return all;
}

TEST(LinkDecode, EthernetWithAndWithoutVlanTags) {
  // ethernet() pads to 60 octets: the padding is not payload.
  expectLdpUdp(decode(DLT_EN10MB, ethernet(macA, macB, udp4())));
  expectLdpUdp(decode(DLT_EN10MB, ethernet(macA, macB, udp4(), {100})));
  expectLdpUdp(decode(DLT_EN10MB, ethernet(macA, macB, udp4(), {10, 20, 30})));
  // An ARP frame is other traffic, and so is UDP on other ports.
  Bytes arp = ethernet(macA, macB, udp4());
  arp[12] = 0x08;
  arp[13] = 0x06;
  EXPECT_EQ(decode(DLT_EN10MB, arp).kind, FrameKind::other);
  EXPECT_EQ(decode(DLT_EN10MB, ethernet(macA, macB, udp4(53, 53))).kind, FrameKind::other);
  // Either port 646 will do (targeted hellos may come from another port).
  expectLdpUdp(decode(DLT_EN10MB, ethernet(macA, macB, udp4(40000, ldpPort))));
}

TEST(LinkDecode, LinuxCookedCaptureV1AndV2) {
  Bytes sll1(16, 0);
  sll1[14] = 0x08;  // protocol at the end
  expectLdpUdp(decode(DLT_LINUX_SLL, cat(sll1, udp4())));
  Bytes sll2(20, 0);
  sll2[0] = 0x08;  // protocol first
  expectLdpUdp(decode(DLT_LINUX_SLL2, cat(sll2, udp4())));
}

TEST(LinkDecode, RawIpAndBsdLoopbackInEitherByteOrder) {
  expectLdpUdp(decode(DLT_RAW, udp4()));
  expectLdpUdp(decode(DLT_IPV4, udp4()));
  expectLdpUdp(decode(DLT_NULL, cat({2, 0, 0, 0}, udp4())));  // little-endian writer
  expectLdpUdp(decode(DLT_NULL, cat({0, 0, 0, 2}, udp4())));  // big-endian writer
  expectLdpUdp(decode(DLT_LOOP, cat({0, 0, 0, 2}, udp4())));
  const IpAddress s6 = ipAddress("2001:db8::1"), d6 = ipAddress("2001:db8::2");
  const Bytes ip6 = ipPacket(s6, d6, 17, udpDatagram(s6, d6, ldpPort, ldpPort, payload));
  for (uint8_t family : {10, 24, 28, 30}) {  // AF_INET6 on Linux, the BSDs, macOS
    const FrameDecode d = decode(DLT_NULL, cat({family, 0, 0, 0}, ip6));
    ASSERT_EQ(d.kind, FrameKind::ldp) << int{family};
    EXPECT_EQ(d.segment.src.str(), "2001:db8::1");
  }
  EXPECT_EQ(decode(DLT_NULL, cat({7, 0, 0, 0}, udp4())).kind, FrameKind::other);
  EXPECT_TRUE(linkTypeSupported(DLT_LINUX_SLL2));
  EXPECT_FALSE(linkTypeSupported(DLT_IEEE802_11));
}

// An IPv6 packet whose next header chain is `chain` then UDP.
Bytes ipv6With(const std::vector<Bytes>& chain, uint8_t first) {
  const IpAddress s6 = ipAddress("fe80::1"), d6 = ipAddress("ff02::2");
  Bytes body;
  for (const Bytes& h : chain) body.insert(body.end(), h.begin(), h.end());
  const Bytes u = udpDatagram(s6, d6, ldpPort, ldpPort, payload);
  body.insert(body.end(), u.begin(), u.end());
  return ipPacket(s6, d6, first, body, 255);
}

TEST(LinkDecode, SkipsIpv6ExtensionHeaders) {
  const Bytes hopByHop = {60, 0, 1, 4, 0, 0, 0, 0};  // then destination options
  const Bytes destOpts = {44, 1, 1, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // 16 octets
  const Bytes atomicFragment = {17, 0, 0, 0, 0, 0, 0, 1};  // offset 0, no more fragments
  // A decode points into its frame: the frame outlives every use of the payload.
  const Bytes frame = ipv6With({hopByHop, destOpts, atomicFragment}, 0);
  FrameDecode d = decode(DLT_RAW, frame);
  ASSERT_EQ(d.kind, FrameKind::ldp) << d.detail;
  EXPECT_EQ(d.segment.dst.str(), "ff02::2");
  EXPECT_EQ(payloadOf(d), payload);

  const Bytes firstFragment = {17, 0, 0, 1, 0, 0, 0, 1};  // more fragments follow
  d = decode(DLT_RAW, ipv6With({firstFragment}, 44));
  EXPECT_EQ(d.kind, FrameKind::fragment);
  EXPECT_EQ(d.segment.src.str(), "fe80::1");
}

TEST(LinkDecode, ReportsIpv4FragmentsWithoutReassembling) {
  Bytes ip = udp4();
  ip[6] = 0x20;  // more fragments
  ip[7] = 0x00;
  EXPECT_EQ(decode(DLT_RAW, ip).kind, FrameKind::fragment);
  ip[6] = 0x00;  // the last fragment, at offset 8 * 0x10
  ip[7] = 0x10;
  const FrameDecode d = decode(DLT_RAW, ip);
  EXPECT_EQ(d.kind, FrameKind::fragment);
  EXPECT_EQ(d.segment.dst.str(), "198.51.100.2");
}

TEST(LinkDecode, TcpSegmentsCarrySequenceAndFlags) {
  const Bytes t = tcpSegment(srcA, dstB, 49152, ldpPort, 0xFFFFFFF0u, 7, tcpAck | tcpFin, payload);
  const Bytes frame = ethernet(macA, macB, ipPacket(srcA, dstB, 6, t));
  const FrameDecode d = decode(DLT_EN10MB, frame);
  ASSERT_EQ(d.kind, FrameKind::ldp);
  EXPECT_EQ(d.segment.transport, Transport::tcp);
  EXPECT_EQ(d.segment.seq, 0xFFFFFFF0u);
  EXPECT_EQ(d.segment.flags, tcpAck | tcpFin);
  EXPECT_EQ(d.segment.sport, 49152);
  EXPECT_EQ(payloadOf(d), payload);
}

TEST(LinkDecode, FramesCutShortAreReportedNotRead) {
  const Bytes frame = ethernet(macA, macB, udp4());
  EXPECT_EQ(decode(DLT_EN10MB, frame, 10).kind, FrameKind::truncated);  // Ethernet header
  EXPECT_EQ(decode(DLT_EN10MB, frame, 30).kind, FrameKind::truncated);  // IPv4 header
  EXPECT_EQ(decode(DLT_EN10MB, frame, 38).kind, FrameKind::truncated);  // UDP header
  // A payload cut by the snapshot length is handed on, marked.
  const FrameDecode d = decode(DLT_EN10MB, frame, 14 + 20 + 8 + 5);
  ASSERT_EQ(d.kind, FrameKind::ldp);
  EXPECT_TRUE(d.segment.cut);
  EXPECT_EQ(d.segment.payloadLen, 5u);
  const Bytes t = ethernet(
      macA, macB, ipPacket(srcA, dstB, 6, tcpSegment(srcA, dstB, 1, ldpPort, 1, 1, 0, payload)));
  EXPECT_EQ(decode(DLT_EN10MB, t, 14 + 20 + 12).kind, FrameKind::truncated);  // TCP header
}

TEST(LinkDecode, RefusesHeadersThatCannotBeRight) {
  Bytes ip = udp4();
  ip[0] = 0x44;  // an IPv4 header of 16 octets
  EXPECT_EQ(decode(DLT_RAW, ip).kind, FrameKind::malformed);
  ip = udp4();
  ip[0] = 0x55;  // version 5
  EXPECT_EQ(decode(DLT_RAW, ip).kind, FrameKind::malformed);
  ip = udp4();
  ip[20 + 5] = 200;  // a UDP length beyond the IP packet
  EXPECT_EQ(decode(DLT_RAW, ip).kind, FrameKind::malformed);
  Bytes t = ipPacket(srcA, dstB, 6, tcpSegment(srcA, dstB, 1, ldpPort, 1, 1, 0, payload));
  t[20 + 12] = 0x40;  // a TCP header of 16 octets
  EXPECT_EQ(decode(DLT_RAW, t).kind, FrameKind::malformed);
}

}  // namespace
