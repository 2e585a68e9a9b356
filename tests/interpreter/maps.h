// Hash tables and B-trees: the model is the sequence of items in key order.
//
// In addition to the requirements of containers.h, a kind derives from a struct of map_keys.h, which draws,
// passes and orders its keys.
#ifndef MUB_TESTS_INTERPRETER_MAPS_H
#define MUB_TESTS_INTERPRETER_MAPS_H

#include <list>

#include "interpreter/containers.h"
#include "interpreter/map_keys.h"

namespace mub_test {

template <class Text>
struct Item {
  Text text;              // sorts like the key
  void *entry = nullptr;  // its address; nullptr until it is first read
  uint64_t value = 0;
  int64_t sequence = 0;  // later additions have greater ones
  const Text &place() const { return text; }
};
template <class Text>
struct Items : std::vector<Item<Text>> {
  // Whether the links of a tree and the key of its root are exact: those of a clone point into its source.
  // Whether a table has enough buckets, and no node of a tree has too many children.
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
    return std::erase_if(*this, [&](const auto &item) { return item.text == text; }) != 0;
  }
};
template <class R>
struct Key : Kind<R>::KeyArgument {
  explicit Key(WorldOf<R> &world, int64_t number = -1) : Kind<R>::KeyArgument(world, number) {}
};
template <class R>
using NodeOut = Out<typename Kind<R>::Node *>;

// Shared by all kinds of maps.
template <class R, class N, class Keys>
struct MapKind : Keys {
  using Content = Items<typename Keys::Text>;
  using Node = N;
  using Keyed = N;
  static constexpr bool kCloneKeepsEntryPool = false, kTermKeepsFlags = false, kRemovalKeepsValues = false;
  // A record works without a value pool or node pool, and with one that has no block size yet.
  static void use_fresh(R &record, WorldOf<R> &world) {
    const Out<uint64_t> out(world);
    const bool has_nodes = (owned_by(record) & (kHasNodePool<R> ? 2 : 1)) != 0;
    EXPECT_EQ(call_with(Functions<R>::set_, &record, Key<R>(world), out, &note), has_nodes ? 1 : 0);
    EXPECT_EQ(*out.value, 0u);
  }
};

// Calls `use` with one key, or with each of an ascending or descending sequence of keys.
void with_keys(auto &world, auto use) {
  const int64_t stride = 4 * world.program.below(12) - 4;
  if (stride > 4) {
    Key key(world);
    return use(key);
  }
  int64_t number = world.program.below(kKeysOfRuns);
  for (int64_t left = world.program.below(64); left >= 0; --left) {
    Key key(world, number);
    use(key);
    number = (number + (stride == 0 ? 1 : stride) + kKeysOfRuns) % kKeysOfRuns;
  }
}

// ---- operations

uint64_t value_of(const auto *item) { return item == nullptr ? 0 : item->value; }
void expect_node(const auto *node, const auto *item) {
  ASSERT_EQ(node == nullptr, item == nullptr);
  EXPECT_TRUE(node == nullptr || item->entry == nullptr || item->entry == node);
}
// Adds the key to the model unless the call was refused, and returns its item.
auto *expect_added(auto &world, auto &slot, const auto &key, int result) {
  auto &content = slot.content;
  EXPECT_TRUE(content.find(key.text) != nullptr ? result == 0 : world.failed || result == 1);
  if (result != 1) return decltype(content.data())();
  content.fits &= !world.failed;
  if constexpr (requires { key.bytes; }) {
    EXPECT_TRUE(stored_keys(slot.record.keys).ends_with(key.bytes)) << "in its case, after all others";
  }
  return &*content.insert(content.not_before(key.text),
                          {.text = key.text, .sequence = ++world.next_sequence});
}

