#include "tools/ldpdump/CaptureWriter.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstring>

namespace LdpDump {

namespace {

void put16(Bytes& b, uint16_t v) {
  b.push_back(static_cast<uint8_t>(v >> 8));
  b.push_back(static_cast<uint8_t>(v));
}
void put32(Bytes& b, uint32_t v) {
  put16(b, static_cast<uint16_t>(v >> 16));
  put16(b, static_cast<uint16_t>(v));
}
void set16(Bytes& b, size_t at, uint16_t v) {
  b[at] = static_cast<uint8_t>(v >> 8);
  b[at + 1] = static_cast<uint8_t>(v);
}

uint32_t sum(const uint8_t* p, size_t n, uint32_t acc = 0) {
  for (size_t i = 0; i + 1 < n; i += 2) acc += uint32_t{p[i]} << 8 | p[i + 1];
  if (n & 1) acc += uint32_t{p[n - 1]} << 8;
  return acc;
}
uint16_t fold(uint32_t acc) {
  while (acc >> 16) acc = (acc & 0xFFFF) + (acc >> 16);
  return static_cast<uint16_t>(~acc);
}
size_t addrLen(const IpAddress& a) { return a.family == 4 ? 4 : 16; }

// The transport checksum over the pseudo header and `segment`.
uint16_t transportChecksum(const IpAddress& src, const IpAddress& dst, uint8_t proto,
                           const Bytes& segment) {
  uint32_t acc = sum(src.octets, addrLen(src));
  acc = sum(dst.octets, addrLen(dst), acc);
  acc += proto;
  acc +=
      static_cast<uint32_t>(segment.size() & 0xFFFF) + static_cast<uint32_t>(segment.size() >> 16);
  return fold(sum(segment.data(), segment.size(), acc));
}

}  // namespace

PcapWriter::PcapWriter(uint32_t linkType, uint32_t snapLength) {
  put32(0xA1B2C3D4);  // microsecond timestamps
  out_.push_back(2);  // version 2.4
  out_.push_back(0);
  out_.push_back(4);
  out_.push_back(0);
  put32(0);  // time zone
  put32(0);  // accuracy
  put32(snapLength);
  put32(linkType);
}

void PcapWriter::put32(uint32_t v) {
  for (int i = 0; i < 4; ++i) out_.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

void PcapWriter::frame(int64_t sec, int32_t usec, const Bytes& data, uint32_t wireLength,
                       size_t captured) {
  const size_t kept = captured < data.size() ? captured : data.size();
  put32(static_cast<uint32_t>(sec));
  put32(static_cast<uint32_t>(usec));
  put32(static_cast<uint32_t>(kept));
  put32(wireLength ? wireLength : static_cast<uint32_t>(data.size()));
  out_.insert(out_.end(), data.begin(), data.begin() + static_cast<ptrdiff_t>(kept));
  ++frames_;
}

void PcapWriter::raw(const Bytes& octets) { out_.insert(out_.end(), octets.begin(), octets.end()); }

bool PcapWriter::save(const std::string& path) const {
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return false;
  const bool ok = std::fwrite(out_.data(), 1, out_.size(), f) == out_.size();
  return std::fclose(f) == 0 && ok;
}

IpAddress ipv4(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
  IpAddress ip;
  ip.family = 4;
  ip.octets[0] = a;
  ip.octets[1] = b;
  ip.octets[2] = c;
  ip.octets[3] = d;
  return ip;
}

IpAddress ipAddress(const std::string& text) {
  IpAddress ip;
  if (inet_pton(AF_INET, text.c_str(), ip.octets) == 1) {
    ip.family = 4;
  } else if (inet_pton(AF_INET6, text.c_str(), ip.octets) == 1) {
    ip.family = 6;
  }
  return ip;
}

std::array<uint8_t, 6> macFor(const IpAddress& dst, const std::array<uint8_t, 6>& unicast) {
  if (dst.family == 4 && dst.octets[0] >= 224 && dst.octets[0] <= 239) {
    return {0x01,          0x00,         0x5E, static_cast<uint8_t>(dst.octets[1] & 0x7F),
            dst.octets[2], dst.octets[3]};
  }
  if (dst.family == 6 && dst.octets[0] == 0xFF) {
    return {0x33, 0x33, dst.octets[12], dst.octets[13], dst.octets[14], dst.octets[15]};
  }
  return unicast;
}

Bytes ethernet(const std::array<uint8_t, 6>& src, const std::array<uint8_t, 6>& dst,
               const Bytes& ip, const std::vector<uint16_t>& vlans) {
  Bytes f(dst.begin(), dst.end());
  f.insert(f.end(), src.begin(), src.end());
  for (size_t i = 0; i < vlans.size(); ++i) {
    // The outer tag of a stack is 802.1ad, the others 802.1Q.
    put16(f, i + 1 < vlans.size() ? 0x88A8 : 0x8100);
    put16(f, vlans[i]);
  }
  put16(f, !ip.empty() && (ip[0] >> 4) == 6 ? 0x86DD : 0x0800);
  f.insert(f.end(), ip.begin(), ip.end());
  while (f.size() < 60) f.push_back(0);  // the minimum frame, without the FCS
  return f;
}

Bytes ipPacket(const IpAddress& src, const IpAddress& dst, uint8_t proto, const Bytes& payload,
               uint8_t ttl, uint16_t id) {
  Bytes p;
  if (src.family == 4) {
    p = {0x45, 0xC0};  // DSCP CS6, as routing protocols send
    put16(p, static_cast<uint16_t>(20 + payload.size()));
    put16(p, id);
    put16(p, 0x4000);  // don't fragment
    p.push_back(ttl);
    p.push_back(proto);
    put16(p, 0);
    p.insert(p.end(), src.octets, src.octets + 4);
    p.insert(p.end(), dst.octets, dst.octets + 4);
    set16(p, 10, fold(sum(p.data(), 20)));
  } else {
    p = {0x6C, 0x00, 0x00, 0x00};  // traffic class CS6
    put16(p, static_cast<uint16_t>(payload.size()));
    p.push_back(proto);
    p.push_back(ttl);
    p.insert(p.end(), src.octets, src.octets + 16);
    p.insert(p.end(), dst.octets, dst.octets + 16);
  }
  p.insert(p.end(), payload.begin(), payload.end());
  return p;
}

Bytes udpDatagram(const IpAddress& src, const IpAddress& dst, uint16_t sport, uint16_t dport,
                  const Bytes& payload) {
  Bytes u;
  put16(u, sport);
  put16(u, dport);
  put16(u, static_cast<uint16_t>(8 + payload.size()));
  put16(u, 0);
  u.insert(u.end(), payload.begin(), payload.end());
  uint16_t check = transportChecksum(src, dst, 17, u);
  set16(u, 6, check ? check : 0xFFFF);
  return u;
}

Bytes tcpSegment(const IpAddress& src, const IpAddress& dst, uint16_t sport, uint16_t dport,
                 uint32_t seq, uint32_t ack, uint8_t flags, const Bytes& payload) {
  Bytes t;
  put16(t, sport);
  put16(t, dport);
  put32(t, seq);
  put32(t, ack);
  t.push_back(0x50);  // 20 octets, no options
  t.push_back(flags);
  put16(t, 64240);  // window
  put16(t, 0);
  put16(t, 0);
  t.insert(t.end(), payload.begin(), payload.end());
  set16(t, 16, transportChecksum(src, dst, 6, t));
  return t;
}

TcpConnection::TcpConnection(const Endpoint& client, const Endpoint& server, uint32_t clientIsn,
                             uint32_t serverIsn)
    : ends_{client, server}, seq_{clientIsn, serverIsn} {}

Bytes TcpConnection::frame(int side, uint32_t seq, uint8_t flags, const Bytes& payload) const {
  const Endpoint& from = ends_[side];
  const Endpoint& to = ends_[1 - side];
  const uint32_t ack = (flags & tcpAck) ? seq_[1 - side] : 0;
  const Bytes tcp = tcpSegment(from.addr, to.addr, from.port, to.port, seq, ack, flags, payload);
  return ethernet(from.mac, to.mac, ipPacket(from.addr, to.addr, 6, tcp, 255));
}

Bytes TcpConnection::syn() {
  Bytes f = frame(0, seq_[0], tcpSyn, {});
  ++seq_[0];
  return f;
}

Bytes TcpConnection::synAck() {
  Bytes f = frame(1, seq_[1], tcpSyn | tcpAck, {});
  ++seq_[1];
  return f;
}

Bytes TcpConnection::ack(int side) { return frame(side, seq_[side], tcpAck, {}); }

Bytes TcpConnection::data(int side, const Bytes& payload) {
  Bytes f = frame(side, seq_[side], tcpAck | 0x08, payload);  // PSH
  seq_[side] += static_cast<uint32_t>(payload.size());
  return f;
}

Bytes TcpConnection::dataAt(int side, uint32_t seq, const Bytes& payload) const {
  return frame(side, seq, tcpAck | 0x08, payload);
}

Bytes TcpConnection::fin(int side) {
  Bytes f = frame(side, seq_[side], tcpFin | tcpAck, {});
  ++seq_[side];
  return f;
}

}  // namespace LdpDump
