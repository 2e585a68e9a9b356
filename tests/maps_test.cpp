// What the random programs of tests/interpreter/ do not test in hash tables and B-trees.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "mub.hpp"
#include "support/fuse.h"
#include "support/refused_clones.h"

namespace {

// A record with owned pools.
template <class R, class Node, auto kTerm, auto kSet>
struct Map : R {
  ~Map() { kTerm(this); }
  Node *add(auto... key) {
    Node *node = nullptr;
    EXPECT_EQ(kSet(this, key..., &node), 1);
    return node;
  }
};
struct Table : Map<mub_hash, mub_hash_entry, mub_hash_term, mub_hash_entry_set> {
  Table() { mub_hash_init(this, 1, 1); }
};
struct Tree : Map<mub_btree, mub_btree_node, mub_btree_term, mub_btree_node_set> {
  Tree() { mub_btree_init(this, 1, 1, 0); }
};
struct TreeOfNumbers : Map<mub_btreed, mub_btreed_node, mub_btreed_term, mub_btreed_node_set> {
  explicit TreeOfNumbers(uint32_t type) {
    mub_btreed_init(this, 1, 1, 0);
    key_type = type;
  }
};

TEST(HashLowLayer, KeysOfFourWordsCompareUpToTheFirstDifferentWord) {
  const uint32_t key[] = {1, 2, 3, 4, 5}, same[] = {1, 2, 3, 4, 9}, other[] = {1, 2, 9, 0, 5};
  EXPECT_EQ(mub_hasht_cmp(key, same), 0);
  EXPECT_EQ(mub_hasht_cmp(key, other), 3 - 9);
}

TEST(MapsOfBytes, KeysOutsideTheKeyStreamAreNotFoundAndItsLengthIsLimitedTo32Bits) {
  Table table;
  Tree tree;
  for (const char *key : {"a", "bc"})
    EXPECT_TRUE(table.add(key, -1) != nullptr && tree.add(key, -1) != nullptr);
  mub_hash_adjust_t(&table, 0, 1000);
  mub_btree_adjust_t(&tree, &tree.root, 0, 1000);
  EXPECT_EQ(mub_hash_find(&table, "bc", 2) + mub_btree_find(&tree, "bc", 2), 0);
  table.keys.length = tree.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_hash_insert(&table, "ab", 2, 1) + mub_btree_insert(&tree, "~~", 2, 1), 0);
  EXPECT_EQ(table.entry_pool->live_count + tree.node_pool->live_count, 2 + 2);
}

TEST(Maps, SwapsAndClonesKeepTheSettingsOfEachRecord) {
  const auto expect_kept = [](auto first, auto second, auto order, auto swap, auto clone) {
    first.*order = 1;
    second.*order = 0;
    swap(&first, &second);
    clone(&second, nullptr, &first, nullptr, nullptr);
    EXPECT_EQ(first.*order - second.*order, 1);
  };
  expect_kept(Table(), Table(), &mub_hash::nocase, mub_hash_swap, mub_hash_clone);
  expect_kept(Tree(), Tree(), &mub_btree::nocase, mub_btree_swap, mub_btree_clone);
  expect_kept(TreeOfNumbers(2), TreeOfNumbers(2), &mub_btreed::key_type, mub_btreed_swap, mub_btreed_clone);
}

TEST(HashOfBytes, InsertionsCompareKeysAndNotHashes) {
  Table table;
  mub_hash_entry *first = table.add("Key", -1), *found = nullptr;
  table.add("key", -1);  // in the same bucket
  table.nocase = 1;
  EXPECT_EQ(mub_hash_entry_set(&table, "KEY", 3, &found), 0);
  EXPECT_EQ(found, first) << "although the other entry has the right hash";
}

