// Ordered maps: mub_btreex and mub_btree against std::map and absl::btree_map. Integer keys use all 64
// bits; texts have 8 to 24 bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "mub_btree.h"

#ifdef MUB_PEER_ABSL
#include <absl/container/btree_map.h>
#endif

namespace {

using Integers = std::vector<uint64_t>;
using Texts = std::vector<std::string>;

// ---- the operations of each map

class MubIntegers {
 public:
  MubIntegers() { clear_record(); }
  ~MubIntegers() { mub_btreex_term(&tree_); }
  MubIntegers(const MubIntegers &) = delete;
  MubIntegers &operator=(const MubIntegers &) = delete;

  void insert(uint64_t key, uint64_t value) { mub_btreex_insert(&tree_, key, value); }
  uint64_t get(uint64_t key) const { return mub_btreex_get(&tree_, key); }
  uint64_t sum() const {
    uint64_t sum = 0;
    mub_btreex_cursor at;
    for (auto *node = mub_btreex_cursor_first(&at, &tree_); node != nullptr;
         node = mub_btreex_cursor_next(&at)) {
      sum += node->value;
    }
    return sum;
  }
  uint64_t sum_backwards() const {
    uint64_t sum = 0;
    mub_btreex_cursor at;
    for (auto *node = mub_btreex_cursor_last(&at, &tree_); node != nullptr;
         node = mub_btreex_cursor_prev(&at)) {
      sum += node->value;
    }
    return sum;
  }
  void clear() {
    mub_btreex_term(&tree_);
    clear_record();
  }
  const mub_btreex &tree() const { return tree_; }

 private:
  void clear_record() {
    mub_btreex_init(&tree_, 1, 1, 0);
    tree_.key_type = MUB_KEY_UINT64;
  }
  mub_btreex tree_;
};

class MubIntegerBatches : public MubIntegers {
 public:
  uint64_t sum_of(const Integers &wanted) const {
    return mub_bench::sum_of_batch(tree(), mub_btreex_get_many, wanted);
  }
};

class MubTexts {
 public:
  MubTexts() { mub_btree_init(&tree_, 1, 1, 0); }
  ~MubTexts() { mub_btree_term(&tree_); }
  MubTexts(const MubTexts &) = delete;
  MubTexts &operator=(const MubTexts &) = delete;

  void insert(const std::string &key, uint64_t value) {
    mub_btree_insert(&tree_, key.data(), static_cast<int64_t>(key.size()), value);
  }
  uint64_t get(const std::string &key) const {
    return mub_btree_get(&tree_, key.data(), static_cast<int64_t>(key.size()));
  }
  void clear() {
    mub_btree_term(&tree_);
    mub_btree_init(&tree_, 1, 1, 0);
  }
  const mub_btree &tree() const { return tree_; }

 private:
  mub_btree tree_;
};

class MubTextBatches : public MubTexts {
 public:
  uint64_t sum_of(const std::vector<std::string> &wanted) const {
    return mub_bench::sum_of_batch(tree(), mub_btree_get_many, wanted);
  }
};

template <class Map>
class Peer {
 public:
  using Key = typename Map::key_type;

  void insert(const Key &key, uint64_t value) { map_.emplace(key, value); }
  uint64_t get(const Key &key) const {
    const auto found = map_.find(key);
    return found == map_.end() ? 0 : found->second;
  }
  uint64_t sum() const {
    uint64_t sum = 0;
    for (const auto &item : map_) sum += item.second;
    return sum;
  }
  uint64_t sum_backwards() const {
    uint64_t sum = 0;
    for (auto item = map_.rbegin(); item != map_.rend(); ++item) sum += item->second;
    return sum;
  }
  void clear() { map_ = Map(); }

