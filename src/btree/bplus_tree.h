// The engine of the B-trees: B+-trees whose nodes have up to 31 children. The records, each a key with its
// value, are in the leaves; every leaf and inner node has a table of pointers to its children, and the key of
// the last one. A node splits at its 32nd child and is removed when it becomes empty; there is no other
// rebalancing.
//
//   tree ── root (Node, embedded)               level 2
//             children.items ──► [0] [1] … ──► Node              level 1
//                                     children.items ──► [0] [1] … ──► Node (leaf)       level 0
//                                                             children.items ──► [0] [1] …
//                                                                                 │   │
//           Record (a key with its value)                                         ▼   ▼
//             prev, next: the neighbours in key order                       Record ⇄ Record
//
// A node is a leaf or an inner node; its type is `Node` (public: mub_btree_entry). A record's public type is
// mub_btree_node, and its pool is `node_pool`. The name of a node is the key that it has from its last child.
//
// Invariants:
//   1. The children of a node of level L > 0 are nodes of level L - 1; those of a leaf (level 0) are records.
//      Every node but the root has a child. A root without children is a leaf.
//   2. The parent of a node is the node that lists it; the root has none.
//   3. The name of every node but the root is the key of its last child, with the same offset. No search
//      reads the name of the root: removals do not lower its offset, and a root that removals have emptied
//      keeps its last name.
//   4. The keys of the records ascend, in each leaf and from leaf to leaf; no two are equal.
//   5. A node has at most 31 children, unless it could not split, for want of memory or an entry pool.
//   6. `count` is the number of records.
//   7. `prev` and `next` of the records are their neighbours in key order if nothing was removed since the
//      tree was last empty, and it is not a clone. Otherwise they may point anywhere; only set_next()
//      follows them.
//   8. Records are live blocks of the node pool; nodes, except the root, are live blocks of the entry pool.
//      From the first insertion on, `children.pool` is the node pool in leaves and the entry pool in inner
//      nodes. Nothing allocates from it, but callers can see it.
//   9. With byte-string keys, the keys of the records fill the key stream without gaps, and do not overlap.
// They hold until a caller uses the low layer: entry_new, split_entry and split_node make nodes that no
// parent lists, splits of fewer than two children leave an empty one, the set_ functions and adjust_t change
// single fields, insert_t trusts its caller to pass the right leaf, and remove_all_entry, free_all_entry and
// clone_entry change neither the count nor the nodes above. Searches and walks allow for empty nodes.
// remove_entry_t loses the children of a node that is not empty. Invariant 4 also assumes that neither
// `nocase`, the locale of tolower() nor `key_type` changes while there are records, and that no key is a NaN.
//
// Threads: functions that take a const tree write nothing, so readers may run in parallel, each with cursors
// of its own. The exceptions are set_name() and set_children_pools(), which write to the nodes given, and
// clone(), which takes blocks from the source's external pools.
//
// The policy provides what containers/key_store.h lists, where key_of, reset_key and prefetch_key also accept
// nodes, and the following. Functions that are given a node alone reach it through the node's type: the
// policy of a node is that of its tree.
//   Node, Record, Cursor                the public structs
//   with_order(tree, key, use)          returns use(order), where order(child) compares the key of a node
//                                       or a record with the wanted key
//   order.with_key(key)                 the same order for another wanted key
//   Order::kByQuarters                  whether node_search.h searches without branches
//   name_equals_key_of(tree, node, child)
//                                       whether the name of the node is equal to the key of the child
//   name_refers_to_key_of(node, child)  whether the name is that key itself, at the same offset
//   copy_key(node, child)               gives the node the key of the child as its name
//   init_keys(tree)                     initialises fields of the tree that are not 0 at the start
//
// Parts of the engine: bplus_nodes.h (nodes and splits), node_search.h (searches), batch_get.h (look-ups of
// many keys), tree_walk.h (walks over nodes), tree_cursor.h (walks over records), bplus_whole.h (whole
// trees), bplus_clone.h and verify.h.
#ifndef MUB_BTREE_BPLUS_TREE_H
#define MUB_BTREE_BPLUS_TREE_H

#include <cstdint>
#include <utility>

#include "arrays/slot_table.h"
#include "btree/bplus_nodes.h"
#include "btree/node_search.h"
#include "btree/tree_walk.h"
#include "containers/container_pools.h"
#include "mub_btree.h"
#include "pool/pool.h"

namespace mub::bplus {

// ---- places of records

// The place of a key: where its record is, or where a new one belongs.
template <class Node>
struct Place {
  Node *leaf;
  Spot spot;

