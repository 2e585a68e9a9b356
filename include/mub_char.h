/**
 * @defgroup char mub_char: a counted view of characters that parsers narrow without copying
 *
 * A counted view of characters, which parsers narrow field by field without copying.
 *
 *     "  name =  value "
 *               ^~~~~~~       data = the first ^, length = 7; after mub_char_trim data = the v, length = 5
 *
 * A view has no terminator and no capacity. Its bytes belong to whoever made them; only mub_char_copy()
 * allocates. A negative length stands for a text that is not measured yet: mub_char_length() and
 * mub_stringx_copy_char() measure it, and every other function reads nothing through such a view. White space
 * is tab, line feed, carriage return and space.
 *
 * Numbers are read with grammars of their own, whatever the locale, and without white space, '+' or exponent:
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
 * | mub_char_copy()                           |            |                     | the view stays empty |
 *
 * @{
 */
#ifndef MUB_CHAR_H
#define MUB_CHAR_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A counted view of characters, which parsers narrow field by field without copying. */
typedef struct mub_char {
  char *data;     /**< the first character; NULL for none; owned only if mub_char_copy() filled the view */
  int64_t length; /**< characters in the view; negative: not measured yet */
} mub_char;

/**
 * Makes an empty view.
 *
 * @param[out] view  the view
 * @return the view
 * @owner the record is the caller's
 * @invalidates nothing
 */
MUB_API mub_char *mub_char_init(mub_char *view);

/**
 * Releases the characters, with free, of a view that mub_char_copy() filled and no trimming moved, and makes
 * it empty.
 *
 * Empty a view of other characters with mub_char_init().
 *
 * @param[in,out] view  the view
 * @return the view
 * @owner the characters are released
 * @invalidates pointers to the characters
 */
MUB_API mub_char *mub_char_term(mub_char *view);

/**
 * Narrows a view by the white space at both ends, and by NULs at its end.
 *
 * No byte is moved or written. A view with a NUL among its leading white space becomes empty, and so does one
 * that is not measured.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_char_trim(mub_char *view);

/**
 * Sets the length of a view that has data, to anything that is not negative.
 *
 * There is no upper bound: the caller is responsible for the characters.
 *
 * @param[in,out] view  the view
 * @param[in] length    characters; a negative length does nothing
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
 * A negative length is first replaced by the length of the text up to its NUL, or by 0 without data.
 *
 * @param[in,out] view  the view
 * @return the length
 * @invalidates nothing
 * @cost O(1); O(characters) to measure
 */
MUB_API int64_t mub_char_length(mub_char *view);

/**
 * Passes every character through the runtime's tolower, in place.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_char_make_lower(mub_char *view);

/**
 * Passes every character through the runtime's toupper, in place.
 *
 * @param[in,out] view  the view
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API void mub_char_make_upper(mub_char *view);

/**
 * Fills an empty view with a copy of a text and a NUL after it.
 *
 * @param[in,out] view  a view that has data is unchanged
 * @param[in] text      the text; NULL does nothing
 * @param[in] count     characters of the text; negative: up to its NUL
 * @failure the view stays empty if memory runs out
 * @owner the copy is the view's; release it with mub_char_term()
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
 * point and more digits or none.
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
 * point adds the digit divided by 10.0 k times in turn. Both round at every step.
 *
 * @param[in] view  the view
 * @return the number
 * @failure 0.0 if there is none
 * @cost O(digits)
 */
MUB_API double mub_char_get_float(const mub_char *view);

/**
 * Orders a view against a text as mub_mem_cmp() does.
 *
 * An empty view equals NULL and a count of 0, and sorts before every other text: with a negative count even
 * before the empty text.
 *
 * @param[in] view   the view
 * @param[in] text   the text; NULL and a count of 0 sort before every view that is not empty
 * @param[in] count  characters of the text; negative: up to its NUL
 * @return a negative number, 0 or a positive one
 * @cost O(count)
 * @bounds text[count]
 * @nullable text
 */
MUB_API int mub_char_compare(const mub_char *view, const char *text, int64_t count);

/**
 * Orders a view against a text as mub_mem_icmp() does, without regard to case.
 *
 * An empty view equals NULL and a count of 0, and sorts before every other text: with a negative count even
 * before the empty text.
 *
 * @param[in] view   the view
 * @param[in] text   the text; NULL and a count of 0 sort before every view that is not empty
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
 * 0 is never found.
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
 * 0 is never found.
 *
 * @param[in] view       the view
 * @param[in] character  the character to find; its low 8 bits are used
 * @param[in] start      where to begin, counted from 0
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the view
 * @cost O(length)
 */
MUB_API int64_t mub_char_find_char_pos(const mub_char *view, int character, int64_t start);

/**
 * Finds the last occurrence of a character.
 *
 * 0 is never found.
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
 * @param[in] count  characters of the text; negative: up to its NUL; for an empty text its first character
 *                   is searched for, even if that is the NUL, as by mub_mem_str()
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
 * @param[in] count  characters of the text; negative: up to its NUL; for an empty text its first character
 *                   is searched for, even if that is the NUL, as by mub_mem_str()
 * @param[in] start  where to begin, counted from 0
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
