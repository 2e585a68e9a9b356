// The engine of the lists: doubly linked lists of entries, which are blocks of a pool and never move. An
// entry has one value, except in mub_listx, where it has up to 32; listx.cpp adds and removes its values
// itself.
//
//   list   head ──► entry ◄──► entry ◄──► entry ◄── tail
//
// Invariants:
//   1. Either both `head` and `tail` are null, or neither is. From `head`, `next` leads to `tail` and then to
//      null.
//   2. `prev` is the inverse of `next`; that of the head is null.
//   3. `count` is the number of entries; in mub_listx, the sum of the counts of the blocks, 1 to 32 each.
//   4. The entries are live blocks of the entry pool.
//   5. With byte-string keys, the keys of the entries fill the key stream without gaps, and do not overlap.
// They hold until a caller links entries of its own, such as those of entry_new, or uses the low layer:
// remove_all_entry and free_all_entry return entries that are still linked, and adjust_t moves offsets alone.
// mub_listx allows for blocks that the caller has linked with any count.
//
// Threads: functions write nothing to a list that they take as const, so readers may run in parallel. The
// exceptions are for_each(), whose `visit` may write to the entries, add_list() of a list to itself, and
// clone(), which takes entries from the source's pool if that is external.
//
// The policy provides what containers/key_store.h lists, apart from reset_key, swap_keys and prefetch_key;
// and in addition
//   Entry                                     the struct of an entry
//   values_in(entry), kMaxValues              the number of values in an entry, and its upper limit
//   retract_key(list, entry)                  removes the key that was stored last; used to undo additions
//   release_values(list, entry, release_it)   releases the values of an entry
#ifndef MUB_LIST_LINKED_LIST_H
#define MUB_LIST_LINKED_LIST_H

#include <cstdint>
#include <type_traits>

#include "containers/container_pools.h"
#include "containers/key_store.h"
#include "containers/memory.h"
#include "containers/policy.h"
#include "containers/pool_clone.h"
#include "mub_list.h"
#include "pool/pool.h"

namespace mub {

// The base of the policies: entries with one value, and with keys as the policy Keys has them.
template <class List, class Keys>
struct ListEntries : Keys {
  using Entry = std::remove_pointer_t<decltype(List::head)>;

  static constexpr int64_t kMaxValues = 1;

