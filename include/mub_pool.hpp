/* mub_pool.hpp: mub::pool, the block pool of mub_pool.h.
 *
 *   mub::pool nodes(sizeof(node));
 *   auto *n = static_cast<node *>(nodes.allocate());     zero-filled if fresh; no constructor runs
 *   for (void *block : nodes.blocks()) … */
#ifndef MUB_POOL_HPP
#define MUB_POOL_HPP

#include "mub_base.hpp"
#include "mub_pool.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct pool_life {
  using record = mub_pool;
  static void init(record *pool) noexcept { mub_pool_init(pool); }
  static void bare(record *pool) noexcept { mub_pool_init(pool); }
  static void release(record *pool) noexcept { mub_pool_term(pool); }
  static void swap(record *a, record *b) noexcept { mub_pool_swap(a, b); }
};

}  // namespace detail

/**
 * A walk over the live blocks of a pool, which must not change until it ends. Made by pool::blocks(). An
 * object holds one walk, which begin() restarts: older iterators of the object are then invalid.
 */
class live_blocks {
 public:
  class iterator : public detail::walker<iterator, void *, std::input_iterator_tag> {
   public:
    iterator() = default;
    explicit iterator(mub_pool_iter *walk) : walk_(walk), block_(mub_pool_iter_first(walk)) {}
    void *operator*() const noexcept { return block_; }
    void step() { block_ = mub_pool_iter_next(walk_); }
    const void *place() const noexcept { return block_; }

   private:
    mub_pool_iter *walk_ = nullptr;
    void *block_ = nullptr;
  };

  explicit live_blocks(mub_pool *pool) noexcept : walk_(mub_pool_iter_new(pool)) {}
  live_blocks(const live_blocks &) = delete;
  live_blocks &operator=(const live_blocks &) = delete;
  ~live_blocks() { mub_pool_iter_free(walk_); }

  /** The first block; chunk by chunk, in ascending order within each. */
  iterator begin() const { return iterator(walk_); }
  iterator end() const noexcept { return {}; }

 private:
  mub_pool_iter *walk_;
};

/** Blocks of one size; see mub_pool. The destructor releases them all. */
class pool : public detail::owner<pool, detail::pool_life> {
 public:
  /** With blocks of `block_size` bytes; a pool of size 0 gives no blocks. */
  explicit pool(std::int64_t block_size = 0) noexcept : owner(std::in_place) { c()->block_size = block_size; }

  /**
   * A copy, byte for byte, its blocks in the same places of its chunks; empty if memory ran out. See
   * mub_pool_clone(): addresses in the blocks still point into the source.
   */
  [[nodiscard]] pool clone() const {
    pool copy(c()->block_size);
    mub_pool_chunk *map = mub_pool_map(c());
    // Without the map the free blocks of the copy would be lost.
    if (map != nullptr) mub_pool_clone(c(), map, copy.c());
    mub_pool_umap(map);
    return copy;
  }

  /** Takes a block; nullptr if the block size is 0 or memory ran out. See mub_pool_new(). */
  [[nodiscard]] void *allocate() { return mub_pool_new(c()); }

  /** Returns a block to this pool; see mub_pool_free(). */
  void deallocate(void *block) { mub_pool_free(c(), block); }

  /** The number of live blocks, and whether there are none. */
  std::int64_t size() const noexcept { return c()->live_count; }
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  /** Releases all blocks; the block size stays. See mub_pool_empty(). */
  void clear() { mub_pool_empty(c()); }

  /** A walk over the live blocks; over none if memory ran out. See mub_pool_iter_new(). */
  [[nodiscard]] live_blocks blocks() { return live_blocks(c()); }
};

}  // namespace v1
}  // namespace mub

#endif
