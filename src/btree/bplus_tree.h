// The engine of the B-trees: B+-trees of order 32 on pooled blocks.
//
//   tree ── root (Entry, embedded)              level 2
//             children.items ──► [0] [1] … ──► Entry             level 1
//                                     children.items ──► [0] [1] … ──► Entry (leaf)      level 0
//                                                             children.items ──► [0] [1] …
//                                                                                 │   │
//           Record (a key and its value)                                          ▼   ▼
//             prev, next: the chain of all records                          Record ⇄ Record
//
// What is called an entry is a node of the tree; what the public names call a node is a record here.
//
// Invariants:
//   1. Children of an entry of level L are entries of level L - 1, of a leaf (level 0) records. An entry
//      other than the root has a child; the root may be an empty leaf.
//   2. The parent of an entry is the one that has it as a child; the root has none.
//   3. The key of an entry other than the root is that of its last child. It refers to the same key bytes.
//      So does the root's, but removals do not update its offset: it is compared when names are set, and not
//      searched.
//   4. The keys of the records ascend from leaf to leaf; no two are equal.
//   5. An entry has at most 31 children, but for one whose split found no memory.
//   6. `count` is the number of records.
//   7. Without removals since the tree was empty, and unless it is a clone, `prev` and `next` are the
//      neighbours in key order. Otherwise a link may lead anywhere. Nothing but set_next follows one.
//   8. The pool of a leaf's children is the node pool, from the first insertion on; that of other entries is
//      the entry pool. Live blocks of owned pools are the tree's and what the caller took there.
//
// A kind of key takes part with a policy, which has the names that containers/key_store.h lists and
//   Tree, Entry, Record, Cursor         the records
//   with_order(tree, key, use)          calls `use` with an order: order(child) compares the key of an entry
//                                       or a record with the searched key
//   has_name(tree, entry, child)        whether the entry has the key of the child
//   copy_key(entry, child)              gives it that key
//   init_keys(tree)                     the start of a tree of zeros
#ifndef MUB_BTREE_BPLUS_TREE_H
#define MUB_BTREE_BPLUS_TREE_H

#include <cstdint>
#include <utility>

#include "arrays/slot_table.h"
#include "btree/bplus_entries.h"
#include "btree/node_search.h"
#include "btree/tree_walk.h"
#include "containers/container_pools.h"
#include "mub_btree.h"
#include "pool/pool.h"

namespace mub::bplus {

// ---- places of records

// Where a key is, or where it belongs.
template <class Kind>
struct Place {
  EntryOf<Kind> *leaf;
  Spot spot;

