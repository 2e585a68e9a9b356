// The two functions with variable arguments. Both build the new content in a separate buffer, so that
// arguments may lie in the string, and the string stays as it was if they fail.
//
// mub_string_format() first walks the format and its arguments to estimate the length. If all conversions are
// plain, print_plain() prints them without vsnprintf. Otherwise vsnprintf prints, once more if the estimate
// was too small.
//
// Invariants:
//   1. A plain format prints at most as many bytes as were estimated, and the same as vsnprintf would.
//   2. The buffer has room for the estimate: callers can see its capacity.
//   3. No argument is read as a type that the format does not give it.
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <type_traits>

#include "bytes/number_text.h"
#include "mub_string.h"
#include "text/text_buffer.h"

namespace mub {
namespace {

// A conversion of a format, from its percent sign on: flags, width, precision, size and type. A character
// that breaks this order is taken for the type. After a conversion of an unknown type, the types of the
// arguments are not known: '$' is such a type and makes the conversion positional; others are left to the C
// library.
struct Conversion {
  explicit Conversion(const char *percent) {
    const char *at = percent + 1;
    while (is_flag(*at)) ++at;
    at = after_number(at);
    if (*at == '.') at = after_number(at + 1);
    is_bare = at == percent + 1;
    if (is_size(*at)) size = *at++;
    is_doubled = (size == 'h' || size == 'l') && *at == size;
    if (is_doubled) ++at;
    type = *at;
    end = type == 0 ? at : at + 1;
  }

  // Whether it prints no more than is reserved for it, and the same in every locale.
  bool is_plain() const {
    switch (type) {
      case '%':
      case 'c':
      case 's':
        return is_bare && size == 0;
      case 'd':
      case 'i':
      case 'u':
        return is_bare && (size == 0 || size == 'l' || size == 'z');
      default:
        return false;
    }
  }

  int stars = 0;  // Widths and precisions that are arguments of their own.
  bool is_bare;   // Without flags, width and precision.
  char size = 0;
  bool is_doubled;  // As in "ll".
  char type;
  const char *end;

 private:
  const char *after_number(const char *at) {
    if (*at == '*') {
      ++stars;
      return at + 1;
    }
    while (number::is_digit(*at)) ++at;
    return at;
  }

  // Switches, which compilers turn into bit tests, are faster than searches in lists of characters. Most
  // formats print so little that this matters.
  static bool is_flag(char c) {
    switch (c) {
      case '-':
      case '+':
      case ' ':
      case '#':
      case '0':
      case '\'':
      case 'I':
        return true;
      default:
        return false;
    }
  }

  static bool is_size(char c) {
    switch (c) {
      case 'h':
      case 'l':
      case 'L':
      case 'q':
      case 'j':
      case 'z':
      case 'Z':
      case 't':
        return true;
      default:
        return false;
    }
  }
};

// Calls `use` with a 0 of the type of an integer conversion's argument.
template <class Use>
auto with_integer_type(const Conversion &conversion, Use use) {
  switch (conversion.size) {
    case 0:
    case 'h':
      return use(0);
    case 'l':
      return conversion.is_doubled ? use(0LL) : use(0L);
    case 'z':
    case 'Z':
    case 't':
      static_assert(sizeof(ptrdiff_t) == sizeof(size_t));
      return use(ptrdiff_t{0});
    default:
      static_assert(sizeof(intmax_t) == sizeof(long long));
      return use(0LL);
  }
}

// Walks the arguments of a format by their types, as printf does.
class Arguments {
 public:
  explicit Arguments(va_list *list) : list_(list) {}

  // Returns NULL also if the type of the next argument is unknown.
  const char *next_text() { return is_lost_ ? nullptr : va_arg(*list_, const char *); }

  // For plain conversions, whose arguments have known types.
  int next_character() { return va_arg(*list_, int); }
  int64_t next_signed(const Conversion &conversion) {
    return with_integer_type(conversion,
                             [this](auto zero) { return int64_t{va_arg(*list_, decltype(zero))}; });
  }
  uint64_t next_unsigned(const Conversion &conversion) {
    return with_integer_type(conversion, [this](auto zero) {
      return uint64_t{va_arg(*list_, std::make_unsigned_t<decltype(zero)>)};
    });
  }

  // Skips the arguments of a conversion. Positional arguments come in any order, and an unknown conversion
  // consumes arguments of unknown type; texts after either are not measured.
  void skip(const Conversion &conversion) {
    if (is_lost_) return;
    for (int i = 0; i < conversion.stars; ++i) skip_one<int>();
    skip_value(conversion);
  }

 private:
  void skip_value(const Conversion &conversion) {
    switch (conversion.type) {
      case '%':
      case 'm':
        return;
      case 'd':
      case 'i':
      case 'o':
      case 'u':
      case 'x':
      case 'X':
        return skip_integer(conversion);
      case 'a':
      case 'A':
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
        return skip_floating(conversion);
      case 'c':
      case 'C':
        static_assert(sizeof(wint_t) == sizeof(int));
        return skip_one<int>();
      case 's':
      case 'S':
      case 'p':
      case 'n':
        return skip_one<void *>();
      default:
        is_lost_ = true;
    }
  }

  void skip_integer(const Conversion &conversion) {
    with_integer_type(conversion, [this](auto zero) { skip_one<decltype(zero)>(); });
  }

