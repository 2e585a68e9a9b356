/* mub_tree.h: mub_tree, a general tree whose entries have any number of ordered children, and mub_bitree, a bare binary
 * tree.
 *
 *   mub_tree: the children of an entry are a ring         mub_bitree: equals hang on a chain
 *
 *     root                                                    root ──equal──► e ──equal──► NULL
 *      │ first_child                                      left │ │ right
 *      ▼                                                       ▼ ▼
 *   ┌► a ◄──► b ◄──► c ◄┐                                      a b
 *   └───────────────────┘  prev of the first is the last
 *
 * The root lies in the tree's record: the record's address is that of the root, which is never released. Neither tree
 * stores keys. In a mub_tree, entries are found by a caller's comparer; where an entry of a mub_bitree belongs, the
 * caller says.
 *
 * Entry pool. Needed by the functions that make entries: made by `_init`, or the caller's, written into `entry_pool`,
 * its block size at least that of the entry record. Several trees may share a caller's pool. Entries may also lie in
 * the caller's own memory, as long as no function that returns entries to a pool meets them.
 * Value pool. One made by `_init` has no block size yet: store the size of your values in `value_pool->block_size`.
 * Blocks of an owned value pool go with the whole pool; single blocks return to a caller's pool only.
 * Depth. Nothing recurses: a tree may be as deep, a ring or a chain as long, as memory allows.
 *
 * Parameters, where a function does not say otherwise:
 *   tree                    the tree
 *   entry                   an entry
 *   a, b                    the two entries
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
 *   _remove_all                entries are their pool's again; values are not released
 *   _free_all                  each value is handed to the caller's function, its block to a caller's value pool;
 *                              entries are their pool's again
 *   _clone_entry               the copies are blocks of the tree's entry pool, which the caller links; values are
 *                              copied as words
 *   _entry_new                 the block is one of the entry pool, and the caller's to link or to give back
 *   _entry_append, _entry_insert, _entry_add   the tree refers to the entry, which stays where it is, from now on
 *   _entry_remove_x            with a caller's pool, the entries are the pool's again, though links still lead to
 *                              them; values are not released
 *   _entry_swap, _set_parent   entries stay where they are
 *
 * Fields, where a record does not say otherwise:
 *   entry_pool        where the entries come from; NULL when there is none
 *   owns_value_pool   1: made by `_init`, released by `_term` */
#ifndef MUB_TREE_H
#define MUB_TREE_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_pool.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- mub_tree: entries with any number of children -------------------------------------------------------------
 *
 * Parameters, where a function does not say otherwise:
 *   key       handed to the comparer, with its length
 *   length    handed to the comparer
 *   context   handed to the comparer
 *   parent    the entry that gets a child
 *   path      the keys of the steps
 *
 * Ownership, where a function does not say otherwise:
 *   mub_tree_entry *   the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 *   _entry_remove      the tree no longer refers to the entry: it is the caller's, to link or to give back
 *   _entry_free        each value is handed to `release`, its block to a caller's value pool; the entries as in
 *                      mub_tree_entry_remove_x
 *   _entry_array       the words are copied
 *   path               only read */

/* One entry; it stays where it is until it is released. */
typedef struct mub_tree_entry {
  struct mub_tree_entry *parent;      /* NULL in the root and in an entry that is not linked */
  struct mub_tree_entry *first_child; /* NULL when there is none */
  struct mub_tree_entry *prev;        /* the sibling before; of the first, the last */
  struct mub_tree_entry *next;        /* the sibling behind; of the last, the first */
  uint64_t value;                     /* the caller's; may be changed in place */
} mub_tree_entry;

