#pragma once
// The reading end of replication: applies a received attribute log, creating the
// mirrored entities from their orphan records and updating them through their
// ordinary mutators, so that reactors in this process see every change once.
//
// The log comes from another process and is not trusted: a truncated or corrupt
// record is refused with a RangeException, and the entity it names is left as it
// was (records before it stay applied).

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/zel/AttrLogSa.h"

namespace Zel::NboAttrLog {

// Makes the root entity an orphan record describes from its construction arguments
// (generated per entity type).
using OrphanFactory = Ptr<Entity> (*)(In& args);
void orphanFactoryIs(const ZelType* type, OrphanFactory f);
OrphanFactory orphanFactory(const ZelType* type);

class Replica : public PtrInterface {
 public:
  // readOnly: the mirrored entities' adapters refuse local changes (naming the
  // attribute) and, as proxies, refuse further received updates.
  explicit Replica(bool readOnly = false) : readOnly_(readOnly) {}
  ~Replica() override;

  // Applies every record of `in`; stops at the first bad one by throwing.
  void apply(In& in);
  // Applies the next record of `in`; false when there is none.
  bool applyNext(In& in);
  // Applies the records in `data`; records may not span calls.
  void apply(const uint8_t* data, size_t len);

  // The mirrored roots, in the order their orphans came.
  std::vector<Ptr<Entity>> roots() const;
  // The entity a handle names, or null.
  Entity* entity(uint32_t handle) const;
  size_t entities() const { return byHandle_.size(); }
  // References to objects that were not mirrored (kept as null).
  size_t unresolvedReferences() const { return unresolved_; }
  void unresolvedReferenceIs() { ++unresolved_; }
  // Forgets every mirrored entity (before a resynchronisation).
  void clear();

 private:
  friend class Zel::Entity::ZelNboAttrLogSa;
  void applyRecord(AttributeId id, In& in);
  void applyOrphan(In& in);
  void adopt(uint32_t handle, Entity::ZelNboAttrLogSa* sa);
  void forget(const Entity::ZelNboAttrLogSa* sa);

  std::vector<Ptr<Entity::ZelNboAttrLogSa>> roots_;
  std::unordered_map<uint32_t, Entity::ZelNboAttrLogSa*> byHandle_;
  Entity::ZelNboAttrLogSa* selected_ = nullptr;
  size_t unresolved_ = 0;
  bool readOnly_;
};

template <class T>
Ptr<T> refAt(Replica& r, uint32_t handle) {
  if (handle == 0) return nullptr;
  if (handle == unmirroredHandle) {
    r.unresolvedReferenceIs();
    return nullptr;
  }
  if constexpr (std::is_base_of_v<Entity, T>) {
    Entity* e = r.entity(handle);
    if (!e)
      throwRangeException("NboAttrLog: reference to unknown handle " + std::to_string(handle));
    if (!e->fwkType()->isKindOf(&std::remove_const_t<T>::zelType())) {
      throwRangeException("NboAttrLog: reference to handle " + std::to_string(handle) +
                          " of type " + e->fwkType()->name());
    }
    return Ptr<T>(static_cast<T*>(e));
  } else {
    throwRangeException("NboAttrLog: reference to handle " + std::to_string(handle) +
                        " where only unmirrored objects are possible");
  }
}

}  // namespace Zel::NboAttrLog
