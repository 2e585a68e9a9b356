// mub_hashd: hash_table.h with 32-bit integer keys.
#include "hash/batch_get.h"
#include "hash/fixed_keys.h"
#include "hash/hash_table.h"
#include "hash/hash_table_clone.h"
#include "hash/verify.h"

template <>
struct mub::Policy<mub_hashd> : IntegerKeys<mub_hashd, mub_hashd_entry, uint32_t> {};

using namespace mub;

extern "C" {

mub_hashd *mub_hashd_init(mub_hashd *table, int with_entry_pool, int with_value_pool) {
  hash_table::init(*table, with_entry_pool, with_value_pool);
  return table;
}

void mub_hashd_term(mub_hashd *table) { hash_table::term(*table); }

void mub_hashd_swap(mub_hashd *a, mub_hashd *b) { hash_table::swap(*a, *b); }

mub_hashd *mub_hashd_clone(const mub_hashd *source, mub_pool *source_user_pool, mub_hashd *destination,
                           mub_pool *destination_user_pool, mub_clone_fn callback) {
  return hash_table::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_hashd_verify(const mub_hashd *table, const char **what) {
  return report(hash_table::verify(*table), what);
}

int64_t mub_hashd_memory_bytes(const mub_hashd *table) { return hash_table::memory_bytes(*table); }

uint32_t mub_hashd_key(uint32_t key) { return Policy<mub_hashd>::mixed(key); }

int mub_hashd_set(mub_hashd *table, uint32_t key, uint64_t *value_out, mub_init_fn init) {
  return hash_table::set(*table, key, *value_out, init);
}

uint64_t mub_hashd_get(const mub_hashd *table, uint32_t key) { return hash_table::get(*table, key); }

int64_t mub_hashd_get_many(const mub_hashd *table, const uint32_t *keys, int64_t count,
                           uint64_t *values_out) {
  return hash_table::get_many(
      *table, [=](int64_t i) { return keys[i]; }, count, values_out);
}

int mub_hashd_insert(mub_hashd *table, uint32_t key, uint64_t value) {
  return hash_table::insert_value(*table, key, value);
}

uint64_t mub_hashd_update(mub_hashd *table, uint32_t key, uint64_t value) {
  return hash_table::update(*table, key, value);
}

int mub_hashd_find(const mub_hashd *table, uint32_t key) {
  return hash_table::find(*table, key) != nullptr ? 1 : 0;
}

uint64_t mub_hashd_remove(mub_hashd *table, uint32_t key) { return hash_table::remove(*table, key); }

mub_hashd *mub_hashd_free(mub_hashd *table, uint32_t key, mub_free_fn release) {
  return hash_table::free(*table, key, release);
}

void mub_hashd_remove_all(mub_hashd *table) { hash_table::remove_all(*table); }

void mub_hashd_free_all(mub_hashd *table, mub_free_fn release) { hash_table::free_all(*table, release); }

void mub_hashd_remove_all_entry(mub_hashd *table) { hash_table::remove_all_entry(*table); }

void mub_hashd_free_all_entry(mub_hashd *table, mub_free_fn release) {
  hash_table::free_all_entry(*table, release);
}

int mub_hashd_entry_set(mub_hashd *table, uint32_t key, mub_hashd_entry **entry_out) {
  int inserted;
  *entry_out = hash_table::insert(*table, key, inserted);
  return inserted;
}

mub_hashd_entry *mub_hashd_entry_get(const mub_hashd *table, uint32_t key) {
  return hash_table::find(*table, key);
}

mub_hashd_entry *mub_hashd_entry_first(const mub_hashd *table, int64_t *bucket_out) {
  return hash_table::entry_first(*table, *bucket_out);
}

mub_hashd_entry *mub_hashd_entry_next(const mub_hashd *table, int64_t *bucket_io,
                                      const mub_hashd_entry *entry) {
  return hash_table::entry_next(*table, *bucket_io, *entry);
}

mub_hashd_entry *mub_hashd_entry_new(mub_hashd *table, int64_t bucket, uint32_t key, int *inserted_out) {
  return hash_table::entry_new(*table, bucket, key, *inserted_out);
}

mub_hashd_entry *mub_hashd_entry_find(const mub_hashd *table, int64_t bucket, uint32_t key) {
  return hash_table::find_in(*table, bucket, key, key);
}

mub_hashd_entry *mub_hashd_entry_remove(mub_hashd *table, int64_t bucket, uint32_t key) {
  return hash_table::unlink(*table, bucket, key, key);
}

void mub_hashd_expand(mub_hashd *table) { hash_table::expand(*table); }

mub_hashd_entry *mub_hashd_insert_t(mub_hashd *table, uint32_t key, int *inserted_out) {
  return hash_table::insert(*table, key, *inserted_out);
}

mub_hashd_entry *mub_hashd_find_t(const mub_hashd *table, uint32_t key) {
  return hash_table::find(*table, key);
}

mub_hashd_entry *mub_hashd_remove_t(mub_hashd *table, uint32_t key) {
  return hash_table::detach(*table, key);
}
}
