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

template <class Kind>
RecordOf<Kind> *stand_at(const TreeOf<Kind> &tree, const EntryOf<Kind> &leaf, int64_t index) {
  uint64_t *note = walk_note(tree);
  // The root of a tree of one leaf is known; its address is not noted, for a tree that is swapped.
  note[0] = tree.root.level < 1 ? 0 : word_of(&leaf);
  note[1] = static_cast<uint64_t>(index);
  return record_at<Kind>(leaf, index);
}

// Where a record is that the note does not have: elsewhere in its leaf, or wherever its key leads.
template <class Kind>
__attribute__((noinline)) Place<Kind> look_for(const TreeOf<Kind> &tree, const EntryOf<Kind> *leaf,
                                               const RecordOf<Kind> &record) {
  if (leaf != nullptr) {
    const int64_t index = position(leaf->children, &record);
    if (index < leaf->children.count) return {const_cast<EntryOf<Kind> *>(leaf), {index, true}};
  }
  return locate<Kind>(tree, Kind::key_of(tree, record));
}

template <class Kind>
Place<Kind> place_of(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  if (tree.root.children.items == nullptr) return {nullptr, {0, false}};
  const uint64_t *note = walk_note(tree);
  const auto *leaf = tree.root.level < 1 ? &tree.root : record_of<EntryOf<Kind>>(note[0]);
  const auto index = static_cast<int64_t>(note[1]);
  if (leaf != nullptr && index < leaf->children.count && leaf->children.items[index] == word_of(&record)) {
    return {const_cast<EntryOf<Kind> *>(leaf), {index, true}};
  }
  return look_for<Kind>(tree, leaf, record);
}

template <class Kind>
RecordOf<Kind> *next_record(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const Place<Kind> place = place_of<Kind>(tree, record);
  if (!place.spot.found) return nullptr;
  const int64_t index = place.spot.index + 1;
  if (index < place.leaf->children.count) return stand_at<Kind>(tree, *place.leaf, index);
  const EntryOf<Kind> *leaf = next_leaf(*place.leaf);
  return leaf == nullptr ? nullptr : stand_at<Kind>(tree, *leaf, 0);
}

template <class Kind>
RecordOf<Kind> *previous_record(const TreeOf<Kind> &tree, const RecordOf<Kind> &record) {
  const Place<Kind> place = place_of<Kind>(tree, record);
  if (!place.spot.found) return nullptr;
  if (place.spot.index > 0) return stand_at<Kind>(tree, *place.leaf, place.spot.index - 1);
  const EntryOf<Kind> *leaf = previous_leaf(*place.leaf);
  return leaf == nullptr ? nullptr : stand_at<Kind>(tree, *leaf, leaf->children.count - 1);
}

}  // namespace mub::bplus

#endif
