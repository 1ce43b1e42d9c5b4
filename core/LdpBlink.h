#pragma once
// Blink, the fast binary trace. A trace point (LDP_BLINK) copies its raw arguments
// into a ring of fixed-size records in a memory-mapped file (MAP_SHARED, so the
// records survive a crash of the process) and formats nothing: its printf format is
// stored once in the file's format table, and tools/ldptrace formats the records
// later. Until Blink is started a trace point costs one branch.
//
// The agent starts it once with Ldp_blinkInitialize(): the file is named by the
// pattern in the environment variable BLFILE, or "LdpAgent-%d.bl" when BLFILE is
// unset or empty, with "%d" replaced by the process id; its size setting is 24.
//
// File layout, version 1. Integers are in the writer's byte order; a reader refuses
// a file whose byte-order mark does not read 0x01020304. Offsets in bytes.
//
// A file of size setting S (10 to 30) is a 64 KiB head followed by a ring of 2^S
// bytes. Setting 24: a 16 MiB ring of 131072 records, a file of 16 MiB + 64 KiB.
//
//   header, offset 0
//     0    char[8]  magic "LDPBLINK"
//     8    u32      version, 1
//     12   u32      byte-order mark 0x01020304
//     16   u32      size setting S
//     20   u32      record size, 128
//     24   u64      file size, 2^S + 65536
//     32   u64      format table offset, 4096
//     40   u64      format table capacity, 61440
//     48   u64      ring offset, 65536
//     56   u64      ring size, 2^S
//     64   u64      start time in ns on the records' clock (CLOCK_MONOTONIC_COARSE)
//     72   u64      start time in ns since the epoch (CLOCK_REALTIME)
//     80   u32      writer's process id
//     128  u64      format table bytes in use, stored after the entry it covers
//     136  u64      formats that did not fit in the table
//   format table, offset 4096: entries back to back, each starting 8-byte aligned
//     u32 id (entry k has id k + 1), u16 argument count n, u16 format length m,
//     n type letters, m bytes of printf format (no NUL), zero padding to 8 bytes.
//     Type letters: b h i l signed and B H I L unsigned integers of 1, 2, 4, 8 bytes,
//     p pointer, d double, s string.
//   ring, offset 65536: 2^S / 128 records of 128 bytes; the record with sequence
//   number q (1, 2, ...) sits in slot q mod (2^S / 128), so the newest records
//   overwrite the oldest.
//     0    u64  sequence number q, stored first (0: the slot was never written)
//     8    u64  time in ns on the records' clock
//     16   u32  format id
//     20   u16  argument words w, at most 12
//     22   u16  check: the XOR of q, the time, the format id, w and the argument
//          words as u64, folded to 16 bits (x ^= x >> 32; x ^= x >> 16; low 16 bits)
//     24   w argument words: an integer (sign- or zero-extended), pointer or double
//          (its bits) takes one; a string takes one word (low 32 bits: bytes stored,
//          bit 32: truncated) and its bytes zero-padded to whole words
//     24 + 8w  u64  ~q, stored last
//   A slot holds a valid record only when its ~q and its check agree: otherwise it
//   was never written, or a crash tore it, or two writers met in it.
//
// The records' clock is coarse (a few ms of resolution) because it costs a few ns;
// the sequence numbers give the order. Any thread writes records, lock-free: each
// takes the next sequence number and so its slot. Two writers meet in a slot only
// when the ring wraps around while one of them is stalled in a trace point: the
// newer record is then lost, and the check keeps their arguments from mixing.

#include <ctime>

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

extern "C" {
// Starts Blink with the file named from BLFILE and size setting 24. Returns 0 when
// Blink records (also when it already did), -1 when the file cannot be made; the
// reason then goes to the text trace at level 0 whatever its level.
int Ldp_blinkInitialize(void);
}

