/* mub_btree.h: ordered maps as B+-trees of order 32: mub_btree with byte strings as keys, mub_btreed with 32-bit
 * numbers, mub_btreex with 64-bit numbers.
 *
 *                    root  level 1  key "plum"          an entry is a node of the tree; its key is that of
 *                     │ children                        its last child, the greatest below it
 *          ┌──────────┴──────────┐
 *      level 0  key "fig"    level 0  key "plum"        entries of level 0 are the leaves: blocks of entry_pool
 *          │ children            │ children
 *       apple ⇄ fig       ⇄    pear ⇄ plum              a record (mub_btree_node) is a key and its value, in key
 *                                                       order on `prev` and `next`: blocks of node_pool
 *
 * Splits.  An entry that reaches 32 children splits: the lower half (of 32, 16) stays, the upper half moves to a new
 *          entry beside it. The tree grows in height only at the root, which is part of the tree's record and stays
 *          where it is. Removals do not rebalance: an entry goes when it is empty, and a tree that has lost its last
 *          key is a single empty leaf again.
 * Pools.   A tree needs an entry pool and a node pool before its first insertion: made by `_init`, or the caller's,
 *          written into the fields, of blocks at least as large as the records. Several trees may share a caller's
 *          pools. A value pool is wanted only by `_set`, which gives every new record a block of it. One made by
 *          `_init` has no block size yet: store the size of your values in `value_pool->block_size` first.
 * Chain.   `prev` and `next` are exact as long as nothing was removed since the tree was last empty, and it is no
 *          clone: a removal leaves the links of the neighbours as they are, and those of a clone point into its
 *          source. Insertions never follow such a link.
 * Cursors. A cursor walks the records in key order, whatever was removed or cloned before. It is a plain
 *          record of the caller's, with nothing to release; a step compares no keys and takes O(1) on
 *          average. It is valid until a key is added or removed, or the tree is emptied, swapped, cloned
 *          into or released: then seek again. Any number of cursors may walk one tree, also in several
 *          threads while nobody changes it.
 * Memory.  An insertion that runs out of memory is refused as a whole. Only a split may be missing: the entry then
 *          holds more than 31 children, and splits at the next insertion there.
 * Cost.    To find a key: O(log n). An insertion, too. Releasing a tree takes O(entries), however many records they
 *          hold, when it owns its pools. Nothing here recurses.
 *
 * Parameters, where a function does not say otherwise:
 *   tree                    the tree
 *   a, b                    the two trees
 *   entry                   an entry of the tree
 *   leaf                    an entry of level 0
 *   node                    a record of the tree
 *   value                   any word, 0 included
 *   source                  the tree to copy from; stays as it is
 *   source_entry            the entry to copy from
 *   destination             the tree to copy to
 *   destination_user_pool   the initialised pool that becomes the copy of `source_user_pool`; else NULL
 *
 * Failure, where a function does not say otherwise:
 *   memory   no memory is needed: a block given back for which its pool's free stack has no room is dropped: see
 *            mub_pool_free
 *
 * Ownership, where a function does not say otherwise:
 *   _init                      the record is the caller's; a pool made here is the tree's, until `_term`
 *   _term                      what the tree owns is released; values and a caller's pools stay the caller's
 *   _swap                      what one tree owned is the other's
 *   _clone                     the copy is the destination's; a caller's pool is shared by both, and values are then
 *                              copied as words
 *   _remove_all                entries and records are their pool's again; values are not released
 *   _free_all                  each value is handed to the caller's function, its block to a caller's value pool;
 *                              entries and records are their pool's again
 *   _remove_all_entry          what is below the entry goes back to a caller's pools; what lies in owned
 *                              pools stays there until they are emptied
 *   _free_all_entry            as after `_remove_all_entry`, each value having been handed to `release`, its block to
 *                              a caller's value pool
 *   _get                       the value stays in the tree
 *   _update                    the previous value is handed over, not released; the new one is kept as a word
 *   _set                       the value stays in the tree: a block of the value pool, or the word that stands
 *   _remove                    the value is handed over, not released; the record is its pool's again
 *   _entry_init                the table of children is the entry's
 *   _entry_new, _split_entry, _split_node   the new entry is a block of the entry pool; its parent does not refer to
 *                                           it yet
 *   _remove_entry_t            the entry is its pool's again
 *   _clone_entry               the copies are the destination's; values are copied as words
 *   value                      kept as a word; what it stands for stays the caller's
 *
 * Fields, where a record does not say otherwise:
 *   root                              the top of the tree; a leaf while there are few keys
 *   key                               the key
 *   key_length                        bytes
 *   next                              the record behind it; NULL at the greatest key
 *   entry_pool                        where the entries come from; NULL when there is none
 *   node_pool                         where the records come from; NULL when there is none
 *   owns_node_pool, owns_value_pool   1: made by `_init`, released by `_term` */
#ifndef MUB_BTREE_H
#define MUB_BTREE_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- mub_btree: an ordered map whose keys are byte strings ----------------------------------------------------
 *
 * A key is `length` bytes at `key`; a negative length means that it ends at its first NUL. A NULL key is the empty
 * key, which is a key like any other and comes before all others. Keys are copied; all keys of a tree take at most
 * 2^32 - 1 bytes. They compare byte by byte as unsigned values, of two that agree as far as both go the shorter is
 * first; with `nocase` every byte passes through tolower first.
 *
 * Parameters, where a function does not say otherwise:
 *   key      the key's bytes; NULL: the empty key
 *   length   bytes of the key; negative: up to its first NUL
 *
 * Ownership, where a function does not say otherwise:
 *   mub_btree_node *    the record is a block of the node pool, and the tree's until it is removed
 *   node_out            the record is a block of the node pool, and the tree's until it is removed
 *   mub_btree_entry *   the entry is a block of the entry pool, or the root, and stays the tree's
 *   key                 the bytes are copied, or only compared */

/* One key with its value; it stays where it is until it is removed. */
typedef struct mub_btree_node {
  uint32_t key_offset;         /* of the key's bytes in `keys`; changes when another key is removed */
  uint32_t key_length;         /* bytes */
  struct mub_btree_node *prev; /* the record before it; NULL at the least key. See "Chain" above */
  struct mub_btree_node *next; /* the record behind it; NULL at the greatest key */
  uint64_t value;              /* the caller's; may be changed in place */
} mub_btree_node;

