// Hash tables under programs: see maps.h.
#include "hash_ops.inc"

#include <array>

#include "interpreter/maps.h"

namespace mub_test {

using FourWords = std::array<uint32_t, 4>;

// All words but one are alike; the keys of a group differ in one of the four places.
template <>
FourWords hard_number<FourWords>(int64_t n) {
  FourWords words;
  words.fill(n % 8 < 4 ? 0 : ~uint32_t{0});
  words[static_cast<size_t>(n) % 4] = static_cast<uint32_t>(n / 8 + 1);
  return words;
}
// What says in which bucket a key is: its hash, or a number itself.
uint64_t word_of(const std::string &text) {
  return mub_hash_key(text.data(), static_cast<int64_t>(text.size()), 0);
}
uint64_t word_of(const FourWords &words) { return mub_hasht_key(words.data()); }
uint64_t word_of(uint64_t number) { return number; }
int64_t bucket_of(const auto &table, const auto &text) {
  return static_cast<int64_t>(word_of(text) & static_cast<uint64_t>(table.buckets.count - 1));
}

template <class R, class E, class Keys>
struct HashKind : MapKind<R, E, Keys> {
  static constexpr bool kIsOrdered = false, kTermLeavesEntries = true;
  static constexpr bool kHandsOutFirst = true;  // the out value has the block before its initialiser runs
  static constexpr int64_t kEntryBytes = sizeof(E), kNodeBytes = 8;
  static int64_t entries_of(const R &table) { return table.count; }

