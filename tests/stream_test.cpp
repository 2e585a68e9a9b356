#include "mub_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "support/fuse.h"
#include "support/random.h"
#include "support/stream_records.h"

namespace {

using mub_test::Fuse;
using mub_test::Random;
using mub_test::size_of;
using mub_test::Stream;
using mub_test::String;

TEST(Stream, GrowsByHalfItsLengthInMultiplesOfEight) {
  struct Growth {
    int64_t length, wanted, capacity;
  };
  constexpr int64_t k16Mi = 0x1000000;
  for (const Growth &growth : std::vector<Growth>{{0, 0, 0},
                                                  {0, -5, 0},
                                                  {0, 1, 8},
                                                  {0, 8, 8},
                                                  {0, 9, 16},
                                                  {0, 100, 104},
                                                  {8, 9, 16},
                                                  {16, 17, 24},
                                                  {24, 25, 40},
                                                  {1000, 1001, 1504},
                                                  {1000, 4000, 4000},
                                                  {k16Mi, k16Mi + 1, k16Mi + 0x800000},
                                                  {2 * k16Mi, 2 * k16Mi + 1, 2 * k16Mi + 0x800000}}) {
    SCOPED_TRACE(testing::Message() << growth.length << " to " << growth.wanted);
    Stream stream;
    ASSERT_TRUE(mub_stream_expand(&stream, growth.length));
    mub_stream_shrink(&stream, growth.length);
    ASSERT_TRUE(mub_stream_expand(&stream, growth.wanted));
    EXPECT_EQ(stream.capacity, growth.capacity);
    EXPECT_EQ(stream.length, growth.length);
  }
}

TEST(Stream, GrowthKeepsTheSpareBytesAndClearsTheNewOnes) {
  Stream stream("0123456789abcdef");
  mub_stream_shrink(&stream, 3);
  // From a short length the step is small, whatever the capacity.
  ASSERT_TRUE(mub_stream_expand(&stream, 17));
  EXPECT_EQ(stream.capacity, 24);
  EXPECT_EQ(stream.block(), std::string("0123456789abcdef") + std::string(9, '\0'));
  mub_stream_shrink(&stream, 100);
  EXPECT_EQ(stream.length, 24);
  mub_stream_shrink(&stream, -1);
  EXPECT_EQ(stream.length, 24);
}

TEST(Stream, RefusesSizesThatNoHeapHas) {
  Stream stream("abc");
  const std::string before = stream.block();
  for (const int64_t size : {INT64_MAX, INT64_MAX - 1, INT64_MAX - 64, INT64_MAX / 2}) {
    EXPECT_FALSE(mub_stream_expand(&stream, size)) << size;
    EXPECT_FALSE(mub_stream_insert(&stream, 0, "x", size)) << size;
    mub_stream_append(&stream, "x", size);
    mub_stream_copy(&stream, "x", size);
  }
  EXPECT_EQ(stream.content(), "abc");
  EXPECT_EQ(stream.block(), before);
}

// Edits at random places, some of them outside, of a stream and of a std::string.
class Model {
 public:
  explicit Model(Random &random) : random_(random) {}

  void step() {
    // Sometimes the bytes are the stream's own, and must count as copied before anything moves.
    const bool own = !model_.empty() && random_.one_in(3);
    own_at_ = own ? static_cast<size_t>(random_.below(size_of(model_))) : 0;
    bytes_ = own ? model_.substr(own_at_, static_cast<size_t>(random_.below(300)))
                 : random_.text(random_.below(40) * random_.below(8));
    source_ = own ? reinterpret_cast<const char *>(stream_.data) + own_at_ : bytes_.data();
    position_ = random_.below(size_of(model_) + 3) - 1;
    count_ = random_.below(random_.one_in(2) ? 8 : 200) - 1;
    edit(random_.below(9));
    ASSERT_EQ(stream_.content(), model_);
    ASSERT_GE(stream_.capacity, stream_.length);
    if (stream_.data != nullptr) {
      ASSERT_EQ(stream_.data[stream_.capacity], 0);
    }
  }

