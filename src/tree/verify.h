// Checks the invariants of trees; linked_tree.h has them. `count` is not checked, as callers can link entries
// that already have others below them.
//
// No walk here needs memory or a count in order to end. It returns from an entry to its `parent`, which it
// has checked, and starts at the root, which has none; an entry that was reached from its one parent cannot
// be reached again from below, and the neighbours on a ring or a chain are checked before the walk follows
// them.
#ifndef MUB_TREE_VERIFY_H
#define MUB_TREE_VERIFY_H

#include "base/fault.h"
#include "containers/verify.h"
#include "mub_tree.h"
#include "tree/rings.h"

namespace mub::linked_tree {

constexpr Fault kWrongParent = "The parent of an entry is not the one that it is linked to.";

// ---- mub_tree

// The ring of the children of an entry. Each entry is the `prev` of its `next`, so the ring can only close at
// the first child.
inline Fault verify_ring(const mub_tree_entry &parent) {
  const mub_tree_entry *child = parent.first_child;
  while (child != nullptr) {
    if (child->parent != &parent) return kWrongParent;
    if (child->next == nullptr || child->next->prev != child) return "A ring of children is not closed.";
    child = child->next != parent.first_child ? child->next : nullptr;
  }
  return nullptr;
}

inline Fault verify_links(const mub_tree_entry &root) {
  if (root.parent != nullptr || root.prev != nullptr || root.next != nullptr)
    return "The root has a parent or siblings.";
  for (const auto *entry = &root; entry != nullptr; entry = rings::next_in_order(nullptr, *entry)) {
    if (const Fault fault = verify_ring(*entry)) return fault;
  }
  return nullptr;
}

// ---- mub_bitree

// The last entry of a chain of equals; nullptr if there is none, or the chain is a cycle: a second pointer,
// which follows the chain twice as fast, then meets the first.
inline const mub_bitree_entry *last_equal(const mub_bitree_entry *head) {
  const auto *ahead = head;
  for (const auto *entry = head; ahead != nullptr; entry = entry->equal) {
    if (ahead->equal == nullptr) return ahead;
    if (ahead->equal->equal == nullptr) return ahead->equal;
    ahead = ahead->equal->equal;
    if (ahead == entry) return nullptr;
  }
  return nullptr;
}

// Checks the chain to the left or right of an entry, or that of the root: all its entries must have the given
// parent.
inline Fault verify_chain(const mub_bitree_entry *head, const mub_bitree_entry *parent) {
  if (head != nullptr && last_equal(head) == nullptr) return "A chain of equals is a cycle.";
  for (const auto *entry = head; entry != nullptr; entry = entry->equal) {
    if (entry->parent != parent) return kWrongParent;
  }
  return nullptr;
}

// The chains to the left and to the right of an entry. Chains that share an entry have the same last entry.
inline Fault verify_sides(const mub_bitree_entry &entry) {
  for (const auto *side : {entry.left, entry.right}) {
    if (const Fault fault = verify_chain(side, &entry)) return fault;
  }
  const bool is_shared = entry.left != nullptr && last_equal(entry.left) == last_equal(entry.right);
  return is_shared ? "An entry is linked twice." : nullptr;
}

// The entry to visit after the chain that ends with `last`: to the right of the parent if the chain was to
// its left, else the next equal of the parent.
inline const mub_bitree_entry *next_after_chain(const mub_bitree_entry *last) {
  while (last->parent != nullptr) {
    const mub_bitree_entry &parent = *last->parent;
    const bool was_left = last_equal(parent.left) == last;
    if (was_left && parent.right != nullptr) return parent.right;
    if (parent.equal != nullptr) return parent.equal;
    last = &parent;
  }
  return nullptr;
}

inline const mub_bitree_entry *next_entry(const mub_bitree_entry &entry) {
  for (const auto *next : {entry.left, entry.right, entry.equal}) {
    if (next != nullptr) return next;
  }
  return next_after_chain(&entry);
}

inline Fault verify_links(const mub_bitree_entry &root) {
  if (const Fault fault = verify_chain(&root, nullptr)) return fault;
  for (const auto *entry = &root; entry != nullptr; entry = next_entry(*entry)) {
    if (const Fault fault = verify_sides(*entry)) return fault;
  }
  return nullptr;
}

// ---- both

template <class Tree>
Fault verify(const Tree &tree) {
  const Fault fault = verify_pools(tree);
  return fault != nullptr ? fault : verify_links(tree.root);
}

}  // namespace mub::linked_tree

#endif
