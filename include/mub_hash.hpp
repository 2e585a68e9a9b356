/**
 * @defgroup hash_hpp mub_hash.hpp: hash tables
 * @ingroup hpp
 *
 * The hash tables of mub_hash.h.
 *
 *     mub::hash    keys std::string_view      mub::hashx   keys std::uint64_t
 *     mub::hashd   keys std::uint32_t         mub::hasht   keys std::array<std::uint32_t, 4>
 */
#ifndef MUB_HASH_HPP
#define MUB_HASH_HPP

#include <array>

#include "mub_base.hpp"
#include "mub_hash.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct hash_traits : byte_key {
  using c_struct = mub_hash;
  using entry = mub_hash_entry;
  static constexpr auto setting = &mub_hash::nocase;
  static constexpr auto init = mub_hash_init;
  static constexpr auto term = mub_hash_term;
  static constexpr auto verify = mub_hash_verify;
  static constexpr auto memory_bytes = mub_hash_memory_bytes;
  static constexpr auto swap = mub_hash_swap;
  static constexpr auto clone = mub_hash_clone;
  static constexpr auto remove_all = mub_hash_remove_all;
  static constexpr auto free_all = mub_hash_free_all;
  static constexpr auto insert = mub_hash_insert;
  static constexpr auto set = mub_hash_set;
  static constexpr auto get = mub_hash_get;
  static constexpr auto get_many = mub_hash_get_many;
  static constexpr auto update = mub_hash_update;
  static constexpr auto find = mub_hash_find;
  static constexpr auto remove = mub_hash_remove;
  static constexpr auto free = mub_hash_free;
  static constexpr auto entry_set = mub_hash_entry_set;
  static constexpr auto entry_get = mub_hash_entry_get;
  static constexpr auto entry_first = mub_hash_entry_first;
  static constexpr auto entry_next = mub_hash_entry_next;
};

struct hashd_traits : integer_key<std::uint32_t> {
  using c_struct = mub_hashd;
  using entry = mub_hashd_entry;
  static constexpr auto setting = nullptr;
  static constexpr auto init = mub_hashd_init;
  static constexpr auto term = mub_hashd_term;
  static constexpr auto verify = mub_hashd_verify;
  static constexpr auto memory_bytes = mub_hashd_memory_bytes;
  static constexpr auto swap = mub_hashd_swap;
  static constexpr auto clone = mub_hashd_clone;
  static constexpr auto remove_all = mub_hashd_remove_all;
  static constexpr auto free_all = mub_hashd_free_all;
  static constexpr auto insert = mub_hashd_insert;
  static constexpr auto set = mub_hashd_set;
  static constexpr auto get = mub_hashd_get;
  static constexpr auto get_many = mub_hashd_get_many;
  static constexpr auto update = mub_hashd_update;
  static constexpr auto find = mub_hashd_find;
  static constexpr auto remove = mub_hashd_remove;
  static constexpr auto free = mub_hashd_free;
  static constexpr auto entry_set = mub_hashd_entry_set;
  static constexpr auto entry_get = mub_hashd_entry_get;
  static constexpr auto entry_first = mub_hashd_entry_first;
  static constexpr auto entry_next = mub_hashd_entry_next;
};

struct hashx_traits : integer_key<std::uint64_t> {
  using c_struct = mub_hashx;
  using entry = mub_hashx_entry;
  static constexpr auto setting = nullptr;
  static constexpr auto init = mub_hashx_init;
  static constexpr auto term = mub_hashx_term;
  static constexpr auto verify = mub_hashx_verify;
  static constexpr auto memory_bytes = mub_hashx_memory_bytes;
  static constexpr auto swap = mub_hashx_swap;
  static constexpr auto clone = mub_hashx_clone;
  static constexpr auto remove_all = mub_hashx_remove_all;
  static constexpr auto free_all = mub_hashx_free_all;
  static constexpr auto insert = mub_hashx_insert;
  static constexpr auto set = mub_hashx_set;
  static constexpr auto get = mub_hashx_get;
  static constexpr auto get_many = mub_hashx_get_many;
  static constexpr auto update = mub_hashx_update;
  static constexpr auto find = mub_hashx_find;
  static constexpr auto remove = mub_hashx_remove;
  static constexpr auto free = mub_hashx_free;
  static constexpr auto entry_set = mub_hashx_entry_set;
  static constexpr auto entry_get = mub_hashx_entry_get;
  static constexpr auto entry_first = mub_hashx_entry_first;
  static constexpr auto entry_next = mub_hashx_entry_next;
};

