/**
 * @defgroup hash_h mub_hash.h: hash tables
 *
 * Chained hash tables: mub_hash with byte strings as keys, mub_hashd with 32-bit integers, mub_hashx with
 * 64-bit integers, mub_hasht with 16 bytes.
 *
 *     buckets.items ──► [0] ──► entry ──► entry ──► NULL    entries: blocks of entry_pool
 *                       [1] ──► NULL                        value: 64 bits, or a block of value_pool
 *                       [2] ──► entry ──► NULL              keys (mub_hash): the bytes of all keys, packed
 *                       …
 *
 * A table starts without buckets. The first insertion makes 4 buckets, in a block with room for 8, and
 * one that raises the average to two entries per bucket doubles their number. New entries are appended to
 * their chain. Only `_remove_all`, `_free_all`, `_term` and, in its destination, `_clone` release buckets.
 *
 * **Entry pool.** A table needs an entry pool before its first insertion: one created by `_init`, or an
 * external one stored in `entry_pool`, whose block size is at least that of the table's entry struct. Several
 * tables may share an external pool. Without an entry pool, insertions fail as if memory had run out.
 *
 * **Value pool.** Only `_set` needs one: it takes a block for the value of every new entry. A value pool
 * created by `_init` has no block size: check that `value_pool` is not NULL, then store the size of your
 * values in `value_pool->block_size` before the first `_set`.
 *
 * In a table with a value pool, every value must be 0 or the address of a block of that pool: `_free` and
 * `_free_all` return it to the pool if that is external, and `_clone` translates it if the pool is owned.
 * Blocks of an owned pool stay allocated until the pool is emptied.
 *
 * What the everyday operations return:
 *
 * | operation    | key present                  | key absent             | out of memory           |
 * | ------------ | ---------------------------- | ---------------------- | ----------------------- |
 * | `_insert`    | 0, value unchanged           | 1, added               | 0                       |
 * | `_set`       | 0, `*value_out` is the value | 1, `*value_out` is new | 0, `*value_out` is 0    |
 * | `_entry_set` | 0, `*entry_out` is the entry | 1, `*entry_out` is new | 0, `*entry_out` is NULL |
 * | `_get`       | the value                    | 0                      |                         |
 * | `_get_many`  | as `_get`, for each key      | 0, for each key        |                         |
 * | `_find`      | 1                            | 0                      |                         |
 * | `_update`    | the previous value           | 0, not added           |                         |
 * | `_remove`    | the value, not released      | 0                      |                         |
 * | `_free`      | the table                    | NULL                   |                         |
 * | `_entry_get` | the entry                    | NULL                   |                         |
 * | `_clone`     | the destination              |                        | empty destination       |
 *
 * If only the value block cannot be allocated, `_set` adds the key with value 0 and returns 1.
 *
 * @{
 */
#ifndef MUB_HASH_H
#define MUB_HASH_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup hash mub_hash: a chained hash table from byte strings to 64-bit values
 *
 * A hash table whose keys are byte strings. A key is `length` bytes at `key`; a negative length means that it
 * ends at its first NUL. A NULL key is the empty key, which is valid. Keys are copied. The keys of a table
 * take at most 2^32 - 1 bytes in total; an insertion beyond that fails as if memory had run out. The key
 * stream grows as every mub_stream does: above 16 MiB of keys, all of them are copied once per 8 MiB that are
 * added, and above 2 GiB at nearly every insertion. A doubling of the buckets also reserves 32 bytes per old
 * bucket.
 *
 * The hash of a key is a CRC-32 computed with `CRC_TABLE` (mub_stream.h), with the initial value 0 and no
 * final inversion. If `nocase` is not 0, keys are compared and hashed without regard to case, as converted by
 * tolower(): its locale must not change while the table has entries.
 *
 * @{
 */

/**
 * One entry.
 *
 * Its address does not change until it is removed. Its `key_offset` may change when another key is removed.
 */
typedef struct mub_hash_entry {
  struct mub_hash_entry *next; /**< the next entry in the chain; NULL at its end */
  uint32_t hash;               /**< the hash of the key, from mub_hash_key() */
  uint32_t key_offset;         /**< the key's offset in the key stream */
  uint32_t key_length;         /**< the length of the key in bytes */
  uint64_t value;              /**< the caller's; may be changed in place */
} mub_hash_entry;

/** A hash table whose keys are byte strings. */
typedef struct mub_hash {
  mub_arrays buckets;       /**< `items`: the heads of the chains; `count`: 0, or 4 times a power of 2 */
  int64_t count;            /**< entries in the table */
  mub_stream keys;          /**< the key stream: all keys in the order of insertion; at most 2^32 - 1 bytes */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
  int16_t nocase;           /**< not 0: ignore case, as by tolower(); set it before the first insertion */
} mub_hash;

/**
 * Initialises an empty table, with `nocase` 0.
 *
 * @param[out] table           the table
 * @param[in] with_entry_pool  not 0: create an entry pool that the table owns
 * @param[in] with_value_pool  not 0: create a value pool that the table owns
 * @return the table
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the table until mub_hash_term()
 * @invalidates nothing
 */
MUB_API mub_hash *mub_hash_init(mub_hash *table, int with_entry_pool, int with_value_pool);

/**
 * Releases everything that the table owns.
 *
 * No function is called for the values; an owned value pool is released with its blocks. Entries in an
 * external entry pool stay allocated: call mub_hash_remove_all() first to return them. `nocase` is unchanged.
 *
 * @param[in,out] table  the table
 * @owner what the table owns is released, the blocks of its own value pool included; other values and
 *   external pools remain the caller's
 * @invalidates all entries, pointers to keys, and all value blocks of an owned pool
 * @cost one release per chunk and page of the pools that the table owns
 */
MUB_API void mub_hash_term(mub_hash *table);

/**
 * Swaps two tables, including their pools.
 *
 * The `nocase` fields are not exchanged.
 *
 * @param[in,out] a  one table
 * @param[in,out] b  the other table
 * @owner what one table owned now belongs to the other
 * @invalidates iterations over both tables
 */
MUB_API void mub_hash_swap(mub_hash *a, mub_hash *b);

/**
 * Copies a table.
 *
 * Pools that the source owns are copied into those of the destination: entries and value blocks have the same
 * chunk and offset there, and addresses are translated. A value that is not an address in the source's value
 * pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries get new blocks of an external entry
 * pool. If the source does not own a value pool, values are copied as words, so both tables refer to the same
 * blocks.
 *
 * The destination's `nocase` is unchanged. A user pool is cloned only if both user pools and `callback` are
 * given.
 *
 * @param[in] source                     the table to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised table, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry, bucket by bucket, if the source owns its
 *                                       value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   tables
 * @invalidates all entries of the destination, pointers to its keys, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(buckets + entries), and the bytes of the keys and pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_hash *mub_hash_clone(const mub_hash *source, mub_pool *source_user_pool, mub_hash *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/**
 * Checks whether the table is intact.
 *
 * Checks the number of buckets, the bucket and the hash of every entry, that no key is there twice, the
 * count, that the keys fill the key stream without gaps, the pools that the table owns, and the fields and
 * tables of external ones. It follows every link, and terminates even if calls to the library have damaged
 * the table. It cannot detect a pointer to other memory in place of an entry or a block, and follows it.
 * Hashes are computed with the present `nocase`, which mub_hash_swap() and mub_hash_clone() do not transfer.
 *
 * @param[in] table  the table
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the table is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(buckets + entries + bytes of all keys); O(n^2) for a chain of n entries, and that of
 *   mub_pool_verify() for each pool that the table owns
 * @nullable what
 */
MUB_API int mub_hash_verify(const mub_hash *table, const char **what);

/**
 * Returns the size of the heap memory that the table holds.
 *
 * Counts the buckets, the pools that the table owns and the key stream, as requested from `malloc`; not the
 * record itself. Blocks of external pools are not counted.
 *
 * @param[in] table  the table
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_hash_memory_bytes(const mub_hash *table);

/**
 * Computes the hash of a key: its CRC-32 with the table `CRC_TABLE`, the initial value 0 and no final
 * inversion.
 *
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @param[in] nocase  not 0: each byte is first converted by tolower()
 * @return the hash; 0 for the empty key
 * @cost O(length)
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API uint64_t mub_hash_key(const void *key, int64_t length, int nocase);

/**
 * Checks whether two byte ranges are equal. Unlike mub_mem_cmp() and mub_hasht_cmp(), it returns 1 if they
 * are.
 *
 * If the lengths are equal and below 1, the ranges count as equal.
 *
 * @param[in] a         the first range
 * @param[in] a_length  bytes of `a`
 * @param[in] b         the second range
 * @param[in] b_length  bytes of `b`
 * @return 1 if they are equal, else 0
 * @cost O(length)
 * @bounds a[a_length], b[b_length]
 * @level low
 */
MUB_API int mub_hash_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/**
 * Finds the entry of a key, or adds one with a block of the value pool.
 *
 * @param[in,out] table   the table
 * @param[in] key         the bytes of the key; NULL is the empty key
 * @param[in] length      bytes of the key; negative: up to its first NUL
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the entry and in `*value_out`;
 *                        NULL: not called
 * @return 1 if the entry is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the table: a block of the value pool, or the word already stored
 * @invalidates an iteration in progress, if the number of buckets doubles; pointers to keys
 * @cost O(length) expected, amortised over the doublings of the buckets, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API int mub_hash_set(mub_hash *table, const void *key, int64_t length, uint64_t *value_out,
                         mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] table   the table
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent; use mub_hash_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the table
 * @cost O(length) expected
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_hash_get(const mub_hash *table, const void *key, int64_t length);

/**
 * Looks up the values of many keys. In a large table, this takes a fraction of the time of the same number of
 * calls to mub_hash_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] table        the table
 * @param[in] keys         the bytes of each key; NULL is the empty key
 * @param[in] lengths      bytes of each key; negative: up to its first NUL; NULL: all up to their first NUL
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_hash_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the table
 * @cost O(count + bytes of these keys) expected
 * @bounds keys[count], lengths[count], values_out[count]
 * @nullable lengths
 */
MUB_API int64_t mub_hash_get_many(const mub_hash *table, const void *const *keys, const int64_t *lengths,
                                  int64_t count, uint64_t *values_out);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] table  the table
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates an iteration in progress, if the number of buckets doubles; pointers to keys
 * @cost O(length) expected, amortised over the doublings of the buckets, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_hash_insert(mub_hash *table, const void *key, int64_t length, uint64_t value);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] table  the table
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(length) expected
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_hash_update(mub_hash *table, const void *key, int64_t length, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] table   the table
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return 1 if it is, else 0
 * @cost O(length) expected
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_hash_find(const mub_hash *table, const void *key, int64_t length);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] table  the table
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry of the key, the offsets of keys inserted later, and pointers to keys
 * @cost O(buckets + entries + bytes of all keys): the bytes of the later keys move and their offsets are
 *   lowered, in one pass over the chunks if the table owns its entry pool and the pool holds nothing else,
 *   otherwise along the chains
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_hash_remove(mub_hash *table, const void *key, int64_t length);

