// The engine of the lists: pooled entries, linked both ways.
//
//   list   head ──► entry ◄──► entry ◄──► entry ◄── tail
//
// prev of the head and next of the tail are null.
//
// Invariants:
//   1. head and tail are null together; from either, the links lead to the other.
//   2. What one link leads to links back.
//   3. `count` is the number of entries (of values, where an entry holds several).
//   4. The key of every entry lies in the key storage, where there is one, which holds nothing else.
//   5. Entries are blocks of the entry pool.
//
// A list takes part by specialising ChainPolicy where it has keys, or several values an entry. A policy has
// the names that containers/key_store.h lists and
//   Entry                             the record
//   retract_key(list, entry)          takes back the key that was stored last
//   release_values(list, entry, release_it)   releases what an entry holds
#ifndef MUB_LIST_LINKED_CHAIN_H
#define MUB_LIST_LINKED_CHAIN_H

#include <cstdint>
#include <type_traits>

#include "containers/container_pools.h"
#include "containers/key_store.h"
#include "containers/pool_copy.h"
#include "mub_list.h"
#include "pool/pool.h"

namespace mub {

// An entry has one value, unless its policy says otherwise, and a key of the policy Keys.
template <class List, class Keys>
struct ListEntries : Keys {
  using Entry = std::remove_pointer_t<decltype(List::head)>;

