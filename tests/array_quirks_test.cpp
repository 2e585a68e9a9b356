// What programs of the arrays' functions do not reach: spare slots that name keys, offsets at their end, large
// tables, texts in the table itself.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <string>
#include <vector>

#include "mub_array.h"

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
std::string stream_of(const mub_array &array) {
  return {reinterpret_cast<const char *>(array.keys.data), static_cast<size_t>(array.keys.length)};
}

TEST(ArrayQuirks, SpareSlotsKeepKeysThatMayLeaveTheStreamAndItsBlock) {
  mub_array array;
  mub_array_init(&array, 0);
  for (const char *key : {"first", "gone", "second", "third"}) mub_array_append(&array, key, -1, 1);
  mub_array_remove_at(&array, 1);
  mub_array_shrink(&array, 1);
  EXPECT_EQ(mub_array_set_at(&array, 1, "2", 1, 9), 1u);
  EXPECT_EQ(stream_of(array), "first2third");
  EXPECT_EQ(array.entries[2].key_offset, 11u) << "no slot after the count moves along";
  // The old key lies past the stream's end, which all the same moves by the difference of the lengths.
  EXPECT_EQ(mub_array_set_at(&array, 2, "new", 3, 9), 1u);
  EXPECT_EQ(stream_of(array), "first2thi");
  // One that would leave the block is refused.
  array.entries[3] = {static_cast<uint32_t>(array.keys.capacity), 2, 7};
  EXPECT_EQ(mub_array_set_at(&array, 3, "ab", 2, 9), 0u);
  mub_array_shrink(&array, 4);
  EXPECT_EQ(keys_of(array)[3], "");
  mub_array_shrink(&array, 2);
  EXPECT_EQ(keys_of(array), (Keys{"first", "2"}));
  mub_array_free_all(&array, nullptr);
  EXPECT_EQ(array.keys.data, nullptr);
  mub_array_append(&array, "first", -1, 1);
  mub_array_remove_all(&array);
  EXPECT_NE(array.keys.data, nullptr);
  for (const char *key : {"first", "2"}) mub_array_append(&array, key, -1, 1);
  mub_stream_term(&array.keys);
  EXPECT_EQ(mub_array_find_index(&array, "", 0), 0);
  mub_array_qsort(&array, 1);
  mub_array_insert_at(&array, 0, "key", 3, 2);
  EXPECT_EQ(keys_of(array), Keys(2)) << "inserted after bytes that are gone";
  mub_array_term(&array);
}

// A stream of 4 GiB, of which only the ends are ever touched.
TEST(ArrayQuirks, OffsetsOfKeysEndAt32Bits) {
  constexpr int64_t kBytes = (int64_t{1} << 32) + 64;
  if (static_cast<uint64_t>(kBytes) > SIZE_MAX) GTEST_SKIP() << "no such stream fits into memory";
  constexpr auto kMapped = static_cast<size_t>(kBytes);
  void *map =
      mmap(nullptr, kMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space for 4 GiB";
  mub_array array;
  mub_array_init(&array, 0);
  array.keys = {static_cast<uint8_t *>(map), 0xFFFFFFFF - 3, kBytes - 8};
  mub_array_append(&array, "four", 4, 1);
  mub_array_append(&array, "abc", 3, 2);
  mub_array_insert_at(&array, 1, "x", 1, 3);
  EXPECT_EQ(mub_array_set_at(&array, 1, "abcd", 4, 4), 0u);
  for (const char *key : {"aaa", "zzz"}) EXPECT_EQ(mub_array_insert(&array, key, 3, 3), 1);
  mub_array_append_array(&array, &array);
  EXPECT_EQ(keys_of(array), (Keys{"", "abc"}));
  EXPECT_EQ(mub_array_set_at(&array, 1, "xyz", 3, 4), 2u);
  EXPECT_EQ(array.keys.length, 0xFFFFFFFF);
  array.keys.data[0] = 1;
  array.entries[0] = {0, 0, 6};
  array.entries[1] = {0, 0x90000000, 5};
  mub_array_qsort(&array, 1);
  EXPECT_EQ(array.entries[0].value, 5u) << "lengths that differ by 2^31 compare the other way round";
  array.keys = {nullptr, 0, 0};
  mub_array_term(&array);
  munmap(map, kMapped);
}

template <class A>
void expect_growth(A &array, int (*expand)(A *, int64_t)) {
  constexpr int64_t kSteps[][3] = {
      {0, 13, 16}, {0, 131072, 131072}, {131070, 131073, 196608}, {196608, 196609, 262144}};
  for (const auto &[count, wanted, grown] : kSteps) {
    array.count = count;
    EXPECT_EQ(expand(&array, wanted), 1);
    for (const int64_t too_many : {INT64_MAX, int64_t{1} << 60}) EXPECT_EQ(expand(&array, too_many), 0);
    EXPECT_EQ(array.capacity, grown);
  }
}
TEST(ArrayQuirks, TablesGrowByAtMost65536SlotsUnlessMoreAreWanted) {
  mub_arrays items;
  mub_arrays_init(&items, 0);
  expect_growth(items, mub_arrays_expand);
  mub_arrays_term(&items);
  mub_arrayt words;
  mub_arrayt_init(&words);
  expect_growth(words, mub_arrayt_expand);
  mub_arrayt_term(&words);
}

// In the record's own words, and after them.
TEST(ArrayQuirks, NumbersAreReadFromATextInTheirOwnTable) {
  const std::string text = "1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6";
  mub_string string;
  mub_string_init(&string);
  mub_arrayd keys;
  mub_arrayd_init(&keys, 0);
  mub_arrayd_expand(&keys, 8);
  char *place = reinterpret_cast<char *>(keys.entries);
  text.copy(place, 31);
  mub_arrayd_from_string(&keys, ',', place, 31);
  mub_arrayd_to_string(&keys, ',', &string);
  EXPECT_EQ(string.data, text);
  EXPECT_EQ(string.capacity, 79) << "room for 5 characters each";
  mub_arrayd_term(&keys);
  for (const bool is_behind : {false, true}) {
    mub_arrayt words;
    mub_arrayt_init(&words);
    mub_arrayt_expand(&words, 12);
    place = reinterpret_cast<char *>(is_behind ? words.tail : words.inline_items);
    text.copy(place, 31);
    mub_arrayt_from_string(&words, ',', place, 31);
    mub_arrayt_to_string(&words, ',', &string);
    EXPECT_EQ(string.data, text);
    EXPECT_EQ(string.capacity, 143) << "room for 9 characters each";
    mub_arrayt_term(&words);
  }
  mub_string_term(&string);
}

void *released;
TEST(ArrayQuirks, AKeyIsClearedBeforeItsValueIsReleased) {
  mub_arrayx array;
  mub_arrayx_init(&array, 0);
  mub_arrayx_append(&array, 5, 1);
  released = array.entries;
  mub_arrayx_free_at(&array, 0,
                     [](uint64_t) { EXPECT_EQ(static_cast<mub_arrayx_entry *>(released)->key, 0u); });
  mub_arrayx_term(&array);
}

}  // namespace
