/* Pictures of the containers of mubdex as they are in memory, for Graphviz. */
#ifndef MUBDEX_DOT_H
#define MUBDEX_DOT_H

#include "word_index.h"

/* Fills `out`, which is empty, with the picture of a container of the words of an index. Large containers are
 * drawn in part, with the number of items left out. False if memory runs out. */
typedef bool (*picture_fn)(const word_index *index, mub_string *out);

/* "hash": the table of the words; "btree": the vocabulary; "pool": the pool of its records after the words
 * that occur only once were removed. NULL for any other name. */
picture_fn dot_picture(const char *name);

#endif
