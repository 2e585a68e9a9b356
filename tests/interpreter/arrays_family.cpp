// Arrays under programs: worlds of three records of a kind, each with its whole table as the model, spare slots
// included. What a step draws is put down in the world, where the expectations of all kinds find it.
#include <climits>

#include "arrays_ops.inc"
#include "interpreter/map_keys.h"
#include "interpreter/roles.h"

namespace mub_test {

// role const char \*\* key;int64_t \* length = KeyOut<%s>
// role uint(32|64)_t \* key = KeyOut<%s>
// role int64_t (index|wanted|n) = Drawn<%t, &WorldOf<%s>::draw_%n>
// role int (ascending|unique|separator) = Drawn<%t, &WorldOf<%s>::draw_%n>
// role uint64_t (context|extra) = Drawn<%t, &WorldOf<%s>::draw_%n>
// role mub_compare_\w*fn compare = Drawn<AnyComparer, &WorldOf<%s>::draw_%n>
// role const char \* text;int64_t length = Pieces<%s>
// role mub_string \* string = Joined<%s>
// role uint64_t \* items;int64_t count = Words

// ---- comparers, for which all blocks are alike

inline uint64_t rank_of(uint64_t value) { return std::min<uint64_t>(value, 40); }
inline int by_rank(uint64_t a, uint64_t b) {
  if (rank_of(a) == rank_of(b)) return 0;
  return rank_of(a) < rank_of(b) ? INT_MIN : INT_MAX;
}
inline int by_whim(uint64_t a, uint64_t b) { return static_cast<int>((5 * rank_of(a) + rank_of(b)) % 3) - 1; }

// Of this step. Sorts also note what they compare.
inline int (*order)(uint64_t, uint64_t);
inline uint64_t context, extra;
inline int compare(uint64_t a, uint64_t b, bool is_right, bool is_sort) {
  EXPECT_TRUE(is_right) << "a wrong context";
  if (is_sort) seen.insert(seen.end(), {a, b});
  return order(a, b);
}
inline int compare_values(uint64_t a, uint64_t b) { return compare(a, b, true, true); }
inline int compare_items(uint64_t a, uint64_t b, uint64_t own) {
  return compare(a, b, own == context, own == 0);
}
inline int compare_in_context(uint64_t own, uint64_t a, uint64_t b, uint64_t own_extra) {
  return compare(a, b, own == context && own_extra == extra, own_extra == 0);
}
struct AnyComparer {
  operator mub_compare_fn() const { return order == nullptr ? nullptr : compare_values; }
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
  auto fields() const { return std::tie(bytes, number, value); }
};
struct Table {
  std::vector<Item> slots = {};
  int64_t count = 0;  // an incomplete clone states more than there is

