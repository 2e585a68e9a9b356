#include "vocabulary.h"

bool vocabulary_init(vocabulary *v) {
  mub_btree_init(&v->words, 1, 1, 0);
  return v->words.entry_pool != NULL && v->words.node_pool != NULL;
}

void vocabulary_term(vocabulary *v) { mub_btree_term(&v->words); }

bool vocabulary_fill(vocabulary *v, const word_index *index) {
  const mub_hash *words = &index->words;
  MUB_EACH_HASH(words, entry) {
    const uint8_t *word = words->keys.data + entry->key_offset;
    if (!mub_btree_insert(&v->words, word, entry->key_length, entry_count(index, entry))) return false;
  }
  return true;
}

mub_char vocabulary_word(const vocabulary *v, const mub_btree_node *node) {
  return (mub_char){(char *)v->words.keys.data + node->key_offset, node->key_length};
}
