// Shared by the benchmarks: keys, the names of benchmarks, and the size of the heap.
//
// A benchmark is named WORKLOAD/WHO/N, where WHO is "mub", "mub_inline", "mub_lto" or a peer; tools/bench
// pairs them by name.
#ifndef MUB_BENCH_SUPPORT_H
#define MUB_BENCH_SUPPORT_H

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

namespace mub_bench {

// Some programs contain their source twice, the second time compiled with mub_inline.h. The second one has
// only the workloads that call a function of that header, and no peers. A program that is linked with the
// static library and optimised as a whole has no peers either.
#if defined MUB_INLINE_H
constexpr char kMub[] = "mub_inline";
constexpr bool kIsInline = true, kHasPeers = false;
#elif defined MUB_BENCH_LTO
constexpr char kMub[] = "mub_lto";
constexpr bool kIsInline = false, kHasPeers = false;
#else
constexpr char kMub[] = "mub";
constexpr bool kIsInline = false, kHasPeers = true;
#endif

// The same texts, stored in the order of the vector, like words of a file: so the container is measured, and
// not cache misses on the keys.
inline std::vector<std::string> laid_out(const std::vector<std::string> &texts) {
  std::vector<std::string> copies(texts.begin(), texts.end());
  return copies;
}

// Distinct texts of 8 to 24 bytes. They depend only on the salt; different salts give disjoint sets.
inline std::vector<std::string> random_keys(int64_t count, uint64_t salt) {
  std::mt19937_64 random(salt);
  std::vector<std::string> keys;
  {
    std::unordered_set<std::string> seen;
    while (static_cast<int64_t>(seen.size()) < count) {
      std::string key(8 + random() % 17, static_cast<char>('0' + salt));
      for (size_t i = 1; i < key.size(); ++i) key[i] = static_cast<char>('a' + random() % 26);
      if (seen.insert(key).second) keys.push_back(key);
    }
  }
  return laid_out(keys);
}

// `length` letters of an alphabet that starts at 'a'.
inline std::string random_text(int64_t length, uint64_t alphabet, uint64_t salt) {
  std::mt19937_64 random(salt);
  std::string text(static_cast<size_t>(length), ' ');
  for (char &c : text) c = static_cast<char>('a' + random() % alphabet);
  return text;
}

template <class Item>
std::vector<Item> shuffled(std::vector<Item> items) {
  std::shuffle(items.begin(), items.end(), std::mt19937_64(42));
  return items;
}

// Enough keys that the branch predictor cannot learn the run even of a small container.
constexpr int64_t kKeysInAll = 200000;

// Items chosen at random, at least as many as there are.
template <class Item>
std::vector<Item> drawn(const std::vector<Item> &items) {
  std::mt19937_64 random(42);
  std::vector<Item> wanted;
  const auto count = static_cast<int64_t>(items.size());
  for (int64_t i = 0; i < std::max(kKeysInAll, count); ++i) wanted.push_back(items[random() % items.size()]);
  return wanted;
}

// The sum of the values of the keys: one look-up after the other, but for maps that take all at once.
template <class Map, class Keys>
auto sum_of(const Map &map, const Keys &wanted, int) -> decltype(map.sum_of(wanted)) {
  return map.sum_of(wanted);
}
template <class Map, class Keys>
uint64_t sum_of(const Map &map, const Keys &wanted, ...) {
  uint64_t sum = 0;
  for (const auto &key : wanted) sum += map.get(key);
  return sum;
}

// The same sum, but each look-up waits for the value before it. Values are small: their highest bit is 0.
template <class Map, class Keys>
uint64_t sum_in_sequence(const Map &map, const Keys &wanted) {
  uint64_t sum = 0;
  uint64_t value = 0;
  for (size_t i = 0; i < wanted.size(); ++i) {
    value = map.get(wanted[i + (value >> 63)]);
    sum += value;
  }
  return sum;
}

// For maps with byte-string keys that take all at once.
template <class Record, class GetMany>
uint64_t sum_of_batch(const Record &record, GetMany get_many, const std::vector<std::string> &wanted) {
  constexpr size_t kBatch = 256;
  const void *keys[kBatch];
  int64_t lengths[kBatch];
  uint64_t values[kBatch];
  uint64_t sum = 0;
  for (size_t first = 0; first < wanted.size(); first += kBatch) {
    const size_t count = std::min(kBatch, wanted.size() - first);
    for (size_t i = 0; i < count; ++i) {
      keys[i] = wanted[first + i].data();
      lengths[i] = static_cast<int64_t>(wanted[first + i].size());
    }
    get_many(&record, keys, lengths, static_cast<int64_t>(count), values);
    for (size_t i = 0; i < count; ++i) sum += values[i];
  }
  return sum;
}
template <class Record, class GetMany>
uint64_t sum_of_batch(const Record &record, GetMany get_many, const std::vector<uint64_t> &wanted) {
  std::vector<uint64_t> values(wanted.size());
  get_many(&record, wanted.data(), static_cast<int64_t>(wanted.size()), values.data());
  return std::accumulate(values.begin(), values.end(), uint64_t{0});
}

// Looks keys up that were drawn at random, so often that the branch predictor cannot learn them.
template <class Map, class Keys>
void look_up(benchmark::State &state, const Map &map, const Keys &wanted) {
  for (auto _ : state) benchmark::DoNotOptimize(sum_of(map, wanted, 0));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(wanted.size()));
}
template <class Map, class Keys>
void look_up_in_sequence(benchmark::State &state, const Map &map, const Keys &wanted) {
  for (auto _ : state) benchmark::DoNotOptimize(sum_in_sequence(map, wanted));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(wanted.size()));
}

