#pragma once
// RbTreeMap: the runtime's ordered keyed container, a thin wrapper over the
// standard library's red-black tree (std::set of entries ordered by key).
//
// Entries are `Entry { K key; V value; }`, the same shape as HashMap2018's, so
// iteration yields `.key` / `.value` (not first/second) in ascending key order
// under Less. Iteration through a non-const map yields Entry&, whose value may be
// changed in place; the key must not be changed (it would break the order).
// Iterators and V* results stay valid until their entry is erased (node based:
// inserting and erasing other keys moves nothing).
//
// The entries live in std::set nodes as non-const objects; the set hands them out
// as const because the whole element is its key, so the non-const iterator
// const_casts back, which is sound because only the value, which the order
// ignores, is meant to be changed.

#include <cstddef>
#include <functional>
#include <iterator>
#include <set>
#include <utility>

namespace Zel {

template <class K, class V, class Less = std::less<K>>
class RbTreeMap {
 public:
  struct Entry {
    K key;
    V value;
  };

 private:
  // Orders entries by key, and entries against bare keys (transparent lookup).
  struct EntryLess {
    using is_transparent = void;
    Less less;
    bool operator()(const Entry& a, const Entry& b) const { return less(a.key, b.key); }
    bool operator()(const Entry& a, const K& b) const { return less(a.key, b); }
    bool operator()(const K& a, const Entry& b) const { return less(a, b.key); }
  };
  using Set = std::set<Entry, EntryLess>;
  using SetIterator = typename Set::const_iterator;

  template <bool Const>
  class IteratorT {
   public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = std::conditional_t<Const, const Entry*, Entry*>;
    using reference = std::conditional_t<Const, const Entry&, Entry&>;

    IteratorT() = default;
    template <bool C = Const, class = std::enable_if_t<C>>
    IteratorT(const IteratorT<false>& o) : it_(o.it_) {}

    reference operator*() const { return const_cast<reference>(*it_); }
    pointer operator->() const { return &**this; }
    IteratorT& operator++() {
      ++it_;
      return *this;
    }
    IteratorT operator++(int) { return IteratorT(it_++); }
    IteratorT& operator--() {
      --it_;
      return *this;
    }
    IteratorT operator--(int) { return IteratorT(it_--); }
    friend bool operator==(const IteratorT& a, const IteratorT& b) { return a.it_ == b.it_; }

   private:
    friend class RbTreeMap;
    friend class IteratorT<!Const>;
    explicit IteratorT(SetIterator it) : it_(it) {}
    SetIterator it_;
  };

 public:
  using key_type = K;
  using mapped_type = V;
  using value_type = Entry;
  using size_type = size_t;
  using iterator = IteratorT<false>;
  using const_iterator = IteratorT<true>;

  RbTreeMap() = default;
  explicit RbTreeMap(const Less& less) : set_(EntryLess{less}) {}

  size_t size() const { return set_.size(); }
  bool empty() const { return set_.empty(); }

  V* find(const K& key) {
    const auto it = set_.find(key);
    return it == set_.end() ? nullptr : &const_cast<Entry&>(*it).value;
  }
  const V* find(const K& key) const {
    const auto it = set_.find(key);
    return it == set_.end() ? nullptr : &it->value;
  }

  // Inserts (key, value) when key is absent: {pointer to the new value, true}.
  // When present, leaves the map untouched: {pointer to the existing value, false}.
  std::pair<V*, bool> insert(const K& key, V value) { return insertImpl(key, std::move(value)); }
  std::pair<V*, bool> insert(K&& key, V value) {
    return insertImpl(std::move(key), std::move(value));
  }

  // Removes key's entry; true when there was one.
  bool erase(const K& key) {
    const auto it = set_.find(key);
    if (it == set_.end()) return false;
    set_.erase(it);
    return true;
  }
  // Removes the entry at `pos`; returns the iterator to the entry after it.
  iterator erase(const_iterator pos) { return iterator(set_.erase(pos.it_)); }

  void clear() { set_.clear(); }

  // The first entry whose key is not less than `key` (lower_bound), or end().
  iterator findGreaterOrEqual(const K& key) { return iterator(set_.lower_bound(key)); }
  const_iterator findGreaterOrEqual(const K& key) const {
    return const_iterator(set_.lower_bound(key));
  }

  iterator begin() { return iterator(set_.begin()); }
  iterator end() { return iterator(set_.end()); }
  const_iterator begin() const { return const_iterator(set_.begin()); }
  const_iterator end() const { return const_iterator(set_.end()); }
  const_iterator cbegin() const { return begin(); }
  const_iterator cend() const { return end(); }

 private:
  template <class KArg>
  std::pair<V*, bool> insertImpl(KArg&& key, V&& value) {
    const auto it = set_.lower_bound(key);
    if (it != set_.end() && !set_.key_comp()(key, *it)) {
      return {&const_cast<Entry&>(*it).value, false};
    }
    const auto at = set_.emplace_hint(it, Entry{std::forward<KArg>(key), std::move(value)});
    return {&const_cast<Entry&>(*at).value, true};
  }

  Set set_;
};

}  // namespace Zel
