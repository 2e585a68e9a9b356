/* The library as a C program meets it: records that it allocates itself, and calls into the shared library. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "mub.h"

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
