// Cloning a hash table. If source and copy own their entry pools, blocks are copied chunk by chunk and the
// addresses in them translated; otherwise entries are copied individually to new blocks of the copy's pool.
// Buckets and the order of the chains are those of the source. Invariants and policy: see hash_table.h.
// Threads: the source is only read, but blocks are taken from its external entry pool, if it has one.
#ifndef MUB_HASH_HASH_TABLE_CLONE_H
#define MUB_HASH_HASH_TABLE_CLONE_H

#include "containers/pool_clone.h"
#include "hash/hash_table.h"

namespace mub::hash_table {

template <class Table>
class Cloning {
 public:
  using Entry = EntryOf<Table>;

  Cloning(const Table &source, Table &copy, UserPoolClone &user_pool)
      : source_(source), copy_(copy), user_pool_(user_pool) {}

  // False if memory runs out; the caller then empties the copy.
  bool run() {
    share_external_pools(source_, copy_, user_pool_);
    if (source_.owns_entry_pool == 0) copy_.buckets.pool = source_.entry_pool;
    if (!Policy<Table>::clone_keys(source_, copy_) || !copiers_.clone(source_, copy_, user_pool_))
      return false;
    if (!slots::expand(copy_.buckets, source_.buckets.capacity)) return false;
    copy_.buckets.count = source_.buckets.count;
    if (copiers_.entry_pool.is_whole()) {
      translate_links();
    } else if (!copy_entries()) {
      return false;
    }
    copy_.count = source_.count;
    if (source_.owns_value_pool != 0) translate_values();
    return true;
  }

 private:
  // Copied blocks still hold addresses of the source. A pass over the chunks, in the order of memory, is
  // faster than one along the chains, but only allowed if all blocks belong to the table.
  void translate_links() {
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      copy_.buckets.items[bucket] = copiers_.entry_pool.translate(source_.buckets.items[bucket]);
    }
    const auto translate_next = [&](Entry &entry) {
      entry.next = pointer_of<Entry>(copiers_.entry_pool.translate(word_of(entry.next)));
    };
    if (pool_has_only_entries(source_, 0)) {
      pool::for_each_block<Entry>(*copy_.entry_pool, translate_next);
      return;
    }
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      for (Entry *entry = head(copy_, bucket); entry != nullptr; entry = entry->next) translate_next(*entry);
    }
  }

  bool copy_entries() {
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      Entry *last = nullptr;
      for (const Entry *entry = head(source_, bucket); entry != nullptr; entry = entry->next) {
        Entry *copy = copiers_.entry_pool.copy_of(*entry);
        if (copy == nullptr) return false;
        copy->next = nullptr;
        link(copy_, bucket, last, copy);
        last = copy;
      }
    }
    return true;
  }

  void translate_values() {
    for (int64_t bucket = 0; bucket < source_.buckets.count; ++bucket) {
      const Entry *entry = head(source_, bucket);
      for (Entry *copy = head(copy_, bucket); copy != nullptr; copy = copy->next, entry = entry->next) {
        copy->value = copiers_.value_pool.translate(entry->value);
        user_pool_.notify(entry->value, copy->value);
      }
    }
  }

  const Table &source_;
  Table &copy_;
  UserPoolClone &user_pool_;
  ContainerBlockCopiers copiers_;
};

template <class Table>
Table *clone(const Table &source, Table &copy, UserPoolClone user_pool) {
  if (&source == &copy) return &copy;
  remove_all(copy);
  if (!Cloning(source, copy, user_pool).run()) remove_all(copy);
  return &copy;
}

}  // namespace mub::hash_table

#endif
