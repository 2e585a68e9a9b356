#include "word_index.h"

#include <string.h>

enum { READ_BLOCK_BYTES = 1 << 16 };

bool index_init(word_index *index) {
  index->total = 0;
  mub_hash_init(&index->words, 1, 1);
  if (index->words.entry_pool == NULL || index->words.value_pool == NULL) return false;
  /* Only we know the size of our values, so the table's value pool is told before the first one is taken. */
  index->words.value_pool->block_size = sizeof(word_stats);
  return true;
}

void index_term(word_index *index) { mub_hash_term(&index->words); }

static word_stats *stats_at(uint64_t value) { return (word_stats *)(uintptr_t)value; }

const word_stats *entry_stats(const mub_hash_entry *entry) { return stats_at(entry->value); }

/* A block may be a reused one, so it is cleared here. */
static void clear_stats(uint64_t value) { stats_at(value)->count = 0; }

bool index_add(word_index *index, const char *word, int64_t length, uint64_t count) {
  uint64_t value;
  mub_hash_set(&index->words, word, length, &value, clear_stats);
  if (value == 0) return false;
  stats_at(value)->count += count;
  index->total += count;
  return true;
}

static bool is_word_byte(char c) {
  const unsigned char byte = (unsigned char)c;
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte >= 128;
}

/* Cuts the next word off the front of `rest`; false when there is none left. The views share the text's bytes. */
static bool next_word(mub_char *rest, mub_char *word) {
  int64_t start = 0;
  while (start < rest->length && !is_word_byte(rest->data[start])) start++;
  int64_t end = start;
  while (end < rest->length && is_word_byte(rest->data[end])) end++;
  word->data = rest->data + start;
  word->length = end - start;
  rest->data += end;
  rest->length -= end;
  return !mub_char_is_empty(word);
}

/* Counts the words of a piece of text. A word that touches the end of the piece may go on in the next one: unless
 * this is the last, it is left. Returns how many bytes are done with; -1 when memory ran out. */
static int64_t add_words(word_index *index, mub_stream *text, bool last) {
  mub_char rest = {(char *)text->data, text->length};
  mub_char word;
  while (next_word(&rest, &word)) {
    if (rest.length == 0 && !last) return text->length - word.length;
    mub_char_make_lower(&word);
    if (!index_add(index, word.data, word.length, 1)) return -1;
  }
  return text->length;
}

static index_result read_pieces(word_index *index, FILE *file, mub_stream *text, progress_fn progress) {
  int64_t bytes_read = 0;
  for (;;) {
    const int64_t kept = text->length;
    if (!mub_stream_expand(text, kept + READ_BLOCK_BYTES)) return INDEX_NO_MEMORY;
    const size_t got = fread(text->data + kept, 1, READ_BLOCK_BYTES, file);
    if (ferror(file)) return INDEX_READ_ERROR;
    /* mub_stream_shrink sets the length, here to more: the bytes are there already. */
    mub_stream_shrink(text, kept + (int64_t)got);
    const bool last = got < READ_BLOCK_BYTES;
    const int64_t done = add_words(index, text, last);
    if (done < 0) return INDEX_NO_MEMORY;
    if (last) return INDEX_OK;
    mub_stream_right(text, text->length - done);
    bytes_read += (int64_t)got;
    if (progress != NULL) progress(bytes_read);
  }
}

index_result index_read_text(word_index *index, FILE *file, progress_fn progress) {
  mub_stream text;
  mub_stream_init(&text);
  const index_result result = read_pieces(index, file, &text, progress);
  mub_stream_term(&text);
  return result;
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

int64_t index_bytes(const word_index *index) {
  const mub_hash *words = &index->words;
  return words->buckets.capacity * (int64_t)sizeof(uint64_t) + words->keys.capacity +
         pool_bytes(words->entry_pool) + pool_bytes(words->value_pool);
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
