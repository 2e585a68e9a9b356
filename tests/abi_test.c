/* The library as a C program meets it: the layout of the records that callers allocate themselves, and calls
 * into the shared library. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "mub.h"

/* The size of a record, and the offsets and types of its fields: of an array, of its first item and its last. Sizes and
 * offsets are promised for pointers of 8 bytes. */
#define LAYOUT(record, bytes, ...)                                           \
  do {                                                                       \
    typedef record Record;                                                   \
    _Static_assert(PROMISED(sizeof(Record) == (bytes)), "size of " #record); \
    (void)sizeof((size_t[]){__VA_ARGS__});                                   \
  } while (0)
#define AT(offset, type, field) \
  sizeof(char[PROMISED(offsetof(Record, field) == (offset)) && IS(type, field) ? 1 : -1])
#define PROMISED(layout) (sizeof(void *) != 8 || (layout))
#define IS(type, field) _Generic(&((Record *)0)->field, type * : 1, default : 0)
/* Where containers of entries and their callers' values have their pools. */
#define POOLS(offset)                                                              \
  AT(offset, mub_pool *, entry_pool), AT((offset) + 8, uint16_t, owns_entry_pool), \
      AT((offset) + 16, mub_pool *, value_pool), AT((offset) + 24, uint16_t, owns_value_pool)

static void records_are_laid_out_as_promised(void) {
  LAYOUT(mub_char, 16, AT(0, char *, data), AT(8, int64_t, length));
  LAYOUT(mub_stream, 24, AT(0, uint8_t *, data), AT(8, int64_t, length), AT(16, int64_t, capacity));
  LAYOUT(mub_string, 24, AT(0, char *, data), AT(8, int64_t, length), AT(16, int64_t, capacity));
  LAYOUT(mub_stringx, 24, AT(0, const char *, text), AT(8, int64_t, start), AT(16, int64_t, length));
  LAYOUT(mub_wchar, 24, AT(0, uint16_t *, data), AT(8, int64_t, length), AT(16, int64_t, capacity));
  LAYOUT(mub_pool, 88, AT(0, int64_t, block_size), AT(8, int64_t, blocks_per_chunk),
         AT(16, int64_t, live_count), AT(24, int64_t, chunk_used), AT(32, int64_t, chunk_count),
         AT(40, int64_t, chunk_capacity), AT(48, void **, chunks), AT(56, int64_t, free_used),
         AT(64, int64_t, free_count), AT(72, int64_t, free_capacity), AT(80, void **, free_pages));
  LAYOUT(mub_pool_chunk, 16, AT(0, int64_t, index), AT(8, uint64_t, base));
  LAYOUT(mub_pool_iter, 32, AT(0, int64_t, chunk), AT(8, int64_t, slot), AT(16, void **, free_blocks),
         AT(24, mub_pool *, pool));
  LAYOUT(mub_array_entry, 16, AT(0, uint32_t, key_offset), AT(4, uint32_t, key_length),
         AT(8, uint64_t, value));
  LAYOUT(mub_array, 64, AT(0, mub_array_entry *, entries), AT(8, int64_t, count), AT(16, int64_t, capacity),
         AT(24, mub_stream, keys), AT(48, mub_pool *, pool), AT(56, uint16_t, own_pool),
         AT(58, uint16_t, descending));
  LAYOUT(mub_arrayd_entry, 16, AT(0, uint32_t, key), AT(8, uint64_t, value));
  LAYOUT(mub_arrayd, 40, AT(0, mub_arrayd_entry *, entries), AT(8, int64_t, count), AT(16, int64_t, capacity),
         AT(24, mub_pool *, pool), AT(32, uint16_t, own_pool), AT(34, uint16_t, descending));
  LAYOUT(mub_arrayx_entry, 16, AT(0, uint64_t, key), AT(8, uint64_t, value));
  LAYOUT(mub_arrayx, 40, AT(0, mub_arrayx_entry *, entries), AT(8, int64_t, count), AT(16, int64_t, capacity),
         AT(24, mub_pool *, pool), AT(32, uint16_t, own_pool), AT(34, uint16_t, descending));
  LAYOUT(mub_arrays, 40, AT(0, uint64_t *, items), AT(8, int64_t, count), AT(16, int64_t, capacity),
         AT(24, mub_pool *, pool), AT(32, uint16_t, own_pool), AT(34, uint16_t, descending));
  LAYOUT(mub_arrayt, 64, AT(0, uint64_t, inline_items[0]), AT(24, uint64_t, inline_items[3]),
         AT(32, uint64_t *, tail), AT(40, int64_t, count), AT(48, int64_t, capacity),
         AT(56, uint16_t, descending));
  LAYOUT(mub_hash_entry, 32, AT(0, mub_hash_entry *, next), AT(8, uint32_t, hash),
         AT(12, uint32_t, key_offset), AT(16, uint32_t, key_length), AT(24, uint64_t, value));
  LAYOUT(mub_hash, 104, AT(0, mub_arrays, buckets), AT(40, int64_t, count), AT(48, mub_stream, keys),
         POOLS(72), AT(98, int16_t, nocase));
  LAYOUT(mub_hashd_entry, 24, AT(0, mub_hashd_entry *, next), AT(8, uint32_t, key), AT(16, uint64_t, value));
  LAYOUT(mub_hashd, 80, AT(0, mub_arrays, buckets), AT(40, int64_t, count), POOLS(48));
  LAYOUT(mub_hashx_entry, 24, AT(0, mub_hashx_entry *, next), AT(8, uint64_t, key), AT(16, uint64_t, value));
  LAYOUT(mub_hashx, 80, AT(0, mub_arrays, buckets), AT(40, int64_t, count), POOLS(48));
  LAYOUT(mub_hasht_entry, 32, AT(0, mub_hasht_entry *, next), AT(8, uint32_t, key[0]),
         AT(20, uint32_t, key[3]), AT(24, uint64_t, value));
  LAYOUT(mub_hasht, 80, AT(0, mub_arrays, buckets), AT(40, int64_t, count), POOLS(48));
  LAYOUT(mub_list_entry, 32, AT(0, mub_list_entry *, prev), AT(8, mub_list_entry *, next),
         AT(16, uint32_t, key_offset), AT(20, uint32_t, key_length), AT(24, uint64_t, value));
  LAYOUT(mub_list, 80, AT(0, mub_list_entry *, head), AT(8, mub_list_entry *, tail), AT(16, int64_t, count),
         AT(24, mub_stream, keys), POOLS(48));
  LAYOUT(mub_lists_entry, 24, AT(0, mub_lists_entry *, prev), AT(8, mub_lists_entry *, next),
         AT(16, uint64_t, value));
  LAYOUT(mub_lists, 56, AT(0, mub_lists_entry *, head), AT(8, mub_lists_entry *, tail),
         AT(16, int64_t, count), POOLS(24));
  LAYOUT(mub_listx_block, 280, AT(0, mub_listx_block *, prev), AT(8, mub_listx_block *, next),
         AT(16, int64_t, count), AT(24, uint64_t, values[0]), AT(272, uint64_t, values[31]));
  LAYOUT(mub_listx, 56, AT(0, mub_listx_block *, head), AT(8, mub_listx_block *, tail),
         AT(16, int64_t, count), POOLS(24));
  LAYOUT(mub_tree_entry, 40, AT(0, mub_tree_entry *, parent), AT(8, mub_tree_entry *, first_child),
         AT(16, mub_tree_entry *, prev), AT(24, mub_tree_entry *, next), AT(32, uint64_t, value));
  LAYOUT(mub_tree, 80, AT(0, mub_tree_entry, root), AT(40, int64_t, count), POOLS(48));
  LAYOUT(mub_bitree_entry, 40, AT(0, mub_bitree_entry *, parent), AT(8, mub_bitree_entry *, equal),
         AT(16, mub_bitree_entry *, left), AT(24, mub_bitree_entry *, right), AT(32, uint64_t, value));
  LAYOUT(mub_bitree, 80, AT(0, mub_bitree_entry, root), AT(40, int64_t, count), POOLS(48));
  LAYOUT(mub_btree_node, 32, AT(0, uint32_t, key_offset), AT(4, uint32_t, key_length),
         AT(8, mub_btree_node *, prev), AT(16, mub_btree_node *, next), AT(24, uint64_t, value));
  LAYOUT(mub_btree_entry, 64, AT(0, uint32_t, key_offset), AT(4, uint32_t, key_length), AT(8, int16_t, level),
         AT(16, mub_btree_entry *, parent), AT(24, mub_arrays, children));
  LAYOUT(mub_btree, 144, AT(0, mub_btree_entry, root), AT(64, int64_t, count), AT(72, mub_stream, keys),
         AT(96, mub_pool *, entry_pool), AT(104, uint16_t, owns_entry_pool), AT(112, mub_pool *, node_pool),
         AT(120, uint16_t, owns_node_pool), AT(128, mub_pool *, value_pool),
         AT(136, uint16_t, owns_value_pool), AT(138, uint16_t, nocase));
  LAYOUT(mub_btree_cursor, 24, AT(0, const mub_btree *, tree), AT(8, mub_btree_entry *, leaf),
         AT(16, int64_t, index));
  LAYOUT(mub_btreed_node, 32, AT(0, uint32_t, key), AT(8, mub_btreed_node *, prev),
         AT(16, mub_btreed_node *, next), AT(24, uint64_t, value));
  LAYOUT(mub_btreed_entry, 56, AT(0, uint32_t, key), AT(4, int16_t, level), AT(8, mub_btreed_entry *, parent),
         AT(16, mub_arrays, children));
  LAYOUT(mub_btreed, 112, AT(0, mub_btreed_entry, root), AT(56, int64_t, count),
         AT(64, mub_pool *, entry_pool), AT(72, uint16_t, owns_entry_pool), AT(80, mub_pool *, node_pool),
         AT(88, uint16_t, owns_node_pool), AT(96, mub_pool *, value_pool), AT(104, uint16_t, owns_value_pool),
         AT(108, uint32_t, key_type));
  LAYOUT(mub_btreed_cursor, 24, AT(0, const mub_btreed *, tree), AT(8, mub_btreed_entry *, leaf),
         AT(16, int64_t, index));
  LAYOUT(mub_btreex_node, 32, AT(0, uint64_t, key), AT(8, mub_btreex_node *, prev),
         AT(16, mub_btreex_node *, next), AT(24, uint64_t, value));
  LAYOUT(mub_btreex_entry, 64, AT(0, uint64_t, key), AT(8, int16_t, level),
         AT(16, mub_btreex_entry *, parent), AT(24, mub_arrays, children));
  LAYOUT(mub_btreex, 120, AT(0, mub_btreex_entry, root), AT(64, int64_t, count),
         AT(72, mub_pool *, entry_pool), AT(80, uint16_t, owns_entry_pool), AT(88, mub_pool *, node_pool),
         AT(96, uint16_t, owns_node_pool), AT(104, mub_pool *, value_pool),
         AT(112, uint16_t, owns_value_pool), AT(116, uint32_t, key_type));
  LAYOUT(mub_btreex_cursor, 24, AT(0, const mub_btreex *, tree), AT(8, mub_btreex_entry *, leaf),
         AT(16, int64_t, index));
  LAYOUT(mub_bits, 16, AT(0, uint8_t *, data), AT(8, uint32_t, size));
}

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
  records_are_laid_out_as_promised();
  tables_and_blocks_reach_the_program();
  fields_mean_the_same_on_both_sides();
  return failures == 0 ? 0 : 1;
}
