/* UTF-8 one character at a time. */
#ifndef MUBDEX_UTF8_H
#define MUBDEX_UTF8_H

#include <stdint.h>

/* Decodes the character at the start of `text`, of `length` bytes and at least one. Returns its bytes; 0
 * when they are no UTF-8: the code point is then that of the replacement character, and one byte is to be
 * skipped. */
int64_t utf8_decode(const char *text, int64_t length, uint32_t *code_point);

#endif
