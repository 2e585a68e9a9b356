// Hash tables under programs: see maps.h.
#include "hash_ops.inc"
#include "interpreter/maps.h"

namespace mub_test {
namespace {

// The CRC register from its definition, bit by bit, started at 0. The same keys are asked for time and again.
uint32_t bitwise_register(const std::string &bytes) {
  static std::map<std::string, uint32_t> known;
  const auto [found, is_new] = known.emplace(bytes, 0);
  if (!is_new) return found->second;
  uint32_t crc = 0;
  for (const char c : bytes) {
    crc ^= static_cast<uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0);
  }
  return found->second = crc;
}

}  // namespace

// What the four kinds share.
template <class R, class E>
struct HashKind : MapKind<R, E> {
  static constexpr bool kIsOrdered = false, kTermLeavesEntries = true;
  static constexpr bool kHandsOutFirst = true;  // the out value has the block before its initialiser runs
  static constexpr int64_t kEntryBytes = sizeof(E), kNodeBytes = 8;
  static int64_t entries_of(const R &table) { return table.count; }

  // Invariants 1 to 4 of the engine.
  static void read(const R &table, const Items &expected, Items &content) {
    std::vector<const E *> entries;
    const int64_t buckets = table.buckets.count;
    ASSERT_TRUE(buckets == 0 ||
                (buckets >= 4 && (buckets & (buckets - 1)) == 0 && buckets <= table.buckets.capacity));
    for (int64_t bucket = 0; bucket < buckets; ++bucket) {
      int64_t last = 0;
      for (auto *entry = reinterpret_cast<E *>(table.buckets.items[bucket]); entry != nullptr;
           entry = entry->next) {
        entries.push_back(entry);
        const Item *item = expected.find(Kind<R>::text_of(table, *entry));
        ASSERT_NE(item, nullptr) << "a key that was not added";
        ASSERT_EQ(bucket_of(table, Kind<R>::word_of(table, *entry)), bucket);
        ASSERT_LT(last, item->sequence) << "chains hold the oldest first";
        last = item->sequence;
        content.push_back({item->text, Kind<R>::bytes_of(table, *entry), entry, entry->value, last});
      }
    }
    std::sort(content.begin(), content.end(), [](const Item &a, const Item &b) { return a.text < b.text; });
    ASSERT_NO_FATAL_FAILURE(Kind<R>::compare_keys(table, entries));
    ASSERT_EQ(table.count, static_cast<int64_t>(content.size()));
    ASSERT_TRUE(table.count == 0 || table.count < 2 * buckets || !expected.fits);
    content.fits = expected.fits;
  }
  static int64_t bucket_of(const R &table, uint64_t word) {
    return static_cast<int64_t>(word & static_cast<uint64_t>(table.buckets.count - 1));
  }
};

template <>
struct Kind<mub_hash> : HashKind<mub_hash, mub_hash_entry>, ByteKeyKind<mub_hash> {
  using ByteKeyKind<mub_hash>::compare_keys;
  static uint64_t word_of(const mub_hash &table, const mub_hash_entry &entry) {
    EXPECT_EQ(entry.hash, bitwise_register(text_of(table, entry)));
    return entry.hash;
  }
  // What the low layer gets for a key: the bucket, and what says which key it is.
  static auto low_arguments(const mub_hash &table, const ByteKey<mub_hash> &key) {
    const uint32_t word = bitwise_register(key.text);
    return std::tuple_cat(std::tuple(bucket_of(table, word), word), key.arguments());
  }
  // A negative length finds nothing in this layer.
  static bool is_measured(const ByteKey<mub_hash> &key) { return key.length < 0; }
  static uint64_t register_of(const ByteKey<mub_hash> &key) { return bitwise_register(key.text); }
};

