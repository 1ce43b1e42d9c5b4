#pragma once
// Entity: the base of every generated entity type. An entity is reference counted,
// has a name (or a key whose string form serves as its name), a notifiee list of
// reactors, and a non-owning link to the parent whose collection holds it.

#include "platform/zel/NotifieeList.h"
#include "platform/zel/Ptr.h"
#include "platform/zel/Type.h"

namespace Zel {

namespace NboAttrLog {
class Writer;
}

class Entity : public PtrInterface {
 public:
  class NotifieeConst;
  // The replication adapter (AttrLogSa.h).
  class ZelNboAttrLogSa;
  using NotifieeListType = NotifieeList<NotifieeConst>;

  // The descriptor of the entity's most derived type.
  virtual const ZelType* fwkType() const = 0;
  // The entity's name: its key's string form for keyed types.
  virtual Name name() const = 0;
  // Restores the name of an entity rebuilt from a state backup. A named entity takes
  // it; a keyed entity's name is its key's form, and keys never change, so a backup
  // naming a keyed entity otherwise is refused with a RangeException.
  virtual void nameIsFromBackup(const Name& name);
  virtual NotifieeListType& notifieeList() const { return notifiees_; }

  // Reflection links, maintained by the collection or pointer that owns the entity.
  Entity* parent() const { return parent_; }
  AttributeId parentAttrId() const { return parentAttr_; }
  String parentAttrName() const;
  // "<parent's fullName>/<parentAttrName>/<name>", or the bare name at a root.
  String fullName() const;
  void parentIs(Entity* parent, AttributeId attr) {
    parent_ = parent;
    parentAttr_ = attr;
  }

  // Whether the entity can be mirrored into an attribute log (every generated type).
  virtual bool zelHasAttrLogInterface() const { return false; }
  // Makes a replication adapter of the entity's type, registered with the entity
  // while it lives; `writer` null for the receiving side (AttrLogSa.h).
  virtual Ptr<ZelNboAttrLogSa> zelNboAttrLogSaIs(NboAttrLog::Writer* writer, bool readOnly);

  // The descriptor of the reflection attributes that every entity type shares.
  static const ZelType& entityType();

 protected:
  Entity() = default;
  ~Entity() override = default;

  // Runs `f` on every registered reactor that handles attributes declared at
  // inheritance depth `Depth` (reactors of a base type do not see a derived type's
  // attributes). The entity keeps itself alive while it visits.
  template <class NotifieeT, unsigned Depth, class F>
  void visitNotifiees(F&& f) const;

 private:
  // parentAttr_ comes first so that it fills the tail padding of PtrInterface.
  AttributeId parentAttr_ = 0;
  mutable NotifieeListType notifiees_;
  Entity* parent_ = nullptr;
};

// Base of every generated reactor class. A reactor holds a reference to its
// notifier and is registered in the notifier's list while it has one.
class Entity::NotifieeConst {
 public:
  NotifieeConst(const NotifieeConst&) = delete;
  NotifieeConst& operator=(const NotifieeConst&) = delete;
  virtual ~NotifieeConst() { notifierBaseIs(nullptr); }

  bool isRegistered() const { return notifier_ != nullptr; }
  // Inheritance depth of the entity type this reactor class was generated for.
  unsigned depth() const { return depth_; }

 protected:
  explicit NotifieeConst(unsigned depth) : depth_(depth) {}
  const Ptr<const Entity>& notifierBase() const { return notifier_; }
  void notifierBaseIs(const Entity* n) {
    if (n == notifier_.ptr()) return;
    if (notifier_) notifier_->notifieeList().remove(this);
    notifier_ = n;
    if (n) n->notifieeList().add(this);
  }

 private:
  Ptr<const Entity> notifier_;
  unsigned depth_;
};

template <class NotifieeT, unsigned Depth, class F>
void Entity::visitNotifiees(F&& f) const {
  NotifieeListType& list = notifieeList();
  if (list.empty()) return;
  Ptr<const Entity> keep(this);
  list.visit([&](NotifieeConst* r) {
    if (Depth == 0 || r->depth() >= Depth) f(static_cast<NotifieeT*>(r));
  });
}

}  // namespace Zel

namespace Zel {

// The name of an entity that is keyed by a value: the key's human form.
template <class K>
Name nameOfKey(const K& k) {
  if constexpr (std::is_convertible_v<const K&, const String&>) {
    return k;
  } else if constexpr (requires { k.stringValue(); }) {
    return k.stringValue();
  } else {
    return valueToStrep(k);
  }
}

}  // namespace Zel
