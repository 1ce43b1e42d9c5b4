#include "platform/zel/RbTreeMap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/zel/String.h"

namespace {

using Zel::RbTreeMap;
using Zel::String;

// (Insert, erase and lookups at random are checked against std::map below.)
TEST(RbTreeMapBasics, EmptyMapStablePointersAndClear) {
  RbTreeMap<int, String> m;
  EXPECT_EQ(m.findGreaterOrEqual(0), m.end());
  String* v = m.insert(3, String("three")).first;
  EXPECT_EQ(m.insert(3, String("drei")).first, v);
  m.insert(1, String("one"));
  EXPECT_TRUE(m.erase(1));
  EXPECT_EQ(v, m.find(3));  // node based: other entries do not move
  m.clear();
  EXPECT_TRUE(m.empty());
}

TEST(RbTreeMapIteration, KeyOrderWithKeyAndValue) {
  RbTreeMap<int, int> m;
  for (int k : {5, 1, 9, 3, 7}) m.insert(k, k * 10);
  std::vector<int> keys;
  for (auto& e : m) {
    keys.push_back(e.key);
    EXPECT_EQ(e.value, e.key * 10);
    e.value += 1;  // values are writable through a non-const map
  }
  EXPECT_EQ(keys, (std::vector<int>{1, 3, 5, 7, 9}));
  EXPECT_EQ(*m.find(7), 71);
  const auto& cm = m;
  static_assert(std::is_same_v<decltype(*cm.begin()), const RbTreeMap<int, int>::Entry&>);
  static_assert(std::is_same_v<decltype(*m.begin()), RbTreeMap<int, int>::Entry&>);
  static_assert(std::bidirectional_iterator<RbTreeMap<int, int>::iterator>);
  static_assert(std::bidirectional_iterator<RbTreeMap<int, int>::const_iterator>);
  RbTreeMap<int, int>::const_iterator last = std::prev(cm.end());
  EXPECT_EQ(last->key, 9);

  RbTreeMap<int, int, std::greater<int>> descending;
  for (int k = 0; k < 5; ++k) descending.insert(k, k);
  keys.clear();
  for (const auto& e : descending) keys.push_back(e.key);
  EXPECT_EQ(keys, (std::vector<int>{4, 3, 2, 1, 0}));
}

TEST(RbTreeMapIteration, FindGreaterOrEqualAndEraseByIterator) {
  RbTreeMap<int, int> m;
  for (int k = 10; k <= 50; k += 10) m.insert(k, k);
  // Walking on from the bound.
  std::vector<int> rest;
  for (auto it = m.findGreaterOrEqual(25); it != m.end(); ++it) rest.push_back(it->key);
  EXPECT_EQ(rest, (std::vector<int>{30, 40, 50}));

  // Erasing by iterator returns the next.
  for (int k = 0; k < 10; ++k) m.insert(k, k);
  for (auto it = m.begin(); it != m.end();) {
    if (it->key % 2 == 0) {
      it = m.erase(it);
    } else {
      ++it;
    }
  }
  std::vector<int> keys;
  for (const auto& e : m) keys.push_back(e.key);
  EXPECT_EQ(keys, (std::vector<int>{1, 3, 5, 7, 9}));
}

TEST(RbTreeMapKeys, StringKeysAndCopies) {
  RbTreeMap<String, int> m;
  m.insert(String("pear"), 1);
  m.insert(String("apple"), 2);
  m.insert(String("fig"), 3);
  EXPECT_EQ(m.begin()->key, "apple");
  EXPECT_EQ(m.findGreaterOrEqual(String("b"))->key, "fig");
  RbTreeMap<String, int> copy(m);
  copy.erase(String("fig"));
  EXPECT_EQ(m.size(), 3u);
  EXPECT_EQ(copy.size(), 2u);
}

TEST(RbTreeMapDifferential, AgainstStdMap) {
  std::mt19937 rng(4242);
  RbTreeMap<uint32_t, uint64_t> m;
  std::map<uint32_t, uint64_t> ref;
  for (int i = 0; i < 50000; ++i) {
    const uint32_t key = rng() % 2000;
    switch (rng() % 4) {
      case 0:
      case 1: {
        const auto [v, inserted] = m.insert(key, i);
        const auto [it, refInserted] = ref.try_emplace(key, i);
        ASSERT_EQ(inserted, refInserted);
        ASSERT_EQ(*v, it->second);
        break;
      }
      case 2:
        ASSERT_EQ(m.erase(key), ref.erase(key) == 1);
        break;
      default: {
        const auto it = m.findGreaterOrEqual(key);
        const auto refIt = ref.lower_bound(key);
        ASSERT_EQ(it == m.end(), refIt == ref.end());
        if (refIt != ref.end()) {
          ASSERT_EQ(it->key, refIt->first);
        }
        break;
      }
    }
    ASSERT_EQ(m.size(), ref.size());
  }
  std::vector<std::pair<uint32_t, uint64_t>> a, b(ref.begin(), ref.end());
  for (const auto& e : m) a.emplace_back(e.key, e.value);
  EXPECT_EQ(a, b);
}

}  // namespace
