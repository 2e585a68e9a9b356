#include "outline.h"

bool outline_init(outline *o) {
  mub_tree_init(&o->headings, 1, 1);
  if (o->headings.entry_pool == NULL || o->headings.value_pool == NULL) return false;
  o->headings.value_pool->block_size = sizeof(heading);
  return true;
}

void outline_term(outline *o) { mub_tree_term(&o->headings); }

const heading *outline_heading(const mub_tree_entry *entry) {
  return (const heading *)(uintptr_t)entry->value;
}

static bool is_digit(char c) { return c >= '0' && c <= '9'; }

/* The length of "2." or "2.1" or "2.1." at the start of a line, or 0. */
static int64_t number_length(const mub_char *line) {
  int64_t length = 0;
  int dots = 0;
  while (length < line->length && is_digit(line->data[length])) {
    while (length < line->length && is_digit(line->data[length])) length++;
    if (length == line->length || line->data[length] != '.') break;
    length++;
    dots++;
  }
  return dots > 0 ? length : 0;
}

static bool parse_heading(mub_char line, heading *out) {
  mub_char_trim(&line);
  const int64_t length = number_length(&line);
  out->number = (mub_char){line.data, length};
  out->title = (mub_char){line.data + length + 1, line.length - length - 1};
  if (length == 0 || out->title.length < 1 || line.data[length] != ' ') return false;
  if (out->number.data[length - 1] == '.') out->number.length--;
  return out->title.data[0] >= 'A' && out->title.data[0] <= 'Z';
}

/* Whether the upper number is a prefix of the lower one, in whole parts. */
static bool is_above(const mub_char *upper, const mub_char *lower) {
  return lower->length > upper->length && lower->data[upper->length] == '.' &&
         mub_mem_cmp(upper->data, upper->length, lower->data, upper->length) == 0;
}

static mub_tree_entry *add_heading(outline *o, mub_tree_entry *before, const heading *content) {
  mub_tree *tree = &o->headings;
  mub_tree_entry *parent = before;
  while (parent != &tree->root && !is_above(&outline_heading(parent)->number, &content->number)) {
    parent = parent->parent;
  }
  mub_tree_entry *entry = mub_tree_entry_new(tree);
  heading *value = mub_pool_new(tree->value_pool);
  if (entry == NULL || value == NULL) return NULL;
  *value = *content;
  entry->value = (uint64_t)(uintptr_t)value;
  mub_tree_entry_append(tree, parent, entry);
  return entry;
}

bool outline_fill(outline *o, const corpus *texts) {
  mub_tree_entry *last = &o->headings.root;
  for (int64_t line = 0; line < corpus_line_count(texts) && last != NULL; line++) {
    heading content = {{NULL, 0}, {NULL, 0}, line};
    if (parse_heading(corpus_line(texts, line), &content)) last = add_heading(o, last, &content);
  }
  return last != NULL;
}
