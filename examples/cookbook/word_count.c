/* Count words, and list the most frequent first.
 *
 * The count is the value of the word's entry, so each word takes a single look-up. Entries never move, so an
 * array of their addresses can be sorted. */
#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

static const char TEXT[] = "The quick brown fox jumps over the lazy dog. The dog sleeps; the fox does not.";

static int count_words(mub_hash *words, const char *text) {
  for (const char *c = text; *c != '\0';) {
    const char *start = c;
    while (isalpha((unsigned char)*c)) c++;
    mub_hash_entry *entry;
    if (c > start) mub_hash_entry_set(words, start, c - start, &entry);
    if (c > start && entry == NULL) return 0;
    if (c > start) entry->value++;
    if (*c != '\0') c++;
  }
  return 1;
}

static const mub_hash_entry *entry_at(uint64_t item) { return MUB_VALUE_AS(const mub_hash_entry, item); }

/* By decreasing count, then alphabetically. The context is the address of the table's key bytes. */
static int by_count(uint64_t keys, uint64_t item, uint64_t other, uint64_t unused) {
  const mub_hash_entry *a = entry_at(item), *b = entry_at(other);
  const uint8_t *bytes = MUB_VALUE_AS(const uint8_t, keys);
  (void)unused;
  if (a->value != b->value) return a->value > b->value ? -1 : 1;
  return mub_mem_icmp(bytes + a->key_offset, a->key_length, bytes + b->key_offset, b->key_length);
}

static int print_sorted(const mub_hash *words) {
  mub_arrays entries;
  mub_arrays_init(&entries, 0);
  if (!mub_arrays_expand(&entries, words->count)) return 0;
  MUB_EACH_HASH(words, entry) mub_arrays_append(&entries, MUB_VALUE_OF(entry));
  mub_arrays_qsort_x_p(&entries, MUB_VALUE_OF(words->keys.data), by_count);
  MUB_EACH_ARRAYS(&entries, item) {
    const mub_hash_entry *entry = entry_at(*item);
    printf("%2d %.*s\n", (int)entry->value, (int)entry->key_length, words->keys.data + entry->key_offset);
  }
  mub_arrays_term(&entries);
  return 1;
}

int main(void) {
  mub_hash words;
  mub_hash_init(&words, 1, 0); /* with its own entry pool, and no value pool */
  words.nocase = 1;
  const int done = count_words(&words, TEXT) && print_sorted(&words);
  mub_hash_term(&words);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
