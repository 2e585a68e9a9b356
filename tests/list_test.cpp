// Lists of entries with keys and of bare values, each through its own functions.
#include "mub_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "support/calls.h"
#include "support/fuse.h"
#include "support/pools.h"
#include "support/random.h"
#include "support/strings.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

// Both kinds as one: call<kAddHead>(list, key, value) adds an entry, whether or not the list keeps the key. That of a
// list without keys is always the empty one. The operations, in the order of each kind's functions.
enum Added { kAddHead, kAddTail, kInsertBefore, kInsertAfter, kAddHeadNew, kAddTailNew };
enum Read { kGetHead = kAddTailNew + 1, kGetTail, kGetAt, kGetNext, kGetPrev, kHeadPosition, kTailPosition };
enum Listed { kAddHeadList = kTailPosition + 1, kAddTailList };
enum Removed { kRemoveHead = kAddTailList + 1, kRemoveTail, kRemoveAt };
enum Whole { kSwap = kRemoveAt + 1, kClone, kEntryNew, kRemoveAll, kFreeAll, kRemoveAllEntry, kFreeAllEntry };

// Where a list with keys puts the one that it hands out.
struct KeyOut {
  const char **key;
  int64_t *length;
};

using KeyAndValue = std::pair<std::string, uint64_t>;

struct Keyed : PassingBytes {
  using Record = mub_list;
  using Entry = mub_list_entry;
  static constexpr bool kHasKeys = true;
  static constexpr auto init = mub_list_init;
  static constexpr auto term = mub_list_term;
  static constexpr auto kFunctions = std::make_tuple(
      mub_list_add_head, mub_list_add_tail, mub_list_insert_before, mub_list_insert_after,
      mub_list_add_head_new, mub_list_add_tail_new, mub_list_get_head, mub_list_get_tail, mub_list_get_at,
      mub_list_get_next, mub_list_get_prev, mub_list_get_head_position, mub_list_get_tail_position,
      mub_list_add_head_list, mub_list_add_tail_list, mub_list_remove_head, mub_list_remove_tail,
      mub_list_remove_at, mub_list_swap, mub_list_clone, mub_list_entry_new, mub_list_remove_all,
      mub_list_free_all, mub_list_remove_all_entry, mub_list_free_all_entry);

  using PassingBytes::passed;
  static auto passed(KeyOut out) { return std::tuple(out.key, out.length); }

  // Short ones, which often repeat, and long ones; now and then one that lies in the list's own bytes.
  static std::string_view key(const Record &list, Random &random, std::string &storage) {
    storage = random.text(random.below(random.one_in(9) ? 400 : 4), 2);
    if (!random.one_in(5) || list.keys.data == nullptr) return storage;
    const std::string_view own(reinterpret_cast<char *>(list.keys.data),
                               static_cast<size_t>(list.keys.length));
    return own.substr(random.word() % (own.size() + 1), random.word() % 300);
  }
  static Entry *find(const Record *list, const KeyAndValue &item) {
    return mub_list_find(list, item.first.data(), static_cast<int64_t>(item.first.size()));
  }
};

constexpr uint64_t kContext = 0x123456789ABCDEF0;

struct Bare : Passing {
  using Record = mub_lists;
  using Entry = mub_lists_entry;
  static constexpr bool kHasKeys = false;
  static constexpr auto init = mub_lists_init;
  static constexpr auto term = mub_lists_term;
  static constexpr auto kFunctions = std::make_tuple(
      mub_lists_add_head, mub_lists_add_tail, mub_lists_insert_before, mub_lists_insert_after,
      mub_lists_add_head_new, mub_lists_add_tail_new, mub_lists_get_head, mub_lists_get_tail,
      mub_lists_get_at, mub_lists_get_next, mub_lists_get_prev, mub_lists_get_head_position,
      mub_lists_get_tail_position, mub_lists_add_head_list, mub_lists_add_tail_list, mub_lists_remove_head,
      mub_lists_remove_tail, mub_lists_remove_at, mub_lists_swap, mub_lists_clone, mub_lists_entry_new,
      mub_lists_remove_all, mub_lists_free_all, mub_lists_remove_all_entry, mub_lists_free_all_entry);

