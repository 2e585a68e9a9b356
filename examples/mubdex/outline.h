/* The numbered headings of the texts, such as "2. Copying" and "2.1 Verbatim", as a tree. */
#ifndef MUBDEX_OUTLINE_H
#define MUBDEX_OUTLINE_H

#include "corpus.h"

typedef struct heading {
  mub_char number; /* "2.1"; a view of the corpus, as is the title */
  mub_char title;
  int64_t line;
} heading;

typedef struct outline {
  mub_tree headings; /* the value of an entry is the address of its heading; the root has none */
} outline;

bool outline_init(outline *o);
void outline_term(outline *o);

/* Collects the headings: lines of a number with parts separated or ended by dots, one blank, and a title that
 * starts with a capital letter. The parent of a heading is the nearest heading before it whose number is a
 * prefix of its own. False if memory runs out. */
bool outline_fill(outline *o, const corpus *texts);

const heading *outline_heading(const mub_tree_entry *entry);

#endif
