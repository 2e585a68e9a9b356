// What the two kinds of trees share: one walk, and what is made of it, releasing and copying.
//
//   entry ──first──► branch ──next──► branch ──next──► branch
//     ▲                │ parent         │ parent         │ parent
//     └────────────────┴────────────────┴────────────────┘
//
// The branches are the children of its ring; or its left child, its right child and its next equal.
//
// Nothing recurses: the way back of the walk is kept in the `parent` of each entry on the way down. There
// the parent is anyway, but for an equal, whose way back is the equal before it; when the head of a chain is
// left, all of it gets the right parent again.
//
// Invariants:
//   1. The root lies in the tree's record and has no parent.
//   2. Every other entry is the branch of one entry, which is its parent; the parent of an equal is that of
//      its chain's head. Only equals may lack theirs: the walk does without.
//   3. A ring is closed in both directions, and its parent's `first_child` is on it.
//   4. What is released with a tree is blocks of its entry pool.
//
// A kind of tree takes part with a policy:
//   Tree, Entry                            the records
//   first_branch(entry)                    nullptr when nothing hangs on it
//   next_branch(above, branch)             the one after a branch, nullptr after the last
//   copy_branches(entry, copy_of)          puts what copy_of(branch) returns, if anything, in the place of
//                                          each branch
//   detach(entry)                          clears the links to what is above and beside
//   set_parent(entry)                      corrects what depends on an entry that has moved
//   restore_parents(entry, above)          an entry is left: undoes what the walk did to parents; the top
//                                          has no `above`
//   share_pools(source, copy, callback)    makes a clone share the pools that its source does not own
#ifndef MUB_TREE_LINKED_TREE_H
#define MUB_TREE_LINKED_TREE_H

#include <cstdint>
#include <utility>

#include "containers/container_pools.h"
#include "containers/pool_copy.h"
#include "mub_tree.h"
#include "pool/pool.h"

namespace mub::linked {

template <class Kind>
using EntryOf = typename Kind::Entry;
template <class Kind>
using TreeOf = typename Kind::Tree;

// Calls enter(entry) before, and leave(entry, above) after, all that hangs on the entry. Entering may
// replace the branches, leaving may release the entry.
template <class Kind, class Enter, class Leave>
void walk(EntryOf<Kind> &top, Enter enter, Leave leave) {
  EntryOf<Kind> *entry = &top;
  enter(top);
  EntryOf<Kind> *branch = Kind::first_branch(top);
  while (branch != nullptr || entry != &top) {
    if (branch != nullptr) {
      branch->parent = entry;
      entry = branch;
      enter(*entry);
      branch = Kind::first_branch(*entry);
    } else {
      EntryOf<Kind> *above = entry->parent;
      branch = Kind::next_branch(*above, *entry);
      leave(*entry, above);
      entry = above;
    }
  }
  leave(top, nullptr);
}

// For walks that keep the entries.
template <class Kind, class Enter>
void walk(EntryOf<Kind> &top, Enter enter) {
  walk<Kind>(top, enter, Kind::restore_parents);
}

// For those that do not.
template <class Kind, class Leave>
void walk_upward(EntryOf<Kind> &top, Leave leave) {
  walk<Kind>(
      top, [](const EntryOf<Kind> &) {}, leave);
}

// ---- entries

template <class Kind>
EntryOf<Kind> *take_entry(TreeOf<Kind> &tree) {
  auto *entry = static_cast<EntryOf<Kind> *>(pool::take(tree.entry_pool));
  if (entry != nullptr) *entry = {};
  return entry;
}

template <class Kind>
void return_entry(TreeOf<Kind> &tree, EntryOf<Kind> &entry) {
  if (&entry != &tree.root) pool::give(tree.entry_pool, &entry);
}

template <class Kind>
void return_entries(TreeOf<Kind> &tree, EntryOf<Kind> &top) {
  if (tree.entry_pool == nullptr) return;
  walk_upward<Kind>(top,
                    [&](EntryOf<Kind> &entry, const EntryOf<Kind> *) { return_entry<Kind>(tree, entry); });
}

// Entries of an owned pool, which go with the whole pool, stay as they are, and so do those of no pool.
template <class Kind>
void free_entries(TreeOf<Kind> &tree, EntryOf<Kind> &top, mub_free_fn release_it) {
  const bool returns_entries = entry_pool_of(tree).is_callers();
  walk_upward<Kind>(top, [&](EntryOf<Kind> &entry, const EntryOf<Kind> *above) {
    release_value(value_pool_of(tree), entry.value, release_it);
    if (returns_entries) {
      return_entry<Kind>(tree, entry);
    } else {
      Kind::restore_parents(entry, above);
    }
  });
}

template <class Kind>
void swap_entries(EntryOf<Kind> &a, EntryOf<Kind> &b) {
  std::swap(a, b);
  Kind::set_parent(a);
  Kind::set_parent(b);
}

// ---- the whole tree

template <class Kind>
void init(TreeOf<Kind> &tree, int own_entry_pool, int own_value_pool) {
  tree = {};
  if (own_entry_pool != 0) entry_pool_of(tree).make(sizeof(EntryOf<Kind>));
  if (own_value_pool != 0) value_pool_of(tree).make(0);
}

template <class Kind>
void remove_all(TreeOf<Kind> &tree) {
  if (tree.owns_entry_pool == 0) return_entries<Kind>(tree, tree.root);
  empty_pools(tree);
  tree.root = {};
  tree.count = 0;
}

template <class Kind>
void term(TreeOf<Kind> &tree) {
  remove_all<Kind>(tree);
  uint16_t owns_entries = tree.owns_entry_pool;  // the tree's own flags stay
  uint16_t owns_values = tree.owns_value_pool;
  PoolField{tree.entry_pool, owns_entries}.destroy();
  PoolField{tree.value_pool, owns_values}.destroy();
}

template <class Kind>
void free_all(TreeOf<Kind> &tree, mub_free_fn release_it) {
  if (frees_one_by_one(tree, release_it)) {
    free_entries<Kind>(tree, tree.root, release_it);
    tree.root = {};  // what hung on it is gone
  }
  remove_all<Kind>(tree);
}

// ---- copies

// Copies what hangs on an entry. A copy first has the branches of its source; when the walk enters it, they
// give way to copies of their own, which are entered in their turn.
template <class Kind>
class Copying {
 public:
  explicit Copying(TreeOf<Kind> &copy) : copy_(copy) {}