  // Invariants 1 to 4 of the engine. A key that was added twice would be in the same chain.
  static void read(R &table, typename HashKind::Content expected, typename HashKind::Content &content) {
    const int64_t buckets = table.buckets.count;
    ASSERT_TRUE(buckets == 0 ||
                (buckets >= 4 && (buckets & (buckets - 1)) == 0 && buckets <= table.buckets.capacity));
    std::vector<E *> entries;
    for (int64_t bucket = 0; bucket < buckets; ++bucket) {
      int64_t last = 0;
      for (auto *entry = reinterpret_cast<E *>(table.buckets.items[bucket]); entry != nullptr;
           entry = entry->next) {
        ItemOf<R> *item = expected.find(Keys::text_of(table, *entry));
        ASSERT_NE(item, nullptr) << "a key that was not added";
        ASSERT_EQ(bucket_of(table, item->text), bucket);
        if constexpr (requires { entry->hash; }) {
          ASSERT_EQ(entry->hash, word_of(item->text));
        }
        ASSERT_LT(last, item->sequence) << "chains hold the oldest first";
        last = item->sequence;
        item->entry = entry;
        item->value = entry->value;
        entries.push_back(entry);
      }
    }
    Keys::check_store(table, entries);
    ASSERT_EQ(table.count, static_cast<int64_t>(entries.size()));
    ASSERT_TRUE(table.count == 0 || table.count < 2 * buckets || !expected.fits);
    if (entries.empty()) return;
    ASSERT_EQ(entries.size(), expected.size());
    content = std::move(expected);
  }
};
template <>
struct Kind<mub_hash> : HashKind<mub_hash, mub_hash_entry, ByteKeys<mub_hash>> {};
template <>
struct Kind<mub_hashd> : HashKind<mub_hashd, mub_hashd_entry, NumberKeys<mub_hashd, uint32_t>> {};
template <>
struct Kind<mub_hashx> : HashKind<mub_hashx, mub_hashx_entry, NumberKeys<mub_hashx, uint64_t>> {};
template <>
struct Kind<mub_hasht> : HashKind<mub_hasht, mub_hasht_entry, NumberKeys<mub_hasht, FourWords>> {};

// ---- operations of hash tables alone

template <class R>
void check(op::free_, WorldOf<R> &, Self<R> &self, Key<R> &key, Free &release, auto result) {
  const ItemOf<R> *item = self.slot.content.find(key.text);
  EXPECT_EQ(result, item != nullptr ? &self.slot.record : nullptr);
  EXPECT_EQ(seen, item != nullptr && release.is_given ? Words{item->value} : Words());
  if (self.slot.owns_values() && value_of(item) != 0) ++self.slot.blocks_left;
  self.slot.content.remove(key.text);
}
template <class R>
void by_hand(op::expand_, WorldOf<R> &world, auto expand) {
  R &table = Self<R>(world).slot.record;
  const int64_t buckets = table.buckets.count;
  world.call([&] { expand(&table); });
  EXPECT_TRUE(world.failed || table.buckets.count == 2 * buckets);
}
template <class R>
void check(op::insert_t_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Out<int> &inserted, auto *result) {
  expect_node_set(world, self.slot, key, result, *inserted.value);
}
// A negative length finds nothing in the low layer.
template <class R>
bool is_measured(const Key<R> &key) {
  if constexpr (requires { key.length; }) return key.length < 0;
  return false;
}
template <class R>
void check(op::find_t_, WorldOf<R> &, Self<R> &self, Key<R> &key, auto *result) {
  expect_node<R>(result, is_measured(key) ? nullptr : self.slot.content.find(key.text));
}
// Ends an entry that was taken out of its chain.
template <class R>
void end_entry(WorldOf<R> &world, Slot<R> &slot, typename Kind<R>::Node *entry) {
  world.give_back(slot, entry->value);
  --slot.record.count;
  mub_pool_free(slot.record.entry_pool, entry);
}
// The entry keeps its fields while it is held, whatever else is removed.
template <class R>
void check(op::remove_t_, WorldOf<R> &world, Self<R> &self, Key<R> &key, auto *result) {
  check(op::find_t_(), world, self, key, result);
  if (result == nullptr) return;
  const auto held = *result;
  EXPECT_EQ(held.next, nullptr);
  self.slot.content.remove(key.text);
  remove_keys(world, self);
  EXPECT_EQ(std::memcmp(result, &held, sizeof held), 0);
  end_entry(world, self.slot, result);
}
// With the bucket and the hash that a key has, the low layer agrees with the rest. Key bytes are the caller's
// to cut.
template <class R>
void by_hand(OneOf<op::entry_find_, op::entry_remove_, op::entry_new_, op::adjust_t_> auto, WorldOf<R> &world,
             auto) {
  using F = Functions<R>;
  constexpr bool kHasBytes = std::is_same_v<R, mub_hash>;
  Self<R> self(world);
  const Key<R> key(world);
  R &table = self.slot.record;
  if (table.buckets.count < 1 || is_measured(key)) return;
  const auto call = [&](auto function, auto... more) {
    const int64_t bucket = bucket_of(table, key.text);
    if constexpr (kHasBytes) {
      return call_with(function, &table, bucket, static_cast<uint32_t>(word_of(key.text)), key, more...);
    } else {
      return call_with(function, &table, bucket, key, more...);
    }
  };
  auto *found = world.read_by_all([&] { return call(F::entry_find_); });
  expect_node<R>(found, self.slot.content.find(key.text));
  if (found == nullptr) return;
  int inserted = 7;
  EXPECT_TRUE(call(F::entry_new_, &inserted) == found && inserted == 0);
  EXPECT_TRUE(call(F::entry_remove_) == found && found->next == nullptr);
  self.slot.content.remove(key.text);
  if constexpr (kHasBytes) {
    mub_stream_delete(&table.keys, found->key_offset, found->key_length);
    F::adjust_t_(&table, found->key_offset, found->key_length);
  }
  end_entry(world, self.slot, found);
}

// All entries are met, each once. Before the first bucket are all of them, after the last one none.
template <class R>
void by_hand(OneOf<op::entry_first_, op::entry_next_> auto, WorldOf<R> &world, auto) {
  Slot<R> &slot = Self<R>(world).slot;
  const int64_t before_first = world.program.one_in(2) ? -1 : INT64_MIN;
  world.read_by_all([&] {
    std::vector<void *> met, expected;
    int64_t bucket = 77;
    for (auto *entry = Functions<R>::entry_first_(&slot.record, &bucket); entry != nullptr;
         entry = Functions<R>::entry_next_(&slot.record, &bucket, entry)) {
      ASSERT_LE(met.size(), slot.content.size());
      met.push_back(entry);
    }
    for (const auto &item : slot.content) expected.push_back(item.entry);
    EXPECT_TRUE(std::ranges::is_permutation(met, expected));
    const typename Kind<R>::Node last = {};
    const int64_t end = bucket = slot.record.buckets.count - 1;
    EXPECT_EQ(Functions<R>::entry_next_(&slot.record, &bucket, &last), nullptr);
    EXPECT_EQ(bucket, end);
    bucket = before_first;
    EXPECT_EQ(Functions<R>::entry_next_(&slot.record, &bucket, &last), met.empty() ? nullptr : met[0]);
  });
}

// The table is to be ended next: it still counts entries that went back to their pool.
template <class R>
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_> auto, WorldOf<R> &world, auto empty) {
  Self<R> self(world);
  R &table = self.slot.record;
  const int64_t live = table.entry_pool->live_count;
  release_by(empty, world, self, values_of(self.slot.content));
  EXPECT_EQ(table.count, static_cast<int64_t>(self.slot.content.size()));
  const bool stays = std::is_invocable_v<decltype(empty), R *, mub_free_fn> && self.slot.owns_entries();
  EXPECT_EQ(table.entry_pool->live_count, live - (stays ? 0 : table.count));
  Functions<R>::term_(&table);
  self.slot.forget_all();
  world.start(self.slot);
}
// ---- keys

