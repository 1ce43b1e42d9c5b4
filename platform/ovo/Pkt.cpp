#include "platform/ovo/Pkt.h"

#include <cstring>
#include <new>

namespace Ovo {

void Pkt::onZeroReferences() {
  this->~Pkt();
  ::operator delete(static_cast<void*>(this));
}

Zel::Ptr<Pkt> pktFactory(const void* data, size_t len) {
  void* mem = ::operator new(sizeof(Pkt) + len);
  Pkt* pkt = new (mem) Pkt(len);
  if (len) std::memcpy(pkt->front(), data, len);
  return Zel::Ptr<Pkt>(pkt);
}

}  // namespace Ovo
