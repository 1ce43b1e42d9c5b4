// The runtime basics of platform/zel: String, string forms, the attribute log,
// intrusive pointers, the assertion handler and the clock.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/zel/Assert.h"
#include "platform/zel/Exception.h"
#include "platform/zel/Hash.h"
#include "platform/zel/NboAttrLog.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/String.h"
#include "platform/zel/StringForm.h"
#include "platform/zel/Time.h"
#include "tests/support/ValueChecks.h"

using namespace LdpTest;

namespace {

using Bytes = std::vector<uint8_t>;

TEST(ZelString, CopiesShareOneBlockAndSelfAssignmentKeepsIt) {
  Zel::String a("hello");
  Zel::String b = a;
  Zel::String c;
  c = b;
  EXPECT_EQ(a.charPtr(), b.charPtr());
  EXPECT_EQ(a.charPtr(), c.charPtr());
  Zel::String moved = std::move(b);
  EXPECT_EQ(moved.charPtr(), a.charPtr());
  // An equal string built separately has a block of its own.
  Zel::String d(std::string("hel") + "lo");
  EXPECT_NE(d.charPtr(), a.charPtr());
  EXPECT_EQ(d, a);
  EXPECT_EQ(d.hash(), a.hash());

  // Self-assignment keeps the value, by copy or by move.
  const Zel::String& sameA = a;
  a = sameA;
  EXPECT_EQ(a, "hello");
  Zel::String& alias = d;
  d = std::move(alias);
  EXPECT_EQ(d, "hello");
}

TEST(ZelString, OrderIsByUnsignedBytesAndEveryEmptyStringIsEqual) {
  // A prefix orders first; bytes are not case-folded.
  expectAscending<Zel::String>({Zel::String(), Zel::String("B"), Zel::String("a"),
                                Zel::String("a\0b", 3), Zel::String("ab"), Zel::String("abc"),
                                Zel::String("abd"), Zel::String("\x7f"), Zel::String("\x80")});
  const Zel::String a("abc");
  EXPECT_EQ((a + "def").view(), "abcdef");

  const Zel::String s(std::string_view("a\0b", 3));
  EXPECT_EQ(s.size(), 3u);
  EXPECT_EQ(s.charPtr()[3], '\0');  // still NUL-terminated after the bytes
  EXPECT_FALSE(s == "a");
  EXPECT_NE(s.hash(), Zel::String("a").hash());
  EXPECT_EQ(streamed(s), std::string("a\0b", 3));

  // Every way of making an empty string makes the same value.
  const Zel::String d, e(""), n(static_cast<const char*>(nullptr)), v{std::string_view()};
  for (const Zel::String* s : {&d, &e, &n, &v}) {
    EXPECT_TRUE(s->empty());
    ASSERT_NE(s->charPtr(), nullptr);
    EXPECT_STREQ(s->charPtr(), "");
    EXPECT_TRUE(s->begin() == s->end());
    EXPECT_EQ(*s, d);
    EXPECT_EQ(s->hash(), d.hash());
  }
  EXPECT_EQ((d + "x").view(), "x");
}

TEST(StringForm, StringQuoting) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "''"},
      {"plain text", "'plain text'"},
      {"it's", "'it\\'s'"},
      {"back\\slash", "'back\\\\slash'"},
      {"\\'", "'\\\\\\''"},
      {"\"double\"", "'\"double\"'"},
      {"tab\there\n", "'tab\\x09here\\x0a'"},
      {std::string("nul\0end", 7), "'nul\\x00end'"},
      {"\x7f\x80\xff", "'\\x7f\\x80\\xff'"},
      {" ~", "' ~'"},  // 0x20 and 0x7E are printed as they are
  };
  for (const auto& [value, form] : cases) expectForm(Zel::String(value), form);
  // Upper-case hex digits read as well.
  EXPECT_EQ(parsed<Zel::String>("'\\x4A\\x4b'"), Zel::String("JK"));
  expectAllRefused<Zel::String>({"", "abc", "'unterminated", "'bad escape \\q'", "'short \\x4'",
                                 "'not hex \\xg0'", "'trailing backslash\\"},
                                "Invalid string");
}

