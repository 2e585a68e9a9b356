// Lists under programs: see links.h.
#include "list_ops.inc"

#include "interpreter/links.h"
#include "interpreter/map_keys.h"

namespace mub_test {

// role %r_entry \*\* position = Walker<%s>
// role (const )?%r_entry \* position = Place<%s>
// role const char \*\* key;int64_t \* length = KeyOut
// role const %r \* list;uint64_t value = Self<%s>, Wanted
// role uint64_t key = Wanted
// role const void \* key;int64_t length = ByteKey<%s>
// role int separator = Separator
// role const char \* text;int64_t length = Text
// role mub_string \* string = StringOut

template <class R>
constexpr bool kIsUnrolled = std::is_same_v<R, mub_listx>;

void read_entry(const mub_list &list, mub_list_entry &entry, Items<false> &items) {
  items.push_back({&entry, entry.value, ByteKeyKind<mub_list>::bytes_of(list, entry)});
}
void read_entry(const mub_lists &, mub_lists_entry &entry, Items<false> &items) {
  items.push_back({&entry, entry.value});
}
void read_entry(const mub_listx &, mub_listx_block &block, Items<false> &items) {
  ASSERT_TRUE(block.count >= 1 && block.count <= 32);
  for (int64_t i = 0; i < block.count; ++i) items.push_back({nullptr, block.values[i]});
}
template <class R>
void read_items(const R &list, Items<false> &items) {
  typename Kind<R>::Entry *before = nullptr;
  for (auto *entry = list.head; entry != nullptr; before = std::exchange(entry, entry->next)) {
    ASSERT_EQ(entry->prev, before);
    ASSERT_LT(static_cast<int64_t>(items.size()), list.count);
    ASSERT_NO_FATAL_FAILURE(read_entry(list, *entry, items));
  }
  ASSERT_EQ(list.tail, before);
  if constexpr (std::is_same_v<R, mub_list>) {
    int64_t bytes = 0;
    for (const Item &item : items) bytes += static_cast<int64_t>(item.key.size());
    ASSERT_EQ(bytes, list.keys.length) << "the store has the bytes of the keys alone";
  }
}
// ---- roles

template <class R>
struct Walker : Place<R> {
  using Place<R>::Place;
  auto arguments() { return std::tuple(&at); }
  typename Kind<R>::Entry *at = this->entry;
};
struct KeyOut {
  explicit KeyOut(auto &) {}
  auto arguments() { return std::tuple(&key, &length); }
  const char *key = "stale";
  int64_t length = -1;
};
// Half of them are the value that they stand for, and the others greater by 1, as comparers want it.
inline constexpr auto draw_wanted = [](auto &world) {
  const Place<mub_lists> place(world);
  const uint64_t value = place.entry != nullptr ? place.entry->value : 77;
  return value + static_cast<uint64_t>(world.program.below(2));
};
using Wanted = Drawn<uint64_t, draw_wanted>;
struct Text : ByteKey<mub_list> {
  using ByteKey::ByteKey;
  auto arguments() const { return std::tuple(data, length); }
};
// Only its lowest byte counts.
inline constexpr auto draw_separator = [](auto &world) {
  return "abx1"[world.program.below(4)] - 0x100 * static_cast<int>(world.program.below(3));
};
using Separator = Drawn<int, draw_separator>;
struct StringOut : Other<mub_string, mub_string_init, mub_string_term> {
  explicit StringOut(auto &world) : before(static_cast<size_t>(world.program.below(40)), 'x') {
    fill(record);
  }
  void fill(mub_string &string) const {
    mub_string_append(&string, before.data(), static_cast<int64_t>(before.size()));
  }
  std::string before;
};

// ---- operations

// A new value is a block, or 0; the other additions give the entry, or the list.
template <class Op, class R>
void expect_added(WorldOf<R> &world, Slot<R> &slot, const auto &...args) {
  const auto result = result_of(args...);
  Items<false> &items = slot.content;
  Item item;
  if (const auto *key = role_of<ByteKey<R>>(args...)) item.key = key->bytes;
  if constexpr (has<Op>("_new")) {
    EXPECT_EQ(seen, role_of<Init>(args...)->is_given && result != 0 ? Words{result} : Words());
    EXPECT_TRUE(seen.empty() || out_value_seen == items.size()) << "the list is as it was";
    EXPECT_EQ(result == 0, world.failed || !slot.has_values);
    const bool is_added = slot.record.count > static_cast<int64_t>(items.size());
    EXPECT_TRUE(is_added || world.failed);
    if (!is_added) return;
    item.value = result;
  } else {
    item.value = role_of<Value<R>>(args...)->word;
    EXPECT_EQ(result == nullptr, world.failed);
    if (result == nullptr) return world.give_back(slot, item.value);
    if constexpr (kIsUnrolled<R>) {
      EXPECT_EQ(result, &slot.record);
    } else {
      item.entry = result;
    }
  }
  const auto *place = role_of<Place<R>>(args...);
  const bool is_before = has<Op>("head") || has<Op>("before");
  const bool is_beside = place != nullptr && place->entry != nullptr;
  const size_t index = is_beside ? place->index + (is_before ? 0 : 1) : is_before ? 0 : items.size();
  items.insert(items.at(index), item);
}

// Reads, and removals, at an end or a place.
template <class Op, class R>
void expect_read(WorldOf<R> &world, Slot<R> &slot, const auto &...args) {
  const auto result = result_of(args...);
  Items<false> &items = slot.content;
  const auto item_at = [&](size_t index) { return index < items.size() ? items[index] : Item(); };
  const auto *place = role_of<Place<R>>(args...);
  const size_t index = place != nullptr ? place->index : has<Op>("tail") ? items.size() - 1 : 0;
  const Item item = item_at(index);
  if constexpr (has<Op>("_position")) {
    EXPECT_EQ(result, item.entry);
  } else {
    EXPECT_EQ(result, item.value);
  }
  if (const auto *out = role_of<KeyOut>(args...)) {
    EXPECT_EQ(out->length, static_cast<int64_t>(item.key.size()));
    EXPECT_TRUE(index < items.size() || out->key == nullptr);
    EXPECT_EQ(std::string_view(out->key, item.key.size()), item.key);
  }
  if (const auto *walker = role_of<Walker<R>>(args...)) {
    const bool stays = walker->entry == nullptr;
    EXPECT_EQ(walker->at, stays ? nullptr : item_at(has<Op>("next") ? index + 1 : index - 1).entry);
  }
  if (!has<Op>("remove") || index >= items.size()) return;
  if constexpr (has<Op>("remove_at")) {
    EXPECT_EQ(place->entry->value, 0u) << "cleared in the block";
  }
  world.give_back(slot, item.value);
  items.erase(items.at(index));
}

template <class R>
void expect_found(const Slot<R> &slot, const auto &...args) {
  const auto *key = role_of<ByteKey<R>>(args...);
  const auto *wanted = role_of<Wanted>(args...);
  const auto *comparer = role_of<AnyComparer>(args...);
  const auto is_wanted = [&](const Item &item) {
    return key != nullptr ? item.key == key->bytes
                          : item.value + (comparer != nullptr ? 1 : 0) == wanted->value;
  };
  const auto found = std::ranges::find_if(slot.content, is_wanted);
  const bool is_found = found != slot.content.end() && (comparer == nullptr || comparer->is_given);
  EXPECT_EQ(result_of(args...), is_found ? found->entry : nullptr);
}

// Copies of a list's items, which may be its own, are at an end. No block is in two places: values that are
// blocks are cleared in the copies.
template <class Op, class R>
void expect_list_added(WorldOf<R> &world, Slot<R> &slot, Items<false> added) {
  if (world.failed) return;
  auto *entry = has<Op>("head") ? slot.record.head : slot.record.tail;
  for (size_t i = 1; i < added.size() && entry != nullptr && has<Op>("tail"); ++i) entry = entry->prev;
  for (Item &item : added) {
    ASSERT_TRUE(entry != nullptr && entry->value == item.value);
    if (slot.has_values) entry->value = item.value = 0;
    item.entry = std::exchange(entry, entry->next);
  }
  slot.content.insert(has<Op>("head") ? slot.content.begin() : slot.content.end(), added.begin(),
                      added.end());
}

template <class Op, class R>
void check(Op, WorldOf<R> &world, Self<R> &self, const auto &...args) {
  if constexpr (has<Op>("_list")) {
    expect_list_added<Op>(world, self.slot, role_of<Peer<R>>(args...)->slot.content);
  } else if constexpr (has<Op>("add") || has<Op>("insert")) {
    expect_added<Op>(world, self.slot, args...);
  } else if constexpr (has<Op>("find")) {
    expect_found(self.slot, args...);
  } else {
    expect_read<Op>(world, self.slot, args...);
  }
}

// Entries go back to their pool, and the list still refers to them.
template <class R, class F>
void by_hand(OneOf<op::remove_all_entry_, op::free_all_entry_>, WorldOf<R> &world, F empty) {
  Self<R> self(world);
  const Free release(world);
  R &list = self.slot.record;
  const R before = list;
  bool returns_owned = false;
  if constexpr (std::is_invocable_v<F, R *, mub_free_fn>) {
    empty(&list, std::get<0>(release.arguments()));
    expect_released(self.slot, values_of(self.slot.content), release);
  } else {
    for (const Item &item : self.slot.content) world.give_back(self.slot, item.value);
    empty(&list);
    returns_owned = std::is_same_v<R, mub_lists>;
  }
  EXPECT_TRUE(list.head == before.head && list.tail == before.tail && list.count == before.count);
  const bool has_none = list.count == 0 || returns_owned;
  EXPECT_TRUE(!self.slot.owns_entries() || (list.entry_pool->live_count == 0) == has_none);
  list.head = list.tail = nullptr;
  list.count = 0;
  self.slot.content.clear();
  drop_all(world, self.slot, Functions<R>::remove_all_);
}
// The tail block alone.
template <class F>
void by_hand(op::free_array_, WorldOf<mub_listx> &world, F free_array) {
  Self<mub_listx> self(world);
  const Free release(world);
  mub_listx_block *block = self.slot.record.tail;
  if (block == nullptr) return;
  Items<false> &items = self.slot.content, freed;
  freed.assign(items.end() - block->count, items.end());
  free_array(&self.slot.record, block, std::get<0>(release.arguments()));
  expect_released(self.slot, values_of(freed), release);
  std::fill_n(block->values, block->count, 0);
  for (size_t i = items.size() - freed.size(); i < items.size(); ++i) items[i].value = 0;
}

template <class F>
void by_hand(op::adjust_t_, WorldOf<mub_list> &world, F adjust) {
  Self<mub_list> self(world);
  mub_list &list = self.slot.record;
  std::vector<Offset> offsets;
  for (auto *entry = list.head; entry != nullptr; entry = entry->next)
    offsets.push_back({&entry->key_offset, entry->key_length});
  expect_lowered(world.program, list.keys, offsets,
                 [&](uint32_t offset, int64_t length) { adjust(&list, offset, length); });
}

void check(op::from_string_, WorldOf<mub_list> &world, Self<mub_list> &self, Separator &separator, Text &text,
           None) {
  if (world.failed) return;
  std::string bytes = text.bytes;
  for (size_t start = 0, end; start < bytes.size(); start = end + 1) {
    end = std::min(bytes.find(static_cast<char>(separator.value), start), bytes.size());
    mub_char piece = {&bytes[start], static_cast<int64_t>(end - start)};
    mub_char_trim(&piece);
    if (end == bytes.size() && piece.length == 0) break;
    self.slot.content.push_back({.key = std::string(piece.data, static_cast<size_t>(piece.length))});
  }
}
// The string grows as if it was first given room for all.
void check(op::to_string_, WorldOf<mub_list> &world, Self<mub_list> &self, Separator &separator,
           StringOut &out, None) {
  std::string joined;
  for (const Item &item : self.slot.content)
    joined += (joined.empty() ? "" : std::string(1, static_cast<char>(separator.value))) + item.key;
  Other<mub_string, mub_string_init, mub_string_term> expected;
  out.fill(expected.record);
  if (!world.failed) {
    const mub_list &list = self.slot.record;
    mub_string_shrink(&expected.record, 0);
    mub_string_expand(&expected.record, list.keys.length + std::max<int64_t>(list.count - 1, 0));
    mub_string_append(&expected.record, joined.data(), static_cast<int64_t>(joined.size()));
  }
  EXPECT_EQ(mub_string_compare(&expected.record, out.record.data, out.record.length), 0);
  EXPECT_EQ(out.record.capacity, expected.record.capacity);
}

}  // namespace mub_test

#include "list_steps.inc"
