/* Undo and redo of edits to a text.
 *
 * Each edit stores the bytes that it replaced. Undoing an edit swaps them with the new bytes, so that the
 * same struct then serves to redo it. The only state is a position in the list, which stays valid when edits
 * are added. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

typedef struct edit {
  int64_t position;
  int64_t length;   /* of the replacement in the text */
  mub_string other; /* the bytes that were there before */
} edit;

typedef struct editor {
  mub_string text;
  mub_lists edits;       /* values: edits, blocks of the list's own pool */
  mub_lists_entry *last; /* the last edit that is not undone; NULL if all are */
} editor;

static edit *edit_at(uint64_t value) { return MUB_VALUE_AS(edit, value); }

static void release_edit(uint64_t value) { mub_string_term(&edit_at(value)->other); }

static int toggle(mub_string *text, edit *change) {
  mub_string current;
  mub_string_init(&current);
  const int64_t new_length = change->other.length;
  const int done = mub_string_mid_string(text, change->position, change->length, &current) &&
                   mub_string_update(text, change->position, change->length,
                                     change->other.data ? change->other.data : "", new_length);
  if (done) change->length = new_length;
  if (done) mub_string_swap(&change->other, &current);
  mub_string_term(&current);
  return done;
}

/* The caller owns a removed value: release its string and its block. */
static void drop_redo(editor *e) {
  while (e->edits.tail != e->last) {
    edit *dropped = edit_at(mub_lists_remove_tail(&e->edits));
    if (dropped != NULL) mub_string_term(&dropped->other);
    mub_pool_free(e->edits.value_pool, dropped);
  }
}

static int replace(editor *e, int64_t position, int64_t length, const char *with) {
  drop_redo(e);
  edit *added = edit_at(mub_lists_add_tail_new(&e->edits, NULL));
  if (added != NULL) *added = (edit){position, length, {NULL, 0, 0}};
  if (added == NULL || !mub_string_copy(&added->other, with, -1) || !toggle(&e->text, added)) {
    drop_redo(e);
    return 0;
  }
  e->last = e->edits.tail;
  return printf("edit  %s\n", e->text.data) > 0;
}

static int undo(editor *e) {
  if (e->last == NULL || !toggle(&e->text, edit_at(e->last->value))) return 0;
  e->last = e->last->prev;
  return printf("undo  %s\n", e->text.data) > 0;
}

static int redo(editor *e) {
  mub_lists_entry *next = e->last != NULL ? e->last->next : e->edits.head;
  if (next == NULL || !toggle(&e->text, edit_at(next->value))) return 0;
  e->last = next;
  return printf("redo  %s\n", e->text.data) > 0;
}

int main(void) {
  editor e = {.last = NULL};
  mub_string_init(&e.text);
  mub_lists_init(&e.edits, 1, 1);
  int done = e.edits.value_pool != NULL && mub_string_copy(&e.text, "a plain text", -1);
  if (done) e.edits.value_pool->block_size = sizeof(edit);
  done = done && replace(&e, 2, 5, "short") && replace(&e, 0, 1, "One") && undo(&e) && undo(&e) && redo(&e) &&
         replace(&e, 8, 4, "story") && !redo(&e);
  mub_lists_free_all(&e.edits, release_edit);
  mub_lists_term(&e.edits);
  mub_string_term(&e.text);
  return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
