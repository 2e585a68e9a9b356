#include "report.h"

#include <stdio.h>
#include <string.h>

#include "answers.h"

enum { TOP_WORDS = 20 };

typedef struct word_ref {
  const char *text;
  int64_t length;
  uint64_t count;
} word_ref;

static word_ref word_at(const word_index *index, const mub_arrays *by_count, int64_t i) {
  const mub_hash_entry *entry = (const mub_hash_entry *)(uintptr_t)mub_arrays_get_at(by_count, i);
  const char *keys = (const char *)index->words.keys.data;
  return (word_ref){keys + entry->key_offset, entry->key_length, entry_stats(entry)->count};
}

static int64_t top_count(const mub_arrays *by_count) {
  return by_count->count < TOP_WORDS ? by_count->count : TOP_WORDS;
}

static double bytes_per_word(const word_index *index) {
  const int64_t words = index_vocabulary(index);
  return words == 0 ? 0 : (double)index_bytes(index) / (double)words;
}

static void append_fixed(mub_string *out, double number) {
  char digits[64];
  mub_string_append(out, digits, snprintf(digits, sizeof digits, "%.1f", number));
}

static void write_text(const word_index *index, const mub_arrays *by_count, const char *source,
                       double seconds, mub_string *out) {
  mub_string_append(out, source, -1);
  mub_string_append(out, "\n  words           ", -1);
  mub_string_append_long(out, (int64_t)index->total);
  mub_string_append(out, "\n  vocabulary      ", -1);
  mub_string_append_long(out, index_vocabulary(index));
  mub_string_append(out, "\n  longest chain   ", -1);
  mub_string_append_long(out, index_longest_chain(index));
  mub_string_append(out, " in ", -1);
  mub_string_append_long(out, index->words.buckets.count);
  mub_string_append(out, " buckets\n  bytes per word  ", -1);
  append_fixed(out, bytes_per_word(index));
  mub_string_append(out, "\n  time            ", -1);
  append_fixed(out, seconds * 1e3);
  mub_string_append(out, " ms\n\n", -1);
  for (int64_t i = 0; i < top_count(by_count); i++) {
    const word_ref word = word_at(index, by_count, i);
    append_column(out, word.count, 10);
    mub_string_append(out, "  ", -1);
    mub_string_append(out, word.text, word.length);
    mub_string_append_char(out, '\n');
  }
}

/* The bytes of the valid UTF-8 sequence at the start of `text`, 0 when there is none. */
static int64_t utf8_sequence(const char *text, int64_t length) {
  const unsigned char first = (unsigned char)text[0];
  const int64_t size = first < 0x80                    ? 1
                       : first >= 0xC2 && first < 0xE0 ? 2
                       : first >= 0xE0 && first < 0xF0 ? 3
                                                       : 4;
  if ((first >= 0x80 && first < 0xC2) || first > 0xF4 || size > length) return 0;
  for (int64_t i = 1; i < size; i++) {
    if (((unsigned char)text[i] & 0xC0) != 0x80) return 0;
  }
  const unsigned char second = size > 1 ? (unsigned char)text[1] : 0;
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool beyond = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
  return overlong || beyond ? 0 : size;
}

/* A JSON string. What is not UTF-8 becomes the replacement character. */
static void append_json_string(mub_string *out, const char *text, int64_t length) {
  mub_string_append_char(out, '"');
  for (int64_t i = 0; i < length;) {
    const int64_t size = utf8_sequence(text + i, length - i);
    const unsigned char byte = (unsigned char)text[i];
    if (size == 0) {
      mub_string_append(out, "\\ufffd", -1);
    } else if (byte < 0x20) {
      char escape[8];
      mub_string_append(out, escape, snprintf(escape, sizeof escape, "\\u%04x", byte));
    } else {
      if (byte == '"' || byte == '\\') mub_string_append_char(out, '\\');
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

static void write_json(const word_index *index, const mub_arrays *by_count, const char *source,
                       double seconds, mub_string *out) {
  mub_string_append(out, "{\"source\": ", -1);
  append_json_string(out, source, (int64_t)strlen(source));
  mub_string_append(out, ", ", -1);
  append_json_number(out, "words", (int64_t)index->total);
  append_json_number(out, "vocabulary", index_vocabulary(index));
  append_json_number(out, "longest_chain", index_longest_chain(index));
  append_json_number(out, "buckets", index->words.buckets.count);
  mub_string_append(out, "\"bytes_per_word\": ", -1);
  mub_string_append_double(out, bytes_per_word(index));
  mub_string_append(out, ", \"seconds\": ", -1);
  mub_string_append_double(out, seconds);
  mub_string_append(out, ", \"top\": [", -1);
  for (int64_t i = 0; i < top_count(by_count); i++) {
    const word_ref word = word_at(index, by_count, i);
    mub_string_append(out, i == 0 ? "{" : ", {", -1);
    append_json_number(out, "count", (int64_t)word.count);
    mub_string_append(out, "\"word\": ", -1);
    append_json_string(out, word.text, word.length);
    mub_string_append_char(out, '}');
  }
  mub_string_append(out, "]}\n", -1);
}

/* Makes room for a whole report, so that none of the many appends can fail. */
static bool reserve_report(const word_index *index, const mub_arrays *by_count, const char *source,
                           mub_string *out) {
  const int64_t fixed_text = 1024;
  const int64_t escaped = 6; /* the most that a byte takes in JSON */
  int64_t bytes = fixed_text + escaped * (int64_t)strlen(source);
  for (int64_t i = 0; i < top_count(by_count); i++) {
    bytes += 64 + escaped * word_at(index, by_count, i).length;
  }
  return mub_string_expand(out, bytes) != 0;
}

typedef void (*writer_fn)(const word_index *, const mub_arrays *, const char *, double, mub_string *);

static bool report(const word_index *index, const char *source, double seconds, mub_string *out,
                   writer_fn write) {
  mub_arrays by_count;
  mub_arrays_init(&by_count, 0);
  const bool ready = index_sort_by_count(index, &by_count) && reserve_report(index, &by_count, source, out);
  if (ready) write(index, &by_count, source, seconds, out);
  mub_arrays_term(&by_count);
  return ready;
}

bool report_text(const word_index *index, const char *source, double seconds, mub_string *out) {
  return report(index, source, seconds, out, write_text);
}

bool report_json(const word_index *index, const char *source, double seconds, mub_string *out) {
  return report(index, source, seconds, out, write_json);
}
