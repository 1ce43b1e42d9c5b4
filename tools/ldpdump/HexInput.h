#pragma once
// Hex input for ldpdump: one PDU per line, as hex digits that may be separated by
// spaces, tabs or colons. A '#' starts a comment to the end of the line; blank
// lines are skipped.

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace LdpDump {

class HexReader {
 public:
  explicit HexReader(FILE* in) : in_(in) {}

  enum class Line { pdu, bad, end };
  // Reads up to the next line that holds a PDU (in `octets`) or is not hex (with
  // `error` set). `line()` is the line's number from 1.
  Line next(std::vector<uint8_t>* octets, std::string* error);
  uint64_t line() const { return line_; }

 private:
  FILE* in_;
  uint64_t line_ = 0;
  std::string text_;
};

// Parses one line's text; false with `error` set when it is not hex. Comments and
// separators are allowed as for HexReader.
bool parseHexLine(const std::string& text, std::vector<uint8_t>* octets, std::string* error);

}  // namespace LdpDump
