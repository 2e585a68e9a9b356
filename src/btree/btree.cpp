// mub_btree: bplus_tree.h with byte-string keys.
#include "btree/batch_get.h"
#include "btree/bplus_clone.h"
#include "btree/bplus_whole.h"
#include "btree/tree_cursor.h"
#include "btree/verify.h"
#include "bytes/bytes.h"
#include "containers/key_store.h"

namespace mub {
namespace {

// Lowers the offsets of all nodes below `top`.
void lower_names(mub_btree_entry &top, keys::Range cut) {
  for (auto *node = &top; node != nullptr; node = bplus::next_in_preorder(*node, top, false)) {
    if (node->level < 1) break;
    for (int64_t i = 0; i < node->children.count; ++i) {
      keys::lower_offset(*bplus::node_at(*node, i), cut);
    }
  }
}

template <class Visit>
void for_each_record(const mub_btree_entry &top, Visit visit) {
  const mub_btree_entry *last = bplus::last_leaf(top);
  for (const mub_btree_entry *leaf = bplus::first_leaf(top);; leaf = bplus::neighbour<1>(*leaf)) {
    for (int64_t i = 0; i < leaf->children.count; ++i) {
      visit(*bplus::child_at<mub_btree_node>(leaf->children, i));
    }
    if (leaf == last) return;
  }
}

}  // namespace

// Byte-string keys for bplus_tree.h, in the tree's key stream.
template <>
struct Policy<mub_btree> : PackedKeys<mub_btree> {
  using Node = mub_btree_entry;
  using Record = mub_btree_node;
  using Cursor = mub_btree_cursor;

  template <bool kFoldsCase>
  struct Order {
    static constexpr bool kByQuarters = false;
    template <class Child>
    int operator()(const Child &child) const {
      const Key stored = keys::key_of(stream, child);
      if constexpr (kFoldsCase) return bytes::icompare(stored.bytes, stored.length, key.bytes, key.length);
      return bytes::order(stored.bytes, stored.length, key.bytes, key.length);
    }
    Order with_key(Key other) const { return {stream, other}; }

    const mub_stream &stream;
    Key key;
  };

  template <class Use>
  static auto with_order(const mub_btree &tree, Key key, Use use) {
    if (tree.nocase != 0) return use(Order<true>{tree.keys, key});
    return use(Order<false>{tree.keys, key});
  }

  // Unlike an order, returns the exact difference: part of the interface.
  template <class Item>
  static int compare(const mub_btree &tree, const Item &item, Key key) {
    const Key stored = key_of(tree, item);
    return tree.nocase != 0 ? bytes::icompare(stored.bytes, stored.length, key.bytes, key.length)
                            : bytes::compare(stored.bytes, stored.length, key.bytes, key.length);
  }

  // A name that is equal to the child's key is kept, even if its offset differs, as it may in the root.
  // Callers can see the offset that is kept.
  template <class Child>
  static bool name_equals_key_of(const mub_btree &tree, const Node &node, const Child &child) {
    if (node.key_length != child.key_length) return false;
    if (node.key_offset == child.key_offset) return true;
    if constexpr (kPoisons) {
      // The name of the root may be out of date, and end past the content.
      if (int64_t{node.key_offset} + node.key_length > tree.keys.length) buffer::open(tree.keys);
    }
    const Key name = key_of(tree, node), key = key_of(tree, child);
    if (tree.nocase != 0) return bytes::icompare(name.bytes, name.length, key.bytes, key.length) == 0;
    return bytes::equal(name.bytes, name.length, key.bytes, key.length);
  }
  template <class Child>
  static bool name_refers_to_key_of(const Node &node, const Child &child) {
    return node.key_offset == child.key_offset && node.key_length == child.key_length;
  }
  template <class Child>
  static void copy_key(Node &node, const Child &child) {
    node.key_offset = child.key_offset;
    node.key_length = child.key_length;
  }

  static void erase_key(mub_btree &tree, Record &record) {
    PackedKeys::cut_key(tree, record, [&](keys::Range cut) { lower_offsets(tree, cut); });
  }

  static void lower_offsets(mub_btree &tree, keys::Range cut) {
    const bool pool_has_only_items = has_exactly_live<Record>(node_pool_of(tree), tree.count);
    lower_names(tree.root, cut);
    keys::lower_offsets<Record>(tree.node_pool, pool_has_only_items, cut,
                                [&](auto lower) { for_each_record(tree.root, lower); });
  }