  int64_t capacity() const { return static_cast<int64_t>(slots.size()); }
  int64_t used() const { return std::min(count, capacity()); }
  Item &operator[](int64_t index) { return slots[static_cast<size_t>(index)]; }
  int64_t live(int64_t index) const { return index >= 0 && index < used() ? index : -1; }
  void resize(int64_t capacity) { slots.resize(static_cast<size_t>(capacity)); }
  void expand(int64_t wanted, int64_t least) {
    if (capacity() < least) resize(least);
    const int64_t grown = std::max(capacity() + std::max<int64_t>(count / 2, 8), wanted);
    if (capacity() < wanted) resize((grown + 3) / 4 * 4);
  }
};

// The sort, written out on indexes: what it compares and where it puts equal entries can be relied on. Recursion
// stands in for the stack.
template <class Rows, class Compare>
void sort_by_steps(Rows &rows, int64_t lo, int64_t hi, const Compare &compare) {
  const auto row = [&](int64_t i) -> auto & { return rows[static_cast<size_t>(i)]; };
  const auto cmp = [&](int64_t x, int64_t y) { return compare(row(x), row(y)); };
  const auto swap = [&](int64_t x, int64_t y) { std::swap(row(x), row(y)); };
  const auto move = [](int64_t &i, int by, auto goes_on) {
    do i += by;
    while (goes_on());
  };
  if (hi - lo + 1 <= 8) {
    for (; hi > lo; hi--) {
      int64_t m = lo;
      for (int64_t p = lo + 1; p <= hi; p++) m = cmp(p, m) > 0 ? p : m;
      swap(m, hi);
    }
    return;
  }
  int64_t a = lo, b = hi, mid = lo + (hi - lo + 1) / 2;
  if (cmp(lo, mid) > 0) swap(lo, mid);
  if (cmp(lo, hi) > 0) swap(lo, hi);
  if (cmp(mid, hi) > 0) swap(mid, hi);
  for (;;) {
    if (mid > a) move(a, 1, [&] { return a < mid && cmp(a, mid) <= 0; });
    if (mid <= a) move(a, 1, [&] { return a <= hi && cmp(a, mid) <= 0; });
    move(b, -1, [&] { return b > mid && cmp(b, mid) > 0; });
    if (b < a) break;
    swap(a, b);
    if (mid == b) mid = a;
  }
  b++;
  if (mid < b) move(b, -1, [&] { return b > mid && cmp(b, mid) == 0; });
  if (mid >= b) move(b, -1, [&] { return b > lo && cmp(b, mid) == 0; });
  const bool left_last = b - lo >= hi - a;
  if (!left_last) sort_by_steps(rows, lo, b, compare);
  sort_by_steps(rows, a, hi, compare);
  if (left_last) sort_by_steps(rows, lo, b, compare);
}

// ---- kinds

template <class R>
inline constexpr bool kHasBytes = std::is_same_v<R, mub_array>;
template <class R>
inline constexpr bool kIsItems = std::is_same_v<R, mub_arrays>;
template <class R>
inline constexpr bool kIsWords = std::is_same_v<R, mub_arrayt>;
template <class R>
inline constexpr bool kIsBare = kIsItems<R> || kIsWords<R>;
// Keys that are numbers compare by the sign of a difference of this width.
template <class R>
using Difference = std::conditional_t<std::is_same_v<R, mub_arrayd> || kIsWords<R>, int32_t, int64_t>;

inline void init(mub_array *array, int pool) { mub_array_init(array, pool); }
inline void init(mub_arrayd *array, int pool) { mub_arrayd_init(array, pool); }
inline void init(mub_arrayx *array, int pool) { mub_arrayx_init(array, pool); }
inline void init(mub_arrays *array, int pool) { mub_arrays_init(array, pool); }
inline void init(mub_arrayt *array, int) { mub_arrayt_init(array); }
inline void term(mub_array *array) { mub_array_term(array); }
inline void term(mub_arrayd *array) { mub_arrayd_term(array); }
inline void term(mub_arrayx *array) { mub_arrayx_term(array); }
inline void term(mub_arrays *array) { mub_arrays_term(array); }
inline void term(mub_arrayt *array) { mub_arrayt_term(array); }

// A slot as it is; the bytes of spare ones are left open.
template <class R>
Item read(const R &array, int64_t index) {
  if constexpr (kIsWords<R>) {
    const uint64_t word = index < 4 ? array.inline_items[index] : array.tail[index - 4];
    return {"", word, word};
  } else if constexpr (kIsItems<R>) {
    return {"", array.items[index], array.items[index]};
  } else if constexpr (kHasBytes<R>) {
    const auto &[offset, length, value] = array.entries[index];
    return {index < array.count ? std::string(stored_keys(array.keys).substr(offset, length)) : "", 0, value};
  } else {
    return {"", array.entries[index].key, array.entries[index].value};
  }
}
// The copy that a block has in the clone of its pool; 0 of what is no block.
inline uint64_t copied_block(const mub_pool &pool, const mub_pool &copy, uint64_t block) {
  for (int64_t i = 0; i < pool.chunk_count; ++i) {
    const uint64_t offset = block - reinterpret_cast<uintptr_t>(pool.chunks[i]);
    const auto bytes = static_cast<uint64_t>(pool.blocks_per_chunk * pool.block_size);
    if (offset < bytes) return reinterpret_cast<uintptr_t>(copy.chunks[i]) + offset;
  }
  return 0;
}

// ---- worlds

template <class R>
struct Slot {
  R record;
  Table table = {};
  mub_pool *pool = nullptr;  // its own, the world's or none
  int64_t blocks = 0;        // taken from its own
};
template <class R>
struct KeyOut;

template <class R>
struct WorldOf : World {
  using Number = std::make_unsigned_t<Difference<R>>;
  static constexpr int kSlots = 3;
  static constexpr int64_t kLeast = kIsWords<R> ? 4 : 0;

  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (mub_pool *each : {&pool, &users[0], &users[1]}) mub_pool_init(each);
    pool.block_size = users[0].block_size = users[1].block_size = 8;
    for (auto &slot : slots) start(slot);
  }
  ~WorldOf() {
    for (auto &slot : slots) term(&slot.record);
    for (mub_pool *each : {&pool, &users[0], &users[1]}) mub_pool_term(each);
  }
  bool owns_pool(const Slot<R> &slot) const { return slot.pool != nullptr && slot.pool != &pool; }
  void start(Slot<R> &slot) {
    const int64_t settings = program.below(6);
    slot = {};
    std::memset(&slot.record, kIsWords<R> ? 0 : 0xA5, sizeof slot.record);
    call([&] { init(&slot.record, settings % 3 == 2 ? 7 : 0); });
    EXPECT_EQ(slot.record.descending, 0);
    slot.record.descending = settings < 3 ? 0 : 7;
    slot.table.resize(kLeast);
    if constexpr (!kIsWords<R>) {
      EXPECT_TRUE(failed || (settings % 3 == 2) == (slot.record.pool != nullptr));
      if (settings % 3 == 1) slot.record.pool = &pool;
      slot.pool = slot.record.pool;
      if (owns_pool(slot)) slot.pool->block_size = 8;
    }
  }
  R *draw_self() {
    self = &slots[program.below(kSlots)];
    peer = nullptr;
    key_out = nullptr;
    item = {};
    has_comparer = is_measured = is_unique = false;
    order = nullptr;
    context = extra = 0;
    seen.clear();
    // Where there is no out value, initialisers see the count.
    out_value = reinterpret_cast<const uint64_t *>(&self->record.count);
    return &self->record;
  }
  void compare() {
    for (auto *slot : {self, peer}) {
      if (slot == nullptr) continue;
      const R &record = slot->record;
      Table &table = slot->table;
      mix(record.count);
      ASSERT_EQ(record.count, table.count);
      // A step that was refused something may have reserved slots, and written to spare ones.
      if (failed) table.resize(record.capacity);
      ASSERT_EQ(record.capacity, table.capacity());
      size_t bytes = 0;
      for (int64_t i = 0; i < table.capacity(); ++i) {
        const Item own = read(record, i);
        if (i >= table.used()) table[i].bytes.clear();
        if (i >= table.used() && failed) table[i] = own;
        ASSERT_TRUE(table[i].fields() == own.fields()) << "slot " << i;
        bytes += own.bytes.size();
      }
      ASSERT_EQ(bytes, key_bytes(record)) << "bytes of no key";
      if constexpr (!kIsWords<R>) {
        ASSERT_TRUE(record.pool == slot->pool && record.own_pool == owns_pool(*slot));
        ASSERT_TRUE(!owns_pool(*slot) || slot->pool->live_count == slot->blocks);
      }
    }
    ASSERT_EQ(pool.live_count, blocks);
  }
  static size_t key_bytes(const R &record) {
    if constexpr (kHasBytes<R>) return stored_keys(record.keys).size();
    return 0;
  }

