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

using mub_test::ByteTable;
using mub_test::note;
using mub_test::Pool;
using mub_test::seen;

namespace {

enum class Entries { kOwned, kShared, kOwnedWithAStranger };
constexpr Entries kAllEntries[] = {Entries::kOwned, Entries::kShared, Entries::kOwnedWithAStranger};

// A table that is released at the end of its scope, its entries in a pool of its own or of the test's.
template <class A>
struct Table : A::Table {
  static constexpr size_t kEntryBytes = sizeof(typename A::Entry);

  explicit Table(Entries entries = Entries::kOwned, bool with_values = false) : pool(kEntryBytes) {
    A::init(this, entries != Entries::kShared, with_values);
    if (entries == Entries::kShared) this->entry_pool = &pool;
    // A block that the test took from the table's pool: the pool holds more than the table's entries.
    if (entries == Entries::kOwnedWithAStranger) stranger = mub_pool_new(this->entry_pool);
    if (stranger != nullptr) std::memset(stranger, 'w', kEntryBytes);
    if (!with_values) return;
    this->value_pool->block_size = 16;
    this->value_pool->blocks_per_chunk = 128;
  }
  ~Table() { A::term(this); }

  bool stranger_is_untouched() const {
    const auto *bytes = static_cast<const char *>(stranger);
    return bytes == nullptr || std::string(bytes, kEntryBytes) == std::string(kEntryBytes, 'w');
  }

  Pool pool;
  void *stranger = nullptr;
};

// The same map, its items in the order of their insertion.
template <class A>
struct Model {
  using Key = typename A::Key;
  std::vector<std::pair<Key, uint64_t>> items;
  uint64_t buckets = 0;

