// What the random programs do not test in strings: numbers of pointer size, every variant of the searches,
// hostile texts.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bytes/text_search.h"
#include "mub_mem.h"
#include "mub_string.h"
#include "mub_wchar.h"
#include "support/random.h"
#include "text/word_search.h"

namespace {

TEST(Format, PrintsNumbersOfPointerSize) {
  mub_string text = {};
  mub_string_format(&text, "%zu %td", SIZE_MAX, PTRDIFF_MIN);
  EXPECT_EQ(text.data, std::to_string(SIZE_MAX) + " " + std::to_string(PTRDIFF_MIN));
  mub_string_term(&text);
}

// All patterns of up to 7 units and all texts of up to 11 units, of an alphabet of two; each bit is a unit.
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

// Time proportional to the product of the lengths would be minutes.
TEST(Search, TakesLinearTimeInHostileTexts) {
  constexpr int64_t kCount = 1 << 21, kHalf = kCount / 2;
  const std::vector<uint16_t> text(kCount, 0x0100);
  std::vector<uint16_t> wanted(kHalf, 0x0001);
  const auto find = [&] { return mub_wchar_str(text.data(), kCount, wanted.data(), kHalf); };
  EXPECT_EQ(find(), -1) << "every match of the bytes begins inside a unit";
  for (const size_t at : {size_t{0}, size_t{kHalf / 3}, size_t{kHalf - 1}}) {
    wanted.assign(kHalf, 0x0100);
    wanted[at] = 0x0001;
    EXPECT_EQ(find(), -1);
  }
}

// An alphabet of two letters makes partial matches frequent.
TEST(Search, GivesTheSameResultInEveryVariant) {
  std::mt19937 engine(static_cast<uint32_t>(mub_test::run_seed()));
  const auto draw = [&](size_t size) {
    std::string text(size, 'a');
    for (char &letter : text) letter = static_cast<char>('a' + engine() % 8 / 7);
    return text;
  };
  for (int i = 0; i < 20000; ++i) {
    const std::string wanted = draw(2 + engine() % 40), text = draw(wanted.size() + 31 + engine() % 200);
    const auto find = [&](mub::bytes::PatternFinder finder) {
      return finder(reinterpret_cast<const uint8_t *>(text.data()), std::ssize(text),
                    reinterpret_cast<const uint8_t *>(wanted.data()), std::ssize(wanted));
    };
    const auto expected = static_cast<ptrdiff_t>(text.find(wanted));
    ASSERT_EQ(find(mub::bytes::find_portable), expected);
#if defined(__x86_64__)
    ASSERT_EQ(find(mub::bytes::find_sse2), expected);
    if (!__builtin_cpu_supports("avx2")) continue;
    ASSERT_EQ(find(mub::bytes::find_avx2), expected);
#endif
  }
}

// The fast searches give up after some false matches, and the linear search continues there.
TEST(Search, FindsAMatchWhereTheFastSearchGivesUp) {
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
