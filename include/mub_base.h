/**
 * @defgroup base mub_base: common rules, and the version
 *
 * These conventions apply to every header of libmub, unless the documentation of a function says otherwise.
 *
 * - **Records.** Every container, bit set, string, stream and pool is a plain struct that the caller owns: on
 *   the stack, in a heap block or inside another struct. Pass its address to the module's `_init` before use
 *   and to `_term` afterwards. A pointer to a record must not be NULL.
 * - **Threads.** Records are independent of each other. Any number of threads may read one record, that is,
 *   call functions that take it as `const`, while no thread changes it. A change needs exclusive access.
 *   Records that share a pool count as one record in this rule. Exceptions are documented under the tag
 *   `threads`.
 * - **Lengths.** Lengths, counts, indexes and positions are `int64_t`, except in mub_bits, where they are
 *   `uint32_t`, and where a function returns an index as `int`. A function that has no length, index or
 *   position to return returns -1. A negative length of a text or key, and of bytes added to a stream,
 *   means "up to the first NUL". Any other negative count does nothing. Some functions, mostly building
 *   blocks, use lengths as given, and say so.
 * - **Results.** Boolean results are 1 and 0. Failures are reported by the result alone: the library never
 *   aborts or logs, and the value of `errno` is unspecified after a call.
 * - **Memory.** A call that runs out of memory returns its failure result and leaves contents, counts and
 *   keys unchanged. Only the reserved capacity may have grown.
 * - **Aliasing.** Bytes and keys passed to a function may lie in the target's own buffer: the function
 *   behaves as if it had copied them first. Swapping a record with itself, or cloning it into itself, has no
 *   effect.
 * - **Pools.** A pool that `_init` creates is owned by the container. A pool that the caller stores in a pool
 *   field is external and remains the caller's: blocks are taken from it and returned to it individually, and
 *   it is never emptied.
 * - **Values.** A value is a 64-bit word, such as a number or a pointer cast through `uintptr_t`, that the
 *   library does not interpret, unless the container has a value pool: then every value must be 0 or the
 *   address of a block of that pool, because `_free` returns it to an external pool, and `_clone` translates
 *   it if the pool is owned. Where a value is optional, 0 means none.
 * - **Callbacks.** A callback must not change the container that calls it. Only the sign of a comparator's
 *   result matters.
 *
 * In addition to parameters and results, these tags document a function:
 *
 * - `failure`: the result if nothing was found or done, and what happens if memory runs out; `none` if the
 *   result does not report failures
 * - `owner`: who owns what is passed, stored and returned
 * - `invalidates`: the pointers, positions and iterations that the call makes invalid
 * - `cost`: the time complexity; constant if the tag is missing
 * - `threads`: how the function differs from the thread rule above
 * - `bounds`: which parameter holds the length of an array
 * - `nullable`: parameters that may be NULL
 * - `level`: `low` for a building block of other functions, which most programs do not need
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
/** The version of these headers as a number to compare, as by mub_version_number(). */
#define MUB_VERSION_NUMBER (10000 * MUB_VERSION_MAJOR + 100 * MUB_VERSION_MINOR + MUB_VERSION_PATCH)

#if defined(__GNUC__)
/** Marks a function or object that the library exports. */
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
 * Initialises a block that was just taken from a value pool.
 *
 * @param[in] value  the address of the block, which is zero-filled if it is fresh and holds its old content
 *                   if it is reused
 */
typedef void (*mub_init_fn)(uint64_t value);

/**
 * Releases what a value owns, when the value leaves its container.
 *
 * @param[in] value  the value, not 0 unless the calling function says otherwise
 */
typedef void (*mub_free_fn)(uint64_t value);

/**
 * Adjusts a cloned value: translates the addresses in it that point into the source's user pool, by means of
 * mub_pool_get_addr() and mub_pool_set_addr().
 *
 * @param[in] map               the chunk map of `source_pool`; NULL if one of the two user pools was not
 *                              given, and possibly if that pool has no chunks
 * @param[in] source            the value in the source, 0 included
 * @param[in] source_pool       the user pool that the source's values refer to; NULL if none was given
 * @param[in] destination       the value in the clone
 * @param[in] destination_pool  the copy of that pool, or the pool itself; NULL if none was given
 * @nullable map, source_pool, destination_pool
 */
typedef void (*mub_clone_fn)(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool,
                             uint64_t destination, mub_pool *destination_pool);

/**
 * Compares two values.
 *
 * @param[in] a  one value
 * @param[in] b  the other value
 * @return a negative number, 0 or a positive number if `a` is less than, equal to or greater than `b`
 */
typedef int (*mub_compare_fn)(uint64_t a, uint64_t b);

/**
 * Compares a stored item with a key or, when an array is sorted, with another item.
 *
 * @param[in] item     the stored item
 * @param[in] key      the key, as it was passed to the operation; the other item when an array is sorted
 * @param[in] context  the caller's context; 0 when an array is sorted
 * @return a negative number, 0 or a positive number if the item is less than, equal to or greater than the
 *   key
 */
typedef int (*mub_compare_item_fn)(uint64_t item, uint64_t key, uint64_t context);

/**
 * Compares a stored item with a key or, when an array is sorted, with another item. The form of the `_x`
 * functions, which pass two words of context.
 *
 * @param[in] context  the caller's context
 * @param[in] item     the stored item
 * @param[in] key      the key, as it was passed to the operation; the other item when an array is sorted
 * @param[in] extra    the caller's second word of context; 0 when an array is sorted
 * @return a negative number, 0 or a positive number if the item is less than, equal to or greater than the
 *   key
 */
typedef int (*mub_compare_context_fn)(uint64_t context, uint64_t item, uint64_t key, uint64_t extra);

/**
 * Returns the version of the library that is in use, which may be later than that of the headers.
 *
 * @return the version as text, such as "1.0.0"
 * @failure none
 * @owner the text belongs to the library and never changes
 */
MUB_API const char *mub_version(void);

/**
 * Returns the version of the library that is in use, as a number to compare with `MUB_VERSION_NUMBER`.
 *
 * @return 10000 times the major version, plus 100 times the minor version, plus the patch version
 * @failure none
 */
MUB_API int mub_version_number(void);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