  RecordOf<Kind> *record() const { return spot.found ? record_at<Kind>(*leaf, spot.index) : nullptr; }
};

template <class Kind, class Order>
Place<Kind> locate_below(const EntryOf<Kind> &from, const Order &order) {
  const EntryOf<Kind> *leaf = &from;
  const Spot spot = descend<RecordOf<Kind>>(leaf, order);
  return {const_cast<EntryOf<Kind> *>(leaf), spot};
}

template <class Kind>
Place<Kind> locate(const TreeOf<Kind> &tree, const EntryOf<Kind> &from, KeyOf<Kind> key) {
  return Kind::with_order(tree, key, [&](const auto &order) { return locate_below<Kind>(from, order); });
}

// ---- insertion

// Links a record with those beside it, either of which may be missing. What their links were is not read.
template <class Record>
void link(Record *prev, Record &record, Record *next) {
  record.prev = prev;
  record.next = next;
  if (prev != nullptr) prev->next = &record;
  if (next != nullptr) next->prev = &record;
}

// The record next to a leaf on one side; nullptr when there is none.
template <class Kind, int kStep>
RecordOf<Kind> *record_beside(const EntryOf<Kind> &leaf) {
  const EntryOf<Kind> *beside = leaf_beside<kStep>(&leaf);
  if (beside == nullptr) return nullptr;
  return record_at<Kind>(*beside, kStep > 0 ? 0 : beside->children.count - 1);
}

// Links a new record between its neighbours, which are taken from the leaves: links may be stale.
template <class Kind>
void link_in_leaf(EntryOf<Kind> &leaf, int64_t index) {
  const int64_t last = leaf.children.count - 1;
  RecordOf<Kind> *prev = index > 0 ? record_at<Kind>(leaf, index - 1) : record_beside<Kind, -1>(leaf);
  RecordOf<Kind> *next = index < last ? record_at<Kind>(leaf, index + 1) : record_beside<Kind, 1>(leaf);
  link(prev, *record_at<Kind>(leaf, index), next);
}

// Links a record of a leaf before the one after it, or after the one before it when it is the last, by the
// links that these have. A record alone in its leaf is left as it is.
template <class Kind>
void set_next(EntryOf<Kind> &leaf, int64_t index) {
  const int64_t last = leaf.children.count - 1;
  if (last < 1) return;
  RecordOf<Kind> &record = *record_at<Kind>(leaf, index);
  if (index < last) {
    RecordOf<Kind> *next = record_at<Kind>(leaf, index + 1);
    link(next->prev, record, next);
  } else {
    RecordOf<Kind> *prev = record_at<Kind>(leaf, last - 1);
    link(prev, record, prev->next);
  }
}

// A block of the node pool with the key; nullptr when either cannot be had.
template <class Kind>
RecordOf<Kind> *record_new(TreeOf<Kind> &tree, KeyOf<Kind> key) {
  auto *record = static_cast<RecordOf<Kind> *>(pool::take(tree.node_pool));
  if (record == nullptr) return nullptr;
  *record = {};
  if (Kind::store_key(tree, *record, key)) return record;
  pool::give(tree.node_pool, record);
  return nullptr;
}

// Makes a record and a child of the leaf of it; nullptr when memory runs out.
template <class Kind>
inline RecordOf<Kind> *add_record(TreeOf<Kind> &tree, EntryOf<Kind> &leaf, int64_t index, KeyOf<Kind> key) {
  leaf.children.pool = tree.node_pool;
  if (!slots::expand(leaf.children, leaf.children.count + 1)) return nullptr;
  RecordOf<Kind> *record = record_new<Kind>(tree, key);
  if (record == nullptr) return nullptr;
  insert_child(leaf.children, index, record);
  ++tree.count;
  return record;
}

// Finds the record of a key or makes it; nullptr when it can be neither.
template <class Kind>
RecordOf<Kind> *insert_at(TreeOf<Kind> &tree, const Place<Kind> &place, KeyOf<Kind> key, bool &inserted) {
  inserted = false;
  if (place.spot.found) return place.record();
  EntryOf<Kind> &leaf = *place.leaf;
  if (leaf.level > 0) return nullptr;  // emptied by itself
  RecordOf<Kind> *record = add_record<Kind>(tree, leaf, place.spot.index, key);
  if (record == nullptr) return nullptr;
  // Elsewhere the name is right, but for the root's, which is compared every time.
  if (place.spot.index == leaf.children.count - 1 || leaf.parent == nullptr) set_name<Kind>(tree, leaf);
  link_in_leaf<Kind>(leaf, place.spot.index);
  if (leaf.children.count >= kOrder) split<Kind>(tree, leaf);
  inserted = true;
  return record;
}

// The same after all records of the tree, of which `leaf` has the last: the only neighbour of the new one.
template <class Kind>
RecordOf<Kind> *append(TreeOf<Kind> &tree, EntryOf<Kind> &leaf, KeyOf<Kind> key, bool &inserted) {
  const int64_t count = leaf.children.count;
  RecordOf<Kind> *record = add_record<Kind>(tree, leaf, count, key);
  inserted = record != nullptr;
  if (record == nullptr) return nullptr;
  set_name<Kind>(tree, leaf);
  link<RecordOf<Kind>>(record_at<Kind>(leaf, count - 1), *record, nullptr);
  if (leaf.children.count >= kOrder) split<Kind>(tree, leaf);
  return record;
}

// Whether a key belongs after all records of the tree, of which `leaf` has the last.
template <class Kind>
bool is_after_all(const TreeOf<Kind> &tree, const EntryOf<Kind> &leaf, KeyOf<Kind> key) {
  const int64_t count = leaf.children.count;
  if (count < 1) return false;
  const RecordOf<Kind> &last = *record_at<Kind>(leaf, count - 1);
  return Kind::with_order(tree, key, [&](const auto &order) { return order(last) < 0; });
}

// Keys that come in ascending order go after the last one without a search.
template <class Kind>
RecordOf<Kind> *insert(TreeOf<Kind> &tree, KeyOf<Kind> key, bool &inserted) {
  EntryOf<Kind> *last = last_leaf(tree.root);
  if (is_after_all<Kind>(tree, *last, key)) return append<Kind>(tree, *last, key, inserted);
  return insert_at<Kind>(tree, locate<Kind>(tree, tree.root, key), key, inserted);
}

template <class Kind>
int node_set(TreeOf<Kind> &tree, KeyOf<Kind> key, RecordOf<Kind> *&record_out) {
  bool inserted;
  record_out = insert<Kind>(tree, key, inserted);
  return inserted ? 1 : 0;
}

// The same for a leaf that is known.
template <class Kind>
int node_set_in(TreeOf<Kind> &tree, EntryOf<Kind> &leaf, KeyOf<Kind> key, RecordOf<Kind> *&record_out) {
  bool inserted;
  record_out = insert_at<Kind>(tree, locate<Kind>(tree, leaf, key), key, inserted);
  return inserted ? 1 : 0;
}

template <class Kind>
int insert_value(TreeOf<Kind> &tree, KeyOf<Kind> key, uint64_t value) {
  bool inserted;
  RecordOf<Kind> *record = insert<Kind>(tree, key, inserted);
  if (inserted) record->value = value;
  return inserted ? 1 : 0;
}

template <class Kind>
int set(TreeOf<Kind> &tree, KeyOf<Kind> key, uint64_t &value_out, mub_init_fn init) {
  value_out = 0;
  bool inserted;
  RecordOf<Kind> *record = insert<Kind>(tree, key, inserted);
  if (record == nullptr) return 0;
  if (inserted) {
    record->value = word_of(pool::take(tree.value_pool));
    initialise(record->value, init);
  }
  value_out = record->value;
  return inserted ? 1 : 0;
}

// ---- one key

template <class Kind>
RecordOf<Kind> *find(const TreeOf<Kind> &tree, KeyOf<Kind> key) {
  return locate<Kind>(tree, tree.root, key).record();
}

template <class Kind>
uint64_t get(const TreeOf<Kind> &tree, KeyOf<Kind> key) {
  const RecordOf<Kind> *record = find<Kind>(tree, key);
  return record == nullptr ? 0 : record->value;
}

template <class Kind>
uint64_t update(TreeOf<Kind> &tree, KeyOf<Kind> key, uint64_t value) {
  RecordOf<Kind> *record = find<Kind>(tree, key);
  return record == nullptr ? 0 : std::exchange(record->value, value);
}

// ---- removal

template <class Entry>
bool is_only_child(const Entry &entry) {
  return entry.parent != nullptr && entry.parent->children.count == 1 && is_last(entry);
}

// The uppermost of the entries that go with `entry`: parents that have no other child.
template <class Entry>
Entry *top_of_removal(Entry &entry) {
  Entry *top = &entry;
  while (is_only_child(*top)) top = top->parent;
  return top;
}

template <class Kind>
void remove_entry(TreeOf<Kind> &tree, EntryOf<Kind> &entry) {
  EntryOf<Kind> *top = top_of_removal(entry);
  if (&entry == &tree.root) return;
  if (top == &tree.root) {
    top = entry_at(*top, 0);
    tree.root.children.count = 0;
    tree.root.level = 0;
    tree.root.children.pool = tree.node_pool;
  } else if (top->parent != nullptr) {
    slots::remove_at(top->parent->children, position(top->parent->children, top));
    set_name<Kind>(tree, *top->parent);
  }
  while (top != &entry) {
    EntryOf<Kind> *below = entry_at(*top, 0);
    return_entry<Kind>(tree, *top);
    top = below;
  }
  return_entry<Kind>(tree, entry);
}

template <class Kind>
uint64_t remove(TreeOf<Kind> &tree, KeyOf<Kind> key) {
  const Place<Kind> place = locate<Kind>(tree, tree.root, key);
  RecordOf<Kind> *record = place.record();
  if (record == nullptr) return 0;
  const uint64_t value = record->value;
  slots::remove_at(place.leaf->children, place.spot.index);
  set_name<Kind>(tree, *place.leaf);
  if (place.leaf->children.count == 0) remove_entry<Kind>(tree, *place.leaf);
  Kind::erase_key(tree, *record);
  pool::give(tree.node_pool, record);
  --tree.count;
  return value;
}

}  // namespace mub::bplus

#endif
