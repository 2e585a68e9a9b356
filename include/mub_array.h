/* mub_array.h: growable arrays of entries, in insertion order or kept sorted. */
#ifndef MUB_ARRAY_H
#define MUB_ARRAY_H

#include "mub_base.h"
#include "mub_pool.h"
#include "mub_stream.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One slot of a mub_array. */
typedef struct mub_array_entry {
  uint32_t key_offset; /* position of the key's first byte in the array's key stream */
  uint32_t key_length; /* bytes in the key */
  uint64_t value;      /* the caller's word or a pool block; 0: none */
} mub_array_entry;

/* Entries with byte-string keys. */
typedef struct mub_array {
  mub_array_entry *entries; /* the table; NULL until the first growth */
  int64_t count;            /* entries in use */
  int64_t capacity;         /* slots in the table */
  mub_stream keys;          /* the bytes of all keys */
  mub_pool *pool;           /* where `_new` operations take their values; may be the caller's, may be NULL */
  uint16_t own_pool;        /* 1: `pool` was made by mub_array_init and goes with the array */
  uint16_t descending;      /* not 0: the sorted operations keep keys in descending order; set by the caller */
} mub_array;

/* Bare 64-bit items. */
typedef struct mub_arrays {
  uint64_t *items;     /* the table; NULL until the first growth */
  int64_t count;       /* items in use */
  int64_t capacity;    /* slots in the table */
  mub_pool *pool;      /* where `_new` operations take their items; may be the caller's, may be NULL */
  uint16_t own_pool;   /* 1: `pool` was made by mub_arrays_init and goes with the array */
  uint16_t descending; /* not 0: the sorted operations keep items in descending order; set by the caller */
} mub_arrays;

#ifdef __cplusplus
}
#endif

#endif
