/**
 * @defgroup tree_h mub_tree.h: trees
 *
 * mub_tree, a general tree whose entries have any number of ordered children, and mub_bitree, a binary tree
 * that stores only links and values. Its entries that compare equal, the *equals*, are on a chain.
 *
 *     mub_tree: the children of an entry are a ring         mub_bitree: equals are on a chain
 *
 *       root                                                    root ──equal──► e ──equal──► NULL
 *        │ first_child                                      left │ │ right
 *        ▼                                                       ▼ ▼
 *     ┌► a ◄──► b ◄──► c ◄┐                                      a b
 *     └───────────────────┘  prev of the first is the last
 *
 * The root is the first field of the tree's record and is never returned to a pool. Neither tree stores keys:
 * the entries of a mub_tree are found with a comparator, and in a mub_bitree the caller determines where an
 * entry is linked.
 *
 * **Entry pool.** Functions that create entries need an entry pool: one created by `_init`, or an external
 * one stored in `entry_pool`, whose block size is at least that of the entry struct. Several trees may share
 * an external pool. Entries may also lie in the caller's own memory, as long as no function that returns
 * entries to a pool reaches them.
 *
 * **Value pool.** A pool created by `_init` has no block size: check that `value_pool` is not NULL, then
 * store the size of your values in `value_pool->block_size`.
 *
 * In a tree with a value pool, every value must be 0 or the address of a block of that pool: `_free_all`
 * returns it to the pool if that is external, and `_clone` translates it if the pool is owned. Blocks of an
 * owned pool are released with the whole pool.
 *
 * **Depth.** No function recurses: only memory limits the depth of a tree and the length of a ring or chain.
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
 * A path is an array of keys, one per step. Each step leads to the first descendant of the current entry that
 * matches the key: a child, a grandchild or a deeper one, whichever comes first in document order (an entry
 * before its children, and siblings in their order). So after inserting [a, b], the path [b] also leads to
 * that b.
 *
 * @{
 */

/** One entry; its address does not change until its block is returned to the pool. */
typedef struct mub_tree_entry {
  struct mub_tree_entry *parent;      /**< the parent; NULL in the root and in an entry that is not linked */
  struct mub_tree_entry *first_child; /**< its first child; NULL if there is none */
  struct mub_tree_entry *prev;        /**< the previous sibling; for the first, the last */
  struct mub_tree_entry *next;        /**< the next sibling; for the last, the first */
  uint64_t value;                     /**< the caller's; may be changed in place */
} mub_tree_entry;

