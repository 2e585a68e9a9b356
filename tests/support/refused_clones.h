// Clones out of an external pool that run out of memory.
#ifndef MUB_TESTS_SUPPORT_REFUSED_CLONES_H
#define MUB_TESTS_SUPPORT_REFUSED_CLONES_H

#include <gtest/gtest.h>

#include "support/fuse.h"
#include "support/pools.h"

namespace mub_test {

// Clones a record with 100 entries in an external pool, with ever more allocations, until memory suffices.
template <class Record, class Entry>
void expect_blocks_returned(auto init, auto add, auto clone, auto term) {
  constexpr int64_t kCount = 100;
  Pool pool(sizeof(Entry));
  Record source, copy;
  init(&source, 0, 0);
  source.entry_pool = &pool;
  for (int64_t i = 0; i < kCount; ++i) add(source, i);
  int64_t allowed = 0;
  for (bool is_refused = true; is_refused; ++allowed) {
    init(&copy, 0, 0);
    arm_fuse(allowed, Blow::kForever);
    clone(&source, nullptr, &copy, nullptr, nullptr);
    is_refused = disarm_fuse();
    EXPECT_EQ(copy.count, is_refused ? 0 : kCount);
    EXPECT_EQ(pool.live_count, kCount + copy.count);
    term(&copy);
  }
  EXPECT_GT(allowed, 3) << "chunks were refused, too";
  term(&source);
}

}  // namespace mub_test

#endif
