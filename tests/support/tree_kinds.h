// The two kinds of trees as one: call<kFree>(tree, entry, release) frees an entry of either. And a model of both: the
// entries in document order, each with its depth, and with the side of the one above on which it hangs.
#ifndef MUB_TESTS_SUPPORT_TREE_KINDS_H
#define MUB_TESTS_SUPPORT_TREE_KINDS_H

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

#include "mub_tree.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

namespace mub_test {

using Keys = std::vector<uint64_t>;

// The operations, in the order of each kind's functions.
enum TreeOperation { kInit, kTerm, kRemoveAll, kFreeAll, kClone, kCloneEntry, kNew, kRemove, kFree };
// Beside them, nothing may be linked, and nothing linked to: that changes nothing.

struct Rings {
  using Record = mub_tree;
  using Entry = mub_tree_entry;
  static constexpr bool kHasSides = false;
  static constexpr auto init = mub_tree_init;
  static constexpr auto term = mub_tree_term;
  static constexpr auto kFunctions =
      std::make_tuple(mub_tree_init, mub_tree_term, mub_tree_remove_all, mub_tree_free_all, mub_tree_clone,
                      mub_tree_clone_entry, mub_tree_entry_new, mub_tree_entry_remove_x, mub_tree_entry_free);
  static constexpr auto swap = mub_tree_entry_swap;

  static void link(Record &tree, Entry &above, size_t, Entry *sibling, Entry *entry) {
    mub_tree_entry_append(&tree, nullptr, entry);
    mub_tree_entry_append(&tree, &above, nullptr);
    for (Entry *other : {static_cast<Entry *>(nullptr), &tree.root})
      mub_tree_entry_insert(&tree, other, entry);
    mub_tree_entry_insert(&tree, sibling, nullptr);
    sibling == nullptr ? mub_tree_entry_append(&tree, &above, entry)
                       : mub_tree_entry_insert(&tree, sibling, entry);
  }
  static void cut(Record &tree, Entry &, size_t, Entry *entry) {
    for (Entry *other : {static_cast<Entry *>(nullptr), &tree.root, entry})
      mub_tree_entry_remove(&tree, other);
  }
  static std::vector<Entry *> branches(const Entry &entry) {
    std::vector<Entry *> children;
    for (Entry *child = entry.first_child; child != nullptr; child = mub_tree_entry_next(child)) {
      EXPECT_TRUE(child->next->prev == child && child->prev->next == child);
      EXPECT_EQ(mub_tree_entry_prev(child), children.empty() ? nullptr : children.back());
      children.push_back(child);
      EXPECT_EQ(mub_tree_entry_index(child), static_cast<int64_t>(children.size()));
    }
    EXPECT_EQ(mub_tree_entry_last(&entry), children.empty() ? nullptr : children.back());
    return children;
  }
};

struct Sides {
  using Record = mub_bitree;
  using Entry = mub_bitree_entry;
  static constexpr bool kHasSides = true;
  static constexpr auto init = mub_bitree_init;
  static constexpr auto term = mub_bitree_term;
  static constexpr auto kFunctions = std::make_tuple(
      mub_bitree_init, mub_bitree_term, mub_bitree_remove_all, mub_bitree_free_all, mub_bitree_clone,
      mub_bitree_clone_entry, mub_bitree_entry_new, mub_bitree_entry_remove, mub_bitree_entry_free);
  static constexpr auto swap = mub_bitree_entry_swap;

  static void link(Record &tree, Entry &above, size_t side, Entry *, Entry *entry) {
    mub_bitree_entry_add(&tree, &above, 1, nullptr);
    mub_bitree_entry_add(&tree, nullptr, 1, entry);
    EXPECT_EQ(mub_bitree_entry_add(&tree, &above, side == 2 ? 0 : side == 0 ? -7 : 7, entry), &tree);
  }
  static void cut(Record &tree, Entry &above, size_t side, Entry *) {
    (side == 0 ? above.left : side == 1 ? above.right : above.equal) = nullptr;
    --tree.count;
  }
  static std::vector<Entry *> branches(const Entry &entry) { return {entry.left, entry.right, entry.equal}; }
};

inline void note_clone_with(const mub_pool_chunk *map, uint64_t source, mub_pool *from, uint64_t copy,
                            mub_pool *users) {
  EXPECT_EQ(users->block_size, 3);
  note_clone(map, source, from, copy, users);
}

template <class A>
using Tree = Pooled<A>;

template <int kOperation, class A, class... Args>
auto call(Tree<A> &tree, Args... args) {
  return std::get<kOperation>(A::kFunctions)(&tree, args...);
}

template <class A>
class TreeModel {
 public:
  using Entry = typename A::Entry;
  struct Node {
    Entry *entry;
    int64_t depth;
    size_t side;
    uint64_t value;
    bool operator==(const Node &b) const { return depth == b.depth && side == b.side && value == b.value; }
  };