// T's extremes print and read back; one past either end is refused.
template <class T>
void expectIntegerRange(const char* min, const char* max, const char* belowMin,
                        const char* aboveMax) {
  expectForm(std::numeric_limits<T>::min(), min);
  expectForm(std::numeric_limits<T>::max(), max);
  expectRefused<T>(belowMin, "Invalid integer");
  expectRefused<T>(aboveMax, "Invalid integer");
}

TEST(StringForm, BoolsAndIntegers) {
  expectForm(true, "True");
  expectForm(false, "False");
  expectAllRefused<bool>({"true", "1", "", "TRUE"}, "Invalid bool");

  expectIntegerRange<int8_t>("-128", "127", "-129", "128");
  expectIntegerRange<uint8_t>("0", "255", "-1", "256");
  expectIntegerRange<int32_t>("-2147483648", "2147483647", "-2147483649", "2147483648");
  expectIntegerRange<uint32_t>("0", "4294967295", "-1", "4294967296");
  expectIntegerRange<int64_t>("-9223372036854775808", "9223372036854775807", "-9223372036854775809",
                              "9223372036854775808");
  expectIntegerRange<uint64_t>("0", "18446744073709551615", "-0", "18446744073709551616");
  expectStops<uint16_t>("42abc", "42", "abc");
  // Nothing takes a plus sign, a letter or an empty text.
  expectAllRefused<int32_t>({"+1", "", "x1"}, "Invalid integer");
}

