/* Fills a container of every kind with the content that gdb_test.py expects, and calls stop() where it looks.
 * Everything is static, so that the optimiser keeps it. */
#include <mub.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct everything {
  mub_stream stream;
  mub_string string;
  mub_stringx stringx;
  mub_char character_view;
  mub_wchar wchar;
  mub_pool pool;
  mub_array array;
  mub_arrayd arrayd;
  mub_arrayx arrayx;
  mub_arrayt arrayt;
  mub_arrays arrays;
  mub_hash hash;
  mub_hashd hashd;
  mub_hashx hashx;
  mub_hasht hasht;
  mub_btree btree;
  mub_btreed btreed;
  mub_btreex btreex;
  mub_list list;
  mub_lists lists;
  mub_listx listx;
  mub_tree tree;
  mub_bitree bitree;
  mub_bits bits;
} everything;

static everything filled;
static everything other; /* zero-filled, garbage, initialised and terminated in turn */
static mub_hash *volatile hash_pointer = &filled.hash;
static mub_hash large_hash;
static mub_btree large_btree;
static mub_list large_list;
static mub_tree deep_tree;
/* Not static, as only the debugger reads them. */
mub_btreed_cursor cursor;
mub_btree_cursor cursor_at_end;
mub_btreex_cursor cursor_without_leaf, damaged_cursor;
static int outside; /* its address is used as a value */

/* For the test of the layouts: makes the types of all nodes known to GDB. */
typedef struct nodes {
  mub_array_entry array;
  mub_arrayd_entry arrayd;
  mub_arrayx_entry arrayx;
  mub_hash_entry hash;
  mub_hashd_entry hashd;
  mub_hashx_entry hashx;
  mub_hasht_entry hasht;
  mub_btree_node btree_node;
  mub_btreed_node btreed_node;
  mub_btreex_node btreex_node;
  mub_btree_entry btree;
  mub_btreed_entry btreed;
  mub_btreex_entry btreex;
  mub_list_entry list;
  mub_lists_entry lists;
  mub_listx_block listx;
  mub_tree_entry tree;
  mub_bitree_entry bitree;
} nodes;
static nodes node_types;

/* The debugger stops here. */
__attribute__((noinline)) static void stop(const char *where) {
  __asm__ volatile("" ::"r"(where) : "memory");
}

static const char *const fruits[] = {"pear", "fig", "", "plum \"x\"", "m\xc3\xbcsli"};
enum { LARGE = 3000, FRUITS = sizeof fruits / sizeof fruits[0] };

static void fill_texts(everything *e) {
  static char text[] = "  name =  value ";
  mub_string_init(&e->string);
  mub_string_copy(&e->string, "said \"hello\"\n", -1);
  mub_stream_init(&e->stream);
  mub_stream_append(&e->stream, "ab\0c", 4);
  e->character_view = (mub_char){text + 2, 4};
  e->stringx = (mub_stringx){text, 10, 5};
  mub_wchar_init(&e->wchar);
  mub_wchar_append_char(&e->wchar, 'g');
  mub_wchar_append_char(&e->wchar, 0xFC);
  mub_wchar_append_char(&e->wchar, 't');
}

static void fill_pool(mub_pool *pool) {
  void *blocks[20];
  mub_pool_init(pool);
  pool->block_size = 24;
  for (int i = 0; i < 20; i++) blocks[i] = mub_pool_new(pool);
  for (int i = 3; i < 6; i++) mub_pool_free(pool, blocks[i]);
}

static void fill_arrays(everything *e) {
  mub_array_init(&e->array, 0);
  mub_arrayd_init(&e->arrayd, 0);
  mub_arrayx_init(&e->arrayx, 0);
  mub_arrays_init(&e->arrays, 0);
  mub_arrayt_init(&e->arrayt);
  for (unsigned i = 0; i < FRUITS; i++) {
    mub_array_append(&e->array, fruits[i], (int64_t)strlen(fruits[i]), i);
    mub_arrayd_append(&e->arrayd, 0xFFFFFFFF - i, i);
    mub_arrayx_append(&e->arrayx, UINT64_MAX - i, i);
    mub_arrays_append(&e->arrays, i * 10);
  }
  for (unsigned i = 0; i < 6; i++) mub_arrayt_append(&e->arrayt, i * i);
  mub_arrays_append(&e->arrays, (uint64_t)(uintptr_t)&outside);
}

