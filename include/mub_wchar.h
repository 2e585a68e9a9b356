/**
 * @defgroup wchar mub_wchar: a growable string of 16-bit units
 *
 * A growable string of 16-bit units.
 *
 *     data ──► [ content ........ | 0 | spare ... ]      capacity + 1 units
 *                0                  length
 *
 * Lengths, positions, capacities and counts are in units. As in a mub_string, the content is followed by a
 * unit of 0, a text may lie in the string that it is copied into, the buffer grows by half the length (by at
 * least 8 and at most 8 Mi units), and functions that return nothing leave the string unchanged if memory
 * runs out. White space is tab, line feed, carriage return and space.
 *
 * Wide texts are passed with a count of units. Avoid negative counts: they mean that the C library's wcslen
 * measures the text, and the size of wchar_t depends on the platform. Where wchar_t has 32 bits, such a text
 * is measured in steps of two units: it ends at two units of 0, the first of them at an even index, and the
 * number of steps is used as the number of units. A search for such a text, as by wcsstr, also proceeds
 * through the string in steps of two units. Narrow texts end at their NUL. Texts need only the alignment of
 * 16-bit units.
 *
 * What the everyday operations return:
 *
 * | operation                                 | found, done           | not found, refused | out of memory |
 * | ----------------------------------------- | --------------------- | ------------------ | ------------- |
 * | `_clone`, `_expand`                       | 1                     |                    | 0, unchanged  |
 * | `_left_wchar` and so on                   | 1                     | 1, empty           | 0, unchanged  |
 * | `_append…`, `_copy…`                      |                       |                    | unchanged     |
 * | `_insert`, `_update`                      | 1                     | 0, unchanged       | 0, unchanged  |
 * | `_replace`                                | how many              | 0                  | 0, unchanged  |
 * | `_find…`, `_reverse_find`, `_chr`, `_str` | the index             | -1                 |               |
 * | `_get_at`                                 | the unit              | 0                  |               |
 * | `_trim`                                   | 1 if anything changed | 0                  |               |
 *
 * @{
 */
#ifndef MUB_WCHAR_H
#define MUB_WCHAR_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A growable string of 16-bit units, with a unit of 0 after its content. */
typedef struct mub_wchar {
  uint16_t *data;   /**< `capacity + 1` units, or NULL while nothing is allocated; `data[length]` is 0 */
  int64_t length;   /**< units of content, at most `capacity` */
  int64_t capacity; /**< units of content that fit */
} mub_wchar;

/**
 * Initialises an empty string; nothing is allocated.
 *
 * @param[out] string  the string
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API void mub_wchar_init(mub_wchar *string);

/**
 * Releases the buffer and makes the string empty.
 *
 * @param[in,out] string  the string
 * @owner the buffer is released
 * @invalidates pointers into the buffer
 */
MUB_API void mub_wchar_term(mub_wchar *string);

/**
 * Checks whether the string is empty.
 *
 * @param[in] string  the string
 * @return 1 if the string is empty, else 0
 */
MUB_API int mub_wchar_is_empty(const mub_wchar *string);

/**
 * Makes room for `capacity` units of content.
 *
 * The content is unchanged.
 *
 * @param[in,out] string  the string
 * @param[in] capacity    units of content needed
 * @return 1 if there is room
 * @failure 0 if memory ran out; the string is unchanged
 * @invalidates pointers into the buffer, if it grows
 * @cost O(capacity) if it grows
 */
MUB_API int mub_wchar_expand(mub_wchar *string, int64_t capacity);

/**
 * Sets the length to `length`, or to the capacity if that is less, and writes the terminator.
 *
 * This can also lengthen the content, with the spare units as they are. Does nothing for a negative length,
 * or for a string without a buffer.
 *
 * @param[in,out] string  the string
 * @param[in] length      the new length in units
 * @invalidates nothing
 */
MUB_API void mub_wchar_shrink(mub_wchar *string, int64_t length);

