// What programs of tests/interpreter/ do not come to in hash tables and B-trees: see maps.h there.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "mub_btree.h"
#include "mub_hash.h"

namespace {

struct Table : mub_hash {
  Table() {
    mub_hash_init(this, 1, 1);
    value_pool->block_size = sizeof(uint64_t);
  }
  ~Table() { mub_hash_term(this); }
  mub_hash_entry *add(const char *key) {
    mub_hash_entry *entry = nullptr;
    EXPECT_EQ(mub_hash_entry_set(this, key, -1, &entry), 1);
    return entry;
  }
};
struct Tree : mub_btree {
  Tree() { mub_btree_init(this, 1, 1, 0); }
  ~Tree() { mub_btree_term(this); }
  mub_btree_node *add(const char *key) {
    mub_btree_node *node = nullptr;
    EXPECT_EQ(mub_btree_node_set(this, key, -1, &node), 1);
    return node;
  }
};
struct TreeOfNumbers : mub_btreed {
  explicit TreeOfNumbers(uint32_t type) {
    mub_btreed_init(this, 1, 1, 0);
    key_type = type;
  }
  ~TreeOfNumbers() { mub_btreed_term(this); }
};

TEST(MapsOfBytes, OffsetsHave32BitsAndWrap) {
  Table table;
  Tree tree;
  std::vector<mub_hash_entry *> entries;
  std::vector<mub_btree_node *> nodes;
  for (const char *key : {"a", "", "bc"}) {
    entries.push_back(table.add(key));
    nodes.push_back(tree.add(key));
  }
  mub_hash_adjust_t(&table, 1, 1000);
  mub_btree_adjust_t(&tree, &tree.root, 1, 1000);
  const uint32_t offsets[] = {0, 1, 1u - 1000u};  // that of an empty key right at the cut stays
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(entries[i]->key_offset, offsets[i]);
    EXPECT_EQ(nodes[i]->key_offset, offsets[i]);
  }
  EXPECT_EQ(mub_hash_find(&table, "bc", 2) + mub_btree_find(&tree, "bc", 2), 0) << "outside the store";
  table.keys.length = tree.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_hash_insert(&table, "ab", 2, 1) + mub_btree_insert(&tree, "~~", 2, 1), 0);
  EXPECT_EQ(table.entry_pool->live_count + tree.node_pool->live_count, 3 + 3);
}

TEST(MapsOfBytes, OrderStaysWithItsRecord) {
  Table folding, exact, cased;
  Tree folding_tree, exact_tree;
  folding.nocase = cased.nocase = 1;
  folding_tree.nocase = 1;
  mub_hash_entry *first = folding.add("key"), *found = nullptr;
  cased.add("kEy");
  folding_tree.add("kEy");
  for (const mub_stream *keys : {&cased.keys, &folding_tree.keys})
    EXPECT_EQ(std::memcmp(keys->data, "kEy", 3), 0) << "the case is stored";
  mub_btree_swap(&folding_tree, &exact_tree);
  mub_btree_clone(&exact_tree, nullptr, &folding_tree, nullptr, nullptr);
  EXPECT_EQ(folding_tree.nocase - exact_tree.nocase, 1);
  mub_hash_swap(&folding, &exact);
  EXPECT_EQ(mub_hash_insert(&exact, "Key", 3, 2), 1) << "which has another hash, and the same bucket";
  mub_hash_swap(&exact, &folding);
  EXPECT_EQ(mub_hash_entry_set(&folding, "Key", 3, &found), 0);
  EXPECT_EQ(found, first) << "the first of the chain, though another has the hash";
  mub_hash_clone(&folding, nullptr, &exact, nullptr, nullptr);
  EXPECT_EQ(folding.nocase - exact.nocase, 1);
  folding.nocase = 0;
  first->hash ^= 4;
  EXPECT_EQ(mub_hash_insert(&folding, "key", 3, 3), 0) << "insertions do not look at stored hashes";
}

