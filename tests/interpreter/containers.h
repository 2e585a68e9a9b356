// Worlds of containers with pools for entries and values: three records of a kind, each with its model; and
// the operations that all these containers have.
//
// A kind reads an intact record by its public fields, and checks what the library does not check itself:
//   Content                       the model of a record: items in order, each with its entry, value and
//                                 place() among the others; by default that of an empty record
//   Keyed                         the type of an item's entry
//   kEntryBytes, kNodeBytes       the sizes of its blocks
//   kIsOrdered                    callbacks get the values in the order of the items
//   kCloneKeepsEntryPool          even if the source has an external pool
//   kTermKeepsFlags               of owned pools
//   kTermLeavesEntries            in an external pool
//   kRemovalKeepsValues           removing all entries keeps the blocks of an owned value pool
//   set_order(record, which)      sets one of the orders 0 to 3, if there are several
//   read(record, expected, read)  stores the items of a record in `read`; `expected` is the model
//   entries_of(record)            the number of blocks taken from its entry pool
//   use_fresh(record, world)      optional: uses a record directly after `init`
#ifndef MUB_TESTS_INTERPRETER_CONTAINERS_H
#define MUB_TESTS_INTERPRETER_CONTAINERS_H

#include <algorithm>
#include <cstring>

#include "interpreter/machine.h"
#include "support/pools.h"

namespace mub_test {

using Words = std::vector<uint64_t>;

template <class R>
struct Kind;
template <class R>
inline constexpr bool kHasNodePool = requires(R record) {
  record.node_pool;
};

// The owned pools of a record, one bit each.
int owned_by(const auto &record) {
  const int owned = record.owns_entry_pool | record.owns_value_pool << 2;
  if constexpr (requires { record.owns_node_pool; }) return owned | record.owns_node_pool << 1;
  return owned;
}
template <class R>
void init_record(R &record, int owned) {
  if constexpr (kHasNodePool<R>) {
    EXPECT_EQ(Functions<R>::init_(&record, owned & 1, owned & 2, owned & 4), &record);
  } else {
    EXPECT_EQ(Functions<R>::init_(&record, owned & 1, owned & 4), &record);
  }
}

// A record with its model. External pools belong to the world.
template <class R>
struct Slot {
  static constexpr Functions<R> f{};  // the library's functions for the record
  static constexpr Kind<R> kind{};
  R record;
  typename Kind<R>::Content content = {};
  int owned = 0;            // the owned pools, one bit each
  int order = 0;            // of 0 and 1, or of 2 and 3
  bool has_values = false;  // values are blocks of its value pool, or 0; otherwise any words
  int64_t blocks = 0;       // value blocks of the content
  int64_t blocks_left = 0;  // value blocks that remain until their owned pool is emptied

  bool owns_entries() const { return (owned & 1) != 0; }
  bool owns_nodes() const { return (owned & 2) != 0; }
  bool owns_values() const { return has_values && (owned & 4) != 0; }
  void add_own_pools(std::vector<mub_pool *> &pools) const {
    if (owns_entries()) pools.push_back(record.entry_pool);
    if (owns_values()) pools.push_back(record.value_pool);
    if constexpr (kHasNodePool<R>) {
      if (owns_nodes()) pools.push_back(record.node_pool);
    }
  }
};

template <class R>
struct WorldOf : World {
  static constexpr int kSlots = 3;

  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    mub_pool_new(&users[0]);
    // Two records have the same order, so that they can be swapped and cloned. The third has another order,
    // and its values may be plain words.
    const int settings = program.byte() | program.byte() << 8;
    for (int i = 0; i < kSlots; ++i) {
      slots[i].owned = settings >> (3 * i) & 7;
      slots[i].has_values = i < 2 || (settings >> 9 & 1) != 0;
      slots[i].order = (settings >> 10 & 2) + (i < 2 ? 0 : 1);
      start(slots[i]);
    }
  }
  ~WorldOf() {
    for (auto &slot : slots) end(slot);
    const bool is_lost = (entries.live_count | nodes.live_count | values.live_count) != 0;
    EXPECT_TRUE(!is_lost || ::testing::Test::HasFailure()) << "leaked entries, nodes or values";
  }

