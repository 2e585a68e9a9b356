/* mub_char.h: a counted view of characters, which parsers narrow field by field without copying.
 *
 *   "  name =  value "
 *             ^~~~~~~       data = the first ^, length = 7; after mub_char_trim data = the v, length = 5
 *
 * A view has no terminator and no capacity. Its bytes belong to whoever made them; only mub_char_copy allocates.
 * A negative length stands for a text that is not measured yet: mub_char_length measures it, every other function
 * takes it as it is and reads nothing. White space is tab, line feed, carriage return and space.
 *
 * Numbers are read with grammars of their own, whatever the locale, and no white space, '+' or exponent:
 *
 *   integer   -? digit+                          decimal   -? digit+ ( '.' digit* )?
 *
 * Parameters, where a function does not say otherwise:
 *   view        the view
 *   text        the text to compare with or to look for; NULL is found nowhere
 *   count       characters of `text`; negative: up to its NUL
 *   length      characters; a negative one does nothing
 *   character   what to look for: its low 8 bits
 *   start       where the search begins, counted from 0 */
#ifndef MUB_CHAR_H
#define MUB_CHAR_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mub_char {
  char *data;     /* the first character; NULL for none; owned only when mub_char_copy filled the view */
  int64_t length; /* characters in the view; negative: not measured yet */
} mub_char;

/* mub_char_init: make an empty view.
 * Returns the view. */
MUB_API mub_char *mub_char_init(mub_char *view);

/* mub_char_term: release (with free) the characters of a view that mub_char_copy filled and no trimming moved, and
 * make it empty. A view of other characters is made empty with mub_char_init.
 * Returns the view. */
MUB_API mub_char *mub_char_term(mub_char *view);

/* mub_char_trim: narrow a view to what stands between leading and trailing white space; NULs at its back go too. No
 * byte is moved or written. A view with a NUL among its leading white space becomes empty, and so does one that is
 * not measured. */
MUB_API void mub_char_trim(mub_char *view);

/* mub_char_shrink: set the length of a view that has data, to anything not negative; there is no upper bound, so
 * the caller vouches for the characters. */
MUB_API void mub_char_shrink(mub_char *view, int64_t length);

/* mub_char_is_empty: whether a view has no data or the length 0. */
MUB_API int mub_char_is_empty(const mub_char *view);

/* mub_char_length: the length of a view; a negative one is first replaced by the length of the NUL-terminated text
 * (0 without data). */
MUB_API int64_t mub_char_length(mub_char *view);

/* mub_char_make_lower: pass every character through the runtime's tolower, in place. */
MUB_API void mub_char_make_lower(mub_char *view);

/* mub_char_make_upper: pass every character through the runtime's toupper, in place. */
MUB_API void mub_char_make_upper(mub_char *view);

/* mub_char_copy: fill an empty view with a copy of `count` characters of `text` and a NUL behind them.
 *   view    a view that has data is left as it is
 *   text    NULL does nothing
 *   count   negative: up to the NUL
 * Out of memory the view stays empty. The copy is released with mub_char_term. */
MUB_API void mub_char_copy(mub_char *view, const char *text, int64_t count);

/* mub_char_is_long: whether the whole view is an integer. */
MUB_API int mub_char_is_long(const mub_char *view);

/* mub_char_get_long: the integer that the view begins with, 0 when there is none. Values wrap around at 64 bits. */
MUB_API int64_t mub_char_get_long(const mub_char *view);

/* mub_char_is_float: whether the whole view is a decimal number. */
MUB_API int mub_char_is_float(const mub_char *view);

/* mub_char_get_float: the decimal number that the view begins with, 0.0 when there is none.
 * A digit before the point makes the value (value * 10.0 + its character code) - 48.0; the k-th digit behind the
 * point adds the digit divided by 10.0 k times over. Both round at every step. */
MUB_API double mub_char_get_float(const mub_char *view);

/* mub_char_compare: order a view against a text as mub_mem_cmp does.
 *   text    NULL and a count of 0 sort before every view that is not empty
 *   count   negative: up to the NUL
 * An empty view sorts before every text that is not NULL and whose count is not 0, -1 included: that of an empty
 * text too. Two that are empty are equal. */
MUB_API int mub_char_compare(const mub_char *view, const char *text, int64_t count);

/* mub_char_icompare: as mub_char_compare, without regard to letter case, as mub_mem_icmp does. */
MUB_API int mub_char_icompare(const mub_char *view, const char *text, int64_t count);

/* mub_char_find_char: the index of the first `character` (its low 8 bits), or -1. 0 is never found. */
MUB_API int64_t mub_char_find_char(const mub_char *view, int character);

/* mub_char_find_char_pos: the same at or behind index `start`; -1 when `start` lies outside the view. */
MUB_API int64_t mub_char_find_char_pos(const mub_char *view, int character, int64_t start);

/* mub_char_reverse_find: the index of the last `character` (its low 8 bits), or -1. 0 is never found. */
MUB_API int64_t mub_char_reverse_find(const mub_char *view, int character);

/* mub_char_find: the index of the first occurrence of a text, or -1.
 *   count   its length; negative: up to the NUL; 0 looks for its first character, be it the NUL, as mub_mem_str does */
MUB_API int64_t mub_char_find(const mub_char *view, const char *text, int64_t count);

/* mub_char_find_pos: the same at or behind index `start`; -1 when `start` lies outside the view. */
MUB_API int64_t mub_char_find_pos(const mub_char *view, const char *text, int64_t count, int64_t start);

#ifdef __cplusplus
}
#endif

#endif
