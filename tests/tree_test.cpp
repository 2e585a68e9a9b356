#include "mub_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "mub_hash.h"
#include "support/tree_kinds.h"

using namespace mub_test;
using Entry = mub_tree_entry;
using Model = TreeModel<Rings>;

namespace {

constexpr uint64_t kContext = 0x123456789ABCDEF0;

int compare_x(const Entry *entry, uint64_t context, const void *key, int64_t length) {
  uint64_t wanted;
  EXPECT_TRUE(context == kContext && length == sizeof wanted);
  std::memcpy(&wanted, key, sizeof wanted);
  return key_of(entry->value) < wanted ? -1 : key_of(entry->value) > wanted;
}
int compare(const Entry *entry, const void *key, int64_t length) {
  return compare_x(entry, kContext, key, length);
}

uint64_t fresh_key;
void fill(uint64_t value) {
  key_at(value) = fresh_key;
  note(value);
}

struct Path : mub_array {
  Path() { mub_array_init(this, 0); }
  ~Path() { mub_array_term(this); }
  void append(uint64_t key) { mub_array_append(this, &key, sizeof key, 0); }
};

// The first node in a range that has the key, or its end.
size_t find(const Model &model, uint64_t key, size_t i, size_t end) {
  while (i != end && key_of(model.nodes[i].value) != key) ++i;
  return i;
}

// The indexes from a node up to the top.
Keys path_from(const Model &model, size_t i) {
  Keys path;
  for (; i > 0; i = model.above(i)) {
    path.push_back(1);
    for (size_t at = model.above(i) + 1; at != i; at = model.end_of(at)) ++path.back();
  }
  path.push_back(1);
  return path;
}

// Searches from an entry that is at or below the bound.
void expect_order(Model &model, size_t i, size_t j) {
  size_t bound = i;
  while (bound > 0 && !model.random.one_in(3)) bound = model.above(bound);
  Entry *const entry = model.nodes[i].entry;
  const Entry *stop = bound > 0 || model.random.one_in(2) ? model.nodes[bound].entry : nullptr;
  const size_t end = model.end_of(bound);
  const auto at = [&](size_t k) { return k != end ? model.nodes[k].entry : nullptr; };
  EXPECT_EQ(mub_tree_entry_iter_next(stop, entry), at(i + 1));
  EXPECT_EQ(mub_tree_entry_find_next(stop, entry), at(model.end_of(i)));
  const uint64_t key = key_of(model.nodes[j].value);
  EXPECT_EQ(mub_tree_entry_find(stop, entry, &key, 8, compare), at(find(model, key, i + 1, end)));
  EXPECT_EQ(mub_tree_entry_find_x(stop, entry, kContext, &key, 8, compare_x),
            at(find(model, key, i + 1, end)));

  const Entry *found = nullptr;
  for (size_t above = i; above > 0 && found == nullptr;) {
    above = model.above(above);
    if (model.nodes[above].entry == stop) break;
    if (key_of(model.nodes[above].value) == key) found = model.nodes[above].entry;
  }
  EXPECT_EQ(mub_tree_entry_find_parent(stop, entry, &key, 8, compare), found);
  EXPECT_EQ(mub_tree_entry_find_parent(stop, entry, &key, 8, nullptr), nullptr);
  EXPECT_EQ(mub_tree_entry_find_parent_x(stop, entry, kContext, &key, 8, compare_x), found);
}

void expect_places(Model &model, size_t i, size_t j) {
  Entry *const a = model.nodes[i].entry, *const b = model.nodes[j].entry;
  EXPECT_EQ(mub_tree_entry_find_child(a, b), i < j && j < model.end_of(i));
  const Keys path = path_from(model, i), other = path_from(model, j);
  const auto [x, y] = std::mismatch(path.rbegin(), path.rend(), other.rbegin(), other.rend());
  const auto apart = x == path.rend() || y == other.rend() ? path.size() - other.size() : *x - *y;
  EXPECT_EQ(mub_tree_entry_compare(a, b), static_cast<int>(apart));

  mub_arrayt array, literal;
  for (mub_arrayt *each : {&array, &literal}) mub_arrayt_init(each);
  for (int repeats = 0; repeats < 2; ++repeats) {
    if (random_fuse(model.random, 12).blows_in([&] { mub_tree_entry_array(a, &array); })) break;
    for (const uint64_t index : path) mub_arrayt_insert_at(&literal, 0, index);
    EXPECT_EQ(array.capacity, literal.capacity);
  }
  EXPECT_EQ(array.count, literal.count);
  for (int64_t at = 0; at < literal.count; ++at) {
    EXPECT_EQ(mub_arrayt_get_at(&array, at), mub_arrayt_get_at(&literal, at));
  }
  for (mub_arrayt *each : {&array, &literal}) mub_arrayt_term(each);
}

// A path of up to three keys, behind keys that it is to skip; the model grows as the tree does.
void expect_paths(Tree<Rings> &tree, Model &model, size_t reached) {
  Entry *const start = model.nodes[reached].entry;
  const int64_t skipped = model.random.below(3), steps = model.random.below(4);
  Path path;
  int64_t missing = 0;
  fresh_key = 0;
  for (int64_t i = 0; i < skipped + steps; ++i) {
    path.append(fresh_key = 1 + model.random.word() % (model.last_key + 1));
    if (i < skipped) continue;
    const size_t end = model.end_of(reached), hit = find(model, fresh_key, reached + 1, end);
    missing += missing > 0 || hit == end;
    if (missing == 0) reached = hit;
  }
  Entry *const target = steps > 0 && missing == 0 ? model.nodes[reached].entry : nullptr;
  ASSERT_EQ(mub_tree_find_x_t(start, skipped, &path, kContext, compare_x), target);
  EXPECT_EQ(mub_tree_insert_t(&tree, start, skipped, &path, fill, nullptr), nullptr);
  model.last_key = std::max(model.last_key, fresh_key);
  seen.clear();
  Entry *end = nullptr;
  const bool failed = random_fuse(model.random, 12).blows_in([&] {
    end = mub_tree_insert_x_t(&tree, start, skipped, &path, kContext, fill, compare_x);
  });
  const bool stays_found = missing < 2;
  // What was made hangs last below what was reached, one below the other, and its end alone has a value.
  for (; missing > 0 && tree.count > model.links; --missing) {
    const auto &above = model.nodes[reached];
    reached = model.end_of(reached);
    model.adopt(reached, {mub_tree_entry_last(above.entry), above.depth + 1, 0, 0});
  }
  ASSERT_TRUE(missing == 0 || failed);
  ASSERT_EQ(end, steps > 0 && missing == 0 ? model.nodes[reached].entry : nullptr);
  if (end != target) {
    model.nodes[reached].value = end->value;
    model.live_values += end->value != 0;
    EXPECT_EQ(seen, end->value != 0 ? Keys{end->value} : Keys());
    EXPECT_TRUE(end->value != 0 || failed);
  }
  // Keys on the way to the end are not stored, nor is any without a value.
  if (!stays_found || failed) return;
  EXPECT_EQ(mub_tree_insert_t(&tree, start, skipped, &path, fill, compare), end);
  EXPECT_EQ(mub_tree_find_t(start, skipped, &path, compare), end);
  if (start != &tree.root || skipped > 0) return;
  EXPECT_EQ(mub_tree_find(&tree, &path, compare), end);
  EXPECT_EQ(mub_tree_insert(&tree, &path, fill, compare), end);
  EXPECT_EQ(mub_tree_find_x(&tree, &path, kContext, compare_x), end);
  EXPECT_EQ(mub_tree_insert_x(&tree, &path, kContext, fill, compare_x), end);
}

template <class A>
class Trees : public testing::Test {};
using Kinds = testing::Types<Rings, Sides>;
TYPED_TEST_SUITE(Trees, Kinds);

TYPED_TEST(Trees, AgreeWithAModelAlsoWhenMemoryRunsOut) {
  for (const uint64_t pools : {0u, 1u, 2u, 3u}) {
    Tree<TypeParam> tree(pools % 2 == 0, pools < 2);
    TreeModel<TypeParam> model(tree, 70 + pools);
    for (int step = 0; step < 1000; ++step) {
      ASSERT_NO_FATAL_FAILURE(model.step());
      if constexpr (!TypeParam::kHasSides) {
        expect_order(model, model.any(), model.any());
        expect_places(model, model.any(), model.any());
        ASSERT_NO_FATAL_FAILURE(expect_paths(tree, model, model.random.one_in(4) ? 0 : model.any()));
      }
      ASSERT_NO_FATAL_FAILURE(model.expect_same());
    }
  }
}

// A million entries: each hung on the one before, and all on the root or, of a binary tree, on a chain.
TYPED_TEST(Trees, MayBeAsDeepAndTheirRingsAndChainsAsLongAsMemoryAllows) {
  using A = TypeParam;
  constexpr uint64_t kCount = 1000000;
  for (const bool is_chain : {false, true}) {
    Tree<A> tree(false), copy(false);
    auto *above = &tree.root;
    for (uint64_t i = 1; i <= kCount; ++i) {
      auto *entry = call<kNew>(tree);
      entry->value = i;
      A::link(tree, *above, is_chain ? 2 : i % 2, nullptr, entry);
      if (A::kHasSides || !is_chain) above = entry;
    }
    seen.clear();
    call<kFree>(tree, call<kCloneEntry>(tree, &tree.root), note);
    EXPECT_EQ(seen.size(), kCount);
    EXPECT_EQ(seen.front(), A::kHasSides || !is_chain ? kCount : 1);
    call<kClone>(tree, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(tree.entries.live_count + copy.entries.live_count, static_cast<int64_t>(2 * kCount));
  }
}

// What init and term leave in the flags; and a tree without its pools makes do.
TYPED_TEST(Trees, FlagsOutlastPools) {
  using A = TypeParam;
  for_every_allocation([](const Fuse &fuse) {
    Tree<A> tree, copy;
    call<kTerm>(tree);
    fuse.blows_in([&] { call<kInit>(tree, 1, 1); });
    const bool owns_entries = tree.entry_pool != nullptr, owns_values = tree.value_pool != nullptr;
    A::link(tree, tree.root, 0, nullptr, call<kNew>(tree));
    call<kTerm>(tree);
    EXPECT_TRUE(tree.owns_entry_pool == owns_entries && tree.owns_value_pool == owns_values);
    EXPECT_TRUE(tree.entry_pool == nullptr && tree.value_pool == nullptr);
    A::link(copy, copy.root, 0, nullptr, call<kNew>(copy));
    call<kClone>(copy, nullptr, &tree, nullptr, nullptr);
    call<kClone>(copy, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(tree.count + copy.count, 1);
    call<kClone>(tree, nullptr, &copy, nullptr, nullptr);
    call<kFreeAll>(tree, note);
    EXPECT_EQ(copy.count, 0);
  });
}

TEST(Tree, CloneLeavesOutWhatIsNoBlockOfThePool) {
  Tree<Rings> tree, copy;
  Entry strangers[3] = {};
  for (Entry &stranger : strangers) {
    mub_tree_entry_append(&tree, &tree.root, &stranger);
    mub_tree_entry_append(&tree, &stranger, mub_tree_entry_new(&tree));
    if (&stranger != strangers) mub_tree_entry_insert(&tree, &stranger, mub_tree_entry_new(&tree));
  }
  mub_tree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_EQ(Rings::branches(copy.root).size(), 2u);
  for (const Entry *entry : Rings::branches(copy.root)) EXPECT_EQ(entry->first_child, nullptr);
}

// Those of hash tables and of trees.
TEST(Keys, AreComparedWhateverTheirLength) {
  const std::string a = "0123456789abcdef0123456789ABCDEF0123456789abcdef";
  for (size_t i = 0; i < a.size(); ++i) {
    std::string b = a;
    b[i] ^= 1;
    for (int64_t length = 0; length < 48; ++length) {
      for (const auto compare : {mub_tree_cmp, mub_hash_cmp}) {
        EXPECT_EQ(compare(a.data(), length, b.data(), length), length <= static_cast<int64_t>(i) ? 1 : 0);
        EXPECT_EQ(compare(a.data(), length, a.data(), length + 1), 0);
      }
    }
  }
  EXPECT_EQ(mub_tree_cmp(nullptr, -4, "", -4), 1);
}

using Side = mub_bitree_entry;

Side *add_new(Tree<Sides> &tree, Side *entry, int direction) {
  Side *added = mub_bitree_entry_new(&tree);
  mub_bitree_entry_add(&tree, entry, direction, added);
  return added;
}

TEST(BinaryTree, AddReplacesTheLinkThatStands) {
  Tree<Sides> tree;
  Side *const head = add_new(tree, &tree.root, -1);
  add_new(tree, head, 0);
  Side *const equal = add_new(tree, head, 0);
  EXPECT_TRUE(head->equal == equal && equal->equal == nullptr && equal->parent == &tree.root);
  EXPECT_EQ(tree.count, 3);
}

// Equals that were linked before their head have no parent yet.
TEST(BinaryTree, NeedsNoParentsToBeWalked) {
  Tree<Sides> tree(false), copy;
  Side *const head = mub_bitree_entry_new(&tree);
  Side *last = head;
  for (uint64_t key = 1; key < 4; ++key, last = add_new(tree, last, 0)) {
    last->value = new_value(tree, key);
    add_new(tree, last, 1);
  }
  mub_bitree_entry_add(&tree, &tree.root, 1, head);
  mub_bitree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_EQ(last->parent, nullptr) << "the source is as it was";
  for (Tree<Sides> *each : {&tree, &copy}) {
    seen.clear();
    mub_bitree_free_all(each, note_key_once);
    EXPECT_EQ(seen, (Keys{3, 2, 1}));
    EXPECT_EQ(each->entry_pool->live_count, 0);
  }
}

TEST(BinaryTree, CloneLinksBlocksOfThePoolAloneAndKeepsThePoolThatItHas) {
  Tree<Sides> tree, shared(false), copy, bare;
  Side stranger = {};
  mub_bitree_entry_add(&tree, &tree.root, 1, &stranger);
  add_new(tree, &stranger, 1);
  add_new(tree, &tree.root, -1);
  mub_bitree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_TRUE(copy.root.left != nullptr && copy.root.right == nullptr);

  add_new(shared, &shared.root, 0);
  mub_bitree_clone(&shared, nullptr, &copy, nullptr, nullptr);
  EXPECT_TRUE(copy.owns_entry_pool == 1 && copy.entry_pool->live_count == 1);
  mub_bitree_term(&bare);
  mub_bitree_clone(&shared, nullptr, &bare, nullptr, nullptr);
  EXPECT_TRUE(bare.entry_pool == &shared.entries && bare.owns_entry_pool == 0);
  EXPECT_EQ(shared.entries.live_count, 2);
}

}  // namespace
