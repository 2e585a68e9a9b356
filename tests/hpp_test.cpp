// The C++ types: ownership, forwarding to the C functions, order of iteration, objects as values.
#include "mub.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/random.h"

// Every member function compiles for every kind.
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

// Distinct keys; byte strings begin with a NUL.
template <class Key>
Key key_at(int n) {
  return static_cast<Key>(n) * 0x10001;
}
template <>
std::string_view key_at(int n) {
  static char keys[100][2];
  keys[n][1] = static_cast<char>(n);
  return {keys[n], 2};
}
template <>
std::array<uint32_t, 4> key_at(int n) {
  return {1, 2, 3, static_cast<uint32_t>(n)};
}

// Adds `n`; false if that fails.
template <class Keyed>
auto add(Keyed &keyed, int n) -> decltype(keyed.get({}), true) {
  return keyed.insert(key_at<typename Keyed::key_type>(n), static_cast<uint64_t>(n));
}
template <class Sequence>
auto add(Sequence &sequence, int n) -> decltype(static_cast<bool>(sequence.push_back(uint64_t{}))) {
  return sequence.push_back(static_cast<uint64_t>(n));
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

// The number of an item, of the address of a block, or of anything else that an iterator yields.
template <class Item>
uint64_t number(const Item &item) {
  if constexpr (std::is_integral_v<Item>) {
    return static_cast<uint64_t>(item);
  } else if constexpr (std::is_pointer_v<Item>) {
    return *static_cast<const uint64_t *>(item);
  } else {
    return item.value;
  }
}
// The size of a container, which must have the numbers from 1 on in the order of iteration. The items of
// containers with forward iterators only, such as hash tables, are sorted first.
template <class Range>
int held(Range &&range) {
  std::vector<uint64_t> numbers;
  for (auto &&item : range) numbers.push_back(number(item));
  [[maybe_unused]] auto at = range.end();
  using Walk = typename std::iterator_traits<decltype(at)>::iterator_category;
  if constexpr (std::is_same_v<Walk, std::forward_iterator_tag>) std::sort(numbers.begin(), numbers.end());
  for (size_t i = 0; i < numbers.size(); ++i) EXPECT_EQ(numbers[i], i + 1);
  if constexpr (std::is_base_of_v<std::bidirectional_iterator_tag, Walk>) {
    for (auto i = numbers.size(); i > 0; --i) EXPECT_EQ(number(*--at), i) << "backwards";
  }
  return static_cast<int>(numbers.size());
}
int held(mub::pool &pool) { return held(pool.blocks()); }

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

  const int64_t before = heap_bytes();
  auto first = filled<TypeParam>(40);
  EXPECT_EQ(first.memory_bytes(), heap_bytes() - before);
  TypeParam second = std::move(first);
  EXPECT_EQ(held(first), 0) << "moved from";
  constexpr bool needs_no_pool =
      std::is_same_v<TypeParam, mub::bits> || std::is_same_v<TypeParam, mub::wchar> ||
      std::is_same_v<TypeParam, mub::string> || std::is_same_v<TypeParam, mub::stream>;
  if constexpr (needs_no_pool) {
    EXPECT_TRUE(add(first, 1));
  } else {
    EXPECT_DEBUG_DEATH(add(first, 1), "moved from");
  }
  first.reset();
  EXPECT_TRUE(add(first, 1));
  swap(first, second);
  EXPECT_EQ(held(second), 1);
  second = std::move(first);
  TypeParam &same = second;
  second = std::move(same);
  first = first.clone();
  EXPECT_EQ(held(first), 0) << "a copy of an empty container";
  first = second.clone();
  EXPECT_TRUE(add(first, 41) && add(second, 41));
  const char *what = "not set";
  EXPECT_TRUE(first.verify(&what) && what == nullptr && second.verify()) << what;
  second.reset();
  EXPECT_EQ(held(first), 41) << "the copy is independent";
}

