#include <gtest/gtest.h>

#include <cfloat>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

#include "mub_string.h"
#include "support/random.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using mub_test::expect_content;
using mub_test::Random;
using mub_test::String;

TEST(StringNumber, PrintsIntegersAsTheRuntimeDoes) {
  Random random(5);
  std::vector<int64_t> values = {0, INT64_MIN, INT64_MAX, -1};
  for (int64_t power = 1; power < INT64_MAX / 10; power *= 10)
    values.insert(values.end(), {power - 1, power, -power});
  for (int i = 0; i < 2000; ++i) values.push_back(static_cast<int64_t>(random.word()) >> random.below(64));
  for (const int64_t value : values) {
    char printed[32];
    std::snprintf(printed, sizeof printed, "%" PRId64, value);
    String string("old ");
    mub_string_append_long(&string, value);
    expect_content(string, "old "s + printed);
    ASSERT_EQ(mub_string_get_long(&string, 1), 0);
    mub_string_copy_integer(&string, value);
    expect_content(string, printed);
    ASSERT_EQ(mub_string_get_long(&string, 1), value);
    ASSERT_EQ(mub_string_get_integer(&string, 1), static_cast<int32_t>(value));
  }
}

TEST(StringNumber, PrintsDecimalsWhole) {
  String string;
  mub_string_copy_double(&string, -DBL_MAX);
  EXPECT_EQ(string.length, 317);
  EXPECT_EQ(string.text().substr(0, 12), "-17976931348");
  mub_string_copy_float(&string, 0.1f);
  mub_string_append_float(&string, -2.0f);
  mub_string_append_double(&string, 1e-7);
  expect_content(string, "0.100000-2.0000000.000000");
}

TEST(StringNumber, ReadsNumbers) {
  const struct {
    const char *text;
    int64_t integer, whole;  // by strtol, and by the plain grammar
    float decimal;           // by strtod
    double plain;
  } kCases[] = {{"-12x5", -12, -12, -12.0f, -12.0},
                {" +7", 7, 0, 7.0f, 0.0},
                {".5", 0, 0, 0.5f, 0.0},
                {"-0.5", 0, 0, -0.5f, -0.5},
                {"2e3", 2, 2, 2000.0f, 2.0},
                {"4294967297", 1, 4294967297, 4294967296.0f, 4294967297.0}};
  for (const auto &row : kCases) {
    const String string(row.text);
    EXPECT_EQ(mub_string_get_integer(&string, 9), row.integer) << row.text;
    EXPECT_EQ(mub_string_get_long(&string, 9), row.whole) << row.text;
    EXPECT_EQ(mub_string_get_float(&string, 9), row.decimal) << row.text;
    EXPECT_EQ(mub_string_get_double(&string, 9), row.plain) << row.text;
  }
  const String empty;
  EXPECT_EQ(mub_string_get_integer(&empty, INT64_MIN), INT64_MIN);
  EXPECT_EQ(mub_string_get_long(&empty, 7), 7);
  EXPECT_EQ(mub_string_get_float(&empty, 0.5f), 0.5f);
  EXPECT_EQ(mub_string_get_double(&empty, 0.1), 0.1);
}

// Past 2^53 each digit rounds once, after the code less 48.0 was added.
TEST(StringNumber, DecimalsRoundOncePerDigit) {
  Random random(6);
  for (int round = 0; round < 500; ++round) {
    std::string digits;
    volatile double value = 0.0;
    for (int64_t i = 15 + random.below(10); i > 0; --i) {
      digits += static_cast<char>('0' + random.below(10));
      value = value * 10.0;
      value = value + (digits.back() - 48.0);
    }
    const String string(digits);
    ASSERT_EQ(mub_string_get_double(&string, 0), value) << digits;
  }
}

}  // namespace
