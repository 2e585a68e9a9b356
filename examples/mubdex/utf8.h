/* UTF-8 one character at a time. */
#ifndef MUBDEX_UTF8_H
#define MUBDEX_UTF8_H

#include <stdint.h>

/* Decodes the character at the start of `text`, of `length` bytes and at least one. Returns its length. For
 * invalid UTF-8 returns 0 and the replacement character; skip one byte then. */
int64_t utf8_decode(const char *text, int64_t length, uint32_t *code_point);

#endif
