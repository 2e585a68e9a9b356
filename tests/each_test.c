/* The loops of mub_each.h, compiled as C and as C++: each visits all items, in order where there is one, ends
 * at a break, also inside another loop, and evaluates its arguments once. */
#include <stdio.h>

#include "mub.h"

enum { MOST = 100 };

static int numbers[MOST + 1];
static char keys[MOST + 1];
static int faults = 0;

static void expect(int holds, const char *loop, int count) {
  if (holds) return;
  printf("%s: wrong with %d items\n", loop, count);
  ++faults;
}

static int least(int a, int b) { return a < b ? a : b; }

/* The containers hold the numbers from 1 to `count`. */
#define NUMBER_IN(number) MUB_VALUE_OF(&numbers[number])
#define NUMBER(value) (*MUB_VALUE_AS(const int, value))

/* `number` is that of `item`. */
#define WALK(loop, container, is_ordered, number)                               \
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
    expect(sum == count * (count + 1) / 2, #loop ": items", count);             \
    expect(pairs == count * (count + 1) / 2, #loop ": inner break", count);     \
    expect(first == least(3, count), #loop ": break", count);                   \
  } while (0)

/* The loop, which begins at key 3, visits the other keys. */
#define WALK_FROM(start)                                            \
  do {                                                              \
    int expected = 3;                                               \
    start expected += item->value == NUMBER_IN(expected);           \
    expect(expected == (count < 3 ? 3 : count + 1), #start, count); \
  } while (0)

/* Initialises a container, fills it with `add` for each i, and walks it. */
#define FILL_AND_WALK(name, init, add, walk) \
  do {                                       \
    mub_##name c;                            \
    init;                                    \
    for (int i = 1; i <= count; i++) add;    \
    walk;                                    \
    mub_##name##_term(&c);                   \
  } while (0)

/* Keys of hash tables differ in more than the bits that select the bucket. */
static void walk_hash_tables(int count) {
  uint32_t quad[4] = {0, 0, 0, 0};
  FILL_AND_WALK(hash, mub_hash_init(&c, 1, 0),
                mub_hash_insert(&c, &numbers[i], sizeof numbers[i], NUMBER_IN(i)),
                WALK(MUB_EACH_HASH, &c, 0, NUMBER(item->value)));
  FILL_AND_WALK(hashd, mub_hashd_init(&c, 1, 0), mub_hashd_insert(&c, (uint32_t)i * 4, NUMBER_IN(i)),
                WALK(MUB_EACH_HASHD, &c, 0, NUMBER(item->value)));
  FILL_AND_WALK(hashx, mub_hashx_init(&c, 1, 0), mub_hashx_insert(&c, (uint64_t)i * 4, NUMBER_IN(i)),
                WALK(MUB_EACH_HASHX, &c, 0, NUMBER(item->value)));
  FILL_AND_WALK(hasht, mub_hasht_init(&c, 1, 0),
                (quad[1] = (uint32_t)i, mub_hasht_insert(&c, quad, NUMBER_IN(i))),
                WALK(MUB_EACH_HASHT, &c, 0, NUMBER(item->value)));
}

static void walk_btrees(int count) {
  FILL_AND_WALK(btree, mub_btree_init(&c, 1, 1, 0), mub_btree_insert(&c, &keys[i], 1, NUMBER_IN(i)), {
    WALK(MUB_EACH_BTREE, &c, 1, NUMBER(item->value));
    WALK_FROM(MUB_EACH_BTREE_FROM(&c, "\3", 1, item));
  });
  FILL_AND_WALK(btreed, mub_btreed_init(&c, 1, 1, 0), mub_btreed_insert(&c, (uint32_t)i, NUMBER_IN(i)), {
    WALK(MUB_EACH_BTREED, &c, 1, NUMBER(item->value));
    WALK_FROM(MUB_EACH_BTREED_FROM(&c, 3, item));
  });
  FILL_AND_WALK(btreex, mub_btreex_init(&c, 1, 1, 0), mub_btreex_insert(&c, (uint64_t)i, NUMBER_IN(i)), {
    WALK(MUB_EACH_BTREEX, &c, 1, NUMBER(item->value));
    WALK_FROM(MUB_EACH_BTREEX_FROM(&c, 3, item));
  });
}

static void walk_arrays(int count) {
  FILL_AND_WALK(array, mub_array_init(&c, 0), mub_array_append(&c, "key", -1, NUMBER_IN(i)),
                WALK(MUB_EACH_ARRAY, &c, 1, NUMBER(item->value)));
  FILL_AND_WALK(arrayd, mub_arrayd_init(&c, 0), mub_arrayd_append(&c, 7, NUMBER_IN(i)),
                WALK(MUB_EACH_ARRAYD, &c, 1, NUMBER(item->value)));
  FILL_AND_WALK(arrayx, mub_arrayx_init(&c, 0), mub_arrayx_append(&c, 7, NUMBER_IN(i)),
                WALK(MUB_EACH_ARRAYX, &c, 1, NUMBER(item->value)));
  FILL_AND_WALK(arrays, mub_arrays_init(&c, 0), mub_arrays_append(&c, NUMBER_IN(i)),
                WALK(MUB_EACH_ARRAYS, &c, 1, NUMBER(*item)));
  FILL_AND_WALK(arrayt, mub_arrayt_init(&c), mub_arrayt_append(&c, NUMBER_IN(i)),
                WALK(MUB_EACH_ARRAYT, &c, 1, NUMBER(*item)));
}

static void walk_lists(int count) {
  FILL_AND_WALK(list, mub_list_init(&c, 1, 0), mub_list_add_tail(&c, "key", -1, NUMBER_IN(i)),
                WALK(MUB_EACH_LIST, &c, 1, NUMBER(item->value)));
  FILL_AND_WALK(lists, mub_lists_init(&c, 1, 0), mub_lists_add_tail(&c, NUMBER_IN(i)),
                WALK(MUB_EACH_LISTS, &c, 1, NUMBER(item->value)));
  FILL_AND_WALK(listx, mub_listx_init(&c, 1, 0), mub_listx_add_tail(&c, NUMBER_IN(i)),
                WALK(MUB_EACH_LISTX, &c, 1, NUMBER(*item)));
}

static mub_tree_entry *append(mub_tree *tree, mub_tree_entry *parent, int number) {
  mub_tree_entry *entry = mub_tree_entry_new(tree);
  if (entry == NULL) return parent;
  entry->value = NUMBER_IN(number);
  mub_tree_entry_append(tree, parent, entry);
  return entry;
}

/* Children, then entries in document order at different depths. */
static void walk_trees(int count) {
  mub_tree_entry *entry = NULL;
  FILL_AND_WALK(tree, mub_tree_init(&c, 1, 0), append(&c, &c.root, i),
                WALK(MUB_EACH_TREE_CHILD, &c.root, 1, NUMBER(item->value)));
  FILL_AND_WALK(tree, mub_tree_init(&c, 1, 0),
                entry = append(&c,
                               i % 7 == 1   ? &c.root
                               : i % 2 == 0 ? entry
                                            : entry->parent,
                               i),
                WALK(MUB_EACH_TREE_BELOW, &c.root, 1, NUMBER(item->value)));
}

static void walk_bits(int count) {
  FILL_AND_WALK(bits, mub_bits_init(&c), mub_bits_insert(&c, (uint32_t)i * 7, 1),
                WALK(MUB_EACH_BIT, &c, 1, item / 7));
}

int main(void) {
  static const int counts[] = {0, 1, 4, 5, 32, 33, MOST};
  for (int i = 0; i <= MOST; i++) keys[i] = (char)(numbers[i] = i);
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
