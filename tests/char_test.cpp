#include "mub_char.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using namespace std::string_literals;
using mub_test::Guarded;
using mub_test::Random;

// Views bytes that end right before an unreadable page.
struct View : Guarded, mub_char {
  explicit View(std::string_view text) : Guarded(text), mub_char{Guarded::data(), size()} {}
  std::string text() const { return {mub_char::data, static_cast<size_t>(length)}; }
};

TEST(Char, TrimsByMovingItsBounds) {
  const struct {
    std::string text;
    std::string trimmed;
    int64_t start;
  } kCases[] = {{"  ab\t"s, "ab"s, 2}, {"   "s, ""s, 0},         {" \0ab"s, ""s, 0}, {"a b"s, "a b"s, 0},
                {"\v"s, "\v"s, 0},     {"ab\0 \0"s, "ab"s, 0},   {"\0ab"s, ""s, 0},  {" "s, ""s, 0},
                {""s, ""s, 0},         {"\n\xE9\r"s, "\xE9"s, 1}};
  for (const auto &row : kCases) {
    View view(row.text);
    mub_char_trim(&view);
    EXPECT_EQ(view.text(), row.trimmed) << row.text;
    if (!row.trimmed.empty()) {
      EXPECT_EQ(view.mub_char::data - view.Guarded::data(), row.start);
    }
    EXPECT_EQ(std::string(view.Guarded::data(), row.text.size()), row.text) << "no byte is written";
  }
}

TEST(Char, ReadsIntegers) {
  const struct {
    const char *text;
    int64_t value;
    int whole;
  } kCases[] = {{"-12", -12, 1}, {"007", 7, 1}, {"-", 0, 0},    {"+5", 0, 0}, {"1-2", 1, 0},
                {"12a3", 12, 0}, {"", 0, 0},    {"-0", 0, 1},   {" 1", 0, 0}, {"--3", 0, 0},
                {"-5x", -5, 0},  {"1.5", 1, 0}, {"12/", 12, 0}, {"3:", 3, 0}};
  for (const auto &row : kCases) {
    const View view(row.text);
    EXPECT_EQ(mub_char_get_long(&view), row.value) << row.text;
    EXPECT_EQ(mub_char_is_long(&view), row.whole) << row.text;
  }
  const View least("-9223372036854775808"), wrapped("18446744073709551617");
  EXPECT_EQ(mub_char_get_long(&least), INT64_MIN);
  EXPECT_EQ(mub_char_get_long(&wrapped), 1);
}

TEST(Char, ReadsDecimals) {
  const struct {
    const char *text;
    double value;
    int whole;
  } kCases[] = {{"3.25", 3.25, 1},    {"3.", 3.0, 1},    {".5", 0.0, 0}, {"-.5", 0.0, 0},
                {"1.2.3", 1.2, 0},    {"-2.5", -2.5, 1}, {"-", 0.0, 0},  {"", 0.0, 0},
                {"1e3", 1.0, 0},      {"-1-2", -1.0, 0}, {"+1", 0.0, 0}, {"1.-5", 1.0, 0},
                {"-0.75x", -0.75, 0}, {"120", 120.0, 1}};
  for (const auto &row : kCases) {
    const View view(row.text);
    EXPECT_EQ(mub_char_get_float(&view), row.value) << row.text;
    EXPECT_EQ(mub_char_is_float(&view), row.whole) << row.text;
  }
}

// Every step of the conversion rounds; the reference takes the same steps one after the other.
TEST(Char, DecimalsRoundStepByStep) {
  Random random(3);
  for (int round = 0; round < 2000; ++round) {
    const bool is_small = random.one_in(2);
    std::string digits = is_small ? "0" : "";
    std::string fraction(is_small ? static_cast<size_t>(random.below(330)) : 0, '0');
    for (int64_t i = random.below(40); i >= 0; --i) {
      fraction += static_cast<char>('0' + random.below(10));
      if (!is_small) digits += static_cast<char>('0' + random.below(10));
    }
    volatile double value = 0.0;
    for (const char digit : digits) {
      value = value * 10.0;
      value = value + digit;
      value = value - 48.0;
    }
    for (size_t k = 1; k <= fraction.size(); ++k) {
      volatile double part = fraction[k - 1] - '0';
      for (size_t i = 0; i < k; ++i) part = part / 10.0;
      value = value + part;
    }
    const View view(digits + "." + fraction);
    ASSERT_EQ(mub_char_get_float(&view), value) << view.text();
  }
}

