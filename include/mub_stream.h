/**
 * @defgroup stream mub_stream: a growable byte buffer with a cursor for integers and blocks
 *
 * A growable byte buffer, with checksums, and access at a cursor to little-endian fields, framed blocks and
 * packed integers.
 *
 *     data ──► [ content ................ | spare ........... ]
 *                0                  length            capacity
 *
 * **Growth.** Operations that add content enlarge the buffer if needed: its capacity grows to the size
 * needed, or by half the length if that is more (at least 8 bytes, at most 8 MiB at a time, and not past 2
 * GiB), rounded up to a multiple of 8. Above 16 MiB a stream is copied once per 8 MiB appended, and past 2
 * GiB at nearly every append: call mub_stream_expand() first. Growth moves the buffer: pointers into it are
 * then invalid, positions remain valid. The buffer never shrinks; mub_stream_term() releases it.
 *
 * **Spare bytes.** Bytes after the length are 0 in a new buffer, and keep their old content when the length
 * is reduced. mub_stream_get_at(), mub_stream_set_at(), mub_stream_zero() and mub_stream_shrink() are bounded
 * by the capacity, all others by the length; a packed word or dword that the length cuts short is read up to
 * the capacity.
 *
 * **Cursor.** The caller keeps a position and passes its address to each operation. A field that does not lie
 * wholly inside the content is read as 0 and not written. Unless documented otherwise the position advances
 * even then, so a position above the length tells a reader that the data was truncated. Writing at a cursor
 * never enlarges the stream: set its length first, with mub_stream_expand() and mub_stream_shrink(). A field
 * or run of bytes that begins at a negative position is not read or written at all, even if it extends into
 * the content.
 *
 * **Byte order.** Fields are little-endian on every machine.
 *
 * **Packed integers** take fewer bytes for smaller numbers; the high bits of the first byte give the number
 * of bytes that follow. There are three formats, and a reader must use the same format as the writer:
 *
 *     word    15 bits   1 or 2 bytes   0xxxxxxx, 1xxxxxxx then 8 bits
 *     dword   30 bits   1 to 4 bytes   2 bits: the number of bytes that follow; then the value, big-endian
 *     lword   64 bits   1 to 9 bytes   a 1 for each byte that follows, a 0 unless 8 follow; the highest bits
 *
 * The bytes that follow in an lword form groups of 1, 2 and 4 bytes, in this order and each at most once, or
 * one group of 8. The first group holds the highest bits, and each group is little-endian: 0x123456789ABCDE
 * is FE 12 56 34 DE BC 9A 78.
 *
 * **Framed blocks** are runs of bytes preceded by their length: 16 bits in mub_stream_set_string(), 32 bits
 * in mub_stream_set_stream().
 *
 * A stream and a mub_string can exchange their buffers, since both reserve a byte for a terminator after the
 * capacity.
 *
 * What the everyday operations return:
 *
 * | operation                                | present    | absent, or outside the content | out of memory |
 * | ---------------------------------------- | ---------- | ------------------------------ | ------------- |
 * | `_append`, `_copy`, `_clone`             |            |                                | unchanged     |
 * | mub_stream_clone_string()                | 1          |                                | 0, empty      |
 * | mub_stream_insert(), mub_stream_update() | 1          | 0, unchanged                   | 0, unchanged  |
 * | mub_stream_find(), mub_stream_find_pos() | the index  | -1                             |               |
 * | `_get_byte` to `_get_lword`              | the number | 0, the position advances       |               |
 * | `_inflate_word`, `_inflate_dword`        | the number | 0                              |               |
 * | mub_stream_inflate_lword()               | the number | -1; before the content 0       |               |
 * | `_left_string`, `_left_stream` …         | 1          | 1, empty                       | 0, unchanged  |
 * | mub_stream_expand()                      | 1          |                                | 0, unchanged  |
 *
 * @{
 */
#ifndef MUB_STREAM_H
#define MUB_STREAM_H

#include "mub_base.h"
#include "mub_string.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A growable byte buffer, with checksums, and access at a cursor to little-endian fields, framed blocks and
 * packed integers.
 */
