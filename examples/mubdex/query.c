#include "query.h"

#include <string.h>

/* Operators by increasing precedence. */
typedef enum token_kind {
  TOKEN_OPEN,
  TOKEN_OR,
  TOKEN_AND,
  TOKEN_NOT,
  TOKEN_WORD,
  TOKEN_CLOSE,
  TOKEN_END,
  TOKEN_UNKNOWN
} token_kind;

typedef struct token {
  token_kind kind;
  mub_char text;
} token;

/* A node of the expression; a block of the tree's value pool. */
typedef struct query_node {
  token_kind kind;
  mub_char word;           /* in lower case; empty for operators */
  const word_stats *stats; /* of the word; NULL if it does not occur */
  mub_bits lines;
} query_node;

/* The two stacks of operator-precedence parsing. An operator is a word with its kind in the low byte and its
 * column above. */
typedef struct parser {
  query *query;
  const char *text;
  mub_char rest;
  mub_arrays operators; /* those without their last operand, and open parentheses */
  mub_arrays operands;  /* the addresses of complete expressions */
} parser;

bool query_init(query *q) {
  mub_bitree_init(&q->tree, 1, 1);
  mub_string_init(&q->folded);
  mub_arrays_init(&q->words, 0);
  q->expected = NULL;
  q->fault = 0;
  if (q->tree.entry_pool == NULL || q->tree.value_pool == NULL) return false;
  q->tree.value_pool->block_size = sizeof(query_node);
  return true;
}

static query_node *node_at(uint64_t value) { return (query_node *)(uintptr_t)value; }

static void release_node(uint64_t value) { mub_bits_term(&node_at(value)->lines); }

void query_term(query *q) {
  mub_bitree_free_all(&q->tree, release_node);
  mub_bitree_term(&q->tree);
  mub_arrays_term(&q->words);
  mub_string_term(&q->folded);
}

/* ---- tokens */

static token_kind kind_of(const mub_char *word) {
  if (mub_char_compare(word, "AND", -1) == 0) return TOKEN_AND;
  if (mub_char_compare(word, "OR", -1) == 0) return TOKEN_OR;
  return mub_char_compare(word, "NOT", -1) == 0 ? TOKEN_NOT : TOKEN_WORD;
}

static token next_token(parser *p) {
  mub_char_trim(&p->rest);
  token next = {TOKEN_END, {p->rest.data, p->rest.length < 1 ? 0 : 1}};
  if (next.text.length == 0) return next;
  const char first = p->rest.data[0];
  next.kind = first == '(' ? TOKEN_OPEN : first == ')' ? TOKEN_CLOSE : TOKEN_UNKNOWN;
  const int64_t word_length = word_at_start(&p->rest);
  if (word_length > 0) {
    next.text.length = word_length;
    next.kind = kind_of(&next.text);
  }
  p->rest.data += next.text.length;
  p->rest.length -= next.text.length;
  return next;
}

static int64_t column_of(const parser *p, const token *at) { return at->text.data - p->text + 1; }

static bool fail_at(parser *p, int64_t column, const char *expected) {
  p->query->fault = column;
  p->query->expected = expected;
  return false;
}

/* ---- stacks */

static bool push(mub_arrays *stack, uint64_t item) {
  const int64_t count = stack->count;
  mub_arrays_append(stack, item);
  return stack->count > count;
}

static uint64_t pop(mub_arrays *stack) { return mub_arrays_remove_at(stack, stack->count - 1); }

static mub_bitree_entry *pop_operand(parser *p) { return (mub_bitree_entry *)(uintptr_t)pop(&p->operands); }

static token_kind top_operator(const parser *p) {
  return (token_kind)(mub_arrays_get_last(&p->operators) & 0xFF);
}

static bool push_operator(parser *p, token_kind kind, const token *at) {
  return push(&p->operators, (uint64_t)column_of(p, at) << 8 | (uint64_t)kind);
}

/* ---- the tree, from its leaves upward */

static bool push_entry(parser *p, token_kind kind, mub_char word, mub_bitree_entry *left,
                       mub_bitree_entry *right) {
  mub_bitree *tree = &p->query->tree;
  mub_bitree_entry *entry = mub_bitree_entry_new(tree);
  query_node *node = mub_pool_new(tree->value_pool);
  if (entry == NULL || node == NULL) return false;
  node->kind = kind;
  node->word = word;
  node->stats = NULL;
  mub_bits_init(&node->lines);
  entry->value = (uint64_t)(uintptr_t)node;
  mub_bitree_entry_add(tree, entry, -1, left);
  mub_bitree_entry_add(tree, entry, 1, right);
  if (kind == TOKEN_WORD && !push(&p->query->words, entry->value)) return false;
  return push(&p->operands, (uint64_t)(uintptr_t)entry);
}

static bool push_word(parser *p, const token *next) {
  char *folded = p->query->folded.data + (next->text.data - p->text);
  return push_entry(p, TOKEN_WORD, (mub_char){folded, next->text.length}, NULL, NULL);
}

/* Links the top operator to its operands. */
static bool reduce(parser *p) {
  const token_kind kind = (token_kind)(pop(&p->operators) & 0xFF);
  const mub_char no_word = {NULL, 0};
  mub_bitree_entry *last = pop_operand(p);
  return kind == TOKEN_NOT ? push_entry(p, kind, no_word, last, NULL)
                           : push_entry(p, kind, no_word, pop_operand(p), last);
}

static bool reduce_while_binding(parser *p, token_kind kind) {
  while (p->operators.count > 0 && top_operator(p) >= kind) {
    if (!reduce(p)) return false;
  }
  return true;
}