// A pool that cannot be allocated is missing. The sanitizer reports leaks.
TYPED_TEST(Owner, IsConstructedAndClonedWhenMemoryRunsOut) {
  const auto container = filled<TypeParam>(40);
  for_every_allocation([&](auto refused_in) {
    TypeParam fresh, copy;
    bool is_added = false;
    const bool met = refused_in([&] {
      fresh.reset();
      copy = container.clone();
      is_added = add(fresh, 1);
    });
    const int copied = held(copy);
    EXPECT_TRUE(copied == 40 || (met && copied == 0)) << "complete if the failed allocation was not needed";
    EXPECT_TRUE(is_added || met);
    EXPECT_EQ(held(fresh), is_added ? 1 : 0);
  });
}

template <class Map>
class Keyed : public testing::Test {};
using KeyedTypes = testing::Types<mub::hash, mub::hashd, mub::hashx, mub::hasht, mub::btree, mub::btreed,
                                  mub::btreex, mub::array, mub::arrayd, mub::arrayx>;
TYPED_TEST_SUITE(Keyed, KeyedTypes);

TYPED_TEST(Keyed, PassesKeysAndValues) {
  using Key = typename TypeParam::key_type;
  auto map = filled<TypeParam>(40);
  const TypeParam &constant = map;
  const Key present = key_at<Key>(7);
  EXPECT_TRUE(!map.insert(present, 9) && map.update(present, 8) == 7);
  EXPECT_TRUE(constant.contains(present) && constant.get(present) == 8 && constant.find(present)->value == 8);
  EXPECT_TRUE(map.insert_or_assign(present, 10).entry->value == 10 && constant.get_or(present, 1) == 10);
  EXPECT_TRUE(map.remove(present) == 10 && map.erase(present) == 0 && constant.get_or(present, 1) == 1);
  EXPECT_FALSE(constant.contains(present) || constant.get(present) != 0 || constant.find(present) != nullptr);
  for (auto [key, value] : map) value += 100;  // in place
  for (auto it = constant.begin(); it != constant.end(); it++)
    EXPECT_EQ(it->key, key_at<Key>(static_cast<int>((*it).value) - 100));
  EXPECT_EQ(map.size(), 39);
  for (auto it = map.begin(); it != map.cend();) it = it->value % 2 == 0 ? map.erase(it) : std::next(it);
  EXPECT_EQ(map.size(), 19);
  static_assert(std::is_same_v<decltype((*map.cbegin()).value), const uint64_t &>);
  static_assert(!std::is_convertible_v<decltype(constant.begin()), typename TypeParam::iterator>);
  static_assert(std::is_const_v<std::remove_pointer_t<decltype(constant.find(present))>>);
  map.clear();
  EXPECT_TRUE(map.empty() && constant.begin() == constant.end());
}

TEST(CppMaps, GiveTheValuesOfManyKeys) {
  const auto check = [](const auto &map) {
    std::vector<typename std::decay_t<decltype(map)>::key_type> keys;
    for (int n = 90; n > 0; --n) keys.push_back(key_at<typename decltype(keys)::value_type>(n));
    std::vector<uint64_t> values(keys.size());
    EXPECT_EQ(map.get_many(keys.data(), 90, values.data()), 70);
    for (size_t i = 0; i < 90; ++i) EXPECT_EQ(values[i], i < 20 ? 0 : 90 - i);
  };
  check(filled<mub::hash>(70));
  check(filled<mub::btreex>(70));
  check(filled<mub::hasht>(70));
}

