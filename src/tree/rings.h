// The links of mub_tree: the children of an entry form a ring, so that one field leads to the first and the
// last child. Part of the engine in linked_tree.h, where its invariants are.
//
//   parent ──first_child──► a ⇄ b ⇄ c ⇄ (a)      prev of the first child is the last
//
// Threads: only the linking functions write; steps and orders may run in parallel.
#ifndef MUB_TREE_RINGS_H
#define MUB_TREE_RINGS_H

#include <cstdint>

#include "base/prefetch.h"
#include "mub_tree.h"

namespace mub::rings {

using Entry = mub_tree_entry;

// ---- linking

// Links an entry between two neighbours, which are the same entry in a ring of one.
inline void link_between(Entry &before, Entry &entry, Entry &after) {
  entry.prev = &before;
  entry.next = &after;
  before.next = &entry;
  after.prev = &entry;
}

inline void link_last(Entry &parent, Entry &child) {
  child.parent = &parent;
  if (parent.first_child == nullptr) parent.first_child = child.prev = child.next = &child;
  Entry &first = *parent.first_child;
  if (&first != &child) link_between(*first.prev, child, first);
}

inline void link_before(Entry &sibling, Entry &entry) {
  Entry &parent = *sibling.parent;
  entry.parent = &parent;
  link_between(*sibling.prev, entry, sibling);
  if (parent.first_child == &sibling) parent.first_child = &entry;
}

inline void clear_links(Entry &entry) { entry.parent = entry.prev = entry.next = nullptr; }

inline void unlink(Entry &entry) {
  Entry *&first = entry.parent->first_child;
  if (first == &entry) first = entry.next != &entry ? entry.next : nullptr;
  entry.prev->next = entry.next;
  entry.next->prev = entry.prev;
  clear_links(entry);
}

// ---- neighbours

inline Entry *last_child(const Entry &entry) {
  return entry.first_child != nullptr ? entry.first_child->prev : nullptr;
}

inline Entry *next_sibling(const Entry &entry) {
  return entry.parent == nullptr || entry.next == entry.parent->first_child ? nullptr : entry.next;
}

inline Entry *prev_sibling(const Entry &entry) {
  return entry.parent == nullptr || &entry == entry.parent->first_child ? nullptr : entry.prev;
}

template <class Visit>
void for_each_child(const Entry &parent, Visit visit) {
  Entry *child = parent.first_child;
  while (child != nullptr) {
    Entry *next = child->next;
    visit(*child);
    child = next != parent.first_child ? next : nullptr;
  }
}

// A walk visits the sibling later, and the entries of a large tree are scattered in memory. Without this and
// the prefetches of next_in_order(), a walk takes 1.3, 3.1 and 2.0 times as long at 1e3, 1e5 and 1e6 entries,
// and a clone of 1e6 takes 1.1 times as long (bench/tree_bench.cpp).
inline void prefetch_sibling(const Entry &entry) { prefetch(entry.next); }

// ---- document order

// The next entry in document order after this one and all below it; nullptr if there is none below `bound`.
inline Entry *next_past(const Entry *bound, const Entry &entry) {
  for (const Entry *at = &entry; at != bound && at->parent != nullptr; at = at->parent) {
    if (Entry *next = next_sibling(*at)) return next;
  }
  return nullptr;
}

// Reads the sibling: its fields are needed to prefetch beyond it, and reading takes no longer than
// prefetching.
inline Entry *next_in_order(const Entry *bound, const Entry &entry) {
  if (const Entry *sibling = entry.next) {
    prefetch(sibling->first_child);
    prefetch(sibling->next);
  }
  return entry.first_child != nullptr ? entry.first_child : next_past(bound, entry);
}

// The position of an entry among its siblings, from 1; 1 for the root, too.
inline int64_t index_of(const Entry &entry) {
  int64_t index = 1;
  for (const Entry *at = prev_sibling(entry); at != nullptr; at = prev_sibling(*at)) ++index;
  return index;
}

// The number of entries from the top down to this one.
inline int64_t levels(const Entry &entry) {
  int64_t count = 0;
  for (const Entry *at = &entry; at != nullptr; at = at->parent) ++count;
  return count;
}

inline const Entry *ancestor(const Entry &entry, int64_t levels_up) {
  const Entry *at = &entry;
  for (; levels_up > 0; --levels_up) at = at->parent;
  return at;
}

// Compares the paths of child indexes from the top down. They are walked upwards here: each level that
// differs overrides those below it.
inline int64_t document_order(const Entry &a, const Entry &b) {
  int64_t difference = levels(a) - levels(b);
  const Entry *left = ancestor(a, difference);
  const Entry *right = ancestor(b, -difference);
  for (; left != right; left = left->parent, right = right->parent) {
    const int64_t apart = index_of(*left) - index_of(*right);
    if (apart != 0) difference = apart;
  }
  return difference;
}

}  // namespace mub::rings

#endif
