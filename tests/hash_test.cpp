#include "mub_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/hash_tables.h"
#include "support/random.h"

using mub_test::Blow;
using mub_test::ByteTable;
using mub_test::Fuse;
using mub_test::Random;

namespace {

// What the callbacks saw; a callback has no context of its own.
std::vector<uint64_t> seen;
void note(uint64_t value) { seen.push_back(value); }

struct Pool : mub_pool {
  explicit Pool(int64_t size_bytes) {
    mub_pool_init(this);
    block_size = size_bytes;
  }
  ~Pool() { mub_pool_term(this); }
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;
};

enum class Entries { kOwned, kShared, kOwnedWithAStranger };

// A table that is released at the end of its scope, its entries in a pool of its own or of the test's.
template <class A>
struct Table : A::Table {
  explicit Table(Entries entries = Entries::kOwned, bool with_values = false)
      : pool(int64_t{sizeof(typename A::Entry)}) {
    A::init(this, entries != Entries::kShared, with_values);
    if (entries == Entries::kShared) this->entry_pool = &pool;
    // A block that the test took from the table's pool: the pool holds more than the table's entries.
    if (entries == Entries::kOwnedWithAStranger) stranger = mub_pool_new(this->entry_pool);
    if (stranger != nullptr) std::memset(stranger, 0x77, sizeof(typename A::Entry));
    if (with_values) this->value_pool->block_size = 16;
  }
  ~Table() { A::term(this); }
  Table(const Table &) = delete;
  Table &operator=(const Table &) = delete;

  bool stranger_is_untouched() const {
    const auto *bytes = static_cast<const unsigned char *>(stranger);
    return stranger == nullptr ||
           std::all_of(bytes, bytes + sizeof(typename A::Entry), [](unsigned char c) { return c == 0x77; });
  }

  Pool pool;
  void *stranger = nullptr;
};

// The same map, and the order in which its keys were added.
template <class A>
struct Model {
  struct Item {
    uint64_t value;
    int64_t added;
  };
  std::map<typename A::Key, Item> items;
  int64_t buckets = 0;
  int64_t additions = 0;

