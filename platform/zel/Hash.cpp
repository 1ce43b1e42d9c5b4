#include "platform/zel/Hash.h"

#include <cstring>

namespace Zel {

uint32_t hashBytes(const void* data, size_t len) {
  const auto* p = static_cast<const unsigned char*>(data);
  Hash h;
  while (len >= 4) {
    uint32_t w;
    std::memcpy(&w, p, 4);
    h.mix(w);
    p += 4;
    len -= 4;
  }
  uint32_t tail = 0;
  for (size_t i = 0; i < len; ++i) tail |= uint32_t(p[i]) << (8 * i);
  if (len) h.mix(tail ^ (uint32_t(len) << 24));
  return h.result();
}

}  // namespace Zel
