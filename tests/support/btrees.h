// The B-trees behind one face, so that one suite tests them all: a kind names the records and functions of one tree and
// makes keys that are hard on it. expect_same checks the invariants of the engine.
#ifndef MUB_TESTS_SUPPORT_BTREES_H
#define MUB_TESTS_SUPPORT_BTREES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "mub_btree.h"
#include "support/calls.h"
#include "support/pools.h"
#include "support/random.h"

namespace mub_test {

// The operations, in the order of each kind's functions.
enum OfTree { kInit, kTerm, kRemoveAll, kFreeAll, kSwap, kClone, kCloneEntry };
enum OfKey { kInsert = kCloneEntry + 1, kSet, kGet, kUpdate, kFind, kRemove };
enum OfNode { kNodeSet = kRemove + 1, kNodeGet, kNodeFind, kNodeBfind };
enum Walked { kNodeFirst = kNodeBfind + 1, kNodeLast, kNodeNext, kNodePrev };
enum OfEntry { kFindT = kNodePrev + 1, kSetName, kSetPool, kEntryNew, kSplit };
enum OfPart { kRemoveAllEntry = kSplit + 1, kRemoveEntryT, kSplitEntry, kSplitNode, kInsertT, kSetNext };
enum OfCursor {
  kCursorFirst = kSetNext + 1,
  kCursorLast,
  kCursorSeek,
  kCursorNext,
  kCursorPrev,
  kCursorNode
};

struct ByteTree : PassingBytes {
  using Record = mub_btree;
  using Entry = mub_btree_entry;
  using Node = mub_btree_node;
  using Cursor = mub_btree_cursor;
  using Key = std::string;
  using Passed = std::string_view;
  static constexpr auto kFunctions = std::make_tuple(
      mub_btree_init, mub_btree_term, mub_btree_remove_all, mub_btree_free_all, mub_btree_swap,
      mub_btree_clone, mub_btree_clone_entry, mub_btree_insert, mub_btree_set, mub_btree_get,
      mub_btree_update, mub_btree_find, mub_btree_remove, mub_btree_node_set, mub_btree_node_get,
      mub_btree_node_find, mub_btree_node_bfind, mub_btree_node_first, mub_btree_node_last,
      mub_btree_node_next, mub_btree_node_prev, mub_btree_find_t, mub_btree_set_name, mub_btree_set_pool,
      mub_btree_entry_new, mub_btree_split, mub_btree_remove_all_entry, mub_btree_remove_entry_t,
      mub_btree_split_entry, mub_btree_split_node, mub_btree_insert_t, mub_btree_set_next,
      mub_btree_cursor_first, mub_btree_cursor_last, mub_btree_cursor_seek, mub_btree_cursor_next,
      mub_btree_cursor_prev, mub_btree_cursor_node);
  static constexpr auto first_entry = mub_btree_first_entry, last_entry = mub_btree_last_entry;

