/* The format of a saved index:
 *
 *   "MUBDEX"       6 bytes
 *   body length    8 bytes, little-endian
 *   body           total and vocabulary, then for each word in byte order: length, bytes, count;
 *                  numbers packed
 *   CRC-32         4 bytes, of all bytes before it
 */
#include <string.h>

#include "word_index.h"

static const char MAGIC[] = "MUBDEX";

enum { MAGIC_BYTES = 6, HEADER_BYTES = MAGIC_BYTES + 8, CRC_BYTES = 4 };

/* The packed length of a word has 30 bits. */
static const int64_t MAX_WORD_BYTES = (1 << 30) - 1;

static int64_t body_bytes(const word_index *index, const mub_array *by_word) {
  int64_t size = mub_stream_deflate_lword_length(index->total);
  size += mub_stream_deflate_lword_length((uint64_t)by_word->count);
  for (int64_t i = 0; i < by_word->count; i++) {
    const char *word;
    int64_t length;
    const uint64_t count = mub_array_get_at(by_word, i, &word, &length);
    if (length > MAX_WORD_BYTES) return -1;
    size += mub_stream_deflate_dword_length((uint32_t)length) + length;
    size += mub_stream_deflate_lword_length(count);
  }
  return size;
}

/* Writing does not grow a stream, so its final length is set first. */
static bool write_all(const word_index *index, const mub_array *by_word, mub_stream *out) {
  const int64_t start = out->length;
  const int64_t body = body_bytes(index, by_word);
  const int64_t end = start + HEADER_BYTES + body;
  if (body < 0 || !mub_stream_expand(out, end + CRC_BYTES)) return false;
  mub_stream_shrink(out, end + CRC_BYTES);

  int64_t position = start;
  mub_stream_set_buffer(out, &position, MAGIC, MAGIC_BYTES);
  mub_stream_set_lword(out, &position, body);
  mub_stream_deflate_lword(out, &position, index->total);
  mub_stream_deflate_lword(out, &position, (uint64_t)by_word->count);
  for (int64_t i = 0; i < by_word->count; i++) {
    const char *word;
    int64_t length;
    const uint64_t count = mub_array_get_at(by_word, i, &word, &length);
    mub_stream_deflate_dword(out, &position, (uint32_t)length);
    mub_stream_set_buffer(out, &position, word, length);
    mub_stream_deflate_lword(out, &position, count);
  }
  mub_stream_set_dword(out, &position, mub_stream_crc32(out->data + start, end - start));
  return true;
}

bool index_save(const word_index *index, mub_stream *out) {
  mub_array by_word;
  mub_array_init(&by_word, 0);
  const bool saved = index_sort_by_word(index, &by_word) && write_all(index, &by_word, out);
  mub_array_term(&by_word);
  return saved;
}

/* Whether the bytes are complete and undamaged. */
static mubdex_result check_frame(const mub_stream *in) {
  int64_t position = MAGIC_BYTES;
  if (in->length < HEADER_BYTES + CRC_BYTES) return RESULT_TRUNCATED;
  if (memcmp(in->data, MAGIC, MAGIC_BYTES) != 0) return RESULT_DAMAGED;
  const int64_t body = mub_stream_get_lword(in, &position);
  if (body > in->length - HEADER_BYTES - CRC_BYTES) return RESULT_TRUNCATED;
  if (body < in->length - HEADER_BYTES - CRC_BYTES) return RESULT_DAMAGED;
  position = in->length - CRC_BYTES;
  const uint32_t crc = mub_stream_get_dword(in, &position);
  return crc == mub_stream_crc32(in->data, in->length - CRC_BYTES) ? RESULT_OK : RESULT_DAMAGED;
}

/* Even with a valid checksum the content may be invalid: every step checks for the end. */
static mubdex_result read_words(word_index *index, const mub_stream *in) {
  int64_t position = HEADER_BYTES;
  const uint64_t total = (uint64_t)mub_stream_inflate_lword(in, &position);
  const int64_t vocabulary = mub_stream_inflate_lword(in, &position);
  for (int64_t i = 0; i < vocabulary; i++) {
    uint8_t *word;
    int64_t length = (int64_t)mub_stream_inflate_dword(in, &position);
    const int64_t wanted = length;
    mub_stream_get_buffer(in, &position, &word, &length);
    const int64_t count = mub_stream_inflate_lword(in, &position);
    if (length != wanted || length < 1 || count < 1) return RESULT_DAMAGED;
    if (!index_add(index, (const char *)word, length, (uint64_t)count)) return RESULT_NO_MEMORY;
  }
  const bool consistent =
      position == in->length && index->total == total && index_vocabulary(index) == vocabulary;
  return consistent ? RESULT_OK : RESULT_DAMAGED;
}

mubdex_result index_load(word_index *index, mub_stream *in) {
  const mubdex_result result = check_frame(in);
  if (result != RESULT_OK) return result;
  mub_stream_shrink(in, in->length - CRC_BYTES);
  return read_words(index, in);
}
