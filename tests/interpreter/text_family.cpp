// Strings, narrow and wide, and views of narrow ones under programs.
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
Units printed(auto number) {
  const std::string text = std::to_string(number);
  return Units(text.begin(), text.end());
}

// A string for views.
struct Viewed : Peer<mub_char> {
  using Peer<mub_char>::Peer;
  auto arguments() const { return std::tuple(&string); }
  mub_string string = {slot.own(), slot.measured(), slot.measured()};
};
struct Chars {
  explicit Chars(auto &) : out(std::make_unique<mub_char>()) {}
  auto arguments() const { return std::tuple(out.get()); }
  void take(const Part &part) const {
    const auto text = reinterpret_cast<uintptr_t>(part.own());
    EXPECT_EQ(reinterpret_cast<uintptr_t>(out->data),
              text == 0 ? 0 : text + static_cast<uintptr_t>(part.start));
    EXPECT_EQ(out->length, part.filled);
  }
  std::unique_ptr<mub_char> out;
};

// ---- views

using View = Slot<mub_stringx>;

void bind(View &view, const Span<char> &span) { static_cast<Span<char> &>(view) = span; }
void want(op::term_, View &view) { bind(view, {&nothing}); }
void want(op::shrink_, View &view) { bind(view, {view.block}); }
void want(op::swap_, View &a, View &b) { std::swap<Span<char>>(a, b); }
void want(op::copy_, View &view, View &other) { bind(view, other); }
void want(OneOf<op::copy_char_, op::copy_string_> auto, View &view, Slot<mub_char> &other) {
  bind(view, {other.block, 0, other.measured()});
}
void want(op::left_, View &view, int64_t count) {
  if (!view.is_empty() && view.filled > count) view.filled = count;
}
void want(op::right_, View &view, int64_t count) {
  if (view.is_empty() || view.filled <= count) return;
  view.start = wrapping_sum(wrapping_sum(view.start, view.filled), wrapping_sum(~count, 1));
  view.filled = std::max<int64_t>(count, 0);
}

// ---- strings

// A copy of one unit of 0 is empty.
void want(op::copy_char_, auto &slot, char32_t unit) { slot.take(Units(unit == 0 ? 0 : 1, unit)); }
void want(op::append_char_, auto &slot, char32_t unit) { slot.take(slot.content() + unit); }
template <class Op>
concept Prints = OneOf<Op, op::copy_integer_, op::copy_long_, op::copy_float_, op::copy_double_,
                       op::append_integer_, op::append_long_, op::append_float_, op::append_double_>;
void want(Prints auto op, auto &slot, auto number) {
  slot.take((op.kName[0] == 'a' ? slot.content() : Units()) + printed(number));
}
template <class T>
T want(OneOf<op::get_long_, op::get_float_, op::get_double_> auto, auto &string, T otherwise) {
  if (string.is_empty()) return otherwise;
  if (std::is_same_v<T, float>) return static_cast<T>(std::strtod(string.own(), nullptr));
  const Reading reading(string);
  return std::is_same_v<T, double> ? static_cast<T>(reading.decimal) : static_cast<T>(reading.integer);
}
// Where the number does not fit, machines differ in it.
void by_hand(op::get_integer_, auto &world, auto get) {
  const Self<mub_string> self(world);
  const int64_t otherwise = draw_numeral<int64_t>(world);
  EXPECT_EQ(get(&self.slot.record, otherwise),
            self.slot.is_empty() ? otherwise : static_cast<int>(std::strtol(self.slot.own(), nullptr, 10)));
}

int64_t want(op::replace_char_, auto &slot, char32_t from, char32_t to) {
  const Units before = slot.content();
  change_each(slot, [&](char32_t unit) { return unit == from ? to : unit; });
  return std::ranges::count(before, from);
}
// Puts what next() points to in the place of each marker; NULL ends that.
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
void by_hand(op::match_, auto &world, auto match) {
  const Self<mub_string> self(world);
  const Terminated marker(world), texts[] = {Terminated(world), Terminated(world)};
  const char *end = nullptr;
  world.call([&] { match(&self.slot.record, marker.data, texts[0].data, texts[1].data, end); });
  if (world.failed) return;
  const Terminated *next = texts;
  substitute(self.slot, marker,
             [&] { return next == std::end(texts) || next->data == nullptr ? nullptr : next++; });
}
// Of the buffer that it is printed into, only the content is known.
void by_hand(op::format_, auto &world, auto print) {
  static const char *const kFormats[] = {
      "", "= %%", "%d", "%+05d|%s", "%i%5s%.1e", "%c%s%9a%s", "<%u%.2s%g%s%lld>%%"};
  const Self<mub_string> self(world);
  const Terminated texts[] = {Terminated(world), Terminated(world)};
  const double decimal = draw_numeral<double>(world);
  const int64_t number = draw_numeral<int64_t>(world);
  const char *format = kFormats[clipped(world.program.below(7))];
  const auto print_with = [&](auto printer, auto... to) {
    return printer(to..., format, static_cast<int>(number & 0x7FFF), texts[0].data, decimal, texts[1].data,
                   number);
  };
  std::string text(5000, '?');
  text.resize(static_cast<size_t>(print_with(std::snprintf, text.data(), text.size())));
  world.call([&] { print_with(print, &self.slot.record); });
  if (world.failed) return;
  if (*format == 0) return self.slot.end_at(0);
  self.slot.units.assign(clipped(self.slot.record.capacity) + 1, 0);
  self.slot.take(units_of(text.data(), static_cast<int64_t>(text.size())));
}

}  // namespace mub_test

#include "text_steps.inc"