/**
 * Removes a key and releases its value.
 *
 * The value's block is returned to the value pool if that is external; a block of an owned pool stays
 * allocated until the pool is emptied.
 *
 * @param[in,out] table  the table
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[in] release    called with the value, 0 included, after the entry is unlinked; NULL: not called
 * @return the table
 * @failure NULL if the key is absent; if the pool's free stack cannot grow, a returned block is not reused:
 *   see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to the value pool if that is external, and
 *   the entry to its pool
 * @invalidates the entry of the key, the offsets of keys inserted later, and pointers to keys
 * @cost that of mub_hash_remove()
 * @bounds key[length]
 * @nullable key, release
 */
MUB_API mub_hash *mub_hash_free(mub_hash *table, const void *key, int64_t length, mub_free_fn release);

/**
 * Empties the table and releases its buckets; the table can be used again.
 *
 * Entries are returned to an external pool and owned pools are emptied. No function is called for the values;
 * emptying an owned value pool releases its blocks. The memory of the key stream is kept.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, value blocks of an owned value pool are released as it is
 *   emptied, and other values remain the caller's
 * @invalidates all entries, pointers to keys, and all value blocks of an owned pool
 * @cost one release per chunk and page of the owned pools; O(buckets + entries) with an external entry pool
 */
MUB_API void mub_hash_remove_all(mub_hash *table);

/**
 * Releases every value that is not 0, then empties the table like mub_hash_remove_all().
 *
 * The memory of the key stream is released too.
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries, pointers to keys, and the values
 * @cost O(buckets + entries)
 * @nullable release
 */
MUB_API void mub_hash_free_all(mub_hash *table, mub_free_fn release);

/**
 * Returns every entry block to the entry pool, owned or external.
 *
 * Buckets and count are unchanged and refer to blocks that the table no longer owns: call mub_hash_term()
 * next. With an external pool, emptying the table would return the blocks a second time.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, although the table still refers to them; values are not released
 * @invalidates all entries
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hash_remove_all_entry(mub_hash *table);

/**
 * Releases every value that is not 0 and returns the entry blocks to an external entry pool.
 *
 * The values' blocks are returned to the value pool if that is external. Buckets and count are unchanged:
 * call mub_hash_term() next, as after mub_hash_remove_all_entry().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external entry pool, although the table still refers to them
 * @invalidates all entries, if their pool is external
 * @cost O(buckets + entries)
 * @nullable release
 * @level low
 */