// Including an address right after a chunk, between two chunks.
TEST(HashClone, DropsValuesThatAreNotBlocks) {
  for (const bool has_chunks : {false, true}) {
    Table owner, copy;
    owner.value_pool->block_size = sizeof(uint64_t);
    mub_pool_expand(&owner.value_pool->chunk_used);
    for (int i = 0; has_chunks && i < 40; ++i) mub_pool_new(owner.value_pool);
    const uint64_t after = has_chunks ? reinterpret_cast<uintptr_t>(owner.value_pool->chunks[1]) + 128 : 5;
    mub_hash_insert(&owner, "key", 3, after);
    mub_hash_clone(&owner, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(mub_hash_entry_get(&copy, "key", 3)->value, 0u);
  }
}

TEST(HashClone, ReturnsTheBlocksOfAnExternalPoolIfMemoryRunsOut) {
  mub_test::expect_blocks_returned<mub::hash>([](mub::hash &table, int64_t i) {
    EXPECT_TRUE(table.insert(std::to_string(i), 1));
    EXPECT_GE(table.c()->keys.capacity, 64);
  });
}

TEST(HashLowLayer, TrustsGivenBucketsAndHashes) {
  Table table;
  mub_hash_entry *entry = table.add("known", -1);
  const uint32_t hash = entry->hash;
  const int64_t bucket = hash % 4;
  int inserted = -1;
  EXPECT_EQ(mub_hash_entry_new(&table, bucket, hash + 4, "known", 5, &inserted), entry);
  EXPECT_EQ(mub_hash_entry_find(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash + 4, "known", 5), nullptr);
  mub_hash_entry *fresh = mub_hash_entry_new(&table, bucket, 0, "unknown", 7, &inserted);
  EXPECT_EQ(inserted, 1);
  EXPECT_TRUE(entry->next == fresh && fresh->next == nullptr && fresh->value == 0);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash, "known", 5), entry);
  EXPECT_EQ(table.count + table.keys.length, 1 + 5) << "the caller maintains counts and key bytes";
}

// The count is that of the pool's live blocks, of which some are in no chain. Blocks on the free stack may
// have any link, and blocks reused from there any offset.
TEST(HashRemoval, IgnoresBlocksThatAreInNoChain) {
  Table table, copy;
  const auto take_out = [&](int i) { return mub_hash_remove_t(&table, std::to_string(i).data(), 4); };
  const auto remove = [&](int i) { mub_hash_remove(&table, std::to_string(i).data(), 4); };
  for (int i = 1000; i < 1040; ++i) table.add(std::to_string(i).data(), -1);
  mub_hash_entry *linked = take_out(1030), *last = take_out(1031), *held = take_out(1020);
  linked->next = last;
  table.count -= 2;
  for (mub_hash_entry *entry : {linked, last}) mub_pool_free(table.entry_pool, entry);
  mub_hash_clone(&table, nullptr, &copy, nullptr, nullptr);
  for (int i = 1032; i < 1040; ++i) {
    const auto *copied = mub_hash_entry_get(&copy, std::to_string(i).data(), 4);
    EXPECT_TRUE(copied != nullptr && copied != mub_hash_entry_get(&table, std::to_string(i).data(), 4));
  }
  const mub_hash_entry before = *held;
  for (int i = 1000; i < 1010; ++i) remove(i);
  EXPECT_EQ(std::memcmp(held, &before, sizeof before), 0);
  --table.count;
  auto *popped = static_cast<mub_hash_entry *>(mub_pool_from_empty(table.entry_pool));
  popped->key_offset = 0x77777777;
  mub_pool_free(table.entry_pool, held);
  for (int i = 1010; i < 1012; ++i) remove(i);
  EXPECT_EQ(popped->key_offset, 0x77777777u);
}

