// What takes a record as const only reads, so that any number of threads may do it at once.
//
// A sample is a filled record and its copy, with all their memory in an arena; read_all calls every function
// of its kind that takes a const record (readers_test.py sees that none is left out). One test makes the
// arena read-only, so that a write faults; the other reads from two threads, for the build with
// ThreadSanitizer.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <vector>

#include "mub.h"
#include "support/arena.h"

namespace mub_test {
namespace {

constexpr int64_t kKeys = 1600;  // three levels of a B-tree

// Calls each function with the same arguments.
template <class Args, class... Functions>
void each(const Args &args, Functions... functions) {
  (static_cast<void>(std::apply(functions, args)), ...);
}

// ---- keys: what is passed for the n-th one; no record holds the one of -1

const std::string &text(int64_t n) {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> made;
    for (int64_t i = -1; i <= kKeys; ++i) made.push_back("key " + std::to_string(i * 7919 % 4001));
    return made;
  }();
  return texts[static_cast<size_t>(n + 1)];
}
struct Bytes {
  static auto key(int64_t n) { return std::tuple(text(n).c_str(), static_cast<int64_t>(text(n).size())); }
};
template <class Number>
struct Numbers {
  static auto key(int64_t n) { return std::tuple(static_cast<Number>(n * 7919 % 4001)); }
};
struct FourWords {
  static const uint32_t *words(int64_t n) {
    static const std::vector<std::array<uint32_t, 4>> keys = [] {
      std::vector<std::array<uint32_t, 4>> made;
      for (uint32_t i = 0; i <= kKeys + 1; ++i) made.push_back({i, 1, 2, i % 5});
      return made;
    }();
    return keys[static_cast<size_t>(n + 1)].data();
  }
  static auto key(int64_t n) { return std::tuple(words(n)); }
};
struct Positions {
  static auto key(int64_t n) { return std::tuple(n); }
  static constexpr auto kLookups = std::make_tuple();
};

// ---- samples
//
// A kind has functions to initialise, release, copy, add the n-th key or item with a value, and remove the
// n-th key or any item; kLookups are those called with a key.

enum { kInit, kTerm, kClone, kPut, kDrop };

inline void mend_nothing(const mub_pool_chunk *, uint64_t, mub_pool *, uint64_t, mub_pool *) {}
inline uint64_t number_at(uint64_t value) { return value == 0 ? 0 : *reinterpret_cast<uint64_t *>(value); }

// Every pool that a record can own is its own.
template <class Result, class Base, class Record, class... Flags>
void init(Result (*function)(Base *, Flags...), Record *record) {
  function(record, static_cast<Flags>(1)...);
}

template <class Record>
auto value_pool(Record &record, int) -> decltype(record.value_pool) {
  return record.value_pool;
}
template <class Record>
auto value_pool(Record &record, int) -> decltype(record.pool) {
  return record.pool;
}
template <class Record>
mub_pool *value_pool(Record &, long) {
  return nullptr;
}

template <class Kind>
struct Sample {
  using Record = typename Kind::Record;
  template <int kFunction, class... Args>
  static void call(const Args &...args) {
    std::apply(std::get<kFunction>(Kind::kFunctions), std::tuple_cat(args...));
  }
  static void put(Record *record, int64_t n) {
    mub_pool *pool = value_pool(*record, 0);
    auto value = static_cast<uint64_t>(n);
    if (pool != nullptr) {
      pool->block_size = sizeof value;
      void *block = mub_pool_new(pool);
      std::memcpy(block, &value, sizeof value);
      value = reinterpret_cast<uintptr_t>(block);
    }
    call<kPut>(std::tuple(record), Kind::key(n), std::tuple(value));
  }
  void copy(const Record *from, Record *to, mub_pool *copied) const {
    constexpr auto clone = std::get<kClone>(Kind::kFunctions);
    init(std::get<kInit>(Kind::kFunctions), to);
    mub_pool_init(copied);
    if constexpr (std::is_invocable_v<decltype(clone), const Record *, Record *>) {
      clone(from, to);
    } else {
      clone(from, users, to, copied, mend_nothing);
    }
  }

  Sample() {
    mub_pool_init(users);
    users->block_size = 24;
    mub_pool_free(users, mub_pool_new(users));
    init(std::get<kInit>(Kind::kFunctions), &records[0]);
    for (int64_t n = 0; n < kKeys; ++n) put(&records[0], n);
    for (int64_t n = 0; n < kKeys; n += 3) call<kDrop>(std::tuple(&records[0]), Kind::key(n));
    copy(&records[0], &records[1], &copied_users);
  }
  void read_all() const {
    for (const Record &record : records) {
      const auto look_up = [&](int64_t n, auto... lookups) {
        each(std::tuple_cat(std::tuple(&record), Kind::key(n)), lookups...);
      };
      for (int64_t n = -1; n <= kKeys; n += 7) {
        std::apply([&](auto... lookups) { look_up(n, lookups...); }, Kind::kLookups);
      }
      Kind::read(record);
      Record destination;
      mub_pool pool;
      copy(&record, &destination, &pool);
      call<kTerm>(std::tuple(&destination));
      mub_pool_term(&pool);
    }
  }

