#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/fuse.h"
#include "support/random.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

struct Array : mub_arrayt {
  Array() { mub_arrayt_init(this); }
  ~Array() { mub_arrayt_term(this); }
  Array(const Array &) = delete;
  Array &operator=(const Array &) = delete;
};

Words words_of(const mub_arrayt &array) {
  Words words;
  for (int64_t i = 0; i < array.count; ++i) words.push_back(mub_arrayt_get_at(&array, i));
  return words;
}

// Ascending and descending, with the operations on sorted arrays and with the others.
TEST(WordArray, AgreesWithAVectorAlsoWhenMemoryRunsOut) {
  for (uint64_t number = 0; number < 8; ++number) {
    const bool descending = number % 2 != 0, sorted = number < 4;
    Random random(30 + number);
    Array array, other;
    array.descending = descending;
    Words model;
    // What the next operation is given: a word, which belongs at `place` and may be there, and any index.
    uint64_t word = 0;
    int64_t index = 0, count = 0, capacity = 4;
    Words::iterator at, place;
    bool inside = false, has = false, failed = false;

    const auto fused = [&](auto operation) {
      const Fuse fuse = random_fuse(random, 3);
      failed = fuse.blows_in(operation);
    };
    const auto add = [&](Words::iterator before, const Words &added) {
      const auto wanted = static_cast<int64_t>(model.size() + added.size());
      const int64_t step = std::max<int64_t>(static_cast<int64_t>(model.size()) / 2, 8);
      capacity = std::max<int64_t>(capacity, 4);
      if (wanted > capacity) capacity = (std::max(capacity + step, wanted) + 3) / 4 * 4;
      model.insert(before, added.begin(), added.end());
    };
    const std::function<void()> operations[] = {
        [&] {
          fused([&] { EXPECT_EQ(mub_arrayt_insert(&array, word), !has); });
          if (!has && !failed) add(place, {word});
        },
        [&] {
          EXPECT_EQ(mub_arrayt_remove(&array, static_cast<uint32_t>(word)), has);
          if (has) model.erase(place);
        },
        // Those that do not keep the order.
        [&] {
          fused([&] { mub_arrayt_insert_at(&array, index, word); });
          if (index >= 0 && !failed) add(at, {word});
        },
        [&] {
          fused([&] { mub_arrayt_append(&array, word); });
          if (!failed) add(model.end(), {word});
        },
        [&] {
          EXPECT_EQ(mub_arrayt_remove_at(&array, index), inside ? *at : 0);
          if (inside) model.erase(at);
        },
        [&] {
          mub_arrayt_set_at(&array, index, word);
          if (inside) *at = word;
        },
        [&] {
          if (!random.one_in(20) || index > count) return;
          mub_arrayt_shrink(&array, index);
          if (index >= 0) model.erase(at, model.end());
        },
        [&] {
          if (!random.one_in(40)) return;
          EXPECT_EQ(mub_arrayt_remove_all(&array), &array);
          model.clear(), capacity = 0;
        },
        [&] {
          if (count > 40) return;
          fused([&] { mub_arrayt_append_array(&array, &array); });
          if (!failed) add(model.end(), Words(model));
        },
        [&] {
          const bool ascending = random.one_in(2), unique = random.one_in(2);
          Words ordered = model, flat = model;
          ascending ? std::sort(ordered.begin(), ordered.end()) : std::sort(ordered.rbegin(), ordered.rend());
          (ascending ? mub_arrayt_qsort_p : mub_arrayt_qsort_n)(flat.data(), count);
          EXPECT_EQ(flat, ordered);
          fused([&] { mub_arrayt_qsort(&array, ascending ? 5 : 0, unique ? 5 : 0); });
          if (unique) ordered.erase(std::unique(ordered.begin(), ordered.end()), ordered.end());
          if (!failed) model = ordered;
        },
        [&] {
          const Words before = words_of(other);
          fused([&] { mub_arrayt_clone(&array, &other); });
          EXPECT_EQ(words_of(other), failed ? before : model);
          EXPECT_TRUE(failed || other.capacity >= array.capacity);
          mub_arrayt_append(&other, word);
          mub_arrayt_swap(&array, &other), mub_arrayt_swap(&array, &array), mub_arrayt_clone(&array, &array);
          EXPECT_EQ(words_of(other), model);
          EXPECT_EQ(array.descending - other.descending, descending);
          model = words_of(array), capacity = array.capacity;
          EXPECT_EQ(model.back(), word);
        },
    };
    for (int step = 0; step < 3000; ++step) {
      // Within half of the range on both sides of 0, below bits that do not count in the order.
      count = array.count;
      const auto low = static_cast<int32_t>(random.word()) >> (2 + random.below(30));
      word = random.word() << 32 | static_cast<uint32_t>(low);
      if (count > 0 && random.one_in(2)) word = model.data()[random.below(count)] ^ random.word() << 63;
      index = random.below(count + 3) - 1;
      inside = index >= 0 && index < count;
      at = inside ? model.begin() + index : model.end();
      if (sorted) {
        place = std::lower_bound(model.begin(), model.end(), word, [&](uint64_t a, uint64_t b) {
          const auto x = static_cast<int32_t>(a), y = static_cast<int32_t>(b);
          return descending ? x > y : x < y;
        });
        has = place != model.end() && static_cast<uint32_t>(*place) == static_cast<uint32_t>(word);
        ASSERT_EQ(mub_arrayt_find(&array, static_cast<uint32_t>(word)), has);
      }
      ASSERT_EQ(mub_arrayt_get_at(&array, index), inside ? *at : 0);
      operations[sorted ? random.below(2) : 2 + random.below(std::size(operations) - 2)]();
      ASSERT_EQ(words_of(array), model);
      ASSERT_EQ(array.capacity, capacity);
      ASSERT_EQ(mub_arrayt_get_first(&array), model.empty() ? 0 : model.front());
      ASSERT_EQ(mub_arrayt_get_last(&array), model.empty() ? 0 : model.back());
      ASSERT_EQ(mub_arrayt_length(&array), static_cast<int64_t>(8 * model.size()));
      ASSERT_FALSE(HasFailure());
    }
  }
}

