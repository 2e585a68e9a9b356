/* The numbered headings of the texts, such as "2. Copying" and "2.1 By hand", as a tree. */
#ifndef MUBDEX_OUTLINE_H
#define MUBDEX_OUTLINE_H

#include "corpus.h"

typedef struct heading {
  mub_char number; /* "2.1", sharing the bytes of the corpus, as the title does */
  mub_char title;
  int64_t line;
} heading;

typedef struct outline {
  mub_tree headings; /* below the root; the value of an entry is the address of its heading */
} outline;

bool outline_init(outline *o);
void outline_term(outline *o);

/* Collects the headings: lines that are a number, its parts ended or joined by dots, one blank, and a title
 * that starts with a capital letter. A heading stands below the nearest one before it whose number begins
 * its own. False when memory ran out. */
bool outline_fill(outline *o, const corpus *texts);

const heading *outline_heading(const mub_tree_entry *entry);

#endif
