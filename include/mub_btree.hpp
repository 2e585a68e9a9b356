/**
 * @defgroup btree_hpp mub_btree.hpp: ordered maps
 * @ingroup hpp
 *
 * The ordered maps of mub_btree.h.
 *
 *     mub::btree    keys std::string_view
 *     mub::btreed   keys std::uint32_t, the bits of a number of type c()->key_type, by default signed
 *     mub::btreex   keys std::uint64_t, likewise
 */
#ifndef MUB_BTREE_HPP
#define MUB_BTREE_HPP

#include "mub_base.hpp"
#include "mub_btree.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct btree_traits : byte_key {
  using c_struct = mub_btree;
  using entry = mub_btree_node;
  using cursor = mub_btree_cursor;
  static constexpr auto setting = &mub_btree::nocase;
  static constexpr auto init = mub_btree_init;
  static constexpr auto term = mub_btree_term;
  static constexpr auto verify = mub_btree_verify;
  static constexpr auto memory_bytes = mub_btree_memory_bytes;
  static constexpr auto swap = mub_btree_swap;
  static constexpr auto clone = mub_btree_clone;
  static constexpr auto remove_all = mub_btree_remove_all;
  static constexpr auto free_all = mub_btree_free_all;
  static constexpr auto insert = mub_btree_insert;
  static constexpr auto set = mub_btree_set;
  static constexpr auto get = mub_btree_get;
  static constexpr auto get_many = mub_btree_get_many;
  static constexpr auto update = mub_btree_update;
  static constexpr auto find = mub_btree_find;
  static constexpr auto remove = mub_btree_remove;
  static constexpr auto entry_set = mub_btree_node_set;
  static constexpr auto entry_get = mub_btree_node_get;
  static constexpr auto nearest = mub_btree_node_bfind;
  static constexpr auto first = mub_btree_cursor_first;
  static constexpr auto last = mub_btree_cursor_last;
  static constexpr auto next = mub_btree_cursor_next;
  static constexpr auto prev = mub_btree_cursor_prev;
  static entry *seek(cursor *place, const c_struct *tree, key_type key) {
    return mub_btree_cursor_seek(place, tree, key.data(), static_cast<std::int64_t>(key.size()));
  }
};

struct btreed_traits : integer_key<std::uint32_t> {
  using c_struct = mub_btreed;
  using entry = mub_btreed_node;
  using cursor = mub_btreed_cursor;
  static constexpr auto setting = &mub_btreed::key_type;
  static constexpr auto init = mub_btreed_init;
  static constexpr auto term = mub_btreed_term;
  static constexpr auto verify = mub_btreed_verify;
  static constexpr auto memory_bytes = mub_btreed_memory_bytes;
  static constexpr auto swap = mub_btreed_swap;
  static constexpr auto clone = mub_btreed_clone;
  static constexpr auto remove_all = mub_btreed_remove_all;
  static constexpr auto free_all = mub_btreed_free_all;
  static constexpr auto insert = mub_btreed_insert;
  static constexpr auto set = mub_btreed_set;
  static constexpr auto get = mub_btreed_get;
  static constexpr auto get_many = mub_btreed_get_many;
  static constexpr auto update = mub_btreed_update;
  static constexpr auto find = mub_btreed_find;
  static constexpr auto remove = mub_btreed_remove;
  static constexpr auto entry_set = mub_btreed_node_set;
  static constexpr auto entry_get = mub_btreed_node_get;
  static constexpr auto nearest = mub_btreed_node_bfind;
  static constexpr auto first = mub_btreed_cursor_first;
  static constexpr auto last = mub_btreed_cursor_last;
  static constexpr auto next = mub_btreed_cursor_next;
  static constexpr auto prev = mub_btreed_cursor_prev;
  static entry *seek(cursor *place, const c_struct *tree, key_type key) {
    return mub_btreed_cursor_seek(place, tree, key);
  }
};

