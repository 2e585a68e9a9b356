#include <gtest/gtest.h>

#include "mub_tree.h"
#include "support/tree_kinds.h"

using namespace mub_test;
using Entry = mub_bitree_entry;

namespace {

Entry *add_new(Tree<Sides> &tree, Entry *entry, int direction) {
  Entry *added = mub_bitree_entry_new(&tree);
  mub_bitree_entry_add(&tree, entry, direction, added);
  return added;
}

TEST(BinaryTree, AgreesWithAModel) {
  expect_agreement_with_a_model<Sides>(80, [](Tree<Sides> &, TreeModel<Sides> &) {});
}

TEST(BinaryTree, MayBeAsDeepAndItsChainsAsLongAsMemoryAllows) {
  for (const size_t place : {0u, 1u, 2u}) expect_no_bound<Sides>(place, true);
}

TEST(BinaryTree, FlagsOutlastPools) { expect_flags_to_outlast_pools<Sides>(); }

TEST(BinaryTree, AddReplacesTheLinkThatStands) {
  Tree<Sides> tree;
  Entry *head = add_new(tree, &tree.root, -1);
  Entry *const replaced = add_new(tree, head, 0);
  Entry *const equal = add_new(tree, head, 0);
  EXPECT_TRUE(head->equal == equal && equal->equal == nullptr && equal->parent == &tree.root);
  mub_bitree_entry_add(&tree, head, 1, nullptr);
  mub_bitree_entry_add(&tree, nullptr, 1, replaced);
  EXPECT_TRUE(tree.count == 3 && head->right == nullptr);
}

// Equals that were linked before their head have no parent yet.
TEST(BinaryTree, NeedsNoParentsToBeWalked) {
  Tree<Sides> tree(false), copy;
  Entry *const head = mub_bitree_entry_new(&tree);
  Entry *last = head;
  for (uint64_t key = 1; key < 4; ++key, last = add_new(tree, last, 0)) {
    last->value = tree.new_value(key);
    add_new(tree, last, 1);
  }
  mub_bitree_entry_add(&tree, &tree.root, 1, head);
  add_new(tree, &tree.root, 0);
  mub_bitree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_EQ(last->parent, nullptr) << "the source is as it was";
  for (Tree<Sides> *each : {&tree, &copy}) {
    seen.clear();
    mub_bitree_free_all(each, note_key_once);
    EXPECT_EQ(seen, (Keys{3, 2, 1}));
    EXPECT_EQ(each->entry_pool->live_count, 0);
  }
}

TEST(BinaryTree, SwapTakesAlongWhatHangsOnEither) {
  Tree<Sides> a, b;
  Entry *const left = add_new(a, &a.root, -1);
  Entry *const right = add_new(a, &a.root, 1);
  Entry *const equals[] = {add_new(a, left, 0), add_new(a, right, 0), add_new(a, &a.root, 0)};
  equals[2]->parent = left;  // will be set right
  a.root.value = 4;
  mub_bitree_entry_swap(&a.root, &b.root);
  EXPECT_EQ(Sides::branches(a.root), Sides::branches({}));
  EXPECT_EQ(Sides::branches(b.root), (std::vector<Entry *>{left, right, equals[2]}));
  for (const Entry *entry : {left, right, equals[0], equals[1]}) EXPECT_EQ(entry->parent, &b.root);
  EXPECT_TRUE(equals[2]->parent == nullptr && b.root.value == 4);
}

TEST(BinaryTree, CloneLinksBlocksOfThePoolAloneAndKeepsThePoolThatItHas) {
  Tree<Sides> tree, shared(false), copy, bare;
  Entry stranger = {};
  mub_bitree_entry_add(&tree, &tree.root, 1, &stranger);
  add_new(tree, &stranger, 1);
  add_new(tree, &tree.root, -1);
  mub_bitree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_TRUE(copy.root.left != nullptr && copy.root.right == nullptr);

  add_new(shared, &shared.root, 0);
  mub_bitree_clone(&shared, nullptr, &copy, nullptr, nullptr);
  EXPECT_TRUE(copy.owns_entry_pool == 1 && copy.entry_pool->live_count == 1);
  mub_bitree_term(&bare);
  mub_bitree_init(&bare, 0, 0);
  mub_bitree_clone(&shared, nullptr, &bare, nullptr, nullptr);
  EXPECT_TRUE(bare.entry_pool == &shared.entries && shared.entries.live_count == 2);
}

}  // namespace