TEST(Char, ComparesWithWhatEmptyMeansToEachSide) {
  const struct {
    std::string view;
    const char *text;
    int64_t count;
    int order;
  } kCases[] = {{"", nullptr, -1, 0},   {"", "x", 1, -1},      {"", "x", 0, 0},      {"", "", -1, -1},
                {"abc", nullptr, 4, 1}, {"abc", "abc", 0, 1},  {"abc", "", -1, 3},   {"abc", "abd", -1, -1},
                {"abc", "abx", 2, 1},   {"abc", "abc", -1, 0}, {"ab", "abcd", 4, -2}};
  for (const auto &row : kCases) {
    const View view(row.view);
    EXPECT_EQ(mub_char_compare(&view, row.text, row.count), row.order) << row.view << row.count;
    EXPECT_EQ(mub_char_icompare(&view, row.text, row.count), row.order) << row.view << row.count;
  }
  const View view("aBc");
  EXPECT_EQ(mub_char_icompare(&view, "AbC", -1), 0);
  EXPECT_EQ(mub_char_compare(&view, "AbC", -1), 'a' - 'A');
}

TEST(Char, FindsWithinTheView) {
  View view("aBcAbC\xC0\0"s);
  mub_char_make_upper(&view);
  EXPECT_EQ(view.text(), "ABCABC\xC0\0"s);
  mub_char_make_lower(&view);
  EXPECT_EQ(view.text(), "abcabc\xC0\0"s);
  EXPECT_EQ(mub_char_find_char(&view, 'b'), 1);
  EXPECT_EQ(mub_char_find_char(&view, 'b' + 512), 1);
  EXPECT_EQ(mub_char_find_char(&view, 256), -1) << "a NUL is not looked for";
  EXPECT_EQ(mub_char_reverse_find(&view, 'b'), 4);
  EXPECT_EQ(mub_char_reverse_find(&view, 0), -1);
  EXPECT_EQ(mub_char_find_char_pos(&view, 'b', 2), 4);
  EXPECT_EQ(mub_char_find_char_pos(&view, 'b', 5), -1);
  EXPECT_EQ(mub_char_find(&view, "cab", -1), 2);
  EXPECT_EQ(mub_char_find(&view, "cax", 2), 2);
  EXPECT_EQ(mub_char_find(&view, "", -1), 7) << "an empty text is its terminator";
  EXPECT_EQ(mub_char_find_pos(&view, "abc", 3, 1), 3);
  EXPECT_EQ(mub_char_find_pos(&view, "abc", 3, 4), -1);
  EXPECT_EQ(mub_char_find(&view, nullptr, 0), -1);
  for (const int64_t start : {INT64_MIN, INT64_C(-1), INT64_C(8), INT64_MAX}) {
    EXPECT_EQ(mub_char_find_char_pos(&view, 'a', start), -1);
    EXPECT_EQ(mub_char_find_pos(&view, "a", 1, start), -1);
  }
}

// Only the measuring itself reads a view whose length is negative, and no function reads one without data.
TEST(Char, UnmeasuredAndEmptyViewsAreNotRead) {
  char text[] = "12 ";
  mub_char views[] = {{text, -1}, {text, INT64_MIN}, {nullptr, 0}};
  for (mub_char &view : views) {
    mub_char_make_upper(&view);
    EXPECT_EQ(mub_char_get_long(&view), 0);
    EXPECT_EQ(mub_char_get_float(&view), 0.0);
    EXPECT_EQ(mub_char_is_long(&view) + mub_char_is_float(&view), 0);
    EXPECT_EQ(mub_char_find_char(&view, '1'), -1);
    EXPECT_EQ(mub_char_reverse_find(&view, '1'), -1);
    EXPECT_EQ(mub_char_find(&view, "1", 1), -1);
    EXPECT_EQ(mub_char_find_pos(&view, "1", 1, 0), -1);
  }
  EXPECT_EQ(mub_char_is_empty(&views[0]), 0);
  EXPECT_EQ(mub_char_compare(&views[0], "12", 2), -3) << "the lengths alone";
  EXPECT_EQ(mub_char_length(&views[0]), 3);
  EXPECT_EQ(mub_char_get_long(&views[0]), 12);
  mub_char_trim(&views[1]);
  EXPECT_EQ(views[1].length, 0);
  mub_char_shrink(&views[2], 5);
  EXPECT_EQ(mub_char_length(&views[2]), 0);
}

TEST(Char, CopiesIntoAnEmptyViewAlone) {
  mub_char view;
  mub_char_init(&view);
  mub_test::for_every_allocation([&view](const mub_test::Fuse &fuse) {
    mub_char_term(&view);
    const bool failed = fuse.blows_in([&] { mub_char_copy(&view, "copied", 4); });
    EXPECT_EQ(view.data == nullptr ? "" : std::string(view.data), failed ? "" : "copi");
    EXPECT_EQ(view.length, failed ? 0 : 4);
  });
  mub_char_copy(&view, "other", -1);
  EXPECT_STREQ(view.data, "copi");
  mub_char_term(&view);
  mub_char_copy(&view, nullptr, 3);
  mub_char_copy(&view, "x", INT64_MAX);
  EXPECT_EQ(mub_char_is_empty(&view), 1);
}

}  // namespace
