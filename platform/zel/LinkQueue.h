#pragma once
// LinkQueue<T>: a bounded FIFO queue.
//
// A ring buffer whose storage grows on demand (doubling) up to the bound, so a
// generous bound costs nothing until it is used. Pushing onto a full queue and
// popping an empty one are assertion failures: the owner checks full() / empty()
// first. Iteration runs oldest first. References and iterators stay valid until
// the queue is changed (a push may reallocate the storage).
//
// T's move construction should not throw: elements are moved into new storage
// inside noexcept code when the buffer grows or the bound shrinks.

#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "platform/zel/Assert.h"

namespace Zel {

template <class T>
class LinkQueue {
  template <bool Const>
  class IteratorT {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using Queue = std::conditional_t<Const, const LinkQueue, LinkQueue>;
    using pointer = std::conditional_t<Const, const T*, T*>;
    using reference = std::conditional_t<Const, const T&, T&>;

    IteratorT() = default;
    template <bool C = Const, class = std::enable_if_t<C>>
    IteratorT(const IteratorT<false>& o) : q_(o.q_), n_(o.n_) {}

    reference operator*() const { return q_->at(n_); }
    pointer operator->() const { return &q_->at(n_); }
    IteratorT& operator++() {
      ++n_;
      return *this;
    }
    IteratorT operator++(int) {
      IteratorT old = *this;
      ++n_;
      return old;
    }
    friend bool operator==(const IteratorT& a, const IteratorT& b) { return a.n_ == b.n_; }

   private:
    friend class LinkQueue;
    friend class IteratorT<!Const>;
    IteratorT(Queue* q, size_t n) : q_(q), n_(n) {}
    Queue* q_ = nullptr;
    size_t n_ = 0;  // position from the front (0 = oldest)
  };

 public:
  using value_type = T;
  using size_type = size_t;
  using iterator = IteratorT<false>;
  using const_iterator = IteratorT<true>;

  explicit LinkQueue(size_t maxSize) : maxSize_(maxSize) {}

  LinkQueue(const LinkQueue& o) : maxSize_(o.maxSize_) {
    if (o.size_ == 0) return;
    reallocate(o.size_, [&](T* to) {
      size_t done = 0;
      try {
        for (; done < o.size_; ++done) ::new (static_cast<void*>(to + done)) T(o.at(done));
      } catch (...) {
        std::destroy_n(to, done);
        throw;
      }
    });
    size_ = o.size_;
  }
  LinkQueue(LinkQueue&& o) noexcept
      : buf_(std::exchange(o.buf_, nullptr)),
        capacity_(std::exchange(o.capacity_, 0)),
        head_(std::exchange(o.head_, 0)),
        size_(std::exchange(o.size_, 0)),
        maxSize_(o.maxSize_) {}
  LinkQueue& operator=(const LinkQueue& o) {
    if (this != &o) {
      LinkQueue copy(o);
      swap(copy);
    }
    return *this;
  }
  LinkQueue& operator=(LinkQueue&& o) noexcept {
    if (this != &o) {
      LinkQueue moved(std::move(o));
      swap(moved);
    }
    return *this;
  }
  ~LinkQueue() {
    clear();
    std::allocator<T>().deallocate(buf_, capacity_);
  }

  void swap(LinkQueue& o) noexcept {
    std::swap(buf_, o.buf_);
    std::swap(capacity_, o.capacity_);
    std::swap(head_, o.head_);
    std::swap(size_, o.size_);
    std::swap(maxSize_, o.maxSize_);
  }

  size_t maxSize() const { return maxSize_; }
  // Changes the bound; it may not go below the current size.
  void maxSizeIs(size_t maxSize) {
    ZEL_ASSERT(maxSize >= size());
    maxSize_ = maxSize;
    if (capacity_ > maxSize_) {
      if (size_ == 0) {
        std::allocator<T>().deallocate(buf_, capacity_);
        buf_ = nullptr;
        capacity_ = 0;
        head_ = 0;
      } else {
        reallocate(maxSize_, [&](T* to) { relocateInto(to); });
      }
    }
  }

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  bool full() const { return size_ >= maxSize_; }

  // Appends `value` at the back (the newest end).
  void push(T value) {
    ZEL_ASSERT(size() < maxSize());
    if (size_ == capacity_) {
      size_t cap = capacity_ ? capacity_ * 2 : 4;
      if (cap > maxSize_ || cap < capacity_) cap = maxSize_;
      reallocate(cap, [&](T* to) { relocateInto(to); });
    }
    ::new (static_cast<void*>(buf_ + wrap(head_ + size_))) T(std::move(value));
    ++size_;
  }

  // The oldest element.
  T& front() {
    ZEL_ASSERT(!empty());
    return buf_[head_];
  }
  const T& front() const {
    ZEL_ASSERT(!empty());
    return buf_[head_];
  }
  // The newest element.
  T& back() {
    ZEL_ASSERT(!empty());
    return at(size_ - 1);
  }
  const T& back() const {
    ZEL_ASSERT(!empty());
    return at(size_ - 1);
  }

  // Removes the oldest element.
  void pop() {
    ZEL_ASSERT(!empty());
    std::destroy_at(buf_ + head_);
    head_ = wrap(head_ + 1);
    if (--size_ == 0) head_ = 0;
  }

  // Removes every element; keeps the storage and the bound.
  void clear() {
    while (!empty()) pop();
  }

  iterator begin() { return iterator(this, 0); }
  iterator end() { return iterator(this, size_); }
  const_iterator begin() const { return const_iterator(this, 0); }
  const_iterator end() const { return const_iterator(this, size_); }
  const_iterator cbegin() const { return begin(); }
  const_iterator cend() const { return end(); }

 private:
  size_t wrap(size_t i) const { return i >= capacity_ ? i - capacity_ : i; }
  T& at(size_t n) { return buf_[wrap(head_ + n)]; }
  const T& at(size_t n) const { return buf_[wrap(head_ + n)]; }

  // Moves the elements, oldest first, into `to` and ends them here.
  void relocateInto(T* to) noexcept {
    for (size_t n = 0; n < size_; ++n) {
      T* from = &at(n);
      ::new (static_cast<void*>(to + n)) T(std::move(*from));
      std::destroy_at(from);
    }
  }

  // Replaces the storage with `cap` slots filled (from index 0) by `fill`.
  template <class Fill>
  void reallocate(size_t cap, Fill&& fill) {
    T* to = std::allocator<T>().allocate(cap);
    try {
      fill(to);
    } catch (...) {
      std::allocator<T>().deallocate(to, cap);
      throw;
    }
    std::allocator<T>().deallocate(buf_, capacity_);
    buf_ = to;
    capacity_ = cap;
    head_ = 0;
  }

  T* buf_ = nullptr;
  size_t capacity_ = 0;
  size_t head_ = 0;
  size_t size_ = 0;
  size_t maxSize_;
};

}  // namespace Zel
