/* Counts words with uthash. */
#include <stdio.h>
#include <stdlib.h>
#include <uthash.h>

typedef struct word {
  const char *text;
  int count;
  UT_hash_handle hh;
} word;

static const char *const TEXT[] = {"the", "cat", "and", "the", "dog", "and", "the", "bird"};

int main(void) {
  word *words = NULL, *found, *next;

  for (size_t i = 0; i < sizeof TEXT / sizeof *TEXT; i++) {
    HASH_FIND_STR(words, TEXT[i], found);
    if (found == NULL) {
      found = calloc(1, sizeof *found);
      if (found == NULL) return EXIT_FAILURE;
      found->text = TEXT[i]; /* not copied */
      HASH_ADD_KEYPTR(hh, words, found->text, strlen(found->text), found);
    }
    found->count++;
  }

  HASH_FIND_STR(words, "the", found);
  printf("the: %d\n", found ? found->count : 0);
  HASH_FIND_STR(words, "cow", found);
  printf("cow: %s\n", found ? "present" : "absent");
  HASH_FIND_STR(words, "and", found);
  if (found) HASH_DEL(words, found);
  free(found);

  int total = 0;
  for (found = words; found; found = found->hh.next) total += found->count;
  printf("%d words, %d in all\n", (int)HASH_COUNT(words), total);

  HASH_ITER(hh, words, found, next) {
    HASH_DEL(words, found);
    free(found);
  }
}
