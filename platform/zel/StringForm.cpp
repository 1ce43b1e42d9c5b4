#include "platform/zel/StringForm.h"

#include <charconv>
#include <cstdio>
#include <limits>

namespace Zel {

void needString(StrIt& it, const StrIt& end, std::string_view literal) {
  if (!acceptString(it, end, literal)) {
    throwRangeException(String("Expected '") + literal + "'");
  }
}

bool acceptString(StrIt& it, const StrIt& end, std::string_view literal) {
  if (static_cast<size_t>(end - it) < literal.size()) return false;
  if (std::string_view(it, literal.size()) != literal) return false;
  it += literal.size();
  return true;
}

String valueToStrep(bool v) { return v ? "True" : "False"; }

String valueToStrep(double v) {
  char buf[32];
  auto r = std::to_chars(buf, buf + sizeof buf, v);
  return String(buf, static_cast<size_t>(r.ptr - buf));
}

String valueToStrep(int64_t v) { return String(std::to_string(v)); }
String valueToStrep(uint64_t v) { return String(std::to_string(v)); }

String valueToStrep(const String& v) {
  std::string s = "'";
  for (char c : v.view()) {
    auto u = static_cast<unsigned char>(c);
    if (c == '\\' || c == '\'') {
      s += '\\';
      s += c;
    } else if (u < 0x20 || u > 0x7E) {
      char esc[5];
      std::snprintf(esc, sizeof esc, "\\x%02x", u);
      s += esc;
    } else {
      s += c;
    }
  }
  s += '\'';
  return String(s);
}

void sequenceToValue(StrIt& it, const StrIt& end, bool* out) {
  if (acceptString(it, end, "True")) {
    *out = true;
  } else if (acceptString(it, end, "False")) {
    *out = false;
  } else {
    throwRangeException("Invalid bool");
  }
}

void sequenceToValue(StrIt& it, const StrIt& end, double* out) {
  double v = 0;
  auto r = std::from_chars(it, end, v);
  if (r.ec != std::errc()) throwRangeException("Invalid double");
  it = r.ptr;
  *out = v;
}

namespace {
int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}
}  // namespace

void sequenceToValue(StrIt& it, const StrIt& end, String* out) {
  StrIt p = it;
  if (p == end || *p != '\'') throwRangeException("Invalid string");
  ++p;
  std::string s;
  for (;;) {
    if (p == end) throwRangeException("Invalid string");
    char c = *p++;
    if (c == '\'') break;
    if (c != '\\') {
      s += c;
      continue;
    }
    if (p == end) throwRangeException("Invalid string");
    c = *p++;
    if (c == '\\' || c == '\'') {
      s += c;
    } else if (c == 'x' && end - p >= 2 && hexDigit(p[0]) >= 0 && hexDigit(p[1]) >= 0) {
      s += static_cast<char>(hexDigit(p[0]) * 16 + hexDigit(p[1]));
      p += 2;
    } else {
      throwRangeException("Invalid string");
    }
  }
  it = p;
  *out = String(s);
}

int64_t sequenceToSigned(StrIt& it, const StrIt& end, int64_t lo, int64_t hi) {
  int64_t v = 0;
  auto r = std::from_chars(it, end, v);
  if (r.ec != std::errc() || v < lo || v > hi) throwRangeException("Invalid integer");
  it = r.ptr;
  return v;
}

uint64_t sequenceToUnsigned(StrIt& it, const StrIt& end, uint64_t hi) {
  uint64_t v = 0;
  if (it == end || *it == '-' || *it == '+') throwRangeException("Invalid integer");
  auto r = std::from_chars(it, end, v);
  if (r.ec != std::errc() || v > hi) throwRangeException("Invalid integer");
  it = r.ptr;
  return v;
}

void rethrowNamingAttribute(const char* attrName, const RangeException& e) {
  throwRangeException(String("Invalid value for attribute '") + attrName +
                      "': " + e.message().view());
}

}  // namespace Zel
