// Strings, narrow and wide, and views of narrow ones under programs.
//
// Models hold the units of either kind as characters of 32 bits. kModels has what each operation does to the model,
// and gives.
#include "text_ops.inc"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <list>
#include <string>

#include "interpreter/roles.h"

namespace mub_test {

// role const %r \* \w+;const (char|uint16_t) \* text;int64_t count = Self<%s>, Text<%s, kRead>
// role (const )?%r \* .* = Self<%s>
// role const char \* text;int64_t count = Text<%s, kPut, char>
// role const uint16_t \* text;int64_t count = Text<%s, kPut>
// role const uint16_t \* \w+;int64_t (\w+_)?length = Text<%s, kCounted>
// role const (char|uint16_t) \* (from|to) = Text<%s, kTerminated>
// role const mub_char \* other = Viewed<mub_char>
// role const mub_string \* string = Viewed<mub_string>
// role mub_char \* out = Chars
// role int (character|unit|from|to) = Letter<%s>
// role int64_t capacity = Capacity
// role int64_t (position|start|index|offset|(old_)?count|length) = Number
// role (int64_t|float|double) (value|otherwise) = Numeral<%t>

using Units = std::u32string;

inline int64_t size_of(const Units &units) { return static_cast<int64_t>(units.size()); }

template <class Unit>
Units units_of(const Unit *units, int64_t count) {
  const auto *first = reinterpret_cast<const std::make_unsigned_t<Unit> *>(units);
  return Units(first, first + count);
}

// `count` units from `start`, or as many as there are; none where either lies outside.
inline Units part(const Units &units, int64_t start, int64_t count) {
  if (start < 0 || count < 1 || start >= size_of(units)) return {};
  return units.substr(clipped(start), clipped(count));
}

inline Units trimmed(const Units &units) {
  const Units spaces = U" \t\r\n";
  const size_t first = units.find_first_not_of(spaces);
  if (first == Units::npos || units[first] == 0) return {};
  return units.substr(first, units.find_last_not_of(spaces + U'\0') + 1 - first);
}

template <class R>
struct Slot {
  using Unit = std::remove_pointer_t<decltype(R::data)>;

  ~Slot() { std::free(record.data); }

  bool is_empty() const { return filled == 0; }
  int64_t length() const { return filled; }
  int64_t capacity() const { return std::max<int64_t>(size_of(block), 1) - 1; }
  Units content() const { return part(block, 0, filled); }
  Units reach() const { return part(block, 0, capacity()); }
  const Unit *own() const { return record.data; }
  int64_t own_count() const { return size_of(block); }

  void grow(int64_t wanted) {
    if (wanted <= capacity()) return;
    const int64_t step = std::clamp<int64_t>(filled / 2, 8, 0x800000);
    block.resize(static_cast<size_t>(std::max(capacity() + step, wanted) / 8 * 8 + 8));
  }
  void end_at(int64_t length) {
    if (block.empty() || length < 0) return;
    filled = std::min(length, capacity());
    block[static_cast<size_t>(filled)] = 0;
  }
  void take(const Units &content) {
    loose = capacity();
    grow(size_of(content));
    block.replace(0, content.size(), content);
    end_at(size_of(content));
  }
  template <class Change>
  void change_each(Change change) {
    std::transform(block.begin(), block.begin() + filled, block.begin(), change);
  }

  // What bytes of it are does not depend on their order then.
  void make_halves_alike() {
    for (size_t i = 0; i < block.size(); ++i)
      record.data[i] = static_cast<Unit>(block[i] = (block[i] & 0xFF) * 0x101);
  }

  Units first(int64_t count) const { return part(content(), 0, count); }
  Units middle(int64_t start, int64_t count) const { return part(content(), start, count); }
  Units last(int64_t count) const {
    return count < 1 ? Units() : part(content(), std::max<int64_t>(filled - count, 0), count);
  }
  void left(int64_t count) {
    if (filled > count) end_at(count);
  }
  void mid(int64_t start, int64_t count) {
    if (filled > 0 && start >= 0) take(middle(start, count));
  }
  void right(int64_t count) {
    if (filled > 0 && filled > count) take(last(count));
  }
  bool trim() {
    const Units kept = trimmed(content());
    if (size_of(kept) == filled) return false;
    take(kept);
    return true;
  }
  void swap(Slot &other) {
    block.swap(other.block);
    std::swap(filled, other.filled);
  }
  void clear() {
    block.clear();
    filled = 0;
  }

