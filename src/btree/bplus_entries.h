// The entries of a B-tree: making them, giving them the key of their last child as their name, and splitting
// them. Part of the engine in bplus_tree.h, where its invariants and policy are.
#ifndef MUB_BTREE_BPLUS_ENTRIES_H
#define MUB_BTREE_BPLUS_ENTRIES_H

#include <algorithm>
#include <cstdint>

#include "arrays/slot_table.h"
#include "btree/node_search.h"
#include "btree/tree_walk.h"
#include "mub_btree.h"
#include "pool/pool.h"

namespace mub::bplus {

// The number of children at which an entry splits. Part of the interface: callers can see the splits.
constexpr int64_t kOrder = 32;

template <class Kind>
using TreeOf = typename Kind::Tree;
template <class Kind>
using EntryOf = typename Kind::Entry;
template <class Kind>
using RecordOf = typename Kind::Record;
template <class Kind>
using KeyOf = typename Kind::Key;
template <class Kind>
using CursorOf = typename Kind::Cursor;

template <class Kind>
RecordOf<Kind> *record_at(const EntryOf<Kind> &leaf, int64_t index) {
  return child_at<RecordOf<Kind>>(leaf.children, index);
}

// The table of children must have room for one more.
template <class Child>
void insert_child(mub_arrays &children, int64_t index, const Child *child) {
  uint64_t *slot = children.items + index;
  buffer::move_units(slot + 1, slot, children.count - index);
  *slot = word_of(child);
  ++children.count;
}

template <class Child>
void append_child(mub_arrays &children, const Child *child) {
  insert_child(children, children.count, child);
}

// ---- entries

// Makes a block an empty leaf; false, and no table of children, if memory runs out.
template <class Entry>
bool entry_init(Entry &entry) {
  entry = {};
  return slots::expand(entry.children, kOrder);
}

template <class Kind>
void return_entry(TreeOf<Kind> &tree, EntryOf<Kind> &entry) {
  Kind::reset_key(entry);
  slots::release_table(entry.children);
  pool::give(tree.entry_pool, &entry);
}

template <class Tree>
mub_pool *children_pool(const Tree &tree, int level) {
  return level < 1 ? tree.node_pool : tree.entry_pool;
}

template <class Kind>
EntryOf<Kind> *entry_new(TreeOf<Kind> &tree, int level) {
  auto *entry = static_cast<EntryOf<Kind> *>(pool::take(tree.entry_pool));
  if (entry == nullptr) return nullptr;
  if (!entry_init(*entry)) {
    pool::give(tree.entry_pool, entry);
    return nullptr;
  }
  entry->children.pool = children_pool(tree, level);
  return entry;
}

template <class Entry>
void set_parent(Entry &entry) {
  if (entry.level < 1) return;
  for (int64_t i = 0; i < entry.children.count; ++i) entry_at(entry, i)->parent = &entry;
}

template <class Tree, class Entry>
void set_pool(const Tree &tree, Entry &top) {
  top.children.pool = children_pool(tree, top.level);
  Entry *entry = &top;
  while ((entry = next_from_above(*entry, top, false)) != nullptr) entry->children.pool = tree.entry_pool;
}

// ---- names: the name of an entry is the key of its last child

// Calls `use` with the last child, if there is one.
template <class Kind, class Use>
void with_last_child(const EntryOf<Kind> &entry, Use use) {
  const int64_t last = entry.children.count - 1;
  if (last < 0) return;
  if (entry.level > 0) {
    use(*entry_at(entry, last));
  } else {
    use(*record_at<Kind>(entry, last));
  }
}

template <class Kind>
void copy_name(EntryOf<Kind> &entry) {
  with_last_child<Kind>(entry, [&](const auto &child) { Kind::copy_key(entry, child); });
}

template <class Kind>
void set_name(const TreeOf<Kind> &tree, EntryOf<Kind> &from) {
  EntryOf<Kind> *entry = &from;
  while (entry != nullptr) {
    EntryOf<Kind> *above = nullptr;
    with_last_child<Kind>(*entry, [&](const auto &child) {
      if (Kind::has_name(tree, *entry, child)) return;
      Kind::copy_key(*entry, child);
      above = entry->parent;
    });
    entry = above;
  }
}

// ---- splitting

// Returns a new entry with the level and parent of another one, and room for the upper half of its children;
// nullptr if memory runs out.
template <class Kind>
EntryOf<Kind> *sibling_new(TreeOf<Kind> &tree, const EntryOf<Kind> &entry) {
  EntryOf<Kind> *upper = entry_new<Kind>(tree, entry.level);
  if (upper == nullptr) return nullptr;
  if (!slots::expand(upper->children, (entry.children.count + 1) / 2)) {
    return_entry<Kind>(tree, *upper);
    return nullptr;
  }
  upper->level = entry.level;
  upper->parent = entry.parent;
  return upper;
}

template <class Kind>
void move_upper_half(EntryOf<Kind> &entry, EntryOf<Kind> &upper) {
  const int64_t kept = entry.children.count / 2;
  upper.children.count = entry.children.count - kept;
  entry.children.count = kept;
  buffer::move_units(upper.children.items, entry.children.items + kept, upper.children.count);
  set_parent(upper);
  copy_name<Kind>(entry);
  copy_name<Kind>(upper);
}

template <class Kind>
EntryOf<Kind> *split_off(TreeOf<Kind> &tree, EntryOf<Kind> &entry) {
  EntryOf<Kind> *upper = sibling_new<Kind>(tree, entry);
  if (upper != nullptr) move_upper_half<Kind>(entry, *upper);
  return upper;
}

// The root cannot move, as it is part of the record: its table of children moves to a new entry below it.
template <class Kind>
void split_root(TreeOf<Kind> &tree, EntryOf<Kind> &root) {
  EntryOf<Kind> *upper = sibling_new<Kind>(tree, root);
  if (upper == nullptr) return;
  EntryOf<Kind> *lower = entry_new<Kind>(tree, root.level);
  if (lower == nullptr) return return_entry<Kind>(tree, *upper);
  move_upper_half<Kind>(root, *upper);
  lower->level = root.level;
  Kind::copy_key(*lower, root);
  lower->parent = upper->parent = &root;
  slots::swap(lower->children, root.children);
  set_parent(*lower);
  append_child(root.children, lower);
  append_child(root.children, upper);
  ++root.level;
  root.children.pool = tree.entry_pool;
  Kind::copy_key(root, *upper);
}

// The index of the upper half of a split entry among the parent's children: after the entry or, if the parent
// does not list the entry, where its key belongs.
template <class Kind>
int64_t index_of_upper(const TreeOf<Kind> &tree, const EntryOf<Kind> &parent, const EntryOf<Kind> &entry,
                       const EntryOf<Kind> &upper) {
  const mub_arrays &siblings = parent.children;
  const int64_t index = position(siblings, &entry);
  if (index < siblings.count) return index + 1;
  return Kind::with_order(tree, Kind::key_of(tree, upper),
                          [&](const auto &order) { return search<EntryOf<Kind>>(siblings, order).index; });
}

// Splits one entry, unless memory runs out. Returns the parent if that has to be split next, else nullptr.
template <class Kind>
EntryOf<Kind> *split_once(TreeOf<Kind> &tree, EntryOf<Kind> &entry) {
  EntryOf<Kind> *parent = entry.parent;
  if (parent == nullptr) {
    split_root<Kind>(tree, entry);
    return nullptr;
  }
  if (!slots::expand(parent->children, parent->children.count + 1)) return nullptr;
  const EntryOf<Kind> *upper = split_off<Kind>(tree, entry);
  if (upper == nullptr) return nullptr;
  insert_child(parent->children, index_of_upper<Kind>(tree, *parent, entry, *upper), upper);
  return parent->children.count >= kOrder ? parent : nullptr;
}

template <class Kind>
void split(TreeOf<Kind> &tree, EntryOf<Kind> &entry) {
  EntryOf<Kind> *over_full = &entry;
  while (over_full != nullptr) over_full = split_once<Kind>(tree, *over_full);
}

}  // namespace mub::bplus

#endif
