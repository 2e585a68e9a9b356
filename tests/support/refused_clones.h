// Clones out of an external pool that run out of memory.
#ifndef MUB_TESTS_SUPPORT_REFUSED_CLONES_H
#define MUB_TESTS_SUPPORT_REFUSED_CLONES_H

#include <gtest/gtest.h>

#include "mub.hpp"
#include "support/fuse.h"

namespace mub_test {

// Clones a container with 100 entries in an external pool, with ever more allocations, until memory suffices.
template <class Container>
void expect_blocks_returned(auto add) {
  constexpr int64_t kCount = 100;
  mub::pool pool(sizeof(typename Container::entry_type));
  Container source(pool.c());
  for (int64_t i = 0; i < kCount; ++i) add(source, i);
  int64_t allowed = 0;
  for (bool is_refused = true; is_refused; ++allowed) {
    arm_fuse(allowed, Blow::kForever);
    const Container copy = source.clone();
    is_refused = disarm_fuse();
    EXPECT_EQ(copy.size(), is_refused ? 0 : kCount);
    EXPECT_EQ(pool.c()->live_count, kCount + copy.size());
  }
  EXPECT_GT(allowed, 3) << "chunks were refused, too";
}

}  // namespace mub_test

#endif