// The bytes of texts and numbers, in which the lowest comes first.
template <class T>
std::string bytes_of(const T &key) {
  std::string bytes;
  if constexpr (std::is_integral_v<T>) {
    for (size_t i = 0; i < sizeof key; ++i) bytes += static_cast<char>(key >> 8 * i);
  } else {
    for (const auto part : key) bytes += bytes_of(part);
  }
  return bytes;
}
// The CRC register from its definition, bit by bit, started at 0.
template <class R>
void by_hand(op::key_, WorldOf<R> &world, auto hash_of) {
  const Self<R> self(world);
  const Key<R> key(world);
  uint32_t crc = 0;
  for (const char c : bytes_of(key.text)) {
    crc ^= static_cast<uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0);
  }
  if constexpr (requires { self.slot.record.nocase; }) {
    EXPECT_EQ(call_with(hash_of, key, self.slot.record.nocase), crc);
  } else {
    EXPECT_EQ(call_with(hash_of, key), crc);
  }
}
// Words differ by the wrapped difference of the first ones that do.
template <class R>
void by_hand(op::cmp_, WorldOf<R> &world, auto compare) {
  const Self<R> self(world);
  const Key<R> a(world), b(world);
  if constexpr (std::is_same_v<R, mub_hash>) {
    EXPECT_EQ(compare(a.bytes.data(), static_cast<int64_t>(a.bytes.size()), b.bytes.data(),
                      static_cast<int64_t>(b.bytes.size())),
              a.bytes == b.bytes ? 1 : 0);
  } else {
    const auto [x, y] = std::ranges::mismatch(a.key, b.key);
    EXPECT_EQ(call_with(compare, a, b), x == a.key.end() ? 0 : static_cast<int>(*x - *y));
  }
}
template <class R>
void by_hand(op::copy_, WorldOf<R> &world, auto copy) {
  const Self<R> self(world);
  const Key<R> key(world);
  FourWords words = {};
  call_with(copy, words.data(), key);
  EXPECT_EQ(words, key.key);
}

}  // namespace mub_test

#include "hash_steps.inc"