/* One node of the tree. */
typedef struct mub_btree_entry {
  uint32_t key_offset; /* the key of the last child; the root's may be out of date, and is not searched */
  uint32_t key_length;
  int16_t level; /* 0: a leaf, its children are records; else they are entries one level lower */
  struct mub_btree_entry *parent; /* NULL for the root */
  mub_arrays children;            /* in key order; `pool` is the one that the children come from */
} mub_btree_entry;

typedef struct mub_btree {
  mub_btree_entry root;
  int64_t count;   /* keys in the tree */
  mub_stream keys; /* the bytes of the live keys in the order of insertion */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_btree_init, released by mub_btree_term */
  mub_pool *node_pool;
  uint16_t owns_node_pool;
  mub_pool *value_pool; /* NULL when there is none */
  uint16_t owns_value_pool;
  uint16_t nocase; /* not 0: keys that differ only in case are equal; set it before the first insertion */
} mub_btree;

/* A place in the walk over a tree, or outside its ends; see "Cursors" above. */
typedef struct mub_btree_cursor {
  const mub_btree *tree; /* the one that it walks */
  mub_btree_entry *leaf; /* NULL in an empty tree */
  int64_t index; /* in the leaf; -1: before the first record of the tree; the leaf's count: after the last */
} mub_btree_cursor;

/* mub_btree_init: make the record an empty tree, `nocase` 0; its root has room for 32 children.
 *   own_entry_pool, own_node_pool, own_value_pool   not 0: make a pool that the tree owns
 * A pool record that cannot be allocated leaves its field NULL and its flag 0. Returns the tree. */
MUB_API mub_btree *mub_btree_init(mub_btree *tree, int own_entry_pool, int own_node_pool, int own_value_pool);

/* mub_btree_term: release everything that the tree owns; entries and records go back to a caller's pools.
 * Values are not looked at, `nocase` stays. Returns the tree. Invalidates: the tree's cursors. */
MUB_API mub_btree *mub_btree_term(mub_btree *tree);

/* mub_btree_insert: add a key with a value unless the key is present.
 *   value   any word, 0 included
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out. Invalidates: the
 * tree's cursors. */
MUB_API int mub_btree_insert(mub_btree *tree, const void *key, int64_t length, uint64_t value);

/* mub_btree_set: find the value of a key, or add the key with a block of the value pool.
 *   value_out   receives the value: the new block (0 when there is none), or the value that stands
 *   init        called with the new block, which the record already holds and `value_out` not yet; may be
 *               NULL
 * Returns 1 when the key is new, also when only its block could not be had; 0 when the key was present, or
 * when memory ran out (then *value_out is 0). Invalidates: the tree's cursors. */
MUB_API int mub_btree_set(mub_btree *tree, const void *key, int64_t length, uint64_t *value_out,
                          mub_init_fn init);

/* mub_btree_get: look a value up. A stored 0 reads like a missing key; mub_btree_find tells them apart.
 * Returns the value, 0 when the key is absent. */
MUB_API uint64_t mub_btree_get(const mub_btree *tree, const void *key, int64_t length);

/* mub_btree_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. */
MUB_API uint64_t mub_btree_update(mub_btree *tree, const void *key, int64_t length, uint64_t value);

/* mub_btree_find: tell whether a key is present.
 * Returns 1 or 0. */
MUB_API int mub_btree_find(const mub_btree *tree, const void *key, int64_t length);

/* mub_btree_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Invalidates: the tree's cursors, key offsets, and the links
 * of the neighbours.
 * Cost: O(keys): the key's bytes are cut out of `keys` and the offsets behind them lowered. With a node
 * pool of its own the tree does that in one pass over memory. */
MUB_API uint64_t mub_btree_remove(mub_btree *tree, const void *key, int64_t length);

/* mub_btree_remove_all: empty the tree; it stays usable. Entries and records go back to a caller's pools,
 * owned pools are emptied, values are not looked at; the block of `keys` is kept, the root's table of
 * children is not.
 * Returns the tree. Invalidates: the tree's cursors. */
MUB_API mub_btree *mub_btree_remove_all(mub_btree *tree);

/* mub_btree_free_all: the same after every value that is not 0 was released, its block going back to a
 * caller's value pool; the block of `keys` is released too.
 *   release   called for every value that is not 0, in key order; may be NULL
 * Returns the tree. Invalidates: the tree's cursors. */
MUB_API mub_btree *mub_btree_free_all(mub_btree *tree, mub_free_fn release);

/* mub_btree_node_set: find the record of a key, or add it with value 0.
 *   node_out   receives the record; NULL when memory ran out. Fill its `value` in place
 * Returns 1 when the record is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btree_node_set(mub_btree *tree, const void *key, int64_t length, mub_btree_node **node_out);

/* mub_btree_node_get: find the record of a key.
 * Returns the record; NULL when the key is absent. */
MUB_API mub_btree_node *mub_btree_node_get(const mub_btree *tree, const void *key, int64_t length);

/* mub_btree_node_find: find the record of a key; the same as mub_btree_node_get.
 * Returns the record; NULL when the key is absent. */
MUB_API mub_btree_node *mub_btree_node_find(const mub_btree *tree, const void *key, int64_t length);

/* mub_btree_node_bfind: find the record of a key, or the nearest one: the first above the key in the leaf that would
 * hold it, else that leaf's last. A key above all keys yields the greatest record.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btree_node *mub_btree_node_bfind(const mub_btree *tree, const void *key, int64_t length);

/* mub_btree_node_first: find the record with the least key.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btree_node *mub_btree_node_first(const mub_btree *tree);

/* mub_btree_node_last: find the record with the greatest key.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btree_node *mub_btree_node_last(const mub_btree *tree);

/* mub_btree_node_next: find the record after another one, whatever was removed before. For a walk, a cursor
 * is faster.
 *   node   a record of the tree
 * Returns the record; NULL at the end. Cost: O(log n). */
MUB_API mub_btree_node *mub_btree_node_next(const mub_btree *tree, const mub_btree_node *node);

