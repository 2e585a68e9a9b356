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
using Kinds = ::testing::Types<ByteTree, Tree32<int32_t, 1>, Tree32<uint32_t, 2>, Tree32<float, 5>,
                               Tree64<int64_t, 3>, Tree64<uint64_t, 4>, Tree64<double, 6>>;
TYPED_TEST_SUITE(BTree, Kinds);

template <class A>
using Model = std::map<typename A::Key, uint64_t>;

template <class A>
void expect_same(const typename A::Record &tree, const Model<A> &model, Chain chain,
                 int64_t most_children = 31) {
  const Check<A> check(tree, most_children);
  ASSERT_NO_FATAL_FAILURE(check.run(chain));
  ASSERT_EQ(check.nodes().size(), model.size());
  auto item = model.begin();
  for (const auto *node : check.nodes()) {
    ASSERT_EQ(A::key_of(tree, *node), item->first);
    ASSERT_EQ(node->value, item++->second);
  }
}

// What the nearest search may give: the next key, unless the leaf of the key ends before it; then the key before.
template <class A>
void expect_nearest(Tree<A> &tree, const Model<A> &model, const typename A::Key &key) {
  const auto *nearest = tree.call(A::node_bfind, key);
  ASSERT_EQ(nearest == nullptr, model.empty());
  if (model.empty()) return;
  const auto &children = tree.call_at(A::find_t, &tree.root, key)->children;
  const auto *last = reinterpret_cast<const typename A::Node *>(children.items[children.count - 1]);
  const auto above = model.lower_bound(key);
  ASSERT_EQ(A::key_of(tree, *nearest), A::key_of(tree, *last) < key ? std::prev(above)->first : above->first);
}

// The keys 0 to `count` - 1 with values of their own, in the order of the keys.
template <class A>
Model<A> model_of(int64_t count) {
  Model<A> model;
  for (int64_t i = 0; i < count; ++i) model.insert({A::key(i), static_cast<uint64_t>(i) * 3});
  return model;
}

template <class A>
Model<A> fill(Tree<A> &tree, int64_t count) {
  const Model<A> model = model_of<A>(count);
  for (const auto &[key, value] : model) EXPECT_EQ(tree.call(A::insert, key, value), 1);
  return model;
}

// In turn with every mix of owned and shared pools, by ascending, descending and random keys, growing, shrinking and
// drained; with every other mix memory runs out now and then.
TYPED_TEST(BTree, AgreesWithAModelAlsoWhenMemoryRunsOut) {
  using A = TypeParam;
  for (int owned = 0; owned < 8; ++owned) {
    Random random(70 + static_cast<uint64_t>(owned));
    Tree<A> tree(owned);
    Model<A> model;
    Chain chain = Chain::kExact;
    const bool may_fail = owned % 2 == 0;
    const int64_t keys = 400;
    for (int64_t step = 0; step < 2 * keys || !model.empty(); ++step) {
      const int64_t number = owned % 3 == 0 ? random.below(keys) : owned % 3 == 1 ? step : 8 * keys - step;
      const auto key = A::key(number % keys);
      const bool present = model.count(key) != 0;
      const uint64_t stands = present ? model[key] : 0;
      const uint64_t value = random.one_in(4) ? 0 : random.word();
      ASSERT_EQ(tree.call(A::get, key), stands);
      ASSERT_EQ(tree.call(A::find, key), present ? 1 : 0);
      ASSERT_NO_FATAL_FAILURE(expect_nearest(tree, model, key));
      const int64_t choice = random.below(8);
      if (choice < (step < keys ? 6 : 2)) {
        const bool with_value = choice % 3 != 0;
        auto *node = reinterpret_cast<typename A::Node *>(&tree);
        const Fuse fuse(may_fail && random.one_in(4) ? random.below(3) : INT64_MAX,
                        random.one_in(2) ? Blow::kOnce : Blow::kForever);
        int added = 0;
        const bool failed = fuse.blows_in([&] {
          added = with_value ? tree.call(A::insert, key, value) : tree.call(A::node_set, key, &node);
        });
        ASSERT_TRUE(present ? added == 0 : failed || added == 1);
        if (!with_value) {
          ASSERT_EQ(node, tree.call(A::node_get, key));
          ASSERT_EQ(node, tree.call(A::node_find, key));
        }
        if (added != 0) model.insert({key, with_value ? value : 0});
      } else if (choice == 6) {
        ASSERT_EQ(tree.call(A::update, key, value), stands);
        if (present) model[key] = value;
      } else {
        const auto count = static_cast<int64_t>(model.size());
        const auto victim = model.empty() ? key : std::next(model.begin(), random.below(count))->first;
        ASSERT_EQ(tree.call(A::remove, victim), model.empty() ? 0 : model[victim]);
        model.erase(victim);
        chain = model.empty() ? Chain::kExact : Chain::kStale;
        ASSERT_EQ(tree.call(A::remove, victim), 0u);
      }
      ASSERT_NO_FATAL_FAILURE(expect_same<A>(tree, model, chain, may_fail ? INT64_MAX : 31));
    }
    EXPECT_EQ(tree.root.level, 0);
    EXPECT_EQ(tree.entry_pool->live_count + tree.node_pool->live_count, 0);
  }
}

