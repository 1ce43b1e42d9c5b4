#pragma once
// Memory for objects that are made and dropped at packet rate (the parsers: one
// message parser, its TLV walker and its FEC objects per received message).
//
// A class deriving from Recycled takes its blocks from per-thread free lists of
// 16-octet size classes instead of the heap: dropping the last reference puts the
// block back on the list of the thread that drops it, and the next object of that
// size class reuses it. In a steady stream no malloc or free runs at all. Each
// list keeps at most `maxFreeBlocks` blocks and gives the rest back to the heap;
// a thread's lists are given back when it ends. Blocks larger than
// `maxRecycledSize` come from the heap directly.
//
// Under AddressSanitizer the lists are off and every block goes to the heap, so
// that a use after free of a parser object is still reported.

#include <cstddef>

namespace Zel {

class Recycled {
 public:
  static constexpr size_t maxRecycledSize = 512;
  static constexpr size_t maxFreeBlocks = 256;

  // Only the sized delete is declared: a class-scope delete without the size
  // parameter would be chosen over it, and the free lists need the size, which the
  // virtual destructor passes for the object's dynamic type.
  static void* operator new(size_t size);  // NOLINT(misc-new-delete-overloads)
  static void operator delete(void* block, size_t size) noexcept;

  // Whether the lists are in use (false under AddressSanitizer).
  static bool recycling();
  // Blocks on this thread's lists.
  static size_t freeBlocks();
};

}  // namespace Zel