TEST(StringForm, Double) {
  const std::pair<double, const char*> cases[] = {
      {-0.0, "-0"}, {0.1, "0.1"}, {1e300, "1e+300"}, {100.0, "100"}, {5e-324, "5e-324"}};
  for (const auto& [v, form] : cases) {
    EXPECT_EQ(Zel::valueToStrep(v).view(), form);
    const double back = parsed<double>(form);
    EXPECT_EQ(std::memcmp(&back, &v, sizeof back), 0) << form;  // bit for bit, -0 included
  }
  // The shortest form still reads back to the same double.
  for (double v : {1.0 / 3.0, 0.1 + 0.2, std::numeric_limits<double>::max(),
                   std::numeric_limits<double>::min(), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(parsed<double>(Zel::valueToStrep(v).view()), v);
  }
  expectRefused<double>("x", "Invalid double");
  expectStops<double>("2.5, x", "2.5", ", x");
}

TEST(StringForm, NeedAndAcceptString) {
  const Zel::String text("Value('X'");
  Zel::StrIt it = text.begin();
  EXPECT_FALSE(Zel::acceptString(it, text.end(), "Value('X')"));  // longer than what is left
  EXPECT_TRUE(it == text.begin());
  expectRangeError([&] { Zel::needString(it, text.end(), "Val1"); }, "Expected 'Val1'");
  EXPECT_TRUE(it == text.begin());
  Zel::needString(it, text.end(), "Value(");
  EXPECT_EQ(std::string_view(it, text.end()), "'X'");
  EXPECT_TRUE(Zel::acceptString(it, text.end(), "'X'"));
  EXPECT_TRUE(it == text.end());
  expectRangeError([&] { Zel::needString(it, text.end(), "})"); }, "Expected '})'");
}

TEST(StringForm, DeserializeAttrNamesTheAttributeParseWholeTakesAll) {
  Zel::String text("300, 'x'");
  Zel::StrIt it = text.begin();
  expectRangeError([&] { Zel::deserializeAttr<uint8_t>(it, text.end(), "ttl"); },
                   "Invalid value for attribute 'ttl': Invalid integer");
  EXPECT_TRUE(it == text.begin());
  expectRangeError([&] { Zel::deserializeAttr<Zel::String>(it, text.end(), "name"); },
                   "Invalid value for attribute 'name': Invalid string");
  EXPECT_EQ(Zel::deserializeAttr<uint16_t>(it, text.end(), "ttl"), 300);
  EXPECT_EQ(std::string_view(it, text.end()), ", 'x'");

  EXPECT_EQ(Zel::parseWhole<uint32_t>("42", "Invalid thing"), 42u);
  expectRangeError([] { Zel::parseWhole<uint32_t>("42 ", "Invalid thing"); }, "Invalid thing");
  expectRangeError([] { Zel::parseWhole<uint32_t>("", "Invalid thing"); }, "Invalid thing");
}

TEST(NboAttrLog, RecordFramingIsBigEndianAndCounted) {
  Zel::NboAttrLog::Out out;
  out.attrBegin(0x01020304);
  out.putU16(0xABCD);
  out.putU32(0x11223344);
  out.attrEnd();
  EXPECT_EQ(out.bytes(), (Bytes{0x01, 0x02, 0x03, 0x04,     // attribute id
                                0x00, 0x00, 0x00, 0x06,     // value length
                                0xAB, 0xCD,                 // U16
                                0x11, 0x22, 0x33, 0x44}));  // U32
  Zel::NboAttrLog::In in(out.bytes().data(), out.bytes().size());
  EXPECT_EQ(in.nextAttrId(), 0x01020304u);
  EXPECT_EQ(in.remaining(), 6u);
  EXPECT_EQ(in.nextU16(), 0xABCD);
  EXPECT_EQ(in.nextU32(), 0x11223344u);
  EXPECT_EQ(in.remaining(), 0u);
  EXPECT_TRUE(in.atEnd());

  // A bounded log counts the framing octets against its capacity.
  Zel::NboAttrLog::Out small(20);
  EXPECT_TRUE(small.spaceFor(12));  // 8 framing octets + 12
  EXPECT_FALSE(small.spaceFor(13));
  small.attrBegin(1);
  small.putU32(5);
  small.attrEnd();
  EXPECT_TRUE(small.spaceFor(0));
  EXPECT_FALSE(small.spaceFor(1));
  small.clear();
  EXPECT_TRUE(small.spaceFor(12));
}

TEST(NboAttrLog, ValueEncodings) {
  expectLogged(true, {0x01});
  expectLogged(int16_t{-2}, {0xFF, 0xFE});
  expectLogged(uint64_t{0x0102030405060708}, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
  expectLogged(1.0, {0x3F, 0xF0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00});
  expectLogged(Zel::String(std::string_view("a\0b", 3)), {0x00, 0x00, 0x00, 0x03, 'a', 0, 'b'});
  expectLogged(Zel::String(), {0x00, 0x00, 0x00, 0x00});
}

TEST(NboAttrLog, SkipAttr) {
  Zel::NboAttrLog::Out out;
  for (uint32_t id : {10u, 11u, 12u}) {
    out.attrBegin(id);
    out.putU32(id * 100);
    out.putString("tail");
    out.attrEnd();
  }
  Zel::NboAttrLog::In in(out.bytes());
  ASSERT_EQ(in.nextAttrId(), 10u);
  in.skipAttr();  // an id the reader does not know: nothing of it read
  EXPECT_EQ(in.remaining(), 0u);
  ASSERT_EQ(in.nextAttrId(), 11u);
  EXPECT_EQ(in.nextU32(), 1100u);
  // Starting the next record skips what is left of this one.
  ASSERT_EQ(in.nextAttrId(), 12u);
  EXPECT_EQ(in.nextU32(), 1200u);
  EXPECT_EQ(in.nextString(), "tail");
  EXPECT_TRUE(in.atEnd());
}

TEST(NboAttrLog, TruncatedRecordsAreRefused) {
  const char* truncated = "NboAttrLog::In: record truncated";
  Zel::NboAttrLog::Out out;
  out.attrBegin(7);
  out.putU32(0xDEADBEEF);
  out.attrEnd();
  Bytes whole = out.bytes();

  // The value is shorter than its length says.
  Zel::NboAttrLog::In shortValue(Bytes(whole.begin(), whole.end() - 1));
  expectRangeError([&] { shortValue.nextAttrId(); }, truncated);
  // The header itself is cut.
  Zel::NboAttrLog::In shortHeader(Bytes(whole.begin(), whole.begin() + 6));
  expectRangeError([&] { shortHeader.nextAttrId(); }, truncated);
  // Past the end of the log.
  Zel::NboAttrLog::In past(whole);
  ASSERT_EQ(past.nextAttrId(), 7u);
  past.skipAttr();
  EXPECT_TRUE(past.atEnd());
  expectRangeError([&] { past.nextAttrId(); }, truncated);
  // A read may not run past the end of its record into the next one.
  Zel::NboAttrLog::Out two;
  two.attrBegin(1);
  two.putU16(0x0102);
  two.attrEnd();
  two.attrBegin(2);
  two.putU16(0x0304);
  two.attrEnd();
  Zel::NboAttrLog::In in(two.bytes());
  ASSERT_EQ(in.nextAttrId(), 1u);
  expectRangeError([&] { in.nextU32(); }, truncated);
  // A string whose length runs past its record.
  expectLogRefused<Zel::String>({0, 0, 0, 10, 'a', 'b', 'c'}, truncated, Zel::String("keep"));
}

// Restores the process-wide pointer mode when a test ends.
class PointerMode {
 public:
  explicit PointerMode(bool threadSafe) : saved_(Zel::VFPtrInterface::threadSafePointers_) {
    Zel::VFPtrInterface::threadSafePointers_ = threadSafe;
  }
  ~PointerMode() { Zel::VFPtrInterface::threadSafePointers_ = saved_; }

 private:
  bool saved_;
};

struct Counted : Zel::PtrInterface {
  explicit Counted(int* destroyed) : destroyed_(destroyed) {}
  ~Counted() override { ++*destroyed_; }
  int* destroyed_;
};

struct DerivedCounted : Counted {
  using Counted::Counted;
};

class PtrCounts : public testing::TestWithParam<bool> {
 protected:
  PointerMode mode_{GetParam()};
};

TEST_P(PtrCounts, CountFollowsCopiesAndTheLastOneDestroys) {
  int destroyed = 0;
  Counted* raw = nullptr;
  {
    Zel::Ptr<Counted> a = Zel::allocate<Counted>(&destroyed);
    raw = a.ptr();
    EXPECT_EQ(a->references(), 1u);
    {
      Zel::Ptr<Counted> b = a;
      EXPECT_EQ(raw->references(), 2u);
      Zel::Ptr<Counted> c;
      c = b;
      EXPECT_EQ(raw->references(), 3u);
      Zel::Ptr<Counted>& same = c;
      c = same;  // self-assignment keeps the count
      EXPECT_EQ(raw->references(), 3u);
      Zel::Ptr<Counted> d = std::move(c);  // a move transfers, not counts
      EXPECT_EQ(raw->references(), 3u);
      EXPECT_FALSE(c);
      EXPECT_TRUE(d == b);
    }
    EXPECT_EQ(raw->references(), 1u);
    EXPECT_EQ(destroyed, 0);

    // Pointers to const and to a base share the same count.
    Zel::Ptr<const Counted> k = a;
    EXPECT_EQ(raw->references(), 2u);
    Zel::Ptr<Zel::PtrInterface> base = a;
    EXPECT_EQ(raw->references(), 3u);
    k = nullptr;
    base = nullptr;
    EXPECT_EQ(raw->references(), 1u);
    EXPECT_EQ(destroyed, 0);
    // A const object is owned through pointers to const.
    Zel::Ptr<const Counted> c = Zel::allocate<const Counted>(&destroyed);
    Zel::Ptr<const Counted> d = c;
    EXPECT_EQ(d->references(), 2u);
    c = Zel::Ptr<const Counted>();
    EXPECT_EQ(d->references(), 1u);
  }
  EXPECT_EQ(destroyed, 2);
}

TEST_P(PtrCounts, FlagsInTheHighBitsDoNotDisturbTheCount) {
  int destroyed = 0;
  {
    Zel::Ptr<Counted> a = Zel::allocate<Counted>(&destroyed);
    a->flagsIs(0x80000000u | 0x01000000u);
    a->flagsIs(0x0000FFFFu);  // count bits are not flags: ignored
    EXPECT_EQ(a->flags(), 0x81000000u);
    EXPECT_EQ(a->references(), 1u);
    Zel::Ptr<Counted> b = a;
    EXPECT_EQ(a->references(), 2u);
    EXPECT_EQ(a->flags(), 0x81000000u);
    b = nullptr;
    EXPECT_EQ(a->references(), 1u);
    // A copy of the object is a new object: count and flags start afresh.
    Zel::Ptr<Counted> copy = Zel::allocate<Counted>(*a);
    EXPECT_EQ(copy->references(), 1u);
    EXPECT_EQ(copy->flags(), 0u);
    EXPECT_EQ(a->references(), 1u);
    EXPECT_EQ(destroyed, 0);
  }
  // Zero is reached on the count bits alone, the flags still set.
  EXPECT_EQ(destroyed, 2);
}

TEST_P(PtrCounts, ReleaseCastAndReplace) {
  // Both counters outlive every pointer below: the last one released bumps one.
  int destroyed = 0;
  int otherDestroyed = 0;
  Zel::Ptr<DerivedCounted> derived = Zel::allocate<DerivedCounted>(&destroyed);
  Zel::Ptr<Counted> base = derived;
  Zel::Ptr<DerivedCounted> back = Zel::ptr_cast<DerivedCounted>(base);
  EXPECT_EQ(back.ptr(), derived.ptr());
  EXPECT_EQ(derived->references(), 3u);
  // release() gives up the pointer without touching the count; adopt it back.
  DerivedCounted* raw = back.release();
  EXPECT_FALSE(back);
  EXPECT_EQ(raw->references(), 3u);
  raw->deleteRef();
  EXPECT_EQ(derived->references(), 2u);
  // Replacing the last pointer to one object with another destroys the first.
  Zel::Ptr<Counted> moved(std::move(derived));
  EXPECT_EQ(moved->references(), 2u);
  base = Zel::allocate<Counted>(&otherDestroyed);
  EXPECT_EQ(destroyed, 0);
  moved = base;
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(base->references(), 2u);
  EXPECT_EQ(otherDestroyed, 0);
}

INSTANTIATE_TEST_SUITE_P(ThreadSafeSwitch, PtrCounts, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                           return info.param ? "ThreadSafe" : "Plain";
                         });

// A runtime that recycles objects instead of deleting them.
struct Recycled : Zel::PtrInterface {
  int zeroes = 0;
  ~Recycled() override = default;

 protected:
  void onZeroReferences() override { ++zeroes; }
};

TEST(Ptr, ZeroReferenceHandlerIsReplaceable) {
  Recycled r;  // lives on the stack: deleting it would crash
  {
    Zel::Ptr<Recycled> a(&r);
    Zel::Ptr<Recycled> b = a;
  }
  EXPECT_EQ(r.zeroes, 1);
  EXPECT_EQ(r.references(), 0u);
  { Zel::Ptr<Recycled> again(&r); }
  EXPECT_EQ(r.zeroes, 2);
}

TEST(Ptr, ThreadSafeCopiesAcrossThreads) {
  PointerMode mode(true);
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  int destroyed = 0;
  Zel::Ptr<Counted> shared = Zel::allocate<Counted>(&destroyed);
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&shared, &go] {
      while (!go.load()) std::this_thread::yield();
      for (int i = 0; i < kRounds; ++i) {
        Zel::Ptr<Counted> copy = shared;
        Zel::Ptr<const Counted> k = copy;
        std::vector<Zel::Ptr<Counted>> more(4, copy);
      }
    });
  }
  go = true;
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(shared->references(), 1u);
  EXPECT_EQ(destroyed, 0);

  // The last reference may be dropped on any thread; the object goes exactly once.
  for (int round = 0; round < 50; ++round) {
    int gone = 0;
    Zel::Ptr<Counted> p = Zel::allocate<Counted>(&gone);
    p->flagsIs(0x40000000u);
    std::vector<Zel::Ptr<Counted>> holders(kThreads, p);
    p = nullptr;
    std::vector<std::thread> droppers;
    for (int t = 0; t < kThreads; ++t) {
      droppers.emplace_back([&holders, t] {
        Zel::Ptr<Counted> mine = std::move(holders[t]);
        for (int i = 0; i < 100; ++i) Zel::Ptr<Counted> c = mine;
      });
    }
    for (std::thread& t : droppers) t.join();
    ASSERT_EQ(gone, 1) << "round " << round;
  }
}

