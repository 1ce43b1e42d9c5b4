#pragma once
// HashMap2018: the runtime's unordered keyed container.
//
// Design
// ------
// Open addressing with Robin Hood linear probing and backward-shift deletion.
// The table has a power-of-two number of slots held in two parallel arrays:
//
//   meta_[i]   32-bit metadata word of slot i: 0 when the slot is empty, otherwise
//              ((dist + 1) << 8) | fingerprint, where dist is how far the entry sits
//              from its home slot and fingerprint is 8 further bits of its hash.
//   slots_[i]  raw storage for one Entry; constructed exactly when meta_[i] != 0.
//
// The 32-bit hash from H is spread with a 64-bit Fibonacci multiply: the top
// log2(capacity) bits of the product pick the home slot, bits 24..31 give the
// fingerprint (disjoint from the home bits for any table below 2^32 slots). The
// extra multiply makes user hashes with weak low bits (identities, small ranges)
// behave.
//
// Ordering invariant: within a cluster, entries are sorted by home slot, and
// entries sharing a home slot are sorted by descending fingerprint. At any slot
// this is the same as: the metadata a probe expects at step d, ((d+1) << 8) | fp,
// compares with the resident metadata exactly as the probed key compares with the
// resident key in that order. Hence one comparison per step drives every probe:
//   resident == expected  -> compare keys (the only case that touches a key);
//   resident <  expected  -> the key is absent (an empty slot is 0, below all);
//                            this is also where an insertion goes;
//   resident >  expected  -> keep probing.
// Most misses therefore end without comparing a single key.
//
// Insertion opens the slot by shifting the run that starts there forward by one
// slot (up to the first empty slot); deletion closes the hole by shifting the
// following entries back by one slot until an empty slot or an entry already in
// its home slot. Both keep the ordering invariant, so no tombstones exist.
//
// The table grows (doubles) when an insertion of a new key would take the load
// above 0.8. It never shrinks (clear() keeps the capacity).
//
// Iteration walks the slots in order and yields Entry& (const Entry& through a
// const map). Do not change an entry's key through the reference. Iterators and
// V* results stay valid until the map is changed: any insertion of a new key and
// any erase may move entries (Robin Hood shifting), and growth moves all of them.
// Erasing or inserting while iterating may therefore skip or repeat entries; code
// that iterates while calling out to handlers that might change the map takes a
// Bookmark, which turns a growth under it into an assertion failure.
//
// Not synchronised. Const operations may run concurrently, except taking a
// Bookmark, which counts in the map even when the map is const.
//
// Requirements on K and V: move construction should not throw (entries are
// relocated by move inside noexcept code; a throwing move terminates). H returns
// a 32-bit hash (see HashOf in Hash.h); Eq is an equivalence consistent with H.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "platform/zel/Assert.h"
#include "platform/zel/Hash.h"

namespace Zel {

namespace HashMap2018Detail {
// Metadata of the unallocated (capacity 0) table. With capacity 0 the probe start
// takes the top bit of the mixed hash, so it lands on one of these two empty
// slots and every lookup ends at once without a special case. Never written:
// inserting a new key into a capacity-0 table always grows first.
inline constexpr uint32_t emptyMeta[2] = {0, 0};
}  // namespace HashMap2018Detail

template <class K, class V, class H = HashOf<K>, class Eq = std::equal_to<K>>
class HashMap2018 {
 public:
  struct Entry {
    K key;
    V value;
  };

  class Bookmark;

  // The resize control. Growth (a rehash) relocates every entry, which would
  // invalidate an iteration in progress. Code iterating over the map while calling
  // out to user handlers holds a Bookmark; the rehash asserts that none is held.
  class ResizeControl {
   public:
    // True while any Bookmark on the map is alive.
    bool bookmark() const { return bookmarks_ != 0; }
    uint32_t bookmarks() const { return bookmarks_; }

   private:
    friend class Bookmark;
    uint32_t bookmarks_ = 0;
  };

