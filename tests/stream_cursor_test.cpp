// At the cursor: integers of fixed width, packed integers, and framed blocks.
#include "mub_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "support/guarded.h"
#include "support/random.h"
#include "support/stream_records.h"
#include "support/strings.h"

namespace mub_test {
namespace {

// What reading gives where the content cuts an integer short.
enum class Cut { kZero, kSpareBytes, kRefusal };

using Values = std::vector<uint64_t>;
using Golden = std::vector<std::pair<uint64_t, std::string>>;

// One kind of integer behind a common face.
struct Kind {
  std::function<uint64_t(const mub_stream *, int64_t *)> read;
  std::function<void(mub_stream *, int64_t *, uint64_t)> write;
  std::function<int64_t(uint64_t)> length_of;
  Cut cut;
  uint64_t kept_bits;
  Golden golden;
  Values greatest;  // of those of the fewest bytes, of one byte more …
};

template <class Read, class Write>
Kind fixed(size_t bytes, Read read, Write write) {
  const std::string image = "\x81\x92\xA3\xB4\xC5\xD6\xE7\xF8";
  const Golden golden = {{0xF8E7D6C5B4A39281, image.substr(0, bytes)}};
  const auto length_of = [bytes](uint64_t) { return bytes; };
  return {read, write, length_of, Cut::kZero, UINT64_MAX >> (64 - 8 * bytes), golden, Values()};
}

const Golden kWords = {{100, "\x64"}, {1000, "\x83\xE8"}, {0x8001, "\x80\x01"}};
const Golden kDwords = {
    {5, "\x05"}, {300, "\x41\x2C"}, {100000, "\x81\x86\xA0"}, {0xD2345678, "\xD2\x34\x56\x78"}};
const Golden kLwords = {{100, "\x64"},
                        {1000, "\x83\xE8"},
                        {0x12345, "\xC1\x45\x23"},
                        {0x1234567, "\xE1\x23\x67\x45"},
                        {0x123456789, "\xF1\x89\x67\x45\x23"},
                        {0x123456789AB, "\xF9\x23\xAB\x89\x67\x45"},
                        {0x123456789ABCD, "\xFD\x45\x23\xCD\xAB\x89\x67"},
                        {0x123456789ABCDE, "\xFE\x12\x56\x34\xDE\xBC\x9A\x78"},
                        {0x123456789ABCDEF0, "\xFF\xF0\xDE\xBC\x9A\x78\x56\x34\x12"},
                        {UINT64_MAX, std::string(9, '\xFF')}};
const Values kGreatestDwords = {63, 16383, 0x3FFFFF};
const Values kGreatestLwords = {0x7F,        0x3FFF,        0x1FFFFF,        0xFFFFFFF,
                                0x7FFFFFFFF, 0x3FFFFFFFFFF, 0x1FFFFFFFFFFFF, 0xFFFFFFFFFFFFFF};

const Kind kKinds[] = {
    fixed(1, mub_stream_get_byte, mub_stream_set_byte),
    fixed(2, mub_stream_get_word, mub_stream_set_word),
    fixed(3, mub_stream_get_tword, mub_stream_set_tword),
    fixed(4, mub_stream_get_dword, mub_stream_set_dword),
    fixed(6, mub_stream_get_xword, mub_stream_set_xword),
    fixed(8, mub_stream_get_lword, mub_stream_set_lword),
    {mub_stream_inflate_word, mub_stream_deflate_word, mub_stream_deflate_word_length, Cut::kSpareBytes,
     0x7FFF, kWords, Values(1, 0x7F)},
    {mub_stream_inflate_dword, mub_stream_deflate_dword, mub_stream_deflate_dword_length, Cut::kSpareBytes,
     0x3FFFFFFF, kDwords, kGreatestDwords},
    {mub_stream_inflate_lword, mub_stream_deflate_lword, mub_stream_deflate_lword_length, Cut::kRefusal,
     UINT64_MAX, kLwords, kGreatestLwords},
};

// What reading gives of an integer of which the content has `there` bytes and the block `capacity`, and how far it goes.
std::pair<uint64_t, int64_t> expected_read(const Kind &kind, uint64_t value, int64_t length, int64_t there,
                                           int64_t capacity) {
  if (there == length) return {value, length};
  if (kind.cut == Cut::kZero) return {0, length};
  if (kind.cut == Cut::kRefusal) return {UINT64_MAX, std::min<int64_t>(there, 1)};
  if (there == 0) return {0, 0};
  // The bytes come highest first; zeros stand for those behind the block.
  const int64_t missing_bits = 8 * (length - capacity);
  return {value >> missing_bits << missing_bits, length};
}

void expect_whole_or_nothing(const Kind &kind, uint64_t value, std::string *bytes) {
  int64_t length = kind.length_of(0);
  for (const uint64_t greatest : kind.greatest) length += value > greatest ? 1 : 0;
  ASSERT_EQ(kind.length_of(value), length);
  for (int64_t room = 0; room <= length; ++room) {
    Stream stream("................");
    mub_stream_shrink(&stream, 3 + room);
    int64_t position = 3;
    kind.write(&stream, &position, value);
    const int64_t written = room < length ? 0 : length;
    ASSERT_EQ(position, 3 + (kind.cut == Cut::kRefusal ? written : length)) << room;
    *bytes = stream.text();
    ASSERT_EQ(std::count(stream.data + 3 + written, stream.data + 16, '.'), 13 - written) << room;
  }
  for (int64_t capacity = 0; capacity <= length; ++capacity) {
    const Guarded block(bytes->substr(0, static_cast<size_t>(3 + capacity)));
    for (int64_t there = 0; there <= capacity; ++there) {
      const mub_stream stream = {block.bytes(), 3 + there, 3 + capacity};
      int64_t position = 3;
      const uint64_t read = kind.read(&stream, &position);
      ASSERT_EQ(std::pair(read, position - 3),
                expected_read(kind, value & kind.kept_bits, length, there, capacity));
    }
  }
}

TEST(StreamCursor, StoresAndReadsWholeIntegersOnly) {
  Random random(1);
  for (const Kind &kind : kKinds) {
    std::string bytes;
    for (const auto &[value, golden] : kind.golden) {
      expect_whole_or_nothing(kind, value, &bytes);
      EXPECT_EQ(bytes, "..." + golden) << std::hex << value;
    }
    Values values;
    for (const uint64_t greatest : kind.greatest)
      values.insert(values.end(), {greatest - 1, greatest, greatest + 1});
    for (int i = 0; i < 256; ++i) values.push_back((random.word() >> (i % 64)) & kind.kept_bits);
    for (const uint64_t value : values) {
      SCOPED_TRACE(testing::Message() << "kind " << &kind - kKinds << ", value " << std::hex << value);
      ASSERT_NO_FATAL_FAILURE(expect_whole_or_nothing(kind, value, &bytes));
    }
  }
  EXPECT_EQ(mub_stream_deflate_word_length(0x70005), 1) << "16 bits count";
  Stream stream("...");
  int64_t position = 0;
  mub_stream_deflate_word(&stream, &position, 0x70005);
  EXPECT_EQ(stream.text(), "\5..");
}

TEST(StreamCursor, ReadsLongerFormsThanNeeded) {
  int64_t position;
  for (int further = 1; further <= 8; ++further) {
    const Stream stream(static_cast<char>(0xFF00 >> further) + std::string(8, '\1'));
    EXPECT_EQ(mub_stream_inflate_lword(&stream, &(position = 0)), 0x0101010101010101 >> (64 - 8 * further));
    EXPECT_EQ(position, 1 + further);
  }
  const Stream stream("\x80\1\1");
  EXPECT_EQ(mub_stream_inflate_word(&stream, &(position = 0)), 1);
  EXPECT_EQ(mub_stream_inflate_dword(&stream, &(position = 0)), 0x101u);
  EXPECT_EQ(position, 3);
}

TEST(StreamCursor, TouchesNothingOutside) {
  Stream stream(std::string(10, '\xFF'));
  int64_t position;
  for (const int64_t at : {INT64_MIN, int64_t{-3}, int64_t{-1}, int64_t{10}, int64_t{11}}) {
    SCOPED_TRACE(at);
    for (const Kind &kind : kKinds) {
      // Bytes before the stream read as zeros, and packed integers do not pass its end.
      const bool stays = at >= 0 && kind.cut != Cut::kZero;
      EXPECT_EQ(kind.read(&stream, &(position = at)), stays && kind.cut == Cut::kRefusal ? UINT64_MAX : 0);
      EXPECT_EQ(position, stays ? at : at + kind.length_of(0));
      kind.write(&stream, &(position = at), 0);
      EXPECT_EQ(position, kind.cut == Cut::kRefusal ? at : at + kind.length_of(0));
    }
    mub_stream_set_buffer(&stream, &(position = at), "abc", 3);
    uint8_t *bytes = stream.data;
    int64_t count = 3;
    EXPECT_EQ(mub_stream_get_buffer(&stream, &(position = at), &bytes, &count), at + 3);
    EXPECT_TRUE(bytes == nullptr && count == 0);
  }
  mub_stream_set_lword(&stream, &(position = INT64_MAX), 0);
  EXPECT_EQ(position, INT64_MIN + 7) << "it wraps";
  EXPECT_EQ(stream.text(), std::string(10, '\xFF'));
}

template <class Record, class Set, class Get>
void expect_framed_and_clipped(const std::string &prefix, Set set, Get get) {
  const Record hello("hello");
  const std::string framed = prefix + "hello";
  for (int64_t at = 0; at <= 12; ++at) {
    SCOPED_TRACE(testing::Message() << framed.size() << " bytes at " << at);
    // A prefix that does not fit is left out whole, a body as far as it does not fit.
    const int64_t room = 12 - at - size_of(prefix);
    std::string expected(12, '.');
    if (room >= 0) expected = expected.replace(static_cast<size_t>(at), framed.size(), framed).substr(0, 12);
    Stream stream(std::string(12, '.'));
    int64_t position = at;
    EXPECT_EQ(set(&stream, &position, &hello), at + size_of(framed));
    EXPECT_EQ(position, at + size_of(framed));
    EXPECT_EQ(stream.block(), expected + std::string(5, '\0'));
    Record read("old");
    EXPECT_EQ(get(&stream, &(position = at), &read), at + size_of(prefix) + (room >= 0 ? 5 : 0));
    EXPECT_EQ(read.text(), std::string("hello", static_cast<size_t>(std::clamp<int64_t>(room, 0, 5))));
  }
}

TEST(StreamBlocks, AreFramedByTheirLengthAndClippedToTheContent) {
  expect_framed_and_clipped<String>({"\x05\0", 2}, mub_stream_set_string, mub_stream_get_string);
  expect_framed_and_clipped<Stream>({"\x05\0\0\0", 4}, mub_stream_set_stream, mub_stream_get_stream);
  const auto set_buffer = [](mub_stream *s, int64_t *position, const mub_stream *source) {
    mub_stream_set_buffer(s, position, source->data, source->length);
    return *position;
  };
  const auto get_buffer = [](const mub_stream *s, int64_t *position, mub_stream *out) {
    uint8_t *bytes;
    int64_t count = 5;
    const int64_t end = mub_stream_get_buffer(s, position, &bytes, &count);
    mub_stream_copy(out, bytes, count);
    return end;
  };
  expect_framed_and_clipped<Stream>("", set_buffer, get_buffer);
}

TEST(StreamBlocks, AStringsLengthIsCutTo16Bits) {
  const String text(std::string(65538, 'x'));
  Stream stream(std::string(70000, '.'));
  int64_t position = 0;
  EXPECT_EQ(mub_stream_set_string(&stream, &position, &text), 65540);
  EXPECT_EQ(stream.text().substr(0, 3), std::string("\x02\0x", 3));
  EXPECT_EQ(stream.text().substr(65539, 2), "x.");
}

TEST(StreamBlocks, MayClaimMoreThanThereIs) {
  const Stream stream("\xFF\xFF\xFF\xFFxyz");
  Stream body("old");
  String text("old");
  int64_t position = 0;
  EXPECT_EQ(mub_stream_get_stream(&stream, &position, &body), 4 + int64_t{UINT32_MAX});
  EXPECT_EQ(body.text(), "xyz");
  EXPECT_EQ(mub_stream_get_string(&stream, &(position = 2), &text), 4 + UINT16_MAX);
  EXPECT_EQ(text.text(), "xyz");
  EXPECT_EQ(mub_stream_get_string(&stream, &(position = -1), &text), 1) << "no length, no text";
  EXPECT_EQ(text.text(), "");
}

TEST(StreamBlocks, MayComeFromAndGoToTheStreamItself) {
  Stream stream("abcdefghijkl");
  int64_t position = 1;
  mub_stream_set_stream(&stream, &position, &stream);
  EXPECT_EQ(stream.text(), std::string("a\x0C\0\0\0abcdefg", 12));
  mub_stream_get_stream(&stream, &(position = 1), &stream);
  EXPECT_EQ(stream.text(), "abcdefg");
  mub_stream_set_buffer(&stream, &(position = 2), stream.data, 7);
  EXPECT_EQ(stream.text(), "ababcde");
}

}  // namespace
}  // namespace mub_test
