// Programs for texts and bytes.
//
// Models store units, narrow or wide, as char32_t. want() applies an operation to the models of its records
// and returns the expected result.
#ifndef MUB_TESTS_INTERPRETER_UNITS_H
#define MUB_TESTS_INTERPRETER_UNITS_H

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <list>
#include <string>

#include "interpreter/machine.h"
#include "support/guarded.h"

namespace mub_test {

// role int (character|unit|byte|from|to) = Letter<%s>
// role int64_t (capacity|size) = Capacity
// role int64_t (position|start|index|offset|(old_)?count|length|n) = Number

using Units = std::u32string;

inline int64_t size_of(const Units &units) { return static_cast<int64_t>(units.size()); }

template <class Unit>
Units units_of(const Unit *units, int64_t count) {
  const auto *first = reinterpret_cast<const std::make_unsigned_t<Unit> *>(units);
  return Units(first, first + count);
}

// Up to `count` units from `start`; none if either is out of range.
inline Units part(const Units &units, int64_t start, int64_t count) {
  if (start < 0 || count < 1 || start >= size_of(units)) return {};
  return units.substr(clipped(start), clipped(count));
}

inline int64_t wrapping_sum(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

// An alphabet: a few letters, so that there are repetitions, or letters that some operation treats specially.
// Some wide units consist of halves of others.
template <class Unit>
const Units &draw_letters(Program &program) {
  static const Units kLetters[][4] = {
      {U"ab", U"ab\xE9", Units(U" \t\r\n\0\v?aAzZ[@`{\xE9", 16), U"-.0123456789x"},
      {U"\u6162\u6261", U"\u6162\u6261\u6161", Units(U" \t\r\n\0\v\u0141\u6162AzZ[\u0120`{\xE9", 16),
       U"-.0123456789x"}};
  return program.one_of(kLetters[sizeof(Unit) - 1]);
}
// At least one unit. Long texts repeat a short one, except for two units.
template <class Unit>
Units draw_units(Program &program) {
  const Units &letters = draw_letters<Unit>(program);
  const auto size = static_cast<size_t>(1 + (program.one_in(6) ? program.below(700) : program.below(12)));
  const auto period = size < 13 ? size : static_cast<size_t>(1 + program.below(4));
  Units units;
  while (units.size() < size)
    units += units.size() < period ? program.one_of(letters) : units[units.size() - period];
  for (int i = 0; i < 2 && size > period; ++i) program.one_of(units) = program.one_of(letters);
  return units;
}

// ---- records with their models

// Units of a block that a record owns or views, or no block. A view may start anywhere, and its length may be
// negative, which makes it empty.
template <class U>
struct Span {
  using Unit = U;
  static constexpr bool kIsStream = false, kIsView = true;
  bool is_empty() const { return data == nullptr || filled == 0; }
  int64_t length() const { return filled; }
  Units content() const { return part(units, start, filled); }
  Units reach() const { return content(); }
  int64_t capacity() const { return size_of(units); }
  void clear() { *this = {}; }
  void keep(int64_t at, int64_t count) {
    start += at;
    filled = count;
  }

  Unit *data = nullptr;
  Units units;  // the whole block
  int64_t start = 0, filled = 0;
};

// A string or a stream.
template <class R>
struct Slot : Span<std::remove_pointer_t<decltype(R::data)>> {
  static constexpr bool kIsStream = std::is_same_v<R, mub_stream>, kIsView = false;
  using Span<typename Slot::Unit>::filled, Span<typename Slot::Unit>::units;

  ~Slot() { release(); }

  int64_t capacity() const { return std::max<int64_t>(size_of(units), 1) - 1; }
  Units reach() const { return part(units, 0, capacity()); }
  void grow(int64_t wanted) {
    if (wanted <= capacity()) return;
    const int64_t target = std::max(capacity() + std::max<int64_t>(filled / 2, 8), wanted);
    units.resize(clipped(kIsStream ? (target + 7) / 8 * 8 + 1 : target / 8 * 8 + 8));
  }
  void end_at(int64_t length) {
    if (units.empty() || length < 0) return;
    filled = std::min(length, capacity());
    if (!kIsStream) units[clipped(filled)] = 0;
  }
  void take(const Units &content) {
    loose = capacity();
    grow(size_of(content));
    units.replace(0, content.size(), content);
    end_at(size_of(content));
  }
  void keep(int64_t at, int64_t count) { take(part(this->content(), at, count)); }
  // The result of an operation on the left, middle or right part, by the first letter of its name.
  Units cut(char side, int64_t first, int64_t count) const {
    if (side == 'r' && count > 0) first = filled - std::min(count, filled);
    return part(this->content(), first, count);
  }
  void swap(auto &other) {
    units.swap(other.units);
    std::swap(filled, other.filled);
  }
  void compare() {
    this->data = record.data;
    ASSERT_EQ(record.length, filled);
    ASSERT_EQ(record.capacity, capacity());
    ASSERT_EQ(record.data == nullptr, units.empty());
    const Units read = units_of(record.data, size_of(units));
    for (int64_t i = filled + (kIsStream ? 0 : 1); i < loose; ++i) units[clipped(i)] = read[clipped(i)];
    ASSERT_EQ(read, units);
    if constexpr (requires { Functions<R>::verify_; }) {
      expect_intact(Functions<R>::verify_, record, is_intact());
      ASSERT_EQ(Functions<R>::memory_bytes_(&record), memory_bytes());
    }
    loose = 0;
    if (filled >= 3000) release();
  }
  // The terminator may be overwritten, or missing in the block of a stream.
  bool is_intact() const { return kIsStream || units.empty() || units[clipped(filled)] == 0; }
  int64_t memory_bytes() const { return size_of(units) * int64_t{sizeof(typename Slot::Unit)}; }
  void release() {
    std::free(std::exchange(record, {}).data);
    this->clear();
  }

  R record = {};
  int64_t loose = 0;  // the units between the content and here are unspecified
};

// A part of a view. If it is bound, a view of another text does not accept it.
struct Part : Span<char> {
  bool is_bound;
};
template <>
struct Slot<mub_stringx> : Span<char> {
  Part cut(char side, int64_t offset, int64_t count) const {
    const bool is_bound = !is_empty() && count > 0 && (side != 'm' || (offset >= 0 && offset < filled));
    const int64_t length = is_bound ? std::min(count, std::max<int64_t>(filled, 0) - offset) : 0;
    if (side == 'r' && length > 0) offset = filled - length;
    return {{data, units, wrapping_sum(start, offset), length}, is_bound};
  }
  void take(const Part &part) {
    if (part.is_bound && part.data != data) return;
    start = part.start;
    filled = part.filled;
  }
  void compare() {
    ASSERT_EQ(record.text, data);
    ASSERT_EQ(record.start, start);
    ASSERT_EQ(record.length, filled);
  }
  mub_stringx record = {};
};

// A view of its own block, or of none. A negative length means that the text ends at its NUL.
template <>
struct Slot<mub_char> : Span<char> {
  ~Slot() { mub_free(data); }

  void draw(Program &program) {
    mub_free(data);
    Units drawn = draw_units<char>(program);
    const int64_t kind = program.below(8);
    for (uint32_t i = 0; kind > 5 && i < 600; ++i) drawn += i * 37 / 4 % 256;
    filled = size_of(drawn) - program.below(2);
    if (kind < 3) filled = program.one_in(4) ? INT64_MIN : program.below(3) - 1;
    if (filled < 0) drawn += U'\0';
    if (kind == 0) drawn.clear();
    record = {kind == 0 ? nullptr : static_cast<char *>(mub_malloc(drawn.size())), filled};
    std::ranges::copy(drawn, reinterpret_cast<uint8_t *>(record.data));
    start = 0;
    adopt(drawn);
  }
  // The record has a new block, or none; the old block is released.
  void adopt(const Units &content) {
    data = record.data;
    units = content;
  }
  int64_t measured() const {
    return filled >= 0 ? filled : std::max<int64_t>(index_of(units.find(U'\0')), 0);
  }
  void compare() {
    ASSERT_EQ(record.data, data == nullptr ? nullptr : data + start);
    ASSERT_EQ(record.length, filled);
    ASSERT_EQ(units_of(data, size_of(units)), units);
  }
  mub_char record = {};
};
// Records that receive a part of another one.
template <class T>
concept Takes = requires {
  &T::take;
};

template <class R>
struct WorldOf : World {
  using World::World;

  auto &slot(const R *) { return slots[program.below(3)]; }
  auto &slot(const mub_string *) requires(!std::is_same_v<R, mub_string>) {
    return strings[program.below(2)];
  }
  // A new record, as other records may be views of existing ones.
  auto &slot(const mub_char *) requires(std::is_same_v<R, mub_stringx>) {
    viewed.emplace_back().draw(program);
    return viewed.back();
  }

  void compare() {
    for (auto &slot : strings) ASSERT_NO_FATAL_FAILURE(slot.compare());
    for (auto &slot : slots) {
      ASSERT_NO_FATAL_FAILURE(slot.compare());
      mix(slot.length());
    }
    if constexpr (std::is_same_v<R, mub_char>) self->draw(program);
    asks_too_much = is_far = false;
  }

  std::list<Slot<mub_char>> viewed;
  Slot<R> slots[3];
  Slot<mub_string> strings[2];
  Slot<R> *self = &slots[0];   // of this step
  bool asks_too_much = false;  // this step requests more memory than there can be
  bool is_far = false;         // a number of this step may cancel out what draw_huge() adds to 4 GiB
};

// ---- roles

template <class R>
struct Peer {
  explicit Peer(auto &world) : slot(world.slot(static_cast<R *>(nullptr))) {}
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};
template <class R>
inline constexpr bool kIsWritten<Peer<R>> = true;
template <class R>
struct Self : Peer<R> {
  explicit Self(auto &world) : Peer<R>(world) { world.self = &this->slot; }
};

inline constexpr auto draw_number = [](auto &world) {
  // Lengths of views may be out of range.
  const int64_t bound = world.program.one_in(2) ? world.self->length() : world.self->capacity();
  const int64_t number = world.program.near(std::max<int64_t>(bound, -2));
  world.is_far |= number > 5000;
  return number;
};
using Number = Drawn<int64_t, draw_number>;
// The last one is small if truncated to 32 bits. A step subtracts less than 10000 from it.
inline int64_t draw_huge(Program &program) {
  constexpr int64_t kHuge[] = {INT64_MAX, INT64_MAX - 7, INT64_MAX - 64, INT64_MAX / 2,
                               int64_t{UINT32_MAX} + 10000};
  return program.one_of(kHuge);
}
inline constexpr auto draw_capacity = [](auto &world) {
  const int64_t number = draw_number(world);
  world.asks_too_much = number > 5000;
  return world.asks_too_much ? draw_huge(world.program) : number;
};
using Capacity = Drawn<int64_t, draw_capacity>;

template <class R>
struct Letter {
  using Unit = typename Slot<R>::Unit;
  explicit Letter(WorldOf<R> &world) : value(world.program.one_of(draw_letters<Unit>(world.program))) {
    given = static_cast<int>(value) + static_cast<int>(world.program.below(3) - 1) * (1 << 8 * sizeof(Unit));
  }
  auto arguments() const { return std::tuple(given); }
  char32_t value;
  int given;  // only the low bits count
};

// How a text is passed: with a count, which may be less than 1 (kCounted); up to its NUL (kTerminated); or
// either way: a text that is only read (kRead), or one to store, whose count may be impossibly large (kPut).
enum Given { kCounted, kTerminated, kRead, kPut };

// NULL, units in the record itself, a copy of these, nearly the same, or different units. Units outside the
// record are next to an unreadable page.
template <class R, Given kGiven, class Unit = typename Slot<R>::Unit>
struct Text {
  static constexpr int64_t kBytes = sizeof(typename Slot<R>::Unit) / sizeof(Unit);
  // Units per char or wchar_t of the C library, which measures and searches texts without a count.
  static constexpr size_t kStep = sizeof(Unit) == 1 ? 1 : sizeof(wchar_t) / sizeof(Unit);

  explicit Text(WorldOf<R> &world) {
    Program &program = world.program;
    const int64_t kind = program.below(8);
    count = kGiven == kTerminated ? -1 : program.below(4) - 1;
    if (kind == 0 && kGiven != kCounted) return;
    if constexpr (kBytes > 1) make_halves_alike(*world.self);
    const int64_t room = size_of(world.self->units) * kBytes;
    bool is_own = kind < 3 && room > 0;
    all = draw_units<Unit>(program);
    if (kind < 5 && room > 0) {
      const int64_t at = program.one_in(3) ? 0 : program.below(room);
      const char32_t other = all[0];
      data = reinterpret_cast<const Unit *>(world.self->data) + at;
      all = units_of(data, std::min(room - at, 1 + program.below(300)));
      if (kind == 4) program.one_of(all) = other;
    }
    if (kGiven == kTerminated || (kGiven != kCounted && program.one_in(3))) {
      count = program.one_in(4) ? INT64_MIN : -1;
      for (; (measured = characters()) < 0; all += U'\0') is_own = false;
    } else if (kGiven != kCounted || count > 0) {
      count = program.one_in(8) ? program.below(size_of(all)) : size_of(all);
    }
    world.asks_too_much = kGiven == kPut && !world.is_far && program.one_in(16);
    if (world.asks_too_much) count = draw_huge(program);
    if (is_own) return;
    const std::vector<Unit> units(all.begin(), all.end());
    const std::string_view bytes(reinterpret_cast<const char *>(units.data()), units.size() * sizeof(Unit));
    copy.emplace(bytes, program.one_in(2));
    data = reinterpret_cast<const Unit *>(copy->data());
  }
  auto arguments() const {
    if constexpr (kGiven == kTerminated) return std::tuple(data);
    if constexpr (kGiven != kTerminated) return std::tuple(data, count);
  }
  // So the bytes of wide units do not depend on the byte order.
  static void make_halves_alike(Slot<R> &slot) {
    for (size_t i = 0; i < slot.units.size(); ++i)
      slot.record.data[i] = static_cast<uint16_t>(slot.units[i] = (slot.units[i] & 0xFF) * 0x101);
  }

  // The number of characters before the first 0, or -1 if there is none.
  int64_t characters() const {
    for (size_t i = 0; i + kStep <= all.size(); i += kStep)
      if (all.compare(i, kStep, Units(kStep, 0)) == 0) return static_cast<int64_t>(i / kStep);
    return -1;
  }
  int64_t size() const { return count < 0 ? measured : count; }
  Units units() const { return part(all, 0, size()); }
  // The text to search. Without a count, the terminating 0 is included.
  Units searched() const { return part(all, 0, size() + (kGiven == kTerminated ? 1 : 0)); }
  // The text to search for: up to its end in characters of the C library, or its count of units, at least
  // one.
  Units wanted() const {
    if (measured >= 0) return all.substr(0, static_cast<size_t>(measured) * kStep);
    return part(all, 0, std::max<int64_t>(count, 1));
  }
  // Converted to units of the record.
  Units put() const {
    Units put = units();
    for (char32_t &unit : put) unit |= kBytes > 1 && unit >= 0x80 ? 0xFF00 : 0;
    return put;
  }

  Units all;
  std::optional<Guarded> copy;
  const Unit *data = nullptr;
  int64_t count;
  int64_t measured = -1;
};

// ---- what operations do to models

template <class T>
concept IsText = std::is_class_v<T>;

// As in the C locale.
inline char32_t lowered(char32_t unit) { return unit >= U'A' && unit <= U'Z' ? unit + 32 : unit; }
inline char32_t raised(char32_t unit) { return unit >= U'a' && unit <= U'z' ? unit - 32 : unit; }

auto *want(op::term_, auto &slot) {
  slot.clear();
  return &slot.record;
}
bool want(op::is_empty_, auto &slot) { return slot.is_empty(); }
void want(op::expand_, auto &slot, int64_t capacity) { slot.grow(capacity); }
void want(op::shrink_, auto &slot, int64_t length) { slot.end_at(length); }
void want(op::zero_, auto &slot, int64_t at, int64_t count) {
  if (at < 0 || count < 1 || count > slot.capacity() - at) return;
  slot.units.replace(clipped(at), clipped(count), clipped(count), 0);
}
void want(OneOf<op::swap_, op::swap_string_> auto, auto &a, auto &b) { a.swap(b); }
void want(op::clone_, auto &source, auto &destination) {
  if (&source.units == &destination.units) return;
  destination.grow(source.capacity());
  destination.take(source.content());
}
void want(OneOf<op::copy_, op::copy_str_> auto, auto &slot, const auto &text) { slot.take(text.put()); }
void want(OneOf<op::append_, op::append_str_> auto, auto &slot, const auto &text) {
  if (text.data != nullptr) slot.take(slot.content() + text.put());
}

bool want(op::verify_, auto &slot, auto &) { return slot.is_intact(); }
int64_t want(op::memory_bytes_, auto &slot) { return slot.memory_bytes(); }

// Bytes of strings and their views are signed, and -1 out of range.
int want(op::get_at_, auto &slot, int64_t at) {
  constexpr bool is_signed = std::is_same_v<decltype(*slot.data), char &>;
  const Units unit = part(slot.reach(), at, 1);
  if (unit.empty()) return is_signed ? -1 : 0;
  return is_signed ? static_cast<signed char>(unit[0]) : static_cast<int>(unit[0]);
}
void want(op::set_at_, auto &slot, int64_t at, char32_t unit) {
  if (at >= 0 && at < slot.capacity()) slot.units[clipped(at)] = unit;
}
void change_each(auto &slot, auto change) {
  const auto first = slot.units.begin();
  std::transform(first, first + size_of(slot.content()), first, change);
}
void want(op::make_lower_, auto &slot) { change_each(slot, lowered); }
void want(op::make_upper_, auto &slot) { change_each(slot, raised); }

// Negative lengths are used as they are.
int difference(auto op, const Units &a, int64_t a_length, const Units &b, int64_t b_length) {
  const auto fold = [&](char32_t unit) { return op.kName[0] == 'i' ? lowered(unit) : unit; };
  const auto [x, y] = std::ranges::mismatch(a, b, {}, fold, fold);
  if (x != a.end() && y != b.end()) return static_cast<int>(fold(*x) - fold(*y));
  return static_cast<int>(static_cast<uint32_t>(a_length) - static_cast<uint32_t>(b_length));
}
template <class R>
int want(OneOf<op::compare_, op::icompare_> auto op, Slot<R> &slot, const auto &text) {
  const bool has_text = text.data != nullptr && text.count != 0;
  if (slot.is_empty()) return has_text && (text.size() > 0 || std::is_same_v<R, mub_char>) ? -1 : 0;
  return has_text ? difference(op, slot.content(), slot.length(), text.units(), text.size()) : 1;
}
int want(OneOf<op::cmp_, op::icmp_> auto op, const auto &a, const auto &b) {
  return difference(op, a.units(), a.size(), b.units(), b.size());
}

inline int64_t found(const Units &content, const Units &wanted, int64_t start) {
  if (start < 0 || start >= size_of(content)) return -1;
  return index_of(content.find(wanted, clipped(start)));
}
int64_t want(OneOf<op::find_char_pos_, op::find_pos_> auto, auto &slot, char32_t unit, int64_t start) {
  return unit == 0 ? -1 : found(slot.content(), Units(1, unit), start);
}
int64_t want(op::reverse_find_, auto &slot, char32_t unit) {
  return unit == 0 ? -1 : index_of(slot.content().rfind(unit));
}
// In a string, the C library searches for a text without a count, up to the first 0 character: narrow texts
// in the content, wide ones in the whole block.
int64_t want(op::find_pos_, auto &slot, const IsText auto &text, int64_t start) {
  if (text.data == nullptr) return -1;
  if (slot.kIsView || text.count >= 0)
    return found(slot.content(), part(text.all, 0, std::max<int64_t>(text.size(), 1)), start);
  const size_t step = text.kStep;
  const Units block = step == 1 ? slot.content() : slot.units, wanted = text.wanted();
  for (auto at = clipped(start); start >= 0 && at < clipped(slot.length()); at += step) {
    if (block.compare(at, wanted.size(), wanted) == 0) return static_cast<int64_t>(at);
    if (block.compare(at, step, Units(step, 0)) == 0) break;
  }
  return -1;
}
int64_t want(OneOf<op::find_char_, op::find_> auto, auto &slot, const auto &wanted) {
  return want(op::find_pos_(), slot, wanted, 0);
}
int64_t want(op::chr_, const auto &text, char32_t unit) { return index_of(text.searched().find(unit)); }
int64_t want(op::rchr_, const auto &text, char32_t unit) { return index_of(text.searched().rfind(unit)); }
int64_t want(op::str_, const auto &text, const auto &wanted) {
  if (text.data == nullptr || wanted.data == nullptr) return -1;
  return index_of(text.searched().find(wanted.wanted()));
}

inline Units trimmed(const Units &units) {
  const Units spaces = U" \t\r\n";
  const size_t first = units.find_first_not_of(spaces);
  if (first == Units::npos || units[first] == 0) return {};
  return units.substr(first, units.find_last_not_of(spaces + U'\0') + 1 - first);
}
bool want(op::trim_, auto &slot) {
  const Units all = slot.content(), kept = trimmed(all);
  if (slot.data == nullptr || (kept == all && !(slot.kIsView && kept.empty()))) return false;
  slot.keep(index_of(all.find(kept)), size_of(kept));
  return true;
}

// Narrow texts, also for streams, are measured; wide texts are not. In a stream, the replaced part may end
// after the content.
int want(op::update_, auto &slot, int64_t at, int64_t old_count, const auto &text) {
  const int64_t count = sizeof(*text.data) == 1 && text.data != nullptr ? text.size() : text.count;
  if (at < 0 || at > slot.length() || old_count < 0 || count < 0) return 0;
  if (text.data == nullptr && count > 0) return 0;
  const int64_t there = slot.length() - at;
  if (!slot.kIsStream) old_count = std::min(old_count, there);
  if (old_count - count > slot.length()) return 0;
  Units content = slot.content();
  content.replace(clipped(at), clipped(old_count), text.units());
  slot.take(content.substr(0, clipped(slot.length() + count - old_count)));
  return 1;
}
int want(op::insert_, auto &slot, int64_t at, const auto &text) {
  return text.units().empty() ? 0 : want(op::update_(), slot, at, 0, text);
}
void want(op::delete_, auto &slot, int64_t at, int64_t count) {
  if (at < 0 || count < 0 || (slot.kIsStream && count > slot.length() - at)) return;
  if (slot.length() - at <= count) return slot.end_at(at);
  slot.take(slot.content().erase(clipped(at), clipped(count)));
}
void want(op::mid_, auto &slot, int64_t start, int64_t count) {
  if (!slot.is_empty() && start >= 0) slot.take(slot.cut('m', start, count));
}
// Units removed at the right end remain in the buffer.
void want(OneOf<op::left_, op::right_> auto op, auto &slot, int64_t count) {
  if (op.kName == "left" && slot.length() > count) return slot.end_at(count);
  if (op.kName == "right" && !slot.is_empty() && slot.length() > count) slot.take(slot.cut('r', 0, count));
}
// Operations that store the result in another record: "mid_string" and so on.
void want(auto op, auto &slot, int64_t start, int64_t count, Takes auto &out) {
  out.take(slot.cut(op.kName[0], start, count));
}
void want(auto op, auto &slot, int64_t count, Takes auto &out) { out.take(slot.cut(op.kName[0], 0, count)); }

// Converts digit by digit, as each step rounds.
struct Reading {
  explicit Reading(const auto &slot) {
    // mub_char adds the character code before it subtracts '0', which rounds differently.
    constexpr bool kAddsTheCode = std::is_same_v<std::decay_t<decltype(slot)>, Slot<mub_char>>;
    const Units units = slot.content(), digits = U"0123456789";
    const auto end_of_digits = [&](size_t i) {
      return std::min(units.find_first_not_of(digits, i), units.size());
    };
    const size_t first = units[0] == U'-' ? 1 : 0, point = end_of_digits(first);
    const size_t end = point > first && units[point] == U'.' ? end_of_digits(point + 1) : point;
    is_long = point > first && point == units.size();
    is_float = point > first && end == units.size();
    for (size_t i = first; i < point; ++i) {
      integer = integer * 10 + (units[i] - U'0');
      const double tens = decimal * 10.0;
      decimal = kAddsTheCode ? tens + units[i] - 48.0 : tens + (units[i] - 48.0);
    }
    for (size_t i = point + 1; i < end; ++i) {
      double digit = units[i] - U'0';
      for (size_t place = point; place < i; ++place) digit /= 10.0;
      decimal += digit;
    }
    if (first == 1) integer = 0 - integer, decimal = 0.0 - decimal;
  }
  uint64_t integer = 0;
  double decimal = 0.0;
  bool is_long, is_float;
};
bool want(op::is_long_, auto &slot) { return Reading(slot).is_long; }
bool want(op::is_float_, auto &slot) { return Reading(slot).is_float; }
int64_t want(op::get_long_, auto &slot) { return static_cast<int64_t>(Reading(slot).integer); }
double want(op::get_float_, auto &slot) { return Reading(slot).decimal; }

// ---- checks

// The argument of want() for a role.
template <class Role>
auto &model_of(Role &role) {
  if constexpr (requires { role.slot; })
    return role.slot;
  else if constexpr (requires { role.value; })
    return role.value;
  else
    return role;
}

inline bool operator==(None, bool) { return true; }
// A refused operation does nothing and returns 0. If want() returns nothing, the expected result is 1. The
// last argument is the result.
template <class... Args>
void check(auto op, auto &world, Args &&...args) {
  const auto all = std::tie(args...);
  const auto compare = [&]<size_t... kRoles>(std::index_sequence<kRoles...>) {
    const auto &result = std::get<sizeof...(kRoles)>(all);
    using Result = std::decay_t<decltype(result)>;
    const bool is_refused = world.failed || world.asks_too_much;
    const auto wanted = [&] { return want(op, model_of(std::get<kRoles>(all))...); };
    if constexpr (!std::is_same_v<Result, None> && !std::is_void_v<decltype(wanted())>) {
      EXPECT_EQ(result, is_refused ? Result{} : static_cast<Result>(wanted()));
    } else {
      if (!is_refused) wanted();
      EXPECT_TRUE(result == !is_refused);
    }
  };
  compare(std::make_index_sequence<sizeof...(Args) - 1>());
}

template <class R>
void by_hand(op::init_, WorldOf<R> &, auto &, auto init) {
  Slot<R> slot;
  std::memset(static_cast<void *>(&slot.record), 0x55, sizeof slot.record);
  init(&slot.record);
  if constexpr (requires { *init(&slot.record); }) {
    EXPECT_EQ(init(&slot.record), &slot.record);
  }
  slot.compare();
}

}  // namespace mub_test

#endif