  int64_t draw_index() {
    index = program.near(program.one_in(4) ? self->record.capacity : self->record.count);
    // What the keys of spare slots refer to is left open.
    if (kHasBytes<R> && index >= self->table.count) index = INT64_MAX;
    return index;
  }
  // Some slots, or more than there can be.
  int64_t draw_wanted() {
    index = program.near(self->record.capacity);
    if (index > 500) index = index > INT32_MAX ? INT64_MAX - index % 8 : index % 500;
    return index;
  }
  int64_t draw_n() { return draw_wanted(); }
  uint64_t draw_value() {
    item.value = static_cast<uint64_t>(program.below(64));
    if (kIsWords<R>) item.value = hard_number<uint32_t>(program.below(40)) | item.value >> 5 << 63;
    if (kIsBare<R>) item.number = item.value;
    return item.value;
  }
  uint64_t draw_item() { return draw_value(); }
  Number draw_key() {
    item.number =
        kIsItems<R> ? static_cast<uint64_t>(program.below(64)) : hard_number<Number>(program.below(40));
    const int64_t used = self->table.used();
    if (used > 0 && program.one_in(2)) item.number = self->table[program.below(used)].number;
    return static_cast<Number>(item.number);
  }
  uint64_t draw_context() { return context = 0xC0FFEE; }
  uint64_t draw_extra() { return extra = 0xFACE; }
  int draw_ascending() { return (is_ascending = program.one_in(2)) ? 7 : 0; }
  int draw_unique() { return (is_unique = program.one_in(2)) ? 7 : 0; }
  int draw_separator() { return program.one_in(2) ? ',' : 0x700 | ','; }
  AnyComparer draw_compare() {
    static constexpr decltype(order) kOrders[] = {nullptr, by_rank, by_rank, by_whim};
    order = kOrders[program.below(4)];
    has_comparer = true;
    return {};
  }

