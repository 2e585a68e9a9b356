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

uint64_t handed_out;
void note_behind_handing_out(uint64_t block) { note(handed_out == block ? block : 0); }

// The same map, its items in the order of their insertion. Values are blocks of the value pool, or 0.
template <class A>
struct Model {
  using Key = typename A::Key;
  using Entry = typename A::Entry;

  Model(int pools, uint64_t salt) : random(salt), table(pools % 2 == 0, pools < 4) {
    // A block that the test took from the table's pool: the pool holds more than the table's entries.
    if (pools % 4 > 1) stranger = std::memset(mub_pool_new(table.entry_pool), 'w', sizeof(Entry));
  }

  auto find(const Key &key) {
    return std::find_if(items.begin(), items.end(), [&](const auto &item) { return item.first == key; });
  }

  void step() {
    const Key key = A::key(random.below(600));
    const auto item = find(key);
    ASSERT_EQ(call<kFind>(table, key), item != items.end());
    ASSERT_EQ(call<kGet>(table, key), item != items.end() ? item->second : 0);
    const int64_t choice = random.below(80);
    choice < 45 ? add(key) : choice < 54 ? update(key) : choice < 79 ? remove(key) : clone();
    if (random.one_in(1000)) empty();
  }

  using Items = std::vector<std::pair<Key, uint64_t>>;

  // Every invariant of a table, and its walk: bucket by bucket, oldest first.
  static void expect_same(Table<A> &table, const Items &items, int64_t buckets) {
    ASSERT_EQ(table.count, static_cast<int64_t>(items.size()));
    ASSERT_EQ(table.buckets.count, buckets);
    std::multimap<int64_t, std::pair<Key, uint64_t>> expected, walked;
    for (const auto &item : items)
      expected.insert({static_cast<int64_t>(A::word(item.first) % static_cast<uint64_t>(buckets)), item});
    Entry *last = nullptr;
    int64_t at = -1;
    const auto follows = [&](const Entry *entry, int64_t bucket) {
      if constexpr (A::kHasWalk) {
        const auto *next =
            last == nullptr ? call<kEntryFirst>(table, &at) : call<kEntryNext>(table, &at, last);
        return next == entry && (entry == nullptr || at == bucket);
      }
      return true;
    };
    for (int64_t bucket = 0; bucket < table.buckets.count; ++bucket) {
      auto *entry = reinterpret_cast<Entry *>(table.buckets.items[bucket]);
      for (; entry != nullptr; last = entry, entry = entry->next) {
        ASSERT_TRUE(follows(entry, bucket));
        walked.insert({bucket, {Key(A::key_of(table, *entry)), entry->value}});
      }
    }
    ASSERT_TRUE(follows(nullptr, 0));
    ASSERT_EQ(walked, expected);
    if constexpr (std::is_same_v<A, ByteTable>) {
      std::string packed;
      for (const auto &item : items) packed += item.first;
      ASSERT_EQ(A::stored(table), packed);
    }
  }

  void expect_agreement() {
    ASSERT_NO_FATAL_FAILURE(expect_same(table, items, buckets));
    ASSERT_EQ(table.entry_pool->live_count, table.count + (stranger != nullptr ? 1 : 0));
    ASSERT_EQ(table.value_pool->live_count, blocks() + left_blocks);
    const auto *bytes = static_cast<const char *>(stranger);
    ASSERT_TRUE(bytes == nullptr || std::string(bytes, sizeof(Entry)) == std::string(sizeof(Entry), 'w'));
  }

  int64_t blocks() const {
    return std::count_if(items.begin(), items.end(), [](auto &item) { return item.second != 0; });
  }

