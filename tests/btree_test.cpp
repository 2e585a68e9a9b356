#include "mub_btree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/btrees.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

template <class A>
class BTree : public ::testing::Test {};
template <class Number, uint32_t kType>
using Tree32 = NumberTree<Trees32, Number, kType>;
template <class Number, uint32_t kType>
using Tree64 = NumberTree<Trees64, Number, kType>;
using Kinds = ::testing::Types<ByteTree, Tree32<int32_t, 1>, Tree32<uint32_t, 2>, Tree32<float, 5>,
                               Tree64<int64_t, 3>, Tree64<uint64_t, 4>, Tree64<double, 6>>;
TYPED_TEST_SUITE(BTree, Kinds);

// What the nearest search may give: the next key, unless the leaf of the key ends before it; then the key before.
template <class A>
void expect_nearest(Tree<A> &tree, const Content<A> &content, const typename A::Key &key) {
  const auto *nearest = call<kNodeBfind>(tree, key);
  ASSERT_EQ(nearest == nullptr, content.empty());
  if (content.empty()) return;
  const auto &children = call<kFindT>(tree, &tree.root, key)->children;
  const auto *last = reinterpret_cast<const typename A::Node *>(children.items[children.count - 1]);
  const auto above = content.lower_bound(key);
  ASSERT_EQ(A::key_of(tree, *nearest), A::key_of(tree, *last) < key ? std::prev(above)->first : above->first);
}

// A cursor set to a key stands at the first one that is not below it, and goes on from there to both sides.
template <class A>
void expect_lower_bound(Tree<A> &tree, const Content<A> &content, const typename A::Key &key) {
  typename A::Cursor at;
  const auto *node = call_of<kCursorSeek, A>(&at, &tree, key);
  const auto above = content.lower_bound(key);
  ASSERT_EQ(node == nullptr, above == content.end());
  ASSERT_TRUE(node == nullptr || A::key_of(tree, *node) == above->first);
  const auto *before = call_of<kCursorPrev, A>(&at);
  ASSERT_EQ(before == nullptr, above == content.begin());
  ASSERT_TRUE(before == nullptr || A::key_of(tree, *before) == std::prev(above)->first);
  ASSERT_EQ((call_of<kCursorNext, A>(&at)), node);
}

// The keys 0 to `count` - 1 with values of their own, in the order of the keys.
template <class A>
Content<A> content_of(int64_t count) {
  Content<A> content;
  for (int64_t i = 0; i < count; ++i) content.insert({A::key(i), static_cast<uint64_t>(i) * 3});
  return content;
}

template <class A>
Content<A> fill(Tree<A> &tree, int64_t count) {
  const Content<A> content = content_of<A>(count);
  for (const auto &[key, value] : content) EXPECT_EQ(call<kInsert>(tree, key, value), 1);
  return content;
}

uint64_t handed_out;
void note_before_handing_out(uint64_t block) { note(handed_out == 0 ? block : 0); }

// Values are blocks of the value pool, or 0.
template <class A>
struct Model {
  using Key = typename A::Key;

  Model(int pools, uint64_t salt) : owned(pools), random(salt), tree(pools) {}

  void step(const Key &key, bool grows) {
    const auto item = content.find(key);
    ASSERT_EQ(call<kGet>(tree, key), item != content.end() ? item->second : 0);
    ASSERT_EQ(call<kFind>(tree, key), item != content.end());
    ASSERT_NO_FATAL_FAILURE(expect_nearest(tree, content, key));
    ASSERT_NO_FATAL_FAILURE(expect_lower_bound(tree, content, key));
    if (random.one_in(80)) return clone();
    if (random.one_in(400)) return empty();
    const int64_t choice = random.below(8);
    choice < (grows ? 6 : 2) ? add(key) : choice == 6 ? update(key) : remove(key);
  }

  void expect_agreement() {
    ASSERT_NO_FATAL_FAILURE(expect_same(tree, content, chain, may_fail ? INT64_MAX : 31));
    const auto has_block = [](const auto &item) { return item.second != 0; };
    ASSERT_EQ(tree.value_pool->live_count, std::count_if(content.begin(), content.end(), has_block));
  }