/* mub_btree_node_prev: find the record before another one, as mub_btree_node_next.
 *   node   a record of the tree
 * Returns the record; NULL at the beginning. */
MUB_API mub_btree_node *mub_btree_node_prev(const mub_btree *tree, const mub_btree_node *node);

/* mub_btree_cursor_first: start a walk at the record with the least key.
 *   cursor   overwritten
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btree_node *mub_btree_cursor_first(mub_btree_cursor *cursor, const mub_btree *tree);

/* mub_btree_cursor_last: start a walk at the record with the greatest key.
 *   cursor   overwritten
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btree_node *mub_btree_cursor_last(mub_btree_cursor *cursor, const mub_btree *tree);

/* mub_btree_cursor_seek: start a walk at the first record whose key is not below a key.
 *   cursor   overwritten
 * Returns the record; NULL when all keys are below, the cursor is after the last record then. Cost: O(log
 * n). */
MUB_API mub_btree_node *mub_btree_cursor_seek(mub_btree_cursor *cursor, const mub_btree *tree,
                                              const void *key, int64_t length);

/* mub_btree_cursor_next: step to the next record in key order. From before the first record the step leads
 * to the first.
 *   cursor   of a tree that was not changed since the cursor was set
 * Returns the record; NULL after the last one, where the cursor stays. Cost: O(1) on average. */
MUB_API mub_btree_node *mub_btree_cursor_next(mub_btree_cursor *cursor);

/* mub_btree_cursor_prev: step to the previous record in key order. From after the last record the step leads
 * to the last.
 *   cursor   of a tree that was not changed since the cursor was set
 * Returns the record; NULL before the first one, where the cursor stays. Cost: O(1) on average. */
MUB_API mub_btree_node *mub_btree_cursor_prev(mub_btree_cursor *cursor);

/* mub_btree_cursor_node: get the record where a cursor is.
 *   cursor   of a tree that was not changed since the cursor was set
 * Returns the record; NULL before the first record and after the last one. */
MUB_API mub_btree_node *mub_btree_cursor_node(const mub_btree_cursor *cursor);

/* mub_btree_first_entry: follow first children down.
 *   entry   of any level
 * Returns the first leaf below the entry; the entry itself when it is a leaf. */
MUB_API mub_btree_entry *mub_btree_first_entry(const mub_btree_entry *entry);

/* mub_btree_last_entry: follow last children down, as mub_btree_first_entry.
 * Returns the last leaf below the entry. */
MUB_API mub_btree_entry *mub_btree_last_entry(const mub_btree_entry *entry);

/* mub_btree_swap: exchange two trees, pools and their ownership included; `nocase` stays with its record.
 * Invalidates: the cursors of both trees. */
MUB_API void mub_btree_swap(mub_btree *a, mub_btree *b);

/* mub_btree_clone: copy a tree.
 *   source             unchanged
 *   source_user_pool   with `destination_user_pool` and `callback`: a pool that the values refer into,
 *                      cloned too; a pool given as both is shared; else NULL
 *   destination        initialised with the same flags; what it held is dropped
 *   callback           called for every record in key order when the source owns its value pool; may be
 *                      NULL
 * With owned pools, entries, records and value blocks keep their place in the copied pools and addresses
 * are translated; a value that is no block of the pool becomes 0, and so do all when the destination has no
 * value pool of its own. A caller's pool is shared with the clone: fresh blocks of it are filled as copies,
 * values are copied as words. A pool of the destination's own gives way to it. The links of the records
 * keep pointing into the source: walk a clone with a cursor. The destination's `nocase` stays.
 * Returns the number of keys; 0 when memory ran out, the destination is empty then. Invalidates: the
 * cursors of the destination. Cost: O(keys). */
MUB_API int64_t mub_btree_clone(const mub_btree *source, mub_pool *source_user_pool, mub_btree *destination,
                                mub_pool *destination_user_pool, mub_clone_fn callback);

/* The layer below: what the operations above are made of. Entries, indexes and levels are taken as given. */

/* mub_btree_entry_init: make a block an empty leaf: key 0/0, no parent, room for 32 children (none when memory runs
 * out), no children's pool. */
MUB_API void mub_btree_entry_init(mub_btree_entry *entry);

/* mub_btree_entry_new: take an entry from the entry pool, as mub_btree_entry_init leaves it.
 *   level   chooses the pool of the children: below 1 the node pool, else the entry pool; it is not stored
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_btree_entry *mub_btree_entry_new(mub_btree *tree, int level);

/* mub_btree_node_init: clear a record: key, links and value. */
MUB_API void mub_btree_node_init(mub_btree_node *node);

/* mub_btree_entry_compare: order an entry's key against a key.
 *   length   bytes of the key, used as given
 * Returns a negative number, 0 or a positive one: the difference of the first bytes that differ, else of the
 * lengths. */
MUB_API int mub_btree_entry_compare(const mub_btree *tree, const mub_btree_entry *entry, const void *key,
                                    int64_t length);

/* mub_btree_entrys_compare: order an entry's key against another one's, as mub_btree_entry_compare.
 *   a, b     the two entries
 *   unused   gives the function the shape of the others
 * Returns a negative number, 0 or a positive one. */
MUB_API int mub_btree_entrys_compare(const mub_btree *tree, const mub_btree_entry *a,
                                     const mub_btree_entry *b, int64_t unused);

/* mub_btree_node_compare: order a record's key against a key, as mub_btree_entry_compare.
 * Returns a negative number, 0 or a positive one. */
MUB_API int mub_btree_node_compare(const mub_btree *tree, const mub_btree_node *node, const void *key,
                                   int64_t length);

