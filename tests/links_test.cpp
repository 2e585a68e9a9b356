// What programs do not reach in lists and trees: see list_family.cpp and tree_family.cpp in
// tests/interpreter.
#include <gtest/gtest.h>

#include "mub.h"

namespace {

TEST(UnrolledList, ClearsSlotsAndReadsNoneThatABlockDoesNotHave) {
  mub_listx list;
  mub_listx_init(&list, 1, 0);
  for (uint64_t value = 1; value < 4; ++value) mub_listx_add_tail(&list, value);
  mub_listx_block *block = list.head;
  EXPECT_EQ(mub_listx_remove_tail(&list), 3u);
  EXPECT_EQ(block->values[2], 0u);
  for (const int64_t stated : {int64_t{0}, INT64_MIN}) {
    block->count = stated;
    EXPECT_EQ(mub_listx_remove_head(&list) + mub_listx_remove_tail(&list), 0u);
  }
  block->count = INT64_MAX;
  block->values[31] = 5;
  EXPECT_EQ(mub_listx_remove_tail(&list), 5u);
  EXPECT_EQ(block->count, 31);
  mub_listx_term(&list);
}

int64_t released = 0;

// Each entry hung on the one before, on one side after the other.
TEST(Trees, MayBeAsDeepAsMemoryAllows) {
  constexpr int64_t kCount = 1000000;
  mub_tree tree, copy;
  mub_bitree sides, side_copy;
  for (mub_tree *each : {&tree, &copy}) mub_tree_init(each, 1, 0);
  for (mub_bitree *each : {&sides, &side_copy}) mub_bitree_init(each, 1, 0);
  mub_tree_entry *above = &tree.root;
  mub_bitree_entry *side_above = &sides.root;
  for (int64_t i = 0; i < kCount; ++i) {
    mub_tree_entry *entry = mub_tree_entry_new(&tree);
    mub_bitree_entry *side_entry = mub_bitree_entry_new(&sides);
    entry->value = side_entry->value = 1;
    mub_tree_entry_append(&tree, above, entry);
    mub_bitree_entry_add(&sides, side_above, static_cast<int>(i / 1000 % 3) - 1, side_entry);
    above = entry;
    side_above = side_entry;
  }
  mub_tree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  mub_bitree_clone(&sides, nullptr, &side_copy, nullptr, nullptr);
  const mub_free_fn count = [](uint64_t) { ++released; };
  for (mub_tree *each : {&tree, &copy}) mub_tree_term(mub_tree_free_all(each, count));
  for (mub_bitree *each : {&sides, &side_copy}) mub_bitree_term(mub_bitree_free_all(each, count));
  EXPECT_EQ(released, 4 * kCount);
}

// Equals that were linked before their head have no parent yet. What is no block of the pool is left out.
TEST(BinaryTree, NeedsNoParentsToBeWalked) {
  mub_bitree tree, copy;
  for (mub_bitree *each : {&tree, &copy}) mub_bitree_init(each, 1, 0);
  mub_bitree_entry *const head = mub_bitree_entry_new(&tree), *const equal = mub_bitree_entry_new(&tree);
  mub_bitree_entry foreign = {};
  mub_bitree_entry_add(&tree, head, 0, equal);
  mub_bitree_entry_add(&tree, equal, 1, mub_bitree_entry_new(&tree));
  mub_bitree_entry_add(&tree, equal, -1, &foreign);
  mub_bitree_entry_add(&tree, &tree.root, 1, head);
  // A copy without a pool shares that of the source.
  for (const bool has_pool : {true, false}) {
    if (!has_pool) mub_bitree_term(&copy)->owns_entry_pool = tree.owns_entry_pool = 0;
    mub_bitree_clone(&tree, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(equal->parent, nullptr) << "the source is as it was";
    EXPECT_EQ(copy.root.right->equal->parent, &copy.root);
    EXPECT_EQ(copy.root.right->equal->left == nullptr, has_pool);
    EXPECT_EQ(copy.entry_pool == tree.entry_pool, !has_pool);
  }
  tree.owns_entry_pool = 1;
  mub_bitree_term(&tree);
}

}  // namespace