/**
 * Fills a range with 0.
 *
 * Does nothing unless the whole range lies within the capacity. The length is unchanged.
 *
 * @param[in,out] string  the string
 * @param[in] position    the index, counted from 0
 * @param[in] count       the number of units
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_wchar_zero(mub_wchar *string, int64_t position, int64_t count);

/**
 * Swaps two strings, including their buffers.
 *
 * @param[in,out] a  one string
 * @param[in,out] b  the other string
 * @owner the buffer of one string now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_wchar_swap(mub_wchar *a, mub_wchar *b);

/**
 * Copies a string, replacing the content of the destination, whose capacity becomes at least that of the
 * source.
 *
 * @param[in] source           the string to copy; it does not change
 * @param[in,out] destination  an initialised string, whose content is replaced
 * @return 1
 * @failure 0 if memory ran out; the destination is unchanged
 * @owner the units are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(capacity of the source)
 */
MUB_API int mub_wchar_clone(const mub_wchar *source, mub_wchar *destination);

/**
 * Checks whether the string is intact.
 *
 * Checks the length, the capacity and the 0 after the content, which mub_wchar_set_at() can overwrite.
 *
 * @param[in] string  the string
 * @param[out] what   receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the string is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @nullable what
 */
MUB_API int mub_wchar_verify(const mub_wchar *string, const char **what);

/**
 * Returns the size of the heap memory that the string holds.
 *
 * Counts the block, as requested from `malloc`; not the record itself.
 *
 * @param[in] string  the string
 * @return the number of bytes
 * @failure none
 */
MUB_API int64_t mub_wchar_memory_bytes(const mub_wchar *string);

/**
 * Replaces the content with a text.
 *
 * @param[in,out] string  the string
 * @param[in] text        the text, which may lie in the string itself; NULL empties the string
 * @param[in] count       units of the text; negative: as many as the C library's wcslen counts
 * @failure the string is unchanged if memory runs out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API void mub_wchar_copy(mub_wchar *string, const uint16_t *text, int64_t count);

/**
 * Replaces the content with a narrow text.
 *
 * A byte is widened as a signed char: the units of bytes from 0x80 on have the high byte 0xFF.
 *
 * @param[in,out] string  the string
 * @param[in] text        the narrow text; NULL empties the string
 * @param[in] count       bytes of the text; negative: up to its NUL
 * @failure the string is unchanged if memory runs out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API void mub_wchar_copy_str(mub_wchar *string, const char *text, int64_t count);

/**
 * Replaces the content with a single unit; 0 empties the string.
 *
 * @param[in,out] string  the string
 * @param[in] unit        the unit; its low 16 bits are used
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_wchar_copy_char(mub_wchar *string, int unit);

/**
 * Replaces the content with a number in decimal.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_wchar_copy_integer(mub_wchar *string, int64_t value);

/**
 * Replaces the content with a number in decimal.
 *
 * The same as mub_wchar_copy_integer().
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_wchar_copy_long(mub_wchar *string, int64_t value);

/**
 * Replaces the content with a number, formatted with printf's `%%f`.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_wchar_copy_float(mub_wchar *string, float value);

/**
 * Replaces the content with a number, formatted with printf's `%%f`.
 *
 * The longest number takes 317 units.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 */
MUB_API void mub_wchar_copy_double(mub_wchar *string, double value);

/**
 * Appends a text to the content.
 *
 * @param[in,out] string  the string
 * @param[in] text        the text, which may lie in the string itself; NULL appends nothing
 * @param[in] count       units of the text; negative: as many as the C library's wcslen counts
 * @failure the string is unchanged if memory runs out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(count) amortised
 * @bounds text[count]
 * @nullable text
 */
MUB_API void mub_wchar_append(mub_wchar *string, const uint16_t *text, int64_t count);

/**
 * Appends a narrow text, widened as by mub_wchar_copy_str(), to the content.
 *
 * @param[in,out] string  the string
 * @param[in] text        the narrow text; NULL appends nothing
 * @param[in] count       bytes of the text; negative: up to its NUL
 * @failure the string is unchanged if memory runs out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(count) amortised
 * @bounds text[count]
 * @nullable text
 */
MUB_API void mub_wchar_append_str(mub_wchar *string, const char *text, int64_t count);