/* mub_btree_set_name: give an entry the key of its last child, and its parents up to the first whose key is right. */
MUB_API void mub_btree_set_name(const mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_set_parent: point the children of an entry of level 1 or more at it. */
MUB_API void mub_btree_set_parent(mub_btree_entry *entry);

/* mub_btree_set_next: link a record of a leaf with the one after it in the leaf and that one's `prev`; the
 * last record with the one before it and that one's `next`. These links are followed as they are, and must
 * not be stale. A record alone in its leaf is left as it is.
 *   index   the record's place in the leaf */
MUB_API void mub_btree_set_next(mub_btree_entry *leaf, int64_t index);

/* mub_btree_set_pool: name the tree's pools in an entry: the node pool in a leaf, the entry pool in an entry above,
 * and in all entries below that one which are no leaves. */
MUB_API void mub_btree_set_pool(const mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_split_entry: move the upper half of an entry's children to a new entry of the same level and
 * parent, which the parent does not hold yet. Both take the keys of their last children. Fewer than two
 * children leave a half that has none and keeps its key: searches may end there, those of
 * mub_btree_cursor_seek and mub_btree_node_next too.
 * Returns the new entry; NULL when memory ran out, nothing is moved then. Invalidates: the tree's cursors. */
MUB_API mub_btree_entry *mub_btree_split_entry(mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_split_node: the same for a leaf.
 * Returns the new leaf; NULL when memory ran out. Invalidates: the tree's cursors. */
MUB_API mub_btree_entry *mub_btree_split_node(mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_split: split an entry and put the new half behind it in the parent, splitting that in turn when
 * it then holds more than 31; split the root by moving its children to two new entries below it. An entry
 * for whose split memory runs out stays as it is. As after mub_btree_split_entry, fewer than two children
 * leave an empty half. Invalidates: the tree's cursors. */
MUB_API void mub_btree_split(mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_find_t: descend to the leaf that holds a key or would hold it.
 *   entry   where to start
 * Returns the leaf. */
MUB_API mub_btree_entry *mub_btree_find_t(const mub_btree *tree, const mub_btree_entry *entry,
                                          const void *key, int64_t length);

/* mub_btree_insert_t: add a key to a leaf, with value 0, unless the leaf holds it.
 *   leaf       the one that mub_btree_find_t gives for the key
 *   node_out   receives the record, new or not; NULL when memory ran out
 * Returns 1 when the record is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btree_insert_t(mub_btree *tree, mub_btree_entry *leaf, const void *key, int64_t length,
                               mub_btree_node **node_out);

/* mub_btree_adjust_t: lower the key offsets below an entry after key bytes were deleted from `keys`. The entry's own
 * key is left as it is.
 *   offset   where they were: keys at or behind it move, an empty key only behind it
 *   length   how many they were */
MUB_API void mub_btree_adjust_t(mub_btree *tree, mub_btree_entry *entry, uint32_t offset, uint32_t length);

/* mub_btree_remove_entry_t: take an empty entry out of its parent and return it to the entry pool, with the
 * parents that it leaves empty. The root stays; emptied, it is a leaf again. Invalidates: the tree's
 * cursors. */
MUB_API void mub_btree_remove_entry_t(mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_remove_all_entry: release the tables of children of an entry and of all below it; records and
 * the entries below it go back to a caller's pools. Count, keys and levels are left as they are.
 * Invalidates: the tree's cursors. */
MUB_API void mub_btree_remove_all_entry(mub_btree *tree, mub_btree_entry *entry);

/* mub_btree_free_all_entry: the same, each value that is not 0 being released first, its block going back
 * to a caller's value pool.
 *   release   called for every value that is not 0; may be NULL
 * Invalidates: the tree's cursors. */
MUB_API void mub_btree_free_all_entry(mub_btree *tree, mub_btree_entry *entry, mub_free_fn release);

/* mub_btree_clone_entry: copy what is below an entry of one tree under an empty one of another, in fresh
 * blocks of the pools of that tree. Values are copied as words, links as they are, keys as offsets: the
 * destination's `keys` has to hold the same bytes. Its count stays.
 *   destination_entry   without children; takes the level and the key
 * Returns 1; 0 when memory ran out, the entry is empty then. Invalidates: the cursors of the destination. */
MUB_API int mub_btree_clone_entry(const mub_btree *source, const mub_btree_entry *source_entry,
                                  mub_btree *destination, mub_btree_entry *destination_entry);

/* ---- mub_btreed: an ordered map whose keys are 32-bit numbers -------------------------------------------------
 *
 * `key_type` says how the 32 bits of a key order; all other types make every key equal to every other, so that only the
 * first can be inserted. A floating-point key is passed as its bits. One that is not a number is equal to
 * whatever it is compared with. All else is as for mub_btree, without key bytes: a removal takes O(log n).
 *
 * Parameters, where a function does not say otherwise:
 *   key   the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_btreed_node *    the record is a block of the node pool, and the tree's until it is removed
 *   node_out             the record is a block of the node pool, and the tree's until it is removed
 *   mub_btreed_entry *   the entry is a block of the entry pool, or the root, and stays the tree's */

/* One key with its value; it stays where it is until it is removed. Its address is also that of its key. */
typedef struct mub_btreed_node {
  uint32_t key;
  struct mub_btreed_node *prev; /* links as in mub_btree_node */
  struct mub_btreed_node *next;
  uint64_t value; /* the caller's; may be changed in place */
} mub_btreed_node;

/* One node of the tree. */
typedef struct mub_btreed_entry {
  uint32_t key;  /* that of the last child */
  int16_t level; /* 0: a leaf, its children are records; else they are entries one level lower */
  struct mub_btreed_entry *parent; /* NULL for the root */
  mub_arrays children;             /* in key order; `pool` is the one that the children come from */
} mub_btreed_entry;

typedef struct mub_btreed {
  mub_btreed_entry root;
  int64_t count; /* keys in the tree */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_btreed_init, released by mub_btreed_term */
  mub_pool *node_pool;
  uint16_t owns_node_pool;
  mub_pool *value_pool; /* NULL when there is none */
  uint16_t owns_value_pool;
  uint32_t key_type; /* 1 signed, 2 unsigned, 5 floating point; set it before the first insertion */
} mub_btreed;

/* A place in the walk over a tree, or outside its ends; see "Cursors" above. */
typedef struct mub_btreed_cursor {
  const mub_btreed *tree; /* the one that it walks */
  mub_btreed_entry *leaf; /* NULL in an empty tree */
  int64_t index; /* in the leaf; -1: before the first record of the tree; the leaf's count: after the last */
} mub_btreed_cursor;

/* mub_btreed_init: make the record an empty tree of signed keys, `key_type` 1, as mub_btree_init. Returns the tree. */
MUB_API mub_btreed *mub_btreed_init(mub_btreed *tree, int own_entry_pool, int own_node_pool,
                                    int own_value_pool);

/* mub_btreed_term: release everything that the tree owns, as mub_btree_term. Returns the tree. Invalidates:
 * the tree's cursors. */
MUB_API mub_btreed *mub_btreed_term(mub_btreed *tree);

/* mub_btreed_insert: add a key with a value unless the key is present.
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out. Invalidates: the
 * tree's cursors. */
MUB_API int mub_btreed_insert(mub_btreed *tree, uint32_t key, uint64_t value);

/* mub_btreed_set: find the value of a key, or add the key with a block of the value pool, as mub_btree_set.
 * Returns 1 when the key is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btreed_set(mub_btreed *tree, uint32_t key, uint64_t *value_out, mub_init_fn init);

/* mub_btreed_get: look a value up.
 * Returns the value, 0 when the key is absent. */
MUB_API uint64_t mub_btreed_get(const mub_btreed *tree, uint32_t key);

/* mub_btreed_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. */
MUB_API uint64_t mub_btreed_update(mub_btreed *tree, uint32_t key, uint64_t value);

/* mub_btreed_find: tell whether a key is present.
 * Returns 1 or 0. */
MUB_API int mub_btreed_find(const mub_btreed *tree, uint32_t key);

/* mub_btreed_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Invalidates: the tree's cursors, the links of the
 * neighbours. */
MUB_API uint64_t mub_btreed_remove(mub_btreed *tree, uint32_t key);

/* mub_btreed_remove_all: empty the tree, as mub_btree_remove_all. Returns the tree. Invalidates: the tree's
 * cursors. */
MUB_API mub_btreed *mub_btreed_remove_all(mub_btreed *tree);

/* mub_btreed_free_all: empty the tree and release its values, as mub_btree_free_all. Returns the tree.
 * Invalidates: the tree's cursors. */
MUB_API mub_btreed *mub_btreed_free_all(mub_btreed *tree, mub_free_fn release);

/* mub_btreed_node_set: find the record of a key, or add it with value 0, as mub_btree_node_set.
 * Returns 1 when the record is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btreed_node_set(mub_btreed *tree, uint32_t key, mub_btreed_node **node_out);

/* mub_btreed_node_get: find the record of a key.
 * Returns the record; NULL when the key is absent. */
MUB_API mub_btreed_node *mub_btreed_node_get(const mub_btreed *tree, uint32_t key);

/* mub_btreed_node_find: find the record of a key; the same as mub_btreed_node_get.
 * Returns the record; NULL when the key is absent. */
MUB_API mub_btreed_node *mub_btreed_node_find(const mub_btreed *tree, uint32_t key);

/* mub_btreed_node_bfind: find the record of a key or the nearest one, as mub_btree_node_bfind.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreed_node *mub_btreed_node_bfind(const mub_btreed *tree, uint32_t key);

/* mub_btreed_node_first: find the record with the least key.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreed_node *mub_btreed_node_first(const mub_btreed *tree);

/* mub_btreed_node_last: find the record with the greatest key.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreed_node *mub_btreed_node_last(const mub_btreed *tree);

/* mub_btreed_node_next: find the record after another one, as mub_btree_node_next.
 * Returns the record; NULL at the end. */
MUB_API mub_btreed_node *mub_btreed_node_next(const mub_btreed *tree, const mub_btreed_node *node);

/* mub_btreed_node_prev: find the record before another one, as mub_btree_node_next.
 * Returns the record; NULL at the beginning. */
MUB_API mub_btreed_node *mub_btreed_node_prev(const mub_btreed *tree, const mub_btreed_node *node);

/* mub_btreed_cursor_first: start a walk at the record with the least key, as mub_btree_cursor_first.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreed_node *mub_btreed_cursor_first(mub_btreed_cursor *cursor, const mub_btreed *tree);

/* mub_btreed_cursor_last: start a walk at the record with the greatest key, as mub_btree_cursor_last.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreed_node *mub_btreed_cursor_last(mub_btreed_cursor *cursor, const mub_btreed *tree);

/* mub_btreed_cursor_seek: start a walk at the first record whose key is not below a key, as
 * mub_btree_cursor_seek.
 * Returns the record; NULL when all keys are below. */
MUB_API mub_btreed_node *mub_btreed_cursor_seek(mub_btreed_cursor *cursor, const mub_btreed *tree,
                                                uint32_t key);

/* mub_btreed_cursor_next: step to the next record in key order, as mub_btree_cursor_next.
 * Returns the record; NULL after the last one. */
MUB_API mub_btreed_node *mub_btreed_cursor_next(mub_btreed_cursor *cursor);

/* mub_btreed_cursor_prev: step to the previous record in key order, as mub_btree_cursor_prev.
 * Returns the record; NULL before the first one. */
MUB_API mub_btreed_node *mub_btreed_cursor_prev(mub_btreed_cursor *cursor);

/* mub_btreed_cursor_node: get the record where a cursor is, as mub_btree_cursor_node.
 * Returns the record; NULL before the first record and after the last one. */
MUB_API mub_btreed_node *mub_btreed_cursor_node(const mub_btreed_cursor *cursor);

/* mub_btreed_first_entry: follow first children down.
 * Returns the first leaf below the entry; the entry itself when it is a leaf. */
MUB_API mub_btreed_entry *mub_btreed_first_entry(const mub_btreed_entry *entry);

/* mub_btreed_last_entry: follow last children down.
 * Returns the last leaf below the entry. */
MUB_API mub_btreed_entry *mub_btreed_last_entry(const mub_btreed_entry *entry);

/* mub_btreed_swap: exchange two trees, pools and their ownership included; `key_type` stays with its
 * record. Invalidates: the cursors of both trees. */
MUB_API void mub_btreed_swap(mub_btreed *a, mub_btreed *b);

/* mub_btreed_clone: copy a tree, as mub_btree_clone; the destination's `key_type` stays.
 * Returns the number of keys; 0 when memory ran out, the destination is empty then. Invalidates: the
 * cursors of the destination. Cost: O(keys). */
MUB_API int64_t mub_btreed_clone(const mub_btreed *source, mub_pool *source_user_pool,
                                 mub_btreed *destination, mub_pool *destination_user_pool,
                                 mub_clone_fn callback);

/* The layer below, as for mub_btree. */

/* mub_btreed_var_compare: order two keys.
 *   a, b       addresses of two keys, or of records that begin with one; they need no alignment
 *   key_type   as in the tree's field; any other type makes all keys equal
 * Returns -1, 0 or 1. */
MUB_API int mub_btreed_var_compare(const void *a, const void *b, uint32_t key_type);

/* mub_btreed_entry_compare: order an entry's key against the key at an address, as mub_btreed_var_compare.
 *   key   the address of a key, which needs no alignment */
MUB_API int mub_btreed_entry_compare(const mub_btreed_entry *entry, const void *key, uint32_t key_type);

/* mub_btreed_entrys_compare: order an entry's key against another one's, as mub_btreed_var_compare.
 *   a, b   the two entries */
MUB_API int mub_btreed_entrys_compare(const mub_btreed_entry *a, const mub_btreed_entry *b,
                                      uint32_t key_type);

/* mub_btreed_node_compare: order a record's key against the key at an address, as mub_btreed_var_compare.
 *   key   the address of a key, which needs no alignment */
MUB_API int mub_btreed_node_compare(const mub_btreed_node *node, const void *key, uint32_t key_type);

/* mub_btreed_entry_init: make a block an empty leaf, as mub_btree_entry_init. */
MUB_API void mub_btreed_entry_init(mub_btreed_entry *entry);

/* mub_btreed_entry_new: take an entry from the entry pool, as mub_btree_entry_new.
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_btreed_entry *mub_btreed_entry_new(mub_btreed *tree, int level);

/* mub_btreed_node_init: clear a record: key, links and value. */
MUB_API void mub_btreed_node_init(mub_btreed_node *node);

/* mub_btreed_set_name: give an entry the key of its last child, and its parents up to the first that has its key. */
MUB_API void mub_btreed_set_name(const mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_set_parent: point the children of an entry of level 1 or more at it. */
MUB_API void mub_btreed_set_parent(mub_btreed_entry *entry);

/* mub_btreed_set_next: link a record of a leaf with its neighbours in the leaf, as mub_btree_set_next. */
MUB_API void mub_btreed_set_next(mub_btreed_entry *leaf, int64_t index);

/* mub_btreed_set_pool: name the tree's pools in an entry, as mub_btree_set_pool. */
MUB_API void mub_btreed_set_pool(const mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_split_entry: move the upper half of an entry's children to a new entry, as
 * mub_btree_split_entry.
 * Returns the new entry; NULL when memory ran out. Invalidates: the tree's cursors. */
MUB_API mub_btreed_entry *mub_btreed_split_entry(mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_split_node: the same for a leaf.
 * Returns the new leaf; NULL when memory ran out. Invalidates: the tree's cursors. */
MUB_API mub_btreed_entry *mub_btreed_split_node(mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_split: split an entry within its tree, as mub_btree_split. Invalidates: the tree's cursors. */
MUB_API void mub_btreed_split(mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_find_t: descend to the leaf that holds a key or would hold it.
 * Returns the leaf. */
MUB_API mub_btreed_entry *mub_btreed_find_t(const mub_btreed *tree, const mub_btreed_entry *entry,
                                            uint32_t key);

/* mub_btreed_insert_t: add a key to a leaf, with value 0, unless the leaf holds it, as mub_btree_insert_t.
 * Returns 1 when the record is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btreed_insert_t(mub_btreed *tree, mub_btreed_entry *leaf, uint32_t key,
                                mub_btreed_node **node_out);

/* mub_btreed_remove_entry_t: take an empty entry out of its parent, as mub_btree_remove_entry_t.
 * Invalidates: the tree's cursors. */
MUB_API void mub_btreed_remove_entry_t(mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_remove_all_entry: release what is below an entry, as mub_btree_remove_all_entry. Invalidates:
 * the tree's cursors. */
MUB_API void mub_btreed_remove_all_entry(mub_btreed *tree, mub_btreed_entry *entry);

/* mub_btreed_free_all_entry: release what is below an entry and its values, as mub_btree_free_all_entry.
 * Invalidates: the tree's cursors. */
MUB_API void mub_btreed_free_all_entry(mub_btreed *tree, mub_btreed_entry *entry, mub_free_fn release);

/* mub_btreed_clone_entry: copy what is below an entry of one tree under an empty one of another, as
 * mub_btree_clone_entry.
 * Returns 1; 0 when memory ran out, the entry is empty then. Invalidates: the cursors of the destination. */
MUB_API int mub_btreed_clone_entry(const mub_btreed *source, const mub_btreed_entry *source_entry,
                                   mub_btreed *destination, mub_btreed_entry *destination_entry);

/* ---- mub_btreex: an ordered map whose keys are 64-bit numbers -------------------------------------------------
 *
 * As mub_btreed, with keys of 64 bits.
 *
 * Parameters, where a function does not say otherwise:
 *   key   the key
 *
 * Ownership, where a function does not say otherwise:
 *   mub_btreex_node *    the record is a block of the node pool, and the tree's until it is removed
 *   node_out             the record is a block of the node pool, and the tree's until it is removed
 *   mub_btreex_entry *   the entry is a block of the entry pool, or the root, and stays the tree's */

/* One key with its value; it stays where it is until it is removed. Its address is also that of its key. */
typedef struct mub_btreex_node {
  uint64_t key;
  struct mub_btreex_node *prev; /* links as in mub_btree_node */
  struct mub_btreex_node *next;
  uint64_t value; /* the caller's; may be changed in place */
} mub_btreex_node;

/* One node of the tree. */
typedef struct mub_btreex_entry {
  uint64_t key;  /* that of the last child */
  int16_t level; /* 0: a leaf, its children are records; else they are entries one level lower */
  struct mub_btreex_entry *parent; /* NULL for the root */
  mub_arrays children;             /* in key order; `pool` is the one that the children come from */
} mub_btreex_entry;

typedef struct mub_btreex {
  mub_btreex_entry root;
  int64_t count; /* keys in the tree */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_btreex_init, released by mub_btreex_term */
  mub_pool *node_pool;
  uint16_t owns_node_pool;
  mub_pool *value_pool; /* NULL when there is none */
  uint16_t owns_value_pool;
  uint32_t key_type; /* 3 signed, 4 unsigned, 6 floating point; set it before the first insertion */
} mub_btreex;

/* A place in the walk over a tree, or outside its ends; see "Cursors" above. */
typedef struct mub_btreex_cursor {
  const mub_btreex *tree; /* the one that it walks */
  mub_btreex_entry *leaf; /* NULL in an empty tree */
  int64_t index; /* in the leaf; -1: before the first record of the tree; the leaf's count: after the last */
} mub_btreex_cursor;

/* mub_btreex_init: make the record an empty tree of signed keys, `key_type` 3, as mub_btree_init. Returns the tree. */
MUB_API mub_btreex *mub_btreex_init(mub_btreex *tree, int own_entry_pool, int own_node_pool,
                                    int own_value_pool);

/* mub_btreex_term: release everything that the tree owns, as mub_btree_term. Returns the tree. Invalidates:
 * the tree's cursors. */
MUB_API mub_btreex *mub_btreex_term(mub_btreex *tree);

/* mub_btreex_insert: add a key with a value unless the key is present.
 * Returns 1 when added; 0 when the key was present (its value stays) or memory ran out. Invalidates: the
 * tree's cursors. */
MUB_API int mub_btreex_insert(mub_btreex *tree, uint64_t key, uint64_t value);

/* mub_btreex_set: find the value of a key, or add the key with a block of the value pool, as mub_btree_set.
 * Returns 1 when the key is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btreex_set(mub_btreex *tree, uint64_t key, uint64_t *value_out, mub_init_fn init);

/* mub_btreex_get: look a value up.
 * Returns the value, 0 when the key is absent. */
MUB_API uint64_t mub_btreex_get(const mub_btreex *tree, uint64_t key);

/* mub_btreex_update: replace the value of a key that is present.
 * Returns the previous value; 0 when the key is absent, and nothing is made. */
MUB_API uint64_t mub_btreex_update(mub_btreex *tree, uint64_t key, uint64_t value);

/* mub_btreex_find: tell whether a key is present.
 * Returns 1 or 0. */
MUB_API int mub_btreex_find(const mub_btreex *tree, uint64_t key);

/* mub_btreex_remove: take a key out. Its value is handed over, not released.
 * Returns the value; 0 when the key is absent. Invalidates: the tree's cursors, the links of the
 * neighbours. */
MUB_API uint64_t mub_btreex_remove(mub_btreex *tree, uint64_t key);

/* mub_btreex_remove_all: empty the tree, as mub_btree_remove_all. Returns the tree. Invalidates: the tree's
 * cursors. */
MUB_API mub_btreex *mub_btreex_remove_all(mub_btreex *tree);

/* mub_btreex_free_all: empty the tree and release its values, as mub_btree_free_all. Returns the tree.
 * Invalidates: the tree's cursors. */
MUB_API mub_btreex *mub_btreex_free_all(mub_btreex *tree, mub_free_fn release);

/* mub_btreex_node_set: find the record of a key, or add it with value 0, as mub_btree_node_set.
 * Returns 1 when the record is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btreex_node_set(mub_btreex *tree, uint64_t key, mub_btreex_node **node_out);

/* mub_btreex_node_get: find the record of a key.
 * Returns the record; NULL when the key is absent. */
MUB_API mub_btreex_node *mub_btreex_node_get(const mub_btreex *tree, uint64_t key);

/* mub_btreex_node_find: find the record of a key; the same as mub_btreex_node_get.
 * Returns the record; NULL when the key is absent. */
MUB_API mub_btreex_node *mub_btreex_node_find(const mub_btreex *tree, uint64_t key);

/* mub_btreex_node_bfind: find the record of a key or the nearest one, as mub_btree_node_bfind.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreex_node *mub_btreex_node_bfind(const mub_btreex *tree, uint64_t key);

/* mub_btreex_node_first: find the record with the least key.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreex_node *mub_btreex_node_first(const mub_btreex *tree);

/* mub_btreex_node_last: find the record with the greatest key.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreex_node *mub_btreex_node_last(const mub_btreex *tree);

/* mub_btreex_node_next: find the record after another one, as mub_btree_node_next.
 * Returns the record; NULL at the end. */
MUB_API mub_btreex_node *mub_btreex_node_next(const mub_btreex *tree, const mub_btreex_node *node);

/* mub_btreex_node_prev: find the record before another one, as mub_btree_node_next.
 * Returns the record; NULL at the beginning. */
MUB_API mub_btreex_node *mub_btreex_node_prev(const mub_btreex *tree, const mub_btreex_node *node);

/* mub_btreex_cursor_first: start a walk at the record with the least key, as mub_btree_cursor_first.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreex_node *mub_btreex_cursor_first(mub_btreex_cursor *cursor, const mub_btreex *tree);

/* mub_btreex_cursor_last: start a walk at the record with the greatest key, as mub_btree_cursor_last.
 * Returns the record; NULL when the tree is empty. */
MUB_API mub_btreex_node *mub_btreex_cursor_last(mub_btreex_cursor *cursor, const mub_btreex *tree);

/* mub_btreex_cursor_seek: start a walk at the first record whose key is not below a key, as
 * mub_btree_cursor_seek.
 * Returns the record; NULL when all keys are below. */
MUB_API mub_btreex_node *mub_btreex_cursor_seek(mub_btreex_cursor *cursor, const mub_btreex *tree,
                                                uint64_t key);

/* mub_btreex_cursor_next: step to the next record in key order, as mub_btree_cursor_next.
 * Returns the record; NULL after the last one. */
MUB_API mub_btreex_node *mub_btreex_cursor_next(mub_btreex_cursor *cursor);

/* mub_btreex_cursor_prev: step to the previous record in key order, as mub_btree_cursor_prev.
 * Returns the record; NULL before the first one. */
MUB_API mub_btreex_node *mub_btreex_cursor_prev(mub_btreex_cursor *cursor);

/* mub_btreex_cursor_node: get the record where a cursor is, as mub_btree_cursor_node.
 * Returns the record; NULL before the first record and after the last one. */
MUB_API mub_btreex_node *mub_btreex_cursor_node(const mub_btreex_cursor *cursor);

/* mub_btreex_first_entry: follow first children down.
 * Returns the first leaf below the entry; the entry itself when it is a leaf. */
MUB_API mub_btreex_entry *mub_btreex_first_entry(const mub_btreex_entry *entry);

/* mub_btreex_last_entry: follow last children down.
 * Returns the last leaf below the entry. */
MUB_API mub_btreex_entry *mub_btreex_last_entry(const mub_btreex_entry *entry);

/* mub_btreex_swap: exchange two trees, pools and their ownership included; `key_type` stays with its
 * record. Invalidates: the cursors of both trees. */
MUB_API void mub_btreex_swap(mub_btreex *a, mub_btreex *b);

/* mub_btreex_clone: copy a tree, as mub_btree_clone; the destination's `key_type` stays.
 * Returns the number of keys; 0 when memory ran out, the destination is empty then. Invalidates: the
 * cursors of the destination. Cost: O(keys). */
MUB_API int64_t mub_btreex_clone(const mub_btreex *source, mub_pool *source_user_pool,
                                 mub_btreex *destination, mub_pool *destination_user_pool,
                                 mub_clone_fn callback);

/* The layer below, as for mub_btree. */

/* mub_btreex_var_compare: order two keys.
 *   a, b       addresses of two keys, or of records that begin with one; they need no alignment
 *   key_type   as in the tree's field; any other type makes all keys equal
 * Returns -1, 0 or 1. */
MUB_API int mub_btreex_var_compare(const void *a, const void *b, uint32_t key_type);

/* mub_btreex_entry_compare: order an entry's key against the key at an address, as mub_btreex_var_compare.
 *   key   the address of a key, which needs no alignment */
MUB_API int mub_btreex_entry_compare(const mub_btreex_entry *entry, const void *key, uint32_t key_type);

/* mub_btreex_entrys_compare: order an entry's key against another one's, as mub_btreex_var_compare.
 *   a, b   the two entries */
MUB_API int mub_btreex_entrys_compare(const mub_btreex_entry *a, const mub_btreex_entry *b,
                                      uint32_t key_type);

/* mub_btreex_node_compare: order a record's key against the key at an address, as mub_btreex_var_compare.
 *   key   the address of a key, which needs no alignment */
MUB_API int mub_btreex_node_compare(const mub_btreex_node *node, const void *key, uint32_t key_type);

/* mub_btreex_entry_init: make a block an empty leaf, as mub_btree_entry_init. */
MUB_API void mub_btreex_entry_init(mub_btreex_entry *entry);

/* mub_btreex_entry_new: take an entry from the entry pool, as mub_btree_entry_new.
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_btreex_entry *mub_btreex_entry_new(mub_btreex *tree, int level);

/* mub_btreex_node_init: clear a record: key, links and value. */
MUB_API void mub_btreex_node_init(mub_btreex_node *node);

/* mub_btreex_set_name: give an entry the key of its last child, and its parents up to the first that has its key. */
MUB_API void mub_btreex_set_name(const mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_set_parent: point the children of an entry of level 1 or more at it. */
MUB_API void mub_btreex_set_parent(mub_btreex_entry *entry);

/* mub_btreex_set_next: link a record of a leaf with its neighbours in the leaf, as mub_btree_set_next. */
MUB_API void mub_btreex_set_next(mub_btreex_entry *leaf, int64_t index);

/* mub_btreex_set_pool: name the tree's pools in an entry, as mub_btree_set_pool. */
MUB_API void mub_btreex_set_pool(const mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_split_entry: move the upper half of an entry's children to a new entry, as
 * mub_btree_split_entry.
 * Returns the new entry; NULL when memory ran out. Invalidates: the tree's cursors. */
MUB_API mub_btreex_entry *mub_btreex_split_entry(mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_split_node: the same for a leaf.
 * Returns the new leaf; NULL when memory ran out. Invalidates: the tree's cursors. */
MUB_API mub_btreex_entry *mub_btreex_split_node(mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_split: split an entry within its tree, as mub_btree_split. Invalidates: the tree's cursors. */
MUB_API void mub_btreex_split(mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_find_t: descend to the leaf that holds a key or would hold it.
 * Returns the leaf. */
MUB_API mub_btreex_entry *mub_btreex_find_t(const mub_btreex *tree, const mub_btreex_entry *entry,
                                            uint64_t key);

/* mub_btreex_insert_t: add a key to a leaf, with value 0, unless the leaf holds it, as mub_btree_insert_t.
 * Returns 1 when the record is new; 0 when the key was present or memory ran out. Invalidates: the tree's
 * cursors. */
MUB_API int mub_btreex_insert_t(mub_btreex *tree, mub_btreex_entry *leaf, uint64_t key,
                                mub_btreex_node **node_out);

/* mub_btreex_remove_entry_t: take an empty entry out of its parent, as mub_btree_remove_entry_t.
 * Invalidates: the tree's cursors. */
MUB_API void mub_btreex_remove_entry_t(mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_remove_all_entry: release what is below an entry, as mub_btree_remove_all_entry. Invalidates:
 * the tree's cursors. */
MUB_API void mub_btreex_remove_all_entry(mub_btreex *tree, mub_btreex_entry *entry);

/* mub_btreex_free_all_entry: release what is below an entry and its values, as mub_btree_free_all_entry.
 * Invalidates: the tree's cursors. */
MUB_API void mub_btreex_free_all_entry(mub_btreex *tree, mub_btreex_entry *entry, mub_free_fn release);

/* mub_btreex_clone_entry: copy what is below an entry of one tree under an empty one of another, as
 * mub_btree_clone_entry.
 * Returns 1; 0 when memory ran out, the entry is empty then. Invalidates: the cursors of the destination. */
MUB_API int mub_btreex_clone_entry(const mub_btreex *source, const mub_btreex_entry *source_entry,
                                   mub_btreex *destination, mub_btreex_entry *destination_entry);

#ifdef __cplusplus
}
#endif

#endif
