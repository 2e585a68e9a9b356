/* mub_wchar.h: a growable string of 16-bit units, the wide twin of mub_string.
 *
 *   data ──► [ content ........ | 0 | spare ... ]      capacity + 1 units
 *              0                  length
 *
 * Lengths, positions, capacities and counts are counted in units. What mub_string.h says of its strings holds here:
 * the terminator, growth (by the same constants, in units), aliasing, white space, memory running out.
 *
 * Wide texts are given with a count of units. Pass counts: a negative one means that the text ends where the
 * runtime's wcslen ends it, at a wide character of 0, and wchar_t is platform-dependent. Where it has 32 bits, such a
 * text is measured in steps of two units, ends at two units of 0 (the first of which lies at an even index), and the
 * number of steps is taken for the number of units; searches for it, as by wcsstr, go through the string in steps of
 * two units too. Narrow texts end at their NUL. No text needs to be aligned for more than units.
 *
 * Parameters, where a function does not say otherwise:
 *   string               the string
 *   a, b                 the two strings
 *   capacity, length     units
 *   text                 the text; may lie in the string
 *   count                units, of a narrow text bytes; of a text, negative: up to its end
 *   old_count            units to replace
 *   unit                 its low 16 bits
 *   from, to             the units, of which the low 16 bits count
 *   value                the number to write
 *   position, index      counted from 0
 *   start                where the search, or the part, begins: counted from 0
 *   source               the string to copy; stays as it is
 *   destination          an initialised string, whose content is replaced
 *   out                  an initialised string, whose content is replaced
 *   units                the first of the units to search
 *   needle               at least one unit
 *   needle_length        units of `needle`
 *   a_length, b_length   units at `a` and at `b`; below 1 there are none
 *
 * Failure, where a function does not say otherwise:
 *   memory   without memory the string stays as it was
 *
 * Ownership, where a function does not say otherwise:
 *   _term                      the buffer is released
 *   _swap                      the buffer of one string is the other's
 *   _replace, _match           the texts are copied
 *   text                       copied, or only read: the address is not kept
 *   source, destination, out   the units are copied */
#ifndef MUB_WCHAR_H
#define MUB_WCHAR_H

#include "mub_base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mub_wchar {
  uint16_t *data;   /* capacity + 1 units, or NULL while nothing was ever allocated; data[length] is 0 */
  int64_t length;   /* units of content, at most capacity */
  int64_t capacity; /* units of content that fit */
} mub_wchar;

/* mub_wchar_init: make an empty string; allocates nothing. */
MUB_API void mub_wchar_init(mub_wchar *string);

/* mub_wchar_term: release the buffer and make the string empty. */
MUB_API void mub_wchar_term(mub_wchar *string);

/* mub_wchar_is_empty: whether there is no content. */
MUB_API int mub_wchar_is_empty(const mub_wchar *string);

/* mub_wchar_expand: make room for `capacity` units of content; the content stays.
 * Returns 1; 0 when memory ran out. */
MUB_API int mub_wchar_expand(mub_wchar *string, int64_t capacity);

/* mub_wchar_shrink: set the length to `length`, or to the capacity when that is less, and write the terminator. A
 * length above the current one exposes what lies there. A negative one does nothing, nor does a string without a
 * buffer. */
MUB_API void mub_wchar_shrink(mub_wchar *string, int64_t length);

/* mub_wchar_zero: fill `count` units from `position` with 0, anywhere within the capacity; a range that does not lie
 * in it is left alone. The length stays. */
MUB_API void mub_wchar_zero(mub_wchar *string, int64_t position, int64_t count);

/* mub_wchar_swap: exchange two strings, buffers and all. */
MUB_API void mub_wchar_swap(mub_wchar *a, mub_wchar *b);

/* mub_wchar_clone: make `destination` a copy of `source`, with room for at least the capacity of the source.
 * Returns 1; 0 when memory ran out, the destination unchanged. */
MUB_API int mub_wchar_clone(const mub_wchar *source, mub_wchar *destination);

/* mub_wchar_copy: make `count` units of `text` the whole content; NULL empties the string. */
MUB_API void mub_wchar_copy(mub_wchar *string, const uint16_t *text, int64_t count);

/* mub_wchar_copy_str: make `count` bytes of a narrow text the whole content; NULL empties the string. A byte is
 * widened as a signed char: from 0x80 on, its unit has 0xFF for its high byte. */
MUB_API void mub_wchar_copy_str(mub_wchar *string, const char *text, int64_t count);

/* mub_wchar_copy_char: make the low 16 bits of `unit` the whole content; 0 empties the string. */
MUB_API void mub_wchar_copy_char(mub_wchar *string, int unit);

