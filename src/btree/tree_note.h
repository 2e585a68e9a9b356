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

// A note with the flag before it.
template <class Tree>
struct WayNote {
  static constexpr size_t kOffset = offsetof(Tree, owns_entry_pool);
  static_assert(offsetof(Tree, node_pool) - kOffset == sizeof(uint64_t));
};

template <class Tree>
struct LinksNote {
  static constexpr size_t kOffset = offsetof(Tree, owns_node_pool);
  static_assert(offsetof(Tree, value_pool) - kOffset == sizeof(uint64_t));
};

template <template <class> class Note, class Tree>
uint64_t word_with(const Tree &tree) {
  return bytes::load<uint64_t>(reinterpret_cast<const uint8_t *>(&tree) + Note<Tree>::kOffset);
}

template <template <class> class Note, class Tree>
void write_note(const Tree &tree, uint64_t bits) {
  auto *place = const_cast<uint8_t *>(reinterpret_cast<const uint8_t *>(&tree)) + Note<Tree>::kOffset;
  bytes::store(place, (word_with<Note>(tree) & ~kNoteMask) | (bits << kNoteShift & kNoteMask));
}

// ---- the way

// A way has the index of a child for every level, the one in the leaf lowest. Indexes of over-full entries and levels
// above the highest are lost.
constexpr int kIndexBits = 5;
constexpr uint64_t kIndexMask = (1 << kIndexBits) - 1;
constexpr int kHighestLevel = 8;
static_assert((kHighestLevel + 1) * kIndexBits <= kNoteBits);

template <class Tree>
uint64_t noted_way(const Tree &tree) {
  return (word_with<WayNote>(tree) & kNoteMask) >> kNoteShift;
}

template <class Tree>
void note_way(const Tree &tree, uint64_t way) {
  write_note<WayNote>(tree, way);
}

// ---- the links

template <class Tree>
uint64_t seal_of(const Tree &tree) {
  return word_of(&tree) + word_of(tree.node_pool);
}

// Whether nothing but insertions is known to have happened since the tree was empty.
template <class Tree>
bool links_hold(const Tree &tree) {
  return ((word_with<LinksNote>(tree) ^ seal_of(tree) << kNoteShift) & kNoteMask) == 0;
}

template <class Tree>
void note_links(Tree &tree, bool hold) {
  write_note<LinksNote>(tree, hold ? seal_of(tree) : 0);
}

}  // namespace mub::bplus

#endif
