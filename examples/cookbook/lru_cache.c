/* Build a cache that evicts the least recently used item.
 *
 * A list keeps the items in the order of use, and a hash table maps a key to its list entry. A list entry
 * stays valid until it is removed, so the table can store its address. */
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
  mub_lists order;  /* items, the most recently used at the head */
} cache;

static item *item_at(uint64_t value) { return MUB_VALUE_AS(item, value); }

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

/* Moves an item to the head; leaves it in place if memory runs out. */
static mub_lists_entry *to_head(cache *c, mub_lists_entry *place) {
  mub_lists_entry *head = mub_lists_add_head(&c->order, place->value);
  if (head == NULL) return place;
  mub_lists_remove_at(&c->order, place);
  mub_hashx_update(&c->places, item_at(head->value)->key, MUB_VALUE_OF(head));
  return head;
}

static const item *cache_find(cache *c, uint64_t key) {
  const uint64_t place = mub_hashx_get(&c->places, key);
  return place != 0 ? item_at(to_head(c, MUB_VALUE_AS(mub_lists_entry, place))->value) : NULL;
}

static mub_lists_entry *new_place(cache *c) {
  item *fresh = mub_pool_new(c->order.value_pool);
  mub_lists_entry *place = fresh != NULL ? mub_lists_add_head(&c->order, MUB_VALUE_OF(fresh)) : NULL;
  if (place == NULL) mub_pool_free(c->order.value_pool, fresh);
  return place;
}

/* Evicts the least recently used item, and returns it for reuse. */
static mub_lists_entry *oldest_place(cache *c) {
  mub_lists_entry *place = to_head(c, c->order.tail);
  mub_hashx_remove(&c->places, item_at(place->value)->key);
  return place;
}

/* Adds a key that is not in the cache. Returns its item, or NULL if memory runs out. */
static const item *cache_add(cache *c, item added) {
  mub_lists_entry *place = c->order.count < ROOM ? new_place(c) : oldest_place(c);
  if (place == NULL) return NULL;
  *item_at(place->value) = added;
  return mub_hashx_insert(&c->places, added.key, MUB_VALUE_OF(place)) ? item_at(place->value) : NULL;
}

int main(void) {
  static const uint64_t asked[] = {2, 3, 4, 2, 5, 3, 2};
  cache squares;
  int done = cache_init(&squares);
  for (size_t i = 0; done && i < sizeof asked / sizeof *asked; i++) {
    const item *known = cache_find(&squares, asked[i]);
    const item *square = known != NULL ? known : cache_add(&squares, (item){asked[i], asked[i] * asked[i]});
    done = square != NULL;
    if (done)
      printf("%d: %d, %s\n", (int)asked[i], (int)square->answer, known != NULL ? "known" : "computed");
  }
  cache_term(&squares);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
