// Comparing and searching counted bytes. Bytes compare as unsigned values; indexes are -1 where there is none; a
// count below 1 is an empty range, which is never read. Everything is inlined into comparers and key tests.
#ifndef MUB_CORE_BYTES_H
#define MUB_CORE_BYTES_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/letter_case.h"

namespace mub {

// The length of a narrow text: as given, or up to its NUL when negative; a NULL text has none.
inline int64_t measured(const void *text, int64_t length) {
  if (length >= 0) return length;
  return text == nullptr ? 0 : static_cast<int64_t>(std::strlen(static_cast<const char *>(text)));
}

namespace bytes {

template <class Word>
Word load(const void *bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

template <class Word>
void store(void *bytes, Word word) {
  std::memcpy(bytes, &word, sizeof word);
}

// Copies as many bytes as one word to two have, by two words that overlap.
template <class Word>
void move_two(uint8_t *to, const uint8_t *from, int64_t count) {
  const auto first = load<Word>(from);
  const auto last = load<Word>(from + count - static_cast<int64_t>(sizeof(Word)));
  store(to, first);
  store(to + count - static_cast<int64_t>(sizeof(Word)), last);
}

struct Word128 {
  uint64_t parts[2];
};
struct Word256 {
  uint64_t parts[4];
};

// memmove for what is mostly short: up to 64 bytes take no call. All loads come before the stores.
inline void move(void *destination, const void *source, int64_t count) {
  auto *to = static_cast<uint8_t *>(destination);
  const auto *from = static_cast<const uint8_t *>(source);
  if (count > 64) {
    std::memmove(to, from, static_cast<size_t>(count));
  } else if (count >= 32) {
    move_two<Word256>(to, from, count);
  } else if (count >= 16) {
    move_two<Word128>(to, from, count);
  } else if (count >= 8) {
    move_two<uint64_t>(to, from, count);
  } else if (count >= 4) {
    move_two<uint32_t>(to, from, count);
  } else if (count >= 2) {
    move_two<uint16_t>(to, from, count);
  } else if (count == 1) {
    *to = *from;
  }
}

inline const uint8_t *as_bytes(const void *data) { return static_cast<const uint8_t *>(data); }

// Ranges from here on are first compared by memcmp, a stretch at a time; word by word would take twice as long.
constexpr int64_t kStretch = 256;

// How many leading bytes are certainly equal: whole stretches, or all of them.
__attribute__((noinline)) inline int64_t equal_stretches(const uint8_t *a, const uint8_t *b, int64_t count) {
  for (int64_t i = 0; i < count; i += kStretch) {
    if (std::memcmp(a + i, b + i, static_cast<size_t>(std::min(kStretch, count - i))) != 0) return i;
  }
  return count;
}

// The shorter of two ranges that agree so far sorts first; the difference of the lengths is cut to 32 bits.
inline int length_difference(int64_t a_length, int64_t b_length) {
  const uint64_t difference = static_cast<uint64_t>(a_length) - static_cast<uint64_t>(b_length);
  return static_cast<int>(static_cast<uint32_t>(difference));
}

// Compares word by word, which for keys is faster than a call of memcmp; `settle` gives the result for the first
// two words that differ. The last word overlaps bytes already known to be equal, so that none needs a loop.
template <class Settle>
int compare_words(const void *a, int64_t a_length, const void *b, int64_t b_length, Settle settle) {
  const uint8_t *left = as_bytes(a);
  const uint8_t *right = as_bytes(b);
  const int64_t common = std::min(a_length, b_length);
  if (common >= 8) {
    int64_t i = common < kStretch ? 0 : equal_stretches(left, right, common);
    for (; i < common - 8; i += 8) {
      const auto x = load<uint64_t>(left + i);
      const auto y = load<uint64_t>(right + i);
      if (x != y) return settle(x, y);
    }
    const auto x = load<uint64_t>(left + common - 8);
    const auto y = load<uint64_t>(right + common - 8);
    return x != y ? settle(x, y) : length_difference(a_length, b_length);
  }
  for (int64_t i = 0; i < common; ++i) {
    if (left[i] != right[i]) return left[i] - right[i];
  }
  return length_difference(a_length, b_length);
}

// A word with its first byte in memory as the highest, so that words order as their bytes do.
inline uint64_t first_byte_highest(uint64_t word) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  return __builtin_bswap64(word);
#else
  return word;
#endif
}

// The difference of the first unequal bytes, else of the lengths.
inline int compare(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  return compare_words(a, a_length, b, b_length, [](uint64_t x, uint64_t y) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    const int shift = __builtin_ctzll(x ^ y) & 56;
#else
    const int shift = 56 - (__builtin_clzll(x ^ y) & 56);
#endif
    return static_cast<int>(x >> shift & 0xFF) - static_cast<int>(y >> shift & 0xFF);
  });
}

// The sign of compare(), for those who need no more: a fifth faster.
inline int order(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  return compare_words(a, a_length, b, b_length, [](uint64_t x, uint64_t y) {
    return first_byte_highest(x) < first_byte_highest(y) ? -1 : 1;
  });
}

// compare() with letter case folded by the runtime's tolower, which sees each byte as an unsigned value.
inline int icompare(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  const uint8_t *left = as_bytes(a);
  const uint8_t *right = as_bytes(b);
  const int64_t common = std::min(a_length, b_length);
  const Lowering lower;
  for (int64_t i = 0; i < common;) {
    if (common - i >= 8 && load<uint64_t>(left + i) == load<uint64_t>(right + i)) {
      i += 8;
      continue;
    }
    const int difference = lower(left[i]) - lower(right[i]);
    if (difference != 0) return difference;
    ++i;
  }
  return length_difference(a_length, b_length);
}

// The bits in which the words at an offset differ.
inline uint64_t difference_at(const uint8_t *a, const uint8_t *b, int64_t offset) {
  return load<uint64_t>(a + offset) ^ load<uint64_t>(b + offset);
}

// Whether `count` bytes are equal; for keys, which are short. Overlapping words cover each range of lengths without
// a loop or a branch on the length, which would be mispredicted as often as not.
inline bool equal(const void *a, const void *b, int64_t count) {
  const uint8_t *left = as_bytes(a);
  const uint8_t *right = as_bytes(b);
  if (count >= 8) {
    const int64_t last = count - 8;
    uint64_t differing = difference_at(left, right, 0) | difference_at(left, right, last) |
                         difference_at(left, right, std::min<int64_t>(8, last)) |
                         difference_at(left, right, std::max<int64_t>(0, last - 8));
    for (int64_t i = 16; i < last - 8 && differing == 0; i += 8) differing = difference_at(left, right, i);
    return differing == 0;
  }
  if (count >= 4) {
    return load<uint32_t>(left) == load<uint32_t>(right) &&
           load<uint32_t>(left + count - 4) == load<uint32_t>(right + count - 4);
  }
  if (count < 1) return true;
  // Three bytes at most: the first, the middle and the last cover them.
  return left[0] == right[0] && left[count / 2] == right[count / 2] && left[count - 1] == right[count - 1];
}

inline int64_t index_of(const void *hit, const void *data) {
  return hit == nullptr ? -1 : as_bytes(hit) - as_bytes(data);
}

// The first byte equal to the low 8 bits of `byte`.
inline int64_t chr(const void *data, int64_t count, int byte) {
  if (count < 1) return -1;
  return index_of(std::memchr(data, byte & 0xFF, static_cast<size_t>(count)), data);
}

// The last one.
inline int64_t rchr(const void *data, int64_t count, int byte) {
  if (count < 1) return -1;
  return index_of(memrchr(data, byte & 0xFF, static_cast<size_t>(count)), data);
}

}  // namespace bytes
}  // namespace mub

#endif
