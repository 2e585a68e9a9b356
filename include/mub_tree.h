/**
 * @defgroup tree_h mub_tree.h: trees
 *
 * mub_tree, a general tree whose entries have any number of ordered children, and mub_bitree, a binary tree
 * of links.
 *
 *     mub_tree: the children of an entry are a ring         mub_bitree: equals are on a chain
 *
 *       root                                                    root ──equal──► e ──equal──► NULL
 *        │ first_child                                      left │ │ right
 *        ▼                                                       ▼ ▼
 *     ┌► a ◄──► b ◄──► c ◄┐                                      a b
 *     └───────────────────┘  prev of the first is the last
 *
 * The root lies in the tree's record: the record's address is that of the root, which is never released.
 * Neither tree stores keys. The entries of a mub_tree are found by a comparer of the caller's; in a
 * mub_bitree, the caller says where an entry belongs.
 *
 * **Entry pool.** The functions that make entries need one: made by `_init`, or an external one, written into
 * `entry_pool`, with a block size of at least that of the entry record. Several trees may share an external
 * pool. Entries may also lie in the caller's own memory, as long as no function that returns entries to a
 * pool reaches them.
 *
 * **Value pool.** A pool made by `_init` has no block size yet: store the size of your values in
 * `value_pool->block_size`. Blocks of an owned value pool are released with the whole pool; single blocks go
 * back to an external pool only.
 *
 * **Depth.** Nothing recurses: a tree may be as deep, and a ring or a chain as long, as memory allows.
 *
 * What the everyday operations return:
 *
 * | operation                    | entry present        | entry absent            | out of memory          |
 * | ---------------------------- | -------------------- | ----------------------- | ---------------------- |
 * | mub_tree_insert()            | the entry            | a new entry             | NULL                   |
 * | mub_tree_find()              | the entry            | NULL                    |                        |
 * | mub_tree_entry_find()        | the entry            | NULL                    |                        |
 * | mub_tree_entry_find_parent() | the entry            | NULL                    |                        |
 * | mub_tree_entry_find_child()  | 1                    | 0                       |                        |
 * | mub_tree_entry_last()        | the entry            | NULL                    |                        |
 * | `_entry_new`                 |                      | a new entry, not linked | NULL                   |
 * | `_clone_entry`               | the copy, not linked |                         | NULL                   |
 * | `_clone`                     | the destination      |                         | the destination, empty |
 *
 * @{
 */
#ifndef MUB_TREE_H
#define MUB_TREE_H

