// Memory that is allocated but must not be used: AddressSanitizer reports every access to it, and so does
// valgrind if the library is built with MUB_VALGRIND. In all other builds nothing is poisoned,
// copy_poisoned() is memcpy(), and the other functions are empty and always inlined, so that they do not
// count when compilers decide what else to inline. mub_inline.h detects these builds in the same way.
//
// AddressSanitizer marks groups of 8 bytes: of two neighbours in one group, the earlier cannot be poisoned
// while the later is in use.
#ifndef MUB_BASE_POISON_H
#define MUB_BASE_POISON_H

#include <cstddef>
#include <cstdint>
#include <cstring>

// Put before functions that do nothing, or only call another function, in builds that poison nothing: always
// inlined, they cost nothing there.
#define MUB_POISON_HOOK __attribute__((always_inline)) inline

#if defined(__SANITIZE_ADDRESS__)
#define MUB_POISONS_FOR_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MUB_POISONS_FOR_ASAN 1
#endif
#endif

#if defined(MUB_POISONS_FOR_ASAN) && defined(MUB_VALGRIND)
#error "AddressSanitizer and valgrind cannot be combined"
#elif defined(MUB_POISONS_FOR_ASAN)
#include <sanitizer/asan_interface.h>
#elif defined(MUB_VALGRIND)
#include <valgrind/memcheck.h>
#endif

namespace mub {

#if defined(MUB_POISONS_FOR_ASAN)

constexpr bool kPoisons = true;

inline void poison(void *start, size_t size_bytes) { __asan_poison_memory_region(start, size_bytes); }
inline void unpoison(void *start, size_t size_bytes) { __asan_unpoison_memory_region(start, size_bytes); }
inline bool is_poisoned(const void *address) { return __asan_address_is_poisoned(address) != 0; }

// Reports the use of a poisoned byte.
inline void report_use(const void *address) {
  static_cast<void>(*static_cast<const volatile char *>(address));
}

// The offset of an address in the heap block of `size_bytes` that contains it; -1 if there is none. Unlike
// is_poisoned(), this accepts any address.
inline int64_t offset_in_heap_block(const void *address, uint64_t size_bytes) {
  void *start = nullptr;
  size_t found_bytes = 0;
  // The function does not write to the address, although it takes no pointer to const.
  const char *kind = __asan_locate_address(const_cast<void *>(address), nullptr, 0, &start, &found_bytes);
  if (std::strcmp(kind, "heap") != 0 || found_bytes != size_bytes) return -1;
  const uint64_t offset = reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(start);
  return offset < size_bytes ? static_cast<int64_t>(offset) : -1;
}

// Copies bytes, whether poisoned or not. Volatile, so that the loop is not compiled to a call of memcpy,
// which is checked.
__attribute__((no_sanitize("address"))) inline void copy_poisoned(void *copy, const void *source,
                                                                  size_t size_bytes) {
  const auto *from = static_cast<const volatile char *>(source);
  auto *to = static_cast<volatile char *>(copy);
  for (size_t i = 0; i < size_bytes; ++i) to[i] = from[i];
}

#elif defined(MUB_VALGRIND)

constexpr bool kPoisons = true;

inline void poison(void *start, size_t size_bytes) {
  static_cast<void>(VALGRIND_MAKE_MEM_NOACCESS(start, size_bytes));
}
inline void unpoison(void *start, size_t size_bytes) {
  static_cast<void>(VALGRIND_MAKE_MEM_DEFINED(start, size_bytes));
}
inline bool is_poisoned(const void *address) {
  constexpr unsigned kNotAddressable = 3;
  unsigned char bits;
  return VALGRIND_GET_VBITS(address, &bits, 1) == kNotAddressable;
}
inline void report_use(const void *address) {
  static_cast<void>(VALGRIND_CHECK_MEM_IS_ADDRESSABLE(address, 1));
}
// Blocks of the heap are not known here. Any address can be poisoned, even one outside of all blocks.
inline int64_t offset_in_heap_block(const void *, uint64_t) { return 0; }

inline void copy_poisoned(void *copy, const void *source, size_t size_bytes) {
  VALGRIND_DISABLE_ERROR_REPORTING;  // in this thread
  std::memcpy(copy, source, size_bytes);
  VALGRIND_ENABLE_ERROR_REPORTING;
}

#else

constexpr bool kPoisons = false;

MUB_POISON_HOOK void poison(void *, size_t) {}
MUB_POISON_HOOK void unpoison(void *, size_t) {}
MUB_POISON_HOOK bool is_poisoned(const void *) { return false; }
MUB_POISON_HOOK void report_use(const void *) {}
MUB_POISON_HOOK int64_t offset_in_heap_block(const void *, uint64_t) { return 0; }
MUB_POISON_HOOK void copy_poisoned(void *copy, const void *source, size_t size_bytes) {
  std::memcpy(copy, source, size_bytes);
}

#endif

}  // namespace mub

#endif
