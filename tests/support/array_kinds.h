// The kinds of arrays as one: what each kind's functions are called, how a key of it looks, and what it stores.
#ifndef MUB_TESTS_SUPPORT_ARRAY_KINDS_H
#define MUB_TESTS_SUPPORT_ARRAY_KINDS_H

#include <climits>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/random.h"

namespace mub_test {

inline int64_t size_of(const std::string &bytes) { return static_cast<int64_t>(bytes.size()); }

struct ByteKeyed {
  using Record = mub_array;
  using Key = std::string;
  static constexpr auto init = mub_array_init;
  static constexpr auto term = mub_array_term;
  static constexpr auto expand = mub_array_expand;
  static constexpr auto shrink = mub_array_shrink;
  static constexpr auto clone = mub_array_clone;
  static constexpr auto remove_all = mub_array_remove_all;
  static constexpr auto free_all = mub_array_free_all;
  static constexpr auto append_array = mub_array_append_array;
  static constexpr auto update_at = mub_array_update_at;
  static constexpr auto remove_at = mub_array_remove_at;
  static constexpr auto free_at = mub_array_free_at;
  static constexpr auto qsort = mub_array_qsort;
  static constexpr auto qsort_p = mub_array_qsort_p;
  static constexpr auto qsort_n = mub_array_qsort_n;
  static constexpr auto qsort_x = mub_array_qsort_x;
  static constexpr auto qsort_x_p = mub_array_qsort_x_p;
  static constexpr auto qsort_x_n = mub_array_qsort_x_n;

  // Keys that differ in one byte, hold every byte value, are prefixes of one another, or are empty.
  static Key random_key(Random &random) {
    const int64_t length = random.one_in(4) ? random.below(40) : random.below(4);
    std::string key(static_cast<size_t>(length), 'k');
    const char letters[] = {'\0', 'a', 'k', '\x7F', '\x80', '\xFF'};
    for (int64_t i = 1; i <= 3 && i <= length; ++i)
      key[key.size() - static_cast<size_t>(i)] = letters[random.below(6)];
    return key;
  }
  static bool fits_only_at_the_end(const Key &key) { return key.empty(); }
  static uint64_t stored(const Key &, uint64_t value) { return value; }

  static int insert(Record *a, const Key &k, uint64_t v) {
    return mub_array_insert(a, k.data(), size_of(k), v);
  }
  static int insert_new(Record *a, const Key &k, uint64_t *v, mub_init_fn init_it) {
    return mub_array_insert_new(a, k.data(), size_of(k), v, init_it);
  }
  static uint64_t update(Record *a, const Key &k, uint64_t v) {
    return mub_array_update(a, k.data(), size_of(k), v);
  }
  static uint64_t remove(Record *a, const Key &k) { return mub_array_remove(a, k.data(), size_of(k)); }
  static void free(Record *a, const Key &k, mub_free_fn f) { mub_array_free(a, k.data(), size_of(k), f); }
  static uint64_t find(Record *a, const Key &k) { return mub_array_find(a, k.data(), size_of(k)); }
  static uint64_t bfind(Record *a, const Key &k) { return mub_array_bfind(a, k.data(), size_of(k)); }
  static int64_t find_index(Record *a, const Key &k) { return mub_array_find_index(a, k.data(), size_of(k)); }
  static int64_t bfind_index(Record *a, const Key &k) {
    return mub_array_bfind_index(a, k.data(), size_of(k));
  }

  static void append(Record *a, const Key &k, uint64_t v) { mub_array_append(a, k.data(), size_of(k), v); }
  static uint64_t append_new(Record *a, const Key &k, mub_init_fn init_it) {
    return mub_array_append_new(a, k.data(), size_of(k), init_it);
  }
  static void insert_at(Record *a, int64_t i, const Key &k, uint64_t v) {
    mub_array_insert_at(a, i, k.data(), size_of(k), v);
  }
  static uint64_t set_at(Record *a, int64_t i, const Key &k, uint64_t v) {
    return mub_array_set_at(a, i, k.data(), size_of(k), v);
  }
  static std::pair<Key, uint64_t> entry(const Record *a, int64_t i) {
    const char *key;
    int64_t length;
    const uint64_t value = mub_array_get_at(a, i, &key, &length);
    return {std::string(key != nullptr ? key : "", static_cast<size_t>(length)), value};
  }
  // Nothing is left in the stream but the keys.
  static bool keys_are_packed(const Record *a) {
    int64_t bytes = 0;
    for (int64_t i = 0; i < a->count; ++i) bytes += a->entries[i].key_length;
    return bytes == a->keys.length;
  }
};

// An integer key, ordered as the searches order it: by the sign of the wrapped difference.
template <class Bits>
struct WrappedKey {
  Bits bits;

