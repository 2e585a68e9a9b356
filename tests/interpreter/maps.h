// Hash tables and B-trees as programs drive them: worlds of three records of a kind, with a std::map as the
// model of each.
//
// A kind says how its keys are drawn, passed and ordered, and how its content is read by the public fields
// alone, which checks the invariants of the engine on the way.
#ifndef MUB_TESTS_INTERPRETER_MAPS_H
#define MUB_TESTS_INTERPRETER_MAPS_H

#include <algorithm>
#include <map>

#include "interpreter/containers.h"
#include "interpreter/map_keys.h"

namespace mub_test {

// Keys are compared by texts that order as they do.
struct Item {
  std::string bytes;  // the key as it was added, of which the order may have folded the case
  uint64_t value = 0;
  int64_t sequence = 0;  // later additions have greater ones
};
struct Content : std::map<std::string, Item> {
  // What is sure of a record, or found in it: a tree's links and the key of its root are right; a table has
  // enough buckets, and no entry of a tree too many children.
  bool links_are_exact = true;
  bool fits = true;
};

// What the kinds of maps share.
template <class R, class N>
struct MapKind {
  using Content = mub_test::Content;
  using Node = N;
  static constexpr auto free_all = Functions<R>::free_all_;
  static constexpr auto term = Functions<R>::term_;
  static void init(R *record, int owned, bool has_values) {
    const int own_values = has_values ? owned & 4 : 0;
    if constexpr (Kind<R>::kHasNodePool) {
      Functions<R>::init_(record, owned & 1, owned & 2, own_values);
    } else {
      Functions<R>::init_(record, owned & 1, own_values);
    }
  }
  static void compare_keys(const R &, const std::vector<const N *> &) {}

