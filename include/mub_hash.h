/* mub_hash.h: chained hash tables: mub_hash with byte strings as keys, mub_hashd with 32-bit integers, mub_hashx with
 * 64-bit integers, mub_hasht with 16 bytes.
 *
 *   buckets.items ──► [0] ──► entry ──► entry ──► NULL        entries: blocks of entry_pool
 *                     [1] ──► NULL                            value of an entry: a word, or a block of value_pool
 *                     [2] ──► entry ──► NULL                  keys (mub_hash): the bytes of all keys, packed
 *                     …
 *
 * A table starts without buckets; the first insertion makes 4, and an insertion that brings the average to two
 * entries a bucket doubles them. New entries go to the end of their chain. Only mub_hash_remove_all and
 * mub_hash_free_all take buckets away.
 *
 * Entry pool. A table needs one before its first insertion: made by mub_hash_init, or the caller's, written into
 * `entry_pool`, its block size at least that of the table's entry record. Several tables may share a caller's pool.
 * Value pool. Wanted only by mub_hash_set, which gives every new entry a block of it. One made by mub_hash_init has
 * no block size yet: store the size of your values in `value_pool->block_size` before the first mub_hash_set.
 * Blocks of an owned value pool go with the whole pool; single blocks return to a caller's pool only.
 *
 * Parameters, where a function does not say otherwise:
 *   hash, table             the table
 *   a, b                    the two tables
 *   value                   any word, 0 included
 *   bucket                  where to look: 0 to the number of buckets less 1
 *   destination_user_pool   the initialised pool that becomes the copy of `source_user_pool`; else NULL
 *
 * Failure, where a function does not say otherwise:
 *   memory   no memory is needed: a block given back for which its pool's free stack has no room is dropped: see
 *            mub_pool_free
 *
 * Ownership, where a function does not say otherwise:
 *   _init               the record is the caller's; a pool made here is the table's, until `_term`
 *   _term               what the table owns is released; values and a caller's pools stay the caller's
 *   _swap               what one table owned is the other's
 *   _clone              the copy is the destination's; a caller's pool is shared by both, and values are then copied
 *                       as words
 *   _remove_all         entries are their pool's again; values are not released
 *   _free_all           each value is handed to the caller's function, its block to a caller's value pool; entries
 *                       are their pool's again
 *   _remove_all_entry   entries are their pool's again, though the table still refers to them; values are not
 *                       released
 *   _free_all_entry     as after `_remove_all_entry`, each value having been handed to `release`, its block to a
 *                       caller's value pool
 *   _get                the value stays in the table
 *   _update             the previous value is handed over, not released; the new one is kept as a word
 *   _set                the value stays in the table: a block of the value pool, or the word that stands
 *   _remove             the value is handed over, not released; the entry is its pool's again
 *   _free               the value is handed to `release`, its block to a caller's value pool; the entry is its pool's
 *                       again
 *   value               kept as a word; what it stands for stays the caller's
 *
 * Fields, where a record does not say otherwise:
 *   key               the key
 *   entry_pool        where the entries come from; NULL when there is none
 *   owns_value_pool   1: made by `_init`, released by `_term` */
#ifndef MUB_HASH_H
#define MUB_HASH_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- mub_hash: a hash table whose keys are byte strings -------------------------------------------------------
 *
 * A key is `length` bytes at `key`; a negative length means that it ends at its first NUL, and a NULL key with a
 * negative length is the empty key, which is a key like any other. Keys are copied. Their hash is the CRC-32
 * register over CRC_TABLE, started at 0 and not inverted.
 *
 * Parameters, where a function does not say otherwise:
 *   key      the key's bytes; NULL with a negative length: the empty key
 *   length   bytes of the key; negative: up to its first NUL
 *
 * Ownership, where a function does not say otherwise:
 *   mub_hash_entry *   the entry is a block of the entry pool, and the table's until it is removed
 *   entry_out          the entry is a block of the entry pool, and the table's until it is removed
 *   key                the bytes are copied, or only compared */

/* One entry. Offsets into `keys` change when another key is removed. */
typedef struct mub_hash_entry {
  struct mub_hash_entry *next; /* next in the chain; NULL at its end */
  uint32_t hash;               /* mub_hash_key of the key */
  uint32_t key_offset;         /* where the key's bytes start in the table's `keys` */
  uint32_t key_length;         /* bytes */
  uint64_t value;              /* the caller's; may be changed in place */
} mub_hash_entry;