  mub_pool user_pool, copied_users;
  mub_pool *users = &user_pool;  // not const, as a clone takes it
  Record records[2];
};

// ---- hash tables

template <class Record, class First, class Next, class Visit>
void walk(const Record &table, First first, Next next, Visit visit) {
  int64_t bucket;
  for (auto *entry = first(&table, &bucket); entry != nullptr; entry = next(&table, &bucket, entry)) {
    visit(bucket, *entry);
  }
}

struct Hash : Bytes {
  using Record = mub_hash;
  static constexpr auto kFunctions =
      std::make_tuple(mub_hash_init, mub_hash_term, mub_hash_clone, mub_hash_insert, mub_hash_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_hash_get, mub_hash_find, mub_hash_entry_get, mub_hash_find_t);
  static void read(const Record &table) {
    walk(table, mub_hash_entry_first, mub_hash_entry_next, [&](int64_t bucket, const mub_hash_entry &entry) {
      mub_hash_entry_find(&table, bucket, entry.hash, table.keys.data + entry.key_offset, entry.key_length);
    });
  }
};
struct Hashd : Numbers<uint32_t> {
  using Record = mub_hashd;
  static constexpr auto kFunctions =
      std::make_tuple(mub_hashd_init, mub_hashd_term, mub_hashd_clone, mub_hashd_insert, mub_hashd_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_hashd_get, mub_hashd_find, mub_hashd_entry_get, mub_hashd_find_t);
  static void read(const Record &table) {
    walk(table, mub_hashd_entry_first, mub_hashd_entry_next,
         [&](int64_t bucket, const auto &entry) { mub_hashd_entry_find(&table, bucket, entry.key); });
  }
};
struct Hashx : Numbers<uint64_t> {
  using Record = mub_hashx;
  static constexpr auto kFunctions =
      std::make_tuple(mub_hashx_init, mub_hashx_term, mub_hashx_clone, mub_hashx_insert, mub_hashx_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_hashx_get, mub_hashx_find, mub_hashx_entry_get, mub_hashx_find_t);
  static void read(const Record &table) {
    walk(table, mub_hashx_entry_first, mub_hashx_entry_next,
         [&](int64_t bucket, const auto &entry) { mub_hashx_entry_find(&table, bucket, entry.key); });
  }
};
struct Hasht : FourWords {
  using Record = mub_hasht;
  static constexpr auto kFunctions =
      std::make_tuple(mub_hasht_init, mub_hasht_term, mub_hasht_clone, mub_hasht_insert, mub_hasht_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_hasht_get, mub_hasht_find, mub_hasht_entry_get, mub_hasht_find_t);
  static void read(const Record &table) {
    for (int64_t n = 0; n < table.buckets.count; ++n) mub_hasht_entry_find(&table, n, words(n % kKeys));
  }
};

// ---- B-trees

// The walks from every record, and what takes an entry.
template <class Kind, class Record>
void read_tree(const Record &tree) {
  EXPECT_EQ(tree.root.level, 2);
  const auto [first, last, next, prev] = Kind::kWalks;
  for (auto *node = first(&tree); node != nullptr; node = next(&tree, node)) Kind::compare(tree, *node);
  for (auto *node = last(&tree); node != nullptr; node = prev(&tree, node)) next(&tree, node);
  typename Kind::Cursor at;
  const auto [cursor_first, cursor_last, cursor_next, cursor_prev, cursor_node] = Kind::kCursors;
  for (auto *node = cursor_first(&at, &tree); node != nullptr; node = cursor_next(&at)) cursor_node(&at);
  for (auto *node = cursor_last(&at, &tree); node != nullptr; node = cursor_prev(&at)) cursor_node(&at);
  const auto [first_entry, last_entry, set_name, set_pool, clone_entry] = Kind::kEntries;
  auto leaf = *first_entry(&tree.root);
  leaf.parent = nullptr;
  each(std::tuple(&tree, &leaf), set_name, set_pool);
  Record destination;
  init(std::get<kInit>(Kind::kFunctions), &destination);
  clone_entry(&tree, last_entry(&tree.root), &destination, &destination.root);
  std::get<kTerm>(Kind::kFunctions)(&destination);
}

struct Btree : Bytes {
  using Record = mub_btree;
  using Cursor = mub_btree_cursor;
  static constexpr auto kFunctions =
      std::make_tuple(mub_btree_init, mub_btree_term, mub_btree_clone, mub_btree_insert, mub_btree_remove);
  static constexpr auto kWalks =
      std::make_tuple(mub_btree_node_first, mub_btree_node_last, mub_btree_node_next, mub_btree_node_prev);
  static constexpr auto kCursors =
      std::make_tuple(mub_btree_cursor_first, mub_btree_cursor_last, mub_btree_cursor_next,
                      mub_btree_cursor_prev, mub_btree_cursor_node);
  static constexpr auto kEntries =
      std::make_tuple(mub_btree_first_entry, mub_btree_last_entry, mub_btree_set_name, mub_btree_set_pool,
                      mub_btree_clone_entry);
  static constexpr auto kLookups = std::make_tuple(
      mub_btree_get, mub_btree_find, mub_btree_node_get, mub_btree_node_find, mub_btree_node_bfind,
      [](const Record *tree, auto... key) { return mub_btree_find_t(tree, &tree->root, key...); },
      [](const Record *tree, auto... key) {
        Cursor at;
        return mub_btree_cursor_seek(&at, tree, key...);
      });
  static void compare(const Record &tree, const mub_btree_node &node) {
    mub_btree_node_compare(&tree, &node, "key", 3);
    mub_btree_entry_compare(&tree, &tree.root, "key", 3);
    mub_btree_entrys_compare(&tree, &tree.root, mub_btree_first_entry(&tree.root), 0);
  }
  static void read(const Record &tree) { read_tree<Btree>(tree); }
};
struct Btreed : Numbers<uint32_t> {
  using Record = mub_btreed;
  using Cursor = mub_btreed_cursor;
  static constexpr auto kFunctions = std::make_tuple(mub_btreed_init, mub_btreed_term, mub_btreed_clone,
                                                     mub_btreed_insert, mub_btreed_remove);
  static constexpr auto kWalks = std::make_tuple(mub_btreed_node_first, mub_btreed_node_last,
                                                 mub_btreed_node_next, mub_btreed_node_prev);
  static constexpr auto kCursors =
      std::make_tuple(mub_btreed_cursor_first, mub_btreed_cursor_last, mub_btreed_cursor_next,
                      mub_btreed_cursor_prev, mub_btreed_cursor_node);
  static constexpr auto kEntries =
      std::make_tuple(mub_btreed_first_entry, mub_btreed_last_entry, mub_btreed_set_name, mub_btreed_set_pool,
                      mub_btreed_clone_entry);
  static constexpr auto kLookups = std::make_tuple(
      mub_btreed_get, mub_btreed_find, mub_btreed_node_get, mub_btreed_node_find, mub_btreed_node_bfind,
      [](const Record *tree, auto... key) { return mub_btreed_find_t(tree, &tree->root, key...); },
      [](const Record *tree, auto... key) {
        Cursor at;
        return mub_btreed_cursor_seek(&at, tree, key...);
      });
  static void compare(const Record &tree, const mub_btreed_node &node) {
    mub_btreed_node_compare(&node, &node.key, tree.key_type);
    mub_btreed_entry_compare(&tree.root, &node.key, tree.key_type);
    mub_btreed_entrys_compare(&tree.root, mub_btreed_first_entry(&tree.root), tree.key_type);
  }
  static void read(const Record &tree) { read_tree<Btreed>(tree); }
};
struct Btreex : Numbers<uint64_t> {
  using Record = mub_btreex;
  using Cursor = mub_btreex_cursor;
  static constexpr auto kFunctions = std::make_tuple(mub_btreex_init, mub_btreex_term, mub_btreex_clone,
                                                     mub_btreex_insert, mub_btreex_remove);
  static constexpr auto kWalks = std::make_tuple(mub_btreex_node_first, mub_btreex_node_last,
                                                 mub_btreex_node_next, mub_btreex_node_prev);
  static constexpr auto kCursors =
      std::make_tuple(mub_btreex_cursor_first, mub_btreex_cursor_last, mub_btreex_cursor_next,
                      mub_btreex_cursor_prev, mub_btreex_cursor_node);
  static constexpr auto kEntries =
      std::make_tuple(mub_btreex_first_entry, mub_btreex_last_entry, mub_btreex_set_name, mub_btreex_set_pool,
                      mub_btreex_clone_entry);
  static constexpr auto kLookups = std::make_tuple(
      mub_btreex_get, mub_btreex_find, mub_btreex_node_get, mub_btreex_node_find, mub_btreex_node_bfind,
      [](const Record *tree, auto... key) { return mub_btreex_find_t(tree, &tree->root, key...); },
      [](const Record *tree, auto... key) {
        Cursor at;
        return mub_btreex_cursor_seek(&at, tree, key...);
      });
  static void compare(const Record &tree, const mub_btreex_node &node) {
    mub_btreex_node_compare(&node, &node.key, tree.key_type);
    mub_btreex_entry_compare(&tree.root, &node.key, tree.key_type);
    mub_btreex_entrys_compare(&tree.root, mub_btreex_first_entry(&tree.root), tree.key_type);
  }
  static void read(const Record &tree) { read_tree<Btreex>(tree); }
};
// ---- arrays

// Writes a record as text, outside of the arena.
template <class Record>
void write_text(const Record &record, void (*to_string)(const Record *, int, mub_string *)) {
  mub_string string;
  mub_string_init(&string);
  to_string(&record, ',', &string);
  mub_string_term(&string);
}
// Appends a record to another one.
template <class Kind>
void append_to_another(const typename Kind::Record &record,
                       void (*append)(typename Kind::Record *, const typename Kind::Record *)) {
  typename Kind::Record other;
  init(std::get<kInit>(Kind::kFunctions), &other);
  append(&other, &record);
  std::get<kTerm>(Kind::kFunctions)(&other);
}

struct Array : Bytes {
  using Record = mub_array;
  static constexpr auto kFunctions =
      std::make_tuple(mub_array_init, mub_array_term, mub_array_clone, mub_array_insert, mub_array_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_array_find, mub_array_find_index, mub_array_bfind, mub_array_bfind_index,
                      mub_array_entry_find, mub_array_afind, mub_array_afind_index);
  static void read(const Record &array) {
    const char *key;
    int64_t length;
    for (int64_t n = -1; n <= array.capacity; ++n) {
      mub_array_get_entry(&array, n);
      mub_array_get_at(&array, n, &key, &length);
    }
    each(std::tuple(&array, &key, &length), mub_array_get_first, mub_array_get_last);
    write_text(array, mub_array_to_string);
    append_to_another<Array>(array, mub_array_append_array);
  }
};
struct Arrayd : Numbers<uint32_t> {
  using Record = mub_arrayd;
  static constexpr auto kFunctions = std::make_tuple(mub_arrayd_init, mub_arrayd_term, mub_arrayd_clone,
                                                     mub_arrayd_insert, mub_arrayd_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_arrayd_find, mub_arrayd_find_index, mub_arrayd_bfind, mub_arrayd_bfind_index,
                      mub_arrayd_entry_find, mub_arrayd_afind, mub_arrayd_afind_index);
  static void read(const Record &array) {
    uint32_t key;
    for (int64_t n = -1; n <= array.capacity; ++n) {
      mub_arrayd_get_entry(&array, n);
      mub_arrayd_get_at(&array, n, &key);
    }
    each(std::tuple(&array, &key), mub_arrayd_get_first, mub_arrayd_get_last);
    write_text(array, mub_arrayd_to_string);
    append_to_another<Arrayd>(array, mub_arrayd_append_array);
  }
};
struct Arrayx : Numbers<uint64_t> {
  using Record = mub_arrayx;
  static constexpr auto kFunctions = std::make_tuple(mub_arrayx_init, mub_arrayx_term, mub_arrayx_clone,
                                                     mub_arrayx_insert, mub_arrayx_remove);
  static constexpr auto kLookups =
      std::make_tuple(mub_arrayx_find, mub_arrayx_find_index, mub_arrayx_bfind, mub_arrayx_bfind_index,
                      mub_arrayx_entry_find, mub_arrayx_afind, mub_arrayx_afind_index);
  static void read(const Record &array) {
    uint64_t key;
    for (int64_t n = -1; n <= array.capacity; ++n) {
      mub_arrayx_get_entry(&array, n);
      mub_arrayx_get_at(&array, n, &key);
    }
    each(std::tuple(&array, &key), mub_arrayx_get_first, mub_arrayx_get_last);
    append_to_another<Arrayx>(array, mub_arrayx_append_array);
  }
};
struct Arrays : Positions {
  using Record = mub_arrays;
  static int order(uint64_t item, uint64_t key, uint64_t) {
    return number_at(item) < key ? -1 : number_at(item) > key;
  }
  static int order_x(uint64_t, uint64_t item, uint64_t key, uint64_t) { return order(item, key, 0); }
  static constexpr auto kFunctions = std::make_tuple(
      mub_arrays_init, mub_arrays_term, mub_arrays_clone,
      [](Record *array, int64_t, uint64_t item) { mub_arrays_append(array, item); }, mub_arrays_remove_at);
  static constexpr auto kLookups = std::make_tuple(mub_arrays_get_at, mub_arrays_get_entry);
  static void read(const Record &array) {
    for (uint64_t key = 0; key <= kKeys; key += 10) {
      each(std::tuple(&array, key, 0, &order), mub_arrays_find, mub_arrays_find_index, mub_arrays_bfind,
           mub_arrays_bfind_index);
      each(std::tuple(&array, 0, key, 0, &order_x), mub_arrays_find_x, mub_arrays_find_index_x,
           mub_arrays_bfind_x, mub_arrays_bfind_index_x);
    }
    each(std::tuple(&array), mub_arrays_get_first, mub_arrays_get_last);
    append_to_another<Arrays>(array, mub_arrays_append_array);
  }
};
struct Arrayt : Positions {
  using Record = mub_arrayt;
  static constexpr auto kFunctions = std::make_tuple(
      mub_arrayt_init, mub_arrayt_term, mub_arrayt_clone,
      [](Record *array, int64_t, uint64_t value) { mub_arrayt_insert(array, value); },
      [](Record *array, int64_t n) { mub_arrayt_remove(array, static_cast<uint32_t>(n)); });
  static constexpr auto kLookups = std::make_tuple(mub_arrayt_get_at);
  static void read(const Record &array) {
    for (uint32_t key = 0; key <= kKeys; ++key) mub_arrayt_find(&array, key);
    each(std::tuple(&array), mub_arrayt_length, mub_arrayt_get_first, mub_arrayt_get_last);
    write_text(array, mub_arrayt_to_string);
    append_to_another<Arrayt>(array, mub_arrayt_append_array);
  }
};

// ---- lists

struct List : Bytes {
  using Record = mub_list;
  static constexpr auto kFunctions =
      std::make_tuple(mub_list_init, mub_list_term, mub_list_clone, mub_list_add_tail,
                      [](Record *list, auto...) { mub_list_remove_head(list); });
  static constexpr auto kLookups = std::make_tuple(mub_list_find);
  static void read(const Record &list) {
    const char *key;
    int64_t length;
    auto *position = mub_list_get_head_position(&list);
    while (position != nullptr) {
      mub_list_get_at(&list, position, &key, &length);
      mub_list_get_next(&list, &position, &key, &length);
    }
    position = mub_list_get_tail_position(&list);
    while (position != nullptr) mub_list_get_prev(&list, &position, &key, &length);
    each(std::tuple(&list, &key, &length), mub_list_get_head, mub_list_get_tail);
    write_text(list, mub_list_to_string);
    append_to_another<List>(list, mub_list_add_head_list);
    append_to_another<List>(list, mub_list_add_tail_list);
  }
};
struct Lists : Positions {
  using Record = mub_lists;
  static int order(uint64_t a, uint64_t b) { return number_at(a) != b; }
  static int order_x(uint64_t a, uint64_t b, uint64_t) { return order(b, a); }
  static constexpr auto kFunctions = std::make_tuple(
      mub_lists_init, mub_lists_term, mub_lists_clone,
      [](Record *list, int64_t, uint64_t value) { mub_lists_add_tail(list, value); },
      [](Record *list, int64_t) { mub_lists_remove_head(list); });
  static void read(const Record &list) {
    for (uint64_t key = 0; key < kKeys; key += 10) {
      mub_lists_find_at(&list, key);
      mub_lists_find(&list, key, order);
      mub_lists_find_x(&list, key, 0, order_x);
    }
    auto *position = mub_lists_get_head_position(&list);
    while (position != nullptr) mub_lists_get_at(&list, position), mub_lists_get_next(&list, &position);
    position = mub_lists_get_tail_position(&list);
    while (position != nullptr) mub_lists_get_prev(&list, &position);
    each(std::tuple(&list), mub_lists_get_head, mub_lists_get_tail);
    append_to_another<Lists>(list, mub_lists_add_head_list);
    append_to_another<Lists>(list, mub_lists_add_tail_list);
  }
};

// ---- trees

struct Tree : Positions {
  struct Record : mub_tree {
    mub_array path;        // to the entry added last, the numbers in the value blocks being the keys
    mub_tree_entry *last;  // every eighth entry stands below the root, the others below the one before them
  };
  static void init(Record *tree) {
    mub_tree_init(tree, 1, 1);
    mub_array_init(&tree->path, 0);
  }
  static void term(Record *tree) {
    mub_tree_term(tree);
    mub_array_term(&tree->path);
  }
  static void clone(const Record *from, mub_pool *users, Record *to, mub_pool *copied, mub_clone_fn mend) {
    mub_tree_clone(from, users, to, copied, mend);
    mub_array_clone(&from->path, nullptr, &to->path, nullptr, nullptr);
  }
  static void put(Record *tree, int64_t n, uint64_t value) {
    if (n % 8 == 0) mub_array_remove_all(&tree->path);
    mub_array_append(&tree->path, &n, sizeof n, 0);
    mub_tree_entry *entry = mub_tree_entry_new(tree);
    entry->value = value;
    mub_tree_entry_append(tree, n % 8 == 0 ? &tree->root : tree->last, entry);
    tree->last = entry;
  }
  static void drop(Record *tree, int64_t n) {
    if (n % 16 == 0) mub_tree_entry_remove(tree, tree->root.first_child);
  }
  static int compare(const mub_tree_entry *entry, const void *key, int64_t) {
    const uint64_t number = number_at(entry->value);
    return std::memcmp(&number, key, sizeof number);
  }
  static int compare_x(const mub_tree_entry *entry, uint64_t, const void *key, int64_t length) {
    return compare(entry, key, length);
  }
  static constexpr auto kFunctions = std::make_tuple(init, term, clone, put, drop);
  static void read(const Record &tree) {
    const mub_tree_entry *root = &tree.root, *first = root->first_child;
    const int64_t key = kKeys - 1, length = sizeof key;
    mub_arrayt indexes;
    mub_arrayt_init(&indexes);
    for (auto *entry = first; entry != nullptr; entry = mub_tree_entry_iter_next(root, entry)) {
      each(std::tuple(entry), mub_tree_entry_last, mub_tree_entry_next, mub_tree_entry_prev,
           mub_tree_entry_index);
      each(std::tuple(root, entry), mub_tree_entry_find_child, mub_tree_entry_find_next);
      mub_tree_entry_find_parent(root, entry, &key, length, compare);
      mub_tree_entry_find_parent_x(root, entry, 0, &key, length, compare_x);
      mub_tree_entry_compare(first, entry);
    }
    mub_tree_entry_find(root, root, &key, length, compare);
    mub_tree_entry_find_x(root, root, 0, &key, length, compare_x);
    mub_tree_entry_array(mub_tree_entry_last(root), &indexes);
    mub_arrayt_term(&indexes);
    mub_tree_find(&tree, &tree.path, compare);
    mub_tree_find_x(&tree, &tree.path, 0, compare_x);
    mub_tree_find_t(root, 0, &tree.path, compare);
    mub_tree_find_x_t(root, 0, &tree.path, 0, compare_x);
    mub_tree other;
    mub_tree_init(&other, 1, 0);
    mub_tree_insert(&other, &tree.path, nullptr, compare);
    mub_tree_insert_x(&other, &tree.path, 0, nullptr, compare_x);
    mub_tree_insert_t(&other, &other.root, 0, &tree.path, nullptr, compare);
    mub_tree_insert_x_t(&other, &other.root, 0, &tree.path, 0, nullptr, compare_x);
    mub_tree_clone_entry(&other, first);
    mub_tree_term(&other);
  }
};
struct Bitree : Positions {
  struct Record : mub_bitree {
    mub_bitree_entry *last;
  };
  static void init(Record *tree) { tree->last = &mub_bitree_init(tree, 1, 1)->root; }
  static void clone(const Record *from, mub_pool *users, Record *to, mub_pool *copied, mub_clone_fn mend) {
    mub_bitree_clone(from, users, to, copied, mend);
  }
  static void put(Record *tree, int64_t n, uint64_t value) {
    mub_bitree_entry *entry = mub_bitree_entry_new(tree);
    entry->value = value;
    mub_bitree_entry_add(tree, tree->last, static_cast<int>(n % 3) - 1, entry);
    tree->last = entry;
  }
  static constexpr auto kFunctions =
      std::make_tuple(init, mub_bitree_term, clone, put, [](Record *, int64_t) {});
  static void read(const Record &tree) {
    mub_bitree other;
    mub_bitree_init(&other, 1, 0);
    mub_bitree_clone_entry(&other, &tree.root);
    mub_bitree_term(&other);
  }
};

// ---- texts, streams, and what containers are made of

// Calls what writes a part of the text into another record.
template <class Record>
void cut(const Record &text, int (*left)(const Record *, int64_t, Record *),
         int (*mid)(const Record *, int64_t, int64_t, Record *),
         int (*right)(const Record *, int64_t, Record *), void (*init)(Record *), void (*term)(Record *)) {
  Record part;
  init(&part);
  each(std::tuple(&text, 100, &part), left, right);
  mid(&text, 100, 100, &part);
  term(&part);
}
constexpr auto kDropNothing = [](auto *, int64_t) {};

struct String : Positions {
  using Record = mub_string;
  static constexpr auto kFunctions = std::make_tuple(
      mub_string_init, mub_string_term, mub_string_clone,
      [](Record *text, int64_t n, uint64_t) { mub_string_append_integer(text, n); }, kDropNothing);
  static constexpr auto kLookups = std::make_tuple(mub_string_get_at);
  static void read(const Record &text) {
    each(std::make_tuple(&text), mub_string_is_empty);
    each(std::tuple(&text, 0), mub_string_get_integer, mub_string_get_long, mub_string_get_float,
         mub_string_get_double);
    each(std::tuple(&text, "1599x", 5), mub_string_compare, mub_string_icompare, mub_string_find);
    each(std::tuple(&text, 'x'), mub_string_find_char, mub_string_reverse_find);
    mub_string_find_char_pos(&text, '9', 100);
    mub_string_find_pos(&text, "1599", 4, 100);
    cut(text, mub_string_left_string, mub_string_mid_string, mub_string_right_string, mub_string_init,
        mub_string_term);
    mub_stringx view;
    mub_stringx_copy_string(&view, &text);
    mub_stream stream;
    mub_stream_init(&stream);
    int64_t position = 0;
    mub_stream_set_string(&stream, &position, &text);
    mub_stream_term(&stream);
  }
};
struct Stringx : Positions {
  struct Record : mub_stringx {
    mub_char own;
  };
  static void init(Record *view) {
    mub_stringx_init(view);
    mub_char_init(&view->own);
  }
  static void term(Record *view) { mub_char_term(&view->own); }
  static void clone(const Record *from, Record *to) { mub_stringx_copy(to, from); }
  static void put(Record *view, int64_t, uint64_t) {
    mub_char_copy(&view->own, " -123.5 of x", -1);
    mub_stringx_copy_char(view, &view->own);
  }
  static constexpr auto kFunctions = std::make_tuple(init, term, clone, put, kDropNothing);
  static constexpr auto kLookups = std::make_tuple(mub_stringx_get_at);
  static void read(const Record &record) {
    const mub_stringx &view = record;
    each(std::tuple(&view), mub_stringx_is_empty, mub_stringx_is_long, mub_stringx_get_long,
         mub_stringx_is_float, mub_stringx_get_float);
    each(std::tuple(&view, "Of", 2), mub_stringx_compare, mub_stringx_icompare, mub_stringx_find);
    each(std::tuple(&view, 'x'), mub_stringx_find_char, mub_stringx_reverse_find);
    mub_stringx_find_char_pos(&view, 'x', 2);
    mub_stringx_find_pos(&view, "of", 2, 2);
    mub_stringx part;
    each(std::tuple(&view, 3, &part), mub_stringx_left_string, mub_stringx_right_string);
    mub_stringx_mid_string(&view, 2, 3, &part);
    mub_char piece;
    each(std::tuple(&view, 3, &piece), mub_stringx_left_char, mub_stringx_right_char);
    mub_stringx_mid_char(&view, 2, 3, &piece);
  }
};
struct Char : Positions {
  using Record = mub_char;
  static void clone(const Record *from, Record *to) { *to = {from->data, -1}; }
  static constexpr auto kFunctions = std::make_tuple(
      mub_char_init, [](Record *) {}, clone,
      [](Record *view, int64_t, uint64_t) { mub_char_copy(view, " -123.5 of x", -1); }, kDropNothing);
  static void read(const Record &view) {
    each(std::make_tuple(&view), mub_char_is_empty, mub_char_is_long, mub_char_get_long, mub_char_is_float,
         mub_char_get_float);
    each(std::tuple(&view, "Of", 2), mub_char_compare, mub_char_icompare, mub_char_find);
    each(std::tuple(&view, 'x'), mub_char_find_char, mub_char_reverse_find);
    mub_char_find_char_pos(&view, 'x', 2);
    mub_char_find_pos(&view, "of", 2, 2);
    mub_stringx other;
    mub_stringx_copy_char(&other, &view);
  }
};
struct Wchar : Positions {
  using Record = mub_wchar;
  static constexpr auto kFunctions = std::make_tuple(
      mub_wchar_init, mub_wchar_term, mub_wchar_clone,
      [](Record *text, int64_t n, uint64_t) { mub_wchar_append_integer(text, n); }, kDropNothing);
  static constexpr auto kLookups = std::make_tuple(mub_wchar_get_at);
  static void read(const Record &text) {
    const uint16_t pattern[] = {'1', '5', '9', '9', 'x', 0};
    mub_wchar_is_empty(&text);
    each(std::tuple(&text, pattern, 5), mub_wchar_compare, mub_wchar_icompare, mub_wchar_find);
    each(std::tuple(&text, 'x'), mub_wchar_find_char, mub_wchar_reverse_find);
    mub_wchar_find_char_pos(&text, '9', 100);
    mub_wchar_find_pos(&text, pattern, 4, 100);
    cut(text, mub_wchar_left_wchar, mub_wchar_mid_wchar, mub_wchar_right_wchar, mub_wchar_init,
        mub_wchar_term);
  }
};
struct Stream : Positions {
  using Record = mub_stream;
  static constexpr auto kFunctions = std::make_tuple(
      mub_stream_init, mub_stream_term, mub_stream_clone,
      [](Record *stream, int64_t n, uint64_t) { mub_stream_append(stream, &n, sizeof n); }, kDropNothing);
  static constexpr auto kLookups = std::make_tuple(mub_stream_get_at);
  static void read(const Record &stream) {
    mub_string string;
    mub_stream other;
    mub_string_init(&string);
    mub_stream_init(&other);
    int64_t position = 0;
    while (position < stream.length - 100) {
      each(std::tuple(&stream, &position), mub_stream_get_byte, mub_stream_get_word, mub_stream_get_tword,
           mub_stream_get_dword, mub_stream_get_xword, mub_stream_get_lword, mub_stream_inflate_word,
           mub_stream_inflate_dword, mub_stream_inflate_lword);
    }
    uint8_t *bytes;
    int64_t count;
    mub_stream_get_buffer(&stream, &(position = 0), &bytes, &count);
    mub_stream_get_string(&stream, &(position = 0), &string);
    mub_stream_get_stream(&stream, &(position = 0), &other);
    mub_stream_set_stream(&other, &(position = 0), &stream);
    mub_stream_is_empty(&stream);
    mub_stream_find(&stream, 0xFF);
    mub_stream_find_pos(&stream, 0xFF, 100);
    mub_stream_clone_string(&stream, &string);
    each(std::tuple(&stream, 100, &string), mub_stream_left_string, mub_stream_right_string);
    mub_stream_mid_string(&stream, 100, 100, &string);
    cut(stream, mub_stream_left_stream, mub_stream_mid_stream, mub_stream_right_stream, mub_stream_init,
        mub_stream_term);
    mub_string_term(&string);
    mub_stream_term(&other);
  }
};
struct Pool : Positions {
  struct Record : mub_pool {
    mub_pool_chunk *map;
    void *last;
  };
  static void init(Record *pool) {
    mub_pool_init(pool);
    pool->block_size = 24;
  }
  static void term(Record *pool) {
    mub_pool_umap(pool->map);
    mub_pool_term(pool);
  }
  static void clone(const Record *from, Record *to) {
    mub_pool_clone(from, from->map, to);
    to->map = mub_pool_map(to);
    to->last = mub_pool_set_addr(to, 0, 24);
  }
  static void put(Record *pool, int64_t n, uint64_t) {
    pool->last = mub_pool_new(pool);
    if (n == kKeys - 1) pool->map = mub_pool_map(pool);
  }
  static void drop(Record *pool, int64_t) { mub_pool_free(pool, pool->last); }
  static constexpr auto kFunctions = std::make_tuple(init, term, clone, put, drop);
  static void read(const Record &pool) {
    int64_t offset;
    mub_pool_get_addr(&pool, pool.map, pool.last, &offset);
    mub_pool_set_addr(&pool, 0, 8);
    mub_pool_bfind(pool.map, pool.chunk_count, pool.last);
    mub_pool_umap(mub_pool_map(&pool));
    std::vector<void *> blocks(kKeys);
    mub_pool_empty_array(&pool, blocks.data());
  }
};
struct Bits : Positions {
  using Record = mub_bits;
  static void put(Record *bits, int64_t n, uint64_t) { mub_bits_insert(bits, static_cast<uint32_t>(n), 1); }
  static void drop(Record *bits, int64_t n) { mub_bits_insert(bits, static_cast<uint32_t>(n), 0); }
  static void clone(const Record *from, Record *to) {
    for (uint32_t bit = 0; bit <= kKeys; ++bit) mub_bits_insert(to, bit, mub_bits_find(from, bit) != 0);
  }
  static constexpr auto kFunctions = std::make_tuple(mub_bits_init, mub_bits_term, clone, put, drop);
  static void read(const Record &) {}
};

// ---- the tests

template <class Kind>
class Readers : public testing::Test {};
using Kinds =
    testing::Types<Hash, Hashd, Hashx, Hasht, Array, Arrayd, Arrayx, Arrays, Arrayt, List, Lists, Tree,
                   Bitree, String, Stringx, Char, Wchar, Stream, Pool, Bits, Btree, Btreed, Btreex>;
TYPED_TEST_SUITE(Readers, Kinds);

TYPED_TEST(Readers, RunSideBySide) {
  Arena arena;
  const auto *sample = arena.make<Sample<TypeParam>>();
  std::thread other([&] { sample->read_all(); });
  sample->read_all();
  other.join();
}

TYPED_TEST(Readers, WriteNothing) {
  Arena arena;
  const auto *sample = arena.make<Sample<TypeParam>>();
  arena.make_read_only();
  sample->read_all();
}

}  // namespace
}  // namespace mub_test