TEST(CppBtree, IteratesFromAnyRecord) {
  const auto check = [](auto tree) {
    using Key = typename decltype(tree)::key_type;
    const Key between = key_at<Key>(8), above_all = key_at<Key>(60);
    EXPECT_EQ((--tree.iterator_to(tree.find(between)))->value, 7u);
    EXPECT_EQ(tree.remove(between), 8u);
    EXPECT_TRUE(tree.lower_bound(between)->value == 9 && tree.lower_bound(above_all) == tree.end());
    EXPECT_TRUE(tree.upper_bound(key_at<Key>(7))->value == 9 && tree.upper_bound(between)->value == 9);
    const auto range = tree.equal_range(key_at<Key>(9)), none = tree.equal_range(between);
    EXPECT_TRUE(std::next(range.first) == range.second && none.first == none.second);
    EXPECT_TRUE(tree.nearest(above_all)->value == 50 && tree.rbegin()->value == 50);
  };
  check(filled<mub::btree>(50));
  check(filled<mub::btreed>(50));
  check(filled<mub::btreex>(50));
}

TEST(CppContainers, MoveAndCloneTheirSettings) {
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
  check(mub::pool(), &mub_pool::blocks_per_chunk);
}

void set_to_nine(uint64_t value) { *mub::to_pointer<uint64_t>(value) = 9; }
int64_t released;
void count(uint64_t) { ++released; }
void add_hundred(const mub_pool_chunk *, uint64_t, mub_pool *, uint64_t copy, mub_pool *) {
  *mub::to_pointer<uint64_t>(copy) += 100;
}

