// Trees under programs: see links.h. The items stand in the order of a document, each with its depth.
#include "tree_ops.inc"

#include "interpreter/links.h"

namespace mub_test {

// role const %r_entry \* (bound|stop);const %r_entry \* (start|entry) = Within<%s>, Range<%s>
// role const %r_entry \* (a|ancestor);const %r_entry \* (b|entry) = Within<%s>, Node<%s>, Node<%s>
// role const %r_entry \* (entry|current) = Within<%s>, Node<%s>
// role %r_entry \* current = Node<%s>
// role const %r_entry \* source = Node<%s>
// role %r_entry \* (parent|sibling) = Place<%s>
// role %r_entry \* entry;int direction;%r_entry \* added = Place<%s>, Direction, Fresh<%s>
// role %r_entry \* (child|entry) = Fresh<%s>
// role int64_t depth = Depth
// role const mub_array \* path = Path<%s>
// role mub_arrayt \* array = ArrayOut

using Document = Items<true>;

// The end of what is at and below an item; and the item above it, which is the root's own for the root.
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
// The indexes on the way from the root to an item.
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
void read_items(auto &tree, Document &items) {
  ASSERT_EQ(tree.root.parent, nullptr);
  read_below(tree.root, items);
}
// Those below an item come before it.
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

// The tree of entries that come without it.
template <class R>
struct Within : Self<R> {
  using Self<R>::Self;
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
inline constexpr auto draw_direction = [](auto &world) {
  constexpr int kDirections[] = {INT32_MIN, INT32_MAX, 0};
  return kDirections[world.program.below(3)];
};
using Direction = Drawn<int, draw_direction>;
// An entry, and a bound: itself, one above it, or none, as which the root counts too.
template <class R>
struct Range : Node<R> {
  explicit Range(WorldOf<R> &world) : Node<R>(world), bound(this->index) {
    while (bound > 0 && !world.program.one_in(3)) bound = above(this->items, bound);
    has_bound = bound > 0 || world.program.one_in(2);
  }
  auto arguments() const { return std::tuple(has_bound ? this->entry_at(bound) : nullptr, this->entry); }
  size_t bound;
  bool has_bound;
};
// A word that is some entry's value, or none.
template <class R>
uint64_t draw_key(WorldOf<R> &world) {
  const Node<R> node(world);
  return world.program.one_in(4) ? 99 : node.items[node.index].value;
}
template <class R>
struct Key {
  explicit Key(WorldOf<R> &world) : word(draw_key(world)) {}
  auto arguments() const { return std::tuple(static_cast<const void *>(&word), int64_t{8}); }
  uint64_t word;
};
inline constexpr auto draw_depth = [](auto &world) { return world.program.below(3); };
using Depth = Drawn<int64_t, draw_depth>;
template <class R>
struct Path : Array {
  explicit Path(WorldOf<R> &world) {
    for (auto left = world.program.below(6); left > 0; --left) {
      keys.push_back(draw_key(world));
      mub_array_append(&record, &keys.back(), sizeof keys.back(), 0);
    }
  }
  Words keys;
};
struct ArrayOut : Other<mub_arrayt, mub_arrayt_init, mub_arrayt_term> {
  explicit ArrayOut(auto &world) : before(static_cast<size_t>(world.program.below(20)), 7) {
    for (const uint64_t word : before) mub_arrayt_append(&record, word);
  }
  Words before;
};

// ---- linking and cutting

// Checks what hangs on an entry of no tree against items of a tree, of which it may be a copy.
void expect_like(const Document &items, size_t index, auto &entry, bool is_copy) {
  Document there;
  there.clear();
  ASSERT_NO_FATAL_FAILURE(read_below(entry, there, items[index].depth, items[index].side));
  ASSERT_EQ(there.size(), end_of(items, index) - index);
  for (const Item &item : there) {
    const Item &expected = items[index++];
    ASSERT_EQ(item.place(), expected.place());
    ASSERT_EQ(item.value, expected.value);
    ASSERT_EQ(item.entry != expected.entry, is_copy);
  }
}
// What a copy has, which no longer counts.
template <class R>
Document read_copy(Slot<R> &slot, auto &copy) {
  Document copies;
  copies.clear();
  read_below(copy, copies);
  slot.record.count -= static_cast<int64_t>(copies.size()) - 1;
  return copies;
}

// An entry is linked before a sibling, last of all children, or on a side, of which what was there is no
// longer reachable.
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
  const int side = direction == nullptr ? 0 : direction->value < 0 ? 0 : direction->value > 0 ? 1 : 2;
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

// Removes an entry, which may be none, with all below it, and links it again, as the last child.
template <class F>
void by_hand(std::same_as<op::entry_remove_> auto, WorldOf<mub_tree> &world, F remove) {
  Self<mub_tree> self(world);
  Place<mub_tree> place(world);
  mub_tree &tree = self.slot.record;
  Document &items = self.slot.content;
  remove(&tree, place.entry);
  if (place.entry == nullptr || place.index == 0) return;
  EXPECT_EQ(tree.count, static_cast<int64_t>(items.size()) - 2);
  EXPECT_TRUE(place.entry->parent == nullptr && place.entry->prev == nullptr && place.entry->next == nullptr);
  ASSERT_NO_FATAL_FAILURE(expect_like(items, place.index, *place.entry, false));
  const size_t parent = above(items, place.index), end = end_of(items, place.index);
  mub_tree_entry_append(&tree, place.entry_at(parent), place.entry);
  std::rotate(items.at(place.index), items.at(end), items.at(end_of(items, parent)));
}

// A copy, which has the values now, goes back to the pool; or it stays, in a pool of the tree's own, as it
// was.
template <class R, class F>
void by_hand(OneOf<op::entry_remove_, op::entry_remove_x_, op::entry_free_> auto, WorldOf<R> &world,
             F give_back) {
  constexpr bool frees = std::is_invocable_v<F, R *, typename Kind<R>::Entry *, mub_free_fn>;
  Self<R> self(world);
  const Node<R> node(world);
  R &tree = self.slot.record;
  auto *copy = Functions<R>::clone_entry_(&tree, node.entry);
  const Document copies = read_copy(self.slot, *copy);
  for (size_t i = node.index; i < node.index + copies.size(); ++i) {
    self.slot.content[i].value = node.entry_at(i)->value = 0;
  }
  const int64_t count = tree.count, live = tree.entry_pool->live_count;
  release_by(give_back, world, self, values_of(copies), copy);
  const bool stays = self.slot.owns_entries() && (frees || std::is_same_v<R, mub_tree>);
  EXPECT_EQ(tree.count, count);
  EXPECT_EQ(tree.entry_pool->live_count, live - (stays ? 0 : static_cast<int64_t>(copies.size())));
  if (stays) expect_like(copies, 0, *copy, false);
  for (const Item &item : copies) {
    if (stays) mub_pool_free(tree.entry_pool, item.entry);
  }
}

// ---- single entries

template <class R, class E>
void by_hand(op::entry_init_, WorldOf<R> &, void (*init)(E *)) {
  E entry;
  std::memset(&entry, 'w', sizeof entry);
  init(&entry);
  EXPECT_TRUE(is_cleared(entry));
}
// The copy is dropped.
template <class R, class E>
void check(op::clone_entry_, WorldOf<R> &world, Self<R> &self, Node<R> &node, E *copy) {
  EXPECT_EQ(copy == nullptr, world.failed);
  if (copy == nullptr) return;
  EXPECT_EQ(copy->parent, nullptr);
  ASSERT_NO_FATAL_FAILURE(expect_like(node.items, node.index, *copy, true));
  for (const Item &item : read_copy(self.slot, *copy)) mub_pool_free(self.slot.record.entry_pool, item.entry);
}
// The parents that depend on an entry are set again: those of its children, of their equals and of its own.
template <class R, class E>
void by_hand(op::set_parent_, WorldOf<R> &world, void (*set_parent)(E *)) {
  Self<R> self(world);
  const Node<R> node(world);
  E elsewhere = {};
  for (size_t i = node.index + 1; i < end_of(node.items, node.index); ++i) {
    E *&parent = node.entry_at(i)->parent;
    if (parent == node.entry || parent == node.entry->parent) parent = &elsewhere;
  }
  set_parent(node.entry);
}
// The root with an entry of the caller's, and back.
template <class R, class E>
void by_hand(op::entry_swap_, WorldOf<R> &world, void (*swap)(E *, E *)) {
  Self<R> self(world);
  E &root = self.slot.record.root, other = {};
  Item &top = self.slot.content[0];
  if (root.value == 0) root.value = top.value = world.draw_value(self.slot);
  swap(&root, &other);
  EXPECT_TRUE(is_cleared(root));
  top.entry = &other;
  expect_like(self.slot.content, 0, other, false);
  top.entry = &root;
  swap(&root, &other);
  swap(&root, &root);
}
template <class F>
void by_hand(op::cmp_, WorldOf<mub_tree> &world, F compare_bytes) {
  const std::string a = world.program.text(48);
  std::string b = world.program.one_in(4) ? world.program.text(3) : a;
  if (!b.empty() && world.program.one_in(2)) b[clipped(world.program.below(48)) % b.size()] ^= 1;
  EXPECT_EQ(compare_bytes(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size())),
            a == b ? 1 : 0);
}

// ---- order, searches and paths

void check(op::entry_index_, auto &, Within<mub_tree> &, Node<mub_tree> &node, int64_t result) {
  EXPECT_EQ(static_cast<uint64_t>(result), path_to(node.items, node.index).back());
}
void check(op::entry_array_, auto &world, Within<mub_tree> &, Node<mub_tree> &node, const ArrayOut &out,
           None) {
  Words expected = world.failed ? Words() : path_to(node.items, node.index);
  expected.insert(expected.end(), out.before.begin(), out.before.end());
  Words words;
  for (int64_t i = 0; i < out.record.count; ++i) words.push_back(mub_arrayt_get_at(&out.record, i));
  EXPECT_EQ(words, expected);
  if (world.failed) return;
  // It grows as if each index was put before the others.
  mub_arrayt grown;
  mub_arrayt_init(&grown);
  for (auto word = expected.rbegin(); word != expected.rend(); ++word) mub_arrayt_insert_at(&grown, 0, *word);
  EXPECT_EQ(out.record.capacity, grown.capacity);
  mub_arrayt_term(&grown);
}
void check(op::entry_compare_, auto &, Within<mub_tree> &, Node<mub_tree> &a, Node<mub_tree> &b, int result) {
  const Words left = path_to(a.items, a.index), right = path_to(b.items, b.index);
  const auto [x, y] = std::ranges::mismatch(left, right);
  const bool is_above = x == left.end() || y == right.end();
  EXPECT_EQ(result, static_cast<int>(is_above ? left.size() - right.size() : *x - *y));
}
void check(op::entry_find_child_, auto &, Within<mub_tree> &, Node<mub_tree> &a, Node<mub_tree> &b,
           int result) {
  EXPECT_EQ(result, is_below(a.items, b.index, a.index) ? 1 : 0);
}

// Neighbours and searches: the first entry, or the last one, that is where the operation looks, and has the
// key.
template <class Op>
void check(Op, WorldOf<mub_tree> &, Within<mub_tree> &, const auto &node,
           const auto &...args) requires(Op::kName.starts_with("entry_")) {
  const Document &items = node.items;
  const auto *range = role_of<Range<mub_tree>>(node);
  const auto *key = role_of<Key<mub_tree>>(args...);
  const auto *comparer = role_of<AnyComparer>(args...);
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
  EXPECT_EQ(result_of(args...), comparer == nullptr || comparer->is_given ? node.entry_at(found) : nullptr);
}

// Entries that are missing on a path are appended, each to the one before; only one at the end gets a value.
template <class Op>
void check(Op, WorldOf<mub_tree> &world, Self<mub_tree> &self,
           const auto &...args) requires(Op::kName.starts_with("find") || Op::kName.starts_with("insert")) {
  Slot<mub_tree> &slot = self.slot;
  const auto *from = role_of<Node<mub_tree>>(args...);
  const auto *drawn_depth = role_of<Depth>(args...);
  const Words &keys = role_of<Path<mub_tree>>(args...)->keys;
  mub_tree_entry *const result = result_of(args...);
  Document &items = slot.content;
  size_t at = from != nullptr ? from->index : 0;
  size_t depth = drawn_depth != nullptr ? static_cast<size_t>(drawn_depth->value) : 0;
  if (depth >= keys.size() || !role_of<AnyComparer>(args...)->is_given) {
    EXPECT_EQ(result, nullptr);
    return;
  }
  bool is_new = false;
  for (; depth < keys.size(); ++depth) {
    const size_t parent = at;
    do ++at;
    while (is_below(items, at, parent) && items[at].value != keys[depth]);
    if (is_below(items, at, parent)) continue;
    if (!named<Op>("insert") || slot.record.count < static_cast<int64_t>(items.size())) break;
    items.insert(items.at(at), {.depth = items[parent].depth + 1});
    is_new = true;
  }
  const bool is_reached = depth == keys.size();
  EXPECT_TRUE(is_reached || !named<Op>("insert") || world.failed);
  const uint64_t value = is_reached && is_new ? result->value : 0;
  if (is_reached && is_new) {
    EXPECT_EQ(value == 0, world.failed || !slot.has_values);
    items[at].entry = result;
    items[at].value = value;
  }
  EXPECT_EQ(result, is_reached ? items[at].entry : nullptr);
  if (const auto *init = role_of<Init>(args...)) {
    EXPECT_EQ(seen, init->is_given && value != 0 ? Words{value} : Words());
  }
}

}  // namespace mub_test

#include "tree_steps.inc"
