#pragma once
// The octet buffers the overlay suites build, and an overlay laid over one.

#include <cstdint>
#include <vector>

#include "wire/LdpHeaders.h"

namespace LdpTest {

using Bytes = std::vector<uint8_t>;

// The overlay T on the octets of `b`.
template <class T>
T* as(Bytes& b) {
  return Ldp::overlay<T>(b.data());
}

}  // namespace LdpTest