struct hasht_traits {
  using c_struct = mub_hasht;
  using entry = mub_hasht_entry;
  using key_type = std::array<std::uint32_t, 4>;
  static constexpr auto setting = nullptr;
  static constexpr auto init = mub_hasht_init;
  static constexpr auto term = mub_hasht_term;
  static constexpr auto verify = mub_hasht_verify;
  static constexpr auto memory_bytes = mub_hasht_memory_bytes;
  static constexpr auto swap = mub_hasht_swap;
  static constexpr auto clone = mub_hasht_clone;
  static constexpr auto remove_all = mub_hasht_remove_all;
  static constexpr auto free_all = mub_hasht_free_all;
  static constexpr auto insert = mub_hasht_insert;
  static constexpr auto set = mub_hasht_set;
  static constexpr auto get = mub_hasht_get;
  static constexpr auto get_many = mub_hasht_get_many;
  static constexpr auto update = mub_hasht_update;
  static constexpr auto find = mub_hasht_find;
  static constexpr auto remove = mub_hasht_remove;
  static constexpr auto free = mub_hasht_free;
  static constexpr auto entry_set = mub_hasht_entry_set;
  static constexpr auto entry_get = mub_hasht_entry_get;

  template <class Function, class Record, class... Rest>
  static auto call(Function function, Record *record, const key_type &key, Rest... rest) {
    return function(record, key.data(), rest...);
  }
  template <class Function>
  static std::int64_t call_many(Function function, const c_struct *table, const key_type *keys,
                                std::int64_t count, std::uint64_t *values) {
    return function(table, reinterpret_cast<const std::uint32_t(*)[4]>(keys), count, values);
  }
  static key_type key_of(const c_struct *, const entry *entry) noexcept {
    return {entry->key[0], entry->key[1], entry->key[2], entry->key[3]};
  }

  // There is no C function for this iteration; the order is that of the other tables.
  static entry *entry_first(const c_struct *table, std::int64_t *bucket) noexcept {
    *bucket = 0;
    return first_from(table, bucket);
  }
  static entry *entry_next(const c_struct *table, std::int64_t *bucket, const entry *entry) noexcept {
    if (entry->next != nullptr) return entry->next;
    ++*bucket;
    return first_from(table, bucket);
  }
  static entry *first_from(const c_struct *table, std::int64_t *bucket) noexcept {
    for (; *bucket < table->buckets.count; ++*bucket) {
      auto *head = to_pointer<entry>(table->buckets.items[*bucket]);
      if (head != nullptr) return head;
    }
    return nullptr;
  }
};

template <class Traits>
struct hash_life {
  using c_struct = typename Traits::c_struct;
  static void init(c_struct *table, int entries, int values) noexcept {
    Traits::init(table, entries, values);
  }
  static void bare(c_struct *table) noexcept { Traits::init(table, 0, 0); }
  static void release(c_struct *table) noexcept {
    if (table->owns_entry_pool == 0) Traits::remove_all(table);  // else they are released with the pool
    Traits::term(table);
  }
  static constexpr auto verify = Traits::verify;
  static constexpr auto memory_bytes = Traits::memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept {
    Traits::swap(a, b);
    swap_setting(a, b, Traits::setting);
  }
};

// Moves bucket by bucket; the end has no entry.
template <class Traits>
class hash_place {
 public:
  using category = std::forward_iterator_tag;
  template <class Value>
  using reference = item<typename Traits::key_type, Value>;

  hash_place() = default;
  explicit hash_place(const typename Traits::c_struct *table) : table_(table) {
    entry_ = Traits::entry_first(table, &bucket_);
  }

