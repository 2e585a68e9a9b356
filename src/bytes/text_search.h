// Searching a run of bytes for a pattern.
//
// A vector of start positions is tested at a time: bit k of the result is set where the text at i + k has the
// pattern's first and last bytes. Then the second and middle bytes are tested in the same way, and only the
// starts that are left are compared in full.
//
//   text   … [ i ........... i+w-1 ] … [ i+l ....... i+l+w-1 ] …        w: starts per vector
//              == the first byte?        == the last byte?              l: length - 1
//
// Invariants:
//   1. All variants return the same index, and read only the `count` bytes of the text.
//   2. The time is linear in any text: a search in which too many full comparisons fail passes the rest of
//      the text to memmem.
//
// Threads: there is no state; a search writes nothing.
#ifndef MUB_BYTES_TEXT_SEARCH_H
#define MUB_BYTES_TEXT_SEARCH_H

#include <cstdint>

namespace mub {
namespace bytes {

// The index of the first occurrence of `pattern` in `data`, or -1. A pattern of length 1 or less is its first
// byte, which is always read.
int64_t find(const void *data, int64_t count, const void *pattern, int64_t length);

// The variants that find() chooses between. They require 2 <= length <= count.
using PatternFinder = int64_t(const uint8_t *data, int64_t count, const uint8_t *pattern, int64_t length);
PatternFinder find_portable;
#if defined(__x86_64__)
PatternFinder find_sse2;  // requires at least kSse2Starts start positions
PatternFinder find_avx2;  // requires at least kAvx2Starts, and a processor with AVX2
// Positions per vector.
constexpr int64_t kSse2Starts = 16;
constexpr int64_t kAvx2Starts = 32;
#endif

}  // namespace bytes
}  // namespace mub

#endif
