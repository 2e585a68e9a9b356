#include "mub_btree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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
  Model<A> held;
  for (const auto *node : check.nodes()) held.insert({A::key_of(tree, *node), node->value});
  ASSERT_EQ(held, model);
}

// What the nearest search may give: the next key, unless the leaf of the key ends before it; then the key before.
template <class A>
void expect_nearest(Tree<A> &tree, const Model<A> &model, const typename A::Key &key) {
  const auto *nearest = tree.call(A::node_bfind, key);
  const auto above = model.lower_bound(key);
  ASSERT_EQ(nearest == nullptr, model.empty());
  if (model.empty()) return;
  const auto *leaf = tree.call_at(A::find_t, &tree.root, key);
  const auto *last =
      reinterpret_cast<const typename A::Node *>(leaf->children.items[leaf->children.count - 1]);
  const bool leaf_ends = A::key_of(tree, *last) < key;
  const auto expected = leaf_ends ? std::prev(above) : above;
  ASSERT_EQ(A::key_of(tree, *nearest), expected->first);
}

// In turn with every mix of owned and shared pools, growing, shrinking and drained, by ascending, descending and
// random keys; now and then memory runs out.
TYPED_TEST(BTree, AgreesWithAModelAlsoWhenMemoryRunsOut) {
  using A = TypeParam;
  for (int owned = 0; owned < 8; ++owned) {
    Random random(70 + static_cast<uint64_t>(owned));
    Tree<A> tree(owned);
    Model<A> model;
    bool was_removed = false;
    for (int64_t step = 0; step < 3000; ++step) {
      const bool grows = step % 1500 < 900;
      const auto key = A::key(owned % 3 == 0   ? random.below(1200)
                              : owned % 3 == 1 ? step % 1500
                                               : 1500 - step % 1500);
      const auto item = model.find(key);
      const bool present = item != model.end();
      const uint64_t stands = present ? item->second : 0;
      const uint64_t value = random.one_in(4) ? 0 : random.word();
      ASSERT_EQ(tree.call(A::get, key), stands);
      ASSERT_EQ(tree.call(A::find, key), present ? 1 : 0);
      ASSERT_NO_FATAL_FAILURE(expect_nearest(tree, model, key));
      const int64_t choice = random.below(8);
      int added = 0;
      const Fuse fuse(random.one_in(8) ? random.below(4) : 100,
                      random.one_in(2) ? Blow::kOnce : Blow::kForever);
      if (choice < (grows ? 4 : 1)) {
        const bool failed = fuse.blows_in([&] { added = tree.call(A::insert, key, value); });
        ASSERT_TRUE(failed || added == !present);
        if (added) model.insert({key, value});
      } else if (choice < (grows ? 6 : 2)) {
        auto *node = reinterpret_cast<typename A::Node *>(&tree);
        const bool failed = fuse.blows_in([&] { added = tree.call(A::node_set, key, &node); });
        ASSERT_TRUE(failed || added == !present);
        ASSERT_EQ(node, tree.call(A::node_get, key));
        ASSERT_EQ(node, tree.call(A::node_find, key));
        if (added) model.insert({key, 0});
      } else if (choice == 6) {
        ASSERT_EQ(tree.call(A::update, key, value), stands);
        if (present) item->second = value;
      } else {
        const auto victim =
            model.empty() ? key
                          : std::next(model.begin(), random.below(static_cast<int64_t>(model.size())))->first;
        const uint64_t removed = model.empty() ? 0 : model.find(victim)->second;
        ASSERT_EQ(tree.call(A::remove, victim), removed);
        was_removed = model.erase(victim) != 0 || was_removed;
        if (model.empty()) was_removed = false;
      }
      ASSERT_FALSE(added && present);
      ASSERT_NO_FATAL_FAILURE(
          expect_same<A>(tree, model, was_removed ? Chain::kStale : Chain::kExact, INT64_MAX));
    }
    while (!model.empty()) {
      const auto victim = std::next(model.begin(), static_cast<int64_t>(model.size()) / 2);
      ASSERT_EQ(tree.call(A::remove, victim->first), victim->second);
      model.erase(victim);
      ASSERT_NO_FATAL_FAILURE(expect_same<A>(tree, model, Chain::kStale, INT64_MAX));
    }
    ASSERT_EQ(tree.root.level, 0);
    ASSERT_EQ(tree.entry_pool->live_count + tree.node_pool->live_count, 0);
  }
}

}  // namespace
