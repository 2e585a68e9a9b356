/* Write framed messages with a checksum, and detect damaged ones.
 *
 *   length   32 bits, of the payload      payload   id (packed), name (16 bits of length, bytes)
 *   crc      32 bits, of the payload
 *
 * Writing does not grow a stream, so its final length is set first. Reading past the end is safe: missing
 * bytes read as 0 or -1, so checking the position once, at the end, is enough. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

static int write_message(mub_stream *file, uint64_t id, const mub_string *name) {
  const int64_t payload = mub_stream_deflate_lword_length(id) + 2 + name->length;
  const int64_t start = file->length;
  if (name->length > UINT16_MAX || !mub_stream_expand(file, start + 8 + payload)) return 0;
  mub_stream_shrink(file, start + 8 + payload); /* sets the length */
  int64_t position = start + 8;
  mub_stream_deflate_lword(file, &position, id);
  mub_stream_set_string(file, &position, name);
  position = start;
  mub_stream_set_dword(file, &position, (uint32_t)payload);
  mub_stream_set_dword(file, &position, mub_stream_crc32(file->data + start + 8, payload));
  return 1;
}

/* Returns 1 and moves to the end of the message, or returns 0. */
static int read_message(const mub_stream *file, int64_t *position, uint64_t *id, mub_string *name) {
  const int64_t payload = mub_stream_get_dword(file, position);
  const uint32_t crc = mub_stream_get_dword(file, position);
  const int64_t end = *position + payload;
  if (end > file->length || mub_stream_crc32(file->data + *position, payload) != crc) return 0;
  *id = (uint64_t)mub_stream_inflate_lword(file, position);
  mub_stream_get_string(file, position, name);
  return *position == end;
}

static int print_all(const char *title, const mub_stream *file) {
  mub_string name;
  mub_string_init(&name);
  if (!mub_string_expand(&name, file->length)) return 0; /* so that reading does not allocate */
  printf("%s, %" PRId64 " bytes\n", title, file->length);
  for (int64_t position = 0; position < file->length;) {
    const int64_t start = position;
    uint64_t id;
    if (!read_message(file, &position, &id, &name)) {
      printf("  damaged at byte %" PRId64 "\n", start);
      break;
    }
    printf("  %" PRIu64 " %s\n", id, name.data);
  }
  mub_string_term(&name);
  return 1;
}

int main(void) {
  static const char *const names[] = {"bolt", "nut", "washer"};
  static const uint64_t ids[] = {7, 90000, UINT64_MAX};
  mub_stream file;
  mub_string name;
  mub_stream_init(&file);
  mub_string_init(&name);
  int done = 1;
  for (int i = 0; done && i < 3; i++)
    done = mub_string_copy(&name, names[i], -1) && write_message(&file, ids[i], &name);
  done = done && print_all("as written", &file);
  mub_stream_set_at(&file, 24, mub_stream_get_at(&file, 24) ^ 0x20);
  done = done && print_all("one bit changed", &file);
  mub_stream_left(&file, 20);
  done = done && print_all("truncated", &file);
  mub_string_term(&name);
  mub_stream_term(&file);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
