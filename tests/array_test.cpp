#include "mub_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

using mub_test::ByteKeyed;
using mub_test::Entries;
using mub_test::entries_of;
using mub_test::Fuse;
using mub_test::Items;
using mub_test::ItemsInContext;
using mub_test::Keyed32;
using mub_test::Keyed64;
using mub_test::note;
using mub_test::Pool;
using mub_test::Random;
using mub_test::Scoped;
using mub_test::seen;

namespace {

uint64_t *words_of(uint64_t block) { return reinterpret_cast<uint64_t *>(static_cast<uintptr_t>(block)); }

template <class Kind>
class Arrays : public ::testing::Test {
 protected:
  using Key = typename Kind::Key;

  // Sorted; without the key that a fresh slot has.
  static std::vector<Key> distinct_keys(size_t count) {
    Random random(7);
    std::vector<Key> keys;
    while (keys.size() < count) {
      const Key key = Kind::random_key(random);
      if (key != Key() && std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
    }
    std::sort(keys.begin(), keys.end(), std::less<Key>());
    return keys;
  }
};

using Kinds = ::testing::Types<ByteKeyed, Keyed32, Keyed64, Items, ItemsInContext>;
TYPED_TEST_SUITE(Arrays, Kinds);

// A sorted vector as the model of a dictionary.
template <class Kind>
struct Dictionary {
  using Key = typename Kind::Key;
  bool descending;
  Entries<Kind> entries;

