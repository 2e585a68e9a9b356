// Programs for strings, narrow and wide, and views of narrow strings.
#include "text_ops.inc"

#include <cstdio>

#include "interpreter/units.h"

namespace mub_test {

// role const %r \* \w+;const (char|uint16_t) \* text;int64_t count = Self<%s>, Text<%s, kRead>
// role (const )?%r \* .* = Self<%s>
// role const char \* text;int64_t count = Text<%s, kPut, char>
// role const uint16_t \* text;int64_t count = Text<%s, kPut>
// role const uint16_t \* \w+;int64_t (\w+_)?length = Text<%s, kCounted>
// role const (char|uint16_t) \* (from|to) = Text<%s, kTerminated>
// role const mub_char \* other = Peer<mub_char>
// role const mub_string \* string = Viewed
// role mub_char \* out = Chars
// role (int64_t|float|double) (value|otherwise) = Drawn<%t, draw_numeral<%t>>

template <class T>
constexpr auto draw_numeral = [](auto &world) {
  Program &program = world.program;
  if constexpr (std::is_integral_v<T>) {
    return program.one_in(4) ? program.near(0) : static_cast<T>(program.word()) >> program.below(64);
  } else {
    constexpr int kMost = std::numeric_limits<T>::max_exponent;
    const auto mantissa = static_cast<T>(program.below(0x10000) - 0x8000);
    return std::ldexp(mantissa, static_cast<int>(program.below(2 * kMost)) - kMost);
  }
};

// A string of which there are views.
struct Viewed : Peer<mub_char> {
  using Peer<mub_char>::Peer;
  auto arguments() const { return std::tuple(&string); }
  mub_string string = {slot.data, slot.measured(), slot.measured()};
};
struct Chars {
  explicit Chars(auto &) : out(std::make_unique<mub_char>()) {}
  auto arguments() const { return std::tuple(out.get()); }
  void take(const Part &part) const {
    const auto start = part.data == nullptr ? 0 : static_cast<uintptr_t>(part.start);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(out->data), reinterpret_cast<uintptr_t>(part.data) + start);
    EXPECT_EQ(out->length, part.filled);
  }
  std::unique_ptr<mub_char> out;
};

// ---- views

using View = Slot<mub_stringx>;

void bind(View &view, const Span<char> &span) { static_cast<Span<char> &>(view) = span; }
void want(op::shrink_, View &view) { view.start = view.filled = 0; }
void want(op::swap_, View &a, View &b) { std::swap<Span<char>>(a, b); }
void want(op::copy_, View &view, View &other) { bind(view, other); }
void want(OneOf<op::copy_char_, op::copy_string_> auto, View &view, Slot<mub_char> &other) {
  bind(view, {other.data, other.units, 0, other.measured()});
}
void want(OneOf<op::left_, op::right_> auto op, View &view, int64_t count) {
  if (view.is_empty() || view.filled <= count) return;
  const bool is_left = op.kName == "left";
  if (!is_left) view.start = wrapping_sum(wrapping_sum(view.start, view.filled), wrapping_sum(~count, 1));
  view.filled = is_left ? count : std::max<int64_t>(count, 0);
}

// ---- strings

// A copy of a single 0 unit is empty.
void want(op::copy_char_, auto &slot, char32_t unit) { slot.take(Units(unit == 0 ? 0 : 1, unit)); }
void want(op::append_char_, auto &slot, char32_t unit) { slot.take(slot.content() + unit); }
template <class Op>
concept Prints = OneOf<Op, op::copy_integer_, op::copy_long_, op::copy_float_, op::copy_double_,
                       op::append_integer_, op::append_long_, op::append_float_, op::append_double_>;
void want(Prints auto op, auto &slot, auto number) {
  const std::string printed = std::to_string(number);
  slot.take((op.kName[0] == 'a' ? slot.content() : Units()) + Units(printed.begin(), printed.end()));
}
template <class T>
T want(OneOf<op::get_long_, op::get_float_, op::get_double_> auto, auto &string, T otherwise) {
  if (string.is_empty()) return otherwise;
  if (std::is_same_v<T, float>) return static_cast<T>(std::strtod(string.data, nullptr));
  const Reading reading(string);
  return std::is_same_v<T, double> ? static_cast<T>(reading.decimal) : static_cast<T>(reading.integer);
}
// If the number overflows, the result depends on the machine.
void by_hand(op::get_integer_, auto &world, auto &slot, auto get) {
  const int64_t otherwise = draw_numeral<int64_t>(world);
  EXPECT_EQ(get(&slot.record, otherwise),
            slot.is_empty() ? otherwise : static_cast<int>(std::strtol(slot.data, nullptr, 10)));
}

