/* The texts that mubdex has read and, if they are needed, their lines. */
#ifndef MUBDEX_CORPUS_H
#define MUBDEX_CORPUS_H

#include <mub.h>
#include <stdbool.h>
#include <stdio.h>

#include "reader.h"
#include "result.h"

typedef struct corpus {
  mub_stream bytes;     /* all texts, each ended by a newline */
  mub_arrayx line_ends; /* the offset of a line's newline in `bytes`, ascending → the number of its text */
  mub_array texts;      /* the name of a text → the number of its first line */
  mub_hasht files;      /* the device and inode of a file → 1 plus the number of its text */
} corpus;

bool corpus_init(corpus *texts);
void corpus_term(corpus *texts);

/* Adds a text without lines. RESULT_KNOWN if the file was added before, under any name. */
mubdex_result corpus_add_file(corpus *texts, const char *name, FILE *file);

/* Reads the text that was added last, and splits it into lines. */
mubdex_result corpus_read(corpus *texts, reader *in);

/* Whether `name` is one of the files that were added. */
bool corpus_has_file(const corpus *texts, const char *name);

/* A view of a line without its newline. Lines are numbered from 0 through all texts. The bytes remain in the
 * corpus. */
int64_t corpus_line_count(const corpus *texts);
mub_char corpus_line(const corpus *texts, int64_t line);

/* The number of a line in its text, from 1. */
int64_t corpus_line_number(const corpus *texts, int64_t line);

/* Appends a line as grep -n prints it: the name of the text if there are several, the line number, the line.
 * False if memory runs out. */
bool corpus_append_line(const corpus *texts, int64_t line, mub_string *out);

#endif