  TreeModel(Tree<A> &tree, uint64_t salt) : random(salt), tree_(tree) {
    tree.root.value = new_value(tree, ++last_key);
    nodes = {{&tree.root, 0, 0, tree.root.value}};
  }

  void step() {
    const int64_t choice = random.below(60);
    choice < 40   ? add()
    : choice < 48 ? remove()
    : choice < 53 ? copy_entry()
    : choice < 58 ? clone()
                  : swap();
  }
  void expect_same() {
    expect_at(tree_.root, nullptr, 0, nodes.size());
    ASSERT_EQ(tree_.count, links);
    ASSERT_EQ(tree_.entry_pool->live_count, live_entries);
    ASSERT_EQ(tree_.value_pool->live_count, live_values);
    ASSERT_FALSE(testing::Test::HasFailure());
  }

  size_t any() { return random.word() % nodes.size(); }
  size_t above(size_t i) const {
    size_t at = i;
    while (nodes[at].depth >= nodes[i].depth) --at;
    return at;
  }
  size_t end_of(size_t i) const {
    size_t at = i + 1;
    while (at < nodes.size() && nodes[at].depth > nodes[i].depth) ++at;
    return at;
  }
  void adopt(size_t at, const Node &node) {
    nodes.insert(nodes.begin() + static_cast<ptrdiff_t>(at), node);
    ++links, ++live_entries;
  }

  Random random;
  std::vector<Node> nodes;
  int64_t links = 0, live_entries = 0, live_values = 1;
  uint64_t last_key = 0;

 private:
  // What is at and below an entry; every link in it is seen to be right.
  static void read(Entry &entry, Entry *parent, int64_t depth, size_t side, std::vector<Node> &there) {
    EXPECT_EQ(entry.parent, parent);
    there.push_back({&entry, depth, side, entry.value});
    const auto branches = A::branches(entry);
    for (size_t i = 0; i < branches.size(); ++i) {
      Entry *const above = A::kHasSides && i == 2 ? parent : &entry;
      if (branches[i] != nullptr) read(*branches[i], above, depth + 1, A::kHasSides ? i : 0, there);
    }
  }
  void expect_at(Entry &entry, Entry *parent, size_t i, size_t end) const {
    std::vector<Node> there;
    read(entry, parent, nodes[i].depth, nodes[i].side, there);
    EXPECT_TRUE(there == std::vector<Node>(&nodes[i], &nodes[i] + (end - i)));
  }

  void add() {
    const size_t above = any(), end = end_of(above), side = A::kHasSides ? random.word() % 3 : 0;
    size_t at = above + 1;
    while (at != end && (A::kHasSides ? nodes[at].side < side : !random.one_in(3))) at = end_of(at);
    Entry *sibling = at != end ? nodes[at].entry : nullptr;
    if (A::kHasSides && at != end && nodes[at].side == side) return;
    Entry *entry = call<kNew>(tree_);
    ASSERT_TRUE(A::branches(*entry) == A::branches({}) && entry->parent == nullptr && entry->value == 0);
    A::link(tree_, *nodes[above].entry, side, sibling, entry);
    if (!random.one_in(4)) entry->value = new_value(tree_, ++last_key);
    live_values += entry->value != 0;
    adopt(at, {entry, nodes[above].depth + 1, side, entry->value});
  }

  // Each value below an entry comes before its own.
  void collect_keys(size_t i, Keys &keys) const {
    const size_t end = end_of(i);
    for (size_t at = i + 1; at != end; at = end_of(at)) collect_keys(at, keys);
    if (nodes[i].value != 0) keys.push_back(key_of(nodes[i].value));
  }

