/* What mubdex says about an index. */
#ifndef MUBDEX_REPORT_H
#define MUBDEX_REPORT_H

#include "word_index.h"

typedef struct report_options {
  const char *source;  /* names what was read */
  const char *pattern; /* of the lines of a template */
  double seconds;
} report_options;

/* Fills `out`, which is empty, with a report for people, with one JSON object for programs, or with a line
 * for each of the most frequent words made after a pattern. False when memory ran out. */
bool report_text(const word_index *index, const report_options *options, mub_string *out);
bool report_json(const word_index *index, const report_options *options, mub_string *out);
bool report_template(const word_index *index, const report_options *options, mub_string *out);

#endif
