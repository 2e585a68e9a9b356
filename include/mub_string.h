/**
 * @defgroup string_h mub_string.h: strings
 *
 * A growable string of bytes, and a view of a text that is not copied.
 *
 *     data ──► [ content ........ | 0 | spare ... ]      capacity + 1 bytes
 *                0                  length
 *
 * The content is followed by a NUL, so that `data` can be passed to whatever takes a NUL-terminated text; its
 * length is kept beside it, so that the content may hold NULs. A string whose `data` is NULL is empty, and
 * every function accepts it.
 *
 * Texts are given with a count of bytes; a negative one means that the text ends at its NUL. A text may lie
 * in the string that it goes into. Whatever makes a string grow invalidates pointers into it. Growth is by
 * half the length, at least 8 bytes and at most 8 MiB, and rounded up so that the block, terminator included,
 * is a multiple of 8; appending is O(1) amortised. Past 2^31 - 1 bytes a buffer takes what is asked for and
 * no more: expand such a string first, or every few appends copy it. Functions that return nothing leave the
 * string as it was if memory runs out.
 *
 * White space is tab, line feed, carriage return and space.
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
 * | `_get_long`, `_get_double`                 | the number            | 0, 0.0             |               |
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
 * @defgroup string mub_string: a growable string with its length kept and a NUL after it
 *
 * A growable string of bytes.
 *
 * @{
 */

/** A growable string of bytes, with a NUL after its content. */
typedef struct mub_string {
  /** `capacity + 1` bytes, or NULL while nothing was ever allocated; `data[length]` is 0 */
  char *data;
  /** bytes of content, at most capacity */
  int64_t length;
  /** bytes of content that fit */
  int64_t capacity;
} mub_string;

/**
 * Makes the record an empty string; nothing is allocated.
 *
 * @param[out] string  the string
 * @owner the record is the caller's
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
 * Checks whether there is no content.
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
 * @param[in] capacity    bytes wanted
 * @return 1 if there is room
 * @failure 0 if memory ran out; the string is unchanged
 * @invalidates pointers into the buffer, if it grows
 * @cost O(capacity) if it grows
 */
MUB_API int mub_string_expand(mub_string *string, int64_t capacity);

/**
 * Sets the length to `length`, or to the capacity if that is less, and writes the terminator.
 *
 * A length above the current one exposes what lies there. Does nothing for a negative length, or for a string
 * without a buffer.
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
 * @param[in] position    a position, counted from 0
 * @param[in] count       bytes to fill
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_string_zero(mub_string *string, int64_t position, int64_t count);

/**
 * Exchanges two strings with their buffers.
 *
 * @param[in,out] a  one string
 * @param[in,out] b  the other string
 * @owner the buffer of one string now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_string_swap(mub_string *a, mub_string *b);

/**
 * Makes the destination a copy of the source, with room for at least the capacity of the source.
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
 * Makes a text the whole content.
 *
 * @param[in,out] string  the string
 * @param[in] text        the text; may lie in the string itself; NULL empties the string
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
 * Makes a byte the whole content; 0 empties the string.
 *
 * @param[in,out] string  the string
 * @param[in] character   the byte; its low 8 bits are used
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_char(mub_string *string, int character);

/**
 * Makes the decimal digits of a number the whole content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_integer(mub_string *string, int64_t value);

/**
 * Makes the decimal digits of a number the whole content.
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
 * Makes a number, printed with printf's `%f`, the whole content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_string_copy_float(mub_string *string, float value);

/**
 * Makes a number, printed with printf's `%f`, the whole content.
 *
 * The longest takes 317 bytes.
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
 * @param[in] text        the text; may lie in the string itself; NULL appends nothing
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
 * Appends a byte to the content; 0 is appended like any other.
 *
 * @param[in,out] string  the string
 * @param[in] character   the byte; its low 8 bits are used
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_char(mub_string *string, int character);

/**
 * Appends the decimal digits of a number to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_integer(mub_string *string, int64_t value);

/**
 * Appends the decimal digits of a number to the content.
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
 * Appends a number, printed with printf's `%f`, to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_string_append_float(mub_string *string, float value);

/**
 * Appends a number, printed with printf's `%f`, to the content.
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
 * @return the number, cut to 32 bits; `otherwise` for an empty string
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
 * White space, '+' and exponents are not accepted, and the locale does not matter. A digit before the point
 * makes the value `value * 10.0 + (character code - 48.0)`; the k-th digit after the point adds the digit
 * divided by 10.0 k times in turn. Both round at every step.
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
 * Below the capacity, the terminator and the spare bytes can be read too.
 *
 * @param[in] string  the string
 * @param[in] index   a position, counted from 0
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
 * @param[in] index       a position, counted from 0
 * @param[in] character   the byte; its low 8 bits are used
 * @invalidates nothing
 */
