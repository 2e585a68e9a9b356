/* mub_string.h: a growable string of bytes, and a view that moves over a text without copying it.
 *
 *   data ──► [ content ........ | 0 | spare ... ]      capacity + 1 bytes
 *              0                  length
 *
 * The content is followed by a NUL, so that `data` can be handed to whatever takes a NUL-terminated text; its length
 * is kept beside it, so that the content may hold NULs. A string whose `data` is NULL is empty, and every function
 * accepts it.
 *
 * Texts are given with a count of bytes; a negative one means that the text ends at its NUL. A text may lie in the
 * string that it goes into. Whatever makes a string grow invalidates pointers into it. Growth is by half the length,
 * at least 8 bytes and at most 8 MiB, and rounded up so that the block, terminator included, is a multiple of 8;
 * appending is O(1) amortised. Past 2^31 - 1 bytes a buffer takes what is asked for and no more: expand such a string
 * first, or every few appends copy it. Functions that return nothing leave the string as it was when memory runs out.
 *
 * White space is tab, line feed, carriage return and space.
 *
 * Parameters, where a function does not say otherwise:
 *   string            the string
 *   view              the view
 *   a, b              the two strings, or the two views
 *   capacity          bytes
 *   length            bytes
 *   text              the text; may lie in the string
 *   count             bytes; of a text, negative: up to its NUL
 *   old_count         bytes to replace
 *   character         its low 8 bits
 *   from, to          the bytes, of which the low 8 bits count
 *   value             the number to write
 *   position, index   counted from 0
 *   start             where the search, or the part, begins: counted from 0
 *   offset            bytes from the start of the span
 *   source            the string to copy; stays as it is
 *   destination       an initialised string, whose content is replaced
 *   other             the view to take over
 *   out               an initialised string or view, whose content is replaced
 *
 * Failure, where a function does not say otherwise:
 *   memory   without memory the string stays as it was
 *
 * Ownership, where a function does not say otherwise:
 *   _term                      the buffer is released
 *   _swap                      the buffer of one string is the other's
 *   _replace, _match           the texts are copied
 *   text                       copied, or only read: the address is not kept
 *   source, destination, out   the bytes are copied */
#ifndef MUB_STRING_H
#define MUB_STRING_H

#include "mub_base.h"
#include "mub_char.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mub_string {
  char *data;       /* capacity + 1 bytes, or NULL while nothing was ever allocated; data[length] is 0 */
  int64_t length;   /* bytes of content, at most capacity */
  int64_t capacity; /* bytes of content that fit */
} mub_string;

/* mub_string_init: make an empty string; allocates nothing. */
MUB_API void mub_string_init(mub_string *string);

/* mub_string_term: release the buffer and make the string empty. */
MUB_API void mub_string_term(mub_string *string);

/* mub_string_is_empty: whether there is no content. */
MUB_API int mub_string_is_empty(const mub_string *string);

/* mub_string_expand: make room for `capacity` bytes of content; the content stays.
 * Returns 1; 0 when memory ran out. */
MUB_API int mub_string_expand(mub_string *string, int64_t capacity);

/* mub_string_shrink: set the length to `length`, or to the capacity when that is less, and write the terminator. A
 * length above the current one exposes what lies there. A negative one does nothing, nor does a string without a
 * buffer. */
MUB_API void mub_string_shrink(mub_string *string, int64_t length);

/* mub_string_zero: fill `count` bytes from `position` with 0, anywhere within the capacity; a range that does not
 * lie in it is left alone. The length stays. */
MUB_API void mub_string_zero(mub_string *string, int64_t position, int64_t count);

/* mub_string_swap: exchange two strings, buffers and all. */
MUB_API void mub_string_swap(mub_string *a, mub_string *b);

/* mub_string_clone: make `destination` a copy of `source`, with room for at least the capacity of the source.
 * Returns 1; 0 when memory ran out, the destination unchanged. */
MUB_API int mub_string_clone(const mub_string *source, mub_string *destination);

/* mub_string_copy: make `count` bytes of `text` the whole content; NULL empties the string.
 * Returns 1; 0 when memory ran out, the string unchanged. */
MUB_API int mub_string_copy(mub_string *string, const char *text, int64_t count);

