// What the random programs do not test in bytes: huge sizes, distant addresses, CRC-32 in every variant.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "base/growth.h"
#include "crc32/crc32.h"
#include "mub_array.h"
#include "mub_mem.h"
#include "mub_stream.h"
#include "support/guarded.h"
#include "support/pools.h"
#include "support/random.h"
#include "support/wide_crc32.h"

namespace mub_test {
namespace {

TEST(Growth, FollowsTheLengthUpTo8Mi) {
  const int64_t kCases[][4] = {{1000, 1000, 1001, 1500},
                               {0xFFFFFD, 0xFFFFFD, 0xFFFFFE, 0xFFFFFD + 0x7FFFFE},
                               {0x2000000, 0x2000000, 0x2000001, 0x2800000},
                               {0x7FFFFFF0, 0x7FFFFFF0, 0x7FFFFFF1, 0x7FFFFFFF},
                               {0x80000000, 0x80000000, 0x80000001, 0x80000001}};
  for (const auto &[length, capacity, wanted, grown] : kCases)
    EXPECT_EQ(mub::grown_units(length, capacity, wanted), grown);
}

TEST(Sizes, AreNotTruncatedToTheWidthOfAnAddress) {
  mub_arrays items = {};
  EXPECT_EQ(mub_malloc(uint64_t{UINT32_MAX} + 17), nullptr);
  EXPECT_EQ(mub_arrays_expand(&items, int64_t{SIZE_MAX / 8} + 17), 0);
}

// The block ends right before an unreadable page.
TEST(PackedIntegers, AreReadBackUnlessTruncated) {
  const auto expect = [](auto value, auto write, auto read) {
    uint8_t room[9];
    mub_stream stream = {room, 9, 9};
    int64_t position = 0;
    write(&stream, &position, value);
    const Guarded block(std::string(room, room + position));
    stream = {block.bytes(), position, position};
    EXPECT_EQ(static_cast<decltype(value)>(read(&stream, &(position = 0))), value);
    stream.length = --stream.capacity;
    EXPECT_NE(static_cast<decltype(value)>(read(&stream, &(position = 0))), value);
  };
  for (int zeros = 0; zeros < 64; ++zeros) {
    expect(0x7234u >> zeros % 15, mub_stream_deflate_word, mub_stream_inflate_word);
    expect(0x32345678u >> zeros % 30, mub_stream_deflate_dword, mub_stream_inflate_dword);
    expect(uint64_t{0x923456789ABCDEF1} >> zeros, mub_stream_deflate_lword, mub_stream_inflate_lword);
  }
}

TEST(StreamBlocks, StringLengthsAreTruncatedTo16Bits) {
  std::string body(65538, 'x'), room(70000, '.');
  const mub_string text = {body.data(), 65538, 65538};
  mub_stream stream = {reinterpret_cast<uint8_t *>(room.data()), 70000, 70000};
  int64_t position = 0;
  EXPECT_EQ(mub_stream_set_string(&stream, &position, &text), 65540);
  EXPECT_EQ(room, std::string("\x02\0", 2) + body + std::string(70000 - 65540, '.'));
}

#if UINTPTR_MAX > UINT32_MAX
// Only the low halves of addresses are compared, so ranges 4 GiB apart count as near.
TEST(Mem, DistancesAreComputedFromTheLow32Bits) {
  constexpr size_t kSpan = (size_t{1} << 32) + 4096;
  void *map =
      mmap(nullptr, kSpan, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED) GTEST_SKIP() << "no address space for 4 GiB";
  char *low = static_cast<char *>(map), *high = low + (size_t{1} << 32);
  std::copy_n("near and far", 12, low);
  mub_mem_move(high + 7, low, 12);
  EXPECT_EQ(std::string(low, 12), "near and far");
  mub_mem_move(high + 8, low, 12);
  EXPECT_EQ(std::string(low, 12), std::string(12, '\0'));
  munmap(map, kSpan);
}

TEST(Mem, LongRangesCompareToTheByte) {
  const std::string equal(1100, 'm');
  const mub_test::Guarded a(equal, true);
  for (size_t at = 0; at < equal.size(); at += 7) {
    std::string other = equal;
    other[at] = 'z';
    const mub_test::Guarded b(other, at % 2 != 0);
    EXPECT_EQ(mub_mem_cmp(a.data(), a.size(), b.data(), b.size()), 'm' - 'z') << at;
  }
  EXPECT_EQ(mub_mem_cmp(a.data(), a.size(), equal.data(), a.size()), 0);
}

TEST(Pool, ComparesChunksExactlyButInTheMapByTheLow32Bits) {
  const auto at = [](int64_t address) { return reinterpret_cast<void *>(address); };
  void *chunks[] = {at(0x100001000), at(0x900002000), at(0x100000000)};
  mub_pool pool = {};
  pool.chunks = chunks;
  pool.chunk_count = 3;
  mub_pool_chunk *map = mub_pool_map(&pool);
  // An address, its chunk and offset, and the result of mub_pool_bfind() for the first two chunks.
  const int64_t places[][4] = {{0xFFFFFFFF, -1, 77, -1}, {0x100000FFF, 2, 0xFFF, 0},
                               {0x100001000, 0, 0, 1},   {0x900001000, 0, 0x800000000, 1},
                               {0x900002008, 1, 8, 1},   {0, -1, 77, 0}};
  for (const auto &[address, chunk, offset, position] : places) {
    int64_t found = 77;
    EXPECT_EQ(mub_pool_get_addr(&pool, nullptr, at(address), &found), -1);
    EXPECT_EQ(mub_pool_get_addr(&pool, map, at(address), &found), chunk);
    EXPECT_EQ(found, offset);
    EXPECT_EQ(mub_pool_bfind(map, 2, at(address)), position);
  }
  EXPECT_EQ(mub_pool_bfind(map, 0, nullptr), -1);
  mub_pool_umap(map);
  for (const int64_t size_bytes : {INT64_C(-8), INT64_MAX / 2}) {
    Pool refusing(size_bytes);
    EXPECT_EQ(mub_pool_new(&refusing), nullptr);
  }
}
#endif

uint32_t after_byte(uint32_t crc, int byte) {
  crc ^= static_cast<uint32_t>(byte);
  for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
  return crc;
}

int unchanged(int byte) { return byte; }
// Runs of every length that end at a page boundary or a few bytes before.
void expect_agreement(uint32_t inversion, auto run, int fold(int) = unchanged) {
  std::mt19937_64 engine(run_seed());
  std::string bytes(3000, '\0');
  for (char &byte : bytes) byte = static_cast<char>(engine());
  const Guarded page(std::string(4096, '\0'));
  for (const int64_t gap : {0, 1, 2, 3, 7, 8, 15, 16, 31, 63, 64}) {
    uint32_t expected = inversion;
    for (int64_t length = 1; length <= 3000; ++length) {
      expected = after_byte(expected, fold(static_cast<uint8_t>(bytes[static_cast<size_t>(length) - 1])));
      uint8_t *copy = page.bytes() + page.size() - gap - length;
      std::copy_n(bytes.begin(), length, copy);
      ASSERT_EQ(run(copy, length), expected ^ inversion) << length << " bytes, then " << gap;
    }
  }
}

TEST(Crc32, EveryVariantAgreesForEveryLengthAndAlignment) {
  std::vector<mub::crc::Variant> variants(std::begin(mub::crc::kVariants), std::end(mub::crc::kVariants));
  variants.push_back(mub::crc::kEmulated);
  for (const auto &variant : variants) {
    if (!variant.supported()) continue;
    for (const uint32_t inversion : {0u, UINT32_MAX}) {
      SCOPED_TRACE(testing::Message() << variant.name << ", start " << inversion);
      expect_agreement(inversion,
                       [&](auto *bytes, int64_t length) { return variant.run(inversion, bytes, length); });
    }
  }
  expect_agreement(UINT32_MAX, mub_stream_crc32);
  expect_agreement(0, mub::key_hash);
  expect_agreement(0, mub::key_hash_nocase, std::tolower);
  for (int byte = 0; byte < 256; ++byte) EXPECT_EQ(CRC_TABLE[byte], after_byte(0, byte)) << byte;
}

}  // namespace
}  // namespace mub_test
