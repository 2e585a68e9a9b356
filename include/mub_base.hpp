/**
 * @defgroup base_hpp mub_base.hpp: rules of the C++ interface
 * @ingroup cpp
 *
 * A type of namespace `mub` owns one C record: its constructors initialise the record and its destructor
 * terminates it. Members only call the C functions and allocate nothing themselves; "see mub_hash_insert()"
 * refers to the documentation of the C function. The @ref base "common rules" apply. No function throws, and
 * the headers compile without exceptions and RTTI. Common to all types:
 *
 * - **Record.** c() returns the record: pass it to the C functions that have no member here, read its fields,
 *   and set those that are the caller's to set (`nocase`, `descending`, `key_type`).
 * - **Copies.** Types can be moved but not copied. clone() returns a copy with the same settings, which is
 *   empty if memory ran out.
 * - **Moves.** A move transfers contents, pools and settings. Entries keep their addresses, except for the
 *   root of a tree, which lies in the record. A moved-from object is empty and has no pools: look-ups find
 *   nothing, and a container whose entries lie in a pool refuses insertions until it is assigned to or
 *   reset().
 * - **Keys.** Byte-string keys are passed as std::string_view: any bytes, NULs included. Keys that iterators
 *   return are views of the container's memory, valid until a key is added or removed.
 * - **Values.** Values are 64-bit words; to_word() and to_pointer() convert pointers. A destructor does
 *   nothing for values: to release what they own, call free_all() first. It also returns their blocks to an
 *   external value pool, which the destructor does not.
 * - **Entries.** find() and similar members return a pointer to the entry in the container, or nullptr; its
 *   `value` may be changed in place.
 * - **Iterators.** Iterators of keyed containers yield an item { key, value & } by value: `for (auto [key,
 *   value] : table)`. What invalidates an iteration in C invalidates iterators here. Nothing checks for
 *   invalid iterators, or for iterators and indexes out of range. Through a const container, values are
 *   const.
 * - **Pools.** By default a container owns the pool of its entries and has none for values. `value_blocks{n}`
 *   adds one with blocks of n bytes. External pools are passed to the constructors that take mub_pool
 *   pointers. They must outlive the container, whose destructor returns its entries to them: do not return
 *   the entries earlier, for instance with mub_hash_remove_all_entry().
 */
#ifndef MUB_BASE_HPP
#define MUB_BASE_HPP

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"

