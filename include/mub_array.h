/**
 * @defgroup array_h mub_array.h: growable arrays
 *
 * Growable arrays, used as plain lists or kept sorted as dictionaries.
 *
 *     mub_array    entries ──► [offset, length, value][offset, length, value] …  byte-string keys
 *                                  │
 *                  keys    ──► "pearappleplum…"   the bytes of all keys, in one stream
 *
 *     mub_arrayd   entries ──► [key, value][key, value] …     32-bit integer keys
 *     mub_arrayx   entries ──► [key, value][key, value] …     64-bit integer keys
 *     mub_arrays   items   ──► [item][item] …                 bare 64-bit items, ordered by your comparers
 *     mub_arrayt   [word][word][word][word]                   64-bit words, the first four in the record
 *                  tail    ──► [word][word] …
 *
 * **Growth.** A table grows by half its count, at least 8 and at most 65536 slots, or to what was asked for
 * if that is more, in multiples of 4; it never shrinks. Fresh slots are all zero. Growth moves the table:
 * pointers to entries and items are then invalid, as they are after every operation that adds, removes or
 * sorts.
 *
 * **Positions.** `_get_entry`, `_get_at`, `_set_at` and `_update_at` reach every slot of the table, also
 * those from `count` up to `capacity`; the count does not change. A fresh slot reads as an empty key (an
 * integer key as 0) and value 0, a used one as it was left. Insertion and removal are bounded by `count`, and
 * so are all positions in mub_arrayt.
 *
 * **Sorted use.** Operations that need a sorted array search by halving the table and rely on the order that
 * the `descending` field names: 0 ascending (as after `_init`), else descending. Set it before the first
 * insertion. In any other order they find or place a key arbitrarily, yet never outside the table. Among
 * equal keys, which only the operations without a search can add, any one is found.
 *
 * **Sorting.** The sorts do not look at `descending`: sort a `descending` array with direction 0. Except for
 * mub_arrayt_qsort() they take no memory.
 *
 * **Value pool.** The `_new` operations take a block of `pool` for the value (in mub_arrays: for the item)
 * and pass it to an initialiser before the new entry is in the array. A pool made by `_init` has no block
 * size: store the size of your values in `pool->block_size` first. Without a block (no pool, no size, no
 * memory) the entry is added nevertheless, with value 0.
 *
 * **Releasing.** The `_free` operations call your function with each value that is not 0, and return its
 * block if the pool is external. Blocks of an owned pool are released with the whole pool: `_free`,
 * `_free_at` and `_free_all_entry` leave them allocated.
 *
 * **Clones.** A clone that runs out of memory is empty, but its `count` is that of its source; nothing reads
 * beyond `capacity`, and the next growth turns those entries into real ones, all zero. A clone of a
 * mub_arrayt is unchanged instead.
 *
 * What the operations return, those with a key on a sorted array:
 *
 * | operation       | key present                | key absent                    | out of memory          |
 * | --------------- | -------------------------- | ----------------------------- | ---------------------- |
 * | `_insert`       | 0, value unchanged         | 1, added                      | 1, unchanged           |
 * | `_insert_new`   | -1                         | the index of the new entry    | -1                     |
 * | `_entry_insert` | the entry                  | the new entry                 | NULL                   |
 * | `_entry_find`   | the entry                  | NULL                          |                        |
 * | `_find`         | the value or item          | 0                             |                        |
 * | `_find_index`   | its index                  | -1                            |                        |
 * | `_bfind`        | the value or item          | the next one's, or the last's |                        |
 * | `_bfind_index`  | its index                  | the next one's, or the last's |                        |
 * | `_update`       | the previous value or item | 0, not added                  |                        |
 * | `_remove`       | the value or item          | 0                             |                        |
 * | `_append_new`   | the new block              | the new block                 | 0                      |
 * | `_clone`        |                            |                               | the destination, empty |
 *
 * In an empty array `_bfind` returns 0 and `_bfind_index` -1. `_find` and `_remove` of mub_arrayt return 1 if
 * the word is present, else 0.
 *
 * @{
 */
#ifndef MUB_ARRAY_H
#define MUB_ARRAY_H

