// What runs the programs of a family: seeded runs, and the sweep over all allocations. A family's source
// includes this after its kinds, and the generated steps after this.
#ifndef MUB_TESTS_INTERPRETER_DRIVERS_H
#define MUB_TESTS_INTERPRETER_DRIVERS_H

#include <gtest/gtest.h>

#include <random>

#include "interpreter/machine.h"
#include "support/random.h"

namespace mub_test {

template <class R>
struct WorldOf;
template <class R>
using StepsOf = std::vector<Step<WorldOf<R>>>;
template <class R>
StepsOf<R> steps_of();

using Bytes = std::vector<uint8_t>;

inline Bytes random_bytes(std::mt19937_64 &engine, size_t size) {
  Bytes bytes(size);
  for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(engine() >> 32);
  return bytes;
}

template <class R>
struct Runner {
  StepsOf<R> steps = steps_of<R>();

  // Runs a program; true when an allocation was refused.
  bool run(const Bytes &bytes, Refusals refusals = {}, int64_t *taken = nullptr) {
    WorldOf<R> world(Program(bytes.data(), bytes.size()), refusals);
    mub_test::run(world, steps);
    if (taken != nullptr) *taken = world.steps;
    return world.was_refused;
  }
};

template <class R>
class Programs : public ::testing::Test {
 protected:
  Runner<R> runner;
};
TYPED_TEST_SUITE_P(Programs);

// Random programs of many lengths, in which every function has its turn.
TYPED_TEST_P(Programs, AgreeWithTheModel) {
  std::mt19937_64 engine(run_seed());
  for (int i = 0; i < 100 && !this->HasFailure(); ++i) {
    SCOPED_TRACE(::testing::Message() << "program " << i);
    this->runner.run(random_bytes(engine, size_t{1} << (4 + i % 10)));
  }
  for (const auto &step : this->runner.steps)
    EXPECT_GT(step.reached, 0) << step.name << " is reached by no program";
}

// Each allocation of each step is refused, alone or with all that follow; the program then goes on to its
// end.
TYPED_TEST_P(Programs, SurviveRefusedAllocations) {
  std::mt19937_64 engine(run_seed() + 1);
  for (int i = 0; i < 4 && !this->HasFailure(); ++i) {
    const Bytes bytes = random_bytes(engine, 250);
    int64_t steps = 0;
    this->runner.run(bytes, {}, &steps);
    for (Refusals refusals; refusals.step < steps && !this->HasFailure(); ++refusals.step) {
      for (refusals.blow = Blow::kOnce;; refusals.blow = Blow::kForever) {
        refusals.allowed = 0;
        while (this->runner.run(bytes, refusals) && !this->HasFailure()) ++refusals.allowed;
        if (refusals.blow == Blow::kForever) break;
      }
    }
  }
}

REGISTER_TYPED_TEST_SUITE_P(Programs, AgreeWithTheModel, SurviveRefusedAllocations);

}  // namespace mub_test

// The kinds of a family.
#define MUB_FAMILY(NAME, ...)                        \
  using NAME##Kinds = ::testing::Types<__VA_ARGS__>; \
  INSTANTIATE_TYPED_TEST_SUITE_P(NAME, Programs, NAME##Kinds);

#endif
