/* mub_stream.h: a growable byte buffer, with a cursor for little-endian fields, framed blocks, packed integers and
 * checksums.
 *
 *   data ──► [ content ................ | spare ........... ]
 *              0                  length            capacity
 *
 * Growth:    operations that say "grows" enlarge the block to what they need, or by half the length if that is more
 *            (at least 8, at most 8 MiB at a time, and not past 2 GiB), rounded up to a multiple of 8. Growth moves
 *            the block: every pointer into it is then invalid, while positions stay good. Nothing ever shrinks the
 *            block but mub_stream_term.
 * Spare:     bytes behind the length are 0 in a fresh block and keep their old content when the length is cut.
 *            Indexes are bounded by the capacity, the cursor by the length.
 * Cursor:    a position that the caller keeps and whose address each operation takes. A field that does not lie
 *            wholly inside the content reads as 0, and is not written at all; unless said otherwise the position
 *            moves on in both cases, so that position > length tells a reader that the data was cut short. Writers
 *            size the stream first (mub_stream_expand, mub_stream_shrink): writing never grows it. Bytes at a
 *            negative position read as 0 and cannot be written.
 * Order:     fields are little-endian whatever the machine.
 *
 * A stream and a mub_string can exchange their blocks: both keep room for a terminator behind the capacity.
 *
 * Parameters, where a function does not say otherwise:
 *   stream        the stream
 *   a, b          the two streams
 *   position      the cursor. in: where to read or write; out: behind that
 *   value         the number to write or to measure
 *   bytes         the first of the bytes
 *   count         bytes; below 1 there are none
 *   byte          its low 8 bits
 *   index         counted from 0
 *   start         where the search, or the part, begins: counted from 0
 *   n             bytes
 *   size          bytes
 *   length        bytes
 *   source        the stream to copy from; stays as it is
 *   string        an initialised string
 *   destination   an initialised stream or string, whose content is replaced
 *
 * Failure, where a function does not say otherwise:
 *   memory   without memory the stream stays as it was
 *
 * Ownership, where a function does not say otherwise:
 *   _term                      the block is released
 *   _swap                      the block of one stream is the other's
 *   _swap_string               the block of the stream is the string's, and the other way round
 *   bytes                      copied, or only read: the address is not kept
 *   string, source, destination   the bytes are copied */
#ifndef MUB_STREAM_H
#define MUB_STREAM_H

#include "mub_base.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mub_stream {
  uint8_t *data;    /* the block, from malloc; NULL until something is stored */
  int64_t length;   /* bytes of content */
  int64_t capacity; /* bytes of content that fit the block; 0 without one */
} mub_stream;

/* mub_stream_init: make the record an empty stream; nothing is allocated.
 *   stream   its old content is not looked at */
MUB_API void mub_stream_init(mub_stream *stream);

/* mub_stream_term: release the block and leave an empty stream, ready for use again. */
MUB_API void mub_stream_term(mub_stream *stream);

/* mub_stream_is_empty: 1 when there is no content, else 0. */
MUB_API int mub_stream_is_empty(const mub_stream *stream);

/* mub_stream_zero: clear `count` bytes from `offset` on.
 *   offset, count   the range; does nothing unless it lies within the capacity (not the length) */
MUB_API void mub_stream_zero(mub_stream *stream, int64_t offset, int64_t count);

/* mub_stream_expand: grow to a capacity of at least `size` bytes; the length stays.
 * Returns 1, at once when the capacity suffices; 0 when memory ran out. */
MUB_API int mub_stream_expand(mub_stream *stream, int64_t size);

/* mub_stream_shrink: set the length to `length`, or to the capacity if that is less. This also lengthens; the bytes
 * that then belong to the content are the spare ones. A negative length, or a stream without a block, is left. */
MUB_API void mub_stream_shrink(mub_stream *stream, int64_t length);

/* mub_stream_swap: exchange two streams, blocks included. */
MUB_API void mub_stream_swap(mub_stream *a, mub_stream *b);

/* mub_stream_swap_string: exchange a stream and a string, blocks included. No terminator is added: the string ends
 * where the stream's next byte is 0. */
MUB_API void mub_stream_swap_string(mub_stream *stream, mub_string *string);

/* mub_stream_clone: copy `source` over `destination`, which grows to at least the capacity of `source`.
 *   destination   initialised; left as it is when memory runs out; its spare bytes are not cleared */
MUB_API void mub_stream_clone(const mub_stream *source, mub_stream *destination);

