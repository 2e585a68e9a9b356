// What mub_array has beyond the other arrays: keys in a stream, text forms and spare slots that name keys.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/random.h"

using mub_test::ByteKeyed;
using mub_test::entries_of;
using mub_test::Fuse;
using mub_test::Scoped;
using mub_test::size_of;
using ByteArray = mub_test::Scoped<ByteKeyed>;

namespace {

std::vector<std::string> keys_of(const mub_array &array) {
  std::vector<std::string> keys;
  for (const auto &entry : entries_of<ByteKeyed>(array)) keys.push_back(entry.first);
  return keys;
}

std::string stream_of(const mub_array &array) {
  if (array.keys.data == nullptr) return "";
  return std::string(reinterpret_cast<const char *>(array.keys.data), static_cast<size_t>(array.keys.length));
}

void append_all(mub_array &array, const std::vector<std::string> &keys) {
  for (const auto &key : keys) mub_array_append(&array, key.data(), size_of(key), 1);
}

using Keys = std::vector<std::string>;

TEST(ByteArray, KeepsTheStreamInTheOrderOfEntriesUntilItIsSorted) {
  ByteArray array;
  for (const char *key : {"bb", "a", "cccc"}) EXPECT_EQ(mub_array_insert(&array, key, -1, 1), 1);
  EXPECT_EQ(stream_of(array), "abbcccc");
  mub_array_remove_at(&array, 0);
  EXPECT_EQ(stream_of(array), "bbcccc");
  EXPECT_EQ(array.entries[0].key_offset, 0u);
  mub_array_set_at(&array, 0, "x", 1, 1);
  EXPECT_EQ(stream_of(array), "xcccc");
  EXPECT_EQ(array.entries[1].key_offset, 1u);
  mub_array_qsort(&array, 1);
  EXPECT_EQ(stream_of(array), "xcccc");
  EXPECT_EQ(keys_of(array), (Keys{"cccc", "x"}));
  mub_array_insert_at(&array, 1, "mid", 3, 1);
  EXPECT_EQ(stream_of(array), "midxcccc");
  EXPECT_EQ(keys_of(array), (Keys{"cccc", "mid", "x"}));
  // Releasing the values releases the keys' block too.
  mub_array_remove_all(&array);
  EXPECT_EQ(array.keys.length, 0);
  EXPECT_NE(array.keys.data, nullptr);
  mub_array_free_all(&array, nullptr);
  EXPECT_EQ(array.keys.data, nullptr);
}

TEST(ByteArray, SwapsEntriesAndKeysButNotPools) {
  ByteArray a(true, true), b;
  append_all(a, {"one", "two"});
  mub_pool *pool = a.pool;
  mub_array_swap(&a, &b);
  EXPECT_EQ(a.count, 0);
  EXPECT_EQ(keys_of(b), (Keys{"one", "two"}));
  EXPECT_EQ(a.pool, pool);
  EXPECT_EQ(a.own_pool, 1);
  EXPECT_EQ(b.pool, nullptr);
  EXPECT_EQ(a.descending, 1);
  EXPECT_EQ(b.descending, 0);
  mub_array_swap(&b, &b);
  EXPECT_EQ(keys_of(b), (Keys{"one", "two"}));
}

// ---- lengths, and the empty key

TEST(ByteArray, MeasuresNegativeLengthsButWhereTheyAreExact) {
  ByteArray array;
  mub_array_append(&array, "b\0c", -1, 1);
  EXPECT_EQ(mub_array_insert(&array, "b", -5, 2), 0);
  EXPECT_EQ(mub_array_update(&array, "b", -1, 3), 1u);
  EXPECT_EQ(mub_array_find(&array, "b", -1), 3u);
  EXPECT_EQ(mub_array_afind(&array, "b", -1), 3u);
  EXPECT_EQ(mub_array_set_at(&array, 0, "dd", -1, 4), 3u);
  EXPECT_EQ(keys_of(array), Keys{"dd"});
  EXPECT_EQ(mub_array_entry_find(&array, "dd", -1), nullptr);
  EXPECT_EQ(mub_array_entry_insert(&array, "dd", -1), nullptr);
  mub_array_insert_at(&array, 0, "e", -1, 1);
  mub_array_insert_at(&array, 1, "e", -1, 1);
  array.descending = 1;
  EXPECT_EQ(mub_array_entry_insert(&array, "e", -1), nullptr);
  EXPECT_EQ(keys_of(array), Keys{"dd"});
  EXPECT_EQ(mub_array_remove(&array, "dd", -1), 4u);
  EXPECT_EQ(mub_array_entry_insert(&array, "fff\0g", -1)->key_length, 3u);
}

TEST(ByteArray, RefusesTheEmptyKeyBeforeAnEntry) {
  for (const char *empty : {static_cast<const char *>(nullptr), ""}) {
    ByteArray array(true);
    array.pool->block_size = 8;
    EXPECT_EQ(mub_array_insert(&array, empty, -1, 5), 1);
    EXPECT_EQ(mub_array_find(&array, empty, -1), 5u);
    EXPECT_EQ(mub_array_find_index(&array, empty, 0), 0);
    EXPECT_EQ(mub_array_remove(&array, empty, -1), 5u);

    append_all(array, {"a"});
    uint64_t value = 1;
    mub_array_insert_at(&array, 0, empty, 0, 5);
    EXPECT_EQ(mub_array_insert(&array, empty, -1, 5), 1);
    EXPECT_EQ(mub_array_insert_new(&array, empty, -1, &value, nullptr), -1);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(array.pool->live_count, 0);
    EXPECT_EQ(mub_array_entry_insert(&array, empty, 0), nullptr);
    EXPECT_EQ(keys_of(array), Keys{"a"});
    array.descending = 1;  // where it belongs behind all others
    EXPECT_EQ(mub_array_insert_new(&array, empty, -1, &value, nullptr), 1);
    EXPECT_EQ(keys_of(array), (Keys{"a", ""}));
  }
}

TEST(ByteArray, EntryInsertGivesTheEntryOfTheKey) {
  ByteArray array;
  for (int i = 0; i < 26; ++i) {
    const char letter = static_cast<char>('a' + i * 7 % 26);
    mub_array_entry *entry = mub_array_entry_insert(&array, &letter, 1);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->value, 0u);
    entry->value = static_cast<uint64_t>(letter);
    EXPECT_EQ(mub_array_entry_insert(&array, &letter, 1), entry);
  }
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    EXPECT_EQ(mub_array_entry_find(&array, &letter, 1)->value, static_cast<uint64_t>(letter));
  }
}

