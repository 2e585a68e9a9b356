// Steps from record to record, right whatever was removed or cloned before.
//
// A record does not say which leaf it is in. So the tree notes where the last step stood, and the next one looks there
// first; a note that does not hold the record, because the tree has changed or a walk begins, costs a search.
#ifndef MUB_BTREE_RECORD_WALK_H
#define MUB_BTREE_RECORD_WALK_H

#include "btree/bplus_tree.h"

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

// The leaf where the last step stood; nullptr without one. The root of a tree of one leaf is known and not noted.
template <class Kind>
EntryOf<Kind> *noted_leaf(const TreeOf<Kind> &tree) {
  if (tree.root.children.items == nullptr) return nullptr;
  return tree.root.level < 1 ? const_cast<EntryOf<Kind> *>(&tree.root)
                             : record_of<EntryOf<Kind>>(walk_note(tree)[0]);
}

template <class Kind>
RecordOf<Kind> *stand_at(const TreeOf<Kind> &tree, const EntryOf<Kind> &leaf, int64_t index) {
  uint64_t *note = walk_note(tree);
  note[0] = tree.root.level < 1 ? 0 : word_of(&leaf);
  note[1] = static_cast<uint64_t>(index);
  return record_at<Kind>(leaf, index);
}

// One step within the noted leaf; nullptr when the note does not have the record, and at the leaf's end.
template <class Kind, int kStep>
RecordOf<Kind> *step_in_leaf(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const EntryOf<Kind> *leaf = noted_leaf<Kind>(tree);
  if (leaf == nullptr) return nullptr;
  uint64_t *note = walk_note(tree);
  const auto count = static_cast<uint64_t>(leaf->children.count);
  const uint64_t index = note[1];
  const uint64_t next = index + static_cast<uint64_t>(int64_t{kStep});  // wraps below 0
  if (index >= count || next >= count || leaf->children.items[index] != word_of(&record)) return nullptr;
  note[1] = next;
  return record_of<RecordOf<Kind>>(leaf->children.items[next]);
}

// Where a record is: elsewhere in the noted leaf, or wherever its key leads.
template <class Kind>
Place<Kind> place_of(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  EntryOf<Kind> *leaf = noted_leaf<Kind>(tree);
  const int64_t index = leaf == nullptr ? 0 : position(leaf->children, &record);
  if (leaf != nullptr && index < leaf->children.count) return {leaf, {index, true}};
  return locate<Kind>(tree, tree.root, Kind::key_of(tree, record));
}

template <int kStep, class Entry>
const Entry *neighbour(const Entry *leaf) {
  if (leaf == nullptr) return nullptr;
  return kStep > 0 ? next_leaf(*leaf) : previous_leaf(*leaf);
}

// Fetches the records of a leaf that a walk comes to next.
template <class Entry>
void prefetch_records(const Entry *leaf) {
  if (leaf == nullptr) return;
  for (int64_t i = 0; i < leaf->children.count; ++i) {
    __builtin_prefetch(record_of<void>(leaf->children.items[i]));
  }
}

template <class Kind, int kStep>
__attribute__((noinline)) RecordOf<Kind> *step_far(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const Place<Kind> place = place_of<Kind>(tree, record);
  if (!place.spot.found) return nullptr;
  const int64_t index = place.spot.index + kStep;
  if (index >= 0 && index < place.leaf->children.count) return stand_at<Kind>(tree, *place.leaf, index);
  const EntryOf<Kind> *leaf = neighbour<kStep>(place.leaf);
  if (leaf == nullptr) return nullptr;
  prefetch_records(neighbour<kStep>(leaf));
  return stand_at<Kind>(tree, *leaf, kStep > 0 ? 0 : leaf->children.count - 1);
}

template <class Kind, int kStep>
RecordOf<Kind> *step(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  RecordOf<Kind> *next = step_in_leaf<Kind, kStep>(tree, record);
  return next != nullptr ? next : step_far<Kind, kStep>(tree, record);
}

}  // namespace mub::bplus

#endif
