// What programs of tests/interpreter/ do not come to: see hash_family.cpp there.
#include "mub_hash.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

struct Table : mub_hash {
  Table() {
    mub_hash_init(this, 1, 1);
    value_pool->block_size = sizeof(uint64_t);
  }
  ~Table() { mub_hash_term(this); }
};

mub_hash_entry *add(mub_hash &table, const char *key) {
  mub_hash_entry *entry = nullptr;
  EXPECT_EQ(mub_hash_entry_set(&table, key, -1, &entry), 1);
  return entry;
}

// What lies right after a chunk, between its neighbours, too.
TEST(HashClone, HasNoValuesThatAreNoBlocks) {
  for (const bool has_chunks : {false, true}) {
    Table owner, copy;
    mub_pool_expand(&owner.value_pool->chunk_used);
    for (int i = 0; has_chunks && i < 40; ++i) mub_pool_new(owner.value_pool);
    const uint64_t after = has_chunks ? reinterpret_cast<uintptr_t>(owner.value_pool->chunks[1]) + 128 : 5;
    mub_hash_insert(&owner, "key", 3, after);
    mub_hash_clone(&owner, nullptr, &copy, nullptr, nullptr);
    EXPECT_EQ(mub_hash_entry_get(&copy, "key", 3)->value, 0u);
    EXPECT_EQ(mub_hash_clone(&owner, nullptr, &owner, nullptr, nullptr), &owner);
    EXPECT_EQ(mub_hash_get(&owner, "key", 3), after);
  }
}

TEST(HashOrder, StaysWithItsRecord) {
  Table folding, exact;
  folding.nocase = 1;
  mub_hash_entry *first = add(folding, "key"), *found = nullptr;
  mub_hash_swap(&folding, &exact);
  EXPECT_EQ(mub_hash_insert(&exact, "Key", 3, 2), 1) << "which has another hash, and the same bucket";
  mub_hash_swap(&exact, &folding);
  EXPECT_EQ(mub_hash_entry_set(&folding, "Key", 3, &found), 0);
  EXPECT_EQ(found, first) << "the first of the chain, though another has the hash";
  mub_hash_clone(&folding, nullptr, &exact, nullptr, nullptr);
  EXPECT_EQ(folding.nocase - exact.nocase, 1);
  folding.nocase = 0;
  first->hash ^= 4;
  EXPECT_EQ(mub_hash_insert(&folding, "key", 3, 3), 0) << "insertions do not look at stored hashes";
}

TEST(HashOffsets, Have32BitsAndWrap) {
  Table table;
  mub_hash_entry *entry = add(table, "abc");
  mub_hash_adjust_t(&table, 0, 1000);
  EXPECT_EQ(entry->key_offset, 0u - 1000u);
  EXPECT_EQ(mub_hash_find(&table, "abc", 3), 0) << "outside the store";
  table.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_hash_insert(&table, "ab", 2, 1), 0);
  EXPECT_EQ(table.count + table.entry_pool->live_count, 2);
}

TEST(HashLowLayer, TakesBucketsAndHashesAsGiven) {
  Table table;
  mub_hash_entry *entry = add(table, "known");
  const uint32_t hash = entry->hash;
  const int64_t bucket = hash % 4;
  int inserted = -1;
  EXPECT_EQ(mub_hash_entry_new(&table, bucket, hash + 4, "known", 5, &inserted), entry);
  EXPECT_EQ(mub_hash_entry_find(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash + 4, "known", 5), nullptr);
  for (int64_t outside : {int64_t{-3}, INT64_MAX}) mub_hash_entry_next(&table, &outside, entry);
  mub_hash_entry *fresh = mub_hash_entry_new(&table, bucket, 0, "unknown", 7, &inserted);
  EXPECT_EQ(inserted, 1);
  EXPECT_TRUE(entry->next == fresh && fresh->next == nullptr && fresh->value == 0);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash, "known", 5), entry);
  EXPECT_EQ(table.count + table.keys.length, 1 + 5) << "counts and key bytes are the caller's to keep";
}

// The table's count is that of its live blocks, which are not all in its chains; what lies on the free stack
// may have any link, and what is taken from there any offset.
TEST(HashRemoval, LeavesWhatIsNotInTheChains) {
  Table table;
  for (int i = 1000; i < 1040; ++i) mub_hash_insert(&table, std::to_string(i).data(), 4, 1);
  mub_hash_entry *linked = mub_hash_remove_t(&table, "1030", 4), *last = mub_hash_remove_t(&table, "1031", 4);
  linked->next = last;
  table.count -= 2;
  for (mub_hash_entry *entry : {linked, last}) mub_pool_free(table.entry_pool, entry);
  mub_hash_entry *held = mub_hash_remove_t(&table, "1020", 4);
  const mub_hash_entry before = *held;
  for (int i = 1000; i < 1010; ++i) mub_hash_remove(&table, std::to_string(i).data(), 4);
  EXPECT_EQ(std::memcmp(held, &before, sizeof before), 0);
  --table.count;
  auto *popped = static_cast<mub_hash_entry *>(mub_pool_from_empty(table.entry_pool));
  popped->key_offset = 0x77777777;
  mub_pool_free(table.entry_pool, held);
  for (int i = 1010; i < 1012; ++i) mub_hash_remove(&table, std::to_string(i).data(), 4);
  EXPECT_EQ(popped->key_offset, 0x77777777u);
}

TEST(HashKeys, HashAndCompareByTheirBytes) {
  EXPECT_EQ(mub_hash_key("123456789", -1, 0), 0x2DFD2D88u) << "the check value, without the inversions";
  const uint32_t a[] = {1, 2, 3, 4}, b[] = {1, UINT32_MAX, 3, 9};
  EXPECT_EQ(mub_hasht_cmp(a, b), 3) << "the wrapped difference of the first words that differ";
}

}  // namespace