  void add(const Key &drawn) {
    const typename A::Passed passed = random.one_in(8) ? A::some_own_key(table, random) : drawn;
    const Key key(passed);
    const int64_t how = random.below(3);
    const bool present = find(key) != items.end();
    const uint64_t stands = present ? find(key)->second : 0;
    uint64_t value = how == 2 && random.one_in(2) ? new_value(table, ++last_value) : 0;
    Entry *entry = nullptr;
    int added = 0;
    seen.clear();
    const bool failed = random_fuse(random, 6).blows_in([&] {
      if (how == 0) added = call<kEntrySet>(table, passed, &entry);
      if (how == 1) added = call<kSet>(table, passed, &handed_out, note_behind_handing_out);
      if (how == 2) added = call<kInsert>(table, passed, value);
    });
    ASSERT_TRUE(present ? added == 0 : failed || added == 1);
    ASSERT_EQ(entry, how == 0 ? call<kEntryGet>(table, key) : nullptr);
    if (how == 1) {
      value = handed_out;
      ASSERT_EQ(seen, Words(added != 0 && value != 0 ? 1 : 0, value));
      ASSERT_TRUE(added != 0 ? failed || value != 0 : value == stands);
      if (added != 0 && value != 0) key_at(value) = ++last_value;
    }
    if (added != 0) items.push_back({key, value});
    if (added == 0 && how == 2) return_value(table, value);
    grow(failed, added);
  }
  // The first buckets stay even when their entry is refused. Without memory to double them, the next insertion does.
  void grow(bool failed, int added) {
    if (buckets == 0) buckets = failed ? table.buckets.count : 4;
    const bool is_due = added != 0 && table.count >= 2 * buckets;
    if (is_due && !(failed && table.buckets.count == buckets)) buckets *= 2;
  }
  void update(const Key &key) {
    const uint64_t value = random.one_in(4) ? 0 : new_value(table, ++last_value);
    const auto item = find(key);
    const bool present = item != items.end();
    ASSERT_EQ(call<kUpdate>(table, key, value), present ? item->second : 0);
    return_value(table, present ? std::exchange(item->second, value) : value);
  }
  // Any key, or one that is there, by its bytes in the table.
  void remove(const Key &drawn) {
    const Key key = items.empty() || random.one_in(2) ? drawn : items[random.word() % items.size()].first;
    const auto item = find(key);
    const bool present = item != items.end();
    const uint64_t stands = present ? item->second : 0;
    const int64_t how = random.below(3);
    seen.clear();
    if (how == 0) {
      ASSERT_EQ(call<kFree>(table, key, note), present ? &table : nullptr);
      ASSERT_EQ(seen, Words(present ? 1 : 0, stands));
      left_blocks += table.owns_value_pool != 0 && stands != 0;
    } else if (how == 1) {
      const typename A::Passed passed = present ? A::key_of(table, *call<kEntryGet>(table, key)) : key;
      ASSERT_EQ(call<kRemove>(table, passed), stands);
      return_value(table, stands);
    } else if (auto *entry = call<kRemoveT>(table, key); present) {
      ASSERT_TRUE(entry->next == nullptr && entry->value == stands);
      --table.count;
      mub_pool_free(table.entry_pool, entry);
      return_value(table, stands);
    }
    if (present) items.erase(item);
  }
  // Into a table with any mix of pools that holds something. Where the copy has all that it needs, the model goes on with
  // it, and what was cloned ends.
  void clone() {
    Pool user(8), user_copy(8);
    mub_pool_new(&user);
    const bool copy_owns_entries = random.one_in(2), copy_owns_values = random.one_in(2);
    const bool own_entries = table.owns_entry_pool != 0, own_values = table.owns_value_pool != 0;
    Table<A> copy(copy_owns_entries, copy_owns_values);
    call<kInsert>(copy, A::key(700), uint64_t{0});
    seen.clear();
    const bool failed =
        random_fuse(random, 40).blows_in([&] { call<kClone>(table, &user, &copy, &user_copy, note_clone); });
    if (failed && copy.count == 0) {
      ASSERT_EQ(seen, Words());
      return expect_same(copy, {}, items.empty() ? copy.buckets.count : 0);
    }
    Items copied = items;
    Words mended;
    for (auto &[key, value] : copied) {
      const uint64_t source = std::exchange(value, call<kGet>(copy, key));
      ASSERT_EQ(key_of(value), own_values && !copy_owns_values ? 0 : key_of(source));
      ASSERT_EQ(value == source, source == 0 || !own_values);
      if (own_values) mended.insert(mended.end(), {key_of(source), key_of(value)});
    }
    std::sort(seen.begin(), seen.end());
    std::sort(mended.begin(), mended.end());
    ASSERT_EQ(seen, mended);
    ASSERT_EQ(user_copy.live_count, 1);
    ASSERT_NO_FATAL_FAILURE(expect_same(copy, copied, buckets));
    ASSERT_EQ(copy.owns_entry_pool, own_entries && copy_owns_entries);
    ASSERT_EQ(copy.owns_value_pool, own_values && copy_owns_values);
    ASSERT_TRUE(own_entries || copy.entry_pool == table.entry_pool);
    if (own_entries <= copy_owns_entries && own_values <= copy_owns_values) {
      call<kSwap>(table, &copy);
      call<kSwap>(table, &table);
      ASSERT_NO_FATAL_FAILURE(expect_same(copy, items, buckets));
      items = copied;
      if (own_entries && stranger != nullptr) stranger = table.entry_pool->chunks[0];
    }
    call<kRemoveAll>(copy);  // an end alone would leave the entries in a caller's pool
  }
  void empty() {
    const int64_t how = random.below(3);
    Words released;
    for (const auto &[key, value] : items) {
      if (how == 0 && value != 0) released.push_back(value);
      if (how == 2) return_value(table, value);
    }
    seen.clear();
    how < 2 ? call<kFreeAll>(table, how == 0 ? note : nullptr) : call<kRemoveAll>(table);
    std::sort(seen.begin(), seen.end());
    std::sort(released.begin(), released.end());
    ASSERT_EQ(seen, released);
    items.clear();
    buckets = 0;
    if (table.owns_value_pool != 0) left_blocks = 0;
    if (table.owns_entry_pool != 0) stranger = nullptr;
  }

