// The fuse makes selected allocations of the library fail.
//
// The tests are linked with --wrap=malloc and --wrap=free, which intercept every allocation of the library.
// Arm the fuse for one operation at a time. The test's own containers use operator new, which is not
// affected.
#ifndef MUB_TESTS_SUPPORT_FUSE_H
#define MUB_TESTS_SUPPORT_FUSE_H

#include <gtest/gtest.h>

#include <cstdint>

namespace mub_test {

enum class Blow { kOnce, kForever };

// The next `allowed` allocations succeed; after them, one fails or all fail.
void arm_fuse(int64_t allowed, Blow blow);

// Ends the failures; returns true if an allocation failed since arm_fuse().
bool disarm_fuse();

// The number of allocations of the library in this thread.
int64_t allocations_so_far();

// The bytes in blocks that the library has allocated and not released.
int64_t heap_bytes();

// While this exists, heap_bytes() ignores allocations, which must all be released before its end: the mutex
// that protects the sizes would hide races between threads from ThreadSanitizer.
struct UntrackedSizes {
  UntrackedSizes();
  ~UntrackedSizes();
};

// Runs `attempt(refused_in)` with the first, second, third … allocation failing, until there are no more
// allocations: once with only that allocation failing, and once with all that follow. `attempt` initialises
// its record, calls refused_in(operation) only for the operation under test, and then checks the record.
//
//   for_every_allocation([](auto refused_in) {
//     mub_string s; …fill…
//     const bool failed = refused_in([&] { result = mub_string_append(&s, …); });
//     …compare with the content before if the operation failed, otherwise with the expected content…
//   });
template <class Attempt>
void for_every_allocation(Attempt attempt) {
  for (const Blow blow : {Blow::kOnce, Blow::kForever}) {
    bool met = true;
    for (int64_t allowed = 0; met; ++allowed) {
      ASSERT_LT(allowed, 10000) << "the operation never completed";
      SCOPED_TRACE(::testing::Message() << "allocation " << allowed << " fails "
                                        << (blow == Blow::kOnce ? "once" : "and all after it"));
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