// Leaves hold 16 records after a split; so 512 ascending keys are what brings the root to 32 leaves.
TYPED_TEST(BTree, SplitsAt32ChildrenIntoHalves) {
  using A = TypeParam;
  for (const bool ascends : {true, false}) {
    Tree<A> tree;
    Model<A> model;
    const Model<A> all = model_of<A>(560);
    for (int64_t count = 1; count <= 560; ++count) {
      const auto &item = *std::next(all.begin(), ascends ? count - 1 : 560 - count);
      ASSERT_EQ(tree.call(A::insert, item.first, item.second), 1);
      model.insert(item);
      const int64_t leaves = std::max<int64_t>(count / 16, 1);
      ASSERT_EQ(tree.root.level, leaves < 2 ? 0 : leaves < 32 ? 1 : 2) << count;
      ASSERT_EQ(tree.entry_pool->live_count, leaves < 2 ? 0 : leaves < 32 ? leaves : leaves + 2) << count;
      ASSERT_EQ(A::key_of(tree, tree.root), model.rbegin()->first);
      ASSERT_NO_FATAL_FAILURE(count % 16 > 1 ? void() : expect_same<A>(tree, model, Chain::kExact));
    }
  }
}

// The first split, one beside a parent, and one that goes up to the root.
TYPED_TEST(BTree, AnEntryThatCannotSplitIsSplitByTheNextInsertion) {
  using A = TypeParam;
  for (const int64_t before : {31, 47, 511}) {
    for_every_allocation([&](const Fuse &fuse) {
      Tree<A> tree;
      Model<A> model = model_of<A>(before + 2);
      const auto last = std::prev(model.end());
      const auto second_last = std::prev(last);
      for (auto item = model.begin(); item != second_last; ++item)
        tree.call(A::insert, item->first, item->second);
      int added = 0;
      const bool failed =
          fuse.blows_in([&] { added = tree.call(A::insert, second_last->first, second_last->second); });
      ASSERT_TRUE(failed || added == 1);
      if (added == 0) model.erase(second_last);
      ASSERT_EQ(tree.call(A::insert, last->first, last->second), 1);
      // A parent that could not split is over-full until another child comes.
      expect_same<A>(tree, model, Chain::kExact, failed ? 32 : 31);
      EXPECT_TRUE(before == 511 || added == 0 || tree.entry_pool->live_count == (before + 2) / 16);
    });
  }
}

// Over-full leaves and parents get wider tables, and split when there is memory.
TYPED_TEST(BTree, GrowsOnWithSplitsThatFail) {
  using A = TypeParam;
  Random random(71);
  Tree<A> tree;
  const Model<A> model = model_of<A>(900);
  for (const auto &item : model) {
    int added = 0;
    while (added == 0) {
      const Fuse fuse(random.below(4), Blow::kOnce);
      fuse.blows_in([&] { added = tree.call(A::insert, item.first, item.second); });
    }
  }
  expect_same<A>(tree, model, Chain::kExact, INT64_MAX);
}