  // ---- what is expected of a step, and put into the model

  // The slot that a search finds, or -1, and where a new one belongs.
  std::pair<int64_t, int64_t> search() {
    Table &table = self->table;
    if (has_comparer && order == nullptr) return {-1, table.count};
    std::vector<int> signs;
    for (int64_t i = 0; i < table.used(); ++i) {
      const auto difference = static_cast<Difference<R>>(table[i].number - item.number);
      int sign = has_comparer ? order(table[i].value, item.number) : table[i].bytes.compare(item.bytes);
      if (!has_comparer && !kHasBytes<R>) sign = difference < 0 ? -1 : difference > 0;
      signs.push_back(sign == 0 ? 0 : (sign < 0) == (self->record.descending == 0) ? -1 : 1);
    }
    int64_t low = 0, high = table.used() - 1;
    while (low <= high) {
      const int64_t middle = (low + high) / 2;
      const int sign = signs[static_cast<size_t>(middle)];
      if (sign == 0) return {middle, -1};
      (sign < 0 ? low : high) = sign < 0 ? middle + 1 : middle - 1;
    }
    const bool is_right = std::equal_range(signs.begin(), signs.end(), 0) ==
                          std::pair(signs.begin() + low, signs.begin() + low);
    EXPECT_TRUE(is_right || !std::is_sorted(signs.begin(), signs.end()));
    return {-1, low};
  }
  bool is_refused() const { return failed && self->record.count == self->table.count; }
  // Adds the drawn item at an index as the record has it; -1 when that was refused.
  int64_t add(int64_t at, bool is_appended = false) {
    Table &table = self->table;
    if (at < 0 || is_refused()) return -1;
    table.expand(table.count + 1, kLeast);
    at = std::min(at, table.count);
    // The empty key comes after all others, and stands for one that finds no room there.
    if (kHasBytes<R> && at < table.count && item.bytes.empty()) return -1;
    if (is_appended && failed && read(self->record, at).bytes.empty()) item.bytes.clear();
    table.slots.erase(table.slots.begin() + table.count++);
    table.slots.insert(table.slots.begin() + at, item);
    return at;
  }
  // The same with a block that was taken for it, or 0.
  int64_t add_block(int64_t at, uint64_t block, bool is_appended = false) {
    item.value = block;
    if (kIsBare<R>) item.number = block;
    at = add(at, is_appended);
    if (at < 0) return at;
    EXPECT_TRUE((block != 0) == (self->pool != nullptr) || failed);
    EXPECT_EQ(seen, block != 0 && is_callback_given ? std::vector{block} : std::vector<uint64_t>());
    if (block != 0) ++(owns_pool(*self) ? self->blocks : blocks);
    return at;
  }
  void expect_released(std::vector<uint64_t> values) {
    values.erase(std::remove(values.begin(), values.end(), 0u), values.end());
    if (self->pool == &pool) blocks -= static_cast<int64_t>(values.size());
    EXPECT_EQ(seen, is_callback_given ? values : std::vector<uint64_t>());
  }
  uint64_t cut(int64_t at) {
    Table &table = self->table;
    if (at < 0) return 0;
    const uint64_t value = table[at].value;
    if (!kIsItems<R>) table[at] = {"", 0, kIsWords<R> ? 0 : value};
    std::copy(table.slots.begin() + at + 1, table.slots.begin() + table.used(), table.slots.begin() + at);
    table.count = table.used() - 1;
    return value;
  }
  uint64_t exchange(int64_t at) {
    if (at < 0) return 0;
    if (kIsBare<R>) self->table[at].number = item.value;
    return std::exchange(self->table[at].value, item.value);
  }

