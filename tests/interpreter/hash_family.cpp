// Programs for hash tables: see maps.h.
#include "hash_ops.inc"

#include <array>

#include "crc32/crc32.h"
#include "interpreter/maps.h"

namespace mub_test {

using FourWords = std::array<uint32_t, 4>;

// All words but one are equal; the keys of a group differ in one of the four words.
template <>
FourWords hard_number<FourWords>(int64_t n) {
  FourWords words;
  words.fill(n % 8 < 4 ? 0 : ~uint32_t{0});
  words[static_cast<size_t>(n) % 4] = static_cast<uint32_t>(n / 8 + 1);
  return words;
}
// The bytes of a key; numbers in little-endian order.
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
// bytes_test.cpp compares the key hash with a bitwise CRC-32.
uint32_t hash_of(const auto &key) {
  const std::string bytes = bytes_of(key);
  return mub::key_hash(bytes.data(), static_cast<int64_t>(bytes.size()));
}
// The number that selects the bucket: the hash of a key, or an integer key itself.
uint64_t word_of(const auto &key) { return hash_of(key); }
uint64_t word_of(const std::integral auto &number) { return number; }
int64_t bucket_of(const auto &table, const auto &text) {
  return static_cast<int64_t>(word_of(text) & static_cast<uint64_t>(table.buckets.count - 1));
}

template <class R, class E, class Keys>
struct HashKind : MapKind<R, E, Keys> {
  static constexpr bool kIsOrdered = false, kTermLeavesEntries = true, kStoresOutBeforeInit = true;
  static constexpr int64_t kEntryBytes = sizeof(E), kNodeBytes = 8;
  static int64_t entries_of(const R &table) { return table.count; }

