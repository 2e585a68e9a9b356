// Programs for arrays: worlds of three records of a kind. The model of a record is its whole table, spare
// slots included. Drawn arguments are stored in the world, where the checks of all kinds find them.
#include <climits>
#include <set>

#include "arrays_ops.inc"
#include "interpreter/machine.h"
#include "interpreter/map_keys.h"
#include "support/pools.h"

namespace mub_test {

// role const char \*\* key;int64_t \* length = WorldOf<%s>::KeyOut
// role uint(32|64)_t \* key = WorldOf<%s>::KeyOut
// role int64_t index = Drawn<%t, &WorldOf<%s>::draw_index>
// role int64_t (wanted|n) = Drawn<%t, &WorldOf<%s>::draw_room>
// role int (ascending|unique|separator) = Drawn<%t, &WorldOf<%s>::draw_%n>
// role uint64_t (context|extra) = Drawn<%t, &WorldOf<%s>::draw_%n>
// role mub_compare_\w*fn compare = Drawn<AnyComparator, &WorldOf<%s>::draw_%n>
// role const char \* text;int64_t length = Drawn<std::tuple<const char *, int64_t>, &WorldOf<%s>::draw_text>
// role mub_string \* string = StringOut
// role uint64_t \* items;int64_t count = Words

// ---- comparators, which treat all blocks as equal

uint64_t rank_of(uint64_t value) { return std::min<uint64_t>(value, 40); }
int by_rank(uint64_t a, uint64_t b) {
  if (rank_of(a) == rank_of(b)) return 0;
  return rank_of(a) < rank_of(b) ? INT_MIN : INT_MAX;
}
int by_whim(uint64_t a, uint64_t b) { return static_cast<int>((5 * rank_of(a) + rank_of(b)) % 3) - 1; }

// Drawn in this step.
mub_compare_fn order;
uint64_t context, extra;
int compare_items(uint64_t a, uint64_t b, uint64_t own) {
  EXPECT_EQ(own, context);
  return order(a, b);
}
int compare_in_context(uint64_t own, uint64_t a, uint64_t b, uint64_t own_extra) {
  EXPECT_TRUE(own == context && own_extra == extra);
  return order(a, b);
}
struct AnyComparator {
  operator mub_compare_fn() const { return order; }
  operator mub_compare_item_fn() const { return order == nullptr ? nullptr : compare_items; }
  operator mub_compare_context_fn() const { return order == nullptr ? nullptr : compare_in_context; }
};

// ---- models

// A slot. Keys are bytes or numbers; bare items and words are their own keys.
struct Item {
  std::string bytes = {};
  uint64_t number = 0;
  uint64_t value = 0;
  auto key() const { return std::tie(bytes, number); }
  auto operator<=>(const Item &) const = default;
};
struct Table {
  std::vector<Item> slots = {};
  int64_t count = 0;  // exceeds the number of slots in an incomplete clone