/* mub_string_copy_char: make the low 8 bits of `character` the whole content; 0 empties the string. */
MUB_API void mub_string_copy_char(mub_string *string, int character);

/* mub_string_copy_integer: make the decimal digits of `value` the whole content. */
MUB_API void mub_string_copy_integer(mub_string *string, int64_t value);

/* mub_string_copy_long: the same as mub_string_copy_integer. */
MUB_API void mub_string_copy_long(mub_string *string, int64_t value);

/* mub_string_copy_float: make `value`, printed with printf's %f, the whole content. */
MUB_API void mub_string_copy_float(mub_string *string, float value);

/* mub_string_copy_double: the same for a double; the longest takes 317 bytes. */
MUB_API void mub_string_copy_double(mub_string *string, double value);

/* mub_string_append: put `count` bytes of `text` behind the content; NULL does nothing. */
MUB_API void mub_string_append(mub_string *string, const char *text, int64_t count);

/* mub_string_append_char: put the low 8 bits of `character` behind the content; 0 is appended like any other. */
MUB_API void mub_string_append_char(mub_string *string, int character);

/* mub_string_append_integer: put the decimal digits of `value` behind the content. */
MUB_API void mub_string_append_integer(mub_string *string, int64_t value);

/* mub_string_append_long: the same as mub_string_append_integer. */
MUB_API void mub_string_append_long(mub_string *string, int64_t value);

/* mub_string_append_float: put `value`, printed with printf's %f, behind the content. */
MUB_API void mub_string_append_float(mub_string *string, float value);

/* mub_string_append_double: the same for a double. */
MUB_API void mub_string_append_double(mub_string *string, double value);

/* mub_string_get_integer: the content read by strtol in base 10 and cut to 32 bits.
 *   otherwise   the result for an empty string */
MUB_API int64_t mub_string_get_integer(const mub_string *string, int64_t otherwise);

/* mub_string_get_long: the integer that the content begins with: an optional '-' and digits, no white space and no
 * '+'. It wraps around at 64 bits; 0 when there are no digits.
 *   otherwise   the result for an empty string */
MUB_API int64_t mub_string_get_long(const mub_string *string, int64_t otherwise);

/* mub_string_get_float: the content read by strtod, narrowed.
 *   otherwise   the result for an empty string */
MUB_API float mub_string_get_float(const mub_string *string, float otherwise);

/* mub_string_get_double: the decimal number that the content begins with: an optional '-', digits, and optionally a
 * point and more digits; no white space, '+' or exponent, and no locale. 0.0 when it begins with none.
 * A digit before the point makes the value value * 10.0 + (its character code - 48.0); the k-th digit behind the
 * point adds the digit divided by 10.0 k times over. Both round at every step.
 *   otherwise   the result for an empty string */
MUB_API double mub_string_get_double(const mub_string *string, double otherwise);

/* mub_string_get_at: the byte at `index`, as a signed char; -1 outside the capacity (not the length: the terminator
 * and the bytes behind it can be read). */
MUB_API int mub_string_get_at(const mub_string *string, int64_t index);

/* mub_string_set_at: store a byte at `index` when that lies within the capacity; the length stays. */
MUB_API void mub_string_set_at(mub_string *string, int64_t index, int character);

/* mub_string_make_lower: pass every byte of the content through the runtime's tolower. */
MUB_API void mub_string_make_lower(mub_string *string);

/* mub_string_make_upper: pass every byte of the content through the runtime's toupper. */
MUB_API void mub_string_make_upper(mub_string *string);

/* mub_string_compare: order the content against a text as mub_mem_cmp does. NULL and a count of 0 sort before every
 * content (1); empty content sorts before every text that is not empty (-1). */
MUB_API int mub_string_compare(const mub_string *string, const char *text, int64_t count);

/* mub_string_icompare: as mub_string_compare, without regard to letter case, as mub_mem_icmp does. */
MUB_API int mub_string_icompare(const mub_string *string, const char *text, int64_t count);

/* mub_string_find_char: the index of the first `character` (its low 8 bits), or -1. 0 is never found. */
MUB_API int64_t mub_string_find_char(const mub_string *string, int character);

