// The engine of the block pools. Blocks of one size are carved from chunks and never move; a stack of pages
// holds the addresses of those that were returned. Taking and returning a block are inline, because
// containers do so once per entry.
//
//   chunks ──► [0] ──► [ block | block | block | block ]      free_pages ──► [0] ──► [ address | address ]
//              [1] ──► [ block | block | never taken … ]                     [1] ──► [ address | … ]
//              null …                  ▲ chunk_used                          spare …           ▲ free_used
//
// Invariants:
//   1. chunk_count <= chunk_capacity, and free_count <= free_capacity. A table is null if its capacity is 0.
//      Its slots below the count hold chunks or pages; later ones are null, except for spare pages.
//   2. chunk_used is -1 without chunks, else 1 to blocks_per_chunk; all chunks but the last are used up.
//      free_used is -1 without pages, else 0 to blocks_per_chunk; all pages but the last are full.
//   3. blocks_per_chunk >= kMinBlocksPerChunk while there is a chunk or a page.
//   4. live_count is the number of blocks taken minus the number returned.
//   5. As long as callers return only the pool's own blocks, and each once: the free stack holds addresses of
//      carved blocks, all different, or null where clone() could not translate one. Every carved block is
//      live or on the free stack, except those popped with mub_pool_from_empty(), those returned when no page
//      could be allocated, and those for which clone() stored a null that was popped since.
//   6. The bytes of a fresh chunk are 0. A block that is taken again is as it was when it was returned,
//      unless its container changed it in a pass over the chunks.
//   7. With AddressSanitizer or MUB_VALGRIND, the blocks that were not carved yet and those on the free stack
//      are poisoned (base/poison.h), and the passes over the chunks omit them.
//
// Threads: functions that take a const pool write nothing; all others need the pool for themselves.
#ifndef MUB_POOL_POOL_H
#define MUB_POOL_POOL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/fault.h"
#include "base/poison.h"
#include "base/prefetch.h"
#include "mub_pool.h"

namespace mub {

// Converts between an address and the 64-bit word that holds it.
inline uint64_t word_of(const void *address) { return reinterpret_cast<uintptr_t>(address); }

template <class Pointee>
Pointee *pointer_of(uint64_t word) {
  return reinterpret_cast<Pointee *>(static_cast<uintptr_t>(word));
}

}  // namespace mub

