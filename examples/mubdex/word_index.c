#include "word_index.h"

#include <string.h>

bool index_init(word_index *index, bool keeps_lines) {
  index->total = 0;
  index->keeps_lines = keeps_lines;
  mub_hash_init(&index->words, 1, keeps_lines);
  if (index->words.entry_pool == NULL) return false;
  if (!keeps_lines) return true;
  if (index->words.value_pool == NULL) return false;
  /* The library does not know the size of the values: set the block size of the value pool before the first
   * block is allocated. */
  index->words.value_pool->block_size = sizeof(word_stats);
  return true;
}

static word_stats *stats_at(uint64_t value) { return (word_stats *)(uintptr_t)value; }

static void release_stats(uint64_t value) { mub_arrayt_term(&stats_at(value)->lines); }

/* The table releases the blocks of its values; this releases what they own. */
void index_term(word_index *index) {
  if (index->keeps_lines) mub_hash_free_all(&index->words, release_stats);
  mub_hash_term(&index->words);
}

const word_stats *index_stats(uint64_t value) { return stats_at(value); }

uint64_t entry_count(const word_index *index, const mub_hash_entry *entry) {
  return index->keeps_lines ? stats_at(entry->value)->count : entry->value;
}

static word_stats *new_stats(mub_pool *pool) {
  word_stats *stats = mub_pool_new(pool);
  if (stats == NULL) return NULL;
  /* The block may be reused, so initialise all of it. */
  stats->count = 0;
  stats->line_count = 0;
  stats->last_line = 0;
  mub_arrayt_init(&stats->lines);
  return stats;
}

/* The entry of a word, whose count increases; NULL if memory runs out. */
static mub_hash_entry *add_count(word_index *index, const char *word, int64_t length, uint64_t count) {
  mub_hash_entry *entry;
  mub_hash_entry_set(&index->words, word, length, &entry);
  if (entry == NULL) return NULL;
  index->total += count;
  if (!index->keeps_lines) {
    entry->value += count;
    return entry;
  }
  if (entry->value == 0) entry->value = (uint64_t)(uintptr_t)new_stats(index->words.value_pool);
  if (entry->value == 0) return NULL;
  stats_at(entry->value)->count += count;
  return entry;
}

bool index_add(word_index *index, const char *word, int64_t length, uint64_t count) {
  return add_count(index, word, length, count) != NULL;
}

static bool is_word_byte(char c) {
  const unsigned char byte = (unsigned char)c;
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte >= 128;
}

int64_t word_at_start(const mub_char *text) {
  int64_t length = 0;
  while (length < text->length && is_word_byte(text->data[length])) length++;
  return length;
}

/* Splits the next word from the front of `rest`; false if there is none. Both are views of the text. */
static bool next_word(mub_char *rest, mub_char *word) {
  int64_t start = 0;
  while (start < rest->length && !is_word_byte(rest->data[start])) start++;
  rest->data += start;
  rest->length -= start;
  *word = (mub_char){rest->data, word_at_start(rest)};
  rest->data += word->length;
  rest->length -= word->length;
  return !mub_char_is_empty(word);
}

bool fold_word(const char *word, int64_t length, mub_string *folded) {
  if (!mub_string_copy(folded, word, length)) return false;
  mub_string_make_lower(folded);
  return true;
}

/* Adds a line to a word, unless it was just added. False if memory runs out. */
static bool append_line(mub_listx *pairs, word_stats *stats, uint64_t line) {
  if (stats->line_count > 0 && stats->last_line == line) return true;
  stats->line_count++;
  stats->last_line = line;
  return mub_listx_add_tail(pairs, (uint64_t)(uintptr_t)stats) != NULL &&
         mub_listx_add_tail(pairs, line) != NULL;
}

/* What is needed while texts are read. The lines of all words are collected in one list, which grows without
 * moving its content: the address of a word's stats, then the line. Afterwards the array of each word is
 * allocated once, in its final size. */
typedef struct collector {
  mub_string folded; /* a buffer for text in lower case */
  mub_listx pairs;
} collector;

static bool collector_init(collector *c) {
  mub_string_init(&c->folded);
  mub_listx_init(&c->pairs, 1, 0);
  return c->pairs.entry_pool != NULL;
}

static void collector_term(collector *c) {
  mub_listx_term(&c->pairs);
  mub_string_term(&c->folded);
}

static bool add_words(word_index *index, const mub_char *text, uint64_t line, collector *c) {
  if (mub_char_is_empty(text)) return true; /* nothing may be allocated, and there is no address to advance */
  if (!fold_word(text->data, text->length, &c->folded)) return false;
  mub_char rest = {c->folded.data, c->folded.length};
  mub_char word;
  while (next_word(&rest, &word)) {
    const mub_hash_entry *entry = add_count(index, word.data, word.length, 1);
    if (entry == NULL) return false;
    if (index->keeps_lines && !append_line(&c->pairs, stats_at(entry->value), line)) return false;
  }
  return true;
}

static bool store_lines(const mub_listx *pairs) {
  for (const mub_listx_block *block = pairs->head; block != NULL; block = block->next) {
    for (int64_t i = 0; i < block->count; i += 2) {
      word_stats *stats = stats_at(block->values[i]);
      if (!mub_arrayt_expand(&stats->lines, stats->line_count)) return false;
      mub_arrayt_append(&stats->lines, block->values[i + 1]);
    }
  }
  return true;
}

