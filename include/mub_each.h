/**
 * @defgroup each mub_each: loops over containers, and values that are pointers
 *
 * Loop macros for containers, and conversions between pointers and values.
 *
 *     MUB_EACH_HASH(&words, entry) {
 *       const word *found = MUB_VALUE_AS(const word, entry->value);
 *       if (found->is_last) break;
 *     }
 *
 * **Loops.** The macro declares the loop variable, here a `mub_hash_entry *`, which exists inside the loop
 * only. `break` and `continue` have their usual meaning, and the loop is one statement, with or without
 * braces. Loops may be nested if their variables have different names. All arguments are evaluated once, at
 * the beginning. The further variables of a loop have the name of the loop variable with a suffix such as
 * `_at`.
 *
 * **Changes.** In the loop, values may be changed through the loop variable (the words of a mub_arrayt only
 * with mub_arrayt_set_at()), but nothing may be added to the container or removed from it, unless the loop is
 * left afterwards. To remove some of the entries, collect copies of their keys, and remove these after the
 * loop. In MUB_EACH_BIT, bits may be set and cleared: those above the position are visited as they are then.
 *
 * **Values.** A container stores 64-bit words. MUB_VALUE_OF() makes one from a pointer, and MUB_VALUE_AS()
 * makes it a pointer again.
 *
 * The macros are for C. They also work in C++, where the types of mub.hpp have range-based for loops.
 *
 * @{
 */
#ifndef MUB_EACH_H
#define MUB_EACH_H

#include <stddef.h>

#include "mub_array.h"
#include "mub_base.h"
#include "mub_bits.h"
#include "mub_btree.h"
#include "mub_hash.h"
#include "mub_list.h"
#include "mub_tree.h"

/** @cond */

/* In C++, all translation units share one function, so that inline functions may call it. */
#ifdef __cplusplus
#define MUB_INLINE inline
#define MUB_EACH_CAST(type, pointer) static_cast<type>(pointer)
#else
#define MUB_INLINE static inline
#define MUB_EACH_CAST(type, pointer) ((type)(pointer))
#endif

/* The C idioms below must not cause warnings in C++ programs that include this header. */
#if defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wzero-as-null-pointer-constant"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuseless-cast"
#endif
#endif

MUB_INLINE void *mub_each_pointer(uint64_t value) { return (void *)(uintptr_t)value; }

MUB_INLINE uint64_t mub_each_value(const void *pointer) { return (uintptr_t)pointer; }

MUB_INLINE mub_hasht_entry *mub_each_hasht_first(const mub_hasht *table, int64_t *bucket) {
  for (; *bucket < table->buckets.count; ++*bucket)
    if (table->buckets.items[*bucket] != 0)
      return (mub_hasht_entry *)mub_each_pointer(table->buckets.items[*bucket]);
  return NULL;
}

MUB_INLINE mub_hasht_entry *mub_each_hasht_next(const mub_hasht *table, int64_t *bucket,
                                                const mub_hasht_entry *entry) {
  if (entry->next != NULL) return entry->next;
  ++*bucket;
  return mub_each_hasht_first(table, bucket);
}

/* NULL after the last word. The count may exceed the words that exist, as for mub_arrayt_get_at(). */
MUB_INLINE const uint64_t *mub_each_word(const mub_arrayt *array, int64_t index) {
  if (index >= array->count || (index >= 4 && (array->tail == NULL || index >= array->capacity))) return NULL;
  return index < 4 ? array->inline_items + index : array->tail + (index - 4);
}

MUB_INLINE uint64_t *mub_each_next_value(mub_listx_block **block, uint64_t *value) {
  if (++value < (*block)->values + (*block)->count) return value;
  if ((*block)->next == NULL) return NULL;
  *block = (*block)->next;
  return (*block)->values;
}