  void start(Slot<R> &slot) {
    init_record(slot.record, slot.owned & (slot.has_values ? 7 : 3));
    slot.owned = owned_by(slot.record);
    if (!slot.owns_entries()) slot.record.entry_pool = &entries;
    if (slot.owns_entries()) slot.record.entry_pool->block_size += 8 * program.below(2);
    if constexpr (kHasNodePool<R>) {
      if (!slot.owns_nodes()) slot.record.node_pool = &nodes;
    }
    if (slot.has_values && !slot.owns_values()) slot.record.value_pool = &values;
    if (slot.record.value_pool != nullptr) slot.record.value_pool->block_size = sizeof(uint64_t);
    Kind<R>::set_order(&slot.record, slot.order);
    slot.content = {};
    slot.blocks_left = 0;
  }
  void end(Slot<R> &slot) {
    Functions<R>::free_all_(&slot.record, nullptr);
    Functions<R>::term_(&slot.record);
  }

  // Compares the records that the step may have changed with their models, and every 8 steps all records.
  void compare() {
    int64_t bytes = 0;
    for (const auto *pool : {&entries, &nodes, &values, &users[0], &users[1]})
      bytes += mub_pool_memory_bytes(pool);
    for (auto &slot : slots) bytes += Functions<R>::memory_bytes_(&slot.record);
    ASSERT_NO_FATAL_FAILURE(expect_held(bytes));
    for (auto &slot : slots) {
      const bool is_due = &slot == self || &slot == peer || steps % 8 == 0;
      if (is_due) compare(slot);
      ASSERT_TRUE(!slot.owns_values() ||
                  slot.record.value_pool->live_count == slot.blocks + slot.blocks_left);
      mix(slot.record.count);
    }
  }
  static void read_intact(R &record, const auto &expected, auto &read) {
    ASSERT_NO_FATAL_FAILURE(expect_intact(Functions<R>::verify_, record));
    Kind<R>::read(record, expected, read);
  }
  // Also stores the addresses of new entries in the model.
  void compare(Slot<R> &slot) {
    typename Kind<R>::Content read;
    ASSERT_NO_FATAL_FAILURE(read_intact(slot.record, slot.content, read));
    ASSERT_EQ(read.size(), slot.content.size());
    slot.blocks = 0;
    for (size_t i = 0; i < read.size(); ++i) {
      const auto &item = slot.content[i];
      ASSERT_EQ(read[i].value, item.value) << i;
      ASSERT_EQ(read[i].place(), item.place()) << i;
      ASSERT_TRUE(item.entry == nullptr || read[i].entry == item.entry) << i;
      slot.blocks += item.value != 0 ? 1 : 0;
    }
    ASSERT_TRUE(!slot.owns_entries() ||
                slot.record.entry_pool->live_count == Kind<R>::entries_of(slot.record));
    slot.content = std::move(read);
  }

  // A value of the sort that the slot has.
  uint64_t draw_value(const Slot<R> &slot) {
    if (program.one_in(4)) return 0;
    if (!slot.has_values) return program.byte() + 1;
    auto *block = static_cast<int64_t *>(mub_pool_new(slot.record.value_pool));
    *block = steps;
    return reinterpret_cast<uintptr_t>(block);
  }
  // Releases a value that a container returned or did not store.
  void give_back(const Slot<R> &slot, uint64_t value) {
    if (slot.has_values) mub_pool_free(slot.record.value_pool, reinterpret_cast<void *>(value));
  }
  void give_back(const Slot<R> &slot, const Words &words) {
    for (const uint64_t value : words) give_back(slot, value);
  }

  Slot<R> slots[kSlots];
  Pool entries{Kind<R>::kEntryBytes}, nodes{Kind<R>::kNodeBytes}, values{8}, users[2] = {Pool(8), Pool(8)};
  Slot<R> *self = slots, *peer = slots;  // of this step
  int64_t next_sequence = 0;
};

// ---- roles

template <class R>
struct Self {
  explicit Self(WorldOf<R> &world) : slot(world.slots[world.program.below(WorldOf<R>::kSlots)]) {
    world.self = world.peer = &slot;
    out_value = reinterpret_cast<const uint64_t *>(&slot.record.count);
  }
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};
// A record with the same settings as Self; may be Self.
template <class R>
struct Peer {
  explicit Peer(WorldOf<R> &world)
      : slot(world.self == &world.slots[2] ? world.slots[2] : world.slots[world.program.below(2)]) {
    world.peer = &slot;
  }
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};
// The destination of a clone: as Peer. Its content will be dropped, so its values are released first.
template <class R>
struct Destination : Peer<R> {
  explicit Destination(WorldOf<R> &world) : Peer<R>(world) {
    if (&this->slot == world.self) return;
    world.give_back(this->slot, values_of(this->slot.content));
    this->slot.content = {};
  }
};
template <class R>
inline constexpr bool kIsWritten<Destination<R>> = true;
inline constexpr auto draw_value = [](auto &world) { return world.draw_value(*world.self); };
template <class R>
using Value = Drawn<uint64_t, draw_value>;

