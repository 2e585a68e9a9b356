// Lists of entries with keys and of bare values, each through its own functions.
#include "mub_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <list>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/list_kinds.h"
#include "support/pools.h"
#include "support/random.h"
#include "support/strings.h"

using namespace mub_test;
using Words = std::vector<uint64_t>;

namespace {

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
  auto *position = call<kHeadPosition>(list);
  const typename A::Entry *before = nullptr;
  std::vector<const Node<A> *> by_serial;
  for (const Node<A> &node : nodes) {
    ASSERT_TRUE(position == node.entry && position->prev == before);
    ASSERT_EQ(read<kGetAt>(list, node.entry), node);
    ASSERT_EQ(read<kGetNext>(list, &position), node);
    before = node.entry;
    by_serial.push_back(&node);
  }
  ASSERT_EQ(read<kGetNext>(list, &position), KeyAndValue());
  ASSERT_TRUE(position == nullptr && list.tail == before);
  position = call<kTailPosition>(list);
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
    ASSERT_EQ(position, node->entry);
    ASSERT_EQ(read<kGetPrev>(list, &position), *node);
  }
  ASSERT_EQ(position, nullptr);
  ASSERT_EQ(read<kGetHead>(list), nodes.empty() ? KeyAndValue() : KeyAndValue(nodes.front()));
  ASSERT_EQ(read<kGetTail>(list), nodes.empty() ? KeyAndValue() : KeyAndValue(nodes.back()));
  std::sort(by_serial.begin(), by_serial.end(), [](auto *a, auto *b) { return a->serial < b->serial; });
  if constexpr (A::kHasKeys) {
    std::string stored;
    for (const Node<A> *node : by_serial) {
      ASSERT_EQ(node->entry->key_offset, stored.size());
      stored += node->first;
    }
    ASSERT_EQ(list.keys.length, static_cast<int64_t>(stored.size()));
  }
}

template <class A>
class Model {
 public:
  using Entry = typename A::Entry;

