// Maps from 64-bit integers: mub_hashx against std::unordered_map and absl::flat_hash_map.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>

#include "bench_support.h"
#include "mub_hash.h"

#ifdef MUB_PEER_ABSL
#include <absl/container/flat_hash_map.h>
#endif

namespace {

using mub_bench::drawn;
using mub_bench::shuffled;
using Keys = std::vector<uint64_t>;

class MubMap {
 public:
  MubMap() { mub_hashx_init(&table_, 1, 0); }
  ~MubMap() { mub_hashx_term(&table_); }
  MubMap(const MubMap &) = delete;
  MubMap &operator=(const MubMap &) = delete;

  void insert(uint64_t key, uint64_t value) { mub_hashx_insert(&table_, key, value); }
  uint64_t get(uint64_t key) const { return mub_hashx_get(&table_, key); }
  void erase(uint64_t key) { mub_hashx_remove(&table_, key); }
  uint64_t sum() const {
    uint64_t sum = 0;
    int64_t bucket;
    for (auto *entry = mub_hashx_entry_first(&table_, &bucket); entry != nullptr;
         entry = mub_hashx_entry_next(&table_, &bucket, entry)) {
      sum += entry->value;
    }
    return sum;
  }
  void clear() {
    mub_hashx_term(&table_);
    mub_hashx_init(&table_, 1, 0);
  }
  const mub_hashx &table() const { return table_; }

 private:
  mub_hashx table_;
};

class MubBatches : public MubMap {
 public:
  uint64_t sum_of(const Keys &wanted) const {
    return mub_bench::sum_of_batch(table(), mub_hashx_get_many, wanted);
  }
};

template <class Map>
class StdLikeMap {
 public:
  void insert(uint64_t key, uint64_t value) { map_.emplace(key, value); }
  uint64_t get(uint64_t key) const {
    const auto found = map_.find(key);
    return found == map_.end() ? 0 : found->second;
  }
  void erase(uint64_t key) { map_.erase(key); }
  uint64_t sum() const {
    uint64_t sum = 0;
    for (const auto &[key, value] : map_) sum += value;
    return sum;
  }
  void clear() { Map().swap(map_); }

 private:
  Map map_;
};

Keys sequence(int64_t count) {
  Keys keys(static_cast<size_t>(count));
  std::iota(keys.begin(), keys.end(), 1u);
  return keys;
}

Keys random_numbers(int64_t count, uint64_t salt) {
  std::mt19937_64 random(salt);
  Keys keys(static_cast<size_t>(count));
  for (uint64_t &key : keys) key = random();
  return keys;
}

template <class Map>
std::unique_ptr<Map> filled(const Keys &keys) {
  auto map = std::make_unique<Map>();
  uint64_t value = 0;
  for (const uint64_t key : keys) map->insert(key, ++value);
  return map;
}

Keys random_numbers(int64_t count) { return random_numbers(count, 7); }

template <class Map>
void insert(benchmark::State &state, const Keys &keys) {
  for (auto _ : state) {
    auto map = filled<Map>(keys);
    benchmark::DoNotOptimize(map.get());
    state.PauseTiming();
    map.reset();
    state.ResumeTiming();
  }
}

template <class Map>
void hit_in_order(benchmark::State &state) {
  const Keys keys = sequence(state.range(0));
  mub_bench::look_up(state, *filled<Map>(keys), keys);
}

template <class Map>
void hit_random(benchmark::State &state) {
  const Keys keys = random_numbers(state.range(0));
  mub_bench::look_up(state, *filled<Map>(keys), drawn(keys));
}

template <class Map>
void hit_in_sequence(benchmark::State &state) {
  const Keys keys = random_numbers(state.range(0));
  mub_bench::look_up_in_sequence(state, *filled<Map>(keys), drawn(keys));
}

template <class Map>
void miss_random(benchmark::State &state) {
  const Keys keys = random_numbers(state.range(0));
  mub_bench::look_up(state, *filled<Map>(keys), drawn(random_numbers(state.range(0), 8)));
}

template <class Map>
void walk(benchmark::State &state) {
  mub_bench::walk(state, *filled<Map>(random_numbers(state.range(0))));
}

// Removes all keys in random order.
template <class Map>
void erase(benchmark::State &state) {
  const Keys keys = random_numbers(state.range(0));
  const Keys doomed = shuffled(keys);
  for (auto _ : state) {
    state.PauseTiming();
    auto map = filled<Map>(keys);
    state.ResumeTiming();
    for (const uint64_t key : doomed) map->erase(key);
    state.PauseTiming();
    map.reset();
    state.ResumeTiming();
  }
}

template <class Map>
void release(benchmark::State &state) {
  const Keys keys = random_numbers(state.range(0));
  mub_bench::release(state, [&] { return filled<Map>(keys); });
}

// `Batches` is the map, but where it has look-ups of many keys.
template <class Map, class Batches = Map>
void add(const std::string &who) {
  const std::vector<int64_t> sizes = {1000, 100000, 1000000};
  mub_bench::add_sizes("hashx_hit_in_order", who, hit_in_order<Map>, sizes);
  mub_bench::add_sizes("hashx_hit_random", who, hit_random<Map>, sizes);
  mub_bench::add_sizes("hashx_hit_in_sequence", who, hit_in_sequence<Map>, sizes);
  mub_bench::add_sizes("hashx_miss_random", who, miss_random<Map>, sizes);
  if (mub_bench::kIsInline) return;
  mub_bench::add_sizes("hashx_hit_batch", who, hit_random<Batches>, sizes);
  mub_bench::add_sizes(
      "hashx_insert_sequence", who, [](auto &state) { insert<Map>(state, sequence(state.range(0))); }, sizes);
  mub_bench::add_sizes(
      "hashx_insert_random", who, [](auto &state) { insert<Map>(state, random_numbers(state.range(0))); },
      sizes);
  mub_bench::add_sizes("hashx_walk", who, walk<Map>, sizes);
  mub_bench::add_sizes("hashx_erase", who, erase<Map>, sizes);
  mub_bench::add_runs("hashx_release", who, release<Map>, sizes);
}

[[maybe_unused]] const bool registered = [] {
  add<MubMap, MubBatches>(mub_bench::kMub);
  if (!mub_bench::kHasPeers) return true;
  add<StdLikeMap<std::unordered_map<uint64_t, uint64_t>>>("std::unordered_map");
#ifdef MUB_PEER_ABSL
  add<StdLikeMap<absl::flat_hash_map<uint64_t, uint64_t>>>("absl::flat_hash_map");
#endif
  return true;
}();

}  // namespace
