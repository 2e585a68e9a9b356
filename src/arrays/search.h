// The binary search, in two forms that probe the same slots. Every probe shrinks the range, so a search with
// an inconsistent order ends as well, at an arbitrary place inside the table.
#ifndef MUB_ARRAYS_SEARCH_H
#define MUB_ARRAYS_SEARCH_H

#include <algorithm>
#include <cstdint>

namespace mub {

// Where a search ended: at an equal slot, or where a new one belongs. With equal keys in the table the first
// one probed counts, which callers can see; so the probes are part of the interface.
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

// `compare_at(i)` orders slot i against the searched key. A descending table swaps the tests: comparers'
// results are never negated, which would overflow for the smallest int. Each order has a loop of its own,
// without a test of it.
template <class CompareAt>
Spot binary_search(int64_t count, bool descending, CompareAt compare_at) {
  return descending ? search_in_order<true>(count, compare_at) : search_in_order<false>(count, compare_at);
}

// For orders that are the sign of a difference. Among keys that come at random, a branch on it is
// mispredicted every other time; so here the sign is a mask that moves the bounds. As the processor then
// loads nothing ahead, `fetch` is called for the four slots near which the probe after the next will fall.
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

// The equal slot, else the one that the key would push up, else the last one; -1 in an empty table.
inline int64_t nearest(Spot spot, int64_t count) { return std::min(spot.index, count - 1); }

}  // namespace mub

#endif
