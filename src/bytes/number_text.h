// Conversion between numbers and text. The grammars have digits, '-' and '.' only: no white space, '+',
// exponent or locale.
//
//   integer   -? digit+
//   decimal   -? digit+ ( '.' digit* )?
//
// Parsing takes the longest prefix of a text that is such a number or could become one: a lone '-' is taken,
// and is 0.
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
              "every step must be rounded to double: 32-bit x86 needs -msse2 -mfpmath=sse");

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

inline int64_t skip_digits(const char *text, int64_t length, int64_t i) {
  while (i < length && is_digit(text[i])) ++i;
  return i;
}

struct Integer {
  int64_t value;  // Wraps around at 64 bits.
  bool is_whole;  // At least one digit, and nothing after the digits.
};

inline Integer parse_integer(const char *text, int64_t length) {
  const bool negative = length > 0 && text[0] == '-';
  const int64_t first = negative ? 1 : 0;
  int64_t i = first;
  uint64_t value = 0;
  for (; i < length && is_digit(text[i]); ++i) value = value * 10 + static_cast<uint64_t>(text[i] - '0');
  return {static_cast<int64_t>(negative ? 0 - value : value), i > first && i == length};
}

// The parts of a decimal number, as positions in the text.
struct Decimal {
  bool negative;
  int64_t integer;   // The first digit before the point.
  int64_t point;     // The end of these digits.
  int64_t fraction;  // The first digit after the point, or the end.
  int64_t end;       // The end of the number.
  bool is_whole;     // At least one digit, and nothing after the number.
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

// After this many divisions by 10.0, even a 9 has become 0.
constexpr int64_t kFractionPlaces = 325;

// kTenths.of[k][d] is d divided by 10.0 k times. Each division rounds, so a single division by a power of ten
// would give other results.
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

// The value of a decimal number. Callers differ in how they add a digit before the point, and so in how
// numbers above 2^53 are rounded: `take_in(value, code)` returns the value with one more digit, whose
// character code is `code`.
template <class TakeIn>
double parse_decimal(const char *text, int64_t length, TakeIn take_in) {
  const Decimal parts = scan_decimal(text, length);
  double value = 0.0;
  for (int64_t i = parts.integer; i < parts.point; ++i) value = take_in(value, text[i]);
  const int64_t places = std::min(parts.end - parts.fraction, kFractionPlaces);
  for (int64_t i = 0; i < places; ++i) value += fraction_digit(text[parts.fraction + i], i + 1);
  return parts.negative ? 0.0 - value : value;
}

// The same, rounded as mub_string and mub_stringx round.
inline double parse_decimal(const char *text, int64_t length) {
  return parse_decimal(text, length, [](double value, char code) { return value * 10.0 + (code - 48.0); });
}

struct PowersOfTen {
  uint64_t of[20] = {};  // of[0] is 0, not 1, so that the number 0 has a digit.
  constexpr PowersOfTen() {
    uint64_t power = 1;
    for (int i = 1; i < 20; ++i) of[i] = power *= 10;
  }
};
constexpr PowersOfTen kPowersOfTen;

// The number of decimal digits; 1 for 0.
inline int64_t digit_count(uint64_t magnitude) {
  // 1233 / 4096 approximates log10(2), closely enough for 64 bits.
  const int at_least = (64 - __builtin_clzll(magnitude | 1)) * 1233 >> 12;
  return at_least + (magnitude >= kPowersOfTen.of[at_least] ? 1 : 0);
}

// An integer in decimal digits. The length is computed first, so that the digits are written in place: a copy
// from a temporary buffer would wait for the narrow stores just made (they cannot be forwarded to a wider
// load).
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
    // Four digits per iteration: the two pairs do not depend on each other.
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

// A number with six decimals, as printf's "%f" prints it; the longest, -DBL_MAX, takes 317 characters.
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