/* mub_string_find_char_pos: the same at or behind index `start`; -1 when `start` lies outside the content. */
MUB_API int64_t mub_string_find_char_pos(const mub_string *string, int character, int64_t start);

/* mub_string_reverse_find: the index of the last `character` (its low 8 bits), or -1. 0 is never found. */
MUB_API int64_t mub_string_reverse_find(const mub_string *string, int character);

/* mub_string_find: the index of the first occurrence of `text`, or -1, also in an empty string.
 *   count   not negative: as mub_mem_str, so that 0 looks for the first byte of the text;
 *           negative: as strstr, so that an empty text is found at once and the search ends at the first NUL */
MUB_API int64_t mub_string_find(const mub_string *string, const char *text, int64_t count);

/* mub_string_find_pos: the same at or behind index `start`; -1 when `start` lies outside the content. */
MUB_API int64_t mub_string_find_pos(const mub_string *string, const char *text, int64_t count, int64_t start);

/* mub_string_trim: remove white space at both ends of the content, NULs at its back too. Content with a NUL among
 * its leading white space is removed whole.
 * Returns 1 when anything was removed, else 0. */
MUB_API int mub_string_trim(mub_string *string);

/* mub_string_replace_char: make every byte `from` of the content a `to` (their low 8 bits).
 * Returns how many there were. */
MUB_API int64_t mub_string_replace_char(mub_string *string, int from, int to);

/* mub_string_replace: replace every occurrence of the NUL-terminated text `from` by `to`, left to right; occurrences
 * do not overlap, and the search ends at the first NUL of the content. The content moves to a fresh buffer even when
 * there is none.
 *   from   NULL and the empty text leave the string unchanged
 *   to     NULL deletes
 * Returns how many there were; 0 when memory ran out, the string unchanged. */
MUB_API int64_t mub_string_replace(mub_string *string, const char *from, const char *to);

/* mub_string_match: replace the first occurrence of the NUL-terminated text `marker` by the first of the texts that
 * follow, the second by the second, and so on, until either run out; otherwise as mub_string_replace.
 *   marker   NULL and the empty text leave the string unchanged
 *   ...      const char *: NUL-terminated texts, and a null pointer behind the last; they may hold the marker and may
 *            lie in the string
 * Out of memory the string stays unchanged. */
MUB_API void mub_string_match(mub_string *string, const char *marker, ...);

/* mub_string_format: make what printf prints the whole content; the content moves to a fresh buffer.
 *   format   empty: empties the string
 *   ...      as printf takes them; texts among them may lie in the string
 * The buffer is made for the length of the format, that of each text given to a plain `%s`, and 32 for each other
 * percent sign but one at the very end, and grown once more when the print is longer: so long texts given to
 * conversions with a width, flags or a precision are printed twice. NULL and texts behind a positional or unknown
 * conversion count as 32 too.
 * The string stays unchanged when memory runs out or printf fails. */
MUB_API void mub_string_format(mub_string *string, const char *format, ...) MUB_PRINTF(2, 3);

/* mub_string_insert: put `count` bytes of `text` before `position`.
 * Returns 1; 0, nothing changed, when the position lies outside the content, there is nothing to insert or memory ran
 * out. */
MUB_API int mub_string_insert(mub_string *string, int64_t position, const char *text, int64_t count);

/* mub_string_update: replace `old_count` bytes at `position`, or as many as there are, by `count` bytes of `text`.
 *   text   NULL with a count of 0 deletes
 * Returns 1; 0, nothing changed, when the position lies outside the content, `old_count` is negative, the text is NULL
 * with another count than 0, or memory ran out. */
MUB_API int mub_string_update(mub_string *string, int64_t position, int64_t old_count, const char *text,
                              int64_t count);

/* mub_string_delete: remove `count` bytes at `position`, or as many as there are.
 * A position behind the content sets the length to it as mub_string_shrink does, and so lengthens the content.
 * Negative arguments do nothing. */
MUB_API void mub_string_delete(mub_string *string, int64_t position, int64_t count);

/* mub_string_left: keep the first `count` bytes; a negative count keeps everything. */
MUB_API void mub_string_left(mub_string *string, int64_t count);

