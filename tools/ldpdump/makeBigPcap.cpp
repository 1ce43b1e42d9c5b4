// Writes a large capture of valid LDP traffic for timing ldpdump: one session's
// steady state between two LSRs over Ethernet and IPv4. Each TCP segment carries
// one to four PDUs (every seventh PDU is split across two segments), each PDU one
// to three messages: Label Mappings of prefix and host FECs (most), Label Withdraws
// and Releases, Addresses and KeepAlives; a link hello goes out over UDP after
// every segment that brings the count of PDUs to a multiple of 50.
// The mix is drawn from a fixed seed, so the file is the same on every run.
//
// Usage: makeBigPcap OUT.pcap [PDUS]   (PDUS defaults to 100000)

#include <cstdio>
#include <cstdlib>
#include <random>

#include "core/LdpTypes.h"
#include "tests/support/PduBuilder.h"
#include "tools/ldpdump/CaptureWriter.h"

using namespace LdpDump;
using LdpTest::PduBuilder;

namespace {

const Ldp::LdpIdentifier idA(0xC0000201, 0), idB(0xC0000202, 0);

Bytes octets(uint32_t v, size_t n) {
  Bytes b;
  for (size_t i = 0; i < n; ++i) b.push_back(static_cast<uint8_t>(v >> (24 - 8 * i)));
  return b;
}

class Traffic {
 public:
  explicit Traffic(uint64_t pdus) : pdus_(pdus) {}

  // One PDU of one to three messages from `id`.
  Bytes pdu(const Ldp::LdpIdentifier& id) {
    PduBuilder b(id);
    const int messages = 1 + static_cast<int>(draw() % 3);
    for (int m = 0; m < messages; ++m) {
      const uint32_t pick = draw() % 100;
      const uint32_t prefix = 0x0A000000 | (draw() & 0x00FFFF00);
      const uint32_t label = 16 + draw() % 100000;
      if (pick < 70) {
        const bool host = pick < 10;
        b.message(Ldp::LdpLabelMapping_, ++msgId_)
            .fec({host ? LdpTest::hostElement(1, octets(prefix | 1, 4))
                       : LdpTest::prefixElement(1, 24, octets(prefix, 3))})
            .genLabel(label);
      } else if (pick < 80) {
        b.message(Ldp::LdpLabelWithdraw_, ++msgId_)
            .fec({LdpTest::prefixElement(1, 24, octets(prefix, 3))})
            .genLabel(label);
      } else if (pick < 90) {
        b.message(Ldp::LdpLabelRelease_, ++msgId_)
            .fec({LdpTest::prefixElement(1, 24, octets(prefix, 3))})
            .genLabel(label);
      } else if (pick < 95) {
        b.message(Ldp::LdpAddress_, ++msgId_).ipv4AddressList({0xC6336400 | (draw() & 0xFF)});
      } else {
        b.message(Ldp::LdpKeepAlive_, ++msgId_);
      }
    }
    return b.bytes();
  }

  bool write(const std::string& path) {
    Endpoint a, b;
    a.addr = ipv4(192, 0, 2, 1);
    a.port = ldpPort;
    a.mac = {0x02, 0x00, 0x5E, 0x00, 0x00, 0x01};
    b.addr = ipv4(192, 0, 2, 2);
    b.port = 49152;
    b.mac = {0x02, 0x00, 0x5E, 0x00, 0x00, 0x02};
    TcpConnection tcp(b, a, 1000, 90000);
    put(tcp.syn());
    put(tcp.synAck());
    put(tcp.ack(0));
    Bytes carry[2];  // the second half of a split PDU, per side
    uint64_t written = 0;
    while (written < pdus_) {
      const int side = static_cast<int>(draw() % 2);
      Bytes segment = std::move(carry[side]);
      carry[side].clear();
      const int count = 1 + static_cast<int>(draw() % 4);
      for (int i = 0; i < count && written < pdus_; ++i) {
        const Bytes p = pdu(side == 0 ? idB : idA);
        if (++written % 7 == 0 && written < pdus_) {
          const size_t half = p.size() / 2;
          segment.insert(segment.end(), p.begin(), p.begin() + static_cast<ptrdiff_t>(half));
          carry[side].assign(p.begin() + static_cast<ptrdiff_t>(half), p.end());
          break;
        }
        segment.insert(segment.end(), p.begin(), p.end());
      }
      put(tcp.data(side, segment));
      if (written % 50 == 0) hello(side == 0 ? b : a, side == 0 ? idB : idA, written);
    }
    for (int side = 0; side < 2; ++side) {
      if (!carry[side].empty()) put(tcp.data(side, carry[side]));
    }
    put(tcp.fin(0));
    put(tcp.fin(1));
    return out_.save(path);
  }

  size_t frames() const { return out_.frames(); }
  uint64_t hellos() const { return hellos_; }

 private:
  uint32_t draw() { return static_cast<uint32_t>(random_()); }
  void put(const Bytes& frame) {
    out_.frame(1714564800 + static_cast<int64_t>(usec_ / 1000000),
               static_cast<int32_t>(usec_ % 1000000), frame);
    usec_ += 50;
  }
  void hello(const Endpoint& from, const Ldp::LdpIdentifier& id, uint64_t n) {
    const IpAddress group = ipv4(224, 0, 0, 2);
    const Bytes h = PduBuilder(id)
                        .message(Ldp::LdpHello_, static_cast<uint32_t>(n))
                        .commonHello(15)
                        .ipv4Transport(id.lsrId().value())
                        .bytes();
    put(ethernet(
        from.mac, macFor(group, from.mac),
        ipPacket(from.addr, group, 17, udpDatagram(from.addr, group, ldpPort, ldpPort, h), 1)));
    ++hellos_;
  }

  uint64_t pdus_;
  uint64_t hellos_ = 0;
  uint32_t msgId_ = 0;
  uint64_t usec_ = 0;
  std::mt19937 random_{646};
  PcapWriter out_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: makeBigPcap OUT.pcap [PDUS]\n");
    return 2;
  }
  const uint64_t pdus = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 100000;
  Traffic t(pdus);
  if (!t.write(argv[1])) {
    std::perror(argv[1]);
    return 1;
  }
  std::printf("%s: %zu frames, %llu PDUs over TCP, %llu hellos over UDP\n", argv[1], t.frames(),
              static_cast<unsigned long long>(pdus), static_cast<unsigned long long>(t.hellos()));
  return 0;
}
