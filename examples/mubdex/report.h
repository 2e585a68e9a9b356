/* What mubdex says about an index. */
#ifndef MUBDEX_REPORT_H
#define MUBDEX_REPORT_H

#include "word_index.h"

/* Fills `out` with a report for people or, as one JSON object, for programs. `source` names what was read. False
 * when memory ran out. */
bool report_text(const word_index *index, const char *source, double seconds, mub_string *out);
bool report_json(const word_index *index, const char *source, double seconds, mub_string *out);

#endif
