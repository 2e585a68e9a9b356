#include "mub_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/hash_tables.h"
#include "support/pools.h"
#include "support/random.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

template <class A>
using Table = Pooled<A>;

template <int kOperation, class A, class... Args>
auto call(Table<A> &table, const Args &...args) {
  return call_of<kOperation, A>(&table, args...);
}

template <class A>
class Hash : public ::testing::Test {};
using Kinds = ::testing::Types<ByteTable, Table32, Table64, Table128>;
TYPED_TEST_SUITE(Hash, Kinds);

// What lies right behind a chunk, between its neighbours, too; and whatever the values are when only one side owns a
// pool, or one with a table of chunks and no chunk.
TYPED_TEST(Hash, CloneHasNoValuesThatAreNoBlocks) {
  using A = TypeParam;
  for (const int64_t count : {0, 40}) {
    for (const bool with_values : {false, true}) {
      Table<A> owner, twin(true, with_values);
      mub_pool_expand(&owner.value_pool->chunk_used);
      for (int64_t i = 0; i < count; ++i) call<kInsert>(owner, A::key(i), new_value(owner, 1));
      const uint64_t behind = count == 0 ? 5 : reinterpret_cast<uintptr_t>(owner.value_pool->chunks[1]) + 128;
      call<kInsert>(owner, A::key(50), behind);
      for (auto *each : {&twin, &owner}) call<kClone>(owner, nullptr, each, nullptr, nullptr);
      EXPECT_EQ(call<kEntryGet>(twin, A::key(50))->value, 0u);
      EXPECT_EQ(call<kGet>(owner, A::key(50)), behind);
    }
  }
}

TYPED_TEST(Hash, CloneGivesUpAPoolThatIsNamedAsTheUsersToo) {
  using A = TypeParam;
  Table<A> table(false, false), copy;
  call<kInsert>(table, A::key(1), new_value(table, 7));
  call<kClone>(table, &table.values, &copy, copy.value_pool, note_clone);
  EXPECT_EQ(key_of(call<kGet>(copy, A::key(1))), 7u);
  EXPECT_TRUE(copy.value_pool == &table.values && copy.owns_value_pool == 0);
}

TYPED_TEST(Hash, MakesDoWithThePoolsThatItGot) {
  using A = TypeParam;
  for_every_allocation([](const Fuse &fuse) {
    typename A::Record table;
    fuse.blows_in([&] { A::init(&table, 1, 1); });
    EXPECT_EQ(table.owns_entry_pool, table.entry_pool != nullptr ? 1 : 0);
    EXPECT_EQ(table.owns_value_pool, table.value_pool != nullptr ? 1 : 0);
    // Even a value pool that is there has no block size yet: the entry stands without a block.
    uint64_t value = 1;
    EXPECT_EQ((call_of<kSet, A>(&table, A::key(0), &value, note)), table.owns_entry_pool);
    EXPECT_EQ(value, 0u);
    A::term(&table);
    EXPECT_TRUE(table.entry_pool == nullptr && table.value_pool == nullptr && table.buckets.pool == nullptr);
  });
}

// ---- byte-string keys only

// Offsets fall without a test; a key whose bytes would lie outside the store is none that can be found.
TEST(HashOfBytes, KeysWhoseOffsetsWrapAreNotRead) {
  Table<ByteTable> table;
  mub_hash_entry *entry = nullptr;
  mub_hash_entry_set(&table, "abc", 3, &entry);
  mub_hash_adjust_t(&table, 0, 1000);
  EXPECT_EQ(entry->key_offset, 0u - 1000u);
  EXPECT_EQ(mub_hash_find(&table, "abc", 3), 0);
  EXPECT_EQ(mub_hash_insert(&table, "abc", 3, 1), 1);
}

