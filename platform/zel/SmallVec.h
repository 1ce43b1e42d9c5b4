#pragma once
// Containers for the common case of a few small elements.
//
// SmallVec<T, N> is a vector of trivially copyable T that holds up to N elements in
// the object itself and moves them to one heap buffer (doubling) beyond that; it
// never allocates while it stays within N. clear() keeps the buffer. Elements are
// copied with memcpy, which is why T must be trivially copyable.
//
// SmallIndexColl<V, N> is a collection keyed by a dense index (0, 1, 2, ...) on
// SmallVec storage, with the interface of ValueColl: at() gives a default for an
// absent index, set() inserts or overwrites, del() removes one index and leaves
// the others where they are. Each entry takes one V; a lookup is one array access.
// Indexes are expected to be small and mostly contiguous: set(i) makes room for
// every index below i, and gaps are marked in a bit set (one word in the object;
// a heap buffer only for gaps past index 63).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

namespace Zel {

template <class T, size_t N>
class SmallVec {
  static_assert(std::is_trivially_copyable_v<T>, "SmallVec copies its elements with memcpy");
  static_assert(N > 0);

 public:
  // inline_ is raw storage: only its first size_ elements are ever read, so it is
  // left uninitialised rather than cleared on every construction.
  // cppcheck-suppress uninitMemberVar
  SmallVec() = default;
  // cppcheck-suppress uninitMemberVar
  SmallVec(const SmallVec& o) { assign(o); }
  SmallVec(SmallVec&& o) noexcept { take(o); }
  // cppcheck-suppress operatorEqVarError
  SmallVec& operator=(const SmallVec& o) {
    if (this != &o) assign(o);
    return *this;
  }
  SmallVec& operator=(SmallVec&& o) noexcept {
    if (this != &o) {
      release();
      take(o);
    }
    return *this;
  }
  ~SmallVec() { release(); }

  size_t size() const { return size_; }
  size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  // True while the elements live in the object itself.
  bool isInline() const { return data_ == inlineData(); }

  T* data() { return data_; }
  const T* data() const { return data_; }
  T& operator[](size_t i) { return data_[i]; }
  const T& operator[](size_t i) const { return data_[i]; }
  T& back() { return data_[size_ - 1]; }
  const T& back() const { return data_[size_ - 1]; }
  T* begin() { return data_; }
  T* end() { return data_ + size_; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + size_; }

  void push_back(const T& v) {
    if (size_ == capacity_) grow(size_ + 1);
    data_[size_++] = v;
  }
  void pop_back() { --size_; }
  // Grows with copies of `fill`, or drops elements from the end.
  void resize(size_t n, const T& fill = T{}) {
    if (n > capacity_) grow(n);
    for (size_t i = size_; i < n; ++i) data_[i] = fill;
    size_ = n;
  }
  void reserve(size_t n) {
    if (n > capacity_) grow(n);
  }
  void clear() { size_ = 0; }

 private:
  T* inlineData() const { return const_cast<T*>(reinterpret_cast<const T*>(inline_)); }

  void grow(size_t need) {
    const size_t cap = std::max(capacity_ * 2, need);
    T* p = std::allocator<T>().allocate(cap);
    // T may itself be a pointer: sizeof(T) is meant.
    // NOLINTNEXTLINE(bugprone-sizeof-expression)
    std::memcpy(static_cast<void*>(p), data_, size_ * sizeof(T));
    const size_t n = size_;
    release();
    data_ = p;
    capacity_ = cap;
    size_ = n;
  }
  // Frees a heap buffer and returns to the (empty) inline storage.
  void release() {
    if (!isInline()) std::allocator<T>().deallocate(data_, capacity_);
    data_ = inlineData();
    capacity_ = N;
    size_ = 0;
  }
  void assign(const SmallVec& o) {
    size_ = 0;
    reserve(o.size_);
    std::memcpy(static_cast<void*>(data_), o.data_, o.size_ * sizeof(T));
    size_ = o.size_;
  }
  // Takes `o`'s elements (its heap buffer when it has one) and leaves `o` empty.
  void take(SmallVec& o) {
    if (o.isInline()) {
      std::memcpy(static_cast<void*>(inline_), o.inline_, o.size_ * sizeof(T));
    } else {
      data_ = o.data_;
      capacity_ = o.capacity_;
      o.data_ = o.inlineData();
      o.capacity_ = N;
    }
    size_ = o.size_;
    o.size_ = 0;
  }

  T* data_ = inlineData();
  size_t size_ = 0;
  size_t capacity_ = N;
  alignas(T) unsigned char inline_[N * sizeof(T)];  // NOLINT(bugprone-sizeof-expression)
};

template <class V, size_t N>
class SmallIndexColl {
 public:
  const V* find(size_t i) const { return i < values_.size() && !absent(i) ? &values_[i] : nullptr; }
  V at(size_t i, const V& absentValue) const {
    const V* v = find(i);
    return v ? *v : absentValue;
  }
  // Inserts or overwrites; true when the entry is new or its value changed.
  bool set(size_t i, const V& v) {
    if (i == values_.size()) {  // the usual case: entries arrive in index order
      values_.push_back(v);
      ++count_;
      return true;
    }
    if (i > values_.size()) {
      for (size_t j = values_.size(); j < i; ++j) absentIs(j, true);
      values_.resize(i + 1);
    } else if (!absent(i)) {
      if (values_[i] == v) return false;
      values_[i] = v;
      return true;
    }
    absentIs(i, false);
    values_[i] = v;
    ++count_;
    return true;
  }
  bool del(size_t i) {
    if (!find(i)) return false;
    absentIs(i, true);
    --count_;
    while (!values_.empty() && absent(values_.size() - 1)) {
      absentIs(values_.size() - 1, false);
      values_.pop_back();
    }
    return true;
  }
  void clear() {
    values_.clear();
    absent_.clear();
    count_ = 0;
  }
  // The number of entries.
  size_t size() const { return count_; }
  // One past the highest index in use: every entry lies in [0, indexEnd()).
  size_t indexEnd() const { return values_.size(); }
  // Room for indexes below capacity() without another allocation for the values.
  size_t capacity() const { return values_.capacity(); }
  void reserve(size_t n) { values_.reserve(n); }
  bool isInline() const { return values_.isInline(); }

 private:
  bool absent(size_t i) const {
    const size_t w = i / 64;
    return w < absent_.size() && ((absent_[w] >> (i % 64)) & 1);
  }
  void absentIs(size_t i, bool b) {
    const size_t w = i / 64;
    const uint64_t bit = uint64_t{1} << (i % 64);
    if (w >= absent_.size()) {
      if (!b) return;
      absent_.resize(w + 1, 0);
    }
    absent_[w] = b ? absent_[w] | bit : absent_[w] & ~bit;
  }

  SmallVec<V, N> values_;
  // Bit i set: index i, below values_.size(), has no entry. Entries contiguous from
  // 0 (the usual case) leave it empty; bits past the end stay clear.
  SmallVec<uint64_t, 1> absent_;
  size_t count_ = 0;
};

}  // namespace Zel
