// Fills a container of every kind with the content that gdb_test.py expects, and calls stop() where it looks.
// Everything is static, so that the optimiser keeps it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mub.hpp>

struct everything {
  mub::stream stream;
  mub::string string;
  mub_stringx stringx{};
  mub_char character_view{};
  mub::wchar wchar;
  mub::pool pool;
  mub::array array;
  mub::arrayd arrayd;
  mub::arrayx arrayx;
  mub::arrayt arrayt;
  mub::arrays arrays;
  mub::hash hash;
  mub::hashd hashd;
  mub::hashx hashx;
  mub::hasht hasht;
  mub::btree btree;
  mub::btreed btreed;
  mub::btreex btreex;
  mub::list list;
  mub::lists lists;
  mub::listx listx;
  mub::tree tree;
  mub::bitree bitree;
  mub::bits bits;
};

struct article {
  int price;
  mub::string name;
};

static everything filled;
static everything initialised;
alignas(everything) static char bytes[sizeof(everything)];  // zero-filled, then garbage
static everything &garbage = reinterpret_cast<everything &>(bytes);
static mub_hash *volatile hash_pointer = filled.hash.c();
static mub::hash *volatile object_pointer = &filled.hash;
static mub::hash_of<article> articles;
static mub::btreed_of<float> weights;
static mub::stringx view("value");
static mub::hash large_hash;
static mub::btree large_btree;
static mub::list large_list;
static mub::tree deep_tree;
// Not static, as only the debugger reads them.
mub_btreed_cursor cursor;
mub_btree_cursor cursor_at_end;
mub_btreex_cursor cursor_without_leaf, damaged_cursor;
unsigned char pattern[512];  // read as every node
static int outside;          // its address is used as a value

// The debugger stops here.
__attribute__((noinline)) static void stop(const char *where) {
  __asm__ volatile("" ::"r"(where) : "memory");
}

static mub_tree_entry *append(mub::tree &tree, mub_tree_entry *parent, uint64_t value) {
  mub_tree_entry *entry = mub_tree_entry_new(tree.c());
  entry->value = value;
  mub_tree_entry_append(tree.c(), parent, entry);
  return entry;
}

static mub_bitree_entry *add(mub::bitree &tree, mub_bitree_entry *parent, int direction, uint64_t value) {
  mub_bitree_entry *entry = mub_bitree_entry_new(tree.c());
  entry->value = value;
  mub_bitree_entry_add(tree.c(), parent, direction, entry);
  return entry;
}

static void fill_texts_and_blocks() {
  static char text[] = "  name =  value ";
  filled.string = "said \"hello\"\n";
  mub_stream_append(filled.stream.c(), "ab\0c", 4);
  filled.character_view = {text + 2, 4};
  initialised.character_view = {text, 0};
  filled.stringx = {text, 10, 5};
  filled.wchar = u"g\u00FCt";
  for (uint32_t bit : {0U, 9U, 8191U}) mub_bits_insert(filled.bits.c(), bit, 1);

  void *blocks[20];
  filled.pool.c()->block_size = 24;
  for (void *&block : blocks) block = filled.pool.allocate();
  for (int i = 3; i < 6; i++) filled.pool.deallocate(blocks[i]);
}

