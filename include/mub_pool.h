/**
 * @defgroup pool mub_pool: fixed-size blocks that never move, released all at once
 *
 * An allocator of fixed-size blocks, which are taken from zero-filled chunks and reused last in, first out.
 * The addresses of returned blocks are kept on the free stack, an array of pages.
 *
 *     chunks ──► chunk 0 [block][block] … [block]          free_pages ──► page 0 [address] … [address]
 *                chunk 1 [block][block]  (unused)                         page 1 [address]
 *                                      ▲ chunk_used                                      ▲ free_used
 *
 * Blocks never move. Chunks and pages stay allocated until mub_pool_empty() releases all of them, so that a
 * whole structure of nodes is released in a few calls. To copy a pool whose blocks contain addresses of each
 * other, use mub_pool_map() and mub_pool_clone(), then translate each address with mub_pool_get_addr() and
 * mub_pool_set_addr().
 *
 * Set `block_size`, and `blocks_per_chunk` if 16 is too few, after mub_pool_init(); later change them only
 * right after mub_pool_empty(). Only the first block of a chunk is aligned as by malloc: make `block_size` a
 * multiple of the alignment that your blocks need (`sizeof` of a struct is). The pool does not check that a
 * returned block belongs to it, or that it is returned only once; built with `-fsanitize=address`, the
 * library reports blocks that are returned twice (see the guide to debugging).
 *
 * In the names of the low functions, `empty` refers to free blocks: mub_pool_from_empty() takes one from the
 * free stack. mub_pool_empty() is unrelated.
 *
 * What the everyday operations return:
 *
 * | operation             | success                | nothing to return          | out of memory            |
 * | --------------------- | ---------------------- | -------------------------- | ------------------------ |
 * | mub_pool_new()        | a block                | NULL without a block size  | NULL                     |
 * | mub_pool_map()        | the chunk map          | NULL without a chunk table | NULL                     |
 * | mub_pool_get_addr()   | the index of the chunk | -1                         |                          |
 * | mub_pool_set_addr()   | the address            | NULL                       |                          |
 * | mub_pool_iter_new()   | an iterator            |                            | NULL                     |
 * | mub_pool_iter_first() | a block                | NULL                       |                          |
 * | mub_pool_iter_next()  | a block                | NULL                       |                          |
 * | mub_pool_clone()      | (no result)            |                            | the destination is empty |
 *
 * @{
 */
#ifndef MUB_POOL_H
#define MUB_POOL_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A pool of fixed-size blocks. Set `block_size` before the first block is taken. */
struct mub_pool {
  int64_t block_size;       /**< bytes per block; 0: no block can be taken */
  int64_t blocks_per_chunk; /**< blocks per chunk, addresses per page; raised to at least 16 on first use */
  int64_t live_count;       /**< blocks taken by mub_pool_new() less blocks returned */
  int64_t chunk_used;       /**< blocks taken from the last chunk in use; -1: no chunk is in use */
  int64_t chunk_count;      /**< chunks in use */
  int64_t chunk_capacity;   /**< slots in `chunks`; those from `chunk_count` on are NULL */
  void **chunks;            /**< the chunk table; NULL until a block is taken */
  int64_t free_used;        /**< addresses in the last free page; -1: no page is in use */
  int64_t free_count;       /**< free pages in use; all but the last are full */
  int64_t free_capacity;    /**< slots in `free_pages`; those from `free_count` on are NULL or spare pages */
  void **free_pages;        /**< the free stack, pages of returned blocks; NULL until one is returned */
};

/** One chunk of a chunk map, which is sorted by address. */
struct mub_pool_chunk {
  int64_t index; /**< position in the pool's chunk table */
  uint64_t base; /**< the address of its first block */
};

/** An iterator over the live blocks of a pool, created by mub_pool_iter_new(). */
typedef struct mub_pool_iter {
  int64_t chunk;      /**< the index of the chunk of the block visited last */
  int64_t slot;       /**< the index of that block in its chunk */
  void **free_blocks; /**< the addresses on the free stack, sorted; NULL without free pages */
  mub_pool *pool;     /**< the pool */
} mub_pool_iter;

