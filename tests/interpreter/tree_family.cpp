// Programs for trees: see links.h. The items are in depth-first order, each with its depth.
#include "tree_ops.inc"

#include "interpreter/links.h"

namespace mub_test {

// role const %r_entry \* (bound|stop);const %r_entry \* (start|entry) = Within, Range
// role const %r_entry \* (a|ancestor);const %r_entry \* (b|entry) = Within, Node<%s>, Node<%s>
// role const %r_entry \* (entry|current) = Within, Node<%s>
// role %r_entry \* current = Node<%s>
// role %r_entry \* (parent|sibling) = Place<%s>
// role %r_entry \* entry;int direction;%r_entry \* added = Place<%s>, Direction, Fresh<%s>
// role %r_entry \* (child|entry) = Fresh<%s>
// role const void \* key;int64_t length = Key
// role int64_t depth = Depth
// role const mub_array \* path = Path
// role mub_arrayt \* array = ArrayOut

using Document = Items<true>;

// The end of the subtree of an item; and its parent, which for the root is the root itself.
size_t end_of(const Document &items, size_t index) {
  size_t end = index + 1;
  while (end < items.size() && items[end].depth > items[index].depth) ++end;
  return end;
}
size_t above(const Document &items, size_t index) {
  size_t at = index;
  while (at > 0 && items[at].depth >= items[index].depth) --at;
  return at;
}
bool is_below(const Document &items, size_t index, size_t top) {
  return index > top && index < end_of(items, top);
}
// The indexes on the path from the root to an item.
Words path_to(const Document &items, size_t index) {
  Words path = index == 0 ? Words() : path_to(items, above(items, index));
  path.push_back(1);
  for (size_t at = above(items, index) + 1; at < index; at = end_of(items, at)) ++path.back();
  return path;
}

void read_below(mub_tree_entry &entry, Document &items, int depth = 0, int = 0) {
  items.push_back({&entry, entry.value, "", depth});
  for (auto *child = entry.first_child; child != nullptr;) {
    ASSERT_TRUE(child->parent == &entry && child->next->prev == child && child->prev->next == child);
    ASSERT_NO_FATAL_FAILURE(read_below(*child, items, depth + 1));
    child = child->next != entry.first_child ? child->next : nullptr;
  }
}
void read_below(mub_bitree_entry &entry, Document &items, int depth = 0, int own_side = 0) {
  items.push_back({&entry, entry.value, "", depth, own_side});
  for (int side = 0; auto *branch : {entry.left, entry.right, entry.equal}) {
    if (branch != nullptr) {
      ASSERT_EQ(branch->parent, side == 2 ? entry.parent : &entry);
      ASSERT_NO_FATAL_FAILURE(read_below(*branch, items, depth + 1, side));
    }
    ++side;
  }
}
void read_items(auto &tree, Document &items) { read_below(tree.root, items); }
// Descendants before their ancestors.
Words values_of(const Document &items, size_t index = 0) {
  Words values;
  for (size_t at = index + 1; at < end_of(items, index); at = end_of(items, at)) {
    const Words below = values_of(items, at);
    values.insert(values.end(), below.begin(), below.end());
  }
  if (items[index].value != 0) values.push_back(items[index].value);
  return values;
}

// ---- roles

// The tree, for functions that take only entries.
struct Within : Self<mub_tree> {
  using Self::Self;
  std::tuple<> arguments() const { return {}; }
};
template <class R>
using Node = EntryOf<R, false>;
// A new entry with a value, or NULL.
template <class R>
struct Fresh {
  explicit Fresh(WorldOf<R> &world) {
    if (world.program.one_in(8)) return;
    entry = Functions<R>::entry_new_(&world.self->record);
    entry->value = world.draw_value(*world.self);
  }
  auto arguments() const { return std::tuple(entry); }
  typename Kind<R>::Entry *entry = nullptr;
};
// Left (0), right (1) or among the equals (2); callers select it by the sign of a number.
struct Direction {
  explicit Direction(auto &world) : side(static_cast<int>(world.program.below(3))) {}
  auto arguments() const { return std::tuple(side == 2 ? 0 : side == 1 ? INT32_MAX : INT32_MIN); }
  int side;
};
// An entry, and a bound: the entry itself, an ancestor, or NULL, which means the same as the root.
struct Range : Node<mub_tree> {
  explicit Range(auto &world) : EntryOf(world), bound(index) {
    while (bound > 0 && !world.program.one_in(3)) bound = above(items, bound);
    has_bound = bound > 0 || world.program.one_in(2);
  }
  auto arguments() const { return std::tuple(has_bound ? entry_at(bound) : nullptr, entry); }
  size_t bound;
  bool has_bound;
};
// A word that is the value of an entry, or of none.
uint64_t draw_key(auto &world) {
  const Node<mub_tree> node(world);
  return world.program.one_in(4) ? 99 : node.items[node.index].value;
}
struct Key {
  explicit Key(auto &world) : word(draw_key(world)) {}
  auto arguments() const { return std::tuple(static_cast<const void *>(&word), int64_t{8}); }
  uint64_t word;
};
inline constexpr auto draw_depth = [](auto &world) { return world.program.below(4) - 1; };
using Depth = Drawn<int64_t, draw_depth>;
struct Path {
  explicit Path(auto &world) {
    for (auto left = world.program.below(6); left > 0; --left) {
      keys.push_back(draw_key(world));
      mub_array_append(array.c(), &keys.back(), sizeof keys.back(), 0);
    }
  }
  auto arguments() { return std::tuple(array.c()); }
  Words keys;
  mub::array array;
};
using ArrayOut = Pair<mub::arrayt, mub_arrayt_append>;

// ---- linking and cutting

// Compares an unlinked subtree with items of a tree, of which it may be a copy. Returns its entries.
Document expect_like(const Document &items, size_t index, auto &entry, bool is_copy) {
  Document there;
  there.clear();
  read_below(entry, there, items[index].depth, items[index].side);
  EXPECT_EQ(there.size(), end_of(items, index) - index);
  for (size_t i = 0; i < there.size() && !::testing::Test::HasFailure(); ++i) {
    const Item &item = there[i], &expected = items[index + i];
    EXPECT_EQ(item.place(), expected.place());
    EXPECT_EQ(item.value, expected.value);
    EXPECT_TRUE(i == 0 || (item.entry != expected.entry) == is_copy);
  }
  return there;
}

// Links an entry before a sibling, as the last child, or on a side; what was on that side becomes
// unreachable.
template <class Op, class R>
void check(Op, WorldOf<R> &world, Self<R> &self, Place<R> &place, const auto &...args) {
  Slot<R> &slot = self.slot;
  const auto *direction = role_of<Direction>(args...);
  auto *entry = role_of<Fresh<R>>(args...)->entry;
  if (entry == nullptr) return;
  Document &items = slot.content;
  mub_pool *pool = slot.record.entry_pool;
  if (place.entry == nullptr || (named<Op>("insert") && place.index == 0)) {
    world.give_back(slot, entry->value);
    return mub_pool_free(pool, entry);
  }
  const size_t end = end_of(items, place.index);
  size_t at = named<Op>("append") ? end : place.index;
  const int side = direction == nullptr ? 0 : direction->side;
  if (direction != nullptr) {
    for (++at; at < end && items[at].side < side;) at = end_of(items, at);
    const size_t gone = at < end && items[at].side == side ? end_of(items, at) - at : 0;
    for (size_t i = at; i < at + gone; ++i) {
      world.give_back(slot, items[i].value);
      mub_pool_free(pool, items[i].entry);
    }
    items.erase(items.at(at), items.at(at + gone));
    slot.record.count -= static_cast<int64_t>(gone);
  }
  const int depth = items[place.index].depth + (named<Op>("insert") ? 0 : 1);
  items.insert(items.at(at), {entry, entry->value, "", depth, side});
}

// Removes an entry, or NULL, with its subtree, and links it again as the last child.
void by_hand(std::same_as<op::entry_remove_> auto, WorldOf<mub_tree> &world, Slot<mub_tree> &slot,
             auto remove) {
  Place<mub_tree> place(world);
  mub_tree &tree = slot.record;
  Document &items = slot.content;
  remove(&tree, place.entry);
  if (place.entry == nullptr || place.index == 0) return;
  EXPECT_EQ(tree.count, static_cast<int64_t>(items.size()) - 2);
  EXPECT_TRUE(place.entry->parent == nullptr && place.entry->prev == nullptr && place.entry->next == nullptr);
  expect_like(items, place.index, *place.entry, false);
  const size_t parent = above(items, place.index), end = end_of(items, place.index);
  mub_tree_entry_append(&tree, place.entry_at(parent), place.entry);
  std::rotate(items.at(place.index), items.at(end), items.at(end_of(items, parent)));
}

// Clones an entry and, unless the step is only the clone, removes the clone again. If its blocks stay
// allocated until their pool is emptied (`stays`), they must be unchanged, and the test frees them.
template <class R, class F>
void by_hand(OneOf<op::clone_entry_, op::entry_remove_, op::entry_remove_x_, op::entry_free_> auto op,
             WorldOf<R> &world, Slot<R> &slot, F give_back) {
  using Op = decltype(op);
  constexpr bool is_clone = named<Op>("clone"), is_kept = named<Op>("free") || std::is_same_v<R, mub_tree>;
  const Node<R> node(world);
  const bool stays = is_clone || (is_kept && slot.owns_entries());
  R &tree = slot.record;
  const int64_t count = tree.count, live = tree.entry_pool->live_count;
  auto *copy = world.call([&] { return Functions<R>::clone_entry_(&tree, node.entry); });
  EXPECT_EQ(copy == nullptr, world.failed);
  if (copy == nullptr) return;
  EXPECT_EQ(copy->parent, nullptr);
  Document copies = expect_like(node.items, node.index, *copy, true);
  const auto copied = static_cast<int64_t>(copies.size());
  EXPECT_EQ(tree.count, count + copied - 1);
  if constexpr (!is_clone) {
    for (size_t i = node.index; i < node.index + copies.size(); ++i)
      slot.content[i].value = node.entry_at(i)->value = 0;
    release_by(give_back, world, slot, values_of(copies), copy);
  }
  EXPECT_EQ(tree.count, count + copied - 1);
  tree.count = count;
  EXPECT_EQ(tree.entry_pool->live_count, live + (stays ? copied : 0));
  if (!stays) return;
  for (const Item &item : expect_like(copies, 0, *copy, false)) mub_pool_free(tree.entry_pool, item.entry);
}

// ---- single entries

template <class R, class E>
void by_hand(op::entry_init_, WorldOf<R> &, auto &, void (*init)(E *)) {
  E entry;
  std::memset(&entry, 'w', sizeof entry);
  init(&entry);
  EXPECT_TRUE(is_cleared(entry));
}
// Restores the parents that depend on an entry: those of its children, of their equals and of its own equals.
template <class R, class E>
void by_hand(op::set_parent_, WorldOf<R> &world, auto &, void (*set_parent)(E *)) {
  const Node<R> node(world);
  E elsewhere = {};
  for (size_t i = node.index + 1; i < end_of(node.items, node.index); ++i) {
    E *&parent = node.entry_at(i)->parent;
    if (parent == node.entry || parent == node.entry->parent) parent = &elsewhere;
  }
  set_parent(node.entry);
}
// Exchanges the root with an entry of the caller, and back.
void by_hand(op::entry_swap_, auto &world, auto &slot, auto swap) {
  auto &root = slot.record.root;
  std::decay_t<decltype(root)> other = {};
  if (root.value == 0) root.value = slot.content[0].value = world.draw_value(slot);
  swap(&root, &other);
  EXPECT_TRUE(is_cleared(root));
  expect_like(slot.content, 0, other, false);
  swap(&root, &other);
  swap(&root, &root);
}
void by_hand(op::cmp_, auto &world, auto &, auto compare_bytes) {
  const std::string a = world.program.text(48);
  std::string b = world.program.one_in(4) ? world.program.text(3) : a;
  if (!b.empty() && world.program.one_in(2)) b[clipped(world.program.below(48)) % b.size()] ^= 1;
  EXPECT_EQ(compare_bytes(a.data(), std::ssize(a), b.data(), std::ssize(b)), a == b ? 1 : 0);
}

// ---- order, searches and paths

void check(op::entry_index_, auto &, Within &, Node<mub_tree> &node, int64_t result) {
  EXPECT_EQ(static_cast<uint64_t>(result), path_to(node.items, node.index).back());
}
// The array as if each index had been inserted at the front.
void check(op::entry_array_, auto &world, Within &, Node<mub_tree> &node, ArrayOut &out, None) {
  Words path = world.failed ? Words() : path_to(node.items, node.index);
  for (; !path.empty(); path.pop_back()) out.expected.insert_at(0, path.back());
  EXPECT_TRUE(std::equal(out.record.begin(), out.record.end(), out.expected.begin(), out.expected.end()));
  EXPECT_TRUE(world.failed || out.record.c()->capacity == out.expected.c()->capacity);
}
void check(op::entry_compare_, auto &, Within &, Node<mub_tree> &a, Node<mub_tree> &b, int result) {
  const Words left = path_to(a.items, a.index), right = path_to(b.items, b.index);
  const auto [x, y] = std::ranges::mismatch(left, right);
  const bool is_above = x == left.end() || y == right.end();
  EXPECT_EQ(result, static_cast<int>(is_above ? left.size() - right.size() : *x - *y));
}
void check(op::entry_find_child_, auto &, Within &, Node<mub_tree> &a, Node<mub_tree> &b, int result) {
  EXPECT_EQ(result, is_below(a.items, b.index, a.index) ? 1 : 0);
}

// Neighbours and searches: the first entry, or the last one, in the range of the operation that has the key.
template <class Op>
void check(Op, auto &, Within &, const auto &node,
           const auto &...args) requires(Op::kName.starts_with("entry_")) {
  const Document &items = node.items;
  const auto *range = role_of<Range>(node);
  const auto *key = role_of<Key>(args...);
  const auto *comparator = role_of<AnyComparator>(args...);
  const size_t index = node.index, bound = range != nullptr ? range->bound : above(items, index);
  const auto is_looked_at = [&](size_t at) {
    if (named<Op>("last")) return at > index && above(items, at) == index;
    if (named<Op>("prev")) return at > 0 && at < index && above(items, at) == bound;
    if (named<Op>("parent"))
      return is_below(items, index, at) && !(range->has_bound && bound < index && at <= bound);
    return is_below(items, at, bound) &&
           at >= (named<Op>("iter") || key != nullptr ? index + 1 : end_of(items, index));
  };
  size_t found = items.size();  // nothing
  for (size_t at = 0; at < items.size(); ++at) {
    const bool is_later =
        named<Op>("last") || named<Op>("prev") || named<Op>("parent") || found == items.size();
    if (is_later && is_looked_at(at) && (key == nullptr || items[at].value == key->word)) found = at;
  }
  EXPECT_EQ(result_of(args...),
            comparator == nullptr || comparator->is_given ? node.entry_at(found) : nullptr);
}

// Missing entries on a path are appended, each to the one before; only the last one gets a value.
template <class Op>
void check(Op, auto &world, Self<mub_tree> &self,
           const auto &...args) requires(Op::kName.starts_with("find") || Op::kName.starts_with("insert")) {
  Slot<mub_tree> &slot = self.slot;
  Document &items = slot.content;
  const Words &keys = role_of<Path>(args...)->keys;
  const auto *from = role_of<Node<mub_tree>>(args...);
  const auto *drawn_depth = role_of<Depth>(args...);
  mub_tree_entry *const result = result_of(args...);
  size_t at = from != nullptr ? from->index : 0;
  int64_t depth = drawn_depth != nullptr ? drawn_depth->value : 0;
  const int64_t end = std::ssize(keys);
  const bool is_asked = depth < end && role_of<AnyComparator>(args...)->is_given;
  uint64_t value = 0;
  for (; is_asked && depth < end; ++depth) {
    const size_t parent = at;
    do ++at;
    while (is_below(items, at, parent) && (depth < 0 || items[at].value != keys[static_cast<size_t>(depth)]));
    if (is_below(items, at, parent)) continue;
    if (!named<Op>("insert") || slot.record.count < std::ssize(items)) break;
    const bool is_last = depth + 1 == end;
    items.insert(items.at(at), {.entry = is_last ? result : nullptr, .depth = items[parent].depth + 1});
    if (!is_last) continue;
    ASSERT_NE(result, nullptr);
    value = items[at].value = result->value;
    EXPECT_EQ(value == 0, world.failed || !slot.has_values);
  }
  const bool is_reached = is_asked && depth == end;
  EXPECT_TRUE(is_reached || !is_asked || !named<Op>("insert") || world.failed);
  EXPECT_EQ(result, is_reached ? items[at].entry : nullptr);
  if (const auto *init = role_of<Init>(args...)) {
    EXPECT_EQ(seen, init->is_given && value != 0 ? Words{value} : Words());
  }
}

}  // namespace mub_test

#include "tree_steps.inc"
