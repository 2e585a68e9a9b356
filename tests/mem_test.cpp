#include "mub_mem.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "core/bytes.h"
#include "core/text_search.h"
#include "mub.h"
#include "support/fuse.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using namespace std::string_literals;
using mub_test::Guarded;
using mub_test::Random;

// What a copy byte by byte from low to high leaves, and a move that clears what it vacates; at a distance of 7 or
// less both are a copy through other memory.
std::string copied(std::string bytes, size_t to, size_t from, size_t count, bool clears) {
  const bool is_near = (to > from ? to - from : from - to) <= 7;
  if (is_near) return bytes.replace(to, count, bytes.substr(from, count));
  for (size_t i = 0; i < count; ++i) bytes[to + i] = bytes[from + i];
  for (size_t i = from; clears && i < from + count; ++i) {
    if (i < to || i >= to + count) bytes[i] = 0;
  }
  return bytes;
}

TEST(Mem, CopiesAndMovesForwardAtEveryDistance) {
  constexpr size_t kFrom = 150;
  const std::string before = Random(2).text(450, 26);
  for (size_t to = 0; to <= 300; ++to) {
    for (const int64_t count : {0, 1, 7, 8, 23, 40, 149}) {
      SCOPED_TRACE(::testing::Message() << count << " bytes to " << to);
      const auto size = static_cast<size_t>(count);
      std::string filled = before, moved = before, cleared = before;
      mub_mem_copy(&filled[to], &filled[kFrom], count);
      ASSERT_EQ(filled, copied(before, to, kFrom, size, false));
      mub_mem_move(&moved[to], &moved[kFrom], count);
      ASSERT_EQ(moved, copied(before, to, kFrom, size, true));
      mub_mem_zero(&cleared[to], count);
      ASSERT_EQ(cleared, std::string(before).replace(to, size, size, '\0'));
    }
  }
}

// 4 GiB apart, ranges count as near each other: the low halves of the addresses decide.
TEST(Mem, DistanceIsThatOfTheLowAddressHalves) {
  constexpr uint64_t kDistance = uint64_t{1} << 32;
  if (kDistance > SIZE_MAX) GTEST_SKIP() << "addresses have no upper half";
  constexpr auto kSpan = static_cast<size_t>(kDistance + 4096);
  constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
  void *map = mmap(nullptr, kSpan, PROT_READ | PROT_WRITE, kFlags, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no room for 4 GiB of addresses";
  char *low = static_cast<char *>(map), *high = low + static_cast<size_t>(kDistance);
  std::copy_n("near and far", 12, low);
  mub_mem_move(high + 7, low, 12);
  EXPECT_EQ(std::string(low, 12), "near and far");
  mub_mem_move(high + 8, low, 12);
  EXPECT_EQ(std::string(low, 12), std::string(12, '\0'));
  munmap(map, kSpan);
}

TEST(Mem, CountsBelowOneAreEmptyRanges) {
  std::string text = "untouched bytes, all of them";
  for (const int64_t count : {INT64_C(0), INT64_C(-1), INT64_MIN}) {
    mub_mem_zero(&text[0], count);
    mub_mem_copy(&text[0], &text[12], count);
    mub_mem_move(&text[0], &text[12], count);
    EXPECT_EQ(mub_mem_chr(text.data(), count, 'u') + mub_mem_rchr(text.data(), count, 'u'), -2);
    EXPECT_EQ(mub_mem_str(text.data(), count, "u", count), -1);
    EXPECT_EQ(mub_mem_icmp("a", count, "b", count), 0);
    EXPECT_EQ(mub_mem_str("abcb", 4, "bx", count), 1) << "the first byte alone";
    EXPECT_EQ(mub_mem_str("abcb", 4, "", count), -1) << "the terminator is no data";
  }
  EXPECT_EQ(text, "untouched bytes, all of them");
  EXPECT_EQ(mub_mem_chr("\0xax\xFF", 5, -1) + mub_mem_rchr("\0xax\xFF", 5, 'x' + 256), 4 + 3);
  EXPECT_EQ(mub_mem_cmp("", 0, "", INT64_C(1) << 32), 0) << "differences are cut to 32 bits";
  EXPECT_EQ(mub_mem_icmp("", 0, "", INT64_C(1) << 31), INT32_MIN);
}

// Cut to the width of an address, each of these sizes would be a small one.
TEST(Mem, SizesThatNoAddressReachesAreRefused) {
  constexpr uint64_t kAll = SIZE_MAX;
  if (kAll == UINT64_MAX) GTEST_SKIP() << "an address has as many bits as a size";
  const auto many = [](uint64_t unit_bytes) { return static_cast<int64_t>(kAll / unit_bytes + 17); };
  mub_stream bytes = {nullptr, 0, 0};
  mub_arrays items = {nullptr, 0, 0, nullptr, 0, 0};
  mub_pool pool;
  mub_pool_init(&pool);
  pool.block_size = many(16);
  EXPECT_EQ(mub_malloc(kAll + 17), nullptr);
  EXPECT_EQ(mub_stream_expand(&bytes, many(1)), 0);
  EXPECT_EQ(mub_arrays_expand(&items, many(8)), 0);
  EXPECT_EQ(mub_pool_new(&pool), nullptr);
  mub_pool_term(&pool);
}

// By what this machine searches best with, and by what others use, each asked within its limits.
void expect_first(const std::string &data, const std::string &pattern) {
  const Guarded text(data), wanted(pattern);
  const size_t found = data.find(pattern);
  const int64_t expected = found == std::string::npos ? -1 : static_cast<int64_t>(found);
  ASSERT_EQ(mub_mem_str(text.data(), text.size(), wanted.data(), wanted.size()), expected);
  const int64_t starts = text.size() - wanted.size() + 1;
  if (wanted.size() < 2 || starts < 1) return;
  ASSERT_EQ(mub::bytes::find_portable(text.bytes(), text.size(), wanted.bytes(), wanted.size()), expected);
#if defined(__x86_64__)
  if (starts < mub::bytes::kSse2Starts) return;
  ASSERT_EQ(mub::bytes::find_sse2(text.bytes(), text.size(), wanted.bytes(), wanted.size()), expected);
#endif
}

// Texts of one letter alone look like the pattern everywhere; a 'z' in the pattern makes it stand in one place.
TEST(Mem, FindsPatternsAsAModelDoes) {
  Random random(1);
  for (int round = 0; round < 8000 && !HasFatalFailure(); ++round) {
    const int alphabet = 1 + static_cast<int>(random.below(4));
    std::string data = random.text(1 + random.below(random.one_in(4) ? 2000 : 100), alphabet);
    const size_t at = random.word() % data.size();
    std::string pattern = random.text(1 + random.below(random.one_in(4) ? 300 : 8), alphabet);
    if (random.one_in(2)) pattern = data.substr(at, pattern.size());
    if (random.one_in(2)) pattern[random.word() % pattern.size()] = 'z';
    if (random.one_in(2)) data.replace(at, pattern.size(), pattern);
    SCOPED_TRACE(data + " / " + pattern);
    expect_first(data, pattern);
  }
}

int difference(const std::string &a, const std::string &b, int fold(int)) {
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const int difference = fold(static_cast<uint8_t>(a[i])) - fold(static_cast<uint8_t>(b[i]));
    if (difference != 0) return difference;
  }
  return static_cast<int>(a.size()) - static_cast<int>(b.size());
}

