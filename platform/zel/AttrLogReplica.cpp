#include "platform/zel/AttrLogReplica.h"

#include <string>

#include "platform/zel/Exception.h"

namespace Zel::NboAttrLog {

using Sa = Entity::ZelNboAttrLogSa;

namespace {

std::unordered_map<const ZelType*, OrphanFactory>& orphanFactories() {
  static std::unordered_map<const ZelType*, OrphanFactory> factories;
  return factories;
}

}  // namespace

void orphanFactoryIs(const ZelType* type, OrphanFactory f) { orphanFactories()[type] = f; }

OrphanFactory orphanFactory(const ZelType* type) {
  auto it = orphanFactories().find(type);
  return it == orphanFactories().end() ? nullptr : it->second;
}

Replica::~Replica() { clear(); }

void Replica::clear() {
  for (auto& root : roots_) root->detach();
  roots_.clear();
  byHandle_.clear();
  selected_ = nullptr;
}

std::vector<Ptr<Entity>> Replica::roots() const {
  std::vector<Ptr<Entity>> out;
  for (const auto& root : roots_) out.push_back(root->entity());
  return out;
}

Entity* Replica::entity(uint32_t handle) const {
  auto it = byHandle_.find(handle);
  return it == byHandle_.end() ? nullptr : it->second->entity().ptr();
}

void Replica::apply(const uint8_t* data, size_t len) {
  In in(data, len);
  apply(in);
}

void Replica::apply(In& in) {
  while (applyNext(in)) {
  }
}

bool Replica::applyNext(In& in) {
  if (in.atEnd()) return false;
  const AttributeId id = in.nextAttrId();
  applyRecord(id, in);
  return true;
}

void Replica::applyRecord(AttributeId id, In& in) {
  if (id == selectRecord) {
    const uint32_t handle = in.nextU32();
    in.endOfRecord();
    auto it = byHandle_.find(handle);
    if (it == byHandle_.end())
      throwRangeException("NboAttrLog: select of unknown handle " + std::to_string(handle));
    selected_ = it->second;
    return;
  }
  if (id == orphanRecord) {
    applyOrphan(in);
    return;
  }
  if (!selected_)
    throwRangeException("NboAttrLog: attribute " + std::to_string(id) + " before any entity");
  selected_->doHandleAttrDeserialization(id, in, *this);
}

void Replica::applyOrphan(In& in) {
  const uint32_t handle = in.nextU32();
  const uint32_t parentHandle = in.nextU32();
  const AttributeId parentAttr = in.nextU32();
  const String key = in.nextString();
  const String typeName = in.nextString();
  if (handle == 0 || handle == unmirroredHandle || byHandle_.count(handle)) {
    throwRangeException("NboAttrLog: orphan with handle " + std::to_string(handle) +
                        " already in use or invalid");
  }
  const ZelType* type = ZelType::lookup(typeName.view());
  if (!type || type->kind() != ZelType::Kind::entity) {
    throwRangeException("NboAttrLog: orphan of unknown entity type '" +
                        std::string(typeName.view()) + "'");
  }
  Ptr<Entity> e;
  Sa* parent = nullptr;
  if (parentHandle == 0) {
    const OrphanFactory f = orphanFactory(type);
    if (!f) {
      throwRangeException("NboAttrLog: no orphan factory for '" + std::string(typeName.view()) +
                          "'");
    }
    e = f(in);
  } else {
    auto p = byHandle_.find(parentHandle);
    if (p == byHandle_.end()) {
      throwRangeException("NboAttrLog: orphan of unknown parent handle " +
                          std::to_string(parentHandle));
    }
    parent = p->second;
    const AttrDesc* a = parent->entity()->fwkType()->attr(parentAttr);
    const ZelType* declared = a ? ZelType::lookup(a->typeName) : nullptr;
    // The parent makes its children by its own factory: the orphan must name that type.
    if (!a || (a->kind != AttrKind::entityCollection && a->kind != AttrKind::instantiating) ||
        declared != type) {
      throwRangeException("NboAttrLog: orphan of '" + std::string(typeName.view()) +
                          "' under attribute " + std::to_string(parentAttr) + " of " +
                          parent->entity()->fwkType()->name());
    }
    if (parent->child(parentAttr, std::string(key.view()))) {
      throwRangeException("NboAttrLog: orphan under an occupied key of attribute " +
                          std::to_string(parentAttr));
    }
    parent->suppressed_ = true;
    struct Unsuppress {
      bool& flag;
      ~Unsuppress() { flag = false; }
    } unsuppress{parent->suppressed_};
    e = parent->makeChild(parentAttr, in);
  }
  Ptr<Sa> sa = e->zelNboAttrLogSaIs(nullptr, false);
  sa->replica_ = this;
  sa->handle_ = handle;
  sa->parentHandle_ = parentHandle;
  sa->parentAttr_ = parentAttr;
  sa->parentKey_ = std::string(key.view());
  if (parent) {
    if (!parent->children_)
      parent->children_ = std::make_unique<decltype(parent->children_)::element_type>();
    parent->children_->emplace(std::make_pair(parentAttr, sa->parentKey_), sa);
  } else {
    roots_.push_back(sa);
  }
  byHandle_[handle] = sa.ptr();
  selected_ = sa.ptr();
}

void Replica::forget(const Sa* sa) {
  auto it = byHandle_.find(sa->handle());
  if (it != byHandle_.end() && it->second == sa) byHandle_.erase(it);
  if (selected_ == sa) selected_ = nullptr;
}

}  // namespace Zel::NboAttrLog
