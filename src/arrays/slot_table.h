// The engine of the growable arrays.
//
//   record    slots ──► [ entry 0 | entry 1 | … | entry count-1 | spare … ]
//                         0                       count           capacity
//
// Invariants:
//   1. The table holds `capacity` slots; it is null when capacity is 0. A fresh slot is all zero.
//   2. count <= capacity, but for a clone that ran out of memory: it states the count of its source. So every
//      walk, search and sort ends at used(), the smaller of the two.
#ifndef MUB_ARRAYS_SLOT_TABLE_H
#define MUB_ARRAYS_SLOT_TABLE_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "core/alloc.h"
#include "core/growth.h"
#include "core/pool.h"
#include "core/unit_buffer.h"
#include "mub_array.h"

namespace mub {

// What the engine has to know of a record.
template <class Record>
struct SlotTraits;

template <>
struct SlotTraits<mub_array> {
  using Slot = mub_array_entry;
  static Slot *&slots(mub_array &array) { return array.entries; }
  static Slot *slots(const mub_array &array) { return array.entries; }
  static void forget_keys(mub_array &array) { buffer::shrink(array.keys, 0); }
  static void release_keys(mub_array &array) { buffer::term(array.keys); }
};

template <>
struct SlotTraits<mub_arrays> {
  using Slot = uint64_t;
  static Slot *&slots(mub_arrays &array) { return array.items; }
  static Slot *slots(const mub_arrays &array) { return array.items; }
  static void forget_keys(mub_arrays &) {}
  static void release_keys(mub_arrays &) {}
};

namespace slots {

// A table of `capacity` slots with the content of `old`, zero behind it; nullptr when memory runs out, `old` then
// untouched. A fresh block and not realloc: callers may rely on the address changing.
inline void *regrown_table(void *old, int64_t old_capacity, int64_t capacity, int64_t slot_bytes) {
  if (old == nullptr) return allocate_zeroed(capacity, slot_bytes);
  void *table = allocate(capacity, slot_bytes);
  if (table == nullptr) return nullptr;
  const auto old_bytes = static_cast<size_t>(old_capacity * slot_bytes);
  std::memcpy(table, old, old_bytes);
  std::memset(static_cast<char *>(table) + old_bytes, 0,
              static_cast<size_t>(capacity * slot_bytes) - old_bytes);
  release(old);
  return table;
}

template <class Record>
using SlotOf = typename SlotTraits<Record>::Slot;

template <class Record>
__attribute__((noinline)) bool grow(Record &array, int64_t wanted) {
  if (wanted > kMaxUnits) return false;
  auto &table = SlotTraits<Record>::slots(array);
  const int64_t capacity = grown_slots(array.count, array.capacity, wanted);
  void *grown = regrown_table(table, array.capacity, capacity, sizeof(SlotOf<Record>));
  if (grown == nullptr) return false;
  table = static_cast<SlotOf<Record> *>(grown);
  array.capacity = capacity;
  return true;
}

// Makes room for `wanted` slots; false when memory runs out, the record unchanged.
template <class Record>
bool expand(Record &array, int64_t wanted) {
  return array.capacity >= wanted || grow(array, wanted);
}

template <class Record>
void init(Record &array, bool with_pool) {
  array = {};
  if (!with_pool) return;
  array.pool = pool::create(0);
  array.own_pool = array.pool != nullptr;
}

template <class Record>
void release_table(Record &array) {
  auto &table = SlotTraits<Record>::slots(array);
  release(table);
  table = nullptr;
  array.count = 0;
  array.capacity = 0;
}

template <class Record>
void term(Record &array) {
  release_table(array);
  SlotTraits<Record>::release_keys(array);
  pool::destroy_owned(array.pool, array.own_pool);
}

template <class Record>
void remove_all(Record &array) {
  release_table(array);
  SlotTraits<Record>::forget_keys(array);
  if (array.own_pool != 0 && array.pool != nullptr) pool::empty(*array.pool);
}

inline void swap(mub_arrays &a, mub_arrays &b) {
  std::swap(a.items, b.items);
  std::swap(a.count, b.count);
  std::swap(a.capacity, b.capacity);
  std::swap(a.pool, b.pool);
  std::swap(a.own_pool, b.own_pool);
}

}  // namespace slots
}  // namespace mub

#endif