MUB_API void mub_string_set_at(mub_string *string, int64_t index, int character);

/**
 * Passes every byte of the content through the runtime's tolower.
 *
 * @param[in,out] string  the string
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_string_make_lower(mub_string *string);

/**
 * Passes every byte of the content through the runtime's toupper.
 *
 * @param[in,out] string  the string
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_string_make_upper(mub_string *string);

/**
 * Orders the content against a text, as mub_mem_cmp() does.
 *
 * NULL and a count of 0 sort before content that is not empty (result 1). Empty content equals them and an
 * empty text, and sorts before any other text (result -1).
 *
 * @param[in] string  the string
 * @param[in] text    the text to compare with; NULL has no content
 * @param[in] count   bytes of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_string_compare(const mub_string *string, const char *text, int64_t count);

/**
 * Orders the content against a text, without regard to case, as mub_mem_icmp() does.
 *
 * NULL and a count of 0 sort before content that is not empty (result 1). Empty content equals them and an
 * empty text, and sorts before any other text (result -1).
 *
 * @param[in] string  the string
 * @param[in] text    the text to compare with; NULL has no content
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
 * 0 is never found.
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
 * 0 is never found.
 *
 * @param[in] string     the string
 * @param[in] character  the byte; its low 8 bits are used
 * @param[in] start      where to begin, counted from 0
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the content
 * @cost O(length)
 */
MUB_API int64_t mub_string_find_char_pos(const mub_string *string, int character, int64_t start);

/**
 * Finds the last occurrence of a byte.
 *
 * 0 is never found.
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
 * @param[in] count   bytes of the text, as in mub_mem_str(), so that 0 looks for the first byte of the text;
 *                    negative: as strstr, so that an empty text is found at once and the search ends at the
 *                    first NUL
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
 * @param[in] count   bytes of the text, as in mub_mem_str(), so that 0 looks for the first byte of the text;
 *                    negative: as strstr, so that an empty text is found at once and the search ends at the
 *                    first NUL
 * @param[in] start   where to begin, counted from 0
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
 * If there is a NUL among the leading white space, the whole content is removed.
 *
 * @param[in,out] string  the string
 * @return 1 if anything was removed, else 0
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int mub_string_trim(mub_string *string);

/**
 * Replaces every byte `from` of the content by `to`.
 *
 * @param[in,out] string  the string
 * @param[in] from        the byte to replace; its low 8 bits are used
 * @param[in] to          the new byte; its low 8 bits are used
 * @return how many were replaced
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int64_t mub_string_replace_char(mub_string *string, int from, int to);

/**
 * Replaces every occurrence of a text by another, left to right.
 *
 * Occurrences do not overlap, and the search ends at the first NUL of the content. The content moves to a
 * fresh buffer even if there is no occurrence.
 *
 * @param[in,out] string  the string
 * @param[in] from        the text to replace, ending with a NUL; NULL and the empty text leave the string
 *                        unchanged
 * @param[in] to          the new text, ending with a NUL; NULL deletes
 * @return how many were replaced
 * @failure 0 if memory ran out; the string is unchanged
 * @owner both texts are copied
 * @invalidates pointers into the buffer
 * @cost O(length), of the old and of the new content
 * @nullable from, to
 */
MUB_API int64_t mub_string_replace(mub_string *string, const char *from, const char *to);

/**
 * Replaces the first occurrence of a marker by the first of the texts that follow, the second by the second,
 * and so on, until either run out.
 *
 * Otherwise as mub_string_replace(): further occurrences stay as they are.
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
 * Makes what printf prints the whole content, in a fresh buffer.
 *
 * The buffer is sized for the length of the format, the length of each text given to a plain `%s`, and 32
 * bytes for each other percent sign except one at the very end. If the output is longer, the buffer grows
 * once more and the output is printed again, as happens for long texts given to conversions with a width,
 * flags or a precision. NULL counts as 32 too, and so do texts for and after a positional or unknown
 * conversion.
 *
 * @param[in,out] string  the string
 * @param[in] format      a printf format; an empty one empties the string
 * @param ...             the arguments, as printf takes them; texts among them may lie in the string
 * @failure the string is unchanged if memory runs out or printf fails
 * @owner the texts are copied
 * @invalidates pointers into the buffer
 * @cost O(bytes printed)
 */
MUB_API void mub_string_format(mub_string *string, const char *format, ...) MUB_PRINTF(2, 3);

