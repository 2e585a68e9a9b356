/* UTF-8 and UTF-16 one character at a time. */
#ifndef MUBDEX_UNICODE_H
#define MUBDEX_UNICODE_H

#include <stdbool.h>
#include <stdint.h>

enum { REPLACEMENT_CHARACTER = 0xFFFD, BYTE_ORDER_MARK = 0xFEFF };

/* Decodes the character at the start of `text`, of `length` bytes and at least one. Returns its length. For
 * invalid UTF-8 returns 0 and the replacement character; skip one byte then. */
int64_t utf8_decode(const char *text, int64_t length, uint32_t *code_point);

/* Encodes a character. Returns its length. */
int64_t utf8_encode(uint32_t code_point, char text[4]);

/* The same for UTF-16. Decoding returns 1 and the replacement character for an unpaired surrogate. */
int64_t utf16_decode(const uint16_t *text, int64_t length, uint32_t *code_point);
int64_t utf16_encode(uint32_t code_point, uint16_t text[2]);

/* Whether a unit is the first of a pair of surrogates. */
bool is_high_surrogate(uint16_t unit);

#endif