typedef struct mub_stream {
  uint8_t *data;    /**< the buffer, from malloc; NULL while nothing is allocated */
  int64_t length;   /**< bytes of content */
  int64_t capacity; /**< bytes of content that fit; 0 without a buffer */
} mub_stream;

/**
 * Initialises an empty stream; nothing is allocated.
 *
 * @param[out] stream  its old contents are ignored
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API void mub_stream_init(mub_stream *stream);

/**
 * Releases the buffer; the stream is then empty and can be used again.
 *
 * @param[in,out] stream  the stream
 * @owner the buffer is released
 * @invalidates pointers into the buffer
 */
MUB_API void mub_stream_term(mub_stream *stream);

/**
 * Checks whether the stream is empty.
 *
 * @param[in] stream  the stream
 * @return 1 if the stream is empty, else 0
 */
MUB_API int mub_stream_is_empty(const mub_stream *stream);

/**
 * Fills a range with 0.
 *
 * Does nothing unless the range lies within the capacity. The length is unchanged.
 *
 * @param[in,out] stream  the stream
 * @param[in] offset      the start of the range
 * @param[in] count       the number of bytes; below 1 there are none
 * @invalidates nothing
 * @cost O(count)
 */
MUB_API void mub_stream_zero(mub_stream *stream, int64_t offset, int64_t count);

/**
 * Makes room for `size` bytes of content.
 *
 * The length is unchanged.
 *
 * @param[in,out] stream  the stream
 * @param[in] size        the capacity needed, in bytes
 * @return 1 if there is room
 * @failure 0 if memory ran out; the stream is unchanged
 * @invalidates pointers into the buffer, if it grows
 * @cost O(size) if it grows
 */
MUB_API int mub_stream_expand(mub_stream *stream, int64_t size);

/**
 * Sets the length to `length`, or to the capacity if that is less.
 *
 * This can also lengthen the content, with the spare bytes as they are. Does nothing for a negative length,
 * or for a stream without a buffer.
 *
 * @param[in,out] stream  the stream
 * @param[in] length      the new length in bytes
 * @invalidates nothing
 */
MUB_API void mub_stream_shrink(mub_stream *stream, int64_t length);

/**
 * Swaps two streams, including their buffers.
 *
 * @param[in,out] a  one stream
 * @param[in,out] b  the other stream
 * @owner the buffer of one stream now belongs to the other
 * @invalidates nothing
 */
MUB_API void mub_stream_swap(mub_stream *a, mub_stream *b);

/**
 * Swaps a stream and a string, including their buffers.
 *
 * No terminator is added: the string is NUL-terminated only if the byte after the stream's content is 0. To
 * add a terminator, call mub_string_shrink() with the length of the string.
 *
 * @param[in,out] stream  the stream
 * @param[in,out] string  an initialised string
 * @owner the buffer of the stream now belongs to the string, and that of the string to the stream
 * @invalidates nothing
 */
MUB_API void mub_stream_swap_string(mub_stream *stream, mub_string *string);

/**
 * Copies a stream, replacing the content of the destination, whose capacity becomes at least that of the
 * source.
 *
 * The spare bytes of the destination are not set to 0.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in,out] destination  an initialised stream, whose content is replaced
 * @failure the destination is unchanged if memory runs out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(capacity of the source)
 */
MUB_API void mub_stream_clone(const mub_stream *source, mub_stream *destination);

/**
 * Checks whether the stream is intact.
 *
 * Checks the length, the capacity, and the 0 that ends the buffer. The content is not checked: compare its
 * mub_stream_crc32() or mub_stream_check() with a value computed earlier.
 *
 * @param[in] stream  the stream
 * @param[out] what   receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the stream is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @nullable what
 */
MUB_API int mub_stream_verify(const mub_stream *stream, const char **what);

/**
 * Returns the size of the heap memory that the stream holds.
 *
 * Counts the buffer, as requested from `malloc`; not the record itself.
 *
 * @param[in] stream  the stream
 * @return the number of bytes
 * @failure none
 */
MUB_API int64_t mub_stream_memory_bytes(const mub_stream *stream);

