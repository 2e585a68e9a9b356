/* Questions about lines: words joined by AND, OR and NOT, as in  free AND (software OR program) NOT
 * warranty. */
#ifndef MUBDEX_QUERY_H
#define MUBDEX_QUERY_H

#include "word_index.h"

/* An expression: operators with their operands on the left and on the right, words at the ends, the whole of
 * it on the left of the root. */
typedef struct query {
  mub_bitree tree;
  const char *expected; /* what should have stood at `fault`; NULL when nothing was wrong with the text */
  int64_t fault;        /* a column, from 1 */
} query;

bool query_init(query *q);
void query_term(query *q);

/* Parses a text, of which words are kept as views. NOT binds tighter than AND, AND than OR; between two
 * operands without an operator, AND is meant. False when the text is malformed, or when memory ran out,
 * `expected` being NULL. */
bool query_parse(query *q, const char *text);

/* Finds the lines, out of `line_count`, that answer the query: they are set in `lines`, which is initialised
 * and empty. Bits at and beyond the count mean nothing. False when memory ran out. */
bool query_answer(query *q, const word_index *index, int64_t line_count, mub_bits *lines);

#endif
