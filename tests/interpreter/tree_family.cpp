// Trees under programs: see links.h. The model has the entries in the order of a document, each with its
// depth.
#include "tree_ops.inc"

#include "interpreter/links.h"
#include "mub.h"

namespace mub_test {

// role const %r_entry \* (bound|stop);const %r_entry \* (start|entry) = Within<%s>, Range<%s>
// role const %r_entry \* (a|ancestor);const %r_entry \* (b|entry) = Within<%s>, Pair<%s>
// role const %r_entry \* entry = Within<%s>, Node<%s>
// role const %r_entry \* current;int64_t depth = Within<%s>, From<%s>
// role %r_entry \* current;int64_t depth = From<%s>
// role const %r_entry \* source = Source<%s>
// role %r_entry \* (parent|sibling);%r_entry \* (child|entry) = Place<%s>, Fresh<%s>
// role %r_entry \* entry;int direction;%r_entry \* added = Place<%s>, Direction, Fresh<%s>
// role const mub_array \* path = Path<%s>
// role mub_arrayt \* array = ArrayOut

using Document = Items<1>;

// The end of what is at and below an item; the item above it, that of the root being the root; and whether
// it is below.
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
// The indexes on the way from the root to an item.
Words path_to(const Document &items, size_t index) {
  Words path = index == 0 ? Words() : path_to(items, above(items, index));
  path.push_back(1);
  for (size_t at = above(items, index) + 1; at < index; at = end_of(items, at)) ++path.back();
  return path;
}
size_t first_with(const Document &items, uint64_t value, size_t index, size_t end) {
  while (index < end && items[index].value != value) ++index;
  return index;
}

template <class R, class E, auto... kFunctions>
struct TreeKind : LinkKind<R, E, 1, kFunctions...> {
  static void read(R &tree, Document &content) {
    ASSERT_EQ(tree.root.parent, nullptr);
    read_entry(tree.root, 0, 0, content);
  }
  static void read_entry(E &entry, int depth, int side, Document &content) {
    content.push_back({&entry, entry.value, "", depth, side});
    int branch_side = 0;
    for (E *branch : Kind<R>::branches(entry)) {
      if (branch != nullptr) {
        ASSERT_EQ(branch->parent, branch_side == 2 ? entry.parent : &entry);
        ASSERT_NO_FATAL_FAILURE(read_entry(*branch, depth + 1, branch_side, content));
      }
      branch_side += std::is_same_v<R, mub_bitree> ? 1 : 0;
    }
  }
  // Those below an item come before it.
  static Words values_of(const Document &content, size_t index = 0) {
    Words values;
    for (size_t at = index + 1, end = end_of(content, index); at < end; at = end_of(content, at)) {
      const Words below = values_of(content, at);
      values.insert(values.end(), below.begin(), below.end());
    }
    if (content[index].value != 0) values.push_back(content[index].value);
    return values;
  }
};

template <>
struct Kind<mub_tree> : TreeKind<mub_tree, mub_tree_entry, mub_tree_init, mub_tree_term, mub_tree_remove_all,
                                 mub_tree_free_all, mub_tree_entry_new> {
  static std::vector<Entry *> branches(const Entry &entry) {
    std::vector<Entry *> children;
    for (Entry *child = entry.first_child; child != nullptr;) {
      EXPECT_TRUE(child->next->prev == child && child->prev->next == child);
      children.push_back(child);
      child = child->next != entry.first_child && !::testing::Test::HasFailure() ? child->next : nullptr;
    }
    return children;
  }
  static void cut(mub_tree &tree, Entry &, Entry &entry) { mub_tree_entry_remove(&tree, &entry); }
};
template <>
struct Kind<mub_bitree> : TreeKind<mub_bitree, mub_bitree_entry, mub_bitree_init, mub_bitree_term,
                                   mub_bitree_remove_all, mub_bitree_free_all, mub_bitree_entry_new> {
  static constexpr bool kCloneKeepsEntryPool = true;
  static std::vector<Entry *> branches(const Entry &entry) { return {entry.left, entry.right, entry.equal}; }
  static void cut(mub_bitree &tree, Entry &above, Entry &entry) {
    for (Entry **link : {&above.left, &above.right, &above.equal}) {
      if (*link == &entry) *link = nullptr;
    }
    --tree.count;
  }
};

// Values are compared as words.
template <>
inline constexpr mub_tree_compare_fn kCompare<mub_tree_compare_fn> =
    [](const mub_tree_entry *entry, const void *key, int64_t length) {
      return length == 8 && std::memcmp(&entry->value, key, 8) == 0 ? 0 : -1;
    };
template <>
inline constexpr mub_tree_compare_x_fn kCompare<mub_tree_compare_x_fn> =
    [](const mub_tree_entry *entry, uint64_t context, const void *key, int64_t length) {
      return context == kContext ? -kCompare<mub_tree_compare_fn>(entry, key, length) : 0;
    };

// ---- roles

// The tree of entries that come without it.
template <class R>
struct Within : Self<R> {
  explicit Within(WorldOf<R> &world) : Self<R>(world) {}
  std::tuple<> arguments() const { return {}; }
};
// An entry; it is bound to what is below the one above.
template <class R>
struct Node {
  explicit Node(WorldOf<R> &world) : Node(world, *world.self) {}
  Node(WorldOf<R> &world, const Slot<R> &slot)
      : items(slot.content),
        index(static_cast<size_t>(world.program.below(static_cast<int64_t>(items.size())))),
        bound(above(items, index)),
        entry(entry_at(index)) {}
  auto arguments() const { return std::tuple(entry); }
  auto entry_at(size_t at) const {
    return static_cast<typename Kind<R>::Entry *>(at < items.size() ? items[at].entry : nullptr);
  }
  const Document &items;
  size_t index, bound;
  typename Kind<R>::Entry *entry;
};
// Of any tree.
template <class R>
struct Source : Node<R> {
  explicit Source(WorldOf<R> &world) : Node<R>(world, world.slots[world.program.below(3)]) {}
};
// An entry, or NULL.
template <class R>
struct Place : Node<R> {
  explicit Place(WorldOf<R> &world) : Node<R>(world) {
    if (world.program.one_in(8)) this->entry = nullptr;
  }
};
// A new entry with a value, or NULL.
template <class R>
struct Fresh {
  explicit Fresh(WorldOf<R> &world) {
    if (world.program.one_in(8)) return;
    entry = Kind<R>::entry_new(&world.self->record);
    entry->value = world.draw_value(*world.self);
  }
  auto arguments() const { return std::tuple(entry); }
  typename Kind<R>::Entry *entry = nullptr;
};
struct Direction {
  template <class W>
  explicit Direction(W &world) : side(static_cast<int>(world.program.below(3))) {}
  auto arguments() const {
    constexpr int kDirections[] = {INT32_MIN, INT32_MAX, 0};
    return std::tuple(kDirections[side]);
  }
  int side;
};
// An entry, and a bound: itself, one above it, or none.
template <class R>
struct Range : Node<R> {
  explicit Range(WorldOf<R> &world) : Node<R>(world) {
    this->bound = this->index;
    while (this->bound > 0 && !world.program.one_in(3)) this->bound = above(this->items, this->bound);
    has_bound = this->bound > 0 || world.program.one_in(2);
  }
  auto arguments() const {
    return std::tuple(has_bound ? this->entry_at(this->bound) : nullptr, this->entry);
  }
  bool has_bound;
};
template <class R>
struct Pair : Node<R> {
  explicit Pair(WorldOf<R> &world) : Node<R>(world), second(world) {}
  auto arguments() const { return std::tuple(this->entry, second.entry); }
  Node<R> second;
};
// A word that is some entry's value, or none.
template <class R>
uint64_t draw_key(WorldOf<R> &world) {
  const Node<R> node(world);
  return world.program.one_in(4) ? 99 : node.items[node.index].value;
}
template <class R>
struct Key {
  explicit Key(WorldOf<R> &world) : word(std::make_unique<uint64_t>(draw_key(world))) {}
  auto arguments() const { return std::tuple(static_cast<const void *>(word.get()), int64_t{8}); }
  std::unique_ptr<uint64_t> word;
};
template <class R>
struct From : Node<R> {
  explicit From(WorldOf<R> &world) : Node<R>(world), depth(world.program.below(3)) {}
  auto arguments() const { return std::tuple(this->entry, depth); }
  int64_t depth;
};
template <class R>
struct Path {
  explicit Path(WorldOf<R> &world) {
    mub_array_init(&path, 0);
    for (auto left = world.program.below(6); left > 0; --left) {
      keys.push_back(draw_key(world));
      mub_array_append(&path, &keys.back(), sizeof keys.back(), 0);
    }
  }
  Path(const Path &) = delete;
  ~Path() { mub_array_term(&path); }
  auto arguments() const { return std::tuple(&path); }
  mub_array path;
  Words keys;
};
struct ArrayOut : Copies<mub_arrayt, mub_arrayt_init, mub_arrayt_term> {
  template <class W>
  explicit ArrayOut(W &world) {
    const auto words = world.program.below(20);
    for (auto i = 2 * words; i > 0; --i)
      mub_arrayt_insert_at(&copies[i % 2], 0, static_cast<uint64_t>((i + 1) / 2));
  }
};

// ---- linking and cutting

// Checks what hangs on an entry of no tree against items of a tree.
template <class R, class E>
void expect_like(const Slot<R> &slot, size_t index, E &entry, bool is_copy) {
  Document there;
  there.clear();
  const Item &top = slot.content[index];
  ASSERT_NO_FATAL_FAILURE(Kind<R>::read_entry(entry, top.depth, top.side, there));
  ASSERT_EQ(there.size(), end_of(slot.content, index) - index);
  for (size_t i = 0; i < there.size(); ++i) {
    const Item &item = slot.content[index + i];
    ASSERT_EQ(there[i].place(), item.place());
    ASSERT_EQ(there[i].value, item.value);
    ASSERT_EQ(there[i].entry != item.entry, is_copy);
  }
}
// Releases what is there, of which the tree knows no more.
template <class R>
void drop(WorldOf<R> &world, Slot<R> &slot, size_t index, size_t end) {
  for (size_t i = index; i < end; ++i) {
    world.give_back(slot, slot.content[i].value);
    mub_pool_free(slot.record.entry_pool, slot.content[i].entry);
  }
  slot.content.erase(slot.content.at(index), slot.content.at(end));
}

// Puts an item where its entry was linked: before a sibling, last of all children, or on a side, of which
// what was there is no longer reachable.
template <class Op, class R, class... Args>
void expect_linked(WorldOf<R> &world, Self<R> &self, const Args &...args) {
  const auto &place = *role_of<Place<R>>(args...);
  const auto *direction = role_of<Direction>(args...);
  auto *entry = role_of<Fresh<R>>(args...)->entry;
  if (entry == nullptr) return;
  Document &items = self.slot.content;
  size_t at = place.index;
  if (place.entry == nullptr || (has<Op>("insert") && at == 0)) {
    world.give_back(self.slot, entry->value);
    return mub_pool_free(self.slot.record.entry_pool, entry);
  }
  const int depth = items[at].depth + (has<Op>("insert") ? 0 : 1),
            side = direction != nullptr ? direction->side : 0;
  const size_t end = end_of(items, at);
  if (has<Op>("append")) at = end;
  if (direction != nullptr) {
    for (++at; at < end && items[at].side < side;) at = end_of(items, at);
    if (at < end && items[at].side == side) {
      const size_t gone = end_of(items, at) - at;
      drop(world, self.slot, at, at + gone);
      self.slot.record.count -= static_cast<int64_t>(gone);
    }
  }
  items.insert(items.at(at), {entry, entry->value, "", depth, side});
}

// Removes an entry, which may be none, with all below it, and links it elsewhere.
template <class F>
void by_hand(op::entry_remove_, WorldOf<mub_tree> &world, F remove) {
  Self<mub_tree> self(world);
  Place<mub_tree> place(world);
  mub_tree &tree = self.slot.record;
  Document &items = self.slot.content;
  remove(&tree, place.entry);
  if (place.entry == nullptr || place.index == 0) return;
  EXPECT_EQ(tree.count, static_cast<int64_t>(items.size()) - 2);
  EXPECT_TRUE(place.entry->parent == nullptr && place.entry->prev == nullptr && place.entry->next == nullptr);
  ASSERT_NO_FATAL_FAILURE(expect_like(self.slot, place.index, *place.entry, false));
  const auto first = items.at(place.index), last = items.at(end_of(items, place.index));
  std::vector<Item> moved(first, last);
  items.erase(first, last);
  const Node<mub_tree> parent(world);
  mub_tree_entry_append(&tree, parent.entry, place.entry);
  const int down = items[parent.index].depth + 1 - moved[0].depth;
  for (Item &item : moved) item.depth += down;
  items.insert(items.at(end_of(items, parent.index)), moved.begin(), moved.end());
}

// Calls what returns an entry and all below it to the pool, or leaves them there. The root stays.
template <class R, class Call>
void release(WorldOf<R> &world, bool stays, Self<R> &self, Node<R> &node, Call call) {
  R &tree = self.slot.record;
  Document &items = self.slot.content;
  const size_t end = end_of(items, node.index), first = node.index == 0 ? 1 : node.index;
  if (node.index > 0) {
    Kind<R>::cut(tree, *node.entry_at(node.bound), *node.entry);
  }
  const int64_t count = tree.count, live = tree.entry_pool->live_count;
  world.call([&] { call(&tree, node.entry); });
  EXPECT_EQ(tree.count, count);
  EXPECT_EQ(tree.entry_pool->live_count, live - (stays ? 0 : static_cast<int64_t>(end - first)));
  if (stays) expect_like(self.slot, node.index, *node.entry, false);
  for (size_t i = first; i < end && stays; ++i) mub_pool_free(tree.entry_pool, items[i].entry);
  items.erase(items.at(first), items.at(end));
  if (node.index == 0) tree.root = {};
  if (node.index == 0) items[0].value = 0;
  tree.count = static_cast<int64_t>(items.size()) - 1;
}
template <class R, class F>
void remove_below(WorldOf<R> &world, bool stays_owned, F remove) {
  Self<R> self(world);
  Node<R> node(world);
  const bool stays = stays_owned && self.slot.owns_entries();
  for (size_t i = node.index; i < end_of(node.items, node.index); ++i) {
    world.give_back(self.slot, node.items[i].value);
  }
  release(world, stays, self, node, remove);
}
template <class F>
void by_hand(op::entry_remove_x_, WorldOf<mub_tree> &world, F remove) {
  remove_below(world, true, remove);
}
template <class F>
void by_hand(op::entry_remove_, WorldOf<mub_bitree> &world, F remove) {
  remove_below(world, false, remove);
}
template <class R, class F>
void by_hand(op::entry_free_, WorldOf<R> &world, F free_entry) {
  Self<R> self(world);
  Free release_it(world);
  Node<R> node(world);
  const Words values = Kind<R>::values_of(node.items, node.index);
  release(world, self.slot.owns_entries(), self, node,
          [&](auto *tree, auto *entry) { free_entry(tree, entry, std::get<0>(release_it.arguments())); });
  expect_released(self.slot, values, release_it);
}

// ---- single entries

template <class R, class E>
void check(op::entry_new_, WorldOf<R> &world, Self<R> &self, E *entry) {
  EXPECT_EQ(entry == nullptr, world.failed);
  const E cleared = {};
  EXPECT_TRUE(entry == nullptr || std::memcmp(entry, &cleared, sizeof cleared) == 0);
  mub_pool_free(self.slot.record.entry_pool, entry);
}
template <class R, class E>
void by_hand(op::entry_init_, WorldOf<R> &, void (*init)(E *)) {
  E entry;
  std::memset(&entry, 'w', sizeof entry);
  init(&entry);
  const E cleared = {};
  EXPECT_EQ(std::memcmp(&entry, &cleared, sizeof cleared), 0);
}
// Of any tree; the copy is dropped.
template <class R, class E>
void check(op::clone_entry_, WorldOf<R> &world, Self<R> &self, Source<R> &source, E *copy) {
  EXPECT_EQ(copy == nullptr, world.failed);
  if (copy == nullptr) return;
  EXPECT_EQ(copy->parent, nullptr);
  const auto links = static_cast<int64_t>(end_of(source.items, source.index) - source.index) - 1;
  EXPECT_EQ(self.slot.record.count, static_cast<int64_t>(self.slot.content.size()) - 1 + links);
  self.slot.record.count -= links;
  const Slot<R> other = {{}, source.items};
  ASSERT_NO_FATAL_FAILURE(expect_like(other, source.index, *copy, true));
  Document copies;
  copies.clear();
  Kind<R>::read_entry(*copy, 0, 0, copies);
  for (const Item &item : copies) mub_pool_free(self.slot.record.entry_pool, item.entry);
}
// The parents that depend on an entry are set again.
template <class R, class E>
void by_hand(op::set_parent_, WorldOf<R> &world, void (*set_parent)(E *)) {
  Self<R> self(world);
  Node<R> node(world);
  for (size_t i = node.index + 1; i < end_of(node.items, node.index); ++i) {
    auto *entry = static_cast<E *>(node.items[i].entry);
    if (entry->parent == node.entry) entry->parent = nullptr;
  }
  if constexpr (std::is_same_v<R, mub_bitree>) {
    for (E *entry = node.entry->equal; entry != nullptr; entry = entry->equal)
      entry->parent = &self.slot.record.root;
  }
  set_parent(node.entry);
}
// The root with an entry of the caller's, and back.
template <class R, class E>
void by_hand(op::entry_swap_, WorldOf<R> &world, void (*swap)(E *, E *)) {
  Self<R> self(world);
  E &root = self.slot.record.root, other = {};
  if (root.value == 0) root.value = self.slot.content[0].value = world.draw_value(self.slot);
  Item &top = self.slot.content[0];
  swap(&root, &other);
  EXPECT_TRUE(Kind<R>::branches(root) == Kind<R>::branches({}) && root.value == 0);
  top.entry = &other;
  expect_like(self.slot, 0, other, false);
  top.entry = &root;
  swap(&root, &other);
  swap(&root, &root);
}
template <class F>
void by_hand(op::cmp_, WorldOf<mub_tree> &world, F compare_bytes) {
  const std::string a(static_cast<size_t>(world.program.below(49)), 'a');
  std::string b = a.substr(0, a.size() - static_cast<size_t>(world.program.one_in(4) && !a.empty() ? 1 : 0));
  if (world.program.one_in(2) && !b.empty()) b[static_cast<size_t>(world.program.below(49)) % b.size()] = 'b';
  EXPECT_EQ(compare_bytes(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size())),
            a == b ? 1 : 0);
}

