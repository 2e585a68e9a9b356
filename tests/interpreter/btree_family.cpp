// B-trees under programs: see maps.h.
#include "btree_ops.inc"
#include "interpreter/maps.h"

namespace mub_test {

// role (const )?mub_btree\w*_entry \* entry = Entry<%s>

template <class Child>
std::vector<Child *> children_of(const mub_arrays &children) {
  std::vector<Child *> all;
  for (int64_t i = 0; i < children.count; ++i) all.push_back(reinterpret_cast<Child *>(children.items[i]));
  return all;
}
// An entry and all below it, parents first.
template <class E>
std::vector<E *> entries_from(E &top) {
  std::vector<E *> all = {&top};
  if (top.level == 0) return all;
  for (E *child : children_of<E>(top.children)) {
    for (E *below : entries_from(*child)) all.push_back(below);
  }
  return all;
}
template <class E>
std::vector<E *> leaves_from(E &top) {
  std::vector<E *> leaves;
  for (E *entry : entries_from(top)) {
    if (entry->level == 0) leaves.push_back(entry);
  }
  return leaves;
}
template <class N, class E>
std::vector<N *> nodes_from(E &top) {
  std::vector<N *> all;
  for (E *leaf : leaves_from(top)) {
    for (N *node : children_of<N>(leaf->children)) all.push_back(node);
  }
  return all;
}

template <class R, class E, class N, class C>
struct BtreeKind : MapKind<R, N> {
  using Entry = E;
  using Cursor = C;
  static constexpr bool kIsOrdered = true, kTermLeavesEntries = false;
  static constexpr bool kHandsOutFirst = false;
  static constexpr int64_t kEntryBytes = sizeof(E);
  static constexpr int64_t kNodeBytes = sizeof(N);

  static int64_t entries_of(const R &tree) {
    return static_cast<int64_t>(entries_from(const_cast<E &>(tree.root)).size()) - 1;
  }
  static mub_pool *pool_of_children(const R &tree, const E &entry) {
    return entry.level == 0 ? tree.node_pool : tree.entry_pool;
  }
  static bool has_name_of_last(const E &entry) {
    const auto last = entry.children.items[entry.children.count - 1];
    return entry.level == 0 ? Kind<R>::has_same_key(entry, *reinterpret_cast<const N *>(last))
                            : Kind<R>::has_same_key(entry, *reinterpret_cast<const E *>(last));
  }