int64_t want(op::replace_char_, auto &slot, char32_t from, char32_t to) {
  const Units before = slot.content();
  change_each(slot, [&](char32_t unit) { return unit == from ? to : unit; });
  return std::ranges::count(before, from);
}
// Replaces each marker by the text from next(), until that is NULL.
template <class R>
int64_t substitute(Slot<R> &slot, const auto &marker, auto next) {
  if (marker.measured < 1) return 0;
  const Units content = slot.content();
  Slot<R> built;
  built.grow(slot.length());
  int64_t hits = 0, position = 0;
  for (int64_t hit; (hit = want(op::find_pos_(), slot, marker, position)) >= 0; ++hits) {
    const auto *text = hit <= slot.length() - marker.measured ? next() : nullptr;
    if (text == nullptr) break;
    built.take(built.content() + part(content, position, hit - position));
    built.take(built.content() + text->units());
    position = hit + marker.measured;
  }
  built.take(built.content() + part(content, position, INT64_MAX));
  slot.swap(built);
  return hits;
}
int64_t want(op::replace_, auto &slot, const auto &from, const auto &to) {
  return substitute(slot, from, [&] { return &to; });
}
using Terminated = Text<mub_string, kTerminated>;
void by_hand(op::match_, auto &world, auto &slot, auto match) {
  const Terminated marker(world), texts[] = {Terminated(world), Terminated(world)};
  const char *end = nullptr;
  world.call([&] { match(&slot.record, marker.data, texts[0].data, texts[1].data, end); });
  if (world.failed) return;
  const Terminated *next = texts;
  substitute(slot, marker,
             [&] { return next == std::end(texts) || next->data == nullptr ? nullptr : next++; });
}
// The first estimate of the size is the format, the text of each plain %s, and 32 bytes per other percent
// sign except one at the very end. The buffer grows once if the result is longer. If snprintf fails, the
// string is unchanged.
void by_hand(op::format_, auto &world, auto &slot, auto print) {
  const Terminated text(world);
  const char *x = text.data;
  const int64_t of_x = x == nullptr ? 32 : text.size();
  const double f = draw_numeral<double>(world);
  const auto d = static_cast<int>(world.program.near(0));
  constexpr int64_t kRows = 27;
  const int64_t row = world.program.below(kRows);
  int64_t rows = 0;
  int count = 0;
  const auto expect = [&](int64_t room, const char *format, auto... arguments) {
    if (rows++ != row) return;
    std::string printed(70000, '?');
    const int length = std::snprintf(printed.data(), printed.size(), format, arguments...);
    world.call([&] { print(&slot.record, format, arguments...); });
    if (world.failed || length < 0) return;
    if (*format == 0) return slot.end_at(0);
    Slot<mub_string> built;
    built.grow(static_cast<int64_t>(std::strlen(format)) + room);
    built.grow(length);
    slot.swap(built);
    slot.take(units_of(printed.data(), length));
  };
  expect(0, "", d);
  expect(4 * 32 + of_x, "%d %s%%%u", d, x, UINT32_MAX);
  expect(32, "%llu", ~0ULL);
  expect(96, "= %%%*d", static_cast<int>(96 + world.program.below(8)), d);
  expect(32, "%5000d", d);
  expect(32, "%ls", L"\u20AC");  // not a character in the C locale
  expect(32 + of_x, "%S%s", L"wide", x);
  expect(64, "%-*s%.*s", 300, "", 9, x);
  expect(4 * 32 + of_x, "%e%.3G%La%*g%s", f, f, 0.0L, 9, f, x);
  expect(32 + of_x, "%-+*.*d %s", 5, 3, d, x);
  expect(8 * 32 + of_x, "%hhd%hd%d%ld%lld%jd%zd%td%s", d, d, d, 4L, 5LL, intmax_t{6}, size_t{7}, ptrdiff_t{8},
         x);
  expect(4 * 32, "%lu%zu%li%c", 1UL, size_t{UINT32_MAX}, -1L, 0xE4);
  expect(4 * 32 + of_x, "%c%lc%p%n%s", 'c', wint_t{'w'}, nullptr, &count, x);
  // More arguments of each class than registers for them.
  expect(25 * 32 + of_x, "%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%s", f, 1, .2, 2, .3, 3, .4, 4,
         .5, 5, .6, 6, .7, 7, .8, 8, .9, 9, 1., 10, 1.1, 11, 1.2, 12, f, x);
  for (const char *format : {"%5-d%s", "%5*d%s", "%$d%s", "%llld%s", "%hld%s", "%y%s"}) expect(64, format, x);
  expect(64, "%2$s %1$d", d, x);
  expect(64, "%1$s%2$*3$d", x, d, 90);
  expect(96, "%lf%hf%s", f, f, x);
  expect(32, "%5", d);
  expect(64, "%llf%s", 1.5L, x);
  expect(32, "end%", 0);
  expect(96, "%9%%d", 1);
  EXPECT_EQ(rows, kRows);
}

}  // namespace mub_test

#include "text_steps.inc"
