/* The output of the options other than the report. All functions append to `out`, and return false if memory
 * runs out. */
#ifndef MUBDEX_ANSWERS_H
#define MUBDEX_ANSWERS_H

#include "corpus.h"
#include "outline.h"
#include "vocabulary.h"
#include "word_index.h"

/* Appends a printed line. False if memory runs out, or ran out earlier, so that the line is empty. */
bool append_line(mub_string *out, const mub_string *line);

/* Prints a count and its word into `line`. */
void format_word(mub_string *line, const mub_char *word, uint64_t count);

/* The lines that contain a word, and the lines that are set in `lines`. */
bool answer_word(const word_index *index, const corpus *texts, const char *word, mub_string *out);
bool answer_lines(const mub_bits *lines, const corpus *texts, mub_string *out);

/* The words from `first` to `last` and those that begin with `last`, each with its count, in byte order. The
 * bounds are converted to lower case; an empty `last` is the end of the vocabulary. */
bool answer_words(const vocabulary *words, const mub_char *first, const mub_char *last, mub_string *out);

/* The headings with their line numbers, indented by depth. */
bool answer_outline(const outline *headings, const corpus *texts, mub_string *out);

#endif