  // All invariants of the engine. The root's key stays right while removals do not move the keys.
  static void read(const R &tree, const Items &expected, Items &content) {
    auto &root = const_cast<E &>(tree.root);
    const auto entries = entries_from(root);
    ASSERT_EQ(root.parent, nullptr);
    for (const E *entry : entries) {
      const mub_arrays &children = entry->children;
      ASSERT_TRUE(children.count <= 31 || !expected.fits);
      ASSERT_LE(children.count, children.capacity);
      ASSERT_TRUE(tree.count == 0 || children.pool == pool_of_children(tree, *entry));
      ASSERT_TRUE(entry == &root || children.count > 0);
      ASSERT_TRUE(entry == &root || has_name_of_last(*entry));
      if (entry->level == 0) continue;
      for (const E *child : children_of<E>(children))
        ASSERT_TRUE(child->parent == entry && child->level == entry->level - 1);
    }
    const auto nodes = nodes_from<N>(root);
    for (size_t i = 0; i < nodes.size(); ++i) {
      N &node = *nodes[i];
      const std::string text = Kind<R>::text_of(tree, node);
      ASSERT_TRUE(content.empty() || content.back().text < text);
      content.push_back({text, Kind<R>::bytes_of(tree, node), &node, node.value});
      ASSERT_TRUE(!expected.links_are_exact ||
                  (node.prev == (i == 0 ? nullptr : nodes[i - 1]) &&
                   node.next == (i + 1 == nodes.size() ? nullptr : nodes[i + 1])));
    }
    const bool may_lack_name = Kind<R>::kKeysMove && !expected.links_are_exact;
    ASSERT_TRUE(nodes.empty() || may_lack_name || has_name_of_last(root));
    ASSERT_NO_FATAL_FAILURE(Kind<R>::compare_keys(tree, std::vector<const N *>(nodes.begin(), nodes.end())));
    ASSERT_EQ(tree.count, static_cast<int64_t>(nodes.size()));
    ASSERT_TRUE(tree.owns_node_pool == 0 || tree.node_pool->live_count == tree.count);
    content.links_are_exact = expected.links_are_exact;
    content.fits = expected.fits;
  }
};

template <>
struct Kind<mub_btree> : BtreeKind<mub_btree, mub_btree_entry, mub_btree_node, mub_btree_cursor>,
                         ByteKeyKind<mub_btree> {
  using ByteKeyKind<mub_btree>::compare_keys;
  static constexpr bool kKeysMove = true;
  template <class Child>
  static bool has_same_key(const Entry &entry, const Child &child) {
    return entry.key_offset == child.key_offset && entry.key_length == child.key_length;
  }
  static void copy_key(Entry &entry, const Node &node) {
    entry.key_offset = node.key_offset;
    entry.key_length = node.key_length;
  }
  static void share_keys(const mub_btree &tree, mub_btree &copy) { mub_stream_clone(&tree.keys, &copy.keys); }
  static void drop_keys(mub_btree &copy) { mub_stream_shrink(&copy.keys, 0); }
};

// Texts that order as numbers of a type do.
template <class Bits>
std::string text_of_number(Bits bits, uint32_t key_type) {
  constexpr Bits kSign = Bits{1} << (8 * sizeof bits - 1);
  if (key_type < 5) return big_endian<Bits>(key_type % 2 != 0 ? bits ^ kSign : bits);
  return big_endian<Bits>((bits & kSign) != 0 ? static_cast<Bits>(~bits) : bits | kSign);
}

template <class R, class E, class N, class C, class Bits, class Float>
struct NumberBtreeKind : BtreeKind<R, E, N, C> {
  static constexpr bool kKeysMove = false;
  static constexpr uint32_t kSigned = sizeof(Bits) == 4 ? 1 : 3, kFloat = sizeof(Bits) == 4 ? 5 : 6;

