/* Reading files: whole, or as text, block by block. */
#ifndef MUBDEX_READER_H
#define MUBDEX_READER_H

#include <mub.h>
#include <stdbool.h>
#include <stdio.h>

#include "result.h"

/* Called from time to time while a text is read, with the bytes read so far. */
typedef void (*progress_fn)(int64_t bytes_read);

typedef enum encoding { ENCODING_UNKNOWN, ENCODING_UTF8, ENCODING_UTF16_LITTLE, ENCODING_UTF16_BIG } encoding;

/* Reads a text as UTF-8. A text that begins with a byte order mark in UTF-16 is converted: an unpaired
 * surrogate becomes the replacement character, and so does an odd byte at the end. The mark is left out. */
typedef struct reader {
  FILE *file;           /* the caller's */
  progress_fn progress; /* or NULL */
  int64_t bytes_read;
  encoding encoding;
  mub_stream bytes; /* of a block; empty between two blocks */
  mub_wchar units;  /* of a block; between two blocks, the first half of a pair or nothing */
} reader;

void reader_init(reader *r, FILE *file, progress_fn progress);
void reader_term(reader *r);

/* Appends the next block to `out`. A block may end in the middle of a character of UTF-8. */
mubdex_result reader_next(reader *r, mub_stream *out);

/* Whether the last block has been read. */
bool reader_at_end(const reader *r);

/* Appends the bytes of a file, from its current position to its end. */
mubdex_result read_file(mub_stream *bytes, FILE *file);

#endif
