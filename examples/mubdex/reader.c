#include "reader.h"

/* Converting UTF-16 reads and appends unit by unit. */
#include <mub_inline.h>

#include "unicode.h"

enum { BLOCK_BYTES = 1 << 16 };

void reader_init(reader *r, FILE *file, progress_fn progress) {
  r->file = file;
  r->progress = progress;
  r->bytes_read = 0;
  r->encoding = ENCODING_UNKNOWN;
  mub_stream_init(&r->bytes);
  mub_wchar_init(&r->units);
}

void reader_term(reader *r) {
  mub_wchar_term(&r->units);
  mub_stream_term(&r->bytes);
}

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

static bool remove_mark(mub_stream *bytes, const char *mark, int64_t size) {
  const int64_t length = bytes->length < size ? bytes->length : size;
  if (mub_mem_cmp(bytes->data, length, mark, size) != 0) return false;
  mub_stream_delete(bytes, 0, size);
  return true;
}

/* The encoding of a text, from its first block. */
static encoding recognise(mub_stream *bytes) {
  if (remove_mark(bytes, "\xFF\xFE", 2)) return ENCODING_UTF16_LITTLE;
  if (remove_mark(bytes, "\xFE\xFF", 2)) return ENCODING_UTF16_BIG;
  remove_mark(bytes, "\xEF\xBB\xBF", 3);
  return ENCODING_UTF8;
}

static bool move_bytes(mub_stream *bytes, mub_stream *out) {
  if (!mub_stream_expand(out, out->length + bytes->length)) return false;
  mub_stream_append(out, bytes->data, bytes->length);
  mub_stream_left(bytes, 0);
  return true;
}

/* Takes the units out of the bytes. Blocks are even, so that an odd byte is the last one of the file. */
static bool take_units(reader *r) {
  const int64_t count = r->bytes.length / 2;
  int64_t position = 0;
  if (!mub_wchar_expand(&r->units, r->units.length + count + 1)) return false;
  for (int64_t i = 0; i < count; i++) {
    const int unit = mub_stream_get_word(&r->bytes, &position);
    const int swapped = (unit & 0xFF) << 8 | unit >> 8;
    mub_wchar_append_char(&r->units, r->encoding == ENCODING_UTF16_BIG ? swapped : unit);
  }
  if (position < r->bytes.length) mub_wchar_append_char(&r->units, REPLACEMENT_CHARACTER);
  mub_stream_left(&r->bytes, 0);
  return true;
}

/* Converts the units. The first half of a pair remains until the other half has been read. */
static bool convert_units(reader *r, mub_stream *out) {
  mub_wchar *units = &r->units;
  const int64_t most_bytes_per_unit = 3;
  if (!mub_stream_expand(out, out->length + most_bytes_per_unit * units->length)) return false;
  const bool ends_in_pair = units->length > 0 && is_high_surrogate(units->data[units->length - 1]);
  const int64_t end = units->length - (ends_in_pair && !reader_at_end(r));
  int64_t at = 0;
  while (at < end) {
    uint32_t code;
    char character[4];
    at += utf16_decode(units->data + at, end - at, &code);
    mub_stream_append(out, character, utf8_encode(code, character));
  }
  mub_wchar_right(units, units->length - at);
  return true;
}

mubdex_result reader_next(reader *r, mub_stream *out) {
  const mubdex_result result = read_block(&r->bytes, r->file);
  if (result != RESULT_OK) return result;
  r->bytes_read += r->bytes.length;
  if (r->progress != NULL) r->progress(r->bytes_read);
  if (r->encoding == ENCODING_UNKNOWN) r->encoding = recognise(&r->bytes);
  const bool done =
      r->encoding == ENCODING_UTF8 ? move_bytes(&r->bytes, out) : take_units(r) && convert_units(r, out);
  return done ? RESULT_OK : RESULT_NO_MEMORY;
}
