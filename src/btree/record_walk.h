// Steps from record to record, right whatever was removed or cloned before.
//
// While the links of a tree hold, small trees are walked along them. In large ones they lead from one miss of the cache to
// the next; there, and where links are stale, a walk goes along the leaves, whose tables tell ahead what to fetch.
//
// A record does not say which leaf it is in. So the tree notes the way from its root to where the last step stood, and
// the next one follows it down, which compares no keys. Only a way that ends at the very record counts; any other, because
// the tree has changed or a walk begins, costs a search. So a noted way may be any, and nothing has to keep it true.
#ifndef MUB_BTREE_RECORD_WALK_H
#define MUB_BTREE_RECORD_WALK_H

#include <algorithm>
#include <cstdint>

#include "btree/bplus_tree.h"
#include "btree/tree_note.h"
#include "core/prefetch.h"

namespace mub::bplus {

template <class Kind>
RecordOf<Kind> *first_record(const TreeOf<Kind> &tree) {
  const EntryOf<Kind> *leaf = first_leaf(tree.root);
  return leaf->children.count < 1 ? nullptr : record_at<Kind>(*leaf, 0);
}

template <class Kind>
RecordOf<Kind> *last_record(const TreeOf<Kind> &tree) {
  const EntryOf<Kind> *leaf = last_leaf(tree.root);
  return leaf->children.count < 1 ? nullptr : record_at<Kind>(*leaf, leaf->children.count - 1);
}

// How many records ahead a walk fetches.
constexpr int64_t kPrefetchRecords = 8;

// Up to so many records, the links of each lead to what is still in a near cache. Above, a walk gains more from fetching
// ahead than it loses on finding its place.
constexpr int64_t kFewRecords = 0x2000;

// Trees of fewer levels stay in the caches, and a walk only loses by fetching ahead.
constexpr int kLevelsInCache = 3;

template <class Entry>
uint64_t way_to(const Entry &leaf, int64_t index) {
  auto way = static_cast<uint64_t>(index);
  const Entry *entry = &leaf;
  for (int level = 1; level <= kHighestLevel && entry->parent != nullptr; ++level) {
    way |= static_cast<uint64_t>(position(entry->parent->children, entry)) << level * kIndexBits;
    entry = entry->parent;
  }
  return way;
}

// The leaf that a way leads to; nullptr when it leads nowhere.
template <class Entry>
const Entry *leaf_on(uint64_t way, const Entry &root) {
  if (root.level > kHighestLevel) return nullptr;
  const Entry *entry = &root;
  for (int shift = root.level * kIndexBits; shift > 0; shift -= kIndexBits) {
    const uint64_t index = way >> shift & kIndexMask;
    if (index >= static_cast<uint64_t>(entry->children.count)) return nullptr;
    entry = record_of<Entry>(entry->children.items[index]);
  }
  return entry;
}

// One step within the noted leaf; nullptr when the way does not end at the record, and at the leaf's end.
template <class Kind, int kStep>
RecordOf<Kind> *step_in_leaf(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const uint64_t way = noted_way(tree);
  const EntryOf<Kind> *leaf = leaf_on(way, tree.root);
  if (leaf == nullptr) return nullptr;
  constexpr auto step = static_cast<uint64_t>(int64_t{kStep});
  const auto count = static_cast<uint64_t>(leaf->children.count);
  const uint64_t index = way & kIndexMask;
  const uint64_t next = index + step;  // wraps below 0
  if (index >= count || next >= count || leaf->children.items[index] != word_of(&record)) return nullptr;
  note_way(tree, way + step);
  const uint64_t ahead = next + uint64_t{kPrefetchRecords} * step;
  if (ahead < count) prefetch(record_of<void>(leaf->children.items[ahead]));
  return record_of<RecordOf<Kind>>(leaf->children.items[next]);
}

// Where a record is: elsewhere in the noted leaf, or wherever its key leads.
template <class Kind>
Place<Kind> place_of(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const EntryOf<Kind> *leaf = leaf_on(noted_way(tree), tree.root);
  const int64_t index = leaf == nullptr ? 0 : position(leaf->children, &record);
  if (leaf != nullptr && index < leaf->children.count)
    return {const_cast<EntryOf<Kind> *>(leaf), {index, true}};
  return locate<Kind>(tree, tree.root, Kind::key_of(tree, record));
}

template <class Kind>
RecordOf<Kind> *stand_at(const TreeOf<Kind> &tree, const EntryOf<Kind> &leaf, int64_t index) {
  note_way(tree, way_to(leaf, index));
  return record_at<Kind>(leaf, index);
}

template <int kStep, class Entry>
const Entry *neighbour(const Entry *leaf) {
  if (leaf == nullptr) return nullptr;
  return kStep > 0 ? next_leaf(*leaf) : previous_leaf(*leaf);
}

// Fetches what a walk comes to next: the first records of the leaf beside, the table of the one behind it, the entry of
// the third. Each is found in what was fetched a leaf ago.
template <int kStep, class Entry>
void prefetch_beyond(const Entry &leaf) {
  const Entry *second = neighbour<kStep>(&leaf);
  if (second == nullptr) return;
  const int64_t count = second->children.count;
  for (int64_t i = 0; i < std::min(count, kPrefetchRecords); ++i) {
    prefetch(record_of<void>(second->children.items[kStep > 0 ? i : count - 1 - i]));
  }
  const Entry *third = neighbour<kStep>(second);
  if (third == nullptr) return;
  prefetch(third->children.items, third->children.count * int64_t{sizeof(uint64_t)});
  const Entry *fourth = neighbour<kStep>(third);
  if (fourth == nullptr) return;
  prefetch(fourth);
  prefetch(&fourth->children.items);
}

// The nearest leaf to one side that is not empty; only entries that were emptied by themselves are.
template <int kStep, class Entry>
const Entry *leaf_beside(const Entry *leaf) {
  do {
    leaf = neighbour<kStep>(leaf);
  } while (leaf != nullptr && !has_children(leaf));
  return leaf;
}

template <class Kind, int kStep>
__attribute__((noinline)) RecordOf<Kind> *step_far(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const Place<Kind> place = place_of<Kind>(tree, record);
  if (!place.spot.found) return nullptr;
  const int64_t index = place.spot.index + kStep;
  if (index >= 0 && index < place.leaf->children.count) return stand_at<Kind>(tree, *place.leaf, index);
  const EntryOf<Kind> *leaf = leaf_beside<kStep, EntryOf<Kind>>(place.leaf);
  if (leaf == nullptr) return nullptr;
  if (tree.root.level >= kLevelsInCache) prefetch_beyond<kStep>(*leaf);
  return stand_at<Kind>(tree, *leaf, kStep > 0 ? 0 : leaf->children.count - 1);
}

template <class Kind, int kStep>
RecordOf<Kind> *step(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  if (tree.count <= kFewRecords && links_hold(tree)) return kStep > 0 ? record.next : record.prev;
  RecordOf<Kind> *next = step_in_leaf<Kind, kStep>(tree, record);
  return next != nullptr ? next : step_far<Kind, kStep>(tree, record);
}

}  // namespace mub::bplus

#endif
