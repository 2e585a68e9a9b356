/* Reading files: whole, or as text, block by block. */
#ifndef MUBDEX_READER_H
#define MUBDEX_READER_H

#include <mub.h>
#include <stdbool.h>
#include <stdio.h>

#include "result.h"

/* Called from time to time while a text is read, with the bytes read so far. */
typedef void (*progress_fn)(int64_t bytes_read);

typedef struct reader {
  FILE *file;           /* the caller's */
  progress_fn progress; /* or NULL */
  int64_t bytes_read;
} reader;

void reader_init(reader *r, FILE *file, progress_fn progress);

/* Appends the next block to `out`. A block may end in the middle of a character of UTF-8. */
mubdex_result reader_next(reader *r, mub_stream *out);

/* Whether the last block has been read. */
bool reader_at_end(const reader *r);

/* Appends the bytes of a file, from its current position to its end. */
mubdex_result read_file(mub_stream *bytes, FILE *file);

#endif