  // Among them the empty key, prefixes of others, bytes above 127 and pairs that differ in their first or last byte.
  static Key key(int64_t n) {
    if (n == 0) return "";
    const std::string digits = std::to_string(n / 4);
    if (n % 4 == 0) return digits;
    if (n % 4 == 1) return digits + "\xFF";
    return (n % 4 == 2 ? "a" : "\xE0") + std::string(20, '\0') + digits;
  }
  // The key where it lies in the tree's own bytes, which may grow or be cut under it.
  template <class Item>
  static Passed key_of(const Record &tree, const Item &item) {
    if (tree.keys.data == nullptr) return "";
    return {reinterpret_cast<const char *>(tree.keys.data) + item.key_offset, item.key_length};
  }
  // A part of these bytes, which may be the key of no record.
  static Passed some_own_key(const Record &tree, Random &random) {
    const std::string_view own(reinterpret_cast<const char *>(tree.keys.data),
                               tree.keys.data == nullptr ? 0 : static_cast<size_t>(tree.keys.length));
    return own.substr(random.word() % (own.size() + 1), random.word() % 40);
  }
  template <class Child>
  static bool shares_key(const Entry &entry, const Child &child) {
    return entry.key_offset == child.key_offset && entry.key_length == child.key_length;
  }
  static void start(Record &) {}
};

struct Trees32 {
  using Record = mub_btreed;
  using Entry = mub_btreed_entry;
  using Node = mub_btreed_node;
  using Cursor = mub_btreed_cursor;
  using Bits = uint32_t;
  static constexpr auto kFunctions = std::make_tuple(
      mub_btreed_init, mub_btreed_term, mub_btreed_remove_all, mub_btreed_free_all, mub_btreed_swap,
      mub_btreed_clone, mub_btreed_clone_entry, mub_btreed_insert, mub_btreed_set, mub_btreed_get,
      mub_btreed_update, mub_btreed_find, mub_btreed_remove, mub_btreed_node_set, mub_btreed_node_get,
      mub_btreed_node_find, mub_btreed_node_bfind, mub_btreed_node_first, mub_btreed_node_last,
      mub_btreed_node_next, mub_btreed_node_prev, mub_btreed_find_t, mub_btreed_set_name, mub_btreed_set_pool,
      mub_btreed_entry_new, mub_btreed_split, mub_btreed_remove_all_entry, mub_btreed_remove_entry_t,
      mub_btreed_split_entry, mub_btreed_split_node, mub_btreed_insert_t, mub_btreed_set_next,
      mub_btreed_cursor_first, mub_btreed_cursor_last, mub_btreed_cursor_seek, mub_btreed_cursor_next,
      mub_btreed_cursor_prev, mub_btreed_cursor_node);
  static constexpr auto first_entry = mub_btreed_first_entry, last_entry = mub_btreed_last_entry;
};

struct Trees64 {
  using Record = mub_btreex;
  using Entry = mub_btreex_entry;
  using Node = mub_btreex_node;
  using Cursor = mub_btreex_cursor;
  using Bits = uint64_t;
  static constexpr auto kFunctions = std::make_tuple(
      mub_btreex_init, mub_btreex_term, mub_btreex_remove_all, mub_btreex_free_all, mub_btreex_swap,
      mub_btreex_clone, mub_btreex_clone_entry, mub_btreex_insert, mub_btreex_set, mub_btreex_get,
      mub_btreex_update, mub_btreex_find, mub_btreex_remove, mub_btreex_node_set, mub_btreex_node_get,
      mub_btreex_node_find, mub_btreex_node_bfind, mub_btreex_node_first, mub_btreex_node_last,
      mub_btreex_node_next, mub_btreex_node_prev, mub_btreex_find_t, mub_btreex_set_name, mub_btreex_set_pool,
      mub_btreex_entry_new, mub_btreex_split, mub_btreex_remove_all_entry, mub_btreex_remove_entry_t,
      mub_btreex_split_entry, mub_btreex_split_node, mub_btreex_insert_t, mub_btreex_set_next,
      mub_btreex_cursor_first, mub_btreex_cursor_last, mub_btreex_cursor_seek, mub_btreex_cursor_next,
      mub_btreex_cursor_prev, mub_btreex_cursor_node);
  static constexpr auto first_entry = mub_btreex_first_entry, last_entry = mub_btreex_last_entry;
};

// Numbers that fill their width: small ones of both signs, ones that differ in their highest bits or lowest alone.
template <class Trees, class Number, uint32_t kType>
struct NumberTree : Trees, Passing {
  using Key = Number;
  using Passed = Number;
  using typename Trees::Bits;

  using Passing::passed;
  static auto passed(Key key) {
    Bits bits;
    std::memcpy(&bits, &key, sizeof bits);
    return std::tuple(bits);
  }
  static Key number(Bits bits) {
    Key key;
    std::memcpy(&key, &bits, sizeof key);
    return key;
  }
  static Key key(int64_t n) {
    if constexpr (std::is_floating_point_v<Number>) {
      const auto half = static_cast<Number>(n / 2);
      return n % 2 == 0 ? half : -1 / (half + 1);
    } else {
      constexpr int width = 8 * sizeof(Bits);
      const auto m = static_cast<Bits>(n / 4);
      const Bits far[4] = {m, static_cast<Bits>(~m), static_cast<Bits>((m + 1) << (width - 9)),
                           static_cast<Bits>(m | Bits{1} << (width / 2))};
      return number(far[n % 4]);
    }
  }
  template <class Item>
  static Key key_of(const typename Trees::Record &, const Item &item) {
    return number(item.key);
  }
  static Key some_own_key(const typename Trees::Record &, Random &random) { return key(random.below(400)); }
  template <class Child>
  static bool shares_key(const typename Trees::Entry &entry, const Child &child) {
    return entry.key == child.key;
  }
  static void start(typename Trees::Record &tree) { tree.key_type = kType; }
};

// A tree that is released at the end of its scope; the pools that it does not own are the test's.
template <class A>
struct Tree : A::Record {
  // One bit each: owns its entry pool, its node pool, its value pool.
  explicit Tree(int owned = 3) {
    call_of<kInit, A>(this, owned & 1, owned & 2, owned & 4);
    A::start(*this);
    if ((owned & 1) == 0) this->entry_pool = &entries;
    if ((owned & 2) == 0) this->node_pool = &nodes;
    if ((owned & 4) == 0) this->value_pool = &values;
    this->value_pool->block_size = sizeof(uint64_t);
  }
  ~Tree() {
    call_of<kTerm, A>(this);
    EXPECT_EQ(entries.live_count + nodes.live_count, 0) << "blocks of the caller's pools are lost";
  }