// Beyond what the model run reaches.
TEST(WordArray, GrowsByAtMost65536WordsUnlessMoreAreWanted) {
  Array array;
  constexpr int64_t kSteps[][3] = {
      {0, 13, 16}, {0, 131072, 131072}, {131070, 131073, 196608}, {INT64_MAX, 196609, 262144}};
  for (const auto &[count, wanted, grown] : kSteps) {
    mub_arrayt_shrink(&array, count);
    EXPECT_EQ(mub_arrayt_expand(&array, wanted), 1);
    EXPECT_EQ(mub_arrayt_expand(&array, INT64_MAX - count % 4), 0);
    EXPECT_EQ(mub_arrayt_expand(&array, int64_t{1} << 60), 0);
    EXPECT_EQ(mub_arrayt_expand(&array, INT64_MIN), 1);
    EXPECT_EQ(array.capacity, grown);
  }
}

TEST(WordArray, KeepsSpareWordsAndClearsFreshOnes) {
  Array array;
  const Words words = {1, 2, 3, 4, 5, 6};
  for (const uint64_t word : words) mub_arrayt_append(&array, word);
  EXPECT_EQ(array.inline_items[3], 4u);
  EXPECT_EQ(array.tail[0], 5u);
  EXPECT_EQ(mub_arrayt_remove_at(&array, 5), 6u);  // the last one leaves 0 behind, the others what they held
  EXPECT_EQ(mub_arrayt_remove_at(&array, 0), 1u);
  EXPECT_EQ(mub_arrayt_get_at(&array, 4), 0u);
  mub_arrayt_set_at(&array, 4, 8);
  mub_arrayt_expand(&array, 13);
  mub_arrayt_shrink(&array, 99);
  mub_arrayt_shrink(&array, -1);
  EXPECT_EQ(words_of(array), (Words{2, 3, 4, 5, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  mub_arrayt_remove_all(&array);
  EXPECT_EQ(Words(array.inline_items, array.inline_items + 4), Words(4));
  array.count = array.capacity = 6;  // more than there is
  EXPECT_EQ(words_of(array), Words(6));
  mub_arrayt_term(&array);
  EXPECT_EQ(array.capacity, 4);
  // Half of the range away either word is the smaller one of the two.
  EXPECT_EQ(mub_arrayt_insert(&array, 1) + mub_arrayt_insert(&array, 0x80000001), 2);
  array.descending = 1;
  EXPECT_EQ(mub_arrayt_insert(&array, 0x780000001), 1);
  EXPECT_EQ(words_of(array), (Words{0x780000001, 1, 0x80000001}));
}

}  // namespace
