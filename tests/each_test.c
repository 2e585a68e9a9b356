/* The loops of mub_each.h, compiled as C and as C++: each visits all items, in order where there is one, ends
 * at a break, also inside another loop, and evaluates its arguments once. */
#include <stdio.h>

#include "mub.h"

enum { MOST = 100 };

static int numbers[MOST + 1];
static int faults = 0;

static void expect(int holds, const char *loop, int count) {
  if (holds) return;
  printf("%s: wrong with %d items\n", loop, count);
  ++faults;
}

static int least(int a, int b) { return a < b ? a : b; }

/* The items are 1 to `count`; `number` is that of `item`. */
#define WALK(loop, container, count, is_ordered, number)                        \
  do {                                                                          \
    int evaluated = 0, visited = 0, ordered = 1, sum = 0, pairs = 0, first = 0; \
    loop((evaluated++, (container)), item) {                                    \
      ordered = ordered && (int)(number) == ++visited;                          \
      if (!ordered && (is_ordered)) continue;                                   \
      sum += (int)(number);                                                     \
    }                                                                           \
    loop(container, outer) loop(container, item) {                              \
      pairs++;                                                                  \
      if (item == outer) break;                                                 \
    }                                                                           \
    loop(container, item) if (++first == 3) break;                              \
    expect(evaluated == 1, #loop ": evaluation", count);                        \
    expect(sum == (count) * ((count) + 1) / 2, #loop ": items", count);         \
    expect(pairs == (count) * ((count) + 1) / 2, #loop ": inner break", count); \
    expect(first == least(3, count), #loop ": break", count);                   \
  } while (0)

/* The loop, which begins at key 3, visits the other keys. */
#define WALK_FROM(start, count)                                         \
  do {                                                                  \
    int expected = 3;                                                   \
    start expected += item->value == NUMBER_IN(expected);               \
    expect(expected == ((count) < 3 ? 3 : (count) + 1), #start, count); \
  } while (0)

#define NUMBER_IN(number) MUB_VALUE_OF(&numbers[number])
#define NUMBER(value) (*MUB_VALUE_AS(const int, value))

static void walk_hash_tables(int count) {
  mub_hash bytes;
  mub_hashd dwords;
  mub_hashx xwords;
  mub_hasht quads;
  mub_hash_init(&bytes, 1, 0);
  mub_hashd_init(&dwords, 1, 0);
  mub_hashx_init(&xwords, 1, 0);
  mub_hasht_init(&quads, 1, 0);
  for (int i = 1; i <= count; i++) {
    const uint32_t quad[4] = {0, (uint32_t)i, 0, 0};
    mub_hash_insert(&bytes, &numbers[i], sizeof numbers[i], NUMBER_IN(i));
    mub_hashd_insert(&dwords, (uint32_t)i * 4, NUMBER_IN(i));
    mub_hashx_insert(&xwords, (uint64_t)i * 4, NUMBER_IN(i));
    mub_hasht_insert(&quads, quad, NUMBER_IN(i));
  }
  WALK(MUB_EACH_HASH, &bytes, count, 0, NUMBER(item->value));
  WALK(MUB_EACH_HASHD, &dwords, count, 0, NUMBER(item->value));
  WALK(MUB_EACH_HASHX, &xwords, count, 0, NUMBER(item->value));
  WALK(MUB_EACH_HASHT, &quads, count, 0, NUMBER(item->value));
  mub_hash_term(&bytes);
  mub_hashd_term(&dwords);
  mub_hashx_term(&xwords);
  mub_hasht_term(&quads);
}

static void walk_btrees(int count) {
  mub_btree bytes;
  mub_btreed dwords;
  mub_btreex xwords;
  mub_btree_init(&bytes, 1, 1, 0);
  mub_btreed_init(&dwords, 1, 1, 0);
  mub_btreex_init(&xwords, 1, 1, 0);
  for (int i = count; i > 0; i--) {
    const char key = (char)i;
    mub_btree_insert(&bytes, &key, 1, NUMBER_IN(i));
    mub_btreed_insert(&dwords, (uint32_t)i, NUMBER_IN(i));
    mub_btreex_insert(&xwords, (uint64_t)i, NUMBER_IN(i));
  }
  WALK(MUB_EACH_BTREE, &bytes, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_BTREED, &dwords, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_BTREEX, &xwords, count, 1, NUMBER(item->value));
  WALK_FROM(MUB_EACH_BTREE_FROM(&bytes, "\3", 1, item), count);
  WALK_FROM(MUB_EACH_BTREED_FROM(&dwords, 3, item), count);
  WALK_FROM(MUB_EACH_BTREEX_FROM(&xwords, 3, item), count);
  mub_btree_term(&bytes);
  mub_btreed_term(&dwords);
  mub_btreex_term(&xwords);
}

static void walk_arrays(int count) {
  mub_array bytes;
  mub_arrayd dwords;
  mub_arrayx xwords;
  mub_arrays items;
  mub_arrayt words;
  mub_array_init(&bytes, 0);
  mub_arrayd_init(&dwords, 0);
  mub_arrayx_init(&xwords, 0);
  mub_arrays_init(&items, 0);
  mub_arrayt_init(&words);
  for (int i = 1; i <= count; i++) {
    mub_array_append(&bytes, "key", -1, NUMBER_IN(i));
    mub_arrayd_append(&dwords, 7, NUMBER_IN(i));
    mub_arrayx_append(&xwords, 7, NUMBER_IN(i));
    mub_arrays_append(&items, NUMBER_IN(i));
    mub_arrayt_append(&words, NUMBER_IN(i));
  }
  WALK(MUB_EACH_ARRAY, &bytes, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_ARRAYD, &dwords, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_ARRAYX, &xwords, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_ARRAYS, &items, count, 1, NUMBER(*item));
  WALK(MUB_EACH_ARRAYT, &words, count, 1, NUMBER(*item));
  mub_array_term(&bytes);
  mub_arrayd_term(&dwords);
  mub_arrayx_term(&xwords);
  mub_arrays_term(&items);
  mub_arrayt_term(&words);
}

static void walk_lists(int count) {
  mub_list bytes;
  mub_lists values;
  mub_listx blocks;
  mub_list_init(&bytes, 1, 0);
  mub_lists_init(&values, 1, 0);
  mub_listx_init(&blocks, 1, 0);
  for (int i = 1; i <= count; i++) {
    mub_list_add_tail(&bytes, "key", -1, NUMBER_IN(i));
    mub_lists_add_tail(&values, NUMBER_IN(i));
    mub_listx_add_tail(&blocks, NUMBER_IN(i));
  }
  WALK(MUB_EACH_LIST, &bytes, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_LISTS, &values, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_LISTX, &blocks, count, 1, NUMBER(*item));
  mub_list_term(&bytes);
  mub_lists_term(&values);
  mub_listx_term(&blocks);
}

static void append(mub_tree *tree, mub_tree_entry *parent, int number) {
  mub_tree_entry *entry = mub_tree_entry_new(tree);
  if (entry == NULL) return;
  entry->value = NUMBER_IN(number);
  mub_tree_entry_append(tree, parent, entry);
}

/* The entries of `tall` are in document order, at different depths. */
static void walk_trees(int count) {
  mub_tree flat, tall;
  mub_tree_init(&flat, 1, 0);
  mub_tree_init(&tall, 1, 0);
  mub_tree_entry *parent = &tall.root;
  for (int i = 1; i <= count; i++) {
    append(&flat, &flat.root, i);
    append(&tall, parent, i);
    parent = i % 7 == 0 ? &tall.root : i % 2 == 0 ? mub_tree_entry_last(parent) : parent;
  }
  WALK(MUB_EACH_TREE_CHILD, &flat.root, count, 1, NUMBER(item->value));
  WALK(MUB_EACH_TREE_BELOW, &tall.root, count, 1, NUMBER(item->value));
  mub_tree_term(&flat);
  mub_tree_term(&tall);
}

static void walk_bits(int count) {
  mub_bits sparse;
  mub_bits_init(&sparse);
  for (int i = 1; i <= count; i++) mub_bits_insert(&sparse, (uint32_t)i * 7, 1);
  WALK(MUB_EACH_BIT, &sparse, count, 1, item / 7);
  mub_bits_term(&sparse);
}

int main(void) {
  static const int counts[] = {0, 1, 4, 5, 32, 33, MOST};
  for (int i = 0; i <= MOST; i++) numbers[i] = i;
  for (size_t i = 0; i < sizeof counts / sizeof *counts; i++) {
    walk_hash_tables(counts[i]);
    walk_btrees(counts[i]);
    walk_arrays(counts[i]);
    walk_lists(counts[i]);
    walk_trees(counts[i]);
    walk_bits(counts[i]);
  }
  return faults == 0 ? 0 : 1;
}
