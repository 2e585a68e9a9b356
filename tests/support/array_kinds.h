// The kinds of arrays as one: call<kFind>(array, key) finds a key, whatever the array's keys look like.
#ifndef MUB_TESTS_SUPPORT_ARRAY_KINDS_H
#define MUB_TESTS_SUPPORT_ARRAY_KINDS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/calls.h"
#include "support/random.h"

namespace mub_test {

// The operations, in the order of each kind's functions.
enum Whole { kInit, kTerm, kExpand, kShrink, kSwap, kClone, kRemoveAll, kFreeAll, kAppendArray };
enum Placed { kUpdateAt = kAppendArray + 1, kRemoveAt, kFreeAt, kInsertAt, kSetAt, kAppend, kAppendNew };
enum Sorted { kInsert = kAppendNew + 1, kInsertNew, kUpdate, kRemove, kFree };
enum Found { kFind = kFree + 1, kFindIndex, kBfind, kBfindIndex };
enum OfEntries { kAfind = kBfindIndex + 1, kAfindIndex, kEntryInsert, kEntryFind };
enum OfIntegers { kGetAt = kEntryFind + 1, kRemoveKeyAt };

struct ByteKeyed : PassingBytes {
  using Record = mub_array;
  using Key = std::string;
  using Passed = std::string_view;
  static constexpr bool kIsOrdered = true;
  static constexpr auto kFunctions = std::make_tuple(
      mub_array_init, mub_array_term, mub_array_expand, mub_array_shrink, mub_array_swap, mub_array_clone,
      mub_array_remove_all, mub_array_free_all, mub_array_append_array, mub_array_update_at,
      mub_array_remove_at, mub_array_free_at, mub_array_insert_at, mub_array_set_at, mub_array_append,
      mub_array_append_new, mub_array_insert, mub_array_insert_new, mub_array_update, mub_array_remove,
      mub_array_free, mub_array_find, mub_array_find_index, mub_array_bfind, mub_array_bfind_index,
      mub_array_afind, mub_array_afind_index, mub_array_entry_insert, mub_array_entry_find);

  template <int kOperation, class... Args>
  static auto call(Record *array, const Args &...args) {
    return call_of<kOperation, ByteKeyed>(array, args...);
  }
  using PassingBytes::passed;
  template <class Bytes>
  static auto passed(const std::pair<Bytes, uint64_t> &entry) {
    return std::tuple_cat(passed(entry.first), std::tuple(entry.second));
  }
  static int order(const Key &a, const Key &b) { return a.compare(b); }
  // The entry that a key and a word make.
  static std::pair<Key, uint64_t> made(const Key &key, uint64_t word) { return {key, word}; }

  // Keys that differ in one byte, hold every byte value, are prefixes of one another, or are empty.
  static Key random_key(Random &random) {
    std::string key(static_cast<size_t>(random.below(random.one_in(4) ? 40 : 4)), 'k');
    const char letters[] = {'\0', 'a', 'k', '\x7F', '\x80', '\xFF'};
    for (size_t i = 1; i <= 3 && i <= key.size(); ++i) key[key.size() - i] = letters[random.below(6)];
    return key;
  }
  static Key key(int64_t number) { return std::to_string(10000000 + number); }
  static std::pair<Key, uint64_t> entry(const Record *array, int64_t index) {
    const char *key;
    int64_t length;
    const uint64_t value = mub_array_get_at(array, index, &key, &length);
    return {std::string(key != nullptr ? key : "", static_cast<size_t>(length)), value};
  }
};

// Searches order integer keys by the sign of their wrapped difference.
template <class RecordOfKind, class Bits, const auto &kTable>
struct IntegerKeyed : Passing {
  using Record = RecordOfKind;
  using Key = Bits;
  using Passed = Key;
  static constexpr bool kIsOrdered = true;

  static constexpr const auto &kFunctions = kTable;

  template <int kOperation, class... Args>
  static auto call(Record *array, const Args &...args) {
    return call_of<kOperation, IntegerKeyed>(array, args...);
  }
  using Passing::passed;
  static auto passed(const std::pair<Key, uint64_t> &entry) { return std::tuple(entry.first, entry.second); }

