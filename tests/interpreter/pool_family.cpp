// Programs for block pools.
#include <algorithm>
#include <set>

#include "interpreter/machine.h"

namespace mub_test {

// Blocks are numbered in the order in which they were first allocated. There is also NULL.
constexpr int64_t kNone = -1;

// A pool with its model.
struct Slot {
  mub_pool pool = {};
  int64_t live = 0, carved = 0;
  std::string bytes;           // in all blocks
  std::set<int64_t> taken;     // blocks in use
  std::vector<int64_t> freed;  // the free stack
  int64_t pages = 0;           // of the free stack; the last one may be empty

  int64_t per_chunk() const { return pool.blocks_per_chunk; }
  void *at(int64_t block) const {
    if (block == kNone) return nullptr;
    return static_cast<char *>(pool.chunks[block / per_chunk()]) + block % per_chunk() * pool.block_size;
  }
  int64_t chunks() const { return carved == 0 ? 0 : (carved - 1) / per_chunk() + 1; }
  int64_t free_used() const { return std::ssize(freed) - (pages - 1) * per_chunk(); }
  void begin(Program &program) {
    std::memset(&pool, 77, sizeof pool);
    mub_pool_init(&pool);
    EXPECT_EQ(pool.block_size + pool.blocks_per_chunk, 0);
    pool.block_size = 4 * program.below(7);  // blocks may share 8 bytes
    pool.blocks_per_chunk = program.below(20);
  }
  // Copies the model of another slot; the record is already a copy.
  void become(const Slot &other) {
    const mub_pool record = pool;
    *this = other;
    pool = record;
  }
  int64_t pop() {
    if (pages > 0 && free_used() == 0) --pages;
    if (pages == 0) return kNone;
    const int64_t block = freed.back();
    freed.pop_back();
    if (block >= 0) taken.insert(block);
    return block;
  }
  int64_t take(bool is_refused) {
    if (pool.block_size == 0) return kNone;
    const int64_t block = pop();
    if (block != kNone || is_refused) return block;
    taken.insert(carved++);
    bytes.resize(static_cast<size_t>(chunks() * per_chunk() * pool.block_size));
    return carved - 1;
  }

  // After a clone without a map, the blocks that are free in its source may be released again.
  bool is_intact() const { return std::max<int64_t>(live, 0) + std::ssize(freed) <= carved; }

  void compare() {
    ASSERT_EQ(pool.live_count, live);
    ASSERT_EQ(pool.chunk_count, chunks());
    ASSERT_EQ(pool.chunk_used, carved == 0 ? -1 : carved - (chunks() - 1) * per_chunk());
    ASSERT_EQ(pool.free_count, pages);
    ASSERT_EQ(pool.free_used, pages == 0 ? -1 : free_used());
    const auto size = static_cast<size_t>(pool.block_size);
    for (const int64_t block : taken)
      ASSERT_EQ(std::memcmp(at(block), &bytes[static_cast<size_t>(block) * size], size), 0) << block;
    expect_intact(mub_pool_verify, pool, is_intact());
  }
};

template <>
struct WorldOf<mub_pool> : World {
  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (Slot &slot : slots) slot.begin(program);
  }
  ~WorldOf() {
    for (Slot &slot : slots) mub_pool_term(&slot.pool);
  }
  void compare() {
    int64_t bytes = 0;
    for (const Slot &slot : slots) bytes += mub_pool_memory_bytes(&slot.pool);
    ASSERT_NO_FATAL_FAILURE(expect_held(bytes));
    for (Slot &slot : slots) ASSERT_NO_FATAL_FAILURE(slot.compare());
  }
  Slot &slot() { return slots[program.below(3)]; }
  // A block in use, or NULL.
  int64_t block(const Slot &slot) {
    if (slot.taken.empty() || program.one_in(16)) return kNone;
    return *std::next(slot.taken.begin(), program.below(std::ssize(slot.taken)));
  }
  Slot slots[3];
};
using Pools = WorldOf<mub_pool>;

