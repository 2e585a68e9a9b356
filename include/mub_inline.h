/**
 * @defgroup inline mub_inline: the smallest operations as inline functions
 *
 * Inline functions for operations that take less time than a call.
 *
 * A call of the shared library takes 1.5 to 2 ns, which is most of the time of testing a bit or appending a
 * character. This header makes such operations inline functions. They do the common case in place, in a few
 * instructions, and call the library for the rest: growth, refusals, unusual arguments. Names, parameters and
 * results are the same, so that a program only has to include the header. It is still linked with libmub.
 *
 *     #include "mub_inline.h"
 *
 *     mub_bits_insert(&seen, page, 1);     calls the library only if the set grows
 *     (mub_bits_insert)(&seen, page, 1);   always calls it
 *
 * **Names.** `mub_bits_insert(…)` is now a macro for `mub_inline_bits_insert(…)`, and so on; arguments are
 * evaluated once. A name that no parenthesis follows, as where the address of a function is taken, still
 * means the library's function. A member of such a name that is called, as in `ops->mub_pool_new(&pool)`,
 * needs parentheses: `(ops->mub_pool_new)(&pool)`.
 *
 * **In C**, a function that is inline but not static may not call static functions, and these are static. In
 * such a function, put parentheses around the name.
 *
 * **In C++**, an inline function or a template has to be the same in all translation units. If one of yours
 * calls these operations, include this header in the file that defines it. The types of mub.hpp call them,
 * too: include this header before mub.hpp in all translation units, or in none.
 *
 * These functions are inline:
 *
 * - `mub_bits.h`: mub_bits_get(), mub_bits_set(), mub_bits_insert(), mub_bits_find()
 * - `mub_string.h`: mub_string_append_char(), mub_string_get_at(), mub_string_set_at(),
 *   mub_stringx_get_at()
 * - `mub_wchar.h`: mub_wchar_append_char(), mub_wchar_get_at(), mub_wchar_set_at()
 * - `mub_stream.h`: mub_stream_append(), mub_stream_get_at(), mub_stream_set_at(), mub_stream_get_byte(),
 *   mub_stream_get_word(), mub_stream_get_tword(), mub_stream_get_dword(), mub_stream_get_xword(),
 *   mub_stream_get_lword(), mub_stream_set_byte(), mub_stream_set_word(), mub_stream_set_tword(),
 *   mub_stream_set_dword(), mub_stream_set_xword(), mub_stream_set_lword(), mub_stream_deflate_lword(),
 *   mub_stream_inflate_lword()
 * - `mub_pool.h`: mub_pool_new(), mub_pool_free()
 * - `mub_array.h`: mub_array_get_at(), mub_arrayd_append(), mub_arrayd_get_at(), mub_arrayx_append(),
 *   mub_arrayx_get_at(), mub_arrays_append(), mub_arrays_get_at(), mub_arrays_set_at(),
 *   mub_arrayt_append(), mub_arrayt_get_at(), mub_arrayt_set_at()
 * - `mub_list.h`: mub_list_get_at(), mub_list_get_head(), mub_list_get_tail(), mub_list_get_next(),
 *   mub_list_get_prev(), mub_lists_get_at(), mub_lists_get_head(), mub_lists_get_tail(),
 *   mub_lists_get_next(), mub_lists_get_prev()
 * - `mub_hash.h`: mub_hashd_get(), mub_hashx_get()
 *
 * @{
 */
#ifndef MUB_INLINE_H
#define MUB_INLINE_H

#include <stddef.h>
#include <string.h>

#include "mub_array.h"
#include "mub_bits.h"
#include "mub_hash.h"
#include "mub_list.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"
#include "mub_wchar.h"

/** @cond */

/* In C++, all translation units share one function, so that inline functions may call it. */
#ifdef __cplusplus
#define MUB_INLINE inline
#else
#define MUB_INLINE static inline
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

/* ---- bits */

MUB_INLINE uint32_t mub_inline_bits_get(uint32_t byte, uint32_t position) {
  return position < 8 ? byte & (0x80u >> position) : 0;
}

