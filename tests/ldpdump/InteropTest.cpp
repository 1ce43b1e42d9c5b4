// ../shared/interop/frr_r2r3.pcap: LDP between two FRRouting ldpd speakers. Every
// PDU must be found and decoded. The verdicts were checked by hand against the
// parsers' rules: hellos carry Common Hello, IPv4 Transport Address and
// Configuration Sequence Number TLVs of 4 octets, and half of them the Dual-Stack
// TLV 0x0701 with the U bit set (ignored); Inits a Common Session Parameters TLV
// of 14 octets and capability TLVs of 1 octet (0x0603, with the U bit, is outside
// the known TLV set and ignored by the header check); Address lists of IPv4
// addresses; mappings, withdraws and releases a first FEC TLV of one IPv4 prefix
// element and a Generic Label TLV of 4 octets; Notifications one Status TLV of 10
// octets (shutdown). All of it is valid.

#include <gtest/gtest.h>

#include "tests/ldpdump/RunLdpdump.h"
#include "tools/ldpdump/Ldpdump.h"

using namespace LdpdumpTest;

namespace {

size_t countOf(const std::string& text, const std::string& part) {
  size_t n = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

class Interop : public ::testing::Test {
 protected:
  void SetUp() override {
    if (readFile(path).empty()) GTEST_SKIP() << path << " is absent";
  }
  const std::string path = sourcePath("../shared/interop/frr_r2r3.pcap");
};

TEST_F(Interop, EveryPduOfTheFrrCaptureIsFoundAndValid) {
  const Result r = run({"-r", path, "--json", "--stats", "-v"});
  EXPECT_EQ(r.status, LdpDump::exitValid) << r.err;
  EXPECT_TRUE(r.err.empty()) << r.err;
  EXPECT_EQ(countOf(r.out, "{\"frame\":"), 132u);
  EXPECT_EQ(countOf(r.out, "\"action\":\"notify\""), 0u);
  EXPECT_EQ(countOf(r.out, "{\"event\":"), 0u);  // no gaps, resyncs or cut frames
  const std::string stats = r.out.substr(r.out.rfind("{\"stats\":"));
  for (const char* expected : {
           "\"frames\":135,\"ldpFrames\":135,",
           "\"pdus\":{\"udp\":81,\"tcp\":51,\"hex\":0,\"total\":132,\"invalid\":0}",
           "\"messages\":{\"total\":218,\"invalid\":0,\"ignored\":0,",
           "{\"type\":1,\"typeName\":\"LdpNotification\",\"count\":2}",
           "{\"type\":256,\"typeName\":\"LdpHello\",\"count\":81}",
           "{\"type\":512,\"typeName\":\"LdpInit\",\"count\":6}",
           "{\"type\":513,\"typeName\":\"LdpKeepAlive\",\"count\":6}",
           "{\"type\":768,\"typeName\":\"LdpAddress\",\"count\":6}",
           "{\"type\":1024,\"typeName\":\"LdpLabelMapping\",\"count\":113}",
           "{\"type\":1026,\"typeName\":\"LdpLabelWithdraw\",\"count\":2}",
           "{\"type\":1027,\"typeName\":\"LdpLabelRelease\",\"count\":2}",
           "\"verdicts\":[{\"code\":0,\"name\":\"success\",\"pdus\":132,\"messages\":218}]",
           "\"tcp\":{\"streams\":6,",  // three connections, both directions
           "\"gaps\":0,\"gapOctets\":0,\"resyncs\":0,\"skippedOctets\":0,\"incomplete\":0}",
       }) {
    EXPECT_NE(stats.find(expected), std::string::npos) << expected << "\nin " << stats;
  }
  // The TLVs passed over with their U bit set.
  EXPECT_EQ(countOf(r.out,
                    "{\"type\":1793,\"name\":null,\"uBit\":true,\"fBit\":false,\"length\":4,"
                    "\"known\":false}"),
            42u);
  EXPECT_EQ(countOf(r.out,
                    "{\"type\":1539,\"name\":\"unrecognizedNotificationCapabilityTlv\","
                    "\"uBit\":true,\"fBit\":false,\"length\":1,\"known\":false}"),
            6u);
}

TEST_F(Interop, SeveralPdusPerSegmentAreSplit) {
  // Frame 49 carries ten single-mapping PDUs; frame 10 an Init and a KeepAlive.
  const Result r = run({"-r", path});
  EXPECT_EQ(countOf(r.out, "\n#49 "), 10u);
  EXPECT_EQ(countOf(r.out, "\n#10 "), 2u);
}

}  // namespace
