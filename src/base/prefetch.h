// Prefetching: loading memory into the cache before it is used.
#ifndef MUB_BASE_PREFETCH_H
#define MUB_BASE_PREFETCH_H

#include <cstdint>

namespace mub {

constexpr int64_t kCacheLineBytes = 64;

// The address need not be valid. The empty asm statement counts as a side effect: without it, compilers drop
// calls of functions that do nothing but prefetch.
inline void prefetch(const void *address) {
  __builtin_prefetch(address);
  __asm__ volatile("");
}

// Prefetches a block: all but perhaps the last cache line, if the block does not begin at the start of one.
inline void prefetch(const void *block, int64_t size_bytes) {
  const auto *bytes = static_cast<const char *>(block);
  for (int64_t at = 0; at < size_bytes; at += kCacheLineBytes) prefetch(bytes + at);
}

}  // namespace mub

#endif