  static int order(Key a, Key b) {
    const auto difference = static_cast<std::make_signed_t<Bits>>(static_cast<Bits>(a - b));
    return difference < 0 ? -1 : difference > 0;
  }
  static std::pair<Key, uint64_t> made(Key key, uint64_t word) { return {key, word}; }
  // Small keys and large ones of either sign, also further apart than half of their range.
  static Key random_key(Random &random) {
    const auto key = static_cast<std::make_signed_t<Bits>>(random.word());
    return static_cast<Key>(key >> random.below(8 * sizeof(Bits)));
  }
  // Ascending numbers up to 1e6 fill the width.
  static Key key(int64_t number) {
    return static_cast<Key>(number) * (std::numeric_limits<Key>::max() / 1000000);
  }
  static std::pair<Key, uint64_t> entry(const Record *array, int64_t index) {
    Key key = 99;
    const uint64_t value = std::get<kGetAt>(kTable)(array, index, &key);
    return {key, value};
  }
};

template <class Record, class Key, auto kRemoveAt>
uint64_t remove_at(Record *array, int64_t index) {
  Key key;
  return kRemoveAt(array, index, &key);
}

inline constexpr auto kArraydFunctions = std::make_tuple(
    mub_arrayd_init, mub_arrayd_term, mub_arrayd_expand, mub_arrayd_shrink, mub_arrayd_swap, mub_arrayd_clone,
    mub_arrayd_remove_all, mub_arrayd_free_all, mub_arrayd_append_array, mub_arrayd_update_at,
    remove_at<mub_arrayd, uint32_t, mub_arrayd_remove_at>, mub_arrayd_free_at, mub_arrayd_insert_at,
    mub_arrayd_set_at, mub_arrayd_append, mub_arrayd_append_new, mub_arrayd_insert, mub_arrayd_insert_new,
    mub_arrayd_update, mub_arrayd_remove, mub_arrayd_free, mub_arrayd_find, mub_arrayd_find_index,
    mub_arrayd_bfind, mub_arrayd_bfind_index, mub_arrayd_afind, mub_arrayd_afind_index,
    mub_arrayd_entry_insert, mub_arrayd_entry_find, mub_arrayd_get_at, mub_arrayd_remove_at);
using Keyed32 = IntegerKeyed<mub_arrayd, uint32_t, kArraydFunctions>;

inline constexpr auto kArrayxFunctions = std::make_tuple(
    mub_arrayx_init, mub_arrayx_term, mub_arrayx_expand, mub_arrayx_shrink, mub_arrayx_swap, mub_arrayx_clone,
    mub_arrayx_remove_all, mub_arrayx_free_all, mub_arrayx_append_array, mub_arrayx_update_at,
    remove_at<mub_arrayx, uint64_t, mub_arrayx_remove_at>, mub_arrayx_free_at, mub_arrayx_insert_at,
    mub_arrayx_set_at, mub_arrayx_append, mub_arrayx_append_new, mub_arrayx_insert, mub_arrayx_insert_new,
    mub_arrayx_update, mub_arrayx_remove, mub_arrayx_free, mub_arrayx_find, mub_arrayx_find_index,
    mub_arrayx_bfind, mub_arrayx_bfind_index, mub_arrayx_afind, mub_arrayx_afind_index,
    mub_arrayx_entry_insert, mub_arrayx_entry_find, mub_arrayx_get_at, mub_arrayx_remove_at);
using Keyed64 = IntegerKeyed<mub_arrayx, uint64_t, kArrayxFunctions>;

// Items are their own keys and values; the lowest 8 bits do not count in their order. Comparers go to the ends of what
// an int can hold, and find everything equal when called with a wrong context.
constexpr uint64_t kContext = 0xC0FFEE;
constexpr uint64_t kExtra = 0xFACE;

inline int order_items(uint64_t item, uint64_t key, uint64_t context) {
  if (context != kContext || item >> 8 == key >> 8) return 0;
  return item >> 8 < key >> 8 ? INT_MIN : INT_MAX;
}
inline int order_items_x(uint64_t context, uint64_t item, uint64_t key, uint64_t extra) {
  return extra == kExtra ? order_items(item, key, context) : 0;
}

template <bool kInContext, bool kHasComparer = true>
struct ItemsBy {
  using Record = mub_arrays;
  using Key = uint64_t;
  using Passed = Key;
  static constexpr bool kIsOrdered = kHasComparer;
  static constexpr auto kFunctions = std::make_tuple(
      mub_arrays_init, mub_arrays_term, mub_arrays_expand, mub_arrays_shrink, mub_arrays_swap,
      mub_arrays_clone, mub_arrays_remove_all, mub_arrays_free_all, mub_arrays_append_array,
      mub_arrays_set_at, mub_arrays_remove_at, mub_arrays_free_at, mub_arrays_insert_at, mub_arrays_set_at,
      mub_arrays_append,
      [](Record *array, Key, mub_init_fn init) { return mub_arrays_append_new(array, init); },
      mub_arrays_insert, mub_arrays_insert_new, mub_arrays_update, mub_arrays_remove, mub_arrays_free,
      mub_arrays_find, mub_arrays_find_index, mub_arrays_bfind, mub_arrays_bfind_index);
  static constexpr auto kFunctionsInContext =
      std::make_tuple(mub_arrays_insert_x, mub_arrays_insert_new_x, mub_arrays_update_x, mub_arrays_remove_x,
                      mub_arrays_free_x, mub_arrays_find_x, mub_arrays_find_index_x, mub_arrays_bfind_x,
                      mub_arrays_bfind_index_x);

