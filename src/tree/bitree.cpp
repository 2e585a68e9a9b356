// mub_bitree: linked_tree.h with three branches: the left child, the right child and the next equal.
#include "base/prefetch.h"
#include "tree/linked_tree.h"
#include "tree/verify.h"

using namespace mub;

template <>
struct mub::Policy<mub_bitree> {
  using Entry = mub_bitree_entry;

  static Entry *first_branch(const Entry &entry) {
    if (entry.left == nullptr) return after_left(entry);
    prefetch(entry.right);
    return entry.left;
  }

  static Entry *next_branch(const Entry &above, const Entry &branch) {
    if (&branch == above.left) return after_left(above);
    return &branch == above.right ? above.equal : nullptr;
  }

  template <class CopyOf>
  static void copy_branches(Entry &entry, CopyOf copy_of) {
    for (Entry **branch : {&entry.left, &entry.right, &entry.equal}) {
      if (*branch != nullptr) *branch = copy_of(**branch);
    }
  }

  static void detach(Entry &entry) { entry.parent = nullptr; }

  static void set_parent(Entry &entry) {
    set_parents(entry.left, &entry);
    set_parents(entry.right, &entry);
    set_parents(entry.equal, entry.parent);
  }

  static void restore_parents(Entry &entry, const Entry *above) {
    const bool heads_a_chain = above == nullptr || above->equal != &entry;
    if (heads_a_chain) set_parents(entry.equal, entry.parent);
  }

  // Unlike in other containers, the copy keeps an entry pool that it has.
  static void share_pools(const mub_bitree &source, mub_bitree &copy, UserPoolClone &user_pool) {
    const bool shares_entries = source.owns_entry_pool == 0 && copy.entry_pool == nullptr;
    if (shares_entries) share_pool(source.entry_pool, entry_pool_of(copy), user_pool);
    if (source.owns_value_pool == 0) share_pool(source.value_pool, value_pool_of(copy), user_pool);
  }

 private:
  static Entry *after_left(const Entry &entry) { return entry.right != nullptr ? entry.right : entry.equal; }

  // Sets the parents of an entry and of the equals after it.
  static void set_parents(Entry *first, Entry *parent) {
    for (Entry *entry = first; entry != nullptr; entry = entry->equal) entry->parent = parent;
  }
};

template <>
struct mub::Policy<mub_bitree_entry> : Policy<mub_bitree> {};

namespace {

void add(mub_bitree &tree, mub_bitree_entry &entry, int direction, mub_bitree_entry &added) {
  (direction < 0 ? entry.left : direction > 0 ? entry.right : entry.equal) = &added;
  added.parent = direction != 0 ? &entry : entry.parent;
  ++tree.count;
}

}  // namespace

extern "C" {

mub_bitree *mub_bitree_init(mub_bitree *tree, int with_entry_pool, int with_value_pool) {
  linked_tree::init(*tree, with_entry_pool, with_value_pool);
  return tree;
}

mub_bitree *mub_bitree_term(mub_bitree *tree) {
  linked_tree::term(*tree);
  return tree;
}

mub_bitree *mub_bitree_remove_all(mub_bitree *tree) {
  linked_tree::remove_all(*tree);
  return tree;
}

mub_bitree *mub_bitree_free_all(mub_bitree *tree, mub_free_fn release) {
  linked_tree::free_all(*tree, release);
  return tree;
}

mub_bitree *mub_bitree_clone(const mub_bitree *source, mub_pool *source_user_pool, mub_bitree *destination,
                             mub_pool *destination_user_pool, mub_clone_fn callback) {
  linked_tree::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_bitree_verify(const mub_bitree *tree, const char **what) {
  return report(linked_tree::verify(*tree), what);
}

int64_t mub_bitree_memory_bytes(const mub_bitree *tree) { return linked_tree::memory_bytes(*tree); }

mub_bitree_entry *mub_bitree_clone_entry(mub_bitree *tree, const mub_bitree_entry *source) {
  return linked_tree::Copying(*tree).clone(*source);
}

void mub_bitree_set_parent(mub_bitree_entry *entry) { Policy<mub_bitree>::set_parent(*entry); }

void mub_bitree_entry_init(mub_bitree_entry *entry) { *entry = {}; }

mub_bitree_entry *mub_bitree_entry_new(mub_bitree *tree) { return linked_tree::take_entry(*tree); }

mub_bitree *mub_bitree_entry_add(mub_bitree *tree, mub_bitree_entry *entry, int direction,
                                 mub_bitree_entry *added) {
  if (entry != nullptr && added != nullptr) add(*tree, *entry, direction, *added);
  return tree;
}

void mub_bitree_entry_swap(mub_bitree_entry *a, mub_bitree_entry *b) { linked_tree::swap_entries(*a, *b); }

void mub_bitree_entry_remove(mub_bitree *tree, mub_bitree_entry *entry) {
  linked_tree::return_entries(*tree, *entry);
}

void mub_bitree_entry_free(mub_bitree *tree, mub_bitree_entry *entry, mub_free_fn release) {
  linked_tree::free_entries(*tree, *entry, release);
}
}