  using Passing::passed;
  static std::tuple<> passed(std::string_view) { return {}; }
  static std::tuple<> passed(KeyOut) { return {}; }
  static std::string_view key(const Record &, Random &, std::string &) { return ""; }

  // The key lies one above the value that it finds, so that the comparers tell their arguments apart.
  static Entry *find(const Record *list, const KeyAndValue &item) {
    const auto compare = [](uint64_t value, uint64_t key) { return value + 1 == key ? 0 : 1; };
    const auto compare_x = [](uint64_t key, uint64_t value, uint64_t context) {
      return value + 1 == key && context == kContext ? 0 : 1;
    };
    Entry *entry = mub_lists_find_at(list, item.second);
    EXPECT_EQ(mub_lists_find(list, item.second + 1, compare), entry);
    EXPECT_EQ(mub_lists_find_x(list, item.second + 1, kContext, compare_x), entry);
    return entry;
  }
};

template <class A>
using List = Pooled<A>;

template <int kOperation, class A, class... Args>
auto call(List<A> &list, const Args &...args) {
  return call_of<kOperation, A>(&list, args...);
}

template <int kOperation, class A, class... Args>
KeyAndValue read(List<A> &list, Args... args) {
  const char *key = "stale";
  int64_t length = A::kHasKeys ? -1 : 0;
  const uint64_t value = call<kOperation>(list, args..., KeyOut{&key, &length});
  return {key != nullptr ? std::string(key, static_cast<size_t>(length)) : "", value};
}

template <class Kind>
class Lists : public ::testing::Test {};
using Kinds = ::testing::Types<Keyed, Bare>;
TYPED_TEST_SUITE(Lists, Kinds);

template <class A>
struct Node : KeyAndValue {
  typename A::Entry *entry;
  int64_t serial;  // the order of adding
};
template <class A>
using Nodes = std::list<Node<A>>;

// Every invariant of a list, and its walks in both directions.
template <class A>
void expect_same(List<A> &list, const Nodes<A> &nodes) {
  ASSERT_EQ(list.count, static_cast<int64_t>(nodes.size()));
  auto *position = call<kHeadPosition>(list), *back = call<kTailPosition>(list);
  const typename A::Entry *before = nullptr;
  std::map<int64_t, const Node<A> *> by_serial;
  for (const Node<A> &node : nodes) {
    ASSERT_TRUE(position == node.entry && position->prev == before);
    ASSERT_EQ(read<kGetAt>(list, node.entry), node);
    ASSERT_EQ(read<kGetNext>(list, &position), node);
    before = node.entry;
    by_serial[node.serial] = &node;
  }
  ASSERT_EQ(read<kGetNext>(list, &position), KeyAndValue());
  ASSERT_TRUE(position == nullptr && back == before);
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
    ASSERT_EQ(read<kGetPrev>(list, &back), *node);
  ASSERT_EQ(back, nullptr);
  ASSERT_EQ(read<kGetHead>(list), nodes.empty() ? KeyAndValue() : KeyAndValue(nodes.front()));
  ASSERT_EQ(read<kGetTail>(list), nodes.empty() ? KeyAndValue() : KeyAndValue(nodes.back()));
  if constexpr (A::kHasKeys) {
    int64_t offset = 0;
    for (const auto &[serial, node] : by_serial) {
      ASSERT_EQ(node->entry->key_offset, offset);
      offset += static_cast<int64_t>(node->first.size());
    }
    ASSERT_EQ(list.keys.length, offset);
  }
}

template <class A>
struct Model {
  using Entry = typename A::Entry;
  using Place = typename Nodes<A>::iterator;

  Model(List<A> &modelled, uint64_t salt) : list(modelled), random(salt) {
    // A block that the test took from the list's pool: the pool holds more than the list's entries.
    if (random.one_in(2)) stranger = call<kEntryNew>(list);
    if (stranger != nullptr) std::memset(stranger, 'w', sizeof *stranger);
  }

