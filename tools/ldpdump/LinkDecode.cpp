#include "tools/ldpdump/LinkDecode.h"

#include <arpa/inet.h>
#include <pcap/dlt.h>

#include <cstring>

#include "tools/ldpdump/BigEndian.h"

namespace LdpDump {

namespace {

constexpr uint16_t etherIpv4 = 0x0800;
constexpr uint16_t etherIpv6 = 0x86DD;
constexpr uint16_t etherVlan = 0x8100;
constexpr uint16_t etherQinQ = 0x88A8;
constexpr uint16_t etherQinQOld = 0x9100;

constexpr uint8_t ipProtoTcp = 6;
constexpr uint8_t ipProtoUdp = 17;

FrameDecode failed(FrameKind kind, const char* detail) {
  FrameDecode d;
  d.kind = kind;
  d.detail = detail;
  return d;
}

// The UDP or TCP header at `p` (`n` octets captured, `wireLen` octets by the IP
// header's count) of a datagram whose addresses are already in `d.segment`.
FrameDecode decodeTransport(FrameDecode d, uint8_t proto, const uint8_t* p, size_t n,
                            size_t wireLen) {
  Segment& s = d.segment;
  if (proto != ipProtoUdp && proto != ipProtoTcp) return d;  // kind stays `other`
  const size_t captured = n < wireLen ? n : wireLen;
  if (proto == ipProtoUdp) {
    if (captured < 8) return failed(FrameKind::truncated, "UDP header cut short");
    s.sport = get16(p);
    s.dport = get16(p + 2);
    if (s.sport != ldpPort && s.dport != ldpPort) return d;
    const size_t udpLen = get16(p + 4);
    if (udpLen < 8 || udpLen > wireLen) {
      return failed(FrameKind::malformed, "UDP length disagrees with the IP length");
    }
    s.transport = Transport::udp;
    s.payload = p + 8;
    s.payloadLen = static_cast<uint32_t>((captured < udpLen ? captured : udpLen) - 8);
    s.cut = captured < udpLen;
  } else {
    if (captured < 20) return failed(FrameKind::truncated, "TCP header cut short");
    s.sport = get16(p);
    s.dport = get16(p + 2);
    if (s.sport != ldpPort && s.dport != ldpPort) return d;
    const size_t dataOffset = static_cast<size_t>(p[12] >> 4) * 4;
    if (dataOffset < 20 || dataOffset > wireLen) {
      return failed(FrameKind::malformed, "TCP data offset out of range");
    }
    if (captured < dataOffset) return failed(FrameKind::truncated, "TCP options cut short");
    s.transport = Transport::tcp;
    s.seq = get32(p + 4);
    s.flags = p[13];
    s.payload = p + dataOffset;
    s.payloadLen = static_cast<uint32_t>(captured - dataOffset);
    s.cut = captured < wireLen;
  }
  d.kind = FrameKind::ldp;
  return d;
}

FrameDecode decodeIpv4(const uint8_t* p, size_t n) {
  if (n < 20) return failed(FrameKind::truncated, "IPv4 header cut short");
  const size_t headerLen = static_cast<size_t>(p[0] & 0x0F) * 4;
  // A total length of 0 is what a sender's capture shows under segmentation offload.
  const size_t totalLen = get16(p + 2) ? get16(p + 2) : n;
  if (headerLen < 20 || totalLen < headerLen) {
    return failed(FrameKind::malformed, "IPv4 header length or total length out of range");
  }
  if (n < headerLen) return failed(FrameKind::truncated, "IPv4 options cut short");
  FrameDecode d;
  Segment& s = d.segment;
  s.src.family = s.dst.family = 4;
  std::memcpy(s.src.octets, p + 12, 4);
  std::memcpy(s.dst.octets, p + 16, 4);
  const uint16_t fragment = get16(p + 6);
  if ((fragment & 0x3FFF) != 0) {  // more fragments, or a fragment offset
    d.kind = FrameKind::fragment;
    d.detail = "IPv4 fragment (not reassembled)";
    return d;
  }
  return decodeTransport(d, p[9], p + headerLen, n - headerLen, totalLen - headerLen);
}

FrameDecode decodeIpv6(const uint8_t* p, size_t n) {
  if (n < 40) return failed(FrameKind::truncated, "IPv6 header cut short");
  FrameDecode d;
  Segment& s = d.segment;
  s.src.family = s.dst.family = 6;
  std::memcpy(s.src.octets, p + 8, 16);
  std::memcpy(s.dst.octets, p + 24, 16);
  // A payload length of 0 is a jumbogram's: take what was captured.
  const size_t payloadLen = get16(p + 4);
  size_t wireLen = payloadLen ? payloadLen : n - 40;
  uint8_t next = p[6];
  p += 40;
  n -= 40;
  for (;;) {
    switch (next) {
      case 0:     // hop-by-hop options
      case 43:    // routing
      case 60: {  // destination options
        if (n < 8 || wireLen < 8)
          return failed(FrameKind::truncated, "IPv6 extension header cut short");
        const size_t len = (size_t{p[1]} + 1) * 8;
        if (len > wireLen) return failed(FrameKind::malformed, "IPv6 extension header too long");
        if (len > n) return failed(FrameKind::truncated, "IPv6 extension header cut short");
        next = p[0];
        p += len;
        n -= len;
        wireLen -= len;
        continue;
      }
      case 44: {  // fragment
        if (n < 8 || wireLen < 8)
          return failed(FrameKind::truncated, "IPv6 fragment header cut short");
        const uint16_t offsetAndMore = get16(p + 2);
        if ((offsetAndMore & 0xFFF9) != 0) {
          d.kind = FrameKind::fragment;
          d.detail = "IPv6 fragment (not reassembled)";
          return d;
        }
        next = p[0];  // an atomic fragment: the whole datagram follows
        p += 8;
        n -= 8;
        wireLen -= 8;
        continue;
      }
      default:
        return decodeTransport(d, next, p, n, wireLen);
    }
  }
}

// The IP packet at `p`, by its version nibble.
FrameDecode decodeIp(const uint8_t* p, size_t n) {
  if (n < 1) return failed(FrameKind::truncated, "IP header cut short");
  switch (p[0] >> 4) {
    case 4:
      return decodeIpv4(p, n);
    case 6:
      return decodeIpv6(p, n);
    default:
      return failed(FrameKind::malformed, "IP version is neither 4 nor 6");
  }
}

// The payload of an EtherType at `p`, after any VLAN tags.
FrameDecode decodeEtherType(uint16_t type, const uint8_t* p, size_t n) {
  while (type == etherVlan || type == etherQinQ || type == etherQinQOld) {
    if (n < 4) return failed(FrameKind::truncated, "VLAN tag cut short");
    type = get16(p + 2);
    p += 4;
    n -= 4;
  }
  if (type == etherIpv4 || type == etherIpv6) return decodeIp(p, n);
  return FrameDecode{};  // not IP
}

// BSD loopback: a 4-octet address family in the writer's byte order (DLT_NULL) or
// in network order (DLT_LOOP). The AF_INET6 number differs between systems.
FrameDecode decodeLoopback(const uint8_t* p, size_t n) {
  if (n < 4) return failed(FrameKind::truncated, "loopback header cut short");
  const uint32_t big = get32(p);
  const uint32_t little = uint32_t{p[3]} << 24 | uint32_t{p[2]} << 16 | uint32_t{p[1]} << 8 | p[0];
  const uint32_t family = big < 256 ? big : little;
  switch (family) {
    case 2:   // AF_INET
    case 10:  // AF_INET6: Linux
    case 24:  // NetBSD, OpenBSD
    case 28:  // FreeBSD
    case 30:  // macOS
      return decodeIp(p + 4, n - 4);
    default:
      return FrameDecode{};
  }
}

}  // namespace

bool IpAddress::operator==(const IpAddress& o) const {
  return family == o.family && std::memcmp(octets, o.octets, family == 4 ? 4 : 16) == 0;
}

std::string IpAddress::str() const {
  if (family == 0) return {};
  char text[INET6_ADDRSTRLEN];
  inet_ntop(family == 4 ? AF_INET : AF_INET6, octets, text, sizeof text);
  return text;
}

const char* transportName(Transport t) {
  switch (t) {
    case Transport::udp:
      return "udp";
    case Transport::tcp:
      return "tcp";
    case Transport::hex:
      return "hex";
  }
  return "?";
}

bool linkTypeSupported(int linkType) {
  switch (linkType) {
    case DLT_NULL:
    case DLT_LOOP:
    case DLT_EN10MB:
    case DLT_RAW:
    case DLT_IPV4:
    case DLT_IPV6:
    case DLT_LINUX_SLL:
    case DLT_LINUX_SLL2:
      return true;
    default:
      return false;
  }
}

FrameDecode decodeFrame(int linkType, const uint8_t* p, size_t n) {
  switch (linkType) {
    case DLT_EN10MB:
      if (n < 14) return failed(FrameKind::truncated, "Ethernet header cut short");
      return decodeEtherType(get16(p + 12), p + 14, n - 14);
    case DLT_LINUX_SLL:  // 16 octets, the protocol last
      if (n < 16) return failed(FrameKind::truncated, "Linux cooked header cut short");
      return decodeEtherType(get16(p + 14), p + 16, n - 16);
    case DLT_LINUX_SLL2:  // 20 octets, the protocol first
      if (n < 20) return failed(FrameKind::truncated, "Linux cooked v2 header cut short");
      return decodeEtherType(get16(p), p + 20, n - 20);
    case DLT_RAW:
    case DLT_IPV4:
    case DLT_IPV6:
      return decodeIp(p, n);
    case DLT_NULL:
    case DLT_LOOP:
      return decodeLoopback(p, n);
    default:
      return FrameDecode{};
  }
}

}  // namespace LdpDump
