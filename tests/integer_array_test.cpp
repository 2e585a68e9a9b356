// What mub_arrayd and mub_arrayx have beyond the other arrays: how integer keys are ordered, handed out and cleared,
// and numbers as texts.
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

// ---- text forms, which mub_arrayd and mub_arrayt have

struct Keys32 : Scoped<Keyed32> {
  static constexpr int64_t kEstimate = 5;  // characters that a number and its separator are taken to need
  static constexpr auto to_string = mub_arrayd_to_string;
  static constexpr auto from_string = mub_arrayd_from_string;
  static int64_t number(uint64_t word) { return static_cast<uint32_t>(word); }
  void append(uint64_t word) { mub_arrayd_append(this, static_cast<uint32_t>(word), 1); }
  int64_t at(int64_t index) const { return entries[index].key; }
  // Room for a text of so many bytes, but for fewer numbers.
  void *table(int64_t bytes) {
    return mub_arrayd_expand(this, bytes / int64_t{sizeof *entries} + 1), entries;
  }
};

struct Words64 : mub_arrayt {
  Words64() { mub_arrayt_init(this); }
  ~Words64() { mub_arrayt_term(this); }
  static constexpr int64_t kEstimate = 9;
  static constexpr auto to_string = mub_arrayt_to_string;
  static constexpr auto from_string = mub_arrayt_from_string;
  static int64_t number(uint64_t word) { return static_cast<int64_t>(word); }
  void append(uint64_t word) { mub_arrayt_append(this, word); }
  int64_t at(int64_t index) const { return number(mub_arrayt_get_at(this, index)); }
  // In the record's own words, or in the tail.
  void *table(int64_t bytes) {
    return bytes <= 32 ? inline_items : (mub_arrayt_expand(this, bytes / 8 + 5), tail);
  }
};

template <class A>
std::vector<int64_t> numbers_of(const A &array) {
  std::vector<int64_t> numbers;
  for (int64_t i = 0; i < array.count; ++i) numbers.push_back(array.at(i));
  return numbers;
}

template <class A>
class IntegerText : public ::testing::Test {};
using Arrays = ::testing::Types<Keys32, Words64>;
TYPED_TEST_SUITE(IntegerText, Arrays);

// The text and its capacity are those of making room by an estimate and then appending one by one. And what was written
// reads as the same numbers, also where the text lies in the table that is to grow; without memory nothing is taken.
TYPED_TEST(IntegerText, IsWrittenAndReadWholeOrNotAtAll) {
  using A = TypeParam;
  Random random(41);
  for (const int64_t count : {0, 1, 2, 5, 13, 40, 150}) {
    std::vector<int64_t> numbers;
    A written;
    String expected("old");
    mub_string_shrink(&expected, 0);
    mub_string_expand(&expected, std::max<int64_t>(count * A::kEstimate - 1, 0));
    for (int64_t i = 0; i < count; ++i) {
      const uint64_t word = count != 40 ? random.word() % 10 : random.word() >> random.below(64);
      written.append(word);
      numbers.push_back(A::number(word));
      if (i > 0) mub_string_append_char(&expected, ',');
      mub_string_append_integer(&expected, numbers.back());
    }
    for_every_allocation([&](const Fuse &fuse) {
      String string("old");
      const char *old = string.data;
      const bool failed = fuse.blows_in([&] { A::to_string(&written, 0x500 | ',', &string); });
      expect_content(string, failed ? "old" : expected.text());
      EXPECT_EQ(string.capacity, failed ? 15 : expected.capacity);
      EXPECT_EQ(string.data == old, string.capacity == 15);
    });
    for_every_allocation([&](const Fuse &fuse) {
      A array;
      char *own = static_cast<char *>(array.table(expected.length));
      const auto length = static_cast<int64_t>(expected.text().copy(own, 2000));
      const bool failed = fuse.blows_in([&] { A::from_string(&array, 0x500 | ',', own, length); });
      EXPECT_EQ(numbers_of(array), failed ? std::vector<int64_t>() : numbers);
    });
  }
}

TYPED_TEST(IntegerText, IsReadAsTrimmedPiecesWithAllTheirBits) {
  using A = TypeParam;
  const std::pair<std::string, std::vector<uint64_t>> kTexts[] = {
      {"10,2", {10, 2}},
      {" 7 ,\t-1\n, ,", {7, ~uint64_t{0}, 0}},
      {",", {0}},
      {"1, ", {1}},
      {"4294967297,-2y,x,-9223372036854775808",
       {(uint64_t{1} << 32) + 1, ~uint64_t{1}, 0, uint64_t{1} << 63}},
      {"", {}}};
  for (const auto &[text, words] : kTexts) {
    A array;
    array.append(99);
    A::from_string(&array, 0x700 | ',', text.data(), size_of(text));
    A::from_string(&array, ',', "1", -1);
    std::vector<int64_t> numbers = {99};
    for (const uint64_t word : words) numbers.push_back(A::number(word));
    EXPECT_EQ(numbers_of(array), numbers) << text;
  }
}

}  // namespace
