// Hash tables and B-trees as programs drive them: worlds of three records of a kind, with a std::map as the
// model of each.
//
// A kind says how its keys are drawn, passed and ordered, and how its content is read by the public fields
// alone, which checks the invariants of the engine on the way. hash_family.cpp and btree_family.cpp have the
// kinds.
#ifndef MUB_TESTS_INTERPRETER_MAPS_H
#define MUB_TESTS_INTERPRETER_MAPS_H

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <set>

#include "interpreter/machine.h"
#include "mub.h"

namespace mub_test {

// Keys are compared by texts that order as they do.
struct Item {
  std::string bytes;  // the key as it was added, of which the order may have folded the case
  uint64_t value = 0;
  int64_t sequence = 0;  // later additions have greater ones
};
using Content = std::map<std::string, Item>;

template <class R>
struct Kind;

// A record with its model. Pools that it does not own are the world's.
template <class R>
struct Slot {
  R record;
  Content content;
  int owned = 0;            // the pools that the record owns, a bit each
  bool has_values = false;  // values are blocks of its value pool, or 0; else any words
  int64_t blocks_left = 0;  // value blocks that only the end of an owned pool gives back
  bool links_are_exact = true;
  bool splits_failed = false;
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
    if ((slot.owned & 1) == 0) slot.record.entry_pool = &entries;
    if constexpr (Kind<R>::kHasNodePool) {
      if ((slot.owned & 2) == 0) slot.record.node_pool = &nodes;
    }
    if (slot.has_values && (slot.owned & 4) == 0) slot.record.value_pool = &values;
    if (slot.record.value_pool != nullptr) slot.record.value_pool->block_size = sizeof(uint64_t);
    Kind<R>::set_order(&slot.record, &slot == &slots[2] ? 1 : 0);
  }
  void end(Slot<R> &slot) {
    Kind<R>::free_all(&slot.record, nullptr);
    Kind<R>::term(&slot.record);
    slot.content.clear();
    slot.blocks_left = 0;
    slot.links_are_exact = true;
  }

