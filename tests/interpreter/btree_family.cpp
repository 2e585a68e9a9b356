// Programs for B-trees: see maps.h.
#include "btree_ops.inc"
#include "interpreter/maps.h"

namespace mub_test {

// role (const )?mub_btree\w*_entry \* entry = Entry<%s>

// All nodes (entries) below one, in key order, parents first.
template <class R>
struct Parts {
  using E = typename Kind<R>::Entry;
  using N = typename Kind<R>::Node;
  explicit Parts(const R &tree) { add(const_cast<E &>(tree.root)); }
  Parts(const R &, E &top) { add(top); }
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
  static constexpr bool kIsOrdered = true, kTermLeavesEntries = false, kStoresOutBeforeInit = false;
  static constexpr bool kKeysMove = std::is_same_v<R, mub_btree>;
  static constexpr int64_t kEntryBytes = sizeof(E), kNodeBytes = sizeof(N);

  static int64_t entries_of(R &tree) { return static_cast<int64_t>(Parts(tree).entries.size()) - 1; }
  static auto key_of(auto &item) {
    if constexpr (kKeysMove) {
      return std::tie(item.key_offset, item.key_length);
    } else {
      return std::tie(item.key);
    }
  }
  // The sizes of nodes, the links of records, and the key of the root, which is that of the last record until
  // a removal moves keys.
  static void read(R &tree, const typename BtreeKind::Content &expected,
                   typename BtreeKind::Content &content) {
    const Parts parts(tree);
    const auto &nodes = parts.nodes;
    for (E *entry : parts.entries) ASSERT_TRUE(entry->children.count <= 31 || !expected.fits);
    for (size_t i = 0; i < nodes.size(); ++i) {
      content.push_back({Keys::text_of(tree, *nodes[i]), nodes[i], nodes[i]->value});
      if (!expected.links_are_exact) continue;
      ASSERT_EQ(nodes[i]->prev, i == 0 ? nullptr : nodes[i - 1]);
      ASSERT_EQ(nodes[i]->next, i + 1 == nodes.size() ? nullptr : nodes[i + 1]);
    }
    const bool may_lack_name = nodes.empty() || (kKeysMove && !expected.links_are_exact);
    ASSERT_TRUE(may_lack_name || key_of(tree.root) == key_of(*nodes.back()));
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
struct Entry {
  explicit Entry(WorldOf<R> &world) : value(world.program.one_of(Parts(world.self->record).entries)) {}
  auto arguments() const { return std::tuple(value); }
  typename Kind<R>::Entry *value;
};

// ---- walks

// Sets a cursor and moves it back and forth, or on to the end. `index` is -1 before the first record, and the
// count after the last one.
template <class R>
void walk(Slot<R> &slot, const auto &key, Program program) {
  const auto &f = slot.f;
  const auto *tree = &slot.record;
  const auto nodes = Parts(*tree).nodes;
  const auto count = static_cast<int64_t>(nodes.size());
  const auto at = [&](int64_t i) { return i < 0 || i >= count ? nullptr : nodes[static_cast<size_t>(i)]; };
  typename Kind<R>::Cursor cursor;
  int64_t index = slot.content.not_before(key.text) - slot.content.begin();
  ASSERT_EQ(call_with(f.cursor_seek_, &cursor, tree, key), at(index));
  const bool goes_on = program.one_in(2);
  const auto start = program.below(3);
  if (start > 0) {
    index = start == 1 ? 0 : count - 1;
    ASSERT_EQ((start == 1 ? f.cursor_first_ : f.cursor_last_)(&cursor, tree), at(index));
  }
  for (int64_t left = program.below(80); left > 0; --left) {
    const bool is_up = goes_on ? start != 2 : program.one_in(2);
    index = std::clamp<int64_t>(index + (is_up ? 1 : -1), -1, count);
    ASSERT_EQ((is_up ? f.cursor_next_ : f.cursor_prev_)(&cursor), at(index));
    ASSERT_EQ(f.cursor_node_(&cursor), at(index));
    if (at(index) == nullptr) continue;
    ASSERT_EQ(f.node_next_(tree, at(index)), at(index + 1));
    ASSERT_EQ(f.node_prev_(tree, at(index)), at(index - 1));
  }
  ASSERT_EQ(f.node_first_(tree), at(0));
  ASSERT_EQ(f.node_last_(tree), at(count - 1));
  ASSERT_EQ(cursor.tree, tree);
}
void by_hand(OneOf<op::cursor_first_, op::cursor_last_, op::cursor_seek_, op::cursor_next_, op::cursor_prev_,
                   op::cursor_node_, op::node_first_, op::node_last_, op::node_next_, op::node_prev_> auto,
             auto &world, auto &slot, auto) {
  const Key key(world);
  world.read_by_all([&] { walk(slot, key, world.program); });
}
void check(OneOf<op::first_entry_, op::last_entry_> auto op, auto &world, auto &from, auto *result) {
  const auto leaves = Parts(world.self->record, *from.value).leaves;
  EXPECT_EQ(result, op.kName == "first_entry" ? leaves.front() : leaves.back());
}

// ---- keys

// The leaf below an entry that has a key, or would have it. The key of the last leaf may be out of date.
auto *leaf_of(const auto &slot, auto &top, const auto &key) {
  const auto leaves = Parts(slot.record, top).leaves;
  return *std::find_if(leaves.begin(), leaves.end() - 1,
                       [&](const auto *leaf) { return key.text <= slot.kind.text_of(slot.record, *leaf); });
}
void check(op::find_t_, auto &, auto &self, auto &entry, auto &key, auto *result) {
  EXPECT_EQ(result, leaf_of(self.slot, *entry.value, key));
}
void check(op::node_bfind_, auto &, auto &self, auto &key, auto *result) {
  auto &content = self.slot.content;
  const auto nearest = content.not_before(key.text);
  expect_node(result, content.empty() ? nullptr : nearest == content.end() ? &content.back() : &*nearest);
}
template <class R>
void by_hand(op::insert_t_, WorldOf<R> &world, auto &slot, auto insert) {
  with_keys(world, [&](auto &key) {
    const NodeOut<R> out(world);
    auto *leaf = leaf_of(slot, slot.record.root, key);
    const int result = world.call([&] { return call_with(insert, &slot.record, leaf, key, out); });
    expect_node_set(world, slot, key, *out.value, result);
  });
}
void by_hand(OneOf<op::node_compare_, op::entry_compare_, op::entrys_compare_, op::var_compare_> auto,
             auto &world, auto &slot, auto) {
  const auto &f = slot.f;
  const auto &tree = slot.record;
  if (tree.root.level == 0) return;  // its key may be out of date
  const Key key(world);
  const Parts parts(tree);
  const auto *a = world.program.one_of(parts.leaves), *b = world.program.one_of(parts.leaves);
  const auto *node = world.program.one_of(parts.nodes);
  const auto expect_order = [&](int order, const auto &item, const auto &other) {
    EXPECT_TRUE(slot.kind.text_of(tree, item) <=> other == order <=> 0);
  };
  const auto text_of_b = slot.kind.text_of(tree, *b);
  world.read_by_all([&] {
    if constexpr (requires { key.bytes; }) {
      const auto length = static_cast<int64_t>(key.bytes.size());
      expect_order(f.entry_compare_(&tree, a, key.bytes.data(), length), *a, key.text);
      expect_order(f.node_compare_(&tree, node, key.bytes.data(), length), *node, key.text);
      expect_order(f.entrys_compare_(&tree, a, b, 0), *a, text_of_b);
    } else {
      expect_order(f.entry_compare_(a, &key.key, tree.key_type), *a, key.text);
      expect_order(f.node_compare_(node, &key.key, tree.key_type), *node, key.text);
      expect_order(f.entrys_compare_(a, b, tree.key_type), *a, text_of_b);
      expect_order(f.var_compare_(&a->key, &b->key, tree.key_type), *a, text_of_b);
    }
  });
}

// ---- entries

// Splits one entry of a level, or all.
void by_hand(op::split_, auto &world, auto &slot, auto split) {
  const auto level = world.program.below(slot.record.root.level + 1);
  const bool splits_all = world.program.one_in(2);
  for (auto *entry : Parts(slot.record).entries) {
    if (entry->level != level || entry->children.count < 2) continue;
    world.call([&] { split(&slot.record, entry); });
    slot.content.fits &= !world.failed;
    if (!splits_all) return;
  }
}
// The caller inserts the new half after the old one.
void by_hand(OneOf<op::split_entry_, op::split_node_> auto, auto &world, auto &slot, auto split) {
  auto *lower = Entry(world).value;
  const int64_t count = lower->children.count;
  if (count < 2 || lower->parent == nullptr) return;
  auto *upper = world.call([&] { return split(&slot.record, lower); });
  EXPECT_NE(world.failed, upper != nullptr);
  if (upper == nullptr) return;
  EXPECT_EQ(lower->children.count, count / 2);
  mub_arrays &siblings = lower->parent->children;
  const auto *place =
      std::find(siblings.items, siblings.items + siblings.count, reinterpret_cast<uintptr_t>(lower));
  mub_arrays_insert_at(&siblings, place + 1 - siblings.items, reinterpret_cast<uintptr_t>(upper));
  slot.content.fits = false;
}

void expect_fresh(const auto &kind, const auto &entry, const mub_pool *pool) {
  const std::decay_t<decltype(entry)> empty = {};
  EXPECT_TRUE(kind.key_of(entry) == kind.key_of(empty));
  EXPECT_TRUE(entry.level == 0 && entry.parent == nullptr);
  EXPECT_TRUE(entry.children.count == 0 && entry.children.capacity >= 32 && entry.children.pool == pool);
}
void by_hand(OneOf<op::entry_init_, op::node_init_> auto, auto &world, auto &slot, auto) {
  std::decay_t<decltype(slot.record.root)> entry;
  typename std::decay_t<decltype(slot.kind)>::Node node;
  std::memset(&entry, 0x77, sizeof entry);
  std::memset(&node, 0x77, sizeof node);
  world.call([&] { slot.f.entry_init_(&entry); });
  slot.f.node_init_(&node);
  if (!world.failed) expect_fresh(slot.kind, entry, nullptr);
  EXPECT_TRUE(slot.kind.key_of(node) == slot.kind.key_of(entry) && node.value == 0);
  EXPECT_TRUE(node.prev == nullptr && node.next == nullptr);
  mub_arrays_remove_all(&entry.children);
}
// Removes a new entry, linked as an empty leaf or not linked. A root is not removed.
void by_hand(OneOf<op::entry_new_, op::remove_entry_t_> auto, auto &world, auto &slot, auto) {
  auto &tree = slot.record;
  const auto level = static_cast<int>(world.program.below(4)) - 1;
  const auto kept = tree.entry_pool->live_count;
  auto *entry = world.call([&] { return slot.f.entry_new_(&tree, level); });
  EXPECT_EQ(tree.entry_pool->live_count, kept + (world.failed ? 0 : 1));
  if (entry == nullptr) return;
  expect_fresh(slot.kind, *entry, level < 1 ? tree.node_pool : tree.entry_pool);
  auto *parent = Entry(world).value;
  if (parent->level == 1) {
    entry->parent = parent;
    mub_arrays_insert_at(&parent->children, world.program.below(parent->children.count + 1),
                         reinterpret_cast<uintptr_t>(entry));
  }
  slot.f.remove_entry_t_(&tree, entry);
  slot.f.remove_entry_t_(&tree, &tree.root);
}
// Restores keys that were changed below an entry, and keys from a leaf up to the root.
void by_hand(OneOf<op::set_name_, op::set_parent_, op::set_pool_> auto, auto &world, auto &slot, auto) {
  auto &tree = slot.record;
  const Parts parts(tree);
  auto *leaf = world.program.one_of(parts.leaves);
  auto levels = world.program.below(4);
  for (auto *named = leaf; named != nullptr && levels > 0; named = named->parent, --levels) {
    if (parts.nodes.empty() || Parts(tree, *named).nodes.back() == parts.nodes[0]) break;
    slot.kind.key_of(*named) = slot.kind.key_of(*parts.nodes[0]);
  }
  slot.f.set_name_(&tree, leaf);
  auto *top = Entry(world).value;
  for (auto *below : Parts(tree, *top).entries) {
    if (below->parent == top) below->parent = nullptr;
    if (below == top || below->level > 0) below->children.pool = &world.users[0];
  }
  slot.f.set_parent_(top);
  slot.f.set_pool_(&tree, top);
}
// Unlinks a record, and links it again at its neighbour.
void by_hand(op::set_next_, auto &world, auto &slot, auto set_next) {
  auto *leaf = world.program.one_of(Parts(slot.record).leaves);
  if (!slot.content.links_are_exact || leaf->children.count < 1) return;
  const int64_t index = world.program.below(leaf->children.count);
  auto *node = Parts(slot.record, *leaf).nodes[static_cast<size_t>(index)];
  if (leaf->children.count > 1) {
    if (node->prev != nullptr) node->prev->next = node->next;
    if (node->next != nullptr) node->next->prev = node->prev;
    node->prev = node->next = node;
  }
  set_next(leaf, index);
}
// ---- parts of trees

template <class R>
auto content_from(const Slot<R> &slot, auto &top) {
  typename Kind<R>::Content content;
  for (auto *node : Parts(slot.record, top).nodes)
    content.push_back({slot.kind.text_of(slot.record, *node), nullptr, node->value});
  content.links_are_exact = content.fits = false;
  return content;
}
// Empties the part below an entry, walks over the rest, and empties the tree.
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_> auto, auto &world, auto &slot, auto empty) {
  auto *top = Entry(world).value;
  const auto gone = content_from(slot, *top);
  const int64_t live = slot.owns_nodes() ? slot.record.node_pool->live_count : 0;
  release_by(empty, world, slot, values_of(gone), top);
  EXPECT_TRUE(live == 0 || slot.record.node_pool->live_count == live) << "records of owned pools stay";
  for (const auto &item : gone) slot.content.remove(item.text);
  const Key key(world);
  world.read_by_all([&] { walk(slot, key, world.program); });
  drop_all(world, slot, slot.f.remove_all_);
}
// Clones into an empty tree and empties that again. The copy gets all key bytes, even those of other parts.
void by_hand(op::clone_entry_, auto &world, auto &slot, auto clone) {
  auto &to = Peer(world).slot;
  auto &tree = slot.record, &copy = to.record;
  if (&to == &slot) return;
  world.end(to);
  world.start(to);
  auto *from = Entry(world).value;
  if constexpr (requires { tree.keys; }) {
    from = &tree.root;
    mub_stream_clone(&tree.keys, &copy.keys);
  }
  const int result = world.call([&] { return clone(&tree, from, &copy, &copy.root); });
  EXPECT_EQ(result, world.failed ? 0 : 1);
  EXPECT_EQ(copy.root.level, result == 0 ? 0 : from->level);
  if (result == 1) {
    to.content = content_from(slot, *from);
    copy.count = static_cast<int64_t>(to.content.size());
    world.compare(to);
  }
  slot.f.remove_all_(&copy);
  to.content = {};
}

}  // namespace mub_test

#include "btree_steps.inc"
