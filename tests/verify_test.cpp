// The _verify functions find what calls of the low layer and writes to fields can break. The random programs
// of tests/interpreter/ check after each step that they find nothing in an intact record.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mub.hpp"

namespace {

// Exchanges fields with the values that damage their record; a second time, it restores them.
struct Damage {
  std::vector<std::function<void()>> exchanges;
};
template <class T>
Damage set(T &field, std::type_identity_t<T> value) {
  return {{[&field, value]() mutable { std::swap(field, value); }}};
}
Damage operator+(Damage one, const Damage &other) {
  one.exchanges.insert(one.exchanges.end(), other.exchanges.begin(), other.exchanges.end());
  return one;
}

// Each damage is reported by a sentence that contains `part`, and nothing is reported before and after.
void expect_found(const auto &owner, const std::string &part, Damage damage, const auto &...more) {
  const char *what = nullptr;
  ASSERT_TRUE(owner.verify(&what)) << what << " before: " << part;
  for (auto &exchange : damage.exchanges) exchange();
  EXPECT_FALSE(owner.verify(&what));
  const std::string found = what != nullptr ? what : "nothing";
  EXPECT_TRUE(found.find(part) != std::string::npos) << "found: " << found << ", expected: " << part;
  for (auto &exchange : damage.exchanges) exchange();
  EXPECT_TRUE(owner.verify());
  if constexpr (sizeof...(more) > 0) expect_found(owner, part, more...);
}

template <class T>
T *at(uint64_t word) {
  return mub::to_pointer<T>(word);
}

// ---- pools

// 40 blocks in 3 chunks, of which 20 were returned, on 2 pages.
TEST(Verify, FindsDamagedPools) {
  mub::pool pool(8);
  std::vector<char *> blocks;
  while (blocks.size() < 40) blocks.push_back(static_cast<char *>(pool.allocate()));
  for (size_t i = 0; i < 20; ++i) mub_pool_free(pool.c(), blocks[i]);
  mub_pool &r = *pool.c();
  expect_found(pool, "number of chunks or pages", set(r.chunk_count, -1),
               set(r.free_count, r.free_capacity + 1));
  expect_found(pool, "table of chunks", set(r.chunks, nullptr),
               set(r, {8, 16, 0, -1, 0, 0, nullptr, -1, 0, 0, r.free_pages}));
  expect_found(pool, "used items", set(r.chunk_used, 0), set(r.chunk_used, 17), set(r.free_used, -1),
               set(r.free_count, 0));
  expect_found(pool, "fewer than 16", set(r.blocks_per_chunk, 15));
  expect_found(pool, "block size", set(r.block_size, 0), set(r.block_size, -8));
  expect_found(pool, "address space", set(r.block_size, INT64_MAX / 40),
               set(r, {8, INT64_MAX, 0, -1, 0, 0, nullptr, 4, 2, 4, r.free_pages}));
  expect_found(pool, "more free blocks", set(r.chunk_count, 1));
  expect_found(pool, "number of live blocks", set(r.live_count, r.live_count + 1));
  expect_found(pool, "NULL", set(r.chunks[1], nullptr), set(r.free_pages[0], nullptr));
  expect_found(pool, "after the last chunk", set(r.chunks[3], r.chunks[0]));
  // As mub_pool_free() does, which may report the block at once.
  const auto give = [&](void *block) {
    void *&slot = static_cast<void **>(r.free_pages[r.free_count - 1])[r.free_used];
    return set(slot, block) + set(r.free_used, r.free_used + 1) + set(r.live_count, r.live_count - 1);
  };
  expect_found(pool, "free stack twice", give(blocks[0]));
  expect_found(pool, "not that of a block", give(&pool), give(reinterpret_cast<void *>(8)),
               give(blocks[1] + 4), give(blocks[39] + 8));  // the last is not taken yet
}

// More blocks than are compared at a time, in chunks of which some are in two such parts.
TEST(Verify, FindsBlocksReturnedTwiceToLargePools) {
  mub::pool pool(8);
  pool.c()->blocks_per_chunk = 1000;
  std::vector<void *> blocks;
  while (blocks.size() < 50000) blocks.push_back(pool.allocate());
  for (void *block : blocks) mub_pool_free(pool.c(), block);
  const auto address = [&](size_t i) -> void *& {
    return static_cast<void **>(pool.c()->free_pages[i / 1000])[i % 1000];
  };
  expect_found(pool, "twice", set(address(0), address(49999)), set(address(16384), address(16383)));
  expect_found(pool, "not that of a block", set(address(30000), &pool));
}

// ---- buffers and arrays

TEST(Verify, FindsDamagedBuffers) {
  const auto expect = [](auto text, bool is_terminated) {
    auto &r = *text.c();
    expect_found(text, "length is negative or exceeds", set(r.length, -1), set(r.length, r.capacity + 1));
    expect_found(text, "no block", set(r.data, nullptr));
    expect_found(text, "after the capacity", set(r.data[r.capacity], 1));
    if (is_terminated) expect_found(text, "after the content", set(r.data[r.length], 1));
  };
  expect(mub::string("text"), true);
  expect(mub::wchar(u"text"), true);
  expect(mub::stream("text"), false);
  mub::bits bits;
  bits.set(9);
  mub_bits &r = *bits.c();
  expect_found(bits, "missing, or has no size", set(r.data, nullptr), set(r.size, 0));
  expect_found(bits, "not 0", set(r.data[r.size], 1));
}

const char *const kMissing = "missing, or has no capacity", *const kPool = "number of live blocks";

TEST(Verify, FindsDamagedArrays) {
  const auto expect = [](auto array, auto slots, auto... key) {
    for (int i = 0; i < 6; ++i) array.append(key..., 0);
    auto &r = *array.c();
    expect_found(array, "capacity is negative, or no multiple of 4", set(r.capacity, -4),
                 set(r.capacity, r.capacity + 2));
    expect_found(array, kMissing, set(r.*slots, nullptr), set(r.capacity, 0));
    expect_found(array, "count is negative, or exceeds", set(r.count, -1), set(r.count, r.capacity + 1));
    if constexpr (requires { r.pool; }) expect_found(array, kPool, set(r.pool->live_count, INT64_MAX));
  };
  expect(mub::arrayd(mub::value_blocks{8}), &mub_arrayd::entries, 7u);
  expect(mub::arrayx(mub::value_blocks{8}), &mub_arrayx::entries, 7u);
  expect(mub::arrays(mub::value_blocks{8}), &mub_arrays::items);
  expect(mub::array(mub::value_blocks{8}), &mub_array::entries, "key");
  expect(mub::arrayt(), &mub_arrayt::tail);
}

const char *const kKeyOutside = "outside the key stream", *const kKeyLength = "key stream is not intact";

TEST(Verify, FindsDamagedKeysOfArrays) {
  mub::array array;
  for (const size_t length : {5u, 0u, 70000u, 4u}) array.append(std::string(length, 'x'), 1);
  mub_stream &keys = array.c()->keys;
  mub_array_entry *const entries = array.c()->entries;
  expect_found(array, kKeyLength, set(keys.length, -1));
  expect_found(array, kKeyOutside, set(keys.length, keys.length - 1), set(entries[0].key_length, UINT32_MAX));
  expect_found(array, "Two keys overlap", set(entries[0].key_length, 6),
               set(entries[3].key_offset, entries[3].key_offset - 1));
  std::swap(entries[0], entries[2]);
  --entries[2].key_length;
  EXPECT_TRUE(array.verify()) << "any order and gaps are valid";
}

// ---- containers with pools

const char *const kWrongCount = "not the number of linked", *const kNoPool = "pool that the container needs";
const char *const kBlockSize = "smaller than the entries", *const kFewBlocks = "fewer blocks in use";

mub_pool emptied(const mub_pool &pool) {
  mub_pool empty;
  mub_pool_init(&empty);
  empty.block_size = pool.block_size;
  return empty;
}
void expect_damaged_pools_found(auto &owner) {
  auto &r = *owner.c();
  const Damage live = set(r.value_pool->live_count, INT64_MAX);
  expect_found(owner, kPool, set(r.entry_pool->live_count, INT64_MAX), live);
  expect_found(owner, kPool, live + set(r.owns_value_pool, 0));  // as that of an external pool
}
// If the items of a pool are not counted, or are not blocks in use.
void expect_damaged_blocks_found(auto &owner, mub_pool &pool) {
  auto &r = *owner.c();
  const Damage another =
      set(pool.live_count, pool.live_count + 1) + set(pool.chunk_used, pool.chunk_used + 1);
  expect_found(owner, kWrongCount, set(r.count, r.count - 1), set(r.count, r.count + 1) + another);
  expect_found(owner, kFewBlocks, set(r.count, r.count + 32), set(pool, emptied(pool)));
  expect_found(owner, kBlockSize, set(pool.block_size, 1));
}
void expect_damaged_keys_found(auto &owner, auto &entry) {
  mub_stream &keys = owner.c()->keys;
  expect_found(owner, kKeyOutside, set(entry.key_offset, UINT32_MAX));
  expect_found(owner, kKeyLength, set(keys.length, -1));
  expect_found(owner, "overlap, or the key stream", set(keys.length, keys.length + 1));
}

// Tables of 4 buckets with two keys.
template <class Table>
void expect_damaged_buckets_found(auto... keys) {
  Table table(mub::value_blocks{8});
  for (const auto &key : {keys...}) ASSERT_TRUE(table.insert(key, 0));
  auto &r = *table.c();
  uint64_t *const buckets = r.buckets.items;
  uint64_t &bucket = *std::find_if(buckets, buckets + 4, [](uint64_t word) { return word != 0; });
  uint64_t &other = buckets[&bucket == buckets ? 1 : 0];
  auto *const entry = at<typename Table::entry_type>(bucket);
  expect_damaged_pools_found(table);
  expect_damaged_blocks_found(table, *r.entry_pool);
  expect_found(table, "power of 2", set(r.buckets.count, 3), set(r.buckets.count, 2));
  expect_found(table, kMissing, set(r.buckets.items, nullptr));
  expect_found(table, kWrongCount, set(r.count, -1), set(bucket, 0), set(entry->next, entry));
  expect_found(table, "wrong bucket", set(bucket, other) + set(other, bucket));
  expect_found(table, kNoPool, set(r.entry_pool, nullptr));
}
TEST(Verify, FindsDamagedHashTables) {
  using FourWords = std::array<uint32_t, 4>;
  expect_damaged_buckets_found<mub::hash>("first", "second");
  expect_damaged_buckets_found<mub::hashd>(3u, 8u);
  expect_damaged_buckets_found<mub::hashx>(uint64_t{3}, uint64_t{8});
  expect_damaged_buckets_found<mub::hasht>(FourWords{1, 2, 3, 4}, FourWords{1, 2, 3, 5});
  mub::hash texts;
  ASSERT_TRUE(texts.insert("First", 1) && texts.insert("second", 2));
  auto *second = texts.find("second");
  expect_damaged_keys_found(texts, *second);
  expect_found(texts, "hash of an entry", set(second->hash, second->hash + 1));
  mub_pool_free(texts.c()->entry_pool, mub_hash_remove_t(texts.c(), "second", 6));
  --texts.c()->count;
  void *&free_block = *static_cast<void **>(texts.c()->entry_pool->free_pages[0]);
  expect_found(texts, "not that of a block", set(free_block, &texts));
  mub::hashd numbers;
  ASSERT_TRUE(numbers.insert(1, 1) && numbers.insert(5, 5));
  expect_found(numbers, "chain twice", set(numbers.find(5)->key, 1));
}

// 100 keys below a root on level 1.
void expect_damaged_nodes_found(auto tree, auto key_of) {
  for (int i = 100; i < 200; ++i) ASSERT_TRUE(tree.insert(key_of(i), 0));
  auto &r = *tree.c();
  auto &root = r.root;
  uint64_t *const nodes = root.children.items;
  auto &leaf = *at<std::decay_t<decltype(root)>>(nodes[0]);
  uint64_t *const records = leaf.children.items;
  expect_damaged_pools_found(tree);
  expect_damaged_blocks_found(tree, *r.node_pool);
  expect_found(tree, kPool, set(r.node_pool->live_count, INT64_MAX));
  expect_found(tree, kNoPool, set(r.node_pool, nullptr));
  expect_found(tree, kBlockSize, set(r.entry_pool->block_size, 1) + set(r.owns_entry_pool, 0));
  expect_found(tree, kFewBlocks, set(*r.entry_pool, emptied(*r.entry_pool)));
  expect_found(tree, "root has a parent", set(root.parent, &leaf), set(root.level, -1));
  expect_found(tree, "level of a child", set(root.level, 2));
  expect_found(tree, "parent of an entry", set(leaf.parent, &leaf));
  expect_found(tree, "child is NULL", set(nodes[1], 0), set(records[1], 0));
  expect_found(tree, "no children", set(root.children.count, 0), set(leaf.children.count, 0));
  expect_found(tree, kMissing, set(leaf.children.items, nullptr));
  expect_found(tree, "not refer to the pool", set(leaf.children.pool, nullptr));
  expect_found(tree, "do not ascend", set(records[1], records[2]) + set(records[2], records[1]),
               set(records[1], records[0]), set(nodes[1], nodes[0]));
  expect_found(tree, "key of an entry", set(leaf.children.count, leaf.children.count - 1));
  if constexpr (requires { r.keys; }) {
    expect_damaged_keys_found(tree, *tree.find("150"));
    expect_found(tree, "key of an entry", set(leaf.key_offset, leaf.key_offset + 1));
  }
}
TEST(Verify, FindsDamagedBTrees) {
  const auto number = [](int i) { return static_cast<uint32_t>(i); };
  expect_damaged_nodes_found(mub::btree(mub::value_blocks{8}), [](int i) { return std::to_string(i); });
  expect_damaged_nodes_found(mub::btreed(mub::value_blocks{8}), number);
  expect_damaged_nodes_found(mub::btreex(mub::value_blocks{8}), number);
}

TEST(Verify, FindsDamagedLists) {
  const auto expect = [](auto &list) {
    auto &r = *list.c();
    auto *const first = r.head, *const second = first->next;
    expect_damaged_pools_found(list);
    expect_damaged_blocks_found(list, *r.entry_pool);
    expect_found(list, "prev of an entry", set(second->prev, second), set(second->next, first));
    expect_found(list, "not the tail", set(r.tail, first), set(r.head, nullptr));
    expect_found(list, kNoPool, set(r.entry_pool, nullptr));
  };
  mub::list texts(mub::value_blocks{8});
  mub::lists values(mub::value_blocks{8});
  mub::listx blocks(mub::value_blocks{8});
  for (const char *key : {"1st", "2nd", "3rd"}) ASSERT_TRUE(texts.push_back(key, 0) && values.push_back(0));
  while (blocks.size() < 70) ASSERT_TRUE(blocks.push_back(0));
  expect(texts);
  expect(values);
  expect(blocks);
  auto &last = *texts.c()->tail;
  expect_damaged_keys_found(texts, last);
  expect_found(texts, "overlap, or the key stream", set(last.key_offset, 0), set(last.key_offset, 4));
  int64_t &held = blocks.c()->tail->count;
  expect_found(blocks, "count of a block", set(held, 0), set(held, -1), set(held, 33));
}

// A root with two children, of which each has children.
TEST(Verify, FindsDamagedTrees) {
  mub::tree tree(mub::value_blocks{8});
  auto *const root = tree.root(), *const a = tree.append(root, 0), *const b = tree.append(root, 0);
  auto *const first = tree.append(a, 0), *const last = tree.append(a, 0), *const below_b = tree.append(b, 0);
  expect_damaged_pools_found(tree);
  expect_found(tree, "root has a parent", set(root->parent, a), set(root->next, a), set(root->prev, a));
  expect_found(tree, "parent of an entry", set(first->parent, b), set(a->first_child, below_b),
               set(last->first_child, a));
  expect_found(tree, "not closed", set(last->next, nullptr), set(last->next, last), set(first->prev, first));
}

// An entry on each side of the root, with equals and entries below.
TEST(Verify, FindsDamagedBinaryTrees) {
  mub::bitree tree(mub::value_blocks{8});
  const auto add = [&](mub_bitree_entry *to, int side) {
    auto *entry = tree.make();
    tree.add(to, side, entry);
    return entry;
  };
  auto *const root = tree.root(), *const left = add(root, -1), *const right = add(root, 1);
  auto *const equal = add(left, 0), *const last = add(equal, 0), *const below = add(equal, 1);
  auto *const top_equal = add(root, 0), *const low = add(add(top_equal, -1), 1);
  expect_damaged_pools_found(tree);
  expect_found(tree, "parent of an entry", set(root->parent, left), set(equal->parent, nullptr),
               set(below->left, left), set(low->equal, root), set(top_equal->equal, left));
  expect_found(tree, "a cycle", set(top_equal->equal, root), set(last->equal, left), set(last->equal, equal),
               set(last->equal, last));
  expect_found(tree, "linked twice", set(root->right, left), set(root->right, last), set(last->equal, right));
}

// ---- entries that were released with their pool

TEST(Verify, DoesNotReadReleasedEntries) {
  const auto expect_unread = [](auto &owner, mub_pool *pool) {
    mub_pool_empty(pool);
    EXPECT_FALSE(owner.verify());
    const auto count = std::exchange(owner.c()->count, 0);
    EXPECT_FALSE(owner.verify());
    owner.c()->count = count;
  };
  mub::lists list;
  mub::hashx table;
  mub::btreed tree;
  for (uint32_t i = 0; i < 100; ++i)
    ASSERT_TRUE(list.push_back(i) && table.insert(i, i) && tree.insert(i, i));
  mub_btreed_entry &root = tree.c()->root;
  std::vector<mub_arrays> tables;  // of the leaves, which are released before them
  for (int64_t i = 0; i < root.children.count; ++i)
    tables.push_back(at<mub_btreed_entry>(root.children.items[i])->children);

  expect_unread(list, list.c()->entry_pool);
  expect_unread(table, table.c()->entry_pool);
  expect_unread(tree, tree.c()->node_pool);
  expect_unread(tree, tree.c()->entry_pool);

  list.c()->head = list.c()->tail = nullptr;
  std::fill_n(table.c()->buckets.items, table.c()->buckets.count, 0);
  for (mub_arrays &leaf : tables) {
    leaf.pool = nullptr;
    mub_arrays_term(&leaf);
  }
  root.level = 0;
  root.children.count = 0;
  list.c()->count = table.c()->count = tree.c()->count = 0;
}

}  // namespace
