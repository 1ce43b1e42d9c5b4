#pragma once
// Replication adapters: an entity mirrored into an attribute log, and a received log
// applied back onto entities in another process.
//
// Every generated entity type X has X::ZelNboAttrLogSa, derived from its base type's
// adapter (or from Entity::ZelNboAttrLogSa). The generated part is the switch on
// attribute ids (how to write, read, create and delete what each attribute holds);
// the mechanics (dirty flags, flow-out, child adapters, handles) live here once.
//
// Records, in the framing of NboAttrLog.h (id, length, value):
//   select     id selectRecord; value: a handle (U32). The records that follow are
//              for the entity with that handle.
//   orphan     id orphanRecord; value: handle, parent handle (0 for a root), the
//              parent's attribute id (U32 each); the key under which the parent's
//              collection holds it (a String of the key's encoding, empty for a root
//              or a single child); the qualified type name (String); then the
//              construction arguments: the keys of every level (the name for an
//              entity created by name), then the inits. An orphan selects the entity
//              it creates; its attributes follow as ordinary records.
//   attribute  id: the attribute's; value: its encoding. A reference is the handle
//              of the entity it refers to: 0 for null, unmirroredHandle for an
//              object that is not mirrored on this log (the mirror keeps null).
//   entry      id: the collection's; value: an operation (U8: entrySet, entryDel),
//              the key, and for entrySet the value (none for sets; a handle for
//              references). Child entities are created by their orphans, so their
//              collections carry deletions only.
// Handles are numbered from 1 by the writer, in the order its adapters are made.
// Attributes travel with their current values: a change made while the output is
// full marks the attribute (or the entry's key) dirty, and the next flow-out writes
// what it holds then, once however often it changed.

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/zel/Entity.h"
#include "platform/zel/NboAttrLog.h"

namespace Zel {

namespace NboAttrLog {

constexpr AttributeId selectRecord = 0xFFFFFF01;
constexpr AttributeId orphanRecord = 0xFFFFFF02;
constexpr uint8_t entrySet = 1;
constexpr uint8_t entryDel = 2;
constexpr uint32_t unmirroredHandle = 0xFFFFFFFF;

class Writer;
class Replica;

// What an adapter still has to write: its orphan, dirty attributes, dirty keys of
// its collections (as their encodings), and where the last flow-out stopped.
class FlowOut : public PtrInterface {
 public:
  bool empty() const { return !orphanPending && dirty.empty(); }

  bool orphanPending = false;
  // Per attribute id: the dirty keys of a collection (empty for a plain attribute).
  std::map<AttributeId, std::set<std::string>> dirty;
  AttributeId next = 0;
};

// The encoding of a value (a collection key, say) as a string of octets.
template <class K>
std::string encoded(const K& k) {
  Out out;
  attrLogWrite(out, k);
  return std::string(out.bytes().begin(), out.bytes().end());
}

}  // namespace NboAttrLog

class Entity::ZelNboAttrLogSa : public PtrInterface {
 public:
  const Ptr<Entity>& entity() const { return entity_; }
  // The entity's number on the log (0 until the writer numbers it).
  uint32_t handle() const { return handle_; }
  NboAttrLog::Writer* writer() const { return writer_; }
  // A read-only adapter serves a read-only proxy: a local change of the entity fails
  // naming the attribute, and a received update fails as a write to a read-only proxy.
  // An entity mirrored by a Replica refuses local changes too (the mirror would
  // silently diverge); it changes only by received records. The refusal is thrown
  // from the reactor, after the entity has stored the value: it reports a
  // programming error, it does not undo it.
  bool readOnly() const { return readOnly_; }

  // The flow-out state (null when nothing waits). freeResyncState drops `f` when it is
  // this adapter's, so that a resynchronisation starts over from the current values.
  const Ptr<NboAttrLog::FlowOut>& flowOut() const { return flowOut_; }
  void flowOutIs(const Ptr<NboAttrLog::FlowOut>& f) { flowOut_ = f; }
  void freeResyncState(const Ptr<NboAttrLog::FlowOut>& f);

  // Writes the orphan and the dirty attributes and entries, in id order from `from`
  // (then from the lowest), each with its current value. Returns 0 when everything is
  // written, otherwise the id at which to continue once the buffer has room again.
  AttributeId handleAttrFlowOut(AttributeId from);
  // Writes the orphan record that lets a mirror create the entity.
  void doSerializeOrphan();
  // Marks every replicated attribute and entry dirty and the orphan pending.
  void resyncIs();