typedef struct mub_hash {
  mub_arrays
      buckets; /* `items` are the chain heads, `count` is the number of buckets: 0, or 4 times a power of 2 */
  int64_t count;   /* entries in the table */
  mub_stream keys; /* the bytes of the live keys in the order of insertion; together at most 2^32 - 1 */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_hash_init, released by mub_hash_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
  int16_t
      nocase; /* not 0: keys that differ only in ASCII case are equal; set it before the first insertion */
} mub_hash;

/* mub_hash_init: make the record an empty table, `nocase` 0.
 *   with_entry_pool, with_value_pool   not 0: make a pool that the table owns
 * A pool record that cannot be allocated leaves its field NULL and its flag 0. Returns the table. */
MUB_API mub_hash *mub_hash_init(mub_hash *hash, int with_entry_pool, int with_value_pool);

/* mub_hash_term: release everything that the table owns. Values are not looked at, entries in a caller's entry pool
 * stay allocated there (mub_hash_remove_all first gives them back), `nocase` stays.
 * Cost: one release a chunk of the pools. */
MUB_API void mub_hash_term(mub_hash *hash);

/* mub_hash_swap: exchange two tables, pools and their ownership included; `nocase` stays with its record. */
MUB_API void mub_hash_swap(mub_hash *a, mub_hash *b);

/* mub_hash_clone: copy a table.
 *   source             unchanged
 *   source_user_pool   with `destination_user_pool` and `callback`: a pool that the values refer into, cloned too;
 *                      a pool given as both is shared; else NULL
 *   destination        initialised with the same flags; what it held is dropped
 *   callback           called for every entry, bucket by bucket, when the source owns its value pool; may be NULL
 * With owned pools, entries and value blocks keep their place in the copied pools and addresses are translated; a
 * value that is no block of the pool becomes 0, and so do all when the destination has no value pool of its own. A
 * caller's pool is shared with the clone: fresh entry blocks of it are filled as copies, values are copied as words.
 * A pool of the destination's own gives way to it. The destination's `nocase` stays.
 * Returns the destination; empty when memory ran out. Cost: O(entries). */
