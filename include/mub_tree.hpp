/**
 * @defgroup tree_hpp mub_tree.hpp: trees
 * @ingroup hpp
 *
 * The trees of mub_tree.h.
 *
 *     mub::tree outline;
 *     auto *chapter = outline.append(outline.root(), 1);
 *     for (mub_tree_entry &entry : outline) …                     all below the root, parents first
 *     for (mub_tree_entry &entry : mub::children(chapter)) …      the children of one entry
 *
 * Moving or swapping a tree moves its root, which lies in the record; all other entries keep their addresses.
 * Nothing checks that entries belong to the tree that they are passed to.
 */
#ifndef MUB_TREE_HPP
#define MUB_TREE_HPP

#include "mub_array.hpp"
#include "mub_base.hpp"
#include "mub_tree.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct tree_traits {
  using c_struct = mub_tree;
  using entry = mub_tree_entry;
  static constexpr auto init = mub_tree_init;
  static constexpr auto term = mub_tree_term;
  static constexpr auto verify = mub_tree_verify;
  static constexpr auto memory_bytes = mub_tree_memory_bytes;
  static constexpr auto clone = mub_tree_clone;
  static constexpr auto remove_all = mub_tree_remove_all;
  static constexpr auto free_all = mub_tree_free_all;
  static constexpr auto entry_new = mub_tree_entry_new;
  static constexpr auto entry_swap = mub_tree_entry_swap;
};

struct bitree_traits {
  using c_struct = mub_bitree;
  using entry = mub_bitree_entry;
  static constexpr auto init = mub_bitree_init;
  static constexpr auto term = mub_bitree_term;
  static constexpr auto verify = mub_bitree_verify;
  static constexpr auto memory_bytes = mub_bitree_memory_bytes;
  static constexpr auto clone = mub_bitree_clone;
  static constexpr auto remove_all = mub_bitree_remove_all;
  static constexpr auto free_all = mub_bitree_free_all;
  static constexpr auto entry_new = mub_bitree_entry_new;
  static constexpr auto entry_swap = mub_bitree_entry_swap;
};

template <class Traits>
struct tree_life {
  using c_struct = typename Traits::c_struct;
  static void init(c_struct *tree, int entries, int values) noexcept { Traits::init(tree, entries, values); }
  static void bare(c_struct *tree) noexcept { Traits::init(tree, 0, 0); }
  static void release(c_struct *tree) noexcept { Traits::term(tree); }
  static constexpr auto verify = Traits::verify;
  static constexpr auto memory_bytes = Traits::memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept {
    Traits::entry_swap(&a->root, &b->root);
    std::swap(a->count, b->count);
    std::swap(a->entry_pool, b->entry_pool);
    std::swap(a->owns_entry_pool, b->owns_entry_pool);
    std::swap(a->value_pool, b->value_pool);
    std::swap(a->owns_value_pool, b->owns_value_pool);
  }
};

/** The members that both trees have in common. */
template <class Derived, class Traits>
class rooted : public owner<Derived, tree_life<Traits>> {
  using base = owner<Derived, tree_life<Traits>>;

 public:
  using entry_type = typename Traits::entry;
  using base::c;

  /** Constructs a tree that consists of its root and owns an entry pool. */
  rooted() noexcept : rooted(true, false) {}

  /**
   * Constructs a tree that consists of its root and owns the pools that the flags select; see
   * mub_tree_init().
   */
  rooted(bool with_entry_pool, bool with_value_pool) noexcept
      : base(std::in_place, with_entry_pool, with_value_pool) {}

  /** Constructs a tree that consists of its root and owns an entry pool and a value pool. */
  explicit rooted(value_blocks values) noexcept : rooted(true, true) {
    set_block_size(c()->value_pool, values.size);
  }

  /** Constructs a tree that consists of its root and has external pools, which must outlive it. */
  explicit rooted(mub_pool *entries, mub_pool *values = nullptr) noexcept : rooted(false, false) {
    c()->entry_pool = entries;
    c()->value_pool = values;
  }

  /** Returns a copy, made by mub_tree_clone() without user pools; empty if memory ran out. */
  [[nodiscard]] Derived clone(mub_clone_fn adjust = nullptr) const {
    Derived copy(c()->owns_entry_pool != 0, c()->owns_value_pool != 0);
    clone_to<Traits>(copy.c(), c(), adjust);
    return copy;
  }

  /** Returns the root, which lies in the record and always exists. */
  ///@{
  entry_type *root() noexcept { return &c()->root; }
  const entry_type *root() const noexcept { return &c()->root; }
  ///@}

  /** Returns the record's `count`: the entries linked, in a tree minus those unlinked. */
  std::int64_t links() const noexcept { return c()->count; }

  /**
   * Takes an entry from the entry pool, zero-filled and not linked; nullptr if memory ran out or there is no
   * entry pool. See mub_tree_entry_new().
   */
  [[nodiscard]] entry_type *make() { return Traits::entry_new(this->growing()); }

  /** Removes all entries but the root, without a call for their values. See mub_tree_remove_all(). */
  void clear() { Traits::remove_all(c()); }

  /**
   * Calls `release` with every value that is not 0, then removes all entries but the root. See
   * mub_tree_free_all().
   */
  void free_all(mub_free_fn release) { Traits::free_all(c(), release); }
};

// Moves through the descendants of an entry, parents first.
class document_place {
 public:
  using category = std::forward_iterator_tag;
  template <class Entry>
  using reference = Entry &;