struct btreex_traits : integer_key<std::uint64_t> {
  using c_struct = mub_btreex;
  using entry = mub_btreex_node;
  using cursor = mub_btreex_cursor;
  static constexpr auto setting = &mub_btreex::key_type;
  static constexpr auto init = mub_btreex_init;
  static constexpr auto term = mub_btreex_term;
  static constexpr auto verify = mub_btreex_verify;
  static constexpr auto memory_bytes = mub_btreex_memory_bytes;
  static constexpr auto swap = mub_btreex_swap;
  static constexpr auto clone = mub_btreex_clone;
  static constexpr auto remove_all = mub_btreex_remove_all;
  static constexpr auto free_all = mub_btreex_free_all;
  static constexpr auto insert = mub_btreex_insert;
  static constexpr auto set = mub_btreex_set;
  static constexpr auto get = mub_btreex_get;
  static constexpr auto get_many = mub_btreex_get_many;
  static constexpr auto update = mub_btreex_update;
  static constexpr auto find = mub_btreex_find;
  static constexpr auto remove = mub_btreex_remove;
  static constexpr auto entry_set = mub_btreex_node_set;
  static constexpr auto entry_get = mub_btreex_node_get;
  static constexpr auto nearest = mub_btreex_node_bfind;
  static constexpr auto first = mub_btreex_cursor_first;
  static constexpr auto last = mub_btreex_cursor_last;
  static constexpr auto next = mub_btreex_cursor_next;
  static constexpr auto prev = mub_btreex_cursor_prev;
  static entry *seek(cursor *place, const c_struct *tree, key_type key) {
    return mub_btreex_cursor_seek(place, tree, key);
  }
};

template <class Traits>
struct btree_life {
  using c_struct = typename Traits::c_struct;
  static void init(c_struct *tree, int entries, int nodes, int values) noexcept {
    Traits::init(tree, entries, nodes, values);
  }
  static void bare(c_struct *tree) noexcept { Traits::init(tree, 0, 0, 0); }
  static void release(c_struct *tree) noexcept { Traits::term(tree); }
  static constexpr auto verify = Traits::verify;
  static constexpr auto memory_bytes = Traits::memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept {
    Traits::swap(a, b);
    swap_setting(a, b, Traits::setting);
  }
};

// Moves in key order; the end has no record, and a step back from it leads to the last one.
template <class Traits>
class btree_place {
 public:
  using c_struct = typename Traits::c_struct;
  using node = typename Traits::entry;
  using category = std::bidirectional_iterator_tag;
  template <class Value>
  using reference = item<typename Traits::key_type, Value>;

  btree_place() = default;
  // The end.
  explicit btree_place(const c_struct *tree) noexcept { cursor_.tree = tree; }

  static btree_place first(const c_struct *tree) {
    btree_place place;
    place.node_ = Traits::first(&place.cursor_, tree);
    return place;
  }
  static btree_place from(const c_struct *tree, typename Traits::key_type key) {
    btree_place place;
    place.node_ = Traits::seek(&place.cursor_, tree, key);
    return place;
  }
  static btree_place after(const c_struct *tree, typename Traits::key_type key) {
    btree_place place = from(tree, key);
    if (Traits::call(Traits::find, tree, key) != 0) place.step();
    return place;
  }
  static btree_place of(const c_struct *tree, const node *node) {
    return node == nullptr ? btree_place(tree) : from(tree, Traits::key_of(tree, node));
  }

  template <class Value>
  reference<Value> at() const {
    return {Traits::key_of(cursor_.tree, node_), node_->value};
  }
  void step() { node_ = Traits::next(&cursor_); }
  void step_back() {
    node_ = node_ == nullptr ? Traits::last(&cursor_, cursor_.tree) : Traits::prev(&cursor_);
  }
  node *entry() const noexcept { return node_; }

 private:
  typename Traits::cursor cursor_ = {};
  node *node_ = nullptr;
};

}  // namespace detail

/** @addtogroup btree_hpp
 * @{ */

/**
 * An ordered map, which owns its nodes, records and keys and the pools that it created, but nothing else that
 * its values refer to; see mub_btree. Its `entry_type` is mub_btree_node, a record. Moving a tree takes time
 * proportional to its inner nodes, and allocates a small table for the root of the moved-from tree. Iterators
 * contain a cursor: adding or removing a key invalidates all of them.
 */
