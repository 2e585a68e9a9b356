// Packed integers: golden bytes, the borders of each form, and hostile bytes against a decoder written form by form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mub_stream.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using mub_test::Guarded;
using mub_test::Random;
using Bytes = std::vector<uint8_t>;

// A stream over bytes that are not its own: exactly as long as they are, and not to be grown.
mub_stream over(const Guarded &bytes) { return {bytes.bytes(), bytes.size(), bytes.size()}; }

// One class of packed integers behind a common face.
struct Packing {
  const char *name;
  int (*length_of)(uint64_t value);
  void (*write)(mub_stream *stream, int64_t *position, uint64_t value);
  uint64_t (*read)(const mub_stream *stream, int64_t *position);
  uint64_t value_mask;
  bool stays;                      // the position stays where a value does not fit
  std::vector<uint64_t> greatest;  // of 1, 2, 3 … bytes; what is above takes one byte more
};

const Packing kWord = {
    "word",
    [](uint64_t v) { return mub_stream_deflate_word_length(static_cast<uint32_t>(v)); },
    [](mub_stream *s, int64_t *p, uint64_t v) { mub_stream_deflate_word(s, p, static_cast<uint32_t>(v)); },
    [](const mub_stream *s, int64_t *p) -> uint64_t { return mub_stream_inflate_word(s, p); },
    0x7FFF,
    false,
    {0x7F}};

const Packing kDword = {
    "dword",
    [](uint64_t v) { return mub_stream_deflate_dword_length(static_cast<uint32_t>(v)); },
    [](mub_stream *s, int64_t *p, uint64_t v) { mub_stream_deflate_dword(s, p, static_cast<uint32_t>(v)); },
    [](const mub_stream *s, int64_t *p) -> uint64_t { return mub_stream_inflate_dword(s, p); },
    0x3FFFFFFF,
    false,
    {63, 16383, 0x3FFFFF}};

const Packing kLword = {
    "lword",
    [](uint64_t v) { return mub_stream_deflate_lword_length(v); },
    [](mub_stream *s, int64_t *p, uint64_t v) { mub_stream_deflate_lword(s, p, v); },
    [](const mub_stream *s, int64_t *p) { return static_cast<uint64_t>(mub_stream_inflate_lword(s, p)); },
    UINT64_MAX,
    true,
    {0x7F, 0x3FFF, 0x1FFFFF, 0xFFFFFFF, 0x7FFFFFFFF, 0x3FFFFFFFFFF, 0x1FFFFFFFFFFFF, 0xFFFFFFFFFFFFFF}};

int expected_length(const Packing &packing, uint64_t value) {
  int length = 1;
  for (const uint64_t greatest : packing.greatest) length += value > greatest ? 1 : 0;
  return length;
}

// What a stream of `room` bytes, all 0xA5, holds after the value was written at position 0.
Bytes written(const Packing &packing, uint64_t value, int64_t room, int64_t *position) {
  const Guarded bytes(std::string(static_cast<size_t>(room), '\xA5'));
  mub_stream stream = over(bytes);
  *position = 0;
  packing.write(&stream, position, value);
  EXPECT_EQ(stream.length, room);
  return Bytes(bytes.bytes(), bytes.bytes() + room);
}

uint64_t read_back(const Packing &packing, const Bytes &field, int64_t *position) {
  const Guarded bytes({reinterpret_cast<const char *>(field.data()), field.size()});
  const mub_stream stream = over(bytes);
  *position = 0;
  return packing.read(&stream, position);
}

struct Golden {
  const Packing &packing;
  uint64_t value;
  Bytes bytes;
};

