// mub_hasht: hash_table.h with keys of four 32-bit words.
#include <algorithm>
#include <cstddef>

#include "hash/batch_get.h"
#include "hash/fixed_keys.h"
#include "hash/hash_table.h"
#include "hash/hash_table_clone.h"
#include "hash/verify.h"

namespace mub {
namespace {

constexpr size_t kKeyWords = 4;

// Passed by value: a caller may pass the key of a removed entry, whose block is about to be reused.
struct FourWords {
  uint32_t words[kKeyWords];
};

FourWords words_of(const uint32_t *key) { return {{key[0], key[1], key[2], key[3]}}; }

uint32_t hash_of(const uint32_t *key) {
  uint8_t bytes[4 * kKeyWords];
  for (size_t i = 0; i < kKeyWords; ++i) store_little_endian(key[i], bytes + size_t{4} * i);
  return key_hash(bytes, sizeof bytes);
}

}  // namespace

// Keys of four words. Entries have no field for a hash, so keys are hashed again when the buckets double.
template <>
struct Policy<mub_hasht> : FixedKeys<mub_hasht, mub_hasht_entry, FourWords> {
  static constexpr int64_t kBatchedFrom = 0x1000;

  static uint64_t hash(const mub_hasht &, const Key &key) { return hash_of(key.words); }
  static uint64_t stored_hash(const Entry &entry) { return hash_of(entry.key); }
  static Key key_of(const mub_hasht &, const Entry &entry) { return words_of(entry.key); }
  static bool same_key(const mub_hasht &, const Entry &entry, const Key &key) {
    return std::equal(key.words, key.words + kKeyWords, entry.key);
  }
  // There is no stored hash to compare first.
  static bool matches(const mub_hasht &table, const Entry &entry, uint64_t, const Key &key) {
    return same_key(table, entry, key);
  }
  static bool may_match(const Entry &entry, uint64_t, const Key &key) { return entry.key[0] == key.words[0]; }
  static bool store_key(mub_hasht &, Entry &entry, const Key &key) {
    std::copy_n(key.words, kKeyWords, entry.key);
    return true;
  }
};

}  // namespace mub

using namespace mub;

extern "C" {

mub_hasht *mub_hasht_init(mub_hasht *table, int with_entry_pool, int with_value_pool) {
  hash_table::init(*table, with_entry_pool, with_value_pool);
  return table;
}

void mub_hasht_term(mub_hasht *table) { hash_table::term(*table); }

void mub_hasht_swap(mub_hasht *a, mub_hasht *b) { hash_table::swap(*a, *b); }

mub_hasht *mub_hasht_clone(const mub_hasht *source, mub_pool *source_user_pool, mub_hasht *destination,
                           mub_pool *destination_user_pool, mub_clone_fn callback) {
  return hash_table::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_hasht_verify(const mub_hasht *table, const char **what) {
  return report(hash_table::verify(*table), what);
}

int64_t mub_hasht_memory_bytes(const mub_hasht *table) { return hash_table::memory_bytes(*table); }

uint32_t mub_hasht_key(const uint32_t *key) { return hash_of(key); }

int mub_hasht_cmp(const uint32_t *a, const uint32_t *b) {
  const auto [x, y] = std::mismatch(a, a + kKeyWords, b);
  return x == a + kKeyWords ? 0 : static_cast<int>(*x - *y);
}

void mub_hasht_copy(uint32_t *destination, const uint32_t *source) {
  std::copy_n(source, kKeyWords, destination);
}

int mub_hasht_set(mub_hasht *table, const uint32_t *key, uint64_t *value_out, mub_init_fn init) {
  return hash_table::set(*table, words_of(key), *value_out, init);
}

uint64_t mub_hasht_get(const mub_hasht *table, const uint32_t *key) {
  return hash_table::get(*table, words_of(key));
}

int64_t mub_hasht_get_many(const mub_hasht *table, const uint32_t (*keys)[4], int64_t count,
                           uint64_t *values_out) {
  return hash_table::get_many(
      *table, [=](int64_t i) { return words_of(keys[i]); }, count, values_out);
}

int mub_hasht_insert(mub_hasht *table, const uint32_t *key, uint64_t value) {
  return hash_table::insert_value(*table, words_of(key), value);
}

uint64_t mub_hasht_update(mub_hasht *table, const uint32_t *key, uint64_t value) {
  return hash_table::update(*table, words_of(key), value);
}

int mub_hasht_find(const mub_hasht *table, const uint32_t *key) {
  return hash_table::find(*table, words_of(key)) != nullptr ? 1 : 0;
}

uint64_t mub_hasht_remove(mub_hasht *table, const uint32_t *key) {
  return hash_table::remove(*table, words_of(key));
}

mub_hasht *mub_hasht_free(mub_hasht *table, const uint32_t *key, mub_free_fn release) {
  return hash_table::free(*table, words_of(key), release);
}

void mub_hasht_remove_all(mub_hasht *table) { hash_table::remove_all(*table); }

void mub_hasht_free_all(mub_hasht *table, mub_free_fn release) { hash_table::free_all(*table, release); }

void mub_hasht_remove_all_entry(mub_hasht *table) { hash_table::remove_all_entry(*table); }

void mub_hasht_free_all_entry(mub_hasht *table, mub_free_fn release) {
  hash_table::free_all_entry(*table, release);
}

int mub_hasht_entry_set(mub_hasht *table, const uint32_t *key, mub_hasht_entry **entry_out) {
  int inserted;
  *entry_out = hash_table::insert(*table, words_of(key), inserted);
  return inserted;
}

mub_hasht_entry *mub_hasht_entry_get(const mub_hasht *table, const uint32_t *key) {
  return hash_table::find(*table, words_of(key));
}

mub_hasht_entry *mub_hasht_entry_new(mub_hasht *table, int64_t bucket, const uint32_t *key,
                                     int *inserted_out) {
  return hash_table::entry_new(*table, bucket, words_of(key), *inserted_out);
}

mub_hasht_entry *mub_hasht_entry_find(const mub_hasht *table, int64_t bucket, const uint32_t *key) {
  return hash_table::find_in(*table, bucket, 0, words_of(key));
}

mub_hasht_entry *mub_hasht_entry_remove(mub_hasht *table, int64_t bucket, const uint32_t *key) {
  return hash_table::unlink(*table, bucket, 0, words_of(key));
}

void mub_hasht_expand(mub_hasht *table) { hash_table::expand(*table); }

mub_hasht_entry *mub_hasht_insert_t(mub_hasht *table, const uint32_t *key, int *inserted_out) {
  return hash_table::insert(*table, words_of(key), *inserted_out);
}

mub_hasht_entry *mub_hasht_find_t(const mub_hasht *table, const uint32_t *key) {
  return hash_table::find(*table, words_of(key));
}

mub_hasht_entry *mub_hasht_remove_t(mub_hasht *table, const uint32_t *key) {
  return hash_table::detach(*table, words_of(key));
}
}
