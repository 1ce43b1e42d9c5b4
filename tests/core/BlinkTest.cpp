// Blink, the fast binary trace: the file name and size, records read back in order
// with their arguments (printf of the same format and arguments is the reference),
// the format table, wrap-around with one and several writers, and the reader's
// refusal of files that are not intact ring files.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "core/LdpBlink.h"
#include "core/LdpBlinkReader.h"
#include "core/LdpTrace.h"

namespace fs = std::filesystem;
using namespace Ldp;
using Blink::Trace;

namespace {

[[gnu::format(printf, 1, 2)]] std::string printed(const char* format, ...) {
  char buf[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buf, sizeof buf, format, args);
  va_end(args);
  return buf;
}

std::vector<std::string> messages(const Trace& t) {
  std::vector<std::string> v;
  for (const Blink::Record& r : t.records) v.push_back(r.message);
  return v;
}

std::vector<uint64_t> sequences(const Trace& t) {
  std::vector<uint64_t> v;
  for (const Blink::Record& r : t.records) v.push_back(r.sequence);
  return v;
}

std::vector<uint64_t> range(uint64_t first, uint64_t last) {
  std::vector<uint64_t> v;
  for (uint64_t q = first; q <= last; ++q) v.push_back(q);
  return v;
}

// Restores an environment variable when it goes out of scope.
class SavedEnv {
 public:
  explicit SavedEnv(const char* name) : name_(name) {
    if (const char* v = std::getenv(name)) value_ = v;
  }
  ~SavedEnv() {
    if (value_) {
      setenv(name_, value_->c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }

 private:
  const char* name_;
  std::optional<std::string> value_;
};

class BlinkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("ldp-blink-" + std::to_string(getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir_);
  }
  void TearDown() override {
    Blink::stop();
    fs::remove_all(dir_);
  }

  std::string file(const std::string& name) const { return (dir_ / name).string(); }

  void startOrFail(const std::string& path, unsigned sizeBits) {
    const std::string error = Blink::start(path, sizeBits);
    ASSERT_EQ(error, "");
  }

  static Trace readBack(const std::string& path) {
    Trace t;
    EXPECT_EQ(Blink::readTraceFile(path, t), "") << path;
    return t;
  }

  static std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  fs::path dir_;
};

TEST_F(BlinkTest, FileNameComesFromBlfileOrTheAgentPatternWithTheProcessId) {
  const SavedEnv saved("BLFILE");
  const std::string pid = std::to_string(getpid());
  unsetenv("BLFILE");
  EXPECT_EQ(Blink::fileNameFromEnvironment(), "LdpAgent-" + pid + ".bl");
  setenv("BLFILE", "", 1);
  EXPECT_EQ(Blink::fileNameFromEnvironment(), "LdpAgent-" + pid + ".bl");
  setenv("BLFILE", "/var/trace/ldp-%d.%d.bl", 1);
  EXPECT_EQ(Blink::fileNameFromEnvironment(), "/var/trace/ldp-" + pid + "." + pid + ".bl");
  setenv("BLFILE", "fixed.bl", 1);
  EXPECT_EQ(Blink::fileNameFromEnvironment(), "fixed.bl");
  EXPECT_EQ(Blink::fileName("100%%-%x-%s-%", 7), "100%-%x-%s-%");
}

TEST_F(BlinkTest, InitializeStartsOnceWithTheNamedFileOfSizeSetting24) {
  const SavedEnv saved("BLFILE");
  setenv("BLFILE", file("agent-%d.bl").c_str(), 1);
  EXPECT_FALSE(Blink::started());
  EXPECT_EQ(Ldp_blinkInitialize(), 0);
  const std::string path = file("agent-" + std::to_string(getpid()) + ".bl");
  EXPECT_EQ(Blink::path(), path);
  // Setting 24: a 16 MiB ring after the 64 KiB head.
  EXPECT_EQ(fs::file_size(path), 16u * 1024 * 1024 + 64 * 1024);
  LDP_BLINK("started by %s", "Ldp_blinkInitialize");

  setenv("BLFILE", file("second-%d.bl").c_str(), 1);
  EXPECT_EQ(Ldp_blinkInitialize(), 0);
  EXPECT_EQ(Blink::path(), path);
  EXPECT_FALSE(fs::exists(file("second-" + std::to_string(getpid()) + ".bl")));
  EXPECT_NE(Blink::start(file("third.bl"), 12).find("already records into " + path),
            std::string::npos);

  const Trace t = readBack(path);
  EXPECT_EQ(t.sizeBits, 24u);
  EXPECT_EQ(t.pid, static_cast<uint32_t>(getpid()));
  EXPECT_EQ(messages(t), std::vector<std::string>{"started by Ldp_blinkInitialize"});
}

TEST_F(BlinkTest, AFileThatCannotBeMadeIsReportedWhateverTheTraceLevel) {
  static std::vector<std::string> reported;
  reported.clear();
  const TraceSink oldSink = traceSinkIs([](const TraceHandle&, int level, std::string_view text) {
    if (level == 0) reported.emplace_back(text);
  });
  const int oldLevel = traceLevel();
  traceLevelIs(-1);
  const SavedEnv saved("BLFILE");
  setenv("BLFILE", file("no-such-dir/agent.bl").c_str(), 1);
  const int rc = Ldp_blinkInitialize();
  traceSinkIs(oldSink);
  traceLevelIs(oldLevel);
  EXPECT_EQ(rc, -1);
  EXPECT_FALSE(Blink::started());
  ASSERT_EQ(reported.size(), 1u);
  EXPECT_NE(reported[0].find("cannot create " + file("no-such-dir/agent.bl")), std::string::npos)
      << reported[0];

  for (const unsigned bits : {Blink::minSizeBits - 1, Blink::maxSizeBits + 1}) {
    EXPECT_NE(Blink::start(file("bad-size.bl"), bits).find("size setting"), std::string::npos);
    EXPECT_FALSE(fs::exists(file("bad-size.bl")));
  }
  startOrFail(file("smallest.bl"), Blink::minSizeBits);
  EXPECT_EQ(fs::file_size(file("smallest.bl")), 1024u + 64 * 1024);
  EXPECT_EQ(readBack(file("smallest.bl")).sizeBits, Blink::minSizeBits);
}

enum class Colour : int16_t { red = -2, green = 5 };

TEST_F(BlinkTest, RecordsComeBackInOrderWithTheirArguments) {
  startOrFail(file("args.bl"), 14);
  std::vector<std::string> expected;
#define BLINK_AND_PRINTF(format, ...)                 \
  do {                                                \
    LDP_BLINK(format, __VA_ARGS__);                   \
    expected.push_back(printed(format, __VA_ARGS__)); \
  } while (0)
  BLINK_AND_PRINTF("%d %i %u", int8_t{-5}, int16_t{-300}, uint16_t{65535});
  BLINK_AND_PRINTF("%x %X %o %hhx", int32_t{-1}, 0xBEEFu, 8u, static_cast<unsigned char>(200));
  BLINK_AND_PRINTF("%lld %llu %#llx", LLONG_MIN, ULLONG_MAX, 0x1234ull);
  BLINK_AND_PRINTF("%" PRIu32 " %" PRId64 " %zu %" PRIx64, uint32_t{4000000000u}, int64_t{-1},
                   size_t{99}, uint64_t{0xfedcba9876543210u});
  BLINK_AND_PRINTF("%c%c %5d|%-5d|%05d|%+d|% d", 'o', 'k', 42, 42, -42, 7, 7);
  BLINK_AND_PRINTF("%.2f %e %g %10.3f|%-8.1E|%a %G", 3.14159, 1e-10, 0.5f, -2.5, 12345.0, 1.0,
                   1e300);
  BLINK_AND_PRINTF("%p %p %20p|", static_cast<const void*>(&expected), static_cast<void*>(nullptr),
                   static_cast<const void*>(&expected));
  BLINK_AND_PRINTF("%s and %.3s and %8s| %-6s|", "text", "truncate", "pad", "left");
  BLINK_AND_PRINTF("%d%% of %u", 50, 8u);
  LDP_BLINK("100%% done");
  expected.emplace_back("100% done");
  LDP_BLINK("%d %d %s", Colour::red, true, static_cast<const char*>(nullptr));
  expected.emplace_back("-2 1 (null)");
  const std::string owned = "a std::string";
  const std::string_view view = std::string_view("viewed, not terminated").substr(0, 6);
  LDP_BLINK("[%s] [%s]", owned, view);
  expected.emplace_back("[a std::string] [viewed]");
  // One string alone gets 11 words: 88 bytes.
  LDP_BLINK("%s", std::string(100, 'x'));
  expected.push_back(std::string(88, 'x') + "...");
  LDP_BLINK("%s", std::string(88, 'y'));
  expected.push_back(std::string(88, 'y'));
  // Two strings beside two integers share 12 - 2 - 2 words: 32 bytes each.
  LDP_BLINK("%s %d %s %d", std::string(40, 'a'), 1, std::string(31, 'b'), 2);
  expected.push_back(std::string(32, 'a') + "... 1 " + std::string(31, 'b') + " 2");
#undef BLINK_AND_PRINTF

  const Trace t = readBack(file("args.bl"));
  EXPECT_EQ(messages(t), expected);
  EXPECT_EQ(sequences(t), range(1, expected.size()));
  EXPECT_EQ(t.damaged, 0u);
  EXPECT_EQ(t.pid, static_cast<uint32_t>(getpid()));
  uint64_t last = t.startTime;
  for (const Blink::Record& r : t.records) {
    EXPECT_GE(r.time, last) << r.message;
    last = r.time;
  }
}

TEST_F(BlinkTest, FormatsAreStoredOnceAndCarriedIntoTheNextFile) {
  const auto point = [](int i) { LDP_BLINK("point %d", i); };
  startOrFail(file("first.bl"), 12);
  const size_t before = readBack(file("first.bl")).formats;
  point(1);
  point(2);
  point(3);
  const Trace first = readBack(file("first.bl"));
  EXPECT_EQ(first.formats, before + 1);
  EXPECT_EQ(messages(first), (std::vector<std::string>{"point 1", "point 2", "point 3"}));
  Blink::stop();
  EXPECT_FALSE(Blink::started());
  point(99);  // not recorded anywhere

  startOrFail(file("second.bl"), 12);
  EXPECT_EQ(readBack(file("second.bl")).formats, first.formats);
  point(4);
  LDP_BLINK("other %s", "site");
  const Trace second = readBack(file("second.bl"));
  EXPECT_EQ(second.formats, first.formats + 1);
  EXPECT_EQ(messages(second), (std::vector<std::string>{"point 4", "other site"}));
  EXPECT_EQ(sequences(second), range(1, 2));
}

TEST_F(BlinkTest, AFullRingKeepsTheNewestRecordsInOrder) {
  startOrFail(file("wrap.bl"), 12);
  const uint64_t slots = 4096 / 128;
  for (int i = 0; i < 100; ++i) LDP_BLINK("n %d", i);
  const Trace t = readBack(file("wrap.bl"));
  EXPECT_EQ(sequences(t), range(100 - slots + 1, 100));
  std::vector<std::string> expected;
  for (uint64_t i = 100 - slots; i < 100; ++i) expected.push_back("n " + std::to_string(i));
  EXPECT_EQ(messages(t), expected);
  EXPECT_EQ(t.damaged, 0u);
}

TEST_F(BlinkTest, ConcurrentWritersLeaveWholeRecordsWithContiguousSequenceNumbers) {
  // The ring holds every record: a writer stalled while the others wrap the ring
  // around would lose a record (see core/LdpBlink.h), and this test is about the
  // sequence numbers and arguments of writers that run side by side.
  startOrFail(file("threads.bl"), 24);
  const int threads = 4, perThread = 20000;
  std::vector<std::thread> writers;
  for (int t = 0; t < threads; ++t) {
    writers.emplace_back([t] {
      for (int i = 0; i < perThread; ++i) {
        const std::string tag(static_cast<size_t>(i % 40 + 1), static_cast<char>('a' + t));
        LDP_BLINK("t %d i %d %s check %d", t, i, tag, t * 100003 + i);
      }
    });
  }
  for (std::thread& w : writers) w.join();
  const Trace t = readBack(file("threads.bl"));
  EXPECT_EQ(sequences(t), range(1, threads * perThread));
  EXPECT_EQ(t.damaged, 0u);
  std::vector<int> next(threads, 0);  // each thread's records come in its own order
  for (const Blink::Record& r : t.records) {
    int thread = -1, i = -1, check = -1;
    char tag[64] = {};
    ASSERT_EQ(std::sscanf(r.message.c_str(), "t %d i %d %63s check %d", &thread, &i, tag, &check),
              4)
        << r.message;
    EXPECT_EQ(check, thread * 100003 + i) << r.message;
    ASSERT_TRUE(thread >= 0 && thread < threads) << r.message;
    EXPECT_EQ(i, next[static_cast<size_t>(thread)]++) << r.message;
    EXPECT_EQ(std::string(tag), std::string(static_cast<size_t>(i % 40 + 1), 'a' + thread))
        << r.message;
  }
}

// A ring file of setting 10 with three records, for the reader's refusals.
class BlinkFileTest : public BlinkTest {
 protected:
  void SetUp() override {
    BlinkTest::SetUp();
    startOrFail(file("intact.bl"), 10);
    for (int i = 1; i <= 3; ++i) LDP_BLINK("r%d %s", i, "abc");
    Blink::stop();
    intact_ = bytesOf(file("intact.bl"));
    Trace t;
    ASSERT_EQ(Blink::readTrace(intact_, t), "");
    ASSERT_EQ(messages(t), (std::vector<std::string>{"r1 abc", "r2 abc", "r3 abc"}));
    formats_ = t.formats;
  }

