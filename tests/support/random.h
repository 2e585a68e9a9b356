// Randomness with a printed seed: MUB_TEST_SEED=n repeats a run.
#ifndef MUB_TESTS_SUPPORT_RANDOM_H
#define MUB_TESTS_SUPPORT_RANDOM_H

#include <cstdint>

namespace mub_test {

// The seed of this run, printed once.
uint64_t run_seed();

}  // namespace mub_test

#endif
