#include "dot.h"

#include <stdarg.h>
#include <string.h>

#include "unicode.h"
#include "vocabulary.h"

/* The most that is drawn. */
enum {
  MAX_BUCKETS = 64,
  MAX_CHAIN = 6,
  MAX_LEAVES = 8,   /* of one inner node */
  MAX_BRANCHES = 2, /* of the nodes above it */
  MAX_CHUNKS = 8,
  MAX_BLOCKS = 16,
  MAX_LETTERS = 16
};

/* Light cells with dark text and grey lines, without a background, are readable on white and on black. */
static const char STYLE[] =
    "  bgcolor=transparent\n"
    "  fontname=\"sans-serif\" fontsize=11 fontcolor=\"#7f8c9b\" labelloc=t\n"
    "  node [shape=plain fontname=\"sans-serif\" fontsize=11 fontcolor=\"#1d2733\"]\n"
    "  edge [color=\"#7f8c9b\" arrowsize=0.6]\n";
#define CELLS "<TABLE BORDER=\"0\" CELLBORDER=\"1\" CELLSPACING=\"0\" COLOR=\"#7f8c9b\" BGCOLOR=\""
static const char TABLE_CELLS[] = CELLS "#dce6f2\">";
static const char ENTRY_CELLS[] = CELLS "#fdf1d3\">";
static const char LEFT_OUT[] = "fontcolor=\"#7f8c9b\"";

typedef struct drawing {
  mub_string *out;
  bool is_whole; /* false after memory ran out */
  int nodes;     /* entries drawn so far; the number of the next one */
} drawing;

static void draw_bytes(drawing *d, const char *text, int64_t length) {
  const int64_t before = d->out->length;
  mub_string_append(d->out, text, length);
  d->is_whole = d->is_whole && d->out->length == before + length;
}

static void draw(drawing *d, const char *format, ...) MUB_PRINTF(2, 3);

/* For markup and numbers, which are far shorter than the buffer. Use draw_text for texts of any length. */
static void draw(drawing *d, const char *format, ...) {
  char piece[512];
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(piece, sizeof piece, format, arguments);
  va_end(arguments);
  d->is_whole = d->is_whole && length >= 0 && length < (int)sizeof piece;
  if (d->is_whole) draw_bytes(d, piece, length);
}

/* A word, truncated to fit a cell. Invalid UTF-8 becomes the replacement character. */
static void draw_text(drawing *d, mub_char text) {
  for (int letters = 0; text.length > 0; letters++) {
    uint32_t code;
    int64_t size = utf8_decode(text.data, text.length, &code);
    if (letters == MAX_LETTERS) {
      draw(d, "…");
      return;
    }
    if (size > 1) {
      draw_bytes(d, text.data, size);
    } else {
      draw(d, "&#%u;", (unsigned)(code < 0x20 ? 0xFFFD : code));
      size = 1;
    }
    text.data += size;
    text.length -= size;
  }
}

/* An entry of a table: a word and its count. */
static void draw_word(drawing *d, mub_char word, uint64_t count, const char *port) {
  draw(d, "<TR><TD ALIGN=\"LEFT\"%s>", port);
  draw_text(d, word);
  draw(d, "</TD><TD ALIGN=\"RIGHT\">%llu</TD></TR>", (unsigned long long)count);
}

/* ---- hash: the buckets from top to bottom, the chains from left to right ---- */

static int64_t chain_length(const mub_hash *words, int64_t bucket) {
  int64_t length = 0;
  const mub_hash_entry *entry = (const mub_hash_entry *)(uintptr_t)words->buckets.items[bucket];
  for (; entry != NULL; entry = entry->next) length++;
  return length;
}

static void draw_chain(drawing *d, const word_index *index, int64_t bucket) {
  const mub_hash *words = &index->words;
  const mub_hash_entry *entry = (const mub_hash_entry *)(uintptr_t)words->buckets.items[bucket];
  draw(d, "  buckets:b%lld:e", (long long)bucket);
  for (int i = 0; entry != NULL && i < MAX_CHAIN; i++, entry = entry->next) {
    const char *key = (const char *)words->keys.data + entry->key_offset;
    const mub_char word = {(char *)(uintptr_t)key, entry->key_length};
    draw(d, " -> e%d\n  e%d [class=entry label=<%s", d->nodes, d->nodes, ENTRY_CELLS);
    draw_word(d, word, entry_count(index, entry), "");
    draw(d, "</TABLE>>]\n  e%d", d->nodes++);
  }
  const int64_t left_out = chain_length(words, bucket) - MAX_CHAIN;
  if (left_out > 0) {
    draw(d, " -> more%lld\n  more%lld [label=\"… %lld more\" %s]\n", (long long)bucket, (long long)bucket,
         (long long)left_out, LEFT_OUT);
  } else {
    draw(d, "\n");
  }
}