/**
 * Initialises a string with a copy of the stream's content, and with at least the capacity of the stream.
 *
 * @param[in] source        the stream to copy from; it does not change
 * @param[out] destination  the string, which is initialised: its old buffer is not released
 * @return 1
 * @failure 0 if memory ran out; the string is then empty
 * @owner the bytes are copied
 * @invalidates nothing
 * @cost O(capacity of the source)
 */
MUB_API int mub_stream_clone_string(const mub_stream *source, mub_string *destination);

/**
 * Replaces the content with a range of bytes, enlarging the buffer if needed.
 *
 * @param[in,out] stream  the stream
 * @param[in] bytes       the first of the bytes, which may lie in the stream itself; NULL empties the stream
 * @param[in] count       the number of bytes; negative: up to the first NUL
 * @failure the stream is unchanged if memory runs out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer
 * @cost O(count)
 * @bounds bytes[count]
 * @nullable bytes
 */
MUB_API void mub_stream_copy(mub_stream *stream, const void *bytes, int64_t count);

/**
 * Appends a range of bytes to the content, enlarging the buffer if needed.
 *
 * @param[in,out] stream  the stream
 * @param[in] bytes       the first of the bytes, which may lie in the stream itself; NULL appends nothing
 * @param[in] count       the number of bytes; negative: up to the first NUL
 * @failure the stream is unchanged if memory runs out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer
 * @cost O(count) amortised
 * @bounds bytes[count]
 * @nullable bytes
 */
MUB_API void mub_stream_append(mub_stream *stream, const void *bytes, int64_t count);

/**
 * Reads the byte at `index`.
 *
 * The spare bytes between the length and the capacity can be read, too.
 *
 * @param[in] stream  the stream
 * @param[in] index   the index, counted from 0
 * @return the byte
 * @failure 0 unless `0 <= index < capacity`
 */
MUB_API uint8_t mub_stream_get_at(const mub_stream *stream, int64_t index);

/**
 * Stores a byte at `index`, if that is within the capacity.
 *
 * The length is unchanged.
 *
 * @param[in,out] stream  the stream
 * @param[in] index       the index, counted from 0
 * @param[in] byte        the byte; its low 8 bits are used
 * @invalidates nothing
 */
MUB_API void mub_stream_set_at(mub_stream *stream, int64_t index, int byte);

/**
 * Reads a byte at the cursor.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the field as an unsigned number
 * @failure 0 if the field does not lie wholly inside the content; the position advances anyway
 */
MUB_API uint8_t mub_stream_get_byte(const mub_stream *stream, int64_t *position);

/**
 * Reads 16 bits at the cursor, little-endian.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the field as an unsigned number
 * @failure 0 if the field does not lie wholly inside the content; the position advances anyway
 */
MUB_API uint16_t mub_stream_get_word(const mub_stream *stream, int64_t *position);

/**
 * Reads 24 bits at the cursor, little-endian.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the field as an unsigned number
 * @failure 0 if the field does not lie wholly inside the content; the position advances anyway
 */
MUB_API uint32_t mub_stream_get_tword(const mub_stream *stream, int64_t *position);

/**
 * Reads 32 bits at the cursor, little-endian.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the field as an unsigned number
 * @failure 0 if the field does not lie wholly inside the content; the position advances anyway
 */
MUB_API uint32_t mub_stream_get_dword(const mub_stream *stream, int64_t *position);

/**
 * Reads 48 bits at the cursor, little-endian.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the field as an unsigned number
 * @failure 0 if the field does not lie wholly inside the content; the position advances anyway
 */
MUB_API uint64_t mub_stream_get_xword(const mub_stream *stream, int64_t *position);

/**
 * Reads 64 bits at the cursor, little-endian.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the field as a signed number
 * @failure 0 if the field does not lie wholly inside the content; the position advances anyway
 */
MUB_API int64_t mub_stream_get_lword(const mub_stream *stream, int64_t *position);