  template <class T>
  static std::string with(std::string bytes, uint64_t offset, T value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
    return bytes;
  }

  // The byte offset of the record with sequence number q.
  static uint64_t recordAt(uint64_t q) { return 65536 + (q % 8) * 128; }

  // `bytes` with record q's check computed again from its fields, as its writer
  // would have stored it.
  static std::string sealed(const std::string& bytes, uint64_t q) {
    const uint64_t at = recordAt(q);
    uint64_t sum = 0, word = 0;
    uint32_t id = 0;
    uint16_t words = 0;
    std::memcpy(&id, bytes.data() + at + 16, 4);
    std::memcpy(&words, bytes.data() + at + 20, 2);
    for (uint64_t k = 0; k < 2 + std::min<uint64_t>(words, 12); ++k) {
      std::memcpy(&word, bytes.data() + at + (k < 2 ? 8 * k : 8 + 8 * k), 8);
      sum ^= word;
    }
    return with(bytes, at + 22, BlinkDetail::recordCheck(sum ^ id ^ words));
  }

  // The offset of the last format table entry (the one of "r%d %s").
  uint64_t lastEntry() const {
    uint64_t at = 4096, last = at;
    for (size_t k = 0; k < formats_; ++k) {
      last = at;
      uint16_t n, m;
      std::memcpy(&n, intact_.data() + at + 4, 2);
      std::memcpy(&m, intact_.data() + at + 6, 2);
      at += (8 + n + m + 7) / 8 * 8;
    }
    return last;
  }

