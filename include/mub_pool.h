/* mub_pool.h: fixed-size blocks, carved from zero-filled chunks and reused last in, first out.
 *
 *   chunks ──► chunk 0 [block][block] … [block]          free_pages ──► page 0 [address] … [address]
 *              chunk 1 [block][block]  (unused)                         page 1 [address]
 *                                    ▲ chunk_used                                      ▲ free_used
 *
 * Blocks never move. Chunks and pages stay allocated until mub_pool_empty, which releases them all at once: that is
 * how a whole structure of nodes goes in a few calls. A pool, and every address kept in its blocks, can be copied by
 * address translation: mub_pool_map, mub_pool_clone, then mub_pool_get_addr and mub_pool_set_addr for each address.
 *
 * The owner sets `block_size` after mub_pool_init and before the first block, and changes neither it nor
 * `blocks_per_chunk` again but after mub_pool_empty. The pool does not check that a block given back is its own, or that it
 * is given back once.
 *
 * Parameters, where a function does not say otherwise:
 *   pool             the pool
 *   a, b             the two pools
 *   map              a chunk map, from mub_pool_map
 *   count            elements of `map`, or addresses at `blocks`
 *   blocks           the addresses of blocks
 *   block, address   the address to look for
 *   iter             the iterator, from mub_pool_iter_new; NULL is a walk without blocks
 *
 * Ownership, where a function does not say otherwise:
 *   void *          the result is a block of the pool, valid until it is given back or the pool is emptied
 *   _term, _empty   all blocks are gone
 *   _free           the block is the pool's again
 *   _swap           the blocks of one pool are the other's
 *   _clone          the copies of the chunks are the destination's
 *   _umap           the chunk map is released
 *   _iter_free      the iterator is released
 *   _set_addr       the address is one in a block of the pool, valid until that is given back or the pool is emptied
 *   map, blocks     stays the caller's */
#ifndef MUB_POOL_H
#define MUB_POOL_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

struct mub_pool {
  int64_t block_size; /* bytes per block; 0: the pool hands out nothing */
  int64_t
      blocks_per_chunk; /* also addresses per free page; the first take or release raises it to at least 16 */
  int64_t live_count;   /* blocks handed out and not given back */

  int64_t chunk_used;     /* blocks taken from the last chunk in use; -1: no chunk is in use */
  int64_t chunk_count;    /* chunks in use */
  int64_t chunk_capacity; /* slots of the table; those behind chunk_count are NULL or hold spare chunks */
  void **chunks;          /* the chunk table; NULL until the first chunk */

  int64_t free_used;     /* addresses in the last free page; -1: no page is in use */
  int64_t free_count;    /* free pages in use; all but the last are full */
  int64_t free_capacity; /* slots of the table; those behind free_count are NULL or hold spare pages */
  void **free_pages;     /* the stack of released blocks; NULL until the first release */
};

/* One chunk of a chunk map, which is sorted by base address. */
struct mub_pool_chunk {
  int64_t index; /* position in the pool's chunk table */
  uint64_t base; /* address of its first block */
};

/* A walk over the live blocks of a pool; made by mub_pool_iter_new. */
typedef struct mub_pool_iter {
  int64_t chunk;      /* chunk of the block returned last */
  int64_t slot;       /* its place in the chunk, in blocks */
  void **free_blocks; /* the released blocks, sorted; NULL when there were none */
  mub_pool *pool;     /* the pool that is walked */
} mub_pool_iter;

/* mub_pool_init: make the record an empty pool. Nothing is allocated; set `block_size` next.
 *   pool   its old content is not looked at */
MUB_API void mub_pool_init(mub_pool *pool);

/* mub_pool_term: release everything; the same as mub_pool_empty. The record itself is its owner's to release. */
MUB_API void mub_pool_term(mub_pool *pool);

/* mub_pool_empty: release every chunk and page, and with them every block. `block_size` and `blocks_per_chunk`
 * stay, so the pool can be used again at once.
 * Invalidates: all its blocks. Cost: one release a chunk and a page, whatever the number of blocks. */
MUB_API void mub_pool_empty(mub_pool *pool);

/* mub_pool_new: take a block: the one released last, else a fresh one.
 * Returns the block, zero-filled when fresh and as it was left when reused; NULL when `block_size` is 0 or memory
 * ran out. Cost: O(1), one allocation a chunk. */
MUB_API void *mub_pool_new(mub_pool *pool);

/* mub_pool_free: give a block back, to be handed out again next.
 *   block   from this pool; NULL is ignored
 * When there is no memory for another page of the free stack, the block is dropped: it is not handed out again, goes
 * with its chunk, and is met by walks until then. */
MUB_API void mub_pool_free(mub_pool *pool, void *block);

/* mub_pool_expand: make room for one more page or chunk in a table (by half its count, at least 4, in multiples of
 * 4). Memory running out leaves the group as it was.
 *   group   address of the pool's `chunk_used` or `free_used`: the first of the four fields of that table */
MUB_API void mub_pool_expand(int64_t *group);

/* mub_pool_from_empty: pop the block released last off the free stack. `live_count` stays: mub_pool_new counts.
 * Returns the block; NULL when the stack is empty. */
