/* mub_array.h: growable arrays, used as plain lists or kept sorted as dictionaries.
 *
 *   mub_array    entries ──► [offset, length, value][offset, length, value] …      byte-string keys
 *                                │
 *                keys    ──► "pearappleplum…"   the bytes of all keys, in one stream
 *
 *   mub_arrayd   entries ──► [key, value][key, value] …     32-bit integer keys
 *   mub_arrayx   entries ──► [key, value][key, value] …     64-bit integer keys
 *   mub_arrays   items   ──► [item][item] …                 bare 64-bit items, ordered by your comparers
 *   mub_arrayt   [word][word][word][word]                   64-bit words, the first four of them in the record
 *                tail    ──► [word][word] …
 *
 * Growth.       A table grows by half its count (at least 8 and at most 65536 slots), or to what was asked for, in
 *               multiples of 4; it never shrinks. Fresh slots are all zero. Growth moves the table: pointers to
 *               entries and items are then invalid, as they are after every operation that adds, removes or sorts.
 * Positions.    `_get_entry`, `_get_at`, `_set_at` and `_update_at` reach every slot of the table, also those from
 *               `count` up to `capacity`, whose count does not change by it: a fresh one reads as an empty key and
 *               value 0, one that was used before as it was left. Insertion and removal are bounded by `count`.
 * Sorted use.   The operations marked "sorted" search by halving the table and rely on the order that the
 *               `descending` field names: 0 ascending (as after `_init`), else descending; set it before the first
 *               insertion. In any other order they find or place a key arbitrarily, yet never outside the table.
 *               Among equal keys, which only unsorted operations can bring in, any one is found.
 *               Cost: O(log count) to find; insertions and removals also move the slots behind.
 * Sorting.      The sorts work in place, take no memory, are not stable and go by their own direction: sort a
 *               `descending` array with direction 0. Cost: O(count log count) on average. The plain `_qsort` takes
 *               a direction (not 0: ascending), its `_p` form sorts ascending, its `_n` form descending.
 *               A comparer that is inconsistent leaves the entries in an arbitrary order.
 * Value pool.   The `_new` operations take a block of `pool` for the value (in mub_arrays: for the item) and hand it
 *               to an initialiser, which may be NULL, before the new entry is there. A pool made by `_init` has no
 *               block size: store the size of your values in `pool->block_size` first. Without a block (no pool, no
 *               size, no memory) the new entry is made all the same, with value 0.
 * Releasing.    The `_free` operations call your releaser (NULL: none) with each value that is not 0, and give its
 *               block back if the pool is the caller's. Blocks of an owned pool go with the whole pool: `_free`,
 *               `_free_at` and `_free_all_entry` leave them live.
 * Clones.       A clone that runs out of memory is empty, but its `count` is that of its source; nothing reads
 *               beyond `capacity`, and the next growth makes those entries real, all zero.
 *
 * Parameters, where a function does not say otherwise:
 *   array         the array
 *   a, b          the two arrays
 *   source        the array to copy from; stays as it is
 *   destination   the array that gets the copies
 *   index         a position, counted from 0
 *   wanted        slots wanted in all
 *   n             the new count
 *   value         any word, 0 included
 *   init          called with the new block; may be NULL
 *   free          called with each value (in mub_arrays: item) that is released and is not 0; NULL: nothing is called
 *   text          the text to take apart
 *
 * Failure, where a function does not say otherwise:
 *   memory   no memory is needed: a block given back for which its pool's free stack has no room is dropped: see
 *            mub_pool_free
 *
 * Ownership, where a function does not say otherwise:
 *   _init                      the record is the caller's; a pool made here is the array's, until `_term`
 *   _term                      what the array owns is released; values and a caller's pools stay the caller's
 *   _swap                      what one array owned is the other's
 *   _clone                     the copy is the destination's; a caller's pool is shared by both, and values are then
 *                              copied as words
 *   _remove_all                the table is released, and an owned pool emptied; values are not released
 *   _free_all                  each value (item) is handed to `free`, its block to a caller's pool; the table is
 *                              released
 *   _get_at, _get_first, _get_last   the value (item, word) stays in the array
 *   _find, _afind, _bfind      the value (item) stays in the array
 *   _set_at, _update_at, _update   the previous value (item) is handed over, not released; the new one is kept as a
 *                                  word
 *   _remove, _remove_at        the value (item, word) is handed over, not released
 *   _free, _free_at            the value (item) is handed to `free`, its block to a caller's pool
 *   _append_new, _insert_new   the block is one of the pool; the array refers to it, and so does the caller now
 *   _free_all_entry            each value (item) is handed to `free`, its block to a caller's pool, though the array
 *                              still holds it
 *   _append_array              keys, where there are any, are copied; values (items, words) are copied as words, so
 *                              that both arrays refer to the same things
 *   _from_string               the pieces are copied
 *   _to_string                 the text is the string's
 *   _qsort_p, _qsort_n         entries (items, words) stay where they are, but for their order
 *   value, item                kept as a word; what it stands for stays the caller's
 *
 * Fields, where a record does not say otherwise:
 *   key          the key
 *   value        the caller's; may be changed in place
 *   entries      the table; NULL until the first growth
 *   count        entries in use
 *   capacity     slots in the table
 *   pool         the value pool; NULL, made by `_init`, or the caller's, written here
 *   own_pool     1: made by `_init`, released by `_term`
 *   descending   not 0: the order of the sorted operations is descending */
#ifndef MUB_ARRAY_H
#define MUB_ARRAY_H

#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- mub_array: an array of entries with byte-string keys -----------------------------------------------------
 *
 * A key is `length` bytes at `key`; they are copied. A negative length means that the key ends at its first NUL,
 * except where a length is called exact. NULL is the empty key. Keys compare byte by byte as unsigned values; of
 * two that agree as far as both go, the shorter is first ("ab" before "abc"). Case always counts.
 *
 * The empty key is a key like any other but for one thing: it cannot be inserted before an existing entry, only
 * appended. An insertion of the empty key before an entry is refused; mub_array_insert reports 1 even then.
 *
 * All keys of an array take at most 2^32 - 1 bytes. A key beyond that, like one that finds no memory, is
 * refused by the insertions, wherever it belongs, and the array stays as it was; the `_append` operations
 * add it as an empty key.
 *
 * Key pointers that operations hand out point into the key stream (NULL while it has no block). They are not
 * NUL-terminated, and invalid after the next operation that adds, changes or removes a key.
 *
 * Parameters, where a function does not say otherwise:
 *   key      the key's bytes; NULL: the empty key
 *   length   bytes of the key; negative: up to its first NUL
 *
 * Ownership, where a function does not say otherwise:
 *   mub_array_entry *          the entry lies in the array's table: valid until the array grows, or the entry is
 *                              moved or removed
 *   _get_at, _get_first, _get_last   the key that is handed out lies in the array's key stream, valid until a key is
 *                                    added, changed or removed; the value stays in the array
 *   _remove, _remove_at        the value is handed over, not released; the key's bytes are gone
 *   key                        the bytes are copied, or only compared */