const Golden kGolden[] = {
    {kWord, 100, {0x64}},
    {kWord, 1000, {0x83, 0xE8}},
    {kWord, 0x8001, {0x80, 0x01}},
    {kDword, 5, {0x05}},
    {kDword, 300, {0x41, 0x2C}},
    {kDword, 100000, {0x81, 0x86, 0xA0}},
    {kDword, 0x12345678, {0xD2, 0x34, 0x56, 0x78}},
    {kDword, 0xFFFFFFFF, {0xFF, 0xFF, 0xFF, 0xFF}},
    {kLword, 1000, {0x83, 0xE8}},
    {kLword, 0x12345, {0xC1, 0x45, 0x23}},
    {kLword, 0x1234567, {0xE1, 0x23, 0x67, 0x45}},
    {kLword, 0x123456789, {0xF1, 0x89, 0x67, 0x45, 0x23}},
    {kLword, 0x123456789AB, {0xF9, 0x23, 0xAB, 0x89, 0x67, 0x45}},
    {kLword, 0x123456789ABCD, {0xFD, 0x45, 0x23, 0xCD, 0xAB, 0x89, 0x67}},
    {kLword, 0x123456789ABCDE, {0xFE, 0x12, 0x56, 0x34, 0xDE, 0xBC, 0x9A, 0x78}},
    {kLword, 0x123456789ABCDEF0, {0xFF, 0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12}},
};

TEST(Packing, WritesTheGoldenBytesAndReadsThem) {
  for (const Golden &golden : kGolden) {
    SCOPED_TRACE(testing::Message() << golden.packing.name << " " << std::hex << golden.value);
    const auto length = static_cast<int64_t>(golden.bytes.size());
    int64_t position;
    EXPECT_EQ(written(golden.packing, golden.value, length, &position), golden.bytes);
    EXPECT_EQ(position, length);
    EXPECT_EQ(read_back(golden.packing, golden.bytes, &position), golden.value & golden.packing.value_mask);
    EXPECT_EQ(position, length);
  }
}

class EveryClass : public testing::TestWithParam<Packing> {};

void expect_round_trip(const Packing &packing, uint64_t value) {
  const int length = packing.length_of(value);
  ASSERT_EQ(length, expected_length(packing, value)) << value;
  int64_t position;
  // A byte of room more, to see that it is left alone.
  Bytes bytes = written(packing, value, length + 1, &position);
  ASSERT_EQ(position, length) << value;
  ASSERT_EQ(bytes.back(), 0xA5) << value;
  bytes.pop_back();
  ASSERT_EQ(read_back(packing, bytes, &position), value & packing.value_mask) << value;
  ASSERT_EQ(position, length) << value;
}

TEST_P(EveryClass, ReadsBackTheBordersAndWhateverLiesBetween) {
  const Packing &packing = GetParam();
  Random random(1);
  for (const uint64_t greatest : packing.greatest) {
    for (const uint64_t value : {greatest - 1, greatest, greatest + 1}) expect_round_trip(packing, value);
  }
  const int bits = 64 - __builtin_clzll(packing.value_mask);
  for (int shift = 64 - bits; shift < 64; ++shift) {
    for (int i = 0; i < 50; ++i) expect_round_trip(packing, random.word() >> shift);
  }
}