  void compare() {
    ASSERT_EQ(record.length, filled);
    ASSERT_EQ(record.capacity, capacity());
    ASSERT_EQ(record.data == nullptr, block.empty());
    const Units read = units_of(record.data, own_count());
    for (auto i = static_cast<size_t>(filled) + 1; i < static_cast<size_t>(loose); ++i) block[i] = read[i];
    ASSERT_EQ(read, block);
    loose = 0;
    if (filled < 3000) return;
    std::free(record.data);
    record = {};
    clear();
  }

  R record = {};
  Units block;  // the buffer and its end; empty where there is none
  int64_t filled = 0;
  int64_t loose = 0;  // what lies between the terminator and here is left open
};

// A part of a view. A view of another text does not take one that is bound.
struct Part : mub_stringx {
  bool is_bound;
};

template <>
struct Slot<mub_stringx> {
  using Unit = char;

  bool is_empty() const { return model.text == nullptr || model.length == 0; }
  int64_t length() const { return model.length; }
  int64_t capacity() const { return own_count(); }
  Units content() const { return units_of(own(), own_count()); }
  Units reach() const { return content(); }
  const char *own() const { return own_count() == 0 ? nullptr : model.text + model.start; }
  int64_t own_count() const { return model.text == nullptr ? 0 : std::max<int64_t>(model.length, 0); }

  // Starts may lie anywhere.
  Part part_at(uint64_t distance, int64_t length, bool is_bound) const {
    return {{model.text, static_cast<int64_t>(static_cast<uint64_t>(model.start) + distance), length},
            is_bound};
  }
  Part first(int64_t count) const {
    const bool is_bound = !is_empty() && count > 0;
    return part_at(0, is_bound ? std::min(count, own_count()) : 0, is_bound);
  }
  Part middle(int64_t offset, int64_t count) const {
    const bool is_bound = !is_empty() && offset >= 0 && count > 0 && offset < model.length;
    return part_at(static_cast<uint64_t>(offset), is_bound ? std::min(count, model.length - offset) : 0,
                   is_bound);
  }
  Part last(int64_t count) const {
    const Part same = first(count);
    return part_at(same.length > 0 ? static_cast<uint64_t>(model.length - same.length) : 0, same.length,
                   same.is_bound);
  }
  void left(int64_t count) {
    if (!is_empty() && model.length > count) model.length = count;
  }
  void mid(int64_t offset, int64_t count) {
    if (!is_empty() && offset >= 0) model = middle(offset, count);
  }
  void right(int64_t count) {
    const auto cut = static_cast<uint64_t>(model.length) - static_cast<uint64_t>(count);
    if (!is_empty() && model.length > count) model = part_at(cut, std::max<int64_t>(count, 0), false);
  }
  void take(const Part &part) {
    if (part.is_bound && part.text != model.text) return;
    model = {model.text, part.start, part.length};
  }
  bool trim() {
    if (model.text == nullptr) return false;
    const Units all = content(), kept = trimmed(all);
    if (!kept.empty() && kept.size() == all.size()) return false;
    model = part_at(kept.empty() ? 0 : all.find(kept), size_of(kept), false);
    return true;
  }
  void swap(Slot &other) { std::swap(model, other.model); }
  void clear() { model = {}; }

  void compare() {
    ASSERT_EQ(record.text, model.text);
    ASSERT_EQ(record.start, model.start);
    ASSERT_EQ(record.length, model.length);
  }

  mub_stringx record = {}, model = {};
};

template <class R>
struct WorldOf : World {
  using World::World;

  void compare() {
    for (auto &slot : slots) {
      ASSERT_NO_FATAL_FAILURE(slot.compare());
      mix(slot.length());
    }
    asks_too_much = false;
  }

