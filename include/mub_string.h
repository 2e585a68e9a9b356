/**
 * @defgroup string_h mub_string.h: strings
 *
 * A growable string of bytes, and a view of text that is not copied.
 *
 *     data ──► [ content ........ | 0 | spare ... ]      capacity + 1 bytes
 *                0                  length
 *
 * The content is followed by a NUL, so `data` can be passed to functions that take NUL-terminated text. Since
 * the length is stored, the content may also contain NULs. A string whose `data` is NULL is empty, and every
 * function accepts it.
 *
 * Texts are passed with a count of bytes, except those of mub_string_replace(), mub_string_match() and
 * mub_string_format(), which end at their NUL. If a count is negative, the text ends at its NUL. A text may
 * lie in the string that it is copied into. Every function that enlarges a string invalidates pointers into
 * it. The buffer grows to the size needed, or by half the length if that is more (at least 8 bytes and at
 * most 8 MiB), rounded up so that the block, terminator included, is a multiple of 8. Appending is O(1)
 * amortised up to 16 MiB; a longer string is copied once per 8 MiB appended. Past 2^31 - 1 bytes a buffer
 * grows only as needed: call mub_string_expand() first, or nearly every append copies the string. Functions
 * that return nothing leave the string unchanged if memory runs out.
 *
 * White space is tab, line feed, carriage return and space, except for mub_string_get_integer() and
 * mub_string_get_float(), which skip what strtol() and strtod() do.
 *
 * What the everyday operations return:
 *
 * | operation                                  | found, done           | not found, refused | out of memory |
 * | ------------------------------------------ | --------------------- | ------------------ | ------------- |
 * | `_copy`, `_clone`, `_expand`               | 1                     |                    | 0, unchanged  |
 * | `_left_string` and so on                   | 1                     | 1, empty           | 0, unchanged  |
 * | `_append…`, `_copy_…`, `_format`, `_match` |                       |                    | unchanged     |
 * | `_insert`, `_update`                       | 1                     | 0, unchanged       | 0, unchanged  |
 * | `_replace`                                 | how many              | 0                  | 0, unchanged  |
 * | `_find…`, `_reverse_find`                  | the index             | -1                 |               |
 * | `_get_at`                                  | the byte, signed      | -1                 |               |
 * | `_get_long`, `_get_double`                 | the number            | 0; `otherwise` if empty |          |
 * | `_trim`                                    | 1 if anything changed | 0                  |               |
 *
 * @{
 */
#ifndef MUB_STRING_H
#define MUB_STRING_H

