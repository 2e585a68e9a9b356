#include "mub_pool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

using mub_test::Pool;

namespace {

using Blocks = std::vector<void *>;

Blocks walk(mub_pool &pool) {
  Blocks blocks;
  mub_pool_iter *iter = mub_pool_iter_new(&pool);
  for (void *b = mub_pool_iter_first(iter); b != nullptr; b = mub_pool_iter_next(iter)) blocks.push_back(b);
  mub_pool_iter_free(iter);
  return blocks;
}

Pool &operator<<(Pool &copy, const mub_pool &source) {
  mub_pool_chunk *map = mub_pool_map(&source);
  mub_pool_clone(&source, map, &copy);
  mub_pool_umap(map);
  return copy;
}

TEST(Pool, CarvesZeroedChunksUnderATableThatGrowsByHalf) {
  Pool pool(40);
  const char zeros[640] = {};
  std::set<int64_t> capacities;
  for (int i = 0; i < 20 * 16; ++i) {
    void *block = mub_pool_new(&pool);
    ASSERT_EQ(block, static_cast<char *>(pool.chunks[i / 16]) + i % 16 * 40);
    ASSERT_TRUE(i % 16 != 0 || std::memcmp(block, zeros, sizeof zeros) == 0);
    capacities.insert(pool.chunk_capacity);
  }
  // 8 + 8/2 = 12, 12 + 12/2 = 18 rounded up to 20.
  EXPECT_EQ(capacities, (std::set<int64_t>{4, 8, 12, 20}));
  EXPECT_EQ(pool.blocks_per_chunk, 16);
  for (int twice = 0; twice < 2; ++twice) mub_pool_expand(&pool.free_used);
  EXPECT_EQ(pool.free_capacity, 4);
  mub_pool_empty(&pool);
  EXPECT_EQ(pool.live_count + pool.chunk_count + pool.chunk_capacity + pool.free_capacity, 0);
  EXPECT_NE(mub_pool_new(&pool), nullptr);
}

TEST(Pool, WithoutAUsableBlockSizeHandsOutNothing) {
  for (const int64_t size_bytes : {int64_t{0}, int64_t{-8}, INT64_MAX / 2}) {
    Pool pool(size_bytes);
    EXPECT_EQ(mub_pool_new(&pool), nullptr);
    EXPECT_EQ(pool.blocks_per_chunk, size_bytes == 0 ? 0 : 16);
  }
}

TEST(Pool, FreeStackOpensAndDropsPages) {
  Pool pool(8);
  Blocks blocks(17);
  for (void *&block : blocks) block = mub_pool_new(&pool);
  for (void *block : blocks) mub_pool_free(&pool, block);
  mub_pool_free(&pool, nullptr);
  const auto top = [&] { return std::make_pair(pool.free_count, pool.free_used); };
  EXPECT_EQ(top(), std::make_pair(int64_t{2}, int64_t{1}));
  for (size_t i = 17; i-- > 0;) EXPECT_EQ(mub_pool_from_empty(&pool), blocks[i]);
  EXPECT_EQ(top(), std::make_pair(int64_t{1}, int64_t{0}));
  EXPECT_EQ(mub_pool_from_empty(&pool), nullptr);
  EXPECT_EQ(top(), std::make_pair(int64_t{0}, int64_t{-1}));
}

TEST(Pool, FindsChunksExactlyButInTheMapByTheLow32Bits) {
  if (sizeof(void *) < 8) GTEST_SKIP() << "the low 32 bits are all";
  const auto at = [](int64_t address) { return reinterpret_cast<void *>(static_cast<intptr_t>(address)); };
  void *chunks[] = {at(0x100001000), at(0x900002000), at(0x100000000)};
  mub_pool pool = {};
  pool.chunks = chunks;
  pool.chunk_count = 3;
  mub_pool_chunk *map = mub_pool_map(&pool);
  // An address, its chunk and offset, and what bfind makes of it among the first two.
  const int64_t places[][4] = {{0xFFFFFFFF, -1, 77, -1}, {0x100000FFF, 2, 0xFFF, 0},
                               {0x100001000, 0, 0, 1},   {0x900001000, 0, 0x800000000, 1},
                               {0x900002008, 1, 8, 1},   {0, -1, 77, 0}};
  for (const auto &[address, chunk, offset, position] : places) {
    int64_t found = 77;
    EXPECT_EQ(mub_pool_get_addr(&pool, nullptr, at(address), &found), -1);
    EXPECT_EQ(mub_pool_get_addr(&pool, map, at(address), &found), chunk);
    EXPECT_EQ(found, offset);
    EXPECT_EQ(mub_pool_set_addr(&pool, static_cast<int>(chunk), found), chunk < 0 ? nullptr : at(address));
    EXPECT_EQ(mub_pool_bfind(map, 2, at(address)), position);
  }
  EXPECT_EQ(mub_pool_bfind(map, 0, nullptr), -1);
  mub_pool_umap(map);
}

TEST(Pool, CloneOfABlockForeignToTheSourceIsNeverHandedOut) {
  Pool pool(16);
  char foreign[16];
  for (void *freed : {mub_pool_new(&pool), static_cast<void *>(foreign)}) mub_pool_free(&pool, freed);
  Pool copy(16);
  copy << pool;
  EXPECT_EQ(mub_pool_new(&copy), static_cast<char *>(copy.chunks[0]) + 16);
  EXPECT_EQ(mub_pool_new(&copy), copy.chunks[0]);
}

// Blocks are known by the order in which they were carved, and each holds its number.
struct Model {
  size_t carved = 0;
  std::set<size_t> live;
  std::vector<size_t> stack;

