// What a tree remembers beside its fields: the way to where a walk stands, and whether the links of its records hold.
//
// The notes lie in bytes that no field uses, behind owns_entry_pool and owns_node_pool. Each is read and written with its
// flag, as one word: a load of bytes that were stored in parts would wait for all that goes before. Neither has to be kept:
// who copies a record field by field leaves such bytes out. So a way may be any; and that the links hold is a seal made of
// the tree's own address and its node pool, which other bytes are not.
#ifndef MUB_BTREE_TREE_NOTE_H
#define MUB_BTREE_TREE_NOTE_H

#include <cstddef>
#include <cstdint>

#include "core/bytes.h"
#include "core/value_pool.h"

namespace mub::bplus {

constexpr int kFlagBits = 16;
constexpr int kNoteBits = 64 - kFlagBits;
constexpr int kNoteShift = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? kFlagBits : 0;
constexpr uint64_t kNoteMask = ((uint64_t{1} << kNoteBits) - 1) << kNoteShift;

// The flag, at its place in the record, and the note behind it.
template <class Tree>
uint64_t word_with_note(const Tree &tree, size_t place) {
  return bytes::load<uint64_t>(reinterpret_cast<const uint8_t *>(&tree) + place);
}

template <class Tree>
void write_note(const Tree &tree, size_t place, uint64_t bits) {
  const uint64_t word = (word_with_note(tree, place) & ~kNoteMask) | (bits << kNoteShift & kNoteMask);
  bytes::store(const_cast<uint8_t *>(reinterpret_cast<const uint8_t *>(&tree)) + place, word);
}

// ---- the way

// A way has the index of a child for every level, the one in the leaf lowest. Indexes of over-full entries and levels
// above the highest are lost.
constexpr int kIndexBits = 5;
constexpr uint64_t kIndexMask = (1 << kIndexBits) - 1;
constexpr int kHighestLevel = 8;
static_assert((kHighestLevel + 1) * kIndexBits <= kNoteBits);

template <class Tree>
constexpr size_t kWayPlace = offsetof(Tree, owns_entry_pool);

template <class Tree>
uint64_t noted_way(const Tree &tree) {
  static_assert(offsetof(Tree, node_pool) - kWayPlace<Tree> == sizeof(uint64_t));
  return (word_with_note(tree, kWayPlace<Tree>) & kNoteMask) >> kNoteShift;
}

template <class Tree>
void note_way(const Tree &tree, uint64_t way) {
  write_note(tree, kWayPlace<Tree>, way);
}

// ---- the links

template <class Tree>
constexpr size_t kSealPlace = offsetof(Tree, owns_node_pool);

template <class Tree>
uint64_t seal_of(const Tree &tree) {
  return word_of(&tree) + word_of(tree.node_pool);
}

// Whether nothing but insertions is known to have happened since the tree was empty.
template <class Tree>
bool links_hold(const Tree &tree) {
  static_assert(offsetof(Tree, value_pool) - kSealPlace<Tree> == sizeof(uint64_t));
  return ((word_with_note(tree, kSealPlace<Tree>) ^ seal_of(tree) << kNoteShift) & kNoteMask) == 0;
}

template <class Tree>
void note_links(Tree &tree, bool hold) {
  write_note(tree, kSealPlace<Tree>, hold ? seal_of(tree) : 0);
}

}  // namespace mub::bplus

#endif
