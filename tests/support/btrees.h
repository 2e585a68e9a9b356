// The B-trees behind one face, so that one suite tests them all: a kind names the records and functions of one tree and
// makes keys that are hard on it. check() walks the invariants of the engine.
#ifndef MUB_TESTS_SUPPORT_BTREES_H
#define MUB_TESTS_SUPPORT_BTREES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "mub_btree.h"
#include "support/pools.h"

namespace mub_test {

struct ByteTree {
  using Record = mub_btree;
  using Entry = mub_btree_entry;
  using Node = mub_btree_node;
  using Key = std::string;

  // Among them the empty key, prefixes of others, bytes above 127 and pairs that differ in their first or last byte.
  static Key key(int64_t n) {
    if (n == 0) return "";
    const std::string digits = std::to_string(n / 4);
    if (n % 4 == 0) return digits;
    if (n % 4 == 1) return digits + "\xFF";
    return (n % 4 == 2 ? "a" : "\xE0") + std::string(20, '\0') + digits;
  }
  template <class Item>
  static Key key_of(const Record &tree, const Item &item) {
    const auto *bytes = reinterpret_cast<const char *>(tree.keys.data);
    return bytes == nullptr ? "" : Key(bytes + item.key_offset, item.key_length);
  }
  template <class Child>
  static bool shares_key(const Entry &entry, const Child &child) {
    return entry.key_offset == child.key_offset && entry.key_length == child.key_length;
  }
  static bool has_no_key(const Node &node) { return node.key_offset == 0 && node.key_length == 0; }
  static void start(Record &) {}
  // Calls with the key as the functions take it.
  template <class Call>
  static auto with(const Key &key, Call call) {
    return call(key.data(), static_cast<int64_t>(key.size()));
  }

  static constexpr auto init = mub_btree_init;
  static constexpr auto insert = mub_btree_insert;
  static constexpr auto set = mub_btree_set;
  static constexpr auto get = mub_btree_get;
  static constexpr auto update = mub_btree_update;
  static constexpr auto find = mub_btree_find;
  static constexpr auto remove = mub_btree_remove;
  static constexpr auto remove_all = mub_btree_remove_all, term = mub_btree_term;
  static constexpr auto free_all = mub_btree_free_all;
  static constexpr auto node_set = mub_btree_node_set;
  static constexpr auto node_get = mub_btree_node_get, node_find = mub_btree_node_find,
                        node_bfind = mub_btree_node_bfind;
  static constexpr auto node_first = mub_btree_node_first, node_last = mub_btree_node_last;
  static constexpr auto node_next = mub_btree_node_next, node_prev = mub_btree_node_prev;
  static constexpr auto first_entry = mub_btree_first_entry, last_entry = mub_btree_last_entry;
  static constexpr auto swap = mub_btree_swap;
  static constexpr auto clone = mub_btree_clone;
  static constexpr auto clone_entry = mub_btree_clone_entry;
  static constexpr auto find_t = mub_btree_find_t;
  static constexpr auto set_name = mub_btree_set_name;
  static constexpr auto set_pool = mub_btree_set_pool;
  static constexpr auto entry_new = mub_btree_entry_new;
  static constexpr auto split = mub_btree_split;
  static constexpr auto remove_all_entry = mub_btree_remove_all_entry,
                        remove_entry_t = mub_btree_remove_entry_t;
};

// Numbers that fill their width: small ones of both signs, ones that differ in their highest bits or lowest alone.
template <class Number, class RecordType, class EntryType, class NodeType, uint32_t kType>
struct NumberTree {
  using Record = RecordType;
  using Entry = EntryType;
  using Node = NodeType;
  using Key = Number;
  using Bits = std::conditional_t<sizeof(Number) == 4, uint32_t, uint64_t>;

