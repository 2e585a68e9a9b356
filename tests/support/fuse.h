// The allocation fuse: makes chosen allocations of the code under test fail.
//
// The tests are linked with --wrap=malloc, so every allocation of the library passes here. The fuse is armed
// for one operation at a time; the test's own containers allocate through operator new, which it does not
// see.
#ifndef MUB_TESTS_SUPPORT_FUSE_H
#define MUB_TESTS_SUPPORT_FUSE_H

#include <gtest/gtest.h>

#include <cstdint>

namespace mub_test {

enum class Blow { kOnce, kForever };

// Lets `allowed` allocations through, then fails one or all of the following.
void arm_fuse(int64_t allowed, Blow blow);

// Ends the failures; true when an allocation was refused since arm_fuse.
bool disarm_fuse();

// The allocations of the library since the start.
int64_t allocations_so_far();

// Runs `attempt(blow)` with its first, second, third … allocation failing, once each and then for ever, until it
// runs to its end without meeting a failure. `attempt` sets its record up itself, calls run_fused(operation) for
// the operation under test alone, and checks the record afterwards.
//
//   for_every_allocation([](const Fuse &fuse) {
//     mub_string s; …fill…
//     const bool failed = fuse.blows_in([&] { result = mub_string_append(&s, …); });
//     …compare with before when the result says refused, with the goal otherwise…
//   });
class Fuse {
 public:
  Fuse(int64_t allowed, Blow blow) : allowed_(allowed), blow_(blow) {}

  // Runs the operation under the fuse; true when one of its allocations failed.
  template <class Operation>
  bool blows_in(Operation operation) const {
    arm_fuse(allowed_, blow_);
    operation();
    met_ = disarm_fuse();
    return met_;
  }
  bool met_a_failure() const { return met_; }
  int64_t allowed() const { return allowed_; }

 private:
  int64_t allowed_;
  Blow blow_;
  mutable bool met_ = false;
};

template <class Attempt>
void for_every_allocation(Attempt attempt) {
  for (const Blow blow : {Blow::kOnce, Blow::kForever}) {
    bool met = true;
    for (int64_t allowed = 0; met; ++allowed) {
      ASSERT_LT(allowed, 10000) << "the operation never ran to its end";
      SCOPED_TRACE(::testing::Message()
                   << "allocation " << allowed << " fails " << (blow == Blow::kOnce ? "once" : "for ever"));
      const Fuse fuse(allowed, blow);
      attempt(fuse);
      met = fuse.met_a_failure();
    }
  }
}

}  // namespace mub_test

#endif