  // RAII iteration bookmark: while one is alive, growing the table (an insertion of
  // a new key at the load limit, or reserve() beyond the capacity) fails the
  // assertion `!rsc->bookmark()`. Bookmarks nest (the map keeps a count). A map
  // must outlive its bookmarks, and must not be moved from while bookmarked.
  class Bookmark {
   public:
    explicit Bookmark(const HashMap2018& map) noexcept : rsc_(map.resizeControl()) {
      ++rsc_->bookmarks_;
    }
    ~Bookmark() { --rsc_->bookmarks_; }
    Bookmark(const Bookmark&) = delete;
    Bookmark& operator=(const Bookmark&) = delete;

   private:
    ResizeControl* rsc_;
  };

 private:
  static constexpr bool nothrowMoveConstruct =
      std::is_nothrow_move_constructible_v<H> && std::is_nothrow_move_constructible_v<Eq>;
  static constexpr bool nothrowMoveAssign =
      std::is_nothrow_move_assignable_v<H> && std::is_nothrow_move_assignable_v<Eq>;

  template <bool Const>
  class IteratorT {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = std::conditional_t<Const, const Entry*, Entry*>;
    using reference = std::conditional_t<Const, const Entry&, Entry&>;

    IteratorT() = default;
    // iterator -> const_iterator.
    template <bool C = Const, class = std::enable_if_t<C>>
    IteratorT(const IteratorT<false>& o) : meta_(o.meta_), metaEnd_(o.metaEnd_), slot_(o.slot_) {}

    reference operator*() const { return *slot_; }
    pointer operator->() const { return slot_; }
    IteratorT& operator++() {
      do {
        ++meta_;
        ++slot_;
      } while (meta_ != metaEnd_ && *meta_ == 0);
      return *this;
    }
    IteratorT operator++(int) {
      IteratorT old = *this;
      ++*this;
      return old;
    }
    friend bool operator==(const IteratorT& a, const IteratorT& b) { return a.meta_ == b.meta_; }

   private:
    friend class HashMap2018;
    friend class IteratorT<!Const>;
    IteratorT(const uint32_t* meta, const uint32_t* metaEnd, pointer slot)
        : meta_(meta), metaEnd_(metaEnd), slot_(slot) {}

    const uint32_t* meta_ = nullptr;
    const uint32_t* metaEnd_ = nullptr;
    pointer slot_ = nullptr;
  };

 public:
  using key_type = K;
  using mapped_type = V;
  using value_type = Entry;
  using size_type = size_t;
  using iterator = IteratorT<false>;
  using const_iterator = IteratorT<true>;

  HashMap2018() = default;
  explicit HashMap2018(const H& hash, const Eq& eq = Eq()) : hash_(hash), eq_(eq) {}

  HashMap2018(const HashMap2018& o) : hash_(o.hash_), eq_(o.eq_) {
    if (o.size_ == 0) return;
    allocate(o.capacity_);
    try {
      for (size_t i = 0; i < capacity_; ++i) {
        if (o.meta_[i] == 0) continue;
        ::new (static_cast<void*>(slots_ + i)) Entry(o.slots_[i]);
        meta_[i] = o.meta_[i];  // marked live only once constructed
        ++size_;
      }
    } catch (...) {
      release();
      throw;
    }
  }

  HashMap2018(HashMap2018&& o) noexcept(nothrowMoveConstruct)
      : hash_(std::move(o.hash_)), eq_(std::move(o.eq_)) {
    stealTable(o);
  }

  HashMap2018& operator=(const HashMap2018& o) {
    if (this != &o) {
      HashMap2018 copy(o);
      swap(copy);
    }
    return *this;
  }

  HashMap2018& operator=(HashMap2018&& o) noexcept(nothrowMoveAssign) {
    if (this != &o) {
      release();
      hash_ = std::move(o.hash_);
      eq_ = std::move(o.eq_);
      stealTable(o);
    }
    return *this;
  }

  ~HashMap2018() { release(); }

