// Walks over the nodes of a B+-tree: to children, parents and neighbouring leaves, and over whole
// subtrees. Positions among siblings are found by address: nothing here compares keys, recurses or writes to
// the tree. Part of the engine in bplus_tree.h, where its invariants are.
#ifndef MUB_BTREE_TREE_WALK_H
#define MUB_BTREE_TREE_WALK_H

#include <algorithm>
#include <cstdint>

#include "base/prefetch.h"
#include "mub_array.h"
#include "pool/pool.h"

namespace mub::bplus {

// How many leaves ahead a walk over all leaves prefetches.
constexpr int64_t kPrefetchLeaves = 8;

template <class Child>
Child *child_at(const mub_arrays &children, int64_t index) {
  return record_of<Child>(children.items[index]);
}

template <class Entry>
Entry *entry_at(const Entry &entry, int64_t index) {
  return child_at<Entry>(entry.children, index);
}

// The index of a child; the count if it is not listed.
inline int64_t position(const mub_arrays &children, const void *child) {
  return std::find(children.items, children.items + children.count, word_of(child)) - children.items;
}

template <class Entry>
bool has_children(const Entry &entry) {
  return entry.children.count > 0;
}

template <class Entry>
bool is_last(const Entry &entry) {
  const mub_arrays &siblings = entry.parent->children;
  return siblings.items[siblings.count - 1] == word_of(&entry);
}

template <class Entry>
Entry *sibling(const Entry &entry, int64_t distance) {
  return entry_at(*entry.parent, position(entry.parent->children, &entry) + distance);
}

template <class Entry>
Entry *first_leaf(const Entry &entry) {
  auto *leaf = const_cast<Entry *>(&entry);
  while (leaf->level > 0 && leaf->children.count > 0) leaf = entry_at(*leaf, 0);
  return leaf;
}

template <class Entry>
Entry *last_leaf(const Entry &entry) {
  auto *leaf = const_cast<Entry *>(&entry);
  while (leaf->level > 0 && leaf->children.count > 0) leaf = entry_at(*leaf, leaf->children.count - 1);
  return leaf;
}

// The leaf after another one, or before it if kStep is -1. nullptr at the end of the tree, and for a leaf
// that its parent does not list, such as the upper half of a split that the caller has not inserted yet.
template <int kStep, class Entry>
Entry *neighbour(const Entry &leaf) {
  for (const Entry *entry = &leaf; entry->parent != nullptr; entry = entry->parent) {
    const mub_arrays &siblings = entry->parent->children;
    const int64_t index = position(siblings, entry);
    if (index == siblings.count) return nullptr;
    const int64_t beside = index + kStep;
    if (beside < 0 || beside == siblings.count) continue;
    const Entry &below = *child_at<Entry>(siblings, beside);
    return kStep > 0 ? first_leaf(below) : last_leaf(below);
  }
  return nullptr;
}

// The nearest leaf on one side that has records. Leaves are only empty if the caller has emptied the table of
// children, or split a leaf of fewer than two records.
template <int kStep, class Entry>
Entry *leaf_beside(const Entry *leaf) {
  Entry *beside = neighbour<kStep>(*leaf);
  while (beside != nullptr && !has_children(*beside)) beside = neighbour<kStep>(*beside);
  return beside;
}

// The first node of level 1 at or below `entry`; a leaf is returned as it is.
template <class Entry>
Entry *first_above_leaves(Entry &entry) {
  Entry *above = &entry;
  while (above->level > 1 && above->children.count > 0) above = entry_at(*above, 0);
  return above;
}

// Prefetches for a walk over the leaves of one parent: the leaf kPrefetchLeaves ahead, and the table of
// children of the one half as far ahead.
template <class Entry>
void prefetch_leaves(const Entry &above, int64_t index) {
  if (index + kPrefetchLeaves >= above.children.count) return;
  prefetch(entry_at(above, index + kPrefetchLeaves));
  prefetch(entry_at(above, index + kPrefetchLeaves / 2)->children.items);
}

// Calls `visit` with every node below `top` and then with `top`: children before their parent, in key order.
// `visit` may return the node and its children to their pools: the next node is determined before the call.
template <class Entry, class Visit>
void for_each_from_below(Entry &top, Visit visit) {
  Entry *entry = first_above_leaves(top);
  while (true) {
    for (int64_t i = 0; entry->level == 1 && i < entry->children.count; ++i) {
      prefetch_leaves(*entry, i);
      visit(*entry_at(*entry, i));
    }
    if (entry == &top) break;
    Entry *next = is_last(*entry) ? entry->parent : first_above_leaves(*sibling(*entry, 1));
    visit(*entry);
    entry = next;
  }
  visit(top);
}

// The next node of a walk over `top` and all below it, parents before their children; nullptr at its end.
// Leaves are visited only if `with_leaves`.
template <class Entry>
Entry *next_from_above(const Entry &entry, const Entry &top, bool with_leaves) {
  if (entry.level > (with_leaves ? 0 : 1) && entry.children.count > 0) return entry_at(entry, 0);
  const Entry *at = &entry;
  while (at != &top && is_last(*at)) at = at->parent;
  return at == &top ? nullptr : sibling(*at, 1);
}

}  // namespace mub::bplus

#endif
