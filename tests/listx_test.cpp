// The unrolled list against a model: a list of the same blocks.
#include <gtest/gtest.h>

#include <list>
#include <vector>

#include "mub_list.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

struct Unrolled {
  using Record = mub_listx;
  using Entry = mub_listx_block;
  static constexpr auto init = mub_listx_init;
  static constexpr auto term = mub_listx_term;
};
using List = Pooled<Unrolled>;
using Blocks = std::list<Words>;

void expect_same(const List &list, const Blocks &blocks, int64_t live_values) {
  const mub_listx_block *block = list.head, *before = nullptr;
  int64_t count = 0;
  for (const Words &values : blocks) {
    ASSERT_TRUE(block != nullptr && block->prev == before);
    ASSERT_EQ(Words(block->values, block->values + block->count), values);
    count += block->count;
    before = block;
    block = block->next;
  }
  ASSERT_TRUE(block == nullptr && list.tail == before);
  ASSERT_EQ(list.count, count);
  ASSERT_EQ(list.entry_pool->live_count, static_cast<int64_t>(blocks.size()));
  ASSERT_EQ(list.value_pool->live_count, live_values);
}

// Adds a value, or a block of the value pool, at one of the ends; false when memory ran out.
bool add(List &list, Blocks &blocks, Random &random, bool head, bool makes_block) {
  uint64_t value = makes_block || random.one_in(9) ? 0 : list.new_value(7);
  const bool has_value = value != 0;
  mub_listx *result = &list;
  seen.clear();
  const bool failed = Fuse(random.below(5), random.one_in(2) ? Blow::kOnce : Blow::kForever).blows_in([&] {
    if (makes_block) {
      value = head ? mub_listx_add_head_new(&list, note) : mub_listx_add_tail_new(&list, note);
    } else {
      result = head ? mub_listx_add_head(&list, value) : mub_listx_add_tail(&list, value);
    }
  });
  EXPECT_EQ(failed, makes_block ? value == 0 : result == nullptr);
  EXPECT_EQ(seen, Words(makes_block && !failed ? 1 : 0, value));
  int64_t count = 0;
  for (const Words &values : blocks) count += static_cast<int64_t>(values.size());
  if (list.count == count) {
    if (has_value) mub_pool_free(list.value_pool, reinterpret_cast<void *>(value));
    return false;
  }
  if (blocks.empty() || (head ? blocks.front() : blocks.back()).size() == 32) {
    blocks.insert(head ? blocks.begin() : blocks.end(), Words());
  }
  Words &end = head ? blocks.front() : blocks.back();
  end.insert(head ? end.begin() : end.end(), value);
  return value != 0;
}

uint64_t remove(Blocks &blocks, bool head) {
  if (blocks.empty()) return 0;
  const auto block = head ? blocks.begin() : std::prev(blocks.end());
  const auto value = head ? block->begin() : std::prev(block->end());
  const uint64_t removed = *value;
  block->erase(value);
  if (block->empty()) blocks.erase(block);
  return removed;
}

TEST(UnrolledList, AgreesWithAModelAlsoWhenMemoryRunsOut) {
  for (uint64_t pools = 0; pools < 4; ++pools) {
    Random random(90 + pools);
    List list(pools % 2 == 0, pools < 2);
    Blocks blocks;
    int64_t live_values = 0;
    for (int64_t step = 0; step < 6000; ++step) {
      // Towards one end for a while, then towards the other; and more, then less.
      const bool head = random.below(5) > step / 100 % 4;
      if (random.below(5) < 1 + step / 150 % 4) {
        live_values += add(list, blocks, random, head, random.one_in(3));
      } else {
        const uint64_t value = head ? mub_listx_remove_head(&list) : mub_listx_remove_tail(&list);
        ASSERT_EQ(value, remove(blocks, head));
        if (value != 0) mub_pool_free(list.value_pool, reinterpret_cast<void *>(value));
        live_values -= value != 0 ? 1 : 0;
      }
      ASSERT_NO_FATAL_FAILURE(expect_same(list, blocks, live_values)) << step;
      if (!random.one_in(500)) continue;
      seen.clear();
      Words noted;
      for (const Words &values : blocks) {
        for (const uint64_t value : values) noted.insert(noted.end(), value != 0 ? 1 : 0, value);
      }
      const bool frees = random.one_in(2);
      frees ? mub_listx_free_all(&list, note) : static_cast<void>(mub_listx_remove_all(&list));
      ASSERT_EQ(seen, frees ? noted : Words());
      blocks.clear();
      if (frees) live_values -= list.owns_value_pool != 0 ? live_values : static_cast<int64_t>(noted.size());
    }
  }
}

TEST(UnrolledList, WalksThatReleaseLeaveTheListAsItIs) {
  for (const bool owned : {true, false}) {
    List list(owned, owned);
    for (int64_t i = 0; i < 40; ++i) mub_listx_add_tail(&list, i == 7 ? 0 : list.new_value(9));
    seen.clear();
    mub_listx_free_array(&list, list.head, nullptr);
    EXPECT_EQ(list.value_pool->live_count, owned ? 39 : 8);
    for (uint64_t &value : list.head->values) value = 0;
    mub_listx_free_all_entry(&list, note);
    EXPECT_EQ(seen.size(), 8u);
    EXPECT_EQ(list.value_pool->live_count, owned ? 39 : 0);
    if (owned) mub_listx_remove_all_entry(&list);
    EXPECT_EQ(list.entry_pool->live_count, owned ? 2 : 0);
    EXPECT_TRUE(list.count == 40 && list.head != list.tail);
    list.head = nullptr;
  }
}

TEST(UnrolledList, ReadsNoSlotThatABlockDoesNotHave) {
  List list;
  mub_listx_add_tail(&list, 1);
  for (const int64_t stated : {int64_t{-5}, int64_t{0}, INT64_MIN}) {
    list.head->count = stated;
    EXPECT_EQ(mub_listx_remove_head(&list) + mub_listx_remove_tail(&list), 0u);
  }
  list.head->count = INT64_MAX;
  list.head->values[31] = 5;
  EXPECT_EQ(mub_listx_remove_tail(&list), 5u);
  EXPECT_EQ(list.head->count, 31);
  EXPECT_EQ(mub_listx_add_head(&list, 6), &list);
  EXPECT_EQ(mub_listx_remove_head(&list), 6u);
}

}  // namespace
