// Hash tables under programs: see maps.h.
#include "hash_ops.inc"
#include "interpreter/map_keys.h"
#include "interpreter/maps.h"

namespace mub_test {
namespace {

// The CRC register from its definition, bit by bit, started at 0.
uint32_t bitwise_register(std::string_view bytes) {
  uint32_t crc = 0;
  for (const char c : bytes) {
    crc ^= static_cast<uint8_t>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0);
  }
  return crc;
}

}  // namespace

// What the four kinds share.
template <class R, class E>
struct HashKind : MapKind {
  using Node = E;
  static constexpr bool kHasNodePool = false;
  static constexpr bool kIsOrdered = false;
  static constexpr bool kHandsOutFirst = true;  // the out value has the block before its initialiser runs
  static constexpr int64_t kEntryBytes = sizeof(E);
  static constexpr int64_t kNodeBytes = 8;

  template <class F>
  static void init_with(F init, R *record, int owned) {
    init(record, owned & 1, owned & 4);
  }
  static int owned_by(const R &record) { return record.owns_entry_pool | record.owns_value_pool << 2; }

  // Invariants 1 to 4 of the engine. `has_key(entry)` checks what a kind keeps beside.
  template <class HasKey>
  static void read_chains(const Slot<R> &slot, Content &content, HasKey has_key) {
    const R &table = slot.record;
    const int64_t buckets = table.buckets.count;
    ASSERT_TRUE(buckets == 0 ||
                (buckets >= 4 && (buckets & (buckets - 1)) == 0 && buckets <= table.buckets.capacity));
    for (int64_t bucket = 0; bucket < buckets; ++bucket) {
      int64_t last = 0;
      for (auto *entry = reinterpret_cast<const E *>(table.buckets.items[bucket]); entry != nullptr;
           entry = entry->next) {
        const std::string text = Kind<R>::text_of(table, *entry);
        const auto expected = slot.content.find(text);
        ASSERT_TRUE(expected != slot.content.end()) << "a key that was not added";
        ASSERT_EQ(Kind<R>::word_of(table, *entry) & static_cast<uint64_t>(buckets - 1),
                  static_cast<uint64_t>(bucket));
        ASSERT_LT(last, expected->second.sequence) << "chains hold the oldest first";
        last = expected->second.sequence;
        ASSERT_TRUE(content.insert({text, {Kind<R>::bytes_of(table, *entry), entry->value, last}}).second);
        ASSERT_NO_FATAL_FAILURE(has_key(*entry));
      }
    }
    ASSERT_EQ(table.count, static_cast<int64_t>(content.size()));
    ASSERT_TRUE(table.count == 0 || table.count < 2 * buckets);
    ASSERT_TRUE(!slot.owns_entries() || table.entry_pool->live_count == table.count);
  }
  static void read(const Slot<R> &slot, Content &content) {
    read_chains(slot, content, [](const E &) {});
  }
  static void read_copy(const Slot<R> &copy, const Content &source, Content &content) {
    Slot<R> as_source{copy.record, source, owned_by(copy.record)};
    if (copy.record.count > 0) Kind<R>::read(as_source, content);
  }
};

template <>
struct Kind<mub_hash> : HashKind<mub_hash, mub_hash_entry> {
  using Record = mub_hash;
  using KeyArgument = ByteKeyArgument<WorldOf<mub_hash>>;
  static constexpr auto free_all = mub_hash_free_all;
  static constexpr auto remove_all = mub_hash_remove_all;
  static constexpr auto term = mub_hash_term;
  static constexpr auto remove = mub_hash_remove;
  static constexpr auto next = mub_hash_entry_next;
  static void init(Record *table, int owned, bool has_values) {
    mub_hash_init(table, owned & 1, has_values ? owned & 4 : 0);
  }
  static void set_order(Record *table, int which) { table->nocase = static_cast<int16_t>(which); }

  static std::string bytes_of(const Record &table, const Node &entry) {
    return std::string(stored_keys(table.keys).substr(entry.key_offset, entry.key_length));
  }
  static std::string text_of(const Record &table, const Node &entry) {
    return table.nocase == 0 ? bytes_of(table, entry) : lowered(bytes_of(table, entry));
  }
  static uint64_t word_of(const Record &table, const Node &entry) {
    EXPECT_EQ(entry.hash, bitwise_register(text_of(table, entry)));
    return entry.hash;
  }
  // The key store has the bytes of the live keys, and nothing else.
  static void read(const Slot<Record> &slot, Content &content) {
    std::map<uint32_t, uint32_t> parts;
    const auto has_key = [&](const Node &entry) {
      if (entry.key_length != 0) parts[entry.key_offset] = entry.key_length;
    };
    ASSERT_NO_FATAL_FAILURE(read_chains(slot, content, has_key));
    int64_t end = 0;
    for (const auto &[offset, length] : parts) {
      ASSERT_EQ(offset, end);
      end += length;
    }
    ASSERT_EQ(end, slot.record.keys.length);
  }
};