static void draw_buckets(drawing *d, const mub_hash *words, int64_t drawn) {
  draw(d, "  buckets [class=buckets label=<%s<TR><TD>bucket</TD></TR>", TABLE_CELLS);
  for (int64_t i = 0; i < drawn; i++)
    draw(d, "<TR><TD PORT=\"b%lld\">%lld</TD></TR>", (long long)i, (long long)i);
  if (drawn < words->buckets.count) {
    draw(d, "<TR><TD>… %lld more</TD></TR>", (long long)(words->buckets.count - drawn));
  }
  draw(d, "</TABLE>>]\n");
}

static bool draw_hash(const word_index *index, mub_string *out) {
  const mub_hash *words = &index->words;
  const int64_t buckets = words->buckets.count;
  const int64_t drawn = buckets < MAX_BUCKETS ? buckets : MAX_BUCKETS;
  drawing d = {.out = out, .is_whole = true};
  draw(&d, "digraph hash {\n  rankdir=LR nodesep=0.06 ranksep=0.25\n%s", STYLE);
  draw(&d,
       "  label=\"mub_hash: %lld entries in %lld buckets, the longest chain of %lld; %lld bytes of keys\"\n",
       (long long)words->count, (long long)buckets, (long long)index_longest_chain(index),
       (long long)words->keys.length);
  draw_buckets(&d, words, drawn);
  for (int64_t i = 0; i < drawn; i++) {
    if (words->buckets.items[i] != 0) draw_chain(&d, index, i);
  }
  draw(&d, "}\n");
  return d.is_whole;
}

/* ---- btree: the root on top, the records in the leaves below ---- */

static const mub_btree_node *record_at(const mub_btree_entry *leaf, int64_t i) {
  return (const mub_btree_node *)(uintptr_t)leaf->children.items[i];
}

static const mub_btree_entry *child_at(const mub_btree_entry *entry, int64_t i) {
  return (const mub_btree_entry *)(uintptr_t)entry->children.items[i];
}

static void draw_leaf(drawing *d, const vocabulary *v, const mub_btree_entry *leaf) {
  draw(d, "  e%d [class=leaf label=<%s<TR><TD COLSPAN=\"2\" BGCOLOR=\"#dce6f2\">level 0</TD></TR>", d->nodes,
       ENTRY_CELLS);
  for (int64_t i = 0; i < leaf->children.count; i++) {
    const mub_btree_node *record = record_at(leaf, i);
    draw_word(d, vocabulary_word(v, record), record->value, "");
  }
  draw(d, "</TABLE>>]\n");
  d->nodes++;
}

/* An inner node: one cell per child, with the key of the child. */
static void draw_branch(drawing *d, const vocabulary *v, const mub_btree_entry *entry, int64_t drawn) {
  const long long left_out = (long long)(entry->children.count - drawn);
  draw(d, "  e%d [class=branch label=<%s<TR><TD COLSPAN=\"%lld\">level %d</TD></TR><TR>", d->nodes,
       TABLE_CELLS, (long long)drawn + (left_out > 0), entry->level);
  for (int64_t i = 0; i < drawn; i++) {
    const mub_btree_entry *child = child_at(entry, i);
    const char *key = (const char *)v->words.keys.data + child->key_offset;
    draw(d, "<TD PORT=\"c%lld\">", (long long)i);
    draw_text(d, (mub_char){(char *)(uintptr_t)key, child->key_length});
    draw(d, "</TD>");
  }
  if (left_out > 0) draw(d, "<TD>… %lld more</TD>", left_out);
  draw(d, "</TR></TABLE>>]\n");
  d->nodes++;
}

/* Recurses once per level; a tree of a million words has four or five levels. */
static void draw_entry(drawing *d, const vocabulary *v, const mub_btree_entry *entry) {
  if (entry->level == 0) {
    draw_leaf(d, v, entry);
    return;
  }
  const int number = d->nodes;
  const int64_t limit = entry->level == 1 ? MAX_LEAVES : MAX_BRANCHES;
  const int64_t drawn = entry->children.count < limit ? entry->children.count : limit;
  draw_branch(d, v, entry, drawn);
  for (int64_t i = 0; i < drawn; i++) {
    draw(d, "  e%d:c%lld:s -> e%d:n\n", number, (long long)i, d->nodes);
    draw_entry(d, v, child_at(entry, i));
  }
}

static bool draw_btree(const word_index *index, mub_string *out) {
  vocabulary v;
  drawing d = {.out = out, .is_whole = true};
  const bool filled = vocabulary_init(&v) && vocabulary_fill(&v, index);
  if (filled) {
    draw(&d, "digraph btree {\n  nodesep=0.2 ranksep=0.5\n%s", STYLE);
    draw(&d, "  label=\"mub_btree: %lld records, %lld nodes below the root; %lld bytes of keys\"\n",
         (long long)v.words.count, (long long)v.words.entry_pool->live_count, (long long)v.words.keys.length);
    draw_entry(&d, &v, &v.words.root);
    draw(&d, "}\n");
  }
  vocabulary_term(&v);
  return filled && d.is_whole;
}