  std::list<std::vector<char>> texts;  // those that views have
  Slot<R> slots[3];
  Slot<R> *self = &slots[0];   // of this step
  bool asks_too_much = false;  // no heap has what this step wants
};

// ---- roles

template <class R>
struct Peer {
  explicit Peer(WorldOf<R> &world) : slot(world.slots[world.program.below(3)]) {}
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};
template <class R>
inline constexpr bool kIsWritten<Peer<R>> = true;
template <class R>
using Destination = Peer<R>;
template <class R>
struct Self {
  explicit Self(WorldOf<R> &world) : slot(Peer<R>(world).slot) { world.self = &slot; }
  auto arguments() const { return std::tuple(&slot.record); }
  Slot<R> &slot;
};

struct Number {
  template <class R>
  explicit Number(WorldOf<R> &world) {
    const Slot<R> &slot = *world.self;
    // Those of views may be far away.
    const int64_t bound = world.program.one_in(2) ? slot.length() : slot.capacity();
    number = world.program.near(std::max<int64_t>(bound, -2));
  }
  auto arguments() const { return std::tuple(number); }
  operator int64_t() const { return number; }
  int64_t number;
};
inline int64_t draw_huge(Program &program) {
  constexpr int64_t kHuge[] = {INT64_MAX, INT64_MAX - 7, INT64_MAX - 64, INT64_MAX / 2};
  return kHuge[program.below(4)];
}
struct Capacity : Number {
  template <class R>
  explicit Capacity(WorldOf<R> &world) : Number(world) {
    world.asks_too_much = number > 5000;
    if (world.asks_too_much) number = draw_huge(world.program);
  }
};
template <class T>
struct Numeral {
  template <class R>
  explicit Numeral(WorldOf<R> &world) {
    Program &program = world.program;
    if constexpr (std::is_integral_v<T>) {
      value = program.one_in(4) ? program.near(0) : static_cast<int64_t>(program.word()) >> program.below(64);
    } else {
      constexpr int kMost = std::numeric_limits<T>::max_exponent;
      const auto mantissa = static_cast<T>(program.below(0x10000) - 0x8000);
      value = std::ldexp(mantissa, static_cast<int>(program.below(2 * kMost)) - kMost);
    }
    const std::string text = std::to_string(value);
    printed = units_of(text.data(), static_cast<int64_t>(text.size()));
  }
  auto arguments() const { return std::tuple(value); }
  T value;
  Units printed;
};

// A sort of units, of few letters that recur, or of those that some operation looks at. The halves of the wide 'a',
// 'b' and 'c' recur in one another.
template <class Unit>
Units draw_letters(Program &program) {
  static const Units kLetters[] = {U"ab", U"abc", Units(U" \t\r\n\0\v?aAzZ[@`{\xE9", 16), U"-.0123456789x"};
  Units letters = kLetters[program.below(4)];
  if (sizeof(Unit) == 1) return letters;
  for (char32_t &letter : letters) {
    const size_t wide = Units(U"abc?@").find(letter);
    if (wide != Units::npos) letter = U"\u6162\u6261\u6161\u0141\u0120"[wide];
  }
  return letters;
}
inline char32_t draw_one(Program &program, const Units &letters) {
  return letters[static_cast<size_t>(program.below(size_of(letters)))];
}
// At least one. Long ones repeat a short one, but for two units.
template <class Unit>
Units draw_units(Program &program) {
  const Units letters = draw_letters<Unit>(program);
  const auto size = static_cast<size_t>(1 + (program.one_in(6) ? program.below(700) : program.below(12)));
  const auto period = size < 13 ? size : static_cast<size_t>(1 + program.below(4));
  Units units;
  while (units.size() < size)
    units += units.size() < period ? draw_one(program, letters) : units[units.size() - period];
  for (int i = 0; i < 2 && size > period; ++i)
    units[static_cast<size_t>(program.below(size_of(units)))] = draw_one(program, letters);
  return units;
}

template <class R>
struct Letter {
  explicit Letter(WorldOf<R> &world) : unit(draw_one(world.program, draw_letters<Unit>(world.program))) {
    given = static_cast<int>(unit) + static_cast<int>(world.program.below(3) - 1) * (1 << 8 * sizeof(Unit));
  }
  auto arguments() const { return std::tuple(given); }
  operator char32_t() const { return unit; }
  using Unit = typename Slot<R>::Unit;
  char32_t unit;
  int given;  // only the low bits count
};

// So many units are a character of the runtime, as which texts without a count are measured and searched for.
template <class Unit>
constexpr size_t kStep = sizeof(Unit) == 1 ? 1 : sizeof(wchar_t) / sizeof(Unit);

// The characters before the first of 0; -1 when there is none.
template <class Unit>
int64_t measured_length(const Units &units) {
  constexpr size_t step = kStep<Unit>;
  for (size_t i = 0; i + step <= units.size(); i += step) {
    if (units.compare(i, step, Units(step, 0)) == 0) return static_cast<int64_t>(i / step);
  }
  return -1;
}

// How a text is given: with a count, which may be one below 1; up to its end; or in either way, to be read or to be put
// into the record, and then maybe more of it than any heap has.
enum Given { kCounted, kTerminated, kRead, kPut };

// NULL, units of the record's own, the same elsewhere, nearly the same, or others. A copy ends with its block.
template <class R, Given kGiven, class Unit = typename Slot<R>::Unit>
struct Text {
  static constexpr int64_t kBytes = sizeof(typename Slot<R>::Unit) / sizeof(Unit);

