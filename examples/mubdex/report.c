#include "report.h"

#include <stdio.h>
#include <string.h>

#include "answers.h"
#include "unicode.h"

enum { TOP_WORDS = 20 };

typedef struct word_ref {
  mub_char text; /* a view of the index */
  uint64_t count;
} word_ref;

static word_ref word_at(const word_index *index, const mub_arrays *top, int64_t i) {
  const mub_hash_entry *entry = (const mub_hash_entry *)(uintptr_t)mub_arrays_get_at(top, i);
  char *keys = (char *)index->words.keys.data;
  return (word_ref){{keys + entry->key_offset, entry->key_length}, entry_count(index, entry)};
}

static double bytes_per_word(const word_index *index) {
  const int64_t words = index_vocabulary(index);
  return words == 0 ? 0 : (double)index_bytes(index) / (double)words;
}

static bool write_words(const word_index *index, const mub_arrays *top, mub_string *line, mub_string *out) {
  for (int64_t i = 0; i < top->count; i++) {
    const word_ref word = word_at(index, top, i);
    format_word(line, &word.text, word.count);
    if (!append_line(out, line)) return false;
  }
  return true;
}

static bool write_text(const word_index *index, const mub_arrays *top, const report_options *options,
                       mub_string *out) {
  mub_string line;
  mub_string_init(&line);
  mub_string_format(&line,
                    "%s\n"
                    "  words           %llu\n"
                    "  vocabulary      %lld\n"
                    "  longest chain   %lld in %lld buckets\n"
                    "  bytes per word  %.1f\n"
                    "  time            %.1f ms\n\n",
                    options->source, (unsigned long long)index->total, (long long)index_vocabulary(index),
                    (long long)index_longest_chain(index), (long long)index->words.buckets.count,
                    bytes_per_word(index), options->seconds * 1e3);
  const bool written = append_line(out, &line) && write_words(index, top, &line, out);
  mub_string_term(&line);
  return written;
}

/* Replaces the first two question marks of the template by a word and its count. */
static bool write_template(const word_index *index, const mub_arrays *top, const report_options *options,
                           mub_string *out) {
  mub_string line, word, count;
  bool written = true;
  mub_string_init(&line);
  mub_string_init(&word);
  mub_string_init(&count);
  for (int64_t i = 0; i < top->count && written; i++) {
    const word_ref ref = word_at(index, top, i);
    mub_string_format(&line, "%s\n", options->pattern);
    mub_string_copy(&word, ref.text.data, ref.text.length);
    mub_string_copy_long(&count, (int64_t)ref.count);
    mub_string_match(&line, "?", word.data, count.data, NULL);
    written = !mub_string_is_empty(&word) && !mub_string_is_empty(&count) && append_line(out, &line);
  }
  mub_string_term(&count);
  mub_string_term(&word);
  mub_string_term(&line);
  return written;
}

/* A JSON string. Invalid UTF-8 becomes the replacement character. */
static void append_json_string(mub_string *out, const char *text, int64_t length) {
  mub_string_append_char(out, '"');
  for (int64_t i = 0; i < length;) {
    uint32_t code;
    const int64_t size = utf8_decode(text + i, length - i, &code);
    if (size == 0 || code < 0x20) {
      char escape[8];
      mub_string_append(out, escape, snprintf(escape, sizeof escape, "\\u%04x", code));
    } else {
      if (code == '"' || code == '\\') mub_string_append_char(out, '\\');
      mub_string_append(out, text + i, size);
    }
    i += size == 0 ? 1 : size;
  }
  mub_string_append_char(out, '"');
}

static void append_json_number(mub_string *out, const char *name, int64_t number) {
  mub_string_append_char(out, '"');
  mub_string_append(out, name, -1);
  mub_string_append(out, "\": ", -1);
  mub_string_append_long(out, number);
  mub_string_append(out, ", ", -1);
}

/* Reserves capacity for a whole object, so that none of the many appends can fail. */
static bool reserve_json(const word_index *index, const mub_arrays *top, const char *source,
                         mub_string *out) {
  const int64_t fixed_text = 1024;
  const int64_t escaped = 6; /* the longest form of a byte */
  int64_t bytes = fixed_text + escaped * (int64_t)strlen(source);
  for (int64_t i = 0; i < top->count; i++) {
    bytes += 64 + escaped * word_at(index, top, i).text.length;
  }
  return mub_string_expand(out, bytes) != 0;
}

static bool write_json(const word_index *index, const mub_arrays *top, const report_options *options,
                       mub_string *out) {
  if (!reserve_json(index, top, options->source, out)) return false;
  mub_string_append(out, "{\"source\": ", -1);
  append_json_string(out, options->source, (int64_t)strlen(options->source));
  mub_string_append(out, ", ", -1);
  append_json_number(out, "words", (int64_t)index->total);
  append_json_number(out, "vocabulary", index_vocabulary(index));
  append_json_number(out, "longest_chain", index_longest_chain(index));
  append_json_number(out, "buckets", index->words.buckets.count);
  mub_string_append(out, "\"bytes_per_word\": ", -1);
  mub_string_append_double(out, bytes_per_word(index));
  mub_string_append(out, ", \"seconds\": ", -1);
  mub_string_append_double(out, options->seconds);
  mub_string_append(out, ", \"top\": [", -1);
  for (int64_t i = 0; i < top->count; i++) {
    const word_ref word = word_at(index, top, i);
    mub_string_append(out, i == 0 ? "{" : ", {", -1);
    append_json_number(out, "count", (int64_t)word.count);
    mub_string_append(out, "\"word\": ", -1);
    append_json_string(out, word.text.data, word.text.length);
    mub_string_append_char(out, '}');
  }
  mub_string_append(out, "]}\n", -1);
  return true;
}

typedef bool (*writer_fn)(const word_index *, const mub_arrays *, const report_options *, mub_string *);

static bool report(const word_index *index, const report_options *options, mub_string *out, writer_fn write) {
  mub_arrays top;
  mub_arrays_init(&top, 0);
  const bool done = index_top(index, TOP_WORDS, &top) && write(index, &top, options, out);
  mub_arrays_term(&top);
  return done;
}

bool report_text(const word_index *index, const report_options *options, mub_string *out) {
  return report(index, options, out, write_text);
}

bool report_json(const word_index *index, const report_options *options, mub_string *out) {
  return report(index, options, out, write_json);
}

bool report_template(const word_index *index, const report_options *options, mub_string *out) {
  return report(index, options, out, write_template);
}
