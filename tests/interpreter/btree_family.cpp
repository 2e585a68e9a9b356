// B-trees under programs: see maps.h.
#include "btree_ops.inc"
#include "interpreter/maps.h"

namespace mub_test {

// role (const )?mub_btree\w*_entry \* entry = Entry<%s>

// An entry and all below it, in the order of the keys; parents come first.
template <class R>
struct Parts {
  using E = typename Kind<R>::Entry;
  using N = typename Kind<R>::Node;
  explicit Parts(E &top) { add(top); }
  void add(E &entry) {
    entries.push_back(&entry);
    if (entry.level == 0) leaves.push_back(&entry);
    for (int64_t i = 0; i < entry.children.count; ++i) {
      const auto child = static_cast<uintptr_t>(entry.children.items[i]);
      if (entry.level > 0) {
        add(*reinterpret_cast<E *>(child));
      } else {
        nodes.push_back(reinterpret_cast<N *>(child));
      }
    }
  }
  std::vector<E *> entries, leaves;
  std::vector<N *> nodes;
};

template <class R, class E, class N, class C, class Keys>
struct BtreeKind : MapKind<R, N, Keys> {
  using Entry = E;
  using Cursor = C;
  static constexpr bool kIsOrdered = true, kTermLeavesEntries = false, kHandsOutFirst = false;
  static constexpr bool kKeysMove = std::is_same_v<R, mub_btree>;
  static constexpr int64_t kEntryBytes = sizeof(E), kNodeBytes = sizeof(N);

  static int64_t entries_of(R &tree) { return static_cast<int64_t>(Parts<R>(tree.root).entries.size()) - 1; }
  static auto key_of(auto &item) {
    if constexpr (kKeysMove) {
      return std::tie(item.key_offset, item.key_length);
    } else {
      return std::tie(item.key);
    }
  }
  static bool has_name_of_last(const E &entry) {
    const auto last = static_cast<uintptr_t>(entry.children.items[entry.children.count - 1]);
    return key_of(entry) == (entry.level == 0 ? key_of(*reinterpret_cast<const N *>(last))
                                              : key_of(*reinterpret_cast<const E *>(last)));
  }

