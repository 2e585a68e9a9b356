// Numbers in text, both ways. The grammars know digits, '-' and '.' alone: no white space, '+', exponent or
// locale.
//
//   integer   -? digit+
//   decimal   -? digit+ ( '.' digit* )?
//
// Parsing takes the longest beginning of a text that could become such a number, a lone '-' included.
#ifndef MUB_BYTES_NUMBER_TEXT_H
#define MUB_BYTES_NUMBER_TEXT_H

#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace mub {
namespace number {

static_assert(FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1,
              "every step is to be rounded to a double: 32-bit x86 wants -msse2 -mfpmath=sse");

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

inline int64_t skip_digits(const char *text, int64_t length, int64_t i) {
  while (i < length && is_digit(text[i])) ++i;
  return i;
}

struct Integer {
  int64_t value;  // Wraps around at 64 bits.
  bool is_whole;  // At least one digit, and nothing else after them.
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
  int64_t fraction;  // the first digit after the point, or the end,
  int64_t end;       // and the end of these.
  bool is_whole;     // At least one digit, and nothing else after the number.
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

// kTenths.of[k][d] is d divided by 10.0 k times over. Each division rounds, so that the powers of ten would
// not do.
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

// The value of a digit at `place` after the point.
inline double fraction_digit(char c, int64_t place) {
  double value = kTenths.of[std::min(place, Tenths::kPlaces)][c - '0'];
  for (int64_t i = Tenths::kPlaces; i < place; ++i) value /= 10.0;
  return value;
}

// The value of a decimal number. Callers differ in how a digit before the point is taken in, and so in how
// numbers past 2^53 round: `take_in(value, code)` gives the value with one more digit, of that character
// code.
template <class TakeIn>
double parse_decimal(const char *text, int64_t length, TakeIn take_in) {
  const Decimal parts = scan_decimal(text, length);
  double value = 0.0;
  for (int64_t i = parts.integer; i < parts.point; ++i) value = take_in(value, text[i]);
  const int64_t places = std::min(parts.end - parts.fraction, kFractionPlaces);
  for (int64_t i = 0; i < places; ++i) value += fraction_digit(text[parts.fraction + i], i + 1);
  return parts.negative ? 0.0 - value : value;
}

// As strings and their views have it.
inline double parse_decimal(const char *text, int64_t length) {
  return parse_decimal(text, length, [](double value, char code) { return value * 10.0 + (code - 48.0); });
}

struct PowersOfTen {
  uint64_t of[20] = {};  // 0 stands for the first, so that 0 has a digit too.
  constexpr PowersOfTen() {
    uint64_t power = 1;
    for (int i = 1; i < 20; ++i) of[i] = power *= 10;
  }
};
constexpr PowersOfTen kPowersOfTen;

// The decimal digits of a number that is not negative; 1 for 0.
inline int64_t digit_count(uint64_t magnitude) {
  // 1233 / 4096 is log10(2), exact enough for 64 bits.
  const int at_least = (64 - __builtin_clzll(magnitude | 1)) * 1233 >> 12;
  return at_least + (magnitude >= kPowersOfTen.of[at_least] ? 1 : 0);
}

// An integer in decimal digits. The length is known first, so that the digits are written where they belong:
// read back from a buffer of their own they would wait for the narrow stores just made.
class IntegerText {
 public:
  static constexpr int64_t kMaxLength = 20;

  explicit IntegerText(uint64_t magnitude, bool is_negative = false)
      : is_negative_(is_negative),
        magnitude_(magnitude),
        length_(digit_count(magnitude) + (is_negative ? 1 : 0)) {}
  explicit IntegerText(int64_t value)
      : IntegerText(value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value), value < 0) {}

  int64_t length() const { return length_; }

  void write(char *to) const {
    char *end = to + length_;
    uint64_t rest = magnitude_;
    // Four digits a turn: its two pairs do not wait for each other.
    while (rest >= 10000) {
      const auto four = static_cast<uint32_t>(rest % 10000);
      rest /= 10000;
      put_pair(end -= 2, four % 100);
      put_pair(end -= 2, four / 100);
    }
    auto last = static_cast<uint32_t>(rest);
    if (last >= 100) {
      put_pair(end -= 2, last % 100);
      last /= 100;
    }
    if (last >= 10) {
      put_pair(end - 2, last);
    } else {
      end[-1] = static_cast<char>('0' + last);
    }
    if (is_negative_) *to = '-';
  }

 private:
  static void put_pair(char *to, uint32_t pair) {
    static constexpr char kPairs[] =
        "00010203040506070809101112131415161718192021222324252627282930313233343536373839404142434445464748"
        "49505152535455565758596061626364656667686970717273747576777879808182838485868788899091929394959697"
        "9899";
    std::memcpy(to, kPairs + size_t{pair} * 2, 2);
  }

  bool is_negative_;
  uint64_t magnitude_;
  int64_t length_;
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