// Keys of words that lie in their entries.
template <class R, class E, class Integer, size_t kWords>
struct WordsHashKind : HashKind<R, E> {
  using Words = std::array<Integer, kWords>;
  struct KeyArgument {
    explicit KeyArgument(WorldOf<R> &world) : KeyArgument(world, world.program.below(kDrawnKeys)) {}
    KeyArgument(WorldOf<R> &, int64_t number) {
      if constexpr (kWords == 1) {
        words = {hard_number<Integer>(number)};
      } else {
        // All words but one are alike; the keys of a group differ in one of the four places.
        words.fill(number % 8 < 4 ? 0 : ~Integer{0});
        words[static_cast<size_t>(number) % kWords] = static_cast<Integer>(number / 8 + 1);
      }
      bytes = text = text_of_words(words);
    }
    auto arguments() const {
      if constexpr (kWords == 1) {
        return std::tuple(words[0]);
      } else {
        return std::tuple(words.data());
      }
    }
    Words words;
    std::string bytes, text;
  };
  static void set_order(R *, int) {}
  static std::string text_of_words(const Words &words) {
    std::string text;
    for (const Integer word : words) text += big_endian(word);
    return text;
  }
  static uint64_t register_of_words(const Words &words) {
    std::string bytes;
    for (const Integer word : words) {
      const std::string reversed = big_endian(word);
      bytes.append(reversed.rbegin(), reversed.rend());
    }
    return bitwise_register(bytes);
  }
  static Words words_of(const E &entry) {
    Words words;
    std::memcpy(words.data(), &entry.key, sizeof words);
    return words;
  }
  static std::string bytes_of(const R &, const E &entry) { return text_of_words(words_of(entry)); }
  static std::string text_of(const R &, const E &entry) { return text_of_words(words_of(entry)); }
  static uint64_t word_of_words(const Words &words) {
    return kWords == 1 ? words[0] : register_of_words(words);
  }
  static uint64_t word_of(const R &, const E &entry) { return word_of_words(words_of(entry)); }
  static auto low_arguments(const R &table, const KeyArgument &key) {
    const int64_t bucket = HashKind<R, E>::bucket_of(table, word_of_words(key.words));
    return std::tuple_cat(std::tuple(bucket), key.arguments());
  }
  static bool is_measured(const KeyArgument &) { return false; }
  static uint64_t register_of(const KeyArgument &key) { return register_of_words(key.words); }
};
template <>
struct Kind<mub_hashd> : WordsHashKind<mub_hashd, mub_hashd_entry, uint32_t, 1> {};
template <>
struct Kind<mub_hashx> : WordsHashKind<mub_hashx, mub_hashx_entry, uint64_t, 1> {};
template <>
struct Kind<mub_hasht> : WordsHashKind<mub_hasht, mub_hasht_entry, uint32_t, 4> {};

// ---- operations of hash tables alone

template <class R>
void check(op::free_, WorldOf<R> &, Self<R> &self, Key<R> &key, Free &release, auto result) {
  const Item *item = self.slot.content.find(key.text);
  EXPECT_EQ(result, item != nullptr ? &self.slot.record : nullptr);
  EXPECT_EQ(seen, item != nullptr && release.is_given ? Words{item->value} : Words());
  if (self.slot.owns_values() && value_or_0(self.slot, key.text) != 0) ++self.slot.blocks_left;
  self.slot.content.remove(key.text);
}
template <class R>
void check(op::expand_, WorldOf<R> &, Self<R> &, None) {}
template <class R>
void check(op::insert_t_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Out<int> &inserted, auto *result) {
  check_node_set(world, self.slot, key, result, *inserted.value);
}
template <class R>
const Item *found_low(const Slot<R> &slot, const Key<R> &key) {
  return Kind<R>::is_measured(key) ? nullptr : slot.content.find(key.text);
}
template <class R>
void check(op::find_t_, WorldOf<R> &, Self<R> &self, Key<R> &key, auto *result) {
  expect_node<R>(result, found_low(self.slot, key));
}
// The entry keeps its fields while it is held, whatever else is removed; then it is counted down and given
// back.
template <class R>
void check(op::remove_t_, WorldOf<R> &world, Self<R> &self, Key<R> &key, auto *result) {
  expect_node<R>(result, found_low(self.slot, key));
  if (result == nullptr) return;
  const auto held = *result;
  EXPECT_EQ(held.next, nullptr);
  EXPECT_EQ(held.value, value_or_0(self.slot, key.text));
  self.slot.content.remove(key.text);
  remove_keys(world, self);
  EXPECT_EQ(std::memcmp(result, &held, sizeof held), 0);
  world.give_back(self.slot, held.value);
  --self.slot.record.count;
  mub_pool_free(self.slot.record.entry_pool, result);
}

