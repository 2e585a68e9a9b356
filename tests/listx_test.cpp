// The unrolled list, against a model and at the edges of its blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <iterator>
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

struct Model {
  List &list;
  Random random;
  std::deque<uint64_t> values = {};
  int64_t live_values = 0;

  void add(bool head, bool makes_block) {
    uint64_t value = makes_block || random.one_in(9) ? 0 : new_value(list, 7);
    const int64_t old_count = list.count;
    const void *result = &list;
    seen.clear();
    const bool failed = random_fuse(random, 5).blows_in([&] {
      if (makes_block)
        value = head ? mub_listx_add_head_new(&list, note) : mub_listx_add_tail_new(&list, note);
      if (!makes_block) result = head ? mub_listx_add_head(&list, value) : mub_listx_add_tail(&list, value);
    });
    ASSERT_EQ(failed, makes_block ? value == 0 : result != &list);
    ASSERT_EQ(seen, Words(makes_block && !failed ? 1 : 0, value));
    if (list.count == old_count) return return_value(list, value);
    values.insert(head ? values.begin() : values.end(), value);
    live_values += value != 0;
  }

  void remove(bool head) {
    const uint64_t removed = head ? mub_listx_remove_head(&list) : mub_listx_remove_tail(&list);
    ASSERT_EQ(removed, values.empty() ? 0 : head ? values.front() : values.back());
    if (!values.empty()) values.erase(head ? values.begin() : values.end() - 1);
    return_value(list, removed);
    live_values -= removed != 0;
  }

  void empty() {
    const bool frees = random.one_in(2);
    Words freed;
    std::copy_if(values.begin(), values.end(), std::back_inserter(freed),
                 [=](uint64_t value) { return frees && value != 0; });
    seen.clear();
    frees ? mub_listx_free_all(&list, note) : static_cast<void>(mub_listx_remove_all(&list));
    ASSERT_EQ(seen, freed);
    values.clear();
    if (frees) live_values -= list.owns_value_pool != 0 ? live_values : static_cast<int64_t>(freed.size());
  }

  // Every invariant of the list, and its walk.
  void expect_same() const {
    const mub_listx_block *block = list.head, *before = nullptr;
    std::deque<uint64_t> walked;
    int64_t blocks = 0;
    for (; block != nullptr; before = block, block = block->next, ++blocks) {
      ASSERT_TRUE(block->prev == before && block->count >= 1 && block->count <= 32);
      walked.insert(walked.end(), block->values, block->values + block->count);
    }
    ASSERT_EQ(list.tail, before);
    ASSERT_EQ(walked, values);
    ASSERT_EQ(list.count, static_cast<int64_t>(values.size()));
    ASSERT_EQ(list.entry_pool->live_count, blocks);
    ASSERT_EQ(list.value_pool->live_count, live_values);
  }
};

TEST(UnrolledList, AgreesWithAModelAlsoWhenMemoryRunsOut) {
  for (uint64_t pools = 0; pools < 4; ++pools) {
    List list(pools % 2 == 0, pools < 2);
    Model model = {list, Random(90 + pools)};
    for (int64_t step = 0; step < 6000; ++step) {
      // Towards one end for a while, then towards the other; and more, then less.
      const bool head = model.random.below(5) > step / 100 % 4;
      model.random.below(5) < 1 + step / 150 % 4 ? model.add(head, model.random.one_in(3))
                                                 : model.remove(head);
      if (model.random.one_in(500)) model.empty();
      ASSERT_NO_FATAL_FAILURE(model.expect_same()) << step;
    }
  }
}

TEST(UnrolledList, FillsABlockAndReleasesWithoutForgetting) {
  for (const bool owned : {true, false}) {
    List list(owned, owned);
    for (int64_t i = 0; i < 40; ++i) mub_listx_add_tail(&list, i == 7 ? 0 : new_value(list, 9));
    EXPECT_TRUE(list.head->count == 32 && list.tail->count == 8);
    mub_listx_free_array(&list, list.head, nullptr);
    EXPECT_EQ(list.value_pool->live_count, owned ? 39 : 8);
    for (uint64_t &value : list.head->values) value = 0;
    seen.clear();
    mub_listx_free_all_entry(&list, note);
    EXPECT_EQ(seen.size(), 8u);
    EXPECT_EQ(list.value_pool->live_count, owned ? 39 : 0);
    if (owned) mub_listx_remove_all_entry(&list);
    EXPECT_TRUE(list.entry_pool->live_count == 2 * owned && list.count == 40 && list.head != list.tail);
    list.head = nullptr;
  }
}

TEST(UnrolledList, ReadsNoSlotThatABlockDoesNotHave) {
  List list;
  mub_listx_add_tail(&list, 1);
  for (const int64_t stated : {int64_t{0}, INT64_MIN}) {
    list.head->count = stated;
    EXPECT_EQ(mub_listx_remove_head(&list) + mub_listx_remove_tail(&list), 0u);
  }
  list.head->count = INT64_MAX;
  list.head->values[31] = 5;
  EXPECT_EQ(mub_listx_remove_tail(&list), 5u);
  EXPECT_EQ(list.head->count, 31);
}

// A block that is not yet filled is not linked either.
List *watched;
void watch(uint64_t) {
  seen.push_back(static_cast<uint64_t>(watched->count));
  for (const mub_listx_block *block = watched->head; block != nullptr; block = block->next) {
    seen.push_back(static_cast<uint64_t>(block->count));
  }
}

TEST(UnrolledList, InitialisersRunBeforeTheValueIsStored) {
  List list;
  watched = &list;
  seen.clear();
  mub_listx_add_tail_new(&list, watch);
  for (uint64_t i = 0; i < 31; ++i) mub_listx_add_tail(&list, i);
  mub_listx_add_head_new(&list, watch);
  mub_listx_add_head_new(&list, watch);
  EXPECT_EQ(seen, (Words{0, 32, 32, 33, 1, 32}));
}

}  // namespace
