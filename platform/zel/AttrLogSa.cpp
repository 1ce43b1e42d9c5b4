#include "platform/zel/AttrLogSa.h"

#include <algorithm>

#include "platform/zel/AttrLogReplica.h"
#include "platform/zel/AttrLogWriter.h"
#include "platform/zel/Exception.h"

namespace Zel {

using Sa = Entity::ZelNboAttrLogSa;

namespace {

// How replication carries an attribute of each kind.
enum class Shape { none, plain, entries, children, child };

Shape shapeOf(const Entity& e, AttributeId id) {
  const AttrDesc* a = e.fwkType()->attr(id);
  if (!a) return Shape::none;
  switch (a->kind) {
    case AttrKind::mutableAttr:
    case AttrKind::reference:
      return Shape::plain;
    case AttrKind::valueCollection:
    case AttrKind::referenceCollection:
    case AttrKind::queue:
      return Shape::entries;
    case AttrKind::entityCollection:
      return Shape::children;
    case AttrKind::instantiating:
      return Shape::child;
    default:
      return Shape::none;
  }
}

NboAttrLog::In keyIn(const std::string& key) {
  return NboAttrLog::In::value(reinterpret_cast<const uint8_t*>(key.data()), key.size());
}

}  // namespace

Sa::ZelNboAttrLogSa(Ptr<Entity> e, NboAttrLog::Writer* w, bool readOnly, NoReactor)
    : entity_(std::move(e)), writer_(w), readOnly_(readOnly) {}

Sa::~ZelNboAttrLogSa() = default;

void Sa::freeResyncState(const Ptr<NboAttrLog::FlowOut>& f) {
  if (f == flowOut_) flowOut_ = nullptr;
}

void Sa::attrChanged(AttributeId id) {
  if (suppressed_) return;
  if (readOnly_ || replica_) refuseLocalWrite(id);
  if (!writer_) return;
  if (writer_->flowOutPending() || writer_->out()->full() || !writeRecord(id, nullptr)) {
    markDirty(id, nullptr);
    writer_->enqueue(this);
    writer_->flowOut();
  }
}

void Sa::childChanged(AttributeId id) {
  if (suppressed_) return;
  entryChangedAt(id, std::string(), true);
}

void Sa::entryChangedAt(AttributeId id, const std::string& key, bool owned) {
  if (readOnly_ || replica_) refuseLocalWrite(id);
  if (!writer_) return;
  if (owned && !writer_->flowOutPending() && !writer_->out()->full()) {
    syncChild(id, key);
  } else if (owned || writer_->flowOutPending() || writer_->out()->full() ||
             !writeRecord(id, &key)) {
    markDirty(id, &key);
    writer_->enqueue(this);
  }
  // What waits (a new child's orphan and attributes, say) goes out while there is room.
  writer_->flowOut();
}

void Sa::markDirty(AttributeId id, const std::string* key) {
  if (!flowOut_) flowOut_ = new NboAttrLog::FlowOut;
  std::set<std::string>& keys = flowOut_->dirty[id];
  if (key) keys.insert(*key);
}

void Sa::resyncIs() {
  flowOut_ = new NboAttrLog::FlowOut;
  flowOut_->orphanPending = true;
  orphanWritten_ = false;
  for (const ZelType* t = entity_->fwkType(); t; t = t->base()) {
    for (const AttrDesc& a : t->ownAttrs()) {
      switch (shapeOf(*entity_, a.id)) {
        case Shape::plain:
          flowOut_->dirty[a.id];
          break;
        case Shape::entries:
        case Shape::children: {
          std::vector<std::string> keys;
          entryKeys(a.id, keys);
          if (!keys.empty()) flowOut_->dirty[a.id].insert(keys.begin(), keys.end());
          break;
        }
        case Shape::child:
          flowOut_->dirty[a.id].insert(std::string());
          break;
        case Shape::none:
          break;
      }
    }
  }
}

bool Sa::writeRecord(AttributeId id, const std::string* key) {
  NboAttrLog::Writer& w = *writer_;
  NboAttrLog::Out& out = *w.out_;
  const size_t mark = out.size();
  const uint32_t selected = w.selected_;
  w.deferred_ = false;
  w.select(handle_);
  out.attrBegin(id);
  if (key) {
    NboAttrLog::In k = keyIn(*key);
    writeEntry(id, k, out);
  } else {
    writeAttr(id, out);
  }
  out.attrEnd();
  if (!w.deferred_) return true;
  out.truncate(mark);
  w.selected_ = selected;
  return false;
}

void Sa::writeDeletion(AttributeId id, const std::string& key) {
  NboAttrLog::Out& out = *writer_->out_;
  writer_->select(handle_);
  out.attrBegin(id);
  out.putU8(NboAttrLog::entryDel);
  out.putBytes(key.data(), key.size());
  out.attrEnd();
}

void Sa::syncChild(AttributeId id, const std::string& key) {
  NboAttrLog::In k = keyIn(key);
  Ptr<Entity> now = childAt(id, k);
  if (!children_) children_ = std::make_unique<decltype(children_)::element_type>();
  auto it = children_->find({id, key});
  if (it != children_->end()) {
    if (it->second->entity_ == now) return;
    // The mirror deletes first, so that a child re-created under the same key
    // starts from its construction state there too.
    writeDeletion(id, key);
    it->second->detach();
    children_->erase(it);
  } else if (!now && shapeOf(*entity_, id) == Shape::child) {
    // The mirror's constructor may have made the single child that this entity has
    // dropped since: say it is gone (a deletion of nothing changes nothing there).
    writeDeletion(id, key);
  }
  if (!now) return;
  Ptr<Sa> sa = now->zelNboAttrLogSaIs(writer_, readOnly_);
  sa->parentHandle_ = handle_;
  sa->parentAttr_ = id;
  sa->parentKey_ = key;
  writer_->adopt(sa.ptr());
  sa->resyncIs();
  writer_->enqueue(sa.ptr());
  children_->emplace(std::make_pair(id, key), sa);
}

void Sa::detach() {
  if (children_) {
    for (auto& [where, child] : *children_) child->detach();
    children_.reset();
  }
  if (writer_) writer_->forget(this);
  if (replica_) replica_->forget(this);
  detached_ = true;
  flowOut_ = nullptr;
  reactor_.reset();
}

void Sa::doSerializeOrphan() {
  NboAttrLog::Writer& w = *writer_;
  NboAttrLog::Out& out = *w.out_;
  out.attrBegin(NboAttrLog::orphanRecord);
  out.putU32(handle_);
  out.putU32(parentHandle_);
  out.putU32(parentAttr_);
  out.putString(String(parentKey_.data(), parentKey_.size()));
  out.putString(String(entity_->fwkType()->name()));
  writeConstruction(out);
  out.attrEnd();
  w.selected_ = handle_;
  orphanWritten_ = true;
}

AttributeId Sa::handleAttrFlowOut(AttributeId from) {
  if (!flowOut_ || detached_) return 0;
  NboAttrLog::FlowOut& f = *flowOut_;
  NboAttrLog::Out& out = *writer_->out_;
  if (f.orphanPending) {
    if (out.full()) return f.next = 1;
    doSerializeOrphan();
    f.orphanPending = false;
  }
  // One pass over the dirty ids, from `from` round to just below it; child entities
  // first, so that references written in the same pass can name them.
  std::vector<AttributeId> ids;
  for (auto it = f.dirty.lower_bound(from); it != f.dirty.end(); ++it) ids.push_back(it->first);
  for (auto it = f.dirty.begin(); it != f.dirty.end() && it->first < from; ++it)
    ids.push_back(it->first);
  std::stable_partition(ids.begin(), ids.end(), [this](AttributeId id) {
    const Shape shape = shapeOf(*entity_, id);
    return shape == Shape::children || shape == Shape::child;
  });
  AttributeId deferred = 0;
  for (AttributeId id : ids) {
    auto it = f.dirty.find(id);
    const Shape shape = shapeOf(*entity_, id);
    std::set<std::string>& keys = it->second;
    if (shape == Shape::plain) {
      if (out.full()) return f.next = id;
      if (writeRecord(id, nullptr)) {
        f.dirty.erase(it);
      } else if (!deferred) {
        deferred = id;
      }
      continue;
    }
    for (auto k = keys.begin(); k != keys.end();) {
      if (out.full()) return f.next = id;
      if (shape == Shape::entries) {
        if (!writeRecord(id, &*k)) {
          if (!deferred) deferred = id;
          ++k;
          continue;
        }
      } else if (shape == Shape::children || shape == Shape::child) {
        syncChild(id, *k);
      }
      k = keys.erase(k);
    }
    if (keys.empty()) f.dirty.erase(it);
  }
  if (f.dirty.empty()) {
    flowOut_ = nullptr;
    return 0;
  }
  return f.next = deferred;
}

void Sa::doHandleAttrDeserialization(AttributeId id, NboAttrLog::In& in, NboAttrLog::Replica& r) {
  if (readOnly_)
    throwRangeException(String("Write update from read-only proxy refused: ") +
                        entity_->fwkType()->name());
  const Shape shape = shapeOf(*entity_, id);
  if (shape == Shape::none) {
    throwRangeException("NboAttrLog: " + std::string(entity_->fwkType()->name()) +
                        " has no replicated attribute " + std::to_string(id));
  }
  // A deletion of a child: the key follows the operation octet.
  std::string childKey;
  if ((shape == Shape::children || shape == Shape::child) && in.remaining() >= 1) {
    childKey.assign(reinterpret_cast<const char*>(in.cursor()) + 1, in.remaining() - 1);
  }
  suppressed_ = true;
  struct Unsuppress {
    bool& flag;
    ~Unsuppress() { flag = false; }
  } unsuppress{suppressed_};
  readAttr(id, in, r);
  if ((shape == Shape::children || shape == Shape::child) && children_) {
    auto it = children_->find({id, childKey});
    if (it != children_->end()) {
      it->second->detach();
      children_->erase(it);
    }
  }
}

Sa* Sa::child(AttributeId id, const std::string& key) const {
  if (!children_) return nullptr;
  auto it = children_->find({id, key});
  return it == children_->end() ? nullptr : it->second.ptr();
}

void Sa::refuseLocalWrite(AttributeId id) const {
  const AttrDesc* a = entity_->fwkType()->attr(id);
  throwRangeException(String("Local write to read-only attribute '") + (a ? a->name : "?") +
                      "' of " + entity_->fwkType()->name());
}

bool Sa::writeAttr(AttributeId, NboAttrLog::Out&) const { return false; }
bool Sa::writeEntry(AttributeId, NboAttrLog::In&, NboAttrLog::Out&) const { return false; }
bool Sa::entryKeys(AttributeId, std::vector<std::string>&) const { return false; }
Ptr<Entity> Sa::childAt(AttributeId, NboAttrLog::In&) const { return nullptr; }
bool Sa::readAttr(AttributeId, NboAttrLog::In&, NboAttrLog::Replica&) { return false; }
Ptr<Entity> Sa::makeChild(AttributeId, NboAttrLog::In&) { return nullptr; }

namespace NboAttrLog {

uint32_t handleOfEntity(Writer* w, const Entity* e) {
  if (Sa* sa = w->adapterOf(e)) {
    if (sa->flowOut() && sa->flowOut()->orphanPending) w->deferRecord();
    return sa->handle();
  }
  // Held under a mirrored entity: it is mirrored as soon as its owner's flow-out
  // reaches it.
  for (const Entity* p = e->parent(); p; p = p->parent()) {
    if (w->adapterOf(p)) {
      w->deferRecord();
      return 0;
    }
  }
  return unmirroredHandle;
}

void refuseEntryOp(uint8_t op) {
  throwRangeException("NboAttrLog: bad entry operation " + std::to_string(op));
}

}  // namespace NboAttrLog

}  // namespace Zel
