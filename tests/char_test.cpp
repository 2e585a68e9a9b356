// Views, and what they, strings of both kinds and terminated texts share: trimming, comparing, searching, letters,
// numbers.
#include "mub_char.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstdlib>
#include <string>
#include <vector>

#include "mub_mem.h"
#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using namespace mub_test::text;
using mub_test::call;
using mub_test::expect_content;
using mub_test::Guarded;
using mub_test::Narrow;
using mub_test::Random;
using mub_test::String;
using mub_test::Units;
using mub_test::Wide;

// Views bytes that end right before an unreadable page.
struct View : Guarded, mub_char {
  explicit View(std::string_view text) : Guarded(text), mub_char{Guarded::data(), size()} {}
  std::string text() const { return {mub_char::data, static_cast<size_t>(length)}; }
};

// The same for a view of a string, with more text before its span.
struct Span : Guarded, mub_stringx {
  explicit Span(const std::string &text)
      : Guarded("##" + text), mub_stringx{Guarded::data(), 2, size() - 2} {}
  std::string text() const { return {mub_stringx::text + start, static_cast<size_t>(length)}; }
};

template <class Kind>
void expect_trimmed(const std::string &text, const std::string &trimmed) {
  mub_test::Text<Kind> string(text);
  EXPECT_EQ(call<kTrim>(string), trimmed != text) << text;
  expect_content(string, trimmed);
}

void expect_trimmed_in_place(const std::string &text, int64_t length, const std::string &trimmed) {
  const Guarded bytes(text + '\0');
  mub_str_trim(bytes.data(), length);
  EXPECT_EQ(std::string(bytes.data(), trimmed.size() + 1), trimmed + '\0') << text;
}

TEST(Text, IsTrimmedAlikeWhateverHoldsIt) {
  const std::string kCases[][2] = {
      {" \t a b \r\n", "a b"}, {"   ", ""},      {" ", ""},         {"", ""},
      {"a b", "a b"},          {"\v\f", "\v\f"}, {" \xE9", "\xE9"}, {"a\0 \0"s, "a"},
      {"\0ab"s, ""},           {" \0ab "s, ""},  {"\0"s, ""},       {"\r\nx\0\0"s, "x"}};
  for (const auto &[text, trimmed] : kCases) {
    View view(text);
    mub_char_trim(&view);
    EXPECT_EQ(view.text(), trimmed) << text;
    EXPECT_EQ(std::string(view.Guarded::data(), text.size()), text) << "no byte is written";
    Span span(text);
    EXPECT_EQ(mub_stringx_trim(&span), trimmed != text || text.empty()) << text;
    EXPECT_EQ(span.text(), trimmed) << text;
    EXPECT_EQ(span.start, 2 + (trimmed.empty() ? 0 : static_cast<int64_t>(text.find(trimmed))));
    expect_trimmed<Narrow>(text, trimmed);
    expect_trimmed<Wide>(text, trimmed);
    const bool starts_with_nul = trimmed.empty() && text.find("\0a"s) != text.npos;
    expect_trimmed_in_place(text, view.size(), starts_with_nul ? text : trimmed);
  }
  for (const int64_t length : {INT64_MIN, INT64_C(-1), INT64_C(0)}) expect_trimmed_in_place("x", length, "");
  expect_trimmed_in_place(" ab cd", 4, "ab");
  mub_str_trim(nullptr, 4);
}

