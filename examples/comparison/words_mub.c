/* Counts words with libmub; the other programs of this directory do the same with other libraries. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

static const char *const TEXT[] = {"the", "cat", "and", "the", "dog", "and", "the", "bird"};

int main(void) {
  mub_hash words;
  mub_hash_init(&words, 1, 0);

  for (size_t i = 0; i < sizeof TEXT / sizeof *TEXT; i++) {
    mub_hash_entry *entry; /* of the word; new ones have the value 0 */
    mub_hash_entry_set(&words, TEXT[i], -1, &entry);
    if (entry == NULL) return EXIT_FAILURE; /* out of memory */
    entry->value++;
  }

  printf("the: %d\n", (int)mub_hash_get(&words, "the", -1));
  printf("cow: %s\n", mub_hash_find(&words, "cow", -1) ? "present" : "absent");
  mub_hash_remove(&words, "and", -1);

  int64_t bucket, total = 0;
  for (const mub_hash_entry *e = mub_hash_entry_first(&words, &bucket); e;
       e = mub_hash_entry_next(&words, &bucket, e))
    total += (int64_t)e->value;
  printf("%d words, %d in all\n", (int)words.count, (int)total);

  mub_hash_term(&words);
}
