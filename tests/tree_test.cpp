#include "mub_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "support/tree_kinds.h"

using namespace mub_test;
using Entry = mub_tree_entry;
using Branch = Node<Rings>;

namespace {

constexpr uint64_t kContext = 0x123456789ABCDEF0;

int compare_x(const Entry *entry, uint64_t context, const void *key, int64_t length) {
  uint64_t wanted;
  EXPECT_TRUE(context == kContext && length == sizeof wanted);
  std::memcpy(&wanted, key, sizeof wanted);
  return key_of(entry->value) < wanted ? -1 : key_of(entry->value) > wanted;
}
int compare(const Entry *entry, const void *key, int64_t length) {
  return compare_x(entry, kContext, key, length);
}

uint64_t fresh_key;
void fill(uint64_t value) {
  key_at(value) = fresh_key;
  note(value);
}

struct Path : mub_array {
  Path() { mub_array_init(this, 0); }
  ~Path() { mub_array_term(this); }
  void append(uint64_t key) { mub_array_append(this, &key, sizeof key, 0); }
};

// The entry of the first node that has the key.
template <class At>
Entry *first_with(uint64_t key, At at, At end) {
  at = std::find_if(at, end, [&](const Branch *node) { return key_of(node->value) == key; });
  return at != end ? (*at)->entry : nullptr;
}

std::vector<Branch *> ancestors(const Branch &node) {
  std::vector<Branch *> nodes;
  for (Branch *above = node.above; above != nullptr; above = above->above) nodes.push_back(above);
  return nodes;
}

Keys index_path(const Branch &node) {
  Keys path;
  for (const Branch *at = &node; at->above != nullptr; at = at->above) path.push_back(at->place() + 1);
  path.push_back(1);
  return {path.rbegin(), path.rend()};
}

// Document order, and searches in it, from an entry that is at or below the bound.
void expect_order(TreeModel<Rings> &model) {
  Branch *node = model.any();
  const auto above = ancestors(*node);
  Branch *bound = above.empty() ? node : above[model.random.word() % above.size()];
  const Entry *stop = bound->above != nullptr || model.random.one_in(2) ? bound->entry : nullptr;
  const auto all = bound->in_order();
  const auto behind = std::find(all.begin(), all.end(), node) + 1;
  const auto past = behind + (node->size() - 1);
  ASSERT_EQ(mub_tree_entry_iter_next(stop, node->entry), behind == all.end() ? nullptr : (*behind)->entry);
  ASSERT_EQ(mub_tree_entry_find_next(stop, node->entry), past == all.end() ? nullptr : (*past)->entry);

  uint64_t key = model.random.word() % (model.last_key + 2);
  Entry *found = first_with(key, behind, all.end());
  ASSERT_EQ(mub_tree_entry_find(stop, node->entry, &key, 8, compare), found);
  ASSERT_EQ(mub_tree_entry_find_x(stop, node->entry, kContext, &key, 8, compare_x), found);
  key = key_of(bound->value);
  const auto end = stop != nullptr ? std::find(above.begin(), above.end(), bound) : above.end();
  found = first_with(key, above.begin(), end);
  ASSERT_EQ(mub_tree_entry_find_parent(stop, node->entry, &key, 8, compare), found);
  ASSERT_EQ(mub_tree_entry_find_parent_x(stop, node->entry, kContext, &key, 8, compare_x), found);
}

void expect_places(TreeModel<Rings> &model) {
  const Branch *a = model.any(), *b = model.any();
  const auto above = ancestors(*b);
  ASSERT_EQ(mub_tree_entry_find_child(a->entry, b->entry), std::count(above.begin(), above.end(), a));
  const Keys path = index_path(*a), other = index_path(*b);
  const auto [x, y] = std::mismatch(path.begin(), path.end(), other.begin(), other.end());
  const auto apart = x == path.end() || y == other.end() ? path.size() - other.size() : *x - *y;
  ASSERT_EQ(mub_tree_entry_compare(a->entry, b->entry), static_cast<int>(apart));
  ASSERT_EQ(mub_tree_entry_index(a->entry), static_cast<int64_t>(path.back()));
  const auto siblings = a->above != nullptr ? Rings::branches(*a->above->entry) : std::vector{a->entry};
  ASSERT_EQ(mub_tree_entry_next(a->entry), path.back() < siblings.size() ? siblings[path.back()] : nullptr);
  ASSERT_EQ(mub_tree_entry_prev(a->entry), path.back() > 1 ? siblings[path.back() - 2] : nullptr);
  const Entry *last = a->branches.empty() ? nullptr : a->branches.back()->entry;
  ASSERT_EQ(mub_tree_entry_last(a->entry), last);

  mub_arrayt array;
  mub_arrayt_init(&array);
  for (const uint64_t word : other) mub_arrayt_append(&array, word);
  const bool failed = model.blows_in([&] { mub_tree_entry_array(a->entry, &array); });
  Keys words = failed ? Keys() : path;
  words.insert(words.end(), other.begin(), other.end());
  ASSERT_EQ(array.count, static_cast<int64_t>(words.size()));
  for (size_t i = 0; i < words.size(); ++i) {
    ASSERT_EQ(mub_arrayt_get_at(&array, static_cast<int64_t>(i)), words[i]);
  }
  mub_arrayt_term(&array);
}

// A path of up to three keys from any entry, behind keys that it is to skip; the model grows as the tree does.
void expect_paths(Tree<Rings> &tree, TreeModel<Rings> &model) {
  Branch *reached = model.any();
  Entry *const start = reached->entry;
  const int64_t skipped = model.random.below(3), steps = model.random.below(4);
  Path path;
  int64_t missing = 0;
  for (int64_t i = 0; i < skipped + steps; ++i) {
    path.append(1 + model.random.word() % (model.last_key + 1));
    const uint64_t key = *reinterpret_cast<uint64_t *>(path.keys.data + 8 * i);
    if (i < skipped) continue;
    const auto all = reached->in_order();
    const auto hit = std::find_if(all.begin() + 1, all.end(),
                                  [&](const Branch *node) { return key_of(node->value) == key; });
    if (hit != all.end() && missing == 0) {
      reached = *hit;
    } else {
      ++missing;
    }
  }
  Entry *const target = steps > 0 && missing == 0 ? reached->entry : nullptr;
  ASSERT_EQ(mub_tree_find_x_t(start, skipped, &path, kContext, compare_x), target);
  fresh_key = ++model.last_key;
  seen.clear();
  Entry *end = nullptr;
  const bool failed = model.blows_in(
      [&] { end = mub_tree_insert_x_t(&tree, start, skipped, &path, kContext, fill, compare_x); });
  // What was made hangs last below what was reached, one below the other, and its end alone has a value.
  for (; missing > 0 && Rings::branches(*reached->entry).size() > reached->branches.size(); --missing) {
    reached = model.adopt(*reached, reached->branches.size(), mub_tree_entry_last(reached->entry));
  }
  ASSERT_TRUE(missing == 0 || failed);
  ASSERT_EQ(end, steps > 0 && missing == 0 ? reached->entry : nullptr);
  if (end != target) reached->value = end->value;
  ASSERT_EQ(seen, reached->value != 0 && end != target ? Keys{end->value} : Keys());
  ASSERT_TRUE(end == nullptr || end->value != 0 || failed || end == target);
  model.live_values += static_cast<int64_t>(seen.size());
}

TEST(Tree, AgreesWithAModel) {
  expect_agreement_with_a_model<Rings>(70, [](Tree<Rings> &tree, TreeModel<Rings> &model) {
    ASSERT_NO_FATAL_FAILURE(expect_order(model));
    ASSERT_NO_FATAL_FAILURE(expect_places(model));
    ASSERT_NO_FATAL_FAILURE(expect_paths(tree, model));
  });
}

TEST(Tree, MayBeAsDeepAndItsRingsAsLongAsMemoryAllows) {
  expect_no_bound<Rings>(0, true);
  expect_no_bound<Rings>(0, false);
}

TEST(Tree, FlagsOutlastPools) { expect_flags_to_outlast_pools<Rings>(); }

TEST(Tree, AllFormsFollowThePathAndNoneWithoutAComparer) {
  Tree<Rings> tree;
  Path path;
  for (fresh_key = 1; fresh_key < 3; ++fresh_key) {
    path.append(fresh_key);
    Entry *end = mub_tree_insert(&tree, &path, fill, compare);
    Entry *const ends[] = {
        mub_tree_insert_x(&tree, &path, kContext, fill, compare_x),
        mub_tree_insert_t(&tree, &tree.root, 0, &path, fill, compare), mub_tree_find(&tree, &path, compare),
        mub_tree_find_x(&tree, &path, kContext, compare_x), mub_tree_find_t(&tree.root, 0, &path, compare)};
    EXPECT_EQ(std::count(ends, ends + 5, end), 5);
  }
  path.append(3);
  EXPECT_EQ(mub_tree_insert(&tree, &path, fill, nullptr), nullptr);
  EXPECT_EQ(mub_tree_find_x(&tree, &path, kContext, nullptr), nullptr);
  EXPECT_EQ(mub_tree_entry_find_parent(nullptr, tree.root.first_child, "", 0, nullptr), nullptr);
  EXPECT_EQ(tree.count, 2);
}

TEST(Tree, LinksNothingToNothing) {
  Tree<Rings> tree;
  Entry *child = mub_tree_entry_new(&tree);
  mub_tree_entry_append(&tree, nullptr, child);
  mub_tree_entry_append(&tree, &tree.root, nullptr);
  for (Entry *sibling : {static_cast<Entry *>(nullptr), &tree.root}) {
    mub_tree_entry_insert(&tree, sibling, child);
    mub_tree_entry_remove(&tree, sibling);
  }
  EXPECT_TRUE(tree.count == 0 && tree.root.first_child == nullptr && child->parent == nullptr);
  mub_tree_entry_append(&tree, &tree.root, child);
  for (Entry *entry : {child, static_cast<Entry *>(nullptr)}) mub_tree_entry_insert(&tree, child, entry);
  EXPECT_TRUE(tree.count == 1 && child->next == child);
}

TEST(Tree, SwapTakesTheChildrenAlong) {
  Tree<Rings> a, b;
  std::vector<Entry *> children;
  for (int i = 0; i < 3; ++i) {
    children.push_back(mub_tree_entry_new(&a));
    mub_tree_entry_append(&a, &a.root, children.back());
  }
  a.root.value = 3;
  mub_tree_entry_swap(&a.root, &b.root);
  mub_tree_entry_swap(&b.root, &b.root);
  EXPECT_TRUE(Rings::branches(a.root).empty() && b.root.value == 3);
  EXPECT_EQ(Rings::branches(b.root), children);
  for (const Entry *child : children) EXPECT_EQ(child->parent, &b.root);
  b.root = {};
}

TEST(Tree, CloneLeavesOutWhatIsNoBlockOfThePool) {
  Tree<Rings> tree, copy;
  Entry strangers[3] = {};
  for (Entry &stranger : strangers) {
    mub_tree_entry_append(&tree, &tree.root, &stranger);
    mub_tree_entry_append(&tree, &stranger, mub_tree_entry_new(&tree));
    if (&stranger != strangers) mub_tree_entry_insert(&tree, &stranger, mub_tree_entry_new(&tree));
  }
  mub_tree_clone(&tree, nullptr, &copy, nullptr, nullptr);
  EXPECT_EQ(Rings::branches(copy.root).size(), 2u);
  for (const Entry *entry : Rings::branches(copy.root)) EXPECT_EQ(entry->first_child, nullptr);
}

TEST(Tree, ComparesRunsOfAnyLength) {
  const std::string a = "0123456789abcdef0123";
  for (size_t i = 0; i < a.size(); ++i) {
    std::string b = a;
    b[i] ^= 1;
    for (int64_t length = 0; length < 20; ++length) {
      EXPECT_EQ(mub_tree_cmp(a.data(), length, b.data(), length), length <= static_cast<int64_t>(i) ? 1 : 0);
      EXPECT_EQ(mub_tree_cmp(a.data(), length, a.data(), length + 1), 0);
    }
  }
  EXPECT_EQ(mub_tree_cmp(nullptr, -4, "", -4), 1);
}

}  // namespace
