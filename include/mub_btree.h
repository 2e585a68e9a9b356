/**
 * @defgroup btree_h mub_btree.h: ordered maps
 *
 * Ordered maps as B+-trees of order 32: mub_btree with byte strings as keys, mub_btreed with 32-bit numbers,
 * mub_btreex with 64-bit numbers.
 *
 *                   root  level 1  key "plum"       an entry is a node of the tree; its key is that of
 *                    │ children                     its last child, the greatest below it
 *         ┌──────────┴──────────┐
 *     level 0  key "fig"    level 0  key "plum"     entries of level 0 are the leaves: blocks of entry_pool
 *         │ children            │ children
 *      apple ⇄ fig       ⇄    pear ⇄ plum           a record (mub_btree_node) is a key and its value, in
 *                                                   key order on `prev` and `next`: blocks of node_pool
 *
 * **Leaves and inner nodes.** A `mub_btree_entry` of level 0 is a leaf, whose children are records
 * (`mub_btree_node`). An entry of a higher level is an inner node, whose children are entries one level
 * lower.
 *
 * **Splits.** An entry that reaches 32 children is split: the lower half (16 of 32) stays, the upper half
 * moves to a new entry right after it. When the root is split, both halves move to new entries below it. The
 * tree grows in height at the root only, which is embedded in the `mub_btree` struct and never moves.
 * Removals do not rebalance the tree: an entry is removed once it is empty, and a tree without keys is a
 * single empty leaf again.
 *
 * **Pools.** A tree needs an entry pool and a node pool before its first insertion: pools created by `_init`,
 * or external ones stored in the fields, whose block sizes are at least the sizes of `mub_btree_entry` and
 * `mub_btree_node` or their variants. Several trees may share external pools. Only `_set` needs a value pool:
 * it takes a block for the value of every new record. A value pool created by `_init` has no block size:
 * check that `value_pool` is not NULL, then store the size of the blocks that your values refer to in
 * `value_pool->block_size`.
 *
 * Without a node pool, insertions fail as if memory had run out. Without an entry pool nothing can split, so
 * the tree stays a single leaf. In a tree with a value pool, every value must be 0 or the address of a block
 * of that pool: `_free_all` returns it to the pool if that is external, and `_clone` translates it if the
 * pool is owned.
 *
 * **Links.** `prev` and `next` are correct only in a tree that is not a clone and from which nothing was
 * removed since it was last empty: a removal does not update the links of the neighbours, and the links in a
 * clone point into its source. Insertions do not follow the links.
 *
 * **Cursors.** A cursor visits the records in key order, even after removals and in clones. It is a plain
 * struct that the caller owns and need not release; a step compares no keys. A cursor is valid until a key is
 * added or removed, or the tree is swapped, emptied or terminated, or is the destination of a clone; after
 * that, seek again. Any number of cursors may be used with one tree, even in several threads, as long as no
 * thread changes the tree.
 *
 * **Memory.** An insertion that runs out of memory fails as a whole. Only if there is no memory for a split
 * does it succeed without one. The entry then has more than 31 children until later insertions split it: a
 * leaf when it gets its next record, an inner node when one of its children is next split. No function
 * recurses.
 *
 * What the everyday operations return:
 *
 * | operation      | key present                  | key absent             | out of memory          |
 * | -------------- | ---------------------------- | ---------------------- | ---------------------- |
 * | `_insert`      | 0, value unchanged           | 1, added               | 0                      |
 * | `_set`         | 0, `*value_out` is the value | 1, `*value_out` is new | 0, `*value_out` is 0   |
 * | `_node_set`    | 0, `*node_out` is the record | 1, `*node_out` is new  | 0, `*node_out` is NULL |
 * | `_get`         | the value                    | 0                      |                        |
 * | `_get_many`    | as `_get`, for each key      | 0, for each key        |                        |
 * | `_find`        | 1                            | 0                      |                        |
 * | `_update`      | the previous value           | 0, not added           |                        |
 * | `_remove`      | the value, not released      | 0                      |                        |
 * | `_node_get`    | the record                   | NULL                   |                        |
 * | `_node_bfind`  | the record                   | next or last, or NULL  |                        |
 * | `_cursor_seek` | the record                   | the next one, or NULL  |                        |
 * | `_clone`       | the number of keys           |                        | 0, the copy is empty   |
 *
 * If only the value block cannot be allocated, `_set` adds the key with value 0 and returns 1.
 *
 * @{
 */
