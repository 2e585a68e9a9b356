/**
 * @defgroup array_hpp mub_array.hpp: growable arrays
 * @ingroup hpp
 *
 * The arrays of mub_array.h.
 *
 *     mub::array    keys std::string_view      mub::arrays   bare items, ordered by your comparators
 *     mub::arrayd   keys std::uint32_t         mub::arrayt   words, the first four of them in the record
 *     mub::arrayx   keys std::uint64_t
 *
 * contains, get, find, insert, emplace, update, remove, find_index and nearest_index need a sorted array;
 * append, scan_index and the operations with an index work in any order, and sort() sorts. That an array is
 * sorted is not checked. Only append() and append_new() of mub::array add an entry even if there is no memory
 * for its key, which is then empty. Every addition, removal and sort invalidates iterators.
 */
#ifndef MUB_ARRAY_HPP
#define MUB_ARRAY_HPP

#include "mub_array.h"
#include "mub_base.hpp"

namespace mub {
inline namespace v1 {
namespace detail {

struct array_traits : byte_key {
  using c_struct = mub_array;
  using entry = mub_array_entry;
  static constexpr auto init = mub_array_init;
  static constexpr auto term = mub_array_term;
  static constexpr auto verify = mub_array_verify;
  static constexpr auto memory_bytes = mub_array_memory_bytes;
  static constexpr auto swap = mub_array_swap;
  static constexpr auto clone = mub_array_clone;
  static constexpr auto expand = mub_array_expand;
  static constexpr auto shrink = mub_array_shrink;
  static constexpr auto remove_all = mub_array_remove_all;
  static constexpr auto free_all = mub_array_free_all;
  static constexpr auto append = mub_array_append;
  static constexpr auto append_new = mub_array_append_new;
  static constexpr auto append_array = mub_array_append_array;
  static constexpr auto get_entry = mub_array_get_entry;
  static constexpr auto insert_at = mub_array_insert_at;
  static constexpr auto free_at = mub_array_free_at;
  static constexpr auto insert = mub_array_insert;
  static constexpr auto get = mub_array_find;
  static constexpr auto update = mub_array_update;
  static constexpr auto remove = mub_array_remove;
  static constexpr auto entry_insert = mub_array_entry_insert;
  static constexpr auto entry_get = mub_array_entry_find;
  static constexpr auto find_index = mub_array_find_index;
  static constexpr auto afind_index = mub_array_afind_index;
  static constexpr auto bfind_index = mub_array_bfind_index;
  static constexpr auto qsort = mub_array_qsort;
  static constexpr auto qsort_x = mub_array_qsort_x;
  static int find(const c_struct *array, const void *key, std::int64_t length) {
    return mub_array_find_index(array, key, length) >= 0;
  }
  static std::uint64_t remove_at(c_struct *array, std::int64_t index) {
    return mub_array_remove_at(array, index);
  }
};

struct arrayd_traits : integer_key<std::uint32_t> {
  using c_struct = mub_arrayd;
  using entry = mub_arrayd_entry;
  static constexpr auto init = mub_arrayd_init;
  static constexpr auto term = mub_arrayd_term;
  static constexpr auto verify = mub_arrayd_verify;
  static constexpr auto memory_bytes = mub_arrayd_memory_bytes;
  static constexpr auto swap = mub_arrayd_swap;
  static constexpr auto clone = mub_arrayd_clone;
  static constexpr auto expand = mub_arrayd_expand;
  static constexpr auto shrink = mub_arrayd_shrink;
  static constexpr auto remove_all = mub_arrayd_remove_all;
  static constexpr auto free_all = mub_arrayd_free_all;
  static constexpr auto append = mub_arrayd_append;
  static constexpr auto append_new = mub_arrayd_append_new;
  static constexpr auto append_array = mub_arrayd_append_array;
  static constexpr auto get_entry = mub_arrayd_get_entry;
  static constexpr auto insert_at = mub_arrayd_insert_at;
  static constexpr auto free_at = mub_arrayd_free_at;
  static constexpr auto insert = mub_arrayd_insert;
  static constexpr auto get = mub_arrayd_find;
  static constexpr auto update = mub_arrayd_update;
  static constexpr auto remove = mub_arrayd_remove;
  static constexpr auto entry_insert = mub_arrayd_entry_insert;
  static constexpr auto entry_get = mub_arrayd_entry_find;
  static constexpr auto find_index = mub_arrayd_find_index;
  static constexpr auto afind_index = mub_arrayd_afind_index;
  static constexpr auto bfind_index = mub_arrayd_bfind_index;
  static constexpr auto qsort = mub_arrayd_qsort;
  static constexpr auto qsort_x = mub_arrayd_qsort_x;
  static int find(const c_struct *array, key_type key) { return mub_arrayd_find_index(array, key) >= 0; }
  static std::uint64_t remove_at(c_struct *array, std::int64_t index) {
    key_type key;
    return mub_arrayd_remove_at(array, index, &key);
  }
};

struct arrayx_traits : integer_key<std::uint64_t> {
  using c_struct = mub_arrayx;
  using entry = mub_arrayx_entry;
  static constexpr auto init = mub_arrayx_init;
  static constexpr auto term = mub_arrayx_term;
  static constexpr auto verify = mub_arrayx_verify;
  static constexpr auto memory_bytes = mub_arrayx_memory_bytes;
  static constexpr auto swap = mub_arrayx_swap;
  static constexpr auto clone = mub_arrayx_clone;
  static constexpr auto expand = mub_arrayx_expand;
  static constexpr auto shrink = mub_arrayx_shrink;
  static constexpr auto remove_all = mub_arrayx_remove_all;
  static constexpr auto free_all = mub_arrayx_free_all;
  static constexpr auto append = mub_arrayx_append;
  static constexpr auto append_new = mub_arrayx_append_new;
  static constexpr auto append_array = mub_arrayx_append_array;
  static constexpr auto get_entry = mub_arrayx_get_entry;
  static constexpr auto insert_at = mub_arrayx_insert_at;
  static constexpr auto free_at = mub_arrayx_free_at;
  static constexpr auto insert = mub_arrayx_insert;
  static constexpr auto get = mub_arrayx_find;
  static constexpr auto update = mub_arrayx_update;
  static constexpr auto remove = mub_arrayx_remove;
  static constexpr auto entry_insert = mub_arrayx_entry_insert;
  static constexpr auto entry_get = mub_arrayx_entry_find;
  static constexpr auto find_index = mub_arrayx_find_index;
  static constexpr auto afind_index = mub_arrayx_afind_index;
  static constexpr auto bfind_index = mub_arrayx_bfind_index;
  static constexpr auto qsort = mub_arrayx_qsort;
  static constexpr auto qsort_x = mub_arrayx_qsort_x;
  static int find(const c_struct *array, key_type key) { return mub_arrayx_find_index(array, key) >= 0; }
  static std::uint64_t remove_at(c_struct *array, std::int64_t index) {
    key_type key;
    return mub_arrayx_remove_at(array, index, &key);
  }
};

// The arrays with a value pool. mub_array_swap() and its variants do not exchange the pools;
// mub_arrays_swap() does.
template <class Traits, bool kSwapsPools>
struct array_life {
  using c_struct = typename Traits::c_struct;
  static void init(c_struct *array, int with_pool) noexcept { Traits::init(array, with_pool); }
  static void bare(c_struct *array) noexcept { Traits::init(array, 0); }
  static void release(c_struct *array) noexcept { Traits::term(array); }
  static constexpr auto verify = Traits::verify;
  static constexpr auto memory_bytes = Traits::memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept {
    Traits::swap(a, b);
    std::swap(a->descending, b->descending);
    if (kSwapsPools) return;
    std::swap(a->pool, b->pool);
    std::swap(a->own_pool, b->own_pool);
  }
};

// A clone without the pool that its source has, or for which memory ran out, stays empty.
template <class Traits>
void clone_array(const typename Traits::c_struct *source, typename Traits::c_struct *copy,
                 mub_clone_fn adjust) {
  copy->descending = source->descending;
  if (copy->own_pool != source->own_pool) return;
  Traits::clone(source, nullptr, copy, nullptr, adjust);
  if (copy->count > copy->capacity) Traits::remove_all(copy);
}

// The number of entries with slots: if mub_array_clone() runs out of memory, the count exceeds it.
template <class Record>
std::int64_t slots_in_use(const Record *array) noexcept {
  return array->count < array->capacity ? array->count : array->capacity;
}

// For the flag of sort(): a comparator of the wrong type, or a lambda, would convert to bool.
template <class Flag>
using only_bool = std::enable_if_t<std::is_same_v<Flag, bool>, int>;

// An index. Its iterators have random access.
template <class Access>
class index_place {
 public:
  using category = std::random_access_iterator_tag;
  template <class Value>
  using reference = typename Access::template reference<Value>;

  index_place() = default;
  index_place(const typename Access::c_struct *array, std::int64_t index) noexcept
      : array_(array), index_(index) {}

  template <class Value>
  reference<Value> at() const noexcept {
    return Access::template at<Value>(array_, index_);
  }
  void step() noexcept { ++index_; }
  void step_back() noexcept { --index_; }
  std::int64_t entry() const noexcept { return index_; }
  index_place plus(std::ptrdiff_t n) const noexcept { return {array_, index_ + n}; }

 private:
  const typename Access::c_struct *array_ = nullptr;
  std::int64_t index_ = 0;
};

template <class Access, class Value>
using index_iterator = iterator<index_place<Access>, Value>;

template <class A, class V>
index_iterator<A, V> operator+(const index_iterator<A, V> &it, std::ptrdiff_t n) noexcept {
  return index_iterator<A, V>(it.place().plus(n));
}
template <class A, class V>
index_iterator<A, V> operator+(std::ptrdiff_t n, const index_iterator<A, V> &it) noexcept {
  return it + n;
}
template <class A, class V>
index_iterator<A, V> operator-(const index_iterator<A, V> &it, std::ptrdiff_t n) noexcept {
  return it + -n;
}
template <class A, class V>
index_iterator<A, V> &operator+=(index_iterator<A, V> &it, std::ptrdiff_t n) noexcept {
  return it = it + n;
}
template <class A, class V>
index_iterator<A, V> &operator-=(index_iterator<A, V> &it, std::ptrdiff_t n) noexcept {
  return it = it + -n;
}
template <class A, class V, class W>
std::ptrdiff_t operator-(const index_iterator<A, V> &a, const index_iterator<A, W> &b) noexcept {
  return static_cast<std::ptrdiff_t>(a.position() - b.position());
}
template <class A, class V, class W>
bool operator<(const index_iterator<A, V> &a, const index_iterator<A, W> &b) noexcept {
  return a.position() < b.position();
}
template <class A, class V, class W>
bool operator>(const index_iterator<A, V> &a, const index_iterator<A, W> &b) noexcept {
  return b < a;
}
template <class A, class V, class W>
bool operator<=(const index_iterator<A, V> &a, const index_iterator<A, W> &b) noexcept {
  return !(b < a);
}
template <class A, class V, class W>
bool operator>=(const index_iterator<A, V> &a, const index_iterator<A, W> &b) noexcept {
  return !(a < b);
}

template <class Traits>
struct entry_access {
  using c_struct = typename Traits::c_struct;
  template <class Value>
  using reference = item<typename Traits::key_type, Value>;
  template <class Value>
  static reference<Value> at(const c_struct *array, std::int64_t index) noexcept {
    auto *entry = array->entries + index;
    return {Traits::key_of(array, entry), entry->value};
  }
};

struct word_access {
  using c_struct = mub_arrayt;
  template <class Value>
  using reference = Value &;
  template <class Value>
  static Value &at(const c_struct *array, std::int64_t index) noexcept {
    // The iterators of a const array yield const words only.
    return index < 4 ? const_cast<c_struct *>(array)->inline_items[index] : array->tail[index - 4];
  }
};

/** The members that all arrays have in common. */
template <class Derived>
class indexed : public reversible<Derived> {
 public:
  /** Returns the first item, in an array that is not empty. */
  ///@{
  decltype(auto) front() { return self()[0]; }
  decltype(auto) front() const { return self()[0]; }
  ///@}
  /** Returns the last item, in an array that is not empty. */
  ///@{
  decltype(auto) back() { return self()[self().size() - 1]; }
  decltype(auto) back() const { return self()[self().size() - 1]; }
  ///@}

  /** Removes the last item and returns its value, which is not released; 0 if there is none. */
  std::uint64_t pop_back() { return self().remove_at(self().size() - 1); }

 protected:
  // Removes the item at an iterator; the iterator's index is then that of the next item.
  template <class Iterator>
  auto erase_at(Iterator position) {
    const std::int64_t index = position - std::as_const(self()).begin();
    self().remove_at(index);
    return self().begin() + index;
  }

 private:
  Derived &self() noexcept { return static_cast<Derived &>(*this); }
  const Derived &self() const noexcept { return static_cast<const Derived &>(*this); }
};

}  // namespace detail

/** @addtogroup array_hpp
 * @{ */

/**
 * An array of entries with keys, which owns its table, its keys and the pool that it created, but not what
 * its values refer to; see mub_array.
 */
template <class Traits>
class basic_array : public detail::keyed<basic_array<Traits>, detail::array_life<Traits, false>, Traits>,
                    public detail::indexed<basic_array<Traits>> {
  using base = detail::keyed<basic_array<Traits>, detail::array_life<Traits, false>, Traits>;
  using place = detail::index_place<detail::entry_access<Traits>>;

 public:
  using iterator = detail::iterator<place, std::uint64_t>;
  using const_iterator = detail::iterator<place, const std::uint64_t>;
  using base::c;
  using typename base::entry_type;
  using typename base::key_type;

  /** Constructs an empty array without a value pool. */
  basic_array() noexcept : base(std::in_place, 0) {}

  /** Constructs an empty array that owns a value pool. */
  explicit basic_array(value_blocks values) noexcept : base(std::in_place, 1) {
    detail::set_block_size(c()->pool, values.size);
  }

  /** Constructs an empty array with an external value pool, which must outlive it. */
  explicit basic_array(mub_pool *values) noexcept : basic_array() { c()->pool = values; }

  /** Returns a copy, made by mub_array_clone() without a source pool; empty if memory ran out. */
  [[nodiscard]] basic_array clone(mub_clone_fn adjust = nullptr) const {
    basic_array copy;
    if (c()->own_pool != 0) copy = basic_array(value_blocks{0});
    detail::clone_array<Traits>(c(), copy.c(), adjust);
    return copy;
  }

  /** Makes room for `wanted` entries in total; false if memory ran out. See mub_array_expand(). */
  [[nodiscard]] bool reserve(std::int64_t wanted) { return Traits::expand(c(), wanted) != 0; }

  /** Sets the count, which can also be increased up to the capacity; see mub_array_shrink(). */
  void shrink(std::int64_t n) { Traits::shrink(c(), n); }

  /**
   * Adds an entry at the end, without regard to the order; false if memory ran out. See mub_array_append().
   */
  ///@{
  bool append(key_type key, std::uint64_t value) {
    return this->grows([&](auto *record) { Traits::call(Traits::append, record, key, value); });
  }
  bool push_back(key_type key, std::uint64_t value) { return append(key, value); }
  ///@}

  /**
   * Adds copies of all entries of an array, which may be this one, at the end; see mub_array_append_array().
   */
  void append(const basic_array &source) { Traits::append_array(this->growing(), source.c()); }

  /**
   * Adds an entry at the end, with a new block of the value pool as its value, and returns the block; 0 if
   * there is none. See mub_array_append_new().
   */
  std::uint64_t append_new(key_type key, mub_init_fn init = nullptr) {
    return Traits::call(Traits::append_new, this->growing(), key, init);
  }

  /**
   * Adds an entry before the one at an index, or at the end if there is none; false for a negative index, or
   * if memory ran out. A mub::array also refuses an empty key before an entry. See mub_array_insert_at().
   */
  bool insert_at(std::int64_t index, key_type key, std::uint64_t value) {
    const auto insert = [index](auto *array, auto... rest) { Traits::insert_at(array, index, rest...); };
    return this->grows([&](auto *record) { Traits::call(insert, record, key, value); });
  }

  /**
   * Removes the entry at an index and returns its value, which is not released; see mub_array_remove_at().
   */
  std::uint64_t remove_at(std::int64_t index) { return Traits::remove_at(c(), index); }

  using base::erase;
  /** Removes the entry at an iterator, without releasing its value; returns the next iterator. */
  iterator erase(const_iterator position) { return this->erase_at(position); }

  /** Removes the entry at an index and passes its value to `release`; see mub_array_free_at(). */
  void free_at(std::int64_t index, mub_free_fn release) { Traits::free_at(c(), index, release); }

  /**
   * Returns the slot at an index, spare ones included; nullptr outside the capacity. See
   * mub_array_get_entry().
   */
  ///@{
  entry_type *at(std::int64_t index) { return Traits::get_entry(c(), index); }
  const entry_type *at(std::int64_t index) const { return Traits::get_entry(c(), index); }
  ///@}

  /** Returns the key and value at an index from 0 to size() - 1, which is not checked. */
  ///@{
  typename iterator::reference operator[](std::int64_t index) { return begin()[index]; }
  typename const_iterator::reference operator[](std::int64_t index) const { return begin()[index]; }
  ///@}

  /** Finds the entry of a key, or adds one with value 0; see mub_array_entry_insert(). */
  emplaced<entry_type> emplace(key_type key) {
    entry_type *entry = nullptr;
    const bool inserted =
        this->grows([&](auto *record) { entry = Traits::call(Traits::entry_insert, record, key); });
    return {entry, inserted};
  }

  /** Returns the index of a key; -1 if it is absent. See mub_array_find_index(). */
  std::int64_t find_index(key_type key) const { return Traits::call(Traits::find_index, c(), key); }

  /**
   * Returns the index of the key, any one of several equal ones; if it is absent, that of the first key after
   * it in the order of the array, or else the last index. Returns -1 in an empty array. See
   * mub_array_bfind_index().
   */
  std::int64_t nearest_index(key_type key) const { return Traits::call(Traits::bfind_index, c(), key); }

  /**
   * Returns the index of the first entry with a key, by linear search; -1 if there is none. See
   * mub_array_afind_index().
   */
  std::int64_t scan_index(key_type key) const { return Traits::call(Traits::afind_index, c(), key); }

  /** Sorts by key, not stable; ascending unless the flag is false. See mub_array_qsort(). */
  ///@{
  void sort() { sort(true); }
  template <class Flag, detail::only_bool<Flag> = 0>
  void sort(Flag ascending) {
    Traits::qsort(c(), ascending);
  }
  ///@}

  /** Sorts by value with a comparator, not stable; see mub_array_qsort_x(). */
  void sort(mub_compare_fn compare, bool ascending = true) { Traits::qsort_x(c(), ascending, compare); }

  /** Iterators in the order of the array. */
  ///@{
  iterator begin() noexcept { return iterator(place(c(), 0)); }
  const_iterator begin() const noexcept { return const_iterator(place(c(), 0)); }
  iterator end() noexcept { return iterator(place(c(), detail::slots_in_use(c()))); }
  const_iterator end() const noexcept { return const_iterator(place(c(), detail::slots_in_use(c()))); }
  ///@}
};

/** An array with byte-string keys; see mub_array. */
using array = basic_array<detail::array_traits>;
/** An array with 32-bit integer keys; see mub_arrayd. */
using arrayd = basic_array<detail::arrayd_traits>;
/** An array with 64-bit integer keys; see mub_arrayx. */
using arrayx = basic_array<detail::arrayx_traits>;

/** @} */

namespace detail {

struct arrays_traits {
  using c_struct = mub_arrays;
  static constexpr auto init = mub_arrays_init;
  static constexpr auto term = mub_arrays_term;
  static constexpr auto verify = mub_arrays_verify;
  static constexpr auto memory_bytes = mub_arrays_memory_bytes;
  static constexpr auto swap = mub_arrays_swap;
  static constexpr auto clone = mub_arrays_clone;
  static constexpr auto remove_all = mub_arrays_remove_all;
};

struct arrayt_life {
  using c_struct = mub_arrayt;
  static void init(c_struct *array) noexcept { mub_arrayt_init(array); }
  static void bare(c_struct *array) noexcept { mub_arrayt_init(array); }
  static void release(c_struct *array) noexcept { mub_arrayt_term(array); }
  static constexpr auto verify = mub_arrayt_verify;
  static constexpr auto memory_bytes = mub_arrayt_memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept {
    mub_arrayt_swap(a, b);
    std::swap(a->descending, b->descending);
  }
};

}  // namespace detail

/** @addtogroup array_hpp
 * @{ */

/**
 * An array of bare 64-bit items, which owns its table and the pool that it created, but not what the items
 * refer to; see mub_arrays. Iterators are pointers.
 */
class arrays : public detail::owner<arrays, detail::array_life<detail::arrays_traits, true>>,
               public detail::indexed<arrays>,
               public detail::range<arrays> {
  using base = detail::owner<arrays, detail::array_life<detail::arrays_traits, true>>;

 public:
  using value_type = std::uint64_t;
  using iterator = std::uint64_t *;
  using const_iterator = const std::uint64_t *;

  /** Constructs an empty array without an item pool. */
  arrays() noexcept : base(std::in_place, 0) {}

  /** Constructs an empty array that owns an item pool. */
  explicit arrays(value_blocks items) noexcept : base(std::in_place, 1) {
    detail::set_block_size(c()->pool, items.size);
  }

  /** Returns a copy, made by mub_arrays_clone() without user pools; empty if memory ran out. */
  [[nodiscard]] arrays clone(mub_clone_fn adjust = nullptr) const {
    arrays copy;
    if (c()->own_pool != 0) copy = arrays(value_blocks{0});
    detail::clone_array<detail::arrays_traits>(c(), copy.c(), adjust);
    return copy;
  }

  /** Returns the number of items. */
  std::int64_t size() const noexcept { return c()->count; }
  /** Checks whether there are no items. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  /** Makes room for `wanted` items in total; false if memory ran out. See mub_arrays_expand(). */
  [[nodiscard]] bool reserve(std::int64_t wanted) { return mub_arrays_expand(c(), wanted) != 0; }

  /** Sets the count, which can also be increased up to the capacity; see mub_arrays_shrink(). */
  void shrink(std::int64_t n) { mub_arrays_shrink(c(), n); }

  /** Adds an item at the end, without regard to the order; false without memory. See mub_arrays_append(). */
  ///@{
  bool append(std::uint64_t item) {
    return grows([&](auto *record) { mub_arrays_append(record, item); });
  }
  bool push_back(std::uint64_t item) { return append(item); }
  ///@}

  /** Adds all items of an array, which may be this one, at the end; see mub_arrays_append_array(). */
  void append(const arrays &source) { mub_arrays_append_array(growing(), source.c()); }

  /**
   * Adds a new block of the item pool at the end and returns it; 0 if there is none. See
   * mub_arrays_append_new().
   */
  std::uint64_t append_new(mub_init_fn init = nullptr) { return mub_arrays_append_new(growing(), init); }

  /**
   * Adds an item before the one at an index, or at the end if there is none; false for a negative index, or
   * if memory ran out. See mub_arrays_insert_at().
   */
  bool insert_at(std::int64_t index, std::uint64_t item) {
    return grows([&](auto *record) { mub_arrays_insert_at(record, index, item); });
  }
  /** Removes the item at an index and returns it, not released; see mub_arrays_remove_at(). */
  std::uint64_t remove_at(std::int64_t index) { return mub_arrays_remove_at(c(), index); }
  /** Removes the item at an iterator, without releasing it; returns the next iterator. */
  iterator erase(const_iterator position) { return this->erase_at(position); }

  /**
   * Adds an item to a sorted array unless an equal one is present. Returns whether it was added: false if an
   * equal one was present or memory ran out. See mub_arrays_insert().
   */
  bool insert(std::uint64_t item, mub_compare_item_fn compare, std::uint64_t context = 0) {
    return grows([&](auto *record) { mub_arrays_insert(record, item, context, compare); });
  }

  /** Returns the item of a sorted array that is equal to a key; 0 if there is none. See mub_arrays_find(). */
  std::uint64_t find(std::uint64_t key, mub_compare_item_fn compare, std::uint64_t context = 0) const {
    return mub_arrays_find(c(), key, context, compare);
  }

  /**
   * Returns the index of the item of a sorted array that is equal to a key; -1 if there is none. See
   * mub_arrays_find_index().
   */
  std::int64_t find_index(std::uint64_t key, mub_compare_item_fn compare, std::uint64_t context = 0) const {
    return mub_arrays_find_index(c(), key, context, compare);
  }

  /**
   * Removes the item equal to a key from a sorted array and returns it, not released; 0 if there is none. See
   * mub_arrays_remove().
   */
  std::uint64_t remove(std::uint64_t key, mub_compare_item_fn compare, std::uint64_t context = 0) {
    return mub_arrays_remove(c(), key, context, compare);
  }

  /** Sorts the items, not stable; see mub_arrays_qsort(). */
  void sort(mub_compare_item_fn compare, bool ascending = true) { mub_arrays_qsort(c(), ascending, compare); }

  /** Removes all items without a call for them; see mub_arrays_remove_all(). */
  void clear() { mub_arrays_remove_all(c()); }

  /** Calls `release` with every item that is not 0, then removes all; see mub_arrays_free_all(). */
  void free_all(mub_free_fn release) { mub_arrays_free_all(c(), release); }

  /** Returns the table of items, valid until the array grows; nullptr while nothing is allocated. */
  ///@{
  std::uint64_t *data() noexcept { return c()->items; }
  const std::uint64_t *data() const noexcept { return c()->items; }
  ///@}

  /** Returns the item at an index from 0 to size() - 1, which is not checked. */
  ///@{
  std::uint64_t &operator[](std::int64_t index) noexcept { return c()->items[index]; }
  const std::uint64_t &operator[](std::int64_t index) const noexcept { return c()->items[index]; }
  ///@}

  /** Iterators in the order of the array. */
  ///@{
  iterator begin() noexcept { return c()->items; }
  const_iterator begin() const noexcept { return c()->items; }
  iterator end() noexcept { return c()->items + detail::slots_in_use(c()); }
  const_iterator end() const noexcept { return c()->items + detail::slots_in_use(c()); }
  ///@}
};

/** An array of 64-bit words, the first four of them in the record, which owns its tail; see mub_arrayt. */
class arrayt : public detail::owner<arrayt, detail::arrayt_life>,
               public detail::indexed<arrayt>,
               public detail::range<arrayt> {
  using place = detail::index_place<detail::word_access>;

 public:
  using value_type = std::uint64_t;
  using iterator = detail::iterator<place, std::uint64_t>;
  using const_iterator = detail::iterator<place, const std::uint64_t>;

  /** Constructs an empty array; nothing is allocated. */
  arrayt() noexcept : owner(std::in_place) {}

  /** Returns a copy; empty if memory ran out. See mub_arrayt_clone(). */
  [[nodiscard]] arrayt clone() const {
    arrayt copy;
    copy.c()->descending = c()->descending;
    mub_arrayt_clone(c(), copy.c());
    return copy;
  }

  /** Returns the number of words. */
  std::int64_t size() const noexcept { return c()->count; }
  /** Checks whether there are no words. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  /** Makes room for `wanted` words in total; false if memory ran out. See mub_arrayt_expand(). */
  [[nodiscard]] bool reserve(std::int64_t wanted) { return mub_arrayt_expand(c(), wanted) != 0; }

  /** Sets the count, which can also be increased up to the capacity; see mub_arrayt_shrink(). */
  void shrink(std::int64_t n) { mub_arrayt_shrink(c(), n); }

  /** Adds a word at the end, without regard to the order; false without memory. See mub_arrayt_append(). */
  ///@{
  bool append(std::uint64_t word) {
    return grows([&](auto *record) { mub_arrayt_append(record, word); });
  }
  bool push_back(std::uint64_t word) { return append(word); }
  ///@}

  /** Adds all words of an array, which may be this one, at the end; see mub_arrayt_append_array(). */
  void append(const arrayt &source) { mub_arrayt_append_array(growing(), source.c()); }

  /**
   * Adds a word before the one at an index, or at the end if there is none; false for a negative index, or if
   * memory ran out. See mub_arrayt_insert_at().
   */
  bool insert_at(std::int64_t index, std::uint64_t word) {
    return grows([&](auto *record) { mub_arrayt_insert_at(record, index, word); });
  }
  /** Removes the word at an index and returns it; see mub_arrayt_remove_at(). */
  std::uint64_t remove_at(std::int64_t index) { return mub_arrayt_remove_at(c(), index); }
  /** Removes the word at an iterator; returns the next iterator. */
  iterator erase(const_iterator position) { return this->erase_at(position); }

  /**
   * Adds a word to a sorted array unless one with the same low 32 bits is present. Returns whether it was
   * added: false if one was present or memory ran out. See mub_arrayt_insert().
   */
  bool insert(std::uint64_t word) {
    return grows([&](auto *record) { mub_arrayt_insert(record, word); });
  }
  /** Checks whether a sorted array has a word whose low 32 bits are `key`; see mub_arrayt_find(). */
  bool contains(std::uint32_t key) const { return mub_arrayt_find(c(), key) != 0; }
  /**
   * Removes the word whose low 32 bits are `key` from a sorted array. Returns whether there was one; see
   * mub_arrayt_remove().
   */
  bool remove(std::uint32_t key) { return mub_arrayt_remove(c(), key) != 0; }

  /**
   * Sorts by whole words, ascending unless the flag is false; with `unique`, equal words are kept once. See
   * mub_arrayt_qsort().
   */
  ///@{
  void sort() { sort(true); }
  template <class Flag, detail::only_bool<Flag> = 0>
  void sort(Flag ascending, bool unique = false) {
    mub_arrayt_qsort(c(), ascending, unique);
  }
  ///@}

  /** Removes all words and releases the tail; see mub_arrayt_remove_all(). */
  void clear() { mub_arrayt_remove_all(c()); }

  /** Returns the word at an index from 0 to size() - 1, which is not checked. */
  ///@{
  std::uint64_t &operator[](std::int64_t index) noexcept { return begin()[index]; }
  const std::uint64_t &operator[](std::int64_t index) const noexcept { return begin()[index]; }
  ///@}

  /** Iterators in the order of the array. */
  ///@{
  iterator begin() noexcept { return iterator(place(c(), 0)); }
  const_iterator begin() const noexcept { return const_iterator(place(c(), 0)); }
  iterator end() noexcept { return iterator(place(c(), size())); }
  const_iterator end() const noexcept { return const_iterator(place(c(), size())); }
  ///@}
};

/** @} */

}  // namespace v1
}  // namespace mub

#endif
