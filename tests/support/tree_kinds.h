// The two kinds of trees behind one set of names, and a model of either: nodes with a std::vector of branches. Those
// of a general tree are its children; those of a binary tree are left, right and equal, each there or not.
#ifndef MUB_TESTS_SUPPORT_TREE_KINDS_H
#define MUB_TESTS_SUPPORT_TREE_KINDS_H

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "mub_tree.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

namespace mub_test {

using Keys = std::vector<uint64_t>;

struct Rings {
  using Record = mub_tree;
  using Entry = mub_tree_entry;
  static constexpr size_t kFixedBranches = 0;
  static constexpr bool kRemovesFromOwnPool = false;
  static constexpr auto init = mub_tree_init;
  static constexpr auto term = mub_tree_term;
  static constexpr auto remove_all = mub_tree_remove_all;
  static constexpr auto free_all = mub_tree_free_all;
  static constexpr auto clone = mub_tree_clone;
  static constexpr auto clone_entry = mub_tree_clone_entry;
  static constexpr auto entry_new = mub_tree_entry_new;
  static constexpr auto entry_remove = mub_tree_entry_remove_x;
  static constexpr auto entry_free = mub_tree_entry_free;

  // Links an entry as the branch at `place`, before the one that is there.
  static void link(Record &tree, Entry &above, size_t place, Entry *entry) {
    Entry *sibling = above.first_child;
    while (place-- > 0) sibling = mub_tree_entry_next(sibling);
    sibling == nullptr ? mub_tree_entry_append(&tree, &above, entry)
                       : mub_tree_entry_insert(&tree, sibling, entry);
  }
  static void cut(Record &tree, Entry &above, size_t place) {
    mub_tree_entry_remove(&tree, branches(above)[place]);
  }
  static Entry *parent(Entry &above, size_t) { return &above; }
  static std::vector<Entry *> branches(const Entry &entry) {
    std::vector<Entry *> children;
    for (Entry *child = entry.first_child; child != nullptr; child = child->next) {
      if (child == entry.first_child && !children.empty()) break;
      EXPECT_TRUE(child->next->prev == child && child->prev->next == child);
      children.push_back(child);
    }
    return children;
  }
};

struct Sides {
  using Record = mub_bitree;
  using Entry = mub_bitree_entry;
  static constexpr size_t kFixedBranches = 3;
  static constexpr bool kRemovesFromOwnPool = true;
  static constexpr auto init = mub_bitree_init;
  static constexpr auto term = mub_bitree_term;
  static constexpr auto remove_all = mub_bitree_remove_all;
  static constexpr auto free_all = mub_bitree_free_all;
  static constexpr auto clone = mub_bitree_clone;
  static constexpr auto clone_entry = mub_bitree_clone_entry;
  static constexpr auto entry_new = mub_bitree_entry_new;
  static constexpr auto entry_remove = mub_bitree_entry_remove;
  static constexpr auto entry_free = mub_bitree_entry_free;

  static void link(Record &tree, Entry &above, size_t place, Entry *entry) {
    EXPECT_EQ(mub_bitree_entry_add(&tree, &above, place == 2 ? 0 : place == 0 ? -7 : 7, entry), &tree);
  }
  static void cut(Record &tree, Entry &above, size_t place) {
    (place == 0 ? above.left : place == 1 ? above.right : above.equal) = nullptr;
    --tree.count;
  }
  static Entry *parent(Entry &above, size_t place) { return place < 2 ? &above : above.parent; }
  static std::vector<Entry *> branches(const Entry &entry) { return {entry.left, entry.right, entry.equal}; }
};

template <class A>
using Tree = Pooled<A>;

template <class A>
struct Node {
  typename A::Entry *entry;
  Node *above = nullptr;
  uint64_t value = 0;
  std::vector<std::unique_ptr<Node>> branches = std::vector<std::unique_ptr<Node>>(A::kFixedBranches);

  size_t place() const {
    size_t place = 0;
    while (above->branches[place].get() != this) ++place;
    return place;
  }
  Node *add(size_t place, typename A::Entry *added) {
    if (A::kFixedBranches == 0) branches.emplace(branches.begin() + static_cast<ptrdiff_t>(place));
    branches[place].reset(new Node{added, this});
    return branches[place].get();
  }
  void remove(size_t place) {
    branches[place].reset();
    if (A::kFixedBranches == 0) branches.erase(branches.begin() + static_cast<ptrdiff_t>(place));
  }
  // This and all below it, each before what hangs on it, or after.
  std::vector<Node *> in_order(bool post = false) {
    std::vector<Node *> nodes(post ? 0 : 1, this);
    for (auto &branch : branches) {
      if (branch == nullptr) continue;
      for (Node *node : branch->in_order(post)) nodes.push_back(node);
    }
    if (post) nodes.push_back(this);
    return nodes;
  }
  int64_t size() { return static_cast<int64_t>(in_order().size()); }
};

// Every invariant of the links at and below an entry, which has the branches of `node`; each pair goes to `visit`.
template <class A, class Visit>
void expect_shape(Node<A> &node, typename A::Entry &entry, typename A::Entry *parent, Visit visit) {
  ASSERT_EQ(entry.parent, parent);
  ASSERT_TRUE(visit(node, entry));
  const auto branches = A::branches(entry);
  ASSERT_EQ(branches.size(), node.branches.size());
  for (size_t place = 0; place < branches.size(); ++place) {
    ASSERT_EQ(branches[place] == nullptr, node.branches[place] == nullptr);
    if (branches[place] == nullptr) continue;
    ASSERT_NO_FATAL_FAILURE(
        expect_shape(*node.branches[place], *branches[place], A::parent(entry, place), visit));
  }
}

template <class A>
class TreeModel {
 public:
  using Entry = typename A::Entry;