  void add(const Key &drawn) {
    typename A::Passed passed = drawn;
    if (random.one_in(8)) passed = A::some_own_key(tree, random);
    const Key key(passed);
    const int64_t how = random.below(4);
    const bool present = content.count(key) != 0;
    uint64_t value = how > 1 ? new_value(tree, ++last_value) : 0;
    auto *node = reinterpret_cast<typename A::Node *>(&tree);
    int added = 0;
    seen.clear();
    const bool failed = random_fuse(random, may_fail && random.one_in(4) ? 3 : 0).blows_in([&] {
      if (how == 0) added = call<kNodeSet>(tree, passed, &node);
      if (how == 1) added = call<kSet>(tree, passed, &handed_out, note_before_handing_out);
      if (how > 1) added = call<kInsert>(tree, passed, value);
    });
    ASSERT_TRUE(present ? added == 0 : failed || added == 1);
    const bool is_it = node == call<kNodeGet>(tree, key) && node == call<kNodeFind>(tree, key);
    ASSERT_TRUE(how > 0 || is_it);
    if (how == 1) {
      value = handed_out;
      ASSERT_EQ(seen, Words(added != 0 && value != 0 ? 1 : 0, value));
      ASSERT_TRUE(added != 0 ? failed || value != 0 : value == (present ? content[key] : 0));
      if (added != 0 && value != 0) key_at(value) = ++last_value;
    }
    if (added != 0) content[key] = value;
    if (added == 0 && how > 1) return_value(tree, value);
  }
  void update(const Key &key) {
    const uint64_t value = random.one_in(4) ? 0 : new_value(tree, ++last_value);
    const auto item = content.find(key);
    const bool present = item != content.end();
    ASSERT_EQ(call<kUpdate>(tree, key, value), present ? item->second : 0);
    return_value(tree, present ? std::exchange(item->second, value) : value);
  }
  // Some record, by the key in the tree's own bytes; or none.
  void remove(const Key &key) {
    ASSERT_EQ(content.count(key) != 0 ? 0 : call<kRemove>(tree, key), 0u);
    if (content.empty()) return;
    const auto item = std::next(content.begin(), random.below(static_cast<int64_t>(content.size())));
    ASSERT_EQ(call<kRemove>(tree, A::key_of(tree, *call<kNodeGet>(tree, item->first))), item->second);
    ASSERT_EQ(call<kRemove>(tree, item->first), 0u);
    return_value(tree, item->second);
    content.erase(item);
    chain = content.empty() ? Chain::kExact : Chain::kStale;
  }
  void empty() {
    const int64_t how = random.below(3);
    Words released;
    for (const auto &item : content) {
      if (how == 0 && item.second != 0) released.push_back(key_of(item.second));
      if (how == 2) return_value(tree, item.second);
    }
    seen.clear();
    how < 2 ? call<kFreeAll>(tree, how == 0 ? note_key_once : nullptr) : call<kRemoveAll>(tree);
    ASSERT_EQ(seen, released);
    ASSERT_EQ(tree.root.children.items, nullptr);
    content.clear();
    chain = Chain::kExact;
  }

  // Into a tree with any mix of pools that holds something. Where the copy has all that it needs, the model goes on with
  // it, and what was cloned ends.
  void clone() {
    Pool user(8), user_copy(8);
    mub_pool_new(&user);
    const auto copy_owned = static_cast<int>(random.below(8));
    Tree<A> copy(copy_owned);
    call<kInsert>(copy, A::key(300), uint64_t{0});
    int64_t count = -1;
    seen.clear();
    const bool failed = random_fuse(random, may_fail ? 60 : 0).blows_in([&] {
      count = call<kClone>(tree, &user, &copy, &user_copy, note_clone);
    });
    ASSERT_TRUE(failed || copy.root.children.capacity >= 32);
    if (count == 0) {
      ASSERT_TRUE(failed || content.empty());
      ASSERT_EQ(seen, Words());
      return expect_same<A>(copy, {}, Chain::kExact);
    }
    const bool own_values = (owned & 4) != 0, loses = own_values && (copy_owned & 4) == 0;
    Content<A> copied = content;
    Words mended;
    for (auto &[key, value] : copied) {
      const auto *node = call<kNodeGet>(copy, key);
      ASSERT_TRUE(node != nullptr && node->next == call<kNodeGet>(tree, key)->next)
          << "links stay as they are";
      ASSERT_EQ(key_of(node->value), loses ? 0 : key_of(value));
      ASSERT_EQ(node->value == value, value == 0 || !own_values);
      if (own_values) mended.insert(mended.end(), {key_of(value), key_of(node->value)});
      value = node->value;
    }
    ASSERT_EQ(seen, mended);
    ASSERT_EQ(user_copy.live_count, 1);
    ASSERT_EQ(copy.owns_entry_pool + 2 * copy.owns_node_pool + 4 * copy.owns_value_pool, owned & copy_owned);
    ASSERT_TRUE((owned & 1) != 0 || copy.entry_pool == tree.entry_pool);
    ASSERT_NO_FATAL_FAILURE(expect_same(copy, copied, Chain::kStale, INT64_MAX));
    if ((owned & ~copy_owned) != 0) return;
    call<kSwap>(tree, &copy);
    call<kSwap>(tree, &tree);
    ASSERT_NO_FATAL_FAILURE(expect_same(copy, content, chain, INT64_MAX));
    content = copied;
    chain = Chain::kStale;
  }