/**
 * Initialises an empty pool.
 *
 * Nothing is allocated; set `block_size` next.
 *
 * @param[out] pool  its old contents are ignored
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API void mub_pool_init(mub_pool *pool);

/**
 * Releases all memory of the pool; the same as mub_pool_empty().
 *
 * The record itself belongs to the caller.
 *
 * @param[in,out] pool  the pool
 * @owner all blocks are released
 * @invalidates all blocks, chunk maps and iterators
 * @cost one release per chunk and page, regardless of the number of blocks
 */
MUB_API void mub_pool_term(mub_pool *pool);

/**
 * Releases every chunk and page, and thereby every block.
 *
 * `block_size` and `blocks_per_chunk` are unchanged, so the pool can be used again at once.
 *
 * @param[in,out] pool  the pool
 * @owner all blocks are released
 * @invalidates all blocks, chunk maps and iterators
 * @cost one release per chunk and page, regardless of the number of blocks
 */
MUB_API void mub_pool_empty(mub_pool *pool);

/**
 * Takes a block from the pool: the one returned last, or else a fresh one.
 *
 * @param[in,out] pool  the pool
 * @return the block, zero-filled if it is fresh and with its old content if it is reused
 * @failure NULL if `block_size` is 0 or memory ran out
 * @owner the block belongs to the pool's user until it is returned or the pool is emptied
 * @invalidates iterators of the pool, and its chunk maps if it takes another chunk
 * @cost O(1); one allocation per chunk
 */
MUB_API void *mub_pool_new(mub_pool *pool);

/**
 * Returns a block to the pool; it is the next one to be reused.
 *
 * @param[in,out] pool  the pool
 * @param[in] block     a block of this pool; NULL is ignored
 * @failure if there is no memory for another page of the free stack, the block is never reused: it is
 *   released with its chunk, and iterators return it until then
 * @owner the block is returned to the pool
 * @invalidates the block, and iterators of the pool
 * @nullable block
 */
MUB_API void mub_pool_free(mub_pool *pool, void *block);

/**
 * Makes room for one more chunk or page in a table: a full table grows by half its count, by at least 4, to a
 * multiple of 4.
 *
 * @param[in,out] group  the address of the pool's `chunk_used` or `free_used`: the first of the four fields
 *                       of that table
 * @failure the table is unchanged if memory runs out
 * @invalidates addresses of the table's slots
 * @cost O(slots of the table)
 * @level low
 */
MUB_API void mub_pool_expand(int64_t *group);

/**
 * Pops the block that was returned last off the free stack.
 *
 * Unlike mub_pool_new(), it does not count the block in `live_count`, which is lowered when the block is
 * returned; until then, iterators return the block.
 *
 * @param[in,out] pool  the pool
 * @return the block
 * @failure NULL if the stack is empty, or if its last address is NULL, as in a pool that was cloned without a
 *   map; the NULL is popped, too
 * @owner the block belongs to the caller until it is returned or the pool is emptied
 * @invalidates iterators of the pool
 * @level low
 */
MUB_API void *mub_pool_from_empty(mub_pool *pool);

/**
 * Swaps two pools.
 *
 * Blocks keep their addresses.
 *
 * @param[in,out] a  one pool
 * @param[in,out] b  the other pool
 * @owner the blocks of one pool now belong to the other
 * @invalidates chunk maps and iterators of both pools
 */
MUB_API void mub_pool_swap(mub_pool *a, mub_pool *b);

/**
 * Builds a chunk map, the chunks in use sorted by address, for mub_pool_get_addr().
 *
 * @param[in] pool  the pool
 * @return a heap array of `chunk_count` elements, valid until the pool takes another chunk or is emptied
 * @failure NULL if the pool has no chunk table, or if memory ran out
 * @owner the map is the caller's; release it with mub_pool_umap()
 * @cost O(chunks log chunks)
 */
