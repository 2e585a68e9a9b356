/**
 * @defgroup char mub_char: a counted view of characters for parsing without copying
 *
 * A view of characters with a length, which parsers can narrow to a field without copying.
 *
 *     "  name =  value "
 *               ^~~~~~~       data points at the first ^, length = 7; trimmed: at the v, 5
 *
 * A view has no terminator and no capacity. It does not own its characters unless they were allocated by
 * mub_char_copy(). A negative length means that the text has not been measured yet: mub_char_length() and
 * mub_stringx_copy_char() measure it up to its NUL, and no other function reads through such a view. White
 * space is tab, line feed, carriage return and space.
 *
 * Numbers are read with the following grammar, regardless of the locale; white space, '+' and exponents are
 * not accepted:
 *
 *     integer   -? digit+                          decimal   -? digit+ ( '.' digit* )?
 *
 * What the everyday operations return:
 *
 * | operation                                 | found      | not found, or empty | out of memory        |
 * | ----------------------------------------- | ---------- | ------------------- | -------------------- |
 * | `_find…`, mub_char_reverse_find()         | the index  | -1                  |                      |
 * | mub_char_get_long(), mub_char_get_float() | the number | 0, 0.0              |                      |
 * | mub_char_is_long(), mub_char_is_float()   | 1          | 0                   |                      |
 * | mub_char_copy()                           |            |                     | the view is empty    |
 *
 * @{
 */
#ifndef MUB_CHAR_H
#define MUB_CHAR_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A view of characters with a length, which parsers can narrow to a field without copying. */
typedef struct mub_char {
  char *data;     /**< the first character, or NULL; owned only if allocated by mub_char_copy() */
  int64_t length; /**< characters in the view; negative: not measured yet */
} mub_char;

/**
 * Initialises an empty view.
 *
 * @param[out] view  the view
 * @return the view
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API mub_char *mub_char_init(mub_char *view);

/**
 * Releases the characters of a view that mub_char_copy() filled and that has not been trimmed since, and
 * makes the view empty.
 *
 * The characters are released with free. To empty a view of other characters, use mub_char_init().
 *
 * @param[in,out] view  the view
 * @return the view
 * @owner the characters are released
 * @invalidates pointers to the characters
 */
MUB_API mub_char *mub_char_term(mub_char *view);

/**
 * Removes white space from both ends of a view, and NULs from its end.
 *
 * The characters are neither moved nor written. A view whose first character that is not white space is a NUL
 * becomes empty, and so does one with a negative length.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_char_trim(mub_char *view);

/**
 * Sets the length of a view that has data, to any value that is not negative.
 *
 * The length is not checked: the caller must ensure that there are as many characters.
 *
 * @param[in,out] view  the view
 * @param[in] length    the new length; if negative, nothing happens
 * @invalidates nothing
 */
MUB_API void mub_char_shrink(mub_char *view, int64_t length);

/**
 * Checks whether a view has no data or the length 0.
 *
 * @param[in] view  the view
 * @return 1 if it is empty, else 0
 */
MUB_API int mub_char_is_empty(const mub_char *view);

/**
 * Gets the length of a view.
 *
 * A negative length is first replaced by that of the text up to its NUL, or by 0 if there is no data.
 *
 * @param[in,out] view  the view
 * @return the length
 * @invalidates nothing
 * @cost O(1); O(characters) to measure
 */
MUB_API int64_t mub_char_length(mub_char *view);

/**
 * Converts every character to lower case in place, with the C library's tolower.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_char_make_lower(mub_char *view);

/**
 * Converts every character to upper case in place, with the C library's toupper.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_char_make_upper(mub_char *view);

/**
 * Allocates a NUL-terminated copy of a text and makes an empty view refer to it.
 *
 * @param[in,out] view  the view; if it has data, it is unchanged
 * @param[in] text      the text; NULL: nothing happens
 * @param[in] count     characters of the text; negative: up to its NUL
 * @failure the view remains empty if memory runs out
 * @owner the copy belongs to the view; release it with mub_char_term()
 * @invalidates nothing
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API void mub_char_copy(mub_char *view, const char *text, int64_t count);

/**
 * Checks whether the whole view is an integer: an optional '-' and one or more digits.
 *
 * @param[in] view  the view
 * @return 1 if it is, else 0
 * @cost O(length)
 */
