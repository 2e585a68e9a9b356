// The CRC-32 register (reflected polynomial 0xEDB88320) and the hash of byte-string keys made from it.
#ifndef MUB_CORE_CRC32_H
#define MUB_CORE_CRC32_H

#include <cstdint>

namespace mub {

// The register after `length` more bytes; a length below 1 leaves it.
uint32_t crc_register(uint32_t crc, const void *bytes, int64_t length);

// The hash of a key: the register started at 0 and not inverted. A length below 1 gives 0.
uint32_t key_hash(const void *bytes, int64_t length);

// The same with every byte passed through tolower first.
uint32_t key_hash_nocase(const void *bytes, int64_t length);

}  // namespace mub

#endif