MUB_API mub_hash *mub_hash_clone(const mub_hash *source, mub_pool *source_user_pool, mub_hash *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/* mub_hash_key: the hash of a key.
 *   nocase   not 0: each byte passes through tolower first
 * Returns 32 bits, zero-extended; those of the empty key are 0. */
MUB_API uint64_t mub_hash_key(const void *key, int64_t length, int nocase);

/* mub_hash_cmp: tell whether two byte runs are equal; lengths are used as given.
 *   a, b                 the first bytes of the runs
 *   a_length, b_length   bytes
 * Returns 1 when they are, else 0. */
MUB_API int mub_hash_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/* mub_hash_set: find the entry of a key, or make it with a block of the value pool.
 *   value_out   receives the value: the new block (0 when there is none), or the value that stands
 *   init        called with the new block, which `value_out` and the entry already hold; may be NULL
 * Returns 1 when the entry is new, also when only its block could not be had; 0 when the key was present, or when
 * memory ran out (then *value_out is 0). Cost: as mub_hash_insert. */
MUB_API int mub_hash_set(mub_hash *hash, const void *key, int64_t length, uint64_t *value_out,
                         mub_init_fn init);

/* mub_hash_get: look a value up. A stored 0 reads like a missing key; mub_hash_find tells them apart.
 * Returns the value, 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hash_get(const mub_hash *hash, const void *key, int64_t length);

/* mub_hash_insert: add a key with a value unless the key is present.
 *   value   any word, 0 included
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out.
 * Invalidates: bucket positions of a walk. Cost: O(1) expected; doubles the buckets now and then. */
MUB_API int mub_hash_insert(mub_hash *hash, const void *key, int64_t length, uint64_t value);

/* mub_hash_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. Cost: O(1) expected. */
MUB_API uint64_t mub_hash_update(mub_hash *hash, const void *key, int64_t length, uint64_t value);

/* mub_hash_find: tell whether a key is present.
 * Returns 1 or 0. Cost: O(1) expected. */
MUB_API int mub_hash_find(const mub_hash *hash, const void *key, int64_t length);

/* mub_hash_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Invalidates: key offsets of the entries behind it.
 * Cost: O(entries): the key's bytes are cut out of `keys` and the offsets after them lowered. With an entry
 * pool of its own that holds nothing else the table does that in passes over memory, and not along the
 * chains. */
MUB_API uint64_t mub_hash_remove(mub_hash *hash, const void *key, int64_t length);

/* mub_hash_free: take a key out and release its value.
 *   release   called with the value, 0 included, after the entry is unlinked; may be NULL
 * The value's block goes back to a caller's value pool; in an owned one it stays allocated until the pool goes.
 * Returns the table; NULL when the key is absent. Cost: as mub_hash_remove. */
MUB_API mub_hash *mub_hash_free(mub_hash *hash, const void *key, int64_t length, mub_free_fn release);

/* mub_hash_remove_all: empty the table; it has no buckets then and stays usable. Entries go back to a caller's pool,
 * owned pools are emptied, values are not looked at; the block of `keys` is kept. */
MUB_API void mub_hash_remove_all(mub_hash *hash);

/* mub_hash_free_all: the same after mub_hash_free_all_entry has released the values; the block of `keys` is released
 * too.
 *   release   called for every value that is not 0; may be NULL */
MUB_API void mub_hash_free_all(mub_hash *hash, mub_free_fn release);

/* mub_hash_remove_all_entry: return every entry block to the entry pool, whoever owns it. Buckets and counts are
 * left as they are, and refer to blocks that are no longer the table's. End the table next with mub_hash_term: with a
 * caller's pool, emptying it would return the blocks a second time. */
MUB_API void mub_hash_remove_all_entry(mub_hash *hash);

/* mub_hash_free_all_entry: release every value that is not 0, its block going back to a caller's value pool, and
 * return the entry blocks to a caller's entry pool. Buckets and counts are left as they are: end the table next, as
 * after mub_hash_remove_all_entry.
 *   release   called for every value that is not 0; may be NULL */
MUB_API void mub_hash_free_all_entry(mub_hash *hash, mub_free_fn release);

/* mub_hash_entry_set: find the entry of a key, or make it with value 0.
 *   entry_out   receives the entry; NULL when memory ran out. Fill its `value` in place
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. The entry stays where it is until it is removed. */
MUB_API int mub_hash_entry_set(mub_hash *hash, const void *key, int64_t length, mub_hash_entry **entry_out);

/* mub_hash_entry_get: find the entry of a key.
 * Returns the entry; NULL when the key is absent. */
MUB_API mub_hash_entry *mub_hash_entry_get(const mub_hash *hash, const void *key, int64_t length);

/* mub_hash_entry_first: start a walk: bucket by bucket, oldest first within a chain. Insertions may change that
 * order, and removing the entry that the walk stands on ends it.
 *   bucket_out   receives the bucket, for mub_hash_entry_next
 * Returns the first entry; NULL when the table is empty. */
MUB_API mub_hash_entry *mub_hash_entry_first(const mub_hash *hash, int64_t *bucket_out);

/* mub_hash_entry_next: step to the next entry.
 *   bucket_io   as left by the call before; unchanged at the end
 *   entry       the entry returned by the call before
 * Returns the entry; NULL at the end. */
MUB_API mub_hash_entry *mub_hash_entry_next(const mub_hash *hash, int64_t *bucket_io,
                                            const mub_hash_entry *entry);

/* The layer below, for callers that compute buckets and hashes themselves. `bucket` must be below the bucket count;
 * lengths are used as given, and no negative one finds anything.
 *
 * Parameters, where a function does not say otherwise:
 *   hash_value   the hash of the key, from mub_hash_key
 *   length       bytes of the key, used as given: a negative length finds nothing */

/* mub_hash_entry_new: find a key in a bucket, or link a block for it at the end of the chain. Stored hashes are not
 * looked at, and neither `hash_value` nor the key is stored: but for `next` the new block is as the pool gave it, and
 * the caller fills it and counts it.
 *   inserted_out   receives 1 when the block is new, else 0
 * Returns the entry; NULL when no block could be had. */
MUB_API mub_hash_entry *mub_hash_entry_new(mub_hash *hash, int64_t bucket, uint32_t hash_value,
                                           const void *key, int64_t length, int *inserted_out);

/* mub_hash_entry_find: find a key in a bucket: the first entry with this hash and this key.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hash_entry *mub_hash_entry_find(const mub_hash *hash, int64_t bucket, uint32_t hash_value,
                                            const void *key, int64_t length);

/* mub_hash_entry_remove: find a key in a bucket and unlink its entry. Key bytes and count are left as they are.
 * Returns the entry, its `next` NULL, for the caller to count down and to return to the entry pool, as after
 * mub_hash_remove_t; NULL when there is none. */
MUB_API mub_hash_entry *mub_hash_entry_remove(mub_hash *hash, int64_t bucket, uint32_t hash_value,
                                              const void *key, int64_t length);

/* mub_hash_expand: double the buckets and reserve 32 bytes of key storage for each old one. Chains keep their order.
 * Does nothing without buckets, or when memory runs out. */
MUB_API void mub_hash_expand(mub_hash *hash);

/* mub_hash_insert_t: find the entry of a key, or make it with value 0. A negative length is measured here
 * too. Keys are compared and stored hashes are not looked at: a key that was added before `nocase` changed
 * is found all the same if its bucket is the one that it would have now.
 *   inserted_out   receives 1 when the entry is new, else 0
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_hash_entry *mub_hash_insert_t(mub_hash *hash, const void *key, int64_t length, int *inserted_out);

/* mub_hash_find_t: find the entry of a key.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hash_entry *mub_hash_find_t(const mub_hash *hash, const void *key, int64_t length);

/* mub_hash_remove_t: unlink the entry of a key and delete its key bytes. The count stays as it is. The entry
 * keeps its fields, whatever else is removed. Leave its `next` NULL until it is counted down; do that before
 * its block is given back.
 * Returns the entry, for the caller to count down and to return to the entry pool; NULL when there is none. */
MUB_API mub_hash_entry *mub_hash_remove_t(mub_hash *hash, const void *key, int64_t length);

/* mub_hash_adjust_t: lower the key offsets after key bytes were deleted from `keys`.
 *   offset   where they were: keys at or behind it move, an empty key only behind it
 *   length   how many they were; the low 32 bits are used, and offsets fall modulo 2^32
 * Cost: O(entries): the chains are followed. */
MUB_API void mub_hash_adjust_t(mub_hash *hash, uint32_t offset, int64_t length);

/* ---- mub_hashd: a hash table whose keys are 32-bit integers ---------------------------------------------------
 *
 * A key is its own hash: it lies in bucket key mod the number of buckets, so that consecutive keys fill consecutive
 * buckets. Negative keys are passed as their unsigned twins. All else is as for mub_hash.
 *
 * Parameters, where a function does not say otherwise:
 *   key   the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_hashd_entry *   the entry is a block of the entry pool, and the table's until it is removed
 *   entry_out           the entry is a block of the entry pool, and the table's until it is removed */

/* One entry; it stays where it is until it is removed. */
typedef struct mub_hashd_entry {
  struct mub_hashd_entry *next; /* next in the chain; NULL at its end */
  uint32_t key;
  uint64_t value; /* the caller's; may be changed in place */
} mub_hashd_entry;

typedef struct mub_hashd {
  mub_arrays buckets; /* chain heads and their number, as in mub_hash */
  int64_t count;      /* entries in the table */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_hashd_init, released by mub_hashd_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_hashd;

/* mub_hashd_init: make the record an empty table, as mub_hash_init. Returns the table. */
MUB_API mub_hashd *mub_hashd_init(mub_hashd *table, int with_entry_pool, int with_value_pool);

/* mub_hashd_term: release everything that the table owns, as mub_hash_term. */
MUB_API void mub_hashd_term(mub_hashd *table);

/* mub_hashd_swap: exchange two tables, pools and their ownership included. */
MUB_API void mub_hashd_swap(mub_hashd *a, mub_hashd *b);

/* mub_hashd_clone: copy a table, as mub_hash_clone. Returns the destination; empty when memory ran out.
 * Cost: O(entries). */
MUB_API mub_hashd *mub_hashd_clone(const mub_hashd *source, mub_pool *source_user_pool,
                                   mub_hashd *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/* mub_hashd_key: the CRC register of mub_hash_key over the key's 4 bytes, least significant first. The table does not
 * use it; it is for callers who want their keys mixed. */
MUB_API uint32_t mub_hashd_key(uint32_t key);

/* mub_hashd_set: find the entry of a key, or make it with a block of the value pool, as mub_hash_set.
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. */
MUB_API int mub_hashd_set(mub_hashd *table, uint32_t key, uint64_t *value_out, mub_init_fn init);

/* mub_hashd_get: look a value up.
 * Returns the value, 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hashd_get(const mub_hashd *table, uint32_t key);

/* mub_hashd_insert: add a key with a value unless the key is present.
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out.
 * Invalidates: bucket positions of a walk. Cost: O(1) expected; doubles the buckets now and then. */
MUB_API int mub_hashd_insert(mub_hashd *table, uint32_t key, uint64_t value);

/* mub_hashd_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. */
MUB_API uint64_t mub_hashd_update(mub_hashd *table, uint32_t key, uint64_t value);

/* mub_hashd_find: tell whether a key is present.
 * Returns 1 or 0. */
MUB_API int mub_hashd_find(const mub_hashd *table, uint32_t key);

/* mub_hashd_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hashd_remove(mub_hashd *table, uint32_t key);

/* mub_hashd_free: take a key out and release its value, as mub_hash_free.
 * Returns the table; NULL when the key is absent. Cost: O(1) expected. */
MUB_API mub_hashd *mub_hashd_free(mub_hashd *table, uint32_t key, mub_free_fn release);

/* mub_hashd_remove_all: empty the table, as mub_hash_remove_all. */
MUB_API void mub_hashd_remove_all(mub_hashd *table);

/* mub_hashd_free_all: empty the table and release its values, as mub_hash_free_all. */
MUB_API void mub_hashd_free_all(mub_hashd *table, mub_free_fn release);

/* mub_hashd_remove_all_entry: return every entry block to the entry pool, as mub_hash_remove_all_entry. */
MUB_API void mub_hashd_remove_all_entry(mub_hashd *table);

/* mub_hashd_free_all_entry: release every value that is not 0, as mub_hash_free_all_entry. */
MUB_API void mub_hashd_free_all_entry(mub_hashd *table, mub_free_fn release);

/* mub_hashd_entry_set: find the entry of a key, or make it with value 0.
 *   entry_out   receives the entry; NULL when memory ran out
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. */
MUB_API int mub_hashd_entry_set(mub_hashd *table, uint32_t key, mub_hashd_entry **entry_out);

/* mub_hashd_entry_get: find the entry of a key.
 * Returns the entry; NULL when the key is absent. */
MUB_API mub_hashd_entry *mub_hashd_entry_get(const mub_hashd *table, uint32_t key);

/* mub_hashd_entry_first: start a walk, as mub_hash_entry_first.
 * Returns the first entry; NULL when the table is empty. */
MUB_API mub_hashd_entry *mub_hashd_entry_first(const mub_hashd *table, int64_t *bucket_out);

/* mub_hashd_entry_next: step to the next entry, as mub_hash_entry_next.
 * Returns the entry; NULL at the end. */
MUB_API mub_hashd_entry *mub_hashd_entry_next(const mub_hashd *table, int64_t *bucket_io,
                                              const mub_hashd_entry *entry);

/* mub_hashd_entry_new: find a key in a bucket, or link a block for it at the end of the chain, `next` NULL and
 * `value` 0. The key is not stored: filling it in and counting the entry is the caller's.
 *   inserted_out   receives 1 when the block is new, else 0
 * Returns the entry; NULL when no block could be had. */
MUB_API mub_hashd_entry *mub_hashd_entry_new(mub_hashd *table, int64_t bucket, uint32_t key,
                                             int *inserted_out);

/* mub_hashd_entry_find: find a key in a bucket.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hashd_entry *mub_hashd_entry_find(const mub_hashd *table, int64_t bucket, uint32_t key);

/* mub_hashd_entry_remove: find a key in a bucket and unlink its entry. The count stays as it is.
 * Returns the entry, its `next` NULL, for the caller to return to the entry pool; NULL when there is none. */
MUB_API mub_hashd_entry *mub_hashd_entry_remove(mub_hashd *table, int64_t bucket, uint32_t key);

/* mub_hashd_expand: double the buckets. Chains keep their order.
 * Does nothing without buckets, or when memory runs out. */
MUB_API void mub_hashd_expand(mub_hashd *table);

/* mub_hashd_insert_t: find the entry of a key, or make it with value 0.
 *   inserted_out   receives 1 when the entry is new, else 0
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_hashd_entry *mub_hashd_insert_t(mub_hashd *table, uint32_t key, int *inserted_out);

/* mub_hashd_find_t: find the entry of a key.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hashd_entry *mub_hashd_find_t(const mub_hashd *table, uint32_t key);

/* mub_hashd_remove_t: unlink the entry of a key. The count stays as it is.
 * Returns the entry, for the caller to count down and to return to the entry pool; NULL when there is none. */
MUB_API mub_hashd_entry *mub_hashd_remove_t(mub_hashd *table, uint32_t key);

/* ---- mub_hashx: a hash table whose keys are 64-bit integers ---------------------------------------------------
 *
 * A key is its own hash, as in mub_hashd: it lies in bucket key mod the number of buckets. All else is as for mub_hash.
 *
 * Parameters, where a function does not say otherwise:
 *   key   the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_hashx_entry *   the entry is a block of the entry pool, and the table's until it is removed
 *   entry_out           the entry is a block of the entry pool, and the table's until it is removed */

/* One entry; it stays where it is until it is removed. */
typedef struct mub_hashx_entry {
  struct mub_hashx_entry *next; /* next in the chain; NULL at its end */
  uint64_t key;
  uint64_t value; /* the caller's; may be changed in place */
} mub_hashx_entry;

typedef struct mub_hashx {
  mub_arrays buckets; /* chain heads and their number, as in mub_hash */
  int64_t count;      /* entries in the table */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_hashx_init, released by mub_hashx_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_hashx;

/* mub_hashx_init: make the record an empty table, as mub_hash_init. Returns the table. */
MUB_API mub_hashx *mub_hashx_init(mub_hashx *table, int with_entry_pool, int with_value_pool);

/* mub_hashx_term: release everything that the table owns, as mub_hash_term. */
MUB_API void mub_hashx_term(mub_hashx *table);

/* mub_hashx_swap: exchange two tables, pools and their ownership included. */
MUB_API void mub_hashx_swap(mub_hashx *a, mub_hashx *b);

/* mub_hashx_clone: copy a table, as mub_hash_clone. Returns the destination; empty when memory ran out.
 * Cost: O(entries). */
MUB_API mub_hashx *mub_hashx_clone(const mub_hashx *source, mub_pool *source_user_pool,
                                   mub_hashx *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/* mub_hashx_key: the CRC register of mub_hash_key over the key's 8 bytes, least significant first. The table does not
 * use it; it is for callers who want their keys mixed. */
MUB_API uint32_t mub_hashx_key(uint64_t key);

/* mub_hashx_set: find the entry of a key, or make it with a block of the value pool, as mub_hash_set.
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. */
MUB_API int mub_hashx_set(mub_hashx *table, uint64_t key, uint64_t *value_out, mub_init_fn init);

/* mub_hashx_get: look a value up.
 * Returns the value, 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hashx_get(const mub_hashx *table, uint64_t key);

/* mub_hashx_insert: add a key with a value unless the key is present.
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out.
 * Invalidates: bucket positions of a walk. Cost: O(1) expected; doubles the buckets now and then. */
MUB_API int mub_hashx_insert(mub_hashx *table, uint64_t key, uint64_t value);

/* mub_hashx_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. */
MUB_API uint64_t mub_hashx_update(mub_hashx *table, uint64_t key, uint64_t value);

/* mub_hashx_find: tell whether a key is present.
 * Returns 1 or 0. */
MUB_API int mub_hashx_find(const mub_hashx *table, uint64_t key);

/* mub_hashx_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hashx_remove(mub_hashx *table, uint64_t key);

/* mub_hashx_free: take a key out and release its value, as mub_hash_free.
 * Returns the table; NULL when the key is absent. Cost: O(1) expected. */
MUB_API mub_hashx *mub_hashx_free(mub_hashx *table, uint64_t key, mub_free_fn release);

/* mub_hashx_remove_all: empty the table, as mub_hash_remove_all. */
MUB_API void mub_hashx_remove_all(mub_hashx *table);

/* mub_hashx_free_all: empty the table and release its values, as mub_hash_free_all. */
MUB_API void mub_hashx_free_all(mub_hashx *table, mub_free_fn release);

/* mub_hashx_remove_all_entry: return every entry block to the entry pool, as mub_hash_remove_all_entry. */
MUB_API void mub_hashx_remove_all_entry(mub_hashx *table);

/* mub_hashx_free_all_entry: release every value that is not 0, as mub_hash_free_all_entry. */
MUB_API void mub_hashx_free_all_entry(mub_hashx *table, mub_free_fn release);

/* mub_hashx_entry_set: find the entry of a key, or make it with value 0.
 *   entry_out   receives the entry; NULL when memory ran out
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. */
MUB_API int mub_hashx_entry_set(mub_hashx *table, uint64_t key, mub_hashx_entry **entry_out);

/* mub_hashx_entry_get: find the entry of a key.
 * Returns the entry; NULL when the key is absent. */
MUB_API mub_hashx_entry *mub_hashx_entry_get(const mub_hashx *table, uint64_t key);

/* mub_hashx_entry_first: start a walk, as mub_hash_entry_first.
 * Returns the first entry; NULL when the table is empty. */
MUB_API mub_hashx_entry *mub_hashx_entry_first(const mub_hashx *table, int64_t *bucket_out);

/* mub_hashx_entry_next: step to the next entry, as mub_hash_entry_next.
 * Returns the entry; NULL at the end. */
MUB_API mub_hashx_entry *mub_hashx_entry_next(const mub_hashx *table, int64_t *bucket_io,
                                              const mub_hashx_entry *entry);

/* mub_hashx_entry_new: find a key in a bucket, or link a block for it at the end of the chain, `next` NULL and
 * `value` 0. The key is not stored: filling it in and counting the entry is the caller's.
 *   inserted_out   receives 1 when the block is new, else 0
 * Returns the entry; NULL when no block could be had. */
MUB_API mub_hashx_entry *mub_hashx_entry_new(mub_hashx *table, int64_t bucket, uint64_t key,
                                             int *inserted_out);

/* mub_hashx_entry_find: find a key in a bucket.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hashx_entry *mub_hashx_entry_find(const mub_hashx *table, int64_t bucket, uint64_t key);

/* mub_hashx_entry_remove: find a key in a bucket and unlink its entry. The count stays as it is.
 * Returns the entry, its `next` NULL, for the caller to return to the entry pool; NULL when there is none. */
MUB_API mub_hashx_entry *mub_hashx_entry_remove(mub_hashx *table, int64_t bucket, uint64_t key);

/* mub_hashx_expand: double the buckets. Chains keep their order.
 * Does nothing without buckets, or when memory runs out. */
MUB_API void mub_hashx_expand(mub_hashx *table);

/* mub_hashx_insert_t: find the entry of a key, or make it with value 0.
 *   inserted_out   receives 1 when the entry is new, else 0
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_hashx_entry *mub_hashx_insert_t(mub_hashx *table, uint64_t key, int *inserted_out);

/* mub_hashx_find_t: find the entry of a key.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hashx_entry *mub_hashx_find_t(const mub_hashx *table, uint64_t key);

/* mub_hashx_remove_t: unlink the entry of a key. The count stays as it is.
 * Returns the entry, for the caller to count down and to return to the entry pool; NULL when there is none. */
MUB_API mub_hashx_entry *mub_hashx_remove_t(mub_hashx *table, uint64_t key);

/* ---- mub_hasht: a hash table whose keys are 16 bytes, as four 32-bit words ------------------------------------
 *
 * A key is passed as a pointer to its words, which are copied; its hash is mub_hasht_key. There is no walk over the
 * entries. All else is as for mub_hash.
 *
 * Parameters, where a function does not say otherwise:
 *   key   the four words of the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_hasht_entry *   the entry is a block of the entry pool, and the table's until it is removed
 *   entry_out           the entry is a block of the entry pool, and the table's until it is removed
 *   _copy               the words are copied
 *   key                 the words are copied, or only compared */

/* One entry; it stays where it is until it is removed. */
typedef struct mub_hasht_entry {
  struct mub_hasht_entry *next; /* next in the chain; NULL at its end */
  uint32_t key[4];
  uint64_t value; /* the caller's; may be changed in place */
} mub_hasht_entry;

typedef struct mub_hasht {
  mub_arrays buckets; /* chain heads and their number, as in mub_hash */
  int64_t count;      /* entries in the table */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_hasht_init, released by mub_hasht_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_hasht;

/* mub_hasht_init: make the record an empty table, as mub_hash_init. Returns the table. */
MUB_API mub_hasht *mub_hasht_init(mub_hasht *table, int with_entry_pool, int with_value_pool);

/* mub_hasht_term: release everything that the table owns, as mub_hash_term. */
MUB_API void mub_hasht_term(mub_hasht *table);

/* mub_hasht_swap: exchange two tables, pools and their ownership included. */
MUB_API void mub_hasht_swap(mub_hasht *a, mub_hasht *b);

/* mub_hasht_clone: copy a table, as mub_hash_clone. Returns the destination; empty when memory ran out.
 * Cost: O(entries). */
MUB_API mub_hasht *mub_hasht_clone(const mub_hasht *source, mub_pool *source_user_pool,
                                   mub_hasht *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/* mub_hasht_key: the hash of a key: the CRC register of mub_hash_key over its 16 bytes, word by word, least significant
 * byte first. */
MUB_API uint32_t mub_hasht_key(const uint32_t *key);

/* mub_hasht_cmp: compare two keys.
 *   a, b   the four words of each
 * Returns 0 when they are equal, else the difference of the first unequal words, word of a minus word of b, cut to a
 * signed 32-bit number: its sign is no order. */
MUB_API int mub_hasht_cmp(const uint32_t *a, const uint32_t *b);

/* mub_hasht_copy: copy the four words of a key.
 *   destination   receives the words
 *   source        the words */
MUB_API void mub_hasht_copy(uint32_t *destination, const uint32_t *source);

/* mub_hasht_set: find the entry of a key, or make it with a block of the value pool, as mub_hash_set.
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. */
MUB_API int mub_hasht_set(mub_hasht *table, const uint32_t *key, uint64_t *value_out, mub_init_fn init);

/* mub_hasht_get: look a value up.
 * Returns the value, 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hasht_get(const mub_hasht *table, const uint32_t *key);

/* mub_hasht_insert: add a key with a value unless the key is present.
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out.
 * Invalidates: bucket positions of a walk. Cost: O(1) expected; doubles the buckets now and then. */
MUB_API int mub_hasht_insert(mub_hasht *table, const uint32_t *key, uint64_t value);

/* mub_hasht_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. */
MUB_API uint64_t mub_hasht_update(mub_hasht *table, const uint32_t *key, uint64_t value);

/* mub_hasht_find: tell whether a key is present.
 * Returns 1 or 0. */
MUB_API int mub_hasht_find(const mub_hasht *table, const uint32_t *key);

/* mub_hasht_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Cost: O(1) expected. */
MUB_API uint64_t mub_hasht_remove(mub_hasht *table, const uint32_t *key);

/* mub_hasht_free: take a key out and release its value, as mub_hash_free.
 * Returns the table; NULL when the key is absent. Cost: O(1) expected. */
MUB_API mub_hasht *mub_hasht_free(mub_hasht *table, const uint32_t *key, mub_free_fn release);

/* mub_hasht_remove_all: empty the table, as mub_hash_remove_all. */
MUB_API void mub_hasht_remove_all(mub_hasht *table);

/* mub_hasht_free_all: empty the table and release its values, as mub_hash_free_all. */
MUB_API void mub_hasht_free_all(mub_hasht *table, mub_free_fn release);

/* mub_hasht_remove_all_entry: return every entry block to the entry pool, as mub_hash_remove_all_entry. */
MUB_API void mub_hasht_remove_all_entry(mub_hasht *table);

/* mub_hasht_free_all_entry: release every value that is not 0, as mub_hash_free_all_entry. */
MUB_API void mub_hasht_free_all_entry(mub_hasht *table, mub_free_fn release);

/* mub_hasht_entry_set: find the entry of a key, or make it with value 0.
 *   entry_out   receives the entry; NULL when memory ran out
 * Returns 1 when the entry is new; 0 when the key was present or memory ran out. */
MUB_API int mub_hasht_entry_set(mub_hasht *table, const uint32_t *key, mub_hasht_entry **entry_out);

/* mub_hasht_entry_get: find the entry of a key.
 * Returns the entry; NULL when the key is absent. */
MUB_API mub_hasht_entry *mub_hasht_entry_get(const mub_hasht *table, const uint32_t *key);

/* mub_hasht_entry_new: find a key in a bucket, or link a block for it at the end of the chain, `next` NULL and
 * `value` 0. The key is not stored: filling it in and counting the entry is the caller's.
 *   inserted_out   receives 1 when the block is new, else 0
 * Returns the entry; NULL when no block could be had. */
MUB_API mub_hasht_entry *mub_hasht_entry_new(mub_hasht *table, int64_t bucket, const uint32_t *key,
                                             int *inserted_out);

/* mub_hasht_entry_find: find a key in a bucket.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hasht_entry *mub_hasht_entry_find(const mub_hasht *table, int64_t bucket, const uint32_t *key);

/* mub_hasht_entry_remove: find a key in a bucket and unlink its entry. The count stays as it is.
 * Returns the entry, its `next` NULL, for the caller to return to the entry pool; NULL when there is none. */
MUB_API mub_hasht_entry *mub_hasht_entry_remove(mub_hasht *table, int64_t bucket, const uint32_t *key);

/* mub_hasht_expand: double the buckets. Chains keep their order.
 * Does nothing without buckets, or when memory runs out. */
MUB_API void mub_hasht_expand(mub_hasht *table);

/* mub_hasht_insert_t: find the entry of a key, or make it with value 0.
 *   inserted_out   receives 1 when the entry is new, else 0
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_hasht_entry *mub_hasht_insert_t(mub_hasht *table, const uint32_t *key, int *inserted_out);

/* mub_hasht_find_t: find the entry of a key.
 * Returns the entry; NULL when there is none. */
MUB_API mub_hasht_entry *mub_hasht_find_t(const mub_hasht *table, const uint32_t *key);

/* mub_hasht_remove_t: unlink the entry of a key. The count stays as it is.
 * Returns the entry, for the caller to count down and to return to the entry pool; NULL when there is none. */
MUB_API mub_hasht_entry *mub_hasht_remove_t(mub_hasht *table, const uint32_t *key);

#ifdef __cplusplus
}
#endif

#endif
