// The one binary search. Every probe shrinks the range, so a search with an inconsistent order ends as well, at an
// arbitrary place inside the table.
#ifndef MUB_ARRAYS_SEARCH_H
#define MUB_ARRAYS_SEARCH_H

#include <algorithm>
#include <cstdint>

namespace mub {

// Where a search ended: at an equal slot, or where a new one belongs. With equal keys in the table the first one
// probed counts, which callers can see; so the probes are part of the interface.
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

// `compare_at(i)` orders slot i against the searched key. A descending table swaps the tests: comparers' results are
// never negated, which would overflow for the smallest int. Each order has a loop of its own, without a test of it.
template <class CompareAt>
Spot binary_search(int64_t count, bool descending, CompareAt compare_at) {
  return descending ? search_in_order<true>(count, compare_at) : search_in_order<false>(count, compare_at);
}

// The equal slot, else the one that the key would push up, else the last one; -1 in an empty table.
inline int64_t nearest(Spot spot, int64_t count) { return std::min(spot.index, count - 1); }

}  // namespace mub

#endif
