// Randomness with a printed seed: MUB_TEST_SEED=n repeats a run.
#ifndef MUB_TESTS_SUPPORT_RANDOM_H
#define MUB_TESTS_SUPPORT_RANDOM_H

#include <cstdint>
#include <random>
#include <string>

namespace mub_test {

// The seed of this run, printed once.
uint64_t run_seed();

class Random {
 public:
  // `salt` keeps the sequences of different tests apart.
  explicit Random(uint64_t salt) : engine_(run_seed() ^ (salt * 0x9E3779B97F4A7C15u)) {}

  // A number from 0 to `bound` - 1.
  int64_t below(int64_t bound) { return static_cast<int64_t>(engine_() % static_cast<uint64_t>(bound)); }
  bool one_in(int64_t n) { return below(n) == 0; }
  uint64_t word() { return engine_(); }
  // `length` bytes out of the first `alphabet` letters from 'a'; a small alphabet makes for many repeats.
  std::string text(int64_t length, int alphabet = 4);

 private:
  std::mt19937_64 engine_;
};

}  // namespace mub_test

#endif
