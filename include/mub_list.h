/* mub_list.h: doubly linked lists: mub_list of values with byte strings as keys, mub_lists of bare values, mub_listx of
 * blocks that hold up to 32 values each.
 *
 *   mub_list, mub_lists                                 mub_listx
 *
 *   head ──► entry ◄──► entry ◄──► entry ◄── tail       head ──► block ◄──────► block ◄── tail
 *            value      value      value                         [v v v … v]    [v v]
 *            key ──┐    key ──┐    key ──┐
 *   keys: [ bytes of all keys, packed in the order of their adding ]
 *
 * The order is the caller's: nothing is sorted, and keys and values may repeat. A position in a list is the address of
 * an entry: it stays valid, whatever else is added or removed, until that entry is removed.
 *
 * Entry pool. Needed before the first addition: made by `_init`, or the caller's, written into `entry_pool`, its block
 * size at least that of the list's entry (or block) record. Several lists may share a caller's pool.
 * Value pool. Wanted only by the `_new` functions, which give every new entry a block of it. One made by `_init` has no
 * block size yet: store the size of your values in `value_pool->block_size` before the first `_new`. Blocks of an owned
 * value pool go with the whole pool; single blocks return to a caller's pool only.
 *
 * Parameters, where a function does not say otherwise:
 *   list                    the list
 *   a, b                    the two lists
 *   value                   any word, 0 included
 *   block                   a block of the list
 *   context                 handed to the comparer
 *   text                    the text to take apart
 *   destination_user_pool   the initialised pool that becomes the copy of `source_user_pool`; else NULL
 *
 * Failure, where a function does not say otherwise:
 *   memory   no memory is needed: a block given back for which its pool's free stack has no room is dropped: see
 *            mub_pool_free
 *
 * Ownership, where a function does not say otherwise:
 *   _init                      the record is the caller's; a pool made here is the list's, until `_term`
 *   _term                      what the list owns is released; values and a caller's pools stay the caller's
 *   _swap                      what one list owned is the other's
 *   _clone                     the copy is the destination's; a caller's pool is shared by both, and values are then
 *                              copied as words
 *   _remove_all                entries are their pool's again; values are not released
 *   _free_all                  each value is handed to the caller's function, its block to a caller's value pool;
 *                              entries are their pool's again
 *   _remove_all_entry          with a caller's pool, entries are the pool's again, though the list still refers to
 *                              them; values are not released
 *   _free_all_entry            as after `_remove_all_entry`, each value having been handed to `release`, its block to
 *                              a caller's value pool
 *   _free_array                each value is handed to `release`, its block to a caller's value pool, though the
 *                              block of the list still holds it
 *   _entry_new                 the block is one of the entry pool, and the caller's to link or to give back
 *   _add_head_new, _add_tail_new   the block is one of the value pool; the list refers to it, and so does the caller
 *                                  now
 *   _add_head_list, _add_tail_list   keys, where there are any, are copied; values are copied as words, so that both
 *                                    lists refer to the same things
 *   _get_head, _get_tail, _get_next, _get_prev, _get_at   the value stays in the list
 *   _remove_head, _remove_tail, _remove_at   the value is handed over, not released; the entry is its pool's again
 *   _find_at, _find            the entry is a block of the entry pool, and the list's until it is removed
 *   _from_string               the pieces are copied
 *   _to_string                 the text is the string's
 *   value                      kept as a word; what it stands for stays the caller's
 *
 * Fields, where a record does not say otherwise:
 *   tail              NULL when the list is empty
 *   entry_pool        where the entries come from; NULL when there is none
 *   owns_value_pool   1: made by `_init`, released by `_term` */
#ifndef MUB_LIST_H
#define MUB_LIST_H