/* No branch depends on `on`, which may be hard to predict. */
MUB_INLINE uint8_t mub_inline_bits_set(uint32_t byte, uint32_t position, int on) {
  const uint32_t mask = position < 8 ? 0x80u >> position : 0;
  return (uint8_t)((byte & ~mask) | (on != 0 ? mask : 0));
}

MUB_INLINE void mub_inline_bits_insert(mub_bits *bits, uint32_t bit, int on) {
  if (bit >> 3 >= bits->size) {
    mub_bits_insert(bits, bit, on);
    return;
  }
  uint8_t *byte = bits->data + (bit >> 3);
  const uint32_t shift = 7 - (bit & 7);
  *byte = (uint8_t)((*byte & ~(1u << shift)) | (uint32_t)(on != 0) << shift);
}

MUB_INLINE uint32_t mub_inline_bits_find(const mub_bits *bits, uint32_t bit) {
  return bit >> 3 < bits->size ? bits->data[bit >> 3] & (0x80u >> (bit & 7)) : 0;
}

/* ---- strings */

MUB_INLINE void mub_inline_string_append_char(mub_string *string, int character) {
  char *data = string->data;
  const int64_t length = string->length;
  if (length >= string->capacity) {
    mub_string_append_char(string, character);
    return;
  }
  data[length] = (char)character;
  data[length + 1] = 0;
  string->length = length + 1;
}

MUB_INLINE int mub_inline_string_get_at(const mub_string *string, int64_t index) {
  return index >= 0 && index < string->capacity ? (signed char)string->data[index] : -1;
}

MUB_INLINE void mub_inline_string_set_at(mub_string *string, int64_t index, int character) {
  if (index >= 0 && index < string->capacity) string->data[index] = (char)character;
}

MUB_INLINE int mub_inline_stringx_get_at(const mub_stringx *view, int64_t index) {
  const int is_inside = view->text != NULL && index >= 0 && index < view->length;
  return is_inside ? (signed char)(view->text + view->start)[index] : -1;
}

MUB_INLINE void mub_inline_wchar_append_char(mub_wchar *string, int unit) {
  uint16_t *data = string->data;
  const int64_t length = string->length;
  if (length >= string->capacity) {
    mub_wchar_append_char(string, unit);
    return;
  }
  data[length] = (uint16_t)unit;
  data[length + 1] = 0;
  string->length = length + 1;
}

MUB_INLINE uint16_t mub_inline_wchar_get_at(const mub_wchar *string, int64_t index) {
  return (uint16_t)(index >= 0 && index < string->capacity ? string->data[index] : 0);
}

MUB_INLINE void mub_inline_wchar_set_at(mub_wchar *string, int64_t index, int unit) {
  if (index >= 0 && index < string->capacity) string->data[index] = (uint16_t)unit;
}

/* ---- streams */

MUB_INLINE void mub_inline_stream_append(mub_stream *stream, const void *bytes, int64_t count) {
  uint8_t *data = stream->data;
  const int64_t length = stream->length;
  if (count != 1 || bytes == NULL || length >= stream->capacity) {
    mub_stream_append(stream, bytes, count);
    return;
  }
  data[length] = *(const uint8_t *)bytes;
  stream->length = length + 1;
}

MUB_INLINE uint8_t mub_inline_stream_get_at(const mub_stream *stream, int64_t index) {
  return (uint8_t)(index >= 0 && index < stream->capacity ? stream->data[index] : 0);
}

MUB_INLINE void mub_inline_stream_set_at(mub_stream *stream, int64_t index, int byte) {
  if (index >= 0 && index < stream->capacity) stream->data[index] = (uint8_t)byte;
}

/* Little-endian integers. Compilers make one load of the bytes, but not one store. */
MUB_INLINE uint32_t mub_inline_load_2(const uint8_t *bytes) { return bytes[0] | (uint32_t)bytes[1] << 8; }

MUB_INLINE uint32_t mub_inline_load_4(const uint8_t *bytes) {
  return bytes[0] | (uint32_t)bytes[1] << 8 | (uint32_t)bytes[2] << 16 | (uint32_t)bytes[3] << 24;
}

