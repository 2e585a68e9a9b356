#include "word_index.h"

#include <string.h>

bool index_init(word_index *index) {
  index->total = 0;
  mub_hash_init(&index->words, 1, 1);
  if (index->words.entry_pool == NULL || index->words.value_pool == NULL) return false;
  /* The library does not know the size of the values: set the block size of the value pool before the first
   * block is allocated. */
  index->words.value_pool->block_size = sizeof(word_stats);
  return true;
}

static word_stats *stats_at(uint64_t value) { return (word_stats *)(uintptr_t)value; }

static void release_stats(uint64_t value) { mub_arrayt_term(&stats_at(value)->lines); }

/* The table releases the blocks of its values; this releases what they own. */
void index_term(word_index *index) {
  mub_hash_free_all(&index->words, release_stats);
  mub_hash_term(&index->words);
}

const word_stats *entry_stats(const mub_hash_entry *entry) { return stats_at(entry->value); }

/* The block may be reused, so initialise all of it. */
static void clear_stats(uint64_t value) {
  stats_at(value)->count = 0;
  stats_at(value)->line_count = 0;
  mub_arrayt_init(&stats_at(value)->lines);
}

static word_stats *add_count(word_index *index, const char *word, int64_t length, uint64_t count) {
  uint64_t value;
  mub_hash_set(&index->words, word, length, &value, clear_stats);
  if (value == 0) return NULL;
  stats_at(value)->count += count;
  index->total += count;
  return stats_at(value);
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

/* While the lines are read, their words are collected in one list, which grows without moving its content:
 * the address of a word's stats, then the line. Afterwards the array of each word is allocated once, in its
 * final size. */
typedef struct line_list {
  mub_listx pairs;
  mub_string folded; /* a buffer for words in lower case, reused for each word */
} line_list;

/* Adds a line to a word, unless it was just added. False if memory runs out. */
static bool append_line(line_list *list, word_stats *stats, uint64_t line) {
  if (stats->line_count > 0 && stats->last_line == line) return true;
  stats->line_count++;
  stats->last_line = line;
  return mub_listx_add_tail(&list->pairs, (uint64_t)(uintptr_t)stats) != NULL &&
         mub_listx_add_tail(&list->pairs, line) != NULL;
}

static bool add_words(word_index *index, mub_char rest, uint64_t line, line_list *list) {
  mub_char word;
  while (next_word(&rest, &word)) {
    if (!fold_word(word.data, word.length, &list->folded)) return false;
    word_stats *stats = add_count(index, list->folded.data, list->folded.length, 1);
    if (stats == NULL || !append_line(list, stats, line)) return false;
  }
  return true;
}

static bool store_lines(const line_list *list) {
  for (const mub_listx_block *block = list->pairs.head; block != NULL; block = block->next) {
    for (int64_t i = 0; i < block->count; i += 2) {
      word_stats *stats = stats_at(block->values[i]);
      if (!mub_arrayt_expand(&stats->lines, stats->line_count)) return false;
      mub_arrayt_append(&stats->lines, block->values[i + 1]);
    }
  }
  return true;
}

bool index_add_lines(word_index *index, const corpus *texts, int64_t first_line) {
  line_list list;
  mub_string_init(&list.folded);
  mub_listx_init(&list.pairs, 1, 0);
  bool added = list.pairs.entry_pool != NULL;
  for (int64_t line = first_line; added && line < corpus_line_count(texts); line++) {
    added = add_words(index, corpus_line(texts, line), (uint64_t)line, &list);
  }
  added = added && store_lines(&list);
  mub_listx_term(&list.pairs);
  mub_string_term(&list.folded);
  return added;
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
                  pool_bytes(words->entry_pool) + pool_bytes(words->value_pool);
  int64_t bucket;
  for (const mub_hash_entry *entry = mub_hash_entry_first(words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(words, &bucket, entry)) {
    bytes += tail_bytes(&entry_stats(entry)->lines);
  }
  return bytes;
}

bool index_sort_by_word(const word_index *index, mub_array *by_word) {
  const mub_hash *words = &index->words;
  int64_t bucket;
  /* The capacity is reserved first, so that no append can fail. */
  if (!mub_array_expand(by_word, words->count)) return false;
  if (!mub_stream_expand(&by_word->keys, words->keys.length)) return false;
  for (const mub_hash_entry *entry = mub_hash_entry_first(words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(words, &bucket, entry)) {
    mub_array_append(by_word, words->keys.data + entry->key_offset, entry->key_length, entry->value);
  }
  mub_array_qsort(by_word, 1);
  return true;
}

/* The context is the key stream of the table, which has the bytes of the words. */
static int compare_by_count(uint64_t context, uint64_t item, uint64_t key, uint64_t extra) {
  const mub_stream *keys = (const mub_stream *)(uintptr_t)context;
  const mub_hash_entry *a = (const mub_hash_entry *)(uintptr_t)item;
  const mub_hash_entry *b = (const mub_hash_entry *)(uintptr_t)key;
  (void)extra;
  if (entry_stats(a)->count != entry_stats(b)->count)
    return entry_stats(a)->count > entry_stats(b)->count ? -1 : 1;
  return mub_mem_cmp(keys->data + a->key_offset, a->key_length, keys->data + b->key_offset, b->key_length);
}

bool index_sort_by_count(const word_index *index, mub_arrays *by_count) {
  const mub_hash *words = &index->words;
  int64_t bucket;
  if (!mub_arrays_expand(by_count, words->count)) return false;
  for (const mub_hash_entry *entry = mub_hash_entry_first(words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(words, &bucket, entry)) {
    mub_arrays_append(by_count, (uint64_t)(uintptr_t)entry);
  }
  mub_arrays_qsort_x(by_count, (uint64_t)(uintptr_t)&words->keys, 1, compare_by_count);
  return true;
}