/**
 * Writes the low 8 bits of a number at the cursor.
 *
 * A field that does not lie wholly inside the content is not written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_set_byte(mub_stream *stream, int64_t *position, uint32_t value);

/**
 * Writes the low 16 bits of a number at the cursor, little-endian.
 *
 * A field that does not lie wholly inside the content is not written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_set_word(mub_stream *stream, int64_t *position, uint32_t value);

/**
 * Writes the low 24 bits of a number at the cursor, little-endian.
 *
 * A field that does not lie wholly inside the content is not written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_set_tword(mub_stream *stream, int64_t *position, uint32_t value);

/**
 * Writes a number of 32 bits at the cursor, little-endian.
 *
 * A field that does not lie wholly inside the content is not written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_set_dword(mub_stream *stream, int64_t *position, uint32_t value);

/**
 * Writes the low 48 bits of a number at the cursor, little-endian.
 *
 * A field that does not lie wholly inside the content is not written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_set_xword(mub_stream *stream, int64_t *position, uint64_t value);

/**
 * Writes a number of 64 bits at the cursor, little-endian.
 *
 * A field that does not lie wholly inside the content is not written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_set_lword(mub_stream *stream, int64_t *position, int64_t value);

/**
 * Writes a string as a framed block: its length (16 bits) and its bytes.
 *
 * Bytes that would lie past the stream's length are not written; the position advances by 2 and the full
 * length of the string in any case.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the framed block; out: the position after it
 * @param[in] string        the string, shorter than 65536 bytes: only the low 16 bits of its length are
 *                          recorded
 * @return the new position
 * @owner the bytes are copied
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int64_t mub_stream_set_string(mub_stream *stream, int64_t *position, const mub_string *string);

/**
 * Reads a string that mub_stream_set_string() wrote, replacing the content of `string`.
 *
 * The position advances by 2 and the recorded length, which counts as 0 if its field does not lie wholly
 * inside the content.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the framed block; out: the position after it
 * @param[in,out] string    an initialised string; receives only bytes before the stream's length, and is
 *                          emptied if there are none
 * @return the new position
 * @failure none; the string is unchanged if memory runs out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the string
 * @cost O(length)
 */
MUB_API int64_t mub_stream_get_string(const mub_stream *stream, int64_t *position, mub_string *string);

/**
 * Writes a stream as a framed block: its length (32 bits) and its bytes.
 *
 * Bytes that would lie past the stream's length are not written; the position advances by 4 and the full
 * length of `source` in any case.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the framed block; out: the position after it
 * @param[in] source        the stream to write, shorter than 4 GiB; may be `stream` itself
 * @return the new position
 * @owner the bytes are copied
 * @invalidates nothing
 * @cost O(length)
 */
MUB_API int64_t mub_stream_set_stream(mub_stream *stream, int64_t *position, const mub_stream *source);

/**
 * Reads a stream that mub_stream_set_stream() wrote, replacing the content of `destination`.
 *
 * The position advances by 4 and the recorded length, which counts as 0 if its field does not lie wholly
 * inside the content.
 *
 * @param[in] stream           the stream
 * @param[in,out] position     the cursor; in: the position of the framed block; out: the position after it
 * @param[in,out] destination  an initialised stream; receives only bytes before the stream's length, and is
 *                             emptied if there are none; may be `stream` itself
 * @return the new position
 * @failure none; the destination is unchanged if memory runs out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(length)
 */
MUB_API int64_t mub_stream_get_stream(const mub_stream *stream, int64_t *position, mub_stream *destination);

/**
 * Writes bytes at the cursor, without their length.
 *
 * Bytes that would lie past the stream's length are not written, and none at a negative position. `count` is
 * added to the position in any case, even if it is negative.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the bytes; out: the position after it
 * @param[in] bytes         the first of the bytes, which may lie in the stream itself; NULL writes nothing
 * @param[in] count         the number of bytes; if below 1, nothing is written
 * @owner the bytes are copied
 * @invalidates nothing
 * @cost O(count)
 * @bounds bytes[count]
 * @nullable bytes
 */
MUB_API void mub_stream_set_buffer(mub_stream *stream, int64_t *position, const void *bytes, int64_t count);

