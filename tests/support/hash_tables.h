// The hash tables behind one face, so that one suite tests them all. An adapter names the records and the functions
// of one kind of key, and makes keys that are hard on it. A kind without entry_first and entry_next has its adapter
// step over the buckets.
#ifndef MUB_TESTS_SUPPORT_HASH_TABLES_H
#define MUB_TESTS_SUPPORT_HASH_TABLES_H

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mub_hash.h"

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

struct ByteTable {
  using Table = mub_hash;
  using Entry = mub_hash_entry;
  using Key = std::string;

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
  static Key key_of(const Table &table, const Entry &entry) {
    return {reinterpret_cast<const char *>(table.keys.data) + entry.key_offset, entry.key_length};
  }
  // What the table keeps outside its entries: nothing, or the keys in the order of their insertion.
  static void expect_stored(const Table &table, const std::vector<std::pair<Key, uint64_t>> &items) {
    std::string packed;
    for (const auto &item : items) packed += item.first;
    ASSERT_EQ(
        std::string(reinterpret_cast<const char *>(table.keys.data), static_cast<size_t>(table.keys.length)),
        packed);
  }

  static int64_t size(const Key &key) { return static_cast<int64_t>(key.size()); }
  static Table *init(Table *t, int entry_pool, int value_pool) {
    return mub_hash_init(t, entry_pool, value_pool);
  }
  static void term(Table *t) { mub_hash_term(t); }
  static void swap(Table *a, Table *b) { mub_hash_swap(a, b); }
  static Table *clone(const Table *s, mub_pool *sp, Table *d, mub_pool *dp, mub_clone_fn f) {
    return mub_hash_clone(s, sp, d, dp, f);
  }
  static int set(Table *t, const Key &k, uint64_t *out, mub_init_fn init) {
    return mub_hash_set(t, k.data(), size(k), out, init);
  }
  static uint64_t get(const Table *t, const Key &k) { return mub_hash_get(t, k.data(), size(k)); }
  static int insert(Table *t, const Key &k, uint64_t v) { return mub_hash_insert(t, k.data(), size(k), v); }
  static uint64_t update(Table *t, const Key &k, uint64_t v) {
    return mub_hash_update(t, k.data(), size(k), v);
  }
  static int find(const Table *t, const Key &k) { return mub_hash_find(t, k.data(), size(k)); }
  static uint64_t remove(Table *t, const Key &k) { return mub_hash_remove(t, k.data(), size(k)); }
  static Table *free(Table *t, const Key &k, mub_free_fn f) { return mub_hash_free(t, k.data(), size(k), f); }
  static void remove_all(Table *t) { mub_hash_remove_all(t); }
  static void free_all(Table *t, mub_free_fn f) { mub_hash_free_all(t, f); }
  static int entry_set(Table *t, const Key &k, Entry **out) {
    return mub_hash_entry_set(t, k.data(), size(k), out);
  }
  static Entry *entry_get(const Table *t, const Key &k) { return mub_hash_entry_get(t, k.data(), size(k)); }
  static Entry *entry_first(const Table *t, int64_t *b) { return mub_hash_entry_first(t, b); }
  static Entry *entry_next(const Table *t, int64_t *b, const Entry *e) {
    return mub_hash_entry_next(t, b, e);
  }
  static Entry *remove_t(Table *t, const Key &k) { return mub_hash_remove_t(t, k.data(), size(k)); }
  static void expand(Table *t) { mub_hash_expand(t); }
};

// Keys that lie in the entries; nothing is stored elsewhere.
template <class TableRecord, class EntryRecord, class KeyType>
struct TableOfWords {
  using Table = TableRecord;
  using Entry = EntryRecord;
  using Key = KeyType;
  static void expect_stored(const Table &, const std::vector<std::pair<Key, uint64_t>> &) {}
};

// Different integers: small ones, negative ones, ones that agree in all their low bits, and twins of the small ones
// with one bit more in the middle.
template <class Integer>
Integer hard_integer(int64_t n) {
  constexpr int kBits = 8 * sizeof(Integer);
  const auto m = static_cast<Integer>(n / 4);
  switch (n % 4) {
    case 0:
      return m;
    case 1:
      return static_cast<Integer>(~m);
    case 2:
      return static_cast<Integer>((m + 1) << (kBits - 10));
    default:
      return static_cast<Integer>(m | Integer{1} << (kBits / 2));
  }
}

