// The nodes of a B-tree: making them, giving them the key of their last child as their name, and splitting
// them. Part of the engine in bplus_tree.h, where its invariants and policy are.
#ifndef MUB_BTREE_BPLUS_ENTRIES_H
#define MUB_BTREE_BPLUS_ENTRIES_H

#include <algorithm>
#include <cstdint>

#include "arrays/slot_table.h"
#include "btree/node_search.h"
#include "btree/tree_walk.h"
#include "containers/policy.h"
#include "mub_btree.h"
#include "pool/pool.h"

namespace mub::bplus {

// The number of children at which a node splits. Part of the interface: callers can see the splits.
constexpr int64_t kOrder = 32;

template <class Tree>
using RecordOf = typename Policy<Tree>::Record;
template <class Tree>
using CursorOf = typename Policy<Tree>::Cursor;

template <class Entry>
RecordOf<Entry> *record_at(const Entry &leaf, int64_t index) {
  return child_at<RecordOf<Entry>>(leaf.children, index);
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

// ---- nodes

// Makes a block an empty leaf; false, and no table of children, if memory runs out.
template <class Entry>
bool entry_init(Entry &entry) {
  entry = {};
  return slots::expand(entry.children, kOrder);
}

template <class Tree>
void return_entry(Tree &tree, EntryOf<Tree> &entry) {
  Policy<Tree>::reset_key(entry);
  slots::release_table(entry.children);
  pool::give(tree.entry_pool, &entry);
}

template <class Tree>
mub_pool *children_pool(const Tree &tree, int level) {
  return level < 1 ? tree.node_pool : tree.entry_pool;
}

// Returns a new, empty leaf; nullptr if memory runs out. `level` only selects the pool of the children; the
// caller sets the field.
template <class Tree>
EntryOf<Tree> *entry_new(Tree &tree, int level) {
  auto *entry = static_cast<EntryOf<Tree> *>(pool::take(tree.entry_pool));
  if (entry == nullptr) return nullptr;
  if (!entry_init(*entry)) {
    pool::give(tree.entry_pool, entry);
    return nullptr;
  }
  entry->children.pool = children_pool(tree, level);
  return entry;
}

// Makes an inner node the parent of its children. The children of a leaf have no such field.
template <class Entry>
void set_parent_of_children(Entry &entry) {
  if (entry.level < 1) return;
  for (int64_t i = 0; i < entry.children.count; ++i) entry_at(entry, i)->parent = &entry;
}

// Sets `children.pool` in `top` and the inner nodes below it; skips leaves below `top`.
template <class Tree, class Entry>
void set_pool(const Tree &tree, Entry &top) {
  top.children.pool = children_pool(tree, top.level);
  Entry *entry = &top;
  while ((entry = next_from_above(*entry, top, false)) != nullptr) entry->children.pool = tree.entry_pool;
}

// ---- names: the name of a node is the key of its last child

// Calls `use` with the last child, if there is one.
template <class Entry, class Use>
void with_last_child(const Entry &entry, Use use) {
  const int64_t last = entry.children.count - 1;
  if (last < 0) return;
  if (entry.level > 0) {
    use(*entry_at(entry, last));
  } else {
    use(*record_at(entry, last));
  }
}

template <class Entry>
void copy_name(Entry &entry) {
  with_last_child(entry, [&](const auto &child) { Policy<Entry>::copy_key(entry, child); });
}

// Sets the name of a node and of its ancestors, up to the first that has it already.
template <class Tree>
void set_name(const Tree &tree, EntryOf<Tree> &from) {
  EntryOf<Tree> *entry = &from;
  while (entry != nullptr) {
    EntryOf<Tree> *above = nullptr;
    with_last_child(*entry, [&](const auto &child) {
      if (Policy<Tree>::has_name(tree, *entry, child)) return;
      Policy<Tree>::copy_key(*entry, child);
      above = entry->parent;
    });
    entry = above;
  }
}

// ---- splitting

// Returns a new node with the level and parent of another one, and room for the upper half of its children;
// nullptr if memory runs out.
template <class Tree>
EntryOf<Tree> *sibling_new(Tree &tree, const EntryOf<Tree> &entry) {
  EntryOf<Tree> *upper = entry_new(tree, entry.level);
  if (upper == nullptr) return nullptr;
  if (!slots::expand(upper->children, (entry.children.count + 1) / 2)) {
    return_entry(tree, *upper);
    return nullptr;
  }
  upper->level = entry.level;
  upper->parent = entry.parent;
  return upper;
}

template <class Entry>
void move_upper_half(Entry &entry, Entry &upper) {
  const int64_t kept = entry.children.count / 2;
  upper.children.count = entry.children.count - kept;
  entry.children.count = kept;
  buffer::move_units(upper.children.items, entry.children.items + kept, upper.children.count);
  set_parent_of_children(upper);
  copy_name(entry);
  copy_name(upper);
}

template <class Tree>
EntryOf<Tree> *split_off(Tree &tree, EntryOf<Tree> &entry) {
  EntryOf<Tree> *upper = sibling_new(tree, entry);
  if (upper != nullptr) move_upper_half(entry, *upper);
  return upper;
}

// The root cannot move, as it is part of the record: its table of children moves to a new node below it.
template <class Tree>
void split_root(Tree &tree, EntryOf<Tree> &root) {
  EntryOf<Tree> *upper = sibling_new(tree, root);
  if (upper == nullptr) return;
  EntryOf<Tree> *lower = entry_new(tree, root.level);
  if (lower == nullptr) return return_entry(tree, *upper);
  move_upper_half(root, *upper);
  lower->level = root.level;
  Policy<Tree>::copy_key(*lower, root);
  lower->parent = upper->parent = &root;
  slots::swap(lower->children, root.children);
  set_parent_of_children(*lower);
  append_child(root.children, lower);
  append_child(root.children, upper);
  ++root.level;
  root.children.pool = tree.entry_pool;
  Policy<Tree>::copy_key(root, *upper);
}

// The index of the upper half of a split node among the parent's children: after the node or, if the parent
// does not list the node, where its key belongs.
template <class Tree>
int64_t index_of_upper(const Tree &tree, const EntryOf<Tree> &parent, const EntryOf<Tree> &entry,
                       const EntryOf<Tree> &upper) {
  const mub_arrays &siblings = parent.children;
  const int64_t index = position(siblings, &entry);
  if (index < siblings.count) return index + 1;
  return Policy<Tree>::with_order(tree, Policy<Tree>::key_of(tree, upper), [&](const auto &order) {
    return search<EntryOf<Tree>>(siblings, order).index;
  });
}

// Splits one node, unless memory runs out. Returns the parent if that has to be split next, else nullptr.
template <class Tree>
EntryOf<Tree> *split_once(Tree &tree, EntryOf<Tree> &entry) {
  EntryOf<Tree> *parent = entry.parent;
  if (parent == nullptr) {
    split_root(tree, entry);
    return nullptr;
  }
  if (!slots::expand(parent->children, parent->children.count + 1)) return nullptr;
  const EntryOf<Tree> *upper = split_off(tree, entry);
  if (upper == nullptr) return nullptr;
  insert_child(parent->children, index_of_upper(tree, *parent, entry, *upper), upper);
  return parent->children.count >= kOrder ? parent : nullptr;
}

template <class Tree>
void split(Tree &tree, EntryOf<Tree> &entry) {
  EntryOf<Tree> *over_full = &entry;
  while (over_full != nullptr) over_full = split_once(tree, *over_full);
}

}  // namespace mub::bplus

#endif
