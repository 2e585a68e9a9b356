// String maps: mub_hash against std::unordered_map, absl::flat_hash_map and GLib's GHashTable, a
// chained table. Keys are texts of 8 to 24 bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench_support.h"
#include "mub_hash.h"

#ifdef MUB_PEER_ABSL
#include <absl/container/flat_hash_map.h>
#endif
#ifdef MUB_PEER_GLIB
#include <glib.h>
#endif

namespace {

using mub_bench::drawn;
using mub_bench::random_keys;
using mub_bench::shuffled;

// ---- the operations of each map

class MubMap {
 public:
  MubMap() { mub_hash_init(&table_, 1, 0); }
  ~MubMap() { mub_hash_term(&table_); }
  MubMap(const MubMap &) = delete;
  MubMap &operator=(const MubMap &) = delete;

  void insert(const std::string &key, uint64_t value) {
    mub_hash_insert(&table_, key.data(), static_cast<int64_t>(key.size()), value);
  }
  uint64_t get(const std::string &key) const {
    return mub_hash_get(&table_, key.data(), static_cast<int64_t>(key.size()));
  }
  uint64_t sum() const {
    uint64_t sum = 0;
    int64_t bucket;
    for (auto *entry = mub_hash_entry_first(&table_, &bucket); entry != nullptr;
         entry = mub_hash_entry_next(&table_, &bucket, entry)) {
      sum += entry->value;
    }
    return sum;
  }
  void clone_into(MubMap &copy) const { mub_hash_clone(&table_, nullptr, &copy.table_, nullptr, nullptr); }
  void clear() {
    mub_hash_term(&table_);
    mub_hash_init(&table_, 1, 0);
  }
  const mub_hash &table() const { return table_; }

 private:
  mub_hash table_;
};

// Looks keys up 256 at a time.
class MubBatches : public MubMap {
 public:
  uint64_t sum_of(const std::vector<std::string> &wanted) const {
    return mub_bench::sum_of_batch(table(), mub_hash_get_many, wanted);
  }
};

class StdMap {
 public:
  void insert(const std::string &key, uint64_t value) { map_.emplace(key, value); }
  uint64_t get(const std::string &key) const {
    const auto found = map_.find(key);
    return found == map_.end() ? 0 : found->second;
  }
  uint64_t sum() const {
    uint64_t sum = 0;
    for (const auto &[key, value] : map_) sum += value;
    return sum;
  }
  void clone_into(StdMap &copy) const { copy.map_ = map_; }
  void clear() { std::unordered_map<std::string, uint64_t>().swap(map_); }

 private:
  std::unordered_map<std::string, uint64_t> map_;
};

#ifdef MUB_PEER_ABSL
class AbslMap {
 public:
  void insert(const std::string &key, uint64_t value) { map_.emplace(key, value); }
  uint64_t get(const std::string &key) const {
    const auto found = map_.find(key);
    return found == map_.end() ? 0 : found->second;
  }
  uint64_t sum() const {
    uint64_t sum = 0;
    for (const auto &[key, value] : map_) sum += value;
    return sum;
  }
  void clone_into(AbslMap &copy) const { copy.map_ = map_; }
  void clear() { absl::flat_hash_map<std::string, uint64_t>().swap(map_); }

 private:
  absl::flat_hash_map<std::string, uint64_t> map_;
};
#endif

#ifdef MUB_PEER_GLIB
class GlibMap {
 public:
  GlibMap() : map_(fresh()) {}
  ~GlibMap() { g_hash_table_destroy(map_); }
  GlibMap(const GlibMap &) = delete;
  GlibMap &operator=(const GlibMap &) = delete;

  void insert(const std::string &key, uint64_t value) {
    if (g_hash_table_contains(map_, key.c_str())) return;
    g_hash_table_insert(map_, g_strdup(key.c_str()), GSIZE_TO_POINTER(value));
  }
  uint64_t get(const std::string &key) const {
    return GPOINTER_TO_SIZE(g_hash_table_lookup(map_, key.c_str()));
  }
  uint64_t sum() const {
    uint64_t sum = 0;
    GHashTableIter iter;
    gpointer value;
    g_hash_table_iter_init(&iter, map_);
    while (g_hash_table_iter_next(&iter, nullptr, &value)) sum += GPOINTER_TO_SIZE(value);
    return sum;
  }
  void clone_into(GlibMap &copy) const {
    GHashTableIter iter;
    gpointer key;
    gpointer value;
    g_hash_table_iter_init(&iter, map_);
    while (g_hash_table_iter_next(&iter, &key, &value)) {
      g_hash_table_insert(copy.map_, g_strdup(static_cast<const char *>(key)), value);
    }
  }
  void clear() {
    g_hash_table_destroy(map_);
    map_ = fresh();
  }