  int64_t capacity() const { return std::ssize(slots); }
  int64_t used() const { return std::min(count, capacity()); }
  Item &operator[](int64_t index) { return slots[static_cast<size_t>(index)]; }
  auto begin() { return slots.begin(); }
  auto end() { return slots.begin() + used(); }
  void resize(int64_t capacity) { slots.resize(static_cast<size_t>(capacity)); }
  void expand(int64_t wanted, int64_t least) {
    if (capacity() < least) resize(least);
    const int64_t grown = std::max(capacity() + std::max<int64_t>(count / 2, 8), wanted);
    if (capacity() < wanted) resize((grown + 3) / 4 * 4);
  }
};

// The copy of a block in the clone of its pool; 0 if the value is not a block.
uint64_t copied_block(const mub_pool &pool, const mub_pool &copy, uint64_t block) {
  for (int64_t i = 0; i < pool.chunk_count; ++i) {
    const uint64_t offset = block - reinterpret_cast<uintptr_t>(pool.chunks[i]);
    const auto bytes = static_cast<uint64_t>(pool.blocks_per_chunk * pool.block_size);
    if (offset < bytes) return reinterpret_cast<uintptr_t>(copy.chunks[i]) + offset;
  }
  return 0;
}

// ---- worlds

template <class R>
struct WorldOf : World {
  static constexpr bool kHasBytes = std::is_same_v<R, mub_array>, kIsItems = std::is_same_v<R, mub_arrays>;
  static constexpr bool kIsWords = std::is_same_v<R, mub_arrayt>, kIsBare = kIsItems || kIsWords;
  // Integer keys are compared by the sign of their difference, which has this width.
  static constexpr bool kHasNarrowKeys = std::is_same_v<R, mub_arrayd> || kIsWords;
  using Difference = std::conditional_t<kHasNarrowKeys, int32_t, int64_t>;
  using Number = std::make_unsigned_t<Difference>;
  struct Slot {
    R record;
    Table table = {};
    mub_pool *pool = nullptr;  // owned, external (the world's), or none
    void add_own_pools(std::vector<mub_pool *> &pools) const {
      if (record.own_pool != 0) pools.push_back(pool);
    }
  };
  struct KeyOut {
    explicit KeyOut(WorldOf &world) { world.key_out = this; }
    auto arguments() {
      if constexpr (kHasBytes) return std::tuple(&data, &length);
      if constexpr (!kHasBytes) return std::tuple(&number);
    }
    Item item() const { return {data == nullptr ? "" : std::string(data, clipped(length)), number}; }
    Number number = kHasBytes ? 0 : 77;
    const char *data = kHasBytes ? "not set" : nullptr;
    int64_t length = 7;
  };
  static constexpr int kSlots = 3;
  static constexpr int64_t kLeast = kIsWords ? 4 : 0;

  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (auto &slot : slots) start(slot);
    mub_pool_new(&users[0]);
  }
  ~WorldOf() {
    for (auto &slot : slots) Functions<R>::term_(&slot.record);
  }
  // In records with the external pool, each block has one owner, which may release it. Other values become 0.
  void clear_shared_values() {
    std::set<uint64_t> met;
    for (Slot &slot : slots) {
      for (int64_t i = 0; slot.pool == &pool && i < slot.table.capacity(); ++i) {
        Item &own = slot.table[i];
        if (i < slot.table.used() && lent.contains(own.value) && met.insert(own.value).second) continue;
        own.value = 0;
        if constexpr (kIsItems) slot.record.items[i] = own.number = 0;
        if constexpr (requires { slot.record.entries[i].value; }) slot.record.entries[i].value = 0;
      }
    }
  }
  bool owns_pool(const Slot &slot) const { return slot.pool != nullptr && slot.pool != &pool; }
  void start(Slot &slot) {
    slot = {};
    std::memset(&slot.record, kIsWords ? 0 : 0xA5, sizeof slot.record);
    slot.table.resize(kLeast);
    if constexpr (kIsWords) {
      Functions<R>::init_(&slot.record);
    } else {
      const int64_t pools = program.below(3);
      call([&] { Functions<R>::init_(&slot.record, pools == 2 ? 7 : 0); });
      EXPECT_TRUE(failed || (pools == 2) == (slot.record.pool != nullptr));
      if (pools == 1) slot.record.pool = &pool;
      slot.pool = slot.record.pool;
      if (owns_pool(slot)) slot.pool->block_size = 8;
    }
    EXPECT_EQ(slot.record.descending, 0);
    slot.record.descending = program.one_in(2) ? 7 : 0;
  }
  void end(Slot &slot) {
    Functions<R>::term_(&slot.record);
    EXPECT_TRUE(slot.record.count == 0 && slot.record.capacity == kLeast);
  }
  Slot &draw_self() {
    self = &slots[program.below(kSlots)];
    peer = nullptr;
    key_out = nullptr;
    item = {};
    is_measured = is_unique = false;
    order = nullptr;
    context = extra = 0;
    seen.clear();
    // Without an out value, initialisers check the count.
    out_value = reinterpret_cast<const uint64_t *>(&self->record.count);
    return *self;
  }
  static auto &slot_at(auto &array, int64_t index) {
    if constexpr (kIsWords) {
      return index < 4 ? array.inline_items[index] : array.tail[index - 4];
    } else {
      return array.entries[index];
    }
  }
  // Reads a slot; the keys of spare slots are unspecified.
  static Item read(const R &array, int64_t index) {
    if constexpr (kIsWords) {
      return {"", slot_at(array, index), slot_at(array, index)};
    } else if constexpr (kIsItems) {
      return {"", array.items[index], array.items[index]};
    } else if constexpr (kHasBytes) {
      const auto &[offset, length, value] = array.entries[index];
      return {index < array.count ? std::string(stored_keys(array.keys).substr(offset, length)) : "", 0,
              value};
    } else {
      return {"", array.entries[index].key, array.entries[index].value};
    }
  }
  void compare() {
    int64_t held = 0;
    for (const mub_pool *each : {&pool, &users[0], &users[1]}) held += mub_pool_memory_bytes(each);
    for (const Slot &slot : slots) held += Functions<R>::memory_bytes_(&slot.record);
    ASSERT_NO_FATAL_FAILURE(expect_held(held));
    for (auto *slot : {self, peer}) {
      if (slot == nullptr) continue;
      const R &record = slot->record;
      Table &table = slot->table;
      mix(record.count);
      ASSERT_EQ(record.count, table.count);
      ASSERT_NO_FATAL_FAILURE(expect_intact(Functions<R>::verify_, record));
      // A step with a failed allocation may have reserved slots and written to spare ones.
      if (failed) table.resize(record.capacity);
      ASSERT_EQ(record.capacity, table.capacity());
      size_t bytes = 0;
      for (int64_t i = 0; i < table.capacity(); ++i) {
        const Item own = read(record, i);
        if (i >= table.used()) table[i].bytes.clear();
        if (i >= table.used() && failed) table[i] = own;
        ASSERT_EQ(table[i], own) << "slot " << i;
        bytes += own.bytes.size();
      }
      if constexpr (kHasBytes) {
        ASSERT_EQ(bytes, stored_keys(record.keys).size()) << "bytes of no key";
      }
      if constexpr (!kIsWords) {
        ASSERT_TRUE(record.pool == slot->pool && record.own_pool == owns_pool(*slot));
      }
    }
    ASSERT_EQ(pool.live_count, std::ssize(lent));
    clear_shared_values();
  }

