// Little-endian integers of 1 to 8 bytes, and the functions that read and write them at a cursor in a stream.
//
//   data ──► [ ...... | field | ...... | spare ... ]
//                     ▲       ▲        length
//              position       position after reading or writing
//
// Invariants, for fields of a fixed width:
//   1. A field is read or written only if it lies wholly inside the content; otherwise it reads as 0.
//   2. The position advances in either case. It wraps around at 64 bits, and may be negative.
//   3. Reading and writing change neither the length nor the capacity.
//
// Threads: reading writes nothing but the caller's position.
#ifndef MUB_STREAM_CURSOR_H
#define MUB_STREAM_CURSOR_H

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "bytes/bytes.h"
#include "mub_stream.h"

namespace mub {

template <int kBytes>
using WordOf = std::conditional_t<
    kBytes == 1, uint8_t,
    std::conditional_t<kBytes == 2, uint16_t, std::conditional_t<kBytes == 4, uint32_t, uint64_t>>>;

template <class Word>
Word swapped_if_big_endian(Word word) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  constexpr int kUnusedBits = 64 - 8 * static_cast<int>(sizeof(Word));
  return static_cast<Word>(__builtin_bswap64(word) >> kUnusedBits);
#else
  return word;
#endif
}

// The largest power of two that is at most a width: a field of 3 bytes is moved as 2 and 1, one of 6 as 4 and
// 2.
constexpr int whole_word(int byte_count) {
  return byte_count == 8 ? 8 : byte_count >= 4 ? 4 : byte_count >= 2 ? 2 : 1;
}

template <int kBytes>
uint64_t load_little(const uint8_t *bytes) {
  constexpr int kWhole = whole_word(kBytes);
  const uint64_t low = swapped_if_big_endian(bytes::load<WordOf<kWhole>>(bytes));
  if constexpr (kWhole == kBytes)
    return low;
  else
    return low | load_little<kBytes - kWhole>(bytes + kWhole) << (8 * kWhole);
}

template <int kBytes>
void store_little(uint8_t *bytes, uint64_t value) {
  constexpr int kWhole = whole_word(kBytes);
  const auto low = swapped_if_big_endian(static_cast<WordOf<kWhole>>(value));
  std::memcpy(bytes, &low, kWhole);
  if constexpr (kWhole != kBytes) store_little<kBytes - kWhole>(bytes + kWhole, value >> (8 * kWhole));
}

// 1 to 8 bytes, as two words that may overlap: this needs no loop and no table.
inline uint64_t load_little(const uint8_t *bytes, int count) {
  if (count >= 4) return load_little<4>(bytes) | load_little<4>(bytes + count - 4) << (8 * (count - 4));
  if (count >= 2) return load_little<2>(bytes) | load_little<2>(bytes + count - 2) << (8 * (count - 2));
  return bytes[0];
}

inline void store_little(uint8_t *bytes, int count, uint64_t value) {
  if (count >= 4) {
    store_little<4>(bytes, value);
    return store_little<4>(bytes + count - 4, value >> (8 * (count - 4)));
  }
  if (count >= 2) {
    store_little<2>(bytes, value);
    return store_little<2>(bytes + count - 2, value >> (8 * (count - 2)));
  }
  store_little<1>(bytes, value);
}

namespace cursor {

// Returns the old position.
inline int64_t advance(int64_t *position, int64_t count) {
  const int64_t old_position = *position;
  *position = static_cast<int64_t>(static_cast<uint64_t>(old_position) + static_cast<uint64_t>(count));
  return old_position;
}

// How many bytes of content lie at and after the position; 0 if it is negative.
inline int64_t bytes_left(const mub_stream &stream, int64_t position) {
  return position < 0 || position >= stream.length ? 0 : stream.length - position;
}

template <int kBytes>
uint64_t read(const mub_stream &stream, int64_t *position) {
  const int64_t at = advance(position, kBytes);
  return bytes_left(stream, at) < kBytes ? 0 : load_little<kBytes>(stream.data + at);
}

template <int kBytes>
void write(mub_stream &stream, int64_t *position, uint64_t value) {
  const int64_t at = advance(position, kBytes);
  if (bytes_left(stream, at) >= kBytes) store_little<kBytes>(stream.data + at, value);
}

}  // namespace cursor
}  // namespace mub

#endif