/**
 * Appends a unit to the content; 0 is appended, too.
 *
 * @param[in,out] string  the string
 * @param[in] unit        the unit; its low 16 bits are used
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_wchar_append_char(mub_wchar *string, int unit);

/**
 * Appends a number in decimal to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_wchar_append_integer(mub_wchar *string, int64_t value);

/**
 * Appends a number in decimal to the content.
 *
 * The same as mub_wchar_append_integer().
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_wchar_append_long(mub_wchar *string, int64_t value);

/**
 * Appends a number, formatted with printf's `%%f`, to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_wchar_append_float(mub_wchar *string, float value);

/**
 * Appends a number, formatted with printf's `%%f`, to the content.
 *
 * @param[in,out] string  the string
 * @param[in] value       the number to write
 * @failure the string is unchanged if memory runs out
 * @invalidates pointers into the buffer
 * @cost O(1) amortised
 */
MUB_API void mub_wchar_append_double(mub_wchar *string, double value);

/**
 * Reads the unit at `index`.
 *
 * Below the capacity, the terminator and the spare units can be read, too.
 *
 * @param[in] string  the string
 * @param[in] index   the index, counted from 0
 * @return the unit
 * @failure 0 unless `0 <= index < capacity`
 */
MUB_API uint16_t mub_wchar_get_at(const mub_wchar *string, int64_t index);

/**
 * Stores a unit at `index` if that lies within the capacity.
 *
 * The length is unchanged.
 *
 * @param[in,out] string  the string
 * @param[in] index       the index, counted from 0
 * @param[in] unit        the unit; its low 16 bits are used
 * @invalidates nothing
 */
MUB_API void mub_wchar_set_at(mub_wchar *string, int64_t index, int unit);

/**
 * Converts every unit of the content up to 255 to lower case, with the C library's tolower.
 *
 * @param[in,out] string  the string
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_wchar_make_lower(mub_wchar *string);

/**
 * Converts every unit of the content up to 255 to upper case, with the C library's toupper.
 *
 * @param[in,out] string  the string
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_wchar_make_upper(mub_wchar *string);

/**
 * Compares the content with a text, as mub_wchar_cmp() does.
 *
 * Content that is not empty is greater than NULL and than a text with a count of 0 (result 1). Empty content
 * equals these and an empty text, and is less than any other text (result -1).
 *
 * @param[in] string  the string
 * @param[in] text    the text to compare with; NULL: a text without content
 * @param[in] count   units of the text; negative: as many as the C library's wcslen counts
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_wchar_compare(const mub_wchar *string, const uint16_t *text, int64_t count);

/**
 * Compares the content with a text without regard to case, as mub_wchar_icmp() does.
 *
 * Content that is not empty is greater than NULL and than a text with a count of 0 (result 1). Empty content
 * equals these and an empty text, and is less than any other text (result -1).
 *
 * @param[in] string  the string
 * @param[in] text    the text to compare with; NULL: a text without content
 * @param[in] count   units of the text; negative: as many as the C library's wcslen counts
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_wchar_icompare(const mub_wchar *string, const uint16_t *text, int64_t count);

/**
 * Finds the first occurrence of a unit.
 *
 * The unit 0 is never found.
 *
 * @param[in] string  the string
 * @param[in] unit    the unit; its low 16 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_wchar_find_char(const mub_wchar *string, int unit);

/**
 * Finds the first occurrence of a unit at or after index `start`.
 *
 * The unit 0 is never found.
 *
 * @param[in] string  the string
 * @param[in] unit    the unit; its low 16 bits are used
 * @param[in] start   the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the content
 * @cost O(length)
 */
MUB_API int64_t mub_wchar_find_char_pos(const mub_wchar *string, int unit, int64_t start);

