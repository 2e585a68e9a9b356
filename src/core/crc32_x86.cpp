// CRC-32 by carry-less multiplication.
//
// Bytes are a polynomial over GF(2); the register after them, started at 0, is that polynomial times x^32 modulo P.
// Loaded little-endian, bits stand in the reflected order of the register: the first bit has the highest degree.
// So leading zero bytes change nothing, and a run of any length is taken right-aligned, in 16-byte blocks:
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
// All products are independent, so up to 16 blocks (kShortBytes) cost little more than one. V is reduced after
// Barrett: with A its upper 64 bits, q = floor(A * x^32 / P) = floor(A * floor(x^96 / P) / x^64) is exact for
// polynomials, and the result is the low 32 bits of V + q * P.
//
// Longer runs keep 4 accumulators, of 16 or of 64 bytes, and move them on together: an accumulator that is
// multiplied by x^512 (or x^2048) mod P takes in the bytes that come 64 (or 256) later. At the end they are short
// runs themselves, and go the way above.
//
// Multiplying reflected words of 64 and 33 bits gives bit k the degree 95 - k: V in its place. In the folding, where
// the places of a 128-bit block are wanted, bit k of degree 127 - k, the constants are lower by 32.
#include "core/crc32_variants.h"

#if MUB_CRC_X86

#include <immintrin.h>

#include <cstring>

#include "core/crc32_math.h"

#define MUB_TARGET_128 __attribute__((target("pclmul,sse4.1")))
#define MUB_TARGET_512 __attribute__((target("pclmul,sse4.1,vpclmulqdq,avx512f,avx512vl")))

