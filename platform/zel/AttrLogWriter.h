#pragma once
// The writing end of replication: one attribute log (Out) and the adapters of the
// entity trees mirrored into it.

#include <deque>
#include <unordered_map>
#include <vector>

#include "platform/zel/AttrLogSa.h"

namespace Zel::NboAttrLog {

class Writer : public PtrInterface {
 public:
  explicit Writer(Ptr<Out> out) : out_(std::move(out)) {}
  ~Writer() override;

  const Ptr<Out>& out() const { return out_; }

  // Mirrors `root` and everything it owns: its orphan and every attribute are written
  // as the buffer allows, then every change as it happens. Returns the root's adapter.
  Ptr<Entity::ZelNboAttrLogSa> rootIs(const Ptr<Entity>& root);
  // Stops mirroring a root (the mirror keeps what it has).
  void rootDel(const Entity* root);
  // Mirrors everything again from the current values, under new handles; for a mirror
  // that has been reset (Replica::clear) or has just connected.
  void resync();

  // Writes what waits for room, adapter by adapter in the order they began to wait,
  // until the buffer is full. The transport calls it after taking bytes away.
  void flowOut();
  // Whether anything waits for room.
  bool flowOutPending() const { return !pending_.empty(); }

  // The adapter mirroring `e` on this log, or null.
  Entity::ZelNboAttrLogSa* adapterOf(const Entity* e) const;
  // Holds back the record being written: it names an entity whose orphan is not yet
  // written (called while writing a reference).
  void deferRecord() { deferred_ = true; }

 private:
  friend class Zel::Entity::ZelNboAttrLogSa;
  // Numbers a new adapter and files it under its entity.
  void adopt(Entity::ZelNboAttrLogSa* sa);
  void forget(Entity::ZelNboAttrLogSa* sa);
  void enqueue(Entity::ZelNboAttrLogSa* sa);
  // Starts a record for the adapter's entity, selecting it first when needed.
  void select(uint32_t handle);

  Ptr<Out> out_;
  std::vector<Ptr<Entity::ZelNboAttrLogSa>> roots_;
  std::deque<Ptr<Entity::ZelNboAttrLogSa>> pending_;
  std::unordered_map<const Entity*, Entity::ZelNboAttrLogSa*> adapters_;
  uint32_t nextHandle_ = 1;
  uint32_t selected_ = 0;
  bool deferred_ = false;
  bool flowing_ = false;
};

}  // namespace Zel::NboAttrLog
