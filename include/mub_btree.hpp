/* mub_btree.hpp: mub::btree, mub::btreed and mub::btreex, the ordered maps of mub_btree.h.
 *
 *   mub::btree    keys std::string_view
 *   mub::btreed   keys std::uint32_t, the bits of a number as `c()->key_type` says: signed unless you set it
 *   mub::btreex   keys std::uint64_t, the same */
#ifndef MUB_BTREE_HPP
#define MUB_BTREE_HPP

#include "mub_base.hpp"
#include "mub_btree.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct btree_traits : byte_key {
  using record = mub_btree;
  using entry = mub_btree_node;
  static constexpr auto setting = &mub_btree::nocase;
  static constexpr auto init = mub_btree_init;
  static constexpr auto term = mub_btree_term;
  static constexpr auto swap = mub_btree_swap;
  static constexpr auto clone = mub_btree_clone;
  static constexpr auto remove_all = mub_btree_remove_all;
  static constexpr auto free_all = mub_btree_free_all;
  static constexpr auto insert = mub_btree_insert;
  static constexpr auto set = mub_btree_set;
  static constexpr auto get = mub_btree_get;
  static constexpr auto update = mub_btree_update;
  static constexpr auto find = mub_btree_find;
  static constexpr auto remove = mub_btree_remove;
  static constexpr auto entry_set = mub_btree_node_set;
  static constexpr auto entry_get = mub_btree_node_get;
  static constexpr auto nearest = mub_btree_node_bfind;
  static constexpr auto first = mub_btree_node_first;
  static constexpr auto last = mub_btree_node_last;
  static constexpr auto next = mub_btree_node_next;
  static constexpr auto prev = mub_btree_node_prev;
  static int compare(const record *tree, const entry *node, key_type key) {
    return mub_btree_node_compare(tree, node, key.data(), static_cast<std::int64_t>(key.size()));
  }
};

struct btreed_traits : integer_key<std::uint32_t> {
  using record = mub_btreed;
  using entry = mub_btreed_node;
  static constexpr auto setting = &mub_btreed::key_type;
  static constexpr auto init = mub_btreed_init;
  static constexpr auto term = mub_btreed_term;
  static constexpr auto swap = mub_btreed_swap;
  static constexpr auto clone = mub_btreed_clone;
  static constexpr auto remove_all = mub_btreed_remove_all;
  static constexpr auto free_all = mub_btreed_free_all;
  static constexpr auto insert = mub_btreed_insert;
  static constexpr auto set = mub_btreed_set;
  static constexpr auto get = mub_btreed_get;
  static constexpr auto update = mub_btreed_update;
  static constexpr auto find = mub_btreed_find;
  static constexpr auto remove = mub_btreed_remove;
  static constexpr auto entry_set = mub_btreed_node_set;
  static constexpr auto entry_get = mub_btreed_node_get;
  static constexpr auto nearest = mub_btreed_node_bfind;
  static constexpr auto first = mub_btreed_node_first;
  static constexpr auto last = mub_btreed_node_last;
  static constexpr auto next = mub_btreed_node_next;
  static constexpr auto prev = mub_btreed_node_prev;
  static int compare(const record *tree, const entry *node, key_type key) {
    return mub_btreed_node_compare(node, &key, tree->key_type);
  }
};

struct btreex_traits : integer_key<std::uint64_t> {
  using record = mub_btreex;
  using entry = mub_btreex_node;
  static constexpr auto setting = &mub_btreex::key_type;
  static constexpr auto init = mub_btreex_init;
  static constexpr auto term = mub_btreex_term;
  static constexpr auto swap = mub_btreex_swap;
  static constexpr auto clone = mub_btreex_clone;
  static constexpr auto remove_all = mub_btreex_remove_all;
  static constexpr auto free_all = mub_btreex_free_all;
  static constexpr auto insert = mub_btreex_insert;
  static constexpr auto set = mub_btreex_set;
  static constexpr auto get = mub_btreex_get;
  static constexpr auto update = mub_btreex_update;
  static constexpr auto find = mub_btreex_find;
  static constexpr auto remove = mub_btreex_remove;
  static constexpr auto entry_set = mub_btreex_node_set;
  static constexpr auto entry_get = mub_btreex_node_get;
  static constexpr auto nearest = mub_btreex_node_bfind;
  static constexpr auto first = mub_btreex_node_first;
  static constexpr auto last = mub_btreex_node_last;
  static constexpr auto next = mub_btreex_node_next;
  static constexpr auto prev = mub_btreex_node_prev;
  static int compare(const record *tree, const entry *node, key_type key) {
    return mub_btreex_node_compare(node, &key, tree->key_type);
  }
};

template <class Traits>
struct btree_life {
  using record = typename Traits::record;
  static void init(record *tree, int entries, int nodes, int values) noexcept {
    Traits::init(tree, entries, nodes, values);
  }
  static void bare(record *tree) noexcept { Traits::init(tree, 0, 0, 0); }
  static void release(record *tree) noexcept { Traits::term(tree); }
  static void swap(record *a, record *b) noexcept {
    Traits::swap(a, b);
    swap_setting(a, b, Traits::setting);
  }
};

