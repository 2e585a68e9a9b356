// What mub_arrays has beyond the other arrays: comparers that may be missing, and pools that are swapped.
#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"

using mub_test::Items;
using mub_test::ItemsBy;
using mub_test::Scoped;

namespace {

std::vector<uint64_t> items_of(const mub_arrays &array) { return {array.items, array.items + array.count}; }

template <class Kind>
class WithoutAComparer : public ::testing::Test {};
using Unordered = ::testing::Types<ItemsBy<false, false>, ItemsBy<true, false>>;
TYPED_TEST_SUITE(WithoutAComparer, Unordered);

TYPED_TEST(WithoutAComparer, InsertionsAppendAndNothingIsFound) {
  using A = TypeParam;
  Scoped<A> array(true);
  array.pool->block_size = 8;
  EXPECT_EQ(A::insert(&array, 5, 1), 1);
  EXPECT_EQ(A::insert(&array, 5, 1), 1);
  EXPECT_EQ(A::insert(&array, 3, 1), 1);
  uint64_t item = 1;
  EXPECT_EQ(A::insert_new(&array, 5, &item, nullptr), 3);
  EXPECT_EQ(items_of(array), (std::vector<uint64_t>{5 << 8 | 1, 5 << 8 | 1, 3 << 8 | 1, item}));
  EXPECT_EQ(A::update(&array, 5, 1) + A::remove(&array, 5) + A::find(&array, 5) + A::bfind(&array, 5), 0u);
  EXPECT_EQ(A::find_index(&array, 5), -1);
  EXPECT_EQ(A::bfind_index(&array, 5), -1);
  A::free(&array, 5, nullptr);
  const auto before = items_of(array);
  for (const int ascending : {0, 1}) {
    mub_arrays_qsort(&array, ascending, nullptr);
    mub_arrays_qsort_x(&array, 0, ascending, nullptr);
  }
  EXPECT_EQ(items_of(array), before);
}

TYPED_TEST(WithoutAComparer, NewItemsAreRefusedWithoutMemory) {
  mub_test::for_every_allocation([](const mub_test::Fuse &fuse) {
    Scoped<TypeParam> array(true);
    array.pool->block_size = 8;
    mub_pool_free(array.pool, mub_pool_new(array.pool));
    uint64_t item = 1;
    int index = 0;
    const bool failed = fuse.blows_in([&] { index = TypeParam::insert_new(&array, 5, &item, nullptr); });
    EXPECT_EQ(index, failed ? -1 : 0);
    EXPECT_EQ(item == 0, failed);
    EXPECT_EQ(array.pool->live_count, failed ? 0 : 1);
  });
}

TEST(ItemArray, SwapsPoolsWithTheItems) {
  mub_pool shared;
  mub_pool_init(&shared);
  Scoped<Items> a(true, true), b;
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

}  // namespace