  Model(List<A> &list, uint64_t salt) : random(salt), list_(list) {
    // A block that the test took from the list's pool: the pool holds more than the list's entries.
    if (random.one_in(2)) stranger_ = call<kEntryNew>(list);
    if (stranger_ != nullptr) std::memset(stranger_, 'w', sizeof *stranger_);
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

  void expect_agreement() {
    ASSERT_NO_FATAL_FAILURE(expect_same(list_, nodes));
    ASSERT_EQ(list_.entry_pool->live_count, list_.count + (stranger_ != nullptr ? 1 : 0));
    ASSERT_EQ(list_.value_pool->live_count, live_values_);
    const auto *bytes = reinterpret_cast<const char *>(stranger_);
    ASSERT_TRUE(bytes == nullptr || std::string(bytes, sizeof(Entry)) == std::string(sizeof(Entry), 'w'));
    std::string storage;
    const KeyAndValue wanted(A::key(list_, random, storage), random.one_in(9) ? 1 : any().second);
    const auto hit =
        std::find_if(nodes.begin(), nodes.end(), [&](const Node<A> &node) { return A::finds(wanted, node); });
    ASSERT_EQ(A::find(&list_, wanted), hit == nodes.end() ? nullptr : hit->entry);
  }

  Random random;
  Nodes<A> nodes;

 private:
  // Lets a few allocations of the operation through at most; true when one failed.
  template <class Operation>
  bool blows_in(Operation operation) {
    return Fuse(random.below(12), random.one_in(2) ? Blow::kOnce : Blow::kForever).blows_in(operation);
  }

  typename Nodes<A>::iterator any_place() { return std::next(nodes.begin(), random.below(list_.count + 1)); }
  Node<A> any() {
    const auto place = any_place();
    return place == nodes.end() ? Node<A>() : *place;
  }

  void add() {
    const auto place = any_place();
    Entry *position = place == nodes.end() ? nullptr : place->entry;
    std::string storage;
    const std::string_view key = A::key(list_, random, storage);
    KeyAndValue item(key, random.one_in(5) ? 0 : list_.new_value(++last_key_));
    const bool has_value = item.second != 0;
    Entry *entry = nullptr;
    uint64_t block = 0;
    const int64_t how = random.below(6);
    seen.clear();
    const bool failed = blows_in([&] {
      if (how == kAddHead) entry = call<kAddHead>(list_, key, item.second);
      if (how == kAddTail) entry = call<kAddTail>(list_, key, item.second);
      if (how == kInsertBefore) entry = call<kInsertBefore>(list_, position, key, item.second);
      if (how == kInsertAfter) entry = call<kInsertAfter>(list_, position, key, item.second);
      if (how == kAddHeadNew) block = call<kAddHeadNew>(list_, key, note);
      if (how == kAddTailNew) block = call<kAddTailNew>(list_, key, note);
    });
    ASSERT_EQ(failed, how < kAddHeadNew ? entry == nullptr : block == 0);
    if (how >= kAddHeadNew) {
      ASSERT_EQ(seen, Words(failed ? 0 : 1, block));
      // Without a block the entry stands all the same.
      if (list_.count > static_cast<int64_t>(nodes.size()))
        entry = how == kAddHeadNew ? list_.head : list_.tail;
      if (block != 0) key_at(block) = ++last_key_;
    }
    if (has_value && (how >= kAddHeadNew || failed)) {
      mub_pool_free(list_.value_pool, reinterpret_cast<void *>(item.second));
    } else {
      live_values_ += has_value ? 1 : 0;
    }
    live_values_ += block != 0 ? 1 : 0;
    if (entry == nullptr) return;
    if (how >= kAddHeadNew) item.second = block;
    const bool beside = (how == kInsertBefore || how == kInsertAfter) && position != nullptr;
    const bool at_head = how == kAddHead || how == kInsertBefore || how == kAddHeadNew;
    const auto before = !beside   ? (at_head ? nodes.begin() : nodes.end())
                        : at_head ? place
                                  : std::next(place);
    nodes.insert(before, {item, entry, ++serial_});
  }

  // The list itself, or one with a few entries of its own. The copies' values are cleared, as no block is in two places.
  void add_list() {
    List<A> other;
    for (int64_t i = random.below(5); i > 0; --i) {
      call<kAddHead>(other, std::string_view("other").substr(static_cast<size_t>(i)), uint64_t{1});
    }
    List<A> &source = random.one_in(4) && nodes.size() < 40 ? list_ : other;
    std::vector<KeyAndValue> items;
    for (auto *position = source.head; position != nullptr;)
      items.push_back(read<kGetNext>(source, &position));
    const bool at_head = random.one_in(2);
    const bool failed =
        blows_in([&] { at_head ? call<kAddHeadList>(list_, &source) : call<kAddTailList>(list_, &source); });
    if (!failed) adopt(items, at_head);
  }

  void adopt(std::vector<KeyAndValue> items, bool at_head) {
    if (at_head) std::reverse(items.begin(), items.end());
    auto *entry = at_head ? list_.head : list_.tail;
    for (size_t i = 1; i < items.size(); ++i) entry = at_head ? entry->next : entry->prev;
    for (const auto &[key, value] : items) {
      ASSERT_EQ(std::exchange(entry->value, 0), value);
      nodes.insert(at_head ? nodes.begin() : nodes.end(), {{key, 0}, entry, ++serial_});
      entry = at_head ? entry->prev : entry->next;
    }
  }

  void texts() {
    if constexpr (A::kHasKeys) {
      std::vector<KeyAndValue> items(static_cast<size_t>(random.below(5)));
      std::string text, joined;
      for (size_t i = 0; i < items.size(); ++i) {
        items[i].first = random.text(random.below(3));
        text += std::string(i > 0 ? "," : "") + (random.one_in(3) ? "\t" : "") + items[i].first +
                (random.one_in(3) ? " " : "");
      }
      if (!items.empty() && items.back().first.empty()) items.pop_back();
      const bool measured = random.one_in(2);
      const bool failed = blows_in([&] {
        mub_list_from_string(&list_, 0x700 | ',', text.data(),
                             measured ? -1 : static_cast<int64_t>(text.size()));
      });
      if (!failed) adopt(items, false);
      for (const Node<A> &node : nodes) joined += (joined.empty() ? "" : ";") + node.first;
      String out("before");
      const bool unwritten = blows_in([&] { mub_list_to_string(&list_, 0x700 | ';', &out); });
      expect_content(out, unwritten ? "before" : joined);
    }
  }

  void remove() {
    const auto place = any_place();
    Entry *position = place == nodes.end() ? nullptr : place->entry;
    const int64_t how = kRemoveHead + random.below(3);
    const auto end = how == kRemoveHead || nodes.empty() ? nodes.begin() : std::prev(nodes.end());
    const auto gone = how == kRemoveAt ? place : end;
    uint64_t value = 0;
    blows_in([&] {
      if (how == kRemoveHead) value = call<kRemoveHead>(list_);
      if (how == kRemoveTail) value = call<kRemoveTail>(list_);
      if (how == kRemoveAt) value = call<kRemoveAt>(list_, position);
    });
    ASSERT_EQ(value, gone == nodes.end() ? 0 : gone->second);
    if (gone == nodes.end()) return;
    ASSERT_TRUE(how != kRemoveAt || position->value == 0) << "cleared in the block that went back";
    if (value != 0) {
      mub_pool_free(list_.value_pool, reinterpret_cast<void *>(value));
      --live_values_;
    }
    nodes.erase(gone);
  }

  void empty() {
    const int64_t how = random.below(3);
    Words keys;
    int64_t blocks = 0;
    for (const Node<A> &node : nodes) {
      if (node.second == 0) continue;
      ++blocks;
      if (how == 0) keys.push_back(key_of(node.second));
    }
    seen.clear();
    if (how == 2) {
      ASSERT_EQ(call<kRemoveAll>(list_), &list_);
    } else {
      call<kFreeAll>(list_, how == 0 ? note_key_once : nullptr);
    }
    ASSERT_EQ(seen, keys);
    const bool owns_values = list_.owns_value_pool != 0;
    if (how < 2) live_values_ -= owns_values ? live_values_ : blocks;
    if (how == 2 && owns_values && !A::kHasKeys) live_values_ = 0;
    if (list_.owns_entry_pool != 0) stranger_ = nullptr;
    if constexpr (A::kHasKeys) {
      ASSERT_TRUE(how == 2 || list_.keys.data == nullptr);
    }
    nodes.clear();
    if (random.one_in(2)) call<kSwap>(list_, &list_);
  }

  // Clones into a list that holds something already.
  void clone() {
    List<A> copy(random.one_in(2), random.one_in(2));
    call<kAddTailNew>(copy, std::string_view("old"), nullptr);
    seen.clear();
    const bool failed =
        blows_in([&] { EXPECT_EQ(call<kClone>(list_, nullptr, &copy, nullptr, note_clone), &copy); });
    const bool own_entries = list_.owns_entry_pool != 0, own_values = list_.owns_value_pool != 0;
    // Dropping what the copy held goes on without the room to note a returned block.
    if (failed && copy.count == 0 && !nodes.empty()) {
      ASSERT_NO_FATAL_FAILURE(expect_same<A>(copy, {}));
      ASSERT_EQ(seen, Words());
      ASSERT_EQ(copy.owns_entry_pool != 0 ? copy.entry_pool->live_count : 0, 0);
      ASSERT_EQ(copy.owns_value_pool != 0 ? copy.value_pool->live_count : 0, 0);
      return;
    }
    ASSERT_EQ(copy.entry_pool == list_.entry_pool, !own_entries);
    ASSERT_EQ(copy.value_pool == list_.value_pool, !own_values);
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

  List<A> &list_;
  Entry *stranger_ = nullptr;
  int64_t live_values_ = 0;
  int64_t serial_ = 0;
  uint64_t last_key_ = 1;
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

TYPED_TEST(Lists, WalksThatReleaseLeaveTheListAsItIs) {
  using A = TypeParam;
  for (const bool owned : {true, false}) {
    List<A> list(owned, owned);
    for (const uint64_t value : {uint64_t{0}, list.new_value(5)})
      call<kAddTail>(list, std::string_view("k"), value);
    seen.clear();
    call<kFreeAllEntry>(list, note_key_once);
    EXPECT_EQ(seen, Words{5});
    EXPECT_EQ(list.value_pool->live_count, owned ? 1 : 0);
    EXPECT_EQ(list.entry_pool->live_count, owned ? 2 : 0);
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
    EXPECT_EQ(list.owns_entry_pool, list.entry_pool != nullptr ? 1 : 0);
    EXPECT_EQ(list.owns_value_pool, list.value_pool != nullptr ? 1 : 0);
    // Even a value pool that is there has no block size yet: the entry stands without a block.
    EXPECT_EQ(std::apply(std::get<kAddTailNew>(A::kFunctions),
                         std::tuple_cat(std::tuple(&list), A::passed("k"), std::tuple(mub_init_fn(note)))),
              0u);
    EXPECT_EQ(list.count, list.owns_entry_pool);
    EXPECT_EQ(A::term(&list), &list);
    EXPECT_TRUE(list.entry_pool == nullptr && list.value_pool == nullptr && list.head == nullptr);
    EXPECT_EQ(list.count + list.owns_entry_pool + list.owns_value_pool, 0);
  });
}

TEST(ListOfKeys, OffsetsHave32BitsAndFallBehindACutButThatOfAnEmptyKeyAtIt) {
  List<Keyed> list;
  mub_list_entry *made[4];
  const char *keys[4] = {"aa", "bb", nullptr, "cc"};
  for (size_t i = 0; i < 4; ++i) made[i] = mub_list_add_head(&list, keys[i], -1, 0);
  EXPECT_EQ(mub_list_find(&list, nullptr, -1), made[2]);
  mub_list_adjust_t(&list, 4, (int64_t{1} << 32) + 2);
  mub_list_adjust_t(&list, 2, 1);
  const uint32_t offsets[4] = {0, 1, 3, 1};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(made[i]->key_offset, offsets[i]) << i;
  list.keys.length = 0xFFFFFFFE;
  EXPECT_EQ(mub_list_add_tail(&list, "ab", 2, 1), nullptr);
  EXPECT_EQ(list.count + list.entry_pool->live_count, 8);
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
  EXPECT_EQ(list.keys.length, 11);
}

TEST(ListOfValues, NoComparerFindsNothing) {
  List<Bare> list;
  mub_lists_add_tail(&list, 1);
  EXPECT_EQ(mub_lists_find(&list, 1, nullptr), mub_lists_find_x(&list, 1, 1, nullptr));
  EXPECT_EQ(mub_lists_find(&list, 1, nullptr), nullptr);
}

}  // namespace