  explicit Text(WorldOf<R> &world) {
    Program &program = world.program;
    const int64_t kind = program.below(8);
    count = program.below(4) - 1;
    if (kind == 0 && kGiven != kCounted) return;
    if constexpr (kBytes > 1) world.self->make_halves_alike();
    const int64_t room = world.self->own_count() * kBytes;
    bool is_own = kind < 3 && room > 0;
    all = draw_units<Unit>(program);
    if (kind < 5 && room > 0) {
      const int64_t at = program.below(room);
      const char32_t other = all[0];
      data = reinterpret_cast<const Unit *>(world.self->own()) + at;
      all = units_of(data, std::min(room - at, 1 + program.below(300)));
      if (kind == 4) all[static_cast<size_t>(program.below(size_of(all)))] = other;
    }
    if (kGiven == kTerminated || (kGiven != kCounted && program.one_in(3))) {
      count = program.one_in(4) ? INT64_MIN : -1;
      for (; (measured = measured_length<Unit>(all)) < 0; all += U'\0') is_own = false;
    } else if (kGiven != kCounted || count > 0) {
      count = program.one_in(8) ? program.below(size_of(all)) : size_of(all);
    }
    world.asks_too_much = kGiven == kPut && program.one_in(16);
    if (world.asks_too_much) count = draw_huge(program);
    if (is_own) return;
    for (const char32_t unit : all) copy.push_back(static_cast<Unit>(unit));
    copy.shrink_to_fit();
    data = copy.data();
  }
  auto arguments() const {
    if constexpr (kGiven == kTerminated)
      return std::tuple(data);
    else
      return std::tuple(data, count);
  }

  int64_t size() const { return count < 0 ? measured : count; }
  Units units() const { return part(all, 0, size()); }
  // As a search for it takes it: up to its end in characters of the runtime, or by its count, at least one unit.
  Units wanted() const {
    if (measured >= 0) return all.substr(0, static_cast<size_t>(measured) * kStep<Unit>);
    return part(all, 0, std::max<int64_t>(count, 1));
  }
  // As units of the record.
  Units put() const {
    Units put = units();
    for (char32_t &unit : put) unit |= kBytes > 1 && unit >= 0x80 ? 0xFF00 : 0;
    return put;
  }

  Units all;
  std::vector<Unit> copy;
  const Unit *data = nullptr;
  int64_t count;
  int64_t measured = -1;
};
struct Chars {
  template <class W>
  explicit Chars(W &) : out(std::make_unique<mub_char>()) {}
  auto arguments() const { return std::tuple(out.get()); }
  void take(const Part &part) const {
    const auto text = reinterpret_cast<uintptr_t>(part.text);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(out->data),
              text == 0 ? 0 : text + static_cast<uintptr_t>(part.start));
    EXPECT_EQ(out->length, part.length);
  }
  std::unique_ptr<mub_char> out;
};
// A text for views, whose length only a mub_char may leave to be measured.
template <class T>
struct Viewed {
  template <class W>
  explicit Viewed(W &world) : text(world.texts.emplace_back()) {
    for (const char32_t unit : draw_units<char>(world.program)) text.push_back(static_cast<char>(unit));
    record.length = length = static_cast<int64_t>(text.size());
    record.data = text.data();
    if constexpr (std::is_same_v<T, mub_char>) {
      if (world.program.one_in(2)) return;
      text.push_back(0);
      record = {world.program.one_in(4) ? nullptr : text.data(), -1};
      length = record.data == nullptr ? 0 : std::find(text.begin(), text.end(), 0) - text.begin();
    }
  }
  auto arguments() const { return std::tuple(&record); }
  std::vector<char> &text;
  T record = {};
  int64_t length;
};

// ---- what the models are made of