typedef struct mub_tree {
  mub_tree_entry root; /* paths and searches downward start below it; its value is the caller's too */
  int64_t count;       /* links made less links undone, not entries: removing a subtree undoes one */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_tree_init, released by mub_tree_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_tree;

/* mub_tree_compare_fn: 0 when the entry matches the key. Entries that mub_tree_insert made on the way to the last one
 * have value 0. */
typedef int (*mub_tree_compare_fn)(const mub_tree_entry *entry, const void *key, int64_t length);

/* mub_tree_compare_x_fn: the same for the `_x` functions, which hand the caller's context through. */
typedef int (*mub_tree_compare_x_fn)(const mub_tree_entry *entry, uint64_t context, const void *key,
                                     int64_t length);

/* mub_tree_init: make the record a tree of a root alone.
 *   own_entry_pool, own_value_pool   not 0: make a pool that the tree owns
 * A pool record that cannot be allocated leaves its field NULL and its flag 0. Returns the tree. */
MUB_API mub_tree *mub_tree_init(mub_tree *tree, int own_entry_pool, int own_value_pool);

/* mub_tree_term: release the pools that the tree owns, their fields then NULL and their flags as they were, and return
 * entries to a caller's entry pool. Values are not looked at. Returns the tree, which is empty.
 * Cost: one release a chunk; with a caller's entry pool O(entries). */
MUB_API mub_tree *mub_tree_term(mub_tree *tree);

/* mub_tree_remove_all: empty the tree. Entries go back to a caller's pool, owned pools are emptied, values are not
 * looked at. Returns the tree. Cost: as mub_tree_term. */
MUB_API mub_tree *mub_tree_remove_all(mub_tree *tree);

/* mub_tree_free_all: the same after releasing every value that is not 0, the root's included; value blocks go back to
 * a caller's value pool.
 *   release   called for every such value, children before their parents; may be NULL
 * Returns the tree. Cost: O(entries). */
MUB_API mub_tree *mub_tree_free_all(mub_tree *tree, mub_free_fn release);

/* mub_tree_clone: copy a tree.
 *   source             unchanged
 *   source_user_pool   with `destination_user_pool` and `callback`: a pool that the values refer into, cloned too;
 *                      a pool given as both is shared; else NULL
 *   destination        initialised with the same flags; what it held is dropped
 *   callback           called for every entry, the root and value 0 included, parents before their children, when the
 *                      source owns its value pool; may be NULL
 * With owned pools, entries and value blocks keep their place in the copied pools and addresses are translated; a
 * value that is no block of the pool becomes 0, and so do all when the destination has no value pool of its own. An
 * entry that is no block of the entry pool is left out with all below it. A caller's pool is shared with the clone:
 * fresh entry blocks of it are filled as copies, values are copied as words. A pool of the destination's own gives way
 * to it.
 * Returns the destination; empty when memory ran out. Cost: O(entries). */
MUB_API mub_tree *mub_tree_clone(const mub_tree *source, mub_pool *source_user_pool, mub_tree *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/* mub_tree_clone_entry: copy an entry and all below it into fresh blocks of a tree's entry pool.
 *   tree     gets the copy; its `count` rises by the links within
 *   source   of this tree or any other; unchanged. Values are copied as words
 * Returns the copy, not linked; NULL when memory ran out. Cost: O(entries copied). */
MUB_API mub_tree_entry *mub_tree_clone_entry(mub_tree *tree, const mub_tree_entry *source);

/* mub_tree_cmp: tell whether two byte runs are equal; lengths are used as given.
 *   a, b                 the first bytes of the runs
 *   a_length, b_length   bytes
 * Returns 1 when they are, else 0. */
MUB_API int mub_tree_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/* mub_tree_set_parent: make the entry the parent of all children on its ring, after its content was moved here. */
MUB_API void mub_tree_set_parent(mub_tree_entry *entry);

/* ---- entries ------------------------------------------------------------------------------------------------- */

/* mub_tree_entry_init: clear the five fields. */
MUB_API void mub_tree_entry_init(mub_tree_entry *entry);

/* mub_tree_entry_new: take a block of the entry pool.
 * Returns the entry, cleared and neither linked nor counted; NULL when none can be had. */
MUB_API mub_tree_entry *mub_tree_entry_new(mub_tree *tree);

/* mub_tree_entry_append: link an entry as the last child of another. NULL as either changes nothing.
 *   child   not linked, with or without children of its own */
MUB_API void mub_tree_entry_append(mub_tree *tree, mub_tree_entry *parent, mub_tree_entry *child);

/* mub_tree_entry_insert: link an entry right before another.
 *   sibling   NULL, or an entry without a parent: nothing changes
 *   entry     not linked; NULL changes nothing */
MUB_API void mub_tree_entry_insert(mub_tree *tree, mub_tree_entry *sibling, mub_tree_entry *entry);

/* mub_tree_entry_remove: unlink an entry with all below it; nothing is released. `count` falls by 1.
 *   entry   NULL, or without a parent: nothing changes */
MUB_API void mub_tree_entry_remove(mub_tree *tree, mub_tree_entry *entry);

/* mub_tree_entry_remove_x: return an entry and all below it to a caller's entry pool; nothing happens with an owned
 * one. Links and `count` stay, so unlink the entry first. Below the root, the root stays, with a link to what has
 * gone: clear its `first_child`. Cost: O(entries below). */
MUB_API void mub_tree_entry_remove_x(mub_tree *tree, mub_tree_entry *entry);

/* mub_tree_entry_free: the same after releasing every value that is not 0. Value blocks go back to a caller's value
 * pool, whoever owns the entry pool; the entries keep their values' words.
 *   release   called for every such value, children before their parents; may be NULL */
MUB_API void mub_tree_entry_free(mub_tree *tree, mub_tree_entry *entry, mub_free_fn release);

/* mub_tree_entry_swap: exchange the five fields of two entries, then make each the parent of the children that it got.
 * For entries without a parent: the siblings and the parent of a linked one would not learn of it. */
MUB_API void mub_tree_entry_swap(mub_tree_entry *a, mub_tree_entry *b);

/* mub_tree_entry_last: the last child.
 * Returns it; NULL when there is none. */
MUB_API mub_tree_entry *mub_tree_entry_last(const mub_tree_entry *entry);

/* mub_tree_entry_next: the sibling behind.
 * Returns it; NULL behind the last and without a parent. */
MUB_API mub_tree_entry *mub_tree_entry_next(const mub_tree_entry *entry);

/* mub_tree_entry_prev: the sibling before.
 * Returns it; NULL before the first and without a parent. */
MUB_API mub_tree_entry *mub_tree_entry_prev(const mub_tree_entry *entry);

/* mub_tree_entry_iter_next: step to the next entry in document order: parents first, then their children in turn.
 *   bound   the walk stays below it; NULL: below the top
 * Returns the first child, else what mub_tree_entry_find_next gives; NULL at the end. */
MUB_API mub_tree_entry *mub_tree_entry_iter_next(const mub_tree_entry *bound, const mub_tree_entry *entry);

/* mub_tree_entry_find_next: the same, past all that is below the entry.
 * Returns the sibling behind the entry, or behind the nearest ancestor that has one; NULL when `bound` or the top is
 * reached before. */
MUB_API mub_tree_entry *mub_tree_entry_find_next(const mub_tree_entry *bound, const mub_tree_entry *entry);

/* mub_tree_entry_find: search in document order, from behind `start` to the end of what is below `bound`.
 *   bound     `start` itself, to search what is below it; or an ancestor, to go on behind it; NULL: the top
 *   start     not compared itself
 *   compare   NULL finds nothing
 * Returns the first entry that matches; NULL when there is none. Cost: O(entries met). */
MUB_API mub_tree_entry *mub_tree_entry_find(const mub_tree_entry *bound, const mub_tree_entry *start,
                                            const void *key, int64_t length, mub_tree_compare_fn compare);

/* mub_tree_entry_find_x: mub_tree_entry_find with a context for the comparer. */
MUB_API mub_tree_entry *mub_tree_entry_find_x(const mub_tree_entry *bound, const mub_tree_entry *start,
                                              uint64_t context, const void *key, int64_t length,
                                              mub_tree_compare_x_fn compare);

/* mub_tree_entry_find_parent: search the ancestors of an entry, upward.
 *   stop      the first ancestor that is not compared any more; NULL: go on to the root, which is compared
 *   compare   NULL finds nothing
 * Returns the nearest that matches; NULL when there is none. */
MUB_API mub_tree_entry *mub_tree_entry_find_parent(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                                   const void *key, int64_t length,
                                                   mub_tree_compare_fn compare);

/* mub_tree_entry_find_parent_x: mub_tree_entry_find_parent with a context for the comparer. */
MUB_API mub_tree_entry *mub_tree_entry_find_parent_x(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                                     uint64_t context, const void *key, int64_t length,
                                                     mub_tree_compare_x_fn compare);

/* mub_tree_entry_find_child: tell whether an entry is anywhere below another.
 *   ancestor   the one that may be above
 * Returns 1 or 0, which is the answer for the entry itself, too. Cost: O(depth). */
MUB_API int mub_tree_entry_find_child(const mub_tree_entry *ancestor, const mub_tree_entry *entry);

/* mub_tree_entry_index: the position among the siblings.
 * Returns it, from 1 on; 1 without a parent. Cost: O(position). */
MUB_API int64_t mub_tree_entry_index(const mub_tree_entry *entry);

/* mub_tree_entry_array: put an entry's index path before the words of an array: the index of each entry on the way
 * down from the top, which counts as 1, to the entry. The root's path is [1].
 *   array   initialised; its words are unchanged when memory runs out
 * Cost: O(words + depth + sum of the positions). */
MUB_API void mub_tree_entry_array(const mub_tree_entry *entry, mub_arrayt *array);

/* mub_tree_entry_compare: order two entries of one tree as a document: by their index paths.
 * Returns the difference of the first indexes that differ; else of the depths: an ancestor comes first; 0 for an entry
 * and itself. Cost: O(depth + sum of the positions). */
MUB_API int mub_tree_entry_compare(const mub_tree_entry *a, const mub_tree_entry *b);

/* ---- paths ---------------------------------------------------------------------------------------------------
 *
 * A path is an array of keys, one a step. A step leads to the first entry that matches its key, in document order,
 * anywhere below the entry reached before: a child, a grandchild or deeper. So after inserting [a, b], the path [b]
 * leads to that b, too. */

/* mub_tree_insert: follow a path, appending an entry to the one reached wherever no entry matches.
 *   init      called with the block of the value pool that a new last entry gets; may be NULL. Entries made before the
 *             last get no value, nor does any without a value pool
 *   compare   NULL: nothing happens
 * Returns the entry at the end, found or new; NULL for an empty path, and when memory ran out: entries made before then
 * stay. */
MUB_API mub_tree_entry *mub_tree_insert(mub_tree *tree, const mub_array *path, mub_init_fn init,
                                        mub_tree_compare_fn compare);

/* mub_tree_insert_x: mub_tree_insert with a context for the comparer. */
MUB_API mub_tree_entry *mub_tree_insert_x(mub_tree *tree, const mub_array *path, uint64_t context,
                                          mub_init_fn init, mub_tree_compare_x_fn compare);

/* mub_tree_insert_t: mub_tree_insert from the middle of a path.
 *   current   where the path has led so far
 *   depth     the steps taken: the index of the next key, not below 0; at the path's end the result is NULL */
MUB_API mub_tree_entry *mub_tree_insert_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                          const mub_array *path, mub_init_fn init,
                                          mub_tree_compare_fn compare);

/* mub_tree_insert_x_t: mub_tree_insert_t with a context for the comparer. */
MUB_API mub_tree_entry *mub_tree_insert_x_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                            const mub_array *path, uint64_t context, mub_init_fn init,
                                            mub_tree_compare_x_fn compare);

