#define _POSIX_C_SOURCE 200809L

#include "corpus.h"

#include <string.h>
#include <sys/stat.h>

bool corpus_init(corpus *texts) {
  mub_stream_init(&texts->bytes);
  mub_arrayx_init(&texts->line_ends, 0);
  mub_array_init(&texts->texts, 0);
  mub_hasht_init(&texts->files, 1, 0);
  return texts->files.entry_pool != NULL;
}

void corpus_term(corpus *texts) {
  mub_hasht_term(&texts->files);
  mub_array_term(&texts->texts);
  mub_arrayx_term(&texts->line_ends);
  mub_stream_term(&texts->bytes);
}

/* The key of a file is its device and inode, which are the same under all its names. */
typedef struct file_key {
  uint32_t words[4];
} file_key;

static file_key key_of(const struct stat *status) {
  const uint64_t device = (uint64_t)status->st_dev;
  const uint64_t inode = (uint64_t)status->st_ino;
  return (file_key){{(uint32_t)device, (uint32_t)(device >> 32), (uint32_t)inode, (uint32_t)(inode >> 32)}};
}

bool corpus_has_file(const corpus *texts, const char *name) {
  struct stat status;
  if (stat(name, &status) != 0) return false;
  const file_key key = key_of(&status);
  return mub_hasht_find(&texts->files, key.words) != 0;
}

/* Appends the ends of the lines from `start` on. */
static bool cut_lines(corpus *texts, int64_t start) {
  const uint64_t text = (uint64_t)texts->texts.count - 1;
  mub_char rest = {(char *)texts->bytes.data + start, texts->bytes.length - start};
  int64_t end = start;
  for (int64_t size; (size = mub_char_find_char(&rest, '\n')) >= 0; end++) {
    end += size;
    rest.data += size + 1;
    rest.length -= size + 1;
    const int64_t count = texts->line_ends.count;
    mub_arrayx_append(&texts->line_ends, (uint64_t)end, text);
    if (texts->line_ends.count == count) return false;
  }
  return true;
}

/* The capacity is reserved first, so that appending cannot fail. */
static bool add_text(corpus *texts, const char *name, const file_key *key) {
  mub_array *names = &texts->texts;
  const int64_t length = (int64_t)strlen(name);
  if (!mub_array_expand(names, names->count + 1)) return false;
  if (!mub_stream_expand(&names->keys, names->keys.length + length)) return false;
  mub_array_append(names, name, length, (uint64_t)corpus_line_count(texts));
  return mub_hasht_insert(&texts->files, key->words, (uint64_t)names->count) != 0;
}

mubdex_result corpus_add_file(corpus *texts, const char *name, FILE *file) {
  struct stat status;
  if (fstat(fileno(file), &status) != 0) return RESULT_READ_ERROR;
  const file_key key = key_of(&status);
  if (mub_hasht_find(&texts->files, key.words)) return RESULT_KNOWN;
  return add_text(texts, name, &key) ? RESULT_OK : RESULT_NO_MEMORY;
}

/* Ends the last line if the text does not. */
static bool end_last_line(mub_stream *bytes, int64_t start) {
  if (bytes->length == start || bytes->data[bytes->length - 1] == '\n') return true;
  if (!mub_stream_expand(bytes, bytes->length + 1)) return false;
  mub_stream_append(bytes, "\n", 1);
  return true;
}

mubdex_result corpus_read(corpus *texts, reader *in) {
  const int64_t start = texts->bytes.length;
  mubdex_result result = RESULT_OK;
  while (result == RESULT_OK && !reader_at_end(in)) result = reader_next(in, &texts->bytes);
  if (result != RESULT_OK) return result;
  return end_last_line(&texts->bytes, start) && cut_lines(texts, start) ? RESULT_OK : RESULT_NO_MEMORY;
}

int64_t corpus_line_count(const corpus *texts) { return texts->line_ends.count; }

static int64_t line_end(const corpus *texts, int64_t line) {
  uint64_t end;
  mub_arrayx_get_at(&texts->line_ends, line, &end);
  return (int64_t)end;
}

mub_char corpus_line(const corpus *texts, int64_t line) {
  const int64_t start = line == 0 ? 0 : line_end(texts, line - 1) + 1;
  return (mub_char){(char *)texts->bytes.data + start, line_end(texts, line) - start};
}

/* The name of a line's text, and the number of the line in it, from 1. */
static int64_t line_place(const corpus *texts, int64_t line, const char **name, int64_t *name_length) {
  uint64_t end;
  const uint64_t text = mub_arrayx_get_at(&texts->line_ends, line, &end);
  const uint64_t first_line = mub_array_get_at(&texts->texts, (int64_t)text, name, name_length);
  return line - (int64_t)first_line + 1;
}

int64_t corpus_line_number(const corpus *texts, int64_t line) {
  const char *name;
  int64_t name_length;
  return line_place(texts, line, &name, &name_length);
}

bool corpus_append_line(const corpus *texts, int64_t line, mub_string *out) {
  const char *name;
  int64_t name_length;
  const int64_t number = line_place(texts, line, &name, &name_length);
  const mub_char content = corpus_line(texts, line);
  const int64_t marks_and_number = 3 + 20;
  /* The capacity is reserved first, so that no append can fail. */
  if (!mub_string_expand(out, out->length + name_length + content.length + marks_and_number)) return false;
  if (texts->texts.count > 1) {
    mub_string_append(out, name, name_length);
    mub_string_append_char(out, ':');
  }
  mub_string_append_long(out, number);
  mub_string_append_char(out, ':');
  mub_string_append(out, content.data, content.length);
  mub_string_append_char(out, '\n');
  return true;
}