  auto place(const Key &key) {
    return std::find_if(entries.begin(), entries.end(), [&](const auto &entry) {
      return descending ? entry.first <= key : entry.first >= key;
    });
  }
  bool has(const Key &key) { return place(key) != entries.end() && place(key)->first == key; }
  uint64_t value(const Key &key) { return has(key) ? place(key)->second : 0; }
  void insert(const Key &key, uint64_t value) {
    if (Kind::fits_only_at_the_end(key) && place(key) != entries.end()) return;
    if (!has(key)) entries.insert(place(key), {key, Kind::stored(key, value)});
  }
};

template <class Kind>
void expect_lookups(typename Kind::Record &array, Dictionary<Kind> &model, const typename Kind::Key &key) {
  const int64_t place = model.place(key) - model.entries.begin();
  const int64_t nearest = std::min(place, array.count - 1);
  ASSERT_EQ(Kind::find(&array, key), model.value(key));
  ASSERT_EQ(Kind::find_index(&array, key), model.has(key) ? place : -1);
  ASSERT_EQ(Kind::bfind_index(&array, key), nearest);
  ASSERT_EQ(Kind::bfind(&array, key), nearest < 0 ? 0 : model.entries[static_cast<size_t>(nearest)].second);
}

TYPED_TEST(Arrays, SortedUseAgreesWithAModel) {
  for (const bool descending : {false, true}) {
    Random random(descending ? 2 : 1);
    Scoped<TypeParam> array(false, descending);
    Dictionary<TypeParam> model{descending, {}};
    for (int step = 0; step < 3000; ++step) {
      const auto key = model.entries.empty() || random.one_in(2)
                           ? TypeParam::random_key(random)
                           : model.entries[static_cast<size_t>(random.below(array.count))].first;
      const uint64_t value = random.word() | 1;
      const uint64_t old = model.value(key);
      const bool had = model.has(key);
      ASSERT_NO_FATAL_FAILURE(expect_lookups<TypeParam>(array, model, key));
      const int64_t operation = random.below(step < 1500 ? 6 : 10);  // grows for a while, then shrinks
      if (operation == 0) {
        ASSERT_EQ(TypeParam::update(&array, key, value), old);
        if (had) model.place(key)->second = TypeParam::stored(key, value);
      } else if (operation < 5) {
        ASSERT_EQ(TypeParam::insert(&array, key, value), had ? 0 : 1);
        model.insert(key, value);
      } else {
        seen.clear();
        if (operation == 5) {
          ASSERT_EQ(TypeParam::remove(&array, key), old);
        } else {
          TypeParam::free(&array, key, note);
          ASSERT_EQ(seen, had ? std::vector{old} : std::vector<uint64_t>());
        }
        if (had) model.entries.erase(model.place(key));
      }
      ASSERT_EQ(array.count, static_cast<int64_t>(model.entries.size()));
      if (step % 16 == 0) {
        ASSERT_EQ(entries_of<TypeParam>(array), model.entries);
      }
    }
    EXPECT_TRUE(TypeParam::keys_are_packed(&array));
  }
}

TYPED_TEST(Arrays, PositionalUseAgreesWithAVector) {
  Random random(3);
  Scoped<TypeParam> array;
  Entries<TypeParam> model;
  for (int step = 0; step < 4000; ++step) {
    const auto count = static_cast<int64_t>(model.size());
    const int64_t index = random.below(count + 3) - 1;
    const auto key = TypeParam::random_key(random);
    const uint64_t value = random.word();
    const bool inside = index >= 0 && index < count;
    const auto place = model.begin() + (inside ? index : 0);
    const uint64_t old = inside ? place->second : 0;
    switch (random.below(count > 150 ? 6 : 5)) {
      case 0:
        if (index < count && index >= 0) {
          ASSERT_EQ(TypeParam::set_at(&array, index, key, value), old);
          *place = {key, TypeParam::stored(key, value)};
        }
        break;
      case 1:
        ASSERT_EQ(TypeParam::remove_at(&array, index), old);
        if (inside) model.erase(place);
        break;
      case 5:
        TypeParam::remove_all(&array);
        model.clear();
        break;
      default:
        TypeParam::insert_at(&array, index, key, value);
        if (index >= count) {
          model.push_back({key, TypeParam::stored(key, value)});
        } else if (inside && !TypeParam::fits_only_at_the_end(key)) {
          model.insert(place, {key, TypeParam::stored(key, value)});
        }
    }
    if (random.one_in(500) && count < 60) {
      TypeParam::append_array(&array, &array);
      const Entries<TypeParam> twice = model;
      model.insert(model.end(), twice.begin(), twice.end());
    }
    ASSERT_EQ(array.count, static_cast<int64_t>(model.size()));
    ASSERT_EQ(entries_of<TypeParam>(array), model);
    ASSERT_TRUE(TypeParam::keys_are_packed(&array));
  }
}

TYPED_TEST(Arrays, GrowByHalfTheirCountInMultiplesOfFour) {
  struct Growth {
    int64_t capacity, count, wanted, grown;
  };
  for (const Growth &growth : {Growth{0, 0, 1, 8},
                               {0, 0, 9, 12},
                               {8, 8, 9, 16},
                               {100, 100, 101, 152},
                               {100, 18, 101, 112},
                               {100, 0, 200, 200},
                               {100, 100, 100, 100},
                               {131072, 131070, 131073, 196608},
                               {200000, 200000, 200001, 265536}}) {
    SCOPED_TRACE(::testing::Message() << growth.capacity << " " << growth.count << " " << growth.wanted);
    Scoped<TypeParam> array;
    ASSERT_EQ(TypeParam::expand(&array, growth.capacity), 1);
    TypeParam::shrink(&array, growth.count);
    if (growth.count > 0) TypeParam::update_at(&array, growth.capacity - 1, 77);
    EXPECT_EQ(TypeParam::expand(&array, growth.wanted), 1);
    EXPECT_EQ(array.capacity, growth.grown);
    EXPECT_EQ(array.count, growth.count);
    if (growth.count > 0) {
      EXPECT_EQ(TypeParam::entry(&array, growth.capacity - 1).second, 77u);
    }
    for (int64_t i = growth.capacity; i < array.capacity; ++i) {
      ASSERT_EQ(TypeParam::entry(&array, i).second, 0u);
    }
    for (const int64_t wanted : {INT64_MAX, INT64_MAX - 3, INT64_MAX / 8, int64_t{1} << 60}) {
      EXPECT_EQ(TypeParam::expand(&array, wanted), 0);
    }
    EXPECT_EQ(TypeParam::expand(&array, INT64_MIN), 1);
    EXPECT_EQ(array.capacity, growth.grown);
  }
}

TYPED_TEST(Arrays, PositionsReachSpareSlotsAndCountsBoundRemovals) {
  const auto keys = this->distinct_keys(3);
  Scoped<TypeParam> array;
  for (const auto &key : keys) TypeParam::append(&array, key, 1);
  EXPECT_EQ(TypeParam::entry(&array, 7), (std::pair{typename TypeParam::Key(), uint64_t{0}}));
  EXPECT_EQ(TypeParam::update_at(&array, 7, 5), 0u);
  EXPECT_EQ(TypeParam::update_at(&array, 7, 6), 5u);
  EXPECT_EQ(TypeParam::update_at(&array, 8, 6), 0u);
  EXPECT_EQ(TypeParam::update_at(&array, -1, 6), 0u);
  EXPECT_EQ(TypeParam::remove_at(&array, 7), 0u);
  EXPECT_EQ(array.count, 3);
  TypeParam::shrink(&array, 99);
  EXPECT_EQ(array.count, 8);
  EXPECT_EQ(TypeParam::remove_at(&array, 7), 6u);
  TypeParam::shrink(&array, -1);
  EXPECT_EQ(array.count, 7);
}

// ---- value pools

TYPED_TEST(Arrays, NewValuesAreInitialisedBlocksOfThePool) {
  const auto keys = this->distinct_keys(2);
  for (const bool owned : {false, true}) {
    Pool pool(24);
    Scoped<TypeParam> array(owned);
    if (!owned) array.pool = &pool;
    array.pool->block_size = 24;
    seen.clear();
    const uint64_t block = TypeParam::append_new(&array, keys[0], note);
    EXPECT_EQ(seen, std::vector{block});
    EXPECT_EQ(mub_pool_new(array.pool), words_of(block) + 3);
    EXPECT_EQ(TypeParam::entry(&array, 0).second, block);
    EXPECT_EQ(array.pool->live_count, 2);
    // Only a caller's pool gets single blocks back.
    TypeParam::free_at(&array, 0, note);
    EXPECT_EQ(seen, (std::vector{block, block}));
    EXPECT_EQ(array.pool->live_count, owned ? 2 : 1);

    for (const mub_free_fn release : {static_cast<mub_free_fn>(nullptr), static_cast<mub_free_fn>(note)}) {
      TypeParam::append_new(&array, keys[1], nullptr);
      TypeParam::shrink(&array, 3);
      seen.clear();
      TypeParam::free_all(&array, release);
      EXPECT_EQ(seen.size(), release != nullptr ? 1u : 0u);
      EXPECT_EQ(array.pool->live_count, owned ? 0 : 1);
    }
    EXPECT_EQ(array.count, 0);
    EXPECT_EQ(array.capacity, 0);
  }
}

TYPED_TEST(Arrays, InsertNewHandsOutTheBlockOrWhatIsThere) {
  const auto keys = this->distinct_keys(2);
  Scoped<TypeParam> array(true);
  array.pool->block_size = 8;
  uint64_t value = 1;
  seen.clear();
  EXPECT_EQ(TypeParam::insert_new(&array, keys[0], &value, note), 0);
  EXPECT_EQ(seen, std::vector{value});
  EXPECT_EQ(TypeParam::entry(&array, 0).second, value);

  Scoped<TypeParam> sorted(true);
  sorted.pool->block_size = 8;
  TypeParam::insert(&sorted, keys[0], 9);
  EXPECT_EQ(TypeParam::insert_new(&sorted, keys[0], &value, note), -1);
  EXPECT_EQ(value, TypeParam::stored(keys[0], 9));
  EXPECT_EQ(sorted.pool->live_count, 0);
  EXPECT_EQ(TypeParam::insert_new(&sorted, keys[1], &value, note), 1);
  EXPECT_EQ(TypeParam::entry(&sorted, 1).second, value);
  EXPECT_EQ(sorted.count, 2);
}

TYPED_TEST(Arrays, EntriesAreMadeWithoutABlockToo) {
  const auto keys = this->distinct_keys(1);
  for (const bool with_pool : {false, true}) {  // without a block size; one that cannot be allocated is none
    typename TypeParam::Record array;
    mub_test::Fuse(0, mub_test::Blow::kOnce).blows_in([&] { TypeParam::init(&array, with_pool); });
    EXPECT_EQ(array.pool, nullptr);
    EXPECT_EQ(array.own_pool, 0);
    if (with_pool) TypeParam::init(&array, 1);
    seen.clear();
    EXPECT_EQ(TypeParam::append_new(&array, keys[0], note), 0u);
    EXPECT_EQ(array.count, 1);
    TypeParam::remove_all(&array);
    uint64_t value = 1;
    EXPECT_EQ(TypeParam::insert_new(&array, keys[0], &value, note), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(array.count, 1);
    EXPECT_TRUE(seen.empty());
    TypeParam::term(&array);
  }
}

// ---- clones

struct Mending {
  const mub_pool_chunk *map;
  uint64_t source;
  mub_pool *source_pool;
  uint64_t copy;
  mub_pool *copy_pool;
};
std::vector<Mending> mended;
void note_mending(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool, uint64_t copy,
                  mub_pool *copy_pool) {
  mended.push_back({map, source, source_pool, copy, copy_pool});
}

TYPED_TEST(Arrays, ClonesTranslateTheBlocksOfAnOwnedPool) {
  Scoped<TypeParam> source(true);
  source.pool->block_size = 8;
  const auto keys = this->distinct_keys(40);
  for (const auto &key : keys) *words_of(TypeParam::append_new(&source, key, nullptr)) = 7;
  TypeParam::update_at(&source, 3, 12345);  // no block of the pool
  TypeParam::update_at(&source, 4, 0);
  Pool users(16), copied_users(16);
  uint64_t *user = static_cast<uint64_t *>(mub_pool_new(&users));
  user[0] = 99;
  Scoped<TypeParam> copy(true);
  TypeParam::append(&copy, keys[0], 1);

  mended.clear();
  TypeParam::clone(&source, &users, &copy, &copied_users, note_mending);
  ASSERT_EQ(copy.count, 40);
  EXPECT_GE(copy.capacity, source.capacity);
  ASSERT_EQ(mended.size(), 40u);
  EXPECT_NE(mended[0].map, nullptr);
  for (size_t i = 0; i < 40; ++i) {
    const auto [key, value] = TypeParam::entry(&copy, static_cast<int64_t>(i));
    if constexpr (!std::is_same_v<typename TypeParam::Record, mub_arrays>) {
      EXPECT_EQ(key, keys[i]);
    }
    EXPECT_EQ(mended[i].source, TypeParam::entry(&source, static_cast<int64_t>(i)).second);
    EXPECT_EQ(mended[i].copy, value);
    EXPECT_EQ(mended[i].copy_pool, &copied_users);
    if (i == 3 || i == 4) {
      EXPECT_EQ(value, 0u);
    } else {
      EXPECT_NE(value, mended[i].source);
      EXPECT_EQ(*words_of(value), 7u);
    }
  }
  EXPECT_EQ(copied_users.live_count, 1);
  EXPECT_EQ(*static_cast<uint64_t *>(copied_users.chunks[0]), 99u);
  TypeParam::clone(&source, nullptr, &copy, nullptr, note_mending);
  EXPECT_EQ(mended.back().map, nullptr);
  TypeParam::clone(&copy, nullptr, &copy, nullptr, note_mending);
  EXPECT_EQ(mended.size(), 80u);
}

TYPED_TEST(Arrays, ClonesShareACallersPool) {
  Pool pool(8);
  Scoped<TypeParam> source;
  source.pool = &pool;
  const auto keys = this->distinct_keys(9);
  for (const auto &key : keys) TypeParam::append(&source, key, 5);
  Scoped<TypeParam> copy(true);  // gives its pool up; a leak would show
  copy.pool->block_size = 8;
  TypeParam::append_new(&copy, keys[0], nullptr);
  mended.clear();
  TypeParam::clone(&source, nullptr, &copy, nullptr, note_mending);
  EXPECT_EQ(copy.pool, &pool);
  EXPECT_EQ(copy.own_pool, 0);
  EXPECT_EQ(entries_of<TypeParam>(copy), entries_of<TypeParam>(source));
  EXPECT_TRUE(mended.empty());

  // The other way round, blocks have no twins.
  Scoped<TypeParam> owning(true);
  owning.pool->block_size = 8;
  TypeParam::append_new(&owning, keys[0], nullptr);
  TypeParam::clone(&owning, nullptr, &copy, nullptr, nullptr);
  EXPECT_EQ(copy.count, 1);
  EXPECT_EQ(TypeParam::entry(&copy, 0).second, 0u);
  EXPECT_EQ(copy.pool, &pool);
}

TYPED_TEST(Arrays, ClonesWithoutMemoryStateTheCountAndHoldNothing) {
  const auto keys = this->distinct_keys(20);
  mub_test::for_every_allocation([&](const Fuse &fuse) {
    Pool users(16), copied_users(16);
    mub_pool_new(&users);
    Scoped<TypeParam> source(true);
    source.pool->block_size = 8;
    for (const auto &key : keys) TypeParam::append_new(&source, key, nullptr);
    Scoped<TypeParam> copy(true);
    copy.pool->block_size = 8;
    TypeParam::append_new(&copy, keys[0], nullptr);
    const bool failed =
        fuse.blows_in([&] { TypeParam::clone(&source, &users, &copy, &copied_users, note_mending); });
    EXPECT_EQ(copy.count, 20);
    if (!failed) return;
    EXPECT_EQ(copy.capacity, 0);
    EXPECT_EQ(copy.pool->live_count, 0);
    // Nothing steps behind the table; the next growth makes the entries real.
    EXPECT_EQ(TypeParam::find(&copy, keys[0]), 0u);
    EXPECT_EQ(TypeParam::bfind_index(&copy, keys[0]), -1);
    EXPECT_EQ(TypeParam::remove_at(&copy, 5), 0u);
    TypeParam::free_at(&copy, 5, note);
    EXPECT_EQ(copy.count, 20);
    TypeParam::append(&copy, keys[0], 3);
    EXPECT_EQ(copy.count, 21);
    EXPECT_EQ(TypeParam::entry(&copy, 19).second, 0u);
    EXPECT_EQ(TypeParam::entry(&copy, 20).second, TypeParam::stored(keys[0], 3));
  });
}

// ---- refused calls

TYPED_TEST(Arrays, WithoutMemoryCallsAreRefused) {
  using Record = typename TypeParam::Record;
  auto keys = this->distinct_keys(9);
  const auto last = keys[4];  // belongs inside, where a key is refused together with its entry
  keys.erase(keys.begin() + 4);
  const std::vector<std::function<void(Record *)>> operations = {
      [&](Record *a) { EXPECT_EQ(TypeParam::insert(a, last, 4), 1); },
      [&](Record *a) { TypeParam::insert_at(a, 2, last, 4); },
      [&](Record *a) {
        uint64_t value = 1;
        const int index = TypeParam::insert_new(a, last, &value, nullptr);
        EXPECT_EQ(index, value == 0 ? -1 : 4);
      },
      [&](Record *a) { TypeParam::append_array(a, a); },
      [&](Record *a) {
        const int made = TypeParam::expand(a, 1000);
        EXPECT_EQ(a->capacity, made ? 1000 : 8);
      },
  };
  for (size_t i = 0; i < operations.size(); ++i) {
    SCOPED_TRACE(i);
    mub_test::for_every_allocation([&](const Fuse &fuse) {
      Scoped<TypeParam> array(true);
      array.pool->block_size = 8;
      mub_pool_free(array.pool, mub_pool_new(array.pool));  // the pool itself shall not fail
      for (size_t k = 0; k < 8; ++k) TypeParam::insert(&array, keys[k], k + 1);
      const auto before = entries_of<TypeParam>(array);
      if (fuse.blows_in([&] { operations[i](&array); })) {
        EXPECT_EQ(entries_of<TypeParam>(array), before);
        EXPECT_EQ(array.pool->live_count, 0);
      }
      EXPECT_TRUE(TypeParam::keys_are_packed(&array));
    });
  }
}

}  // namespace