MUB_INLINE uint64_t mub_inline_load_8(const uint8_t *bytes) {
  return (uint64_t)bytes[0] | (uint64_t)bytes[1] << 8 | (uint64_t)bytes[2] << 16 | (uint64_t)bytes[3] << 24 |
         (uint64_t)bytes[4] << 32 | (uint64_t)bytes[5] << 40 | (uint64_t)bytes[6] << 48 |
         (uint64_t)bytes[7] << 56;
}

MUB_INLINE void mub_inline_store(uint8_t *bytes, uint64_t value, size_t size) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  memcpy(bytes, &value, size);
#else
  for (size_t i = 0; i < size; ++i) bytes[i] = (uint8_t)(value >> (8 * i));
#endif
}

/* Moves the cursor over a field. Returns the field, or NULL unless it lies wholly inside the content. */
MUB_INLINE uint8_t *mub_inline_stream_field(const mub_stream *stream, int64_t *position, int64_t size) {
  const int64_t at = *position;
  *position = (int64_t)((uint64_t)at + (uint64_t)size);
  return at >= 0 && stream->length - at >= size ? stream->data + at : NULL;
}

MUB_INLINE uint8_t mub_inline_stream_get_byte(const mub_stream *stream, int64_t *position) {
  const uint8_t *field = mub_inline_stream_field(stream, position, 1);
  return (uint8_t)(field != NULL ? field[0] : 0);
}

MUB_INLINE uint16_t mub_inline_stream_get_word(const mub_stream *stream, int64_t *position) {
  const uint8_t *field = mub_inline_stream_field(stream, position, 2);
  return (uint16_t)(field != NULL ? mub_inline_load_2(field) : 0);
}

MUB_INLINE uint32_t mub_inline_stream_get_tword(const mub_stream *stream, int64_t *position) {
  const uint8_t *field = mub_inline_stream_field(stream, position, 3);
  return field != NULL ? mub_inline_load_2(field) | (uint32_t)field[2] << 16 : 0;
}

MUB_INLINE uint32_t mub_inline_stream_get_dword(const mub_stream *stream, int64_t *position) {
  const uint8_t *field = mub_inline_stream_field(stream, position, 4);
  return field != NULL ? mub_inline_load_4(field) : 0;
}

MUB_INLINE uint64_t mub_inline_stream_get_xword(const mub_stream *stream, int64_t *position) {
  const uint8_t *field = mub_inline_stream_field(stream, position, 6);
  return field != NULL ? mub_inline_load_4(field) | (uint64_t)mub_inline_load_2(field + 4) << 32 : 0;
}

MUB_INLINE int64_t mub_inline_stream_get_lword(const mub_stream *stream, int64_t *position) {
  const uint8_t *field = mub_inline_stream_field(stream, position, 8);
  return (int64_t)(field != NULL ? mub_inline_load_8(field) : 0);
}

MUB_INLINE void mub_inline_stream_set_byte(mub_stream *stream, int64_t *position, uint32_t value) {
  uint8_t *field = mub_inline_stream_field(stream, position, 1);
  if (field != NULL) field[0] = (uint8_t)value;
}

MUB_INLINE void mub_inline_stream_set_word(mub_stream *stream, int64_t *position, uint32_t value) {
  uint8_t *field = mub_inline_stream_field(stream, position, 2);
  if (field != NULL) mub_inline_store(field, value, 2);
}

MUB_INLINE void mub_inline_stream_set_tword(mub_stream *stream, int64_t *position, uint32_t value) {
  uint8_t *field = mub_inline_stream_field(stream, position, 3);
  if (field == NULL) return;
  mub_inline_store(field, value, 2);
  mub_inline_store(field + 2, value >> 16, 1);
}

MUB_INLINE void mub_inline_stream_set_dword(mub_stream *stream, int64_t *position, uint32_t value) {
  uint8_t *field = mub_inline_stream_field(stream, position, 4);
  if (field != NULL) mub_inline_store(field, value, 4);
}

MUB_INLINE void mub_inline_stream_set_xword(mub_stream *stream, int64_t *position, uint64_t value) {
  uint8_t *field = mub_inline_stream_field(stream, position, 6);
  if (field == NULL) return;
  mub_inline_store(field, value, 4);
  mub_inline_store(field + 4, value >> 32, 2);
}

