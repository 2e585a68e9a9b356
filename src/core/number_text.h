// Numbers in text, both ways. The grammars know digits, '-' and '.' alone: no white space, '+', exponent or locale.
//
//   integer   -? digit+
//   decimal   -? digit+ ( '.' digit* )?
//
// Parsing takes the longest beginning of a text that could become such a number, a lone '-' included.
#ifndef MUB_CORE_NUMBER_TEXT_H
#define MUB_CORE_NUMBER_TEXT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace mub {
namespace number {

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

inline int64_t skip_digits(const char *text, int64_t length, int64_t i) {
  while (i < length && is_digit(text[i])) ++i;
  return i;
}

struct Integer {
  int64_t value;  // Wraps around at 64 bits.
  bool is_whole;  // At least one digit, and nothing else behind them.
};

inline Integer parse_integer(const char *text, int64_t length) {
  const bool negative = length > 0 && text[0] == '-';
  const int64_t first = negative ? 1 : 0;
  int64_t i = first;
  uint64_t value = 0;
  for (; i < length && is_digit(text[i]); ++i) value = value * 10 + static_cast<uint64_t>(text[i] - '0');
  return {static_cast<int64_t>(negative ? 0 - value : value), i > first && i == length};
}

// Where the parts of a decimal number stand.
struct Decimal {
  bool negative;
  int64_t integer;   // The first digit before the point,
  int64_t point;     // the end of those digits,
  int64_t fraction;  // the first digit behind the point, or the end,
  int64_t end;       // and the end of these.
  bool is_whole;     // At least one digit, and nothing else behind the number.
};

inline Decimal scan_decimal(const char *text, int64_t length) {
  const bool negative = length > 0 && text[0] == '-';
  const int64_t integer = negative ? 1 : 0;
  const int64_t point = skip_digits(text, length, integer);
  const bool has_point = point > integer && point < length && text[point] == '.';
  const int64_t fraction = has_point ? point + 1 : point;
  const int64_t end = has_point ? skip_digits(text, length, fraction) : point;
  return {negative, integer, point, fraction, end, point > integer && end == length};
}

// After so many divisions even a 9 has become 0.
constexpr int64_t kFractionPlaces = 325;

// tenths.of[k][d] is d divided by 10.0 k times over. Each division rounds, so that the powers of ten would not do.
struct Tenths {
  static constexpr int64_t kPlaces = 20;
  double of[kPlaces + 1][10] = {};
  constexpr Tenths() {
    for (int digit = 0; digit < 10; ++digit) {
      of[0][digit] = digit;
      for (int64_t place = 1; place <= kPlaces; ++place) of[place][digit] = of[place - 1][digit] / 10.0;
    }
  }
};
constexpr Tenths kTenths;

// The value of a digit at `place` behind the point.
inline double fraction_digit(char c, int64_t place) {
  double value = kTenths.of[std::min(place, Tenths::kPlaces)][c - '0'];
  for (int64_t i = Tenths::kPlaces; i < place; ++i) value /= 10.0;
  return value;
}

// The value of a decimal number. Callers differ in how a digit before the point is taken in, and so in how numbers
// past 2^53 round: `take_in(value, code)` gives the value with one more digit, of that character code.
template <class TakeIn>
double parse_decimal(const char *text, int64_t length, TakeIn take_in) {
  const Decimal parts = scan_decimal(text, length);
  double value = 0.0;
  for (int64_t i = parts.integer; i < parts.point; ++i) value = take_in(value, text[i]);
  const int64_t places = std::min(parts.end - parts.fraction, kFractionPlaces);
  for (int64_t i = 0; i < places; ++i) value += fraction_digit(text[parts.fraction + i], i + 1);
  return parts.negative ? 0.0 - value : value;
}

// The decimal digits of an integer, written from the back, two at a time.
class IntegerText {
 public:
  explicit IntegerText(int64_t value) {
    auto rest = static_cast<uint64_t>(value);
    if (value < 0) rest = 0 - rest;
    while (rest >= 100) {
      put_pair(rest % 100);
      rest /= 100;
    }
    if (rest >= 10) {
      put_pair(rest);
    } else {
      *--first_ = static_cast<char>('0' + rest);
    }
    if (value < 0) *--first_ = '-';
  }
  const char *data() const { return first_; }
  int64_t length() const { return buffer_ + sizeof buffer_ - first_; }

 private:
  void put_pair(uint64_t pair) {
    static constexpr char kPairs[] =
        "00010203040506070809101112131415161718192021222324252627282930313233343536373839404142434445464748"
        "49505152535455565758596061626364656667686970717273747576777879808182838485868788899091929394959697"
        "9899";
    first_ -= 2;
    std::memcpy(first_, kPairs + pair * 2, 2);
  }

  char buffer_[20];  // -2^63 takes them all.
  char *first_ = buffer_ + sizeof buffer_;
};

// A number with six decimals, as the runtime prints it; the longest, -DBL_MAX, takes 317 characters.
class DecimalText {
 public:
  explicit DecimalText(double value) : length_(std::snprintf(buffer_, sizeof buffer_, "%f", value)) {}
  const char *data() const { return buffer_; }
  int64_t length() const { return std::clamp<int64_t>(length_, 0, sizeof buffer_ - 1); }

 private:
  char buffer_[336];
  int length_;
};

}  // namespace number
}  // namespace mub

#endif
