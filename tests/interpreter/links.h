// Lists and trees as programs drive them: the model of a record is what it holds, in the order of the list
// or of a document.
//
// Beside what containers.h asks for, a kind says
//   read(record, content)     reads a record by its fields, and checks its links on the way
//   values_of(content)        the values that are not 0, in the order in which they are released
//   kKeepsValues              a removal of all leaves the blocks of an owned value pool
#ifndef MUB_TESTS_INTERPRETER_LINKS_H
#define MUB_TESTS_INTERPRETER_LINKS_H

#include <algorithm>
#include <string>
#include <string_view>

#include "interpreter/containers.h"

namespace mub_test {

// role uint64_t context = Context
// role (mub_(tree_)?compare\w*_fn) compare = Comparer<%t>

using Words = std::vector<uint64_t>;

struct Item {
  void *entry = nullptr;  // where it lies; nullptr until it is read for the first time
  uint64_t value = 0;
  std::string key = {};  // in a list of keys
  int depth = 0;         // in a tree
  int side = 0;          // on which it hangs in a binary tree
  auto place() const { return std::tie(key, depth, side); }
};
// What an empty record holds is its roots.
template <size_t kRoots>
struct Items : std::vector<Item> {
  Items() : std::vector<Item>(kRoots) {}
  auto at(size_t index) { return begin() + static_cast<ptrdiff_t>(index); }
};

template <class R, class E, size_t kRootCount, auto kInit, auto kTerm, auto kRemoveAll, auto kFreeAll,
          auto kEntryNew>
struct LinkKind {
  using Entry = E;
  using Content = Items<kRootCount>;
  static constexpr size_t kRoots = kRootCount;
  static constexpr bool kHasNodePool = false, kKeepsValues = false, kCloneKeepsEntryPool = false;
  static constexpr int64_t kEntryBytes = sizeof(E), kNodeBytes = 8;
  static constexpr auto term = kTerm;
  static constexpr auto remove_all = kRemoveAll;
  static constexpr auto free_all = kFreeAll;
  static constexpr auto entry_new = kEntryNew;
  static void init(R *record, int owned, bool has_values) {
    EXPECT_EQ(kInit(record, owned & 1, has_values ? owned & 4 : 0), record);
  }
  static void set_order(R *, int) {}
  static int64_t entries_of(const Slot<R> &slot) {
    return static_cast<int64_t>(slot.content.size() - kRoots);
  }

