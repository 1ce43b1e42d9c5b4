#pragma once
// The input of fuzz_blink, shared with the seed writer. A mode octet, then:
//   even mode: the bytes of a ring file as they are;
//   odd mode: a compact ring file: u16 header length, the header's bytes, u16
//     format table length, the table's bytes, and the ring's bytes to the end.
// A compact input is laid out at the header, format table and ring offsets of a
// file as long as the head and the ring, so that mutations reach the table and the
// records instead of the 64 KiB head's zeros. Lengths are little-endian and
// clamped to their sections.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "core/LdpBlink.h"

namespace LdpFuzz {

inline std::string blinkFileOf(const uint8_t* data, size_t size) {
  using namespace Ldp::BlinkDetail;
  if (size == 0) return "";
  std::string_view in(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 2 == 0) return std::string(in);
  const auto section = [&in](size_t limit) {
    if (in.size() < 2) {
      in = {};
      return std::string_view();
    }
    const size_t length = std::min<size_t>(
        {size_t{uint8_t(in[0])} | size_t{uint8_t(in[1])} << 8, limit, in.size() - 2});
    const std::string_view s = in.substr(2, length);
    in.remove_prefix(2 + length);
    return s;
  };
  const std::string_view header = section(tableOffset);
  const std::string_view table = section(tableCapacity);
  std::string file(headSize + in.size(), '\0');
  file.replace(0, header.size(), header);
  file.replace(tableOffset, table.size(), table);
  file.replace(headSize, in.size(), in);
  return file;
}

// The compact input (odd mode) of the bytes of a ring file.
inline std::vector<uint8_t> compactBlinkInput(const std::string& file) {
  using namespace Ldp::BlinkDetail;
  uint64_t tableUsed = 0;
  std::memcpy(&tableUsed, file.data() + tableUsedOffset, sizeof tableUsed);
  std::vector<uint8_t> input{1};
  const auto section = [&](size_t offset, size_t length) {
    input.push_back(static_cast<uint8_t>(length));
    input.push_back(static_cast<uint8_t>(length >> 8));
    input.insert(input.end(), file.begin() + static_cast<ptrdiff_t>(offset),
                 file.begin() + static_cast<ptrdiff_t>(offset + length));
  };
  section(0, formatsDroppedOffset + 8);
  section(tableOffset, tableUsed);
  input.insert(input.end(), file.begin() + static_cast<ptrdiff_t>(headSize), file.end());
  return input;
}

}  // namespace LdpFuzz
