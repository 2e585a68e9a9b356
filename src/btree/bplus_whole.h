// Whole B-trees: initialising, emptying, terminating and swapping them. Part of the engine in bplus_tree.h,
// where its invariants and policy are.
#ifndef MUB_BTREE_BPLUS_WHOLE_H
#define MUB_BTREE_BPLUS_WHOLE_H

#include <cstring>
#include <utility>

#include "btree/bplus_tree.h"
#include "containers/container_pools.h"

namespace mub::bplus {

template <class Kind>
void init(TreeOf<Kind> &tree, bool own_entry_pool, bool own_node_pool, bool own_value_pool) {
  std::memset(&tree, 0, sizeof tree);  // clears the padding, too: new records compare equal with memcmp
  entry_init(tree.root);
  if (own_entry_pool) entry_pool_of(tree).make(sizeof(EntryOf<Kind>));
  if (own_node_pool) node_pool_of(tree).make(sizeof(RecordOf<Kind>));
  if (own_value_pool) value_pool_of(tree).make(0);
  tree.root.children.pool = tree.node_pool;
  Kind::init_keys(tree);
}

// ---- emptying

enum class Blocks { kStayInOwnedPools, kGoBack };

// Releases the tables of children of `top` and of all entries below it, after calling `part_with` with every
// record. Records and entries below `top` are returned to caller's pools. Those in owned pools stay until
// these are emptied, unless Blocks::kGoBack asks to return them, too.
template <class Kind, class PartWith>
void empty_from(TreeOf<Kind> &tree, EntryOf<Kind> &top, PartWith part_with,
                Blocks blocks = Blocks::kStayInOwnedPools) {
  const bool gives_records = tree.owns_node_pool == 0 || blocks == Blocks::kGoBack;
  const bool gives_entries = tree.owns_entry_pool == 0 || blocks == Blocks::kGoBack;
  const auto give_records = [&](const EntryOf<Kind> &leaf) {
    for (int64_t i = 0; i < leaf.children.count; ++i) {
      RecordOf<Kind> *record = record_at<Kind>(leaf, i);
      part_with(*record);
      if (gives_records) pool::give(tree.node_pool, record);
    }
  };
  for_each_from_below(top, [&](EntryOf<Kind> &entry) {
    if (entry.level < 1) give_records(entry);
    slots::release_table(entry.children);
    if (&entry != &top && gives_entries) pool::give(tree.entry_pool, &entry);
  });
}

// Whether the tree owns its entry pool, and every block ever taken from it is now an entry of the tree.
template <class Kind>
bool entries_fill_pool(const TreeOf<Kind> &tree) {
  if (tree.owns_entry_pool == 0) return false;
  int64_t entries = 0;
  for (const EntryOf<Kind> *entry = &tree.root; entry != nullptr && entry->level > 0;
       entry = next_from_above(*entry, tree.root, false)) {
    entries += entry->children.count;
  }
  return holds_only<EntryOf<Kind>>(entry_pool_of(tree), entries) &&
         pool::blocks_ever_taken(*tree.entry_pool) == entries;
}

// Releases tables in the order of their entries in memory. Following the tree would miss the cache for each.
template <class Kind>
void release_tables(TreeOf<Kind> &tree) {
  pool::for_each_block<EntryOf<Kind>>(*tree.entry_pool,
                                      [](EntryOf<Kind> &entry) { slots::release_table(entry.children); });
  slots::release_table(tree.root.children);
}

template <class Kind>
void remove_all_entry(TreeOf<Kind> &tree, EntryOf<Kind> &top) {
  empty_from<Kind>(tree, top, [](const RecordOf<Kind> &) {});
}

template <class Kind>
void free_all_entry(TreeOf<Kind> &tree, EntryOf<Kind> &top, mub_free_fn release_it) {
  empty_from<Kind>(tree, top, [&](const RecordOf<Kind> &record) {
    release_value(value_pool_of(tree), record.value, release_it);
  });
}

template <class Kind>
void reset(TreeOf<Kind> &tree) {
  Kind::reset_key(tree.root);
  tree.root.level = 0;
  tree.root.parent = nullptr;
  tree.root.children.pool = tree.node_pool;
  tree.count = 0;
}

// Empties the tree without visiting values.
template <class Kind>
void remove_all_below_root(TreeOf<Kind> &tree) {
  if (tree.owns_node_pool != 0 && entries_fill_pool<Kind>(tree)) {
    release_tables<Kind>(tree);
  } else {
    remove_all_entry<Kind>(tree, tree.root);
  }
}

template <class Kind>
void remove_all(TreeOf<Kind> &tree) {
  remove_all_below_root<Kind>(tree);
  Kind::clear_keys(tree);
  empty_pools(tree);
  reset<Kind>(tree);
}

template <class Kind>
void free_all(TreeOf<Kind> &tree, mub_free_fn release_it) {
  if (release_it != nullptr || value_pool_of(tree).is_callers()) {
    free_all_entry<Kind>(tree, tree.root, release_it);
  } else {
    remove_all_below_root<Kind>(tree);
  }
  Kind::term_keys(tree);
  empty_pools(tree);
  reset<Kind>(tree);
}

template <class Kind>
void term(TreeOf<Kind> &tree) {
  remove_all_below_root<Kind>(tree);
  Kind::term_keys(tree);
  destroy_pools(tree);
  reset<Kind>(tree);
}

// ---- swapping

template <class Kind>
void swap_roots(EntryOf<Kind> &a, EntryOf<Kind> &b) {
  slots::swap(a.children, b.children);
  EntryOf<Kind> key_of_a = {};
  Kind::copy_key(key_of_a, a);
  Kind::copy_key(a, b);
  Kind::copy_key(b, key_of_a);
  std::swap(a.level, b.level);
  set_parent(a);
  set_parent(b);
}

template <class Kind>
void swap(TreeOf<Kind> &a, TreeOf<Kind> &b) {
  swap_roots<Kind>(a.root, b.root);
  Kind::swap_keys(a, b);
  std::swap(a.count, b.count);
  swap_pools(a, b);
  set_pool(a, a.root);
  set_pool(b, b.root);
}

}  // namespace mub::bplus

#endif