  static Bits bits(Key key) {
    Bits bits;
    std::memcpy(&bits, &key, sizeof bits);
    return bits;
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
  static Key key_of(const Record &, const Item &item) {
    return number(item.key);
  }
  template <class Child>
  static bool shares_key(const Entry &entry, const Child &child) {
    return entry.key == child.key;
  }
  static bool has_no_key(const Node &node) { return node.key == 0; }
  static void start(Record &tree) { tree.key_type = kType; }
  template <class Call>
  static auto with(Key key, Call call) {
    return call(bits(key));
  }
};

template <class Number, uint32_t kType>
struct Tree32 : NumberTree<Number, mub_btreed, mub_btreed_entry, mub_btreed_node, kType> {
  static constexpr auto init = mub_btreed_init;
  static constexpr auto insert = mub_btreed_insert;
  static constexpr auto set = mub_btreed_set;
  static constexpr auto get = mub_btreed_get;
  static constexpr auto update = mub_btreed_update;
  static constexpr auto find = mub_btreed_find;
  static constexpr auto remove = mub_btreed_remove;
  static constexpr auto remove_all = mub_btreed_remove_all, term = mub_btreed_term;
  static constexpr auto free_all = mub_btreed_free_all;
  static constexpr auto node_set = mub_btreed_node_set;
  static constexpr auto node_get = mub_btreed_node_get, node_find = mub_btreed_node_find,
                        node_bfind = mub_btreed_node_bfind;
  static constexpr auto node_first = mub_btreed_node_first, node_last = mub_btreed_node_last;
  static constexpr auto node_next = mub_btreed_node_next, node_prev = mub_btreed_node_prev;
  static constexpr auto first_entry = mub_btreed_first_entry, last_entry = mub_btreed_last_entry;
  static constexpr auto swap = mub_btreed_swap;
  static constexpr auto clone = mub_btreed_clone;
  static constexpr auto clone_entry = mub_btreed_clone_entry;
  static constexpr auto find_t = mub_btreed_find_t;
  static constexpr auto set_name = mub_btreed_set_name;
  static constexpr auto set_pool = mub_btreed_set_pool;
  static constexpr auto entry_new = mub_btreed_entry_new;
  static constexpr auto split = mub_btreed_split;
  static constexpr auto remove_all_entry = mub_btreed_remove_all_entry,
                        remove_entry_t = mub_btreed_remove_entry_t;
};

template <class Number, uint32_t kType>
struct Tree64 : NumberTree<Number, mub_btreex, mub_btreex_entry, mub_btreex_node, kType> {
  static constexpr auto init = mub_btreex_init;
  static constexpr auto insert = mub_btreex_insert;
  static constexpr auto set = mub_btreex_set;
  static constexpr auto get = mub_btreex_get;
  static constexpr auto update = mub_btreex_update;
  static constexpr auto find = mub_btreex_find;
  static constexpr auto remove = mub_btreex_remove;
  static constexpr auto remove_all = mub_btreex_remove_all, term = mub_btreex_term;
  static constexpr auto free_all = mub_btreex_free_all;
  static constexpr auto node_set = mub_btreex_node_set;
  static constexpr auto node_get = mub_btreex_node_get, node_find = mub_btreex_node_find,
                        node_bfind = mub_btreex_node_bfind;
  static constexpr auto node_first = mub_btreex_node_first, node_last = mub_btreex_node_last;
  static constexpr auto node_next = mub_btreex_node_next, node_prev = mub_btreex_node_prev;
  static constexpr auto first_entry = mub_btreex_first_entry, last_entry = mub_btreex_last_entry;
  static constexpr auto swap = mub_btreex_swap;
  static constexpr auto clone = mub_btreex_clone;
  static constexpr auto clone_entry = mub_btreex_clone_entry;
  static constexpr auto find_t = mub_btreex_find_t;
  static constexpr auto set_name = mub_btreex_set_name;
  static constexpr auto set_pool = mub_btreex_set_pool;
  static constexpr auto entry_new = mub_btreex_entry_new;
  static constexpr auto split = mub_btreex_split;
  static constexpr auto remove_all_entry = mub_btreex_remove_all_entry,
                        remove_entry_t = mub_btreex_remove_entry_t;
};

// A tree that is released at the end of its scope; the pools that it does not own are the test's.
template <class A>
struct Tree : A::Record {
  using Key = typename A::Key;
  using Node = typename A::Node;
  using Entry = typename A::Entry;

  // One bit each: owns its entry pool, its node pool, its value pool.
  explicit Tree(int owned = 3) : entries(sizeof(Entry)), nodes(sizeof(Node)), values(16) {
    A::init(this, owned & 1, owned & 2, owned & 4);
    A::start(*this);
    if ((owned & 1) == 0) this->entry_pool = &entries;
    if ((owned & 2) == 0) this->node_pool = &nodes;
    if ((owned & 4) == 0) this->value_pool = &values;
    if (this->value_pool != nullptr) this->value_pool->block_size = 16;
  }
  ~Tree() {
    A::term(this);
    EXPECT_EQ(entries.live_count + nodes.live_count, 0) << "blocks of the caller's pools are lost";
  }