static void fill_containers() {
  filled.btreex.c()->key_type = 6;
  uint32_t i = 0;
  for (const char *fruit : {"pear", "fig", "", "plum \"x\"", "m\xC3\xBCsli"}) {
    const double real = i - 2.5;
    uint64_t real_bits;
    memcpy(&real_bits, &real, sizeof real);
    mub_array_append(filled.array.c(), fruit, static_cast<int64_t>(strlen(fruit)), i);
    mub_arrayd_append(filled.arrayd.c(), 0xFFFFFFFF - i, i);
    mub_arrayx_append(filled.arrayx.c(), UINT64_MAX - i, i);
    filled.arrays.push_back(i * 10);
    filled.hash.insert(fruit, i);
    filled.hashd.insert(i * 2, i);
    filled.hashx.insert(static_cast<uint64_t>(i) << 40, i);
    filled.hasht.insert({i, 0xA, 0xB, 0xC}, i);
    filled.btree.insert(fruit, i);
    filled.btreed.insert(2 - i, i);
    filled.btreex.insert(real_bits, i);
    mub_list_add_tail(filled.list.c(), fruit, -1, i);
    filled.lists.push_back(i);
    i++;
  }
  filled.arrays.push_back(mub::to_word(&outside));
  for (unsigned n = 0; n < 6; n++) filled.arrayt.push_back(n * n);
  for (unsigned n = 0; n < 35; n++) filled.listx.push_back(n);

  mub_btreed_cursor_seek(&cursor, filled.btreed.c(), static_cast<uint32_t>(-1));
  mub_btree_cursor_last(&cursor_at_end, filled.btree.c());
  mub_btree_cursor_next(&cursor_at_end);
  cursor_without_leaf.tree = filled.btreex.c();
  damaged_cursor = {filled.btreex.c(), &filled.btreex.c()->root, 6};
}

static void fill_trees() {
  mub_tree_entry *root = &filled.tree.c()->root;
  append(filled.tree, root, 10);
  mub_tree_entry *middle = append(filled.tree, root, 20);
  append(filled.tree, root, 30);
  append(filled.tree, middle, 21);
  append(filled.tree, append(filled.tree, middle, 22), 221);

  mub_bitree_entry *fork = &filled.bitree.c()->root;
  fork->value = 50;
  add(filled.bitree, add(filled.bitree, fork, -1, 30), 1, 40);
  add(filled.bitree, add(filled.bitree, fork, 0, 51), 0, 52);
  add(filled.bitree, fork, 1, 70);
}

// Containers that are too large to be printed or drawn completely.
static void fill_large() {
  mub_tree_entry *deepest = &deep_tree.c()->root;
  for (unsigned i = 0; i < 3000; i++) {
    char key[16];
    snprintf(key, sizeof key, "key %05u", i);
    large_hash.insert(key, i);
    large_btree.insert(key, i);
    mub_list_add_tail(large_list.c(), key, -1, i);
    deepest = append(deep_tree, deepest, i + 1);
  }
}

// Damage as a faulty program might cause it.
static void damage() {
  filled.hash.c()->count++;
  auto *entry = mub::to_pointer<mub_hashd_entry>(filled.hashd.c()->buckets.items[2]);
  entry->next = entry;
  mub_lists *lists = filled.lists.c();
  lists->head->next->next->prev = lists->head;
  filled.list.c()->head->next->key_offset = 1000;
  filled.listx.c()->head->count = 1 << 20;
  filled.btreed.c()->root.children.items[1] = 16;
  mub_tree_entry *child = filled.tree.c()->root.first_child->next;
  child->next->next = child;
  mub_bitree_entry *left = filled.bitree.c()->root.left;
  left->right->left = left;
  mub_pool *pool = filled.pool.c();
  char *block = static_cast<char *>(pool->chunks[0]) + 24;
  filled.pool.deallocate(block);
  static_cast<void **>(pool->free_pages[0])[pool->free_used++] = block;
  pool->live_count--;
  filled.array.c()->keys.length = 3;
  *garbage.pool.c() = *pool;
  garbage.pool.c()->chunk_count = 0;  // the copy has returned blocks, but no chunk that contains them
}

int main(int argc, char **) {
  for (size_t i = 0; i < sizeof pattern; i++) pattern[i] = static_cast<unsigned char>(i * 37 + i / 256 + 11);
  (void)hash_pointer;
  (void)object_pointer;
  fill_texts_and_blocks();
  fill_containers();
  fill_trees();
  fill_large();
  articles.emplace("pear", 7, mub::string("Conference"));
  weights.insert(2, 0.5F);
  stop("filled");
  if (argc > 1) abort();  // for a core file
  for (int byte : {0, 0xA5, 0x11, 1}) {
    memset(bytes, byte, sizeof bytes);
    stop("zero or garbage");
  }
  damage();
  stop("damaged");
  _Exit(0);  // destructors would follow the damaged links
}
