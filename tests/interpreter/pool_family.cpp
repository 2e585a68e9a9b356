// Block pools under programs.
#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <utility>

#include "interpreter/roles.h"
#include "mub_pool.h"

namespace mub_test {

// Blocks are known by the order in which they were carved; these two are not of the pool.
constexpr int64_t kForeign = -1, kNone = -2;
char foreign[8];

// A pool with its model.
struct Slot {
  mub_pool pool = {};
  int64_t live = 0, carved = 0;
  std::string bytes;           // of all chunks
  std::set<int64_t> taken;     // of the blocks that were carved
  std::vector<int64_t> freed;  // the others, as a stack
  int64_t pages = 0;           // of the stack; the last one may be empty
  int64_t chunk_capacity = 0, free_capacity = 0;

  void *at(int64_t block) const {
    if (block < 0) return block == kForeign ? foreign : nullptr;
    const int64_t chunk = block / pool.blocks_per_chunk, place = block % pool.blocks_per_chunk;
    return static_cast<char *>(pool.chunks[chunk]) + place * pool.block_size;
  }
  int64_t chunks() const { return carved == 0 ? 0 : (carved - 1) / pool.blocks_per_chunk + 1; }
  int64_t free_used() const { return std::ssize(freed) - (pages - 1) * pool.blocks_per_chunk; }
  void begin(int64_t block_size, int64_t blocks_per_chunk) {
    std::memset(&pool, 77, sizeof pool);
    mub_pool_init(&pool);
    EXPECT_EQ(pool.block_size + pool.blocks_per_chunk, 0);
    pool.block_size = block_size;
    pool.blocks_per_chunk = blocks_per_chunk;
  }
  // Takes over a model, as the record already has.
  void become(Slot model) {
    model.pool = pool;
    *this = std::move(model);
  }
  int64_t pop() {
    if (pages > 0 && free_used() == 0) --pages;
    if (pages == 0) return kNone;
    const int64_t block = freed.back();
    freed.pop_back();
    if (block >= 0) taken.insert(block);
    return block;
  }
  // Makes room for one more page in a table; out of memory it may have stayed as it was.
  static void open(int64_t &capacity, int64_t count, int64_t actual) {
    if (count == capacity && actual != capacity) capacity += (std::max<int64_t>(count / 2, 4) + 3) / 4 * 4;
  }

  void compare() {
    ASSERT_EQ(pool.live_count, live);
    ASSERT_EQ(pool.chunk_count, chunks());
    ASSERT_EQ(pool.chunk_used, carved == 0 ? -1 : carved - (chunks() - 1) * pool.blocks_per_chunk);
    ASSERT_EQ(pool.free_count, pages);
    ASSERT_EQ(pool.free_used, pages == 0 ? -1 : free_used());
    ASSERT_EQ(std::pair(pool.chunk_capacity, pool.free_capacity), std::pair(chunk_capacity, free_capacity));
    for (int64_t i = 0; i < chunks(); ++i) {
      const auto size = static_cast<size_t>(pool.blocks_per_chunk * pool.block_size);
      ASSERT_EQ(std::memcmp(pool.chunks[i], &bytes[static_cast<size_t>(i) * size], size), 0) << "chunk " << i;
    }
  }
};

template <>
struct WorldOf<mub_pool> : World {
  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (Slot &slot : slots) slot.begin(8 * program.below(4), program.below(20));
  }
  ~WorldOf() {
    for (Slot &slot : slots) mub_pool_term(&slot.pool);
  }
  void compare() {
    for (Slot &slot : slots) ASSERT_NO_FATAL_FAILURE(slot.compare());
  }
  Slot &slot() { return slots[program.below(3)]; }
  // A block that is taken, or one that is not of the pool, or none.
  int64_t block(const Slot &slot) {
    if (slot.taken.empty() || program.one_in(16)) return program.one_in(2) ? kForeign : kNone;
    return *std::next(slot.taken.begin(), program.below(std::ssize(slot.taken)));
  }
  Slot slots[3];
};
using Pools = WorldOf<mub_pool>;