// Every eighth number is not added.
template <class T>
std::vector<T> many_numbers(size_t count) {
  std::vector<T> keys(count);
  for (size_t i = 0; i < count; ++i) keys[i] = static_cast<T>(i * 0x9E3779B97F4A7C15u);
  return keys;
}
template <class Map>
void add_most(Map &map, const std::vector<typename Map::key_type> &keys) {
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i % 8 != 0) map.insert(keys[i], i + 1);
  }
}
// A batch of every eleventh key gives what its look-ups give.
template <class Map>
void expect_batch(const Map &map, const std::vector<typename Map::key_type> &keys) {
  std::vector<typename Map::key_type> wanted;
  for (size_t i = 0; i < keys.size(); i += 11) wanted.push_back(keys[i]);
  std::vector<uint64_t> values(wanted.size() + 1, 99), expected;
  for (const auto &key : wanted) expected.push_back(map.get(key));
  const auto count = std::ssize(wanted);
  EXPECT_EQ(map.get_many(wanted.data(), -1, values.data()), 0);
  EXPECT_EQ(values.front(), 99u);
  EXPECT_EQ(map.get_many(wanted.data(), count, values.data()), count - std::ranges::count(expected, 0u));
  EXPECT_EQ(values.back(), 99u);
  values.pop_back();
  EXPECT_EQ(values, expected);
}

TEST(Batches, LargeMapsOfNumbersGiveWhatSingleLookUpsGive) {
  const auto expect = [](auto map, const auto &keys) {
    add_most(map, keys);
    expect_batch(map, keys);
  };
  const auto keys32 = many_numbers<uint32_t>(160000);
  auto keys64 = many_numbers<uint64_t>(160000);
  std::vector<std::array<uint32_t, 4>> quads;
  for (const uint32_t key : keys32) quads.push_back({1, 1, key % 100, key});
  expect(mub::hashd(), keys32);
  expect(mub::hasht(), quads);
  expect(mub::btreex(), keys64);
  for (uint64_t i = 1; i < 100; ++i) keys64.push_back(i << 40);  // one chain
  expect(mub::hashx(), keys64);
}

// With a key type that does not fit the order of the keys, or under which keys are NaN; with records in the
// wrong leaves; with an inner node that has no children, or a leaf beside inner nodes.
TEST(Batches, LargeTreesThatACallerHasDamagedGiveWhatSingleLookUpsGive) {
  for (const size_t key_count : {60000u, 160000u}) {
    const auto keys = many_numbers<uint32_t>(key_count);
    mub::btreed tree;
    add_most(tree, keys);
    mub_btreed &d = *tree.c();
    for (const uint32_t type : {1u, 7u, 5u, 2u}) {
      d.key_type = type;
      expect_batch(tree, keys);
    }
    mub_btreed_node *node = nullptr;
    for (size_t i = 0; i < 800; i += 8)
      mub_btreed_insert_t(&d, mub_btreed_last_entry(&d.root), keys[i], &node);
    expect_batch(tree, keys);
    uint64_t &second = d.root.children.items[1];
    auto *inner = reinterpret_cast<mub_btreed_entry *>(second);
    const int64_t count = std::exchange(inner->children.count, 0);
    expect_batch(tree, keys);
    inner->children.count = count;
    second = reinterpret_cast<uintptr_t>(mub_btreed_first_entry(&d.root));
    expect_batch(tree, keys);
    second = reinterpret_cast<uintptr_t>(inner);
  }
}

