// Allocation. All memory comes from malloc, which programs and tests may replace; apart from mub_malloc,
// nothing else calls it. The products of counts and item sizes are checked for overflow here.
#ifndef MUB_BASE_ALLOC_H
#define MUB_BASE_ALLOC_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace mub {

// Allocates `count` items of `item_bytes` each, uninitialised. Returns nullptr if an argument is negative,
// the size exceeds PTRDIFF_MAX, or memory runs out.
inline void *allocate(int64_t count, int64_t item_bytes) {
  ptrdiff_t size_bytes;
  if (count < 0 || item_bytes < 0 || __builtin_mul_overflow(count, item_bytes, &size_bytes)) return nullptr;
  return std::malloc(static_cast<size_t>(size_bytes));
}

// The same, zero-filled. Compilers merge malloc and memset into a call of calloc. The empty asm statement
// prevents this by hiding where the block comes from; unlike -fno-builtin-malloc, it also works under
// link-time optimisation and in projects that compile these sources with their own flags. Static analysers
// would report the hidden block as leaked.
inline void *allocate_zeroed(int64_t count, int64_t item_bytes) {
  void *block = allocate(count, item_bytes);
#ifndef __clang_analyzer__
  __asm__("" : "+r"(block));
#endif
  if (block != nullptr) std::memset(block, 0, static_cast<size_t>(count * item_bytes));
  return block;
}

inline void release(void *block) { std::free(block); }

// Returns a new block of `count` items: the `old_count` items of `old`, then zeros. Releases `old`, which may
// be null. If memory runs out, returns nullptr and leaves `old` as it is. This is not realloc, because
// callers of the library may rely on the address changing.
inline void *regrown(void *old, int64_t old_count, int64_t count, int64_t item_bytes) {
  if (old == nullptr) return allocate_zeroed(count, item_bytes);
  void *block = allocate(count, item_bytes);
  if (block == nullptr) return nullptr;
  const auto old_bytes = static_cast<size_t>(old_count * item_bytes);
  std::memcpy(block, old, old_bytes);
  std::memset(static_cast<char *>(block) + old_bytes, 0, static_cast<size_t>(count * item_bytes) - old_bytes);
  release(old);
  return block;
}

}  // namespace mub

#endif
