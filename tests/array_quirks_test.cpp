// What the random programs do not test in arrays: spare slots that refer to keys, offsets near 4 GiB, large
// tables, and the comparisons that a sort makes.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <string>
#include <vector>

#include "mub.hpp"
#include "support/fuse.h"

namespace {

using Keys = std::vector<std::string>;

Keys keys_of(const mub_array &array) {
  Keys keys;
  for (int64_t i = 0; i < array.count; ++i) {
    const char *key;
    int64_t length;
    mub_array_get_at(&array, i, &key, &length);
    keys.emplace_back(key == nullptr ? "" : key, static_cast<size_t>(length));
  }
  return keys;
}

TEST(ArrayQuirks, SpareSlotsKeepOffsetsThatMayExceedTheKeyStream) {
  mub::array owner;
  mub_array &array = *owner.c();
  for (const char *key : {"first", "second", "third", "last"}) mub_array_append(&array, key, -1, 1);
  mub_array_remove_at(&array, 3);
  mub_array_shrink(&array, 1);
  const char *spare_key;
  int64_t spare_length;
  EXPECT_EQ(mub_array_get_at(&array, 2, &spare_key, &spare_length), 1u);
  EXPECT_EQ(std::string(spare_key, static_cast<size_t>(spare_length)), "third");
  EXPECT_EQ(mub_array_set_at(&array, 1, "2", 1, 9), 1u);
  EXPECT_EQ(array.entries[2].key_offset, 11u) << "spare slots are not adjusted";
  // The old key is past the end of the stream; the length still changes by the difference of the key lengths.
  EXPECT_EQ(mub_array_set_at(&array, 2, "new", 3, 9), 1u);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(array.keys.data), 9), "first2thi");
  EXPECT_EQ(array.keys.length, 9);
  // A key that exceeds the capacity is refused.
  array.entries[3] = {static_cast<uint32_t>(array.keys.capacity - 1), 2, 7};
  EXPECT_EQ(mub_array_get_at(&array, 3, &spare_key, &spare_length), 7u);
  EXPECT_EQ(spare_length, 2) << "the byte after the capacity is readable";
  EXPECT_EQ(mub_array_set_at(&array, 3, "abc", 3, 9), 0u);
  ++array.entries[3].key_offset;
  EXPECT_EQ(mub_array_set_at(&array, 3, "ab", 2, 9), 0u);
  mub_array_shrink(&array, 4);
  EXPECT_EQ(keys_of(array)[3], "");
  mub_array_shrink(&array, 2);
  EXPECT_EQ(keys_of(array), (Keys{"first", "2"}));
  mub_array_free_all(&array, nullptr);
  EXPECT_EQ(array.keys.data, nullptr) << "released";
  mub_array_append(&array, "first", -1, 1);
  mub_array_remove_all(&array);
  EXPECT_NE(array.keys.data, nullptr) << "emptied";
  for (const char *key : {"first", "2"}) mub_array_append(&array, key, -1, 1);
  mub_stream_term(&array.keys);
  EXPECT_EQ(mub_array_find_index(&array, "", 0), 0);
  mub_array_qsort(&array, 1);
  mub_array_insert_at(&array, 0, "key", 3, 2);
  EXPECT_EQ(keys_of(array), Keys(2)) << "the key bytes were released";
}

// Texts longer than those that are copied to the stack.
TEST(OwnText, IsSplitWhollyOrNotAtAll) {
  constexpr int64_t kPieces = 200;
  std::string text;
  while (std::ssize(text) < 2 * kPieces) text += "1,";
  const auto expect = [&](auto kind, auto own_text, auto split) {
    mub_test::for_every_allocation([&](auto refused_in) {
      decltype(kind) record;
      const char *own = own_text(record);
      const auto count = record.size();
      const bool is_refused = refused_in([&] { split(record.c(), ',', own, std::ssize(text)); });
      EXPECT_TRUE(record.size() == count + kPieces || (is_refused && record.size() == count));
    });
  };
  const auto as_key = [&](auto &record) {
    EXPECT_TRUE(record.push_back(text, 1));
    return reinterpret_cast<const char *>(record.c()->keys.data);
  };
  const auto in_spare = [&](auto slots) {
    return [&, slots](auto &array) {
      EXPECT_TRUE(array.reserve(100));
      void *own = array.c()->*slots;
      return static_cast<const char *>(std::memcpy(own, text.data(), text.size()));
    };
  };
  expect(mub::array(), as_key, mub_array_from_string);
  expect(mub::list(), as_key, mub_list_from_string);
  expect(mub::arrayd(), in_spare(&mub_arrayd::entries), mub_arrayd_from_string);
  expect(mub::arrayt(), in_spare(&mub_arrayt::tail), mub_arrayt_from_string);
}

