// The nodes of a B-tree: making them, giving them the key of their last child as their name, and splitting
// them. Part of the engine in bplus_tree.h, where its invariants and policy are.
#ifndef MUB_BTREE_BPLUS_NODES_H
#define MUB_BTREE_BPLUS_NODES_H

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
constexpr int64_t kSplitCount = 32;

template <class Tree>
using NodeOf = typename Policy<Tree>::Node;
template <class Tree>
using RecordOf = typename Policy<Tree>::Record;
template <class Tree>
using CursorOf = typename Policy<Tree>::Cursor;

template <class Node>
RecordOf<Node> *record_at(const Node &leaf, int64_t index) {
  return child_at<RecordOf<Node>>(leaf.children, index);
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
template <class Node>
bool init_node(Node &node) {
  node = {};
  return slots::expand(node.children, kSplitCount);
}

template <class Tree>
void return_node(Tree &tree, NodeOf<Tree> &node) {
  Policy<Tree>::reset_key(node);
  slots::release_table(node.children);
  pool::give(tree.entry_pool, &node);
}

template <class Tree>
mub_pool *children_pool(const Tree &tree, int level) {
  return level < 1 ? tree.node_pool : tree.entry_pool;
}

// Returns a new, empty leaf; nullptr if memory runs out. `level` only selects the pool of the children; the
// caller sets the field.
template <class Tree>
NodeOf<Tree> *new_node(Tree &tree, int level) {
  auto *node = static_cast<NodeOf<Tree> *>(pool::take(tree.entry_pool));
  if (node == nullptr) return nullptr;
  if (!init_node(*node)) {
    pool::give(tree.entry_pool, node);
    return nullptr;
  }
  node->children.pool = children_pool(tree, level);
  return node;
}

// Makes an inner node the parent of its children. The children of a leaf have no such field.
template <class Node>
void set_parent_of_children(Node &node) {
  if (node.level < 1) return;
  for (int64_t i = 0; i < node.children.count; ++i) node_at(node, i)->parent = &node;
}

// Sets `children.pool` in `top` and the inner nodes below it; skips leaves below `top`.
template <class Tree, class Node>
void set_children_pools(const Tree &tree, Node &top) {
  top.children.pool = children_pool(tree, top.level);
  Node *node = &top;
  while ((node = next_in_preorder(*node, top, false)) != nullptr) node->children.pool = tree.entry_pool;
}

// ---- names: the name of a node is the key of its last child

// Calls `use` with the last child, if there is one.
template <class Node, class Use>
void with_last_child(const Node &node, Use use) {
  const int64_t last = node.children.count - 1;
  if (last < 0) return;
  if (node.level > 0) {
    use(*node_at(node, last));
  } else {
    use(*record_at(node, last));
  }
}

template <class Node>
void copy_name(Node &node) {
  with_last_child(node, [&](const auto &child) { Policy<Node>::copy_key(node, child); });
}

// Sets the name of a node and of its ancestors, up to the first that has it already.
template <class Tree>
void set_name(const Tree &tree, NodeOf<Tree> &from) {
  NodeOf<Tree> *node = &from;
  while (node != nullptr) {
    NodeOf<Tree> *above = nullptr;
    with_last_child(*node, [&](const auto &child) {
      if (Policy<Tree>::name_equals_key_of(tree, *node, child)) return;
      Policy<Tree>::copy_key(*node, child);
      above = node->parent;
    });
    node = above;
  }
}

// ---- splitting

// Returns a new node with the level and parent of another one, and room for the upper half of its children;
// nullptr if memory runs out.
template <class Tree>
NodeOf<Tree> *new_sibling(Tree &tree, const NodeOf<Tree> &node) {
  NodeOf<Tree> *upper = new_node(tree, node.level);
  if (upper == nullptr) return nullptr;
  if (!slots::expand(upper->children, (node.children.count + 1) / 2)) {
    return_node(tree, *upper);
    return nullptr;
  }
  upper->level = node.level;
  upper->parent = node.parent;
  return upper;
}

template <class Node>
void move_upper_half(Node &node, Node &upper) {
  const int64_t kept = node.children.count / 2;
  upper.children.count = node.children.count - kept;
  node.children.count = kept;
  buffer::move_units(upper.children.items, node.children.items + kept, upper.children.count);
  set_parent_of_children(upper);
  copy_name(node);
  copy_name(upper);
}

// Moves the upper half of the children to a new sibling, which no parent lists yet; nullptr if memory runs
// out.
template <class Tree>
NodeOf<Tree> *split_off(Tree &tree, NodeOf<Tree> &node) {
  NodeOf<Tree> *upper = new_sibling(tree, node);
  if (upper != nullptr) move_upper_half(node, *upper);
  return upper;
}

// The root cannot move, as it is embedded in the tree: its table of children moves to a new node below it.
template <class Tree>
void split_root(Tree &tree, NodeOf<Tree> &root) {
  NodeOf<Tree> *upper = new_sibling(tree, root);
  if (upper == nullptr) return;
  NodeOf<Tree> *lower = new_node(tree, root.level);
  if (lower == nullptr) return return_node(tree, *upper);
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
// does not list the node, where the key of the upper half belongs.
template <class Tree>
int64_t index_of_upper(const Tree &tree, const NodeOf<Tree> &parent, const NodeOf<Tree> &node,
                       const NodeOf<Tree> &upper) {
  const mub_arrays &siblings = parent.children;
  const int64_t index = position(siblings, &node);
  if (index < siblings.count) return index + 1;
  return Policy<Tree>::with_order(tree, Policy<Tree>::key_of(tree, upper), [&](const auto &order) {
    return search<NodeOf<Tree>>(siblings, order).index;
  });
}

// Splits one node, unless memory runs out. Returns the parent if that has to be split next, else nullptr.
template <class Tree>
NodeOf<Tree> *split_once(Tree &tree, NodeOf<Tree> &node) {
  NodeOf<Tree> *parent = node.parent;
  if (parent == nullptr) {
    split_root(tree, node);
    return nullptr;
  }
  if (!slots::expand(parent->children, parent->children.count + 1)) return nullptr;
  const NodeOf<Tree> *upper = split_off(tree, node);
  if (upper == nullptr) return nullptr;
  insert_child(parent->children, index_of_upper(tree, *parent, node, *upper), upper);
  return parent->children.count >= kSplitCount ? parent : nullptr;
}

template <class Tree>
void split(Tree &tree, NodeOf<Tree> &node) {
  NodeOf<Tree> *over_full = &node;
  while (over_full != nullptr) over_full = split_once(tree, *over_full);
}

}  // namespace mub::bplus

#endif
