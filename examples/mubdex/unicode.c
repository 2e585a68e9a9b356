#include "unicode.h"

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
  *code_point = REPLACEMENT_CHARACTER;
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

int64_t utf8_encode(uint32_t code_point, char text[4]) {
  static const uint32_t marks[] = {0, 0, 0xC0, 0xE0, 0xF0};
  const int size = code_point < 0x80 ? 1 : code_point < 0x800 ? 2 : code_point < 0x10000 ? 3 : 4;
  for (int i = size - 1; i > 0; i--) {
    text[i] = (char)(0x80 | (code_point & 0x3F));
    code_point >>= 6;
  }
  text[0] = (char)(marks[size] | code_point);
  return size;
}

bool is_high_surrogate(uint16_t unit) { return (unit & 0xFC00) == 0xD800; }

static bool is_low_surrogate(uint16_t unit) { return (unit & 0xFC00) == 0xDC00; }

int64_t utf16_decode(const uint16_t *text, int64_t length, uint32_t *code_point) {
  const bool is_pair = length > 1 && is_high_surrogate(text[0]) && is_low_surrogate(text[1]);
  *code_point = text[0];
  if (is_pair) {
    *code_point = 0x10000 + ((text[0] & 0x3FFu) << 10) + (text[1] & 0x3FFu);
  } else if (is_high_surrogate(text[0]) || is_low_surrogate(text[0])) {
    *code_point = REPLACEMENT_CHARACTER;
  }
  return is_pair ? 2 : 1;
}

int64_t utf16_encode(uint32_t code_point, uint16_t text[2]) {
  text[0] = (uint16_t)code_point;
  if (code_point < 0x10000) return 1;
  text[0] = (uint16_t)(0xD800 + ((code_point - 0x10000) >> 10));
  text[1] = (uint16_t)(0xDC00 + (code_point & 0x3FF));
  return 2;
}
