/* Find the prime numbers below a bound with a bit set.
 *
 * The set is allocated at its final size. Only that can run out of memory; after that, setting a bit cannot
 * fail. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

enum { BOUND = 200 };

static int sieve(mub_bits *composite) {
  if (!mub_bits_expand(composite, (BOUND + 7) / 8)) return 0;
  for (uint32_t n = 2; n * n < BOUND; n++) {
    if (mub_bits_find(composite, n)) continue;
    for (uint32_t multiple = n * n; multiple < BOUND; multiple += n) mub_bits_insert(composite, multiple, 1);
  }
  return 1;
}

static void print_clear(const mub_bits *composite) {
  int printed = 0;
  for (uint32_t n = 2; n < BOUND; n++) {
    if (mub_bits_find(composite, n)) continue;
    printf("%4u%s", n, ++printed % 16 == 0 ? "\n" : "");
  }
  printf("\n%d primes below %d\n", printed, BOUND);
}

int main(void) {
  mub_bits composite;
  mub_bits_init(&composite);
  const int done = sieve(&composite);
  if (done) print_clear(&composite);
  mub_bits_term(&composite);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
