#pragma once
// Pkt: a reference-counted packet buffer that owns a copy of its octets.
//
// pktFactory() copies the octets in; the object and its octets are one
// allocation (the octets follow the object). front() is the first octet,
// frontBytes() the number of octets. A Pkt is not copyable; share it through
// Zel::Ptr<Pkt>.

#include <cstddef>
#include <cstdint>

#include "platform/zel/Ptr.h"

namespace Ovo {

class Pkt : public Zel::PtrInterface {
 public:
  Pkt(const Pkt&) = delete;
  Pkt& operator=(const Pkt&) = delete;

  const uint8_t* front() const { return octets(); }
  uint8_t* front() { return octets(); }
  size_t frontBytes() const { return size_; }

 private:
  friend Zel::Ptr<Pkt> pktFactory(const void* data, size_t len);

  explicit Pkt(size_t size) : size_(size) {}
  ~Pkt() override = default;
  // The object was placement-constructed in a raw block: destroy, then free it.
  void onZeroReferences() override;

  uint8_t* octets() const {
    return const_cast<uint8_t*>(reinterpret_cast<const uint8_t*>(this)) + sizeof(Pkt);
  }

  size_t size_;
};

// A new packet holding a copy of `len` octets at `data` (`data` may be null when
// `len` is 0).
Zel::Ptr<Pkt> pktFactory(const void* data, size_t len);

}  // namespace Ovo
