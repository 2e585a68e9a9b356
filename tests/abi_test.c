/* Calls into the shared library from C, and data that the program shares with it. */
#include <string.h>

#include "mub.h"

/* Integers, floating-point numbers and pointers are passed correctly. */
int main(void) {
  mub_string text;
  mub_string_init(&text);
  mub_string_format(&text, "%.1f%% of %s", 2.5, "it");
  mub_string_match(&text, " ", "-", (const char *)NULL);
  const int is_right = CRC_TABLE[255] == 0x2D02EF8Du && mub_stream_crc32("123456789", 9) == 0xCBF43926u &&
                       strcmp(text.data, "2.5%-of it") == 0 && strcmp(mub_version(), MUB_VERSION) == 0 &&
                       mub_version_number() == MUB_VERSION_NUMBER;
  mub_string_term(&text);
  return is_right ? 0 : 1;
}