/* mub_string_mid: keep `count` bytes from `start`, or as many as there are, none when `start` lies behind the
 * content or the count is below 1; a negative start keeps everything. */
MUB_API void mub_string_mid(mub_string *string, int64_t start, int64_t count);

/* mub_string_right: keep the last `count` bytes, none when the count is below 1. */
MUB_API void mub_string_right(mub_string *string, int64_t count);

/* mub_string_left_string: make the first `count` bytes of a string, or as many as there are, the content of `out`;
 * with a count below 1 none.
 * Returns 1; 0 when memory ran out, `out` unchanged. */
MUB_API int mub_string_left_string(const mub_string *string, int64_t count, mub_string *out);

/* mub_string_mid_string: the same with `count` bytes from `start`; none when either lies outside the content. */
MUB_API int mub_string_mid_string(const mub_string *string, int64_t start, int64_t count, mub_string *out);

/* mub_string_right_string: the same with the last `count` bytes. */
MUB_API int mub_string_right_string(const mub_string *string, int64_t count, mub_string *out);

/* ---- mub_stringx: a view of a span of a text that is owned elsewhere -----------------------------------------
 *
 * A mub_stringx is a span of a text that somebody else owns. Its operations move the span and never the text, which
 * they neither write nor terminate; nothing is allocated.
 *
 *   text ──► "  name =  value "
 *                       ^~~~~        start = 10, length = 5
 *
 * Positions count from the start of the span. A view of a string holds as long as the string's buffer stays where it
 * is. Whatever numbers a view is given, nothing is read of a span whose length is not above 0.
 *
 * Ownership, where a function does not say otherwise:
 *   _term, _swap               the texts stay their owners'
 *   _left_char, _mid_char, _right_char   the text stays its owner's; `out` refers to it, and what `out` had is not
 *                                        released
 *   text                       only read: its address is not kept
 *   other                      the text stays its owner's; the view refers to it
 *   string                     the text stays the string's; the view refers to it
 *   out                        the text stays its owner's; `out` refers to it */

typedef struct mub_stringx {
  const char *text; /* what is viewed, never owned; NULL for an empty view */
  int64_t start;    /* where the span begins */
  int64_t length;   /* bytes in the span */
} mub_stringx;

/* mub_stringx_init: make an empty view. */
MUB_API void mub_stringx_init(mub_stringx *view);

/* mub_stringx_term: the same as mub_stringx_init; nothing is released. */
MUB_API void mub_stringx_term(mub_stringx *view);

/* mub_stringx_is_empty: whether a view has no text or the length 0. */
MUB_API int mub_stringx_is_empty(const mub_stringx *view);

/* mub_stringx_shrink: make the span empty, at the start of the text. */
MUB_API void mub_stringx_shrink(mub_stringx *view);

/* mub_stringx_copy: view what `other` views. */
MUB_API void mub_stringx_copy(mub_stringx *view, const mub_stringx *other);

/* mub_stringx_copy_string: view the content of a string. */
MUB_API void mub_stringx_copy_string(mub_stringx *view, const mub_string *string);

/* mub_stringx_copy_char: view the characters of a view; those of one with a negative length reach to the NUL. */
MUB_API void mub_stringx_copy_char(mub_stringx *view, const mub_char *other);

/* mub_stringx_swap: exchange two views. */
MUB_API void mub_stringx_swap(mub_stringx *a, mub_stringx *b);

/* mub_stringx_get_at: the byte at `index` of the span, as a signed char; -1 outside the span. */
MUB_API int mub_stringx_get_at(const mub_stringx *view, int64_t index);

/* mub_stringx_compare: order the span against a text, as mub_string_compare does. */
MUB_API int mub_stringx_compare(const mub_stringx *view, const char *text, int64_t count);

/* mub_stringx_icompare: the same without regard to letter case. */
MUB_API int mub_stringx_icompare(const mub_stringx *view, const char *text, int64_t count);

/* mub_stringx_find_char: the index of the first `character` (its low 8 bits), or -1. 0 is never found. */
MUB_API int64_t mub_stringx_find_char(const mub_stringx *view, int character);

/* mub_stringx_find_char_pos: the same at or behind index `start`; -1 when `start` lies outside the span. */
MUB_API int64_t mub_stringx_find_char_pos(const mub_stringx *view, int character, int64_t start);