  int64_t live_index() { return self->table.live(index); }
  int64_t position(op::get_at_) {
    return kIsWords<R> || index >= self->table.capacity() ? live_index() : std::max<int64_t>(index, -1);
  }
  int64_t position(op::get_entry_) { return position(op::get_at_()); }
  int64_t position(op::get_first_) { return self->table.live(0); }
  int64_t position(op::get_last_) { return self->table.live(self->table.count - 1); }
  int64_t position(op::find_) { return search().first; }
  int64_t position(op::entry_find_) { return is_measured ? -1 : search().first; }
  int64_t position(op::bfind_) {
    const auto [hit, gap] = search();
    if (has_comparer && order == nullptr) return -1;
    return hit >= 0 ? hit : std::min(gap, self->table.used() - 1);
  }
  int64_t position(op::afind_) {
    int64_t at = 0;
    while (at < self->table.used() && item.key() != self->table[at].key()) ++at;
    return self->table.live(at);
  }
  template <class Op, class Result>
  auto expect(Op op, Result result) -> decltype(position(op), void()) {
    const int64_t at = position(op);
    if (key_out != nullptr) key_out->expect(self->record, at, at < 0 ? Item() : self->table[at]);
    expect_at(at, result);
  }
  void expect_at(int64_t at, int result) { EXPECT_EQ(result, at >= 0); }
  void expect_at(int64_t at, int64_t result) { EXPECT_EQ(result, at); }
  void expect_at(int64_t at, uint64_t result) { EXPECT_EQ(result, at < 0 ? 0 : self->table[at].value); }
  template <class E>
  void expect_at(int64_t at, E *result) {
    if constexpr (kIsItems<R>) {
      EXPECT_EQ(result, at < 0 ? nullptr : self->record.items + at);
    } else {
      EXPECT_EQ(result, at < 0 ? nullptr : self->record.entries + at);
    }
  }