TEST(Text, IsComparedWithWhatEmptyMeansToEachSide) {
  const struct {
    const char *content, *text;
    int64_t count;
    int order, folded;
  } kCases[] = {{"", nullptr, -1, 0, 0},   {"", nullptr, 4, 0, 0},   {"", "x", 1, -1, -1},
                {"", "x", -1, -1, -1},     {"", "x", 0, 0, 0},       {"abc", nullptr, 4, 1, 1},
                {"abc", "abc", 0, 1, 1},   {"abc", "", -1, 3, 3},    {"abc", "abd", -1, -1, -1},
                {"abc", "abx", 2, 1, 1},   {"abc", "abc", -1, 0, 0}, {"ab", "abcd", 4, -2, -2},
                {"aBc", "AbC", -1, 32, 0}, {"B", "a", -1, -31, 1}};
  for (const auto &row : kCases) {
    SCOPED_TRACE(::testing::Message() << row.content << " with " << row.count << " gives " << row.order);
    const View view(row.content);
    const Span span(row.content);
    const String string(row.content);
    EXPECT_EQ(mub_stringx_compare(&span, row.text, row.count), row.order);
    EXPECT_EQ(mub_stringx_icompare(&span, row.text, row.count), row.folded);
    EXPECT_EQ(mub_char_compare(&view, row.text, row.count), row.order);
    EXPECT_EQ(mub_char_icompare(&view, row.text, row.count), row.folded);
    EXPECT_EQ(mub_string_compare(&string, row.text, row.count), row.order);
    EXPECT_EQ(mub_string_icompare(&string, row.text, row.count), row.folded);
    if (row.count < 0) continue;
    const mub_test::Text<Wide> wide(row.content);
    const Units<Wide> units(row.text != nullptr ? row.text : "");
    const uint16_t *text = row.text != nullptr ? units.data() : nullptr;
    EXPECT_EQ(mub_wchar_compare(&wide, text, row.count), row.order);
    EXPECT_EQ(mub_wchar_icompare(&wide, text, row.count), row.folded);
  }
  const View empty_view("");
  EXPECT_EQ(mub_char_compare(&empty_view, "", -1), -1) << "a string measures it, and finds it as empty";
}

