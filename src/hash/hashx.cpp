// mub_hashx: hash_table.h with 64-bit integer keys.
#include "hash/batch_get.h"
#include "hash/fixed_keys.h"
#include "hash/hash_table.h"
#include "hash/hash_table_clone.h"
#include "hash/verify.h"

template <>
struct mub::Policy<mub_hashx> : IntegerKeys<mub_hashx, mub_hashx_entry, uint64_t> {};

using namespace mub;

extern "C" {

mub_hashx *mub_hashx_init(mub_hashx *table, int with_entry_pool, int with_value_pool) {
  hash_table::init(*table, with_entry_pool, with_value_pool);
  return table;
}

void mub_hashx_term(mub_hashx *table) { hash_table::term(*table); }

void mub_hashx_swap(mub_hashx *a, mub_hashx *b) { hash_table::swap(*a, *b); }

mub_hashx *mub_hashx_clone(const mub_hashx *source, mub_pool *source_user_pool, mub_hashx *destination,
                           mub_pool *destination_user_pool, mub_clone_fn callback) {
  return hash_table::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_hashx_verify(const mub_hashx *table, const char **what) {
  return report(hash_table::verify(*table), what);
}

int64_t mub_hashx_memory_bytes(const mub_hashx *table) { return hash_table::memory_bytes(*table); }

uint32_t mub_hashx_key(uint64_t key) { return Policy<mub_hashx>::mixed(key); }

int mub_hashx_set(mub_hashx *table, uint64_t key, uint64_t *value_out, mub_init_fn init) {
  return hash_table::set(*table, key, *value_out, init);
}

uint64_t mub_hashx_get(const mub_hashx *table, uint64_t key) { return hash_table::get(*table, key); }

int64_t mub_hashx_get_many(const mub_hashx *table, const uint64_t *keys, int64_t count,
                           uint64_t *values_out) {
  return hash_table::get_many(
      *table, [=](int64_t i) { return keys[i]; }, count, values_out);
}

int mub_hashx_insert(mub_hashx *table, uint64_t key, uint64_t value) {
  return hash_table::insert_value(*table, key, value);
}

uint64_t mub_hashx_update(mub_hashx *table, uint64_t key, uint64_t value) {
  return hash_table::update(*table, key, value);
}

int mub_hashx_find(const mub_hashx *table, uint64_t key) {
  return hash_table::find(*table, key) != nullptr ? 1 : 0;
}

uint64_t mub_hashx_remove(mub_hashx *table, uint64_t key) { return hash_table::remove(*table, key); }

mub_hashx *mub_hashx_free(mub_hashx *table, uint64_t key, mub_free_fn release) {
  return hash_table::free(*table, key, release);
}

void mub_hashx_remove_all(mub_hashx *table) { hash_table::remove_all(*table); }

void mub_hashx_free_all(mub_hashx *table, mub_free_fn release) { hash_table::free_all(*table, release); }

void mub_hashx_remove_all_entry(mub_hashx *table) { hash_table::remove_all_entry(*table); }

void mub_hashx_free_all_entry(mub_hashx *table, mub_free_fn release) {
  hash_table::free_all_entry(*table, release);
}

int mub_hashx_entry_set(mub_hashx *table, uint64_t key, mub_hashx_entry **entry_out) {
  int inserted;
  *entry_out = hash_table::insert(*table, key, inserted);
  return inserted;
}

mub_hashx_entry *mub_hashx_entry_get(const mub_hashx *table, uint64_t key) {
  return hash_table::find(*table, key);
}

mub_hashx_entry *mub_hashx_entry_first(const mub_hashx *table, int64_t *bucket_out) {
  return hash_table::entry_first(*table, *bucket_out);
}

mub_hashx_entry *mub_hashx_entry_next(const mub_hashx *table, int64_t *bucket_io,
                                      const mub_hashx_entry *entry) {
  return hash_table::entry_next(*table, *bucket_io, *entry);
}

mub_hashx_entry *mub_hashx_entry_new(mub_hashx *table, int64_t bucket, uint64_t key, int *inserted_out) {
  return hash_table::entry_new(*table, bucket, key, *inserted_out);
}

mub_hashx_entry *mub_hashx_entry_find(const mub_hashx *table, int64_t bucket, uint64_t key) {
  return hash_table::find_in(*table, bucket, key, key);
}

mub_hashx_entry *mub_hashx_entry_remove(mub_hashx *table, int64_t bucket, uint64_t key) {
  return hash_table::unlink(*table, bucket, key, key);
}

void mub_hashx_expand(mub_hashx *table) { hash_table::expand(*table); }

mub_hashx_entry *mub_hashx_insert_t(mub_hashx *table, uint64_t key, int *inserted_out) {
  return hash_table::insert(*table, key, *inserted_out);
}

mub_hashx_entry *mub_hashx_find_t(const mub_hashx *table, uint64_t key) {
  return hash_table::find(*table, key);
}

mub_hashx_entry *mub_hashx_remove_t(mub_hashx *table, uint64_t key) {
  return hash_table::detach(*table, key);
}
}
