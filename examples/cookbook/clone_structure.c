/* Clone a structure of blocks that point at each other, and release each copy at once.
 *
 * People are blocks of the table's own value pool and point to towns, which are blocks of another pool.
 * mub_hash_clone copies both pools as a whole; the callback redirects the pointer of each copied person to
 * the copied town. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct town {
  char name[16];
} town;

typedef struct person {
  int age;
  town *home;
} person;

static person *person_at(uint64_t value) { return MUB_VALUE_AS(person, value); }

static int add(mub_hash *people, const char *name, int age, town *home) {
  uint64_t value;
  mub_hash_set(people, name, -1, &value, NULL);
  if (value != 0) *person_at(value) = (person){age, home};
  return value != 0;
}

/* `copied` is a copy byte for byte, so its home is still the original town. */
static void move_home(const mub_pool_chunk *map, uint64_t original, mub_pool *towns, uint64_t copied,
                      mub_pool *copied_towns) {
  int64_t offset = 0;
  const int chunk = mub_pool_get_addr(towns, map, person_at(original)->home, &offset);
  person_at(copied)->home = mub_pool_set_addr(copied_towns, chunk, offset);
}

static void print(const char *title, const mub_hash *people) {
  const person *ann = person_at(mub_hash_get(people, "Ann", -1)),
               *bob = person_at(mub_hash_get(people, "Bob", -1));
  printf("%s: Ann, %d, of %s; Bob, %d, of %s\n", title, ann->age, ann->home->name, bob->age, bob->home->name);
}

static int demonstrate(mub_hash *people, mub_pool *towns, mub_hash *copy, mub_pool *copied_towns) {
  if (people->value_pool == NULL || copy->value_pool == NULL) return 0;
  people->value_pool->block_size = sizeof(person);
  towns->block_size = sizeof(town);
  town *lyon = mub_pool_new(towns);
  if (lyon == NULL) return 0;
  *lyon = (town){"Lyon"};
  if (!add(people, "Ann", 41, lyon) || !add(people, "Bob", 29, lyon)) return 0;

  mub_hash_clone(people, towns, copy, copied_towns, move_home);
  if (copy->count != people->count) return 0; /* out of memory: the copy is empty */
  person *ann = person_at(mub_hash_get(copy, "Ann", -1));
  ann->age++;
  *ann->home = (town){"Nice"}; /* the home of the copied Bob, too */
  print("original", people);
  print("copy", copy);
  return 1;
}

int main(void) {
  mub_hash people, copy;
  mub_pool towns, copied_towns;
  mub_pool_init(&towns);
  mub_pool_init(&copied_towns);
  mub_hash_init(&people, 1, 1);
  mub_hash_init(&copy, 1, 1);
  const int done = demonstrate(&people, &towns, &copy, &copied_towns);
  mub_hash_term(&copy); /* releases the pools as a whole, without visiting each person */
  mub_hash_term(&people);
  mub_pool_term(&copied_towns);
  mub_pool_term(&towns);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
