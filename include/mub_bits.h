/**
 * @defgroup bits mub_bits: a growable set of bits
 *
 * A growable set of bits, numbered from 0.
 *
 *     data ──►  byte 0             byte 1                                size bytes
 *              [0 1 2 3 4 5 6 7 | 8 9 10 11 12 13 14 15 | …          ]
 *               0x80 … 0x01       0x80 …         0x01
 *
 * Bit n lies in byte n >> 3, the first of its byte being the highest bit: position n & 7 has the mask 0x80 >>
 * position. Bits beyond the end read as clear; setting or clearing one there grows the set, by 1024 bytes or
 * to the byte needed if that is more. Growth moves the block, and new bytes are 0. The set never shrinks;
 * mub_bits_term() releases the block.
 *
 * What the everyday operations return:
 *
 * | operation         | bit set                | bit clear or beyond the end | out of memory   |
 * | ----------------- | ---------------------- | --------------------------- | --------------- |
 * | mub_bits_find()   | its mask, 0x80 to 0x01 | 0                           |                 |
 * | mub_bits_insert() |                        |                             | nothing changes |
 * | mub_bits_expand() |                        |                             | 0               |
 *
 * @{
 */
#ifndef MUB_BITS_H
#define MUB_BITS_H

#include "mub_base.h"
#include "mub_stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A growable set of bits, numbered from 0. */
typedef struct mub_bits {
  uint8_t *data; /**< the block, from malloc; NULL while nothing is allocated */
  uint32_t size; /**< bytes of bits; one more is allocated after them, always 0 */
} mub_bits;

/**
 * Reads a bit of a byte.
 *
 * @param[in] byte      the byte; its low 8 bits are used
 * @param[in] position  0, the highest bit, to 7
 * @return the bit's mask, 0x80 to 0x01, if it is set; 0 if it is clear or `position` is above 7
 */
MUB_API uint32_t mub_bits_get(uint32_t byte, uint32_t position);

/**
 * Changes a bit of a byte.
 *
 * @param[in] byte      the byte; its low 8 bits are used
 * @param[in] position  0, the highest bit, to 7
 * @param[in] on        not 0 sets the bit, 0 clears it
 * @return the new byte; the same byte if `position` is above 7
 */
MUB_API uint8_t mub_bits_set(uint32_t byte, uint32_t position, int on);

/**
 * Makes the record an empty set; nothing is allocated.
 *
 * @param[out] bits  the set
 * @return the set
 * @owner the record is the caller's
 * @invalidates nothing
 */
MUB_API mub_bits *mub_bits_init(mub_bits *bits);

/**
 * Releases the block and leaves an empty set, ready for use again.
 *
 * @param[in,out] bits  the set
 * @return the set
 * @owner the block is released
 * @invalidates pointers into the block
 */
MUB_API mub_bits *mub_bits_term(mub_bits *bits);

/**
 * Grows the set to at least `bytes` bytes, which is 8 times as many bits.
 *
 * @param[in,out] bits  the set
 * @param[in] bytes     the wanted size
 * @return 1 if the set has at least `bytes` bytes now
 * @failure 0 if memory ran out
 * @invalidates pointers into the block, if the set grows
 * @cost O(size) if it grows
 */
MUB_API int mub_bits_expand(mub_bits *bits, uint32_t bytes);

/**
 * Clears all bits.
 *
 * The size is unchanged.
 *
 * @param[in,out] bits  the set
 * @invalidates nothing
 * @cost O(size)
 */
MUB_API void mub_bits_zero(mub_bits *bits);

/**
 * Sets or clears a bit.
 *
 * The set grows to hold the bit, even if the bit is cleared.
 *
 * @param[in,out] bits  the set
 * @param[in] bit       the number of the bit, from 0
 * @param[in] on        not 0 sets the bit, 0 clears it
 * @failure nothing changes if memory runs out, and no result says so; call mub_bits_expand() first to find
 *   out
 * @invalidates pointers into the block, if the set grows
 * @cost O(1); O(size) if it grows
 */
MUB_API void mub_bits_insert(mub_bits *bits, uint32_t bit, int on);

/**
 * Tests a bit.
 *
 * @param[in] bits  the set
 * @param[in] bit   the number of the bit, from 0
 * @return its mask, 0x80 to 0x01, if it is set; 0 if it is clear or beyond the end
 */
MUB_API uint32_t mub_bits_find(const mub_bits *bits, uint32_t bit);

/**
 * Gives a stream the set's block; length and capacity of the stream become the size of the set.
 *
 * Nothing is exchanged, despite the name: the set keeps its fields, and both records then have the same
 * block.
 *
 * @param[in,out] bits    the set; clear it with mub_bits_init(), or the stream with mub_stream_init(), before
 *                        the other is used
 * @param[in,out] stream  receives the block; its old block is not released
 * @owner the block belongs to whichever of the two records is kept; the stream's old block is not released
 * @invalidates nothing
 */
MUB_API void mub_bits_swap(mub_bits *bits, mub_stream *stream);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
