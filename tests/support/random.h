// The seed for random numbers, which is printed; MUB_TEST_SEED=n repeats a run.
#ifndef MUB_TESTS_SUPPORT_RANDOM_H
#define MUB_TESTS_SUPPORT_RANDOM_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace mub_test {

// The seed of this run, printed once.
inline uint64_t run_seed() {
  static const uint64_t seed = [] {
    const char *given = std::getenv("MUB_TEST_SEED");
    const uint64_t value = given != nullptr ? std::strtoull(given, nullptr, 0) : std::random_device{}();
    std::printf("seed: MUB_TEST_SEED=%llu\n", static_cast<unsigned long long>(value));
    return value;
  }();
  return seed;
}

}  // namespace mub_test

#endif
