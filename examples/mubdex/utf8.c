#include "utf8.h"

#include <stdbool.h>

static const uint32_t REPLACEMENT = 0xFFFD;

/* The length of a character that starts with `first`, or 0 if none does. */
static int64_t size_of(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
}

int64_t utf8_decode(const char *text, int64_t length, uint32_t *code_point) {
  static const uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned char *bytes = (const unsigned char *)text;
  const int64_t size = size_of(bytes[0]);
  *code_point = REPLACEMENT;
  if (size == 0 || size > length) return 0;
  uint32_t code = size == 1 ? bytes[0] : bytes[0] & (0x7Fu >> size);
  for (int64_t i = 1; i < size; i++) {
    if ((bytes[i] & 0xC0) != 0x80) return 0;
    code = code << 6 | (bytes[i] & 0x3F);
  }
  const bool is_surrogate = code >= 0xD800 && code < 0xE000;
  if (code < least[size] || code > 0x10FFFF || is_surrogate) return 0;
  *code_point = code;
  return size;
}
