#include "platform/zel/Recycled.h"

#include <new>

namespace Zel {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool recyclingOn = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool recyclingOn = false;
#else
constexpr bool recyclingOn = true;
#endif
#else
constexpr bool recyclingOn = true;
#endif

constexpr size_t granule = 16;
constexpr size_t classes = Recycled::maxRecycledSize / granule;

struct FreeBlock {
  FreeBlock* next;
};

// Plain data, so that reaching it costs no initialisation check; initial-exec
// because libLdp is linked, not loaded late, and that model is one load from the
// thread pointer.
struct FreeLists {
  FreeBlock* head[classes];
  unsigned count[classes];
  bool drainRegistered;
};
__attribute__((tls_model("initial-exec"))) thread_local FreeLists lists;

size_t classOf(size_t size) { return (size + granule - 1) / granule - 1; }

// Gives a thread's blocks back to the heap when the thread ends.
struct Drain {
  ~Drain() {
    for (size_t c = 0; c < classes; ++c) {
      while (FreeBlock* b = lists.head[c]) {
        lists.head[c] = b->next;
        ::operator delete(b);
      }
      // Blocks freed later in the thread's exit go straight to the heap.
      lists.count[c] = Recycled::maxFreeBlocks;
    }
  }
};

}  // namespace

void* Recycled::operator new(size_t size) {  // NOLINT(misc-new-delete-overloads)
  if (recyclingOn && size > 0 && size <= maxRecycledSize) {
    const size_t c = classOf(size);
    if (FreeBlock* b = lists.head[c]) {
      lists.head[c] = b->next;
      --lists.count[c];
      return b;
    }
    if (!lists.drainRegistered) {
      lists.drainRegistered = true;
      thread_local Drain drain;
      (void)drain;
    }
    // Whole size classes, so a block serves any object of its class.
    return ::operator new((c + 1) * granule);
  }
  return ::operator new(size);
}

void Recycled::operator delete(void* block, size_t size) noexcept {
  if (!block) return;
  if (recyclingOn && size > 0 && size <= maxRecycledSize) {
    const size_t c = classOf(size);
    if (lists.count[c] < maxFreeBlocks) {
      auto* b = static_cast<FreeBlock*>(block);
      b->next = lists.head[c];
      lists.head[c] = b;
      ++lists.count[c];
      return;
    }
  }
  ::operator delete(block);
}

bool Recycled::recycling() { return recyclingOn; }

size_t Recycled::freeBlocks() {
  size_t n = 0;
  for (size_t c = 0; c < classes; ++c) n += lists.count[c];
  return n;
}

}  // namespace Zel
