// Programs for lists: see links.h.
#include "list_ops.inc"

#include "interpreter/links.h"
#include "interpreter/map_keys.h"

namespace mub_test {

// role %r_entry \*\* position = Walker<%s>
// role (const )?%r_entry \* position = Place<%s>
// role const char \*\* key;int64_t \* length = Out<const char *>, Out<int64_t>
// role const %r \* list;uint64_t value = Self<%s>, Wanted
// role uint64_t key = Wanted
// role const (void \* key|char \* text);int64_t length = ByteKey<%s>
// role int separator = Separator
// role mub_string \* string = StringOut

std::string key_of(const auto &record, const auto &entry) {
  return std::string(stored_keys(record.keys).substr(entry.key_offset, entry.key_length));
}
void read_items(const auto &list, Items<false> &items) {
  for (auto *entry = list.head; entry != nullptr; entry = entry->next) {
    if constexpr (requires { entry->values; }) {
      for (int64_t i = 0; i < entry->count; ++i) items.push_back({nullptr, entry->values[i]});
    } else if constexpr (requires { list.keys; }) {
      items.push_back({entry, entry->value, key_of(list, *entry)});
    } else {
      items.push_back({entry, entry->value});
    }
  }
}

// ---- roles

template <class R>
struct Walker : Place<R> {
  using Place<R>::Place;
  auto arguments() { return std::tuple(&at); }
  typename Kind<R>::Entry *at = this->entry;
};
// Half of them are values, and the others are values plus 1, which comparators expect.
inline constexpr auto draw_wanted = [](auto &world) {
  const Place<mub_lists> place(world);
  const uint64_t value = place.entry != nullptr ? place.entry->value : 77;
  return value + static_cast<uint64_t>(world.program.below(2));
};
using Wanted = Drawn<uint64_t, draw_wanted>;
// Only the lowest byte is used.
inline constexpr auto draw_separator = [](auto &world) {
  return "abx1"[world.program.below(4)] - 0x100 * static_cast<int>(world.program.below(3));
};
using Separator = Drawn<int, draw_separator>;
using StringOut = Pair<mub::string, mub_string_append_char>;

// ---- operations

// The _new operations return a block or 0; the others return the entry or the list.
template <class Op>
void check(Op, auto &world, auto &self,
           const auto &...args) requires(named<Op>("add") || named<Op>("insert")) {
  using R = std::remove_reference_t<decltype(self.slot.record)>;
  const auto result = result_of(args...);
  auto &slot = self.slot;
  Items<false> &items = slot.content;
  Item item;
  if (const auto *key = role_of<ByteKey<R>>(args...)) item.key = key->bytes;
  if constexpr (named<Op>("_new")) {
    EXPECT_EQ(seen, role_of<Init>(args...)->is_given && result != 0 ? Words{result} : Words());
    EXPECT_TRUE(seen.empty() || out_value_seen == items.size()) << "the list was not changed yet";
    EXPECT_EQ(result == 0, world.failed || !slot.has_values);
    EXPECT_TRUE(world.failed || slot.record.count > std::ssize(items));
    if (slot.record.count == std::ssize(items)) return;
    item.value = result;
  } else {
    item.value = role_of<Value<R>>(args...)->value;
    EXPECT_EQ(result == nullptr, world.failed);
    if (result == nullptr) return world.give_back(slot, item.value);
    if constexpr (requires { result->value; }) {
      item.entry = result;
    } else {
      EXPECT_EQ(result, &slot.record);
    }
  }
  const auto *place = role_of<Place<R>>(args...);
  const bool is_before = named<Op>("head") || named<Op>("before");
  const bool is_beside = place != nullptr && place->entry != nullptr;
  const size_t index = is_beside ? place->index + (is_before ? 0 : 1) : is_before ? 0 : items.size();
  items.insert(items.at(index), item);
}

// Reads and removals at an end or a position.
template <class Op, class R>
void check(Op, WorldOf<R> &world, Self<R> &self,
           const auto &...args) requires(named<Op>("get") || named<Op>("remove")) {
  const auto result = result_of(args...);
  Items<false> &items = self.slot.content;
  const auto item_at = [&](size_t index) { return index < items.size() ? items[index] : Item(); };
  const auto *place = role_of<Place<R>>(args...);
  const size_t index = place != nullptr ? place->index : named<Op>("tail") ? items.size() - 1 : 0;
  const Item item = item_at(index);
  if constexpr (named<Op>("_position")) {
    EXPECT_EQ(result, item.entry);
  } else {
    EXPECT_EQ(result, item.value);
  }
  if (const auto *key = role_of<Out<const char *>>(args...)) {
    EXPECT_EQ(*role_of<Out<int64_t>>(args...)->value, static_cast<int64_t>(item.key.size()));
    EXPECT_TRUE(index < items.size() || *key->value == nullptr);
    EXPECT_EQ(std::string_view(*key->value, item.key.size()), item.key);
  }
  if (const auto *walker = role_of<Walker<R>>(args...)) {
    const bool stays = walker->entry == nullptr;
    EXPECT_EQ(walker->at, stays ? nullptr : item_at(named<Op>("next") ? index + 1 : index - 1).entry);
  }
  if (!named<Op>("remove") || index >= items.size()) return;
  if constexpr (named<Op>("remove_at")) {
    EXPECT_EQ(peek(place->entry->value), 0u) << "the slot was cleared";
  }
  world.give_back(self.slot, item.value);
  items.erase(items.at(index));
}

template <class Op, class R>
void check(Op, WorldOf<R> &, Self<R> &self, const auto &...args) requires(named<Op>("find")) {
  const auto *key = role_of<ByteKey<R>>(args...);
  const auto *wanted = role_of<Wanted>(args...);
  const auto *comparator = role_of<AnyComparator>(args...);
  const auto is_wanted = [&](const Item &item) {
    return key != nullptr ? item.key == key->bytes
                          : item.value + (comparator != nullptr ? 1 : 0) == wanted->value;
  };
  const auto found = std::ranges::find_if(self.slot.content, is_wanted);
  const bool is_found = found != self.slot.content.end() && (comparator == nullptr || comparator->is_given);
  EXPECT_EQ(result_of(args...), is_found ? found->entry : nullptr);
}

// Items of a list, perhaps of the same list, are copied to an end. No block may have two owners: values that
// are blocks are 0 in the copies.
template <class Op, class R>
void check(Op, WorldOf<R> &world, Self<R> &self, Peer<R> &source, None) {
  if (world.failed) return;
  constexpr bool is_head = named<Op>("head");
  Items<false> &items = self.slot.content, added = source.slot.content;
  auto *entry = is_head ? self.slot.record.head : self.slot.record.tail;
  for (size_t i = 1; i < added.size() && entry != nullptr && !is_head; ++i) entry = entry->prev;
  for (Item &item : added) {
    ASSERT_TRUE(entry != nullptr && entry->value == item.value);
    if (self.slot.has_values) entry->value = item.value = 0;
    item.entry = std::exchange(entry, entry->next);
  }
  items.insert(is_head ? items.begin() : items.end(), added.begin(), added.end());
}

// Entries are returned to their pool, but the list still refers to them.
template <class R, class F>
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_> auto, WorldOf<R> &world, Slot<R> &slot,
             F empty) {
  R &list = slot.record;
  const R before = list;
  release_by(empty, world, slot, values_of(slot.content));
  EXPECT_TRUE(list.head == before.head && list.tail == before.tail && list.count == before.count);
  const bool returns_all = std::is_same_v<R, mub_lists> && std::is_invocable_v<F, R *>;
  EXPECT_TRUE(!slot.owns_entries() || (list.entry_pool->live_count == 0) == (returns_all || list.count == 0));
  list.head = list.tail = nullptr;
  list.count = 0;
  slot.content.clear();
  drop_all(world, slot, Functions<R>::remove_all_);
}
// Only for the tail block.
void by_hand(op::free_array_, auto &world, auto &slot, auto free_array) {
  const Free release(world);
  mub_listx_block *block = slot.record.tail;
  if (block == nullptr) return;
  Items<false> &items = slot.content, freed;
  freed.assign(items.end() - block->count, items.end());
  call_with(free_array, &slot.record, block, release);
  expect_released(slot, values_of(freed), release);
  std::fill_n(block->values, block->count, 0);
  for (size_t i = items.size() - freed.size(); i < items.size(); ++i) items[i].value = 0;
}

// An array reads the same keys from a text.
void check(op::from_string_, auto &world, Self<mub_list> &self, Separator &separator, ByteKey<mub_list> &text,
           None) {
  mub::array keys;
  if (!world.failed)
    mub_array_from_string(keys.c(), separator.value, text.bytes.data(), std::ssize(text.bytes));
  for (const auto [key, value] : keys) self.slot.content.push_back({.key = std::string(key)});
}
// An array also produces the same string, with the same capacity.
void check(op::to_string_, auto &world, Self<mub_list> &self, Separator &separator, StringOut &out, None) {
  mub::array keys;
  for (const Item &item : self.slot.content) keys.append(item.key, 0);
  if (!world.failed) mub_array_to_string(keys.c(), separator.value, out.expected.c());
  EXPECT_EQ(out.record.view(), out.expected.view());
  EXPECT_EQ(out.record.capacity(), out.expected.capacity());
}

}  // namespace mub_test

#include "list_steps.inc"