  document_place() = default;
  // The first descendant.
  explicit document_place(const mub_tree_entry *bound) : bound_(bound) {
    entry_ = mub_tree_entry_iter_next(bound, bound);
  }
  template <class Entry>
  Entry &at() const noexcept {
    return *entry_;
  }
  void step() { entry_ = mub_tree_entry_iter_next(bound_, entry_); }
  mub_tree_entry *entry() const noexcept { return entry_; }

 private:
  const mub_tree_entry *bound_ = nullptr;
  mub_tree_entry *entry_ = nullptr;
};

// Moves through a ring of siblings; the end has no entry, and a step back from it leads to the last one.
class sibling_place {
 public:
  using category = std::bidirectional_iterator_tag;
  template <class Entry>
  using reference = Entry &;

  sibling_place() = default;
  sibling_place(const mub_tree_entry *parent, mub_tree_entry *entry) noexcept
      : parent_(parent), entry_(entry) {}
  template <class Entry>
  Entry &at() const noexcept {
    return *entry_;
  }
  void step() { entry_ = mub_tree_entry_next(entry_); }
  void step_back() {
    entry_ = entry_ == nullptr ? mub_tree_entry_last(parent_) : mub_tree_entry_prev(entry_);
  }
  mub_tree_entry *entry() const noexcept { return entry_; }

 private:
  const mub_tree_entry *parent_ = nullptr;
  mub_tree_entry *entry_ = nullptr;
};

template <class Entry>
struct sibling_range {
  using iterator = detail::iterator<sibling_place, Entry>;
  Entry *parent;
  iterator begin() const noexcept { return iterator(sibling_place(parent, parent->first_child)); }
  iterator end() const noexcept { return iterator(sibling_place(parent, nullptr)); }
};

}  // namespace detail

/** @addtogroup tree_hpp
 * @{ */

/** Returns the range of the children of an entry, in their order. */
///@{
inline detail::sibling_range<mub_tree_entry> children(mub_tree_entry *parent) noexcept { return {parent}; }
inline detail::sibling_range<const mub_tree_entry> children(const mub_tree_entry *parent) noexcept {
  return {parent};
}
///@}

/**
 * A general tree, which owns the pools that it created with all their blocks, but nothing else that its
 * values refer to; see mub_tree. An iterator is valid until its entry is unlinked.
 */
class tree : public detail::rooted<tree, detail::tree_traits>, public detail::range<tree> {
 public:
  using iterator = detail::iterator<detail::document_place, mub_tree_entry>;
  using const_iterator = detail::iterator<detail::document_place, const mub_tree_entry>;
  using rooted::rooted;

  /** Links an unlinked entry as the last child of another; see mub_tree_entry_append(). */
  void link(mub_tree_entry *parent, mub_tree_entry *child) { mub_tree_entry_append(c(), parent, child); }

  /**
   * Creates an entry with a value and links it as the last child of another. Returns the entry; nullptr if
   * memory ran out or there is no entry pool.
   */
  mub_tree_entry *append(mub_tree_entry *parent, std::uint64_t value) {
    mub_tree_entry *child = make();
    if (child == nullptr) return nullptr;
    child->value = value;
    link(parent, child);
    return child;
  }

  /** Links an unlinked entry as the previous sibling of another; see mub_tree_entry_insert(). */
  void insert_before(mub_tree_entry *sibling, mub_tree_entry *entry) {
    mub_tree_entry_insert(c(), sibling, entry);
  }

  /** Unlinks an entry with its descendants; nothing is released. See mub_tree_entry_remove(). */
  void unlink(mub_tree_entry *entry) { mub_tree_entry_remove(c(), entry); }

  /**
   * Follows a path of keys, adding the missing entries, and returns the last; nullptr for an empty path, or
   * if memory ran out or there is no entry pool. See mub_tree_insert().
   */
  mub_tree_entry *insert(const array &path, mub_tree_compare_fn compare, mub_init_fn init = nullptr) {
    return mub_tree_insert(growing(), path.c(), init, compare);
  }

  /**
   * Follows a path of keys and returns the last entry; nullptr if no entry matches a step. See
   * mub_tree_find().
   */
  ///@{
  mub_tree_entry *find(const array &path, mub_tree_compare_fn compare) {
    return mub_tree_find(c(), path.c(), compare);
  }
  const mub_tree_entry *find(const array &path, mub_tree_compare_fn compare) const {
    return mub_tree_find(c(), path.c(), compare);
  }
  ///@}

  /** Iterators over all entries below the root, parents first; see mub_tree_entry_iter_next(). */
  ///@{
  iterator begin() { return iterator(detail::document_place(root())); }
  const_iterator begin() const { return const_iterator(detail::document_place(root())); }
  iterator end() noexcept { return {}; }
  const_iterator end() const noexcept { return {}; }
  ///@}
};

/**
 * A binary tree of links, which owns the pools that it created with all their blocks, but nothing else that
 * its values refer to; see mub_bitree. Use the fields of its entries to traverse it.
 */
class bitree : public detail::rooted<bitree, detail::bitree_traits> {
 public:
  using rooted::rooted;

  /**
   * Links an entry to another: as its left child if `direction` is below 0, as its right child if above 0, as
   * its next equal if 0. The previous link is overwritten. See mub_bitree_entry_add().
   */
  void add(mub_bitree_entry *entry, int direction, mub_bitree_entry *added) {
    mub_bitree_entry_add(c(), entry, direction, added);
  }
};

/** @} */

}  // namespace v1
}  // namespace mub

#endif
