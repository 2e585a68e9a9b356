/* Memory errors that checkers report because the library poisons memory that nobody may use. poison_test.py
   runs `poison_faults NAME` for each: the line that ends in the comment NAME has the error. */
#include <stdio.h>
#include <string.h>

#include "mub.h"
#include "mub_inline.h"

static volatile char byte_read;

static void pool_begin(mub_pool *pool) {
  mub_pool_init(pool);
  pool->block_size = 24;
}

static void write_after_value(void) {
  mub_hash table;
  mub_hash_init(&table, 1, 1);
  table.value_pool->block_size = 24;
  uint64_t value = 0;
  mub_hash_set(&table, "key", 3, &value, NULL);
  volatile char *bytes = (volatile char *)(uintptr_t)value;
  for (int i = 0; i < 24; i++) bytes[i] = 1;
  bytes[24] = 1; /* write_after_value */
  mub_hash_term(&table);
}

static void use_of_removed_entry(void) {
  mub_hashx table;
  mub_hashx_init(&table, 1, 0);
  int inserted;
  volatile mub_hashx_entry *entry = mub_hashx_insert_t(&table, 7, &inserted);
  entry->value = 1;
  mub_hashx_remove(&table, 7);
  entry->value = 2; /* use_of_removed_entry */
  mub_hashx_term(&table);
}

static void use_of_removed_link(void) {
  mub_list list;
  mub_list_init(&list, 1, 0);
  volatile mub_list_entry *entry = mub_list_add_tail(&list, "key", 3, 1);
  mub_list_remove_head(&list);
  byte_read = (char)entry->value; /* use_of_removed_link */
  mub_list_term(&list);
}

static void second_free(void) {
  mub_pool pool;
  pool_begin(&pool);
  void *block = mub_pool_new(&pool);
  mub_pool_free(&pool, block);
  mub_pool_free(&pool, block); /* second_free */
  mub_pool_term(&pool);
}

static void free_of_untaken_block(void) {
  mub_pool pool;
  pool_begin(&pool);
  char *block = mub_pool_new(&pool);
  mub_pool_free(&pool, block + 24); /* free_of_untaken_block */
  mub_pool_term(&pool);
}

static void read_after_keys_of_hash_table(void) {
  mub_hash table;
  mub_hash_init(&table, 1, 0);
  mub_hash_insert(&table, "one", 3, 1);
  byte_read = (char)((volatile uint8_t *)table.keys.data)[2];
  byte_read = (char)((volatile uint8_t *)table.keys.data)[3]; /* read_after_keys_of_hash_table */
  mub_hash_term(&table);
}

static void read_of_removed_key(void) {
  mub_btree tree;
  mub_btree_init(&tree, 1, 1, 0);
  mub_btree_insert(&tree, "one", 3, 1);
  mub_btree_insert(&tree, "two", 3, 2);
  mub_btree_remove(&tree, "one", 3);
  volatile uint8_t *bytes = tree.keys.data;
  byte_read = (char)bytes[2];
  byte_read = (char)bytes[tree.keys.length]; /* read_of_removed_key */
  mub_btree_term(&tree);
}

static void read_after_keys_of_clone(void) {
  mub_list list, copy;
  mub_list_init(&list, 1, 0);
  mub_list_init(&copy, 1, 0);
  mub_list_add_tail(&list, "a longer key", -1, 1);
  mub_list_clone(&list, NULL, &copy, NULL, NULL);
  volatile uint8_t *bytes = copy.keys.data;
  byte_read = (char)bytes[copy.keys.length - 1];
  byte_read = (char)bytes[copy.keys.capacity]; /* read_after_keys_of_clone */
  mub_list_term(&list);
  mub_list_term(&copy);
}

/* Makes a clone of a pool with one free block, one live block and others that were never taken. */
static char *clone_blocks(mub_pool *copy) {
  mub_pool pool;
  pool_begin(&pool);
  void *block = mub_pool_new(&pool);
  memset(mub_pool_new(&pool), 1, 24);
  mub_pool_free(&pool, block);
  mub_pool_init(copy);
  mub_pool_chunk *map = mub_pool_map(&pool);
  mub_pool_clone(&pool, map, copy);
  mub_pool_umap(map);
  mub_pool_term(&pool);
  return copy->chunks[0];
}

static void use_of_free_block_of_clone(void) {
  mub_pool copy;
  volatile char *blocks = clone_blocks(&copy);
  byte_read = blocks[24];
  byte_read = blocks[0]; /* use_of_free_block_of_clone */
  mub_pool_term(&copy);
}

static void use_of_untaken_block_of_clone(void) {
  mub_pool copy;
  volatile char *blocks = clone_blocks(&copy);
  byte_read = blocks[2 * 24]; /* use_of_untaken_block_of_clone */
  mub_pool_term(&copy);
}

/* The key stream of a container is used like any other. */
static void use_keys(void) {
  mub_hash table;
  mub_hash_init(&table, 1, 0);
  mub_hash_insert(&table, "key", 3, 1);
  mub_stream_expand(&table.keys, 1000);
  for (int i = 0; i < 1000; i++) mub_hash_insert(&table, &i, sizeof i, 1);
  mub_stream bytes;
  mub_stream_init(&bytes);
  mub_stream_swap(&bytes, &table.keys);
  for (int64_t i = bytes.length; i < bytes.capacity; i++) mub_stream_append(&bytes, "", 1);
  mub_stream_term(&bytes);
  mub_hash_term(&table);
}

/* Nothing here is an error. */
static void none(void) {
  use_keys();
  mub_pool pool;
  pool_begin(&pool);
  for (int i = 0; i < 40; i++) memset(mub_pool_new(&pool), 1, 24);
  void *block = mub_pool_new(&pool);
  memset(block, 1, 24);
  mub_pool_free(&pool, block);
  memset(mub_pool_new(&pool), 1, 24);
  mub_pool_free(&pool, block);
  memset(mub_pool_from_empty(&pool), 1, 24);
#ifndef MUB_VALGRIND     /* which cannot tell that this is no block */
  char outside[24 * 16]; /* as large as a chunk */
  mub_pool_free(&pool, outside);
  memset(outside, 1, sizeof outside);
#endif
  mub_pool copy; /* without a map, it cannot know which blocks are free */
  mub_pool_init(&copy);
  mub_pool_free(&pool, block);
  mub_pool_clone(&pool, NULL, &copy);
  memset(copy.chunks[0], 1, 24 * 16);
  mub_pool_term(&copy);
  mub_pool_term(&pool);
}

#define FAULT(name) \
  { #name, name }
static const struct {
  const char *name;
  void (*commit)(void);
} faults[] = {
    FAULT(write_after_value),
    FAULT(use_of_removed_entry),
    FAULT(use_of_removed_link),
    FAULT(second_free),
    FAULT(free_of_untaken_block),
    FAULT(use_of_free_block_of_clone),
    FAULT(use_of_untaken_block_of_clone),
    FAULT(read_after_keys_of_hash_table),
    FAULT(read_of_removed_key),
    FAULT(read_after_keys_of_clone),
    FAULT(none),
};

int main(int argc, char **argv) {
  for (size_t i = 0; i < sizeof faults / sizeof *faults; i++) {
    if (argc > 1 && strcmp(argv[1], faults[i].name) == 0) {
      faults[i].commit();
      return 0;
    }
  }
  return 2;
}