inline int as_is(char32_t unit) { return static_cast<int>(unit); }
inline int lowered(char32_t unit) { return unit > 0xFF ? as_is(unit) : std::tolower(as_is(unit)); }
inline int raised(char32_t unit) { return unit > 0xFF ? as_is(unit) : std::toupper(as_is(unit)); }

// Lengths below 0 count as they are.
template <class Fold>
int difference(const Units &a, int64_t a_length, const Units &b, int64_t b_length, Fold fold) {
  const auto are_alike = [fold](char32_t x, char32_t y) { return fold(x) == fold(y); };
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), are_alike);
  if (x != a.end() && y != b.end()) return fold(*x) - fold(*y);
  return static_cast<int>(static_cast<uint32_t>(a_length) - static_cast<uint32_t>(b_length));
}
template <class S, class T, class Fold>
int order(const S &slot, const T &text, Fold fold) {
  const bool has_text = text.data != nullptr && text.count != 0;
  if (slot.is_empty()) return has_text && text.size() > 0 ? -1 : 0;
  return has_text ? difference(slot.content(), slot.length(), text.units(), text.size(), fold) : 1;
}

inline int64_t found(const Units &content, const Units &wanted, int64_t start = 0) {
  if (start < 0 || start >= size_of(content)) return -1;
  return index_of(content.find(wanted, clipped(start)));
}
inline int64_t found(const Units &content, char32_t unit, int64_t start = 0) {
  return unit == 0 ? -1 : found(content, Units(1, unit), start);
}
// A text without a count is searched for by characters of the runtime, up to the first of 0; bytes within the content,
// wide ones in the whole block.
template <class R, class T>
int64_t found(const Slot<R> &slot, const T &text, int64_t start) {
  if (text.data == nullptr) return -1;
  if (text.count >= 0) return found(slot.content(), text.wanted(), start);
  constexpr auto step = kStep<typename Slot<R>::Unit>;
  const Units block = step == 1 ? slot.content() : slot.block, wanted = text.wanted();
  for (auto at = clipped(start); start >= 0 && at < static_cast<size_t>(slot.length()); at += step) {
    if (block.compare(at, wanted.size(), wanted) == 0) return static_cast<int64_t>(at);
    if (block.compare(at, step, Units(step, 0)) == 0) break;
  }
  return -1;
}
template <class T>
int64_t found(const Slot<mub_stringx> &view, const T &text, int64_t start) {
  if (text.data == nullptr) return -1;
  return found(view.content(), part(text.all, 0, std::max<int64_t>(text.size(), 1)), start);
}

// Puts what next() points to in the place of each marker; NULL ends that.
template <class R, class T, class Next>
int64_t substitute(Slot<R> &slot, const T &marker, Next next) {
  if (marker.measured < 1) return 0;
  const Units content = slot.content();
  Slot<R> built;
  built.grow(slot.length());
  int64_t hits = 0, position = 0;
  for (int64_t hit; (hit = found(slot, marker, position)) >= 0 && hit <= slot.length() - marker.measured;
       ++hits) {
    const T *text = next();
    if (text == nullptr) break;
    built.take(built.content() + part(content, position, hit - position));
    built.take(built.content() + text->units());
    position = hit + marker.measured;
  }
  built.take(built.content() + part(content, position, INT64_MAX));
  slot.swap(built);
  return hits;
}

// Narrow texts are measured, wide ones are not.
template <class R, class T>
bool replace_part(Slot<R> &slot, int64_t at, int64_t old_count, const T &text, int64_t least) {
  const int64_t count =
      sizeof(typename Slot<R>::Unit) == 1 && text.data != nullptr ? text.size() : text.count;
  if (at < 0 || at > slot.length() || old_count < 0 || count < least) return false;
  if (text.data == nullptr && count > 0) return false;
  Units content = slot.content();
  content.replace(clipped(at), clipped(old_count), text.units());
  slot.take(content);
  return true;
}

template <class R>
int64_t unit_at(const Slot<R> &slot, int64_t index) {
  const Units unit = part(slot.reach(), index, 1);
  if (sizeof(typename Slot<R>::Unit) > 1) return unit.empty() ? 0 : unit[0];
  return unit.empty() ? -1 : static_cast<signed char>(unit[0]);
}