template <class R, class E, class Integer>
struct IntegerHashKind : HashKind<R, E> {
  struct KeyArgument {
    explicit KeyArgument(WorldOf<R> &world) : key(hard_number<Integer>(world.program.below(160))) {
      bytes = text = big_endian(key);
    }
    auto arguments() const { return std::tuple(key); }
    const void *stored() const { return &key; }
    std::array<Integer, 1> words_of() const { return {key}; }
    Integer key;
    std::string bytes, text;
  };
  static void set_order(R *, int) {}
  static std::string bytes_of(const R &, const E &entry) { return big_endian(entry.key); }
  static std::string text_of(const R &, const E &entry) { return big_endian(entry.key); }
  static uint64_t word_of(const R &, const E &entry) { return entry.key; }
};

template <>
struct Kind<mub_hashd> : IntegerHashKind<mub_hashd, mub_hashd_entry, uint32_t> {
  static constexpr auto free_all = mub_hashd_free_all;
  static constexpr auto remove_all = mub_hashd_remove_all;
  static constexpr auto term = mub_hashd_term;
  static constexpr auto remove = mub_hashd_remove;
  static constexpr auto next = mub_hashd_entry_next;
  static void init(mub_hashd *table, int owned, bool has_values) {
    mub_hashd_init(table, owned & 1, has_values ? owned & 4 : 0);
  }
};

template <>
struct Kind<mub_hashx> : IntegerHashKind<mub_hashx, mub_hashx_entry, uint64_t> {
  static constexpr auto free_all = mub_hashx_free_all;
  static constexpr auto remove_all = mub_hashx_remove_all;
  static constexpr auto term = mub_hashx_term;
  static constexpr auto remove = mub_hashx_remove;
  static constexpr auto next = mub_hashx_entry_next;
  static void init(mub_hashx *table, int owned, bool has_values) {
    mub_hashx_init(table, owned & 1, has_values ? owned & 4 : 0);
  }
};

template <>
struct Kind<mub_hasht> : HashKind<mub_hasht, mub_hasht_entry> {
  struct KeyArgument {
    explicit KeyArgument(WorldOf<mub_hasht> &world) {
      // Three words are alike; the keys of a group differ in one of the four places.
      const int64_t n = world.program.below(160);
      words.fill(n % 8 < 4 ? 0 : ~0u);
      words[static_cast<size_t>(n % 4)] = static_cast<uint32_t>(n / 8 + 1);
      for (const uint32_t word : words) text += big_endian(word);
      bytes = text;
    }
    auto arguments() const { return std::tuple(words.data()); }
    const void *stored() const { return words.data(); }
    std::array<uint32_t, 4> words_of() const { return words; }
    std::array<uint32_t, 4> words;
    std::string bytes, text;
  };
  static constexpr auto free_all = mub_hasht_free_all;
  static constexpr auto remove_all = mub_hasht_remove_all;
  static constexpr auto term = mub_hasht_term;
  static constexpr auto remove = mub_hasht_remove;
  static void init(mub_hasht *table, int owned, bool has_values) {
    mub_hasht_init(table, owned & 1, has_values ? owned & 4 : 0);
  }
  static void set_order(mub_hasht *, int) {}
  static std::string bytes_of(const mub_hasht &, const Node &entry) {
    std::string bytes;
    for (const uint32_t word : entry.key) bytes += big_endian(word);
    return bytes;
  }
  static std::string text_of(const mub_hasht &table, const Node &entry) { return bytes_of(table, entry); }
  static uint64_t word_of(const mub_hasht &, const Node &entry) {
    std::string bytes;
    for (const uint32_t word : entry.key) {
      for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift);
    }
    return bitwise_register(bytes);
  }
};

// ---- operations of hash tables alone