/* mub_stream_clone_string: copy `source` into a string, which grows to at least the capacity of `source`.
 *   destination   initialised anew here: what it held is not released
 * Returns 1; 0 when memory ran out, the string then being empty. */
MUB_API int mub_stream_clone_string(const mub_stream *source, mub_string *destination);

/* mub_stream_copy: make `bytes` the whole content; grows.
 *   bytes   NULL empties the stream
 *   count   bytes, or negative: up to the first NUL */
MUB_API void mub_stream_copy(mub_stream *stream, const void *bytes, int64_t count);

/* mub_stream_append: add `bytes` behind the content; grows.
 *   bytes   NULL adds nothing
 *   count   bytes, or negative: up to the first NUL
 * Cost: amortised constant per byte. */
MUB_API void mub_stream_append(mub_stream *stream, const void *bytes, int64_t count);

/* mub_stream_get_at: the byte at `index`; 0 outside the capacity. Spare bytes can be read too. */
MUB_API uint8_t mub_stream_get_at(const mub_stream *stream, int64_t index);

/* mub_stream_set_at: store the low 8 bits of `byte` at `index`, if that is within the capacity; the length stays. */
MUB_API void mub_stream_set_at(mub_stream *stream, int64_t index, int byte);

/* mub_stream_get_byte: read 8 bits at the cursor.
 * Returns the field as an unsigned number; 0 when it does not lie wholly inside the content. */
MUB_API uint8_t mub_stream_get_byte(const mub_stream *stream, int64_t *position);

/* mub_stream_get_word: read 16 bits at the cursor.
 * Returns the field as an unsigned number; 0 when it does not lie wholly inside the content. */
MUB_API uint16_t mub_stream_get_word(const mub_stream *stream, int64_t *position);

/* mub_stream_get_tword: read 24 bits at the cursor.
 * Returns the field as an unsigned number; 0 when it does not lie wholly inside the content. */
MUB_API uint32_t mub_stream_get_tword(const mub_stream *stream, int64_t *position);

/* mub_stream_get_dword: read 32 bits at the cursor.
 * Returns the field as an unsigned number; 0 when it does not lie wholly inside the content. */
MUB_API uint32_t mub_stream_get_dword(const mub_stream *stream, int64_t *position);

/* mub_stream_get_xword: read 48 bits at the cursor.
 * Returns the field as an unsigned number; 0 when it does not lie wholly inside the content. */
MUB_API uint64_t mub_stream_get_xword(const mub_stream *stream, int64_t *position);

/* mub_stream_get_lword: read 64 bits at the cursor.
 * Returns the field as a signed number; 0 when it does not lie wholly inside the content. */
MUB_API int64_t mub_stream_get_lword(const mub_stream *stream, int64_t *position);

/* mub_stream_set_byte: write the low 8 bits of `value` at the cursor. */
MUB_API void mub_stream_set_byte(mub_stream *stream, int64_t *position, uint32_t value);

/* mub_stream_set_word: write the low 16 bits of `value` at the cursor. */
MUB_API void mub_stream_set_word(mub_stream *stream, int64_t *position, uint32_t value);

/* mub_stream_set_tword: write the low 24 bits of `value` at the cursor. */
MUB_API void mub_stream_set_tword(mub_stream *stream, int64_t *position, uint32_t value);

/* mub_stream_set_dword: write 32 bits at the cursor. */
MUB_API void mub_stream_set_dword(mub_stream *stream, int64_t *position, uint32_t value);

/* mub_stream_set_xword: write the low 48 bits of `value` at the cursor. */
MUB_API void mub_stream_set_xword(mub_stream *stream, int64_t *position, uint64_t value);

/* mub_stream_set_lword: write 64 bits at the cursor. */
MUB_API void mub_stream_set_lword(mub_stream *stream, int64_t *position, int64_t value);

/* mub_stream_set_string: write a string as its length (16 bits) and its bytes. Bytes behind the stream's length are
 * dropped; the position moves on by 2 and the string's full length all the same.
 *   string   shorter than 65536 bytes: of a longer one only the low 16 bits of the length are recorded
 * Returns the new position. */
MUB_API int64_t mub_stream_set_string(mub_stream *stream, int64_t *position, const mub_string *string);

/* mub_stream_get_string: read what mub_stream_set_string wrote over the content of `string`, which grows.
 *   string   gets no more than the bytes before the stream's length; left as it is when memory runs out
 * The position moves on by 2 and the recorded length. Returns the new position. */