/**
 * Gets the address of the bytes at the cursor, without copying.
 *
 * The number of bytes requested is added to the position in any case, even if it is negative.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the bytes; out: the position after it
 * @param[out] bytes        receives the address of the first byte, inside the stream's buffer; NULL if the
 *                          cursor is outside the content
 * @param[in,out] count     in: the number of bytes requested; out: how many of them there are, 0 if the
 *                          cursor is outside the content; a negative count is not changed if the cursor is
 *                          inside the content
 * @return the new position
 * @failure none; `*bytes` is NULL and `*count` 0 if the cursor is outside the content
 * @owner the bytes belong to the stream; the address is valid until the buffer moves
 * @bounds bytes[count]
 */
MUB_API int64_t mub_stream_get_buffer(const mub_stream *stream, int64_t *position, uint8_t **bytes,
                                      int64_t *count);

/**
 * Finds the first occurrence of a byte.
 *
 * The byte 0 is never found.
 *
 * @param[in] stream  the stream
 * @param[in] byte    the byte; its low 8 bits are used
 * @return its index
 * @failure -1 if there is none
 * @cost O(length)
 */
MUB_API int64_t mub_stream_find(const mub_stream *stream, int byte);

/**
 * Finds the first occurrence of a byte at or after index `start`.
 *
 * The byte 0 is never found.
 *
 * @param[in] stream  the stream
 * @param[in] byte    the byte; its low 8 bits are used
 * @param[in] start   the index at which to begin
 * @return its index
 * @failure -1 if there is none, or if `start` lies outside the content
 * @cost O(length)
 */
MUB_API int64_t mub_stream_find_pos(const mub_stream *stream, int byte, int64_t start);

/**
 * Inserts bytes before a position, enlarging the buffer if needed.
 *
 * @param[in,out] stream  the stream
 * @param[in] position    the position to insert before: 0 to the length
 * @param[in] bytes       the first of the bytes, which may lie in the stream itself; NULL inserts nothing
 * @param[in] count       the number of bytes; negative: up to the first NUL
 * @return 1 if inserted
 * @failure 0, and the stream is unchanged, if the position is negative or above the length, there is nothing
 *   to insert, or memory ran out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer
 * @cost O(bytes after the position + count); O(length) more when the buffer grows
 * @bounds bytes[count]
 * @nullable bytes
 */
MUB_API int mub_stream_insert(mub_stream *stream, int64_t position, const void *bytes, int64_t count);

/**
 * Replaces a range with other bytes, enlarging the buffer if needed.
 *
 * @param[in,out] stream  the stream
 * @param[in] position    the start of the range: 0 to the length
 * @param[in] old_count   the number of bytes to replace. The range may extend past the content: the length
 *                        still changes by `new_count - old_count`, and new bytes that would lie past both the
 *                        old and the new length are dropped
 * @param[in] bytes       the new bytes, which may lie in the stream itself; NULL only with a `new_count` of 0
 * @param[in] new_count   the number of new bytes; negative: up to the first NUL
 * @return 1 if replaced
 * @failure 0, and the stream is unchanged, if the position is negative or above the length, `old_count` is
 *   negative, the bytes are NULL with a count other than 0, the length would become negative, or memory
 *   ran out
 * @owner the bytes are copied
 * @invalidates pointers into the buffer
 * @cost O(bytes after the position + new_count); O(length) more when the buffer grows
 * @bounds bytes[new_count]
 * @nullable bytes
 */
MUB_API int mub_stream_update(mub_stream *stream, int64_t position, int64_t old_count, const void *bytes,
                              int64_t new_count);

/**
 * Removes a range.
 *
 * Does nothing unless the whole range lies inside the content.
 *
 * @param[in,out] stream  the stream
 * @param[in] position    the start of the range, counted from 0
 * @param[in] count       the number of bytes; below 1 there are none
 * @invalidates nothing
 * @cost O(bytes after the position)
 */
MUB_API void mub_stream_delete(mub_stream *stream, int64_t position, int64_t count);

/**
 * Keeps the first `n` bytes, or as many as there are.
 *
 * A negative `n` changes nothing.
 *
 * @param[in,out] stream  the stream
 * @param[in] n           the number of bytes
 * @invalidates nothing
 */