void by_hand(op::insert_, auto &world, auto &slot, auto insert) {
  with_keys(world, [&](auto &key) {
    const uint64_t value = world.draw_value(slot);
    const int result = world.call([&] { return call_with(insert, &slot.record, key, value); });
    auto *item = expect_added(world, slot, key, result);
    if (item == nullptr) return world.give_back(slot, value);
    item->value = value;
  });
}
void check(op::set_, auto &world, auto &self, auto &key, auto &out, auto &init, int result) {
  const uint64_t before = value_of(self.slot.content.find(key.text));
  auto *item = expect_added(world, self.slot, key, result);
  const uint64_t value = *out.value;
  EXPECT_EQ(seen, item != nullptr && value != 0 && init.is_given ? Words{value} : Words());
  EXPECT_TRUE(seen.empty() || out_value_seen == (self.slot.kind.kStoresOutBeforeInit ? value : 0));
  EXPECT_TRUE(item == nullptr ? value == before : world.failed || (value != 0) == self.slot.has_values);
  if (item != nullptr) item->value = value;
}
// Operations that add a key or find its node.
void expect_node_set(auto &world, auto &slot, const auto &key, auto *node, int result) {
  if (auto *item = expect_added(world, slot, key, result)) item->entry = node;
  expect_node(node, slot.content.find(key.text));
}
template <class Node>
void check(auto, auto &world, auto &self, auto &key, Out<Node *> &out, int result) {
  expect_node_set(world, self.slot, key, *out.value, result);
}

// Operations that find a node, its value, or whether it exists.
void check(auto, auto &, auto &self, auto &key, auto result) {
  const auto *item = self.slot.content.find(key.text);
  if constexpr (std::is_pointer_v<decltype(result)>) {
    expect_node(result, item);
  } else {
    const uint64_t expected = sizeof result == sizeof(int) ? item != nullptr : value_of(item);
    EXPECT_EQ(static_cast<uint64_t>(result), expected);
  }
}
void check(op::update_, auto &world, auto &self, auto &key, auto &value, uint64_t result) {
  auto *item = self.slot.content.find(key.text);
  EXPECT_EQ(result, value_of(item));
  world.give_back(self.slot, item != nullptr ? std::exchange(item->value, value.value) : value.value);
}

// The keys of a batch, as an array of any type.
struct Batch {
  template <class T>
  operator const T *() const {
    return static_cast<const T *>(keys);
  }
  const void *keys;
};
// Any number of keys, including NULL, keys that end at a NUL, and keys in another case.
void by_hand(op::get_many_, auto &world, auto &slot, auto get_many) {
  std::list<decltype(Key(world))> drawn;
  std::vector<decltype(drawn.front().in_batch())> keys;
  std::vector<int64_t> lengths;
  Words expected;
  int64_t present = 0;
  for (int64_t left = world.program.below(40); left > 0; --left) {
    const auto &key = drawn.emplace_back(world);
    const auto *item = slot.content.find(key.text);
    keys.push_back(key.in_batch());
    lengths.push_back(key.length);
    expected.push_back(value_of(item));
    present += item != nullptr ? 1 : 0;
  }
  world.read_by_all([&] {
    Words values(keys.size());
    const auto call = [&](auto... more) {
      return get_many(&slot.record, Batch{keys.data()}, more..., std::ssize(keys), values.data());
    };
    if constexpr (requires { slot.record.keys; }) {
      EXPECT_EQ(call(lengths.data()), present);
    } else {
      EXPECT_EQ(call(), present);
    }
    EXPECT_EQ(values, expected);
  });
}

void remove_keys(auto &world, auto &slot) {
  with_keys(world, [&](auto &key) {
    auto &content = slot.content;
    const uint64_t value = value_of(content.find(key.text));
    EXPECT_EQ(world.call([&] { return call_with(slot.f.remove_, &slot.record, key); }), value);
    world.give_back(slot, value);
    content.links_are_exact &= !content.remove(key.text);
    content.links_are_exact |= content.empty();
  });
}
void by_hand(op::remove_, auto &world, auto &slot, auto) { remove_keys(world, slot); }

}  // namespace mub_test

#endif