// ---- whole trees

// Values here are blocks that hold the address of a word in the user's pool.
uint64_t *&word_behind(uint64_t value) { return *reinterpret_cast<uint64_t **>(value); }

void mend(const mub_pool_chunk *map, uint64_t source, mub_pool *source_pool, uint64_t destination,
          mub_pool *destination_pool) {
  note(source);
  if (map == nullptr || destination == 0) return;
  int64_t offset = 0;
  const int chunk = mub_pool_get_addr(source_pool, map, word_behind(source), &offset);
  word_behind(destination) = static_cast<uint64_t *>(mub_pool_set_addr(destination_pool, chunk, offset));
}

template <class A>
Model<A> fill_with_blocks(Tree<A> &tree, int64_t count, mub_pool &user) {
  Model<A> model = model_of<A>(count);
  for (auto &[key, value] : model) {
    uint64_t block = 0;
    EXPECT_EQ(tree.call(A::set, key, &block, nullptr), 1);
    word_behind(block) = static_cast<uint64_t *>(mub_pool_new(&user));
    *word_behind(block) = std::exchange(value, block);
  }
  return model;
}

// Clones with one mix of pools into a tree with another one, which holds something; ends the source, uses the copy.
template <class A>
void expect_clone(int owned, int copy_owned, const Fuse &fuse) {
  Pool user(8), user_copy(8), callers_values(16);
  Tree<A> copy(copy_owned);
  for (int64_t i = 300; i < 340; ++i) copy.call(A::insert, A::key(i), 7u);
  Model<A> model;
  const auto expected = model_of<A>(70);
  {
    Tree<A> tree(owned);
    if ((owned & 4) == 0) tree.value_pool = &callers_values;
    model = fill_with_blocks(tree, 70, user);
    seen.clear();
    int64_t count = -1;
    const bool met_a_failure =
        fuse.blows_in([&] { count = A::clone(&tree, &user, &copy, &user_copy, mend); });
    const bool failed = count == 0;
    EXPECT_TRUE(met_a_failure || !failed);
    expect_same<A>(tree, model, Chain::kExact);
    Words values;
    for (const auto &item : model) values.push_back(item.second);
    EXPECT_EQ(seen, failed || (owned & 4) == 0 ? Words() : values);
    EXPECT_TRUE(failed || count == 70);
    if (failed) model.clear();
    EXPECT_EQ(A::node_first(&copy) == nullptr, failed);
    for (auto &[key, value] : model) {
      const auto *node = copy.call(A::node_get, key);
      ASSERT_NE(node, nullptr);
      EXPECT_EQ(node->next, tree.call(A::node_get, key)->next) << "links are copied as they are";
      const bool both_own = (owned & copy_owned & 4) != 0;
      EXPECT_EQ(node->value == value, (owned & 4) == 0);
      EXPECT_EQ(node->value == 0, (owned & 4) != 0 && !both_own);
      value = node->value;
      EXPECT_TRUE(!both_own || *word_behind(value) == expected.at(key));
    }
    // What is shared belongs to the source; the copy's records and entries go back there.
    EXPECT_EQ(copy.owns_entry_pool, owned & copy_owned & 1);
    EXPECT_EQ(copy.owns_node_pool, (owned & copy_owned & 2) / 2);
    EXPECT_EQ(copy.entry_pool == &tree.entries, (owned & 1) == 0);
    if ((owned & 3) != 3) A::remove_all(&copy);
  }
  if ((owned & 3) != 3) return;
  mub_pool_empty(&user);
  expect_same<A>(copy, model, Chain::kStale);
  for (int64_t i = 60; i < 300; ++i) {
    EXPECT_EQ(copy.call(A::insert, A::key(i), 5u), model.insert({A::key(i), 5}).second ? 1 : 0);
  }
  for (int64_t i = 0; i < 300; i += 2) {
    copy.call(A::remove, A::key(i));
    model.erase(A::key(i));
  }
  expect_same<A>(copy, model, Chain::kStale);
}