  TreeModel(Tree<A> &tree, uint64_t salt) : random(salt), root{&tree.root}, tree_(tree) {}

  void step() {
    const int64_t choice = random.below(60);
    choice < 40 ? add() : choice < 48 ? cut() : choice < 53 ? copy_entry() : choice < 58 ? clone() : empty();
  }
  void expect_same() {
    const auto same = [](Node<A> &n, Entry &entry) { return &entry == n.entry && entry.value == n.value; };
    ASSERT_NO_FATAL_FAILURE(expect_shape(root, tree_.root, nullptr, same));
    ASSERT_EQ(tree_.count, links);
    ASSERT_EQ(tree_.entry_pool->live_count, live_entries);
    ASSERT_EQ(tree_.value_pool->live_count, live_values);
  }
  Node<A> *any() {
    const auto nodes = root.in_order();
    return nodes[static_cast<size_t>(random.below(root.size()))];
  }
  // A node for an entry that was linked at that place.
  Node<A> *adopt(Node<A> &above, size_t place, Entry *entry) {
    ++links;
    ++live_entries;
    return above.add(place, entry);
  }
  // Lets a few allocations of the operation through at most; true when one failed.
  template <class Operation>
  bool blows_in(Operation operation) {
    return Fuse(random.below(12), random.one_in(2) ? Blow::kOnce : Blow::kForever).blows_in(operation);
  }

  Random random;
  Node<A> root;
  int64_t links = 0, live_entries = 0, live_values = 0;
  uint64_t last_key = 0;

 private:
  void add() {
    Node<A> *above = any();
    const size_t places = A::kFixedBranches == 0 ? above->branches.size() + 1 : A::kFixedBranches;
    const auto place = static_cast<size_t>(random.word() % places);
    if (A::kFixedBranches != 0 && above->branches[place] != nullptr) return;
    Entry *entry = nullptr;
    const bool failed = blows_in([&] { entry = A::entry_new(&tree_); });
    ASSERT_EQ(entry == nullptr, failed);
    if (failed) return;
    ASSERT_TRUE(A::branches(*entry) == A::branches(Entry()) && entry->parent == nullptr && entry->value == 0);
    A::link(tree_, *above->entry, place, entry);
    Node<A> *node = adopt(*above, place, entry);
    if (random.one_in(4)) return;
    entry->value = node->value = tree_.new_value(++last_key);
    ++live_values;
  }

  // Releases what hangs on a node and the node: only a caller's pools get back what their blocks held.
  void cut() {
    Node<A> *node = any();
    if (node == &root) return;
    const size_t place = node->place();
    A::cut(tree_, *node->above->entry, place);
    --links;
    Entry *parent = node->entry->parent;
    const bool frees = random.one_in(2);
    expect_released(*node, frees, [&] {
      frees ? A::entry_free(&tree_, node->entry, note_key_once) : A::entry_remove(&tree_, node->entry);
    });
    if (tree_.owns_entry_pool == 0 || (A::kRemovesFromOwnPool && !frees)) {
      live_entries -= node->size();
    } else {
      expect_shape(*node, *node->entry, parent, [](Node<A> &, Entry &) { return true; });
    }
    node->above->remove(place);
  }

  void empty() {
    const bool frees = random.one_in(2);
    expect_released(root, frees, [&] { frees ? A::free_all(&tree_, note_key_once) : A::remove_all(&tree_); });
    if (tree_.owns_value_pool != 0) live_values = 0;
    links = live_entries = 0;
    root = Node<A>{&tree_.root};
  }

  template <class Release>
  void expect_released(Node<A> &top, bool frees, Release release) {
    Keys keys;
    for (const Node<A> *node : top.in_order(true)) {
      if (frees && node->value != 0) keys.push_back(key_of(node->value));
    }
    seen.clear();
    release();
    EXPECT_EQ(seen, keys);
    if (tree_.owns_value_pool == 0) live_values -= static_cast<int64_t>(keys.size());
  }

