// Keyed arrays: sorting and searching string keys.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>
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
  const auto wanted = mub_bench::shuffled(texts);
  for (auto _ : state) {
    uint64_t sum = 0;
    for (const auto &text : wanted) {
      sum += mub_array_find(&array, text.data(), static_cast<int64_t>(text.size()));
    }
    benchmark::DoNotOptimize(sum);
  }
}

void find_std(benchmark::State &state) {
  auto texts = mub_bench::random_keys(state.range(0), 1);
  const auto wanted = mub_bench::shuffled(texts);
  std::sort(texts.begin(), texts.end());
  for (auto _ : state) {
    int64_t sum = 0;
    for (const auto &text : wanted) sum += std::lower_bound(texts.begin(), texts.end(), text) - texts.begin();
    benchmark::DoNotOptimize(sum);
  }
}

[[maybe_unused]] const bool registered = [] {
  using mub_bench::add_sizes;
  add_sizes("sort_texts", "mub", sort_mub, {1000, 100000});
  add_sizes("sort_texts", "std::sort", sort_std, {1000, 100000});
  add_sizes("find_sorted_text", "mub", find_mub, {1000, 100000});
  add_sizes("find_sorted_text", "std::lower_bound", find_std, {1000, 100000});
  return true;
}();

}  // namespace
