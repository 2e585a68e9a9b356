// What is printed or put in for a marker: the arguments of any number.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "mub_string.h"
#include "support/fuse.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using mub_test::expect_content;
using mub_test::String;

// Growth from `capacity` with no content.
int64_t grown(int64_t capacity, int64_t wanted) { return std::max(capacity + 8, wanted) / 8 * 8 + 7; }

// The runtime's print is put into a buffer made for `estimate`, or grown once more.
template <class... Arguments>
void expect_format(int64_t estimate, const char *format, Arguments... arguments) {
  SCOPED_TRACE(format);
  std::string printed(200000, '?');
  const int length = std::snprintf(printed.data(), printed.size(), format, arguments...);
  String string("old");
  mub_string_format(&string, format, arguments...);
  if (length < 0) return expect_content(string, "old");
  expect_content(string, printed.substr(0, static_cast<size_t>(length)));
  const int64_t first = grown(0, estimate);
  EXPECT_EQ(string.capacity, length <= first ? first : grown(first, length));
}

TEST(Format, PrintsWholeIntoTheBufferThatItEstimates) {
  const std::string long_text(65536, 'x'), forty(40, 'y');
  const char *text = long_text.data(), *y = forty.data();
  expect_format(3 + 32, "%ld", 1234567890L);
  expect_format(8, "no signs", 0);
  expect_format(4 + 65536 + 3, "%s%s", text, "abc");
  // Percent signs that print themselves are signs all the same, but measure nothing.
  expect_format(2 + 32, "%%", 0);
  expect_format(3 + 64, "%%s", 0);
  expect_format(4 + 64 + 40, "%%%s", y);
  expect_format(5 + 32 + 40, "%s%%", y, 1);
  expect_format(6 + 64 + 40, "%s%5%s", y);
  // Only plain conversions of texts are measured.
  expect_format(4 + 32, "%.3s", y);
  expect_format(3 + 32, "%-s", y);
  expect_format(8 + 64, "%-*s%.*s", 3000, "", 9, y);
  expect_format(3 + 32, "%ls", L"wide");
  expect_format(4 + 32 + 40, "%S%s", L"wide", y);
  expect_format(4 + 32 + 40, "%s%s", static_cast<const char *>(nullptr), y);
  expect_format(6 + 32, "%5000d", 7);
  expect_format(2 + 32, "%f", 1e308);
  // Only the runtime knows what these print, or whether they can be printed.
  expect_format(4 + 32, "end%", 0);
  expect_format(5 + 96, "%9%%d", 1);
}

TEST(Format, PrintsPlainConversionsAsTheRuntimeDoes) {
  for (const int64_t number :
       {int64_t{0}, int64_t{9}, int64_t{-10}, int64_t{0x89ABCDEF}, INT64_MIN, INT64_MAX, int64_t{-1}}) {
    const auto low = static_cast<int>(number);
    const auto word = static_cast<uint64_t>(number);
    expect_format(11 + 3 * 32, "%d, %i, %u.", low, low, static_cast<unsigned>(number));
    expect_format(15 + 4 * 32, "%ld %lld %zd,%i", static_cast<long>(number), static_cast<long long>(number),
                  static_cast<ssize_t>(number), low);
    expect_format(14 + 3 * 32, "%lu %llu %zu", static_cast<unsigned long>(word),
                  static_cast<unsigned long long>(word), static_cast<size_t>(word));
    expect_format(8 + 2 * 32, "%hd %hhu", low, low);
    expect_format(14 + 7 * 32 + 3, "%c<%s>%%%%%c%c", 'a' + low % 9, "tex", 0, 0xE4);
  }
}

TEST(Format, TakesArgumentsWithTheirOwnTypesBeforeAText) {
  const std::string text(70, 'x');
  const char *x = text.data();
  int count = 0;
  expect_format(5 + 32 + 70, "%f %s", 1e308, x);
  expect_format(14 + 4 * 32 + 70, "%e%.3G%La%*g%s", 1.5, 2.5, 3.5L, 9, 4.5, x);
  expect_format(8 + 32 + 70, "%*.*d %s", 5, 3, 7, x);
  expect_format(27 + 8 * 32 + 70, "%hhd%hd%d%ld%lld%jd%zd%td%s", 1, 2, 3, 4L, 5LL, intmax_t{6}, size_t{7},
                ptrdiff_t{8}, x);
  expect_format(11 + 4 * 32 + 70, "%c%lc%p%n%s", 'c', wint_t{'w'}, static_cast<void *>(&count), &count, x);
  // More arguments of each sort than there are registers, which the texts then lie behind.
  expect_format(2 * 26 + 25 * 32 + 70, "%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%s", .1, 1, .2, 2,
                .3, 3, .4, 4, .5, 5, .6, 6, .7, 7, .8, 8, .9, 9, 1., 10, 1.1, 11, 1.2, 12, 1.3, x);
  // What is out of order is printed as it stands, and takes nothing; behind it no text is measured.
  for (const char *format : {"%5-d%s", "%5*d%s", "%$d%s", "%llld%s", "%hld%s", "%y%s"}) {
    expect_format(static_cast<int64_t>(std::strlen(format)) + 64, format, x);
  }
  expect_format(6 + 64, "%llf%s", 1.5L, x);
  // Positional arguments come in no order; none is measured.
  expect_format(9 + 64, "%2$s %1$d", 12, x);
  expect_format(12 + 64, "%1$s%2$*3$d", x, 7, 90);
}

TEST(Format, ReplacesTheWholeContentOrNothing) {
  String string("old");
  // There is no such character in the C locale.
  mub_string_format(&string, "%ls", L"\u20AC");
  expect_content(string, "old");
  mub_string_format(&string, "%s%9s", string.data, string.data);
  expect_content(string, "old      old");
  const char *format = "";
  mub_string_format(&string, format, 0);
  expect_content(string, "");
  const std::string text(3000, 'x');
  mub_test::for_every_allocation([&text](const mub_test::Fuse &fuse) {
    String printed("old");
    const bool failed = fuse.blows_in([&] { mub_string_format(&printed, "%-s", text.data()); });
    expect_content(printed, failed ? "old" : text);
  });
}

struct Matched {
  std::string content;
  const char *marker, *first, *second;
  std::string result;
};

TEST(Match, PutsOneTextAfterTheOtherInTheMarkersPlace) {
  const Matched kCases[] = {{"a?b?c", "?", "x", "y", "axbyc"},
                            {"a?b?c", "?", "x", nullptr, "axb?c"},
                            {"a?b?c", "?", nullptr, "y", "a?b?c"},
                            {"a?b", "?", "long ? text", "y", "along ? textb"},
                            {"aaa", "aa", "", "y", "a"},
                            {"????", "??", "??", "", "??"},
                            {"?", "??", "x", "y", "?"},
                            {"?\0?"s, "?", "x", "y", "x\0?"s},
                            {"", "?", "x", "y", ""},
                            {"a?", "", "x", "y", "a?"},
                            {"a?", nullptr, "x", "y", "a?"}};
  for (const Matched &row : kCases) {
    mub_test::for_every_allocation([&row](const mub_test::Fuse &fuse) {
      String string(row.content);
      const bool failed = fuse.blows_in([&] {
        mub_string_match(&string, row.marker, row.first, row.second, static_cast<char *>(nullptr));
      });
      expect_content(string, failed ? row.content : row.result);
    });
  }
  String string("-b-");
  const char *old = string.data;
  mub_string_match(&string, "-", string.data, string.data + 1, static_cast<char *>(nullptr));
  expect_content(string, "-b-bb-");
  EXPECT_NE(string.data, old);
}

}  // namespace
