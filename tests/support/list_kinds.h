// The linked lists as one: call<kAddHead>(list, key, value) adds an entry, whether or not the list keeps the key. That of
// a list without keys is always the empty one.
#ifndef MUB_TESTS_SUPPORT_LIST_KINDS_H
#define MUB_TESTS_SUPPORT_LIST_KINDS_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "mub_list.h"
#include "support/pools.h"
#include "support/random.h"

namespace mub_test {

// The operations, in the order of each kind's functions.
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

struct Keyed {
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

  static auto passed(std::string_view key) {
    return std::tuple(key.data(), static_cast<int64_t>(key.size()));
  }
  static auto passed(KeyOut out) { return std::tuple(out.key, out.length); }

  // Short ones, which often repeat, and long ones; now and then one that lies in the list's own bytes.
  static std::string_view key(const Record &list, Random &random, std::string &storage) {
    storage = random.text(random.below(random.one_in(9) ? 400 : 4), 2);
    const int64_t start = random.below(list.keys.length + 1);
    if (!random.one_in(5) || list.keys.data == nullptr) return storage;
    return std::string_view(reinterpret_cast<char *>(list.keys.data), static_cast<size_t>(list.keys.length))
        .substr(static_cast<size_t>(start), static_cast<size_t>(random.below(300)));
  }
  static std::string stored(const Record &list, const Entry &entry) {
    EXPECT_LE(entry.key_offset + int64_t{entry.key_length}, list.keys.length);
    return std::string(reinterpret_cast<char *>(list.keys.data), static_cast<size_t>(list.keys.length))
        .substr(entry.key_offset, entry.key_length);
  }
  static Entry *find(const Record *list, const KeyAndValue &item) {
    return mub_list_find(list, item.first.data(), static_cast<int64_t>(item.first.size()));
  }
  static bool finds(const KeyAndValue &wanted, const KeyAndValue &item) { return wanted.first == item.first; }
};

constexpr uint64_t kContext = 0x123456789ABCDEF0;

struct Bare {
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

  static std::tuple<> passed(std::string_view) { return {}; }
  static std::tuple<> passed(KeyOut) { return {}; }
  static std::string_view key(const Record &, Random &, std::string &) { return ""; }
  static std::string stored(const Record &, const Entry &) { return ""; }

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
  static bool finds(const KeyAndValue &wanted, const KeyAndValue &item) {
    return wanted.second == item.second;
  }
};

template <class A>
using List = Pooled<A>;

template <class A, class Arg>
auto passed_to(const Arg &arg) {
  if constexpr (std::is_same_v<Arg, std::string_view> || std::is_same_v<Arg, KeyOut>) {
    return A::passed(arg);
  } else {
    return std::tuple(arg);
  }
}

template <int kOperation, class A, class... Args>
auto call(List<A> &list, Args... args) {
  return std::apply(std::get<kOperation>(A::kFunctions),
                    std::tuple_cat(std::tuple(&list), passed_to<A>(args)...));
}

template <int kOperation, class A, class... Args>
KeyAndValue read(List<A> &list, Args... args) {
  const char *key = "stale";
  int64_t length = A::kHasKeys ? -1 : 0;
  const uint64_t value = call<kOperation>(list, args..., KeyOut{&key, &length});
  return {key != nullptr ? std::string(key, static_cast<size_t>(length)) : "", value};
}

}  // namespace mub_test

#endif
