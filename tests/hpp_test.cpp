// The C++ types: what they own, whom they call, in which order they are walked.
#include "mub.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/random.h"

// Each member compiles for each kind.
template class mub::basic_hash<mub::detail::hash_traits>;
template class mub::basic_hash<mub::detail::hashd_traits>;
template class mub::basic_hash<mub::detail::hashx_traits>;
template class mub::basic_hash<mub::detail::hasht_traits>;
template class mub::basic_btree<mub::detail::btree_traits>;
template class mub::basic_btree<mub::detail::btreed_traits>;
template class mub::basic_btree<mub::detail::btreex_traits>;
template class mub::basic_array<mub::detail::array_traits>;
template class mub::basic_array<mub::detail::arrayd_traits>;
template class mub::basic_array<mub::detail::arrayx_traits>;
template class mub::detail::buffer<mub::string, mub::detail::string_traits>;
template class mub::detail::buffer<mub::wchar, mub::detail::wchar_traits>;
template class mub::detail::buffer<mub::stream, mub::detail::stream_traits>;

namespace mub_test {
namespace {

using Numbers = std::vector<uint64_t>;

Numbers up_to(size_t n) {
  Numbers numbers(n);
  std::iota(numbers.begin(), numbers.end(), 1);
  return numbers;
}

// Different keys; no NUL follows those of bytes, which hold one.
template <class Key>
Key key_at(int n) {
  return static_cast<Key>(n) * 0x10001;
}
template <>
std::string_view key_at(int n) {
  static std::map<int, std::string> keys;
  std::string &key = keys[n];
  key = std::string("k\0", 2) + std::to_string(100 + n) + '!';
  return {key.data(), key.size() - 1};
}
template <>
std::array<uint32_t, 4> key_at(int n) {
  return {1, 2, 3, static_cast<uint32_t>(n)};
}

// Adds `n`; false when it was refused, which arrays do not tell.
template <class Keyed>
auto add(Keyed &keyed, int n) -> decltype(keyed.get({}), true) {
  const int64_t size = keyed.size();
  return keyed.insert(key_at<typename Keyed::key_type>(n), static_cast<uint64_t>(n)) && keyed.size() > size;
}
template <class Array>
auto add(Array &array, int n) -> decltype(array.insert_at(0, uint64_t{}), true) {
  const int64_t size = array.size();
  array.append(static_cast<uint64_t>(n));
  return array.size() > size;
}
template <class List>
auto add(List &list, int n) -> decltype(list.push_back(uint64_t{}), true) {
  return list.push_back(static_cast<uint64_t>(n));
}
template <class Text>
auto add(Text &text, int n) -> decltype(text.view(), true) {
  const auto unit = static_cast<typename Text::view_type::value_type>(n);
  return text.insert(text.size(), {&unit, 1});
}
bool add(mub::list &list, int n) { return list.push_back("key", static_cast<uint64_t>(n)); }
bool add(mub::tree &tree, int n) { return tree.append(tree.root(), static_cast<uint64_t>(n)); }
bool add(mub::bits &bits, int n) {
  bits.set(static_cast<uint32_t>(n));
  return bits.test(static_cast<uint32_t>(n));
}
bool add(mub::pool &pool, int n) {
  if (pool.c()->block_size == 0) pool.c()->block_size = sizeof(uint64_t);
  auto *block = static_cast<uint64_t *>(pool.allocate());
  if (block != nullptr) *block = static_cast<uint64_t>(n);
  return block != nullptr;
}

template <class Unit>
auto number(Unit unit) -> decltype(uint64_t{0} >> unit) {
  return static_cast<uint64_t>(unit);
}
uint64_t number(const void *block) { return *static_cast<const uint64_t *>(block); }
template <class Item>
auto number(const Item &item) -> decltype(item.value) {
  return item.value;
}
// The numbers that a container holds, by its own walk, in ascending order.
template <class Range>
Numbers held(Range &&range) {
  Numbers numbers;
  for (auto &&item : range) numbers.push_back(number(item));
  [[maybe_unused]] auto at = range.end();
  using Walk = typename std::iterator_traits<decltype(at)>::iterator_category;
  if constexpr (std::is_base_of_v<std::bidirectional_iterator_tag, Walk>) {
    for (auto i = numbers.size(); i > 0; --i) EXPECT_EQ(number(*--at), numbers[i - 1]) << "backwards";
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}
Numbers held(mub::pool &pool) { return held(pool.blocks()); }
Numbers held(mub::bits &bits) {
  Numbers numbers;
  for (uint32_t bit = 0; bit < 8 * bits.size_bytes(); ++bit)
    if (bits.test(bit)) numbers.push_back(bit);
  return numbers;
}

template <class Container>
Container filled(int n) {
  Container container;
  for (int i = 1; i <= n; ++i) EXPECT_TRUE(add(container, i));
  return container;
}

template <class Container>
class Owner : public testing::Test {};
using Owners =
    testing::Types<mub::hash, mub::hashd, mub::hashx, mub::hasht, mub::btree, mub::btreed, mub::btreex,
                   mub::array, mub::arrayd, mub::arrayx, mub::arrays, mub::arrayt, mub::list, mub::lists,
                   mub::listx, mub::tree, mub::string, mub::wchar, mub::stream, mub::pool, mub::bits>;
TYPED_TEST_SUITE(Owner, Owners);

TYPED_TEST(Owner, MovesSwapsAndClonesButDoesNotCopy) {
  static_assert(!std::is_copy_constructible_v<TypeParam> && !std::is_copy_assignable_v<TypeParam>);
  static_assert(std::is_nothrow_move_constructible_v<TypeParam> &&
                std::is_nothrow_move_assignable_v<TypeParam>);
  static_assert(std::is_nothrow_swappable_v<TypeParam> && std::is_nothrow_default_constructible_v<TypeParam>);

  auto first = filled<TypeParam>(40);
  TypeParam second = std::move(first);
  EXPECT_EQ(held(second), up_to(40)) << "moved into a new one";
  EXPECT_EQ(held(first), Numbers()) << "moved from";
  const bool is_added = add(first, 3);
  EXPECT_EQ(is_added, !held(first).empty()) << "refused without a pool";
  first.reset();
  EXPECT_TRUE(add(first, 7));
  swap(first, second);
  EXPECT_EQ(held(first), up_to(40)) << "swapped";
  EXPECT_EQ(held(second), Numbers{7}) << "swapped";
  second = std::move(first);
  TypeParam &same = second;
  second = std::move(same);
  EXPECT_TRUE(add(second, 41));
  EXPECT_EQ(held(second), up_to(41)) << "assigned over others and to itself";
  EXPECT_EQ(held(first), Numbers()) << "assigned from";
  first = second.clone();
  EXPECT_TRUE(add(first, 42) && add(second, 50));
  second.reset();
  EXPECT_EQ(held(first), up_to(42)) << "a copy stands alone";
  second = std::move(first);
  first = first.clone();
  EXPECT_EQ(held(first), Numbers()) << "a copy of nothing";
}

// Whatever is not released is the sanitizer's to report.
TYPED_TEST(Owner, TellsOfEveryRefusalAndLosesNothing) {
  for_every_allocation([](auto refused_in) {
    Numbers added;
    TypeParam container, copy;
    const bool met = refused_in([&] {
      container.reset();
      for (int i = 1; i <= 40; ++i)
        if (add(container, i)) added.push_back(static_cast<uint64_t>(i));
      copy = container.clone();
    });
    const Numbers copied = held(copy);  // whole also where what failed was not needed
    EXPECT_TRUE(met || added == up_to(40));
    EXPECT_EQ(held(container), added);
    EXPECT_TRUE(copied == added || (met && copied.empty()));
  });
}

template <class Map>
class Keyed : public testing::Test {};
using KeyedTypes = testing::Types<mub::hash, mub::hashd, mub::hashx, mub::hasht, mub::btree, mub::btreed,
                                  mub::btreex, mub::array, mub::arrayd, mub::arrayx>;
TYPED_TEST_SUITE(Keyed, KeyedTypes);

template <class>
constexpr bool kIsTree = false;
template <class Traits>
constexpr bool kIsTree<mub::basic_btree<Traits>> = true;

TYPED_TEST(Keyed, AgreesWithAModel) {
  using Key = typename TypeParam::key_type;
  std::mt19937_64 engine(run_seed());
  TypeParam map;
  const TypeParam &constant = map;
  std::map<Key, uint64_t> model;
  for (int round = 0; round < 1000; ++round) {
    const Key key = key_at<Key>(static_cast<int>(engine() % 100));
    const uint64_t word = engine();
    const auto [at, is_new] = model.emplace(key, word);
    ASSERT_EQ(map.contains(key), !is_new);
    ASSERT_EQ(map.get(key), is_new ? 0 : at->second);
    ASSERT_EQ(map.insert(key, word), is_new);
    ASSERT_EQ(map.update(key, word), std::exchange(at->second, word));
    ASSERT_EQ(map.find(key)->value++, at->second++);
    ASSERT_EQ(map.size(), static_cast<int64_t>(model.size()));
    if (engine() % 2 == 0) continue;
    ASSERT_EQ(map.remove(key), at->second);
    ASSERT_EQ(constant.find(key), nullptr);
    const auto next = model.erase(at);
    if constexpr (kIsTree<TypeParam>) {
      const auto bound = constant.lower_bound(key);
      ASSERT_TRUE(next == model.end() ? bound == constant.end() : bound->value == next->second);
    }
  }
  for (auto [key, value] : map) model.at(key) = ++value;  // in place
  std::vector<std::pair<Key, uint64_t>> walked;
  for (auto it = constant.begin(); it != constant.end(); it++) walked.emplace_back(it->key, (*it).value);
  if (std::is_same_v<typename TypeParam::iterator::iterator_category, std::forward_iterator_tag>)
    std::sort(walked.begin(), walked.end());
  EXPECT_EQ(walked, decltype(walked)(model.begin(), model.end()));
  map.clear();
  EXPECT_TRUE(map.empty() && constant.begin() == constant.end());
}

TEST(CppBtree, WalksBothWaysFromAnyRecord) {
  auto tree = filled<mub::btreed>(50);
  EXPECT_EQ(tree.rbegin()->value, 50u);
  EXPECT_EQ((--tree.iterator_to(tree.find(key_at<uint32_t>(7))))->value, 6u);
  EXPECT_EQ(tree.nearest(key_at<uint32_t>(99))->value, 50u);
}

TEST(CppContainers, TakeSettingsAlong) {
  const auto check = [](auto container, auto setting) {
    container.c()->*setting = 2;
    auto moved = std::move(container);
    auto copy = moved.clone();
    swap(container, moved);
    EXPECT_TRUE(container.c()->*setting == 2 && copy.c()->*setting == 2 && moved.c()->*setting != 2);
  };
  check(mub::hash(), &mub_hash::nocase);
  check(mub::btree(), &mub_btree::nocase);
  check(mub::btreed(), &mub_btreed::key_type);
  check(mub::btreex(), &mub_btreex::key_type);
  check(mub::array(), &mub_array::descending);
  check(mub::arrays(), &mub_arrays::descending);
  check(mub::arrayt(), &mub_arrayt::descending);
}

void set_to_nine(uint64_t value) { *mub::to_pointer<uint64_t>(value) = 9; }
int64_t released;
void count(uint64_t) { ++released; }
void add_hundred(const mub_pool_chunk *, uint64_t, mub_pool *, uint64_t copy, mub_pool *) {
  *mub::to_pointer<uint64_t>(copy) += 100;
}

TEST(CppContainers, MoveAndCopyTheBlocksOfTheirValues) {
  const auto check = [](auto container, auto add_nine) {
    const uint64_t value = add_nine(container);
    auto moved = std::move(container);
    for_every_allocation([&](auto refused_in) {
      decltype(moved) copy;
      const bool met = refused_in([&] { copy = moved.clone(add_hundred); });
      EXPECT_TRUE(met || !copy.empty());
      EXPECT_TRUE(copy.empty() || *mub::to_pointer<uint64_t>(number(*copy.begin())) == 109);
    });
    EXPECT_EQ(*mub::to_pointer<uint64_t>(value), 9u);
    released = 0;
    moved.free_all(count);
    EXPECT_TRUE(moved.empty() && released == 1);
  };
  const auto set = [](auto &map) {
    EXPECT_TRUE(map.emplace("key").inserted && !map.emplace("key").inserted && map.remove("key") == 0);
    EXPECT_TRUE(map.set("key", set_to_nine).inserted);
    return map.set("key", set_to_nine).value;
  };
  check(mub::hash(mub::value_blocks{8}), set);
  check(mub::btree(mub::value_blocks{8}), set);
  check(mub::array(mub::value_blocks{8}), [](auto &array) { return array.append_new("key", set_to_nine); });
  check(mub::arrays(mub::value_blocks{8}), [](auto &array) { return array.append_new(set_to_nine); });
}

TEST(CppContainers, GiveTheCallersPoolsTheirEntriesBack) {
  mub::pool hashed(sizeof(mub_hash_entry)), listed(sizeof(mub_list_entry)), linked(sizeof(mub_tree_entry));
  mub::pool entries(sizeof(mub_btree_entry)), nodes(sizeof(mub_btree_node));
  {
    mub::hash a(hashed.c()), b(hashed.c());
    mub::btree tree(entries.c(), nodes.c());
    mub::list list(listed.c());
    mub::tree outline(linked.c());
    for (int i = 1; i <= 50; ++i)
      ASSERT_TRUE(add(a, i) && add(b, i) && add(tree, i) && add(list, i) && add(outline, i));
    const auto moved = std::move(a);
    EXPECT_TRUE(hashed.size() == 100 && nodes.size() == 50);
  }
  EXPECT_TRUE(hashed.empty() && listed.empty() && linked.empty() && entries.empty() && nodes.empty());
}

TEST(CppArrays, AreWalkedAtRandom) {
  mub::arrayt words;
  for (const uint64_t word : {5u, 1u, 4u, 2u, 3u, 6u}) words.append(word);
  std::sort(words.begin(), words.end());  // across the words in the record and those after them
  EXPECT_TRUE(std::is_sorted(words.begin(), words.end()) && words[5] == 6);
  auto numbers = filled<mub::arrayd>(6);
  EXPECT_TRUE(numbers.end()[-1].value == 6 && numbers[2].key == key_at<uint32_t>(3));
}

TEST(CppTrees, MoveWithTheirRoots) {
  mub::tree tree;
  auto *first = tree.append(tree.root(), 1);
  ASSERT_TRUE(tree.append(first, 2) && tree.append(tree.root(), 3));
  mub::bitree pair;
  pair.add(pair.root(), 1, pair.make());
  const mub::tree moved = std::move(tree);
  const mub::bitree moved_pair = std::move(pair), copy = moved_pair.clone();
  EXPECT_EQ(held(mub::children(moved.root())), (Numbers{1, 3}));
  Numbers document;
  for (const auto &entry : moved) document.push_back(entry.value);
  EXPECT_EQ(document, (Numbers{1, 2, 3}));
  EXPECT_TRUE(first->parent == moved.root() && moved_pair.root()->right->parent == moved_pair.root());
  EXPECT_TRUE(copy.root()->right != nullptr);
}

TEST(CppContainers, PassPositionsOn) {
  mub::list list;
  auto *b = list.push_back("b", 2);
  ASSERT_TRUE(list.push_front("a", 1) && list.push_back("e", 5));
  ASSERT_TRUE(list.insert_after(b, "d", 4) && list.insert_before(b, "c", 3));
  std::string keys;
  for (const auto &item : list) keys += item.key;
  EXPECT_EQ(keys, "acbde");
  mub::arrayd array;
  for (const uint32_t key : {3u, 1u, 2u}) array.append(key, key);
  array.sort(false);
  EXPECT_EQ(array.remove_at(0), 3u);
  EXPECT_EQ(array[0].key, 2u);

  mub::string text("b");
  ASSERT_TRUE(text.insert(1, std::string_view("\0x", 2)) && text.update(0, 1, "AAA"));
  text.erase(0, 2);
  text.append_integer(-5);
  EXPECT_EQ(text.view(), std::string("A\0x-5", 5));
  EXPECT_EQ(text.find("-5"), 3);
  EXPECT_STREQ(mub::string().c_str(), "");
  mub::stream stream;
  ASSERT_TRUE(stream.resize(7));
  int64_t position = 0;
  stream.set_dword(position, 0x01020304);
  stream.set_tword(position, 0x050607);
  EXPECT_EQ(stream.view(), "\x04\x03\x02\x01\x07\x06\x05");
  EXPECT_EQ(stream.get_word(position = 1), 0x0203);
  mub::stringx field(std::string_view("  12 rest", 5));
  EXPECT_TRUE(field.trim() && field.is_integer() && field.get_integer() == 12);
}

}  // namespace
}  // namespace mub_test
