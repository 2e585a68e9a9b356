#include "answers.h"

#include <string.h>

/* The padding goes in front of what was printed. */
void append_column(mub_string *out, uint64_t number, int64_t width) {
  mub_string digits;
  mub_string_init(&digits);
  mub_string_append_long(&digits, (int64_t)number);
  for (int64_t i = digits.length; i < width; i++) mub_string_append_char(out, ' ');
  mub_string_append(out, digits.data, digits.length);
  mub_string_term(&digits);
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

/* Whether a word lies behind the words that begin with `last`. */
static bool is_behind(const mub_char *word, const mub_string *last) {
  const int64_t length = word->length < last->length ? word->length : last->length;
  return mub_mem_cmp(word->data, length, last->data, last->length) > 0;
}

static bool append_word(const mub_char *word, uint64_t count, mub_string *out) {
  if (!mub_string_expand(out, out->length + word->length + 32)) return false;
  append_column(out, count, 10);
  mub_string_append(out, "  ", -1);
  mub_string_append(out, word->data, word->length);
  mub_string_append_char(out, '\n');
  return true;
}

static bool append_words(const vocabulary *words, const mub_string *first, const mub_string *last,
                         mub_string *out) {
  for (const mub_btree_node *node = vocabulary_first(words, first); node != NULL;
       node = mub_btree_node_next(&words->words, node)) {
    const mub_char word = vocabulary_word(words, node);
    const word_stats *stats = (const word_stats *)(uintptr_t)node->value;
    if (is_behind(&word, last)) break;
    if (!append_word(&word, stats->count, out)) return false;
  }
  return true;
}

bool answer_words(const vocabulary *words, const mub_char *first, const mub_char *last, mub_string *out) {
  mub_string from, through;
  mub_string_init(&from);
  mub_string_init(&through);
  const bool done = fold_word(first->data, first->length, &from) &&
                    fold_word(last->data, last->length, &through) &&
                    append_words(words, &from, &through, out);
  mub_string_term(&through);
  mub_string_term(&from);
  return done;
}

static bool append_heading(const heading *content, int64_t depth, int64_t line_number, mub_string *out) {
  const int64_t indent = 2 * (depth - 1);
  if (!mub_string_expand(out, out->length + indent + content->number.length + content->title.length + 32))
    return false;
  append_column(out, (uint64_t)line_number, 6);
  for (int64_t i = 0; i < indent + 2; i++) mub_string_append_char(out, ' ');
  mub_string_append(out, content->number.data, content->number.length);
  mub_string_append(out, "  ", -1);
  mub_string_append(out, content->title.data, content->title.length);
  mub_string_append_char(out, '\n');
  return true;
}

static int64_t depth_of(const mub_tree_entry *entry) {
  int64_t depth = 0;
  for (; entry->parent != NULL; entry = entry->parent) depth++;
  return depth;
}

bool answer_outline(const outline *headings, const corpus *texts, mub_string *out) {
  const mub_tree_entry *root = &headings->headings.root;
  for (const mub_tree_entry *entry = mub_tree_entry_iter_next(root, root); entry != NULL;
       entry = mub_tree_entry_iter_next(root, entry)) {
    const heading *content = outline_heading(entry);
    const int64_t number = corpus_line_number(texts, content->line);
    if (!append_heading(content, depth_of(entry), number, out)) return false;
  }
  return true;
}
