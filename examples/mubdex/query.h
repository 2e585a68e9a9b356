/* Queries for lines: words combined with AND, OR and NOT, as in  free AND (software OR program) NOT
 * warranty. */
#ifndef MUBDEX_QUERY_H
#define MUBDEX_QUERY_H

#include "word_index.h"

/* An expression: inner entries are operators with their operands on the left and on the right, leaves are
 * words. The whole expression is on the left of the root. */
typedef struct query {
  mub_bitree tree;
  mub_string folded;    /* the text in lower case, of which the words are views */
  mub_arrays words;     /* the addresses of the nodes of the words */
  const char *expected; /* what was expected at `fault`; NULL if the text is well-formed */
  int64_t fault;        /* a column, from 1 */
} query;

bool query_init(query *q);
void query_term(query *q);

/* Parses a text. NOT binds tighter than AND, and AND tighter than OR;
 * between two operands without an operator, AND is implied. False if the text is malformed, or if memory runs
 * out; then `expected` is NULL. */
bool query_parse(query *q, const char *text);

/* Finds the lines, out of `line_count`, that match the query: sets their bits in `lines`, which is
 * initialised and empty. Ignore the bits from `line_count` on. The index keeps lines. False if memory runs
 * out. */
bool query_answer(query *q, const word_index *index, int64_t line_count, mub_bits *lines);

#endif