TEST_P(EveryClass, StoresNothingThatDoesNotFit) {
  const Packing &packing = GetParam();
  for (size_t form = 0; form < packing.greatest.size(); ++form) {
    const uint64_t value = packing.greatest[form] + 1;
    const auto length = static_cast<int64_t>(form) + 2;
    for (int64_t room = 0; room < length; ++room) {
      int64_t position;
      EXPECT_EQ(written(packing, value, room, &position), Bytes(static_cast<size_t>(room), 0xA5)) << value;
      EXPECT_EQ(position, packing.stays ? 0 : length);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Packing, EveryClass, testing::Values(kWord, kDword, kLword),
                         [](const auto &each) { return std::string(each.param.name); });

// The lword's forms one by one, out of their bytes.
uint64_t decoded_lword(const uint8_t *b, int *length) {
  const auto at = [b](int i) { return uint64_t{b[i]}; };
  const auto le16 = [at](int i) { return at(i) | at(i + 1) << 8; };
  const auto le32 = [le16](int i) { return le16(i) | le16(i + 2) << 16; };
  if (b[0] < 0x80) return *length = 1, at(0);
  if (b[0] < 0xC0) return *length = 2, (at(0) & 0x3F) << 8 | at(1);
  if (b[0] < 0xE0) return *length = 3, (at(0) & 0x1F) << 16 | le16(1);
  if (b[0] < 0xF0) return *length = 4, (at(0) & 0x0F) << 24 | at(1) << 16 | le16(2);
  if (b[0] < 0xF8) return *length = 5, (at(0) & 0x07) << 32 | le32(1);
  if (b[0] < 0xFC) return *length = 6, (at(0) & 0x03) << 40 | at(1) << 32 | le32(2);
  if (b[0] < 0xFE) return *length = 7, (at(0) & 0x01) << 48 | le16(1) << 32 | le32(3);
  if (b[0] < 0xFF) return *length = 8, at(1) << 48 | le16(2) << 32 | le32(4);
  return *length = 9, le32(1) | le32(5) << 32;
}

TEST(Packing, ReadsHostileLwordsWithinTheirBounds) {
  Random random(2);
  for (int head = 0; head < 256; ++head) {
    Bytes field(9);
    for (uint8_t &byte : field) byte = static_cast<uint8_t>(random.word());
    field[0] = static_cast<uint8_t>(head);
    int length;
    const uint64_t value = decoded_lword(field.data(), &length);
    for (int64_t there = 0; there <= 9; ++there) {
      SCOPED_TRACE(testing::Message() << "first byte " << head << " of " << there);
      int64_t position;
      const uint64_t read = read_back(kLword, Bytes(field.begin(), field.begin() + there), &position);
      EXPECT_EQ(read, there >= length ? value : UINT64_MAX);
      EXPECT_EQ(position, there >= length ? length : there == 0 ? 0 : 1);
    }
  }
}

// A dword (or word) that the content cuts short goes on in the spare bytes, and behind them in zeros.
TEST(Packing, ReadsCutWordsAndDwordsFromTheSpareBytes) {
  Random random(3);
  for (int head = 0; head < 256; ++head) {
    for (int64_t capacity = 1; capacity <= 4; ++capacity) {
      std::string field(static_cast<size_t>(capacity), '\0');
      for (char &byte : field) byte = static_cast<char>(random.word());
      field[0] = static_cast<char>(head);
      const Guarded bytes(field);
      const mub_stream stream = {bytes.bytes(), 1, capacity};
      field.resize(4, '\0');
      const auto byte = [&field](size_t i) { return static_cast<uint32_t>(static_cast<uint8_t>(field[i])); };

      int64_t position = 0;
      const bool two = head >= 0x80;
      EXPECT_EQ(mub_stream_inflate_word(&stream, &position), two ? (byte(0) & 0x7F) << 8 | byte(1) : byte(0));
      EXPECT_EQ(position, two ? 2 : 1);

      position = 0;
      const size_t count = (byte(0) >> 6) + 1;
      uint32_t value = byte(0) & 0x3F;
      for (size_t i = 1; i < count; ++i) value = value << 8 | byte(i);
      EXPECT_EQ(mub_stream_inflate_dword(&stream, &position), value);
      EXPECT_EQ(position, static_cast<int64_t>(count));
    }
  }
}

TEST(Packing, KeepsToTheContentAtOddPositions) {
  const Guarded bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
  mub_stream stream = over(bytes);
  for (const Packing &packing : {kWord, kDword, kLword}) {
    SCOPED_TRACE(packing.name);
    for (const int64_t behind : {stream.length, stream.length + 1, INT64_MAX}) {
      int64_t position = behind;
      EXPECT_EQ(packing.read(&stream, &position), packing.stays ? UINT64_MAX : 0);
      EXPECT_EQ(position, behind) << "the end of the content is not passed";
      packing.write(&stream, &position, 0);
      EXPECT_EQ(static_cast<uint64_t>(position), static_cast<uint64_t>(behind) + (packing.stays ? 0 : 1));
    }
    for (const int64_t before : {int64_t{-1}, int64_t{-2}, INT64_MIN}) {
      int64_t position = before;
      EXPECT_EQ(packing.read(&stream, &position), 0u) << "bytes before the stream read as 0";
      EXPECT_EQ(position, before + 1);
      position = before;
      packing.write(&stream, &position, packing.value_mask);
    }
  }
  EXPECT_EQ(std::string(bytes.data(), 10), std::string(10, '\xFF'));
}

}  // namespace
