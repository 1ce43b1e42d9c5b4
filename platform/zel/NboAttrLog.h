#pragma once
// The attribute log: network-byte-order streams that carry attribute changes.
//
// Framing. A log is a sequence of records, one per attribute:
//     attribute id   4 octets, big-endian
//     value length   4 octets, big-endian: the octets of the value that follow
//     value          `value length` octets
// The length lets a reader skip ids it does not know. Values are encoded as:
//     bool           1 octet, 0 or 1
//     integers       big-endian in their own width (enumerations: 4 octets)
//     double         IEEE-754 binary64, big-endian
//     String         4-octet big-endian length, then the bytes
//     value types    their fields one after another in declaration order
// Out may be given a capacity; spaceFor() tells a writer whether a record fits, and
// full() whether the buffer has reached its capacity, so that a writer can mark the
// attribute dirty and send it later instead. How replication lays entities and their
// collections into records is described in AttrLogSa.h.

#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "platform/zel/Ptr.h"
#include "platform/zel/String.h"

namespace Zel {

using AttributeId = uint32_t;

namespace NboAttrLog {

class Out : public PtrInterface {
 public:
  explicit Out(size_t capacity = std::numeric_limits<size_t>::max()) : capacity_(capacity) {}

  bool spaceFor(size_t valueBytes) const { return bytes_.size() + 8 + valueBytes <= capacity_; }
  size_t capacity() const { return capacity_; }
  void capacityIs(size_t c) { capacity_ = c; }

  // A record: attrBegin(id), the value's writes, attrEnd().
  void attrBegin(AttributeId id);
  void attrEnd();

  void putU8(uint8_t v) { bytes_.push_back(v); }
  void putU16(uint16_t v);
  void putU32(uint32_t v);
  void putU64(uint64_t v);
  void putDouble(double v);
  void putBytes(const void* data, size_t len);
  void putString(const String& s);

  const std::vector<uint8_t>& bytes() const { return bytes_; }
  size_t size() const { return bytes_.size(); }
  void clear() { bytes_.clear(); }
  // Takes back what was written after `size` octets (a record that must wait).
  void truncate(size_t size) { bytes_.resize(size); }
  // The capacity is a soft bound: a record is always written whole, and the buffer is
  // full once it holds `capacity` octets or more. A buffer of a few octets therefore
  // still carries one record at a time.
  bool full() const { return bytes_.size() >= capacity_; }

 private:
  std::vector<uint8_t> bytes_;
  size_t capacity_;
  size_t recordStart_ = 0;
};

class In : public PtrInterface {
 public:
  In(const uint8_t* data, size_t len) : bytes_(data, data + len) {}
  explicit In(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
  // The encoding of one value (a collection key, say), read without record framing.
  static In value(const uint8_t* data, size_t len) {
    In in(data, len);
    in.recordEnd_ = len;
    return in;
  }

  // No record after the current one (whatever of it is left unread).
  bool atEnd() const { return recordEnd_ >= bytes_.size(); }
  // Starts the next record and returns its id.
  AttributeId nextAttrId();
  // Skips what is left of the current record.
  void skipAttr() { pos_ = recordEnd_; }
  // Octets of the current record not yet read, and where they are.
  size_t remaining() const { return recordEnd_ - pos_; }
  const uint8_t* cursor() const { return bytes_.data() + pos_; }
  // Refuses a record with octets left over: every record is read whole.
  void endOfRecord() const;

  bool nextbool() { return nextU8() != 0; }
  uint8_t nextU8();
  uint16_t nextU16();
  uint32_t nextU32();
  uint64_t nextU64();
  double nextDouble();
  String nextString();
  const uint8_t* nextBytes(size_t len);

 private:
  void need(size_t n) const;
  std::vector<uint8_t> bytes_;
  size_t pos_ = 0;
  size_t recordEnd_ = 0;
};

}  // namespace NboAttrLog

// attrLogWrite / attrLogRead: the per-type encoders that generated code calls.
inline void attrLogWrite(NboAttrLog::Out& o, bool v) { o.putU8(v ? 1 : 0); }
inline void attrLogWrite(NboAttrLog::Out& o, double v) { o.putDouble(v); }
inline void attrLogWrite(NboAttrLog::Out& o, const String& v) { o.putString(v); }
template <class T>
requires(std::is_integral_v<T> || std::is_enum_v<T>) void attrLogWrite(NboAttrLog::Out& o, T v) {
  if constexpr (std::is_same_v<T, bool>) {
    o.putU8(v ? 1 : 0);
  } else if constexpr (std::is_enum_v<T> || sizeof(T) == 4) {
    o.putU32(static_cast<uint32_t>(v));
  } else if constexpr (sizeof(T) == 1) {
    o.putU8(static_cast<uint8_t>(v));
  } else if constexpr (sizeof(T) == 2) {
    o.putU16(static_cast<uint16_t>(v));
  } else {
    o.putU64(static_cast<uint64_t>(v));
  }
}

inline void attrLogRead(NboAttrLog::In& i, double* v) { *v = i.nextDouble(); }
inline void attrLogRead(NboAttrLog::In& i, String* v) { *v = i.nextString(); }
template <class T>
requires(std::is_integral_v<T> || std::is_enum_v<T>) void attrLogRead(NboAttrLog::In& i, T* v) {
  if constexpr (std::is_same_v<T, bool>) {
    *v = i.nextbool();
  } else if constexpr (std::is_enum_v<T> || sizeof(T) == 4) {
    *v = static_cast<T>(i.nextU32());
  } else if constexpr (sizeof(T) == 1) {
    *v = static_cast<T>(i.nextU8());
  } else if constexpr (sizeof(T) == 2) {
    *v = static_cast<T>(i.nextU16());
  } else {
    *v = static_cast<T>(i.nextU64());
  }
}

}  // namespace Zel
