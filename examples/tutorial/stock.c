/* The program that the tutorial develops: the stock of a small shop, and its value. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

/* [article] */
typedef struct article {
  int64_t pieces;
  int64_t cents; /* the price per piece */
  const mub_hash_entry *name;
} article;
/* [article] */

/* [stock] */
typedef struct stock {
  mub_pool articles;
  mub_hash by_name; /* value: address of an article */
} stock;

static void stock_init(stock *s) {
  mub_pool_init(&s->articles);
  s->articles.block_size = sizeof(article);
  mub_hash_init(&s->by_name, 1, 0); /* with its own entry pool, and no value pool */
}

static void stock_term(stock *s) {
  mub_hash_term(&s->by_name);
  mub_pool_term(&s->articles); /* releases all articles at once */
}
/* [stock] */

/* [at] */
static article *article_at(uint64_t value) { return (article *)(uintptr_t)value; }
/* [at] */

/* [add] */
static int stock_add(stock *s, const char *name, int64_t length, int64_t pieces, int64_t cents) {
  mub_hash_entry *entry;
  mub_hash_entry_set(&s->by_name, name, length, &entry);
  if (entry == NULL) return 0; /* out of memory */
  if (entry->value == 0) {
    article *fresh = mub_pool_new(&s->articles);
    if (fresh == NULL) return 0;
    *fresh = (article){0, cents, entry};
    entry->value = (uintptr_t)fresh;
  }
  article_at(entry->value)->pieces += pieces;
  return 1;
}
/* [add] */

/* [sort] */
static int by_worth(uint64_t item, uint64_t other, uint64_t unused) {
  const int64_t a = article_at(item)->pieces * article_at(item)->cents;
  const int64_t b = article_at(other)->pieces * article_at(other)->cents;
  (void)unused;
  return (a > b) - (a < b);
}

static int list_by_worth(const stock *s, mub_arrays *list) {
  int64_t bucket;
  if (!mub_arrays_expand(list, s->by_name.count)) return 0;
  const mub_hash_entry *e = mub_hash_entry_first(&s->by_name, &bucket);
  for (; e != NULL; e = mub_hash_entry_next(&s->by_name, &bucket, e))
    if (e->value != 0) mub_arrays_append(list, e->value);
  mub_arrays_qsort_n(list, by_worth);
  return 1;
}
/* [sort] */

/* [report] */
static int append_line(const stock *s, const article *a, mub_string *text) {
  const int64_t worth = a->pieces * a->cents;
  mub_string line;
  mub_string_init(&line);
  mub_string_format(&line, "%4d %-8.*s %6d.%02d\n", (int)a->pieces, (int)a->name->key_length,
                    s->by_name.keys.data + a->name->key_offset, (int)(worth / 100), (int)(worth % 100));
  const int done = line.length > 0 && mub_string_expand(text, text->length + line.length);
  if (done) mub_string_append(text, line.data, line.length);
  mub_string_term(&line);
  return done;
}

static int report(const stock *s, mub_string *text) {
  mub_arrays list;
  mub_arrays_init(&list, 0);
  int done = list_by_worth(s, &list);
  for (int64_t i = 0; done && i < list.count; i++) done = append_line(s, article_at(list.items[i]), text);
  mub_arrays_term(&list);
  return done;
}
/* [report] */

/* [save] */
static int64_t article_bytes(const article *a) {
  return mub_stream_deflate_dword_length(a->name->key_length) + (int64_t)a->name->key_length +
         mub_stream_deflate_lword_length((uint64_t)a->pieces) +
         mub_stream_deflate_lword_length((uint64_t)a->cents);
}

static void write_article(const stock *s, const article *a, mub_stream *file, int64_t *position) {
  mub_stream_deflate_dword(file, position, a->name->key_length);
  mub_stream_set_buffer(file, position, s->by_name.keys.data + a->name->key_offset, a->name->key_length);
  mub_stream_deflate_lword(file, position, (uint64_t)a->pieces);
  mub_stream_deflate_lword(file, position, (uint64_t)a->cents);
}

static int save(const stock *s, mub_stream *file) {
  mub_arrays list;
  mub_arrays_init(&list, 0);
  int64_t size = 0, position = 0;
  int done = list_by_worth(s, &list);
  for (int64_t i = 0; i < list.count; i++) size += article_bytes(article_at(list.items[i]));
  done = done && mub_stream_expand(file, size + 4);
  if (done) {
    mub_stream_shrink(file, size + 4); /* set the final length first: writing does not grow a stream */
    for (int64_t i = 0; i < list.count; i++) write_article(s, article_at(list.items[i]), file, &position);
    mub_stream_set_dword(file, &position, mub_stream_crc32(file->data, size));
  }
  mub_arrays_term(&list);
  return done;
}
/* [save] */

/* [load] */
static int load(stock *s, const mub_stream *file) {
  int64_t end = file->length - 4, position = end;
  if (end < 0 || mub_stream_get_dword(file, &position) != mub_stream_crc32(file->data, end)) return 0;
  for (position = 0; position < end;) {
    int64_t length = mub_stream_inflate_dword(file, &position);
    uint8_t *name;
    mub_stream_get_buffer(file, &position, &name, &length);
    const int64_t pieces = mub_stream_inflate_lword(file, &position);
    const int64_t cents = mub_stream_inflate_lword(file, &position);
    if (!stock_add(s, (const char *)name, length, pieces, cents)) return 0;
  }
  return 1;
}
/* [load] */

/* [run] */
static int run(stock *first, stock *second, mub_stream *file, mub_string *text) {
  if (!stock_add(first, "lamp", -1, 12, 2450) || !stock_add(first, "cable", -1, 150, 320)) return 0;
  if (!stock_add(first, "bulb", -1, 400, 85) || !stock_add(first, "cable", -1, 50, 320)) return 0;
  if (!save(first, file) || !load(second, file) || !report(second, text)) return 0;
  printf("%sread back from %d bytes\n", text->data, (int)file->length);
  mub_stream_set_at(file, 3, '!');
  printf("a changed byte is %s\n", load(second, file) ? "not seen" : "refused");
  return 1;
}

int main(void) {
  stock first, second;
  mub_stream file;
  mub_string text;
  stock_init(&first);
  stock_init(&second);
  mub_stream_init(&file);
  mub_string_init(&text);
  const int done = run(&first, &second, &file, &text);
  mub_string_term(&text);
  mub_stream_term(&file);
  stock_term(&second);
  stock_term(&first);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
/* [run] */