  auto find(const Key &key) {
    return std::find_if(items.begin(), items.end(), [&](const auto &item) { return item.first == key; });
  }
  bool insert(const Key &key, uint64_t value) {
    if (find(key) != items.end()) return false;
    items.push_back({key, value});
    if (buckets == 0) buckets = 4;
    if (items.size() >= 2 * buckets) buckets *= 2;
    return true;
  }
  uint64_t erase(const Key &key) {
    const uint64_t value = find(key)->second;
    items.erase(find(key));
    return value;
  }
  // Every invariant of the table, and its walk: bucket by bucket, oldest first.
  void expect_same(const typename A::Table &table) const {
    ASSERT_EQ(table.count, static_cast<int64_t>(items.size()));
    ASSERT_EQ(table.buckets.count, static_cast<int64_t>(buckets));
    std::multimap<uint64_t, std::pair<Key, uint64_t>> expected;
    for (const auto &item : items) expected.insert({A::word(item.first) % buckets, item});
    std::vector<typename decltype(expected)::value_type> walked;
    int64_t bucket = -1;
    for (auto *entry = A::entry_first(&table, &bucket); entry != nullptr;
         entry = A::entry_next(&table, &bucket, entry)) {
      walked.push_back({static_cast<uint64_t>(bucket), {A::key_of(table, *entry), entry->value}});
    }
    ASSERT_EQ(walked, decltype(walked)(expected.begin(), expected.end()));
    ASSERT_EQ(bucket, walked.empty() ? 0 : static_cast<int64_t>(walked.back().first)) << "left as it was";
    ASSERT_NO_FATAL_FAILURE(A::expect_stored(table, items));
  }
};

// The model of a table with a value pool to which `count` keys were added.
template <class A>
Model<A> filled(typename A::Table &table, int64_t count) {
  static uint64_t block;
  const auto note_in_place = [](uint64_t value) { note(value == block ? value : 0); };
  Model<A> model;
  for (int64_t i = 0; i < count; ++i) {
    EXPECT_EQ(A::set(&table, A::key(i), &block, note_in_place), 1);
    EXPECT_EQ(seen.back(), block) << "the block is handed out before it is initialised";
    model.insert(A::key(i), block);
  }
  return model;
}

template <class A>
class Hash : public ::testing::Test {};
using Adapters = ::testing::Types<ByteTable, mub_test::Table32, mub_test::Table64, mub_test::Table128>;
TYPED_TEST_SUITE(Hash, Adapters);

TYPED_TEST(Hash, AgreesWithAModel) {
  using A = TypeParam;
  for (const Entries entries : kAllEntries) {
    mub_test::Random random(51 + static_cast<uint64_t>(entries));
    Table<A> table(entries);
    Model<A> model;
    A::expand(&table);
    for (int64_t step = 0; step < 4000; ++step) {
      const auto key = A::key(random.below(600));
      const uint64_t value = random.one_in(4) ? 0 : random.word();
      const auto item = model.find(key);
      const bool present = item != model.items.end();
      const uint64_t stands = present ? item->second : 0;
      seen.clear();
      ASSERT_EQ(A::find(&table, key), present ? 1 : 0);
      ASSERT_EQ(A::get(&table, key), stands);
      const int64_t choice = random.below(8);
      if (choice < 3) {
        ASSERT_EQ(A::insert(&table, key, value), model.insert(key, value) ? 1 : 0);
      } else if (choice == 3) {
        ASSERT_EQ(A::update(&table, key, value), stands);
        if (present) item->second = value;
      } else if (choice == 4) {
        typename A::Entry *entry = nullptr;
        ASSERT_EQ(A::entry_set(&table, key, &entry), model.insert(key, 0) ? 1 : 0);
        ASSERT_EQ(A::entry_get(&table, key), entry);
        ASSERT_EQ(entry->value, stands);
      } else if (choice == 5) {
        ASSERT_EQ(A::free(&table, key, note), present ? &table : nullptr);
        ASSERT_EQ(seen, std::vector<uint64_t>(present ? 1 : 0, stands));
      } else if (choice == 6) {
        ASSERT_EQ(A::remove(&table, key), stands);
      } else if (auto *entry = A::remove_t(&table, key); present) {
        ASSERT_TRUE(entry->next == nullptr && entry->value == stands);
        --table.count;
        mub_pool_free(table.entry_pool, entry);
      }
      if (choice > 4 && present) model.erase(key);
      ASSERT_NO_FATAL_FAILURE(step % 93 == 0 ? model.expect_same(table) : void());
      ASSERT_TRUE(table.stranger_is_untouched());
      if (!random.one_in(1000)) continue;
      random.one_in(2) ? A::remove_all(&table) : A::free_all(&table, note);
      ASSERT_EQ(table.entry_pool->live_count, 0);
      model = Model<A>();
      table.stranger = nullptr;
    }
  }
}

TYPED_TEST(Hash, OnlyACallersPoolGetsSingleValueBlocksBack) {
  using A = TypeParam;
  for (const bool owned : {true, false}) {
    Pool pool(16);
    Table<A> table(Entries::kOwned, owned);
    if (!owned) table.value_pool = &pool;
    seen.clear();
    filled<A>(table, 20);
    uint64_t value = 0;
    EXPECT_EQ(A::set(&table, A::key(3), &value, note), 0);
    EXPECT_EQ(value, seen[3]);
    A::free(&table, A::key(3), nullptr);
    EXPECT_EQ(table.value_pool->live_count, owned ? 20 : 19);
    A::remove(&table, A::key(4));
    A::update(&table, A::key(5), 0);
    A::free_all(&table, note);
    EXPECT_EQ(seen.size(), 20u + 17u) << "nothing is released for the 0 of key 5";
    EXPECT_EQ(table.value_pool->live_count, owned ? 0 : 2) << "of keys 4 and 5, the caller's now";
  }
}

TYPED_TEST(Hash, SwapExchangesPoolsAndEntries) {
  using A = TypeParam;
  Table<A> a(Entries::kOwned, true);
  Table<A> b(Entries::kShared, true);
  const Model<A> of_a = filled<A>(a, 10);
  const Model<A> of_b = filled<A>(b, 3);
  A::swap(&a, &b);
  A::swap(&a, &a);
  of_b.expect_same(a);
  of_a.expect_same(b);
  EXPECT_EQ(a.entry_pool, &b.pool);
}

// Values here are blocks that hold the address of a word in the user's pool.
uint64_t *&word_behind(uint64_t value) { return *reinterpret_cast<uint64_t **>(value); }

void mend(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool, uint64_t destination,
          mub_pool *destination_pool) {
  note(map != nullptr);
  if (map == nullptr || destination == 0) return;
  int64_t offset = 0;
  const int chunk = mub_pool_get_addr(source_pool, map, word_behind(source), &offset);
  word_behind(destination) = static_cast<uint64_t *>(mub_pool_set_addr(destination_pool, chunk, offset));
}

TYPED_TEST(Hash, CloneTranslatesEntriesValuesAndWhatTheyReferToOrIsEmpty) {
  using A = TypeParam;
  for (const Entries entries : kAllEntries) {
    mub_test::for_every_allocation([&](const mub_test::Fuse &fuse) {
      Pool user(32);
      Pool user_copy(32);
      Table<A> table(entries, true);
      Model<A> model = filled<A>(table, 200);
      for (auto &[key, block] : model.items) {
        word_behind(block) = static_cast<uint64_t *>(mub_pool_new(&user));
        *word_behind(block) = A::word(key);
      }
      // No blocks of the pool: 0, and what lies right behind a chunk of which the neighbours are.
      const uint64_t foreign[] = {0, reinterpret_cast<uintptr_t>(table.value_pool->chunks[0]) + 128 * 16};
      for (int64_t i = 0; i < 32; ++i)
        A::update(&table, A::key(i), model.find(A::key(i))->second = foreign[i % 2]);
      for (int64_t i = 0; i < 200; i += 7) EXPECT_EQ(A::remove(&table, A::key(i)), model.erase(A::key(i)));
      Table<A> copy(Entries::kOwned, true);
      A::insert(&copy, A::key(700), 7);
      seen.clear();
      const bool failed = fuse.blows_in([&] { A::clone(&table, &user, &copy, &user_copy, mend); });
      model.expect_same(table);
      EXPECT_TRUE(table.stranger_is_untouched());
      EXPECT_EQ(seen.size(), failed ? 0 : model.items.size());
      EXPECT_EQ(table.pool.live_count, entries == Entries::kShared ? table.count + copy.count : 0);
      if (failed) model = Model<A>();
      if (!failed && table.stranger != nullptr) copy.stranger = copy.entry_pool->chunks[0];
      EXPECT_TRUE(copy.stranger_is_untouched());
      for (auto &[key, block] : model.items) {
        ASSERT_EQ(A::get(&copy, key) == 0, block == 0 || block == foreign[1]);
        block = A::get(&copy, key);
      }
      A::remove_all(&table);
      mub_pool_empty(&user);
      for (const auto &[key, block] : model.items) EXPECT_TRUE(!block || *word_behind(block) == A::word(key));
      EXPECT_EQ(A::insert(&copy, A::key(0), 0), model.insert(A::key(0), 0) ? 1 : 0);
      model.expect_same(copy);
    });
  }
}

TYPED_TEST(Hash, CloneSharesCallersPoolsAndGivesUpItsOwn) {
  using A = TypeParam;
  Pool values(16);
  Table<A> table(Entries::kShared);
  table.value_pool = &values;
  const Model<A> model = filled<A>(table, 20);
  Table<A> copy(Entries::kOwned, true);
  // The pool that the copy gives up is named as the user's, too.
  A::clone(&table, &values, &copy, copy.value_pool, mend);
  model.expect_same(copy);
  EXPECT_EQ(copy.value_pool, &values);
  EXPECT_EQ(copy.owns_entry_pool + copy.owns_value_pool, 0);
  EXPECT_EQ(table.pool.live_count, 40);
  for (auto *each : {&copy, &table}) A::remove_all(each);

  // Only the source owns a value pool, or one with a table of chunks and no chunk: no value can be a block of it.
  Table<A> owner(Entries::kOwned, true);
  mub_pool_expand(&owner.value_pool->chunk_used);
  A::insert(&owner, A::key(1), 5);
  seen.clear();
  for (const bool with_values : {false, true}) {
    Table<A> twin(Entries::kOwned, with_values);
    for (auto *each : {&twin, &owner}) A::clone(&owner, nullptr, each, nullptr, mend);
    EXPECT_EQ(A::entry_get(&twin, A::key(1))->value, 0u);
  }
  EXPECT_EQ(seen, (std::vector<uint64_t>{0, 0})) << "once for each twin, without a map";
  EXPECT_EQ(A::get(&owner, A::key(1)), 5u);
}

TYPED_TEST(Hash, RefusesAnInsertionAsAWholeWhenMemoryRunsOut) {
  using A = TypeParam;
  // The first entry, one that opens a chunk, and two that double the buckets.
  for (const int64_t before : {0, 7, 16, 31}) {
    mub_test::for_every_allocation([&](const mub_test::Fuse &fuse) {
      Table<A> table(Entries::kOwned, true);
      Model<A> model = filled<A>(table, before);
      uint64_t value = 99;
      int result = -1;
      const bool failed = fuse.blows_in([&] { result = A::set(&table, A::key(before), &value, nullptr); });
      EXPECT_TRUE(value == 0 ? failed : result == 1);
      EXPECT_EQ(table.entry_pool->live_count, before + result);
      if (result == 1) model.insert(A::key(before), value);
      // Only the doubling may be missing, and the next insertion makes up for it.
      A::insert(&table, A::key(before + 1), 6);
      model.insert(A::key(before + 1), 6);
      model.expect_same(table);
    });
  }
}

TYPED_TEST(Hash, MakesDoWithThePoolsThatItGot) {
  using A = TypeParam;
  mub_test::for_every_allocation([](const mub_test::Fuse &fuse) {
    typename A::Table table;
    fuse.blows_in([&] { A::init(&table, 1, 1); });
    EXPECT_EQ(table.owns_entry_pool, table.entry_pool != nullptr ? 1 : 0);
    EXPECT_EQ(table.owns_value_pool, table.value_pool != nullptr ? 1 : 0);
    // Even a value pool that is there has no block size yet: the entry stands without a block.
    uint64_t value = 1;
    EXPECT_EQ(A::set(&table, A::key(0), &value, note), table.owns_entry_pool);
    EXPECT_EQ(value, 0u);
    A::term(&table);
    EXPECT_TRUE(table.entry_pool == nullptr && table.value_pool == nullptr && table.buckets.pool == nullptr);
  });
}

// ---- byte-string keys only

TEST(HashOfBytes, HashIsTheRegisterFromZero) {
  mub_test::Random random(9);
  for (int64_t length = 0; length < 200; ++length) {
    const std::string lower = random.text(length, 26);
    std::string upper = lower;
    for (char &c : upper) c = static_cast<char>(c - 'a' + 'A');
    ASSERT_EQ(mub_hash_key(lower.data(), length, 0), mub_test::bitwise_register(lower)) << length;
    ASSERT_EQ(mub_hash_key(upper.data(), length, 1), mub_test::bitwise_register(lower)) << length;
  }
  EXPECT_EQ(mub_hash_key(nullptr, -1, 0), 0u);
  // The standard check value, without the inversions at either end.
  EXPECT_EQ(mub_hash_key("123456789", -1, 0), 0x2DFD2D88u);
}

TEST(HashOfBytes, ComparesRunsOfAnyLength) {
  mub_test::Random random(10);
  for (int64_t length = 0; length < 70; ++length) {
    const std::string a = random.text(length, 26);
    std::string b = a + "x";
    EXPECT_EQ(mub_hash_cmp(a.data(), length, b.data(), length), 1);
    EXPECT_EQ(mub_hash_cmp(a.data(), length, b.data(), length + 1), 0);
    for (size_t i = 0; i < a.size(); ++i) {
      b[i] ^= 1;
      EXPECT_EQ(mub_hash_cmp(a.data(), length, b.data(), length), 0) << i << " of " << length;
      b[i] = a[i];
    }
  }
}

TEST(HashOfBytes, CaseFollowsTheFieldWhichStaysWithItsRecord) {
  Table<ByteTable> table;
  table.nocase = 1;
  EXPECT_EQ(mub_hash_insert(&table, "Straße KEY number one", -1, 1), 1);
  EXPECT_EQ(mub_hash_insert(&table, "STRAße key NUMBER one", -1, 2), 0);
  Table<ByteTable> exact;
  ByteTable::swap(&table, &exact);
  ByteTable::clone(&table, nullptr, &exact, nullptr, nullptr);
  EXPECT_EQ(table.nocase - exact.nocase, 1);
}

TEST(HashOfBytes, OffsetsHave32BitsAndFallBehindACutButThatOfAnEmptyKeyAtIt) {
  Table<ByteTable> table;
  mub_hash_entry *made[4];
  const char *keys[4] = {"aa", "bb", "", "cc"};
  for (size_t i = 0; i < 4; ++i) mub_hash_entry_set(&table, keys[i], -1, &made[i]);
  EXPECT_EQ(mub_hash_entry_get(&table, nullptr, -1), made[2]);
  mub_hash_adjust_t(&table, 4, (int64_t{1} << 32) + 2);
  mub_hash_adjust_t(&table, 2, 1);
  const uint32_t offsets[4] = {0, 1, 3, 1};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(made[i]->key_offset, offsets[i]) << keys[i];
  table.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_hash_insert(&table, "ab", 2, 1), 0);
  EXPECT_EQ(table.count + table.entry_pool->live_count, 8);
}