// ---- order, searches and paths

void check(op::entry_index_, WorldOf<mub_tree> &, Within<mub_tree> &, Node<mub_tree> &node, int64_t result) {
  EXPECT_EQ(static_cast<uint64_t>(result), path_to(node.items, node.index).back());
}
// The array grows as if each index was put before the others.
void check(op::entry_array_, WorldOf<mub_tree> &world, Within<mub_tree> &, Node<mub_tree> &node,
           ArrayOut &out, None) {
  auto &[array, literal] = out.copies;
  Words path = path_to(node.items, node.index);
  for (; !path.empty() && !world.failed; path.pop_back()) mub_arrayt_insert_at(&literal, 0, path.back());
  EXPECT_TRUE(world.failed || array.capacity == literal.capacity);
  ASSERT_EQ(array.count, literal.count);
  for (int64_t i = 0; i < array.count; ++i) {
    EXPECT_EQ(mub_arrayt_get_at(&array, i), mub_arrayt_get_at(&literal, i));
  }
}
void check(op::entry_compare_, WorldOf<mub_tree> &, Within<mub_tree> &, Pair<mub_tree> &pair, int result) {
  const Words a = path_to(pair.items, pair.index), b = path_to(pair.items, pair.second.index);
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  EXPECT_EQ(result, static_cast<int>(x == a.end() || y == b.end() ? a.size() - b.size() : *x - *y));
}
void check(op::entry_find_child_, WorldOf<mub_tree> &, Within<mub_tree> &, Pair<mub_tree> &pair, int result) {
  const size_t below = pair.second.index;
  EXPECT_EQ(result, pair.index < below && below < end_of(pair.items, pair.index) ? 1 : 0);
}