  bool insert(const typename A::Key &key, uint64_t value) {
    if (buckets == 0) buckets = 4;
    if (!items.insert({key, {value, additions}}).second) return false;
    ++additions;
    if (static_cast<int64_t>(items.size()) >= 2 * buckets) buckets *= 2;
    return true;
  }
  std::vector<typename A::Key> sorted_by(bool bucket_first) const {
    std::vector<std::pair<std::pair<uint64_t, int64_t>, typename A::Key>> order;
    for (const auto &[key, item] : items) {
      const uint64_t bucket = bucket_first ? A::word(key) % static_cast<uint64_t>(buckets) : 0;
      order.push_back({{bucket, item.added}, key});
    }
    std::sort(order.begin(), order.end());
    std::vector<typename A::Key> keys;
    for (const auto &[rank, key] : order) keys.push_back(key);
    return keys;
  }
};

// Every invariant of the table, and the order of its chains.
template <class A>
void expect_same(const typename A::Table &table, const Model<A> &model) {
  ASSERT_EQ(table.count, static_cast<int64_t>(model.items.size()));
  ASSERT_EQ(table.buckets.count, model.buckets);
  std::vector<typename A::Key> walked;
  int64_t bucket = -1;
  for (auto *entry = A::entry_first(&table, &bucket); entry != nullptr;
       entry = A::entry_next(&table, &bucket, entry)) {
    const auto key = A::key_of(table, *entry);
    ASSERT_EQ(static_cast<uint64_t>(bucket), A::word(key) % static_cast<uint64_t>(table.buckets.count));
    ASSERT_EQ(entry->value, model.items.at(key).value);
    walked.push_back(key);
  }
  ASSERT_EQ(walked, model.sorted_by(true));
  std::string packed;
  for (const auto &key : model.sorted_by(false)) packed += key;
  ASSERT_EQ(A::stored_keys(table), packed);
}

template <class A>
class Hash : public ::testing::Test {};
using Adapters = ::testing::Types<ByteTable>;
TYPED_TEST_SUITE(Hash, Adapters);

TYPED_TEST(Hash, AgreesWithAModel) {
  using A = TypeParam;
  for (const Entries entries : {Entries::kOwned, Entries::kShared, Entries::kOwnedWithAStranger}) {
    SCOPED_TRACE(static_cast<int>(entries));
    Random random(51 + static_cast<uint64_t>(entries));
    Table<A> table(entries);
    Model<A> model;
    for (int64_t step = 0; step < 4000; ++step) {
      const auto key = A::key(random.below(600));
      const uint64_t value = random.word();
      const auto item = model.items.find(key);
      const bool present = item != model.items.end();
      const uint64_t stands = present ? item->second.value : 0;
      switch (random.below(8)) {
        case 0:
        case 1:
        case 2:
          ASSERT_EQ(A::insert(&table, key, value), model.insert(key, value) ? 1 : 0);
          break;
        case 3:
          ASSERT_EQ(A::update(&table, key, value), stands);
          if (present) item->second.value = value;
          break;
        case 4:
        case 5:
          ASSERT_EQ(A::remove(&table, key), stands);
          model.items.erase(key);
          break;
        case 6:
          ASSERT_EQ(A::find(&table, key), present ? 1 : 0);
          ASSERT_EQ(A::get(&table, key), stands);
          ASSERT_EQ(A::entry_get(&table, key) != nullptr, present);
          break;
        default:
          typename A::Entry *entry = nullptr;
          ASSERT_EQ(A::entry_set(&table, key, &entry), model.insert(key, 0) ? 1 : 0);
          entry->value = value;
          model.items.at(key).value = value;
      }
      if (step % 97 == 0) {
        ASSERT_NO_FATAL_FAILURE(expect_same<A>(table, model));
      }
      if (random.one_in(1500)) {
        A::remove_all(&table);
        model = Model<A>();
        if (entries == Entries::kOwnedWithAStranger) table.stranger = nullptr;
        if (entries == Entries::kShared) {
          ASSERT_EQ(table.pool.live_count, 0);
        }
      }
    }
    ASSERT_NO_FATAL_FAILURE(expect_same<A>(table, model));
    EXPECT_TRUE(table.stranger_is_untouched());
  }
}

TYPED_TEST(Hash, DoublesItsBucketsAtAnAverageOfTwo) {
  using A = TypeParam;
  Table<A> table;
  A::expand(&table);
  EXPECT_EQ(table.buckets.count, 0);
  EXPECT_EQ(A::remove(&table, A::key(1)), 0u);
  std::map<int64_t, int64_t> first_count;
  for (int64_t i = 0; i < 300; ++i) {
    A::insert(&table, A::key(i), 1);
    first_count.insert({table.buckets.count, i + 1});
  }
  EXPECT_EQ(first_count, (std::map<int64_t, int64_t>{
                             {4, 1}, {8, 8}, {16, 16}, {32, 32}, {64, 64}, {128, 128}, {256, 256}}));
}

TYPED_TEST(Hash, SetHandsOutValueBlocks) {
  using A = TypeParam;
  for (const bool owned : {true, false}) {
    SCOPED_TRACE(owned);
    Pool pool(16);
    Table<A> table(Entries::kOwned, owned);
    if (!owned) table.value_pool = &pool;
    seen.clear();
    std::vector<uint64_t> blocks(20);
    for (int64_t i = 0; i < 20; ++i)
      ASSERT_EQ(A::set(&table, A::key(i), &blocks[static_cast<size_t>(i)], note), 1);
    EXPECT_EQ(seen, blocks);
    uint64_t value = 0;
    EXPECT_EQ(A::set(&table, A::key(3), &value, note), 0);
    EXPECT_EQ(value, blocks[3]);

    // Only a caller's pool gets single blocks back.
    const int64_t live = table.value_pool->live_count;
    seen.clear();
    EXPECT_EQ(A::free(&table, A::key(3), note), &table);
    EXPECT_EQ(A::free(&table, A::key(3), note), nullptr);
    EXPECT_EQ(seen, std::vector<uint64_t>{blocks[3]});
    EXPECT_EQ(table.value_pool->live_count, owned ? live : live - 1);
    A::update(&table, A::key(4), 0);
    EXPECT_EQ(A::free(&table, A::key(4), note), &table);
    EXPECT_EQ(seen, (std::vector<uint64_t>{blocks[3], 0}));

    A::update(&table, A::key(5), 0);
    seen.clear();
    A::free_all(&table, note);
    EXPECT_EQ(seen.size(), 17u) << "a value 0 is not released here";
    EXPECT_EQ(table.value_pool->live_count, owned ? 0 : 2) << "the blocks of keys 4 and 5 were overwritten";
    EXPECT_EQ(table.buckets.count, 0);
    EXPECT_EQ(A::insert(&table, A::key(0), 1), 1);
  }
}

TYPED_TEST(Hash, EntryStandsWithoutItsValueBlock) {
  using A = TypeParam;
  Table<A> table;
  uint64_t value = 1;
  EXPECT_EQ(A::set(&table, A::key(0), &value, note), 1);
  EXPECT_EQ(value, 0u);
  EXPECT_EQ(A::find(&table, A::key(0)), 1);
  Table<A> poolless(Entries::kShared);
  poolless.entry_pool = nullptr;
  EXPECT_EQ(A::set(&poolless, A::key(0), &value, note), 0);
  EXPECT_EQ(A::insert(&poolless, A::key(0), 1), 0);
  EXPECT_EQ(poolless.count, 0);
}

TYPED_TEST(Hash, RemovedEntryIsTheCallersUntilReturned) {
  using A = TypeParam;
  Table<A> table;
  for (int64_t i = 0; i < 30; ++i) A::insert(&table, A::key(i), static_cast<uint64_t>(i + 1));
  auto *entry = A::remove_t(&table, A::key(9));
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->next, nullptr);
  EXPECT_EQ(entry->value, 10u);
  EXPECT_EQ(table.count, 30);
  EXPECT_EQ(A::find(&table, A::key(9)), 0);
  for (int64_t i = 10; i < 30; ++i) EXPECT_EQ(A::get(&table, A::key(i)), static_cast<uint64_t>(i + 1));
  mub_pool_free(table.entry_pool, entry);
  --table.count;
  EXPECT_EQ(A::remove(&table, A::key(10)), 11u);
  EXPECT_EQ(A::get(&table, A::key(29)), 30u);
}

