// Pools for tests.
#ifndef MUB_TESTS_SUPPORT_POOLS_H
#define MUB_TESTS_SUPPORT_POOLS_H

#include <cstdint>

#include "mub_pool.h"

namespace mub_test {

// A pool that is terminated at the end of its scope.
struct Pool : mub_pool {
  explicit Pool(int64_t size_bytes) {
    mub_pool_init(this);
    block_size = size_bytes;
  }
  ~Pool() { mub_pool_term(this); }
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;
};

}  // namespace mub_test

#endif