TEST(Mem, ComparesAsAModelDoes) {
  Random random(7);
  for (int round = 0; round < 20000; ++round) {
    const std::string a = random.text(random.below(random.one_in(4) ? 700 : 40), 2);
    std::string b = a.substr(0, random.word() % (random.one_in(3) ? 40 : 1000));
    for (int64_t i = random.below(4); i > 0 && !b.empty(); --i)
      b[(random.one_in(4) ? 255 : random.word()) % b.size()] = "abAB\x05\xF0"[random.below(6)];
    const Guarded left(a), right(b);
    const char *x = left.data(), *y = right.data();
    SCOPED_TRACE(a + " / " + b);
    const int expected = difference(a, b, [](int byte) { return byte; });
    const int order = mub::bytes::order(x, left.size(), y, right.size());
    ASSERT_EQ(mub_mem_cmp(x, left.size(), y, right.size()), expected);
    ASSERT_EQ(mub_mem_cmp(y, right.size(), x, left.size()), -expected);
    ASSERT_EQ((order > 0) - (order < 0), (expected > 0) - (expected < 0));
    ASSERT_EQ(mub_mem_icmp(x, left.size(), y, right.size()), difference(a, b, std::tolower));
    ASSERT_EQ(mub::bytes::equal(x, y, right.size()), a.compare(0, b.size(), b) == 0);
  }
}

TEST(Str, DuplicateReplacesTheOldStringOrLeavesIt) {
  char *text = nullptr;
  mub_str_dup(&text, "old string", -1);
  mub_str_dup(&text, text + 4, 9);
  EXPECT_EQ(std::string(text, 10), "string\0\0\0\0"s) << "padded";
  mub_test::for_every_allocation([&text](const mub_test::Fuse &fuse) {
    const bool failed = fuse.blows_in([&] { mub_str_dup(&text, "new", 2); });
    EXPECT_STREQ(text, failed ? "string" : "ne");
    mub_str_dup(&text, "string", -1);
  });
  mub_str_dup(&text, "never", INT64_MAX);
  EXPECT_STREQ(text, "string");
  mub_str_dup(&text, nullptr, 5);
  EXPECT_EQ(text, nullptr);
}

TEST(Str, KnowsNullAndTheTerminator) {
  const int64_t kFound[][2] = {
      {mub_str_chr("abcb", 'b' + 256), 1}, {mub_str_rchr("abcb", 'b'), 3}, {mub_str_chr("abcb", 0), 4},
      {mub_str_chr(nullptr, 0), -1},       {mub_str_rchr(nullptr, 0), -1}, {mub_str_str("abcb", "cb"), 2},
      {mub_str_str("abcb", "bb"), -1},     {mub_str_str("", nullptr), -1}, {mub_str_str(nullptr, ""), -1}};
  for (const auto &row : kFound) EXPECT_EQ(row[0], row[1]) << "search " << &row - kFound;
  for (const auto compare : {mub_str_cmp, mub_str_icmp}) {
    EXPECT_EQ(compare(nullptr, nullptr), 0);
    EXPECT_EQ(compare(nullptr, ""), -1);
    EXPECT_EQ(compare("", nullptr), 1);
  }
  EXPECT_GT(mub_str_cmp("a", "B"), 0);
  EXPECT_LT(mub_str_icmp("a", "B"), 0);
}

}  // namespace
