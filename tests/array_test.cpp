// What all kinds of arrays have in common, each through its own functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <tuple>
#include <utility>
#include <vector>

#include "mub_array.h"
#include "support/array_kinds.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

template <class Word>
uint64_t word_of(Word word) {
  if constexpr (std::is_pointer_v<Word>) {
    return reinterpret_cast<uintptr_t>(word);
  } else {
    return static_cast<uint64_t>(word);
  }
}

template <class A>
constexpr bool kIsByteKeyed = std::is_same_v<A, ByteKeyed>;
template <class A>
constexpr bool kIsItems = std::is_same_v<typename A::Record, mub_arrays>;

template <class Kind>
class Arrays : public ::testing::Test {};
using Kinds = ::testing::Types<ByteKeyed, Keyed32, Keyed64, ItemsBy<false>, ItemsBy<true>,
                               ItemsBy<false, false>, ItemsBy<true, false>>;
TYPED_TEST_SUITE(Arrays, Kinds);

// ---- against a model: all slots of the table, as the steps of each operation leave them

template <class A>
struct Model {
  using Key = typename A::Key;
  using Entry = std::pair<Key, uint64_t>;
  bool descending;
  std::vector<Entry> slots = {};
  int64_t count = 0;

  int64_t capacity() const { return static_cast<int64_t>(slots.size()); }
  Entry &operator[](int64_t index) { return slots[static_cast<size_t>(index)]; }

  void expand(int64_t wanted) {
    if (capacity() >= wanted) return;
    const int64_t grown = std::max(capacity() + std::max<int64_t>(count / 2, 8), wanted);
    slots.resize(static_cast<size_t>((grown + 3) / 4 * 4));
  }
  // The slot of the key, or -1, and where it would be inserted, or -1: where halving ends, in whatever order.
  std::pair<int64_t, int64_t> search(const Key &key) {
    if (!A::kIsOrdered) return {-1, count};
    int64_t insertion = 0;
    for (int64_t low = 0, high = count - 1; low <= high;) {
      const int64_t middle = (low + high) / 2;
      const int order = A::order((*this)[middle].first, key);
      if (order == 0) return {middle, -1};
      const bool right = (order < 0) != descending;
      (right ? low : high) = right ? middle + 1 : middle - 1;
      insertion = right ? middle + 1 : middle;
    }
    return {-1, insertion};
  }
  // When memory ran out, `reached` tells whether for the table, which refuses the call, or for the key's
  // bytes, which appends an empty key and refuses insertions.
  bool insert_at(int64_t index, Entry entry, bool failed, int64_t reached, bool appends = false) {
    if (index < 0 || (failed && reached <= count)) return false;
    expand(count + 1);
    if (index < count && kIsByteKeyed<A> && entry.first == Key()) return false;
    if (failed && !appends) return false;
    if (failed) entry.first = Key();
    slots.erase(slots.begin() + count);
    slots.insert(slots.begin() + std::min(index, count++), entry);
    return true;
  }
  uint64_t remove_at(int64_t index) {
    if (index < 0 || index >= count) return 0;
    const uint64_t value = (*this)[index].second;
    std::copy(slots.begin() + index + 1, slots.begin() + count--, slots.begin() + index);
    return value;
  }
  uint64_t put(int64_t index, const Entry &entry) {
    return index < 0 || index >= capacity() ? 0 : std::exchange((*this)[index], entry).second;
  }
};

