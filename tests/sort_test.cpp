// The one sort, through every function that leads to it.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/random.h"

using namespace mub_test;

namespace {

// The same sort, written out on indexes: the oracle of what is compared and where equal keys end up. Recursion stands in
// for the stack.
template <class Rows, class Order>
void sort_by_steps(Rows &rows, int64_t lo, int64_t hi, const Order &order) {
  const auto row = [&](int64_t i) -> auto & { return rows[static_cast<size_t>(i)]; };
  const auto cmp = [&](int64_t x, int64_t y) { return order(row(x), row(y)); };
  const auto swap = [&](int64_t x, int64_t y) { std::swap(row(x), row(y)); };
  const auto step = [](int64_t &i, int by, auto goes_on) {
    do i += by;
    while (goes_on());
  };
  if (hi - lo + 1 <= 8) {
    for (; hi > lo; hi--) {
      int64_t m = lo;
      for (int64_t p = lo + 1; p <= hi; p++) m = cmp(p, m) > 0 ? p : m;
      swap(m, hi);
    }
    return;
  }
  int64_t a = lo, b = hi, mid = lo + (hi - lo + 1) / 2;
  if (cmp(lo, mid) > 0) swap(lo, mid);
  if (cmp(lo, hi) > 0) swap(lo, hi);
  if (cmp(mid, hi) > 0) swap(mid, hi);
  for (;;) {
    if (mid > a) step(a, 1, [&] { return a < mid && cmp(a, mid) <= 0; });
    if (mid <= a) step(a, 1, [&] { return a <= hi && cmp(a, mid) <= 0; });
    step(b, -1, [&] { return b > mid && cmp(b, mid) > 0; });
    if (b < a) break;
    swap(a, b);
    if (mid == b) mid = a;
  }
  b++;
  if (mid < b) step(b, -1, [&] { return b > mid && cmp(b, mid) == 0; });
  if (mid >= b) step(b, -1, [&] { return b > lo && cmp(b, mid) == 0; });
  const bool left_last = b - lo >= hi - a;
  if (!left_last) sort_by_steps(rows, lo, b, order);
  sort_by_steps(rows, a, hi, order);
  if (left_last) sort_by_steps(rows, lo, b, order);
}

// Entries are made with a number that is their key, and lies above the low 24 bits of their value.
std::vector<std::pair<uint64_t, uint64_t>> compared;
int by_number(uint64_t a, uint64_t b) {
  compared.push_back({a, b});
  return static_cast<int>(a >> 24) - static_cast<int>(b >> 24);
}
int items_by_number(uint64_t a, uint64_t b, uint64_t zero) { return zero != 0 ? 0 : by_number(a, b); }
int items_in_context(uint64_t context, uint64_t a, uint64_t b, uint64_t zero) {
  return context != kContext ? 0 : items_by_number(a, b, zero);
}
template <auto kSort, class... Rest>
void in_context(mub_arrays *array, Rest... rest) {
  kSort(array, kContext, rest...);
}

template <class KindOfArray, auto kSort, auto kAscending, auto kDescending, auto... kCompare>
struct SortBy {
  using Kind = KindOfArray;
  static void sort(typename Kind::Record *array, bool ascending, bool direct) {
    if (!direct) return kSort(array, ascending ? 7 : 0, kCompare...);
    (ascending ? kAscending : kDescending)(array, kCompare...);
  }
};

template <class By>
class Sort : public ::testing::Test {};
using Sorts = ::testing::Types<
    SortBy<ByteKeyed, mub_array_qsort, mub_array_qsort_p, mub_array_qsort_n>,
    SortBy<ByteKeyed, mub_array_qsort_x, mub_array_qsort_x_p, mub_array_qsort_x_n, by_number>,
    SortBy<Keyed32, mub_arrayd_qsort, mub_arrayd_qsort_p, mub_arrayd_qsort_n>,
    SortBy<Keyed32, mub_arrayd_qsort_x, mub_arrayd_qsort_x_p, mub_arrayd_qsort_x_n, by_number>,
    SortBy<Keyed64, mub_arrayx_qsort, mub_arrayx_qsort_p, mub_arrayx_qsort_n>,
    SortBy<Keyed64, mub_arrayx_qsort_x, mub_arrayx_qsort_x_p, mub_arrayx_qsort_x_n, by_number>,
    SortBy<ItemsBy<false>, mub_arrays_qsort, mub_arrays_qsort_p, mub_arrays_qsort_n, items_by_number>,
    SortBy<ItemsBy<false>, in_context<mub_arrays_qsort_x, int, mub_compare_context_fn>,
           in_context<mub_arrays_qsort_x_p, mub_compare_context_fn>,
           in_context<mub_arrays_qsort_x_n, mub_compare_context_fn>, items_in_context>>;
TYPED_TEST_SUITE(Sort, Sorts);

TYPED_TEST(Sort, PutsEqualKeysWhereItsStepsPutThem) {
  using Kind = typename TypeParam::Kind;
  Random random(21);
  std::vector<int64_t> counts(70, 1000);
  std::iota(counts.begin(), counts.end() - 1, 0);
  for (const int64_t count : counts) {
    for (int shape = 0; shape < 8; ++shape) {
      Scoped<Kind> array;
      for (int64_t i = 0; i < count; ++i) {
        const int64_t numbers[] = {
            random.below(1000000), random.below(5), 0, i, count - i, std::min(i, count - i), i % 7,
            i * 10 / count};
        const auto value = static_cast<uint64_t>(numbers[shape] << 24 | i);
        call<kAppend>(array, std::pair(Kind::key(numbers[shape]), value));
      }
      for (const int sign : {1, -1}) {
        auto rows = entries_of(array);
        compared.clear();
        sort_by_steps(rows, 0, count - 1,
                      [&](auto &a, auto &b) { return sign * by_number(a.second, b.second); });
        const auto expected = std::exchange(compared, {});
        const int64_t allocations = allocations_so_far();
        TypeParam::sort(&array, sign == 1, count % 2 != 0);
        ASSERT_EQ(allocations_so_far(), allocations);
        ASSERT_EQ(entries_of(array), rows) << count;
        ASSERT_TRUE(compared.empty() || compared == expected);  // keys are compared without a call
        ASSERT_TRUE(std::is_sorted(rows.begin(), rows.end(), [&](auto &a, auto &b) {
          return sign * by_number(a.second, b.second) < 0;
        }));
      }
    }
  }
}

// Keys of all bytes, with long and short common beginnings, and some of which each begins others.
TEST(ByteSort, ComparesKeysAsUnsignedBytesAndLeavesThemInPlace) {
  Random random(22);
  for (const std::string &beginning : {std::string(), std::string("a\0", 2), std::string(9, '\xFF')}) {
    for (const bool nested : {false, true}) {
      Scoped<ByteKeyed> array;
      for (uint64_t i = 0; i < 1000; ++i) {
        const auto rest = nested ? std::string(random.word() % 30, 'k') : ByteKeyed::random_key(random);
        call<kAppend>(array, std::pair(beginning + rest, i));
      }
      const std::vector<uint8_t> stream(array.keys.data, array.keys.data + array.keys.length);
      for (const int sign : {1, -1}) {
        auto rows = entries_of(array);
        const auto order = [sign](const auto &a, const auto &b) { return sign * a.first.compare(b.first); };
        sort_by_steps(rows, 0, array.count - 1, order);
        mub_array_qsort(&array, sign == 1);
        ASSERT_EQ(entries_of(array), rows);
      }
      EXPECT_TRUE(std::equal(stream.begin(), stream.end(), array.keys.data));
    }
  }
}

std::vector<int> answers;
size_t calls;
int hostile(uint64_t, uint64_t, uint64_t) { return answers[calls++ % answers.size()]; }

TEST(ItemSort, EndsInsideTheTableWhateverTheComparerSays) {
  Random random(24);
  for (int round = 0; round < 600; ++round) {
    answers.resize(1 + random.word() % (round % 4 == 0 ? 1 : 40));
    for (int &answer : answers) answer = static_cast<int>(random.below(3)) - 1;
    std::vector<uint64_t> items(random.word() % 2000);
    std::iota(items.begin(), items.end(), 0u);
    const auto sorted = items;
    mub_arrays array = {items.data(), static_cast<int64_t>(items.size()), 2000, nullptr, 0, 0};
    mub_arrays_qsort(&array, round % 2, nullptr);
    mub_arrays_qsort_x(&array, 0, round % 2, nullptr);
    ASSERT_EQ(items, sorted);
    mub_arrays_qsort(&array, round % 2, hostile);
    std::sort(items.begin(), items.end());
    ASSERT_EQ(items, sorted);
  }
}

}  // namespace
