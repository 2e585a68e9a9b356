// Runs the programs of a family, whose Kinds are a list of types. Included at the end of the generated steps.
//   - Seeded runs, which must reach every function. They append a line for each kind to the file
//     MUB_PROGRAM_TRACES, if set; for the same seed it is the same on every machine.
//   - Runs with failing allocations.
//   - With MUB_TWO_READERS, in a build with ThreadSanitizer, runs in which two threads read.
//   - With MUB_FUZZER, the entry point for libFuzzer, whose programs begin with the number of a kind.
#ifndef MUB_TESTS_INTERPRETER_DRIVERS_H
#define MUB_TESTS_INTERPRETER_DRIVERS_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "interpreter/machine.h"
#include "support/random.h"

namespace mub_test {

using Bytes = std::vector<uint8_t>;

inline Bytes random_bytes(std::mt19937_64 &engine, size_t size) {
  Bytes bytes(size);
  for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(engine() >> 32);
  return bytes;
}

template <class R>
struct Runner {
  StepsOf<R> steps = steps_of<R>();

  // Returns the world at the end of the run.
  World run(const Bytes &bytes, Refusals refusals = {}) {
    WorldOf<R> world(Program(bytes.data(), bytes.size()), refusals);
    mub_test::run(world, steps);
    return world;
  }
};

#if defined(MUB_FUZZER)

template <class... Rs>
void run_one(const Bytes &bytes, ::testing::Types<Rs...>) {
  static std::tuple<Runner<Rs>...> runners;
  size_t kind = bytes[0] % sizeof...(Rs);
  ((kind-- == 0 ? void(std::get<Runner<Rs>>(runners).run({bytes.begin() + 1, bytes.end()})) : void()), ...);
}
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  GTEST_FLAG_SET(break_on_failure, true);
  return 0;
}
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
  if (size > 0) run_one({bytes, bytes + size}, Kinds());
  return 0;
}

#else

// MUB_TEST_SCALE multiplies the number of programs.
inline int64_t scaled(int64_t programs) {
  const char *scale = std::getenv("MUB_TEST_SCALE");
  return scale == nullptr ? programs : programs * std::atoi(scale);
}

template <class R>
class Programs : public ::testing::Test {
 protected:
  Runner<R> runner;

  uint64_t run_many(int64_t count) {
    uint64_t trace = 0;
    std::mt19937_64 engine(run_seed());
    for (int64_t i = 0; i < scaled(count) && !this->HasFailure(); ++i) {
      SCOPED_TRACE(::testing::Message() << "program " << i);
      trace = trace * 31 + runner.run(random_bytes(engine, size_t{1} << (4 + i % 10))).trace;
    }
    return trace;
  }
};
TYPED_TEST_SUITE(Programs, Kinds);

#if defined(MUB_TWO_READERS)

TYPED_TEST(Programs, AgreeWithTheModelWhileTwoThreadsRead) { this->run_many(9); }

#else

TYPED_TEST(Programs, AgreeWithTheModel) {
  const uint64_t trace = this->run_many(50);
  for (const auto &step : this->runner.steps)
    EXPECT_GT(step.reached, 0) << step.name << " was reached by no program";
  if (const char *traces = std::getenv("MUB_PROGRAM_TRACES"))
    std::ofstream(traces, std::ios::app) << this->runner.steps[0].name << ' ' << trace << '\n';
}

// Each function is called in the middle of some programs, and each of its allocations fails there, alone or
// with all that follow. The program then continues to its end.
TYPED_TEST(Programs, SurviveRefusedAllocations) {
  std::mt19937_64 engine(run_seed() + 1);
  const auto functions = static_cast<int64_t>(this->runner.steps.size());
  for (int64_t i = 0; i < scaled(4) * functions && !this->HasFailure(); ++i) {
    const Bytes bytes = random_bytes(engine, 150);
    const int64_t middle = this->runner.run(bytes).steps / 2;
    for (const Blow blow : {Blow::kOnce, Blow::kForever}) {
      Refusals refusals{middle, i % functions, 0, blow};
      while (this->runner.run(bytes, refusals).was_refused && !this->HasFailure()) ++refusals.allowed;
    }
  }
}

#endif
#endif

}  // namespace mub_test

#endif
