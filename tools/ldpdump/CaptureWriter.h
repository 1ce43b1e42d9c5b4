#pragma once
// Writing captures for ldpdump's sample, benchmark and tests: classic pcap files
// (microsecond timestamps, written little-endian by hand) and the Ethernet, IPv4,
// IPv6, UDP and TCP framing around LDP PDUs, with correct checksums.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/ldpdump/LinkDecode.h"

namespace LdpDump {

using Bytes = std::vector<uint8_t>;

class PcapWriter {
 public:
  // `linkType` is the file header's LINKTYPE_ value (1: Ethernet).
  explicit PcapWriter(uint32_t linkType = 1, uint32_t snapLength = 262144);

  // One record; `wireLength` 0 means the frame's own length. Only the first
  // `captured` octets are kept when it is given and smaller.
  void frame(int64_t sec, int32_t usec, const Bytes& data, uint32_t wireLength = 0,
             size_t captured = SIZE_MAX);
  // Raw octets after the records (for captures cut mid-record).
  void raw(const Bytes& octets);

  const Bytes& bytes() const { return out_; }
  size_t frames() const { return frames_; }
  // Writes the file; false when it cannot.
  bool save(const std::string& path) const;

 private:
  void put32(uint32_t v);
  Bytes out_;
  size_t frames_ = 0;
};

IpAddress ipv4(uint8_t a, uint8_t b, uint8_t c, uint8_t d);
// From text ("2001:db8::1" or "192.0.2.1").
IpAddress ipAddress(const std::string& text);

struct Endpoint {
  IpAddress addr;
  uint16_t port = 0;
  std::array<uint8_t, 6> mac = {};
};

// Link framing of an IP packet (EtherType from its version).
Bytes ethernet(const std::array<uint8_t, 6>& src, const std::array<uint8_t, 6>& dst,
               const Bytes& ip, const std::vector<uint16_t>& vlans = {});
// The MAC a multicast group maps to, or `unicast` for a unicast address.
std::array<uint8_t, 6> macFor(const IpAddress& dst, const std::array<uint8_t, 6>& unicast);

// IP packets. `ttl` is the hop limit for IPv6.
Bytes ipPacket(const IpAddress& src, const IpAddress& dst, uint8_t proto, const Bytes& payload,
               uint8_t ttl = 64, uint16_t id = 0);
Bytes udpDatagram(const IpAddress& src, const IpAddress& dst, uint16_t sport, uint16_t dport,
                  const Bytes& payload);
Bytes tcpSegment(const IpAddress& src, const IpAddress& dst, uint16_t sport, uint16_t dport,
                 uint32_t seq, uint32_t ack, uint8_t flags, const Bytes& payload);

// A TCP connection between two endpoints, as Ethernet frames: keeps each side's
// sequence number. Side 0 is the client (it sends the SYN).
class TcpConnection {
 public:
  TcpConnection(const Endpoint& client, const Endpoint& server, uint32_t clientIsn,
                uint32_t serverIsn);

  Bytes syn();
  Bytes synAck();
  Bytes ack(int side);
  // Data from `side`; advances its sequence number.
  Bytes data(int side, const Bytes& payload);
  // The same octets again at sequence number `seq` (a retransmission).
  Bytes dataAt(int side, uint32_t seq, const Bytes& payload) const;
  Bytes fin(int side);
  uint32_t seq(int side) const { return seq_[side]; }
  void seqIs(int side, uint32_t seq) { seq_[side] = seq; }

 private:
  Bytes frame(int side, uint32_t seq, uint8_t flags, const Bytes& payload) const;
  Endpoint ends_[2];
  uint32_t seq_[2];
};

}  // namespace LdpDump