MUB_API mub_pool_chunk *mub_pool_map(const mub_pool *pool);

/**
 * Releases a chunk map.
 *
 * @param[in,out] map  a map from mub_pool_map(); NULL is ignored
 * @owner the chunk map is released
 * @invalidates the map
 * @nullable map
 */
MUB_API void mub_pool_umap(mub_pool_chunk *map);

/**
 * Translates an address into a chunk index and an offset, which are the same in a clone of the pool.
 *
 * @param[in] pool     the pool
 * @param[in] map      the chunk map of `pool`; NULL finds nothing
 * @param[in] block    any address in a chunk; the end of the chunk is not checked; NULL is not found
 * @param[out] offset  receives the distance in bytes from the start of the chunk; unchanged if nothing is
 *                     found
 * @return the index in the chunk table
 * @failure -1 if the address is NULL or below every chunk, or if `map` is NULL
 * @cost O(log chunks)
 * @nullable map, block
 */
MUB_API int mub_pool_get_addr(const mub_pool *pool, const mub_pool_chunk *map, const void *block,
                              int64_t *offset);

/**
 * Translates a chunk index and an offset back into an address.
 *
 * @param[in] pool    the pool
 * @param[in] chunk   an index in the chunk table, not checked against the number of chunks
 * @param[in] offset  bytes from the start of the chunk
 * @return the address
 * @failure NULL for a negative index
 * @owner the address lies in a block of the pool and is valid until that block is returned or the pool is
 *   emptied
 */
MUB_API void *mub_pool_set_addr(const mub_pool *pool, int chunk, int64_t offset);

/**
 * Copies a pool chunk by chunk, byte for byte, and translates its free stack.
 *
 * Addresses stored in blocks are copied unchanged: translate them afterwards.
 *
 * @param[in] source           the pool to copy; it does not change
 * @param[in] map              the chunk map of `source`; NULL: blocks that were returned to `source` are not
 *                             reused by the copy, and iterators return them
 * @param[in,out] destination  an initialised pool, which is emptied first; `block_size` and
 *                             `blocks_per_chunk` are copied
 * @failure the destination is empty if memory runs out
 * @owner the copies of the chunks belong to the destination
 * @invalidates all blocks, chunk maps and iterators of the destination
 * @cost one allocation and one copy per chunk and page; O(log chunks) per free block
 * @nullable map
 */
MUB_API void mub_pool_clone(const mub_pool *source, const mub_pool_chunk *map, mub_pool *destination);

/**
 * Checks whether the pool is intact.
 *
 * Checks the counts, the tables, and that the addresses on the free stack are those of blocks of the pool,
 * each only once: it finds blocks that were returned twice, or to the wrong pool.
 *
 * @param[in] pool   the pool
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the pool is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(chunks + f) for f free blocks, and O(f) for every 16384 blocks taken from chunks: with many blocks,
 *   it grows with the product of the two
 * @nullable what
 */
MUB_API int mub_pool_verify(const mub_pool *pool, const char **what);

/**
 * Returns the size of the heap memory that the pool holds.
 *
 * Counts its chunks and the pages of its free stack, used or not, and their tables, as requested from
 * `malloc`; not the record itself.
 *
 * @param[in] pool  the pool
 * @return the number of bytes
 * @failure none
 * @cost O(free pages)
 */
MUB_API int64_t mub_pool_memory_bytes(const mub_pool *pool);

/**
 * Compares two elements of a chunk map by address, for qsort.
 *
 * @param[in] a  the address of a mub_pool_chunk
 * @param[in] b  the address of another
 * @return -1, 0 or 1 if the first address is below, equal to or above the second
 * @level low
 */
MUB_API int mub_pool_compare(const void *a, const void *b);

/**
 * Sorts a chunk map by address.
 *
 * @param[in,out] map  the map
 * @param[in] count    the number of elements; below 1 does nothing
 * @invalidates nothing
 * @cost O(count log count)
 * @bounds map[count]
 * @level low
 */
MUB_API void mub_pool_sort(mub_pool_chunk *map, int64_t count);

