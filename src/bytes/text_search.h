// Searching a run of bytes for a pattern.
#ifndef MUB_BYTES_TEXT_SEARCH_H
#define MUB_BYTES_TEXT_SEARCH_H

#include <cstdint>

namespace mub {
namespace bytes {

// The first position of `pattern` in `data`, or -1. A pattern of length 1 or less is its first byte, which is
// always read.
int64_t find(const void *data, int64_t count, const void *pattern, int64_t length);

// The ways to do so that find() chooses between, all with the same result; 2 <= length <= count.
using PatternFinder = int64_t(const uint8_t *data, int64_t count, const uint8_t *pattern, int64_t length);
PatternFinder find_portable;
#if defined(__x86_64__)
PatternFinder find_sse2;  // for kSse2Starts positions and more
PatternFinder find_avx2;  // for kAvx2Starts positions and more, where the processor has it
constexpr int64_t kSse2Starts = 16;
constexpr int64_t kAvx2Starts = 32;
#endif

}  // namespace bytes
}  // namespace mub

#endif
