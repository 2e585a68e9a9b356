// The hash tables behind one face, so that one suite tests them all. An adapter names the records and the functions
// of one kind of key, and makes keys that are hard on it.
#ifndef MUB_TESTS_SUPPORT_HASH_TABLES_H
#define MUB_TESTS_SUPPORT_HASH_TABLES_H

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

#include "mub_hash.h"
#include "support/calls.h"
#include "support/random.h"

namespace mub_test {

// The CRC register from its definition, bit by bit, started at 0.
inline uint32_t bitwise_register(const std::string &bytes) {
  uint32_t crc = 0;
  for (const char c : bytes) {
    crc ^= static_cast<uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0);
  }
  return crc;
}

// The operations, in the order of each kind's functions.
enum OfTable { kSwap, kClone, kRemoveAll, kFreeAll, kExpand };
enum OfKey { kSet = kExpand + 1, kGet, kInsert, kUpdate, kFind, kRemove, kFree };
// Entries, of which one kind has no walk:
enum OfEntry { kEntrySet = kFree + 1, kEntryGet, kEntryFirst, kEntryNext, kRemoveT };
// Of the kinds whose keys lie in their entries:
enum OfWords { kInsertT = kRemoveT + 1, kFindT, kEntryNew, kEntryFind, kEntryRemove };

struct ByteTable : PassingBytes {
  using Record = mub_hash;
  using Entry = mub_hash_entry;
  using Key = std::string;
  using Passed = std::string_view;
  static constexpr bool kHasWalk = true;
  static constexpr auto init = mub_hash_init;
  static constexpr auto term = mub_hash_term;
  static constexpr auto kFunctions = std::make_tuple(
      mub_hash_swap, mub_hash_clone, mub_hash_remove_all, mub_hash_free_all, mub_hash_expand, mub_hash_set,
      mub_hash_get, mub_hash_insert, mub_hash_update, mub_hash_find, mub_hash_remove, mub_hash_free,
      mub_hash_entry_set, mub_hash_entry_get, mub_hash_entry_first, mub_hash_entry_next, mub_hash_remove_t);

  // Different keys, among them the empty one, prefixes of others, pairs that differ in their last byte only, and
  // keys of NULs, which all hash to 0.
  static Key key(int64_t n) {
    if (n % 16 == 15) return std::string(static_cast<size_t>(n / 16), '\0');
    std::string text = "key" + std::to_string(n / 4);
    if (n % 4 >= 2) text += " that is long enough to span several words " + text;
    text += n % 2 == 0 ? "\xFE" : "\xFF";
    return text;
  }
  static uint64_t word(const Key &key) { return bitwise_register(key); }
  // All that the table keeps outside its entries: the keys, in the order of their insertion.
  static Passed stored(const Record &table) {
    if (table.keys.data == nullptr) return "";
    return {reinterpret_cast<const char *>(table.keys.data), static_cast<size_t>(table.keys.length)};
  }
  static Passed key_of(const Record &table, const Entry &entry) {
    return stored(table).substr(entry.key_offset, entry.key_length);
  }
  // A part of these bytes, which grow or are cut under it.
  static Passed some_own_key(const Record &table, Random &random) {
    return stored(table).substr(random.word() % (stored(table).size() + 1), random.word() % 300);
  }
};

// Different integers: small ones, negative ones, ones that agree in all their low bits, and twins of the small ones
// with one bit more in the middle.
template <class TableRecord, class EntryRecord, class Integer>
struct IntegerTable : Passing {
  using Record = TableRecord;
  using Entry = EntryRecord;
  using Key = Integer;
  using Passed = Integer;
  static constexpr bool kHasWalk = true;

  static Key key(int64_t n) {
    constexpr int kBits = 8 * sizeof(Integer);
    const auto m = static_cast<Integer>(n / 4);
    const Integer hard[] = {m, static_cast<Integer>(~m), static_cast<Integer>((m + 1) << (kBits - 10)),
                            static_cast<Integer>(m | Integer{1} << (kBits / 2))};
    return hard[n % 4];
  }
  static uint64_t word(Key key) { return key; }
  static Key key_of(const Record &, const Entry &entry) { return entry.key; }
  static Key some_own_key(const Record &, Random &random) { return key(random.below(600)); }
};