// Digits, and those past a point, step by step.
struct Reading {
  explicit Reading(const Units &units) {
    const size_t first = units[0] == '-' ? 1 : 0;
    const auto end_from = [&units](size_t i) {
      return std::min(units.find_first_not_of(U"0123456789", i), units.size());
    };
    size_t end = end_from(first);
    for (size_t i = first; i < end; ++i) {
      integer = integer * 10 + (units[i] - U'0');
      decimal = decimal * 10.0 + (units[i] - U'0');
    }
    is_long = end > first && end == units.size();
    if (end > first && units[end] == '.') {
      const size_t point = end;
      end = end_from(point + 1);
      for (size_t i = point + 1; i < end; ++i) {
        double digit = units[i] - U'0';
        for (size_t place = point; place < i; ++place) digit /= 10.0;
        decimal += digit;
      }
    }
    is_float = end > first && end == units.size();
    if (first == 1) integer = 0 - integer, decimal = 0.0 - decimal;
  }
  uint64_t integer = 0;
  double decimal = 0.0;
  bool is_long, is_float;
};

inline std::string bytes_of(const Units &units) {
  std::string bytes;
  for (const char32_t unit : units) bytes += static_cast<char>(unit);
  return bytes;
}

// Any of some operations.
template <class... Ops>
struct AnyOf {
  template <class Op, class = std::enable_if_t<(std::is_same_v<Op, Ops> || ...)>>
  AnyOf(Op) {}
};
template <class... Models>
struct Overloads : Models... {
  using Models::operator()...;
};
template <class... Models>
Overloads(Models...) -> Overloads<Models...>;

using View = Slot<mub_stringx>;