template <class Traits>
class basic_btree : public detail::map<basic_btree<Traits>, detail::btree_life<Traits>, Traits>,
                    public detail::reversible<basic_btree<Traits>> {
  using base = detail::map<basic_btree<Traits>, detail::btree_life<Traits>, Traits>;
  using place = detail::btree_place<Traits>;

 public:
  using iterator = detail::iterator<detail::btree_place<Traits>, std::uint64_t>;
  using const_iterator = detail::iterator<detail::btree_place<Traits>, const std::uint64_t>;
  using reverse_iterator = std::reverse_iterator<iterator>;
  using const_reverse_iterator = std::reverse_iterator<const_iterator>;
  using base::c;
  using typename base::entry_type;
  using typename base::key_type;

  /** Constructs an empty tree that owns pools for nodes (`entry_pool`) and records (`node_pool`). */
  basic_btree() noexcept : basic_btree(true, true, false) {}

  /** Constructs an empty tree that owns the pools that the flags select; see mub_btree_init(). */
  basic_btree(bool with_entry_pool, bool with_node_pool, bool with_value_pool) noexcept
      : base(std::in_place, with_entry_pool, with_node_pool, with_value_pool) {}

  /** Constructs an empty tree that owns pools for nodes, records and values. */
  explicit basic_btree(value_blocks values) noexcept : basic_btree(true, true, true) {
    detail::set_block_size(c()->value_pool, values.size);
  }

  /**
   * Constructs an empty tree with external pools, which must outlive it: `entry_pool` for nodes, `node_pool`
   * for records.
   */
  basic_btree(mub_pool *entry_pool, mub_pool *node_pool, mub_pool *value_pool = nullptr) noexcept
      : basic_btree(false, false, false) {
    c()->entry_pool = entry_pool;
    c()->node_pool = node_pool;
    c()->value_pool = value_pool;
  }

  /** Returns a copy, made by mub_btree_clone() without user pools; empty if memory ran out. */
  [[nodiscard]] basic_btree clone(mub_clone_fn adjust = nullptr) const {
    basic_btree copy(c()->owns_entry_pool != 0, c()->owns_node_pool != 0, c()->owns_value_pool != 0);
    detail::copy_setting(c(), copy.c(), Traits::setting);
    detail::clone_to<Traits>(copy.c(), c(), adjust);
    return copy;
  }

  /**
   * Returns an iterator to the record of a key or one near it; end() in an empty tree. See
   * mub_btree_node_bfind().
   */
  ///@{
  iterator nearest(key_type key) { return iterator_to(Traits::call(Traits::nearest, c(), key)); }
  const_iterator nearest(key_type key) const {
    return const_iterator(place::of(c(), Traits::call(Traits::nearest, c(), key)));
  }
  ///@}

  /**
   * Returns an iterator to the first record whose key is not less than a key; end() if there is none. See
   * mub_btree_cursor_seek().
   */
  ///@{
  iterator lower_bound(key_type key) { return iterator(place::from(c(), key)); }
  const_iterator lower_bound(key_type key) const { return const_iterator(place::from(c(), key)); }
  ///@}

  /** Returns an iterator to the first record whose key is greater than a key; end() if there is none. */
  ///@{
  iterator upper_bound(key_type key) { return iterator(place::after(c(), key)); }
  const_iterator upper_bound(key_type key) const { return const_iterator(place::after(c(), key)); }
  ///@}

  /** Returns lower_bound() and upper_bound(): the range is the record of the key, or empty. */
  ///@{
  std::pair<iterator, iterator> equal_range(key_type key) { return {lower_bound(key), upper_bound(key)}; }
  std::pair<const_iterator, const_iterator> equal_range(key_type key) const {
    return {lower_bound(key), upper_bound(key)};
  }
  ///@}

  using base::erase;
  /** Removes the record at an iterator, whose value is not released; returns the next iterator. */
  iterator erase(const_iterator position) {
    iterator next(position.place());
    ++next;
    base::remove((*position).key);
    return iterator_to(next.position());  // records do not move, but the removal invalidates cursors
  }

  /** Returns an iterator to a record, which must belong to this tree; end() for nullptr. */
  iterator iterator_to(entry_type *node) { return iterator(place::of(c(), node)); }

  /** Iterators over all records in key order; see mub_btree_cursor_first() and mub_btree_cursor_next(). */
  ///@{
  iterator begin() { return iterator(place::first(c())); }
  const_iterator begin() const { return const_iterator(place::first(c())); }
  iterator end() noexcept { return iterator(place(c())); }
  const_iterator end() const noexcept { return const_iterator(place(c())); }
  ///@}
};

/** An ordered map with byte-string keys; see mub_btree. */
using btree = basic_btree<detail::btree_traits>;
/** An ordered map with 32-bit keys; see mub_btreed. */
using btreed = basic_btree<detail::btreed_traits>;
/** An ordered map with 64-bit keys; see mub_btreex. */
using btreex = basic_btree<detail::btreex_traits>;

/** @} */

}  // namespace v1
}  // namespace mub

#endif
