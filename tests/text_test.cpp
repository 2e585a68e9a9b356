// What programs do not reach of strings: the conversions of a format, the search for hostile texts, and long
// steps of growth.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "core/text_search.h"
#include "mub_mem.h"
#include "mub_string.h"
#include "mub_wchar.h"
#include "text/word_search.h"

namespace {

int64_t grown(int64_t capacity, int64_t wanted) { return std::max(capacity + 8, wanted) / 8 * 8 + 7; }

// The runtime's print is put into a buffer made for `estimate`, or grown once more; unless the runtime fails.
template <class... Arguments>
void expect_format(int64_t estimate, const char *format, Arguments... arguments) {
  SCOPED_TRACE(format);
  std::string expected(70000, '?');
  const int length = std::snprintf(expected.data(), expected.size(), format, arguments...);
  expected = length < 0 ? "old" : expected.substr(0, static_cast<size_t>(length));
  mub_string string = {};
  mub_string_copy(&string, "old", -1);
  mub_string_format(&string, format, arguments...);
  EXPECT_EQ(std::string(string.data, static_cast<size_t>(string.length)), expected);
  const int64_t first = grown(0, length < 0 ? 3 : estimate);
  EXPECT_EQ(string.capacity, length <= first ? first : grown(first, length));
  mub_string_term(&string);
}

TEST(Format, MeasuresPlainTextsAndStepsOverOtherArguments) {
  const std::string text(70, 'x');
  const char *x = text.data();
  int count = 0;
  for (int width = 30; width < 60; ++width) expect_format(3 + 32, "%*d", width, 7);
  expect_format(6 + 32, "%5000d", 7);
  expect_format(3 + 32, "%ls", L"wide");
  expect_format(4 + 32 + 70, "%S%s", L"wide", x);
  expect_format(8 + 64, "%-*s%.*s", 3000, "", 9, x);
  expect_format(14 + 4 * 32 + 70, "%e%.3G%La%*g%s", 1.5, 2.5, 3.5L, 9, 4.5, x);
  expect_format(8 + 32 + 70, "%*.*d %s", 5, 3, 7, x);
  expect_format(27 + 8 * 32 + 70, "%hhd%hd%d%ld%lld%jd%zd%td%s", 1, 2, 3, 4L, 5LL, intmax_t{6}, size_t{7},
                ptrdiff_t{8}, x);
  expect_format(9 + 4 * 32, "%lu%zu%li%c", 1UL, ~size_t{0}, -1L, 0xE4);
  expect_format(11 + 4 * 32 + 70, "%c%lc%p%n%s", 'c', wint_t{'w'}, static_cast<void *>(&count), &count, x);
  // More arguments of each sort than there are registers.
  expect_format(2 * 26 + 25 * 32 + 70, "%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%s", .1, 1, .2, 2,
                .3, 3, .4, 4, .5, 5, .6, 6, .7, 7, .8, 8, .9, 9, 1., 10, 1.1, 11, 1.2, 12, 1.3, x);
}

TEST(Format, LeavesWhatIsNoConversionToTheRuntime) {
  const std::string text(70, 'x');
  const char *x = text.data();
  for (const char *format : {"%5-d%s", "%5*d%s", "%$d%s", "%llld%s", "%hld%s", "%y%s"})
    expect_format(static_cast<int64_t>(std::strlen(format)) + 64, format, x);
  expect_format(6 + 64, "%llf%s", 1.5L, x);
  expect_format(9 + 64, "%2$s %1$d", 12, x);
  expect_format(12 + 64, "%1$s%2$*3$d", x, 7, 90);
  expect_format(4 + 32, "end%", 0);
  expect_format(5 + 96, "%9%%d", 1);
  expect_format(3 + 32, "%ls", L"\u20AC");  // no character of the C locale
}

// All patterns of up to 7 units and all texts of up to 11, of two sorts; each bit is one.
TEST(WordSearch, AgreesWithTheStandardAlgorithm) {
  const auto units_of = [](uint32_t bits) {
    std::u16string units;
    for (; bits > 1; bits /= 2) units += bits % 2 == 1 ? u'\x0100' : u'\x0001';
    return units;
  };
  for (uint32_t pattern = 2; pattern < 1u << 8; ++pattern) {
    const std::u16string wanted = units_of(pattern);
    for (uint32_t bits = 1; bits < 1u << 12; ++bits) {
      const std::u16string text = units_of(bits);
      const auto found =
          mub::wide::find_in_linear_time<uint16_t>({text.data(), static_cast<int64_t>(text.size())},
                                                   {wanted.data(), static_cast<int64_t>(wanted.size())});
      ASSERT_EQ(found, static_cast<ptrdiff_t>(text.find(wanted))) << pattern << " in " << bits;
    }
  }
}

// The product of both lengths would take minutes.
TEST(Search, TakesLinearTimeInHostileTexts) {
  constexpr int64_t kCount = 1 << 21, kHalf = kCount / 2;
  const std::vector<uint16_t> text(kCount, 0x0100);
  std::vector<uint16_t> wanted(kHalf, 0x0001);
  const auto find = [&] { return mub_wchar_str(text.data(), kCount, wanted.data(), kHalf); };
  EXPECT_EQ(find(), -1) << "all hits begin within units";
  for (const size_t at : {size_t{0}, size_t{kHalf / 3}, size_t{kHalf - 1}}) {
    wanted.assign(kHalf, 0x0100);
    wanted[at] = 0x0001;
    EXPECT_EQ(find(), -1);
  }
}

// A search of bytes by vectors or of units by bytes gives up after some false hits, and another one goes on.
TEST(Search, FindsWhatBeginsWhereItsPatienceEnds) {
  std::vector<uint8_t> wanted(200, 'a');
  wanted[60] = 'b';
  for (int64_t at = 0; at < 300; ++at) {
    std::vector<uint8_t> text(static_cast<size_t>(at), 'a');
    text.insert(text.end(), wanted.begin(), wanted.end());
    EXPECT_EQ(mub_mem_str(text.data(), at + 200, wanted.data(), 200), at);
    EXPECT_EQ(mub_mem_str(text.data(), at + 199, wanted.data(), 200), -1);
#if defined(__x86_64__)
    if (at < mub::bytes::kSse2Starts) continue;
    EXPECT_EQ(mub::bytes::find_sse2(text.data(), at + 200, wanted.data(), 200), at);
    EXPECT_EQ(mub::bytes::find_sse2(text.data(), at + 199, wanted.data(), 200), -1);
#endif
    std::vector<uint16_t> units(static_cast<size_t>(at), 0x0100);
    units.push_back(0x0001);
    EXPECT_EQ(mub_wchar_chr(units.data(), at + 1, 0x0001), at);
    EXPECT_EQ(mub_wchar_chr(units.data(), at, 0x0001), -1);
  }
}

}  // namespace
