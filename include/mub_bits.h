/**
 * @defgroup bits mub_bits: a growable set of bits
 *
 * A growable set of bits, numbered from 0.
 *
 *     data ──►  byte 0             byte 1                                size bytes
 *              [0 1 2 3 4 5 6 7 | 8 9 10 11 12 13 14 15 | …          ]
 *               0x80 … 0x01       0x80 …         0x01
 *
 * Bit n lies in byte n >> 3, at position n & 7, where position 0 is the highest bit of the byte: its mask is
 * 0x80 >> position. Bits beyond the end read as clear. Setting or clearing a bit there enlarges the set, by
 * 1024 bytes or up to the byte needed if that is more. Growth moves the block; new bytes are 0. The set never
 * shrinks; mub_bits_term() releases the block.
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
  uint32_t size; /**< size in bytes; one further byte, always 0, is allocated after them */
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
 * @param[in] on        not 0: set the bit; 0: clear it
 * @return the new byte; the same byte if `position` is above 7
 */
MUB_API uint8_t mub_bits_set(uint32_t byte, uint32_t position, int on);

/**
 * Initialises an empty set; nothing is allocated.
 *
 * @param[out] bits  the set
 * @return the set
 * @owner the record belongs to the caller
 * @invalidates nothing
 */
MUB_API mub_bits *mub_bits_init(mub_bits *bits);

/**
 * Releases the block; the set is then empty and can be used again.
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
 * @param[in] bytes     the size needed
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
 * Checks whether the set is intact.
 *
 * Checks the size, and the 0 that ends the block.
 *
 * @param[in] bits   the set
 * @param[out] what  receives a sentence that names what is broken, or NULL if nothing is; may be NULL
 * @return 1 if the set is intact, else 0
 * @failure none; nothing is allocated
 * @owner the sentence belongs to the library and never changes
 * @nullable what
 */
MUB_API int mub_bits_verify(const mub_bits *bits, const char **what);

/**
 * Returns the size of the heap memory that the set holds.
 *
 * Counts the block, as requested from `malloc`; not the record itself.
 *
 * @param[in] bits  the set
 * @return the number of bytes
 * @failure none
 */
MUB_API int64_t mub_bits_memory_bytes(const mub_bits *bits);

/**
 * Sets or clears a bit.
 *
 * The set is enlarged to contain the bit, even if the bit is cleared.
 *
 * @param[in,out] bits  the set
 * @param[in] bit       the number of the bit, from 0
 * @param[in] on        not 0: set the bit; 0: clear it
 * @failure the set is unchanged if memory runs out, which is not reported; call mub_bits_expand() first to
 *   detect it
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
 * Passes the set's block to a stream, whose length and capacity become the size of the set.
 *
 * Despite the name, nothing is exchanged: the fields of the set are unchanged, so both records then refer to
 * the same block.
 *
 * @param[in,out] bits    the set; keep one of the two records, and reset the other before it is used again:
 *                        the set with mub_bits_init(), the stream with mub_stream_init()
 * @param[in,out] stream  receives the block; its old block is not released
 * @owner the block belongs to the record that is kept; the stream's old block is not released
 * @invalidates nothing
 */
MUB_API void mub_bits_swap(mub_bits *bits, mub_stream *stream);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
