// Looks up many keys of a B-tree at a time. A single look-up waits for a child, its key and the next child in
// turn. The look-ups of a group go down the tree together, level by level and, unless node_search.h searches
// by quarters, probe by probe, so that their cache misses overlap. Part of the engine in bplus_tree.h, where
// its invariants and policy are.
//
// Threads: the tree is only read.
#ifndef MUB_BTREE_BATCH_GET_H
#define MUB_BTREE_BATCH_GET_H

#include <cstdint>

#include "arrays/search.h"
#include "base/prefetch.h"
#include "btree/bplus_tree.h"
#include "containers/batch.h"

namespace mub::bplus {

// Smaller trees stay in a cache, where the passes over a group cost more than they save: batches in trees of
// 1e3 records take 1.9 times as long with text keys, and 1.2 times with integers (text_lookup_batch and
// u64_lookup_batch in bench/btree_bench.cpp).
constexpr int64_t kBatchedFrom = 0xC000;
// Fewer look-ups have too little to overlap.
constexpr int64_t kSmallestGroup = 4;

// A look-up on its way down: the node that it has reached, and the children that are left to search, from
// the spot on; when the search is over, the spot is what search() returns.
template <class Tree>
struct Lookup {
  const NodeOf<Tree> *node;
  Spot spot;
  int64_t count;
  KeyOf<Tree> key;

  bool is_over() const { return spot.found || count < 1; }

  template <class Child>
  const Child &child(int64_t index) const {
    return *child_at<Child>(node->children, index);
  }
  template <class Child>
  const Child &middle() const {
    return child<Child>(spot.index + (count - 1) / 2);
  }
};

// One step of a binary search, which probes the same children as search().
template <class Child, class Tree, class Order>
void probe(const Order &order, Lookup<Tree> &lookup) {
  const int64_t before_middle = (lookup.count - 1) / 2;
  const int difference = order.with_key(lookup.key)(lookup.template middle<Child>());
  if (difference <= 0) lookup.spot.index += before_middle;
  if (difference < 0) ++lookup.spot.index;
  lookup.count = difference < 0 ? lookup.count - before_middle - 1 : before_middle;
  lookup.spot.found = difference == 0;
}

template <class Child, class Tree, class Order>
void search_by_probes(const Tree &tree, const Order &order, Lookup<Tree> *lookups, int64_t count) {
  for (int64_t i = 0; i < count; ++i) prefetch(&lookups[i].template middle<Child>());
  for (bool is_over = false; !is_over;) {
    is_over = true;
    for (int64_t i = 0; i < count; ++i) {
      if (!lookups[i].is_over()) Policy<Tree>::prefetch_key(tree, lookups[i].template middle<Child>());
    }
    for (int64_t i = 0; i < count; ++i) {
      if (lookups[i].is_over()) continue;
      probe<Child>(order, lookups[i]);
      if (lookups[i].is_over()) continue;
      prefetch(&lookups[i].template middle<Child>());
      is_over = false;
    }
  }
}

// For orders that search by quarters: all probes of the first step are prefetched, and without branches the
// processor starts the next search before this one ends.
template <class Child, class Tree, class Order>
void search_prefetched(const Order &order, Lookup<Tree> *lookups, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    const int64_t quarter = lookups[i].count / 4;
    for (int64_t end = quarter; end < lookups[i].count && quarter > 0; end += quarter) {
      prefetch(&lookups[i].template child<Child>(end - 1));
    }
  }
  for (int64_t i = 0; i < count; ++i) {
    lookups[i].spot = search<Child>(lookups[i].node->children, order.with_key(lookups[i].key));
  }
}

// Searches the children of each look-up's node; false if a node has none.
template <class Child, class Tree, class Order>
bool search_children(const Tree &tree, const Order &order, Lookup<Tree> *lookups, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    Lookup<Tree> &lookup = lookups[i];
    lookup.spot = {0, false};
    lookup.count = lookup.node->children.count;
    if (lookup.count < 1) return false;
  }
  if constexpr (Order::kByQuarters) {
    search_prefetched<Child>(order, lookups, count);
  } else {
    search_by_probes<Child>(tree, order, lookups, count);
  }
  return true;
}

// Goes down to a level; false if a node has another level, because leaves differ in depth.
template <class Tree>
bool go_down(Lookup<Tree> *lookups, int64_t count, int64_t level) {
  for (int64_t i = 0; i < count; ++i) {
    Lookup<Tree> &lookup = lookups[i];
    const int64_t index = nearest(lookup.spot, lookup.node->children.count);
    lookup.node = &lookup.template child<NodeOf<Tree>>(index);
    prefetch(lookup.node);
  }
  bool all_at_level = true;
  for (int64_t i = 0; i < count; ++i) {
    all_at_level &= lookups[i].node->level == level;
    prefetch(lookups[i].node->children.items, kSplitCount * static_cast<int64_t>(sizeof(uint64_t)));
  }
  return all_at_level;
}

// Brings all look-ups to the ends of their searches in the leaves. Returns false if a node has no children or
// leaves differ in depth, which only the low layer can cause; each key is then looked up alone.
template <class Tree, class Order>
bool descend_together(const Tree &tree, const Order &order, Lookup<Tree> *lookups, int64_t count) {
  for (int64_t i = 0; i < count; ++i) lookups[i].node = &tree.root;
  for (int64_t level = tree.root.level; level > 0; --level) {
    if (!search_children<NodeOf<Tree>>(tree, order, lookups, count)) return false;
    if (!go_down(lookups, count, level - 1)) return false;
  }
  return search_children<RecordOf<Tree>>(tree, order, lookups, count);
}

template <class Tree, class KeyAt>
int64_t get_group(const Tree &tree, KeyAt key_at, int64_t count, uint64_t *values_out) {
  Lookup<Tree> lookups[kGroupSize];
  for (int64_t i = 0; i < count; ++i) lookups[i].key = key_at(i);
  // Any key will do to select the type of the order: with_key() replaces it.
  const bool is_batched = count >= kSmallestGroup && tree.count >= kBatchedFrom &&
                          Policy<Tree>::with_order(tree, lookups[0].key, [&](const auto &order) {
                            return descend_together(tree, order, lookups, count);
                          });
  int64_t present = 0;
  for (int64_t i = 0; i < count; ++i) {
    const Lookup<Tree> &lookup = lookups[i];
    const RecordOf<Tree> *record = nullptr;
    if (!is_batched) {
      record = find(tree, lookup.key);
    } else if (lookup.spot.found) {
      record = &lookup.template child<RecordOf<Tree>>(lookup.spot.index);
    }
    present += store_value(record, values_out[i]);
  }
  return present;
}

// Stores for each key what get() returns; the result is how many keys are present. key_at(i) is the key of
// an index.
template <class Tree, class KeyAt>
int64_t get_many(const Tree &tree, KeyAt key_at, int64_t count, uint64_t *values_out) {
  return for_each_group(key_at, count, values_out, [&](auto key_in_group, int64_t size, uint64_t *values) {
    return get_group(tree, key_in_group, size, values);
  });
}

}  // namespace mub::bplus

#endif