// What lies right after a chunk, between its neighbours, too.
TEST(HashClone, HasNoValuesThatAreNoBlocks) {
  for (const bool has_chunks : {false, true}) {
    Table owner, copy;
    mub_pool_expand(&owner.value_pool->chunk_used);
    for (int i = 0; has_chunks && i < 40; ++i) mub_pool_new(owner.value_pool);
    const uint64_t after = has_chunks ? reinterpret_cast<uintptr_t>(owner.value_pool->chunks[1]) + 128 : 5;
    mub_hash_insert(&owner, "key", 3, after);
    mub_hash_clone(&owner, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(mub_hash_entry_get(&copy, "key", 3)->value, 0u);
  }
}

TEST(HashLowLayer, TakesBucketsAndHashesAsGiven) {
  Table table;
  mub_hash_entry *entry = table.add("known");
  const uint32_t hash = entry->hash;
  const int64_t bucket = hash % 4;
  int inserted = -1;
  EXPECT_EQ(mub_hash_entry_new(&table, bucket, hash + 4, "known", 5, &inserted), entry);
  EXPECT_EQ(mub_hash_entry_find(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash + 4, "known", 5), nullptr);
  for (int64_t outside : {int64_t{-3}, INT64_MAX}) mub_hash_entry_next(&table, &outside, entry);
  mub_hash_entry *fresh = mub_hash_entry_new(&table, bucket, 0, "unknown", 7, &inserted);
  EXPECT_EQ(inserted, 1);
  EXPECT_TRUE(entry->next == fresh && fresh->next == nullptr && fresh->value == 0);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash, "known", 5), entry);
  EXPECT_EQ(table.count + table.keys.length, 1 + 5) << "counts and key bytes are the caller's to keep";
}

// The table's count is that of its live blocks, which are not all in its chains; what lies on the free stack
// may have any link, and what is taken from there any offset.
TEST(HashRemoval, LeavesWhatIsNotInTheChains) {
  Table table;
  const auto key = [](int i) { return std::to_string(i); };
  for (int i = 1000; i < 1040; ++i) mub_hash_insert(&table, key(i).data(), 4, 1);
  mub_hash_entry *linked = mub_hash_remove_t(&table, "1030", 4), *last = mub_hash_remove_t(&table, "1031", 4);
  linked->next = last;
  table.count -= 2;
  for (mub_hash_entry *entry : {linked, last}) mub_pool_free(table.entry_pool, entry);
  mub_hash_entry *held = mub_hash_remove_t(&table, "1020", 4);
  const mub_hash_entry before = *held;
  for (int i = 1000; i < 1010; ++i) mub_hash_remove(&table, key(i).data(), 4);
  EXPECT_EQ(std::memcmp(held, &before, sizeof before), 0);
  Table copy;
  mub_hash_clone(&table, nullptr, &copy, nullptr, nullptr);
  for (int i = 1010; i < 1040; ++i)
    EXPECT_EQ(mub_hash_find(&copy, key(i).data(), 4), mub_hash_find(&table, key(i).data(), 4));
  --table.count;
  auto *popped = static_cast<mub_hash_entry *>(mub_pool_from_empty(table.entry_pool));
  popped->key_offset = 0x77777777;
  mub_pool_free(table.entry_pool, held);
  for (int i = 1010; i < 1012; ++i) mub_hash_remove(&table, key(i).data(), 4);
  EXPECT_EQ(popped->key_offset, 0x77777777u);
}

// Keys have no alignment.
template <class Bits>
void expect_orders(int (*compare)(const void *, const void *, uint32_t), Bits a, Bits b,
                   const std::vector<int> &orders) {
  char bytes[1 + 2 * sizeof(Bits)] = {};
  std::memcpy(bytes + 1, &a, sizeof a);
  std::memcpy(bytes + 1 + sizeof a, &b, sizeof b);
  for (uint32_t type = 0; type < 8; ++type)
    EXPECT_EQ(compare(bytes + 1, bytes + 1 + sizeof a, type), orders[type]) << a << ", type " << type;
}
TEST(BTreeOfNumbers, KeysCompareByTheirType) {
  const auto compare32 = mub_btreed_var_compare, compare64 = mub_btreex_var_compare;
  expect_orders<uint32_t>(compare32, 1, 2, {0, -1, -1, 0, 0, -1, 0, 0});
  expect_orders<uint32_t>(compare32, ~0u, 0, {0, -1, 1, 0, 0, 0, 0, 0});         // -1, 2^32 - 1, no number
  expect_orders<uint32_t>(compare32, 0x80000000, 0, {0, -1, 1, 0, 0, 0, 0, 0});  // minus zero is zero
  expect_orders<uint64_t>(compare64, 1, 0x100000000, {0, 0, 0, -1, -1, 0, -1, 0});
  expect_orders<uint64_t>(compare64, ~uint64_t{0}, 0, {0, 0, 0, -1, 1, 0, 0, 0});
  expect_orders<uint64_t>(compare64, 0xC000000000000000, 0xBFF0000000000000, {0, 0, 0, 1, 1, 0, -1, 0});
}

