// The engine of the hash tables: a table of buckets, each of which refers to a chain of entries. The number
// of buckets is a power of 2 and doubles when chains reach a mean length of two. Entries are blocks of a
// pool and never move.
//
//   buckets.items ──► [0] ──► entry ──► entry ──► NULL
//                     [1] ──► NULL
//                     …        (a bucket's word is the address of its first entry)
//
// Invariants:
//   1. The number of buckets, buckets.count, is 0 or 4 times a power of 2, and at most buckets.capacity. A
//      key with the word w (its hash, or an integer key itself) belongs to bucket w & (buckets.count - 1).
//   2. Every entry is in the bucket that its word chooses, and the last one of each chain has a null `next`.
//   3. Each key occurs once. A chain holds its entries in the order of insertion.
//   4. `count` is the number of entries in all chains. It is 0 without buckets, else below twice their
//      number, unless memory ran out when they were to double.
//   5. Every entry is a live block of the entry pool.
//   6. With byte-string keys, the keys of the entries fill the key stream without gaps, and do not overlap.
// 1 holds for any sequence of calls. The others hold until a caller uses the low layer: entry_new links an
// entry without key and count, entry_remove and remove_t unlink one without counting it, remove_all_entry
// and free_all_entry return blocks that are still linked, and adjust_t moves offsets alone. 2 and 3 also
// assume that `nocase` does not change while there are entries.
//
// Threads: functions that take a const table write nothing, so readers may run in parallel.
//
// The policy is the template argument Kind. It provides what containers/key_store.h lists, and
//   Table, Entry                        the records
//   kClearsNewEntries                   whether entry_new(), which stores no key, sets the value to 0
//   word(table, key)                    the word that chooses the bucket of a key
//   entry_word(entry)                   the word of a stored key
//   same_key(table, entry, key)         whether the entry has the key; used by insertions
//   matches(table, entry, word, key)    the same, but compares the stored word first; used by all others
//   store_word(entry, word)             stores the word of a new entry, if it has a field for it
//   reserve_keys(table, bytes)          makes room for key bytes; does nothing if memory runs out
//   with_pinned(table, key, use)        calls use(key) with a copy of the key if it lies in the key storage,
//                                       which may move; returns nullptr if memory runs out
// erase_key leaves the key fields of the removed entry unchanged.
#ifndef MUB_HASH_CHAINED_TABLE_H
#define MUB_HASH_CHAINED_TABLE_H

#include <algorithm>
#include <cstdint>
#include <utility>

#include "arrays/slot_table.h"
#include "base/prefetch.h"
#include "containers/container_pools.h"
#include "mub_hash.h"
#include "pool/pool.h"