#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup array mub_array: an array of entries with byte-string keys
 *
 * An array of entries with byte-string keys. A key is `length` bytes at `key`; they are copied. A negative
 * length means that the key ends at its first NUL, unless the function uses lengths as given. NULL is the
 * empty key. Keys compare byte by byte as unsigned values; of two that agree as far as both go, the shorter
 * is first ("ab" before "abc"). Case always counts.
 *
 * The empty key is a key like any other with one exception: it cannot be inserted before an existing entry,
 * only appended. An insertion of the empty key before an entry is refused; mub_array_insert() returns 1 even
 * then. The same goes for any key before an entry whose own key starts past the end of the key stream, as it
 * may after mub_array_shrink() has lengthened the array.
 *
 * All keys of an array take at most 2^32 - 1 bytes. A key beyond that, or one for which memory runs out, is
 * refused by the insertions, wherever it belongs, and the array is unchanged; mub_array_append(),
 * mub_array_append_new() and mub_array_from_string() add it as an empty key.
 *
 * Key pointers that operations return point into the key stream; they are NULL while it has no block. The
 * keys have no NUL after them, and the pointers are invalid after the next operation that adds, changes or
 * removes a key.
 *
 * @{
 */

/** One slot. Its key fields are the array's; its value may be changed in place. */
typedef struct mub_array_entry {
  uint32_t key_offset; /**< where the key's bytes start in the key stream */
  uint32_t key_length; /**< bytes of the key */
  uint64_t value;      /**< the caller's; may be changed in place */
} mub_array_entry;

/** An array of entries with byte-string keys. */
typedef struct mub_array {
  mub_array_entry *entries; /**< the table; NULL until the first growth */
  int64_t count;            /**< entries in use */
  int64_t capacity;         /**< slots in the table */
  mub_stream keys;          /**< the key stream; sorting moves entries, never these bytes */
  mub_pool *pool;           /**< the value pool: NULL, made by `_init`, or an external one, written here */
  uint16_t own_pool;        /**< 1: made by `_init`, released by `_term` */
  uint16_t descending;      /**< not 0: the sorted operations use descending order */
} mub_array;

/**
 * Makes the record an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: make a value pool that the array owns
 * @return the array
 * @failure none; the value pool is missing if memory runs out: `pool` is NULL and `own_pool` 0
 * @owner the record is the caller's; a pool made here belongs to the array until mub_array_term()
 * @invalidates nothing
 */
MUB_API mub_array *mub_array_init(mub_array *array, int with_pool);

/**
 * Releases the table, the keys and an owned pool.
 *
 * An external pool stays in its field. Values are not visited.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner what the array owns is released; values and external pools stay the caller's
 * @invalidates pointers to entries and to keys, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_array *mub_array_term(mub_array *array);

/**
 * Makes room for `wanted` entries in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     slots wanted in total
 * @return 1 if there is room, as there always is for a `wanted` up to the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to entries, if the table grows
 * @cost O(count) if the table grows
 */
MUB_API int mub_array_expand(mub_array *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This may also lengthen the array: spare slots come into use as they are. Keys and values are not touched.
 * Does nothing for a negative `n`, or without a table.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_array_shrink(mub_array *array, int64_t n);

/**
 * Exchanges the entries and keys of two arrays.
 *
 * `pool`, `own_pool` and `descending` stay with their records, so values that are pool blocks then lie in the
 * other array's pool.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the entries of one array now belong to the other; the pools stay where they are
 * @invalidates nothing
 */
MUB_API void mub_array_swap(mub_array *a, mub_array *b);

/**
 * Makes the destination a copy of the source.
 *
 * If the source owns its pool, the pool is cloned, every value is translated to its copy, and `clone` is
 * called for every entry, value 0 included. A value that is no block of the pool becomes 0, and so do all
 * values if the destination has no pool of its own. If the source does not own its pool, values are copied as
 * they are, `clone` is not called, and the destination shares the source's pool and gives up its own.
 * `descending` is not copied.
 *
 * `source_pool` is cloned only if `destination_pool` and `clone` are given too. Nothing happens if both
 * arrays are the same.
 *
 * @param[in] source                the array to copy; it does not change
 * @param[in,out] source_pool       a pool outside the array that the values point into; NULL if there is none
 * @param[in,out] destination       an initialised array, with a pool of its own if the source has one; its
 *                                  old contents are overwritten and its old values not released
 * @param[in,out] destination_pool  the initialised pool that becomes the copy of `source_pool`, or
 *                                  `source_pool` itself, which both then share; NULL if there is none
 * @param[in] clone                 adjusts each copied value; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to entries and to keys of the destination, and all blocks of a pool that it owned and
 *   of a `destination_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the keys and pools that are cloned
 * @nullable source_pool, destination_pool, clone
 */
MUB_API mub_array *mub_array_clone(const mub_array *source, mub_pool *source_pool, mub_array *destination,
                                   mub_pool *destination_pool, mub_clone_fn clone);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * The block of the keys is kept. Values are not visited, and blocks of an external pool are not returned.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the table is released and an owned pool emptied; values are not released
 * @invalidates pointers to entries and to keys, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_array *mub_array_remove_all(mub_array *array);

/**
 * Releases every value, then empties the array like mub_array_remove_all().
 *
 * The block of the keys is released too.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @return the array
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `free`, its block goes back to an external pool; the table is released and
 *   an owned pool emptied
 * @invalidates pointers to entries and to keys, and all value blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable free
 */
MUB_API mub_array *mub_array_free_all(mub_array *array, mub_free_fn free);

/**
 * Releases every value, in order.
 *
 * The entries are unchanged and their values are stale afterwards.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `free`, its block goes back to an external pool, although the array still
 *   holds it
 * @invalidates the values
 * @cost O(count)
 * @nullable free
 * @level low
 */
MUB_API void mub_array_free_all_entry(mub_array *array, mub_free_fn free);

/**
 * Adds an entry at the end, whatever the order.
 *
 * A key beyond 2^32 - 1 bytes of keys, or one for which memory runs out, is added as an empty key.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any word, 0 included
 * @failure the array is unchanged if there is no memory for the entry
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries and to keys
 * @cost O(length); O(count) when the table grows, O(bytes of all keys) when the key stream does
 * @bounds key[length]
 * @nullable key
 */
MUB_API void mub_array_append(mub_array *array, const void *key, int64_t length, uint64_t value);

/**
 * Adds an entry at the end, with a new block of the value pool as its value.
 *
 * A key beyond 2^32 - 1 bytes of keys, or one for which memory runs out, is added as an empty key.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] init       called with the new block; NULL: not called
 * @return the block
 * @failure 0 if there was no block, and the entry is added with value 0; also 0 if there was no memory for
 *   the entry, and nothing is added
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries and to keys
 * @cost O(length); O(count) when the table grows, O(bytes of all keys) when the key stream does
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API uint64_t mub_array_append_new(mub_array *array, const void *key, int64_t length, mub_init_fn init);

/**
 * Adds copies of all entries of the source at the end.
 *
 * Values are copied as they are.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out, or if the keys would exceed 2^32 - 1 bytes
 * @owner keys are copied; values are copied as words, so that both arrays refer to the same things
 * @invalidates pointers to entries and to keys of the destination
 * @cost O(entries copied and the bytes of their keys); O(count) when the table grows, O(bytes of all keys)
 *   when the key stream does
 */
MUB_API void mub_array_append_array(mub_array *destination, const mub_array *source);

/**
 * Finds the slot at `index`, to read it or to change its value.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 */
MUB_API mub_array_entry *mub_array_get_entry(const mub_array *array, int64_t index);

/**
 * Reads the key and the value of the slot at `index`.
 *
 * @param[in] array    the array
 * @param[in] index    a position, counted from 0
 * @param[out] key     receives the address of the key, which has no NUL after it; NULL unless `0 <= index <
 *                     capacity`, and while the key stream has no block
 * @param[out] length  receives the bytes of the key; 0 unless `0 <= index < capacity`
 * @return the value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the key lies in the array's key stream, valid until a key is added, changed or removed; the value
 *   stays in the array
 * @bounds key[length]
 */
MUB_API uint64_t mub_array_get_at(const mub_array *array, int64_t index, const char **key, int64_t *length);

/**
 * Reads the key and the value of the first entry.
 *
 * @param[in] array    the array
 * @param[out] key     receives the address of the key, which has no NUL after it; NULL in an empty array, and
 *                     while the key stream has no block
 * @param[out] length  receives the bytes of the key; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the key lies in the array's key stream, valid until a key is added, changed or removed; the value
 *   stays in the array
 * @bounds key[length]
 */
MUB_API uint64_t mub_array_get_first(const mub_array *array, const char **key, int64_t *length);

/**
 * Reads the key and the value of the last entry.
 *
 * @param[in] array    the array
 * @param[out] key     receives the address of the key, which has no NUL after it; NULL in an empty array, and
 *                     while the key stream has no block
 * @param[out] length  receives the bytes of the key; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the key lies in the array's key stream, valid until a key is added, changed or removed; the value
 *   stays in the array
 * @bounds key[length]
 */
MUB_API uint64_t mub_array_get_last(const mub_array *array, const char **key, int64_t *length);

/**
 * Replaces the key and the value of the slot at `index`, whatever that does to the order.
 *
 * A slot past the count may refer to bytes past the end of the key stream: its key is replaced as
 * mub_stream_update() replaces a range that reaches past the length.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0, and nothing changes, outside `0 <= index < capacity` and if the key cannot be replaced: there
 *   is no memory for it, the old key starts past the end of the stream, the old or the new key would not lie
 *   wholly in the stream's block, or the stream's length would fall below 0 or exceed 2^32 - 1 bytes
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates pointers to keys
 * @cost O(length); O(count + bytes of all keys) if the key's length changes
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_set_at(mub_array *array, int64_t index, const void *key, int64_t length,
                                  uint64_t value);

/**
 * Replaces the value of the slot at `index`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 */
MUB_API uint64_t mub_array_update_at(mub_array *array, int64_t index, uint64_t value);

/**
 * Adds an entry before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key, used as given; a negative length adds nothing
 * @param[in] value      any word, 0 included
 * @failure nothing is added for a negative index or length, for an empty key before an entry, if memory runs
 *   out, or if the keys would exceed 2^32 - 1 bytes
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries and to keys
 * @cost O(count + bytes of all keys)
 * @bounds key[length]
 * @nullable key
 */
MUB_API void mub_array_insert_at(mub_array *array, int64_t index, const void *key, int64_t length,
                                 uint64_t value);

/**
 * Removes the entry at `index` and its key's bytes.
 *
 * Its value is not released.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @return the value
 * @failure 0 unless `0 <= index < count`
 * @owner the value is returned and not released
 * @invalidates pointers to entries and to keys
 * @cost O(count + bytes of all keys)
 */
MUB_API uint64_t mub_array_remove_at(mub_array *array, int64_t index);

/**
 * Removes the entry at `index` and releases its value.
 *
 * Does nothing unless `0 <= index < count`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the value is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to entries and to keys, and the value
 * @cost O(count + bytes of all keys)
 * @nullable free
 */
MUB_API void mub_array_free_at(mub_array *array, int64_t index, mub_free_fn free);

/**
 * Adds a key with its value unless the key is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any word, 0 included
 * @return 1 if the key was absent, even if it could not be added
 * @failure 0 if the key was present, and its value is unchanged; the result is 1 and the array is unchanged
 *   if memory ran out, if the keys would exceed 2^32 - 1 bytes, and for the empty key before an entry
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move what is after it
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_array_insert(mub_array *array, const void *key, int64_t length, uint64_t value);

/**
 * Adds a key with a new block of the value pool as its value unless the key is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[out] value     receives the block before `init` runs (0 if there was none, and the entry is added
 *                       with value 0); the stored value if the key was present; 0 if the insertion was
 *                       refused
 * @param[in] init       called with the new block; NULL: not called
 * @return the index of the new entry
 * @failure -1 if the key was present, if memory ran out, if the keys would exceed 2^32 - 1 bytes, or for the
 *   empty key before an entry; the block of a refused insertion goes back to the pool after `init` has run
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move what is after it
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API int mub_array_insert_new(mub_array *array, const void *key, int64_t length, uint64_t *value,
                                 mub_init_fn init);

/**
 * Replaces the value of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent; nothing changes
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_update(mub_array *array, const void *key, int64_t length, uint64_t value);

/**
 * Removes a key.
 *
 * Its value is not released. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value is returned and not released
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move what is after it
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_remove(mub_array *array, const void *key, int64_t length);

/**
 * Removes a key, if it is present, and releases its value.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the value is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to entries and to keys, and the value
 * @cost O(log count) to search, O(count + bytes of all keys) to move what is after it
 * @bounds key[length]
 * @nullable key, free
 */
MUB_API void mub_array_free(mub_array *array, const void *key, int64_t length, mub_free_fn free);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its value in place. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key, used as given; a negative length finds and adds nothing, but an
 *                       empty array measures the key up to its first NUL
 * @return the entry
 * @failure NULL if memory ran out, if the keys would exceed 2^32 - 1 bytes, for the empty key before an
 *   entry, and for a negative length, unless the array is empty
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move what is after it
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_array_entry *mub_array_entry_insert(mub_array *array, const void *key, int64_t length);

/**
 * Finds the entry of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key, used as given; a negative length finds nothing
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_array_entry *mub_array_entry_find(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the value of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value stays in the array
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_find(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the index of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API int64_t mub_array_find_index(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the value of the first entry with a key, in an array in any order.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value stays in the array
 * @cost O(count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_afind(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the index of the first entry with a key, in an array in any order.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API int64_t mub_array_afind_index(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the value of a key, or that of the entry before which the key would be inserted, or that of the
 * last entry if the key would go after all of them.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_bfind(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the index of the entry whose value mub_array_bfind() gives.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the index
 * @failure -1 in an empty array
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API int64_t mub_array_bfind_index(const mub_array *array, const void *key, int64_t length);

/**
 * Sorts by key, in place and not stably.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_array_qsort(mub_array *array, int ascending);

/**
 * Sorts by key, ascending, in place and not stably.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_array_qsort_p(mub_array *array);

/**
 * Sorts by key, descending, in place and not stably.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_array_qsort_n(mub_array *array);

/**
 * Sorts by value with a comparer, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_array_qsort_x(mub_array *array, int ascending, mub_compare_fn compare);

/**
 * Sorts by value with a comparer, ascending, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_array_qsort_x_p(mub_array *array, mub_compare_fn compare);

/**
 * Sorts by value with a comparer, descending, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_array_qsort_x_n(mub_array *array, mub_compare_fn compare);

/**
 * Joins the keys into one text, with the separator between them.
 *
 * Empty keys at the front leave no separator: "", "", "a" give "a", while "x", "", "y" give "x,,y".
 *
 * @param[in] array       the array
 * @param[in] separator   the separator; its low 8 bits are used
 * @param[in,out] string  an initialised string, whose content is replaced
 * @failure the string is unchanged if memory runs out
 * @owner the text belongs to the string
 * @invalidates pointers into the string
 * @cost O(bytes written)
 */
MUB_API void mub_array_to_string(const mub_array *array, int separator, mub_string *string);

/**
 * Appends the pieces of a text as keys with value 0.
 *
 * The array is neither emptied nor sorted. Each piece is trimmed as by mub_char_trim(). Empty pieces are
 * appended too, except the last: "a, ,b," gives "a", "" and "b".
 *
 * @param[in,out] array  the array
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text, used as given; below 1 appends nothing
 * @failure nothing is appended if memory for the entries runs out; a piece without room for its bytes is
 *   appended as an empty key
 * @owner the pieces are copied
 * @invalidates pointers to entries and to keys
 * @cost O(length)
 * @bounds text[length]
 */
MUB_API void mub_array_from_string(mub_array *array, int separator, const char *text, int64_t length);

/** @} */

/**
 * @defgroup arrayd mub_arrayd: an array of entries with 32-bit integer keys
 *
 * An array of entries with 32-bit integer keys, which are kept in the entries. Sorted insertions are refused
 * only for lack of memory.
 *
 * The sorted operations compare by the sign of the difference between two keys, wrapped around to 32 bits: to
 * them 0xFFFFFFFF is 1 below 0. The sorts compare keys as unsigned values, so that 0xFFFFFFFF comes last.
 * Both agree as long as all keys lie within 2^31 of each other.
 *
 * @{
 */

/** One slot. Its value may be changed in place; so may its key, where the order allows it. */
typedef struct mub_arrayd_entry {
  uint32_t key;   /**< the key */
  uint64_t value; /**< the caller's; may be changed in place */
} mub_arrayd_entry;

/** An array of entries with 32-bit integer keys. */
typedef struct mub_arrayd {
  mub_arrayd_entry *entries; /**< the table; NULL until the first growth */
  int64_t count;             /**< entries in use */
  int64_t capacity;          /**< slots in the table */
  mub_pool *pool;            /**< the value pool: NULL, made by `_init`, or an external one, written here */
  uint16_t own_pool;         /**< 1: made by `_init`, released by `_term` */
  uint16_t descending;       /**< not 0: the sorted operations use descending order */
} mub_arrayd;

/**
 * Makes the record an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: make a value pool that the array owns
 * @return the array
 * @failure none; the value pool is missing if memory runs out: `pool` is NULL and `own_pool` 0
 * @owner the record is the caller's; a pool made here belongs to the array until mub_arrayd_term()
 * @invalidates nothing
 */
MUB_API mub_arrayd *mub_arrayd_init(mub_arrayd *array, int with_pool);

/**
 * Releases the table and an owned pool.
 *
 * An external pool stays in its field. Values are not visited.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner what the array owns is released; values and external pools stay the caller's
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayd *mub_arrayd_term(mub_arrayd *array);

/**
 * Makes room for `wanted` entries in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     slots wanted in total
 * @return 1 if there is room, as there always is for a `wanted` up to the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to entries, if the table grows
 * @cost O(count) if the table grows
 */
MUB_API int mub_arrayd_expand(mub_arrayd *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This may also lengthen the array: spare slots come into use as they are. Without a table the count becomes
 * 0. Does nothing for a negative `n`.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrayd_shrink(mub_arrayd *array, int64_t n);

/**
 * Exchanges the entries of two arrays.
 *
 * `pool`, `own_pool` and `descending` stay with their records, so values that are pool blocks then lie in the
 * other array's pool.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the entries of one array now belong to the other; the pools stay where they are
 * @invalidates nothing
 */
MUB_API void mub_arrayd_swap(mub_arrayd *a, mub_arrayd *b);

/**
 * Makes the destination a copy of the source.
 *
 * If the source owns its pool, the pool is cloned, every value is translated to its copy, and `clone` is
 * called for every entry, value 0 included. A value that is no block of the pool becomes 0, and so do all
 * values if the destination has no pool of its own. If the source does not own its pool, values are copied as
 * they are, `clone` is not called, and the destination shares the source's pool and gives up its own.
 * `descending` is not copied.
 *
 * `source_pool` is cloned only if `destination_pool` and `clone` are given too. Nothing happens if both
 * arrays are the same.
 *
 * @param[in] source                the array to copy; it does not change
 * @param[in,out] source_pool       a pool outside the array that the values point into; NULL if there is none
 * @param[in,out] destination       an initialised array, with a pool of its own if the source has one; its
 *                                  old contents are overwritten and its old values not released
 * @param[in,out] destination_pool  the initialised pool that becomes the copy of `source_pool`, or
 *                                  `source_pool` itself, which both then share; NULL if there is none
 * @param[in] clone                 adjusts each copied value; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to entries of the destination, and all blocks of a pool that it owned and of a
 *   `destination_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the pools that are cloned
 * @nullable source_pool, destination_pool, clone
 */
MUB_API mub_arrayd *mub_arrayd_clone(const mub_arrayd *source, mub_pool *source_pool, mub_arrayd *destination,
                                     mub_pool *destination_pool, mub_clone_fn clone);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * Values are not visited, and blocks of an external pool are not returned.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the table is released and an owned pool emptied; values are not released
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayd *mub_arrayd_remove_all(mub_arrayd *array);

/**
 * Releases every value, then empties the array.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @return the array
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `free`, its block goes back to an external pool; the table is released and
 *   an owned pool emptied
 * @invalidates pointers to entries, and all value blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable free
 */
MUB_API mub_arrayd *mub_arrayd_free_all(mub_arrayd *array, mub_free_fn free);

/**
 * Releases every value, in order.
 *
 * The entries are unchanged and their values are stale afterwards.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `free`, its block goes back to an external pool, although the array still
 *   holds it
 * @invalidates the values
 * @cost O(count)
 * @nullable free
 * @level low
 */
MUB_API void mub_arrayd_free_all_entry(mub_arrayd *array, mub_free_fn free);

/**
 * Adds an entry at the end, whatever the order.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @failure the array is unchanged if memory runs out
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries
 * @cost O(1); O(count) when the table grows
 */
MUB_API void mub_arrayd_append(mub_arrayd *array, uint32_t key, uint64_t value);

/**
 * Adds an entry at the end, with a new block of the value pool as its value.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] init       called with the new block; NULL: not called
 * @return the block
 * @failure 0 if there was no block, and the entry is added with value 0; also 0 if there was no memory for
 *   the entry, and nothing is added
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(1); O(count) when the table grows
 * @nullable init
 */
MUB_API uint64_t mub_arrayd_append_new(mub_arrayd *array, uint32_t key, mub_init_fn init);

/**
 * Adds copies of all entries of the source at the end.
 *
 * Values are copied as they are.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out
 * @owner values are copied as words, so that both arrays refer to the same things
 * @invalidates pointers to entries of the destination
 * @cost O(entries copied); O(count) when the table grows
 */
MUB_API void mub_arrayd_append_array(mub_arrayd *destination, const mub_arrayd *source);

/**
 * Finds the slot at `index`, to read it or to change its value.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 */
MUB_API mub_arrayd_entry *mub_arrayd_get_entry(const mub_arrayd *array, int64_t index);

/**
 * Reads the key and the value of the slot at `index`.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @param[out] key   receives the key; 0 unless `0 <= index < capacity`
 * @return the value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the value stays in the array
 */
MUB_API uint64_t mub_arrayd_get_at(const mub_arrayd *array, int64_t index, uint32_t *key);

/**
 * Reads the key and the value of the first entry.
 *
 * @param[in] array  the array
 * @param[out] key   receives the key; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 */
MUB_API uint64_t mub_arrayd_get_first(const mub_arrayd *array, uint32_t *key);

/**
 * Reads the key and the value of the last entry.
 *
 * @param[in] array  the array
 * @param[out] key   receives the key; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 */
MUB_API uint64_t mub_arrayd_get_last(const mub_arrayd *array, uint32_t *key);

/**
 * Replaces the key and the value of the slot at `index`, whatever that does to the order.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayd_set_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value);

/**
 * Replaces the value of the slot at `index`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayd_update_at(mub_arrayd *array, int64_t index, uint64_t value);

/**
 * Adds an entry before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @failure nothing is added for a negative index, or if memory runs out
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries
 * @cost O(count)
 */
MUB_API void mub_arrayd_insert_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value);

/**
 * Removes the entry at `index`.
 *
 * Its value is not released. If it was the last entry, its slot, which is now spare, has key 0.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[out] key       receives the entry's key; 0 unless `0 <= index < count`
 * @return the value
 * @failure 0 unless `0 <= index < count`
 * @owner the value is returned and not released
 * @invalidates pointers to entries
 * @cost O(count)
 */
MUB_API uint64_t mub_arrayd_remove_at(mub_arrayd *array, int64_t index, uint32_t *key);

/**
 * Removes the entry at `index` and releases its value.
 *
 * Does nothing unless `0 <= index < count`. When `free` is called, the entry's key is already 0.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the value is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(count)
 * @nullable free
 */
MUB_API void mub_arrayd_free_at(mub_arrayd *array, int64_t index, mub_free_fn free);

/**
 * Adds a key with its value unless the key is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @return 1 if the key was absent, even if it could not be added
 * @failure 0 if the key was present, and its value is unchanged; without memory the result is 1, and nothing
 *   is added
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the slots after it
 */
MUB_API int mub_arrayd_insert(mub_arrayd *array, uint32_t key, uint64_t value);

/**
 * Adds a key with a new block of the value pool as its value unless the key is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[out] value     receives the block before `init` runs (0 if there was none, and the entry is added
 *                       with value 0); the stored value if the key was present; 0 if memory ran out
 * @param[in] init       called with the new block; NULL: not called
 * @return the index of the new entry
 * @failure -1 if the key was present or memory ran out; the block of a refused insertion goes back to the
 *   pool after `init` has run
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the slots after it
 * @nullable init
 */
MUB_API int mub_arrayd_insert_new(mub_arrayd *array, uint32_t key, uint64_t *value, mub_init_fn init);

/**
 * Replaces the value of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent; nothing changes
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayd_update(mub_arrayd *array, uint32_t key, uint64_t value);

/**
 * Removes a key.
 *
 * Its value is not released. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value is returned and not released
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move what is after it
 */
MUB_API uint64_t mub_arrayd_remove(mub_arrayd *array, uint32_t key);

/**
 * Removes a key, if it is present, and releases its value.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the value is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(log count) to search, O(count) to move what is after it
 * @nullable free
 */
MUB_API void mub_arrayd_free(mub_arrayd *array, uint32_t key, mub_free_fn free);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its value in place. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the slots after it
 */
MUB_API mub_arrayd_entry *mub_arrayd_entry_insert(mub_arrayd *array, uint32_t key);

/**
 * Finds the entry of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 * @cost O(log count)
 */
MUB_API mub_arrayd_entry *mub_arrayd_entry_find(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the value of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value stays in the array
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayd_find(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the index of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayd_find_index(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the value of the first entry with a key, in an array in any order.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value stays in the array
 * @cost O(count)
 */
MUB_API uint64_t mub_arrayd_afind(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the index of the first entry with a key, in an array in any order.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(count)
 */
MUB_API int64_t mub_arrayd_afind_index(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the value of a key, or that of the entry before which the key would be inserted, or that of the
 * last entry if the key would go after all of them.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayd_bfind(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the index of the entry whose value mub_arrayd_bfind() gives.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 in an empty array
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayd_bfind_index(const mub_arrayd *array, uint32_t key);

/**
 * Sorts by key as an unsigned value, in place and not stably.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayd_qsort(mub_arrayd *array, int ascending);

/**
 * Sorts by key as an unsigned value, ascending, in place and not stably.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayd_qsort_p(mub_arrayd *array);

/**
 * Sorts by key as an unsigned value, descending, in place and not stably.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayd_qsort_n(mub_arrayd *array);

/**
 * Sorts by value with a comparer, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayd_qsort_x(mub_arrayd *array, int ascending, mub_compare_fn compare);

/**
 * Sorts by value with a comparer, ascending, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayd_qsort_x_p(mub_arrayd *array, mub_compare_fn compare);

/**
 * Sorts by value with a comparer, descending, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayd_qsort_x_n(mub_arrayd *array, mub_compare_fn compare);

/**
 * Joins the keys, in decimal as unsigned values, into one text with the separator between them.
 *
 * @param[in] array       the array
 * @param[in] separator   the separator; its low 8 bits are used
 * @param[in,out] string  an initialised string, whose content is replaced
 * @failure the string is unchanged if memory runs out
 * @owner the text belongs to the string
 * @invalidates pointers into the string
 * @cost O(bytes written)
 */
MUB_API void mub_arrayd_to_string(const mub_arrayd *array, int separator, mub_string *string);

/**
 * Appends the pieces of a text as keys with value 0.
 *
 * The array is neither emptied nor sorted. Each piece is trimmed as by mub_char_trim() and read as by
 * mub_char_get_long(); the key is the low 32 bits. Empty pieces give 0, except that the last one is left out:
 * "10, ,-1," gives 10, 0 and 0xFFFFFFFF.
 *
 * @param[in,out] array  the array
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text, used as given; below 1 appends nothing
 * @failure nothing is appended if memory for the entries runs out
 * @owner the text is only read
 * @invalidates pointers to entries
 * @cost O(length)
 * @bounds text[length]
 */
MUB_API void mub_arrayd_from_string(mub_arrayd *array, int separator, const char *text, int64_t length);

/** @} */

/**
 * @defgroup arrayx mub_arrayx: an array of entries with 64-bit integer keys
 *
 * Like mub_arrayd, but with 64-bit keys and without conversions to and from text. The sorted operations
 * compare by the sign of the difference wrapped around to 64 bits, which agrees with the sorts as long as all
 * keys lie within 2^63 of each other.
 *
 * @{
 */

/** One slot. Its value may be changed in place; so may its key, where the order allows it. */
typedef struct mub_arrayx_entry {
  uint64_t key;   /**< the key */
  uint64_t value; /**< the caller's; may be changed in place */
} mub_arrayx_entry;

/** An array of entries with 64-bit integer keys. */
typedef struct mub_arrayx {
  mub_arrayx_entry *entries; /**< the table; NULL until the first growth */
  int64_t count;             /**< entries in use */
  int64_t capacity;          /**< slots in the table */
  mub_pool *pool;            /**< the value pool: NULL, made by `_init`, or an external one, written here */
  uint16_t own_pool;         /**< 1: made by `_init`, released by `_term` */
  uint16_t descending;       /**< not 0: the sorted operations use descending order */
} mub_arrayx;

/**
 * Makes the record an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: make a value pool that the array owns
 * @return the array
 * @failure none; the value pool is missing if memory runs out: `pool` is NULL and `own_pool` 0
 * @owner the record is the caller's; a pool made here belongs to the array until mub_arrayx_term()
 * @invalidates nothing
 */
MUB_API mub_arrayx *mub_arrayx_init(mub_arrayx *array, int with_pool);

/**
 * Releases the table and an owned pool.
 *
 * An external pool stays in its field. Values are not visited.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner what the array owns is released; values and external pools stay the caller's
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayx *mub_arrayx_term(mub_arrayx *array);

/**
 * Makes room for `wanted` entries in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     slots wanted in total
 * @return 1 if there is room, as there always is for a `wanted` up to the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to entries, if the table grows
 * @cost O(count) if the table grows
 */
MUB_API int mub_arrayx_expand(mub_arrayx *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This may also lengthen the array: spare slots come into use as they are. Without a table the count becomes
 * 0. Does nothing for a negative `n`.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrayx_shrink(mub_arrayx *array, int64_t n);

/**
 * Exchanges the entries of two arrays.
 *
 * `pool`, `own_pool` and `descending` stay with their records, so values that are pool blocks then lie in the
 * other array's pool.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the entries of one array now belong to the other; the pools stay where they are
 * @invalidates nothing
 */
MUB_API void mub_arrayx_swap(mub_arrayx *a, mub_arrayx *b);

/**
 * Makes the destination a copy of the source.
 *
 * If the source owns its pool, the pool is cloned, every value is translated to its copy, and `clone` is
 * called for every entry, value 0 included. A value that is no block of the pool becomes 0, and so do all
 * values if the destination has no pool of its own. If the source does not own its pool, values are copied as
 * they are, `clone` is not called, and the destination shares the source's pool and gives up its own.
 * `descending` is not copied.
 *
 * `source_pool` is cloned only if `destination_pool` and `clone` are given too. Nothing happens if both
 * arrays are the same.
 *
 * @param[in] source                the array to copy; it does not change
 * @param[in,out] source_pool       a pool outside the array that the values point into; NULL if there is none
 * @param[in,out] destination       an initialised array, with a pool of its own if the source has one; its
 *                                  old contents are overwritten and its old values not released
 * @param[in,out] destination_pool  the initialised pool that becomes the copy of `source_pool`, or
 *                                  `source_pool` itself, which both then share; NULL if there is none
 * @param[in] clone                 adjusts each copied value; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to entries of the destination, and all blocks of a pool that it owned and of a
 *   `destination_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the pools that are cloned
 * @nullable source_pool, destination_pool, clone
 */
MUB_API mub_arrayx *mub_arrayx_clone(const mub_arrayx *source, mub_pool *source_pool, mub_arrayx *destination,
                                     mub_pool *destination_pool, mub_clone_fn clone);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * Values are not visited, and blocks of an external pool are not returned.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the table is released and an owned pool emptied; values are not released
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayx *mub_arrayx_remove_all(mub_arrayx *array);

/**
 * Releases every value, then empties the array.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @return the array
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `free`, its block goes back to an external pool; the table is released and
 *   an owned pool emptied
 * @invalidates pointers to entries, and all value blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable free
 */
MUB_API mub_arrayx *mub_arrayx_free_all(mub_arrayx *array, mub_free_fn free);

/**
 * Releases every value, in order.
 *
 * The entries are unchanged and their values are stale afterwards.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `free`, its block goes back to an external pool, although the array still
 *   holds it
 * @invalidates the values
 * @cost O(count)
 * @nullable free
 * @level low
 */
MUB_API void mub_arrayx_free_all_entry(mub_arrayx *array, mub_free_fn free);

/**
 * Adds an entry at the end, whatever the order.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @failure the array is unchanged if memory runs out
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries
 * @cost O(1); O(count) when the table grows
 */
MUB_API void mub_arrayx_append(mub_arrayx *array, uint64_t key, uint64_t value);

/**
 * Adds an entry at the end, with a new block of the value pool as its value.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] init       called with the new block; NULL: not called
 * @return the block
 * @failure 0 if there was no block, and the entry is added with value 0; also 0 if there was no memory for
 *   the entry, and nothing is added
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(1); O(count) when the table grows
 * @nullable init
 */
MUB_API uint64_t mub_arrayx_append_new(mub_arrayx *array, uint64_t key, mub_init_fn init);

/**
 * Adds copies of all entries of the source at the end.
 *
 * Values are copied as they are.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out
 * @owner values are copied as words, so that both arrays refer to the same things
 * @invalidates pointers to entries of the destination
 * @cost O(entries copied); O(count) when the table grows
 */
MUB_API void mub_arrayx_append_array(mub_arrayx *destination, const mub_arrayx *source);

/**
 * Finds the slot at `index`, to read it or to change its value.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 */
MUB_API mub_arrayx_entry *mub_arrayx_get_entry(const mub_arrayx *array, int64_t index);

/**
 * Reads the key and the value of the slot at `index`.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @param[out] key   receives the key; 0 unless `0 <= index < capacity`
 * @return the value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the value stays in the array
 */
MUB_API uint64_t mub_arrayx_get_at(const mub_arrayx *array, int64_t index, uint64_t *key);

/**
 * Reads the key and the value of the first entry.
 *
 * @param[in] array  the array
 * @param[out] key   receives the key; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 */
MUB_API uint64_t mub_arrayx_get_first(const mub_arrayx *array, uint64_t *key);

/**
 * Reads the key and the value of the last entry.
 *
 * @param[in] array  the array
 * @param[out] key   receives the key; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 */
MUB_API uint64_t mub_arrayx_get_last(const mub_arrayx *array, uint64_t *key);

/**
 * Replaces the key and the value of the slot at `index`, whatever that does to the order.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayx_set_at(mub_arrayx *array, int64_t index, uint64_t key, uint64_t value);

/**
 * Replaces the value of the slot at `index`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayx_update_at(mub_arrayx *array, int64_t index, uint64_t value);

/**
 * Adds an entry before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @failure nothing is added for a negative index, or if memory runs out
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries
 * @cost O(count)
 */
MUB_API void mub_arrayx_insert_at(mub_arrayx *array, int64_t index, uint64_t key, uint64_t value);

/**
 * Removes the entry at `index`.
 *
 * Its value is not released. If it was the last entry, its slot, which is now spare, has key 0.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[out] key       receives the entry's key; 0 unless `0 <= index < count`
 * @return the value
 * @failure 0 unless `0 <= index < count`
 * @owner the value is returned and not released
 * @invalidates pointers to entries
 * @cost O(count)
 */
MUB_API uint64_t mub_arrayx_remove_at(mub_arrayx *array, int64_t index, uint64_t *key);

/**
 * Removes the entry at `index` and releases its value.
 *
 * Does nothing unless `0 <= index < count`. When `free` is called, the entry's key is already 0.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the value is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(count)
 * @nullable free
 */
MUB_API void mub_arrayx_free_at(mub_arrayx *array, int64_t index, mub_free_fn free);

/**
 * Adds a key with its value unless the key is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @return 1 if the key was absent, even if it could not be added
 * @failure 0 if the key was present, and its value is unchanged; without memory the result is 1, and nothing
 *   is added
 * @owner the value is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the slots after it
 */
MUB_API int mub_arrayx_insert(mub_arrayx *array, uint64_t key, uint64_t value);

/**
 * Adds a key with a new block of the value pool as its value unless the key is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[out] value     receives the block before `init` runs (0 if there was none, and the entry is added
 *                       with value 0); the stored value if the key was present; 0 if memory ran out
 * @param[in] init       called with the new block; NULL: not called
 * @return the index of the new entry
 * @failure -1 if the key was present or memory ran out; the block of a refused insertion goes back to the
 *   pool after `init` has run
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the slots after it
 * @nullable init
 */
MUB_API int mub_arrayx_insert_new(mub_arrayx *array, uint64_t key, uint64_t *value, mub_init_fn init);

/**
 * Replaces the value of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent; nothing changes
 * @owner the previous value is returned and not released; the new one is kept as it is
 * @invalidates nothing
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayx_update(mub_arrayx *array, uint64_t key, uint64_t value);

/**
 * Removes a key.
 *
 * Its value is not released. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value is returned and not released
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move what is after it
 */
MUB_API uint64_t mub_arrayx_remove(mub_arrayx *array, uint64_t key);

/**
 * Removes a key, if it is present, and releases its value.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] free       called with each released value that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the value is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(log count) to search, O(count) to move what is after it
 * @nullable free
 */
MUB_API void mub_arrayx_free(mub_arrayx *array, uint64_t key, mub_free_fn free);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its value in place. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the slots after it
 */
MUB_API mub_arrayx_entry *mub_arrayx_entry_insert(mub_arrayx *array, uint64_t key);

/**
 * Finds the entry of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry lies in the array's table, valid until the table grows or the entry is moved or removed
 * @cost O(log count)
 */
MUB_API mub_arrayx_entry *mub_arrayx_entry_find(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the value of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value stays in the array
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayx_find(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the index of a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayx_find_index(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the value of the first entry with a key, in an array in any order.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value stays in the array
 * @cost O(count)
 */
MUB_API uint64_t mub_arrayx_afind(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the index of the first entry with a key, in an array in any order.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(count)
 */
MUB_API int64_t mub_arrayx_afind_index(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the value of a key, or that of the entry before which the key would be inserted, or that of the
 * last entry if the key would go after all of them.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the value
 * @failure 0 in an empty array
 * @owner the value stays in the array
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayx_bfind(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the index of the entry whose value mub_arrayx_bfind() gives.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 in an empty array
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayx_bfind_index(const mub_arrayx *array, uint64_t key);

/**
 * Sorts by key as an unsigned value, in place and not stably.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayx_qsort(mub_arrayx *array, int ascending);

/**
 * Sorts by key as an unsigned value, ascending, in place and not stably.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayx_qsort_p(mub_arrayx *array);

/**
 * Sorts by key as an unsigned value, descending, in place and not stably.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayx_qsort_n(mub_arrayx *array);

/**
 * Sorts by value with a comparer, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayx_qsort_x(mub_arrayx *array, int ascending, mub_compare_fn compare);

/**
 * Sorts by value with a comparer, ascending, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayx_qsort_x_p(mub_arrayx *array, mub_compare_fn compare);

/**
 * Sorts by value with a comparer, descending, in place and not stably.
 *
 * An inconsistent comparer leaves the entries in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; with NULL, nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayx_qsort_x_n(mub_arrayx *array, mub_compare_fn compare);

/** @} */

/**
 * @defgroup arrays mub_arrays: an array of bare 64-bit items, sorted by your comparer or not
 *
 * An array of bare items. An item is one 64-bit word: a pointer to a record of yours, a number, or a block of
 * the item pool. The array never interprets it: the sorted operations order items by the comparer that you
 * pass, which must be the same at every call. It is called as `compare(item, key, context)` with a stored
 * item; the key is whatever you pass (a name, a number, a record), and the comparer alone gives it a meaning.
 * The `_x` forms differ only in their comparer: it is called as `compare(context, item, key, extra)`. Without
 * a comparer (NULL) insertions go to the end, sorts do nothing, and everything else finds nothing.
 *
 * To the releasing operations, an item 0 is an empty slot.
 *
 * @{
 */

/** An array of bare items. */
typedef struct mub_arrays {
  uint64_t *items;     /**< the table; NULL until the first growth */
  int64_t count;       /**< items in use */
  int64_t capacity;    /**< slots in the table */
  mub_pool *pool;      /**< the item pool: NULL, made by `_init`, or an external one, written here */
  uint16_t own_pool;   /**< 1: made by `_init`, released by `_term` */
  uint16_t descending; /**< not 0: the sorted operations use descending order */
} mub_arrays;

/**
 * Makes the record an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: make an item pool that the array owns
 * @failure the item pool is missing if memory runs out: `pool` is NULL and `own_pool` 0
 * @owner the record is the caller's; a pool made here belongs to the array until mub_arrays_term()
 * @invalidates nothing
 */
MUB_API void mub_arrays_init(mub_arrays *array, int with_pool);

/**
 * Releases the table and an owned pool.
 *
 * An external pool stays in its field. Items are not visited.
 *
 * @param[in,out] array  the array
 * @owner what the array owns is released; items and external pools stay the caller's
 * @invalidates pointers to slots, and all item blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API void mub_arrays_term(mub_arrays *array);

/**
 * Makes room for `wanted` items in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     slots wanted in total
 * @return 1 if there is room, as there always is for a `wanted` up to the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to slots, if the table grows
 * @cost O(count) if the table grows
 */
MUB_API int mub_arrays_expand(mub_arrays *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This may also lengthen the array: spare slots come into use as they are. Does nothing for a negative `n`,
 * or without a table.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrays_shrink(mub_arrays *array, int64_t n);

/**
 * Exchanges the items and pools of two arrays.
 *
 * `descending` stays with its record.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner what one array owned now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_arrays_swap(mub_arrays *a, mub_arrays *b);

/**
 * Makes the destination a copy of the source.
 *
 * If the source owns its pool, the pool is cloned, every item is translated to its copy, and `clone` is
 * called for every item, 0 included. An item that is no block of the pool becomes 0, and so do all items if
 * the destination has no pool of its own. If the source does not own its pool, items are copied as they are,
 * `clone` is not called, and the destination shares the source's pool and gives up its own. `descending` is
 * not copied.
 *
 * `source_pool` is cloned only if `destination_pool` and `clone` are given too. Nothing happens if both
 * arrays are the same.
 *
 * @param[in] source                the array to copy; it does not change
 * @param[in,out] source_pool       a pool outside the array that the items point into; NULL if there is none
 * @param[in,out] destination       an initialised array, with a pool of its own if the source has one; its
 *                                  old contents are overwritten and its old items not released
 * @param[in,out] destination_pool  the initialised pool that becomes the copy of `source_pool`, or
 *                                  `source_pool` itself, which both then share; NULL if there is none
 * @param[in] clone                 adjusts each copied item; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to slots of the destination, and all blocks of a pool that it owned and of a
 *   `destination_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the pools that are cloned
 * @nullable source_pool, destination_pool, clone
 */
MUB_API mub_arrays *mub_arrays_clone(const mub_arrays *source, mub_pool *source_pool, mub_arrays *destination,
                                     mub_pool *destination_pool, mub_clone_fn clone);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * Items are not visited, and blocks of an external pool are not returned.
 *
 * @param[in,out] array  the array
 * @owner the table is released and an owned pool emptied; items are not released
 * @invalidates pointers to slots, and all item blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API void mub_arrays_remove_all(mub_arrays *array);

/**
 * Releases every item, then empties the array.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released item that is not 0; NULL: not called
 * @return the array
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each item is passed to `free`, its block goes back to an external pool; the table is released and an
 *   owned pool emptied
 * @invalidates pointers to slots, and all item blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable free
 */
MUB_API mub_arrays *mub_arrays_free_all(mub_arrays *array, mub_free_fn free);

/**
 * Releases every item, in order.
 *
 * The slots are unchanged and their items are stale afterwards.
 *
 * @param[in,out] array  the array
 * @param[in] free       called with each released item that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each item is passed to `free`, its block goes back to an external pool, although the array still
 *   holds it
 * @invalidates the items
 * @cost O(count)
 * @nullable free
 * @level low
 */
MUB_API void mub_arrays_free_all_entry(mub_arrays *array, mub_free_fn free);

/**
 * Adds an item at the end, whatever the order.
 *
 * @param[in,out] array  the array
 * @param[in] item       any word
 * @failure the array is unchanged if memory runs out
 * @owner the item is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to slots
 * @cost O(1); O(count) when the table grows
 */
MUB_API void mub_arrays_append(mub_arrays *array, uint64_t item);

/**
 * Adds a new block of the item pool at the end.
 *
 * @param[in,out] array  the array
 * @param[in] init       called with the new block; NULL: not called
 * @return the block
 * @failure 0 if there was no block, and 0 is appended; also 0 if there was no memory for the slot, and
 *   nothing is appended
 * @owner the block belongs to the item pool; the array refers to it
 * @invalidates pointers to slots
 * @cost O(1); O(count) when the table grows
 * @nullable init
 */
MUB_API uint64_t mub_arrays_append_new(mub_arrays *array, mub_init_fn init);

/**
 * Adds all items of the source at the end.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out
 * @owner items are copied as words, so that both arrays refer to the same things
 * @invalidates pointers to slots of the destination
 * @cost O(items copied); O(count) when the table grows
 */
MUB_API void mub_arrays_append_array(mub_arrays *destination, const mub_arrays *source);

/**
 * Finds the slot at `index`.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the slot lies in the array's table, valid until the table grows or the item is moved or removed
 */
MUB_API uint64_t *mub_arrays_get_entry(const mub_arrays *array, int64_t index);

/**
 * Reads the item at `index`.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return the item
 * @failure 0 unless `0 <= index < capacity`
 * @owner the item stays in the array
 */
MUB_API uint64_t mub_arrays_get_at(const mub_arrays *array, int64_t index);

/**
 * Replaces the item at `index`, whatever that does to the order.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] item       any word
 * @return the previous item
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous item is returned and not released; the new one is kept as it is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrays_set_at(mub_arrays *array, int64_t index, uint64_t item);

/**
 * Reads the first item.
 *
 * @param[in] array  the array
 * @return the item
 * @failure 0 in an empty array
 * @owner the item stays in the array
 */
MUB_API uint64_t mub_arrays_get_first(const mub_arrays *array);

/**
 * Reads the last item.
 *
 * @param[in] array  the array
 * @return the item
 * @failure 0 in an empty array
 * @owner the item stays in the array
 */
MUB_API uint64_t mub_arrays_get_last(const mub_arrays *array);

/**
 * Adds an item before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] item       any word
 * @failure nothing is added for a negative index, or if memory runs out
 * @owner the item is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to slots
 * @cost O(count)
 */
MUB_API void mub_arrays_insert_at(mub_arrays *array, int64_t index, uint64_t item);

/**
 * Removes the item at `index`, which is not released.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @return the item
 * @failure 0 unless `0 <= index < count`
 * @owner the item is returned and not released
 * @invalidates pointers to slots
 * @cost O(count)
 */
MUB_API uint64_t mub_arrays_remove_at(mub_arrays *array, int64_t index);

/**
 * Removes the item at `index` and releases it.
 *
 * Does nothing unless `0 <= index < count`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] free       called with each released item that is not 0; NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the item is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to slots, and the item
 * @cost O(count)
 * @nullable free
 */
MUB_API void mub_arrays_free_at(mub_arrays *array, int64_t index, mub_free_fn free);

/**
 * Adds an item unless an equal one is present.
 *
 * The item is also the key. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] item       any word; also passed to the comparer as the key
 * @param[in] context    any word; passed to the comparer as its last argument
 * @param[in] compare    called as `compare(stored, item, context)`; with NULL the item is appended
 * @return 1 if no equal item was present, even if the item could not be added
 * @failure 0 if an equal item was present, and the array is unchanged; without memory the result is 1, and
 *   nothing is added
 * @owner the item is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the slots after it
 * @nullable compare
 */
MUB_API int mub_arrays_insert(mub_arrays *array, uint64_t item, uint64_t context,
                              mub_compare_item_fn compare);

/**
 * Adds an item unless an equal one is present.
 *
 * The item is also the key. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] item       any word; also passed to the comparer as the key
 * @param[in] extra      any word; passed to the comparer as its last argument
 * @param[in] compare    called as `compare(context, stored, item, extra)`; with NULL the item is appended
 * @return 1 if no equal item was present, even if the item could not be added
 * @failure 0 if an equal item was present, and the array is unchanged; without memory the result is 1, and
 *   nothing is added
 * @owner the item is kept as it is; what it refers to stays the caller's
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the slots after it
 * @nullable compare
 */
MUB_API int mub_arrays_insert_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                                mub_compare_context_fn compare);

/**
 * Adds a new block of the item pool where a key belongs unless an equal item is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        what to look for, passed to the comparer
 * @param[in] context    any word; passed to the comparer as its last argument
 * @param[out] item      receives the block before `init` runs (0 if there was none, which is added
 *                       nevertheless), or the equal item; 0 if memory for the slot ran out
 * @param[in] init       called with the new block; should store the key in it, so that it sorts where it was
 *                       placed; NULL: not called
 * @param[in] compare    called as `compare(item, key, context)` with a stored item; with NULL the block is
 *                       appended
 * @return the index of the new item
 * @failure -1 if an equal one was present or memory ran out; the block of a refused insertion goes back to
 *   the pool after `init` has run
 * @owner the block belongs to the item pool; the array refers to it
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the slots after it
 * @nullable init, compare
 */
MUB_API int mub_arrays_insert_new(mub_arrays *array, uint64_t key, uint64_t context, uint64_t *item,
                                  mub_init_fn init, mub_compare_item_fn compare);

/**
 * Adds a new block of the item pool where a key belongs unless an equal item is present.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] key        what to look for, passed to the comparer
 * @param[in] extra      any word; passed to the comparer as its last argument
 * @param[out] item      receives the block before `init` runs (0 if there was none, which is added
 *                       nevertheless), or the equal item; 0 if memory for the slot ran out
 * @param[in] init       called with the new block; should store the key in it, so that it sorts where it was
 *                       placed; NULL: not called
 * @param[in] compare    called as `compare(context, item, key, extra)` with a stored item; with NULL the
 *                       block is appended
 * @return the index of the new item
 * @failure -1 if an equal one was present or memory ran out; the block of a refused insertion goes back to
 *   the pool after `init` has run
 * @owner the block belongs to the item pool; the array refers to it
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the slots after it
 * @nullable init, compare
 */
MUB_API int mub_arrays_insert_new_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                    uint64_t *item, mub_init_fn init, mub_compare_context_fn compare);

/**
 * Replaces the stored item that is equal to `item` by `item` itself.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] item       any word; also passed to the comparer as the key
 * @param[in] context    any word; passed to the comparer as its last argument
 * @param[in] compare    called as `compare(item, key, context)` with a stored item; with NULL nothing is
 *                       found
 * @return the replaced item
 * @failure 0 if there is none; nothing changes
 * @owner the previous item is returned and not released; the new one is kept as it is
 * @invalidates nothing
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_update(mub_arrays *array, uint64_t item, uint64_t context,
                                   mub_compare_item_fn compare);

/**
 * Replaces the stored item that is equal to `item` by `item` itself.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] item       any word; also passed to the comparer as the key
 * @param[in] extra      any word; passed to the comparer as its last argument
 * @param[in] compare    called as `compare(context, item, key, extra)` with a stored item; with NULL nothing
 *                       is found
 * @return the replaced item
 * @failure 0 if there is none; nothing changes
 * @owner the previous item is returned and not released; the new one is kept as it is
 * @invalidates nothing
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_update_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                                     mub_compare_context_fn compare);

/**
 * Removes the item equal to a key.
 *
 * It is not released. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        what to look for, passed to the comparer
 * @param[in] context    any word; passed to the comparer as its last argument
 * @param[in] compare    called as `compare(item, key, context)` with a stored item; with NULL nothing is
 *                       found
 * @return the item
 * @failure 0 if there is none
 * @owner the item is returned and not released
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move what is after it
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_remove(mub_arrays *array, uint64_t key, uint64_t context,
                                   mub_compare_item_fn compare);

/**
 * Removes the item equal to a key.
 *
 * It is not released. The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] key        what to look for, passed to the comparer
 * @param[in] extra      any word; passed to the comparer as its last argument
 * @param[in] compare    called as `compare(context, item, key, extra)` with a stored item; with NULL nothing
 *                       is found
 * @return the item
 * @failure 0 if there is none
 * @owner the item is returned and not released
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move what is after it
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_remove_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                     mub_compare_context_fn compare);

/**
 * Removes the item equal to a key, if there is one, and releases it.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        what to look for, passed to the comparer
 * @param[in] context    any word; passed to the comparer as its last argument
 * @param[in] free       called with each released item that is not 0; NULL: not called
 * @param[in] compare    called as `compare(item, key, context)` with a stored item; with NULL nothing is
 *                       found
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the item is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to slots, and the item
 * @cost O(log count) to search, O(count) to move what is after it
 * @nullable free, compare
 */
MUB_API void mub_arrays_free(mub_arrays *array, uint64_t key, uint64_t context, mub_free_fn free,
                             mub_compare_item_fn compare);

/**
 * Removes the item equal to a key, if there is one, and releases it.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] key        what to look for, passed to the comparer
 * @param[in] extra      any word; passed to the comparer as its last argument
 * @param[in] free       called with each released item that is not 0; NULL: not called
 * @param[in] compare    called as `compare(context, item, key, extra)` with a stored item; with NULL nothing
 *                       is found
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner the item is passed to `free`, its block goes back to an external pool
 * @invalidates pointers to slots, and the item
 * @cost O(log count) to search, O(count) to move what is after it
 * @nullable free, compare
 */
MUB_API void mub_arrays_free_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                               mub_free_fn free, mub_compare_context_fn compare);

/**
 * Looks up the item equal to a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] context  any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(item, key, context)` with a stored item; with NULL nothing is found
 * @return the item
 * @failure 0 if there is none
 * @owner the item stays in the array
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_find(const mub_arrays *array, uint64_t key, uint64_t context,
                                 mub_compare_item_fn compare);

/**
 * Looks up the item equal to a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] context  any word; passed to the comparer as its first argument
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] extra    any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(context, item, key, extra)` with a stored item; with NULL nothing is
 *                     found
 * @return the item
 * @failure 0 if there is none
 * @owner the item stays in the array
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_find_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                   mub_compare_context_fn compare);

/**
 * Looks up the index of the item equal to a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] context  any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(item, key, context)` with a stored item; with NULL nothing is found
 * @return the index
 * @failure -1 if there is none
 * @cost O(log count)
 * @nullable compare
 */
MUB_API int64_t mub_arrays_find_index(const mub_arrays *array, uint64_t key, uint64_t context,
                                      mub_compare_item_fn compare);

/**
 * Looks up the index of the item equal to a key.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] context  any word; passed to the comparer as its first argument
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] extra    any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(context, item, key, extra)` with a stored item; with NULL nothing is
 *                     found
 * @return the index
 * @failure -1 if there is none
 * @cost O(log count)
 * @nullable compare
 */
MUB_API int64_t mub_arrays_find_index_x(const mub_arrays *array, uint64_t context, uint64_t key,
                                        uint64_t extra, mub_compare_context_fn compare);

/**
 * Looks up the item equal to a key, or the item before which the key belongs, or the last item if the key
 * belongs after all of them.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] context  any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(item, key, context)` with a stored item; with NULL nothing is found
 * @return the item
 * @failure 0 in an empty array or without a comparer
 * @owner the item stays in the array
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_bfind(const mub_arrays *array, uint64_t key, uint64_t context,
                                  mub_compare_item_fn compare);

/**
 * Looks up the item equal to a key, or the item before which the key belongs, or the last item if the key
 * belongs after all of them.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] context  any word; passed to the comparer as its first argument
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] extra    any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(context, item, key, extra)` with a stored item; with NULL nothing is
 *                     found
 * @return the item
 * @failure 0 in an empty array or without a comparer
 * @owner the item stays in the array
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_bfind_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                    mub_compare_context_fn compare);

/**
 * Looks up the index of the item that mub_arrays_bfind() gives.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] context  any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(item, key, context)` with a stored item; with NULL nothing is found
 * @return the index
 * @failure -1 in an empty array or without a comparer
 * @cost O(log count)
 * @nullable compare
 */
MUB_API int64_t mub_arrays_bfind_index(const mub_arrays *array, uint64_t key, uint64_t context,
                                       mub_compare_item_fn compare);

/**
 * Looks up the index of the item that mub_arrays_bfind_x() gives.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array    the array
 * @param[in] context  any word; passed to the comparer as its first argument
 * @param[in] key      what to look for, passed to the comparer
 * @param[in] extra    any word; passed to the comparer as its last argument
 * @param[in] compare  called as `compare(context, item, key, extra)` with a stored item; with NULL nothing is
 *                     found
 * @return the index
 * @failure -1 in an empty array or without a comparer
 * @cost O(log count)
 * @nullable compare
 */
MUB_API int64_t mub_arrays_bfind_index_x(const mub_arrays *array, uint64_t context, uint64_t key,
                                         uint64_t extra, mub_compare_context_fn compare);

/**
 * Sorts the items, in place and not stably.
 *
 * An inconsistent comparer leaves the items in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called as `compare(item, other item, 0)`; with NULL nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort(mub_arrays *array, int ascending, mub_compare_item_fn compare);

/**
 * Sorts the items ascending, in place and not stably.
 *
 * An inconsistent comparer leaves the items in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called as `compare(item, other item, 0)`; with NULL nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_p(mub_arrays *array, mub_compare_item_fn compare);

/**
 * Sorts the items descending, in place and not stably.
 *
 * An inconsistent comparer leaves the items in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called as `compare(item, other item, 0)`; with NULL nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_n(mub_arrays *array, mub_compare_item_fn compare);

/**
 * Sorts the items, in place and not stably.
 *
 * An inconsistent comparer leaves the items in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called as `compare(context, item, other item, 0)`; with NULL nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_x(mub_arrays *array, uint64_t context, int ascending,
                                mub_compare_context_fn compare);

/**
 * Sorts the items ascending, in place and not stably.
 *
 * An inconsistent comparer leaves the items in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] compare    called as `compare(context, item, other item, 0)`; with NULL nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_x_p(mub_arrays *array, uint64_t context, mub_compare_context_fn compare);

/**
 * Sorts the items descending, in place and not stably.
 *
 * An inconsistent comparer leaves the items in an arbitrary order.
 *
 * @param[in,out] array  the array
 * @param[in] context    any word; passed to the comparer as its first argument
 * @param[in] compare    called as `compare(context, item, other item, 0)`; with NULL nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_x_n(mub_arrays *array, uint64_t context, mub_compare_context_fn compare);

/** @} */

/**
 * @defgroup arrayt mub_arrayt: an array of 64-bit words, the first four of them inside the record
 *
 * An array of words, the first four of them in the record. A word is a number, signed or unsigned, or a
 * pointer. Up to four words take no memory besides the record; word i is `inline_items[i]` for i < 4 and
 * `tail[i - 4]` from there on. There are no values, pools or callbacks.
 *
 * Positions end at `count` here, not at the capacity. The sorted operations compare two words by the sign of
 * the difference of their low 32 bits, wrapped around to 32 bits: words that differ only in higher bits are
 * equal to them. The sorts compare whole words as unsigned values. Both agree as long as all words are below
 * 2^32 and within 2^31 of each other.
 *
 * @{
 */

/** An array of words, the first four of them in the record. */
typedef struct mub_arrayt {
  /** words 0 to 3; mub_arrayt_init() leaves them as they are */
  uint64_t inline_items[4];
  /** the words after these; NULL until the capacity exceeds four */
  uint64_t *tail;
  /** words in use */
  int64_t count;
  /** words that fit, the four in the record included; 0 after mub_arrayt_remove_all() */
  int64_t capacity;
  /** not 0: the sorted operations use descending order */
  uint16_t descending;
} mub_arrayt;

/**
 * Makes the record an empty array, ascending, of capacity 4.
 *
 * @param[out] array  the array
 * @owner the record is the caller's
 * @invalidates nothing
 */
MUB_API void mub_arrayt_init(mub_arrayt *array);

/**
 * Releases the tail.
 *
 * The array is then empty, with capacity 4.
 *
 * @param[in,out] array  the array
 * @owner the tail is released
 * @invalidates pointers to words of the tail
 */
MUB_API void mub_arrayt_term(mub_arrayt *array);

/**
 * Empties the array: releases the tail and clears the words in the record.
 *
 * The capacity is 0 until the next growth makes it 4 or more.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the tail is released
 * @invalidates pointers to words of the tail
 */
MUB_API mub_arrayt *mub_arrayt_remove_all(mub_arrayt *array);

/**
 * Computes the size of the words in use.
 *
 * @param[in] array  the array
 * @return `8 * count`, in bytes
 */
MUB_API int64_t mub_arrayt_length(const mub_arrayt *array);

/**
 * Makes room for `wanted` words in total, and for four at least.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     words wanted in total
 * @return 1 if there is room
 * @failure 0 if memory ran out
 * @invalidates pointers to words of the tail, if the tail grows
 * @cost O(count) if the tail grows
 */
MUB_API int mub_arrayt_expand(mub_arrayt *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This may also lengthen the array: spare words come into use as they are. Does nothing for a negative `n`.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrayt_shrink(mub_arrayt *array, int64_t n);

/**
 * Exchanges the words of two arrays.
 *
 * `descending` stays with its record.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the tail of one array now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_arrayt_swap(mub_arrayt *a, mub_arrayt *b);

/**
 * Makes the words of the destination those of the source.
 *
 * `descending` is not copied.
 *
 * @param[in] source           the array to copy; it does not change
 * @param[in,out] destination  an initialised array
 * @failure the destination is unchanged if memory runs out
 * @owner the words are copied
 * @invalidates pointers to words of the tail of the destination
 * @cost O(count)
 */
MUB_API void mub_arrayt_clone(const mub_arrayt *source, mub_arrayt *destination);

/**
 * Adds a word at the end, whatever the order.
 *
 * @param[in,out] array  the array
 * @param[in] item       any word
 * @failure the array is unchanged if memory runs out
 * @invalidates pointers to words of the tail
 * @cost O(1); O(count) when the tail grows
 */
MUB_API void mub_arrayt_append(mub_arrayt *array, uint64_t item);

/**
 * Adds all words of the source at the end.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out
 * @invalidates pointers to words of the tail of the destination
 * @cost O(words copied); O(count) when the tail grows
 */
MUB_API void mub_arrayt_append_array(mub_arrayt *destination, const mub_arrayt *source);

/**
 * Reads the word at `index`.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return the word
 * @failure 0 unless `0 <= index < count`
 */
MUB_API uint64_t mub_arrayt_get_at(const mub_arrayt *array, int64_t index);

/**
 * Replaces the word at `index`.
 *
 * Does nothing unless `0 <= index < count`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] item       any word
 * @invalidates nothing
 */
MUB_API void mub_arrayt_set_at(mub_arrayt *array, int64_t index, uint64_t item);

/**
 * Reads the first word.
 *
 * @param[in] array  the array
 * @return the word
 * @failure 0 in an empty array
 */
MUB_API uint64_t mub_arrayt_get_first(const mub_arrayt *array);

/**
 * Reads the last word.
 *
 * @param[in] array  the array
 * @return the word
 * @failure 0 in an empty array
 */
MUB_API uint64_t mub_arrayt_get_last(const mub_arrayt *array);

/**
 * Adds a word unless one is present that is equal in its low 32 bits.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] item       any word
 * @return 1 if no equal word was present, even if the word could not be added
 * @failure 0 if an equal word was present, and the array is unchanged; without memory the result is 1, and
 *   nothing is added
 * @invalidates pointers to words
 * @cost O(log count) to search, O(count) to move the words after it
 */
MUB_API int mub_arrayt_insert(mub_arrayt *array, uint64_t item);

/**
 * Removes the word whose low 32 bits are `key`.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in,out] array  the array
 * @param[in] key        what to look for: the low 32 bits of a word
 * @return 1 if removed
 * @failure 0 if there is none
 * @invalidates pointers to words
 * @cost O(log count) to search, O(count) to move what is after it
 */
MUB_API int mub_arrayt_remove(mub_arrayt *array, uint32_t key);

/**
 * Looks for a word whose low 32 bits are `key`.
 *
 * The array must be sorted as its `descending` field says.
 *
 * @param[in] array  the array
 * @param[in] key    what to look for: the low 32 bits of a word
 * @return 1 if there is one
 * @failure 0 if there is none
 * @cost O(log count)
 */
MUB_API int mub_arrayt_find(const mub_arrayt *array, uint32_t key);

/**
 * Adds a word before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] item       any word
 * @failure nothing is added for a negative index, or if memory runs out
 * @invalidates pointers to words
 * @cost O(count)
 */
MUB_API void mub_arrayt_insert_at(mub_arrayt *array, int64_t index, uint64_t item);

/**
 * Removes the word at `index`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @return the word
 * @failure 0 unless `0 <= index < count`
 * @invalidates pointers to words
 * @cost O(count)
 */
MUB_API uint64_t mub_arrayt_remove_at(mub_arrayt *array, int64_t index);

/**
 * Sorts by the whole words as unsigned values.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] unique     not 0: of equal words only one is kept
 * @failure nothing changes if there is no memory for a second table of the words
 * @invalidates pointers to words
 * @cost O(count log count)
 */
MUB_API void mub_arrayt_qsort(mub_arrayt *array, int ascending, int unique);

/**
 * Sorts words in any memory, ascending as unsigned values, in place.
 *
 * @param[in,out] items  the first of the words to sort
 * @param[in] count      how many words there are; below 2 does nothing
 * @invalidates nothing
 * @cost O(count log count) on average
 * @bounds items[count]
 * @level low
 */
MUB_API void mub_arrayt_qsort_p(uint64_t *items, int64_t count);

/**
 * Sorts words in any memory, descending as unsigned values, in place.
 *
 * @param[in,out] items  the first of the words to sort
 * @param[in] count      how many words there are; below 2 does nothing
 * @invalidates nothing
 * @cost O(count log count) on average
 * @bounds items[count]
 * @level low
 */
MUB_API void mub_arrayt_qsort_n(uint64_t *items, int64_t count);

/**
 * Joins the words, in decimal as signed values, into one text with the separator between them.
 *
 * @param[in] array       the array
 * @param[in] separator   the separator; its low 8 bits are used
 * @param[in,out] string  an initialised string, whose content is replaced
 * @failure the string is unchanged if memory runs out
 * @owner the text belongs to the string
 * @invalidates pointers into the string
 * @cost O(bytes written)
 */
MUB_API void mub_arrayt_to_string(const mub_arrayt *array, int separator, mub_string *string);

/**
 * Appends the pieces of a text as words.
 *
 * The array is neither emptied nor sorted. Each piece is trimmed as by mub_char_trim() and read as by
 * mub_char_get_long(). Empty pieces give 0, except that the last one is left out.
 *
 * @param[in,out] array  the array
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text, used as given; below 1 appends nothing
 * @failure nothing is appended if memory runs out
 * @owner the text is only read
 * @invalidates pointers to words of the tail
 * @cost O(length)
 * @bounds text[length]
 */
MUB_API void mub_arrayt_from_string(mub_arrayt *array, int separator, const char *text, int64_t length);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
