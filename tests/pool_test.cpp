#include "mub_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

#include "support/fuse.h"
#include "support/random.h"

using mub_test::Fuse;
using mub_test::Random;

namespace {

struct Pool : mub_pool {
  explicit Pool(int64_t size_bytes) {
    mub_pool_init(this);
    block_size = size_bytes;
  }
  ~Pool() { mub_pool_term(this); }
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;

  std::vector<void *> take(int count) {
    std::vector<void *> blocks;
    for (int i = 0; i < count; ++i) blocks.push_back(mub_pool_new(this));
    return blocks;
  }
  std::vector<void *> walk() {
    std::vector<void *> blocks;
    mub_pool_iter *iter = mub_pool_iter_new(this);
    for (void *b = mub_pool_iter_first(iter); b != nullptr; b = mub_pool_iter_next(iter)) blocks.push_back(b);
    mub_pool_iter_free(iter);
    return blocks;
  }
};

TEST(Pool, HandsOutZeroedBlocksOfChunksOfSixteen) {
  Pool pool(40);
  const auto blocks = pool.take(17);
  EXPECT_EQ(pool.blocks_per_chunk, 16);
  EXPECT_EQ(pool.chunk_count, 2);
  EXPECT_EQ(pool.chunk_used, 1);
  EXPECT_EQ(pool.chunk_capacity, 4);
  EXPECT_EQ(pool.live_count, 17);
  EXPECT_EQ(blocks[0], pool.chunks[0]);
  EXPECT_EQ(static_cast<char *>(blocks[15]) - static_cast<char *>(blocks[0]), 600);
  EXPECT_EQ(blocks[16], pool.chunks[1]);
  const char zeros[640] = {};
  EXPECT_EQ(std::memcmp(pool.chunks[0], zeros, 640), 0);
}

TEST(Pool, WithoutABlockSizeHandsOutNothing) {
  Pool pool(0);
  EXPECT_EQ(mub_pool_new(&pool), nullptr);
  EXPECT_EQ(pool.blocks_per_chunk, 0);
  EXPECT_EQ(mub_pool_map(&pool), nullptr);
  pool.block_size = -8;
  EXPECT_EQ(mub_pool_new(&pool), nullptr);
  pool.block_size = INT64_MAX / 2;
  EXPECT_EQ(mub_pool_new(&pool), nullptr);
  EXPECT_EQ(pool.live_count, 0);
}

TEST(Pool, ReusesTheBlockReleasedLastAsItWasLeft) {
  Pool pool(8);
  const auto blocks = pool.take(3);
  std::memset(blocks[1], 0x5A, 8);
  mub_pool_free(&pool, blocks[0]);
  mub_pool_free(&pool, blocks[1]);
  mub_pool_free(&pool, nullptr);
  EXPECT_EQ(pool.live_count, 1);
  EXPECT_EQ(mub_pool_new(&pool), blocks[1]);
  EXPECT_EQ(*static_cast<char *>(blocks[1]), 0x5A);
  EXPECT_EQ(mub_pool_new(&pool), blocks[0]);
  EXPECT_EQ(pool.live_count, 3);
}

TEST(Pool, FreeStackSpansPages) {
  Pool pool(8);
  auto blocks = pool.take(17);
  for (void *block : blocks) mub_pool_free(&pool, block);
  EXPECT_EQ(pool.free_count, 2);
  EXPECT_EQ(pool.free_used, 1);
  std::reverse(blocks.begin(), blocks.end());
  for (void *block : blocks) EXPECT_EQ(mub_pool_from_empty(&pool), block);
  EXPECT_EQ(pool.free_count, 1);
  EXPECT_EQ(pool.free_used, 0);
  EXPECT_EQ(mub_pool_from_empty(&pool), nullptr);
  EXPECT_EQ(pool.free_count, 0);
  EXPECT_EQ(pool.free_used, -1);
}

TEST(Pool, TablesGrowByHalfTheirCountAndAtLeastFour) {
  Pool pool(8);
  std::vector<int64_t> capacities;
  for (int i = 0; i < 20 * 16; ++i) {
    mub_pool_new(&pool);
    if (capacities.empty() || capacities.back() != pool.chunk_capacity)
      capacities.push_back(pool.chunk_capacity);
  }
  // 8 + 8/2 = 12, 12 + 12/2 = 18 rounded up to 20.
  EXPECT_EQ(capacities, (std::vector<int64_t>{4, 8, 12, 20}));
  mub_pool_expand(&pool.free_used);
  EXPECT_EQ(pool.free_capacity, 4);
  EXPECT_EQ(pool.free_pages[3], nullptr);
  mub_pool_expand(&pool.free_used);
  EXPECT_EQ(pool.free_capacity, 4);
}

TEST(Pool, WalksLiveBlocksInOrder) {
  Pool pool(24);
  auto blocks = pool.take(40);
  for (const size_t i : {39u, 2u, 16u, 15u}) {
    mub_pool_free(&pool, blocks[i]);
    blocks[i] = nullptr;
  }
  blocks.erase(std::remove(blocks.begin(), blocks.end(), nullptr), blocks.end());
  EXPECT_EQ(pool.walk(), blocks);
  mub_pool_empty(&pool);
  EXPECT_TRUE(pool.walk().empty());
  EXPECT_EQ(mub_pool_iter_next(nullptr), nullptr);
}

TEST(Pool, TranslatesAddresses) {
  Pool pool(32);
  pool.take(100);
  mub_pool_chunk *map = mub_pool_map(&pool);
  for (int64_t i = 1; i < pool.chunk_count; ++i) EXPECT_LT(map[i - 1].base, map[i].base);
  for (int64_t chunk = 0; chunk < pool.chunk_count; ++chunk) {
    for (const int64_t offset : {0, 1, 511}) {
      int64_t found = -1;
      void *block = static_cast<char *>(pool.chunks[chunk]) + offset;
      const int index = mub_pool_get_addr(&pool, map, block, &found);
      EXPECT_EQ(index, chunk);
      EXPECT_EQ(found, offset);
      EXPECT_EQ(mub_pool_set_addr(&pool, index, found), block);
    }
  }
  int64_t offset = 77;
  EXPECT_EQ(mub_pool_get_addr(&pool, map, reinterpret_cast<void *>(map[0].base - 1), &offset), -1);
  EXPECT_EQ(mub_pool_get_addr(&pool, map, nullptr, &offset), -1);
  EXPECT_EQ(mub_pool_get_addr(&pool, nullptr, pool.chunks[0], &offset), -1);
  EXPECT_EQ(offset, 77);
  EXPECT_EQ(mub_pool_set_addr(&pool, -1, 8), nullptr);
  mub_pool_umap(map);
}

TEST(Pool, FindsChunksBeyondFourGibibytesExactlyButInTheMapByTheLow32Bits) {
  const mub_pool_chunk map[] = {{2, 0x100000000}, {0, 0x100001000}, {1, 0x7F0000000000}};
  mub_pool pool = {};
  pool.chunk_count = 3;
  int64_t offset = 0;
  const auto at = [](uint64_t address) { return reinterpret_cast<const void *>(address); };
  EXPECT_EQ(mub_pool_get_addr(&pool, map, at(0x100001008), &offset), 0);
  EXPECT_EQ(offset, 8);
  EXPECT_EQ(mub_pool_get_addr(&pool, map, at(0x7F0000000010), &offset), 1);
  EXPECT_EQ(mub_pool_bfind(map, 2, at(0x100000FFF)), 0);
  EXPECT_EQ(mub_pool_bfind(map, 2, at(0x100001000)), 1);
  EXPECT_EQ(mub_pool_bfind(map, 2, at(0xFFFFFFFF)), -1);
  EXPECT_EQ(mub_pool_bfind(map, 0, at(0x100001000)), -1);
  // The same low 32 bits as the second chunk, far away from it.
  EXPECT_EQ(mub_pool_bfind(map, 2, at(0x900001000)), 1);
}

TEST(Pool, CloneHoldsTheSameBytesAndTheTranslatedFreeStack) {
  Pool pool(16);
  const auto blocks = pool.take(50);
  for (size_t i = 0; i < blocks.size(); ++i) std::memset(blocks[i], static_cast<int>(i), 16);
  for (const size_t i : {7u, 30u, 49u}) mub_pool_free(&pool, blocks[i]);
  Pool copy(99);
  copy.take(3);
  mub_pool_chunk *map = mub_pool_map(&pool);
  mub_pool_clone(&pool, map, &copy);
  EXPECT_EQ(copy.block_size, 16);
  EXPECT_EQ(copy.live_count, 47);
  EXPECT_EQ(copy.chunk_used, pool.chunk_used);
  EXPECT_EQ(copy.free_capacity, pool.free_capacity);
  const auto twin = [&](void *block) {
    int64_t offset = 0;
    const int chunk = mub_pool_get_addr(&pool, map, block, &offset);
    return mub_pool_set_addr(&copy, chunk, offset);
  };
  const auto live = pool.walk();
  const auto copied = copy.walk();
  ASSERT_EQ(copied.size(), live.size());
  for (size_t i = 0; i < live.size(); ++i) {
    EXPECT_EQ(copied[i], twin(live[i]));
    EXPECT_EQ(std::memcmp(copied[i], live[i], 16), 0);
  }
  for (const size_t i : {49u, 30u, 7u}) EXPECT_EQ(mub_pool_new(&copy), twin(blocks[i]));
  mub_pool_umap(map);
}

TEST(Pool, CloneOfABlockForeignToTheSourceIsNeverHandedOut) {
  Pool pool(16);
  pool.take(2);
  char foreign[16];
  mub_pool_free(&pool, foreign);
  Pool copy(16);
  mub_pool_chunk *map = mub_pool_map(&pool);
  mub_pool_clone(&pool, map, &copy);
  mub_pool_umap(map);
  EXPECT_EQ(mub_pool_new(&copy), static_cast<char *>(copy.chunks[0]) + 32);
}

TEST(Pool, AgreesWithAModel) {
  Random random(3);
  Pool pool(24);
  std::set<void *> live;
  std::vector<void *> stack;
  for (int step = 0; step < 20000; ++step) {
    // Long runs in one direction, so that many pages fill and drain.
    const bool taking = live.empty() || random.below(100) < (step / 500 % 2 == 0 ? 80 : 20);
    if (taking) {
      void *block = mub_pool_new(&pool);
      if (!stack.empty()) {
        ASSERT_EQ(block, stack.back());
        stack.pop_back();
      }
      ASSERT_TRUE(live.insert(block).second);
      std::memset(block, 1, 24);
    } else {
      auto it =
          std::next(live.begin(), random.below(std::min<int64_t>(20, static_cast<int64_t>(live.size()))));
      mub_pool_free(&pool, *it);
      stack.push_back(*it);
      live.erase(it);
    }
    ASSERT_EQ(pool.live_count, static_cast<int64_t>(live.size()));
  }
  const auto walked = pool.walk();
  EXPECT_EQ(std::set<void *>(walked.begin(), walked.end()), live);
  EXPECT_EQ(walked.size(), live.size());
}

TEST(Pool, SurvivesFailedAllocations) {
  mub_test::for_every_allocation([](const Fuse &fuse) {
    Pool pool(32);
    std::set<void *> blocks;
    int64_t refused = 0;
    fuse.blows_in([&] {
      for (int i = 0; i < 100; ++i) {
        void *block = mub_pool_new(&pool);
        block == nullptr ? ++refused : static_cast<int64_t>(blocks.insert(block).second);
      }
    });
    EXPECT_EQ(pool.live_count, 100 - refused);
    EXPECT_EQ(static_cast<int64_t>(blocks.size()), 100 - refused);
    EXPECT_EQ(static_cast<int64_t>(pool.walk().size()), 100 - refused);
  });
  mub_test::for_every_allocation([](const Fuse &fuse) {
    Pool pool(32);
    const auto blocks = pool.take(40);
    fuse.blows_in([&] {
      for (void *block : blocks) mub_pool_free(&pool, block);
    });
    EXPECT_EQ(pool.live_count, 0);
    std::set<void *> again;
    for (int i = 0; i < 80; ++i) again.insert(mub_pool_new(&pool));
    EXPECT_EQ(again.size(), 80u) << "a block came out twice";
  });
}

TEST(Pool, CloneIsEmptyWhenMemoryRunsOut) {
  mub_test::for_every_allocation([](const Fuse &fuse) {
    Pool pool(32);
    const auto blocks = pool.take(40);
    for (int i = 0; i < 20; ++i) mub_pool_free(&pool, blocks[static_cast<size_t>(i)]);
    Pool copy(32);
    mub_pool_chunk *map = mub_pool_map(&pool);
    const bool failed = fuse.blows_in([&] { mub_pool_clone(&pool, map, &copy); });
    EXPECT_EQ(copy.live_count, failed ? 0 : 20);
    EXPECT_EQ(static_cast<int64_t>(copy.walk().size()), copy.live_count);
    EXPECT_NE(mub_pool_new(&copy), nullptr);
    mub_pool_umap(map);
  });
}

TEST(Pool, IteratorThatCannotBeMadeIsAWalkWithoutBlocks) {
  mub_test::for_every_allocation([](const Fuse &fuse) {
    Pool pool(32);
    const auto blocks = pool.take(4);
    mub_pool_free(&pool, blocks[0]);
    mub_pool_iter *iter = nullptr;
    const bool failed = fuse.blows_in([&] { iter = mub_pool_iter_new(&pool); });
    EXPECT_EQ(iter == nullptr, failed);
    EXPECT_EQ(mub_pool_iter_first(iter), failed ? nullptr : blocks[1]);
    mub_pool_iter_free(iter);
  });
}

}  // namespace