  struct KeyArgument {
    explicit KeyArgument(WorldOf<R> &world) : KeyArgument(world, world.program.below(kDrawnKeys)) {}
    KeyArgument(WorldOf<R> &world, int64_t number) : key(hard_number<Bits>(number)) {
      const uint32_t type = world.self->record.key_type;
      if (type == kFloat) {
        const auto half = static_cast<Float>(number / 2);
        const Float value = number % 2 == 0 ? half : -1 / (half + 1);
        std::memcpy(&key, &value, sizeof key);
      }
      bytes = big_endian(key);
      text = text_of_number(key, type);
    }
    auto arguments() const { return std::tuple(key); }
    Bits key;
    std::string bytes, text;
  };
  static void set_order(R *tree, int which) {
    tree->key_type = which == 0 ? kSigned : which == 2 ? kSigned + 1 : kFloat;
  }
  template <class Item>
  static std::string bytes_of(const R &, const Item &item) {
    return big_endian(item.key);
  }
  template <class Item>
  static std::string text_of(const R &tree, const Item &item) {
    return text_of_number(item.key, tree.key_type);
  }
  template <class Child>
  static bool has_same_key(const E &entry, const Child &child) {
    return entry.key == child.key;
  }
  static void copy_key(E &entry, const N &node) { entry.key = node.key; }
  static void share_keys(const R &, R &) {}
  static void drop_keys(R &) {}
};
template <>
struct Kind<mub_btreed>
    : NumberBtreeKind<mub_btreed, mub_btreed_entry, mub_btreed_node, mub_btreed_cursor, uint32_t, float> {};
template <>
struct Kind<mub_btreex>
    : NumberBtreeKind<mub_btreex, mub_btreex_entry, mub_btreex_node, mub_btreex_cursor, uint64_t, double> {};

template <class Item>
Item *any_of(Program &program, const std::vector<Item *> &items) {
  return items.empty() ? nullptr
                       : items[static_cast<size_t>(program.below(static_cast<int64_t>(items.size())))];
}
template <class R>
struct Entry {
  explicit Entry(WorldOf<R> &world)
      : slot(*world.self), entry(any_of(world.program, entries_from(slot.record.root))) {}
  auto arguments() const { return std::tuple(entry); }
  Slot<R> &slot;
  typename Kind<R>::Entry *entry;
};
template <class R>
auto nodes_of(const Slot<R> &slot) {
  return nodes_from<typename Kind<R>::Node>(const_cast<Slot<R> &>(slot).record.root);
}

// ---- walks

// Sets a cursor, and takes steps to and fro, or on to the end. `index` is -1 before the first record, and the
// count after the last.
template <class R>
void walk(const Slot<R> &slot, const Key<R> &key, Program program) {
  using F = Functions<R>;
  const auto nodes = nodes_of(slot);
  const auto count = static_cast<int64_t>(nodes.size());
  const auto at = [&](int64_t i) { return i < 0 || i >= count ? nullptr : nodes[static_cast<size_t>(i)]; };
  typename Kind<R>::Cursor cursor;
  int64_t index = slot.content.not_before(key.text) - slot.content.begin();
  const auto seek = std::tuple_cat(std::tuple(&cursor, &slot.record), key.arguments());
  ASSERT_EQ(std::apply(F::cursor_seek_, seek), at(index));
  const bool goes_on = program.one_in(2);
  const auto start = program.below(3);
  if (start > 0) {
    index = start == 1 ? 0 : count - 1;
    ASSERT_EQ((start == 1 ? F::cursor_first_ : F::cursor_last_)(&cursor, &slot.record), at(index));
  }
  for (int64_t left = program.below(80); left > 0; --left) {
    const bool is_up = goes_on ? start != 2 : program.one_in(2);
    index = std::clamp<int64_t>(index + (is_up ? 1 : -1), -1, count);
    ASSERT_EQ(is_up ? F::cursor_next_(&cursor) : F::cursor_prev_(&cursor), at(index));
    ASSERT_EQ(F::cursor_node_(&cursor), at(index));
    if (at(index) == nullptr) continue;
    ASSERT_EQ(F::node_next_(&slot.record, at(index)), at(index + 1));
    ASSERT_EQ(F::node_prev_(&slot.record, at(index)), at(index - 1));
  }
  ASSERT_EQ(F::node_first_(&slot.record), at(0));
  ASSERT_EQ(F::node_last_(&slot.record), at(count - 1));
  ASSERT_EQ(cursor.tree, &slot.record);
}
template <class R>
void walk(WorldOf<R> &world, const Slot<R> &slot) {
  const Key<R> key(world);
  world.read_by_all([&] { walk(slot, key, world.program); });
}
template <class R, class F>
void by_hand(OneOf<op::cursor_first_, op::cursor_last_, op::cursor_seek_, op::cursor_next_, op::cursor_prev_,
                   op::cursor_node_, op::node_first_, op::node_last_, op::node_next_, op::node_prev_,
                   op::first_entry_, op::last_entry_>,
             WorldOf<R> &world, F) {
  const Self<R> self(world);
  walk(world, self.slot);
  const Entry<R> from(world);
  world.read_by_all([&] {
    EXPECT_EQ(Functions<R>::first_entry_(from.entry), leaves_from(*from.entry).front());
    EXPECT_EQ(Functions<R>::last_entry_(from.entry), leaves_from(*from.entry).back());
  });
}

// ---- keys

// The leaf below an entry that holds a key, or would hold it.
template <class R>
typename Kind<R>::Entry *leaf_of(const R &tree, typename Kind<R>::Entry &top, const Key<R> &key) {
  auto leaves = leaves_from(top);
  auto *last = leaves.back();
  leaves.pop_back();
  for (auto *leaf : leaves) {
    if (key.text <= Kind<R>::text_of(tree, *leaf)) return leaf;
  }
  return last;
}
template <class R, class E>
void check(op::find_t_, WorldOf<R> &, Self<R> &self, Entry<R> &entry, Key<R> &key, E *result) {
  EXPECT_EQ(result, leaf_of(self.slot.record, *entry.entry, key));
}
template <class R, class N>
void check(op::node_bfind_, WorldOf<R> &, Self<R> &self, Key<R> &key, N *result) {
  const Items &content = self.slot.content;
  const auto nearest = content.not_before(key.text);
  const Item *last = content.empty() ? nullptr : &content.back();
  expect_node<R>(result, nearest == content.end() ? last : &*nearest);
}
template <class R, class F>
void by_hand(op::insert_t_, WorldOf<R> &world, F insert) {
  Self<R> self(world);
  with_keys(world, [&](Key<R> &key) {
    R &tree = self.slot.record;
    const NodeOut<R> out(world);
    const auto place = std::tuple(&tree, leaf_of(tree, tree.root, key));
    const auto arguments = std::tuple_cat(place, key.arguments(), out.arguments());
    const int result = world.call([&] { return std::apply(insert, arguments); });
    check_node_set(world, self.slot, key, *out.node, result);
  });
}
inline int sign(int order) { return (order > 0) - (order < 0); }
template <class R, class Item, class F>
void expect_compared(const R &tree, const Item &item, const Key<R> &key, F compare) {
  int order;
  if constexpr (Kind<R>::kKeysMove) {
    order = compare(&tree, &item, key.bytes.data(), static_cast<int64_t>(key.bytes.size()));
  } else {
    order = compare(&item, &key.key, tree.key_type);
  }
  EXPECT_EQ(sign(order), sign(Kind<R>::text_of(tree, item).compare(key.text)));
}
template <class R, class F>
void by_hand(OneOf<op::node_compare_, op::entry_compare_, op::entrys_compare_>, WorldOf<R> &world, F) {
  const Self<R> self(world);
  const R &tree = self.slot.record;
  if (tree.root.level == 0) return;  // its key may be out of date
  const Key<R> key(world);
  const auto leaves = leaves_from(self.slot.record.root);
  const auto &a = *any_of(world.program, leaves), &b = *any_of(world.program, leaves);
  const auto &node = *any_of(world.program, nodes_of(self.slot));
  world.read_by_all([&] {
    expect_compared(tree, a, key, Functions<R>::entry_compare_);
    expect_compared(tree, node, key, Functions<R>::node_compare_);
    int order;
    if constexpr (Kind<R>::kKeysMove) {
      order = Functions<R>::entrys_compare_(&tree, &a, &b, 0);
    } else {
      order = Functions<R>::entrys_compare_(&a, &b, tree.key_type);
    }
    EXPECT_EQ(sign(order), sign(Kind<R>::text_of(tree, a).compare(Kind<R>::text_of(tree, b))));
  });
}
template <class R, class F>
void by_hand(op::var_compare_, WorldOf<R> &world, F compare) {
  const Self<R> self(world);
  const Key<R> a(world), b(world);
  EXPECT_EQ(compare(&a.key, &b.key, self.slot.record.key_type), sign(a.text.compare(b.text)));
}

// ---- entries

template <class R, class F>
void by_hand(op::split_, WorldOf<R> &world, F split) {
  Self<R> self(world);
  R &tree = self.slot.record;
  const auto level = static_cast<int16_t>(world.program.below(tree.root.level + 1));
  const bool splits_all = world.program.one_in(2);
  for (auto *entry : entries_from(tree.root)) {
    if (entry->level != level || entry->children.count < 2) continue;
    world.call([&] { split(&tree, entry); });
    self.slot.content.fits &= !world.failed;
    if (!splits_all) return;
  }
}
// The new half is moved back.
template <class R, class F>
void by_hand(OneOf<op::split_entry_, op::split_node_>, WorldOf<R> &world, F split) {
  Self<R> self(world);
  R &tree = self.slot.record;
  auto &lower = *Entry<R>(world).entry;
  const int64_t count = lower.children.count;
  if (count < 2) return;
  auto *upper = world.call([&] { return split(&tree, &lower); });
  EXPECT_NE(world.failed, upper != nullptr);
  if (upper == nullptr) return;
  EXPECT_TRUE(upper->level == lower.level && upper->parent == lower.parent);
  EXPECT_TRUE(lower.children.count == count / 2 && upper->children.pool == lower.children.pool);
  EXPECT_TRUE(Kind<R>::has_name_of_last(lower) && Kind<R>::has_name_of_last(*upper));
  EXPECT_TRUE(lower.level == 0 || entries_from(*upper)[1]->parent == upper);
  for (int64_t i = 0; i < upper->children.count; ++i)
    mub_arrays_append(&lower.children, upper->children.items[i]);
  Functions<R>::set_parent_(&lower);
  Kind<R>::copy_key(lower, *nodes_from<typename Kind<R>::Node>(lower).back());
  upper->children.count = 0;
  upper->parent = nullptr;
  Functions<R>::remove_entry_t_(&tree, upper);
}

template <class R, class E>
void expect_fresh(const E &entry, const mub_pool *pool) {
  EXPECT_TRUE(Kind<R>::has_same_key(entry, E{}) && entry.level == 0 && entry.parent == nullptr);
  EXPECT_TRUE(entry.children.count == 0 && entry.children.capacity >= 32 && entry.children.pool == pool);
}
template <class R, class F>
void by_hand(op::entry_init_, WorldOf<R> &world, F init) {
  typename Kind<R>::Entry entry;
  std::memset(&entry, 0x77, sizeof entry);
  world.call([&] { init(&entry); });
  if (!world.failed) expect_fresh<R>(entry, nullptr);
  mub_arrays_remove_all(&entry.children);
}
template <class R, class F>
void by_hand(op::node_init_, WorldOf<R> &, F init) {
  typename Kind<R>::Node node;
  std::memset(&node, 0x77, sizeof node);
  init(&node);
  EXPECT_TRUE(Kind<R>::has_same_key({}, node) && node.value == 0);
  EXPECT_TRUE(node.prev == nullptr && node.next == nullptr);
}
// A new entry, which becomes an empty leaf among others or stays alone, is removed again; a root is not.
template <class R, class F>
void by_hand(OneOf<op::entry_new_, op::remove_entry_t_>, WorldOf<R> &world, F) {
  Self<R> self(world);
  R &tree = self.slot.record;
  const auto level = static_cast<int>(world.program.below(4)) - 1;
  const auto kept = tree.entry_pool->live_count;
  auto *entry = world.call([&] { return Functions<R>::entry_new_(&tree, level); });
  EXPECT_EQ(tree.entry_pool->live_count, kept + (world.failed ? 0 : 1));
  if (entry == nullptr) return;
  expect_fresh<R>(*entry, level < 1 ? tree.node_pool : tree.entry_pool);
  auto &parent = *Entry<R>(world).entry;
  if (parent.level == 1) {
    entry->parent = &parent;
    mub_arrays_insert_at(&parent.children, world.program.below(parent.children.count + 1),
                         reinterpret_cast<uintptr_t>(entry));
  }
  Functions<R>::remove_entry_t_(&tree, entry);
  Functions<R>::remove_entry_t_(&tree, &tree.root);
}
// What is out of order below an entry, and the names from a leaf up, are put in order.
template <class R, class F>
void by_hand(OneOf<op::set_name_, op::set_parent_, op::set_pool_>, WorldOf<R> &world, F) {
  const Self<R> self(world);
  R &tree = self.slot.record;
  const auto nodes = nodes_of(self.slot);
  auto *leaf = any_of(world.program, leaves_from(tree.root));
  auto levels = world.program.below(4);
  for (auto *named = leaf; named != nullptr && levels > 0; named = named->parent, --levels) {
    if (nodes.empty() || nodes_from<typename Kind<R>::Node>(*named).back() == nodes[0]) break;
    Kind<R>::copy_key(*named, *nodes[0]);
  }
  Functions<R>::set_name_(&tree, leaf);
  auto &top = *Entry<R>(world).entry;
  for (auto *below : entries_from(top)) {
    if (below->parent == &top) below->parent = nullptr;
    if (below == &top || below->level > 0) below->children.pool = &world.users[0];
  }
  Functions<R>::set_parent_(&top);
  Functions<R>::set_pool_(&tree, &top);
}
// A record that is unlinked is linked again by the links of the one beside it.
template <class R, class F>
void by_hand(op::set_next_, WorldOf<R> &world, F set_next) {
  const Self<R> self(world);
  auto &leaf = *any_of(world.program, leaves_from(self.slot.record.root));
  if (!self.slot.content.links_are_exact || leaf.children.count < 1) return;
  const int64_t index = world.program.below(leaf.children.count);
  auto *node = reinterpret_cast<typename Kind<R>::Node *>(leaf.children.items[index]);
  if (leaf.children.count > 1) {
    if (node->prev != nullptr) node->prev->next = node->next;
    if (node->next != nullptr) node->next->prev = node->prev;
    node->prev = node->next = node;
  }
  set_next(&leaf, index);
}
template <class F>
void by_hand(op::adjust_t_, WorldOf<mub_btree> &world, F adjust) {
  const Self<mub_btree> self(world);
  auto &top = *Entry<mub_btree>(world).entry;
  std::vector<Offset> offsets;
  for (auto *entry : entries_from(top)) {
    if (entry != &top) offsets.push_back({&entry->key_offset, entry->key_length});
  }
  for (auto *node : nodes_from<mub_btree_node>(top)) offsets.push_back({&node->key_offset, node->key_length});
  expect_lowered(world.program, self.slot.record.keys, offsets, [&](uint32_t offset, int64_t length) {
    adjust(&self.slot.record, &top, offset, static_cast<uint32_t>(length));
  });
}

// ---- parts of trees

// What the model has below an entry.
template <class R>
Items content_from(const Slot<R> &slot, typename Kind<R>::Entry &top) {
  Items content;
  for (auto *node : nodes_from<typename Kind<R>::Node>(top))
    content.push_back(*slot.content.find(Kind<R>::text_of(slot.record, *node)));
  content.links_are_exact = content.fits = false;
  return content;
}
// Empties what is below an entry, walks over the rest, and empties the tree.
template <class R, class F>
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_>, WorldOf<R> &world, F empty) {
  Self<R> self(world);
  R &tree = self.slot.record;
  auto *top = Entry<R>(world).entry;
  const Items gone = content_from(self.slot, *top);
  const auto give_back_all = [&](const Items &items) {
    if (self.slot.owns_values()) return;
    for (const Item &item : items) world.give_back(self.slot, item.value);
  };
  if constexpr (std::is_invocable_v<F, R *, decltype(top), mub_free_fn>) {
    const Free release(world);
    empty(&tree, top, std::get<0>(release.arguments()));
    expect_released(self.slot, values_of(gone), release);
  } else {
    give_back_all(gone);
    empty(&tree, top);
  }
  for (const Item &item : gone) self.slot.content.remove(item.text);
  walk(world, self.slot);
  give_back_all(self.slot.content);
  Functions<R>::remove_all_(&tree);
  self.slot.forget_all();
}
// Into an empty tree, which is emptied again. It gets all key bytes, and so all keys.
template <class R, class F>
void by_hand(op::clone_entry_, WorldOf<R> &world, F clone) {
  const Self<R> self(world);
  auto &from = Kind<R>::kKeysMove ? self.slot.record.root : *Entry<R>(world).entry;
  const Peer<R> to(world);
  R &copy = to.slot.record;
  if (&to.slot == &self.slot) return;
  world.end(to.slot);
  world.start(to.slot);
  Kind<R>::share_keys(self.slot.record, copy);
  const int result = world.call([&] { return clone(&self.slot.record, &from, &copy, &copy.root); });
  if (result == 0) Kind<R>::drop_keys(copy);
  EXPECT_EQ(result, world.failed ? 0 : 1);
  EXPECT_EQ(copy.root.level, result == 0 ? 0 : from.level);
  if (result == 1) to.slot.content = content_from(self.slot, from);
  for (Item &item : to.slot.content) item.entry = nullptr;
  copy.count = static_cast<int64_t>(to.slot.content.size());
  world.compare(to.slot);
  Functions<R>::remove_all_(&copy);
  to.slot.forget_all();
}

}  // namespace mub_test

#include "btree_steps.inc"