MUB_API void *mub_pool_from_empty(mub_pool *pool);

/* mub_pool_swap: exchange two pools, blocks and all. Blocks keep their addresses. */
MUB_API void mub_pool_swap(mub_pool *a, mub_pool *b);

/* mub_pool_map: the chunk map: the chunks in use by ascending address, for mub_pool_get_addr.
 * Returns a heap array of `chunk_count` elements, to be released with mub_pool_umap; NULL when the pool has no chunk
 * table or memory ran out. Valid until the pool takes another chunk or is emptied. */
MUB_API mub_pool_chunk *mub_pool_map(const mub_pool *pool);

/* mub_pool_umap: release a chunk map.
 *   map   from mub_pool_map; NULL is ignored */
MUB_API void mub_pool_umap(mub_pool_chunk *map);

/* mub_pool_get_addr: translate an address into a chunk and an offset, which are the same in a clone of the pool.
 *   map      the chunk map of `pool`; NULL finds nothing
 *   block    any address in a chunk; the end of the chunk is not tested
 *   offset   receives the distance in bytes from the chunk's base; unchanged when nothing is found
 * Returns the index in the chunk table; -1 when the address is NULL or below every chunk. Cost: O(log chunks). */
MUB_API int mub_pool_get_addr(const mub_pool *pool, const mub_pool_chunk *map, const void *block,
                              int64_t *offset);

/* mub_pool_set_addr: translate a chunk and an offset back into an address.
 *   chunk    an index in the chunk table, not tested against its end; negative: none
 *   offset   bytes from the chunk's base
 * Returns the address; NULL for a negative index. */
MUB_API void *mub_pool_set_addr(const mub_pool *pool, int chunk, int64_t offset);

/* mub_pool_clone: copy a pool, chunk by chunk and byte for byte, its free stack translated. Addresses that the
 * blocks hold are copied as they are: translate them afterwards.
 *   source        unchanged
 *   map           the chunk map of `source`; without it (NULL) the copy's free stack holds no blocks
 *   destination   emptied first; stays empty when memory runs out
 * Cost: one allocation and one copy a chunk. */
MUB_API void mub_pool_clone(const mub_pool *source, const mub_pool_chunk *map, mub_pool *destination);

/* mub_pool_compare: the qsort comparer of chunk maps: by base address.
 *   a, b   addresses of two mub_pool_chunk
 * Returns -1, 0 or 1. */
MUB_API int mub_pool_compare(const void *a, const void *b);

/* mub_pool_sort: sort a chunk map by base address.
 *   count   elements; below 1 does nothing */
MUB_API void mub_pool_sort(mub_pool_chunk *map, int64_t count);

/* mub_pool_bfind: find the chunk with the greatest base at or below an address.
 *   map     sorted, `count` elements
 * Only the low 32 bits of the distances are compared: exact while the chunks and the address lie within 2 GiB of
 * one another. mub_pool_get_addr has no such limit.
 * Returns the position in the map; -1 when there is none. Cost: O(log count). */
MUB_API int mub_pool_bfind(const mub_pool_chunk *map, int64_t count, const void *address);

/* mub_pool_empty_compare: the qsort and bsearch comparer of free blocks: by address.
 *   a, b   addresses of two block addresses
 * Returns -1, 0 or 1. */
MUB_API int mub_pool_empty_compare(const void *a, const void *b);

/* mub_pool_empty_sort: sort block addresses.
 *   count   elements; below 1 does nothing */
MUB_API void mub_pool_empty_sort(void **blocks, int64_t count);

/* mub_pool_empty_find: tell whether a block is among sorted block addresses.
 *   blocks   sorted, `count` elements; NULL holds nothing
 * Returns 1 when it is, else 0. Cost: O(log count). */
MUB_API int mub_pool_empty_find(void *const *blocks, int64_t count, const void *block);

/* mub_pool_empty_array: copy the addresses on the free stack and sort them.
 *   out   room for (free_count - 1) * blocks_per_chunk + free_used addresses */
MUB_API void mub_pool_empty_array(const mub_pool *pool, void **out);

/* mub_pool_iter_new: prepare a walk over the live blocks. The pool must not change until the walk ends.
 * Returns the iterator, to be released with mub_pool_iter_free; NULL when memory ran out (which the other iterator
 * functions accept as a walk without blocks). Cost: sorts the released blocks. */
MUB_API mub_pool_iter *mub_pool_iter_new(mub_pool *pool);

/* mub_pool_iter_free: release an iterator.
 *   iter   NULL is ignored */
MUB_API void mub_pool_iter_free(mub_pool_iter *iter);

/* mub_pool_iter_first: start the walk, or start it again.
 * Returns the first live block, NULL when there is none. */
MUB_API void *mub_pool_iter_first(mub_pool_iter *iter);

/* mub_pool_iter_next: step to the next live block: chunk by chunk, in ascending order within each.
 * Returns the block; NULL at the end. Cost: O(log released blocks). */
MUB_API void *mub_pool_iter_next(mub_pool_iter *iter);

#ifdef __cplusplus
}
#endif

#endif