/* One slot. Its key fields are the array's; its value may be changed in place. */
typedef struct mub_array_entry {
  uint32_t key_offset; /* where the key's bytes start in `keys` */
  uint32_t key_length; /* bytes */
  uint64_t value;
} mub_array_entry;

typedef struct mub_array {
  mub_array_entry *entries; /* the table; NULL until the first growth */
  int64_t count;            /* entries in use */
  int64_t capacity;         /* slots in the table */
  mub_stream keys;          /* the key bytes; sorting moves entries, never these */
  mub_pool *pool;           /* the value pool; NULL, made by mub_array_init, or the caller's, written here */
  uint16_t own_pool;        /* 1: made by mub_array_init, released by mub_array_term */
  uint16_t descending;      /* not 0: the order of the sorted operations is descending */
} mub_array;

/* mub_array_init: make the record an empty array, ascending.
 *   with_pool   not 0: make a value pool that the array owns
 * A pool that cannot be allocated leaves `pool` NULL and `own_pool` 0. Returns the array. */
MUB_API mub_array *mub_array_init(mub_array *array, int with_pool);

/* mub_array_term: release the table, the keys and an owned pool; a caller's pool stays in its field. Values are not
 * visited. Returns the array. */
MUB_API mub_array *mub_array_term(mub_array *array);

/* mub_array_expand: make room for `wanted` entries in all.
 * Returns 1 when there is room (always for a `wanted` up to the capacity), 0 when memory ran out. */
MUB_API int mub_array_expand(mub_array *array, int64_t wanted);

/* mub_array_shrink: set the count to `n`, at most the capacity; this also brings spare slots into use, as they are.
 * Keys and values are not touched. Does nothing for a negative `n`, or without a table. */
MUB_API void mub_array_shrink(mub_array *array, int64_t n);

/* mub_array_swap: exchange the entries and keys of two arrays. `pool`, `own_pool` and `descending` stay with their
 * records; so values that are pool blocks then lie in the other array's pool. */
MUB_API void mub_array_swap(mub_array *a, mub_array *b);

/* mub_array_clone: make `destination` a copy of `source`.
 *   destination        initialised; with a pool of its own if the source has one. What it held is overwritten
 *   source_pool, destination_pool   a pool outside the array that the values refer into, and the initialised pool
 *                                   that becomes its copy; or NULL
 *   clone              mends each copied value; or NULL
 * When the source owns its pool, that is cloned block for block, every value is translated to its copy (to 0 when it
 * is no block of the pool), and `clone` is called for every entry, value 0 included. When it does not, values are
 * copied as they are, `clone` is not called, and the destination uses the source's pool, having given up its own.
 * `descending` is not copied. Returns the destination; empty but for its `count` when memory ran out. */
MUB_API mub_array *mub_array_clone(const mub_array *source, mub_pool *source_pool, mub_array *destination,
                                   mub_pool *destination_pool, mub_clone_fn clone);

/* mub_array_remove_all: empty the array. Releases the table and empties an owned pool; the block of the keys stays
 * allocated. Values are not visited, and blocks of a caller's pool not returned. Returns the array. */
MUB_API mub_array *mub_array_remove_all(mub_array *array);

/* mub_array_free_all: release every value, then empty the array as mub_array_remove_all does, the block of the keys
 * included. Returns the array. */
MUB_API mub_array *mub_array_free_all(mub_array *array, mub_free_fn free);

/* mub_array_free_all_entry: release every value, in order. The entries stay as they are, their values now stale. */
MUB_API void mub_array_free_all_entry(mub_array *array, mub_free_fn free);

/* mub_array_append: add an entry at the end, whatever the order. Does nothing when there is no memory for it. */
MUB_API void mub_array_append(mub_array *array, const void *key, int64_t length, uint64_t value);

/* mub_array_append_new: add an entry at the end, its value a new block.
 * Returns the block; 0 when there was none, or no memory for the entry (which then is not added). */
MUB_API uint64_t mub_array_append_new(mub_array *array, const void *key, int64_t length, mub_init_fn init);

/* mub_array_append_array: add copies of all entries of `source`, which may be the array itself, at the end. Values
 * are copied as they are. Does nothing when memory runs out, or the keys would pass their limit. */
MUB_API void mub_array_append_array(mub_array *destination, const mub_array *source);

/* mub_array_get_entry: the slot at `index`, to be read or to have its value changed.
 * Returns its address; NULL unless 0 <= index < capacity. */
MUB_API mub_array_entry *mub_array_get_entry(const mub_array *array, int64_t index);

/* mub_array_get_at: the key and value of the slot at `index`.
 *   key, length   receive the key; NULL and 0 unless 0 <= index < capacity
 * Returns the value; 0 unless 0 <= index < capacity. */
MUB_API uint64_t mub_array_get_at(const mub_array *array, int64_t index, const char **key, int64_t *length);

/* mub_array_get_first: the key and value of the first entry.
 *   key, length   receive the key; NULL and 0 in an empty array
 * Returns the value; 0 in an empty array. */
MUB_API uint64_t mub_array_get_first(const mub_array *array, const char **key, int64_t *length);

/* mub_array_get_last: the key and value of the last entry.
 *   key, length   receive the key; NULL and 0 in an empty array
 * Returns the value; 0 in an empty array. */
MUB_API uint64_t mub_array_get_last(const mub_array *array, const char **key, int64_t *length);

/* mub_array_set_at: replace the key and the value of the slot at `index`, wherever that leaves it in the order.
 * A slot past the count may name bytes past the end of the key stream: its key is replaced as
 * mub_stream_update replaces a range that reaches past the length.
 * Returns the previous value; 0, nothing changed, unless 0 <= index < capacity, when there is no memory for the
 * key, when the old key starts past the end of the stream, when the old or the new key would not lie wholly
 * in the stream's block, and when the stream's length would fall below 0 or exceed 2^32 - 1 bytes. Cost:
 * O(count) when the key's length changes. */
MUB_API uint64_t mub_array_set_at(mub_array *array, int64_t index, const void *key, int64_t length,
                                  uint64_t value);

/* mub_array_update_at: replace the value of the slot at `index`.
 * Returns the previous value; 0 unless 0 <= index < capacity. */
MUB_API uint64_t mub_array_update_at(mub_array *array, int64_t index, uint64_t value);

/* mub_array_insert_at: add an entry before the one at `index`, or at the end for an index of `count` and more.
 *   length   exact; a negative one adds nothing
 * A negative index, an empty key before an entry, and memory running out add nothing. Cost: O(count). */
MUB_API void mub_array_insert_at(mub_array *array, int64_t index, const void *key, int64_t length,
                                 uint64_t value);

/* mub_array_remove_at: remove the entry at `index` and its key's bytes.
 * Returns its value, which is not released; 0 unless 0 <= index < count. Cost: O(count). */
MUB_API uint64_t mub_array_remove_at(mub_array *array, int64_t index);

/* mub_array_free_at: remove the entry at `index` and release its value; does nothing unless 0 <= index < count.
 * Cost: O(count). */
MUB_API void mub_array_free_at(mub_array *array, int64_t index, mub_free_fn free);

/* mub_array_insert: sorted: add a key with its value unless the key is there.
 * Returns 1; 0 when the key was there, whose value stays. When there is no memory, or the empty key would go before
 * an entry, nothing is added and the result is 1. */
