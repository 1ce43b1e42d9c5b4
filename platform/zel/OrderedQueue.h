#pragma once
// OrderedQueue<I, V>: values in the order they were appended, each under a
// sequence index that only grows. The generated queue attribute adds notification
// and keeps the next index in a metadata attribute, so that a mirror continues the
// sequence where the original left off; this class only keeps the entries.

#include "platform/zel/Collections.h"
#include "platform/zel/RbTreeMap.h"

namespace Zel {

template <class I, class V>
class OrderedQueue : public LazyMap<RbTreeMap<I, V>> {
 public:
  const V* find(const I& i) const { return this->map().find(i); }
  // Inserts or overwrites; true when the entry is new or its value changed.
  bool set(const I& i, const V& v) {
    auto [slot, inserted] = this->made().insert(i, v);
    if (inserted) return true;
    if (*slot == v) return false;
    *slot = v;
    return true;
  }
  bool del(const I& i) {
    auto* m = this->existing();
    return m && m->erase(i);
  }
  // The lowest and the highest index; only when not empty.
  const I& headIndex() const { return this->map().begin()->key; }
  const I& tailIndex() const {
    auto it = this->map().end();
    return (--it)->key;
  }
};

}  // namespace Zel