TEST(HashOfBytes, HashIsTheRegisterFromZero) {
  const std::string bytes = "Bytes [of] \xE9\xFF @ZAza`{ and more than a word";
  std::string lower = bytes;
  for (char &c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  EXPECT_EQ(mub_hash_key(bytes.data(), -1, 0), bitwise_register(bytes));
  EXPECT_EQ(mub_hash_key(bytes.data(), 30, 1), bitwise_register(lower.substr(0, 30)));
  EXPECT_EQ(mub_hash_key(nullptr, -1, 0), 0u);
  // The standard check value, without the inversions at either end.
  EXPECT_EQ(mub_hash_key("123456789", -1, 0), 0x2DFD2D88u);
}

TEST(HashOfBytes, CaseFollowsTheFieldWhichStaysWithItsRecord) {
  Table<ByteTable> table;
  table.nocase = 1;
  EXPECT_EQ(mub_hash_insert(&table, "Straße KEY number one", -1, 1), 1);
  EXPECT_EQ(mub_hash_insert(&table, "STRAße key NUMBER one", -1, 2), 0);
  Table<ByteTable> exact;
  mub_hash_swap(&table, &exact);
  mub_hash_clone(&table, nullptr, &exact, nullptr, nullptr);
  EXPECT_EQ(table.nocase - exact.nocase, 1);
}

// Key, key and keY share one bucket of 4, but no hash.
TEST(HashOfBytes, InsertionsCompareKeysWhateverHashIsStored) {
  Table<ByteTable> exact, folding;
  mub_hash_entry *first = nullptr, *found = nullptr;
  folding.nocase = 1;
  EXPECT_EQ(mub_hash_entry_set(&exact, "Key", 3, &first), 1);
  EXPECT_EQ(mub_hash_insert(&exact, "key", 3, 2), 1);
  mub_hash_swap(&exact, &folding);
  EXPECT_EQ(mub_hash_entry_set(&folding, "key", 3, &found), 0);
  EXPECT_EQ(found, first) << "the first of the chain, though another has the hash";
  EXPECT_EQ(mub_hash_insert(&folding, "keY", 3, 3), 0);
  folding.nocase = 0;
  first->hash ^= 4;
  EXPECT_EQ(mub_hash_insert(&folding, "Key", 3, 3), 0);
  EXPECT_EQ(folding.count, 2);
}

TEST(HashOfBytes, OffsetsHave32BitsAndFallBehindACutButThatOfAnEmptyKeyAtIt) {
  Table<ByteTable> table;
  mub_hash_entry *made[4];
  const char *keys[4] = {"aa", "bb", "", "cc"};
  for (size_t i = 0; i < 4; ++i) mub_hash_entry_set(&table, keys[i], -1, &made[i]);
  EXPECT_EQ(mub_hash_entry_get(&table, nullptr, -1), made[2]);
  mub_hash_adjust_t(&table, 4, (int64_t{1} << 32) + 2);
  mub_hash_adjust_t(&table, 2, 1);
  mub_hash_adjust_t(&table, 1, 4);
  EXPECT_EQ(made[1]->key_offset, 0xFFFFFFFDu);
  mub_hash_adjust_t(&table, 1, -4);
  const uint32_t offsets[4] = {0, 1, 3, 1};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(made[i]->key_offset, offsets[i]) << keys[i];
  table.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_hash_insert(&table, "ab", 2, 1), 0);
  EXPECT_EQ(table.count + table.entry_pool->live_count, 8);
}

TEST(HashOfBytes, LowLayerTakesBucketsAndHashesAsGiven) {
  Table<ByteTable> table;
  mub_hash_entry *entry = nullptr;
  mub_hash_entry_set(&table, "known", 5, &entry);
  const uint32_t hash = entry->hash;
  const int64_t bucket = hash % 4;
  int inserted = -1;
  EXPECT_EQ(mub_hash_entry_new(&table, bucket, hash + 4, "known", 5, &inserted), entry);
  EXPECT_EQ(inserted, 0) << "the stored hash is not looked at";
  EXPECT_EQ(mub_hash_entry_find(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_find_t(&table, "known", -1), mub_hash_remove_t(&table, "known", -1)) << "none";
  EXPECT_EQ(mub_hash_insert_t(&table, "known", -1, &inserted), entry);
  for (int64_t outside : {int64_t{-3}, INT64_MAX}) mub_hash_entry_next(&table, &outside, entry);

  mub_hash_entry *fresh = mub_hash_entry_new(&table, bucket, 0, "unknown", 7, &inserted);
  EXPECT_EQ(inserted, 1);
  EXPECT_EQ(entry->next, fresh);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash, "known", 5), entry);
  EXPECT_EQ(table.count + table.keys.length, 1 + 5) << "counts and key bytes are the caller's to keep";
}

