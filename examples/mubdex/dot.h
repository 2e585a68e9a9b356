/* Pictures of the containers of mubdex as they lie in memory, in the language of Graphviz. */
#ifndef MUBDEX_DOT_H
#define MUBDEX_DOT_H

#include "word_index.h"

/* Fills `out`, which is empty, with the picture of a container of the words of an index. What is large is
 * not drawn whole: dots tell how much is left out. False when memory ran out. */
typedef bool (*picture_fn)(const word_index *index, mub_string *out);

/* "hash": the table of the words; "btree": the vocabulary; "pool": the records of a vocabulary from which
 * the words that occur once were removed. NULL when there is no such picture. */
picture_fn dot_picture(const char *name);

#endif
