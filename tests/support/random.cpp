#include "support/random.h"

#include <cstdio>
#include <cstdlib>
#include <random>

namespace mub_test {

uint64_t run_seed() {
  static const uint64_t seed = [] {
    const char *given = std::getenv("MUB_TEST_SEED");
    const uint64_t value = given != nullptr ? std::strtoull(given, nullptr, 0) : std::random_device{}();
    std::printf("seed: MUB_TEST_SEED=%llu\n", static_cast<unsigned long long>(value));
    return value;
  }();
  return seed;
}

}  // namespace mub_test
