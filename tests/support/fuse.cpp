#include "support/fuse.h"

#include <cstddef>
#include <utility>

namespace {

// Each thread has a fuse.
thread_local int64_t allocations = 0;
thread_local int64_t first_refused = INT64_MAX;
thread_local int64_t end_of_refusals = INT64_MAX;

}  // namespace

namespace mub_test {

void arm_fuse(int64_t allowed, Blow blow) {
  first_refused = allocations + allowed;
  end_of_refusals = blow == Blow::kOnce ? first_refused + 1 : INT64_MAX;
}

bool disarm_fuse() { return allocations > std::exchange(first_refused, INT64_MAX); }

int64_t allocations_so_far() { return allocations; }

}  // namespace mub_test

// Tests allocate impossible sizes: make the sanitizer return NULL, as malloc does.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }

// The names are those of the linker's option --wrap.
extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size);
// Allocations of 4 GiB and more always fail.
void *__wrap_malloc(size_t size) {
  const int64_t number = allocations++;
  const bool is_refused = number >= first_refused && number < end_of_refusals;
  return is_refused || uint64_t{size} >> 32 != 0 ? nullptr : __real_malloc(size);
}
