// Cloning a B-tree. With owned pools the blocks are copied chunk by chunk and each address is translated to its twin;
// what lies in a caller's pool is copied block by block into fresh ones. Tables of children are always made anew.
#ifndef MUB_BTREE_BPLUS_CLONE_H
#define MUB_BTREE_BPLUS_CLONE_H

#include "btree/bplus_whole.h"
#include "core/pool_twin.h"

namespace mub::bplus {

// The blocks of one pool and their copies.
class BlockCopies {
 public:
  // Copies the pool as a whole when both sides own theirs; false when memory runs out.
  bool prepare(const mub_pool *source, uint16_t source_owned, mub_pool *copy, uint16_t copy_owned) {
    pool_ = copy;
    has_twins_ = source_owned != 0 && copy_owned != 0;
    return !has_twins_ || twin_.clone(*source, *copy);
  }
  // Takes a fresh block for every copy.
  void take_from(mub_pool *pool) { pool_ = pool; }

  // The copy of a block; nullptr when memory runs out, and for a block that is not of the pool.
  template <class Block>
  Block *copy_of(const Block &block) {
    if (has_twins_) return record_of<Block>(twin_.translate(word_of(&block)));
    auto *copy = static_cast<Block *>(pool::take(pool_));
    if (copy != nullptr) *copy = block;
    return copy;
  }
  uint64_t translate(uint64_t word) { return twin_.translate(word); }
  bool has_twins() const { return has_twins_; }

 private:
  mub_pool *pool_ = nullptr;
  bool has_twins_ = false;
  PoolTwin twin_;
};

template <class Kind>
class Cloning {
 public:
  using Tree = TreeOf<Kind>;
  using Entry = EntryOf<Kind>;
  using Record = RecordOf<Kind>;

  Cloning(const Tree &source, Tree &copy) : source_(source), copy_(copy) {}

  // False when memory runs out; what is in the copy then is for the caller to remove.
  bool run(UserPools &user) {
    share_callers_pools(user);
    if (!Kind::clone_keys(source_, copy_) || !clone_pools(user)) return false;
    if (!slots::expand(copy_.root.children, kOrder)) return false;  // as an initialised root has
    if (!copy_below(source_.root, copy_.root)) return false;
    copy_.count = source_.count;
    if (source_.owns_value_pool != 0) translate_values(user);
    return true;
  }

  bool run_in_fresh_blocks(const Entry &from, Entry &to) {
    entries_.take_from(copy_.entry_pool);
    records_.take_from(copy_.node_pool);
    return copy_below(from, to);
  }

 private:
  void share_callers_pools(UserPools &user) {
    if (source_.owns_entry_pool == 0) {
      user.share(source_.entry_pool, copy_.entry_pool, copy_.owns_entry_pool);
    }
    if (source_.owns_node_pool == 0) user.share(source_.node_pool, copy_.node_pool, copy_.owns_node_pool);
    if (source_.owns_value_pool == 0) {
      user.share(source_.value_pool, copy_.value_pool, copy_.owns_value_pool);
    }
  }

  bool clone_pools(UserPools &user) {
    const bool cloned =
        entries_.prepare(source_.entry_pool, source_.owns_entry_pool, copy_.entry_pool,
                         copy_.owns_entry_pool) &&
        records_.prepare(source_.node_pool, source_.owns_node_pool, copy_.node_pool, copy_.owns_node_pool) &&
        values_.prepare(source_.value_pool, source_.owns_value_pool, copy_.value_pool, copy_.owns_value_pool);
    const bool is_filled = (entries_.has_twins() && user.fill(copy_.entry_pool)) ||
                           (records_.has_twins() && user.fill(copy_.node_pool)) ||
                           (values_.has_twins() && user.fill(copy_.value_pool));
    return cloned && user.clone_beside(is_filled);
  }

  // Walks both trees side by side, parents first.
  bool copy_below(const Entry &source_top, Entry &copy_top) {
    const Entry *from = &source_top;
    Entry *to = &copy_top;
    copy_top.level = source_top.level;
    Kind::copy_key(copy_top, source_top);
    while (from != nullptr) {
      if (!copy_children(*from, *to)) return false;
      from = next_from_above(*from, source_top, true);
      to = next_from_above(*to, copy_top, true);
    }
    return true;
  }

  // The count grows child by child: at any time the copy is a tree that can be emptied.
  bool copy_children(const Entry &from, Entry &to) {
    to.children.pool = children_pool(copy_, to.level);
    if (!slots::expand(to.children, from.children.capacity)) return false;
    for (int64_t i = 0; i < from.children.count; ++i) {
      const bool copied = from.level > 0 ? copy_entry(*entry_at(from, i), to)
                                         : append_copy(records_.copy_of(*record_at<Kind>(from, i)), to);
      if (!copied) return false;
    }
    return true;
  }

  bool copy_entry(const Entry &from, Entry &parent) {
    Entry *entry = entries_.copy_of(from);
    if (entry == nullptr) return false;
    entry->parent = &parent;
    entry->children = {};  // it still had the table of the source
    return append_copy(entry, parent);
  }

  template <class Child>
  static bool append_copy(const Child *copy, Entry &parent) {
    if (copy == nullptr) return false;
    append_child(parent.children, copy);
    return true;
  }

  void translate_values(const UserPools &user) {
    const Entry *to = first_leaf(copy_.root);
    for (const Entry *from = first_leaf(source_.root); from != nullptr; from = neighbour<1>(*from)) {
      for (int64_t i = 0; i < from->children.count; ++i) {
        const uint64_t value = record_at<Kind>(*from, i)->value;
        Record *record = record_at<Kind>(*to, i);
        record->value = values_.translate(value);
        user.mend(value, record->value);
      }
      to = neighbour<1>(*to);
    }
  }

  const Tree &source_;
  Tree &copy_;
  BlockCopies entries_;
  BlockCopies records_;
  BlockCopies values_;
};

template <class Kind>
int64_t clone(const TreeOf<Kind> &source, TreeOf<Kind> &copy, UserPools user) {
  if (&source == &copy) return source.count;
  remove_all<Kind>(copy);
  if (!Cloning<Kind>(source, copy).run(user)) remove_all<Kind>(copy);
  return copy.count;
}

template <class Kind>
bool clone_entry(const TreeOf<Kind> &source, const EntryOf<Kind> &from, TreeOf<Kind> &copy,
                 EntryOf<Kind> &to) {
  if (Cloning<Kind>(source, copy).run_in_fresh_blocks(from, to)) return true;
  empty_from<Kind>(
      copy, to, [](const RecordOf<Kind> &) {}, Blocks::kGoBack);
  Kind::forget_key(to);
  to.level = 0;
  return false;
}

}  // namespace mub::bplus

#endif