  static std::string refusal(const std::string& bytes) {
    Trace t;
    return Blink::readTrace(bytes, t);
  }

  static Trace accepted(const std::string& bytes) {
    Trace t;
    EXPECT_EQ(Blink::readTrace(bytes, t), "");
    return t;
  }

  std::string intact_;
  size_t formats_ = 0;
};

TEST_F(BlinkFileTest, FilesThatAreNotIntactRingFilesAreRefusedWithTheReason) {
  const uint64_t entry = lastEntry();
  const struct {
    std::string bytes;
    std::string reason;
  } cases[] = {
      {"", "too short"},
      {intact_.substr(0, 100), "too short"},
      {with(intact_, 0, 'X'), "no LDPBLINK magic"},
      {with(intact_, 8, uint32_t{2}), "unsupported version 2"},
      {with(intact_, 12, uint32_t{0x04030201}), "another byte order"},
      {with(intact_, 16, uint32_t{9}), "size setting 9 is outside"},
      {with(intact_, 16, uint32_t{11}), "inconsistent header: file size"},
      {with(intact_, 20, uint32_t{64}), "inconsistent header: record size"},
      {with(intact_, 32, uint64_t{4097}), "inconsistent header: format table offset"},
      {with(intact_, 56, uint64_t{2048}), "inconsistent header: ring size"},
      {intact_.substr(0, intact_.size() - 1), "truncated"},
      {intact_ + '\0', "too long"},
      {with(intact_, 128, uint64_t{61448}), "corrupt format table"},
      {with(intact_, 128, uint64_t{12}), "corrupt format table"},
      {with(intact_, entry, uint32_t{77}), "id 77"},
      {with(intact_, entry + 4, uint16_t{60000}), "longer than the table"},
      {with(intact_, entry + 8, 'z'), "argument type letter"},
      {with(intact_, entry + 8, 's'), "format does not match its arguments"},
      {with(intact_, entry + 12, 'n'), "format does not match its arguments"},
  };
  for (const auto& c : cases) {
    EXPECT_NE(refusal(c.bytes).find(c.reason), std::string::npos)
        << "want '" << c.reason << "', got '" << refusal(c.bytes) << "'";
  }
  Trace t;
  EXPECT_EQ(Blink::readTraceFile(file("missing.bl"), t), "cannot open: No such file or directory");
}

TEST_F(BlinkFileTest, DamagedRecordsAreSkippedAndCounted) {
  const auto damagedOnly = [&](const std::string& bytes, const char* what) {
    const Trace t = accepted(bytes);
    EXPECT_EQ(messages(t), (std::vector<std::string>{"r1 abc", "r3 abc"})) << what;
    EXPECT_EQ(t.damaged, 1u) << what;
  };
  const uint64_t r2 = recordAt(2);
  EXPECT_EQ(sealed(intact_, 2), intact_);
  // r2's arguments: the integer, the string's length word and one word of bytes.
  damagedOnly(with(intact_, r2 + 24 + 3 * 8, uint64_t{0}), "torn: ~seq missing");
  damagedOnly(with(intact_, r2, uint64_t{3}), "torn: sequence number overwritten");
  damagedOnly(with(intact_, r2 + 24, uint64_t{7}), "an argument changed after the check");
  damagedOnly(with(intact_, r2 + 8, uint64_t{7}), "the time changed after the check");
  uint16_t check = 0;
  std::memcpy(&check, intact_.data() + r2 + 22, 2);
  damagedOnly(with(intact_, r2 + 22, static_cast<uint16_t>(check ^ 0x100)), "check changed");
  damagedOnly(sealed(with(with(intact_, r2, uint64_t{3}), r2 + 24 + 3 * 8, ~uint64_t{3}), 2),
              "sequence number of another slot");
  damagedOnly(sealed(with(intact_, r2 + 20, uint16_t{13}), 2), "more than 12 words");
  damagedOnly(sealed(with(intact_, r2 + 16, uint32_t{0}), 2), "format id 0");
  damagedOnly(sealed(with(intact_, r2 + 16, static_cast<uint32_t>(formats_ + 1)), 2),
              "unknown format id");
  damagedOnly(sealed(with(intact_, r2 + 32, uint64_t{9}), 2), "string longer than its words");
  damagedOnly(sealed(with(intact_, r2 + 32, uint64_t{3} << 33), 2), "string flags");
  damagedOnly(sealed(with(with(intact_, r2 + 20, uint16_t{4}), r2 + 24 + 4 * 8, ~uint64_t{2}), 2),
              "words beyond the arguments");

  // A format that did not fit in the table: the record shows its raw words.
  const std::string dropped = sealed(
      with(with(intact_, 136, uint64_t{1}), r2 + 16, static_cast<uint32_t>(formats_ + 1)), 2);
  const Trace t = accepted(dropped);
  ASSERT_EQ(t.records.size(), 3u);
  EXPECT_EQ(t.records[1].message,
            "<format " + std::to_string(formats_ + 1) + " not in the file> 0x2 0x3 0x636261");
  EXPECT_EQ(t.damaged, 0u);
}

TEST(BlinkFormat, ConversionsMustMatchTheArgumentTypes) {
  using BlinkDetail::formatMatches;
  EXPECT_TRUE(formatMatches("%d %s %p %f",
                            "isp"
                            "d"));
  EXPECT_TRUE(formatMatches("%-+ #05.3lld|%hhu|%zx|%jd|%td|%%", "lBLlh"));
  EXPECT_TRUE(formatMatches("no conversions, 100%%", ""));
  EXPECT_FALSE(formatMatches("%d", "s"));
  EXPECT_FALSE(formatMatches("%s", "p"));
  EXPECT_FALSE(formatMatches("%p", "L"));
  EXPECT_FALSE(formatMatches("%f", "i"));
  EXPECT_FALSE(formatMatches("%d", ""));
  EXPECT_FALSE(formatMatches("", "i"));
  EXPECT_FALSE(formatMatches("%d %d", "i"));
  EXPECT_FALSE(formatMatches("%n", "i"));
  EXPECT_FALSE(formatMatches("%*d", "ii"));
  EXPECT_FALSE(formatMatches("%.*s", "is"));
  EXPECT_FALSE(formatMatches("%Lf", "d"));
  EXPECT_FALSE(formatMatches("%1000d", "i"));
  EXPECT_FALSE(formatMatches("%.1000f", "d"));
  EXPECT_FALSE(formatMatches("%lld%", "l"));
  EXPECT_FALSE(formatMatches("%5%", ""));
  EXPECT_FALSE(formatMatches("%------d", "i"));
  EXPECT_FALSE(formatMatches(std::string(1024, 'x'), ""));
  EXPECT_TRUE(formatMatches(std::string(1023, 'x'), ""));
}

}  // namespace
