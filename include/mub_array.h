/**
 * @defgroup array_h mub_array.h: growable arrays
 *
 * Growable arrays, either in any order or sorted, as dictionaries.
 *
 *     mub_array    entries ──► [offset, length, value][offset, length, value] …  byte-string keys
 *                                  │
 *                  keys    ──► "pearappleplum…"   the bytes of all keys, in one stream
 *
 *     mub_arrayd   entries ──► [key, value][key, value] …     32-bit integer keys
 *     mub_arrayx   entries ──► [key, value][key, value] …     64-bit integer keys
 *     mub_arrays   items   ──► [item][item] …                 64-bit items, with your comparators
 *     mub_arrayt   [word][word][word][word]                   64-bit words, the first four in the record
 *                  tail    ──► [word][word] …
 *
 * **Growth.** A table grows by half its count, by at least 8 and at most 65536 slots, or to the requested
 * size if that is more, in multiples of 4. `_shrink` changes only the count; `_remove_all`, `_free_all` and
 * `_term` release the table. New slots are zero-filled. Growth moves the table: pointers to entries and items
 * are then invalid, as they are after every operation that adds, removes or sorts.
 *
 * **Positions.** `_get_entry`, `_get_at`, `_set_at` and `_update_at` access every slot of the table,
 * including the spare ones from `count` up to `capacity`; the count does not change. A spare slot has an
 * empty key (an integer key is 0) and value 0 if it was never used, else its old content, of which an integer
 * key may have become 0. Insertion and removal are bounded by `count`, and so are all positions in
 * mub_arrayt.
 *
 * **Sorted use.** Operations that need a sorted array use binary search and rely on the order that the
 * `descending` field specifies: 0 is ascending (as after `_init`), any other value descending. Set it before
 * the first insertion. If the array is in another order, the result of a search and the position of an
 * insertion are unspecified, but always lie within the table. Among equal keys, which only the operations
 * without a search can add, any one may be found.
 *
 * **Sorting.** The sort functions ignore `descending`: sort a `descending` array with direction 0. Except for
 * mub_arrayt_qsort() they allocate no memory.
 *
 * **Value pool.** The `_new` operations take a block of `pool` for the value (in mub_arrays: for the item)
 * and pass it to an initialiser before the new entry is added to the array. A pool created by `_init` has no
 * block size: check that `pool` is not NULL, then store the size of your values in `pool->block_size`. If
 * there is no block (no pool, no block size or no memory), the entry is added with value 0.
 *
 * In an array with a pool, every value (in mub_arrays: every item) must be 0 or the address of a block of
 * that pool: the `_free` operations return it to the pool if that is external, and `_clone` translates it if
 * the pool is owned.
 *
 * **Releasing.** The `_free` operations call your function with each value that is not 0, and return its
 * block if the pool is external. Blocks of an owned pool are released with the whole pool only: after
 * `_free`, `_free_at` and `_free_all_entry` they are still allocated.
 *
 * **Clones.** If memory runs out while an array is cloned, the destination is empty except that its `count`
 * is that of the source. No function reads beyond `capacity`. The next addition turns the missing entries
 * into zero-filled ones; `_expand` turns as many as fit into them. The destination of mub_arrayt_clone() is
 * unchanged instead.
 *
 * What the everyday operations return; those with a key need a sorted array:
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
 * | `_clone`        | the destination            |                               | empty destination      |
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
 * An array of entries with byte-string keys. A key is `length` bytes at `key`; keys are copied. With a
 * negative length the key ends at its first NUL, unless the function uses lengths as given. NULL is the empty
 * key. Keys are compared byte by byte as unsigned values; a key that is a prefix of another precedes it ("ab"
 * before "abc"). The comparison is case-sensitive.
 *
 * The empty key can be appended, but not inserted before an existing entry: such an insertion fails, although
 * mub_array_insert() returns 1. The same applies to any key before an entry whose own key starts past the end
 * of the key stream, which is possible after mub_array_shrink() has lengthened the array.
 *
 * The keys of an array take at most 2^32 - 1 bytes in total. If a key would exceed that, or if memory runs
 * out for it, an insertion fails and the array is unchanged; mub_array_append(), mub_array_append_new() and
 * mub_array_from_string() add an empty key instead.
 *
 * Keys are returned as pointers into the key stream, which are NULL while the key stream has no block. They
 * are not NUL-terminated, and the pointers are invalid after the next operation that adds, changes or removes
 * a key.
 *
 * @{
 */

/** One slot of the table. The value may be changed in place, the key fields must not. */
typedef struct mub_array_entry {
  uint32_t key_offset; /**< the key's offset in the key stream */
  uint32_t key_length; /**< the length of the key in bytes */
  uint64_t value;      /**< the caller's; may be changed in place */
} mub_array_entry;

/** An array of entries with byte-string keys. */
typedef struct mub_array {
  mub_array_entry *entries; /**< the table; NULL until the first growth */
  int64_t count;            /**< entries in use */
  int64_t capacity;         /**< slots in the table */
  mub_stream keys;          /**< the key stream; sorting does not move its bytes */
  mub_pool *pool;           /**< the value pool: NULL, created by `_init`, or an external one */
  uint16_t own_pool;        /**< 1: created by `_init`, released by `_term` */
  uint16_t descending;      /**< not 0: the sorted operations use descending order */
} mub_array;

/**
 * Initialises an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: create a value pool that the array owns
 * @return the array
 * @failure none; if memory runs out for the value pool, `pool` is NULL and `own_pool` 0
 * @owner the record belongs to the caller; a pool created here belongs to the array until mub_array_term()
 * @invalidates nothing
 */
MUB_API mub_array *mub_array_init(mub_array *array, int with_pool);

/**
 * Releases the table, the keys and an owned pool.
 *
 * An external pool remains in its field. No function is called for the values; an owned pool is released with
 * its blocks.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner what the array owns is released, the blocks of its own pool included; other values and external
 *   pools remain the caller's
 * @invalidates pointers to entries and to keys, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_array *mub_array_term(mub_array *array);

/**
 * Makes room for `wanted` entries in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     the total number of slots needed
 * @return 1 if there is room; always if `wanted` is at most the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to entries, if the table grows
 * @cost O(wanted) if the table grows
 */