  const int owned;
  const bool may_fail = owned % 2 == 0;
  Random random;
  Tree<A> tree;
  Content<A> content;
  Chain chain = Chain::kExact;
  uint64_t last_value = 0;
};

// In turn with every mix of owned and shared pools, by ascending, descending and random keys, growing, shrinking and
// drained; with every other mix memory runs out now and then.
TYPED_TEST(BTree, AgreesWithAModelAlsoWhenMemoryRunsOut) {
  for (int owned = 0; owned < 8; ++owned) {
    Model<TypeParam> model(owned, 70 + static_cast<uint64_t>(owned));
    constexpr int64_t kKeys = 400;
    for (int64_t step = 0; step < 2 * kKeys || !model.content.empty(); ++step) {
      const int64_t number = owned % 3 == 0   ? model.random.below(kKeys)
                             : owned % 3 == 1 ? step
                                              : 8 * kKeys - step;
      ASSERT_NO_FATAL_FAILURE(model.step(TypeParam::key(number % kKeys), step < kKeys));
      ASSERT_NO_FATAL_FAILURE(model.expect_agreement());
    }
    EXPECT_EQ(model.tree.root.level, 0);
  }
}

// Leaves hold 16 records after a split; so 512 ascending keys are what brings the root to 32 leaves.
TYPED_TEST(BTree, SplitsAt32ChildrenIntoHalves) {
  using A = TypeParam;
  for (const bool ascends : {true, false}) {
    Tree<A> tree;
    Content<A> content;
    const Content<A> all = content_of<A>(560);
    for (int64_t count = 1; count <= 560; ++count) {
      const auto &item = *std::next(all.begin(), ascends ? count - 1 : 560 - count);
      ASSERT_EQ(call<kInsert>(tree, item.first, item.second), 1);
      content.insert(item);
      const int64_t leaves = std::max<int64_t>(count / 16, 1);
      ASSERT_EQ(tree.root.level, leaves < 2 ? 0 : leaves < 32 ? 1 : 2) << count;
      ASSERT_EQ(tree.entry_pool->live_count, leaves < 2 ? 0 : leaves < 32 ? leaves : leaves + 2) << count;
      ASSERT_EQ(A::key_of(tree, tree.root), content.rbegin()->first);
      ASSERT_NO_FATAL_FAILURE(count % 16 > 1 ? void() : expect_same(tree, content, Chain::kExact));
    }
  }
}

// Over-full leaves and parents get wider tables, and split when there is memory.
TYPED_TEST(BTree, GrowsOnWithSplitsThatFail) {
  using A = TypeParam;
  Random random(71);
  Tree<A> tree;
  const Content<A> content = content_of<A>(900);
  for (const auto &[key, value] : content) {
    const Fuse fuse(random.below(4), Blow::kOnce);
    fuse.blows_in([&, &k = key, &v = value] { call<kInsert>(tree, k, v); });
    call<kInsert>(tree, key, value);
  }
  expect_same(tree, content, Chain::kExact, INT64_MAX);
}

TYPED_TEST(BTree, CloneEntryCopiesWhatIsBelowOrNothing) {
  using A = TypeParam;
  for (const int owned : {0, 3}) {
    for_every_allocation([owned](const Fuse &fuse) {
      Tree<A> tree(0), copy(owned);
      const Content<A> content = fill(tree, 560);
      int done = 0;
      const bool failed =
          fuse.blows_in([&] { done = call<kCloneEntry>(tree, &tree.root, &copy, &copy.root); });
      EXPECT_NE(failed, done == 1);
      EXPECT_EQ(copy.root.level, failed ? 0 : 2);
      EXPECT_EQ(copy.node_pool->live_count, failed ? 0 : 560);
      EXPECT_EQ(copy.entry_pool->live_count == 0, failed);
      expect_same(tree, content, Chain::kExact);
    });
  }
}

TYPED_TEST(BTree, SwapExchangesContentsAndPools) {
  using A = TypeParam;
  for (int owned = 0; owned < 8; ++owned) {
    for (const int64_t count : {0, 5, 520}) {
      Tree<A> a(owned), b(7 - owned);
      const Content<A> of_a = fill(a, count);
      Content<A> of_b = fill(b, 40);
      of_b.erase(A::key(20));
      call<kRemove>(b, A::key(20));
      call<kSwap>(a, &b);
      expect_same(a, of_b, Chain::kStale);
      expect_same(b, of_a, Chain::kExact);
      EXPECT_EQ(b.owns_entry_pool + 2 * b.owns_node_pool + 4 * b.owns_value_pool, owned);
      for (auto *tree : {&a, &b}) call<kRemoveAll>(*tree);
    }
  }
}