  // An entry with all below it, or the whole tree. Only a caller's pools get blocks back one by one.
  void remove() {
    const size_t i = random.one_in(4) ? 0 : any(), end = end_of(i);
    Entry *const entry = nodes[i].entry;
    if (i > 0) A::cut(tree_, *nodes[above(i)].entry, nodes[i].side, entry);
    Entry *const parent = entry->parent;
    Keys keys;
    const bool frees = random.one_in(2);
    if (frees) collect_keys(i, keys);
    seen.clear();
    if (i > 0) frees ? call<kFree>(tree_, entry, note_key_once) : call<kRemove>(tree_, entry);
    if (i == 0) frees ? call<kFreeAll>(tree_, note_key_once) : call<kRemoveAll>(tree_);
    EXPECT_EQ(seen, keys);
    live_values -= tree_.owns_value_pool == 0 ? static_cast<int64_t>(keys.size()) : i == 0 ? live_values : 0;
    --links;
    if (i == 0) {
      links = live_entries = 0;
      nodes = {{entry, 0, 0, 0}};
      return;
    }
    const bool returned = tree_.owns_entry_pool == 0 || (A::kHasSides && !frees);
    live_entries -= returned ? static_cast<int64_t>(end - i) : 0;
    if (!returned) expect_at(*entry, parent, i, end);
    nodes.erase(nodes.begin() + static_cast<ptrdiff_t>(i), nodes.begin() + static_cast<ptrdiff_t>(end));
  }

  void copy_entry() {
    const size_t i = any(), end = end_of(i);
    Entry *copy = nullptr;
    const bool failed =
        random_fuse(random, 12).blows_in([&] { copy = call<kCloneEntry>(tree_, nodes[i].entry); });
    ASSERT_EQ(copy == nullptr, failed);
    if (failed) return;
    expect_at(*copy, nullptr, i, end);
    links += static_cast<int64_t>(end - i) - 1;
    call<kRemove>(tree_, copy);
    if (tree_.owns_entry_pool != 0 && !A::kHasSides) live_entries += static_cast<int64_t>(end - i);
  }

  void clone() {
    Pool users(3);
    Tree<A> copy(random.one_in(2), random.one_in(2));
    A::link(copy, copy.root, 0, nullptr, call<kNew>(copy));
    seen.clear();
    const bool failed = random_fuse(random, 12).blows_in([&] {
      call<kClone>(tree_, nullptr, &copy, &users, note_clone_with);
    });
    if (failed && A::branches(copy.root) == A::branches({})) {
      const bool is_empty = copy.count == 0 && seen.empty() && copy.entries.live_count == 0;
      ASSERT_TRUE((is_empty && copy.root.value == 0) || nodes.size() == 1);  // which may be a whole copy
      return;
    }
    // Values are translated, lost or shared.
    const bool own_values = tree_.owns_value_pool != 0, loses = own_values && copy.owns_value_pool == 0;
    std::vector<Node> there;
    read(copy.root, nullptr, 0, 0, there);
    ASSERT_EQ(there.size(), nodes.size());
    Keys keys;
    for (size_t i = 0; i < nodes.size(); ++i) {
      const uint64_t value = std::exchange(there[i].value, nodes[i].value), source = nodes[i].value;
      if (own_values) keys.insert(keys.end(), {key_of(source), key_of(value)});
      ASSERT_EQ(key_of(value), loses ? 0 : key_of(source));
      ASSERT_EQ(value == source, source == 0 || !own_values);
    }
    ASSERT_TRUE(there == nodes && copy.count == links && seen == keys);
  }

  void swap() {
    Tree<A> other;
    if constexpr (A::kHasSides) {
      if (tree_.root.equal != nullptr) tree_.root.equal->parent = &other.root;  // will be set right
    }
    A::swap(&tree_.root, &other.root);
    expect_at(other.root, nullptr, 0, nodes.size());
    EXPECT_TRUE(A::branches(tree_.root) == A::branches({}) && tree_.root.value == 0);
    A::swap(&tree_.root, &other.root);
    A::swap(&tree_.root, &tree_.root);
  }

  Tree<A> &tree_;
};

}  // namespace mub_test

#endif
