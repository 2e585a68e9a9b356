// Arrays under programs: worlds of three records of a kind, each with its whole table as the model, spare slots
// included. What a step draws is put down in the world, where the expectations of all kinds find it.
#include <climits>

#include "arrays_ops.inc"
#include "interpreter/map_keys.h"
#include "interpreter/roles.h"

namespace mub_test {

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

// ---- models and kinds

// A slot. Keys are bytes or numbers; bare items are their own keys.
struct Item {
  std::string bytes = {};
  uint64_t number = 0;
  uint64_t value = 0;
  auto fields() const { return std::tie(bytes, number, value); }
  int compare_key(const Item &other) const {
    const int sign = bytes.compare(other.bytes);
    return sign != 0 || number == other.number ? sign : number < other.number ? -1 : 1;
  }
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

template <auto kDraw>
struct Drawn;
template <class W, class T, T (W::*kDraw)()>
struct Drawn<kDraw> {
  explicit Drawn(W &world) : word((world.*kDraw)()) {}
  auto arguments() const { return std::tuple(word); }
  static constexpr bool fits = true;
  T word;
};

template <class R>
struct WorldOf;
template <class R>
struct Kind;

// Numbers are passed as Key, compare by the sign of a Difference, and are written as Number.
template <class R, class K, class Difference, class N>
struct NumberKind {
  using Sign = Difference;
  using Key = K;
  using KeyOuts = std::tuple<>;
  static constexpr bool kHasPool = true, kIsBare = true, kShrinksAlways = true;
  static constexpr int64_t kLeast = 0;
  static KeyOuts outs(const R &, int64_t, const Item &) { return {}; }
  static std::string piece(const Item &item) { return std::to_string(static_cast<N>(item.number)); }
  static Item parsed(const std::string &piece) {
    const auto number = static_cast<uint64_t>(static_cast<N>(std::strtoll(piece.c_str(), nullptr, 10)));
    return {"", number, Kind<R>::kIsBare ? number : 0};
  }
  static constexpr bool is_reached(const R &array, int64_t index) {
    return index >= 0 && index < array.capacity;
  }
};

template <>
struct Kind<mub_array> : NumberKind<mub_array, uint64_t, int64_t, int64_t> {
  using KeyOuts = std::tuple<const char *, int64_t>;
  static constexpr bool kIsBare = false, kShrinksAlways = false;
  static constexpr auto init = mub_array_init;
  static constexpr auto term = mub_array_term;
  // The bytes of spare slots are left open.
  static Item read(const mub_array &array, int64_t index) {
    const mub_array_entry &entry = array.entries[index];
    if (index >= array.count) return {"", 0, entry.value};
    return {std::string(stored_keys(array.keys).substr(entry.key_offset, entry.key_length)), 0, entry.value};
  }
  static KeyOuts outs(const mub_array &array, int64_t index, const Item &) {
    if (index < 0 || array.keys.data == nullptr) return {nullptr, 0};
    return {stored_keys(array.keys).data() + array.entries[index].key_offset,
            array.entries[index].key_length};
  }
  static std::string piece(const Item &item) { return item.bytes; }
  static Item parsed(const std::string &piece) { return {piece}; }
};
template <class R, class K, class Difference>
struct IntegerKind : NumberKind<R, K, Difference, K> {
  using KeyOuts = std::tuple<K>;
  static constexpr bool kIsBare = false;
  static Item read(const R &array, int64_t index) {
    return {"", array.entries[index].key, array.entries[index].value};
  }
  static KeyOuts outs(const R &, int64_t, const Item &item) { return {static_cast<K>(item.number)}; }
};
template <>
struct Kind<mub_arrayd> : IntegerKind<mub_arrayd, uint32_t, int32_t> {
  static constexpr auto init = mub_arrayd_init;
  static constexpr auto term = mub_arrayd_term;
};
template <>
struct Kind<mub_arrayx> : IntegerKind<mub_arrayx, uint64_t, int64_t> {
  static constexpr auto init = mub_arrayx_init;
  static constexpr auto term = mub_arrayx_term;
};
template <>
struct Kind<mub_arrays> : NumberKind<mub_arrays, uint64_t, int64_t, int64_t> {
  static constexpr bool kShrinksAlways = false;
  static constexpr auto init = mub_arrays_init;
  static constexpr auto term = mub_arrays_term;
  static Item read(const mub_arrays &array, int64_t index) {
    return {"", array.items[index], array.items[index]};
  }
};
template <>
struct Kind<mub_arrayt> : NumberKind<mub_arrayt, uint32_t, int32_t, int64_t> {
  static constexpr bool kHasPool = false;
  static constexpr int64_t kLeast = 4;
  static void init(mub_arrayt *array, int) {
    std::fill_n(array->inline_items, 4, 0);
    mub_arrayt_init(array);
  }
  static bool is_reached(const mub_arrayt &array, int64_t index) { return index >= 0 && index < array.count; }
  static constexpr auto term = mub_arrayt_term;
  static Item read(const mub_arrayt &array, int64_t index) {
    const uint64_t word = index < 4 ? array.inline_items[index] : array.tail[index - 4];
    return {"", word, word};
  }
};

template <class R>
auto *slots_of(const R &array) {
  if constexpr (Kind<R>::kIsBare) {
    return array.items;
  } else {
    return array.entries;
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
enum class Pool { kNone, kOfCaller, kOwn };

template <class R>
struct Slot {
  R record;
  Table table = {};
  Pool pool = Pool::kNone;
  int64_t blocks = 0;  // taken from its own pool

  const mub_pool *own_pool() const {
    if constexpr (Kind<R>::kHasPool) return record.own_pool != 0 ? record.pool : nullptr;
    return nullptr;
  }
};

template <class R>
struct WorldOf : World {
  using Kind = mub_test::Kind<R>;
  static constexpr int kSlots = 3;

  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (mub_pool *each : {&pool, &users[0], &users[1]}) mub_pool_init(each);
    for (mub_pool *each : {&pool, &users[0], &users[1]}) each->block_size = 8;
    for (auto &slot : slots) start(slot);
  }
  ~WorldOf() {
    for (auto &slot : slots) Kind::term(&slot.record);
    for (mub_pool *each : {&pool, &users[0], &users[1]}) mub_pool_term(each);
  }

  void start(Slot<R> &slot) {
    const int64_t settings = program.below(6);
    slot = {};
    if (Kind::kHasPool) slot.pool = static_cast<Pool>(settings % 3);
    call([&] { Kind::init(&slot.record, slot.pool == Pool::kOwn ? 7 : 0); });
    EXPECT_EQ(slot.record.descending, 0);
    slot.record.descending = settings < 3 ? 0 : 7;
    slot.table.resize(Kind::kLeast);
    if constexpr (Kind::kHasPool) {
      if (failed) slot.pool = Pool::kNone;
      if (slot.pool == Pool::kOfCaller) slot.record.pool = &pool;
      if (slot.pool == Pool::kOwn) slot.record.pool->block_size = 8;
    }
  }

  void begin(Slot<R> &slot) {
    self = &slot;
    item = {};
    has_comparer = is_measured = is_unique = false;
    peer = nullptr;
    outs = nullptr;
    order = nullptr;
    context = extra = 0;
    seen.clear();
    // Where there is no out value, initialisers see the count.
    out_value = reinterpret_cast<const uint64_t *>(&slot.record.count);
    if constexpr (std::is_same_v<R, mub_array>) has_key_block = slot.record.keys.data != nullptr;
  }
  void compare() {
    for (auto &slot : slots) {
      if (&slot != self && &slot != peer) continue;
      const R &record = slot.record;
      Table &table = slot.table;
      mix(record.count);
      ASSERT_EQ(record.count, table.count);
      // A step that was refused something may have reserved slots, and written to spare ones.
      if (failed) table.resize(record.capacity);
      ASSERT_EQ(record.capacity, table.capacity());
      int64_t bytes = 0;
      for (int64_t i = 0; i < table.capacity(); ++i) {
        const Item own = Kind::read(record, i);
        if (i >= table.used()) table[i].bytes.clear();
        if (i >= table.used() && failed) table[i] = own;
        ASSERT_TRUE(table[i].fields() == own.fields()) << "slot " << i;
        bytes += static_cast<int64_t>(own.bytes.size());
      }
      if constexpr (std::is_same_v<R, mub_array>) {
        ASSERT_EQ(record.keys.length, bytes) << "bytes of no key";
      }
      if constexpr (Kind::kHasPool) {
        ASSERT_EQ(record.own_pool, slot.pool == Pool::kOwn);
        ASSERT_EQ(record.pool == nullptr, slot.pool == Pool::kNone);
        ASSERT_TRUE(slot.own_pool() == nullptr || slot.own_pool()->live_count == slot.blocks);
      }
    }
    ASSERT_EQ(pool.live_count, blocks);
  }

  int64_t draw_index() {
    index = program.near(program.one_in(4) ? self->record.capacity : self->record.count);
    // What the keys of spare slots refer to is left open.
    if (std::is_same_v<R, mub_array> && index >= self->table.count) index = INT64_MAX;
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
    if constexpr (!Kind::kHasPool)
      item.value = hard_number<uint32_t>(program.below(40)) | item.value >> 5 << 63;
    if (Kind::kIsBare) item.number = item.value;
    return item.value;
  }
  uint64_t draw_item() { return draw_value(); }
  typename Kind::Key draw_key() {
    item.number = Kind::kHasPool && Kind::kIsBare ? static_cast<uint64_t>(program.below(64))
                                                  : hard_number<typename Kind::Key>(program.below(40));
    if (self->table.used() > 0 && program.one_in(2))
      item.number = self->table[program.below(self->table.used())].number;
    return static_cast<typename Kind::Key>(item.number);
  }
  uint64_t draw_context() { return context = 0xC0FFEE; }
  uint64_t draw_extra() { return extra = 0xFACE; }
  int draw_ascending() { return is_ascending = program.one_in(2), is_ascending ? 7 : 0; }
  int draw_unique() { return is_unique = program.one_in(2), is_unique ? 7 : 0; }
  int draw_separator() { return program.one_in(2) ? ',' : 0x700 | ','; }
  AnyComparer draw_compare() {
    static constexpr decltype(order) kOrders[] = {nullptr, by_rank, by_rank, by_whim};
    order = kOrders[program.below(4)];
    has_comparer = true;
    return {};
  }

  // ---- what is expected of a step, and put into the model

  struct Found {
    int64_t hit;
    int64_t gap;
  };
  // The slot that a search finds, or -1, and where a new one belongs.
  Found search() {
    Table &table = self->table;
    if (has_comparer && order == nullptr) return {-1, table.count};
    std::vector<int> signs;
    for (int64_t i = 0; i < table.used(); ++i) {
      const Item &own = table[i];
      const auto difference = static_cast<typename Kind::Sign>(own.number - item.number);
      int sign = own.bytes.compare(item.bytes);
      if (sign == 0)
        sign = has_comparer ? order(own.value, item.number) : difference < 0 ? -1 : difference > 0;
      signs.push_back(sign == 0 ? 0 : (sign < 0) == (self->record.descending == 0) ? -1 : 1);
    }
    int64_t low = 0, high = table.used() - 1;
    while (low <= high) {
      const int64_t middle = (low + high) / 2;
      const int sign = signs[static_cast<size_t>(middle)];
      if (sign == 0) return {middle, -1};
      (sign < 0 ? low : high) = sign < 0 ? middle + 1 : middle - 1;
    }
    if (std::is_sorted(signs.begin(), signs.end())) {
      EXPECT_EQ(std::count(signs.begin(), signs.end(), 0), 0);
      EXPECT_EQ(std::count(signs.begin(), signs.end(), -1), low);
    }
    return {-1, low};
  }
  bool is_refused() const { return failed && self->record.count == self->table.count; }
  // Adds the drawn item at an index as the record has it; false when that was refused.
  bool add(int64_t at, bool is_appended = false) {
    Table &table = self->table;
    if (at < 0 || is_refused()) return false;
    table.expand(table.count + 1, Kind::kLeast);
    at = std::min(at, table.count);
    if constexpr (std::is_same_v<R, mub_array>) {
      // The empty key comes after all others, and stands for one that finds no room there.
      if (at < table.count && item.bytes.empty()) return false;
      if (is_appended && failed && self->record.entries[at].key_length == 0) item.bytes.clear();
    }
    table.slots.erase(table.slots.begin() + table.count++);
    table.slots.insert(table.slots.begin() + at, item);
    return true;
  }
  // The same with a block that was taken for it, or 0.
  bool add_block(int64_t at, uint64_t block, bool is_appended = false) {
    item.value = block;
    if (Kind::kIsBare) item.number = block;
    if (!add(at, is_appended)) return false;
    EXPECT_TRUE((block != 0) == (self->pool != Pool::kNone) || failed);
    EXPECT_EQ(seen, block != 0 && is_callback_given ? std::vector{block} : std::vector<uint64_t>());
    if (block != 0) ++(self->pool == Pool::kOwn ? self->blocks : blocks);
    return true;
  }
  void expect_released(std::vector<uint64_t> values) {
    values.erase(std::remove(values.begin(), values.end(), 0u), values.end());
    if (self->pool == Pool::kOfCaller) blocks -= static_cast<int64_t>(values.size());
    EXPECT_EQ(seen, is_callback_given ? values : std::vector<uint64_t>());
  }
  uint64_t cut(int64_t at) {
    Table &table = self->table;
    if (at < 0) return 0;
    const uint64_t value = table[at].value;
    if (!std::is_same_v<R, mub_arrays>) table[at] = {"", 0, Kind::kHasPool ? value : 0};
    const auto gap = table.slots.begin() + at;
    std::copy(gap + 1, table.slots.begin() + table.used(), gap);
    table.count = table.used() - 1;
    return value;
  }
  uint64_t exchange(int64_t at) {
    if (at < 0) return 0;
    if (Kind::kIsBare) self->table[at].number = item.value;
    return std::exchange(self->table[at].value, item.value);
  }
  void expect_outs(int64_t at) {
    if (outs == nullptr) return;
    EXPECT_TRUE(*outs == Kind::outs(self->record, at, at < 0 ? Item() : self->table[at]));
  }

  int64_t live_index() { return self->table.live(index); }
  int64_t position(op::get_entry_) { return Kind::is_reached(self->record, index) ? index : -1; }
  int64_t position(op::get_at_) { return position(op::get_entry_()); }
  int64_t position(op::get_first_) { return self->table.live(0); }
  int64_t position(op::get_last_) { return self->table.live(self->table.count - 1); }
  int64_t position(op::find_) { return search().hit; }
  int64_t position(op::entry_find_) { return is_measured ? -1 : search().hit; }
  int64_t position(op::bfind_) {
    const auto [hit, gap] = search();
    if (has_comparer && order == nullptr) return -1;
    return hit >= 0 ? hit : std::min(gap, self->table.used() - 1);
  }
  int64_t position(op::afind_) {
    int64_t at = 0;
    while (at < self->table.used() && item.compare_key(self->table[at]) != 0) ++at;
    return self->table.live(at);
  }
  template <class Op, class Result>
  auto expect(Op op, Result result) -> decltype(position(op), void()) {
    const int64_t at = position(op);
    expect_outs(at);
    if constexpr (std::is_pointer_v<Result>) {
      EXPECT_EQ(result, at < 0 ? nullptr : slots_of(self->record) + at);
    } else if constexpr (std::is_same_v<Result, int>) {
      EXPECT_EQ(result, at >= 0);
    } else if constexpr (std::is_signed_v<Result>) {
      EXPECT_EQ(result, at);
    } else {
      EXPECT_EQ(result, at < 0 ? 0 : self->table[at].value);
    }
  }

  void expect(op::append_, None) { add(self->table.count, true); }
  void expect(op::append_new_, uint64_t result) {
    const auto count = static_cast<uint64_t>(self->table.count);
    EXPECT_TRUE(add_block(self->table.count, result, true) || result == 0);
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
    if (hit >= 0) {
      EXPECT_TRUE(result == -1 && seen.empty() && out == self->table[hit].value);
    } else {
      EXPECT_EQ(result, add_block(gap, out) ? gap : -1);
      EXPECT_TRUE(result >= 0 ? seen.empty() || out_value_seen == out : out == 0);
    }
  }
  template <class E>
  void expect(op::entry_insert_, E *result) {
    auto [hit, gap] = search();
    if (is_measured && self->table.count > 0) {
      hit = -1;
    } else if (hit < 0) {
      hit = add(gap) ? gap : -1;
    }
    EXPECT_EQ(result, hit < 0 ? nullptr : slots_of(self->record) + hit);
  }
  void expect(op::append_array_, None) {
    Table &table = self->table;
    const int64_t count = table.count, added = peer->table.used();
    if (is_refused()) return;
    table.expand(count + added, Kind::kLeast);
    for (int64_t i = 0; i < added; ++i) table[count + i] = peer->table[i];
    table.count += added;
  }
  void expect(op::from_string_, None) {
    for (size_t start = 0, end; start < text.size() && !is_refused(); start = end + 1) {
      end = std::min(text.find(',', start), text.size());
      mub_char piece;
      mub_char_init(&piece);
      piece.data = &text[start];
      piece.length = static_cast<int64_t>(end - start);
      mub_char_trim(&piece);
      if (end == text.size() && piece.length == 0) break;
      item = Kind::parsed(std::string(piece.data, static_cast<size_t>(piece.length)));
      add(self->table.count, true);
    }
  }

  template <class Result>
  void expect(op::remove_, Result result) {
    const int64_t hit = search().hit;
    const uint64_t value = cut(hit);
    EXPECT_EQ(result, static_cast<Result>(std::is_signed_v<Result> ? hit >= 0 : value));
  }
  void expect(op::remove_at_, uint64_t result) {
    expect_outs(live_index());
    EXPECT_EQ(result, cut(live_index()));
  }
  void expect(op::free_, None) { expect_released({cut(search().hit)}); }
  void expect(op::free_at_, None) { expect_released({cut(live_index())}); }
  void expect(op::free_all_entry_, None) {
    std::vector<uint64_t> values;
    for (int64_t i = 0; i < self->table.used(); ++i) values.push_back(self->table[i].value);
    expect_released(values);
  }
  template <class Result>
  void expect(op::free_all_, Result) {
    expect(op::free_all_entry_(), None());
    if constexpr (std::is_same_v<R, mub_array>) {
      EXPECT_EQ(self->record.keys.data, nullptr);
    }
    self->table = {};
    self->blocks = 0;
  }
  template <class Result>
  void expect(op::remove_all_, Result) {
    if constexpr (std::is_same_v<R, mub_array>) {
      EXPECT_EQ(self->record.keys.data != nullptr, has_key_block);
    }
    self->table = {};
    self->blocks = 0;
  }
  template <class Result>
  void expect(op::set_at_, Result result) {
    const int64_t at = failed ? -1 : position(op::get_at_());
    if (at >= 0 && !Kind::kIsBare) self->table[at] = {item.bytes, item.number, self->table[at].value};
    const uint64_t before = exchange(at);
    if constexpr (!std::is_same_v<Result, None>) {
      EXPECT_EQ(result, before);
    }
  }
  void expect(op::update_at_, uint64_t result) { EXPECT_EQ(result, exchange(position(op::get_at_()))); }
  void expect(op::update_, uint64_t result) { EXPECT_EQ(result, exchange(search().hit)); }

  void expect(op::expand_, int result) {
    EXPECT_EQ(result, index <= self->table.capacity() || (index < 1000 && !failed));
    self->table.expand(result == 1 ? index : 0, Kind::kLeast);
  }
  void expect(op::shrink_, None) {
    Table &table = self->table;
    if (index < 0 || (table.capacity() == 0 && !Kind::kShrinksAlways)) return;
    const int64_t count = std::min(index, table.capacity());
    ASSERT_EQ(self->record.count, count);
    // What the keys of spare slots refer to is left open.
    if (std::is_same_v<R, mub_array>) {
      self->record.count = table.count;
    } else {
      table.count = count;
    }
  }
  void expect(op::swap_, None) {
    std::swap(self->table, peer->table);
    if (!std::is_same_v<R, mub_arrays>) return;
    std::swap(self->pool, peer->pool);
    std::swap(self->blocks, peer->blocks);
  }
  template <class Result>
  void expect(op::clone_, Result) {
    if (self == peer || (failed && !Kind::kHasPool)) return;
    const bool is_owner = self->pool == Pool::kOwn, has_copies = is_owner && peer->pool == Pool::kOwn;
    if (!is_owner) peer->pool = self->pool;
    peer->blocks = has_copies ? peer->own_pool()->live_count : 0;
    Table &copy = peer->table;
    copy.expand(self->table.capacity(), Kind::kLeast);
    copy.count = self->table.count;
    if (failed && peer->record.capacity == 0) return copy.slots.clear();
    EXPECT_EQ(peer->blocks, has_copies ? self->blocks : 0);
    std::vector<uint64_t> values;
    for (int64_t i = 0; i < self->table.used(); ++i) {
      copy[i] = item = self->table[i];
      if (!is_owner) continue;
      item.value = has_copies ? copied_block(*self->own_pool(), *peer->own_pool(), item.value) : 0;
      values.insert(values.end(), {copy[i].value, item.value});
      std::swap(self, peer);
      exchange(i);
      std::swap(self, peer);
    }
    EXPECT_EQ(seen, is_callback_given ? values : std::vector<uint64_t>());
  }

  void expect(op::qsort_, None) {
    Table &table = self->table;
    if (failed || (has_comparer && order == nullptr)) return;
    std::vector<Item> items(table.slots.begin(), table.slots.begin() + table.used());
    const auto compared = std::exchange(seen, {});
    sort_by_steps(items, 0, table.used() - 1, [this](const Item &a, const Item &b) {
      if (has_comparer) seen.insert(seen.end(), {a.value, b.value});
      const int sign = has_comparer ? order(a.value, b.value) : a.compare_key(b);
      return sign == 0 ? 0 : (sign < 0) == is_ascending ? -1 : 1;
    });
    EXPECT_EQ(compared, seen);
    const auto is_equal = [](const Item &a, const Item &b) { return a.value == b.value; };
    if (is_unique) items.erase(std::unique(items.begin(), items.end(), is_equal), items.end());
    std::copy(items.begin(), items.end(), table.slots.begin());
    table.count = is_unique ? static_cast<int64_t>(items.size()) : table.count;
  }
  void expect(op::qsort_p_, None) {
    is_ascending = true;
    expect(op::qsort_(), None());
  }
  void expect(op::qsort_n_, None) {
    is_ascending = false;
    expect(op::qsort_(), None());
  }
  // The text, in a block that grew as pieces were appended.
  void expect(op::to_string_, None) {
    std::string expected = failed ? "old" : "";
    for (int64_t i = 0; i < self->table.used() && !failed; ++i)
      expected += (expected.empty() ? "" : ",") + Kind::piece(self->table[i]);
    EXPECT_EQ(std::string(joined->data, static_cast<size_t>(joined->length)), expected);
  }
  void expect(op::length_, int64_t result) { EXPECT_EQ(result, 8 * self->table.count); }

  Slot<R> slots[kSlots];
  mub_pool pool, users[2];
  int64_t blocks = 0;  // taken from the pool

  // What this step has drawn.
  Slot<R> *self = nullptr, *peer = nullptr;
  Item item = {};
  bool is_measured = false;  // the key's length is negative
  int64_t index = 0;
  bool is_ascending = false, is_unique = false, has_comparer = false, has_key_block = false;
  const typename Kind::KeyOuts *outs = nullptr;
  std::string text;
  mub_string *joined = nullptr;
};

// ---- roles

template <class R>
struct Key : Drawn<&WorldOf<R>::draw_key> {
  using Drawn<&WorldOf<R>::draw_key>::Drawn;
};
template <>
struct Key<mub_array> : ByteKeyArgument<WorldOf<mub_array>> {
  explicit Key(WorldOf<mub_array> &world) : ByteKeyArgument(world) {
    Table &table = world.self->table;
    if (table.used() > 0 && world.program.one_in(2)) {
      bytes = table[world.program.below(table.used())].bytes;
      data = bytes.data();
      length = static_cast<int64_t>(bytes.size());
    }
    world.item.bytes = bytes;
    world.is_measured = length < 0;
  }
  static constexpr bool fits = true;
};
template <class R>
struct Self {
  explicit Self(WorldOf<R> &world) {
    world.begin(world.slots[world.program.below(WorldOf<R>::kSlots)]);
    record = &world.self->record;
  }
  auto arguments() const { return std::tuple(record); }
  static constexpr bool fits = true;
  R *record;
};
// Any record, this one included.
template <class R>
struct Peer {
  explicit Peer(WorldOf<R> &world) : slot(&world.slots[world.program.below(WorldOf<R>::kSlots)]) {
    world.peer = slot;
    fits = slot->table.count + world.self->table.count < 200;
  }
  auto arguments() const { return std::tuple(&slot->record); }
  Slot<R> *slot;
  bool fits;
};
template <class R>
struct Destination : Peer<R> {
  using Peer<R>::Peer;
};
template <class R>
inline constexpr bool kIsWritten<Destination<R>> = true;
template <class R>
struct KeyOut {
  explicit KeyOut(WorldOf<R> &world) { world.outs = &outs; }
  auto arguments() {
    return std::apply([](auto &...out) { return std::tuple(&out...); }, outs);
  }
  static constexpr bool fits = true;
  typename Kind<R>::KeyOuts outs;
};
// A text to be split, which may be the array's own keys.
template <class R>
struct Pieces {
  explicit Pieces(WorldOf<R> &world) {
    Program &program = world.program;
    for (int64_t left = program.below(program.one_in(4) ? 100 : 12); left > 0; --left)
      drawn += ",, \t\n019-ax"[program.below(11)];
    text = drawn;
    if constexpr (std::is_same_v<R, mub_array>) {
      if (program.one_in(4)) text = stored_keys(world.self->record.keys);
    }
    world.text = text;
    length = text.empty() ? -program.below(2) : static_cast<int64_t>(text.size());
  }
  auto arguments() const { return std::tuple(text.data(), length); }
  static constexpr bool fits = true;
  std::string drawn;
  std::string_view text;
  int64_t length;
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
  static constexpr bool fits = true;
  mub_string string;
};

// Words anywhere.
struct Words {
  explicit Words(WorldOf<mub_arrayt> &world) {
    world.begin(world.slots[0]);
    for (int64_t left = world.program.below(40); left > 0; --left) drawn.push_back(world.draw_value());
    words = drawn;
  }
  auto arguments() { return std::tuple(words.data(), static_cast<int64_t>(words.size())); }
  static constexpr bool fits = true;
  std::vector<uint64_t> drawn, words;
};
template <class R>
using Value = Drawn<&WorldOf<R>::draw_value>;

template <class R, class F>
void by_hand(op::init_, WorldOf<R> &world, F) {
  const Self<R> self(world);
  Kind<R>::term(self.record);
  EXPECT_EQ(self.record->count, 0);
  EXPECT_EQ(self.record->capacity, Kind<R>::kLeast);
  world.start(*world.self);
}
template <class R, class F>
void by_hand(op::term_, WorldOf<R> &world, F term) {
  by_hand(op::init_(), world, term);
}
// One, or many at once.
template <class R, class F>
void by_hand(op::append_, WorldOf<R> &world, F append) {
  int64_t left = world.program.one_in(4) ? world.program.below(40) : 1;
  do {
    if constexpr (Kind<R>::kIsBare) {
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

#include "interpreter/drivers.h"

namespace mub_test {

#include "arrays_steps.inc"

MUB_FAMILY(Arrays, mub_array, mub_arrayd, mub_arrayx, mub_arrays, mub_arrayt)

}  // namespace mub_test
