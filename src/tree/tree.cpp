// mub_tree: linked_tree.h with rings of children, and searches by a caller's comparator.
#include <utility>

#include "arrays/byte_keys.h"
#include "arrays/inline_slots.h"
#include "base/prefetch.h"
#include "bytes/bytes.h"
#include "tree/linked_tree.h"
#include "tree/rings.h"
#include "tree/verify.h"

using namespace mub;
using rings::Entry;

template <>
struct mub::Policy<mub_tree> {
  using Entry = mub_tree_entry;

  static Entry *first_branch(const Entry &entry) {
    rings::prefetch_sibling(entry);
    return entry.first_child;
  }

  static Entry *next_branch(const Entry &above, const Entry &branch) {
    return branch.next != above.first_child ? branch.next : nullptr;
  }

  template <class CopyOf>
  static void copy_branches(Entry &entry, CopyOf copy_of) {
    const Entry source = entry;
    entry.first_child = nullptr;
    rings::for_each_child(source, [&](const Entry &child) {
      rings::prefetch_sibling(child);
      prefetch(child.first_child);  // needed when the walk enters the copy
      Entry *copy = copy_of(child);
      if (copy != nullptr) rings::link_last(entry, *copy);
    });
  }

  static void detach(Entry &entry) { rings::clear_links(entry); }

  static void set_parent(Entry &entry) {
    rings::for_each_child(entry, [&](Entry &child) { child.parent = &entry; });
  }

  // Nothing to do: the walk stores parents that are there already.
  static void restore_parents(const Entry &, const Entry *) {}

  static void share_pools(const mub_tree &source, mub_tree &copy, UserPoolClone &user_pool) {
    share_external_pools(source, copy, user_pool);
  }
};

template <>
struct mub::Policy<mub_tree_entry> : Policy<mub_tree> {};

namespace {

// ---- searches

// A caller's comparator, with or without a context.
class Comparator {
 public:
  explicit Comparator(mub_tree_compare_fn compare) : plain_(compare) {}
  Comparator(mub_tree_compare_x_fn compare, uint64_t context) : with_context_(compare), context_(context) {}

  bool is_missing() const { return plain_ == nullptr && with_context_ == nullptr; }
  bool matches(const Entry &entry, const ByteKey &key) const {
    const int difference = plain_ != nullptr ? plain_(&entry, key.bytes, key.length)
                                             : with_context_(&entry, context_, key.bytes, key.length);
    return difference == 0;
  }

 private:
  mub_tree_compare_fn plain_ = nullptr;
  mub_tree_compare_x_fn with_context_ = nullptr;
  uint64_t context_ = 0;
};

ByteKey as_given(const void *key, int64_t length) { return {bytes::as_bytes(key), length}; }

Entry *find(const Entry *bound, const Entry &start, const ByteKey &key, const Comparator &comparator) {
  if (comparator.is_missing()) return nullptr;
  Entry *entry = rings::next_in_order(bound, start);
  while (entry != nullptr && !comparator.matches(*entry, key)) entry = rings::next_in_order(bound, *entry);
  return entry;
}

Entry *find_above(const Entry *stop, const Entry &entry, const ByteKey &key, const Comparator &comparator) {
  if (comparator.is_missing()) return nullptr;
  Entry *above = entry.parent;
  while (above != nullptr && above != stop && !comparator.matches(*above, key)) above = above->parent;
  return above != stop ? above : nullptr;
}

bool is_above(const Entry &ancestor, const Entry &entry) {
  const Entry *above = entry.parent;
  while (above != nullptr && above != &ancestor) above = above->parent;
  return above != nullptr;
}

// ---- paths

ByteKey key_of_step(const mub_array &path, int64_t index) {
  const mub_array_entry *entry = slots::slot_at(path, index);
  return entry != nullptr ? key_of(path, *entry) : ByteKey{nullptr, 0};
}

Entry *step(const Entry &current, int64_t depth, const mub_array &path, const Comparator &comparator) {
  return find(&current, current, key_of_step(path, depth), comparator);
}

Entry *follow(const Entry &start, int64_t depth, const mub_array &path, const Comparator &comparator) {
  const Entry *current = &start;
  Entry *found = nullptr;
  for (; current != nullptr && depth < slots::used(path); ++depth) {
    current = found = step(*current, depth, path, comparator);
  }
  return found;
}

Entry *append_new(mub_tree &tree, Entry &parent) {
  Entry *entry = linked_tree::take_entry(tree);
  if (entry == nullptr) return nullptr;
  rings::link_last(parent, *entry);
  ++tree.count;
  return entry;
}

// Returns the entry at the end of a path. Missing entries are added; only the last one gets a value.
Entry *insert(mub_tree &tree, Entry &start, int64_t depth, const mub_array &path, mub_init_fn init,
              const Comparator &comparator) {
  if (comparator.is_missing() || depth >= slots::used(path)) return nullptr;
  Entry *current = &start;
  bool made = false;
  for (; current != nullptr && depth < slots::used(path); ++depth) {
    Entry *found = step(*current, depth, path, comparator);
    made = found == nullptr;
    current = made ? append_new(tree, *current) : found;
  }
  if (!made || current == nullptr) return current;
  current->value = word_of(pool::take(tree.value_pool));
  initialise(current->value, init);
  return current;
}

void reverse(mub_arrayt &array, int64_t begin, int64_t end) {
  while (begin < --end) std::swap(words::word(array, begin++), words::word(array, end));
}

// Puts the indexes from the top to the entry before the old words: appends them from the entry up, then
// reverses all words, then the old ones again. The array grows as if each index were inserted at the front.
void prepend_path(const Entry &entry, mub_arrayt &array) {
  const int64_t old_count = array.count;
  for (const Entry *at = &entry; at != nullptr; at = at->parent) {
    if (!words::append(array, static_cast<uint64_t>(rings::index_of(*at)))) {
      array.count = old_count;
      return;
    }
  }
  reverse(array, 0, array.count);
  reverse(array, array.count - old_count, array.count);
}

}  // namespace

