#include "support/fuse.h"

#include <cstddef>

namespace {

// Each thread has a fuse.
thread_local bool armed = false;
thread_local bool met = false;
thread_local int64_t allowed_left = 0;
thread_local int64_t allocations = 0;
thread_local mub_test::Blow blow_mode = mub_test::Blow::kOnce;

bool refuses() {
  ++allocations;
  if (!armed) return false;
  if (allowed_left > 0) {
    --allowed_left;
    return false;
  }
  if (met && blow_mode == mub_test::Blow::kOnce) return false;
  met = true;
  return true;
}

}  // namespace

namespace mub_test {

void arm_fuse(int64_t allowed, Blow blow) {
  allowed_left = allowed;
  blow_mode = blow;
  met = false;
  armed = true;
}

bool disarm_fuse() {
  armed = false;
  return met;
}

int64_t allocations_so_far() { return allocations; }

}  // namespace mub_test

// Sizes that no heap can give are part of the tests: the sanitizer shall answer NULL as malloc does.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }

// The linker's --wrap gives these names.
extern "C" {

void *__real_malloc(size_t size);
void *__wrap_malloc(size_t size);

void *__wrap_malloc(size_t size) {
  return refuses() || uint64_t{size} >> 40 != 0 ? nullptr : __real_malloc(size);
}
}