/* The first set bit from `*from` on; `*from` becomes the number of the next bit, or -1 if there was none. */
MUB_INLINE uint32_t mub_each_set_bit(const mub_bits *bits, int64_t *from) {
  const int64_t end = (int64_t)bits->size * 8;
  for (int64_t bit = *from; bit < end; bit++) {
    const uint32_t rest = bits->data[bit >> 3] & (0xffu >> (bit & 7));
    if (rest == 0) {
      bit |= 7; /* the whole byte */
    } else if ((rest & (0x80u >> (bit & 7))) != 0) {
      *from = bit + 1;
      return (uint32_t)bit;
    }
  }
  *from = -1;
  return 0;
}

#if defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
#undef MUB_INLINE

/* NOLINTBEGIN(bugprone-macro-parentheses): a name that is declared cannot be in parentheses. */

/* The outer loops run once and only declare variables, so `break` in the innermost loop ends the whole
   statement. */

#define MUB_EACH_IN_BUCKETS(table_type, entry_type, first, next, table, entry)        \
  for (const table_type *entry##_in = (table); entry##_in != NULL; entry##_in = NULL) \
    for (int64_t entry##_at = 0; entry##_at >= 0; entry##_at = -1)                    \
      for (entry_type *entry = first(entry##_in, &entry##_at); entry != NULL;         \
           entry = next(entry##_in, &entry##_at, entry))

#define MUB_EACH_IN_TREE(cursor_type, record_type, next, map, record, start)                          \
  for (cursor_type record##_at = {(map), NULL, 0}; record##_at.tree != NULL; record##_at.tree = NULL) \
    for (record_type *record = start; record != NULL; record = next(&record##_at))

/* The count may exceed the slots that exist: the copy of an array has the count of its source, even if memory
   ran out. */
#define MUB_EACH_IN_SLOTS(array_type, slot_type, slots, array, slot)                                       \
  for (const array_type *slot##_in = (array); slot##_in != NULL; slot##_in = NULL)                         \
    for (slot_type *slot = slot##_in->slots; slot != NULL && slot - slot##_in->slots < slot##_in->count && \
                                             slot - slot##_in->slots < slot##_in->capacity;                \
         slot++)

/** @endcond */

/* ---- values */

/**
 * The pointer that a value holds.
 *
 * @param type   the type that it points to, such as `group` or `const group`; the result is a `type *`
 * @param value  the value; NULL results from 0
 */
#define MUB_VALUE_AS(type, value) MUB_EACH_CAST(type *, mub_each_pointer(value))

/**
 * The value that holds a pointer.
 *
 * @param pointer  a pointer to an object, also to a constant one
 */
#define MUB_VALUE_OF(pointer) mub_each_value(pointer)

/* ---- hash tables */

/**
 * Visits the entries of a mub_hash, bucket by bucket.
 *
 * @param table  the address of the table
 * @param entry  the loop variable, a `mub_hash_entry *`
 */
#define MUB_EACH_HASH(table, entry) \
  MUB_EACH_IN_BUCKETS(mub_hash, mub_hash_entry, mub_hash_entry_first, mub_hash_entry_next, table, entry)

/**
 * Visits the entries of a mub_hashd, bucket by bucket.
 *
 * @param table  the address of the table
 * @param entry  the loop variable, a `mub_hashd_entry *`
 */
#define MUB_EACH_HASHD(table, entry) \
  MUB_EACH_IN_BUCKETS(mub_hashd, mub_hashd_entry, mub_hashd_entry_first, mub_hashd_entry_next, table, entry)

/**
 * Visits the entries of a mub_hashx, bucket by bucket.
 *
 * @param table  the address of the table
 * @param entry  the loop variable, a `mub_hashx_entry *`
 */
#define MUB_EACH_HASHX(table, entry) \
  MUB_EACH_IN_BUCKETS(mub_hashx, mub_hashx_entry, mub_hashx_entry_first, mub_hashx_entry_next, table, entry)

/**
 * Visits the entries of a mub_hasht, bucket by bucket.
 *
 * @param table  the address of the table
 * @param entry  the loop variable, a `mub_hasht_entry *`
 */
#define MUB_EACH_HASHT(table, entry) \
  MUB_EACH_IN_BUCKETS(mub_hasht, mub_hasht_entry, mub_each_hasht_first, mub_each_hasht_next, table, entry)

/* ---- B-trees */

/**
 * Visits the records of a mub_btree in key order.
 *
 * @param map     the address of the tree
 * @param record  the loop variable, a `mub_btree_node *`
 */
#define MUB_EACH_BTREE(map, record)                                                      \
  MUB_EACH_IN_TREE(mub_btree_cursor, mub_btree_node, mub_btree_cursor_next, map, record, \
                   mub_btree_cursor_first(&record##_at, record##_at.tree))

/**
 * Visits the records of a mub_btree whose keys are not less than the given key, in key order.
 *
 * @param map     the address of the tree
 * @param key     the address of the key's bytes
 * @param length  the length of the key; negative: up to its first NUL
 * @param record  the loop variable, a `mub_btree_node *`
 */
#define MUB_EACH_BTREE_FROM(map, key, length, record)                                    \
  MUB_EACH_IN_TREE(mub_btree_cursor, mub_btree_node, mub_btree_cursor_next, map, record, \
                   mub_btree_cursor_seek(&record##_at, record##_at.tree, key, length))

/**
 * Visits the records of a mub_btreed in key order.
 *
 * @param map     the address of the tree
 * @param record  the loop variable, a `mub_btreed_node *`
 */
#define MUB_EACH_BTREED(map, record)                                                        \
  MUB_EACH_IN_TREE(mub_btreed_cursor, mub_btreed_node, mub_btreed_cursor_next, map, record, \
                   mub_btreed_cursor_first(&record##_at, record##_at.tree))

/**
 * Visits the records of a mub_btreed whose keys are not less than the given key, in key order.
 *
 * @param map     the address of the tree
 * @param key     the key
 * @param record  the loop variable, a `mub_btreed_node *`
 */
#define MUB_EACH_BTREED_FROM(map, key, record)                                              \
  MUB_EACH_IN_TREE(mub_btreed_cursor, mub_btreed_node, mub_btreed_cursor_next, map, record, \
                   mub_btreed_cursor_seek(&record##_at, record##_at.tree, key))

/**
 * Visits the records of a mub_btreex in key order.
 *
 * @param map     the address of the tree
 * @param record  the loop variable, a `mub_btreex_node *`
 */
#define MUB_EACH_BTREEX(map, record)                                                        \
  MUB_EACH_IN_TREE(mub_btreex_cursor, mub_btreex_node, mub_btreex_cursor_next, map, record, \
                   mub_btreex_cursor_first(&record##_at, record##_at.tree))

/**
 * Visits the records of a mub_btreex whose keys are not less than the given key, in key order.
 *
 * @param map     the address of the tree
 * @param key     the key
 * @param record  the loop variable, a `mub_btreex_node *`
 */
#define MUB_EACH_BTREEX_FROM(map, key, record)                                              \
  MUB_EACH_IN_TREE(mub_btreex_cursor, mub_btreex_node, mub_btreex_cursor_next, map, record, \
                   mub_btreex_cursor_seek(&record##_at, record##_at.tree, key))

/* ---- arrays */

/**
 * Visits the entries of a mub_array, from index 0 on.
 *
 * @param array  the address of the array
 * @param entry  the loop variable, a `mub_array_entry *`
 */
#define MUB_EACH_ARRAY(array, entry) MUB_EACH_IN_SLOTS(mub_array, mub_array_entry, entries, array, entry)

/**
 * Visits the entries of a mub_arrayd, from index 0 on.
 *
 * @param array  the address of the array
 * @param entry  the loop variable, a `mub_arrayd_entry *`
 */
#define MUB_EACH_ARRAYD(array, entry) MUB_EACH_IN_SLOTS(mub_arrayd, mub_arrayd_entry, entries, array, entry)

/**
 * Visits the entries of a mub_arrayx, from index 0 on.
 *
 * @param array  the address of the array
 * @param entry  the loop variable, a `mub_arrayx_entry *`
 */
#define MUB_EACH_ARRAYX(array, entry) MUB_EACH_IN_SLOTS(mub_arrayx, mub_arrayx_entry, entries, array, entry)

/**
 * Visits the items of a mub_arrays, from index 0 on.
 *
 * @param array  the address of the array
 * @param item   the loop variable, a `uint64_t *`: the address of the item
 */
#define MUB_EACH_ARRAYS(array, item) MUB_EACH_IN_SLOTS(mub_arrays, uint64_t, items, array, item)

/**
 * Visits the words of a mub_arrayt, from index 0 on.
 *
 * @param array  the address of the array
 * @param item   the loop variable, a `const uint64_t *`: the address of the word
 */
#define MUB_EACH_ARRAYT(array, item)                                               \
  for (const mub_arrayt *item##_in = (array); item##_in != NULL; item##_in = NULL) \
    for (int64_t item##_at = 0; item##_at >= 0; item##_at = -1)                    \
      for (const uint64_t *item = mub_each_word(item##_in, 0); item != NULL;       \
           item = mub_each_word(item##_in, ++item##_at))

/* ---- lists */

/**
 * Visits the entries of a mub_list, from head to tail.
 *
 * @param list   the address of the list
 * @param entry  the loop variable, a `mub_list_entry *`
 */
#define MUB_EACH_LIST(list, entry) \
  for (mub_list_entry *entry = (list)->head; entry != NULL; entry = entry->next)

/**
 * Visits the entries of a mub_lists, from head to tail.
 *
 * @param list   the address of the list
 * @param entry  the loop variable, a `mub_lists_entry *`
 */
#define MUB_EACH_LISTS(list, entry) \
  for (mub_lists_entry *entry = (list)->head; entry != NULL; entry = entry->next)

/**
 * Visits the values of a mub_listx, from head to tail.
 *
 * @param list  the address of the list
 * @param item  the loop variable, a `uint64_t *`: the address of the value
 */
#define MUB_EACH_LISTX(list, item)                                                     \
  for (mub_listx_block *item##_in = (list)->head; item##_in != NULL; item##_in = NULL) \
    for (uint64_t *item = item##_in->values; item != NULL; item = mub_each_next_value(&item##_in, item))

/* ---- trees */

/**
 * Visits the children of an entry of a mub_tree.
 *
 * @param parent  the address of an entry; of `root` for the first level
 * @param entry   the loop variable, a `mub_tree_entry *`
 */
#define MUB_EACH_TREE_CHILD(parent, entry) \
  for (mub_tree_entry *entry = (parent)->first_child; entry != NULL; entry = mub_tree_entry_next(entry))

/**
 * Visits all entries below an entry of a mub_tree in document order: each before its children.
 *
 * @param ancestor  the address of an entry; of `root` for the whole tree
 * @param entry     the loop variable, a `mub_tree_entry *`
 */
#define MUB_EACH_TREE_BELOW(ancestor, entry)                                                      \
  for (const mub_tree_entry *entry##_in = (ancestor); entry##_in != NULL; entry##_in = NULL)      \
    for (mub_tree_entry *entry = mub_tree_entry_iter_next(entry##_in, entry##_in); entry != NULL; \
         entry = mub_tree_entry_iter_next(entry##_in, entry))

/* ---- bits */

/**
 * Visits the bits of a mub_bits that are set, in ascending order.
 *
 * @param bits  the address of the set
 * @param bit   the loop variable, a `uint32_t`: the number of the bit
 */
#define MUB_EACH_BIT(bits, bit)                                                            \
  for (const mub_bits *bit##_in = (bits); bit##_in != NULL; bit##_in = NULL)               \
    for (int64_t bit##_at = 0; bit##_at >= 0; bit##_at = -1)                               \
      for (uint32_t bit = mub_each_set_bit(bit##_in, &bit##_at); (void)bit, bit##_at >= 0; \
           bit = mub_each_set_bit(bit##_in, &bit##_at))

/* NOLINTEND(bugprone-macro-parentheses) */

/** @} */

#endif
