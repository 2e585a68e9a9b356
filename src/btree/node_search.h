// The one search among the children of an entry, and the way down that it leads. Another layout of the
// search keys, such as copies of them side by side after the table of children, would be read
// only here.
//
// An order is called with a child, and compares the child's key with the searched one: it is inlined into
// the loop. Its kByQuarters asks for a search without branches: for orders that have none themselves, in
// which no keys contradict each other, and for trees that stay in a cache.
#ifndef MUB_BTREE_NODE_SEARCH_H
#define MUB_BTREE_NODE_SEARCH_H

#include <cstdint>

#include "arrays/search.h"
#include "btree/tree_walk.h"

namespace mub::bplus {

// So many children are looked at one by one.
constexpr int64_t kFewChildren = 8;

// Cuts the children into four parts at a time, whose last keys are loaded side by side. Halving mispredicts
// every other branch, but what it loads ahead on the way that it predicts is worth more when the keys are
// not in a cache. A call per level would be a fifth of an insertion's time.
template <class Child, class Order>
__attribute__((always_inline)) inline Spot search_by_quarters(const mub_arrays &children,
                                                              const Order &order) {
  const auto is_less = [&](const uint64_t *item) {
    return static_cast<int64_t>(order(*record_of<Child>(*item)) < 0);
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

// Goes down to the only leaf that can hold the key, and searches it. A key above all others goes with the
// last children. Entries that were emptied by themselves end it.
template <class Record, class Entry, class Order>
Spot descend(const Entry *&entry, const Order &order) {
  while (entry->level > 0 && entry->children.count > 0) {
    const mub_arrays &children = entry->children;
    entry = entry_at(*entry, nearest(search<Entry>(children, order), children.count));
  }
  return search<Record>(entry->children, order);
}

}  // namespace mub::bplus

#endif
