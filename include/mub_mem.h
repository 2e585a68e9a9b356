/* mub_mem.h: the heap pair, counted bytes and NUL-terminated strings.
 *
 *   mub_mem_*   work on a pointer and a count of bytes. Bytes compare as unsigned values; nothing is read or
 *               written for a count below 1. NULL is accepted with such a count only.
 *   mub_str_*   work on text that ends with a NUL; NULL is accepted where a function says so.
 *
 * Searches give an index, -1 when there is no match.
 *
 * Parameters, where a function does not say otherwise:
 *   destination          where the bytes go: room for `count` of them
 *   source               the first of the bytes to copy
 *   data                 the first of the bytes to search
 *   count                bytes; below 1 there are none
 *   byte                 what to look for: its low 8 bits
 *   a, b                 the first of the bytes to compare
 *   a_length, b_length   bytes at `a` and at `b`; below 1 there are none */
#ifndef MUB_MEM_H
#define MUB_MEM_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* mub_malloc: exactly the runtime's malloc.
 *   size   bytes
 * Returns the block, to be released with mub_free or free; NULL when memory ran out. */
MUB_API void *mub_malloc(uint64_t size);

/* mub_free: exactly the runtime's free.
 *   block   from mub_malloc or handed over by the library; NULL is harmless */
MUB_API void mub_free(void *block);

/* mub_mem_zero: set `count` bytes to 0. */
MUB_API void mub_mem_zero(void *destination, int64_t count);

/* mub_mem_copy: copy `count` bytes forward, from low addresses to high, 8 bytes at a time.
 * The ranges may overlap. A destination that lies 8 bytes or more above its source inside the source range receives
 * the first `destination - source` bytes repeated over its whole length; this fills memory with a pattern. Every
 * other overlap, and any distance of 7 bytes or less, copies as memmove does. The distance is taken on the low
 * 32 bits of the addresses, as a signed number. */
MUB_API void mub_mem_copy(void *destination, const void *source, int64_t count);

/* mub_mem_move: copy as mub_mem_copy does, then clear the bytes of the source that are not part of the destination.
 * At a distance of 7 bytes or less nothing is cleared: the source is left as memmove leaves it. */
MUB_API void mub_mem_move(void *destination, void *source, int64_t count);

/* mub_mem_chr: the index of the first byte equal to `byte` (its low 8 bits), or -1. */
MUB_API int64_t mub_mem_chr(const void *data, int64_t count, int byte);

/* mub_mem_rchr: the index of the last byte equal to `byte` (its low 8 bits), or -1. */
MUB_API int64_t mub_mem_rchr(const void *data, int64_t count, int byte);

/* mub_mem_str: the index of the first occurrence of a byte pattern, or -1.
 *   pattern          at least one byte, which is always read
 *   pattern_length   1 and less look for the first byte of the pattern alone */
MUB_API int64_t mub_mem_str(const void *data, int64_t count, const void *pattern, int64_t pattern_length);

/* mub_mem_cmp: order two byte ranges.
 * Returns the difference of the first two bytes that differ, a's minus b's; when there are none the difference of
 * the lengths, cut to 32 bits, so that a range sorts before what it is a prefix of. */
MUB_API int mub_mem_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/* mub_mem_icmp: as mub_mem_cmp, with every byte passed through the runtime's tolower first. */
MUB_API int mub_mem_icmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/* ---- mub_str: texts that end with a NUL -----------------------------------------------------------------------
 *
 * Parameters, where a function does not say otherwise:
 *   string      the text to search; NULL has no characters
 *   character   what to look for; converted to a char, as strchr does
 *   haystack    the text to search; may be NULL
 *   needle      the text to look for; may be NULL
 *   a, b        the texts to compare; each may be NULL */

/* mub_str_dup: replace an owned string by a copy of `length` characters and a NUL.
 *   string   address of the owned pointer, which may hold NULL; its block is released (with free) once the copy
 *            stands, so that `source` may lie in it
 *   source   NULL stores NULL; a text that is shorter than `length` is padded with NULs
 *   length   characters to copy; negative: up to the NUL
 * Out of memory the old string stays. The block is the caller's, to be released with free. */
MUB_API void mub_str_dup(char **string, const char *source, int64_t length);

/* mub_str_trim: remove tabs, line feeds, carriage returns and spaces at both ends of a string, NULs at its back too.
 *   string   changed in place and terminated when anything is removed; NULL does nothing
 *   length   its length; 0 and negative ones make the string empty instead of trimming it
 * A NUL among the leading white space leaves the string unchanged. */
MUB_API void mub_str_trim(char *string, int64_t length);

/* mub_str_chr: the index of the first `character`, or -1, also for a NULL string. 0 finds the terminator. */
MUB_API int64_t mub_str_chr(const char *string, int character);

/* mub_str_rchr: the index of the last `character`, or -1, also for a NULL string. 0 finds the terminator. */
MUB_API int64_t mub_str_rchr(const char *string, int character);

/* mub_str_str: the index of the first occurrence of `needle`, or -1, also when either is NULL. An empty needle is
 * found at 0. */
MUB_API int64_t mub_str_str(const char *haystack, const char *needle);

/* mub_str_cmp: order two strings as strcmp does; NULL sorts first and equals NULL.
 * Returns a negative number, 0 or a positive one. */
MUB_API int mub_str_cmp(const char *a, const char *b);

/* mub_str_icmp: order two strings as strcasecmp does; NULL sorts first and equals NULL.
 * Returns a negative number, 0 or a positive one. */
MUB_API int mub_str_icmp(const char *a, const char *b);

#ifdef __cplusplus
}
#endif

#endif
