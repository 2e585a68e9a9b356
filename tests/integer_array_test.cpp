// What mub_arrayd and mub_arrayx have beyond the other arrays: how integer keys are ordered, handed out and cleared,
// and mub_arrayd's text forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/random.h"
#include "support/strings.h"

using mub_test::Fuse;
using mub_test::Keyed32;
using mub_test::Keyed64;
using mub_test::Random;
using mub_test::Scoped;
using mub_test::String;

namespace {

template <class Kind>
using Keys = std::vector<decltype(Kind::Key::bits)>;

template <class Kind>
class IntegerArrays : public ::testing::Test {
 protected:
  using Bits = decltype(Kind::Key::bits);
  static constexpr Bits kMax = std::numeric_limits<Bits>::max();
  static constexpr Bits kHalf = kMax / 2 + 1;

  static Keys<Kind> keys_of(const typename Kind::Record &array) {
    Keys<Kind> keys;
    for (int64_t i = 0; i < array.count; ++i) keys.push_back(array.entries[i].key);
    return keys;
  }
  static Keys<Kind> after_inserting(const Keys<Kind> &keys, bool descending) {
    Scoped<Kind> array(false, descending);
    for (const Bits key : keys) EXPECT_EQ(Kind::insert(&array, key, 1), 1);
    return keys_of(array);
  }
};

using Kinds = ::testing::Types<Keyed32, Keyed64>;
TYPED_TEST_SUITE(IntegerArrays, Kinds);

TYPED_TEST(IntegerArrays, SortByUnsignedValueAndSearchByTheWrappedDifference) {
  const auto max = this->kMax, half = this->kHalf;
  EXPECT_EQ(this->after_inserting({1, max, 0, max - 1}, false), (Keys<TypeParam>{max - 1, max, 0, 1}));
  EXPECT_EQ(this->after_inserting({1, max, 0, max - 1}, true), (Keys<TypeParam>{1, 0, max, max - 1}));
  // At half of the range either key is the smaller one of the two.
  EXPECT_EQ(this->after_inserting({0, half}, false), (Keys<TypeParam>{0, half}));
  EXPECT_EQ(this->after_inserting({half, 0}, false), (Keys<TypeParam>{half, 0}));
  EXPECT_EQ(this->after_inserting({0, half}, true), (Keys<TypeParam>{half, 0}));

  Scoped<TypeParam> array;
  for (const auto key : Keys<TypeParam>{half + 2, 1, max}) TypeParam::append(&array, key, 7);
  TypeParam::qsort(&array, 1);
  EXPECT_EQ(this->keys_of(array), (Keys<TypeParam>{1, half + 2, max}));
  EXPECT_EQ(TypeParam::find_index(&array, half + 2), 1);
  EXPECT_EQ(TypeParam::find_index(&array, max), 2);
  // Halving meets the middle one first, which is more than half the range away.
  EXPECT_EQ(TypeParam::find_index(&array, 1), -1);
  EXPECT_EQ(TypeParam::bfind_index(&array, 1), 2);
  EXPECT_EQ(TypeParam::afind_index(&array, 1), 0);
  TypeParam::qsort(&array, 0);
  EXPECT_EQ(this->keys_of(array), (Keys<TypeParam>{max, half + 2, 1}));
}

TYPED_TEST(IntegerArrays, LinearSearchFindsTheFirstInAnyOrder) {
  const auto bit = this->kHalf;
  Scoped<TypeParam> array;
  TypeParam::append(&array, 5, 1);
  TypeParam::append(&array, bit | 4, 2);
  TypeParam::append(&array, 4, 3);
  TypeParam::append(&array, 4, 4);
  EXPECT_EQ(TypeParam::afind(&array, 4), 3u);
  EXPECT_EQ(TypeParam::afind_index(&array, 4), 2);
  EXPECT_EQ(TypeParam::afind(&array, 6), 0u);
  EXPECT_EQ(TypeParam::afind_index(&array, 0), -1);
}

void *watched;
uint64_t key_when_released;

TYPED_TEST(IntegerArrays, RemovalsHandTheKeyOutAndClearIt) {
  using Record = typename TypeParam::Record;
  Scoped<TypeParam> array;
  for (const int key : {5, 1, 3}) {
    TypeParam::insert(&array, static_cast<uint32_t>(key), 10u + static_cast<uint32_t>(key));
  }
  const auto remove = [&](int64_t index) {
    if constexpr (std::is_same_v<TypeParam, Keyed32>) {
      return TypeParam::entry_of(mub_arrayd_remove_at, static_cast<Record *>(&array), index);
    } else {
      return TypeParam::entry_of(mub_arrayx_remove_at, static_cast<Record *>(&array), index);
    }
  };
  using Removed = decltype(remove(0));
  EXPECT_EQ(remove(3), (Removed{{0}, 0}));
  EXPECT_EQ(remove(-1), (Removed{{0}, 0}));
  EXPECT_EQ(remove(0), (Removed{{1}, 11}));
  EXPECT_EQ(this->keys_of(array), (Keys<TypeParam>{3, 5}));
  EXPECT_EQ(remove(2), (Removed{{0}, 0}));  // a spare slot, which still holds 5
  EXPECT_EQ(remove(1), (Removed{{5}, 15}));
  EXPECT_EQ(TypeParam::entry(&array, 1), (Removed{{0}, 15}));
  EXPECT_EQ(TypeParam::entry(&array, array.capacity), (Removed{{0}, 0}));

  watched = static_cast<Record *>(&array);
  key_when_released = 99;
  TypeParam::free_at(&array, 0,
                     [](uint64_t) { key_when_released = static_cast<Record *>(watched)->entries[0].key; });
  EXPECT_EQ(key_when_released, 0u);
  EXPECT_EQ(array.count, 0);
}

TYPED_TEST(IntegerArrays, EntryInsertGivesTheEntryOfTheKey) {
  Scoped<TypeParam> array;
  for (uint32_t i = 0; i < 26; ++i) {
    auto *entry = TypeParam::entry_insert(&array, i * 7 % 26);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->value, 0u);
    entry->value = i;
    EXPECT_EQ(TypeParam::entry_insert(&array, i * 7 % 26), entry);
  }
  for (uint32_t i = 0; i < 26; ++i) EXPECT_EQ(TypeParam::entry_find(&array, i * 7 % 26)->value, i);
  EXPECT_EQ(TypeParam::entry_find(&array, 26), nullptr);
  Scoped<TypeParam> empty;
  Fuse(0, mub_test::Blow::kOnce).blows_in([&] { EXPECT_EQ(TypeParam::entry_insert(&empty, 1), nullptr); });
}