  static void init_keys(mub_btree &) {}
};

template <>
struct Policy<mub_btree_entry> : Policy<mub_btree> {};

}  // namespace mub

using namespace mub;

extern "C" {

mub_btree *mub_btree_init(mub_btree *tree, int with_entry_pool, int with_node_pool, int with_value_pool) {
  bplus::init(*tree, with_entry_pool != 0, with_node_pool != 0, with_value_pool != 0);
  return tree;
}

mub_btree *mub_btree_term(mub_btree *tree) {
  bplus::term(*tree);
  return tree;
}

int64_t mub_btree_get_many(const mub_btree *tree, const void *const *keys, const int64_t *lengths,
                           int64_t count, uint64_t *values_out) {
  return bplus::get_many(*tree, measured_keys(keys, lengths), count, values_out);
}

int mub_btree_insert(mub_btree *tree, const void *key, int64_t length, uint64_t value) {
  return bplus::insert_value(*tree, measured_key(key, length), value);
}

int mub_btree_set(mub_btree *tree, const void *key, int64_t length, uint64_t *value_out, mub_init_fn init) {
  return bplus::set(*tree, measured_key(key, length), *value_out, init);
}

uint64_t mub_btree_get(const mub_btree *tree, const void *key, int64_t length) {
  return bplus::get(*tree, measured_key(key, length));
}

uint64_t mub_btree_update(mub_btree *tree, const void *key, int64_t length, uint64_t value) {
  return bplus::update(*tree, measured_key(key, length), value);
}

int mub_btree_find(const mub_btree *tree, const void *key, int64_t length) {
  return bplus::find(*tree, measured_key(key, length)) != nullptr ? 1 : 0;
}

uint64_t mub_btree_remove(mub_btree *tree, const void *key, int64_t length) {
  return bplus::remove(*tree, measured_key(key, length));
}

mub_btree *mub_btree_remove_all(mub_btree *tree) {
  bplus::remove_all(*tree);
  return tree;
}

mub_btree *mub_btree_free_all(mub_btree *tree, mub_free_fn release) {
  bplus::free_all(*tree, release);
  return tree;
}

int mub_btree_node_set(mub_btree *tree, const void *key, int64_t length, mub_btree_node **node_out) {
  return bplus::insert_record(*tree, measured_key(key, length), *node_out);
}

mub_btree_node *mub_btree_node_get(const mub_btree *tree, const void *key, int64_t length) {
  return bplus::find(*tree, measured_key(key, length));
}

mub_btree_node *mub_btree_node_find(const mub_btree *tree, const void *key, int64_t length) {
  return bplus::find(*tree, measured_key(key, length));
}

mub_btree_node *mub_btree_node_bfind(const mub_btree *tree, const void *key, int64_t length) {
  return bplus::find_nearest(*tree, measured_key(key, length));
}

mub_btree_node *mub_btree_node_first(const mub_btree *tree) { return bplus::first_record(*tree); }

mub_btree_node *mub_btree_node_last(const mub_btree *tree) { return bplus::last_record(*tree); }

mub_btree_node *mub_btree_node_next(const mub_btree *tree, const mub_btree_node *node) {
  return bplus::step<1>(*tree, *node);
}

mub_btree_node *mub_btree_node_prev(const mub_btree *tree, const mub_btree_node *node) {
  return bplus::step<-1>(*tree, *node);
}

mub_btree_node *mub_btree_cursor_first(mub_btree_cursor *cursor, const mub_btree *tree) {
  return bplus::cursor_start<1>(*cursor, *tree);
}

mub_btree_node *mub_btree_cursor_last(mub_btree_cursor *cursor, const mub_btree *tree) {
  return bplus::cursor_start<-1>(*cursor, *tree);
}

mub_btree_node *mub_btree_cursor_seek(mub_btree_cursor *cursor, const mub_btree *tree, const void *key,
                                      int64_t length) {
  return bplus::cursor_seek(*cursor, *tree, measured_key(key, length));
}

mub_btree_node *mub_btree_cursor_next(mub_btree_cursor *cursor) { return bplus::cursor_step<1>(*cursor); }

mub_btree_node *mub_btree_cursor_prev(mub_btree_cursor *cursor) { return bplus::cursor_step<-1>(*cursor); }

mub_btree_node *mub_btree_cursor_node(const mub_btree_cursor *cursor) {
  return bplus::cursor_record(*cursor);
}

mub_btree_entry *mub_btree_first_entry(const mub_btree_entry *entry) { return bplus::first_leaf(*entry); }

mub_btree_entry *mub_btree_last_entry(const mub_btree_entry *entry) { return bplus::last_leaf(*entry); }

void mub_btree_swap(mub_btree *a, mub_btree *b) { bplus::swap(*a, *b); }

int64_t mub_btree_clone(const mub_btree *source, mub_pool *source_user_pool, mub_btree *destination,
                        mub_pool *destination_user_pool, mub_clone_fn callback) {
  return bplus::clone(*source, *destination, {source_user_pool, destination_user_pool, callback});
}

int mub_btree_verify(const mub_btree *tree, const char **what) { return report(bplus::verify(*tree), what); }

int64_t mub_btree_memory_bytes(const mub_btree *tree) { return bplus::memory_bytes(*tree); }

void mub_btree_entry_init(mub_btree_entry *entry) { bplus::init_node(*entry); }

mub_btree_entry *mub_btree_entry_new(mub_btree *tree, int level) { return bplus::new_node(*tree, level); }

void mub_btree_node_init(mub_btree_node *node) { *node = {}; }

int mub_btree_entry_compare(const mub_btree *tree, const mub_btree_entry *entry, const void *key,
                            int64_t length) {
  return Policy<mub_btree>::compare(*tree, *entry, raw_key(key, length));
}

int mub_btree_entrys_compare(const mub_btree *tree, const mub_btree_entry *a, const mub_btree_entry *b,
                             int64_t) {
  return Policy<mub_btree>::compare(*tree, *a, Policy<mub_btree>::key_of(*tree, *b));
}

int mub_btree_node_compare(const mub_btree *tree, const mub_btree_node *node, const void *key,
                           int64_t length) {
  return Policy<mub_btree>::compare(*tree, *node, raw_key(key, length));
}

void mub_btree_set_name(const mub_btree *tree, mub_btree_entry *entry) { bplus::set_name(*tree, *entry); }

void mub_btree_set_parent(mub_btree_entry *entry) { bplus::set_parent_of_children(*entry); }

void mub_btree_set_next(mub_btree_entry *leaf, int64_t index) { bplus::set_next(*leaf, index); }

void mub_btree_set_pool(const mub_btree *tree, mub_btree_entry *entry) {
  bplus::set_children_pools(*tree, *entry);
}

mub_btree_entry *mub_btree_split_entry(mub_btree *tree, mub_btree_entry *entry) {
  return bplus::split_off(*tree, *entry);
}

mub_btree_entry *mub_btree_split_node(mub_btree *tree, mub_btree_entry *entry) {
  return bplus::split_off(*tree, *entry);
}

void mub_btree_split(mub_btree *tree, mub_btree_entry *entry) { bplus::split(*tree, *entry); }

mub_btree_entry *mub_btree_find_t(const mub_btree *tree, const mub_btree_entry *entry, const void *key,
                                  int64_t length) {
  return bplus::locate(*tree, *entry, measured_key(key, length)).leaf;
}

int mub_btree_insert_t(mub_btree *tree, mub_btree_entry *leaf, const void *key, int64_t length,
                       mub_btree_node **node_out) {
  return bplus::insert_record_from(*tree, *leaf, measured_key(key, length), *node_out);
}

void mub_btree_adjust_t(mub_btree *, mub_btree_entry *entry, uint32_t offset, uint32_t length) {
  const keys::Range cut = {offset, length};
  lower_names(*entry, cut);
  for_each_record(*entry, [&](mub_btree_node &node) { keys::lower_offset(node, cut); });
}

void mub_btree_remove_entry_t(mub_btree *tree, mub_btree_entry *entry) { bplus::remove_node(*tree, *entry); }

void mub_btree_remove_all_entry(mub_btree *tree, mub_btree_entry *entry) {
  bplus::remove_all_below(*tree, *entry);
}

void mub_btree_free_all_entry(mub_btree *tree, mub_btree_entry *entry, mub_free_fn release) {
  bplus::free_all_below(*tree, *entry, release);
}

int mub_btree_clone_entry(const mub_btree *source, const mub_btree_entry *source_entry,
                          mub_btree *destination, mub_btree_entry *destination_entry) {
  return bplus::clone_below(*source, *source_entry, *destination, *destination_entry) ? 1 : 0;
}
}