/** A tree of entries with any number of children. */
typedef struct mub_tree {
  mub_tree_entry root;      /**< the root; paths start below it and never lead to it */
  int64_t count;            /**< entries linked minus entries unlinked; removing a subtree counts as one */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_tree;

/**
 * Checks whether an entry matches a key.
 *
 * Entries that mub_tree_insert() created along a path, before its last, have value 0.
 *
 * @param[in] entry   the entry
 * @param[in] key     the key
 * @param[in] length  length of the key in bytes, as passed by the caller or stored in the path
 * @return 0 if the entry matches
 * @bounds key[length]
 * @nullable key
 */
typedef int (*mub_tree_compare_fn)(const mub_tree_entry *entry, const void *key, int64_t length);

/**
 * Checks whether an entry matches a key in the `_x` functions, which pass the caller's context.
 *
 * Entries that mub_tree_insert_x() created along a path, before its last, have value 0.
 *
 * @param[in] entry    the entry
 * @param[in] context  the caller's context
 * @param[in] key      the key
 * @param[in] length   length of the key in bytes, as passed by the caller or stored in the path
 * @return 0 if the entry matches
 * @bounds key[length]
 * @nullable key
 */
typedef int (*mub_tree_compare_x_fn)(const mub_tree_entry *entry, uint64_t context, const void *key,
                                     int64_t length);

/**
 * Initialises a tree that consists of its root.
 *
 * @param[out] tree            the tree
 * @param[in] with_entry_pool  not 0: create an entry pool that the tree owns
 * @param[in] with_value_pool  not 0: create a value pool that the tree owns
 * @return the tree
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the tree until mub_tree_term()
 * @invalidates nothing
 */
MUB_API mub_tree *mub_tree_init(mub_tree *tree, int with_entry_pool, int with_value_pool);

/**
 * Releases the pools that the tree owns and returns entries to an external entry pool.
 *
 * The fields of owned pools become NULL; their flags do not change. No function is called for the values; an
 * owned value pool is released with its blocks. The tree is then empty, with a zero-filled root.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the tree owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_tree *mub_tree_term(mub_tree *tree);

/**
 * Empties the tree.
 *
 * Entries are returned to an external pool, owned pools are emptied, and the root is zero-filled. No function
 * is called for the values; emptying an owned value pool releases its blocks.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool and an owned value pool is emptied; other values remain the
 *   caller's
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_tree *mub_tree_remove_all(mub_tree *tree);

/**
 * Releases every value that is not 0, the root's included, then empties the tree and zero-fills the root.
 *
 * The values' blocks are returned to the value pool if that is external, and an owned one is emptied.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called with every value that is not 0, children before their parents; NULL: not called
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries but the root, and the values
 * @cost O(entries)
 * @nullable release
 */
MUB_API mub_tree *mub_tree_free_all(mub_tree *tree, mub_free_fn release);

/**
 * Copies a tree.
 *
 * Owned pools are cloned: entries and value blocks have the same chunk and offset in the copy, and addresses
 * are translated. A value that is not an address in the source's value pool becomes 0, and so do all values
 * if the destination owns no value pool. An entry that is not a block of the entry pool is omitted, with its
 * descendants.
 *
 * Where the source has an external pool, or none, the destination then has the same; a pool that it owned
 * there is destroyed. Entries get new blocks of an external entry pool. If the source does not own a value
 * pool, values are copied as words, so both trees refer to the same blocks.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both trees are the same.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised tree with the same `owns_…` flags; its old entries are
 *                                       dropped, without a call for their values
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
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_tree *mub_tree_clone(const mub_tree *source, mub_pool *source_user_pool, mub_tree *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/**
 * Checks whether the tree is intact.
 *
 * Checks that every ring of children is closed in both directions, the parents, the pools that the tree owns,
 * and the fields and tables of external ones. `count` is not checked: it says nothing about the entries. It
 * follows every link, and terminates even if calls to the library have damaged the tree. It cannot detect a
 * pointer to other memory in place of an entry or a block, and follows it.
 *
 * @param[in] tree   the tree
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the tree is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(entries), and that of mub_pool_verify() for each pool that the tree owns
 * @nullable what
 */
MUB_API int mub_tree_verify(const mub_tree *tree, const char **what);

/**
 * Returns the size of the heap memory that the tree holds.
 *
 * Counts the pools that the tree owns, as requested from `malloc`; not the record itself. Blocks of external
 * pools are not counted.
 *
 * @param[in] tree  the tree
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_tree_memory_bytes(const mub_tree *tree);

/**
 * Copies an entry and its descendants into new blocks of a tree's entry pool.
 *
 * Values are copied as words.
 *
 * @param[in,out] tree  the tree that receives the copy; its `count` grows by the number of links within the
 *                      copy
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
 * Lengths are used as given: ranges with equal negative lengths are equal, and nothing is read. Unlike a
 * comparator, which returns 0 for a match, this function returns 1.
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
 * Sets the `parent` of all children of an entry to that entry, after its fields were moved there from another
 * entry.
 *
 * @param[in,out] entry  an entry
 * @invalidates nothing
 * @cost O(children)
 * @level low
 */
MUB_API void mub_tree_set_parent(mub_tree_entry *entry);

/**
 * Zero-fills an entry.
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
 * @return the entry, zero-filled, neither linked nor counted
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 */
MUB_API mub_tree_entry *mub_tree_entry_new(mub_tree *tree);

/**
 * Links an entry as the last child of another.
 *
 * @param[in,out] tree    the tree
 * @param[in,out] parent  the parent; NULL: nothing changes
 * @param[in,out] child   an entry that is not linked, with or without children; NULL: nothing changes
 * @owner the tree refers to the entry, which does not move
 * @invalidates nothing
 * @nullable parent, child
 */
MUB_API void mub_tree_entry_append(mub_tree *tree, mub_tree_entry *parent, mub_tree_entry *child);

/**
 * Links an entry as the previous sibling of another.
 *
 * @param[in,out] tree     the tree
 * @param[in,out] sibling  the other entry; NULL, or an entry without a parent: nothing changes
 * @param[in,out] entry    an entry that is not linked; NULL, or `sibling` itself: nothing changes
 * @owner the tree refers to the entry, which does not move
 * @invalidates nothing
 * @nullable sibling, entry
 */
MUB_API void mub_tree_entry_insert(mub_tree *tree, mub_tree_entry *sibling, mub_tree_entry *entry);

/**
 * Unlinks an entry with its descendants.
 *
 * Nothing is released, and `count` is decremented.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  the entry; NULL, or an entry without a parent: nothing changes
 * @owner the tree no longer refers to the entry: it is the caller's, to link or to return
 * @invalidates nothing
 * @nullable entry
 */
MUB_API void mub_tree_entry_remove(mub_tree *tree, mub_tree_entry *entry);

/**
 * Returns an entry and its descendants to an external entry pool; does nothing if the pool is owned.
 *
 * Links and `count` are unchanged, so unlink the entry first. The root is not returned and still refers to
 * its former children: set its `first_child` to NULL.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to an external pool, although other entries may still refer to them; values are
 *   not released
 * @invalidates the entry and its descendants, if their pool is external
 * @cost O(descendants)
 * @level low
 */
MUB_API void mub_tree_entry_remove_x(mub_tree *tree, mub_tree_entry *entry);

/**
 * Releases the values of an entry and its descendants, and returns the entries as mub_tree_entry_remove_x()
 * does.
 *
 * The values' blocks are returned to the value pool if that is external, whoever owns the entry pool. The
 * entries keep their value words.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @param[in] release    called with every value that is not 0, children before their parents; NULL: not
 *                       called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external pool, although other entries may still refer to them
 * @invalidates the values; the entry and its descendants, if their pool is external
 * @cost O(descendants)
 * @nullable release
 * @level low
 */
MUB_API void mub_tree_entry_free(mub_tree *tree, mub_tree_entry *entry, mub_free_fn release);

/**
 * Exchanges the fields of two entries, then sets the `parent` of their children.
 *
 * Use it for entries without a parent: the siblings and the parent of a linked entry are not updated.
 *
 * @param[in,out] a  one entry
 * @param[in,out] b  the other entry
 * @owner the entries themselves do not move
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
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 */
MUB_API mub_tree_entry *mub_tree_entry_last(const mub_tree_entry *entry);

/**
 * Gets the next sibling.
 *
 * @param[in] entry  an entry
 * @return the sibling
 * @failure NULL after the last and without a parent
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 */
MUB_API mub_tree_entry *mub_tree_entry_next(const mub_tree_entry *entry);

/**
 * Gets the previous sibling.
 *
 * @param[in] entry  an entry
 * @return the sibling
 * @failure NULL before the first and without a parent
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 */
MUB_API mub_tree_entry *mub_tree_entry_prev(const mub_tree_entry *entry);

/**
 * Advances to the next entry in document order.
 *
 * In document order an entry precedes its children, and siblings keep their order.
 *
 * @param[in] bound  `entry` itself or an ancestor: only its descendants are returned; NULL: all entries up to
 *                  the end of the tree
 * @param[in] entry  an entry
 * @return the first child, or else the result of mub_tree_entry_find_next()
 * @failure NULL at the end
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(depth); O(1) on average in an iteration over the tree
 * @nullable bound
 */
MUB_API mub_tree_entry *mub_tree_entry_iter_next(const mub_tree_entry *bound, const mub_tree_entry *entry);

/**
 * Advances to the next entry in document order, skipping the descendants of the entry.
 *
 * In document order an entry precedes its children, and siblings keep their order.
 *
 * @param[in] bound  `entry` itself or an ancestor: only its descendants are returned; NULL: all entries up to
 *                  the end of the tree
 * @param[in] entry  an entry
 * @return the next sibling of the entry, or of its nearest ancestor that has one
 * @failure NULL if there is none below `bound`
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(depth)
 * @nullable bound
 */
MUB_API mub_tree_entry *mub_tree_entry_find_next(const mub_tree_entry *bound, const mub_tree_entry *entry);

/**
 * Searches the descendants of `bound` that come after `start` in document order.
 *
 * In document order an entry precedes its children, and siblings keep their order.
 *
 * @param[in] bound    `start` itself, to search its descendants only; an ancestor of `start`, to search up to
 *                     the end of that ancestor's descendants; NULL, to search up to the end of the tree
 * @param[in] start    the entry to start after; not compared itself
 * @param[in] key      the key to look for; passed to the comparator
 * @param[in] length   the length of the key; passed to the comparator
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the first matching entry
 * @failure NULL if there is none
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(entries visited)
 * @bounds key[length]
 * @nullable bound, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find(const mub_tree_entry *bound, const mub_tree_entry *start,
                                            const void *key, int64_t length, mub_tree_compare_fn compare);

/**
 * Searches the descendants of `bound` that come after `start` in document order.
 *
 * In document order an entry precedes its children, and siblings keep their order.
 *
 * @param[in] bound    `start` itself, to search its descendants only; an ancestor of `start`, to search up to
 *                     the end of that ancestor's descendants; NULL, to search up to the end of the tree
 * @param[in] start    the entry to start after; not compared itself
 * @param[in] context  any 64-bit word; passed to the comparator before the key
 * @param[in] key      the key to look for; passed to the comparator
 * @param[in] length   the length of the key; passed to the comparator
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the first matching entry
 * @failure NULL if there is none
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(entries visited)
 * @bounds key[length]
 * @nullable bound, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find_x(const mub_tree_entry *bound, const mub_tree_entry *start,
                                              uint64_t context, const void *key, int64_t length,
                                              mub_tree_compare_x_fn compare);

/**
 * Searches the ancestors of an entry, the nearest first.
 *
 * @param[in] stop     the ancestor at which the search ends, not compared itself; NULL: search up to the
 *                     root, which is compared
 * @param[in] entry    an entry
 * @param[in] key      the key to look for; passed to the comparator
 * @param[in] length   the length of the key; passed to the comparator
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the nearest matching ancestor
 * @failure NULL if there is none
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(depth)
 * @bounds key[length]
 * @nullable stop, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find_parent(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                                   const void *key, int64_t length,
                                                   mub_tree_compare_fn compare);

/**
 * Searches the ancestors of an entry, the nearest first.
 *
 * @param[in] stop     the ancestor at which the search ends, not compared itself; NULL: search up to the
 *                     root, which is compared
 * @param[in] entry    an entry
 * @param[in] context  any 64-bit word; passed to the comparator before the key
 * @param[in] key      the key to look for; passed to the comparator
 * @param[in] length   the length of the key; passed to the comparator
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the nearest matching ancestor
 * @failure NULL if there is none
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(depth)
 * @bounds key[length]
 * @nullable stop, key, compare
 */
MUB_API mub_tree_entry *mub_tree_entry_find_parent_x(const mub_tree_entry *stop, const mub_tree_entry *entry,
                                                     uint64_t context, const void *key, int64_t length,
                                                     mub_tree_compare_x_fn compare);

/**
 * Checks whether an entry is a descendant of another.
 *
 * @param[in] ancestor  the possible ancestor
 * @param[in] entry     an entry
 * @return 1 if it is, else 0; 0 if both are the same entry
 * @cost O(depth)
 */
MUB_API int mub_tree_entry_find_child(const mub_tree_entry *ancestor, const mub_tree_entry *entry);

/**
 * Computes the index of an entry among its siblings.
 *
 * @param[in] entry  an entry
 * @return the index, counted from 1; 1 without a parent
 * @cost O(index)
 */
MUB_API int64_t mub_tree_entry_index(const mub_tree_entry *entry);

/**
 * Prepends the index path of an entry to an array: the mub_tree_entry_index() of each entry from the root
 * down to this one.
 *
 * The path of the root is [1].
 *
 * @param[in] entry      an entry
 * @param[in,out] array  an initialised array
 * @failure the array is unchanged if memory runs out
 * @owner the words are copied
 * @invalidates pointers to words of the array
 * @cost O(words + depth + sum of the indexes)
 */
MUB_API void mub_tree_entry_array(const mub_tree_entry *entry, mub_arrayt *array);

/**
 * Compares two entries of a tree by document order.
 *
 * @param[in] a  one entry
 * @param[in] b  the other entry
 * @return a negative number if `a` comes first, a positive one if `b` does: the difference of the first
 *   indexes that differ in their index paths, or else of the depths, so an ancestor comes first; 0 for the
 *   same entry
 * @cost O(depth + sum of the indexes)
 */
MUB_API int mub_tree_entry_compare(const mub_tree_entry *a, const mub_tree_entry *b);

/**
 * Follows a path, and appends a child to the current entry for every step that no entry matches.
 *
 * @param[in,out] tree  the tree
 * @param[in] path      the keys of the steps; only read
 * @param[in] init      called with the block of the value pool that becomes the value of a new last entry;
 *                      NULL: not called. Other new entries have value 0, and so has the last one if the pool
 *                      had no block
 * @param[in] compare   checks whether an entry matches a key; NULL: nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL for an empty path, without a comparator, and if memory ran out; entries created before that
 *   remain
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 */
MUB_API mub_tree_entry *mub_tree_insert(mub_tree *tree, const mub_array *path, mub_init_fn init,
                                        mub_tree_compare_fn compare);

/**
 * Follows a path, and appends a child to the current entry for every step that no entry matches.
 *
 * @param[in,out] tree  the tree
 * @param[in] path      the keys of the steps; only read
 * @param[in] context   any 64-bit word; passed to the comparator before the key
 * @param[in] init      called with the block of the value pool that becomes the value of a new last entry;
 *                      NULL: not called. Other new entries have value 0, and so has the last one if the pool
 *                      had no block
 * @param[in] compare   checks whether an entry matches a key; NULL: nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL for an empty path, without a comparator, and if memory ran out; entries created before that
 *   remain
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 */
MUB_API mub_tree_entry *mub_tree_insert_x(mub_tree *tree, const mub_array *path, uint64_t context,
                                          mub_init_fn init, mub_tree_compare_x_fn compare);

/**
 * Follows the rest of a path, and appends a child to the current entry for every step that no entry matches.
 *
 * @param[in,out] tree     the tree
 * @param[in,out] current  the entry reached by the steps so far
 * @param[in] depth        the number of steps taken so far, which is the index of the next key; not negative;
 *                         at the end of the path the result is NULL
 * @param[in] path         the keys of the steps; only read
 * @param[in] init         called with the block of the value pool that becomes the value of a new last entry;
 *                         NULL: not called. Other new entries have value 0, and so has the last one if the
 *                         pool had no block
 * @param[in] compare      checks whether an entry matches a key; NULL: nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL at the end of the path, without a comparator, and if memory ran out; entries created before
 *   that remain
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @invalidates nothing
 * @cost O(entries visited)
 * @nullable init, compare
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_insert_t(mub_tree *tree, mub_tree_entry *current, int64_t depth,
                                          const mub_array *path, mub_init_fn init,
                                          mub_tree_compare_fn compare);

/**
 * Follows the rest of a path, and appends a child to the current entry for every step that no entry matches.
 *
 * @param[in,out] tree     the tree
 * @param[in,out] current  the entry reached by the steps so far
 * @param[in] depth        the number of steps taken so far, which is the index of the next key; not negative;
 *                         at the end of the path the result is NULL
 * @param[in] path         the keys of the steps; only read
 * @param[in] context      any 64-bit word; passed to the comparator before the key
 * @param[in] init         called with the block of the value pool that becomes the value of a new last entry;
 *                         NULL: not called. Other new entries have value 0, and so has the last one if the
 *                         pool had no block
 * @param[in] compare      checks whether an entry matches a key; NULL: nothing happens
 * @return the entry at the end of the path, found or new
 * @failure NULL at the end of the path, without a comparator, and if memory ran out; entries created before
 *   that remain
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
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
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
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
 * @param[in] context  any 64-bit word; passed to the comparator before the key
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is empty
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(entries visited)
 * @nullable compare
 */
MUB_API mub_tree_entry *mub_tree_find_x(const mub_tree *tree, const mub_array *path, uint64_t context,
                                        mub_tree_compare_x_fn compare);

/**
 * Follows the rest of a path.
 *
 * @param[in] current  the entry reached by the steps so far
 * @param[in] depth    the number of steps taken so far, which is the index of the next key; at the end of the
 *                     path the result is NULL
 * @param[in] path     the keys of the steps; only read
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is at its end
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
 * @cost O(entries visited)
 * @nullable compare
 * @level low
 */
MUB_API mub_tree_entry *mub_tree_find_t(const mub_tree_entry *current, int64_t depth, const mub_array *path,
                                        mub_tree_compare_fn compare);

/**
 * Follows the rest of a path.
 *
 * @param[in] current  the entry reached by the steps so far
 * @param[in] depth    the number of steps taken so far, which is the index of the next key; at the end of the
 *                     path the result is NULL
 * @param[in] path     the keys of the steps; only read
 * @param[in] context  any 64-bit word; passed to the comparator before the key
 * @param[in] compare  checks whether an entry matches a key; NULL finds nothing
 * @return the entry at its end
 * @failure NULL if no entry matches a step or the path is at its end
 * @owner the entry remains where it is: in a block of the entry pool, the root, or memory of the caller
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
 * A binary tree of links. The caller keeps and compares the keys, descends through the fields of the entries,
 * and determines on which side a new entry is linked.
 *
 * @{
 */

/** One entry; its address does not change until its block is returned to the pool. */
typedef struct mub_bitree_entry {
  struct mub_bitree_entry *parent; /**< NULL in the root; in a chain of equals, that of the first entry */
  struct mub_bitree_entry *equal;  /**< the next entry that compares equal, or NULL */
  struct mub_bitree_entry *left;   /**< the child that compares less, or NULL */
  struct mub_bitree_entry *right;  /**< the child that compares greater, or NULL */
  uint64_t value;                  /**< the caller's; may be changed in place */
} mub_bitree_entry;

/** A binary tree of links. */
typedef struct mub_bitree {
  mub_bitree_entry root;    /**< the root, an entry like any other */
  int64_t count;            /**< links made by mub_bitree_entry_add() and mub_bitree_clone_entry() */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_bitree;

/**
 * Initialises a tree that consists of its root.
 *
 * @param[out] tree            the tree
 * @param[in] with_entry_pool  not 0: create an entry pool that the tree owns
 * @param[in] with_value_pool  not 0: create a value pool that the tree owns
 * @return the tree
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the tree until mub_bitree_term()
 * @invalidates nothing
 */
MUB_API mub_bitree *mub_bitree_init(mub_bitree *tree, int with_entry_pool, int with_value_pool);

/**
 * Releases the pools that the tree owns and returns entries to an external entry pool.
 *
 * The fields of owned pools become NULL; their flags do not change. No function is called for the values; an
 * owned value pool is released with its blocks. The tree is then empty, with a zero-filled root.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the tree owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_bitree *mub_bitree_term(mub_bitree *tree);

/**
 * Empties the tree.
 *
 * Entries are returned to an external pool, owned pools are emptied, and the root is zero-filled. No function
 * is called for the values; emptying an owned value pool releases its blocks.
 *
 * @param[in,out] tree  the tree
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool and an owned value pool is emptied; other values remain the
 *   caller's
 * @invalidates all entries but the root, and all value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_bitree *mub_bitree_remove_all(mub_bitree *tree);

/**
 * Releases every value that is not 0, the root's included, then empties the tree and zero-fills the root.
 *
 * The values' blocks are returned to the value pool if that is external, and an owned one is emptied.
 *
 * @param[in,out] tree  the tree
 * @param[in] release   called once with every value that is not 0, in the order of mub_bitree_entry_remove();
 *                      NULL: not called
 * @return the tree
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries but the root, and the values
 * @cost O(entries)
 * @nullable release
 */
MUB_API mub_bitree *mub_bitree_free_all(mub_bitree *tree, mub_free_fn release);

/**
 * Copies a tree.
 *
 * Owned pools are cloned: entries and value blocks have the same chunk and offset in the copy, and addresses
 * are translated. A link to an entry that is not a block of the entry pool becomes NULL. A value that is not
 * an address in the source's value pool becomes 0, and so do all values if the destination owns no value
 * pool.
 *
 * Unless both trees own their entry pools, the copies are new blocks of the destination's entry pool; a
 * destination without one shares an external one of the source. If the source owns no value pool, the
 * destination shares its external one, or has none either, and a value pool that it owned is destroyed;
 * values are then copied as words.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both trees are the same.
 *
 * @param[in] source                     the tree to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised tree with the same `owns_…` flags; its old entries are
 *                                       dropped, without a call for their values
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called once for every entry, the root and value 0 included, if the
 *                                       source owns its value pool: for an entry, then for its left and right
 *                                       subtrees and its equals; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out, or if it has no pool to take entries from
 * @owner the copy belongs to the destination; a shared pool stays its owner's
 * @invalidates all entries of the destination but the root, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(entries), and the bytes of the pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_bitree *mub_bitree_clone(const mub_bitree *source, mub_pool *source_user_pool,
                                     mub_bitree *destination, mub_pool *destination_user_pool,
                                     mub_clone_fn callback);

/**
 * Checks whether the tree is intact.
 *
 * Checks the parents, that every entry is linked once, the pools that the tree owns, and the fields and
 * tables of external ones. An entry in a chain of equals must have the parent of the first one: see
 * mub_bitree_set_parent(). `count` is not checked: it says nothing about the entries. It follows every link,
 * and terminates even if calls to the library have damaged the tree. It cannot detect a pointer to other
 * memory in place of an entry or a block, and follows it. Equals that were linked before the first one had a
 * parent are reported until mub_bitree_set_parent() gives them its parent.
 *
 * @param[in] tree   the tree
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the tree is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(entries), and that of mub_pool_verify() for each pool that the tree owns
 * @nullable what
 */
MUB_API int mub_bitree_verify(const mub_bitree *tree, const char **what);

/**
 * Returns the size of the heap memory that the tree holds.
 *
 * Counts the pools that the tree owns, as requested from `malloc`; not the record itself. Blocks of external
 * pools are not counted.
 *
 * @param[in] tree  the tree
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_bitree_memory_bytes(const mub_bitree *tree);

/**
 * Copies an entry and everything linked from it, its equals included, into new blocks of a tree's entry pool.
 *
 * Values are copied as words.
 *
 * @param[in,out] tree  the tree that receives the copy; its `count` grows by the number of links within the
 *                      copy
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
 * Sets the `parent` of an entry's left and right children and their equals to the entry, and that of its own
 * equals to its parent, after its fields were moved there from another entry.
 *
 * @param[in,out] entry  an entry
 * @invalidates nothing
 * @cost O(equals)
 * @level low
 */
MUB_API void mub_bitree_set_parent(mub_bitree_entry *entry);

/**
 * Zero-fills an entry.
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
 * @return the entry, zero-filled, neither linked nor counted
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 */
MUB_API mub_bitree_entry *mub_bitree_entry_new(mub_bitree *tree);

/**
 * Links an entry to another.
 *
 * The link is overwritten: what was linked there can no longer be reached from `entry`. Add an equal entry to
 * the last one of the chain.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  the entry to link to; NULL: nothing changes
 * @param[in] direction  below 0: as left child; above 0: as right child; 0: as next equal, with the parent of
 *                       `entry`
 * @param[in,out] added  the entry to link; NULL: nothing changes
 * @return the tree
 * @owner the tree refers to the entry, which does not move
 * @invalidates nothing
 * @nullable entry, added
 */
MUB_API mub_bitree *mub_bitree_entry_add(mub_bitree *tree, mub_bitree_entry *entry, int direction,
                                         mub_bitree_entry *added);

/**
 * Exchanges the fields of two entries, then calls mub_bitree_set_parent() for both.
 *
 * Links from other entries to the two are unchanged.
 *
 * @param[in,out] a  one entry
 * @param[in,out] b  the other entry
 * @owner the entries themselves do not move
 * @invalidates nothing
 * @cost O(equals)
 * @level low
 */
MUB_API void mub_bitree_entry_swap(mub_bitree_entry *a, mub_bitree_entry *b);

/**
 * Returns an entry and everything linked from it to the entry pool, owned or external: its left subtree, its
 * right subtree, its equals and then the entry itself.
 *
 * The root is not returned. Links and `count` are unchanged: clear the link to the entry, or the links of the
 * root.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to the pool, although other entries may still refer to them; values are not
 *   released
 * @invalidates the entry and those linked from it
 * @cost O(entries visited)
 * @level low
 */
MUB_API void mub_bitree_entry_remove(mub_bitree *tree, mub_bitree_entry *entry);

/**
 * Releases the values of an entry and everything linked from it, in the order of mub_bitree_entry_remove().
 *
 * The values' blocks are returned to the value pool if that is external, and entries to an external entry
 * pool; in an owned one they stay allocated and keep their value words. The root is not returned. Links and
 * `count` are unchanged.
 *
 * @param[in,out] tree   the tree
 * @param[in,out] entry  an entry
 * @param[in] release    called once with every value that is not 0, in the order of
 *                       mub_bitree_entry_remove(); NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external pool, although other entries may still refer to them
 * @invalidates the values; the entry and those linked from it, if their pool is external
 * @cost O(entries visited)
 * @nullable release
 * @level low
 */
MUB_API void mub_bitree_entry_free(mub_bitree *tree, mub_bitree_entry *entry, mub_free_fn release);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