  operator Bits() const { return bits; }
  int64_t minus(WrappedKey other) const {
    return static_cast<std::make_signed_t<Bits>>(static_cast<Bits>(bits - other.bits));
  }
  friend bool operator==(WrappedKey a, WrappedKey b) { return a.bits == b.bits; }
  friend bool operator!=(WrappedKey a, WrappedKey b) { return a.bits != b.bits; }
  friend bool operator<(WrappedKey a, WrappedKey b) { return a.minus(b) < 0; }
  friend bool operator<=(WrappedKey a, WrappedKey b) { return a.minus(b) <= 0; }
  friend bool operator>=(WrappedKey a, WrappedKey b) { return a.minus(b) >= 0; }
};

template <class Bits>
struct IntegerKeyed {
  using Key = WrappedKey<Bits>;
  static constexpr int kBits = 8 * sizeof(Bits);

  // Keys on both sides of 0, all ones among them, that differ from one another in a bit at either end; within half of
  // the keys' range of each other, which is as far as there is an order.
  static Key random_key(Random &random) {
    const auto bits = static_cast<std::make_signed_t<Bits>>(random.word()) >> (2 + random.below(kBits - 2));
    const Bits low = random.one_in(4), high = random.one_in(4);
    return {static_cast<Bits>(bits) ^ low ^ high << (kBits - 3)};
  }
  static bool fits_only_at_the_end(Key) { return false; }
  static uint64_t stored(Key, uint64_t value) { return value; }

