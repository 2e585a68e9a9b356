#include "answers.h"

#include <string.h>

bool append_line(mub_string *out, const mub_string *line) {
  const int64_t length = out->length;
  mub_string_append(out, line->data, line->length);
  return !mub_string_is_empty(line) && out->length == length + line->length;
}

bool answer_word(const word_index *index, const corpus *texts, const char *word, mub_string *out) {
  const word_stats *stats = index_find(index, word, (int64_t)strlen(word));
  for (int64_t i = 0; stats != NULL && i < stats->lines.count; i++) {
    if (!corpus_append_line(texts, (int64_t)mub_arrayt_get_at(&stats->lines, i), out)) return false;
  }
  return true;
}

bool answer_lines(const mub_bits *lines, const corpus *texts, mub_string *out) {
  for (int64_t line = 0; line < corpus_line_count(texts); line++) {
    if (mub_bits_find(lines, (uint32_t)line) != 0 && !corpus_append_line(texts, line, out)) return false;
  }
  return true;
}

/* Whether a word sorts after all words that begin with `last`. */
static bool is_past(const mub_char *word, const mub_string *last) {
  const int64_t length = word->length < last->length ? word->length : last->length;
  return mub_mem_cmp(word->data, length, last->data, last->length) > 0;
}

void format_word(mub_string *line, const mub_char *word, uint64_t count) {
  mub_string_format(line, "%10llu  %.*s\n", (unsigned long long)count, (int)word->length, word->data);
}

static bool append_words(const vocabulary *words, const mub_string *first, const mub_string *last,
                         mub_string *line, mub_string *out) {
  mub_btree_cursor at;
  for (const mub_btree_node *node = mub_btree_cursor_seek(&at, &words->words, first->data, first->length);
       node != NULL; node = mub_btree_cursor_next(&at)) {
    const mub_char word = vocabulary_word(words, node);
    if (is_past(&word, last)) break;
    format_word(line, &word, node->value);
    if (!append_line(out, line)) return false;
  }
  return true;
}

bool answer_words(const vocabulary *words, const mub_char *first, const mub_char *last, mub_string *out) {
  mub_string from, through, line;
  mub_string_init(&from);
  mub_string_init(&through);
  mub_string_init(&line);
  const bool done = fold_word(first->data, first->length, &from) &&
                    fold_word(last->data, last->length, &through) &&
                    append_words(words, &from, &through, &line, out);
  mub_string_term(&line);
  mub_string_term(&through);
  mub_string_term(&from);
  return done;
}

static int depth_of(const mub_tree_entry *entry) {
  int depth = 0;
  for (; entry->parent != NULL; entry = entry->parent) depth++;
  return depth;
}

static bool append_headings(const outline *headings, const corpus *texts, mub_string *line, mub_string *out) {
  MUB_EACH_TREE_BELOW(&headings->headings.root, entry) {
    const heading *content = outline_heading(entry);
    mub_string_format(line, "%6lld%*s%.*s  %.*s\n", (long long)corpus_line_number(texts, content->line),
                      2 * depth_of(entry), "", (int)content->number.length, content->number.data,
                      (int)content->title.length, content->title.data);
    if (!append_line(out, line)) return false;
  }
  return true;
}

bool answer_outline(const outline *headings, const corpus *texts, mub_string *out) {
  mub_string line;
  mub_string_init(&line);
  const bool done = append_headings(headings, texts, &line, out);
  mub_string_term(&line);
  return done;
}
