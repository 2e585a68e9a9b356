// Hash tables and B-trees as programs drive them: what they hold, in the order of the keys.
//
// Beside what containers.h asks for, a kind says how its keys are drawn, passed and ordered.
#ifndef MUB_TESTS_INTERPRETER_MAPS_H
#define MUB_TESTS_INTERPRETER_MAPS_H

#include "interpreter/containers.h"
#include "interpreter/map_keys.h"

namespace mub_test {

// Keys are compared by texts that order as they do.
struct Item {
  std::string text;
  std::string bytes;      // the key as it was added, of which the order may have folded the case
  void *entry = nullptr;  // where it lies; nullptr until it is read for the first time
  uint64_t value = 0;
  int64_t sequence = 0;  // later additions have greater ones
  auto place() const { return std::tie(text, bytes); }
};
struct Items : std::vector<Item> {
  // What is sure of a record, or found in it: a tree's links and the key of its root are right; a table has
  // enough buckets, and no entry of a tree too many children.
  bool links_are_exact = true;
  bool fits = true;

  auto not_before(const std::string &text) const {
    return std::lower_bound(begin(), end(), text,
                            [](const Item &item, const std::string &key) { return item.text < key; });
  }
  const Item *find(const std::string &text) const {
    const auto found = not_before(text);
    return found != end() && found->text == text ? &*found : nullptr;
  }
  Item *find(const std::string &text) { return const_cast<Item *>(std::as_const(*this).find(text)); }
  void add(Item item) { insert(not_before(item.text), std::move(item)); }
  bool remove(const std::string &text) {
    return std::erase_if(*this, [&](const Item &item) { return item.text == text; }) != 0;
  }
};

// The links of a clone lead into its source.
inline Items cloned(Items content) {
  content.links_are_exact = content.empty();
  return content;
}
template <class R>
struct Key : Kind<R>::KeyArgument {
  using Kind<R>::KeyArgument::KeyArgument;
};

// What the kinds of maps share.
template <class R, class N>
struct MapKind {
  using Content = Items;
  using Node = N;
  static constexpr bool kCloneKeepsEntryPool = false, kTermKeepsFlags = false, kRemovalKeepsValues = false;
  static void compare_keys(const R &, const std::vector<const N *> &) {}
  // A record makes do without a pool for its values or nodes, or with one that has no block size yet.
  static void use_fresh(R &record, WorldOf<R> &world) {
    world.self = &world.slots[0];
    Key<R> key(world);
    const Out<uint64_t> out(world);
    const bool has_nodes = (owned_by(record) & (kHasNodePool<R> ? 2 : 1)) != 0;
    const auto arguments =
        std::tuple_cat(std::tuple(&record), key.arguments(), out.arguments(), std::tuple(&note));
    EXPECT_EQ(std::apply(Functions<R>::set_, arguments), has_nodes ? 1 : 0);
    EXPECT_EQ(*out.value, 0u);
  }
};

// ---- roles

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
  const Item *item = slot.content.find(key);
  return item == nullptr ? 0 : item->value;
}

// The operations that one by_hand is for.
template <class... Ops>
struct OneOf {
  template <class Op, class = std::enable_if_t<(std::is_same_v<Op, Ops> || ...)>>
  OneOf(Op) {}
};

// Puts what a call has added into the model; a refused call has added nothing.
template <class R>
Item *expect_added(WorldOf<R> &world, Slot<R> &slot, const Key<R> &key, int result) {
  const bool is_present = slot.content.find(key.text) != nullptr;
  EXPECT_TRUE(is_present ? result == 0 : world.failed || result == 1);
  if (result != 1) return nullptr;
  slot.content.add({.text = key.text, .bytes = key.bytes, .sequence = ++world.next_sequence});
  slot.content.fits &= !world.failed;
  return slot.content.find(key.text);
}

template <class R>
void by_hand(op::insert_, WorldOf<R> &world, auto insert) {
  Self<R> self(world);
  with_keys(world, [&](Key<R> &key) {
    const Value<R> value(world);
    const auto arguments = std::tuple_cat(self.arguments(), key.arguments(), value.arguments());
    const int result = world.call([&] { return std::apply(insert, arguments); });
    Item *item = expect_added(world, self.slot, key, result);
    if (item == nullptr) return world.give_back(self.slot, value.word);
    item->value = value.word;
  });
}

template <class R>
void check(op::set_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Out<uint64_t> &out, Init &init,
           int result) {
  const uint64_t before = value_or_0(self.slot, key.text);
  Item *item = expect_added(world, self.slot, key, result);
  if (item == nullptr) {
    EXPECT_EQ(*out.value, before);
    EXPECT_TRUE(seen.empty());
    return;
  }
  item->value = *out.value;
  EXPECT_TRUE(*out.value == 0 ? !self.slot.has_values || world.failed : self.slot.has_values);
  EXPECT_EQ(seen, init.is_given && *out.value != 0 ? Words{*out.value} : Words());
  EXPECT_TRUE(seen.empty() || out_value_seen == (Kind<R>::kHandsOutFirst ? *out.value : 0));
}

template <class R>
void check(op::get_, WorldOf<R> &, Self<R> &self, Key<R> &key, uint64_t result) {
  EXPECT_EQ(result, value_or_0(self.slot, key.text));
}
template <class R>
void check(op::find_, WorldOf<R> &, Self<R> &self, Key<R> &key, int result) {
  EXPECT_EQ(result, self.slot.content.find(key.text) != nullptr ? 1 : 0);
}
template <class R>
void check(op::update_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Value<R> &value, uint64_t result) {
  EXPECT_EQ(result, value_or_0(self.slot, key.text));
  Item *item = self.slot.content.find(key.text);
  world.give_back(self.slot, item != nullptr ? std::exchange(item->value, value.word) : value.word);
}
template <class R>
void remove_keys(WorldOf<R> &world, Self<R> &self) {
  Items &content = self.slot.content;
  with_keys(world, [&](Key<R> &key) {
    const uint64_t value = value_or_0(self.slot, key.text);
    const auto arguments = std::tuple_cat(self.arguments(), key.arguments());
    EXPECT_EQ(world.call([&] { return std::apply(Functions<R>::remove_, arguments); }), value);
    world.give_back(self.slot, value);
    content.links_are_exact &= !content.remove(key.text);
    content.links_are_exact |= content.empty();
  });
}
template <class R>
void by_hand(op::remove_, WorldOf<R> &world, auto) {
  Self<R> self(world);
  remove_keys(world, self);
}

// What a caller finds of a node.
template <class R>
void expect_node(const typename Kind<R>::Node *node, const Item *item) {
  ASSERT_EQ(node == nullptr, item == nullptr);
  EXPECT_TRUE(node == nullptr || item->entry == nullptr || item->entry == node);
}

// The functions that find the node of a key.
template <class Op, class R, class N>
void check(Op, WorldOf<R> &, Self<R> &self, Key<R> &key, N *result) {
  expect_node<R>(result, self.slot.content.find(key.text));
}
// Those that add a key, or find its node.
template <class R>
void check_node_set(WorldOf<R> &world, Slot<R> &slot, Key<R> &key, typename Kind<R>::Node *node, int result) {
  Item *item = expect_added(world, slot, key, result);
  if (item != nullptr) item->entry = node;
  expect_node<R>(node, slot.content.find(key.text));
}
template <class Op, class R>
void check(Op, WorldOf<R> &world, Self<R> &self, Key<R> &key, NodeOut<R> &out, int result) {
  check_node_set(world, self.slot, key, *out.node, result);
}

}  // namespace mub_test

#endif
