/* Convert UTF-16 to UTF-8.
 *
 * mub_wchar holds 16-bit units and does not interpret surrogates. This combines surrogate pairs, and writes
 * U+FFFD for an unpaired surrogate. Three bytes for each unit are always enough: once they are reserved,
 * nothing can fail. */
#include <stdio.h>
#include <stdlib.h>

#include "mub.h"

enum { REPLACEMENT = 0xFFFD };

/* Returns the character at `*index`, and moves `*index` to the next one. */
static uint32_t next_character(const mub_wchar *text, int64_t *index) {
  const uint32_t unit = mub_wchar_get_at(text, (*index)++);
  if (unit < 0xD800 || unit > 0xDFFF) return unit;
  const uint32_t low = *index < text->length ? mub_wchar_get_at(text, *index) : 0;
  if (unit > 0xDBFF || low < 0xDC00 || low > 0xDFFF) return REPLACEMENT;
  (*index)++;
  return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

static void append_utf8(mub_string *out, uint32_t character) {
  static const uint32_t first_byte[] = {0, 0xC0, 0xE0, 0xF0};
  const int further = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  mub_string_append_char(out, (int)(first_byte[further] | character >> (6 * further)));
  for (int i = further - 1; i >= 0; i--)
    mub_string_append_char(out, (int)(0x80 | ((character >> (6 * i)) & 0x3F)));
}

static int to_utf8(const mub_wchar *text, mub_string *out) {
  mub_string_left(out, 0);
  if (!mub_string_expand(out, 3 * text->length)) return 0;
  for (int64_t i = 0; i < text->length;) append_utf8(out, next_character(text, &i));
  return 1;
}

int main(void) {
  /* "naïve", a euro sign, a treble clef (a pair of surrogates), and an unpaired surrogate */
  static const uint16_t units[] = {'n', 'a', 0xEF, 'v', 'e', ' ', 0x20AC, ' ', 0xD834, 0xDD1E, ' ', 0xD834};
  const int64_t count = sizeof units / sizeof *units;
  mub_wchar wide;
  mub_string narrow;
  mub_wchar_init(&wide);
  mub_string_init(&narrow);
  const int done = mub_wchar_expand(&wide, count);
  if (done) mub_wchar_copy(&wide, units, count);
  const int converted = done && to_utf8(&wide, &narrow);
  if (converted) printf("%s\n%d units, %d bytes\n", narrow.data, (int)wide.length, (int)narrow.length);
  mub_string_term(&narrow);
  mub_wchar_term(&wide);
  return converted ? EXIT_SUCCESS : EXIT_FAILURE;
}