void begin_again(Pools &world) {
  Slot &slot = world.slot();
  (world.program.one_in(2) ? mub_pool_term : mub_pool_empty)(&slot.pool);
  slot.become({});
  if (world.program.one_in(2)) slot.begin(world.program);
}
// Allocates many blocks, so that chunks and pages fill up.
void take(Pools &world) {
  Slot &slot = world.slot();
  for (int64_t i = world.program.below(30); i >= 0 && !::testing::Test::HasFailure(); --i) {
    const int64_t per_chunk = std::max<int64_t>(slot.per_chunk(), slot.pool.block_size == 0 ? 0 : 16);
    const void *block = world.call([&] { return mub_pool_new(&slot.pool); });
    ASSERT_EQ(slot.per_chunk(), per_chunk);
    ASSERT_EQ(block, slot.at(slot.take(world.failed)));
    if (block != nullptr) ++slot.live;
  }
}
// Writes to blocks before releasing them, so that the bytes of all chunks are known.
void give(Pools &world) {
  Slot &slot = world.slot();
  const auto size = static_cast<size_t>(slot.pool.block_size);
  for (int64_t i = world.program.below(30); i >= 0; --i) {
    const int64_t block = world.block(slot);
    for (size_t at = 0; block >= 0 && at < size; ++at) {
      const auto byte = static_cast<char>(world.steps + i);
      slot.bytes[static_cast<size_t>(block) * size + at] = static_cast<char *>(slot.at(block))[at] = byte;
    }
    world.call([&] { mub_pool_free(&slot.pool, slot.at(block)); });
    if (block == kNone) continue;
    --slot.live;
    if (world.failed) continue;  // the block stays unused
    if (slot.pages == 0 || slot.free_used() == slot.per_chunk()) ++slot.pages;
    slot.freed.push_back(block);
    slot.taken.erase(block);
  }
}
void pop(Pools &world) {
  Slot &slot = world.slot();
  EXPECT_EQ(mub_pool_from_empty(&slot.pool), slot.at(slot.pop()));
}
// Only a full table grows.
void expand(Pools &world) {
  mub_pool &pool = world.slot().pool;
  const int64_t before = pool.free_capacity, grown = before + std::max<int64_t>(pool.free_count / 2, 4);
  world.call([&] { mub_pool_expand(&pool.free_used); });
  const bool grows = pool.free_count == before && !world.failed;
  EXPECT_EQ(pool.free_capacity, grows ? (grown + 3) / 4 * 4 : before);
}
void swap(Pools &world) {
  Slot &a = world.slot(), &b = world.slot();
  mub_pool_swap(&a.pool, &b.pool);
  std::swap(a, b);
  std::swap(a.pool, b.pool);  // the records were already swapped
}
// Without a map, a clone does not reuse released blocks.
void clone(Pools &world) {
  Slot &source = world.slot(), &copy = world.slot();
  mub_pool_chunk *map = world.program.one_in(8) ? nullptr : mub_pool_map(&source.pool);
  const bool has_map = map != nullptr || source.pool.chunks == nullptr;
  world.call([&] { mub_pool_clone(&source.pool, map, &copy.pool); });
  mub_pool_umap(map);
  if (&source == &copy) return;
  copy.become(world.failed ? Slot() : source);
  EXPECT_EQ(copy.pool.block_size, source.pool.block_size);
  EXPECT_EQ(copy.per_chunk(), source.per_chunk());
  for (int64_t &block : copy.freed) {
    if (has_map || block == kNone) continue;
    copy.taken.insert(std::exchange(block, kNone));
  }
}
int order(auto a, auto b) { return std::less<>()(b, a) - std::less<>()(a, b); }
// The chunk map, and its translation of addresses.
void ask_the_map(Pools &world) {
  Slot &slot = world.slot();
  mub_pool_chunk *map = world.call([&] { return mub_pool_map(&slot.pool); });
  EXPECT_EQ(map == nullptr, world.failed || slot.pool.chunks == nullptr);
  EXPECT_EQ(mub_pool_set_addr(&slot.pool, -1, 8), nullptr);
  if (map == nullptr) return;
  const int64_t chunks = slot.chunks(), other = world.program.below(std::max<int64_t>(chunks, 1));
  for (int64_t i = 0; i < chunks; ++i) {
    EXPECT_EQ(reinterpret_cast<void *>(map[i].base), slot.pool.chunks[map[i].index]);
    EXPECT_EQ(mub_pool_compare(&map[i], &map[other]), order(i, other));
  }
  const int64_t block = world.block(slot);
  const int64_t inside = world.program.below(std::max<int64_t>(slot.pool.block_size, 1));
  if (block >= 0) {
    world.read_by_all([&] {
      char *address = static_cast<char *>(slot.at(block)) + inside;
      int64_t offset = 77;
      const int chunk = mub_pool_get_addr(&slot.pool, map, address, &offset);
      EXPECT_EQ(chunk, block / slot.per_chunk());
      EXPECT_EQ(mub_pool_set_addr(&slot.pool, chunk, offset), address);
      EXPECT_EQ(map[mub_pool_bfind(map, chunks, address)].index, chunk);
    });
  }
  std::reverse(map, map + chunks);
  mub_pool_sort(map, chunks);
  EXPECT_TRUE(std::ranges::is_sorted(map, map + chunks, {}, &mub_pool_chunk::base));
  mub_pool_umap(map);
}
// The free blocks, sorted by address, and the iterator over the blocks in use.
void walk(Pools &world) {
  Slot &slot = world.slot();
  std::vector<void *> free, sorted(slot.freed.size());
  for (const int64_t block : slot.freed) free.push_back(slot.at(block));
  const int64_t count = std::ssize(free);
  mub_pool_empty_array(&slot.pool, sorted.data());
  mub_pool_empty_sort(free.data(), count);
  EXPECT_EQ(free, sorted);
  EXPECT_TRUE(std::is_sorted(free.begin(), free.end(), std::less<>()));
  const auto other = static_cast<size_t>(world.program.below(std::max<int64_t>(count, 1)));
  for (void *block : free) {
    EXPECT_EQ(mub_pool_empty_find(free.data(), count, block), 1);
    EXPECT_EQ(mub_pool_empty_compare(&block, &free[other]), order(block, free[other]));
  }
  mub_pool_iter *iter = world.call([&] { return mub_pool_iter_new(&slot.pool); });
  EXPECT_EQ(iter == nullptr, world.failed);
  void *block = mub_pool_iter_first(iter);
  for (const int64_t taken : iter == nullptr ? std::set<int64_t>() : slot.taken) {
    EXPECT_EQ(block, slot.at(taken));
    EXPECT_EQ(mub_pool_empty_find(free.data(), count, block), 0);
    block = mub_pool_iter_next(iter);
  }
  EXPECT_EQ(iter == nullptr ? mub_pool_iter_next(iter) : block, nullptr);
  mub_pool_iter_free(iter);
}

// steps of mub_pool: begin_again take take take give give pop expand swap clone ask_the_map walk

}  // namespace mub_test

#include "pool_steps.inc"