// Neighbours, and what searches find within their bounds.
template <class Op, class... Args>
void expect_found(const Node<mub_tree> &node, const Args &...args) {
  const Document &items = node.items;
  const auto *range = role_of<Range<mub_tree>>(args...);
  const auto *key = role_of<Key<mub_tree>>(args...);
  const size_t index = node.index, past = end_of(items, index), end = end_of(items, node.bound);
  size_t found = items.size();  // nothing
  if (has<Op>("last")) {
    for (size_t at = index + 1; at < past; at = end_of(items, at)) found = at;
  } else if (has<Op>("prev")) {
    for (size_t at = node.bound + 1; at < index; at = end_of(items, at)) found = at;
  } else if (has<Op>("parent")) {
    for (size_t at = index; at > 0 && found == items.size();) {
      at = above(items, at);
      if (range->has_bound && at == node.bound) break;
      if (items[at].value == *key->word) found = at;
    }
  } else {
    found = key != nullptr    ? first_with(items, *key->word, index + 1, end)
            : has<Op>("iter") ? index + 1
                              : past;
    if (found >= end) found = items.size();
  }
  const auto *comparer = role_of<AnyComparer>(args...);
  EXPECT_EQ(result_of(args...), comparer == nullptr || comparer->is_given ? node.entry_at(found) : nullptr);
}