/* mub_tree_find: follow a path.
 *   compare   NULL finds nothing
 * Returns the entry at its end; NULL when a step leads nowhere or the path is empty. */
MUB_API mub_tree_entry *mub_tree_find(const mub_tree *tree, const mub_array *path,
                                      mub_tree_compare_fn compare);

/* mub_tree_find_x: mub_tree_find with a context for the comparer. */
MUB_API mub_tree_entry *mub_tree_find_x(const mub_tree *tree, const mub_array *path, uint64_t context,
                                        mub_tree_compare_x_fn compare);

/* mub_tree_find_t: mub_tree_find from the middle of a path.
 *   current   where the path has led so far
 *   depth     the steps taken: the index of the next key; at the path's end the result is NULL */
MUB_API mub_tree_entry *mub_tree_find_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                        mub_tree_compare_fn compare);

/* mub_tree_find_x_t: mub_tree_find_t with a context for the comparer. */
MUB_API mub_tree_entry *mub_tree_find_x_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                          uint64_t context, mub_tree_compare_x_fn compare);

/* ---- mub_bitree: a binary tree of links alone -----------------------------------------------------------------
 *
 * The caller compares keys of its own, walks down by the fields and says on which side a new entry goes.
 *
 * Ownership, where a function does not say otherwise:
 *   mub_bitree_entry *   the entry is a block of the entry pool, or the root
 *   _clone               the copy is the destination's; a caller's value pool is shared by both, and values are then
 *                        copied as words
 *   _entry_remove        the entries are the pool's again, though links still lead to them; values are not released
 *   _entry_free          each value is handed to `release`, its block to a caller's value pool; with a caller's entry
 *                        pool the entries are the pool's again */