// A text to be measured is looked for in a view as if counted, in a string as strstr does, in a wide one as wcsstr.
TEST(Text, IsFoundFromItsStart) {
  const struct {
    const char *text;
    int64_t count, start, in_view, in_string;
  } kTexts[] = {{"abd", 3, 0, 7, 7},  {"abd", -1, 0, 7, -1},   {"abd", -1, 7, 7, 7},    {"bca", -1, 0, 1, 1},
                {"abc", 3, 1, 3, 3},  {"c", -1, 3, 5, 5},      {"", -1, 0, 6, 0},       {"", -1, 4, 6, 4},
                {"", -1, 10, -1, -1}, {"cx", 0, 0, 2, 2},      {"abdx", 4, 7, -1, -1},  {"a", 1, 10, -1, -1},
                {"a", 1, -1, -1, -1}, {nullptr, 0, 0, -1, -1}, {nullptr, -1, 0, -1, -1}};
  const struct {
    int unit, excess;
    int64_t start, first, last;
  } kUnits[] = {{'b', 0, 2, 4, 8},   {'c', -1, 0, 2, 5}, {'a', 2, 4, 7, 7},         {0, 1, 0, -1, -1},
                {'d', 0, 9, 9, 9},   {'a', 0, 8, -1, 7}, {'d', 0, 10, -1, 9},       {'a', 0, -1, -1, 7},
                {'x', 0, 0, -1, -1}, {0, 0, 0, -1, -1},  {'a', 0, INT64_MAX, -1, 7}};
  const View view("abcabc\0abd"s);
  const Span span("abcabc\0abd"s);
  const String string("abcabc\0abd"s);
  const mub_test::Text<Wide> wide("abcabc\0abd"s);
  for (const auto &row : kTexts) {
    SCOPED_TRACE(::testing::Message() << row.count << " from " << row.start << " is at " << row.in_string);
    EXPECT_EQ(mub_char_find_pos(&view, row.text, row.count, row.start), row.in_view);
    EXPECT_EQ(mub_stringx_find_pos(&span, row.text, row.count, row.start), row.in_view);
    EXPECT_EQ(mub_string_find_pos(&string, row.text, row.count, row.start), row.in_string);
    if (row.count < 0 || row.text == nullptr) continue;
    EXPECT_EQ(mub_wchar_find_pos(&wide, Units<Wide>(row.text).data(), row.count, row.start), row.in_string);
  }
  for (const auto &row : kUnits) {
    SCOPED_TRACE(::testing::Message() << "unit " << row.unit << " from " << row.start);
    const int byte = row.unit + row.excess * Narrow::kUnits, unit = row.unit + row.excess * Wide::kUnits;
    EXPECT_EQ(mub_char_find_char_pos(&view, byte, row.start), row.first);
    EXPECT_EQ(mub_stringx_find_char_pos(&span, byte, row.start), row.first);
    EXPECT_EQ(mub_string_find_char_pos(&string, byte, row.start), row.first);
    EXPECT_EQ(mub_wchar_find_char_pos(&wide, unit, row.start), row.first);
    EXPECT_EQ(mub_char_reverse_find(&view, byte), row.last);
    EXPECT_EQ(mub_stringx_reverse_find(&span, byte), row.last);
    EXPECT_EQ(mub_string_reverse_find(&string, byte), row.last);
    EXPECT_EQ(mub_wchar_reverse_find(&wide, unit), row.last);
  }
  for (const int64_t far : {INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(mub_char_find_pos(&view, "a", 1, far) + mub_string_find_pos(&string, "a", 1, far), -2);
    EXPECT_EQ(mub_string_find_pos(&string, "a", -1, far), -1);
  }
  EXPECT_EQ(mub_char_find(&view, "abd", -1) + mub_string_find(&string, "abd", 3), 14);
  EXPECT_EQ(mub_char_find_char(&view, 'b') + mub_string_find_char(&string, 'b'), 2);
  EXPECT_EQ(mub_stringx_find(&span, "abd", -1) + mub_stringx_find_char(&span, 'b'), 8);
  EXPECT_EQ(mub_wchar_find(&wide, Units<Wide>("abd").data(), 3) + mub_wchar_find_char(&wide, 'b'), 8);
}

TEST(Text, ChangesItsLettersAlone) {
  View view("aZ\xE9\0b@[`{"s);
  String string(view.text());
  mub_string_make_upper(&string);
  expect_content(string, "AZ\xE9\0B@[`{"s);
  mub_char_make_upper(&view);
  EXPECT_EQ(view.text(), string.text());
  // Of the wide ones those alone that a byte could be: the unit of 'q' only has a letter for its low half.
  mub_test::Text<Wide> wide("aZ\xE9q\0b@[`{"s);
  mub_wchar_make_upper(&wide);
  expect_content(wide, "AZ\xE9q\0B@[`{"s);
  mub_wchar_make_lower(&wide);
  expect_content(wide, "az\xE9q\0b@[`{"s);
  mub_char_make_lower(&view);
  mub_string_make_lower(&string);
  EXPECT_EQ(view.text(), "az\xE9\0b@[`{"s);
  expect_content(string, view.text());
}

// Only the measuring itself reads a view whose length is negative, and no function reads one without data.
TEST(Char, UnmeasuredAndEmptyViewsAreNotRead) {
  char text[] = "12 ";
  mub_char views[] = {{text, -1}, {text, INT64_MIN}, {nullptr, 0}, {nullptr, 3}};
  for (mub_char &view : views) {
    mub_char_make_upper(&view);
    EXPECT_EQ(mub_char_is_long(&view) + mub_char_is_float(&view) + mub_char_get_long(&view), 0);
    EXPECT_EQ(mub_char_get_float(&view), 0.0);
    EXPECT_EQ(mub_char_find_char(&view, '1') + mub_char_reverse_find(&view, '1'), -2);
    EXPECT_EQ(mub_char_find(&view, "1", 1) + mub_char_find_pos(&view, "1", 1, 0), -2);
  }
  EXPECT_EQ(mub_char_is_empty(&views[0]), 0);
  EXPECT_EQ(mub_char_compare(&views[0], "12", 2), -3) << "the lengths alone";
  EXPECT_EQ(mub_char_length(&views[0]), 3);
  mub_char_trim(&views[1]);
  EXPECT_EQ(views[1].length, 0);
  mub_char_shrink(&views[2], 5);
  EXPECT_EQ(mub_char_length(&views[2]), 0);
}

TEST(Char, CopiesIntoAnEmptyViewAlone) {
  mub_char view;
  mub_char_init(&view);
  mub_char_copy(&view, nullptr, 3);
  mub_char_copy(&view, "x", INT64_MAX);
  EXPECT_EQ(mub_char_is_empty(&view), 1);
  mub_test::for_every_allocation([&view](const mub_test::Fuse &fuse) {
    mub_char_term(&view);
    const bool failed = fuse.blows_in([&] { mub_char_copy(&view, "copied", 4); });
    EXPECT_EQ(view.data == nullptr ? "" : std::string(view.data), failed ? "" : "copi");
    EXPECT_EQ(view.length, failed ? 0 : 4);
  });
  mub_char_copy(&view, "other", -1);
  EXPECT_STREQ(view.data, "copi");
  mub_char_term(&view);
}

TEST(Number, IsPrintedAsTheRuntimeDoes) {
  Random random(5);
  String string;
  std::vector<int64_t> values = {0, INT64_MIN, INT64_MAX};
  for (int64_t power = 1; power < INT64_MAX / 10; power *= 10)
    values.insert(values.end(), {power - 1, power, -power});
  for (int i = 0; i < 2000; ++i) values.push_back(static_cast<int64_t>(random.word()) >> random.below(64));
  for (const int64_t value : values) {
    mub_string_copy_integer(&string, value);
    mub_string_append_long(&string, value);
    expect_content(string, std::to_string(value) + std::to_string(value));
  }
  mub_string_copy_double(&string, -DBL_MAX);
  expect_content(string, std::to_string(-DBL_MAX));
  mub_string_copy_float(&string, 0.1f);
  mub_string_append_float(&string, -2.0f);
  mub_string_append_double(&string, 1e-7);
  expect_content(string, "0.100000-2.0000000.000000");
}

std::string random_digits(Random &random, size_t bound) {
  const std::string digits = std::to_string(random.word()) + std::to_string(random.word());
  return digits.substr(2, random.word() % bound);
}

// Texts made of known parts. Every step of the decimal conversions rounds, so the reference takes the same steps. Past
// 2^53 views and strings part: views add a digit's code before they take 48.0 away.
TEST(Number, IsReadAsFarAsItGoes) {
  Random random(3);
  for (int round = 0; round < 3000; ++round) {
    const bool is_negative = random.one_in(2), has_point = random.one_in(2);
    const std::string zeros(random.one_in(4) ? random.word() % 330 : 0, '0');
    const std::string digits = zeros.empty() ? random_digits(random, random.one_in(4) ? 40 : 4) : "0";
    const std::string fraction = has_point ? zeros + random_digits(random, 20) : "";
    const std::string kRests[] = {"", "", "--5", "+1", "e3", " ", "/", ":", has_point ? ".3" : "x"};
    const std::string rest = kRests[random.below(9)];
    uint64_t integer = 0;
    volatile double of_view = 0.0, of_string = 0.0;
    for (const char digit : digits) {
      integer = integer * 10 + static_cast<uint64_t>(digit - '0');
      of_view = of_view * 10.0;
      of_view = of_view + digit;
      of_view = of_view - 48.0;
      of_string = of_string * 10.0;
      of_string = of_string + (digit - 48.0);
    }
    for (size_t k = 0; k < fraction.size() && !digits.empty(); ++k) {
      volatile double part = fraction[k] - '0';
      for (size_t i = 0; i <= k; ++i) part = part / 10.0;
      of_view = of_view + part;
      of_string = of_string + part;
    }
    const View view((is_negative ? "-" : "") + digits + (has_point ? "." : "") + fraction + rest);
    const Span span(view.text());
    const String string(view.text().empty() ? "?" : view.text());
    SCOPED_TRACE(string.text());
    ASSERT_EQ(mub_char_is_long(&view), !digits.empty() && !has_point && rest.empty());
    ASSERT_EQ(mub_char_is_float(&view), !digits.empty() && rest.empty());
    ASSERT_EQ(mub_stringx_is_long(&span), mub_char_is_long(&view));
    ASSERT_EQ(mub_stringx_is_float(&span), mub_char_is_float(&view));
    ASSERT_EQ(mub_char_get_long(&view), static_cast<int64_t>(is_negative ? 0 - integer : integer));
    ASSERT_EQ(mub_stringx_get_long(&span), mub_char_get_long(&view));
    ASSERT_EQ(mub_string_get_long(&string, 9), mub_char_get_long(&view));
    ASSERT_EQ(mub_char_get_float(&view), is_negative ? 0.0 - of_view : of_view);
    ASSERT_EQ(mub_string_get_double(&string, 9), is_negative ? 0.0 - of_string : of_string);
    ASSERT_EQ(mub_stringx_get_float(&span), mub_string_get_double(&string, 9));
    ASSERT_EQ(mub_string_get_integer(&string, 9), static_cast<int>(std::strtol(string.data, nullptr, 10)));
    ASSERT_EQ(mub_string_get_float(&string, 9), static_cast<float>(std::strtod(string.data, nullptr)));
  }
  const String empty;
  EXPECT_EQ(mub_string_get_long(&empty, 7) + mub_string_get_integer(&empty, INT64_MIN), INT64_MIN + 7);
  EXPECT_EQ(mub_string_get_float(&empty, 0.5f) + mub_string_get_double(&empty, 0.1), 0.6);
}

}  // namespace
