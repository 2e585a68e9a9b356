// Bytes that a caller passes may lie in the very buffer that the call is about to move or release.
// PinnedBytes copies them first, if they do.
#ifndef MUB_BYTES_PINNED_BYTES_H
#define MUB_BYTES_PINNED_BYTES_H

#include <cstdint>
#include <cstring>

#include "base/alloc.h"

namespace mub {

// Whether [bytes, bytes + size_bytes) overlaps [buffer, buffer + buffer_bytes). Addresses are compared as
// integers, because ordering pointers into different blocks is undefined, and by unsigned differences,
// because the sums could wrap around.
inline bool overlaps(const void *bytes, uint64_t size_bytes, const void *buffer, uint64_t buffer_bytes) {
  const auto first = reinterpret_cast<uintptr_t>(bytes);
  const auto own = reinterpret_cast<uintptr_t>(buffer);
  return first - own < buffer_bytes || own - first < size_bytes;
}

class PinnedBytes {
 public:
  PinnedBytes(const void *bytes, uint64_t size_bytes, const void *buffer, uint64_t buffer_bytes)
      : bytes_(bytes) {
    if (buffer_bytes == 0 || size_bytes == 0 || !overlaps(bytes, size_bytes, buffer, buffer_bytes)) return;
    copy_ = size_bytes <= sizeof local_ ? local_ : allocate(static_cast<int64_t>(size_bytes), 1);
    if (copy_ != nullptr) std::memcpy(copy_, bytes, static_cast<size_t>(size_bytes));
    failed_ = copy_ == nullptr;
    bytes_ = copy_;
  }
  ~PinnedBytes() {
    if (copy_ != local_) release(copy_);
  }
  PinnedBytes(const PinnedBytes &) = delete;
  PinnedBytes &operator=(const PinnedBytes &) = delete;

  // True if memory for the copy ran out: the caller then refuses the call.
  bool failed() const { return failed_; }
  const void *bytes() const { return bytes_; }

 private:
  const void *bytes_;
  void *copy_ = nullptr;
  bool failed_ = false;
  unsigned char local_[256];
};

}  // namespace mub

#endif