static bool close_parenthesis(parser *p, const token *at) {
  if (!reduce_while_binding(p, TOKEN_OR)) return false;
  if (p->operators.count == 0) return fail_at(p, column_of(p, at), "an open parenthesis before this one");
  pop(&p->operators);
  return true;
}

/* The start of an operand; the last token may also be one before which an AND is implied. */
static bool take_operand(parser *p, const token *next, bool *wants_operand) {
  *wants_operand = next->kind != TOKEN_WORD;
  switch (next->kind) {
    case TOKEN_WORD:
      return push_word(p, next);
    case TOKEN_OPEN:
    case TOKEN_NOT:
      return push_operator(p, next->kind, next);
    default:
      return fail_at(p, column_of(p, next), "a word, NOT or a parenthesis");
  }
}

/* After an operand. */
static bool take_operator(parser *p, const token *next, bool *wants_operand) {
  switch (next->kind) {
    case TOKEN_CLOSE:
      return close_parenthesis(p, next);
    case TOKEN_UNKNOWN:
      return fail_at(p, column_of(p, next), "AND, OR, NOT, a word or a parenthesis");
    case TOKEN_OR:
    case TOKEN_AND:
      *wants_operand = true;
      return reduce_while_binding(p, next->kind) && push_operator(p, next->kind, next);
    default:
      return reduce_while_binding(p, TOKEN_AND) && push_operator(p, TOKEN_AND, next) &&
             take_operand(p, next, wants_operand);
  }
}

static bool finish(parser *p) {
  if (!reduce_while_binding(p, TOKEN_OR)) return false;
  if (p->operators.count > 0) {
    return fail_at(p, (int64_t)(mub_arrays_get_last(&p->operators) >> 8), "an end to this parenthesis");
  }
  mub_bitree_entry_add(&p->query->tree, &p->query->tree.root, -1, pop_operand(p));
  return true;
}

static bool parse(parser *p) {
  bool wants_operand = true;
  for (;;) {
    const token next = next_token(p);
    if (next.kind == TOKEN_END && !wants_operand) return finish(p);
    if (!(wants_operand ? take_operand : take_operator)(p, &next, &wants_operand)) return false;
  }
}

bool query_parse(query *q, const char *text) {
  parser p = {q, text, {(char *)(uintptr_t)text, (int64_t)strlen(text)}, {0}, {0}};
  mub_arrays_init(&p.operators, 0);
  mub_arrays_init(&p.operands, 0);
  const bool parsed = fold_word(text, p.rest.length, &q->folded) && parse(&p);
  mub_arrays_term(&p.operands);
  mub_arrays_term(&p.operators);
  return parsed;
}

/* ---- answers: every entry gets the set of its lines, operands before their operator */

/* Looks up all words in one call, so that the look-ups wait for memory together. */
static bool find_words(const query *q, const word_index *index) {
  const int64_t count = q->words.count;
  const void **words = mub_malloc((uint64_t)count * sizeof *words);
  int64_t *lengths = mub_malloc((uint64_t)count * sizeof *lengths);
  uint64_t *values = mub_malloc((uint64_t)count * sizeof *values);
  const bool has_memory = words != NULL && lengths != NULL && values != NULL;
  for (int64_t i = 0; has_memory && i < count; i++) {
    const query_node *node = node_at(mub_arrays_get_at(&q->words, i));
    words[i] = node->word.data;
    lengths[i] = node->word.length;
  }
  if (has_memory) mub_hash_get_many(&index->words, words, lengths, count, values);
  for (int64_t i = 0; has_memory && i < count; i++) {
    node_at(mub_arrays_get_at(&q->words, i))->stats = index_stats(values[i]);
  }
  mub_free(values);
  mub_free(lengths);
  mub_free(words);
  return has_memory;
}

static void add_lines(query_node *node) {
  const word_stats *stats = node->stats;
  for (int64_t i = 0; stats != NULL && i < stats->lines.count; i++) {
    mub_bits_insert(&node->lines, (uint32_t)mub_arrayt_get_at(&stats->lines, i), 1);
  }
}

static void combine(query_node *node, const mub_bits *left, const mub_bits *right) {
  uint8_t *out = node->lines.data;
  const token_kind kind = node->kind;
  for (uint32_t i = 0; i < node->lines.size; i++) {
    out[i] = (uint8_t)(kind == TOKEN_NOT   ? ~left->data[i]
                       : kind == TOKEN_AND ? left->data[i] & right->data[i]
                                           : left->data[i] | right->data[i]);
  }
}

/* All sets of a query have the same size, one bit per line. */
static bool answer_entry(const mub_bitree_entry *entry, uint32_t bytes) {
  query_node *node = node_at(entry->value);
  if (!mub_bits_expand(&node->lines, bytes)) return false;
  if (node->kind == TOKEN_WORD) {
    add_lines(node);
  } else {
    const mub_bitree_entry *right = entry->right != NULL ? entry->right : entry->left;
    combine(node, &node_at(entry->left->value)->lines, &node_at(right->value)->lines);
  }
  return true;
}

static mub_bitree_entry *first_operand(mub_bitree_entry *entry) {
  while (entry->left != NULL) entry = entry->left;
  return entry;
}

bool query_answer(query *q, const word_index *index, int64_t line_count, mub_bits *lines) {
  if (!find_words(q, index)) return false;
  mub_bitree_entry *entry = first_operand(&q->tree.root);
  while (entry != &q->tree.root) {
    mub_bitree_entry *parent = entry->parent;
    if (!answer_entry(entry, (uint32_t)(line_count / 8 + 1))) return false;
    const bool is_left = entry == parent->left && parent->right != NULL;
    entry = is_left ? first_operand(parent->right) : parent;
  }
  *lines = node_at(q->tree.root.left->value)->lines;
  mub_bits_init(&node_at(q->tree.root.left->value)->lines);
  return true;
}
