// Checks the invariants of hash tables; hash_table.h has them.
#ifndef MUB_HASH_VERIFY_H
#define MUB_HASH_VERIFY_H

#include <cstdint>

#include "arrays/verify.h"
#include "base/fault.h"
#include "base/prefetch.h"
#include "containers/verify.h"
#include "hash/hash_table.h"

namespace mub::hash_table {

template <class Table>
Fault verify_buckets(const Table &table) {
  if (const Fault fault = slots::verify_table(table.buckets)) return fault;
  const int64_t count = table.buckets.count;
  const bool is_power = (count & (count - 1)) == 0 && (count == 0 || count >= kFirstBuckets);
  return is_power ? nullptr : "The number of buckets is not 4 times a power of 2.";
}

// Checks an entry of a chain. The search for its key begins at the head of the chain, so that the check
// of a chain takes time quadratic in its length.
template <class Table>
Fault verify_entry(const Table &table, int64_t bucket, const EntryOf<Table> &entry) {
  const auto key = Policy<Table>::key_of(table, entry);
  const uint64_t hash = Policy<Table>::stored_hash(entry);
  if (hash != Policy<Table>::hash(table, key)) return "The hash of an entry is not that of its key.";
  if (bucket_of(table, hash) != bucket) return "An entry is in the wrong bucket.";
  return find_in(table, bucket, hash, key) == &entry ? nullptr : "A key is in its chain twice.";
}

template <class Table>
Fault verify_chains(const Table &table) {
  KeyCheck<Table> keys(table);
  if (const Fault fault = keys.begin()) return fault;
  int64_t met = 0;
  for (int64_t bucket = 0; bucket < table.buckets.count; ++bucket) {
    // Only the head: prefetch_chain() also reads entries, which are not counted yet.
    if (bucket + kPrefetchBuckets < table.buckets.count) prefetch(head(table, bucket + kPrefetchBuckets));
    for (const EntryOf<Table> *entry = head(table, bucket); entry != nullptr; entry = entry->next) {
      if (++met > table.count) return kWrongCount;
      if (const Fault fault = keys.add(*entry)) return fault;
      if (const Fault fault = verify_entry(table, bucket, *entry)) return fault;
    }
  }
  return met == table.count ? keys.end() : kWrongCount;
}

template <class Table>
Fault verify(const Table &table) {
  if (const Fault fault = verify_buckets(table)) return fault;
  if (const Fault fault = verify_pools(table)) return fault;
  if (const Fault fault = verify_blocks<EntryOf<Table>>(entry_pool_of(table), table.count)) return fault;
  return verify_chains(table);
}

}  // namespace mub::hash_table

#endif
