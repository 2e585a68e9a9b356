// Cloning a B-tree. If source and copy both own a pool, its blocks are copied chunk by chunk and the
// addresses in them translated; blocks of an external pool are copied individually. Tables of children are
// always allocated and filled anew. Part of the engine in bplus_tree.h, where its invariants are; links of
// the copy point into the source (invariant 7 there). Threads: the source is only read, but blocks are taken
// from its external entry and node pools.
#ifndef MUB_BTREE_BPLUS_CLONE_H
#define MUB_BTREE_BPLUS_CLONE_H

#include "btree/bplus_whole.h"
#include "containers/pool_clone.h"

namespace mub::bplus {

template <class Tree>
class Cloning {
 public:
  using Node = NodeOf<Tree>;
  using Record = RecordOf<Tree>;

  Cloning(const Tree &source, Tree &copy) : source_(source), copy_(copy) {}

  // False if memory runs out; the caller then empties the copy.
  bool run(UserPoolClone &user_pool) {
    share_external_pools(source_, copy_, user_pool);
    if (!Policy<Tree>::clone_keys(source_, copy_) || !copiers_.clone(source_, copy_, user_pool)) return false;
    if (!slots::expand(copy_.root.children, kSplitCount)) return false;  // as an initialised root has
    if (!copy_below(source_.root, copy_.root)) return false;
    copy_.count = source_.count;
    if (source_.owns_value_pool != 0) translate_values(user_pool);
    return true;
  }

  bool run_with_new_blocks(const Node &from, Node &to) {
    copiers_.entry_pool.use_new_blocks_of(copy_.entry_pool);
    copiers_.node_pool.use_new_blocks_of(copy_.node_pool);
    return copy_below(from, to);
  }

 private:
  // Walks both trees in parallel, parents first.
  bool copy_below(const Node &source_top, Node &copy_top) {
    const Node *from = &source_top;
    Node *to = &copy_top;
    copy_top.level = source_top.level;
    Policy<Tree>::copy_key(copy_top, source_top);
    while (from != nullptr) {
      if (!copy_children(*from, *to)) return false;
      from = next_in_preorder(*from, source_top, true);
      to = next_in_preorder(*to, copy_top, true);
    }
    return true;
  }

  // Appends copies of the children one at a time, so that the copy can be emptied if memory runs out.
  bool copy_children(const Node &from, Node &to) {
    to.children.pool = children_pool(copy_, to.level);
    if (!slots::expand(to.children, from.children.capacity)) return false;
    for (int64_t i = 0; i < from.children.count; ++i) {
      const bool copied = from.level > 0 ? copy_node(*node_at(from, i), to)
                                         : append_copy(copiers_.node_pool.copy_of(*record_at(from, i)), to);
      if (!copied) return false;
    }
    return true;
  }

  bool copy_node(const Node &from, Node &parent) {
    Node *node = copiers_.entry_pool.copy_of(from);
    if (node == nullptr) return false;
    node->parent = &parent;
    node->children = {};  // the copied field refers to the table of the source
    return append_copy(node, parent);
  }

  template <class Child>
  static bool append_copy(const Child *copy, Node &parent) {
    if (copy == nullptr) return false;
    append_child(parent.children, copy);
    return true;
  }

  void translate_values(const UserPoolClone &user_pool) {
    const Node *to = first_leaf(copy_.root);
    for (const Node *from = first_leaf(source_.root); from != nullptr; from = neighbour<1>(*from)) {
      for (int64_t i = 0; i < from->children.count; ++i) {
        const uint64_t value = record_at(*from, i)->value;
        Record *record = record_at(*to, i);
        record->value = copiers_.value_pool.translate(value);
        user_pool.notify(value, record->value);
      }
      to = neighbour<1>(*to);
    }
  }

  const Tree &source_;
  Tree &copy_;
  ContainerBlockCopiers copiers_;
};

template <class Tree>
int64_t clone(const Tree &source, Tree &copy, UserPoolClone user_pool) {
  if (&source == &copy) return source.count;
  remove_all(copy);
  if (!Cloning(source, copy).run(user_pool)) remove_all(copy);
  return copy.count;
}

template <class Tree>
bool clone_below(const Tree &source, const NodeOf<Tree> &from, Tree &copy, NodeOf<Tree> &to) {
  if (Cloning(source, copy).run_with_new_blocks(from, to)) return true;
  remove_all_below(copy, to, Returned::kAll);
  Policy<Tree>::reset_key(to);
  to.level = 0;
  return false;
}

}  // namespace mub::bplus

#endif
