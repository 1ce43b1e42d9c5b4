#include "platform/zel/LinkQueue.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Zel::LinkQueue;

template <class T>
std::vector<T> contents(const LinkQueue<T>& q) {
  return std::vector<T>(q.begin(), q.end());
}

// (Order, size and bound under random pushes and pops are checked against std::deque below.)
TEST(LinkQueueBasics, IterationWrapsAndFrontIsWritable) {
  LinkQueue<int> q(3);
  EXPECT_EQ(q.begin(), q.end());
  for (int i = 1; i <= 3; ++i) q.push(i);
  q.pop();
  q.push(4);  // wraps around the ring
  EXPECT_EQ(contents(q), (std::vector<int>{2, 3, 4}));
  q.front() = 20;
  EXPECT_EQ(contents(q), (std::vector<int>{20, 3, 4}));
}

TEST(LinkQueueBasics, MaxSizeIs) {
  LinkQueue<std::string> q(2);
  q.push("a");
  q.push("b");
  EXPECT_TRUE(q.full());
  q.maxSizeIs(4);
  EXPECT_FALSE(q.full());
  q.push("c");
  q.push("d");
  EXPECT_TRUE(q.full());
  q.pop();
  q.pop();
  q.push("e");     // c d e, wrapped
  q.maxSizeIs(3);  // shrinks the storage, keeps the order
  EXPECT_TRUE(q.full());
  EXPECT_EQ(contents(q), (std::vector<std::string>{"c", "d", "e"}));
  q.clear();
  q.maxSizeIs(0);
  EXPECT_TRUE(q.full());
}

TEST(LinkQueueBasics, LargeBoundAllocatesOnDemand) {
  // A bound far beyond memory (on any ABI) is fine until used.
  LinkQueue<int> q(std::numeric_limits<size_t>::max());
  for (int i = 0; i < 1000; ++i) q.push(i);
  EXPECT_EQ(q.size(), 1000u);
  EXPECT_EQ(q.front(), 0);
  EXPECT_EQ(q.back(), 999);
}

TEST(LinkQueueBasics, CopyMoveAndMoveOnlyElements) {
  LinkQueue<int> q(5);
  for (int i = 0; i < 5; ++i) q.push(i);
  q.pop();
  q.push(5);
  LinkQueue<int> copy(q);
  copy.pop();
  EXPECT_EQ(q.size(), 5u);
  LinkQueue<int> assigned(1);
  assigned = q;
  EXPECT_EQ(contents(assigned), contents(q));
  LinkQueue<int> moved(std::move(assigned));
  EXPECT_EQ(contents(moved), contents(q));
  EXPECT_TRUE(assigned.empty());  // NOLINT(bugprone-use-after-move)

  LinkQueue<std::unique_ptr<int>> owners(4);
  for (int i = 0; i < 4; ++i) owners.push(std::make_unique<int>(i));
  owners.pop();
  owners.push(std::make_unique<int>(4));
  int expected = 1;
  for (const auto& p : owners) EXPECT_EQ(*p, expected++);
}

TEST(LinkQueueDifferential, AgainstStdDeque) {
  std::mt19937 rng(5);
  LinkQueue<std::string> q(37);
  std::deque<std::string> ref;
  for (int i = 0; i < 20000; ++i) {
    if (rng() % 2 == 0 && !q.full()) {
      q.push(std::to_string(i));
      ref.push_back(std::to_string(i));
    } else if (!q.empty()) {
      ASSERT_EQ(q.front(), ref.front());
      q.pop();
      ref.pop_front();
    }
    ASSERT_EQ(q.size(), ref.size());
    ASSERT_EQ(q.full(), ref.size() == 37);
    if (!ref.empty()) {
      ASSERT_EQ(q.back(), ref.back());
    }
  }
  EXPECT_EQ(contents(q), std::vector<std::string>(ref.begin(), ref.end()));
}

TEST(LinkQueueDeathTest, PushWhenFullOrPopWhenEmpty) {
  LinkQueue<int> q(1);
  EXPECT_DEATH(q.pop(), "Assertion failed: !empty\\(\\)");
  q.push(1);
  EXPECT_DEATH(q.push(2), "Assertion failed: size\\(\\) < maxSize\\(\\)");
}

}  // namespace
