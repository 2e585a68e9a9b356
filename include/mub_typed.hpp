/**
 * @defgroup typed_hpp mub_typed.hpp: maps to values of any type
 * @ingroup hpp
 *
 * Hash tables and B-trees whose values are objects.
 *
 *     mub::hash_of<T>    mub::hashd_of<T>    mub::hashx_of<T>    mub::hasht_of<T>
 *     mub::btree_of<T>   mub::btreed_of<T>   mub::btreex_of<T>
 *
 *     mub::btree_of<std::vector<int>> pages;
 *     pages.emplace("index", 3, 0);                             a vector of three zeros
 *     if (auto *found = pages.find("index")) found->push_back(7);
 *     for (auto [key, numbers] : pages) …                       numbers is a std::vector<int> &
 *
 * The map constructs, moves and destroys its values: T may be move-only, or neither copyable nor movable. If
 * T is trivially copyable and has at most 8 bytes, a value lies in the 64-bit value of its entry; otherwise
 * in a block of the map's value pool. Either way its address does not change until it is removed.
 */
#ifndef MUB_TYPED_HPP
#define MUB_TYPED_HPP

#include <cstring>
#include <memory>
#include <new>

#include "mub_btree.hpp"
#include "mub_hash.hpp"

namespace mub {
inline namespace v1 {

/** @addtogroup typed_hpp
 * @{ */

/** The result of emplace() of a map of objects. */
template <class T>
struct emplaced_value {
  T *value;      /**< the value of the key; nullptr if memory ran out */
  bool inserted; /**< whether the key is new */
};

/** @} */

namespace detail {

// Whether a value lies in the word of its entry.
template <class T, class Entry>
constexpr bool fits_word = std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(std::uint64_t) &&
                           alignof(T) <= alignof(Entry);

template <class T, bool kInWord>
T &value_in(std::uint64_t &word) noexcept {
  if constexpr (kInWord) {
    return *std::launder(reinterpret_cast<T *>(&word));
  } else {
    return *to_pointer<T>(word);
  }
}

// Aggregates are initialised with braces, whether or not the standard in use accepts parentheses for them.
template <class T, class... Args>
T *construct(void *place, Args &&...args) {
  constexpr bool is_conversion = sizeof...(Args) == 1 && (std::is_convertible_v<Args, T> && ...);
  if constexpr (std::is_aggregate_v<T> && !is_conversion) {
    return ::new (place) T{std::forward<Args>(args)...};
  } else {
    static_assert(std::is_constructible_v<T, Args...>, "no constructor of T takes these arguments");
    return ::new (place) T(std::forward<Args>(args)...);
  }
}

// A position of a map of words, which yields the objects.
template <class Place, bool kInWord>
class typed_place : public Place {
 public:
  template <class T>
  using reference = item<decltype(Place::template reference<std::uint64_t>::key), T>;

  typed_place() = default;
  explicit typed_place(const Place &place) : Place(place) {}

  template <class T>
  reference<T> at() const {
    const auto found = Place::template at<std::uint64_t>();
    return {found.key, value_in<T, kInWord>(found.value)};
  }
};

}  // namespace detail

/** @addtogroup typed_hpp
 * @{ */

/**
 * A hash table or B-tree `Map` with values of type T, which owns its values. Its keys, iterators and the
 * rules for moves and settings are those of `Map`, and so are c(), size(), empty(), contains(), count(),
 * verify() and memory_bytes(). Do not add or remove keys through c(), and do not read values through it: they
 * are objects of type T. If a constructor of T throws, the keys and values are unchanged.
 *
 * T must be a complete type; for values that contain a map of their own type, use std::unique_ptr. The
 * constructors and the destructor of T must not change the map.
 */
template <class Map, class T>
class map_of : private Map {
  static constexpr bool kInWord = detail::fits_word<T, typename Map::entry_type>;
  using place = detail::typed_place<typename Map::iterator::place_type, kInWord>;
  static_assert(std::is_object_v<T> && !std::is_const_v<T> && std::is_nothrow_destructible_v<T>);
  static_assert(!std::is_array_v<T>, "T must not be an array: use std::array");
  static_assert(alignof(T) <= alignof(std::max_align_t), "the blocks of a pool are aligned as by malloc");

 public:
  using typename Map::key_type;
  using mapped_type = T;
  using iterator = detail::iterator<place, T>;
  using const_iterator = detail::iterator<place, const T>;
  using reverse_iterator = std::reverse_iterator<iterator>;
  using const_reverse_iterator = std::reverse_iterator<const_iterator>;

  using Map::c;
  using Map::contains;
  using Map::count;
  using Map::empty;
  using Map::memory_bytes;
  using Map::size;
  using Map::verify;

  /** Constructs an empty map, which owns its pools. */
  map_of() noexcept : map_of(std::bool_constant<kInWord>()) {}
  map_of(map_of &&) noexcept = default;
  map_of &operator=(map_of &&other) noexcept {
    map_of taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~map_of() { destroy_all(); }

  /** Swaps everything, settings included; values keep their addresses. */
  void swap(map_of &other) noexcept { Map::swap(other); }
  /** The same as `a.swap(b)`. */
  friend void swap(map_of &a, map_of &b) noexcept { a.swap(b); }

  /** Destroys the values and starts again as a default-constructed map. */
  void reset() noexcept { *this = map_of(); }

  /** Returns a map with the same settings and copies of the values; empty if memory ran out. */
  [[nodiscard]] map_of clone() const {
    map_of copy;
    detail::copy_setting(c(), copy.c(), Map::traits::setting);
    for (auto [key, value] : *this) {
      if (copy.emplace(key, value).value != nullptr) continue;
      copy.clear();
      break;
    }
    return copy;
  }

  /** Returns the value of a key; nullptr if it is absent. */
  ///@{
  T *find(key_type key) { return value_of<T>(entry_of(key)); }
  const T *find(key_type key) const { return value_of<const T>(entry_of(key)); }
  ///@}

  /** Returns a copy of the value of a key; `otherwise` if it is absent. */
  T get_or(key_type key, T otherwise) const {
    const T *found = find(key);
    return found != nullptr ? *found : std::move(otherwise);
  }

  /**
   * Finds the value of a key, or adds the key with a value that is constructed from `args`: with braces if T
   * is an aggregate. The key may lie in an object that is moved into the value. Invalidates iterators as
   * insert() of mub::hash or mub::btree does.
   */
  template <class... Args>
  emplaced_value<T> emplace(key_type key, Args &&...args) {
    addition added{*this};
    if constexpr (!kInWord) {
      if (T *found = find(key)) return {found, false};
      mub_pool *pool = this->growing()->value_pool;
      added.block = pool != nullptr ? mub_pool_new(pool) : nullptr;
      if (added.block == nullptr) return {nullptr, false};
    }
    // Before the value is constructed: the key may lie in an argument that is moved from.
    const auto [entry, inserted] = Map::emplace(key);
    if (!inserted) return {value_of<T>(entry), false};
    added.entry = entry;
    if constexpr (kInWord) {
      alignas(T) unsigned char bytes[sizeof(T)];
      detail::construct<T>(bytes, std::forward<Args>(args)...);
      std::memcpy(&entry->value, bytes, sizeof bytes);
    } else {
      entry->value = to_word(detail::construct<T>(added.block, std::forward<Args>(args)...));
    }
    added.keep();
    return {value_of<T>(entry), true};
  }

  /**
   * Adds a key with a value unless the key is present; false if it was present or memory ran out. The key
   * must not lie in an object that is moved into `value`; use emplace() then.
   */
  bool insert(key_type key, T value) { return emplace(key, std::move(value)).inserted; }

  /**
   * Adds a key with a value, or assigns the value to that of the key. As for insert(), the key must not lie
   * in an object that is moved into `value`.
   */
  emplaced_value<T> insert_or_assign(key_type key, T value) {
    const emplaced_value<T> result = emplace(key, std::move(value));  // which moves only if it inserts
    if (result.value != nullptr && !result.inserted) *result.value = std::move(value);
    return result;
  }

  /** Removes a key and destroys its value; returns how many keys were removed, 0 or 1. */
  std::int64_t erase(key_type key) {
    T *value = find(key);
    if (value == nullptr) return 0;
    Map::remove(key);
    destroy(value);
    return 1;
  }
  /** Removes the entry at an iterator and destroys its value; returns the next iterator. */
  iterator erase(const_iterator position) {
    T *value = std::addressof((*iterator(position.place())).value);
    const auto next = Map::erase(typename Map::const_iterator(position.place()));
    destroy(value);
    return iterator(place(next.place()));
  }

  /** Removes all entries and destroys their values. */
  void clear() {
    destroy_all();
    Map::clear();
  }

  /** Iterators, which yield items { key, value & } in the order of `Map`. */
  ///@{
  iterator begin() { return at<iterator>(Map::begin()); }
  const_iterator begin() const { return at<const_iterator>(Map::begin()); }
  const_iterator cbegin() const { return begin(); }
  iterator end() noexcept { return at<iterator>(Map::end()); }
  const_iterator end() const noexcept { return at<const_iterator>(Map::end()); }
  const_iterator cend() const noexcept { return end(); }
  ///@}

  /** In B-trees: iterators to keys, as those of mub::btree. */
  ///@{
  iterator lower_bound(key_type key) { return at<iterator>(Map::lower_bound(key)); }
  const_iterator lower_bound(key_type key) const { return at<const_iterator>(Map::lower_bound(key)); }
  iterator upper_bound(key_type key) { return at<iterator>(Map::upper_bound(key)); }
  const_iterator upper_bound(key_type key) const { return at<const_iterator>(Map::upper_bound(key)); }
  std::pair<iterator, iterator> equal_range(key_type key) { return {lower_bound(key), upper_bound(key)}; }
  std::pair<const_iterator, const_iterator> equal_range(key_type key) const {
    return {lower_bound(key), upper_bound(key)};
  }
  ///@}

  /** In B-trees: iterators from the greatest key down. */
  ///@{
  reverse_iterator rbegin() { return reverse_iterator(end()); }
  const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
  reverse_iterator rend() { return reverse_iterator(begin()); }
  const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
  ///@}

 private:
  // A new entry and the block of its value. Both are removed again unless keep() is called, even if the
  // constructor of the value throws.
  struct addition {
    map_of &map;
    void *block = nullptr;
    typename Map::entry_type *entry = nullptr;

    ~addition() {
      if (entry != nullptr) map.remove(Map::traits::key_of(map.c(), entry));
      if (block != nullptr) mub_pool_free(map.c()->value_pool, block);
    }
    void keep() noexcept {
      block = nullptr;
      entry = nullptr;
    }
  };

  explicit map_of(std::true_type) noexcept {}
  explicit map_of(std::false_type) noexcept : Map(value_blocks{sizeof(T)}) {}

  typename Map::entry_type *entry_of(key_type key) const {
    return Map::traits::call(Map::traits::entry_get, c(), key);
  }
  template <class Value>
  static Value *value_of(typename Map::entry_type *entry) noexcept {
    return entry != nullptr ? std::addressof(detail::value_in<Value, kInWord>(entry->value)) : nullptr;
  }
  template <class Iterator, class Found>
  static Iterator at(const Found &found) {
    return Iterator(place(found.place()));
  }

  void destroy([[maybe_unused]] T *value) noexcept {
    if constexpr (!kInWord) {
      value->~T();
      mub_pool_free(c()->value_pool, value);
    }
  }
  void destroy_all() noexcept {
    if constexpr (!std::is_trivially_destructible_v<T>) {
      for (auto [key, value] : *this) value.~T();
    }
  }
};

/** A hash table with byte-string keys and values of type T. */
template <class T>
using hash_of = map_of<hash, T>;
/** A hash table with 32-bit integer keys and values of type T. */
template <class T>
using hashd_of = map_of<hashd, T>;
/** A hash table with 64-bit integer keys and values of type T. */
template <class T>
using hashx_of = map_of<hashx, T>;
/** A hash table with 16-byte keys and values of type T. */
template <class T>
using hasht_of = map_of<hasht, T>;
/** An ordered map with byte-string keys and values of type T. */
template <class T>
using btree_of = map_of<btree, T>;
/** An ordered map with 32-bit keys and values of type T. */
template <class T>
using btreed_of = map_of<btreed, T>;
/** An ordered map with 64-bit keys and values of type T. */
template <class T>
using btreex_of = map_of<btreex, T>;

/** @} */

}  // namespace v1
}  // namespace mub

#endif
