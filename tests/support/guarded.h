// Bytes that end right before an unreadable page, or begin right after one. Reading one byte too many faults
// in every build, also in code that sanitizers do not check (vector loads, libc).
#ifndef MUB_TESTS_SUPPORT_GUARDED_H
#define MUB_TESTS_SUPPORT_GUARDED_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace mub_test {

class Guarded {
 public:
  explicit Guarded(std::string_view bytes, bool at_start = false) : size_(bytes.size()) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    mapped_ = (size_ + page - 1) / page * page + 2 * page;
    map_ = static_cast<char *>(
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    // Protect the pages before and after.
    mprotect(map_, page, PROT_NONE);
    mprotect(map_ + mapped_ - page, page, PROT_NONE);
    data_ = at_start ? map_ + page : map_ + mapped_ - page - size_;
    if (size_ > 0) std::memcpy(data_, bytes.data(), size_);
  }
  ~Guarded() { munmap(map_, mapped_); }
  Guarded(const Guarded &) = delete;
  Guarded &operator=(const Guarded &) = delete;

  char *data() const { return data_; }
  uint8_t *bytes() const { return reinterpret_cast<uint8_t *>(data_); }
  int64_t size() const { return static_cast<int64_t>(size_); }

 private:
  size_t size_;
  size_t mapped_;
  char *map_;
  char *data_;
};

}  // namespace mub_test

#endif
