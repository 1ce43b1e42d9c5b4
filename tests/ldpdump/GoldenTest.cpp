// examples/sample.pcap decoded as text, JSON and summary, against the outputs
// committed under tests/ldpdump/golden/. After a deliberate change of the output
// or of the sample, regenerate them with LDPDUMP_UPDATE_GOLDEN=1 and review the diff.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "tests/ldpdump/RunLdpdump.h"
#include "tools/ldpdump/Ldpdump.h"

using namespace LdpdumpTest;

namespace {

const std::string samplePath = sourcePath("examples/sample.pcap");

void expectGolden(const std::vector<std::string>& options, const std::string& golden) {
  std::vector<std::string> args = {"-r", samplePath};
  args.insert(args.end(), options.begin(), options.end());
  const Result r = run(args);
  // The sample holds malformed PDUs on purpose.
  EXPECT_EQ(r.status, LdpDump::exitInvalid) << r.err;
  EXPECT_TRUE(r.err.empty()) << r.err;
  const std::string path = sourcePath("tests/ldpdump/golden/" + golden);
  if (std::getenv("LDPDUMP_UPDATE_GOLDEN")) {
    std::ofstream(path, std::ios::binary) << r.out;
    GTEST_SKIP() << "wrote " << path;
  }
  const std::string expected = readFile(path);
  ASSERT_FALSE(expected.empty()) << "no golden output " << path;
  EXPECT_EQ(r.out, expected) << "differs from " << path;
}

TEST(Golden, SampleAsText) { expectGolden({}, "sample.txt"); }
TEST(Golden, SampleAsJson) { expectGolden({"--json"}, "sample.jsonl"); }
TEST(Golden, SampleSummary) { expectGolden({"--stats"}, "sample-stats.txt"); }
TEST(Golden, SampleInvalidOnly) { expectGolden({"-q"}, "sample-quiet.txt"); }

TEST(Golden, TheSampleIsWhatItsGeneratorWrites) {
  const std::string fresh = scratchPath("sample.pcap");
  const std::string command = std::string(LDPDUMP_SAMPLE_GENERATOR) + " " + fresh + " >/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
  const std::string committed = readFile(samplePath);
  ASSERT_FALSE(committed.empty()) << samplePath;
  EXPECT_TRUE(readFile(fresh) == committed)
      << "examples/sample.pcap is not what makeSamplePcap writes: regenerate it";
}

}  // namespace