  // What an operation gives that hands its key out as well.
  template <class Operation, class Array>
  static std::pair<Key, uint64_t> entry_of(Operation operation, Array *a, int64_t i) {
    Key key = {99};
    const uint64_t value = operation(a, i, &key.bits);
    return {key, value};
  }
  template <class Record>
  static bool keys_are_packed(const Record *) {
    return true;
  }
};

struct Keyed32 : IntegerKeyed<uint32_t> {
  using Record = mub_arrayd;
  static constexpr auto init = mub_arrayd_init;
  static constexpr auto term = mub_arrayd_term;
  static constexpr auto expand = mub_arrayd_expand;
  static constexpr auto shrink = mub_arrayd_shrink;
  static constexpr auto swap = mub_arrayd_swap;
  static constexpr auto clone = mub_arrayd_clone;
  static constexpr auto remove_all = mub_arrayd_remove_all;
  static constexpr auto free_all = mub_arrayd_free_all;
  static constexpr auto append_array = mub_arrayd_append_array;
  static constexpr auto update_at = mub_arrayd_update_at;
  static constexpr auto free_at = mub_arrayd_free_at;
  static constexpr auto append = mub_arrayd_append;
  static constexpr auto append_new = mub_arrayd_append_new;
  static constexpr auto insert_at = mub_arrayd_insert_at;
  static constexpr auto set_at = mub_arrayd_set_at;
  static constexpr auto insert = mub_arrayd_insert;
  static constexpr auto insert_new = mub_arrayd_insert_new;
  static constexpr auto update = mub_arrayd_update;
  static constexpr auto remove = mub_arrayd_remove;
  static constexpr auto free = mub_arrayd_free;
  static constexpr auto find = mub_arrayd_find;
  static constexpr auto find_index = mub_arrayd_find_index;
  static constexpr auto bfind = mub_arrayd_bfind;
  static constexpr auto bfind_index = mub_arrayd_bfind_index;
  static constexpr auto entry_insert = mub_arrayd_entry_insert;
  static constexpr auto entry_find = mub_arrayd_entry_find;
  static constexpr auto afind = mub_arrayd_afind;
  static constexpr auto afind_index = mub_arrayd_afind_index;
  static constexpr auto qsort = mub_arrayd_qsort;
  static constexpr auto qsort_p = mub_arrayd_qsort_p;
  static constexpr auto qsort_n = mub_arrayd_qsort_n;
  static constexpr auto qsort_x = mub_arrayd_qsort_x;
  static constexpr auto qsort_x_p = mub_arrayd_qsort_x_p;
  static constexpr auto qsort_x_n = mub_arrayd_qsort_x_n;
  static uint64_t remove_at(Record *a, int64_t i) { return entry_of(mub_arrayd_remove_at, a, i).second; }
  static std::pair<Key, uint64_t> entry(const Record *a, int64_t i) {
    return entry_of(mub_arrayd_get_at, a, i);
  }
};

struct Keyed64 : IntegerKeyed<uint64_t> {
  using Record = mub_arrayx;
  static constexpr auto init = mub_arrayx_init;
  static constexpr auto term = mub_arrayx_term;
  static constexpr auto expand = mub_arrayx_expand;
  static constexpr auto shrink = mub_arrayx_shrink;
  static constexpr auto swap = mub_arrayx_swap;
  static constexpr auto clone = mub_arrayx_clone;
  static constexpr auto remove_all = mub_arrayx_remove_all;
  static constexpr auto free_all = mub_arrayx_free_all;
  static constexpr auto append_array = mub_arrayx_append_array;
  static constexpr auto update_at = mub_arrayx_update_at;
  static constexpr auto free_at = mub_arrayx_free_at;
  static constexpr auto append = mub_arrayx_append;
  static constexpr auto append_new = mub_arrayx_append_new;
  static constexpr auto insert_at = mub_arrayx_insert_at;
  static constexpr auto set_at = mub_arrayx_set_at;
  static constexpr auto insert = mub_arrayx_insert;
  static constexpr auto insert_new = mub_arrayx_insert_new;
  static constexpr auto update = mub_arrayx_update;
  static constexpr auto remove = mub_arrayx_remove;
  static constexpr auto free = mub_arrayx_free;
  static constexpr auto find = mub_arrayx_find;
  static constexpr auto find_index = mub_arrayx_find_index;
  static constexpr auto bfind = mub_arrayx_bfind;
  static constexpr auto bfind_index = mub_arrayx_bfind_index;
  static constexpr auto entry_insert = mub_arrayx_entry_insert;
  static constexpr auto entry_find = mub_arrayx_entry_find;
  static constexpr auto afind = mub_arrayx_afind;
  static constexpr auto afind_index = mub_arrayx_afind_index;
  static constexpr auto qsort = mub_arrayx_qsort;
  static constexpr auto qsort_p = mub_arrayx_qsort_p;
  static constexpr auto qsort_n = mub_arrayx_qsort_n;
  static constexpr auto qsort_x = mub_arrayx_qsort_x;
  static constexpr auto qsort_x_p = mub_arrayx_qsort_x_p;
  static constexpr auto qsort_x_n = mub_arrayx_qsort_x_n;
  static uint64_t remove_at(Record *a, int64_t i) { return entry_of(mub_arrayx_remove_at, a, i).second; }
  static std::pair<Key, uint64_t> entry(const Record *a, int64_t i) {
    return entry_of(mub_arrayx_get_at, a, i);
  }
};

// Items are keys of 56 bits with a value of 8 bits below them, ordered through the plain operations or the `_x`
// ones. Comparers go to the ends of what an int can hold, and fail the test when called with a wrong context.
template <bool kInContext, bool kOrdered = true>
struct ItemsBy {
  using Record = mub_arrays;
  using Key = uint64_t;
  static constexpr uint64_t kContext = 0xC0FFEE;
  static constexpr uint64_t kExtra = 0xFACE;
  static constexpr auto init = mub_arrays_init;
  static constexpr auto term = mub_arrays_term;
  static constexpr auto expand = mub_arrays_expand;
  static constexpr auto shrink = mub_arrays_shrink;
  static constexpr auto clone = mub_arrays_clone;
  static constexpr auto remove_all = mub_arrays_remove_all;
  static constexpr auto free_all = mub_arrays_free_all;
  static constexpr auto append_array = mub_arrays_append_array;
  static constexpr auto update_at = mub_arrays_set_at;
  static constexpr auto remove_at = mub_arrays_remove_at;
  static constexpr auto free_at = mub_arrays_free_at;

