// The one search among the children of an entry, and the way down that it leads. Another layout of the search keys, such
// as copies of them side by side behind the table of children, would be read here and nowhere else.
//
// An order is called with a child, and compares the child's key with the searched one: it is inlined into the loop.
#ifndef MUB_BTREE_NODE_SEARCH_H
#define MUB_BTREE_NODE_SEARCH_H

#include <cstdint>

#include "arrays/search.h"
#include "btree/tree_walk.h"

namespace mub::bplus {

template <class Child, class Order>
Spot search(const mub_arrays &children, const Order &order) {
  return binary_search(children.count, false,
                       [&](int64_t i) { return order(*child_at<Child>(children, i)); });
}

// The only leaf that can hold the key. A key above all others goes with the last children.
template <class Entry, class Order>
Entry *descend(const Entry &from, const Order &order) {
  auto *entry = const_cast<Entry *>(&from);
  while (entry->level > 0) {
    const mub_arrays &children = entry->children;
    entry = entry_at(*entry, nearest(search<Entry>(children, order), children.count));
  }
  return entry;
}

}  // namespace mub::bplus

#endif