  static void release_values(List &list, const Entry &entry, mub_free_fn release_it) {
    release_value(value_pool_of(list), entry.value, release_it);
  }
};

template <class List>
struct ChainPolicy : ListEntries<List, NoKeys<List>> {
  template <class Entry>
  static void retract_key(List &, Entry &) {}
};

namespace chain {

template <class List>
using EntryOf = typename ChainPolicy<List>::Entry;
template <class List>
using KeyOf = typename ChainPolicy<List>::Key;

// ---- places

enum class End { kHead, kTail };

constexpr End opposite(End end) { return end == End::kHead ? End::kTail : End::kHead; }

template <class List>
EntryOf<List> *entry_at(const List &list, End end) {
  return end == End::kHead ? list.head : list.tail;
}

// The neighbour on the way from an end to the other one.
template <class Entry>
Entry *next_from(const Entry &entry, End start) {
  return start == End::kHead ? entry.next : entry.prev;
}

// Where an entry can be linked: between two neighbours, either of which may be missing.
template <class Entry>
struct Gap {
  Entry *before;
  Entry *after;
};

template <class List>
Gap<EntryOf<List>> gap_at(const List &list, End end) {
  if (end == End::kHead) return {nullptr, list.head};
  return {list.tail, nullptr};
}

// Beside nothing is outside of all.
template <class List>
Gap<EntryOf<List>> gap_before(const List &list, EntryOf<List> *position) {
  if (position == nullptr) return gap_at(list, End::kHead);
  return {position->prev, position};
}

template <class List>
Gap<EntryOf<List>> gap_after(const List &list, EntryOf<List> *position) {
  if (position == nullptr) return gap_at(list, End::kTail);
  return {position, position->next};
}

// ---- links

template <class List>
void link(List &list, Gap<EntryOf<List>> gap, EntryOf<List> &entry) {
  entry.prev = gap.before;
  entry.next = gap.after;
  (gap.before != nullptr ? gap.before->next : list.head) = &entry;
  (gap.after != nullptr ? gap.after->prev : list.tail) = &entry;
}

template <class List>
void unlink(List &list, const EntryOf<List> &entry) {
  (entry.prev != nullptr ? entry.prev->next : list.head) = entry.next;
  (entry.next != nullptr ? entry.next->prev : list.tail) = entry.prev;
}

// Calls `visit` with every entry, which it may release.
template <class List, class Visit>
void for_each(const List &list, Visit visit) {
  EntryOf<List> *entry = list.head;
  while (entry != nullptr) {
    EntryOf<List> *next = entry->next;
    visit(*entry);
    entry = next;
  }
}

template <class List, class Test>
EntryOf<List> *find(const List &list, Test is_wanted) {
  EntryOf<List> *entry = list.head;
  while (entry != nullptr && !is_wanted(*entry)) entry = entry->next;
  return entry;
}

// ---- adding

template <class List>
EntryOf<List> *take_entry(List &list) {
  auto *entry = static_cast<EntryOf<List> *>(pool::take(list.entry_pool));
  if (entry != nullptr) *entry = {};
  return entry;
}

// An entry with its key, not yet linked; nullptr when memory runs out.
template <class List>
EntryOf<List> *take_entry_with(List &list, KeyOf<List> key) {
  EntryOf<List> *entry = take_entry(list);
  if (entry == nullptr || ChainPolicy<List>::store_key(list, *entry, key)) return entry;
  pool::give(list.entry_pool, entry);
  return nullptr;
}

template <class List>
void link_new(List &list, Gap<EntryOf<List>> gap, EntryOf<List> &entry, uint64_t value) {
  entry.value = value;
  link(list, gap, entry);
  ++list.count;
}

template <class List>
EntryOf<List> *add(List &list, Gap<EntryOf<List>> gap, KeyOf<List> key, uint64_t value) {
  EntryOf<List> *entry = take_entry_with(list, key);
  if (entry != nullptr) link_new(list, gap, *entry, value);
  return entry;
}

// The entry is added even when there is no block for it. The initialiser finds the list as it was, but for
// the key bytes.
template <class List>
uint64_t add_new(List &list, End end, KeyOf<List> key, mub_init_fn init) {
  EntryOf<List> *entry = take_entry_with(list, key);
  if (entry == nullptr) return 0;
  const uint64_t value = take_value(list.value_pool, init);
  link_new(list, gap_at(list, end), *entry, value);
  return value;
}

// Takes a linked entry, of whose key nothing is left, off the list.
template <class List>
void drop(List &list, EntryOf<List> &entry) {
  unlink(list, entry);
  --list.count;
  pool::give(list.entry_pool, &entry);
}

// Undoes the latest additions at an end, down to `count` entries.
template <class List>
void retract(List &list, End end, int64_t count) {
  while (list.count > count) {
    EntryOf<List> &latest = *entry_at(list, end);
    ChainPolicy<List>::retract_key(list, latest);
    drop(list, latest);
  }
}

// Adds copies of another list's entries, in their order; all or none. The list may be its own source, whose
// entries are then those that it has at the start.
template <class List>
void add_list(List &list, const List &source, End end) {
  const int64_t old_count = list.count;
  const int64_t added = source.count;
  const End start = opposite(end);
  const EntryOf<List> *entry = entry_at(source, start);
  for (int64_t i = 0; entry != nullptr && i < added; ++i) {
    const auto key = ChainPolicy<List>::key_of(source, *entry);
    if (add(list, gap_at(list, end), key, entry->value) == nullptr) return retract(list, end, old_count);
    entry = next_from(*entry, start);
  }
}

// ---- reading and removing

template <class Entry>
uint64_t value_or_0(const Entry *entry) {
  return entry != nullptr ? entry->value : 0;
}

// The entry at a position, which moves on; nullptr stays.
template <class Entry>
Entry *step(Entry *&position, End start) {
  Entry *entry = position;
  if (entry != nullptr) position = next_from(*entry, start);
  return entry;
}

template <class List>
uint64_t remove(List &list, EntryOf<List> *entry) {
  if (entry == nullptr) return 0;
  const uint64_t value = entry->value;
  ChainPolicy<List>::erase_key(list, *entry);
  drop(list, *entry);
  return value;
}

// Unlike those at the ends, a removal at a position clears the value in the block.
template <class List>
uint64_t remove_at(List &list, EntryOf<List> *position) {
  if (position == nullptr || list.head == nullptr) return 0;
  const uint64_t value = position->value;
  position->value = 0;
  remove(list, position);
  return value;
}

// ---- the whole list

template <class List>
void init(List &list, int own_entry_pool, int own_value_pool) {
  list = {};
  if (own_entry_pool != 0) entry_pool_of(list).make(sizeof(EntryOf<List>));
  if (own_value_pool != 0) value_pool_of(list).make(0);
}

template <class List>
void forget_entries(List &list) {
  list.head = nullptr;
  list.tail = nullptr;
  list.count = 0;
}

template <class List>
void return_entries(List &list) {
  for_each(list, [&](EntryOf<List> &entry) { pool::give(list.entry_pool, &entry); });
}

template <class List>
void return_entries_to_caller(List &list) {
  if (list.owns_entry_pool == 0) return_entries(list);
}

template <class List>
void term(List &list) {
  return_entries_to_caller(list);
  ChainPolicy<List>::term_keys(list);
  destroy_pools(list);
  forget_entries(list);
}

// The blocks of an owned value pool stay.
template <class List>
void remove_all(List &list) {
  return_entries_to_caller(list);
  ChainPolicy<List>::clear_keys(list);
  entry_pool_of(list).empty();
  forget_entries(list);
}

// They go too.
template <class List>
void remove_all_with_values(List &list) {
  remove_all(list);
  empty_pools(list);
}

template <class List>
void free_all_entry(List &list, mub_free_fn release_it) {
  for_each(list, [&](EntryOf<List> &entry) {
    ChainPolicy<List>::release_values(list, entry, release_it);
    if (list.owns_entry_pool == 0) pool::give(list.entry_pool, &entry);
  });
}

template <class List>
void free_all(List &list, mub_free_fn release_it) {
  if (frees_one_by_one(list, release_it)) free_all_entry(list, release_it);
  ChainPolicy<List>::term_keys(list);
  empty_pools(list);
  forget_entries(list);
}

// ---- copies

// In an owned pool, an entry that is no block of the pool has no copy, and is left out.
template <class List>
bool copy_entries(const List &source, List &copy, BlockCopies &entries) {
  for (const EntryOf<List> *entry = source.head; entry != nullptr; entry = entry->next) {
    EntryOf<List> *copied = entries.copy_of(*entry);
    if (copied != nullptr) {
      link(copy, gap_at(copy, End::kTail), *copied);
    } else if (!entries.is_whole()) {
      return false;
    }
  }
  copy.count = source.count;
  return true;
}

// False when memory runs out; what is in the copy then is for the caller to remove.
template <class List>
bool copy_content(const List &source, List &copy, CloneCallback &callback) {
  share_callers_pools(source, copy, callback);
  PoolCopies pools;
  if (!ChainPolicy<List>::clone_keys(source, copy) || !pools.clone(source, copy, callback)) return false;
  if (!copy_entries(source, copy, pools.entries)) return false;
  if (source.owns_value_pool == 0) return true;
  // Only when nothing can fail any more, so that the callback sees all entries or none.
  for_each(copy, [&](EntryOf<List> &entry) {
    const uint64_t source_value = entry.value;
    entry.value = pools.values.translate(source_value);
    callback.notify(source_value, entry.value);
  });
  return true;
}

template <class List>
void clone(const List &source, List &copy, CloneCallback callback) {
  if (&source == &copy) return;
  remove_all_with_values(copy);
  if (!copy_content(source, copy, callback)) remove_all_with_values(copy);
}

}  // namespace chain
}  // namespace mub

#endif
