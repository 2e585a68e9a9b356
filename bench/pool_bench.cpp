// Blocks of a pool against blocks of malloc and boost::pool.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "bench_support.h"
#include "mub_pool.h"

#ifdef MUB_PEER_BOOST
#include <boost/pool/pool.hpp>
#endif

namespace {

constexpr int64_t kBlockBytes = 32;

class MubBlocks {
 public:
  MubBlocks() {
    mub_pool_init(&pool_);
    pool_.block_size = kBlockBytes;
  }
  void *take() { return mub_pool_new(&pool_); }
  void give(void *block) { mub_pool_free(&pool_, block); }
  void give_all(const std::vector<void *> &) { mub_pool_empty(&pool_); }

 private:
  mub_pool pool_;
};

class MallocBlocks {
 public:
  void *take() { return std::malloc(kBlockBytes); }
  void give(void *block) { std::free(block); }
  void give_all(const std::vector<void *> &blocks) {
    for (void *block : blocks) std::free(block);
  }
};

#ifdef MUB_PEER_BOOST
class BoostBlocks {
 public:
  void *take() { return pool_.malloc(); }
  void give(void *block) { pool_.free(block); }
  void give_all(const std::vector<void *> &) { pool_.purge_memory(); }

 private:
  boost::pool<> pool_{kBlockBytes};
};
#endif

// Allocates fresh blocks, writes to each, and releases all at once.
template <class Blocks>
void fresh(benchmark::State &state) {
  std::vector<void *> taken(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    Blocks blocks;
    for (void *&block : taken) {
      block = blocks.take();
      *static_cast<void **>(block) = block;
    }
    benchmark::DoNotOptimize(taken.data());
    blocks.give_all(taken);
  }
}

// Returns all blocks in random order and allocates them again.
template <class Blocks>
void reuse(benchmark::State &state) {
  Blocks blocks;
  std::vector<void *> taken(static_cast<size_t>(state.range(0)));
  for (void *&block : taken) block = blocks.take();
  taken = mub_bench::shuffled(taken);
  for (auto _ : state) {
    for (void *block : taken) blocks.give(block);
    for (void *&block : taken) block = blocks.take();
    benchmark::DoNotOptimize(taken.data());
  }
  blocks.give_all(taken);
}

template <class Blocks>
void add(const char *who) {
  mub_bench::add_sizes("pool_fresh", who, fresh<Blocks>, {1000, 100000, 1000000});
  mub_bench::add_sizes("pool_reuse", who, reuse<Blocks>, {1000, 100000, 1000000});
}

[[maybe_unused]] const bool registered = [] {
  add<MubBlocks>(mub_bench::kMub);
  if (!mub_bench::kHasPeers) return true;
  add<MallocBlocks>("malloc");
#ifdef MUB_PEER_BOOST
  add<BoostBlocks>("boost::pool");
#endif
  return true;
}();

}  // namespace