TYPED_TEST(Hash, SwapExchangesAllButTheTablesOwnSettings) {
  using A = TypeParam;
  Table<A> a;
  Table<A> b(Entries::kShared);
  A::insert(&a, A::key(1), 11);
  A::insert(&b, A::key(2), 22);
  A::insert(&b, A::key(3), 33);
  A::swap(&a, &b);
  EXPECT_EQ(A::get(&a, A::key(2)), 22u);
  EXPECT_EQ(a.owns_entry_pool, 0);
  EXPECT_EQ(a.entry_pool, &b.pool);
  EXPECT_EQ(A::get(&b, A::key(1)), 11u);
  EXPECT_EQ(b.owns_entry_pool, 1);
  A::swap(&a, &a);
  EXPECT_EQ(A::get(&a, A::key(3)), 33u);
  A::remove_all(&a);  // before the pool of b goes
}

// Blocks of 16 bytes that hold the address of another block in the user's pool.
struct Fixup {
  static inline int64_t calls = 0;
  static inline bool had_map = false;
  static void mend(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool, uint64_t destination,
                   mub_pool *destination_pool) {
    ++calls;
    had_map = map != nullptr;
    if (map == nullptr || destination == 0) return;
    void *const *from = reinterpret_cast<void *const *>(source);
    int64_t offset = 0;
    const int chunk = mub_pool_get_addr(source_pool, map, *from, &offset);
    *reinterpret_cast<void **>(destination) = mub_pool_set_addr(destination_pool, chunk, offset);
  }
};

TYPED_TEST(Hash, CloneTranslatesEntriesValuesAndWhatTheyReferTo) {
  using A = TypeParam;
  for (const Entries entries : {Entries::kOwned, Entries::kShared, Entries::kOwnedWithAStranger}) {
    SCOPED_TRACE(static_cast<int>(entries));
    Pool user(32);
    Pool user_copy(32);
    Table<A> table(entries, true);
    Model<A> model;
    for (int64_t i = 0; i < 500; ++i) {
      uint64_t block = 0;
      A::set(&table, A::key(i), &block, nullptr);
      *reinterpret_cast<void **>(block) = mub_pool_new(&user);
      **reinterpret_cast<int64_t **>(block) = i;
      model.insert(A::key(i), 0);
    }
    for (int64_t i = 0; i < 500; i += 3) {
      A::remove(&table, A::key(i));
      model.items.erase(A::key(i));
    }
    A::update(&table, A::key(1), 12345);  // no block of the pool
    Table<A> copy(Entries::kOwned, true);
    A::insert(&copy, A::key(700), 7);
    Fixup::calls = 0;
    A::clone(&table, &user, &copy, &user_copy, Fixup::mend);
    EXPECT_EQ(Fixup::calls, static_cast<int64_t>(model.items.size()));
    EXPECT_EQ(copy.owns_entry_pool, entries == Entries::kShared ? 0 : 1);
    EXPECT_EQ(A::get(&copy, A::key(1)), 0u);
    A::remove(&copy, A::key(1));
    model.items.erase(A::key(1));
    for (auto &[key, item] : model.items) {
      const uint64_t block = A::get(&copy, key);
      ASSERT_NE(block, 0u);
      ASSERT_NE(block, A::get(&table, key));
      ASSERT_NE(A::entry_get(&copy, key), A::entry_get(&table, key));
      ASSERT_EQ(A::key(**reinterpret_cast<int64_t **>(block)), key);
      item.value = block;
    }
    ASSERT_NO_FATAL_FAILURE(expect_same<A>(copy, model));
    // The copy lives on without its source.
    A::remove_all(&table);
    for (int64_t i = 0; i < 100; ++i) A::remove(&copy, A::key(i));
    EXPECT_EQ(A::find(&copy, A::key(101)), 1);
    if (entries == Entries::kShared) A::remove_all(&copy);
  }
}