#include "mub_base.h"
#include "mub_char.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup string mub_string: a growable, NUL-terminated string with a length
 *
 * A growable string of bytes.
 *
 * @{
 */

/** A growable string of bytes, NUL-terminated. */
typedef struct mub_string {
  char *data;       /**< `capacity + 1` bytes, or NULL while nothing is allocated; `data[length]` is 0 */
  int64_t length;   /**< bytes of content, at most `capacity` */
  int64_t capacity; /**< bytes of content that fit */
} mub_string;

/**
 * Initialises an empty string; nothing is allocated.
 *
 * @param[out] string  the string; its old contents are ignored
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API void mub_string_init(mub_string *string);

/**
 * Releases the buffer and makes the string empty.
 *
 * @param[in,out] string  the string
 * @owner the buffer is released
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_term(mub_string *string);

/**
 * Checks whether the string is empty.
 *
 * @param[in] string  the string
 * @return 1 if the string is empty, else 0
 */
MUB_API int mub_string_is_empty(const mub_string *string);

/**
 * Makes room for `capacity` bytes of content.
 *
 * The content is unchanged.
 *
 * @param[in,out] string  the string
 * @param[in] capacity    bytes of content needed
 * @return 1 if there is room
 * @failure 0 if memory ran out; the string is unchanged
 * @invalidates pointers into the buffer, if it grows
 * @cost O(capacity) if it grows
 */
MUB_API int mub_string_expand(mub_string *string, int64_t capacity);

/**
 * Sets the length to `length`, or to the capacity if that is less, and writes the terminator.
 *
 * This can also lengthen the content, with the spare bytes as they are. Does nothing for a negative length,
 * or for a string without a buffer.
 *
 * @param[in,out] string  the string
 * @param[in] length      the new length in bytes
 * @invalidates nothing
 */
MUB_API void mub_string_shrink(mub_string *string, int64_t length);

/**
 * Fills a range with 0.
 *
 * Does nothing unless the whole range lies within the capacity. The length is unchanged.
 *
 * @param[in,out] string  the string
 * @param[in] position    the start of the range, counted from 0
 * @param[in] count       the number of bytes; below 1 there are none
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_string_zero(mub_string *string, int64_t position, int64_t count);

/**
 * Swaps two strings, including their buffers.
 *
 * @param[in,out] a  one string
 * @param[in,out] b  the other string
 * @owner the buffer of one string now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_string_swap(mub_string *a, mub_string *b);

/**
 * Copies a string, replacing the content of the destination, whose capacity becomes at least that of the
 * source.
 *
 * @param[in] source           the string to copy; it does not change
 * @param[in,out] destination  an initialised string, whose content is replaced
 * @return 1
 * @failure 0 if memory ran out; the destination is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(capacity of the source)
 */
MUB_API int mub_string_clone(const mub_string *source, mub_string *destination);

/**
 * Checks whether the string is intact.
 *
 * Checks the length, the capacity and the 0 after the content, which mub_string_set_at() can overwrite and
 * mub_stream_swap_string() can leave out.
 *
 * @param[in] string  the string
 * @param[out] what   receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the string is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @nullable what
 */
MUB_API int mub_string_verify(const mub_string *string, const char **what);

/**
 * Returns the size of the heap memory that the string holds.
 *
 * Counts the block, as requested from `malloc`; not the record itself.
 *
 * @param[in] string  the string
 * @return the number of bytes
 * @failure none
 */
MUB_API int64_t mub_string_memory_bytes(const mub_string *string);

/**
 * Replaces the content with a text.
 *
 * @param[in,out] string  the string
 * @param[in] text        the text, which may lie in the string itself; NULL empties the string
 * @param[in] count       bytes of the text; negative: up to its NUL
 * @return 1
 * @failure 0 if memory ran out; the string is unchanged
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_string_copy(mub_string *string, const char *text, int64_t count);

/**
 * Replaces the content with a single byte; 0 empties the string.
 *
 * @param[in,out] string  the string
 * @param[in] character   the byte; its low 8 bits are used
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_char(mub_string *string, int character);

/**
 * Replaces the content with a number in decimal.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_integer(mub_string *string, int64_t value);

/**
 * Replaces the content with a number in decimal.
 *
 * The same as mub_string_copy_integer().
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_long(mub_string *string, int64_t value);

/**
 * Replaces the content with a number, formatted with printf's `%%f`.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_float(mub_string *string, float value);

/**
 * Replaces the content with a number, formatted with printf's `%%f`.
 *
 * The longest number takes 317 bytes.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_double(mub_string *string, double value);

/**
 * Appends a text to the content.
 *
 * @param[in,out] string  the string
 * @param[in] text        the text, which may lie in the string itself; NULL appends nothing
 * @param[in] count       bytes of the text; negative: up to its NUL
 * @failure the string is unchanged if memory runs out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(count) amortised
 * @bounds text[count]
 * @nullable text
 */
MUB_API void mub_string_append(mub_string *string, const char *text, int64_t count);

/**
 * Appends a byte to the content; 0 is appended, too.
 *
 * @param[in,out] string  the string
 * @param[in] character   the byte; its low 8 bits are used
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_char(mub_string *string, int character);

/**
 * Appends a number in decimal to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_integer(mub_string *string, int64_t value);

/**
 * Appends a number in decimal to the content.
 *
 * The same as mub_string_append_integer().
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_long(mub_string *string, int64_t value);

/**
 * Appends a number, formatted with printf's `%%f`, to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_float(mub_string *string, float value);

/**
 * Appends a number, formatted with printf's `%%f`, to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_double(mub_string *string, double value);

/**
 * Reads the number that the content begins with, as strtol does in base 10.
 *
 * @param[in] string     the string
 * @param[in] otherwise  the result for an empty string
 * @return the number, truncated to 32 bits; `otherwise` for an empty string
 * @failure 0 if the content does not begin with one
 * @cost O(digits)
 */
MUB_API int64_t mub_string_get_integer(const mub_string *string, int64_t otherwise);

/**
 * Reads the integer that the content begins with: an optional '-' and digits, without white space or '+'.
 *
 * The number wraps around at 64 bits.
 *
 * @param[in] string     the string
 * @param[in] otherwise  the result for an empty string
 * @return the number; `otherwise` for an empty string
 * @failure 0 if the content does not begin with one
 * @cost O(digits)
 */
MUB_API int64_t mub_string_get_long(const mub_string *string, int64_t otherwise);

/**
 * Reads the number that the content begins with, as strtod does.
 *
 * @param[in] string     the string
 * @param[in] otherwise  the result for an empty string
 * @return the number, narrowed to float; `otherwise` for an empty string
 * @failure 0.0 if the content does not begin with one
 * @cost O(digits)
 */
MUB_API float mub_string_get_float(const mub_string *string, float otherwise);

/**
 * Reads the decimal number that the content begins with: an optional '-', digits, and optionally a point and
 * more digits.
 *
 * White space, '+' and exponents are not accepted, and the locale does not matter. Starting at 0.0, each
 * digit before the point replaces the value with `value * 10.0 + (character code - 48.0)`. The k-th digit
 * after the point is divided by 10.0 k times, one after the other, then added. Every operation rounds.
 *
 * @param[in] string     the string
 * @param[in] otherwise  the result for an empty string
 * @return the number; `otherwise` for an empty string
 * @failure 0.0 if the content does not begin with one
 * @cost O(digits)
 */
MUB_API double mub_string_get_double(const mub_string *string, double otherwise);

/**
 * Reads the byte at `index`.
 *
 * Below the capacity, the terminator and the spare bytes can be read, too.
 *
 * @param[in] string  the string
 * @param[in] index   the index, counted from 0
 * @return the byte, as a signed char
 * @failure -1 unless `0 <= index < capacity`
 */
MUB_API int mub_string_get_at(const mub_string *string, int64_t index);

/**
 * Stores a byte at `index` if that lies within the capacity.
 *
 * The length is unchanged.
 *
 * @param[in,out] string  the string
 * @param[in] index       the index, counted from 0
 * @param[in] character   the byte; its low 8 bits are used
 * @invalidates nothing
 */
MUB_API void mub_string_set_at(mub_string *string, int64_t index, int character);

/**
 * Converts every byte of the content to lower case, with the C library's tolower.
 *
 * @param[in,out] string  the string
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_string_make_lower(mub_string *string);

/**
 * Converts every byte of the content to upper case, with the C library's toupper.
 *
 * @param[in,out] string  the string
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_string_make_upper(mub_string *string);

/**
 * Compares the content with a text, as mub_mem_cmp() does.
 *
 * Content that is not empty is greater than NULL and than a text with a count of 0 (result 1). Empty content
 * equals these and an empty text, and is less than any other text (result -1).
 *
 * @param[in] string  the string
 * @param[in] text    the text to compare with; NULL: a text without content
 * @param[in] count   bytes of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_string_compare(const mub_string *string, const char *text, int64_t count);

/**
 * Compares the content with a text without regard to case, as mub_mem_icmp() does.
 *
 * Content that is not empty is greater than NULL and than a text with a count of 0 (result 1). Empty content
 * equals these and an empty text, and is less than any other text (result -1).
 *
 * @param[in] string  the string
 * @param[in] text    the text to compare with; NULL: a text without content
 * @param[in] count   bytes of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_string_icompare(const mub_string *string, const char *text, int64_t count);

/**
 * Finds the first occurrence of a byte.
 *
 * The byte 0 is never found.
 *
 * @param[in] string     the string
 * @param[in] character  the byte; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_string_find_char(const mub_string *string, int character);

/**
 * Finds the first occurrence of a byte at or after index `start`.
 *
 * The byte 0 is never found.
 *
 * @param[in] string     the string
 * @param[in] character  the byte; its low 8 bits are used
 * @param[in] start      the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the content
 * @cost O(length)
 */
MUB_API int64_t mub_string_find_char_pos(const mub_string *string, int character, int64_t start);

/**
 * Finds the last occurrence of a byte.
 *
 * The byte 0 is never found.
 *
 * @param[in] string     the string
 * @param[in] character  the byte; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_string_reverse_find(const mub_string *string, int character);

/**
 * Finds the first occurrence of a text.
 *
 * @param[in] string  the string
 * @param[in] text    the text to find; NULL is not found
 * @param[in] count   bytes of the text; 0 searches for the first byte of the text, as mub_mem_str() does;
 *                    negative: up to its NUL, and the search is that of strstr, which finds an empty text at
 *                    once and stops at the first NUL of the content
 * @return its index
 * @failure -1 if there is none, and always in an empty string
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_string_find(const mub_string *string, const char *text, int64_t count);

/**
 * Finds the first occurrence of a text at or after index `start`.
 *
 * @param[in] string  the string
 * @param[in] text    the text to find; NULL is not found
 * @param[in] count   bytes of the text; 0 searches for the first byte of the text, as mub_mem_str() does;
 *                    negative: up to its NUL, and the search is that of strstr, which finds an empty text at
 *                    once and stops at the first NUL of the content
 * @param[in] start   the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the content
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_string_find_pos(const mub_string *string, const char *text, int64_t count, int64_t start);

/**
 * Removes white space at both ends of the content, and NULs at its end.
 *
 * If the first character that is not white space is a NUL, the string is emptied.
 *
 * @param[in,out] string  the string
 * @return 1 if anything was removed, else 0
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int mub_string_trim(mub_string *string);

/**
 * Replaces every byte `from` of the content with `to`.
 *
 * @param[in,out] string  the string
 * @param[in] from        the byte to replace; its low 8 bits are used
 * @param[in] to          the new byte; its low 8 bits are used
 * @return the number of replacements
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int64_t mub_string_replace_char(mub_string *string, int from, int to);

/**
 * Replaces every occurrence of a text with another, from left to right.
 *
 * Occurrences do not overlap, and the search ends at the first NUL of the content. The content moves to a new
 * buffer even if there is no occurrence.
 *
 * @param[in,out] string  the string
 * @param[in] from        the text to replace, ending with a NUL; NULL and the empty text leave the string
 *                        unchanged
 * @param[in] to          the new text, ending with a NUL; NULL: occurrences are deleted
 * @return the number of replacements
 * @failure 0 if memory ran out; the string is unchanged
 * @owner `to` is copied, `from` is only read
 * @invalidates pointers into the buffer
 * @cost O(length), of the old and of the new content
 * @nullable from, to
 */
MUB_API int64_t mub_string_replace(mub_string *string, const char *from, const char *to);

/**
 * Replaces the first occurrence of a marker with the first of the texts that follow, the second with the
 * second, and so on, until there are no more of either.
 *
 * Further occurrences are unchanged. Otherwise like mub_string_replace().
 *
 * @param[in,out] string  the string
 * @param[in] marker      the text to replace, ending with a NUL; NULL and the empty text leave the string
 *                        unchanged
 * @param ...             texts of type `const char *` that end with a NUL, then a null pointer; they may
 *                        contain the marker and may lie in the string
 * @failure the string is unchanged if memory runs out
 * @owner the texts are copied
 * @invalidates pointers into the buffer
 * @cost O(length), of the old and of the new content
 * @nullable marker
 */
MUB_API void mub_string_match(mub_string *string, const char *marker, ...);

/**
 * Replaces the content with the output of printf, in a new buffer.
 *
 * At first the buffer has room for the length of the format, plus the length of each text passed to a plain
 * `%%s`, plus 32 bytes for each other percent sign except one at the very end, rounded up as in any growth.
 * If the output is longer, as it may be for long texts passed to conversions with a width, flags or a
 * precision, the buffer is enlarged and the output formatted again. A NULL text also counts as 32 bytes, and
 * so does every text for or after a positional or unknown conversion.
 *
 * @param[in,out] string  the string
 * @param[in] format      a printf format; if empty, the string is emptied
 * @param ...             the arguments, as printf takes them; texts among them may lie in the string
 * @failure the string is unchanged if memory runs out or printf fails
 * @owner the texts are copied
 * @invalidates pointers into the buffer
 * @cost O(bytes formatted)
 */
MUB_API void mub_string_format(mub_string *string, const char *format, ...) MUB_PRINTF(2, 3);

/**
 * Inserts a text before `position`.
 *
 * @param[in,out] string  the string
 * @param[in] position    the position to insert before: 0 to the length
 * @param[in] text        the text, which may lie in the string itself; NULL inserts nothing
 * @param[in] count       bytes of the text; negative: up to its NUL
 * @return 1 if inserted
 * @failure 0, and nothing changes, if the position is negative or above the length, there is nothing to
 *   insert, or memory ran out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_string_insert(mub_string *string, int64_t position, const char *text, int64_t count);

/**
 * Replaces a range with a text.
 *
 * @param[in,out] string  the string
 * @param[in] position    the start of the range: 0 to the length
 * @param[in] old_count   the number of bytes to replace, limited to those there are
 * @param[in] text        the text, which may lie in the string itself; NULL with a count of 0 deletes the
 *                        range
 * @param[in] count       bytes of the text; negative: up to its NUL
 * @return 1 if replaced
 * @failure 0, and nothing changes, if the position is negative or above the length, `old_count` is negative,
 *   the text is NULL with a count other than 0, or memory ran out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_string_update(mub_string *string, int64_t position, int64_t old_count, const char *text,
                              int64_t count);

/**
 * Removes a range.
 *
 * A position above the length becomes the new length, limited to the capacity, as by mub_string_shrink().
 * Does nothing if an argument is negative.
 *
 * @param[in,out] string  the string
 * @param[in] position    the start of the range, counted from 0
 * @param[in] count       the number of bytes to remove, limited to those there are
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_string_delete(mub_string *string, int64_t position, int64_t count);

/**
 * Keeps the first `count` bytes, or as many as there are; a negative count keeps everything.
 *
 * @param[in,out] string  the string
 * @param[in] count       the number of bytes
 * @invalidates nothing
 */
MUB_API void mub_string_left(mub_string *string, int64_t count);

/**
 * Keeps `count` bytes from `start` on, or as many as there are; none if `start` is not below the length or
 * the count is below 1.
 *
 * If `start` is negative, everything is kept.
 *
 * @param[in,out] string  the string
 * @param[in] start       the index at which to begin
 * @param[in] count       the number of bytes
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_string_mid(mub_string *string, int64_t start, int64_t count);

/**
 * Keeps the last `count` bytes, or as many as there are; none if the count is below 1.
 *
 * @param[in,out] string  the string
 * @param[in] count       the number of bytes
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_string_right(mub_string *string, int64_t count);

/**
 * Copies the first `count` bytes of a string, or as many as there are, to another string; none if the count
 * is below 1.
 *
 * @param[in] string   the string
 * @param[in] count    the number of bytes
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_string_left_string(const mub_string *string, int64_t count, mub_string *out);

/**
 * Copies `count` bytes from `start` on, or as many as there are, to another string; none if the count is
 * below 1 or `start` lies outside the content.
 *
 * @param[in] string   the string
 * @param[in] start    the index at which to begin
 * @param[in] count    the number of bytes
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_string_mid_string(const mub_string *string, int64_t start, int64_t count, mub_string *out);

/**
 * Copies the last `count` bytes of a string, or as many as there are, to another string; none if the count is
 * below 1.
 *
 * @param[in] string   the string
 * @param[in] count    the number of bytes
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_string_right_string(const mub_string *string, int64_t count, mub_string *out);

/** @} */

/**
 * @defgroup stringx mub_stringx: a non-owning view of a span of text
 *
 * A mub_stringx refers to a span of a text that it does not own. Its operations move the span and never write
 * to the text or terminate it; nothing is allocated.
 *
 *     text ──► "  name =  value "
 *                         ^~~~~        start = 10, length = 5
 *
 * Positions count from the start of the span. A view of a string is valid until the string's buffer moves or
 * is released. Nothing is read through a view whose length is below 1.
 *
 * @{
 */

/** A non-owning view of a span of text. */
typedef struct mub_stringx {
  const char *text; /**< the text, not owned; NULL for an empty view */
  int64_t start;    /**< the start of the span in the text */
  int64_t length;   /**< bytes in the span */
} mub_stringx;

/**
 * Initialises an empty view.
 *
 * @param[out] view  the view; its old contents are ignored
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API void mub_stringx_init(mub_stringx *view);

/**
 * Makes the view empty; the same as mub_stringx_init().
 *
 * Nothing is released.
 *
 * @param[in,out] view  the view
 * @owner the text remains its owner's
 * @invalidates nothing
 */
MUB_API void mub_stringx_term(mub_stringx *view);

/**
 * Checks whether a view has no text or the length 0.
 *
 * @param[in] view  the view
 * @return 1 if it is empty, else 0
 */
MUB_API int mub_stringx_is_empty(const mub_stringx *view);

/**
 * Makes the span empty and moves it to the start of the text.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 */
MUB_API void mub_stringx_shrink(mub_stringx *view);

/**
 * Makes a view refer to the span of another view.
 *
 * @param[in,out] view  the view
 * @param[in] other     the view to copy
 * @owner the text remains its owner's; both views refer to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_copy(mub_stringx *view, const mub_stringx *other);

/**
 * Makes a view refer to the content of a string.
 *
 * @param[in,out] view  the view
 * @param[in] string    the string to view
 * @owner the text remains the string's; the view refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_copy_string(mub_stringx *view, const mub_string *string);

/**
 * Makes a view refer to the characters of a mub_char, up to their NUL if its length is negative.
 *
 * @param[in,out] view  the view
 * @param[in] other     the characters to view
 * @owner the text remains its owner's; the view refers to it
 * @invalidates nothing
 * @cost O(1); O(characters) for a negative length
 */
MUB_API void mub_stringx_copy_char(mub_stringx *view, const mub_char *other);

/**
 * Swaps two views.
 *
 * @param[in,out] a  one view
 * @param[in,out] b  the other view
 * @owner the texts remain their owners'
 * @invalidates nothing
 */
MUB_API void mub_stringx_swap(mub_stringx *a, mub_stringx *b);

/**
 * Reads the byte at `index` of the span.
 *
 * @param[in] view   the view
 * @param[in] index  a position, counted from the start of the span
 * @return the byte, as a signed char
 * @failure -1 outside the span
 */
MUB_API int mub_stringx_get_at(const mub_stringx *view, int64_t index);

/**
 * Compares the span with a text, as mub_string_compare() does.
 *
 * @param[in] view   the view
 * @param[in] text   the text to compare with; NULL: a text without content
 * @param[in] count  bytes of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_stringx_compare(const mub_stringx *view, const char *text, int64_t count);

/**
 * Compares the span with a text without regard to case, as mub_string_icompare() does.
 *
 * @param[in] view   the view
 * @param[in] text   the text to compare with; NULL: a text without content
 * @param[in] count  bytes of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_stringx_icompare(const mub_stringx *view, const char *text, int64_t count);

/**
 * Finds the first occurrence of a byte.
 *
 * The byte 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the byte; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_stringx_find_char(const mub_stringx *view, int character);

/**
 * Finds the first occurrence of a byte at or after index `start`.
 *
 * The byte 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the byte; its low 8 bits are used
 * @param[in] start      the index at which to begin, counted from the start of the span
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the span
 * @cost O(length)
 */
MUB_API int64_t mub_stringx_find_char_pos(const mub_stringx *view, int character, int64_t start);

/**
 * Finds the last occurrence of a byte.
 *
 * The byte 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the byte; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_stringx_reverse_find(const mub_stringx *view, int character);

/**
 * Finds the first occurrence of a text.
 *
 * As in mub_mem_str(), NULs are ordinary bytes.
 *
 * @param[in] view   the view
 * @param[in] text   the text to find; NULL is not found
 * @param[in] count  bytes of the text; negative: up to its NUL; if there are none, the first byte at `text`
 *                   is searched for, even if that is the NUL
 * @return its index
 * @failure -1 if there is none
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_stringx_find(const mub_stringx *view, const char *text, int64_t count);

/**
 * Finds the first occurrence of a text at or after index `start`.
 *
 * As in mub_mem_str(), NULs are ordinary bytes.
 *
 * @param[in] view   the view
 * @param[in] text   the text to find; NULL is not found
 * @param[in] count  bytes of the text; negative: up to its NUL; if there are none, the first byte at `text`
 *                   is searched for, even if that is the NUL
 * @param[in] start  the index at which to begin, counted from the start of the span
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the span
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_stringx_find_pos(const mub_stringx *view, const char *text, int64_t count, int64_t start);

/**
 * Checks whether the whole span is an integer: an optional '-' and one or more digits.
 *
 * @param[in] view  the view
 * @return 1 if it is, else 0
 * @cost O(length)
 */
MUB_API int mub_stringx_is_long(const mub_stringx *view);

/**
 * Reads the integer that the span begins with, as mub_string_get_long() does.
 *
 * @param[in] view  the view
 * @return the number
 * @failure 0 if there is none
 * @cost O(digits)
 */
MUB_API int64_t mub_stringx_get_long(const mub_stringx *view);

/**
 * Checks whether the whole span is a decimal number: an optional '-', one or more digits, and optionally a
 * point, after which there may be more digits.
 *
 * @param[in] view  the view
 * @return 1 if it is, else 0
 * @cost O(length)
 */
MUB_API int mub_stringx_is_float(const mub_stringx *view);

/**
 * Reads the decimal number that the span begins with, as mub_string_get_double() does.
 *
 * @param[in] view  the view
 * @return the number
 * @failure 0.0 if there is none
 * @cost O(digits)
 */
MUB_API double mub_stringx_get_float(const mub_stringx *view);

/**
 * Removes white space at both ends of the span, and NULs at its end.
 *
 * A span whose first character that is not white space is a NUL becomes empty. The start of a span that
 * becomes empty is unchanged.
 *
 * @param[in,out] view  the view
 * @return 1 if the span changed, or if there is a text and the span is empty; else 0
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int mub_stringx_trim(mub_stringx *view);

/**
 * Keeps the first `count` bytes of the span, or as many as there are.
 *
 * If the span is not empty, a negative count is stored as its length; nothing is then read through the view.
 *
 * @param[in,out] view  the view
 * @param[in] count     the number of bytes
 * @invalidates nothing
 */
MUB_API void mub_stringx_left(mub_stringx *view, int64_t count);

/**
 * Moves the start by `offset` and keeps `count` bytes from there, or as many as there are; none if the count
 * is below 1 or `offset` is not below the length.
 *
 * Does nothing for a negative offset or an empty span.
 *
 * @param[in,out] view  the view
 * @param[in] offset    bytes from the start of the span
 * @param[in] count     the number of bytes
 * @invalidates nothing
 */
MUB_API void mub_stringx_mid(mub_stringx *view, int64_t offset, int64_t count);

/**
 * Keeps the last `count` bytes of the span, or as many as there are.
 *
 * A count below 1 keeps none. The start then moves by the length minus `count`, to the end of the span or
 * past it, unless the span is empty already.
 *
 * @param[in,out] view  the view
 * @param[in] count     the number of bytes
 * @invalidates nothing
 */
MUB_API void mub_stringx_right(mub_stringx *view, int64_t count);

/**
 * Sets `out`, a view of the same text, to the first `count` bytes of the span, or as many as there are; none
 * if the count is below 1.
 *
 * If `out` is a view of another text, it is unchanged, unless `view` is empty or the count is below 1: then
 * the start of `view` and the length 0 are stored in any case.
 *
 * @param[in] view     the view
 * @param[in] count    the number of bytes
 * @param[in,out] out  receives the view
 * @owner the text remains its owner's; `out` refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_left_string(const mub_stringx *view, int64_t count, mub_stringx *out);

/**
 * Sets `out`, a view of the same text, to `count` bytes from `offset`, or as many as there are; none if the
 * count is below 1 or `offset` lies outside the span.
 *
 * If `out` is a view of another text, it is unchanged, unless the result is empty: then the start of `view`,
 * moved by `offset`, and the length 0 are stored in any case.
 *
 * @param[in] view     the view
 * @param[in] offset   bytes from the start of the span
 * @param[in] count    the number of bytes
 * @param[in,out] out  receives the view
 * @owner the text remains its owner's; `out` refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_mid_string(const mub_stringx *view, int64_t offset, int64_t count, mub_stringx *out);

/**
 * Sets `out`, a view of the same text, to the last `count` bytes of the span, or as many as there are; none
 * if the count is below 1.
 *
 * If `out` is a view of another text, it is unchanged, unless `view` is empty or the count is below 1: then
 * the start of `view` and the length 0 are stored in any case.
 *
 * @param[in] view     the view
 * @param[in] count    the number of bytes
 * @param[in,out] out  receives the view
 * @owner the text remains its owner's; `out` refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_right_string(const mub_stringx *view, int64_t count, mub_stringx *out);

/**
 * Sets `out` to the first `count` bytes of the span, or as many as there are; none if the count is below 1.
 *
 * If the view has no text, `out->data` is NULL; otherwise it is the start of the span, even if the length is
 * 0.
 *
 * @param[in] view   the view
 * @param[in] count  the number of bytes
 * @param[out] out   receives the view
 * @owner the text remains its owner's; `out` refers to it, and its old data is not released
 * @invalidates nothing
 */
MUB_API void mub_stringx_left_char(const mub_stringx *view, int64_t count, mub_char *out);

/**
 * Sets `out` to `count` bytes of the span from `offset`, or as many as there are; none if the count is below
 * 1 or `offset` lies outside the span.
 *
 * If the view has no text, `out->data` is NULL. If the length is 0, `out->data` may lie outside the text.
 *
 * @param[in] view    the view
 * @param[in] offset  bytes from the start of the span
 * @param[in] count   the number of bytes
 * @param[out] out    receives the view
 * @owner the text remains its owner's; `out` refers to it, and its old data is not released
 * @invalidates nothing
 */
MUB_API void mub_stringx_mid_char(const mub_stringx *view, int64_t offset, int64_t count, mub_char *out);

/**
 * Sets `out` to the last `count` bytes of the span, or as many as there are.
 *
 * If the view has no text, `out->data` is NULL. With a count below 1 it is the start of the span, and the
 * length is 0.
 *
 * @param[in] view   the view
 * @param[in] count  the number of bytes
 * @param[out] out   receives the view
 * @owner the text remains its owner's; `out` refers to it, and its old data is not released
 * @invalidates nothing
 */
MUB_API void mub_stringx_right_char(const mub_stringx *view, int64_t count, mub_char *out);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
