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

using Texts = std::vector<std::string>;

class Array : public mub_array {
 public:
  explicit Array(const Texts &texts) {
    mub_array_init(this, 0);
    assign(texts);
  }
  ~Array() { mub_array_term(this); }
  Array(const Array &) = delete;
  Array &operator=(const Array &) = delete;

  void assign(const Texts &texts) {
    mub_array_remove_all(this);
    uint64_t value = 0;
    for (const auto &text : texts) {
      mub_array_append(this, text.data(), static_cast<int64_t>(text.size()), ++value);
    }
  }
};

// Sorts different contents in each run, kKeysInAll keys in all: of a small array that is sorted again and
// again, the branch predictor learns the comparisons. `draw(size, salt)` makes contents, and
// `fill(sorted, contents)` stores them, which is not measured.
template <class Sorted, class Draw, class Fill, class Sort>
void sort(benchmark::State &state, Draw draw, Fill fill, Sort sort_it) {
  const int64_t count = state.range(0);
  std::vector<decltype(draw(count, 1))> contents;
  for (int64_t keys = 0; keys < mub_bench::kKeysInAll; keys += count) {
    contents.push_back(draw(count, contents.size()));
  }
  Sorted sorted({});
  size_t run = 0;
  for (auto _ : state) {
    state.PauseTiming();
    fill(sorted, contents[run++ % contents.size()]);
    state.ResumeTiming();
    sort_it(sorted);
  }
}

void sort_mub(benchmark::State &state) {
  const auto fill = [](Array &array, const Texts &texts) { array.assign(texts); };
  sort<Array>(state, mub_bench::random_keys, fill, [](Array &array) { mub_array_qsort(&array, 1); });
}

template <class Items>
void sort_std(benchmark::State &state, Items (*draw)(int64_t, uint64_t)) {
  const auto fill = [](Items &items, const Items &unsorted) { items = unsorted; };
  sort<Items>(state, draw, fill, [](Items &items) { std::sort(items.begin(), items.end()); });
}
void sort_texts_std(benchmark::State &state) { sort_std<Texts>(state, mub_bench::random_keys); }

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
Pairs random_pairs(int64_t count, uint64_t salt) {
  std::mt19937_64 random(salt);
  Pairs pairs(static_cast<size_t>(count));
  for (auto &pair : pairs) pair = {random() >> 1, random()};
  return pairs;
}

class Integers : public mub_arrayx {
 public:
  explicit Integers(const Pairs &pairs) {
    mub_arrayx_init(this, 0);
    assign(pairs);
  }
  ~Integers() { mub_arrayx_term(this); }
  Integers(const Integers &) = delete;
  Integers &operator=(const Integers &) = delete;

  void assign(const Pairs &pairs) {
    mub_arrayx_remove_all(this);
    for (const auto &[key, value] : pairs) mub_arrayx_append(this, key, value);
  }
};

void sort_integers_mub(benchmark::State &state) {
  const auto fill = [](Integers &array, const Pairs &pairs) { array.assign(pairs); };
  sort<Integers>(state, random_pairs, fill, [](Integers &array) { mub_arrayx_qsort(&array, 1); });
}
void sort_integers_std(benchmark::State &state) { sort_std<Pairs>(state, random_pairs); }

void find_integers_mub(benchmark::State &state) {
  const Pairs pairs = random_pairs(state.range(0), 1);
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
  Pairs pairs = random_pairs(state.range(0), 1);
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
  add_sizes("sort_texts", "std::sort", sort_texts_std, {1000, 100000});
  add_sizes("find_sorted_text", "mub", find_mub, {1000, 100000});
  add_sizes("find_sorted_text", "std::lower_bound", find_std, {1000, 100000});
  add_sizes("sort_integers", "mub", sort_integers_mub, {1000, 100000, 1000000});
  add_sizes("sort_integers", "std::sort", sort_integers_std, {1000, 100000, 1000000});
  add_sizes("find_sorted_integer", "mub", find_integers_mub, {1000, 100000, 1000000});
  add_sizes("find_sorted_integer", "std::lower_bound", find_integers_std, {1000, 100000, 1000000});
  return true;
}();

}  // namespace