  int64_t draw_index() {
    index = program.near(program.one_in(4) ? self->record.capacity : self->record.count);
    // The keys of spare slots are unspecified.
    if (kHasBytes && index >= self->table.count) index = INT64_MAX;
    return index;
  }
  // A number of slots, or more than there can be.
  int64_t draw_room() {
    index = program.near(self->record.capacity);
    if (index > 500) index = index > INT32_MAX ? INT64_MAX - index % 8 : index % 500;
    return index;
  }
  uint64_t draw_value() {
    item.value = static_cast<uint64_t>(program.below(64));
    if (kIsWords) item.value = hard_number<uint32_t>(program.below(40)) | item.value >> 5 << 63;
    if (self->pool == &pool && item.value > 0)
      lent.insert(item.value = reinterpret_cast<uintptr_t>(mub_pool_new(&pool)));
    if (kIsBare) item.number = item.value;
    return item.value;
  }
  Number draw_key() {
    item.number =
        kIsItems ? static_cast<uint64_t>(program.below(64)) : hard_number<Number>(program.below(40));
    const int64_t used = self->table.used();
    if (used > 0 && program.one_in(2)) item.number = self->table[program.below(used)].number;
    return static_cast<Number>(item.number);
  }
  uint64_t draw_context() { return context = 0xC0FFEE; }
  uint64_t draw_extra() { return extra = 0xFACE; }
  int draw_ascending() { return (is_ascending = program.one_in(2)) ? 7 : 0; }
  int draw_unique() { return (is_unique = program.one_in(2)) ? 7 : 0; }
  int draw_separator() { return program.one_in(2) ? ',' : 0x700 | ','; }
  AnyComparator draw_compare() {
    static constexpr mub_compare_fn kOrders[] = {nullptr, by_rank, by_rank, by_whim};
    order = kOrders[program.below(4)];
    return {};
  }
  // A text to be split, which may be in the array's own keys or spare slots. A length below 1 means no text.
  std::tuple<const char *, int64_t> draw_text() {
    text.clear();
    for (int64_t left = program.below(program.one_in(4) ? 400 : 12); left > 0; --left)
      text += ",, \t\n019-ax"[program.below(11)];
    std::string_view passed = text;
    const bool is_own = program.one_in(4);
    if constexpr (kHasBytes) {
      if (is_own) text = passed = stored_keys(self->record.keys);
    } else if (const int64_t spare = self->table.count; is_own && spare < self->table.capacity()) {
      auto *own = &slot_at(self->record, spare);
      const int64_t run = kIsWords && spare < 4 ? 4 - spare : self->table.capacity() - spare;
      text.resize(std::min(text.size(), 8 * clipped(run)));  // slots have at least 8 bytes on every machine
      passed = {reinterpret_cast<char *>(own), text.size()};
      std::memcpy(own, text.data(), text.size());
      for (int64_t i = spare; i < spare + run; ++i) self->table[i] = read(self->record, i);
    }
    return {passed.data(), passed.empty() ? -1 : std::ssize(passed)};
  }