  void step() {
    const int64_t choice = random.below(100);
    if (choice < 45) return add();
    if (choice < 50) return add_list();
    if (choice < 55) return texts();
    if (choice < 92) return remove();
    if (choice < 99) return clone();
    empty();
  }

  int64_t blocks() const {
    return std::count_if(nodes.begin(), nodes.end(), [](const Node<A> &node) { return node.second != 0; });
  }

  void expect_agreement() {
    ASSERT_NO_FATAL_FAILURE(expect_same(list, nodes));
    ASSERT_EQ(list.entry_pool->live_count, list.count + (stranger != nullptr ? 1 : 0));
    ASSERT_EQ(list.value_pool->live_count, blocks() + left_blocks);
    const auto *bytes = reinterpret_cast<const char *>(stranger);
    ASSERT_TRUE(bytes == nullptr || std::string(bytes, sizeof(Entry)) == std::string(sizeof(Entry), 'w'));
    std::string storage;
    const auto place = any_place();
    const KeyAndValue wanted(A::key(list, random, storage), place == nodes.end() ? 1 : place->second);
    const auto hit = std::find_if(nodes.begin(), nodes.end(), [&](const Node<A> &node) {
      return A::kHasKeys ? node.first == wanted.first : node.second == wanted.second;
    });
    ASSERT_EQ(A::find(&list, wanted), hit == nodes.end() ? nullptr : hit->entry);
  }

  Place any_place() { return std::next(nodes.begin(), random.below(list.count + 1)); }

  void add() {
    const auto place = any_place();
    Entry *entry = nullptr, *position = place == nodes.end() ? nullptr : place->entry;
    const int64_t how = random.below(6);
    const bool makes_block = how >= kAddHeadNew;
    std::string storage;
    const std::string_view key = A::key(list, random, storage);
    KeyAndValue item(key, makes_block || random.one_in(5) ? 0 : new_value(list, ++last_key));
    uint64_t block = 0;
    seen.clear();
    const bool failed = random_fuse(random, 12).blows_in([&] {
      if (how == kAddHead) entry = call<kAddHead>(list, key, item.second);
      if (how == kAddTail) entry = call<kAddTail>(list, key, item.second);
      if (how == kInsertBefore) entry = call<kInsertBefore>(list, position, key, item.second);
      if (how == kInsertAfter) entry = call<kInsertAfter>(list, position, key, item.second);
      if (how == kAddHeadNew) block = call<kAddHeadNew>(list, key, note);
      if (how == kAddTailNew) block = call<kAddTailNew>(list, key, note);
    });
    ASSERT_EQ(failed, makes_block ? block == 0 : entry == nullptr);
    ASSERT_EQ(seen, Words(block != 0 ? 1 : 0, block));
    if (block != 0) key_at(item.second = block) = ++last_key;
    const bool at_head = how == kAddHead || how == kInsertBefore || how == kAddHeadNew;
    // Without a block the entry stands all the same.
    if (makes_block && list.count > static_cast<int64_t>(nodes.size()))
      entry = at_head ? list.head : list.tail;
    if (entry == nullptr) return return_value(list, item.second);
    const bool beside = (how == kInsertBefore || how == kInsertAfter) && position != nullptr;
    const auto end = at_head ? nodes.begin() : nodes.end();
    nodes.insert(!beside ? end : at_head ? place : std::next(place), {item, entry, ++serial});
  }

  // The list itself, or one with a few entries of its own.
  void add_list() {
    List<A> other;
    for (int64_t i = random.below(5); i > 0; --i) {
      call<kAddHead>(other, std::string_view("other").substr(random.word() % 6), uint64_t{1});
    }
    List<A> &source = random.one_in(4) && nodes.size() < 40 ? list : other;
    std::vector<KeyAndValue> items;
    for (auto *position = source.head; position != nullptr;)
      items.push_back(read<kGetNext>(source, &position));
    const bool at_head = random.one_in(2);
    if (random_fuse(random, 12).blows_in([&] {
          at_head ? call<kAddHeadList>(list, &source) : call<kAddTailList>(list, &source);
        }))
      return;
    if (at_head) std::reverse(items.begin(), items.end());
    adopt(items, at_head);
  }

