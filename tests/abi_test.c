/* The library as a C program meets it: the layout of the records that callers allocate themselves, and calls
 * into the shared library. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "mub.h"

#define SIZE_IS(record, bytes) _Static_assert(sizeof(record) == (bytes), "size of " #record)
#define FIELD_AT(record, offset, type, field)                                           \
  _Static_assert(offsetof(record, field) == (offset), "offset of " #record "." #field); \
  _Static_assert(_Generic(&((record *)0)->field, type * : 1, default : 0), "type of " #record "." #field)

FIELD_AT(mub_char, 0, char *, data);
FIELD_AT(mub_char, 8, int64_t, length);
SIZE_IS(mub_char, 16);

FIELD_AT(mub_stream, 0, uint8_t *, data);
FIELD_AT(mub_stream, 8, int64_t, length);
FIELD_AT(mub_stream, 16, int64_t, capacity);
SIZE_IS(mub_stream, 24);

FIELD_AT(mub_string, 0, char *, data);
FIELD_AT(mub_string, 8, int64_t, length);
FIELD_AT(mub_string, 16, int64_t, capacity);
SIZE_IS(mub_string, 24);

FIELD_AT(mub_stringx, 0, const char *, text);
FIELD_AT(mub_stringx, 8, int64_t, start);
FIELD_AT(mub_stringx, 16, int64_t, length);
SIZE_IS(mub_stringx, 24);

FIELD_AT(mub_wchar, 0, uint16_t *, data);
FIELD_AT(mub_wchar, 8, int64_t, length);
FIELD_AT(mub_wchar, 16, int64_t, capacity);
SIZE_IS(mub_wchar, 24);

FIELD_AT(mub_pool, 0, int64_t, block_size);
FIELD_AT(mub_pool, 8, int64_t, blocks_per_chunk);
FIELD_AT(mub_pool, 16, int64_t, live_count);
FIELD_AT(mub_pool, 24, int64_t, chunk_used);
FIELD_AT(mub_pool, 32, int64_t, chunk_count);
FIELD_AT(mub_pool, 40, int64_t, chunk_capacity);
FIELD_AT(mub_pool, 48, void **, chunks);
FIELD_AT(mub_pool, 56, int64_t, free_used);
FIELD_AT(mub_pool, 64, int64_t, free_count);
FIELD_AT(mub_pool, 72, int64_t, free_capacity);
FIELD_AT(mub_pool, 80, void **, free_pages);
SIZE_IS(mub_pool, 88);

FIELD_AT(mub_pool_chunk, 0, int64_t, index);
FIELD_AT(mub_pool_chunk, 8, uint64_t, base);
SIZE_IS(mub_pool_chunk, 16);

FIELD_AT(mub_pool_iter, 0, int64_t, chunk);
FIELD_AT(mub_pool_iter, 8, int64_t, slot);
FIELD_AT(mub_pool_iter, 16, void **, free_blocks);
FIELD_AT(mub_pool_iter, 24, mub_pool *, pool);
SIZE_IS(mub_pool_iter, 32);

FIELD_AT(mub_array_entry, 0, uint32_t, key_offset);
FIELD_AT(mub_array_entry, 4, uint32_t, key_length);
FIELD_AT(mub_array_entry, 8, uint64_t, value);
SIZE_IS(mub_array_entry, 16);

FIELD_AT(mub_array, 0, mub_array_entry *, entries);
FIELD_AT(mub_array, 8, int64_t, count);
FIELD_AT(mub_array, 16, int64_t, capacity);
FIELD_AT(mub_array, 24, mub_stream, keys);
FIELD_AT(mub_array, 48, mub_pool *, pool);
FIELD_AT(mub_array, 56, uint16_t, own_pool);
FIELD_AT(mub_array, 58, uint16_t, descending);
SIZE_IS(mub_array, 64);

FIELD_AT(mub_arrayd_entry, 0, uint32_t, key);
FIELD_AT(mub_arrayd_entry, 8, uint64_t, value);
SIZE_IS(mub_arrayd_entry, 16);

FIELD_AT(mub_arrayd, 0, mub_arrayd_entry *, entries);
FIELD_AT(mub_arrayd, 8, int64_t, count);
FIELD_AT(mub_arrayd, 16, int64_t, capacity);
FIELD_AT(mub_arrayd, 24, mub_pool *, pool);
FIELD_AT(mub_arrayd, 32, uint16_t, own_pool);
FIELD_AT(mub_arrayd, 34, uint16_t, descending);
SIZE_IS(mub_arrayd, 40);

FIELD_AT(mub_arrayx_entry, 0, uint64_t, key);
FIELD_AT(mub_arrayx_entry, 8, uint64_t, value);
SIZE_IS(mub_arrayx_entry, 16);

FIELD_AT(mub_arrayx, 0, mub_arrayx_entry *, entries);
FIELD_AT(mub_arrayx, 8, int64_t, count);
FIELD_AT(mub_arrayx, 16, int64_t, capacity);
FIELD_AT(mub_arrayx, 24, mub_pool *, pool);
FIELD_AT(mub_arrayx, 32, uint16_t, own_pool);
FIELD_AT(mub_arrayx, 34, uint16_t, descending);
SIZE_IS(mub_arrayx, 40);

FIELD_AT(mub_arrays, 0, uint64_t *, items);
FIELD_AT(mub_arrays, 8, int64_t, count);
FIELD_AT(mub_arrays, 16, int64_t, capacity);
FIELD_AT(mub_arrays, 24, mub_pool *, pool);
FIELD_AT(mub_arrays, 32, uint16_t, own_pool);
FIELD_AT(mub_arrays, 34, uint16_t, descending);
SIZE_IS(mub_arrays, 40);

_Static_assert(sizeof(((mub_arrayt *)0)->inline_items) == 32, "four words in the record");
FIELD_AT(mub_arrayt, 0, uint64_t, inline_items[0]);
FIELD_AT(mub_arrayt, 32, uint64_t *, tail);
FIELD_AT(mub_arrayt, 40, int64_t, count);
FIELD_AT(mub_arrayt, 48, int64_t, capacity);
FIELD_AT(mub_arrayt, 56, uint16_t, descending);
SIZE_IS(mub_arrayt, 64);

FIELD_AT(mub_hash_entry, 0, mub_hash_entry *, next);
FIELD_AT(mub_hash_entry, 8, uint32_t, hash);
FIELD_AT(mub_hash_entry, 12, uint32_t, key_offset);
FIELD_AT(mub_hash_entry, 16, uint32_t, key_length);
FIELD_AT(mub_hash_entry, 24, uint64_t, value);
SIZE_IS(mub_hash_entry, 32);

FIELD_AT(mub_hash, 0, mub_arrays, buckets);
FIELD_AT(mub_hash, 40, int64_t, count);
FIELD_AT(mub_hash, 48, mub_stream, keys);
FIELD_AT(mub_hash, 72, mub_pool *, entry_pool);
FIELD_AT(mub_hash, 80, uint16_t, owns_entry_pool);
FIELD_AT(mub_hash, 88, mub_pool *, value_pool);
FIELD_AT(mub_hash, 96, uint16_t, owns_value_pool);
FIELD_AT(mub_hash, 98, int16_t, nocase);
SIZE_IS(mub_hash, 104);

FIELD_AT(mub_hashd_entry, 0, mub_hashd_entry *, next);
FIELD_AT(mub_hashd_entry, 8, uint32_t, key);
FIELD_AT(mub_hashd_entry, 16, uint64_t, value);
SIZE_IS(mub_hashd_entry, 24);

FIELD_AT(mub_hashd, 0, mub_arrays, buckets);
FIELD_AT(mub_hashd, 40, int64_t, count);
FIELD_AT(mub_hashd, 48, mub_pool *, entry_pool);
FIELD_AT(mub_hashd, 56, uint16_t, owns_entry_pool);
FIELD_AT(mub_hashd, 64, mub_pool *, value_pool);
FIELD_AT(mub_hashd, 72, uint16_t, owns_value_pool);
SIZE_IS(mub_hashd, 80);

FIELD_AT(mub_hashx_entry, 0, mub_hashx_entry *, next);
FIELD_AT(mub_hashx_entry, 8, uint64_t, key);
FIELD_AT(mub_hashx_entry, 16, uint64_t, value);
SIZE_IS(mub_hashx_entry, 24);

FIELD_AT(mub_hashx, 0, mub_arrays, buckets);
FIELD_AT(mub_hashx, 40, int64_t, count);
FIELD_AT(mub_hashx, 48, mub_pool *, entry_pool);
FIELD_AT(mub_hashx, 56, uint16_t, owns_entry_pool);
FIELD_AT(mub_hashx, 64, mub_pool *, value_pool);
FIELD_AT(mub_hashx, 72, uint16_t, owns_value_pool);
SIZE_IS(mub_hashx, 80);

FIELD_AT(mub_hasht_entry, 0, mub_hasht_entry *, next);
_Static_assert(offsetof(mub_hasht_entry, key) == 8 && sizeof(((mub_hasht_entry *)0)->key) == 16,
               "four words");
FIELD_AT(mub_hasht_entry, 24, uint64_t, value);
SIZE_IS(mub_hasht_entry, 32);

FIELD_AT(mub_hasht, 0, mub_arrays, buckets);
FIELD_AT(mub_hasht, 40, int64_t, count);
FIELD_AT(mub_hasht, 48, mub_pool *, entry_pool);
FIELD_AT(mub_hasht, 56, uint16_t, owns_entry_pool);
FIELD_AT(mub_hasht, 64, mub_pool *, value_pool);
FIELD_AT(mub_hasht, 72, uint16_t, owns_value_pool);
SIZE_IS(mub_hasht, 80);

FIELD_AT(mub_list_entry, 0, mub_list_entry *, prev);
FIELD_AT(mub_list_entry, 8, mub_list_entry *, next);
FIELD_AT(mub_list_entry, 16, uint32_t, key_offset);
FIELD_AT(mub_list_entry, 20, uint32_t, key_length);
FIELD_AT(mub_list_entry, 24, uint64_t, value);
SIZE_IS(mub_list_entry, 32);

FIELD_AT(mub_list, 0, mub_list_entry *, head);
FIELD_AT(mub_list, 8, mub_list_entry *, tail);
FIELD_AT(mub_list, 16, int64_t, count);
FIELD_AT(mub_list, 24, mub_stream, keys);
FIELD_AT(mub_list, 48, mub_pool *, entry_pool);
FIELD_AT(mub_list, 56, uint16_t, owns_entry_pool);
FIELD_AT(mub_list, 64, mub_pool *, value_pool);
FIELD_AT(mub_list, 72, uint16_t, owns_value_pool);
SIZE_IS(mub_list, 80);

FIELD_AT(mub_lists_entry, 0, mub_lists_entry *, prev);
FIELD_AT(mub_lists_entry, 8, mub_lists_entry *, next);
FIELD_AT(mub_lists_entry, 16, uint64_t, value);
SIZE_IS(mub_lists_entry, 24);

FIELD_AT(mub_lists, 0, mub_lists_entry *, head);
FIELD_AT(mub_lists, 8, mub_lists_entry *, tail);
FIELD_AT(mub_lists, 16, int64_t, count);
FIELD_AT(mub_lists, 24, mub_pool *, entry_pool);
FIELD_AT(mub_lists, 32, uint16_t, owns_entry_pool);
FIELD_AT(mub_lists, 40, mub_pool *, value_pool);
FIELD_AT(mub_lists, 48, uint16_t, owns_value_pool);
SIZE_IS(mub_lists, 56);

FIELD_AT(mub_listx_block, 0, mub_listx_block *, prev);
FIELD_AT(mub_listx_block, 8, mub_listx_block *, next);
FIELD_AT(mub_listx_block, 16, int64_t, count);
FIELD_AT(mub_listx_block, 24, uint64_t, values[0]);
SIZE_IS(mub_listx_block, 280);

FIELD_AT(mub_listx, 0, mub_listx_block *, head);
FIELD_AT(mub_listx, 8, mub_listx_block *, tail);
FIELD_AT(mub_listx, 16, int64_t, count);
FIELD_AT(mub_listx, 24, mub_pool *, entry_pool);
FIELD_AT(mub_listx, 32, uint16_t, owns_entry_pool);
FIELD_AT(mub_listx, 40, mub_pool *, value_pool);
FIELD_AT(mub_listx, 48, uint16_t, owns_value_pool);
SIZE_IS(mub_listx, 56);

FIELD_AT(mub_tree_entry, 0, mub_tree_entry *, parent);
FIELD_AT(mub_tree_entry, 8, mub_tree_entry *, first_child);
FIELD_AT(mub_tree_entry, 16, mub_tree_entry *, prev);
FIELD_AT(mub_tree_entry, 24, mub_tree_entry *, next);
FIELD_AT(mub_tree_entry, 32, uint64_t, value);
SIZE_IS(mub_tree_entry, 40);

FIELD_AT(mub_tree, 0, mub_tree_entry, root);
FIELD_AT(mub_tree, 40, int64_t, count);
FIELD_AT(mub_tree, 48, mub_pool *, entry_pool);
FIELD_AT(mub_tree, 56, uint16_t, owns_entry_pool);
FIELD_AT(mub_tree, 64, mub_pool *, value_pool);
FIELD_AT(mub_tree, 72, uint16_t, owns_value_pool);
SIZE_IS(mub_tree, 80);

FIELD_AT(mub_bitree_entry, 0, mub_bitree_entry *, parent);
FIELD_AT(mub_bitree_entry, 8, mub_bitree_entry *, equal);
FIELD_AT(mub_bitree_entry, 16, mub_bitree_entry *, left);
FIELD_AT(mub_bitree_entry, 24, mub_bitree_entry *, right);
FIELD_AT(mub_bitree_entry, 32, uint64_t, value);
SIZE_IS(mub_bitree_entry, 40);

FIELD_AT(mub_bitree, 0, mub_bitree_entry, root);
FIELD_AT(mub_bitree, 40, int64_t, count);
FIELD_AT(mub_bitree, 48, mub_pool *, entry_pool);
FIELD_AT(mub_bitree, 56, uint16_t, owns_entry_pool);
FIELD_AT(mub_bitree, 64, mub_pool *, value_pool);
FIELD_AT(mub_bitree, 72, uint16_t, owns_value_pool);
SIZE_IS(mub_bitree, 80);

FIELD_AT(mub_btree_node, 0, uint32_t, key_offset);
FIELD_AT(mub_btree_node, 4, uint32_t, key_length);
FIELD_AT(mub_btree_node, 8, mub_btree_node *, prev);
FIELD_AT(mub_btree_node, 16, mub_btree_node *, next);
FIELD_AT(mub_btree_node, 24, uint64_t, value);
SIZE_IS(mub_btree_node, 32);

FIELD_AT(mub_btree_entry, 0, uint32_t, key_offset);
FIELD_AT(mub_btree_entry, 4, uint32_t, key_length);
FIELD_AT(mub_btree_entry, 8, int16_t, level);
FIELD_AT(mub_btree_entry, 16, mub_btree_entry *, parent);
FIELD_AT(mub_btree_entry, 24, mub_arrays, children);
SIZE_IS(mub_btree_entry, 64);

FIELD_AT(mub_btree, 0, mub_btree_entry, root);
FIELD_AT(mub_btree, 64, int64_t, count);
FIELD_AT(mub_btree, 72, mub_stream, keys);
FIELD_AT(mub_btree, 96, mub_pool *, entry_pool);
FIELD_AT(mub_btree, 104, uint16_t, owns_entry_pool);
FIELD_AT(mub_btree, 112, mub_pool *, node_pool);
FIELD_AT(mub_btree, 120, uint16_t, owns_node_pool);
FIELD_AT(mub_btree, 128, mub_pool *, value_pool);
FIELD_AT(mub_btree, 136, uint16_t, owns_value_pool);
FIELD_AT(mub_btree, 138, uint16_t, nocase);
SIZE_IS(mub_btree, 144);

FIELD_AT(mub_btreed_node, 0, uint32_t, key);
FIELD_AT(mub_btreed_node, 8, mub_btreed_node *, prev);
FIELD_AT(mub_btreed_node, 16, mub_btreed_node *, next);
FIELD_AT(mub_btreed_node, 24, uint64_t, value);
SIZE_IS(mub_btreed_node, 32);

FIELD_AT(mub_btreed_entry, 0, uint32_t, key);
FIELD_AT(mub_btreed_entry, 4, int16_t, level);
FIELD_AT(mub_btreed_entry, 8, mub_btreed_entry *, parent);
FIELD_AT(mub_btreed_entry, 16, mub_arrays, children);
SIZE_IS(mub_btreed_entry, 56);

FIELD_AT(mub_btreed, 0, mub_btreed_entry, root);
FIELD_AT(mub_btreed, 56, int64_t, count);
FIELD_AT(mub_btreed, 64, mub_pool *, entry_pool);
FIELD_AT(mub_btreed, 72, uint16_t, owns_entry_pool);
FIELD_AT(mub_btreed, 80, mub_pool *, node_pool);
FIELD_AT(mub_btreed, 88, uint16_t, owns_node_pool);
FIELD_AT(mub_btreed, 96, mub_pool *, value_pool);
FIELD_AT(mub_btreed, 104, uint16_t, owns_value_pool);
FIELD_AT(mub_btreed, 108, uint32_t, key_type);
SIZE_IS(mub_btreed, 112);

FIELD_AT(mub_btreex_node, 0, uint64_t, key);
FIELD_AT(mub_btreex_node, 8, mub_btreex_node *, prev);
FIELD_AT(mub_btreex_node, 16, mub_btreex_node *, next);
FIELD_AT(mub_btreex_node, 24, uint64_t, value);
SIZE_IS(mub_btreex_node, 32);

FIELD_AT(mub_btreex_entry, 0, uint64_t, key);
FIELD_AT(mub_btreex_entry, 8, int16_t, level);
FIELD_AT(mub_btreex_entry, 16, mub_btreex_entry *, parent);
FIELD_AT(mub_btreex_entry, 24, mub_arrays, children);
SIZE_IS(mub_btreex_entry, 64);

FIELD_AT(mub_btreex, 0, mub_btreex_entry, root);
FIELD_AT(mub_btreex, 64, int64_t, count);
FIELD_AT(mub_btreex, 72, mub_pool *, entry_pool);
FIELD_AT(mub_btreex, 80, uint16_t, owns_entry_pool);
FIELD_AT(mub_btreex, 88, mub_pool *, node_pool);
FIELD_AT(mub_btreex, 96, uint16_t, owns_node_pool);
FIELD_AT(mub_btreex, 104, mub_pool *, value_pool);
FIELD_AT(mub_btreex, 112, uint16_t, owns_value_pool);
FIELD_AT(mub_btreex, 116, uint32_t, key_type);
SIZE_IS(mub_btreex, 120);

FIELD_AT(mub_bits, 0, uint8_t *, data);
FIELD_AT(mub_bits, 8, uint32_t, size);
SIZE_IS(mub_bits, 16);

static int failures = 0;

static void expect(int holds, const char *claim) {
  if (holds) return;
  fprintf(stderr, "does not hold: %s\n", claim);
  ++failures;
}

static int64_t blocks_made = 0;

static void count_block(uint64_t value) { blocks_made += value != 0; }

/* Records are written by the library and read by this file, callbacks the other way round. */
static void fields_mean_the_same_on_both_sides(void) {
  mub_hash words;
  expect(mub_hash_init(&words, 1, 1) == &words, "init gives the record");
  expect(words.owns_entry_pool == 1 && words.owns_value_pool == 1 && words.nocase == 0,
         "flags of a new table");
  words.nocase = 1;
  words.value_pool->block_size = 24;

  uint64_t value = 0;
  expect(mub_hash_set(&words, "Ear", -1, &value, count_block) == 1, "the first set makes an entry");
  const mub_hash_entry *entry = mub_hash_entry_get(&words, "eAR", 3);
  expect(entry != NULL && entry->value == value && entry->key_length == 3, "the entry holds the block");
  expect(blocks_made == 1 && value != 0, "the initialiser was called with the block");
  expect(entry != NULL && memcmp(words.keys.data + entry->key_offset, "Ear", 3) == 0, "the key's bytes");
  expect(words.count == 1 && words.keys.length == 3 && words.buckets.count == 4, "counts");
  expect(words.entry_pool->block_size == (int64_t)sizeof(mub_hash_entry), "entry blocks");
  expect(words.value_pool->live_count == 1, "value blocks");
  mub_hash_term(&words);
  expect(words.entry_pool == NULL && words.keys.data == NULL && words.buckets.items == NULL,
         "nothing is left");
}

static void tables_and_blocks_reach_the_program(void) {
  expect(CRC_TABLE[1] == 0x77073096u && CRC_TABLE[255] == 0x2D02EF8Du, "the table's known entries");
  expect(mub_stream_crc32("123456789", 9) == 0xCBF43926u, "the check value of CRC-32");

  mub_stream stream;
  mub_string text;
  mub_stream_init(&stream);
  mub_string_init(&text);
  mub_stream_append(&stream, "stone\0", 6);
  mub_stream_swap_string(&stream, &text);
  expect(text.length == 6 && strcmp(text.data, "stone") == 0 && stream.data == NULL,
         "the block changed hands");
  mub_stream_term(&stream);

  mub_string_format(&text, "%.1f%% of %s", 2.5, "it");
  mub_string_match(&text, " ", "-", (const char *)NULL);
  expect(strcmp(text.data, "2.5%-of it") == 0, "arguments of any number arrive");
  mub_string_term(&text);
}

int main(void) {
  tables_and_blocks_reach_the_program();
  fields_mean_the_same_on_both_sides();
  return failures == 0 ? 0 : 1;
}