/**
 * Finds the chunk with the greatest address at or below an address.
 *
 * Only the low 32 bits of the distances are compared, which is correct as long as the chunks and the address
 * lie within 2 GiB of each other. mub_pool_get_addr() does not have this limit.
 *
 * @param[in] map      a sorted map
 * @param[in] count    the number of its elements
 * @param[in] address  the address to look for; NULL is treated as any other
 * @return the position in the map
 * @failure -1 if there is none
 * @cost O(log count)
 * @bounds map[count]
 * @nullable address
 * @level low
 */
MUB_API int mub_pool_bfind(const mub_pool_chunk *map, int64_t count, const void *address);

/**
 * Compares two free blocks by address, for qsort and bsearch.
 *
 * @param[in] a  a pointer to the address of a block
 * @param[in] b  a pointer to the address of another
 * @return -1, 0 or 1 if the first address is below, equal to or above the second
 * @level low
 */
MUB_API int mub_pool_empty_compare(const void *a, const void *b);

/**
 * Sorts block addresses.
 *
 * @param[in,out] blocks  the addresses
 * @param[in] count       the number of addresses; below 1 does nothing
 * @invalidates nothing
 * @cost O(count log count)
 * @bounds blocks[count]
 * @level low
 */
MUB_API void mub_pool_empty_sort(void **blocks, int64_t count);

/**
 * Checks whether a block is among sorted block addresses.
 *
 * @param[in] blocks  the sorted addresses; NULL holds none
 * @param[in] count   the number of addresses
 * @param[in] block   the block to look for; NULL is not found
 * @return 1 if it is, else 0
 * @cost O(log count)
 * @bounds blocks[count]
 * @nullable blocks, block
 * @level low
 */
MUB_API int mub_pool_empty_find(void *const *blocks, int64_t count, const void *block);

/**
 * Copies the addresses on the free stack and sorts them.
 *
 * @param[in] pool  the pool
 * @param[out] out  room for `(free_count - 1) * blocks_per_chunk + free_used` addresses; nothing is stored if
 *                  `free_count` is 0
 * @invalidates nothing
 * @cost O(addresses log addresses)
 * @level low
 */
MUB_API void mub_pool_empty_array(const mub_pool *pool, void **out);

/**
 * Creates an iterator over the live blocks.
 *
 * Start it with mub_pool_iter_first(). The pool must not change during the iteration.
 *
 * @param[in,out] pool  the pool
 * @return the iterator
 * @failure NULL if memory ran out; the other iterator functions accept it and return no blocks
 * @owner the iterator is the caller's; release it with mub_pool_iter_free()
 * @invalidates nothing
 * @cost O(f log f) for f free blocks
 * @threads the pool is only read, as by a function that takes it as const
 */
MUB_API mub_pool_iter *mub_pool_iter_new(mub_pool *pool);

/**
 * Releases an iterator.
 *
 * @param[in,out] iter  the iterator; NULL is ignored
 * @owner the iterator is released
 * @invalidates the iterator
 * @nullable iter
 */
MUB_API void mub_pool_iter_free(mub_pool_iter *iter);

/**
 * Starts or restarts the iteration.
 *
 * @param[in,out] iter  the iterator, from mub_pool_iter_new(); NULL yields no blocks
 * @return the first live block
 * @failure NULL if there is none
 * @owner the block remains its user's
 * @invalidates nothing
 * @cost O(log f) for each block visited or skipped, with f free blocks
 * @nullable iter
 */
MUB_API void *mub_pool_iter_first(mub_pool_iter *iter);

/**
 * Advances to the next live block: chunk by chunk, in ascending order within each.
 *
 * @param[in,out] iter  the iterator, from mub_pool_iter_new(); NULL yields no blocks
 * @return the block
 * @failure NULL at the end
 * @owner the block remains its user's
 * @invalidates nothing
 * @cost O(log f) for each block visited or skipped, with f free blocks
 * @nullable iter
 */
MUB_API void *mub_pool_iter_next(mub_pool_iter *iter);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
