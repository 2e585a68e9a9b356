/* The words of an index in byte order. */
#ifndef MUBDEX_VOCABULARY_H
#define MUBDEX_VOCABULARY_H

#include "word_index.h"

typedef struct vocabulary {
  mub_btree words; /* word → the address of its word_stats, which stays the index's */
} vocabulary;

bool vocabulary_init(vocabulary *v);
void vocabulary_term(vocabulary *v);

/* Takes in all words of an index. False when memory ran out. */
bool vocabulary_fill(vocabulary *v, const word_index *index);

/* The word of a record, as a view that shares its bytes. */
mub_char vocabulary_word(const vocabulary *v, const mub_btree_node *node);

/* Fills `out`, which is empty, with the words in UTF-16, one per line after a byte order mark. What is not
 * UTF-8 becomes the replacement character. False when memory ran out. */
bool vocabulary_utf16(const vocabulary *v, mub_wchar *out);

#endif
