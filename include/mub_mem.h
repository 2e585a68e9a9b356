/**
 * @defgroup mem mub_mem: counted bytes and NUL-terminated strings: copy, move, search, compare
 *
 * malloc and free, and functions for counted bytes and NUL-terminated strings.
 *
 * The functions `mub_mem_…` work on a pointer and a count of bytes. Bytes are compared as unsigned values.
 * With a count below 1 nothing is read or written, and only then may the pointer be NULL; but mub_mem_str()
 * always reads the first byte of its pattern. The functions `mub_str_…` work on NUL-terminated text; NULL is
 * accepted where documented.
 *
 * What the operations return:
 *
 * | operation               | found, or equal | not found, or different   | out of memory        |
 * | ----------------------- | --------------- | ------------------------- | -------------------- |
 * | `_chr`, `_rchr`, `_str` | the index       | -1                        |                      |
 * | `_cmp`, `_icmp`         | 0               | below 0 if `a` is less    |                      |
 * | mub_malloc()            |                 |                           | NULL                 |
 * | mub_str_dup()           |                 |                           | the old string stays |
 *
 * @{
 */
#ifndef MUB_MEM_H
#define MUB_MEM_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Allocates memory; the same as the C library's malloc.
 *
 * @param[in] size  the number of bytes
 * @return the block
 * @failure NULL if memory ran out
 * @owner the block is the caller's; release it with mub_free() or free
 */
MUB_API void *mub_malloc(uint64_t size);

/**
 * Releases memory; the same as the C library's free.
 *
 * @param[in] block  a block from mub_malloc() or one that the library returned to the caller; NULL is ignored
 * @owner the block is released
 * @invalidates the block
 * @nullable block
 */
MUB_API void mub_free(void *block);

/**
 * Sets bytes to 0.
 *
 * @param[out] destination  receives the bytes; NULL only with a count below 1
 * @param[in] count         the number of bytes; below 1 there are none
 * @invalidates nothing
 * @cost O(count)
 * @bounds destination[count]
 * @nullable destination
 */
MUB_API void mub_mem_zero(void *destination, int64_t count);

/**
 * Copies bytes forward, from low addresses to high, 8 bytes at a time.
 *
 * The ranges may overlap. A destination that begins inside the source range, 8 bytes or more above the
 * source, receives the first `destination - source` bytes repeated over its whole length, which fills memory
 * with a pattern. With any other overlap, and at a distance of 7 bytes or less, the function copies as
 * memmove does. The distance is computed from the low 32 bits of the addresses, as a signed number.
 *
 * @param[out] destination  receives the bytes; NULL only with a count below 1
 * @param[in] source        the bytes to copy; NULL only with a count below 1
 * @param[in] count         the number of bytes; below 1 there are none
 * @invalidates nothing
 * @cost O(count)
 * @bounds destination[count], source[count]
 * @nullable destination, source
 */
MUB_API void mub_mem_copy(void *destination, const void *source, int64_t count);

/**
 * Copies bytes as mub_mem_copy() does, then sets the bytes of the source that are not part of the destination
 * to 0.
 *
 * At a distance of 7 bytes or less nothing is set to 0: the source is as after memmove.
 *
 * @param[out] destination  receives the bytes; NULL only with a count below 1
 * @param[in,out] source    the bytes to move; NULL only with a count below 1
 * @param[in] count         the number of bytes; below 1 there are none
 * @invalidates nothing
 * @cost O(count)
 * @bounds destination[count], source[count]
 * @nullable destination, source
 */
MUB_API void mub_mem_move(void *destination, void *source, int64_t count);

/**
 * Finds the first occurrence of a byte.
 *
 * @param[in] data   the bytes to search; NULL only with a count below 1
 * @param[in] count  the number of bytes; below 1 there are none
 * @param[in] byte   the byte to find; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(count)
 * @bounds data[count]
 * @nullable data
 */
MUB_API int64_t mub_mem_chr(const void *data, int64_t count, int byte);

/**
 * Finds the last occurrence of a byte.
 *
 * @param[in] data   the bytes to search; NULL only with a count below 1
 * @param[in] count  the number of bytes; below 1 there are none
 * @param[in] byte   the byte to find; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(count)
 * @bounds data[count]
 * @nullable data
 */
MUB_API int64_t mub_mem_rchr(const void *data, int64_t count, int byte);

/**
 * Finds the first occurrence of a byte pattern.
 *
 * @param[in] data            the bytes to search; NULL only with a count below 1
 * @param[in] count           the number of bytes; below 1 there are none
 * @param[in] pattern         the pattern; its first byte is always read
 * @param[in] pattern_length  bytes of the pattern; 1 or less searches for its first byte alone
 * @return its index
 * @failure -1 if there is none
 * @cost O(count + pattern_length)
 * @bounds data[count], pattern[pattern_length]
 * @nullable data
 */
