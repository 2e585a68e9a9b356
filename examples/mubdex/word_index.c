#include "word_index.h"

#include <string.h>

bool index_init(word_index *index) {
  index->total = 0;
  mub_hash_init(&index->words, 1, 1);
  if (index->words.entry_pool == NULL || index->words.value_pool == NULL) return false;
  /* Only we know the size of our values, so we set the block size of the table's value pool before the first
 * one is taken. */
  index->words.value_pool->block_size = sizeof(word_stats);
  return true;
}

static word_stats *stats_at(uint64_t value) { return (word_stats *)(uintptr_t)value; }

static void release_stats(uint64_t value) { mub_arrayt_term(&stats_at(value)->lines); }

/* The table releases its blocks; only what they hold is for us to release. */
void index_term(word_index *index) {
  mub_hash_free_all(&index->words, release_stats);
  mub_hash_term(&index->words);
}

const word_stats *entry_stats(const mub_hash_entry *entry) { return stats_at(entry->value); }

/* A block may be a reused one, so all of it is set here. */
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

/* Cuts the next word off the front of `rest`; false when there is none left. The views share the text's
 * bytes. */
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

/* While lines are read, which words they hold is noted in one list, which grows without moving what it has:
 * the address of a word's stats, then the line. Afterwards each word's array is made once, in the size that
 * it needs. */
typedef struct line_notes {
  mub_listx pairs;
  mub_string folded; /* to fold words in; keeps its room from word to word */
} line_notes;

/* Notes a line once, however often it holds the word. False when memory ran out. */
static bool note_line(line_notes *notes, word_stats *stats, uint64_t line) {
  if (stats->line_count > 0 && stats->last_line == line) return true;
  stats->line_count++;
  stats->last_line = line;
  return mub_listx_add_tail(&notes->pairs, (uint64_t)(uintptr_t)stats) != NULL &&
         mub_listx_add_tail(&notes->pairs, line) != NULL;
}

static bool add_words(word_index *index, mub_char rest, uint64_t line, line_notes *notes) {
  mub_char word;
  while (next_word(&rest, &word)) {
    if (!fold_word(word.data, word.length, &notes->folded)) return false;
    word_stats *stats = add_count(index, notes->folded.data, notes->folded.length, 1);
    if (stats == NULL || !note_line(notes, stats, line)) return false;
  }
  return true;
}

static bool take_notes(const line_notes *notes) {
  for (const mub_listx_block *block = notes->pairs.head; block != NULL; block = block->next) {
    for (int64_t i = 0; i < block->count; i += 2) {
      word_stats *stats = stats_at(block->values[i]);
      if (!mub_arrayt_expand(&stats->lines, stats->line_count)) return false;
      mub_arrayt_append(&stats->lines, block->values[i + 1]);
    }
  }
  return true;
}

bool index_add_lines(word_index *index, const corpus *texts, int64_t first_line) {
  line_notes notes;
  mub_string_init(&notes.folded);
  mub_listx_init(&notes.pairs, 1, 0);
  bool added = notes.pairs.entry_pool != NULL;
  for (int64_t line = first_line; added && line < corpus_line_count(texts); line++) {
    added = add_words(index, corpus_line(texts, line), (uint64_t)line, &notes);
  }
  added = added && take_notes(&notes);
  mub_listx_term(&notes.pairs);
  mub_string_term(&notes.folded);
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

/* The lines of a word beyond those that its record holds. */
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
  /* With all the room made beforehand, no append can fail. */
  if (!mub_array_expand(by_word, words->count)) return false;
  if (!mub_stream_expand(&by_word->keys, words->keys.length)) return false;
  for (const mub_hash_entry *entry = mub_hash_entry_first(words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(words, &bucket, entry)) {
    mub_array_append(by_word, words->keys.data + entry->key_offset, entry->key_length, entry->value);
  }
  mub_array_qsort(by_word, 1);
  return true;
}

/* The context is the key stream of the table, for the bytes of the words. */
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