MUB_API void mub_stream_left(mub_stream *stream, int64_t n);

/**
 * Keeps the last `n` bytes, or as many as there are; none if `n` is below 1.
 *
 * @param[in,out] stream  the stream
 * @param[in] n           the number of bytes
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(n)
 */
MUB_API void mub_stream_right(mub_stream *stream, int64_t n);

/**
 * Keeps up to `n` bytes from `start` on; none if `n` is below 1 or `start` is not below the length.
 *
 * A negative `start` changes nothing.
 *
 * @param[in,out] stream  the stream
 * @param[in] start       the index at which to begin
 * @param[in] n           the number of bytes
 * @failure none; nothing is allocated
 * @invalidates nothing
 * @cost O(n)
 */
MUB_API void mub_stream_mid(mub_stream *stream, int64_t start, int64_t n);

/**
 * Copies the first `n` bytes, or as many as there are, into a string.
 *
 * The destination becomes empty if `n` is below 1.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in] n                the number of bytes
 * @param[in,out] destination  an initialised string, whose content is replaced
 * @return 1
 * @failure 0 if memory ran out; the string is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the string
 * @cost O(n)
 */
MUB_API int mub_stream_left_string(const mub_stream *source, int64_t n, mub_string *destination);

/**
 * Copies the first `n` bytes, or as many as there are, into a stream.
 *
 * The destination becomes empty if `n` is below 1.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in] n                the number of bytes
 * @param[in,out] destination  an initialised stream, whose content is replaced; may be `source`
 * @return 1
 * @failure 0 if memory ran out; the destination is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(n)
 */
MUB_API int mub_stream_left_stream(const mub_stream *source, int64_t n, mub_stream *destination);

/**
 * Copies the last `n` bytes, or as many as there are, into a string.
 *
 * The destination becomes empty if `n` is below 1.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in] n                the number of bytes
 * @param[in,out] destination  an initialised string, whose content is replaced
 * @return 1
 * @failure 0 if memory ran out; the string is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the string
 * @cost O(n)
 */
MUB_API int mub_stream_right_string(const mub_stream *source, int64_t n, mub_string *destination);

/**
 * Copies the last `n` bytes, or as many as there are, into a stream.
 *
 * The destination becomes empty if `n` is below 1.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in] n                the number of bytes
 * @param[in,out] destination  an initialised stream, whose content is replaced; may be `source`
 * @return 1
 * @failure 0 if memory ran out; the destination is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(n)
 */
MUB_API int mub_stream_right_stream(const mub_stream *source, int64_t n, mub_stream *destination);

/**
 * Copies up to `n` bytes from `start` on into a string.
 *
 * The destination becomes empty if `n` is below 1 or `start` lies outside the content.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in] start            the index at which to begin
 * @param[in] n                the number of bytes
 * @param[in,out] destination  an initialised string, whose content is replaced
 * @return 1
 * @failure 0 if memory ran out; the string is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the string
 * @cost O(n)
 */
MUB_API int mub_stream_mid_string(const mub_stream *source, int64_t start, int64_t n,
                                  mub_string *destination);

/**
 * Copies up to `n` bytes from `start` on into a stream.
 *
 * The destination becomes empty if `n` is below 1 or `start` lies outside the content.
 *
 * @param[in] source           the stream to copy from; it does not change
 * @param[in] start            the index at which to begin
 * @param[in] n                the number of bytes
 * @param[in,out] destination  an initialised stream, whose content is replaced; may be `source`
 * @return 1
 * @failure 0 if memory ran out; the destination is unchanged
 * @owner the bytes are copied
 * @invalidates pointers into the buffer of the destination
 * @cost O(n)
 */
MUB_API int mub_stream_mid_stream(const mub_stream *source, int64_t start, int64_t n,
                                  mub_stream *destination);

/**
 * Computes the size of the low 16 bits of a number as a packed word.
 *
 * @param[in] value  the number to measure
 * @return the number of bytes, 1 or 2
 */