  // ---- checks of results, and updates of the model

  // The slot that a search finds, or -1, and the index for a new one. It is specified which of several equal
  // items is found, and also what is found in an unsorted array.
  std::pair<int64_t, int64_t> search() {
    Table &table = self->table;
    if (kIsItems && order == nullptr) return {-1, table.count};
    int64_t low = 0, high = table.used() - 1;
    while (low <= high) {
      const int64_t middle = (low + high) / 2;
      const Item &own = table[middle];
      const auto difference = static_cast<Difference>(own.number - item.number);
      int sign = kHasBytes ? own.bytes.compare(item.bytes) : difference < 0 ? -1 : difference > 0;
      if (kIsItems) sign = order(own.value, item.number);
      if (sign == 0) return {middle, -1};
      const bool goes_up = (sign < 0) == (self->record.descending == 0);
      (goes_up ? low : high) = goes_up ? middle + 1 : middle - 1;
    }
    return {-1, low};
  }
  // The slot that an operation reads or changes, or -1; not for additions.
  template <class Op>
  int64_t position() {
    Table &table = self->table;
    constexpr bool kIsEnd = named<Op>("first") || named<Op>("last");
    constexpr bool kReachesSpare = !kIsWords && !kIsEnd && !named<Op>("remove") && !named<Op>("free");
    if (kIsEnd) index = named<Op>("first") ? 0 : table.count - 1;
    if ((failed && named<Op>("set_")) || (named<Op>("entry_find") && is_measured)) return -1;
    if (named<Op>("get_") || named<Op>("_at"))
      return index >= 0 && index < (kReachesSpare ? table.capacity() : table.used()) ? index : -1;
    if (named<Op>("afind")) {
      const auto found = std::ranges::find(table, item.key(), &Item::key);
      return found == table.end() ? -1 : found - table.begin();
    }
    const auto [hit, gap] = search();
    if (!named<Op>("bfind") || hit >= 0 || (kIsItems && order == nullptr)) return hit;
    return std::min(gap, table.used() - 1);
  }
  auto *address(int64_t at) {
    if constexpr (kIsItems) {
      return at < 0 ? nullptr : self->record.items + at;
    } else {
      return at < 0 ? nullptr : self->record.entries + at;
    }
  }
  // Operations that read, replace or remove a slot.
  template <class Op, class Result>
  void expect(Op, Result result) {
    const int64_t at = position<Op>();
    const Item found = at < 0 ? Item() : self->table[at];
    if constexpr (std::is_pointer_v<Result>) {
      EXPECT_EQ(result, address(at));
    } else if constexpr (std::is_same_v<Result, uint64_t>) {
      EXPECT_EQ(result, found.value);
    } else if constexpr (!std::is_same_v<Result, None>) {
      EXPECT_EQ(result, (std::is_same_v<Result, int> ? at >= 0 : at));
    }
    EXPECT_TRUE(key_out == nullptr || key_out->item().key() == found.key());
    if constexpr (kHasBytes) {
      const bool has_key = at >= 0 && self->record.keys.data != nullptr;
      EXPECT_TRUE(key_out == nullptr || (key_out->data != nullptr) == has_key);
      EXPECT_TRUE(key_out == nullptr || has_key || key_out->length == 0);
    }
    if (at >= 0 && (named<Op>("remove") || named<Op>("free"))) cut(at);
    if (named<Op>("free")) expect_released({found.value});
    if (at < 0 || !(named<Op>("set_") || named<Op>("update"))) return;
    if (named<Op>("set_") || kIsBare) std::tie(self->table[at].bytes, self->table[at].number) = item.key();
    self->table[at].value = item.value;
  }
  void cut(int64_t at) {
    Table &table = self->table;
    if (!kIsItems) table[at] = {"", 0, kIsWords ? 0 : table[at].value};
    std::copy(table.begin() + at + 1, table.end(), table.begin() + at);
    table.count = table.used() - 1;
  }
  void expect_released(std::vector<uint64_t> values) {
    std::erase(values, 0u);
    for (const uint64_t value : values) lent.erase(self->pool == &pool ? value : 0);
    EXPECT_EQ(seen, is_callback_given ? values : std::vector<uint64_t>());
  }