struct Table32 : IntegerTable<mub_hashd, mub_hashd_entry, uint32_t> {
  static constexpr auto init = mub_hashd_init;
  static constexpr auto term = mub_hashd_term;
  static constexpr auto kFunctions = std::make_tuple(
      mub_hashd_swap, mub_hashd_clone, mub_hashd_remove_all, mub_hashd_free_all, mub_hashd_expand,
      mub_hashd_set, mub_hashd_get, mub_hashd_insert, mub_hashd_update, mub_hashd_find, mub_hashd_remove,
      mub_hashd_free, mub_hashd_entry_set, mub_hashd_entry_get, mub_hashd_entry_first, mub_hashd_entry_next,
      mub_hashd_remove_t, mub_hashd_insert_t, mub_hashd_find_t, mub_hashd_entry_new, mub_hashd_entry_find,
      mub_hashd_entry_remove);
};

struct Table64 : IntegerTable<mub_hashx, mub_hashx_entry, uint64_t> {
  static constexpr auto init = mub_hashx_init;
  static constexpr auto term = mub_hashx_term;
  static constexpr auto kFunctions = std::make_tuple(
      mub_hashx_swap, mub_hashx_clone, mub_hashx_remove_all, mub_hashx_free_all, mub_hashx_expand,
      mub_hashx_set, mub_hashx_get, mub_hashx_insert, mub_hashx_update, mub_hashx_find, mub_hashx_remove,
      mub_hashx_free, mub_hashx_entry_set, mub_hashx_entry_get, mub_hashx_entry_first, mub_hashx_entry_next,
      mub_hashx_remove_t, mub_hashx_insert_t, mub_hashx_find_t, mub_hashx_entry_new, mub_hashx_entry_find,
      mub_hashx_entry_remove);
};

struct FourWords {
  std::array<uint32_t, 4> words;
  bool operator==(const FourWords &other) const { return words == other.words; }
};

struct Table128 : Passing {
  using Record = mub_hasht;
  using Entry = mub_hasht_entry;
  using Key = FourWords;
  using Passed = FourWords;
  static constexpr bool kHasWalk = false;
  static constexpr auto init = mub_hasht_init;
  static constexpr auto term = mub_hasht_term;
  static constexpr auto kFunctions =
      std::make_tuple(mub_hasht_swap, mub_hasht_clone, mub_hasht_remove_all, mub_hasht_free_all,
                      mub_hasht_expand, mub_hasht_set, mub_hasht_get, mub_hasht_insert, mub_hasht_update,
                      mub_hasht_find, mub_hasht_remove, mub_hasht_free, mub_hasht_entry_set,
                      mub_hasht_entry_get, nullptr, nullptr, mub_hasht_remove_t, mub_hasht_insert_t,
                      mub_hasht_find_t, mub_hasht_entry_new, mub_hasht_entry_find, mub_hasht_entry_remove);

  using Passing::passed;
  static auto passed(const Key &key) { return std::tuple(key.words.data()); }
  // Three words are alike, all zeros or all ones; the keys of a group differ in one of the four places.
  static Key key(int64_t n) {
    const uint32_t rest = n % 8 < 4 ? 0 : ~0u;
    Key key = {{rest, rest, rest, rest}};
    key.words[static_cast<size_t>(n % 4)] = static_cast<uint32_t>(n / 8 + 1);
    return key;
  }
  static uint64_t word(const Key &key) {
    std::string bytes;
    for (const uint32_t word : key.words) {
      for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift);
    }
    return bitwise_register(bytes);
  }
  static Key key_of(const Record &, const Entry &entry) {
    return {{entry.key[0], entry.key[1], entry.key[2], entry.key[3]}};
  }
  static Key some_own_key(const Record &, Random &random) { return key(random.below(600)); }
};

}  // namespace mub_test

#endif
