// Whole B-trees: initialising, emptying, terminating, measuring and swapping them. Part of the engine in
// bplus_tree.h, where its invariants and policy are.
#ifndef MUB_BTREE_BPLUS_WHOLE_H
#define MUB_BTREE_BPLUS_WHOLE_H

#include <cstring>
#include <utility>

#include "btree/bplus_tree.h"
#include "containers/container_pools.h"
#include "containers/memory.h"

namespace mub::bplus {

template <class Tree>
void init(Tree &tree, bool with_entry_pool, bool with_node_pool, bool with_value_pool) {
  std::memset(&tree, 0, sizeof tree);  // clears the padding, too
  init_node(tree.root);
  if (with_entry_pool) entry_pool_of(tree).make(sizeof(NodeOf<Tree>));
  if (with_node_pool) node_pool_of(tree).make(sizeof(RecordOf<Tree>));
  if (with_value_pool) value_pool_of(tree).make(0);
  tree.root.children.pool = tree.node_pool;
  Policy<Tree>::init_keys(tree);
}

template <class Tree>
int64_t memory_bytes(const Tree &tree) {
  int64_t bytes = pools_and_keys_bytes(tree);
  const NodeOf<Tree> *node = &tree.root;
  for (; node != nullptr; node = next_in_preorder(*node, tree.root, true))
    bytes += slots::table_bytes(node->children);
  return bytes;
}

// ---- emptying

// Which blocks are returned to their pools.
enum class Returned { kExternal, kAll };

// Calls `visit` with every record below `top`, and releases the tables of children of `top` and of all nodes
// below it, leaf by leaf: `visit` must not use the tree. Records and nodes below `top` are returned to
// external pools. Those in owned pools stay until these are emptied, unless Returned::kAll asks to return
// them, too.
template <class Tree, class Visit>
void empty_from(Tree &tree, NodeOf<Tree> &top, Returned returned, Visit visit) {
  const bool returns_records = tree.owns_node_pool == 0 || returned == Returned::kAll;
  const bool returns_nodes = tree.owns_entry_pool == 0 || returned == Returned::kAll;
  const auto return_records = [&](const NodeOf<Tree> &leaf) {
    for (int64_t i = 0; i < leaf.children.count; ++i) {
      RecordOf<Tree> *record = record_at(leaf, i);
      visit(*record);
      if (returns_records) pool::give(tree.node_pool, record);
    }
  };
  for_each_postorder(top, [&](NodeOf<Tree> &node) {
    if (node.level < 1) return_records(node);
    slots::release_table(node.children);
    if (&node != &top && returns_nodes) pool::give(tree.entry_pool, &node);
  });
}

// Whether the tree owns its entry pool, and every block carved from it is now a node of the tree. Free blocks
// may hold anything, and release_tables() would release what they seem to refer to.
template <class Tree>
bool pool_has_only_nodes(const Tree &tree) {
  if (tree.owns_entry_pool == 0) return false;
  int64_t nodes = 0;
  for (const NodeOf<Tree> *node = &tree.root; node != nullptr && node->level > 0;
       node = next_in_preorder(*node, tree.root, false)) {
    nodes += node->children.count;
  }
  return has_exactly_live<NodeOf<Tree>>(entry_pool_of(tree), nodes) &&
         pool::carved_blocks(*tree.entry_pool) == nodes;
}

// Releases tables in the order of their nodes in memory. Following the tree would miss the cache for each.
template <class Tree>
void release_tables(Tree &tree) {
  pool::for_each_block<NodeOf<Tree>>(*tree.entry_pool,
                                     [](NodeOf<Tree> &node) { slots::release_table(node.children); });
  slots::release_table(tree.root.children);
}

template <class Tree>
void remove_all_below(Tree &tree, NodeOf<Tree> &top, Returned returned = Returned::kExternal) {
  empty_from(tree, top, returned, [](const RecordOf<Tree> &) {});
}

template <class Tree>
void free_all_below(Tree &tree, NodeOf<Tree> &top, mub_free_fn release_it) {
  empty_from(tree, top, Returned::kExternal, [&](const RecordOf<Tree> &record) {
    release_value(value_pool_of(tree), record.value, release_it);
  });
}

template <class Tree>
void reset(Tree &tree) {
  Policy<Tree>::reset_key(tree.root);
  tree.root.level = 0;
  tree.root.parent = nullptr;
  tree.root.children.pool = tree.node_pool;
  tree.count = 0;
}

// Empties the tree without visiting values.
template <class Tree>
void remove_all_below_root(Tree &tree) {
  if (tree.owns_node_pool != 0 && pool_has_only_nodes(tree)) {
    release_tables(tree);
  } else {
    remove_all_below(tree, tree.root);
  }
}

template <class Tree>
void remove_all(Tree &tree) {
  remove_all_below_root(tree);
  Policy<Tree>::clear_keys(tree);
  empty_pools(tree);
  reset(tree);
}

template <class Tree>
void free_all(Tree &tree, mub_free_fn release_it) {
  if (release_it != nullptr || value_pool_of(tree).is_external()) {
    free_all_below(tree, tree.root, release_it);
  } else {
    remove_all_below_root(tree);
  }
  Policy<Tree>::term_keys(tree);
  empty_pools(tree);
  reset(tree);
}

template <class Tree>
void term(Tree &tree) {
  remove_all_below_root(tree);
  Policy<Tree>::term_keys(tree);
  destroy_pools(tree);
  reset(tree);
}

// ---- swapping

template <class Node>
void swap_roots(Node &a, Node &b) {
  slots::swap(a.children, b.children);
  Node key_of_a = {};
  Policy<Node>::copy_key(key_of_a, a);
  Policy<Node>::copy_key(a, b);
  Policy<Node>::copy_key(b, key_of_a);
  std::swap(a.level, b.level);
  set_parent_of_children(a);
  set_parent_of_children(b);
}

template <class Tree>
void swap(Tree &a, Tree &b) {
  swap_roots(a.root, b.root);
  Policy<Tree>::swap_keys(a, b);
  std::swap(a.count, b.count);
  swap_pools(a, b);
  set_children_pools(a, a.root);
  set_children_pools(b, b.root);
}

}  // namespace mub::bplus

#endif
