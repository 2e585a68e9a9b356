// Looks up many keys of a B-tree at a time. A single look-up waits for a child, its key and the next child in
// turn. The look-ups of a group go down the tree together, all by one probe per round, so that their cache
// misses overlap. Part of the engine in bplus_tree.h, where its invariants and policy are.
//
// Threads: the tree is only read.
#ifndef MUB_BTREE_BATCH_GET_H
#define MUB_BTREE_BATCH_GET_H

#include <algorithm>
#include <cstdint>

#include "base/prefetch.h"
#include "btree/bplus_tree.h"

namespace mub::bplus {

// How many look-ups advance together.
constexpr int64_t kGroup = 16;
// Smaller trees stay in a cache, where the passes over a group cost more than they save.
constexpr int64_t kFewRecords = 0xC000;
// Fewer look-ups have too little to overlap.
constexpr int64_t kFewKeys = 4;

// A look-up on its way down: the node that it has reached, and the range of its children that is left to
// search.
template <class Tree>
struct Lookup {
  const EntryOf<Tree> *entry;
  int64_t first, count;
  KeyOf<Tree> key;
  bool is_found;

  bool is_over() const { return is_found || count < 1; }

  template <class Child>
  const Child &child(int64_t index) const {
    return *child_at<Child>(entry->children, index);
  }
  template <class Child>
  const Child &middle() const {
    return child<Child>(first + (count - 1) / 2);
  }
};

// A binary search that probes the children that search() probes.
template <class Child, class Tree, class Order>
void probe(const Order &order, Lookup<Tree> &lookup) {
  const int64_t below = (lookup.count - 1) / 2;
  const int difference = order.with_key(lookup.key)(lookup.template middle<Child>());
  if (difference <= 0) lookup.first += below;
  if (difference < 0) ++lookup.first;
  lookup.count = difference < 0 ? lookup.count - below - 1 : below;
  lookup.is_found = difference == 0;
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
    const Spot spot = search<Child>(lookups[i].entry->children, order.with_key(lookups[i].key));
    lookups[i].first = spot.index;
    lookups[i].is_found = spot.found;
  }
}

// Searches the children of each look-up's node; `first` and `is_found` are then what search() returns. False
// if a node has no children.
template <class Child, class Tree, class Order>
bool search_children(const Tree &tree, const Order &order, Lookup<Tree> *lookups, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    Lookup<Tree> &lookup = lookups[i];
    lookup.first = 0;
    lookup.count = lookup.entry->children.count;
    lookup.is_found = false;
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
    const int64_t last = lookup.entry->children.count - 1;
    lookup.entry = &lookup.template child<EntryOf<Tree>>(std::min(lookup.first, last));
    prefetch(lookup.entry);
  }
  bool is_even = true;
  for (int64_t i = 0; i < count; ++i) {
    is_even &= lookups[i].entry->level == level;
    prefetch(lookups[i].entry->children.items, kOrder * static_cast<int64_t>(sizeof(uint64_t)));
  }
  return is_even;
}

// Brings all look-ups to the ends of their searches in the leaves. Returns false if a node has no children or
// leaves differ in depth, which only the low layer can cause; each key is then looked up alone.
template <class Tree, class Order>
bool descend_together(const Tree &tree, const Order &order, Lookup<Tree> *lookups, int64_t count) {
  for (int64_t i = 0; i < count; ++i) lookups[i].entry = &tree.root;
  for (int64_t level = tree.root.level; level > 0; --level) {
    if (!search_children<EntryOf<Tree>>(tree, order, lookups, count)) return false;
    if (!go_down(lookups, count, level - 1)) return false;
  }
  return search_children<RecordOf<Tree>>(tree, order, lookups, count);
}

template <class Tree, class KeyAt>
int64_t get_group(const Tree &tree, KeyAt key_at, int64_t count, uint64_t *values_out) {
  Lookup<Tree> lookups[kGroup];
  for (int64_t i = 0; i < count; ++i) lookups[i].key = key_at(i);
  // Any key will do to select the type of the order: with_key() replaces it.
  const bool is_together = count >= kFewKeys && tree.count >= kFewRecords &&
                           Policy<Tree>::with_order(tree, lookups[0].key, [&](const auto &order) {
                             return descend_together(tree, order, lookups, count);
                           });
  int64_t present = 0;
  for (int64_t i = 0; i < count; ++i) {
    const Lookup<Tree> &lookup = lookups[i];
    const RecordOf<Tree> *record = nullptr;
    if (!is_together) {
      record = find(tree, lookup.key);
    } else if (lookup.is_found) {
      record = &lookup.template child<RecordOf<Tree>>(lookup.first);
    }
    values_out[i] = record == nullptr ? 0 : record->value;
    present += record == nullptr ? 0 : 1;
  }
  return present;
}

// Stores for each key what get() returns; the result is how many keys are present. key_at(i) is the key of
// an index.
template <class Tree, class KeyAt>
int64_t get_many(const Tree &tree, KeyAt key_at, int64_t count, uint64_t *values_out) {
  int64_t present = 0;
  for (int64_t first = 0; first < count; first += kGroup) {
    present += get_group(
        tree, [&](int64_t i) { return key_at(first + i); }, std::min(kGroup, count - first),
        values_out + first);
  }
  return present;
}

}  // namespace mub::bplus

#endif
