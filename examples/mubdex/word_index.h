/* The index of mubdex: how often each word occurs, and in which lines. */
#ifndef MUBDEX_WORD_INDEX_H
#define MUBDEX_WORD_INDEX_H

#include <mub.h>
#include <stdbool.h>

#include "corpus.h"
#include "result.h"

/* What is known of a word; one block of the table's value pool each. */
typedef struct word_stats {
  uint64_t count;
  int64_t line_count; /* lines that hold it, and the last of them */
  uint64_t last_line;
  mub_arrayt lines; /* those lines, ascending; most words have few, which lie in the record */
} word_stats;

typedef struct word_index {
  mub_hash words; /* word, lower case → address of its word_stats */
  uint64_t total; /* words read, repeats included */
} word_index;

bool index_init(word_index *index);
void index_term(word_index *index);

/* Counts `count` more occurrences of a word. False when memory ran out. */
bool index_add(word_index *index, const char *word, int64_t length, uint64_t count);

/* Counts the words of the lines from `first_line` on: runs of letters and of bytes above 127, so that UTF-8
 * stays whole. ASCII letters are folded to lower case. False when memory ran out. */
bool index_add_lines(word_index *index, const corpus *texts, int64_t first_line);

/* The length of the word that a view begins with, 0 when it begins with none. */
int64_t word_at_start(const mub_char *text);

/* Makes `folded` the lower-case form of a word. False when memory ran out. */
bool fold_word(const char *word, int64_t length, mub_string *folded);

/* What is known of a word in any case of letters; NULL when it does not occur. */
const word_stats *index_find(const word_index *index, const char *word, int64_t length);

/* The number of different words, the entries of the longest chain, and the bytes that the table has
 * allocated. */
int64_t index_vocabulary(const word_index *index);
int64_t index_longest_chain(const word_index *index);
int64_t index_bytes(const word_index *index);

const word_stats *entry_stats(const mub_hash_entry *entry);

/* The words in byte order, each with the address of its word_stats as value. `by_word` is initialised and
 * empty. */
bool index_sort_by_word(const word_index *index, mub_array *by_word);

/* The entries of the table, most frequent first, words of one frequency in byte order. */
bool index_sort_by_count(const word_index *index, mub_arrays *by_count);

/* Appends the index as bytes, and takes such bytes in. What was there before stays, and is added to; bytes
 * that are refused add nothing. */
bool index_save(const word_index *index, mub_stream *out);
mubdex_result index_load(word_index *index, mub_stream *in);

#endif