void begin_again(Pools &world) {
  Slot &slot = world.slot();
  (world.program.one_in(2) ? mub_pool_term : mub_pool_empty)(&slot.pool);
  slot.become({});
  slot.compare();
  if (world.program.one_in(2)) slot.begin(slot.pool.block_size, world.program.below(20));
}
// Runs of blocks, so that chunks and pages fill.
void take(Pools &world) {
  Slot &slot = world.slot();
  mub_pool &pool = slot.pool;
  const auto size = static_cast<size_t>(pool.block_size);
  for (int64_t i = world.program.below(30); i >= 0 && !::testing::Test::HasFailure(); --i) {
    const int64_t per_chunk = std::max<int64_t>(pool.blocks_per_chunk, size == 0 ? 0 : 16);
    auto *block = static_cast<char *>(world.call([&] { return mub_pool_new(&pool); }));
    ASSERT_EQ(pool.blocks_per_chunk, per_chunk);
    int64_t taken = size == 0 ? kNone : slot.pop();
    if (size > 0 && taken == kNone) {
      const bool needs_chunk = slot.carved % per_chunk == 0;
      if (needs_chunk) slot.open(slot.chunk_capacity, slot.chunks(), pool.chunk_capacity);
      if (needs_chunk && !world.failed)
        slot.bytes.resize(slot.bytes.size() + size * static_cast<size_t>(per_chunk));
      if (!world.failed) slot.taken.insert(taken = slot.carved++);
    }
    ASSERT_EQ(block, slot.at(taken));
    if (block == nullptr) return;
    ++slot.live;
    if (taken < 0) continue;
    // Fresh blocks are zero, others as they were left.
    char *expected = &slot.bytes[static_cast<size_t>(taken) * size];
    EXPECT_EQ(std::string_view(block, size), std::string_view(expected, size));
    std::memset(block, static_cast<int>(world.steps + i), size);
    std::memset(expected, static_cast<int>(world.steps + i), size);
  }
}
void give(Pools &world) {
  Slot &slot = world.slot();
  for (int64_t i = world.program.below(30); i >= 0; --i) {
    const int64_t block = world.block(slot);
    world.call([&] { mub_pool_free(&slot.pool, slot.at(block)); });
    if (block == kNone) continue;
    --slot.live;
    if (slot.pages == 0 || slot.free_used() == slot.pool.blocks_per_chunk) {
      slot.open(slot.free_capacity, slot.pages, slot.pool.free_capacity);
      if (!world.failed) ++slot.pages;
    }
    if (world.failed) continue;
    slot.freed.push_back(block);
    slot.taken.erase(block);
  }
}
void pop(Pools &world) {
  Slot &slot = world.slot();
  EXPECT_EQ(mub_pool_from_empty(&slot.pool), slot.at(slot.pop()));
}
void expand(Pools &world) {
  Slot &slot = world.slot();
  world.call([&] { mub_pool_expand(&slot.pool.free_used); });
  if (!world.failed) slot.open(slot.free_capacity, slot.pool.free_count, INT64_MAX);
}
void swap(Pools &world) {
  Slot &a = world.slot(), &b = world.slot();
  mub_pool_swap(&a.pool, &b.pool);
  const Slot model = a;
  a.become(b);
  b.become(model);
}
// What lies in no chunk is never given out, and without a map nothing that was free is.
void clone(Pools &world) {
  Slot &source = world.slot(), &copy = world.slot();
  mub_pool_chunk *map = world.program.one_in(8) ? nullptr : mub_pool_map(&source.pool);
  const bool has_map = map != nullptr;
  world.call([&] { mub_pool_clone(&source.pool, map, &copy.pool); });
  mub_pool_umap(map);
  if (&source == &copy) return;
  copy.become(world.failed ? Slot() : source);
  EXPECT_EQ(copy.pool.block_size, source.pool.block_size);
  EXPECT_EQ(copy.pool.blocks_per_chunk, source.pool.blocks_per_chunk);
  if (source.pool.chunks == nullptr) copy.freed.clear(), copy.pages = copy.free_capacity = 0;
  for (int64_t &block : copy.freed) {
    if (has_map && block >= 0) continue;
    if (block >= 0) copy.taken.insert(block);
    block = kNone;
  }
}
// The map, and the addresses of blocks by chunk and offset.
void ask_the_map(Pools &world) {
  Slot &slot = world.slot();
  mub_pool_chunk *map = world.call([&] { return mub_pool_map(&slot.pool); });
  EXPECT_EQ(map == nullptr, world.failed || slot.pool.chunks == nullptr);
  EXPECT_EQ(mub_pool_set_addr(&slot.pool, -1, 8), nullptr);
  if (map == nullptr) return;
  const int64_t chunks = slot.chunks();
  for (int64_t i = 0; i < chunks; ++i) {
    EXPECT_EQ(reinterpret_cast<void *>(map[i].base), slot.pool.chunks[map[i].index]);
    EXPECT_EQ(mub_pool_compare(&map[i], &map[0]), i == 0 ? 0 : 1);
    EXPECT_EQ(mub_pool_compare(&map[0], &map[i]), i == 0 ? 0 : -1);
  }
  const int64_t block = world.block(slot), inside = world.program.below(8);
  if (block >= 0) {
    world.read_by_all([&] {
      char *address = static_cast<char *>(slot.at(block)) + inside;
      int64_t offset = 77;
      const int chunk = mub_pool_get_addr(&slot.pool, map, address, &offset);
      EXPECT_EQ(chunk, block / slot.pool.blocks_per_chunk);
      EXPECT_EQ(mub_pool_set_addr(&slot.pool, chunk, offset), address);
      EXPECT_EQ(map[mub_pool_bfind(map, chunks, address)].index, chunk);
    });
  }
  std::reverse(map, map + chunks);
  mub_pool_sort(map, chunks);
  EXPECT_TRUE(std::ranges::is_sorted(map, map + chunks, {}, &mub_pool_chunk::base));
  mub_pool_umap(map);
}
// The blocks that are taken, and those that are free in the order of their addresses.
void walk(Pools &world) {
  Slot &slot = world.slot();
  std::vector<void *> free, sorted(slot.freed.size());
  for (const int64_t block : slot.freed) free.push_back(slot.at(block));
  const int64_t count = std::ssize(free);
  mub_pool_empty_array(&slot.pool, sorted.data());
  mub_pool_empty_sort(free.data(), count);
  EXPECT_EQ(free, sorted);
  EXPECT_TRUE(std::is_sorted(free.begin(), free.end(), std::less<>()));
  for (void *block : free) {
    const int is_later = block == free[0] ? 0 : 1;
    EXPECT_EQ(mub_pool_empty_find(free.data(), count, block), 1);
    EXPECT_EQ(mub_pool_empty_compare(&block, &free[0]), is_later);
    EXPECT_EQ(mub_pool_empty_compare(&free[0], &block), -is_later);
  }
  mub_pool_iter *iter = world.call([&] { return mub_pool_iter_new(&slot.pool); });
  EXPECT_EQ(iter == nullptr, world.failed);
  EXPECT_TRUE(mub_pool_iter_first(nullptr) == nullptr && mub_pool_iter_next(nullptr) == nullptr);
  if (iter == nullptr || slot.carved == 0) return mub_pool_iter_free(iter);
  void *block = mub_pool_iter_first(iter);
  for (const int64_t taken : slot.taken) {
    EXPECT_EQ(block, slot.at(taken));
    EXPECT_EQ(mub_pool_empty_find(free.data(), count, block), 0);
    block = mub_pool_iter_next(iter);
  }
  EXPECT_EQ(block, nullptr);
  mub_pool_iter_free(iter);
}

// steps of mub_pool: begin_again take take take give give pop expand swap clone ask_the_map walk

}  // namespace mub_test

#include "pool_steps.inc"
