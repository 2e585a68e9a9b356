// The C++ types: what they own, whom they call, in which order they are walked.
#include "mub.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"

namespace mub_test {
namespace {

constexpr int kKeys = 100;

// Different keys. Those of bytes hold NULs, differ in their last byte, and end at an unreadable page instead of a NUL.
template <class Key>
Key key_at(int n) {
  return static_cast<Key>(n) * 0x10001;
}
template <>
std::string_view key_at(int n) {
  static std::array<std::unique_ptr<Guarded>, kKeys> keys;
  auto &key = keys.at(static_cast<size_t>(n));
  if (!key) key = std::make_unique<Guarded>(std::string("k\0", 2) + std::to_string(1000 + n));
  return {key->data(), static_cast<size_t>(key->size())};
}
template <>
std::array<uint32_t, 4> key_at(int n) {
  return {1, 2, 3, static_cast<uint32_t>(n)};
}

// Adds `n`; false when it was refused, as far as the type tells.
template <class Keyed>
auto add(Keyed &keyed, int n) -> decltype(keyed.emplace(keyed.end()->key), true) {
  return keyed.insert(key_at<typename Keyed::key_type>(n), static_cast<uint64_t>(n));
}
bool add(mub::list &list, int n) {
  return list.push_back(key_at<std::string_view>(n), static_cast<uint64_t>(n)) != nullptr;
}
bool add(mub::lists &list, int n) { return list.push_back(static_cast<uint64_t>(n)) != nullptr; }
bool add(mub::listx &list, int n) { return list.push_back(static_cast<uint64_t>(n)); }
bool add(mub::tree &tree, int n) { return tree.append(tree.root(), static_cast<uint64_t>(n)) != nullptr; }
bool add(mub::bitree &tree, int n) {
  mub_bitree_entry *last = tree.root(), *added = tree.make();
  if (added == nullptr) return false;
  while (last->right != nullptr) last = last->right;
  added->value = static_cast<uint64_t>(n);
  tree.add(last, 1, added);
  return true;
}
template <class Array>
auto add(Array &array, int n) -> decltype(array.append(uint64_t{}), array[0] = 1, true) {
  array.append(static_cast<uint64_t>(n));
  return true;
}
bool add(mub::string &text, int n) { return text.insert(text.size(), std::string(1, static_cast<char>(n))); }
bool add(mub::stream &text, int n) { return text.insert(text.size(), std::string(1, static_cast<char>(n))); }
bool add(mub::wchar &text, int n) {
  return text.insert(text.size(), std::u16string(1, static_cast<char16_t>(n)));
}
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

// The numbers that a container holds, by its own walk, in ascending order.
template <class Item>
uint64_t number(const Item &item) {
  if constexpr (std::is_integral_v<Item>)
    return static_cast<uint64_t>(item);
  else if constexpr (std::is_pointer_v<Item>)
    return *static_cast<const uint64_t *>(item);
  else
    return item.value;
}
template <class Range>
std::vector<uint64_t> numbers_in(Range &&range) {
  std::vector<uint64_t> numbers;
  for (auto &&item : range) numbers.push_back(number(item));
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}
template <class Container>
std::vector<uint64_t> held(const Container &container) {
  return numbers_in(container);
}
std::vector<uint64_t> held(mub::pool &pool) { return numbers_in(pool.blocks()); }
std::vector<uint64_t> held(const mub::bits &bits) {
  std::vector<uint64_t> numbers;
  for (uint32_t bit = 0; bit < 8 * bits.size_bytes(); ++bit)
    if (bits.test(bit)) numbers.push_back(bit);
  return numbers;
}
std::vector<uint64_t> held(const mub::bitree &tree) {
  std::vector<uint64_t> numbers;
  for (const auto *entry = tree.root()->right; entry != nullptr; entry = entry->right)
    numbers.push_back(entry->value);
  return numbers;
}

using Numbers = std::vector<uint64_t>;
Numbers up_to(int n) {
  Numbers numbers;
  for (int i = 1; i <= n; ++i) numbers.push_back(static_cast<uint64_t>(i));
  return numbers;
}

// These are no templates, which keeps the instances of the suite small.
void expect_same(const Numbers &found, const Numbers &expected, const char *what) {
  EXPECT_EQ(found, expected) << what;
}
void expect_told(const Numbers &found, const Numbers &told, bool tells_refusals) {
  if (tells_refusals) {
    EXPECT_EQ(found, told);
  } else {
    EXPECT_TRUE(std::includes(told.begin(), told.end(), found.begin(), found.end()));
  }
}

// Arrays call an addition that found no memory a success.
template <class Record>
auto tells_refusals(const Record *record) -> decltype(record->descending, true) {
  return false;
}
bool tells_refusals(...) { return true; }

template <class Container>
Container filled(int n) {
  Container container;
  for (int i = 1; i <= n; ++i) EXPECT_TRUE(add(container, i));
  return container;
}

// Whether it has entries in a pool, without which nothing can be added.
template <class Record>
auto needs_a_pool(const Record *record) -> decltype(record->entry_pool, true) {
  return true;
}
bool needs_a_pool(...) { return false; }

template <class Container>
class Owner : public testing::Test {};
using Owners = testing::Types<mub::hash, mub::hashd, mub::hashx, mub::hasht, mub::btree, mub::btreed,
                              mub::btreex, mub::array, mub::arrayd, mub::arrayx, mub::arrays, mub::arrayt,
                              mub::list, mub::lists, mub::listx, mub::tree, mub::bitree, mub::string,
                              mub::wchar, mub::stream, mub::pool, mub::bits>;
TYPED_TEST_SUITE(Owner, Owners);

TYPED_TEST(Owner, MovesAndSwapsWhatItHoldsAndDoesNotCopy) {
  static_assert(!std::is_copy_constructible_v<TypeParam> && !std::is_copy_assignable_v<TypeParam>);
  static_assert(std::is_nothrow_move_constructible_v<TypeParam> &&
                std::is_nothrow_move_assignable_v<TypeParam>);
  static_assert(std::is_nothrow_swappable_v<TypeParam> && std::is_nothrow_default_constructible_v<TypeParam>);

  auto first = filled<TypeParam>(40);
  TypeParam second = std::move(first);
  expect_same(held(second), up_to(40), "moved into a new one");
  expect_same(held(first), {}, "moved from");
  const bool added = add(first, 3);
  EXPECT_NE(added, needs_a_pool(first.c()));
  first.reset();
  EXPECT_TRUE(add(first, 7));

  swap(first, second);
  expect_same(held(first), up_to(40), "swapped");
  expect_same(held(second), {7}, "swapped");
  second = std::move(first);
  expect_same(held(second), up_to(40), "assigned over others");
  expect_same(held(first), {}, "assigned from");
  TypeParam &same = second;
  second = std::move(same);
  EXPECT_TRUE(add(second, 41));
  expect_same(held(second), up_to(41), "assigned to itself, and added to");
  first = filled<TypeParam>(2);
  expect_same(held(first), up_to(2), "assigned after it was moved from");
}

TYPED_TEST(Owner, ClonesStandAlone) {
  auto source = filled<TypeParam>(40);
  auto copy = source.clone();
  EXPECT_TRUE(add(copy, 41));
  expect_same(held(source), up_to(40), "source");
  EXPECT_TRUE(add(source, 42));
  source.reset();
  expect_same(held(copy), up_to(41), "copy");
  const TypeParam moved = std::move(copy);
  source = copy.clone();
  expect_same(held(source), {}, "clone of nothing");
}

// Whatever is not released is the sanitizer's to report.
TYPED_TEST(Owner, TellsOfEveryRefusalAndLosesNothing) {
  for_every_allocation([](const Fuse &fuse) {
    Numbers told;
    TypeParam moved;
    fuse.blows_in([&] {
      TypeParam container;
      for (int i = 1; i <= 40; ++i)
        if (add(container, i)) told.push_back(static_cast<uint64_t>(i));
      moved = std::move(container);
    });
    expect_told(held(moved), told, tells_refusals(moved.c()));
  });
  auto source = filled<TypeParam>(40);
  for_every_allocation([&](const Fuse &fuse) {
    TypeParam copy;
    const bool met = fuse.blows_in([&] { copy = source.clone(); });
    const Numbers found = held(copy);  // whole also where what failed was not needed
    if (!met || !found.empty()) expect_same(found, up_to(40), "copy");
    expect_same(held(source), up_to(40), "source");
    if (found.empty() && add(copy, 7)) expect_same(held(copy), {7}, "empty copy, added to");
  });
}

template <class Map>
class Keyed : public testing::Test {};
using KeyedTypes = testing::Types<mub::hash, mub::hashd, mub::hashx, mub::hasht, mub::btree, mub::btreed,
                                  mub::btreex, mub::array, mub::arrayd, mub::arrayx>;
TYPED_TEST_SUITE(Keyed, KeyedTypes);

TYPED_TEST(Keyed, AgreesWithAModel) {
  using Key = typename TypeParam::key_type;
  constexpr bool kIsOrdered =
      !std::is_same_v<Key, std::array<uint32_t, 4>> &&
      std::is_base_of_v<std::bidirectional_iterator_tag, typename TypeParam::iterator::iterator_category>;
  Random random(7001);
  TypeParam map;
  std::map<Key, uint64_t> model;
  for (int round = 0; round < 3000; ++round) {
    const Key key = key_at<Key>(static_cast<int>(random.below(kKeys)));
    const auto at = model.find(key);
    const uint64_t word = random.word(), value = at == model.end() ? 0 : at->second;
    ASSERT_EQ(map.contains(key), at != model.end());
    ASSERT_EQ(map.get(key), value);
    switch (random.below(4)) {
      case 0:
        ASSERT_EQ(map.insert(key, word), model.emplace(key, word).second);
        break;
      case 1:
        ASSERT_EQ(map.update(key, word), value);
        if (at != model.end()) at->second = word;
        break;
      case 2:
        ASSERT_EQ(map.remove(key), value);
        model.erase(key);
        break;
      default:
        auto *entry = map.find(key);
        ASSERT_EQ(entry != nullptr, at != model.end());
        if (entry != nullptr) at->second = ++entry->value;
    }
    ASSERT_EQ(map.size(), static_cast<int64_t>(model.size()));
  }
  for (auto [key, value] : map) model.at(key) = ++value;  // in place
  const TypeParam &constant = map;
  std::vector<std::pair<Key, uint64_t>> walked;
  for (auto it = constant.begin(); it != constant.end(); it++) walked.emplace_back(it->key, (*it).value);
  if (!kIsOrdered) std::sort(walked.begin(), walked.end());
  EXPECT_EQ(walked, (std::vector<std::pair<Key, uint64_t>>(model.begin(), model.end())));
  map.clear();
  EXPECT_TRUE(map.empty() && constant.begin() == constant.end());
}

template <class Tree>
void expect_bounds_of(Tree tree) {
  using Key = typename Tree::key_type;
  std::map<Key, uint64_t> model;
  for (int n = 0; n < kKeys; n += 2) {
    model.emplace(key_at<Key>(n), static_cast<uint64_t>(n));
    ASSERT_TRUE(tree.insert(key_at<Key>(n), static_cast<uint64_t>(n)));
  }
  for (int n = 10; n < 60; n += 2)
    ASSERT_EQ(tree.remove(key_at<Key>(n)), model.extract(key_at<Key>(n)).mapped());
  for (int n = 0; n < kKeys; ++n) {
    const auto expected = model.lower_bound(key_at<Key>(n));
    const auto found = tree.lower_bound(key_at<Key>(n));
    ASSERT_EQ(found == tree.end(), expected == model.end()) << n;
    if (expected != model.end()) {
      ASSERT_EQ(found->value, expected->second) << n;
    }
  }
  EXPECT_TRUE(std::equal(tree.rbegin(), tree.rend(), model.rbegin(), model.rend(), [](auto item, auto &pair) {
    return item.key == pair.first && item.value == pair.second;
  }));
  auto *node = tree.find(key_at<Key>(70));
  EXPECT_EQ((--tree.iterator_to(node))->value, 68u);
  EXPECT_EQ(tree.nearest(key_at<Key>(99))->value, 98u);
}

TEST(CppBtree, FindsBoundsAndWalksBothWays) {
  expect_bounds_of(mub::btree());
  expect_bounds_of(mub::btreed());
  expect_bounds_of(mub::btreex());
}

TEST(CppMaps, SettingsTravelWithTheContent) {
  const auto check = [](auto map) {
    map.c()->nocase = 1;
    ASSERT_TRUE(map.insert("Key", 1));
    auto moved = std::move(map);
    const auto copy = moved.clone();
    EXPECT_TRUE(moved.contains("kEY") && copy.contains("kEY"));
    map.reset();
    EXPECT_TRUE(map.insert("Key", 1));
    EXPECT_FALSE(map.contains("kEY"));
  };
  check(mub::hash());
  check(mub::btree());

  mub::btreed numbers;
  numbers.c()->key_type = 2;
  mub::arrayx falling;
  falling.c()->descending = 1;
  auto moved = std::move(numbers);
  const auto fallen = std::move(falling);
  auto copy = fallen.clone();
  for (const uint32_t key : {1u, 0xFFFFFFFFu}) ASSERT_TRUE(moved.insert(key, key) && copy.insert(key, key));
  EXPECT_EQ(moved.begin()->key, 1u);
  EXPECT_EQ(copy[0].key, 0xFFFFFFFFu);
}

void set_to_nine(uint64_t value) { *mub::to_pointer<uint64_t>(value) = 9; }
int64_t released;
void count(uint64_t) { ++released; }
void add_hundred(const mub_pool_chunk *, uint64_t, mub_pool *, uint64_t copy, mub_pool *) {
  if (copy != 0) *mub::to_pointer<uint64_t>(copy) += 100;
}

template <class Map>
void expect_value_blocks_in(Map map) {
  auto [first, inserted] = map.set("a", set_to_nine);
  ASSERT_TRUE(inserted);
  auto [again, twice] = map.set("a", set_to_nine);
  EXPECT_TRUE(!twice && again == first && *mub::to_pointer<uint64_t>(first) == 9);
  auto [entry, is_new] = map.emplace("b");
  ASSERT_TRUE(entry != nullptr && is_new && !map.emplace("b").inserted);
  for_every_allocation([&](const Fuse &fuse) {
    Map copy;
    const bool met = fuse.blows_in([&] { copy = map.clone(add_hundred); });
    EXPECT_TRUE(met || !copy.empty());
    const uint64_t copied = copy.get("a");
    EXPECT_TRUE(copy.empty() || (copied != 0 && *mub::to_pointer<uint64_t>(copied) == 109));
  });
  EXPECT_EQ(*mub::to_pointer<uint64_t>(first), 9u);
  released = 0;
  map.free_all(count);
  EXPECT_TRUE(map.empty() && released == 1);
}

template <class Container, class... Key>
void expect_values_to_move(Container container, Key... key) {
  const uint64_t value = container.append_new(key..., set_to_nine);
  Container moved(std::move(container));
  const Container copy = moved.clone(add_hundred);
  EXPECT_EQ(*mub::to_pointer<uint64_t>(value), 9u);
  moved.reset();
  EXPECT_EQ(*mub::to_pointer<uint64_t>(number(*copy.begin())), 109u);
}

TEST(CppArrays, TakeTheBlocksOfValuesAlong) {
  expect_values_to_move(mub::array(mub::value_blocks{8}), "key");
  expect_values_to_move(mub::arrayd(mub::value_blocks{8}), 1u);
  expect_values_to_move(mub::arrays(mub::value_blocks{8}));
}

TEST(CppMaps, KeepValuesInBlocksOfTheirOwn) {
  expect_value_blocks_in(mub::hash(mub::value_blocks{8}));
  expect_value_blocks_in(mub::btree(mub::value_blocks{8}));
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
    EXPECT_EQ(hashed.size(), 100);
    EXPECT_EQ(nodes.size(), 50);
  }
  EXPECT_TRUE(hashed.empty() && listed.empty() && linked.empty() && entries.empty() && nodes.empty());
}

TEST(CppArrays, IndexSortAndWalkAtRandom) {
  mub::arrayd numbers;
  mub::arrayt words;
  mub::arrays items;
  for (const uint32_t n : {5u, 1u, 4u, 2u, 3u, 6u}) {
    numbers.append(n, n * 10);
    words.append(n);
    items.append(n);
  }
  numbers.insert_at(0, 9, 90);
  EXPECT_EQ(numbers.remove_at(1), 50u);
  numbers.sort(false);
  EXPECT_EQ(numbers.scan_index(9), 0);
  EXPECT_EQ(numbers.end()[-1].key, 1u);
  numbers.sort();
  EXPECT_EQ(std::lower_bound(numbers.begin(), numbers.end(), 7u,
                             [](auto item, auto key) { return item.key < key; }) -
                numbers.begin(),
            5);
  EXPECT_EQ(numbers.nearest_index(5), 4);

  std::sort(words.begin(), words.end());  // across the words in the record and those behind
  EXPECT_EQ(held(words), up_to(6));
  EXPECT_TRUE(std::is_sorted(words.begin(), words.end()) && words[5] == 6 && words.contains(5));
  words.append(words);
  EXPECT_EQ(words.size(), 12);

  const auto by_number = [](uint64_t a, uint64_t b, uint64_t) { return a < b ? -1 : a > b; };
  items.sort(by_number);
  EXPECT_TRUE(std::is_sorted(items.begin(), items.end()) && items.find_index(4, by_number) == 3);
  EXPECT_FALSE(items.insert(4, by_number));
  EXPECT_EQ(items.remove(4, by_number), 4u);
}

TEST(CppLists, TakePositionsAndWalkBothWays) {
  mub::list list;
  auto *b = list.push_back("b", 2);
  ASSERT_TRUE(list.push_front(std::string_view("a\0!", 2), 1) && list.insert_after(b, "d", 4));
  ASSERT_TRUE(list.insert_before(list.find("d"), "c", 3));
  std::string keys;
  for (auto [key, value] : list) keys += key, value *= 2;
  EXPECT_EQ(keys, std::string("a\0bcd", 5));
  EXPECT_EQ(list.remove_at(b), 4u);
  list.append(list);
  EXPECT_EQ(held(list), (Numbers{2, 2, 6, 6, 8, 8}));
  EXPECT_EQ(list.pop_back(), 8u);

  mub::listx blocks = filled<mub::listx>(100);
  for (int n = 0; n >= -40; --n) ASSERT_TRUE(blocks.push_front(static_cast<uint64_t>(n + 1000)));
  const Numbers forward(blocks.begin(), blocks.end());
  EXPECT_TRUE(std::equal(blocks.rbegin(), blocks.rend(), forward.rbegin(), forward.rend()));
  EXPECT_TRUE(forward.size() == 141 && forward[40] == 1000 && forward[41] == 1 && forward[140] == 100);
}

TEST(CppTree, WalksParentsBeforeChildrenAlsoAfterMoving) {
  mub::tree built;
  auto *a = built.append(built.root(), 1);
  auto *b = built.append(a, 2), *d = built.append(built.root(), 4), *c = built.append(a, 3);
  ASSERT_TRUE(b != nullptr && c != nullptr && d != nullptr);
  const mub::tree tree = std::move(built);
  Numbers order;
  for (const mub_tree_entry &entry : tree) order.push_back(entry.value);
  EXPECT_EQ(order, up_to(4));
  EXPECT_EQ(a->parent, tree.root());
  EXPECT_EQ(tree.links(), 4);
  EXPECT_EQ(numbers_in(mub::children(tree.root())), (Numbers{1, 4}));
  const auto siblings = mub::children(tree.root());
  EXPECT_EQ((--siblings.end())->value, 4u);

  mub::array path;
  path.append("x", 0);
  const auto never = [](const mub_tree_entry *, const void *, int64_t) { return 1; };
  mub::tree other;
  EXPECT_TRUE(tree.find(path, never) == nullptr && other.insert(path, never) != nullptr &&
              other.links() == 1);
}

TEST(CppText, PassesLengthsAndPositionsOn) {
  const Guarded guarded(std::string_view("b\0", 2));
  const std::string_view text(guarded.data(), 2);
  mub::string s(text);
  s.append("xyz");
  ASSERT_TRUE(s.insert(1, text) && s.update(0, 1, "AAA"));
  EXPECT_EQ(s.view(), std::string("AAAb\0\0xyz", 9));
  s.erase(0, 3);
  EXPECT_EQ(s.find("yz"), 4);
  EXPECT_EQ(s.find('b', 1), -1);
  EXPECT_STREQ(mub::string().c_str(), "");
  s.append_integer(-5);
  EXPECT_EQ(std::string_view(s), std::string("b\0\0xyz-5", 8));

  mub::wchar wide(u"héx");
  wide.append(u"\u20AC");
  wide.append("!");
  EXPECT_EQ(wide.view(), u"héx\u20AC!");
  EXPECT_EQ(wide.find(0x20AC), 3);

  mub::stream stream;
  ASSERT_TRUE(stream.resize(7));
  int64_t position = 0;
  stream.set_dword(position, 0x01020304);
  stream.set_tword(position, 0x050607);
  EXPECT_EQ(stream.view(), "\x04\x03\x02\x01\x07\x06\x05");
  position = 1;
  EXPECT_EQ(stream.get_word(position), 0x0203);
  EXPECT_EQ(position, 3);

  mub::stringx field(std::string_view("  12 rest", 5));
  EXPECT_TRUE(field.trim() && field.is_integer());
  EXPECT_EQ(field.get_integer(), 12);
  EXPECT_EQ(field.view(), "12");
}

}  // namespace
}  // namespace mub_test
