// The engine of the trees: a walk over an entry and all below it, and what is built on it: returning entries
// to their pool, and copying them. The branches of an entry are those that the walk reaches directly from it:
// the children on its ring in mub_tree; its left child, its right child and its next equal in mub_bitree.
//
//   entry ──first──► branch ──next──► branch ──next──► branch
//     ▲                │ parent         │ parent         │ parent
//     └────────────────┴────────────────┴────────────────┘
//
// The walk does not recurse: on its way down it stores in `parent` of each entry where it came from. For all
// but equals that is the parent already. An equal gets the equal before it; when the walk leaves the head of
// a chain, it restores the parents of the whole chain.
//
// Invariants:
//   1. The root lies in the tree's record, and its parent is null.
//   2. Every other entry is a branch of exactly one entry. That entry is its parent; but the parent of an
//      equal is that of the head of its chain. There are no cycles.
//   3. The ring of an entry's children is closed in both directions, and `first_child` is on it (mub_tree).
// They hold as long as the caller adds only entries that are not linked yet, in a mub_bitree in places that
// are free, and unlinks entries before it returns or swaps them. If equals were added to an entry before it
// was linked itself, their parent is null until mub_bitree_set_parent() or a walk sets it; walks do not
// depend on it. `count` is the number of links made, in mub_tree minus those undone, and says nothing about
// the entries. Entries need not be blocks of the entry pool unless a function returns them to it.
//
// Threads: searches and steps that take const entries write nothing, so readers may run in parallel. A walk
// writes to `parent` even if it keeps the entries: a clone walks the copy and only reads the source, but
// takes entries from its pool if that is external.
//
// The policy provides the following. Functions that are given entries alone reach it through their type: the
// policy of an entry is that of its tree.
//   Entry                                  the struct of an entry
//   first_branch(entry)                    returns the first branch; nullptr if there is none
//   next_branch(above, branch)             returns the branch after another one; nullptr after the last
//   copy_branches(entry, copy_of)          replaces every branch by copy_of(branch); null omits it
//   detach(entry)                          clears the links to the parent and to siblings
//   set_parent(entry)                      corrects `parent` in the branches of an entry whose fields moved
//   restore_parents(entry, above)          called when a walk leaves an entry: restores the parents that it
//                                          changed; `above` is null for the top
//   share_pools(source, copy, user_pool)   makes a clone share the pools that its source does not own
#ifndef MUB_TREE_LINKED_TREE_H
#define MUB_TREE_LINKED_TREE_H

#include <cstdint>
#include <utility>

#include "containers/container_pools.h"
#include "containers/memory.h"
#include "containers/policy.h"
#include "containers/pool_clone.h"
#include "mub_tree.h"
#include "pool/pool.h"