template <class R, class Result>
void check(op::free_, WorldOf<R> &, Self<R> &self, Key<R> &key, Free &release, Result result) {
  const auto item = self.slot.content.find(key.text);
  const bool is_present = item != self.slot.content.end();
  EXPECT_EQ(result, is_present ? &self.slot.record : nullptr);
  EXPECT_EQ(seen, is_present && release.is_given ? std::vector{item->second.value} : std::vector<uint64_t>());
  if (!is_present) return;
  if (self.slot.owns_values() && item->second.value != 0) ++self.slot.blocks_left;
  self.slot.content.erase(item);
}
template <class R>
void check(op::expand_, WorldOf<R> &, Self<R> &, None) {}
template <class R>
void check(op::entry_set_, WorldOf<R> &world, Self<R> &self, Key<R> &key, NodeOut<R> &out, int result) {
  check_node_set(world, self.slot, key, *out.node, result);
}
template <class R, class E>
void check(op::insert_t_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Out<int> &inserted, E *result) {
  check_node_set(world, self.slot, key, result, *inserted.value);
}
template <class R, class E>
void check(op::entry_get_, WorldOf<R> &, Self<R> &self, Key<R> &key, E *result) {
  expect_node<R>(self.slot, result, self.slot.content.find(key.text));
}
// A negative length finds nothing in this layer.
inline bool is_measured(const Key<mub_hash> &key) { return key.length < 0; }
template <class R>
bool is_measured(const Key<R> &) {
  return false;
}
template <class R, class E>
void check(op::find_t_, WorldOf<R> &, Self<R> &self, Key<R> &key, E *result) {
  expect_node<R>(self.slot, result,
                 is_measured(key) ? self.slot.content.end() : self.slot.content.find(key.text));
}
// The entry keeps its fields while it is held, whatever else is removed; then it is counted down and given
// back.
template <class R, class E>
void check(op::remove_t_, WorldOf<R> &world, Self<R> &self, Key<R> &key, E *result) {
  const auto item = is_measured(key) ? self.slot.content.end() : self.slot.content.find(key.text);
  ASSERT_EQ(result == nullptr, item == self.slot.content.end());
  if (result == nullptr) return;
  const E held = *result;
  EXPECT_EQ(held.next, nullptr);
  EXPECT_EQ(held.value, item->second.value);
  self.slot.content.erase(item);
  step<op::remove_, Self<R>, Key<R>>(world, Kind<R>::remove);
  EXPECT_EQ(std::memcmp(result, &held, sizeof held), 0);
  world.give_back(self.slot, held.value);
  --self.slot.record.count;
  mub_pool_free(self.slot.record.entry_pool, result);
}