  Random random;
  Table<A> table;
  Items items;
  int64_t buckets = 0;
  uint64_t last_value = 0;
  int64_t left_blocks = 0;  // in the value pool, of values that the table has let go
  void *stranger = nullptr;
};

template <class A>
class Hash : public ::testing::Test {};
using Kinds = ::testing::Types<ByteTable, Table32, Table64, Table128>;
TYPED_TEST_SUITE(Hash, Kinds);

TYPED_TEST(Hash, AgreesWithAModelAlsoWhenMemoryRunsOut) {
  for (int pools = 0; pools < 8; ++pools) {
    Model<TypeParam> model(pools, 51 + static_cast<uint64_t>(pools));
    call<kExpand>(model.table);
    for (int step = 0; step < 3000; ++step) {
      ASSERT_NO_FATAL_FAILURE(model.step());
      ASSERT_NO_FATAL_FAILURE(step < 300 || step % 31 == 0 ? model.expect_agreement() : void());
    }
  }
}

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

TYPED_TEST(Hash, SwapExchangesContentsAndPools) {
  using A = TypeParam;
  Table<A> a(true, false), b(false, true);
  typename Model<A>::Items of_a, of_b;
  for (int64_t i = 0; i < 10; ++i) of_a.push_back({A::key(i), call<kInsert>(a, A::key(i), uint64_t{1})});
  for (int64_t i = 9; i < 12; ++i) of_b.push_back({A::key(i), call<kInsert>(b, A::key(i), uint64_t{1})});
  call<kSwap>(a, &b);
  Model<A>::expect_same(a, of_b, 4);
  Model<A>::expect_same(b, of_a, 8);
  EXPECT_TRUE(a.entry_pool == &b.entries && a.owns_entry_pool == 0 && a.owns_value_pool == 1);
  EXPECT_TRUE(b.value_pool == &a.values && b.owns_entry_pool == 1 && b.owns_value_pool == 0);
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

// The table's count is that of its live blocks, which are not all in its chains. What lies on the free stack may have any
// link: two entries were linked by the test before it gave them back.
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
