// Bit sets: setting and testing single bits in random order.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <numeric>
#include <vector>

#include "bench_support.h"
#include "mub_bits.h"

namespace {

class MubBits {
 public:
  explicit MubBits(uint32_t count) {
    mub_bits_init(&bits_);
    mub_bits_expand(&bits_, (count + 7) / 8);
  }
  ~MubBits() { mub_bits_term(&bits_); }
  MubBits(const MubBits &) = delete;
  MubBits &operator=(const MubBits &) = delete;

  void set(uint32_t bit, bool on) { mub_bits_insert(&bits_, bit, on); }
  bool test(uint32_t bit) const { return mub_bits_find(&bits_, bit) != 0; }

 private:
  mub_bits bits_;
};

class StdBits {
 public:
  explicit StdBits(uint32_t count) : bits_(count) {}
  void set(uint32_t bit, bool on) { bits_[bit] = on; }
  bool test(uint32_t bit) const { return bits_[bit]; }

 private:
  std::vector<bool> bits_;
};

std::vector<uint32_t> all_bits(int64_t count) {
  std::vector<uint32_t> bits(static_cast<size_t>(count));
  std::iota(bits.begin(), bits.end(), 0u);
  return mub_bench::shuffled(bits);
}

template <class Bits>
void set(benchmark::State &state) {
  const auto order = all_bits(state.range(0));
  Bits bits(static_cast<uint32_t>(order.size()));
  for (auto _ : state) {
    for (const uint32_t bit : order) bits.set(bit, bit % 3 == 0);
    benchmark::ClobberMemory();
  }
}

template <class Bits>
void test(benchmark::State &state) {
  const auto order = all_bits(state.range(0));
  Bits bits(static_cast<uint32_t>(order.size()));
  for (const uint32_t bit : order) bits.set(bit, bit % 3 == 0);
  for (auto _ : state) {
    int64_t found = 0;
    for (const uint32_t bit : order) found += bits.test(bit) ? 1 : 0;
    benchmark::DoNotOptimize(found);
  }
}

template <class Bits>
void add(const char *who) {
  mub_bench::add_sizes("bits_set", who, set<Bits>, {10000, 1000000});
  mub_bench::add_sizes("bits_test", who, test<Bits>, {10000, 1000000});
}

[[maybe_unused]] const bool registered = [] {
  add<MubBits>(mub_bench::kMub);
  if (mub_bench::kHasPeers) add<StdBits>("std::vector<bool>");
  return true;
}();

}  // namespace