TYPED_TEST(BTree, MakesDoWithThePoolsThatItGot) {
  using A = TypeParam;
  for_every_allocation([](const Fuse &fuse) {
    typename A::Record tree;
    fuse.blows_in([&] { call_of<kInit, A>(&tree, 1, 1, 1); });
    EXPECT_EQ(tree.owns_entry_pool, tree.entry_pool != nullptr ? 1 : 0);
    EXPECT_EQ(tree.owns_node_pool, tree.node_pool != nullptr ? 1 : 0);
    EXPECT_EQ(tree.owns_value_pool, tree.value_pool != nullptr ? 1 : 0);
    for (int64_t i = 0; i < 100; ++i)
      EXPECT_EQ((call_of<kInsert, A>(&tree, A::key(i), uint64_t{1})), tree.owns_node_pool);
    call_of<kTerm, A>(&tree);
    EXPECT_TRUE(tree.entry_pool == nullptr && tree.node_pool == nullptr && tree.value_pool == nullptr);
    EXPECT_EQ(tree.root.children.pool, nullptr);
  });
}

// ---- walks

// Records, whole leaves and more vanish under a walk from record to record, which needs no cursor.
TYPED_TEST(BTree, StepsFromRecordToRecordWhileOthersAreRemoved) {
  using A = TypeParam;
  for (const int64_t run : {1, 20, 100}) {
    Tree<A> tree(0);
    Content<A> content = fill(tree, 600);
    auto *node = call<kNodeFirst>(tree);
    typename A::Node *kept = nullptr;
    int64_t step = 0;
    for (auto item = content.begin(); item != content.end(); ++step) {
      ASSERT_EQ(A::key_of(tree, *node), item->first);
      ASSERT_EQ(call<kNodePrev>(tree, node), kept);
      auto *next = call<kNodeNext>(tree, node);
      if (step % (run + 1) == run) {
        kept = node;
        ++item;
      } else {
        call<kRemove>(tree, item->first);
        item = content.erase(item);
      }
      node = next;
    }
    EXPECT_EQ(node, nullptr);
    expect_same(tree, content, Chain::kStale);
  }
}

// The records that a walk from either end meets.
template <class A>
std::pair<int64_t, int64_t> walked(Tree<A> &tree) {
  std::pair<int64_t, int64_t> counts;
  typename A::Cursor at;
  for (auto *node = call_of<kCursorFirst, A>(&at, &tree); node != nullptr;
       node = call_of<kCursorNext, A>(&at)) {
    ++counts.first;
  }
  for (auto *node = call_of<kCursorLast, A>(&at, &tree); node != nullptr;
       node = call_of<kCursorPrev, A>(&at)) {
    ++counts.second;
  }
  return counts;
}

// A leaf loses its records, or half of them, or its place, through the low layer.
TYPED_TEST(BTree, WalksWhatTheLowLayerHasLeft) {
  using A = TypeParam;
  using Counts = std::pair<int64_t, int64_t>;
  for (const auto part : {kRemoveAllEntry, kRemoveEntryT, kSplitEntry}) {
    Tree<A> tree(2);
    const Content<A> content = fill(tree, 60);
    auto *leaf = A::first_entry(&tree.root);
    int64_t left = 60 - leaf->children.count;
    if (part == kRemoveAllEntry) call<kRemoveAllEntry>(tree, leaf);
    if (part == kRemoveEntryT) call<kRemoveEntryT>(tree, leaf);
    if (part == kSplitEntry) {
      auto *upper = call<kSplitEntry>(tree, leaf);
      left += leaf->children.count;
      call<kRemoveAllEntry>(tree, upper);
      mub_pool_free(tree.entry_pool, upper);
    }
    EXPECT_EQ(walked(tree), Counts(left, left));
    typename A::Cursor at;
    EXPECT_EQ((call_of<kCursorSeek, A>(&at, &tree, content.begin()->first) == nullptr), left == 0);
    if (part != kRemoveAllEntry) continue;
    EXPECT_EQ(call<kInsert>(tree, content.begin()->first, 1u), 1);
    EXPECT_EQ(walked(tree), Counts(left + 1, left + 1));
  }
  // An empty half takes a record, which is linked with its neighbour.
  const Content<A> keys = content_of<A>(2);
  for (const bool is_emptied : {false, true}) {
    Tree<A> tree;
    call<kInsert>(tree, keys.rbegin()->first, 1u);
    if (is_emptied) call<kRemoveAll>(tree);
    call<kSplit>(tree, &tree.root);
    for (const auto &[key, value] : keys)
      call<kNodeGet>(tree, key) != nullptr || call<kInsert>(tree, key, value);
    EXPECT_EQ(walked(tree), Counts(2, 2));
    auto *least = call<kNodeFirst>(tree);
    ASSERT_NE(least, nullptr);
    EXPECT_TRUE(least->next == call<kNodeLast>(tree) && least->next->prev == least);
    EXPECT_TRUE(call<kNodeNext>(tree, least) == least->next && call<kNodePrev>(tree, least->next) == least);
    for (const auto &[key, value] : keys) EXPECT_NE(call<kNodeBfind>(tree, key), nullptr);
  }
}