MUB_INLINE void mub_inline_stream_set_lword(mub_stream *stream, int64_t *position, int64_t value) {
  uint8_t *field = mub_inline_stream_field(stream, position, 8);
  if (field != NULL) mub_inline_store(field, (uint64_t)value, 8);
}

/* Packed integers of one or two bytes. The first byte says how many follow. */
MUB_INLINE void mub_inline_stream_deflate_lword(mub_stream *stream, int64_t *position, uint64_t value) {
  const int64_t at = *position;
  if (at >= 0 && stream->length - at >= 2) {
    uint8_t *field = stream->data + at;
    if (value < 0x80) {
      field[0] = (uint8_t)value;
      *position = at + 1;
      return;
    }
    if (value < 0x4000) {
      field[0] = (uint8_t)(0x80 | value >> 8);
      field[1] = (uint8_t)value;
      *position = at + 2;
      return;
    }
  }
  mub_stream_deflate_lword(stream, position, value);
}

MUB_INLINE int64_t mub_inline_stream_inflate_lword(const mub_stream *stream, int64_t *position) {
  const int64_t at = *position;
  if (at >= 0 && stream->length - at >= 2) {
    const uint32_t head = stream->data[at];
    if (head < 0x80) {
      *position = at + 1;
      return head;
    }
    if (head < 0xC0) {
      *position = at + 2;
      return (head & 0x3F) << 8 | stream->data[at + 1];
    }
  }
  return mub_stream_inflate_lword(stream, position);
}

/* ---- pools */

/* The library poisons the blocks that are not in use. */
#if defined(__SANITIZE_ADDRESS__) || defined(MUB_VALGRIND)
#define MUB_INLINE_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MUB_INLINE_POISONS 1
#endif
#endif

#ifdef MUB_INLINE_POISONS

MUB_INLINE void *mub_inline_pool_new(mub_pool *pool) { return mub_pool_new(pool); }

MUB_INLINE void mub_inline_pool_free(mub_pool *pool, void *block) { mub_pool_free(pool, block); }

#else

/* Two counters next to each other would be loaded and stored as one vector: fresh blocks take 1.5 times as
   long then, as each call waits for the one before (pool_fresh in bench/pool_bench.cpp). */
#if defined(__GNUC__) && UINTPTR_MAX > UINT32_MAX
#define MUB_INLINE_SCALAR(number) __asm__("" : "+r"(number))
#else
#define MUB_INLINE_SCALAR(number) (void)0
#endif

MUB_INLINE void *mub_inline_pool_new(mub_pool *pool) {
  if (pool == NULL || pool->block_size == 0) return NULL;
  if (pool->free_count > 0) {
    void **page = (void **)pool->free_pages[pool->free_count - 1];
    if (pool->free_used > 0 && page[pool->free_used - 1] != NULL) {
      ++pool->live_count;
      return page[--pool->free_used];
    }
  } else if (pool->chunk_used >= 0 && pool->chunk_used < pool->blocks_per_chunk) {
    const int64_t used = pool->chunk_used;
    int64_t live_count = pool->live_count + 1;
    MUB_INLINE_SCALAR(live_count);
    pool->live_count = live_count;
    pool->chunk_used = used + 1;
    return (char *)pool->chunks[pool->chunk_count - 1] + used * pool->block_size;
  }
  return mub_pool_new(pool);
}

MUB_INLINE void mub_inline_pool_free(mub_pool *pool, void *block) {
  if (pool == NULL || block == NULL) return;
  if (pool->free_used < 0 || pool->free_used >= pool->blocks_per_chunk) {
    mub_pool_free(pool, block);
    return;
  }
  ((void **)pool->free_pages[pool->free_count - 1])[pool->free_used++] = block;
  --pool->live_count;
}

#endif
#undef MUB_INLINE_POISONS

/* ---- arrays */

/* The key of an entry of a list or an array, which reads as empty if it ends after `end`. */
MUB_INLINE void mub_inline_key(const mub_stream *keys, uint32_t offset, uint32_t key_length, int64_t end,
                               const char **key, int64_t *length) {
  const int is_stored = keys->data != NULL && (int64_t)offset + key_length <= end;
  *key = (const char *)(is_stored ? keys->data + offset : keys->data);
  *length = is_stored ? key_length : 0;
}