  void expect(op::append_, None) { add(self->table.count, true); }
  void expect(op::append_new_, uint64_t result) {
    const auto count = static_cast<uint64_t>(self->table.count);
    EXPECT_TRUE(add_block(self->table.count, result, true) >= 0 || result == 0);
    EXPECT_TRUE(seen.empty() || out_value_seen == count) << "added before it is initialised";
  }
  void expect(op::insert_at_, None) { add(is_measured ? -1 : index); }
  void expect(op::insert_, int result) {
    const auto [hit, gap] = search();
    EXPECT_EQ(result, hit < 0);
    add(gap);
  }
  void expect(op::insert_new_, int result) {
    const auto [hit, gap] = search();
    const uint64_t out = *out_value;
    EXPECT_EQ(result, add_block(gap, out));
    EXPECT_TRUE(hit < 0 || seen.empty());
    EXPECT_TRUE(result >= 0 ? seen.empty() || out_value_seen == out
                            : out == (hit < 0 ? 0 : self->table[hit].value));
  }
  template <class E>
  void expect(op::entry_insert_, E *result) {
    const auto [hit, gap] = search();
    if (is_measured && self->table.count > 0) return expect_at(-1, result);
    expect_at(hit >= 0 ? hit : add(gap), result);
  }
  void expect(op::append_array_, None) {
    Table &table = self->table;
    const int64_t count = table.count, added = peer->table.used();
    if (is_refused()) return;
    table.expand(count + added, kLeast);
    for (int64_t i = 0; i < added; ++i) table[count + i] = peer->table[i];
    table.count += added;
  }
  void expect(op::from_string_, None) {
    if (is_refused()) return;
    for (size_t start = 0, end; start < text.size(); start = end + 1) {
      end = std::min(text.find(',', start), text.size());
      mub_char piece = {&text[start], static_cast<int64_t>(end - start)};
      mub_char_trim(&piece);
      if (end == text.size() && piece.length == 0) break;
      item.bytes.assign(piece.data, static_cast<size_t>(piece.length));
      if (!kHasBytes<R>) {
        const auto number =
            static_cast<uint64_t>(std::strtoll(std::exchange(item.bytes, "").c_str(), nullptr, 10));
        item.number = kIsWords<R> ? number : static_cast<Number>(number);
        item.value = kIsWords<R> ? number : 0;
      }
      EXPECT_GE(add(self->table.count, true), 0) << "not all of it";
    }
  }
  void expect(op::to_string_, None) {
    std::string expected = failed ? "old" : "";
    for (int64_t i = 0; i < self->table.used() && !failed; ++i) {
      const Item &own = self->table[i];
      const std::string number =
          kIsWords<R> ? std::to_string(static_cast<int64_t>(own.number)) : std::to_string(own.number);
      expected += (expected.empty() ? "" : ",") + (kHasBytes<R> ? own.bytes : number);
    }
    EXPECT_EQ(std::string(joined->data, static_cast<size_t>(joined->length)), expected);
  }

  template <class Result>
  void expect(op::remove_, Result result) {
    const int64_t hit = search().first;
    const uint64_t value = cut(hit);
    EXPECT_EQ(result, static_cast<Result>(kIsWords<R> ? hit >= 0 : value));
  }
  void expect(op::remove_at_, uint64_t result) {
    const int64_t at = live_index();
    if (key_out != nullptr) key_out->expect(self->record, at, at < 0 ? Item() : self->table[at]);
    EXPECT_EQ(result, cut(at));
  }
  void expect(op::free_, None) { expect_released({cut(search().first)}); }
  void expect(op::free_at_, None) { expect_released({cut(live_index())}); }
  void expect(op::free_all_entry_, None) {
    std::vector<uint64_t> values;
    for (int64_t i = 0; i < self->table.used(); ++i) values.push_back(self->table[i].value);
    expect_released(values);
  }
  template <class Result>
  void expect(op::free_all_, Result result) {
    expect(op::free_all_entry_(), None());
    expect(op::remove_all_(), result);
  }
  template <class Result>
  void expect(op::remove_all_, Result) {
    self->table = {};
    self->blocks = 0;
  }
  template <class Result>
  void expect(op::set_at_, Result result) {
    const int64_t at = failed ? -1 : position(op::get_at_());
    if (at >= 0) std::tie(self->table[at].bytes, self->table[at].number) = item.key();
    const uint64_t before = exchange(at);
    EXPECT_TRUE(is_same(result, before));
  }
  static bool is_same(None, uint64_t) { return true; }
  static bool is_same(uint64_t result, uint64_t expected) { return result == expected; }
  void expect(op::update_at_, uint64_t result) { EXPECT_EQ(result, exchange(position(op::get_at_()))); }
  void expect(op::update_, uint64_t result) { EXPECT_EQ(result, exchange(search().first)); }

