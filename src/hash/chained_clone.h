// Cloning a hash table. With owned pools the blocks are copied chunk by chunk, and each stored address is translated
// to its twin; entries of a caller's pool are copied one by one into fresh blocks of it.
#ifndef MUB_HASH_CHAINED_CLONE_H
#define MUB_HASH_CHAINED_CLONE_H

#include "core/pool_twin.h"
#include "hash/chained_table.h"

namespace mub::chained {

template <class Kind>
class Cloning {
 public:
  using Table = TableOf<Kind>;
  using Entry = EntryOf<Kind>;

  Cloning(const Table &source, Table &copy, UserPools &user) : source_(source), copy_(copy), user_(user) {}

  // False when memory runs out; what is in the copy then is for the caller to remove.
  bool run() {
    share_callers_pools();
    if (!Kind::clone_keys(source_, copy_) || !pools_.clone(source_, copy_, user_)) return false;
    if (!slots::expand(copy_.buckets, source_.buckets.capacity)) return false;
    copy_.buckets.count = source_.buckets.count;
    if (pools_.clones_entries()) {
      translate_links();
    } else if (!copy_entries()) {
      return false;
    }
    copy_.count = source_.count;
    if (source_.owns_value_pool != 0) translate_values();
    return true;
  }

 private:
  void share_callers_pools() {
    if (source_.owns_entry_pool == 0) {
      user_.share(source_.entry_pool, copy_.entry_pool, copy_.owns_entry_pool);
      copy_.buckets.pool = source_.entry_pool;
    }
    if (source_.owns_value_pool == 0) {
      user_.share(source_.value_pool, copy_.value_pool, copy_.owns_value_pool);
    }
  }

  // The copied blocks still hold the source's addresses. A pass over the chunks meets them in the order of memory,
  // but blocks in them that are not the table's must stay as they are.
  void translate_links() {
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      copy_.buckets.items[bucket] = pools_.entry_word(source_.buckets.items[bucket]);
    }
    const auto translate_next = [&](Entry &entry) { entry.next = pools_.entry(entry.next); };
    if (fills_its_pool<Kind>(source_, 0)) {
      pool::for_each_block<Entry>(*copy_.entry_pool, translate_next);
      return;
    }
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      for (Entry *entry = head<Kind>(copy_, bucket); entry != nullptr; entry = entry->next)
        translate_next(*entry);
    }
  }

  bool copy_entries() {
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      Entry *last = nullptr;
      for (const Entry *entry = head<Kind>(source_, bucket); entry != nullptr; entry = entry->next) {
        Entry *copy = link_new<Kind>(copy_, bucket, last);
        if (copy == nullptr) return false;
        *copy = *entry;
        copy->next = nullptr;
        last = copy;
      }
    }
    return true;
  }

  void translate_values() {
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      const Entry *entry = head<Kind>(source_, bucket);
      for (Entry *copy = head<Kind>(copy_, bucket); copy != nullptr; copy = copy->next, entry = entry->next) {
        copy->value = pools_.value(entry->value);
        user_.mend(entry->value, copy->value);
      }
    }
  }

  const Table &source_;
  Table &copy_;
  UserPools &user_;
  PoolTwins pools_;
};

template <class Kind>
TableOf<Kind> *clone(const TableOf<Kind> &source, TableOf<Kind> &copy, UserPools user) {
  if (&source == &copy) return &copy;
  remove_all<Kind>(copy);
  if (!Cloning<Kind>(source, copy, user).run()) remove_all<Kind>(copy);
  return &copy;
}

}  // namespace mub::chained

#endif
