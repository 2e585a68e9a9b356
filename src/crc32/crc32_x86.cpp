// CRC-32 by carry-less multiplication.
//
// Bytes are a polynomial over GF(2); the register after them, started at 0, is that polynomial times x^32
// modulo P. Loaded little-endian, bits are in the reflected order of the register: the first bit has the
// highest degree. Leading zero bytes change nothing, so a run of any length is split, from its end, into
// 16-byte blocks:
//
//        first block, zeros in front              last block
//     [ 0 0 0 0 0 b0 b1 … ] [ L ······ H ] … [ L ······ H ]          each block is L * x^64 + H
//          |          |        |        |       |        |
//       * x^(128i+96) |     * x^224  * x^160  * x^96   * x^32        mod P: constants of 32 bits (kPowers)
//       …        * x^(128i+32) …
//          └──────────┴────────┴── xor ─┴───────┴────────┘
//                               |
//                        V, of 96 bits, congruent to the result
//
// All products are independent of each other, so that they overlap in the processor's pipeline; runs of up to
// 32 blocks (kShortBytes) are computed in this way. V is reduced by Barrett's method: with A its upper 64
// bits, q = floor(A * x^32 / P) = floor(A * floor(x^96 / P) / x^64) is exact for polynomials, and the result
// is the low 32 bits of V + q * P.
//
// Longer runs are folded into 4 accumulators, of 16 or of 64 bytes: multiplied by x^512 (or x^2048) mod P, an
// accumulator is in the place of the bytes that come 64 (or 256) later, and is xored with them. At the end,
// the accumulators are themselves a short run.
//
// In the product of reflected words of 64 and 33 bits, bit k has the degree 95 - k, as V requires. Folding
// requires the degrees of a 128-bit block, 127 - k for bit k, and so its constants have exponents lower by
// 32.
#include "crc32/crc32_variants.h"

#if MUB_CRC_X86

#include <immintrin.h>

#include "bytes/bytes.h"
#include "crc32/crc32_math.h"

// The small functions are steps of one calculation; gcc would not inline all of them by itself.
#define MUB_ALWAYS_INLINE inline __attribute__((always_inline))
#define MUB_TARGET_128 __attribute__((target("pclmul,sse4.1")))
#if !defined(MUB_TARGET_512)  // a test that emulates its instructions defines it
#define MUB_TARGET_512 __attribute__((target("pclmul,sse4.1,vpclmulqdq,avx512f,avx512bw,avx512vl")))
#endif