MUB_API int mub_char_is_long(const mub_char *view);

/**
 * Reads the integer that the view begins with: an optional '-' and digits, without white space or '+'.
 *
 * The number wraps around at 64 bits.
 *
 * @param[in] view  the view
 * @return the number
 * @failure 0 if there is none
 * @cost O(digits)
 */
MUB_API int64_t mub_char_get_long(const mub_char *view);

/**
 * Checks whether the whole view is a decimal number: an optional '-', one or more digits, and optionally a
 * point, after which there may be more digits.
 *
 * @param[in] view  the view
 * @return 1 if it is, else 0
 * @cost O(length)
 */
MUB_API int mub_char_is_float(const mub_char *view);

/**
 * Reads the decimal number that the view begins with: an optional '-', digits, and optionally a point and
 * more digits.
 *
 * A digit before the point makes the value `(value * 10.0 + character code) - 48.0`; the k-th digit after the
 * point is divided by 10.0 k times, one after the other, and added. Both round at every step.
 *
 * @param[in] view  the view
 * @return the number
 * @failure 0.0 if there is none
 * @cost O(digits)
 */
MUB_API double mub_char_get_float(const mub_char *view);

/**
 * Compares a view with a text, as mub_mem_cmp() does.
 *
 * An empty view equals NULL and a text with a count of 0, and is less than any other text: with a negative
 * count even less than the empty text.
 *
 * @param[in] view   the view
 * @param[in] text   the text; NULL, or a text with a count of 0, is less than any view that is not empty
 * @param[in] count  characters of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_char_compare(const mub_char *view, const char *text, int64_t count);

/**
 * Compares a view with a text without regard to case, as mub_mem_icmp() does.
 *
 * An empty view equals NULL and a text with a count of 0, and is less than any other text: with a negative
 * count even less than the empty text.
 *
 * @param[in] view   the view
 * @param[in] text   the text; NULL, or a text with a count of 0, is less than any view that is not empty
 * @param[in] count  characters of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_char_icompare(const mub_char *view, const char *text, int64_t count);

/**
 * Finds the first occurrence of a character.
 *
 * The character 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the character to find; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_char_find_char(const mub_char *view, int character);

/**
 * Finds the first occurrence of a character at or after index `start`.
 *
 * The character 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the character to find; its low 8 bits are used
 * @param[in] start      the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the view
 * @cost O(length)
 */
MUB_API int64_t mub_char_find_char_pos(const mub_char *view, int character, int64_t start);

/**
 * Finds the last occurrence of a character.
 *
 * The character 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the character to find; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_char_reverse_find(const mub_char *view, int character);

/**
 * Finds the first occurrence of a text.
 *
 * @param[in] view   the view
 * @param[in] text   the text to find; NULL is not found
 * @param[in] count  characters of the text; negative: up to its NUL; if there are none, the first character
 *                   at `text` is searched for, even if that is the NUL, as by mub_mem_str()
 * @return its index
 * @failure -1 if there is none
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_char_find(const mub_char *view, const char *text, int64_t count);

/**
 * Finds the first occurrence of a text at or after index `start`.
 *
 * @param[in] view   the view
 * @param[in] text   the text to find; NULL is not found
 * @param[in] count  characters of the text; negative: up to its NUL; if there are none, the first character
 *                   at `text` is searched for, even if that is the NUL, as by mub_mem_str()
 * @param[in] start  the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the view
 * @cost O(length + count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int64_t mub_char_find_pos(const mub_char *view, const char *text, int64_t count, int64_t start);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
