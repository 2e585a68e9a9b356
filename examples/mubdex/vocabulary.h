/* The words of an index in byte order. */
#ifndef MUBDEX_VOCABULARY_H
#define MUBDEX_VOCABULARY_H

#include "word_index.h"

typedef struct vocabulary {
  mub_btree words; /* word → its count */
} vocabulary;

bool vocabulary_init(vocabulary *v);
void vocabulary_term(vocabulary *v);

/* Adds all words of an index. False if memory runs out. */
bool vocabulary_fill(vocabulary *v, const word_index *index);

/* A view of the word of a record. */
mub_char vocabulary_word(const vocabulary *v, const mub_btree_node *node);

/* Fills `out`, which is empty, with the words in UTF-16, one per line after a byte order mark. Invalid UTF-8
 * becomes the replacement character. False if memory runs out. */
bool vocabulary_utf16(const vocabulary *v, mub_wchar *out);

#endif
