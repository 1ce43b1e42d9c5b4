#pragma once
// Frame decoding for ldpdump: from a captured frame of a given link type down to
// the UDP or TCP payload of port 646. Nothing is copied: a decoded segment points
// into the frame's octets.
//
// Link types: Ethernet (802.1Q/802.1ad tags, stacked), Linux cooked capture v1
// and v2, raw IP (DLT_RAW, DLT_IPV4, DLT_IPV6) and BSD loopback (DLT_NULL in
// either byte order, DLT_LOOP). IPv4 and IPv6; IPv6 extension headers are
// skipped (hop-by-hop, routing, destination options, fragment with offset 0 and
// no more fragments); IPv4 and IPv6 fragments are reported, not reassembled.

#include <cstddef>
#include <cstdint>
#include <string>

namespace LdpDump {

// The LDP port for discovery (UDP) and sessions (TCP).
constexpr uint16_t ldpPort = 646;

struct IpAddress {
  uint8_t family = 0;  // 4 or 6; 0 for none
  uint8_t octets[16] = {};

  bool operator==(const IpAddress& o) const;
  // Dotted quad or RFC 5952 text; "" for none.
  std::string str() const;
};

enum class Transport : uint8_t { udp, tcp, hex };
const char* transportName(Transport t);

// TCP flag bits.
enum TcpFlags : uint8_t { tcpFin = 0x01, tcpSyn = 0x02, tcpRst = 0x04, tcpAck = 0x10 };

// What a frame carried to or from port 646.
struct Segment {
  IpAddress src, dst;
  uint16_t sport = 0, dport = 0;
  Transport transport = Transport::udp;
  uint32_t seq = 0;   // TCP
  uint8_t flags = 0;  // TCP
  const uint8_t* payload = nullptr;
  uint32_t payloadLen = 0;
  // The capture holds fewer payload octets than the IP or UDP length says.
  bool cut = false;
};

enum class FrameKind : uint8_t {
  ldp,        // a UDP or TCP segment of port 646: `segment` is filled in
  other,      // IP traffic that is not UDP or TCP port 646, or a frame that is not IP
  fragment,   // an IPv4 or IPv6 fragment (not reassembled)
  truncated,  // the capture ends inside the link, IP or transport header
  malformed,  // a header field that cannot be right (IP version, header length)
};

struct FrameDecode {
  FrameKind kind = FrameKind::other;
  Segment segment;
  // For fragment, truncated and malformed: what was wrong, as a fixed text.
  const char* detail = "";
};

// Whether decodeFrame() understands `linkType` (a DLT_ value from libpcap).
bool linkTypeSupported(int linkType);

FrameDecode decodeFrame(int linkType, const uint8_t* data, size_t caplen);

}  // namespace LdpDump
