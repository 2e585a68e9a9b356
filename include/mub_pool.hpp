/**
 * @defgroup pool_hpp mub_pool.hpp: the block pool
 * @ingroup hpp
 *
 * The block pool of mub_pool.h.
 *
 *     mub::pool nodes(sizeof(node));
 *     auto *n = static_cast<node *>(nodes.allocate());    zero-filled if fresh; no constructor is called
 *     for (void *block : nodes.blocks()) …
 */
#ifndef MUB_POOL_HPP
#define MUB_POOL_HPP

#include "mub_base.hpp"
#include "mub_pool.h"

namespace mub {
inline namespace v1 {
namespace detail {

struct pool_life {
  using c_struct = mub_pool;
  static void init(c_struct *pool) noexcept { mub_pool_init(pool); }
  static void bare(c_struct *pool) noexcept { mub_pool_init(pool); }
  static void release(c_struct *pool) noexcept { mub_pool_term(pool); }
  static constexpr auto verify = mub_pool_verify;
  static constexpr auto memory_bytes = mub_pool_memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept { mub_pool_swap(a, b); }
};

class pool_place {
 public:
  using category = std::input_iterator_tag;
  template <class Address>
  using reference = Address;

  pool_place() = default;
  explicit pool_place(mub_pool_iter *walk) : walk_(walk), block_(mub_pool_iter_first(walk)) {}
  template <class Address>
  Address at() const noexcept {
    return block_;
  }
  void step() { block_ = mub_pool_iter_next(walk_); }
  void *entry() const noexcept { return block_; }

 private:
  mub_pool_iter *walk_ = nullptr;
  void *block_ = nullptr;
};

}  // namespace detail

/** @addtogroup pool_hpp
 * @{ */

/**
 * The range of the live blocks of a pool, created by pool::blocks(). The pool must not change while the range
 * is in use, which is not checked. A range has a single iteration, which begin() restarts: older iterators of
 * the range are then invalid.
 */
class live_blocks {
 public:
  /** An input iterator, which yields the address of a block. */
  using iterator = detail::iterator<detail::pool_place, void *>;

  /** Constructs the range of the live blocks of a pool; empty if memory ran out. */
  ///@{
  explicit live_blocks(mub_pool *pool) noexcept : walk_(mub_pool_iter_new(pool)) {}
  live_blocks(const live_blocks &) = delete;
  live_blocks &operator=(const live_blocks &) = delete;
  ~live_blocks() { mub_pool_iter_free(walk_); }
  ///@}

  /** Starts or restarts the iteration: chunk by chunk, in ascending order within each. */
  ///@{
  iterator begin() const { return iterator(detail::pool_place(walk_)); }
  iterator end() const noexcept { return {}; }
  ///@}

 private:
  mub_pool_iter *walk_;
};

/**
 * An allocator of blocks of one size; see mub_pool. It owns all blocks, which the destructor releases without
 * calling destructors of objects in them.
 */
class pool : public detail::owner<pool, detail::pool_life> {
 public:
  /** Constructs a pool of blocks of `block_size` bytes; with 0, no block can be allocated. */
  explicit pool(std::int64_t block_size = 0) noexcept : owner(std::in_place) { c()->block_size = block_size; }

  /**
   * Returns a copy, byte for byte, whose blocks have the same positions in its chunks; empty if memory ran
   * out. Addresses in the blocks still point into the source. See mub_pool_clone().
   */
  [[nodiscard]] pool clone() const {
    pool copy(c()->block_size);
    copy.c()->blocks_per_chunk = c()->blocks_per_chunk;
    mub_pool_chunk *map = mub_pool_map(c());
    // Without the map the free blocks of the copy would not be reused.
    if (map != nullptr) mub_pool_clone(c(), map, copy.c());
    mub_pool_umap(map);
    return copy;
  }

  /**
   * Takes a block, which is not constructed; nullptr if the block size is 0 or memory ran out. See
   * mub_pool_new().
   */
  [[nodiscard]] void *allocate() { return mub_pool_new(growing()); }

  /**
   * Returns a block; nothing checks that it belongs to this pool and is returned only once. See
   * mub_pool_free().
   */
  void deallocate(void *block) { mub_pool_free(c(), block); }

  /** Returns the number of live blocks. */
  std::int64_t size() const noexcept { return c()->live_count; }
  /** Checks whether there are no live blocks. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }

  /**
   * Releases all blocks, which invalidates their addresses; the block size is unchanged. See
   * mub_pool_empty().
   */
  void clear() { mub_pool_empty(c()); }

  /** Returns the range of the live blocks; empty if memory ran out. See mub_pool_iter_new(). */
  [[nodiscard]] live_blocks blocks() { return live_blocks(c()); }
};

/** @} */

}  // namespace v1
}  // namespace mub

#endif
