/* mub_base.h: what every header of libmub shares.
 *
 * Rules that hold everywhere, unless a function says otherwise:
 *
 * Records.    Every container is a plain struct that the caller owns: on the stack, in a heap block or inside
 *             another struct. Its address goes to the module's `_init` before use and to `_term` afterwards.
 *             A record is not NULL.
 * Threads.    Different records are independent. Any number of threads may read one record (call functions
 *             that take it as const) while nobody changes it; a change needs exclusive access. Records that
 *             share a pool count as one for changes.
 * Lengths.    Lengths, counts, indexes and positions are int64_t; -1 means that there is none. A negative length
 *             passed with a text means that the text ends at its first NUL. Other negative counts are refused:
 *             they copy, clear, check and delete nothing.
 * Results.    Truth values are 1 and 0. Failures show in results alone: nothing aborts or logs, and errno carries no
 *             meaning.
 * Memory.     A call that runs out of memory is refused: it gives its failure result and leaves contents, counts
 *             and keys as they were. Reserved capacity may have grown.
 * Aliasing.   Bytes (and keys) that lie in the target's own buffer count as copied before anything moves.
 * Pools.      A pool that `_init` made belongs to the container. A pool that the caller writes into a pool field
 *             stays the caller's: blocks are taken from it and returned to it one by one, and it is never emptied.
 * Values.     A value is one 64-bit word that the library never looks into: a number, a pointer cast through
 *             uintptr_t, or a block of a value pool. 0 means that there is none.
 * Callbacks.  A callback must not change the container that calls it. Comparers are read by sign.
 */
#ifndef MUB_BASE_H
#define MUB_BASE_H

#include <stdint.h>

#define MUB_VERSION_MAJOR 1
#define MUB_VERSION_MINOR 0
#define MUB_VERSION_PATCH 0
#define MUB_VERSION "1.0.0"

#if defined(__GNUC__)
#define MUB_API __attribute__((visibility("default")))
#define MUB_PRINTF(format_index, first_index) __attribute__((format(printf, format_index, first_index)))
#else
#define MUB_API
#define MUB_PRINTF(format_index, first_index)
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mub_pool mub_pool;
typedef struct mub_pool_chunk mub_pool_chunk;

/* mub_init_fn: fills a value block just taken from a value pool (zero-filled when fresh, as left when reused). */
typedef void (*mub_init_fn)(uint64_t value);

/* mub_free_fn: releases what a value owns, when its container lets go of it. */
typedef void (*mub_free_fn)(uint64_t value);

/* mub_clone_fn: mends one cloned value. `destination` is the copy of `source`; addresses in it that point into
 * `source_pool` are translated to `destination_pool` with mub_pool_get_addr (through `map`, the chunk map of
 * `source_pool`, or NULL when no pools were given) and mub_pool_set_addr. */
typedef void (*mub_clone_fn)(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool,
                             uint64_t destination, mub_pool *destination_pool);

/* mub_compare_fn: negative, 0 or positive as value `a` sorts before, with or after value `b`. */
typedef int (*mub_compare_fn)(uint64_t a, uint64_t b);

/* mub_compare_item_fn: orders a stored item against a searched key; `context` comes from the caller. */
typedef int (*mub_compare_item_fn)(uint64_t item, uint64_t key, uint64_t context);

/* mub_compare_context_fn: the same for the `_x` operations, with a word of context before and after. */
typedef int (*mub_compare_context_fn)(uint64_t context, uint64_t item, uint64_t key, uint64_t extra);

#ifdef __cplusplus
}
#endif

#endif
