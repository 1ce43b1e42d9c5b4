#include "core/LdpBlinkReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "core/LdpBlink.h"

namespace Ldp::Blink {

namespace {

using namespace BlinkDetail;

template <class T>
T get(std::string_view bytes, uint64_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

struct Entry {
  std::string_view tags;
  std::string_view format;
};

// printf of one value with a conversion the table check accepted; the format is
// rebuilt from the parsed parts, so nothing of the file reaches printf unchecked.
// The flags C defines for `conversion`; the others are dropped.
std::string_view flagsFor(char conversion) {
  switch (conversion) {
    case 's':
    case 'c':
      return "-";
    case 'd':
    case 'i':
      return "-+ 0";
    case 'o':
    case 'u':
    case 'x':
    case 'X':
      return "-#0";
    default:
      return "-+ #0";
  }
}

template <class T>
void appendFormatted(std::string& out, const Conversion& c, const char* length, char conversion,
                     T value) {
  std::string directive = "%";
  for (const char* f = c.flags; *f; ++f) {
    if (flagsFor(conversion).find(*f) != std::string_view::npos) directive += *f;
  }
  if (c.width >= 0) directive += std::to_string(c.width);
  if (c.precision >= 0) directive.append(".").append(std::to_string(c.precision));
  directive += length;
  directive += conversion;
  char small[64];
  const int n = std::snprintf(small, sizeof small, directive.c_str(), value);
  if (n < 0) return;
  if (static_cast<size_t>(n) < sizeof small) {
    out.append(small, static_cast<size_t>(n));
    return;
  }
  std::string big(static_cast<size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), directive.c_str(), value);
  out.append(big.data(), static_cast<size_t>(n));
}

size_t tagBytes(char tag) {
  switch (tag) {
    case 'b':
    case 'B':
      return 1;
    case 'h':
    case 'H':
      return 2;
    case 'i':
    case 'I':
      return 4;
    default:
      return 8;
  }
}

// An integer as C would print it: types narrower than int are promoted to int.
void appendInteger(std::string& out, const Conversion& c, char tag, uint64_t word) {
  const size_t bits = 8 * std::max<size_t>(tagBytes(tag), 4);
  const uint64_t mask = bits == 64 ? ~uint64_t{0} : (uint64_t{1} << bits) - 1;
  const bool isSigned = tag >= 'a' && tag <= 'z';
  if (c.conversion == 'c') {
    appendFormatted(out, c, "", 'c', static_cast<int>(word & 0xff));
  } else if (c.conversion == 'd' || c.conversion == 'i') {
    if (isSigned || bits == 64) {
      appendFormatted(out, c, "ll", 'd', static_cast<long long>(word));
    } else {
      // An unsigned value printed signed: its bits at its own width.
      const uint64_t v = word & mask;
      const bool negative = (v >> (bits - 1)) & 1;
      appendFormatted(out, c, "ll", 'd',
                      negative ? static_cast<long long>(v | ~mask) : static_cast<long long>(v));
    }
  } else {
    appendFormatted(out, c, "ll", c.conversion, static_cast<unsigned long long>(word & mask));
  }
}

void appendPadded(std::string& out, const Conversion& c, const std::string& text) {
  Conversion plain = c;
  plain.precision = -1;
  appendFormatted(out, plain, "", 's', text.c_str());
}

// Formats the arguments in `words` by `entry`; false when they do not match it.
bool formatRecord(const Entry& entry, std::string_view words, std::string& out) {
  std::string_view format = entry.format;
  size_t tag = 0;
  uint64_t at = 0;
  for (size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') {
      out += format[i];
      continue;
    }
    Conversion c;
    parseConversion(format, i, c);  // the table check accepted every conversion
    i = c.end - 1;
    if (c.conversion == '%') {
      out += '%';
      continue;
    }
    const char t = entry.tags[tag++];
    if (at + 8 > words.size()) return false;
    const auto word = get<uint64_t>(words, at);
    at += 8;
    switch (tagClass(t)) {
      case ArgClass::integer:
        appendInteger(out, c, t, word);
        break;
      case ArgClass::floating:
        appendFormatted(out, c, "", c.conversion, std::bit_cast<double>(word));
        break;
      case ArgClass::pointer: {
        char hex[24];
        std::snprintf(hex, sizeof hex, "0x%llx", static_cast<unsigned long long>(word));
        appendPadded(out, c, word ? hex : "(nil)");
        break;
      }
      default: {
        const uint64_t size = word & 0xffffffffu;
        if ((word >> 32) > 1 || size > words.size() - at) return false;
        const std::string text(words.substr(at, size));
        at += (size + 7) / 8 * 8;
        if (at > words.size()) return false;
        appendFormatted(out, c, "", 's', text.c_str());
        if (word & stringTruncated) out += "...";
        break;
      }
    }
  }
  return at == words.size();
}

// Why the header is refused, or "".
std::string checkHeader(std::string_view bytes, Trace& trace) {
  if (bytes.size() < tableOffset) {
    return "too short for a Blink ring file: " + std::to_string(bytes.size()) + " bytes";
  }
  if (std::memcmp(bytes.data(), magic, sizeof magic) != 0) {
    return "not a Blink ring file (no LDPBLINK magic)";
  }
  if (const auto v = get<uint32_t>(bytes, 8); v != version) {
    return "unsupported version " + std::to_string(v) + " (this reader reads version " +
           std::to_string(version) + ")";
  }
  if (get<uint32_t>(bytes, 12) != byteOrderMark) return "written in another byte order";
  const auto bits = get<uint32_t>(bytes, 16);
  if (bits < minSizeBits || bits > maxSizeBits) {
    return "size setting " + std::to_string(bits) + " is outside " + std::to_string(minSizeBits) +
           " to " + std::to_string(maxSizeBits);
  }
  const uint64_t size = fileSize(bits);
  const struct {
    uint64_t offset, expected;
    const char* name;
  } fields[] = {{20, recordSize, "record size"},
                {24, size, "file size"},
                {32, tableOffset, "format table offset"},
                {40, tableCapacity, "format table capacity"},
                {48, headSize, "ring offset"},
                {56, size - headSize, "ring size"}};
  for (const auto& f : fields) {
    const uint64_t value =
        f.offset == 20 ? get<uint32_t>(bytes, f.offset) : get<uint64_t>(bytes, f.offset);
    if (value != f.expected) {
      return "inconsistent header: " + std::string(f.name) + " " + std::to_string(value) +
             ", expected " + std::to_string(f.expected);
    }
  }
  if (bytes.size() != size) {
    return (bytes.size() < size ? "truncated: " : "too long: ") + std::to_string(bytes.size()) +
           " bytes, the header gives " + std::to_string(size);
  }
  trace.sizeBits = bits;
  trace.pid = get<uint32_t>(bytes, 80);
  trace.startTime = get<uint64_t>(bytes, 64);
  trace.startRealTime = get<uint64_t>(bytes, 72);
  trace.formatsDropped = get<uint64_t>(bytes, formatsDroppedOffset);
  return "";
}

// Why the format table is refused, or "".
std::string readTable(std::string_view bytes, std::vector<Entry>& entries) {
  const auto used = get<uint64_t>(bytes, tableUsedOffset);
  if (used > tableCapacity || used % 8) {
    return "corrupt format table: " + std::to_string(used) + " bytes in use";
  }
  const std::string_view table = bytes.substr(tableOffset, used);
  for (uint64_t at = 0; at < table.size();) {
    const std::string where = "corrupt format table: entry " + std::to_string(entries.size() + 1) +
                              " at offset " + std::to_string(tableOffset + at) + ": ";
    if (table.size() - at < 8) return where + "cut short";
    const auto id = get<uint32_t>(table, at);
    const auto n = get<uint16_t>(table, at + 4);
    const auto m = get<uint16_t>(table, at + 6);
    if (id != entries.size() + 1) return where + "id " + std::to_string(id);
    if (uint64_t{n} + m > table.size() - at - 8) return where + "longer than the table";
    const Entry e{table.substr(at + 8, n), table.substr(at + 8 + n, m)};
    size_t strings = 0;
    for (const char t : e.tags) {
      if (tagClass(t) == ArgClass::none) return where + "argument type letter " + std::to_string(t);
      strings += t == 's';
    }
    if (e.tags.size() + strings > maxArgWords) return where + "too many arguments";
    if (!formatMatches(e.format, e.tags)) return where + "format does not match its arguments";
    entries.push_back(e);
    at += (8 + n + m + 7) / 8 * 8;
  }
  return "";
}

}  // namespace