MUB_API int mub_array_insert(mub_array *array, const void *key, int64_t length, uint64_t value);

/* mub_array_insert_new: sorted: add a key with a new block as its value unless the key is there.
 *   value   receives the block (0 when there was none), before `init` runs; the value that is there for a key that
 *           was there; 0 when the insertion was refused (no memory, or the empty key before an entry). A refused
 *           block, `init` having run, goes back to the pool
 * Returns the index of the new entry; -1 when the key was there or the insertion was refused. */
MUB_API int mub_array_insert_new(mub_array *array, const void *key, int64_t length, uint64_t *value,
                                 mub_init_fn init);

/* mub_array_update: sorted: replace the value of a key.
 * Returns the previous value; 0 when the key is not there, and nothing is changed. */
MUB_API uint64_t mub_array_update(mub_array *array, const void *key, int64_t length, uint64_t value);

/* mub_array_remove: sorted: remove a key.
 * Returns its value, which is not released; 0 when the key is not there. */
MUB_API uint64_t mub_array_remove(mub_array *array, const void *key, int64_t length);

/* mub_array_free: sorted: remove a key, if it is there, and release its value. */
MUB_API void mub_array_free(mub_array *array, const void *key, int64_t length, mub_free_fn free);

/* mub_array_entry_insert: sorted: the entry of a key, added with value 0 if the key is not there.
 *   length   exact, but that an empty array measures a negative one
 * Returns the entry, whose value can be filled in place; NULL when memory ran out or the insertion was refused. */
MUB_API mub_array_entry *mub_array_entry_insert(mub_array *array, const void *key, int64_t length);

/* mub_array_entry_find: sorted: the entry of a key.
 *   length   exact
 * Returns the entry; NULL when the key is not there. */
MUB_API mub_array_entry *mub_array_entry_find(const mub_array *array, const void *key, int64_t length);

/* mub_array_find: sorted: the value of a key. Returns it; 0 when the key is not there. */
MUB_API uint64_t mub_array_find(const mub_array *array, const void *key, int64_t length);

/* mub_array_find_index: sorted: the index of a key. Returns it; -1 when the key is not there. */
MUB_API int64_t mub_array_find_index(const mub_array *array, const void *key, int64_t length);

/* mub_array_afind: the value of the first entry with a key, in an array in any order. Returns it; 0 when the key is
 * not there. Cost: O(count). */
MUB_API uint64_t mub_array_afind(const mub_array *array, const void *key, int64_t length);

/* mub_array_afind_index: the index of the first entry with a key, in an array in any order. Returns it; -1 when the
 * key is not there. Cost: O(count). */
MUB_API int64_t mub_array_afind_index(const mub_array *array, const void *key, int64_t length);

/* mub_array_bfind: sorted: the value of a key; of the entry before which the key would be inserted when it is not
 * there; of the last entry when it would go behind all. Returns the value; 0 in an empty array. */
MUB_API uint64_t mub_array_bfind(const mub_array *array, const void *key, int64_t length);

/* mub_array_bfind_index: sorted: the index of the entry whose value mub_array_bfind gives; -1 in an empty array. */
MUB_API int64_t mub_array_bfind_index(const mub_array *array, const void *key, int64_t length);

/* mub_array_qsort: sort by key.
 *   ascending   the direction */
MUB_API void mub_array_qsort(mub_array *array, int ascending);

/* mub_array_qsort_p: sort by key, ascending. */
MUB_API void mub_array_qsort_p(mub_array *array);

/* mub_array_qsort_n: sort by key, descending. */
MUB_API void mub_array_qsort_n(mub_array *array);

/* mub_array_qsort_x: sort by value.
 *   ascending   the direction
 *   compare     called with two values; NULL: nothing happens */
MUB_API void mub_array_qsort_x(mub_array *array, int ascending, mub_compare_fn compare);

/* mub_array_qsort_x_p: sort by value, ascending.
 *   compare   called with two values; NULL: nothing happens */
MUB_API void mub_array_qsort_x_p(mub_array *array, mub_compare_fn compare);

/* mub_array_qsort_x_n: sort by value, descending.
 *   compare   called with two values; NULL: nothing happens */
MUB_API void mub_array_qsort_x_n(mub_array *array, mub_compare_fn compare);

/* mub_array_to_string: write the keys as one text, a separator between each two.
 *   separator   low 8 bits used
 *   string      its content is replaced; unchanged when memory runs out
 * Empty keys at the front leave no separator: "", "", "a" give "a", while "x", "", "y" give "x,,y". */
MUB_API void mub_array_to_string(const mub_array *array, int separator, mub_string *string);

/* mub_array_from_string: append the pieces of a text as keys, values 0. The array is neither emptied nor sorted.
 *   separator   low 8 bits used
 *   length      exact; below 1 appends nothing
 * Each piece is trimmed as mub_char_trim does. Empty pieces are appended too, but for the last: "a, ,b," gives "a",
 * "" and "b". Nothing is appended when memory for the entries runs out. */
MUB_API void mub_array_from_string(mub_array *array, int separator, const char *text, int64_t length);

/* ---- mub_arrayd: an array of entries with 32-bit integer keys -------------------------------------------------
 *
 * A mub_array whose keys are integers, kept in the entries. Operations that say no more than the name of another one
 * do the same as that: with integer keys all insertions find room where they belong, and nothing is refused but for
 * want of memory.
 *
 * The sorted operations compare by the sign of the difference between two keys, wrapped around to 32 bits: to them
 * 0xFFFFFFFF is 1 below 0. The sorts compare keys as unsigned values, so that 0xFFFFFFFF comes last. Both agree as
 * long as all keys lie within 2^31 of each other.
 *
 * Parameters, where a function does not say otherwise:
 *   key   the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_arrayd_entry *   the entry lies in the array's table: valid until the array grows, or the entry is moved or
 *                        removed */

/* One slot. Its value may be changed in place; so may its key, where the order allows it. */
typedef struct mub_arrayd_entry {
  uint32_t key;
  uint64_t value;
} mub_arrayd_entry;

typedef struct mub_arrayd {
  mub_arrayd_entry *entries; /* the table; NULL until the first growth */
  int64_t count;             /* entries in use */
  int64_t capacity;          /* slots in the table */
  mub_pool *pool;      /* the value pool; NULL, made by mub_arrayd_init, or the caller's, written here */
  uint16_t own_pool;   /* 1: made by mub_arrayd_init, released by mub_arrayd_term */
  uint16_t descending; /* not 0: the order of the sorted operations is descending */
} mub_arrayd;

/* mub_arrayd_init: as mub_array_init. */
MUB_API mub_arrayd *mub_arrayd_init(mub_arrayd *array, int with_pool);

/* mub_arrayd_term: as mub_array_term. */
MUB_API mub_arrayd *mub_arrayd_term(mub_arrayd *array);

/* mub_arrayd_expand: as mub_array_expand. */
MUB_API int mub_arrayd_expand(mub_arrayd *array, int64_t wanted);

/* mub_arrayd_shrink: as mub_array_shrink, but without a table, too: the count is then 0. */
MUB_API void mub_arrayd_shrink(mub_arrayd *array, int64_t n);