/* ---- pool: a row of blocks for each chunk, with their places on the free stack ---- */

/* 1 for the block that is reused next, 2 for the one after; 0 for a block that is not on the free stack. */
static int64_t turn_of(const mub_pool *pool, const void *block) {
  int64_t turn = 0;
  for (int64_t page = pool->free_count - 1; page >= 0; page--) {
    void *const *blocks = (void *const *)pool->free_pages[page];
    const int64_t used = page == pool->free_count - 1 ? pool->free_used : pool->blocks_per_chunk;
    for (int64_t i = used - 1; i >= 0; i--) {
      turn++;
      if (blocks[i] == block) return turn;
    }
  }
  return 0;
}

static void draw_block(drawing *d, const vocabulary *v, const mub_btree_node *block) {
  const int64_t turn = turn_of(v->words.node_pool, block);
  if (turn > 0) {
    draw(d, "<TD BGCOLOR=\"#f3d6d6\"><I>free %lld</I></TD>", (long long)turn);
    return;
  }
  draw(d, "<TD BGCOLOR=\"#fdf1d3\">");
  draw_text(d, vocabulary_word(v, block));
  draw(d, "</TD>");
}

static void draw_chunk(drawing *d, const vocabulary *v, int64_t chunk) {
  const mub_pool *pool = v->words.node_pool;
  const mub_btree_node *blocks = (const mub_btree_node *)pool->chunks[chunk];
  const int64_t used = chunk == pool->chunk_count - 1 ? pool->chunk_used : pool->blocks_per_chunk;
  const int64_t drawn = pool->blocks_per_chunk < MAX_BLOCKS ? pool->blocks_per_chunk : MAX_BLOCKS;
  draw(d, "<TR><TD BGCOLOR=\"#dce6f2\">chunk %lld</TD>", (long long)chunk);
  for (int64_t i = 0; i < drawn; i++) {
    if (i < used) {
      draw_block(d, v, &blocks[i]);
    } else {
      draw(d, "<TD BGCOLOR=\"#eef1f4\"><I>unused</I></TD>");
    }
  }
  if (drawn < pool->blocks_per_chunk) {
    draw(d, "<TD BGCOLOR=\"#dce6f2\">… %lld more</TD>", (long long)(pool->blocks_per_chunk - drawn));
  }
  draw(d, "</TR>");
}

static void draw_chunks(drawing *d, const vocabulary *v) {
  const mub_pool *pool = v->words.node_pool;
  const int64_t drawn = pool->chunk_count < MAX_CHUNKS ? pool->chunk_count : MAX_CHUNKS;
  draw(d, "  pool [class=pool label=<%s", TABLE_CELLS);
  for (int64_t i = 0; i < drawn; i++) draw_chunk(d, v, i);
  if (drawn == 0) draw(d, "<TR><TD>no chunk</TD></TR>");
  if (drawn < pool->chunk_count)
    draw(d, "<TR><TD>… %lld more</TD></TR>", (long long)(pool->chunk_count - drawn));
  draw(d, "</TABLE>>]\n");
}

/* Removed words return their blocks to the pool. */
static void remove_rare_words(vocabulary *v, const word_index *index) {
  const mub_hash *words = &index->words;
  int64_t bucket;
  for (const mub_hash_entry *entry = mub_hash_entry_first(words, &bucket); entry != NULL;
       entry = mub_hash_entry_next(words, &bucket, entry)) {
    if (entry_count(index, entry) > 1) continue;
    mub_btree_remove(&v->words, words->keys.data + entry->key_offset, entry->key_length);
  }
}

static bool draw_pool(const word_index *index, mub_string *out) {
  vocabulary v;
  drawing d = {.out = out, .is_whole = true};
  const bool filled = vocabulary_init(&v) && vocabulary_fill(&v, index);
  if (filled) {
    remove_rare_words(&v, index);
    const mub_pool *pool = v.words.node_pool;
    draw(&d, "digraph pool {\n%s", STYLE);
    draw(&d,
         "  label=\"mub_pool: %lld live blocks of %lld bytes, %lld released (1 is reused next); %lld "
         "chunks\"\n",
         (long long)pool->live_count, (long long)pool->block_size,
         (long long)(index->words.count - pool->live_count), (long long)pool->chunk_count);
    draw_chunks(&d, &v);
    draw(&d, "}\n");
  }
  vocabulary_term(&v);
  return filled && d.is_whole;
}

picture_fn dot_picture(const char *name) {
  if (strcmp(name, "hash") == 0) return draw_hash;
  if (strcmp(name, "btree") == 0) return draw_btree;
  return strcmp(name, "pool") == 0 ? draw_pool : NULL;
}
