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

// Runs `attempt(refused_in)` with the first, second, third … allocation failing, once each and then for ever,
// until there is no such allocation. `attempt` sets its record up itself, calls refused_in(operation) for the
// operation under test alone, and checks the record afterwards.
//
//   for_every_allocation([](auto refused_in) {
//     mub_string s; …fill…
//     const bool failed = refused_in([&] { result = mub_string_append(&s, …); });
//     …compare with before when the result says refused, with the goal otherwise…
//   });
template <class Attempt>
void for_every_allocation(Attempt attempt) {
  for (const Blow blow : {Blow::kOnce, Blow::kForever}) {
    bool met = true;
    for (int64_t allowed = 0; met; ++allowed) {
      ASSERT_LT(allowed, 10000) << "the operation never ran to its end";
      SCOPED_TRACE(::testing::Message()
                   << "allocation " << allowed << " fails " << (blow == Blow::kOnce ? "once" : "for ever"));
      attempt([&, blow](auto operation) {
        arm_fuse(allowed, blow);
        operation();
        return met = disarm_fuse();
      });
    }
  }
}

}  // namespace mub_test

#endif
