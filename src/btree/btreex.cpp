// mub_btreex: bplus_tree.h with 64-bit number keys.
#include "btree/batch_get.h"
#include "btree/bplus_clone.h"
#include "btree/bplus_whole.h"
#include "btree/number_keys.h"
#include "btree/tree_cursor.h"
#include "btree/verify.h"

template <>
struct mub::Policy<mub_btreex>
    : bplus::NumberKeys<mub_btreex, mub_btreex_node, mub_btreex_cursor, bplus::Numbers64> {};
template <>
struct mub::Policy<mub_btreex_entry> : Policy<mub_btreex> {};

using namespace mub;

extern "C" {

mub_btreex *mub_btreex_init(mub_btreex *tree, int with_entry_pool, int with_node_pool, int with_value_pool) {
  bplus::init(*tree, with_entry_pool != 0, with_node_pool != 0, with_value_pool != 0);
  return tree;
}

mub_btreex *mub_btreex_term(mub_btreex *tree) {
  bplus::term(*tree);
  return tree;
}

int64_t mub_btreex_get_many(const mub_btreex *tree, const uint64_t *keys, int64_t count,
                            uint64_t *values_out) {
  return bplus::get_many(
      *tree, [=](int64_t i) { return keys[i]; }, count, values_out);
}

int mub_btreex_insert(mub_btreex *tree, uint64_t key, uint64_t value) {
  return bplus::insert_value(*tree, key, value);
}

int mub_btreex_set(mub_btreex *tree, uint64_t key, uint64_t *value_out, mub_init_fn init) {
  return bplus::set(*tree, key, *value_out, init);
}

uint64_t mub_btreex_get(const mub_btreex *tree, uint64_t key) { return bplus::get(*tree, key); }

uint64_t mub_btreex_update(mub_btreex *tree, uint64_t key, uint64_t value) {
  return bplus::update(*tree, key, value);
}

int mub_btreex_find(const mub_btreex *tree, uint64_t key) {
  return bplus::find(*tree, key) != nullptr ? 1 : 0;
}

uint64_t mub_btreex_remove(mub_btreex *tree, uint64_t key) { return bplus::remove(*tree, key); }

mub_btreex *mub_btreex_remove_all(mub_btreex *tree) {
  bplus::remove_all(*tree);
  return tree;
}

mub_btreex *mub_btreex_free_all(mub_btreex *tree, mub_free_fn release) {
  bplus::free_all(*tree, release);
  return tree;
}

int mub_btreex_node_set(mub_btreex *tree, uint64_t key, mub_btreex_node **node_out) {
  return bplus::insert_record(*tree, key, *node_out);
}

mub_btreex_node *mub_btreex_node_get(const mub_btreex *tree, uint64_t key) { return bplus::find(*tree, key); }

mub_btreex_node *mub_btreex_node_find(const mub_btreex *tree, uint64_t key) {
  return bplus::find(*tree, key);
}

mub_btreex_node *mub_btreex_node_bfind(const mub_btreex *tree, uint64_t key) {
  return bplus::find_nearest(*tree, key);
}

mub_btreex_node *mub_btreex_node_first(const mub_btreex *tree) { return bplus::first_record(*tree); }

mub_btreex_node *mub_btreex_node_last(const mub_btreex *tree) { return bplus::last_record(*tree); }

mub_btreex_node *mub_btreex_node_next(const mub_btreex *tree, const mub_btreex_node *node) {
  return bplus::step<1>(*tree, *node);
}

mub_btreex_node *mub_btreex_node_prev(const mub_btreex *tree, const mub_btreex_node *node) {
  return bplus::step<-1>(*tree, *node);
}

mub_btreex_node *mub_btreex_cursor_first(mub_btreex_cursor *cursor, const mub_btreex *tree) {
  return bplus::cursor_start<1>(*cursor, *tree);
}

mub_btreex_node *mub_btreex_cursor_last(mub_btreex_cursor *cursor, const mub_btreex *tree) {
  return bplus::cursor_start<-1>(*cursor, *tree);
}

mub_btreex_node *mub_btreex_cursor_seek(mub_btreex_cursor *cursor, const mub_btreex *tree, uint64_t key) {
  return bplus::cursor_seek(*cursor, *tree, key);
}

mub_btreex_node *mub_btreex_cursor_next(mub_btreex_cursor *cursor) { return bplus::cursor_step<1>(*cursor); }

mub_btreex_node *mub_btreex_cursor_prev(mub_btreex_cursor *cursor) { return bplus::cursor_step<-1>(*cursor); }

mub_btreex_node *mub_btreex_cursor_node(const mub_btreex_cursor *cursor) {
  return bplus::cursor_record(*cursor);
}

mub_btreex_entry *mub_btreex_first_entry(const mub_btreex_entry *entry) { return bplus::first_leaf(*entry); }

mub_btreex_entry *mub_btreex_last_entry(const mub_btreex_entry *entry) { return bplus::last_leaf(*entry); }

void mub_btreex_swap(mub_btreex *a, mub_btreex *b) { bplus::swap(*a, *b); }

int64_t mub_btreex_clone(const mub_btreex *source, mub_pool *source_user_pool, mub_btreex *destination,
                         mub_pool *destination_user_pool, mub_clone_fn callback) {
  return bplus::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_btreex_verify(const mub_btreex *tree, const char **what) {
  return report(bplus::verify(*tree), what);
}

int64_t mub_btreex_memory_bytes(const mub_btreex *tree) { return bplus::memory_bytes(*tree); }

void mub_btreex_entry_init(mub_btreex_entry *entry) { bplus::init_node(*entry); }

mub_btreex_entry *mub_btreex_entry_new(mub_btreex *tree, int level) { return bplus::new_node(*tree, level); }

void mub_btreex_node_init(mub_btreex_node *node) { *node = {}; }

int mub_btreex_var_compare(const void *a, const void *b, uint32_t key_type) {
  return Policy<mub_btreex>::compare(a, b, key_type);
}

int mub_btreex_entry_compare(const mub_btreex_entry *entry, const void *key, uint32_t key_type) {
  return Policy<mub_btreex>::compare(&entry->key, key, key_type);
}

int mub_btreex_entrys_compare(const mub_btreex_entry *a, const mub_btreex_entry *b, uint32_t key_type) {
  return Policy<mub_btreex>::compare(&a->key, &b->key, key_type);
}

int mub_btreex_node_compare(const mub_btreex_node *node, const void *key, uint32_t key_type) {
  return Policy<mub_btreex>::compare(&node->key, key, key_type);
}

void mub_btreex_set_name(const mub_btreex *tree, mub_btreex_entry *entry) { bplus::set_name(*tree, *entry); }

void mub_btreex_set_parent(mub_btreex_entry *entry) { bplus::set_parent_of_children(*entry); }

void mub_btreex_set_next(mub_btreex_entry *leaf, int64_t index) { bplus::set_next(*leaf, index); }

void mub_btreex_set_pool(const mub_btreex *tree, mub_btreex_entry *entry) {
  bplus::set_children_pools(*tree, *entry);
}

mub_btreex_entry *mub_btreex_split_entry(mub_btreex *tree, mub_btreex_entry *entry) {
  return bplus::split_off(*tree, *entry);
}

mub_btreex_entry *mub_btreex_split_node(mub_btreex *tree, mub_btreex_entry *entry) {
  return bplus::split_off(*tree, *entry);
}

void mub_btreex_split(mub_btreex *tree, mub_btreex_entry *entry) { bplus::split(*tree, *entry); }

mub_btreex_entry *mub_btreex_find_t(const mub_btreex *tree, const mub_btreex_entry *entry, uint64_t key) {
  return bplus::locate(*tree, *entry, key).leaf;
}

int mub_btreex_insert_t(mub_btreex *tree, mub_btreex_entry *leaf, uint64_t key, mub_btreex_node **node_out) {
  return bplus::insert_record_from(*tree, *leaf, key, *node_out);
}

void mub_btreex_remove_entry_t(mub_btreex *tree, mub_btreex_entry *entry) {
  bplus::remove_node(*tree, *entry);
}

void mub_btreex_remove_all_entry(mub_btreex *tree, mub_btreex_entry *entry) {
  bplus::remove_all_below(*tree, *entry);
}

void mub_btreex_free_all_entry(mub_btreex *tree, mub_btreex_entry *entry, mub_free_fn release) {
  bplus::free_all_below(*tree, *entry, release);
}

int mub_btreex_clone_entry(const mub_btreex *source, const mub_btreex_entry *source_entry,
                           mub_btreex *destination, mub_btreex_entry *destination_entry) {
  return bplus::clone_below(*source, *source_entry, *destination, *destination_entry) ? 1 : 0;
}
}
