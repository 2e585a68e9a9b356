// The library's only door to the heap: sizes are checked here, so that no caller multiplies or adds
// unchecked. All memory comes from malloc, which programs and tests may replace; besides mub_malloc nothing
// else calls it.
#ifndef MUB_BASE_ALLOC_H
#define MUB_BASE_ALLOC_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace mub {

// Room for `count` units of `unit_bytes`, its content undefined; nullptr when the size is negative, is more
// than the machine can address, or memory runs out.
inline void *allocate(int64_t count, int64_t unit_bytes) {
  ptrdiff_t size_bytes;
  if (count < 0 || unit_bytes < 0 || __builtin_mul_overflow(count, unit_bytes, &size_bytes)) return nullptr;
  return std::malloc(static_cast<size_t>(size_bytes));
}

// The same, zero-filled. Compilers make one call of calloc out of malloc and memset. The empty statement
// hides from them where the block comes from; unlike -fno-builtin-malloc it also holds in link-time
// optimisation and under the flags of a project that compiles these sources itself. It hides the block from
// static analysis, too, which would take it for lost.
inline void *allocate_zeroed(int64_t count, int64_t unit_bytes) {
  void *block = allocate(count, unit_bytes);
#ifndef __clang_analyzer__
  __asm__("" : "+r"(block));
#endif
  if (block != nullptr) std::memset(block, 0, static_cast<size_t>(count * unit_bytes));
  return block;
}

inline void release(void *block) { std::free(block); }

// A block of `count` units that begins with the `old_count` of `old`, zero after them; `old`, which may be
// null, is released. nullptr when memory runs out, `old` then untouched. A fresh block and not realloc:
// callers of the library may rely on the address changing.
inline void *regrown(void *old, int64_t old_count, int64_t count, int64_t unit_bytes) {
  if (old == nullptr) return allocate_zeroed(count, unit_bytes);
  void *block = allocate(count, unit_bytes);
  if (block == nullptr) return nullptr;
  const auto old_bytes = static_cast<size_t>(old_count * unit_bytes);
  std::memcpy(block, old, old_bytes);
  std::memset(static_cast<char *>(block) + old_bytes, 0, static_cast<size_t>(count * unit_bytes) - old_bytes);
  release(old);
  return block;
}

}  // namespace mub

#endif
