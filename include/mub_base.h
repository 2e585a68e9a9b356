/**
 * @defgroup base Rules that hold everywhere
 *
 * What every header of libmub shares. These rules hold unless a function says otherwise.
 *
 * - **Records.** Every container is a plain struct that the caller owns: on the stack, in a heap block or
 *   inside another struct. Pass its address to the module's `_init` before use and to `_term` afterwards. The
 *   address of a record is never NULL.
 * - **Threads.** Different containers are independent. Any number of threads may read one container, that is,
 *   call functions that take it as `const`, while no thread changes it. A change needs exclusive access.
 *   Containers that share a pool count as one for changes. The tag `threads` documents the exceptions.
 * - **Lengths.** Lengths, counts, indexes and positions are `int64_t`. A length, an index or a position of -1
 *   as a result means that there is none. A negative length passed with a text means that the text ends at
 *   its first NUL. Other negative counts are refused: they copy, clear, check and delete nothing.
 * - **Results.** Truth values are 1 and 0. Failures are reported by results alone: nothing aborts or logs,
 *   and `errno` carries no meaning.
 * - **Memory.** A call that runs out of memory is refused: it returns its failure result and leaves contents,
 *   counts and keys as they were. Reserved capacity may have grown.
 * - **Aliasing.** Bytes and keys that lie in the target's own buffer are used as if they had been copied
 *   before anything moves. A container may be exchanged with itself or cloned into itself, which changes
 *   nothing.
 * - **Pools.** A pool that `_init` made is owned by the container. A pool that the caller writes into a pool
 *   field is external and stays the caller's: blocks are taken from it and returned to it one by one, and it
 *   is never emptied.
 * - **Values.** A value is one 64-bit word that the library never interprets: a number, a pointer cast
 *   through `uintptr_t`, or a block of a value pool. Where a value is optional, 0 stands for none.
 * - **Callbacks.** A callback must not change the container that calls it. Of the result of a comparer, only
 *   the sign counts.
 *
 * Every function documents its parameters, its result and, under tags of their own, what else the caller has
 * to know:
 *
 * - `failure`: the result if nothing was found or done, and what happens if memory runs out; it begins with
 *   `none` if no result reports a failure
 * - `owner`: who owns what is passed, stored and returned
 * - `invalidates`: addresses and positions that are no longer valid after the call
 * - `cost`: how the time grows; constant without this tag
 * - `threads`: what differs from the rule above
 * - `bounds`: which parameter holds the length of which array
 * - `nullable`: parameters that may be NULL
 * - `level`: `low` for a building block of the everyday functions
 *
 * @{
 */
#ifndef MUB_BASE_H
#define MUB_BASE_H

#include <stdint.h>

/** The major version of these headers. */
#define MUB_VERSION_MAJOR 1
/** The minor version of these headers. */
#define MUB_VERSION_MINOR 0
/** The patch version of these headers. */
#define MUB_VERSION_PATCH 0
/** The version of these headers as text. */
#define MUB_VERSION "1.0.0"

#if defined(__GNUC__)
/** Marks what the library exports. */
#define MUB_API __attribute__((visibility("default")))
/** Lets the compiler check the arguments of a printf-like function. */
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

/**
 * Fills a value block that was just taken from a value pool.
 *
 * @param[in] value  the block: filled with zeros if it is fresh, as it was left if it is reused
 */
typedef void (*mub_init_fn)(uint64_t value);

/**
 * Releases what a value owns, when its container gives it up.
 *
 * @param[in] value  the value
 */
typedef void (*mub_free_fn)(uint64_t value);

/**
 * Adjusts a cloned value: translates the addresses in it that point into the source's user pool, with
 * mub_pool_get_addr() and mub_pool_set_addr().
 *
 * @param[in] map               the chunk map of `source_pool`; NULL if that has no chunks, or if no user
 *                              pools were given
 * @param[in] source            the value in the source, 0 included
 * @param[in] source_pool       the user pool that the source's values refer to; NULL if none was given
 * @param[in] destination       the value in the clone
 * @param[in] destination_pool  the copy of that pool, or the pool itself; NULL if none was given
 * @nullable map, source_pool, destination_pool
 */
typedef void (*mub_clone_fn)(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool,
                             uint64_t destination, mub_pool *destination_pool);

/**
 * Orders two values.
 *
 * @param[in] a  one value
 * @param[in] b  the other value
 * @return negative, 0 or positive if `a` sorts before, with or after `b`
 */
typedef int (*mub_compare_fn)(uint64_t a, uint64_t b);

/**
 * Orders a stored item against a key, or two items when an array is sorted.
 *
 * @param[in] item     the stored item
 * @param[in] key      the key, as it was passed to the operation; the other item when an array is sorted
 * @param[in] context  the caller's context; 0 when an array is sorted
 * @return negative, 0 or positive if the item sorts before, with or after the key
 */
typedef int (*mub_compare_item_fn)(uint64_t item, uint64_t key, uint64_t context);

/**
 * Orders a stored item against a key, or two items when an array is sorted, in the `_x` operations, which
 * pass two words of context.
 *
 * @param[in] context  the caller's context
 * @param[in] item     the stored item
 * @param[in] key      the key, as it was passed to the operation; the other item when an array is sorted
 * @param[in] extra    the caller's second word of context; 0 when an array is sorted
 * @return negative, 0 or positive if the item sorts before, with or after the key
 */
typedef int (*mub_compare_context_fn)(uint64_t context, uint64_t item, uint64_t key, uint64_t extra);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
