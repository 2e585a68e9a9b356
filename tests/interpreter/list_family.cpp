// Lists under programs: see links.h.
#include "list_ops.inc"

#include "interpreter/links.h"
#include "mub.h"

namespace mub_test {

// role %r_entry \*\* position = Walker<%s>
// role (const )?%r_entry \* position = Position<%s>
// role const char \*\* key;int64_t \* length = KeyOut
// role int separator = Separator
// role const char \* text;int64_t length = Text<%s>
// role mub_string \* string = StringOut

// What the three kinds share.
template <class R, class E, auto kAddTail, auto kRemoveHead, auto... kFunctions>
struct ListKind : LinkKind<R, E, 0, kFunctions...> {
  static constexpr auto add_tail = kAddTail;
  static constexpr auto remove_head = kRemoveHead;
  static void read(const R &list, Items<0> &content) {
    E *before = nullptr;
    for (E *entry = list.head; entry != nullptr; before = entry, entry = entry->next) {
      ASSERT_EQ(entry->prev, before);
      ASSERT_LT(static_cast<int64_t>(content.size()), list.count);
      ASSERT_NO_FATAL_FAILURE(Kind<R>::read_entry(list, *entry, content));
    }
    ASSERT_EQ(list.tail, before);
  }
  static Words values_of(const Items<0> &content) {
    Words values;
    for (const Item &item : content) {
      if (item.value != 0) values.push_back(item.value);
    }
    return values;
  }
};

// The bytes of a list's keys; nothing when it has none yet.
std::string_view stored_keys(const mub_list &list) {
  const auto length = static_cast<size_t>(list.keys.data != nullptr ? list.keys.length : 0);
  return {reinterpret_cast<const char *>(list.keys.data), length};
}
// Some bytes with an explicit length, up to their NUL, as NULL, or as a part of the list's own keys.
struct BytesArgument {
  template <class W>
  explicit BytesArgument(W &world) {
    const auto how = world.program.below(6);
    for (auto left = world.program.below(12); left > 0; --left) bytes += "ab ,\t\0,a"[world.program.below(8)];
    data = bytes.c_str();
    if (how < 2) {
      const std::string_view keys = how == 0 ? stored_keys(world.self->record) : std::string_view();
      const std::string_view part = keys.substr(std::min(bytes.size() / 4, keys.size()), 40);
      bytes = part;
      data = part.data();
    }
    if (how == 2) bytes.resize(std::strlen(data));
    length = how == 2 ? -1 : static_cast<int64_t>(bytes.size());
  }
  BytesArgument(const BytesArgument &) = delete;
  auto arguments() const { return std::tuple(data, length); }
  bool is_of(const Item &item) const { return item.key == bytes; }
  std::string bytes;
  const char *data;
  int64_t length;
};
template <class R>
struct Key : Kind<R>::KeyArgument {
  using Kind<R>::KeyArgument::KeyArgument;
};
template <class R>
using Text = Key<R>;

template <>
struct Kind<mub_list>
    : ListKind<mub_list, mub_list_entry, mub_list_add_tail, mub_list_remove_head, mub_list_init,
               mub_list_term, mub_list_remove_all, mub_list_free_all, mub_list_entry_new> {
  static constexpr bool kKeepsValues = true;
  using KeyArgument = BytesArgument;
  static void read(const mub_list &list, Items<0> &content) {
    ASSERT_NO_FATAL_FAILURE(ListKind::read(list, content));
    size_t bytes = 0;
    for (const Item &item : content) bytes += item.key.size();
    ASSERT_EQ(static_cast<int64_t>(bytes), list.keys.length) << "the store has the bytes of the keys alone";
  }
  static void read_entry(const mub_list &list, Entry &entry, Items<0> &content) {
    const std::string_view keys = stored_keys(list);
    const std::string key(entry.key_length == 0 ? "" : keys.substr(entry.key_offset, entry.key_length));
    content.push_back({&entry, entry.value, key});
  }
};

template <>
struct Kind<mub_lists>
    : ListKind<mub_lists, mub_lists_entry, mub_lists_add_tail, mub_lists_remove_head, mub_lists_init,
               mub_lists_term, mub_lists_remove_all, mub_lists_free_all, mub_lists_entry_new> {
  // What a search wants; comparers get it with 1 added, so that they tell their arguments apart.
  struct KeyArgument {
    explicit KeyArgument(WorldOf<mub_lists> &world) {
      const Items<0> &items = world.self->content;
      const auto index = static_cast<size_t>(world.program.below(static_cast<int64_t>(items.size()) + 1));
      wanted = index < items.size() ? items[index].value : 77;
    }
    auto arguments() const { return std::tuple(wanted + 1); }
    bool is_of(const Item &item) const { return item.value == wanted; }
    uint64_t wanted;
    std::string bytes;
  };
  static void read_entry(const mub_lists &, Entry &entry, Items<0> &content) {
    content.push_back({&entry, entry.value});
  }
};
template <>
inline constexpr mub_compare_fn kCompare<mub_compare_fn> =
    [](uint64_t value, uint64_t key) { return value + 1 == key ? 0 : -1; };
template <>
inline constexpr mub_compare_item_fn kCompare<mub_compare_item_fn> =
    [](uint64_t key, uint64_t value, uint64_t context) {
      return value + 1 == key && context == kContext ? 0 : 1;
    };

template <>
struct Kind<mub_listx>
    : ListKind<mub_listx, mub_listx_block, mub_listx_add_tail, mub_listx_remove_head, mub_listx_init,
               mub_listx_term, mub_listx_remove_all, mub_listx_free_all, mub_listx_entry_new> {
  static constexpr bool kKeepsValues = true;
  using KeyArgument = Kind<mub_lists>::KeyArgument;
  static void read_entry(const mub_listx &, Entry &block, Items<0> &content) {
    ASSERT_TRUE(block.count >= 1 && block.count <= 32);
    for (int64_t i = 0; i < block.count; ++i) content.push_back({nullptr, block.values[i]});
  }
  static int64_t entries_of(const Slot<mub_listx> &slot) {
    int64_t blocks = 0;
    for (const Entry *block = slot.record.head; block != nullptr; block = block->next) ++blocks;
    return blocks;
  }
};

// ---- roles

template <class R>
struct Position {
  explicit Position(WorldOf<R> &world) {
    const Items<0> &items = world.self->content;
    index = static_cast<size_t>(world.program.below(static_cast<int64_t>(items.size()) + 1));
    entry = static_cast<typename Kind<R>::Entry *>(index < items.size() ? items[index].entry : nullptr);
  }
  auto arguments() const { return std::tuple(entry); }
  size_t index;
  typename Kind<R>::Entry *entry;
};
template <class R>
struct Walker : Position<R> {
  explicit Walker(WorldOf<R> &world)
      : Position<R>(world), at(std::make_unique<typename Kind<R>::Entry *>(this->entry)) {}
  auto arguments() const { return std::tuple(at.get()); }
  std::unique_ptr<typename Kind<R>::Entry *> at;
};
struct KeyOut : std::unique_ptr<std::pair<const char *, int64_t>> {
  template <class W>
  explicit KeyOut(W &) : unique_ptr(new std::pair<const char *, int64_t>("stale", -1)) {}
  auto arguments() const { return std::tuple(&get()->first, &get()->second); }
};
struct Separator {
  template <class W>
  explicit Separator(W &world) : separator(",,a"[world.program.below(3)]) {
    passed = separator - 0x100 * static_cast<int>(world.program.below(3));
  }
  auto arguments() const { return std::tuple(passed); }
  char separator;
  int passed;
};
struct StringOut : Copies<mub_string, mub_string_init, mub_string_term> {
  template <class W>
  explicit StringOut(W &world) {
    const std::string content(static_cast<size_t>(world.program.below(40)), 'x');
    for (mub_string &each : copies)
      mub_string_append(&each, content.data(), static_cast<int64_t>(content.size()));
  }
};

// ---- operations

template <class Op, class R, class... Args>
void expect_added(WorldOf<R> &world, Slot<R> &slot, const Args &...args) {
  const auto &result = result_of(args...);
  const auto *value = role_of<Value<R>>(args...);
  const auto *position = role_of<Position<R>>(args...);
  Items<0> &items = slot.content;
  Item item;
  if constexpr (has<Op>("_new")) {
    const bool is_added = slot.record.count > static_cast<int64_t>(items.size());
    EXPECT_EQ(result == 0, world.failed || !slot.has_values);
    EXPECT_TRUE(is_added || world.failed);
    EXPECT_EQ(seen, role_of<Init>(args...)->is_given && result != 0 ? Words{result} : Words());
    EXPECT_TRUE(seen.empty() || out_value_seen == items.size());
    if (!is_added) return;
    item.value = result;
  } else {
    EXPECT_EQ(result == nullptr, world.failed);
    if (result == nullptr) return world.give_back(slot, value->word);
    item.value = value->word;
    if constexpr (std::is_same_v<decltype(result), R *const &>) {
      EXPECT_EQ(result, &slot.record);
    } else {
      item.entry = result;
    }
  }
  if (const auto *key = role_of<Key<R>>(args...)) item.key = key->bytes;
  const bool before = has<Op>("head") || has<Op>("before");
  const bool beside = position != nullptr && position->entry != nullptr;
  const size_t index = beside ? position->index + (before ? 0 : 1) : before ? 0 : items.size();
  items.insert(items.at(index), item);
}

// Reads, and removals.
template <class Op, class R, class... Args>
void expect_read(WorldOf<R> &world, Slot<R> &slot, const Args &...args) {
  const auto &result = result_of(args...);
  const auto *position = role_of<Position<R>>(args...);
  Items<0> &items = slot.content;
  const auto item_at = [&](size_t index) { return index < items.size() ? items[index] : Item(); };
  const size_t index = position != nullptr ? position->index : has<Op>("tail") ? items.size() - 1 : 0;
  const Item item = item_at(index);
  if constexpr (has<Op>("_position")) {
    EXPECT_EQ(result, item.entry);
  } else {
    EXPECT_EQ(result, item.value);
    if (const auto *key = role_of<KeyOut>(args...)) {
      EXPECT_EQ((*key)->second, static_cast<int64_t>(item.key.size()));
      EXPECT_TRUE(index < items.size() || (*key)->first == nullptr);
      EXPECT_EQ(std::string_view((*key)->first, item.key.size()), item.key);
    }
    if (const auto *walker = role_of<Walker<R>>(args...)) {
      const bool stays = walker->entry == nullptr;
      EXPECT_EQ(*walker->at, stays ? nullptr : item_at(has<Op>("next") ? index + 1 : index - 1).entry);
    }
  }
  if (!has<Op>("remove") || index >= items.size()) return;
  if constexpr (has<Op>("remove_at")) {
    EXPECT_EQ(position->entry->value, 0u) << "cleared in the block";
  }
  world.give_back(slot, item.value);
  items.erase(items.at(index));
}

template <class R>
void *first_of(const Slot<R> &slot, const Key<R> &key) {
  const auto is_wanted = [&](const Item &item) { return key.is_of(item); };
  const auto found = std::find_if(slot.content.begin(), slot.content.end(), is_wanted);
  return found == slot.content.end() ? nullptr : found->entry;
}
template <class R, class F>
void by_hand(op::find_at_, WorldOf<R> &world, F find) {
  Self<R> self(world);
  Key<R> key(world);
  world.read_by_all([&] { EXPECT_EQ(find(&self.slot.record, key.wanted), first_of(self.slot, key)); });
}

// Puts a copy of a list's items, which may be its own, at an end. No block is in two places: values that
// are blocks are cleared in the copies.
template <class R>
void expect_list_added(WorldOf<R> &world, Slot<R> &slot, bool at_head, Items<0> added) {
  if (world.failed) return;
  auto *entry = at_head ? slot.record.head : slot.record.tail;
  for (size_t i = 1; i < added.size() && entry != nullptr && !at_head; ++i) entry = entry->prev;
  for (Item &item : added) {
    ASSERT_TRUE(entry != nullptr && entry->value == item.value);
    if (slot.has_values) entry->value = item.value = 0;
    item.entry = std::exchange(entry, entry->next);
  }
  slot.content.insert(at_head ? slot.content.begin() : slot.content.end(), added.begin(), added.end());
}

template <class Op, class R, class... Args>
void check(Op, WorldOf<R> &world, Self<R> &self, const Args &...args) {
  if constexpr (has<Op>("_list")) {
    expect_list_added(world, self.slot, has<Op>("head"), role_of<Peer<R>>(args...)->slot.content);
  } else if constexpr (has<Op>("add") || has<Op>("insert")) {
    expect_added<Op>(world, self.slot, args...);
  } else if constexpr (has<Op>("find")) {
    const auto *comparer = role_of<AnyComparer>(args...);
    const bool finds = comparer == nullptr || comparer->is_given;
    EXPECT_EQ(result_of(args...), finds ? first_of(self.slot, *role_of<Key<R>>(args...)) : nullptr);
  } else {
    expect_read<Op>(world, self.slot, args...);
  }
}

// A block that the caller has taken is left alone, whatever is added and removed.
template <class R, class F>
void by_hand(op::entry_new_, WorldOf<R> &world, F entry_new) {
  Self<R> self(world);
  auto *entry = world.call([&] { return entry_new(&self.slot.record); });
  EXPECT_EQ(entry == nullptr, world.failed);
  if (entry == nullptr) return;
  const auto has_only = [&](char byte) {
    return std::string_view(reinterpret_cast<char *>(entry), sizeof *entry) ==
           std::string(sizeof *entry, byte);
  };
  EXPECT_TRUE(has_only('\0'));
  std::memset(entry, 'w', sizeof *entry);
  const int64_t adds = world.program.below(3);
  for (int64_t i = world.program.below(120); i > 0 && !::testing::Test::HasFailure(); --i) {
    if (world.program.below(3) > adds) {
      step<op::remove_head_, Self<R>>(world, Kind<R>::remove_head);
    } else if constexpr (std::is_same_v<R, mub_list>) {
      step<op::add_tail_, Self<R>, Key<R>, Value<R>>(world, Kind<R>::add_tail);
    } else {
      step<op::add_tail_, Self<R>, Value<R>>(world, Kind<R>::add_tail);
    }
  }
  EXPECT_TRUE(has_only('w'));
  mub_pool_free(self.slot.record.entry_pool, entry);
}

// Entries have gone back to their pool, and the list still refers to them.
template <class R>
void leave_entries(WorldOf<R> &world, Slot<R> &slot, const R &before, bool gives_owned) {
  R &list = slot.record;
  EXPECT_TRUE(list.head == before.head && list.tail == before.tail && list.count == before.count);
  const bool has_none = list.count == 0 || gives_owned;
  EXPECT_TRUE(!slot.owns_entries() || (list.entry_pool->live_count == 0) == has_none);
  list.head = list.tail = nullptr;
  list.count = 0;
  slot.content.clear();
  drop_all(world, slot, Kind<R>::remove_all);
}
template <class R, class F>
void by_hand(op::remove_all_entry_, WorldOf<R> &world, F remove_all_entry) {
  Self<R> self(world);
  for (const Item &item : self.slot.content) world.give_back(self.slot, item.value);
  const R before = self.slot.record;
  remove_all_entry(&self.slot.record);
  leave_entries(world, self.slot, before, std::is_same_v<R, mub_lists>);
}
template <class R, class F>
void by_hand(op::free_all_entry_, WorldOf<R> &world, F free_all_entry) {
  Self<R> self(world);
  Free release(world);
  const R before = self.slot.record;
  free_all_entry(&self.slot.record, std::get<0>(release.arguments()));
  expect_released(self.slot, Kind<R>::values_of(self.slot.content), release);
  leave_entries(world, self.slot, before, false);
}
// The tail block alone.
template <class F>
void by_hand(op::free_array_, WorldOf<mub_listx> &world, F free_array) {
  Self<mub_listx> self(world);
  Free release(world);
  mub_listx_block *block = self.slot.record.tail;
  if (block == nullptr) return;
  Items<0> &items = self.slot.content, freed;
  freed.assign(items.end() - block->count, items.end());
  free_array(&self.slot.record, block, std::get<0>(release.arguments()));
  expect_released(self.slot, Kind<mub_listx>::values_of(freed), release);
  for (size_t i = 0; i < freed.size(); ++i) {
    EXPECT_EQ(std::exchange(block->values[i], 0), freed[i].value);
    items[items.size() - freed.size() + i].value = 0;
  }
}

template <class R>
void check(op::swap_, WorldOf<R> &, Self<R> &self, Peer<R> &peer, None) {
  self.slot.swap_models(peer.slot);
}

// Offsets have 32 bits; that of an empty key exactly at a cut stays, and a key outside the store reads as
// empty.
template <class F>
void by_hand(op::adjust_t_, WorldOf<mub_list> &world, F adjust) {
  Self<mub_list> self(world);
  mub_list &list = self.slot.record;
  const auto from = static_cast<uint32_t>(world.program.below(20));
  const int64_t length = world.program.near(10);
  std::vector<mub_list_entry> before;
  for (auto *entry = list.head; entry != nullptr; entry = entry->next) before.push_back(*entry);
  adjust(&list, from, length);
  auto *entry = list.head;
  for (const mub_list_entry &old : before) {
    const bool moves = old.key_offset > from || (old.key_offset == from && old.key_length != 0);
    EXPECT_EQ(entry->key_offset, moves ? old.key_offset - static_cast<uint32_t>(length) : old.key_offset);
    const char *key;
    int64_t key_length;
    mub_list_get_at(&list, entry, &key, &key_length);
    const bool is_read = int64_t{entry->key_offset} + old.key_length <= list.keys.capacity;
    EXPECT_EQ(key_length, is_read ? old.key_length : 0);
    entry->key_offset = old.key_offset;
    entry = entry->next;
  }
}

void check(op::from_string_, WorldOf<mub_list> &world, Self<mub_list> &self, Separator &separator,
           Text<mub_list> &text, None) {
  if (world.failed) return;
  std::string left = text.bytes;
  for (bool is_last = left.empty(); !is_last;) {
    const size_t end = left.find(separator.separator);
    std::string piece = left.substr(0, end);
    piece.erase(0, piece.find_first_not_of(" \t"));
    if (!piece.empty() && piece[0] == '\0') piece.clear();
    piece.erase(piece.find_last_not_of(std::string_view(" \t\0", 3)) + 1);
    is_last = end == std::string::npos;
    if (!is_last || !piece.empty()) self.slot.content.push_back({nullptr, 0, piece});
    if (!is_last) left.erase(0, end + 1);
    is_last |= left.empty();
  }
}
// The string grows as if it was first given room and then the pieces.
void check(op::to_string_, WorldOf<mub_list> &world, Self<mub_list> &self, Separator &separator,
           StringOut &out, None) {
  mub_string *literal = &out.copies[1];
  if (!world.failed) {
    mub_string_shrink(literal, 0);
    const mub_list &list = self.slot.record;
    if (list.count > 0) mub_string_expand(literal, list.keys.length + list.count - 1);
    for (const Item &item : self.slot.content) {
      if (literal->length > 0) mub_string_append_char(literal, separator.separator);
      mub_string_append(literal, item.key.data(), static_cast<int64_t>(item.key.size()));
    }
  }
  EXPECT_EQ(mub_string_compare(literal, out.copies[0].data, out.copies[0].length), 0);
  EXPECT_EQ(literal->capacity, out.copies[0].capacity);
}

}  // namespace mub_test

#include "list_steps.inc"