/* mub_wchar_copy_integer: make the decimal digits of `value` the whole content. */
MUB_API void mub_wchar_copy_integer(mub_wchar *string, int64_t value);

/* mub_wchar_copy_long: the same as mub_wchar_copy_integer. */
MUB_API void mub_wchar_copy_long(mub_wchar *string, int64_t value);

/* mub_wchar_copy_float: make `value`, printed with printf's %f, the whole content. */
MUB_API void mub_wchar_copy_float(mub_wchar *string, float value);

/* mub_wchar_copy_double: the same for a double; the longest takes 317 units. */
MUB_API void mub_wchar_copy_double(mub_wchar *string, double value);

/* mub_wchar_append: put `count` units of `text` behind the content; NULL does nothing. */
MUB_API void mub_wchar_append(mub_wchar *string, const uint16_t *text, int64_t count);

/* mub_wchar_append_str: put `count` bytes of a narrow text, widened as by mub_wchar_copy_str, behind the content;
 * NULL does nothing. */
MUB_API void mub_wchar_append_str(mub_wchar *string, const char *text, int64_t count);

/* mub_wchar_append_char: put the low 16 bits of `unit` behind the content; 0 is appended like any other. */
MUB_API void mub_wchar_append_char(mub_wchar *string, int unit);

/* mub_wchar_append_integer: put the decimal digits of `value` behind the content. */
MUB_API void mub_wchar_append_integer(mub_wchar *string, int64_t value);

/* mub_wchar_append_long: the same as mub_wchar_append_integer. */
MUB_API void mub_wchar_append_long(mub_wchar *string, int64_t value);

/* mub_wchar_append_float: put `value`, printed with printf's %f, behind the content. */
MUB_API void mub_wchar_append_float(mub_wchar *string, float value);

/* mub_wchar_append_double: the same for a double. */
MUB_API void mub_wchar_append_double(mub_wchar *string, double value);

/* mub_wchar_get_at: the unit at `index`; 0 outside the capacity (not the length: the terminator and the units behind
 * it can be read). */
MUB_API uint16_t mub_wchar_get_at(const mub_wchar *string, int64_t index);

/* mub_wchar_set_at: store a unit at `index` when that lies within the capacity; the length stays. */
MUB_API void mub_wchar_set_at(mub_wchar *string, int64_t index, int unit);

/* mub_wchar_make_lower: pass every unit of the content up to 255 through the runtime's tolower. */
MUB_API void mub_wchar_make_lower(mub_wchar *string);

/* mub_wchar_make_upper: pass every unit of the content up to 255 through the runtime's toupper. */
MUB_API void mub_wchar_make_upper(mub_wchar *string);

/* mub_wchar_compare: order the content against a text as mub_wchar_cmp does. NULL and a count of 0 sort before every
 * content (1); empty content sorts before every text that is not empty (-1). */
MUB_API int mub_wchar_compare(const mub_wchar *string, const uint16_t *text, int64_t count);

/* mub_wchar_icompare: as mub_wchar_compare, without regard to letter case, as mub_wchar_icmp does. */
MUB_API int mub_wchar_icompare(const mub_wchar *string, const uint16_t *text, int64_t count);

/* mub_wchar_find_char: the index of the first `unit` (its low 16 bits), or -1. 0 is never found. */
MUB_API int64_t mub_wchar_find_char(const mub_wchar *string, int unit);

/* mub_wchar_find_char_pos: the same at or behind index `start`; -1 when `start` lies outside the content. */
MUB_API int64_t mub_wchar_find_char_pos(const mub_wchar *string, int unit, int64_t start);

/* mub_wchar_reverse_find: the index of the last `unit` (its low 16 bits), or -1. 0 is never found. */
MUB_API int64_t mub_wchar_reverse_find(const mub_wchar *string, int unit);

/* mub_wchar_find: the index of the first occurrence of `text`, or -1, also in an empty string.
 *   count   not negative: as mub_wchar_str; negative: as wcsstr, which finds an empty text at once and ends at the
 *           first wide character of 0; an occurrence begins in the content and ends in the buffer */
MUB_API int64_t mub_wchar_find(const mub_wchar *string, const uint16_t *text, int64_t count);

/* mub_wchar_find_pos: the same at or behind index `start`; -1 when `start` lies outside the content. */
MUB_API int64_t mub_wchar_find_pos(const mub_wchar *string, const uint16_t *text, int64_t count,
                                   int64_t start);

