// What mub_array has beyond the other arrays: keys in a stream, text forms and spare slots that name keys.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"
#include "support/strings.h"

using namespace mub_test;
using Keys = std::vector<std::string>;

namespace {

struct ByteArray : Scoped<ByteKeyed> {
  explicit ByteArray(const Keys &contents = {}) {
    for (const auto &key : contents) mub_array_append(this, key.data(), size_of(key), 1);
  }
  Keys content() const {
    Keys content;
    for (const auto &entry : entries_of(*this)) content.push_back(entry.first);
    return content;
  }
  std::string_view stream() const {
    return {reinterpret_cast<const char *>(keys.data), static_cast<size_t>(keys.length)};
  }
};

TEST(ByteArray, SpareSlotsKeepWhatLiesInThem) {
  ByteArray array({"first", "gone", "second", "third"});
  mub_array_remove_at(&array, 1);
  EXPECT_EQ(array.stream(), "firstsecondthird");
  mub_array_shrink(&array, 1);
  EXPECT_EQ(mub_array_find_index(&array, "second", -1), -1);
  EXPECT_EQ(ByteKeyed::entry(&array, 2).first, "third");
  // It is replaced where it stands, and nothing behind the count moves along.
  EXPECT_EQ(mub_array_set_at(&array, 1, "2", 1, 9), 1u);
  EXPECT_EQ(array.stream(), "first2third");
  EXPECT_EQ(array.entries[2].key_offset, 11u);
  // The old key lies past the stream's end, which all the same moves by the difference of the lengths.
  EXPECT_EQ(mub_array_set_at(&array, 2, "new", 3, 9), 1u);
  EXPECT_EQ(array.stream(), "first2thi");
  mub_array_shrink(&array, 2);
  EXPECT_EQ(array.content(), (Keys{"first", "2"}));
  mub_array_remove_all(&array);
  EXPECT_NE(array.keys.data, nullptr);
  mub_array_free_all(&array, nullptr);
  EXPECT_EQ(array.keys.data, nullptr);
}

TEST(ByteArray, KeysThatLeftTheirBlockReadAsEmpty) {
  ByteArray array({"a", std::string(60, 'b'), "c"});
  mub_stream_term(&array.keys);
  EXPECT_EQ(array.content(), Keys(3));
  EXPECT_EQ(mub_array_afind_index(&array, "b", 1), -1);
  EXPECT_EQ(mub_array_find_index(&array, "", 0), 1);
  mub_array_qsort(&array, 1);
  EXPECT_EQ(mub_array_remove_at(&array, 1), 1u);
  // Insertions among such entries move offsets on, but never make them readable.
  mub_array_insert_at(&array, 0, "key", 3, 2);
  mub_array_shrink(&array, array.capacity);
  mub_array_qsort(&array, 0);
  mub_array_append_array(&array, &array);
}

// A stream of 4 GiB, of which only the ends are ever touched.
TEST(ByteArray, OffsetsEndAt32Bits) {
  constexpr int64_t kBytes = (int64_t{1} << 32) + 64;
  if (static_cast<uint64_t>(kBytes) > SIZE_MAX) GTEST_SKIP() << "no such stream fits into memory";
  constexpr auto kMapped = static_cast<size_t>(kBytes);
  void *map =
      mmap(nullptr, kMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space for 4 GiB";
  ByteArray array;
  array.keys = {static_cast<uint8_t *>(map), 0xFFFFFFFF - 3, kBytes - 8};
  mub_array_append(&array, "four", 4, 1);
  mub_array_append(&array, "abc", 3, 2);
  EXPECT_EQ(array.content(), (Keys{"", "abc"}));
  mub_array_insert_at(&array, 1, "x", 1, 3);
  EXPECT_EQ(mub_array_set_at(&array, 1, "abcd", 4, 4), 0u);
  for (const char *key : {"aaa", "zzz"}) EXPECT_EQ(mub_array_insert(&array, key, 3, 3), 1);
  mub_array_append_array(&array, &array);
  EXPECT_EQ(mub_array_set_at(&array, 1, "xyz", 3, 4), 2u);
  EXPECT_EQ(array.keys.length, 0xFFFFFFFF);
  mub_array_qsort(&array, 0);
  EXPECT_EQ(array.content(), (Keys{"xyz", ""}));
  array.keys.data[0] = 1;
  array.entries[1] = {0, 0x90000000, 5};
  array.entries[0] = {0, 0, 6};
  mub_array_qsort(&array, 1);
  EXPECT_EQ(array.entries[0].value, 5u);  // lengths that differ by 2^31 compare the other way round
  array.keys = {nullptr, 0, 0};
  munmap(map, kMapped);
}

// The steps of mub_array_set_at on slots below and past the count, whose old keys may lie past the stream's
// end.
TEST(ByteArray, ReplacesKeysAnywhereInTheBlock) {
  for (uint64_t seed = 0; seed < 300; ++seed) {
    Random random(1000 + seed);
    ByteArray array;
    for (int i = 0; i < 8; ++i) mub_array_append(&array, random.text(random.below(9)).c_str(), -1, 1);
    mub_array_shrink(&array, random.below(9));
    for (int step = 0; step < 20; ++step) {
      if (random.one_in(4)) mub_stream_shrink(&array.keys, random.below(array.keys.capacity + 1));
      const int64_t index = random.below(array.capacity);
      const std::string key = random.text(random.below(random.one_in(8) ? 60 : 12));
      std::vector<mub_array_entry> entries(array.entries, array.entries + array.capacity);
      mub_array_entry &entry = entries[static_cast<size_t>(index)];
      const int64_t at = entry.key_offset, old_end = at + entry.key_length;
      const int64_t longer_by = size_of(key) - entry.key_length;
      // Another stream takes the same steps.
      mub_stream twin;
      mub_stream_init(&twin);
      mub_stream_expand(&twin, array.keys.capacity);
      mub_stream_copy(&twin, array.keys.data, array.keys.capacity);
      mub_stream_shrink(&twin, array.keys.length);
      const mub_stream before = array.keys;
      const bool done = old_end <= twin.capacity + (twin.data != nullptr) &&
                        mub_stream_update(&twin, at, entry.key_length, key.data(), size_of(key)) != 0 &&
                        at + size_of(key) <= twin.capacity + (twin.data != nullptr);
      const uint64_t value = entry.value;
      ASSERT_EQ(mub_array_set_at(&array, index, key.data(), size_of(key), 1 + value), done ? value : 0);
      if (done) {
        for (int64_t i = 0; longer_by != 0 && i < array.count; ++i) {
          uint32_t &offset = entries[static_cast<size_t>(i)].key_offset;
          if (offset >= old_end) offset += static_cast<uint32_t>(longer_by);
        }
        entry = {static_cast<uint32_t>(at), static_cast<uint32_t>(size_of(key)), 1 + value};
        ASSERT_EQ(array.keys.length, twin.length);
        ASSERT_EQ(array.keys.capacity, twin.capacity);
        ASSERT_TRUE(twin.data == nullptr ||
                    std::memcmp(array.keys.data, twin.data, static_cast<size_t>(twin.capacity)) == 0);
      } else {
        ASSERT_TRUE(before.data == array.keys.data && before.length == array.keys.length);
      }
      ASSERT_EQ(std::memcmp(entries.data(), array.entries, entries.size() * sizeof entries[0]), 0);
      mub_stream_term(&twin);
      ASSERT_TRUE(!done || ByteKeyed::entry(&array, index).first.size() == key.size());
    }
  }
}

// The key store is full, and the table has room.
TEST(ByteArray, InsertionsWithoutRoomForTheKeyAddNothing) {
  const std::string places[] = {"a", "ee", "z"};
  for (int64_t size = 0; size < 6; size += 5) {
    for (int operation = 0; operation < 4; ++operation) {
      for (const std::string &place : places) {
        for_every_allocation([&](const Fuse &fuse) {
          Pool pool(8);
          mub_pool_free(&pool, mub_pool_new(&pool));
          ByteArray array(size == 0 ? Keys() : Keys{"bb", "cc", "dd", "ff", "gg"});
          array.pool = &pool;
          mub_stream_append(&array.keys, "unused unused", array.keys.capacity - array.keys.length);
          Keys expected = array.content();
          const std::string key = place + std::string(30, '.');
          const auto at = std::lower_bound(expected.begin(), expected.end(), key);
          const int64_t index = at - expected.begin();
          uint64_t block = 1;
          int64_t result = 0;
          const bool failed = fuse.blows_in([&] {
            if (operation == 0) result = mub_array_insert(&array, key.data(), size_of(key), 1);
            if (operation == 1)
              result = mub_array_insert_new(&array, key.data(), size_of(key), &block, nullptr);
            if (operation == 2) result = mub_array_entry_insert(&array, key.data(), size_of(key)) != nullptr;
            if (operation == 3) mub_array_insert_at(&array, index, key.data(), size_of(key), 1);
          });
          const int64_t done[] = {1, index, 1, 0};
          const int64_t refused[] = {1, -1, 0, 0};
          EXPECT_EQ(result, (failed ? refused : done)[operation]);
          if (!failed) expected.insert(at, key);
          EXPECT_EQ(array.content(), expected);
          for (size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(mub_array_find_index(&array, expected[i].c_str(), -1), static_cast<int64_t>(i));
          }
          EXPECT_EQ(pool.live_count, operation == 1 && !failed);
          EXPECT_EQ(block == 0, operation == 1 && failed);
        });
      }
    }
  }
}

// ---- lengths, and the empty key

TEST(ByteArray, MeasuresNegativeLengthsButWhereTheyAreExact) {
  ByteArray array;
  mub_array_append(&array, "b\0c", -1, 1);
  EXPECT_EQ(mub_array_insert(&array, "b", -5, 2), 0);
  EXPECT_EQ(mub_array_update(&array, "b", -1, 3), 1u);
  EXPECT_EQ(mub_array_bfind(&array, "b", -1) + mub_array_afind(&array, "b", -1), 6u);
  EXPECT_EQ(mub_array_set_at(&array, 0, "dd", -1, 4), 3u);
  EXPECT_EQ(mub_array_entry_find(&array, "dd", -1), nullptr);
  for (const bool descending : {true, false}) {
    array.descending = descending;
    EXPECT_EQ(mub_array_entry_insert(&array, "dd", -1), nullptr);
    mub_array_insert_at(&array, descending, "e", -1, 1);
  }
  EXPECT_EQ(array.content(), Keys{"dd"});
  EXPECT_EQ(mub_array_remove(&array, "dd", -1), 4u);
  EXPECT_EQ(mub_array_entry_insert(&array, "fff\0g", -1)->key_length, 3u);
}

TEST(ByteArray, NullIsTheEmptyKeyWhichFitsOnlyAtTheEnd) {
  ByteArray array({"a"});
  uint64_t value = 1;
  mub_array_insert_at(&array, 0, nullptr, 0, 5);
  EXPECT_EQ(mub_array_insert(&array, nullptr, -1, 5), 1);
  EXPECT_EQ(mub_array_insert_new(&array, nullptr, 3, &value, nullptr), -1);
  EXPECT_EQ(mub_array_entry_insert(&array, nullptr, 0), nullptr);
  EXPECT_EQ(value, 0u);
  mub_array_append(&array, nullptr, 3, 7);
  EXPECT_EQ(array.content(), (Keys{"a", ""}));
  EXPECT_EQ(mub_array_afind(&array, nullptr, -1), 7u);
}

// ---- text forms

TEST(ByteArray, ReadsTrimmedPiecesAndWritesNoSeparatorInFrontOfTheFirstByte) {
  struct Text {
    std::string read;
    Keys keys;
    std::string written;
  };
  for (const auto &[read, keys, written] : {Text{"", {}, ""},
                                            {" a , b ", {"a", "b"}, "a,b"},
                                            {"a,,b,", {"a", "", "b"}, "a,,b"},
                                            {",", {""}, ""},
                                            {"a, \t\r\n", {"a"}, "a"},
                                            {" , ,x y,,", {"", "", "x y", ""}, "x y,"},
                                            {std::string(" \0a,b\0", 6), {"", "b"}, "b"}}) {
    ByteArray array;
    String string("old");
    mub_array_from_string(&array, 0x700 | ',', read.data(), size_of(read));
    EXPECT_EQ(array.content(), keys);
    mub_array_to_string(&array, 0x700 | ',', &string);
    EXPECT_EQ(string.text(), written);
  }
  ByteArray array({"a,b,", "dd,gggggggg"});
  mub_array_from_string(&array, ',', "a,b", -1);
  mub_array_from_string(&array, ',', reinterpret_cast<const char *>(array.keys.data), array.keys.length);
  EXPECT_EQ(array.content(), (Keys{"a,b,", "dd,gggggggg", "a", "b", "dd", "gggggggg"}));
}

TEST(ByteArray, WithoutMemoryTextsAndEntriesStayAsTheyWere) {
  for_every_allocation([](const Fuse &fuse) {
    ByteArray array({"first", "second", "third"});
    String string("old");
    const bool written = !fuse.blows_in([&] { mub_array_to_string(&array, 0, &string); });
    EXPECT_EQ(string.text(), written ? std::string("first\0second\0third", 18) : "old");
    const bool read = !fuse.blows_in([&] { mub_array_from_string(&array, ',', "a,b,c,d,e,f,g,h,i,j", 19); });
    EXPECT_TRUE(array.count == 13 || (!read && array.stream() == "firstsecondthird" && array.count == 3));
  });
}

}  // namespace
