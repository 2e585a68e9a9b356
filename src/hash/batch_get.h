// Looks up many keys of a hash table at a time. One look-up waits for its bucket, its entry and its key bytes
// in turn; those of a group advance together, so that their cache misses overlap. Part of the engine in
// hash_table.h, where its invariants and policy are.
//
// Threads: the table is only read.
#ifndef MUB_HASH_BATCH_GET_H
#define MUB_HASH_BATCH_GET_H

#include <cstdint>

#include "base/prefetch.h"
#include "containers/batch.h"
#include "hash/hash_table.h"

namespace mub::hash_table {

// How many entries of a chain the look-ups pass together. Chains have fewer than two on average, and few have
// more than this. With 2, misses in a table of 1e6 keys take 1.2 times as long; 32 gains nothing
// (map_miss_batch in bench/hash_bench.cpp).
constexpr int kRounds = 8;

template <class Table>
struct Lookup {
  KeyOf<Table> key;
  uint64_t hash;
  EntryOf<Table> *entry;

  bool has_arrived() const { return entry == nullptr || Policy<Table>::may_match(*entry, hash, key); }
};

// Moves each look-up along its chain, all by one step per round, to the first entry that may match. After
// some rounds only unusually long chains are left, which the look-ups follow on their own.
template <class Table>
void follow_chains(Lookup<Table> *lookups, int64_t count) {
  bool has_moved = true;
  for (int round = 0; has_moved && round < kRounds; ++round) {
    has_moved = false;
    for (int64_t i = 0; i < count; ++i) {
      Lookup<Table> &lookup = lookups[i];
      if (lookup.has_arrived()) continue;
      lookup.entry = lookup.entry->next;
      prefetch(lookup.entry);
      has_moved = true;
    }
  }
}

template <class Table, class KeyAt>
int64_t get_group(const Table &table, KeyAt key_at, int64_t count, uint64_t *values_out) {
  Lookup<Table> lookups[kGroupSize];
  for (int64_t i = 0; i < count; ++i) {
    Lookup<Table> &lookup = lookups[i];
    lookup.key = key_at(i);
    lookup.hash = Policy<Table>::hash(table, lookup.key);
    prefetch(&table.buckets.items[bucket_of(table, lookup.hash)]);
  }
  for (int64_t i = 0; i < count; ++i) {
    lookups[i].entry = head(table, bucket_of(table, lookups[i].hash));
    prefetch(lookups[i].entry);
  }
  follow_chains(lookups, count);
  for (int64_t i = 0; i < count; ++i) {
    if (lookups[i].entry != nullptr) Policy<Table>::prefetch_key(table, *lookups[i].entry);
  }
  int64_t present = 0;
  for (int64_t i = 0; i < count; ++i) {
    const EntryOf<Table> *entry = find_from(table, lookups[i].entry, lookups[i].hash, lookups[i].key);
    present += store_value(entry, values_out[i]);
  }
  return present;
}

// Stores for each key what get() returns; the result is how many keys are present. key_at(i) is the key of
// an index.
template <class Table, class KeyAt>
int64_t get_many(const Table &table, KeyAt key_at, int64_t count, uint64_t *values_out) {
  if (table.count < Policy<Table>::kBatchedFrom || table.buckets.count < 1) {
    int64_t present = 0;
    for (int64_t i = 0; i < count; ++i) present += store_value(find(table, key_at(i)), values_out[i]);
    return present;
  }
  return for_each_group(key_at, count, values_out, [&](auto key_in_group, int64_t size, uint64_t *values) {
    return get_group(table, key_in_group, size, values);
  });
}

}  // namespace mub::hash_table

#endif
