// General trees: each entry is appended to a random earlier one, so that a tree of N entries has about 2 ln N
// levels.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench_support.h"
#include "mub_tree.h"

#ifdef MUB_PEER_GLIB
#include <glib.h>
#endif

namespace {

class MubTree {
 public:
  using Entry = mub_tree_entry;

  MubTree() { mub_tree_init(&tree_, 1, 0); }
  ~MubTree() { mub_tree_term(&tree_); }
  MubTree(const MubTree &) = delete;
  MubTree &operator=(const MubTree &) = delete;

  Entry *root() { return &tree_.root; }
  Entry *append(Entry *parent, uint64_t value) {
    Entry *entry = mub_tree_entry_new(&tree_);
    entry->value = value;
    mub_tree_entry_append(&tree_, parent, entry);
    return entry;
  }
  uint64_t sum() {
    uint64_t sum = 0;
    for (Entry *entry = root(); entry != nullptr; entry = mub_tree_entry_iter_next(root(), entry)) {
      sum += entry->value;
    }
    return sum;
  }
  void copy_from(const MubTree &source) { mub_tree_clone(&source.tree_, nullptr, &tree_, nullptr, nullptr); }

 private:
  mub_tree tree_;
};

#ifdef MUB_PEER_GLIB
class GlibTree {
 public:
  using Entry = GNode;

  ~GlibTree() { g_node_destroy(root_); }
  GlibTree() = default;
  GlibTree(const GlibTree &) = delete;
  GlibTree &operator=(const GlibTree &) = delete;

  Entry *root() { return root_; }
  Entry *append(Entry *parent, uint64_t value) {
    return g_node_append_data(parent, reinterpret_cast<gpointer>(value));
  }
  uint64_t sum() {
    uint64_t sum = 0;
    const auto add = [](GNode *node, gpointer total) {
      *static_cast<uint64_t *>(total) += reinterpret_cast<uint64_t>(node->data);
      return gboolean{FALSE};
    };
    g_node_traverse(root_, G_PRE_ORDER, G_TRAVERSE_ALL, -1, add, &sum);
    return sum;
  }
  void copy_from(const GlibTree &source) {
    g_node_destroy(root_);
    root_ = g_node_copy(source.root_);
  }

 private:
  GNode *root_ = g_node_new(nullptr);
};
#endif

template <class Tree>
void fill(Tree &tree, int64_t count) {
  std::mt19937_64 random(7);
  std::vector<typename Tree::Entry *> entries{tree.root()};
  while (static_cast<int64_t>(entries.size()) <= count) {
    entries.push_back(tree.append(entries[random() % entries.size()], entries.size()));
  }
}

template <class Tree>
void build(benchmark::State &state) {
  for (auto _ : state) {
    Tree tree;
    fill(tree, state.range(0));
    benchmark::DoNotOptimize(tree.root());
  }
}

template <class Tree>
void walk(benchmark::State &state) {
  Tree tree;
  fill(tree, state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(tree.sum());
}

// Includes the release of the clone.
template <class Tree>
void clone(benchmark::State &state) {
  Tree tree;
  fill(tree, state.range(0));
  for (auto _ : state) {
    Tree copy;
    copy.copy_from(tree);
    benchmark::DoNotOptimize(copy.root());
  }
}

template <class Tree>
void add(const char *who) {
  mub_bench::add_sizes("tree_build", who, build<Tree>, {1000, 100000, 1000000});
  mub_bench::add_sizes("tree_walk", who, walk<Tree>, {1000, 100000, 1000000});
  mub_bench::add_sizes("tree_clone", who, clone<Tree>, {1000, 100000, 1000000});
}

[[maybe_unused]] const bool registered = [] {
  add<MubTree>("mub");
#ifdef MUB_PEER_GLIB
  add<GlibTree>("GNode");
#endif
  return true;
}();

}  // namespace
