// The growth rules. Callers can see capacities, so every constant here is part of the interface.
#ifndef MUB_BASE_GROWTH_H
#define MUB_BASE_GROWTH_H

#include <algorithm>
#include <cstdint>

namespace mub {

// Requests for more units fail as if memory had run out. Up to here, rounding up cannot overflow.
constexpr int64_t kMaxUnits = INT64_MAX - 64;

// Streams and strings grow by half their length (at least 8 and at most 8 Mi units, and not past a capacity
// of 2^31 - 1), or to `wanted` if that is more. The caller rounds the result to its own allocation step.
inline int64_t grown_units(int64_t length, int64_t capacity, int64_t wanted) {
  const int64_t step = std::clamp<int64_t>(length / 2, 8, 0x800000);
  const int64_t headroom = int64_t{0x7FFFFFFF} - capacity;
  return std::max(capacity + std::min(step, headroom), wanted);
}

inline int64_t round_up_to_4(int64_t slots) { return ((slots - 1) & ~int64_t{3}) + 4; }

// Arrays grow by half their count (at least 8 and at most 65536 slots), or to `wanted` if that is more.
inline int64_t grown_slots(int64_t count, int64_t capacity, int64_t wanted) {
  const int64_t step = std::clamp<int64_t>(count / 2, 8, 0x10000);
  return round_up_to_4(std::max(capacity + step, wanted));
}

// The tables of chunks and of free pages of pools grow by half their count, but at least by 4.
inline int64_t grown_pages(int64_t count, int64_t capacity) {
  return round_up_to_4(capacity + std::max<int64_t>(count / 2, 4));
}

// Bit sets grow by 1024 bytes, or to `wanted` if that is more. Near 2^32 bytes the sum wraps around, and
// `wanted` is the larger one.
inline uint32_t grown_bit_bytes(uint32_t size, uint32_t wanted) { return std::max(size + 1024, wanted); }

}  // namespace mub

#endif