/**
 * Finds the last occurrence of a unit.
 *
 * The unit 0 is never found.
 *
 * @param[in] string  the string
 * @param[in] unit    the unit; its low 16 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_wchar_reverse_find(const mub_wchar *string, int unit);

/**
 * Finds the first occurrence of a text.
 *
 * With a negative count, an occurrence begins in the content but may extend past it, within the buffer.
 *
 * @param[in] string  the string
 * @param[in] text    the text to find; NULL is not found
 * @param[in] count   units of the text; 0 searches for its first unit, as mub_wchar_str() does; negative: the
 *                    search is that of wcsstr, which finds an empty text at once and stops at the first wide
 *                    character of 0
 * @return its index
 * @failure -1 if there is none, and always in an empty string
 * @cost O(length + count); O(capacity + count) for a negative count
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_wchar_find(const mub_wchar *string, const uint16_t *text, int64_t count);

/**
 * Finds the first occurrence of a text at or after index `start`.
 *
 * With a negative count, an occurrence begins in the content but may extend past it, within the buffer.
 *
 * @param[in] string  the string
 * @param[in] text    the text to find; NULL is not found
 * @param[in] count   units of the text; 0 searches for its first unit, as mub_wchar_str() does; negative: the
 *                    search is that of wcsstr, which finds an empty text at once and stops at the first wide
 *                    character of 0
 * @param[in] start   the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the content
 * @cost O(length + count); O(capacity + count) for a negative count
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_wchar_find_pos(const mub_wchar *string, const uint16_t *text, int64_t count,
                                   int64_t start);

/**
 * Removes white space at both ends of the content, and units of 0 at its end.
 *
 * If the first unit that is not white space is 0, the string is emptied.
 *
 * @param[in,out] string  the string
 * @return 1 if anything was removed, else 0
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int mub_wchar_trim(mub_wchar *string);

/**
 * Replaces every unit `from` of the content with `to`.
 *
 * @param[in,out] string  the string
 * @param[in] from        the unit to replace; its low 16 bits are used
 * @param[in] to          the new unit; its low 16 bits are used
 * @return the number of replacements
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int64_t mub_wchar_replace_char(mub_wchar *string, int from, int to);

/**
 * Replaces every occurrence of a text with another, from left to right.
 *
 * Both texts are measured as by wcslen, and `from` is searched for as by wcsstr. As many units as wcslen
 * counts are replaced, and the search continues after them; it ends at an occurrence that would replace units
 * past the content. The content moves to a new buffer even if there is no occurrence.
 *
 * @param[in,out] string  the string
 * @param[in] from        the text to replace; NULL and the empty text leave the string unchanged
 * @param[in] to          the new text; NULL: occurrences are deleted
 * @return the number of replacements
 * @failure 0 if memory ran out; the string is unchanged
 * @owner `to` is copied, `from` is only read
 * @invalidates pointers into the buffer
 * @cost O(length), of the old and of the new content
 * @nullable from, to
 */
MUB_API int64_t mub_wchar_replace(mub_wchar *string, const uint16_t *from, const uint16_t *to);

/**
 * Inserts a text before `position`.
 *
 * @param[in,out] string  the string
 * @param[in] position    the position to insert before: 0 to the length
 * @param[in] text        the text, which may lie in the string itself; NULL inserts nothing
 * @param[in] count       units of the text; it is not measured if the count is negative
 * @return 1 if inserted
 * @failure 0, and nothing changes, if the position is negative or above the length, the count is below 1,
 *   the text is NULL, or memory ran out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_wchar_insert(mub_wchar *string, int64_t position, const uint16_t *text, int64_t count);

/**
 * Replaces a range with a text.
 *
 * @param[in,out] string  the string
 * @param[in] position    the start of the range: 0 to the length
 * @param[in] old_count   the number of units to replace, limited to those there are
 * @param[in] text        the text, which may lie in the string itself; NULL with a count of 0 deletes the
 *                        range
 * @param[in] count       units of the text; it is not measured if the count is negative
 * @return 1 if replaced
 * @failure 0, and nothing changes, if the position is negative or above the length, a count is negative, the
 *   text is NULL with a count above 0, or memory ran out
 * @owner the text is copied
 * @invalidates pointers into the buffer
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_wchar_update(mub_wchar *string, int64_t position, int64_t old_count, const uint16_t *text,
                             int64_t count);

/**
 * Removes a range.
 *
 * A position above the length becomes the new length, limited to the capacity, as by mub_wchar_shrink(). Does
 * nothing if an argument is negative.
 *
 * @param[in,out] string  the string
 * @param[in] position    the start of the range, counted from 0
 * @param[in] count       the number of units to remove, limited to those there are
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_wchar_delete(mub_wchar *string, int64_t position, int64_t count);

/**
 * Keeps the first `count` units, or as many as there are; a negative count keeps everything.
 *
 * @param[in,out] string  the string
 * @param[in] count       the number of units
 * @invalidates nothing
 */
