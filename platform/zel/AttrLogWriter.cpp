#include "platform/zel/AttrLogWriter.h"

namespace Zel::NboAttrLog {

using Sa = Entity::ZelNboAttrLogSa;

Writer::~Writer() {
  for (auto& root : roots_) root->detach();
}

Ptr<Sa> Writer::rootIs(const Ptr<Entity>& root) {
  if (Sa* existing = adapterOf(root.ptr())) return existing;
  Ptr<Sa> sa = root->zelNboAttrLogSaIs(this, false);
  adopt(sa.ptr());
  roots_.push_back(sa);
  sa->resyncIs();
  enqueue(sa.ptr());
  flowOut();
  return sa;
}

void Writer::rootDel(const Entity* root) {
  for (auto it = roots_.begin(); it != roots_.end(); ++it) {
    if ((*it)->entity().ptr() == root) {
      (*it)->detach();
      roots_.erase(it);
      return;
    }
  }
}

void Writer::resync() {
  std::vector<Ptr<Entity>> entities;
  for (auto& root : roots_) {
    entities.push_back(root->entity());
    root->detach();
  }
  roots_.clear();
  pending_.clear();
  selected_ = 0;
  for (const Ptr<Entity>& e : entities) rootIs(e);
}

void Writer::flowOut() {
  if (flowing_) return;
  flowing_ = true;
  // An adapter whose references wait for another's orphan goes to the back; a whole
  // round without progress would mean a reference to nothing that can come.
  size_t idle = 0;
  while (!pending_.empty() && !out_->full() && idle <= pending_.size()) {
    Ptr<Sa> sa = pending_.front();
    if (sa->detached_ || !sa->flowOut_) {
      pending_.pop_front();
      sa->queued_ = false;
      continue;
    }
    const size_t before = out_->size();
    const AttributeId next = sa->handleAttrFlowOut(sa->flowOut_->next);
    if (next == 0) {
      pending_.pop_front();
      sa->queued_ = false;
    } else if (!out_->full()) {
      pending_.pop_front();
      pending_.push_back(sa);
    }
    idle = out_->size() == before && next != 0 ? idle + 1 : 0;
  }
  flowing_ = false;
}

Sa* Writer::adapterOf(const Entity* e) const {
  auto it = adapters_.find(e);
  return it == adapters_.end() ? nullptr : it->second;
}

void Writer::adopt(Sa* sa) {
  sa->handle_ = nextHandle_++;
  adapters_[sa->entity().ptr()] = sa;
}

void Writer::forget(Sa* sa) {
  auto it = adapters_.find(sa->entity().ptr());
  if (it != adapters_.end() && it->second == sa) adapters_.erase(it);
}

void Writer::enqueue(Sa* sa) {
  if (sa->queued_) return;
  sa->queued_ = true;
  pending_.push_back(sa);
}

void Writer::select(uint32_t handle) {
  if (selected_ == handle) return;
  out_->attrBegin(selectRecord);
  out_->putU32(handle);
  out_->attrEnd();
  selected_ = handle;
}

}  // namespace Zel::NboAttrLog