  // The order of the chains, and the length that they may have.
  static void read(R &table, typename HashKind::Content expected, typename HashKind::Content &content) {
    const int64_t buckets = table.buckets.count;
    ASSERT_TRUE(table.count == 0 || table.count < 2 * buckets || !expected.fits);
    for (int64_t bucket = 0; bucket < buckets; ++bucket) {
      int64_t last = 0;
      for (auto *entry = reinterpret_cast<E *>(table.buckets.items[bucket]); entry != nullptr;
           entry = entry->next) {
        auto *item = expected.find(Keys::text_of(table, *entry));
        ASSERT_NE(item, nullptr) << "a key that was not added";
        ASSERT_LT(last, item->sequence) << "chains hold the oldest first";
        last = item->sequence;
        item->entry = entry;
        item->value = entry->value;
      }
    }
    if (table.count == 0) return;
    ASSERT_EQ(table.count, static_cast<int64_t>(expected.size()));
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

// ---- operations only of hash tables

void check(op::free_, auto &, auto &self, auto &key, Free &release, auto result) {
  const auto *item = self.slot.content.find(key.text);
  EXPECT_EQ(result, item != nullptr ? &self.slot.record : nullptr);
  EXPECT_EQ(seen, item != nullptr && release.is_given ? Words{item->value} : Words());
  if (self.slot.owns_values() && value_of(item) != 0) ++self.slot.blocks_left;
  self.slot.content.remove(key.text);
}
void by_hand(op::expand_, auto &world, auto &slot, auto expand) {
  auto &table = slot.record;
  const int64_t buckets = table.buckets.count;
  world.call([&] { expand(&table); });
  EXPECT_TRUE(world.failed || table.buckets.count == 2 * buckets);
}
void check(op::insert_t_, auto &world, auto &self, auto &key, Out<int> &inserted, auto *result) {
  expect_node_set(world, self.slot, key, result, *inserted.value);
}
// In the building blocks, a negative length finds nothing.
void check(op::find_t_, auto &, auto &self, auto &key, auto *result) {
  expect_node(result, key.length < 0 ? nullptr : self.slot.content.find(key.text));
}
// Releases an entry that was removed from its chain.
void end_entry(auto &world, auto &slot, auto *entry) {
  world.give_back(slot, entry->value);
  --slot.record.count;
  mub_pool_free(slot.record.entry_pool, entry);
}
// The removed entry is not changed by further removals.
void check(op::remove_t_, auto &world, auto &self, auto &key, auto *result) {
  check(op::find_t_(), world, self, key, result);
  if (result == nullptr) return;
  const auto held = *result;
  EXPECT_EQ(held.next, nullptr);
  self.slot.content.remove(key.text);
  remove_keys(world, self.slot);
  EXPECT_EQ(std::memcmp(result, &held, sizeof held), 0);
  end_entry(world, self.slot, result);
}
// A new entry is the last of its chain and has no key yet. Tables with byte-string keys do not clear it.
void undo_entry_new(auto &table, int64_t bucket, auto *entry) {
  if (entry == nullptr) return;
  constexpr bool kHasBytes = requires { table.keys; };
  EXPECT_TRUE(entry->next == nullptr && (kHasBytes || entry->value == 0));
  auto **link = reinterpret_cast<decltype(&entry)>(&table.buckets.items[bucket]);
  while (*link != entry) link = &(*link)->next;
  *link = nullptr;
  mub_pool_free(table.entry_pool, entry);
}
// With the right bucket and hash, the building blocks agree with the other functions. The caller must remove
// the key bytes.
void by_hand(OneOf<op::entry_find_, op::entry_remove_, op::entry_new_> auto, auto &world, auto &slot, auto) {
  const Key key(world);
  const auto &f = slot.f;
  auto &table = slot.record;
  if (table.buckets.count < 1 || key.length < 0) return;
  const auto call = [&](auto function, auto... more) {
    const int64_t bucket = bucket_of(table, key.text);
    if constexpr (requires { table.keys; }) {
      return call_with(function, &table, bucket, hash_of(key.text), key, more...);
    } else {
      return call_with(function, &table, bucket, key, more...);
    }
  };
  auto *found = world.read_by_all([&] { return call(f.entry_find_); });
  expect_node(found, slot.content.find(key.text));
  int inserted = 7;
  auto *entry = world.call([&] { return call(f.entry_new_, &inserted); });
  EXPECT_EQ(inserted, found == nullptr && !world.failed ? 1 : 0);
  EXPECT_TRUE(found == nullptr ? world.failed == (entry == nullptr) : entry == found);
  if (found == nullptr) return undo_entry_new(table, bucket_of(table, key.text), entry);
  EXPECT_TRUE(call(f.entry_remove_) == found && found->next == nullptr);
  slot.content.remove(key.text);
  if constexpr (requires { table.keys; }) {
    mub_stream_delete(&table.keys, found->key_offset, found->key_length);
    f.adjust_t_(&table, found->key_offset, found->key_length);
  }
  end_entry(world, slot, found);
}

// The walk visits every entry once. From before the first bucket it finds all entries, after the last one
// none.
void by_hand(OneOf<op::entry_first_, op::entry_next_> auto, auto &world, const auto &slot, auto) {
  const int64_t end = world.program.one_in(2) ? INT64_MAX : slot.record.buckets.count - 1;
  world.read_by_all([&] {
    std::vector<void *> met, expected;
    int64_t bucket = 77;
    for (auto *entry = slot.f.entry_first_(&slot.record, &bucket); entry != nullptr;
         entry = slot.f.entry_next_(&slot.record, &bucket, entry)) {
      ASSERT_LE(met.size(), slot.content.size());
      met.push_back(entry);
    }
    for (const auto &item : slot.content) expected.push_back(item.entry);
    EXPECT_TRUE(std::ranges::is_permutation(met, expected));
    const std::remove_pointer_t<decltype(slot.f.entry_first_(nullptr, nullptr))> last = {};
    bucket = end;
    EXPECT_EQ(slot.f.entry_next_(&slot.record, &bucket, &last), nullptr);
    EXPECT_EQ(bucket, end);
    bucket = end == INT64_MAX ? INT64_MIN : -1;
    EXPECT_EQ(slot.f.entry_next_(&slot.record, &bucket, &last), met.empty() ? nullptr : met[0]);
  });
}

// The table must be terminated next: its count still includes entries that were returned to their pool.
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_> auto, auto &world, auto &slot, auto empty) {
  auto &table = slot.record;
  const int64_t live = table.entry_pool->live_count;
  release_by(empty, world, slot, values_of(slot.content));
  EXPECT_EQ(table.count, std::ssize(slot.content));
  const bool stays =
      std::is_invocable_v<decltype(empty), decltype(&table), mub_free_fn> && slot.owns_entries();
  EXPECT_EQ(table.entry_pool->live_count, live - (stays ? 0 : table.count));
  slot.f.term_(&table);
  world.start(slot);
}

// ---- keys

// role int nocase = Drawn<int, draw_nocase>
constexpr auto draw_nocase = [](auto &world) { return int{world.self->record.nocase}; };

void check(op::key_, auto &, auto &key, auto result) { EXPECT_EQ(result, hash_of(key.text)); }
void check(op::key_, auto &, auto &key, auto &, auto result) { EXPECT_EQ(result, hash_of(key.text)); }
// role const void \* [ab];int64_t [ab]_length = Key<%s>
// role const uint32_t \* [ab] = Key<%s>

// The result is the wrapped difference of the first words that differ.
void check(op::cmp_, auto &, auto &a, auto &b, int result) {
  if constexpr (requires { a.bytes; }) {
    EXPECT_EQ(result, a.length == b.length && (a.length < 1 || a.bytes == b.bytes) ? 1 : 0);
  } else {
    const auto [x, y] = std::ranges::mismatch(a.key, b.key);
    EXPECT_EQ(result, x == a.key.end() ? 0 : static_cast<int>(*x - *y));
  }
}
void by_hand(op::copy_, auto &world, auto &, auto copy) {
  const Key key(world);
  FourWords words = {};
  call_with(copy, words.data(), key);
  EXPECT_EQ(words, key.key);
}

}  // namespace mub_test

#include "hash_steps.inc"