MUB_INLINE uint64_t mub_inline_array_get_at(const mub_array *array, int64_t index, const char **key,
                                            int64_t *length) {
  if (index < 0 || index >= array->capacity) {
    *key = NULL;
    *length = 0;
    return 0;
  }
  const mub_array_entry *entry = array->entries + index;
  const uint64_t value = entry->value;
  /* The byte after the capacity is readable, too. */
  mub_inline_key(&array->keys, entry->key_offset, entry->key_length, array->keys.capacity + 1, key, length);
  return value;
}

MUB_INLINE void mub_inline_arrayd_append(mub_arrayd *array, uint32_t key, uint64_t value) {
  if (array->count >= array->capacity) {
    mub_arrayd_append(array, key, value);
    return;
  }
  mub_arrayd_entry *entry = array->entries + array->count;
  entry->key = key;
  entry->value = value;
  ++array->count;
}

MUB_INLINE uint64_t mub_inline_arrayd_get_at(const mub_arrayd *array, int64_t index, uint32_t *key) {
  if (index < 0 || index >= array->capacity) {
    *key = 0;
    return 0;
  }
  const mub_arrayd_entry entry = array->entries[index];
  *key = entry.key;
  return entry.value;
}

MUB_INLINE void mub_inline_arrayx_append(mub_arrayx *array, uint64_t key, uint64_t value) {
  if (array->count >= array->capacity) {
    mub_arrayx_append(array, key, value);
    return;
  }
  mub_arrayx_entry *entry = array->entries + array->count;
  entry->key = key;
  entry->value = value;
  ++array->count;
}

MUB_INLINE uint64_t mub_inline_arrayx_get_at(const mub_arrayx *array, int64_t index, uint64_t *key) {
  if (index < 0 || index >= array->capacity) {
    *key = 0;
    return 0;
  }
  const mub_arrayx_entry entry = array->entries[index];
  *key = entry.key;
  return entry.value;
}

MUB_INLINE void mub_inline_arrays_append(mub_arrays *array, uint64_t item) {
  if (array->count >= array->capacity) {
    mub_arrays_append(array, item);
    return;
  }
  array->items[array->count] = item;
  ++array->count;
}

MUB_INLINE uint64_t mub_inline_arrays_get_at(const mub_arrays *array, int64_t index) {
  return index >= 0 && index < array->capacity ? array->items[index] : 0;
}

MUB_INLINE uint64_t mub_inline_arrays_set_at(mub_arrays *array, int64_t index, uint64_t item) {
  if (index < 0 || index >= array->capacity) return 0;
  const uint64_t old_item = array->items[index];
  array->items[index] = item;
  return old_item;
}

/* Above the words in the record, there may be a count without a tail. */
MUB_INLINE int mub_inline_arrayt_holds(const mub_arrayt *array, int64_t index) {
  return index >= 0 && index < array->count &&
         (index < 4 || (array->tail != NULL && index < array->capacity));
}

MUB_INLINE void mub_inline_arrayt_append(mub_arrayt *array, uint64_t item) {
  const int64_t count = array->count;
  if (count >= array->capacity) {
    mub_arrayt_append(array, item);
    return;
  }
  *(count < 4 ? array->inline_items + count : array->tail + (count - 4)) = item;
  array->count = count + 1;
}

MUB_INLINE uint64_t mub_inline_arrayt_get_at(const mub_arrayt *array, int64_t index) {
  if (!mub_inline_arrayt_holds(array, index)) return 0;
  return index < 4 ? array->inline_items[index] : array->tail[index - 4];
}

MUB_INLINE void mub_inline_arrayt_set_at(mub_arrayt *array, int64_t index, uint64_t item) {
  if (!mub_inline_arrayt_holds(array, index)) return;
  *(index < 4 ? array->inline_items + index : array->tail + (index - 4)) = item;
}

/* ---- lists */

MUB_INLINE uint64_t mub_inline_list_get_at(const mub_list *list, const mub_list_entry *position,
                                           const char **key, int64_t *length) {
  if (position == NULL) {
    *key = NULL;
    *length = 0;
    return 0;
  }
  const uint64_t value = position->value;
  mub_inline_key(&list->keys, position->key_offset, position->key_length, list->keys.capacity, key, length);
  return value;
}

