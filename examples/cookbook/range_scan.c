/* Keep an ordered index, and list the keys of a range.
 *
 * The loop begins at the first record whose key is not less than the start of the range, and visits the
 * records in key order to the end of the range. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct event {
  int64_t minute; /* of the day */
  const char *what;
} event;

static const event EVENTS[] = {
    {8 * 60 + 30, "doors open"}, {13 * 60, "lunch"},     {9 * 60, "welcome"},
    {10 * 60 + 45, "coffee"},    {17 * 60, "good-byes"}, {14 * 60 + 15, "workshops"},
};

static void print_range(const mub_btreex *index, int64_t from, int64_t to) {
  printf("from %02d:%02d to %02d:%02d\n", (int)from / 60, (int)from % 60, (int)to / 60, (int)to % 60);
  MUB_EACH_BTREEX_FROM(index, (uint64_t)from, node) {
    const event *entry = MUB_VALUE_AS(const event, node->value);
    if ((int64_t)node->key >= to) break;
    printf("  %02d:%02d %s\n", (int)entry->minute / 60, (int)entry->minute % 60, entry->what);
  }
}

int main(void) {
  mub_btreex by_minute; /* its keys are signed numbers unless `key_type` is changed */
  mub_btreex_init(&by_minute, 1, 1, 0);
  int done = 1;
  for (size_t i = 0; done && i < sizeof EVENTS / sizeof *EVENTS; i++)
    done = mub_btreex_insert(&by_minute, (uint64_t)EVENTS[i].minute, MUB_VALUE_OF(&EVENTS[i]));
  if (done) {
    print_range(&by_minute, 9 * 60, 12 * 60);
    print_range(&by_minute, 12 * 60, 24 * 60);
  }
  mub_btreex_term(&by_minute);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