namespace mub::linked_tree {

// Calls enter(entry) before and leave(entry, above) after the entries below it. `enter` may replace the
// branches, `leave` may return the entry to its pool.
template <class Entry, class Enter, class Leave>
void walk(Entry &top, Enter enter, Leave leave) {
  Entry *entry = &top;
  enter(top);
  Entry *branch = Policy<Entry>::first_branch(top);
  while (branch != nullptr || entry != &top) {
    if (branch != nullptr) {
      branch->parent = entry;
      entry = branch;
      enter(*entry);
      branch = Policy<Entry>::first_branch(*entry);
    } else {
      Entry *above = entry->parent;
      branch = Policy<Entry>::next_branch(*above, *entry);
      leave(*entry, above);
      entry = above;
    }
  }
  leave(top, nullptr);
}

// A walk that keeps the entries.
template <class Entry, class Enter>
void walk(Entry &top, Enter enter) {
  walk(top, enter, Policy<Entry>::restore_parents);
}

// A walk in post-order, which may return the entries to their pool.
template <class Entry, class Leave>
void walk_postorder(Entry &top, Leave leave) {
  walk(
      top, [](const Entry &) {}, leave);
}

// ---- entries

template <class Tree>
EntryOf<Tree> *take_entry(Tree &tree) {
  auto *entry = static_cast<EntryOf<Tree> *>(pool::take(tree.entry_pool));
  if (entry != nullptr) *entry = {};
  return entry;
}

template <class Tree>
void return_entry(Tree &tree, EntryOf<Tree> &entry) {
  if (&entry != &tree.root) pool::give(tree.entry_pool, &entry);
}

template <class Tree>
void return_entries(Tree &tree, EntryOf<Tree> &top) {
  if (tree.entry_pool == nullptr) return;
  walk_postorder(top, [&](EntryOf<Tree> &entry, const EntryOf<Tree> *) { return_entry(tree, entry); });
}

// Releases the values of all entries from `top` down. The entries are returned to an external pool; without a
// pool, or with an owned one, they stay linked.
template <class Tree>
void free_entries(Tree &tree, EntryOf<Tree> &top, mub_free_fn release_it) {
  const bool returns_entries = entry_pool_of(tree).is_external();
  walk_postorder(top, [&](EntryOf<Tree> &entry, const EntryOf<Tree> *above) {
    release_value(value_pool_of(tree), entry.value, release_it);
    if (returns_entries) {
      return_entry(tree, entry);
    } else {
      Policy<Tree>::restore_parents(entry, above);
    }
  });
}

template <class Entry>
void swap_entries(Entry &a, Entry &b) {
  std::swap(a, b);
  Policy<Entry>::set_parent(a);
  Policy<Entry>::set_parent(b);
}

// ---- the whole tree

template <class Tree>
void init(Tree &tree, int with_entry_pool, int with_value_pool) {
  tree = {};
  if (with_entry_pool != 0) entry_pool_of(tree).make(sizeof(EntryOf<Tree>));
  if (with_value_pool != 0) value_pool_of(tree).make(0);
}

template <class Tree>
void remove_all(Tree &tree) {
  if (tree.owns_entry_pool == 0) return_entries(tree, tree.root);
  empty_pools(tree);
  tree.root = {};
  tree.count = 0;
}

template <class Tree>
void term(Tree &tree) {
  remove_all(tree);
  uint16_t owns_entries = tree.owns_entry_pool;  // copies, as the flags of the tree must not change
  uint16_t owns_values = tree.owns_value_pool;
  PoolField{tree.entry_pool, owns_entries}.destroy();
  PoolField{tree.value_pool, owns_values}.destroy();
}

template <class Tree>
void free_all(Tree &tree, mub_free_fn release_it) {
  if (must_visit_entries(tree, release_it)) {
    free_entries(tree, tree.root, release_it);
    tree.root = {};  // its branches may have been returned: remove_all() must not visit them
  }
  remove_all(tree);
}

template <class Tree>
int64_t memory_bytes(const Tree &tree) {
  return pools_and_keys_bytes(tree);
}

// ---- copies

// Copies entries with all below them. A copied entry first refers to the branches of its source. When the
// walk enters the copy, it replaces these by copies, which it then enters.
template <class Tree>
class Copying {
 public:
  explicit Copying(Tree &copy) : copy_(copy) {}

  // False if memory runs out; the caller then empties the copy.
  bool clone(const Tree &source, UserPoolClone &user_pool) {
    Policy<Tree>::share_pools(source, copy_, user_pool);
    if (!copiers_.clone(source, copy_, user_pool)) return false;
    copy_.root = source.root;
    if (!copy_below(copy_.root)) return false;
    copy_.count = source.count;
    if (source.owns_value_pool != 0) translate_values(user_pool);
    return true;
  }

  // Returns a copy of an entry and all below it, not linked; nullptr if memory runs out.
  EntryOf<Tree> *clone(const EntryOf<Tree> &source) {
    copiers_.entry_pool.use_new_blocks_of(copy_.entry_pool);
    EntryOf<Tree> *top = copiers_.entry_pool.copy_of(source);
    if (top == nullptr) return nullptr;
    if (!copy_below(*top)) {
      return_entries(copy_, *top);
      return nullptr;
    }
    copy_.count += copied_;
    return top;
  }

 private:
  bool copy_below(EntryOf<Tree> &top) {
    Policy<Tree>::detach(top);
    walk(top, [this](EntryOf<Tree> &entry) {
      Policy<Tree>::copy_branches(entry, [this](const EntryOf<Tree> &branch) { return copy_of(branch); });
    });
    return !failed_;
  }

  // After memory ran out, nothing more is copied, and the walk ends with the copies made so far.
  EntryOf<Tree> *copy_of(const EntryOf<Tree> &source) {
    if (copiers_.entry_pool.is_whole()) return copiers_.entry_pool.copy_of(source);
    EntryOf<Tree> *copy = failed_ ? nullptr : copiers_.entry_pool.copy_of(source);
    failed_ = copy == nullptr;
    copied_ += failed_ ? 0 : 1;
    return copy;
  }

  // Last, when nothing can fail: the callback is called for all entries or for none.
  void translate_values(const UserPoolClone &user_pool) {
    walk(copy_.root, [&](EntryOf<Tree> &entry) {
      const uint64_t source_value = entry.value;
      entry.value = copiers_.value_pool.translate(source_value);
      user_pool.notify(source_value, entry.value);
    });
  }

  Tree &copy_;
  ContainerBlockCopiers copiers_;
  int64_t copied_ = 0;
  bool failed_ = false;
};

template <class Tree>
void clone(const Tree &source, Tree &copy, UserPoolClone user_pool) {
  if (&source == &copy) return;
  remove_all(copy);
  if (!Copying(copy).clone(source, user_pool)) remove_all(copy);
}

}  // namespace mub::linked_tree

#endif
