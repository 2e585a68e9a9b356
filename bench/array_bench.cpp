// Arrays with keys: sorting and searching, with string and integer keys.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "mub_array.h"

namespace {

class Array : public mub_array {
 public:
  explicit Array(const std::vector<std::string> &texts) {
    mub_array_init(this, 0);
    uint64_t value = 0;
    for (const auto &text : texts) {
      mub_array_append(this, text.data(), static_cast<int64_t>(text.size()), ++value);
    }
  }
  ~Array() { mub_array_term(this); }
  Array(const Array &) = delete;
  Array &operator=(const Array &) = delete;
};

void sort_mub(benchmark::State &state) {
  const Array unsorted(mub_bench::random_keys(state.range(0), 1));
  for (auto _ : state) {
    state.PauseTiming();
    mub_array array;
    mub_array_init(&array, 0);
    mub_array_clone(&unsorted, nullptr, &array, nullptr, nullptr);
    state.ResumeTiming();
    mub_array_qsort(&array, 1);
    state.PauseTiming();
    mub_array_term(&array);
    state.ResumeTiming();
  }
}

void sort_std(benchmark::State &state) {
  const auto unsorted = mub_bench::random_keys(state.range(0), 1);
  for (auto _ : state) {
    state.PauseTiming();
    auto texts = unsorted;
    state.ResumeTiming();
    std::sort(texts.begin(), texts.end());
    state.PauseTiming();
    texts = {};
    state.ResumeTiming();
  }
}

void find_mub(benchmark::State &state) {
  const auto texts = mub_bench::random_keys(state.range(0), 1);
  Array array(texts);
  mub_array_qsort(&array, 1);
  const auto wanted = mub_bench::drawn(texts);
  for (auto _ : state) {
    uint64_t sum = 0;
    for (const auto &text : wanted) {
      sum += mub_array_find(&array, text.data(), static_cast<int64_t>(text.size()));
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(wanted.size()));
}

void find_std(benchmark::State &state) {
  auto texts = mub_bench::random_keys(state.range(0), 1);
  const auto wanted = mub_bench::drawn(texts);
  std::sort(texts.begin(), texts.end());
  for (auto _ : state) {
    int64_t sum = 0;
    for (const auto &text : wanted) sum += std::lower_bound(texts.begin(), texts.end(), text) - texts.begin();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(wanted.size()));
}

using Pairs = std::vector<std::pair<uint64_t, uint64_t>>;

// Random 63-bit keys, which signed and unsigned comparisons order in the same way.
Pairs random_pairs(int64_t count) {
  std::mt19937_64 random(1);
  Pairs pairs(static_cast<size_t>(count));
  for (auto &pair : pairs) pair = {random() >> 1, random()};
  return pairs;
}

class Integers : public mub_arrayx {
 public:
  explicit Integers(const Pairs &pairs) {
    mub_arrayx_init(this, 0);
    for (const auto &[key, value] : pairs) mub_arrayx_append(this, key, value);
  }
  ~Integers() { mub_arrayx_term(this); }
  Integers(const Integers &) = delete;
  Integers &operator=(const Integers &) = delete;
};

void sort_integers_mub(benchmark::State &state) {
  const Integers unsorted(random_pairs(state.range(0)));
  Integers array({});
  for (auto _ : state) {
    state.PauseTiming();
    mub_arrayx_clone(&unsorted, nullptr, &array, nullptr, nullptr);
    state.ResumeTiming();
    mub_arrayx_qsort(&array, 1);
  }
}

void sort_integers_std(benchmark::State &state) {
  const Pairs unsorted = random_pairs(state.range(0));
  Pairs pairs;
  for (auto _ : state) {
    state.PauseTiming();
    pairs = unsorted;
    state.ResumeTiming();
    std::sort(pairs.begin(), pairs.end());
  }
}

void find_integers_mub(benchmark::State &state) {
  const Pairs pairs = random_pairs(state.range(0));
  Integers array(pairs);
  mub_arrayx_qsort(&array, 1);
  const Pairs wanted = mub_bench::drawn(pairs);
  for (auto _ : state) {
    uint64_t sum = 0;
    for (const auto &pair : wanted) sum += mub_arrayx_find(&array, pair.first);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(wanted.size()));
}

void find_integers_std(benchmark::State &state) {
  Pairs pairs = random_pairs(state.range(0));
  const Pairs wanted = mub_bench::drawn(pairs);
  std::sort(pairs.begin(), pairs.end());
  for (auto _ : state) {
    uint64_t sum = 0;
    for (const auto &pair : wanted) {
      sum += std::lower_bound(pairs.begin(), pairs.end(), std::pair{pair.first, uint64_t{0}})->second;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(wanted.size()));
}

// Bare numbers: adding them at the end, and reading them in any order.
class MubNumbers : mub_arrays {
 public:
  MubNumbers() { mub_arrays_init(this, 0); }
  ~MubNumbers() { mub_arrays_term(this); }
  MubNumbers(const MubNumbers &) = delete;
  MubNumbers &operator=(const MubNumbers &) = delete;

  void add(uint64_t number) { mub_arrays_append(this, number); }
  uint64_t at(uint64_t index) const { return mub_arrays_get_at(this, static_cast<int64_t>(index)); }
};

class StdNumbers {
 public:
  void add(uint64_t number) { numbers_.push_back(number); }
  uint64_t at(uint64_t index) const { return index < numbers_.size() ? numbers_[index] : 0; }

 private:
  std::vector<uint64_t> numbers_;
};

template <class Numbers>
void append_numbers(benchmark::State &state) {
  for (auto _ : state) {
    Numbers numbers;
    for (int64_t i = 0; i < state.range(0); ++i) numbers.add(static_cast<uint64_t>(i));
    benchmark::DoNotOptimize(&numbers);
  }
}

template <class Numbers>
void read_numbers(benchmark::State &state) {
  std::vector<uint64_t> order(static_cast<size_t>(state.range(0)));
  std::iota(order.begin(), order.end(), 0u);
  Numbers numbers;
  for (const uint64_t number : order) numbers.add(number);
  order = mub_bench::shuffled(order);
  for (auto _ : state) {
    uint64_t sum = 0;
    for (const uint64_t index : order) sum += numbers.at(index);
    benchmark::DoNotOptimize(sum);
  }
}

template <class Numbers>
void add_numbers(const char *who) {
  mub_bench::add_sizes("append_number", who, append_numbers<Numbers>, {1000, 100000});
  mub_bench::add_sizes("read_number", who, read_numbers<Numbers>, {1000, 100000});
}

[[maybe_unused]] const bool registered = [] {
  using mub_bench::add_sizes;
  add_numbers<MubNumbers>(mub_bench::kMub);
  if (mub_bench::kIsInline) return true;
  add_numbers<StdNumbers>("std::vector");
  add_sizes("sort_texts", "mub", sort_mub, {1000, 100000});
  add_sizes("sort_texts", "std::sort", sort_std, {1000, 100000});
  add_sizes("find_sorted_text", "mub", find_mub, {1000, 100000});
  add_sizes("find_sorted_text", "std::lower_bound", find_std, {1000, 100000});
  add_sizes("sort_integers", "mub", sort_integers_mub, {1000, 100000, 1000000});
  add_sizes("sort_integers", "std::sort", sort_integers_std, {1000, 100000, 1000000});
  add_sizes("find_sorted_integer", "mub", find_integers_mub, {1000, 100000, 1000000});
  add_sizes("find_sorted_integer", "std::lower_bound", find_integers_std, {1000, 100000, 1000000});
  return true;
}();

}  // namespace