  template <class Function, class... Rest>
  auto call(Function function, const Key &key, Rest... rest) {
    return A::with(key, [&](auto... passed) { return function(this, passed..., rest...); });
  }
  template <class Function, class... Rest>
  auto call_at(Function function, Entry *entry, const Key &key, Rest... rest) {
    return A::with(key, [&](auto... passed) { return function(this, entry, passed..., rest...); });
  }

  Pool entries, nodes, values;
};

enum class Chain { kExact, kStale };

// The invariants of the engine, in its order; returns the records in key order.
template <class A>
class Check {
 public:
  using Entry = typename A::Entry;
  using Node = typename A::Node;

  Check(const typename A::Record &tree, int64_t most_children = 31)
      : tree_(tree), most_children_(most_children) {
    visit(&tree.root, nullptr);
  }

  void run(Chain chain) const {
    Node *last = nullptr;
    for (Node *node : nodes_) {
      if (last != nullptr) {
        ASSERT_LT(A::key_of(tree_, *last), A::key_of(tree_, *node)) << "4. order";
        expect_neighbours(last, node, chain);
      }
      last = node;
    }
    Node *first = nodes_.empty() ? nullptr : nodes_.front();
    expect_neighbours(nullptr, first, chain);
    expect_neighbours(last, nullptr, chain);
    const auto count = static_cast<int64_t>(nodes_.size());
    ASSERT_EQ(tree_.count, count) << "6. count";
    ASSERT_EQ(tree_.owns_node_pool != 0 ? tree_.node_pool->live_count : count, count) << "8. pools";
    ASSERT_EQ(tree_.owns_entry_pool != 0 ? tree_.entry_pool->live_count : entries_, entries_) << "8. pools";
    ASSERT_EQ(A::node_first(&tree_), first);
    ASSERT_EQ(A::node_last(&tree_), last);
    for (size_t i = nodes_.size(); i-- > 1;)
      ASSERT_EQ(A::node_prev(&tree_, nodes_[i]), nodes_[i - 1]) << "9. walk";
  }
  const std::vector<Node *> &nodes() const { return nodes_; }

 private:
  void expect_neighbours(Node *prev, Node *next, Chain chain) const {
    if (chain == Chain::kExact && prev != nullptr) {
      EXPECT_EQ(prev->next, next) << "7. chain";
    }
    if (chain == Chain::kExact && next != nullptr) {
      EXPECT_EQ(next->prev, prev) << "7. chain";
    }
    if (prev != nullptr) {
      EXPECT_EQ(A::node_next(&tree_, prev), next) << "9. walk";
    }
    if (prev == nullptr && next != nullptr) {
      EXPECT_EQ(A::node_prev(&tree_, next), prev) << "9. walk";
    }
  }

  void visit(const Entry *entry, const Entry *parent) {
    const bool is_leaf = entry->level == 0;
    ASSERT_TRUE(parent == nullptr || (entry->level == parent->level - 1 && entry->children.count > 0))
        << "1. levels";
    ASSERT_EQ(entry->parent, parent) << "2. parents";
    ASSERT_LE(entry->children.count, std::min(most_children_, entry->children.capacity)) << "5. children";
    const mub_pool *pool = is_leaf ? tree_.node_pool : tree_.entry_pool;
    ASSERT_EQ(tree_.count > 0 ? entry->children.pool : pool, pool) << "8. pools";
    for (int64_t i = 0; i < entry->children.count; ++i) {
      const uint64_t child = entry->children.items[i];
      const bool is_last = i == entry->children.count - 1;
      if (is_leaf) {
        nodes_.push_back(reinterpret_cast<Node *>(child));
        if (is_last) expect_name(*entry, *nodes_.back());
      } else {
        const auto *below = reinterpret_cast<const Entry *>(child);
        ++entries_;
        ASSERT_NO_FATAL_FAILURE(visit(below, entry));
        if (is_last) expect_name(*entry, *below);
      }
    }
  }
  template <class Child>
  void expect_name(const Entry &entry, const Child &child) {
    if (entry.parent != nullptr) {
      EXPECT_TRUE(A::shares_key(entry, child)) << "3. names";
    }
  }

  const typename A::Record &tree_;
  const int64_t most_children_;
  std::vector<Node *> nodes_;
  int64_t entries_ = 0;
};

}  // namespace mub_test

#endif