/* mub_arrayd_swap: as mub_array_swap. */
MUB_API void mub_arrayd_swap(mub_arrayd *a, mub_arrayd *b);

/* mub_arrayd_clone: as mub_array_clone. */
MUB_API mub_arrayd *mub_arrayd_clone(const mub_arrayd *source, mub_pool *source_pool, mub_arrayd *destination,
                                     mub_pool *destination_pool, mub_clone_fn clone);

/* mub_arrayd_remove_all: empty the array. Releases the table and empties an owned pool. Values are not visited, and
 * blocks of a caller's pool not returned. Returns the array. */
MUB_API mub_arrayd *mub_arrayd_remove_all(mub_arrayd *array);

/* mub_arrayd_free_all: release every value, then empty the array. Returns the array. */
MUB_API mub_arrayd *mub_arrayd_free_all(mub_arrayd *array, mub_free_fn free);

/* mub_arrayd_free_all_entry: as mub_array_free_all_entry. */
MUB_API void mub_arrayd_free_all_entry(mub_arrayd *array, mub_free_fn free);

/* mub_arrayd_append: as mub_array_append. */
MUB_API void mub_arrayd_append(mub_arrayd *array, uint32_t key, uint64_t value);

/* mub_arrayd_append_new: as mub_array_append_new. */
MUB_API uint64_t mub_arrayd_append_new(mub_arrayd *array, uint32_t key, mub_init_fn init);

/* mub_arrayd_append_array: add copies of all entries of `source`, which may be the array itself, at the end. Values
 * are copied as they are. Does nothing when memory runs out. */
MUB_API void mub_arrayd_append_array(mub_arrayd *destination, const mub_arrayd *source);

/* mub_arrayd_get_entry: the slot at `index`. Returns its address; NULL unless 0 <= index < capacity. */
MUB_API mub_arrayd_entry *mub_arrayd_get_entry(const mub_arrayd *array, int64_t index);

/* mub_arrayd_get_at: the key and value of the slot at `index`.
 *   key   receives the key; 0 unless 0 <= index < capacity
 * Returns the value; 0 unless 0 <= index < capacity. */
MUB_API uint64_t mub_arrayd_get_at(const mub_arrayd *array, int64_t index, uint32_t *key);

/* mub_arrayd_get_first: the key and value of the first entry.
 *   key   receives the key; 0 in an empty array
 * Returns the value; 0 in an empty array. */
MUB_API uint64_t mub_arrayd_get_first(const mub_arrayd *array, uint32_t *key);

/* mub_arrayd_get_last: the key and value of the last entry.
 *   key   receives the key; 0 in an empty array
 * Returns the value; 0 in an empty array. */
MUB_API uint64_t mub_arrayd_get_last(const mub_arrayd *array, uint32_t *key);

/* mub_arrayd_set_at: replace the key and the value of the slot at `index`, wherever that leaves it in the order.
 * Returns the previous value; 0 unless 0 <= index < capacity. */
MUB_API uint64_t mub_arrayd_set_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value);

/* mub_arrayd_update_at: as mub_array_update_at. */
MUB_API uint64_t mub_arrayd_update_at(mub_arrayd *array, int64_t index, uint64_t value);

/* mub_arrayd_insert_at: add an entry before the one at `index`, or at the end for an index of `count` and more.
 * A negative index, and memory running out, add nothing. Cost: O(count). */
MUB_API void mub_arrayd_insert_at(mub_arrayd *array, int64_t index, uint32_t key, uint64_t value);

/* mub_arrayd_remove_at: remove the entry at `index`.
 *   key   receives the entry's key; 0 unless 0 <= index < count
 * The key of a last entry that is removed is 0 in its spare slot.
 * Returns its value, which is not released; 0 unless 0 <= index < count. Cost: O(count). */
MUB_API uint64_t mub_arrayd_remove_at(mub_arrayd *array, int64_t index, uint32_t *key);

/* mub_arrayd_free_at: remove the entry at `index` and release its value, the entry's key being 0 by then; does nothing
 * unless 0 <= index < count. Cost: O(count). */
MUB_API void mub_arrayd_free_at(mub_arrayd *array, int64_t index, mub_free_fn free);

/* mub_arrayd_insert: sorted: add a key with its value unless the key is there.
 * Returns 1, also when there was no memory and nothing was added; 0 when the key was there, whose value stays. */
MUB_API int mub_arrayd_insert(mub_arrayd *array, uint32_t key, uint64_t value);

/* mub_arrayd_insert_new: sorted: as mub_array_insert_new. */
MUB_API int mub_arrayd_insert_new(mub_arrayd *array, uint32_t key, uint64_t *value, mub_init_fn init);

/* mub_arrayd_update: sorted: as mub_array_update. */
MUB_API uint64_t mub_arrayd_update(mub_arrayd *array, uint32_t key, uint64_t value);

/* mub_arrayd_remove: sorted: as mub_array_remove. */
MUB_API uint64_t mub_arrayd_remove(mub_arrayd *array, uint32_t key);

/* mub_arrayd_free: sorted: as mub_array_free. */
MUB_API void mub_arrayd_free(mub_arrayd *array, uint32_t key, mub_free_fn free);

/* mub_arrayd_entry_insert: sorted: the entry of a key, added with value 0 if the key is not there.
 * Returns the entry, whose value can be filled in place; NULL when there was no memory for it. */
MUB_API mub_arrayd_entry *mub_arrayd_entry_insert(mub_arrayd *array, uint32_t key);

