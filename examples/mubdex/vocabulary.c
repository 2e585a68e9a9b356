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
    if (!mub_btree_insert(&v->words, word, entry->key_length, entry->value)) return false;
  }
  return true;
}

mub_char vocabulary_word(const vocabulary *v, const mub_btree_node *node) {
  return (mub_char){(char *)v->words.keys.data + node->key_offset, node->key_length};
}

/* What is nearest to a word may also be the one before it. */
const mub_btree_node *vocabulary_first(const vocabulary *v, const mub_string *from) {
  const mub_btree_node *node = mub_btree_node_bfind(&v->words, from->data, from->length);
  while (node != NULL) {
    const mub_char word = vocabulary_word(v, node);
    if (mub_mem_cmp(word.data, word.length, from->data, from->length) >= 0) break;
    node = mub_btree_node_next(&v->words, node);
  }
  return node;
}
