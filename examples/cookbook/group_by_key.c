/* Group records by a key, with a total for each group.
 *
 * A group is a block of the tree's value pool. mub_btree_set finds the group of a key or creates it, in a
 * single look-up, and passes a new group to the initialiser. The tree keeps its keys in order, so the report
 * needs no sorting. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct sale {
  const char *town;
  int amount;
} sale;

typedef struct group {
  int count;
  int total;
  int largest;
} group;

static const sale SALES[] = {{"Lyon", 120}, {"Arles", 75}, {"Lyon", 30},
                             {"Nice", 210}, {"Arles", 25}, {"Lyon", 99}};

static group *group_at(uint64_t value) { return MUB_VALUE_AS(group, value); }

static void clear_group(uint64_t value) { *group_at(value) = (group){0, 0, 0}; }

static int add(mub_btree *groups, const sale *sold) {
  uint64_t value;
  mub_btree_set(groups, sold->town, -1, &value, clear_group);
  if (value == 0) return 0; /* out of memory */
  group_at(value)->count++;
  group_at(value)->total += sold->amount;
  if (group_at(value)->largest < sold->amount) group_at(value)->largest = sold->amount;
  return 1;
}

static void print(const mub_btree *groups) {
  MUB_EACH_BTREE(groups, node) {
    const group *of_town = group_at(node->value);
    printf("%-6.*s %d sales, %3d in all, %3d the largest\n", (int)node->key_length,
           groups->keys.data + node->key_offset, of_town->count, of_town->total, of_town->largest);
  }
}

int main(void) {
  mub_btree groups;
  mub_btree_init(&groups, 1, 1, 1); /* with its own pools for nodes, records and values */
  int done = groups.value_pool != NULL;
  if (done) groups.value_pool->block_size = sizeof(group); /* the library does not know it */
  for (size_t i = 0; done && i < sizeof SALES / sizeof *SALES; i++) done = add(&groups, &SALES[i]);
  if (done) print(&groups);
  mub_btree_term(&groups); /* releases every group at once */
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