/* mub_arrayd_entry_find: sorted: the entry of a key. Returns it; NULL when the key is not there. */
MUB_API mub_arrayd_entry *mub_arrayd_entry_find(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_find: sorted: as mub_array_find. */
MUB_API uint64_t mub_arrayd_find(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_find_index: sorted: as mub_array_find_index. */
MUB_API int64_t mub_arrayd_find_index(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_afind: as mub_array_afind. */
MUB_API uint64_t mub_arrayd_afind(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_afind_index: as mub_array_afind_index. */
MUB_API int64_t mub_arrayd_afind_index(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_bfind: sorted: as mub_array_bfind. */
MUB_API uint64_t mub_arrayd_bfind(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_bfind_index: sorted: as mub_array_bfind_index. */
MUB_API int64_t mub_arrayd_bfind_index(const mub_arrayd *array, uint32_t key);

/* mub_arrayd_qsort: sort by key, as an unsigned value.
 *   ascending   the direction */
MUB_API void mub_arrayd_qsort(mub_arrayd *array, int ascending);

/* mub_arrayd_qsort_p: sort by key, ascending. */
MUB_API void mub_arrayd_qsort_p(mub_arrayd *array);

/* mub_arrayd_qsort_n: sort by key, descending. */
MUB_API void mub_arrayd_qsort_n(mub_arrayd *array);

/* mub_arrayd_qsort_x: as mub_array_qsort_x. */
MUB_API void mub_arrayd_qsort_x(mub_arrayd *array, int ascending, mub_compare_fn compare);

/* mub_arrayd_qsort_x_p: as mub_array_qsort_x_p. */
MUB_API void mub_arrayd_qsort_x_p(mub_arrayd *array, mub_compare_fn compare);

/* mub_arrayd_qsort_x_n: as mub_array_qsort_x_n. */
MUB_API void mub_arrayd_qsort_x_n(mub_arrayd *array, mub_compare_fn compare);

/* mub_arrayd_to_string: write the keys as one text, in decimal as unsigned values, a separator between each two.
 *   separator   low 8 bits used
 *   string      its content is replaced; unchanged when memory runs out */
MUB_API void mub_arrayd_to_string(const mub_arrayd *array, int separator, mub_string *string);

/* mub_arrayd_from_string: append the pieces of a text as keys, values 0. The array is neither emptied nor sorted.
 *   separator   low 8 bits used
 *   length      exact; below 1 appends nothing
 * Each piece is trimmed as mub_char_trim does and read as mub_char_get_long does; the key is the low 32 bits of that.
 * Empty pieces are 0, but the last one is left out: "10, ,-1," gives 10, 0 and 0xFFFFFFFF. Nothing is appended when
 * memory for the entries runs out. */
MUB_API void mub_arrayd_from_string(mub_arrayd *array, int separator, const char *text, int64_t length);

/* ---- mub_arrayx: an array of entries with 64-bit integer keys -------------------------------------------------
 *
 * A mub_arrayd with 64-bit keys and without text forms. The differences of the sorted operations wrap around to 64
 * bits, and agree with the sorts as long as all keys lie within 2^63 of each other.
 *
 * Parameters, where a function does not say otherwise:
 *   key   the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_arrayx_entry *   the entry lies in the array's table: valid until the array grows, or the entry is moved or
 *                        removed */

/* One slot, as mub_arrayd_entry. */
typedef struct mub_arrayx_entry {
  uint64_t key;
  uint64_t value;
} mub_arrayx_entry;

/* The fields are those of a mub_arrayd. */
typedef struct mub_arrayx {
  mub_arrayx_entry *entries;
  int64_t count;
  int64_t capacity;
  mub_pool *pool;
  uint16_t own_pool;
  uint16_t descending;
} mub_arrayx;

/* mub_arrayx_init: as mub_array_init. */
MUB_API mub_arrayx *mub_arrayx_init(mub_arrayx *array, int with_pool);

/* mub_arrayx_term: as mub_array_term. */
MUB_API mub_arrayx *mub_arrayx_term(mub_arrayx *array);

/* mub_arrayx_expand: as mub_array_expand. */
MUB_API int mub_arrayx_expand(mub_arrayx *array, int64_t wanted);

/* mub_arrayx_shrink: as mub_arrayd_shrink. */
MUB_API void mub_arrayx_shrink(mub_arrayx *array, int64_t n);

/* mub_arrayx_swap: as mub_array_swap. */
MUB_API void mub_arrayx_swap(mub_arrayx *a, mub_arrayx *b);

/* mub_arrayx_clone: as mub_array_clone. */
MUB_API mub_arrayx *mub_arrayx_clone(const mub_arrayx *source, mub_pool *source_pool, mub_arrayx *destination,
                                     mub_pool *destination_pool, mub_clone_fn clone);

/* mub_arrayx_remove_all: as mub_arrayd_remove_all. */
MUB_API mub_arrayx *mub_arrayx_remove_all(mub_arrayx *array);

/* mub_arrayx_free_all: as mub_arrayd_free_all. */
MUB_API mub_arrayx *mub_arrayx_free_all(mub_arrayx *array, mub_free_fn free);

/* mub_arrayx_free_all_entry: as mub_array_free_all_entry. */
MUB_API void mub_arrayx_free_all_entry(mub_arrayx *array, mub_free_fn free);

/* mub_arrayx_append: as mub_array_append. */
MUB_API void mub_arrayx_append(mub_arrayx *array, uint64_t key, uint64_t value);

/* mub_arrayx_append_new: as mub_array_append_new. */
MUB_API uint64_t mub_arrayx_append_new(mub_arrayx *array, uint64_t key, mub_init_fn init);

/* mub_arrayx_append_array: as mub_arrayd_append_array. */
MUB_API void mub_arrayx_append_array(mub_arrayx *destination, const mub_arrayx *source);

/* mub_arrayx_get_entry: as mub_arrayd_get_entry. */
MUB_API mub_arrayx_entry *mub_arrayx_get_entry(const mub_arrayx *array, int64_t index);

/* mub_arrayx_get_at: as mub_arrayd_get_at. */
MUB_API uint64_t mub_arrayx_get_at(const mub_arrayx *array, int64_t index, uint64_t *key);

/* mub_arrayx_get_first: as mub_arrayd_get_first. */
MUB_API uint64_t mub_arrayx_get_first(const mub_arrayx *array, uint64_t *key);

/* mub_arrayx_get_last: as mub_arrayd_get_last. */
MUB_API uint64_t mub_arrayx_get_last(const mub_arrayx *array, uint64_t *key);

/* mub_arrayx_set_at: as mub_arrayd_set_at. */
MUB_API uint64_t mub_arrayx_set_at(mub_arrayx *array, int64_t index, uint64_t key, uint64_t value);

/* mub_arrayx_update_at: as mub_array_update_at. */
MUB_API uint64_t mub_arrayx_update_at(mub_arrayx *array, int64_t index, uint64_t value);

/* mub_arrayx_insert_at: as mub_arrayd_insert_at. */
MUB_API void mub_arrayx_insert_at(mub_arrayx *array, int64_t index, uint64_t key, uint64_t value);

/* mub_arrayx_remove_at: as mub_arrayd_remove_at. */
MUB_API uint64_t mub_arrayx_remove_at(mub_arrayx *array, int64_t index, uint64_t *key);

/* mub_arrayx_free_at: as mub_arrayd_free_at. */
MUB_API void mub_arrayx_free_at(mub_arrayx *array, int64_t index, mub_free_fn free);

/* mub_arrayx_insert: sorted: as mub_arrayd_insert. */
MUB_API int mub_arrayx_insert(mub_arrayx *array, uint64_t key, uint64_t value);

/* mub_arrayx_insert_new: sorted: as mub_array_insert_new. */
MUB_API int mub_arrayx_insert_new(mub_arrayx *array, uint64_t key, uint64_t *value, mub_init_fn init);

/* mub_arrayx_update: sorted: as mub_array_update. */
MUB_API uint64_t mub_arrayx_update(mub_arrayx *array, uint64_t key, uint64_t value);

/* mub_arrayx_remove: sorted: as mub_array_remove. */
MUB_API uint64_t mub_arrayx_remove(mub_arrayx *array, uint64_t key);

/* mub_arrayx_free: sorted: as mub_array_free. */
MUB_API void mub_arrayx_free(mub_arrayx *array, uint64_t key, mub_free_fn free);

/* mub_arrayx_entry_insert: sorted: as mub_arrayd_entry_insert. */
MUB_API mub_arrayx_entry *mub_arrayx_entry_insert(mub_arrayx *array, uint64_t key);

/* mub_arrayx_entry_find: sorted: as mub_arrayd_entry_find. */
MUB_API mub_arrayx_entry *mub_arrayx_entry_find(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_find: sorted: as mub_array_find. */
MUB_API uint64_t mub_arrayx_find(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_find_index: sorted: as mub_array_find_index. */
MUB_API int64_t mub_arrayx_find_index(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_afind: as mub_array_afind. */
MUB_API uint64_t mub_arrayx_afind(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_afind_index: as mub_array_afind_index. */
MUB_API int64_t mub_arrayx_afind_index(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_bfind: sorted: as mub_array_bfind. */
MUB_API uint64_t mub_arrayx_bfind(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_bfind_index: sorted: as mub_array_bfind_index. */
MUB_API int64_t mub_arrayx_bfind_index(const mub_arrayx *array, uint64_t key);

/* mub_arrayx_qsort: as mub_arrayd_qsort. */
MUB_API void mub_arrayx_qsort(mub_arrayx *array, int ascending);

/* mub_arrayx_qsort_p: as mub_arrayd_qsort_p. */
MUB_API void mub_arrayx_qsort_p(mub_arrayx *array);

/* mub_arrayx_qsort_n: as mub_arrayd_qsort_n. */
MUB_API void mub_arrayx_qsort_n(mub_arrayx *array);

/* mub_arrayx_qsort_x: as mub_array_qsort_x. */
MUB_API void mub_arrayx_qsort_x(mub_arrayx *array, int ascending, mub_compare_fn compare);

/* mub_arrayx_qsort_x_p: as mub_array_qsort_x_p. */
MUB_API void mub_arrayx_qsort_x_p(mub_arrayx *array, mub_compare_fn compare);

/* mub_arrayx_qsort_x_n: as mub_array_qsort_x_n. */
MUB_API void mub_arrayx_qsort_x_n(mub_arrayx *array, mub_compare_fn compare);

/* ---- mub_arrays: an array of bare items -----------------------------------------------------------------------
 *
 * An item is one 64-bit word: a pointer to a record of yours, a number, or a block of the item pool. The array never
 * looks into it: the sorted operations order items by the comparer that you pass, which is the same at every call.
 * It is called as compare(item, key, context) with a stored item; the key is whatever you pass (a name, a number,
 * a record), and the comparer alone gives it a meaning. The `_x` forms differ in their comparer alone: it is called
 * as compare(context, item, key, extra). Without a comparer (NULL) insertions go to the end, and everything else
 * finds nothing.
 *
 * An item 0 is an empty slot to the releasing operations.
 *
 * Parameters, where a function does not say otherwise:
 *   item      any word
 *   key       what to look for, handed to the comparer
 *   context   handed to the comparer
 *   extra     handed to the comparer
 *   compare   orders a stored item against the key; NULL: nothing is found
 *   free      called with each item that is released and is not 0; NULL: nothing is called
 *
 * Ownership, where a function does not say otherwise:
 *   uint64_t *   the slot lies in the array's table: valid until the array grows, or the item is moved or removed */

typedef struct mub_arrays {
  uint64_t *items;     /* the table; NULL until the first growth */
  int64_t count;       /* items in use */
  int64_t capacity;    /* slots in the table */
  mub_pool *pool;      /* the item pool; NULL, made by mub_arrays_init, or the caller's, written here */
  uint16_t own_pool;   /* 1: made by mub_arrays_init, released by mub_arrays_term */
  uint16_t descending; /* not 0: the order of the sorted operations is descending */
} mub_arrays;

/* mub_arrays_init: make the record an empty array, ascending.
 *   with_pool   not 0: make an item pool that the array owns
 * A pool that cannot be allocated leaves `pool` NULL and `own_pool` 0. */
MUB_API void mub_arrays_init(mub_arrays *array, int with_pool);

/* mub_arrays_term: release the table and an owned pool; a caller's pool stays in its field. Items are not visited. */
MUB_API void mub_arrays_term(mub_arrays *array);

/* mub_arrays_expand: make room for `wanted` items in all.
 * Returns 1 when there is room (always for a `wanted` up to the capacity), 0 when memory ran out. */
MUB_API int mub_arrays_expand(mub_arrays *array, int64_t wanted);

/* mub_arrays_shrink: set the count to `n`, at most the capacity; this also brings spare slots into use, as they are.
 * Does nothing for a negative `n`, or without a table. */
MUB_API void mub_arrays_shrink(mub_arrays *array, int64_t n);

/* mub_arrays_swap: exchange the items and pools of two arrays; `descending` stays with its record. */
MUB_API void mub_arrays_swap(mub_arrays *a, mub_arrays *b);

/* mub_arrays_clone: make `destination` a copy of `source`.
 *   destination        initialised; with a pool of its own if the source has one. What it held is overwritten
 *   source_pool, destination_pool   a pool outside the array that the items refer into, and the initialised pool
 *                                   that becomes its copy; or NULL
 *   clone              mends each copied item; or NULL
 * When the source owns its pool, that is cloned block for block, every item is translated to its copy (to 0 when it
 * is no block of the pool), and `clone` is called for every item, 0 included. When it does not, items are copied as
 * they are, `clone` is not called, and the destination uses the source's pool, having given up its own.
 * `descending` is not copied. Returns the destination; empty but for its `count` when memory ran out. */
MUB_API mub_arrays *mub_arrays_clone(const mub_arrays *source, mub_pool *source_pool, mub_arrays *destination,
                                     mub_pool *destination_pool, mub_clone_fn clone);

/* mub_arrays_remove_all: empty the array. Releases the table and empties an owned pool. Items are not visited, and
 * blocks of a caller's pool not returned. */
MUB_API void mub_arrays_remove_all(mub_arrays *array);

/* mub_arrays_free_all: release every item, then empty the array. Returns the array. */
MUB_API mub_arrays *mub_arrays_free_all(mub_arrays *array, mub_free_fn free);

/* mub_arrays_free_all_entry: release every item, in order. The slots stay as they are, their items now stale. */
MUB_API void mub_arrays_free_all_entry(mub_arrays *array, mub_free_fn free);

/* mub_arrays_append: add an item at the end, whatever the order. Does nothing when memory runs out. */
MUB_API void mub_arrays_append(mub_arrays *array, uint64_t item);

/* mub_arrays_append_new: add a new block at the end.
 * Returns the block; 0 when there was none (0 is then appended), or no memory for the slot. */
MUB_API uint64_t mub_arrays_append_new(mub_arrays *array, mub_init_fn init);

/* mub_arrays_append_array: add all items of `source`, which may be the array itself, at the end. Does nothing when
 * memory runs out. */
MUB_API void mub_arrays_append_array(mub_arrays *destination, const mub_arrays *source);

/* mub_arrays_get_entry: the slot at `index`. Returns its address; NULL unless 0 <= index < capacity. */
MUB_API uint64_t *mub_arrays_get_entry(const mub_arrays *array, int64_t index);

/* mub_arrays_get_at: the item at `index`. Returns it; 0 unless 0 <= index < capacity. */
MUB_API uint64_t mub_arrays_get_at(const mub_arrays *array, int64_t index);

/* mub_arrays_set_at: replace the item at `index`, wherever that leaves it in the order.
 * Returns the previous item; 0 unless 0 <= index < capacity. */
MUB_API uint64_t mub_arrays_set_at(mub_arrays *array, int64_t index, uint64_t item);

/* mub_arrays_get_first: the first item. Returns it; 0 in an empty array. */
MUB_API uint64_t mub_arrays_get_first(const mub_arrays *array);

/* mub_arrays_get_last: the last item. Returns it; 0 in an empty array. */
MUB_API uint64_t mub_arrays_get_last(const mub_arrays *array);

/* mub_arrays_insert_at: add an item before the one at `index`, or at the end for an index of `count` and more.
 * A negative index, and memory running out, add nothing. Cost: O(count). */
MUB_API void mub_arrays_insert_at(mub_arrays *array, int64_t index, uint64_t item);

/* mub_arrays_remove_at: remove the item at `index`.
 * Returns it, not released; 0 unless 0 <= index < count. Cost: O(count). */
MUB_API uint64_t mub_arrays_remove_at(mub_arrays *array, int64_t index);

/* mub_arrays_free_at: remove the item at `index` and release it; does nothing unless 0 <= index < count.
 * Cost: O(count). */
MUB_API void mub_arrays_free_at(mub_arrays *array, int64_t index, mub_free_fn free);

/* mub_arrays_insert: sorted: add an item unless one equal to it is there. The item is also the key.
 *   compare   NULL: the item is appended
 * Returns 1, also when there was no memory and nothing was added; 0 when an equal item was there, which stays. */
MUB_API int mub_arrays_insert(mub_arrays *array, uint64_t item, uint64_t context,
                              mub_compare_item_fn compare);

/* mub_arrays_insert_x: mub_arrays_insert with a context comparer. */
MUB_API int mub_arrays_insert_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                                mub_compare_context_fn compare);

/* mub_arrays_insert_new: sorted: add a new block where `key` belongs, unless an equal item is there.
 *   item      receives the block (0 when there was none, which is added all the same), before `init` runs; the
 *             equal item; 0 when memory for the slot ran out, and the block, `init` having run, went back to the pool
 *   init      should give the block the key, so that it sorts where it was placed
 *   compare   NULL: the block is appended
 * Returns the index of the new item; -1 when an equal one was there or memory ran out. */
MUB_API int mub_arrays_insert_new(mub_arrays *array, uint64_t key, uint64_t context, uint64_t *item,
                                  mub_init_fn init, mub_compare_item_fn compare);

/* mub_arrays_insert_new_x: mub_arrays_insert_new with a context comparer. */
MUB_API int mub_arrays_insert_new_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                    uint64_t *item, mub_init_fn init, mub_compare_context_fn compare);

/* mub_arrays_update: sorted: replace the stored item that is equal to `item` by `item` itself.
 * Returns the replaced item; 0 when there is none, and nothing is changed. */
MUB_API uint64_t mub_arrays_update(mub_arrays *array, uint64_t item, uint64_t context,
                                   mub_compare_item_fn compare);

/* mub_arrays_update_x: mub_arrays_update with a context comparer. */
MUB_API uint64_t mub_arrays_update_x(mub_arrays *array, uint64_t context, uint64_t item, uint64_t extra,
                                     mub_compare_context_fn compare);

/* mub_arrays_remove: sorted: remove the item equal to a key.
 * Returns it, not released; 0 when there is none. */
MUB_API uint64_t mub_arrays_remove(mub_arrays *array, uint64_t key, uint64_t context,
                                   mub_compare_item_fn compare);

/* mub_arrays_remove_x: mub_arrays_remove with a context comparer. */
MUB_API uint64_t mub_arrays_remove_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                     mub_compare_context_fn compare);

/* mub_arrays_free: sorted: remove the item equal to a key, if there is one, and release it. */
MUB_API void mub_arrays_free(mub_arrays *array, uint64_t key, uint64_t context, mub_free_fn free,
                             mub_compare_item_fn compare);

/* mub_arrays_free_x: mub_arrays_free with a context comparer. */
MUB_API void mub_arrays_free_x(mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                               mub_free_fn free, mub_compare_context_fn compare);

/* mub_arrays_find: sorted: the item equal to a key. Returns it; 0 when there is none. */
MUB_API uint64_t mub_arrays_find(const mub_arrays *array, uint64_t key, uint64_t context,
                                 mub_compare_item_fn compare);

/* mub_arrays_find_x: mub_arrays_find with a context comparer. */
MUB_API uint64_t mub_arrays_find_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                   mub_compare_context_fn compare);

/* mub_arrays_find_index: sorted: the index of the item equal to a key. Returns it; -1 when there is none. */
MUB_API int64_t mub_arrays_find_index(const mub_arrays *array, uint64_t key, uint64_t context,
                                      mub_compare_item_fn compare);

/* mub_arrays_find_index_x: mub_arrays_find_index with a context comparer. */
MUB_API int64_t mub_arrays_find_index_x(const mub_arrays *array, uint64_t context, uint64_t key,
                                        uint64_t extra, mub_compare_context_fn compare);

/* mub_arrays_bfind: sorted: the item equal to a key; when there is none, the item before which the key belongs; the
 * last one when it belongs behind all. Returns the item; 0 in an empty array. */
MUB_API uint64_t mub_arrays_bfind(const mub_arrays *array, uint64_t key, uint64_t context,
                                  mub_compare_item_fn compare);

/* mub_arrays_bfind_x: mub_arrays_bfind with a context comparer. */
MUB_API uint64_t mub_arrays_bfind_x(const mub_arrays *array, uint64_t context, uint64_t key, uint64_t extra,
                                    mub_compare_context_fn compare);

/* mub_arrays_bfind_index: sorted: the index of the item that mub_arrays_bfind gives; -1 in an empty array. */
MUB_API int64_t mub_arrays_bfind_index(const mub_arrays *array, uint64_t key, uint64_t context,
                                       mub_compare_item_fn compare);

/* mub_arrays_bfind_index_x: mub_arrays_bfind_index with a context comparer. */
MUB_API int64_t mub_arrays_bfind_index_x(const mub_arrays *array, uint64_t context, uint64_t key,
                                         uint64_t extra, mub_compare_context_fn compare);

/* mub_arrays_qsort: sort.
 *   ascending   the direction
 *   compare     called as compare(item, other item, 0); NULL: nothing happens */
MUB_API void mub_arrays_qsort(mub_arrays *array, int ascending, mub_compare_item_fn compare);

/* mub_arrays_qsort_p: sort ascending; the comparer as for mub_arrays_qsort. */
MUB_API void mub_arrays_qsort_p(mub_arrays *array, mub_compare_item_fn compare);

/* mub_arrays_qsort_n: sort descending; the comparer as for mub_arrays_qsort. */
MUB_API void mub_arrays_qsort_n(mub_arrays *array, mub_compare_item_fn compare);

/* mub_arrays_qsort_x: sort through a context comparer.
 *   ascending   the direction
 *   compare     called as compare(context, item, other item, 0); NULL: nothing happens */
MUB_API void mub_arrays_qsort_x(mub_arrays *array, uint64_t context, int ascending,
                                mub_compare_context_fn compare);

/* mub_arrays_qsort_x_p: sort ascending; the comparer as for mub_arrays_qsort_x. */
MUB_API void mub_arrays_qsort_x_p(mub_arrays *array, uint64_t context, mub_compare_context_fn compare);

/* mub_arrays_qsort_x_n: sort descending; the comparer as for mub_arrays_qsort_x. */
MUB_API void mub_arrays_qsort_x_n(mub_arrays *array, uint64_t context, mub_compare_context_fn compare);

/* ---- mub_arrayt: an array of words, the first four of them in the record --------------------------------------
 *
 * A word is a number, signed or unsigned, or a pointer. Up to four of them take no memory beside the record; word i
 * is inline_items[i] for i < 4 and tail[i - 4] from there on. There are no values, pools or callbacks.
 *
 * Positions end at `count` here, not at the capacity. The sorted operations compare two words by the sign of the
 * difference of their low 32 bits, wrapped around to 32 bits: words that differ in higher bits alone are equal to
 * them. The sorts compare whole words as unsigned values. Both agree as long as all words are below 2^32 and within
 * 2^31 of each other.
 *
 * Parameters, where a function does not say otherwise:
 *   item    any word
 *   key     what to look for: the low 32 bits of a word
 *   items   the first of the words to sort
 *   count   how many words there are; below 2 does nothing
 *
 * Ownership, where a function does not say otherwise:
 *   _init, _term, _remove_all   the record is the caller's; a tail is the array's, until it is released here
 *   _clone                     the words are copied
 *   _remove, _find             nothing is handed over
 *   _set_at                     kept as a word; what it stands for stays the caller's */

typedef struct mub_arrayt {
  uint64_t inline_items[4]; /* words 0 to 3; mub_arrayt_init leaves them as they are */
  uint64_t *tail;           /* the words behind these; NULL until the capacity passes four */
  int64_t count;            /* words in use */
  int64_t capacity;    /* words that fit, the four in the record included; 0 after mub_arrayt_remove_all */
  uint16_t descending; /* not 0: the order of the sorted operations is descending */
} mub_arrayt;

/* mub_arrayt_init: make the record an empty array, ascending, of capacity 4. */
MUB_API void mub_arrayt_init(mub_arrayt *array);

/* mub_arrayt_term: release the tail; the array is empty, with capacity 4. */
MUB_API void mub_arrayt_term(mub_arrayt *array);

/* mub_arrayt_remove_all: empty the array. Releases the tail and clears the words in the record; the capacity is 0
 * until the next growth makes it 4 and more. Returns the array. */
MUB_API mub_arrayt *mub_arrayt_remove_all(mub_arrayt *array);

/* mub_arrayt_length: the size of the words in use. Returns 8 * count, in bytes. */
MUB_API int64_t mub_arrayt_length(const mub_arrayt *array);

/* mub_arrayt_expand: make room for `wanted` words in all, and for four at least.
 * Returns 1 when there is room, 0 when memory ran out. */
MUB_API int mub_arrayt_expand(mub_arrayt *array, int64_t wanted);

/* mub_arrayt_shrink: set the count to `n`, at most the capacity; this also brings spare words into use, as they are.
 * Does nothing for a negative `n`. */
MUB_API void mub_arrayt_shrink(mub_arrayt *array, int64_t n);

/* mub_arrayt_swap: exchange the words of two arrays; `descending` stays with its record. */
MUB_API void mub_arrayt_swap(mub_arrayt *a, mub_arrayt *b);

/* mub_arrayt_clone: make the words of `destination`, which is initialised, those of `source`. `descending` is not
 * copied. Nothing is changed when memory runs out. */
MUB_API void mub_arrayt_clone(const mub_arrayt *source, mub_arrayt *destination);

/* mub_arrayt_append: add a word at the end, whatever the order. Does nothing when memory runs out. */
MUB_API void mub_arrayt_append(mub_arrayt *array, uint64_t item);

/* mub_arrayt_append_array: add all words of `source`, which may be the array itself, at the end. Does nothing when
 * memory runs out. */
MUB_API void mub_arrayt_append_array(mub_arrayt *destination, const mub_arrayt *source);

/* mub_arrayt_get_at: the word at `index`. Returns it; 0 unless 0 <= index < count. */
MUB_API uint64_t mub_arrayt_get_at(const mub_arrayt *array, int64_t index);

/* mub_arrayt_set_at: replace the word at `index`; does nothing unless 0 <= index < count. */
MUB_API void mub_arrayt_set_at(mub_arrayt *array, int64_t index, uint64_t item);

/* mub_arrayt_get_first: the first word. Returns it; 0 in an empty array. */
MUB_API uint64_t mub_arrayt_get_first(const mub_arrayt *array);

/* mub_arrayt_get_last: the last word. Returns it; 0 in an empty array. */
MUB_API uint64_t mub_arrayt_get_last(const mub_arrayt *array);

/* mub_arrayt_insert: sorted: add a word unless one is there that is equal in its low 32 bits.
 * Returns 1, also when there was no memory and nothing was added; 0 when an equal word was there, which stays. */
MUB_API int mub_arrayt_insert(mub_arrayt *array, uint64_t item);

/* mub_arrayt_remove: sorted: remove the word whose low 32 bits are `key`. Returns 1; 0 when there is none. */
MUB_API int mub_arrayt_remove(mub_arrayt *array, uint32_t key);

/* mub_arrayt_find: sorted: look for a word whose low 32 bits are `key`. Returns 1; 0 when there is none. */
MUB_API int mub_arrayt_find(const mub_arrayt *array, uint32_t key);

/* mub_arrayt_insert_at: add a word before the one at `index`, or at the end for an index of `count` and more.
 * A negative index, and memory running out, add nothing. Cost: O(count). */
MUB_API void mub_arrayt_insert_at(mub_arrayt *array, int64_t index, uint64_t item);

/* mub_arrayt_remove_at: remove the word at `index`. Returns it; 0 unless 0 <= index < count. Cost: O(count). */
MUB_API uint64_t mub_arrayt_remove_at(mub_arrayt *array, int64_t index);

/* mub_arrayt_qsort: sort by the whole words as unsigned values.
 *   ascending   the direction
 *   unique      not 0: of equal words only one is kept
 * Sorts beside the array, in memory of the words' size; nothing is changed when there is none. */
MUB_API void mub_arrayt_qsort(mub_arrayt *array, int ascending, int unique);

/* mub_arrayt_qsort_p: sort `count` words at `items`, wherever they are, ascending; in place. */
MUB_API void mub_arrayt_qsort_p(uint64_t *items, int64_t count);

/* mub_arrayt_qsort_n: sort `count` words at `items`, wherever they are, descending; in place. */
MUB_API void mub_arrayt_qsort_n(uint64_t *items, int64_t count);

/* mub_arrayt_to_string: write the words as one text, in decimal as signed values, a separator between each two.
 *   separator   low 8 bits used
 *   string      its content is replaced; unchanged when memory runs out */
MUB_API void mub_arrayt_to_string(const mub_arrayt *array, int separator, mub_string *string);

/* mub_arrayt_from_string: append the pieces of a text as words, read as mub_arrayd_from_string reads them, with all 64
 * bits. */
MUB_API void mub_arrayt_from_string(mub_arrayt *array, int separator, const char *text, int64_t length);

#ifdef __cplusplus
}
#endif

#endif