template <class R, class E>
void check(op::entry_first_, WorldOf<R> &world, Self<R> &self, Out<int64_t> &first, E *result) {
  world.read_by_all([&] {
    std::vector<void *> met, expected;
    int64_t bucket = *first.value;
    for (E *entry = result; entry != nullptr && met.size() <= self.slot.content.size();
         entry = Functions<R>::entry_next_(&self.slot.record, &bucket, entry))
      met.push_back(entry);
    for (const Item &item : self.slot.content) expected.push_back(item.entry);
    std::ranges::sort(met);
    std::ranges::sort(expected);
    EXPECT_EQ(met, expected);
  });
}
// Past the last entry nothing is left, wherever the caller's bucket is.
template <class R, class F>
void by_hand(op::entry_next_, WorldOf<R> &world, F next) {
  Self<R> self(world);
  typename Kind<R>::Node last = {};
  int64_t bucket = self.slot.record.buckets.count - 1;
  EXPECT_EQ(next(&self.slot.record, &bucket, &last), nullptr);
  EXPECT_EQ(bucket, self.slot.record.buckets.count - 1);
}
// With the bucket and the hash that a key has, the low layer agrees with the rest. The caller would count a
// new entry and store its key: only one that is there is asked for. One that is removed goes back to the end
// of its chain, where it now is the youngest.
template <class R, class F>
void by_hand(OneOf<op::entry_find_, op::entry_remove_, op::entry_new_>, WorldOf<R> &world, F) {
  Self<R> self(world);
  Key<R> key(world);
  R &table = self.slot.record;
  if (table.buckets.count < 1 || Kind<R>::is_measured(key)) return;
  const auto arguments = std::tuple_cat(std::tuple(&table), Kind<R>::low_arguments(table, key));
  Item *item = self.slot.content.find(key.text);
  auto *found = world.read_by_all([&] { return std::apply(Functions<R>::entry_find_, arguments); });
  expect_node<R>(found, item);
  if (found == nullptr) return;
  int inserted = 7;
  EXPECT_EQ(std::apply(Functions<R>::entry_new_, std::tuple_cat(arguments, std::tuple(&inserted))), found);
  EXPECT_EQ(inserted, 0);
  EXPECT_EQ(std::apply(Functions<R>::entry_remove_, arguments), found);
  EXPECT_EQ(found->next, nullptr);
  uint64_t &first = table.buckets.items[std::get<1>(arguments)];
  auto *last = reinterpret_cast<decltype(found)>(static_cast<uintptr_t>(first));
  while (last != nullptr && last->next != nullptr) last = last->next;
  if (last != nullptr) last->next = found;
  if (last == nullptr) first = reinterpret_cast<uintptr_t>(found);
  item->sequence = ++world.next_sequence;
}

// What is left of a table whose entries went back to their pool is put in order as an emptying does it.
template <class R, class F>
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_>, WorldOf<R> &world, F empty) {
  Self<R> self(world);
  R &table = self.slot.record;
  if constexpr (std::is_invocable_v<F, R *, mub_free_fn>) {
    const Free release(world);
    empty(&table, std::get<0>(release.arguments()));
    expect_released(self.slot, values_of(self.slot.content), release);
  } else {
    for (const Item &item : self.slot.content) world.give_back(self.slot, item.value);
    empty(&table);
    EXPECT_TRUE(!self.slot.owns_entries() || table.entry_pool->live_count == 0);
  }
  EXPECT_EQ(table.count, static_cast<int64_t>(self.slot.content.size()));
  mub_arrays_remove_all(&table.buckets);
  if constexpr (std::is_same_v<R, mub_hash>) mub_stream_shrink(&table.keys, 0);
  if (self.slot.owns_entries()) mub_pool_empty(table.entry_pool);
  table.count = 0;
  self.slot.content = {};
}
template <class F>
void by_hand(op::adjust_t_, WorldOf<mub_hash> &world, F adjust) {
  Self<mub_hash> self(world);
  mub_hash &table = self.slot.record;
  std::vector<Offset> offsets;
  for (int64_t bucket = 0; bucket < table.buckets.count; ++bucket) {
    auto *entry = reinterpret_cast<mub_hash_entry *>(table.buckets.items[bucket]);
    for (; entry != nullptr; entry = entry->next) offsets.push_back({&entry->key_offset, entry->key_length});
  }
  expect_lowered(world.program, table.keys, offsets,
                 [&](uint32_t offset, int64_t length) { adjust(&table, offset, length); });
}
template <class R, class F>
void by_hand(op::key_, WorldOf<R> &world, F hash_of) {
  const Self<R> self(world);
  const Key<R> key(world);
  if constexpr (std::is_same_v<R, mub_hash>) {
    EXPECT_EQ(hash_of(key.data, key.length, self.slot.record.nocase), Kind<R>::register_of(key));
  } else {
    EXPECT_EQ(std::apply(hash_of, key.arguments()), Kind<R>::register_of(key));
  }
}
template <class F>
void by_hand(op::cmp_, WorldOf<mub_hasht> &world, F compare) {
  Key<mub_hasht> a(world), b(world);
  EXPECT_EQ(compare(a.words.data(), b.words.data()) == 0, a.words == b.words);
}
template <class F>
void by_hand(op::copy_, WorldOf<mub_hasht> &world, F copy) {
  Key<mub_hasht> key(world);
  std::array<uint32_t, 4> words = {};
  copy(words.data(), key.words.data());
  EXPECT_EQ(words, key.words);
}
template <class F>
void by_hand(op::cmp_, WorldOf<mub_hash> &world, F compare) {
  const Self<mub_hash> self(world);
  Key<mub_hash> a(world), b(world);
  EXPECT_EQ(compare(a.bytes.data(), static_cast<int64_t>(a.bytes.size()), b.bytes.data(),
                    static_cast<int64_t>(b.bytes.size())),
            a.bytes == b.bytes ? 1 : 0);
}

}  // namespace mub_test

#include "hash_steps.inc"
