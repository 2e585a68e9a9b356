/* Sort structs by several keys, which each call selects anew.
 *
 * The array holds addresses; the structs do not move. The comparator's context holds the selection, so there
 * is no need for a global variable, nor for a comparator for each combination. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct book {
  const char *author;
  const char *title;
  int year;
} book;

static const book BOOKS[] = {
    {"Verne", "The Mysterious Island", 1875}, {"Eliot", "Middlemarch", 1871},
    {"Verne", "Michael Strogoff", 1876},      {"Eliot", "Daniel Deronda", 1876},
    {"Hardy", "Desperate Remedies", 1871},
};

typedef int (*compare_books)(const book *a, const book *b);

static int by_author(const book *a, const book *b) { return mub_str_cmp(a->author, b->author); }
static int by_title(const book *a, const book *b) { return mub_str_cmp(a->title, b->title); }
static int by_year_down(const book *a, const book *b) { return (a->year < b->year) - (a->year > b->year); }

/* The first key in which two books differ decides their order. `keys` ends with NULL. */
static int by_keys(uint64_t keys, uint64_t item, uint64_t other, uint64_t unused) {
  (void)unused;
  for (const compare_books *key = MUB_VALUE_AS(const compare_books, keys); *key != NULL; key++) {
    const int order = (*key)(MUB_VALUE_AS(const book, item), MUB_VALUE_AS(const book, other));
    if (order != 0) return order;
  }
  return 0;
}

static void print_sorted(const char *title, mub_arrays *books, const compare_books *keys) {
  mub_arrays_qsort_x_p(books, MUB_VALUE_OF(keys), by_keys);
  puts(title);
  MUB_EACH_ARRAYS(books, item) {
    const book *b = MUB_VALUE_AS(const book, *item);
    printf("  %d  %s: %s\n", b->year, b->author, b->title);
  }
}

int main(void) {
  static const compare_books author_year[] = {by_author, by_year_down, NULL};
  static const compare_books year_title[] = {by_year_down, by_title, NULL};
  const int64_t count = sizeof BOOKS / sizeof *BOOKS;
  mub_arrays books;
  mub_arrays_init(&books, 0);
  const int done = mub_arrays_expand(&books, count); /* so that appending cannot fail */
  for (int64_t i = 0; done && i < count; i++) mub_arrays_append(&books, MUB_VALUE_OF(&BOOKS[i]));
  if (done) {
    print_sorted("by author, newest first", &books, author_year);
    print_sorted("newest first, by title", &books, year_title);
  }
  mub_arrays_term(&books);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
