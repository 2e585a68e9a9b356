// The cursor: fixed-width fields and framed blocks.
#include "mub_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/guarded.h"
#include "support/stream_records.h"

namespace {

using mub_test::Guarded;
using mub_test::Stream;
using mub_test::String;

// The six widths behind a common face; `value` has all its bits.
struct Width {
  const char *name;
  int bytes;
  uint64_t (*read)(const mub_stream *stream, int64_t *position);
  void (*write)(mub_stream *stream, int64_t *position, uint64_t value);
};

template <auto kRead>
uint64_t read_as(const mub_stream *stream, int64_t *position) {
  return static_cast<uint64_t>(kRead(stream, position));
}

template <class Value, void (*kWrite)(mub_stream *, int64_t *, Value)>
void write_as(mub_stream *stream, int64_t *position, uint64_t value) {
  kWrite(stream, position, static_cast<Value>(value));
}

const Width kWidths[] = {
    {"byte", 1, read_as<mub_stream_get_byte>, write_as<uint32_t, mub_stream_set_byte>},
    {"word", 2, read_as<mub_stream_get_word>, write_as<uint32_t, mub_stream_set_word>},
    {"tword", 3, read_as<mub_stream_get_tword>, write_as<uint32_t, mub_stream_set_tword>},
    {"dword", 4, read_as<mub_stream_get_dword>, write_as<uint32_t, mub_stream_set_dword>},
    {"xword", 6, read_as<mub_stream_get_xword>, write_as<uint64_t, mub_stream_set_xword>},
    {"lword", 8, read_as<mub_stream_get_lword>, write_as<int64_t, mub_stream_set_lword>},
};

TEST(StreamCursor, FieldsAreLittleEndianAndWhollyInside) {
  constexpr uint64_t kValue = 0xF8E7D6C5B4A39281;
  const std::string image = "\x81\x92\xA3\xB4\xC5\xD6\xE7\xF8";
  for (const Width &width : kWidths) {
    const uint64_t kept = width.bytes == 8 ? kValue : kValue & ((uint64_t{1} << (8 * width.bytes)) - 1);
    for (int64_t room = 0; room <= 12; ++room) {
      SCOPED_TRACE(testing::Message() << width.name << " of " << room);
      const Guarded bytes(std::string(static_cast<size_t>(room), '.'));
      mub_stream stream = {bytes.bytes(), room, room};
      for (int64_t at = 0; at <= room; ++at) {
        std::string expected(static_cast<size_t>(room), '.');
        const bool fits = at + width.bytes <= room;
        if (fits) {
          expected.replace(static_cast<size_t>(at), static_cast<size_t>(width.bytes), image, 0,
                           static_cast<size_t>(width.bytes));
        }
        std::fill_n(bytes.data(), room, '.');
        int64_t position = at;
        width.write(&stream, &position, kValue);
        EXPECT_EQ(std::string(bytes.data(), static_cast<size_t>(room)), expected);
        EXPECT_EQ(position, at + width.bytes);
        position = at;
        EXPECT_EQ(width.read(&stream, &position), fits ? kept : 0);
        EXPECT_EQ(position, at + width.bytes);
      }
    }
  }
}

TEST(StreamCursor, NegativePositionsReadZeroAndPositionsWrap) {
  Stream stream(std::string(20, 'x'));
  for (const Width &width : kWidths) {
    SCOPED_TRACE(width.name);
    for (const int64_t at : {int64_t{-1}, int64_t{-3}, INT64_MIN, INT64_MAX}) {
      const auto behind =
          static_cast<int64_t>(static_cast<uint64_t>(at) + static_cast<uint64_t>(width.bytes));
      int64_t position = at;
      width.write(&stream, &position, 0);
      EXPECT_EQ(position, behind);
      position = at;
      EXPECT_EQ(width.read(&stream, &position), 0u);
      EXPECT_EQ(position, behind);
    }
  }
  EXPECT_EQ(stream.content(), std::string(20, 'x'));
}

TEST(StreamBlocks, AreFramedByTheirLengthAndClippedToTheContent) {
  const std::string word("\x05\0hello", 7);
  const std::string dword("\x05\0\0\0hello", 9);
  const String text("hello");
  const Stream block("hello");
  for (int64_t at = 0; at <= 14; ++at) {
    SCOPED_TRACE(at);
    const auto expected = [at](const std::string &framed, int64_t prefix) {
      // A prefix that does not fit is left out whole, a body as far as it does not fit.
      std::string result(12, '.');
      if (at + prefix <= 12) result.replace(static_cast<size_t>(at), framed.size(), framed);
      return result.substr(0, 12);
    };
    Stream stream(std::string(12, '.'));
    int64_t position = at;
    EXPECT_EQ(mub_stream_set_string(&stream, &position, &text), at + 7);
    EXPECT_EQ(position, at + 7);
    EXPECT_EQ(stream.content(), expected(word, 2));

    Stream other(std::string(12, '.'));
    position = at;
    EXPECT_EQ(mub_stream_set_stream(&other, &position, &block), at + 9);
    EXPECT_EQ(other.content(), expected(dword, 4));

    const int64_t there = std::clamp<int64_t>(12 - at - 2, 0, 5);
    String read("old");
    position = at;
    EXPECT_EQ(mub_stream_get_string(&stream, &position, &read), at + 2 + (at + 2 <= 12 ? 5 : 0));
    EXPECT_EQ(read.content(), std::string("hello").substr(0, static_cast<size_t>(there)));
    Stream read_block("old");
    position = at;
    EXPECT_EQ(mub_stream_get_stream(&other, &position, &read_block), at + 4 + (at + 4 <= 12 ? 5 : 0));
    EXPECT_EQ(read_block.content(),
              std::string("hello").substr(0, static_cast<size_t>(std::clamp<int64_t>(8 - at, 0, 5))));
  }
}

TEST(StreamBlocks, AStringsLengthIsCutTo16Bits) {
  const String text(std::string(65538, 'x'));
  Stream stream(std::string(70000, '.'));
  int64_t position = 0;
  EXPECT_EQ(mub_stream_set_string(&stream, &position, &text), 65540);
  EXPECT_EQ(stream.content().substr(0, 3), std::string("\x02\0x", 3));
  EXPECT_EQ(stream.content().substr(65539, 2), "x.");
  String read;
  position = 0;
  EXPECT_EQ(mub_stream_get_string(&stream, &position, &read), 4);
  EXPECT_EQ(read.content(), "xx");
}

TEST(StreamBlocks, MayComeFromAndGoToTheStreamItself) {
  Stream stream("abcdefghijkl");
  int64_t position = 1;
  EXPECT_EQ(mub_stream_set_stream(&stream, &position, &stream), 17);
  EXPECT_EQ(stream.content(), std::string("a\x0C\0\0\0abcdefg", 12));
  position = 1;
  EXPECT_EQ(mub_stream_get_stream(&stream, &position, &stream), 17);
  EXPECT_EQ(stream.content(), "abcdefg");
  position = 2;
  mub_stream_set_buffer(&stream, &position, stream.data, 7);
  EXPECT_EQ(stream.content(), "ababcde");
}

TEST(StreamBlocks, BuffersAreClippedAndFoundInPlace) {
  struct Buffer {
    int64_t at, count;
    std::string content;
    int64_t found;
  };
  for (const Buffer &buffer : std::vector<Buffer>{{0, 3, "abc...", 3},
                                                  {3, 3, "...abc", 3},
                                                  {4, 3, "....ab", 2},
                                                  {6, 3, "......", 0},
                                                  {9, 3, "......", 0},
                                                  {2, 0, "......", 0},
                                                  {-1, 3, "......", 0},
                                                  {INT64_MAX, 3, "......", 0}}) {
    SCOPED_TRACE(buffer.at);
    Stream stream("......");
    const auto behind =
        static_cast<int64_t>(static_cast<uint64_t>(buffer.at) + static_cast<uint64_t>(buffer.count));
    int64_t position = buffer.at;
    mub_stream_set_buffer(&stream, &position, "abc", buffer.count);
    EXPECT_EQ(position, behind);
    EXPECT_EQ(stream.content(), buffer.content);

    position = buffer.at;
    uint8_t *bytes = nullptr;
    int64_t count = buffer.count;
    EXPECT_EQ(mub_stream_get_buffer(&stream, &position, &bytes, &count), behind);
    EXPECT_EQ(position, behind);
    EXPECT_EQ(count, buffer.found);
    EXPECT_EQ(bytes, buffer.at >= 0 && buffer.at < 6 ? stream.data + buffer.at : nullptr);
  }
  Stream stream("......");
  int64_t position = 3;
  mub_stream_set_buffer(&stream, &position, "abc", -2);
  EXPECT_EQ(position, 1);
  EXPECT_EQ(stream.content(), "......");
}

}  // namespace
