/**
 * @defgroup list_hpp mub_list.hpp: linked lists
 * @ingroup hpp
 *
 * The linked lists of mub_list.h.
 *
 *     mub::list    for (auto [key, value] : list)      values with std::string_view keys
 *     mub::lists   for (std::uint64_t &value : list)   bare values
 *     mub::listx   for (std::uint64_t &value : list)   bare values, up to 32 in a block: no positions
 *
 * A position is the address of an entry, as in C; nothing checks that it belongs to the list. With nullptr,
 * insert_before() adds at the head, insert_after() adds at the tail, and remove_at() does nothing.
 */
#ifndef MUB_LIST_HPP
#define MUB_LIST_HPP

#include "mub_base.hpp"
#include "mub_list.h"

namespace mub {
inline namespace v1 {
namespace detail {

// Moves through single entries; in a listx, there is also an index within the block.
template <class Traits>
class list_place {
 public:
  using entry_type = typename Traits::entry;
  using category = std::bidirectional_iterator_tag;
  template <class Value>
  using reference = typename Traits::template reference<Value>;

  list_place() = default;
  list_place(const typename Traits::c_struct *list, entry_type *entry) noexcept
      : list_(list), entry_(entry) {}

  template <class Value>
  reference<Value> at() const noexcept {
    return Traits::template at<Value>(list_, entry_);
  }
  void step() noexcept { entry_ = entry_->next; }
  void step_back() noexcept { entry_ = entry_ == nullptr ? list_->tail : entry_->prev; }
  entry_type *entry() const noexcept { return entry_; }

 private:
  const typename Traits::c_struct *list_ = nullptr;
  entry_type *entry_ = nullptr;
};

class block_place {
 public:
  using category = std::bidirectional_iterator_tag;
  template <class Value>
  using reference = Value &;

  block_place() = default;
  block_place(const mub_listx *list, mub_listx_block *block) noexcept : list_(list), block_(block) {}

  template <class Value>
  Value &at() const noexcept {
    return block_->values[index_];
  }
  void step() noexcept {
    if (++index_ < block_->count) return;
    block_ = block_->next;
    index_ = 0;
  }
  void step_back() noexcept {
    if (--index_ >= 0) return;
    block_ = block_ == nullptr ? list_->tail : block_->prev;
    index_ = block_->count - 1;
  }
  const std::uint64_t *entry() const noexcept {
    return block_ == nullptr ? nullptr : &block_->values[index_];
  }

 private:
  const mub_listx *list_ = nullptr;
  mub_listx_block *block_ = nullptr;
  std::int64_t index_ = 0;
};

struct list_traits {
  using c_struct = mub_list;
  using entry = mub_list_entry;
  template <class Value>
  using reference = item<std::string_view, Value>;
  using place = list_place<list_traits>;
  static constexpr auto init = mub_list_init;
  static constexpr auto term = mub_list_term;
  static constexpr auto verify = mub_list_verify;
  static constexpr auto memory_bytes = mub_list_memory_bytes;
  static constexpr auto swap = mub_list_swap;
  static constexpr auto clone = mub_list_clone;
  static constexpr auto remove_all = mub_list_remove_all;
  static constexpr auto free_all = mub_list_free_all;
  static constexpr auto remove_head = mub_list_remove_head;
  static constexpr auto remove_tail = mub_list_remove_tail;
  static constexpr auto remove_at = mub_list_remove_at;
  static constexpr auto add_head_list = mub_list_add_head_list;
  static constexpr auto add_tail_list = mub_list_add_tail_list;
  template <class Value>
  static reference<Value> at(const c_struct *list, entry *entry) noexcept {
    return {byte_key::key_of(list, entry), entry->value};
  }
};

struct lists_traits {
  using c_struct = mub_lists;
  using entry = mub_lists_entry;
  template <class Value>
  using reference = Value &;
  using place = list_place<lists_traits>;
  static constexpr auto init = mub_lists_init;
  static constexpr auto term = mub_lists_term;
  static constexpr auto verify = mub_lists_verify;
  static constexpr auto memory_bytes = mub_lists_memory_bytes;
  static constexpr auto swap = mub_lists_swap;
  static constexpr auto clone = mub_lists_clone;
  static constexpr auto remove_all = mub_lists_remove_all;
  static constexpr auto free_all = mub_lists_free_all;
  static constexpr auto remove_head = mub_lists_remove_head;
  static constexpr auto remove_tail = mub_lists_remove_tail;
  static constexpr auto remove_at = mub_lists_remove_at;
  static constexpr auto add_head_list = mub_lists_add_head_list;
  static constexpr auto add_tail_list = mub_lists_add_tail_list;
  template <class Value>
  static Value &at(const c_struct *, entry *entry) noexcept {
    return entry->value;
  }
};

struct listx_traits {
  using c_struct = mub_listx;
  using entry = mub_listx_block;
  using place = block_place;
  static constexpr auto init = mub_listx_init;
  static constexpr auto term = mub_listx_term;
  static constexpr auto verify = mub_listx_verify;
  static constexpr auto memory_bytes = mub_listx_memory_bytes;
  // There is no C function for it; nothing points into the record.
  static void swap(c_struct *a, c_struct *b) noexcept { std::swap(*a, *b); }
  static constexpr auto remove_all = mub_listx_remove_all;
  static constexpr auto free_all = mub_listx_free_all;
  static constexpr auto remove_head = mub_listx_remove_head;
  static constexpr auto remove_tail = mub_listx_remove_tail;
};

template <class Traits>
struct list_life {
  using c_struct = typename Traits::c_struct;
  static void init(c_struct *list, int entries, int values) noexcept { Traits::init(list, entries, values); }
  static void bare(c_struct *list) noexcept { Traits::init(list, 0, 0); }
  static void release(c_struct *list) noexcept { Traits::term(list); }
  static constexpr auto verify = Traits::verify;
  static constexpr auto memory_bytes = Traits::memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept { Traits::swap(a, b); }
};

/** The members that all lists have in common. */
template <class Derived, class Traits>
class linked : public owner<Derived, list_life<Traits>>, public range<Derived>, public reversible<Derived> {
  using base = owner<Derived, list_life<Traits>>;
  using place = typename Traits::place;

 public:
  using iterator = detail::iterator<place, std::uint64_t>;
  using const_iterator = detail::iterator<place, const std::uint64_t>;
  using reverse_iterator = std::reverse_iterator<iterator>;
  using const_reverse_iterator = std::reverse_iterator<const_iterator>;
  using base::c;

  /** Constructs an empty list that owns an entry pool. */
  linked() noexcept : linked(true, false) {}

  /** Constructs an empty list that owns the pools that the flags select; see mub_list_init(). */
  linked(bool with_entry_pool, bool with_value_pool) noexcept
      : base(std::in_place, with_entry_pool, with_value_pool) {}

  /** Constructs an empty list that owns an entry pool and a value pool. */
  explicit linked(value_blocks values) noexcept : linked(true, true) {
    set_block_size(c()->value_pool, values.size);
  }

  /** Constructs an empty list with external pools, which must outlive it. */
  explicit linked(mub_pool *entries, mub_pool *values = nullptr) noexcept : linked(false, false) {
    c()->entry_pool = entries;
    c()->value_pool = values;
  }

  /** Returns the number of values. */
  std::int64_t size() const noexcept { return c()->count; }
  /** Checks whether the list is empty. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  /** Returns the first item, in a list that is not empty. */
  ///@{
  typename iterator::reference front() noexcept { return *begin(); }
  typename const_iterator::reference front() const noexcept { return *begin(); }
  ///@}
  /** Returns the last item, in a list that is not empty. */
  ///@{
  typename iterator::reference back() noexcept { return *--end(); }
  typename const_iterator::reference back() const noexcept { return *--end(); }
  ///@}

  /** Removes the first value and returns it, not released; 0 if there is none. See mub_list_remove_head(). */
  std::uint64_t pop_front() { return Traits::remove_head(c()); }
  /** Removes the last value and returns it, not released; 0 if there is none. See mub_list_remove_tail(). */
  std::uint64_t pop_back() { return Traits::remove_tail(c()); }

  /** Removes all values without a call for them. Invalidates all iterators. See mub_list_remove_all(). */
  void clear() { Traits::remove_all(c()); }

  /**
   * Calls `release` with every value that is not 0, then removes all. Invalidates all iterators. See
   * mub_list_free_all().
   */
  void free_all(mub_free_fn release) { Traits::free_all(c(), release); }

  /** Iterators from the head. An iterator of list or lists is valid until its entry is removed. */
  ///@{
  iterator begin() noexcept { return iterator(place(c(), c()->head)); }
  const_iterator begin() const noexcept { return const_iterator(place(c(), c()->head)); }
  iterator end() noexcept { return iterator(place(c(), nullptr)); }
  const_iterator end() const noexcept { return const_iterator(place(c(), nullptr)); }
  ///@}
};

/** The members that list and lists have in common: their entries are positions. */
template <class Derived, class Traits>
class positioned : public linked<Derived, Traits> {
 public:
  using entry_type = typename Traits::entry;
  using linked<Derived, Traits>::linked;
  using linked<Derived, Traits>::c;
  using typename linked<Derived, Traits>::iterator;
  using typename linked<Derived, Traits>::const_iterator;

  /** Returns a copy, made by mub_list_clone() without user pools; empty if memory ran out. */
  [[nodiscard]] Derived clone(mub_clone_fn adjust = nullptr) const {
    Derived copy(c()->owns_entry_pool != 0, c()->owns_value_pool != 0);
    clone_to<Traits>(copy.c(), c(), adjust);
    return copy;
  }

  /**
   * Removes the entry at a position and returns its value, which is not released; see mub_list_remove_at().
   */
  std::uint64_t remove_at(entry_type *position) { return Traits::remove_at(c(), position); }

  /** Removes the entry at an iterator, whose value is not released; returns the next iterator. */
  iterator erase(const_iterator position) {
    iterator next(position.place());
    ++next;
    remove_at(position.place().entry());
    return next;
  }

  /**
   * Adds copies of all entries of a list, which may be this one, at the head; none if memory runs out. See
   * mub_list_add_head_list().
   */
  void prepend(const Derived &source) { Traits::add_head_list(this->growing(), source.c()); }
  /**
   * Adds copies of all entries of a list, which may be this one, at the tail; none if memory runs out. See
   * mub_list_add_tail_list().
   */
  void append(const Derived &source) { Traits::add_tail_list(this->growing(), source.c()); }

  /** Returns an iterator to an entry, which must belong to this list; end() for nullptr. */
  iterator iterator_to(entry_type *entry) noexcept { return iterator(typename Traits::place(c(), entry)); }
};

}  // namespace detail

/** @addtogroup list_hpp
 * @{ */

/**
 * A linked list of values with byte-string keys, which owns its keys and the pools that it created; see
 * mub_list. Additions return the new entry; nullptr if memory ran out or the keys would exceed 2^32 - 1
 * bytes.
 */
class list : public detail::positioned<list, detail::list_traits> {
 public:
  using positioned::positioned;

  /**
   * Adds an entry at the head (front) or the tail (back); see mub_list_add_head() and mub_list_add_tail().
   */
  ///@{
  entry_type *push_front(std::string_view key, std::uint64_t value) {
    return mub_list_add_head(growing(), key.data(), length(key), value);
  }
  entry_type *push_back(std::string_view key, std::uint64_t value) {
    return mub_list_add_tail(growing(), key.data(), length(key), value);
  }
  ///@}

  /** Inserts an entry before or after another; see mub_list_insert_before() and mub_list_insert_after(). */
  ///@{
  entry_type *insert_before(entry_type *position, std::string_view key, std::uint64_t value) {
    return mub_list_insert_before(growing(), position, key.data(), length(key), value);
  }
  entry_type *insert_after(entry_type *position, std::string_view key, std::uint64_t value) {
    return mub_list_insert_after(growing(), position, key.data(), length(key), value);
  }
  ///@}

  /** Returns the first entry with a key; nullptr if there is none. See mub_list_find(). */
  ///@{
  entry_type *find(std::string_view key) { return mub_list_find(c(), key.data(), length(key)); }
  const entry_type *find(std::string_view key) const { return mub_list_find(c(), key.data(), length(key)); }
  ///@}

 private:
  static std::int64_t length(std::string_view key) noexcept { return static_cast<std::int64_t>(key.size()); }
};

/**
 * A linked list of bare values, which owns the pools that it created; see mub_lists. Additions return the new
 * entry; nullptr if memory ran out.
 */
class lists : public detail::positioned<lists, detail::lists_traits> {
 public:
  using positioned::positioned;

  /**
   * Adds a value at the head (front) or the tail (back); see mub_lists_add_head() and mub_lists_add_tail().
   */
  ///@{
  entry_type *push_front(std::uint64_t value) { return mub_lists_add_head(growing(), value); }
  entry_type *push_back(std::uint64_t value) { return mub_lists_add_tail(growing(), value); }
  ///@}

  /** Inserts a value before or after an entry; see mub_lists_insert_before() and mub_lists_insert_after(). */
  ///@{
  entry_type *insert_before(entry_type *position, std::uint64_t value) {
    return mub_lists_insert_before(growing(), position, value);
  }
  entry_type *insert_after(entry_type *position, std::uint64_t value) {
    return mub_lists_insert_after(growing(), position, value);
  }
  ///@}

  /** Returns the first entry with a value; nullptr if there is none. See mub_lists_find_at(). */
  ///@{
  entry_type *find(std::uint64_t value) { return mub_lists_find_at(c(), value); }
  const entry_type *find(std::uint64_t value) const { return mub_lists_find_at(c(), value); }
  ///@}
};

/**
 * A linked list of blocks of bare values, which owns the pools that it created; see mub_listx. Every addition
 * and removal invalidates all iterators.
 */
class listx : public detail::linked<listx, detail::listx_traits> {
 public:
  using linked::linked;

  /**
   * Returns a copy of the values as words, which owns an entry pool or shares an external one; empty if
   * memory ran out.
   */
  [[nodiscard]] listx clone() const {
    listx copy(c()->owns_entry_pool != 0, false);
    if (c()->owns_entry_pool == 0) copy.c()->entry_pool = c()->entry_pool;
    for (const std::uint64_t value : *this) {
      if (copy.push_back(value)) continue;
      copy.clear();
      break;
    }
    return copy;
  }

  /**
   * Adds a value at the head (front) or the tail (back); false if memory ran out. See mub_listx_add_head()
   * and mub_listx_add_tail().
   */
  ///@{
  bool push_front(std::uint64_t value) { return mub_listx_add_head(growing(), value) != nullptr; }
  bool push_back(std::uint64_t value) { return mub_listx_add_tail(growing(), value) != nullptr; }
  ///@}
};

/** @} */

}  // namespace v1
}  // namespace mub

#endif
