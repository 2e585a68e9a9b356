// The engine of the hash tables: a table of buckets, each of which refers to a chain of entries. The number
// of buckets is a power of 2 and doubles when chains reach a mean length of two. Entries are blocks of a
// pool and never move.
//
//   buckets.items ──► [0] ──► entry ──► entry ──► NULL
//                     [1] ──► NULL
//                     …        (a bucket holds the address of its first entry)
//
// Invariants:
//   1. The number of buckets, buckets.count, is 0 or 4 times a power of 2, and at most buckets.capacity. A
//      key with the hash h (an integer key is its own hash) belongs to bucket h & (buckets.count - 1).
//   2. Every entry is in the bucket that its hash chooses, and the last one of each chain has a null `next`.
//   3. Each key occurs once. A chain holds its entries in the order of insertion.
//   4. `count` is the number of entries in all chains. It is 0 without buckets, else below twice their
//      number, unless memory ran out when they were to double.
//   5. Every entry is a live block of the entry pool.
//   6. With byte-string keys, the keys of the entries fill the key stream without gaps, and do not overlap.
// 1 holds for any sequence of calls. The others hold until a caller uses the low layer: entry_new links an
// entry without a key and without raising `count`, entry_remove and remove_t unlink one without lowering
// `count`, remove_all_entry and free_all_entry return blocks that are still linked, and adjust_t moves
// offsets alone. 2 and 3 also assume that neither `nocase` nor, if it is set, the locale of tolower() changes
// while there are entries. `buckets.pool` is the entry pool if `_init` created it or `_clone` shared it, else
// usually null. Nothing allocates from it, but callers can see it.
//
// Threads: functions that take a const table write nothing, so readers may run in parallel; only the `visit`
// of for_each() may write to the entries.
//
// The policy provides what containers/key_store.h lists, and
//   Entry                               the struct of an entry
//   kClearsNewEntries                   whether entry_new(), which stores no key, sets the value to 0
//   hash(table, key)                    the hash that chooses the bucket of a key; an integer key is its own
//   stored_hash(entry)                  the hash of the key of an entry
//   same_key(table, entry, key)         whether the entry has the key; used by insertions
//   matches(table, entry, hash, key)    the same, but compares the stored hash first, if the entry has one;
//                                       used by all others
//   may_match(entry, hash, key)         whether it may match, as far as the entry itself can tell
//   kBatchedFrom                        the number of entries from which batch_get.h looks keys up together;
//                                       single look-ups in smaller tables, which stay in a cache, are at
//                                       least as fast
//   store_hash(entry, hash)             stores the hash of a new entry, if it has a field for it
//   reserve_keys(table, bytes)          makes room for `bytes` bytes of keys in total, if there is memory
//   with_pinned(table, key, use)        calls use(key), with a copy if the key lies in the key stream, which
//                                       may move; returns nullptr if memory runs out
// Here, unlike in other containers, erase_key must leave the key fields of the removed entry unchanged.
#ifndef MUB_HASH_HASH_TABLE_H
#define MUB_HASH_HASH_TABLE_H

#include <algorithm>
#include <cstdint>
#include <utility>

#include "arrays/slot_table.h"
#include "base/prefetch.h"
#include "containers/container_pools.h"
#include "containers/memory.h"
#include "containers/policy.h"
#include "mub_hash.h"
#include "pool/pool.h"