namespace Ldp::Blink {

constexpr unsigned defaultSizeBits = 24;
constexpr unsigned minSizeBits = 10;
constexpr unsigned maxSizeBits = 30;
constexpr const char* defaultPattern = "LdpAgent-%d.bl";

// The file name for `pattern` (defaultPattern when null or empty) with every "%d"
// replaced by `pid` and "%%" by "%".
std::string fileName(const char* pattern, long pid);
// The name Ldp_blinkInitialize uses: BLFILE's pattern and this process's id.
std::string fileNameFromEnvironment();
// The size of a file of size setting `sizeBits`.
uint64_t fileSize(unsigned sizeBits);

// Creates the file at `path` (replacing any file there) and starts recording into
// it. Returns an empty string, or why Blink did not start.
std::string start(const std::string& path, unsigned sizeBits = defaultSizeBits);
// Stops recording and unmaps the file. No thread may be in a trace point.
void stop();
bool started();
// The file being recorded into, or "".
std::string path();

}  // namespace Ldp::Blink

namespace Ldp::BlinkDetail {

constexpr char magic[8] = {'L', 'D', 'P', 'B', 'L', 'I', 'N', 'K'};
constexpr uint32_t version = 1;
constexpr uint32_t byteOrderMark = 0x01020304;
constexpr uint64_t headSize = 65536;
constexpr uint64_t tableOffset = 4096;
constexpr uint64_t tableCapacity = headSize - tableOffset;
constexpr uint64_t tableUsedOffset = 128;
constexpr uint64_t formatsDroppedOffset = 136;
constexpr unsigned recordShift = 7;
constexpr uint64_t recordSize = uint64_t{1} << recordShift;
constexpr unsigned headWords = 3;
constexpr unsigned maxArgWords = 12;
constexpr uint64_t prefetchAhead = 16;  // records
constexpr size_t maxFormatLength = 1023;
constexpr uint64_t stringTruncated = uint64_t{1} << 32;

// A printf conversion as the trace accepts it: flags "-+ #0", a width and a
// precision of at most three digits, a length modifier (hh h l ll j z t; the
// argument's own type decides), and one of d i o u x X c (integers), e E f F g G a A
// (doubles), s (strings), p (pointers) or %. No '*', 'n' or 'L'.
struct Conversion {
  size_t end = 0;  // one past the conversion character
  char flags[6] = {};
  int width = -1;
  int precision = -1;
  char conversion = 0;
};

enum class ArgClass { none, integer, floating, string, pointer };

constexpr ArgClass conversionClass(char c) {
  switch (c) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
    case 'c':
      return ArgClass::integer;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      return ArgClass::floating;
    case 's':
      return ArgClass::string;
    case 'p':
      return ArgClass::pointer;
    default:
      return ArgClass::none;
  }
}

constexpr ArgClass tagClass(char tag) {
  switch (tag) {
    case 'b':
    case 'h':
    case 'i':
    case 'l':
    case 'B':
    case 'H':
    case 'I':
    case 'L':
      return ArgClass::integer;
    case 'd':
      return ArgClass::floating;
    case 's':
      return ArgClass::string;
    case 'p':
      return ArgClass::pointer;
    default:
      return ArgClass::none;
  }
}

// Parses the conversion starting at format[at] == '%'; false when it is not one
// the trace accepts.
constexpr bool parseConversion(std::string_view format, size_t at, Conversion& c) {
  size_t i = at + 1;
  size_t nflags = 0;
  while (i < format.size() && std::string_view("-+ #0").find(format[i]) != std::string_view::npos) {
    if (nflags == sizeof c.flags - 1) return false;
    c.flags[nflags++] = format[i++];
  }
  const auto number = [&](int& value) {
    int digits = 0;
    value = 0;
    while (i < format.size() && format[i] >= '0' && format[i] <= '9') {
      if (++digits > 3) return false;
      value = value * 10 + (format[i++] - '0');
    }
    return true;
  };
  if (i < format.size() && format[i] >= '1' && format[i] <= '9' && !number(c.width)) return false;
  if (i < format.size() && format[i] == '.') {
    ++i;
    if (!number(c.precision)) return false;
  }
  if (i < format.size() && (format[i] == 'h' || format[i] == 'l')) {
    const char m = format[i++];
    if (i < format.size() && format[i] == m) ++i;
  } else if (i < format.size() && (format[i] == 'j' || format[i] == 'z' || format[i] == 't')) {
    ++i;
  }
  if (i == format.size()) return false;
  c.conversion = format[i];
  c.end = i + 1;
  if (c.conversion == '%') return c.end == at + 2;
  return conversionClass(c.conversion) != ArgClass::none;
}

