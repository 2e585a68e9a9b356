// Walks over the records of a B+-tree in key order. Part of the engine in bplus_tree.h, where its invariants
// and policy are.
//
// A cursor has a leaf and an index into its table of children. A step within the leaf changes the index; a
// step to the next leaf goes up the parents as far as needed and down again, in O(log n) at worst and a few
// loads on average. The links of the records are not followed: removals and clones leave them stale, and
// each would be a cache miss that cannot be prefetched, whereas the tables of the leaves have the addresses
// of all records.
//
// Invariant: after every function here, until the tree changes, a cursor is in one of these states:
//   on a record              0 <= index < leaf->children.count
//   before the first record  `leaf` is the first leaf that has records, `index` is -1
//   after the last record    `leaf` is the last leaf that has records, `index` is its count
//   in an empty tree         `leaf` is null, `index` is 0
//
// Threads: a cursor is written by its steps, the tree is not: cursors of several threads may walk one tree.
#ifndef MUB_BTREE_TREE_CURSOR_H
#define MUB_BTREE_TREE_CURSOR_H

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "base/prefetch.h"
#include "btree/bplus_tree.h"

namespace mub::bplus {

// How many records ahead a walk prefetches. With 1, a walk over 1e5 or 1e6 records takes 1.4 or 1.1 times as
// long, with 32 it takes 1.2 times as long (u64_walk in bench/btree_bench.cpp).
constexpr int64_t kPrefetchRecords = 8;

// A tree whose root has a lower level stays in the caches, where prefetches beyond the leaf gain nothing:
// with them, a walk over up to 8000 records takes 1.3 to 1.4 times as long. In a tree of 1e6, a walk without
// them takes 1.25 times as long (u64_walk).
constexpr int kLevelsInCache = 3;

// The first leaf that has records, or the last one; nullptr in an empty tree.
template <int kStep, class Node>
Node *outermost_leaf(const Node &root) {
  Node *leaf = kStep > 0 ? first_leaf(root) : last_leaf(root);
  return has_children(*leaf) ? leaf : leaf_beside<kStep>(leaf);
}

template <class Tree>
RecordOf<Tree> *first_record(const Tree &tree) {
  const NodeOf<Tree> *leaf = outermost_leaf<1>(tree.root);
  return leaf == nullptr ? nullptr : record_at(*leaf, 0);
}

template <class Tree>
RecordOf<Tree> *last_record(const Tree &tree) {
  const NodeOf<Tree> *leaf = outermost_leaf<-1>(tree.root);
  return leaf == nullptr ? nullptr : record_at(*leaf, leaf->children.count - 1);
}

// Prefetches for the steps after a leaf: the nearest records of the next leaf, the table of children of the
// second one, and the third one itself. Their addresses are in what was prefetched one leaf earlier.
template <int kStep, class Node>
void prefetch_beyond(const Node &leaf) {
  const Node *next = neighbour<kStep>(leaf);
  if (next == nullptr) return;
  const int64_t count = next->children.count;
  for (int64_t i = 0; i < std::min(count, kPrefetchRecords); ++i) {
    prefetch(pointer_of<void>(next->children.items[kStep > 0 ? i : count - 1 - i]));
  }
  const Node *second = neighbour<kStep>(*next);
  if (second == nullptr) return;
  prefetch(second->children.items, second->children.count * int64_t{sizeof(uint64_t)});
  const Node *third = neighbour<kStep>(*second);
  if (third == nullptr) return;
  prefetch(third);
  prefetch(&third->children.items);
}

// The type of the records that a cursor walks over.
template <class Cursor>
using RecordUnder = RecordOf<std::remove_pointer_t<decltype(Cursor::leaf)>>;

template <class Cursor>
RecordUnder<Cursor> *cursor_record(const Cursor &cursor) {
  if (cursor.leaf == nullptr) return nullptr;
  const bool is_on_record = cursor.index >= 0 && cursor.index < cursor.leaf->children.count;
  return is_on_record ? record_at(*cursor.leaf, cursor.index) : nullptr;
}

// Moves to the first record of a leaf that has records, or to its last one if kStep is -1.
template <int kStep, class Cursor, class Node>
RecordOf<Node> *enter_leaf(Cursor &cursor, Node &leaf) {
  cursor.leaf = &leaf;
  cursor.index = kStep > 0 ? 0 : leaf.children.count - 1;
  if (cursor.tree->root.level >= kLevelsInCache) prefetch_beyond<kStep>(leaf);
  return record_at(leaf, cursor.index);
}

// Moves to the next leaf in the direction of kStep; at the end of the tree, to the position past all records.
template <int kStep, class Cursor>
__attribute__((noinline)) RecordUnder<Cursor> *step_out(Cursor &cursor) {
  auto *leaf = leaf_beside<kStep>(cursor.leaf);
  if (leaf != nullptr) return enter_leaf<kStep>(cursor, *leaf);
  cursor.index = kStep > 0 ? cursor.leaf->children.count : -1;
  return nullptr;
}

template <int kStep, class Cursor>
RecordUnder<Cursor> *cursor_step(Cursor &cursor) {
  if (cursor.leaf == nullptr) return nullptr;
  const mub_arrays &records = cursor.leaf->children;
  const int64_t index = cursor.index + kStep;
  // As unsigned numbers, one comparison covers both ends.
  if (static_cast<uint64_t>(index) >= static_cast<uint64_t>(records.count)) return step_out<kStep>(cursor);
  cursor.index = index;
  const int64_t ahead = index + kPrefetchRecords * kStep;
  if (static_cast<uint64_t>(ahead) < static_cast<uint64_t>(records.count)) {
    prefetch(pointer_of<void>(records.items[ahead]));
  }
  return record_at(*cursor.leaf, index);
}

// Moves to the first record of the tree, or to the last one if kStep is -1.
template <int kStep, class Tree>
RecordOf<Tree> *cursor_start(CursorOf<Tree> &cursor, const Tree &tree) {
  NodeOf<Tree> *leaf = outermost_leaf<kStep>(tree.root);
  cursor = {&tree, nullptr, 0};
  return leaf == nullptr ? nullptr : enter_leaf<kStep>(cursor, *leaf);
}

// Moves to the record of a key, or to that of the next greater key, and returns it. If there is none, moves
// to the position after the last record, and returns nullptr.
template <class Tree>
RecordOf<Tree> *cursor_seek(CursorOf<Tree> &cursor, const Tree &tree, KeyOf<Tree> key) {
  const auto place = locate(tree, tree.root, key);
  cursor = {&tree, place.leaf, place.spot.index};
  if (place.spot.index < place.leaf->children.count) return record_at(*place.leaf, place.spot.index);
  // The key is above all records of its leaf: the last leaf, unless the caller has changed the tree.
  if (RecordOf<Tree> *record = step_out<1>(cursor)) return record;
  if (has_children(*cursor.leaf)) return nullptr;
  cursor_start<-1>(cursor, tree);
  if (cursor.leaf != nullptr) ++cursor.index;
  return nullptr;
}

// Returns the record of a key or a near one: the next greater one in the leaf that would hold the key, else
// the last one of that leaf. If that leaf is empty, the nearest record of its neighbours.
template <class Tree>
RecordOf<Tree> *find_nearest(const Tree &tree, KeyOf<Tree> key) {
  const auto place = locate(tree, tree.root, key);
  const int64_t count = place.leaf->children.count;
  if (count > 0) return record_at(*place.leaf, nearest(place.spot, count));
  CursorOf<Tree> cursor;
  RecordOf<Tree> *above = cursor_seek(cursor, tree, key);
  return above != nullptr ? above : cursor_step<-1>(cursor);
}

// A step from a record without a cursor: the record's position is found by a search for its key.
template <int kStep, class Tree>
RecordOf<Tree> *step(const Tree &tree, const RecordOf<Tree> &record) {
  CursorOf<Tree> cursor;
  const RecordOf<Tree> *found = cursor_seek(cursor, tree, Policy<Tree>::key_of(tree, record));
  return found == &record ? cursor_step<kStep>(cursor) : nullptr;
}

}  // namespace mub::bplus

#endif
