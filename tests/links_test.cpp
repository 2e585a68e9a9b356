// What the random programs of tests/interpreter/ do not test in lists and trees.
#include <gtest/gtest.h>

#include "mub.hpp"
#include "support/fuse.h"
#include "support/refused_clones.h"

namespace {

TEST(UnrolledList, ReadsNoSlotOutsideABlock) {
  mub::listx list;
  ASSERT_TRUE(list.push_back(1));
  mub_listx_block *block = list.c()->head;
  for (const int64_t stated : {int64_t{0}, INT64_MIN}) {
    block->count = stated;
    EXPECT_EQ(list.pop_front() + list.pop_back(), 0u);
  }
  block->count = INT64_MAX;
  block->values[31] = 5;
  EXPECT_EQ(list.pop_back(), 5u);
  EXPECT_TRUE(block->count == 31 && block->values[31] == 0) << "cleared";
}

TEST(LinkedList, IgnoresEntriesAndKeysThatAreNotItsOwn) {
  mub::list list;
  mub_list_entry foreign = {}, *entry = list.push_back("key", 1);
  entry->next = &foreign;
  EXPECT_EQ(list.clone().c()->head->next, nullptr) << "not a block of the pool";
  mub_list_adjust_t(list.c(), 0, -2);
  EXPECT_EQ(list.pop_front(), 1u);
  EXPECT_EQ(list.c()->keys.length, 3) << "the key was outside the stream";
  list.clear();
  EXPECT_EQ(mub_list_remove_at(list.c(), entry), 0u) << "an empty list has no positions";
}

TEST(LinkedList, ReturnsTheBlocksOfAnExternalPoolIfACloneRunsOutOfMemory) {
  mub_test::expect_blocks_returned<mub::list>([](mub::list &list, int64_t) { list.push_back("key", 1); });
}

TEST(LinkedList, CopiesOfAnotherListAreWholeOrNotThereAtAll) {
  mub::lists source;
  for (uint64_t value = 1; value <= 100; ++value) ASSERT_TRUE(source.push_back(value));
  mub_test::for_every_allocation([&](auto refused_in) {
    mub::lists list;
    const bool is_refused = refused_in([&] { mub_lists_add_tail_list(list.c(), source.c()); });
    EXPECT_EQ(list.size(), is_refused ? 0 : 100);
    EXPECT_TRUE(list.verify() && list.c()->entry_pool->live_count == list.size());
  });
}

TEST(Trees, CopiesOfAnEntryAreWholeOrNotThereAtAll) {
  mub_test::for_every_allocation([](auto refused_in) {
    mub::tree tree;
    for (int i = 0; i < 40; ++i) tree.append(tree.root(), 1);
    mub_tree_entry *copy = nullptr;
    const bool is_refused = refused_in([&] { copy = mub_tree_clone_entry(tree.c(), tree.root()); });
    EXPECT_EQ(copy == nullptr, is_refused);
    EXPECT_EQ(tree.c()->entry_pool->live_count, is_refused ? 40 : 40 + 41);
  });
}

TEST(Trees, PathsAreWholeOrNotThereAtAll) {
  mub::tree tree;
  mub_tree_entry *entry = tree.root();
  for (int i = 0; i < 40; ++i) entry = tree.append(entry, 1);
  int64_t allowed = 0;
  for (bool is_refused = true; is_refused; ++allowed) {
    mub::arrayt path;
    mub_test::arm_fuse(allowed, mub_test::Blow::kOnce);
    mub_tree_entry_array(entry, path.c());
    is_refused = mub_test::disarm_fuse();
    EXPECT_EQ(path.size(), is_refused ? 0 : 41);
  }
  EXPECT_GT(allowed, 2);
}

int64_t released = 0;
void count(uint64_t) { ++released; }

// Each entry is linked to the one before: as a child or, in the binary tree, as left child, next equal or
// right child, which changes every 1000 entries.
TEST(Trees, MayBeAsDeepAsMemoryAllows) {
  constexpr int64_t kCount = 1000000;
  mub::tree tree;
  mub::bitree sides;
  mub_tree_entry *above = tree.root();
  mub_bitree_entry *side_above = sides.root();
  for (int64_t i = 0; i < kCount; ++i) {
    above = tree.append(above, 1);
    mub_bitree_entry *entry = sides.make();
    entry->value = 1;
    sides.add(side_above, static_cast<int>(i / 1000 % 3) - 1, entry);
    side_above = entry;
  }
  mub_tree_entry_insert(tree.c(), above, above);  // does nothing
  EXPECT_TRUE(tree.verify() && sides.verify());
  for (auto copy = tree.clone(); auto *each : {&tree, &copy}) each->free_all(count);
  for (auto copy = sides.clone(); auto *each : {&sides, &copy}) each->free_all(count);
  EXPECT_EQ(released, 4 * kCount);
}

// Equals linked before their head have no parent. An entry that is not a block of the pool is left out of the
// clone of an owned pool, but copied if the pool is external.
TEST(BinaryTree, IsClonedWithoutRelyingOnParents) {
  mub::bitree tree;
  mub_bitree_entry *head = tree.make(), *equal = tree.make(), foreign = {};
  tree.add(head, 0, equal);
  tree.add(equal, 1, tree.make());
  tree.add(equal, -1, &foreign);
  tree.add(tree.root(), 1, head);
  for (const bool has_pool : {false, true}) {
    tree.c()->owns_entry_pool = has_pool;
    const mub::bitree copy = tree.clone();
    const mub_bitree_entry *copied = copy.root()->right->equal;
    EXPECT_EQ(equal->parent, nullptr) << "the source is as it was";
    EXPECT_EQ(copied->parent, copy.root());
    EXPECT_EQ(copied->left == nullptr, has_pool);
    EXPECT_EQ(copy.c()->entry_pool == tree.c()->entry_pool, !has_pool);
  }
}

}  // namespace