MUB_API int64_t mub_stream_get_string(const mub_stream *stream, int64_t *position, mub_string *string);

/* mub_stream_set_stream: write a stream as its length (32 bits) and its bytes, dropped behind the stream's length as
 * in mub_stream_set_string; the position moves on by 4 and the full length.
 *   source   shorter than 4 GiB; may be `stream` itself
 * Returns the new position. */
MUB_API int64_t mub_stream_set_stream(mub_stream *stream, int64_t *position, const mub_stream *source);

/* mub_stream_get_stream: read what mub_stream_set_stream wrote over the content of `destination`, which grows.
 *   destination   as the string of mub_stream_get_string; may be `stream` itself
 * The position moves on by 4 and the recorded length. Returns the new position. */
MUB_API int64_t mub_stream_get_stream(const mub_stream *stream, int64_t *position, mub_stream *destination);

/* mub_stream_set_buffer: write `count` bytes at the cursor, without a length before them. Bytes behind the stream's
 * length are dropped; the position moves on by `count`. */
MUB_API void mub_stream_set_buffer(mub_stream *stream, int64_t *position, const void *bytes, int64_t count);

/* mub_stream_get_buffer: find `*count` bytes at the cursor, without copying.
 *   bytes   out: the first one, inside the stream's block; NULL when the cursor is outside the content
 *   count   in: bytes wanted; out: bytes there, 0 when there are none
 * The position moves on by the count wanted. Returns the new position. The pointer is valid until the stream grows. */
MUB_API int64_t mub_stream_get_buffer(const mub_stream *stream, int64_t *position, uint8_t **bytes,
                                      int64_t *count);

/* mub_stream_find: the index of the first byte equal to the low 8 bits of `byte`; -1 when there is none. The byte 0
 * is never found. Cost: linear. */
MUB_API int64_t mub_stream_find(const mub_stream *stream, int byte);

/* mub_stream_find_pos: the same from index `start` on; -1 for a start outside the content. */
MUB_API int64_t mub_stream_find_pos(const mub_stream *stream, int byte, int64_t start);

/* mub_stream_insert: insert `count` bytes before `position`; grows.
 *   position   0 to the length
 *   count      bytes, or negative: up to the first NUL
 * Returns 1; 0, the stream unchanged, for a position outside, for nothing to insert and when memory ran out.
 * Cost: linear in the bytes behind. */
MUB_API int mub_stream_insert(mub_stream *stream, int64_t position, const void *bytes, int64_t count);

/* mub_stream_update: replace `old_count` bytes at `position` by `new_count` other ones; grows.
 *   position    0 to the length
 *   old_count   may reach behind the content: the length changes by the difference of the counts in any case, and
 *               of the new bytes those are kept that lie within the longer of the old and the new length
 *   bytes       NULL only with a `new_count` of 0
 *   new_count   bytes, or negative: up to the first NUL
 * Returns 1; 0, the stream unchanged, for a negative count or missing bytes, a position outside, a length that would
 * become negative and when memory ran out. Cost: linear in the bytes behind. */
MUB_API int mub_stream_update(mub_stream *stream, int64_t position, int64_t old_count, const void *bytes,
                              int64_t new_count);

/* mub_stream_delete: remove `count` bytes at `position`. A range that runs past the content is refused whole.
 *   position   counted from 0
 * Cost: linear in the bytes behind. */
MUB_API void mub_stream_delete(mub_stream *stream, int64_t position, int64_t count);

/* mub_stream_left: keep the first `n` bytes. A negative `n` changes nothing. */
MUB_API void mub_stream_left(mub_stream *stream, int64_t n);

/* mub_stream_right: keep the last `n` bytes; none when `n` is below 1. */
MUB_API void mub_stream_right(mub_stream *stream, int64_t n);

/* mub_stream_mid: keep up to `n` bytes from `start` on; none when `n` is below 1 or `start` is not inside the
 * content. A negative `start` changes nothing. */
MUB_API void mub_stream_mid(mub_stream *stream, int64_t start, int64_t n);

/* mub_stream_left_string: copy the first `n` bytes, or all, over the content of a string, which grows; `n` below 1
 * empties it. Returns 1; 0, the string unchanged, when memory ran out. */
MUB_API int mub_stream_left_string(const mub_stream *source, int64_t n, mub_string *destination);

/* mub_stream_left_stream: the same into a stream, which may be `source`. */
MUB_API int mub_stream_left_stream(const mub_stream *source, int64_t n, mub_stream *destination);

