#pragma once
// Intrusive reference counting.
//
// PtrInterface keeps one 32-bit word: the low `countBits` bits are the reference
// count, the high bits are runtime flags. Reaching zero is tested on the count bits
// only. When the count drops to zero, onZeroReferences() runs; by default it
// deletes the object.
//
// NrcPtrInterface marks types that are handed out through Ptr<T> without being
// owned (overlays on packet octets): it is empty, and Ptr<T> does no counting
// for such T.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

namespace Zel {

// Process-wide switch: when on, reference counts change with atomic
// read-modify-write operations so that pointers may cross threads.
struct VFPtrInterface {
  static bool threadSafePointers_;
};

class PtrInterface : public VFPtrInterface {
 public:
  static constexpr unsigned countBits = 24;
  static constexpr uint32_t countMask = (1u << countBits) - 1;
  static constexpr uint32_t flagMask = ~countMask;

  PtrInterface() = default;
  PtrInterface(const PtrInterface&) : refWord_(0) {}  // a copy is a new object
  // The count belongs to the object, not to its value: assignment keeps it.
  // cppcheck-suppress operatorEqVarError
  PtrInterface& operator=(const PtrInterface&) { return *this; }

  uint32_t references() const { return refWord_ & countMask; }
  uint32_t flags() const { return refWord_ & flagMask; }
  void flagsIs(uint32_t f) const;  // sets the given flag bits (within flagMask)

  void newRef() const {
    if (threadSafePointers_) {
      __atomic_fetch_add(&refWord_, 1u, __ATOMIC_RELAXED);
    } else {
      ++refWord_;
    }
  }
  void deleteRef() const {
    uint32_t now;
    if (threadSafePointers_) {
      now = __atomic_sub_fetch(&refWord_, 1u, __ATOMIC_ACQ_REL);
    } else {
      now = --refWord_;
    }
    if ((now & countMask) == 0) const_cast<PtrInterface*>(this)->onZeroReferences();
  }

 protected:
  virtual ~PtrInterface() = default;
  // The zero-reference handler. Derived runtimes may recycle instead of deleting.
  virtual void onZeroReferences() { delete this; }

 private:
  mutable uint32_t refWord_ = 0;
};

// Base of types that are never owned through Ptr (layout-neutral: no members).
struct NrcPtrInterface {};

template <class T>
class Ptr {
 public:
  using element_type = T;

  Ptr() = default;
  Ptr(std::nullptr_t) {}
  Ptr(T* p) : p_(p) { ref(p_); }
  Ptr(const Ptr& o) : p_(o.p_) { ref(p_); }
  Ptr(Ptr&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(const Ptr<U>& o) : p_(o.ptr()) {
    ref(p_);
  }
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(Ptr<U>&& o) noexcept : p_(o.release()) {}
  ~Ptr() { unref(p_); }

  // Counting the new pointee before releasing the old one makes self-assignment safe.
  Ptr& operator=(const Ptr& o) {  // NOLINT(bugprone-unhandled-self-assignment)
    ref(o.p_);
    T* old = p_;
    p_ = o.p_;
    unref(old);
    return *this;
  }
  Ptr& operator=(Ptr&& o) noexcept {
    if (this != &o) {
      T* old = p_;
      p_ = o.p_;
      o.p_ = nullptr;
      unref(old);
    }
    return *this;
  }

  T* ptr() const { return p_; }
  T* operator->() const { return p_; }
  T& operator*() const { return *p_; }
  explicit operator bool() const { return p_ != nullptr; }
  bool operator!() const { return p_ == nullptr; }

  // Gives up ownership without touching the count.
  T* release() {
    T* p = p_;
    p_ = nullptr;
    return p;
  }

  template <class U>
  bool operator==(const Ptr<U>& o) const {
    return p_ == o.ptr();
  }
  bool operator==(std::nullptr_t) const { return p_ == nullptr; }

 private:
  static constexpr bool counted = !std::is_base_of_v<NrcPtrInterface, std::remove_cv_t<T>>;
  static void ref(T* p) {
    if constexpr (counted) {
      if (p) p->newRef();
    }
  }
  static void unref(T* p) {
    if constexpr (counted) {
      if (p) p->deleteRef();
    }
  }

  T* p_ = nullptr;
};

template <class T, class U>
Ptr<T> ptr_cast(const Ptr<U>& p) {
  return Ptr<T>(static_cast<T*>(p.ptr()));
}

// Constructs a T and returns the first reference to it. Every factory goes through here.
template <class T, class... Args>
Ptr<T> allocate(Args&&... args) {
  return Ptr<T>(new T(std::forward<Args>(args)...));
}

}  // namespace Zel

template <class T>
struct std::hash<Zel::Ptr<T>> {
  size_t operator()(const Zel::Ptr<T>& p) const noexcept { return std::hash<T*>()(p.ptr()); }
};
