/* The reports of mubdex. */
#ifndef MUBDEX_REPORT_H
#define MUBDEX_REPORT_H

#include "word_index.h"

typedef struct report_options {
  const char *source;  /* the name of the input */
  const char *pattern; /* of each line of a template report */
  double seconds;
} report_options;

/* Fills `out`, which is empty, with a readable report, with a JSON object, or with the pattern filled in for
 * each of the most frequent words. False if memory runs out. */
bool report_text(const word_index *index, const report_options *options, mub_string *out);
bool report_json(const word_index *index, const report_options *options, mub_string *out);
bool report_template(const word_index *index, const report_options *options, mub_string *out);

#endif