TYPED_TEST(Hash, CloneSharesCallersPoolsAndGivesUpItsOwn) {
  using A = TypeParam;
  Pool values(16);
  Table<A> table(Entries::kShared);
  table.value_pool = &values;
  uint64_t block = 0;
  for (int64_t i = 0; i < 20; ++i) A::set(&table, A::key(i), &block, nullptr);
  Table<A> copy(Entries::kOwned, true);
  Fixup::calls = 0;
  A::clone(&table, nullptr, &copy, nullptr, Fixup::mend);
  EXPECT_EQ(Fixup::calls, 0);
  EXPECT_EQ(copy.entry_pool, &table.pool);
  EXPECT_EQ(copy.value_pool, &values);
  EXPECT_EQ(copy.owns_entry_pool + copy.owns_value_pool, 0);
  EXPECT_EQ(table.pool.live_count, 40);
  EXPECT_EQ(A::get(&copy, A::key(19)), block);
  A::remove_all(&copy);
  EXPECT_EQ(table.pool.live_count, 20);

  // Only the source owns a value pool: there is nothing that the values could be blocks of.
  Table<A> owner(Entries::kOwned, true);
  A::set(&owner, A::key(1), &block, nullptr);
  Table<A> without;
  A::clone(&owner, nullptr, &without, nullptr, Fixup::mend);
  EXPECT_EQ(Fixup::calls, 1);
  EXPECT_FALSE(Fixup::had_map);
  EXPECT_EQ(A::find(&without, A::key(1)), 1);
  EXPECT_EQ(A::get(&without, A::key(1)), 0u);
  A::clone(&owner, nullptr, &owner, nullptr, Fixup::mend);
  EXPECT_EQ(A::get(&owner, A::key(1)), block);
}

TYPED_TEST(Hash, CloneIsEmptyWhenMemoryRunsOut) {
  using A = TypeParam;
  for (const Entries entries : {Entries::kOwned, Entries::kShared}) {
    mub_test::for_every_allocation([&](const Fuse &fuse) {
      Pool user(32);
      Pool user_copy(32);
      mub_pool_new(&user);
      Table<A> table(entries, true);
      Model<A> model;
      for (int64_t i = 0; i < 40; ++i) {
        uint64_t block = 0;
        A::set(&table, A::key(i), &block, nullptr);
        model.insert(A::key(i), block);
      }
      Table<A> copy(Entries::kOwned, true);
      const bool failed = fuse.blows_in([&] { A::clone(&table, &user, &copy, &user_copy, Fixup::mend); });
      EXPECT_EQ(copy.count, failed ? 0 : 40);
      EXPECT_EQ(A::find(&copy, A::key(7)), failed ? 0 : 1);
      ASSERT_NO_FATAL_FAILURE(expect_same<A>(table, model));
      EXPECT_EQ(table.pool.live_count, entries == Entries::kOwned ? 0 : failed ? 40 : 80);
      A::remove_all(&copy);
    });
  }
}

