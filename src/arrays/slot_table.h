// The engine of the growable arrays: a table of slots in one heap block. Slots are added and removed by
// position, and the operations on sorted arrays find the position by binary search. What a slot is, and where
// its key is stored if it has one, is up to the policy.
//
//   record    slots ──► [ slot 0 | slot 1 | … | slot count-1 | spare … ]
//                         0                     count          capacity
//
// Invariants:
//   1. The table has `capacity` slots, a multiple of 4; it is null when `capacity` is 0. Slots that growth
//      adds are all zero; a slot that becomes spare keeps its content, except that a number as key may be
//      reset to 0.
//   2. 0 <= count <= capacity, except after a clone that ran out of memory: the copy has the count of its
//      source, but no table, or after expand() one that is too small; a clone of it takes over that count.
//      Loops therefore end at used(), the smaller of the two. The next addition adds the missing slots, all
//      zero; expand() may add only some.
// byte_keys.h adds what holds for keys in a stream. No order is maintained: a sorted array stays sorted only
// while its caller uses the operations for sorted arrays. A search in any other array ends inside the table.
//
// Threads: functions that take a const record write nothing, so readers may run in parallel.
//
// The policy provides what containers/key_store.h lists, and
//   Slot, kSlots                     the type of a slot, and the field that points to the table
//   kSwapsPools                      whether swap() exchanges the value pools, too
//   store_empty_key(array, slot)     gives a new slot the empty key; this cannot fail
//   insert_key_bytes(array, slot, key)
//                                    inserts the bytes of a key before those of `slot`; false if it is
//                                    empty, the key of `slot` starts past the end of the stream, or there is
//                                    no room or memory
//   set_inserted_key(array, slot, key)
//                                    gives the key to `slot` after insert_key_bytes; the slots from there on
//                                    have moved up, and `count` does not yet include the new one
//   shift_keys_down(array, slot)     called after erase_key and before `slot` is removed: updates the keys of
//                                    the other slots. erase_key leaves the fields that it needs as they were
//   reserve_keys_of(array, source)   makes room for the keys of another array; false if memory runs out
// Searches are given a search order: order(slot) compares the key of a slot with the wanted key. Sorts are
// given a sort order (sort.h), which compares two slots.
#ifndef MUB_ARRAYS_SLOT_TABLE_H
#define MUB_ARRAYS_SLOT_TABLE_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "arrays/search.h"
#include "arrays/sort.h"
#include "base/alloc.h"
#include "base/growth.h"
#include "base/prefetch.h"
#include "bytes/unit_buffer.h"
#include "containers/container_pools.h"
#include "containers/key_store.h"
#include "containers/memory.h"
#include "containers/policy.h"
#include "mub_array.h"
#include "pool/pool.h"

