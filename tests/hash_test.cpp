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
    if (pools % 4 < 2) return;
    foreign_entries = 1;
    stranger = std::memset(mub_pool_new(table.entry_pool), 'w', sizeof(Entry));
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
    choice < 45 ? add(key) : choice < 54 ? update(key) : choice < 79 ? remove(key) : swap();
    if (random.one_in(1000)) empty();
  }

  // Every invariant of the table, and its walk: bucket by bucket, oldest first.
  void expect_agreement() {
    ASSERT_EQ(table.count, static_cast<int64_t>(items.size()));
    ASSERT_EQ(table.buckets.count, static_cast<int64_t>(buckets));
    std::multimap<int64_t, std::pair<Key, uint64_t>> expected, walked;
    for (const auto &item : items)
      expected.insert({static_cast<int64_t>(A::word(item.first) % buckets), item});
    Entry *last = nullptr;
    int64_t at = -1;
    for (int64_t bucket = 0; bucket < table.buckets.count; ++bucket) {
      auto *entry = reinterpret_cast<Entry *>(table.buckets.items[bucket]);
      for (; entry != nullptr; last = entry, entry = entry->next) {
        walked.insert({bucket, {Key(A::key_of(table, *entry)), entry->value}});
        if constexpr (!std::is_same_v<A, Table128>) {
          ASSERT_EQ(entry,
                    last == nullptr ? call<kEntryFirst>(table, &at) : call<kEntryNext>(table, &at, last));
          ASSERT_EQ(at, bucket);
        }
      }
    }
    if constexpr (!std::is_same_v<A, Table128>) {
      ASSERT_EQ(last == nullptr ? nullptr : call<kEntryNext>(table, &at, last), nullptr);
    }
    ASSERT_EQ(walked, expected);
    ASSERT_EQ(table.entry_pool->live_count, table.count + foreign_entries);
    ASSERT_EQ(table.value_pool->live_count, blocks() + left_blocks);
    const auto *bytes = static_cast<const char *>(stranger);
    ASSERT_TRUE(bytes == nullptr || std::string(bytes, sizeof(Entry)) == std::string(sizeof(Entry), 'w'));
    if constexpr (std::is_same_v<A, ByteTable>) {
      std::string packed;
      for (const auto &item : items) packed += item.first;
      ASSERT_EQ(A::stored(table), packed);
    }
  }

  int64_t blocks() const {
    return std::count_if(items.begin(), items.end(), [](auto &item) { return item.second != 0; });
  }
  void return_block(uint64_t value) {
    if (value != 0) mub_pool_free(table.value_pool, reinterpret_cast<void *>(value));
  }

  // Adds keys with blocks for their values.
  void fill(int64_t first, int64_t end) {
    for (int64_t i = first; i < end; ++i) {
      items.push_back({A::key(i), table.new_value(++last_value)});
      ASSERT_EQ(call<kInsert>(table, A::key(i), items.back().second), 1);
      grow(false, 1);
    }
  }
  void add(const Key &drawn) {
    const typename A::Passed passed = random.one_in(8) ? A::some_own_key(table, random) : drawn;
    const Key key(passed);
    const int64_t how = random.below(3);
    const bool present = find(key) != items.end();
    const uint64_t stands = present ? find(key)->second : 0;
    uint64_t value = how == 2 && random.one_in(2) ? table.new_value(++last_value) : 0;
    Entry *entry = nullptr;
    int added = 0;
    seen.clear();
    const Fuse fuse(random.below(6), random.one_in(2) ? Blow::kOnce : Blow::kForever);
    const bool failed = fuse.blows_in([&] {
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
    }
    if (added != 0) items.push_back({key, value});
    if (added == 0 && how == 2) return_block(value);
    grow(failed, added);
  }
  // The first buckets stay even when their entry is refused. Without memory to double them, the next insertion does.
  void grow(bool failed, int added) {
    if (buckets == 0) buckets = failed ? static_cast<uint64_t>(table.buckets.count) : 4;
    const bool is_due = added != 0 && items.size() >= 2 * buckets;
    const bool is_late = failed && table.buckets.count == static_cast<int64_t>(buckets);
    if (is_due && !is_late) buckets *= 2;
  }
  void update(const Key &key) {
    const uint64_t value = random.one_in(4) ? 0 : table.new_value(++last_value);
    const auto item = find(key);
    const bool present = item != items.end();
    ASSERT_EQ(call<kUpdate>(table, key, value), present ? item->second : 0);
    return_block(present ? std::exchange(item->second, value) : value);
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
      return_block(stands);
    } else if (auto *entry = call<kRemoveT>(table, key); present) {
      ASSERT_TRUE(entry->next == nullptr && entry->value == stands);
      --table.count;
      mub_pool_free(table.entry_pool, entry);
      return_block(stands);
    }
    if (present) items.erase(item);
  }
  void swap() {
    Table<A> other;
    call<kSwap>(table, &other);
    ASSERT_TRUE(table.count == 0 && other.count == static_cast<int64_t>(items.size()));
    ASSERT_TRUE(table.owns_value_pool == 1 &&
                (table.entry_pool != &other.entries || other.owns_entry_pool == 1));
    call<kSwap>(table, &other);
    call<kSwap>(table, &table);
  }
  void empty() {
    const int64_t how = random.below(3);
    Words released;
    for (const auto &[key, value] : items) {
      if (how == 0 && value != 0) released.push_back(value);
      if (how == 2) return_block(value);
    }
    seen.clear();
    how < 2 ? call<kFreeAll>(table, how == 0 ? note : nullptr) : call<kRemoveAll>(table);
    std::sort(seen.begin(), seen.end());
    std::sort(released.begin(), released.end());
    ASSERT_EQ(seen, released);
    items.clear();
    buckets = 0;
    if (table.owns_value_pool != 0) left_blocks = 0;
    if (table.owns_entry_pool == 0) return;
    stranger = nullptr;
    foreign_entries = 0;
  }

  Random random;
  Table<A> table;
  std::vector<std::pair<Key, uint64_t>> items;
  uint64_t buckets = 0, last_value = 0;
  int64_t left_blocks = 0;      // in the value pool, of values that the table has let go
  int64_t foreign_entries = 0;  // in the entry pool, of others
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

