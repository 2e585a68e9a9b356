// The one sort: a quicksort with an explicit stack, a median-of-three pivot and a selection sort for small
// ranges.
//
// It is not stable, and callers can see where equal keys end up; so the sequence of comparisons and moves is
// part of the interface, and every change to it is a change of behaviour.
//
// Comparers are hostile until proven otherwise: each scan is bounded by indexes and not by a sentinel's key,
// and both partitions are shorter than their range. So a sort with an inconsistent order ends too, having
// permuted the slots.
//
// An order takes part with
//   Key                 what is compared: loaded once for a pivot or a candidate, so it should fit registers
//   key(slot)           its key
//   compare(a, b)       read by sign
#ifndef MUB_ARRAYS_SORT_H
#define MUB_ARRAYS_SORT_H

#include <cstdint>
#include <utility>

namespace mub {

template <bool kAscending, class Slot, class Order>
class Sorting {
 public:
  Sorting(Slot *slots, const Order &order) : slots_(slots), order_(order) {}

  void run(int64_t count) {
    if (count < 2) return;
    Range range = {0, count - 1};
    do {
      while (range.high - range.low >= kSelectionSlots) range = split(range);
      select(range);
    } while (pop(range));
  }

 private:
  using Key = typename Order::Key;
  struct Range {
    int64_t low;
    int64_t high;
  };
  static constexpr int64_t kSelectionSlots = 8;
  // The smaller part is sorted first, so each entry of the stack stands for a halving of a range of 9 or more
  // slots: 30 would do for 9 * 2^30 slots, these for every table.
  static constexpr int kStackDepth = 60;
  static_assert((INT64_MAX / static_cast<int64_t>(sizeof(Slot)) / (kSelectionSlots + 1)) >> kStackDepth == 0);

  Key key(int64_t index) const { return order_.key(slots_[index]); }
  void swap(int64_t a, int64_t b) { std::swap(slots_[a], slots_[b]); }
  // A descending sort swaps the tests; negating a comparer's result could overflow.
  static bool after(int order) { return kAscending ? order > 0 : order < 0; }
  bool after(const Key &a, const Key &b) const { return after(order_.compare(a, b)); }
  bool equal(const Key &a, const Key &b) const { return order_.compare(a, b) == 0; }

  void push(Range range) {
    if (range.low >= range.high) return;
    stack_[depth_++] = range;
  }
  bool pop(Range &range) {
    if (depth_ == 0) return false;
    range = stack_[--depth_];
    return true;
  }

  // Moves the greatest of the rest to the end, again and again.
  void select(Range range) {
    for (; range.high > range.low; --range.high) {
      int64_t greatest = range.low;
      Key greatest_key = key(greatest);
      for (int64_t i = range.low + 1; i <= range.high; ++i) {
        const Key candidate = key(i);
        if (!after(candidate, greatest_key)) continue;
        greatest = i;
        greatest_key = candidate;
      }
      swap(greatest, range.high);
    }
  }

  void order_pair(int64_t a, int64_t b) {
    if (after(key(a), key(b))) swap(a, b);
  }

  // Partitions the range, puts the larger part off and returns the smaller one, which may be empty.
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

  // Returns where the right part begins (low) and the left part ends (high).
  Range partition(Range range, int64_t pivot) {
    const Key pivot_key = key(pivot);
    int64_t up = range.low;
    int64_t down = range.high;
    for (;;) {
      // The pivot itself is passed over: scans stop beside it and go on after it.
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

  // Steps back from `end`, which is after the pivot, over the run of slots equal to it, so that neither part
  // contains it again.
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
  const Order &order_;
  int depth_ = 0;
  Range stack_[kStackDepth];
};

template <class Slot, class Order>
void sort(Slot *slots, int64_t count, bool ascending, const Order &order) {
  if (ascending) {
    Sorting<true, Slot, Order>(slots, order).run(count);
  } else {
    Sorting<false, Slot, Order>(slots, order).run(count);
  }
}

}  // namespace mub

#endif