#ifndef MUB_BTREE_H
#define MUB_BTREE_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup btree mub_btree: an ordered map from byte strings to 64-bit values
 *
 * An ordered map whose keys are byte strings. A key is `length` bytes at `key`; a negative length means that
 * it ends at its first NUL. A NULL key is the empty key, which is valid and precedes all others. Keys are
 * copied. The keys of a tree take at most 2^32 - 1 bytes in total; an insertion beyond that fails as if
 * memory had run out. Keys are compared byte by byte as unsigned values; a key that is a prefix of another
 * precedes it, unless their lengths differ by 2^31 or more. Above 16 MiB of keys, all of them are copied once
 * per 8 MiB that are added, and above 2 GiB at nearly every insertion. If `nocase` is not 0, every byte is
 * first converted by tolower(): its locale must not change while the tree has records.
 *
 * @{
 */

/** A record: a key and its value. Its address does not change until it is removed. */
typedef struct mub_btree_node {
  uint32_t key_offset;         /**< the key's offset in the key stream; may change when others are removed */
  uint32_t key_length;         /**< the length of the key in bytes */
  struct mub_btree_node *prev; /**< the previous record, NULL at the least key; see Links in mub_btree.h */
  struct mub_btree_node *next; /**< the next record; NULL at the greatest key */
  uint64_t value;              /**< the caller's; may be changed in place */
} mub_btree_node;

/** A node of the tree: a leaf or an inner node. */
typedef struct mub_btree_entry {
  uint32_t key_offset;            /**< the offset of the last child's key; may be outdated in the root */
  uint32_t key_length;            /**< the length of that key in bytes */
  int16_t level;                  /**< 0: a leaf of records; else an inner node of entries one level lower */
  struct mub_btree_entry *parent; /**< the inner node above; NULL for the root */
  mub_arrays children;            /**< in key order; its `pool` is that of the children */
} mub_btree_entry;

/** An ordered map whose keys are byte strings. */
typedef struct mub_btree {
  mub_btree_entry root;     /**< the top of the tree; a leaf while there are few keys */
  int64_t count;            /**< keys in the tree */
  mub_stream keys;          /**< the key stream: all keys in the order of insertion; at most 2^32 - 1 bytes */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *node_pool;      /**< the pool of the records; NULL if there is none */
  uint16_t owns_node_pool;  /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
  uint16_t nocase;          /**< not 0: ignore case, as by tolower(); set it before the first insertion */
} mub_btree;

/** A position in a tree: at a record, before the first or after the last. */
typedef struct mub_btree_cursor {
  const mub_btree *tree; /**< the tree */
  mub_btree_entry *leaf; /**< the leaf of the position; NULL in an empty tree */
  int64_t index;         /**< index in the leaf; -1 before the first, `children.count` after the last */
} mub_btree_cursor;

/**
 * Initialises an empty tree, with `nocase` 0.
 *
 * The root has room for 32 children.
 *
 * @param[out] tree            the tree
 * @param[in] with_entry_pool  not 0: create an entry pool that the tree owns
 * @param[in] with_node_pool   not 0: create a node pool that the tree owns
 * @param[in] with_value_pool  not 0: create a value pool that the tree owns
 * @return the tree
 * @failure none; if memory runs out, the root has no room for children yet, and the field of a missing pool
 *   is NULL and its flag 0
 * @owner the struct belongs to the caller; the pools created here belong to the tree until mub_btree_term()
 * @invalidates nothing
 */
MUB_API mub_btree *mub_btree_init(mub_btree *tree, int with_entry_pool, int with_node_pool,
                                  int with_value_pool);

/**
 * Releases everything that the tree owns.
 *
 * Entries and records are returned to external pools. No function is called for the values; an owned value
 * pool is released with its blocks. `nocase` is unchanged.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the tree owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all records and entries, pointers to keys, all value blocks of an owned pool, and the tree's
 *   cursors
 * @cost O(entries), and one release per chunk and page of the owned pools; O(keys) with an external node
 *   pool
 */
MUB_API mub_btree *mub_btree_term(mub_btree *tree);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the bytes of the key; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @param[in] value     any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates the tree's cursors, and pointers to keys
 * @cost O(length log n), amortised, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_btree_insert(mub_btree *tree, const void *key, int64_t length, uint64_t value);

/**
 * Finds the value of a key, or adds the key with a block of the value pool.
 *
 * @param[in,out] tree    the tree
 * @param[in] key         the bytes of the key; NULL is the empty key
 * @param[in] length      bytes of the key; negative: up to its first NUL
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the record but before it is stored
 *                        in `*value_out`; NULL: not called
 * @return 1 if the key is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the tree: a block of the value pool, or the word already stored
 * @invalidates the tree's cursors, and pointers to keys
 * @cost O(length log n), amortised, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API int mub_btree_set(mub_btree *tree, const void *key, int64_t length, uint64_t *value_out,
                          mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] tree    the tree
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent; use mub_btree_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the tree
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_btree_get(const mub_btree *tree, const void *key, int64_t length);

/**
 * Looks up the values of many keys. In a large tree, this takes a fraction of the time of the same number of
 * calls to mub_btree_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] tree         the tree
 * @param[in] keys         the bytes of each key; NULL is the empty key
 * @param[in] lengths      bytes of each key; negative: up to its first NUL; NULL: all up to their first NUL
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_btree_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the tree
 * @cost O((count + bytes of these keys) log n)
 * @bounds keys[count], lengths[count], values_out[count]
 * @nullable lengths
 */
MUB_API int64_t mub_btree_get_many(const mub_btree *tree, const void *const *keys, const int64_t *lengths,
                                   int64_t count, uint64_t *values_out);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the bytes of the key; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @param[in] value     any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_btree_update(mub_btree *tree, const void *key, int64_t length, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] tree    the tree
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return 1 if it is, else 0
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_btree_find(const mub_btree *tree, const void *key, int64_t length);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the bytes of the key; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the record is returned to its pool
 * @invalidates the record of the key, entries that become empty, the links of the neighbouring records, the
 *   offsets of keys inserted later, pointers to keys, and the tree's cursors
 * @cost O(keys + their bytes): the bytes of the later keys move and their offsets are lowered, in one pass
 *   over the chunks if the tree owns its node pool and the pool holds nothing else, otherwise along the
 *   leaves
 * @bounds key[length]
 * @nullable key
 */
MUB_API uint64_t mub_btree_remove(mub_btree *tree, const void *key, int64_t length);

/**
 * Empties the tree; it can be used again.
 *
 * Entries and records are returned to external pools and owned pools are emptied. No function is called for
 * the values; emptying an owned value pool releases its blocks. The memory of the key stream is kept, that of
 * the root's children is released.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries and records are returned to their pools, value blocks of an owned value pool are released as
 *   it is emptied, and other values remain the caller's
 * @invalidates all records and entries, pointers to keys, all value blocks of an owned pool, and the tree's
 *   cursors
 * @cost O(entries); O(keys) with an external node pool
 */
MUB_API mub_btree *mub_btree_remove_all(mub_btree *tree);

/**
 * Empties the tree like mub_btree_remove_all(), and releases every value that is not 0. `release` must not
 * use the tree, parts of which are already gone when it is called.
 *
 * If the value pool is external, the values' blocks are returned to it. The memory of the key stream is
 * released too.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called with every value that is not 0, in key order; NULL: not called
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries and records are returned to their pools
 * @invalidates all records and entries, pointers to keys, the values, and the tree's cursors
 * @cost O(keys)
 * @nullable release
 */
MUB_API mub_btree *mub_btree_free_all(mub_btree *tree, mub_free_fn release);

/**
 * Finds the record of a key, or adds one with value 0.
 *
 * Set its `value` directly.
 *
 * @param[in,out] tree   the tree
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[out] node_out  receives the record; NULL if memory ran out
 * @return 1 if the record is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates the tree's cursors, and pointers to keys
 * @cost O(length log n), amortised, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 */
MUB_API int mub_btree_node_set(mub_btree *tree, const void *key, int64_t length, mub_btree_node **node_out);

/**
 * Finds the record of a key.
 *
 * @param[in] tree    the tree
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the record
 * @failure NULL if the key is absent
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_btree_node *mub_btree_node_get(const mub_btree *tree, const void *key, int64_t length);

/**
 * Finds the record of a key; the same as mub_btree_node_get().
 *
 * @param[in] tree    the tree
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the record
 * @failure NULL if the key is absent
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_btree_node *mub_btree_node_find(const mub_btree *tree, const void *key, int64_t length);

/**
 * Finds the record of a key. If the key is absent, finds the record with the next greater key or, for a key
 * above all keys, the one with the greatest.
 *
 * @param[in] tree    the tree
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_btree_node *mub_btree_node_bfind(const mub_btree *tree, const void *key, int64_t length);

/**
 * Finds the record with the least key.
 *
 * @param[in] tree  the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btree_node *mub_btree_node_first(const mub_btree *tree);

/**
 * Finds the record with the greatest key.
 *
 * @param[in] tree  the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btree_node *mub_btree_node_last(const mub_btree *tree);

/**
 * Finds the next record in key order, even after removals.
 *
 * To iterate over a tree, use a cursor, which is faster.
 *
 * @param[in] tree  the tree
 * @param[in] node  a record of the tree
 * @return the record
 * @failure NULL at the end
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(length log n), with the length of the record's key
 */
MUB_API mub_btree_node *mub_btree_node_next(const mub_btree *tree, const mub_btree_node *node);

/**
 * Finds the previous record in key order, even after removals.
 *
 * To iterate over a tree, use a cursor, which is faster.
 *
 * @param[in] tree  the tree
 * @param[in] node  a record of the tree
 * @return the record
 * @failure NULL at the beginning
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(length log n), with the length of the record's key
 */
MUB_API mub_btree_node *mub_btree_node_prev(const mub_btree *tree, const mub_btree_node *node);

/**
 * Sets a cursor to the record with the least key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btree_node *mub_btree_cursor_first(mub_btree_cursor *cursor, const mub_btree *tree);

/**
 * Sets a cursor to the record with the greatest key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btree_node *mub_btree_cursor_last(mub_btree_cursor *cursor, const mub_btree *tree);

/**
 * Sets a cursor to the first record whose key is not less than the given key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @param[in] key      the bytes of the key; NULL is the empty key
 * @param[in] length   bytes of the key; negative: up to its first NUL
 * @return the record
 * @failure NULL if all keys are less; the cursor is then after the last record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_btree_node *mub_btree_cursor_seek(mub_btree_cursor *cursor, const mub_btree *tree,
                                              const void *key, int64_t length);

/**
 * Advances to the next record in key order.
 *
 * A cursor before the first record moves to the first.
 *
 * @param[in,out] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL at the end; the cursor is then after the last record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(1) on average
 */
MUB_API mub_btree_node *mub_btree_cursor_next(mub_btree_cursor *cursor);

/**
 * Moves back to the previous record in key order.
 *
 * A cursor after the last record moves to the last.
 *
 * @param[in,out] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL at the beginning; the cursor is then before the first record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(1) on average
 */
MUB_API mub_btree_node *mub_btree_cursor_prev(mub_btree_cursor *cursor);

/**
 * Gets the record at a cursor.
 *
 * @param[in] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL before the first record and after the last one
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 */
MUB_API mub_btree_node *mub_btree_cursor_node(const mub_btree_cursor *cursor);

/**
 * Descends along the first children to a leaf.
 *
 * @param[in] entry  an entry of any level
 * @return the first leaf below the entry; the entry itself if it is a leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btree_entry *mub_btree_first_entry(const mub_btree_entry *entry);

/**
 * Descends along the last children to a leaf.
 *
 * @param[in] entry  an entry of any level
 * @return the last leaf below the entry; the entry itself if it is a leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btree_entry *mub_btree_last_entry(const mub_btree_entry *entry);

/**
 * Swaps two trees, including their pools.
 *
 * The `nocase` fields are not exchanged.
 *
 * @param[in,out] a  one tree
 * @param[in,out] b  the other tree
 * @owner what one tree owned now belongs to the other
 * @invalidates the cursors of both trees
 * @cost O(inner nodes of both trees)
 */
MUB_API void mub_btree_swap(mub_btree *a, mub_btree *b);

/**
 * Copies a tree.
 *
 * Pools that the source owns are copied into those of the destination: entries, records and value blocks have
 * the same chunk and offset there, and addresses are translated. A value that is not an address in the
 * source's value pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries and records get new blocks of external
 * pools. If the source does not own a value pool, values are copied as words, so both trees refer to the same
 * blocks.
 *
 * The `prev` and `next` links of the copied records still point into the source: use a cursor to iterate over
 * a clone. The destination's `nocase` is unchanged. A user pool is cloned only if both user pools and
 * `callback` are given.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised tree, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every record in key order if the source owns its value
 *                                       pool; NULL: not called
 * @return the number of keys
 * @failure 0 if memory ran out; the destination is then empty
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   trees
 * @invalidates all records and entries of the destination, pointers to its keys, its cursors, and all blocks
 *   of its own pools and of a `destination_user_pool` that is overwritten
 * @cost O(keys), and one copy per chunk of the owned pools
 * @threads an external entry pool or node pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API int64_t mub_btree_clone(const mub_btree *source, mub_pool *source_user_pool, mub_btree *destination,
                                mub_pool *destination_user_pool, mub_clone_fn callback);

/**
 * Checks whether the tree is intact.
 *
 * Checks the levels, parents and tables of all entries, the keys of all but the root, the order of the keys,
 * the count, the pools that the tree owns, and the fields and tables of external ones, and that the keys fill
 * the key stream without gaps. `prev` and `next` of the records are not checked. It visits every entry and
 * record, and terminates even if calls to the library have damaged the tree. It cannot detect a pointer to
 * other memory in place of an entry or a block, and follows it. Keys are compared with the present `nocase`,
 * which mub_btree_swap() and mub_btree_clone() do not transfer.
 *
 * @param[in] tree   the tree
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the tree is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(keys + their bytes), and that of mub_pool_verify() for each pool that the tree owns
 * @nullable what
 */
MUB_API int mub_btree_verify(const mub_btree *tree, const char **what);

/**
 * Returns the size of the heap memory that the tree holds.
 *
 * Counts the tables of all entries, the pools that the tree owns and the key stream, as requested from
 * `malloc`; not the struct itself. Blocks of external pools are not counted.
 *
 * @param[in] tree  the tree
 * @return the number of bytes
 * @failure none
 * @cost O(entries + free pages of the pools)
 */
MUB_API int64_t mub_btree_memory_bytes(const mub_btree *tree);

/**
 * Initialises a block as an empty leaf: key offset and length 0, no parent, room for 32 children, no pool for
 * the children.
 *
 * @param[out] entry  the block
 * @failure the leaf has no room for children if memory runs out
 * @owner the table of children belongs to the entry
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btree_entry_init(mub_btree_entry *entry);

/**
 * Takes an entry from the entry pool and initialises it with mub_btree_entry_init().
 *
 * @param[in,out] tree  the tree
 * @param[in] level     selects the pool of the children: below 1 the node pool, else the entry pool; it is
 *                      not stored in the entry
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the new entry is a block of the entry pool; no parent refers to it yet
 * @invalidates nothing
 * @level low
 */
MUB_API mub_btree_entry *mub_btree_entry_new(mub_btree *tree, int level);

/**
 * Clears a record: key, links and value.
 *
 * @param[out] node  the record
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btree_node_init(mub_btree_node *node);

/**
 * Compares an entry's key with a key.
 *
 * @param[in] tree    the tree
 * @param[in] entry   an entry of the tree: a leaf or an inner node
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key, used as given
 * @return negative if the stored key is less, 0 if equal, positive if greater: the difference of the first
 *   bytes that differ, or else of the lengths, truncated to 32 bits
 * @cost O(length)
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API int mub_btree_entry_compare(const mub_btree *tree, const mub_btree_entry *entry, const void *key,
                                    int64_t length);

/**
 * Compares the keys of two entries.
 *
 * @param[in] tree    the tree
 * @param[in] a       one entry
 * @param[in] b       the other entry
 * @param[in] unused  not used; it makes the signature that of the other comparison functions
 * @return negative if the key of `a` is less, 0 if equal, positive if greater: the difference of the first
 *   bytes that differ, or else of the lengths, truncated to 32 bits
 * @cost O(length of the shorter key)
 * @level low
 */
MUB_API int mub_btree_entrys_compare(const mub_btree *tree, const mub_btree_entry *a,
                                     const mub_btree_entry *b, int64_t unused);

/**
 * Compares a record's key with a key.
 *
 * @param[in] tree    the tree
 * @param[in] node    a record of the tree
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key, used as given
 * @return negative if the stored key is less, 0 if equal, positive if greater: the difference of the first
 *   bytes that differ, or else of the lengths, truncated to 32 bits
 * @cost O(length)
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API int mub_btree_node_compare(const mub_btree *tree, const mub_btree_node *node, const void *key,
                                   int64_t length);

/**
 * Sets an entry's key, its name, to that of its last child, and likewise those of its ancestors, up to the
 * first whose key is already correct. If the key of `entry` itself is already correct, or `entry` has no
 * children, nothing changes.
 *
 * @param[in] tree       the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(length of the keys * log n)
 * @threads writes to nodes of the tree, although that is const: needs exclusive access
 * @level low
 */
MUB_API void mub_btree_set_name(const mub_btree *tree, mub_btree_entry *entry);

/**
 * Sets the `parent` of all children of an inner node to that node. Does nothing for a leaf.
 *
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(children)
 * @level low
 */
MUB_API void mub_btree_set_parent(mub_btree_entry *entry);

/**
 * Links a record with its neighbours: inserts it before the next record of the leaf or, if it is the last of
 * the leaf, after the previous one.
 *
 * The neighbours' links must be valid. The only record of a leaf is unchanged.
 *
 * @param[in,out] leaf  an entry of level 0
 * @param[in] index     the record's index in the leaf
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btree_set_next(mub_btree_entry *leaf, int64_t index);

/**
 * Stores the tree's pools in an entry: the node pool in a leaf, the entry pool in an inner node and in all
 * inner nodes below it.
 *
 * @param[in] tree       the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(inner nodes below)
 * @threads writes to nodes of the tree, although that is const: needs exclusive access
 * @level low
 */
MUB_API void mub_btree_set_pool(const mub_btree *tree, mub_btree_entry *entry);

/**
 * Moves the upper half of an entry's children to a new entry of the same level and parent, without adding it
 * to the parent's children.
 *
 * Both entries take the keys of their last children. With fewer than two children, `entry` is left empty and
 * keeps its key: once the new entry is in the parent, a search may stop at `entry` and miss a key of the new
 * one.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @return the new entry
 * @failure NULL if memory ran out; nothing is then moved
 * @owner the new entry is a block of the entry pool; its parent does not refer to it yet
 * @invalidates the tree's cursors
 * @cost O(children)
 * @level low
 */
MUB_API mub_btree_entry *mub_btree_split_entry(mub_btree *tree, mub_btree_entry *entry);

/**
 * Moves the upper half of a leaf's records to a new leaf of the same parent, without adding it to the
 * parent's children.
 *
 * Both entries take the keys of their last children. With fewer than two children, `entry` is left empty and
 * keeps its key: once the new entry is in the parent, a search may stop at `entry` and miss a key of the new
 * one.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  a leaf of the tree
 * @return the new leaf
 * @failure NULL if memory ran out; nothing is then moved
 * @owner the new leaf is a block of the entry pool; its parent does not refer to it yet
 * @invalidates the tree's cursors
 * @cost O(children)
 * @level low
 */
MUB_API mub_btree_entry *mub_btree_split_node(mub_btree *tree, mub_btree_entry *entry);

/**
 * Splits an entry and inserts the new entry after it in the parent, which is split in turn if it then has
 * more than 31 children.
 *
 * If the root is split, its children move to two new entries below it. With fewer than two children, the
 * lower half is empty, as after mub_btree_split_entry().
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @failure if memory runs out, the entry that was to be split next is unchanged; splits made before remain
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API void mub_btree_split(mub_btree *tree, mub_btree_entry *entry);

/**
 * Descends to the leaf that holds a key or would hold it.
 *
 * @param[in] tree    the tree
 * @param[in] entry   where to start
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(length log n)
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API mub_btree_entry *mub_btree_find_t(const mub_btree *tree, const mub_btree_entry *entry,
                                          const void *key, int64_t length);

/**
 * Adds a key with value 0 to a leaf unless the leaf contains it.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] leaf   the leaf that mub_btree_find_t() gives for the key
 * @param[in] key        the bytes of the key; NULL is the empty key
 * @param[in] length     bytes of the key; negative: up to its first NUL
 * @param[out] node_out  receives the record, new or not; NULL if memory ran out
 * @return 1 if the record is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates the tree's cursors, and pointers to keys
 * @cost O(length log n), amortised, up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 * @level low
 */
MUB_API int mub_btree_insert_t(mub_btree *tree, mub_btree_entry *leaf, const void *key, int64_t length,
                               mub_btree_node **node_out);

/**
 * Lowers the key offsets of the records and entries below an entry after key bytes were removed from the key
 * stream.
 *
 * The entry's own key is unchanged.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @param[in] offset     where the bytes were; offsets from there on are lowered, except that of an empty key
 *                       at `offset` itself
 * @param[in] length     the number of bytes removed
 * @invalidates copies of the offsets that it lowers
 * @cost O(keys below)
 * @level low
 */
MUB_API void mub_btree_adjust_t(mub_btree *tree, mub_btree_entry *entry, uint32_t offset, uint32_t length);

/**
 * Removes an empty entry from its parent and returns it to the entry pool, and likewise each ancestor that
 * becomes empty.
 *
 * The keys of the remaining ancestors are set as by mub_btree_set_name(). The root is never removed; it
 * becomes a leaf when its last child is removed. Nothing happens if `entry` is the root.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an empty entry of the tree
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the entries removed are returned to their pool
 * @invalidates the entries removed, and the tree's cursors
 * @cost O(length of the keys * log n)
 * @level low
 */
MUB_API void mub_btree_remove_entry_t(mub_btree *tree, mub_btree_entry *entry);

/**
 * Removes what is below an entry, the records and the entries, and releases their tables of children and that
 * of the entry itself.
 *
 * Records and entries are returned to external pools. The tree's count, its keys and the entry's level are
 * unchanged. An inner node then has no leaf below it, and insertions there fail as if memory had run out.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what is below the entry is returned to external pools; in owned pools it stays allocated until they
 *   are emptied
 * @invalidates the records and entries below, and the tree's cursors
 * @cost O(keys below)
 * @level low
 */
MUB_API void mub_btree_remove_all_entry(mub_btree *tree, mub_btree_entry *entry);

/**
 * Does the same as mub_btree_remove_all_entry(), and releases each value that is not 0. `release` must not
 * use the tree.
 *
 * If the value pool is external, the values' blocks are returned to it.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @param[in] release    called with every value that is not 0, in key order; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   then as for mub_btree_remove_all_entry()
 * @invalidates the records and entries below, and the tree's cursors
 * @cost O(keys below)
 * @nullable release
 * @level low
 */
MUB_API void mub_btree_free_all_entry(mub_btree *tree, mub_btree_entry *entry, mub_free_fn release);

/**
 * Copies what is below an entry of one tree to an empty entry of another, in new blocks of the destination's
 * pools.
 *
 * Values, links and key offsets are copied unchanged: the destination's key stream must hold the same bytes.
 * The count of the destination is unchanged.
 *
 * @param[in] source                 the tree to copy; it does not change
 * @param[in] source_entry           the entry to copy from
 * @param[in,out] destination        the tree to copy to
 * @param[in,out] destination_entry  an entry of `destination` without children; receives the level and the
 *                                   key
 * @return 1
 * @failure 0 if memory ran out; the entry is then empty
 * @owner the copies belong to the destination; values are copied as words
 * @invalidates the cursors of the destination
 * @cost O(keys below)
 * @level low
 */
MUB_API int mub_btree_clone_entry(const mub_btree *source, const mub_btree_entry *source_entry,
                                  mub_btree *destination, mub_btree_entry *destination_entry);

/** @} */

/**
 * @defgroup btreed mub_btreed: an ordered map from 32-bit numbers to 64-bit values
 *
 * An ordered map whose keys are 32-bit numbers. `key_type` determines how keys are compared: MUB_KEY_INT32 as
 * signed, MUB_KEY_UINT32 as unsigned, MUB_KEY_FLOAT as floating-point numbers. With any other type all keys
 * are equal, so only one can be inserted. Pass the bits of a floating-point key. 0.0 and -0.0 are one key. A
 * NaN is equal to every key: do not insert one.
 *
 * @{
 */

/** A value of `key_type`: keys compare as 32-bit signed numbers. */
#define MUB_KEY_INT32 1
/** A value of `key_type`: keys compare as 32-bit unsigned numbers. */
#define MUB_KEY_UINT32 2
/** A value of `key_type`: the bits of a key are those of a `float`. */
#define MUB_KEY_FLOAT 5

/**
 * A record: a key and its value.
 *
 * Its address does not change until it is removed, and is also that of its key.
 */
typedef struct mub_btreed_node {
  uint32_t key;                 /**< the key */
  struct mub_btreed_node *prev; /**< the previous record, NULL at the least key; see Links in mub_btree.h */
  struct mub_btreed_node *next; /**< the next record; NULL at the greatest key */
  uint64_t value;               /**< the caller's; may be changed in place */
} mub_btreed_node;

/** A node of the tree: a leaf or an inner node. */
typedef struct mub_btreed_entry {
  uint32_t key;                    /**< the key of the last child */
  int16_t level;                   /**< 0: a leaf of records; else an inner node of entries one level lower */
  struct mub_btreed_entry *parent; /**< the inner node above; NULL for the root */
  mub_arrays children;             /**< in key order; its `pool` is that of the children */
} mub_btreed_entry;

/** An ordered map whose keys are 32-bit numbers. */
typedef struct mub_btreed {
  mub_btreed_entry root;    /**< the top of the tree; a leaf while there are few keys */
  int64_t count;            /**< keys in the tree */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *node_pool;      /**< the pool of the records; NULL if there is none */
  uint16_t owns_node_pool;  /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
  uint32_t key_type;        /**< MUB_KEY_INT32 by default; set it before the first insertion */
} mub_btreed;

/** A position in a tree: at a record, before the first or after the last. */
typedef struct mub_btreed_cursor {
  const mub_btreed *tree; /**< the tree */
  mub_btreed_entry *leaf; /**< the leaf of the position; NULL in an empty tree */
  int64_t index;          /**< index in the leaf; -1 before the first, `children.count` after the last */
} mub_btreed_cursor;

/**
 * Initialises an empty tree of signed keys, with `key_type` MUB_KEY_INT32.
 *
 * The root has room for 32 children.
 *
 * @param[out] tree            the tree
 * @param[in] with_entry_pool  not 0: create an entry pool that the tree owns
 * @param[in] with_node_pool   not 0: create a node pool that the tree owns
 * @param[in] with_value_pool  not 0: create a value pool that the tree owns
 * @return the tree
 * @failure none; if memory runs out, the root has no room for children yet, and the field of a missing pool
 *   is NULL and its flag 0
 * @owner the struct belongs to the caller; the pools created here belong to the tree until mub_btreed_term()
 * @invalidates nothing
 */
MUB_API mub_btreed *mub_btreed_init(mub_btreed *tree, int with_entry_pool, int with_node_pool,
                                    int with_value_pool);

/**
 * Releases everything that the tree owns.
 *
 * Entries and records are returned to external pools. No function is called for the values; an owned value
 * pool is released with its blocks. `key_type` is unchanged.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the tree owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all records and entries, all value blocks of an owned pool, and the tree's cursors
 * @cost O(entries), and one release per chunk and page of the owned pools; O(keys) with an external node
 *   pool
 */
MUB_API mub_btreed *mub_btreed_term(mub_btreed *tree);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the key
 * @param[in] value     any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates the tree's cursors
 * @cost O(log n)
 */
MUB_API int mub_btreed_insert(mub_btreed *tree, uint32_t key, uint64_t value);

/**
 * Finds the value of a key, or adds the key with a block of the value pool.
 *
 * @param[in,out] tree    the tree
 * @param[in] key         the key
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the record but before it is stored
 *                        in `*value_out`; NULL: not called
 * @return 1 if the key is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the tree: a block of the value pool, or the word already stored
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @nullable init
 */
MUB_API int mub_btreed_set(mub_btreed *tree, uint32_t key, uint64_t *value_out, mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the value
 * @failure 0 if the key is absent; use mub_btreed_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the tree
 * @cost O(log n)
 */
MUB_API uint64_t mub_btreed_get(const mub_btreed *tree, uint32_t key);

/**
 * Looks up the values of many keys. In a large tree, this takes a fraction of the time of the same number of
 * calls to mub_btreed_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] tree         the tree
 * @param[in] keys         the keys
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_btreed_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the tree
 * @cost O(count log n)
 * @bounds keys[count], values_out[count]
 */
MUB_API int64_t mub_btreed_get_many(const mub_btreed *tree, const uint32_t *keys, int64_t count,
                                    uint64_t *values_out);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the key
 * @param[in] value     any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API uint64_t mub_btreed_update(mub_btreed *tree, uint32_t key, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return 1 if it is, else 0
 * @cost O(log n)
 */
MUB_API int mub_btreed_find(const mub_btreed *tree, uint32_t key);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the key
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the record is returned to its pool
 * @invalidates the record of the key, entries that become empty, the links of the neighbouring records, and
 *   the tree's cursors
 * @cost O(log n)
 */
MUB_API uint64_t mub_btreed_remove(mub_btreed *tree, uint32_t key);

/**
 * Empties the tree; it can be used again.
 *
 * Entries and records are returned to external pools and owned pools are emptied. No function is called for
 * the values; emptying an owned value pool releases its blocks.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries and records are returned to their pools, value blocks of an owned value pool are released as
 *   it is emptied, and other values remain the caller's
 * @invalidates all records and entries, all value blocks of an owned pool, and the tree's cursors
 * @cost O(entries); O(keys) with an external node pool
 */
MUB_API mub_btreed *mub_btreed_remove_all(mub_btreed *tree);

/**
 * Empties the tree like mub_btreed_remove_all(), and releases every value that is not 0. `release` must not
 * use the tree, parts of which are already gone when it is called.
 *
 * If the value pool is external, the values' blocks are returned to it.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called with every value that is not 0, in key order; NULL: not called
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries and records are returned to their pools
 * @invalidates all records and entries, the values, and the tree's cursors
 * @cost O(keys)
 * @nullable release
 */
MUB_API mub_btreed *mub_btreed_free_all(mub_btreed *tree, mub_free_fn release);

/**
 * Finds the record of a key, or adds one with value 0.
 *
 * Set its `value` directly.
 *
 * @param[in,out] tree   the tree
 * @param[in] key        the key
 * @param[out] node_out  receives the record; NULL if memory ran out
 * @return 1 if the record is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates the tree's cursors
 * @cost O(log n)
 */
MUB_API int mub_btreed_node_set(mub_btreed *tree, uint32_t key, mub_btreed_node **node_out);

/**
 * Finds the record of a key.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the record
 * @failure NULL if the key is absent
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_get(const mub_btreed *tree, uint32_t key);

/**
 * Finds the record of a key; the same as mub_btreed_node_get().
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the record
 * @failure NULL if the key is absent
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_find(const mub_btreed *tree, uint32_t key);

/**
 * Finds the record of a key. If the key is absent, finds the record with the next greater key or, for a key
 * above all keys, the one with the greatest.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_bfind(const mub_btreed *tree, uint32_t key);

/**
 * Finds the record with the least key.
 *
 * @param[in] tree  the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_first(const mub_btreed *tree);

/**
 * Finds the record with the greatest key.
 *
 * @param[in] tree  the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_last(const mub_btreed *tree);

/**
 * Finds the next record in key order, even after removals.
 *
 * To iterate over a tree, use a cursor, which is faster.
 *
 * @param[in] tree  the tree
 * @param[in] node  a record of the tree
 * @return the record
 * @failure NULL at the end
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_next(const mub_btreed *tree, const mub_btreed_node *node);

/**
 * Finds the previous record in key order, even after removals.
 *
 * To iterate over a tree, use a cursor, which is faster.
 *
 * @param[in] tree  the tree
 * @param[in] node  a record of the tree
 * @return the record
 * @failure NULL at the beginning
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_node_prev(const mub_btreed *tree, const mub_btreed_node *node);

/**
 * Sets a cursor to the record with the least key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_cursor_first(mub_btreed_cursor *cursor, const mub_btreed *tree);

/**
 * Sets a cursor to the record with the greatest key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_cursor_last(mub_btreed_cursor *cursor, const mub_btreed *tree);

/**
 * Sets a cursor to the first record whose key is not less than the given key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @param[in] key      the key
 * @return the record
 * @failure NULL if all keys are less; the cursor is then after the last record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btreed_node *mub_btreed_cursor_seek(mub_btreed_cursor *cursor, const mub_btreed *tree,
                                                uint32_t key);

/**
 * Advances to the next record in key order.
 *
 * A cursor before the first record moves to the first.
 *
 * @param[in,out] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL at the end; the cursor is then after the last record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(1) on average
 */
MUB_API mub_btreed_node *mub_btreed_cursor_next(mub_btreed_cursor *cursor);

/**
 * Moves back to the previous record in key order.
 *
 * A cursor after the last record moves to the last.
 *
 * @param[in,out] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL at the beginning; the cursor is then before the first record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(1) on average
 */
MUB_API mub_btreed_node *mub_btreed_cursor_prev(mub_btreed_cursor *cursor);

/**
 * Gets the record at a cursor.
 *
 * @param[in] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL before the first record and after the last one
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 */
MUB_API mub_btreed_node *mub_btreed_cursor_node(const mub_btreed_cursor *cursor);

/**
 * Descends along the first children to a leaf.
 *
 * @param[in] entry  an entry of any level
 * @return the first leaf below the entry; the entry itself if it is a leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btreed_entry *mub_btreed_first_entry(const mub_btreed_entry *entry);

/**
 * Descends along the last children to a leaf.
 *
 * @param[in] entry  an entry of any level
 * @return the last leaf below the entry; the entry itself if it is a leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btreed_entry *mub_btreed_last_entry(const mub_btreed_entry *entry);

/**
 * Swaps two trees, including their pools.
 *
 * The `key_type` fields are not exchanged.
 *
 * @param[in,out] a  one tree
 * @param[in,out] b  the other tree
 * @owner what one tree owned now belongs to the other
 * @invalidates the cursors of both trees
 * @cost O(inner nodes of both trees)
 */
MUB_API void mub_btreed_swap(mub_btreed *a, mub_btreed *b);

/**
 * Copies a tree.
 *
 * Pools that the source owns are copied into those of the destination: entries, records and value blocks have
 * the same chunk and offset there, and addresses are translated. A value that is not an address in the
 * source's value pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries and records get new blocks of external
 * pools. If the source does not own a value pool, values are copied as words, so both trees refer to the same
 * blocks.
 *
 * The `prev` and `next` links of the copied records still point into the source: use a cursor to iterate over
 * a clone. The destination's `key_type` is unchanged. A user pool is cloned only if both user pools and
 * `callback` are given.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised tree, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every record in key order if the source owns its value
 *                                       pool; NULL: not called
 * @return the number of keys
 * @failure 0 if memory ran out; the destination is then empty
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   trees
 * @invalidates all records and entries of the destination, its cursors, and all blocks of its own pools and
 *   of a `destination_user_pool` that is overwritten
 * @cost O(keys), and one copy per chunk of the owned pools
 * @threads an external entry pool or node pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API int64_t mub_btreed_clone(const mub_btreed *source, mub_pool *source_user_pool,
                                 mub_btreed *destination, mub_pool *destination_user_pool,
                                 mub_clone_fn callback);

/**
 * Checks whether the tree is intact.
 *
 * Checks the levels, parents and tables of all entries, the keys of all but the root, the order of the keys,
 * the count, the pools that the tree owns, and the fields and tables of external ones. `prev` and `next` of
 * the records are not checked. It visits every entry and record, and terminates even if calls to the library
 * have damaged the tree. It cannot detect a pointer to other memory in place of an entry or a block, and
 * follows it. Keys are compared with the present `key_type`, which mub_btreed_swap() and mub_btreed_clone()
 * do not transfer.
 *
 * @param[in] tree   the tree
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the tree is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(keys), and that of mub_pool_verify() for each pool that the tree owns
 * @nullable what
 */
MUB_API int mub_btreed_verify(const mub_btreed *tree, const char **what);

/**
 * Returns the size of the heap memory that the tree holds.
 *
 * Counts the tables of all entries and the pools that the tree owns, as requested from `malloc`; not the
 * struct itself. Blocks of external pools are not counted.
 *
 * @param[in] tree  the tree
 * @return the number of bytes
 * @failure none
 * @cost O(entries + free pages of the pools)
 */
MUB_API int64_t mub_btreed_memory_bytes(const mub_btreed *tree);

/**
 * Compares two keys.
 *
 * @param[in] a         the address of a key, or of a record, which begins with its key; need not be aligned
 * @param[in] b         the address of the other key or record
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if `a` is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreed_var_compare(const void *a, const void *b, uint32_t key_type);

/**
 * Compares an entry's key with the key at an address.
 *
 * @param[in] entry     an entry of the tree: a leaf or an inner node
 * @param[in] key       the address of a key; need not be aligned
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if the stored key is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreed_entry_compare(const mub_btreed_entry *entry, const void *key, uint32_t key_type);

/**
 * Compares the keys of two entries.
 *
 * @param[in] a         one entry
 * @param[in] b         the other entry
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if the key of `a` is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreed_entrys_compare(const mub_btreed_entry *a, const mub_btreed_entry *b,
                                      uint32_t key_type);

/**
 * Compares a record's key with the key at an address.
 *
 * @param[in] node      a record of the tree
 * @param[in] key       the address of a key; need not be aligned
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if the stored key is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreed_node_compare(const mub_btreed_node *node, const void *key, uint32_t key_type);

/**
 * Initialises a block as an empty leaf: key 0, no parent, room for 32 children, no pool for the children.
 *
 * @param[out] entry  the block
 * @failure the leaf has no room for children if memory runs out
 * @owner the table of children belongs to the entry
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btreed_entry_init(mub_btreed_entry *entry);

/**
 * Takes an entry from the entry pool and initialises it with mub_btreed_entry_init().
 *
 * @param[in,out] tree  the tree
 * @param[in] level     selects the pool of the children: below 1 the node pool, else the entry pool; it is
 *                      not stored in the entry
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the new entry is a block of the entry pool; no parent refers to it yet
 * @invalidates nothing
 * @level low
 */
MUB_API mub_btreed_entry *mub_btreed_entry_new(mub_btreed *tree, int level);

/**
 * Clears a record: key, links and value.
 *
 * @param[out] node  the record
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btreed_node_init(mub_btreed_node *node);

/**
 * Sets an entry's key, its name, to that of its last child, and likewise those of its ancestors, up to the
 * first whose key is already correct. If the key of `entry` itself is already correct, or `entry` has no
 * children, nothing changes.
 *
 * @param[in] tree       the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(log n)
 * @threads writes to nodes of the tree, although that is const: needs exclusive access
 * @level low
 */
MUB_API void mub_btreed_set_name(const mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Sets the `parent` of all children of an inner node to that node. Does nothing for a leaf.
 *
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(children)
 * @level low
 */
MUB_API void mub_btreed_set_parent(mub_btreed_entry *entry);

/**
 * Links a record with its neighbours: inserts it before the next record of the leaf or, if it is the last of
 * the leaf, after the previous one.
 *
 * The neighbours' links must be valid. The only record of a leaf is unchanged.
 *
 * @param[in,out] leaf  an entry of level 0
 * @param[in] index     the record's index in the leaf
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btreed_set_next(mub_btreed_entry *leaf, int64_t index);

/**
 * Stores the tree's pools in an entry: the node pool in a leaf, the entry pool in an inner node and in all
 * inner nodes below it.
 *
 * @param[in] tree       the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(inner nodes below)
 * @threads writes to nodes of the tree, although that is const: needs exclusive access
 * @level low
 */
MUB_API void mub_btreed_set_pool(const mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Moves the upper half of an entry's children to a new entry of the same level and parent, without adding it
 * to the parent's children.
 *
 * Both entries take the keys of their last children. With fewer than two children, `entry` is left empty and
 * keeps its key: once the new entry is in the parent, a search may stop at `entry` and miss a key of the new
 * one.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @return the new entry
 * @failure NULL if memory ran out; nothing is then moved
 * @owner the new entry is a block of the entry pool; its parent does not refer to it yet
 * @invalidates the tree's cursors
 * @cost O(children)
 * @level low
 */
MUB_API mub_btreed_entry *mub_btreed_split_entry(mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Moves the upper half of a leaf's records to a new leaf of the same parent, without adding it to the
 * parent's children.
 *
 * Both entries take the keys of their last children. With fewer than two children, `entry` is left empty and
 * keeps its key: once the new entry is in the parent, a search may stop at `entry` and miss a key of the new
 * one.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  a leaf of the tree
 * @return the new leaf
 * @failure NULL if memory ran out; nothing is then moved
 * @owner the new leaf is a block of the entry pool; its parent does not refer to it yet
 * @invalidates the tree's cursors
 * @cost O(children)
 * @level low
 */
MUB_API mub_btreed_entry *mub_btreed_split_node(mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Splits an entry and inserts the new entry after it in the parent, which is split in turn if it then has
 * more than 31 children.
 *
 * If the root is split, its children move to two new entries below it. With fewer than two children, the
 * lower half is empty, as after mub_btreed_split_entry().
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @failure if memory runs out, the entry that was to be split next is unchanged; splits made before remain
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API void mub_btreed_split(mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Descends to the leaf that holds a key or would hold it.
 *
 * @param[in] tree   the tree
 * @param[in] entry  where to start
 * @param[in] key    the key
 * @return the leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btreed_entry *mub_btreed_find_t(const mub_btreed *tree, const mub_btreed_entry *entry,
                                            uint32_t key);

/**
 * Adds a key with value 0 to a leaf unless the leaf contains it.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] leaf   the leaf that mub_btreed_find_t() gives for the key
 * @param[in] key        the key
 * @param[out] node_out  receives the record, new or not; NULL if memory ran out
 * @return 1 if the record is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API int mub_btreed_insert_t(mub_btreed *tree, mub_btreed_entry *leaf, uint32_t key,
                                mub_btreed_node **node_out);

/**
 * Removes an empty entry from its parent and returns it to the entry pool, and likewise each ancestor that
 * becomes empty.
 *
 * The keys of the remaining ancestors are set as by mub_btreed_set_name(). The root is never removed; it
 * becomes a leaf when its last child is removed. Nothing happens if `entry` is the root.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an empty entry of the tree
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the entries removed are returned to their pool
 * @invalidates the entries removed, and the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API void mub_btreed_remove_entry_t(mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Removes what is below an entry, the records and the entries, and releases their tables of children and that
 * of the entry itself.
 *
 * Records and entries are returned to external pools. The tree's count, its keys and the entry's level are
 * unchanged. An inner node then has no leaf below it, and insertions there fail as if memory had run out.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what is below the entry is returned to external pools; in owned pools it stays allocated until they
 *   are emptied
 * @invalidates the records and entries below, and the tree's cursors
 * @cost O(keys below)
 * @level low
 */
MUB_API void mub_btreed_remove_all_entry(mub_btreed *tree, mub_btreed_entry *entry);

/**
 * Does the same as mub_btreed_remove_all_entry(), and releases each value that is not 0. `release` must not
 * use the tree.
 *
 * If the value pool is external, the values' blocks are returned to it.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @param[in] release    called with every value that is not 0, in key order; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   then as for mub_btreed_remove_all_entry()
 * @invalidates the records and entries below, and the tree's cursors
 * @cost O(keys below)
 * @nullable release
 * @level low
 */
MUB_API void mub_btreed_free_all_entry(mub_btreed *tree, mub_btreed_entry *entry, mub_free_fn release);

/**
 * Copies what is below an entry of one tree to an empty entry of another, in new blocks of the destination's
 * pools.
 *
 * Values and links are copied unchanged. The count of the destination is unchanged.
 *
 * @param[in] source                 the tree to copy; it does not change
 * @param[in] source_entry           the entry to copy from
 * @param[in,out] destination        the tree to copy to
 * @param[in,out] destination_entry  an entry of `destination` without children; receives the level and the
 *                                   key
 * @return 1
 * @failure 0 if memory ran out; the entry is then empty
 * @owner the copies belong to the destination; values are copied as words
 * @invalidates the cursors of the destination
 * @cost O(keys below)
 * @level low
 */
MUB_API int mub_btreed_clone_entry(const mub_btreed *source, const mub_btreed_entry *source_entry,
                                   mub_btreed *destination, mub_btreed_entry *destination_entry);

/** @} */

/**
 * @defgroup btreex mub_btreex: an ordered map from 64-bit numbers to 64-bit values
 *
 * An ordered map whose keys are 64-bit numbers. `key_type` determines how keys are compared: MUB_KEY_INT64 as
 * signed, MUB_KEY_UINT64 as unsigned, MUB_KEY_DOUBLE as floating-point numbers, of which none may be a NaN.
 * Otherwise like mub_btreed.
 *
 * @{
 */

/** A value of `key_type`: keys compare as 64-bit signed numbers. */
#define MUB_KEY_INT64 3
/** A value of `key_type`: keys compare as 64-bit unsigned numbers. */
#define MUB_KEY_UINT64 4
/** A value of `key_type`: the bits of a key are those of a `double`. */
#define MUB_KEY_DOUBLE 6

/**
 * A record: a key and its value.
 *
 * Its address does not change until it is removed, and is also that of its key.
 */
typedef struct mub_btreex_node {
  uint64_t key;                 /**< the key */
  struct mub_btreex_node *prev; /**< the previous record, NULL at the least key; see Links in mub_btree.h */
  struct mub_btreex_node *next; /**< the next record; NULL at the greatest key */
  uint64_t value;               /**< the caller's; may be changed in place */
} mub_btreex_node;

/** A node of the tree: a leaf or an inner node. */
typedef struct mub_btreex_entry {
  uint64_t key;                    /**< the key of the last child */
  int16_t level;                   /**< 0: a leaf of records; else an inner node of entries one level lower */
  struct mub_btreex_entry *parent; /**< the inner node above; NULL for the root */
  mub_arrays children;             /**< in key order; its `pool` is that of the children */
} mub_btreex_entry;

/** An ordered map whose keys are 64-bit numbers. */
typedef struct mub_btreex {
  mub_btreex_entry root;    /**< the top of the tree; a leaf while there are few keys */
  int64_t count;            /**< keys in the tree */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *node_pool;      /**< the pool of the records; NULL if there is none */
  uint16_t owns_node_pool;  /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
  uint32_t key_type;        /**< MUB_KEY_INT64 by default; set it before the first insertion */
} mub_btreex;

/** A position in a tree: at a record, before the first or after the last. */
typedef struct mub_btreex_cursor {
  const mub_btreex *tree; /**< the tree */
  mub_btreex_entry *leaf; /**< the leaf of the position; NULL in an empty tree */
  int64_t index;          /**< index in the leaf; -1 before the first, `children.count` after the last */
} mub_btreex_cursor;

/**
 * Initialises an empty tree of signed keys, with `key_type` MUB_KEY_INT64.
 *
 * The root has room for 32 children.
 *
 * @param[out] tree            the tree
 * @param[in] with_entry_pool  not 0: create an entry pool that the tree owns
 * @param[in] with_node_pool   not 0: create a node pool that the tree owns
 * @param[in] with_value_pool  not 0: create a value pool that the tree owns
 * @return the tree
 * @failure none; if memory runs out, the root has no room for children yet, and the field of a missing pool
 *   is NULL and its flag 0
 * @owner the struct belongs to the caller; the pools created here belong to the tree until mub_btreex_term()
 * @invalidates nothing
 */
MUB_API mub_btreex *mub_btreex_init(mub_btreex *tree, int with_entry_pool, int with_node_pool,
                                    int with_value_pool);

/**
 * Releases everything that the tree owns.
 *
 * Entries and records are returned to external pools. No function is called for the values; an owned value
 * pool is released with its blocks. `key_type` is unchanged.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the tree owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all records and entries, all value blocks of an owned pool, and the tree's cursors
 * @cost O(entries), and one release per chunk and page of the owned pools; O(keys) with an external node
 *   pool
 */
MUB_API mub_btreex *mub_btreex_term(mub_btreex *tree);

/**
 * Adds a key with a value unless the key is present.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the key
 * @param[in] value     any 64-bit word, 0 included
 * @return 1 if added
 * @failure 0 if the key was present, whose value is unchanged, or if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates the tree's cursors
 * @cost O(log n)
 */
MUB_API int mub_btreex_insert(mub_btreex *tree, uint64_t key, uint64_t value);

/**
 * Finds the value of a key, or adds the key with a block of the value pool.
 *
 * @param[in,out] tree    the tree
 * @param[in] key         the key
 * @param[out] value_out  receives the value: the new block, 0 if there is none, or the value already stored
 * @param[in] init        called with the new block, after it is stored in the record but before it is stored
 *                        in `*value_out`; NULL: not called
 * @return 1 if the key is new, even if no value block could be allocated for it
 * @failure 0 if the key was present, or if memory ran out; `*value_out` is 0 in the latter case
 * @owner the value stays in the tree: a block of the value pool, or the word already stored
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @nullable init
 */
MUB_API int mub_btreex_set(mub_btreex *tree, uint64_t key, uint64_t *value_out, mub_init_fn init);

/**
 * Looks up the value of a key.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the value
 * @failure 0 if the key is absent; use mub_btreex_find() to distinguish a stored 0 from a missing key
 * @owner the value stays in the tree
 * @cost O(log n)
 */
MUB_API uint64_t mub_btreex_get(const mub_btreex *tree, uint64_t key);

/**
 * Looks up the values of many keys. In a large tree, this takes a fraction of the time of the same number of
 * calls to mub_btreex_get(), because the cache misses of the look-ups overlap.
 *
 * @param[in] tree         the tree
 * @param[in] keys         the keys
 * @param[in] count        number of keys; below 1: nothing is done
 * @param[out] values_out  what mub_btreex_get() returns for each key; must not overlap the keys
 * @return how many of the keys are present; a key that occurs twice counts twice
 * @failure none
 * @owner the values stay in the tree
 * @cost O(count log n)
 * @bounds keys[count], values_out[count]
 */
MUB_API int64_t mub_btreex_get_many(const mub_btreex *tree, const uint64_t *keys, int64_t count,
                                    uint64_t *values_out);

/**
 * Replaces the value of a key that is present.
 *
 * An absent key is not added.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the key
 * @param[in] value     any 64-bit word, 0 included
 * @return the previous value
 * @failure 0 if the key is absent
 * @owner the previous value is returned and not released; the new one is stored as is
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API uint64_t mub_btreex_update(mub_btreex *tree, uint64_t key, uint64_t value);

/**
 * Checks whether a key is present.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return 1 if it is, else 0
 * @cost O(log n)
 */
MUB_API int mub_btreex_find(const mub_btreex *tree, uint64_t key);

/**
 * Removes a key and returns its value, which is not released.
 *
 * @param[in,out] tree  the tree
 * @param[in] key       the key
 * @return the value
 * @failure 0 if the key is absent; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the record is returned to its pool
 * @invalidates the record of the key, entries that become empty, the links of the neighbouring records, and
 *   the tree's cursors
 * @cost O(log n)
 */
MUB_API uint64_t mub_btreex_remove(mub_btreex *tree, uint64_t key);

/**
 * Empties the tree; it can be used again.
 *
 * Entries and records are returned to external pools and owned pools are emptied. No function is called for
 * the values; emptying an owned value pool releases its blocks.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries and records are returned to their pools, value blocks of an owned value pool are released as
 *   it is emptied, and other values remain the caller's
 * @invalidates all records and entries, all value blocks of an owned pool, and the tree's cursors
 * @cost O(entries); O(keys) with an external node pool
 */
MUB_API mub_btreex *mub_btreex_remove_all(mub_btreex *tree);

/**
 * Empties the tree like mub_btreex_remove_all(), and releases every value that is not 0. `release` must not
 * use the tree, parts of which are already gone when it is called.
 *
 * If the value pool is external, the values' blocks are returned to it.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called with every value that is not 0, in key order; NULL: not called
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries and records are returned to their pools
 * @invalidates all records and entries, the values, and the tree's cursors
 * @cost O(keys)
 * @nullable release
 */
MUB_API mub_btreex *mub_btreex_free_all(mub_btreex *tree, mub_free_fn release);

/**
 * Finds the record of a key, or adds one with value 0.
 *
 * Set its `value` directly.
 *
 * @param[in,out] tree   the tree
 * @param[in] key        the key
 * @param[out] node_out  receives the record; NULL if memory ran out
 * @return 1 if the record is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates the tree's cursors
 * @cost O(log n)
 */
MUB_API int mub_btreex_node_set(mub_btreex *tree, uint64_t key, mub_btreex_node **node_out);

/**
 * Finds the record of a key.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the record
 * @failure NULL if the key is absent
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_get(const mub_btreex *tree, uint64_t key);

/**
 * Finds the record of a key; the same as mub_btreex_node_get().
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the record
 * @failure NULL if the key is absent
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_find(const mub_btreex *tree, uint64_t key);

/**
 * Finds the record of a key. If the key is absent, finds the record with the next greater key or, for a key
 * above all keys, the one with the greatest.
 *
 * @param[in] tree  the tree
 * @param[in] key   the key
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_bfind(const mub_btreex *tree, uint64_t key);

/**
 * Finds the record with the least key.
 *
 * @param[in] tree  the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_first(const mub_btreex *tree);

/**
 * Finds the record with the greatest key.
 *
 * @param[in] tree  the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_last(const mub_btreex *tree);

/**
 * Finds the next record in key order, even after removals.
 *
 * To iterate over a tree, use a cursor, which is faster.
 *
 * @param[in] tree  the tree
 * @param[in] node  a record of the tree
 * @return the record
 * @failure NULL at the end
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_next(const mub_btreex *tree, const mub_btreex_node *node);

/**
 * Finds the previous record in key order, even after removals.
 *
 * To iterate over a tree, use a cursor, which is faster.
 *
 * @param[in] tree  the tree
 * @param[in] node  a record of the tree
 * @return the record
 * @failure NULL at the beginning
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_node_prev(const mub_btreex *tree, const mub_btreex_node *node);

/**
 * Sets a cursor to the record with the least key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_cursor_first(mub_btreex_cursor *cursor, const mub_btreex *tree);

/**
 * Sets a cursor to the record with the greatest key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @return the record
 * @failure NULL if the tree is empty
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_cursor_last(mub_btreex_cursor *cursor, const mub_btreex *tree);

/**
 * Sets a cursor to the first record whose key is not less than the given key.
 *
 * @param[out] cursor  receives the position
 * @param[in] tree     the tree
 * @param[in] key      the key
 * @return the record
 * @failure NULL if all keys are less; the cursor is then after the last record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(log n)
 */
MUB_API mub_btreex_node *mub_btreex_cursor_seek(mub_btreex_cursor *cursor, const mub_btreex *tree,
                                                uint64_t key);

/**
 * Advances to the next record in key order.
 *
 * A cursor before the first record moves to the first.
 *
 * @param[in,out] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL at the end; the cursor is then after the last record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(1) on average
 */
MUB_API mub_btreex_node *mub_btreex_cursor_next(mub_btreex_cursor *cursor);

/**
 * Moves back to the previous record in key order.
 *
 * A cursor after the last record moves to the last.
 *
 * @param[in,out] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL at the beginning; the cursor is then before the first record
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates nothing
 * @cost O(1) on average
 */
MUB_API mub_btreex_node *mub_btreex_cursor_prev(mub_btreex_cursor *cursor);

/**
 * Gets the record at a cursor.
 *
 * @param[in] cursor  a cursor of a tree that has not changed since the cursor was set
 * @return the record
 * @failure NULL before the first record and after the last one
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 */
MUB_API mub_btreex_node *mub_btreex_cursor_node(const mub_btreex_cursor *cursor);

/**
 * Descends along the first children to a leaf.
 *
 * @param[in] entry  an entry of any level
 * @return the first leaf below the entry; the entry itself if it is a leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btreex_entry *mub_btreex_first_entry(const mub_btreex_entry *entry);

/**
 * Descends along the last children to a leaf.
 *
 * @param[in] entry  an entry of any level
 * @return the last leaf below the entry; the entry itself if it is a leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btreex_entry *mub_btreex_last_entry(const mub_btreex_entry *entry);

/**
 * Swaps two trees, including their pools.
 *
 * The `key_type` fields are not exchanged.
 *
 * @param[in,out] a  one tree
 * @param[in,out] b  the other tree
 * @owner what one tree owned now belongs to the other
 * @invalidates the cursors of both trees
 * @cost O(inner nodes of both trees)
 */
MUB_API void mub_btreex_swap(mub_btreex *a, mub_btreex *b);

/**
 * Copies a tree.
 *
 * Pools that the source owns are copied into those of the destination: entries, records and value blocks have
 * the same chunk and offset there, and addresses are translated. A value that is not an address in the
 * source's value pool becomes 0, and so do all values if the destination owns no value pool.
 *
 * If a pool field of the source holds an external pool or NULL, the destination's field is set to the same; a
 * pool that the destination owned in that field is destroyed. Entries and records get new blocks of external
 * pools. If the source does not own a value pool, values are copied as words, so both trees refer to the same
 * blocks.
 *
 * The `prev` and `next` links of the copied records still point into the source: use a cursor to iterate over
 * a clone. The destination's `key_type` is unchanged. A user pool is cloned only if both user pools and
 * `callback` are given.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised tree, usually with the same `owns_…` flags; its old
 *                                       contents are dropped
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every record in key order if the source owns its value
 *                                       pool; NULL: not called
 * @return the number of keys
 * @failure 0 if memory ran out; the destination is then empty
 * @owner the copy belongs to the destination; external pools, and value blocks in them, are shared by both
 *   trees
 * @invalidates all records and entries of the destination, its cursors, and all blocks of its own pools and
 *   of a `destination_user_pool` that is overwritten
 * @cost O(keys), and one copy per chunk of the owned pools
 * @threads an external entry pool or node pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API int64_t mub_btreex_clone(const mub_btreex *source, mub_pool *source_user_pool,
                                 mub_btreex *destination, mub_pool *destination_user_pool,
                                 mub_clone_fn callback);

/**
 * Checks whether the tree is intact.
 *
 * Checks the levels, parents and tables of all entries, the keys of all but the root, the order of the keys,
 * the count, the pools that the tree owns, and the fields and tables of external ones. `prev` and `next` of
 * the records are not checked. It visits every entry and record, and terminates even if calls to the library
 * have damaged the tree. It cannot detect a pointer to other memory in place of an entry or a block, and
 * follows it. Keys are compared with the present `key_type`, which mub_btreex_swap() and mub_btreex_clone()
 * do not transfer.
 *
 * @param[in] tree   the tree
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the tree is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(keys), and that of mub_pool_verify() for each pool that the tree owns
 * @nullable what
 */
MUB_API int mub_btreex_verify(const mub_btreex *tree, const char **what);

/**
 * Returns the size of the heap memory that the tree holds.
 *
 * Counts the tables of all entries and the pools that the tree owns, as requested from `malloc`; not the
 * struct itself. Blocks of external pools are not counted.
 *
 * @param[in] tree  the tree
 * @return the number of bytes
 * @failure none
 * @cost O(entries + free pages of the pools)
 */
MUB_API int64_t mub_btreex_memory_bytes(const mub_btreex *tree);

/**
 * Compares two keys.
 *
 * @param[in] a         the address of a key, or of a record, which begins with its key; need not be aligned
 * @param[in] b         the address of the other key or record
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if `a` is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreex_var_compare(const void *a, const void *b, uint32_t key_type);

/**
 * Compares an entry's key with the key at an address.
 *
 * @param[in] entry     an entry of the tree: a leaf or an inner node
 * @param[in] key       the address of a key; need not be aligned
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if the stored key is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreex_entry_compare(const mub_btreex_entry *entry, const void *key, uint32_t key_type);

/**
 * Compares the keys of two entries.
 *
 * @param[in] a         one entry
 * @param[in] b         the other entry
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if the key of `a` is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreex_entrys_compare(const mub_btreex_entry *a, const mub_btreex_entry *b,
                                      uint32_t key_type);

/**
 * Compares a record's key with the key at an address.
 *
 * @param[in] node      a record of the tree
 * @param[in] key       the address of a key; need not be aligned
 * @param[in] key_type  how the keys are compared, as in the tree's field; with any other type all keys are
 *                      equal
 * @return -1 if the stored key is less, 0 if equal, 1 if greater
 * @level low
 */
MUB_API int mub_btreex_node_compare(const mub_btreex_node *node, const void *key, uint32_t key_type);

/**
 * Initialises a block as an empty leaf: key 0, no parent, room for 32 children, no pool for the children.
 *
 * @param[out] entry  the block
 * @failure the leaf has no room for children if memory runs out
 * @owner the table of children belongs to the entry
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btreex_entry_init(mub_btreex_entry *entry);

/**
 * Takes an entry from the entry pool and initialises it with mub_btreex_entry_init().
 *
 * @param[in,out] tree  the tree
 * @param[in] level     selects the pool of the children: below 1 the node pool, else the entry pool; it is
 *                      not stored in the entry
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the new entry is a block of the entry pool; no parent refers to it yet
 * @invalidates nothing
 * @level low
 */
MUB_API mub_btreex_entry *mub_btreex_entry_new(mub_btreex *tree, int level);

/**
 * Clears a record: key, links and value.
 *
 * @param[out] node  the record
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btreex_node_init(mub_btreex_node *node);

/**
 * Sets an entry's key, its name, to that of its last child, and likewise those of its ancestors, up to the
 * first whose key is already correct. If the key of `entry` itself is already correct, or `entry` has no
 * children, nothing changes.
 *
 * @param[in] tree       the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(log n)
 * @threads writes to nodes of the tree, although that is const: needs exclusive access
 * @level low
 */
MUB_API void mub_btreex_set_name(const mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Sets the `parent` of all children of an inner node to that node. Does nothing for a leaf.
 *
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(children)
 * @level low
 */
MUB_API void mub_btreex_set_parent(mub_btreex_entry *entry);

/**
 * Links a record with its neighbours: inserts it before the next record of the leaf or, if it is the last of
 * the leaf, after the previous one.
 *
 * The neighbours' links must be valid. The only record of a leaf is unchanged.
 *
 * @param[in,out] leaf  an entry of level 0
 * @param[in] index     the record's index in the leaf
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_btreex_set_next(mub_btreex_entry *leaf, int64_t index);

/**
 * Stores the tree's pools in an entry: the node pool in a leaf, the entry pool in an inner node and in all
 * inner nodes below it.
 *
 * @param[in] tree       the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @invalidates nothing
 * @cost O(inner nodes below)
 * @threads writes to nodes of the tree, although that is const: needs exclusive access
 * @level low
 */
MUB_API void mub_btreex_set_pool(const mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Moves the upper half of an entry's children to a new entry of the same level and parent, without adding it
 * to the parent's children.
 *
 * Both entries take the keys of their last children. With fewer than two children, `entry` is left empty and
 * keeps its key: once the new entry is in the parent, a search may stop at `entry` and miss a key of the new
 * one.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @return the new entry
 * @failure NULL if memory ran out; nothing is then moved
 * @owner the new entry is a block of the entry pool; its parent does not refer to it yet
 * @invalidates the tree's cursors
 * @cost O(children)
 * @level low
 */
MUB_API mub_btreex_entry *mub_btreex_split_entry(mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Moves the upper half of a leaf's records to a new leaf of the same parent, without adding it to the
 * parent's children.
 *
 * Both entries take the keys of their last children. With fewer than two children, `entry` is left empty and
 * keeps its key: once the new entry is in the parent, a search may stop at `entry` and miss a key of the new
 * one.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  a leaf of the tree
 * @return the new leaf
 * @failure NULL if memory ran out; nothing is then moved
 * @owner the new leaf is a block of the entry pool; its parent does not refer to it yet
 * @invalidates the tree's cursors
 * @cost O(children)
 * @level low
 */
MUB_API mub_btreex_entry *mub_btreex_split_node(mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Splits an entry and inserts the new entry after it in the parent, which is split in turn if it then has
 * more than 31 children.
 *
 * If the root is split, its children move to two new entries below it. With fewer than two children, the
 * lower half is empty, as after mub_btreex_split_entry().
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @failure if memory runs out, the entry that was to be split next is unchanged; splits made before remain
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API void mub_btreex_split(mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Descends to the leaf that holds a key or would hold it.
 *
 * @param[in] tree   the tree
 * @param[in] entry  where to start
 * @param[in] key    the key
 * @return the leaf
 * @owner the entry is a block of the entry pool, or the root, and belongs to the tree
 * @cost O(log n)
 * @level low
 */
MUB_API mub_btreex_entry *mub_btreex_find_t(const mub_btreex *tree, const mub_btreex_entry *entry,
                                            uint64_t key);

/**
 * Adds a key with value 0 to a leaf unless the leaf contains it.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] leaf   the leaf that mub_btreex_find_t() gives for the key
 * @param[in] key        the key
 * @param[out] node_out  receives the record, new or not; NULL if memory ran out
 * @return 1 if the record is new
 * @failure 0 if the key was present, or if memory ran out
 * @owner the record is a block of the node pool and belongs to the tree until it is removed
 * @invalidates the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API int mub_btreex_insert_t(mub_btreex *tree, mub_btreex_entry *leaf, uint64_t key,
                                mub_btreex_node **node_out);

/**
 * Removes an empty entry from its parent and returns it to the entry pool, and likewise each ancestor that
 * becomes empty.
 *
 * The keys of the remaining ancestors are set as by mub_btreex_set_name(). The root is never removed; it
 * becomes a leaf when its last child is removed. Nothing happens if `entry` is the root.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an empty entry of the tree
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner the entries removed are returned to their pool
 * @invalidates the entries removed, and the tree's cursors
 * @cost O(log n)
 * @level low
 */
MUB_API void mub_btreex_remove_entry_t(mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Removes what is below an entry, the records and the entries, and releases their tables of children and that
 * of the entry itself.
 *
 * Records and entries are returned to external pools. The tree's count, its keys and the entry's level are
 * unchanged. An inner node then has no leaf below it, and insertions there fail as if memory had run out.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what is below the entry is returned to external pools; in owned pools it stays allocated until they
 *   are emptied
 * @invalidates the records and entries below, and the tree's cursors
 * @cost O(keys below)
 * @level low
 */
MUB_API void mub_btreex_remove_all_entry(mub_btreex *tree, mub_btreex_entry *entry);

/**
 * Does the same as mub_btreex_remove_all_entry(), and releases each value that is not 0. `release` must not
 * use the tree.
 *
 * If the value pool is external, the values' blocks are returned to it.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry of the tree: a leaf or an inner node
 * @param[in] release    called with every value that is not 0, in key order; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   then as for mub_btreex_remove_all_entry()
 * @invalidates the records and entries below, and the tree's cursors
 * @cost O(keys below)
 * @nullable release
 * @level low
 */
MUB_API void mub_btreex_free_all_entry(mub_btreex *tree, mub_btreex_entry *entry, mub_free_fn release);

/**
 * Copies what is below an entry of one tree to an empty entry of another, in new blocks of the destination's
 * pools.
 *
 * Values and links are copied unchanged. The count of the destination is unchanged.
 *
 * @param[in] source                 the tree to copy; it does not change
 * @param[in] source_entry           the entry to copy from
 * @param[in,out] destination        the tree to copy to
 * @param[in,out] destination_entry  an entry of `destination` without children; receives the level and the
 *                                   key
 * @return 1
 * @failure 0 if memory ran out; the entry is then empty
 * @owner the copies belong to the destination; values are copied as words
 * @invalidates the cursors of the destination
 * @cost O(keys below)
 * @level low
 */
MUB_API int mub_btreex_clone_entry(const mub_btreex *source, const mub_btreex_entry *source_entry,
                                   mub_btreex *destination, mub_btreex_entry *destination_entry);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
