#include "tools/ldpdump/HexInput.h"

namespace LdpDump {

namespace {
int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}
}  // namespace

bool parseHexLine(const std::string& text, std::vector<uint8_t>* octets, std::string* error) {
  octets->clear();
  int high = -1;  // the first digit of an unfinished octet
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '#') break;
    if (c == ' ' || c == '\t' || c == ':' || c == '\r') {
      if (high >= 0) {
        *error = "an odd number of hex digits before column " + std::to_string(i + 1);
        return false;
      }
      continue;
    }
    const int d = digit(c);
    if (d < 0) {
      *error =
          std::string("'") + c + "' at column " + std::to_string(i + 1) + " is not a hex digit";
      return false;
    }
    if (high < 0) {
      high = d;
    } else {
      octets->push_back(static_cast<uint8_t>(high << 4 | d));
      high = -1;
    }
  }
  if (high >= 0) {
    *error = "an odd number of hex digits";
    return false;
  }
  return true;
}

HexReader::Line HexReader::next(std::vector<uint8_t>* octets, std::string* error) {
  for (;;) {
    text_.clear();
    int c;
    bool any = false;
    while ((c = std::fgetc(in_)) != EOF) {
      any = true;
      if (c == '\n') break;
      text_ += static_cast<char>(c);
    }
    if (!any) return Line::end;
    ++line_;
    if (!parseHexLine(text_, octets, error)) return Line::bad;
    if (!octets->empty()) return Line::pdu;
  }
}

}  // namespace LdpDump