TEST(ByteArray, LinearSearchFindsTheFirstInAnyOrder) {
  ByteArray array;
  append_all(array, {"z", "b", "", "b", "bb"});
  mub_array_update_at(&array, 1, 42);
  EXPECT_EQ(mub_array_afind(&array, "b", 1), 42u);
  EXPECT_EQ(mub_array_afind_index(&array, "b", 1), 1);
  EXPECT_EQ(mub_array_afind_index(&array, "", 0), 2);
  EXPECT_EQ(mub_array_afind_index(&array, "bb", 2), 4);
  EXPECT_EQ(mub_array_afind_index(&array, "bbb", 3), -1);
  EXPECT_EQ(mub_array_afind(&array, "B", 1), 0u);
}

// ---- keys that lie in the array's own stream

TEST(ByteArray, TakesKeysFromItsOwnStream) {
  mub_test::Random random(11);
  ByteArray array;
  std::vector<std::string> model = {random.text(30)};
  append_all(array, model);
  for (int step = 0; step < 400; ++step) {
    const int64_t index = random.below(array.count);
    const int64_t start = random.below(array.keys.length);
    const int64_t length = 1 + random.below(std::min<int64_t>(array.keys.length - start, 30));
    const void *key = array.keys.data + start;
    const std::string copy(static_cast<const char *>(key), static_cast<size_t>(length));
    switch (random.below(3)) {
      case 0:
        mub_array_append(&array, key, length, 1);
        model.push_back(copy);
        break;
      case 1:
        mub_array_insert_at(&array, index, key, length, 1);
        model.insert(model.begin() + index, copy);
        break;
      default:
        mub_array_set_at(&array, index, key, length, 1);
        model[static_cast<size_t>(index)] = copy;
    }
    ASSERT_EQ(keys_of(array), model);
  }
}