  RecordOf<Node> *record() const { return spot.found ? record_at(*leaf, spot.index) : nullptr; }
};

template <class Node, class Order>
Place<Node> locate_below(const Node &from, const Order &order) {
  const Node *leaf = &from;
  const Spot spot = descend<RecordOf<Node>>(leaf, order);
  return {const_cast<Node *>(leaf), spot};
}

template <class Tree>
Place<NodeOf<Tree>> locate(const Tree &tree, const NodeOf<Tree> &from, KeyOf<Tree> key) {
  return Policy<Tree>::with_order(tree, key, [&](const auto &order) { return locate_below(from, order); });
}

// ---- insertion

// Links a record between two others, either of which may be null. Their old links are not read.
template <class Record>
void link(Record *prev, Record &record, Record *next) {
  record.prev = prev;
  record.next = next;
  if (prev != nullptr) prev->next = &record;
  if (next != nullptr) next->prev = &record;
}

// The record next to a leaf on one side; nullptr when there is none.
template <int kStep, class Node>
RecordOf<Node> *record_beside(const Node &leaf) {
  const Node *beside = leaf_beside<kStep>(&leaf);
  if (beside == nullptr) return nullptr;
  return record_at(*beside, kStep > 0 ? 0 : beside->children.count - 1);
}

// Links a new record between its neighbours. They are found in the leaves, because links may be stale.
template <class Node>
void link_in_leaf(Node &leaf, int64_t index) {
  const int64_t last = leaf.children.count - 1;
  RecordOf<Node> *prev = index > 0 ? record_at(leaf, index - 1) : record_beside<-1>(leaf);
  RecordOf<Node> *next = index < last ? record_at(leaf, index + 1) : record_beside<1>(leaf);
  link(prev, *record_at(leaf, index), next);
}

// Links a record of a leaf between the next record and that record's `prev` or, if it is the last one of the
// leaf, between the previous record and that record's `next`. Does nothing if it is alone in the leaf.
template <class Node>
void set_next(Node &leaf, int64_t index) {
  const int64_t last = leaf.children.count - 1;
  if (last < 1) return;
  RecordOf<Node> &record = *record_at(leaf, index);
  if (index < last) {
    RecordOf<Node> *next = record_at(leaf, index + 1);
    link(next->prev, record, next);
  } else {
    RecordOf<Node> *prev = record_at(leaf, last - 1);
    link(prev, record, prev->next);
  }
}

// Returns a new record with the key, not yet linked or listed; nullptr if memory runs out.
template <class Tree>
RecordOf<Tree> *new_record(Tree &tree, KeyOf<Tree> key) {
  auto *record = static_cast<RecordOf<Tree> *>(pool::take(tree.node_pool));
  if (record == nullptr) return nullptr;
  *record = {};
  if (Policy<Tree>::store_key(tree, *record, key)) return record;
  pool::give(tree.node_pool, record);
  return nullptr;
}

// Adds a new record to a leaf, and counts it; nullptr if memory runs out.
template <class Tree>
inline RecordOf<Tree> *add_record(Tree &tree, NodeOf<Tree> &leaf, int64_t index, KeyOf<Tree> key) {
  leaf.children.pool = tree.node_pool;
  if (!slots::expand(leaf.children, leaf.children.count + 1)) return nullptr;
  RecordOf<Tree> *record = new_record(tree, key);
  if (record == nullptr) return nullptr;
  insert_child(leaf.children, index, record);
  ++tree.count;
  return record;
}

// Finds the record of a key, whose place is known, or adds it; nullptr if memory runs out.
template <class Tree>
RecordOf<Tree> *insert_at(Tree &tree, const Place<NodeOf<Tree>> &place, KeyOf<Tree> key, bool &inserted) {
  inserted = false;
  if (place.spot.found) return place.record();
  NodeOf<Tree> &leaf = *place.leaf;
  if (leaf.level > 0) return nullptr;  // an inner node whose children were removed by the caller
  RecordOf<Tree> *record = add_record(tree, leaf, place.spot.index, key);
  if (record == nullptr) return nullptr;
  // Only a new last record changes the name. A root that is a leaf may have an outdated name: it is set every
  // time.
  if (place.spot.index == leaf.children.count - 1 || leaf.parent == nullptr) set_name(tree, leaf);
  link_in_leaf(leaf, place.spot.index);
  if (leaf.children.count >= kSplitCount) split(tree, leaf);
  inserted = true;
  return record;
}

// Adds a record that follows all others: its only neighbour is the last record of the last leaf, `leaf`.
template <class Tree>
RecordOf<Tree> *append(Tree &tree, NodeOf<Tree> &leaf, KeyOf<Tree> key, bool &inserted) {
  const int64_t count = leaf.children.count;
  RecordOf<Tree> *record = add_record(tree, leaf, count, key);
  inserted = record != nullptr;
  if (record == nullptr) return nullptr;
  set_name(tree, leaf);
  link<RecordOf<Tree>>(record_at(leaf, count - 1), *record, nullptr);
  if (leaf.children.count >= kSplitCount) split(tree, leaf);
  return record;
}

// Whether a key belongs after all records of the tree. `leaf` is the last leaf.
template <class Tree>
bool is_after_all(const Tree &tree, const NodeOf<Tree> &leaf, KeyOf<Tree> key) {
  const int64_t count = leaf.children.count;
  if (count < 1) return false;
  const RecordOf<Tree> &last = *record_at(leaf, count - 1);
  return Policy<Tree>::with_order(tree, key, [&](const auto &order) { return order(last) < 0; });
}

// Keys that are inserted in ascending order are appended without a search.
template <class Tree>
RecordOf<Tree> *insert(Tree &tree, KeyOf<Tree> key, bool &inserted) {
  NodeOf<Tree> *last = last_leaf(tree.root);
  if (is_after_all(tree, *last, key)) return append(tree, *last, key, inserted);
  return insert_at(tree, locate(tree, tree.root, key), key, inserted);
}

template <class Tree>
int insert_record(Tree &tree, KeyOf<Tree> key, RecordOf<Tree> *&record_out) {
  bool inserted;
  record_out = insert(tree, key, inserted);
  return inserted ? 1 : 0;
}

// The same, but searches from the given node instead of the root.
template <class Tree>
int insert_record_from(Tree &tree, NodeOf<Tree> &from, KeyOf<Tree> key, RecordOf<Tree> *&record_out) {
  bool inserted;
  record_out = insert_at(tree, locate(tree, from, key), key, inserted);
  return inserted ? 1 : 0;
}

template <class Tree>
int insert_value(Tree &tree, KeyOf<Tree> key, uint64_t value) {
  bool inserted;
  RecordOf<Tree> *record = insert(tree, key, inserted);
  if (inserted) record->value = value;
  return inserted ? 1 : 0;
}

template <class Tree>
int set(Tree &tree, KeyOf<Tree> key, uint64_t &value_out, mub_init_fn init) {
  value_out = 0;
  bool inserted;
  RecordOf<Tree> *record = insert(tree, key, inserted);
  if (record == nullptr) return 0;
  if (inserted) {
    record->value = word_of(pool::take(tree.value_pool));
    initialise(record->value, init);
  }
  value_out = record->value;
  return inserted ? 1 : 0;
}

// ---- one key

template <class Tree>
RecordOf<Tree> *find(const Tree &tree, KeyOf<Tree> key) {
  return locate(tree, tree.root, key).record();
}

template <class Tree>
uint64_t get(const Tree &tree, KeyOf<Tree> key) {
  const RecordOf<Tree> *record = find(tree, key);
  return record == nullptr ? 0 : record->value;
}

template <class Tree>
uint64_t update(Tree &tree, KeyOf<Tree> key, uint64_t value) {
  RecordOf<Tree> *record = find(tree, key);
  return record == nullptr ? 0 : std::exchange(record->value, value);
}

// ---- removal

template <class Node>
bool is_only_child(const Node &node) {
  return node.parent != nullptr && node.parent->children.count == 1 && is_last(node);
}

// Returns the uppermost node that is left without records when `node` is removed: an ancestor without other
// children, or `node` itself.
template <class Node>
Node *top_of_removal(Node &node) {
  Node *top = &node;
  while (is_only_child(*top)) top = top->parent;
  return top;
}

// Removes a node with the ancestors that would be left without children, and returns them to the entry pool.
// Its own children are not returned. The root stays: it becomes an empty leaf if nothing else is left.
template <class Tree>
void remove_node(Tree &tree, NodeOf<Tree> &node) {
  NodeOf<Tree> *top = top_of_removal(node);
  if (&node == &tree.root) return;
  if (top == &tree.root) {
    top = node_at(*top, 0);
    tree.root.children.count = 0;
    tree.root.level = 0;
    tree.root.children.pool = tree.node_pool;
  } else if (top->parent != nullptr) {
    slots::remove_at(top->parent->children, position(top->parent->children, top));
    set_name(tree, *top->parent);
  }
  while (top != &node) {
    NodeOf<Tree> *below = node_at(*top, 0);
    return_node(tree, *top);
    top = below;
  }
  return_node(tree, node);
}

template <class Tree>
uint64_t remove(Tree &tree, KeyOf<Tree> key) {
  const auto place = locate(tree, tree.root, key);
  RecordOf<Tree> *record = place.record();
  if (record == nullptr) return 0;
  const uint64_t value = record->value;
  slots::remove_at(place.leaf->children, place.spot.index);
  set_name(tree, *place.leaf);
  if (place.leaf->children.count == 0) remove_node(tree, *place.leaf);
  Policy<Tree>::erase_key(tree, *record);
  pool::give(tree.node_pool, record);
  --tree.count;
  return value;
}

}  // namespace mub::bplus

#endif
