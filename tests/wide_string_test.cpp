// What wide strings do otherwise than narrow ones; what they do alike is tested with them.
#include "mub_wchar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/strings.h"
#include "text/word_search.h"

namespace {

using mub_test::expect_content;
using mub_test::Guarded;
using mub_test::Random;
using mub_test::Wide;
using Text = mub_test::Text<Wide>;
using Sequence = std::vector<uint16_t>;

constexpr int64_t kStep = sizeof(wchar_t) / sizeof(uint16_t);

// Units that end right before an unreadable page.
struct GuardedUnits : Guarded {
  explicit GuardedUnits(const Sequence &units)
      : Guarded({reinterpret_cast<const char *>(units.data()), units.size() * sizeof(uint16_t)}) {}
  const uint16_t *units() const { return reinterpret_cast<const uint16_t *>(data()); }
  int64_t count() const { return size() / static_cast<int64_t>(sizeof(uint16_t)); }
};

// Few different units, whose halves recur in one another.
Sequence random_units(Random &random, int64_t length) {
  constexpr uint16_t kUnits[] = {0x6161, 0x6162, 0x6261, 0};
  Sequence units;
  for (int64_t i = 0; i < length; ++i) units.push_back(kUnits[random.below(random.one_in(8) ? 4 : 3)]);
  return units;
}

// The same units as the runtime's wide characters, and one of 0 behind them; what fills no character is left out.
std::wstring characters(const uint16_t *units, int64_t count) {
  std::wstring text(static_cast<size_t>(count / kStep), L'\0');
  if (count >= kStep) std::memcpy(text.data(), units, text.size() * sizeof(wchar_t));
  return text;
}

TEST(WideString, TakesNarrowTextsAsSignedBytes) {
  Text string;
  mub_wchar_copy_str(&string, "\xE9z\x7F", 3);
  mub_wchar_append_str(&string, "\x80!", -1);
  mub_wchar_append_str(&string, nullptr, -1);
  mub_wchar_append_str(&string, "x", INT64_MAX);
  const Sequence units(string.data, string.data + string.length);
  EXPECT_EQ(units, (Sequence{0xFFE9, 'z', 0x7F, 0xFF80, '!'}));
  mub_wchar_copy_str(&string, nullptr, 5);
  expect_content(string, "");
  mub_wchar_append_long(&string, INT64_MIN);
  mub_wchar_append_float(&string, -0.5f);
  mub_wchar_append_double(&string, -DBL_MAX);
  expect_content(string, std::to_string(INT64_MIN) + "-0.500000" + std::to_string(-DBL_MAX));
  mub_wchar_copy_integer(&string, 7);
  expect_content(string, "7");
  mub_wchar_copy_double(&string, 1.25);
  expect_content(string, "1.250000");
}

TEST(WideString, WidensItsOwnBytesOrNothing) {
  for (const int64_t count : {3, 300}) {
    mub_test::for_every_allocation([count](const mub_test::Fuse &fuse) {
      Text string(std::string(160, 'z'));
      const char *own = reinterpret_cast<const char *>(string.data);
      char unit[2];
      std::memcpy(unit, own, sizeof unit);
      const bool failed = fuse.blows_in([&] { mub_wchar_append_str(&string, own, count); });
      std::string added;
      for (int64_t i = 0; i < count; ++i) added += unit[i % 2];
      expect_content(string, std::string(160, 'z') + (failed ? "" : added));
    });
  }
  Text string("0123456789abcde");
  mub_wchar_append_str(&string, reinterpret_cast<const char *>(string.data + 15), 2);
  EXPECT_EQ(string.length, 17) << "the terminator's bytes";
}

// The runtime itself measures and searches an aligned copy of the whole block.
TEST(WideString, MeasuresAndFindsTextsWithoutACountAsTheRuntimeDoes) {
  Random random(31);
  int found = 0;
  for (int round = 0; round < 20000; ++round) {
    Text string;
    const Sequence content = random_units(random, 1 + random.below(40));
    mub_wchar_copy(&string, content.data(), static_cast<int64_t>(content.size()));
    mub_wchar_shrink(&string, 1 + random.below(string.length));  // leaves units behind the terminator
    Sequence needle = random_units(random, random.below(4));
    needle.resize(needle.size() + kStep + needle.size() % kStep + static_cast<size_t>(random.below(2)));
    const GuardedUnits text(needle);
    const std::wstring wanted = characters(text.units(), text.count());
    const int64_t start = random.below(string.length);
    const std::wstring block = characters(string.data + start, string.capacity + 1 - start);
    const wchar_t *hit = std::wcsstr(block.c_str(), wanted.c_str());
    int64_t expected = hit == nullptr ? -1 : start + (hit - block.c_str()) * kStep;
    if (expected >= string.length) expected = -1;
    found += expected > start;
    // An odd number of units misaligns the text.
    ASSERT_EQ(mub_wchar_find_pos(&string, text.units(), -1, start), expected);
    Text copied("old");
    mub_wchar_copy(&copied, text.units(), -1);
    ASSERT_EQ(copied.length, static_cast<int64_t>(std::wcslen(wanted.c_str())));
  }
  EXPECT_GT(found, 500);
}

TEST(WideString, FindsWhatBeginsInTheContentAndReplacesWhatLiesInIt) {
  Text string("wxyz0");
  mub_wchar_shrink(&string, 1);
  const uint16_t text[] = {'w', 0, 'y', 'z', 0, 0}, x[] = {'x', 0, 0, 0};
  EXPECT_EQ(mub_wchar_find(&string, text, -1), 0);
  EXPECT_EQ(mub_wchar_replace(&string, text, x), kStep == 1);
  Text full("0123456789abcde");
  EXPECT_EQ(mub_wchar_find_pos(&full, text, -1, 14), -1) << "half a character is left";
}

TEST(WideString, DoesNotMeasureWhatIsPutIn) {
  Text string("ab");
  const uint16_t x[] = {'x', 0, 0, 0};
  EXPECT_EQ(mub_wchar_insert(&string, 1, x, -1) + mub_wchar_update(&string, 0, 1, x, -1), 0);
  mub_wchar_append(&string, x, -1);
  EXPECT_EQ(mub_wchar_compare(&string, x, -1), 'a' - 'x');
  expect_content(string, "abx");
}

TEST(WideUnits, AgreeWithTheStandardAlgorithms) {
  Random random(32);
  for (int round = 0; round < 20000; ++round) {
    const Sequence a = random_units(random, random.below(random.one_in(8) ? 200 : 12));
    const Sequence b = random.one_in(3) ? a : random_units(random, random.below(5));
    const GuardedUnits left(a), right(b);
    const auto index = [&a](Sequence::const_iterator at) { return at == a.end() ? -1 : at - a.begin(); };
    const int unit = random.one_in(2) ? 0x6162 : 0x6261 - 0x10000;
    const auto last = std::find(a.rbegin(), a.rend(), static_cast<uint16_t>(unit));
    ASSERT_EQ(mub_wchar_chr(left.units(), left.count(), unit),
              index(std::find(a.begin(), a.end(), static_cast<uint16_t>(unit))));
    ASSERT_EQ(mub_wchar_rchr(left.units(), left.count(), unit), a.rend() - last - 1);
    if (!b.empty()) {
      ASSERT_EQ(mub_wchar_str(left.units(), left.count(), right.units(), right.count()),
                index(std::search(a.begin(), a.end(), b.begin(), b.end())));
      ASSERT_EQ(mub_wchar_str(left.units(), left.count(), right.units(), -random.below(2)),
                index(std::find(a.begin(), a.end(), b[0])));
    }
    const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    const bool differ = x != a.end() && y != b.end();
    const auto lengths = static_cast<int64_t>(a.size()) - static_cast<int64_t>(b.size());
    ASSERT_EQ(mub_wchar_cmp(left.units(), left.count(), right.units(), right.count()),
              differ ? *x - *y : lengths);
  }
}

// All patterns of up to 6 units and all texts of up to 9, of two sorts; each bit is one. Searches fall back on this one
// where their hits keep beginning within units.
TEST(WideUnits, AreFoundInLinearTime) {
  const auto units_of = [](uint32_t bits, int64_t count) {
    Sequence units;
    for (int64_t i = 0; i < count; ++i) units.push_back(bits >> i & 1 ? 0x0100 : 0x0001);
    return units;
  };
  for (int64_t length = 1; length <= 6; ++length) {
    for (uint32_t pattern = 0; pattern < 1u << length; ++pattern) {
      const Sequence wanted = units_of(pattern, length);
      for (uint32_t bits = 1; bits < 1u << 10; ++bits) {
        const int64_t count = 31 - __builtin_clz(bits);  // below the highest bit
        const Sequence text = units_of(bits, count);
        const auto hit = std::search(text.begin(), text.end(), wanted.begin(), wanted.end());
        const int64_t found =
            mub::wide::find_in_linear_time<uint16_t>({text.data(), count}, {wanted.data(), length});
        ASSERT_EQ(found, hit == text.end() ? -1 : hit - text.begin()) << pattern << " in " << bits;
      }
    }
  }
  Sequence hostile(3000, 0x0100), ones(100, 0x0001);
  hostile.insert(hostile.end(), ones.begin(), ones.end());
  EXPECT_EQ(mub_wchar_str(hostile.data(), 3100, ones.data(), 100), 3000);
  EXPECT_EQ(mub_wchar_str(hostile.data(), 3099, ones.data(), 100), -1);
}

TEST(WideUnits, AreComparedWithoutCaseUpTo255) {
  const struct {
    uint16_t a, b;
    int order;
  } kCases[] = {{'A', 'a', 0},       {'[', '{', -32},    {0x141, 0x161, -32}, {'a', 0x141, 'a' - 0x141},
                {0x161, 'A', 0x100}, {0xFFFF, 0, 0xFFFF}};
  for (const auto &row : kCases) {
    EXPECT_EQ(mub_wchar_icmp(&row.a, 1, &row.b, 1), row.order);
    EXPECT_EQ(mub_wchar_cmp(&row.a, 1, &row.b, 1), row.a - row.b);
  }
  for (const auto compare : {mub_wchar_cmp, mub_wchar_icmp}) {
    EXPECT_EQ(compare(&kCases[0].a, 1, &kCases[0].a, -2), 3);
    EXPECT_EQ(compare(nullptr, INT64_MIN, nullptr, INT64_MIN), 0);
  }
  EXPECT_EQ(mub_wchar_chr(nullptr, INT64_MIN, 0) + mub_wchar_rchr(nullptr, INT64_MIN, 0), -2);
  EXPECT_EQ(mub_wchar_str(nullptr, INT64_MIN, nullptr, INT64_MIN), -1);
}

}  // namespace