  // Every record against its model.
  void compare() {
    int64_t shared_values = 0;
    for (auto &slot : slots) {
      Content read;
      ASSERT_NO_FATAL_FAILURE(Kind<R>::read(slot, read));
      ASSERT_EQ(read.size(), slot.content.size());
      int64_t blocks = 0;
      for (auto a = read.begin(), b = slot.content.begin(); a != read.end(); ++a, ++b) {
        ASSERT_EQ(a->first, b->first);
        ASSERT_EQ(a->second.bytes, b->second.bytes);
        ASSERT_EQ(a->second.value, b->second.value);
        blocks += b->second.value != 0 ? 1 : 0;
      }
      if (slot.has_values && (slot.owned & 4) == 0) shared_values += blocks;
      if (slot.has_values && (slot.owned & 4) != 0) {
        ASSERT_EQ(slot.record.value_pool->live_count, blocks + slot.blocks_left);
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
};

// ---- what callbacks saw

inline std::vector<uint64_t> seen;
inline void note(uint64_t value) { seen.push_back(value); }
// An initialiser also notes what the caller's out value is while it runs.
inline const uint64_t *out_value;
inline uint64_t out_value_seen;
inline void note_init(uint64_t value) {
  out_value_seen = *out_value;
  note(value);
}
inline void note_clone(const mub_pool_chunk *, uint64_t source, mub_pool *, uint64_t copy, mub_pool *) {
  seen.push_back(source);
  seen.push_back(copy);
}

// ---- roles

template <class R>
struct Self {
  explicit Self(WorldOf<R> &world) : slot(world.slots[world.program.below(WorldOf<R>::kSlots)]) {
    world.self = &slot;
  }
  auto arguments() const { return std::tuple(&slot.record); }
  static constexpr bool fits = true;
  Slot<R> &slot;
};
// Another record, or the same, that agrees with Self in its settings.
template <class R>
struct Peer {
  explicit Peer(WorldOf<R> &world)
      : slot(world.self == &world.slots[2] ? world.slots[2] : world.slots[world.program.below(2)]) {}
  auto arguments() const { return std::tuple(&slot.record); }
  static constexpr bool fits = true;
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
struct Key : Kind<R>::KeyArgument {
  explicit Key(WorldOf<R> &world) : Kind<R>::KeyArgument(world) {}
  static constexpr bool fits = true;
};
template <class R>
struct Value {
  explicit Value(WorldOf<R> &world) : word(world.draw_value(*world.self)) {}
  auto arguments() const { return std::tuple(word); }
  static constexpr bool fits = true;
  uint64_t word;
};
template <class T>
struct Out {
  template <class W>
  explicit Out(W &) : value(std::make_unique<T>(T{77})) {
    if constexpr (std::is_same_v<T, uint64_t>) out_value = value.get();
  }
  auto arguments() const { return std::tuple(value.get()); }
  static constexpr bool fits = true;
  std::unique_ptr<T> value;
};
template <class R>
struct NodeOut {
  explicit NodeOut(WorldOf<R> &) : node(std::make_unique<typename Kind<R>::Node *>()) {}
  auto arguments() const { return std::tuple(node.get()); }
  static constexpr bool fits = true;
  std::unique_ptr<typename Kind<R>::Node *> node;
};
// A callback that notes what it is called with, or none.
template <class Function, Function kNote>
struct Callback {
  template <class W>
  explicit Callback(W &world) : is_given(!world.program.one_in(4)) {
    seen.clear();
  }
  auto arguments() const { return std::tuple(is_given ? kNote : Function{nullptr}); }
  static constexpr bool fits = true;
  bool is_given;
};
using Init = Callback<mub_init_fn, note_init>;
using Free = Callback<mub_free_fn, note>;
using Cloner = Callback<mub_clone_fn, note_clone>;
template <int kIndex>
struct UserPool {
  template <class W>
  explicit UserPool(W &world) : pool(world.program.one_in(2) ? &world.users[kIndex] : nullptr) {}
  auto arguments() const { return std::tuple(pool); }
  static constexpr bool fits = true;
  mub_pool *pool;
};

// ---- operations

template <class R>
uint64_t value_or_0(const Slot<R> &slot, const std::string &key) {
  const auto item = slot.content.find(key);
  return item == slot.content.end() ? 0 : item->second.value;
}

// Puts what a call has added into the model; a refused call has added nothing.
template <class R>
bool expect_added(WorldOf<R> &world, Slot<R> &slot, const Key<R> &key, int result) {
  const bool is_present = slot.content.count(key.text) != 0;
  EXPECT_TRUE(is_present ? result == 0 : world.failed || result == 1);
  if (result != 1) return false;
  slot.content[key.text] = {key.bytes, 0, ++world.next_sequence};
  return true;
}

template <class R>
void check(op::insert_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Value<R> &value, int result) {
  if (!expect_added(world, self.slot, key, result)) return world.give_back(self.slot, value.word);
  self.slot.content[key.text].value = value.word;
}

template <class R>
void check(op::set_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Out<uint64_t> &out, Init &init,
           int result) {
  const uint64_t before = value_or_0(self.slot, key.text);
  const bool was_present = self.slot.content.count(key.text) != 0;
  if (expect_added(world, self.slot, key, result)) {
    self.slot.content[key.text].value = *out.value;
    EXPECT_TRUE(*out.value == 0 ? !self.slot.has_values || world.failed : self.slot.has_values);
    EXPECT_EQ(seen, init.is_given && *out.value != 0 ? std::vector{*out.value} : std::vector<uint64_t>());
    EXPECT_TRUE(seen.empty() || out_value_seen == (Kind<R>::kHandsOutFirst ? *out.value : 0));
    return;
  }
  EXPECT_EQ(*out.value, was_present ? before : 0);
  EXPECT_TRUE(seen.empty());
}

template <class R>
void check(op::get_, WorldOf<R> &, Self<R> &self, Key<R> &key, uint64_t result) {
  EXPECT_EQ(result, value_or_0(self.slot, key.text));
}
template <class R>
void check(op::find_, WorldOf<R> &, Self<R> &self, Key<R> &key, int result) {
  EXPECT_EQ(result, static_cast<int>(self.slot.content.count(key.text)));
}
template <class R>
void check(op::update_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Value<R> &value, uint64_t result) {
  const auto item = self.slot.content.find(key.text);
  const bool is_present = item != self.slot.content.end();
  EXPECT_EQ(result, is_present ? item->second.value : 0);
  world.give_back(self.slot, is_present ? std::exchange(item->second.value, value.word) : value.word);
}
template <class R>
void check(op::remove_, WorldOf<R> &world, Self<R> &self, Key<R> &key, uint64_t result) {
  EXPECT_EQ(result, value_or_0(self.slot, key.text));
  world.give_back(self.slot, result);
  self.slot.links_are_exact = self.slot.content.erase(key.text) == 0 && self.slot.links_are_exact;
  self.slot.links_are_exact |= self.slot.content.empty();
}

// What the releasing operations are to hand over, in the order of the keys or in any.
template <class R>
void expect_released(Slot<R> &slot, const Content &gone, const Free &release, bool is_ordered) {
  std::vector<uint64_t> released;
  for (const auto &[key, item] : gone) {
    if (item.value != 0) released.push_back(item.value);
  }
  if (slot.has_values && (slot.owned & 4) != 0) slot.blocks_left += static_cast<int64_t>(released.size());
  if (!release.is_given) released.clear();
  if (!is_ordered) {
    std::sort(released.begin(), released.end());
    std::sort(seen.begin(), seen.end());
  }
  EXPECT_EQ(seen, released);
}

template <class R>
void forget_all(Slot<R> &slot) {
  slot.content.clear();
  slot.blocks_left = 0;
  slot.links_are_exact = true;
}

template <class R, class Result>
void check(op::free_all_, WorldOf<R> &, Self<R> &self, Free &release, Result) {
  expect_released(self.slot, self.slot.content, release, Kind<R>::kIsOrdered);
  forget_all(self.slot);
}
// Values are not looked at: those in a pool of the world's are released beforehand.
template <class R, class F>
void by_hand(op::remove_all_, WorldOf<R> &world, F remove_all) {
  Self<R> self(world);
  if ((self.slot.owned & 4) == 0) {
    for (const auto &[key, item] : self.slot.content) world.give_back(self.slot, item.value);
  }
  world.call([&] { remove_all(&self.slot.record); });
  forget_all(self.slot);
}
template <class R, class F>
void by_hand(op::init_, WorldOf<R> &world, F init) {
  R record;
  const auto owned = static_cast<int>(world.program.below(8));
  world.call([&] { Kind<R>::init_with(init, &record, owned); });
  EXPECT_TRUE(world.failed ||
              (record.owns_entry_pool == (owned & 1) && record.owns_value_pool == owned >> 2));
  EXPECT_EQ(record.entry_pool != nullptr, record.owns_entry_pool == 1);
  EXPECT_EQ(record.value_pool != nullptr, record.owns_value_pool == 1);
  EXPECT_EQ(record.count, 0);
  Kind<R>::term(&record);
}
template <class R, class F>
void by_hand(op::term_, WorldOf<R> &world, F) {
  Self<R> self(world);
  world.end(self.slot);
  EXPECT_TRUE((self.slot.owned & 1) == 0 || self.slot.record.entry_pool == nullptr);
  world.start(self.slot);
}

template <class R>
void check(op::swap_, WorldOf<R> &, Self<R> &self, Peer<R> &peer, None) {
  if (&self.slot == &peer.slot) return;
  std::swap(self.slot.content, peer.slot.content);
  std::swap(self.slot.blocks_left, peer.slot.blocks_left);
  std::swap(self.slot.links_are_exact, peer.slot.links_are_exact);
  std::swap(self.slot.owned, peer.slot.owned);
}

// The copy has the keys; values that are blocks of the source's own pool are copied, others shared: these
// are given up at once, as only one of the two may end them.
template <class R, class Result>
void check(op::clone_, WorldOf<R> &world, Self<R> &self, UserPool<0> &, Destination<R> &copy, UserPool<1> &,
           Cloner &cloner, Result) {
  if (&self.slot == &copy.slot) return;
  Content read;
  ASSERT_NO_FATAL_FAILURE(Kind<R>::read_copy(copy.slot, self.slot.content, read));
  if (world.failed && read.empty()) {
    EXPECT_TRUE(seen.empty());
    // What pools of its own the copy has given up by then is not specified.
    copy.slot.owned = Kind<R>::owned_by(copy.slot.record);
    copy.slot.blocks_left = (copy.slot.owned & 4) != 0 ? copy.slot.record.value_pool->live_count : 0;
    return;
  }
  EXPECT_EQ(read.size(), self.slot.content.size());
  const bool owns_values = self.slot.has_values && (self.slot.owned & 4) != 0;
  const bool keeps_values = (copy.slot.owned & 4) != 0;
  copy.slot.owned &= self.slot.owned;
  EXPECT_EQ(Kind<R>::owned_by(copy.slot.record), copy.slot.owned & Kind<R>::owned_by(self.slot.record));
  EXPECT_EQ(seen.size(), cloner.is_given && owns_values ? 2 * read.size() : 0);
  for (auto a = read.begin(), b = self.slot.content.begin(); a != read.end(); ++a, ++b) {
    ASSERT_EQ(a->first, b->first);
    ASSERT_EQ(a->second.bytes, b->second.bytes);
    const uint64_t copied = a->second.value, value = b->second.value;
    ASSERT_EQ(copied == value, !owns_values || value == 0);
    ASSERT_TRUE(!owns_values || keeps_values || copied == 0) << "no pool for copies of the values";
    if (owns_values && copied != 0) {
      ASSERT_EQ(std::memcmp(reinterpret_cast<void *>(copied), reinterpret_cast<void *>(value), 8), 0);
    }
  }
  copy.slot.blocks_left = keeps_values ? self.slot.blocks_left : 0;
  if (owns_values || !self.slot.has_values) {
    copy.slot.content = std::move(read);
    copy.slot.links_are_exact = copy.slot.content.empty();
  } else {
    Kind<R>::remove_all(&copy.slot.record);
    copy.slot.links_are_exact = true;
  }
}

// What a caller finds of a node.
template <class R>
void expect_node(const Slot<R> &slot, const typename Kind<R>::Node *node, Content::const_iterator item) {
  ASSERT_EQ(node == nullptr, item == slot.content.end());
  if (node == nullptr) return;
  ASSERT_EQ(Kind<R>::text_of(slot.record, *node), item->first);
  ASSERT_EQ(node->value, item->second.value);
}

template <class R>
void check_node_set(WorldOf<R> &world, Slot<R> &slot, Key<R> &key, const typename Kind<R>::Node *node,
                    int result) {
  expect_added(world, slot, key, result);
  expect_node<R>(slot, node, slot.content.find(key.text));
}

}  // namespace mub_test

#endif