#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- mub_list: a linked list of entries with keys -------------------------------------------------------------
 *
 * A key is `length` bytes at `key`; a negative length means that it ends at its first NUL, and a NULL key is the empty
 * key, which is a key like any other. Keys are copied. A key that is handed out is a pointer into `keys` and a length:
 * valid until an addition or a removal.
 *
 * Parameters, where a function does not say otherwise:
 *   key      the key's bytes; NULL: the empty key
 *   length   bytes of the key; negative: up to its first NUL
 *
 * Ownership, where a function does not say otherwise:
 *   mub_list_entry *           the entry is a block of the entry pool, and the list's until it is removed
 *   _get_head, _get_tail, _get_next, _get_prev, _get_at   the key that is handed out lies in the list's `keys`, valid
 *                                                         until an addition or a removal; the value stays in the list
 *   key                        the bytes are copied, or only compared */

/* One entry. Offsets into `keys` change when another entry is removed. */
typedef struct mub_list_entry {
  struct mub_list_entry *prev; /* NULL at the head */
  struct mub_list_entry *next; /* NULL at the tail */
  uint32_t key_offset;         /* where the key's bytes start in the list's `keys` */
  uint32_t key_length;         /* bytes */
  uint64_t value;              /* the caller's; may be changed in place */
} mub_list_entry;

