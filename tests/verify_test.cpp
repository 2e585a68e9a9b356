// The _verify functions find what calls of the low layer and writes to fields can break. The random programs
// of tests/interpreter/ check after each step that they find nothing in an intact record.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "mub.hpp"

namespace {

// Remembers records and fields that are about to be changed, and restores them at its end.
struct Kept {
  ~Kept() {
    for (auto restore = restores.rbegin(); restore != restores.rend(); ++restore) (*restore)();
  }
  template <class T>
  T &operator()(T &changed) {
    restores.push_back([&changed, old = changed] { changed = old; });
    return changed;
  }
  std::vector<std::function<void()>> restores;
};

// A part of the sentence that names a fault, and how the fault is made.
template <class R>
struct Damage {
  const char *sentence;
  std::function<void(R &, Kept &)> make;
};
template <class R>
using Damages = std::vector<Damage<R>>;

void expect_fault(const auto &owner, const char *sentence) {
  const char *what = nullptr;
  EXPECT_FALSE(owner.verify(&what));
  const std::string found = what != nullptr ? what : "nothing";
  EXPECT_TRUE(found.find(sentence) != std::string::npos) << "found: " << found << ", expected: " << sentence;
}
template <class Owner>
void expect_found(Owner &owner, const std::initializer_list<Damages<typename Owner::record_type>> &all) {
  const char *what = nullptr;
  for (const auto &some : all) {
    for (const auto &damage : some) {
      ASSERT_TRUE(owner.verify(&what)) << what << " before: " << damage.sentence;
      Kept kept;
      damage.make(*owner.c(), kept);
      expect_fault(owner, damage.sentence);
    }
  }
  EXPECT_TRUE(owner.verify());
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
  using R = mub_pool;
  const char *count = "number of chunks or pages", *table = "table of chunks", *used = "used part";
  const char *size = "block size", *space = "address space", *live = "number of live blocks";
  const char *null = "NULL", *foreign = "not that of a block";
  const Damages<R> fields = {
      {count, [](R &r, Kept &k) { k(r.chunk_count) = -1; }},
      {count, [](R &r, Kept &k) { k(r.free_count) = r.free_capacity + 1; }},
      {table, [](R &r, Kept &k) { k(r.chunks) = nullptr; }},
      {table, [](R &r, Kept &k) { k(r) = {8, 16, 0, -1, 0, 0, nullptr, -1, 0, 0, r.free_pages}; }},
      {used, [](R &r, Kept &k) { k(r.chunk_used) = 0; }},
      {used, [](R &r, Kept &k) { k(r.chunk_used) = 17; }},
      {used, [](R &r, Kept &k) { k(r.free_used) = -1; }},
      {used, [](R &r, Kept &k) { k(r.free_count) = 0; }},
      {"fewer than 16", [](R &r, Kept &k) { k(r.blocks_per_chunk) = 15; }},
      {size, [](R &r, Kept &k) { k(r.block_size) = 0; }},
      {size, [](R &r, Kept &k) { k(r.block_size) = -8; }},
      {space, [](R &r, Kept &k) { k(r.block_size) = INT64_MAX / 40; }},
      {space, [](R &r, Kept &k) { k(r) = {8, INT64_MAX, 0, -1, 0, 0, nullptr, 4, 2, 4, r.free_pages}; }},
      {"more free blocks", [](R &r, Kept &k) { k(r.chunk_count) = 1; }},
      {live, [](R &r, Kept &k) { ++k(r.live_count); }},
      {null, [](R &r, Kept &k) { k(r.chunks[1]) = nullptr; }},
      {"after the last chunk", [](R &r, Kept &k) { k(r.chunks[3]) = r.chunks[0]; }},
      {null, [](R &r, Kept &k) { k(r.free_pages[0]) = nullptr; }},
  };
  // As mub_pool_free() does, which may report the block at once.
  const auto give = [](R &r, Kept &k, void *block) {
    k(r);
    static_cast<void **>(r.free_pages[r.free_count - 1])[r.free_used++] = block;
    --r.live_count;
  };
  const Damages<R> free_stack = {
      {"free stack twice", [&](R &r, Kept &k) { give(r, k, blocks[0]); }},
      {foreign, [&](R &r, Kept &k) { give(r, k, &k); }},
      {foreign, [&](R &r, Kept &k) { give(r, k, reinterpret_cast<void *>(8)); }},
      {foreign, [&](R &r, Kept &k) { give(r, k, blocks[1] + 4); }},
      {foreign, [&](R &r, Kept &k) { give(r, k, blocks[39] + 8); }},  // not taken yet
  };
  expect_found(pool, {fields, free_stack});
}

// More blocks than are compared at a time, in chunks of which some are in two such parts.
TEST(Verify, FindsBlocksReturnedTwiceToLargePools) {
  mub::pool pool(8);
  pool.c()->blocks_per_chunk = 1000;
  std::vector<void *> blocks;
  while (blocks.size() < 50000) blocks.push_back(pool.allocate());
  for (void *block : blocks) mub_pool_free(pool.c(), block);
  using R = mub_pool;
  const auto address = [&](size_t i) -> void *& {
    return static_cast<void **>(pool.c()->free_pages[i / 1000])[i % 1000];
  };
  expect_found(pool, {{
                         {"twice", [&](R &, Kept &k) { k(address(0)) = address(49999); }},
                         {"twice", [&](R &, Kept &k) { k(address(16384)) = address(16383); }},
                         {"not that of a block", [&](R &r, Kept &k) { k(address(30000)) = &r; }},
                     }});
}

// ---- buffers and arrays

template <class Text>
void expect_damaged_buffers_found(Text text, bool is_terminated) {
  using R = typename Text::record_type;
  Damages<R> all = {
      {"length is negative or exceeds", [](R &r, Kept &k) { k(r.length) = -1; }},
      {"length is negative or exceeds", [](R &r, Kept &k) { k(r.length) = r.capacity + 1; }},
      {"no block", [](R &r, Kept &k) { k(r.data) = nullptr; }},
      {"after the capacity", [](R &r, Kept &k) { k(r.data[r.capacity]) = 1; }},
  };
  if (is_terminated) all.push_back({"after the content", [](R &r, Kept &k) { k(r.data[r.length]) = 1; }});
  expect_found(text, {all});
}
TEST(Verify, FindsDamagedBuffers) {
  expect_damaged_buffers_found(mub::string("text"), true);
  expect_damaged_buffers_found(mub::wchar(u"text"), true);
  expect_damaged_buffers_found(mub::stream("text"), false);
  mub::bits bits;
  bits.set(9);
  using R = mub_bits;
  expect_found(bits, {{
                         {"missing, or has no size", [](R &r, Kept &k) { k(r.data) = nullptr; }},
                         {"missing, or has no size", [](R &r, Kept &k) { k(r.size) = 0; }},
                         {"not 0", [](R &r, Kept &k) { k(r.data[r.size]) = 1; }},
                     }});
}

const char *const kMissing = "missing, or has no capacity", *const kCount = "ount is negative, or exceeds";
const char *const kPool = "number of live blocks";

// In the table of an array, or in that of its last words.
template <class R>
Damages<R> damage_of_tables(auto slots) {
  const char *capacity = "capacity is negative, or no multiple of 4";
  return {
      {capacity, [](R &r, Kept &k) { k(r.capacity) = -4; }},
      {capacity, [](R &r, Kept &k) { k(r.capacity) += 2; }},
      {kMissing, [=](R &r, Kept &k) { k(r.*slots) = nullptr; }},
      {kMissing, [](R &r, Kept &k) { k(r.capacity) = 0; }},
      {kCount, [](R &r, Kept &k) { k(r.count) = -1; }},
      {kCount, [](R &r, Kept &k) { k(r.count) = r.capacity + 1; }},
  };
}
TEST(Verify, FindsDamagedArrays) {
  const auto expect = [](auto array, auto slots, auto... key) {
    using R = typename decltype(array)::record_type;
    for (int i = 0; i < 6; ++i) array.append(key..., 0);
    const Damages<R> pool = {{kPool, [](R &r, Kept &k) { k(r.pool->live_count) = INT64_MAX; }}};
    expect_found(array, {damage_of_tables<R>(slots), pool});
  };
  expect(mub::arrayd(mub::value_blocks{8}), &mub_arrayd::entries, 7u);
  expect(mub::arrayx(mub::value_blocks{8}), &mub_arrayx::entries, 7u);
  expect(mub::arrays(mub::value_blocks{8}), &mub_arrays::items);
  expect(mub::array(mub::value_blocks{8}), &mub_array::entries, "key");
  mub::arrayt words;
  for (int i = 0; i < 6; ++i) words.append(1);
  expect_found(words, {damage_of_tables<mub_arrayt>(&mub_arrayt::tail)});
}

const char *const kKeyOutside = "outside the key stream", *const kKeyLength = "key stream is not intact";

TEST(Verify, FindsDamagedKeysOfArrays) {
  mub::array array;
  for (const std::string &key :
       {std::string("first"), std::string(), std::string(70000, 'x'), std::string("last")})
    array.append(key, 1);
  mub_array_entry *const entries = array.c()->entries;
  using R = mub_array;
  const char *overlap = "Two keys overlap";
  expect_found(array, {{
                          {kKeyLength, [](R &r, Kept &k) { k(r.keys.length) = -1; }},
                          {kKeyOutside, [](R &r, Kept &k) { --k(r.keys.length); }},
                          {kKeyOutside, [&](R &, Kept &k) { k(entries[0].key_length) = UINT32_MAX; }},
                          {overlap, [&](R &, Kept &k) { ++k(entries[0].key_length); }},
                          {overlap, [&](R &, Kept &k) { --k(entries[3].key_offset); }},
                      }});
  std::swap(entries[0], entries[2]);
  --entries[2].key_length;
  EXPECT_TRUE(array.verify()) << "any order and gaps are valid";
}

// ---- containers with pools

const char *const kWrongCount = "not the number of linked", *const kNotFilled = "overlap, or the key stream";
const char *const kBlockSize = "smaller than the entries";

template <class R>
Damages<R> damage_of_pools() {
  return {
      {kPool, [](R &r, Kept &k) { k(r.entry_pool->live_count) = INT64_MAX; }},
      {kPool, [](R &r, Kept &k) { k(r.value_pool->live_count) = INT64_MAX; }},
      {kPool,
       [](R &r, Kept &k) {
         k(r.value_pool->live_count) = INT64_MAX;
         k(r.owns_value_pool) = 0;  // as that of an external pool
       }},
  };
}
// Forgets the blocks of a pool, as if it had been emptied.
void forget_blocks(mub_pool *pool, Kept &kept) {
  const int64_t size = pool->block_size;
  mub_pool_init(&kept(*pool));
  pool->block_size = size;
}
// If the items of a pool are not counted, or are not blocks in use.
template <class R>
Damages<R> damage_of_blocks(auto pool) {
  const auto with_another_block = [=](R &r, Kept &k) {
    k(*(r.*pool));
    mub_pool_new(r.*pool);
    ++k(r.count);
  };
  return {
      {kWrongCount, [](R &r, Kept &k) { --k(r.count); }},
      {kWrongCount, with_another_block},
      {"fewer blocks in use", [](R &r, Kept &k) { k(r.count) += 32; }},
      {kBlockSize, [=](R &r, Kept &k) { k((r.*pool)->block_size) = 1; }},
      {"fewer blocks in use", [=](R &r, Kept &k) { forget_blocks(r.*pool, k); }},
  };
}
template <class R>
Damages<R> damage_of_keys(auto *entry) {
  return {
      {kKeyOutside, [=](R &, Kept &k) { k(entry->key_offset) = UINT32_MAX; }},
      {kKeyOutside, [](R &r, Kept &k) { k(r.keys.length) = 1; }},
      {kKeyLength, [](R &r, Kept &k) { k(r.keys.length) = -1; }},
      {kNotFilled, [](R &r, Kept &k) { ++k(r.keys.length); }},
  };
}

// Tables of 4 buckets with two keys.
template <class Table>
void expect_damaged_buckets_found(auto... keys) {
  Table table(mub::value_blocks{8});
  for (const auto &key : {keys...}) ASSERT_TRUE(table.insert(key, 0));
  using R = typename Table::record_type;
  using Entry = typename Table::entry_type;
  uint64_t *const buckets = table.c()->buckets.items;
  uint64_t &bucket = *std::find_if(buckets, buckets + 4, [](uint64_t word) { return word != 0; });
  uint64_t &other = buckets[&bucket == buckets ? 1 : 0];
  const char *power = "power of 2";
  const Damages<R> links = {
      {power, [](R &r, Kept &k) { k(r.buckets.count) = 3; }},
      {power, [](R &r, Kept &k) { k(r.buckets.count) = 2; }},
      {kWrongCount, [](R &r, Kept &k) { k(r.buckets.count) = 0; }},
      {kCount, [](R &r, Kept &k) { k(r.buckets.count) = 2 * r.buckets.capacity; }},
      {kMissing, [](R &r, Kept &k) { k(r.buckets.items) = nullptr; }},
      {kWrongCount, [](R &r, Kept &k) { k(r.count) = -1; }},
      {kWrongCount, [&](R &, Kept &k) { k(bucket) = 0; }},
      {kWrongCount, [&](R &, Kept &k) { k(at<Entry>(bucket)->next) = at<Entry>(bucket); }},
      {"wrong bucket", [&](R &, Kept &k) { std::swap(k(bucket), k(other)); }},
      {"no pool", [](R &r, Kept &k) { k(r.entry_pool) = nullptr; }},
  };
  expect_found(table, {damage_of_pools<R>(), damage_of_blocks<R>(&R::entry_pool), links});
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
  const Damages<mub_hash> hashes = {
      {"hash of an entry", [](mub_hash &r, Kept &k) { k(r.nocase) = 1; }},
      {"hash of an entry", [=](mub_hash &, Kept &k) { ++k(second->hash); }},
      {"hash of an entry", [=](mub_hash &, Kept &k) { k(second->key_length) = 0; }},
  };
  expect_found(texts, {damage_of_keys<mub_hash>(second), hashes});
  mub::hashd numbers;
  ASSERT_TRUE(numbers.insert(1, 1) && numbers.insert(5, 5));
  auto *last = numbers.find(5);
  expect_found(numbers, {{{"chain twice", [=](mub_hashd &, Kept &k) { k(last->key) = 1; }}}});
}

// 100 keys below a root on level 1.
TEST(Verify, FindsDamagedBTrees) {
  const auto expect = [](auto tree, auto key_of, auto damage_of) {
    using R = typename decltype(tree)::record_type;
    for (int i = 100; i < 200; ++i) ASSERT_TRUE(tree.insert(key_of(i), 0));
    auto *const root = &tree.c()->root;
    using Node = std::remove_pointer_t<decltype(root)>;
    uint64_t *const nodes = root->children.items;
    auto *const leaf = at<Node>(nodes[0]);
    uint64_t *const records = leaf->children.items;
    const char *parent = "root has a parent", *empty = "no children", *order = "do not ascend";
    const Damages<R> links = {
        {parent, [=](R &, Kept &k) { k(root->parent) = leaf; }},
        {parent, [=](R &, Kept &k) { k(root->level) = -1; }},
        {"level of a child", [=](R &, Kept &k) { k(root->level) = 2; }},
        {"parent of a node", [=](R &, Kept &k) { k(leaf->parent) = leaf; }},
        {"child is NULL", [=](R &, Kept &k) { k(nodes[1]) = 0; }},
        {"child is NULL", [=](R &, Kept &k) { k(records[1]) = 0; }},
        {empty, [=](R &, Kept &k) { k(root->children.count) = 0; }},
        {empty, [=](R &, Kept &k) { k(leaf->children.count) = 0; }},
        {kMissing, [=](R &, Kept &k) { k(leaf->children.items) = nullptr; }},
        {"not refer to the pool", [=](R &, Kept &k) { k(leaf->children.pool) = nullptr; }},
        {order, [=](R &, Kept &k) { std::swap(k(records[1]), k(records[2])); }},
        {order, [=](R &, Kept &k) { k(records[1]) = records[0]; }},
        {order, [=](R &, Kept &k) { k(nodes[1]) = nodes[0]; }},
        {"name of a node", [=](R &, Kept &k) { --k(leaf->children.count); }},
        {"no pool", [](R &r, Kept &k) { k(r.node_pool) = nullptr; }},
        {kPool, [](R &r, Kept &k) { k(r.node_pool->live_count) = INT64_MAX; }},
    };
    const Damages<R> nodes_in_pool = {
        {kBlockSize,
         [](R &r, Kept &k) {
           k(r.entry_pool->block_size) = 1;
           k(r.owns_entry_pool) = 0;
         }},
        {"fewer blocks in use", [](R &r, Kept &k) { forget_blocks(r.entry_pool, k); }},
    };
    expect_found(tree, {damage_of_pools<R>(), nodes_in_pool, damage_of_blocks<R>(&R::node_pool), links,
                        damage_of(tree)});
  };
  const auto bytes = [](mub::btree &tree) {
    Damages<mub_btree> all = damage_of_keys<mub_btree>(tree.find("150"));
    auto *const leaf = mub_btree_first_entry(&tree.c()->root);
    all.push_back({"name of a node", [=](mub_btree &, Kept &k) { ++k(leaf->key_offset); }});
    return all;
  };
  const auto numbers = [](auto &tree) {
    using R = typename std::decay_t<decltype(tree)>::record_type;
    return Damages<R>{{"do not ascend", [](R &r, Kept &k) { k(r.key_type) = 0; }}};
  };
  const auto number = [](int i) { return static_cast<uint32_t>(i); };
  expect(
      mub::btree(mub::value_blocks{8}), [](int i) { return std::to_string(i); }, bytes);
  expect(mub::btreed(mub::value_blocks{8}), number, numbers);
  expect(mub::btreex(mub::value_blocks{8}), number, numbers);
}

template <class R>
Damages<R> damage_of_lists(auto *first, auto *second) {
  const char *prev = "prev of an entry", *tail = "not the tail";
  return {
      {prev, [=](R &, Kept &k) { k(second->prev) = second; }},
      {prev, [=](R &, Kept &k) { k(second->next) = first; }},
      {tail, [=](R &r, Kept &k) { k(r.tail) = first; }},
      {tail, [](R &r, Kept &k) { k(r.head) = nullptr; }},
      {"no pool", [](R &r, Kept &k) { k(r.entry_pool) = nullptr; }},
  };
}
TEST(Verify, FindsDamagedLists) {
  const auto expect = [](auto &list, const auto &more) {
    using R = typename std::decay_t<decltype(list)>::record_type;
    auto *const first = list.c()->head;
    expect_found(list, {damage_of_pools<R>(), damage_of_blocks<R>(&R::entry_pool),
                        damage_of_lists<R>(first, first->next), more});
  };
  mub::list texts(mub::value_blocks{8});
  mub::lists values(mub::value_blocks{8});
  mub::listx blocks(mub::value_blocks{8});
  for (const char *key : {"1st", "2nd", "3rd"}) ASSERT_TRUE(texts.push_back(key, 0) && values.push_back(0));
  while (blocks.size() < 70) ASSERT_TRUE(blocks.push_back(0));
  auto *const last = texts.c()->tail;
  Damages<mub_list> keys = damage_of_keys<mub_list>(last);
  keys.push_back({kNotFilled, [=](mub_list &, Kept &k) { k(last->key_offset) = 0; }});
  keys.push_back({kNotFilled, [=](mub_list &, Kept &k) { k(last->key_offset) = 4; }});
  expect(texts, keys);
  expect(values, Damages<mub_lists>());
  const char *count = "count of a block";
  const auto set_count = [](int64_t held) { return [=](mub_listx &r, Kept &k) { k(r.tail->count) = held; }; };
  expect(blocks, Damages<mub_listx>{{count, set_count(0)}, {count, set_count(-1)}, {count, set_count(33)}});
}

// A root with two children, of which each has two.
TEST(Verify, FindsDamagedTrees) {
  mub::tree tree(mub::value_blocks{8});
  auto *const root = tree.root(), *const a = tree.append(root, 0), *const b = tree.append(root, 0);
  auto *const below_a = tree.append(a, 0), *const last = tree.append(a, 0),
              *const below_b = tree.append(b, 0);
  using R = mub_tree;
  const char *parent = "parent of an entry", *ring = "not closed", *top = "root has a parent";
  const Damages<R> links = {
      {top, [=](R &, Kept &k) { k(root->parent) = a; }},
      {top, [=](R &, Kept &k) { k(root->next) = a; }},
      {top, [=](R &, Kept &k) { k(root->prev) = a; }},
      {parent, [=](R &, Kept &k) { k(below_a->parent) = b; }},
      {parent, [=](R &, Kept &k) { k(a->first_child) = below_b; }},
      {parent, [=](R &, Kept &k) { k(last->first_child) = a; }},
      {ring, [=](R &, Kept &k) { k(last->next) = nullptr; }},
      {ring, [=](R &, Kept &k) { k(last->next) = last; }},
      {ring, [=](R &, Kept &k) { k(last->prev) = last; }},
      {ring, [=](R &, Kept &k) { k(below_a->prev) = below_a; }},
  };
  expect_found(tree, {damage_of_pools<R>(), links});
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
  using R = mub_bitree;
  const char *parent = "parent of an entry", *twice = "linked twice", *cycle = "a cycle";
  const Damages<R> links = {
      {parent, [=](R &, Kept &k) { k(root->parent) = left; }},
      {parent, [=](R &, Kept &k) { k(equal->parent) = nullptr; }},
      {parent, [=](R &, Kept &k) { k(below->parent) = left; }},
      {parent, [=](R &, Kept &k) { k(below->left) = left; }},
      {parent, [=](R &, Kept &k) { k(low->equal) = root; }},
      {parent, [=](R &, Kept &k) { k(top_equal->equal) = left; }},
      {cycle, [=](R &, Kept &k) { k(top_equal->equal) = root; }},
      {cycle, [=](R &, Kept &k) { k(last->equal) = left; }},
      {cycle, [=](R &, Kept &k) { k(last->equal) = equal; }},
      {cycle, [=](R &, Kept &k) { k(last->equal) = last; }},
      {twice, [=](R &, Kept &k) { k(root->right) = left; }},
      {twice, [=](R &, Kept &k) { k(root->right) = last; }},
      {twice, [=](R &, Kept &k) { k(last->equal) = right; }},
  };
  expect_found(tree, {damage_of_pools<R>(), links});
}

// ---- entries that were released with their pool

TEST(Verify, DoesNotReadReleasedEntries) {
  const auto expect_unread = [](auto &owner, mub_pool *pool) {
    mub_pool_empty(pool);
    for (const int64_t count : {owner.c()->count, int64_t{0}}) {
      Kept kept;
      kept(owner.c()->count) = count;
      EXPECT_FALSE(owner.verify());
    }
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

// ---- the low layer

TEST(Verify, AcceptsRecordsAgainWhenTheCallerOfTheLowLayerIsDone) {
  mub::hash table;
  ASSERT_TRUE(table.insert("key", 1) && table.insert("other", 2));
  auto *removed = mub_hash_remove_t(table.c(), "key", 3);
  expect_fault(table, kWrongCount);
  --table.c()->count;
  EXPECT_TRUE(table.verify());
  mub_pool &pool = *table.c()->entry_pool;
  mub_pool_free(&pool, removed);
  EXPECT_TRUE(table.verify());
  // As if returned twice, which mub_pool_free() may report at once.
  static_cast<void **>(pool.free_pages[0])[pool.free_used++] = removed;
  --pool.live_count;
  EXPECT_FALSE(table.verify());
  mub::btreed tree;
  for (uint32_t key = 0; key < 40; ++key) ASSERT_TRUE(tree.insert(key, 1));
  auto *leaf = mub_btreed_first_entry(&tree.c()->root);
  auto *upper = mub_btreed_split_node(tree.c(), leaf);
  expect_fault(tree, kWrongCount);
  mub_arrays_insert_at(&leaf->parent->children, 1, mub::to_word(upper));
  EXPECT_TRUE(tree.verify());
  mub::lists list;
  ASSERT_TRUE(list.push_back(1));
  mub_lists_remove_all_entry(list.c());
  expect_fault(list, "fewer blocks in use");
  list.clear();
  EXPECT_TRUE(list.verify());
  mub::bitree pair;
  auto *head = pair.make();
  pair.add(head, 0, pair.make());
  pair.add(pair.root(), 1, head);
  expect_fault(pair, "parent of an entry");
  mub_bitree_set_parent(head);
  EXPECT_TRUE(pair.verify());
}

}  // namespace