  template <int kOperation, class... Args>
  static auto call(Record *array, Args... args) {
    if constexpr (kOperation < kInsert) {
      return std::get<kOperation>(kFunctions)(array, passed(args)...);
    } else {
      return call_sorted<kOperation>(array, passed(args)...);
    }
  }
  template <int kOperation, class... Rest>
  static auto call_sorted(Record *array, Key key, Rest... rest) {
    if constexpr (kInContext) {
      constexpr auto kFunction = std::get<kOperation - kInsert>(kFunctionsInContext);
      return kFunction(array, kContext, key, kExtra, rest..., kHasComparer ? order_items_x : nullptr);
    } else {
      return std::get<kOperation>(kFunctions)(array, key, kContext, rest...,
                                              kHasComparer ? order_items : nullptr);
    }
  }
  template <class Arg>
  static auto passed(Arg arg) {
    return arg;
  }
  static Key passed(const std::pair<Key, uint64_t> &entry) { return entry.second; }

  static int order(Key a, Key b) { return order_items(a, b, kContext); }
  static std::pair<Key, uint64_t> made(Key, uint64_t word) { return {word, word}; }
  static Key random_key(Random &random) { return random.word() >> random.below(60); }
  static Key key(int64_t number) { return static_cast<Key>(number) << 24; }
  static std::pair<Key, uint64_t> entry(const Record *array, int64_t index) {
    return {mub_arrays_get_at(array, index), mub_arrays_get_at(array, index)};
  }
};

// An array that is released at the end of its scope.
template <class Kind>
struct Scoped : Kind::Record {
  explicit Scoped(bool with_pool = false, bool is_descending = false) {
    Kind::template call<kInit>(this, with_pool);
    this->descending = is_descending;
  }
  ~Scoped() { Kind::template call<kTerm>(this); }
  Scoped(const Scoped &) = delete;
  Scoped &operator=(const Scoped &) = delete;
};

template <class Kind>
auto entries_of(const Scoped<Kind> &array) {
  std::vector<std::pair<typename Kind::Key, uint64_t>> entries;
  for (int64_t i = 0; i < array.count; ++i) entries.push_back(Kind::entry(&array, i));
  return entries;
}

// Calls a function of the array's kind with a key, or with an entry, a pair of key and value.
template <int kOperation, class Kind, class... Args>
auto call(Scoped<Kind> &array, Args... args) {
  return Kind::template call<kOperation>(&array, args...);
}

}  // namespace mub_test

#endif
