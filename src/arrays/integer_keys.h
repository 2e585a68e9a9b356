// Integer keys for slot_table.h, stored in the slots.
//
// Searches compare by the sign of the difference of two keys, which wraps at the width of a key; sorts
// compare unsigned values. Both are part of the interface. They agree as long as all keys differ by less than
// half of their range.
#ifndef MUB_ARRAYS_INTEGER_KEYS_H
#define MUB_ARRAYS_INTEGER_KEYS_H

#include <cstdint>
#include <type_traits>

#include "arrays/slot_table.h"

namespace mub {

template <class Array>
struct IntegerSlots : SlotsWithoutStream<Array, KeysInItems<Array, decltype(Array::entries->key)>> {
  using Slot = std::remove_pointer_t<decltype(Array::entries)>;
  static constexpr auto kSlots = &Array::entries;
  static constexpr bool kSwapsPools = false;
};

template <>
struct Policy<mub_arrayd> : IntegerSlots<mub_arrayd> {};
template <>
struct Policy<mub_arrayx> : IntegerSlots<mub_arrayx> {};

// Compares entries with the wanted key by the sign of the difference.
template <class Integer>
struct IntegerSearchOrder {
  static constexpr bool kIsDifference = true;
  Integer key;

  template <class Entry>
  auto operator()(const Entry &entry) const {
    return static_cast<std::make_signed_t<Integer>>(entry.key - key);
  }
};
template <class Integer>
IntegerSearchOrder(Integer) -> IntegerSearchOrder<Integer>;

// Compares entries with each other, for the sort.
template <class Integer>
struct IntegerSortOrder : NumberSortOrder<Integer> {
  template <class Entry>
  Integer key(const Entry &entry) const {
    return entry.key;
  }
};

namespace integers {

// Returns the value of an entry and stores its key in `key`; both are 0 for nullptr.
template <class Entry, class Key>
uint64_t read_entry(const Entry *entry, Key &key) {
  key = entry != nullptr ? entry->key : 0;
  return slots::value_or_0(entry);
}

template <class Array, class Key>
uint64_t set_at(Array &array, int64_t index, Key key, uint64_t value) {
  auto *entry = slots::slot_at(array, index);
  if (entry != nullptr) entry->key = key;
  return slots::exchange_value(entry, value);
}

template <class Array, class Key>
uint64_t remove_at(Array &array, int64_t index, Key &key) {
  read_entry(index < slots::used(array) ? slots::slot_at(array, index) : nullptr, key);
  return slots::remove_at(array, index);
}

template <class Array, class Key>
int64_t scan_for(const Array &array, Key key) {
  return slots::scan(array, [key](const auto &entry) { return entry.key == key; });
}

template <class Array>
void sort(Array &array, bool ascending) {
  slots::sort(array, ascending, IntegerSortOrder<KeyOf<Array>>());
}

}  // namespace integers
}  // namespace mub

#endif