int overlayDestroyed = 0;

struct Overlay : Zel::NrcPtrInterface {
  uint32_t word = 0;
  ~Overlay() { ++overlayDestroyed; }
};

TEST(NrcPtr, NeverCountedNorDeleted) {
  static_assert(sizeof(Overlay) == sizeof(uint32_t), "the base adds no members");
  overlayDestroyed = 0;
  Overlay o;
  o.word = 42;
  {
    Zel::Ptr<Overlay> a(&o);
    Zel::Ptr<Overlay> b = a;
    Zel::Ptr<const Overlay> k = a;
    Zel::Ptr<Overlay> c;
    c = b;
    EXPECT_EQ(k->word, 42u);
    EXPECT_TRUE(c == a);
  }
  EXPECT_EQ(overlayDestroyed, 0);
  EXPECT_EQ(o.word, 42u);
  // Octets of a packet, seen through an overlay.
  alignas(Overlay) uint8_t octets[sizeof(Overlay)] = {1, 2, 3, 4};
  { Zel::Ptr<const Overlay> view(reinterpret_cast<const Overlay*>(octets)); }
  EXPECT_EQ(octets[0], 1);
  EXPECT_EQ(overlayDestroyed, 0);
}

void quietHandler(const char*, const char*, int) {}

void recordingHandler(const char* text, const char* file, int line) {
  std::fprintf(stderr, "custom handler [%s|%s|%d]\n", text, file, line);
  std::fflush(stderr);
}