 private:
  void edit(int64_t operation) {
    const auto at = static_cast<size_t>(std::max<int64_t>(position_, 0));
    const auto count = static_cast<size_t>(std::max<int64_t>(count_, 0));
    const bool inside = position_ >= 0 && position_ <= size_of(model_);
    switch (operation) {
      case 0:
        mub_stream_append(&stream_, source_, size_of(bytes_));
        model_ += bytes_;
        break;
      case 1:
        EXPECT_EQ(mub_stream_insert(&stream_, position_, source_, size_of(bytes_)),
                  inside && !bytes_.empty());
        if (inside) model_.insert(at, bytes_);
        break;
      case 2: {
        // Ranges that end inside; those that do not have a test of their own.
        const bool good = inside && count_ >= 0 && count_ <= size_of(model_) - position_;
        if (inside && count_ >= 0 && !good) break;
        EXPECT_EQ(mub_stream_update(&stream_, position_, count_, source_, size_of(bytes_)), good);
        if (good) model_.replace(at, count, bytes_);
        break;
      }
      case 3:
        mub_stream_delete(&stream_, position_, count_);
        if (inside && count_ >= 0 && count_ <= size_of(model_) - position_) model_.erase(at, count);
        break;
      case 4:
        if (!random_.one_in(10)) break;
        mub_stream_copy(&stream_, source_, size_of(bytes_));
        model_ = bytes_;
        break;
      case 5:
        if (!random_.one_in(10)) break;
        mub_stream_left(&stream_, count_);
        if (count_ >= 0) model_ = model_.substr(0, count);
        break;
      case 6:
        if (!random_.one_in(10)) break;
        mub_stream_right(&stream_, count_);
        model_ = model_.substr(model_.size() - std::min(count, model_.size()));
        break;
      case 7:
        if (!random_.one_in(10)) break;
        mub_stream_mid(&stream_, position_, count_);
        if (position_ >= 0) model_ = at < model_.size() ? model_.substr(at, count) : "";
        break;
      default:
        const size_t found = position_ >= 0 ? model_.find('b', at) : std::string::npos;
        EXPECT_EQ(mub_stream_find_pos(&stream_, 'b', position_),
                  found == std::string::npos ? -1 : static_cast<int64_t>(found));
        break;
    }
  }