// Without lengths, keys end at their first NUL.
TEST(Batches, LargeMapsOfBytesGiveWhatSingleLookUpsGive) {
  std::vector<std::string> texts;
  for (const uint32_t key : many_numbers<uint32_t>(60000)) texts.push_back("Key" + std::to_string(key));
  const auto expect = [&](auto map, auto get, auto get_many, bool folds_case) {
    map.c()->nocase = folds_case ? 1 : 0;
    add_most(map, {texts.begin(), texts.end()});
    std::vector<std::string> wanted;
    for (size_t i = 0; i < texts.size(); i += 11) wanted.push_back(texts[i]);
    std::vector<const void *> keys;
    std::vector<int64_t> lengths;
    for (std::string &text : wanted) {
      if (folds_case) text[0] = 'k';
      lengths.push_back(keys.size() % 3 == 0 ? -1 : std::ssize(text) - (keys.size() % 3 == 1 ? 1 : 0));
      keys.push_back(text.data());
    }
    keys[7] = nullptr;
    const auto count = std::ssize(keys);
    for (const bool has_lengths : {false, true}) {
      std::vector<uint64_t> values(keys.size()), expected;
      for (size_t i = 0; i < keys.size(); ++i)
        expected.push_back(get(map.c(), keys[i], has_lengths ? lengths[i] : -1));
      EXPECT_EQ(get_many(map.c(), keys.data(), has_lengths ? lengths.data() : nullptr, count, values.data()),
                count - std::ranges::count(expected, 0u));
      EXPECT_EQ(values, expected);
    }
  };
  for (const bool folds_case : {false, true}) {
    expect(mub::hash(), mub_hash_get, mub_hash_get_many, folds_case);
    expect(mub::btree(), mub_btree_get, mub_btree_get_many, folds_case);
  }
}

// Keys may be unaligned. The results are those for key types from 0 on.
TEST(BTreeOfNumbers, KeysCompareByTheirType) {
  const auto expect = [](auto compare, auto a, auto b, const std::vector<int> &orders) {
    char bytes[1 + 2 * sizeof a] = {};
    std::memcpy(bytes + 1, &a, sizeof a);
    std::memcpy(bytes + 1 + sizeof a, &b, sizeof b);
    for (uint32_t type = 0; type < 8; ++type)
      EXPECT_EQ(compare(bytes + 1, bytes + 1 + sizeof a, type), orders[type]) << a << ", type " << type;
  };
  const auto compare32 = mub_btreed_var_compare, compare64 = mub_btreex_var_compare;
  expect(compare32, 1u, 2u, {0, -1, -1, 0, 0, -1, 0, 0});
  expect(compare32, ~0u, 0u, {0, -1, 1, 0, 0, 0, 0, 0});         // -1, 2^32 - 1, NaN
  expect(compare32, 0x80000000, 0u, {0, -1, 1, 0, 0, 0, 0, 0});  // minus zero is zero
  expect(compare64, uint64_t{1}, uint64_t{1} << 32, {0, 0, 0, -1, -1, 0, -1, 0});
  expect(compare64, ~uint64_t{0}, uint64_t{0}, {0, 0, 0, -1, 1, 0, 0, 0});
  expect(compare64, 0xC000000000000000, 0xBFF0000000000000, {0, 0, 0, 1, 1, 0, -1, 0});  // -2.0, -1.0
}

TEST(BTreeOfNumbers, UnknownKeyTypesAndNanCompareEqualToEverything) {
  TreeOfNumbers unknown(3), floats(5);
  EXPECT_EQ(mub_btreed_insert(&unknown, 8, 1), 1);
  EXPECT_EQ(mub_btreed_insert(&unknown, 9, 2), 0);
  EXPECT_EQ(mub_btreed_remove(&unknown, 7), 1u);
  for (const uint32_t key : {0x3F800000u, 0xBF800000u, 0u}) EXPECT_EQ(mub_btreed_insert(&floats, key, 1), 1);
  for (const uint32_t key : {0x80000000u, 0x7FC00000u})
    EXPECT_EQ(mub_btreed_insert(&floats, key, 1), 0) << "equal to the key 0, also NaN";
}

