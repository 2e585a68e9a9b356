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

// How many leaves ahead a walk over all leaves prefetches. Without prefetching, the release of 1e6 records
// takes 1.1 times as long; the distance makes no difference from 1 to 32 (u64_release in
// bench/btree_bench.cpp).
constexpr int64_t kPrefetchLeaves = 8;

template <class Child>
Child *child_at(const mub_arrays &children, int64_t index) {
  return pointer_of<Child>(children.items[index]);
}

template <class Node>
Node *node_at(const Node &node, int64_t index) {
  return child_at<Node>(node.children, index);
}

// The index of a child; the count if it is not listed.
inline int64_t position(const mub_arrays &children, const void *child) {
  return std::find(children.items, children.items + children.count, word_of(child)) - children.items;
}

template <class Node>
bool has_children(const Node &node) {
  return node.children.count > 0;
}

template <class Node>
bool is_last(const Node &node) {
  const mub_arrays &siblings = node.parent->children;
  return siblings.items[siblings.count - 1] == word_of(&node);
}

template <class Node>
Node *sibling(const Node &node, int64_t distance) {
  return node_at(*node.parent, position(node.parent->children, &node) + distance);
}

template <class Node>
Node *first_leaf(const Node &node) {
  auto *leaf = const_cast<Node *>(&node);
  while (leaf->level > 0 && leaf->children.count > 0) leaf = node_at(*leaf, 0);
  return leaf;
}

template <class Node>
Node *last_leaf(const Node &node) {
  auto *leaf = const_cast<Node *>(&node);
  while (leaf->level > 0 && leaf->children.count > 0) leaf = node_at(*leaf, leaf->children.count - 1);
  return leaf;
}

// The leaf after another one, or before it if kStep is -1. nullptr at the end of the tree, and for a leaf
// that its parent does not list, such as the upper half of a split that the caller has not inserted yet.
template <int kStep, class Node>
Node *neighbour(const Node &leaf) {
  for (const Node *node = &leaf; node->parent != nullptr; node = node->parent) {
    const mub_arrays &siblings = node->parent->children;
    const int64_t index = position(siblings, node);
    if (index == siblings.count) return nullptr;
    const int64_t beside = index + kStep;
    if (beside < 0 || beside == siblings.count) continue;
    const Node &below = *child_at<Node>(siblings, beside);
    return kStep > 0 ? first_leaf(below) : last_leaf(below);
  }
  return nullptr;
}

// The nearest leaf on one side that has records. Leaves are only empty if the caller has emptied the table of
// children, or split a leaf of fewer than two records.
template <int kStep, class Node>
Node *leaf_beside(const Node *leaf) {
  Node *beside = neighbour<kStep>(*leaf);
  while (beside != nullptr && !has_children(*beside)) beside = neighbour<kStep>(*beside);
  return beside;
}

// The first node of level 1 at or below `node`; a leaf is returned as it is.
template <class Node>
Node *first_above_leaves(Node &node) {
  Node *above = &node;
  while (above->level > 1 && above->children.count > 0) above = node_at(*above, 0);
  return above;
}

// Prefetches for a walk over the leaves of one parent: the leaf kPrefetchLeaves ahead, and the table of
// children of the one half as far ahead.
template <class Node>
void prefetch_leaves(const Node &above, int64_t index) {
  if (index + kPrefetchLeaves >= above.children.count) return;
  prefetch(node_at(above, index + kPrefetchLeaves));
  prefetch(node_at(above, index + kPrefetchLeaves / 2)->children.items);
}

// Calls `visit` with every node below `top` and then with `top`, in post-order.
// `visit` may return the node and its children to their pools: the next node is determined before the call.
template <class Node, class Visit>
void for_each_postorder(Node &top, Visit visit) {
  Node *node = first_above_leaves(top);
  while (true) {
    for (int64_t i = 0; node->level == 1 && i < node->children.count; ++i) {
      prefetch_leaves(*node, i);
      visit(*node_at(*node, i));
    }
    if (node == &top) break;
    Node *next = is_last(*node) ? node->parent : first_above_leaves(*sibling(*node, 1));
    visit(*node);
    node = next;
  }
  visit(top);
}

// The next node of a pre-order walk over `top` and all below it; nullptr at its end.
// Leaves are visited only if `with_leaves`.
template <class Node>
Node *next_in_preorder(const Node &node, const Node &top, bool with_leaves) {
  if (node.level > (with_leaves ? 0 : 1) && node.children.count > 0) return node_at(node, 0);
  const Node *at = &node;
  while (at != &top && is_last(*at)) at = at->parent;
  return at == &top ? nullptr : sibling(*at, 1);
}

}  // namespace mub::bplus

#endif
