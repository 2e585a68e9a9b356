// Block pools: the slow paths, the functions for whole pools, and the exported functions. pool.h has the
// picture and the invariants.
#include "pool/pool.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "base/alloc.h"
#include "base/growth.h"
#include "base/poison.h"
#include "base/prefetch.h"

namespace mub::pool {
namespace {

// When chunks or pages are released, the one this many ahead is prefetched. With 1, the release of 1e5 to 1e6
// entries takes 1.1 to 1.5 times as long; 32 gains nothing (map_release and u64_release in bench/).
constexpr int64_t kPrefetchPages = 8;

// The fields of a PageTable in their pool, for writing.
struct Table {
  int64_t &used;
  int64_t &count;
  int64_t &capacity;
  void **&pages;
};

Table chunk_table(mub_pool &pool) {
  return {pool.chunk_used, pool.chunk_count, pool.chunk_capacity, pool.chunks};
}

Table free_table(mub_pool &pool) {
  return {pool.free_used, pool.free_count, pool.free_capacity, pool.free_pages};
}

void reset(const Table &table) {
  table.used = -1;
  table.count = 0;
  table.capacity = 0;
  table.pages = nullptr;
}

void release_pages(const Table &table) {
  for (int64_t i = 0; table.pages != nullptr && i < table.capacity; ++i) {
    // free() reads what the allocator stores next to a page, and that is rarely in the cache.
    if (i + kPrefetchPages < table.capacity) prefetch(table.pages[i + kPrefetchPages]);
    release(table.pages[i]);
  }
  release(table.pages);
  reset(table);
}

bool expand(const Table &table) {
  if (table.capacity > table.count) return true;
  const int64_t capacity = grown_pages(table.count, table.capacity);
  void *pages = regrown(table.pages, table.capacity, capacity, sizeof(void *));
  if (pages == nullptr) return false;
  table.pages = static_cast<void **>(pages);
  table.capacity = capacity;
  return true;
}

// Starts the next page of the table, a spare one if there is one; false if memory runs out.
bool start_page(const Table &table, int64_t count, int64_t item_bytes) {
  if (!expand(table)) return false;
  void *&page = table.pages[table.count];
  if (page == nullptr) page = allocate_zeroed(count, item_bytes);
  if (page == nullptr) return false;
  ++table.count;
  table.used = 0;
  return true;
}

void raise_blocks_per_chunk(mub_pool &pool) {
  pool.blocks_per_chunk = std::max(pool.blocks_per_chunk, kMinBlocksPerChunk);
}

// Pops the last address off the free stack; nullptr if there is none, or if clone() could not translate it.
// The block may still be poisoned.
void *pop_free(mub_pool &pool) {
  if (pool.free_count == 0) return nullptr;
  if (pool.free_used > 0) return free_page(pool, pool.free_count - 1)[--pool.free_used];
  // The last page is empty and the one before it full.
  if (--pool.free_count == 0) {
    pool.free_used = -1;
    return nullptr;
  }
  pool.free_used = pool.blocks_per_chunk - 1;
  return free_page(pool, pool.free_count - 1)[pool.free_used];
}

// Poisons the blocks of the last chunk that were not carved yet.
MUB_POISON_HOOK void poison_uncarved(const mub_pool &pool) {
  if constexpr (kPoisons) {
    if (pool.chunk_count < 1 || !is_block(pool, pool.chunks[pool.chunk_count - 1])) return;
    if (pool.chunk_used < 0 || pool.chunk_used >= pool.blocks_per_chunk) return;
    poison(block_at(pool, pool.chunk_count - 1, pool.chunk_used),
           static_cast<size_t>((pool.blocks_per_chunk - pool.chunk_used) * pool.block_size));
  }
}

MUB_POISON_HOOK void poison_free(const mub_pool &pool) {
  if constexpr (kPoisons) {
    for_each_free_address(pool, [&](void *block) { poison_block(pool, block); });
  }
}

// Starts the next chunk; false if memory runs out.
MUB_POISON_HOOK bool start_chunk(mub_pool &pool) {
  if (!start_page(chunk_table(pool), pool.blocks_per_chunk, pool.block_size)) return false;
  poison_uncarved(pool);
  return true;
}

// Allocates a table of the same capacity and a page for each page in use, and calls fill(page, copy) for
// each.
template <class Fill>
bool clone_table(const PageTable &source, const Table &destination, int64_t count, int64_t item_bytes,
                 Fill fill) {
  if (source.pages == nullptr) return true;
  destination.pages = static_cast<void **>(allocate_zeroed(source.capacity, sizeof(void *)));
  if (destination.pages == nullptr) return false;
  destination.capacity = source.capacity;
  for (int64_t i = 0; i < source.count; ++i) {
    destination.pages[i] = allocate(count, item_bytes);
    if (destination.pages[i] == nullptr) return false;
    fill(source.pages[i], destination.pages[i]);
  }
  destination.count = source.count;
  destination.used = source.used;
  return true;
}

int order(uint64_t a, uint64_t b) { return a > b ? 1 : a < b ? -1 : 0; }

// std::sort rather than qsort, which may allocate.
void sort_blocks(void **blocks, int64_t count) {
  const auto lower = [](const void *a, const void *b) { return word_of(a) < word_of(b); };
  if (count > 0) std::sort(blocks, blocks + count, lower);
}

}  // namespace

void init(mub_pool &pool) {
  pool.block_size = 0;
  pool.blocks_per_chunk = 0;
  pool.live_count = 0;
  reset(chunk_table(pool));
  reset(free_table(pool));
}

void empty(mub_pool &pool) {
  release_pages(free_table(pool));
  release_pages(chunk_table(pool));
  pool.live_count = 0;
}

void swap(mub_pool &a, mub_pool &b) { std::swap(a, b); }

mub_pool *create(int64_t block_size) {
  auto *pool = static_cast<mub_pool *>(allocate(1, sizeof(mub_pool)));
  if (pool == nullptr) return nullptr;
  init(*pool);
  pool->block_size = block_size;
  return pool;
}

void destroy(mub_pool *pool) {
  if (pool != nullptr) empty(*pool);
  release(pool);
}

void *take_slowly(mub_pool &pool) {
  raise_blocks_per_chunk(pool);
  void *block = pop_free(pool);
  if (block == nullptr) {
    const bool full = pool.chunk_used < 0 || pool.chunk_used >= pool.blocks_per_chunk;
    if (full && !start_chunk(pool)) return nullptr;
    block = block_at(pool, pool.chunk_count - 1, pool.chunk_used++);
  }
  unpoison_block(pool, block);
  ++pool.live_count;
  return block;
}

void give_on_new_page(mub_pool &pool, void *block) {
  raise_blocks_per_chunk(pool);  // this makes room on the page if a caller had lowered the number
  --pool.live_count;
  // GCOVR_EXCL_BR_START: otherwise the page is always full
  const bool full = pool.free_used < 0 || pool.free_used >= pool.blocks_per_chunk;
  if (full && !start_page(free_table(pool), pool.blocks_per_chunk, sizeof(void *))) return;
  // GCOVR_EXCL_BR_STOP
  free_page(pool, pool.free_count - 1)[pool.free_used++] = block;
  poison_block(pool, block);
}

mub_pool_chunk *map(const mub_pool &pool) {
  if (pool.chunks == nullptr) return nullptr;
  auto *map = static_cast<mub_pool_chunk *>(allocate(pool.chunk_count, sizeof(mub_pool_chunk)));
  if (map == nullptr) return nullptr;
  for (int64_t i = 0; i < pool.chunk_count; ++i) {
    map[i] = {i, word_of(pool.chunks[i])};
  }
  sort(map, pool.chunk_count);
  return map;
}

void sort(mub_pool_chunk *map, int64_t count) {
  const auto lower = [](const mub_pool_chunk &a, const mub_pool_chunk &b) { return a.base < b.base; };
  if (count > 0) std::sort(map, map + count, lower);
}

int64_t memory_bytes(const mub_pool &pool) {
  const auto unused =
      std::count(pool.free_pages, pool.free_pages + pool.free_capacity, static_cast<void *>(nullptr));
  // Unsigned, as in chunk_bytes().
  const auto pages = static_cast<uint64_t>(pool.free_capacity - unused);
  const uint64_t page_slots = pages * static_cast<uint64_t>(pool.blocks_per_chunk);
  const auto table_slots = static_cast<uint64_t>(pool.chunk_capacity + pool.free_capacity);
  return static_cast<int64_t>(static_cast<uint64_t>(pool.chunk_count) * chunk_bytes(pool) +
                              (page_slots + table_slots) * sizeof(void *));
}

bool clone(const mub_pool &source, const mub_pool_chunk *map, mub_pool &destination) {
  if (&source == &destination) return true;
  empty(destination);
  destination.block_size = source.block_size;
  destination.blocks_per_chunk = source.blocks_per_chunk;
  const uint64_t size_bytes = chunk_bytes(source);

  const auto copy_chunk = [size_bytes](const void *chunk, void *copy) {
    copy_poisoned(copy, chunk, static_cast<size_t>(size_bytes));
  };
  const auto translated = [&](const void *block) -> void * {
    const uint64_t address = word_of(block);
    const int64_t position = map == nullptr ? -1 : find_chunk(map, source.chunk_count, address);
    if (position < 0 || address - map[position].base >= size_bytes) return nullptr;
    return static_cast<char *>(destination.chunks[map[position].index]) + (address - map[position].base);
  };
  const auto translate_page = [&](void *page, void *copy) {
    std::transform(static_cast<void **>(page), static_cast<void **>(page) + source.blocks_per_chunk,
                   static_cast<void **>(copy), translated);
  };

  // The free stack is cloned only along with chunks: without them, none of its addresses could be translated.
  const bool done =
      clone_table(chunks_of(source), chunk_table(destination), source.blocks_per_chunk, source.block_size,
                  copy_chunk) &&
      (source.chunks == nullptr || clone_table(free_pages_of(source), free_table(destination),
                                               source.blocks_per_chunk, sizeof(void *), translate_page));
  if (!done) {
    empty(destination);
    return false;
  }
  destination.live_count = source.live_count;
  poison_uncarved(destination);
  poison_free(destination);
  return true;
}

}  // namespace mub::pool

