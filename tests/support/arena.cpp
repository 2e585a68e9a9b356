#include "support/arena.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace {

constexpr size_t kBytes = size_t{64} << 20;

char *begin = nullptr;
size_t used = 0;
bool is_open = false;

}  // namespace

namespace mub_test {

Arena::Arena() {
  void *map =
      mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) std::abort();
  begin = static_cast<char *>(map);
  used = 0;
}

Arena::~Arena() {
  munmap(begin, kBytes);
  begin = nullptr;
}

void *Arena::allocate(size_t size) {
  const size_t at = used;
  if (size > kBytes - at - 16) std::abort();  // a larger arena is needed
  used = (at + size + 15) / 16 * 16;
  return begin + at;
}

void Arena::open() { is_open = true; }
void Arena::close() { is_open = false; }

void Arena::make_read_only() {
  if (mprotect(begin, kBytes, PROT_READ) != 0) std::abort();
}

}  // namespace mub_test

// The linker's --wrap gives these names.
extern "C" {

void *__real_malloc(size_t size);
void __real_free(void *block);

void *__wrap_malloc(size_t size);
void __wrap_free(void *block);

void *__wrap_malloc(size_t size) { return is_open ? mub_test::Arena::allocate(size) : __real_malloc(size); }

void __wrap_free(void *block) {
  const auto offset = reinterpret_cast<uintptr_t>(block) - reinterpret_cast<uintptr_t>(begin);
  if (begin == nullptr || offset >= kBytes) __real_free(block);
}
}
