#pragma once
// Reads of big-endian fields from raw capture octets, at any alignment.

#include <cstdint>

namespace LdpDump {

inline uint16_t get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }

inline uint32_t get32(const uint8_t* p) {
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

}  // namespace LdpDump