// Calls a function with the arguments of roles, and with other arguments as they are.
auto call_with(auto function, const auto &...args) {
  const auto arguments_of = [](const auto &arg) {
    if constexpr (requires { arg.arguments(); }) {
      return arg.arguments();
    } else {
      return std::tuple(arg);
    }
  };
  return std::apply(function, std::tuple_cat(arguments_of(args)...));
}

// ---- operations of all containers

// With bytes inserted before a key into a copy of the key stream, keys are right if the offsets after them
// are raised. Lowers them again.
template <class R>
void by_hand(op::adjust_t_, WorldOf<R> &world, Slot<R> &slot, auto adjust) {
  auto expected = slot.content;
  const auto lower = [&](uint32_t offset, uint32_t length) {
    if constexpr (requires { slot.record.root; }) adjust(&slot.record, &slot.record.root, offset, length);
    if constexpr (!requires { slot.record.root; }) adjust(&slot.record, offset, length);
  };
  uint32_t offset = 0;
  if (!expected.empty())
    offset = static_cast<typename Kind<R>::Keyed *>(world.program.one_of(expected).entry)->key_offset;
  mub_stream keys = {};
  mub_stream_clone(&slot.record.keys, &keys);
  mub_stream_insert(&keys, offset, "new", 3);
  std::swap(slot.record.keys, keys);
  lower(offset, ~uint32_t{2});
  if constexpr (requires { expected.links_are_exact; }) expected.links_are_exact = false;
  typename Kind<R>::Content read;
  Kind<R>::read(slot.record, expected, read);
  ASSERT_EQ(read.size(), expected.size());
  for (size_t i = 0; i < read.size(); ++i) EXPECT_EQ(read[i].place(), expected[i].place());
  std::swap(slot.record.keys, keys);
  mub_stream_term(&keys);
  lower(offset, 3);
}

void check(op::verify_, auto &, auto &, Out<const char *> &what, int result) {
  EXPECT_TRUE(result == 1 && *what.value == nullptr);
}
// Compared with the heap after each step.
void check(op::memory_bytes_, auto &, auto &, int64_t) {}

// The nonzero values, in the order of release.
Words values_of(const auto &content) {
  Words values;
  for (const auto &item : content) {
    if (item.value != 0) values.push_back(item.value);
  }
  return values;
}
// The callback, if given, was called with these words.
template <class R>
void expect_seen(Words words, bool is_given) {
  if (!is_given) words.clear();
  if (!Kind<R>::kIsOrdered) {
    std::ranges::sort(words);
    std::ranges::sort(seen);
  }
  EXPECT_EQ(seen, words);
}
// A call released these values; their blocks remain allocated in an owned pool.
template <class R>
void expect_released(Slot<R> &slot, const Words &values, const Free &release) {
  expect_seen<R>(values, release.is_given);
  if (slot.owns_values()) slot.blocks_left += static_cast<int64_t>(values.size());
}
// Functions that empty or fill a record return the record, its count, or nothing.
void expect_result(const void *result, const auto &record) { EXPECT_EQ(result, &record); }
void expect_result(int64_t result, const auto &record) { EXPECT_EQ(result, record.count); }
void expect_result(None, const auto &) {}
void check(op::free_all_, auto &, auto &self, Free &release, auto result) {
  expect_result(result, self.slot.record);
  expect_released(self.slot, values_of(self.slot.content), release);
  self.slot.content = {};
  self.slot.blocks_left = 0;
}
// Empties a part of a record with a function that releases its values or ignores them.
void release_by(auto empty, auto &world, auto &slot, const Words &values, auto... part) {
  const Free release(world);
  if constexpr (requires(mub_free_fn none) { empty(&slot.record, part..., none); }) {
    call_with(empty, &slot.record, part..., release);
    expect_released(slot, values, release);
  } else {
    world.give_back(slot, values);
    empty(&slot.record, part...);
  }
}
// A call removed all entries without releasing values: the caller must release those in an external pool.
void expect_dropped(auto &world, auto &slot) {
  const Words values = values_of(slot.content);
  if (!slot.owns_values()) world.give_back(slot, values);
  const bool keeps = slot.kind.kRemovalKeepsValues && slot.owns_values();
  slot.blocks_left = keeps ? slot.blocks_left + static_cast<int64_t>(values.size()) : 0;
  slot.content = {};
}
void drop_all(auto &world, auto &slot, auto drop) {
  drop(&slot.record);
  expect_dropped(world, slot);
}
template <class R>
void check(op::remove_all_, WorldOf<R> &world, Self<R> &self, auto result) {
  expect_result(result, self.slot.record);
  expect_dropped(world, self.slot);
}
void check(op::term_, auto &world, auto &self, auto result) {
  auto &slot = self.slot;
  auto &record = slot.record;
  for (const auto &item : slot.content) {
    if (slot.kind.kTermLeavesEntries && !slot.owns_entries()) mub_pool_free(&world.entries, item.entry);
  }
  check(op::remove_all_(), world, self, result);
  EXPECT_TRUE(record.entry_pool == nullptr || !slot.owns_entries());
  EXPECT_TRUE(record.value_pool == nullptr || !slot.owns_values());
  EXPECT_EQ(owned_by(record), slot.kind.kTermKeepsFlags ? slot.owned : 0);
  slot.f.remove_all_(&record);
  slot.f.term_(&record);
  EXPECT_EQ(record.count, 0) << "terminated twice";
  world.start(slot);
}
// A pool that cannot be allocated is missing.
template <class R>
void by_hand(op::init_, WorldOf<R> &world, auto &, auto) {
  R record;
  const auto owned = static_cast<int>(world.program.below(8));
  world.call([&] { init_record(record, owned); });
  EXPECT_TRUE(world.failed || owned_by(record) == (owned & (kHasNodePool<R> ? 7 : 5)));
  EXPECT_EQ(record.entry_pool != nullptr, record.owns_entry_pool == 1);
  EXPECT_EQ(record.value_pool != nullptr, record.owns_value_pool == 1);
  EXPECT_EQ(record.count, 0);
  if constexpr (requires { Kind<R>::use_fresh(record, world); }) Kind<R>::use_fresh(record, world);
  Functions<R>::term_(&record);
}
template <class Op, class R>
requires(Op::kName == "swap") void check(Op, WorldOf<R> &, Self<R> &self, Peer<R> &peer, None) {
  std::swap(self.slot.content, peer.slot.content);
  std::swap(self.slot.blocks_left, peer.slot.blocks_left);
  std::swap(self.slot.owned, peer.slot.owned);
}