  Pool entries{sizeof(typename A::Entry)}, nodes{sizeof(typename A::Node)}, values{sizeof(uint64_t)};
};

template <int kOperation, class A, class... Args>
auto call(Tree<A> &tree, const Args &...args) {
  return call_of<kOperation, A>(&tree, args...);
}

// What a tree holds.
template <class A>
using Content = std::map<typename A::Key, uint64_t>;

enum class Chain { kExact, kStale };

// The invariants of an entry and all below it: 1, 2, 3, 5 and 8 of the engine. Collects the records, and counts entries.
template <class A>
void read(const Tree<A> &tree, const typename A::Entry &entry, int64_t most_children,
          std::vector<typename A::Node *> &nodes, int64_t &entries) {
  const mub_arrays &children = entry.children;
  const bool is_leaf = entry.level == 0;
  const mub_pool *pool = is_leaf ? tree.node_pool : tree.entry_pool;
  ASSERT_EQ(tree.count > 0 ? children.pool : pool, pool);
  ASSERT_LE(children.count, std::min(most_children, children.capacity));
  for (int64_t i = 0; i < children.count; ++i) {
    const bool gives_name = i == children.count - 1 && entry.parent != nullptr;
    if (is_leaf) {
      nodes.push_back(reinterpret_cast<typename A::Node *>(children.items[i]));
      ASSERT_TRUE(!gives_name || A::shares_key(entry, *nodes.back()));
      continue;
    }
    const auto &below = *reinterpret_cast<const typename A::Entry *>(children.items[i]);
    ++entries;
    ASSERT_TRUE(below.parent == &entry && below.level == entry.level - 1 && below.children.count > 0);
    ASSERT_TRUE(!gives_name || A::shares_key(entry, below));
    ASSERT_NO_FATAL_FAILURE(read(tree, below, most_children, nodes, entries));
  }
}

// Walks with a cursor from every record to both sides, past the ends and back.
template <class A>
void expect_cursor_walks(Tree<A> &tree, const std::vector<typename A::Node *> &nodes) {
  typename A::Cursor at;
  const auto last = static_cast<int64_t>(nodes.size()) - 1;
  auto *node = call_of<kCursorFirst, A>(&at, &tree);
  for (int64_t i = 1; i <= last; ++i, node = call_of<kCursorNext, A>(&at)) {
    ASSERT_EQ(node, nodes[static_cast<size_t>(i)]);
    ASSERT_EQ((call_of<kCursorNode, A>(&at)), node);
  }
  ASSERT_EQ((call_of<kCursorNext, A>(&at)), nullptr);
  for (int64_t i = last - 1; i >= 0; --i) {
    ASSERT_EQ((call_of<kCursorPrev, A>(&at)), nodes[static_cast<size_t>(i)]);
  }
  ASSERT_EQ((call_of<kCursorPrev, A>(&at)), nullptr);
  ASSERT_EQ((call_of<kCursorNode, A>(&at)), nullptr);
  ASSERT_EQ((call_of<kCursorNext, A>(&at)), nodes[1]);
  ASSERT_EQ((call_of<kCursorLast, A>(&at, &tree)), nodes[static_cast<size_t>(last) - 1]);
  ASSERT_TRUE(at.tree == &tree && (at.leaf == nullptr) == (last == 1));
}

// All invariants, the content and the walks.
template <class A>
void expect_same(Tree<A> &tree, const Content<A> &content, Chain chain, int64_t most_children = 31) {
  std::vector<typename A::Node *> nodes = {nullptr};
  int64_t entries = 0;
  ASSERT_EQ(tree.root.parent, nullptr);
  ASSERT_NO_FATAL_FAILURE(read(tree, tree.root, most_children, nodes, entries));
  const auto count = static_cast<int64_t>(content.size());
  ASSERT_EQ(tree.count, count);
  ASSERT_EQ(static_cast<int64_t>(nodes.size()), count + 1);
  ASSERT_EQ(tree.owns_node_pool != 0 ? tree.node_pool->live_count : count, count);
  ASSERT_EQ(tree.owns_entry_pool != 0 ? tree.entry_pool->live_count : entries, entries);
  nodes.push_back(nullptr);
  ASSERT_NO_FATAL_FAILURE(expect_cursor_walks(tree, nodes));
  const auto *node = &nodes[1];
  for (const auto &[key, value] : content) {
    ASSERT_EQ(A::key_of(tree, **node), key);
    ASSERT_EQ((*node)->value, value);
    ASSERT_TRUE(chain == Chain::kStale || ((*node)->prev == node[-1] && (*node)->next == node[1]));
    ASSERT_EQ(call<kNodeNext>(tree, *node), node[1]);
    ++node;
  }
  ASSERT_EQ(call<kNodeLast>(tree), node[-1]);
  for (--node; node != &nodes[0]; --node) ASSERT_EQ(call<kNodePrev>(tree, *node), node[-1]);
  ASSERT_EQ(call<kNodeFirst>(tree), nodes[1]);
}

}  // namespace mub_test

#endif
