#pragma once
// The storage behind generated collection attributes. Generated code adds the
// notification; these classes only keep the entries. All are hash maps keyed by
// the natural key, so no lookup scans.
//   ValueColl<K, V>   a map of plain values (x(key) gives a default when absent)
//   ValueSet<K>       a set of keys
//   EntityColl<K, C>  a map of entity references: owned children, or (with the
//                     parent link left alone) references the map does not own
//
// Most collections of most entities stay empty, so each holds its map through one
// pointer that is null until the first insertion: an empty collection costs one
// pointer. The map, once made, stays until the collection is destroyed.

#include <memory>
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

// A map made on first use; reads of a collection that was never written see one
// shared empty map.
template <class M>
class LazyMap {
 public:
  using Map = M;

  const Map& map() const { return map_ ? *map_ : none(); }
  size_t size() const { return map_ ? map_->size() : 0; }
  bool empty() const { return size() == 0; }
  auto keys() const { return keysOf(map()); }

 protected:
  Map& made() {
    if (!map_) map_ = std::make_unique<Map>();
    return *map_;
  }
  Map* existing() { return map_.get(); }

 private:
  static const Map& none() {
    static const Map e;
    return e;
  }
  std::unique_ptr<Map> map_;
};

template <class K, class V>
class ValueColl : public LazyMap<HashMap2018<K, V>> {
 public:
  const V* find(const K& k) const { return this->map().find(k); }
  V at(const K& k, const V& absent) const {
    const V* v = find(k);
    return v ? *v : absent;
  }
  // Inserts or overwrites; true when the entry is new or its value changed.
  bool set(const K& k, const V& v) {
    auto [slot, inserted] = this->made().insert(k, v);
    if (inserted) return true;
    if (*slot == v) return false;
    *slot = v;
    return true;
  }
  bool del(const K& k) {
    auto* m = this->existing();
    return m && m->erase(k);
  }
};

// The value of a set's entries.
struct SetMember {};

template <class K>
class ValueSet : public LazyMap<HashMap2018<K, SetMember>> {
 public:
  bool has(const K& k) const { return this->map().find(k) != nullptr; }
  bool add(const K& k) { return this->made().insert(k, SetMember{}).second; }
  bool del(const K& k) {
    auto* m = this->existing();
    return m && m->erase(k);
  }
};

template <class K, class C>
class EntityColl : public LazyMap<HashMap2018<K, Ptr<C>>> {
 public:
  Ptr<C> find(const K& k) const {
    const Ptr<C>* c = this->map().find(k);
    return c ? *c : Ptr<C>();
  }
  void add(const K& k, const Ptr<C>& c) { this->made().insert(k, c); }
  // Inserts or replaces; true when the entry is new or now refers to another object.
  bool set(const K& k, const Ptr<C>& c) {
    auto [slot, inserted] = this->made().insert(k, c);
    if (inserted) return true;
    if (*slot == c) return false;
    *slot = c;
    return true;
  }
  // Removes the entry and hands back the collection's reference to the child.
  Ptr<C> del(const K& k) {
    auto* m = this->existing();
    Ptr<C>* c = m ? m->find(k) : nullptr;
    if (!c) return Ptr<C>();
    Ptr<C> child = std::move(*c);
    m->erase(k);
    return child;
  }
};

// An empty collection costs one pointer.
static_assert(sizeof(ValueColl<uint32_t, uint32_t>) == sizeof(void*));
static_assert(sizeof(ValueSet<uint32_t>) == sizeof(void*));
static_assert(sizeof(EntityColl<uint32_t, PtrInterface>) == sizeof(void*));
}  // namespace Zel