// What an operation does to the models of its records, and gives; a refused one does nothing and gives 0.
const Overloads kModels = {
    [](op::term_, auto &slot) { slot.clear(); },
    [](op::is_empty_, auto &slot) { return slot.is_empty(); },
    [](op::expand_, auto &slot, int64_t capacity) { return slot.grow(capacity), 1; },
    [](op::shrink_, auto &slot, int64_t length) { slot.end_at(length); },
    [](op::shrink_, View &view) {
      view.model = {view.model.text, 0, 0};
    },
    [](op::zero_, auto &slot, int64_t position, int64_t count) {
      if (position < 0 || count < 1 || count > slot.capacity() - position) return;
      slot.block.replace(clipped(position), clipped(count), clipped(count), 0);
    },
    [](op::swap_, auto &a, auto &b) { a.swap(b); },
    [](op::clone_, auto &source, auto &destination) {
      if (&source == &destination) return 1;
      destination.grow(source.capacity());
      destination.take(source.content());
      return 1;
    },

    [](AnyOf<op::copy_, op::copy_str_>, auto &slot, const auto &text) { return slot.take(text.put()), 1; },
    [](AnyOf<op::append_, op::append_str_>, auto &slot, const auto &text) {
      if (text.data != nullptr) slot.take(slot.content() + text.put());
    },
    [](op::copy_, View &view, View &other) { view.model = other.model; },
    [](op::copy_string_, View &view, const auto &viewed) {
      view.model = {viewed.record.data, 0, viewed.length};
    },
    [](op::copy_char_, View &view, const Viewed<mub_char> &viewed) {
      view.model = {viewed.record.data, 0, viewed.length};
    },
    [](op::copy_char_, auto &slot, char32_t unit) { slot.take(Units(unit == 0 ? 0 : 1, unit)); },
    [](op::append_char_, auto &slot, char32_t unit) { slot.take(slot.content() + unit); },
    [](AnyOf<op::copy_integer_, op::copy_long_, op::copy_float_, op::copy_double_>, auto &slot,
       const auto &number) { slot.take(number.printed); },
    [](AnyOf<op::append_integer_, op::append_long_, op::append_float_, op::append_double_>, auto &slot,
       const auto &number) { slot.take(slot.content() + number.printed); },

    [](op::is_long_, auto &view) { return Reading(view.content()).is_long; },
    [](op::is_float_, auto &view) { return Reading(view.content()).is_float; },
    [](op::get_long_, auto &view) { return Reading(view.content()).integer; },
    [](op::get_float_, auto &view) { return Reading(view.content()).decimal; },
    [](op::get_long_, auto &string, const auto &otherwise) {
      return string.is_empty() ? otherwise.value : static_cast<int64_t>(Reading(string.content()).integer);
    },
    [](op::get_float_, auto &string, const auto &otherwise) {
      return string.is_empty() ? otherwise.value : std::strtod(bytes_of(string.block).c_str(), nullptr);
    },
    [](op::get_double_, auto &string, const auto &otherwise) {
      return string.is_empty() ? otherwise.value : Reading(string.content()).decimal;
    },

    [](op::get_at_, auto &slot, int64_t index) { return unit_at(slot, index); },
    [](op::set_at_, auto &slot, int64_t index, char32_t unit) {
      if (index >= 0 && index < slot.capacity()) slot.block[static_cast<size_t>(index)] = unit;
    },
    [](op::make_lower_, auto &slot) { slot.change_each(lowered); },
    [](op::make_upper_, auto &slot) { slot.change_each(raised); },
    [](op::compare_, auto &slot, const auto &text) { return order(slot, text, as_is); },
    [](op::icompare_, auto &slot, const auto &text) { return order(slot, text, lowered); },
    [](op::find_char_, auto &slot, char32_t unit) { return found(slot.content(), unit); },
    [](op::find_char_pos_, auto &slot, char32_t unit, int64_t start) {
      return found(slot.content(), unit, start);
    },
    [](op::reverse_find_, auto &slot, char32_t unit) {
      return unit == 0 ? -1 : index_of(slot.content().rfind(unit));
    },
    [](op::find_, auto &slot, const auto &text) { return found(slot, text, 0); },
    [](op::find_pos_, auto &slot, const auto &text, int64_t start) { return found(slot, text, start); },
    [](op::chr_, const auto &text, char32_t unit) { return found(text.units(), Units(1, unit)); },
    [](op::rchr_, const auto &text, char32_t unit) { return index_of(text.units().rfind(unit)); },
    [](op::str_, const auto &text, const auto &wanted) { return found(text.units(), wanted.wanted()); },
    [](op::cmp_, const auto &a, const auto &b) {
      return difference(a.units(), a.count, b.units(), b.count, as_is);
    },
    [](op::icmp_, const auto &a, const auto &b) {
      return difference(a.units(), a.count, b.units(), b.count, lowered);
    },

    [](op::trim_, auto &slot) { return slot.trim(); },
    [](op::replace_char_, auto &slot, char32_t from, char32_t to) {
      int64_t hits = 0;
      slot.change_each([&](char32_t unit) { return unit == from ? ++hits, to : unit; });
      return hits;
    },
    [](op::replace_, auto &slot, const auto &from, const auto &to) {
      return substitute(slot, from, [&] { return &to; });
    },
    [](op::insert_, auto &slot, int64_t position, const auto &text) {
      return replace_part(slot, position, 0, text, 1);
    },
    [](op::update_, auto &slot, int64_t position, int64_t old_count, const auto &text) {
      return replace_part(slot, position, old_count, text, 0);
    },
    [](op::delete_, auto &slot, int64_t position, int64_t count) {
      if (position < 0 || count < 0) return;
      if (slot.length() - position <= count) return slot.end_at(position);
      slot.take(slot.first(position) + part(slot.content(), position + count, INT64_MAX));
    },
    [](op::left_, auto &slot, int64_t count) { slot.left(count); },
    [](op::mid_, auto &slot, int64_t start, int64_t count) { slot.mid(start, count); },
    [](op::right_, auto &slot, int64_t count) { slot.right(count); },
    [](AnyOf<op::left_string_, op::left_wchar_, op::left_char_>, auto &slot, int64_t count, auto &out) {
      return out.take(slot.first(count)), 1;
    },
    [](AnyOf<op::mid_string_, op::mid_wchar_, op::mid_char_>, auto &slot, int64_t start, int64_t count,
       auto &out) { return out.take(slot.middle(start, count)), 1; },
    [](AnyOf<op::right_string_, op::right_wchar_, op::right_char_>, auto &slot, int64_t count, auto &out) {
      return out.take(slot.last(count)), 1;
    },
};

template <class R>
Slot<R> &model_of(Self<R> &self) {
  return self.slot;
}
template <class R>
Slot<R> &model_of(Peer<R> &peer) {
  return peer.slot;
}
template <class Role>
Role &model_of(Role &role) {
  return role;
}

