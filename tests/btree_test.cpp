// What programs of tests/interpreter/ do not come to: see btree_family.cpp there.
#include "mub_btree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Bytes : mub_btree {
  Bytes() { mub_btree_init(this, 1, 1, 0); }
  ~Bytes() { mub_btree_term(this); }
};
struct Words : mub_btreed {
  explicit Words(uint32_t type) {
    mub_btreed_init(this, 1, 1, 0);
    key_type = type;
  }
  ~Words() { mub_btreed_term(this); }
};

// The results for each of the types 0 to 7, of keys without alignment.
template <class Bits>
std::vector<int> orders(int (*compare)(const void *, const void *, uint32_t), Bits a, Bits b) {
  char bytes[1 + 2 * sizeof(Bits)] = {};
  std::memcpy(bytes + 1, &a, sizeof a);
  std::memcpy(bytes + 1 + sizeof a, &b, sizeof b);
  std::vector<int> orders;
  for (uint32_t type = 0; type < 8; ++type) orders.push_back(compare(bytes + 1, bytes + 1 + sizeof a, type));
  return orders;
}

TEST(BTreeOfNumbers, KeysCompareByTheirType) {
  using Orders = std::vector<int>;
  const auto order32 = [](uint32_t a, uint32_t b) { return orders(mub_btreed_var_compare, a, b); };
  const auto order64 = [](uint64_t a, uint64_t b) { return orders(mub_btreex_var_compare, a, b); };
  EXPECT_EQ(order32(1, 2), (Orders{0, -1, -1, 0, 0, -1, 0, 0}));
  EXPECT_EQ(order32(~0u, 0), (Orders{0, -1, 1, 0, 0, 0, 0, 0})) << "-1, 2^32 - 1 and no number against 0";
  EXPECT_EQ(order32(0x80000000, 0), (Orders{0, -1, 1, 0, 0, 0, 0, 0})) << "minus zero is zero";
  EXPECT_EQ(order64(1, uint64_t{1} << 32), (Orders{0, 0, 0, -1, -1, 0, -1, 0}));
  EXPECT_EQ(order64(~uint64_t{0}, 0), (Orders{0, 0, 0, -1, 1, 0, 0, 0}));
  EXPECT_EQ(order64(uint64_t{0xC000} << 48, uint64_t{0xBFF0} << 48), (Orders{0, 0, 0, 1, 1, 0, -1, 0}));
}

TEST(BTreeOfNumbers, AnUnknownTypeAndNoNumberEqualEverything) {
  Words unknown(3), known(1), floats(5);
  EXPECT_EQ(mub_btreed_insert(&unknown, 8, 1), 1);
  EXPECT_EQ(mub_btreed_insert(&unknown, 9, 2), 0);
  mub_btreed_swap(&unknown, &known);
  EXPECT_EQ(mub_btreed_clone(&known, nullptr, &unknown, nullptr, nullptr), 1);
  EXPECT_EQ(mub_btreed_remove(&unknown, 7), 1u) << "types stay with their records";
  for (const uint32_t key : {0x3F800000u, 0xBF800000u, 0u}) EXPECT_EQ(mub_btreed_insert(&floats, key, 1), 1);
  EXPECT_EQ(mub_btreed_insert(&floats, 0x80000000, 1), 0) << "0 is there";
  EXPECT_EQ(mub_btreed_insert(&floats, 0x7FC00000, 1), 0) << "so is what is no number";
}

// An entry keeps the offset of a name that reads like the key of its last child.
TEST(BTreeOfBytes, NamesThatReadAlikeKeepTheirOffsets) {
  for (const int which : {0, 1, 2}) {
    const char *last_key = which == 0 ? "zk25" : "zK25";
    Bytes tree;
    tree.nocase = which == 2 ? 1 : 0;
    for (int i = 10; i < 50; ++i) mub_btree_insert(&tree, ("k" + std::to_string(i)).data(), -1, 1);
    mub_btree_insert(&tree, last_key, -1, 1);
    auto *leaf = mub_btree_first_entry(&tree.root);
    const uint32_t own = leaf->key_offset, other = mub_btree_node_get(&tree, last_key, -1)->key_offset + 1;
    leaf->key_offset = other;
    mub_btree_set_name(&tree, leaf);
    EXPECT_EQ(leaf->key_offset, which == 1 ? own : other);
  }
}

