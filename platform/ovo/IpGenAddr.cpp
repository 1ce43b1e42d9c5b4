#include "platform/ovo/IpGenAddr.h"

#include <cstdio>
#include <ostream>
#include <string>

#include "platform/ovo/TextScan.h"
#include "platform/zel/Assert.h"
#include "platform/zel/Hash.h"

namespace Ovo {

namespace {

constexpr uint8_t mappedPrefix[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

uint32_t lastWord(const IpGenAddr::Octets& o) {
  return (uint32_t(o[12]) << 24) | (uint32_t(o[13]) << 16) | (uint32_t(o[14]) << 8) | o[15];
}

std::string v6Text(const IpGenAddr::Octets& o, bool mapped) {
  uint16_t w[8];
  for (int i = 0; i < 8; ++i) w[i] = static_cast<uint16_t>((o[2 * i] << 8) | o[2 * i + 1]);
  const int groups = mapped ? 6 : 8;  // a mapped address ends in a dotted quad
  // The longest run of zero groups (the first of equal runs); one group is no run.
  int best = -1, bestLen = 1;
  for (int i = 0; i < groups;) {
    if (w[i] != 0) {
      ++i;
      continue;
    }
    int j = i;
    while (j < groups && w[j] == 0) ++j;
    if (j - i > bestLen) {
      best = i;
      bestLen = j - i;
    }
    i = j;
  }
  std::string s;
  char buf[8];
  for (int i = 0; i < groups;) {
    if (i == best) {
      s += "::";
      i += bestLen;
      continue;
    }
    if (!s.empty() && s.back() != ':') s += ':';
    std::snprintf(buf, sizeof buf, "%x", static_cast<unsigned>(w[i]));
    s += buf;
    ++i;
  }
  if (mapped) {
    if (s.back() != ':') s += ':';
    s += IpAddr(lastWord(o)).stringValue().view();
  }
  return s;
}

// RFC 4291 §2.2 text at `it`; advances `it` only on success.
bool scanV6(Zel::StrIt& it, const Zel::StrIt& end, IpGenAddr::Octets* out) {
  using TextScan::hexValue;
  auto isHex = [](char c) { return hexValue(c) >= 0; };
  Zel::StrIt p = it;
  uint16_t w[8] = {};
  int n = 0;     // groups read
  int gap = -1;  // where "::" stands, in groups
  // A "::" at p: records the gap. A ':' right after it is an error (":::").
  auto doubleColon = [&]() {
    if (gap >= 0) return false;
    gap = n;
    p += 2;
    return p == end || *p != ':';
  };
  if (p != end && *p == ':') {
    if (end - p < 2 || p[1] != ':' || !doubleColon()) return false;
  }
  while (p != end && isHex(*p)) {
    if (n == 8) return false;
    Zel::StrIt r = p;
    while (r != end && isHex(*r)) ++r;
    if (r != end && *r == '.') {
      // A dotted quad in the place of the last two groups ends the address.
      uint32_t v4;
      if (n > 6 || !TextScan::dottedQuad(p, end, &v4)) return false;
      w[n++] = static_cast<uint16_t>(v4 >> 16);
      w[n++] = static_cast<uint16_t>(v4);
      break;
    }
    if (r - p > 4) return false;
    unsigned g = 0;
    for (; p != r; ++p) g = g * 16 + static_cast<unsigned>(hexValue(*p));
    w[n++] = static_cast<uint16_t>(g);
    if (p == end || *p != ':') break;
    if (end - p >= 2 && p[1] == ':') {
      if (!doubleColon()) return false;
      continue;  // the address may end right after "::"
    }
    ++p;  // a single ':' must be followed by a group
    if (p == end || !isHex(*p)) return false;
  }
  if (gap < 0 ? n != 8 : n >= 8) return false;
  uint16_t full[8] = {};
  const int tail = gap < 0 ? 0 : n - gap;
  const int head = n - tail;
  for (int i = 0; i < head; ++i) full[i] = w[i];
  for (int i = 0; i < tail; ++i) full[8 - tail + i] = w[head + i];
  for (int i = 0; i < 8; ++i) {
    (*out)[2 * i] = static_cast<uint8_t>(full[i] >> 8);
    (*out)[2 * i + 1] = static_cast<uint8_t>(full[i]);
  }
  it = p;
  return true;
}

}  // namespace

IpGenAddr::IpGenAddr(IpAddr v4) : family_(Family::ipv4) {
  for (int i = 0; i < 12; ++i) octets_[i] = mappedPrefix[i];
  for (int i = 0; i < 4; ++i) octets_[12 + i] = static_cast<uint8_t>(v4.value() >> (24 - 8 * i));
}

IpGenAddr::IpGenAddr(const Octets& v6) : family_(Family::ipv6), octets_(v6) {}

IpAddr IpGenAddr::v4() const {
  ZEL_ASSERT(isV4());
  return IpAddr(lastWord(octets_));
}

IpGenAddr IpGenAddr::asV6() const { return isV4() ? IpGenAddr(octets_) : *this; }

uint32_t IpGenAddr::hashAsV6() const { return asV6().hash(); }

bool IpGenAddr::isV4Mapped() const {
  if (!isV6()) return false;
  for (int i = 0; i < 12; ++i) {
    if (octets_[i] != mappedPrefix[i]) return false;
  }
  return true;
}

unsigned IpGenAddr::bitLength() const {
  switch (family_) {
    case Family::ipv4:
      return 32;
    case Family::ipv6:
      return 128;
    default:
      return 0;
  }
}

uint32_t IpGenAddr::hash() const {
  Zel::Hash h;
  h.mix(static_cast<uint32_t>(family_));
  for (int i = 0; i < 16; i += 4) {
    h.mix((uint32_t(octets_[i]) << 24) | (uint32_t(octets_[i + 1]) << 16) |
          (uint32_t(octets_[i + 2]) << 8) | octets_[i + 3]);
  }
  return h.result();
}

Zel::String IpGenAddr::stringValue() const {
  switch (family_) {
    case Family::ipv4:
      return v4().stringValue();
    case Family::ipv6:
      return Zel::String(v6Text(octets_, isV4Mapped()));
    default:
      return "none";
  }
}

Zel::String valueToStrep(const IpGenAddr& v) { return v.stringValue(); }

void sequenceToValue(Zel::StrIt& it, const Zel::StrIt& end, IpGenAddr* out) {
  Zel::StrIt p = it;
  if (Zel::acceptString(p, end, "none")) {
    it = p;
    *out = IpGenAddr();
    return;
  }
  // IPv6 when a ':' comes before anything but hex digits.
  Zel::StrIt r = p;
  while (r != end && TextScan::hexValue(*r) >= 0) ++r;
  if (r != end && *r == ':') {
    IpGenAddr::Octets o;
    if (!scanV6(p, end, &o)) Zel::throwRangeException("Invalid IpGenAddr");
    it = p;
    *out = IpGenAddr(o);
    return;
  }
  uint32_t v4;
  if (!TextScan::dottedQuad(p, end, &v4)) Zel::throwRangeException("Invalid IpGenAddr");
  it = p;
  *out = IpGenAddr(IpAddr(v4));
}

std::ostream& operator<<(std::ostream& os, const IpGenAddr& v) { return os << v.stringValue(); }

void attrLogWrite(Zel::NboAttrLog::Out& o, const IpGenAddr& v) {
  o.putU8(static_cast<uint8_t>(v.family()));
  if (v.isV4()) {
    o.putU32(v.v4().value());
  } else if (v.isV6()) {
    o.putBytes(v.v6Octets().data(), 16);
  }
}

void attrLogRead(Zel::NboAttrLog::In& i, IpGenAddr* v) {
  switch (i.nextU8()) {
    case 0:
      *v = IpGenAddr();
      return;
    case 4:
      *v = IpGenAddr(IpAddr(i.nextU32()));
      return;
    case 6: {
      IpGenAddr::Octets o;
      const uint8_t* p = i.nextBytes(16);
      for (int k = 0; k < 16; ++k) o[k] = p[k];
      *v = IpGenAddr(o);
      return;
    }
    default:
      Zel::throwRangeException("Invalid IpGenAddr");
  }
}

}  // namespace Ovo