TEST(CppContainers, MoveAndCloneValueBlocks) {
  const auto check = [](auto container, auto add_nine) {
    const uint64_t value = add_nine(container);
    auto moved = std::move(container);
    for_every_allocation([&](auto refused_in) {
      decltype(moved) copy;
      const bool met = refused_in([&] { copy = moved.clone(add_hundred); });
      EXPECT_TRUE(copy.empty() ? met : *mub::to_pointer<uint64_t>(number(*copy.begin())) == 109);
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

TEST(CppContainers, ReturnEntriesToExternalPools) {
  mub::pool entries(sizeof(mub_btree_entry)), nodes(sizeof(mub_btree_node));
  {
    mub::hash a(entries.c()), b(entries.c());
    mub::btree tree(entries.c(), nodes.c());
    mub::list list(entries.c());
    mub::tree outline(entries.c());
    for (int i = 1; i <= 50; ++i)
      ASSERT_TRUE(add(a, i) && add(b, i) && add(tree, i) && add(list, i) && add(outline, i));
    const auto moved = std::move(a);
    EXPECT_TRUE(entries.size() > 200 && nodes.size() == 50);
  }
  EXPECT_TRUE(entries.empty() && nodes.empty());
}

TEST(CppArrays, HaveRandomAccessIterators) {
  mub::arrayt words;
  for (const uint64_t word : {5u, 1u, 4u, 2u, 3u, 6u}) words.append(word);
  std::sort(words.begin(), words.end());  // across the words in the record itself and in the heap block
  EXPECT_EQ(held(words), 6);
  auto numbers = filled<mub::arrayd>(6);
  EXPECT_TRUE(numbers.end()[-1].value == 6 && numbers.rbegin()->value == 6);
  EXPECT_TRUE(numbers.back().value == 6 && numbers.front().value == 1 && words.pop_back() == 6);
  EXPECT_TRUE(*words.erase(words.begin() + 3) == 5 && words.cend() - words.begin() == 4);
  numbers.sort(false);
  EXPECT_EQ(numbers.front().value, 6u);
}

TEST(CppTrees, MoveWithTheirRoots) {
  mub::tree tree;
  auto *first = tree.append(tree.root(), 1);
  ASSERT_TRUE(tree.append(first, 3) && tree.append(tree.root(), 2));
  mub::bitree pair;
  pair.add(pair.root(), 1, pair.make());
  const mub::tree moved = std::move(tree);
  const mub::bitree moved_pair = std::move(pair), copy = moved_pair.clone();
  EXPECT_EQ(held(mub::children(moved.root())), 2);
  EXPECT_EQ(held(moved), 3);
  EXPECT_EQ((++moved.begin())->value, 3u) << "in depth-first order";
  EXPECT_TRUE(first->parent == moved.root() && moved_pair.root()->right->parent == moved_pair.root());
  EXPECT_TRUE(copy.root()->right != nullptr);
}

TEST(CppContainers, PassPositions) {
  mub::list list;
  auto *third = list.push_back("c", 3);
  ASSERT_TRUE(list.push_front("a", 1) && list.push_back("e", 5));
  ASSERT_TRUE(list.insert_after(third, "d", 4) && list.insert_before(third, "b", 2));
  EXPECT_EQ(held(list), 5);
  EXPECT_TRUE(list.find("d")->value == 4 && list.front().key == "a" && list.back().key == "e");
  EXPECT_TRUE((*list.erase(list.begin())).key == "b" && list.size() == 4);
  mub::string text("b");
  ASSERT_TRUE(text.insert(1, std::string_view("\0x", 2)) && text.update(0, 1, "AAA"));
  text.erase(0, 2);
  EXPECT_EQ(text.view(), std::string("A\0x", 3));
  EXPECT_TRUE(text.find("") == 0 && text.find("", 3) == 3 && text.find("", 4) == -1) << "nothing is read";
  EXPECT_STREQ(mub::string().c_str(), "");
  mub::stream stream;
  ASSERT_TRUE(stream.resize(7));
  int64_t position = 0;
  stream.set_dword(position, 0x01020304);
  stream.set_tword(position, 0x050607);
  EXPECT_EQ(stream.view(), "\x04\x03\x02\x01\x07\x06\x05");
  EXPECT_EQ(stream.get_word(position = 1), 0x0203);
  mub::bits bits;
  ASSERT_TRUE(bits.reserve(9));
  bits.set(8);
  EXPECT_TRUE(bits.size() >= 9 && bits.count() == 1 && bits[8] && *bits.begin() == 8);
  mub::stringx field(std::string_view("  12 rest", 5));
  EXPECT_TRUE(field.trim() && field.is_long() && field.get_long() == 12);
  EXPECT_TRUE(field.find("", 2) == 2 && field.find("", 3) == -1);
}

TEST(CppTexts, CompareHashAndPrintAsViews) {
  const auto agree = [](const auto &a, const auto &b, std::string_view x, std::string_view y) {
    EXPECT_TRUE((a == b) == (x == y) && (a != b) == (x != y) && (a < b) == (x < y));
    EXPECT_TRUE((a > b) == (x > y) && (a <= b) == (x <= y) && (a >= b) == (x >= y));
  };
  constexpr std::string_view texts[] = {"", "a", {"a\0b", 3}, "ab", "\xff"};
  for (const auto x : texts) {
    for (const auto y : texts) {
      const mub::string a(x), b(y);
      agree(a, y, x, y);
      agree(std::string(x), b, x, y);
      agree(mub::stringx(x), b, x, y);
      EXPECT_EQ(a.contains(y), x.find(y) != x.npos);
      EXPECT_EQ(a.starts_with(y), x.substr(0, y.size()) == y);
      EXPECT_EQ(a.ends_with(y), y.size() <= x.size() && x.substr(x.size() - y.size()) == y);
      std::ostringstream out;
      out << a << mub::stringx(y);
      EXPECT_EQ(out.str(), std::string(x).append(y));
      EXPECT_EQ(std::hash<mub::string>()(a) == std::hash<mub::stringx>()(b.view()), x == y);
    }
  }
  mub::wchar wide(u"ab");
  EXPECT_TRUE((wide += u"c") == u"abc" && u"abd" > (wide += u'd') && wide[3] == u'd');
  mub::string text("ab");
  (text += text) += 'c';
  text[0] = 'A';
  EXPECT_TRUE("Ababc" == text && std::string(text.cbegin(), text.cend()) == text);
  std::copy(wide.begin(), wide.end(), std::back_inserter(text = text.view().substr(1, 2)));
  EXPECT_TRUE(text == "baabcd" && text.length() == 6);
  for (text.front() = 'B'; !text.empty(); text.pop_back()) EXPECT_EQ(*text.rbegin(), text.back());
  text.pop_back();
  EXPECT_TRUE(text.empty() && mub::wchar(u"ab").starts_with(u"a"));
}

// Can only be moved. The objects that exist are known, and one that is constructed later can throw.
struct Part {
  static inline std::set<const Part *> existing;
  static inline int until_throw = -1;

  explicit Part(int n) : number(n) {
    if (until_throw-- == 0) throw n;
    EXPECT_TRUE(existing.insert(this).second);
  }
  Part(Part &&other) : Part(other.number) { other.number = 0; }
  Part &operator=(Part &&other) noexcept {
    number = std::exchange(other.number, 0);
    return *this;
  }
  ~Part() { EXPECT_EQ(existing.erase(this), 1u); }

  int number;
};

template <class Map>
class Typed : public testing::Test {};
using TypedMaps = testing::Types<mub::hash_of<Part>, mub::hashd_of<Part>, mub::hasht_of<Part>,
                                 mub::btree_of<Part>, mub::btreex_of<Part>>;
TYPED_TEST_SUITE(Typed, TypedMaps);

TYPED_TEST(Typed, ConstructsAndDestroysEachValueOnce) {
  std::mt19937_64 random(run_seed());
  std::map<int, int> model;
  TypeParam map, other;
  for (int step = 1; step <= 2000; ++step) {
    const int n = static_cast<int>(random() % 40);
    const auto key = key_at<typename TypeParam::key_type>(n);
    switch (random() % 6) {
      case 0:
        EXPECT_EQ(map.insert(key, Part(step)), model.emplace(n, step).second);
        break;
      case 1:
        EXPECT_EQ(map.insert_or_assign(key, Part(step)).inserted, model.insert_or_assign(n, step).second);
        break;
      case 2:
        EXPECT_EQ(map.erase(key), static_cast<int64_t>(model.erase(n)));
        break;
      case 3:
        if (n == 0) map.clear();
        if (n == 1)
          for (auto it = map.cbegin(); it != map.end();) it = map.erase(it);
        if (n < 2) model.clear();
        break;
      default:
        other = std::move(map);
        swap(map, other);
    }
    ASSERT_TRUE(map.size() == static_cast<int64_t>(model.size()) && Part::existing.size() == model.size());
    const Part *found = std::as_const(map).find(key);
    ASSERT_EQ(found != nullptr ? found->number : 0, model.count(n) != 0 ? model[n] : 0);
  }
  map.reset();
  EXPECT_TRUE(Part::existing.empty());
  TypeParam moved = std::move(map);
  EXPECT_DEBUG_DEATH(map.emplace({}, 1), "moved from");
}

TYPED_TEST(Typed, IsUnchangedIfAConstructorThrowsOrMemoryRunsOut) {
  const auto key = key_at<typename TypeParam::key_type>(1);
  for_every_allocation([&](auto refused_in) {
    TypeParam map;
    const Part *added = nullptr;
    const bool met = refused_in([&] { added = (map.reset(), map.emplace(key, 7).value); });
    EXPECT_TRUE(map.find(key) == added && map.empty() == (added == nullptr) && (met || added != nullptr));
    EXPECT_EQ(Part::existing.size(), static_cast<size_t>(map.size()));
  });
  TypeParam map;
  ASSERT_TRUE(map.emplace(key_at<typename TypeParam::key_type>(2), 2).inserted);
  Part::until_throw = 1;  // the copy in the map
  EXPECT_THROW(map.insert(key, Part(8)), int);
  EXPECT_TRUE(map.size() == 1 && !map.contains(key) && map.verify());
  EXPECT_TRUE(Part::existing.size() == 1 && map.c()->value_pool->live_count == 1);
}

TEST(CppTypedMaps, AddTheKeyBeforeTheValueIsMoved) {
  struct Named {
    std::string name;
    int number;
    void operator&() const = delete;
  };
  const auto check = [](auto map) {
    for (int i = 0; i < 20; ++i) {
      Named named{"name" + std::to_string(i), i};  // short, so that a move overwrites the characters
      EXPECT_TRUE(map.emplace(named.name, std::move(named)).inserted);
    }
    for (auto [key, value] : map) EXPECT_TRUE(key == value.name && map.find(key)->number == value.number);
    EXPECT_TRUE(map.erase(map.begin()) != map.end() && map.size() == 19);
  };
  check(mub::hash_of<Named>());
  check(mub::btree_of<Named>());
}

TEST(CppTypedMaps, KeepSmallValuesInWords) {
  struct Small {
    int16_t a, b, c;
  };
  mub::btreex_of<Small> map;
  for (int16_t i = 9; i >= 1; --i) map.emplace(static_cast<uint64_t>(i), i, i, i);  // an aggregate
  map.find(3)->c = -3;
  const auto copy = map.clone();
  EXPECT_TRUE(copy.size() == 9 && copy.c()->value_pool == nullptr && copy.lower_bound(3)->value.c == -3);
  EXPECT_TRUE(copy.rbegin()->value.b == 9 && copy.upper_bound(9) == copy.end() &&
              copy.get_or(10, {4, 5, 6}).a == 4);
  static_assert(std::is_same_v<decltype((*map.cbegin()).value), const Small &>);
  struct Positive {
    explicit Positive(int n) : number(n) {
      if (n <= 0) throw n;
    }
    int number;
  };
  mub::hash_of<Positive> positive;
  EXPECT_TRUE(positive.emplace("one", 1).inserted && !positive.emplace("one", 2).inserted);
  EXPECT_THROW(positive.emplace("none", 0), int);
  EXPECT_TRUE(positive.size() == 1 && positive.find("one")->number == 1 && !positive.contains("none"));
  mub::hash_of<std::string> names;
  names.emplace("dots", 3u, '.');
  EXPECT_TRUE(*names.clone().find("dots") == "..." &&
              names.c()->value_pool->block_size == sizeof(std::string));
}

// What a loop of mub_each.h does up to a break at item number `most`.
struct Walk {
  std::vector<uint64_t> visited;
  int evaluated = 0, pairs = 0;
};

enum class Order { kAscending, kAny };

// Expects the numbers from 1 to `count`; `walk(container, most)` runs the loop.
template <class Run, class Container>
void expect_walk(const char *loop, Run walk, Container *container, int count, Order order) {
  SCOPED_TRACE(testing::Message() << loop << " over " << count);
  const auto size = static_cast<size_t>(count);
  EXPECT_EQ(walk(container, 3).visited.size(), std::min<size_t>(size, 3));
  Walk all = walk(container, size);
  if (order == Order::kAny) std::sort(all.visited.begin(), all.visited.end());
  for (size_t i = 0; i < all.visited.size(); ++i) EXPECT_EQ(all.visited[i], i + 1);
  EXPECT_TRUE(all.visited.size() == size && all.evaluated == 1);
  EXPECT_EQ(all.pairs, count * (count + 1) / 2) << "the inner loop ends at the item of the outer loop";
}

#define EXPECT_WALK(loop, container, count, order, number) \
  expect_walk(                                             \
      #loop,                                               \
      [](auto *walked, size_t most) {                      \
        Walk walk;                                         \
        loop((++walk.evaluated, walked), item) {           \
          if (walk.visited.size() == most) break;          \
          walk.visited.push_back(number);                  \
          loop(walked, inner) {                            \
            ++walk.pairs;                                  \
            if (inner == item) break;                      \
          }                                                \
        }                                                  \
        return walk;                                       \
      },                                                   \
      container, count, order)

#define BTREE_FROM_3(tree, record) MUB_EACH_BTREE_FROM(tree, "\0\3", 2, record)
#define BTREED_FROM_3(tree, record) MUB_EACH_BTREED_FROM(tree, key_at<uint32_t>(3), record)
#define BTREEX_FROM_3(tree, record) MUB_EACH_BTREEX_FROM(tree, key_at<uint64_t>(3), record)

TEST(CLoops, VisitAllItemsAndEndAtABreak) {
  for (const int count : {0, 1, 4, 5, 32, 33, 99}) {
    EXPECT_WALK(MUB_EACH_HASH, filled<mub::hash>(count).c(), count, Order::kAny, item->value);
    EXPECT_WALK(MUB_EACH_HASHD, filled<mub::hashd>(count).c(), count, Order::kAny, item->value);
    EXPECT_WALK(MUB_EACH_HASHX, filled<mub::hashx>(count).c(), count, Order::kAny, item->value);
    EXPECT_WALK(MUB_EACH_HASHT, filled<mub::hasht>(count).c(), count, Order::kAny, item->value);
    EXPECT_WALK(MUB_EACH_BTREE, filled<mub::btree>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_BTREED, filled<mub::btreed>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_BTREEX, filled<mub::btreex>(count).c(), count, Order::kAscending, item->value);
    const int rest = std::max(count - 2, 0);
    EXPECT_WALK(BTREE_FROM_3, filled<mub::btree>(count).c(), rest, Order::kAscending, item->value - 2);
    EXPECT_WALK(BTREED_FROM_3, filled<mub::btreed>(count).c(), rest, Order::kAscending, item->value - 2);
    EXPECT_WALK(BTREEX_FROM_3, filled<mub::btreex>(count).c(), rest, Order::kAscending, item->value - 2);
    EXPECT_WALK(MUB_EACH_ARRAY, filled<mub::array>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_ARRAYD, filled<mub::arrayd>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_ARRAYX, filled<mub::arrayx>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_ARRAYS, filled<mub::arrays>(count).c(), count, Order::kAscending, *item);
    EXPECT_WALK(MUB_EACH_ARRAYT, filled<mub::arrayt>(count).c(), count, Order::kAscending, *item);
    EXPECT_WALK(MUB_EACH_LIST, filled<mub::list>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_LISTS, filled<mub::lists>(count).c(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_LISTX, filled<mub::listx>(count).c(), count, Order::kAscending, *item);
    auto flat = filled<mub::tree>(count);
    if (count != 0) flat.append(flat.root()->first_child, 100);  // no child of the root
    mub::tree tall;
    auto *last = tall.root();
    for (int i = 1; i <= count; ++i) last = tall.append(last, static_cast<uint64_t>(i));
    EXPECT_WALK(MUB_EACH_TREE_CHILD, flat.root(), count, Order::kAscending, item->value);
    EXPECT_WALK(MUB_EACH_TREE_BELOW, tall.root(), count, Order::kAscending, item->value);
    mub::bits sparse;
    for (int i = 1; i <= count; ++i) sparse.set(static_cast<uint32_t>(7 * i));
    EXPECT_WALK(MUB_EACH_BIT, sparse.c(), count, Order::kAscending, item / 7);
  }
}

// A clone that ran out of memory has the count of its source, but not as many slots.
TEST(CLoops, EndAtTheCapacity) {
  const auto expect_all_slots = [](auto array, auto loop) {
    const auto count = std::exchange(array.c()->count, array.c()->capacity + 9);
    EXPECT_EQ(loop(array.c()), array.c()->capacity);
    array.c()->count = count;
  };
  const auto steps = [](auto *array) {
    int64_t count = 0;
    MUB_EACH_ARRAYD(array, slot) count += slot != nullptr ? 1 : 0;
    return count;
  };
  const auto words = [](auto *array) {
    int64_t count = 0;
    MUB_EACH_ARRAYT(array, word) count += word != nullptr ? 1 : 0;
    return count;
  };
  expect_all_slots(filled<mub::arrayd>(5), steps);
  expect_all_slots(filled<mub::arrayt>(5), words);
}

}  // namespace
}  // namespace mub_test
