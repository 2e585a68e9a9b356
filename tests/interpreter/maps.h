// Hash tables and B-trees as programs drive them: what they hold, in the order of the keys.
//
// Beside what containers.h asks for, a kind is built on one of map_keys.h that says how its keys are drawn,
// passed and ordered.
#ifndef MUB_TESTS_INTERPRETER_MAPS_H
#define MUB_TESTS_INTERPRETER_MAPS_H

#include "interpreter/containers.h"
#include "interpreter/map_keys.h"

namespace mub_test {

template <class Text>
struct Item {
  Text text;              // orders as the key does
  void *entry = nullptr;  // where it lies; nullptr until it is read for the first time
  uint64_t value = 0;
  int64_t sequence = 0;  // later additions have greater ones
  const Text &place() const { return text; }
};
template <class Text>
struct Items : std::vector<Item<Text>> {
  // What is sure of a record: the links of a tree and the key of its root are right; a table has enough
  // buckets, and no entry of a tree too many children.
  bool links_are_exact = true, fits = true;

  auto not_before(const Text &text) {
    return std::lower_bound(this->begin(), this->end(), text,
                            [](const auto &item, const Text &key) { return item.text < key; });
  }
  Item<Text> *find(const Text &text) {
    const auto found = not_before(text);
    return found != this->end() && found->text == text ? &*found : nullptr;
  }
  bool remove(const Text &text) {
    const auto found = not_before(text);
    if (found == this->end() || found->text != text) return false;
    this->erase(found);
    return true;
  }
};
// The links of a clone lead into its source.
template <class Text>
Items<Text> cloned(Items<Text> content) {
  content.links_are_exact = content.empty();
  return content;
}
template <class R>
using ItemOf = Item<typename Kind<R>::Text>;

template <class R>
struct Key : Kind<R>::KeyArgument {
  using Kind<R>::KeyArgument::KeyArgument;
};
template <class R>
using NodeOut = Out<typename Kind<R>::Node *>;

// What the kinds of maps share.
template <class R, class N, class Keys>
struct MapKind : Keys {
  using Content = Items<typename Keys::Text>;
  using Node = N;
  static constexpr bool kCloneKeepsEntryPool = false, kTermKeepsFlags = false, kRemovalKeepsValues = false;
  // A record makes do without a pool for its values or nodes, or with one that has no block size yet.
  static void use_fresh(R &record, WorldOf<R> &world) {
    world.self = &world.slots[0];
    const Out<uint64_t> out(world);
    const bool has_nodes = (owned_by(record) & (kHasNodePool<R> ? 2 : 1)) != 0;
    EXPECT_EQ(call_with(Functions<R>::set_, &record, Key<R>(world), out, &note), has_nodes ? 1 : 0);
    EXPECT_EQ(*out.value, 0u);
  }
};

// Calls `use` with a key, or with each of a run of them that ascends or descends.
template <class R>
void with_keys(WorldOf<R> &world, auto use) {
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

template <class Text>
uint64_t value_of(const Item<Text> *item) {
  return item == nullptr ? 0 : item->value;
}
template <class R>
void expect_node(const typename Kind<R>::Node *node, const ItemOf<R> *item) {
  ASSERT_EQ(node == nullptr, item == nullptr);
  EXPECT_TRUE(node == nullptr || item->entry == nullptr || item->entry == node);
}
// Puts what a call has added into the model, and gives its item; a refused call has added nothing.
template <class R>
ItemOf<R> *expect_added(WorldOf<R> &world, Slot<R> &slot, const Key<R> &key, int result) {
  const bool is_present = slot.content.find(key.text) != nullptr;
  EXPECT_TRUE(is_present ? result == 0 : world.failed || result == 1);
  if (result != 1) return nullptr;
  slot.content.fits &= !world.failed;
  return &*slot.content.insert(slot.content.not_before(key.text),
                               {.text = key.text, .sequence = ++world.next_sequence});
}

template <class R>
void by_hand(op::insert_, WorldOf<R> &world, auto insert) {
  Self<R> self(world);
  with_keys(world, [&](Key<R> &key) {
    const Value<R> value(world);
    const int result = world.call([&] { return call_with(insert, self, key, value); });
    ItemOf<R> *item = expect_added(world, self.slot, key, result);
    if (item == nullptr) return world.give_back(self.slot, value.word);
    item->value = value.word;
  });
}
template <class R>
void check(op::set_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Out<uint64_t> &out, Init &init,
           int result) {
  const uint64_t before = value_of(self.slot.content.find(key.text));
  ItemOf<R> *item = expect_added(world, self.slot, key, result);
  const bool has_block = item != nullptr && *out.value != 0;
  EXPECT_EQ(seen, init.is_given && has_block ? Words{*out.value} : Words());
  EXPECT_TRUE(seen.empty() || out_value_seen == (Kind<R>::kHandsOutFirst ? *out.value : 0));
  if (item == nullptr) {
    EXPECT_EQ(*out.value, before);
  } else {
    item->value = *out.value;
    EXPECT_TRUE(has_block ? self.slot.has_values : !self.slot.has_values || world.failed);
  }
}
// Those that add a key, or find its node.
template <class R>
void expect_node_set(WorldOf<R> &world, Slot<R> &slot, const Key<R> &key, typename Kind<R>::Node *node,
                     int result) {
  if (ItemOf<R> *item = expect_added(world, slot, key, result)) item->entry = node;
  expect_node<R>(node, slot.content.find(key.text));
}
template <class R>
void check(auto, WorldOf<R> &world, Self<R> &self, Key<R> &key, NodeOut<R> &out, int result) {
  expect_node_set(world, self.slot, key, *out.value, result);
}

// Those that find a node, its value, or whether it is there.
template <class R>
void check(auto, WorldOf<R> &, Self<R> &self, Key<R> &key, auto result) {
  const ItemOf<R> *item = self.slot.content.find(key.text);
  if constexpr (std::is_pointer_v<decltype(result)>) {
    expect_node<R>(result, item);
  } else {
    const uint64_t expected = sizeof result == sizeof(int) ? item != nullptr : value_of(item);
    EXPECT_EQ(static_cast<uint64_t>(result), expected);
  }
}
template <class R>
void check(op::update_, WorldOf<R> &world, Self<R> &self, Key<R> &key, Value<R> &value, uint64_t result) {
  ItemOf<R> *item = self.slot.content.find(key.text);
  EXPECT_EQ(result, value_of(item));
  world.give_back(self.slot, item != nullptr ? std::exchange(item->value, value.word) : value.word);
}

template <class R>
void remove_keys(WorldOf<R> &world, Self<R> &self) {
  with_keys(world, [&](Key<R> &key) {
    auto &content = self.slot.content;
    const uint64_t value = value_of(content.find(key.text));
    EXPECT_EQ(world.call([&] { return call_with(Functions<R>::remove_, self, key); }), value);
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

}  // namespace mub_test

#endif
