// The sort of all arrays: a quicksort with an explicit stack, a median-of-three pivot and a selection sort
// for ranges of up to 8 slots. It is not stable, and callers can see where equal keys end up: the sequence of
// moves, and of the calls of a caller's comparator, is part of the interface, and with it kSelectionSlots.
//
// Invariants, for any comparator, even one that contradicts itself:
//   1. No slot outside the range is read or moved: scans are bounded by indexes and not by a sentinel.
//   2. Both parts of a partition are shorter than its range, so the sort ends.
//   3. Slots are only swapped: the result is a permutation of the input.
//   4. The stack holds at most log2(count) ranges, because the shorter part is sorted first.
//
// Threads: only the slots are written; there is no shared state.
//
// SortOrder is a class with
//   Key                 what is compared: loaded once per pivot or candidate, so it should fit into registers
//   key(slot)           returns the key of a slot
//   compare(a, b)       below 0 if `a` comes before `b`, above 0 if after it, 0 if they are equal; not needed
//                       if the class is derived from NumberSortOrder: no caller sees the comparisons of
//                       numbers, so their sequence may differ as long as the moves are the same
#ifndef MUB_ARRAYS_SORT_H
#define MUB_ARRAYS_SORT_H

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace mub {

// The base of orders whose keys are unsigned numbers.
template <class Number>
struct NumberSortOrder {
  using Key = Number;
};

template <bool kAscending, class Slot, class SortOrder>
class Sorting {
 public:
  Sorting(Slot *slots, const SortOrder &order) : slots_(slots), order_(order) {}

  void run(int64_t count) {
    if (count < 2) return;
    Range range = {0, count - 1};
    do {
      while (range.high - range.low >= kSelectionSlots) range = split(range);
      select(range);
    } while (pop(range));
  }

 private:
  using Key = typename SortOrder::Key;
  struct Range {
    int64_t low;
    int64_t high;
  };
  static constexpr int64_t kSelectionSlots = 8;
  // 1000 random numbers take 36 us with blocks of 4 slots or more, 43 us with 16 or more, and 62 us without
  // blocks. Blocks of 128 gain nothing.
  static constexpr int64_t kMinBlockSlots = 4;
  static constexpr int64_t kMaxBlockSlots = 64;
  static constexpr bool kComparesNumbers = std::is_base_of_v<NumberSortOrder<Key>, SortOrder>;
  // Each push at least halves the range that is sorted next, and happens only in ranges of 9 slots or more:
  // 60 are enough for any table.
  static constexpr int kStackDepth = 60;
  static_assert((INT64_MAX / static_cast<int64_t>(sizeof(Slot)) / (kSelectionSlots + 1)) >> kStackDepth == 0);

  Key key(int64_t index) const { return order_.key(slots_[index]); }
  void swap(int64_t a, int64_t b) { std::swap(slots_[a], slots_[b]); }
  // A descending sort swaps the tests: negating INT_MIN, which a comparator may return, would overflow.
  static bool after(int order) { return kAscending ? order > 0 : order < 0; }
  bool after(const Key &a, const Key &b) const {
    if constexpr (kComparesNumbers)
      return kAscending ? a > b : a < b;
    else
      return after(order_.compare(a, b));
  }
  bool equal(const Key &a, const Key &b) const {
    if constexpr (kComparesNumbers)
      return a == b;
    else
      return order_.compare(a, b) == 0;
  }

  void push(Range range) {
    if (range.low >= range.high) return;
    stack_[depth_++] = range;
  }
  bool pop(Range &range) {
    if (depth_ == 0) return false;
    range = stack_[--depth_];
    return true;
  }

  // A selection sort: moves the greatest slot of the range to its end, and shortens the range.
  void select(Range range) {
    for (; range.high > range.low; --range.high) {
      int64_t greatest = range.low;
      Key greatest_key = key(greatest);
      for (int64_t i = range.low + 1; i <= range.high; ++i) {
        const Key candidate = key(i);
        const bool is_greater = after(candidate, greatest_key);
        greatest = is_greater ? i : greatest;
        greatest_key = is_greater ? candidate : greatest_key;
      }
      swap(greatest, range.high);
    }
  }

  void order_pair(int64_t a, int64_t b) {
    if (after(key(a), key(b))) swap(a, b);
  }

  // Partitions the range, pushes the larger part and returns the smaller one, which may be empty.
  Range split(Range range) {
    const auto [low, high] = range;
    const int64_t middle = low + (high - low + 1) / 2;
    order_pair(low, middle);
    order_pair(low, high);
    order_pair(middle, high);
    const Range cut = partition(range, middle);
    const Range left = {low, cut.high};
    const Range right = {cut.low, high};
    if (left.high - left.low >= right.high - right.low) {
      push(left);
      return right;
    }
    push(right);
    return left;
  }

  // Returns the first index of the right part (low) and the last one of the left part (high).
  Range partition(Range range, int64_t pivot) {
    const Key pivot_key = key(pivot);
    int64_t up = range.low;
    int64_t down = range.high;
    for (;;) {
      if constexpr (kComparesNumbers) swap_blocks(up, down, pivot, pivot_key);
      // The upward scan skips the pivot: it stops there and continues after it.
      if (pivot > up) {
        do ++up;
        while (up < pivot && !after(key(up), pivot_key));
      }
      if (pivot <= up) {
        do ++up;
        while (up <= range.high && !after(key(up), pivot_key));
      }
      do --down;
      while (down > pivot && after(key(down), pivot_key));
      if (down < up) break;
      swap(up, down);
      if (pivot == down) pivot = up;
    }
    return {up, before_equals(range.low, pivot, down + 1, pivot_key)};
  }

  // The slots of a block where a scan stops, as distances from where it starts.
  struct Stops {
    uint8_t distances[kMaxBlockSlots];
    int64_t count;

    // How far to move on after the first `swapped` stops were swapped: up to the next stop, if there is one.
    int64_t moved(int64_t swapped, int64_t size) const {
      return swapped < count ? distances[swapped] - 1 : size;
    }
  };

  // Scans `size` slots next to `start`, upwards or downwards. No branch depends on a key: with random keys,
  // half of them would be mispredicted.
  template <bool kUp>
  void scan_block(int64_t start, int64_t size, const Key &pivot_key, Stops &stops) const {
    int64_t count = 0;
    for (int64_t i = 1; i <= size; ++i) {
      stops.distances[count] = static_cast<uint8_t>(i);
      count += static_cast<int64_t>(after(key(kUp ? start + i : start - i), pivot_key) == kUp);
    }
    stops.count = count;
  }

  // Makes the swaps of partition() while its scans are on different sides of the pivot, or both above it: the
  // n-th stop of one scan is swapped with the n-th stop of the other.
  void swap_blocks(int64_t &up, int64_t &down, int64_t pivot, const Key &pivot_key) {
    Stops up_stops;
    Stops down_stops;
    for (;;) {
      const int64_t half = (down - up - 1) / 2;
      const int64_t up_size = std::min(pivot > up ? pivot - up - 1 : half, kMaxBlockSlots);
      const int64_t down_size = std::min(pivot > up ? down - pivot - 1 : half, kMaxBlockSlots);
      if (std::min(up_size, down_size) < kMinBlockSlots) return;
      scan_block<true>(up, up_size, pivot_key, up_stops);
      scan_block<false>(down, down_size, pivot_key, down_stops);
      const int64_t swapped = std::min(up_stops.count, down_stops.count);
      for (int64_t i = 0; i < swapped; ++i) swap(up + up_stops.distances[i], down - down_stops.distances[i]);
      up += up_stops.moved(swapped, up_size);
      down -= down_stops.moved(swapped, down_size);
    }
  }

  // Steps back from `end`, which is after the pivot, over the slots equal to the pivot, and returns the last
  // index of the left part: neither part contains the pivot again.
  int64_t before_equals(int64_t low, int64_t pivot, int64_t end, const Key &pivot_key) const {
    do --end;
    while (end > pivot && equal(key(end), pivot_key));
    if (pivot >= end) {
      do --end;
      while (end > low && equal(key(end), pivot_key));
    }
    return end;
  }

  Slot *slots_;
  const SortOrder &order_;
  int depth_ = 0;
  Range stack_[kStackDepth];
};

template <class Slot, class SortOrder>
void sort(Slot *slots, int64_t count, bool ascending, const SortOrder &order) {
  if (ascending) {
    Sorting<true, Slot, SortOrder>(slots, order).run(count);
  } else {
    Sorting<false, Slot, SortOrder>(slots, order).run(count);
  }
}

}  // namespace mub

#endif