TYPED_TEST(BTree, CloneCopiesWithEveryMixOfPoolsOrIsEmpty) {
  for (int owned = 0; owned < 8; ++owned) {
    for (int copy_owned = 0; copy_owned < 8; ++copy_owned) {
      expect_clone<TypeParam>(owned, copy_owned, Fuse(INT64_MAX, Blow::kOnce));
    }
    for_every_allocation([&](const Fuse &fuse) { expect_clone<TypeParam>(owned, owned, fuse); });
  }
}

TYPED_TEST(BTree, CloneEntryCopiesWhatIsBelowOrNothing) {
  using A = TypeParam;
  for_every_allocation([](const Fuse &fuse) {
    Tree<A> tree(0), copy(0);
    const Model<A> model = fill(tree, 560);
    int done = 0;
    const bool failed = fuse.blows_in([&] { done = A::clone_entry(&tree, &tree.root, &copy, &copy.root); });
    EXPECT_NE(failed, done == 1);
    EXPECT_EQ(copy.root.level, failed ? 0 : 2);
    EXPECT_EQ(copy.nodes.live_count, failed ? 0 : 560);
    expect_same<A>(tree, model, Chain::kExact);
  });
}

TYPED_TEST(BTree, SwapExchangesContentsAndPools) {
  using A = TypeParam;
  for (int owned = 0; owned < 8; ++owned) {
    for (const int64_t count : {0, 5, 60, 520}) {
      Tree<A> a(owned), b(7 - owned);
      const Model<A> of_a = fill(a, count), of_b = fill(b, 40);
      A::swap(&a, &b);
      A::swap(&a, &a);
      expect_same<A>(a, of_b, Chain::kExact);
      expect_same<A>(b, of_a, Chain::kExact);
      EXPECT_EQ(b.owns_entry_pool + 2 * b.owns_node_pool + 4 * b.owns_value_pool, owned);
      for (auto *tree : {&a, &b}) A::remove_all(tree);
    }
  }
}

uint64_t handed_out;
void note_unless_handed_out(uint64_t block) { note(handed_out == 0 ? block : 0); }

TYPED_TEST(BTree, OnlyACallersPoolGetsSingleValueBlocksBack) {
  using A = TypeParam;
  for (const int owned : {3, 7}) {
    Tree<A> tree(owned);
    seen.clear();
    for (int64_t i = 0; i < 100; ++i) {
      ASSERT_EQ(tree.call(A::set, A::key(i), &handed_out, note_unless_handed_out), 1);
      ASSERT_EQ(handed_out, seen.back());
    }
    EXPECT_EQ(tree.call(A::set, A::key(3), &handed_out, note), 0);
    EXPECT_EQ(handed_out, seen[3]);
    tree.call(A::update, A::key(5), 0u);
    tree.call(A::remove, A::key(4));
    Words in_order;
    for (auto *node = A::node_first(&tree); node != nullptr; node = A::node_next(&tree, node)) {
      if (node->value != 0) in_order.push_back(node->value);
    }
    seen.clear();
    EXPECT_EQ(A::free_all(&tree, note), &tree);
    EXPECT_EQ(seen, in_order);
    EXPECT_EQ(tree.value_pool->live_count, owned == 7 ? 0 : 2) << "of keys 4 and 5, the caller's now";
    EXPECT_EQ(tree.root.children.items, nullptr);
    // Without a block the key is added all the same.
    tree.value_pool->block_size = 0;
    handed_out = 9;
    EXPECT_EQ(tree.call(A::set, A::key(0), &handed_out, note), 1);
    EXPECT_EQ(handed_out, 0u);
    EXPECT_EQ(seen, in_order);
    expect_same<A>(tree, {{A::key(0), 0}}, Chain::kExact);
    A::free_all(&tree, nullptr);
  }
}

