#pragma once
// NetInt<T>: an unsigned integer stored as its big-endian (network order) octets.
//
// These are the fields of byte-exact overlays on packet octets: alignment 1, no
// padding, trivially copyable, so a struct of NetU16/NetU32 fields lays out
// exactly like the wire header it describes. value() gives the host value,
// valueIs() stores one. A default-constructed NetInt is zero.

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Ovo {

template <class T>
class NetInt {
  static_assert(std::is_unsigned_v<T> && !std::is_same_v<T, bool>);

 public:
  static constexpr size_t octetCount = sizeof(T);

  constexpr NetInt() = default;
  constexpr explicit NetInt(T v) { valueIs(v); }

  constexpr T value() const {
    T v = 0;
    for (size_t i = 0; i < octetCount; ++i) v = static_cast<T>((v << 8) | octets_[i]);
    return v;
  }
  constexpr void valueIs(T v) {
    for (size_t i = octetCount; i-- > 0;) {
      octets_[i] = static_cast<uint8_t>(v);
      v = static_cast<T>(v >> 8);
    }
  }
  // The raw octets, most significant first.
  constexpr const uint8_t* octets() const { return octets_; }

  friend constexpr bool operator==(const NetInt&, const NetInt&) = default;

 private:
  uint8_t octets_[octetCount] = {};
};

using NetU16 = NetInt<uint16_t>;
using NetU32 = NetInt<uint32_t>;

static_assert(sizeof(NetU16) == 2 && alignof(NetU16) == 1);
static_assert(sizeof(NetU32) == 4 && alignof(NetU32) == 1);
static_assert(std::is_trivially_copyable_v<NetU16> && std::is_trivially_copyable_v<NetU32>);
static_assert(std::is_standard_layout_v<NetU16> && std::is_standard_layout_v<NetU32>);

}  // namespace Ovo