// The upper half of a split that its parent does not list has no neighbours there. It takes records, and
// when it splits in turn, the new half is listed where its keys belong.
TYPED_TEST(BTree, HalvesThatNoParentListsTakeRecords) {
  using A = TypeParam;
  using Node = typename A::Node;
  Tree<A> tree;
  std::vector<typename A::Key> keys;
  for (const auto &[key, value] : content_of<A>(100)) keys.push_back(key);
  for (size_t i = 0; i < keys.size(); i += 2) call<kInsert>(tree, keys[i], 1u);
  auto *upper = call<kSplitNode>(tree, A::first_entry(&tree.root));
  const auto node_at = [&](int64_t i) {
    return i >= 0 && i < upper->children.count ? reinterpret_cast<Node *>(upper->children.items[i]) : nullptr;
  };
  // Of the even keys 0 to 30 that the leaf had, the half has those from 16 on.
  for (const auto &[key, index] : {std::pair(15, 0), {19, 3}, {31, 10}}) {
    Node *node = nullptr;
    EXPECT_EQ(call<kInsertT>(tree, upper, keys[static_cast<size_t>(key)], &node), 1);
    EXPECT_EQ(node, node_at(index));
    EXPECT_TRUE(node->prev == node_at(index - 1) && node->next == node_at(index + 1));
    call_of<kSetNext, A>(upper, int64_t{index});
  }
  for (size_t i = 1; i < keys.size(); i += 2) {
    Node *node = nullptr;
    call<kInsertT>(tree, upper, keys[i], &node);
  }
  const auto &children = tree.root.children;
  const auto name_of = [&](int64_t i) {
    return A::key_of(tree, *reinterpret_cast<const typename A::Entry *>(children.items[i]));
  };
  EXPECT_EQ(children.count, 5) << "three leaves and two halves";
  for (int64_t i = 1; i < children.count; ++i) EXPECT_LT(name_of(i - 1), name_of(i));
  call<kRemoveAllEntry>(tree, upper);
  mub_pool_free(tree.entry_pool, upper);
}

// The links of the neighbour in the leaf are followed, wherever they lead.
TYPED_TEST(BTree, SetNextLinksByTheLinksOfTheNeighbour) {
  using A = TypeParam;
  using Node = typename A::Node;
  Tree<A> tree;
  fill(tree, 3);
  const auto node_at = [&](int64_t i) { return reinterpret_cast<Node *>(tree.root.children.items[i]); };
  for (const int64_t index : {0, 1, 2}) {
    for (const bool has_far : {true, false}) {
      Node far = {};
      Node *node = node_at(index), *beside = node_at(index < 2 ? index + 1 : 1);
      (index < 2 ? beside->prev : beside->next) = has_far ? &far : nullptr;
      call_of<kSetNext, A>(&tree.root, index);
      EXPECT_EQ(index < 2 ? node->next : node->prev, beside);
      EXPECT_EQ(index < 2 ? node->prev : node->next, has_far ? &far : nullptr);
      EXPECT_EQ(index < 2 ? beside->prev : beside->next, node);
      EXPECT_EQ(index < 2 ? far.next : far.prev, has_far ? node : nullptr);
    }
  }
}

// Blocks that a caller borrowed may hold anything, and parts may be made, split or emptied by themselves: their keys are
// absent then, and no block is lost.
TYPED_TEST(BTree, OddPartsAndForeignBlocksDoNoHarm) {
  using A = TypeParam;
  for (const int owned : {0, 3}) {
    for (int64_t levels = 0; levels < 4; ++levels) {
      Tree<A> tree(owned);
      const Content<A> content = fill(tree, 600);
      void *block = std::memset(mub_pool_new(tree.entry_pool), 0x77, sizeof(typename A::Entry));
      auto *entry = call<kEntryNew>(tree, 0);
      call<kRemoveEntryT>(tree, entry);
      entry = A::first_entry(&tree.root);
      for (int64_t up = 0; up < levels && entry->parent != nullptr; ++up) entry = entry->parent;
      if (levels == 3) {
        for (int i = 0; i < 4; ++i) call<kSplit>(tree, A::first_entry(&tree.root));
        mub_pool_free(tree.entry_pool, block);
        expect_same(tree, content, Chain::kExact);
        continue;
      }
      call<kRemoveAllEntry>(tree, entry);
      for (const auto &[key, value] : content) {
        auto *node = call<kNodeBfind>(tree, key);
        for (int i = 0; i < 40 && node != nullptr; ++i) node = call<kNodeNext>(tree, node);
        if (call<kInsert>(tree, key, value) == 1) call<kRemove>(tree, key);
      }
      call<kRemoveAll>(tree);
      if (owned == 0) mub_pool_free(tree.entry_pool, block);
    }
  }
}

