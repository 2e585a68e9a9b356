/* Remove many byte-string keys from a hash table.
 *
 * Each removal of such a key takes time proportional to the size of the table. So set the value to 0 instead,
 * which mub_hash_get also returns for an absent key. When more than half of the keys are removed, copy the
 * others to a new table: a removal then takes constant time on average. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct sessions {
  mub_hash started; /* the user's name -> when the session started; 0: there is none */
  int64_t ended;    /* keys with value 0 */
} sessions;

/* [sweep] */
/* Removes the keys with value 0. If memory runs out, the table is unchanged. */
static int sweep(mub_hash *table) {
  mub_hash kept;
  int done = 1;
  mub_hash_init(&kept, 1, 0);
  MUB_EACH_HASH(table, e) {
    if (e->value == 0) continue;
    done = mub_hash_insert(&kept, table->keys.data + e->key_offset, e->key_length, e->value);
    if (!done) break;
  }
  if (done) mub_hash_swap(table, &kept);
  mub_hash_term(&kept); /* the old table, or an incomplete new one */
  return done;
}
/* [sweep] */

static int start(sessions *all, const char *user, uint64_t time) {
  mub_hash_entry *entry;
  const int is_new = mub_hash_entry_set(&all->started, user, -1, &entry);
  if (entry == NULL) return 0; /* out of memory */
  if (!is_new && entry->value == 0) all->ended--;
  entry->value = time;
  return 1;
}

static void end(sessions *all, const char *user) {
  if (mub_hash_update(&all->started, user, -1, 0) == 0) return; /* no session */
  all->ended++;
  if (all->ended > all->started.count / 2 && sweep(&all->started)) all->ended = 0;
}

int main(void) {
  sessions all = {.ended = 0};
  char user[20];
  int done = 1;
  mub_hash_init(&all.started, 1, 0);
  for (int i = 0; done && i < 10000; i++) {
    snprintf(user, sizeof user, "user %d", i);
    done = start(&all, user, (uint64_t)i + 1);
  }
  for (int i = 0; done && i < 9500; i++) {
    snprintf(user, sizeof user, "user %d", i);
    end(&all, user);
  }
  const int keys = (int)all.started.count, ended = (int)all.ended;
  printf("%d sessions in a table of %d keys\n", keys - ended, keys);
  printf("user 7 started at %d, user 9999 at %d\n", (int)mub_hash_get(&all.started, "user 7", -1),
         (int)mub_hash_get(&all.started, "user 9999", -1));
  mub_hash_term(&all.started);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
