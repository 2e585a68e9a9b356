/* The texts that mubdex has read, and their line ends. */
#ifndef MUBDEX_CORPUS_H
#define MUBDEX_CORPUS_H

#include <mub.h>
#include <stdbool.h>
#include <stdio.h>

#include "result.h"

typedef struct corpus {
  mub_stream bytes;     /* all texts, each ended by a newline */
  mub_arrayx line_ends; /* the offset of a line's newline in `bytes`, ascending → the number of its text */
  mub_array texts;      /* the name of a text → the number of its first line */
  mub_hasht files;      /* the device and inode of a file → 1 plus the number of its text */
} corpus;

/* Called from time to time while a file is read, with the bytes read so far. */
typedef void (*progress_fn)(int64_t bytes_read);

/* Appends a file, from its current position to its end. */
mubdex_result read_file(mub_stream *bytes, FILE *file, progress_fn progress);

bool corpus_init(corpus *texts);
void corpus_term(corpus *texts);

/* Reads a file to its end and splits it into lines. A file that was read before, under any name, adds
 * nothing. */
mubdex_result corpus_add(corpus *texts, const char *name, FILE *file, progress_fn progress);

/* Whether `name` is one of the files that were read. */
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
