// Worlds of containers whose entries and values come from pools: three records of a kind, each with its model.
//
// A kind says how a record is made and ended, and compares one with its model by the public fields alone, which
// checks the invariants of the engine on the way:
//   Content                            the model of a record
//   kEntryBytes, kNodeBytes            the sizes of its blocks; kHasNodePool says whether there are nodes
//   init(record *, owned, has_values)  makes one; `owned` has a bit for each pool: entries, nodes, values
//   set_order(record *, which)         gives it one of the orders 0 to 3, where there are orders
//   free_all(record *, release), term(record *)
//   compare(slot, blocks)              checks a record, and counts the value blocks that it holds
#ifndef MUB_TESTS_INTERPRETER_CONTAINERS_H
#define MUB_TESTS_INTERPRETER_CONTAINERS_H

#include <cstring>

#include "interpreter/roles.h"

namespace mub_test {

template <class R>
struct Kind;

// A record with its model. Pools that it does not own are the world's.
template <class R>
struct Slot {
  R record;
  typename Kind<R>::Content content = {};
  int owned = 0;            // the pools that the record owns, a bit each
  bool has_values = false;  // values are blocks of its value pool, or 0; else any words
  int64_t blocks_left = 0;  // value blocks that only the end of an owned pool gives back

  bool owns_entries() const { return (owned & 1) != 0; }
  bool owns_nodes() const { return (owned & 2) != 0; }
  bool owns_values() const { return has_values && (owned & 4) != 0; }
  // What a swap of the records exchanges.
  void swap_models(Slot &other) {
    std::swap(content, other.content);
    std::swap(blocks_left, other.blocks_left);
    std::swap(owned, other.owned);
  }
  void forget_all() {
    content = {};
    blocks_left = 0;
  }
};

template <class R>
struct WorldOf : World {
  static constexpr int kSlots = 3;

  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (mub_pool *pool : {&entries, &nodes, &values, &users[0], &users[1]}) mub_pool_init(pool);
    entries.block_size = Kind<R>::kEntryBytes;
    nodes.block_size = Kind<R>::kNodeBytes;
    values.block_size = users[0].block_size = users[1].block_size = sizeof(uint64_t);
    // Two records have the same order, so that there is something to swap with and to clone to; the third
    // has another one, and perhaps plain words for values.
    const int settings = program.byte() | program.byte() << 8;
    orders = settings >> 10 & 2;
    for (int i = 0; i < kSlots; ++i) {
      slots[i].owned = settings >> (3 * i) & 7;
      slots[i].has_values = i < 2 || (settings >> 9 & 1) != 0;
      start(slots[i]);
    }
  }
  ~WorldOf() {
    for (auto &slot : slots) end(slot);
    if (!::testing::Test::HasFailure()) {
      EXPECT_EQ(nodes.live_count, 0) << "records are lost";
      EXPECT_EQ(values.live_count, 0) << "values are lost";
      EXPECT_EQ(entries.live_count, 0) << "entries are lost";
    }
    for (mub_pool *pool : {&entries, &nodes, &values, &users[0], &users[1]}) mub_pool_term(pool);
  }

  void start(Slot<R> &slot) {
    Kind<R>::init(&slot.record, slot.owned, slot.has_values);
    if (!slot.owns_entries()) slot.record.entry_pool = &entries;
    if constexpr (Kind<R>::kHasNodePool) {
      if (!slot.owns_nodes()) slot.record.node_pool = &nodes;
    }
    if (slot.has_values && !slot.owns_values()) slot.record.value_pool = &values;
    if (slot.record.value_pool != nullptr) slot.record.value_pool->block_size = sizeof(uint64_t);
    Kind<R>::set_order(&slot.record, (&slot == &slots[2] ? 1 : 0) + orders);
  }
  void end(Slot<R> &slot) {
    Kind<R>::free_all(&slot.record, nullptr);
    Kind<R>::term(&slot.record);
    slot.forget_all();
  }

  // Every record against its model.
  void compare() {
    int64_t shared_values = 0;
    for (auto &slot : slots) {
      int64_t blocks = 0;
      ASSERT_NO_FATAL_FAILURE(Kind<R>::compare(slot, blocks));
      mix(slot.record.count);
      if (slot.owns_values()) {
        ASSERT_EQ(slot.record.value_pool->live_count, blocks + slot.blocks_left);
      } else if (slot.has_values) {
        shared_values += blocks;
      }
    }
    ASSERT_EQ(values.live_count, shared_values);
  }

  // A value as the slot holds them.
  uint64_t draw_value(const Slot<R> &slot) {
    if (!slot.has_values) return program.one_in(4) ? 0 : program.byte() + 1;
    if (program.one_in(4)) return 0;
    void *block = mub_pool_new(slot.record.value_pool);
    const auto number = static_cast<uint64_t>(steps);
    std::memcpy(block, &number, sizeof number);
    return reinterpret_cast<uintptr_t>(block);
  }
  // A value that a container has handed over, or that it did not take.
  void give_back(const Slot<R> &slot, uint64_t value) {
    if (slot.has_values) mub_pool_free(slot.record.value_pool, reinterpret_cast<void *>(value));
  }

  Slot<R> slots[kSlots];
  mub_pool entries, nodes, values, users[2];
  Slot<R> *self = nullptr;  // of this step
  int64_t next_sequence = 0;
  int orders = 0;  // 0 or 2: with the next one, those of this world
};

template <class R>
struct Self {
  explicit Self(WorldOf<R> &world) : slot(world.slots[world.program.below(WorldOf<R>::kSlots)]) {
    world.self = &slot;
    out_value = reinterpret_cast<const uint64_t *>(&slot.record.count);
  }
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};
// Another record, or the same, that agrees with Self in its settings.
template <class R>
struct Peer {
  explicit Peer(WorldOf<R> &world)
      : slot(world.self == &world.slots[2] ? world.slots[2] : world.slots[world.program.below(2)]) {}
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};
// The same, emptied: what it held would only be dropped.
template <class R>
struct Destination : Peer<R> {
  explicit Destination(WorldOf<R> &world) : Peer<R>(world) {
    if (&this->slot == world.self) return;
    world.end(this->slot);
    world.start(this->slot);
  }
};
template <class R>
inline constexpr bool kIsWritten<Destination<R>> = true;
template <class R>
struct Value {
  explicit Value(WorldOf<R> &world) : word(world.draw_value(*world.self)) {}
  auto arguments() const { return std::tuple(word); }
  uint64_t word;
};

}  // namespace mub_test

#endif
