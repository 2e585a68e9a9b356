// Lists and trees: the model of a record is the sequence of its items, in list order, or for trees in
// depth-first order. The first item of a tree is its root.
//
// A family defines read_items(record, items), which reads a record by its fields.
#ifndef MUB_TESTS_INTERPRETER_LINKS_H
#define MUB_TESTS_INTERPRETER_LINKS_H

#include "interpreter/containers.h"
#include "mub.hpp"

namespace mub_test {

// role uint64_t context = Drawn<uint64_t, draw_context>
// role (mub_(tree_)?compare\w*_fn) compare = Comparator<%t>

struct Item {
  void *entry = nullptr;  // its address; nullptr until it is first read
  uint64_t value = 0;
  std::string key = {};  // in a list of keys
  int depth = 0;         // in a tree
  int side = 0;          // in a binary tree
  auto place() const { return std::tie(key, depth, side); }
};
// An empty record has its root, if it is a tree.
template <bool kHasRoot>
struct Items : std::vector<Item> {
  Items() : std::vector<Item>(kHasRoot ? 1 : 0) {}
  auto at(size_t index) { return begin() + static_cast<ptrdiff_t>(index); }
};

template <class R>
struct Kind {
  static constexpr bool kHasRoot = requires(R record) { record.root; };
  using Entry = std::remove_pointer_t<decltype(Functions<R>::entry_new_(nullptr))>;
  using Keyed = Entry;
  using Content = Items<kHasRoot>;
  static constexpr int64_t kEntryBytes = sizeof(Entry), kNodeBytes = 8;
  static constexpr bool kIsOrdered = true, kTermKeepsFlags = kHasRoot, kTermLeavesEntries = false;
  static constexpr bool kRemovalKeepsValues = std::is_same_v<R, mub_list> || std::is_same_v<R, mub_listx>;
  static constexpr bool kCloneKeepsEntryPool = std::is_same_v<R, mub_bitree>;
  static void set_order(R *, int) {}
  static void read(R &record, const Content &, Content &items) {
    items.clear();
    ASSERT_NO_FATAL_FAILURE(read_items(record, items));
    ASSERT_EQ(record.count, static_cast<int64_t>(items.size()) - kHasRoot);
  }
  static int64_t entries_of(const R &record) {
    if constexpr (std::is_same_v<R, mub_listx>) {
      int64_t blocks = 0;
      for (auto *block = record.head; block != nullptr; block = block->next) ++blocks;
      return blocks;
    }
    return record.count;
  }
};

// ---- roles, and helpers for checks

// An entry of Self, or NULL if that is allowed.
template <class R, bool kMayBeNone>
struct EntryOf {
  using Entry = typename Kind<R>::Entry;
  explicit EntryOf(WorldOf<R> &world)
      : items(world.self->content),
        index(static_cast<size_t>(world.program.below(static_cast<int64_t>(items.size()) + kMayBeNone))),
        entry(entry_at(index)) {}
  auto arguments() const { return std::tuple(entry); }
  Entry *entry_at(size_t at) const {
    return static_cast<Entry *>(at < items.size() ? items[at].entry : nullptr);
  }
  const typename Kind<R>::Content &items;
  size_t index;
  Entry *entry;
};
template <class R>
using Place = EntryOf<R, true>;

inline constexpr uint64_t kContext = 0x123456789ABCDEF0;
inline constexpr auto draw_context = [](auto &) { return kContext; };
// In lists, keys are values plus 1, so that exchanged arguments of a comparator are detected.
inline int compare(uint64_t value, uint64_t key) { return value + 1 == key ? 0 : -1; }
inline int compare(uint64_t key, uint64_t value, uint64_t context) {
  return context == kContext ? compare(value, key) : 0;
}
inline int compare(const mub_tree_entry *entry, const void *key, int64_t length) {
  return length == 8 && std::memcmp(&entry->value, key, 8) == 0 ? 0 : 1;
}
inline int compare(const mub_tree_entry *entry, uint64_t context, const void *key, int64_t length) {
  return context == kContext ? compare(entry, key, length) : 0;
}
struct AnyComparator {
  bool is_given;
};
template <class Function>
struct Comparator : AnyComparator {
  explicit Comparator(auto &world) : AnyComparator{!world.program.one_in(8)} {}
  auto arguments() const { return std::tuple(is_given ? static_cast<Function>(compare) : nullptr); }
};

// Two records with the same content, one for the call and one as its model. They are empty, or one unit short
// of a size at which they may have to grow.
template <class Owner, auto kAppend>
struct Pair {
  explicit Pair(auto &world) {
    for (auto left = 4 * world.program.below(10) - 1; left > 0; --left) {
      const auto unit = static_cast<uint8_t>('a' + left % 20);
      kAppend(record.c(), unit);
      kAppend(expected.c(), unit);
    }
  }
  auto arguments() { return std::tuple(record.c()); }
  Owner record, expected;
};

// The argument with a given role, or NULL; and the result of the function.
template <class Role, class... Args>
const Role *role_of(const Args &...args) {
  const Role *found = nullptr;
  const auto look = [&](const auto &arg) {
    if constexpr (std::is_base_of_v<Role, std::decay_t<decltype(arg)>>) found = &arg;
  };
  (look(args), ...);
  return found;
}
const auto &result_of(const auto &...args) { return std::get<sizeof...(args) - 1>(std::tie(args...)); }

// ---- operations

bool is_cleared(const auto &entry) {
  const std::string zeros(sizeof entry, '\0');
  return std::memcmp(&entry, zeros.data(), sizeof entry) == 0;
}
// An entry that the caller allocated is not changed when other entries are removed.
template <class R, class E>
void check(op::entry_new_, WorldOf<R> &world, Self<R> &self, E *entry) {
  EXPECT_EQ(entry == nullptr, world.failed);
  if (entry == nullptr) return;
  EXPECT_TRUE(is_cleared(*entry));
  std::memset(entry, 'w', sizeof *entry);
  const E held = *entry;
  if constexpr (!Kind<R>::kHasRoot) {
    world.give_back(self.slot, Functions<R>::remove_head_(&self.slot.record));
    if (!self.slot.content.empty()) self.slot.content.erase(self.slot.content.begin());
  }
  EXPECT_EQ(std::memcmp(entry, &held, sizeof held), 0);
  mub_pool_free(self.slot.record.entry_pool, entry);
}

}  // namespace mub_test

#endif