  // Models entries that were added at an end one by one; their values are cleared, as no block is in two places.
  void adopt(const std::vector<KeyAndValue> &items, bool at_head) {
    auto *entry = at_head ? list.head : list.tail;
    for (size_t i = 1; i < items.size(); ++i) entry = at_head ? entry->next : entry->prev;
    for (const auto &[key, value] : items) {
      ASSERT_EQ(std::exchange(entry->value, 0), value);
      nodes.insert(at_head ? nodes.begin() : nodes.end(), {{key, 0}, entry, ++serial});
      entry = at_head ? entry->prev : entry->next;
    }
  }

  void texts() {
    if constexpr (A::kHasKeys) {
      // Up to the NUL, or ending with a separator, behind which then is nothing.
      const char text[] = "\ta, ,bb , c\n,d";
      const int64_t length = random.one_in(2) ? -1 : int64_t{sizeof text} - 2;
      std::vector<KeyAndValue> items = {{"a", 0}, {"", 0}, {"bb", 0}, {"c", 0}};
      if (length < 0) items.push_back({"d", 0});
      if (!random_fuse(random, 12).blows_in([&] { mub_list_from_string(&list, 0x700 | ',', text, length); }))
        adopt(items, false);
      std::string joined;
      for (const Node<A> &node : nodes) joined += (joined.empty() ? "" : ";") + node.first;
      String out("before");
      const bool failed =
          random_fuse(random, 12).blows_in([&] { mub_list_to_string(&list, 0x700 | ';', &out); });
      expect_content(out, failed ? "before" : joined);
    }
  }

  void remove() {
    const int64_t how = kRemoveHead + random.below(3);
    const auto end = how == kRemoveHead || nodes.empty() ? nodes.begin() : std::prev(nodes.end());
    const auto gone = how == kRemoveAt ? any_place() : end;
    Entry *position = gone == nodes.end() ? nullptr : gone->entry;
    uint64_t value = 0;
    random_fuse(random, 12).blows_in([&] {
      if (how == kRemoveHead) value = call<kRemoveHead>(list);
      if (how == kRemoveTail) value = call<kRemoveTail>(list);
      if (how == kRemoveAt) value = call<kRemoveAt>(list, position);
    });
    ASSERT_EQ(value, position == nullptr ? 0 : gone->second);
    if (position == nullptr) return;
    ASSERT_TRUE(how != kRemoveAt || position->value == 0) << "cleared in the block that went back";
    return_value(list, value);
    nodes.erase(gone);
  }

  void empty() {
    const bool frees = random.one_in(2), owns_values = list.owns_value_pool != 0;
    Words keys;
    for (const Node<A> &node : nodes) {
      if (frees && node.second != 0) keys.push_back(key_of(node.second));
    }
    if (!frees) left_blocks += blocks();
    if (owns_values && (frees || !A::kHasKeys)) left_blocks = 0;
    seen.clear();
    frees ? call<kFreeAll>(list, note_key_once) : static_cast<void>(call<kRemoveAll>(list));
    ASSERT_EQ(seen, keys);
    if (list.owns_entry_pool != 0) stranger = nullptr;
    nodes.clear();
    call<kSwap>(list, &list);
  }

