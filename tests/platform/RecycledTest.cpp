#include "platform/zel/Recycled.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/zel/Ptr.h"

namespace {

struct Small : Zel::PtrInterface, Zel::Recycled {
  char bytes[8] = {};
};
struct Large : Zel::PtrInterface, Zel::Recycled {
  char bytes[200] = {};
};
// Used by one test only, so its size class starts with an empty list.
struct Medium : Zel::PtrInterface, Zel::Recycled {
  char bytes[300] = {};
};
struct Huge : Zel::PtrInterface, Zel::Recycled {
  char bytes[Zel::Recycled::maxRecycledSize] = {};
};

TEST(Recycled, DroppedBlocksServeTheNextObjectOfTheirSizeClassOnly) {
  if (!Zel::Recycled::recycling()) GTEST_SKIP() << "free lists are off under AddressSanitizer";
  const size_t before = Zel::Recycled::freeBlocks();
  const void* smallBlock;
  {
    Zel::Ptr<Small> s = Zel::allocate<Small>();
    smallBlock = s.ptr();
  }
  EXPECT_EQ(Zel::Recycled::freeBlocks(), before + 1);
  // Another size class does not take the small block.
  Zel::Ptr<Large> l = Zel::allocate<Large>();
  EXPECT_NE(static_cast<const void*>(l.ptr()), smallBlock);
  Zel::Ptr<Small> again = Zel::allocate<Small>();
  EXPECT_EQ(static_cast<const void*>(again.ptr()), smallBlock);
  EXPECT_EQ(Zel::Recycled::freeBlocks(), before);
  // Objects beyond the largest class come from the heap and are not kept.
  { Zel::Ptr<Huge> h = Zel::allocate<Huge>(); }
  EXPECT_EQ(Zel::Recycled::freeBlocks(), before);
}

TEST(Recycled, ListsAreBoundedAndPerThread) {
  if (!Zel::Recycled::recycling()) GTEST_SKIP() << "free lists are off under AddressSanitizer";
  const size_t before = Zel::Recycled::freeBlocks();
  std::vector<Zel::Ptr<Medium>> many;
  for (size_t i = 0; i < 2 * Zel::Recycled::maxFreeBlocks; ++i) {
    many.push_back(Zel::allocate<Medium>());
  }
  many.clear();
  EXPECT_EQ(Zel::Recycled::freeBlocks(), before + Zel::Recycled::maxFreeBlocks)
      << "a full list gives further blocks back to the heap";

  // An object dropped on another thread goes to that thread's list.
  Zel::Ptr<Small> s = Zel::allocate<Small>();
  const size_t mine = Zel::Recycled::freeBlocks();
  size_t theirs = 0;
  std::thread t([&] {
    s = nullptr;
    theirs = Zel::Recycled::freeBlocks();
  });
  t.join();
  EXPECT_EQ(theirs, 1u);
  EXPECT_EQ(Zel::Recycled::freeBlocks(), mine);
}

}  // namespace
