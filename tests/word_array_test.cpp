#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "mub_array.h"
#include "support/fuse.h"
#include "support/random.h"
#include "support/strings.h"

using mub_test::Fuse;
using mub_test::Random;
using mub_test::String;
using Words = std::vector<uint64_t>;

namespace {

struct Array : mub_arrayt {
  explicit Array(const Words &words = {}) {
    mub_arrayt_init(this);
    for (const uint64_t word : words) mub_arrayt_append(this, word);
  }
  ~Array() { mub_arrayt_term(this); }
  Array(const Array &) = delete;
  Array &operator=(const Array &) = delete;
};

Words words_of(const mub_arrayt &array) {
  Words words;
  for (int64_t i = 0; i < array.count; ++i) words.push_back(mub_arrayt_get_at(&array, i));
  return words;
}

Words counted(uint64_t count) {
  Words words(count);
  for (uint64_t i = 0; i < count; ++i) words[i] = i + 1;
  return words;
}

TEST(WordArray, PositionalUseAgreesWithAVector) {
  Random random(31);
  Array array;
  Words model;
  for (int step = 0; step < 6000; ++step) {
    const auto count = static_cast<int64_t>(model.size());
    const int64_t index = random.below(count + 3) - 1;
    const uint64_t word = random.one_in(3) ? random.word() % 9 : random.word();
    const bool inside = index >= 0 && index < count;
    const auto place = model.begin() + (inside ? index : 0);
    ASSERT_EQ(mub_arrayt_get_at(&array, index), inside ? *place : 0);
    const int64_t operation =
        random.below(step % 400 < 200 ? 6 : 9);  // grows and shrinks across the tail's start
    if (operation < 5) {
      mub_arrayt_insert_at(&array, index, word);
      if (index >= 0) model.insert(inside ? place : model.end(), word);
    } else if (operation == 5) {
      mub_arrayt_set_at(&array, index, word);
      if (inside) *place = word;
    } else {
      ASSERT_EQ(mub_arrayt_remove_at(&array, index), inside ? *place : 0);
      if (inside) model.erase(place);
    }
    if (random.one_in(300)) {
      mub_arrayt_shrink(&array, 6);
      model.resize(std::min<size_t>(model.size(), 6));
      array.count = static_cast<int64_t>(model.size());
    }
    if (random.one_in(100) && model.size() < 40) {
      mub_arrayt_append_array(&array, &array);
      const Words twice = model;
      model.insert(model.end(), twice.begin(), twice.end());
    }
    ASSERT_EQ(words_of(array), model);
    ASSERT_EQ(mub_arrayt_get_first(&array), model.empty() ? 0 : model.front());
    ASSERT_EQ(mub_arrayt_get_last(&array), model.empty() ? 0 : model.back());
    ASSERT_EQ(mub_arrayt_length(&array), static_cast<int64_t>(8 * model.size()));
  }
}

TEST(WordArray, SortedUseAgreesWithAModelOfTheLow32Bits) {
  for (const bool descending : {false, true}) {
    Random random(descending ? 33 : 32);
    Array array;
    array.descending = descending;
    Words model;
    const auto place = [&](uint32_t key) {
      return std::find_if(model.begin(), model.end(), [&](uint64_t word) {
        const auto difference = static_cast<int32_t>(static_cast<uint32_t>(word) - key);
        return descending ? difference <= 0 : difference >= 0;
      });
    };
    for (int step = 0; step < 3000; ++step) {
      // Within half of the range on both sides of 0, below bits that do not count.
      const auto low = static_cast<uint32_t>(static_cast<int32_t>(random.word()) >> (2 + random.below(30)));
      const auto at = place(low);
      const bool has = at != model.end() && static_cast<uint32_t>(*at) == low;
      ASSERT_EQ(mub_arrayt_find(&array, low), has);
      if (random.one_in(step < 1500 ? 4 : 2)) {
        ASSERT_EQ(mub_arrayt_remove(&array, low), has);
        if (has) model.erase(at);
      } else {
        const uint64_t word = random.word() << 32 | low;
        ASSERT_EQ(mub_arrayt_insert(&array, word), !has);
        if (!has) model.insert(at, word);
      }
      ASSERT_EQ(words_of(array), model);
    }
  }
}

TEST(WordArray, GrowsByHalfItsCountAndKeepsWhatLiesInTheTail) {
  struct Growth {
    int64_t capacity, count, wanted, grown;
  };
  for (const Growth &growth : {Growth{4, 4, 4, 4},
                               {4, 4, 5, 12},
                               {4, 0, 13, 16},
                               {100, 100, 101, 152},
                               {100, 18, 101, 112},
                               {200000, 200000, 200001, 265536}}) {
    SCOPED_TRACE(::testing::Message() << growth.capacity << " " << growth.count << " " << growth.wanted);
    Array array({1, 2, 3, 4});
    mub_arrayt_expand(&array, growth.capacity);
    ASSERT_EQ(array.capacity, growth.capacity);
    if (array.tail != nullptr) array.tail[growth.capacity - 5] = 77;  // spare words move along
    mub_arrayt_shrink(&array, growth.count);
    ASSERT_EQ(array.count, growth.count);
    EXPECT_EQ(mub_arrayt_expand(&array, growth.wanted), 1);
    EXPECT_EQ(array.capacity, growth.grown);
    for (int64_t i = growth.capacity; i < growth.grown; ++i) ASSERT_EQ(array.tail[i - 4], 0u);
    if (growth.capacity > 4) {
      EXPECT_EQ(array.tail[growth.capacity - 5], 77u);
    }
    for (const int64_t wanted : {INT64_MAX, INT64_MAX - 3, INT64_MAX / 8, int64_t{1} << 60}) {
      EXPECT_EQ(mub_arrayt_expand(&array, wanted), 0);
    }
    EXPECT_EQ(mub_arrayt_expand(&array, INT64_MIN), 1);
    EXPECT_EQ(array.capacity, growth.grown);
  }
}

TEST(WordArray, CrossesTheEndOfTheRecord) {
  Array array(counted(5));
  EXPECT_EQ(array.capacity, 12);
  EXPECT_EQ(array.tail[0], 5u);
  mub_arrayt_insert_at(&array, 0, 9);
  EXPECT_EQ(array.inline_items[3], 3u);
  EXPECT_EQ(array.tail[0], 4u);
  EXPECT_EQ(mub_arrayt_remove_at(&array, 1), 1u);
  EXPECT_EQ(array.inline_items[3], 4u);
  // Positions end at the count; a word removed from the end leaves 0 behind.
  EXPECT_EQ(mub_arrayt_remove_at(&array, 4), 5u);
  EXPECT_EQ(array.tail[0], 0u);
  mub_arrayt_shrink(&array, 3);
  EXPECT_EQ(mub_arrayt_get_at(&array, 3), 0u);
  mub_arrayt_set_at(&array, 3, 8);
  EXPECT_EQ(array.inline_items[3], 4u);
  mub_arrayt_shrink(&array, 99);
  EXPECT_EQ(array.count, 12);
  mub_arrayt_shrink(&array, -1);
  EXPECT_EQ(array.count, 12);

  EXPECT_EQ(mub_arrayt_remove_all(&array), &array);
  EXPECT_EQ(array.capacity, 0);
  EXPECT_EQ(array.inline_items[0] | array.inline_items[3], 0u);
  mub_arrayt_shrink(&array, 1);
  EXPECT_EQ(array.count, 0);
  mub_arrayt_append(&array, 6);
  EXPECT_EQ(array.capacity, 4);
  EXPECT_EQ(array.tail, nullptr);
  array.count = array.capacity = 6;  // more than there is
  EXPECT_EQ(mub_arrayt_get_at(&array, 5), 0u);
  mub_arrayt_term(&array);
  EXPECT_EQ(array.capacity, 4);
}

TEST(WordArray, SearchesByTheLow32BitsAndSortsByAll) {
  Array array({5});
  EXPECT_EQ(mub_arrayt_insert(&array, 0x100000005), 0);
  EXPECT_EQ(mub_arrayt_insert(&array, 0x9FFFFFFFF), 1);
  EXPECT_EQ(words_of(array), (Words{0x9FFFFFFFF, 5}));
  EXPECT_EQ(mub_arrayt_find(&array, 0xFFFFFFFF), 1);
  mub_arrayt_qsort(&array, 1, 0);
  EXPECT_EQ(words_of(array), (Words{5, 0x9FFFFFFFF}));
  array.descending = 1;
  EXPECT_EQ(mub_arrayt_insert(&array, 0x80000005), 1);  // half the range away from what is probed
  EXPECT_EQ(words_of(array), (Words{0x80000005, 5, 0x9FFFFFFFF}));
}

TEST(WordArray, SortsWholeWordsAndKeepsOneOfEach) {
  Random random(34);
  for (int64_t count = 0; count < 200; ++count) {
    Words words;
    for (int64_t i = 0; i < count; ++i)
      words.push_back(random.one_in(2) ? random.word()
                      : words.empty()  ? 0
                                       : words[0] ^ (random.word() & 0x8000000080000001));
    for (const int mode : {0, 1, 2, 3}) {
      const bool ascending = mode & 1, unique = mode & 2;
      Words sorted = words, flat = words;
      std::sort(sorted.begin(), sorted.end());
      if (!ascending) std::reverse(sorted.begin(), sorted.end());
      (ascending ? mub_arrayt_qsort_p : mub_arrayt_qsort_n)(flat.data(), count);
      ASSERT_EQ(flat, sorted);
      if (unique) sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
      Array array(words);
      const int64_t capacity = array.capacity;
      mub_arrayt_qsort(&array, ascending ? 5 : 0, unique);
      ASSERT_EQ(words_of(array), sorted);
      ASSERT_EQ(array.capacity, capacity);
    }
  }
}

TEST(WordArray, SwapsAndClonesWordsButNotTheOrder) {
  for (const uint64_t count : {0u, 3u, 4u, 5u, 30u}) {
    Array a(counted(count)), b(Words(7, 9));
    a.descending = 1;
    mub_arrayt_swap(&a, &b);
    EXPECT_EQ(words_of(b), counted(count));
    EXPECT_EQ(words_of(a), Words(7, 9));
    EXPECT_EQ(a.descending - b.descending, 1);
    mub_arrayt_swap(&b, &b);
    mub_arrayt_clone(&b, &b);
    mub_arrayt_clone(&b, &a);
    EXPECT_EQ(words_of(a), counted(count));
    EXPECT_EQ(words_of(b), counted(count));
    EXPECT_EQ(a.descending, 1);
    EXPECT_GE(a.capacity, b.capacity);
  }
}

TEST(WordArray, WritesSignedNumbersAndReadsThem) {
  struct Text {
    std::string text;
    Words words;
  };
  for (const auto &[text, words] : {Text{"-1,4294967296,0", {~uint64_t{0}, uint64_t{1} << 32, 0}},
                                    {"-9223372036854775808", {uint64_t{1} << 63}},
                                    {"", {}}}) {
    Array array(words);
    String string("old");
    mub_arrayt_to_string(&array, 0x100 | ',', &string);
    mub_test::expect_content(string, text);
    Array read;
    mub_arrayt_from_string(&read, ',', text.data(), string.length);
    EXPECT_EQ(words_of(read), words);
  }
  Array array({8});
  mub_arrayt_from_string(&array, ';', " 1 ;; x; ", 9);
  mub_arrayt_from_string(&array, ';', "1", -1);
  EXPECT_EQ(words_of(array), (Words{8, 1, 0, 0}));
}

TEST(WordArray, ReadsATextThatLiesInItsWords) {
  const std::string text = "1,2,3,4,5,6,7,8,9,10,11,12,13,14";
  for (const bool in_tail : {false, true}) {
    Array array;
    mub_arrayt_expand(&array, 12);
    char *words = reinterpret_cast<char *>(in_tail ? array.tail : array.inline_items);
    text.copy(words, text.size());
    mub_arrayt_from_string(&array, ',', words, static_cast<int64_t>(text.size()));
    EXPECT_EQ(words_of(array), counted(14));
  }
}

TEST(WordArray, WithoutMemoryCallsAreRefused) {
  const std::string text = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16";
  const Array longer(counted(20));
  const std::vector<std::function<void(mub_arrayt *)>> operations = {
      [](mub_arrayt *a) { mub_arrayt_append(a, 9); },
      [](mub_arrayt *a) { mub_arrayt_insert_at(a, 1, 9); },
      [](mub_arrayt *a) { EXPECT_EQ(mub_arrayt_insert(a, 9), 1); },
      [](mub_arrayt *a) { mub_arrayt_append_array(a, a); },
      [](mub_arrayt *a) { mub_arrayt_expand(a, 100); },
      [](mub_arrayt *a) { mub_arrayt_qsort(a, 0, 1); },
      [&](mub_arrayt *a) { mub_arrayt_clone(&longer, a); },
      [&](mub_arrayt *a) { mub_arrayt_from_string(a, ',', text.data(), static_cast<int64_t>(text.size())); },
  };
  for (size_t i = 0; i < operations.size(); ++i) {
    SCOPED_TRACE(i);
    mub_test::for_every_allocation([&](const Fuse &fuse) {
      Array array({1, 2, 2, 3});
      if (fuse.blows_in([&] { operations[i](&array); })) {
        EXPECT_EQ(words_of(array), (Words{1, 2, 2, 3}));
      }
    });
  }
}

}  // namespace