 private:
  Map map_;
};

// ---- the workloads

Integers random_integers(int64_t count, uint64_t salt) {
  std::mt19937_64 random(salt);
  Integers keys(static_cast<size_t>(count));
  for (uint64_t &key : keys) key = random();
  return keys;
}

Integers ascending_integers(int64_t count, uint64_t salt) {
  Integers keys = random_integers(count, salt);
  std::sort(keys.begin(), keys.end());
  return keys;
}

template <class Map, class Keys>
std::unique_ptr<Map> filled(const Keys &keys) {
  auto map = std::make_unique<Map>();
  uint64_t value = 0;
  for (const auto &key : keys) map->insert(key, ++value);
  return map;
}

// Fills maps, each with another set of keys.
template <class Map, class MakeKeys>
void insert(benchmark::State &state, MakeKeys make_keys) {
  std::vector<decltype(make_keys(1, 1))> sets;
  for (uint64_t salt = 0; salt == 0 || static_cast<int64_t>(salt) * state.range(0) < mub_bench::kKeysInAll;
       ++salt) {
    sets.push_back(make_keys(state.range(0), salt % 70));
  }
  size_t next = 0;
  for (auto _ : state) {
    auto map = filled<Map>(sets[next++ % sets.size()]);
    benchmark::DoNotOptimize(map.get());
    state.PauseTiming();
    map.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Map>
void get_integers(benchmark::State &state) {
  const Integers keys = random_integers(state.range(0), 1);
  mub_bench::look_up(state, *filled<Map>(keys), mub_bench::drawn(keys));
}

template <class Map>
void get_integers_in_sequence(benchmark::State &state) {
  const Integers keys = random_integers(state.range(0), 1);
  mub_bench::look_up_in_sequence(state, *filled<Map>(keys), mub_bench::drawn(keys));
}

template <class Map>
void get_texts(benchmark::State &state) {
  const auto keys = mub_bench::random_keys(state.range(0), 1);
  mub_bench::look_up(state, *filled<Map>(keys), mub_bench::drawn(keys));
}

template <class Map>
void walk(benchmark::State &state) {
  mub_bench::walk(state, *filled<Map>(random_integers(state.range(0), 1)));
}

template <class Map>
void walk_backwards(benchmark::State &state) {
  const auto map = filled<Map>(random_integers(state.range(0), 1));
  for (auto _ : state) benchmark::DoNotOptimize(map->sum_backwards());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Map>
void release(benchmark::State &state) {
  const Integers keys = random_integers(state.range(0), 1);
  mub_bench::release(state, [&] { return filled<Map>(keys); });
}

template <class Map>
void memory(benchmark::State &state) {
  const Integers keys = random_integers(state.range(0), 1);
  mub_bench::memory(state, [&] { return filled<Map>(keys); });
}

const std::vector<int64_t> kSizes = {1000, 100000, 1000000};
const std::vector<int64_t> kWalkSizes = {100, 1000, 8000, 100000, 1000000};

// `Batches` is the map, but where it has look-ups of many keys.
template <class Map, class Batches = Map>
void add_integers(const std::string &who) {
  using mub_bench::add_sizes;
  add_sizes("u64_lookup", who, get_integers<Map>, kSizes);
  add_sizes("u64_lookup_in_sequence", who, get_integers_in_sequence<Map>, kSizes);
  add_sizes("u64_lookup_batch", who, get_integers<Batches>, kSizes);
  add_sizes(
      "u64_insert_random", who, [](auto &state) { insert<Map>(state, random_integers); }, kSizes);
  add_sizes(
      "u64_insert_ascending", who, [](auto &state) { insert<Map>(state, ascending_integers); }, kSizes);
  add_sizes("u64_walk", who, walk<Map>, kWalkSizes);
  add_sizes("u64_walk_backwards", who, walk_backwards<Map>, kWalkSizes);
  mub_bench::add_runs("u64_release", who, release<Map>, kSizes);
  add_sizes("u64_memory", who, memory<Map>, kSizes);
}

template <class Map, class Batches = Map>
void add_texts(const std::string &who) {
  mub_bench::add_sizes("text_lookup", who, get_texts<Map>, kSizes);
  mub_bench::add_sizes("text_lookup_batch", who, get_texts<Batches>, kSizes);
  mub_bench::add_sizes(
      "text_insert", who, [](auto &state) { insert<Map>(state, mub_bench::random_keys); }, kSizes);
}

[[maybe_unused]] const bool registered = [] {
  add_integers<MubIntegers, MubIntegerBatches>(mub_bench::kMub);
  add_texts<MubTexts, MubTextBatches>(mub_bench::kMub);
  if (!mub_bench::kHasPeers) return true;
  add_integers<Peer<std::map<uint64_t, uint64_t>>>("std::map");
  add_texts<Peer<std::map<std::string, uint64_t>>>("std::map");
#ifdef MUB_PEER_ABSL
  add_integers<Peer<absl::btree_map<uint64_t, uint64_t>>>("absl::btree_map");
  add_texts<Peer<absl::btree_map<std::string, uint64_t>>>("absl::btree_map");
#endif
  return true;
}();

}  // namespace