  // Where a block is, in the pool itself or in a clone.
  static uint64_t *at(const mub_pool &pool, size_t i) {
    return static_cast<uint64_t *>(pool.chunks[i / 16]) + i % 16 * 3;
  }
  void expect_same(mub_pool &pool) const {
    Blocks expected;
    for (const size_t i : live) {
      expected.push_back(at(pool, i));
      ASSERT_EQ(*at(pool, i), i);
    }
    ASSERT_EQ(walk(pool), expected);
    ASSERT_EQ(pool.live_count, static_cast<int64_t>(live.size()));
  }
  void take_from(mub_pool &pool) {
    auto *block = static_cast<uint64_t *>(mub_pool_new(&pool));
    const size_t i = stack.empty() ? carved++ : stack.back();
    ASSERT_EQ(block, at(pool, i));
    ASSERT_EQ(*block, stack.empty() ? 0 : i) << "fresh blocks are zero, others as they were left";
    if (!stack.empty()) stack.pop_back();
    *block = i;
    live.insert(i);
  }
  void give_to(mub_pool &pool, int64_t nth) {
    stack.push_back(*std::next(live.begin(), nth));
    mub_pool_free(&pool, at(pool, stack.back()));
    live.erase(stack.back());
  }
};

TEST(Pool, AgreesWithAModelAndSoDoesItsClone) {
  mub_test::Random random(3);
  Pool pool(24);
  Model model;
  Pool copy(99);
  for (int step = 0; step < 20000; ++step) {
    const auto live = static_cast<int64_t>(model.live.size());
    // Long runs in one direction, so that many pages fill and drain.
    const bool taking = live == 0 || random.below(100) < (step / 500 % 2 == 0 ? 80 : 20);
    ASSERT_NO_FATAL_FAILURE(taking ? model.take_from(pool) : model.give_to(pool, random.below(live)));
    if (step % 1999 != 0) continue;
    ASSERT_NO_FATAL_FAILURE(model.expect_same(pool));
    ASSERT_NO_FATAL_FAILURE(model.expect_same(copy << pool));
    Model of_copy = model;
    while (!of_copy.stack.empty()) ASSERT_NO_FATAL_FAILURE(of_copy.take_from(copy));
  }
}

TEST(Pool, SurvivesFailedAllocations) {
  mub_test::for_every_allocation([](const mub_test::Fuse &fuse) {
    Pool pool(32);
    Pool copy(32);
    std::set<void *> taken;
    size_t walked = 0;
    const bool failed = fuse.blows_in([&] {
      for (int i = 0; i < 100; ++i) taken.insert(mub_pool_new(&pool));
      taken.erase(nullptr);
      for (int i = 0; i < 40 && !taken.empty(); ++i) {
        mub_pool_free(&pool, *taken.begin());
        taken.erase(taken.begin());
      }
      copy << pool;
      walked = walk(pool).size();
    });
    EXPECT_EQ(pool.live_count, static_cast<int64_t>(taken.size()));
    EXPECT_TRUE(copy.live_count == pool.live_count || (failed && copy.live_count + copy.chunk_capacity == 0));
    EXPECT_TRUE(walked >= taken.size() || (failed && walked == 0)) << "dropped blocks are walked, too";
    const Blocks copied = walk(copy);
    taken.insert(copied.begin(), copied.end());
    for (mub_pool *each : {static_cast<mub_pool *>(&pool), static_cast<mub_pool *>(&copy)}) {
      for (int i = 0; i < 80; ++i) EXPECT_TRUE(taken.insert(mub_pool_new(each)).second) << "came out twice";
    }
  });
}

}  // namespace
