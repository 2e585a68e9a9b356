// The search among the children of a node, and the descent to a leaf. Single look-ups search here, groups of
// look-ups also in batch_get.h: a change of the layout of the keys affects both. Part of the engine in
// bplus_tree.h, where its invariants are. Nothing is written.
//
// order(child) compares the key of a child with the wanted one, and is inlined into the loops.
// Order::kByQuarters selects the search without branches. It requires a strict order (a NaN breaks it) that
// itself compares without branches.
#ifndef MUB_BTREE_NODE_SEARCH_H
#define MUB_BTREE_NODE_SEARCH_H

#include <cstdint>

#include "arrays/search.h"
#include "btree/tree_walk.h"

namespace mub::bplus {

// Up to this number of children, every one is compared. With 4, look-ups in a tree of 1e3 records take 1.1
// times as long; with 16, look-ups and insertions take about the same time (u64_lookup and u64_insert_random
// in bench/btree_bench.cpp).
constexpr int64_t kFewChildren = 8;

// Divides the children into four parts per step, and loads the last keys of three of them in parallel. A
// binary search mispredicts every other branch: in a tree of 1e3 records, look-ups take 1.3 times as long
// with it, in one of 1e5 or 1e6 about 1.07 times (u64_lookup). Always inlined: a call per level would take a
// fifth of the time of an insertion.
template <class Child, class Order>
__attribute__((always_inline)) inline Spot search_by_quarters(const mub_arrays &children,
                                                              const Order &order) {
  const auto is_less = [&](const uint64_t *item) {
    return static_cast<int64_t>(order(*pointer_of<Child>(*item)) < 0);
  };
  const uint64_t *first = children.items;
  int64_t count = children.count;
  while (count > kFewChildren) {
    const int64_t quarter = count / 4;
    const uint64_t *last = first + quarter - 1;
    const int64_t less = is_less(last) + is_less(last + quarter) + is_less(last + 2 * quarter);
    first += less * quarter;
    count = less < 3 ? quarter : count - 3 * quarter;
  }
  int64_t less = 0;
  for (int64_t i = 0; i < count; ++i) less += is_less(first + i);
  const int64_t index = first - children.items + less;
  return {index, index < children.count && order(*child_at<Child>(children, index)) == 0};
}

template <class Child, class Order>
Spot search(const mub_arrays &children, const Order &order) {
  if constexpr (Order::kByQuarters) {
    return search_by_quarters<Child>(children, order);
  } else {
    return binary_search(children.count, false,
                         [&](int64_t i) { return order(*child_at<Child>(children, i)); });
  }
}

// Descends to the only leaf that can hold the key, and searches it. For a key above all others it follows the
// last children. Stops at an inner node whose children were removed by the caller. `node` is where to start,
// and becomes the node at which the search ends.
template <class Record, class Node, class Order>
Spot descend(const Node *&node, const Order &order) {
  while (node->level > 0 && node->children.count > 0) {
    const mub_arrays &children = node->children;
    node = node_at(*node, nearest(search<Node>(children, order), children.count));
  }
  return search<Record>(node->children, order);
}

}  // namespace mub::bplus

#endif