// Values that are blocks of the source's own pool are copied. Others are shared, so they are removed from the
// copy, as only one of the two may release them.
template <class R>
void check(op::clone_, WorldOf<R> &world, Self<R> &self, UserPool<0> &user, Destination<R> &destination,
           UserPool<1> &copied_user, Cloner &cloner, auto result) {
  const Slot<R> &source = self.slot;
  Slot<R> &copy = destination.slot;
  expect_result(result, copy.record);
  if (&source == &copy) return;
  auto expected = source.content;
  if constexpr (requires { expected.links_are_exact; }) expected.links_are_exact = expected.empty();
  typename Kind<R>::Content read;
  ASSERT_NO_FATAL_FAILURE(world.read_intact(copy.record, expected, read));
  const bool owns_values = source.owns_values(), keeps_values = copy.owns_values();
  const int kept = copy.owned & (source.owned | (Kind<R>::kCloneKeepsEntryPool ? 1 : 0));
  // It is unspecified which owned pools a failed copy keeps.
  copy.owned = owned_by(copy.record);
  const bool is_empty = read.size() == typename Kind<R>::Content().size() && values_of(read).empty();
  if (world.failed && is_empty && seen.empty()) {
    EXPECT_EQ(copy.record.count, 0);
    copy.blocks_left = copy.owns_values() ? copy.record.value_pool->live_count : 0;
    return;
  }
  EXPECT_EQ(copy.owned, kept);
  const bool copies_user = cloner.is_given && user.pool != nullptr && copied_user.pool == &world.users[1];
  EXPECT_TRUE(!copies_user || world.users[1].live_count == 1)
      << "a copied user pool has the block of its source";
  ASSERT_EQ(read.size(), source.content.size());
  Words pairs;
  for (size_t i = 0; i < read.size(); ++i) {
    const uint64_t value = source.content[i].value, copied = read[i].value;
    ASSERT_EQ(read[i].place(), source.content[i].place());
    ASSERT_NE(read[i].entry, source.content[i].entry);
    ASSERT_EQ(copied == value, !owns_values || value == 0);
    if (!owns_values) continue;
    ASSERT_EQ(copied == 0, value == 0 || !keeps_values);
    ASSERT_TRUE(copied == 0 || *reinterpret_cast<int64_t *>(copied) == *reinterpret_cast<int64_t *>(value));
    pairs.insert(pairs.end(), {value, copied});
  }
  expect_seen<R>(pairs, cloner.is_given);
  copy.blocks_left = keeps_values && owns_values ? source.blocks_left : 0;
  if (owns_values) {
    copy.content = std::move(read);
  } else {
    Functions<R>::remove_all_(&copy.record);
  }
}

}  // namespace mub_test

#endif