TEST(HashOfBytes, TakesKeysFromItsOwnKeyBytes) {
  Table<ByteTable> table;
  mub_stream_append(&table.keys, "short", 5);  // 8 bytes, which the first insertion replaces by 64
  mub_hash_insert(&table, table.keys.data, 5, 4);
  for (int i = 0; i < 200; ++i) {
    // Every second half of what is stored, so that growth happens under the key.
    const int64_t half = table.keys.length / 2;
    const int64_t length = std::min<int64_t>(table.keys.length - half, 300);
    const std::string key(table.keys.data + half, table.keys.data + half + length);
    mub_hash_insert(&table, table.keys.data + half, length, 2);
    ASSERT_EQ(mub_hash_find(&table, key.data(), length), 1) << i;
    mub_hash_insert(&table, std::to_string(i).c_str(), -1, 3);
  }
  EXPECT_EQ(mub_hash_remove(&table, table.keys.data + 5, 5), 4u);
  EXPECT_EQ(mub_hash_find(&table, "short", -1), 0);
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

// ---- keys that lie in their entries

TEST(HashOfWords, IntegersAreTheirOwnHash) {
  Table<mub_test::Table32> small;
  Table<mub_test::Table64> large;
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
  using mub_test::bitwise_register;
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
  auto *entry = A::insert_t(&table, key, &inserted);
  EXPECT_EQ(inserted, 1);
  entry->value = 77;
  EXPECT_EQ(A::find_t(&table, key), entry);
  EXPECT_EQ(A::entry_find(&table, bucket, key), entry);
  // The key of a removed entry lies in the very block that the next insertion takes.
  EXPECT_EQ(A::remove(&table, entry->key), 77u);
  EXPECT_EQ(A::insert(&table, entry->key, 78), 1);
  EXPECT_EQ(A::entry_remove(&table, bucket, key), entry);
  EXPECT_EQ(A::find_t(&table, key), nullptr);
  mub_pool_free(table.entry_pool, entry);
  EXPECT_EQ(A::entry_new(&table, bucket, key, &inserted), entry);
  EXPECT_EQ(inserted, 1);
  EXPECT_EQ(entry->value, 0u) << "what the block held before is cleared";
}

TEST(HashOfWords, LowLayerFindsLinksAndUnlinks) {
  use_low_layer<mub_test::Table32>();
  use_low_layer<mub_test::Table64>();
  use_low_layer<mub_test::Table128>();
}

}  // namespace
