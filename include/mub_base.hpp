/**
 * @defgroup base_hpp mub_base.hpp: rules of the C++ interface
 * @ingroup hpp
 *
 * A type of namespace `mub` owns one C record: its constructors initialise the record and its destructor
 * terminates it. Members only call the C functions and allocate nothing themselves; "see mub_hash_insert()"
 * refers to the documentation of the C function. The @ref base "common rules" apply. No function throws,
 * apart from what the values of a @ref typed_hpp "typed map" and the stream of an operator<< throw, and the
 * headers compile without exceptions and RTTI. Common to all types:
 *
 * - **Record.** c() returns the record: pass it to the C functions that have no member here, read its fields,
 *   and set those that are the caller's to set (`nocase`, `descending`, `key_type`).
 * - **Copies.** Types can be moved but not copied. clone() returns a copy with the same settings, which is
 *   empty if memory ran out. Exceptions are the view stringx, which can be copied, and the range live_blocks,
 *   which can be neither moved nor copied.
 * - **Moves.** A move transfers contents, pools and settings. Entries keep their addresses, except for what
 *   lies in the record: the root of a tree, and the first four words of an arrayt. A moved-from object is
 *   empty and has no pools. To add something to a moved-from container or pool, assign to it or reset() it
 *   first: an assert() checks that. Strings, streams and bit sets need no pool and can be used again at once.
 * - **Memory.** An addition that runs out of memory changes nothing; its result, if it has one, is false,
 *   nullptr or 0 then, and may be ignored. There are three exceptions. set() of a map and append_new() of an
 *   array add an entry with value 0 if only its block is missing. append() and append_new() of mub::array add
 *   an entry with an empty key if only the memory for the key is missing. insert() of a tree keeps the
 *   entries that it created for the first steps of the path.
 * - **Keys.** Byte-string keys are passed as std::string_view: any bytes, NULs included. Keys that iterators
 *   return are views of the container's memory, valid until a key is added or removed.
 * - **Values.** Values are 64-bit words; to_word() and to_pointer() convert pointers. A destructor does
 *   nothing for values: to release what they own, call free_all() first. It also returns their blocks to an
 *   external value pool, which the destructor does not.
 * - **Entries.** find() and similar members return a pointer to the entry in the container, or nullptr; its
 *   `value` may be changed in place.
 * - **Iterators.** Iterators of keyed containers yield an item { key, value & } by value: `for (auto [key,
 *   value] : table)`. What invalidates an iteration in C invalidates iterators here. Nothing checks for
 *   invalid iterators, or for iterators and indexes out of range. The iterators of a const container, and
 *   those of cbegin(), yield const values.
 * - **Pools.** By default a container owns the pool of its entries and has none for values. `value_blocks{n}`
 *   adds one with blocks of n bytes. External pools are passed to the constructors that take mub_pool
 *   pointers. They must outlive the container, whose destructor returns its entries to them: do not return
 *   the entries earlier, for instance with mub_hash_remove_all_entry().
 */
#ifndef MUB_BASE_HPP
#define MUB_BASE_HPP