// A hand-made tree of one record and as many levels as there can be, cloned, walked and emptied; then its one record
// takes all levels with it.
TYPED_TEST(BTree, DegenerateTreesTakeABoundedStack) {
  using A = TypeParam;
  Tree<A> tree(0), copy(0);
  call<kInsert>(tree, A::key(1), 1u);
  auto *node = call<kNodeFirst>(tree);
  typename A::Entry *below = nullptr;
  for (int16_t level = 0; level < 32000; ++level) {
    auto *entry = level < 31999 ? call<kEntryNew>(tree, level) : &tree.root;
    if (level == 31999) mub_arrays_remove_all(&entry->children);
    entry->level = level;
    mub_arrays_append(&entry->children, reinterpret_cast<uintptr_t>(below));
    if (level == 0) entry->children.items[0] = reinterpret_cast<uintptr_t>(node);
    if (below != nullptr) below->parent = entry;
    below = entry;
  }
  call<kSetName>(tree, A::first_entry(&tree.root));
  call<kSetPool>(tree, &tree.root);
  EXPECT_EQ(call<kClone>(tree, nullptr, &copy, nullptr, nullptr), 1);
  EXPECT_EQ(call<kGet>(tree, A::key(1)), 1u);
  EXPECT_EQ(call<kRemove>(copy, A::key(1)), 1u);
  EXPECT_EQ(copy.root.level, 0);
  EXPECT_EQ(tree.nodes.live_count, 1);
  EXPECT_EQ(A::last_entry(&tree.root), A::first_entry(&tree.root));
}

// ---- byte-string keys only

using Bytes = Tree<ByteTree>;

TEST(BTreeOfBytes, CaseFollowsTheFieldWhichStaysWithItsRecord) {
  Bytes tree, exact;
  tree.nocase = 1;
  for (const char *key : {"b", "C", "a", "D_", "D\xE0"}) EXPECT_EQ(mub_btree_insert(&tree, key, -1, 1), 1);
  for (const char *key : {"B", "c", "A", "d_", "d\xE0"}) EXPECT_EQ(mub_btree_insert(&tree, key, -1, 2), 0);
  std::string in_order;
  for (auto *node = mub_btree_node_first(&tree); node != nullptr; node = mub_btree_node_next(&tree, node)) {
    in_order += ByteTree::key_of(tree, *node);
  }
  EXPECT_EQ(in_order, "abCD_D\xE0");
  mub_btree_swap(&tree, &exact);
  mub_btree_clone(&exact, nullptr, &tree, nullptr, nullptr);
  EXPECT_EQ(tree.nocase - exact.nocase, 1);
}

// An entry keeps the offset of a name that reads like the key of its last child.
TEST(BTreeOfBytes, NamesThatReadAlikeKeepTheirOffsets) {
  for (const auto &[last_key, nocase, is_kept] :
       {std::tuple("zk25", 0, true), {"zK25", 0, false}, {"zK25", 1, true}}) {
    Bytes tree;
    tree.nocase = static_cast<uint16_t>(nocase);
    for (int i = 10; i < 50; ++i) mub_btree_insert(&tree, ("k" + std::to_string(i)).data(), -1, 1);
    mub_btree_insert(&tree, last_key, -1, 1);
    auto *leaf = mub_btree_first_entry(&tree.root);
    ASSERT_EQ(ByteTree::key_of(tree, *leaf), "k25");
    const uint32_t own_offset = leaf->key_offset;
    const uint32_t other_offset = mub_btree_node_get(&tree, last_key, -1)->key_offset + 1;
    leaf->key_offset = other_offset;
    mub_btree_set_name(&tree, leaf);
    EXPECT_EQ(leaf->key_offset, is_kept ? other_offset : own_offset);
  }
}

// Offsets fall without a test; a key whose bytes would lie outside the store reads as empty.
TEST(BTreeOfBytes, KeysWhoseOffsetsWrapAreNotRead) {
  Bytes tree;
  mub_btree_insert(&tree, "abc", -1, 1);
  mub_btree_adjust_t(&tree, &tree.root, 0, 1000);
  EXPECT_EQ(mub_btree_node_first(&tree)->key_offset, 0u - 1000u);
  EXPECT_EQ(mub_btree_find(&tree, "abc", -1), 0);
}