template <class Op, class R, class Drawn, size_t... kRoles>
void compare_with_model(Op op, WorldOf<R> &world, const Drawn &drawn, std::index_sequence<kRoles...>) {
  const auto &result = std::get<sizeof...(kRoles)>(drawn);
  using Result = std::decay_t<decltype(result)>;
  const bool is_refused = world.failed || world.asks_too_much;
  const auto model = [&] { return kModels(op, model_of(std::get<kRoles>(drawn))...); };
  if constexpr (!std::is_same_v<Result, None>) {
    EXPECT_EQ(result, is_refused ? Result{} : static_cast<Result>(model()));
  } else if (!is_refused) {
    model();
  }
}
// The last one drawn is the result.
template <class Op, class R, class... Drawn>
void check(Op op, WorldOf<R> &world, Drawn &&...drawn) {
  compare_with_model(op, world, std::tie(drawn...), std::make_index_sequence<sizeof...(Drawn) - 1>());
}

template <class R, class F>
void by_hand(op::init_, WorldOf<R> &, F init) {
  R record = Slot<R>().record;
  std::memset(static_cast<void *>(&record), 0x55, sizeof record);
  init(&record);
  const auto &[data, second, third] = record;
  EXPECT_TRUE(data == nullptr && second == 0 && third == 0);
}
// Where the number does not fit, machines differ in it.
template <class F>
void by_hand(op::get_integer_, WorldOf<mub_string> &world, F get) {
  const Self<mub_string> self(world);
  const Numeral<int64_t> otherwise(world);
  const auto read = static_cast<int>(std::strtol(bytes_of(self.slot.block).c_str(), nullptr, 10));
  EXPECT_EQ(get(&self.slot.record, otherwise.value), self.slot.is_empty() ? otherwise.value : read);
}
using Terminated = Text<mub_string, kTerminated>;
template <class F>
void by_hand(op::match_, WorldOf<mub_string> &world, F match) {
  const Self<mub_string> self(world);
  const Terminated marker(world), first(world), second(world);
  const char *end = nullptr;
  world.call([&] { match(&self.slot.record, marker.data, first.data, second.data, end); });
  if (world.failed) return;
  const Terminated *next = &first;
  substitute(self.slot, marker, [&]() -> const Terminated * {
    const auto *text = std::exchange(next, next == &first && first.data != nullptr ? &second : nullptr);
    return text == nullptr || text->data == nullptr ? nullptr : text;
  });
}
// The first of some conversions, which are for as many arguments. A sign counts for 32 bytes wherever it stands but at
// the end; a bare "%s", which the first three of its conversions end with, for its text.
template <class F>
void by_hand(op::format_, WorldOf<mub_string> &world, F print) {
  static const char *const kConversions[][6] = {{"%d", "%i", "%u|", "%c", "%+05d", "%%%hhx"},
                                                {"%s", "<%s", "%%%s", "%5s", "%-s", "%.2s"},
                                                {"%f", "%.1e", "%G", "%9a", "x%.0f", "%%%g"},
                                                {"%s", ".%s", "%%%%%s", "%.9s", "%-7s", "%+s"},
                                                {"%lld", "%llu", "%jd%%", "%-9jd", "%jx", "%+lld%%%%"}};
  const Self<mub_string> self(world);
  const Numeral<int64_t> number(world);
  const Numeral<double> decimal(world);
  const Terminated texts[] = {Terminated(world), Terminated(world)};
  std::string format = world.program.one_in(4) ? "= " : "";
  int64_t estimate = 0;
  const auto count = static_cast<size_t>(world.program.below(6));
  for (size_t i = 0; i < count; ++i) {
    const auto which = static_cast<size_t>(world.program.below(6));
    format += kConversions[i][which];
    if (i % 2 == 1 && which < 3 && texts[i / 2].data != nullptr) estimate += texts[i / 2].size() - 32;
  }
  if (!format.empty()) estimate += 32 * std::count(format.begin(), format.end() - 1, '%');
  const auto low = static_cast<int>(number.value & 0xFFFF) - 0x8000;
  const auto print_with = [&](auto printer, auto... to) {
    return printer(to..., format.c_str(), low, texts[0].data, decimal.value, texts[1].data, number.value);
  };
  std::string printed(5000, '?');
  printed.resize(static_cast<size_t>(print_with(std::snprintf, printed.data(), printed.size())));
  world.call([&] { print_with(print, &self.slot.record); });
  if (world.failed) return;
  Slot<mub_string> built;
  if (format.empty()) return self.slot.end_at(0);
  built.grow(estimate + static_cast<int64_t>(format.size()));
  built.take(units_of(printed.data(), static_cast<int64_t>(printed.size())));
  self.slot.swap(built);
}

}  // namespace mub_test

#include "text_steps.inc"
