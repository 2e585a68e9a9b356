#include "mub_mem.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "bytes/bytes.h"
#include "bytes/text_search.h"

namespace mub {
namespace {

// Whether two addresses are at most 7 bytes apart, in either direction. Only their low 32 bits count.
bool is_near(const void *a, const void *b) {
  const auto low_a = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(a));
  const auto low_b = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(b));
  return low_a - low_b + 7 <= 14;
}

// Fills [destination, destination + count) by repeating the `period` bytes just below it. Everything written
// so far has that period too, so each iteration can copy all of it.
void repeat(uint8_t *destination, int64_t period, int64_t count) {
  const uint8_t *pattern = destination - period;
  for (int64_t done = 0; done < count;) {
    const int64_t step = std::min(period + done, count - done);
    std::memcpy(destination + done, pattern, static_cast<size_t>(step));
    done += step;
  }
}

// How far the destination lies above the start of the source if it starts inside the source; otherwise 0.
int64_t overlapping_rise(const void *destination, const void *source, int64_t count) {
  const uintptr_t rise = reinterpret_cast<uintptr_t>(destination) - reinterpret_cast<uintptr_t>(source);
  return rise < static_cast<uintptr_t>(count) ? static_cast<int64_t>(rise) : 0;
}

// Gives the result of copying 8 bytes at a time in ascending order. Such a copy reads what it has written
// only if the destination starts inside the source, at least 8 bytes above its start; otherwise the result is
// that of memmove.
void copy(void *destination, const void *source, int64_t count) {
  if (count < 1) return;
  const int64_t rise = is_near(destination, source) ? 0 : overlapping_rise(destination, source, count);
  if (rise > 0) {
    repeat(static_cast<uint8_t *>(destination), rise, count);
  } else {
    std::memmove(destination, source, static_cast<size_t>(count));
  }
}

// Clears the bytes of the source that lie before or after the destination: all of them if the ranges are
// disjoint.
void clear_vacated(const void *destination, void *source, int64_t count) {
  const auto to = reinterpret_cast<uintptr_t>(destination);
  const auto from = reinterpret_cast<uintptr_t>(source);
  const uintptr_t distance = to > from ? to - from : from - to;
  const auto vacated = static_cast<size_t>(std::min(distance, static_cast<uintptr_t>(count)));
  uint8_t *first = static_cast<uint8_t *>(source);
  if (from > to) first += static_cast<size_t>(count) - vacated;
  std::memset(first, 0, vacated);
}

}  // namespace
}  // namespace mub

extern "C" {

void *mub_malloc(uint64_t size) { return size > SIZE_MAX ? nullptr : std::malloc(static_cast<size_t>(size)); }

void mub_free(void *block) { std::free(block); }

void mub_mem_zero(void *destination, int64_t count) {
  if (count > 0) std::memset(destination, 0, static_cast<size_t>(count));
}

void mub_mem_copy(void *destination, const void *source, int64_t count) {
  mub::copy(destination, source, count);
}

void mub_mem_move(void *destination, void *source, int64_t count) {
  mub::copy(destination, source, count);
  if (count > 0 && !mub::is_near(destination, source)) mub::clear_vacated(destination, source, count);
}

int64_t mub_mem_chr(const void *data, int64_t count, int byte) { return mub::bytes::chr(data, count, byte); }

int64_t mub_mem_rchr(const void *data, int64_t count, int byte) {
  return mub::bytes::rchr(data, count, byte);
}

int64_t mub_mem_str(const void *data, int64_t count, const void *pattern, int64_t pattern_length) {
  return mub::bytes::find(data, count, pattern, pattern_length);
}

int mub_mem_cmp(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  return mub::bytes::compare(a, a_length, b, b_length);
}

int mub_mem_icmp(const void *a, int64_t a_length, const void *b, int64_t b_length) {
  return mub::bytes::icompare(a, a_length, b, b_length);
}
}