// True when every conversion of `format` is accepted and takes the argument of the
// matching type letter, one per letter.
constexpr bool formatMatches(std::string_view format, std::string_view tags) {
  if (format.size() > maxFormatLength) return false;
  size_t next = 0;
  for (size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') continue;
    Conversion c;
    if (!parseConversion(format, i, c)) return false;
    i = c.end - 1;
    if (c.conversion == '%') continue;
    if (next == tags.size() || tagClass(tags[next++]) != conversionClass(c.conversion)) {
      return false;
    }
  }
  return next == tags.size();
}

template <class T>
constexpr char tagOf() {
  if constexpr (std::is_enum_v<T>) {
    return tagOf<std::underlying_type_t<T>>();
  } else if constexpr (std::is_integral_v<T>) {
    static_assert(sizeof(T) <= 8, "LDP_BLINK takes integers of at most 64 bits");
    constexpr char letters[2][4] = {{'B', 'H', 'I', 'L'}, {'b', 'h', 'i', 'l'}};
    return letters[std::is_signed_v<T>][std::bit_width(sizeof(T)) - 1];
  } else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
    return 'd';
  } else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*> ||
                       std::is_same_v<T, std::string_view> || std::is_same_v<T, std::string>) {
    return 's';
  } else if constexpr (std::is_pointer_v<T> || std::is_null_pointer_v<T>) {
    return 'p';
  } else {
    static_assert(std::is_void_v<T> && !std::is_void_v<T>,
                  "LDP_BLINK takes integers, enumerations, pointers, float, double and strings");
    return 0;
  }
}

template <class... A>
struct TagList {
  static constexpr char tags[] = {tagOf<A>()..., '\0'};
  static constexpr unsigned strings = ((tagOf<A>() == 's') + ... + 0u);
  static constexpr unsigned fixedWords = sizeof...(A) - strings;
  // Each string gets an equal share of the words the other arguments leave.
  static constexpr size_t stringCapacity =
      strings ? (maxArgWords - fixedWords - strings) / strings * 8 : 0;
  // A string needs its length word and at least one word of bytes.
  static constexpr bool fits = fixedWords + 2 * strings <= maxArgWords;
};

// Only named in unevaluated operands, to give the argument types.
template <class... A>
TagList<std::decay_t<const A>...> tagList(const A&...);

struct Ring {
  std::atomic<uint64_t> nextSeq{1};
  alignas(64) unsigned char* records = nullptr;
  uint64_t slotMask = 0;
};

// The started ring, or null.
extern std::atomic<Ring*> ring_;

// A trace point: its format and the id under which the format table holds it
// (0 until first used).
struct Site {
  constexpr explicit Site(const char* f) : format(f) {}
  const char* format;
  std::atomic<uint32_t> id{0};
};

// Gives `site` its id and stores its format in the file.
uint32_t siteRegistered(Site& site, const char* tags);

inline uint64_t* putArg(uint64_t* w, size_t, uint64_t v) {
  *w = v;
  return w + 1;
}

inline uint64_t* putString(uint64_t* w, size_t capacity, const char* s, size_t size) {
  const size_t n = size < capacity ? size : capacity;
  *w++ = n | (size > capacity ? stringTruncated : 0);
  if (n % 8) w[n / 8] = 0;
  if (n) std::memcpy(w, s, n);
  return w + (n + 7) / 8;
}

// Copies while it measures: trace strings are short, and one pass over them beats
// strnlen and memcpy as calls.
inline uint64_t* putCString(uint64_t* w, size_t capacity, const char* s) {
  auto* bytes = reinterpret_cast<char*>(w + 1);
  size_t n = 0;
  uint64_t truncated = 0;
  for (char c; (c = s[n]) != 0; ++n) {
    if (n == capacity) {
      truncated = stringTruncated;
      break;
    }
    bytes[n] = c;
  }
  *w = n | truncated;
  while (n % 8) bytes[n++] = 0;
  return w + 1 + n / 8;
}