MUB_API int mub_stream_deflate_word_length(uint32_t value);

/**
 * Writes a number as a packed word at the cursor.
 *
 * If it does not fit inside the content, nothing is written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write; only its low 15 bits are stored: 0x8001 is read back as 1
 * @invalidates nothing
 */
MUB_API void mub_stream_deflate_word(mub_stream *stream, int64_t *position, uint32_t value);

/**
 * Reads a packed word at the cursor.
 *
 * If the end of the content truncates it, the missing bytes are taken from the spare bytes, or are 0 past the
 * capacity.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the number
 * @failure 0 at or past the end of the content, where the position does not advance, and at a negative
 *   position, where it advances by 1
 */
MUB_API uint16_t mub_stream_inflate_word(const mub_stream *stream, int64_t *position);

/**
 * Computes the size of a number as a packed dword.
 *
 * @param[in] value  the number to measure
 * @return the number of bytes, 1 to 4
 */
MUB_API int mub_stream_deflate_dword_length(uint32_t value);

/**
 * Writes a number as a packed dword at the cursor.
 *
 * If it does not fit inside the content, nothing is written; the position advances anyway.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write; bits 30 and 31 are lost
 * @invalidates nothing
 */
MUB_API void mub_stream_deflate_dword(mub_stream *stream, int64_t *position, uint32_t value);

/**
 * Reads a packed dword at the cursor.
 *
 * If the end of the content truncates it, the missing bytes are taken from the spare bytes, or are 0 past the
 * capacity.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the number
 * @failure 0 at or past the end of the content, where the position does not advance, and at a negative
 *   position, where it advances by 1
 */
MUB_API uint32_t mub_stream_inflate_dword(const mub_stream *stream, int64_t *position);

/**
 * Computes the size of a number as a packed lword.
 *
 * @param[in] value  the number to measure
 * @return the number of bytes, 1 to 9
 */
MUB_API int mub_stream_deflate_lword_length(uint64_t value);

/**
 * Writes a number as a packed lword at the cursor.
 *
 * If it does not fit inside the content, nothing is written and the position does not advance.
 *
 * @param[in,out] stream    the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @param[in] value         the number to write
 * @invalidates nothing
 */
MUB_API void mub_stream_deflate_lword(mub_stream *stream, int64_t *position, uint64_t value);

/**
 * Reads a packed lword at the cursor.
 *
 * A number above INT64_MAX is returned as a negative one: 2^64 - 1 as -1, as if it failed, but the position
 * then advances by 9.
 *
 * @param[in] stream        the stream
 * @param[in,out] position  the cursor; in: the position of the field; out: the position after it
 * @return the number
 * @failure -1 at or past the end of the content, where the position does not advance, or if the further bytes
 *   are truncated, with the position then after the first byte; 0 at a negative position, where it advances
 *   by 1
 */
MUB_API int64_t mub_stream_inflate_lword(const mub_stream *stream, int64_t *position);

/**
 * Computes the standard CRC-32 of bytes (reflected polynomial 0xEDB88320).
 *
 * The initial value is all ones, and the result is inverted.
 *
 * @param[in] bytes  the first of the bytes; NULL: there are none
 * @param[in] count  the number of bytes; below 1 there are none
 * @return the checksum; 0 for no bytes
 * @cost O(count)
 * @bounds bytes[count]
 * @nullable bytes
 */
MUB_API uint32_t mub_stream_crc32(const void *bytes, int64_t count);

/**
 * Computes the exclusive or of bytes.
 *
 * @param[in] bytes  the first of the bytes; NULL: there are none
 * @param[in] count  the number of bytes; below 1 there are none
 * @return 0 to 255; 0 for no bytes
 * @cost O(count)
 * @bounds bytes[count]
 * @nullable bytes
 */
MUB_API int mub_stream_check(const void *bytes, int64_t count);

/** The CRC-32 table: entry i is i after eight steps `r = (r >> 1) ^ (r & 1 ? 0xEDB88320 : 0)`. */
MUB_API extern const uint32_t CRC_TABLE[256];

/** @} */

#ifdef __cplusplus
}
#endif

#endif
