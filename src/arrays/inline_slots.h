// The engine of mub_arrayt: an array of words, the first four of them in the record and the others in a heap
// block, the tail. Up to four words need no heap block.
//
//   record    inline_items [ 0 | 1 | 2 | 3 ]
//             tail ──► [ 4 | 5 | … | count-1 | spare … ]      capacity - 4 words
//
// Invariants:
//   1. `capacity` is a multiple of 4, and includes the words in the record. It is 4 or more, but 0 after
//      mub_arrayt_remove_all(), until the array grows.
//   2. The tail has capacity - 4 words; it is null if there are none.
//   3. 0 <= count <= capacity.
// Words that growth adds are 0. Other spare words keep their content, or are 0 after the last word was
// removed; those in the record start undefined: mub_arrayt_shrink() can bring them into use. No order is
// maintained.
//
// Threads: functions that take a const record write nothing, so readers may run in parallel.
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

constexpr int64_t kInlineWords = 4;  // in the public record: part of the interface
constexpr int64_t kWordBytes = 8;

// The number of words in use, limited to those that exist: without a tail, the four in the record.
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

inline int64_t memory_bytes(const mub_arrayt &array) { return static_cast<int64_t>(tail_bytes(array)); }

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

// Makes room for `wanted` words, and for at least four; false if memory runs out.
inline bool expand(mub_arrayt &array, int64_t wanted) {
  return (array.capacity >= wanted && array.capacity >= kInlineWords) || grow(array, wanted);
}

inline void shrink(mub_arrayt &array, int64_t count) {
  if (count >= 0) array.count = std::min(count, array.capacity);
}

// ---- positions

// Moves the words at `index` and after it up by one; the capacity exceeds the count.
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

// Moves the words from index + 1 to count - 1 down by one.
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

// Inserts a word at `index`, but at most at the end; false if memory runs out or `index` is negative.
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

// `source` may be `array` itself: the words that it has at the start are appended.
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

// `descending` stays with its record.
inline void swap(mub_arrayt &a, mub_arrayt &b) {
  std::swap(a, b);
  std::swap(a.descending, b.descending);
}

// ---- sorted arrays

// Compares the low 32 bits of words: by the sign of their difference, which wraps.
inline Spot find(const mub_arrayt &array, uint64_t key) {
  return binary_search_without_branches(
      used(array), array.descending != 0,
      [&](int64_t i) { return static_cast<int>(static_cast<uint32_t>(word(array, i) - key)); },
      [&](int64_t i) {
        if (i >= kInlineWords) prefetch(array.tail + i - kInlineWords);
      });
}

// ---- sorting, by all 64 bits as unsigned values

struct WordSortOrder : NumberSortOrder<uint64_t> {
  uint64_t key(uint64_t item) const { return item; }
};

inline void sort(uint64_t *items, int64_t count, bool ascending) {
  mub::sort(items, count, ascending, WordSortOrder());
}

// Copies sorted words into the array; if `unique`, without repetitions.
inline void store_sorted(mub_arrayt &array, const uint64_t *sorted, int64_t count, bool unique) {
  int64_t taken = 0;
  for (int64_t i = 0; i < count; ++i) {
    if (!unique || i == 0 || sorted[i] != sorted[i - 1]) word(array, taken++) = sorted[i];
  }
  array.count = taken;
}

// Sorts a copy of the words, since the array is in two parts. Does nothing if there is no memory for it.
inline void sort(mub_arrayt &array, bool ascending, bool unique) {
  const int64_t count = used(array);
  if (count < 1) return;
  auto *run = static_cast<uint64_t *>(allocate(count, kWordBytes));
  if (run == nullptr) return;
  for (int64_t i = 0; i < count; ++i) run[i] = word(array, i);
  sort(run, count, ascending);
  store_sorted(array, run, count, unique);
  release(run);
}

}  // namespace mub::words

#endif