namespace mub::hash_table {

// The growth rule. Callers see buckets and capacities: these constants are part of the interface.
constexpr int64_t kFirstBuckets = 4;
constexpr int64_t kFirstKeyBytes = 64;
constexpr int64_t kKeyBytesPerBucket = 32;
constexpr int64_t kMeanChain = 2;
// How many buckets ahead a pass over the table prefetches. With 1, insertions take up to 1.2 times as long; 4
// and 64 make no clear difference (hashx_insert_random, hashx_insert_sequence and map_insert in bench/).
constexpr int64_t kPrefetchBuckets = 16;

template <class Table>
int64_t bucket_of(const Table &table, uint64_t hash) {
  return static_cast<int64_t>(hash & static_cast<uint64_t>(table.buckets.count - 1));
}

template <class Table>
EntryOf<Table> *head(const Table &table, int64_t bucket) {
  return pointer_of<EntryOf<Table>>(table.buckets.items[bucket]);
}

// Prefetches for a pass over the buckets: the head of the chain kPrefetchBuckets ahead, and the second entry
// of the chain half as far ahead, whose head was prefetched before.
template <class Table>
void prefetch_chain(const Table &table, int64_t bucket) {
  const mub_arrays &buckets = table.buckets;
  if (bucket + kPrefetchBuckets >= buckets.count) return;
  prefetch(pointer_of<void>(buckets.items[bucket + kPrefetchBuckets]));
  const auto *nearer = pointer_of<EntryOf<Table>>(buckets.items[bucket + kPrefetchBuckets / 2]);
  if (nearer != nullptr) prefetch(nearer->next);
}

// ---- chains

// A position in a chain: an entry and the one before it. `entry` is null at the end of the chain, `before` at
// its head.
template <class Entry>
struct Place {
  Entry *entry;
  Entry *before;
};

template <class Table, class Test>
Place<EntryOf<Table>> search(const Table &table, int64_t bucket, Test is_wanted) {
  EntryOf<Table> *before = nullptr;
  EntryOf<Table> *entry = head(table, bucket);
  while (entry != nullptr && !is_wanted(*entry)) {
    before = entry;
    entry = entry->next;
  }
  return {entry, before};
}

// The first entry with the key, from an entry of its chain on.
template <class Table>
EntryOf<Table> *find_from(const Table &table, EntryOf<Table> *entry, uint64_t hash, KeyOf<Table> key) {
  while (entry != nullptr && !Policy<Table>::matches(table, *entry, hash, key)) entry = entry->next;
  return entry;
}

template <class Table>
EntryOf<Table> *find_in(const Table &table, int64_t bucket, uint64_t hash, KeyOf<Table> key) {
  return find_from(table, head(table, bucket), hash, key);
}

// Links `next` after `before`, or at the head of the bucket if `before` is null.
template <class Table>
void link(Table &table, int64_t bucket, EntryOf<Table> *before, EntryOf<Table> *next) {
  if (before == nullptr) {
    table.buckets.items[bucket] = word_of(next);
  } else {
    before->next = next;
  }
}

// Links a new block of the entry pool after `last`; nullptr if no block can be taken.
template <class Table>
EntryOf<Table> *link_new(Table &table, int64_t bucket, EntryOf<Table> *last) {
  auto *entry = static_cast<EntryOf<Table> *>(pool::take(table.entry_pool));
  if (entry == nullptr) return nullptr;
  entry->next = nullptr;
  link(table, bucket, last, entry);
  return entry;
}

// The search of an insertion: finds the first entry of the bucket with the key, whatever hash is stored with
// it. That hash may be outdated, if `nocase` has changed since.
template <class Table>
Place<EntryOf<Table>> search_key(const Table &table, int64_t bucket, KeyOf<Table> key) {
  return search(table, bucket,
                [&](const EntryOf<Table> &entry) { return Policy<Table>::same_key(table, entry, key); });
}

template <class Table>
EntryOf<Table> *entry_new(Table &table, int64_t bucket, KeyOf<Table> key, int &inserted) {
  const auto place = search_key(table, bucket, key);
  inserted = 0;
  if (place.entry != nullptr) return place.entry;
  EntryOf<Table> *entry = link_new(table, bucket, place.before);
  if (entry == nullptr) return nullptr;
  if constexpr (Policy<Table>::kClearsNewEntries) entry->value = 0;
  inserted = 1;
  return entry;
}

template <class Table>
EntryOf<Table> *unlink(Table &table, int64_t bucket, uint64_t hash, KeyOf<Table> key) {
  const auto place = search(table, bucket, [&](const EntryOf<Table> &entry) {
    return Policy<Table>::matches(table, entry, hash, key);
  });
  if (place.entry == nullptr) return nullptr;
  link(table, bucket, place.before, place.entry->next);
  place.entry->next = nullptr;
  return place.entry;
}

// Calls `visit` with every entry. `visit` may return the entry to its pool.
template <class Table, class Visit>
void for_each(const Table &table, Visit visit) {
  for (int64_t bucket = 0; bucket < table.buckets.count; ++bucket) {
    prefetch_chain(table, bucket);
    EntryOf<Table> *entry = head(table, bucket);
    while (entry != nullptr) {
      EntryOf<Table> *next = entry->next;
      visit(*entry);
      entry = next;
    }
  }
}

// Counts the entries in the chains by a pass over the entry pool. Each is the head of a bucket or the `next`
// of one other entry, so the result is the number of heads and of `next` fields that are not null. The `next`
// fields of blocks on the free stack are subtracted; that of an entry that a caller has unlinked is null: the
// caller leaves it so.
template <class Table>
int64_t count_linked(const Table &table) {
  using Entry = EntryOf<Table>;
  int64_t linked = table.buckets.count -
                   std::count(table.buckets.items, table.buckets.items + table.buckets.count, uint64_t{0});
  const auto links_from = [](const Entry &entry) { return entry.next != nullptr ? 1 : 0; };
  pool::for_each_block<const Entry>(*table.entry_pool,
                                    [&](const Entry &entry) { linked += links_from(entry); });
  pool::for_each_free_block<const Entry>(*table.entry_pool,
                                         [&](const Entry &entry) { linked -= links_from(entry); });
  return linked;
}

// Whether every live block of the table's own entry pool is in a chain, except for `unlinked` entries that
// were just removed. If so, a pass over the pool changes no entry that belongs to the caller. `count` is not
// enough to decide this: it includes entries that the caller has unlinked but not yet subtracted.
template <class Table>
bool pool_has_only_entries(const Table &table, int64_t unlinked) {
  return has_exactly_live<EntryOf<Table>>(entry_pool_of(table), table.count) &&
         count_linked(table) == table.count - unlinked;
}

// ---- growth

// Splits the chain of a bucket between itself and bucket + old_count. The side is an array index, not a
// branch, which would be mispredicted every other time. An entry whose hash does not belong to the lower
// bucket goes to the upper one, even if it belongs to neither.
template <class Table>
void split(Table &table, int64_t bucket, int64_t old_count) {
  EntryOf<Table> *first[2] = {nullptr, nullptr};
  EntryOf<Table> **end[2] = {&first[0], &first[1]};
  for (EntryOf<Table> *entry = head(table, bucket); entry != nullptr; entry = entry->next) {
    const uint64_t chosen = Policy<Table>::stored_hash(*entry) & static_cast<uint64_t>(2 * old_count - 1);
    const int side = chosen != static_cast<uint64_t>(bucket) ? 1 : 0;
    *end[side] = entry;
    end[side] = &entry->next;
  }
  *end[0] = nullptr;
  *end[1] = nullptr;
  table.buckets.items[bucket] = word_of(first[0]);
  table.buckets.items[bucket + old_count] = word_of(first[1]);
}

template <class Table>
void expand(Table &table) {
  const int64_t old_count = table.buckets.count;
  if (old_count < 1) return;
  Policy<Table>::reserve_keys(table, kKeyBytesPerBucket * old_count);
  if (!slots::expand(table.buckets, 2 * old_count)) return;
  for (int64_t bucket = 0; bucket < old_count; ++bucket) {
    prefetch_chain(table, bucket);
    split(table, bucket, old_count);
  }
  table.buckets.count = 2 * old_count;
}

template <class Table>
bool make_first_buckets(Table &table) {
  Policy<Table>::reserve_keys(table, kFirstKeyBytes);
  if (!slots::expand(table.buckets, kFirstBuckets)) return false;
  table.buckets.count = kFirstBuckets;
  return true;
}

// ---- one key

template <class Table>
EntryOf<Table> *find(const Table &table, KeyOf<Table> key) {
  if (table.buckets.count < 1) return nullptr;
  const uint64_t hash = Policy<Table>::hash(table, key);
  return find_in(table, bucket_of(table, hash), hash, key);
}

// Appends an entry for a key that the chain lacks; nullptr, and the table unchanged, if memory runs out.
template <class Table>
EntryOf<Table> *append(Table &table, int64_t bucket, EntryOf<Table> *last, uint64_t hash, KeyOf<Table> key) {
  auto *entry = static_cast<EntryOf<Table> *>(pool::take(table.entry_pool));
  if (entry == nullptr) return nullptr;
  Policy<Table>::store_hash(*entry, hash);
  if (!Policy<Table>::store_key(table, *entry, key)) {
    pool::give(table.entry_pool, entry);
    return nullptr;
  }
  entry->next = nullptr;
  entry->value = 0;
  link(table, bucket, last, entry);
  if (++table.count >= kMeanChain * table.buckets.count) expand(table);
  return entry;
}

template <class Table>
EntryOf<Table> *insert(Table &table, KeyOf<Table> key, int &inserted);

template <class Table>
__attribute__((noinline)) EntryOf<Table> *insert_first(Table &table, KeyOf<Table> key, int &inserted) {
  // The key may lie in the block of the key stream, which an emptied table keeps and which is about to grow.
  return Policy<Table>::with_pinned(table, key, [&](KeyOf<Table> pinned) {
    return make_first_buckets(table) ? insert(table, pinned, inserted) : nullptr;
  });
}

// Finds the entry of a key or adds it; nullptr if memory runs out.
template <class Table>
EntryOf<Table> *insert(Table &table, KeyOf<Table> key, int &inserted) {
  inserted = 0;
  if (table.buckets.count < 1) return insert_first(table, key, inserted);
  const uint64_t hash = Policy<Table>::hash(table, key);
  const int64_t bucket = bucket_of(table, hash);
  const auto place = search_key(table, bucket, key);
  if (place.entry != nullptr) return place.entry;
  EntryOf<Table> *entry = append(table, bucket, place.before, hash, key);
  inserted = entry != nullptr ? 1 : 0;
  return entry;
}

// Unlinks the entry of a key and deletes its key bytes. The caller lowers `count` and returns the block.
template <class Table>
EntryOf<Table> *detach(Table &table, KeyOf<Table> key) {
  if (table.buckets.count < 1) return nullptr;
  const uint64_t hash = Policy<Table>::hash(table, key);
  EntryOf<Table> *entry = unlink(table, bucket_of(table, hash), hash, key);
  if (entry != nullptr) Policy<Table>::erase_key(table, *entry);
  return entry;
}

// `init` runs after the block was stored in the entry and in `value_out`.
template <class Table>
int set(Table &table, KeyOf<Table> key, uint64_t &value_out, mub_init_fn init) {
  int inserted;
  EntryOf<Table> *entry = insert(table, key, inserted);
  if (inserted != 0) entry->value = word_of(pool::take(table.value_pool));
  value_out = entry == nullptr ? 0 : entry->value;
  if (inserted != 0) initialise(value_out, init);
  return inserted;
}

template <class Table>
uint64_t get(const Table &table, KeyOf<Table> key) {
  const EntryOf<Table> *entry = find(table, key);
  return entry == nullptr ? 0 : entry->value;
}

template <class Table>
int insert_value(Table &table, KeyOf<Table> key, uint64_t value) {
  int inserted;
  EntryOf<Table> *entry = insert(table, key, inserted);
  if (inserted != 0) entry->value = value;
  return inserted;
}

template <class Table>
uint64_t update(Table &table, KeyOf<Table> key, uint64_t value) {
  EntryOf<Table> *entry = find(table, key);
  return entry == nullptr ? 0 : std::exchange(entry->value, value);
}

// Removes a key. `on_removed` is called with the value, after the entry was unlinked and before its block is
// returned to the pool.
template <class Table, class OnRemoved>
bool remove(Table &table, KeyOf<Table> key, OnRemoved on_removed) {
  EntryOf<Table> *entry = detach(table, key);
  if (entry == nullptr) return false;
  --table.count;
  on_removed(entry->value);
  pool::give(table.entry_pool, entry);
  return true;
}

template <class Table>
uint64_t remove(Table &table, KeyOf<Table> key) {
  uint64_t removed = 0;
  remove(table, key, [&](uint64_t value) { removed = value; });
  return removed;
}

template <class Table>
Table *free(Table &table, KeyOf<Table> key, mub_free_fn release_it) {
  const bool found = remove(table, key, [&](uint64_t value) {
    // Unlike release_value(), also passes 0: part of the interface.
    if (release_it != nullptr) release_it(value);
    give_back(value_pool_of(table), value);
  });
  return found ? &table : nullptr;
}

// ---- walks

template <class Table>
EntryOf<Table> *first_from(const Table &table, int64_t bucket, int64_t &bucket_out) {
  for (; bucket < table.buckets.count; ++bucket) {
    if (table.buckets.items[bucket] == 0) continue;
    bucket_out = bucket;
    return head(table, bucket);
  }
  return nullptr;
}

template <class Table>
EntryOf<Table> *entry_first(const Table &table, int64_t &bucket_out) {
  bucket_out = 0;
  return table.count == 0 ? nullptr : first_from(table, 0, bucket_out);
}

template <class Table>
EntryOf<Table> *entry_next(const Table &table, int64_t &bucket, const EntryOf<Table> &entry) {
  if (entry.next != nullptr) return entry.next;
  // The caller passes the bucket: any number must be safe.
  if (bucket >= table.buckets.count - 1) return nullptr;
  // Not first_from(max(bucket + 1, 0)): compiled to a conditional move, it would make the next step wait
  // until `entry.next` is loaded.
  if (bucket < 0) return first_from(table, 0, bucket);
  return first_from(table, bucket + 1, bucket);
}

// ---- the whole table

template <class Table>
void init(Table &table, int with_entry_pool, int with_value_pool) {
  table = {};
  if (with_entry_pool != 0) entry_pool_of(table).make(sizeof(EntryOf<Table>));
  if (with_value_pool != 0) value_pool_of(table).make(0);
  table.buckets.pool = table.entry_pool;
}

// Entries in an external pool are not returned: part of the interface (remove_all() does return them).
template <class Table>
void term(Table &table) {
  Policy<Table>::term_keys(table);
  slots::term(table.buckets);
  table.buckets.pool = nullptr;
  destroy_pools(table);
  table.count = 0;
}

template <class Table>
void swap(Table &a, Table &b) {
  slots::swap(a.buckets, b.buckets);
  std::swap(a.count, b.count);
  Policy<Table>::swap_keys(a, b);
  swap_pools(a, b);
}

template <class Table>
void remove_all_entry(Table &table) {
  for_each(table, [&](EntryOf<Table> &entry) { pool::give(table.entry_pool, &entry); });
}

template <class Table>
void remove_all(Table &table) {
  if (table.owns_entry_pool == 0) remove_all_entry(table);
  Policy<Table>::clear_keys(table);
  slots::remove_all(table.buckets);
  empty_pools(table);
  table.count = 0;
}

template <class Table>
void free_all_entry(Table &table, mub_free_fn release_it) {
  for_each(table, [&](EntryOf<Table> &entry) {
    release_value(value_pool_of(table), entry.value, release_it);
    if (table.owns_entry_pool == 0) pool::give(table.entry_pool, &entry);
  });
}

template <class Table>
void free_all(Table &table, mub_free_fn release_it) {
  if (must_visit_entries(table, release_it)) free_all_entry(table, release_it);
  Policy<Table>::term_keys(table);
  slots::term(table.buckets);
  empty_pools(table);
  table.count = 0;
}

template <class Table>
int64_t memory_bytes(const Table &table) {
  return slots::table_bytes(table.buckets) + pools_and_keys_bytes(table);
}

}  // namespace mub::hash_table

#endif