  // False when memory runs out; what is in the copy then is for the caller to remove.
  bool clone(const TreeOf<Kind> &source, CloneCallback &callback) {
    Kind::share_pools(source, copy_, callback);
    if (!pools_.clone(source, copy_, callback)) return false;
    copy_.root = source.root;
    if (!copy_below(copy_.root)) return false;
    copy_.count = source.count;
    if (source.owns_value_pool != 0) translate_values(callback);
    return true;
  }

  // A copy that nothing links to; nullptr when memory runs out.
  EntryOf<Kind> *clone(const EntryOf<Kind> &source) {
    pools_.entries.take_from(copy_.entry_pool);
    EntryOf<Kind> *top = pools_.entries.copy_of(source);
    if (top == nullptr) return nullptr;
    if (!copy_below(*top)) {
      return_entries<Kind>(copy_, *top);
      return nullptr;
    }
    copy_.count += copied_;
    return top;
  }

 private:
  bool copy_below(EntryOf<Kind> &top) {
    Kind::detach(top);
    walk<Kind>(top, [this](EntryOf<Kind> &entry) {
      Kind::copy_branches(entry, [this](const EntryOf<Kind> &branch) { return copy_of(branch); });
    });
    return !failed_;
  }

  // Once memory has run out there are no more copies, and the walk comes to its end on those that there are.
  EntryOf<Kind> *copy_of(const EntryOf<Kind> &source) {
    if (pools_.entries.is_whole()) return pools_.entries.copy_of(source);
    EntryOf<Kind> *copy = failed_ ? nullptr : pools_.entries.copy_of(source);
    failed_ = copy == nullptr;
    copied_ += failed_ ? 0 : 1;
    return copy;
  }

  // Only when nothing can fail any more, so that the callback sees all entries or none.
  void translate_values(const CloneCallback &callback) {
    walk<Kind>(copy_.root, [&](EntryOf<Kind> &entry) {
      const uint64_t source_value = entry.value;
      entry.value = pools_.values.translate(source_value);
      callback.notify(source_value, entry.value);
    });
  }

  TreeOf<Kind> &copy_;
  PoolCopies pools_;
  int64_t copied_ = 0;
  bool failed_ = false;
};

template <class Kind>
void clone(const TreeOf<Kind> &source, TreeOf<Kind> &copy, CloneCallback callback) {
  if (&source == &copy) return;
  remove_all<Kind>(copy);
  if (!Copying<Kind>(copy).clone(source, callback)) remove_all<Kind>(copy);
}

}  // namespace mub::linked

#endif