// Goes in key order; the end has no node, and the step back from it leads to the last.
template <class Traits, class Value>
class btree_iterator : public walker<btree_iterator<Traits, Value>, item<typename Traits::key_type, Value>,
                                     std::bidirectional_iterator_tag> {
 public:
  btree_iterator() = default;
  btree_iterator(const typename Traits::record *tree, typename Traits::entry *node) noexcept
      : tree_(tree), node_(node) {}

  item<typename Traits::key_type, Value> operator*() const {
    return {Traits::key_of(tree_, node_), node_->value};
  }
  void step() { node_ = Traits::next(tree_, node_); }
  void step_back() { node_ = node_ == nullptr ? Traits::last(tree_) : Traits::prev(tree_, node_); }
  const void *place() const noexcept { return node_; }

 private:
  const typename Traits::record *tree_ = nullptr;
  typename Traits::entry *node_ = nullptr;
};

}  // namespace detail

/* basic_btree: an ordered map, as mub_btree; its entries are the records, mub_btree_node. Moving a tree allocates the
 * small table that the root of an empty one has. An iterator is invalidated when its key is removed. */
template <class Traits>
class basic_btree : public detail::map<basic_btree<Traits>, detail::btree_life<Traits>, Traits> {
  using base = detail::map<basic_btree<Traits>, detail::btree_life<Traits>, Traits>;

 public:
  using iterator = detail::btree_iterator<Traits, std::uint64_t>;
  using const_iterator = detail::btree_iterator<Traits, const std::uint64_t>;
  using reverse_iterator = std::reverse_iterator<iterator>;
  using const_reverse_iterator = std::reverse_iterator<const_iterator>;
  using base::c;
  using typename base::entry_type;
  using typename base::key_type;

  /* The default: pools of its own for entries and records. */
  basic_btree() noexcept : basic_btree(true, true, false) {}

  /* With pools of its own, or without; as mub_btree_init. */
  basic_btree(bool own_entry_pool, bool own_node_pool, bool own_value_pool) noexcept
      : base(std::in_place, own_entry_pool, own_node_pool, own_value_pool) {}

  /* With a value pool, too. */
  explicit basic_btree(value_blocks values) noexcept : basic_btree(true, true, true) {
    detail::set_block_size(c()->value_pool, values.size);
  }

  /* With the caller's pools. */
  basic_btree(mub_pool *entries, mub_pool *nodes, mub_pool *values = nullptr) noexcept
      : basic_btree(false, false, false) {
    c()->entry_pool = entries;
    c()->node_pool = nodes;
    c()->value_pool = values;
  }

  /* clone: a copy; as mub_btree_clone without pools of the caller's. */
  [[nodiscard]] basic_btree clone(mub_clone_fn mend = nullptr) const {
    basic_btree copy(c()->owns_entry_pool != 0, c()->owns_node_pool != 0, c()->owns_value_pool != 0);
    detail::copy_setting(c(), copy.c(), Traits::setting);
    detail::clone_to<Traits>(copy.c(), c(), mend);
    return copy;
  }

  /* nearest: a record near a key; the end in an empty tree. As mub_btree_node_bfind. */
  iterator nearest(key_type key) { return iterator(c(), Traits::call(Traits::nearest, c(), key)); }
  const_iterator nearest(key_type key) const {
    return const_iterator(c(), Traits::call(Traits::nearest, c(), key));
  }

  /* lower_bound: the first record whose key is not below a key; the end when there is none. */
  iterator lower_bound(key_type key) { return iterator(c(), first_from(key)); }
  const_iterator lower_bound(key_type key) const { return const_iterator(c(), first_from(key)); }

  /* iterator_to: a walk from a record of this tree; the end for nullptr. */
  iterator iterator_to(entry_type *node) noexcept { return iterator(c(), node); }

  /* begin: a walk over all records in key order; as mub_btree_node_first and mub_btree_node_next. */
  iterator begin() { return iterator(c(), Traits::first(c())); }
  const_iterator begin() const { return const_iterator(c(), Traits::first(c())); }
  iterator end() noexcept { return iterator(c(), nullptr); }
  const_iterator end() const noexcept { return const_iterator(c(), nullptr); }

  /* rbegin: the same from the greatest key on. */
  reverse_iterator rbegin() { return reverse_iterator(end()); }
  const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
  reverse_iterator rend() { return reverse_iterator(begin()); }
  const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }

 private:
  entry_type *first_from(key_type key) const {
    entry_type *node = Traits::call(Traits::nearest, c(), key);
    // The nearest one is below the key only where the key's leaf ends.
    while (node != nullptr && Traits::compare(c(), node, key) < 0) node = Traits::next(c(), node);
    return node;
  }
};

using btree = basic_btree<detail::btree_traits>;
using btreed = basic_btree<detail::btreed_traits>;
using btreex = basic_btree<detail::btreex_traits>;

}  // namespace v1
}  // namespace mub

#endif