static void fill_hashes(everything *e) {
  mub_hash_init(&e->hash, 1, 0);
  mub_hashd_init(&e->hashd, 1, 0);
  mub_hashx_init(&e->hashx, 1, 0);
  mub_hasht_init(&e->hasht, 1, 0);
  for (unsigned i = 0; i < FRUITS; i++) {
    const uint32_t key[4] = {i, 0xA, 0xB, 0xC};
    mub_hash_insert(&e->hash, fruits[i], -1, i);
    mub_hashd_insert(&e->hashd, i * 2, i);
    mub_hashx_insert(&e->hashx, (uint64_t)i << 40, i);
    mub_hasht_insert(&e->hasht, key, i);
  }
}

static void fill_btrees(everything *e) {
  mub_btree_init(&e->btree, 1, 1, 0);
  mub_btreed_init(&e->btreed, 1, 1, 0);
  mub_btreex_init(&e->btreex, 1, 1, 0);
  e->btreex.key_type = 6;
  for (unsigned i = 0; i < FRUITS; i++) {
    const double real = (double)i - 2.5;
    uint64_t bits;
    memcpy(&bits, &real, sizeof bits);
    mub_btree_insert(&e->btree, fruits[i], -1, i);
    mub_btreed_insert(&e->btreed, 2 - i, i);
    mub_btreex_insert(&e->btreex, bits, i);
  }
}

static void set_cursors(everything *e) {
  mub_btreed_cursor_seek(&cursor, &e->btreed, (uint32_t)-1);
  mub_btree_cursor_last(&cursor_at_end, &e->btree);
  mub_btree_cursor_next(&cursor_at_end);
  cursor_without_leaf.tree = &e->btreex;
  damaged_cursor = (mub_btreex_cursor){&e->btreex, &e->btreex.root, 6};
}

static void fill_lists(everything *e) {
  mub_list_init(&e->list, 1, 0);
  mub_lists_init(&e->lists, 1, 0);
  mub_listx_init(&e->listx, 1, 0);
  for (unsigned i = 0; i < FRUITS; i++) {
    mub_list_add_tail(&e->list, fruits[i], -1, i);
    mub_lists_add_tail(&e->lists, i);
  }
  for (unsigned i = 0; i < 35; i++) mub_listx_add_tail(&e->listx, i);
}

static mub_tree_entry *append(mub_tree *tree, mub_tree_entry *parent, uint64_t value) {
  mub_tree_entry *entry = mub_tree_entry_new(tree);
  entry->value = value;
  mub_tree_entry_append(tree, parent, entry);
  return entry;
}

static mub_bitree_entry *add(mub_bitree *tree, mub_bitree_entry *parent, int direction, uint64_t value) {
  mub_bitree_entry *entry = mub_bitree_entry_new(tree);
  entry->value = value;
  mub_bitree_entry_add(tree, parent, direction, entry);
  return entry;
}

static void fill_trees(everything *e) {
  mub_tree_init(&e->tree, 1, 0);
  mub_bitree_init(&e->bitree, 1, 0);
  append(&e->tree, &e->tree.root, 10);
  mub_tree_entry *middle = append(&e->tree, &e->tree.root, 20);
  append(&e->tree, &e->tree.root, 30);
  append(&e->tree, middle, 21);
  append(&e->tree, append(&e->tree, middle, 22), 221);

  mub_bitree_entry *root = &e->bitree.root;
  root->value = 50;
  mub_bitree_entry *left = add(&e->bitree, root, -1, 30);
  add(&e->bitree, left, 1, 40);
  add(&e->bitree, add(&e->bitree, root, 0, 51), 0, 52);
  add(&e->bitree, root, 1, 70);
}

static void fill_bits(mub_bits *bits) {
  mub_bits_init(bits);
  mub_bits_insert(bits, 0, 1);
  mub_bits_insert(bits, 9, 1);
  mub_bits_insert(bits, 8191, 1);
}