/* mub_wchar_trim: remove white space at both ends of the content, units of 0 at its back too. Content with a unit of
 * 0 among its leading white space is removed whole.
 * Returns 1 when anything was removed, else 0. */
MUB_API int mub_wchar_trim(mub_wchar *string);

/* mub_wchar_replace_char: make every unit `from` of the content a `to` (their low 16 bits).
 * Returns how many there were. */
MUB_API int64_t mub_wchar_replace_char(mub_wchar *string, int from, int to);

/* mub_wchar_replace: replace every occurrence of the text `from`, which wcslen measures and wcsstr finds, by `to`,
 * which wcslen measures; left to right. As many units as wcslen counts are replaced, and the search goes on behind
 * them; one that would replace more than there is ends it. The content moves to a fresh buffer even when there is no
 * occurrence.
 *   from   NULL and the empty text leave the string unchanged
 *   to     NULL deletes
 * Returns how many there were; 0 when memory ran out, the string unchanged. */
MUB_API int64_t mub_wchar_replace(mub_wchar *string, const uint16_t *from, const uint16_t *to);

/* mub_wchar_insert: put `count` units of `text` before `position`.
 *   count   units; a negative one does not measure the text
 * Returns 1; 0, nothing changed, when the position lies outside the content, the count is below 1, the text is NULL or
 * memory ran out. */
MUB_API int mub_wchar_insert(mub_wchar *string, int64_t position, const uint16_t *text, int64_t count);

/* mub_wchar_update: replace `old_count` units at `position`, or as many as there are, by `count` units of `text`.
 *   text    NULL with a count of 0 deletes
 *   count   units; a negative one does not measure the text
 * Returns 1; 0, nothing changed, when the position lies outside the content, a count is negative, the text is NULL with
 * a count above 0, or memory ran out. */
MUB_API int mub_wchar_update(mub_wchar *string, int64_t position, int64_t old_count, const uint16_t *text,
                             int64_t count);

/* mub_wchar_delete: remove `count` units at `position`, or as many as there are.
 * A position behind the content sets the length to it as mub_wchar_shrink does, and so lengthens the content.
 * Negative arguments do nothing. */
MUB_API void mub_wchar_delete(mub_wchar *string, int64_t position, int64_t count);

/* mub_wchar_left: keep the first `count` units; a negative count keeps everything. */
MUB_API void mub_wchar_left(mub_wchar *string, int64_t count);

/* mub_wchar_mid: keep `count` units from `start`, or as many as there are, none when `start` lies behind the content
 * or the count is below 1; a negative start keeps everything. */
MUB_API void mub_wchar_mid(mub_wchar *string, int64_t start, int64_t count);

/* mub_wchar_right: keep the last `count` units, none when the count is below 1. */
MUB_API void mub_wchar_right(mub_wchar *string, int64_t count);

/* mub_wchar_left_wchar: make the first `count` units of a string, or as many as there are, the content of `out`; with
 * a count below 1 none.
 * Returns 1; 0 when memory ran out, `out` unchanged. */
MUB_API int mub_wchar_left_wchar(const mub_wchar *string, int64_t count, mub_wchar *out);

/* mub_wchar_mid_wchar: the same with `count` units from `start`; none when either lies outside the content. */
MUB_API int mub_wchar_mid_wchar(const mub_wchar *string, int64_t start, int64_t count, mub_wchar *out);

/* mub_wchar_right_wchar: the same with the last `count` units. */
MUB_API int mub_wchar_right_wchar(const mub_wchar *string, int64_t count, mub_wchar *out);

/* mub_wchar_chr: the index of the first unit equal to the low 16 bits of `unit`, 0 included, or -1. */
MUB_API int64_t mub_wchar_chr(const uint16_t *units, int64_t length, int unit);

/* mub_wchar_rchr: the index of the last such unit, or -1. */
MUB_API int64_t mub_wchar_rchr(const uint16_t *units, int64_t length, int unit);

/* mub_wchar_str: the index of the first occurrence of `needle`, or -1. A `needle_length` below 1 looks for its first
 * unit. */
MUB_API int64_t mub_wchar_str(const uint16_t *units, int64_t length, const uint16_t *needle,
                              int64_t needle_length);

/* mub_wchar_cmp: order two runs of units by value.
 *   a, b   the first units of the runs
 * Returns the difference of the first two that are unequal, else that of the lengths cut to 32 bits. */
MUB_API int mub_wchar_cmp(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length);

/* mub_wchar_icmp: the same with every unit up to 255 passed through the runtime's tolower. */
MUB_API int mub_wchar_icmp(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length);

#ifdef __cplusplus
}
#endif

#endif