#include "mub_array.h"
#include "mub_base.h"
#include "mub_pool.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup tree mub_tree: a general tree, its children in rings, found by a path of keys
 *
 * A tree of entries with any number of children.
 *
 * A path is an array of keys, one per step. A step goes to the first entry that matches its key, in document
 * order, anywhere below the entry reached before: a child, a grandchild or deeper. So after inserting [a, b],
 * the path [b] leads to that b, too.
 *
 * @{
 */

/** One entry; it stays where it is until it is released. */
typedef struct mub_tree_entry {
  /** the entry above; NULL in the root and in an entry that is not linked */
  struct mub_tree_entry *parent;
  /** its first child; NULL if there is none */
  struct mub_tree_entry *first_child;
  /** the previous sibling; of the first, the last */
  struct mub_tree_entry *prev;
  /** the next sibling; of the last, the first */
  struct mub_tree_entry *next;
  /** the caller's; may be changed in place */
  uint64_t value;
} mub_tree_entry;

/** Entries with any number of children. */
typedef struct mub_tree {
  mub_tree_entry root;      /**< paths start below it, and never lead to it; its value is the caller's too */
  int64_t count;            /**< links made minus links undone, not entries: removing a subtree undoes one */
  mub_pool *entry_pool;     /**< where the entries come from; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: made by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< where value blocks come from; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: made by `_init`, released by `_term` */
} mub_tree;

/**
 * Checks whether an entry matches a key.
 *
 * Entries that mub_tree_insert() made on the way to the last one of a path have value 0.
 *
 * @param[in] entry   the entry
 * @param[in] key     the key
 * @param[in] length  bytes of the key, as they were passed or as the path has them
 * @return 0 if the entry matches
 * @bounds key[length]
 * @nullable key
 */
typedef int (*mub_tree_compare_fn)(const mub_tree_entry *entry, const void *key, int64_t length);

/**
 * Checks whether an entry matches a key in the `_x` functions, which pass the caller's context.
 *
 * Entries that mub_tree_insert_x() made on the way to the last one of a path have value 0.
 *
 * @param[in] entry    the entry
 * @param[in] context  the caller's context
 * @param[in] key      the key
 * @param[in] length   bytes of the key, as they were passed or as the path has them
 * @return 0 if the entry matches
 * @bounds key[length]
 * @nullable key
 */
typedef int (*mub_tree_compare_x_fn)(const mub_tree_entry *entry, uint64_t context, const void *key,
                                     int64_t length);

/**
 * Makes the record a tree of a root alone.
 *
 * @param[out] tree           the tree
 * @param[in] own_entry_pool  not 0: make an entry pool that the tree owns
 * @param[in] own_value_pool  not 0: make a value pool that the tree owns
 * @return the tree
 * @failure none; a pool for which memory runs out is missing: its field is NULL and its flag 0
 * @owner the record is the caller's; the pools made here belong to the tree until mub_tree_term()
 * @invalidates nothing
 */
MUB_API mub_tree *mub_tree_init(mub_tree *tree, int own_entry_pool, int own_value_pool);

/**
 * Releases the pools that the tree owns and returns entries to an external entry pool.
 *
 * The fields of owned pools become NULL; their flags do not change. Values are not visited. The tree is then
 * empty, with a cleared root.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner what the tree owns is released; values and external pools stay the caller's
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_tree *mub_tree_term(mub_tree *tree);

/**
 * Empties the tree.
 *
 * Entries go back to an external pool, owned pools are emptied, and the root is cleared. Values are not
 * visited.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner entries go back to their pool; values are not released
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_tree *mub_tree_remove_all(mub_tree *tree);

/**
 * Releases every value that is not 0, the root's included, then empties the tree and clears the root.
 *
 * The values' blocks go back to an external value pool, and an owned one is emptied.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called with every value that is not 0, children before their parents; NULL: not called
 * @return the tree
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block goes back to an external value pool; entries go back to
 *   their pool
 * @invalidates all entries but the root, and the values
 * @cost O(entries)
 * @nullable release
 */
MUB_API mub_tree *mub_tree_free_all(mub_tree *tree, mub_free_fn release);

/**
 * Copies a tree.
 *
 * Owned pools are cloned: entries and value blocks keep their places in them, and addresses are translated. A
 * value that is no block of the value pool becomes 0, and so do all values if the destination has no value
 * pool of its own. An entry that is no block of the entry pool is left out, with all below it. External pools
 * are shared, and the destination gives up its own pool: it takes fresh blocks of an external entry pool, and
 * with an external value pool, values are copied as words.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both trees are the same.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a pool that the values point into and that is cloned too; NULL if
 *                                       there is none
 * @param[in,out] destination            an initialised tree with the same flags; its old entries are dropped
 *                                       and their values not released
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry, the root and value 0 included, parents before
 *                                       their children, if the source owns its value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out, or if it has no pool to take entries from
 * @owner the copy belongs to the destination; an external pool is shared by both trees
 * @invalidates all entries of the destination but the root, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(entries), and the bytes of the pools that are cloned
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_tree *mub_tree_clone(const mub_tree *source, mub_pool *source_user_pool, mub_tree *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/**
 * Copies an entry and all below it into fresh blocks of a tree's entry pool.
 *
 * Values are copied as words.
 *
 * @param[in,out] tree  the tree that gets the copy; its `count` rises by the links within the copy
 * @param[in] source    an entry of this tree or of any other
 * @return the copy, not linked
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the copies are blocks of the tree's entry pool, for the caller to link; values are copied as words
 * @invalidates nothing
 * @cost O(entries copied)
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_clone_entry(mub_tree *tree, const mub_tree_entry *source);

/**
 * Checks whether two byte ranges are equal.
 *
 * Lengths are used as given.
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
MUB_API int mub_tree_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/**
 * Makes an entry the parent of all its children, after its content was moved there from another entry.
 *
 * @param[in,out] entry  an entry
 * @invalidates nothing
 * @cost O(children)
 * @level low
 */
MUB_API void mub_tree_set_parent(mub_tree_entry *entry);

/**
 * Clears the five fields of an entry.
 *
 * @param[out] entry  an entry
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_tree_entry_init(mub_tree_entry *entry);

/**
 * Takes a block of the entry pool.
 *
 * @param[in,out] tree  the tree
 * @return the entry, cleared and neither linked nor counted
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 */
MUB_API mub_tree_entry *mub_tree_entry_new(mub_tree *tree);

/**
 * Links an entry as the last child of another.
 *
 * @param[in,out] tree    the tree
 * @param[in,out] parent  the entry that gets a child; with NULL nothing changes
 * @param[in,out] child   an entry that is not linked, with or without children of its own; with NULL nothing
 *                        changes
 * @owner the tree refers to the entry, which stays where it is
 * @invalidates nothing
 * @nullable parent, child
 */
MUB_API void mub_tree_entry_append(mub_tree *tree, mub_tree_entry *parent, mub_tree_entry *child);

/**
 * Links an entry right before another.
 *
 * @param[in,out] tree     the tree
 * @param[in,out] sibling  the other entry; with NULL, or an entry without a parent, nothing changes
 * @param[in,out] entry    an entry that is not linked; with NULL or `sibling` itself nothing changes
 * @owner the tree refers to the entry, which stays where it is
 * @invalidates nothing
 * @nullable sibling, entry
 */
MUB_API void mub_tree_entry_insert(mub_tree *tree, mub_tree_entry *sibling, mub_tree_entry *entry);

/**
 * Unlinks an entry with all below it.
 *
 * Nothing is released, and `count` falls by 1.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  the entry; with NULL, or an entry without a parent, nothing changes
 * @owner the tree no longer refers to the entry: it is the caller's, to link or to return
 * @invalidates nothing
 * @nullable entry
 */
MUB_API void mub_tree_entry_remove(mub_tree *tree, mub_tree_entry *entry);

/**
 * Returns an entry and all below it to an external entry pool; nothing happens with an owned one.
 *
 * Links and `count` stay as they are, so unlink the entry first. The root is not returned and still links to
 * its former children: clear its `first_child`.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner entries go back to an external pool, although links still lead to them; values are not released
 * @invalidates the entry and those below it, if their pool is external
 * @cost O(entries below)
 * @level low
 */
MUB_API void mub_tree_entry_remove_x(mub_tree *tree, mub_tree_entry *entry);

/**
 * Releases the values of an entry and all below it, and returns the entries as mub_tree_entry_remove_x()
 * does.
 *
 * The values' blocks go back to an external value pool, whoever owns the entry pool. The entries keep the
 * words of their values.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @param[in] release    called with every value that is not 0, children before their parents; NULL: not
 *                       called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block goes back to an external value pool; entries go back to
 *   an external pool, although links still lead to them
 * @invalidates the values; the entry and those below it, if their pool is external
 * @cost O(entries below)
 * @nullable release
 */
MUB_API void mub_tree_entry_free(mub_tree *tree, mub_tree_entry *entry, mub_free_fn release);

/**
 * Exchanges the five fields of two entries, then makes each the parent of its new children.
 *
 * This is for entries without a parent: the siblings and the parent of a linked entry are not updated.
 *
 * @param[in,out] a  one entry
 * @param[in,out] b  the other entry
 * @owner both entries stay where they are
 * @invalidates nothing
 * @cost O(children)
 * @level low
 */
MUB_API void mub_tree_entry_swap(mub_tree_entry *a, mub_tree_entry *b);

/**
 * Gets the last child.
 *
 * @param[in] entry  an entry
 * @return the child
 * @failure NULL if there is none
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 */
MUB_API mub_tree_entry *mub_tree_entry_last(const mub_tree_entry *entry);

/**
 * Gets the next sibling.
 *
 * @param[in] entry  an entry
 * @return the sibling
 * @failure NULL after the last and without a parent
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 */
MUB_API mub_tree_entry *mub_tree_entry_next(const mub_tree_entry *entry);

/**
 * Gets the previous sibling.
 *
 * @param[in] entry  an entry
 * @return the sibling
 * @failure NULL before the first and without a parent
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 */
MUB_API mub_tree_entry *mub_tree_entry_prev(const mub_tree_entry *entry);

/**
 * Steps to the next entry in document order.
 *
 * In document order an entry comes before its children, and siblings come in turn.
 *
 * @param[in] bound  the search stays below this entry; NULL: below the top
 * @param[in] entry  an entry
 * @return the first child, else what mub_tree_entry_find_next() gives
 * @failure NULL at the end
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(depth); O(1) on average in a walk over the tree
 * @nullable bound
 */
MUB_API mub_tree_entry *mub_tree_entry_iter_next(const mub_tree_entry *bound, const mub_tree_entry *entry);

/**
 * Steps to the next entry in document order, skipping all below the entry.
 *
 * In document order an entry comes before its children, and siblings come in turn.
 *
 * @param[in] bound  the search stays below this entry; NULL: below the top
 * @param[in] entry  an entry
 * @return the next sibling of the entry, or of its nearest ancestor that has one
 * @failure NULL if `bound` or the top is reached first
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(depth)
 * @nullable bound
 */
MUB_API mub_tree_entry *mub_tree_entry_find_next(const mub_tree_entry *bound, const mub_tree_entry *entry);

/**
 * Searches the entries after `start` in document order, as far as they are below `bound`.
 *
 * In document order an entry comes before its children, and siblings come in turn.
 *
 * @param[in] bound    `start` itself: only what is below it; an ancestor: on to the end of what is below
 *                     that; NULL: on to the end of the tree
 * @param[in] start    where to begin; not compared itself
 * @param[in] key      the key to look for; passed to the comparer
 * @param[in] length   the length of the key; passed to the comparer
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the first entry that matches
 * @failure NULL if there is none
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(entries visited)
 * @bounds key[length]
 * @nullable bound, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find(const mub_tree_entry *bound, const mub_tree_entry *start,
                                            const void *key, int64_t length, mub_tree_compare_fn compare);

/**
 * Searches the entries after `start` in document order, as far as they are below `bound`.
 *
 * In document order an entry comes before its children, and siblings come in turn.
 *
 * @param[in] bound    `start` itself: only what is below it; an ancestor: on to the end of what is below
 *                     that; NULL: on to the end of the tree
 * @param[in] start    where to begin; not compared itself
 * @param[in] context  any word; passed to the comparer before the key
 * @param[in] key      the key to look for; passed to the comparer
 * @param[in] length   the length of the key; passed to the comparer
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the first entry that matches
 * @failure NULL if there is none
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(entries visited)
 * @bounds key[length]
 * @nullable bound, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find_x(const mub_tree_entry *bound, const mub_tree_entry *start,
                                              uint64_t context, const void *key, int64_t length,
                                              mub_tree_compare_x_fn compare);

/**
 * Searches the ancestors of an entry, upward.
 *
 * @param[in] stop     the ancestor at which the search ends, not compared itself; NULL: the search goes up to
 *                     the root, which is compared
 * @param[in] entry    an entry
 * @param[in] key      the key to look for; passed to the comparer
 * @param[in] length   the length of the key; passed to the comparer
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the nearest ancestor that matches
 * @failure NULL if there is none
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(depth)
 * @bounds key[length]
 * @nullable stop, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find_parent(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                                   const void *key, int64_t length,
                                                   mub_tree_compare_fn compare);

/**
 * Searches the ancestors of an entry, upward.
 *
 * @param[in] stop     the ancestor at which the search ends, not compared itself; NULL: the search goes up to
 *                     the root, which is compared
 * @param[in] entry    an entry
 * @param[in] context  any word; passed to the comparer before the key
 * @param[in] key      the key to look for; passed to the comparer
 * @param[in] length   the length of the key; passed to the comparer
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the nearest ancestor that matches
 * @failure NULL if there is none
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(depth)
 * @bounds key[length]
 * @nullable stop, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find_parent_x(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                                     uint64_t context, const void *key, int64_t length,
                                                     mub_tree_compare_x_fn compare);

/**
 * Checks whether an entry is anywhere below another.
 *
 * @param[in] ancestor  the entry that may be above
 * @param[in] entry     an entry
 * @return 1 if it is, else 0; 0 also if both are the same
 * @cost O(depth)
 */
MUB_API int mub_tree_entry_find_child(const mub_tree_entry *ancestor, const mub_tree_entry *entry);

/**
 * Computes the position of an entry among its siblings.
 *
 * @param[in] entry  an entry
 * @return the position, counted from 1; 1 without a parent
 * @cost O(position)
 */
MUB_API int64_t mub_tree_entry_index(const mub_tree_entry *entry);

/**
 * Inserts the index path of an entry before the words of an array: what mub_tree_entry_index() gives for each
 * entry from the top down to this one.
 *
 * The path of the root is [1].
 *
 * @param[in] entry      an entry
 * @param[in,out] array  an initialised array
 * @failure the array is unchanged if memory runs out
 * @owner the words are copied
 * @invalidates pointers to words of the array
 * @cost O(words + depth + sum of the positions)
 */
MUB_API void mub_tree_entry_array(const mub_tree_entry *entry, mub_arrayt *array);

/**
 * Orders two entries of one tree as in a document: by their index paths.
 *
 * @param[in] a  one entry
 * @param[in] b  the other entry
 * @return the difference of the first indexes that differ, else of the depths, so that an ancestor comes
 *   first; 0 for the same entry
 * @cost O(depth + sum of the positions)
 */
MUB_API int mub_tree_entry_compare(const mub_tree_entry *a, const mub_tree_entry *b);

/**
 * Follows a path, and appends an entry to the one reached wherever no entry matches.
 *
 * @param[in,out] tree  the tree
 * @param[in] path      the keys of the steps; only read
 * @param[in] init      called with the block of the value pool that a new last entry gets; NULL: not called.
 *                      Entries made on the way to the last one have value 0, and so has the last one if there
 *                      was no block
 * @param[in] compare   checks whether an entry matches a key; with NULL nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL for an empty path, without a comparer, and if memory ran out; entries made before that stay
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 */
MUB_API mub_tree_entry *mub_tree_insert(mub_tree *tree, const mub_array *path, mub_init_fn init,
                                        mub_tree_compare_fn compare);

/**
 * Follows a path, and appends an entry to the one reached wherever no entry matches.
 *
 * @param[in,out] tree  the tree
 * @param[in] path      the keys of the steps; only read
 * @param[in] context   any word; passed to the comparer before the key
 * @param[in] init      called with the block of the value pool that a new last entry gets; NULL: not called.
 *                      Entries made on the way to the last one have value 0, and so has the last one if there
 *                      was no block
 * @param[in] compare   checks whether an entry matches a key; with NULL nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL for an empty path, without a comparer, and if memory ran out; entries made before that stay
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 */
MUB_API mub_tree_entry *mub_tree_insert_x(mub_tree *tree, const mub_array *path, uint64_t context,
                                          mub_init_fn init, mub_tree_compare_x_fn compare);

/**
 * Follows a path from its middle, and appends an entry to the one reached wherever no entry matches.
 *
 * @param[in,out] tree     the tree
 * @param[in,out] current  the entry that the path has reached so far
 * @param[in] depth        the number of steps taken, which is the index of the next key, not below 0; at the
 *                         end of the path the result is NULL
 * @param[in] path         the keys of the steps; only read
 * @param[in] init         called with the block of the value pool that a new last entry gets; NULL: not
 *                         called. Entries made on the way to the last one have value 0, and so has the last
 *                         one if there was no block
 * @param[in] compare      checks whether an entry matches a key; with NULL nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL at the end of the path, without a comparer, and if memory ran out; entries made before that
 *   stay
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_insert_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                          const mub_array *path, mub_init_fn init,
                                          mub_tree_compare_fn compare);

/**
 * Follows a path from its middle, and appends an entry to the one reached wherever no entry matches.
 *
 * @param[in,out] tree     the tree
 * @param[in,out] current  the entry that the path has reached so far
 * @param[in] depth        the number of steps taken, which is the index of the next key, not below 0; at the
 *                         end of the path the result is NULL
 * @param[in] path         the keys of the steps; only read
 * @param[in] context      any word; passed to the comparer before the key
 * @param[in] init         called with the block of the value pool that a new last entry gets; NULL: not
 *                         called. Entries made on the way to the last one have value 0, and so has the last
 *                         one if there was no block
 * @param[in] compare      checks whether an entry matches a key; with NULL nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL at the end of the path, without a comparer, and if memory ran out; entries made before that
 *   stay
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_insert_x_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                            const mub_array *path, uint64_t context, mub_init_fn init,
                                            mub_tree_compare_x_fn compare);

/**
 * Follows a path.
 *
 * @param[in] tree     the tree
 * @param[in] path     the keys of the steps; only read
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is empty
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(entries visited)
 * @nullable compare
 */
MUB_API mub_tree_entry *mub_tree_find(const mub_tree *tree, const mub_array *path,
                                      mub_tree_compare_fn compare);

/**
 * Follows a path.
 *
 * @param[in] tree     the tree
 * @param[in] path     the keys of the steps; only read
 * @param[in] context  any word; passed to the comparer before the key
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is empty
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(entries visited)
 * @nullable compare
 */
MUB_API mub_tree_entry *mub_tree_find_x(const mub_tree *tree, const mub_array *path, uint64_t context,
                                        mub_tree_compare_x_fn compare);

/**
 * Follows a path from its middle.
 *
 * @param[in] current  the entry that the path has reached so far
 * @param[in] depth    the number of steps taken, which is the index of the next key; at the end of the path
 *                     the result is NULL
 * @param[in] path     the keys of the steps; only read
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is at its end
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(entries visited)
 * @nullable compare
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_find_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                        mub_tree_compare_fn compare);

/**
 * Follows a path from its middle.
 *
 * @param[in] current  the entry that the path has reached so far
 * @param[in] depth    the number of steps taken, which is the index of the next key; at the end of the path
 *                     the result is NULL
 * @param[in] path     the keys of the steps; only read
 * @param[in] context  any word; passed to the comparer before the key
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is at its end
 * @owner the entry stays where it is: a block of the entry pool, the root, or the caller's own memory
 * @cost O(entries visited)
 * @nullable compare
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_find_x_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                          uint64_t context, mub_tree_compare_x_fn compare);

/** @} */

/**
 * @defgroup bitree mub_bitree: a binary tree of links, with chains of equals
 *
 * A binary tree of links. The caller compares keys of its own, walks down by the fields and says on which
 * side a new entry goes.
 *
 * @{
 */

/** One entry; it stays where it is until it is released. */
typedef struct mub_bitree_entry {
  struct mub_bitree_entry *parent; /**< NULL in the root; on a chain of equals, the parent of its head */
  struct mub_bitree_entry *equal;  /**< the next entry that ranks equal, or NULL */
  struct mub_bitree_entry *left;   /**< ranks lower, or NULL */
  struct mub_bitree_entry *right;  /**< ranks higher, or NULL */
  uint64_t value;                  /**< the caller's; may be changed in place */
} mub_bitree_entry;

/** A binary tree of links. */
typedef struct mub_bitree {
  mub_bitree_entry root;    /**< an entry like any other, except for its place in the record */
  int64_t count;            /**< links made by mub_bitree_entry_add() */
  mub_pool *entry_pool;     /**< where the entries come from; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: made by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< where value blocks come from; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: made by `_init`, released by `_term` */
} mub_bitree;

/**
 * Makes the record a tree of a root alone.
 *
 * @param[out] tree           the tree
 * @param[in] own_entry_pool  not 0: make an entry pool that the tree owns
 * @param[in] own_value_pool  not 0: make a value pool that the tree owns
 * @return the tree
 * @failure none; a pool for which memory runs out is missing: its field is NULL and its flag 0
 * @owner the record is the caller's; the pools made here belong to the tree until mub_bitree_term()
 * @invalidates nothing
 */
MUB_API mub_bitree *mub_bitree_init(mub_bitree *tree, int own_entry_pool, int own_value_pool);

/**
 * Releases the pools that the tree owns and returns entries to an external entry pool.
 *
 * The fields of owned pools become NULL; their flags do not change. Values are not visited. The tree is then
 * empty, with a cleared root.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner what the tree owns is released; values and external pools stay the caller's
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_bitree *mub_bitree_term(mub_bitree *tree);

/**
 * Empties the tree.
 *
 * Entries go back to an external pool, owned pools are emptied, and the root is cleared. Values are not
 * visited.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner entries go back to their pool; values are not released
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_bitree *mub_bitree_remove_all(mub_bitree *tree);

/**
 * Releases every value that is not 0, the root's included, then empties the tree and clears the root.
 *
 * The values' blocks go back to an external value pool, and an owned one is emptied.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called once with every value that is not 0, in the order of mub_bitree_entry_remove();
 *                      NULL: not called
 * @return the tree
 * @failure none; a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block goes back to an external value pool; entries go back to
 *   their pool
 * @invalidates all entries but the root, and the values
 * @cost O(entries)
 * @nullable release
 */
MUB_API mub_bitree *mub_bitree_free_all(mub_bitree *tree, mub_free_fn release);

/**
 * Copies a tree.
 *
 * Owned pools are cloned: entries and value blocks keep their places in them, and addresses are translated. A
 * link to what is no block of the entry pool becomes NULL. A value that is no block of the value pool becomes
 * 0, and so do all values if the destination has no value pool of its own.
 *
 * Unless both trees own their entry pools, the copies are fresh blocks of the destination's entry pool; a
 * destination without one shares an external one of the source. An external value pool is shared: values are
 * copied as words, and the destination gives up its own value pool.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both trees are the same.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a pool that the values point into and that is cloned too; NULL if
 *                                       there is none
 * @param[in,out] destination            an initialised tree with the same flags; its old entries are dropped
 *                                       and their values not released
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called once for every entry, the root and value 0 included, if the
 *                                       source owns its value pool: for an entry, then for its left side, its
 *                                       right side and its equals; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out, or if it has no pool to take entries from
 * @owner the copy belongs to the destination; a shared pool stays its owner's
 * @invalidates all entries of the destination but the root, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(entries), and the bytes of the pools that are cloned
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_bitree *mub_bitree_clone(const mub_bitree *source, mub_pool *source_user_pool,
                                     mub_bitree *destination, mub_pool *destination_user_pool,
                                     mub_clone_fn callback);

/**
 * Copies an entry and everything linked from it, its equals included, into fresh blocks of a tree's entry
 * pool.
 *
 * Values are copied as words.
 *
 * @param[in,out] tree  the tree that gets the copy; its `count` rises by the links within the copy
 * @param[in] source    an entry of this tree or of any other
 * @return the copy, its `parent` NULL
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the copies are blocks of the tree's entry pool, for the caller to link; values are copied as words
 * @invalidates nothing
 * @cost O(entries copied)
 * @level low
 */
MUB_API mub_bitree_entry *mub_bitree_clone_entry(mub_bitree *tree, const mub_bitree_entry *source);

/**
 * Makes an entry the parent of its left and right children and their equals, and gives its own equals its
 * parent, after its content was moved there from another entry.
 *
 * @param[in,out] entry  an entry
 * @invalidates nothing
 * @cost O(equals)
 * @level low
 */
MUB_API void mub_bitree_set_parent(mub_bitree_entry *entry);

/**
 * Clears the five fields of an entry.
 *
 * @param[out] entry  an entry
 * @invalidates nothing
 * @level low
 */
MUB_API void mub_bitree_entry_init(mub_bitree_entry *entry);

/**
 * Takes a block of the entry pool.
 *
 * @param[in,out] tree  the tree
 * @return the entry, cleared and neither linked nor counted
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 */
MUB_API mub_bitree_entry *mub_bitree_entry_new(mub_bitree *tree);

/**
 * Links an entry to another.
 *
 * What was linked there before can no longer be reached from it: add an equal entry to the last one of the
 * chain.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  the entry to link to; with NULL nothing changes
 * @param[in] direction  below 0: as left child; above 0: as right child; 0: as next equal, with the parent of
 *                       `entry`
 * @param[in,out] added  the entry to link; with NULL nothing changes
 * @return the tree
 * @owner the tree refers to the entry, which stays where it is
 * @invalidates nothing
 * @nullable entry, added
 */
MUB_API mub_bitree *mub_bitree_entry_add(mub_bitree *tree, mub_bitree_entry *entry, int direction,
                                         mub_bitree_entry *added);

/**
 * Exchanges the five fields of two entries, then calls mub_bitree_set_parent() for both.
 *
 * Links from other entries to the two are unchanged.
 *
 * @param[in,out] a  one entry
 * @param[in,out] b  the other entry
 * @owner both entries stay where they are
 * @invalidates nothing
 * @cost O(equals)
 * @level low
 */
MUB_API void mub_bitree_entry_swap(mub_bitree_entry *a, mub_bitree_entry *b);

/**
 * Returns an entry and all that is linked from it to the entry pool, owned or external: its left side, its
 * right side, its equals and then the entry itself.
 *
 * The root is not returned. Links and `count` stay as they are: clear the link to the entry, or the links of
 * the root.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner entries go back to the pool, although links still lead to them; values are not released
 * @invalidates the entry and those linked from it
 * @cost O(entries visited)
 */
MUB_API void mub_bitree_entry_remove(mub_bitree *tree, mub_bitree_entry *entry);

/**
 * Releases the values of an entry and all that is linked from it, in the order of mub_bitree_entry_remove().
 *
 * The values' blocks go back to an external value pool. Entries go back to an external entry pool; in an
 * owned one they stay, with the words of their values. Links and `count` stay as they are.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @param[in] release    called once with every value that is not 0, in the order of
 *                       mub_bitree_entry_remove(); NULL: not called
 * @failure a block for which the pool's free stack finds no memory is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, its block goes back to an external value pool; entries go back to
 *   an external pool, although links still lead to them
 * @invalidates the values; the entry and those linked from it, if their pool is external
 * @cost O(entries visited)
 * @nullable release
 */
MUB_API void mub_bitree_entry_free(mub_bitree *tree, mub_bitree_entry *entry, mub_free_fn release);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
