// The hash of byte-string keys and of the 16-byte keys of mub_hasht: the CRC-32 register (reflected,
// polynomial 0xEDB88320) after the bytes of the key, computed by the fastest implementation that the
// processor supports. crc32_variants.h lists these.
#ifndef MUB_CRC32_CRC32_H
#define MUB_CRC32_CRC32_H

#include <cstdint>

#include "bytes/bytes.h"
#include "crc32/crc32_variants.h"

namespace mub {

// The hash of a key. The register starts at 0 and is not inverted at the end: leading zero bytes do not
// change the hash. Returns 0 if the length is below 1.
inline uint32_t key_hash(const void *bytes, int64_t length) {
  if (length < 1) return 0;
#if MUB_CRC_X86
  if (crc::can_fold_128()) return crc::hash_folded(bytes::as_bytes(bytes), length);
#endif
  return crc::checksum_sliced(0, bytes::as_bytes(bytes), length);
}

// The same, with every byte passed through tolower first.
uint32_t key_hash_nocase(const void *bytes, int64_t length);

}  // namespace mub

#endif