  // With other sizes, runtimes differ in the type of the argument.
  void skip_floating(const Conversion &conversion) {
    if (conversion.size == 'L') return skip_one<long double>();
    is_lost_ = conversion.is_doubled || (conversion.size != 0 && conversion.size != 'l');
    if (!is_lost_) skip_one<double>();
  }

  template <class Argument>
  void skip_one() {
    (void)va_arg(*list_, Argument);
  }

  va_list *list_;
  bool is_lost_ = false;
};

// What is reserved for a conversion that is not measured. Callers can see the capacity, so this is part of
// the interface.
constexpr int64_t kUnmeasured = 32;
static_assert(number::IntegerText::kMaxLength <= kUnmeasured);

struct Estimate {
  int64_t length;
  bool is_plain = true;  // print_plain() can print the format
};

// The length of the format, plus that of the text of every plain %s, plus kUnmeasured for every other percent
// sign, except one at the very end. The second sign of a "%%" counts like any other, but does not begin a
// conversion. The format is plain if all its conversions are, and no text is NULL.
Estimate estimate(const char *format, va_list list) {
  va_list copy;
  va_copy(copy, list);
  Arguments arguments(&copy);
  Estimate whole{measured(format, -1)};
  const char *percent = std::strchr(format, '%');
  while (percent != nullptr && percent[1] != 0) {
    if (percent[1] == 's') {
      const char *text = arguments.next_text();
      whole.length += text != nullptr ? measured(text, -1) : kUnmeasured;
      whole.is_plain &= text != nullptr;
      percent = std::strchr(percent + 2, '%');
      continue;
    }
    const Conversion conversion(percent);
    arguments.skip(conversion);
    whole.length += kUnmeasured;
    whole.is_plain &= conversion.is_plain();
    if (conversion.type == '%' && *conversion.end != 0) whole.length += kUnmeasured;
    percent = std::strchr(conversion.end, '%');
  }
  va_end(copy);
  whole.is_plain &= percent == nullptr && whole.length <= INT_MAX;  // GCOVR_EXCL_BR_LINE: 2 GiB
  return whole;
}

char *put(char *to, const void *bytes, int64_t count) {
  std::memcpy(to, bytes, static_cast<size_t>(count));
  return to + count;
}

char *put(char *to, const number::IntegerText &integer) {
  integer.write(to);
  return to + integer.length();
}

char *put(char *to, const Conversion &conversion, Arguments &arguments) {
  switch (conversion.type) {
    case 's': {
      const char *text = arguments.next_text();
      return put(to, text, measured(text, -1));
    }
    case 'd':
    case 'i':
      return put(to, number::IntegerText(arguments.next_signed(conversion)));
    case 'u':
      return put(to, number::IntegerText(arguments.next_unsigned(conversion)));
    default:
      *to = conversion.type == 'c' ? static_cast<char>(arguments.next_character()) : '%';
      return to + 1;
  }
}

// Prints a plain format, faster than vsnprintf (format_integers in bench/string_bench.cpp). Returns the
// length.
int64_t print_plain(char *first, const char *format, va_list list) {
  va_list copy;
  va_copy(copy, list);
  Arguments arguments(&copy);
  char *to = first;
  while (*format != 0) {
    if (*format != '%') {
      *to++ = *format++;
      continue;
    }
    const Conversion conversion(format);
    to = put(to, conversion, arguments);
    format = conversion.end;
  }
  va_end(copy);
  return to - first;
}

// Prints as much as fits. Returns the length of the whole text, or a negative number if vsnprintf fails.
int64_t print(mub_string &string, const char *format, va_list list) {
  va_list arguments;
  va_copy(arguments, list);
  const int length = std::vsnprintf(string.data, static_cast<size_t>(string.capacity) + 1, format, arguments);
  va_end(arguments);
  return length;
}

// Fills an empty string. Returns false if memory runs out or vsnprintf fails.
bool print_whole(mub_string &string, const char *format, va_list list) {
  const Estimate estimated = estimate(format, list);
  if (!buffer::grow(string, estimated.length)) return false;
  int64_t length = estimated.is_plain ? print_plain(string.data, format, list) : print(string, format, list);
  if (length > string.capacity && buffer::expand(string, length)) length = print(string, format, list);
  // The text is still too long if memory ran out.
  if (length < 0 || length > string.capacity) return false;
  buffer::shrink(string, length);
  return true;
}

void format_list(mub_string &string, const char *format, va_list list) {
  if (*format == 0) return buffer::shrink(string, 0);
  mub_string printed;
  buffer::init(printed);
  if (print_whole(printed, format, list)) buffer::swap(string, printed);
  buffer::term(printed);
}

void match_list(mub_string &string, const char *marker, va_list list) {
  va_list texts;
  va_copy(texts, list);
  text::substitute(string, marker, [&texts]() -> text::Piece<char> {
    const char *text = va_arg(texts, const char *);
    return {text, measured(text, -1)};
  });
  va_end(texts);
}

}  // namespace
}  // namespace mub

extern "C" {

void mub_string_match(mub_string *string, const char *marker, ...) {
  va_list texts;
  va_start(texts, marker);
  mub::match_list(*string, marker, texts);
  va_end(texts);
}

void mub_string_format(mub_string *string, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  mub::format_list(*string, format, arguments);
  va_end(arguments);
}
}
