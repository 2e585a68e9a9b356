// Binary search, in two variants that probe the same slots: one branches on each comparison, the other turns
// its sign into a mask. If several keys are equal to the wanted one, the first one probed is found. Callers
// can see which, so the sequence of probes is part of the interface.
//
// Invariants, for any comparator and any table, sorted or not:
//   1. Only slots from 0 to count - 1 are compared, and none of them twice.
//   2. The resulting index is from 0 to count, and below count if the key was found.
//
// Threads: nothing is written but local variables.
#ifndef MUB_ARRAYS_SEARCH_H
#define MUB_ARRAYS_SEARCH_H

#include <algorithm>
#include <cstdint>

namespace mub {

// The result of a search: the index of an equal slot, or the index at which a new one belongs.
struct Spot {
  int64_t index;
  bool found;
};

template <bool kDescending, class CompareAt>
Spot search_in_order(int64_t count, CompareAt compare_at) {
  int64_t low = 0;
  int64_t high = count - 1;
  while (low <= high) {
    const int64_t middle = (low + high) / 2;
    const int order = compare_at(middle);
    if (order == 0) return {middle, true};
    if (kDescending ? order > 0 : order < 0) {
      low = middle + 1;
    } else {
      high = middle - 1;
    }
  }
  return {low, false};
}

// `compare_at(i)` orders slot i against the wanted key. The search of a descending table swaps the tests:
// negating INT_MIN, which a comparator may return, would overflow. Each direction has its own loop, which
// need not test it.
template <class CompareAt>
Spot binary_search(int64_t count, bool descending, CompareAt compare_at) {
  return descending ? search_in_order<true>(count, compare_at) : search_in_order<false>(count, compare_at);
}

// For orders that return a difference. If random keys are searched for, a branch on its sign is mispredicted
// every other time, so a mask made of the sign moves the bounds instead. Without a branch to predict, the
// processor loads nothing ahead: `fetch` is called for four slots, near one of which the probe after the next
// one will fall. Without these, searches take 1.25 times as long in 1e5 slots and 1.8 times in 1e6, and 0.87
// times in 1e3 (find_sorted_integer in bench/array_bench.cpp).
template <bool kDescending, class CompareAt, class Fetch>
Spot search_without_branches(int64_t count, CompareAt compare_at, Fetch fetch) {
  int64_t low = 0;
  int64_t high = count - 1;
  while (low <= high) {
    const int64_t middle = (low + high) >> 1;
    const int64_t eighth = (high - low) >> 3;
    fetch(low + eighth);
    fetch(low + 3 * eighth);
    fetch(middle + eighth);
    fetch(high - eighth);
    const auto difference = compare_at(middle);
    if (difference == 0) return {middle, true};
    const int64_t is_less = difference >> (8 * sizeof difference - 1);
    const int64_t goes_up = kDescending ? ~is_less : is_less;
    low += (middle + 1 - low) & goes_up;
    high += (middle - 1 - high) & ~goes_up;
  }
  return {low, false};
}

template <class CompareAt, class Fetch>
Spot binary_search_without_branches(int64_t count, bool descending, CompareAt compare_at, Fetch fetch) {
  return descending ? search_without_branches<true>(count, compare_at, fetch)
                    : search_without_branches<false>(count, compare_at, fetch);
}

// The index of the equal slot, else of the one before which the key belongs, else of the last one; -1 in an
// empty table.
inline int64_t nearest(Spot spot, int64_t count) { return std::min(spot.index, count - 1); }

}  // namespace mub

#endif