namespace mub::crc {
namespace {

// x^exponent mod P as the 33-bit factor of a product: its bit 0 would be x^32.
constexpr uint64_t factor(int exponent) { return uint64_t{power_of_x(exponent)} << 1; }

constexpr int64_t kBlockBytes = 16;
constexpr int kShortBlocks = kShortBytes / kBlockBytes;

// The factors of both halves of each block of a short run; the run's last block has the last pair.
struct Powers {
  uint64_t of_block[kShortBlocks][2];
};

constexpr Powers make_powers() {
  Powers powers{};
  for (int block = 0; block < kShortBlocks; ++block) {
    const int bits_behind = 128 * (kShortBlocks - 1 - block);
    powers.of_block[block][0] = factor(bits_behind + 96);
    powers.of_block[block][1] = factor(bits_behind + 32);
  }
  return powers;
}

alignas(64) constexpr Powers kPowers = make_powers();

// Moves a block on by 4 blocks of 16 or of 64 bytes.
alignas(16) constexpr uint64_t kFold128[2] = {factor(512 + 32), factor(512 - 32)};
alignas(16) constexpr uint64_t kFold512[2] = {factor(2048 + 32), factor(2048 - 32)};

// The two factors of the Barrett reduction; P itself has 33 bits.
alignas(16) constexpr uint64_t kBarrett[2] = {quotient_of_x96(), (uint64_t{kPolynomial} << 1) | 1};

MUB_TARGET_128 inline __m128i load(const void *bytes) {
  return _mm_loadu_si128(static_cast<const __m128i *>(bytes));
}

template <class Word>
uint64_t load_word(const uint8_t *bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

MUB_TARGET_128 inline __m128i as_block(uint64_t low_half) {
  return _mm_cvtsi64_si128(static_cast<long long>(low_half));
}

// Both halves of a block times their factors.
MUB_TARGET_128 inline __m128i times(__m128i block, __m128i factors) {
  return _mm_xor_si128(_mm_clmulepi64_si128(block, factors, 0x00),
                       _mm_clmulepi64_si128(block, factors, 0x11));
}

MUB_TARGET_128 inline uint32_t reduced(__m128i v) {
  const __m128i barrett = load(kBarrett);
  const __m128i q = _mm_clmulepi64_si128(v, barrett, 0x00);
  const __m128i qp = _mm_clmulepi64_si128(q, barrett, 0x10);
  return static_cast<uint32_t>(_mm_extract_epi32(_mm_xor_si128(qp, v), 2));
}

// 1 to 8 bytes at the end of a word, out of two loads that overlap (or three bytes that coincide).
inline uint64_t right_aligned_word(const uint8_t *bytes, int64_t length) {
  const int64_t free_bits = 8 * (8 - length);
  if (length >= 4) {
    return (load_word<uint32_t>(bytes + length - 4) << 32) | (load_word<uint32_t>(bytes) << free_bits);
  }
  const uint64_t middle = uint64_t{bytes[length / 2]} << (8 * (length / 2));
  return (uint64_t{bytes[length - 1]} << 56) | ((bytes[0] | middle) << free_bits);
}

// The first 1 to 16 of 16 readable bytes at the end of a block. Indexes with the top bit set give zeros.
MUB_TARGET_128 inline __m128i right_aligned_block(const uint8_t *bytes, int64_t length) {
  constexpr uint8_t z = 0x80;
  alignas(32) static constexpr uint8_t kShifts[32] = {z, z, z, z, z, z, z, z, z, z, z,  z,  z,  z,  z,  z,
                                                      0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  return _mm_shuffle_epi8(load(bytes), load(kShifts + length));
}

// 17 to kShortBytes bytes.
MUB_TARGET_128 inline uint32_t hash_blocks(const uint8_t *bytes, int64_t length) {
  const int64_t first = ((length - 1) & (kBlockBytes - 1)) + 1;
  const int64_t blocks_behind = (length - first) / kBlockBytes;
  const auto *powers = kPowers.of_block + kShortBlocks - 1 - blocks_behind;
  __m128i v = times(right_aligned_block(bytes, first), load(powers));
  bytes += first;
  for (int64_t i = 0; i < blocks_behind; ++i) {
    v = _mm_xor_si128(v, times(load(bytes + i * kBlockBytes), load(powers + 1 + i)));
  }
  return reduced(v);
}

// 1 to kShortBytes bytes.
MUB_TARGET_128 inline uint32_t hash_short(const uint8_t *bytes, int64_t length) {
  if (length > 16) return hash_blocks(bytes, length);
  if (length <= 8) return reduced(as_block(right_aligned_word(bytes, length)));
  const __m128i high = as_block(load_word<uint64_t>(bytes) << (8 * (16 - length)));
  const __m128i low = as_block(load_word<uint64_t>(bytes + length - 8));
  const __m128i last_powers = load(kPowers.of_block[kShortBlocks - 1]);
  return reduced(_mm_xor_si128(_mm_clmulepi64_si128(high, last_powers, 0x00), low));
}

// 0 to kShortBytes bytes.
MUB_TARGET_128 inline uint32_t register_short(uint32_t start, const uint8_t *bytes, int64_t length) {
  if (length == 0) return start;
  return hash_short(bytes, length) ^ (kOnesAfterZeros.crc[length] & start);
}

MUB_TARGET_512 inline __m512i load_512(const void *bytes) { return _mm512_loadu_si512(bytes); }

// Both halves of four blocks times their factors, xor `other`.
MUB_TARGET_512 inline __m512i times_xor(__m512i blocks, __m512i factors, __m512i other) {
  constexpr int kXorOfThree = 0x96;
  return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(blocks, factors, 0x00),
                                   _mm512_clmulepi64_epi128(blocks, factors, 0x11), other, kXorOfThree);
}

// Masked forms with full masks, here and for the broadcast: gcc 12 takes the plain ones for uses of an
// uninitialised variable. They compile to the same instructions.
template <int kIndex>
MUB_TARGET_512 inline __m128i quarter(__m512i v) {
  return _mm512_maskz_extracti32x4_epi32(0xF, v, kIndex);
}

MUB_TARGET_512 inline __m128i xor_of_quarters(__m512i v) {
  return _mm_xor_si128(_mm_xor_si128(quarter<0>(v), quarter<1>(v)),
                       _mm_xor_si128(quarter<2>(v), quarter<3>(v)));
}

}  // namespace

MUB_TARGET_128 uint32_t register_folded_128(uint32_t start, const uint8_t *bytes, int64_t length) {
  constexpr int64_t kStep = 4 * kBlockBytes;
  if (length <= kShortBytes) return register_short(start, bytes, length);
  const int64_t first = length % kStep;
  const uint32_t crc = register_short(start, bytes, first);
  const uint8_t *const end = bytes + length;
  bytes += first;
  __m128i a[4] = {load(bytes), load(bytes + 16), load(bytes + 32), load(bytes + 48)};
  a[0] = _mm_xor_si128(a[0], as_block(crc));
  const __m128i fold = load(kFold128);
  for (bytes += kStep; bytes != end; bytes += kStep) {
    for (int i = 0; i < 4; ++i) a[i] = _mm_xor_si128(times(a[i], fold), load(bytes + i * kBlockBytes));
  }
  __m128i v = _mm_setzero_si128();
  for (int i = 0; i < 4; ++i) {
    v = _mm_xor_si128(v, times(a[i], load(kPowers.of_block[kShortBlocks - 4 + i])));
  }
  return reduced(v);
}

MUB_TARGET_512 uint32_t register_folded_512(uint32_t start, const uint8_t *bytes, int64_t length) {
  constexpr int64_t kStep = 4 * 64;
  if (length < kStep) return register_short(start, bytes, length);
  const int64_t first = length % kStep;
  const uint32_t crc = register_short(start, bytes, first);
  const uint8_t *const end = bytes + length;
  bytes += first;
  __m512i a[4] = {load_512(bytes), load_512(bytes + 64), load_512(bytes + 128), load_512(bytes + 192)};
  a[0] = _mm512_xor_si512(a[0], _mm512_zextsi128_si512(as_block(crc)));
  const __m512i fold = _mm512_maskz_broadcast_i32x4(0xFFFF, load(kFold512));
  for (bytes += kStep; bytes != end; bytes += kStep) {
    for (int i = 0; i < 4; ++i) a[i] = times_xor(a[i], fold, load_512(bytes + i * 64));
  }
  __m512i v = _mm512_setzero_si512();
  for (int i = 0; i < 4; ++i) v = times_xor(a[i], load_512(kPowers.of_block[4 * i]), v);
  return reduced(xor_of_quarters(v));
}

MUB_TARGET_128 uint32_t hash_folded(const uint8_t *bytes, int64_t length) {
  if (length <= kShortBytes) return hash_short(bytes, length);
  return register_folded_128(0, bytes, length);
}

}  // namespace mub::crc

#endif
