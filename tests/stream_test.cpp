// The stream as a whole: growth, editing, searching, extraction, exchange and failed allocations.
#include "mub_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "core/growth.h"
#include "support/fuse.h"
#include "support/random.h"
#include "support/stream_records.h"
#include "support/strings.h"

namespace mub_test {
namespace {

TEST(Stream, GrowsByHalfItsLengthInMultiplesOfEight) {
  constexpr int64_t k32Mi = 0x2000000;
  constexpr int64_t k8Mi = 0x800000;
  const std::vector<int64_t> wanted = {-5, 0, 1, 8, 9, 17, 25, 100, 1000, 1001, 4000, k32Mi, k32Mi + 1};
  const std::vector<int64_t> given = {0, 0, 8, 8, 16, 24, 40, 104, 1000, 1504, 4000, k32Mi, k32Mi + k8Mi};
  Stream stream;
  for (size_t i = 0; i < wanted.size(); ++i) {
    ASSERT_TRUE(mub_stream_expand(&stream, wanted[i]));
    EXPECT_EQ(stream.capacity, given[i]) << wanted[i];
    mub_stream_shrink(&stream, stream.capacity);
  }
  mub_stream_shrink(&stream, 100);
  ASSERT_TRUE(mub_stream_expand(&stream, stream.capacity + 1));
  EXPECT_EQ(stream.capacity, k32Mi + k8Mi + 56) << "a step follows the length";
  // Too large for a test's heap.
  EXPECT_EQ(mub::grown_units(0x7FFFFFF0, 0x7FFFFFF0, 0x7FFFFFF1), 0x7FFFFFFF);
  EXPECT_EQ(mub::grown_units(0x80000000, 0x80000000, 0x80000001), 0x80000001);
}

// Every edit replaces a range by some bytes, sometimes the stream's own: they count as copied before anything moves.
TEST(Stream, EditsAsAStringWould) {
  enum Edit : int64_t { kAppend, kInsert, kUpdate, kDelete, kCopy };
  Random random(1);
  Stream stream;
  std::string model;
  for (int step = 0; step < 10000; ++step) {
    const int64_t size = size_of(model);
    const int64_t own = random.below(size + 1);
    std::string bytes(model.begin() + own, model.begin() + std::min(own + random.below(300), size));
    const void *source = stream.data + own;
    if (random.one_in(2)) source = (bytes = random.text(random.below(40) * random.below(8))).data();
    const int64_t edit = random.one_in(100) ? kCopy : random.below(4);
    const int64_t at = edit == kCopy ? 0 : edit == kAppend ? size : random.below(size + 1);
    const int64_t range = std::min(random.below(random.one_in(2) ? 8 : 200), size - at);
    const int64_t removed = edit == kCopy ? size : edit == kInsert ? 0 : range;
    bool is_right = true;
    if (edit == kAppend) mub_stream_append(&stream, source, size_of(bytes));
    if (edit == kInsert) is_right = mub_stream_insert(&stream, at, source, size_of(bytes)) == !bytes.empty();
    if (edit == kUpdate) is_right = mub_stream_update(&stream, at, removed, source, size_of(bytes)) == 1;
    if (edit == kCopy) mub_stream_copy(&stream, source, size_of(bytes));
    if (edit == kDelete) bytes.clear(), mub_stream_delete(&stream, at, removed);
    model.replace(model.begin() + at, model.begin() + at + removed, bytes);
    ASSERT_EQ(stream.text(), model);
    ASSERT_TRUE(is_right && (stream.data == nullptr || stream.block().back() == 0));
  }
}

TEST(Stream, RefusesWholeWhatDoesNotFit) {
  Stream stream("012345");
  const std::string before = stream.block();
  const char byte = 'x';  // Far from the block, as bytes on the stack are.
  for (const int64_t size : {INT64_MAX, INT64_MAX - 1, INT64_MAX - 64, INT64_MAX / 2}) {
    EXPECT_FALSE(mub_stream_expand(&stream, size) || mub_stream_insert(&stream, 0, &byte, size)) << size;
    mub_stream_append(&stream, &byte, size);
    mub_stream_copy(&stream, &byte, size);
  }
  for (const auto &[at, count] : std::vector<std::pair<int64_t, int64_t>>{
           {7, 0}, {-1, 2}, {2, -1}, {0, 9}, {4, INT64_MAX}, {INT64_MAX, INT64_MAX}}) {
    EXPECT_FALSE(mub_stream_update(&stream, at, count, "XY", 2)) << count << " at " << at;
    mub_stream_delete(&stream, at, count);
    mub_stream_zero(&stream, at, count);
  }
  for (const int64_t at : {int64_t{-1}, int64_t{8}, INT64_MAX}) {
    EXPECT_FALSE(mub_stream_insert(&stream, at, "XY", 2)) << at;
    mub_stream_set_at(&stream, at, 'X');
    EXPECT_EQ(mub_stream_get_at(&stream, at), 0) << at;
    EXPECT_EQ(mub_stream_find_pos(&stream, '0', at), -1) << at;
  }
  for (const int64_t n : {-1, 3}) {
    EXPECT_FALSE(mub_stream_update(&stream, 0, 1, nullptr, n) || mub_stream_insert(&stream, 0, nullptr, n));
    mub_stream_append(&stream, nullptr, n);
  }
  mub_stream_delete(&stream, 5, 2);
  mub_stream_shrink(&stream, -1);
  EXPECT_TRUE(stream.length == 6 && stream.block() == before) << stream.block();
}

// What an edit makes of 6 bytes in a block of 8.
template <class Edit, class... Arguments>
void expect_edited(const std::string &content, Edit edit, Arguments... arguments) {
  Stream stream("012345");
  edit(&stream, arguments...);
  EXPECT_EQ(stream.text(), content);
}

TEST(Stream, UpdatesBehindTheContentAndMeasuresTexts) {
  // The length changes by the difference of the counts; spare bytes come in, new bytes that lie outside are lost.
  const auto update_and_lengthen = [](mub_stream *s) { mub_stream_update(s, 4, 4, "XY", 2), s->length += 2; };
  expect_edited("0123XY", update_and_lengthen);
  expect_edited("012345X", mub_stream_update, 6, 2, "XYZ", 3);
  expect_edited("012345", mub_stream_update, 6, 4, "XYZW", 4);
  expect_edited("01234X", mub_stream_update, 5, 3, "XYZ", 3);
  expect_edited("AA12345", mub_stream_update, 0, 1, "AA\0B", -1);
  expect_edited("05", mub_stream_update, 1, 4, nullptr, 0);
  expect_edited("0__12345", mub_stream_insert, 1, "__\0_", -7);
  expect_edited("012345ef", mub_stream_append, "ef\0g", -1);
  expect_edited("ab", mub_stream_copy, "ab\0cd", -1);
  expect_edited("", mub_stream_copy, nullptr, 3);
}

TEST(Stream, KeepsSpareBytesThatIndexesReachAndSearchesDoNot) {
  Stream stream("012345");
  mub_stream_shrink(&stream, 3);
  EXPECT_EQ(mub_stream_get_at(&stream, 5), '5');
  EXPECT_EQ(mub_stream_find(&stream, '5'), -1);
  ASSERT_TRUE(mub_stream_expand(&stream, 9));
  EXPECT_EQ(stream.block(), "012345" + std::string(11, '\0'));
  mub_stream_set_at(&stream, 15, 0x100 + 'f');
  mub_stream_zero(&stream, 4, 11);
  mub_stream_shrink(&stream, 99);
  EXPECT_EQ(stream.text(), "0123" + std::string(11, '\0') + 'f');
  EXPECT_EQ(mub_stream_find_pos(&stream, 0x100 + 'f', 15), 15);
  EXPECT_EQ(mub_stream_find_pos(&stream, '3', 4), -1);
  EXPECT_EQ(mub_stream_find(&stream, 0x100), -1) << "a 0 is never found";
  mub_stream_zero(&stream, 0, 16);
  EXPECT_EQ(stream.text(), std::string(16, '\0'));
}

TEST(Stream, ExtractionAgreesWithSubstrings) {
  const std::string all = "0123456789";
  const Stream source(all);
  const auto expect = [&](const std::string &expected, const std::string &kept, auto into_string,
                          auto into_stream, auto keep, auto... range) {
    String text("old text");
    Stream stream("old");
    Stream itself(all);
    EXPECT_TRUE(into_string(&source, range..., &text) && into_stream(&source, range..., &stream));
    EXPECT_STREQ(text.data, expected.c_str());
    EXPECT_EQ(stream.text(), expected);
    keep(&itself, range...);
    EXPECT_EQ(itself.text(), kept);
  };
  for (int64_t n = -1; n <= 11; ++n) {
    const size_t count = static_cast<size_t>(std::clamp<int64_t>(n, 0, 10));
    const std::string left = all.substr(0, count);
    const std::string right = all.substr(10 - count);
    for (int64_t at = -1; at <= 11; ++at) {
      SCOPED_TRACE(testing::Message() << n << " at " << at);
      const std::string mid = at >= 0 && at < 10 ? all.substr(static_cast<size_t>(at), count) : "";
      expect(left, n < 0 ? all : left, mub_stream_left_string, mub_stream_left_stream, mub_stream_left, n);
      expect(right, right, mub_stream_right_string, mub_stream_right_stream, mub_stream_right, n);
      expect(mid, at < 0 ? all : mid, mub_stream_mid_string, mub_stream_mid_stream, mub_stream_mid, at, n);
    }
  }
}

TEST(Stream, ExchangesAndClonesBlocks) {
  Stream stream("stream");
  Stream other("an older content of more bytes");
  String text("a text");
  mub_stream_swap(&stream, &stream);
  mub_stream_swap(&stream, &other);
  mub_stream_swap_string(&other, &text);
  EXPECT_EQ(text.text() + other.text(), "streama text");
  EXPECT_EQ(std::pair(text.capacity, other.capacity), std::pair(int64_t{8}, int64_t{15}));

  mub_stream_shrink(&other, 4);
  mub_stream_clone(&other, &stream);
  EXPECT_EQ(stream.text() + stream.block().substr(4, 6), "a telder c") << "spare bytes stay";
  mub_stream_clone(&other, &other);
  Stream fresh;
  mub_stream_clone(&other, &fresh);
  EXPECT_EQ(fresh.text(), "a te");
  EXPECT_EQ(fresh.capacity, 16);
  mub_string abandoned = text;
  ASSERT_TRUE(mub_stream_clone_string(&fresh, &abandoned));
  EXPECT_EQ(text.text() + abandoned.data, "streama te");
  mub_string_term(&abandoned);
  EXPECT_FALSE(mub_stream_is_empty(&fresh));
  mub_stream_shrink(&fresh, 0);
  EXPECT_TRUE(mub_stream_is_empty(&fresh));
  mub_stream_term(&fresh);
  EXPECT_TRUE(mub_stream_is_empty(&fresh) && fresh.data == nullptr && fresh.capacity == 0);
}

// Every operation that grows, once its memory ran out: its target is as it was, and it says so where it can.
TEST(Stream, LeavesItsTargetsWhenMemoryRunsOut) {
  const std::string more(500, 'm');
  const Stream framed(std::string("\x90\x01\0\0", 4) + std::string(400, 'f'));
  int64_t position = 404;
  const std::vector<std::function<bool(mub_stream *, mub_string *, mub_string *)>> calls = {
      [&](auto *s, auto...) { return mub_stream_copy(s, more.data(), 500), s->length == 500; },
      // The stream's own bytes, too many for the copy that needs no allocation.
      [&](auto *s, auto...) { return mub_stream_append(s, s->data, 300), s->length == 600; },
      [&](auto *s, auto...) { return mub_stream_insert(s, 5, s->data, 300); },
      [&](auto *s, auto...) { return mub_stream_update(s, 5, 2, more.data(), 500); },
      [&](auto *s, auto...) { return mub_stream_clone(&framed, s), s->length == 404; },
      [&](auto *s, auto...) { return mub_stream_get_stream(&framed, &(position = 0), s), s->length == 400; },
      [&](auto *, auto *text, auto *) { return mub_stream_right_string(&framed, 399, text); },
      [&](auto *, auto *, auto *out) { return mub_stream_clone_string(&framed, out) && out->length == 404; },
  };
  for (size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "call " << i);
    for_every_allocation([&](const Fuse &fuse) {
      Stream stream(std::string(300, 'o'));
      String text("text");
      String fresh;
      bool done = false;
      const bool blown = fuse.blows_in([&] { done = calls[i](&stream, &text, &fresh); });
      EXPECT_NE(done, blown);
      EXPECT_EQ(position, 404) << "it moves on all the same";
      EXPECT_TRUE(!blown || stream.text() + text.text() + fresh.text() == std::string(300, 'o') + "text");
    });
  }
}

}  // namespace
}  // namespace mub_test