bool index_add_lines(word_index *index, const corpus *texts, int64_t first_line) {
  collector c;
  bool added = collector_init(&c);
  for (int64_t line = first_line; added && line < corpus_line_count(texts); line++) {
    const mub_char text = corpus_line(texts, line);
    added = add_words(index, &text, (uint64_t)line, &c);
  }
  added = added && store_lines(&c.pairs);
  collector_term(&c);
  return added;
}

/* The end of the last complete word in `text`, whose first `seen` bytes are the start of a word. */
static int64_t complete_words(const mub_stream *text, int64_t seen) {
  int64_t end = text->length;
  while (end > seen && is_word_byte((char)text->data[end - 1])) end--;
  return end > seen ? end : 0;
}

/* Counts the words of the next block. The start of a word that continues in the block after it remains in
 * `block`. */
static mubdex_result add_block(word_index *index, reader *in, mub_stream *block, collector *c) {
  const int64_t seen = block->length;
  const mubdex_result result = reader_next(in, block);
  if (result != RESULT_OK) return result;
  const int64_t end = reader_at_end(in) ? block->length : complete_words(block, seen);
  const mub_char text = {(char *)block->data, end};
  if (!add_words(index, &text, 0, c)) return RESULT_NO_MEMORY;
  mub_stream_right(block, block->length - end);
  return RESULT_OK;
}

mubdex_result index_add_text(word_index *index, reader *in) {
  collector c;
  mub_stream block;
  mub_stream_init(&block);
  mubdex_result result = collector_init(&c) ? RESULT_OK : RESULT_NO_MEMORY;
  while (result == RESULT_OK && !reader_at_end(in)) result = add_block(index, in, &block, &c);
  mub_stream_term(&block);
  collector_term(&c);
  return result;
}

const word_stats *index_find(const word_index *index, const char *word, int64_t length) {
  mub_string folded;
  mub_string_init(&folded);
  const bool is_folded = fold_word(word, length, &folded);
  const uint64_t value = is_folded ? mub_hash_get(&index->words, folded.data, folded.length) : 0;
  mub_string_term(&folded);
  return stats_at(value);
}

int64_t index_vocabulary(const word_index *index) { return index->words.count; }

int64_t index_longest_chain(const word_index *index) {
  int64_t longest = 0;
  int64_t length = 0;
  int64_t chain = -1;
  int64_t bucket;
  for (const mub_hash_entry *entry = mub_hash_entry_first(&index->words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(&index->words, &bucket, entry)) {
    length = bucket == chain ? length + 1 : 1;
    chain = bucket;
    if (length > longest) longest = length;
  }
  return longest;
}

static int64_t pool_bytes(const mub_pool *pool) {
  const int64_t tables = (pool->chunk_capacity + pool->free_capacity) * (int64_t)sizeof(void *);
  return tables + pool->chunk_count * pool->blocks_per_chunk * pool->block_size;
}

/* The memory for lines of a word that do not fit into its record. */
static int64_t tail_bytes(const mub_arrayt *lines) {
  return lines->tail == NULL ? 0 : (lines->capacity - 4) * (int64_t)sizeof(uint64_t);
}

int64_t index_bytes(const word_index *index) {
  const mub_hash *words = &index->words;
  int64_t bytes = words->buckets.capacity * (int64_t)sizeof(uint64_t) + words->keys.capacity +
                  pool_bytes(words->entry_pool);
  if (!index->keeps_lines) return bytes;
  bytes += pool_bytes(words->value_pool);
  MUB_EACH_HASH(words, entry) bytes += tail_bytes(&stats_at(entry->value)->lines);
  return bytes;
}

bool index_sort_by_word(const word_index *index, mub_array *by_word) {
  const mub_hash *words = &index->words;
  /* The capacity is reserved first, so that no append can fail. */
  if (!mub_array_expand(by_word, words->count)) return false;
  if (!mub_stream_expand(&by_word->keys, words->keys.length)) return false;
  MUB_EACH_HASH(words, entry) {
    const uint64_t count = entry_count(index, entry);
    mub_array_append(by_word, words->keys.data + entry->key_offset, entry->key_length, count);
  }
  mub_array_qsort(by_word, 1);
  return true;
}

/* The context is the index. */
static int compare_by_count(uint64_t context, uint64_t item, uint64_t key, uint64_t extra) {
  const word_index *index = (const word_index *)(uintptr_t)context;
  const uint8_t *keys = index->words.keys.data;
  const mub_hash_entry *a = (const mub_hash_entry *)(uintptr_t)item;
  const mub_hash_entry *b = (const mub_hash_entry *)(uintptr_t)key;
  const uint64_t a_count = entry_count(index, a);
  const uint64_t b_count = entry_count(index, b);
  (void)extra;
  if (a_count != b_count) return a_count > b_count ? -1 : 1;
  return mub_mem_cmp(keys + a->key_offset, a->key_length, keys + b->key_offset, b->key_length);
}

/* Few words of many are ever among the first ones, so most take one comparison, with the last of these. */
bool index_top(const word_index *index, int64_t limit, mub_arrays *top) {
  const uint64_t context = MUB_VALUE_OF(index);
  if (!mub_arrays_expand(top, limit + 1)) return false;
  MUB_EACH_HASH(&index->words, entry) {
    const uint64_t item = MUB_VALUE_OF(entry);
    if (top->count == limit && compare_by_count(context, mub_arrays_get_last(top), item, 0) < 0) continue;
    mub_arrays_insert_x(top, context, item, 0, compare_by_count);
    if (top->count > limit) mub_arrays_shrink(top, limit);
  }
  return true;
}