MUB_API void mub_wchar_left(mub_wchar *string, int64_t count);

/**
 * Keeps `count` units from `start` on, or as many as there are; none if `start` is not below the length or
 * the count is below 1.
 *
 * If `start` is negative, everything is kept.
 *
 * @param[in,out] string  the string
 * @param[in] start       the index at which to begin
 * @param[in] count       the number of units
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_wchar_mid(mub_wchar *string, int64_t start, int64_t count);

/**
 * Keeps the last `count` units, or as many as there are; none if the count is below 1.
 *
 * @param[in,out] string  the string
 * @param[in] count       the number of units
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_wchar_right(mub_wchar *string, int64_t count);

/**
 * Copies the first `count` units of a string, or as many as there are, to another string; none if the count
 * is below 1.
 *
 * @param[in] string   the string
 * @param[in] count    the number of units
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the units are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_wchar_left_wchar(const mub_wchar *string, int64_t count, mub_wchar *out);

/**
 * Copies `count` units from `start` on, or as many as there are, to another string; none if the count is
 * below 1 or `start` lies outside the content.
 *
 * @param[in] string   the string
 * @param[in] start    the index at which to begin
 * @param[in] count    the number of units
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the units are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_wchar_mid_wchar(const mub_wchar *string, int64_t start, int64_t count, mub_wchar *out);

/**
 * Copies the last `count` units of a string, or as many as there are, to another string; none if the count is
 * below 1.
 *
 * @param[in] string   the string
 * @param[in] count    the number of units
 * @param[in,out] out  an initialised string, whose content is replaced; may be `string` itself
 * @return 1
 * @failure 0 if memory ran out; `out` is unchanged
 * @owner the units are copied
 * @invalidates pointers into the buffer of `out`
 * @cost O(count)
 */
MUB_API int mub_wchar_right_wchar(const mub_wchar *string, int64_t count, mub_wchar *out);

/**
 * Finds the first occurrence of a unit in an array of units.
 *
 * The unit 0 can be found.
 *
 * @param[in] units   the units to search
 * @param[in] length  the number of units; below 1 there are none
 * @param[in] unit    the unit; its low 16 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 * @bounds units[length]
 */
MUB_API int64_t mub_wchar_chr(const uint16_t *units, int64_t length, int unit);

/**
 * Finds the last occurrence of a unit in an array of units.
 *
 * The unit 0 can be found.
 *
 * @param[in] units   the units to search
 * @param[in] length  the number of units; below 1 there are none
 * @param[in] unit    the unit; its low 16 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 * @bounds units[length]
 */
MUB_API int64_t mub_wchar_rchr(const uint16_t *units, int64_t length, int unit);

/**
 * Finds the first occurrence of a text in an array of units.
 *
 * @param[in] units          the units to search
 * @param[in] length         the number of units; below 1 there are none
 * @param[in] needle         the units to find, at least one
 * @param[in] needle_length  units of `needle`; below 1: its first unit is searched for
 * @return its index
 * @failure -1 if there is none
 * @cost O(length + needle_length)
 * @bounds units[length], needle[needle_length]
 */
MUB_API int64_t mub_wchar_str(const uint16_t *units, int64_t length, const uint16_t *needle,
                              int64_t needle_length);

/**
 * Compares two arrays of units by value.
 *
 * @param[in] a         the first array
 * @param[in] a_length  units of `a`; below 1 there are none
 * @param[in] b         the second array
 * @param[in] b_length  units of `b`; below 1 there are none
 * @return the difference of the first two units that differ, or else that of the lengths, truncated to 32
 *   bits
 * @cost O(the shorter length)
 * @bounds a[a_length], b[b_length]
 */
MUB_API int mub_wchar_cmp(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length);

/**
 * Compares two arrays of units without regard to case: every unit up to 255 is first converted by the C
 * library's tolower.
 *
 * @param[in] a         the first array
 * @param[in] a_length  units of `a`; below 1 there are none
 * @param[in] b         the second array
 * @param[in] b_length  units of `b`; below 1 there are none
 * @return the difference of the first two units that differ, or else that of the lengths, truncated to 32
 *   bits
 * @cost O(the shorter length)
 * @bounds a[a_length], b[b_length]
 */
MUB_API int mub_wchar_icmp(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