template <class R, class E>
void check(op::entry_first_, WorldOf<R> &, Self<R> &self, Out<int64_t> &bucket, E *result) {
  Content met;
  for (E *entry = result; entry != nullptr;
       entry = Kind<R>::next(&self.slot.record, bucket.value.get(), entry)) {
    ASSERT_TRUE(met.insert({Kind<R>::text_of(self.slot.record, *entry), {}}).second);
  }
  EXPECT_EQ(met.size(), self.slot.content.size());
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
// Calls a function of the low layer with the bucket that a key has.
template <class F, class... Outs>
auto call_low(F function, mub_hash &table, const Key<mub_hash> &key, Outs... outs) {
  const uint32_t hash = bitwise_register(key.text);
  return function(&table, hash % table.buckets.count, hash, key.data, key.length, outs...);
}
template <class R, class F, class... Outs>
auto call_low(F function, R &table, const Key<R> &key, Outs... outs) {
  typename Kind<R>::Node entry = {};
  std::memcpy(&entry.key, key.stored(), sizeof entry.key);
  const auto bucket =
      static_cast<int64_t>(Kind<R>::word_of(table, entry) % static_cast<uint64_t>(table.buckets.count));
  return std::apply([&](auto passed) { return function(&table, bucket, passed, outs...); }, key.arguments());
}

// With the bucket and the hash that a key has, the low layer agrees with the rest.
template <class R, class... Args, class E>
void by_hand(op::entry_find_, WorldOf<R> &world, E *(*find)(const R *, int64_t, Args...)) {
  Self<R> self(world);
  Key<R> key(world);
  if (self.slot.record.buckets.count < 1 || is_measured(key)) return;
  E *found = call_low(find, self.slot.record, key);
  expect_node<R>(self.slot, found, self.slot.content.find(key.text));
}
template <class R, class... Args, class E>
void by_hand(op::entry_remove_, WorldOf<R> &world, E *(*remove)(R *, int64_t, Args...)) {
  Self<R> self(world);
  Key<R> key(world);
  if (self.slot.record.buckets.count < 1 || is_measured(key)) return;
  E *removed = call_low(remove, self.slot.record, key);
  expect_node<R>(self.slot, removed, self.slot.content.find(key.text));
  if (removed == nullptr) return;
  EXPECT_EQ(removed->next, nullptr);
  const auto bucket = static_cast<int64_t>(Kind<R>::word_of(self.slot.record, *removed)) &
                      (self.slot.record.buckets.count - 1);
  // Back to the end of its chain, where it now is the youngest.
  uint64_t &first = self.slot.record.buckets.items[bucket];
  E *last = reinterpret_cast<E *>(first);
  while (last != nullptr && last->next != nullptr) last = last->next;
  if (last != nullptr) last->next = removed;
  if (last == nullptr) first = reinterpret_cast<uintptr_t>(removed);
  self.slot.content[key.text].sequence = ++world.next_sequence;
}
template <class R, class... Args, class E>
void by_hand(op::entry_new_, WorldOf<R> &world, E *(*make)(R *, int64_t, Args...)) {
  Self<R> self(world);
  Key<R> key(world);
  if (self.slot.record.buckets.count < 1 || is_measured(key) || self.slot.content.count(key.text) == 0)
    return;
  int inserted = 7;
  E *found = call_low(make, self.slot.record, key, &inserted);
  expect_node<R>(self.slot, found, self.slot.content.find(key.text));
  EXPECT_EQ(inserted, 0);
}

// What is left of a table whose entries went back to their pool is put in order as an emptying does it.
template <class R>
void drop_chains(Slot<R> &slot) {
  R &table = slot.record;
  mub_arrays_remove_all(&table.buckets);
  if constexpr (std::is_same_v<R, mub_hash>) mub_stream_shrink(&table.keys, 0);
  if (slot.owns_entries()) mub_pool_empty(table.entry_pool);
  table.count = 0;
  slot.content.clear();
}
template <class R, class F>
void by_hand(op::remove_all_entry_, WorldOf<R> &world, F remove_all_entry) {
  Self<R> self(world);
  for (const auto &[key, item] : self.slot.content) world.give_back(self.slot, item.value);
  remove_all_entry(&self.slot.record);
  EXPECT_TRUE(!self.slot.owns_entries() || self.slot.record.entry_pool->live_count == 0);
  drop_chains(self.slot);
}
template <class R, class F>
void by_hand(op::free_all_entry_, WorldOf<R> &world, F free_all_entry) {
  Self<R> self(world);
  Free release(world);
  free_all_entry(&self.slot.record, std::get<0>(release.arguments()));
  expect_released(self.slot, self.slot.content, release, false);
  drop_chains(self.slot);
}
// Nothing lies after the last key.
template <class F>
void by_hand(op::adjust_t_, WorldOf<mub_hash> &world, F adjust) {
  Self<mub_hash> self(world);
  adjust(&self.slot.record, static_cast<uint32_t>(self.slot.record.keys.length), world.program.near(100));
}
template <class R, class F>
void by_hand(op::key_, WorldOf<R> &world, F hash_of) {
  world.self = &world.slots[world.program.one_in(2) ? 2 : 0];
  Key<R> key(world);
  if constexpr (std::is_same_v<R, mub_hash>) {
    const int nocase = world.self->record.nocase;
    EXPECT_EQ(hash_of(key.data, key.length, nocase), bitwise_register(key.text));
  } else {
    typename Kind<R>::Node entry = {};
    std::memcpy(&entry.key, key.stored(), sizeof entry.key);
    std::string bytes;
    for (const auto word : key.words_of()) {
      for (unsigned shift = 0; shift < 8 * sizeof word; shift += 8) bytes += static_cast<char>(word >> shift);
    }
    EXPECT_EQ(std::apply(hash_of, key.arguments()), bitwise_register(bytes));
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
  world.self = &world.slots[0];
  Key<mub_hash> a(world), b(world);
  EXPECT_EQ(compare(a.bytes.data(), static_cast<int64_t>(a.bytes.size()), b.bytes.data(),
                    static_cast<int64_t>(b.bytes.size())),
            a.bytes == b.bytes ? 1 : 0);
}

}  // namespace mub_test

#include "interpreter/drivers.h"

namespace mub_test {

#include "hash_steps.inc"

MUB_FAMILY(Hash, mub_hash, mub_hashd, mub_hashx, mub_hasht)

}  // namespace mub_test