MUB_API int64_t mub_mem_str(const void *data, int64_t count, const void *pattern, int64_t pattern_length);

/**
 * Compares two byte ranges.
 *
 * @param[in] a         the first range; NULL only with a length below 1
 * @param[in] a_length  bytes of `a`; below 1 there are none
 * @param[in] b         the second range; NULL only with a length below 1
 * @param[in] b_length  bytes of `b`; below 1 there are none
 * @return the difference of the first two bytes that differ, that of `a` minus that of `b`; if none differ,
 *   the difference of the lengths as given, truncated to 32 bits: a prefix of a range is less than the range,
 *   unless their lengths differ by 2^31 or more
 * @cost O(the shorter length)
 * @bounds a[a_length], b[b_length]
 * @nullable a, b
 */
MUB_API int mub_mem_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/**
 * Compares two byte ranges without regard to case: every byte is first converted by the C library's tolower.
 *
 * @param[in] a         the first range; NULL only with a length below 1
 * @param[in] a_length  bytes of `a`; below 1 there are none
 * @param[in] b         the second range; NULL only with a length below 1
 * @param[in] b_length  bytes of `b`; below 1 there are none
 * @return the difference of the first two bytes that differ, that of `a` minus that of `b`; if none differ,
 *   the difference of the lengths as given, truncated to 32 bits: a prefix of a range is less than the range,
 *   unless their lengths differ by 2^31 or more
 * @cost O(the shorter length)
 * @bounds a[a_length], b[b_length]
 * @nullable a, b
 */
MUB_API int mub_mem_icmp(const void *a, int64_t a_length, const void *b, int64_t b_length);

/**
 * Replaces a string from `malloc` with a NUL-terminated copy of a text.
 *
 * The old string is released with free after the copy is made, so `source` may lie in it.
 *
 * @param[in,out] string  the address of the pointer to the string, which may be NULL
 * @param[in] source      the text to copy; NULL stores NULL; a text shorter than `length` is padded with NULs
 * @param[in] length      characters to copy; negative: up to the NUL
 * @failure the old string is kept if memory runs out
 * @owner the new block is the caller's; release it with free
 * @invalidates the old string
 * @cost O(length)
 * @bounds source[length]
 * @nullable source
 */
MUB_API void mub_str_dup(char **string, const char *source, int64_t length);

/**
 * Removes white space at both ends of a string, and NULs at its end.
 *
 * White space is tab, line feed, carriage return and space. If the first character that is not white space is
 * a NUL, the string is unchanged.
 *
 * @param[in,out] string  the string, changed in place and terminated if anything is removed; NULL does
 *                        nothing
 * @param[in] length      its length; if 0 or less, the string is emptied instead of trimmed
 * @invalidates nothing
 * @cost O(length)
 * @bounds string[length]
 * @nullable string
 */
MUB_API void mub_str_trim(char *string, int64_t length);

/**
 * Finds the first occurrence of a character.
 *
 * The character 0 finds the terminator.
 *
 * @param[in] string     the text to search, ending with a NUL; NULL has no characters
 * @param[in] character  the character to find, converted to a char as by strchr
 * @return its index
 * @failure -1 if there is none, or if the string is NULL
 * @cost O(length)
 * @nullable string
 */
MUB_API int64_t mub_str_chr(const char *string, int character);

/**
 * Finds the last occurrence of a character.
 *
 * The character 0 finds the terminator.
 *
 * @param[in] string     the text to search, ending with a NUL; NULL has no characters
 * @param[in] character  the character to find, converted to a char as by strchr
 * @return its index
 * @failure -1 if there is none, or if the string is NULL
 * @cost O(length)
 * @nullable string
 */
MUB_API int64_t mub_str_rchr(const char *string, int character);

/**
 * Finds the first occurrence of a text.
 *
 * An empty text is found at 0.
 *
 * @param[in] haystack  the text to search, ending with a NUL
 * @param[in] needle    the text to find, ending with a NUL
 * @return its index
 * @failure -1 if there is none, or if either text is NULL
 * @cost O(length) of both texts
 * @nullable haystack, needle
 */
MUB_API int64_t mub_str_str(const char *haystack, const char *needle);

/**
 * Compares two strings as strcmp does.
 *
 * NULL is less than any string and equal to NULL.
 *
 * @param[in] a  one text, ending with a NUL
 * @param[in] b  the other text, ending with a NUL
 * @return a negative number, 0 or a positive one
 * @cost O(length)
 * @nullable a, b
 */
MUB_API int mub_str_cmp(const char *a, const char *b);

/**
 * Compares two strings as strcasecmp does.
 *
 * NULL is less than any string and equal to NULL.
 *
 * @param[in] a  one text, ending with a NUL
 * @param[in] b  the other text, ending with a NUL
 * @return a negative number, 0 or a positive one
 * @cost O(length)
 * @nullable a, b
 */
MUB_API int mub_str_icmp(const char *a, const char *b);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