// The count that a clone without memory states goes even though there is no table.
TYPED_TEST(IntegerArrays, ShrinkWithoutATable) {
  Scoped<TypeParam> source, copy;
  TypeParam::append(&source, 1, 1);
  Fuse(0, mub_test::Blow::kOnce).blows_in([&] {
    TypeParam::clone(&source, nullptr, &copy, nullptr, nullptr);
  });
  EXPECT_EQ(copy.count, 1);
  TypeParam::shrink(&copy, -1);
  EXPECT_EQ(copy.count, 1);
  TypeParam::shrink(&copy, 1);
  EXPECT_EQ(copy.count, 0);
}

TYPED_TEST(IntegerArrays, SwapEntriesButNotPools) {
  Scoped<TypeParam> a(true, true), b;
  TypeParam::append(&a, 5, 6);
  const mub_pool *pool = a.pool;
  TypeParam::swap(&a, &b);
  EXPECT_EQ(a.count, 0);
  EXPECT_EQ(TypeParam::entry(&b, 0).second, 6u);
  EXPECT_EQ(a.pool, pool);
  EXPECT_EQ(a.own_pool + a.descending, 2);
  EXPECT_EQ(b.pool, nullptr);
  EXPECT_EQ(b.own_pool + b.descending, 0);
}