  // Adds the drawn item at the record's index; -1 if that was refused.
  int64_t add(int64_t at, bool is_appended) {
    Table &table = self->table;
    if (at < 0 || (failed && self->record.count == table.count)) return -1;
    table.expand(table.count + 1, kLeast);
    at = std::min(at, table.count);
    // An empty key is only added at the end, also in place of a key for which there is no memory.
    if (kHasBytes && at < table.count && item.bytes.empty()) return -1;
    if (is_appended && failed && read(self->record, at).bytes.empty()) item.bytes.clear();
    table.slots.erase(table.begin() + table.count++);
    table.slots.insert(table.begin() + at, item);
    return at;
  }
  template <class Op, class Result>
  requires(named<Op>("append") || named<Op>("insert")) void expect(Op, Result result) {
    constexpr bool kAppends = named<Op>("append");
    Table &table = self->table;
    const uint64_t count = static_cast<uint64_t>(table.count);
    auto [hit, gap] = std::pair<int64_t, int64_t>(-1, kAppends ? table.count : index);
    if (!kAppends && !named<Op>("_at")) std::tie(hit, gap) = search();
    if (is_measured && (named<Op>("_at") || (named<Op>("entry_") && table.count > 0))) hit = gap = -1;
    uint64_t block = 0;
    if constexpr (named<Op>("_new")) {
      block = kAppends ? static_cast<uint64_t>(result) : *out_value;
      item.value = block;
      if (kIsBare) item.number = block;
    }
    const int64_t at = add(gap, kAppends);
    if constexpr (std::is_pointer_v<Result>) {
      EXPECT_EQ(result, address(hit >= 0 ? hit : at));
    } else if constexpr (std::is_same_v<Result, int>) {
      EXPECT_EQ(result, (named<Op>("_new") ? at : hit < 0));
    }
    if (!named<Op>("_new")) return;
    const bool is_taken = at >= 0 && block != 0;
    if (is_taken && self->pool == &pool) lent.insert(block);
    EXPECT_TRUE(at >= 0 || block == (hit < 0 ? 0 : table[hit].value));
    // An insertion that fails has already initialised its block.
    if (failed || (at < 0 && hit < 0)) return;
    EXPECT_EQ(is_taken, hit < 0 && self->pool != nullptr);
    EXPECT_EQ(seen, is_taken && is_callback_given ? std::vector{block} : std::vector<uint64_t>());
    EXPECT_TRUE(seen.empty() || out_value_seen == (kAppends ? count : block)) << "added too early";
  }