/* mub_stream_right_string: as mub_stream_left_string with the last `n` bytes. */
MUB_API int mub_stream_right_string(const mub_stream *source, int64_t n, mub_string *destination);

/* mub_stream_right_stream: the same into a stream, which may be `source`. */
MUB_API int mub_stream_right_stream(const mub_stream *source, int64_t n, mub_stream *destination);

/* mub_stream_mid_string: as mub_stream_left_string with up to `n` bytes from `start` on; a start outside the content
 * empties the string. */
MUB_API int mub_stream_mid_string(const mub_stream *source, int64_t start, int64_t n,
                                  mub_string *destination);

/* mub_stream_mid_stream: the same into a stream, which may be `source`. */
MUB_API int mub_stream_mid_stream(const mub_stream *source, int64_t start, int64_t n,
                                  mub_stream *destination);

/* Packed integers take fewer bytes the smaller they are; the first byte's high bits tell how many follow. There are
 * three classes, and a reader must use the one that the writer used:
 *
 *   word    15 bits   1 or 2 bytes   0xxxxxxx, 1xxxxxxx then 8 bits
 *   dword   30 bits   1 to 4 bytes   the number of further bytes in 2 bits, then the value, highest byte first
 *   lword   64 bits   1 to 9 bytes   as many leading ones as bytes follow, then up to 7 bits and the further bytes
 *
 * Of the n further bytes of an lword, n = 1 + 2 + 4 or 8 is split into groups in that order, the first group holding
 * the highest bits, each group little-endian: 0x123456789ABCDE is FE 12 56 34 DE BC 9A 78. */

/* mub_stream_deflate_word_length: bytes that the packed low 16 bits of `value` take, 1 or 2. */
MUB_API int mub_stream_deflate_word_length(uint32_t value);

/* mub_stream_deflate_word: write `value` packed at the cursor.
 *   value   low 16 bits; bit 15 is lost: 0x8001 is read back as 1 */
MUB_API void mub_stream_deflate_word(mub_stream *stream, int64_t *position, uint32_t value);

/* mub_stream_inflate_word: read a packed word. Of one that is cut short the missing byte is taken from the spare bytes
 * (0 behind the capacity).
 * Returns the number; 0 at the end of the content, where the position stays. */
MUB_API uint16_t mub_stream_inflate_word(const mub_stream *stream, int64_t *position);

/* mub_stream_deflate_dword_length: bytes that `value` packed takes, 1 to 4. */
MUB_API int mub_stream_deflate_dword_length(uint32_t value);

/* mub_stream_deflate_dword: write `value` packed at the cursor.
 *   value   bits 30 and 31 are lost */
MUB_API void mub_stream_deflate_dword(mub_stream *stream, int64_t *position, uint32_t value);

/* mub_stream_inflate_dword: read a packed dword, as mub_stream_inflate_word. */
MUB_API uint32_t mub_stream_inflate_dword(const mub_stream *stream, int64_t *position);

/* mub_stream_deflate_lword_length: bytes that `value` packed takes, 1 to 9. */
MUB_API int mub_stream_deflate_lword_length(uint64_t value);

/* mub_stream_deflate_lword: write `value` packed at the cursor. Unlike the smaller classes, the position stays when
 * it does not fit. */
MUB_API void mub_stream_deflate_lword(mub_stream *stream, int64_t *position, uint64_t value);

/* mub_stream_inflate_lword: read a packed lword.
 * Returns the number; -1 at the end of the content, the position unchanged, and when the further bytes are cut short,
 * the position then being behind the first byte. A value of 64 ones reads as -1 too; the position tells the two apart. */
MUB_API int64_t mub_stream_inflate_lword(const mub_stream *stream, int64_t *position);

/* mub_stream_crc32: the standard CRC-32 (reflected, polynomial 0xEDB88320, all ones before and inverted after) of
 * `count` bytes, which is 0 for none. */
MUB_API uint32_t mub_stream_crc32(const void *bytes, int64_t count);

/* mub_stream_check: the exclusive or of `count` bytes, 0 to 255, which is 0 for none. */
MUB_API int mub_stream_check(const void *bytes, int64_t count);

/* CRC_TABLE: entry i is what the CRC-32 register i becomes after eight steps: (r >> 1) ^ (r & 1 ? 0xEDB88320 : 0). */
MUB_API extern const uint32_t CRC_TABLE[256];

#ifdef __cplusplus
}
#endif

#endif