  void expect(op::expand_, int result) {
    EXPECT_EQ(result, index <= self->table.capacity() || (index < 1000 && !failed));
    self->table.expand(result == 1 ? index : 0, kLeast);
  }
  void expect(op::shrink_, None) {
    Table &table = self->table;
    if (index < 0 || (table.capacity() == 0 && (kHasBytes<R> || kIsItems<R>))) return;
    const int64_t before = std::exchange(table.count, std::min(index, table.capacity()));
    ASSERT_EQ(self->record.count, table.count);
    // What the keys of spare slots refer to is left open.
    if (kHasBytes<R>) self->record.count = table.count = before;
  }
  void expect(op::swap_, None) {
    std::swap(self->table, peer->table);
    if (!kIsItems<R>) return;
    std::swap(self->pool, peer->pool);
    std::swap(self->blocks, peer->blocks);
  }
  template <class Result>
  void expect(op::clone_, Result) {
    if (self == peer || (failed && kIsWords<R>)) return;
    const bool owns = owns_pool(*self), has_copies = owns && owns_pool(*peer);
    if (!owns) peer->pool = self->pool;
    peer->blocks = has_copies ? peer->pool->live_count : 0;
    Table &copy = peer->table;
    copy.expand(self->table.capacity(), kLeast);
    copy.count = self->table.count;
    if (failed && peer->record.capacity == 0) return copy.slots.clear();
    EXPECT_EQ(peer->blocks, has_copies ? self->blocks : 0);
    std::vector<uint64_t> values;
    for (int64_t i = 0; i < self->table.used(); ++i) {
      const uint64_t value = self->table[i].value;
      copy[i] = self->table[i];
      if (!owns) continue;
      copy[i].value = has_copies ? copied_block(*self->pool, *peer->pool, value) : 0;
      if (kIsBare<R>) copy[i].number = copy[i].value;
      values.insert(values.end(), {value, copy[i].value});
    }
    EXPECT_EQ(seen, is_callback_given ? values : std::vector<uint64_t>());
  }
  void expect(op::length_, int64_t result) { EXPECT_EQ(result, 8 * self->table.count); }

  void expect(op::qsort_, None) { expect_sorted(is_ascending); }
  void expect(op::qsort_p_, None) { expect_sorted(true); }
  void expect(op::qsort_n_, None) { expect_sorted(false); }
  void expect_sorted(bool is_upward) {
    Table &table = self->table;
    if (failed || (has_comparer && order == nullptr)) return;
    std::vector<Item> items(table.slots.begin(), table.slots.begin() + table.used());
    const auto compared = std::exchange(seen, {});
    sort_by_steps(items, 0, table.used() - 1, [&](const Item &a, const Item &b) {
      if (has_comparer) seen.insert(seen.end(), {a.value, b.value});
      const int sign = has_comparer ? order(a.value, b.value) : (a.key() > b.key()) - (a.key() < b.key());
      return sign == 0 ? 0 : (sign < 0) == is_upward ? -1 : 1;
    });
    EXPECT_EQ(compared, seen);
    const auto is_equal = [](const Item &a, const Item &b) { return a.value == b.value; };
    if (is_unique) items.erase(std::unique(items.begin(), items.end(), is_equal), items.end());
    std::copy(items.begin(), items.end(), table.slots.begin());
    if (is_unique) table.count = static_cast<int64_t>(items.size());
  }

  Slot<R> slots[kSlots];
  mub_pool pool, users[2];
  int64_t blocks = 0;  // taken from the pool

  // What this step has drawn.
  Slot<R> *self = nullptr, *peer = nullptr;
  Item item = {};
  int64_t index = 0;
  bool is_measured = false;  // the key's length is negative
  bool is_ascending = false, is_unique = false, has_comparer = false;
  const KeyOut<R> *key_out = nullptr;
  std::string text;
  mub_string *joined = nullptr;
};

// ---- roles

