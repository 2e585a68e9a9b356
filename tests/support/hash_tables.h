// The hash tables behind one face, so that one suite tests them all. An adapter names the records and the functions
// of one kind of key, and makes keys that are hard on it. A kind without entry_first and entry_next has its adapter
// step over the buckets.
#ifndef MUB_TESTS_SUPPORT_HASH_TABLES_H
#define MUB_TESTS_SUPPORT_HASH_TABLES_H

#include <gtest/gtest.h>

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

}  // namespace mub_test

#endif