extern "C" {

mub_tree *mub_tree_init(mub_tree *tree, int with_entry_pool, int with_value_pool) {
  linked_tree::init(*tree, with_entry_pool, with_value_pool);
  return tree;
}

mub_tree *mub_tree_term(mub_tree *tree) {
  linked_tree::term(*tree);
  return tree;
}

mub_tree *mub_tree_remove_all(mub_tree *tree) {
  linked_tree::remove_all(*tree);
  return tree;
}

mub_tree *mub_tree_free_all(mub_tree *tree, mub_free_fn release) {
  linked_tree::free_all(*tree, release);
  return tree;
}

mub_tree *mub_tree_clone(const mub_tree *source, mub_pool *source_user_pool, mub_tree *destination,
                         mub_pool *destination_user_pool, mub_clone_fn callback) {
  linked_tree::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
  return destination;
}

int mub_tree_verify(const mub_tree *tree, const char **what) {
  return report(linked_tree::verify(*tree), what);
}

int64_t mub_tree_memory_bytes(const mub_tree *tree) { return linked_tree::memory_bytes(*tree); }

mub_tree_entry *mub_tree_clone_entry(mub_tree *tree, const mub_tree_entry *source) {
  return linked_tree::Copying(*tree).clone(*source);
}

int mub_tree_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  return bytes::equal(a, a_length, b, b_length) ? 1 : 0;
}

void mub_tree_set_parent(mub_tree_entry *entry) { Policy<mub_tree>::set_parent(*entry); }

void mub_tree_entry_init(mub_tree_entry *entry) { *entry = {}; }

mub_tree_entry *mub_tree_entry_new(mub_tree *tree) { return linked_tree::take_entry(*tree); }

void mub_tree_entry_append(mub_tree *tree, mub_tree_entry *parent, mub_tree_entry *child) {
  if (parent == nullptr || child == nullptr) return;
  rings::link_last(*parent, *child);
  ++tree->count;
}

void mub_tree_entry_insert(mub_tree *tree, mub_tree_entry *sibling, mub_tree_entry *entry) {
  if (sibling == nullptr || sibling->parent == nullptr || entry == nullptr || entry == sibling) return;
  rings::link_before(*sibling, *entry);
  ++tree->count;
}

void mub_tree_entry_remove(mub_tree *tree, mub_tree_entry *entry) {
  if (entry == nullptr || entry->parent == nullptr) return;
  rings::unlink(*entry);
  --tree->count;
}

void mub_tree_entry_remove_x(mub_tree *tree, mub_tree_entry *entry) {
  if (tree->owns_entry_pool == 0) linked_tree::return_entries(*tree, *entry);
}