// Entries that are missing on a path are appended, each to the one before; only one at the end gets a value.
template <class Op, class... Args>
void expect_path(WorldOf<mub_tree> &world, Slot<mub_tree> &slot, const Args &...args) {
  const auto *from = role_of<From<mub_tree>>(args...);
  const Words &keys = role_of<Path<mub_tree>>(args...)->keys;
  mub_tree_entry *const result = result_of(args...);
  Document &items = slot.content;
  size_t at = from != nullptr ? from->index : 0;
  size_t depth = from != nullptr ? static_cast<size_t>(from->depth) : 0;
  if (depth >= keys.size() || !role_of<AnyComparer>(args...)->is_given) {
    EXPECT_EQ(result, nullptr);
    return;
  }
  for (size_t next = at; next < items.size() && depth < keys.size(); ++depth) {
    const size_t end = end_of(items, at);
    next = first_with(items, keys[depth], at + 1, end);
    if (next == end) break;
    at = next;
  }
  const bool is_found = depth == keys.size();
  if constexpr (has<Op>("insert")) {
    for (; depth < keys.size() && slot.record.count >= static_cast<int64_t>(items.size()); ++depth) {
      const int above_depth = items[at].depth;
      at = end_of(items, at);
      items.insert(items.at(at), {nullptr, 0, "", above_depth + 1});
    }
    EXPECT_EQ(result == nullptr, depth < keys.size());
    EXPECT_TRUE(result != nullptr || world.failed);
    const bool is_new = !is_found && result != nullptr;
    if (is_new) {
      EXPECT_EQ(result->value == 0, world.failed || !slot.has_values);
      items[at].value = result->value;
    }
    const bool is_called = is_new && role_of<Init>(args...)->is_given && result->value != 0;
    EXPECT_EQ(seen, is_called ? Words{result->value} : Words());
    if (!is_found) return;
  }
  EXPECT_EQ(result, is_found ? items[at].entry : nullptr);
}

template <class Op, class R, class... Args>
void check(Op, WorldOf<R> &world, Self<R> &self, const Args &...args) {
  if constexpr ((std::is_same_v<Args, Fresh<R>> || ...)) {
    expect_linked<Op>(world, self, args...);
  } else if constexpr ((std::is_same_v<Args, Path<R>> || ...)) {
    expect_path<Op>(world, self.slot, args...);
  } else {
    expect_found<Op>(*role_of<Node<R>>(args...), args...);
  }
}

}  // namespace mub_test

#include "tree_steps.inc"