  template <class Value>
  reference<Value> at() const {
    return {Traits::key_of(table_, entry_), entry_->value};
  }
  void step() { entry_ = Traits::entry_next(table_, &bucket_, entry_); }
  typename Traits::entry *entry() const noexcept { return entry_; }

 private:
  const typename Traits::c_struct *table_ = nullptr;
  std::int64_t bucket_ = 0;
  typename Traits::entry *entry_ = nullptr;
};

}  // namespace detail

/** @addtogroup hash_hpp
 * @{ */

/**
 * A hash table, which owns its buckets, its keys and the pools that it created, but not what its values refer
 * to; see mub_hash. An iterator may or may not visit entries that are inserted after its creation. Removing
 * its entry invalidates it. An insertion that doubles the number of buckets invalidates all iterators:
 * continuing can skip or repeat entries.
 */
template <class Traits>
class basic_hash : public detail::map<basic_hash<Traits>, detail::hash_life<Traits>, Traits> {
  using base = detail::map<basic_hash<Traits>, detail::hash_life<Traits>, Traits>;

 public:
  using iterator = detail::iterator<detail::hash_place<Traits>, std::uint64_t>;
  using const_iterator = detail::iterator<detail::hash_place<Traits>, const std::uint64_t>;
  using base::c;
  using typename base::key_type;

  /** Constructs an empty table that owns an entry pool. */
  basic_hash() noexcept : basic_hash(true, false) {}

  /** Constructs an empty table that owns the pools that the flags select; see mub_hash_init(). */
  basic_hash(bool with_entry_pool, bool with_value_pool) noexcept
      : base(std::in_place, with_entry_pool, with_value_pool) {}

  /** Constructs an empty table that owns an entry pool and a value pool. */
  explicit basic_hash(value_blocks values) noexcept : basic_hash(true, true) {
    detail::set_block_size(c()->value_pool, values.size);
  }

  /** Constructs an empty table with external pools, which must outlive it. */
  explicit basic_hash(mub_pool *entries, mub_pool *values = nullptr) noexcept : basic_hash(false, false) {
    c()->entry_pool = entries;
    c()->value_pool = values;
  }

  /** Returns a copy, made by mub_hash_clone() without user pools; empty if memory ran out. */
  [[nodiscard]] basic_hash clone(mub_clone_fn adjust = nullptr) const {
    basic_hash copy(c()->owns_entry_pool != 0, c()->owns_value_pool != 0);
    detail::copy_setting(c(), copy.c(), Traits::setting);
    detail::clone_to<Traits>(copy.c(), c(), adjust);
    return copy;
  }

  /**
   * Removes a key and passes its value to `release`; returns whether the key was present. See
   * mub_hash_free().
   */
  bool free(key_type key, mub_free_fn release) {
    return Traits::call(Traits::free, c(), key, release) != nullptr;
  }

  using base::erase;
  /** Removes the entry at an iterator, whose value is not released; returns the next iterator. */
  iterator erase(const_iterator position) {
    iterator next(position.place());
    ++next;
    base::remove((*position).key);
    return next;
  }

  /** Iterators over all entries; see mub_hash_entry_first() for their order. */
  ///@{
  iterator begin() { return iterator(detail::hash_place<Traits>(c())); }
  const_iterator begin() const { return const_iterator(detail::hash_place<Traits>(c())); }
  iterator end() noexcept { return {}; }
  const_iterator end() const noexcept { return {}; }
  ///@}
};

/** A hash table with byte-string keys; see mub_hash. */
using hash = basic_hash<detail::hash_traits>;
/** A hash table with 32-bit integer keys; see mub_hashd. */
using hashd = basic_hash<detail::hashd_traits>;
/** A hash table with 64-bit integer keys; see mub_hashx. */
using hashx = basic_hash<detail::hashx_traits>;
/** A hash table with 16-byte keys; see mub_hasht. */
using hasht = basic_hash<detail::hasht_traits>;

/** @} */

}  // namespace v1
}  // namespace mub

#endif