  void copy_entry() {
    Node<A> *node = any();
    Entry *copy = nullptr;
    const bool failed = blows_in([&] { copy = A::clone_entry(&tree_, node->entry); });
    ASSERT_EQ(copy == nullptr, failed);
    if (failed) return;
    ASSERT_NO_FATAL_FAILURE(expect_shape(*node, *copy, nullptr, [](Node<A> &n, Entry &entry) {
      return &entry != n.entry && entry.value == n.value;
    }));
    links += node->size() - 1;
    A::entry_remove(&tree_, copy);
    if (tree_.owns_entry_pool != 0 && !A::kRemovesFromOwnPool) live_entries += node->size();
  }

  void clone() {
    Tree<A> copy(random.one_in(2), random.one_in(2));
    A::link(copy, copy.root, 0, A::entry_new(&copy));
    seen.clear();
    const bool failed = blows_in([&] { A::clone(&tree_, nullptr, &copy, nullptr, note_clone); });
    if (failed && A::branches(copy.root) == A::branches(Entry())) {
      const int64_t left = copy.count + static_cast<int64_t>(seen.size()) + copy.entries.live_count;
      ASSERT_TRUE(root.size() == 1 || left == 0);  // a root alone may be a whole copy
      return;
    }
    const bool own_values = tree_.owns_value_pool != 0;
    Keys keys;
    ASSERT_NO_FATAL_FAILURE(expect_shape(root, copy.root, nullptr, [&](Node<A> &n, Entry &entry) {
      const uint64_t key = own_values && copy.owns_value_pool == 0 ? 0 : key_of(n.value);
      if (own_values) keys.insert(keys.end(), {key_of(n.value), key});
      return key_of(entry.value) == key && (&entry != n.entry || n.above == nullptr) &&
             (entry.value == n.value) == (n.value == 0 || !own_values);
    }));
    ASSERT_EQ(copy.count, links);
    ASSERT_EQ(seen, keys);
  }

  Tree<A> &tree_;
};

template <class A, class Check>
void expect_agreement_with_a_model(uint64_t salt, Check check) {
  for (const int pools : {0, 1, 2, 3}) {
    Tree<A> tree(pools % 2 == 0, pools < 2);
    TreeModel<A> model(tree, salt + static_cast<uint64_t>(pools));
    tree.root.value = model.root.value = tree.new_value(++model.last_key);
    ++model.live_values;
    for (int step = 0; step < 1000; ++step) {
      ASSERT_NO_FATAL_FAILURE(model.step());
      ASSERT_NO_FATAL_FAILURE(model.expect_same());
      ASSERT_NO_FATAL_FAILURE(check(tree, model));
    }
  }
}

// A million entries, each the branch at `place` of the one before, or all of the root.
template <class A>
void expect_no_bound(size_t place, bool in_depth) {
  constexpr int64_t kCount = 1000000;
  Tree<A> tree(false), copy(false);
  typename A::Entry *above = &tree.root;
  for (int64_t i = 1; i <= kCount; ++i) {
    auto *entry = A::entry_new(&tree);
    entry->value = static_cast<uint64_t>(i);
    A::link(tree, *above, place, entry);
    if (in_depth) above = entry;
  }
  seen.clear();
  A::entry_free(&tree, A::clone_entry(&tree, &tree.root), note);
  EXPECT_EQ(seen.size(), static_cast<size_t>(kCount));
  EXPECT_EQ(seen.front(), static_cast<uint64_t>(kCount));
  A::clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_EQ(tree.entries.live_count + copy.entries.live_count, 2 * kCount);
}

// What init and term leave in the flags, and that a tree without its pools makes do.
template <class A>
void expect_flags_to_outlast_pools() {
  for_every_allocation([](const Fuse &fuse) {
    typename A::Record tree;
    fuse.blows_in([&] { A::init(&tree, 1, 1); });
    const bool owned[] = {tree.entry_pool != nullptr, tree.value_pool != nullptr};
    EXPECT_TRUE(tree.owns_entry_pool == owned[0] && tree.owns_value_pool == owned[1]);
    A::link(tree, tree.root, 0, A::entry_new(&tree));
    A::term(&tree);
    EXPECT_TRUE(tree.entry_pool == nullptr && tree.value_pool == nullptr);
    EXPECT_TRUE(tree.owns_entry_pool == owned[0] && tree.owns_value_pool == owned[1]);
    Tree<A> copy;
    A::link(copy, copy.root, 0, A::entry_new(&copy));
    A::clone(&copy, nullptr, &tree, nullptr, nullptr);
    A::clone(&copy, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(tree.count + copy.count, 1);
    A::clone(&tree, nullptr, &copy, nullptr, nullptr);
    A::free_all(&tree, note);
    EXPECT_EQ(copy.count, 0);
  });
}

}  // namespace mub_test

#endif