TEST(BTreeOfBytes, NamesOfEmptyHalvesDoNotLeaveTheStore) {
  Bytes tree;
  for (const char *key : {"b", "c"}) mub_btree_insert(&tree, key, -1, 1);
  mub_btree_split(&tree, &tree.root);
  mub_btree_split(&tree, mub_btree_first_entry(&tree.root));
  EXPECT_EQ(mub_btree_remove(&tree, "b", 1), 1u);
  EXPECT_EQ(mub_btree_find(&tree, "a", 1), 0);
}

TEST(BTreeOfBytes, KeysArePackedInTheOrderOfInsertion) {
  Bytes tree;
  for (const char *key : {"pear", "fig", "", "apple"}) EXPECT_EQ(mub_btree_insert(&tree, key, -1, 1), 1);
  EXPECT_EQ(mub_btree_remove(&tree, nullptr, -1), 1u);
  EXPECT_EQ(mub_btree_insert(&tree, nullptr, 7, 2), 1) << "no bytes are the empty key";
  EXPECT_EQ(mub_btree_node_first(&tree), mub_btree_node_get(&tree, "", 0));
  EXPECT_EQ(mub_btree_node_first(&tree)->key_offset, 12u);
  mub_btree_remove(&tree, "fig", 3);
  EXPECT_EQ(std::string(tree.keys.data, tree.keys.data + tree.keys.length), "pearapple");
  EXPECT_EQ(mub_btree_node_first(&tree)->key_offset, 9u);
  EXPECT_EQ(tree.root.key_offset, 0u) << "that of pear, which is before the cut";
  mub_btree_remove(&tree, "pear", 4);
  EXPECT_EQ(tree.root.key_offset, 4u) << "the root's offset is not mended";
  mub_btree_adjust_t(&tree, &tree.root, 5, 2);
  EXPECT_EQ(mub_btree_node_first(&tree)->key_offset, 5u) << "an empty key at the cut stays";
  mub_btree_adjust_t(&tree, &tree.root, 4, 2);
  EXPECT_EQ(mub_btree_node_first(&tree)->key_offset, 3u);
  EXPECT_EQ(mub_btree_node_last(&tree)->key_offset, 0u);
  EXPECT_EQ(mub_btree_node_last(&tree), mub_btree_node_get(&tree, "apple", -1));
  tree.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_btree_insert(&tree, "~~", 2, 1), 0) << "offsets have 32 bits";
  EXPECT_EQ(tree.node_pool->live_count, 2);
}

int compare_node(uint64_t tree, uint64_t node, uint64_t key, uint64_t length) {
  return mub_btree_node_compare(reinterpret_cast<mub_btree *>(tree), reinterpret_cast<mub_btree_node *>(node),
                                reinterpret_cast<const char *>(key), static_cast<int64_t>(length));
}

int compare_entry(uint64_t tree, uint64_t entry, uint64_t key, uint64_t length) {
  return mub_btree_entry_compare(reinterpret_cast<mub_btree *>(tree),
                                 reinterpret_cast<mub_btree_entry *>(entry),
                                 reinterpret_cast<const char *>(key), static_cast<int64_t>(length));
}

void init_node(uint64_t node) { mub_btree_node_init(reinterpret_cast<mub_btree_node *>(node)); }

// An insertion out of the exported parts, the pointer array's searches among them.
TEST(BTreeOfBytes, IsMadeOfItsExportedParts) {
  Bytes tree;
  Content<ByteTree> content;
  const auto address = [](const void *record) { return uint64_t{reinterpret_cast<uintptr_t>(record)}; };
  const auto context = address(static_cast<mub_btree *>(&tree));
  for (int64_t i = 0; i < 600; ++i) {
    const std::string key = ByteTree::key((i * 77) % 600);
    const auto bytes = address(key.data());
    mub_btree_entry *leaf = &tree.root;
    while (leaf->level > 0) {
      leaf = reinterpret_cast<mub_btree_entry *>(
          mub_arrays_bfind_x(&leaf->children, context, bytes, key.size(), compare_entry));
    }
    ASSERT_EQ(leaf, call<kFindT>(tree, &tree.root, key));
    leaf->children.pool = tree.node_pool;
    uint64_t added = 0;
    const int index =
        mub_arrays_insert_new_x(&leaf->children, context, bytes, key.size(), &added, init_node, compare_node);
    ASSERT_GE(index, 0);
    auto *node = reinterpret_cast<mub_btree_node *>(added);
    ++tree.count;
    node->key_offset = static_cast<uint32_t>(tree.keys.length);
    node->key_length = static_cast<uint32_t>(key.size());
    mub_stream_append(&tree.keys, key.data(), static_cast<int64_t>(key.size()));
    mub_btree_set_name(&tree, leaf);
    mub_btree_set_next(leaf, index);
    if (leaf->children.count > 31) mub_btree_split(&tree, leaf);
    content.insert({key, 0});
  }
  expect_same(tree, content, Chain::kExact);

  // By hand: a leaf splits beside its parent, which does not hold the new half yet.
  mub_btree_entry *leaf = mub_btree_first_entry(&tree.root);
  const int64_t count = leaf->children.count;
  mub_btree_entry *upper = mub_btree_split_node(&tree, leaf);
  EXPECT_EQ(leaf->children.count, count / 2);
  EXPECT_LT(mub_btree_entrys_compare(&tree, leaf, upper, 0), 0);
  mub_arrays_insert_at(&leaf->parent->children, 1, address(upper));
  expect_same(tree, content, Chain::kExact);
  mub_btree_node *node = nullptr;
  EXPECT_EQ(mub_btree_insert_t(&tree, leaf, "", 0, &node), 0);
  EXPECT_EQ(node, mub_btree_node_first(&tree));
}

