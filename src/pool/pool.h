// Block pools inside the library. Taking and giving back a block are inline: containers do it once per entry.
#ifndef MUB_POOL_POOL_H
#define MUB_POOL_POOL_H

#include <algorithm>
#include <cstdint>

#include "base/prefetch.h"
#include "mub_pool.h"

namespace mub {

// An address as a word of a container, and back.
inline uint64_t word_of(const void *address) { return reinterpret_cast<uintptr_t>(address); }

template <class Record>
Record *record_of(uint64_t word) {
  return reinterpret_cast<Record *>(static_cast<uintptr_t>(word));
}

}  // namespace mub

namespace mub::pool {

constexpr int64_t kMinBlocksPerChunk = 16;

void init(mub_pool &pool);
void empty(mub_pool &pool);
void swap(mub_pool &a, mub_pool &b);

// A pool record on the heap, for the container that will own it; nullptr when memory runs out.
mub_pool *create(int64_t block_size);
void destroy(mub_pool *pool);

void *take_slowly(mub_pool &pool);
void give_on_new_page(mub_pool &pool, void *block);

inline void **free_page(const mub_pool &pool, int64_t page) {
  return static_cast<void **>(pool.free_pages[page]);
}

inline void *block_at(const mub_pool &pool, int64_t chunk, int64_t slot) {
  return static_cast<char *>(pool.chunks[chunk]) + slot * pool.block_size;
}

// Unsigned, for pools without chunks whose numbers may be anything.
inline uint64_t chunk_bytes(const mub_pool &pool) {
  return static_cast<uint64_t>(pool.blocks_per_chunk) * static_cast<uint64_t>(pool.block_size);
}

// Takes a block; nullptr without a pool, without a block size or without memory.
inline void *take(mub_pool *pool) {
  if (pool == nullptr || pool->block_size == 0) return nullptr;
  if (pool->free_count > 0) {
    // A page that is empty goes first, and so does an address foreign to its source, which a clone has left
    // out.
    void *block = pool->free_used > 0 ? free_page(*pool, pool->free_count - 1)[pool->free_used - 1] : nullptr;
    if (block == nullptr) return take_slowly(*pool);
    --pool->free_used;
    ++pool->live_count;
    return block;
  }
  // Unsigned, so that one compare sees that there is no chunk, too.
  if (static_cast<uint64_t>(pool->chunk_used) >= static_cast<uint64_t>(pool->blocks_per_chunk)) {
    return take_slowly(*pool);
  }
  ++pool->live_count;
  return block_at(*pool, pool->chunk_count - 1, pool->chunk_used++);
}

// Gives a block back; neither needs to be there.
inline void give(mub_pool *pool, void *block) {
  if (pool == nullptr || block == nullptr) return;
  if (pool->free_used < 0 || pool->free_used >= pool->blocks_per_chunk) return give_on_new_page(*pool, block);
  free_page(*pool, pool->free_count - 1)[pool->free_used++] = block;
  --pool->live_count;
}

// How far ahead a walk over the chunks fetches, and how much of a chunk: after its start the processor
// foresees the rest.
constexpr int64_t kPrefetchChunks = 8;
constexpr uint64_t kPrefetchBytes = 1024;

// Chunks lie apart, and where the next one starts no processor foresees.
inline void prefetch_chunk(const mub_pool &pool, int64_t chunk) {
  if (chunk >= pool.chunk_count) return;
  prefetch(pool.chunks[chunk], static_cast<int64_t>(std::min(chunk_bytes(pool), kPrefetchBytes)));
}

// Calls `visit` with every block that was ever taken, free ones included, in the order of memory: several
// times faster than following the links of a structure that fills the pool.
template <class Block, class Visit>
void for_each_block(const mub_pool &pool, Visit visit) {
  for (int64_t chunk = 0; chunk < pool.chunk_count; ++chunk) {
    prefetch_chunk(pool, chunk + kPrefetchChunks);
    const int64_t used = chunk + 1 < pool.chunk_count ? pool.blocks_per_chunk : pool.chunk_used;
    auto *blocks = static_cast<Block *>(pool.chunks[chunk]);
    for (int64_t i = 0; i < used; ++i) visit(blocks[i]);
  }
}

// The blocks that were carved from the chunks, be they live, free or dropped.
inline int64_t blocks_ever_taken(const mub_pool &pool) {
  return pool.chunk_count < 1 ? 0 : (pool.chunk_count - 1) * pool.blocks_per_chunk + pool.chunk_used;
}

// The number of addresses on the free stack.
inline int64_t free_blocks(const mub_pool &pool) {
  return pool.free_count < 1 ? 0 : (pool.free_count - 1) * pool.blocks_per_chunk + pool.free_used;
}

// Calls `visit` with every block on the free stack.
template <class Block, class Visit>
void for_each_free_block(const mub_pool &pool, Visit visit) {
  for (int64_t page = 0; page < pool.free_count; ++page) {
    const int64_t used = page + 1 < pool.free_count ? pool.blocks_per_chunk : pool.free_used;
    for (int64_t i = 0; i < used; ++i) {
      auto *block = static_cast<Block *>(free_page(pool, page)[i]);
      if (block != nullptr) visit(*block);  // GCOVR_EXCL_BR_LINE: null where a clone left out a foreign block
    }
  }
}

// Position in a sorted map of the chunk with the greatest base at or below `address`; -1 when there is none.
inline int64_t find_chunk(const mub_pool_chunk *map, int64_t count, uint64_t address) {
  const mub_pool_chunk *above = std::upper_bound(
      map, map + count, address, [](uint64_t a, const mub_pool_chunk &chunk) { return a < chunk.base; });
  return above - map - 1;
}

mub_pool_chunk *map(const mub_pool &pool);

// Empties the destination and makes it a copy; false when memory runs out, the destination then empty.
bool clone(const mub_pool &source, const mub_pool_chunk *map, mub_pool &destination);

}  // namespace mub::pool

#endif
