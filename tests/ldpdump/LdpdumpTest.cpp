// The command: exit status and error messages, hex input, -q, -c and --stats, and
// a failed parser assertion turned into a verdict.

#include "tools/ldpdump/Ldpdump.h"

#include <gtest/gtest.h>

#include "core/LdpTypes.h"
#include "tests/ldpdump/RunLdpdump.h"
#include "tests/support/PduBuilder.h"

using namespace LdpDump;
using namespace LdpdumpTest;
using LdpTest::PduBuilder;

namespace {

const Ldp::LdpIdentifier kId(0xC0000201, 0);
const IpAddress a = ipv4(198, 51, 100, 1), b = ipv4(198, 51, 100, 2);
const std::array<uint8_t, 6> macA = {0x02, 0, 0, 0, 0, 1}, macB = {0x02, 0, 0, 0, 0, 2};

Bytes udpFrame(const Bytes& pdu) {
  return ethernet(macA, macB, ipPacket(a, b, 17, udpDatagram(a, b, ldpPort, ldpPort, pdu)));
}

Bytes hello() {
  return PduBuilder(kId)
      .message(Ldp::LdpHello_, 1)
      .commonHello(15)
      .ipv4Transport(0xC0000201)
      .bytes();
}

std::string hex(const Bytes& octets) {
  static const char digits[] = "0123456789abcdef";
  std::string s;
  for (uint8_t o : octets) {
    s += digits[o >> 4];
    s += digits[o & 15];
  }
  return s;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

size_t countOf(const std::string& text, const std::string& part) {
  size_t n = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

TEST(Ldpdump, ExitStatusFollowsWhatTheReceiverMustDo) {
  Result r = run({"-r", writeCapture("valid.pcap", {udpFrame(hello())})});
  EXPECT_EQ(r.status, exitValid) << r.err;
  EXPECT_TRUE(r.err.empty());
  EXPECT_TRUE(
      contains(r.out, "#1 2024-05-01T12:00:00.000000Z 198.51.100.1:646 > 198.51.100.2:646 UDP\n"));

  // An unknown message with the U bit is ignored silently: not an error.
  const Bytes ignored = PduBuilder(kId).message(0x3F10, 1, LdpTest::uBit).bytes();
  r = run({"-r", writeCapture("ignored.pcap", {udpFrame(ignored)})});
  EXPECT_EQ(r.status, exitValid);
  EXPECT_TRUE(contains(r.out, "=> unknownMessageTypeIgnore: ignore silently;"));

  // An unknown TLV without the U bit calls for a Notification (E=0).
  const Bytes unknownTlv =
      PduBuilder(kId).message(Ldp::LdpHello_, 2).commonHello(15).tlv(0x0ABC, {0, 1}).bytes();
  r = run({"-r", writeCapture("unknowntlv.pcap", {udpFrame(hello()), udpFrame(unknownTlv)})});
  EXPECT_EQ(r.status, exitInvalid);
  EXPECT_TRUE(contains(r.out,
                       "=> unknownTlv: send Notification, status 0x00000006 (E=0, advisory); "
                       "Unknown TLV Type: 2748\n"));
}

// `frames` as a pcapng file (little-endian, one Ethernet interface, microsecond
// timestamps from 2024-05-01T12:00:00Z, 1 ms apart).
std::string writePcapng(const std::string& name, const std::vector<Bytes>& frames) {
  Bytes out;
  auto u16 = [&](uint32_t v) {
    for (int i = 0; i < 2; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
  };
  auto u32 = [&](uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
  };
  u32(0x0A0D0D0A);  // section header block
  u32(28);
  u32(0x1A2B3C4D);
  u16(1);
  u16(0);
  u32(0xFFFFFFFF);  // section length unknown
  u32(0xFFFFFFFF);
  u32(28);
  u32(1);  // interface description block
  u32(20);
  u16(1);  // Ethernet
  u16(0);
  u32(262144);
  u32(20);
  uint64_t usec = 1714564800ull * 1000000;
  for (const Bytes& f : frames) {
    const uint32_t padded = static_cast<uint32_t>((f.size() + 3) / 4 * 4);
    u32(6);  // enhanced packet block
    u32(32 + padded);
    u32(0);
    u32(static_cast<uint32_t>(usec >> 32));
    u32(static_cast<uint32_t>(usec));
    u32(static_cast<uint32_t>(f.size()));
    u32(static_cast<uint32_t>(f.size()));
    out.insert(out.end(), f.begin(), f.end());
    out.resize(out.size() + padded - f.size(), 0);
    u32(32 + padded);
    usec += 1000;
  }
  std::string path = scratchPath(name);
  FILE* file = std::fopen(path.c_str(), "wb");
  std::fwrite(out.data(), 1, out.size(), file);
  std::fclose(file);
  return path;
}

TEST(Ldpdump, ReadsPcapngAsItReadsPcap) {
  const Bytes ka = PduBuilder(kId).message(Ldp::LdpKeepAlive_, 9).bytes();
  const std::vector<Bytes> frames = {udpFrame(hello()), udpFrame(ka)};
  const Result pcap = run({"-r", writeCapture("same.pcap", frames), "--json"});
  const Result pcapng = run({"-r", writePcapng("same.pcapng", frames), "--json"});
  EXPECT_EQ(pcapng.status, exitValid) << pcapng.err;
  EXPECT_EQ(countOf(pcapng.out, "\"transport\":\"udp\""), 2u);
  EXPECT_EQ(pcapng.out, pcap.out);
}

TEST(Ldpdump, StreamAndFrameProblemsAreReported) {
  Endpoint client, server;
  client.addr = b;
  client.port = 49152;
  client.mac = macB;
  server.addr = a;
  server.port = ldpPort;
  server.mac = macA;
  TcpConnection tcp(client, server, 100, 900);
  const Bytes ka = PduBuilder(kId).message(Ldp::LdpKeepAlive_, 9).bytes();
  Bytes first = ka;
  first.insert(first.end(), ka.begin(), ka.begin() + 6);
  std::vector<Bytes> frames = {tcp.syn(), tcp.data(0, first)};
  tcp.data(0, Bytes(ka.begin() + 6, ka.end()));  // never captured
  frames.push_back(tcp.data(0, ka));
  Bytes fragment = udpFrame(hello());
  fragment[14 + 6] = 0x20;  // more fragments
  frames.push_back(fragment);

  Result r = run({"-r", writeCapture("problems.pcap", frames), "-q"});
  // Problems of the capture, not verdicts. The gap is given up on at the end of
  // input, after the last frame.
  EXPECT_EQ(r.status, exitValid) << r.err;
  EXPECT_TRUE(contains(r.out,
                       "#4 2024-05-01T12:00:00.003000Z 198.51.100.2:49152 > 198.51.100.1:646 TCP "
                       "gap: 12 octets never captured, 6 octets of an unfinished PDU dropped; "
                       "resynchronising\n"))
      << r.out;
  EXPECT_TRUE(contains(r.out,
                       "#4 2024-05-01T12:00:00.003000Z 198.51.100.1 > 198.51.100.2 "
                       "fragment: IPv4 fragment (not reassembled)\n"));
  r = run({"-r", writeCapture("problems.pcap", frames), "--json"});
  EXPECT_EQ(countOf(r.out, "{\"frame\":"), 2u);  // the two KeepAlives
  EXPECT_TRUE(contains(r.out, "{\"event\":\"gap\",\"frame\":4,\"firstFrame\":4,"));
  EXPECT_TRUE(contains(r.out,
                       "\"sport\":null,\"dport\":null,\"transport\":null,\"octets\":0,"
                       "\"detail\":\"IPv4 fragment (not reassembled)\"}"));
}

TEST(Ldpdump, UsageErrorsExitWithTwo) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "ldpdump: no input: give -r FILE, -i IFACE or --hex\n"},
      {{"-r", "x.pcap", "--hex"}, "ldpdump: give one input: -r FILE, -i IFACE or --hex\n"},
      {{"-r"}, "ldpdump: option -r needs a value\n"},
      {{"--hex", "-c", "0"}, "ldpdump: -c needs a positive number, not '0'\n"},
      {{"--hex", "-c", "-3"}, "ldpdump: -c needs a positive number, not '-3'\n"},
      {{"--hex", "--frob"}, "ldpdump: unknown option '--frob'\n"},
      {{"--hex", "-f", "tcp"}, "ldpdump: -f applies to captures, not to --hex\n"},
  };
  for (const auto& [args, message] : cases) {
    const Result r = run(args);
    EXPECT_EQ(r.status, exitError) << message;
    EXPECT_EQ(r.err.substr(0, message.size()), message);
    EXPECT_TRUE(contains(r.err, "usage: ldpdump")) << message;
  }
  const Result help = run({"--help"});
  EXPECT_EQ(help.status, exitValid);
  EXPECT_TRUE(contains(help.out, "usage: ldpdump"));
}

TEST(Ldpdump, InputErrorsAreNamed) {
  Result r = run({"-r", "/nonexistent/capture.pcap"});
  EXPECT_EQ(r.status, exitError);
  EXPECT_EQ(r.err, "ldpdump: cannot read /nonexistent/capture.pcap: No such file or directory\n");

  const std::string text = scratchPath("notes.txt");
  {
    FILE* f = std::fopen(text.c_str(), "wb");
    std::fputs("these are notes, not a capture\n", f);
    std::fclose(f);
  }
  r = run({"-r", text});
  EXPECT_EQ(r.status, exitError);
  EXPECT_TRUE(contains(r.err, "ldpdump: " + text + ": not a pcap or pcapng capture")) << r.err;

  PcapWriter wifi(105);  // LINKTYPE_IEEE802_11
  wifi.frame(0, 0, {1, 2, 3});
  const std::string wifiPath = scratchPath("wifi.pcap");
  ASSERT_TRUE(wifi.save(wifiPath));
  r = run({"-r", wifiPath});
  EXPECT_EQ(r.status, exitError);
  EXPECT_TRUE(
      contains(r.err, "ldpdump: " + wifiPath + ": link type 105 (IEEE802_11) is not supported"))
      << r.err;

  r = run({"-r", writeCapture("filter.pcap", {udpFrame(hello())}), "-f", "port port"});
  EXPECT_EQ(r.status, exitError);
  EXPECT_TRUE(contains(r.err, "ldpdump: bad filter 'port port'")) << r.err;

  r = run({"-i", "nosuchif0"});
  EXPECT_EQ(r.status, exitError);
  EXPECT_EQ(r.err, "ldpdump: nosuchif0: no such interface\n");
}

TEST(Ldpdump, ACaptureCutInsideARecordKeepsWhatCameBefore) {
  PcapWriter w;
  w.frame(1714564800, 0, udpFrame(hello()));
  w.frame(1714564800, 1000, udpFrame(hello()));
  const Bytes third = udpFrame(hello());
  w.raw({0, 0, 0, 0, 0, 0, 0, 0, 60, 0, 0, 0, 60, 0, 0, 0});  // a record header for 60 octets
  w.raw(Bytes(third.begin(), third.begin() + 20));            // and only 20 of them
  const std::string path = scratchPath("cut.pcap");
  ASSERT_TRUE(w.save(path));
  const Result r = run({"-r", path});
  EXPECT_EQ(r.status, exitError);
  EXPECT_EQ(countOf(r.out, "=> success"), 2u);
  EXPECT_TRUE(contains(r.err, "ldpdump: " + path + ": capture cut short after frame 2: ")) << r.err;

  // A file that stops inside its own header.
  const Bytes header = PcapWriter().bytes();
  const std::string stub = scratchPath("stub.pcap");
  FILE* f = std::fopen(stub.c_str(), "wb");
  std::fwrite(header.data(), 1, 10, f);
  std::fclose(f);
  const Result s = run({"-r", stub});
  EXPECT_EQ(s.status, exitError);
  EXPECT_TRUE(contains(s.err, "ldpdump: " + stub + ": capture file cut short")) << s.err;
}

TEST(Ldpdump, HexInputOnePduPerLine) {
  const std::string input = "# a hello, then a KeepAlive with separators\n" + hex(hello()) +
                            "\n\n00:01:00:0e c0:00:02:01 00:00  02:01:00:04 00:00:00:07  # ka\n";
  Result r = run({"--hex"}, input);
  EXPECT_EQ(r.status, exitValid) << r.err;
  EXPECT_TRUE(contains(r.out, "#2 hex\nLdpPduHdr: Ver(1),Len(30),LdpId: 192.0.2.1:0\n"));
  EXPECT_TRUE(contains(r.out,
                       "#4 hex\nLdpPduHdr: Ver(1),Len(14),LdpId: 192.0.2.1:0\n"
                       "0: LdpKeepAlive, Id: 0x00000007, numTlv: 0\n   => success\n"));

  // A line that is not hex is an input error; the other lines are still decoded.
  const std::string path = scratchPath("pdus.hex");
  FILE* f = std::fopen(path.c_str(), "w");
  std::fprintf(f, "%s\n0001zz\n000100\n", hex(hello()).c_str());
  std::fclose(f);
  r = run({"--hex", path, "--json"});
  EXPECT_EQ(r.status, exitError);
  EXPECT_EQ(r.err, "ldpdump: " + path + " line 2: 'z' at column 5 is not a hex digit\n");
  EXPECT_EQ(countOf(r.out, "\"transport\":\"hex\""), 2u);
  EXPECT_TRUE(contains(r.out,
                       "{\"frame\":3,\"firstFrame\":3,\"time\":null,\"src\":null,\"dst\":null,"
                       "\"sport\":null,\"dport\":null,\"transport\":\"hex\",\"octets\":3,"
                       "\"pdu\":{\"version\":null,\"length\":null,\"ldpId\":null,"));
}

TEST(Ldpdump, CountLimitAndSummary) {
  const std::string input = hex(hello()) + "\n" + hex(hello()) + "\n" + hex(hello()) + "\n";
  Result r = run({"--hex", "-c", "2"}, input);
  EXPECT_EQ(countOf(r.out, " hex\n"), 2u);
  // The summary with each PDU (-v), then as JSON; the summary alone is a golden.
  r = run({"--hex", "--stats", "-v"}, input);
  EXPECT_EQ(countOf(r.out, " hex\n"), 3u);
  EXPECT_TRUE(contains(r.out, "== ldpdump summary\n"));
  r = run({"--hex", "--stats", "--json", "-c", "1"}, input);
  EXPECT_EQ(r.out.rfind("{\"stats\":{", 0), 0u) << r.out;
  EXPECT_TRUE(
      contains(r.out, "\"pdus\":{\"udp\":0,\"tcp\":0,\"hex\":1,\"total\":1,\"invalid\":0}"));
}

TEST(Ldpdump, APduThatTripsAParserAssertionIsJudgedAndDecodingGoesOn) {
  // A message length field of 0xFFFC: 16-bit arithmetic makes its total length 0.
  const Bytes trap = {0x00, 0x01, 0x00, 0x1E, 0xC0, 0x00, 0x02, 0x01, 0x00, 0x00, 0x04, 0x00,
                      0xFF, 0xFC, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  const Result r = run({"--hex"}, hex(trap) + "\n" + hex(hello()) + "\n");
  EXPECT_EQ(r.status, exitInvalid);
  EXPECT_TRUE(contains(r.out, "#1 hex\n")) << r.out;
  EXPECT_EQ(countOf(r.out, "=> success"), 1u) << r.out;
  EXPECT_TRUE(contains(r.out, "#2 hex\n"));
}

}  // namespace
