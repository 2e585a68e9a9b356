/* Implement sparse sets of numbers, with union and intersection.
 *
 * A set is a hash table from the upper bits of a number to a 64-bit word with one bit for each value of the
 * lower six: nearby numbers share an entry, and set operations process 64 numbers at a time. */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

static int add_word(mub_hashx *set, uint64_t page, uint64_t bits) {
  mub_hashx_entry *entry;
  if (bits == 0) return 1;
  mub_hashx_entry_set(set, page, &entry); /* a new entry has value 0 */
  if (entry == NULL) return 0;
  entry->value |= bits;
  return 1;
}

static int add_range(mub_hashx *set, uint64_t first, uint64_t last, uint64_t step) {
  for (uint64_t n = first; n <= last; n += step)
    if (!add_word(set, n >> 6, UINT64_C(1) << (n & 63))) return 0;
  return 1;
}

/* Stores the intersection in `out` if `common`, otherwise the union. */
static int combine(const mub_hashx *a, const mub_hashx *b, int common, mub_hashx *out) {
  MUB_EACH_HASHX(a, e) {
    if (!add_word(out, e->key, common ? e->value & mub_hashx_get(b, e->key) : e->value)) return 0;
  }
  if (common) return 1;
  MUB_EACH_HASHX(b, e) {
    if (!add_word(out, e->key, e->value)) return 0;
  }
  return 1;
}

static int64_t members(const mub_hashx *set) {
  int64_t count = 0;
  MUB_EACH_HASHX(set, e) {
    for (uint64_t bits = e->value; bits != 0; bits &= bits - 1) count++;
  }
  return count;
}

static void print(const char *name, const mub_hashx *set) {
  printf("%-8s %4" PRId64 " numbers in %3" PRId64 " words\n", name, members(set), set->count);
}

int main(void) {
  static const char *const names[] = {"sevens", "far", "both", "either"};
  mub_hashx sets[4];
  for (int i = 0; i < 4; i++) mub_hashx_init(&sets[i], 1, 0);
  const uint64_t far_off = UINT64_C(1) << 40;
  const int done = add_range(&sets[0], 0, 6999, 7) && add_range(&sets[1], 6900, 6999, 1) &&
                   add_range(&sets[1], far_off, far_off + 63, 1) &&
                   combine(&sets[0], &sets[1], 1, &sets[2]) && combine(&sets[0], &sets[1], 0, &sets[3]);
  for (int i = 0; i < 4; i++) {
    if (done) print(names[i], &sets[i]);
    mub_hashx_term(&sets[i]);
  }
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