MUB_API void mub_hash_free_all_entry(mub_hash *table, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its `value` directly; the entry does not move until it is removed.
 *
 * @param[in,out] table   the table
 * @param[in] key         the bytes of the key; NULL is the empty key
 * @param[in] length      bytes of the key; negative: up to its first NUL
 * @param[out] entry_out  receives the entry; NULL if memory ran out
 * @return 1 if the entry is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles; pointers to keys
 * @cost O(length) expected, amortised over the doublings of the buckets, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_hash_entry_set(mub_hash *table, const void *key, int64_t length, mub_hash_entry **entry_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table   the table
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(length) expected
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_hash_entry *mub_hash_entry_get(const mub_hash *table, const void *key, int64_t length);

/**
 * Starts an iteration over the entries: bucket by bucket, the oldest entry of each chain first.
 *
 * If an insertion doubles the buckets, start the iteration again: continuing can skip or repeat entries. To
 * remove the current entry, advance to the next one first: an iteration cannot continue from a removed entry.
 *
 * @param[in] table        the table
 * @param[out] bucket_out  receives the bucket, for mub_hash_entry_next()
 * @return the first entry
 * @failure NULL if the table is empty
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(buckets) in the worst case
 */
MUB_API mub_hash_entry *mub_hash_entry_first(const mub_hash *table, int64_t *bucket_out);

/**
 * Advances to the next entry.
 *
 * @param[in] table          the table
 * @param[in,out] bucket_io  the bucket, as the previous call left it; unchanged at the end
 * @param[in] entry          the entry that the previous call returned
 * @return the next entry
 * @failure NULL at the end
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) on average; O(buckets) in the worst case, as after the removal of most keys
 */
MUB_API mub_hash_entry *mub_hash_entry_next(const mub_hash *table, int64_t *bucket_io,
                                            const mub_hash_entry *entry);

/**
 * Finds a key in a bucket, or appends a new entry to the chain.
 *
 * Stored hashes are not compared. The key is not stored: apart from `next`, the new entry has the content
 * that mub_pool_new() gave it. The caller fills it in and counts it.
 *
 * @param[in,out] table      the table
 * @param[in] bucket         the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] hash_value     not used
 * @param[in] key            the bytes of the key; NULL is the empty key
 * @param[in] length         bytes of the key, used as given; a negative length finds nothing
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if no block can be allocated
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates nothing
 * @cost O(entries in the bucket), and the bytes of those of the same length that are compared
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_hash_entry *mub_hash_entry_new(mub_hash *table, int64_t bucket, uint32_t hash_value,
                                           const void *key, int64_t length, int *inserted_out);

/**
 * Finds a key in a bucket: the first entry with this hash and this key.
 *
 * @param[in] table       the table
 * @param[in] bucket      the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] hash_value  the hash of the key, from mub_hash_key()
 * @param[in] key         the bytes of the key; NULL is the empty key
 * @param[in] length      bytes of the key, used as given; a negative length finds nothing
 * @return the entry
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(length + entries in the bucket)
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_hash_entry *mub_hash_entry_find(const mub_hash *table, int64_t bucket, uint32_t hash_value,
                                            const void *key, int64_t length);

/**
 * Finds a key in a bucket and unlinks its entry.
 *
 * Key bytes and count are unchanged.
 *
 * @param[in,out] table   the table
 * @param[in] bucket      the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] hash_value  the hash of the key, from mub_hash_key()
 * @param[in] key         the bytes of the key; NULL is the empty key
 * @param[in] length      bytes of the key, used as given; a negative length finds nothing
 * @return the entry, with `next` NULL
 * @failure NULL if there is none
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(length + entries in the bucket)
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_hash_entry *mub_hash_entry_remove(mub_hash *table, int64_t bucket, uint32_t hash_value,
                                              const void *key, int64_t length);

/**
 * Doubles the number of buckets, and gives the key stream a capacity of at least 32 bytes per old bucket.
 *
 * Chains keep their order. Does nothing if there are no buckets.
 *
 * @param[in,out] table  the table
 * @failure the buckets are unchanged if memory runs out; the key stream may have moved
 * @invalidates an iteration in progress, and pointers to keys
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hash_expand(mub_hash *table);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Keys are compared, stored hashes are not: a key added before `nocase` was changed is still found if its
 * bucket is the same.
 *
 * @param[in,out] table      the table
 * @param[in] key            the bytes of the key; NULL is the empty key
 * @param[in] length         bytes of the key; negative: up to its first NUL
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles; pointers to keys
 * @cost O(length) expected, amortised over the doublings of the buckets, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_hash_entry *mub_hash_insert_t(mub_hash *table, const void *key, int64_t length,
                                          int *inserted_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table   the table
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key, used as given; a negative length finds nothing
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(length) expected
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_hash_entry *mub_hash_find_t(const mub_hash *table, const void *key, int64_t length);

/**
 * Unlinks the entry of a key and deletes its key bytes.
 *
 * The count is unchanged. The entry's `next` is set to NULL, and its other fields stay as they are, whatever
 * else is removed. Leave `next` NULL until you decrement the count, and decrement the count before you return
 * the block.
 *
 * @param[in,out] table  the table
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key, used as given; a negative length finds nothing
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry, the offsets of keys inserted later, and pointers to keys
 * @cost that of mub_hash_remove()
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_hash_entry *mub_hash_remove_t(mub_hash *table, const void *key, int64_t length);

/**
 * Lowers the key offsets after key bytes were removed from the key stream.
 *
 * @param[in,out] table  the table
 * @param[in] offset     where the bytes were; offsets from there on are lowered, except that of an empty key
 *                       at `offset` itself
 * @param[in] length     the number of bytes removed; its low 32 bits are used, and offsets wrap modulo 2^32
 * @invalidates copies of the offsets that it lowers
 * @cost O(buckets + entries), along the chains
 * @level low
 */
MUB_API void mub_hash_adjust_t(mub_hash *table, uint32_t offset, int64_t length);

/** @} */

/**
 * @defgroup hashd mub_hashd: a chained hash table from 32-bit integers to 64-bit values
 *
 * A hash table whose keys are 32-bit integers. A key is its own hash: its bucket is the key modulo the number
 * of buckets, so consecutive keys fill consecutive buckets. To use negative keys, cast them to the unsigned
 * type.
 *
 * @{
 */

/** One entry; its address does not change until it is removed. */
typedef struct mub_hashd_entry {
  struct mub_hashd_entry *next; /**< the next entry in the chain; NULL at its end */
  uint32_t key;                 /**< the key */
  uint64_t value;               /**< the caller's; may be changed in place */
} mub_hashd_entry;

/** A hash table whose keys are 32-bit integers. */
typedef struct mub_hashd {
  mub_arrays buckets;       /**< `items`: the heads of the chains; `count`: 0, or 4 times a power of 2 */
  int64_t count;            /**< entries in the table */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_hashd;

/**
 * Initialises an empty table.
 *
 * @param[out] table           the table
 * @param[in] with_entry_pool  not 0: create an entry pool that the table owns
 * @param[in] with_value_pool  not 0: create a value pool that the table owns
 * @return the table
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the table until mub_hashd_term()
 * @invalidates nothing
 */
MUB_API mub_hashd *mub_hashd_init(mub_hashd *table, int with_entry_pool, int with_value_pool);

/**
 * Releases everything that the table owns.
 *
 * No function is called for the values; an owned value pool is released with its blocks. Entries in an
 * external entry pool stay allocated: call mub_hashd_remove_all() first to return them.
 *
 * @param[in,out] table  the table
 * @owner what the table owns is released, the blocks of its own value pool included; other values and
 *   external pools remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk and page of the pools that the table owns
 */
MUB_API void mub_hashd_term(mub_hashd *table);

/**
 * Swaps two tables, including their pools.
 *
 * @param[in,out] a  one table
 * @param[in,out] b  the other table
 * @owner what one table owned now belongs to the other
 * @invalidates iterations over both tables
 */
MUB_API void mub_hashd_swap(mub_hashd *a, mub_hashd *b);

/**
 * Copies a table.
 *
 * Pools that the source owns are copied into those of the destination: entries and value blocks have the same
 * chunk and offset there, and addresses are translated. A value that is not an address in the source's value
 * pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries get new blocks of an external entry
 * pool. If the source does not own a value pool, values are copied as words, so both tables refer to the same
 * blocks.
 *
 * A user pool is cloned only if both user pools and `callback` are given.
 *
 * @param[in] source                     the table to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised table, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry, bucket by bucket, if the source owns its
 *                                       value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   tables
 * @invalidates all entries of the destination, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(buckets + entries), and the bytes of the pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_hashd *mub_hashd_clone(const mub_hashd *source, mub_pool *source_user_pool,
                                   mub_hashd *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/**
 * Checks whether the table is intact.
 *
 * Checks the number of buckets, the bucket of every entry, that no key is there twice, the count, the pools
 * that the table owns, and the fields and tables of external ones. It follows every link, and terminates even
 * if calls to the library have damaged the table. It cannot detect a pointer to other memory in place of an
 * entry or a block, and follows it.
 *
 * @param[in] table  the table
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the table is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(buckets + entries); O(n^2) for a chain of n entries, and that of mub_pool_verify() for each pool
 *   that the table owns
 * @nullable what
 */
MUB_API int mub_hashd_verify(const mub_hashd *table, const char **what);

/**
 * Returns the size of the heap memory that the table holds.
 *
 * Counts the buckets and the pools that the table owns, as requested from `malloc`; not the record itself.
 * Blocks of external pools are not counted.
 *
 * @param[in] table  the table
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_hashd_memory_bytes(const mub_hashd *table);

/**
 * Computes a CRC-32 of a key: that of mub_hash_key() over the key's 4 bytes, least significant byte first.
 *
 * The table does not use it. Callers may apply it to keys that are badly distributed before they insert them.
 *
 * @param[in] key  the key
 * @return the hash
 * @level low
 */
MUB_API uint32_t mub_hashd_key(uint32_t key);

/**
 * Finds the entry of a key, or adds one with a block of the value pool.
 *
 * @param[in,out] table   the table
 * @param[in] key         the key
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the entry and in `*value_out`;
 *                        NULL: not called
 * @return 1 if the entry is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the table: a block of the value pool, or the word already stored
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @nullable init
 */
MUB_API int mub_hashd_set(mub_hashd *table, uint32_t key, uint64_t *value_out, mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return the value
 * @failure 0 if the key is absent; use mub_hashd_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the table
 * @cost O(1) expected
 */
MUB_API uint64_t mub_hashd_get(const mub_hashd *table, uint32_t key);

/**
 * Looks up the values of many keys. In a table of more than about 1e5 entries, this takes less time than the
 * same number of calls to mub_hashd_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] table        the table
 * @param[in] keys         the keys
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_hashd_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the table
 * @cost O(count) expected
 * @bounds keys[count], values_out[count]
 */
MUB_API int64_t mub_hashd_get_many(const mub_hashd *table, const uint32_t *keys, int64_t count,
                                   uint64_t *values_out);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 */
MUB_API int mub_hashd_insert(mub_hashd *table, uint32_t key, uint64_t value);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(1) expected
 */
MUB_API uint64_t mub_hashd_update(mub_hashd *table, uint32_t key, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return 1 if it is, else 0
 * @cost O(1) expected
 */
MUB_API int mub_hashd_find(const mub_hashd *table, uint32_t key);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry of the key
 * @cost O(1) expected
 */
MUB_API uint64_t mub_hashd_remove(mub_hashd *table, uint32_t key);

/**
 * Removes a key and releases its value.
 *
 * The value's block is returned to the value pool if that is external; a block of an owned pool stays
 * allocated until the pool is emptied.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @param[in] release    called with the value, 0 included, after the entry is unlinked; NULL: not called
 * @return the table
 * @failure NULL if the key is absent; if the pool's free stack cannot grow, a returned block is not reused:
 *   see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to the value pool if that is external, and
 *   the entry to its pool
 * @invalidates the entry of the key
 * @cost O(1) expected
 * @nullable release
 */
MUB_API mub_hashd *mub_hashd_free(mub_hashd *table, uint32_t key, mub_free_fn release);

/**
 * Empties the table and releases its buckets; the table can be used again.
 *
 * Entries are returned to an external pool and owned pools are emptied. No function is called for the values;
 * emptying an owned value pool releases its blocks.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, value blocks of an owned value pool are released as it is
 *   emptied, and other values remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk and page of the owned pools; O(buckets + entries) with an external entry pool
 */
MUB_API void mub_hashd_remove_all(mub_hashd *table);

/**
 * Releases every value that is not 0, then empties the table like mub_hashd_remove_all().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries, and the values
 * @cost O(buckets + entries)
 * @nullable release
 */
MUB_API void mub_hashd_free_all(mub_hashd *table, mub_free_fn release);

/**
 * Returns every entry block to the entry pool, owned or external.
 *
 * Buckets and count are unchanged and refer to blocks that the table no longer owns: call mub_hashd_term()
 * next. With an external pool, emptying the table would return the blocks a second time.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, although the table still refers to them; values are not released
 * @invalidates all entries
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hashd_remove_all_entry(mub_hashd *table);

/**
 * Releases every value that is not 0 and returns the entry blocks to an external entry pool.
 *
 * The values' blocks are returned to the value pool if that is external. Buckets and count are unchanged:
 * call mub_hashd_term() next, as after mub_hashd_remove_all_entry().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external entry pool, although the table still refers to them
 * @invalidates all entries, if their pool is external
 * @cost O(buckets + entries)
 * @nullable release
 * @level low
 */
MUB_API void mub_hashd_free_all_entry(mub_hashd *table, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its `value` directly; the entry does not move until it is removed.
 *
 * @param[in,out] table   the table
 * @param[in] key         the key
 * @param[out] entry_out  receives the entry; NULL if memory ran out
 * @return 1 if the entry is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 */
MUB_API int mub_hashd_entry_set(mub_hashd *table, uint32_t key, mub_hashd_entry **entry_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) expected
 */
MUB_API mub_hashd_entry *mub_hashd_entry_get(const mub_hashd *table, uint32_t key);

/**
 * Starts an iteration over the entries: bucket by bucket, the oldest entry of each chain first.
 *
 * If an insertion doubles the buckets, start the iteration again: continuing can skip or repeat entries. To
 * remove the current entry, advance to the next one first: an iteration cannot continue from a removed entry.
 *
 * @param[in] table        the table
 * @param[out] bucket_out  receives the bucket, for mub_hashd_entry_next()
 * @return the first entry
 * @failure NULL if the table is empty
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(buckets) in the worst case
 */
MUB_API mub_hashd_entry *mub_hashd_entry_first(const mub_hashd *table, int64_t *bucket_out);

/**
 * Advances to the next entry.
 *
 * @param[in] table          the table
 * @param[in,out] bucket_io  the bucket, as the previous call left it; unchanged at the end
 * @param[in] entry          the entry that the previous call returned
 * @return the next entry
 * @failure NULL at the end
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) on average; O(buckets) in the worst case, as after the removal of most keys
 */
MUB_API mub_hashd_entry *mub_hashd_entry_next(const mub_hashd *table, int64_t *bucket_io,
                                              const mub_hashd_entry *entry);

/**
 * Finds a key in a bucket, or appends a new entry to the chain, with `next` NULL and `value` 0.
 *
 * The key is not stored: the caller stores it and counts the entry.
 *
 * @param[in,out] table      the table
 * @param[in] bucket         the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key            the key
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if no block can be allocated
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates nothing
 * @cost O(entries in the bucket)
 * @level low
 */
MUB_API mub_hashd_entry *mub_hashd_entry_new(mub_hashd *table, int64_t bucket, uint32_t key,
                                             int *inserted_out);

/**
 * Finds a key in a bucket.
 *
 * @param[in] table   the table
 * @param[in] bucket  the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key     the key
 * @return the entry
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(entries in the bucket)
 * @level low
 */
MUB_API mub_hashd_entry *mub_hashd_entry_find(const mub_hashd *table, int64_t bucket, uint32_t key);

/**
 * Finds a key in a bucket and unlinks its entry.
 *
 * The count is unchanged.
 *
 * @param[in,out] table  the table
 * @param[in] bucket     the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key        the key
 * @return the entry, with `next` NULL
 * @failure NULL if there is none
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(entries in the bucket)
 * @level low
 */
MUB_API mub_hashd_entry *mub_hashd_entry_remove(mub_hashd *table, int64_t bucket, uint32_t key);

/**
 * Doubles the number of buckets.
 *
 * Chains keep their order. Does nothing if there are no buckets.
 *
 * @param[in,out] table  the table
 * @failure the table is unchanged if memory runs out
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hashd_expand(mub_hashd *table);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * @param[in,out] table      the table
 * @param[in] key            the key
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @level low
 */
MUB_API mub_hashd_entry *mub_hashd_insert_t(mub_hashd *table, uint32_t key, int *inserted_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) expected
 * @level low
 */
MUB_API mub_hashd_entry *mub_hashd_find_t(const mub_hashd *table, uint32_t key);

/**
 * Unlinks the entry of a key.
 *
 * The count is unchanged.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @return the entry, with `next` NULL
 * @failure NULL if the key is absent
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(1) expected
 * @level low
 */
MUB_API mub_hashd_entry *mub_hashd_remove_t(mub_hashd *table, uint32_t key);

/** @} */

/**
 * @defgroup hashx mub_hashx: a chained hash table from 64-bit integers to 64-bit values
 *
 * A hash table whose keys are 64-bit integers. A key is its own hash, as in mub_hashd: its bucket is the key
 * modulo the number of buckets.
 *
 * @{
 */

/** One entry; its address does not change until it is removed. */
typedef struct mub_hashx_entry {
  struct mub_hashx_entry *next; /**< the next entry in the chain; NULL at its end */
  uint64_t key;                 /**< the key */
  uint64_t value;               /**< the caller's; may be changed in place */
} mub_hashx_entry;

/** A hash table whose keys are 64-bit integers. */
typedef struct mub_hashx {
  mub_arrays buckets;       /**< `items`: the heads of the chains; `count`: 0, or 4 times a power of 2 */
  int64_t count;            /**< entries in the table */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_hashx;

/**
 * Initialises an empty table.
 *
 * @param[out] table           the table
 * @param[in] with_entry_pool  not 0: create an entry pool that the table owns
 * @param[in] with_value_pool  not 0: create a value pool that the table owns
 * @return the table
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the table until mub_hashx_term()
 * @invalidates nothing
 */
MUB_API mub_hashx *mub_hashx_init(mub_hashx *table, int with_entry_pool, int with_value_pool);

/**
 * Releases everything that the table owns.
 *
 * No function is called for the values; an owned value pool is released with its blocks. Entries in an
 * external entry pool stay allocated: call mub_hashx_remove_all() first to return them.
 *
 * @param[in,out] table  the table
 * @owner what the table owns is released, the blocks of its own value pool included; other values and
 *   external pools remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk and page of the pools that the table owns
 */
MUB_API void mub_hashx_term(mub_hashx *table);

/**
 * Swaps two tables, including their pools.
 *
 * @param[in,out] a  one table
 * @param[in,out] b  the other table
 * @owner what one table owned now belongs to the other
 * @invalidates iterations over both tables
 */
MUB_API void mub_hashx_swap(mub_hashx *a, mub_hashx *b);

/**
 * Copies a table.
 *
 * Pools that the source owns are copied into those of the destination: entries and value blocks have the same
 * chunk and offset there, and addresses are translated. A value that is not an address in the source's value
 * pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries get new blocks of an external entry
 * pool. If the source does not own a value pool, values are copied as words, so both tables refer to the same
 * blocks.
 *
 * A user pool is cloned only if both user pools and `callback` are given.
 *
 * @param[in] source                     the table to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised table, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry, bucket by bucket, if the source owns its
 *                                       value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   tables
 * @invalidates all entries of the destination, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(buckets + entries), and the bytes of the pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_hashx *mub_hashx_clone(const mub_hashx *source, mub_pool *source_user_pool,
                                   mub_hashx *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/**
 * Checks whether the table is intact.
 *
 * Checks the number of buckets, the bucket of every entry, that no key is there twice, the count, the pools
 * that the table owns, and the fields and tables of external ones. It follows every link, and terminates even
 * if calls to the library have damaged the table. It cannot detect a pointer to other memory in place of an
 * entry or a block, and follows it.
 *
 * @param[in] table  the table
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the table is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(buckets + entries); O(n^2) for a chain of n entries, and that of mub_pool_verify() for each pool
 *   that the table owns
 * @nullable what
 */
MUB_API int mub_hashx_verify(const mub_hashx *table, const char **what);

/**
 * Returns the size of the heap memory that the table holds.
 *
 * Counts the buckets and the pools that the table owns, as requested from `malloc`; not the record itself.
 * Blocks of external pools are not counted.
 *
 * @param[in] table  the table
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_hashx_memory_bytes(const mub_hashx *table);

/**
 * Computes a CRC-32 of a key: that of mub_hash_key() over the key's 8 bytes, least significant byte first.
 *
 * The table does not use it. Callers may apply it to keys that are badly distributed before they insert them.
 *
 * @param[in] key  the key
 * @return the hash
 * @level low
 */
MUB_API uint32_t mub_hashx_key(uint64_t key);

/**
 * Finds the entry of a key, or adds one with a block of the value pool.
 *
 * @param[in,out] table   the table
 * @param[in] key         the key
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the entry and in `*value_out`;
 *                        NULL: not called
 * @return 1 if the entry is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the table: a block of the value pool, or the word already stored
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @nullable init
 */
MUB_API int mub_hashx_set(mub_hashx *table, uint64_t key, uint64_t *value_out, mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return the value
 * @failure 0 if the key is absent; use mub_hashx_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the table
 * @cost O(1) expected
 */
MUB_API uint64_t mub_hashx_get(const mub_hashx *table, uint64_t key);

/**
 * Looks up the values of many keys. In a table of more than about 1e5 entries, this takes less time than the
 * same number of calls to mub_hashx_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] table        the table
 * @param[in] keys         the keys
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_hashx_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the table
 * @cost O(count) expected
 * @bounds keys[count], values_out[count]
 */
MUB_API int64_t mub_hashx_get_many(const mub_hashx *table, const uint64_t *keys, int64_t count,
                                   uint64_t *values_out);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 */
MUB_API int mub_hashx_insert(mub_hashx *table, uint64_t key, uint64_t value);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(1) expected
 */
MUB_API uint64_t mub_hashx_update(mub_hashx *table, uint64_t key, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return 1 if it is, else 0
 * @cost O(1) expected
 */
MUB_API int mub_hashx_find(const mub_hashx *table, uint64_t key);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry of the key
 * @cost O(1) expected
 */
MUB_API uint64_t mub_hashx_remove(mub_hashx *table, uint64_t key);

/**
 * Removes a key and releases its value.
 *
 * The value's block is returned to the value pool if that is external; a block of an owned pool stays
 * allocated until the pool is emptied.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @param[in] release    called with the value, 0 included, after the entry is unlinked; NULL: not called
 * @return the table
 * @failure NULL if the key is absent; if the pool's free stack cannot grow, a returned block is not reused:
 *   see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to the value pool if that is external, and
 *   the entry to its pool
 * @invalidates the entry of the key
 * @cost O(1) expected
 * @nullable release
 */
MUB_API mub_hashx *mub_hashx_free(mub_hashx *table, uint64_t key, mub_free_fn release);

/**
 * Empties the table and releases its buckets; the table can be used again.
 *
 * Entries are returned to an external pool and owned pools are emptied. No function is called for the values;
 * emptying an owned value pool releases its blocks.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, value blocks of an owned value pool are released as it is
 *   emptied, and other values remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk and page of the owned pools; O(buckets + entries) with an external entry pool
 */
MUB_API void mub_hashx_remove_all(mub_hashx *table);

/**
 * Releases every value that is not 0, then empties the table like mub_hashx_remove_all().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries, and the values
 * @cost O(buckets + entries)
 * @nullable release
 */
MUB_API void mub_hashx_free_all(mub_hashx *table, mub_free_fn release);

/**
 * Returns every entry block to the entry pool, owned or external.
 *
 * Buckets and count are unchanged and refer to blocks that the table no longer owns: call mub_hashx_term()
 * next. With an external pool, emptying the table would return the blocks a second time.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, although the table still refers to them; values are not released
 * @invalidates all entries
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hashx_remove_all_entry(mub_hashx *table);

/**
 * Releases every value that is not 0 and returns the entry blocks to an external entry pool.
 *
 * The values' blocks are returned to the value pool if that is external. Buckets and count are unchanged:
 * call mub_hashx_term() next, as after mub_hashx_remove_all_entry().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external entry pool, although the table still refers to them
 * @invalidates all entries, if their pool is external
 * @cost O(buckets + entries)
 * @nullable release
 * @level low
 */
MUB_API void mub_hashx_free_all_entry(mub_hashx *table, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its `value` directly; the entry does not move until it is removed.
 *
 * @param[in,out] table   the table
 * @param[in] key         the key
 * @param[out] entry_out  receives the entry; NULL if memory ran out
 * @return 1 if the entry is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 */
MUB_API int mub_hashx_entry_set(mub_hashx *table, uint64_t key, mub_hashx_entry **entry_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) expected
 */
MUB_API mub_hashx_entry *mub_hashx_entry_get(const mub_hashx *table, uint64_t key);

/**
 * Starts an iteration over the entries: bucket by bucket, the oldest entry of each chain first.
 *
 * If an insertion doubles the buckets, start the iteration again: continuing can skip or repeat entries. To
 * remove the current entry, advance to the next one first: an iteration cannot continue from a removed entry.
 *
 * @param[in] table        the table
 * @param[out] bucket_out  receives the bucket, for mub_hashx_entry_next()
 * @return the first entry
 * @failure NULL if the table is empty
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(buckets) in the worst case
 */
MUB_API mub_hashx_entry *mub_hashx_entry_first(const mub_hashx *table, int64_t *bucket_out);

/**
 * Advances to the next entry.
 *
 * @param[in] table          the table
 * @param[in,out] bucket_io  the bucket, as the previous call left it; unchanged at the end
 * @param[in] entry          the entry that the previous call returned
 * @return the next entry
 * @failure NULL at the end
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) on average; O(buckets) in the worst case, as after the removal of most keys
 */
MUB_API mub_hashx_entry *mub_hashx_entry_next(const mub_hashx *table, int64_t *bucket_io,
                                              const mub_hashx_entry *entry);

/**
 * Finds a key in a bucket, or appends a new entry to the chain, with `next` NULL and `value` 0.
 *
 * The key is not stored: the caller stores it and counts the entry.
 *
 * @param[in,out] table      the table
 * @param[in] bucket         the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key            the key
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if no block can be allocated
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates nothing
 * @cost O(entries in the bucket)
 * @level low
 */
MUB_API mub_hashx_entry *mub_hashx_entry_new(mub_hashx *table, int64_t bucket, uint64_t key,
                                             int *inserted_out);

/**
 * Finds a key in a bucket.
 *
 * @param[in] table   the table
 * @param[in] bucket  the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key     the key
 * @return the entry
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(entries in the bucket)
 * @level low
 */
MUB_API mub_hashx_entry *mub_hashx_entry_find(const mub_hashx *table, int64_t bucket, uint64_t key);

/**
 * Finds a key in a bucket and unlinks its entry.
 *
 * The count is unchanged.
 *
 * @param[in,out] table  the table
 * @param[in] bucket     the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key        the key
 * @return the entry, with `next` NULL
 * @failure NULL if there is none
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(entries in the bucket)
 * @level low
 */
MUB_API mub_hashx_entry *mub_hashx_entry_remove(mub_hashx *table, int64_t bucket, uint64_t key);

/**
 * Doubles the number of buckets.
 *
 * Chains keep their order. Does nothing if there are no buckets.
 *
 * @param[in,out] table  the table
 * @failure the table is unchanged if memory runs out
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hashx_expand(mub_hashx *table);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * @param[in,out] table      the table
 * @param[in] key            the key
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @level low
 */
MUB_API mub_hashx_entry *mub_hashx_insert_t(mub_hashx *table, uint64_t key, int *inserted_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) expected
 * @level low
 */
MUB_API mub_hashx_entry *mub_hashx_find_t(const mub_hashx *table, uint64_t key);

/**
 * Unlinks the entry of a key.
 *
 * The count is unchanged.
 *
 * @param[in,out] table  the table
 * @param[in] key        the key
 * @return the entry, with `next` NULL
 * @failure NULL if the key is absent
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(1) expected
 * @level low
 */
MUB_API mub_hashx_entry *mub_hashx_remove_t(mub_hashx *table, uint64_t key);

/** @} */

/**
 * @defgroup hasht mub_hasht: a chained hash table from 16-byte keys to 64-bit values
 *
 * A hash table whose keys are 16 bytes, as four 32-bit words. A key is passed as a pointer to its words,
 * which are copied on insertion; its hash is mub_hasht_key(). There are no functions that iterate over the
 * entries; use MUB_EACH_HASHT() of mub_each.h.
 *
 * @{
 */

/** One entry; its address does not change until it is removed. */
typedef struct mub_hasht_entry {
  struct mub_hasht_entry *next; /**< the next entry in the chain; NULL at its end */
  uint32_t key[4];              /**< the key */
  uint64_t value;               /**< the caller's; may be changed in place */
} mub_hasht_entry;

/** A hash table whose keys are 16 bytes, as four 32-bit words. */
typedef struct mub_hasht {
  mub_arrays buckets;       /**< `items`: the heads of the chains; `count`: 0, or 4 times a power of 2 */
  int64_t count;            /**< entries in the table */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_hasht;

/**
 * Initialises an empty table.
 *
 * @param[out] table           the table
 * @param[in] with_entry_pool  not 0: create an entry pool that the table owns
 * @param[in] with_value_pool  not 0: create a value pool that the table owns
 * @return the table
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the table until mub_hasht_term()
 * @invalidates nothing
 */
MUB_API mub_hasht *mub_hasht_init(mub_hasht *table, int with_entry_pool, int with_value_pool);

/**
 * Releases everything that the table owns.
 *
 * No function is called for the values; an owned value pool is released with its blocks. Entries in an
 * external entry pool stay allocated: call mub_hasht_remove_all() first to return them.
 *
 * @param[in,out] table  the table
 * @owner what the table owns is released, the blocks of its own value pool included; other values and
 *   external pools remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk and page of the pools that the table owns
 */
MUB_API void mub_hasht_term(mub_hasht *table);

/**
 * Swaps two tables, including their pools.
 *
 * @param[in,out] a  one table
 * @param[in,out] b  the other table
 * @owner what one table owned now belongs to the other
 * @invalidates iterations over both tables
 */
MUB_API void mub_hasht_swap(mub_hasht *a, mub_hasht *b);

/**
 * Copies a table.
 *
 * Pools that the source owns are copied into those of the destination: entries and value blocks have the same
 * chunk and offset there, and addresses are translated. A value that is not an address in the source's value
 * pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries get new blocks of an external entry
 * pool. If the source does not own a value pool, values are copied as words, so both tables refer to the same
 * blocks.
 *
 * A user pool is cloned only if both user pools and `callback` are given.
 *
 * @param[in] source                     the table to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised table, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry, bucket by bucket, if the source owns its
 *                                       value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   tables
 * @invalidates all entries of the destination, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(buckets + entries), and the bytes of the pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_hasht *mub_hasht_clone(const mub_hasht *source, mub_pool *source_user_pool,
                                   mub_hasht *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/**
 * Checks whether the table is intact.
 *
 * Checks the number of buckets, the bucket of every entry, that no key is there twice, the count, the pools
 * that the table owns, and the fields and tables of external ones. It follows every link, and terminates even
 * if calls to the library have damaged the table. It cannot detect a pointer to other memory in place of an
 * entry or a block, and follows it.
 *
 * @param[in] table  the table
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the table is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(buckets + entries); O(n^2) for a chain of n entries, and that of mub_pool_verify() for each pool
 *   that the table owns
 * @nullable what
 */
MUB_API int mub_hasht_verify(const mub_hasht *table, const char **what);

/**
 * Returns the size of the heap memory that the table holds.
 *
 * Counts the buckets and the pools that the table owns, as requested from `malloc`; not the record itself.
 * Blocks of external pools are not counted.
 *
 * @param[in] table  the table
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_hasht_memory_bytes(const mub_hasht *table);

/**
 * Computes the hash of a key: the CRC-32 of mub_hash_key() over its 16 bytes, word by word, least significant
 * byte first.
 *
 * @param[in] key  the four words of the key
 * @return the hash
 * @bounds key[4]
 * @level low
 */
MUB_API uint32_t mub_hasht_key(const uint32_t *key);

/**
 * Compares two keys.
 *
 * @param[in] a  the four words of one key
 * @param[in] b  the four words of the other
 * @return 0 if they are equal, else the difference of the first unequal words, word of `a` minus word of `b`,
 *   truncated to a signed 32-bit number; its sign does not define an order
 * @bounds a[4], b[4]
 * @level low
 */
MUB_API int mub_hasht_cmp(const uint32_t *a, const uint32_t *b);

/**
 * Copies the four words of a key.
 *
 * @param[out] destination  receives the words
 * @param[in] source        the words to copy
 * @invalidates nothing
 * @bounds destination[4], source[4]
 * @level low
 */
MUB_API void mub_hasht_copy(uint32_t *destination, const uint32_t *source);

/**
 * Finds the entry of a key, or adds one with a block of the value pool.
 *
 * @param[in,out] table   the table
 * @param[in] key         the four words of the key, which are copied
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the entry and in `*value_out`;
 *                        NULL: not called
 * @return 1 if the entry is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the table: a block of the value pool, or the word already stored
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @bounds key[4]
 * @nullable init
 */
MUB_API int mub_hasht_set(mub_hasht *table, const uint32_t *key, uint64_t *value_out, mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the four words of the key
 * @return the value
 * @failure 0 if the key is absent; use mub_hasht_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the table
 * @cost O(1) expected
 * @bounds key[4]
 */
MUB_API uint64_t mub_hasht_get(const mub_hasht *table, const uint32_t *key);

/**
 * Looks up the values of many keys. In a large table, this takes less time than the same number of calls to
 * mub_hasht_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] table        the table
 * @param[in] keys         the keys
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_hasht_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the table
 * @cost O(count) expected
 * @bounds keys[count], values_out[count]
 */
MUB_API int64_t mub_hasht_get_many(const mub_hasht *table, const uint32_t (*keys)[4], int64_t count,
                                   uint64_t *values_out);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] table  the table
 * @param[in] key        the four words of the key, which are copied
 * @param[in] value      any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @bounds key[4]
 */
MUB_API int mub_hasht_insert(mub_hasht *table, const uint32_t *key, uint64_t value);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] table  the table
 * @param[in] key        the four words of the key
 * @param[in] value      any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(1) expected
 * @bounds key[4]
 */
MUB_API uint64_t mub_hasht_update(mub_hasht *table, const uint32_t *key, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] table  the table
 * @param[in] key    the four words of the key
 * @return 1 if it is, else 0
 * @cost O(1) expected
 * @bounds key[4]
 */
MUB_API int mub_hasht_find(const mub_hasht *table, const uint32_t *key);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] table  the table
 * @param[in] key        the four words of the key
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry of the key
 * @cost O(1) expected
 * @bounds key[4]
 */
MUB_API uint64_t mub_hasht_remove(mub_hasht *table, const uint32_t *key);

/**
 * Removes a key and releases its value.
 *
 * The value's block is returned to the value pool if that is external; a block of an owned pool stays
 * allocated until the pool is emptied.
 *
 * @param[in,out] table  the table
 * @param[in] key        the four words of the key
 * @param[in] release    called with the value, 0 included, after the entry is unlinked; NULL: not called
 * @return the table
 * @failure NULL if the key is absent; if the pool's free stack cannot grow, a returned block is not reused:
 *   see mub_pool_free()
 * @owner the value is passed to `release`, its block is returned to the value pool if that is external, and
 *   the entry to its pool
 * @invalidates the entry of the key
 * @cost O(1) expected
 * @bounds key[4]
 * @nullable release
 */
MUB_API mub_hasht *mub_hasht_free(mub_hasht *table, const uint32_t *key, mub_free_fn release);

/**
 * Empties the table and releases its buckets; the table can be used again.
 *
 * Entries are returned to an external pool and owned pools are emptied. No function is called for the values;
 * emptying an owned value pool releases its blocks.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, value blocks of an owned value pool are released as it is
 *   emptied, and other values remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk and page of the owned pools; O(buckets + entries) with an external entry pool
 */
MUB_API void mub_hasht_remove_all(mub_hasht *table);

/**
 * Releases every value that is not 0, then empties the table like mub_hasht_remove_all().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries, and the values
 * @cost O(buckets + entries)
 * @nullable release
 */
MUB_API void mub_hasht_free_all(mub_hasht *table, mub_free_fn release);

/**
 * Returns every entry block to the entry pool, owned or external.
 *
 * Buckets and count are unchanged and refer to blocks that the table no longer owns: call mub_hasht_term()
 * next. With an external pool, emptying the table would return the blocks a second time.
 *
 * @param[in,out] table  the table
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, although the table still refers to them; values are not released
 * @invalidates all entries
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hasht_remove_all_entry(mub_hasht *table);

/**
 * Releases every value that is not 0 and returns the entry blocks to an external entry pool.
 *
 * The values' blocks are returned to the value pool if that is external. Buckets and count are unchanged:
 * call mub_hasht_term() next, as after mub_hasht_remove_all_entry().
 *
 * @param[in,out] table  the table
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external entry pool, although the table still refers to them
 * @invalidates all entries, if their pool is external
 * @cost O(buckets + entries)
 * @nullable release
 * @level low
 */
MUB_API void mub_hasht_free_all_entry(mub_hasht *table, mub_free_fn release);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * Set its `value` directly; the entry does not move until it is removed.
 *
 * @param[in,out] table   the table
 * @param[in] key         the four words of the key, which are copied
 * @param[out] entry_out  receives the entry; NULL if memory ran out
 * @return 1 if the entry is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @bounds key[4]
 */
MUB_API int mub_hasht_entry_set(mub_hasht *table, const uint32_t *key, mub_hasht_entry **entry_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the four words of the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) expected
 * @bounds key[4]
 */
MUB_API mub_hasht_entry *mub_hasht_entry_get(const mub_hasht *table, const uint32_t *key);

/**
 * Finds a key in a bucket, or appends a new entry to the chain, with `next` NULL and `value` 0.
 *
 * The key is not stored: the caller stores it and counts the entry.
 *
 * @param[in,out] table      the table
 * @param[in] bucket         the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key            the four words of the key
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if no block can be allocated
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates nothing
 * @cost O(entries in the bucket)
 * @bounds key[4]
 * @level low
 */
MUB_API mub_hasht_entry *mub_hasht_entry_new(mub_hasht *table, int64_t bucket, const uint32_t *key,
                                             int *inserted_out);

/**
 * Finds a key in a bucket.
 *
 * @param[in] table   the table
 * @param[in] bucket  the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key     the four words of the key
 * @return the entry
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(entries in the bucket)
 * @bounds key[4]
 * @level low
 */
MUB_API mub_hasht_entry *mub_hasht_entry_find(const mub_hasht *table, int64_t bucket, const uint32_t *key);

/**
 * Finds a key in a bucket and unlinks its entry.
 *
 * The count is unchanged.
 *
 * @param[in,out] table  the table
 * @param[in] bucket     the bucket to search: `0 <= bucket < buckets.count`
 * @param[in] key        the four words of the key
 * @return the entry, with `next` NULL
 * @failure NULL if there is none
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(entries in the bucket)
 * @bounds key[4]
 * @level low
 */
MUB_API mub_hasht_entry *mub_hasht_entry_remove(mub_hasht *table, int64_t bucket, const uint32_t *key);

/**
 * Doubles the number of buckets.
 *
 * Chains keep their order. Does nothing if there are no buckets.
 *
 * @param[in,out] table  the table
 * @failure the table is unchanged if memory runs out
 * @invalidates an iteration in progress
 * @cost O(buckets + entries)
 * @level low
 */
MUB_API void mub_hasht_expand(mub_hasht *table);

/**
 * Finds the entry of a key, or adds one with value 0.
 *
 * @param[in,out] table      the table
 * @param[in] key            the four words of the key, which are copied
 * @param[out] inserted_out  receives 1 if the entry is new, else 0
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @invalidates an iteration in progress, if the number of buckets doubles
 * @cost O(1) expected, amortised over the doublings of the buckets
 * @bounds key[4]
 * @level low
 */
MUB_API mub_hasht_entry *mub_hasht_insert_t(mub_hasht *table, const uint32_t *key, int *inserted_out);

/**
 * Finds the entry of a key.
 *
 * @param[in] table  the table
 * @param[in] key    the four words of the key
 * @return the entry
 * @failure NULL if the key is absent
 * @owner the entry is a block of the entry pool and belongs to the table until it is removed
 * @cost O(1) expected
 * @bounds key[4]
 * @level low
 */
MUB_API mub_hasht_entry *mub_hasht_find_t(const mub_hasht *table, const uint32_t *key);

/**
 * Unlinks the entry of a key.
 *
 * The count is unchanged.
 *
 * @param[in,out] table  the table
 * @param[in] key        the four words of the key
 * @return the entry, with `next` NULL
 * @failure NULL if the key is absent
 * @owner the entry is the caller's: decrement the count and return the entry to the entry pool
 * @invalidates an iteration that is at the entry
 * @cost O(1) expected
 * @bounds key[4]
 * @level low
 */
MUB_API mub_hasht_entry *mub_hasht_remove_t(mub_hasht *table, const uint32_t *key);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