// The table's count is that of its live blocks, which are not all in its chains. What lies on the free stack
// may have any link: two entries were linked by the test before it gave them back.
TEST(HashOfBytes, RemovalsLeaveWhatIsNotInTheChains) {
  for (const bool by_key : {true, false}) {
    Table<ByteTable> table;
    for (int i = 0; i < 40; ++i) mub_hash_insert(&table, std::to_string(1000 + i).data(), 4, 1);
    const auto take_out = [&](int i) {
      const std::string key = std::to_string(1000 + i);
      const auto hash = static_cast<uint32_t>(mub_hash_key(key.data(), 4, 0));
      return by_key ? mub_hash_remove_t(&table, key.data(), 4)
                    : mub_hash_entry_remove(&table, hash % table.buckets.count, hash, key.data(), 4);
    };
    mub_hash_entry *linked = take_out(30), *last = take_out(31);
    linked->next = last;
    table.count -= 2;
    for (mub_hash_entry *entry : {linked, last}) mub_pool_free(table.entry_pool, entry);
    mub_hash_entry *held = take_out(20);
    const mub_hash_entry before = *held;
    for (int i = 0; i < 10; ++i) mub_hash_remove(&table, std::to_string(1000 + i).data(), 4);
    EXPECT_EQ(std::memcmp(held, &before, sizeof before), 0);
    --table.count;
    auto *popped = static_cast<mub_hash_entry *>(mub_pool_from_empty(table.entry_pool));
    popped->key_offset = 0x77777777;
    mub_pool_free(table.entry_pool, held);
    for (int i = 10; i < 12; ++i) mub_hash_remove(&table, std::to_string(1000 + i).data(), 4);
    EXPECT_EQ(popped->key_offset, 0x77777777u);
    EXPECT_EQ(mub_hash_find(&table, "1039", 4), 1);
  }
}

// ---- keys that lie in their entries

TEST(HashOfWords, IntegersAreTheirOwnHash) {
  Table<Table32> small;
  Table<Table64> large;
  for (uint32_t key = 0; key < 8; ++key) {
    mub_hashd_insert(&small, key, 1);
    mub_hashx_insert(&large, uint64_t{key} << 32, 1);
  }
  for (int64_t bucket = 0; bucket < 8; ++bucket) {
    const auto *entry = reinterpret_cast<mub_hashd_entry *>(small.buckets.items[bucket]);
    EXPECT_EQ(entry->key, bucket);
    EXPECT_EQ(entry->next, nullptr);
    EXPECT_EQ(large.buckets.items[bucket] != 0, bucket == 0) << "nothing is mixed";
  }
  mub_hashd_insert(&small, static_cast<uint32_t>(-1), 2);
  mub_hashx_insert(&large, ~uint64_t{0}, 2);
  EXPECT_NE(mub_hashd_entry_find(&small, 7, UINT32_MAX), nullptr);
  EXPECT_NE(mub_hashx_entry_find(&large, 7, UINT64_MAX), nullptr);
}

TEST(HashOfWords, KeyFunctionsRunTheRegisterOverTheBytes) {
  const uint32_t words[] = {0x34333231, 0x38373635, 0x20202039, 0};
  EXPECT_EQ(mub_hashd_key(words[0]), bitwise_register("1234"));
  EXPECT_EQ(mub_hashx_key(0x3837363534333231), bitwise_register("12345678"));
  EXPECT_EQ(mub_hasht_key(words), bitwise_register(std::string("123456789   \0\0\0\0", 16)));
}

TEST(HashOfWords, QuadsCompareByTheFirstWordsThatDiffer) {
  const uint32_t a[] = {1, 2, 3, 4};
  uint32_t b[4];
  mub_hasht_copy(b, a);
  EXPECT_EQ(mub_hasht_cmp(a, b), 0);
  b[3] = 9;
  EXPECT_EQ(mub_hasht_cmp(a, b), -5);
  b[1] = UINT32_MAX;
  EXPECT_EQ(mub_hasht_cmp(a, b), 3) << "the wrapped difference of 2 and 2^32 - 1";
}

template <class A>
void use_low_layer() {
  Table<A> table;
  const auto key = A::key(1);
  const auto bucket = static_cast<int64_t>(A::word(key) % 4);
  int inserted = 0;
  auto *entry = call<kInsertT>(table, key, &inserted);
  EXPECT_EQ(inserted, 1);
  entry->value = 77;
  EXPECT_EQ(call<kFindT>(table, key), entry);
  EXPECT_EQ(call<kEntryFind>(table, bucket, key), entry);
  // The key of a removed entry lies in the very block that the next insertion takes.
  EXPECT_EQ(call<kRemove>(table, entry->key), 77u);
  EXPECT_EQ(call<kInsert>(table, entry->key, uint64_t{78}), 1);
  EXPECT_EQ(call<kEntryRemove>(table, bucket, key), entry);
  EXPECT_EQ(call<kFindT>(table, key), nullptr);
  mub_pool_free(table.entry_pool, entry);
  EXPECT_EQ(call<kEntryNew>(table, bucket, key, &inserted), entry);
  EXPECT_EQ(inserted, 1);
  EXPECT_EQ(entry->value, 0u) << "what the block held before is cleared";
}

TEST(HashOfWords, LowLayerFindsLinksAndUnlinks) {
  use_low_layer<Table32>();
  use_low_layer<Table64>();
  use_low_layer<Table128>();
}

}  // namespace