#if __cplusplus < 201703L
#error "the C++ types of libmub need C++17: compile with -std=c++17 or later"
#endif

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
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
  const std::uintptr_t address = word & UINTPTR_MAX;
  return reinterpret_cast<T *>(address);
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
  std::uint64_t value; /**< the value of the key: a block; 0 if memory ran out */
  bool inserted;       /**< whether the key is new, even if there was no block for its value */
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
  using c_struct = typename Life::c_struct;

  owner(const owner &) = delete;
  owner &operator=(const owner &) = delete;

  /** Returns the record, for use with the C functions. It lives as long as the object. */
  ///@{
  c_struct *c() noexcept { return &record_; }
  const c_struct *c() const noexcept { return &record_; }
  ///@}

  /**
   * Swaps everything, including pools and settings. Iterators of both objects are invalid afterwards; entries
   * keep their addresses, with the exceptions that apply to moves.
   */
  ///@{
  void swap(Derived &other) noexcept { exchange(other); }
  friend void swap(Derived &a, Derived &b) noexcept { a.swap(b); }
  ///@}

  /**
   * Checks whether the object is intact; see mub_hash_verify() and its variants. If not, `*what` becomes a
   * sentence that names what is broken, else nullptr.
   */
  bool verify(const char **what = nullptr) const { return Life::verify(&record_, what) != 0; }

  /** Returns the size of the heap memory that the object holds; see mub_hash_memory_bytes(). */
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
    exchange(other);
    other.is_moved_from_ = true;
  }
  // Through a third object, so that assigning an object to itself keeps its contents.
  owner &operator=(owner &&other) noexcept {
    owner taken(std::move(other));
    exchange(taken);
    return *this;
  }
  ~owner() { Life::release(&record_); }

  /** Returns the record, to add something to it. */
  c_struct *growing() noexcept {
    assert(!is_moved_from_ && "the container was moved from: assign to it or reset() it first");
    return &record_;
  }

  /** Adds something with a C function that does not report failures; returns whether the size has grown. */
  template <class Call>
  bool grows(Call call) {
    const std::int64_t before = static_cast<Derived &>(*this).size();
    call(growing());
    return static_cast<Derived &>(*this).size() > before;
  }

 private:
  void exchange(owner &other) noexcept {
    Life::swap(&record_, &other.record_);
    std::swap(is_moved_from_, other.is_moved_from_);
  }

  c_struct record_;
  bool is_moved_from_ = false;
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
void clone_to(typename Traits::c_struct *copy, const typename Traits::c_struct *source, mub_clone_fn adjust) {
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

/**
 * An iterator. `Place` is where it stands: at<Value>() is the item there, step() and step_back() move it,
 * and entry() identifies it. `Value` is const in the iterators of const containers.
 */
template <class Place, class Value>
class iterator {
 public:
  using iterator_category = typename Place::category;
  using reference = typename Place::template reference<Value>;
  using value_type = std::remove_cv_t<std::remove_reference_t<reference>>;
  using difference_type = std::ptrdiff_t;
  // Holds the item that operator-> points to.
  struct arrow {
    value_type item;
    const value_type *operator->() const noexcept { return &item; }
  };
  using pointer =
      std::conditional_t<std::is_reference_v<reference>, std::remove_reference_t<reference> *, arrow>;
  using place_type = Place;

  iterator() = default;
  explicit iterator(const Place &place) : place_(place) {}
  // From the iterator of a container that is not const.
  template <class Mutable, std::enable_if_t<std::is_same_v<const Mutable, Value>, int> = 0>
  iterator(const iterator<Place, Mutable> &other) : place_(other.place()) {}

  reference operator*() const { return place_.template at<Value>(); }
  pointer operator->() const {
    if constexpr (std::is_reference_v<reference>) {
      return std::addressof(**this);
    } else {
      return {**this};
    }
  }
  reference operator[](difference_type n) const { return *(*this + n); }
  iterator &operator++() {
    place_.step();
    return *this;
  }
  iterator operator++(int) {
    iterator before = *this;
    place_.step();
    return before;
  }
  iterator &operator--() {
    place_.step_back();
    return *this;
  }
  iterator operator--(int) {
    iterator before = *this;
    place_.step_back();
    return before;
  }
  friend bool operator==(const iterator &a, const iterator &b) noexcept {
    return a.place_.entry() == b.place_.entry();
  }
  friend bool operator!=(const iterator &a, const iterator &b) noexcept { return !(a == b); }

  /** Returns the entry of the iterator, nullptr at the end; in arrays its index. */
  auto position() const noexcept {
    using Entry = decltype(place_.entry());
    if constexpr (std::is_const_v<Value> && std::is_pointer_v<Entry>) {
      return static_cast<const std::remove_pointer_t<Entry> *>(place_.entry());
    } else {
      return place_.entry();
    }
  }
  const Place &place() const noexcept { return place_; }

 private:
  Place place_ = {};
};

/** The members of a container that follow from its begin() and end(). */
template <class Derived>
class range {
 public:
  /** Iterators that cannot change values. */
  ///@{
  auto cbegin() const { return static_cast<const Derived &>(*this).begin(); }
  auto cend() const { return static_cast<const Derived &>(*this).end(); }
  ///@}
};

/** The members of a container that follow from its begin() and end() if its iterators can step back. */
template <class Derived>
class reversible {
 public:
  /** Iterators from the last item to the first. */
  ///@{
  auto rbegin() { return std::make_reverse_iterator(self().end()); }
  auto rbegin() const { return std::make_reverse_iterator(self().end()); }
  auto rend() { return std::make_reverse_iterator(self().begin()); }
  auto rend() const { return std::make_reverse_iterator(self().begin()); }
  ///@}

 private:
  Derived &self() noexcept { return static_cast<Derived &>(*this); }
  const Derived &self() const noexcept { return static_cast<const Derived &>(*this); }
};

/** The members that hash tables, B-trees and sorted arrays have in common. */
template <class Derived, class Life, class Traits>
class keyed : public owner<Derived, Life>, public range<Derived> {
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
  /** Returns 1 if a key is present, else 0. */
  std::int64_t count(key_type key) const { return contains(key) ? 1 : 0; }

  /** Returns the value of a key; 0 if it is absent. See mub_hash_get(). */
  mapped_type get(key_type key) const { return Traits::call(Traits::get, c(), key); }
  /** Returns the value of a key; `otherwise` if it is absent. */
  mapped_type get_or(key_type key, mapped_type otherwise) const {
    const entry_type *entry = find(key);
    return entry != nullptr ? entry->value : otherwise;
  }

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
   * mub_array_insert(). Returns whether it was added: false if the key was present or memory ran out.
   * Invalidates the iterators of arrays and B-trees, and those of hash tables if the number of buckets
   * doubles.
   */
  bool insert(key_type key, mapped_type value) {
    return this->grows([&](auto *record) { Traits::call(Traits::insert, record, key, value); });
  }

  /** Adds a key with a value, or replaces its value, which is not released. Otherwise as emplace(). */
  emplaced<entry_type> insert_or_assign(key_type key, mapped_type value) {
    const emplaced<entry_type> result = static_cast<Derived &>(*this).emplace(key);
    if (result.entry != nullptr) result.entry->value = value;
    return result;
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

  /** Removes a key as remove() does; returns how many keys were removed, 0 or 1. */
  std::int64_t erase(key_type key) {
    const std::int64_t before = size();
    remove(key);
    return before - size();
  }

  /**
   * Removes all entries; no function is called for their values. Invalidates all iterators. See
   * mub_hash_remove_all().
   */
  void clear() { Traits::remove_all(c()); }

  /**
   * Calls `release` with every value that is not 0, then removes all entries. Invalidates all iterators. See
   * mub_hash_free_all().
   */
  void free_all(mub_free_fn release) { Traits::free_all(c(), release); }

 protected:
  using traits = Traits;
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
  emplaced<entry_type> emplace(key_type key) {
    entry_type *entry = nullptr;
    const bool inserted = Traits::call(Traits::entry_set, this->growing(), key, &entry) != 0;
    return {entry, inserted};
  }

  /**
   * Finds the value of a key, or adds the key with a block of the value pool, which is passed to `init`; see
   * mub_hash_set() and mub_btree_set(). Invalidates iterators as insert() does.
   */
  set_value set(key_type key, mub_init_fn init = nullptr) {
    std::uint64_t value = 0;
    const bool inserted = Traits::call(Traits::set, this->growing(), key, &value, init) != 0;
    return {value, inserted};
  }

 protected:
  using base::base;
};

}  // namespace detail
}  // namespace v1
}  // namespace mub

#endif