/* One entry; it stays where it is until it is released. */
typedef struct mub_bitree_entry {
  struct mub_bitree_entry *parent; /* NULL in the root; on a chain of equals, the parent of its head */
  struct mub_bitree_entry *equal;  /* the next entry that ranks equal, or NULL */
  struct mub_bitree_entry *left;   /* ranks lower, or NULL */
  struct mub_bitree_entry *right;  /* ranks higher, or NULL */
  uint64_t value;                  /* the caller's; may be changed in place */
} mub_bitree_entry;

typedef struct mub_bitree {
  mub_bitree_entry root; /* an entry like any other, but for its place in the record */
  int64_t count;         /* links made by mub_bitree_entry_add */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_bitree_init, released by mub_bitree_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_bitree;

/* mub_bitree_init: make the record a tree of a root alone.
 *   own_entry_pool, own_value_pool   not 0: make a pool that the tree owns
 * A pool record that cannot be allocated leaves its field NULL and its flag 0. Returns the tree. */
MUB_API mub_bitree *mub_bitree_init(mub_bitree *tree, int own_entry_pool, int own_value_pool);

/* mub_bitree_term: release the pools that the tree owns, their fields then NULL and their flags as they were, and
 * return entries to a caller's entry pool. Values are not looked at. Returns the tree, which is empty.
 * Cost: one release a chunk; with a caller's entry pool O(entries). */
MUB_API mub_bitree *mub_bitree_term(mub_bitree *tree);

/* mub_bitree_remove_all: empty the tree. Entries go back to a caller's pool, owned pools are emptied, values are not
 * looked at. Returns the tree. Cost: as mub_bitree_term. */
MUB_API mub_bitree *mub_bitree_remove_all(mub_bitree *tree);

/* mub_bitree_free_all: the same after releasing every value that is not 0, the root's included; value blocks go back
 * to a caller's value pool.
 *   release   called once for every such value, in the order of mub_bitree_entry_remove; may be NULL
 * Returns the tree. Cost: O(entries). */
MUB_API mub_bitree *mub_bitree_free_all(mub_bitree *tree, mub_free_fn release);

/* mub_bitree_clone: copy a tree.
 *   source             unchanged
 *   source_user_pool   with `destination_user_pool` and `callback`: a pool that the values refer into, cloned too;
 *                      a pool given as both is shared; else NULL
 *   destination        initialised with the same flags; what it held is dropped
 *   callback           called once for every entry, the root and value 0 included, when the source owns its value
 *                      pool: for an entry, then what is on its left, on its right, and its equals; may be NULL
 * With owned pools, entries and value blocks keep their place in the copied pools and addresses are translated; a
 * value that is no block of the pool becomes 0, and so do all when the destination has no value pool of its own. A
 * link to what is no block of the entry pool becomes NULL. Unless both own their entry pools, the copies are fresh
 * blocks of the destination's; one without a pool shares that of the source. A caller's value pool is shared, values
 * are then copied as words, and a value pool of the destination's own gives way.
 * Returns the destination; empty when memory ran out. Cost: O(entries). */
MUB_API mub_bitree *mub_bitree_clone(const mub_bitree *source, mub_pool *source_user_pool,
                                     mub_bitree *destination, mub_pool *destination_user_pool,
                                     mub_clone_fn callback);

/* mub_bitree_clone_entry: copy an entry and all that hangs on it, its equals included, into fresh blocks of a tree's
 * entry pool.
 *   tree     gets the copy; its `count` rises by the links within
 *   source   of this tree or any other; unchanged. Values are copied as words
 * Returns the copy, its `parent` NULL; NULL when memory ran out. Cost: O(entries copied). */
MUB_API mub_bitree_entry *mub_bitree_clone_entry(mub_bitree *tree, const mub_bitree_entry *source);

/* mub_bitree_set_parent: make the entry the parent of its left and its right child and of their equals, and give its
 * own equals its own parent, after its content was moved here. Cost: O(equals). */
MUB_API void mub_bitree_set_parent(mub_bitree_entry *entry);

/* mub_bitree_entry_init: clear the five fields. */
MUB_API void mub_bitree_entry_init(mub_bitree_entry *entry);

/* mub_bitree_entry_new: take a block of the entry pool.
 * Returns the entry, cleared and neither linked nor counted; NULL when none can be had. */
MUB_API mub_bitree_entry *mub_bitree_entry_new(mub_bitree *tree);

/* mub_bitree_entry_add: link an entry to another. What was linked there before is no longer reachable from it: add an
 * equal entry to the last one of the chain.
 *   direction   below 0: as left child; above 0: as right child; 0: as next equal, with the other's parent
 *   added       NULL, as `entry`, changes nothing
 * Returns the tree. */
MUB_API mub_bitree *mub_bitree_entry_add(mub_bitree *tree, mub_bitree_entry *entry, int direction,
                                         mub_bitree_entry *added);

/* mub_bitree_entry_swap: exchange the five fields of two entries, then mub_bitree_set_parent for both. Links of others
 * to the two stay. */
MUB_API void mub_bitree_entry_swap(mub_bitree_entry *a, mub_bitree_entry *b);

/* mub_bitree_entry_remove: return what is on the left, on the right, the equals, and then the entry itself, each in
 * that order, to the entry pool, whoever owns it. The root itself stays. Links and `count` stay: clear the link to the
 * entry, in the root those that it holds. Cost: O(entries met). */
MUB_API void mub_bitree_entry_remove(mub_bitree *tree, mub_bitree_entry *entry);

/* mub_bitree_entry_free: release, in the same order, every value that is not 0, its block going back to a caller's
 * value pool, and return the entries to a caller's entry pool; with an owned one they stay, with their values' words.
 *   release   called for every such value; may be NULL */
MUB_API void mub_bitree_entry_free(mub_bitree *tree, mub_bitree_entry *entry, mub_free_fn release);

#ifdef __cplusplus
}
#endif

#endif