  // Exchanges contents and functors; bookmarks stay with their map object.
  void swap(HashMap2018& o) noexcept {
    using std::swap;
    swap(meta_, o.meta_);
    swap(slots_, o.slots_);
    swap(capacity_, o.capacity_);
    swap(mask_, o.mask_);
    swap(size_, o.size_);
    swap(growAt_, o.growAt_);
    swap(shift_, o.shift_);
    swap(hash_, o.hash_);
    swap(eq_, o.eq_);
  }
  friend void swap(HashMap2018& a, HashMap2018& b) noexcept { a.swap(b); }

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  // Number of slots (0 until the first insertion or reserve()); a power of two.
  size_t capacity() const { return capacity_; }
  // True while a Bookmark on this map is alive.
  bool bookmarked() const { return rsc_.bookmark(); }

  V* find(const K& key) {
    const size_t i = indexOf(key);
    return i == npos ? nullptr : &slots_[i].value;
  }
  const V* find(const K& key) const {
    const size_t i = indexOf(key);
    return i == npos ? nullptr : &slots_[i].value;
  }

  // Inserts (key, value) when key is absent: {pointer to the new value, true}.
  // When present, leaves the map untouched: {pointer to the existing value, false}.
  std::pair<V*, bool> insert(const K& key, V value) { return insertImpl(key, std::move(value)); }
  std::pair<V*, bool> insert(K&& key, V value) {
    return insertImpl(std::move(key), std::move(value));
  }

  // Removes key's entry; true when there was one.
  bool erase(const K& key) {
    const size_t i = indexOf(key);
    if (i == npos) return false;
    eraseAt(i);
    return true;
  }

  // Removes every entry and keeps the capacity.
  void clear() {
    if (size_ == 0) return;
    destroyEntries();
    std::memset(meta_, 0, capacity_ * sizeof(uint32_t));
    size_ = 0;
  }

  // Makes room for n entries without further growth (a rehash when the current
  // capacity does not allow it).
  void reserve(size_t n) {
    if (n <= growAt_) return;
    size_t cap = capacity_ ? capacity_ : minCapacity;
    while (maxSizeFor(cap) < n) cap *= 2;
    rehash(cap);
  }

  iterator begin() {
    const size_t i = firstOccupied();
    return iterator(meta_ + i, meta_ + capacity_, slots_ + i);
  }
  iterator end() { return iterator(meta_ + capacity_, meta_ + capacity_, slots_ + capacity_); }
  const_iterator begin() const {
    const size_t i = firstOccupied();
    return const_iterator(meta_ + i, meta_ + capacity_, slots_ + i);
  }
  const_iterator end() const {
    return const_iterator(meta_ + capacity_, meta_ + capacity_, slots_ + capacity_);
  }
  const_iterator cbegin() const { return begin(); }
  const_iterator cend() const { return end(); }

  // Checks the structure (for tests): every entry's metadata matches its hash and
  // position, the ordering invariant holds between neighbours, the count matches
  // size(), and the load is within the limit.
  bool invariantsHold() const {
    size_t count = 0;
    for (size_t i = 0; i < capacity_; ++i) {
      const uint32_t s = meta_[i];
      if (s == 0) continue;
      ++count;
      const Probe p = probeOf(hashOf(slots_[i].key));
      const size_t dist = (s >> fingerprintBits) - 1;
      if ((s & fingerprintMask) != (p.meta & fingerprintMask)) return false;
      if (((p.index + dist) & mask_) != i) return false;
      if (dist > 0) {
        // The previous slot holds an entry that comes before this one.
        const uint32_t prev = meta_[(i - 1) & mask_];
        if (prev == 0 || prev + distOne < s) return false;
      }
    }
    return count == size_ && size_ <= growAt_ && (capacity_ == 0 || count < capacity_);
  }

 private:
  static constexpr size_t npos = ~size_t(0);
  static constexpr size_t minCapacity = 8;
  static constexpr uint32_t fingerprintBits = 8;
  static constexpr uint32_t fingerprintMask = (1u << fingerprintBits) - 1;
  static constexpr uint32_t distOne = 1u << fingerprintBits;  // one probe step in metadata
  // Stored metadata stays below this, so a probe's expected metadata, which runs
  // at most two steps past the largest stored one, never wraps (dist < ~2^24).
  static constexpr uint32_t metaLimit = 0xFFFFF000u;

  struct Probe {
    size_t index;   // home slot
    uint32_t meta;  // expected metadata at the home slot (dist 0)
  };

  uint32_t hashOf(const K& key) const { return static_cast<uint32_t>(hash_(key)); }

