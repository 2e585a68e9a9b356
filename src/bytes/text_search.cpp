#include "bytes/text_search.h"

#include "bytes/bytes.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mub {
namespace bytes {

int64_t find_portable(const uint8_t *data, int64_t count, const uint8_t *pattern, int64_t length) {
  return index_of(memmem(data, static_cast<size_t>(count), pattern, static_cast<size_t>(length)), data);
}

namespace {

// For fewer positions than fill a vector: calling memmem takes longer than testing them one at a time.
int64_t find_among_few(const uint8_t *data, int64_t count, const uint8_t *pattern, int64_t length) {
  for (int64_t i = 0; i <= count - length; ++i) {
    if (data[i] == pattern[0] && equal(data + i, pattern, length)) return i;
  }
  return -1;
}

#if defined(__x86_64__)

// pair_matches: bit k is set where a[k] == x and b[k] == y. Each function has its own target attribute, so
// that it is inlined into the search for that target only.
struct Sse2 {
  static constexpr int64_t kWidth = kSse2Starts;
  static uint32_t pair_matches(const uint8_t *a, uint8_t x, const uint8_t *b, uint8_t y) {
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_and_si128(equal_to(a, x), equal_to(b, y))));
  }

 private:
  static __m128i equal_to(const uint8_t *bytes, uint8_t byte) {
    // Broadcast by multiplication: without SSSE3, compilers broadcast a byte through memory.
    const __m128i wanted = _mm_set1_epi32(static_cast<int>(byte * 0x01010101u));
    return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)), wanted);
  }
};

struct Avx2 {
  static constexpr int64_t kWidth = kAvx2Starts;
  __attribute__((target("avx2"))) static uint32_t pair_matches(const uint8_t *a, uint8_t x, const uint8_t *b,
                                                               uint8_t y) {
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_and_si256(equal_to(a, x), equal_to(b, y))));
  }

 private:
  __attribute__((target("avx2"))) static __m256i equal_to(const uint8_t *bytes, uint8_t byte) {
    return _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes)),
                             _mm256_set1_epi8(static_cast<char>(byte)));
  }
};

// The search by vectors that text_search.h describes. In most texts the second test is rarely reached.
template <class Vector>
class Search {
 public:
  Search(const uint8_t *data, int64_t count, const uint8_t *pattern, int64_t length)
      : data_(data), count_(count), pattern_(pattern), length_(length) {}

  // Two vectors per iteration. The last one overlaps its predecessor, so that nothing after the data is read.
  __attribute__((always_inline)) int64_t run() {
    constexpr int64_t kWidth = Vector::kWidth;
    const int64_t starts = count_ - length_ + 1;
    int64_t i = 0;
    for (; starts - i >= 2 * kWidth; i += 2 * kWidth) {
      const uint32_t near = candidates(i);
      const uint32_t far = candidates(i + kWidth);
      if ((near | far) == 0) continue;
      if (settled(i, near) || settled(i + kWidth, far)) return result_;
    }
    for (; i < starts; i += kWidth) {
      const int64_t last = std::min(i, starts - kWidth);
      if (settled(last, candidates(last))) return result_;
    }
    return -1;
  }

 private:
  __attribute__((always_inline)) uint32_t candidates(int64_t i) const {
    const int64_t last = length_ - 1;
    return Vector::pair_matches(data_ + i, pattern_[0], data_ + i + last, pattern_[last]);
  }

  // Whether the search ends at one of the starts i + k for which bit k of `matches` is set.
  __attribute__((always_inline)) bool settled(int64_t i, uint32_t matches) {
    if (matches == 0) return false;
    const int64_t middle = length_ / 2;
    matches &= Vector::pair_matches(data_ + i + 1, pattern_[1], data_ + i + middle, pattern_[middle]);
    for (; matches != 0; matches &= matches - 1) {
      const int64_t position = i + __builtin_ctz(matches);
      if (equal(data_ + position, pattern_, length_)) return finish(position);
      if (has_too_many_false_matches(position)) return finish(portable_from(position + 1));
    }
    return false;
  }

  bool finish(int64_t result) {
    result_ = result;
    return true;
  }

  // In a text that resembles the pattern everywhere, the time would be the product of both lengths. memmem
  // copes with such a text, but is slower in any other. Therefore each false match is charged with what its
  // comparison may have cost, and the search switches to memmem when the sum exceeds twice the bytes searched
  // plus kPatience. Values of kPatience from 64 to 4096 take the same time (replace_all and find_4_bytes in
  // bench/).
  bool has_too_many_false_matches(int64_t position) {
    constexpr int64_t kPatience = 512;
    false_work_ += 1 + length_ / 16;
    return false_work_ > kPatience + 2 * position;
  }

  int64_t portable_from(int64_t i) const {
    if (length_ > count_ - i) return -1;
    const int64_t found = find_portable(data_ + i, count_ - i, pattern_, length_);
    return found < 0 ? -1 : i + found;
  }

  const uint8_t *data_;
  int64_t count_;
  const uint8_t *pattern_;
  int64_t length_;
  int64_t false_work_ = 0;
  int64_t result_ = -1;
};

#endif

}  // namespace

#if defined(__x86_64__)

int64_t find_sse2(const uint8_t *data, int64_t count, const uint8_t *pattern, int64_t length) {
  return Search<Sse2>(data, count, pattern, length).run();
}

__attribute__((target("avx2"))) int64_t find_avx2(const uint8_t *data, int64_t count, const uint8_t *pattern,
                                                  int64_t length) {
  return Search<Avx2>(data, count, pattern, length).run();
}

#endif

int64_t find(const void *data, int64_t count, const void *pattern, int64_t length) {
  if (length <= 1) return chr(data, count, as_bytes(pattern)[0]);
  if (length > count) return -1;
  const uint8_t *text = as_bytes(data);
  const uint8_t *wanted = as_bytes(pattern);
  const int64_t starts = count - length + 1;
  if (starts < 16) return find_among_few(text, count, wanted, length);
#if defined(__x86_64__)
  static_assert(kSse2Starts <= 16);
  if (starts < kAvx2Starts || !__builtin_cpu_supports("avx2")) return find_sse2(text, count, wanted, length);
  return find_avx2(text, count, wanted, length);
#else
  return find_portable(text, count, wanted, length);
#endif
}

}  // namespace bytes
}  // namespace mub
