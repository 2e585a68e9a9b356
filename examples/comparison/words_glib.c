/* Counts words with GLib. */
#include <glib.h>
#include <stdio.h>

static const char *const TEXT[] = {"the", "cat", "and", "the", "dog", "and", "the", "bird"};

int main(void) {
  GHashTable *words = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, NULL);

  for (size_t i = 0; i < sizeof TEXT / sizeof *TEXT; i++) {
    const int count = GPOINTER_TO_INT(g_hash_table_lookup(words, TEXT[i]));
    g_hash_table_insert(words, g_strdup(TEXT[i]), GINT_TO_POINTER(count + 1));
  }

  printf("the: %d\n", GPOINTER_TO_INT(g_hash_table_lookup(words, "the")));
  printf("cow: %s\n", g_hash_table_contains(words, "cow") ? "present" : "absent");
  g_hash_table_remove(words, "and");

  int total = 0;
  GHashTableIter at;
  gpointer value;
  g_hash_table_iter_init(&at, words);
  while (g_hash_table_iter_next(&at, NULL, &value)) total += GPOINTER_TO_INT(value);
  printf("%d words, %d in all\n", (int)g_hash_table_size(words), total);

  g_hash_table_destroy(words);
}