  static int64_t values_in(const Entry &) { return 1; }
  static void retract_key(List &, const Entry &) {}
  static void release_values(List &list, const Entry &entry, mub_free_fn release_it) {
    release_value(value_pool_of(list), entry.value, release_it);
  }
};

namespace linked_list {

// ---- positions

enum class End { kHead, kTail };

constexpr End opposite(End end) { return end == End::kHead ? End::kTail : End::kHead; }

template <class List>
EntryOf<List> *entry_at(const List &list, End end) {
  return end == End::kHead ? list.head : list.tail;
}

// The next entry of a walk that began at `start`.
template <class Entry>
Entry *next_from(const Entry &entry, End start) {
  return start == End::kHead ? entry.next : entry.prev;
}

// A place for a new entry: between two neighbours, either of which may be null.
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

// The gap before a null position is at the head, the gap after it at the tail.
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

// Calls `visit` with every entry. `visit` may return the entry to its pool.
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

// Returns a new entry with its key, not yet linked; nullptr if there is no block or no room for the key.
template <class List>
EntryOf<List> *take_entry_with(List &list, KeyOf<List> key) {
  EntryOf<List> *entry = take_entry(list);
  if (entry == nullptr || Policy<List>::store_key(list, *entry, key)) return entry;
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

// Adds an entry with a new block of the value pool, and returns the block; without one, the value is 0.
// `init` runs before the entry is linked, but after its key was stored.
template <class List>
uint64_t add_new(List &list, End end, KeyOf<List> key, mub_init_fn init) {
  EntryOf<List> *entry = take_entry_with(list, key);
  if (entry == nullptr) return 0;
  const uint64_t value = take_value(list.value_pool, init);
  link_new(list, gap_at(list, end), *entry, value);
  return value;
}

// Unlinks an entry whose key was already removed, and gives its block back to the entry pool.
template <class List>
void drop(List &list, EntryOf<List> &entry) {
  unlink(list, entry);
  --list.count;
  pool::give(list.entry_pool, &entry);
}

// Undoes the last additions at an end until `count` entries are left.
template <class List>
void retract(List &list, End end, int64_t count) {
  while (list.count > count) {
    EntryOf<List> &latest = *entry_at(list, end);
    Policy<List>::retract_key(list, latest);
    drop(list, latest);
  }
}

// Adds copies of the entries of another list, in their order: all of them, or none if memory runs out.
// `source` may be `list` itself: the entries that it has at the start are added.
template <class List>
void add_list(List &list, const List &source, End end) {
  const int64_t old_count = list.count;
  const int64_t added = source.count;
  const End start = opposite(end);
  const EntryOf<List> *entry = entry_at(source, start);
  for (int64_t i = 0; entry != nullptr && i < added; ++i) {
    const auto key = Policy<List>::key_of(source, *entry);
    if (add(list, gap_at(list, end), key, entry->value) == nullptr) return retract(list, end, old_count);
    entry = next_from(*entry, start);
  }
}

// ---- reading and removing

template <class Entry>
uint64_t value_or_0(const Entry *entry) {
  return entry != nullptr ? entry->value : 0;
}

// Returns the entry at a position, and moves the position to the next one. A null position stays.
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
  Policy<List>::erase_key(list, *entry);
  drop(list, *entry);
  return value;
}

// Also clears the value in the block, which remove() leaves as it is.
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
void init(List &list, int with_entry_pool, int with_value_pool) {
  list = {};
  if (with_entry_pool != 0) entry_pool_of(list).make(sizeof(EntryOf<List>));
  if (with_value_pool != 0) value_pool_of(list).make(0);
}

template <class List>
void reset(List &list) {
  list.head = nullptr;
  list.tail = nullptr;
  list.count = 0;
}

template <class List>
void return_entries(List &list) {
  for_each(list, [&](EntryOf<List> &entry) { pool::give(list.entry_pool, &entry); });
}

template <class List>
void return_to_external_pool(List &list) {
  if (list.owns_entry_pool == 0) return_entries(list);
}

template <class List>
void term(List &list) {
  return_to_external_pool(list);
  Policy<List>::term_keys(list);
  destroy_pools(list);
  reset(list);
}

// Does not empty an owned value pool.
template <class List>
void remove_all(List &list) {
  return_to_external_pool(list);
  Policy<List>::clear_keys(list);
  entry_pool_of(list).make_empty();
  reset(list);
}

// Empties an owned value pool, too.
template <class List>
void remove_all_with_values(List &list) {
  remove_all(list);
  empty_pools(list);
}

template <class List>
void free_all_entry(List &list, mub_free_fn release_it) {
  for_each(list, [&](EntryOf<List> &entry) {
    Policy<List>::release_values(list, entry, release_it);
    if (list.owns_entry_pool == 0) pool::give(list.entry_pool, &entry);
  });
}

template <class List>
void free_all(List &list, mub_free_fn release_it) {
  if (must_visit_entries(list, release_it)) free_all_entry(list, release_it);
  Policy<List>::term_keys(list);
  empty_pools(list);
  reset(list);
}

template <class List>
int64_t memory_bytes(const List &list) {
  return pools_and_keys_bytes(list);
}

// ---- copies

// If the entry pool was copied as a whole, entries that are not blocks of it have no copy: they are omitted,
// but `count` includes them.
template <class List>
bool copy_entries(const List &source, List &copy, BlockCopier &entries) {
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

// False if memory runs out; the caller then empties the copy.
template <class List>
bool copy_content(const List &source, List &copy, UserPoolClone &user_pool) {
  share_external_pools(source, copy, user_pool);
  ContainerBlockCopiers copiers;
  if (!Policy<List>::clone_keys(source, copy) || !copiers.clone(source, copy, user_pool)) return false;
  if (!copy_entries(source, copy, copiers.entry_pool)) return false;
  if (source.owns_value_pool == 0) return true;
  // Last, when nothing can fail: the callback is called for all entries or for none.
  for_each(copy, [&](EntryOf<List> &entry) {
    const uint64_t source_value = entry.value;
    entry.value = copiers.value_pool.translate(source_value);
    user_pool.notify(source_value, entry.value);
  });
  return true;
}

template <class List>
void clone(const List &source, List &copy, UserPoolClone user_pool) {
  if (&source == &copy) return;
  remove_all_with_values(copy);
  if (!copy_content(source, copy, user_pool)) remove_all_with_values(copy);
}

}  // namespace linked_list
}  // namespace mub

#endif