namespace {

using namespace mub;

// Moves to the next carved block, free ones included; false after the last one.
bool advance(mub_pool_iter &iter) {
  const mub_pool &pool = *iter.pool;
  if (iter.chunk >= pool.chunk_count) return false;
  ++iter.slot;
  const int64_t last = pool.chunk_count - 1;
  if (iter.chunk < last && iter.slot >= pool.blocks_per_chunk) {
    ++iter.chunk;
    iter.slot = 0;
  }
  return iter.chunk < last || iter.slot < pool.chunk_used;
}

}  // namespace

extern "C" {

void mub_pool_init(mub_pool *pool) { pool::init(*pool); }

void mub_pool_term(mub_pool *pool) { pool::empty(*pool); }

void mub_pool_empty(mub_pool *pool) { pool::empty(*pool); }

void *mub_pool_new(mub_pool *pool) { return pool::take(pool); }

void mub_pool_free(mub_pool *pool, void *block) { pool::give(pool, block); }

void mub_pool_expand(int64_t *group) {
  // The fourth field is a void **, and is accessed as one.
  pool::expand({group[0], group[1], group[2], *reinterpret_cast<void ***>(group + 3)});
}

void *mub_pool_from_empty(mub_pool *pool) {
  void *block = pool::pop_free(*pool);
  pool::unpoison_block(*pool, block);
  return block;
}

void mub_pool_swap(mub_pool *a, mub_pool *b) { pool::swap(*a, *b); }

mub_pool_chunk *mub_pool_map(const mub_pool *pool) { return pool::map(*pool); }

void mub_pool_umap(mub_pool_chunk *map) { release(map); }

int mub_pool_get_addr(const mub_pool *pool, const mub_pool_chunk *map, const void *block, int64_t *offset) {
  if (block == nullptr || map == nullptr) return -1;
  const uint64_t address = word_of(block);
  const int64_t position = pool::find_chunk(map, pool->chunk_count, address);
  if (position < 0) return -1;
  *offset = static_cast<int64_t>(address - map[position].base);
  return static_cast<int>(map[position].index);
}

void *mub_pool_set_addr(const mub_pool *pool, int chunk, int64_t offset) {
  return chunk < 0 ? nullptr : static_cast<char *>(pool->chunks[chunk]) + offset;
}

void mub_pool_clone(const mub_pool *source, const mub_pool_chunk *map, mub_pool *destination) {
  pool::clone(*source, map, *destination);
}

int mub_pool_verify(const mub_pool *pool, const char **what) { return report(pool::verify(*pool), what); }

int64_t mub_pool_memory_bytes(const mub_pool *pool) { return pool::memory_bytes(*pool); }

int mub_pool_compare(const void *a, const void *b) {
  return pool::order(static_cast<const mub_pool_chunk *>(a)->base,
                     static_cast<const mub_pool_chunk *>(b)->base);
}

void mub_pool_sort(mub_pool_chunk *map, int64_t count) { pool::sort(map, count); }

int mub_pool_bfind(const mub_pool_chunk *map, int64_t count, const void *address) {
  if (count < 1) return -1;
  int64_t low = 0;
  int64_t high = count - 1;
  int64_t middle = 0;
  int32_t difference = 1;
  while (low <= high) {
    middle = (low + high) / 2;
    difference = static_cast<int32_t>(static_cast<uint32_t>(map[middle].base - word_of(address)));
    if (difference == 0) return static_cast<int>(middle);
    if (difference < 0) {
      low = middle + 1;
    } else {
      high = middle - 1;
    }
  }
  return static_cast<int>(difference >= 0 ? middle - 1 : middle);
}

int mub_pool_empty_compare(const void *a, const void *b) {
  return pool::order(word_of(*static_cast<void *const *>(a)), word_of(*static_cast<void *const *>(b)));
}

void mub_pool_empty_sort(void **blocks, int64_t count) { pool::sort_blocks(blocks, count); }

int mub_pool_empty_find(void *const *blocks, int64_t count, const void *block) {
  if (blocks == nullptr || count < 1) return 0;
  return std::bsearch(&block, blocks, static_cast<size_t>(count), sizeof *blocks, mub_pool_empty_compare) !=
         nullptr;
}

void mub_pool_empty_array(const mub_pool *pool, void **out) {
  const int64_t count = pool::free_blocks(*pool);
  for (int64_t i = 0; i < count; i += pool->blocks_per_chunk) {
    void **page = pool::free_page(*pool, i / pool->blocks_per_chunk);
    std::copy_n(page, std::min(pool->blocks_per_chunk, count - i), out + i);
  }
  pool::sort_blocks(out, count);
}

mub_pool_iter *mub_pool_iter_new(mub_pool *pool) {
  auto *iter = static_cast<mub_pool_iter *>(allocate(1, sizeof(mub_pool_iter)));
  if (iter == nullptr) return nullptr;
  *iter = {0, 0, nullptr, pool};
  if (pool->free_count < 1) return iter;
  iter->free_blocks = static_cast<void **>(allocate(pool::free_blocks(*pool), sizeof(void *)));
  if (iter->free_blocks == nullptr) {
    release(iter);
    return nullptr;
  }
  mub_pool_empty_array(pool, iter->free_blocks);
  return iter;
}

void mub_pool_iter_free(mub_pool_iter *iter) {
  if (iter == nullptr) return;
  release(iter->free_blocks);
  release(iter);
}

void *mub_pool_iter_first(mub_pool_iter *iter) {
  if (iter == nullptr) return nullptr;
  iter->chunk = 0;
  iter->slot = -1;
  return mub_pool_iter_next(iter);
}

void *mub_pool_iter_next(mub_pool_iter *iter) {
  if (iter == nullptr) return nullptr;
  while (advance(*iter)) {
    void *block = pool::block_at(*iter->pool, iter->chunk, iter->slot);
    if (mub_pool_empty_find(iter->free_blocks, pool::free_blocks(*iter->pool), block) == 0) return block;
  }
  return nullptr;
}
}