TEST(ByteArray, ReadsATextFromItsOwnStream) {
  ByteArray array;
  append_all(array, {"a,b,c,", "dd,e,ffffff,gggggggg"});
  mub_array_from_string(&array, ',', reinterpret_cast<const char *>(array.keys.data), array.keys.length);
  EXPECT_EQ(keys_of(array),
            (Keys{"a,b,c,", "dd,e,ffffff,gggggggg", "a", "b", "c", "dd", "e", "ffffff", "gggggggg"}));
}

// ---- slots behind the count

TEST(ByteArray, SpareSlotsKeepWhatLiesInThem) {
  ByteArray array;
  append_all(array, {"first", "second", "third"});
  mub_array_shrink(&array, 1);
  EXPECT_EQ(mub_array_find_index(&array, "second", -1), -1);
  const char *key;
  int64_t length;
  EXPECT_EQ(mub_array_get_at(&array, 2, &key, &length), 1u);
  EXPECT_EQ(std::string(key, 5), "third");
  // It is replaced where it stands, and nothing behind the count moves along.
  EXPECT_EQ(mub_array_set_at(&array, 1, "2", 1, 9), 1u);
  EXPECT_EQ(stream_of(array), "first2third");
  EXPECT_EQ(array.entries[2].key_offset, 11u);
  mub_array_shrink(&array, 2);
  EXPECT_EQ(keys_of(array), (Keys{"first", "2"}));
  // The third slot's bytes have left the stream.
  EXPECT_EQ(mub_array_set_at(&array, 2, "new", 3, 9), 0u);
  EXPECT_EQ(mub_array_update_at(&array, 2, 8), 1u);
}

TEST(ByteArray, KeysThatLeftTheirBlockReadAsEmpty) {
  ByteArray array;
  append_all(array, {"a", std::string(60, 'b'), "c"});
  mub_array_shrink(&array, 2);
  mub_stream empty = {nullptr, 0, 0};
  std::swap(array.keys, empty);
  for (int64_t i = 0; i < 3; ++i) EXPECT_EQ(ByteKeyed::entry(&array, i).first, "");
  EXPECT_EQ(mub_array_afind_index(&array, "b", 1), -1);
  EXPECT_EQ(mub_array_find_index(&array, "", 0), 0);
  mub_array_qsort(&array, 1);
  EXPECT_EQ(mub_array_remove_at(&array, 1), 1u);
  // Insertions among such entries move offsets on, but never make them readable.
  mub_array_insert_at(&array, 0, "key", 3, 2);
  mub_array_shrink(&array, array.capacity);
  mub_array_qsort(&array, 0);
  mub_array_append_array(&array, &array);
  std::swap(array.keys, empty);
  free(empty.data);
}

// A stream of 4 GiB, of which only the ends are ever touched.
TEST(ByteArray, OffsetsEndAt32Bits) {
  constexpr size_t kBytes = (size_t{1} << 32) + 64;
  void *map =
      mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space for 4 GiB";
  ByteArray array;
  array.keys = {static_cast<uint8_t *>(map), 0xFFFFFFFF - 3, static_cast<int64_t>(kBytes) - 8};
  mub_array_append(&array, "four", 4, 1);
  EXPECT_EQ(array.entries[0].key_length, 0u);
  mub_array_append(&array, "abc", 3, 2);
  EXPECT_EQ(keys_of(array), (Keys{"", "abc"}));
  EXPECT_EQ(array.keys.length, 0xFFFFFFFF);
  mub_array_insert_at(&array, 1, "x", 1, 3);
  EXPECT_EQ(mub_array_set_at(&array, 1, "abcd", 4, 4), 0u);
  EXPECT_EQ(mub_array_insert(&array, "aaa", 3, 3), 1);
  mub_array_append_array(&array, &array);
  EXPECT_EQ(array.count, 2);
  EXPECT_EQ(mub_array_set_at(&array, 1, "xyz", 3, 4), 2u);
  EXPECT_EQ(keys_of(array), (Keys{"", "xyz"}));
  mub_array_qsort(&array, 0);
  EXPECT_EQ(keys_of(array), (Keys{"xyz", ""}));
  array.keys = {nullptr, 0, 0};
  munmap(map, kBytes);
}

