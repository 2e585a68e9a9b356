/* Build an outline from paths, and print it indented.
 *
 * mub_tree stores no keys. The value of an entry is a block with the program's data, here a view of the title
 * in the path that added it. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "mub.h"

static const char *const PATHS[] = {"animals/birds/wren", "plants/trees/oak", "animals/birds/owl",
                                    "animals/fish", "plants/trees/elm"};

static mub_stringx *title_of(const mub_tree_entry *entry) { return MUB_VALUE_AS(mub_stringx, entry->value); }

static mub_tree_entry *add_child(mub_tree *tree, mub_tree_entry *parent, const mub_stringx *title) {
  mub_stringx *kept = mub_pool_new(tree->value_pool);
  mub_tree_entry *entry = mub_tree_entry_new(tree);
  if (kept == NULL || entry == NULL) return NULL; /* whichever succeeded is released with its pool */
  mub_stringx_copy(kept, title);
  entry->value = MUB_VALUE_OF(kept);
  mub_tree_entry_append(tree, parent, entry);
  return entry;
}

static mub_tree_entry *find_or_add(mub_tree *tree, mub_tree_entry *parent, const mub_stringx *title) {
  MUB_EACH_TREE_CHILD(parent, entry) {
    if (mub_stringx_compare(title_of(entry), title->text + title->start, title->length) == 0) return entry;
  }
  return add_child(tree, parent, title);
}

static int add_path(mub_tree *tree, const char *path) {
  mub_tree_entry *at = &tree->root;
  mub_stringx rest = {path, 0, (int64_t)strlen(path)};
  while (at != NULL && rest.length > 0) {
    const int64_t slash = mub_stringx_find_char(&rest, '/');
    const mub_stringx title = {path, rest.start, slash < 0 ? rest.length : slash};
    at = find_or_add(tree, at, &title);
    mub_stringx_mid(&rest, slash < 0 ? rest.length : slash + 1, rest.length);
  }
  return at != NULL;
}

static void print(const mub_tree *tree) {
  MUB_EACH_TREE_BELOW(&tree->root, entry) {
    int depth = 0;
    for (const mub_tree_entry *up = entry->parent; up != &tree->root; up = up->parent) depth++;
    printf("%*s%d. %.*s\n", 3 * depth, "", (int)mub_tree_entry_index(entry), (int)title_of(entry)->length,
           title_of(entry)->text + title_of(entry)->start);
  }
}

int main(void) {
  mub_tree outline;
  mub_tree_init(&outline, 1, 1);
  int done = outline.value_pool != NULL;
  if (done) outline.value_pool->block_size = sizeof(mub_stringx);
  for (size_t i = 0; done && i < sizeof PATHS / sizeof *PATHS; i++) done = add_path(&outline, PATHS[i]);
  if (done) print(&outline);
  mub_tree_term(&outline);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