// Four levels, large enough that walks prefetch.
TEST(BTreeOfNumbers, LargeTreesAreClonedAndWalkedInBothDirections) {
  constexpr uint32_t kCount = 140000;
  TreeOfNumbers tree(2), copy(2);
  for (uint32_t i = 1; i <= kCount; ++i) tree.add(i * 0x9E3779B1);
  mub_test::arm_fuse(1000, mub_test::Blow::kForever);
  EXPECT_EQ(mub_btreed_clone_entry(&tree, &tree.root, &copy, &copy.root), 0);
  EXPECT_TRUE(mub_test::disarm_fuse() && copy.node_pool->live_count == 0 && copy.root.level == 0);
  ASSERT_EQ(mub_btreed_clone(&tree, nullptr, &copy, nullptr, nullptr), kCount);
  mub_btreed_cursor cursor;
  std::vector<mub_btreed_node *> up, down;
  for (auto *node = mub_btreed_cursor_first(&cursor, &copy); node; node = mub_btreed_cursor_next(&cursor))
    up.push_back(node);
  for (auto *node = mub_btreed_cursor_last(&cursor, &copy); node; node = mub_btreed_cursor_prev(&cursor))
    down.push_back(node);
  EXPECT_TRUE(std::ranges::is_sorted(up, {}, &mub_btreed_node::key) && up.size() == kCount);
  EXPECT_TRUE(std::equal(up.begin(), up.end(), down.rbegin(), down.rend()));
}

// A leaf that could not be split when it was full has more children than a new node has room for.
TEST(BTreeOfNumbers, OvergrownLeavesAreSplitOrStayAsTheyAre) {
  mub_test::for_every_allocation([](auto refused_in) {
    TreeOfNumbers tree(2);
    std::vector<void *> blocks(200);  // so that records need no allocation
    for (void *&block : blocks) block = mub_pool_new(tree.node_pool);
    for (void *block : blocks) mub_pool_free(tree.node_pool, block);
    for (uint32_t i = 1; i <= 200; ++i) {
      // The table may grow, but the split that follows is refused.
      for (int64_t allowed = 0, added = 0; added == 0; ++allowed) {
        ASSERT_LT(allowed, 10);
        mub_test::arm_fuse(allowed, mub_test::Blow::kOnce);
        added = mub_btreed_insert(&tree, i, 1);
        mub_test::disarm_fuse();
      }
    }
    ASSERT_EQ(tree.root.children.count, 200);
    const bool is_refused = refused_in([&] { mub_btreed_split(&tree, &tree.root); });
    EXPECT_EQ(tree.root.children.count, is_refused ? 200 : 2);
    EXPECT_EQ(tree.entry_pool->live_count, is_refused ? 0 : 2);
    const char *what = nullptr;
    EXPECT_EQ(mub_btreed_verify(&tree, &what), 1) << what;
  });
}

// A node keeps the offset of its key if that has the same bytes as the key of its last child.
TEST(BTreeOfBytes, KeysWithTheSameBytesKeepTheirOffsets) {
  for (const int which : {0, 1, 2}) {
    const char *last_key = which == 0 ? "zk25" : "zK25";
    Tree tree;
    tree.nocase = which == 2 ? 1 : 0;
    for (int i = 10; i < 50; ++i) tree.add(("k" + std::to_string(i)).data(), -1);
    tree.add(last_key, -1);
    auto *leaf = mub_btree_first_entry(&tree.root);
    const uint32_t own = leaf->key_offset, other = mub_btree_node_get(&tree, last_key, -1)->key_offset + 1;
    leaf->key_offset = other;
    mub_btree_set_name(&tree, leaf);
    EXPECT_EQ(leaf->key_offset, which == 1 ? own : other);
  }
}