// ---- memory

TEST(ByteArray, AppendsAnEmptyKeyWhenItsBytesFindNoRoom) {
  for (const bool sorted : {false, true}) {
    mub_test::for_every_allocation([sorted](const Fuse &fuse) {
      ByteArray array;
      append_all(array, {"a", "b"});
      const std::string key(50, 'k');
      const bool failed = fuse.blows_in([&] {
        if (sorted) {
          EXPECT_EQ(mub_array_insert(&array, key.data(), 50, 7), 1);
        } else {
          mub_array_append(&array, key.data(), 50, 7);
        }
      });
      EXPECT_EQ(keys_of(array), (Keys{"a", "b", failed ? "" : key}));
      EXPECT_EQ(array.entries[2].value, 7u);
    });
  }
}

TEST(ByteArray, WithoutMemoryKeysAndTextsStayAsTheyWere) {
  mub_test::for_every_allocation([](const Fuse &fuse) {
    ByteArray array;
    append_all(array, {"a", "b"});
    const std::string key(50, 'k');
    uint64_t old = 0;
    const bool failed = fuse.blows_in([&] { old = mub_array_set_at(&array, 0, key.data(), 50, 7); });
    EXPECT_EQ(old, failed ? 0u : 1u);
    EXPECT_EQ(keys_of(array), (Keys{failed ? "a" : key, "b"}));
    EXPECT_EQ(array.entries[0].value, failed ? 1u : 7u);
  });
  mub_test::for_every_allocation([](const Fuse &fuse) {
    ByteArray array;
    append_all(array, {"one", "two", "three"});
    mub_string string = {static_cast<char *>(malloc(8)), 3, 7};
    std::copy_n("old\0\0\0\0", 8, string.data);
    const bool failed = fuse.blows_in([&] { mub_array_to_string(&array, ' ', &string); });
    EXPECT_STREQ(string.data, failed ? "old" : "one two three");
    free(string.data);
  });
}

// ---- text forms

std::string joined(const Keys &keys, int separator) {
  ByteArray array;
  append_all(array, keys);
  mub_string string = {nullptr, 0, 0};
  mub_array_to_string(&array, separator, &string);
  const std::string text(string.data != nullptr ? string.data : "", static_cast<size_t>(string.length));
  free(string.data);
  return text;
}

TEST(ByteArray, WritesNoSeparatorInFrontOfTheFirstByte) {
  EXPECT_EQ(joined({}, ','), "");
  EXPECT_EQ(joined({"x", "", "y"}, ','), "x,,y");
  EXPECT_EQ(joined({"", "y"}, ','), "y");
  EXPECT_EQ(joined({"", "", "a", ""}, 0x100 | ','), "a,");
  EXPECT_EQ(joined({"a", "b"}, 0), std::string("a\0b", 3));
}

TEST(ByteArray, ReadsTrimmedPieces) {
  struct Text {
    std::string text;
    Keys keys;
  };
  for (const auto &[text, keys] : {Text{" a , b ", {"a", "b"}},
                                   {"a,,b,", {"a", "", "b"}},
                                   {",", {""}},
                                   {"a, \t\r\n", {"a"}},
                                   {" ,x y", {"", "x y"}},
                                   {"", {}},
                                   {std::string(" \0a,b\0", 6), {"", "b"}}}) {
    ByteArray array;
    append_all(array, {"kept"});
    mub_array_from_string(&array, 0x700 | ',', text.data(), size_of(text));
    Keys all = {"kept"};
    all.insert(all.end(), keys.begin(), keys.end());
    EXPECT_EQ(keys_of(array), all) << text;
    if (array.count > 1) {
      EXPECT_EQ(array.entries[1].value, 0u);
    }
  }
  ByteArray array;
  mub_array_from_string(&array, ',', "a,b", -1);
  EXPECT_EQ(array.count, 0);
}

}  // namespace
