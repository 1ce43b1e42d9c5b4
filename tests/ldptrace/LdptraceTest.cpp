// ldptrace run in-process on ring files that the tests record with Blink.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/LdpBlink.h"
#include "tests/support/ToolRun.h"
#include "tools/ldptrace/Ldptrace.h"

namespace fs = std::filesystem;

namespace {

using LdpTest::lines;

using Result = LdpTest::ToolResult;

Result run(const std::vector<std::string>& args) {
  return LdpTest::runTool(LdpTrace::runLdptrace, args);
}

class Ldptrace : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("ldptrace-" + std::to_string(getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir_);
  }
  void TearDown() override {
    Ldp::Blink::stop();
    fs::remove_all(dir_);
  }
  std::string file(const char* name) const { return (dir_ / name).string(); }

  fs::path dir_;
};

TEST_F(Ldptrace, PrintsOneLinePerRecordOldestFirst) {
  ASSERT_EQ(Ldp::Blink::start(file("t.bl"), 10), "");
  for (int i = 0; i < 20; ++i) LDP_BLINK("label %u for fec %s", 16000u + i, "10.0.0.0/8");
  LDP_BLINK("two\nlines\tand a \\ and \x01");
  const Result r = run({file("t.bl")});
  EXPECT_EQ(r.status, LdpTrace::exitOk);
  EXPECT_EQ(r.err, "");
  const std::vector<std::string> got = lines(r.out);
  // Setting 10 holds 8 records: the last seven labels and the escaped message.
  ASSERT_EQ(got.size(), 8u) << r.out;
  for (size_t k = 0; k < got.size(); ++k) {
    unsigned long long seq = 0;
    double seconds = -1;
    int used = 0;
    ASSERT_EQ(std::sscanf(got[k].c_str(), "%llu %lf %n", &seq, &seconds, &used), 2) << got[k];
    EXPECT_EQ(seq, 14 + k) << got[k];
    EXPECT_GE(seconds, 0) << got[k];
    EXPECT_LT(seconds, 60) << got[k];
    const std::string message = got[k].substr(static_cast<size_t>(used));
    EXPECT_EQ(message, k < 7 ? "label " + std::to_string(16013 + k) + " for fec 10.0.0.0/8"
                             : "two\\nlines\\tand a \\\\ and \\x01");
  }
}

TEST_F(Ldptrace, RefusesUsageErrorsAndFilesThatAreNoRingFilesWithStatusTwo) {
  std::ofstream(file("junk.bl")) << "this is not a ring file";
  ASSERT_EQ(Ldp::Blink::start(file("cut.bl"), 10), "");
  LDP_BLINK("kept %d", 1);
  Ldp::Blink::stop();
  fs::resize_file(file("cut.bl"), fs::file_size(file("cut.bl")) - 64);
  const struct {
    std::vector<std::string> args;
    std::string message;
  } cases[] = {
      {{}, "usage: ldptrace FILE"},
      {{"--bogus"}, "unknown option '--bogus'"},
      {{file("a"), file("b")}, "one file only"},
      {{file("missing.bl")}, file("missing.bl") + ": cannot open: No such file or directory"},
      {{file("junk.bl")}, file("junk.bl") + ": too short for a Blink ring file"},
      {{file("cut.bl")}, file("cut.bl") + ": truncated"},
      {{dir_.string()}, dir_.string() + ": not a regular file"},
  };
  for (const auto& c : cases) {
    const Result r = run(c.args);
    EXPECT_EQ(r.status, LdpTrace::exitUsage) << c.message;
    EXPECT_EQ(r.out, "") << c.message;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
  }
  const Result help = run({"--help"});
  EXPECT_EQ(help.status, LdpTrace::exitOk);
  EXPECT_NE(help.out.find("usage: ldptrace FILE"), std::string::npos);
}

TEST_F(Ldptrace, ReportsSkippedDamagedRecords) {
  ASSERT_EQ(Ldp::Blink::start(file("d.bl"), 10), "");
  for (int i = 1; i <= 3; ++i) LDP_BLINK("r%d", i);
  Ldp::Blink::stop();
  {
    // Tear record 2: its ~seq (after its one argument word) no longer matches.
    std::fstream f(file("d.bl"), std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(65536 + 2 * 128 + 24 + 8);
    f.write("\0", 1);
  }
  const Result r = run({file("d.bl")});
  EXPECT_EQ(r.status, LdpTrace::exitOk);
  const std::vector<std::string> got = lines(r.out);
  ASSERT_EQ(got.size(), 2u) << r.out;
  EXPECT_TRUE(got[0].starts_with("1 ") && got[0].ends_with(" r1")) << got[0];
  EXPECT_TRUE(got[1].starts_with("3 ") && got[1].ends_with(" r3")) << got[1];
  EXPECT_EQ(r.err, "ldptrace: 1 damaged record skipped\n");
}

}  // namespace