/* mub_stringx_reverse_find: the index of the last `character` (its low 8 bits), or -1. 0 is never found. */
MUB_API int64_t mub_stringx_reverse_find(const mub_stringx *view, int character);

/* mub_stringx_find: the index of the first occurrence of a text, or -1. As in mub_mem_str, NULs are bytes like any
 * other. */
MUB_API int64_t mub_stringx_find(const mub_stringx *view, const char *text, int64_t count);

/* mub_stringx_find_pos: the same at or behind index `start`; -1 when `start` lies outside the span. */
MUB_API int64_t mub_stringx_find_pos(const mub_stringx *view, const char *text, int64_t count, int64_t start);

/* mub_stringx_is_long: whether the whole span is an integer: an optional '-' and one or more digits. */
MUB_API int mub_stringx_is_long(const mub_stringx *view);

/* mub_stringx_get_long: the integer that the span begins with, as mub_string_get_long reads it; 0 without one. */
MUB_API int64_t mub_stringx_get_long(const mub_stringx *view);

/* mub_stringx_is_float: whether the whole span is a decimal number: an optional '-', one or more digits, and
 * optionally a point and more digits or none. */
MUB_API int mub_stringx_is_float(const mub_stringx *view);

/* mub_stringx_get_float: the decimal number that the span begins with, as mub_string_get_double reads it; 0.0 without
 * one. */
MUB_API double mub_stringx_get_float(const mub_stringx *view);

/* mub_stringx_trim: narrow the span to what stands between white space, and between NULs at its back. A span with a
 * NUL among its leading white space becomes empty; one that becomes empty keeps its start.
 * Returns 1 when the span changed or is empty, else 0; without a text, too. */
MUB_API int mub_stringx_trim(mub_stringx *view);

/* mub_stringx_left: keep the first `count` bytes of the span; a longer one, which is not empty, gets a negative
 * `count` for its length, and is then not read any more. */
MUB_API void mub_stringx_left(mub_stringx *view, int64_t count);

/* mub_stringx_mid: move the start by `offset`, and keep `count` bytes from there, or as many as there are, none when
 * the count is below 1. A negative offset does nothing, nor does any on an empty span. */
MUB_API void mub_stringx_mid(mub_stringx *view, int64_t offset, int64_t count);

/* mub_stringx_right: keep the last `count` bytes of the span. A count below 1 keeps none, and moves the start to
 * where `count` bytes before the end lie: its end or behind it. */
MUB_API void mub_stringx_right(mub_stringx *view, int64_t count);

/* mub_stringx_left_string: make `out`, a view of the same text, view the first `count` bytes of the span, or as many
 * as there are. A view of another text stays as it is, unless there is nothing to view: then the start of `view` is
 * stored and the length 0, whatever the text. */
MUB_API void mub_stringx_left_string(const mub_stringx *view, int64_t count, mub_stringx *out);

/* mub_stringx_mid_string: the same for `count` bytes from `offset`, which also moves the start that is stored. */
MUB_API void mub_stringx_mid_string(const mub_stringx *view, int64_t offset, int64_t count, mub_stringx *out);

/* mub_stringx_right_string: the same for the last `count` bytes. */
MUB_API void mub_stringx_right_string(const mub_stringx *view, int64_t count, mub_stringx *out);

/* mub_stringx_left_char: make `out` view the first `count` bytes of the span, or as many as there are. What `out` had
 * is not released. Without a text its data is NULL; otherwise it lies in the text even where the length is 0.
 *   out   receives the view */
MUB_API void mub_stringx_left_char(const mub_stringx *view, int64_t count, mub_char *out);

/* mub_stringx_mid_char: the same for `count` bytes from `offset`; nothing bounds the data where the length is 0. */
MUB_API void mub_stringx_mid_char(const mub_stringx *view, int64_t offset, int64_t count, mub_char *out);

/* mub_stringx_right_char: the same for the last `count` bytes; with a count below 1 the data is the span's start. */
MUB_API void mub_stringx_right_char(const mub_stringx *view, int64_t count, mub_char *out);

#ifdef __cplusplus
}
#endif

#endif