namespace mub {
// Inline, so that the symbols of a program cannot clash with those inside the static library.
inline namespace v1 {

/** @addtogroup base_hpp
 * @{ */

/** Converts a pointer to a word. */
inline std::uint64_t to_word(const void *pointer) noexcept {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

/** Converts a word to a pointer; 0 becomes nullptr. The type is not checked. */
template <class T>
T *to_pointer(std::uint64_t word) noexcept {
  return reinterpret_cast<T *>(static_cast<std::uintptr_t>(word));
}

/** Makes a constructor create a value pool that the container owns. */
struct value_blocks {
  std::int64_t size; /**< the size of its blocks in bytes */
};

/** A pair of a key and a reference to its value, as yielded by the iterators of keyed containers. */
template <class Key, class Value = std::uint64_t>
struct item {
  Key key;      /**< the key; a view of the container's memory if it is a string */
  Value &value; /**< the value in the container */
};

/** The result of emplace(). */
template <class Entry>
struct emplaced {
  Entry *entry;  /**< the entry of the key; nullptr if memory ran out */
  bool inserted; /**< whether the entry is new */
};

/** The result of set(). */
struct set_value {
  std::uint64_t value; /**< the value of the key; 0 if memory ran out */
  bool inserted;       /**< whether the key is new */
};

/** @} */

namespace detail {

/**
 * Owns a record. `Life` provides init(record, flags…), which calls the C function; bare(record), which
 * initialises the record without pools; release(record); swap(record, record), which also exchanges the
 * settings; and the C functions verify and memory_bytes.
 */
template <class Derived, class Life>
class owner {
 public:
  using record_type = typename Life::record;

  owner(const owner &) = delete;
  owner &operator=(const owner &) = delete;

  /** Returns the record, for use with the C functions. It lives as long as the object. */
  ///@{
  record_type *c() noexcept { return &record_; }
  const record_type *c() const noexcept { return &record_; }
  ///@}

  /**
   * Swaps everything, including pools and settings. Iterators of both objects are invalid afterwards; entries
   * keep their addresses.
   */
  ///@{
  void swap(Derived &other) noexcept { Life::swap(&record_, other.c()); }
  friend void swap(Derived &a, Derived &b) noexcept { a.swap(b); }
  ///@}

  /**
   * Checks whether the object is intact; see mub_hash_verify() and its variants. If not, `*what` becomes a
   * sentence that names what is broken, else nullptr.
   */
  bool verify(const char **what = nullptr) const { return Life::verify(&record_, what) != 0; }

  /** Returns the size of the heap memory that the object holds; see mub_hash_memory_bytes() and its variants. */
  std::int64_t memory_bytes() const { return Life::memory_bytes(&record_); }

  /** Releases the contents and the pools that are owned, and starts again as a default-constructed object. */
  void reset() noexcept { static_cast<Derived &>(*this) = Derived(); }

 protected:
  template <class... Flags>
  explicit owner(std::in_place_t, Flags... flags) noexcept {
    Life::init(&record_, flags...);
  }
  owner(owner &&other) noexcept {
    Life::bare(&record_);
    Life::swap(&record_, &other.record_);
  }
  // Through a third object, so that assigning an object to itself keeps its contents.
  owner &operator=(owner &&other) noexcept {
    owner taken(std::move(other));
    Life::swap(&record_, &taken.record_);
    return *this;
  }
  ~owner() { Life::release(&record_); }

 private:
  record_type record_;
};

// Swaps the setting that the C function does not exchange: a pointer to the member, or nullptr.
template <class Record, class Setting>
void swap_setting(Record *a, Record *b, Setting setting) noexcept {
  if constexpr (!std::is_null_pointer_v<Setting>) std::swap(a->*setting, b->*setting);
}

template <class Record, class Setting>
void copy_setting(const Record *source, Record *copy, Setting setting) noexcept {
  if constexpr (!std::is_null_pointer_v<Setting>) copy->*setting = source->*setting;
}

// A copy for which no value pool could be created stays empty: all its values would become 0.
template <class Traits>
void clone_to(typename Traits::record *copy, const typename Traits::record *source, mub_clone_fn adjust) {
  if (copy->owns_value_pool == source->owns_value_pool) Traits::clone(source, nullptr, copy, nullptr, adjust);
}

inline void set_block_size(mub_pool *pool, std::int64_t size) noexcept {
  if (pool != nullptr) pool->block_size = size;
}

// Kinds of keys: how a C function takes them, and how an entry holds them.
struct byte_key {
  using key_type = std::string_view;

  template <class Function, class Record, class... Rest>
  static auto call(Function function, Record *record, key_type key, Rest... rest) {
    return function(record, key.data(), static_cast<std::int64_t>(key.size()), rest...);
  }
  // The C function takes pointers and lengths apart, so views are passed on some at a time.
  template <class Function, class Record>
  static std::int64_t call_many(Function function, const Record *record, const key_type *keys,
                                std::int64_t count, std::uint64_t *values) {
    constexpr std::int64_t batch = 64;
    const void *data[batch];
    std::int64_t lengths[batch];
    std::int64_t present = 0;
    for (std::int64_t first = 0; first < count; first += batch) {
      const std::int64_t size = count - first < batch ? count - first : batch;
      for (std::int64_t i = 0; i < size; ++i) {
        data[i] = keys[first + i].data();
        lengths[i] = static_cast<std::int64_t>(keys[first + i].size());
      }
      present += function(record, data, lengths, size, values + first);
    }
    return present;
  }
  template <class Record, class Entry>
  static key_type key_of(const Record *record, const Entry *entry) noexcept {
    return {reinterpret_cast<const char *>(record->keys.data) + entry->key_offset, entry->key_length};
  }
};

template <class Integer>
struct integer_key {
  using key_type = Integer;

  template <class Function, class Record, class... Rest>
  static auto call(Function function, Record *record, key_type key, Rest... rest) {
    return function(record, key, rest...);
  }
  template <class Function, class Record>
  static std::int64_t call_many(Function function, const Record *record, const key_type *keys,
                                std::int64_t count, std::uint64_t *values) {
    return function(record, keys, count, values);
  }
  template <class Record, class Entry>
  static key_type key_of(const Record *, const Entry *entry) noexcept {
    return entry->key;
  }
};

// The operators of an iterator, derived from its operator*, step() and, if it is bidirectional, step_back().
// Two iterators are equal if their place()s are.
template <class Derived, class Reference, class Category>
class walker {
 public:
  using iterator_category = Category;
  using value_type = std::remove_cv_t<std::remove_reference_t<Reference>>;
  using reference = Reference;
  using difference_type = std::ptrdiff_t;
  // Holds the item that operator-> points to.
  struct arrow {
    value_type item;
    const value_type *operator->() const noexcept { return &item; }
  };
  using pointer =
      std::conditional_t<std::is_reference_v<Reference>, std::remove_reference_t<Reference> *, arrow>;

  pointer operator->() const {
    if constexpr (std::is_reference_v<Reference>) {
      return &*self();
    } else {
      return {*self()};
    }
  }
  Derived &operator++() {
    self().step();
    return self();
  }
  Derived operator++(int) {
    Derived before = self();
    self().step();
    return before;
  }
  Derived &operator--() {
    self().step_back();
    return self();
  }
  Derived operator--(int) {
    Derived before = self();
    self().step_back();
    return before;
  }
  friend bool operator==(const Derived &a, const Derived &b) noexcept { return a.place() == b.place(); }
  friend bool operator!=(const Derived &a, const Derived &b) noexcept { return a.place() != b.place(); }

 private:
  // operator* of the iterator, not of this class.
  Derived &self() noexcept { return static_cast<Derived &>(*this); }
  const Derived &self() const noexcept { return static_cast<const Derived &>(*this); }
};

/** The members that hash tables, B-trees and sorted arrays have in common. */
template <class Derived, class Life, class Traits>
class keyed : public owner<Derived, Life> {
  using base = owner<Derived, Life>;

 public:
  using key_type = typename Traits::key_type;
  using mapped_type = std::uint64_t;
  using entry_type = typename Traits::entry;
  using base::c;

  /** Returns the number of keys. */
  std::int64_t size() const noexcept { return c()->count; }

  /** Checks whether there are no keys. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  /** Checks whether a key is present; see mub_hash_find(). */
  bool contains(key_type key) const { return Traits::call(Traits::find, c(), key) != 0; }

  /** Returns the value of a key; 0 if it is absent. See mub_hash_get(). */
  mapped_type get(key_type key) const { return Traits::call(Traits::get, c(), key); }

  /**
   * Returns the entry of a key, which belongs to the container; nullptr if it is absent. See
   * mub_hash_entry_get().
   */
  ///@{
  entry_type *find(key_type key) { return Traits::call(Traits::entry_get, c(), key); }
  const entry_type *find(key_type key) const { return Traits::call(Traits::entry_get, c(), key); }
  ///@}

  /**
   * Adds a key with a value unless the key is present; see mub_hash_insert(), mub_btree_insert() and
   * mub_array_insert(). Returns whether it was added: false if the key was present or memory ran out; arrays
   * return true if memory ran out. Invalidates the iterators of arrays and B-trees, and those of hash tables
   * if the number of buckets doubles.
   */
  [[nodiscard]] bool insert(key_type key, mapped_type value) {
    return Traits::call(Traits::insert, c(), key, value) != 0;
  }

  /**
   * Replaces the value of a key that is present. Returns the previous value, which is not released; 0 if the
   * key is absent.
   */
  mapped_type update(key_type key, mapped_type value) {
    return Traits::call(Traits::update, c(), key, value);
  }

  /**
   * Removes a key and returns its value, which is not released; 0 if the key is absent. See
   * mub_hash_remove(). Invalidates the entry and iterators at it; in arrays and B-trees all iterators.
   */
  mapped_type remove(key_type key) { return Traits::call(Traits::remove, c(), key); }

  /**
   * Removes all entries without a call for their values. Invalidates all iterators. See
   * mub_hash_remove_all().
   */
  void clear() { Traits::remove_all(c()); }

  /**
   * Calls `release` with every value that is not 0, then removes all entries. Invalidates all iterators. See
   * mub_hash_free_all().
   */
  void free_all(mub_free_fn release) { Traits::free_all(c(), release); }

 protected:
  using base::base;
};

/** The members that hash tables and B-trees have in common: their entries lie in pools. */
template <class Derived, class Life, class Traits>
class map : public keyed<Derived, Life, Traits> {
  using base = keyed<Derived, Life, Traits>;

 public:
  using base::c;
  using typename base::entry_type;
  using typename base::key_type;

  /**
   * Stores the values of `count` keys, 0 for those that are absent, and returns how many keys are present.
   * See mub_hash_get_many() and mub_btree_get_many().
   */
  std::int64_t get_many(const key_type *keys, std::int64_t count, std::uint64_t *values) const {
    return Traits::call_many(Traits::get_many, c(), keys, count, values);
  }

  /**
   * Finds the entry of a key, or adds one with value 0; see mub_hash_entry_set() and mub_btree_node_set().
   * Invalidates iterators as insert() does.
   *
   *     if (auto [entry, inserted] = words.emplace("the"); entry != nullptr) ++entry->value;
   */
  [[nodiscard]] emplaced<entry_type> emplace(key_type key) {
    entry_type *entry = nullptr;
    const bool inserted = Traits::call(Traits::entry_set, c(), key, &entry) != 0;
    return {entry, inserted};
  }

  /**
   * Finds the value of a key, or adds the key with a block of the value pool, which is passed to `init`; see
   * mub_hash_set() and mub_btree_set(). Invalidates iterators as insert() does.
   */
  [[nodiscard]] set_value set(key_type key, mub_init_fn init = nullptr) {
    std::uint64_t value = 0;
    const bool inserted = Traits::call(Traits::set, c(), key, &value, init) != 0;
    return {value, inserted};
  }

 protected:
  using base::base;
};

}  // namespace detail
}  // namespace v1
}  // namespace mub

#endif