  // All invariants of the engine. The root's key stays right while removals do not move the keys.
  static void read(R &tree, const typename BtreeKind::Content &expected,
                   typename BtreeKind::Content &content) {
    const Parts<R> parts(tree.root);
    const auto &nodes = parts.nodes;
    ASSERT_EQ(tree.root.parent, nullptr);
    for (E *entry : parts.entries) {
      const mub_arrays &children = entry->children;
      const bool is_leaf = entry->level == 0;
      ASSERT_TRUE(children.count <= 31 || !expected.fits);
      ASSERT_LE(children.count, children.capacity);
      ASSERT_TRUE(tree.count == 0 || children.pool == (is_leaf ? tree.node_pool : tree.entry_pool));
      ASSERT_TRUE(entry == &tree.root || (children.count > 0 && has_name_of_last(*entry)));
      for (int64_t i = 0; i < children.count && !is_leaf; ++i) {
        const E &child = *reinterpret_cast<E *>(static_cast<uintptr_t>(children.items[i]));
        ASSERT_TRUE(child.parent == entry && child.level == entry->level - 1);
      }
    }
    for (size_t i = 0; i < nodes.size(); ++i) {
      content.push_back({Keys::text_of(tree, *nodes[i]), nodes[i], nodes[i]->value});
      ASSERT_TRUE(i == 0 || content[i - 1].text < content[i].text);
      if (!expected.links_are_exact) continue;
      ASSERT_EQ(nodes[i]->prev, i == 0 ? nullptr : nodes[i - 1]);
      ASSERT_EQ(nodes[i]->next, i + 1 == nodes.size() ? nullptr : nodes[i + 1]);
    }
    const bool may_lack_name = nodes.empty() || (kKeysMove && !expected.links_are_exact);
    ASSERT_TRUE(may_lack_name || has_name_of_last(tree.root));
    Keys::check_store(tree, nodes);
    ASSERT_EQ(tree.count, static_cast<int64_t>(nodes.size()));
    ASSERT_TRUE(tree.owns_node_pool == 0 || tree.node_pool->live_count == tree.count);
    content.links_are_exact = expected.links_are_exact;
    content.fits = expected.fits;
  }
};
template <>
struct Kind<mub_btree>
    : BtreeKind<mub_btree, mub_btree_entry, mub_btree_node, mub_btree_cursor, ByteKeys<mub_btree>> {};
template <>
struct Kind<mub_btreed> : BtreeKind<mub_btreed, mub_btreed_entry, mub_btreed_node, mub_btreed_cursor,
                                    NumberKeys<mub_btreed, uint32_t>> {};
template <>
struct Kind<mub_btreex> : BtreeKind<mub_btreex, mub_btreex_entry, mub_btreex_node, mub_btreex_cursor,
                                    NumberKeys<mub_btreex, uint64_t>> {};

template <class R>
Parts<R> parts_of(Slot<R> &slot) {
  return Parts<R>(slot.record.root);
}
template <class Item>
Item *any_of(Program &program, const std::vector<Item *> &items) {
  return items[static_cast<size_t>(program.below(static_cast<int64_t>(items.size())))];
}
constexpr auto draw_entry = [](auto &world) { return any_of(world.program, parts_of(*world.self).entries); };
template <class R>
using Entry = Drawn<typename Kind<R>::Entry *, draw_entry>;

// ---- walks

// Sets a cursor, and takes steps to and fro, or on to the end. `index` is -1 before the first record, and the
// count after the last.
template <class R>
void walk(Slot<R> &slot, const Key<R> &key, Program program) {
  using F = Functions<R>;
  const R *tree = &slot.record;
  const auto nodes = parts_of(slot).nodes;
  const auto count = static_cast<int64_t>(nodes.size());
  const auto at = [&](int64_t i) { return i < 0 || i >= count ? nullptr : nodes[static_cast<size_t>(i)]; };
  typename Kind<R>::Cursor cursor;
  int64_t index = slot.content.not_before(key.text) - slot.content.begin();
  ASSERT_EQ(call_with(F::cursor_seek_, &cursor, tree, key), at(index));
  const bool goes_on = program.one_in(2);
  const auto start = program.below(3);
  if (start > 0) {
    index = start == 1 ? 0 : count - 1;
    ASSERT_EQ((start == 1 ? F::cursor_first_ : F::cursor_last_)(&cursor, tree), at(index));
  }
  for (int64_t left = program.below(80); left > 0; --left) {
    const bool is_up = goes_on ? start != 2 : program.one_in(2);
    index = std::clamp<int64_t>(index + (is_up ? 1 : -1), -1, count);
    ASSERT_EQ((is_up ? F::cursor_next_ : F::cursor_prev_)(&cursor), at(index));
    ASSERT_EQ(F::cursor_node_(&cursor), at(index));
    if (at(index) == nullptr) continue;
    ASSERT_EQ(F::node_next_(tree, at(index)), at(index + 1));
    ASSERT_EQ(F::node_prev_(tree, at(index)), at(index - 1));
  }
  ASSERT_EQ(F::node_first_(tree), at(0));
  ASSERT_EQ(F::node_last_(tree), at(count - 1));
  ASSERT_EQ(cursor.tree, tree);
}
template <class R>
void walk(WorldOf<R> &world, Slot<R> &slot) {
  const Key<R> key(world);
  world.read_by_all([&] { walk(slot, key, world.program); });
}
template <class R>
void by_hand(OneOf<op::cursor_first_, op::cursor_last_, op::cursor_seek_, op::cursor_next_, op::cursor_prev_,
                   op::cursor_node_, op::node_first_, op::node_last_, op::node_next_, op::node_prev_> auto,
             WorldOf<R> &world, auto) {
  walk(world, Self<R>(world).slot);
}
template <class R>
void by_hand(OneOf<op::first_entry_, op::last_entry_> auto, WorldOf<R> &world, auto) {
  const Self<R> self(world);
  auto *from = Entry<R>(world).value;
  const auto leaves = Parts<R>(*from).leaves;
  EXPECT_EQ(Functions<R>::first_entry_(from), leaves.front());
  EXPECT_EQ(Functions<R>::last_entry_(from), leaves.back());
}

// ---- keys

// The leaf below an entry that holds a key, or would hold it. The key of the last may be out of date.
template <class R>
auto *leaf_of(const R &tree, typename Kind<R>::Entry &top, const Key<R> &key) {
  const auto leaves = Parts<R>(top).leaves;
  return *std::find_if(leaves.begin(), leaves.end() - 1,
                       [&](const auto *leaf) { return key.text <= Kind<R>::text_of(tree, *leaf); });
}
template <class R>
void check(op::find_t_, WorldOf<R> &, Self<R> &self, Entry<R> &entry, Key<R> &key, auto *result) {
  EXPECT_EQ(result, leaf_of(self.slot.record, *entry.value, key));
}
template <class R>
void check(op::node_bfind_, WorldOf<R> &, Self<R> &self, Key<R> &key, auto *result) {
  auto &content = self.slot.content;
  const auto nearest = content.not_before(key.text);
  expect_node<R>(result, content.empty() ? nullptr : nearest == content.end() ? &content.back() : &*nearest);
}
template <class R>
void by_hand(op::insert_t_, WorldOf<R> &world, auto insert) {
  Self<R> self(world);
  with_keys(world, [&](Key<R> &key) {
    const NodeOut<R> out(world);
    auto *leaf = leaf_of(self.slot.record, self.slot.record.root, key);
    const int result = world.call([&] { return call_with(insert, self, leaf, key, out); });
    expect_node_set(world, self.slot, key, *out.value, result);
  });
}
template <class R>
void by_hand(OneOf<op::node_compare_, op::entry_compare_, op::entrys_compare_> auto, WorldOf<R> &world,
             auto) {
  using F = Functions<R>;
  const Self<R> self(world);
  const R &tree = self.slot.record;
  if (tree.root.level == 0) return;  // its key may be out of date
  const Key<R> key(world);
  const auto parts = parts_of(self.slot);
  const auto *a = any_of(world.program, parts.leaves), *b = any_of(world.program, parts.leaves);
  const auto *node = any_of(world.program, parts.nodes);
  const auto expect_order = [&](int order, const auto &item, const auto &other) {
    EXPECT_TRUE(Kind<R>::text_of(tree, item) <=> other == order <=> 0);
  };
  world.read_by_all([&] {
    if constexpr (Kind<R>::kKeysMove) {
      const auto length = static_cast<int64_t>(key.bytes.size());
      expect_order(F::entry_compare_(&tree, a, key.bytes.data(), length), *a, key.text);
      expect_order(F::node_compare_(&tree, node, key.bytes.data(), length), *node, key.text);
      expect_order(F::entrys_compare_(&tree, a, b, 0), *a, Kind<R>::text_of(tree, *b));
    } else {
      expect_order(F::entry_compare_(a, &key.key, tree.key_type), *a, key.text);
      expect_order(F::node_compare_(node, &key.key, tree.key_type), *node, key.text);
      expect_order(F::entrys_compare_(a, b, tree.key_type), *a, Kind<R>::text_of(tree, *b));
    }
  });
}
template <class R>
void by_hand(op::var_compare_, WorldOf<R> &world, auto compare) {
  const Self<R> self(world);
  const Key<R> a(world), b(world);
  EXPECT_EQ(compare(&a.key, &b.key, self.slot.record.key_type), (a.text > b.text) - (a.text < b.text));
}

// ---- entries

template <class R>
void by_hand(op::split_, WorldOf<R> &world, auto split) {
  Self<R> self(world);
  R &tree = self.slot.record;
  const auto level = static_cast<int16_t>(world.program.below(tree.root.level + 1));
  const bool splits_all = world.program.one_in(2);
  for (auto *entry : parts_of(self.slot).entries) {
    if (entry->level != level || entry->children.count < 2) continue;
    world.call([&] { split(&tree, entry); });
    self.slot.content.fits &= !world.failed;
    if (!splits_all) return;
  }
}
// The caller puts the new half after the old one.
template <class R>
void by_hand(OneOf<op::split_entry_, op::split_node_> auto, WorldOf<R> &world, auto split) {
  Self<R> self(world);
  auto *lower = Entry<R>(world).value;
  const int64_t count = lower->children.count;
  if (count < 2 || lower->parent == nullptr) return;
  auto *upper = world.call([&] { return split(&self.slot.record, lower); });
  EXPECT_NE(world.failed, upper != nullptr);
  if (upper == nullptr) return;
  EXPECT_EQ(lower->children.count, count / 2);
  mub_arrays &siblings = lower->parent->children;
  const auto *place =
      std::find(siblings.items, siblings.items + siblings.count, reinterpret_cast<uintptr_t>(lower));
  mub_arrays_insert_at(&siblings, place + 1 - siblings.items, reinterpret_cast<uintptr_t>(upper));
  self.slot.content.fits = false;
}

template <class R>
void expect_fresh(const typename Kind<R>::Entry &entry, const mub_pool *pool) {
  const typename Kind<R>::Entry empty = {};
  EXPECT_TRUE(Kind<R>::key_of(entry) == Kind<R>::key_of(empty));
  EXPECT_TRUE(entry.level == 0 && entry.parent == nullptr);
  EXPECT_TRUE(entry.children.count == 0 && entry.children.capacity >= 32 && entry.children.pool == pool);
}
template <class R>
void by_hand(OneOf<op::entry_init_, op::node_init_> auto, WorldOf<R> &world, auto) {
  typename Kind<R>::Entry entry;
  typename Kind<R>::Node node;
  std::memset(&entry, 0x77, sizeof entry);
  std::memset(&node, 0x77, sizeof node);
  world.call([&] { Functions<R>::entry_init_(&entry); });
  Functions<R>::node_init_(&node);
  if (!world.failed) expect_fresh<R>(entry, nullptr);
  EXPECT_TRUE(Kind<R>::key_of(node) == Kind<R>::key_of(entry) && node.value == 0);
  EXPECT_TRUE(node.prev == nullptr && node.next == nullptr);
  mub_arrays_remove_all(&entry.children);
}
// A new entry, which becomes an empty leaf among others or stays alone, is removed again; a root is not.
template <class R>
void by_hand(OneOf<op::entry_new_, op::remove_entry_t_> auto, WorldOf<R> &world, auto) {
  Self<R> self(world);
  R &tree = self.slot.record;
  const auto level = static_cast<int>(world.program.below(4)) - 1;
  const auto kept = tree.entry_pool->live_count;
  auto *entry = world.call([&] { return Functions<R>::entry_new_(&tree, level); });
  EXPECT_EQ(tree.entry_pool->live_count, kept + (world.failed ? 0 : 1));
  if (entry == nullptr) return;
  expect_fresh<R>(*entry, level < 1 ? tree.node_pool : tree.entry_pool);
  auto *parent = Entry<R>(world).value;
  if (parent->level == 1) {
    entry->parent = parent;
    mub_arrays_insert_at(&parent->children, world.program.below(parent->children.count + 1),
                         reinterpret_cast<uintptr_t>(entry));
  }
  Functions<R>::remove_entry_t_(&tree, entry);
  Functions<R>::remove_entry_t_(&tree, &tree.root);
}
// What is out of order below an entry, and the names from a leaf up, are put in order.
template <class R>
void by_hand(OneOf<op::set_name_, op::set_parent_, op::set_pool_> auto, WorldOf<R> &world, auto) {
  const Self<R> self(world);
  R &tree = self.slot.record;
  const auto parts = parts_of(self.slot);
  auto *leaf = any_of(world.program, parts.leaves);
  auto levels = world.program.below(4);
  for (auto *named = leaf; named != nullptr && levels > 0; named = named->parent, --levels) {
    if (parts.nodes.empty() || Parts<R>(*named).nodes.back() == parts.nodes[0]) break;
    Kind<R>::key_of(*named) = Kind<R>::key_of(*parts.nodes[0]);
  }
  Functions<R>::set_name_(&tree, leaf);
  auto *top = Entry<R>(world).value;
  for (auto *below : Parts<R>(*top).entries) {
    if (below->parent == top) below->parent = nullptr;
    if (below == top || below->level > 0) below->children.pool = &world.users[0];
  }
  Functions<R>::set_parent_(top);
  Functions<R>::set_pool_(&tree, top);
}
// A record that is unlinked is linked again by the links of the one beside it.
template <class R>
void by_hand(op::set_next_, WorldOf<R> &world, auto set_next) {
  const Self<R> self(world);
  auto *leaf = any_of(world.program, parts_of(self.slot).leaves);
  if (!self.slot.content.links_are_exact || leaf->children.count < 1) return;
  const int64_t index = world.program.below(leaf->children.count);
  auto *node = Parts<R>(*leaf).nodes[static_cast<size_t>(index)];
  if (leaf->children.count > 1) {
    if (node->prev != nullptr) node->prev->next = node->next;
    if (node->next != nullptr) node->next->prev = node->prev;
    node->prev = node->next = node;
  }
  set_next(leaf, index);
}
// Those below `top`, and no others.
template <class R>
void by_hand(op::adjust_t_, WorldOf<R> &world, auto adjust) {
  R &tree = Self<R>(world).slot.record;
  auto *top = Entry<R>(world).value;
  const Parts<R> all(tree.root), below(*top);
  OffsetsOf offsets(below.nodes), others(all.nodes);
  for (auto *entry : below.entries)
    if (entry != top) offsets.add(*entry);
  for (auto *node : below.nodes) others.leave_out(*node);
  lower_and_raise(world, tree.keys, offsets, [&](uint32_t offset, uint32_t length) {
    adjust(&tree, top, offset, length);
    others.expect_lowered(UINT32_MAX, 0);
  });
}

// ---- parts of trees

template <class R>
auto content_from(const R &tree, typename Kind<R>::Entry &top) {
  typename Kind<R>::Content content;
  for (auto *node : Parts<R>(top).nodes)
    content.push_back({Kind<R>::text_of(tree, *node), nullptr, node->value});
  content.links_are_exact = content.fits = false;
  return content;
}
// Empties what is below an entry, walks over the rest, and empties the tree.
template <class R>
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_> auto, WorldOf<R> &world, auto empty) {
  Self<R> self(world);
  auto *top = Entry<R>(world).value;
  const auto gone = content_from(self.slot.record, *top);
  release_by(empty, world, self, values_of(gone), top);
  for (const auto &item : gone) self.slot.content.remove(item.text);
  walk(world, self.slot);
  drop_all(world, self.slot, Functions<R>::remove_all_);
}
// Into an empty tree, which is emptied again. It gets all key bytes, and so all keys.
template <class R>
void by_hand(op::clone_entry_, WorldOf<R> &world, auto clone) {
  const Self<R> self(world);
  auto &from = Kind<R>::kKeysMove ? self.slot.record.root : *Entry<R>(world).value;
  const Peer<R> to(world);
  R &copy = to.slot.record;
  if (&to.slot == &self.slot) return;
  world.end(to.slot);
  world.start(to.slot);
  if constexpr (Kind<R>::kKeysMove) mub_stream_clone(&self.slot.record.keys, &copy.keys);
  const int result = world.call([&] { return clone(&self.slot.record, &from, &copy, &copy.root); });
  EXPECT_EQ(result, world.failed ? 0 : 1);
  EXPECT_EQ(copy.root.level, result == 0 ? 0 : from.level);
  if (result == 1) {
    to.slot.content = content_from(self.slot.record, from);
    copy.count = static_cast<int64_t>(to.slot.content.size());
    world.compare(to.slot);
  }
  Functions<R>::remove_all_(&copy);
  to.slot.forget_all();
}

}  // namespace mub_test

#include "btree_steps.inc"