// ---- numbers

using Orders = std::vector<int>;

// The results for each of the types 0 to 7, of keys without alignment.
template <class Bits>
Orders orders(int (*compare)(const void *, const void *, uint32_t), Bits a, Bits b) {
  char bytes[1 + 2 * sizeof(Bits)] = {};
  std::memcpy(bytes + 1, &a, sizeof a);
  std::memcpy(bytes + 1 + sizeof a, &b, sizeof b);
  Orders orders;
  for (uint32_t type = 0; type < 8; ++type) orders.push_back(compare(bytes + 1, bytes + 1 + sizeof a, type));
  return orders;
}

TEST(BTreeOfNumbers, KeysCompareByTheirType) {
  const auto order32 = [](uint32_t a, uint32_t b) { return orders(mub_btreed_var_compare, a, b); };
  const auto order64 = [](uint64_t a, uint64_t b) { return orders(mub_btreex_var_compare, a, b); };
  EXPECT_EQ(order32(1, 2), (Orders{0, -1, -1, 0, 0, -1, 0, 0}));
  EXPECT_EQ(order32(~0u, 0), (Orders{0, -1, 1, 0, 0, 0, 0, 0})) << "-1, 2^32 - 1 and no number against 0";
  EXPECT_EQ(order32(0x80000000, 0), (Orders{0, -1, 1, 0, 0, 0, 0, 0})) << "minus zero is zero";
  EXPECT_EQ(order32(0xC0000000, 0xBF800000), (Orders{0, 1, 1, 0, 0, -1, 0, 0})) << "-2 and -1 as floats";
  EXPECT_EQ(order64(1, uint64_t{1} << 32), (Orders{0, 0, 0, -1, -1, 0, -1, 0}));
  EXPECT_EQ(order64(~uint64_t{0}, 0), (Orders{0, 0, 0, -1, 1, 0, 0, 0}));
  EXPECT_EQ(order64(uint64_t{0xC000} << 48, uint64_t{0xBFF0} << 48), (Orders{0, 0, 0, 1, 1, 0, -1, 0}));
  mub_btreed_node node = {};
  mub_btreed_entry entry = {};
  entry.key = 5;
  const uint32_t key = 4;
  EXPECT_EQ(mub_btreed_node_compare(&node, &key, 1) + mub_btreed_entry_compare(&entry, &key, 1), 0);
  EXPECT_EQ(mub_btreed_entrys_compare(&entry, &entry, 2), 0);
}

TEST(BTreeOfNumbers, AnUnknownTypeAndNoNumberEqualEverything) {
  Tree<Tree32<uint32_t, 3>> tree;
  EXPECT_EQ(mub_btreed_insert(&tree, 8, 1), 1);
  EXPECT_EQ(mub_btreed_insert(&tree, 9, 2), 0);
  EXPECT_EQ(mub_btreed_get(&tree, 1234), 1u);
  Tree<Tree32<int32_t, 1>> other;
  mub_btreed_swap(&tree, &other);
  EXPECT_EQ(mub_btreed_clone(&other, nullptr, &tree, nullptr, nullptr), 1);
  EXPECT_EQ(mub_btreed_insert(&tree, 9, 2), 0) << "types stay with their records";
  EXPECT_EQ(mub_btreed_remove(&tree, 7), 1u);

  Tree<Tree64<double, 6>> numbers;
  fill(numbers, 100);
  EXPECT_EQ(call<kInsert>(numbers, std::nan(""), 3u), 0);
  EXPECT_EQ(call<kInsert>(numbers, -0.0, 3u), 0) << "0 is there";
  EXPECT_EQ(mub_btreex_remove_all(&numbers), &numbers);
  EXPECT_EQ(call<kInsert>(numbers, std::nan(""), 3u), 1);
  EXPECT_EQ(call<kGet>(numbers, 77.0), 3u);
  EXPECT_EQ(mub_btreex_node_next(&numbers, mub_btreex_node_first(&numbers)), nullptr);
}

}  // namespace