// The sum of all values, in the order of the map.
template <class Map>
void walk(benchmark::State &state, const Map &map) {
  for (auto _ : state) benchmark::DoNotOptimize(map.sum());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

inline int64_t heap_bytes_in_use() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<int64_t>(info.uordblks + info.hblkhd);
}

// Keeps released memory in the heap, so that no benchmark pays for pages that an earlier one returned to the
// system.
[[maybe_unused]] inline const bool heap_is_kept = [] {
  return mallopt(M_TRIM_THRESHOLD, 1 << 30) != 0 && mallopt(M_MMAP_THRESHOLD, 1 << 30) != 0;
}();

// Measures the release of a map, which is filled anew each time.
template <class Fill>
void release(benchmark::State &state, Fill fill) {
  for (auto _ : state) {
    state.PauseTiming();
    auto map = fill();
    state.ResumeTiming();
    map->clear();
    benchmark::DoNotOptimize(map.get());
  }
}

// The bytes that a map allocates per entry, with the overhead of the allocator.
template <class Fill>
void memory(benchmark::State &state, Fill fill) {
  for (auto _ : state) {
    const int64_t before = heap_bytes_in_use();
    const auto map = fill();
    benchmark::DoNotOptimize(map.get());
    const auto used = static_cast<double>(heap_bytes_in_use() - before);
    state.counters["bytes_per_entry"] = used / static_cast<double>(state.range(0));
  }
}

// For operations that take far less time than their preparation: a fixed number of runs, so that the
// preparation does not take minutes.
inline void add_runs(const std::string &workload, const std::string &who,
                     void (*function)(benchmark::State &), const std::vector<int64_t> &sizes) {
  for (const int64_t size : sizes) {
    benchmark::RegisterBenchmark((workload + "/" + who).c_str(), function)
        ->Arg(size)
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(std::max<int64_t>(3, 1000000 / size));
  }
}

// With MUB_BENCH_LARGE in the environment, workloads of a million items have ten million, too.
template <class Function>
void add_sizes(const std::string &workload, const std::string &who, Function function,
               std::vector<int64_t> sizes) {
  if (sizes.back() == 1000000 && std::getenv("MUB_BENCH_LARGE") != nullptr) sizes.push_back(10000000);
  for (const int64_t size : sizes) {
    benchmark::RegisterBenchmark((workload + "/" + who).c_str(), function)
        ->Arg(size)
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace mub_bench

#endif