TYPED_TEST(Hash, RefusesAnInsertionAsAWholeWhenMemoryRunsOut) {
  using A = TypeParam;
  // The first entry, one that opens a chunk, and two that double the buckets.
  for (const int64_t before : {0, 7, 16, 31}) {
    mub_test::for_every_allocation([&](const Fuse &fuse) {
      Table<A> table(Entries::kOwned, true);
      Model<A> model;
      for (int64_t i = 0; i < before; ++i) {
        A::insert(&table, A::key(i), 5);
        model.insert(A::key(i), 5);
      }
      uint64_t value = 99;
      int result = -1;
      const bool failed = fuse.blows_in([&] { result = A::set(&table, A::key(before), &value, nullptr); });
      EXPECT_TRUE(failed || result == 1);
      EXPECT_EQ(table.count, before + result);
      EXPECT_EQ(table.entry_pool->live_count, before + result);
      EXPECT_EQ(A::find(&table, A::key(before)), result);
      EXPECT_TRUE(value == 0 || result == 1);
      if (result == 1) model.insert(A::key(before), value);
      // Only the doubling may be missing, and the next insertion makes up for it.
      EXPECT_TRUE(table.buckets.count <= model.buckets || model.buckets == 0);
      A::insert(&table, A::key(before + 1), 6);
      model.insert(A::key(before + 1), 6);
      ASSERT_NO_FATAL_FAILURE(expect_same<A>(table, model));
    });
  }
}

TYPED_TEST(Hash, InitWithoutMemoryLeavesThePoolsOut) {
  using A = TypeParam;
  mub_test::for_every_allocation([](const Fuse &fuse) {
    typename A::Table table;
    fuse.blows_in([&] { A::init(&table, 1, 1); });
    EXPECT_EQ(table.owns_entry_pool, table.entry_pool != nullptr ? 1 : 0);
    EXPECT_EQ(table.owns_value_pool, table.value_pool != nullptr ? 1 : 0);
    EXPECT_EQ(A::insert(&table, A::key(0), 1), table.owns_entry_pool);
    A::term(&table);
    EXPECT_EQ(table.entry_pool, nullptr);
    EXPECT_EQ(table.buckets.pool, nullptr);
  });
}

// ---- byte-string keys only

TEST(HashOfBytes, HashIsTheRegisterFromZero) {
  Random random(9);
  for (int64_t length = 0; length < 200; ++length) {
    std::string key = random.text(length, 26);
    if (length % 5 == 1) key[0] = '\0';
    ASSERT_EQ(mub_hash_key(key.data(), length, 0), mub_test::bitwise_register(key)) << length;
    std::string upper = key;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    ASSERT_EQ(mub_hash_key(upper.data(), length, 1), mub_test::bitwise_register(key)) << length;
  }
  EXPECT_EQ(mub_hash_key("abc", -1, 0), mub_hash_key("abc", 3, 0));
  EXPECT_EQ(mub_hash_key(nullptr, -1, 0), 0u);
  // The standard check value, without the inversions at either end.
  EXPECT_EQ(mub_hash_key("123456789", 9, 0), 0x2DFD2D88u);
}

TEST(HashOfBytes, ComparesRunsOfAnyLength) {
  Random random(10);
  for (int64_t length = 0; length < 70; ++length) {
    std::string a = random.text(length, 26);
    EXPECT_EQ(mub_hash_cmp(a.data(), length, std::string(a).data(), length), 1);
    EXPECT_EQ(mub_hash_cmp(a.data(), length, (a + "x").data(), length + 1), 0);
    for (int64_t i = 0; i < length; ++i) {
      std::string b = a;
      b[static_cast<size_t>(i)] ^= 1;
      EXPECT_EQ(mub_hash_cmp(a.data(), length, b.data(), length), 0) << i << " of " << length;
    }
  }
}

TEST(HashOfBytes, CaseFollowsTheField) {
  Table<ByteTable> table;
  table.nocase = 1;
  EXPECT_EQ(mub_hash_insert(&table, "Straße KEY number one", -1, 1), 1);
  EXPECT_EQ(mub_hash_insert(&table, "STRAße key NUMBER one", -1, 2), 0);
  EXPECT_EQ(mub_hash_get(&table, "straße key number ONE", -1), 1u);
  Table<ByteTable> exact;
  EXPECT_EQ(mub_hash_insert(&exact, "ABC", -1, 1) + mub_hash_insert(&exact, "abc", -1, 1), 2);
  ByteTable::swap(&table, &exact);
  EXPECT_EQ(table.nocase, 1);
  EXPECT_EQ(exact.nocase, 0);
  ByteTable::clone(&table, nullptr, &exact, nullptr, nullptr);
  EXPECT_EQ(exact.nocase, 0);
}