// A split half without records keeps its place in walks and searches, and accepts records.
TEST(BTreeParts, EmptyHalvesAcceptRecords) {
  Tree tree;
  auto *greatest = tree.add("b", -1);
  mub_btree_split(&tree, &tree.root);
  mub_btree_split(&tree, mub_btree_first_entry(&tree.root));
  EXPECT_EQ(mub_btree_node_bfind(&tree, "a", 1), greatest);
  auto *least = tree.add("a", -1);
  EXPECT_TRUE(least->next == greatest && greatest->prev == least);
  EXPECT_EQ(mub_btree_node_next(&tree, least), greatest);
  mub_btree_cursor cursor;
  EXPECT_EQ(mub_btree_cursor_seek(&cursor, &tree, "c", 1), nullptr);
  EXPECT_EQ(mub_btree_cursor_prev(&cursor), greatest);
  auto *empty = mub_btree_entry_new(&tree, 0);
  empty->parent = &tree.root;
  mub_arrays_append(&tree.root.children, reinterpret_cast<uintptr_t>(empty));
  EXPECT_EQ(mub_btree_node_bfind(&tree, "c", 1), greatest) << "there is no leaf after it";
}

// The upper half of a split is not in its parent's table, so it has no neighbours there. If it splits in
// turn, the new half is inserted into the table at its place in key order.
TEST(BTreeParts, HalvesThatNoParentListsAcceptRecords) {
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

// An inner node that a caller has emptied refuses keys, and is passed over where offsets are lowered.
TEST(BTreeParts, EmptiedInnerNodesRefuseKeys) {
  Tree tree;
  for (int i = 1000; i < 2000; ++i) tree.add(std::to_string(i).data(), 4);
  auto *inner = reinterpret_cast<mub_btree_entry *>(tree.root.children.items[0]);
  ASSERT_GT(inner->level, 0);
  const mub_arrays children = std::exchange(inner->children, {});
  EXPECT_EQ(mub_btree_insert(&tree, "0", 1, 1), 0);
  EXPECT_EQ(mub_btree_remove(&tree, "1999", 4), 0u);
  EXPECT_TRUE(tree.count == 999 && mub_btree_find(&tree, "1998", 4) == 1);
  inner->children = children;
  EXPECT_EQ(mub_btree_find(&tree, "1000", 4), 1);
}

// The names of the nodes below are lowered with the records, but not that of the given node.
TEST(BTreeParts, OffsetsAreLoweredBelowTheGivenNodeOnly) {
  Tree tree;
  for (int i = 1000; i < 1100; ++i) tree.add(std::to_string(i).data(), 4);
  auto *first = mub_btree_first_entry(&tree.root), *last = mub_btree_last_entry(&tree.root);
  const auto offset_in = [](const mub_btree_entry *leaf) {
    return reinterpret_cast<mub_btree_node *>(leaf->children.items[1])->key_offset;
  };
  const uint32_t first_offset = offset_in(first), last_offset = offset_in(last), name = last->key_offset;
  mub_btree_adjust_t(&tree, last, 0, 4);
  EXPECT_TRUE(offset_in(first) == first_offset && offset_in(last) == last_offset - 4);
  EXPECT_EQ(last->key_offset, name);
  mub_btree_adjust_t(&tree, &tree.root, first_offset + 1, 4);
  EXPECT_TRUE(offset_in(first) == first_offset && offset_in(last) == last_offset - 8);
  EXPECT_EQ(last->key_offset, name - 4);
}

// The table of a node is allocated once, with room for the record that splits it.
TEST(BTreeParts, TablesOfFullNodesDoNotGrow) {
  TreeOfNumbers tree(1);
  for (uint32_t key = 0; key < 32; ++key) mub_btreed_insert(&tree, key, 1);
  EXPECT_EQ(tree.root.level, 1);
  EXPECT_EQ(mub_btreed_first_entry(&tree.root)->children.capacity, 32);
}

// A tree of one record and the maximum number of levels is walked, cloned and emptied without recursion.
TEST(BTreeParts, DegenerateTreesUseABoundedStack) {
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
  EXPECT_EQ(mub_btreed_verify(&tree, nullptr) + mub_btreed_verify(&copy, nullptr), 2);
  EXPECT_EQ(mub_btreed_get(&tree, 1), 1u);
  EXPECT_EQ(mub_btreed_remove(&copy, 1), 1u);
  EXPECT_EQ(copy.root.level, 0);
}

}  // namespace