template <class T>
inline uint64_t* putArg(uint64_t* w, size_t capacity, const T& v) {
  if constexpr (std::is_enum_v<T>) {
    return putArg(w, capacity, static_cast<std::underlying_type_t<T>>(v));
  } else if constexpr (std::is_integral_v<T>) {
    return putArg(w, capacity,
                  static_cast<uint64_t>(
                      static_cast<std::conditional_t<std::is_signed_v<T>, int64_t, uint64_t>>(v)));
  } else if constexpr (std::is_floating_point_v<T>) {
    return putArg(w, capacity, std::bit_cast<uint64_t>(static_cast<double>(v)));
  } else if constexpr (std::is_same_v<T, std::string_view> || std::is_same_v<T, std::string>) {
    return putString(w, capacity, v.data(), v.size());
  } else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>) {
    return putCString(w, capacity, v ? v : "(null)");
  } else {
    return putArg(w, capacity, static_cast<uint64_t>(reinterpret_cast<uintptr_t>(v)));
  }
}

// The record's check field: the XOR of its sequence number, time, format id, word
// count and argument words, folded to 16 bits.
constexpr uint16_t recordCheck(uint64_t sum) {
  sum ^= sum >> 32;
  sum ^= sum >> 16;
  return static_cast<uint16_t>(sum);
}

inline uint64_t coarseNow() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &ts);
  return static_cast<uint64_t>(ts.tv_sec) * 1000000000u + static_cast<uint64_t>(ts.tv_nsec);
}

template <class... A>
inline void record(Ring& ring, Site& site, const A&... args) {
  using Tags = TagList<std::decay_t<const A>...>;
  uint32_t id = site.id.load(std::memory_order_acquire);
  if (id == 0) [[unlikely]]
    id = siteRegistered(site, Tags::tags);
  const uint64_t seq = ring.nextSeq.fetch_add(1, std::memory_order_relaxed);
  auto* r = reinterpret_cast<uint64_t*>(ring.records + ((seq & ring.slotMask) << recordShift));
  // A ring larger than the caches would otherwise stall on every record's line.
  __builtin_prefetch(ring.records + (((seq + prefetchAhead) & ring.slotMask) << recordShift), 1);
  // The sequence number goes first and ~seq last, so that a reader (or the file
  // after a crash) sees a record half written as invalid.
  std::atomic_ref<uint64_t>(r[0]).store(seq, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  r[1] = coarseNow();
  uint64_t* w = r + headWords;
  ((w = putArg(w, Tags::stringCapacity, static_cast<const std::decay_t<const A>&>(args))), ...);
  const auto words = static_cast<uint16_t>(w - (r + headWords));
  uint64_t sum = seq ^ r[1] ^ id ^ words;
  for (const uint64_t* a = r + headWords; a < w; ++a) sum ^= *a;
  const struct {
    uint32_t id;
    uint16_t words;
    uint16_t check;
  } meta{id, words, recordCheck(sum)};
  std::memcpy(&r[2], &meta, sizeof meta);
  std::atomic_ref<uint64_t>(*w).store(~seq, std::memory_order_release);
}

}  // namespace Ldp::BlinkDetail

// Records `format` (a string literal, printf conversions as BlinkDetail::Conversion
// describes) with its arguments: integers, enumerations, pointers, float, double,
// and strings (const char*, std::string_view, std::string), which are copied and cut
// to an equal share of 12 words less the other arguments. A format that does not
// match its arguments does not compile.
#define LDP_BLINK(format, ...)                                                                \
  do {                                                                                        \
    if (::Ldp::BlinkDetail::Ring* ldpBlinkRing_ =                                             \
            ::Ldp::BlinkDetail::ring_.load(std::memory_order_acquire)) [[unlikely]] {         \
      using LdpBlinkTags_ = decltype(::Ldp::BlinkDetail::tagList(__VA_ARGS__));               \
      static_assert(LdpBlinkTags_::fits, "LDP_BLINK: the arguments take more than 12 words"); \
      static_assert(::Ldp::BlinkDetail::formatMatches("" format, LdpBlinkTags_::tags),        \
                    "LDP_BLINK: the format's conversions do not match its arguments");        \
      static constinit ::Ldp::BlinkDetail::Site ldpBlinkSite_{"" format};                     \
      ::Ldp::BlinkDetail::record(*ldpBlinkRing_, ldpBlinkSite_ __VA_OPT__(, ) __VA_ARGS__);   \
    }                                                                                         \
  } while (0)