namespace mub::chained {

// The growth rule. Callers see buckets and capacities: these constants are part of the interface.
constexpr int64_t kFirstBuckets = 4;
constexpr int64_t kFirstKeyBytes = 64;
constexpr int64_t kKeyBytesPerBucket = 32;
constexpr int64_t kMeanChain = 2;
// How many buckets ahead a pass over the table prefetches.
constexpr int64_t kPrefetchBuckets = 16;

template <class Kind>
using EntryOf = typename Kind::Entry;
template <class Kind>
using TableOf = typename Kind::Table;
template <class Kind>
using KeyOf = typename Kind::Key;

template <class Table>
int64_t bucket_of(const Table &table, uint64_t word) {
  return static_cast<int64_t>(word & static_cast<uint64_t>(table.buckets.count - 1));
}

template <class Kind>
EntryOf<Kind> *head(const TableOf<Kind> &table, int64_t bucket) {
  return record_of<EntryOf<Kind>>(table.buckets.items[bucket]);
}

// Prefetches for a pass over the buckets: the head of the chain kPrefetchBuckets ahead, and the second entry
// of the chain half as far ahead, whose head was prefetched before.
template <class Kind>
void prefetch_chain(const mub_arrays &buckets, int64_t bucket) {
  if (bucket + kPrefetchBuckets >= buckets.count) return;
  prefetch(record_of<void>(buckets.items[bucket + kPrefetchBuckets]));
  const auto *nearer = record_of<EntryOf<Kind>>(buckets.items[bucket + kPrefetchBuckets / 2]);
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

template <class Kind, class Test>
Place<EntryOf<Kind>> search(const TableOf<Kind> &table, int64_t bucket, Test is_wanted) {
  EntryOf<Kind> *before = nullptr;
  EntryOf<Kind> *entry = head<Kind>(table, bucket);
  while (entry != nullptr && !is_wanted(*entry)) {
    before = entry;
    entry = entry->next;
  }
  return {entry, before};
}

template <class Kind>
EntryOf<Kind> *find_in(const TableOf<Kind> &table, int64_t bucket, uint64_t word, KeyOf<Kind> key) {
  EntryOf<Kind> *entry = head<Kind>(table, bucket);
  while (entry != nullptr && !Kind::matches(table, *entry, word, key)) entry = entry->next;
  return entry;
}

// Links `next` after `before`, or at the head of the bucket if `before` is null.
template <class Kind>
void link(TableOf<Kind> &table, int64_t bucket, EntryOf<Kind> *before, EntryOf<Kind> *next) {
  if (before == nullptr) {
    table.buckets.items[bucket] = word_of(next);
  } else {
    before->next = next;
  }
}

// Links a new block of the entry pool after `last`; nullptr if there is none.
template <class Kind>
EntryOf<Kind> *link_new(TableOf<Kind> &table, int64_t bucket, EntryOf<Kind> *last) {
  auto *entry = static_cast<EntryOf<Kind> *>(pool::take(table.entry_pool));
  if (entry == nullptr) return nullptr;
  entry->next = nullptr;
  link<Kind>(table, bucket, last, entry);
  return entry;
}

// The search of an insertion: finds the first entry of the bucket with the key, whatever hash is stored with
// it. That hash may be outdated, if `nocase` has changed since.
template <class Kind>
Place<EntryOf<Kind>> search_key(const TableOf<Kind> &table, int64_t bucket, KeyOf<Kind> key) {
  return search<Kind>(table, bucket,
                      [&](const EntryOf<Kind> &entry) { return Kind::same_key(table, entry, key); });
}

template <class Kind>
EntryOf<Kind> *entry_new(TableOf<Kind> &table, int64_t bucket, KeyOf<Kind> key, int &inserted) {
  const auto place = search_key<Kind>(table, bucket, key);
  inserted = 0;
  if (place.entry != nullptr) return place.entry;
  EntryOf<Kind> *entry = link_new<Kind>(table, bucket, place.before);
  if (entry == nullptr) return nullptr;
  if constexpr (Kind::kClearsNewEntries) entry->value = 0;
  inserted = 1;
  return entry;
}

template <class Kind>
EntryOf<Kind> *unlink(TableOf<Kind> &table, int64_t bucket, uint64_t word, KeyOf<Kind> key) {
  const auto place = search<Kind>(
      table, bucket, [&](const EntryOf<Kind> &entry) { return Kind::matches(table, entry, word, key); });
  if (place.entry == nullptr) return nullptr;
  link<Kind>(table, bucket, place.before, place.entry->next);
  place.entry->next = nullptr;
  return place.entry;
}

// Calls `visit` with every entry. `visit` may release the entry.
template <class Kind, class Visit>
void for_each(const TableOf<Kind> &table, Visit visit) {
  for (int64_t bucket = 0; bucket < table.buckets.count; ++bucket) {
    prefetch_chain<Kind>(table.buckets, bucket);
    EntryOf<Kind> *entry = head<Kind>(table, bucket);
    while (entry != nullptr) {
      EntryOf<Kind> *next = entry->next;
      visit(*entry);
      entry = next;
    }
  }
}

// Counts the entries in the chains by a pass over the entry pool: every entry is either the head of a bucket
// or the `next` of another entry. Entries that a caller has unlinked have no `next`, and those of blocks on
// the free stack are subtracted.
template <class Kind>
int64_t count_linked(const TableOf<Kind> &table) {
  using Entry = EntryOf<Kind>;
  int64_t linked = table.buckets.count -
                   std::count(table.buckets.items, table.buckets.items + table.buckets.count, uint64_t{0});
  const auto follower = [](const Entry &entry) { return entry.next != nullptr ? 1 : 0; };
  pool::for_each_block<const Entry>(*table.entry_pool,
                                    [&](const Entry &entry) { linked += follower(entry); });
  pool::for_each_free_block<const Entry>(*table.entry_pool,
                                         [&](const Entry &entry) { linked -= follower(entry); });
  return linked;
}

// Whether every live block of the table's own entry pool is in a chain, except for `unlinked` entries that
// were just removed. If so, a pass over the pool changes no entry that belongs to the caller. `count` is not
// enough to decide this: it includes entries that the caller has unlinked but not yet subtracted.
template <class Kind>
bool fills_its_pool(const TableOf<Kind> &table, int64_t unlinked) {
  return holds_only<EntryOf<Kind>>(entry_pool_of(table), table.count) &&
         count_linked<Kind>(table) == table.count - unlinked;
}

// ---- growth

// Splits the chain of a bucket between itself and bucket + old_count. The side is an array index, not a
// branch, which would be mispredicted every other time. An entry whose word does not belong to the lower
// bucket goes to the upper one, even if it belongs to neither.
template <class Kind>
void split(mub_arrays &buckets, int64_t bucket, int64_t old_count) {
  EntryOf<Kind> *first[2] = {nullptr, nullptr};
  EntryOf<Kind> **end[2] = {&first[0], &first[1]};
  for (auto *entry = record_of<EntryOf<Kind>>(buckets.items[bucket]); entry != nullptr; entry = entry->next) {
    const uint64_t word = Kind::entry_word(*entry) & static_cast<uint64_t>(2 * old_count - 1);
    const int side = word != static_cast<uint64_t>(bucket) ? 1 : 0;
    *end[side] = entry;
    end[side] = &entry->next;
  }
  *end[0] = nullptr;
  *end[1] = nullptr;
  buckets.items[bucket] = word_of(first[0]);
  buckets.items[bucket + old_count] = word_of(first[1]);
}

template <class Kind>
void expand(TableOf<Kind> &table) {
  const int64_t old_count = table.buckets.count;
  if (old_count < 1) return;
  Kind::reserve_keys(table, kKeyBytesPerBucket * old_count);
  if (!slots::expand(table.buckets, 2 * old_count)) return;
  for (int64_t bucket = 0; bucket < old_count; ++bucket) {
    prefetch_chain<Kind>(table.buckets, bucket);
    split<Kind>(table.buckets, bucket, old_count);
  }
  table.buckets.count = 2 * old_count;
}

template <class Kind>
bool make_first_buckets(TableOf<Kind> &table) {
  Kind::reserve_keys(table, kFirstKeyBytes);
  if (!slots::expand(table.buckets, kFirstBuckets)) return false;
  table.buckets.count = kFirstBuckets;
  return true;
}

// ---- one key

template <class Kind>
EntryOf<Kind> *find(const TableOf<Kind> &table, KeyOf<Kind> key) {
  if (table.buckets.count < 1) return nullptr;
  const uint64_t word = Kind::word(table, key);
  return find_in<Kind>(table, bucket_of(table, word), word, key);
}

// Appends an entry for a key that the chain lacks; nullptr, and the table unchanged, if memory runs out.
template <class Kind>
EntryOf<Kind> *append(TableOf<Kind> &table, int64_t bucket, EntryOf<Kind> *last, uint64_t word,
                      KeyOf<Kind> key) {
  auto *entry = static_cast<EntryOf<Kind> *>(pool::take(table.entry_pool));
  if (entry == nullptr) return nullptr;
  Kind::store_word(*entry, word);
  if (!Kind::store_key(table, *entry, key)) {
    pool::give(table.entry_pool, entry);
    return nullptr;
  }
  entry->next = nullptr;
  entry->value = 0;
  link<Kind>(table, bucket, last, entry);
  if (++table.count >= kMeanChain * table.buckets.count) expand<Kind>(table);
  return entry;
}

template <class Kind>
EntryOf<Kind> *insert(TableOf<Kind> &table, KeyOf<Kind> key, int &inserted);

template <class Kind>
__attribute__((noinline)) EntryOf<Kind> *insert_first(TableOf<Kind> &table, KeyOf<Kind> key, int &inserted) {
  // The key may lie in the block of the key stream, which an emptied table keeps and which is about to grow.
  return Kind::with_pinned(table, key, [&](KeyOf<Kind> pinned) {
    return make_first_buckets<Kind>(table) ? insert<Kind>(table, pinned, inserted) : nullptr;
  });
}

// Finds the entry of a key or adds it; nullptr if memory runs out.
template <class Kind>
EntryOf<Kind> *insert(TableOf<Kind> &table, KeyOf<Kind> key, int &inserted) {
  inserted = 0;
  if (table.buckets.count < 1) return insert_first<Kind>(table, key, inserted);
  const uint64_t word = Kind::word(table, key);
  const int64_t bucket = bucket_of(table, word);
  const auto place = search_key<Kind>(table, bucket, key);
  if (place.entry != nullptr) return place.entry;
  EntryOf<Kind> *entry = append<Kind>(table, bucket, place.before, word, key);
  inserted = entry != nullptr ? 1 : 0;
  return entry;
}

// Unlinks the entry of a key and deletes its key bytes. The caller lowers `count` and returns the block.
template <class Kind>
EntryOf<Kind> *detach(TableOf<Kind> &table, KeyOf<Kind> key) {
  if (table.buckets.count < 1) return nullptr;
  const uint64_t word = Kind::word(table, key);
  EntryOf<Kind> *entry = unlink<Kind>(table, bucket_of(table, word), word, key);
  if (entry != nullptr) Kind::erase_key(table, *entry);
  return entry;
}

// `init` runs after the block was stored in the entry and in `value_out`.
template <class Kind>
int set(TableOf<Kind> &table, KeyOf<Kind> key, uint64_t &value_out, mub_init_fn init) {
  int inserted;
  EntryOf<Kind> *entry = insert<Kind>(table, key, inserted);
  if (inserted != 0) entry->value = word_of(pool::take(table.value_pool));
  value_out = entry == nullptr ? 0 : entry->value;
  if (inserted != 0) initialise(value_out, init);
  return inserted;
}

template <class Kind>
uint64_t get(const TableOf<Kind> &table, KeyOf<Kind> key) {
  const EntryOf<Kind> *entry = find<Kind>(table, key);
  return entry == nullptr ? 0 : entry->value;
}

template <class Kind>
int insert_value(TableOf<Kind> &table, KeyOf<Kind> key, uint64_t value) {
  int inserted;
  EntryOf<Kind> *entry = insert<Kind>(table, key, inserted);
  if (inserted != 0) entry->value = value;
  return inserted;
}

template <class Kind>
uint64_t update(TableOf<Kind> &table, KeyOf<Kind> key, uint64_t value) {
  EntryOf<Kind> *entry = find<Kind>(table, key);
  return entry == nullptr ? 0 : std::exchange(entry->value, value);
}

// Removes a key. `part_with` is called with the value, after the entry was unlinked and before its block is
// returned.
template <class Kind, class PartWith>
bool remove(TableOf<Kind> &table, KeyOf<Kind> key, PartWith part_with) {
  EntryOf<Kind> *entry = detach<Kind>(table, key);
  if (entry == nullptr) return false;
  --table.count;
  part_with(entry->value);
  pool::give(table.entry_pool, entry);
  return true;
}

template <class Kind>
uint64_t remove(TableOf<Kind> &table, KeyOf<Kind> key) {
  uint64_t removed = 0;
  remove<Kind>(table, key, [&](uint64_t value) { removed = value; });
  return removed;
}

template <class Kind>
TableOf<Kind> *free(TableOf<Kind> &table, KeyOf<Kind> key, mub_free_fn release_it) {
  const bool found = remove<Kind>(table, key, [&](uint64_t value) {
    if (release_it != nullptr) release_it(value);
    return_value(value_pool_of(table), value);
  });
  return found ? &table : nullptr;
}

// ---- walks

template <class Kind>
EntryOf<Kind> *first_from(const TableOf<Kind> &table, int64_t bucket, int64_t &bucket_out) {
  for (; bucket < table.buckets.count; ++bucket) {
    if (table.buckets.items[bucket] == 0) continue;
    bucket_out = bucket;
    return head<Kind>(table, bucket);
  }
  return nullptr;
}

template <class Kind>
EntryOf<Kind> *entry_first(const TableOf<Kind> &table, int64_t &bucket_out) {
  bucket_out = 0;
  return table.count == 0 ? nullptr : first_from<Kind>(table, 0, bucket_out);
}

template <class Kind>
EntryOf<Kind> *entry_next(const TableOf<Kind> &table, int64_t &bucket, const EntryOf<Kind> &entry) {
  if (entry.next != nullptr) return entry.next;
  // The caller passes the bucket: any number must be safe.
  if (bucket >= table.buckets.count - 1) return nullptr;
  return first_from<Kind>(table, std::max<int64_t>(bucket + 1, 0), bucket);
}

// ---- the whole table

template <class Kind>
void init(TableOf<Kind> &table, int with_entry_pool, int with_value_pool) {
  table = {};
  if (with_entry_pool != 0) entry_pool_of(table).make(sizeof(EntryOf<Kind>));
  if (with_value_pool != 0) value_pool_of(table).make(0);
  table.buckets.pool = table.entry_pool;
}

template <class Kind>
void term(TableOf<Kind> &table) {
  Kind::term_keys(table);
  slots::term(table.buckets);
  table.buckets.pool = nullptr;
  destroy_pools(table);
  table.count = 0;
}

template <class Kind>
void swap(TableOf<Kind> &a, TableOf<Kind> &b) {
  slots::swap(a.buckets, b.buckets);
  std::swap(a.count, b.count);
  Kind::swap_keys(a, b);
  swap_pools(a, b);
}

template <class Kind>
void remove_all_entry(TableOf<Kind> &table) {
  for_each<Kind>(table, [&](EntryOf<Kind> &entry) { pool::give(table.entry_pool, &entry); });
}

template <class Kind>
void remove_all(TableOf<Kind> &table) {
  if (table.owns_entry_pool == 0) remove_all_entry<Kind>(table);
  Kind::clear_keys(table);
  slots::remove_all(table.buckets);
  empty_pools(table);
  table.count = 0;
}

template <class Kind>
void free_all_entry(TableOf<Kind> &table, mub_free_fn release_it) {
  for_each<Kind>(table, [&](EntryOf<Kind> &entry) {
    release_value(value_pool_of(table), entry.value, release_it);
    if (table.owns_entry_pool == 0) pool::give(table.entry_pool, &entry);
  });
}

template <class Kind>
void free_all(TableOf<Kind> &table, mub_free_fn release_it) {
  if (frees_one_by_one(table, release_it)) free_all_entry<Kind>(table, release_it);
  Kind::term_keys(table);
  slots::term(table.buckets);
  empty_pools(table);
  table.count = 0;
}

}  // namespace mub::chained

#endif