template <class A>
void expect_agreement(Scoped<A> &array, Model<A> &model, const typename A::Key &key) {
  ASSERT_EQ(array.count, model.count);
  ASSERT_EQ(array.capacity, model.capacity());
  for (int64_t i = 0; i < model.capacity(); ++i) {
    const auto [own_key, value] = A::entry(&array, i);
    ASSERT_EQ(value, model[i].second);
    ASSERT_TRUE(i >= model.count || own_key == model[i].first);  // a spare slot's bytes may have moved
  }
  const auto [hit, gap] = model.search(key);
  const int64_t nearest = A::kIsOrdered ? std::min(std::max(hit, gap), model.count - 1) : -1;
  ASSERT_EQ(call<kFind>(array, key), hit < 0 ? 0 : model[hit].second);
  ASSERT_EQ(call<kFindIndex>(array, key), hit);
  ASSERT_EQ(call<kBfind>(array, key), nearest < 0 ? 0 : model[nearest].second);
  ASSERT_EQ(call<kBfindIndex>(array, key), nearest);
  if constexpr (!kIsItems<A>) {
    ASSERT_EQ(call<kEntryFind>(array, key), hit < 0 ? nullptr : array.entries + hit);
    int64_t first = 0;
    while (first < model.count && model[first].first != key) ++first;
    ASSERT_EQ(call<kAfindIndex>(array, key), first < model.count ? first : -1);
    ASSERT_EQ(call<kAfind>(array, key), first < model.count ? model[first].second : 0);
  }
}

// Gives the pool a chunk of blocks, so that taking one never fails.
constexpr uint64_t kBlocks = 4096;
void stock(mub_pool *pool) {
  if (pool == nullptr) return;
  pool->block_size = 8;
  pool->blocks_per_chunk = kBlocks;
  mub_pool_free(pool, mub_pool_new(pool));
}

void note_mending(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool, uint64_t copy,
                  mub_pool *copy_pool) {
  seen.insert(seen.end(), {map != nullptr, source, word_of(source_pool), copy, word_of(copy_pool)});
}

// A clone that ran out of memory states the count and holds nothing; the next growth makes the entries real.
template <class A>
void expect_no_clone(Scoped<A> &copy, int64_t count, bool owned) {
  Scoped<A> other;
  EXPECT_EQ(copy.capacity + (owned ? copy.pool->live_count : 0), 0);
  EXPECT_EQ(call<kFindIndex>(copy, A::key(0)), -1);
  EXPECT_EQ(call<kBfindIndex>(copy, A::key(0)), -1);
  EXPECT_EQ(call<kRemoveAt>(copy, 0), 0u);
  call<kFreeAt>(copy, 0, note);
  call<kAppendArray>(other, &copy);
  EXPECT_EQ(other.count, 0);
  call<kAppend>(copy, std::pair(A::key(0), uint64_t{3}));
  EXPECT_EQ(copy.count, count + 1);
  EXPECT_EQ(A::entry(&copy, count), A::made(A::key(0), 3));
  EXPECT_EQ(seen, Words());
}

// Clones into an array that holds something already, and has a pool of its own or of a caller's.
template <class A>
void expect_clone(Scoped<A> &array, Model<A> &model, bool copy_owns, int64_t allowed) {
  Pool users(16), copied_users(16);
  mub_pool *const given = allowed % 2 == 0 ? &users : nullptr;
  mub_pool_new(&users);
  Fuse(0, Blow::kOnce).blows_in([] {
    const Scoped<A> without_pool(true);
    EXPECT_TRUE(without_pool.pool == nullptr && without_pool.own_pool == 0);
  });
  Scoped<A> copy(copy_owns);
  if (!copy_owns) copy.pool = &users;
  copy.pool->block_size = 16;
  call<kAppendNew>(copy, A::key(0), nullptr);
  const bool owned = array.own_pool != 0, twins = owned && copy_owns;
  const bool failed = Fuse(allowed, Blow::kOnce).blows_in([&] {
    call<kClone>(array, given, &copy, &copied_users, note_mending);
  });
  EXPECT_EQ(copy.count, array.count);
  EXPECT_EQ(copy.own_pool, twins);
  EXPECT_EQ(copy.pool == array.pool, !owned);
  if (failed) return expect_no_clone(copy, array.count, twins);
  EXPECT_EQ(copied_users.live_count, given != nullptr ? users.live_count : 0);
  EXPECT_GE(copy.capacity, array.capacity);
  Words mended;
  for (int64_t i = 0; i < array.count; ++i) {
    const auto [key, value] = model[i];
    const uint64_t offset = twins ? value - word_of(array.pool->chunks[0]) : UINT64_MAX;
    const uint64_t twin = offset < kBlocks * 8 ? word_of(copy.pool->chunks[0]) + offset : 0;
    ASSERT_EQ(A::entry(&copy, i), A::made(key, owned ? twin : value));
    if (owned)
      mended.insert(mended.end(), {given != nullptr, value, word_of(given), twin, word_of(&copied_users)});
  }
  EXPECT_EQ(seen, mended);
  call<kClone>(copy, nullptr, &copy, nullptr, note_mending);
  EXPECT_EQ(seen, mended);
}