TYPED_TEST(BTree, MakesDoWithThePoolsThatItGot) {
  using A = TypeParam;
  for_every_allocation([](const Fuse &fuse) {
    typename A::Record tree;
    fuse.blows_in([&] { A::init(&tree, 1, 1, 1); });
    EXPECT_EQ(tree.owns_entry_pool, tree.entry_pool != nullptr ? 1 : 0);
    EXPECT_EQ(tree.owns_node_pool, tree.node_pool != nullptr ? 1 : 0);
    EXPECT_EQ(tree.owns_value_pool, tree.value_pool != nullptr ? 1 : 0);
    for (int64_t i = 0; i < 100; ++i) {
      EXPECT_EQ(A::with(A::key(i), [&](auto... key) { return A::insert(&tree, key..., 1u); }),
                tree.owns_node_pool);
    }
    A::term(&tree);
    EXPECT_TRUE(tree.entry_pool == nullptr && tree.node_pool == nullptr && tree.value_pool == nullptr);
    EXPECT_EQ(tree.root.children.pool, nullptr);
  });
}

// ---- walks

// Records, whole leaves and more vanish under the walk; what it notes in the tree's unused bytes is spoilt.
TYPED_TEST(BTree, WalksWhileRecordsAreRemoved) {
  using A = TypeParam;
  for (const int64_t run : {1, 20, 100}) {
    Tree<A> tree(0);
    Model<A> model = fill(tree, 600);
    Random random(static_cast<uint64_t>(run));
    auto *node = A::node_first(&tree);
    typename A::Node *kept = nullptr;
    int64_t step = 0;
    for (auto item = model.begin(); item != model.end(); ++step) {
      ASSERT_EQ(A::key_of(tree, *node), item->first);
      ASSERT_EQ(A::node_prev(&tree, node), kept);
      const uint64_t noise = random.word();
      if (step % 3 == 0) std::memcpy(&tree.owns_entry_pool + 1, &noise, 6);
      auto *next = A::node_next(&tree, node);
      if (step % (run + 1) == run) {
        kept = node;
        ++item;
      } else {
        tree.call(A::remove, item->first);
        item = model.erase(item);
      }
      node = next;
    }
    EXPECT_EQ(node, nullptr);
    expect_same<A>(tree, model, Chain::kStale);
  }
}

// Blocks that a caller borrowed may hold anything, and parts may be made, split or emptied by themselves: their keys are
// absent then, and no block is lost.
TYPED_TEST(BTree, OddPartsAndForeignBlocksDoNoHarm) {
  using A = TypeParam;
  for (const int owned : {0, 3}) {
    for (int64_t levels = 0; levels < 4; ++levels) {
      Tree<A> tree(owned);
      const Model<A> model = fill(tree, 600);
      void *block = std::memset(mub_pool_new(tree.entry_pool), 0x77, sizeof(typename A::Entry));
      auto *entry = A::entry_new(&tree, 0);
      A::remove_entry_t(&tree, entry);
      entry = A::first_entry(&tree.root);
      for (int64_t up = 0; up < levels && entry->parent != nullptr; ++up) entry = entry->parent;
      if (levels == 3) {
        for (int i = 0; i < 4; ++i) A::split(&tree, A::first_entry(&tree.root));
        mub_pool_free(tree.entry_pool, block);
        expect_same<A>(tree, model, Chain::kExact);
        continue;
      }
      A::remove_all_entry(&tree, entry);
      for (const auto &[key, value] : model) {
        auto *node = tree.call(A::node_bfind, key);
        for (int i = 0; i < 40 && node != nullptr; ++i) node = A::node_next(&tree, node);
        if (tree.call(A::insert, key, value) == 1) tree.call(A::remove, key);
      }
      A::remove_all(&tree);
      if (owned == 0) mub_pool_free(tree.entry_pool, block);
    }
  }
}