MUB_INLINE uint64_t mub_inline_list_get_head(const mub_list *list, const char **key, int64_t *length) {
  return mub_inline_list_get_at(list, list->head, key, length);
}

MUB_INLINE uint64_t mub_inline_list_get_tail(const mub_list *list, const char **key, int64_t *length) {
  return mub_inline_list_get_at(list, list->tail, key, length);
}

MUB_INLINE uint64_t mub_inline_list_get_next(const mub_list *list, mub_list_entry **position,
                                             const char **key, int64_t *length) {
  const mub_list_entry *entry = *position;
  if (entry != NULL) *position = entry->next;
  return mub_inline_list_get_at(list, entry, key, length);
}

MUB_INLINE uint64_t mub_inline_list_get_prev(const mub_list *list, mub_list_entry **position,
                                             const char **key, int64_t *length) {
  const mub_list_entry *entry = *position;
  if (entry != NULL) *position = entry->prev;
  return mub_inline_list_get_at(list, entry, key, length);
}

MUB_INLINE uint64_t mub_inline_lists_get_at(const mub_lists *list, const mub_lists_entry *position) {
  (void)list;
  return position != NULL ? position->value : 0;
}

MUB_INLINE uint64_t mub_inline_lists_get_head(const mub_lists *list) {
  return mub_inline_lists_get_at(list, list->head);
}

MUB_INLINE uint64_t mub_inline_lists_get_tail(const mub_lists *list) {
  return mub_inline_lists_get_at(list, list->tail);
}

MUB_INLINE uint64_t mub_inline_lists_get_next(const mub_lists *list, mub_lists_entry **position) {
  const mub_lists_entry *entry = *position;
  if (entry != NULL) *position = entry->next;
  return mub_inline_lists_get_at(list, entry);
}

MUB_INLINE uint64_t mub_inline_lists_get_prev(const mub_lists *list, mub_lists_entry **position) {
  const mub_lists_entry *entry = *position;
  if (entry != NULL) *position = entry->prev;
  return mub_inline_lists_get_at(list, entry);
}

/* ---- hash tables */

MUB_INLINE uint64_t mub_inline_hashd_get(const mub_hashd *table, uint32_t key) {
  if (table->buckets.count < 1) return 0;
  const uint64_t bucket = key & (uint64_t)(table->buckets.count - 1);
  const mub_hashd_entry *entry = (const mub_hashd_entry *)(uintptr_t)table->buckets.items[bucket];
  while (entry != NULL && entry->key != key) entry = entry->next;
  return entry != NULL ? entry->value : 0;
}

MUB_INLINE uint64_t mub_inline_hashx_get(const mub_hashx *table, uint64_t key) {
  if (table->buckets.count < 1) return 0;
  const uint64_t bucket = key & (uint64_t)(table->buckets.count - 1);
  const mub_hashx_entry *entry = (const mub_hashx_entry *)(uintptr_t)table->buckets.items[bucket];
  while (entry != NULL && entry->key != key) entry = entry->next;
  return entry != NULL ? entry->value : 0;
}

#if defined(__cplusplus) && defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
#undef MUB_INLINE
#undef MUB_INLINE_SCALAR

/* ---- the names, without parentheses around them */

