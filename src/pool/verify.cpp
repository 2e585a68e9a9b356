// Checks the invariants of block pools; pool.h has them.
#include <algorithm>
#include <cstdint>

#include "base/fault.h"
#include "base/number_set.h"
#include "pool/pool.h"

namespace mub::pool {
namespace {

Fault verify_fields(const mub_pool &pool, const PageTable &table, int64_t least_used) {
  if (table.count < 0 || table.count > table.capacity)
    return "The number of chunks or pages is negative or exceeds the capacity of their table.";
  if ((table.pages == nullptr) != (table.capacity == 0))
    return "The table of chunks or pages is missing, or has no capacity.";
  const bool is_used_in_range =
      table.count == 0 ? table.used == -1 : table.used >= least_used && table.used <= pool.blocks_per_chunk;
  return is_used_in_range ? nullptr : "The number of used items of the last chunk or page is out of range.";
}

Fault verify_slots(const PageTable &table) {
  const auto *end = table.pages + table.count;
  return std::find(table.pages, end, nullptr) == end ? nullptr : "A chunk or page in use is NULL.";
}

Fault verify_unused_slots(const mub_pool &pool) {
  const auto is_null = [](const void *slot) { return slot == nullptr; };
  const bool is_unused =
      std::all_of(pool.chunks + pool.chunk_count, pool.chunks + pool.chunk_capacity, is_null);
  return is_unused ? nullptr : "A slot after the last chunk is not NULL.";
}

// Whether `count` pages of `page_items` items cannot all exist, so that sums over them would overflow.
// Without pages, the factors may have any value.
bool is_impossible(int64_t count, int64_t page_items, int64_t item_bytes) {
  int64_t bytes;
  return count > 0 && (__builtin_mul_overflow(page_items, item_bytes, &bytes) ||
                       __builtin_mul_overflow(count, bytes, &bytes));
}

// The addresses on the free stack are looked up among the carved blocks, kCount of them at a time. Such a
// batch has consecutive numbers, and its chunks are sorted here by address. So nothing has to be allocated,
// but with more than kCount carved blocks the free stack is read repeatedly.
class CarvedBlocks {
 public:
  static constexpr int64_t kCount = 1 << 14;

  CarvedBlocks(const mub_pool &pool, int64_t first)
      : pool_(pool), first_(first), end_(std::min(first + kCount, carved_blocks(pool))) {
    for (int64_t chunk = first / pool.blocks_per_chunk; chunk * pool.blocks_per_chunk < end_; ++chunk)
      chunks_[chunk_count_++] = {chunk, word_of(pool.chunks[chunk])};
    sort(chunks_, chunk_count_);
    span_ = chunks_[chunk_count_ - 1].base - chunks_[0].base + chunk_bytes(pool);
  }

  // Looks up an address of the free stack. Counts it if it is that of one of the blocks.
  Fault add(uint64_t address) {
    // The usual case in a large pool: chunks that were allocated one after another are near each other.
    if (address - chunks_[0].base >= span_) return nullptr;
    const int64_t position = find_chunk(chunks_, chunk_count_, address);
    const uint64_t offset = address - chunks_[position].base;
    if (offset >= chunk_bytes(pool_)) return nullptr;
    const auto slot = static_cast<int64_t>(offset) / pool_.block_size;
    const int64_t number = chunks_[position].index * pool_.blocks_per_chunk + slot;
    if (number < first_ || number >= end_ || static_cast<int64_t>(offset) % pool_.block_size != 0)
      return nullptr;
    if (!met_.add(number - first_)) return "A block is on the free stack twice.";
    ++met_count_;
    return nullptr;
  }

  int64_t met_count() const { return met_count_; }

 private:
  const mub_pool &pool_;
  int64_t first_;
  int64_t end_;
  // The first and the last chunk of a batch may be in it only in part.
  mub_pool_chunk chunks_[kCount / kMinBlocksPerChunk + 2];
  int64_t chunk_count_ = 0;
  uint64_t span_ = 0;  // from the lowest chunk to the end of the highest one
  NumberSet<kCount> met_;
  int64_t met_count_ = 0;
};

// Invariant 5: the free stack has the addresses of different carved blocks, or null.
Fault verify_free_stack(const mub_pool &pool) {
  int64_t addresses = 0;
  for_each_free_address(pool, [&](const void *) { ++addresses; });
  for (int64_t first = 0; first < carved_blocks(pool) && addresses > 0; first += CarvedBlocks::kCount) {
    CarvedBlocks blocks(pool, first);
    Fault fault = nullptr;
    for_each_free_address(pool, [&](const void *address) {
      if (fault == nullptr) fault = blocks.add(word_of(address));
    });
    if (fault != nullptr) return fault;
    addresses -= blocks.met_count();
  }
  return addresses == 0 ? nullptr : "An address on the free stack is not that of a block of the pool.";
}

}  // namespace

Fault verify_record(const mub_pool &pool) {
  const PageTable chunks = chunks_of(pool);
  const PageTable pages = free_pages_of(pool);
  if (const Fault fault = verify_fields(pool, chunks, 1)) return fault;
  if (const Fault fault = verify_fields(pool, pages, 0)) return fault;
  if ((chunks.count > 0 || pages.count > 0) && pool.blocks_per_chunk < kMinBlocksPerChunk)
    return "There are fewer than 16 blocks per chunk.";
  if (pool.chunk_count > 0 && pool.block_size < 1)
    return "The block size is negative or 0, although there are chunks.";
  if (is_impossible(pool.chunk_count, pool.blocks_per_chunk, pool.block_size) ||
      is_impossible(pool.free_count, pool.blocks_per_chunk, sizeof(void *)))
    return "The chunks or pages exceed the address space.";
  if (free_blocks(pool) > carved_blocks(pool)) return "There are more free blocks than the pool has blocks.";
  // It may be negative: mub_pool_from_empty() does not count the block that it takes, but its return counts.
  if (pool.live_count > carved_blocks(pool) - free_blocks(pool))
    return "The number of live blocks is too large for the blocks that are not free.";
  for (const PageTable &table : {chunks, pages}) {
    if (const Fault fault = verify_slots(table)) return fault;
  }
  return verify_unused_slots(pool);
}

Fault verify(const mub_pool &pool) {
  const Fault fault = verify_record(pool);
  return fault != nullptr ? fault : verify_free_stack(pool);
}

}  // namespace mub::pool
