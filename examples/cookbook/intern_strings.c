/* Keep one copy of each string, so that equal strings are equal numbers.
 *
 * The strings are the keys of a hash table, and the value of an entry is the string's number. An array maps
 * the number back to the entry, which never moves. To compare two interned strings, compare two integers. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct symbols {
  mub_hash by_text;     /* text -> number */
  mub_arrays by_number; /* number -> entry of `by_text` */
} symbols;

static void symbols_init(symbols *s) {
  mub_hash_init(&s->by_text, 1, 0);
  mub_arrays_init(&s->by_number, 0);
}

static void symbols_term(symbols *s) {
  mub_arrays_term(&s->by_number);
  mub_hash_term(&s->by_text);
}

/* The number of a text, the same for equal texts; -1 if memory runs out. */
static int64_t intern(symbols *s, const char *text, int64_t length) {
  mub_hash_entry *entry;
  if (!mub_arrays_expand(&s->by_number, s->by_number.count + 1)) return -1;
  if (mub_hash_entry_set(&s->by_text, text, length, &entry)) {
    entry->value = (uint64_t)s->by_number.count;
    mub_arrays_append(&s->by_number, MUB_VALUE_OF(entry));
  }
  return entry != NULL ? (int64_t)entry->value : -1;
}

/* A view of the text of a number; valid until the next text is interned. */
static mub_stringx text_of(const symbols *s, int64_t number) {
  const mub_hash_entry *entry = MUB_VALUE_AS(const mub_hash_entry, mub_arrays_get_at(&s->by_number, number));
  return (mub_stringx){(const char *)s->by_text.keys.data, entry->key_offset, entry->key_length};
}

int main(void) {
  static const char *const words[] = {"to", "be", "or", "not", "to", "be"};
  symbols s;
  symbols_init(&s);
  int done = 1;
  for (size_t i = 0; done && i < sizeof words / sizeof *words; i++) {
    const int64_t number = intern(&s, words[i], -1);
    done = number >= 0;
    if (done) printf("%s%" PRId64, i > 0 ? " " : "", number);
  }
  if (done) printf("\n%" PRId64 " strings in %" PRId64 " bytes\n", s.by_number.count, s.by_text.keys.length);
  for (int64_t i = 0; done && i < s.by_number.count; i++) {
    const mub_stringx text = text_of(&s, i);
    printf("%" PRId64 " = %.*s\n", i, (int)text.length, text.text + text.start);
  }
  symbols_term(&s);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
