/**
 * @defgroup list_h mub_list.h: linked lists
 *
 * Doubly linked lists: mub_list of values with byte strings as keys, mub_lists of bare values, mub_listx of
 * blocks that hold up to 32 values each.
 *
 *     mub_list, mub_lists                                 mub_listx
 *
 *     head ──► entry ◄──► entry ◄──► entry ◄── tail       head ──► block ◄──────► block ◄── tail
 *              value      value      value                         [v v v … v]    [v v]
 *              key ──┐    key ──┐    key ──┐
 *     keys: [ bytes of all keys, packed in the order of insertion ]
 *
 * The caller determines the order: a list is not sorted, and may contain equal keys and values. A position in
 * a `mub_list` or `mub_lists` is the address of an entry. It remains valid until that entry is removed,
 * whatever else is added or removed. A `mub_listx` has no positions: its values move within their blocks.
 *
 * **Entry pool.** A list needs an entry pool before its first addition: one created by `_init`, or an
 * external one stored in `entry_pool`, whose block size is at least that of the list's entry (or block)
 * struct. Several lists may share an external pool. Without an entry pool, additions fail as if memory had
 * run out.
 *
 * **Value pool.** Only `_add_head_new` and `_add_tail_new` need a value pool: each call takes a block from it
 * for the new value. A pool created by `_init` has no block size: check that `value_pool` is not NULL, then
 * store the size of your values in `value_pool->block_size`.
 *
 * In a list with a value pool, every value must be 0 or the address of a block of that pool: `_free_all`
 * returns it to the pool if that is external, and `_clone` translates it if the pool is owned. Blocks of an
 * owned pool are released with the whole pool.
 *
 * What the everyday operations return:
 *
 * | operation                           | done or found           | empty or not found | out of memory     |
 * | ----------------------------------- | ----------------------- | ------------------ | ----------------- |
 * | `_add_head`, `_add_tail`            | the new entry           |                    | NULL              |
 * | `_add_head_new`, `_add_tail_new`    | the new block           |                    | 0                 |
 * | `_insert_before`, `_insert_after`   | the new entry           |                    | NULL              |
 * | `_get_head`, `_get_tail`, `_get_at` | the value               | 0                  |                   |
 * | `_get_next`, `_get_prev`            | the value               | 0 at NULL          |                   |
 * | `_find`, `_find_at`, `_find_x`      | the entry               | NULL               |                   |
 * | `_remove_head`, `_remove_tail`      | the value, not released | 0                  |                   |
 * | `_remove_at`                        | the value, not released | 0 at NULL          |                   |
 * | `_clone`                            | the destination         |                    | empty destination |
 *
 * `_get_next` and `_get_prev` also move the position to the next or the previous entry. mub_listx_add_head()
 * and mub_listx_add_tail() return the list, or NULL if memory ran out. If memory runs out for the block of
 * the value pool alone, `_add_head_new` and `_add_tail_new` add value 0 and return 0. `mub_listx` has only
 * some of these operations.
 *
 * @{
 */
#ifndef MUB_LIST_H
#define MUB_LIST_H