TEST(Assertion, HandlerIsReplaceable) {
  const Zel::AssertionHandler before = Zel::assertionHandlerIs(&quietHandler);
  EXPECT_EQ(before, &Zel::defaultAssertionHandler);
  EXPECT_EQ(Zel::assertionHandlerIs(&recordingHandler), &quietHandler);
  // nullptr restores the default handler.
  EXPECT_EQ(Zel::assertionHandlerIs(nullptr), &recordingHandler);
  EXPECT_EQ(Zel::assertionHandlerIs(nullptr), &Zel::defaultAssertionHandler);
  // A passing assertion evaluates its condition exactly once, and nothing else.
  int evaluated = 0;
  ZEL_ASSERT(++evaluated == 1);
  EXPECT_EQ(evaluated, 1);
}

int sentinel = 41;

TEST(AssertionDeathTest, DefaultHandlerReportsAndAborts) {
  const int line = __LINE__ + 1;
  auto fail = [] { ZEL_ASSERT(sentinel == 42); };
  EXPECT_EXIT(
      fail(), testing::KilledBySignal(SIGABRT),
      "Assertion failed: sentinel == 42 \\(.*ZelBasicsTest\\.cpp:" + std::to_string(line) + "\\)");
}

TEST(AssertionDeathTest, CustomHandlerSeesTextFileAndLineThenAborts) {
  const int line = __LINE__ + 3;
  auto fail = [] {
    Zel::assertionHandlerIs(&recordingHandler);
    ZEL_ASSERT(sentinel == 42 && "sentinel");
  };
  EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT),
              "custom handler \\[sentinel == 42 && \"sentinel\"\\|[^|]*tests/platform/"
              "ZelBasicsTest\\.cpp\\|" +
                  std::to_string(line) + "\\]");
}

TEST(AssertionDeathTest, HandlerThatReturnsStillAborts) {
  auto fail = [] {
    Zel::assertionHandlerIs(&quietHandler);
    ZEL_ASSERT(sentinel == 42);
  };
  EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT), "");
}

TEST(SystemTime, FreezeAndClear) {
  const Zel::Seconds before = Zel::System::currentTime();
  EXPECT_GT(before, 1.6e9);  // seconds since the epoch: after 2020
  Zel::System::currentTimeIs(1234.5);
  EXPECT_EQ(Zel::System::currentTime(), 1234.5);
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  EXPECT_EQ(Zel::System::currentTime(), 1234.5);
  Zel::System::currentTimeIs(0.0);  // zero is a time like any other
  EXPECT_EQ(Zel::System::currentTime(), 0.0);
  Zel::System::currentTimeClear();
  const Zel::Seconds after = Zel::System::currentTime();
  EXPECT_GE(after, before);
  EXPECT_LT(after - before, 60.0);
}

}  // namespace
