// The implementations of the CRC-32 register. checksum() in crc32.cpp, key_hash() and hash_folded() choose
// one at run time, by the processor's features; the tests run all that the processor supports.
//
// Invariants:
//   1. All variants return the same for the same arguments, and read only the `length` bytes.
//   2. The result depends on the bytes alone, not on their alignment or the machine's byte order.
//
// Threads: there is no state but tables that are computed at compile time.
#ifndef MUB_CRC32_CRC32_VARIANTS_H
#define MUB_CRC32_CRC32_VARIANTS_H

#include <cstdint>

#if defined(__x86_64__)
#define MUB_CRC_X86 1
#else
#define MUB_CRC_X86 0
#endif

namespace mub::crc {

// The register after `length` >= 1 bytes. `inversion` is xored into it at the start and at the end: 0 gives
// the hash of a key, all ones give the checksum.
using ChecksumFn = uint32_t (*)(uint32_t inversion, const uint8_t *bytes, int64_t length);

// Slicing by 16: sixteen independent table look-ups per sixteen bytes, on any processor.
uint32_t checksum_sliced(uint32_t inversion, const uint8_t *bytes, int64_t length);

#if MUB_CRC_X86
// Carry-less multiplication, in 128-bit or in 512-bit registers.
uint32_t checksum_folded_128(uint32_t inversion, const uint8_t *bytes, int64_t length);
uint32_t checksum_folded_512(uint32_t inversion, const uint8_t *bytes, int64_t length);

// The fastest of these for inversion = 0, with the shortest path for keys; requires can_fold_128().
uint32_t hash_folded(const uint8_t *bytes, int64_t length);

// The processor's features are bits of a word that the compiler's runtime initialises at load time.
inline bool can_fold_128() { return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1"); }

inline bool can_fold_512() {
  return can_fold_128() && __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("avx512f") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}
#endif

struct Variant {
  const char *name;
  bool (*supported)();
  ChecksumFn run;
};

inline constexpr Variant kVariants[] = {
    {"sliced", [] { return true; }, checksum_sliced},
#if MUB_CRC_X86
    {"folded_128", can_fold_128, checksum_folded_128},
    {"folded_512", can_fold_512, checksum_folded_512},
#endif
};

}  // namespace mub::crc

#endif