#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup list mub_list: a doubly linked list of entries with byte-string keys
 *
 * A linked list of entries with keys. A key is `length` bytes at `key`; a negative length means that it ends
 * at its first NUL, and a NULL key is the empty key, which is valid. Keys are copied. A key that a function
 * returns is a pointer into the key stream (NULL while the stream has no block) and a length, valid until an
 * addition or a removal. The keys of a list take at most 2^32 - 1 bytes in total. The key stream grows as
 * every mub_stream does: above 16 MiB of keys, all of them are copied once per 8 MiB that are added, and
 * above 2 GiB at nearly every addition.
 *
 * @{
 */

/**
 * One entry.
 *
 * Its address does not change until it is removed. Its `key_offset` may change when another entry is removed.
 */
typedef struct mub_list_entry {
  struct mub_list_entry *prev; /**< the previous entry; NULL at the head */
  struct mub_list_entry *next; /**< the next entry; NULL at the tail */
  uint32_t key_offset;         /**< the key's offset in the key stream */
  uint32_t key_length;         /**< the length of the key in bytes */
  uint64_t value;              /**< the caller's; may be changed in place */
} mub_list_entry;

/** A linked list of entries with keys. */
typedef struct mub_list {
  mub_list_entry *head;     /**< the first entry; NULL if the list is empty */
  mub_list_entry *tail;     /**< the last entry; NULL if the list is empty */
  int64_t count;            /**< entries in the list */
  mub_stream keys;          /**< the key stream: all keys in the order of insertion; at most 2^32 - 1 bytes */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_list;

/**
 * Initialises an empty list.
 *
 * @param[out] list            the list
 * @param[in] with_entry_pool  not 0: create an entry pool that the list owns
 * @param[in] with_value_pool  not 0: create a value pool that the list owns
 * @return the list
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the list until mub_list_term()
 * @invalidates nothing
 */
MUB_API mub_list *mub_list_init(mub_list *list, int with_entry_pool, int with_value_pool);

/**
 * Releases everything that the list owns and returns entries to an external entry pool.
 *
 * No function is called for the values; an owned value pool is released with its blocks. The list is then
 * empty; the fields of owned pools are NULL and their flags 0.
 *
 * @param[in,out] list  the list
 * @return the list
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the list owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all entries, pointers to keys, and all value blocks of an owned pool
 * @cost one release per chunk of the pools; O(entries) with an external entry pool
 */
MUB_API mub_list *mub_list_term(mub_list *list);

/**
 * Swaps two lists, including their pools.
 *
 * @param[in,out] a  one list
 * @param[in,out] b  the other list
 * @owner what one list owned now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_list_swap(mub_list *a, mub_list *b);

/**
 * Copies a list.
 *
 * Owned pools are cloned: entries and value blocks have the same chunk and offset in the copy, and addresses
 * are translated. A value that is not an address in the source's value pool becomes 0, and so do all values
 * if the destination owns no value pool.
 *
 * Where the source has an external pool, or none, the destination then has the same; a pool that it owned
 * there is destroyed. Unless both lists own their entry pools, every copied entry is a new block of the
 * destination's entry pool. If the source does not own a value pool, values are copied as words, so both
 * lists refer to the same blocks.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both lists are the same.
 *
 * @param[in] source                     the list to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised list, normally with the same `owns_…` flags; its old
 *                                       entries are dropped, without a call for their values
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry from the head on, value 0 included, if the
 *                                       source owns its value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out, or if it has no pool to take entries from
 * @owner the copy belongs to the destination; an external pool is shared by both lists
 * @invalidates all entries of the destination and pointers to its keys, and all blocks of its own pools and
 *   of a `destination_user_pool` that is overwritten
 * @cost O(entries), and the bytes of the keys and pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_list *mub_list_clone(const mub_list *source, mub_pool *source_user_pool, mub_list *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/**
 * Checks whether the list is intact.
 *
 * Checks the links in both directions, the count, that the keys fill the key stream without gaps, the pools
 * that the list owns, and the fields and tables of external ones. It follows every link, and terminates even
 * if calls to the library have damaged the list. It cannot detect a pointer to other memory in place of an
 * entry or a block, and follows it.
 *
 * @param[in] list   the list
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the list is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(entries), and that of mub_pool_verify() for each pool that the list owns
 * @nullable what
 */
MUB_API int mub_list_verify(const mub_list *list, const char **what);

/**
 * Returns the size of the heap memory that the list holds.
 *
 * Counts the pools that the list owns and the key stream, as requested from `malloc`; not the record itself.
 * Blocks of external pools are not counted.
 *
 * @param[in] list  the list
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_list_memory_bytes(const mub_list *list);

/**
 * Takes a block of the entry pool.
 *
 * @param[in,out] list  the list
 * @return the entry, zero-filled, neither linked nor counted
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 * @level low
 */
MUB_API mub_list_entry *mub_list_entry_new(mub_list *list);

/**
 * Adds an entry at the head.
 *
 * @param[in,out] list  the list
 * @param[in] key       the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @param[in] value     any 64-bit word, 0 included
 * @return the entry
 * @failure NULL if memory ran out or the keys would exceed 2^32 - 1 bytes
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates pointers to keys
 * @cost O(length) amortised up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_list_entry *mub_list_add_head(mub_list *list, const void *key, int64_t length, uint64_t value);

/**
 * Adds an entry at the tail.
 *
 * @param[in,out] list  the list
 * @param[in] key       the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @param[in] value     any 64-bit word, 0 included
 * @return the entry
 * @failure NULL if memory ran out or the keys would exceed 2^32 - 1 bytes
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates pointers to keys
 * @cost O(length) amortised up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_list_entry *mub_list_add_tail(mub_list *list, const void *key, int64_t length, uint64_t value);

/**
 * Adds an entry at the head, with a new block of the value pool as its value.
 *
 * @param[in,out] list  the list
 * @param[in] key       the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @param[in] init      called with the new block before the entry is linked and counted; NULL: not called
 * @return the block
 * @failure 0 if memory ran out or the keys would exceed 2^32 - 1 bytes; also 0 if only the value pool had no
 *   block, in which case the entry is added with value 0
 * @owner the block belongs to the value pool; the list refers to it
 * @invalidates pointers to keys
 * @cost O(length) amortised up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API uint64_t mub_list_add_head_new(mub_list *list, const void *key, int64_t length, mub_init_fn init);

/**
 * Adds an entry at the tail, with a new block of the value pool as its value.
 *
 * @param[in,out] list  the list
 * @param[in] key       the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length    bytes of the key; negative: up to its first NUL
 * @param[in] init      called with the new block before the entry is linked and counted; NULL: not called
 * @return the block
 * @failure 0 if memory ran out or the keys would exceed 2^32 - 1 bytes; also 0 if only the value pool had no
 *   block, in which case the entry is added with value 0
 * @owner the block belongs to the value pool; the list refers to it
 * @invalidates pointers to keys
 * @cost O(length) amortised up to 16 MiB of keys
 * @bounds key[length]
 * @nullable key, init
 */
MUB_API uint64_t mub_list_add_tail_new(mub_list *list, const void *key, int64_t length, mub_init_fn init);

/**
 * Adds a copy of every entry of another list at the head, in the order of `source`.
 *
 * Values are copied as words.
 *
 * @param[in,out] list  the list
 * @param[in] source    the list to copy from; may be `list` itself
 * @failure nothing is added if memory runs out or the keys would exceed 2^32 - 1 bytes
 * @owner keys are copied; values are copied as words, so both lists refer to the same data
 * @invalidates pointers to keys
 * @cost O(entries of `source` and the bytes of their keys)
 */
MUB_API void mub_list_add_head_list(mub_list *list, const mub_list *source);

/**
 * Adds a copy of every entry of another list at the tail, in the order of `source`.
 *
 * Values are copied as words.
 *
 * @param[in,out] list  the list
 * @param[in] source    the list to copy from; may be `list` itself
 * @failure nothing is added if memory runs out or the keys would exceed 2^32 - 1 bytes
 * @owner keys are copied; values are copied as words, so both lists refer to the same data
 * @invalidates pointers to keys
 * @cost O(entries of `source` and the bytes of their keys)
 */
MUB_API void mub_list_add_tail_list(mub_list *list, const mub_list *source);

/**
 * Inserts an entry before another.
 *
 * @param[in,out] list      the list
 * @param[in,out] position  the entry to insert before; NULL: the new entry becomes the head
 * @param[in] key           the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length        bytes of the key; negative: up to its first NUL
 * @param[in] value         any 64-bit word, 0 included
 * @return the entry
 * @failure NULL if memory ran out or the keys would exceed 2^32 - 1 bytes
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates pointers to keys
 * @cost O(length) amortised up to 16 MiB of keys
 * @bounds key[length]
 * @nullable position, key
 */
MUB_API mub_list_entry *mub_list_insert_before(mub_list *list, mub_list_entry *position, const void *key,
                                               int64_t length, uint64_t value);

/**
 * Inserts an entry after another.
 *
 * @param[in,out] list      the list
 * @param[in,out] position  the entry to insert after; NULL: the new entry becomes the tail
 * @param[in] key           the bytes of the key, which are copied; NULL is the empty key
 * @param[in] length        bytes of the key; negative: up to its first NUL
 * @param[in] value         any 64-bit word, 0 included
 * @return the entry
 * @failure NULL if memory ran out or the keys would exceed 2^32 - 1 bytes
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates pointers to keys
 * @cost O(length) amortised up to 16 MiB of keys
 * @bounds key[length]
 * @nullable position, key
 */
MUB_API mub_list_entry *mub_list_insert_after(mub_list *list, mub_list_entry *position, const void *key,
                                              int64_t length, uint64_t value);

/**
 * Gets the first entry.
 *
 * @param[in] list  the list
 * @return the entry
 * @failure NULL in an empty list
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 */
MUB_API mub_list_entry *mub_list_get_head_position(const mub_list *list);

/**
 * Gets the last entry.
 *
 * @param[in] list  the list
 * @return the entry
 * @failure NULL in an empty list
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 */
MUB_API mub_list_entry *mub_list_get_tail_position(const mub_list *list);

/**
 * Reads the first entry.
 *
 * @param[in] list     the list
 * @param[out] key     receives the address of the key, which is not NUL-terminated; NULL in an empty list,
 *                     and while the key stream has no block
 * @param[out] length  receives the length of the key in bytes; 0 in an empty list
 * @return its value
 * @failure 0 in an empty list
 * @owner the key lies in the list's key stream, valid until an entry is added or removed; the value stays in
 *   the list
 * @bounds key[length]
 */
MUB_API uint64_t mub_list_get_head(const mub_list *list, const char **key, int64_t *length);

/**
 * Reads the last entry.
 *
 * @param[in] list     the list
 * @param[out] key     receives the address of the key, which is not NUL-terminated; NULL in an empty list,
 *                     and while the key stream has no block
 * @param[out] length  receives the length of the key in bytes; 0 in an empty list
 * @return its value
 * @failure 0 in an empty list
 * @owner the key lies in the list's key stream, valid until an entry is added or removed; the value stays in
 *   the list
 * @bounds key[length]
 */
MUB_API uint64_t mub_list_get_tail(const mub_list *list, const char **key, int64_t *length);

/**
 * Reads the entry at a position and advances to the next.
 *
 * @param[in] list          the list
 * @param[in,out] position  in: the entry to read, may be NULL; out: the entry after it, NULL after the tail
 * @param[out] key          receives the address of the entry's key, which is not NUL-terminated; NULL at
 *                          position NULL, and while the key stream has no block
 * @param[out] length       receives the length of the key in bytes; 0 at position NULL
 * @return the value of the entry read
 * @failure 0 at position NULL
 * @owner the key lies in the list's key stream, valid until an entry is added or removed; the value stays in
 *   the list
 * @bounds key[length]
 */
MUB_API uint64_t mub_list_get_next(const mub_list *list, mub_list_entry **position, const char **key,
                                   int64_t *length);

/**
 * Reads the entry at a position and moves back to the previous.
 *
 * @param[in] list          the list
 * @param[in,out] position  in: the entry to read, may be NULL; out: the entry before it, NULL before the head
 * @param[out] key          receives the address of the entry's key, which is not NUL-terminated; NULL at
 *                          position NULL, and while the key stream has no block
 * @param[out] length       receives the length of the key in bytes; 0 at position NULL
 * @return the value of the entry read
 * @failure 0 at position NULL
 * @owner the key lies in the list's key stream, valid until an entry is added or removed; the value stays in
 *   the list
 * @bounds key[length]
 */
MUB_API uint64_t mub_list_get_prev(const mub_list *list, mub_list_entry **position, const char **key,
                                   int64_t *length);

/**
 * Reads the entry at a position.
 *
 * @param[in] list      the list
 * @param[in] position  the entry
 * @param[out] key      receives the address of the key, which is not NUL-terminated; NULL at position NULL,
 *                      and while the key stream has no block
 * @param[out] length   receives the length of the key in bytes; 0 at position NULL
 * @return its value
 * @failure 0 at position NULL
 * @owner the key lies in the list's key stream, valid until an entry is added or removed; the value stays in
 *   the list
 * @bounds key[length]
 * @nullable position
 */
MUB_API uint64_t mub_list_get_at(const mub_list *list, const mub_list_entry *position, const char **key,
                                 int64_t *length);

/**
 * Finds the first entry with a key; the comparison is case-sensitive.
 *
 * @param[in] list    the list
 * @param[in] key     the bytes of the key; NULL is the empty key
 * @param[in] length  bytes of the key; negative: up to its first NUL
 * @return the first such entry, from the head
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 * @cost O(entries)
 * @bounds key[length]
 * @nullable key
 */
MUB_API mub_list_entry *mub_list_find(const mub_list *list, const void *key, int64_t length);

/**
 * Removes the first entry and returns its value, which is not released.
 *
 * @param[in,out] list  the list
 * @return the value
 * @failure 0 if the list is empty; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry, the offsets of keys added later, and pointers to keys
 * @cost O(entries + bytes of all keys): the bytes of the later keys move and their offsets are lowered, in
 *   one pass over the chunks if the list owns its entry pool and the pool holds nothing else, otherwise along
 *   the links; O(1) for an empty key
 */
MUB_API uint64_t mub_list_remove_head(mub_list *list);

/**
 * Removes the last entry and returns its value, which is not released.
 *
 * @param[in,out] list  the list
 * @return the value
 * @failure 0 if the list is empty; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry, the offsets of keys added later, and pointers to keys
 * @cost O(entries + bytes of all keys): the bytes of the later keys move and their offsets are lowered, in
 *   one pass over the chunks if the list owns its entry pool and the pool holds nothing else, otherwise along
 *   the links; O(1) for an empty key
 */
MUB_API uint64_t mub_list_remove_tail(mub_list *list);

/**
 * Removes the entry at a position and returns its value, which is not released.
 *
 * The value in the entry is set to 0 before its block is returned, so the next user of the block finds 0
 * there.
 *
 * @param[in,out] list      the list
 * @param[in,out] position  the entry; with NULL nothing happens
 * @return the value
 * @failure 0 at position NULL; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry, the offsets of keys added later, and pointers to keys
 * @cost O(entries + bytes of all keys): the bytes of the later keys move and their offsets are lowered, in
 *   one pass over the chunks if the list owns its entry pool and the pool holds nothing else, otherwise along
 *   the links; O(1) for an empty key
 * @nullable position
 */
MUB_API uint64_t mub_list_remove_at(mub_list *list, mub_list_entry *position);

/**
 * Empties the list; it can be used again.
 *
 * Entries are returned to an external pool, an owned entry pool is emptied, and the memory of the key stream
 * is kept. No function is called for the values; an owned value pool keeps its blocks.
 *
 * @param[in,out] list  the list
 * @return the list
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool; values remain the caller's
 * @invalidates all entries, and pointers to keys
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_list *mub_list_remove_all(mub_list *list);

/**
 * Releases every value that is not 0, then empties the list.
 *
 * The values' blocks are returned to the value pool if that is external; an owned one is emptied. The memory
 * of the key stream is released too.
 *
 * @param[in,out] list  the list
 * @param[in] release   called with every value that is not 0, from the head on; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries, pointers to keys, and the values
 * @cost O(entries)
 * @nullable release
 */
MUB_API void mub_list_free_all(mub_list *list, mub_free_fn release);

/**
 * Returns every entry to an external entry pool; does nothing if the pool is owned.
 *
 * Links and count are unchanged and refer to blocks that the list no longer owns: set `head` and `tail` to
 * NULL and `count` to 0 before any other call, mub_list_term() included.
 *
 * @param[in,out] list  the list
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to an external pool, although the list still refers to them; values are not
 *   released
 * @invalidates all entries, if their pool is external
 * @cost O(entries)
 * @level low
 */
MUB_API void mub_list_remove_all_entry(mub_list *list);

/**
 * Releases every value that is not 0 and returns the entries to an external entry pool.
 *
 * The values' blocks are returned to the value pool if that is external. Links and count are unchanged, as
 * with mub_list_remove_all_entry().
 *
 * @param[in,out] list  the list
 * @param[in] release   called with every value that is not 0, from the head on; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external pool, although the list still refers to them
 * @invalidates the values; all entries, if their pool is external
 * @cost O(entries)
 * @nullable release
 * @level low
 */
MUB_API void mub_list_free_all_entry(mub_list *list, mub_free_fn release);

/**
 * Lowers the key offsets after key bytes were removed from the key stream: those above `offset`, and that of
 * a non-empty key at `offset` itself.
 *
 * @param[in,out] list  the list
 * @param[in] offset    where the bytes were
 * @param[in] length    the number of bytes removed; its low 32 bits are used
 * @invalidates copies of the offsets that it lowers
 * @cost O(entries)
 * @level low
 */
MUB_API void mub_list_adjust_t(mub_list *list, uint32_t offset, int64_t length);

/**
 * Splits a text at a separator and adds the pieces at the tail, as keys with value 0.
 *
 * Each piece is trimmed as by mub_char_trim(). Empty pieces are added too, except an empty last one: "a, ,b,"
 * gives "a", "" and "b".
 *
 * @param[in,out] list   the list
 * @param[in] separator  the separator; its low 8 bits are used
 * @param[in] text       the text to split
 * @param[in] length     bytes of the text; negative: up to its first NUL
 * @failure nothing is added if memory runs out or the keys would exceed 2^32 - 1 bytes
 * @owner the pieces are copied
 * @invalidates pointers to keys
 * @cost O(length)
 * @bounds text[length]
 */
MUB_API void mub_list_from_string(mub_list *list, int separator, const char *text, int64_t length);

/**
 * Joins the keys into one text, with the separator between them.
 *
 * Empty keys at the front leave no separator: "", "", "a" give "a", while "x", "", "y" give "x,,y".
 *
 * @param[in] list        the list
 * @param[in] separator   the separator; its low 8 bits are used
 * @param[in,out] string  an initialised string, whose content is replaced
 * @failure the string is unchanged if memory runs out
 * @owner the text belongs to the string
 * @invalidates pointers into the string
 * @cost O(bytes written)
 */
MUB_API void mub_list_to_string(const mub_list *list, int separator, mub_string *string);

/** @} */

/**
 * @defgroup lists mub_lists: a doubly linked list of bare values
 *
 * A linked list of bare values.
 *
 * @{
 */

/** One entry; its address does not change until it is removed. */
typedef struct mub_lists_entry {
  struct mub_lists_entry *prev; /**< the previous entry; NULL at the head */
  struct mub_lists_entry *next; /**< the next entry; NULL at the tail */
  uint64_t value;               /**< the caller's; may be changed in place */
} mub_lists_entry;

/** A linked list of bare values. */
typedef struct mub_lists {
  mub_lists_entry *head;    /**< the first entry; NULL if the list is empty */
  mub_lists_entry *tail;    /**< the last entry; NULL if the list is empty */
  int64_t count;            /**< values in the list */
  mub_pool *entry_pool;     /**< the pool of the entries; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_lists;

/**
 * Initialises an empty list.
 *
 * @param[out] list            the list
 * @param[in] with_entry_pool  not 0: create an entry pool that the list owns
 * @param[in] with_value_pool  not 0: create a value pool that the list owns
 * @return the list
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the list until mub_lists_term()
 * @invalidates nothing
 */
MUB_API mub_lists *mub_lists_init(mub_lists *list, int with_entry_pool, int with_value_pool);

/**
 * Releases everything that the list owns and returns entries to an external entry pool.
 *
 * No function is called for the values; an owned value pool is released with its blocks. The list is then
 * empty; the fields of owned pools are NULL and their flags 0.
 *
 * @param[in,out] list  the list
 * @return the list
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the list owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all entries, and all value blocks of an owned pool
 * @cost one release per chunk of the pools; O(entries) with an external entry pool
 */
MUB_API mub_lists *mub_lists_term(mub_lists *list);

/**
 * Swaps two lists, including their pools.
 *
 * @param[in,out] a  one list
 * @param[in,out] b  the other list
 * @owner what one list owned now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_lists_swap(mub_lists *a, mub_lists *b);

/**
 * Copies a list.
 *
 * Owned pools are cloned: entries and value blocks have the same chunk and offset in the copy, and addresses
 * are translated. A value that is not an address in the source's value pool becomes 0, and so do all values
 * if the destination owns no value pool.
 *
 * Where the source has an external pool, or none, the destination then has the same; a pool that it owned
 * there is destroyed. Unless both lists own their entry pools, every copied entry is a new block of the
 * destination's entry pool. If the source does not own a value pool, values are copied as words, so both
 * lists refer to the same blocks.
 *
 * `source_user_pool` is cloned only if `destination_user_pool` and `callback` are given too. Nothing happens
 * if both lists are the same.
 *
 * @param[in] source                     the list to copy; it does not change
 * @param[in,out] source_user_pool       a further pool that the values point into, which is cloned too; NULL
 *                                       if there is none
 * @param[in,out] destination            an initialised list, normally with the same `owns_…` flags; its old
 *                                       entries are dropped, without a call for their values
 * @param[in,out] destination_user_pool  the initialised pool that becomes the copy of `source_user_pool`, or
 *                                       the same pool to share it; NULL if there is none
 * @param[in] callback                   called for every entry from the head on, value 0 included, if the
 *                                       source owns its value pool; NULL: not called
 * @return the destination
 * @failure none; the destination is empty if memory runs out, or if it has no pool to take entries from
 * @owner the copy belongs to the destination; an external pool is shared by both lists
 * @invalidates all entries of the destination, and all blocks of its own pools and of a
 *   `destination_user_pool` that is overwritten
 * @cost O(entries), and the bytes of the pools that are cloned
 * @threads an external entry pool of the source changes: the call takes blocks from it
 * @nullable source_user_pool, destination_user_pool, callback
 */
MUB_API mub_lists *mub_lists_clone(const mub_lists *source, mub_pool *source_user_pool,
                                   mub_lists *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/**
 * Checks whether the list is intact.
 *
 * Checks the links in both directions, the count, the pools that the list owns, and the fields and tables of
 * external ones. It follows every link, and terminates even if calls to the library have damaged the list. It
 * cannot detect a pointer to other memory in place of an entry or a block, and follows it.
 *
 * @param[in] list   the list
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the list is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(entries), and that of mub_pool_verify() for each pool that the list owns
 * @nullable what
 */
MUB_API int mub_lists_verify(const mub_lists *list, const char **what);

/**
 * Returns the size of the heap memory that the list holds.
 *
 * Counts the pools that the list owns, as requested from `malloc`; not the record itself. Blocks of external
 * pools are not counted.
 *
 * @param[in] list  the list
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_lists_memory_bytes(const mub_lists *list);

/**
 * Takes a block of the entry pool.
 *
 * @param[in,out] list  the list
 * @return the entry, zero-filled, neither linked nor counted
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 * @level low
 */
MUB_API mub_lists_entry *mub_lists_entry_new(mub_lists *list);

/**
 * Adds a value at the head.
 *
 * @param[in,out] list  the list
 * @param[in] value     any 64-bit word, 0 included
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates nothing
 */
MUB_API mub_lists_entry *mub_lists_add_head(mub_lists *list, uint64_t value);

/**
 * Adds a value at the tail.
 *
 * @param[in,out] list  the list
 * @param[in] value     any 64-bit word, 0 included
 * @return the entry
 * @failure NULL if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates nothing
 */
MUB_API mub_lists_entry *mub_lists_add_tail(mub_lists *list, uint64_t value);

/**
 * Adds a new block of the value pool at the head.
 *
 * @param[in,out] list  the list
 * @param[in] init      called with the new block before the entry is linked and counted; NULL: not called
 * @return the block
 * @failure 0 if memory ran out; also 0 if only the value pool had no block, in which case value 0 is added
 * @owner the block belongs to the value pool; the list refers to it
 * @invalidates nothing
 * @nullable init
 */
MUB_API uint64_t mub_lists_add_head_new(mub_lists *list, mub_init_fn init);

/**
 * Adds a new block of the value pool at the tail.
 *
 * @param[in,out] list  the list
 * @param[in] init      called with the new block before the entry is linked and counted; NULL: not called
 * @return the block
 * @failure 0 if memory ran out; also 0 if only the value pool had no block, in which case value 0 is added
 * @owner the block belongs to the value pool; the list refers to it
 * @invalidates nothing
 * @nullable init
 */
MUB_API uint64_t mub_lists_add_tail_new(mub_lists *list, mub_init_fn init);

/**
 * Adds the values of another list at the head, in the order of `source`.
 *
 * @param[in,out] list  the list
 * @param[in] source    the list to copy from; may be `list` itself
 * @failure nothing is added if memory runs out
 * @owner values are copied as words, so both lists refer to the same data
 * @invalidates nothing
 * @cost O(entries of `source`)
 */
MUB_API void mub_lists_add_head_list(mub_lists *list, const mub_lists *source);

/**
 * Adds the values of another list at the tail, in the order of `source`.
 *
 * @param[in,out] list  the list
 * @param[in] source    the list to copy from; may be `list` itself
 * @failure nothing is added if memory runs out
 * @owner values are copied as words, so both lists refer to the same data
 * @invalidates nothing
 * @cost O(entries of `source`)
 */
MUB_API void mub_lists_add_tail_list(mub_lists *list, const mub_lists *source);

/**
 * Inserts a value before an entry.
 *
 * @param[in,out] list      the list
 * @param[in,out] position  the entry to insert before; NULL: the value is added at the head
 * @param[in] value         any 64-bit word, 0 included
 * @return the new entry
 * @failure NULL if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates nothing
 * @nullable position
 */
MUB_API mub_lists_entry *mub_lists_insert_before(mub_lists *list, mub_lists_entry *position, uint64_t value);

/**
 * Inserts a value after an entry.
 *
 * @param[in,out] list      the list
 * @param[in,out] position  the entry to insert after; NULL: the value is added at the tail
 * @param[in] value         any 64-bit word, 0 included
 * @return the new entry
 * @failure NULL if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's; the entry is a block of the entry
 *   pool and belongs to the list until it is removed
 * @invalidates nothing
 * @nullable position
 */
MUB_API mub_lists_entry *mub_lists_insert_after(mub_lists *list, mub_lists_entry *position, uint64_t value);

/**
 * Gets the first entry.
 *
 * @param[in] list  the list
 * @return the entry
 * @failure NULL in an empty list
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 */
MUB_API mub_lists_entry *mub_lists_get_head_position(const mub_lists *list);

/**
 * Gets the last entry.
 *
 * @param[in] list  the list
 * @return the entry
 * @failure NULL in an empty list
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 */
MUB_API mub_lists_entry *mub_lists_get_tail_position(const mub_lists *list);

/**
 * Reads the first value.
 *
 * @param[in] list  the list
 * @return the value
 * @failure 0 in an empty list
 * @owner the value stays in the list
 */
MUB_API uint64_t mub_lists_get_head(const mub_lists *list);

/**
 * Reads the last value.
 *
 * @param[in] list  the list
 * @return the value
 * @failure 0 in an empty list
 * @owner the value stays in the list
 */
MUB_API uint64_t mub_lists_get_tail(const mub_lists *list);

/**
 * Reads the value at a position and advances to the next.
 *
 * @param[in] list          the list
 * @param[in,out] position  in: the entry to read, may be NULL; out: the entry after it, NULL after the tail
 * @return the value read
 * @failure 0 at position NULL
 * @owner the value stays in the list
 */
MUB_API uint64_t mub_lists_get_next(const mub_lists *list, mub_lists_entry **position);

/**
 * Reads the value at a position and moves back to the previous.
 *
 * @param[in] list          the list
 * @param[in,out] position  in: the entry to read, may be NULL; out: the entry before it, NULL before the head
 * @return the value read
 * @failure 0 at position NULL
 * @owner the value stays in the list
 */
MUB_API uint64_t mub_lists_get_prev(const mub_lists *list, mub_lists_entry **position);

/**
 * Reads the value at a position.
 *
 * @param[in] list      the list
 * @param[in] position  the entry
 * @return the value
 * @failure 0 at position NULL
 * @owner the value stays in the list
 * @nullable position
 */
MUB_API uint64_t mub_lists_get_at(const mub_lists *list, const mub_lists_entry *position);

/**
 * Finds the first entry with a value.
 *
 * @param[in] list   the list
 * @param[in] value  any 64-bit word, 0 included
 * @return the first such entry, from the head
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 * @cost O(entries)
 */
MUB_API mub_lists_entry *mub_lists_find_at(const mub_lists *list, uint64_t value);

/**
 * Finds the first entry whose value equals a key, by a comparator.
 *
 * @param[in] list     the list
 * @param[in] key      the key to look for; passed to the comparator
 * @param[in] compare  called as `compare(value, key)` from the head on until it returns 0; NULL finds nothing
 * @return the entry
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 * @cost O(entries)
 * @nullable compare
 */
MUB_API mub_lists_entry *mub_lists_find(const mub_lists *list, uint64_t key, mub_compare_fn compare);

/**
 * Finds the first entry whose value equals a key, by a comparator with a context.
 *
 * @param[in] list     the list
 * @param[in] key      the key to look for; passed to the comparator
 * @param[in] context  any 64-bit word; passed to the comparator as its last argument
 * @param[in] compare  called as `compare(key, value, context)` from the head on until it returns 0; the key
 *                     is its first argument, unlike in mub_lists_find(); NULL finds nothing
 * @return the entry
 * @failure NULL if there is none
 * @owner the entry is a block of the entry pool and belongs to the list until it is removed
 * @cost O(entries)
 * @nullable compare
 */
MUB_API mub_lists_entry *mub_lists_find_x(const mub_lists *list, uint64_t key, uint64_t context,
                                          mub_compare_item_fn compare);

/**
 * Removes the first value and returns it; it is not released.
 *
 * @param[in,out] list  the list
 * @return the value
 * @failure 0 if the list is empty; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry
 */
MUB_API uint64_t mub_lists_remove_head(mub_lists *list);

/**
 * Removes the last value and returns it; it is not released.
 *
 * @param[in,out] list  the list
 * @return the value
 * @failure 0 if the list is empty; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry
 */
MUB_API uint64_t mub_lists_remove_tail(mub_lists *list);

/**
 * Removes the value at a position and returns it; it is not released.
 *
 * The value in the entry is set to 0 before its block is returned, so the next user of the block finds 0
 * there.
 *
 * @param[in,out] list      the list
 * @param[in,out] position  the entry; with NULL nothing happens
 * @return the value
 * @failure 0 at position NULL; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released; the entry is returned to its pool
 * @invalidates the entry
 * @nullable position
 */
MUB_API uint64_t mub_lists_remove_at(mub_lists *list, mub_lists_entry *position);

/**
 * Empties the list; it can be used again.
 *
 * Entries are returned to an external pool, and owned pools are emptied, including an owned value pool,
 * unlike in mub_list_remove_all(). No function is called for the values; emptying an owned value pool
 * releases its blocks.
 *
 * @param[in,out] list  the list
 * @return the list
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool and an owned value pool is emptied; other values remain the
 *   caller's
 * @invalidates all entries, and the value blocks of an owned pool
 * @cost one release per chunk; O(entries) with an external entry pool
 */
MUB_API mub_lists *mub_lists_remove_all(mub_lists *list);

/**
 * Releases every value that is not 0, then empties the list.
 *
 * The values' blocks are returned to the value pool if that is external; an owned one is emptied.
 *
 * @param[in,out] list  the list
 * @param[in] release   called with every value that is not 0, from the head on; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to their pool
 * @invalidates all entries, and the values
 * @cost O(entries)
 * @nullable release
 */
MUB_API void mub_lists_free_all(mub_lists *list, mub_free_fn release);

/**
 * Returns every entry to the entry pool, owned or external.
 *
 * Links and count are unchanged and refer to blocks that the list no longer owns: set `head` and `tail` to
 * NULL and `count` to 0 before any other call, mub_lists_term() included.
 *
 * @param[in,out] list  the list
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner entries are returned to their pool, although the list still refers to them; values are not released
 * @invalidates all entries
 * @cost O(entries)
 * @level low
 */
MUB_API void mub_lists_remove_all_entry(mub_lists *list);

/**
 * Releases every value that is not 0 and returns the entries to an external entry pool.
 *
 * The values' blocks are returned to the value pool if that is external. Links and count are unchanged, as by
 * mub_lists_remove_all_entry().
 *
 * @param[in,out] list  the list
 * @param[in] release   called with every value that is not 0, from the head on; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   entries are returned to an external pool, although the list still refers to them
 * @invalidates the values; all entries, if their pool is external
 * @cost O(entries)
 * @nullable release
 * @level low
 */
MUB_API void mub_lists_free_all_entry(mub_lists *list, mub_free_fn release);

/** @} */

/**
 * @defgroup listx mub_listx: a doubly linked list of blocks of up to 32 values
 *
 * A linked list of blocks of values. Values are added and removed at the ends only. There are no positions;
 * to iterate, read the blocks:
 *
 *     for (const mub_listx_block *block = list.head; block != NULL; block = block->next)
 *       for (int64_t i = 0; i < block->count; ++i) use(block->values[i]);
 *
 * @{
 */

/** One block of values. */
typedef struct mub_listx_block {
  struct mub_listx_block *prev; /**< the previous block; NULL at the head */
  struct mub_listx_block *next; /**< the next block; NULL at the tail */
  int64_t count;                /**< values in the block; 1 to 32 in a list */
  uint64_t values[32];          /**< from index 0 on; may be changed in place; unused ones are unspecified */
} mub_listx_block;

/** A linked list of blocks of values. */
typedef struct mub_listx {
  mub_listx_block *head;    /**< the first block; NULL if the list is empty */
  mub_listx_block *tail;    /**< the last block; NULL if the list is empty */
  int64_t count;            /**< values in all blocks */
  mub_pool *entry_pool;     /**< the pool of the blocks; NULL if there is none */
  uint16_t owns_entry_pool; /**< 1: created by `_init`, released by `_term` */
  mub_pool *value_pool;     /**< the pool of the values; NULL if there is none */
  uint16_t owns_value_pool; /**< 1: created by `_init`, released by `_term` */
} mub_listx;

/**
 * Initialises an empty list.
 *
 * @param[out] list            the list
 * @param[in] with_entry_pool  not 0: create an entry pool that the list owns
 * @param[in] with_value_pool  not 0: create a value pool that the list owns
 * @return the list
 * @failure none; if memory runs out for a pool, its field is NULL and its flag 0
 * @owner the record belongs to the caller; the pools created here belong to the list until mub_listx_term()
 * @invalidates nothing
 */
MUB_API mub_listx *mub_listx_init(mub_listx *list, int with_entry_pool, int with_value_pool);

/**
 * Checks whether the list is intact.
 *
 * Checks the links in both directions, the counts of the blocks and of the list, the pools that the list
 * owns, and the fields and tables of external ones. It follows every link, and terminates even if calls to
 * the library have damaged the list. It cannot detect a pointer to other memory in place of an entry or a
 * block, and follows it.
 *
 * @param[in] list   the list
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the list is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @cost O(entries), and that of mub_pool_verify() for each pool that the list owns
 * @nullable what
 */
MUB_API int mub_listx_verify(const mub_listx *list, const char **what);

/**
 * Returns the size of the heap memory that the list holds.
 *
 * Counts the pools that the list owns, as requested from `malloc`; not the record itself. Blocks of external
 * pools are not counted.
 *
 * @param[in] list  the list
 * @return the number of bytes
 * @failure none
 * @cost O(free pages of the pools)
 */
MUB_API int64_t mub_listx_memory_bytes(const mub_listx *list);

/**
 * Releases everything that the list owns and returns blocks to an external entry pool.
 *
 * No function is called for the values; an owned value pool is released with its blocks. The list is then
 * empty; the fields of owned pools are NULL and their flags 0.
 *
 * @param[in,out] list  the list
 * @return the list
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner what the list owns is released, the blocks of its own value pool included; other values and external
 *   pools remain the caller's
 * @invalidates all blocks, those of an owned value pool included
 * @cost one release per chunk of the pools; O(blocks) with an external entry pool
 */
MUB_API mub_listx *mub_listx_term(mub_listx *list);

/**
 * Takes a block of the entry pool.
 *
 * @param[in,out] list  the list
 * @return the block, zero-filled and not linked
 * @failure NULL if memory ran out or there is no entry pool
 * @owner the block belongs to the entry pool, and is the caller's to link or to return
 * @invalidates nothing
 * @level low
 */
MUB_API mub_listx_block *mub_listx_entry_new(mub_listx *list);

/**
 * Adds a value at the head.
 *
 * @param[in,out] list  the list
 * @param[in] value     any 64-bit word, 0 included
 * @return the list
 * @failure NULL if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates indexes in the head block, whose values move up unless the block is full
 * @cost O(1); at most 31 values move
 */
MUB_API mub_listx *mub_listx_add_head(mub_listx *list, uint64_t value);

/**
 * Adds a value at the tail.
 *
 * @param[in,out] list  the list
 * @param[in] value     any 64-bit word, 0 included
 * @return the list
 * @failure NULL if memory ran out
 * @owner the value is stored as is; what it refers to remains the caller's
 * @invalidates nothing
 * @cost O(1)
 */
MUB_API mub_listx *mub_listx_add_tail(mub_listx *list, uint64_t value);

/**
 * Adds a new block of the value pool at the head.
 *
 * @param[in,out] list  the list
 * @param[in] init      called with the new block before it is added and counted; NULL: not called
 * @return the block
 * @failure 0 if memory ran out; also 0 if only the value pool had no block, in which case value 0 is added
 * @owner the block belongs to the value pool; the list refers to it
 * @invalidates indexes in the head block, whose values move up unless the block is full
 * @cost O(1); at most 31 values move
 * @nullable init
 */
MUB_API uint64_t mub_listx_add_head_new(mub_listx *list, mub_init_fn init);

/**
 * Adds a new block of the value pool at the tail.
 *
 * @param[in,out] list  the list
 * @param[in] init      called with the new block before it is added and counted; NULL: not called
 * @return the block
 * @failure 0 if memory ran out; also 0 if only the value pool had no block, in which case value 0 is added
 * @owner the block belongs to the value pool; the list refers to it
 * @invalidates nothing
 * @cost O(1)
 * @nullable init
 */
MUB_API uint64_t mub_listx_add_tail_new(mub_listx *list, mub_init_fn init);

/**
 * Removes the first value and returns it; it is not released.
 *
 * @param[in,out] list  the list
 * @return the value
 * @failure 0 if the list is empty; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released
 * @invalidates indexes in the head block, whose values move down, and the block itself if this was its last
 *   value
 * @cost O(1); at most 31 values move
 */
MUB_API uint64_t mub_listx_remove_head(mub_listx *list);

/**
 * Removes the last value and returns it; it is not released.
 *
 * @param[in,out] list  the list
 * @return the value
 * @failure 0 if the list is empty; if the pool's free stack cannot grow, a returned block is not reused: see
 *   mub_pool_free()
 * @owner the value is returned and not released
 * @invalidates the tail block, if this was its last value
 */
MUB_API uint64_t mub_listx_remove_tail(mub_listx *list);

/**
 * Empties the list; it can be used again.
 *
 * Blocks are returned to an external pool, and an owned entry pool is emptied. No function is called for the
 * values; an owned value pool keeps its blocks.
 *
 * @param[in,out] list  the list
 * @return the list
 * @failure none; if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner blocks are returned to their pool; values remain the caller's
 * @invalidates all blocks
 * @cost one release per chunk; O(blocks) with an external entry pool
 */
MUB_API mub_listx *mub_listx_remove_all(mub_listx *list);

/**
 * Releases every value that is not 0, then empties the list.
 *
 * The values' blocks are returned to the value pool if that is external; an owned one is emptied.
 *
 * @param[in,out] list  the list
 * @param[in] release   called with every value that is not 0, from the head on; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   the list's blocks are returned to their pool
 * @invalidates all blocks, and the values
 * @cost O(values)
 * @nullable release
 */
MUB_API void mub_listx_free_all(mub_listx *list, mub_free_fn release);

/**
 * Returns every block to an external entry pool; does nothing if the pool is owned.
 *
 * Links and count are unchanged and refer to blocks that the list no longer owns: set `head` and `tail` to
 * NULL and `count` to 0 before any other call, mub_listx_term() included.
 *
 * @param[in,out] list  the list
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner blocks are returned to an external pool, although the list still refers to them; values are not
 *   released
 * @invalidates all blocks, if their pool is external
 * @cost O(blocks)
 * @level low
 */
MUB_API void mub_listx_remove_all_entry(mub_listx *list);

/**
 * Releases the values of every block like mub_listx_free_array(), then returns the block to an external entry
 * pool.
 *
 * Links and count are unchanged, as by mub_listx_remove_all_entry().
 *
 * @param[in,out] list  the list
 * @param[in] release   called with every value that is not 0, from the head on; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external;
 *   the list's blocks are returned to an external pool, although the list still refers to them
 * @invalidates the values; all blocks, if their pool is external
 * @cost O(values)
 * @nullable release
 * @level low
 */
MUB_API void mub_listx_free_all_entry(mub_listx *list, mub_free_fn release);

/**
 * Releases the values of one block that are not 0.
 *
 * Their blocks are returned to the value pool if that is external. The list's block keeps its count and its
 * words.
 *
 * @param[in,out] list   the list
 * @param[in,out] block  a block of the list
 * @param[in] release    called with every value that is not 0; NULL: not called
 * @failure if the pool's free stack cannot grow, a returned block is not reused: see mub_pool_free()
 * @owner each value is passed to `release`, and its block is returned to the value pool if that is external,
 *   although the list's block still holds it
 * @invalidates the values
 * @nullable release
 * @level low
 */
MUB_API void mub_listx_free_array(mub_listx *list, mub_listx_block *block, mub_free_fn release);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
