// What programs do not reach in lists: see tests/interpreter/list_family.cpp.
#include "mub_list.h"

#include <gtest/gtest.h>

namespace {

TEST(ListOfKeys, StoresAtMost32BitsOfBytes) {
  mub_list list;
  mub_list_init(&list, 1, 0);
  mub_list_add_tail(&list, "ab", 2, 1);
  list.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_list_add_tail(&list, "ab", 2, 1), nullptr);
  EXPECT_EQ(list.count + list.entry_pool->live_count, 2);
  mub_list_term(&list);
}

TEST(UnrolledList, ClearsSlotsAndReadsNoneThatABlockDoesNotHave) {
  mub_listx list;
  mub_listx_init(&list, 1, 0);
  for (uint64_t value = 1; value < 4; ++value) mub_listx_add_tail(&list, value);
  mub_listx_block *block = list.head;
  EXPECT_EQ(mub_listx_remove_tail(&list), 3u);
  EXPECT_EQ(block->values[2], 0u);
  for (const int64_t stated : {int64_t{0}, INT64_MIN}) {
    block->count = stated;
    EXPECT_EQ(mub_listx_remove_head(&list) + mub_listx_remove_tail(&list), 0u);
  }
  block->count = INT64_MAX;
  block->values[31] = 5;
  EXPECT_EQ(mub_listx_remove_tail(&list), 5u);
  EXPECT_EQ(block->count, 31);
  block->count = 1;
  EXPECT_EQ(mub_listx_remove_head(&list), 1u);
  EXPECT_EQ(block->values[0], 0u);
  mub_listx_term(&list);
}

}  // namespace