  Probe probeOf(uint32_t hash) const {
    const uint64_t mixed = uint64_t(hash) * 0x9E3779B97F4A7C15ull;
    return {static_cast<size_t>(mixed >> shift_),
            distOne | (static_cast<uint32_t>(mixed >> 24) & fingerprintMask)};
  }

  static size_t maxSizeFor(size_t cap) { return cap - (cap + 4) / 5; }  // load <= 0.8

  ResizeControl* resizeControl() const { return &rsc_; }

  size_t firstOccupied() const {
    size_t i = 0;
    while (i < capacity_ && meta_[i] == 0) ++i;
    return i;
  }

  size_t indexOf(const K& key) const {
    const Probe p = probeOf(hashOf(key));
    size_t i = p.index;
    uint32_t m = p.meta;
    for (;;) {
      const uint32_t s = meta_[i];
      if (s == m) {
        if (eq_(slots_[i].key, key)) return i;
      } else if (s < m) {
        return npos;
      }
      i = (i + 1) & mask_;
      m += distOne;
    }
  }

  template <class KArg>
  std::pair<V*, bool> insertImpl(KArg&& key, V&& value) {
    const uint32_t hash = hashOf(key);
    Probe p = probeOf(hash);
    size_t i = p.index;
    uint32_t m = p.meta;
    for (;;) {
      const uint32_t s = meta_[i];
      if (s == m) {
        if (eq_(slots_[i].key, key)) return {&slots_[i].value, false};
      } else if (s < m) {
        break;
      }
      i = (i + 1) & mask_;
      m += distOne;
    }
    if (size_ >= growAt_) {
      grow();
      p = probeOf(hash);
      i = p.index;
      m = p.meta;
      while (meta_[i] >= m) {  // the key is absent: just find its place
        i = (i + 1) & mask_;
        m += distOne;
      }
    }
    if constexpr (std::is_nothrow_constructible_v<K, KArg&&> &&
                  std::is_nothrow_move_constructible_v<V>) {
      openSlot(i);
      ::new (static_cast<void*>(slots_ + i)) Entry{std::forward<KArg>(key), std::move(value)};
    } else {
      // Build the entry before disturbing the table, so a throwing copy leaves it intact.
      Entry entry{std::forward<KArg>(key), std::move(value)};
      openSlot(i);
      ::new (static_cast<void*>(slots_ + i)) Entry(std::move(entry));
    }
    ZEL_ASSERT(m < metaLimit);
    meta_[i] = m;
    ++size_;
    return {&slots_[i].value, true};
  }

  // Moves *from into the uninitialised slot `to` and ends *from.
  static void relocate(Entry* to, Entry* from) noexcept {
    ::new (static_cast<void*>(to)) Entry(std::move(*from));
    std::destroy_at(from);
  }

  // Frees slot i for an insertion: when occupied, the run from i up to the first
  // empty slot moves forward one slot (each moved entry one step further from home).
  // Leaves slot i unconstructed; the caller constructs it and sets its metadata.
  void openSlot(size_t i) noexcept {
    if (meta_[i] == 0) return;
    size_t to = i;
    do {
      to = (to + 1) & mask_;
    } while (meta_[to] != 0);
    while (to != i) {
      const size_t from = (to - 1) & mask_;
      const uint32_t moved = meta_[from] + distOne;
      ZEL_ASSERT(moved < metaLimit);
      relocate(slots_ + to, slots_ + from);
      meta_[to] = moved;
      to = from;
    }
  }

  // Backward-shift deletion of the entry in slot `hole`.
  void eraseAt(size_t hole) noexcept {
    std::destroy_at(slots_ + hole);
    for (;;) {
      const size_t next = (hole + 1) & mask_;
      const uint32_t s = meta_[next];
      if (s < 2 * distOne) break;  // empty, or already in its home slot
      // Invariant: backward-shift deletion moves each entry of the run after the
      // hole back by exactly one slot, into the hole immediately before it. An
      // entry never moves further (that could carry it before its home slot, or
      // past entries it must follow) and never less (that would leave the hole).
      const size_t slotsToShift = (next - hole) & mask_;
      ZEL_ASSERT(slotsToShift == 1);
      relocate(slots_ + hole, slots_ + next);
      meta_[hole] = s - distOne;
      hole = next;
    }
    meta_[hole] = 0;
    --size_;
  }

