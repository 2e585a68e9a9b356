/* A cache that forgets what was not used for longest.
 *
 * A list keeps the items in the order of use, a hash table finds the place of a key in it. A place in a
 * list stays valid until it is removed, so the table can hold its address. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

enum { ROOM = 3 };

typedef struct item {
  uint64_t key;
  uint64_t answer;
} item;

typedef struct cache {
  mub_hashx places; /* key -> entry of `order` */
  mub_lists order;  /* items, the one used last at the head */
} cache;

static item *item_at(uint64_t value) { return (item *)(uintptr_t)value; }

static int cache_init(cache *c) {
  mub_hashx_init(&c->places, 1, 0);
  mub_lists_init(&c->order, 1, 1);
  if (c->order.value_pool != NULL) c->order.value_pool->block_size = sizeof(item);
  return c->order.value_pool != NULL;
}

static void cache_term(cache *c) {
  mub_lists_term(&c->order);
  mub_hashx_term(&c->places);
}

/* The entry removed is the block that the addition takes: this needs no memory. */
static item *to_head(cache *c, mub_lists_entry *place) {
  const uint64_t value = mub_lists_remove_at(&c->order, place);
  mub_lists_entry *head = mub_lists_add_head(&c->order, value);
  mub_hashx_update(&c->places, item_at(value)->key, (uintptr_t)head);
  return item_at(value);
}

static item *cache_find(cache *c, uint64_t key) {
  const uint64_t place = mub_hashx_get(&c->places, key);
  return place != 0 ? to_head(c, (mub_lists_entry *)(uintptr_t)place) : NULL;
}

/* For a key that is not there. A full cache gives the block of its oldest item to the new one. */
static int cache_add(cache *c, item added) {
  uint64_t value;
  if (c->order.count == ROOM) {
    mub_hashx_remove(&c->places, item_at(mub_lists_get_tail(&c->order))->key);
    value = mub_lists_remove_tail(&c->order);
    mub_lists_add_head(&c->order, value);
  } else {
    value = mub_lists_add_head_new(&c->order, NULL);
    if (value == 0) return 0;
  }
  *item_at(value) = added;
  return mub_hashx_insert(&c->places, added.key, (uintptr_t)c->order.head);
}

int main(void) {
  static const uint64_t asked[] = {2, 3, 4, 2, 5, 3, 2};
  cache squares;
  int done = cache_init(&squares);
  for (size_t i = 0; done && i < sizeof asked / sizeof *asked; i++) {
    const item *known = cache_find(&squares, asked[i]);
    const char *how = known != NULL ? "known" : "computed";
    if (known == NULL) done = cache_add(&squares, (item){asked[i], asked[i] * asked[i]});
    if (done) printf("%d: %d, %s\n", (int)asked[i], (int)item_at(squares.order.head->value)->answer, how);
  }
  cache_term(&squares);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