  static Key random_key(Random &random) { return random.word() >> (8 + random.below(56)); }
  static bool fits_only_at_the_end(Key) { return false; }
  static uint64_t stored(Key key, uint64_t value) { return key << 8 | (value & 0xFF); }

  static int compare(uint64_t item, uint64_t key, uint64_t context) {
    EXPECT_EQ(context, kContext);
    if (item >> 8 == key >> 8) return 0;
    return item >> 8 < key >> 8 ? INT_MIN : INT_MAX;
  }
  static int compare_x(uint64_t context, uint64_t item, uint64_t key, uint64_t extra) {
    EXPECT_EQ(extra, kExtra);
    return compare(item, key, context);
  }
  static constexpr mub_compare_item_fn order = kOrdered ? compare : nullptr;
  static constexpr mub_compare_context_fn order_x = kOrdered ? compare_x : nullptr;

  // Calls a plain operation, or its `_x` form, with what both take last.
  template <class Plain, class InContext, class Array, class... Rest>
  static auto call(Plain plain, InContext in_context, Array *array, uint64_t key, Rest... rest) {
    if constexpr (kInContext) {
      return in_context(array, kContext, key, kExtra, rest..., order_x);
    } else {
      return plain(array, key, kContext, rest..., order);
    }
  }
  static int insert(Record *a, Key k, uint64_t v) {
    return call(mub_arrays_insert, mub_arrays_insert_x, a, stored(k, v));
  }
  static int insert_new(Record *a, Key k, uint64_t *v, mub_init_fn init_it) {
    return call(mub_arrays_insert_new, mub_arrays_insert_new_x, a, k << 8, v, init_it);
  }
  static uint64_t update(Record *a, Key k, uint64_t v) {
    return call(mub_arrays_update, mub_arrays_update_x, a, stored(k, v));
  }
  static uint64_t remove(Record *a, Key k) { return call(mub_arrays_remove, mub_arrays_remove_x, a, k << 8); }
  static void free(Record *a, Key k, mub_free_fn f) {
    call(mub_arrays_free, mub_arrays_free_x, a, k << 8, f);
  }
  static uint64_t find(Record *a, Key k) { return call(mub_arrays_find, mub_arrays_find_x, a, k << 8); }
  static uint64_t bfind(Record *a, Key k) { return call(mub_arrays_bfind, mub_arrays_bfind_x, a, k << 8); }
  static int64_t find_index(Record *a, Key k) {
    return call(mub_arrays_find_index, mub_arrays_find_index_x, a, k << 8);
  }
  static int64_t bfind_index(Record *a, Key k) {
    return call(mub_arrays_bfind_index, mub_arrays_bfind_index_x, a, k << 8);
  }

  static void append(Record *a, Key k, uint64_t v) { mub_arrays_append(a, stored(k, v)); }
  static uint64_t append_new(Record *a, Key, mub_init_fn init_it) {
    return mub_arrays_append_new(a, init_it);
  }
  static void insert_at(Record *a, int64_t i, Key k, uint64_t v) { mub_arrays_insert_at(a, i, stored(k, v)); }
  static uint64_t set_at(Record *a, int64_t i, Key k, uint64_t v) {
    return mub_arrays_set_at(a, i, stored(k, v));
  }
  static std::pair<Key, uint64_t> entry(const Record *a, int64_t i) {
    const uint64_t item = mub_arrays_get_at(a, i);
    return {item >> 8, item};
  }
  static bool keys_are_packed(const Record *) { return true; }
};

using Items = ItemsBy<false>;
using ItemsInContext = ItemsBy<true>;

// An array that is released at the end of its scope.
template <class Kind>
struct Scoped : Kind::Record {
  explicit Scoped(bool with_pool = false, bool is_descending = false) {
    Kind::init(this, with_pool);
    this->descending = is_descending;
  }
  ~Scoped() { Kind::term(this); }
  Scoped(const Scoped &) = delete;
  Scoped &operator=(const Scoped &) = delete;
};

template <class Kind>
using Entries = std::vector<std::pair<typename Kind::Key, uint64_t>>;

template <class Kind>
Entries<Kind> entries_of(const typename Kind::Record &array) {
  Entries<Kind> entries;
  for (int64_t i = 0; i < array.count; ++i) entries.push_back(Kind::entry(&array, i));
  return entries;
}

}  // namespace mub_test

#endif
