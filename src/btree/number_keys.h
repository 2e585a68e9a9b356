// Number keys for bplus_tree.h, stored in records and nodes. The tree's key_type says how their bits
// compare: as signed, unsigned or floating-point numbers.
#ifndef MUB_BTREE_NUMBER_KEYS_H
#define MUB_BTREE_NUMBER_KEYS_H

#include <cstdint>
#include <type_traits>

#include "bytes/bytes.h"
#include "containers/key_store.h"
#include "mub_btree.h"

namespace mub::bplus {

struct Numbers32 {
  using Bits = uint32_t;
  using Float = float;
  static constexpr uint32_t kSigned = MUB_KEY_INT32;
  static constexpr uint32_t kUnsigned = MUB_KEY_UINT32;
  static constexpr uint32_t kFloat = MUB_KEY_FLOAT;
};

struct Numbers64 {
  using Bits = uint64_t;
  using Float = double;
  static constexpr uint32_t kSigned = MUB_KEY_INT64;
  static constexpr uint32_t kUnsigned = MUB_KEY_UINT64;
  static constexpr uint32_t kFloat = MUB_KEY_DOUBLE;
};

// Compares stored bits with those of the wanted key. With their sign bits flipped, signed numbers compare
// as unsigned ones.
template <class Bits>
struct IntegerComparison {
  static constexpr bool kIsBranchFree = true;
  IntegerComparison(Bits wanted, Bits to_flip) : flipped_key(wanted ^ to_flip), flip(to_flip) {}
  int operator()(Bits stored) const {
    const Bits flipped = stored ^ flip;
    return flipped < flipped_key ? -1 : flipped != flipped_key;
  }
  IntegerComparison with_key(Bits key) const { return {key, flip}; }

  Bits flipped_key;
  Bits flip;
};

// Numbers that are neither less nor greater are equal: a NaN equals every number.
template <class Float, class Bits>
struct FloatComparison {
  static constexpr bool kIsBranchFree = false;
  explicit FloatComparison(Bits wanted) : key(bytes::load<Float>(&wanted)) {}
  int operator()(Bits bits) const {
    const auto stored = bytes::load<Float>(&bits);
    return stored < key ? -1 : stored > key;
  }
  FloatComparison with_key(Bits other) const { return FloatComparison(other); }

  Float key;
};

template <class Bits>
struct AllEqual {
  static constexpr bool kIsBranchFree = false;
  int operator()(Bits) const { return 0; }
  AllEqual with_key(Bits) const { return {}; }
};

template <class Comparison>
struct ChildOrder {
  static constexpr bool kByQuarters = Comparison::kIsBranchFree;
  template <class Child>
  int operator()(const Child &child) const {
    return compare(child.key);
  }
  template <class Key>
  ChildOrder with_key(Key key) const {
    return {compare.with_key(key)};
  }
  Comparison compare;
};

// Returns use(comparison) for the comparison of a key type. With an unknown type, all keys are equal.
template <class Numbers, class Use>
auto with_comparison(typename Numbers::Bits key, uint32_t key_type, Use use) {
  using Bits = typename Numbers::Bits;
  constexpr Bits sign_bit = Bits{1} << (8 * sizeof(Bits) - 1);
  switch (key_type) {
    case Numbers::kSigned:
      return use(IntegerComparison<Bits>(key, sign_bit));
    case Numbers::kUnsigned:
      return use(IntegerComparison<Bits>(key, 0));
    case Numbers::kFloat:
      return use(FloatComparison<typename Numbers::Float, Bits>(key));
    default:
      return use(AllEqual<Bits>());
  }
}

template <class Tree, class TreeRecord, class TreeCursor, class Numbers>
struct NumberKeys : KeysInItems<Tree, typename Numbers::Bits> {
  using Node = decltype(Tree::root);
  using Record = TreeRecord;
  using Cursor = TreeCursor;
  using Key = typename Numbers::Bits;

  template <class Use>
  static auto with_order(const Tree &tree, Key key, Use use) {
    return with_comparison<Numbers>(key, tree.key_type, [&](const auto &compare) {
      return use(ChildOrder<std::decay_t<decltype(compare)>>{compare});
    });
  }

  // The keys need no alignment.
  static int compare(const void *a, const void *b, uint32_t key_type) {
    return with_comparison<Numbers>(bytes::load<Key>(b), key_type,
                                    [a](const auto &order) { return order(bytes::load<Key>(a)); });
  }

  template <class Child>
  static bool name_equals_key_of(const Tree &, const Node &node, const Child &child) {
    return name_refers_to_key_of(node, child);
  }
  template <class Child>
  static bool name_refers_to_key_of(const Node &node, const Child &child) {
    return node.key == child.key;
  }
  template <class Child>
  static void copy_key(Node &node, const Child &child) {
    node.key = child.key;
  }

  static void init_keys(Tree &tree) { tree.key_type = Numbers::kSigned; }
};

}  // namespace mub::bplus

#endif
