// The one sort and the one search, through every function that leads to them.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"

using mub_test::ByteKeyed;
using mub_test::Guarded;
using mub_test::Items;
using mub_test::Keyed32;
using mub_test::Keyed64;
using mub_test::Random;
using ByteArray = mub_test::Scoped<ByteKeyed>;
using ItemArray = mub_test::Scoped<Items>;

namespace {

// The same sort, written out on indexes: the oracle of where equal keys end up.
struct Steps {
  std::function<int(int64_t, int64_t)> cmp;
  std::function<void(int64_t, int64_t)> swap;
  int sign;  // -1 for a descending sort

  bool gt(int64_t x, int64_t y) const { return cmp(x, y) * sign > 0; }

  void select(int64_t lo, int64_t hi) const {
    for (; hi > lo; hi--) {
      int64_t m = lo;
      for (int64_t p = lo + 1; p <= hi; p++) m = gt(p, m) ? p : m;
      swap(m, hi);
    }
  }
  // Leaves a and b where the parts lo..b and a..hi end and begin.
  void partition(int64_t lo, int64_t hi, int64_t &a, int64_t &b) const {
    int64_t mid = lo + (hi - lo + 1) / 2;
    if (gt(lo, mid)) swap(lo, mid);
    if (gt(lo, hi)) swap(lo, hi);
    if (gt(mid, hi)) swap(mid, hi);
    for (a = lo, b = hi;;) {
      if (mid > a) {
        for (a++; a < mid && !gt(a, mid);) a++;
      }
      if (mid <= a) {
        for (a++; a <= hi && !gt(a, mid);) a++;
      }
      for (b--; b > mid && gt(b, mid);) b--;
      if (b < a) break;
      swap(a, b);
      if (mid == b) mid = a;
    }
    b++;
    if (mid < b) {
      for (b--; b > mid && cmp(b, mid) == 0;) b--;
    }
    if (mid >= b) {
      for (b--; b > lo && cmp(b, mid) == 0;) b--;
    }
  }
  // Disjoint parts may be sorted in any order, so recursion stands in for the stack.
  void sort(int64_t lo, int64_t hi) const {
    if (hi - lo + 1 <= 8) return select(lo, hi);
    int64_t a, b;
    partition(lo, hi, a, b);
    sort(lo, b);
    sort(a, hi);
  }
};

// Keys with distinct values; the lowest bits of these are what the sorts by value go by.
using Rows = std::vector<std::pair<std::string, uint64_t>>;

int by_low_bits(uint64_t a, uint64_t b) { return static_cast<int>(a % 8) - static_cast<int>(b % 8); }
int by_low_bits_of_items(uint64_t a, uint64_t b, uint64_t zero) {
  return by_low_bits(a, b) + static_cast<int>(zero);
}
int by_low_bits_in_context(uint64_t context, uint64_t a, uint64_t b, uint64_t zero) {
  EXPECT_EQ(context, 5u);
  return by_low_bits_of_items(a, b, zero);
}

Rows sorted_by_steps(Rows rows, bool ascending, bool by_value) {
  const auto row = [&](int64_t i) -> auto & { return rows[static_cast<size_t>(i)]; };
  const Steps steps = {[&](int64_t x, int64_t y) {
                         return by_value ? by_low_bits(row(x).second, row(y).second)
                                         : row(x).first.compare(row(y).first);
                       },
                       [&](int64_t x, int64_t y) { std::swap(row(x), row(y)); }, ascending ? 1 : -1};
  steps.sort(0, static_cast<int64_t>(rows.size()) - 1);
  return rows;
}

// Numbers of 8 digits up to kHighest as keys that order as these do; integers then fill their width.
constexpr uint64_t kHighest = 11000000;
template <class Kind>
typename Kind::Key key_of(const std::string &digits) {
  if constexpr (std::is_same_v<Kind, ByteKeyed>) {
    return digits;
  } else {
    using Bits = decltype(Kind::Key::bits);
    return {static_cast<Bits>(std::stoull(digits) * (std::numeric_limits<Bits>::max() / kHighest))};
  }
}

template <class Array>
void expect_values(const Array &array, const Rows &rows) {
  for (int64_t i = 0; i < array.count; ++i)
    ASSERT_EQ(array.entries[i].value, rows[static_cast<size_t>(i)].second);
}

template <class Kind>
void expect_entries(const Rows &rows, bool ascending, const Rows &by_key, const Rows &by_value) {
  mub_test::Scoped<Kind> keys, values;
  for (const auto &[key, value] : rows) {
    Kind::append(&keys, key_of<Kind>(key), value);
    Kind::append(&values, key_of<Kind>(key), value);
  }
  const int64_t allocations = mub_test::allocations_so_far();
  if (rows.size() % 2 == 0) {
    Kind::qsort(&keys, ascending ? 7 : 0);
    Kind::qsort_x(&values, ascending, by_low_bits);
  } else {
    (ascending ? Kind::qsort_p : Kind::qsort_n)(&keys);
    (ascending ? Kind::qsort_x_p : Kind::qsort_x_n)(&values, by_low_bits);
  }
  Kind::qsort_x(&keys, !ascending, nullptr);
  ASSERT_EQ(mub_test::allocations_so_far(), allocations);
  expect_values(keys, by_key);
  expect_values(values, by_value);
  if (!rows.empty()) {
    ASSERT_EQ(Kind::entry(&keys, 0).first, key_of<Kind>(by_key[0].first));
  }
}

void expect_items(const Rows &rows, bool ascending, const Rows &by_value) {
  ItemArray items, in_context;
  for (const auto &row : rows) {
    mub_arrays_append(&items, row.second);
    mub_arrays_append(&in_context, row.second);
  }
  if (rows.size() % 2 == 0) {
    mub_arrays_qsort(&items, ascending, by_low_bits_of_items);
    mub_arrays_qsort_x(&in_context, 5, ascending, by_low_bits_in_context);
  } else {
    (ascending ? mub_arrays_qsort_p : mub_arrays_qsort_n)(&items, by_low_bits_of_items);
    (ascending ? mub_arrays_qsort_x_p : mub_arrays_qsort_x_n)(&in_context, 5, by_low_bits_in_context);
  }
  for (int64_t i = 0; i < items.count; ++i) {
    ASSERT_EQ(items.items[i], by_value[static_cast<size_t>(i)].second);
    ASSERT_EQ(in_context.items[i], items.items[i]);
  }
}

void expect_places(const Rows &rows, bool ascending) {
  const Rows by_key = sorted_by_steps(rows, ascending, false),
             by_value = sorted_by_steps(rows, ascending, true);
  expect_entries<ByteKeyed>(rows, ascending, by_key, by_value);
  expect_entries<Keyed32>(rows, ascending, by_key, by_value);
  expect_entries<Keyed64>(rows, ascending, by_key, by_value);
  expect_items(rows, ascending, by_value);
}

TEST(Sort, PutsEqualKeysWhereItsStepsPutThem) {
  Random random(21);
  const std::vector<std::function<int64_t(int64_t, int64_t)>> shapes = {
      [&](int64_t, int64_t) { return random.below(1000000); },
      [&](int64_t, int64_t) { return random.below(5); },
      [](int64_t, int64_t) { return 0; },
      [](int64_t i, int64_t) { return i; },
      [](int64_t i, int64_t n) { return n - i; },
      [](int64_t i, int64_t n) { return std::min(i, n - i); },
      [](int64_t i, int64_t) { return i % 7; },
      [](int64_t i, int64_t n) { return i * 10 / n; },
  };
  std::vector<int64_t> counts(70);
  std::iota(counts.begin(), counts.end(), 0);
  counts.insert(counts.end(), {257, 1000, 5000});
  for (const int64_t count : counts) {
    for (const auto &shape : shapes) {
      Rows rows;
      for (int64_t i = 0; i < count; ++i) {
        rows.push_back({std::to_string(10000000 + shape(i, count)), random.word() >> 3});
      }
      ASSERT_NO_FATAL_FAILURE(expect_places(rows, true)) << count;
      ASSERT_NO_FATAL_FAILURE(expect_places(rows, false)) << count;
    }
  }
}

// Keys of all bytes, with long and short common beginnings, against std::sort.
TEST(Sort, OrdersKeysAsUnsignedBytes) {
  Random random(22);
  for (const std::string &beginning : {std::string(), std::string("a\0", 2), std::string(9, '\xFF')}) {
    std::vector<std::string> keys;
    for (int i = 0; i < 3000; ++i) keys.push_back(beginning + ByteKeyed::random_key(random));
    ByteArray array;
    for (const auto &key : keys) ByteKeyed::append(&array, key, 0);
    const std::string stream(reinterpret_cast<char *>(array.keys.data),
                             static_cast<size_t>(array.keys.length));
    std::sort(keys.begin(), keys.end());
    mub_array_qsort(&array, 1);
    for (size_t i = 0; i < keys.size(); ++i)
      ASSERT_EQ(ByteKeyed::entry(&array, static_cast<int64_t>(i)).first, keys[i]);
    mub_array_qsort(&array, 0);
    for (size_t i = 0; i < keys.size(); ++i) {
      ASSERT_EQ(ByteKeyed::entry(&array, array.count - 1 - static_cast<int64_t>(i)).first, keys[i]);
    }
    EXPECT_EQ(std::memcmp(array.keys.data, stream.data(), stream.size()), 0);
  }
}

TEST(Sort, ReadsNothingBehindTheKeyBlock) {
  Random random(23);
  for (int64_t bytes = 1; bytes < 40; ++bytes) {
    const Guarded block(random.text(bytes, 2));
    ByteArray array;
    array.keys = {block.bytes(), bytes, bytes};
    mub_array_expand(&array, 40);
    mub_array_shrink(&array, 40);
    std::vector<std::string> keys;
    for (int64_t i = 0; i < 40; ++i) {
      const int64_t start = random.below(bytes + 1);
      const int64_t length = random.one_in(3) ? random.below(bytes - start + 1) : bytes - start;
      array.entries[i] = {static_cast<uint32_t>(start), static_cast<uint32_t>(length), 0};
      keys.emplace_back(block.data() + start, static_cast<size_t>(length));
    }
    std::sort(keys.begin(), keys.end());
    mub_array_qsort(&array, 1);
    for (int64_t i = 0; i < 40; ++i) {
      const auto &key = keys[static_cast<size_t>(i)];
      ASSERT_EQ(ByteKeyed::entry(&array, i).first, key);
      ASSERT_GE(mub_array_find_index(&array, key.data(), mub_test::size_of(key)), 0);
      ASSERT_GE(mub_array_afind_index(&array, key.data(), mub_test::size_of(key)), 0);
    }
    array.keys = {nullptr, 0, 0};
  }
}

// ---- comparers without an order

Random *hostility;
int64_t calls;
enum class Hostile { kRandom, kAlwaysAfter, kAlwaysBefore, kAlwaysEqual, kChanging };
Hostile hostile_mode;

int hostile(uint64_t, uint64_t, uint64_t) {
  ++calls;
  switch (hostile_mode) {
    case Hostile::kRandom:
      return static_cast<int>(hostility->below(3)) - 1;
    case Hostile::kAlwaysAfter:
      return INT_MAX;
    case Hostile::kAlwaysBefore:
      return INT_MIN;
    case Hostile::kAlwaysEqual:
      return 0;
    default:
      return calls % 64 < 32 ? 1 : -1;
  }
}

// Calls test(array) with tables between closed pages, some of which they fill, under each hostility and direction.
template <class Test>
void with_hostile_comparers(std::vector<int64_t> counts, Test test) {
  static Random random(0);
  random = Random(24);
  hostility = &random;
  for (int round = 0; round < 5 * 40; ++round) {
    hostile_mode = static_cast<Hostile>(round % 5);
    for (const int64_t count : counts) {
      const Guarded block(std::string(static_cast<size_t>(count) * 8, '\0'));
      auto *items = reinterpret_cast<uint64_t *>(block.data());
      std::iota(items, items + count, uint64_t{1});
      mub_arrays array = {items, count, count, nullptr, 0, static_cast<uint16_t>(round % 2)};
      ASSERT_NO_FATAL_FAILURE(test(array));
    }
  }
}

TEST(Sort, EndsInsideTheTableWhateverTheComparerSays) {
  with_hostile_comparers({2, 8, 9, 10, 11, 17, 100, 512, 1536}, [](mub_arrays &array) {
    mub_arrays_qsort(&array, array.descending, hostile);
    std::sort(array.items, array.items + array.count);
    for (int64_t i = 0; i < array.count; ++i) ASSERT_EQ(array.items[i], static_cast<uint64_t>(i) + 1);
  });
}

TEST(Search, EndsInsideTheTableWhateverTheComparerSays) {
  with_hostile_comparers({1, 2, 3, 511, 512}, [](mub_arrays &array) {
    calls = 0;
    const int64_t found = mub_arrays_find_index(&array, 1, 0, hostile);
    ASSERT_LE(calls, 10);
    ASSERT_TRUE(found >= -1 && found < array.count);
    const int64_t nearest = mub_arrays_bfind_index(&array, 1, 0, hostile);
    ASSERT_TRUE(nearest >= 0 && nearest < array.count);
  });
}

// Which items a search meets is told by halving: these are all that are met for "before" and "behind" all.
TEST(Search, ProbesTheMiddlesRoundedDown) {
  static std::vector<uint64_t> probed;
  const auto note_and_go = [](uint64_t item, uint64_t key, uint64_t) {
    probed.push_back(item);
    return item < key ? -1 : 1;
  };
  ItemArray array;
  for (uint64_t item = 1; item <= 10; ++item) mub_arrays_append(&array, item);
  EXPECT_EQ(mub_arrays_bfind_index(&array, 0, 0, note_and_go), 0);
  EXPECT_EQ(probed, (std::vector<uint64_t>{5, 2, 1}));
  probed.clear();
  EXPECT_EQ(mub_arrays_bfind_index(&array, 11, 0, note_and_go), 9);
  EXPECT_EQ(probed, (std::vector<uint64_t>{5, 8, 9, 10}));
}

}  // namespace
