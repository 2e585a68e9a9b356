/* mub_inline.h and mub_each.h in a C program. What the loops do is tested in hpp_test.cpp. */
#include "mub_inline.h"

#include <stdio.h>
#include <stdlib.h>

#include "mub_each.h"

#define EXPECT(claim) ((claim) ? (void)0 : (puts("not so: " #claim), exit(1)))

/* The inline functions and the library's take turns on the same records. */
static void call_inline_functions(void) {
  mub_string string;
  mub_string_init(&string);
  for (int i = 0; i < 26; ++i) {
    mub_string_append_char(&string, 'a' + i);
    (mub_string_append_char)(&string, 'A' + i);
  }
  EXPECT(mub_string_compare(&string, "aAbBcCdDeEfFgGhHiIjJkKlLmMnNoOpPqQrRsStTuUvVwWxXyYzZ", -1) == 0);
  mub_string_term(&string);

  uint32_t (*find)(const mub_bits *, uint32_t) = mub_bits_find;
  uint32_t next = 9000;
  mub_bits bits;
  mub_bits_init(&bits);
  mub_bits_insert(&bits, next++, 1);
  EXPECT(next == 9001);
  EXPECT(find == &mub_bits_find && find(&bits, 9000) == mub_bits_find(&bits, 9000));
  EXPECT(mub_bits_find(&bits, 9000) == 0x80 && mub_bits_find(&bits, UINT32_MAX) == 0);
  int visited = 0;
  MUB_EACH_BIT(&bits, bit) visited += bit == 9000 ? 1 : 2;
  EXPECT(visited == 1);
  mub_bits_term(&bits);
}

/* Loops of which no C program in examples/ has the form. */
static void compile_loops(void) {
  static mub_hasht table; /* zero, as all these records: empty */
  static mub_arrayt words;
  static mub_list list;
  static mub_lists values;
  static mub_listx blocks;
  MUB_EACH_HASHT(&table, entry) EXPECT(entry == NULL);
  MUB_EACH_ARRAYT(&words, word) EXPECT(word == NULL);
  MUB_EACH_LIST(&list, entry) EXPECT(entry == NULL);
  MUB_EACH_LISTS(&values, entry) EXPECT(entry == NULL);
  MUB_EACH_LISTX(&blocks, value) EXPECT(value == NULL);
}

int main(void) {
  call_inline_functions();
  compile_loops();
  return 0;
}