  Random &random_;
  Stream stream_;
  std::string model_;
  std::string bytes_;
  const char *source_ = nullptr;
  size_t own_at_ = 0;
  int64_t position_ = 0;
  int64_t count_ = 0;
};

TEST(Stream, EditsAsAStringWould) {
  Random random(1);
  for (int round = 0; round < 20; ++round) {
    Model model(random);
    for (int step = 0; step < 500; ++step) ASSERT_NO_FATAL_FAILURE(model.step());
  }
}

TEST(Stream, UpdatesMayReachBehindTheContent) {
  struct Update {
    int64_t position, old_count;
    std::string bytes;
    int result;
    std::string content;
  };
  // The length changes by the difference of the counts; spare bytes come in, new bytes that lie outside are lost.
  for (const Update &update : std::vector<Update>{
           {4, 4, "XY", 1, "0123"},
           {6, 4, "XY", 1, "0123"},
           {6, 2, "XYZ", 1, "012345X"},
           {6, 4, "XYZW", 1, "012345"},
           {5, 3, "XYZ", 1, "01234X"},
           {0, 9, "XY", 0, "012345"},
           {6, 6, "", 1, ""},
           {7, 0, "XY", 0, "012345"},
           {-1, 0, "XY", 0, "012345"},
           {0, -1, "XY", 0, "012345"},
       }) {
    SCOPED_TRACE(testing::Message() << update.old_count << " at " << update.position);
    Stream stream("012345");
    EXPECT_EQ(mub_stream_update(&stream, update.position, update.old_count, update.bytes.data(),
                                size_of(update.bytes)),
              update.result);
    EXPECT_EQ(stream.content(), update.content);
  }
}

TEST(Stream, MeasuresTextsAndRefusesMissingOnes) {
  Stream stream;
  mub_stream_copy(&stream, "ab\0cd", -1);
  mub_stream_append(&stream, "ef", -7);
  EXPECT_TRUE(mub_stream_insert(&stream, 1, "__", -1));
  EXPECT_TRUE(mub_stream_update(&stream, 0, 1, "AA", -1));
  EXPECT_EQ(stream.content(), "AA__bef");
  EXPECT_FALSE(mub_stream_insert(&stream, 0, nullptr, 3));
  EXPECT_FALSE(mub_stream_insert(&stream, 0, nullptr, -1));
  EXPECT_FALSE(mub_stream_update(&stream, 0, 1, nullptr, 3));
  EXPECT_FALSE(mub_stream_update(&stream, 0, 1, nullptr, -1));
  mub_stream_append(&stream, nullptr, 3);
  EXPECT_EQ(stream.content(), "AA__bef");
  EXPECT_TRUE(mub_stream_update(&stream, 0, 4, nullptr, 0));
  EXPECT_EQ(stream.content(), "bef");
  mub_stream_copy(&stream, nullptr, 3);
  EXPECT_TRUE(mub_stream_is_empty(&stream));
}

TEST(Stream, DeletesNothingThatRunsPastTheContent) {
  Stream stream("012345");
  for (const auto &[position, count] : std::vector<std::pair<int64_t, int64_t>>{
           {4, 5}, {4, 3}, {7, 0}, {-1, 2}, {2, -1}, {INT64_MAX, INT64_MAX}, {4, INT64_MAX}}) {
    mub_stream_delete(&stream, position, count);
    EXPECT_EQ(stream.content(), "012345") << position << ", " << count;
  }
  mub_stream_delete(&stream, 4, 2);
  EXPECT_EQ(stream.content(), "0123");
}

TEST(Stream, IndexesAreBoundedByTheCapacity) {
  Stream stream("0123456789");
  mub_stream_shrink(&stream, 3);
  EXPECT_EQ(mub_stream_get_at(&stream, 7), '7');
  EXPECT_EQ(mub_stream_get_at(&stream, -1), 0);
  mub_stream_set_at(&stream, 15, 0x1FF);
  EXPECT_EQ(mub_stream_get_at(&stream, 15), 0xFF);
  mub_stream_set_at(&stream, 16, 'x');
  mub_stream_set_at(&stream, -1, 'x');
  EXPECT_EQ(stream.data[16], 0);

  mub_stream_zero(&stream, 9, 7);
  EXPECT_EQ(stream.block(), "012345678" + std::string(8, '\0'));
  const std::string before = stream.block();
  mub_stream_zero(&stream, 9, 8);
  mub_stream_zero(&stream, -1, 3);
  mub_stream_zero(&stream, 3, -1);
  mub_stream_zero(&stream, 3, INT64_MAX);
  EXPECT_EQ(stream.block(), before);
}

TEST(Stream, NeverFindsAZero) {
  Stream stream(std::string("ab\0cb", 5));
  EXPECT_EQ(mub_stream_find(&stream, 0), -1);
  EXPECT_EQ(mub_stream_find(&stream, 0x100), -1);
  EXPECT_EQ(mub_stream_find(&stream, 'c'), 3);
  EXPECT_EQ(mub_stream_find(&stream, 0x100 + 'b'), 1);
  EXPECT_EQ(mub_stream_find_pos(&stream, 'b', 2), 4);
  for (const int64_t start : {int64_t{-1}, int64_t{5}, INT64_MAX}) {
    EXPECT_EQ(mub_stream_find_pos(&stream, 'b', start), -1) << start;
  }
}

// The strings and streams that are extracted into hold something before.
std::string extracted(int (*extract)(const mub_stream *, int64_t, mub_string *), const Stream &source,
                      int64_t n) {
  String text("old text");
  EXPECT_TRUE(extract(&source, n, &text));
  EXPECT_EQ(text.data[text.length], '\0');
  return text.content();
}

std::string extracted(int (*extract)(const mub_stream *, int64_t, mub_stream *), const Stream &source,
                      int64_t n) {
  Stream stream("old");
  EXPECT_TRUE(extract(&source, n, &stream));
  return stream.content();
}

TEST(StreamExtraction, AgreesWithSubstrings) {
  const Stream source("0123456789");
  const std::string all = source.content();
  for (int64_t n = -1; n <= 11; ++n) {
    SCOPED_TRACE(n);
    const size_t count = static_cast<size_t>(std::clamp<int64_t>(n, 0, 10));
    EXPECT_EQ(extracted(mub_stream_left_string, source, n), all.substr(0, count));
    EXPECT_EQ(extracted(mub_stream_left_stream, source, n), all.substr(0, count));
    EXPECT_EQ(extracted(mub_stream_right_string, source, n), all.substr(10 - count));
    EXPECT_EQ(extracted(mub_stream_right_stream, source, n), all.substr(10 - count));
    for (int64_t start = -1; start <= 11; ++start) {
      SCOPED_TRACE(start);
      const bool inside = start >= 0 && start < 10;
      const std::string expected = inside ? all.substr(static_cast<size_t>(start), count) : "";
      String text("old text");
      EXPECT_TRUE(mub_stream_mid_string(&source, start, n, &text));
      EXPECT_EQ(text.content(), expected);
      Stream itself(all);
      EXPECT_TRUE(mub_stream_mid_stream(&itself, start, n, &itself));
      EXPECT_EQ(itself.content(), expected);
    }
  }
}

TEST(Stream, ExchangesBlocksWithStringsAndStreams) {
  Stream stream("stream");
  Stream other("other");
  String text("text");
  const uint8_t *block = stream.data;
  mub_stream_swap(&stream, &stream);
  EXPECT_EQ(stream.content(), "stream");
  mub_stream_swap(&stream, &other);
  EXPECT_EQ(other.data, block);
  mub_stream_swap_string(&other, &text);
  EXPECT_EQ(reinterpret_cast<const uint8_t *>(text.data), block);
  EXPECT_EQ(text.content(), "stream");
  EXPECT_EQ(other.content(), "text");
  EXPECT_EQ(stream.content(), "other");
}

TEST(Stream, ClonesTheCapacityToo) {
  Stream source("0123456789");
  mub_stream_shrink(&source, 4);
  Stream copy("an older content of more bytes");
  mub_stream_clone(&source, &copy);
  EXPECT_EQ(copy.content(), "0123");
  EXPECT_EQ(copy.block().substr(4, 6), "lder c") << "spare bytes stay";
  Stream fresh;
  mub_stream_clone(&source, &fresh);
  EXPECT_EQ(fresh.capacity, 16);
  mub_stream_clone(&source, &source);
  EXPECT_EQ(source.content(), "0123");

  mub_string text;
  ASSERT_TRUE(mub_stream_clone_string(&source, &text));
  EXPECT_STREQ(text.data, "0123");
  EXPECT_GE(text.capacity, 16);
  Stream owner;
  mub_stream_swap_string(&owner, &text);
}

// Every operation that grows, once its memory ran out: its target is as it was, and it says so where it can.
TEST(Stream, IsUnchangedWhenMemoryRunsOut) {
  const std::string more(500, 'm');
  const Stream source(std::string(400, 's'));
  const Stream framed(std::string("\x90\x01\0\0", 4) + std::string(400, 'f'));
  const auto holds = [](const Stream &s, int64_t length) { return s.length == length; };
  int64_t position;
  const std::function<bool(Stream &)> operations[] = {
      [&](Stream &s) { return mub_stream_expand(&s, 1000); },
      [&](Stream &s) { return mub_stream_copy(&s, more.data(), 500), holds(s, 500); },
      [&](Stream &s) { return mub_stream_append(&s, more.data(), 500), holds(s, 800); },
      // The stream's own bytes, too many for the copy that needs no allocation.
      [&](Stream &s) { return mub_stream_insert(&s, 5, s.data, 300); },
      [&](Stream &s) { return mub_stream_update(&s, 5, 2, more.data(), 500); },
      [&](Stream &s) { return mub_stream_clone(&source, &s), holds(s, 400); },
      [&](Stream &s) { return mub_stream_mid_stream(&source, 1, 399, &s); },
      [&](Stream &s) { return mub_stream_get_stream(&framed, &(position = 0), &s), holds(s, 400); },
  };
  for (size_t i = 0; i < std::size(operations); ++i) {
    SCOPED_TRACE(testing::Message() << "operation " << i);
    mub_test::for_every_allocation([&](const Fuse &fuse) {
      Stream stream(std::string(300, 'o'));
      bool done = false;
      const bool blown = fuse.blows_in([&] { done = operations[i](stream); });
      EXPECT_NE(done, blown);
      if (blown) {
        EXPECT_EQ(stream.content(), std::string(300, 'o'));
      }
    });
  }
  EXPECT_EQ(position, 404) << "the position moves on all the same";
}

TEST(Stream, StringsAreUnchangedWhenMemoryRunsOut) {
  const Stream source(std::string("\x90\x01", 2) + std::string(400, 's'));
  mub_test::for_every_allocation([&](const Fuse &fuse) {
    String text("text");
    int64_t position = 0;
    const bool blown = fuse.blows_in([&] { mub_stream_get_string(&source, &position, &text); });
    EXPECT_EQ(text.content(), blown ? "text" : std::string(400, 's'));
    EXPECT_EQ(position, 402);
  });
  mub_test::for_every_allocation([&](const Fuse &fuse) {
    String text("text");
    bool done = false;
    const bool blown = fuse.blows_in([&] { done = mub_stream_right_string(&source, 400, &text); });
    EXPECT_NE(done, blown);
    EXPECT_EQ(text.content(), blown ? "text" : std::string(400, 's'));
  });
  mub_test::for_every_allocation([&](const Fuse &fuse) {
    mub_string text;
    bool done = false;
    const bool blown = fuse.blows_in([&] { done = mub_stream_clone_string(&source, &text); });
    EXPECT_NE(done, blown);
    EXPECT_EQ(text.length, blown ? 0 : 402);
    Stream owner;
    mub_stream_swap_string(&owner, &text);
  });
}

}  // namespace
