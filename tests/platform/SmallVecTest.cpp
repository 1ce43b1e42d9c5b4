// SmallVec: inline storage up to N, one heap buffer beyond; SmallIndexColl: the
// index-keyed collection on top of it.

#include "platform/zel/SmallVec.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace {

using Vec = Zel::SmallVec<uint32_t, 4>;

std::vector<uint32_t> contents(const Vec& v) { return {v.begin(), v.end()}; }

Vec filled(uint32_t n) {
  Vec v;
  for (uint32_t i = 0; i < n; ++i) v.push_back(100 + i);
  return v;
}

TEST(SmallVec, StaysInlineUpToNThenMovesEverythingToTheHeap) {
  Vec v = filled(4);
  EXPECT_TRUE(v.isInline());
  for (uint32_t i = 4; i < 20; ++i) v.push_back(100 + i);
  EXPECT_FALSE(v.isInline());
  EXPECT_EQ(v.capacity(), 32u);  // doubled from 4
  EXPECT_EQ(contents(v), contents(filled(20)));

  // clear() keeps the buffer; resize() fills and shrinks.
  v.clear();
  EXPECT_EQ(v.capacity(), 32u);
  v.resize(3, 7);
  v.resize(2);
  EXPECT_EQ(contents(v), (std::vector<uint32_t>{7, 7}));
}

TEST(SmallVec, CopiesAndMovesKeepElementsAndOwnership) {
  for (uint32_t n : {3u, 9u}) {  // inline and heap sources
    Vec src = filled(n);
    Vec copy(src);
    EXPECT_EQ(contents(copy), contents(src)) << n;
    copy[0] = 1;
    EXPECT_EQ(src[0], 100u) << "the copy shares storage with its source, n=" << n;

    Vec assigned = filled(12);
    assigned = src;
    EXPECT_EQ(contents(assigned), contents(src)) << n;

    const uint32_t* heap = src.data();
    Vec moved(std::move(src));
    EXPECT_EQ(contents(moved), contents(filled(n))) << n;
    EXPECT_TRUE(src.empty());
    EXPECT_TRUE(src.isInline());
    if (n > 4) {
      EXPECT_EQ(moved.data(), heap) << "a heap buffer is handed over, not copied";
    } else {
      EXPECT_TRUE(moved.isInline());
    }

    Vec target = filled(6);
    target = std::move(moved);
    EXPECT_EQ(contents(target), contents(filled(n))) << n;
    Vec& self = target;
    target = std::move(self);
    EXPECT_EQ(contents(target), contents(filled(n))) << "self-move lost the elements";
    src.push_back(5);  // a moved-from vector is usable
    EXPECT_EQ(contents(src), (std::vector<uint32_t>{5}));
  }
}

TEST(SmallIndexColl, InsertsOverwritesDeletesAndReportsChanges) {
  Zel::SmallIndexColl<uint32_t, 2> c;
  EXPECT_EQ(c.at(0, 99), 99u);
  EXPECT_TRUE(c.set(0, 10));
  EXPECT_TRUE(c.set(1, 11));
  EXPECT_FALSE(c.set(1, 11));  // unchanged
  EXPECT_TRUE(c.set(1, 12));   // overwritten
  EXPECT_EQ(c.at(1, 0), 12u);
  EXPECT_TRUE(c.isInline());

  // An index past the end leaves absent entries below it.
  EXPECT_TRUE(c.set(5, 0));
  EXPECT_EQ(c.size(), 3u);
  EXPECT_EQ(c.indexEnd(), 6u);
  EXPECT_FALSE(c.isInline());
  EXPECT_EQ(c.find(3), nullptr);
  ASSERT_NE(c.find(5), nullptr);
  EXPECT_EQ(*c.find(5), 0u);  // a stored 0 is present, unlike an absent entry
  EXPECT_TRUE(c.set(3, 13));

  // Deleting leaves the other indexes in place; trailing gaps are trimmed.
  EXPECT_TRUE(c.del(0));
  EXPECT_FALSE(c.del(0));
  EXPECT_FALSE(c.del(4));
  EXPECT_EQ(c.at(1, 0), 12u);
  EXPECT_TRUE(c.del(5));
  EXPECT_EQ(c.indexEnd(), 4u);
  EXPECT_TRUE(c.set(0, 20));
  EXPECT_EQ(c.size(), 3u);

  // Gaps past the first 64 indexes.
  EXPECT_TRUE(c.set(70, 7));
  EXPECT_EQ(c.find(64), nullptr);
  EXPECT_EQ(c.at(70, 0), 7u);
  EXPECT_TRUE(c.set(65, 6));
  EXPECT_EQ(c.size(), 5u);
  EXPECT_TRUE(c.del(70));
  EXPECT_EQ(c.indexEnd(), 66u);
  EXPECT_TRUE(c.del(65));
  EXPECT_EQ(c.indexEnd(), 4u);
  EXPECT_TRUE(c.set(4, 14));  // appended right after a trimmed gap: no stale mark
  EXPECT_EQ(c.at(4, 0), 14u);
  EXPECT_EQ(c.size(), 4u);
}

}  // namespace
