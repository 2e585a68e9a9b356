/* Keep an index that is ordered by floating-point numbers.
 *
 * A B-tree of 64-bit numbers compares its keys as doubles if its `key_type` says so. A key is the bits of a
 * double: memcpy() converts in both directions. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "mub.h"

typedef struct star {
  const char *name;
  double magnitude; /* the brighter, the lower */
} star;

static const star STARS[] = {
    {"Vega", 0.03}, {"Sirius", -1.46}, {"Polaris", 1.98}, {"Canopus", -0.74}, {"Mizar", 2.04}};

static uint64_t key_of(double number) {
  uint64_t key;
  memcpy(&key, &number, sizeof key);
  return key;
}

static double number_of(uint64_t key) {
  double number;
  memcpy(&number, &key, sizeof number);
  return number;
}

int main(void) {
  mub_btreex by_magnitude;
  mub_btreex_init(&by_magnitude, 1, 1, 0);
  by_magnitude.key_type = MUB_KEY_DOUBLE;
  int done = 1;
  for (size_t i = 0; done && i < sizeof STARS / sizeof *STARS; i++)
    done = mub_btreex_insert(&by_magnitude, key_of(STARS[i].magnitude), MUB_VALUE_OF(&STARS[i]));
  if (done) {
    puts("brightest first");
    MUB_EACH_BTREEX(&by_magnitude, node) {
      printf("  %5.2f %s\n", number_of(node->key), MUB_VALUE_AS(const star, node->value)->name);
    }
    puts("from magnitude 1 on");
    MUB_EACH_BTREEX_FROM(&by_magnitude, key_of(1), node) {
      printf("  %5.2f %s\n", number_of(node->key), MUB_VALUE_AS(const star, node->value)->name);
    }
  }
  mub_btreex_term(&by_magnitude);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