  // Clones into a list that holds something already.
  void clone() {
    List<A> copy(random.one_in(2), random.one_in(2));
    call<kAddTailNew>(copy, std::string_view("old"), nullptr);
    seen.clear();
    const bool failed =
        random_fuse(random, 12).blows_in([&] { call<kClone>(list, nullptr, &copy, nullptr, note_clone); });
    const bool own_entries = list.owns_entry_pool != 0, own_values = list.owns_value_pool != 0;
    // Dropping what the copy held goes on without the room to note a returned block.
    if (failed && copy.count == 0 && !nodes.empty()) {
      ASSERT_NO_FATAL_FAILURE(expect_same<A>(copy, {}));
      ASSERT_EQ(seen, Words());
      ASSERT_EQ(copy.owns_entry_pool != 0 ? copy.entry_pool->live_count : 0, 0);
      ASSERT_EQ(copy.owns_value_pool != 0 ? copy.value_pool->live_count : 0, 0);
      return;
    }
    ASSERT_EQ(copy.entry_pool == list.entry_pool, !own_entries);
    ASSERT_EQ(copy.value_pool == list.value_pool, !own_values);
    Words mended;
    Nodes<A> copies = nodes;
    Entry *entry = copy.head;
    for (Node<A> &node : copies) {
      const uint64_t key = own_values && copy.owns_value_pool == 0 ? 0 : key_of(node.second);
      if (own_values) mended.insert(mended.end(), {key_of(node.second), key});
      ASSERT_TRUE(entry != nullptr && entry != node.entry && key_of(entry->value) == key);
      ASSERT_EQ(entry->value == node.second, node.second == 0 || !own_values);
      node.second = entry->value;
      node.entry = std::exchange(entry, entry->next);
    }
    ASSERT_NO_FATAL_FAILURE(expect_same(copy, copies));
    ASSERT_EQ(seen, mended);
  }

  List<A> &list;
  Random random;
  Nodes<A> nodes;
  Entry *stranger = nullptr;
  int64_t left_blocks = 0;  // in the value pool, of values that the list has let go
  int64_t serial = 0;
  uint64_t last_key = 1;
};

TYPED_TEST(Lists, AgreeWithAModelAlsoWhenMemoryRunsOut) {
  for (uint64_t run = 0; run < 8; ++run) {
    List<TypeParam> list(run % 2 == 0, run % 4 < 2);
    Model<TypeParam> model(list, 80 + run);
    for (int step = 0; step < 1000; ++step) {
      ASSERT_NO_FATAL_FAILURE(model.step());
      ASSERT_NO_FATAL_FAILURE(model.expect_agreement()) << step;
    }
  }
}

TYPED_TEST(Lists, ReleaseWithoutForgetting) {
  using A = TypeParam;
  for (const bool owned : {true, false}) {
    List<A> list(owned, owned);
    call<kAddTail>(list, std::string_view("k"), uint64_t{0});
    call<kAddTail>(list, std::string_view("k"), new_value(list, 5));
    seen.clear();
    call<kFreeAllEntry>(list, note_key_once);
    EXPECT_EQ(seen, Words{5});
    EXPECT_TRUE(list.value_pool->live_count == owned && list.entry_pool->live_count == 2 * owned);
    EXPECT_TRUE(list.count == 2 && list.head != list.tail);
    if (owned) call<kRemoveAllEntry>(list);
    EXPECT_EQ(list.entry_pool->live_count, owned && A::kHasKeys ? 2 : 0);
    list.head = nullptr;
  }
}

TYPED_TEST(Lists, MakeDoWithThePoolsThatTheyGot) {
  using A = TypeParam;
  for_every_allocation([](const Fuse &fuse) {
    typename A::Record list;
    fuse.blows_in([&] { EXPECT_EQ(A::init(&list, 1, 1), &list); });
    EXPECT_TRUE(list.owns_entry_pool == (list.entry_pool != nullptr));
    EXPECT_TRUE(list.owns_value_pool == (list.value_pool != nullptr));
    EXPECT_EQ(A::term(&list), &list);
    EXPECT_TRUE(list.entry_pool == nullptr && list.value_pool == nullptr);
    EXPECT_EQ(list.owns_entry_pool + list.owns_value_pool, 0);
  });
  List<A> list(true, false);
  list.value_pool = nullptr;
  EXPECT_EQ(call<kAddHeadNew>(list, std::string_view("k"), note), 0u);
  EXPECT_EQ(call<kClone>(list, nullptr, &list, nullptr, nullptr), &list);
  EXPECT_EQ(list.count, 1);
}

