// Emulates CRC-32 with 512-bit registers on processors without them: compiles the library's source again with
// a type of four 128-bit registers.
#include "support/wide_crc32.h"

#if MUB_CRC_X86

#include <immintrin.h>

#include <cstring>

namespace {

struct Wide {
  __m128i part[4];
};

Wide exclusive_or(Wide a, const Wide &b) {
  for (int i = 0; i < 4; ++i) a.part[i] = _mm_xor_si128(a.part[i], b.part[i]);
  return a;
}
Wide exclusive_or_of_three(const Wide &a, const Wide &b, const Wide &c, int operation) {
  return operation == 0x96 ? exclusive_or(exclusive_or(a, b), c) : Wide{};
}
template <int kHalves>
__attribute__((target("pclmul"))) Wide products(Wide a, const Wide &b) {
  for (int i = 0; i < 4; ++i) a.part[i] = _mm_clmulepi64_si128(a.part[i], b.part[i], kHalves);
  return a;
}
// Bytes not in the mask are not accessed.
Wide load_masked(uint64_t mask, const void *bytes) {
  uint8_t loaded[sizeof(Wide)] = {};
  for (size_t i = 0; i < sizeof loaded; ++i) {
    if ((mask >> i & 1) != 0) loaded[i] = static_cast<const uint8_t *>(bytes)[i];
  }
  Wide wide;
  std::memcpy(&wide, loaded, sizeof wide);
  return wide;
}

}  // namespace

#undef _mm512_clmulepi64_epi128
#undef _mm512_ternarylogic_epi64
#undef _mm512_maskz_extracti32x4_epi32
#define __m512i Wide
#define _mm512_clmulepi64_epi128(a, b, halves) products<halves>(a, b)
#define _mm512_ternarylogic_epi64 exclusive_or_of_three
#define _mm512_xor_si512 exclusive_or
#define _mm512_loadu_si512(bytes) load_masked(~uint64_t{0}, bytes)
#define _mm512_maskz_loadu_epi8 load_masked
#define _mm512_maskz_extracti32x4_epi32(mask, wide, index) ((wide).part[index])
#define _mm512_maskz_broadcast_i32x4(mask, v) (Wide{{v, v, v, v}})
#define _mm512_zextsi128_si512(v) (Wide{{v}})
#define _mm512_setzero_si512() (Wide{})
#define MUB_TARGET_512 MUB_TARGET_128
#define checksum_folded_128 emulated_folded_128
#define checksum_folded_512 emulated_folded_512
#define hash_folded emulated_hash_folded
#include "crc32/crc32_x86.cpp"

#endif
