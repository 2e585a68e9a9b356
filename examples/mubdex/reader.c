#include "reader.h"

enum { BLOCK_BYTES = 1 << 16 };

void reader_init(reader *r, FILE *file, progress_fn progress) { *r = (reader){file, progress, 0}; }

bool reader_at_end(const reader *r) { return feof(r->file) != 0; }

/* A block is shorter only at the end of the file. */
static mubdex_result read_block(mub_stream *bytes, FILE *file) {
  const int64_t length = bytes->length;
  if (!mub_stream_expand(bytes, length + BLOCK_BYTES)) return RESULT_NO_MEMORY;
  const size_t got = fread(bytes->data + length, 1, BLOCK_BYTES, file);
  /* mub_stream_shrink also increases the length, here to include the bytes just read. */
  mub_stream_shrink(bytes, length + (int64_t)got);
  return ferror(file) ? RESULT_READ_ERROR : RESULT_OK;
}

mubdex_result read_file(mub_stream *bytes, FILE *file) {
  mubdex_result result = RESULT_OK;
  while (result == RESULT_OK && !feof(file)) result = read_block(bytes, file);
  return result;
}

mubdex_result reader_next(reader *r, mub_stream *out) {
  const int64_t length = out->length;
  const mubdex_result result = read_block(out, r->file);
  if (result != RESULT_OK) return result;
  r->bytes_read += out->length - length;
  if (r->progress != NULL) r->progress(r->bytes_read);
  return RESULT_OK;
}
