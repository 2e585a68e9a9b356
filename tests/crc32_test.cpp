// Every way of computing the CRC-32 register against one written bit by bit, and against published checksums.
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "core/crc32.h"
#include "core/crc32_variants.h"
#include "mub_stream.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using mub_test::Guarded;
using mub_test::Random;

constexpr int64_t kLongest = 3000;
constexpr uint32_t kOnes = 0xFFFFFFFF;

uint32_t after_byte(uint32_t crc, uint8_t byte) {
  crc ^= byte;
  for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
  return crc;
}

uint32_t expected_register(uint32_t start, const uint8_t *bytes, int64_t length) {
  for (int64_t i = 0; i < length; ++i) start = after_byte(start, bytes[i]);
  return start;
}

std::string random_bytes(Random &random, int64_t length) {
  std::string bytes;
  for (int64_t i = 0; i < length; ++i) bytes += static_cast<char>(random.word());
  return bytes;
}

class EveryVariant : public testing::TestWithParam<mub::crc::Variant> {
 protected:
  void SetUp() override {
    if (!GetParam().supported()) GTEST_SKIP() << "not on this processor";
  }
};

// The bytes start right behind a closed page: what reads in front of them faults, or must be masked.
TEST_P(EveryVariant, AgreesForEveryLengthAndAlignment) {
  Random random(1);
  const Guarded page(random_bytes(random, 4096));
  for (const int64_t offset : {0, 1, 2, 3, 7, 8, 15, 16, 31, 63, 64}) {
    const uint8_t *bytes = page.bytes() + offset;
    for (const uint32_t ones : {0u, kOnes}) {
      uint32_t expected = ones;
      for (int64_t length = 1; length <= kLongest; ++length) {
        expected = after_byte(expected, bytes[length - 1]);
        ASSERT_EQ(GetParam().run(ones, bytes, length), expected ^ ones)
            << length << " bytes at " << offset << ", start " << ones;
      }
    }
  }
}

TEST_P(EveryVariant, ReadsNothingBehindTheBytes) {
  Random random(2);
  const Guarded page(random_bytes(random, kLongest));
  for (int64_t length = 1; length <= kLongest; ++length) {
    const uint8_t *bytes = page.bytes() + page.size() - length;
    ASSERT_EQ(GetParam().run(kOnes, bytes, length), ~expected_register(kOnes, bytes, length)) << length;
  }
}

INSTANTIATE_TEST_SUITE_P(Crc32, EveryVariant, testing::ValuesIn(mub::crc::kVariants),
                         [](const auto &each) { return std::string(each.param.name); });

TEST(Crc32, GivesThePublishedChecksums) {
  const std::string zeros(32, '\0');
  const std::string ones(32, '\xFF');
  const std::string fox = "The quick brown fox jumps over the lazy dog";
  const auto crc_of = [](const std::string &text) {
    return mub_stream_crc32(text.data(), static_cast<int64_t>(text.size()));
  };
  EXPECT_EQ(crc_of("123456789"), 0xCBF43926);
  EXPECT_EQ(crc_of("a"), 0xE8B7BE43);
  EXPECT_EQ(crc_of(fox), 0x414FA339);
  EXPECT_EQ(crc_of(zeros), 0x190A55AD);
  EXPECT_EQ(crc_of(ones), 0xFF6CAB0B);
}

TEST(Crc32, AgreesOnALongRun) {
  Random random(3);
  const std::string bytes = random_bytes(random, 100003);
  const auto *data = reinterpret_cast<const uint8_t *>(bytes.data());
  EXPECT_EQ(mub_stream_crc32(data, 100003), ~expected_register(kOnes, data, 100003));
}

TEST(Crc32, TheTableHoldsTheRegisterAfterEachByte) {
  for (uint32_t byte = 0; byte < 256; ++byte) EXPECT_EQ(CRC_TABLE[byte], after_byte(byte, 0)) << byte;
}

TEST(Crc32, NothingHasTheChecksumZero) {
  EXPECT_EQ(mub_stream_crc32(nullptr, 5), 0u);
  EXPECT_EQ(mub_stream_crc32("abc", 0), 0u);
  EXPECT_EQ(mub_stream_crc32("abc", -1), 0u);
  EXPECT_EQ(mub_stream_check(nullptr, 5), 0);
  EXPECT_EQ(mub_stream_check("abc", 0), 0);
  EXPECT_EQ(mub_stream_check("abc", -1), 0);
}

TEST(Crc32, CheckXorsEveryByte) {
  Random random(4);
  const Guarded page(random_bytes(random, 100));
  int expected = 0;
  for (int64_t length = 1; length <= 100; ++length) {
    const uint8_t *bytes = page.bytes() + page.size() - length;
    expected ^= bytes[0];
    EXPECT_EQ(mub_stream_check(bytes, length), expected) << length;
  }
}

TEST(KeyHash, IsTheRegisterStartedAtZero) {
  Random random(5);
  const Guarded page(random_bytes(random, kLongest));
  EXPECT_EQ(mub::key_hash(nullptr, 0), 0u);
  EXPECT_EQ(mub::key_hash(page.bytes(), -1), 0u);
  for (int64_t length = 1; length <= kLongest; ++length) {
    const uint8_t *bytes = page.bytes() + page.size() - length;
    ASSERT_EQ(mub::key_hash(bytes, length), expected_register(0, bytes, length)) << length;
  }
}

TEST(KeyHash, FoldsCaseByteByByte) {
  Random random(6);
  const Guarded page(random_bytes(random, 400));
  EXPECT_EQ(mub::key_hash_nocase(page.bytes(), -1), 0u);
  for (int64_t length = 0; length <= 400; ++length) {
    const uint8_t *bytes = page.bytes() + page.size() - length;
    std::vector<uint8_t> lowered;
    for (int64_t i = 0; i < length; ++i) lowered.push_back(static_cast<uint8_t>(std::tolower(bytes[i])));
    ASSERT_EQ(mub::key_hash_nocase(bytes, length), expected_register(0, lowered.data(), length)) << length;
  }
}

}  // namespace