namespace mub {

// For records that keep no key bytes outside their slots.
template <class Array, class Keys>
struct SlotsWithoutStream : Keys {
  template <class Slot>
  static void store_empty_key(Array &, Slot &) {}  // GCOVR_EXCL_LINE: store_key never fails
  template <class Slot, class Key>
  static bool insert_key_bytes(Array &, const Slot &, const Key &) {
    return true;
  }
  template <class Slot, class Key>
  static void set_inserted_key(Array &array, Slot &slot, const Key &key) {
    Keys::store_key(array, slot, key);
  }
  template <class Slot>
  static void shift_keys_down(Array &, const Slot &) {}
  static bool reserve_keys_of(Array &, const Array &) { return true; }
};

template <>
struct Policy<mub_arrays> : SlotsWithoutStream<mub_arrays, NoKeys<mub_arrays>> {
  using Slot = uint64_t;
  static constexpr auto kSlots = &mub_arrays::items;
  static constexpr bool kSwapsPools = true;
};

namespace slots {

template <class Array>
using SlotOf = typename Policy<Array>::Slot;

template <class Array>
auto &table(Array &array) {
  return array.*Policy<std::remove_const_t<Array>>::kSlots;
}

// The value of an entry; a bare item is its own value.
template <class Slot>
auto &value_of(Slot &slot) {
  if constexpr (std::is_integral_v<Slot>) {
    return slot;
  } else {
    return slot.value;
  }
}

// Replaces that of container_pools.h: the fields of arrays have other names.
template <class Array>
auto value_pool_of(Array &array) {
  return PoolField{array.pool, array.own_pool};
}

template <class Array>
int64_t used(const Array &array) {
  return std::min(array.count, array.capacity);
}

// ---- growth

template <class Array>
__attribute__((noinline)) bool grow(Array &array, int64_t wanted) {
  if (wanted > kMaxUnits) return false;
  const int64_t capacity = grown_slots(array.count, array.capacity, wanted);
  void *grown = regrown(table(array), array.capacity, capacity, sizeof(SlotOf<Array>));
  if (grown == nullptr) return false;
  table(array) = static_cast<SlotOf<Array> *>(grown);
  array.capacity = capacity;
  return true;
}

// Makes room for `wanted` slots; false, and the record unchanged, if memory runs out.
template <class Array>
bool expand(Array &array, int64_t wanted) {
  return array.capacity >= wanted || grow(array, wanted);
}

template <class Array>
void set_count(Array &array, int64_t count) {
  if (count >= 0) array.count = std::min(count, array.capacity);
}

template <class Array>
void shrink(Array &array, int64_t count) {
  if (table(array) != nullptr) set_count(array, count);
}

// ---- whole arrays

template <class Array>
void init(Array &array, bool with_pool) {
  std::memset(&array, 0, sizeof array);  // clears the padding, too: new records compare equal with memcmp
  if (with_pool) value_pool_of(array).make(0);
}

template <class Array>
void release_table(Array &array) {
  release(table(array));
  table(array) = nullptr;
  array.count = 0;
  array.capacity = 0;
}

template <class Array>
void term(Array &array) {
  release_table(array);
  Policy<Array>::term_keys(array);
  value_pool_of(array).destroy();
}

template <class Array>
void remove_all(Array &array) {
  release_table(array);
  Policy<Array>::clear_keys(array);
  value_pool_of(array).make_empty();
}

template <class Array>
void free_values(Array &array, mub_free_fn release_it) {
  for (int64_t i = 0; i < used(array); ++i) {
    release_value(value_pool_of(array), value_of(table(array)[i]), release_it);
  }
}

template <class Array>
void free_all(Array &array, mub_free_fn release_it) {
  if (release_it != nullptr || array.own_pool == 0) free_values(array, release_it);
  release_table(array);
  Policy<Array>::term_keys(array);
  value_pool_of(array).make_empty();
}

// `descending` stays with its record.
template <class Array>
void swap(Array &a, Array &b) {
  std::swap(table(a), table(b));
  std::swap(a.count, b.count);
  std::swap(a.capacity, b.capacity);
  Policy<Array>::swap_keys(a, b);
  if constexpr (Policy<Array>::kSwapsPools) value_pool_of(a).swap(value_pool_of(b));
}

template <class Array>
int64_t table_bytes(const Array &array) {
  return array.capacity * int64_t{sizeof(SlotOf<Array>)};
}

template <class Array>
int64_t memory_bytes(const Array &array) {
  return table_bytes(array) + owned_pool_bytes(value_pool_of(array)) + key_stream_bytes(array);
}

// ---- positions, bounded by the capacity and not by the count

template <class Array>
SlotOf<Array> *slot_at(const Array &array, int64_t index) {
  return index >= 0 && index < array.capacity ? table(array) + index : nullptr;
}

template <class Array>
SlotOf<Array> *first_slot(const Array &array) {
  return array.count < 1 ? nullptr : slot_at(array, 0);
}

template <class Array>
SlotOf<Array> *last_slot(const Array &array) {
  return array.count < 1 ? nullptr : slot_at(array, array.count - 1);
}

template <class Slot>
uint64_t value_or_0(const Slot *slot) {
  return slot != nullptr ? value_of(*slot) : 0;
}

template <class Slot>
uint64_t exchange_value(Slot *slot, uint64_t value) {
  return slot != nullptr ? std::exchange(value_of(*slot), value) : 0;
}

// ---- adding; functions that return a slot return the new one, or nullptr if it could not be added:
// memory ran out, or the policy refused the key

// If there is no memory for the key, the slot gets the empty key.
template <class Array>
SlotOf<Array> *append(Array &array, const KeyOf<Array> &key, uint64_t value) {
  if (!expand(array, array.count + 1)) return nullptr;
  SlotOf<Array> *slot = table(array) + array.count;
  if (!Policy<Array>::store_key(array, *slot, key)) Policy<Array>::store_empty_key(array, *slot);
  value_of(*slot) = value;
  ++array.count;
  return slot;
}

// Makes room for a new slot at `index`, which is below the count, and gives it its key.
template <class Array>
bool open_slot(Array &array, int64_t index, const KeyOf<Array> &key) {
  SlotOf<Array> *slot = table(array) + index;
  if (!Policy<Array>::insert_key_bytes(array, *slot, key)) return false;
  buffer::move_units(slot + 1, slot, array.count - index);
  Policy<Array>::set_inserted_key(array, *slot, key);
  return true;
}

// If there is no memory for the key, nothing is added: an empty key would break the order.
template <class Array>
SlotOf<Array> *insert_at(Array &array, int64_t index, const KeyOf<Array> &key, uint64_t value) {
  if (index < 0 || !expand(array, array.count + 1)) return nullptr;
  index = std::min(index, array.count);
  SlotOf<Array> *slot = table(array) + index;
  const bool has_key =
      index < array.count ? open_slot(array, index, key) : Policy<Array>::store_key(array, *slot, key);
  if (!has_key) return nullptr;
  value_of(*slot) = value;
  ++array.count;
  return slot;
}

// Appends a slot whose value is a new block of the value pool, and returns the block. `init_it` runs before
// the slot is added.
template <class Array>
uint64_t append_new(Array &array, const KeyOf<Array> &key, mub_init_fn init_it) {
  if (!expand(array, array.count + 1)) return 0;
  const uint64_t value = take_value(array.pool, init_it);
  append(array, key, value);
  return value;
}

// Inserts one before `index`, and returns the index of the new slot. `init_it` runs after the block was
// stored in `value_out`. If nothing was inserted, the block goes back to its pool and the result is -1.
template <class Array>
int insert_new_at(Array &array, int64_t index, const KeyOf<Array> &key, uint64_t &value_out,
                  mub_init_fn init_it) {
  void *block = pool::take(array.pool);
  value_out = word_of(block);
  initialise(word_of(block), init_it);
  const SlotOf<Array> *slot = insert_at(array, index, key, word_of(block));
  if (slot != nullptr) return static_cast<int>(slot - table(array));
  pool::give(array.pool, block);
  value_out = 0;
  return -1;
}

// `source` may be `array` itself: the slots that it has at the start are appended.
template <class Array>
void append_array(Array &array, const Array &source) {
  const int64_t added = used(source);
  int64_t count;
  if (__builtin_add_overflow(array.count, added, &count)) return;
  if (!expand(array, count) || !Policy<Array>::reserve_keys_of(array, source)) return;
  for (int64_t i = 0; i < added; ++i) {
    const SlotOf<Array> &slot = table(source)[i];
    append(array, Policy<Array>::key_of(source, slot), value_of(slot));
  }
}

// ---- removing

// Removes a slot whose key was erased. This also corrects the count of a clone that ran out of memory.
template <class Array>
void close_slot(Array &array, SlotOf<Array> *slot) {
  Policy<Array>::shift_keys_down(array, *slot);
  const int64_t last = used(array) - 1;
  buffer::move_units(slot, slot + 1, last - (slot - table(array)));
  array.count = last;
}

template <class Array>
uint64_t remove_at(Array &array, int64_t index) {
  if (index < 0 || index >= used(array)) return 0;
  SlotOf<Array> *slot = table(array) + index;
  const uint64_t value = value_of(*slot);
  Policy<Array>::erase_key(array, *slot);
  close_slot(array, slot);
  return value;
}

// `release_it` runs after the key was erased and before the slot is removed.
template <class Array>
void free_at(Array &array, int64_t index, mub_free_fn release_it) {
  if (index < 0 || index >= used(array)) return;
  SlotOf<Array> *slot = table(array) + index;
  Policy<Array>::erase_key(array, *slot);
  release_value(value_pool_of(array), value_of(*slot), release_it);
  // `release_it` must not change the array. In case it did, look again: the table may have moved or shrunk.
  if (index < used(array)) close_slot(array, table(array) + index);  // GCOVR_EXCL_BR_LINE
}

// ---- sorted arrays

// SearchOrder::kIsDifference: the order returns a difference, whose sign can be turned into a mask.
template <class Array, class SearchOrder>
Spot find(const Array &array, SearchOrder order) {
  const SlotOf<Array> *first = table(array);
  const auto compare_at = [&](int64_t i) { return order(first[i]); };
  if constexpr (SearchOrder::kIsDifference) {
    return binary_search_without_branches(used(array), array.descending != 0, compare_at,
                                          [first](int64_t i) { prefetch(first + i); });
  } else {
    return binary_search(used(array), array.descending != 0, compare_at);
  }
}

template <class Array, class SearchOrder>
int64_t find_index(const Array &array, SearchOrder order) {
  const Spot spot = find(array, order);
  return spot.found ? spot.index : -1;
}

template <class Array, class SearchOrder>
SlotOf<Array> *find_slot(const Array &array, SearchOrder order) {
  const Spot spot = find(array, order);
  return spot.found ? table(array) + spot.index : nullptr;
}

template <class Array, class SearchOrder>
int64_t nearest_index(const Array &array, SearchOrder order) {
  return nearest(find(array, order), used(array));
}

template <class Array, class SearchOrder>
SlotOf<Array> *nearest_slot(const Array &array, SearchOrder order) {
  return slot_at(array, nearest_index(array, order));
}

// Returns the index of the first slot that passes the test; -1 if there is none.
template <class Array, class IsWanted>
int64_t scan(const Array &array, IsWanted is_wanted) {
  const SlotOf<Array> *first = table(array);
  for (int64_t i = 0; i < used(array); ++i) {
    if (is_wanted(first[i])) return i;
  }
  return -1;
}

// Returns 0 if the key was present, else 1, even if it could not be added.
template <class Array, class SearchOrder>
int insert(Array &array, const KeyOf<Array> &key, uint64_t value, SearchOrder order) {
  const Spot spot = find(array, order);
  if (spot.found) return 0;
  insert_at(array, spot.index, key, value);
  return 1;
}

// Returns the index of the new entry; -1 if the key was present or could not be added.
template <class Array, class SearchOrder>
int insert_new(Array &array, const KeyOf<Array> &key, uint64_t &value_out, mub_init_fn init_it,
               SearchOrder order) {
  value_out = 0;
  const Spot spot = find(array, order);
  if (!spot.found) return insert_new_at(array, spot.index, key, value_out, init_it);
  value_out = value_of(table(array)[spot.index]);
  return -1;
}

// Returns the slot of a key, which is added with value 0 if it is missing; nullptr if it could not be added.
template <class Array, class SearchOrder>
SlotOf<Array> *find_or_insert(Array &array, const KeyOf<Array> &key, SearchOrder order) {
  const Spot spot = find(array, order);
  return spot.found ? table(array) + spot.index : insert_at(array, spot.index, key, 0);
}

// ---- sorting, in the direction of the call; `descending` is not read

template <class Array, class SortOrder>
void sort(Array &array, bool ascending, const SortOrder &order) {
  mub::sort(table(array), used(array), ascending, order);
}

// Orders slots by their values with a caller's comparator.
template <class Call>
struct ValueSortOrder {
  using Key = uint64_t;
  Call call;

  template <class Slot>
  Key key(const Slot &slot) const {
    return value_of(slot);
  }
  int compare(Key a, Key b) const { return call(a, b); }
};

template <class Array, class Call>
void sort_values(Array &array, bool ascending, Call call) {
  sort(array, ascending, ValueSortOrder<Call>{call});
}

}  // namespace slots
}  // namespace mub

#endif