// A hand-made tree of one record and as many levels as there can be, cloned, walked and emptied; then its one record
// takes all levels with it.
TYPED_TEST(BTree, DegenerateTreesTakeABoundedStack) {
  using A = TypeParam;
  Tree<A> tree(0), copy(0);
  tree.call(A::insert, A::key(1), 1u);
  auto *node = A::node_first(&tree);
  typename A::Entry *below = nullptr;
  for (int16_t level = 0; level < 32000; ++level) {
    auto *entry = level < 31999 ? A::entry_new(&tree, level) : &tree.root;
    if (level == 31999) mub_arrays_remove_all(&entry->children);
    entry->level = level;
    mub_arrays_append(&entry->children, reinterpret_cast<uintptr_t>(below));
    if (level == 0) entry->children.items[0] = reinterpret_cast<uintptr_t>(node);
    if (below != nullptr) below->parent = entry;
    below = entry;
  }
  A::set_name(&tree, A::first_entry(&tree.root));
  A::set_pool(&tree, &tree.root);
  EXPECT_EQ(A::clone(&tree, nullptr, &copy, nullptr, nullptr), 1);
  EXPECT_EQ(tree.call(A::get, A::key(1)), 1u);
  EXPECT_EQ(copy.call(A::remove, A::key(1)), 1u);
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
}

// Keys that lie in the tree's own bytes, which grow, and are cut, under them.
TEST(BTreeOfBytes, TakesKeysFromItsOwnKeyBytes) {
  Bytes tree;
  Model<ByteTree> model = fill(tree, 1);
  Random random(77);
  for (uint64_t i = 2; i < 300; ++i) {
    const std::string number = std::to_string(i);
    ASSERT_EQ(mub_btree_insert(&tree, number.c_str(), -1, i), model.insert({number, i}).second ? 1 : 0);
    const int64_t from = random.below(tree.keys.length);
    const int64_t length = std::min<int64_t>(random.below(40), tree.keys.length - from);
    const std::string key(tree.keys.data + from, tree.keys.data + from + length);
    ASSERT_EQ(mub_btree_insert(&tree, tree.keys.data + from, length, i),
              model.insert({key, i}).second ? 1 : 0);
    if (random.one_in(4) && model.size() > 9) {
      const auto *last = mub_btree_node_last(&tree);
      ASSERT_EQ(mub_btree_remove(&tree, tree.keys.data + last->key_offset, last->key_length),
                model.rbegin()->second);
      model.erase(std::prev(model.end()));
    }
    ASSERT_NO_FATAL_FAILURE(expect_same<ByteTree>(tree, model, Chain::kStale));
  }
  tree.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_btree_insert(&tree, "~~", 2, 1), 0) << "offsets have 32 bits";
  EXPECT_EQ(tree.node_pool->live_count, static_cast<int64_t>(model.size()));
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
  Model<ByteTree> model;
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
    ASSERT_EQ(leaf, tree.call_at(mub_btree_find_t, &tree.root, key));
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
    model.insert({key, 0});
  }
  expect_same<ByteTree>(tree, model, Chain::kExact);

  // By hand: a leaf splits beside its parent, which does not hold the new half yet.
  mub_btree_entry *leaf = mub_btree_first_entry(&tree.root);
  const int64_t count = leaf->children.count;
  mub_btree_entry *upper = mub_btree_split_node(&tree, leaf);
  EXPECT_EQ(leaf->children.count, count / 2);
  EXPECT_LT(mub_btree_entrys_compare(&tree, leaf, upper, 0), 0);
  mub_arrays_insert_at(&leaf->parent->children, 1, address(upper));
  expect_same<ByteTree>(tree, model, Chain::kExact);
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
  const Model<Tree64<double, 6>> model = fill(numbers, 100);
  EXPECT_EQ(numbers.call(mub_btreex_insert, std::nan(""), 3u), 0);
  EXPECT_EQ(numbers.call(mub_btreex_insert, -0.0, 3u), 0) << "0 is there";
  EXPECT_EQ(mub_btreex_remove_all(&numbers), &numbers);
  EXPECT_EQ(numbers.call(mub_btreex_insert, std::nan(""), 3u), 1);
  EXPECT_EQ(numbers.call(mub_btreex_get, 77.0), 3u);
  EXPECT_EQ(mub_btreex_node_next(&numbers, mub_btreex_node_first(&numbers)), nullptr);
}

}  // namespace