template <class R>
using Self = Drawn<R *, &WorldOf<R>::draw_self>;
template <class R>
using Value = Drawn<uint64_t, &WorldOf<R>::draw_value>;
template <class R>
struct Key : Drawn<typename WorldOf<R>::Number, &WorldOf<R>::draw_key> {
  using Drawn<typename WorldOf<R>::Number, &WorldOf<R>::draw_key>::Drawn;
};
template <>
struct Key<mub_array> : ByteKey<mub_array> {
  explicit Key(WorldOf<mub_array> &world) : ByteKey(world) {
    Table &table = world.self->table;
    if (table.used() > 0 && world.program.one_in(2)) {
      bytes = table[world.program.below(table.used())].bytes;
      data = bytes.data();
      length = static_cast<int64_t>(bytes.size());
    }
    world.item.bytes = bytes;
    world.is_measured = length < 0;
  }
};
// Any record, this one included.
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
template <class R>
struct KeyOut {
  explicit KeyOut(WorldOf<R> &world) { world.key_out = this; }
  auto arguments() {
    if constexpr (kHasBytes<R>) {
      return std::tuple(&data, &length);
    } else {
      return std::tuple(&number);
    }
  }
  void expect(const R &record, int64_t index, const Item &item) const {
    if constexpr (kHasBytes<R>) {
      ASSERT_EQ(data == nullptr, index < 0 || record.keys.data == nullptr);
      EXPECT_TRUE(item.bytes == (data == nullptr ? "" : std::string(data, static_cast<size_t>(length))));
    } else {
      EXPECT_EQ(number, item.number);
    }
  }
  typename WorldOf<R>::Number number = 77;
  const char *data = "not set";
  int64_t length = 77;
};
// A text to be split, which may be the array's own keys.
template <class R>
struct Pieces {
  explicit Pieces(WorldOf<R> &world) {
    world.text.clear();
    for (int64_t left = world.program.below(world.program.one_in(4) ? 100 : 12); left > 0; --left)
      world.text += ",, \t\n019-ax"[world.program.below(11)];
    text = world.text;
    if constexpr (kHasBytes<R>) {
      if (world.program.one_in(4)) world.text = text = stored_keys(world.self->record.keys);
    }
  }
  // Lengths below 1 are of no text.
  auto arguments() const {
    return std::tuple(text.data(), text.empty() ? -1 : static_cast<int64_t>(text.size()));
  }
  std::string_view text;
};
template <class R>
struct Joined {
  explicit Joined(WorldOf<R> &world) {
    mub_string_init(&string);
    mub_string_append(&string, "old", 3);
    world.joined = &string;
  }
  ~Joined() { mub_string_term(&string); }
  auto arguments() { return std::tuple(&string); }
  mub_string string;
};
// Words anywhere.
struct Words {
  explicit Words(WorldOf<mub_arrayt> &world) {
    world.draw_self();
    for (int64_t left = world.program.below(40); left > 0; --left) drawn.push_back(world.draw_value());
    words = drawn;
  }
  auto arguments() { return std::tuple(words.data(), static_cast<int64_t>(words.size())); }
  std::vector<uint64_t> drawn, words;
};

template <class R, class F>
void by_hand(op::init_, WorldOf<R> &world, F) {
  R *record = world.draw_self();
  term(record);
  EXPECT_TRUE(record->count == 0 && record->capacity == WorldOf<R>::kLeast);
  world.start(*world.self);
}
template <class R, class F>
void by_hand(op::term_, WorldOf<R> &world, F end) {
  by_hand(op::init_(), world, end);
}
// One, or many at once.
template <class R, class F>
void by_hand(op::append_, WorldOf<R> &world, F append) {
  int64_t left = world.program.one_in(4) ? world.program.below(40) : 1;
  do {
    if constexpr (kIsBare<R>) {
      step<op::append_, Self<R>, Value<R>>(world, append);
    } else {
      step<op::append_, Self<R>, Key<R>, Value<R>>(world, append);
    }
  } while (--left > 0 && !world.failed);
}

template <class Op, class R, class... Rest>
void check(Op op, WorldOf<R> &world, Self<R> &, Rest &&...rest) {
  world.expect(op, std::get<sizeof...(rest) - 1>(std::tie(rest...)));
}
template <class Op>
void check(Op, WorldOf<mub_arrayt> &, Words &words, None) {
  std::sort(words.drawn.begin(), words.drawn.end());
  if (std::is_same_v<Op, op::qsort_n_>) std::reverse(words.drawn.begin(), words.drawn.end());
  EXPECT_EQ(words.words, words.drawn);
}

}  // namespace mub_test

#include "arrays_steps.inc"