TEST(BTreeOfBytes, OffsetsHave32BitsAndWrap) {
  Bytes tree;
  mub_btree_insert(&tree, "abc", -1, 1);
  mub_btree_adjust_t(&tree, &tree.root, 0, 1000);
  EXPECT_EQ(mub_btree_node_first(&tree)->key_offset, 0u - 1000u);
  EXPECT_EQ(mub_btree_find(&tree, "abc", -1), 0) << "outside the store";
  tree.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_btree_insert(&tree, "~~", 2, 1), 0);
  EXPECT_EQ(tree.node_pool->live_count, 1);
}

TEST(BTreeOfBytes, OrderStaysWithItsRecord) {
  Bytes folding, exact;
  folding.nocase = 1;
  mub_btree_insert(&folding, "key", 3, 1);
  mub_btree_swap(&folding, &exact);
  mub_btree_clone(&exact, nullptr, &folding, nullptr, nullptr);
  EXPECT_EQ(folding.nocase - exact.nocase, 1);
}

// A half without records keeps its place in walks and searches, and takes records.
TEST(BTreeParts, EmptyHalvesTakeRecords) {
  Bytes tree;
  mub_btree_insert(&tree, "b", 1, 2);
  mub_btree_split(&tree, &tree.root);
  mub_btree_split(&tree, mub_btree_first_entry(&tree.root));
  EXPECT_EQ(mub_btree_node_bfind(&tree, "a", 1), mub_btree_node_first(&tree));
  EXPECT_EQ(mub_btree_insert(&tree, "a", 1, 1), 1);
  mub_btree_node *least = mub_btree_node_first(&tree), *greatest = mub_btree_node_last(&tree);
  EXPECT_TRUE(least->value == 1 && greatest->value == 2);
  EXPECT_TRUE(least->next == greatest && greatest->prev == least);
  EXPECT_EQ(mub_btree_node_next(&tree, least), greatest);
  mub_btree_cursor cursor;
  EXPECT_EQ(mub_btree_cursor_seek(&cursor, &tree, "c", 1), nullptr);
  EXPECT_EQ(mub_btree_cursor_prev(&cursor), greatest);
}

// The upper half of a split that its parent does not list has no neighbours there; when it splits in turn,
// the new half is listed where its keys belong.
TEST(BTreeParts, HalvesThatNoParentListsTakeRecords) {
  Words tree(1);
  for (uint32_t key = 0; key < 100; key += 2) mub_btreed_insert(&tree, key, 1);
  mub_btreed_entry *upper = mub_btreed_split_node(&tree, mub_btreed_first_entry(&tree.root));
  mub_btreed_node *node = nullptr;
  EXPECT_EQ(mub_btreed_insert_t(&tree, upper, 15, &node), 1);
  EXPECT_TRUE(node->prev == nullptr && node->next != nullptr && node->next->prev == node);
  for (uint32_t key = 17; key < 80; key += 2) mub_btreed_insert_t(&tree, upper, key, &node);
  const mub_arrays &children = tree.root.children;
  const auto name = [&](int64_t i) { return reinterpret_cast<mub_btreed_entry *>(children.items[i])->key; };
  for (int64_t i = 1; i < children.count; ++i) EXPECT_LT(name(i - 1), name(i));
  mub_btreed_remove_all_entry(&tree, upper);
  mub_pool_free(tree.entry_pool, upper);
}

// A tree of one record and as many levels as there can be is walked, cloned and emptied without recursion.
TEST(BTreeParts, DegenerateTreesTakeABoundedStack) {
  Words tree(1), copy(1);
  mub_btreed_insert(&tree, 1, 1);
  uint64_t below = tree.root.children.items[0];
  mub_arrays_remove_all(&tree.root.children);
  for (int16_t level = 0; level < 32000; ++level) {
    mub_btreed_entry *entry = level < 31999 ? mub_btreed_entry_new(&tree, level) : &tree.root;
    entry->level = level;
    mub_arrays_append(&entry->children, below);
    mub_btreed_set_parent(entry);
    below = reinterpret_cast<uintptr_t>(entry);
  }
  mub_btreed_set_name(&tree, mub_btreed_first_entry(&tree.root));
  mub_btreed_set_pool(&tree, &tree.root);
  EXPECT_EQ(mub_btreed_clone(&tree, nullptr, &copy, nullptr, nullptr), 1);
  EXPECT_EQ(mub_btreed_get(&tree, 1), 1u);
  EXPECT_EQ(mub_btreed_remove(&copy, 1), 1u);
  EXPECT_EQ(copy.root.level, 0);
}

}  // namespace