TEST(BTreeOfNumbers, AnUnknownTypeAndNoNumberEqualEverything) {
  TreeOfNumbers unknown(3), known(1), floats(5);
  EXPECT_EQ(mub_btreed_insert(&unknown, 8, 1), 1);
  EXPECT_EQ(mub_btreed_insert(&unknown, 9, 2), 0);
  mub_btreed_swap(&unknown, &known);
  EXPECT_EQ(mub_btreed_clone(&known, nullptr, &unknown, nullptr, nullptr), 1);
  EXPECT_EQ(mub_btreed_remove(&unknown, 7), 1u) << "types stay with their records";
  for (const uint32_t key : {0x3F800000u, 0xBF800000u, 0u}) EXPECT_EQ(mub_btreed_insert(&floats, key, 1), 1);
  for (const uint32_t key : {0x80000000u, 0x7FC00000u})
    EXPECT_EQ(mub_btreed_insert(&floats, key, 1), 0) << "0 is there, and so is what is no number";
}

// Nodes of four levels, so many that walks fetch what comes next.
TEST(BTreeOfNumbers, LargeTreesAreWalkedBothWaysAndCloned) {
  constexpr uint32_t kCount = 100000, kOdd = 0x9E3779B1;
  TreeOfNumbers tree(2), copy(2);
  for (uint32_t i = 1; i <= kCount; ++i) ASSERT_EQ(mub_btreed_insert(&tree, i * kOdd, i), 1);
  ASSERT_EQ(mub_btreed_clone(&tree, nullptr, &copy, nullptr, nullptr), kCount);
  mub_btreed_cursor cursor;
  std::vector<uint32_t> up, down;
  for (auto *node = mub_btreed_cursor_first(&cursor, &copy); node != nullptr;
       node = mub_btreed_cursor_next(&cursor))
    up.push_back(node->key);
  for (auto *node = mub_btreed_cursor_last(&cursor, &copy); node != nullptr;
       node = mub_btreed_cursor_prev(&cursor))
    down.push_back(node->key);
  EXPECT_TRUE(std::ranges::is_sorted(up) && std::ranges::equal(up, std::vector(down.rbegin(), down.rend())));
  for (uint32_t i = 1; i <= kCount; ++i) ASSERT_EQ(mub_btreed_remove(&copy, i * kOdd), i);
  EXPECT_EQ(copy.count + static_cast<int64_t>(up.size()), kCount);
}

// An entry keeps the offset of a name that reads like the key of its last child.
TEST(BTreeOfBytes, NamesThatReadAlikeKeepTheirOffsets) {
  for (const int which : {0, 1, 2}) {
    const char *last_key = which == 0 ? "zk25" : "zK25";
    Tree tree;
    tree.nocase = which == 2 ? 1 : 0;
    for (int i = 10; i < 50; ++i) tree.add(("k" + std::to_string(i)).data());
    tree.add(last_key);
    auto *leaf = mub_btree_first_entry(&tree.root);
    const uint32_t own = leaf->key_offset, other = mub_btree_node_get(&tree, last_key, -1)->key_offset + 1;
    leaf->key_offset = other;
    mub_btree_set_name(&tree, leaf);
    EXPECT_EQ(leaf->key_offset, which == 1 ? own : other);
  }
}

// A half without records keeps its place in walks and searches, and takes records.
TEST(BTreeParts, EmptyHalvesTakeRecords) {
  Tree tree;
  auto *greatest = tree.add("b");
  mub_btree_split(&tree, &tree.root);
  mub_btree_split(&tree, mub_btree_first_entry(&tree.root));
  EXPECT_EQ(mub_btree_node_bfind(&tree, "a", 1), greatest);
  auto *least = tree.add("a");
  EXPECT_TRUE(mub_btree_node_first(&tree) == least && mub_btree_node_last(&tree) == greatest);
  EXPECT_TRUE(least->next == greatest && greatest->prev == least);
  EXPECT_EQ(mub_btree_node_next(&tree, least), greatest);
  mub_btree_cursor cursor;
  EXPECT_EQ(mub_btree_cursor_seek(&cursor, &tree, "c", 1), nullptr);
  EXPECT_EQ(mub_btree_cursor_prev(&cursor), greatest);
}

// The upper half of a split that its parent does not list has no neighbours there; when it splits in turn,
// the new half is listed where its keys belong.
TEST(BTreeParts, HalvesThatNoParentListsTakeRecords) {
  TreeOfNumbers tree(1);
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
  TreeOfNumbers tree(1), copy(1);
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
