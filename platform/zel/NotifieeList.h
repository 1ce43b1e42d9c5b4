#pragma once
// The reactors registered with one notifier. A visit calls a handler on every
// reactor; reactors may register or unregister while a visit is running (an
// unregistered reactor is skipped, a newly registered one is not visited by the
// running visit). The list costs 24 bytes while empty and allocates on first use.

#include <cstdint>
#include <cstdlib>

namespace Zel {

template <class R>
class NotifieeList {
 public:
  NotifieeList() = default;
  NotifieeList(const NotifieeList&) = delete;
  NotifieeList& operator=(const NotifieeList&) = delete;
  ~NotifieeList() { std::free(items_); }

  bool empty() const { return live_ == 0; }
  uint32_t size() const { return live_; }

  void add(R* r) {
    if (size_ == cap_) grow();
    items_[size_++] = r;
    ++live_;
  }
  void remove(R* r) {
    for (uint32_t i = 0; i < size_; ++i) {
      if (items_[i] != r) continue;
      --live_;
      if (visiting_) {
        items_[i] = nullptr;  // compacted when the outermost visit ends
      } else {
        for (uint32_t j = i + 1; j < size_; ++j) items_[j - 1] = items_[j];
        --size_;
      }
      return;
    }
  }

  template <class F>
  void visit(F&& f) {
    struct Guard {
      NotifieeList* l;
      ~Guard() {
        if (--l->visiting_ == 0 && l->live_ != l->size_) l->compact();
      }
    } guard{this};
    ++visiting_;
    const uint32_t n = size_;
    for (uint32_t i = 0; i < n; ++i) {
      if (R* r = items_[i]) f(r);
    }
  }

 private:
  void grow() {
    uint32_t cap = cap_ ? cap_ * 2 : 2;
    void* mem = std::realloc(items_, sizeof(R*) * cap);
    if (!mem) std::abort();
    items_ = static_cast<R**>(mem);
    cap_ = cap;
  }
  void compact() {
    uint32_t k = 0;
    for (uint32_t i = 0; i < size_; ++i) {
      if (items_[i]) items_[k++] = items_[i];
    }
    size_ = k;
  }

  R** items_ = nullptr;
  uint32_t size_ = 0;  // slots in use, including slots emptied during a visit
  uint32_t cap_ = 0;
  uint32_t live_ = 0;  // registered reactors
  uint32_t visiting_ = 0;
};

}  // namespace Zel