  void expect(op::append_array_, None) {
    Table &table = self->table;
    const int64_t count = table.count, added = peer->table.used();
    if (failed && self->record.count == count) return;
    table.expand(count + added, kLeast);
    for (int64_t i = 0; i < added; ++i) table[count + i] = peer->table[i];
    table.count += added;
  }
  void expect(op::from_string_, None) {
    expect_pieces();
    if constexpr (!kHasBytes) {
      // Spare slots may contain the text, whose bytes as numbers depend on the machine.
      self->table.resize(self->record.capacity);
      for (int64_t i = self->table.count; i < self->table.capacity(); ++i) {
        slot_at(self->record, i) = {};
        self->table[i] = {};
      }
    }
  }
  void expect_pieces() {
    if (failed && self->record.count == self->table.count) return;
    for (size_t start = 0, end; start < text.size(); start = end + 1) {
      end = std::min(text.find(',', start), text.size());
      mub_char piece = {&text[start], static_cast<int64_t>(end - start)};
      mub_char_trim(&piece);
      if (end == text.size() && piece.length == 0) break;
      item.bytes.assign(piece.data, static_cast<size_t>(piece.length));
      if (!kHasBytes) {
        const auto number = static_cast<uint64_t>(std::atoll(std::exchange(item.bytes, "").c_str()));
        item.number = kIsWords ? number : static_cast<Number>(number);
        item.value = kIsWords ? number : 0;
      }
      EXPECT_GE(add(self->table.count, true), 0) << "not all of it";
    }
  }
  // Capacity for all keys, or 5 or 9 characters per number, and the separators is reserved at once.
  void expect_joined(const mub_string &record, mub_string *expected) {
    int64_t room = std::max<int64_t>(self->table.used() - 1, 0);
    for (const Item &each : self->table) room += kHasBytes ? std::ssize(each.bytes) : kIsWords ? 8 : 4;
    if (!failed) mub_string_shrink(expected, 0);
    if (!failed) mub_string_expand(expected, room);
    for (const Item &each : self->table) {
      if (failed) break;
      const std::string piece = kHasBytes ? each.bytes : std::to_string(static_cast<int64_t>(each.number));
      if (expected->length > 0) mub_string_append_char(expected, ',');
      mub_string_append(expected, piece.data(), std::ssize(piece));
    }
    EXPECT_EQ(std::string_view(record.data, clipped(record.length)),
              std::string_view(expected->data, clipped(expected->length)));
    EXPECT_EQ(record.capacity, expected->capacity);
  }
  template <class Op>
  requires(named<Op>("_all")) void expect(Op, auto) {
    std::vector<uint64_t> values;
    for (const Item &each : self->table) values.push_back(each.value);
    if (named<Op>("free")) expect_released(values);
    if (named<Op>("entry")) return;
    self->table = {};
    EXPECT_TRUE(!owns_pool(*self) || self->pool->live_count == 0);
  }
  void expect(op::expand_, int result) {
    EXPECT_EQ(result, index <= self->table.capacity() || (index < 1000 && !failed));
    self->table.expand(result == 1 ? index : 0, kLeast);
  }
  void expect(op::shrink_, None) {
    Table &table = self->table;
    if (index < 0 || (table.capacity() == 0 && (kHasBytes || kIsItems))) return;
    const int64_t before = std::exchange(table.count, std::min(index, table.capacity()));
    ASSERT_EQ(self->record.count, table.count);
    // The keys of spare slots are unspecified.
    if (kHasBytes) self->record.count = table.count = before;
  }
  void expect(op::swap_, None) {
    std::swap(self->table, peer->table);
    if (kIsItems) std::swap(self->pool, peer->pool);
  }
  void expect(op::clone_, auto) {
    if (self == peer || (failed && kIsWords)) return;
    const bool owns = owns_pool(*self), has_copies = owns && owns_pool(*peer);
    if (!owns) peer->pool = self->pool;
    Table &copy = peer->table;
    copy.expand(self->table.capacity(), kLeast);
    copy.count = self->table.count;
    if (failed && peer->record.capacity == 0) return copy.slots.clear();
    EXPECT_TRUE(!has_copies || peer->pool->live_count == self->pool->live_count);
    // An incomplete source leaves the existing slots, but not their keys.
    if (kHasBytes && self->table.used() < copy.used()) {
      Functions<R>::shrink_(&peer->record, self->table.used());
      copy.count = self->table.used();
    }
    std::vector<uint64_t> values;
    for (int64_t i = 0; i < self->table.used(); ++i) {
      const uint64_t value = self->table[i].value;
      copy[i] = self->table[i];
      if (!owns) continue;
      copy[i].value = has_copies ? copied_block(*self->pool, *peer->pool, value) : 0;
      if (kIsBare) copy[i].number = copy[i].value;
      values.insert(values.end(), {value, copy[i].value});
    }
    EXPECT_EQ(seen, is_callback_given ? values : std::vector<uint64_t>());
  }
  void expect(op::verify_, int result) { EXPECT_EQ(result, 1); }
  void expect(op::memory_bytes_, int64_t) {}
  void expect(op::length_, int64_t result) { EXPECT_EQ(result, 8 * self->table.count); }

  // With a consistent comparator the slots are sorted; with any other they are a permutation.
  template <class Op>
  requires(named<Op>("qsort")) void expect(Op, None) {
    Table &table = self->table;
    constexpr bool kHasComparator = kIsItems || named<Op>("_x");
    if (failed || (kHasComparator && order == nullptr)) return;
    const bool is_upward = named<Op>("_p") || (!named<Op>("_n") && is_ascending);
    const auto comes_before = [&](const Item &a, const Item &b) {
      const int sign = kHasComparator ? order(a.value, b.value) : (a.key() > b.key()) - (a.key() < b.key());
      return sign != 0 && (sign < 0) == is_upward;
    };
    std::multiset<Item> expected(table.begin(), table.end());
    if (is_unique) {
      const std::set<Item> unique(table.begin(), table.end());
      expected = {unique.begin(), unique.end()};
    }
    std::vector<Item> sorted;
    for (int64_t i = 0; i < std::ssize(expected); ++i) sorted.push_back(read(self->record, i));
    EXPECT_TRUE(std::multiset<Item>(sorted.begin(), sorted.end()) == expected);
    EXPECT_TRUE(order == by_whim || std::ranges::is_sorted(sorted, comes_before));
    std::ranges::copy(sorted, table.begin());
    table.count = is_unique ? std::ssize(sorted) : table.count;
  }