MUB_API int mub_array_expand(mub_array *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This can also lengthen the array, with the spare slots as they are. Keys and values are not changed. Does
 * nothing for a negative `n`, or without a table.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_array_shrink(mub_array *array, int64_t n);

/**
 * Swaps the entries and keys of two arrays.
 *
 * `pool`, `own_pool` and `descending` are not exchanged, so values that are pool blocks then lie in the other
 * array's pool.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the entries of one array now belong to the other; the pools are not exchanged
 * @invalidates nothing
 */
MUB_API void mub_array_swap(mub_array *a, mub_array *b);

/**
 * Copies an array, replacing the content of the destination.
 *
 * If the source owns its pool, the pool is cloned, every value is translated to its copy, and `callback` is
 * called for every entry, value 0 included. A value that is not an address in the source's pool becomes 0,
 * and so do all values if the destination owns no pool.
 *
 * If the source does not own its pool, values are copied as words and `callback` is not called. The
 * destination then uses the source's pool, and a pool that it owned is destroyed.
 *
 * `descending` is not copied.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both arrays are the same.
 *
 * @param[in] source                     the array to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into; NULL if there is none
 * @param[in,out] destination            an initialised array, with a pool of its own if the source has one;
 *                                       its old contents are overwritten, without a call for its old values
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       `source_user_pool` itself, to share it; NULL if there is none
 * @param[in] callback                   adjusts each copied value; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to entries and to keys of the destination, and all blocks of a pool that it owned and
 *   of a `destination_user_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the keys and pools that are cloned
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_array *mub_array_clone(const mub_array *source, mub_pool *source_user_pool,
                                   mub_array *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/**
 * Checks whether the array is intact.
 *
 * Checks the count, the capacity, that every key is in the key stream and no two keys overlap, the pool that
 * the array owns, and the fields and tables of an external one. Any order of the entries is accepted, and so
 * is a copy for which memory ran out, until `_expand` gives it a table that is smaller than its count. Spare
 * slots that mub_array_shrink() brought into use, or to which mub_array_set_at() gave a key, may have keys
 * that overlap or are outside the stream: the result is 0 until they have keys of their own.
 *
 * @param[in] array  the array
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the array is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(count); if the keys do not fill the key stream, O(count * L / 65536 + L) for its length L; and that
 *   of mub_pool_verify() for the pool that the array owns
 * @nullable what
 */
MUB_API int mub_array_verify(const mub_array *array, const char **what);

/**
 * Returns the size of the heap memory that the array holds.
 *
 * Counts the table, the pool that the array owns and the key stream, as requested from `malloc`; not the
 * record itself. Blocks of an external pool are not counted.
 *
 * @param[in] array  the array
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pool)
 */
MUB_API int64_t mub_array_memory_bytes(const mub_array *array);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * The memory of the key stream is kept. No function is called for the values; emptying an owned pool releases
 * its blocks, and blocks of an external pool are not returned to it.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the table is released and an owned pool emptied; other values remain the caller's
 * @invalidates pointers to entries and to keys, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_array *mub_array_remove_all(mub_array *array);

/**
 * Releases every value, then empties the array like mub_array_remove_all().
 *
 * The memory of the key stream is released too.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @return the array
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block is returned to an external pool; the table is released
 *   and an owned pool emptied
 * @invalidates pointers to entries and to keys, and all value blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable release
 */
MUB_API mub_array *mub_array_free_all(mub_array *array, mub_free_fn release);

/**
 * Releases every value, in order.
 *
 * The entries still hold the values, which are no longer valid.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block is returned to an external pool, although the array
 *   still holds it
 * @invalidates the values
 * @cost O(count)
 * @nullable release
 * @level low
 */
MUB_API void mub_array_free_all_entry(mub_array *array, mub_free_fn release);

/**
 * Adds an entry at the end, without regard to the order.
 *
 * If the keys would exceed 2^32 - 1 bytes, or if memory runs out for the key, the entry is added with an
 * empty key.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any 64-bit word, 0 included
 * @failure the array is unchanged if there is no memory for the entry
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates pointers to entries and to keys
 * @cost O(length); O(count) when the table grows, O(bytes of all keys) when the key stream does
 * @bounds key[length]
 * @nullable key
 */
MUB_API void mub_array_append(mub_array *array, const void *key, int64_t length, uint64_t value);

/**
 * Adds an entry at the end, with a new block of the value pool as its value.
 *
 * If the keys would exceed 2^32 - 1 bytes, or if memory runs out for the key, the entry is added with an
 * empty key.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] init       called with the new block; NULL: not called
 * @return the block
 * @failure 0 if the pool had no block, in which case the entry is added with value 0, or if there was no
 *   memory for the entry, in which case nothing is added
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
 * Values are copied as words.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out, or if the keys would exceed 2^32 - 1 bytes
 * @owner keys are copied; values are copied as words, so both arrays refer to the same data
 * @invalidates pointers to entries and to keys of the destination
 * @cost O(entries copied and the bytes of their keys); O(count) when the table grows, O(bytes of all keys)
 *   when the key stream does
 */
MUB_API void mub_array_append_array(mub_array *destination, const mub_array *source);

/**
 * Returns the address of the slot at `index`, to read it or to change its value.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 */
MUB_API mub_array_entry *mub_array_get_entry(const mub_array *array, int64_t index);

/**
 * Reads the key and the value of the slot at `index`.
 *
 * @param[in] array    the array
 * @param[in] index    a position, counted from 0
 * @param[out] key     receives the address of the key, which is not NUL-terminated; NULL unless
 *                     `0 <= index < capacity`, and while the key stream has no block
 * @param[out] length  receives the length of the key in bytes; 0 unless `0 <= index < capacity`
 * @return the value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the key lies in the array's key stream; the pointer is valid until a key is added, changed or
 *   removed; the value stays in the array
 * @bounds key[length]
 */
MUB_API uint64_t mub_array_get_at(const mub_array *array, int64_t index, const char **key, int64_t *length);

/**
 * Reads the key and the value of the first entry.
 *
 * @param[in] array    the array
 * @param[out] key     receives the address of the key, which is not NUL-terminated; NULL in an empty array,
 *                     and while the key stream has no block
 * @param[out] length  receives the length of the key in bytes; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the key lies in the array's key stream; the pointer is valid until a key is added, changed or
 *   removed; the value stays in the array
 * @bounds key[length]
 */
MUB_API uint64_t mub_array_get_first(const mub_array *array, const char **key, int64_t *length);

/**
 * Reads the key and the value of the last entry.
 *
 * @param[in] array    the array
 * @param[out] key     receives the address of the key, which is not NUL-terminated; NULL in an empty array,
 *                     and while the key stream has no block
 * @param[out] length  receives the length of the key in bytes; 0 in an empty array
 * @return the value
 * @failure 0 in an empty array
 * @owner the key lies in the array's key stream; the pointer is valid until a key is added, changed or
 *   removed; the value stays in the array
 * @bounds key[length]
 */
MUB_API uint64_t mub_array_get_last(const mub_array *array, const char **key, int64_t *length);

/**
 * Replaces the key and the value of the slot at `index`, without regard to the order.
 *
 * The key of a spare slot may lie past the end of the key stream: it is replaced as mub_stream_update()
 * replaces a range that extends past the length.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0, and nothing changes, unless `0 <= index < capacity`, or if the key cannot be replaced: because
 *   memory ran out, the old key starts past the end of the key stream, the old or the new key would not lie
 *   wholly inside the stream's block, or the stream's length would become negative or exceed 2^32 - 1 bytes
 * @owner the previous value is returned and not released; the new one is stored as is
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
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 */
MUB_API uint64_t mub_array_update_at(mub_array *array, int64_t index, uint64_t value);

/**
 * Adds an entry before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; if negative, nothing is added
 * @param[in] value      any 64-bit word, 0 included
 * @failure nothing is added for a negative index or length, for an empty key before an entry, if memory runs
 *   out, or if the keys would exceed 2^32 - 1 bytes
 * @owner the value is stored as is; what it refers to remains the caller's
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
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to entries and to keys, and the value
 * @cost O(count + bytes of all keys)
 * @nullable release
 */
MUB_API void mub_array_free_at(mub_array *array, int64_t index, mub_free_fn release);

/**
 * Adds a key with a value unless the key is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if the key was absent, even if it could not be added
 * @failure 0 if the key was present, whose value is unchanged; if memory ran out, if the keys would exceed
 *   2^32 - 1 bytes, or for the empty key before an existing entry, the result is 1 although the array is
 *   unchanged
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move the entries after it
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_array_insert(mub_array *array, const void *key, int64_t length, uint64_t value);

/**
 * Adds a key with a new block of the value pool as its value unless the key is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[out] value     receives the block, before `init` is called (0 if the pool had none, in which case
 *                       the entry is added with value 0); the stored value if the key was present; 0 if the
 *                       insertion failed
 * @param[in] init       called with the new block; NULL: not called
 * @return the index of the new entry
 * @failure -1 if the key was present, if memory ran out, if the keys would exceed 2^32 - 1 bytes, or for the
 *   empty key before an existing entry; if the insertion fails, the block is returned to the pool after
 *   `init` has been called
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move the entries after it
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API int mub_array_insert_new(mub_array *array, const void *key, int64_t length, uint64_t *value,
                                 mub_init_fn init);

/**
 * Replaces the value of a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent; nothing changes
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_update(mub_array *array, const void *key, int64_t length, uint64_t value);

/**
 * Removes a key.
 *
 * Its value is not released. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value is returned and not released
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move the entries after it
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_array_remove(mub_array *array, const void *key, int64_t length);

/**
 * Removes a key, if it is present, and releases its value.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to entries and to keys, and the value
 * @cost O(log count) to search, O(count + bytes of all keys) to move the entries after it
 * @bounds key[length]
 * @nullable key, release
 */
MUB_API void mub_array_free(mub_array *array, const void *key, int64_t length, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its value directly. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length     bytes of the key; if negative, nothing is found or added, except that in an empty
 *                       array the key ends at its first NUL
 * @return the entry
 * @failure NULL if memory ran out, if the keys would exceed 2^32 - 1 bytes, for the empty key before an
 *   existing entry, and for a negative length, unless the array is empty
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 * @invalidates pointers to entries and to keys
 * @cost O(log count) to search, O(count + bytes of all keys) to move the entries after it
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_array_entry *mub_array_entry_insert(mub_array *array, const void *key, int64_t length);

/**
 * Finds the entry of a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array   the array
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key, used as given; a negative length finds nothing
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 * @cost O(log count)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_array_entry *mub_array_entry_find(const mub_array *array, const void *key, int64_t length);

/**
 * Looks up the value of a key.
 *
 * The array must be sorted according to its `descending` field.
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
 * The array must be sorted according to its `descending` field.
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
 * Looks up the value of the first entry with a key, by linear search; the array need not be sorted.
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
 * Looks up the index of the first entry with a key, by linear search; the array need not be sorted.
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
 * The array must be sorted according to its `descending` field.
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
 * Looks up the index of a key, or that of the entry before which the key would be inserted, or that of the
 * last entry if the key would go after all of them.
 *
 * The array must be sorted according to its `descending` field.
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
 * Sorts by key; in place, not stable.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_array_qsort(mub_array *array, int ascending);

/**
 * Sorts by key, ascending; in place, not stable.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_array_qsort_p(mub_array *array);

/**
 * Sorts by key, descending; in place, not stable.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_array_qsort_n(mub_array *array);

/**
 * Sorts by value with a comparator; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_array_qsort_x(mub_array *array, int ascending, mub_compare_fn compare);

/**
 * Sorts by value with a comparator, ascending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_array_qsort_x_p(mub_array *array, mub_compare_fn compare);

/**
 * Sorts by value with a comparator, descending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; NULL: nothing happens
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
 * Splits a text at a separator and appends the pieces, as keys with value 0.
 *
 * The array is neither emptied nor sorted. Each piece is trimmed as by mub_char_trim(). Empty pieces are
 * appended too, except the last: "a, ,b," gives "a", "" and "b".
 *
 * @param[in,out] array  the array
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text; if below 1, nothing is appended
 * @failure nothing is appended if memory runs out for the entries; if it runs out for the bytes of a piece,
 *   an empty key is appended
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
 * An array of entries with 32-bit integer keys, which are stored in the entries. Insertions fail only if
 * memory runs out.
 *
 * The sorted operations compare two keys by the sign of their difference as a 32-bit number, so that
 * 0xFFFFFFFF is 1 below 0. The sort functions compare keys as unsigned numbers, so that 0xFFFFFFFF comes
 * last. Both agree as long as no two keys differ by 2^31 or more.
 *
 * @{
 */

/**
 * One slot of the table. The value may be changed in place, and so may the key if that preserves the order.
 */
typedef struct mub_arrayd_entry {
  uint32_t key;   /**< the key */
  uint64_t value; /**< the caller's; may be changed in place */
} mub_arrayd_entry;

/** An array of entries with 32-bit integer keys. */
typedef struct mub_arrayd {
  mub_arrayd_entry *entries; /**< the table; NULL until the first growth */
  int64_t count;             /**< entries in use */
  int64_t capacity;          /**< slots in the table */
  mub_pool *pool;            /**< the value pool: NULL, created by `_init`, or an external one */
  uint16_t own_pool;         /**< 1: created by `_init`, released by `_term` */
  uint16_t descending;       /**< not 0: the sorted operations use descending order */
} mub_arrayd;

/**
 * Initialises an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: create a value pool that the array owns
 * @return the array
 * @failure none; if memory runs out for the value pool, `pool` is NULL and `own_pool` 0
 * @owner the record belongs to the caller; a pool created here belongs to the array until mub_arrayd_term()
 * @invalidates nothing
 */
MUB_API mub_arrayd *mub_arrayd_init(mub_arrayd *array, int with_pool);

/**
 * Releases the table and an owned pool.
 *
 * An external pool remains in its field. No function is called for the values; an owned pool is released with
 * its blocks.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner what the array owns is released, the blocks of its own pool included; other values and external
 *   pools remain the caller's
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayd *mub_arrayd_term(mub_arrayd *array);

/**
 * Makes room for `wanted` entries in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     the total number of slots needed
 * @return 1 if there is room; always if `wanted` is at most the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to entries, if the table grows
 * @cost O(wanted) if the table grows
 */
MUB_API int mub_arrayd_expand(mub_arrayd *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This can also lengthen the array, with the spare slots as they are. Without a table the count becomes 0.
 * Does nothing for a negative `n`.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrayd_shrink(mub_arrayd *array, int64_t n);

/**
 * Swaps the entries of two arrays.
 *
 * `pool`, `own_pool` and `descending` are not exchanged, so values that are pool blocks then lie in the other
 * array's pool.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the entries of one array now belong to the other; the pools are not exchanged
 * @invalidates nothing
 */
MUB_API void mub_arrayd_swap(mub_arrayd *a, mub_arrayd *b);

/**
 * Copies an array, replacing the content of the destination.
 *
 * If the source owns its pool, the pool is cloned, every value is translated to its copy, and `callback` is
 * called for every entry, value 0 included. A value that is not an address in the source's pool becomes 0,
 * and so do all values if the destination owns no pool.
 *
 * If the source does not own its pool, values are copied as words and `callback` is not called. The
 * destination then uses the source's pool, and a pool that it owned is destroyed.
 *
 * `descending` is not copied.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both arrays are the same.
 *
 * @param[in] source                     the array to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into; NULL if there is none
 * @param[in,out] destination            an initialised array, with a pool of its own if the source has one;
 *                                       its old contents are overwritten, without a call for its old values
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       `source_user_pool` itself, to share it; NULL if there is none
 * @param[in] callback                   adjusts each copied value; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to entries of the destination, and all blocks of a pool that it owned and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the pools that are cloned
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_arrayd *mub_arrayd_clone(const mub_arrayd *source, mub_pool *source_user_pool,
                                     mub_arrayd *destination, mub_pool *destination_user_pool,
                                     mub_clone_fn callback);

/**
 * Checks whether the array is intact.
 *
 * Checks the count, the capacity, the pool that the array owns, and the fields and tables of an external one.
 * Any order is accepted, and so is a copy for which memory ran out, until `_expand` gives it a table that is
 * smaller than its count.
 *
 * @param[in] array  the array
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the array is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost that of mub_pool_verify() for the pool that the array owns
 * @nullable what
 */
MUB_API int mub_arrayd_verify(const mub_arrayd *array, const char **what);

/**
 * Returns the size of the heap memory that the array holds.
 *
 * Counts the table and the pool that the array owns, as requested from `malloc`; not the record itself.
 * Blocks of an external pool are not counted.
 *
 * @param[in] array  the array
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pool)
 */
MUB_API int64_t mub_arrayd_memory_bytes(const mub_arrayd *array);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * No function is called for the values; emptying an owned pool releases its blocks, and blocks of an external
 * pool are not returned to it.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the table is released and an owned pool emptied; other values remain the caller's
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayd *mub_arrayd_remove_all(mub_arrayd *array);

/**
 * Releases every value, then empties the array.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @return the array
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block is returned to an external pool; the table is released
 *   and an owned pool emptied
 * @invalidates pointers to entries, and all value blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable release
 */
MUB_API mub_arrayd *mub_arrayd_free_all(mub_arrayd *array, mub_free_fn release);

/**
 * Releases every value, in order.
 *
 * The entries still hold the values, which are no longer valid.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block is returned to an external pool, although the array
 *   still holds it
 * @invalidates the values
 * @cost O(count)
 * @nullable release
 * @level low
 */
MUB_API void mub_arrayd_free_all_entry(mub_arrayd *array, mub_free_fn release);

/**
 * Adds an entry at the end, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @failure the array is unchanged if memory runs out
 * @owner the value is stored as is; what it refers to remains the caller's
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
 * @failure 0 if the pool had no block, in which case the entry is added with value 0, or if there was no
 *   memory for the entry, in which case nothing is added
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(1); O(count) when the table grows
 * @nullable init
 */
MUB_API uint64_t mub_arrayd_append_new(mub_arrayd *array, uint32_t key, mub_init_fn init);

/**
 * Adds copies of all entries of the source at the end.
 *
 * Values are copied as words.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out
 * @owner values are copied as words, so both arrays refer to the same data
 * @invalidates pointers to entries of the destination
 * @cost O(entries copied); O(count) when the table grows
 */
MUB_API void mub_arrayd_append_array(mub_arrayd *destination, const mub_arrayd *source);

/**
 * Returns the address of the slot at `index`, to read it or to change its value.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
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
 * Replaces the key and the value of the slot at `index`, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayd_set_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value);

/**
 * Replaces the value of the slot at `index`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayd_update_at(mub_arrayd *array, int64_t index, uint64_t value);

/**
 * Adds an entry before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @failure nothing is added for a negative index, or if memory runs out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates pointers to entries
 * @cost O(count)
 */
MUB_API void mub_arrayd_insert_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value);

/**
 * Removes the entry at `index`.
 *
 * Its value is not released. If it was the last entry, the key in the slot, which is now spare, is set to 0.
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
 * Does nothing unless `0 <= index < count`. When `release` is called, the entry's key is already 0.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(count)
 * @nullable release
 */
MUB_API void mub_arrayd_free_at(mub_arrayd *array, int64_t index, mub_free_fn release);

/**
 * Adds a key with a value unless the key is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if the key was absent, even if it could not be added
 * @failure 0 if the key was present, whose value is unchanged; if memory ran out, the result is 1 although
 *   nothing is added
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 */
MUB_API int mub_arrayd_insert(mub_arrayd *array, uint32_t key, uint64_t value);

/**
 * Adds a key with a new block of the value pool as its value unless the key is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[out] value     receives the block, before `init` is called (0 if the pool had none, in which case
 *                       the entry is added with value 0); the stored value if the key was present; 0 if
 *                       memory ran out
 * @param[in] init       called with the new block; NULL: not called
 * @return the index of the new entry
 * @failure -1 if the key was present or memory ran out; if the insertion fails, the block is returned to the
 *   pool after `init` has been called
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 * @nullable init
 */
MUB_API int mub_arrayd_insert_new(mub_arrayd *array, uint32_t key, uint64_t *value, mub_init_fn init);

/**
 * Replaces the value of a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent; nothing changes
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayd_update(mub_arrayd *array, uint32_t key, uint64_t value);

/**
 * Removes a key.
 *
 * Its value is not released. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value is returned and not released
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 */
MUB_API uint64_t mub_arrayd_remove(mub_arrayd *array, uint32_t key);

/**
 * Removes a key, if it is present, and releases its value.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(log count) to search, O(count) to move the entries after it
 * @nullable release
 */
MUB_API void mub_arrayd_free(mub_arrayd *array, uint32_t key, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its value directly. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 */
MUB_API mub_arrayd_entry *mub_arrayd_entry_insert(mub_arrayd *array, uint32_t key);

/**
 * Finds the entry of a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 * @cost O(log count)
 */
MUB_API mub_arrayd_entry *mub_arrayd_entry_find(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the value of a key.
 *
 * The array must be sorted according to its `descending` field.
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayd_find_index(const mub_arrayd *array, uint32_t key);

/**
 * Looks up the value of the first entry with a key, by linear search; the array need not be sorted.
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
 * Looks up the index of the first entry with a key, by linear search; the array need not be sorted.
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
 * The array must be sorted according to its `descending` field.
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
 * Looks up the index of a key, or that of the entry before which the key would be inserted, or that of the
 * last entry if the key would go after all of them.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 in an empty array
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayd_bfind_index(const mub_arrayd *array, uint32_t key);

/**
 * Sorts by key as an unsigned number; in place, not stable.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayd_qsort(mub_arrayd *array, int ascending);

/**
 * Sorts by key as an unsigned number, ascending; in place, not stable.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayd_qsort_p(mub_arrayd *array);

/**
 * Sorts by key as an unsigned number, descending; in place, not stable.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayd_qsort_n(mub_arrayd *array);

/**
 * Sorts by value with a comparator; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayd_qsort_x(mub_arrayd *array, int ascending, mub_compare_fn compare);

/**
 * Sorts by value with a comparator, ascending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayd_qsort_x_p(mub_arrayd *array, mub_compare_fn compare);

/**
 * Sorts by value with a comparator, descending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayd_qsort_x_n(mub_arrayd *array, mub_compare_fn compare);

/**
 * Joins the keys, as unsigned decimal numbers, into one text with the separator between them.
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
 * Splits a text at a separator and appends the pieces, as keys with value 0.
 *
 * The array is neither emptied nor sorted. Each piece is trimmed as by mub_char_trim() and read as by
 * mub_char_get_long(); the key is the low 32 bits. Empty pieces give 0, except that the last one is left out:
 * "10, ,-1," gives 10, 0 and 0xFFFFFFFF.
 *
 * @param[in,out] array  the array
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text; if below 1, nothing is appended
 * @failure nothing is appended if memory runs out
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
 * compare two keys by the sign of their difference as a 64-bit number, which agrees with the sort functions
 * as long as no two keys differ by 2^63 or more.
 *
 * @{
 */

/**
 * One slot of the table. The value may be changed in place, and so may the key if that preserves the order.
 */
typedef struct mub_arrayx_entry {
  uint64_t key;   /**< the key */
  uint64_t value; /**< the caller's; may be changed in place */
} mub_arrayx_entry;

/** An array of entries with 64-bit integer keys. */
typedef struct mub_arrayx {
  mub_arrayx_entry *entries; /**< the table; NULL until the first growth */
  int64_t count;             /**< entries in use */
  int64_t capacity;          /**< slots in the table */
  mub_pool *pool;            /**< the value pool: NULL, created by `_init`, or an external one */
  uint16_t own_pool;         /**< 1: created by `_init`, released by `_term` */
  uint16_t descending;       /**< not 0: the sorted operations use descending order */
} mub_arrayx;

/**
 * Initialises an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: create a value pool that the array owns
 * @return the array
 * @failure none; if memory runs out for the value pool, `pool` is NULL and `own_pool` 0
 * @owner the record belongs to the caller; a pool created here belongs to the array until mub_arrayx_term()
 * @invalidates nothing
 */
MUB_API mub_arrayx *mub_arrayx_init(mub_arrayx *array, int with_pool);

/**
 * Releases the table and an owned pool.
 *
 * An external pool remains in its field. No function is called for the values; an owned pool is released with
 * its blocks.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner what the array owns is released, the blocks of its own pool included; other values and external
 *   pools remain the caller's
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayx *mub_arrayx_term(mub_arrayx *array);

/**
 * Makes room for `wanted` entries in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     the total number of slots needed
 * @return 1 if there is room; always if `wanted` is at most the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to entries, if the table grows
 * @cost O(wanted) if the table grows
 */
MUB_API int mub_arrayx_expand(mub_arrayx *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This can also lengthen the array, with the spare slots as they are. Without a table the count becomes 0.
 * Does nothing for a negative `n`.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrayx_shrink(mub_arrayx *array, int64_t n);

/**
 * Swaps the entries of two arrays.
 *
 * `pool`, `own_pool` and `descending` are not exchanged, so values that are pool blocks then lie in the other
 * array's pool.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the entries of one array now belong to the other; the pools are not exchanged
 * @invalidates nothing
 */
MUB_API void mub_arrayx_swap(mub_arrayx *a, mub_arrayx *b);

/**
 * Copies an array, replacing the content of the destination.
 *
 * If the source owns its pool, the pool is cloned, every value is translated to its copy, and `callback` is
 * called for every entry, value 0 included. A value that is not an address in the source's pool becomes 0,
 * and so do all values if the destination owns no pool.
 *
 * If the source does not own its pool, values are copied as words and `callback` is not called. The
 * destination then uses the source's pool, and a pool that it owned is destroyed.
 *
 * `descending` is not copied.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both arrays are the same.
 *
 * @param[in] source                     the array to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into; NULL if there is none
 * @param[in,out] destination            an initialised array, with a pool of its own if the source has one;
 *                                       its old contents are overwritten, without a call for its old values
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       `source_user_pool` itself, to share it; NULL if there is none
 * @param[in] callback                   adjusts each copied value; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to entries of the destination, and all blocks of a pool that it owned and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the pools that are cloned
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_arrayx *mub_arrayx_clone(const mub_arrayx *source, mub_pool *source_user_pool,
                                     mub_arrayx *destination, mub_pool *destination_user_pool,
                                     mub_clone_fn callback);

/**
 * Checks whether the array is intact.
 *
 * Checks the count, the capacity, the pool that the array owns, and the fields and tables of an external one.
 * Any order is accepted, and so is a copy for which memory ran out, until `_expand` gives it a table that is
 * smaller than its count.
 *
 * @param[in] array  the array
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the array is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost that of mub_pool_verify() for the pool that the array owns
 * @nullable what
 */
MUB_API int mub_arrayx_verify(const mub_arrayx *array, const char **what);

/**
 * Returns the size of the heap memory that the array holds.
 *
 * Counts the table and the pool that the array owns, as requested from `malloc`; not the record itself.
 * Blocks of an external pool are not counted.
 *
 * @param[in] array  the array
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pool)
 */
MUB_API int64_t mub_arrayx_memory_bytes(const mub_arrayx *array);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * No function is called for the values; emptying an owned pool releases its blocks, and blocks of an external
 * pool are not returned to it.
 *
 * @param[in,out] array  the array
 * @return the array
 * @owner the table is released and an owned pool emptied; other values remain the caller's
 * @invalidates pointers to entries, and all value blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API mub_arrayx *mub_arrayx_remove_all(mub_arrayx *array);

/**
 * Releases every value, then empties the array.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @return the array
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block is returned to an external pool; the table is released
 *   and an owned pool emptied
 * @invalidates pointers to entries, and all value blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable release
 */
MUB_API mub_arrayx *mub_arrayx_free_all(mub_arrayx *array, mub_free_fn release);

/**
 * Releases every value, in order.
 *
 * The entries still hold the values, which are no longer valid.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block is returned to an external pool, although the array
 *   still holds it
 * @invalidates the values
 * @cost O(count)
 * @nullable release
 * @level low
 */
MUB_API void mub_arrayx_free_all_entry(mub_arrayx *array, mub_free_fn release);

/**
 * Adds an entry at the end, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @failure the array is unchanged if memory runs out
 * @owner the value is stored as is; what it refers to remains the caller's
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
 * @failure 0 if the pool had no block, in which case the entry is added with value 0, or if there was no
 *   memory for the entry, in which case nothing is added
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(1); O(count) when the table grows
 * @nullable init
 */
MUB_API uint64_t mub_arrayx_append_new(mub_arrayx *array, uint64_t key, mub_init_fn init);

/**
 * Adds copies of all entries of the source at the end.
 *
 * Values are copied as words.
 *
 * @param[in,out] destination  the array that grows
 * @param[in] source           the array to copy from; may be the destination itself
 * @failure the destination is unchanged if memory runs out
 * @owner values are copied as words, so both arrays refer to the same data
 * @invalidates pointers to entries of the destination
 * @cost O(entries copied); O(count) when the table grows
 */
MUB_API void mub_arrayx_append_array(mub_arrayx *destination, const mub_arrayx *source);

/**
 * Returns the address of the slot at `index`, to read it or to change its value.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
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
 * Replaces the key and the value of the slot at `index`, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayx_set_at(mub_arrayx *array, int64_t index, uint64_t key, uint64_t value);

/**
 * Replaces the value of the slot at `index`.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 */
MUB_API uint64_t mub_arrayx_update_at(mub_arrayx *array, int64_t index, uint64_t value);

/**
 * Adds an entry before the one at `index`, or at the end if `index` is `count` or more.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @failure nothing is added for a negative index, or if memory runs out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates pointers to entries
 * @cost O(count)
 */
MUB_API void mub_arrayx_insert_at(mub_arrayx *array, int64_t index, uint64_t key, uint64_t value);

/**
 * Removes the entry at `index`.
 *
 * Its value is not released. If it was the last entry, the key in the slot, which is now spare, is set to 0.
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
 * Does nothing unless `0 <= index < count`. When `release` is called, the entry's key is already 0.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(count)
 * @nullable release
 */
MUB_API void mub_arrayx_free_at(mub_arrayx *array, int64_t index, mub_free_fn release);

/**
 * Adds a key with a value unless the key is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if the key was absent, even if it could not be added
 * @failure 0 if the key was present, whose value is unchanged; if memory ran out, the result is 1 although
 *   nothing is added
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 */
MUB_API int mub_arrayx_insert(mub_arrayx *array, uint64_t key, uint64_t value);

/**
 * Adds a key with a new block of the value pool as its value unless the key is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[out] value     receives the block, before `init` is called (0 if the pool had none, in which case
 *                       the entry is added with value 0); the stored value if the key was present; 0 if
 *                       memory ran out
 * @param[in] init       called with the new block; NULL: not called
 * @return the index of the new entry
 * @failure -1 if the key was present or memory ran out; if the insertion fails, the block is returned to the
 *   pool after `init` has been called
 * @owner the block belongs to the value pool; the array refers to it
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 * @nullable init
 */
MUB_API int mub_arrayx_insert_new(mub_arrayx *array, uint64_t key, uint64_t *value, mub_init_fn init);

/**
 * Replaces the value of a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent; nothing changes
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log count)
 */
MUB_API uint64_t mub_arrayx_update(mub_arrayx *array, uint64_t key, uint64_t value);

/**
 * Removes a key.
 *
 * Its value is not released. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the value
 * @failure 0 if the key is absent
 * @owner the value is returned and not released
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 */
MUB_API uint64_t mub_arrayx_remove(mub_arrayx *array, uint64_t key);

/**
 * Removes a key, if it is present, and releases its value.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @param[in] release    called with each released value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to entries, and the value
 * @cost O(log count) to search, O(count) to move the entries after it
 * @nullable release
 */
MUB_API void mub_arrayx_free(mub_arrayx *array, uint64_t key, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its value directly. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 * @invalidates pointers to entries
 * @cost O(log count) to search, O(count) to move the entries after it
 */
MUB_API mub_arrayx_entry *mub_arrayx_entry_insert(mub_arrayx *array, uint64_t key);

/**
 * Finds the entry of a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry lies in the array's table; the address is valid until the table grows or the entry is
 *   moved or removed
 * @cost O(log count)
 */
MUB_API mub_arrayx_entry *mub_arrayx_entry_find(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the value of a key.
 *
 * The array must be sorted according to its `descending` field.
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 if the key is absent
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayx_find_index(const mub_arrayx *array, uint64_t key);

/**
 * Looks up the value of the first entry with a key, by linear search; the array need not be sorted.
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
 * Looks up the index of the first entry with a key, by linear search; the array need not be sorted.
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
 * The array must be sorted according to its `descending` field.
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
 * Looks up the index of a key, or that of the entry before which the key would be inserted, or that of the
 * last entry if the key would go after all of them.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key
 * @return the index
 * @failure -1 in an empty array
 * @cost O(log count)
 */
MUB_API int64_t mub_arrayx_bfind_index(const mub_arrayx *array, uint64_t key);

/**
 * Sorts by key as an unsigned number; in place, not stable.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayx_qsort(mub_arrayx *array, int ascending);

/**
 * Sorts by key as an unsigned number, ascending; in place, not stable.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayx_qsort_p(mub_arrayx *array);

/**
 * Sorts by key as an unsigned number, descending; in place, not stable.
 *
 * @param[in,out] array  the array
 * @invalidates pointers to entries
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayx_qsort_n(mub_arrayx *array);

/**
 * Sorts by value with a comparator; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayx_qsort_x(mub_arrayx *array, int ascending, mub_compare_fn compare);

/**
 * Sorts by value with a comparator, ascending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayx_qsort_x_p(mub_arrayx *array, mub_compare_fn compare);

/**
 * Sorts by value with a comparator, descending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called with two values; NULL: nothing happens
 * @invalidates pointers to entries
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrayx_qsort_x_n(mub_arrayx *array, mub_compare_fn compare);

/** @} */

/**
 * @defgroup arrays mub_arrays: an array of bare 64-bit items, sorted by your comparator or not
 *
 * An array of bare items. An item is a 64-bit word: a pointer to a struct of yours, a number, or a block of
 * the item pool. The array never interprets it: the sorted operations order items with the comparator that
 * you pass, which must be the same for every call. It is called as `compare(stored, key, context)`, where
 * `stored` is an item of the array and `key` is the word that you passed (a name, a number, a struct), which
 * only the comparator interprets. The `_x` functions differ in their comparator only: it is called as
 * `compare(context, stored, key, extra)`. Without a comparator (NULL), insertions append, sorts do nothing
 * and searches find nothing.
 *
 * The `_free` operations ignore items that are 0.
 *
 * @{
 */

/** An array of bare items. */
typedef struct mub_arrays {
  uint64_t *items;     /**< the table; NULL until the first growth */
  int64_t count;       /**< items in use */
  int64_t capacity;    /**< slots in the table */
  mub_pool *pool;      /**< the item pool: NULL, created by `_init`, or an external one */
  uint16_t own_pool;   /**< 1: created by `_init`, released by `_term` */
  uint16_t descending; /**< not 0: the sorted operations use descending order */
} mub_arrays;

/**
 * Initialises an empty array, ascending.
 *
 * @param[out] array     the array
 * @param[in] with_pool  not 0: create an item pool that the array owns
 * @failure if memory runs out for the item pool, `pool` is NULL and `own_pool` 0
 * @owner the record belongs to the caller; a pool created here belongs to the array until mub_arrays_term()
 * @invalidates nothing
 */
MUB_API void mub_arrays_init(mub_arrays *array, int with_pool);

/**
 * Releases the table and an owned pool.
 *
 * An external pool remains in its field. No function is called for the items; an owned pool is released with
 * its blocks.
 *
 * @param[in,out] array  the array
 * @owner what the array owns is released, the blocks of its own pool included; other items and external pools
 *   remain the caller's
 * @invalidates pointers to slots, and all item blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API void mub_arrays_term(mub_arrays *array);

/**
 * Makes room for `wanted` items in total.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     the total number of slots needed
 * @return 1 if there is room; always if `wanted` is at most the capacity
 * @failure 0 if memory ran out
 * @invalidates pointers to slots, if the table grows
 * @cost O(wanted) if the table grows
 */
MUB_API int mub_arrays_expand(mub_arrays *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This can also lengthen the array, with the spare slots as they are. Does nothing for a negative `n`, or
 * without a table.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrays_shrink(mub_arrays *array, int64_t n);

/**
 * Swaps the items and pools of two arrays.
 *
 * The `descending` fields are not exchanged.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner what one array owned now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_arrays_swap(mub_arrays *a, mub_arrays *b);

/**
 * Copies an array, replacing the content of the destination.
 *
 * If the source owns its pool, the pool is cloned, every item is translated to its copy, and `callback` is
 * called for every item, 0 included. An item that is not an address in the source's pool becomes 0, and so do
 * all items if the destination owns no pool.
 *
 * If the source does not own its pool, items are copied as words and `callback` is not called. The
 * destination then uses the source's pool, and a pool that it owned is destroyed.
 *
 * `descending` is not copied.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both arrays are the same.
 *
 * @param[in] source                     the array to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the items point into; NULL if there is none
 * @param[in,out] destination            an initialised array, with a pool of its own if the source has one;
 *                                       its old contents are overwritten, without a call for its old items
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       `source_user_pool` itself, to share it; NULL if there is none
 * @param[in] callback                   adjusts each copied item; NULL: not called
 * @return the destination
 * @failure none; if memory runs out, the destination is empty except that `count` is that of the source
 * @owner the copy belongs to the destination; an external pool is shared by both arrays
 * @invalidates pointers to slots of the destination, and all blocks of a pool that it owned and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(capacity of the source), and the bytes of the pools that are cloned
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_arrays *mub_arrays_clone(const mub_arrays *source, mub_pool *source_user_pool,
                                     mub_arrays *destination, mub_pool *destination_user_pool,
                                     mub_clone_fn callback);

/**
 * Checks whether the array is intact.
 *
 * Checks the count, the capacity, the pool that the array owns, and the fields and tables of an external one.
 * Any order is accepted, and so is a copy for which memory ran out, until `_expand` gives it a table that is
 * smaller than its count.
 *
 * @param[in] array  the array
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the array is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost that of mub_pool_verify() for the pool that the array owns
 * @nullable what
 */
MUB_API int mub_arrays_verify(const mub_arrays *array, const char **what);

/**
 * Returns the size of the heap memory that the array holds.
 *
 * Counts the table and the pool that the array owns, as requested from `malloc`; not the record itself.
 * Blocks of an external pool are not counted.
 *
 * @param[in] array  the array
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pool)
 */
MUB_API int64_t mub_arrays_memory_bytes(const mub_arrays *array);

/**
 * Empties the array: releases the table and empties an owned pool.
 *
 * No function is called for the items; emptying an owned pool releases its blocks, and blocks of an external
 * pool are not returned to it.
 *
 * @param[in,out] array  the array
 * @owner the table is released and an owned pool emptied; other items remain the caller's
 * @invalidates pointers to slots, and all item blocks of an owned pool
 * @cost one release per chunk of an owned pool
 */
MUB_API void mub_arrays_remove_all(mub_arrays *array);

/**
 * Releases every item, then empties the array.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released item that is not 0; NULL: not called
 * @return the array
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each item is passed to `release`, its block is returned to an external pool; the table is released
 *   and an owned pool emptied
 * @invalidates pointers to slots, and all item blocks
 * @cost O(count), and one release per chunk of an owned pool
 * @nullable release
 */
MUB_API mub_arrays *mub_arrays_free_all(mub_arrays *array, mub_free_fn release);

/**
 * Releases every item, in order.
 *
 * The slots still hold the items, which are no longer valid.
 *
 * @param[in,out] array  the array
 * @param[in] release    called with each released item that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each item is passed to `release`, its block is returned to an external pool, although the array
 *   still holds it
 * @invalidates the items
 * @cost O(count)
 * @nullable release
 * @level low
 */
MUB_API void mub_arrays_free_all_entry(mub_arrays *array, mub_free_fn release);

/**
 * Adds an item at the end, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] item       any 64-bit word
 * @failure the array is unchanged if memory runs out
 * @owner the item is stored as is; what it refers to remains the caller's
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
 * @failure 0 if the pool had no block, in which case 0 is appended, or if there was no memory for the slot,
 *   in which case nothing is appended
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
 * @owner items are copied as words, so both arrays refer to the same data
 * @invalidates pointers to slots of the destination
 * @cost O(items copied); O(count) when the table grows
 */
MUB_API void mub_arrays_append_array(mub_arrays *destination, const mub_arrays *source);

/**
 * Returns the address of the slot at `index`.
 *
 * @param[in] array  the array
 * @param[in] index  a position, counted from 0
 * @return its address
 * @failure NULL unless `0 <= index < capacity`
 * @owner the slot lies in the array's table; the address is valid until the table grows or the item is moved
 *   or removed
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
 * Replaces the item at `index`, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] index      a position, counted from 0
 * @param[in] item       any 64-bit word
 * @return the previous item
 * @failure 0 unless `0 <= index < capacity`
 * @owner the previous item is returned and not released; the new one is stored as is
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
 * @param[in] item       any 64-bit word
 * @failure nothing is added for a negative index, or if memory runs out
 * @owner the item is stored as is; what it refers to remains the caller's
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
 * @param[in] release    called with each released item that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the item is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to slots, and the item
 * @cost O(count)
 * @nullable release
 */
MUB_API void mub_arrays_free_at(mub_arrays *array, int64_t index, mub_free_fn release);

/**
 * Adds an item unless an equal one is present.
 *
 * The item is also the key. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] item       any 64-bit word; also passed to the comparator as the key
 * @param[in] context    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare    called as `compare(stored, item, context)`; NULL: the item is appended
 * @return 1 if no equal item was present, even if the item could not be added
 * @failure 0 if an equal item was present, and the array is unchanged; if memory ran out, the result is 1
 *   although nothing is added
 * @owner the item is stored as is; what it refers to remains the caller's
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable compare
 */
MUB_API int mub_arrays_insert(mub_arrays *array, uint64_t item, uint64_t context,
                              mub_compare_item_fn compare);

/**
 * Adds an item unless an equal one is present.
 *
 * The item is also the key. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] item       any 64-bit word; also passed to the comparator as the key
 * @param[in] extra      any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare    called as `compare(context, stored, item, extra)`; NULL: the item is appended
 * @return 1 if no equal item was present, even if the item could not be added
 * @failure 0 if an equal item was present, and the array is unchanged; if memory ran out, the result is 1
 *   although nothing is added
 * @owner the item is stored as is; what it refers to remains the caller's
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable compare
 */
MUB_API int mub_arrays_insert_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                                mub_compare_context_fn compare);

/**
 * Adds a new block of the item pool at the position of a key unless an equal item is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key to look for, passed to the comparator
 * @param[in] context    any 64-bit word; passed to the comparator as its last argument
 * @param[out] item      receives the block, before `init` is called (0 if the pool had none, in which case
 *                       item 0 is added); the equal item if there is one; 0 if memory ran out for the slot
 * @param[in] init       called with the new block, in which it should store the key, so that the array stays
 *                       sorted; NULL: not called
 * @param[in] compare    called as `compare(stored, key, context)` for items; NULL: the block is appended
 * @return the index of the new item
 * @failure -1 if an equal one was present or memory ran out; if the insertion fails, the block is returned to
 *   the pool after `init` has been called
 * @owner the block belongs to the item pool; the array refers to it
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable init, compare
 */
MUB_API int mub_arrays_insert_new(mub_arrays *array, uint64_t key, uint64_t context, uint64_t *item,
                                  mub_init_fn init, mub_compare_item_fn compare);

/**
 * Adds a new block of the item pool at the position of a key unless an equal item is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] key        the key to look for, passed to the comparator
 * @param[in] extra      any 64-bit word; passed to the comparator as its last argument
 * @param[out] item      receives the block, before `init` is called (0 if the pool had none, in which case
 *                       item 0 is added); the equal item if there is one; 0 if memory ran out for the slot
 * @param[in] init       called with the new block, in which it should store the key, so that the array stays
 *                       sorted; NULL: not called
 * @param[in] compare    called as `compare(context, stored, key, extra)` for items; NULL: the block is
 *                       appended
 * @return the index of the new item
 * @failure -1 if an equal one was present or memory ran out; if the insertion fails, the block is returned to
 *   the pool after `init` has been called
 * @owner the block belongs to the item pool; the array refers to it
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable init, compare
 */
MUB_API int mub_arrays_insert_new_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                    uint64_t *item, mub_init_fn init, mub_compare_context_fn compare);

/**
 * Replaces the stored item that is equal to `item` with `item`.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] item       any 64-bit word; also passed to the comparator as the key
 * @param[in] context    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare    called as `compare(stored, item, context)` for items; NULL: nothing is found
 * @return the replaced item
 * @failure 0 if there is none; nothing changes
 * @owner the previous item is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_update(mub_arrays *array, uint64_t item, uint64_t context,
                                   mub_compare_item_fn compare);

/**
 * Replaces the stored item that is equal to `item` with `item`.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] item       any 64-bit word; also passed to the comparator as the key
 * @param[in] extra      any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare    called as `compare(context, stored, item, extra)`; NULL: nothing is found
 * @return the replaced item
 * @failure 0 if there is none; nothing changes
 * @owner the previous item is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_update_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                                     mub_compare_context_fn compare);

/**
 * Removes the item equal to a key.
 *
 * It is not released. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key to look for, passed to the comparator
 * @param[in] context    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare    called as `compare(stored, key, context)` for items; NULL: nothing is found
 * @return the item
 * @failure 0 if there is none
 * @owner the item is returned and not released
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_remove(mub_arrays *array, uint64_t key, uint64_t context,
                                   mub_compare_item_fn compare);

/**
 * Removes the item equal to a key.
 *
 * It is not released. The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] key        the key to look for, passed to the comparator
 * @param[in] extra      any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare    called as `compare(context, stored, key, extra)` for items; NULL: nothing is
 *                       found
 * @return the item
 * @failure 0 if there is none
 * @owner the item is returned and not released
 * @invalidates pointers to slots
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_remove_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                     mub_compare_context_fn compare);

/**
 * Removes the item equal to a key, if there is one, and releases it.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key to look for, passed to the comparator
 * @param[in] context    any 64-bit word; passed to the comparator as its last argument
 * @param[in] release    called with each released item that is not 0; NULL: not called
 * @param[in] compare    called as `compare(stored, key, context)` for items; NULL: nothing is found
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the item is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to slots, and the item
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable release, compare
 */
MUB_API void mub_arrays_free(mub_arrays *array, uint64_t key, uint64_t context, mub_free_fn release,
                             mub_compare_item_fn compare);

/**
 * Removes the item equal to a key, if there is one, and releases it.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] key        the key to look for, passed to the comparator
 * @param[in] extra      any 64-bit word; passed to the comparator as its last argument
 * @param[in] release    called with each released item that is not 0; NULL: not called
 * @param[in] compare    called as `compare(context, stored, key, extra)` for items; NULL: nothing is
 *                       found
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the item is passed to `release`, its block is returned to an external pool
 * @invalidates pointers to slots, and the item
 * @cost O(log count) to search, O(count) to move the items after it
 * @nullable release, compare
 */
MUB_API void mub_arrays_free_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                               mub_free_fn release, mub_compare_context_fn compare);

/**
 * Looks up the item equal to a key.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] context  any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(stored, key, context)` for items; NULL: nothing is found
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] context  any 64-bit word; passed to the comparator as its first argument
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] extra    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(context, stored, key, extra)` for items; NULL: nothing is found
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] context  any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(stored, key, context)` for items; NULL: nothing is found
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] context  any 64-bit word; passed to the comparator as its first argument
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] extra    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(context, stored, key, extra)` for items; NULL: nothing is found
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] context  any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(stored, key, context)` for items; NULL: nothing is found
 * @return the item
 * @failure 0 in an empty array or without a comparator
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
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] context  any 64-bit word; passed to the comparator as its first argument
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] extra    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(context, stored, key, extra)` for items; NULL: nothing is found
 * @return the item
 * @failure 0 in an empty array or without a comparator
 * @owner the item stays in the array
 * @cost O(log count)
 * @nullable compare
 */
MUB_API uint64_t mub_arrays_bfind_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                    mub_compare_context_fn compare);

/**
 * Looks up the index of the item equal to a key, or of the item before which the key belongs, or of the last
 * item if the key belongs after all of them.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] context  any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(stored, key, context)` for items; NULL: nothing is found
 * @return the index
 * @failure -1 in an empty array or without a comparator
 * @cost O(log count)
 * @nullable compare
 */
MUB_API int64_t mub_arrays_bfind_index(const mub_arrays *array, uint64_t key, uint64_t context,
                                       mub_compare_item_fn compare);

/**
 * Looks up the index of the item equal to a key, or of the item before which the key belongs, or of the last
 * item if the key belongs after all of them.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array    the array
 * @param[in] context  any 64-bit word; passed to the comparator as its first argument
 * @param[in] key      the key to look for, passed to the comparator
 * @param[in] extra    any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(context, stored, key, extra)` for items; NULL: nothing is found
 * @return the index
 * @failure -1 in an empty array or without a comparator
 * @cost O(log count)
 * @nullable compare
 */
MUB_API int64_t mub_arrays_bfind_index_x(const mub_arrays *array, uint64_t context, uint64_t key,
                                         uint64_t extra, mub_compare_context_fn compare);

/**
 * Sorts the items; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called as `compare(item, other item, 0)`; NULL: nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort(mub_arrays *array, int ascending, mub_compare_item_fn compare);

/**
 * Sorts the items ascending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called as `compare(item, other item, 0)`; NULL: nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_p(mub_arrays *array, mub_compare_item_fn compare);

/**
 * Sorts the items descending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] compare    called as `compare(item, other item, 0)`; NULL: nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_n(mub_arrays *array, mub_compare_item_fn compare);

/**
 * Sorts the items; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] compare    called as `compare(context, item, other item, 0)`; NULL: nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_x(mub_arrays *array, uint64_t context, int ascending,
                                mub_compare_context_fn compare);

/**
 * Sorts the items ascending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] compare    called as `compare(context, item, other item, 0)`; NULL: nothing happens
 * @invalidates pointers to slots
 * @cost O(count log count) comparisons on average
 * @nullable compare
 */
MUB_API void mub_arrays_qsort_x_p(mub_arrays *array, uint64_t context, mub_compare_context_fn compare);

/**
 * Sorts the items descending; in place, not stable.
 *
 * With an inconsistent comparator the resulting order is unspecified.
 *
 * @param[in,out] array  the array
 * @param[in] context    any 64-bit word; passed to the comparator as its first argument
 * @param[in] compare    called as `compare(context, item, other item, 0)`; NULL: nothing happens
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
 * pointer. Up to four words need no allocation; word i is `inline_items[i]` for i < 4, else `tail[i - 4]`.
 * There are no values, pools or callbacks.
 *
 * Unlike in the other arrays, positions are bounded by `count`, not by the capacity. The sorted operations
 * compare two words by the sign of the difference of their low 32 bits as a 32-bit number: words that differ
 * in higher bits only are equal. The sort functions compare whole words as unsigned numbers. Both agree as
 * long as all words are below 2^32 and no two differ by 2^31 or more.
 *
 * @{
 */

/** An array of words, the first four of them in the record. */
typedef struct mub_arrayt {
  uint64_t inline_items[4]; /**< words 0 to 3; not initialised by mub_arrayt_init() */
  uint64_t *tail;           /**< the further words; NULL until the capacity exceeds 4 */
  int64_t count;            /**< words in use */
  int64_t capacity;         /**< words that fit, including these four; 0 after mub_arrayt_remove_all() */
  uint16_t descending;      /**< not 0: the sorted operations use descending order */
} mub_arrayt;

/**
 * Initialises an empty array, ascending, with capacity 4.
 *
 * @param[out] array  the array
 * @owner the record belongs to the caller
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
 * The capacity is 0 until the array grows again, to at least 4.
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
 * Makes room for `wanted` words in total, and for at least four.
 *
 * @param[in,out] array  the array
 * @param[in] wanted     the total number of words needed
 * @return 1 if there is room
 * @failure 0 if memory ran out
 * @invalidates pointers to words of the tail, if the tail grows
 * @cost O(wanted) if the tail grows
 */
MUB_API int mub_arrayt_expand(mub_arrayt *array, int64_t wanted);

/**
 * Sets the count to `n`, or to the capacity if that is less.
 *
 * This can also lengthen the array, with the spare words as they are. Does nothing for a negative `n`.
 *
 * @param[in,out] array  the array
 * @param[in] n          the new count
 * @invalidates nothing
 */
MUB_API void mub_arrayt_shrink(mub_arrayt *array, int64_t n);

/**
 * Swaps the words of two arrays.
 *
 * The `descending` fields are not exchanged.
 *
 * @param[in,out] a  one array
 * @param[in,out] b  the other array
 * @owner the tail of one array now belongs to the other
 * @invalidates pointers to words in the records, which then refer to words of the other array
 */
MUB_API void mub_arrayt_swap(mub_arrayt *a, mub_arrayt *b);

/**
 * Copies the words of an array, replacing those of the destination.
 *
 * `descending` is not copied.
 *
 * @param[in] source           the array to copy; it does not change
 * @param[in,out] destination  an initialised array
 * @failure the destination is unchanged if memory runs out
 * @owner the words are copied
 * @invalidates pointers to words of the tail of the destination
 * @cost O(capacity of the source)
 */
MUB_API void mub_arrayt_clone(const mub_arrayt *source, mub_arrayt *destination);

/**
 * Checks whether the array is intact.
 *
 * Checks the count and the capacity. Any order is accepted.
 *
 * @param[in] array  the array
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the array is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @nullable what
 */
MUB_API int mub_arrayt_verify(const mub_arrayt *array, const char **what);

/**
 * Returns the size of the heap memory that the array holds.
 *
 * Counts the words outside the record, as requested from `malloc`; not the record itself.
 *
 * @param[in] array  the array
 * @return the number of bytes
 * @failure none
 */
MUB_API int64_t mub_arrayt_memory_bytes(const mub_arrayt *array);

/**
 * Adds a word at the end, without regard to the order.
 *
 * @param[in,out] array  the array
 * @param[in] item       any 64-bit word
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
 * @param[in] item       any 64-bit word
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
 * Adds a word unless one with the same low 32 bits is present.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] item       any 64-bit word
 * @return 1 if no equal word was present, even if the word could not be added
 * @failure 0 if an equal word was present, and the array is unchanged; if memory ran out, the result is 1
 *   although nothing is added
 * @invalidates pointers to words
 * @cost O(log count) to search, O(count) to move the words after it
 */
MUB_API int mub_arrayt_insert(mub_arrayt *array, uint64_t item);

/**
 * Removes the word whose low 32 bits are `key`.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in,out] array  the array
 * @param[in] key        the key to look for: the low 32 bits of a word
 * @return 1 if removed
 * @failure 0 if there is none
 * @invalidates pointers to words
 * @cost O(log count) to search, O(count) to move the words after it
 */
MUB_API int mub_arrayt_remove(mub_arrayt *array, uint32_t key);

/**
 * Looks for a word whose low 32 bits are `key`.
 *
 * The array must be sorted according to its `descending` field.
 *
 * @param[in] array  the array
 * @param[in] key    the key to look for: the low 32 bits of a word
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
 * @param[in] item       any 64-bit word
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
 * Sorts by whole words, as unsigned numbers.
 *
 * @param[in,out] array  the array
 * @param[in] ascending  not 0: ascending, 0: descending
 * @param[in] unique     not 0: of equal words only one is kept
 * @failure the array is unchanged if there is no memory for a second table of the words
 * @invalidates pointers to words
 * @cost O(count log count) on average
 */
MUB_API void mub_arrayt_qsort(mub_arrayt *array, int ascending, int unique);

/**
 * Sorts an array of words in memory, ascending as unsigned numbers, in place.
 *
 * @param[in,out] items  the first of the words to sort
 * @param[in] count      the number of words; if below 2, nothing happens
 * @invalidates nothing
 * @cost O(count log count) on average
 * @bounds items[count]
 * @level low
 */
MUB_API void mub_arrayt_qsort_p(uint64_t *items, int64_t count);

/**
 * Sorts an array of words in memory, descending as unsigned numbers, in place.
 *
 * @param[in,out] items  the first of the words to sort
 * @param[in] count      the number of words; if below 2, nothing happens
 * @invalidates nothing
 * @cost O(count log count) on average
 * @bounds items[count]
 * @level low
 */
MUB_API void mub_arrayt_qsort_n(uint64_t *items, int64_t count);

/**
 * Joins the words, as signed decimal numbers, into one text with the separator between them.
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
 * Splits a text at a separator and appends the pieces, as words.
 *
 * The array is neither emptied nor sorted. Each piece is trimmed as by mub_char_trim() and read as by
 * mub_char_get_long(). Empty pieces give 0, except that the last one is left out.
 *
 * @param[in,out] array  the array
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text; if below 1, nothing is appended
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
