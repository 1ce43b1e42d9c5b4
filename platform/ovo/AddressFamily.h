#pragma once
// AddressFamily: the IANA address family number carried in LDP elements (FEC
// elements, address lists). A wire field may hold any 16-bit number; ipv4 and
// ipv6 are the ones LDP understands.

#include <cstdint>

namespace Ovo {

enum class AddressFamily : uint16_t { ipv4 = 1, ipv6 = 2 };

}  // namespace Ovo