TYPED_TEST(Lists, CloneValuesIntoAPoolThatIsNamedAsTheUsersToo) {
  List<TypeParam> list, copy;
  Pool user(8);
  mub_pool_new(&user);
  Words mended;
  for (uint64_t key = 1; key <= 40; ++key) {
    call<kAddTail>(list, std::string_view("k"), new_value(list, key));
    mended.insert(mended.end(), {key, key});
  }
  seen.clear();
  call<kClone>(list, &user, &copy, copy.value_pool, note_clone);
  EXPECT_EQ(seen, mended);
  EXPECT_EQ(copy.value_pool->live_count, 40);
}

// The head, the tail and the count that an initialiser sees.
uint64_t watched;
template <class A>
void watch(uint64_t block) {
  const auto &list = *reinterpret_cast<typename A::Record *>(watched);
  seen = {block, key_of(list.head == nullptr ? 0 : list.head->value),
          key_of(list.tail == nullptr ? 0 : list.tail->value), static_cast<uint64_t>(list.count)};
}

TYPED_TEST(Lists, InitialisersRunBeforeTheEntryIsLinked) {
  using A = TypeParam;
  List<A> list;
  watched = reinterpret_cast<uintptr_t>(&list);
  const uint64_t first = call<kAddTailNew>(list, std::string_view("a"), watch<A>);
  EXPECT_EQ(seen, (Words{first, 0, 0, 0}));
  key_at(first) = 5;
  const uint64_t second = call<kAddHeadNew>(list, std::string_view("b"), watch<A>);
  EXPECT_EQ(seen, (Words{second, 5, 5, 1}));
  EXPECT_EQ(list.head->value, second);
}

TEST(ListOfKeys, OffsetsHave32BitsAndFallBehindACutButThatOfAnEmptyKeyAtIt) {
  List<Keyed> list;
  mub_list_entry *made[4];
  const char *keys[4] = {"aa", "bb", nullptr, "cc"};
  for (size_t i = 0; i < 4; ++i) made[i] = mub_list_add_head(&list, keys[i], -1, 0);
  EXPECT_EQ(mub_list_find(&list, nullptr, -1), made[2]);
  mub_list_adjust_t(&list, 4, (int64_t{1} << 32) + 2);
  mub_list_adjust_t(&list, 2, 1);
  mub_list_adjust_t(&list, 1, 4);
  EXPECT_EQ(made[1]->key_offset, 0xFFFFFFFDu);
  mub_list_adjust_t(&list, 1, -4);
  const uint32_t offsets[4] = {0, 1, 3, 1};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(made[i]->key_offset, offsets[i]) << i;
  list.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_list_add_tail(&list, "ab", 2, 1), nullptr);
  EXPECT_EQ(list.count + list.entry_pool->live_count, 8);
}

// Offsets fall without a test; a key whose bytes would lie outside the store reads as empty.
TEST(ListOfKeys, KeysWhoseOffsetsWrapAreNotRead) {
  mub_list list;
  mub_list_init(&list, 1, 0);
  const auto *entry = mub_list_add_tail(&list, "abc", 3, 7);
  mub_list_adjust_t(&list, 0, 1000);
  EXPECT_EQ(entry->key_offset, 0u - 1000u);
  EXPECT_EQ(mub_list_find(&list, "abc", 3), nullptr);
  EXPECT_EQ(mub_list_find(&list, "", 0), entry);
  mub_list_term(&list);
}

TEST(ListOfKeys, ReadsItsOwnBytesAsAText) {
  List<Keyed> list;
  String text;
  mub_list_add_tail(&list, " first ,, second ,\t", -1, 7);
  mub_list_from_string(&list, ',', reinterpret_cast<char *>(list.keys.data), -1);
  mub_list_from_string(&list, ',', nullptr, -1);
  mub_list_remove_head(&list);
  mub_list_to_string(&list, ';', &text);
  EXPECT_EQ(text.text(), "first;;second");
}

TEST(ListOfValues, NoComparerFindsNothing) {
  List<Bare> list;
  mub_lists_add_tail(&list, 1);
  EXPECT_EQ(mub_lists_find(&list, 1, nullptr), nullptr);
  EXPECT_EQ(mub_lists_find_x(&list, 1, 1, nullptr), nullptr);
}

}  // namespace
