#pragma once
// OrderedQueue<I, V>: values in the order they were appended, each under a
// sequence index that only grows. The generated queue attribute adds notification
// and keeps the next index in a metadata attribute, so that a mirror continues the
// sequence where the original left off; this class only keeps the entries.

#include "platform/zel/Collections.h"
#include "platform/zel/RbTreeMap.h"

namespace Zel {

template <class I, class V>
class OrderedQueue {
 public:
  using Map = RbTreeMap<I, V>;

  const V* find(const I& i) const { return map_.find(i); }
  // Inserts or overwrites; true when the entry is new or its value changed.
  bool set(const I& i, const V& v) {
    auto [slot, inserted] = map_.insert(i, v);
    if (inserted) return true;
    if (*slot == v) return false;
    *slot = v;
    return true;
  }
  bool del(const I& i) { return map_.erase(i); }
  size_t size() const { return map_.size(); }
  bool empty() const { return map_.empty(); }
  // The lowest and the highest index; only when not empty.
  const I& headIndex() const { return map_.begin()->key; }
  const I& tailIndex() const {
    auto it = map_.end();
    return (--it)->key;
  }
  std::vector<I> keys() const { return keysOf(map_); }
  const Map& map() const { return map_; }

 private:
  Map map_;
};

}  // namespace Zel