namespace mub::pool {

constexpr int64_t kMinBlocksPerChunk = 16;

void init(mub_pool &pool);
void empty(mub_pool &pool);
void swap(mub_pool &a, mub_pool &b);

// Allocates a pool record, for the container that will own it; nullptr if memory runs out.
mub_pool *create(int64_t block_size);
void destroy(mub_pool *pool);

void *take_slowly(mub_pool &pool);
void give_on_new_page(mub_pool &pool, void *block);

inline void **free_page(const mub_pool &pool, int64_t page) {
  return static_cast<void **>(pool.free_pages[page]);
}

inline void *block_at(const mub_pool &pool, int64_t chunk, int64_t index) {
  return static_cast<char *>(pool.chunks[chunk]) + index * pool.block_size;
}

// Unsigned, because in a pool without chunks the factors may have any value.
inline uint64_t chunk_bytes(const mub_pool &pool) {
  return static_cast<uint64_t>(pool.blocks_per_chunk) * static_cast<uint64_t>(pool.block_size);
}

// ---- poisoned blocks

// Whether an address is that of a block; callers may have put others on the free stack. The size of the heap
// block that contains it is compared with that of a chunk, rather than searching all chunks. (For valgrind,
// any address is taken for a block.)
inline bool is_block(const mub_pool &pool, const void *address) {
  if (pool.block_size <= 0 || address == nullptr) return false;
  const int64_t offset = offset_in_heap_block(address, chunk_bytes(pool));
  return offset >= 0 && offset % pool.block_size == 0;
}

MUB_POISON_HOOK void poison_block(const mub_pool &pool, void *block) {
  if constexpr (kPoisons) {
    if (is_block(pool, block)) poison(block, static_cast<size_t>(pool.block_size));
  }
}

MUB_POISON_HOOK void unpoison_block(const mub_pool &pool, void *block) {
  if constexpr (kPoisons) {
    if (is_block(pool, block)) unpoison(block, static_cast<size_t>(pool.block_size));
  }
}

// Reports a block that is returned twice, or was never taken.
MUB_POISON_HOOK void check_live(const mub_pool &pool, const void *block) {
  if constexpr (kPoisons) {
    if (is_block(pool, block) && is_poisoned(block)) report_use(block);
  }
}

// ---- taking and returning blocks

// Keeps a counter out of vector registers. If the compiler loaded and stored it as one vector with the
// counter next to it, each call would wait for the one before, and fresh blocks would take 1.14 times as long
// (pool_fresh in bench/pool_bench.cpp).
inline int64_t scalar(int64_t counter) {
#if UINTPTR_MAX > UINT32_MAX
  asm("" : "+r"(counter));
#endif
  return counter;
}

// Takes a block; nullptr if there is no pool or no block size, or if memory runs out.
inline void *take(mub_pool *pool) {
  if (pool == nullptr || pool->block_size == 0) return nullptr;
  if (pool->free_count > 0) {
    // Slow path: the last page is empty, or clone() could not translate this address.
    void *block = pool->free_used > 0 ? free_page(*pool, pool->free_count - 1)[pool->free_used - 1] : nullptr;
    if (block == nullptr) return take_slowly(*pool);
    --pool->free_used;
    ++pool->live_count;
    unpoison_block(*pool, block);
    return block;
  }
  // Unsigned, so that one comparison also covers chunk_used == -1, before the first chunk.
  if (static_cast<uint64_t>(pool->chunk_used) >= static_cast<uint64_t>(pool->blocks_per_chunk)) {
    return take_slowly(*pool);
  }
  pool->live_count = scalar(pool->live_count + 1);
  void *block = block_at(*pool, pool->chunk_count - 1, pool->chunk_used++);
  unpoison_block(*pool, block);
  return block;
}

// Returns a block to its pool. Does nothing if either is null.
inline void give(mub_pool *pool, void *block) {
  if (pool == nullptr || block == nullptr) return;
  check_live(*pool, block);
  if (pool->free_used < 0 || pool->free_used >= pool->blocks_per_chunk) return give_on_new_page(*pool, block);
  free_page(*pool, pool->free_count - 1)[pool->free_used++] = block;
  --pool->live_count;
  poison_block(*pool, block);
}

// ---- passes

// How many chunks ahead a pass over the chunks prefetches. Chunks are separate allocations: the hardware
// prefetcher cannot predict where the next one starts, and fetches the rest once the start is being read.
// Without this, a removal from a table of 1e6 keys takes 1.2 times as long; the distance makes no difference
// (map_remove in bench/hash_bench.cpp).
constexpr int64_t kPrefetchChunks = 8;

// Calls `visit` for every carved block, chunk by chunk; free ones are included unless they are poisoned.
// `sizeof(Block)` must be the block size. If the pool has only the entries of one container, this is several
// times faster than following their links: compare the rows of map_remove in bench/hash_bench.cpp.
template <class Block, class Visit>
void for_each_block(const mub_pool &pool, Visit visit) {
  for (int64_t chunk = 0; chunk < pool.chunk_count; ++chunk) {
    if (chunk + kPrefetchChunks < pool.chunk_count) prefetch(pool.chunks[chunk + kPrefetchChunks]);
    const int64_t used = chunk + 1 < pool.chunk_count ? pool.blocks_per_chunk : pool.chunk_used;
    auto *blocks = static_cast<Block *>(pool.chunks[chunk]);
    for (int64_t i = 0; i < used; ++i) {
      if (!is_poisoned(blocks + i)) visit(blocks[i]);
    }
  }
}

// A pool's table of chunks or of free pages, for reading. In both, "page" means the heap block in a slot.
struct PageTable {
  int64_t used;
  int64_t count;
  int64_t capacity;
  void *const *pages;
};

inline PageTable chunks_of(const mub_pool &pool) {
  return {pool.chunk_used, pool.chunk_count, pool.chunk_capacity, pool.chunks};
}

inline PageTable free_pages_of(const mub_pool &pool) {
  return {pool.free_used, pool.free_count, pool.free_capacity, pool.free_pages};
}

// The number of blocks carved from the chunks, whether live, free or lost.
inline int64_t carved_blocks(const mub_pool &pool) {
  return pool.chunk_count < 1 ? 0 : (pool.chunk_count - 1) * pool.blocks_per_chunk + pool.chunk_used;
}

// The number of addresses on the free stack.
inline int64_t free_blocks(const mub_pool &pool) {
  return pool.free_count < 1 ? 0 : (pool.free_count - 1) * pool.blocks_per_chunk + pool.free_used;
}

// Calls `visit` with every address on the free stack.
template <class Visit>
void for_each_free_address(const mub_pool &pool, Visit visit) {
  for (int64_t page = 0; page < pool.free_count; ++page) {
    const int64_t used = page + 1 < pool.free_count ? pool.blocks_per_chunk : pool.free_used;
    for (int64_t i = 0; i < used; ++i) {
      void *address = free_page(pool, page)[i];
      if (address != nullptr) visit(address);  // GCOVR_EXCL_BR_LINE: null if clone() could not translate it
    }
  }
}

// Calls `visit` for every block on the free stack that for_each_block() does not omit.
template <class Block, class Visit>
void for_each_free_block(const mub_pool &pool, Visit visit) {
  for_each_free_address(pool, [&](void *address) {
    if (!is_poisoned(address)) visit(*static_cast<Block *>(address));
  });
}

// The position in a sorted map of the last chunk that starts at or below `address`; -1 if there is none.
inline int64_t find_chunk(const mub_pool_chunk *map, int64_t count, uint64_t address) {
  const mub_pool_chunk *above = std::upper_bound(
      map, map + count, address, [](uint64_t a, const mub_pool_chunk &chunk) { return a < chunk.base; });
  return above - map - 1;
}

mub_pool_chunk *map(const mub_pool &pool);
void sort(mub_pool_chunk *map, int64_t count);

// Empties the destination and makes it a copy. Returns false and leaves it empty if memory runs out.
bool clone(const mub_pool &source, const mub_pool_chunk *map, mub_pool &destination);

// The size of the chunks and pages and of their tables, as they were allocated.
int64_t memory_bytes(const mub_pool &pool);

// Check the invariants as far as they do not depend on earlier calls; verify_record() only those of the
// record and its tables.
Fault verify(const mub_pool &pool);
Fault verify_record(const mub_pool &pool);

}  // namespace mub::pool

#endif
