#pragma once
// Hashing: the incremental hash used by value types, a byte hash, and HashOf<K>,
// the default hash of keyed collections (a key's own hash() where it has one).

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Zel {

// Incremental 32-bit hash: start zeroed, mix() in words, take result().
class Hash {
 public:
  void mix(uint32_t x) {
    x *= 0xCC9E2D51u;
    x = (x << 15) | (x >> 17);
    x *= 0x1B873593u;
    state_ ^= x;
    state_ = (state_ << 13) | (state_ >> 19);
    state_ = state_ * 5 + 0xE6546B64u;
    ++words_;
  }
  uint32_t result() const {
    uint32_t h = state_ ^ (words_ * 4);
    h ^= h >> 16;
    h *= 0x85EBCA6Bu;
    h ^= h >> 13;
    h *= 0xC2B2AE35u;
    h ^= h >> 16;
    return h;
  }

 private:
  uint32_t state_ = 0;
  uint32_t words_ = 0;
};

uint32_t hashBytes(const void* data, size_t len);

// Finalising mix of a 64-bit integer, for integer keys.
inline uint32_t hashInteger(uint64_t x) {
  x ^= x >> 33;
  x *= 0xFF51AFD7ED558CCDull;
  x ^= x >> 33;
  x *= 0xC4CEB9FE1A85EC53ull;
  x ^= x >> 33;
  return static_cast<uint32_t>(x);
}

template <class K, class = void>
struct HashOf;

template <class K>
struct HashOf<K, std::enable_if_t<std::is_integral_v<K> || std::is_enum_v<K>>> {
  uint32_t operator()(K k) const { return hashInteger(static_cast<uint64_t>(k)); }
};

template <>
struct HashOf<double> {
  uint32_t operator()(double d) const {
    uint64_t bits;
    __builtin_memcpy(&bits, &d, sizeof bits);
    return hashInteger(d == 0.0 ? 0 : bits);  // +0.0 and -0.0 compare equal
  }
};

template <class K>
struct HashOf<K, std::void_t<decltype(std::declval<const K&>().hash())>> {
  uint32_t operator()(const K& k) const { return static_cast<uint32_t>(k.hash()); }
};

}  // namespace Zel