 private:
  static GHashTable *fresh() { return g_hash_table_new_full(g_str_hash, g_str_equal, g_free, nullptr); }
  GHashTable *map_;
};
#endif

template <class Map>
std::unique_ptr<Map> filled(const std::vector<std::string> &keys) {
  auto map = std::make_unique<Map>();
  uint64_t value = 0;
  for (const std::string &key : keys) map->insert(key, ++value);
  return map;
}

template <class Map>
void insert(benchmark::State &state) {
  const auto keys = random_keys(state.range(0), 1);
  for (auto _ : state) {
    auto map = filled<Map>(keys);
    benchmark::DoNotOptimize(map.get());
    state.PauseTiming();
    map.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Map>
void hit(benchmark::State &state) {
  const auto keys = random_keys(state.range(0), 1);
  mub_bench::look_up(state, *filled<Map>(keys), drawn(keys));
}

template <class Map>
void hit_in_sequence(benchmark::State &state) {
  const auto keys = random_keys(state.range(0), 1);
  mub_bench::look_up_in_sequence(state, *filled<Map>(keys), drawn(keys));
}

template <class Map>
void miss(benchmark::State &state) {
  const auto keys = random_keys(state.range(0), 1);
  mub_bench::look_up(state, *filled<Map>(keys), drawn(random_keys(state.range(0), 2)));
}

template <class Map>
void walk(benchmark::State &state) {
  mub_bench::walk(state, *filled<Map>(random_keys(state.range(0), 1)));
}

template <class Map>
void clone(benchmark::State &state) {
  const auto map = filled<Map>(random_keys(state.range(0), 1));
  for (auto _ : state) {
    auto copy = std::make_unique<Map>();
    map->clone_into(*copy);
    benchmark::DoNotOptimize(copy.get());
    state.PauseTiming();
    copy.reset();
    state.ResumeTiming();
  }
}

template <class Map>
void release(benchmark::State &state) {
  const auto keys = random_keys(state.range(0), 1);
  mub_bench::release(state, [&] { return filled<Map>(keys); });
}

template <class Map>
void memory(benchmark::State &state) {
  const auto keys = random_keys(state.range(0), 1);
  mub_bench::memory(state, [&] { return filled<Map>(keys); });
}

// Removes keys from a table and adds them again, untimed. The peer "walk" is the same table with its
// entries in an external pool, where a removal must follow the chains to update offsets.
void remove_from(benchmark::State &state, bool own_pool) {
  auto keys = shuffled(random_keys(state.range(0), 1));
  mub_pool pool;
  mub_pool_init(&pool);
  pool.block_size = sizeof(mub_hash_entry);
  mub_hash table;
  mub_hash_init(&table, own_pool ? 1 : 0, 0);
  if (!own_pool) table.entry_pool = &pool;
  for (const std::string &key : keys) {
    mub_hash_insert(&table, key.data(), static_cast<int64_t>(key.size()), 1);
  }
  size_t next = 0;
  for (auto _ : state) {
    const std::string &key = keys[next++ % keys.size()];
    mub_hash_remove(&table, key.data(), static_cast<int64_t>(key.size()));
    state.PauseTiming();
    mub_hash_insert(&table, key.data(), static_cast<int64_t>(key.size()), 1);
    state.ResumeTiming();
  }
  mub_hash_term(&table);
  mub_pool_term(&pool);
}

// `Batches` is the map, but where it has look-ups of many keys.
template <class Map, class Batches = Map>
void add(const std::string &who) {
  using mub_bench::add_sizes;
  add_sizes("map_insert", who, insert<Map>, {1000, 100000, 1000000});
  add_sizes("map_hit", who, hit<Map>, {1000, 100000, 1000000});
  add_sizes("map_hit_in_sequence", who, hit_in_sequence<Map>, {1000, 100000, 1000000});
  add_sizes("map_miss", who, miss<Map>, {1000, 100000, 1000000});
  add_sizes("map_hit_batch", who, hit<Batches>, {1000, 100000, 1000000});
  add_sizes("map_miss_batch", who, miss<Batches>, {1000, 100000, 1000000});
  add_sizes("map_walk", who, walk<Map>, {1000, 100000, 1000000});
  add_sizes("map_clone", who, clone<Map>, {1000, 100000});
  mub_bench::add_runs("map_release", who, release<Map>, {1000, 100000, 1000000});
  add_sizes("map_memory", who, memory<Map>, {1000, 100000, 1000000});
}

// The hash of keys of 8 to 24 bytes, too many for the branch predictor to learn.
template <class Hash>
void hash_keys(benchmark::State &state, Hash hash) {
  const auto keys = random_keys(state.range(0), 3);
  for (auto _ : state) {
    uint64_t sum = 0;
    for (const std::string &key : keys) sum += hash(key);
    benchmark::DoNotOptimize(sum);
  }
}

void hash_mub(benchmark::State &state) {
  hash_keys(state, [](const std::string &key) {
    return mub_hash_key(key.data(), static_cast<int64_t>(key.size()), 0);
  });
}

void hash_std(benchmark::State &state) {
  hash_keys(state, [](const std::string &key) { return std::hash<std::string_view>()(key); });
}

void remove_mub(benchmark::State &state) { remove_from(state, true); }
void remove_chains(benchmark::State &state) { remove_from(state, false); }

[[maybe_unused]] const bool registered = [] {
  add<MubMap, MubBatches>(mub_bench::kMub);
  mub_bench::add_sizes("key_hash", mub_bench::kMub, hash_mub, {1000, 100000});
  if (!mub_bench::kHasPeers) return true;
  add<StdMap>("std::unordered_map");
#ifdef MUB_PEER_ABSL
  add<AbslMap>("absl::flat_hash_map");
#endif
#ifdef MUB_PEER_GLIB
  add<GlibMap>("GHashTable");
#endif
  mub_bench::add_sizes("key_hash", "std::hash", hash_std, {1000, 100000});
  mub_bench::add_sizes("map_remove", "mub", remove_mub, {100000, 1000000});
  mub_bench::add_sizes("map_remove", "walk along the chains", remove_chains, {100000, 1000000});
  return true;
}();

}  // namespace