  static void compare(Slot<R> &slot, int64_t &blocks) {
    Content read;
    read.clear();
    ASSERT_NO_FATAL_FAILURE(Kind<R>::read(slot.record, read));
    ASSERT_EQ(read.size(), slot.content.size());
    ASSERT_EQ(slot.record.count, static_cast<int64_t>(read.size() - kRoots));
    for (size_t i = 0; i < read.size(); ++i) {
      Item &item = slot.content[i];
      if (item.entry == nullptr) item.entry = read[i].entry;
      ASSERT_EQ(read[i].entry, item.entry) << i;
      ASSERT_EQ(read[i].value, item.value) << i;
      ASSERT_EQ(read[i].place(), item.place()) << i;
      blocks += item.value != 0 ? 1 : 0;
    }
    const int64_t live = slot.owns_entries() ? slot.record.entry_pool->live_count : Kind<R>::entries_of(slot);
    ASSERT_EQ(live, Kind<R>::entries_of(slot));
  }
};

// ---- roles, and what checks ask of them

constexpr uint64_t kContext = 0x123456789ABCDEF0;
struct Context {
  template <class W>
  explicit Context(W &) {}
  auto arguments() const { return std::tuple(kContext); }
};
// A family has a comparer of each type.
template <class Function>
inline constexpr Function kCompare = nullptr;
struct AnyComparer {
  bool is_given;
};
template <class Function>
struct Comparer : AnyComparer {
  template <class W>
  explicit Comparer(W &world) : AnyComparer{!world.program.one_in(8)} {}
  auto arguments() const { return std::tuple(is_given ? kCompare<Function> : nullptr); }
};
// Two records of the same content, one for the function and one for the model.
template <class Record, auto kInit, auto kTerm>
struct Copies {
  Copies() {
    for (Record &each : copies) kInit(&each);
  }
  Copies(const Copies &) = delete;
  ~Copies() {
    for (Record &each : copies) kTerm(&each);
  }
  auto arguments() { return std::tuple(&copies[0]); }
  Record copies[2];
};

// The role of a kind that a step has, if any; and the result of its function.
template <class Role, class... Args>
const Role *role_of(const Args &...args) {
  const Role *found = nullptr;
  const auto look = [&](const auto &arg) {
    if constexpr (std::is_base_of_v<Role, std::decay_t<decltype(arg)>>) found = &arg;
  };
  (look(args), ...);
  return found;
}
template <class... Args>
const auto &result_of(const Args &...args) {
  return std::get<sizeof...(Args) - 1>(std::tie(args...));
}
template <class Op>
constexpr bool has(std::string_view part) {
  return Op::kName.find(part) != std::string_view::npos;
}

// ---- operations

// Values that a call has let go; their blocks stay in a pool of the record's own.
template <class R>
void expect_released(Slot<R> &slot, const Words &values, const Free &release) {
  EXPECT_EQ(seen, release.is_given ? values : Words());
  if (slot.owns_values()) slot.blocks_left += static_cast<int64_t>(values.size());
}
template <class R, class Result>
void check(op::free_all_, WorldOf<R> &, Self<R> &self, Free &release, Result) {
  expect_released(self.slot, Kind<R>::values_of(self.slot.content), release);
  self.slot.forget_all();
}
// Drops all entries by a call that does not look at values: those in a pool of the world's are released
// beforehand.
template <class R, class F>
void drop_all(WorldOf<R> &world, Slot<R> &slot, F drop) {
  const Words values = Kind<R>::values_of(slot.content);
  if (!slot.owns_values()) {
    for (const uint64_t value : values) world.give_back(slot, value);
  }
  EXPECT_EQ(world.call([&] { return drop(&slot.record); }), &slot.record);
  const bool keeps = Kind<R>::kKeepsValues && slot.owns_values();
  const int64_t left = keeps ? slot.blocks_left + static_cast<int64_t>(values.size()) : 0;
  slot.forget_all();
  slot.blocks_left = left;
}
template <class R, class F>
void by_hand(op::remove_all_, WorldOf<R> &world, F remove_all) {
  Self<R> self(world);
  drop_all(world, self.slot, remove_all);
}
template <class R, class F>
void by_hand(op::term_, WorldOf<R> &world, F term) {
  Self<R> self(world);
  R &record = self.slot.record;
  const int flags = record.owns_entry_pool + record.owns_value_pool;
  drop_all(world, self.slot, term);
  EXPECT_TRUE(record.entry_pool == nullptr || !self.slot.owns_entries());
  EXPECT_TRUE(record.value_pool == nullptr || !self.slot.owns_values());
  EXPECT_EQ(record.owns_entry_pool + record.owns_value_pool, Kind<R>::kRoots > 0 ? flags : 0);
  EXPECT_EQ(record.count, 0);
  self.slot.forget_all();
  world.start(self.slot);
}
template <class R, class F>
void by_hand(op::init_, WorldOf<R> &world, F init) {
  R record;
  const auto owned = static_cast<int>(world.program.below(8));
  world.call([&] { init(&record, owned & 1, owned & 4); });
  EXPECT_TRUE(world.failed || record.owns_entry_pool + 4 * record.owns_value_pool == (owned & 5));
  EXPECT_EQ(record.entry_pool != nullptr, record.owns_entry_pool == 1);
  EXPECT_EQ(record.value_pool != nullptr, record.owns_value_pool == 1);
  EXPECT_EQ(record.count, 0);
  Kind<R>::term(&record);
}

// Values that are blocks of the source's own pool are copied; others are shared, and then given up at once,
// as only one of the two may release them.
template <class R, class Result>
void check(op::clone_, WorldOf<R> &world, Self<R> &self, UserPool<0> &, Destination<R> &destination,
           UserPool<1> &, Cloner &cloner, Result result) {
  const Slot<R> &source = self.slot;
  Slot<R> &copy = destination.slot;
  EXPECT_EQ(result, &copy.record);
  if (&source == &copy) return;
  typename Kind<R>::Content read;
  read.clear();
  ASSERT_NO_FATAL_FAILURE(Kind<R>::read(copy.record, read));
  const bool owns_values = source.owns_values(), keeps_values = copy.owns_values();
  const int kept = copy.owned & (source.owned | (Kind<R>::kCloneKeepsEntryPool ? 1 : 0)) & 5;
  copy.owned = copy.record.owns_entry_pool | copy.record.owns_value_pool << 2;
  if (world.failed && read.size() == Kind<R>::kRoots) {
    EXPECT_TRUE(seen.empty() && copy.record.count == 0 && (read.empty() || read[0].value == 0));
    copy.blocks_left = copy.owns_values() ? copy.record.value_pool->live_count : 0;
    return;
  }
  EXPECT_EQ(copy.owned, kept);
  ASSERT_EQ(read.size(), source.content.size());
  Words pairs;
  for (size_t i = 0; i < read.size(); ++i) {
    const uint64_t value = source.content[i].value, copied = read[i].value;
    ASSERT_EQ(read[i].place(), source.content[i].place());
    ASSERT_NE(read[i].entry, source.content[i].entry);
    ASSERT_EQ(copied == value, !owns_values || value == 0);
    if (owns_values) {
      ASSERT_EQ(copied == 0, value == 0 || !keeps_values);
      ASSERT_EQ(
          copied == 0 ? 0 : std::memcmp(reinterpret_cast<void *>(copied), reinterpret_cast<void *>(value), 8),
          0);
      pairs.insert(pairs.end(), {value, copied});
    }
  }
  EXPECT_EQ(seen, cloner.is_given ? pairs : Words());
  copy.blocks_left = keeps_values && owns_values ? source.blocks_left : 0;
  if (owns_values) {
    copy.content = read;
  } else {
    Kind<R>::remove_all(&copy.record);
  }
}

}  // namespace mub_test

#endif
