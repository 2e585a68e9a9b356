/* mub_inline.h in a C program: the inline functions and the library's take turns on the same records. */
#include <stdio.h>

#include "mub_inline.h"

static int faults = 0;

static void expect(int holds, const char *claim) {
  if (holds) return;
  printf("not so: %s\n", claim);
  ++faults;
}

#define EXPECT(claim) expect(claim, #claim)

int main(void) {
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
  mub_bits_term(&bits);
  return faults == 0 ? 0 : 1;
}
