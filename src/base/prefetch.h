// Asking for memory ahead of its use.
#ifndef MUB_BASE_PREFETCH_H
#define MUB_BASE_PREFETCH_H

#include <cstdint>

namespace mub {

constexpr int64_t kCacheLineBytes = 64;

// Any address will do. The empty statement stands for an effect: calls of functions that only fetch would
// otherwise be taken for calls of functions that do nothing, and vanish.
inline void prefetch(const void *address) {
  __builtin_prefetch(address);
  __asm__ volatile("");
}

// The same for all of a block.
inline void prefetch(const void *block, int64_t size_bytes) {
  const auto *bytes = static_cast<const char *>(block);
  for (int64_t at = 0; at < size_bytes; at += kCacheLineBytes) prefetch(bytes + at);
}

}  // namespace mub

#endif
