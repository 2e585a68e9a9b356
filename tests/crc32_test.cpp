// Every way of computing the CRC-32 register against one written bit by bit, and against published checksums.
#include <gtest/gtest.h>

#include <cctype>
#include <numeric>
#include <string>

#include "core/crc32.h"
#include "core/crc32_variants.h"
#include "mub_stream.h"
#include "support/guarded.h"
#include "support/random.h"

namespace mub_test {
namespace {

uint32_t after_byte(uint32_t crc, uint8_t byte) {
  crc ^= byte;
  for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
  return crc;
}

// Runs of every length at the start and at the end of a page: what reads before or behind them faults.
template <class Run>
void expect_agreement(uint32_t ones, Run run) {
  Random random(1);
  const Guarded page(random.text(4096, 256));
  for (const int64_t offset : {0, 1, 2, 3, 7, 8, 15, 16, 31, 63, 64}) {
    uint32_t expected = ones;
    for (int64_t length = 1; length <= 3000; ++length) {
      expected = after_byte(expected, page.bytes()[offset + length - 1]);
      ASSERT_EQ(run(page.bytes() + offset, length), expected ^ ones) << length << " bytes at " << offset;
    }
  }
  for (int64_t length = 1; length <= 3000; ++length) {
    const uint8_t *bytes = page.bytes() + page.size() - length;
    const uint32_t expected = std::accumulate(bytes, bytes + length, ones, after_byte);
    ASSERT_EQ(run(bytes, length), expected ^ ones) << length << " bytes at the end";
  }
}

TEST(Crc32, EveryVariantAgreesForEveryLengthAndAlignment) {
  for (const mub::crc::Variant &variant : mub::crc::kVariants) {
    if (!variant.supported()) continue;
    for (const uint32_t ones : {0u, UINT32_MAX}) {
      SCOPED_TRACE(testing::Message() << variant.name << ", start " << ones);
      expect_agreement(ones, [&](auto *bytes, int64_t length) { return variant.run(ones, bytes, length); });
    }
  }
  expect_agreement(UINT32_MAX, mub_stream_crc32);
  expect_agreement(0, mub::key_hash);
}

TEST(Crc32, GivesThePublishedChecksums) {
  EXPECT_EQ(mub_stream_crc32("123456789", 9), 0xCBF43926);
  EXPECT_EQ(mub_stream_crc32("The quick brown fox jumps over the lazy dog", 43), 0x414FA339);
  EXPECT_EQ(mub_stream_crc32(std::string(32, '\0').data(), 32), 0x190A55AD);
}

TEST(Crc32, TheTableHoldsTheRegisterAfterEachByte) {
  for (uint32_t byte = 0; byte < 256; ++byte) EXPECT_EQ(CRC_TABLE[byte], after_byte(byte, 0)) << byte;
}

TEST(Crc32, NothingHasTheChecksumZero) {
  for (const int64_t length : {-1, 0}) {
    EXPECT_EQ(mub_stream_crc32("abc", length), 0u);
    EXPECT_EQ(mub_stream_check("abc", length), 0);
    EXPECT_EQ(mub::key_hash("abc", length), 0u);
    EXPECT_EQ(mub::key_hash_nocase("abc", length), 0u);
  }
  EXPECT_EQ(mub_stream_crc32(nullptr, 5), 0u);
  EXPECT_EQ(mub_stream_check(nullptr, 5), 0);
}

TEST(Crc32, ChecksAndHashesWithoutCaseByteByByte) {
  Random random(4);
  const Guarded page(random.text(400, 256));
  std::string lowered;
  int expected = 0;
  for (int64_t length = 1; length <= 400; ++length) {
    const uint8_t *bytes = page.bytes() + page.size() - length;
    expected ^= bytes[0];
    EXPECT_EQ(mub_stream_check(bytes, length), expected) << length;
    lowered.insert(lowered.begin(), static_cast<char>(std::tolower(bytes[0])));
    EXPECT_EQ(mub::key_hash_nocase(bytes, length), mub::key_hash(lowered.data(), length)) << length;
  }
}

}  // namespace
}  // namespace mub_test