  void grow() { rehash(capacity_ ? capacity_ * 2 : minCapacity); }

  // Moves every entry into a fresh table of newCapacity slots.
  void rehash(size_t newCapacity) {
    // Invariant: no rehash while an iteration bookmark is held. A rehash relocates
    // every entry, so an iteration in progress (typically one calling out to user
    // handlers that may insert) would continue over freed memory.
    ResizeControl* rsc = resizeControl();
    ZEL_ASSERT(!rsc->bookmark());
    uint32_t* oldMeta = meta_;
    Entry* oldSlots = slots_;
    const size_t oldCapacity = capacity_;
    allocate(newCapacity);  // may throw: the map is unchanged then
    for (size_t j = 0; j < oldCapacity; ++j) {
      if (oldMeta[j] == 0) continue;
      const Probe p = probeOf(hashOf(oldSlots[j].key));
      size_t i = p.index;
      uint32_t m = p.meta;
      while (meta_[i] >= m) {
        i = (i + 1) & mask_;
        m += distOne;
      }
      openSlot(i);
      relocate(slots_ + i, oldSlots + j);
      ZEL_ASSERT(m < metaLimit);
      meta_[i] = m;
    }
    deallocate(oldMeta, oldSlots, oldCapacity);
  }

  // Installs a fresh, empty table of cap slots; the old arrays are the caller's.
  void allocate(size_t cap) {
    uint32_t* meta = std::allocator<uint32_t>().allocate(cap);
    Entry* slots;
    try {
      slots = std::allocator<Entry>().allocate(cap);
    } catch (...) {
      std::allocator<uint32_t>().deallocate(meta, cap);
      throw;
    }
    std::memset(meta, 0, cap * sizeof(uint32_t));
    meta_ = meta;
    slots_ = slots;
    capacity_ = cap;
    mask_ = cap - 1;
    growAt_ = maxSizeFor(cap);
    shift_ = 64 - static_cast<unsigned>(std::countr_zero(cap));
  }

  static void deallocate(uint32_t* meta, Entry* slots, size_t cap) {
    if (cap == 0) return;
    std::allocator<uint32_t>().deallocate(meta, cap);
    std::allocator<Entry>().deallocate(slots, cap);
  }

  void destroyEntries() {
    if constexpr (!std::is_trivially_destructible_v<Entry>) {
      for (size_t i = 0; i < capacity_; ++i) {
        if (meta_[i] != 0) std::destroy_at(slots_ + i);
      }
    }
  }

  // Ends every entry, frees the table, and leaves the empty capacity-0 state.
  void release() noexcept {
    destroyEntries();
    deallocate(meta_, slots_, capacity_);
    resetTable();
  }

  void resetTable() noexcept {
    meta_ = const_cast<uint32_t*>(HashMap2018Detail::emptyMeta);
    slots_ = nullptr;
    capacity_ = 0;
    mask_ = 0;
    size_ = 0;
    growAt_ = 0;
    shift_ = 63;
  }

  // Takes o's table (this has none); o is left empty with capacity 0.
  void stealTable(HashMap2018& o) noexcept {
    meta_ = o.meta_;
    slots_ = o.slots_;
    capacity_ = o.capacity_;
    mask_ = o.mask_;
    size_ = o.size_;
    growAt_ = o.growAt_;
    shift_ = o.shift_;
    o.resetTable();
  }

  uint32_t* meta_ = const_cast<uint32_t*>(HashMap2018Detail::emptyMeta);
  Entry* slots_ = nullptr;
  size_t capacity_ = 0;
  size_t mask_ = 0;
  size_t size_ = 0;
  size_t growAt_ = 0;    // inserting a new key at this size grows the table first
  unsigned shift_ = 63;  // 64 - log2(capacity); 63 for the capacity-0 table
  [[no_unique_address]] H hash_;
  [[no_unique_address]] Eq eq_;
  mutable ResizeControl rsc_;
};

}  // namespace Zel