// A stream of 4 GiB, of which only the ends are accessed.
TEST(ArrayQuirks, KeysStayBelow4GiB) {
  constexpr int64_t kBytes = (int64_t{1} << 32) + 64;
  if (static_cast<uint64_t>(kBytes) > SIZE_MAX) GTEST_SKIP() << "the stream exceeds the address space";
  constexpr auto kMapped = static_cast<size_t>(kBytes);
  void *map =
      mmap(nullptr, kMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space for 4 GiB";
  mub::array owner;
  mub_array &array = *owner.c();
  array.keys = {static_cast<uint8_t *>(map), 0xFFFFFFFF - 3, kBytes - 8};
  mub_array_append(&array, "four", 4, 1);
  mub_array_append(&array, "abc", 3, 2);
  mub_array_insert_at(&array, 1, "x", 1, 3);
  EXPECT_EQ(mub_array_set_at(&array, 1, "abcd", 4, 4), 0u);
  EXPECT_EQ(mub_array_set_at(&array, 1, "a", int64_t{1} << 32, 4), 0u);
  for (const char *key : {"aaa", "zzz"}) EXPECT_EQ(mub_array_insert(&array, key, 3, 3), 1);
  mub_array_append_array(&array, &array);
  EXPECT_EQ(keys_of(array), (Keys{"", "abc"}));
  EXPECT_EQ(mub_array_set_at(&array, 1, "xyz", 3, 4), 2u);
  EXPECT_EQ(array.keys.length, 0xFFFFFFFF);
  array.keys.data[0] = 1;
  array.entries[0] = {0, 0, 6};
  array.entries[1] = {0, 0x90000000, 5};
  mub_array_qsort(&array, 1);
  EXPECT_EQ(array.entries[0].value, 5u) << "lengths that differ by more than 2^31 compare in reverse";
  array.keys = {nullptr, 0, 0};
  munmap(map, kMapped);
}

TEST(ArrayQuirks, TablesGrowByAtMost65536SlotsUnlessMoreAreRequested) {
  constexpr int64_t kSteps[][3] = {
      {0, 13, 16}, {0, 131072, 131072}, {131070, 131073, 196608}, {196608, 196609, 262144}};
  mub::arrayt owner;
  mub_arrayt &words = *owner.c();
  for (const auto &[count, wanted, grown] : kSteps) {
    words.count = count;
    EXPECT_EQ(mub_arrayt_expand(&words, wanted), 1);
    EXPECT_EQ(mub_arrayt_expand(&words, int64_t{1} << 60), 0);
    EXPECT_EQ(words.capacity, grown);
  }
  words.count = INT64_MAX;
  mub_arrayt_append_array(&words, &words);
  EXPECT_EQ(words.count, INT64_MAX) << "the sum of the counts overflows";
  mub::arrayd entries;
  entries.append(1, 1);
  entries.c()->count = INT64_MAX;
  mub_arrayd_append_array(entries.c(), entries.c());
  EXPECT_EQ(std::exchange(entries.c()->count, 1), INT64_MAX);
}

void *released;
TEST(ArrayQuirks, AKeyIsClearedBeforeItsValueIsReleased) {
  mub::arrayx owner;
  mub_arrayx &array = *owner.c();
  mub_arrayx_append(&array, 5, 1);
  released = array.entries;
  mub_arrayx_free_at(&array, 0,
                     [](uint64_t) { EXPECT_EQ(static_cast<mub_arrayx_entry *>(released)->key, 0u); });
}

// Orders items by their high halves, or inconsistently. The trace depends on every comparison.
uint64_t trace;
void note(uint64_t word) { trace = (trace ^ word) * 0x100000001B3u; }
int compare(uint64_t has_order, uint64_t a, uint64_t b, uint64_t) {
  note(a), note(b);
  const uint64_t high = a >> 32, other = b >> 32;
  return has_order != 0 ? (high > other) - (high < other) : static_cast<int>((5 * high + other) % 3) - 1;
}
TEST(ArrayQuirks, SortsAlwaysMakeTheSameComparisonsAndPlaceEqualItemsInTheSameOrder) {
  mub::arrays owner;
  mub_arrays &array = *owner.c();
  for (const uint64_t size : {9u, 1000u}) {
    for (const int settings : {0, 1, 2, 3}) {
      mub_arrays_shrink(&array, 0);
      for (uint64_t i = 0; i < size; ++i)
        mub_arrays_append(&array, (i * 0x9E3779B97F4A7C15u >> 40) % (size / 2 + 1) << 32 | i);
      mub_arrays_qsort_x(&array, settings > 1, settings % 2, compare);
      for (int64_t i = 0; i < array.count; ++i) note(array.items[i]);
    }
  }
  EXPECT_EQ(trace, 12471316002768831132u);
}

// Integers are not sorted by calls of a comparator, which are made one after the other.
TEST(ArrayQuirks, SortsOfIntegersPlaceEqualKeysAsSortsWithAComparatorDo) {
  const auto by_key = [](uint64_t a, uint64_t b) { return (a >> 32 > b >> 32) - (a >> 32 < b >> 32); };
  mub::arrayx keys, values;
  for (uint64_t size = 2; size < 1500; size += size < 40 ? 1 : 97) {
    for (const uint64_t distinct : {uint64_t{1}, uint64_t{3}, size / 8 + 2, size * size}) {
      for (const int ascending : {0, 1}) {
        keys.clear();
        values.clear();
        for (uint64_t i = 0; i < size; ++i) {
          const uint64_t key = (i * 0x9E3779B97F4A7C15u >> 40) % distinct;
          for (mub::arrayx *array : {&keys, &values}) array->append(key, key << 32 | i);
        }
        mub_arrayx_qsort(keys.c(), ascending);
        mub_arrayx_qsort_x(values.c(), ascending, by_key);
        for (uint64_t i = 0; i < size; ++i)
          ASSERT_EQ(keys.c()->entries[i].value, values.c()->entries[i].value) << size;
      }
    }
  }
}

}  // namespace