struct Table32 : TableOfWords<mub_hashd, mub_hashd_entry, uint32_t> {
  static Key key(int64_t n) { return hard_integer<uint32_t>(n); }
  static uint64_t word(Key key) { return key; }
  static Key key_of(const Table &, const Entry &entry) { return entry.key; }
  static constexpr auto init = mub_hashd_init;
  static constexpr auto term = mub_hashd_term;
  static constexpr auto swap = mub_hashd_swap;
  static constexpr auto clone = mub_hashd_clone;
  static constexpr auto set = mub_hashd_set;
  static constexpr auto get = mub_hashd_get;
  static constexpr auto insert = mub_hashd_insert;
  static constexpr auto update = mub_hashd_update;
  static constexpr auto find = mub_hashd_find;
  static constexpr auto remove = mub_hashd_remove;
  static constexpr auto free = mub_hashd_free;
  static constexpr auto remove_all = mub_hashd_remove_all;
  static constexpr auto free_all = mub_hashd_free_all;
  static constexpr auto entry_set = mub_hashd_entry_set;
  static constexpr auto entry_get = mub_hashd_entry_get;
  static constexpr auto entry_first = mub_hashd_entry_first;
  static constexpr auto entry_next = mub_hashd_entry_next;
  static constexpr auto remove_t = mub_hashd_remove_t;
  static constexpr auto expand = mub_hashd_expand;
  static constexpr auto insert_t = mub_hashd_insert_t;
  static constexpr auto find_t = mub_hashd_find_t;
  static constexpr auto entry_new = mub_hashd_entry_new;
  static constexpr auto entry_find = mub_hashd_entry_find;
  static constexpr auto entry_remove = mub_hashd_entry_remove;
};

struct Table64 : TableOfWords<mub_hashx, mub_hashx_entry, uint64_t> {
  static Key key(int64_t n) { return hard_integer<uint64_t>(n); }
  static uint64_t word(Key key) { return key; }
  static Key key_of(const Table &, const Entry &entry) { return entry.key; }
  static constexpr auto init = mub_hashx_init;
  static constexpr auto term = mub_hashx_term;
  static constexpr auto swap = mub_hashx_swap;
  static constexpr auto clone = mub_hashx_clone;
  static constexpr auto set = mub_hashx_set;
  static constexpr auto get = mub_hashx_get;
  static constexpr auto insert = mub_hashx_insert;
  static constexpr auto update = mub_hashx_update;
  static constexpr auto find = mub_hashx_find;
  static constexpr auto remove = mub_hashx_remove;
  static constexpr auto free = mub_hashx_free;
  static constexpr auto remove_all = mub_hashx_remove_all;
  static constexpr auto free_all = mub_hashx_free_all;
  static constexpr auto entry_set = mub_hashx_entry_set;
  static constexpr auto entry_get = mub_hashx_entry_get;
  static constexpr auto entry_first = mub_hashx_entry_first;
  static constexpr auto entry_next = mub_hashx_entry_next;
  static constexpr auto remove_t = mub_hashx_remove_t;
  static constexpr auto expand = mub_hashx_expand;
  static constexpr auto insert_t = mub_hashx_insert_t;
  static constexpr auto find_t = mub_hashx_find_t;
  static constexpr auto entry_new = mub_hashx_entry_new;
  static constexpr auto entry_find = mub_hashx_entry_find;
  static constexpr auto entry_remove = mub_hashx_entry_remove;
};

struct FourWords {
  std::array<uint32_t, 4> words;
  operator const uint32_t *() const { return words.data(); }
  bool operator==(const FourWords &other) const { return words == other.words; }
};

struct Table128 : TableOfWords<mub_hasht, mub_hasht_entry, FourWords> {
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
  static Key key_of(const Table &, const Entry &entry) {
    return {{entry.key[0], entry.key[1], entry.key[2], entry.key[3]}};
  }
  static constexpr auto init = mub_hasht_init;
  static constexpr auto term = mub_hasht_term;
  static constexpr auto swap = mub_hasht_swap;
  static constexpr auto clone = mub_hasht_clone;
  static constexpr auto set = mub_hasht_set;
  static constexpr auto get = mub_hasht_get;
  static constexpr auto insert = mub_hasht_insert;
  static constexpr auto update = mub_hasht_update;
  static constexpr auto find = mub_hasht_find;
  static constexpr auto remove = mub_hasht_remove;
  static constexpr auto free = mub_hasht_free;
  static constexpr auto remove_all = mub_hasht_remove_all;
  static constexpr auto free_all = mub_hasht_free_all;
  static constexpr auto entry_set = mub_hasht_entry_set;
  static constexpr auto entry_get = mub_hasht_entry_get;
  static constexpr auto remove_t = mub_hasht_remove_t;
  static constexpr auto expand = mub_hasht_expand;
  static constexpr auto insert_t = mub_hasht_insert_t;
  static constexpr auto find_t = mub_hasht_find_t;
  static constexpr auto entry_new = mub_hasht_entry_new;
  static constexpr auto entry_find = mub_hasht_entry_find;
  static constexpr auto entry_remove = mub_hasht_entry_remove;
  // This kind has no walk of its own.
  static Entry *entry_first(const Table *table, int64_t *bucket) {
    *bucket = 0;
    return head_from(table, 0, bucket);
  }
  static Entry *entry_next(const Table *table, int64_t *bucket, const Entry *entry) {
    return entry->next != nullptr ? entry->next : head_from(table, *bucket + 1, bucket);
  }
  static Entry *head_from(const Table *table, int64_t first, int64_t *bucket) {
    for (int64_t i = first; i < table->buckets.count; ++i) {
      if (table->buckets.items[i] == 0) continue;
      *bucket = i;
      return reinterpret_cast<Entry *>(table->buckets.items[i]);
    }
    return nullptr;
  }
};

}  // namespace mub_test

#endif