  Slot slots[kSlots];
  Pool pool{8}, users[2] = {Pool(8), Pool(8)};
  std::set<uint64_t> lent;  // blocks of the external pool in use

  // Drawn in this step.
  Slot *self = nullptr, *peer = nullptr;
  Item item = {};
  int64_t index = 0;
  bool is_measured = false;  // the key's length is negative
  bool is_ascending = false, is_unique = false;
  const KeyOut *key_out = nullptr;
  std::string text;
};

// ---- roles

template <class R>
struct Self {
  explicit Self(WorldOf<R> &world) : slot(world.draw_self()) {}
  auto arguments() const { return std::tuple(&slot.record); }
  typename WorldOf<R>::Slot &slot;
};
template <class R>
using Value = Drawn<uint64_t, &WorldOf<R>::draw_value>;
struct KeyOfBytes : ByteKey<mub_array> {
  explicit KeyOfBytes(WorldOf<mub_array> &world) : ByteKey(world) {
    Table &table = world.self->table;
    if (table.used() > 0 && world.program.one_in(2)) {
      bytes = table[world.program.below(table.used())].bytes;
      data = bytes.data();
      length = std::ssize(bytes);
    }
    world.item.bytes = bytes;
    world.is_measured = length < 0;
  }
};
template <class R>
using Key = std::conditional_t<WorldOf<R>::kHasBytes, KeyOfBytes,
                               Drawn<typename WorldOf<R>::Number, &WorldOf<R>::draw_key>>;
// Any record, including Self.
template <class R>
struct Peer {
  explicit Peer(WorldOf<R> &world) {
    world.peer = &world.slots[world.program.below(WorldOf<R>::kSlots)];
    record = &world.peer->record;
    fits = world.peer->table.count + world.self->table.count < 200;
  }
  auto arguments() const { return std::tuple(record); }
  R *record;
  bool fits;
};
template <class R>
inline constexpr bool kIsWritten<Peer<R>> = true;
template <class R>
using Destination = Peer<R>;
// Words outside any array.
struct Words {
  explicit Words(WorldOf<mub_arrayt> &world) {
    world.draw_self();
    for (int64_t left = world.program.below(40); left > 0; --left) words.push_back(world.draw_value());
    expected = words;
  }
  auto arguments() { return std::tuple(words.data(), std::ssize(words)); }
  std::vector<uint64_t> words, expected;
};

// A string, and one that is to become equal. Both are empty, or hold an old text.
struct StringOut {
  explicit StringOut(auto &world) {
    if (world.program.one_in(4)) return;
    mub_string_copy(&record, "old", 3);
    mub_string_copy(&expected, "old", 3);
  }
  ~StringOut() {
    mub_string_term(&record);
    mub_string_term(&expected);
  }
  auto arguments() { return std::tuple(&record); }
  mub_string record = {}, expected = {};
};

// ---- operations

void by_hand(OneOf<op::init_, op::term_> auto, auto &world, auto &slot, auto) {
  world.end(slot);
  world.start(slot);
}

template <class Op, class R, class... Rest>
void check(Op op, WorldOf<R> &world, Self<R> &, Rest &&...rest) {
  world.expect(op, std::get<sizeof...(rest) - 1>(std::tie(rest...)));
}
template <class R>
void check(op::to_string_, WorldOf<R> &world, Self<R> &, auto &, StringOut &string, None) {
  world.expect_joined(string.record, &string.expected);
}
template <class Op>
void check(Op, WorldOf<mub_arrayt> &, Words &drawn, None) {
  std::ranges::sort(drawn.expected);
  if (named<Op>("_n")) std::ranges::reverse(drawn.expected);
  EXPECT_EQ(drawn.words, drawn.expected);
}

}  // namespace mub_test

#include "arrays_steps.inc"