// Also of a table that shares its entry pool, and of one with a stranger in it.
TYPED_TEST(Hash, CloneTranslatesEntriesValuesAndWhatTheyReferToOrIsEmpty) {
  using A = TypeParam;
  for (const int pools : {0, 1, 2}) {
    for_every_allocation([&](const Fuse &fuse) {
      Pool user(32), user_copy(32);
      Model<A> model(pools, 60), copy(0, 61);
      model.fill(0, 200);
      copy.fill(700, 701);
      for (auto &[key, block] : model.items) {
        word_behind(block) = static_cast<uint64_t *>(mub_pool_new(&user));
        *word_behind(block) = A::word(key);
      }
      // No blocks of the pool: 0, and what lies right behind a chunk of which the neighbours are.
      const uint64_t foreign[] = {0, reinterpret_cast<uintptr_t>(model.table.value_pool->chunks[0]) + 16 * 8};
      for (size_t i = 0; i < 32; ++i) {
        auto &[key, block] = model.items[i];
        model.return_block(call<kUpdate>(model.table, key, foreign[i % 2]));
        block = foreign[i % 2];
      }
      for (int i = 0; i < 9; ++i) model.remove(A::key(i * 7));
      const int64_t lost = model.table.value_pool->live_count;
      seen.clear();
      const bool failed =
          fuse.blows_in([&] { call<kClone>(model.table, &user, &copy.table, &user_copy, mend); });
      EXPECT_EQ(seen.size(), failed ? 0 : model.items.size());
      copy.items = failed ? decltype(copy.items)() : model.items;
      copy.buckets = failed ? 0 : model.buckets;
      if (!failed && pools == 2) copy.stranger = copy.table.entry_pool->chunks[0];
      model.foreign_entries += pools == 1 ? copy.table.count : 0;
      copy.foreign_entries = pools == 1 ? model.table.count : copy.stranger != nullptr;
      for (auto &[key, block] : copy.items) {
        ASSERT_EQ(call<kGet>(copy.table, key) == 0, block == 0 || block == foreign[1]);
        block = call<kGet>(copy.table, key);
      }
      copy.left_blocks = copy.table.value_pool->live_count - copy.blocks();
      EXPECT_EQ(copy.table.value_pool->live_count, failed ? 0 : lost);
      model.left_blocks = lost - model.blocks();
      model.expect_agreement();
      call<kRemoveAll>(model.table);
      mub_pool_empty(&user);
      for (const auto &[key, block] : copy.items) EXPECT_TRUE(!block || *word_behind(block) == A::word(key));
      copy.foreign_entries -= pools == 1 ? copy.foreign_entries : 0;
      copy.expect_agreement();
      copy.fill(700, 750);
      copy.expect_agreement();
    });
  }
}

TYPED_TEST(Hash, CloneSharesCallersPoolsAndGivesUpItsOwn) {
  using A = TypeParam;
  Model<A> model(5, 62), copy(0, 63);
  model.fill(0, 20);
  // The pool that the copy gives up is named as the user's, too.
  call<kClone>(model.table, &model.table.values, &copy.table, copy.table.value_pool, mend);
  EXPECT_EQ(copy.table.value_pool, &model.table.values);
  EXPECT_EQ(copy.table.owns_entry_pool + copy.table.owns_value_pool, 0);
  copy.items = model.items;
  copy.buckets = model.buckets;
  copy.foreign_entries = 20;
  copy.expect_agreement();
  call<kRemoveAll>(copy.table);

  // Only the source owns a value pool, or one with a table of chunks and no chunk: no value can be a block of it.
  Table<A> owner;
  mub_pool_expand(&owner.value_pool->chunk_used);
  call<kInsert>(owner, A::key(1), uint64_t{5});
  seen.clear();
  for (const bool with_values : {false, true}) {
    Table<A> twin(true, with_values);
    for (auto *each : {&twin, &owner}) call<kClone>(owner, nullptr, each, nullptr, mend);
    EXPECT_EQ(call<kEntryGet>(twin, A::key(1))->value, 0u);
  }
  EXPECT_EQ(seen, Words(2, 0)) << "once for each twin, without a map";
  EXPECT_EQ(call<kGet>(owner, A::key(1)), 5u);
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

TEST(HashOfBytes, HashIsTheRegisterFromZero) {
  Random random(9);
  for (int64_t length = 0; length < 200; ++length) {
    const std::string lower = random.text(length, 26);
    std::string upper = lower;
    for (char &c : upper) c = static_cast<char>(c - 'a' + 'A');
    ASSERT_EQ(mub_hash_key(lower.data(), length, 0), bitwise_register(lower)) << length;
    ASSERT_EQ(mub_hash_key(upper.data(), length, 1), bitwise_register(lower)) << length;
  }
  EXPECT_EQ(mub_hash_key(nullptr, -1, 0), 0u);
  // The standard check value, without the inversions at either end.
  EXPECT_EQ(mub_hash_key("123456789", -1, 0), 0x2DFD2D88u);
}

TEST(HashOfBytes, ComparesRunsOfAnyLength) {
  Random random(10);
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
  mub_hash_swap(&table, &exact);
  mub_hash_clone(&table, nullptr, &exact, nullptr, nullptr);
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