template <int kOperation>
constexpr std::integral_constant<int, kOperation> op{};

// Initialisers meet the array without the new entry, but the block where it is handed out.
const int64_t *watched_count;
int64_t count_before;
uint64_t out;
void watch(uint64_t block) {
  seen = {block};
  EXPECT_EQ(*watched_count, count_before);
  EXPECT_TRUE(out == 1 || out == block);
}

// In turn without a pool, with a caller's and with an owned one, ascending and descending, and keeping the order of
// the keys or not.
TYPED_TEST(Arrays, AgreeWithAModelAlsoWhenMemoryRunsOut) {
  using A = TypeParam;
  for (uint64_t number = 0; number < 12; ++number) {
    Random random(number);
    const bool owned = number % 3 == 2;
    Pool pool(8);
    Scoped<A> array(owned, number / 3 % 2);
    if (number % 3 == 1) array.pool = &pool;
    stock(array.pool);
    Model<A> model{array.descending != 0};
    watched_count = &array.count;
    // What the next operation is given: a key in slot `hit` or missing at `gap`, a new entry, any index.
    typename A::Key key;
    typename A::Passed k = {};
    std::pair<typename A::Passed, uint64_t> pair;
    typename Model<A>::Entry entry;
    uint64_t word = 0, result = 0;
    int64_t hit = 0, gap = 0, index = 0, live = 0;
    const int64_t &count = count_before;
    bool failed = false;

    const auto noted = [&] { return seen.empty() ? 0 : seen[0]; };
    const auto run = [&](auto operation, auto... args) {
      const Fuse fuse = random_fuse(random, 4);
      failed = fuse.blows_in([&] {
        if constexpr (std::is_void_v<decltype(call<operation>(array, args...))>) {
          call<operation>(array, args...);
          result = noted();
        } else {
          result = word_of(call<operation>(array, args...));
        }
      });
    };
    const auto expect = [&](auto value) { EXPECT_EQ(result, word_of(value)); };
    const auto add = [&](int64_t at, bool appends = false) {
      return model.insert_at(at, entry, failed, array.capacity, appends);
    };
    const auto add_new = [&](int64_t at, bool appends = false) {
      entry = A::made(key, noted());
      const bool added = add(at, appends);
      live += added;
      return added;
    };
    const auto expect_released = [&](uint64_t value) {
      expect(value);
      live -= value != 0 && !owned;
    };
    const std::function<void()> operations[] = {
        [&] { run(op<kInsert>, pair), add(gap), expect(hit < 0); },
        [&] { run(op<kInsertNew>, k, &out, watch), expect(add_new(gap) ? gap : -1); },
        [&] { run(op<kUpdate>, pair), expect(model.put(hit, entry)); },
        [&] { run(op<kRemove>, k), expect(model.remove_at(hit)); },
        [&] { run(op<kFree>, k, note), expect_released(model.remove_at(hit)); },
        [&] { run(op<kRemoveAt>, index), expect(model.remove_at(index)); },
        [&] { run(op<kFreeAt>, index, note), expect_released(model.remove_at(index)); },
        [&] {
          if (index >= 0 && index < model.capacity()) entry = A::made(model[index].first, word);
          run(op<kUpdateAt>, index, word), expect(model.put(index, entry));
        },
        [&] {
          if constexpr (!kIsItems<A>) {
            entry.second = 0;
            run(op<kEntryInsert>, k);
            const int64_t at = add(gap) ? gap : hit;
            expect(at < 0 ? nullptr : array.entries + at);
          }
        },
        [&] {
          Scoped<A> other;
          call<kSwap>(array, &other);
          EXPECT_EQ(array.count, 0);
          EXPECT_EQ(other.count, count);
          EXPECT_EQ(array.descending != 0, model.descending);
          EXPECT_EQ(other.own_pool, kIsItems<A> && owned);
          EXPECT_EQ(array.pool == nullptr, kIsItems<A> || number % 3 == 0);
          call<kSwap>(array, &other);
        },
        [&] {
          if (!random.one_in(30)) return;
          const int64_t way = random.below(3);
          if (way == 0) call<kRemoveAll>(array);
          if (way != 0) call<kFreeAll>(array, way == 1 ? note : nullptr);
          Words released;
          for (int64_t i = 0; i < count; ++i) {
            if (model[i].second != 0) released.push_back(model[i].second);
          }
          EXPECT_EQ(seen, way == 1 ? released : Words());
          live = owned ? 0 : live - static_cast<int64_t>(way == 0 ? 0 : released.size());
          model = {model.descending};
          stock(array.pool);
        },
        [&] {
          if (random.one_in(4)) expect_clone(array, model, random.one_in(2), random.below(20));
        },
        // Those that do not keep the order.
        [&] { run(op<kAppend>, pair), add(count, true); },
        [&] { run(op<kAppendNew>, k, watch), expect(add_new(count, true) ? noted() : 0); },
        [&] { run(op<kInsertAt>, index, pair), add(index); },
        [&] {
          if (index < count) run(op<kSetAt>, index, pair), expect(failed ? 0 : model.put(index, entry));
        },
        [&] {
          if (count > 60 || random.one_in(2)) return;
          run(op<kAppendArray>, &array);
          if (!failed || array.capacity >= 2 * count) model.expand(2 * count);
          if (failed) return;
          std::copy_n(model.slots.begin(), count, model.slots.begin() + count);
          model.count *= 2;
        },
    };
    for (int step = 0; step < 1000; ++step) {
      count_before = model.count;
      key = count == 0 || random.one_in(2) ? A::random_key(random) : model[random.below(count)].first;
      k = key;
      if constexpr (kIsByteKeyed<A>) {
        if (random.one_in(4)) {
          const std::string_view own(reinterpret_cast<char *>(array.keys.data),
                                     static_cast<size_t>(array.keys.length));
          key = k = own.substr(random.word() % (own.size() + 1), random.word() % 300);
        }
      }
      if constexpr (kIsItems<A>) {
        word = k = key ^= random.word() & 0xFF;  // which find the same item
      } else {
        word = random.one_in(8) ? 0 : random.word() | 1;
      }
      pair = {k, word};
      entry = A::made(key, word);
      std::tie(hit, gap) = model.search(key);
      index = random.below(random.one_in(2) ? count + 3 : model.capacity() + 3) - 1;
      seen.clear();
      out = 1;
      operations[random.below(random.one_in(2) ? 2 : number < 6 ? 12 : 17)]();
      ASSERT_NO_FATAL_FAILURE(expect_agreement(array, model, key));
      ASSERT_EQ(array.pool == nullptr ? live : array.pool->live_count, live);
      ASSERT_FALSE(this->HasFailure());
    }
  }
}

// Beyond what the model runs reach.
TYPED_TEST(Arrays, GrowByAtMost65536SlotsUnlessMoreAreWanted) {
  using A = TypeParam;
  Scoped<A> array;
  constexpr int64_t kSteps[][3] = {{0, 9, 12},
                                   {0, 131072, 131072},
                                   {131070, 131073, 196608},
                                   {INT64_MAX, 196609, 262144},
                                   {18, 262145, 262156}};
  for (const auto &[count, wanted, grown] : kSteps) {
    call<kShrink>(array, count);
    call<kShrink>(array, -1);
    EXPECT_EQ(array.count, std::min(count, array.capacity));
    EXPECT_EQ(call<kExpand>(array, wanted), 1);
    EXPECT_EQ(call<kExpand>(array, INT64_MAX - count % 4), 0);
    EXPECT_EQ(call<kExpand>(array, int64_t{1} << 60), 0);
    EXPECT_EQ(call<kExpand>(array, INT64_MIN), 1);
    EXPECT_EQ(array.capacity, grown);
  }
}

}  // namespace