typedef struct mub_list {
  mub_list_entry *head; /* NULL when the list is empty */
  mub_list_entry *tail;
  int64_t count;   /* entries */
  mub_stream keys; /* the bytes of all keys in the order of their adding; together at most 2^32 - 1 */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_list_init, released by mub_list_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_list;

/* mub_list_init: make the record an empty list.
 *   own_entry_pool, own_value_pool   not 0: make a pool that the list owns
 * A pool record that cannot be allocated leaves its field NULL and its flag 0. Returns the list. */
MUB_API mub_list *mub_list_init(mub_list *list, int own_entry_pool, int own_value_pool);

/* mub_list_term: release everything that the list owns, and return entries to a caller's entry pool. Values are not
 * looked at. Returns the list, which is empty; the fields of its own pools are NULL, their flags 0.
 * Cost: one release a chunk of the pools; with a caller's entry pool O(entries). */
MUB_API mub_list *mub_list_term(mub_list *list);

/* mub_list_swap: exchange two lists, pools and their ownership included. */
MUB_API void mub_list_swap(mub_list *a, mub_list *b);

/* mub_list_clone: copy a list.
 *   source             unchanged
 *   source_user_pool   with `destination_user_pool` and `callback`: a pool that the values refer into, cloned too;
 *                      a pool given as both is shared; else NULL
 *   destination        initialised with the same flags; what it held is dropped
 *   callback           called for every entry in turn, value 0 included, when the source owns its value pool; may be
 *                      NULL
 * With owned pools, entries and value blocks keep their place in the copied pools and addresses are translated; a
 * value that is no block of the pool becomes 0, and so do all when the destination has no value pool of its own. A
 * caller's pool is shared with the clone: fresh entry blocks of it are filled as copies, values are copied as words. A
 * pool of the destination's own gives way to it.
 * Returns the destination; empty when memory ran out. Cost: O(entries). */
MUB_API mub_list *mub_list_clone(const mub_list *source, mub_pool *source_user_pool, mub_list *destination,
                                 mub_pool *destination_user_pool, mub_clone_fn callback);

/* mub_list_entry_new: take a block of the entry pool.
 * Returns the entry, cleared and neither linked nor counted; NULL when none can be had. */
MUB_API mub_list_entry *mub_list_entry_new(mub_list *list);

/* mub_list_add_head: add an entry before all others.
 *   value   any word, 0 included
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_list_entry *mub_list_add_head(mub_list *list, const void *key, int64_t length, uint64_t value);

/* mub_list_add_tail: add an entry behind all others; as mub_list_add_head. */
MUB_API mub_list_entry *mub_list_add_tail(mub_list *list, const void *key, int64_t length, uint64_t value);

/* mub_list_add_head_new: add an entry before all others, its value a block of the value pool.
 *   init   called with the block before the entry is linked and counted; may be NULL
 * Returns the block; 0 when memory ran out. When only the block cannot be had, the entry is added with value 0. */
MUB_API uint64_t mub_list_add_head_new(mub_list *list, const void *key, int64_t length, mub_init_fn init);

/* mub_list_add_tail_new: the same behind all others. */
MUB_API uint64_t mub_list_add_tail_new(mub_list *list, const void *key, int64_t length, mub_init_fn init);

/* mub_list_add_head_list: add a copy of every entry of another list before all others, in the order of `source`.
 *   source   may be `list` itself. Values are copied as words
 * All are added, or none when memory runs out. Cost: O(entries of `source`). */
MUB_API void mub_list_add_head_list(mub_list *list, const mub_list *source);

/* mub_list_add_tail_list: the same behind all others. */
MUB_API void mub_list_add_tail_list(mub_list *list, const mub_list *source);

/* mub_list_insert_before: add an entry right before another.
 *   position   NULL: before all others
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_list_entry *mub_list_insert_before(mub_list *list, mub_list_entry *position, const void *key,
                                               int64_t length, uint64_t value);

/* mub_list_insert_after: add an entry right behind another.
 *   position   NULL: behind all others
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_list_entry *mub_list_insert_after(mub_list *list, mub_list_entry *position, const void *key,
                                              int64_t length, uint64_t value);

/* mub_list_get_head_position: the first entry; NULL in an empty list. */
MUB_API mub_list_entry *mub_list_get_head_position(const mub_list *list);

/* mub_list_get_tail_position: the last entry; NULL in an empty list. */
MUB_API mub_list_entry *mub_list_get_tail_position(const mub_list *list);

/* mub_list_get_head: read the first entry.
 *   key, length   receive its key; NULL and 0 in an empty list
 * Returns its value; 0 in an empty list. */
MUB_API uint64_t mub_list_get_head(const mub_list *list, const char **key, int64_t *length);

/* mub_list_get_tail: the same of the last entry. */
MUB_API uint64_t mub_list_get_tail(const mub_list *list, const char **key, int64_t *length);

/* mub_list_get_next: read the entry at a position and step towards the tail.
 *   position      in: the entry; out: the one behind it, NULL behind the last. NULL stays
 *   key, length   receive the key of the entry read; NULL and 0 at NULL
 * Returns the value of the entry read; 0 at NULL. */
MUB_API uint64_t mub_list_get_next(const mub_list *list, mub_list_entry **position, const char **key,
                                   int64_t *length);

/* mub_list_get_prev: the same, towards the head. */
MUB_API uint64_t mub_list_get_prev(const mub_list *list, mub_list_entry **position, const char **key,
                                   int64_t *length);

/* mub_list_get_at: read the entry at a position.
 *   position      may be NULL
 *   key, length   receive its key; NULL and 0 at NULL
 * Returns its value; 0 at NULL. */
MUB_API uint64_t mub_list_get_at(const mub_list *list, const mub_list_entry *position, const char **key,
                                 int64_t *length);

/* mub_list_find: look for a key, case-sensitively.
 * Returns the first entry from the head that has it; NULL when there is none. Cost: O(entries). */
MUB_API mub_list_entry *mub_list_find(const mub_list *list, const void *key, int64_t length);

/* mub_list_remove_head: take the first entry out. Its value is handed over, not released.
 * Returns the value; 0 when the list is empty. Cost: O(entries): the key's bytes are cut out of `keys` and the offsets
 * behind them lowered, in one pass over memory when the list has an entry pool of its own. Nothing of that is needed
 * for an empty key. */
MUB_API uint64_t mub_list_remove_head(mub_list *list);

/* mub_list_remove_tail: the same with the last entry. */
MUB_API uint64_t mub_list_remove_tail(mub_list *list);

/* mub_list_remove_at: the same with the entry at a position, whose block then has value 0.
 *   position   NULL: nothing happens
 * Returns the value; 0 at NULL. */
MUB_API uint64_t mub_list_remove_at(mub_list *list, mub_list_entry *position);

/* mub_list_remove_all: empty the list, which stays usable. Entries go back to a caller's pool, an owned entry pool is
 * emptied, the block of `keys` is kept. Values are not looked at, and an owned value pool keeps its blocks.
 * Returns the list. */
MUB_API mub_list *mub_list_remove_all(mub_list *list);

/* mub_list_free_all: empty the list after releasing the values: blocks go back to a caller's value pool, an owned one
 * is emptied. The block of `keys` is released too.
 *   release   called for every value that is not 0, from the head on; may be NULL */
MUB_API void mub_list_free_all(mub_list *list, mub_free_fn release);

/* mub_list_remove_all_entry: return every entry to a caller's entry pool; nothing happens with an owned one. Links and
 * count are left as they are, and refer to blocks that are no longer the list's: set `head` and `tail` to NULL and
 * `count` to 0 before anything else, mub_list_term included. */
MUB_API void mub_list_remove_all_entry(mub_list *list);

/* mub_list_free_all_entry: release every value that is not 0, its block going back to a caller's value pool, and return
 * the entries to a caller's entry pool. The rest is left as after mub_list_remove_all_entry.
 *   release   called for every value that is not 0, from the head on; may be NULL */
MUB_API void mub_list_free_all_entry(mub_list *list, mub_free_fn release);

/* mub_list_adjust_t: lower the key offsets that lie behind a cut in `keys`: those beyond `offset`, and that of a key
 * with bytes at `offset` itself.
 *   offset   where the bytes were cut out
 *   length   what the offsets are lowered by, modulo 2^32; low 32 bits used
 * Cost: O(entries). */
MUB_API void mub_list_adjust_t(mub_list *list, uint32_t offset, int64_t length);

/* mub_list_from_string: add the pieces of a text as keys at the tail, values 0.
 *   separator   low 8 bits used
 *   length      negative: up to the first NUL
 * Each piece is trimmed as mub_char_trim does. Empty pieces are added too, but for the last: "a, ,b," gives "a", "" and
 * "b". All are added, or none when memory runs out. */
MUB_API void mub_list_from_string(mub_list *list, int separator, const char *text, int64_t length);

/* mub_list_to_string: write the keys as one text, a separator between each two.
 *   separator   low 8 bits used
 *   string      its content is replaced; unchanged when memory runs out
 * Empty keys at the front leave no separator: "", "", "a" give "a", while "x", "", "y" give "x,,y". */
MUB_API void mub_list_to_string(const mub_list *list, int separator, mub_string *string);

/* ---- mub_lists: a linked list of bare values ------------------------------------------------------------------
 *
 * Parameters, where a function does not say otherwise:
 *   key   handed to the comparer
 *
 * Ownership, where a function does not say otherwise:
 *   mub_lists_entry *    the entry is a block of the entry pool, and the list's until it is removed
 *   _remove_all_entry    entries are their pool's again, though the list still refers to them; values are not released */

/* One entry; it stays where it is until it is removed. */
typedef struct mub_lists_entry {
  struct mub_lists_entry *prev; /* NULL at the head */
  struct mub_lists_entry *next; /* NULL at the tail */
  uint64_t value;               /* the caller's; may be changed in place */
} mub_lists_entry;

typedef struct mub_lists {
  mub_lists_entry *head; /* NULL when the list is empty */
  mub_lists_entry *tail;
  int64_t count; /* values */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_lists_init, released by mub_lists_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_lists;

/* mub_lists_init: make the record an empty list; as mub_list_init. */
MUB_API mub_lists *mub_lists_init(mub_lists *list, int own_entry_pool, int own_value_pool);

/* mub_lists_term: release what the list owns, and return entries to a caller's pool; as mub_list_term. */
MUB_API mub_lists *mub_lists_term(mub_lists *list);

/* mub_lists_swap: exchange two lists, pools and their ownership included. */
MUB_API void mub_lists_swap(mub_lists *a, mub_lists *b);

/* mub_lists_clone: copy a list; as mub_list_clone. */
MUB_API mub_lists *mub_lists_clone(const mub_lists *source, mub_pool *source_user_pool,
                                   mub_lists *destination, mub_pool *destination_user_pool,
                                   mub_clone_fn callback);

/* mub_lists_entry_new: take a block of the entry pool.
 * Returns the entry, cleared and neither linked nor counted; NULL when none can be had. */
MUB_API mub_lists_entry *mub_lists_entry_new(mub_lists *list);

/* mub_lists_add_head: add a value before all others.
 *   value   any word, 0 included
 * Returns the entry; NULL when memory ran out. */
MUB_API mub_lists_entry *mub_lists_add_head(mub_lists *list, uint64_t value);

/* mub_lists_add_tail: add a value behind all others; as mub_lists_add_head. */
MUB_API mub_lists_entry *mub_lists_add_tail(mub_lists *list, uint64_t value);

/* mub_lists_add_head_new: add a block of the value pool before all others.
 *   init   called with the block before the entry is linked and counted; may be NULL
 * Returns the block; 0 when memory ran out. When only the block cannot be had, 0 is added. */
MUB_API uint64_t mub_lists_add_head_new(mub_lists *list, mub_init_fn init);

/* mub_lists_add_tail_new: the same behind all others. */
MUB_API uint64_t mub_lists_add_tail_new(mub_lists *list, mub_init_fn init);

/* mub_lists_add_head_list: add the values of another list before all others, in the order of `source`.
 *   source   may be `list` itself. Values are copied as words
 * All are added, or none when memory runs out. Cost: O(entries of `source`). */
MUB_API void mub_lists_add_head_list(mub_lists *list, const mub_lists *source);

/* mub_lists_add_tail_list: the same behind all others. */
MUB_API void mub_lists_add_tail_list(mub_lists *list, const mub_lists *source);

/* mub_lists_insert_before: add a value right before an entry.
 *   position   NULL: before all others
 * Returns the new entry; NULL when memory ran out. */
MUB_API mub_lists_entry *mub_lists_insert_before(mub_lists *list, mub_lists_entry *position, uint64_t value);

/* mub_lists_insert_after: add a value right behind an entry.
 *   position   NULL: behind all others
 * Returns the new entry; NULL when memory ran out. */
MUB_API mub_lists_entry *mub_lists_insert_after(mub_lists *list, mub_lists_entry *position, uint64_t value);

/* mub_lists_get_head_position: the first entry; NULL in an empty list. */
MUB_API mub_lists_entry *mub_lists_get_head_position(const mub_lists *list);

/* mub_lists_get_tail_position: the last entry; NULL in an empty list. */
MUB_API mub_lists_entry *mub_lists_get_tail_position(const mub_lists *list);

/* mub_lists_get_head: the first value; 0 in an empty list. */
MUB_API uint64_t mub_lists_get_head(const mub_lists *list);

/* mub_lists_get_tail: the last value; 0 in an empty list. */
MUB_API uint64_t mub_lists_get_tail(const mub_lists *list);

/* mub_lists_get_next: read the value at a position and step towards the tail.
 *   position   in: the entry; out: the one behind it, NULL behind the last. NULL stays
 * Returns the value read; 0 at NULL. */
MUB_API uint64_t mub_lists_get_next(const mub_lists *list, mub_lists_entry **position);

/* mub_lists_get_prev: the same, towards the head. */
MUB_API uint64_t mub_lists_get_prev(const mub_lists *list, mub_lists_entry **position);

/* mub_lists_get_at: the value at a position; 0 at NULL. */
MUB_API uint64_t mub_lists_get_at(const mub_lists *list, const mub_lists_entry *position);

/* mub_lists_find_at: look for a value as a number.
 * Returns the first entry from the head that has it; NULL when there is none. Cost: O(entries). */
MUB_API mub_lists_entry *mub_lists_find_at(const mub_lists *list, uint64_t value);

/* mub_lists_find: look for a value by a comparer.
 *   compare   called as compare(value of the entry, key) from the head on; 0 ends the search. NULL finds nothing
 * Returns the entry; NULL when there is none. Cost: O(entries). */
MUB_API mub_lists_entry *mub_lists_find(const mub_lists *list, uint64_t key, mub_compare_fn compare);

/* mub_lists_find_x: look for a value by a comparer with a context.
 *   compare   called as compare(key, value of the entry, context): unlike that of mub_lists_find, it gets the key
 *             first. NULL finds nothing
 * Returns the entry; NULL when there is none. Cost: O(entries). */
MUB_API mub_lists_entry *mub_lists_find_x(const mub_lists *list, uint64_t key, uint64_t context,
                                          mub_compare_item_fn compare);

/* mub_lists_remove_head: take the first value out. It is handed over, not released.
 * Returns the value; 0 when the list is empty. */
MUB_API uint64_t mub_lists_remove_head(mub_lists *list);

/* mub_lists_remove_tail: the same with the last value. */
MUB_API uint64_t mub_lists_remove_tail(mub_lists *list);

/* mub_lists_remove_at: the same with the value at a position, whose block then has value 0.
 *   position   NULL: nothing happens
 * Returns the value; 0 at NULL. */
MUB_API uint64_t mub_lists_remove_at(mub_lists *list, mub_lists_entry *position);

/* mub_lists_remove_all: empty the list, which stays usable. Entries go back to a caller's pool, owned pools are emptied;
 * unlike mub_list_remove_all, that of the values too. Values are not looked at. Returns the list. */
MUB_API mub_lists *mub_lists_remove_all(mub_lists *list);

/* mub_lists_free_all: empty the list after releasing the values: blocks go back to a caller's value pool, an owned one
 * is emptied.
 *   release   called for every value that is not 0, from the head on; may be NULL */
MUB_API void mub_lists_free_all(mub_lists *list, mub_free_fn release);

/* mub_lists_remove_all_entry: return every entry to the entry pool, whoever owns it. Links and count are left as they
 * are, and refer to blocks that are no longer the list's: set `head` and `tail` to NULL and `count` to 0 before anything
 * else, mub_lists_term included. */
MUB_API void mub_lists_remove_all_entry(mub_lists *list);

/* mub_lists_free_all_entry: release every value that is not 0, its block going back to a caller's value pool, and return
 * the entries to a caller's entry pool. The rest is left as after mub_lists_remove_all_entry.
 *   release   called for every value that is not 0, from the head on; may be NULL */
MUB_API void mub_lists_free_all_entry(mub_lists *list, mub_free_fn release);

/* ---- mub_listx: a linked list of blocks of values -------------------------------------------------------------
 *
 * Values come and go at the two ends alone. There are no positions: read the blocks themselves,
 *
 *   for (const mub_listx_block *block = list.head; block != NULL; block = block->next)
 *     for (int64_t i = 0; i < block->count; ++i) use(block->values[i]);
 *
 * Ownership, where a function does not say otherwise:
 *   mub_listx_block *   the block is one of the entry pool */

/* One block of values. */
typedef struct mub_listx_block {
  struct mub_listx_block *prev; /* NULL at the head */
  struct mub_listx_block *next; /* NULL at the tail */
  int64_t count;                /* values held; 1 to 32 in a list */
  uint64_t values[32];          /* from slot 0 on; may be changed in place. Spare slots hold anything */
} mub_listx_block;

typedef struct mub_listx {
  mub_listx_block *head; /* NULL when the list is empty */
  mub_listx_block *tail;
  int64_t count; /* values in all blocks */
  mub_pool *entry_pool;
  uint16_t owns_entry_pool; /* 1: made by mub_listx_init, released by mub_listx_term */
  mub_pool *value_pool;     /* NULL when there is none */
  uint16_t owns_value_pool;
} mub_listx;

/* mub_listx_init: make the record an empty list; as mub_list_init. */
MUB_API mub_listx *mub_listx_init(mub_listx *list, int own_entry_pool, int own_value_pool);

/* mub_listx_term: release what the list owns, and return blocks to a caller's pool; as mub_list_term. */
MUB_API mub_listx *mub_listx_term(mub_listx *list);

/* mub_listx_entry_new: take a block of the entry pool.
 * Returns the block, cleared and not linked; NULL when none can be had. */
MUB_API mub_listx_block *mub_listx_entry_new(mub_listx *list);

/* mub_listx_add_head: add a value before all others.
 *   value   any word, 0 included
 * Returns the list; NULL when memory ran out. Invalidates: places in the head block, whose values move up.
 * Cost: at most 32 values move. */
MUB_API mub_listx *mub_listx_add_head(mub_listx *list, uint64_t value);

/* mub_listx_add_tail: add a value behind all others.
 *   value   any word, 0 included
 * Returns the list; NULL when memory ran out. */
MUB_API mub_listx *mub_listx_add_tail(mub_listx *list, uint64_t value);

/* mub_listx_add_head_new: add a block of the value pool before all others, as mub_listx_add_head adds a value.
 *   init   called with the block before it is added and counted; may be NULL
 * Returns the block; 0 when memory ran out. When only the block of the value pool cannot be had, 0 is added. */
MUB_API uint64_t mub_listx_add_head_new(mub_listx *list, mub_init_fn init);

/* mub_listx_add_tail_new: the same behind all others. */
MUB_API uint64_t mub_listx_add_tail_new(mub_listx *list, mub_init_fn init);

/* mub_listx_remove_head: take the first value out. It is handed over, not released.
 * Returns the value; 0 when the list is empty. Invalidates: places in the head block, whose values move down; the block
 * itself with its last value. Cost: at most 31 values move. */
MUB_API uint64_t mub_listx_remove_head(mub_listx *list);

/* mub_listx_remove_tail: take the last value out. It is handed over, not released.
 * Returns the value; 0 when the list is empty. Invalidates: the tail block with its last value. */
MUB_API uint64_t mub_listx_remove_tail(mub_listx *list);

/* mub_listx_remove_all: empty the list, which stays usable. Blocks go back to a caller's pool, an owned entry pool is
 * emptied. Values are not looked at, and an owned value pool keeps its blocks. Returns the list. */
MUB_API mub_listx *mub_listx_remove_all(mub_listx *list);

/* mub_listx_free_all: empty the list after releasing the values: blocks go back to a caller's value pool, an owned one
 * is emptied.
 *   release   called for every value that is not 0, from the head on; may be NULL */
MUB_API void mub_listx_free_all(mub_listx *list, mub_free_fn release);

/* mub_listx_remove_all_entry: return every block to a caller's entry pool; nothing happens with an owned one. Links and
 * count are left as they are, and refer to blocks that are no longer the list's: set `head` and `tail` to NULL and
 * `count` to 0 before anything else, mub_listx_term included. */
MUB_API void mub_listx_remove_all_entry(mub_listx *list);

/* mub_listx_free_all_entry: mub_listx_free_array for every block, then return it to a caller's entry pool. The rest is
 * left as after mub_listx_remove_all_entry.
 *   release   called for every value that is not 0, from the head on; may be NULL */
MUB_API void mub_listx_free_all_entry(mub_listx *list, mub_free_fn release);

/* mub_listx_free_array: release the values of one block that are not 0, their blocks going back to a caller's value
 * pool. The block keeps its count and the values' words.
 *   release   called for every value that is not 0; may be NULL */
MUB_API void mub_listx_free_array(mub_listx *list, mub_listx_block *block, mub_free_fn release);

#ifdef __cplusplus
}
#endif

#endif
