// Checks the invariants of B-trees; bplus_tree.h has them. The number of children that a node may have and
// the links between records are not checked: both depend on what was done before.
#ifndef MUB_BTREE_VERIFY_H
#define MUB_BTREE_VERIFY_H

#include <cstdint>

#include "arrays/verify.h"
#include "base/fault.h"
#include "btree/bplus_nodes.h"
#include "btree/tree_walk.h"
#include "containers/verify.h"

namespace mub::bplus {

// A walk over all nodes in pre-order. Before it goes down from a node, it checks the `parent` of its
// children, which it follows on its way back. It ends because every leaf has a record, and the keys of the
// records ascend.
template <class Tree>
class TreeCheck {
 public:
  explicit TreeCheck(const Tree &tree) : tree_(tree), keys_(tree) {}

  Fault run() {
    if (tree_.root.parent != nullptr || tree_.root.level < 0)
      return "The root has a parent, or its level is negative.";
    if (const Fault fault = keys_.begin()) return fault;
    const Node *node = &tree_.root;
    for (; node != nullptr; node = next_in_preorder(*node, tree_.root, true)) {
      if (const Fault fault = enter(*node)) return fault;
    }
    if (records_ != tree_.count) return kWrongCount;
    return keys_.end();
  }

 private:
  using Node = NodeOf<Tree>;
  using Record = RecordOf<Tree>;

  Fault enter(const Node &node) {
    if (const Fault fault = slots::verify_table(node.children)) return fault;
    if (node.children.count == 0)
      return &node == &tree_.root && node.level == 0 ? nullptr : "An entry has no children.";
    if (node.children.pool != children_pool(tree_, node.level))
      return "A table of children does not refer to the pool of the children.";
    if (position(node.children, nullptr) < node.children.count) return "A child is NULL.";
    if (const Fault fault = node.level > 0 ? verify_nodes(node) : verify_records(node)) return fault;
    bool refers_to_last = true;
    with_last_child(
        node, [&](const auto &child) { refers_to_last = Policy<Tree>::name_refers_to_key_of(node, child); });
    return refers_to_last || &node == &tree_.root ? nullptr
                                                  : "The key of an entry is not that of its last child.";
  }

  Fault verify_nodes(const Node &node) {
    listed_ += node.children.count;
    if (const Fault fault = verify_blocks<Node>(entry_pool_of(tree_), listed_)) return fault;
    for (int64_t i = 0; i < node.children.count; ++i) {
      const Node &child = *node_at(node, i);
      if (child.level != node.level - 1) return "The level of a child is not one below that of its parent.";
      if (child.parent != &node) return "The parent of an entry is not the one that lists it.";
    }
    return nullptr;
  }

  Fault verify_records(const Node &leaf) {
    for (int64_t i = 0; i < leaf.children.count; ++i) {
      const Record &record = *record_at(leaf, i);
      if (++records_ > tree_.count) return kWrongCount;
      if (const Fault fault = keys_.add(record)) return fault;
      if (before_ != nullptr && !comes_after(record, *before_))
        return "The keys of the records do not ascend.";
      before_ = &record;
    }
    return nullptr;
  }

  bool comes_after(const Record &record, const Record &before) const {
    return Policy<Tree>::with_order(tree_, Policy<Tree>::key_of(tree_, before),
                                    [&](const auto &order) { return order(record) > 0; });
  }

  const Tree &tree_;
  KeyCheck<Tree> keys_;
  const Record *before_ = nullptr;
  int64_t records_ = 0;
  int64_t listed_ = 0;  // nodes that a parent lists
};

template <class Tree>
Fault verify(const Tree &tree) {
  if (const Fault fault = verify_pools(tree)) return fault;
  if (const Fault fault = verify_blocks<RecordOf<Tree>>(node_pool_of(tree), tree.count)) return fault;
  return TreeCheck<Tree>(tree).run();
}

}  // namespace mub::bplus

#endif
