#include "vocabulary.h"

bool vocabulary_init(vocabulary *v) {
  mub_btree_init(&v->words, 1, 1, 0);
  return v->words.entry_pool != NULL && v->words.node_pool != NULL;
}

void vocabulary_term(vocabulary *v) { mub_btree_term(&v->words); }

bool vocabulary_fill(vocabulary *v, const word_index *index) {
  const mub_hash *words = &index->words;
  int64_t bucket;
  for (const mub_hash_entry *entry = mub_hash_entry_first(words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(words, &bucket, entry)) {
    const uint8_t *word = words->keys.data + entry->key_offset;
    if (!mub_btree_insert(&v->words, word, entry->key_length, entry_count(index, entry))) return false;
  }
  return true;
}

mub_char vocabulary_word(const vocabulary *v, const mub_btree_node *node) {
  return (mub_char){(char *)v->words.keys.data + node->key_offset, node->key_length};
}
