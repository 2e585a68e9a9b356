// The engine of the word array: a sequence of words that begins in the record and goes on in a heap block.
//
//   record    inline_items [ 0 | 1 | 2 | 3 ]
//             tail ──► [ 4 | 5 | … | count-1 | spare … ]      capacity - 4 words
//
// Invariants: the tail is null when the capacity is at most 4; otherwise 4 <= capacity, and count <=
// capacity. An emptied record has capacity 0 until it grows.
#ifndef MUB_ARRAYS_INLINE_SLOTS_H
#define MUB_ARRAYS_INLINE_SLOTS_H

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <utility>

#include "arrays/search.h"
#include "arrays/sort.h"
#include "base/alloc.h"
#include "base/growth.h"
#include "base/prefetch.h"
#include "bytes/unit_buffer.h"
#include "mub_array.h"

namespace mub::words {

constexpr int64_t kInlineWords = 4;
constexpr int64_t kWordBytes = 8;

// The words that can be reached: without a tail those in the record, whatever the count says.
inline int64_t used(const mub_arrayt &array) {
  return std::min(array.count, array.tail != nullptr ? array.capacity : kInlineWords);
}

inline bool holds(const mub_arrayt &array, int64_t index) { return index >= 0 && index < used(array); }

inline uint64_t &word(mub_arrayt &array, int64_t index) {
  assert(index < kInlineWords || array.tail != nullptr);
  return index < kInlineWords ? array.inline_items[index] : array.tail[index - kInlineWords];
}

inline uint64_t word(const mub_arrayt &array, int64_t index) {
  assert(index < kInlineWords || array.tail != nullptr);
  return index < kInlineWords ? array.inline_items[index] : array.tail[index - kInlineWords];
}

inline uint64_t word_or_0(const mub_arrayt &array, int64_t index) {
  return holds(array, index) ? word(array, index) : 0;
}

inline uint64_t tail_bytes(const mub_arrayt &array) {
  return array.tail == nullptr ? 0
                               : static_cast<uint64_t>(array.capacity - kInlineWords) * sizeof *array.tail;
}

inline void release_tail(mub_arrayt &array, int64_t capacity) {
  release(array.tail);
  array.tail = nullptr;
  array.count = 0;
  array.capacity = capacity;
}

// ---- growth

__attribute__((noinline)) inline bool grow(mub_arrayt &array, int64_t wanted) {
  array.capacity = std::max(array.capacity, kInlineWords);
  if (array.capacity >= wanted) return true;
  if (wanted > kMaxUnits) return false;
  const int64_t capacity = grown_slots(array.count, array.capacity, wanted);
  void *tail = regrown(array.tail, array.capacity - kInlineWords, capacity - kInlineWords, kWordBytes);
  if (tail == nullptr) return false;
  array.tail = static_cast<uint64_t *>(tail);
  array.capacity = capacity;
  return true;
}

// Makes room for `wanted` words, and at least for those in the record; false when memory runs out.
inline bool expand(mub_arrayt &array, int64_t wanted) {
  return (array.capacity >= wanted && array.capacity >= kInlineWords) || grow(array, wanted);
}

inline void shrink(mub_arrayt &array, int64_t count) {
  if (count >= 0) array.count = std::min(count, array.capacity);
}

// ---- positions

// Moves the words from `index` on up by one place; there is room for it.
inline void open_gap(mub_arrayt &array, int64_t index) {
  const int64_t first = std::max(index, kInlineWords);
  if (array.count >= first) {
    buffer::move_units(&word(array, first) + 1, &word(array, first), array.count - first);
    if (index < first) array.tail[0] = array.inline_items[kInlineWords - 1];
  }
  if (index >= kInlineWords) return;
  uint64_t *gap = array.inline_items + index;
  buffer::move_units(gap + 1, gap, std::min(array.count, kInlineWords - 1) - index);
}

// Moves the words after `index`, up to `count`, down by one place.
inline void close_gap(mub_arrayt &array, int64_t index, int64_t count) {
  const int64_t first = std::max(index, kInlineWords);
  if (index < kInlineWords) {
    uint64_t *gap = array.inline_items + index;
    buffer::move_units(gap, gap + 1, std::min(count, kInlineWords) - 1 - index);
    if (count > kInlineWords) array.inline_items[kInlineWords - 1] = array.tail[0];
  }
  if (count <= first) return;
  buffer::move_units(&word(array, first), &word(array, first) + 1, count - 1 - first);
}

// Before the word at `index`, or at the end; false when it was refused.
inline bool insert_at(mub_arrayt &array, int64_t index, uint64_t item) {
  if (index < 0 || !expand(array, array.count + 1)) return false;
  const int64_t place = std::min(index, array.count);
  open_gap(array, place);
  word(array, place) = item;
  ++array.count;
  return true;
}

inline bool append(mub_arrayt &array, uint64_t item) { return insert_at(array, array.count, item); }

inline uint64_t remove_at(mub_arrayt &array, int64_t index) {
  if (!holds(array, index)) return 0;
  const int64_t count = used(array);
  const uint64_t item = std::exchange(word(array, index), 0);
  close_gap(array, index, count);
  array.count = count - 1;
  return item;
}

// ---- whole arrays

// The source may be the destination itself: it is walked up to its count at entry.
inline void append_array(mub_arrayt &array, const mub_arrayt &source) {
  const int64_t added = used(source);
  int64_t count;
  if (__builtin_add_overflow(array.count, added, &count) || !expand(array, count)) return;
  for (int64_t i = 0; i < added; ++i) word(array, array.count + i) = word(source, i);
  array.count = count;
}

inline void clone(const mub_arrayt &source, mub_arrayt &copy) {
  if (&source == &copy || !expand(copy, source.capacity)) return;
  copy.count = 0;
  append_array(copy, source);
}

// Exchanges all but the order flags.
inline void swap(mub_arrayt &a, mub_arrayt &b) {
  std::swap(a, b);
  std::swap(a.descending, b.descending);
}

// ---- sorted arrays

// Words are compared by the sign of the wrapped difference of their low 32 bits.
inline Spot find(const mub_arrayt &array, uint64_t key) {
  return binary_search_without_branches(
      used(array), array.descending != 0,
      [&](int64_t i) { return static_cast<int>(static_cast<uint32_t>(word(array, i) - key)); },
      [&](int64_t i) {
        if (i >= kInlineWords) prefetch(array.tail + i - kInlineWords);
      });
}

// ---- sorting, by all bits as unsigned values

struct WordOrder {
  using Key = uint64_t;
  Key key(uint64_t item) const { return item; }
  int compare(Key a, Key b) const { return a < b ? -1 : a != b; }
};

inline void sort(uint64_t *items, int64_t count, bool ascending) {
  mub::sort(items, count, ascending, WordOrder());
}

// Takes over the words of a sorted run, of equal ones only the first if they are to be unique.
inline void take_over(mub_arrayt &array, const uint64_t *sorted, int64_t count, bool unique) {
  int64_t taken = 0;
  for (int64_t i = 0; i < count; ++i) {
    if (!unique || i == 0 || sorted[i] != sorted[i - 1]) word(array, taken++) = sorted[i];
  }
  array.count = taken;
}

// The words are sorted in one run beside the array; without memory for it nothing happens.
inline void sort(mub_arrayt &array, bool ascending, bool unique) {
  const int64_t count = used(array);
  if (count < 1) return;
  auto *run = static_cast<uint64_t *>(allocate(count, kWordBytes));
  if (run == nullptr) return;
  for (int64_t i = 0; i < count; ++i) run[i] = word(array, i);
  sort(run, count, ascending);
  take_over(array, run, count, unique);
  release(run);
}

}  // namespace mub::words

#endif