void mub_tree_entry_free(mub_tree *tree, mub_tree_entry *entry, mub_free_fn release) {
  linked_tree::free_entries(*tree, *entry, release);
}

void mub_tree_entry_swap(mub_tree_entry *a, mub_tree_entry *b) { linked_tree::swap_entries(*a, *b); }

mub_tree_entry *mub_tree_entry_last(const mub_tree_entry *entry) { return rings::last_child(*entry); }

mub_tree_entry *mub_tree_entry_next(const mub_tree_entry *entry) { return rings::next_sibling(*entry); }

mub_tree_entry *mub_tree_entry_prev(const mub_tree_entry *entry) { return rings::prev_sibling(*entry); }

mub_tree_entry *mub_tree_entry_iter_next(const mub_tree_entry *bound, const mub_tree_entry *entry) {
  return rings::next_in_order(bound, *entry);
}

mub_tree_entry *mub_tree_entry_find_next(const mub_tree_entry *bound, const mub_tree_entry *entry) {
  return rings::next_past(bound, *entry);
}

mub_tree_entry *mub_tree_entry_find(const mub_tree_entry *bound, const mub_tree_entry *start, const void *key,
                                    int64_t length, mub_tree_compare_fn compare) {
  return find(bound, *start, as_given(key, length), Comparator(compare));
}

mub_tree_entry *mub_tree_entry_find_x(const mub_tree_entry *bound, const mub_tree_entry *start,
                                      uint64_t context, const void *key, int64_t length,
                                      mub_tree_compare_x_fn compare) {
  return find(bound, *start, as_given(key, length), Comparator(compare, context));
}

mub_tree_entry *mub_tree_entry_find_parent(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                           const void *key, int64_t length, mub_tree_compare_fn compare) {
  return find_above(stop, *entry, as_given(key, length), Comparator(compare));
}

mub_tree_entry *mub_tree_entry_find_parent_x(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                             uint64_t context, const void *key, int64_t length,
                                             mub_tree_compare_x_fn compare) {
  return find_above(stop, *entry, as_given(key, length), Comparator(compare, context));
}

int mub_tree_entry_find_child(const mub_tree_entry *ancestor, const mub_tree_entry *entry) {
  return is_above(*ancestor, *entry) ? 1 : 0;
}

int64_t mub_tree_entry_index(const mub_tree_entry *entry) { return rings::index_of(*entry); }

void mub_tree_entry_array(const mub_tree_entry *entry, mub_arrayt *array) { prepend_path(*entry, *array); }

int mub_tree_entry_compare(const mub_tree_entry *a, const mub_tree_entry *b) {
  return static_cast<int>(rings::document_order(*a, *b));
}

mub_tree_entry *mub_tree_insert(mub_tree *tree, const mub_array *path, mub_init_fn init,
                                mub_tree_compare_fn compare) {
  return insert(*tree, tree->root, 0, *path, init, Comparator(compare));
}

mub_tree_entry *mub_tree_insert_x(mub_tree *tree, const mub_array *path, uint64_t context, mub_init_fn init,
                                  mub_tree_compare_x_fn compare) {
  return insert(*tree, tree->root, 0, *path, init, Comparator(compare, context));
}

mub_tree_entry *mub_tree_insert_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                  const mub_array *path, mub_init_fn init, mub_tree_compare_fn compare) {
  return insert(*tree, *current, depth, *path, init, Comparator(compare));
}

mub_tree_entry *mub_tree_insert_x_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                    const mub_array *path, uint64_t context, mub_init_fn init,
                                    mub_tree_compare_x_fn compare) {
  return insert(*tree, *current, depth, *path, init, Comparator(compare, context));
}

mub_tree_entry *mub_tree_find(const mub_tree *tree, const mub_array *path, mub_tree_compare_fn compare) {
  return follow(tree->root, 0, *path, Comparator(compare));
}

mub_tree_entry *mub_tree_find_x(const mub_tree *tree, const mub_array *path, uint64_t context,
                                mub_tree_compare_x_fn compare) {
  return follow(tree->root, 0, *path, Comparator(compare, context));
}

mub_tree_entry *mub_tree_find_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                mub_tree_compare_fn compare) {
  return follow(*current, depth, *path, Comparator(compare));
}

mub_tree_entry *mub_tree_find_x_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                  uint64_t context, mub_tree_compare_x_fn compare) {
  return follow(*current, depth, *path, Comparator(compare, context));
}
}