namespace mub::crc {
namespace {

// x^exponent mod P as the 33-bit factor of a product: its bit 0 would be x^32.
constexpr uint64_t factor(int exponent) { return uint64_t{power_of_x(exponent)} << 1; }

constexpr int64_t kBlockBytes = 16;
constexpr int64_t kWideBytes = 4 * kBlockBytes;
constexpr int kShortBlocks = kShortBytes / kBlockBytes;

// The factors of both halves of each block of a short run. The last pair is that of the run's last block.
struct Powers {
  uint64_t of_block[kShortBlocks][2];
};

constexpr Powers make_powers() {
  Powers powers{};
  for (int block = 0; block < kShortBlocks; ++block) {
    const int bits_after = 128 * (kShortBlocks - 1 - block);
    powers.of_block[block][0] = factor(bits_after + 96);
    powers.of_block[block][1] = factor(bits_after + 32);
  }
  return powers;
}

alignas(64) constexpr Powers kPowers = make_powers();

// The factors that move a block forward by 4 blocks of 16 or of 64 bytes.
alignas(16) constexpr uint64_t kFold128[2] = {factor(512 + 32), factor(512 - 32)};
alignas(16) constexpr uint64_t kFold512[2] = {factor(2048 + 32), factor(2048 - 32)};

// The two factors of the Barrett reduction; P itself has 33 bits.
alignas(16) constexpr uint64_t kBarrett[2] = {quotient_of_x96(), (uint64_t{kPolynomial} << 1) | 1};

MUB_TARGET_128 MUB_ALWAYS_INLINE __m128i load(const void *bytes) {
  return _mm_loadu_si128(static_cast<const __m128i *>(bytes));
}

MUB_TARGET_128 MUB_ALWAYS_INLINE __m128i as_block(uint64_t low_half) {
  return _mm_cvtsi64_si128(static_cast<long long>(low_half));
}

// Both halves of a block times their factors.
MUB_TARGET_128 MUB_ALWAYS_INLINE __m128i times(__m128i block, __m128i factors) {
  return _mm_xor_si128(_mm_clmulepi64_si128(block, factors, 0x00),
                       _mm_clmulepi64_si128(block, factors, 0x11));
}

MUB_TARGET_128 MUB_ALWAYS_INLINE uint32_t reduced(__m128i v) {
  const __m128i barrett = load(kBarrett);
  // GCOVR_EXCL_BR_START: the source has no branch here
  const __m128i q = _mm_clmulepi64_si128(v, barrett, 0x00);
  const __m128i qp = _mm_clmulepi64_si128(q, barrett, 0x10);
  return static_cast<uint32_t>(_mm_extract_epi32(_mm_xor_si128(qp, v), 2));
  // GCOVR_EXCL_BR_STOP
}

// 1 to 8 bytes at the end of a word, by two loads that may overlap (or three bytes, some the same).
inline uint64_t right_aligned_word(const uint8_t *bytes, int64_t length) {
  const int64_t free_bits = 8 * (8 - length);
  if (length >= 4) {
    const uint64_t first = bytes::load<uint32_t>(bytes);
    const uint64_t last = bytes::load<uint32_t>(bytes + length - 4);
    return last << 32 | first << free_bits;
  }
  const uint64_t middle = uint64_t{bytes[length / 2]} << (8 * (length / 2));
  return (uint64_t{bytes[length - 1]} << 56) | ((bytes[0] | middle) << free_bits);
}

// The first 1 to 16 of 16 readable bytes, moved to the end of a block of zeros. The shuffle writes 0 for an
// index with the top bit set.
MUB_TARGET_128 MUB_ALWAYS_INLINE __m128i right_aligned_block(const uint8_t *bytes, int64_t length) {
  constexpr uint8_t z = 0x80;
  alignas(32) static constexpr uint8_t kShifts[32] = {z, z, z, z, z, z, z, z, z, z, z,  z,  z,  z,  z,  z,
                                                      0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  return _mm_shuffle_epi8(load(bytes), load(kShifts + length));
}

// The end of the factors: index -1 has those of a run's last block.
constexpr const uint64_t (*kPowersEnd)[2] = kPowers.of_block + kShortBlocks;

// The last block of a run: its second half is already in the place of its product with x^32.
MUB_TARGET_128 MUB_ALWAYS_INLINE __m128i times_last(__m128i block) {
  return _mm_xor_si128(_mm_clmulepi64_si128(block, load(kPowersEnd[-1]), 0x00), _mm_srli_si128(block, 8));
}

// 9 to 16 and 17 to 24 bytes: the 1 to 8 bytes before the last one or two words are multiplied separately.
MUB_TARGET_128 MUB_ALWAYS_INLINE uint32_t hash_of_two_words(const uint8_t *bytes, int64_t length) {
  const __m128i first = as_block(bytes::load<uint64_t>(bytes) << (8 * (16 - length)));
  const __m128i last = as_block(bytes::load<uint64_t>(bytes + length - 8));
  return reduced(_mm_xor_si128(_mm_clmulepi64_si128(first, load(kPowersEnd[-1]), 0x00), last));
}

MUB_TARGET_128 MUB_ALWAYS_INLINE uint32_t hash_of_three_words(const uint8_t *bytes, int64_t length) {
  const __m128i first = as_block(bytes::load<uint64_t>(bytes) << (8 * (24 - length)));
  const __m128i rest = times_last(load(bytes + length - kBlockBytes));
  return reduced(_mm_xor_si128(_mm_clmulepi64_si128(first, load(kPowersEnd[-2]), 0x10), rest));
}

// 25 to 32 bytes.
MUB_TARGET_128 MUB_ALWAYS_INLINE uint32_t hash_of_two_blocks(const uint8_t *bytes, int64_t length) {
  const __m128i first = right_aligned_block(bytes, length - kBlockBytes);
  const __m128i rest = times_last(load(bytes + length - kBlockBytes));
  return reduced(_mm_xor_si128(times(first, load(kPowersEnd[-2])), rest));
}

// 1 to 32 bytes, the length of most keys.
constexpr int64_t kTinyBytes = 32;

MUB_TARGET_128 MUB_ALWAYS_INLINE uint32_t hash_tiny(const uint8_t *bytes, int64_t length) {
  if (length <= 8) return reduced(as_block(right_aligned_word(bytes, length)));
  if (length <= 16) return hash_of_two_words(bytes, length);
  if (length <= 24) return hash_of_three_words(bytes, length);
  return hash_of_two_blocks(bytes, length);
}

// 17 to kShortBytes bytes.
MUB_TARGET_128 uint32_t hash_of_blocks(const uint8_t *bytes, int64_t length) {
  const int64_t first = ((length - 1) & (kBlockBytes - 1)) + 1;
  const auto *powers = kPowersEnd - 1 - (length - first) / kBlockBytes;
  const uint8_t *const last = bytes + length - kBlockBytes;
  __m128i v = times(right_aligned_block(bytes, first), load(powers));
  for (bytes += first; bytes != last; bytes += kBlockBytes) {
    v = _mm_xor_si128(v, times(load(bytes), load(++powers)));
  }
  return reduced(_mm_xor_si128(v, times_last(load(last))));
}

MUB_TARGET_512 MUB_ALWAYS_INLINE __m512i load_512(const void *bytes) { return _mm512_loadu_si512(bytes); }

// Both halves of four blocks times their factors, xor `other`.
MUB_TARGET_512 MUB_ALWAYS_INLINE __m512i times_xor(__m512i blocks, __m512i factors, __m512i other) {
  constexpr int kXorOfThree = 0x96;
  return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(blocks, factors, 0x00),
                                   _mm512_clmulepi64_epi128(blocks, factors, 0x11), other, kXorOfThree);
}

// Masked forms with full masks, here and for the broadcast: in the plain ones, gcc 12 warns of an
// uninitialised variable. They compile to the same instructions.
template <int kIndex>
MUB_TARGET_512 MUB_ALWAYS_INLINE __m128i quarter(__m512i v) {
  return _mm512_maskz_extracti32x4_epi32(0xF, v, kIndex);
}

MUB_TARGET_512 MUB_ALWAYS_INLINE uint32_t reduced_quarters(__m512i v) {
  return reduced(_mm_xor_si128(_mm_xor_si128(quarter<0>(v), quarter<1>(v)),
                               _mm_xor_si128(quarter<2>(v), quarter<3>(v))));
}

// 1 to 64 bytes at the end of four blocks of zeros. The load begins before the bytes, but does not access
// what its mask excludes, so that memory need not be readable there.
MUB_TARGET_512 MUB_ALWAYS_INLINE __m512i right_aligned_512(const uint8_t *bytes, int64_t length) {
  const int64_t zeros = kWideBytes - length;
  return _mm512_maskz_loadu_epi8(~uint64_t{0} << zeros, bytes - zeros);
}

// 17 to kShortBytes bytes.
MUB_TARGET_512 MUB_ALWAYS_INLINE uint32_t hash_of_blocks_512(const uint8_t *bytes, int64_t length) {
  const int64_t first = ((length - 1) & (kWideBytes - 1)) + 1;
  const uint8_t *const end = bytes + length;
  const auto *powers = kPowersEnd - 4 - (length - first) / kBlockBytes;
  __m512i v = times_xor(right_aligned_512(bytes, first), load_512(powers), _mm512_setzero_si512());
  for (bytes += first; bytes != end; bytes += kWideBytes) {
    powers += 4;
    v = times_xor(load_512(bytes), load_512(powers), v);
  }
  return reduced_quarters(v);
}

// More than kShortBytes bytes.
MUB_TARGET_128 uint32_t register_long_128(uint32_t start, const uint8_t *bytes, int64_t length) {
  constexpr int64_t kStep = 4 * kBlockBytes;
  const uint8_t *const end = bytes + length;
  const int64_t first = length % kStep;
  uint32_t crc = start;
  if (first > 0) crc ^= checksum_folded_128(start, bytes, first);
  bytes += first;
  __m128i a = _mm_xor_si128(load(bytes), as_block(crc));
  __m128i b = load(bytes + 16);
  __m128i c = load(bytes + 32);
  __m128i d = load(bytes + 48);
  const __m128i fold = load(kFold128);
  for (bytes += kStep; bytes != end; bytes += kStep) {
    a = _mm_xor_si128(times(a, fold), load(bytes));
    b = _mm_xor_si128(times(b, fold), load(bytes + 16));
    c = _mm_xor_si128(times(c, fold), load(bytes + 32));
    d = _mm_xor_si128(times(d, fold), load(bytes + 48));
  }
  const auto *powers = kPowersEnd - 4;
  const __m128i ab = _mm_xor_si128(times(a, load(powers)), times(b, load(powers + 1)));
  const __m128i cd = _mm_xor_si128(times(c, load(powers + 2)), times(d, load(powers + 3)));
  return reduced(_mm_xor_si128(ab, cd));
}

MUB_TARGET_512 uint32_t register_long_512(uint32_t start, const uint8_t *bytes, int64_t length) {
  constexpr int64_t kStep = 4 * kWideBytes;
  const uint8_t *const end = bytes + length;
  const int64_t first = length % kStep;
  uint32_t crc = start;
  if (first > 0) crc ^= checksum_folded_512(start, bytes, first);
  bytes += first;
  __m512i a = _mm512_xor_si512(load_512(bytes), _mm512_zextsi128_si512(as_block(crc)));
  __m512i b = load_512(bytes + 64);
  __m512i c = load_512(bytes + 128);
  __m512i d = load_512(bytes + 192);
  const __m512i fold = _mm512_maskz_broadcast_i32x4(0xFFFF, load(kFold512));
  for (bytes += kStep; bytes != end; bytes += kStep) {
    a = times_xor(a, fold, load_512(bytes));
    b = times_xor(b, fold, load_512(bytes + 64));
    c = times_xor(c, fold, load_512(bytes + 128));
    d = times_xor(d, fold, load_512(bytes + 192));
  }
  const auto *powers = kPowersEnd - 16;
  const __m512i ab =
      times_xor(a, load_512(powers), times_xor(b, load_512(powers + 4), _mm512_setzero_si512()));
  return reduced_quarters(times_xor(c, load_512(powers + 8), times_xor(d, load_512(powers + 12), ab)));
}

// What `inversion`, at the start and at the end, changes in the hash of a short run.
uint32_t inversion_effect(uint32_t inversion, int64_t length) {
  return kInversionEffect.crc[length] & inversion;
}

}  // namespace

MUB_TARGET_128 uint32_t checksum_folded_128(uint32_t inversion, const uint8_t *bytes, int64_t length) {
  if (length <= kTinyBytes) return hash_tiny(bytes, length) ^ inversion_effect(inversion, length);
  if (length <= kShortBytes) return hash_of_blocks(bytes, length) ^ inversion_effect(inversion, length);
  return register_long_128(inversion, bytes, length) ^ inversion;
}

MUB_TARGET_512 uint32_t checksum_folded_512(uint32_t inversion, const uint8_t *bytes, int64_t length) {
  if (length <= kTinyBytes) return hash_tiny(bytes, length) ^ inversion_effect(inversion, length);
  if (length <= kShortBytes) return hash_of_blocks_512(bytes, length) ^ inversion_effect(inversion, length);
  return register_long_512(inversion, bytes, length) ^ inversion;
}

MUB_TARGET_128 uint32_t hash_folded(const uint8_t *bytes, int64_t length) {
  if (length <= kTinyBytes) return hash_tiny(bytes, length);
  return can_fold_512() ? checksum_folded_512(0, bytes, length) : checksum_folded_128(0, bytes, length);
}

}  // namespace mub::crc

#endif
