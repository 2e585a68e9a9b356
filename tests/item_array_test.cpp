// What mub_arrays has beyond the other arrays: comparers that may be missing, and pools that are swapped.
#include <gtest/gtest.h>

#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"

using mub_test::Items;
using ItemArray = mub_test::Scoped<Items>;

namespace {

std::vector<uint64_t> items_of(const mub_arrays &array) { return {array.items, array.items + array.count}; }

TEST(ItemArray, WithoutAComparerInsertionsAppendAndNothingIsFound) {
  ItemArray array(true);
  array.pool->block_size = 8;
  uint64_t item = 1;
  EXPECT_EQ(mub_arrays_insert(&array, 5, 0, nullptr), 1);
  EXPECT_EQ(mub_arrays_insert(&array, 5, 0, nullptr), 1);
  EXPECT_EQ(mub_arrays_insert_x(&array, 0, 3, 0, nullptr), 1);
  EXPECT_EQ(items_of(array), (std::vector<uint64_t>{5, 5, 3}));
  EXPECT_EQ(mub_arrays_insert_new(&array, 5, 0, &item, nullptr, nullptr), 3);
  EXPECT_EQ(array.items[3], item);
  EXPECT_EQ(mub_arrays_insert_new_x(&array, 0, 5, 0, &item, nullptr, nullptr), 4);
  EXPECT_EQ(array.items[4], item);

  const auto before = items_of(array);
  EXPECT_EQ(mub_arrays_update(&array, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_update_x(&array, 0, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_remove(&array, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_remove_x(&array, 0, 5, 0, nullptr), 0u);
  mub_arrays_free(&array, 5, 0, nullptr, nullptr);
  mub_arrays_free_x(&array, 0, 5, 0, nullptr, nullptr);
  EXPECT_EQ(mub_arrays_find(&array, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_find_x(&array, 0, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_find_index(&array, 5, 0, nullptr), -1);
  EXPECT_EQ(mub_arrays_find_index_x(&array, 0, 5, 0, nullptr), -1);
  EXPECT_EQ(mub_arrays_bfind(&array, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_bfind_x(&array, 0, 5, 0, nullptr), 0u);
  EXPECT_EQ(mub_arrays_bfind_index(&array, 5, 0, nullptr), -1);
  EXPECT_EQ(mub_arrays_bfind_index_x(&array, 0, 5, 0, nullptr), -1);
  mub_arrays_qsort(&array, 1, nullptr);
  mub_arrays_qsort_p(&array, nullptr);
  mub_arrays_qsort_n(&array, nullptr);
  mub_arrays_qsort_x(&array, 0, 1, nullptr);
  mub_arrays_qsort_x_p(&array, 0, nullptr);
  mub_arrays_qsort_x_n(&array, 0, nullptr);
  EXPECT_EQ(items_of(array), before);
}

TEST(ItemArray, WithoutAComparerNewItemsAreRefusedWithoutMemory) {
  mub_test::for_every_allocation([](const mub_test::Fuse &fuse) {
    ItemArray array(true);
    array.pool->block_size = 8;
    mub_pool_free(array.pool, mub_pool_new(array.pool));
    uint64_t item = 1;
    int index = 0;
    const bool failed =
        fuse.blows_in([&] { index = mub_arrays_insert_new(&array, 5, 0, &item, nullptr, nullptr); });
    EXPECT_EQ(index, failed ? -1 : 0);
    EXPECT_EQ(item == 0, failed);
    EXPECT_EQ(array.pool->live_count, failed ? 0 : 1);
  });
}

TEST(ItemArray, SwapsPoolsWithTheItems) {
  mub_pool shared;
  mub_pool_init(&shared);
  ItemArray a(true, true), b;
  b.pool = &shared;
  mub_pool *owned = a.pool;
  mub_arrays_append(&a, 1);
  mub_arrays_swap(&a, &b);
  EXPECT_EQ(items_of(b), std::vector<uint64_t>{1});
  EXPECT_EQ(b.pool, owned);
  EXPECT_EQ(b.own_pool, 1);
  EXPECT_EQ(a.pool, &shared);
  EXPECT_EQ(a.own_pool, 0);
  EXPECT_EQ(a.descending, 1);
  EXPECT_EQ(b.descending, 0);
}

TEST(ItemArray, ReleasesNothingForAnEmptySlot) {
  ItemArray array;
  mub_arrays_append(&array, 0);
  mub_arrays_append(&array, 0);
  const auto fail = [](uint64_t) { FAIL() << "an empty slot was released"; };
  mub_arrays_free_at(&array, 0, fail);
  EXPECT_EQ(array.count, 1);
  mub_arrays_free_all(&array, fail);
  EXPECT_EQ(array.count, 0);
}

// Items are updated by any equal one.
TEST(ItemArray, UpdatesTheEqualItemByItself) {
  ItemArray array;
  Items::insert(&array, 4, 1);
  Items::insert(&array, 5, 1);
  EXPECT_EQ(Items::update(&array, 5, 2), (5u << 8) | 1u);
  EXPECT_EQ(Items::update(&array, 6, 2), 0u);
  EXPECT_EQ(items_of(array), (std::vector<uint64_t>{4 << 8 | 1, 5 << 8 | 2}));
}

}  // namespace