#define mub_bits_get(...) mub_inline_bits_get(__VA_ARGS__)
#define mub_bits_set(...) mub_inline_bits_set(__VA_ARGS__)
#define mub_bits_insert(...) mub_inline_bits_insert(__VA_ARGS__)
#define mub_bits_find(...) mub_inline_bits_find(__VA_ARGS__)
#define mub_string_append_char(...) mub_inline_string_append_char(__VA_ARGS__)
#define mub_string_get_at(...) mub_inline_string_get_at(__VA_ARGS__)
#define mub_string_set_at(...) mub_inline_string_set_at(__VA_ARGS__)
#define mub_stringx_get_at(...) mub_inline_stringx_get_at(__VA_ARGS__)
#define mub_wchar_append_char(...) mub_inline_wchar_append_char(__VA_ARGS__)
#define mub_wchar_get_at(...) mub_inline_wchar_get_at(__VA_ARGS__)
#define mub_wchar_set_at(...) mub_inline_wchar_set_at(__VA_ARGS__)
#define mub_stream_append(...) mub_inline_stream_append(__VA_ARGS__)
#define mub_stream_get_at(...) mub_inline_stream_get_at(__VA_ARGS__)
#define mub_stream_set_at(...) mub_inline_stream_set_at(__VA_ARGS__)
#define mub_stream_get_byte(...) mub_inline_stream_get_byte(__VA_ARGS__)
#define mub_stream_get_word(...) mub_inline_stream_get_word(__VA_ARGS__)
#define mub_stream_get_tword(...) mub_inline_stream_get_tword(__VA_ARGS__)
#define mub_stream_get_dword(...) mub_inline_stream_get_dword(__VA_ARGS__)
#define mub_stream_get_xword(...) mub_inline_stream_get_xword(__VA_ARGS__)
#define mub_stream_get_lword(...) mub_inline_stream_get_lword(__VA_ARGS__)
#define mub_stream_set_byte(...) mub_inline_stream_set_byte(__VA_ARGS__)
#define mub_stream_set_word(...) mub_inline_stream_set_word(__VA_ARGS__)
#define mub_stream_set_tword(...) mub_inline_stream_set_tword(__VA_ARGS__)
#define mub_stream_set_dword(...) mub_inline_stream_set_dword(__VA_ARGS__)
#define mub_stream_set_xword(...) mub_inline_stream_set_xword(__VA_ARGS__)
#define mub_stream_set_lword(...) mub_inline_stream_set_lword(__VA_ARGS__)
#define mub_stream_deflate_lword(...) mub_inline_stream_deflate_lword(__VA_ARGS__)
#define mub_stream_inflate_lword(...) mub_inline_stream_inflate_lword(__VA_ARGS__)
#define mub_pool_new(...) mub_inline_pool_new(__VA_ARGS__)
#define mub_pool_free(...) mub_inline_pool_free(__VA_ARGS__)
#define mub_array_get_at(...) mub_inline_array_get_at(__VA_ARGS__)
#define mub_arrayd_append(...) mub_inline_arrayd_append(__VA_ARGS__)
#define mub_arrayd_get_at(...) mub_inline_arrayd_get_at(__VA_ARGS__)
#define mub_arrayx_append(...) mub_inline_arrayx_append(__VA_ARGS__)
#define mub_arrayx_get_at(...) mub_inline_arrayx_get_at(__VA_ARGS__)
#define mub_arrays_append(...) mub_inline_arrays_append(__VA_ARGS__)
#define mub_arrays_get_at(...) mub_inline_arrays_get_at(__VA_ARGS__)
#define mub_arrays_set_at(...) mub_inline_arrays_set_at(__VA_ARGS__)
#define mub_arrayt_append(...) mub_inline_arrayt_append(__VA_ARGS__)
#define mub_arrayt_get_at(...) mub_inline_arrayt_get_at(__VA_ARGS__)
#define mub_arrayt_set_at(...) mub_inline_arrayt_set_at(__VA_ARGS__)
#define mub_list_get_at(...) mub_inline_list_get_at(__VA_ARGS__)
#define mub_list_get_head(...) mub_inline_list_get_head(__VA_ARGS__)
#define mub_list_get_tail(...) mub_inline_list_get_tail(__VA_ARGS__)
#define mub_list_get_next(...) mub_inline_list_get_next(__VA_ARGS__)
#define mub_list_get_prev(...) mub_inline_list_get_prev(__VA_ARGS__)
#define mub_lists_get_at(...) mub_inline_lists_get_at(__VA_ARGS__)
#define mub_lists_get_head(...) mub_inline_lists_get_head(__VA_ARGS__)
#define mub_lists_get_tail(...) mub_inline_lists_get_tail(__VA_ARGS__)
#define mub_lists_get_next(...) mub_inline_lists_get_next(__VA_ARGS__)
#define mub_lists_get_prev(...) mub_inline_lists_get_prev(__VA_ARGS__)
#define mub_hashd_get(...) mub_inline_hashd_get(__VA_ARGS__)
#define mub_hashx_get(...) mub_inline_hashx_get(__VA_ARGS__)

/** @endcond */

/** @} */

#endif