static void fill(everything *e) {
  fill_texts(e);
  fill_pool(&e->pool);
  fill_arrays(e);
  fill_hashes(e);
  fill_btrees(e);
  set_cursors(e);
  fill_lists(e);
  fill_trees(e);
  fill_bits(&e->bits);
}

static void terminate(everything *e) {
  mub_stream_term(&e->stream);
  mub_string_term(&e->string);
  mub_stringx_term(&e->stringx);
  e->character_view = (mub_char){NULL, 0}; /* owns nothing */
  mub_wchar_term(&e->wchar);
  mub_pool_term(&e->pool);
  mub_array_term(&e->array);
  mub_arrayd_term(&e->arrayd);
  mub_arrayx_term(&e->arrayx);
  mub_arrayt_term(&e->arrayt);
  mub_arrays_term(&e->arrays);
  mub_hash_term(&e->hash);
  mub_hashd_term(&e->hashd);
  mub_hashx_term(&e->hashx);
  mub_hasht_term(&e->hasht);
  mub_btree_term(&e->btree);
  mub_btreed_term(&e->btreed);
  mub_btreex_term(&e->btreex);
  mub_list_term(&e->list);
  mub_lists_term(&e->lists);
  mub_listx_term(&e->listx);
  mub_tree_term(&e->tree);
  mub_bitree_term(&e->bitree);
  mub_bits_term(&e->bits);
}

/* Containers that are too large to be printed or drawn completely. */
static void fill_large(void) {
  char key[16];
  mub_hash_init(&large_hash, 1, 0);
  mub_btree_init(&large_btree, 1, 1, 0);
  mub_list_init(&large_list, 1, 0);
  mub_tree_init(&deep_tree, 1, 0);
  mub_tree_entry *deepest = &deep_tree.root;
  for (unsigned i = 0; i < LARGE; i++) {
    snprintf(key, sizeof key, "key %05u", i);
    mub_hash_insert(&large_hash, key, -1, i);
    mub_btree_insert(&large_btree, key, -1, i);
    mub_list_add_tail(&large_list, key, -1, i);
    deepest = append(&deep_tree, deepest, i + 1);
  }
}

/* Damage as a faulty program might cause it. */
static void damage(everything *e) {
  e->hash.count++;
  mub_hashd_entry *entry = (mub_hashd_entry *)(uintptr_t)e->hashd.buckets.items[2];
  entry->next = entry;
  e->lists.head->next->next->prev = e->lists.head;
  e->list.head->next->key_offset = 1000;
  e->listx.head->count = 1 << 20;
  e->btreed.root.children.items[1] = 16;
  e->tree.root.first_child->next->next->next = e->tree.root.first_child->next;
  e->bitree.root.left->right->left = e->bitree.root.left;
  mub_pool_free(&e->pool, (char *)e->pool.chunks[0] + 24);
  ((void **)e->pool.free_pages[0])[e->pool.free_used++] = (char *)e->pool.chunks[0] + 24;
  e->pool.live_count--;
  e->array.keys.length = 3;
  other.pool = e->pool;
  other.pool.chunk_count = 0; /* the copy has returned blocks, but no chunk that contains them */
}

static void stop_with_bytes(const char *where, int byte) {
  memset(&other, byte, sizeof other);
  stop(where);
}

/* All fields of the nodes have different values. */
static void fill_nodes(void) {
  unsigned char *bytes = (unsigned char *)&node_types;
  for (size_t i = 0; i < sizeof node_types; i++) bytes[i] = (unsigned char)(i * 37 + i / 256 + 11);
}

int main(int argc, char **argv) {
  (void)hash_pointer;
  fill_nodes();
  fill(&filled);
  fill_large();
  stop("filled");
  if (argc > 1 && strcmp(argv[1], "abort") == 0) abort(); /* for a core file */
  stop_with_bytes("zeroed", 0);
  stop_with_bytes("negative", 0xA5);
  stop_with_bytes("positive", 0x11);
  stop_with_bytes("small", 1);
  fill(&other);
  terminate(&other);
  stop("terminated");
  damage(&filled);
  stop("damaged");
  return 0;
}
