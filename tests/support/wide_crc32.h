// A software emulation of the variant of CRC-32 that the processor may not support.
#ifndef MUB_TESTS_SUPPORT_WIDE_CRC32_H
#define MUB_TESTS_SUPPORT_WIDE_CRC32_H

#include "crc32/crc32_variants.h"

namespace mub::crc {

#if MUB_CRC_X86
uint32_t emulated_folded_128(uint32_t inversion, const uint8_t *bytes, int64_t length);
uint32_t emulated_folded_512(uint32_t inversion, const uint8_t *bytes, int64_t length);
inline constexpr Variant kEmulated = {"emulated_folded_512", can_fold_128, emulated_folded_512};
#else
inline constexpr Variant kEmulated = kVariants[0];
#endif

}  // namespace mub::crc

#endif