  static void compare(const Slot<R> &slot, int64_t &blocks) {
    Content read;
    ASSERT_NO_FATAL_FAILURE(Kind<R>::read(slot.record, slot.content, read));
    ASSERT_TRUE(read.links_are_exact || !slot.content.links_are_exact);
    ASSERT_TRUE(read.fits || !slot.content.fits);
    ASSERT_EQ(read.size(), slot.content.size());
    for (auto a = read.cbegin(), b = slot.content.cbegin(); a != read.end(); ++a, ++b) {
      ASSERT_EQ(a->first, b->first);
      ASSERT_EQ(a->second.bytes, b->second.bytes);
      ASSERT_EQ(a->second.value, b->second.value);
      blocks += b->second.value != 0 ? 1 : 0;
    }
  }
};

// ---- roles

template <class R>
struct Key : Kind<R>::KeyArgument {
  using Kind<R>::KeyArgument::KeyArgument;
};
template <class R>
struct NodeOut {
  explicit NodeOut(WorldOf<R> &) : node(std::make_unique<typename Kind<R>::Node *>()) {}
  auto arguments() const { return std::tuple(node.get()); }
  std::unique_ptr<typename Kind<R>::Node *> node;
};

// Calls `use` with a key, or with each of a run of them that ascends or descends.
template <class R, class Use>
void with_keys(WorldOf<R> &world, Use use) {
  const int64_t stride = 4 * world.program.below(12) - 4;
  if (stride > 4) {
    Key<R> key(world);
    return use(key);
  }
  int64_t number = world.program.below(kKeysOfRuns);
  for (int64_t left = world.program.below(64); left >= 0; --left) {
    Key<R> key(world, number);
    use(key);
    number = (number + (stride == 0 ? 1 : stride) + kKeysOfRuns) % kKeysOfRuns;
  }
}

// ---- operations

template <class R>
uint64_t value_or_0(const Slot<R> &slot, const std::string &key) {
  const auto item = slot.content.find(key);
  return item == slot.content.end() ? 0 : item->second.value;
}

// The operations that one by_hand is for.
template <class... Ops>
struct OneOf {
  template <class Op, class = std::enable_if_t<(std::is_same_v<Op, Ops> || ...)>>
  OneOf(Op) {}
};

// Puts what a call has added into the model; a refused call has added nothing.
template <class R>
bool expect_added(WorldOf<R> &world, Slot<R> &slot, const Key<R> &key, int result) {
  const bool is_present = slot.content.count(key.text) != 0;
  EXPECT_TRUE(is_present ? result == 0 : world.failed || result == 1);
  if (result != 1) return false;
  slot.content[key.text] = {key.bytes, 0, ++world.next_sequence};
  slot.content.fits &= !world.failed;
  return true;
}

template <class R, class F>
void by_hand(op::insert_, WorldOf<R> &world, F insert) {
  Self<R> self(world);
  with_keys(world, [&](Key<R> &key) {
    const Value<R> value(world);
    const auto arguments = std::tuple_cat(self.arguments(), key.arguments(), value.arguments());
    const int result = world.call([&] { return std::apply(insert, arguments); });
    if (!expect_added(world, self.slot, key, result)) return world.give_back(self.slot, value.word);
    self.slot.content[key.text].value = value.word;
  });
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
template <class R, class F>
void by_hand(op::remove_, WorldOf<R> &world, F remove) {
  Self<R> self(world);
  Content &content = self.slot.content;
  with_keys(world, [&](Key<R> &key) {
    const uint64_t value = value_or_0(self.slot, key.text);
    const auto arguments = std::tuple_cat(self.arguments(), key.arguments());
    EXPECT_EQ(world.call([&] { return std::apply(remove, arguments); }), value);
    world.give_back(self.slot, value);
    content.links_are_exact &= content.erase(key.text) == 0;
    content.links_are_exact |= content.empty();
  });
}

// What the releasing operations are to hand over, in the order of the keys or in any.
template <class R>
void expect_released(Slot<R> &slot, const Content &gone, const Free &release, bool is_ordered) {
  std::vector<uint64_t> released;
  for (const auto &[key, item] : gone) {
    if (item.value != 0) released.push_back(item.value);
  }
  if (slot.owns_values()) slot.blocks_left += static_cast<int64_t>(released.size());
  if (!release.is_given) released.clear();
  if (!is_ordered) {
    std::sort(released.begin(), released.end());
    std::sort(seen.begin(), seen.end());
  }
  EXPECT_EQ(seen, released);
}

template <class R, class Result>
void check(op::free_all_, WorldOf<R> &, Self<R> &self, Free &release, Result) {
  expect_released(self.slot, self.slot.content, release, Kind<R>::kIsOrdered);
  self.slot.forget_all();
}
// Values in a pool of the world's are released before what does not look at values.
template <class R>
void give_back_all(WorldOf<R> &world, const Slot<R> &slot, const Content &content) {
  if (slot.owns_values()) return;
  for (const auto &[key, item] : content) world.give_back(slot, item.value);
}
template <class R, class F>
void by_hand(op::remove_all_, WorldOf<R> &world, F remove_all) {
  Self<R> self(world);
  give_back_all(world, self.slot, self.slot.content);
  remove_all(&self.slot.record);
  self.slot.forget_all();
}
// The record makes do with the pools that it got: without one for the values, which has no block size yet.
template <class R, class F>
void by_hand(op::init_, WorldOf<R> &world, F) {
  R record;
  const auto owned = static_cast<int>(world.program.below(8));
  world.call([&] { Kind<R>::init(&record, owned, true); });
  EXPECT_TRUE(world.failed || Kind<R>::owned_by(record) == (owned & (Kind<R>::kHasNodePool ? 7 : 5)));
  EXPECT_EQ(record.entry_pool != nullptr, record.owns_entry_pool == 1);
  EXPECT_EQ(record.value_pool != nullptr, record.owns_value_pool == 1);
  EXPECT_EQ(record.count, 0);
  world.self = &world.slots[0];
  Key<R> key(world);
  const Out<uint64_t> out(world);
  const auto arguments = std::tuple_cat(std::tuple(&record), key.arguments(), out.arguments());
  const int has_nodes = Kind<R>::owned_by(record) >> (Kind<R>::kHasNodePool ? 1 : 0) & 1;
  EXPECT_EQ(std::apply(Functions<R>::set_, std::tuple_cat(arguments, std::tuple(&note))), has_nodes);
  EXPECT_EQ(*out.value, 0u);
  Kind<R>::term(&record);
}
template <class R, class F>
void by_hand(op::term_, WorldOf<R> &world, F term) {
  Self<R> self(world);
  R &record = self.slot.record;
  give_back_all(world, self.slot, self.slot.content);
  // A table leaves its entries in a pool of the world's.
  if constexpr (!Kind<R>::kHasNodePool) {
    if (!self.slot.owns_entries()) Functions<R>::remove_all_entry_(&record);
  }
  term(&record);
  EXPECT_EQ(record.count, 0);
  EXPECT_TRUE(!self.slot.owns_entries() || record.entry_pool == nullptr);
  EXPECT_TRUE(!self.slot.owns_values() || record.value_pool == nullptr);
  EXPECT_EQ(Kind<R>::owned_by(record), 0);
  self.slot.forget_all();
  world.start(self.slot);
}

template <class R>
void check(op::swap_, WorldOf<R> &, Self<R> &self, Peer<R> &peer, None) {
  self.slot.swap_models(peer.slot);
}

// The copy has the keys; values that are blocks of the source's own pool are copied, others shared: these
// are given up at once, as only one of the two may end them.
template <class R, class Result>
void check(op::clone_, WorldOf<R> &world, Self<R> &self, UserPool<0> &, Destination<R> &copy, UserPool<1> &,
           Cloner &cloner, Result result) {
  if (&self.slot == &copy.slot) return;
  Content read;
  ASSERT_NO_FATAL_FAILURE(Kind<R>::read(copy.slot.record, self.slot.content, read));
  if constexpr (std::is_integral_v<Result>) {
    EXPECT_EQ(result, copy.slot.record.count);
  }
  if (world.failed && read.empty()) {
    EXPECT_TRUE(seen.empty());
    // What pools of its own the copy has given up by then is not specified.
    copy.slot.owned = Kind<R>::owned_by(copy.slot.record);
    copy.slot.blocks_left = (copy.slot.owned & 4) != 0 ? copy.slot.record.value_pool->live_count : 0;
    return;
  }
  EXPECT_EQ(read.size(), self.slot.content.size());
  const bool owns_values = self.slot.owns_values();
  const bool keeps_values = (copy.slot.owned & 4) != 0;
  copy.slot.owned &= self.slot.owned;
  EXPECT_EQ(Kind<R>::owned_by(copy.slot.record), copy.slot.owned & Kind<R>::owned_by(self.slot.record));
  EXPECT_EQ(seen.size(), cloner.is_given && owns_values ? 2 * read.size() : 0);
  for (auto a = read.cbegin(), b = self.slot.content.cbegin(); a != read.end(); ++a, ++b) {
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
  } else {
    Functions<R>::remove_all_(&copy.slot.record);
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

// The functions that find the node of a key.
template <class Op, class R, class N>
void check(Op, WorldOf<R> &, Self<R> &self, Key<R> &key, N *result) {
  expect_node<R>(self.slot, result, self.slot.content.find(key.text));
}
template <class R>
void check_node_set(WorldOf<R> &world, Slot<R> &slot, Key<R> &key, const typename Kind<R>::Node *node,
                    int result) {
  expect_added(world, slot, key, result);
  expect_node<R>(slot, node, slot.content.find(key.text));
}

// The functions that add a key, or find its node.
template <class Op, class R>
void check(Op, WorldOf<R> &world, Self<R> &self, Key<R> &key, NodeOut<R> &out, int result) {
  check_node_set(world, self.slot, key, *out.node, result);
}

}  // namespace mub_test

#endif
