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

using namespace mub_test;

namespace {

template <class Kind>
using Keys = std::vector<typename Kind::Key>;
template <class Kind>
using EntryOf = std::pair<typename Kind::Key, uint64_t>;

template <class Kind>
Keys<Kind> keys_of(const Scoped<Kind> &array) {
  Keys<Kind> keys;
  for (const auto &entry : entries_of(array)) keys.push_back(entry.first);
  return keys;
}

template <class Kind>
class IntegerArrays : public ::testing::Test {
 protected:
  static constexpr auto kMax = std::numeric_limits<typename Kind::Key>::max();
  static constexpr auto kHalf = kMax / 2 + 1;

  static void sort(Scoped<Kind> &array, bool ascending) {
    if constexpr (std::is_same_v<Kind, Keyed32>) {
      mub_arrayd_qsort(&array, ascending);
    } else {
      mub_arrayx_qsort(&array, ascending);
    }
  }
  static Keys<Kind> after_inserting(const Keys<Kind> &keys, bool descending) {
    Scoped<Kind> array(false, descending);
    for (const auto key : keys) EXPECT_EQ(call<kInsert>(array, EntryOf<Kind>{key, 1}), 1);
    return keys_of(array);
  }
};

using Kinds = ::testing::Types<Keyed32, Keyed64>;
TYPED_TEST_SUITE(IntegerArrays, Kinds);

TYPED_TEST(IntegerArrays, SortByUnsignedValueAndSearchByTheWrappedDifference) {
  using Key = typename TypeParam::Key;
  constexpr Key max = TestFixture::kMax, half = TestFixture::kHalf;
  EXPECT_EQ(this->after_inserting({1, max, 0, max - 1}, false), (Keys<TypeParam>{max - 1, max, 0, 1}));
  EXPECT_EQ(this->after_inserting({1, max, 0, max - 1}, true), (Keys<TypeParam>{1, 0, max, max - 1}));
  // At half of the range either key is the smaller one of the two.
  EXPECT_EQ(this->after_inserting({0, half}, false), (Keys<TypeParam>{0, half}));
  EXPECT_EQ(this->after_inserting({half, 0}, false), (Keys<TypeParam>{half, 0}));
  EXPECT_EQ(this->after_inserting({0, half}, true), (Keys<TypeParam>{half, 0}));

  Scoped<TypeParam> array;
  for (const Key key : {Key{half + 2}, Key{1}, max}) call<kAppend>(array, std::pair(key, uint64_t{7}));
  TestFixture::sort(array, true);
  EXPECT_EQ(keys_of(array), (Keys<TypeParam>{1, half + 2, max}));
  EXPECT_EQ(call<kFindIndex>(array, Key{half + 2}), 1);
  EXPECT_EQ(call<kFindIndex>(array, max), 2);
  // Halving meets the middle one first, which is more than half the range away.
  EXPECT_EQ(call<kFindIndex>(array, Key{1}), -1);
  EXPECT_EQ(call<kBfindIndex>(array, Key{1}), 2);
  EXPECT_EQ(call<kAfindIndex>(array, Key{1}), 0);
  TestFixture::sort(array, false);
  EXPECT_EQ(keys_of(array), (Keys<TypeParam>{max, half + 2, 1}));
}

void *watched;
uint64_t key_when_released;

TYPED_TEST(IntegerArrays, RemovalsHandTheKeyOutAndClearIt) {
  using Entry = EntryOf<TypeParam>;
  using Record = typename TypeParam::Record;
  Scoped<TypeParam> array;
  for (const Entry &entry : {Entry{5, 15}, Entry{1, 11}, Entry{3, 13}}) call<kInsert>(array, entry);
  const auto remove = [&](int64_t index) {
    Entry removed = {99, 0};
    removed.second = call<kRemoveKeyAt>(array, index, &removed.first);
    return removed;
  };
  EXPECT_EQ(remove(3), (Entry{0, 0}));
  EXPECT_EQ(remove(-1), (Entry{0, 0}));
  EXPECT_EQ(remove(0), (Entry{1, 11}));
  EXPECT_EQ(keys_of(array), (Keys<TypeParam>{3, 5}));
  EXPECT_EQ(remove(2), (Entry{0, 0}));  // a spare slot, which still holds 5
  EXPECT_EQ(remove(1), (Entry{5, 15}));
  EXPECT_EQ(TypeParam::entry(&array, 1), (Entry{0, 15}));
  EXPECT_EQ(TypeParam::entry(&array, array.capacity), (Entry{0, 0}));

  watched = static_cast<Record *>(&array);
  key_when_released = 99;
  call<kFreeAt>(
      array, 0, +[](uint64_t) { key_when_released = static_cast<Record *>(watched)->entries[0].key; });
  EXPECT_EQ(key_when_released, 0u);
  EXPECT_EQ(array.count, 0);
}

// The count that a clone without memory states goes even though there is no table.
TYPED_TEST(IntegerArrays, ShrinkWithoutATable) {
  Scoped<TypeParam> source, copy;
  call<kAppend>(source, std::pair(typename TypeParam::Key{1}, uint64_t{1}));
  Fuse(0, Blow::kOnce).blows_in([&] { call<kClone>(source, nullptr, &copy, nullptr, nullptr); });
  EXPECT_EQ(copy.count, 1);
  call<kShrink>(copy, -1);
  EXPECT_EQ(copy.count, 1);
  call<kShrink>(copy, 1);
  EXPECT_EQ(copy.count, 0);
}

// ---- text forms

using Keys32 = Keys<Keyed32>;

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
    expect_content(string, expected.text());
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
    mub_arrayd_from_string(&array, 0x700 | ',', text.data(), size_of(text));
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
  mub_arrayd_from_string(&array, ',', table, size_of(text));
  EXPECT_EQ(keys_of(array), (Keys32{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
}

TEST(IntegerText, IsTakenOverAndWrittenWholeOrNotAtAll) {
  for_every_allocation([](const Fuse &fuse) {
    Scoped<Keyed32> array;
    mub_arrayd_append(&array, 99, 1);
    const std::string text = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17";
    const bool failed =
        fuse.blows_in([&] { mub_arrayd_from_string(&array, ',', text.data(), size_of(text)); });
    EXPECT_EQ(array.count, failed ? 1 : 18);
  });
  for_every_allocation([](const Fuse &fuse) {
    Scoped<Keyed32> array;
    for (int i = 0; i < 20; ++i) mub_arrayd_append(&array, 0xFFFFFFFF, 1);
    String string(std::string(50, 'x'));
    const bool failed = fuse.blows_in([&] { mub_arrayd_to_string(&array, ',', &string); });
    EXPECT_EQ(string.text().substr(0, 13), failed ? std::string(13, 'x') : "4294967295,42");
    EXPECT_EQ(string.length, failed ? 50 : 219);
  });
}

}  // namespace
