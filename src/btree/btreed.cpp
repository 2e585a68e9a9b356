// mub_btreed: bplus_tree.h with 32-bit number keys.
#include "btree/batch_get.h"
#include "btree/bplus_clone.h"
#include "btree/bplus_whole.h"
#include "btree/number_keys.h"
#include "btree/tree_cursor.h"
#include "btree/verify.h"

template <>
struct mub::Policy<mub_btreed>
    : bplus::NumberKeys<mub_btreed, mub_btreed_node, mub_btreed_cursor, bplus::Numbers32> {};
template <>
struct mub::Policy<mub_btreed_entry> : Policy<mub_btreed> {};

using namespace mub;

extern "C" {

mub_btreed *mub_btreed_init(mub_btreed *tree, int with_entry_pool, int with_node_pool, int with_value_pool) {
  bplus::init(*tree, with_entry_pool != 0, with_node_pool != 0, with_value_pool != 0);
  return tree;
}

mub_btreed *mub_btreed_term(mub_btreed *tree) {
  bplus::term(*tree);
  return tree;
}

int64_t mub_btreed_get_many(const mub_btreed *tree, const uint32_t *keys, int64_t count,
                            uint64_t *values_out) {
  return bplus::get_many(
      *tree, [=](int64_t i) { return keys[i]; }, count, values_out);
}

int mub_btreed_insert(mub_btreed *tree, uint32_t key, uint64_t value) {
  return bplus::insert_value(*tree, key, value);
}

int mub_btreed_set(mub_btreed *tree, uint32_t key, uint64_t *value_out, mub_init_fn init) {
  return bplus::set(*tree, key, *value_out, init);
}

uint64_t mub_btreed_get(const mub_btreed *tree, uint32_t key) { return bplus::get(*tree, key); }

uint64_t mub_btreed_update(mub_btreed *tree, uint32_t key, uint64_t value) {
  return bplus::update(*tree, key, value);
}

int mub_btreed_find(const mub_btreed *tree, uint32_t key) {
  return bplus::find(*tree, key) != nullptr ? 1 : 0;
}

uint64_t mub_btreed_remove(mub_btreed *tree, uint32_t key) { return bplus::remove(*tree, key); }

mub_btreed *mub_btreed_remove_all(mub_btreed *tree) {
  bplus::remove_all(*tree);
  return tree;
}

mub_btreed *mub_btreed_free_all(mub_btreed *tree, mub_free_fn release) {
  bplus::free_all(*tree, release);
  return tree;
}

int mub_btreed_node_set(mub_btreed *tree, uint32_t key, mub_btreed_node **node_out) {
  return bplus::insert_record(*tree, key, *node_out);
}

mub_btreed_node *mub_btreed_node_get(const mub_btreed *tree, uint32_t key) { return bplus::find(*tree, key); }

mub_btreed_node *mub_btreed_node_find(const mub_btreed *tree, uint32_t key) {
  return bplus::find(*tree, key);
}

mub_btreed_node *mub_btreed_node_bfind(const mub_btreed *tree, uint32_t key) {
  return bplus::find_nearest(*tree, key);
}

mub_btreed_node *mub_btreed_node_first(const mub_btreed *tree) { return bplus::first_record(*tree); }

mub_btreed_node *mub_btreed_node_last(const mub_btreed *tree) { return bplus::last_record(*tree); }

mub_btreed_node *mub_btreed_node_next(const mub_btreed *tree, const mub_btreed_node *node) {
  return bplus::step<1>(*tree, *node);
}

mub_btreed_node *mub_btreed_node_prev(const mub_btreed *tree, const mub_btreed_node *node) {
  return bplus::step<-1>(*tree, *node);
}

mub_btreed_node *mub_btreed_cursor_first(mub_btreed_cursor *cursor, const mub_btreed *tree) {
  return bplus::cursor_start<1>(*cursor, *tree);
}

mub_btreed_node *mub_btreed_cursor_last(mub_btreed_cursor *cursor, const mub_btreed *tree) {
  return bplus::cursor_start<-1>(*cursor, *tree);
}

mub_btreed_node *mub_btreed_cursor_seek(mub_btreed_cursor *cursor, const mub_btreed *tree, uint32_t key) {
  return bplus::cursor_seek(*cursor, *tree, key);
}

mub_btreed_node *mub_btreed_cursor_next(mub_btreed_cursor *cursor) { return bplus::cursor_step<1>(*cursor); }

mub_btreed_node *mub_btreed_cursor_prev(mub_btreed_cursor *cursor) { return bplus::cursor_step<-1>(*cursor); }

mub_btreed_node *mub_btreed_cursor_node(const mub_btreed_cursor *cursor) {
  return bplus::cursor_record(*cursor);
}

mub_btreed_entry *mub_btreed_first_entry(const mub_btreed_entry *entry) { return bplus::first_leaf(*entry); }

mub_btreed_entry *mub_btreed_last_entry(const mub_btreed_entry *entry) { return bplus::last_leaf(*entry); }

void mub_btreed_swap(mub_btreed *a, mub_btreed *b) { bplus::swap(*a, *b); }

int64_t mub_btreed_clone(const mub_btreed *source, mub_pool *source_user_pool, mub_btreed *destination,
                         mub_pool *destination_user_pool, mub_clone_fn callback) {
  return bplus::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_btreed_verify(const mub_btreed *tree, const char **what) {
  return report(bplus::verify(*tree), what);
}

int64_t mub_btreed_memory_bytes(const mub_btreed *tree) { return bplus::memory_bytes(*tree); }

void mub_btreed_entry_init(mub_btreed_entry *entry) { bplus::init_node(*entry); }

mub_btreed_entry *mub_btreed_entry_new(mub_btreed *tree, int level) { return bplus::new_node(*tree, level); }

void mub_btreed_node_init(mub_btreed_node *node) { *node = {}; }

int mub_btreed_var_compare(const void *a, const void *b, uint32_t key_type) {
  return Policy<mub_btreed>::compare(a, b, key_type);
}

int mub_btreed_entry_compare(const mub_btreed_entry *entry, const void *key, uint32_t key_type) {
  return Policy<mub_btreed>::compare(&entry->key, key, key_type);
}

int mub_btreed_entrys_compare(const mub_btreed_entry *a, const mub_btreed_entry *b, uint32_t key_type) {
  return Policy<mub_btreed>::compare(&a->key, &b->key, key_type);
}

int mub_btreed_node_compare(const mub_btreed_node *node, const void *key, uint32_t key_type) {
  return Policy<mub_btreed>::compare(&node->key, key, key_type);
}

void mub_btreed_set_name(const mub_btreed *tree, mub_btreed_entry *entry) { bplus::set_name(*tree, *entry); }

void mub_btreed_set_parent(mub_btreed_entry *entry) { bplus::set_parent_of_children(*entry); }

void mub_btreed_set_next(mub_btreed_entry *leaf, int64_t index) { bplus::set_next(*leaf, index); }

void mub_btreed_set_pool(const mub_btreed *tree, mub_btreed_entry *entry) {
  bplus::set_children_pools(*tree, *entry);
}

mub_btreed_entry *mub_btreed_split_entry(mub_btreed *tree, mub_btreed_entry *entry) {
  return bplus::split_off(*tree, *entry);
}

mub_btreed_entry *mub_btreed_split_node(mub_btreed *tree, mub_btreed_entry *entry) {
  return bplus::split_off(*tree, *entry);
}

void mub_btreed_split(mub_btreed *tree, mub_btreed_entry *entry) { bplus::split(*tree, *entry); }

mub_btreed_entry *mub_btreed_find_t(const mub_btreed *tree, const mub_btreed_entry *entry, uint32_t key) {
  return bplus::locate(*tree, *entry, key).leaf;
}

int mub_btreed_insert_t(mub_btreed *tree, mub_btreed_entry *leaf, uint32_t key, mub_btreed_node **node_out) {
  return bplus::insert_record_from(*tree, *leaf, key, *node_out);
}

void mub_btreed_remove_entry_t(mub_btreed *tree, mub_btreed_entry *entry) {
  bplus::remove_node(*tree, *entry);
}

void mub_btreed_remove_all_entry(mub_btreed *tree, mub_btreed_entry *entry) {
  bplus::remove_all_below(*tree, *entry);
}

void mub_btreed_free_all_entry(mub_btreed *tree, mub_btreed_entry *entry, mub_free_fn release) {
  bplus::free_all_below(*tree, *entry, release);
}

int mub_btreed_clone_entry(const mub_btreed *source, const mub_btreed_entry *source_entry,
                           mub_btreed *destination, mub_btreed_entry *destination_entry) {
  return bplus::clone_below(*source, *source_entry, *destination, *destination_entry) ? 1 : 0;
}
}