/**
 * Inserts a text before `position`.
 *
 * @param[in,out] string  the string
 * @param[in] position    where to insert: 0 to the length
 * @param[in] text        the text; may lie in the string itself; NULL inserts nothing
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
 * Replaces a range by a text.
 *
 * @param[in,out] string  the string
 * @param[in] position    where the range begins: 0 to the length
 * @param[in] old_count   bytes to replace, or as many as there are
 * @param[in] text        the text; may lie in the string itself; NULL with a count of 0 deletes
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
 * A position above the length becomes the new length, as by mub_string_shrink(): the content is lengthened,
 * up to the capacity. Negative arguments do nothing.
 *
 * @param[in,out] string  the string
 * @param[in] position    where the range begins, counted from 0
 * @param[in] count       bytes to remove, or as many as there are
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_string_delete(mub_string *string, int64_t position, int64_t count);

/**
 * Keeps the first `count` bytes, or as many as there are; a negative count keeps everything.
 *
 * @param[in,out] string  the string
 * @param[in] count       bytes to keep
 * @invalidates nothing
 */
MUB_API void mub_string_left(mub_string *string, int64_t count);

/**
 * Keeps `count` bytes from `start`, or as many as there are; none if `start` is not below the length or the
 * count is below 1.
 *
 * A negative start keeps everything.
 *
 * @param[in,out] string  the string
 * @param[in] start       where to begin, counted from 0
 * @param[in] count       bytes to keep
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_string_mid(mub_string *string, int64_t start, int64_t count);

/**
 * Keeps the last `count` bytes, or as many as there are; none if the count is below 1.
 *
 * @param[in,out] string  the string
 * @param[in] count       bytes to keep
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_string_right(mub_string *string, int64_t count);

/**
 * Makes the first `count` bytes of a string, or as many as there are, the content of another; none if the
 * count is below 1.
 *
 * @param[in] string   the string
 * @param[in] count    bytes to copy
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_string_left_string(const mub_string *string, int64_t count, mub_string *out);

/**
 * Makes `count` bytes from `start`, or as many as there are, the content of another string; none if the count
 * is below 1 or `start` lies outside the content.
 *
 * @param[in] string   the string
 * @param[in] start    where to begin, counted from 0
 * @param[in] count    bytes to copy
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_string_mid_string(const mub_string *string, int64_t start, int64_t count, mub_string *out);

/**
 * Makes the last `count` bytes of a string, or as many as there are, the content of another; none if the
 * count is below 1.
 *
 * @param[in] string   the string
 * @param[in] count    bytes to copy
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
 * @defgroup stringx mub_stringx: a view of a span of a text that is owned elsewhere
 *
 * A mub_stringx is a span of a text that is owned elsewhere. Its operations move the span and never the text,
 * which they neither write nor terminate; nothing is allocated.
 *
 *     text ──► "  name =  value "
 *                         ^~~~~        start = 10, length = 5
 *
 * Positions count from the start of the span. A view of a string is valid as long as the string's buffer
 * stays where it is. Nothing is read through a view whose length is below 1.
 *
 * @{
 */

/** A view of a span of a text that is owned elsewhere. */
typedef struct mub_stringx {
  const char *text; /**< the viewed text, never owned; NULL for an empty view */
  int64_t start;    /**< where the span begins */
  int64_t length;   /**< bytes in the span */
} mub_stringx;

/**
 * Makes an empty view.
 *
 * @param[out] view  the view
 * @owner the record is the caller's
 * @invalidates nothing
 */
MUB_API void mub_stringx_init(mub_stringx *view);

/**
 * Makes an empty view; the same as mub_stringx_init().
 *
 * Nothing is released.
 *
 * @param[in,out] view  the view
 * @owner the text stays its owner's
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
 * Views what another view views.
 *
 * @param[in,out] view  the view
 * @param[in] other     the view to take over
 * @owner the text stays its owner's; both views refer to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_copy(mub_stringx *view, const mub_stringx *other);

/**
 * Views the content of a string.
 *
 * @param[in,out] view  the view
 * @param[in] string    the string to view
 * @owner the text stays the string's; the view refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_copy_string(mub_stringx *view, const mub_string *string);

/**
 * Views the characters of a mub_char; if its length is negative, they reach to the NUL.
 *
 * @param[in,out] view  the view
 * @param[in] other     the view to take over
 * @owner the text stays its owner's; the view refers to it
 * @invalidates nothing
 * @cost O(1); O(characters) for a negative length
 */
MUB_API void mub_stringx_copy_char(mub_stringx *view, const mub_char *other);

/**
 * Exchanges two views.
 *
 * @param[in,out] a  one view
 * @param[in,out] b  the other view
 * @owner the texts stay their owners'
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
 * Orders the span against a text, as mub_string_compare() does.
 *
 * @param[in] view   the view
 * @param[in] text   the text to compare with; NULL has no content
 * @param[in] count  bytes of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_stringx_compare(const mub_stringx *view, const char *text, int64_t count);

/**
 * Orders the span against a text, without regard to case, as mub_string_icompare() does.
 *
 * @param[in] view   the view
 * @param[in] text   the text to compare with; NULL has no content
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
 * 0 is never found.
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
 * 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the byte; its low 8 bits are used
 * @param[in] start      where to begin, counted from the start of the span
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the span
 * @cost O(length)
 */