// ---- text forms

using Keys32 = std::vector<uint32_t>;

Keys32 keys_of(const mub_arrayd &array) {
  Keys32 keys;
  for (int64_t i = 0; i < array.count; ++i) keys.push_back(array.entries[i].key);
  return keys;
}

// The text and its capacity are those of making room for five characters a key and then appending one by one.
TEST(IntegerText, WritesUnsignedKeys) {
  Random random(41);
  for (int64_t count = 0; count < 100; ++count) {
    Scoped<Keyed32> array;
    String string("old"), expected("old");
    mub_string_shrink(&expected, 0);
    mub_string_expand(&expected, std::max<int64_t>(count * 5 - 1, 0));
    for (int64_t i = 0; i < count; ++i) {
      const uint32_t key = static_cast<uint32_t>(random.word()) >> (random.one_in(3) ? random.below(32) : 0);
      mub_arrayd_append(&array, key, 1);
      if (i > 0) mub_string_append_char(&expected, ',');
      mub_string_append_integer(&expected, key);
    }
    mub_arrayd_to_string(&array, 0x500 | ',', &string);
    mub_test::expect_content(string, expected.text());
    ASSERT_EQ(string.capacity, expected.capacity);
  }
}

TEST(IntegerText, ReadsTrimmedPiecesAsLow32Bits) {
  struct Text {
    std::string text;
    Keys32 keys;
  };
  for (const auto &[text, keys] : {Text{"10,2", {10, 2}},
                                   {" 7 ,\t-1\n, ,", {7, 0xFFFFFFFF, 0}},
                                   {",", {0}},
                                   {"4294967297,12x,x", {1, 12, 0}},
                                   {"", {}}}) {
    Scoped<Keyed32> array;
    mub_arrayd_append(&array, 99, 1);
    mub_arrayd_from_string(&array, 0x700 | ',', text.data(), mub_test::size_of(text));
    Keys32 all = {99};
    all.insert(all.end(), keys.begin(), keys.end());
    EXPECT_EQ(keys_of(array), all) << text;
    if (array.count > 1) {
      EXPECT_EQ(array.entries[1].value, 0u);
    }
    mub_arrayd_from_string(&array, ',', "1", -1);
    EXPECT_EQ(keys_of(array), all);
  }
}

TEST(IntegerText, ReadsATextInItsOwnTable) {
  const std::string text = "1,2,3,4,5,6,7,8,9,10,11,12,13,14";
  Scoped<Keyed32> array;
  mub_arrayd_expand(&array, 4);
  char *table = reinterpret_cast<char *>(array.entries);
  text.copy(table, text.size());
  mub_arrayd_from_string(&array, ',', table, mub_test::size_of(text));
  EXPECT_EQ(keys_of(array), (Keys32{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
}

TEST(IntegerText, IsTakenOverAndWrittenWholeOrNotAtAll) {
  mub_test::for_every_allocation([](const Fuse &fuse) {
    Scoped<Keyed32> array;
    mub_arrayd_append(&array, 99, 1);
    const std::string text = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17";
    const bool failed =
        fuse.blows_in([&] { mub_arrayd_from_string(&array, ',', text.data(), mub_test::size_of(text)); });
    EXPECT_EQ(array.count, failed ? 1 : 18);
  });
  mub_test::for_every_allocation([](const Fuse &fuse) {
    Scoped<Keyed32> array;
    for (int i = 0; i < 20; ++i) mub_arrayd_append(&array, 0xFFFFFFFF, 1);
    String string(std::string(50, 'x'));
    const bool failed = fuse.blows_in([&] { mub_arrayd_to_string(&array, ',', &string); });
    EXPECT_EQ(string.text().substr(0, 13), failed ? std::string(13, 'x') : "4294967295,42");
    EXPECT_EQ(string.length, failed ? 50 : 219);
  });
}

}  // namespace
