/* The index of mubdex: how often each word occurs and, if asked for, in which lines. */
#ifndef MUBDEX_WORD_INDEX_H
#define MUBDEX_WORD_INDEX_H

#include <mub.h>
#include <stdbool.h>

#include "corpus.h"
#include "reader.h"
#include "result.h"

/* The data of a word whose lines are kept; a block of the table's value pool. */
typedef struct word_stats {
  uint64_t count;
  int64_t line_count; /* the number of lines that contain it, and the last of them */
  uint64_t last_line;
  mub_arrayt lines; /* those lines, ascending; most words have few, which are stored in the record */
} word_stats;

typedef struct word_index {
  mub_hash words;   /* word, lower case → its count, or the address of its word_stats */
  uint64_t total;   /* words read, with repetitions */
  bool keeps_lines; /* whether the values are addresses */
} word_index;

/* An index that keeps the lines of the words takes several times as much memory. */
bool index_init(word_index *index, bool keeps_lines);
void index_term(word_index *index);

/* Adds `count` occurrences of a word. False if memory runs out. */
bool index_add(word_index *index, const char *word, int64_t length, uint64_t count);

/* Counts the words of a text without keeping the text or its lines. Words consist of letters and bytes above
 * 127, so UTF-8 characters are not split. ASCII letters are converted to lower case. */
mubdex_result index_add_text(word_index *index, reader *in);

/* The same for the lines from `first_line` on, which the index keeps if it keeps lines. False if memory runs
 * out. */
bool index_add_lines(word_index *index, const corpus *texts, int64_t first_line);

/* The length of the word at the start of a view, or 0. */
int64_t word_at_start(const mub_char *text);

/* Sets `folded` to a word in lower case. False if memory runs out. */
bool fold_word(const char *word, int64_t length, mub_string *folded);

/* The data of a word, which may be in upper case; NULL if it does not occur. The index keeps lines. */
const word_stats *index_find(const word_index *index, const char *word, int64_t length);

/* The value of a table's entry as data, in an index that keeps lines; 0 is NULL. */
const word_stats *index_stats(uint64_t value);

/* The number of different words, the length of the longest chain, and the bytes allocated by the table. */
int64_t index_vocabulary(const word_index *index);
int64_t index_longest_chain(const word_index *index);
int64_t index_bytes(const word_index *index);

uint64_t entry_count(const word_index *index, const mub_hash_entry *entry);

/* Fills `by_word`, which is initialised and empty, with the words in byte order; each value is the count. */
bool index_sort_by_word(const word_index *index, mub_array *by_word);

/* Fills `top`, which is initialised and empty, with the entries of the most frequent words, at most `limit`,
 * by decreasing count; words with the same count in byte order. */
bool index_top(const word_index *index, int64_t limit, mub_arrays *top);

/* Appends the index to bytes, or fills an empty index from such bytes. Invalid bytes may leave some of their
 * words in the index. */
bool index_save(const word_index *index, mub_stream *out);
mubdex_result index_load(word_index *index, mub_stream *in);

#endif