MUB_API int64_t mub_stringx_find_char_pos(const mub_stringx *view, int character, int64_t start);

/**
 * Finds the last occurrence of a byte.
 *
 * 0 is never found.
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
 * As in mub_mem_str(), NULs are bytes like any other.
 *
 * @param[in] view   the view
 * @param[in] text   the text to find; NULL is not found
 * @param[in] count  bytes of the text; negative: up to its NUL
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
 * As in mub_mem_str(), NULs are bytes like any other.
 *
 * @param[in] view   the view
 * @param[in] text   the text to find; NULL is not found
 * @param[in] count  bytes of the text; negative: up to its NUL
 * @param[in] start  where to begin, counted from the start of the span
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
 * point and more digits or none.
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
 * A span with a NUL among its leading white space becomes empty. A span that becomes empty keeps its start.
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
 * A negative count is stored as the length of a span that is not empty; nothing is read through the view
 * then.
 *
 * @param[in,out] view  the view
 * @param[in] count     bytes to keep
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
 * @param[in] count     bytes to keep
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
 * @param[in] count     bytes to keep
 * @invalidates nothing
 */
MUB_API void mub_stringx_right(mub_stringx *view, int64_t count);

/**
 * Makes `out`, a view of the same text, view the first `count` bytes of the span, or as many as there are;
 * none if the count is below 1.
 *
 * A view of another text is unchanged, unless there is nothing to view: then the start of `view` and the
 * length 0 are stored, whatever the text.
 *
 * @param[in] view     the view
 * @param[in] count    bytes to view
 * @param[in,out] out  receives the view
 * @owner the text stays its owner's; `out` refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_left_string(const mub_stringx *view, int64_t count, mub_stringx *out);

/**
 * Makes `out`, a view of the same text, view `count` bytes from `offset`, or as many as there are; none if
 * the count is below 1 or `offset` lies outside the span.
 *
 * A view of another text is unchanged, unless there is nothing to view: then the start of `view`, moved by
 * `offset`, and the length 0 are stored, whatever the text.
 *
 * @param[in] view     the view
 * @param[in] offset   bytes from the start of the span
 * @param[in] count    bytes to view
 * @param[in,out] out  receives the view
 * @owner the text stays its owner's; `out` refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_mid_string(const mub_stringx *view, int64_t offset, int64_t count, mub_stringx *out);

/**
 * Makes `out`, a view of the same text, view the last `count` bytes of the span, or as many as there are;
 * none if the count is below 1.
 *
 * A view of another text is unchanged, unless there is nothing to view: then the start of `view` and the
 * length 0 are stored, whatever the text.
 *
 * @param[in] view     the view
 * @param[in] count    bytes to view
 * @param[in,out] out  receives the view
 * @owner the text stays its owner's; `out` refers to it
 * @invalidates nothing
 */
MUB_API void mub_stringx_right_string(const mub_stringx *view, int64_t count, mub_stringx *out);

/**
 * Makes `out` view the first `count` bytes of the span, or as many as there are.
 *
 * Without a text its data is NULL; otherwise the data is the start of the span, even if the length is 0.
 *
 * @param[in] view   the view
 * @param[in] count  bytes to view
 * @param[out] out   receives the view
 * @owner the text stays its owner's; `out` refers to it, and its old data is not released
 * @invalidates nothing
 */
MUB_API void mub_stringx_left_char(const mub_stringx *view, int64_t count, mub_char *out);

/**
 * Makes `out` view `count` bytes of the span from `offset`, or as many as there are; none if the count is
 * below 1 or `offset` lies outside the span.
 *
 * Without a text its data is NULL. If the length is 0, the data may lie outside the text.
 *
 * @param[in] view    the view
 * @param[in] offset  bytes from the start of the span
 * @param[in] count   bytes to view
 * @param[out] out    receives the view
 * @owner the text stays its owner's; `out` refers to it, and its old data is not released
 * @invalidates nothing
 */
MUB_API void mub_stringx_mid_char(const mub_stringx *view, int64_t offset, int64_t count, mub_char *out);

/**
 * Makes `out` view the last `count` bytes of the span, or as many as there are.
 *
 * Without a text its data is NULL. With a count below 1 it is the start of the span, and the length is 0.
 *
 * @param[in] view   the view
 * @param[in] count  bytes to view
 * @param[out] out   receives the view
 * @owner the text stays its owner's; `out` refers to it, and its old data is not released
 * @invalidates nothing
 */
MUB_API void mub_stringx_right_char(const mub_stringx *view, int64_t count, mub_char *out);

/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
