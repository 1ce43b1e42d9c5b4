#pragma once
// The storage behind generated collection attributes. Generated code adds the
// notification; these classes only keep the entries. All are hash maps keyed by
// the natural key, so no lookup scans.
//   ValueColl<K, V>   a map of plain values (x(key) gives a default when absent)
//   ValueSet<K>       a set of keys
//   EntityColl<K, C>  a map of entity references: owned children, or (with the
//                     parent link left alone) references the map does not own

#include <vector>

#include "platform/zel/HashMap2018.h"
#include "platform/zel/Ptr.h"

namespace Zel {

// The keys of a map in its order: a snapshot, so callers may change the map while
// they walk it (deleting every entry with a notification each, for example).
template <class Map>
auto keysOf(const Map& map) {
  std::vector<std::remove_cvref_t<decltype(map.begin()->key)>> ks;
  ks.reserve(map.size());
  for (const auto& e : map) ks.push_back(e.key);
  return ks;
}

template <class K, class V>
class ValueColl {
 public:
  using Map = HashMap2018<K, V>;

  const V* find(const K& k) const { return map_.find(k); }
  V at(const K& k, const V& absent) const {
    const V* v = map_.find(k);
    return v ? *v : absent;
  }
  // Inserts or overwrites; true when the entry is new or its value changed.
  bool set(const K& k, const V& v) {
    auto [slot, inserted] = map_.insert(k, v);
    if (inserted) return true;
    if (*slot == v) return false;
    *slot = v;
    return true;
  }
  bool del(const K& k) { return map_.erase(k); }
  size_t size() const { return map_.size(); }
  std::vector<K> keys() const { return keysOf(map_); }
  const Map& map() const { return map_; }

 private:
  Map map_;
};

template <class K>
class ValueSet {
 public:
  struct None {};
  using Map = HashMap2018<K, None>;

  bool has(const K& k) const { return map_.find(k) != nullptr; }
  bool add(const K& k) { return map_.insert(k, None{}).second; }
  bool del(const K& k) { return map_.erase(k); }
  size_t size() const { return map_.size(); }
  std::vector<K> keys() const { return keysOf(map_); }
  const Map& map() const { return map_; }

 private:
  Map map_;
};

template <class K, class C>
class EntityColl {
 public:
  using Map = HashMap2018<K, Ptr<C>>;

  Ptr<C> find(const K& k) const {
    const Ptr<C>* c = map_.find(k);
    return c ? *c : Ptr<C>();
  }
  void add(const K& k, const Ptr<C>& c) { map_.insert(k, c); }
  // Inserts or replaces; true when the entry is new or now refers to another object.
  bool set(const K& k, const Ptr<C>& c) {
    auto [slot, inserted] = map_.insert(k, c);
    if (inserted) return true;
    if (*slot == c) return false;
    *slot = c;
    return true;
  }
  // Removes the entry and hands back the collection's reference to the child.
  Ptr<C> del(const K& k) {
    Ptr<C>* c = map_.find(k);
    if (!c) return Ptr<C>();
    Ptr<C> child = std::move(*c);
    map_.erase(k);
    return child;
  }
  size_t size() const { return map_.size(); }
  std::vector<K> keys() const { return keysOf(map_); }
  const Map& map() const { return map_; }

 private:
  Map map_;
};

}  // namespace Zel
