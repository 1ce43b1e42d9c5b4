#include "platform/zel/NboAttrLog.h"

#include <cstring>

#include "platform/zel/Exception.h"

namespace Zel::NboAttrLog {

void Out::attrBegin(AttributeId id) {
  putU32(id);
  recordStart_ = bytes_.size();
  putU32(0);
}

void Out::attrEnd() {
  auto len = static_cast<uint32_t>(bytes_.size() - recordStart_ - 4);
  for (int i = 0; i < 4; ++i) bytes_[recordStart_ + i] = static_cast<uint8_t>(len >> (24 - 8 * i));
}

// Big-endian, appended in one step: a record's values cost one insertion each.
void Out::putU16(uint16_t v) {
  const uint8_t b[2] = {static_cast<uint8_t>(v >> 8), static_cast<uint8_t>(v)};
  bytes_.insert(bytes_.end(), b, b + 2);
}

void Out::putU32(uint32_t v) {
  const uint8_t b[4] = {static_cast<uint8_t>(v >> 24), static_cast<uint8_t>(v >> 16),
                        static_cast<uint8_t>(v >> 8), static_cast<uint8_t>(v)};
  bytes_.insert(bytes_.end(), b, b + 4);
}

void Out::putU64(uint64_t v) {
  putU32(static_cast<uint32_t>(v >> 32));
  putU32(static_cast<uint32_t>(v));
}

void Out::putDouble(double v) {
  uint64_t bits;
  static_assert(sizeof bits == sizeof v);
  std::memcpy(&bits, &v, sizeof bits);
  putU64(bits);
}

void Out::putBytes(const void* data, size_t len) {
  const auto* p = static_cast<const uint8_t*>(data);
  bytes_.insert(bytes_.end(), p, p + len);
}

void Out::putString(const String& s) {
  putU32(static_cast<uint32_t>(s.size()));
  putBytes(s.charPtr(), s.size());
}

void In::need(size_t n) const {
  if (recordEnd_ - pos_ < n) throwRangeException("NboAttrLog::In: record truncated");
}

void In::endOfRecord() const {
  if (pos_ != recordEnd_) throwRangeException("NboAttrLog::In: record too long");
}

AttributeId In::nextAttrId() {
  pos_ = recordEnd_;
  if (bytes_.size() - pos_ < 8) throwRangeException("NboAttrLog::In: record truncated");
  recordEnd_ = bytes_.size();
  uint32_t id = nextU32();
  uint32_t len = nextU32();
  if (bytes_.size() - pos_ < len) throwRangeException("NboAttrLog::In: record truncated");
  recordEnd_ = pos_ + len;
  return id;
}

uint8_t In::nextU8() {
  need(1);
  return bytes_[pos_++];
}

uint16_t In::nextU16() {
  uint16_t hi = nextU8();
  return static_cast<uint16_t>((hi << 8) | nextU8());
}

uint32_t In::nextU32() {
  uint32_t hi = nextU16();
  return (hi << 16) | nextU16();
}

uint64_t In::nextU64() {
  uint64_t hi = nextU32();
  return (hi << 32) | nextU32();
}

double In::nextDouble() {
  uint64_t bits = nextU64();
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

const uint8_t* In::nextBytes(size_t len) {
  need(len);
  const uint8_t* p = bytes_.data() + pos_;
  pos_ += len;
  return p;
}

String In::nextString() {
  uint32_t len = nextU32();
  const uint8_t* p = nextBytes(len);
  return String(reinterpret_cast<const char*>(p), len);
}

}  // namespace Zel::NboAttrLog