std::string readTrace(std::string_view bytes, Trace& trace) {
  trace = Trace();
  if (std::string error = checkHeader(bytes, trace); !error.empty()) return error;
  std::vector<Entry> entries;
  if (std::string error = readTable(bytes, entries); !error.empty()) return error;
  trace.formats = entries.size();

  const uint64_t slots = (uint64_t{1} << trace.sizeBits) / recordSize;
  for (uint64_t slot = 0; slot < slots; ++slot) {
    const std::string_view r = bytes.substr(headSize + slot * recordSize, recordSize);
    const auto seq = get<uint64_t>(r, 0);
    if (seq == 0) continue;
    const auto id = get<uint32_t>(r, 16);
    const auto words = get<uint16_t>(r, 20);
    if (words > maxArgWords || (seq & (slots - 1)) != slot ||
        get<uint64_t>(r, 8 * (headWords + words)) != ~seq || id == 0 ||
        id > entries.size() + trace.formatsDropped) {
      ++trace.damaged;
      continue;
    }
    const std::string_view args = r.substr(8 * headWords, 8 * words);
    uint64_t sum = seq ^ get<uint64_t>(r, 8) ^ id ^ words;
    for (size_t at = 0; at < args.size(); at += 8) sum ^= get<uint64_t>(args, at);
    if (recordCheck(sum) != get<uint16_t>(r, 22)) {
      ++trace.damaged;
      continue;
    }
    Record record{seq, get<uint64_t>(r, 8), ""};
    if (id > entries.size()) {
      record.message = "<format " + std::to_string(id) + " not in the file>";
      for (size_t at = 0; at < args.size(); at += 8) {
        char hex[24];
        std::snprintf(hex, sizeof hex, " 0x%llx",
                      static_cast<unsigned long long>(get<uint64_t>(args, at)));
        record.message += hex;
      }
    } else if (!formatRecord(entries[id - 1], args, record.message)) {
      ++trace.damaged;
      continue;
    }
    trace.records.push_back(std::move(record));
  }
  std::sort(trace.records.begin(), trace.records.end(),
            [](const Record& a, const Record& b) { return a.sequence < b.sequence; });
  return "";
}

std::string readTraceFile(const std::string& path, Trace& trace) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return std::string("cannot open: ") + std::strerror(errno);
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) return "not a regular file";
  const std::streamoff size = in.tellg();
  if (size < 0) return "cannot read";
  if (static_cast<uint64_t>(size) > fileSize(maxSizeBits)) {
    return "too long for a Blink ring file: " + std::to_string(size) + " bytes";
  }
  std::string bytes(static_cast<size_t>(size), '\0');
  in.seekg(0);
  if (!in.read(bytes.data(), size)) return "cannot read";
  return readTrace(bytes, trace);
}

}  // namespace Ldp::Blink
