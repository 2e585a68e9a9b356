#include "support/random.h"

#include <cstdio>
#include <cstdlib>

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

std::string Random::text(int64_t length, int alphabet) {
  std::string text;
  for (int64_t i = 0; i < length; ++i) text += static_cast<char>('a' + below(alphabet));
  return text;
}

}  // namespace mub_test
