/* mub_bits.h: a growable set of bits, numbered from 0.
 *
 *   data ──►  byte 0             byte 1                                size bytes
 *            [0 1 2 3 4 5 6 7 | 8 9 10 11 12 13 14 15 | …          ]
 *             0x80 … 0x01       0x80 …         0x01
 *
 * Bit n lies in byte n >> 3, the first of its byte being the highest bit: position n & 7 has the mask 0x80 >> position.
 * Bits behind the end read as clear; setting or clearing one there grows the set, by 1024 bytes or to the byte needed,
 * if that is more. Growth moves the block, and new bytes are 0. Only mub_bits_term releases it.
 *
 * Parameters, where a function does not say otherwise:
 *   bits    the set
 *   bit     the number of the bit, from 0
 *   byte    the byte: its low 8 bits
 *   bytes   the size wanted */
#ifndef MUB_BITS_H
#define MUB_BITS_H

#include "mub_base.h"
#include "mub_stream.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mub_bits {
  uint8_t *data; /* the block, from malloc; NULL while nothing is allocated */
  uint32_t size; /* bytes of bits; one more is allocated behind them, always 0 */
} mub_bits;

/* mub_bits_get: a bit of a byte.
 *   byte       the low 8 bits count
 *   position   0, the highest bit, to 7
 * Returns the bit's mask, 0x80 to 0x01, when it is set; 0 when it is not, or `position` is above 7. */
MUB_API uint32_t mub_bits_get(uint32_t byte, uint32_t position);

/* mub_bits_set: change a bit of a byte.
 *   position   as for mub_bits_get
 *   on         not 0 sets the bit, 0 clears it
 * Returns the new byte; the same one when `position` is above 7. */
MUB_API uint8_t mub_bits_set(uint32_t byte, uint32_t position, int on);

/* mub_bits_init: make the record an empty set; nothing is allocated. Returns the set. */
MUB_API mub_bits *mub_bits_init(mub_bits *bits);

/* mub_bits_term: release the block and leave an empty set, ready for use again. Returns the set. */
MUB_API mub_bits *mub_bits_term(mub_bits *bits);

/* mub_bits_expand: grow to at least `bytes` bytes, which is 8 times as many bits.
 * Returns 1, at once when the size suffices; 0 when memory ran out. */
MUB_API int mub_bits_expand(mub_bits *bits, uint32_t bytes);

/* mub_bits_zero: clear all bits; the size stays. Cost: O(size). */
MUB_API void mub_bits_zero(mub_bits *bits);

/* mub_bits_insert: set or clear a bit; the set grows so far that it holds the bit, also when it is cleared.
 *   on   not 0 sets the bit, 0 clears it
 * When memory ran out nothing changes: mub_bits_expand tells beforehand. */
MUB_API void mub_bits_insert(mub_bits *bits, uint32_t bit, int on);

/* mub_bits_find: test a bit.
 * Returns its mask, 0x80 to 0x01, when it is set; 0 when it is clear or lies behind the end. */
MUB_API uint32_t mub_bits_find(const mub_bits *bits, uint32_t bit);

/* mub_bits_swap: give a stream the set's block, both its length and its capacity being the set's size. Nothing goes
 * the other way: the set keeps its fields, so that both records have the same block.
 *   bits     clear it with mub_bits_init (or else the stream with mub_stream_init) before the other is used on
 *   stream   its old block is forgotten, not released */
MUB_API void mub_bits_swap(mub_bits *bits, mub_stream *stream);

#ifdef __cplusplus
}
#endif

#endif