  // Applies a received record for attribute `id`, `in` at its value. The record is
  // decoded whole before anything changes; a bad one throws RangeException.
  void doHandleAttrDeserialization(AttributeId id, NboAttrLog::In& in, NboAttrLog::Replica& r);
  // A second adapter of the same type for the same entity (not attached to a log).
  virtual Ptr<ZelNboAttrLogSa> cloneSa() const = 0;

  // Called by the generated reactor: a plain attribute or reference changed, the
  // single child changed, or the entry at `key` of a collection changed (`owned`: a
  // collection of child entities).
  void attrChanged(AttributeId id);
  void childChanged(AttributeId id);
  template <class K>
  void entryChanged(AttributeId id, const K& key, bool owned) {
    if (suppressed_ || (!writer_ && !readOnly_ && !replica_)) return;
    entryChangedAt(id, NboAttrLog::encoded(key), owned);
  }

  // Receiving side: the child adapters this adapter made, by attribute and key.
  ZelNboAttrLogSa* child(AttributeId id, const std::string& key) const;

 protected:
  struct NoReactor {};
  ZelNboAttrLogSa(Ptr<Entity> e, NboAttrLog::Writer* w, bool readOnly, NoReactor);
  ~ZelNboAttrLogSa() override;
  void reactorIs(std::unique_ptr<NotifieeConst> r) { reactor_ = std::move(r); }

  // The switch on ids, generated per type; each gives false (or null) for an id that
  // is not its type's own, after asking its base type's adapter.
  // Writes the value of a plain attribute or reference.
  virtual bool writeAttr(AttributeId id, NboAttrLog::Out& out) const;
  // Writes the entry of a value or reference collection at the encoded key: entrySet
  // with its value if present, else entryDel.
  virtual bool writeEntry(AttributeId id, NboAttrLog::In& key, NboAttrLog::Out& out) const;
  // Appends the encodings of the keys of a collection.
  virtual bool entryKeys(AttributeId id, std::vector<std::string>& keys) const;
  // The child entity held at the encoded key (or the single child).
  virtual Ptr<Entity> childAt(AttributeId id, NboAttrLog::In& key) const;
  // Decodes a record and applies it through the entity's ordinary mutators.
  virtual bool readAttr(AttributeId id, NboAttrLog::In& in, NboAttrLog::Replica& r);
  // Reads a child's construction arguments and creates (or finds) it.
  virtual Ptr<Entity> makeChild(AttributeId id, NboAttrLog::In& args);
  // Writes the entity's construction arguments (most derived type only).
  virtual void writeConstruction(NboAttrLog::Out& out) const = 0;

 private:
  friend class NboAttrLog::Writer;
  friend class NboAttrLog::Replica;
  void entryChangedAt(AttributeId id, const std::string& key, bool owned);
  void markDirty(AttributeId id, const std::string* key);
  // Writes one record of attribute `id` (at `key` for collections); false when it
  // must wait (a reference to an entity whose orphan is not yet written).
  bool writeRecord(AttributeId id, const std::string* key);
  // Brings the child adapter at (id, key) in line with the entity's child there.
  void syncChild(AttributeId id, const std::string& key);
  void writeDeletion(AttributeId id, const std::string& key);
  void detach();
  [[noreturn]] void refuseLocalWrite(AttributeId id) const;

  Ptr<Entity> entity_;
  NboAttrLog::Writer* writer_;
  NboAttrLog::Replica* replica_ = nullptr;  // the receiving side
  std::unique_ptr<NotifieeConst> reactor_;
  Ptr<NboAttrLog::FlowOut> flowOut_;
  // Child adapters by attribute id and key encoding; made on first use.
  std::unique_ptr<std::map<std::pair<AttributeId, std::string>, Ptr<ZelNboAttrLogSa>>> children_;
  // Where the parent holds the entity (for its orphan record).
  std::string parentKey_;
  uint32_t parentHandle_ = 0;
  AttributeId parentAttr_ = 0;
  uint32_t handle_ = 0;
  bool readOnly_;
  bool suppressed_ = false;
  bool queued_ = false;
  bool detached_ = false;
  bool orphanWritten_ = false;
};

namespace NboAttrLog {

// The handle a reference is written as (see the record layout above). A reference
// to a mirrored entity whose orphan is not yet written makes the writer hold the
// record back (Writer::deferRecord) until it is.
uint32_t handleOfEntity(Writer* w, const Entity* e);
template <class T>
uint32_t refHandle(Writer* w, const T* p) {
  if (!p) return 0;
  if constexpr (std::is_base_of_v<Entity, T>) {
    return handleOfEntity(w, p);
  } else {
    return unmirroredHandle;
  }
}

// Refuses an entry operation other than entrySet and entryDel, or a set where only
// deletions travel.
void refuseEntryOp(uint8_t op);

}  // namespace NboAttrLog

}  // namespace Zel
