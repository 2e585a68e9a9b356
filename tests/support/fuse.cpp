#include "support/fuse.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace {

// Each thread has a fuse.
thread_local int64_t allocations = 0;
thread_local int64_t first_refused = INT64_MAX;
thread_local int64_t end_of_refusals = INT64_MAX;

// The sizes of the library's blocks. Never destroyed, as blocks may be released after main().
struct Heap {
  std::mutex mutex;
  std::unordered_map<void *, size_t> sizes;
  int64_t bytes = 0;
};
Heap &heap() {
  static auto *const all = new Heap;
  return *all;
}
std::atomic<bool> is_tracking = true;  // relaxed, as it must not synchronise threads

// 0: the block is released.
void track_size(void *block, size_t size) {
  if (!is_tracking.load(std::memory_order_relaxed)) return;
  const std::lock_guard lock(heap().mutex);
  size_t &tracked = heap().sizes[block];
  heap().bytes += static_cast<int64_t>(size) - static_cast<int64_t>(tracked);
  tracked = size;
  if (size == 0) heap().sizes.erase(block);
}

}  // namespace

namespace mub_test {

void arm_fuse(int64_t allowed, Blow blow) {
  first_refused = allocations + allowed;
  end_of_refusals = blow == Blow::kOnce ? first_refused + 1 : INT64_MAX;
}

bool disarm_fuse() { return allocations > std::exchange(first_refused, INT64_MAX); }

int64_t allocations_so_far() { return allocations; }

UntrackedSizes::UntrackedSizes() { is_tracking.store(false, std::memory_order_relaxed); }
UntrackedSizes::~UntrackedSizes() { is_tracking.store(true, std::memory_order_relaxed); }

int64_t heap_bytes() {
  const std::lock_guard lock(heap().mutex);
  return heap().bytes;
}

}  // namespace mub_test

// Tests allocate impossible sizes: make the sanitizer return NULL, as malloc does.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }

// The names are those of the linker's option --wrap.
extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size);
extern "C" void __real_free(void *block);
extern "C" void __wrap_free(void *block);
// Allocations of 4 GiB and more always fail.
void *__wrap_malloc(size_t size) {
  const int64_t number = allocations++;
  const bool is_refused = number >= first_refused && number < end_of_refusals;
  if (is_refused || uint64_t{size} >> 32 != 0) return nullptr;
  void *block = __real_malloc(size);
  if (block != nullptr) track_size(block, size);
  return block;
}
void __wrap_free(void *block) {
  if (block != nullptr) track_size(block, 0);
  __real_free(block);
}