TEST(HashOfBytes, EmptyKeyKeepsItsPlaceWhenItsNeighbourGoes) {
  Table<ByteTable> table;
  for (const char *key : {"first", "", "second"}) mub_hash_insert(&table, key, -1, 1);
  EXPECT_EQ(mub_hash_find(&table, nullptr, -1), 1);
  mub_hash_remove(&table, "second", 6);
  EXPECT_EQ(mub_hash_entry_get(&table, "", 0)->key_offset, 5u) << "an empty key at the very place stays";
  mub_hash_remove(&table, "first", 5);
  EXPECT_EQ(mub_hash_entry_get(&table, "", 0)->key_offset, 0u);
  EXPECT_EQ(table.keys.length, 0);
}

TEST(HashOfBytes, TakesKeysFromItsOwnKeyBytes) {
  Table<ByteTable> table;
  mub_hash_insert(&table, "abcdefgh", 8, 1);
  for (int i = 0; i < 200; ++i) {
    // Every second half of what is stored, so that growth happens under the key.
    const int64_t half = table.keys.length / 2;
    const std::string expected(reinterpret_cast<char *>(table.keys.data) + half,
                               static_cast<size_t>(std::min<int64_t>(table.keys.length - half, 300)));
    mub_hash_insert(&table, table.keys.data + half, static_cast<int64_t>(expected.size()), 2);
    ASSERT_EQ(mub_hash_find(&table, expected.data(), static_cast<int64_t>(expected.size())), 1) << i;
    mub_hash_insert(&table, std::to_string(i).c_str(), -1, 3);
  }
  // And what an emptied table left behind, while its first storage is set aside.
  Table<ByteTable> small;
  mub_stream_append(&small.keys, "short", 5);  // 8 bytes, which the first bucket table replaces by 64

  mub_hash_insert(&small, small.keys.data, 5, 4);
  EXPECT_EQ(mub_hash_get(&small, "short", 5), 4u);
  mub_hash_entry *entry = mub_hash_entry_get(&small, "short", 5);
  mub_hash_remove(&small, small.keys.data + entry->key_offset, 5);
  EXPECT_EQ(small.count, 0);
}

TEST(HashOfBytes, LowLayerFindsByKeyAndByHash) {
  Table<ByteTable> table;
  mub_hash_insert(&table, "known", 5, 1);
  const auto hash = static_cast<uint32_t>(mub_hash_key("known", 5, 0));
  const int64_t bucket = hash % 4;
  int inserted = -1;
  mub_hash_entry *entry = mub_hash_entry_new(&table, bucket, hash + 4, "known", 5, &inserted);
  EXPECT_EQ(entry, mub_hash_entry_get(&table, "known", 5)) << "the stored hash is not looked at";
  EXPECT_EQ(inserted, 0);
  EXPECT_EQ(mub_hash_entry_find(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash + 4, "known", 5), nullptr);
  EXPECT_EQ(mub_hash_find_t(&table, "known", -1), nullptr);
  EXPECT_EQ(mub_hash_remove_t(&table, "known", -1), nullptr);
  EXPECT_EQ(mub_hash_insert_t(&table, "known", -1, &inserted), entry);

  mub_hash_entry *fresh = mub_hash_entry_new(&table, bucket, 0, "unknown", 7, &inserted);
  EXPECT_EQ(inserted, 1);
  EXPECT_EQ(entry->next, fresh);
  EXPECT_EQ(fresh->next, nullptr);
  EXPECT_EQ(table.count, 1) << "counting is the caller's";
  EXPECT_EQ(mub_hash_entry_remove(&table, bucket, hash, "known", 5), entry);
  EXPECT_EQ(entry->next, nullptr);
  EXPECT_EQ(table.keys.length, 5) << "and so are the key bytes";
}

TEST(HashOfBytes, AdjustLowersTheOffsetsBehind) {
  for (const Entries entries : {Entries::kOwned, Entries::kShared}) {
    Table<ByteTable> table(entries);
    for (const char *key : {"aa", "bb", "cc"}) mub_hash_insert(&table, key, -1, 1);
    mub_hash_adjust_t(&table, 2, (int64_t{1} << 32) + 2);
    std::vector<uint32_t> offsets;
    for (const char *key : {"aa", "bb", "cc"}) {
      for (int64_t b = 0; b < 4; ++b) {
        for (auto *e = reinterpret_cast<mub_hash_entry *>(table.buckets.items[b]); e != nullptr;
             e = e->next) {
          if (e->hash == mub_hash_key(key, 2, 0)) offsets.push_back(e->key_offset);
        }
      }
    }
    EXPECT_EQ(offsets, (std::vector<uint32_t>{0, 0, 2}));
    table.keys.length = 0;  // the offsets no longer fit the bytes
    mub_hash_remove_all(&table);
  }
}

}  // namespace
