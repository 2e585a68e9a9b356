// The packed integers. The highest bit of a value determines the length of its field, and the first byte of a
// field the number of bytes that follow; these are loaded, and computed, as one word.
//
//   word     0xxxxxxx    1xxxxxxx xxxxxxxx           a tag of 1 bit, then the value, highest byte first
//   dword    nnxxxxxx …                              a tag of 2 bits: n bytes follow, highest byte first
//   lword    1…10x…xx [1 byte] [2 bytes] [4 bytes]   as many ones as bytes follow; any of the groups, or one
//                                                    of 8 bytes, the highest bits first, each little-endian
//
// Invariants:
//   1. A value has one field in each format, the shortest that holds it; 15, 30 or 64 bits fit.
//   2. A field is written wholly, inside the content, or not at all.
//   3. Readers may read spare bytes, but never past the capacity; the result of reading an lword does not
//      depend on them.
//   4. Writing a word or dword advances the position in any case, writing an lword only if it is stored. At
//      or past the end of the content, reading does not advance it; before the content, it advances by 1;
//      reading an lword that is cut short advances it by 1.
//
// Threads: reading writes nothing but the caller's position.
#include <algorithm>

#include "bytes/unit_buffer.h"
#include "mub_stream.h"
#include "stream/cursor.h"

namespace mub {
namespace {

// The number of significant bits; 1 for 0.
int bit_width(uint64_t value) { return 64 - __builtin_clzll(value | 1); }

// Words and dwords: the tag, in the highest bits, is the number of bytes that follow the first one.
template <int kTagBits>
struct TaggedFormat {
  static constexpr int kMaxBytes = 1 << kTagBits;

  static int length_of(uint32_t value) { return std::min((bit_width(value) + kTagBits + 7) / 8, kMaxBytes); }

  static void write(mub_stream &stream, int64_t *position, uint32_t value) {
    const int count = length_of(value);
    const int64_t at = cursor::advance(position, count);
    if (cursor::bytes_left(stream, at) < count) return;
    const int field_bits = 8 * count;
    // The highest bits of a value that does not fit are lost in the tag, which then has all bits set.
    const uint32_t field = value | static_cast<uint32_t>(count - 1) << (field_bits - kTagBits);
    store_little(stream.data + at, count, __builtin_bswap32(field) >> (32 - field_bits));
  }

  static uint32_t read(const mub_stream &stream, int64_t *position) {
    if (*position >= stream.length) return 0;
    const uint32_t widest = load_padded(stream, *position);
    const int count = static_cast<int>(widest >> (32 - kTagBits)) + 1;
    cursor::advance(position, count);
    return (widest << kTagBits >> kTagBits) >> (32 - 8 * count);
  }

 private:
  // Four bytes, the highest first. Spare bytes are read as well; bytes at or past the capacity, and all bytes
  // at a negative position, read as 0.
  static uint32_t load_padded(const mub_stream &stream, int64_t at) {
    if (at >= 0 && stream.capacity - at >= 4) {
      return __builtin_bswap32(static_cast<uint32_t>(load_little<4>(stream.data + at)));
    }
    uint32_t field = 0;
    for (int i = 0; i < 4; ++i) {
      const bool inside = at >= 0 && stream.capacity - at > i;
      field = field << 8 | (inside ? stream.data[at + i] : 0u);
    }
    return field;
  }
};

using PackedWord = TaggedFormat<1>;
using PackedDword = TaggedFormat<2>;

// The branch predictor cannot predict random lengths, so few branches depend on them: writing an lword tells
// one and two bytes from more, and reading one tells a single byte from more.

// The number of bytes after the first one: 0 for up to 7 bits, 1 for 14, … 7 for 56, and 8 above.
int lword_extra_bytes(uint64_t value) { return (9 * bit_width(value) - 1) / 64; }

// The masks of the lowest 0 to 3, 4 and 8 bytes of a word; the others are not used.
constexpr uint64_t kLowBytes[] = {0, 0xFF, 0xFFFF, 0xFFFFFF, 0xFFFFFFFF, 0, 0, 0, UINT64_MAX};

// Up to three bytes. Three are rotated to the left by `left` bytes, where `right` is 3 - `left`; fewer are
// returned as they are.
uint64_t rotated(uint64_t bytes, int count, int left, int right) {
  const int is_three = static_cast<int>(count == 3);
  return (bytes << (8 * left * is_three) | bytes >> (8 * right * is_three)) & 0xFFFFFF;
}

// The bytes after the first one of an lword, as one little-endian word; higher bytes are unspecified. If
// there are 4 to 7, the last four are the low 32 bits of the value, little-endian. The up to three bytes
// before these, or of a shorter field, are little-endian too, except that the highest of three comes first.
uint64_t swapped_groups(uint64_t value, int extra) {
  const int high_bytes = extra & 3;
  const uint64_t high = value >> (8 * (extra & 4)) & kLowBytes[high_bytes];
  const uint64_t low = value << (8 * high_bytes);
  return rotated(high, high_bytes, 1, 2) | low;
}

uint64_t restored_groups(uint64_t groups, int extra) {
  const int high_bytes = extra & 3;
  const uint64_t high = rotated(groups & kLowBytes[high_bytes], high_bytes, 2, 1);
  const uint64_t low = groups >> (8 * high_bytes) & kLowBytes[extra & ~3];
  return high << (8 * (extra & 4)) | low;
}

// The first byte: as many ones as bytes follow, a zero unless these are eight, and the value's bits above
// those bytes.
uint64_t lword_head(uint64_t value, int extra) {
  return (0xFF00u >> extra & 0xFF) | value >> (4 * extra) >> (4 * extra);
}

// One or two bytes. The first one is stored twice if it is the only one.
void store_short(uint8_t *field, uint64_t value, int extra) {
  field[0] = static_cast<uint8_t>(0x80 | value >> 8);
  field[extra] = static_cast<uint8_t>(value);
}

// Three to nine bytes: the last one by itself, and the others, at most eight, as four words of two bytes,
// which may overlap.
void store_long(uint8_t *field, uint64_t value, int extra) {
  static constexpr uint8_t kPlaces[7][4] = {{0, 0, 1, 1}, {0, 1, 2, 2}, {0, 1, 2, 3}, {0, 2, 2, 4},
                                            {0, 2, 3, 5}, {0, 2, 4, 6}, {0, 2, 4, 6}};
  const uint64_t groups = swapped_groups(value, extra);
  const uint64_t first8 = lword_head(value, extra) | groups << 8;
  const uint8_t *places = kPlaces[extra - 2];
  const auto store = [=](int place) { store_little<2>(field + place, first8 >> (8 * place)); };
  store(places[0]);
  store(places[1]);
  store(places[2]);
  store(places[3]);
  field[extra] = static_cast<uint8_t>(groups >> (8 * extra - 8));
}

void write_lword(mub_stream &stream, int64_t *position, uint64_t value) {
  const int64_t left = cursor::bytes_left(stream, *position);
  if (value < 0x4000) {
    const int extra = static_cast<int>(value >= 0x80);
    if (left > extra) store_short(stream.data + cursor::advance(position, extra + 1), value, extra);
    return;
  }
  const int extra = lword_extra_bytes(value);
  if (left > extra) store_long(stream.data + cursor::advance(position, extra + 1), value, extra);
}

int64_t read_lword(const mub_stream &stream, int64_t *position) {
  const int64_t at = *position;
  if (at >= stream.length) return -1;
  const auto head = static_cast<uint32_t>(cursor::read<1>(stream, position));
  if (head < 0x80) return head;
  const int extra = __builtin_clz(~(head << 24));
  if (cursor::bytes_left(stream, at) <= extra) return -1;
  cursor::advance(position, extra);
  const uint8_t *field = stream.data + at + 1;
  const uint64_t groups = stream.capacity - at >= 9 ? load_little<8>(field) : load_little(field, extra);
  const uint64_t top = uint64_t{head & (0x7F >> extra)} << (4 * extra) << (4 * extra);
  return static_cast<int64_t>(top | restored_groups(groups, extra));
}

}  // namespace
}  // namespace mub

extern "C" {

int mub_stream_deflate_word_length(uint32_t value) { return mub::PackedWord::length_of(value & 0xFFFF); }

void mub_stream_deflate_word(mub_stream *stream, int64_t *position, uint32_t value) {
  mub::PackedWord::write(*stream, position, value & 0xFFFF);
}

uint16_t mub_stream_inflate_word(const mub_stream *stream, int64_t *position) {
  return static_cast<uint16_t>(mub::PackedWord::read(*stream, position));
}

int mub_stream_deflate_dword_length(uint32_t value) { return mub::PackedDword::length_of(value); }

void mub_stream_deflate_dword(mub_stream *stream, int64_t *position, uint32_t value) {
  mub::PackedDword::write(*stream, position, value);
}

uint32_t mub_stream_inflate_dword(const mub_stream *stream, int64_t *position) {
  return mub::PackedDword::read(*stream, position);
}

int mub_stream_deflate_lword_length(uint64_t value) { return mub::lword_extra_bytes(value) + 1; }

void mub_stream_deflate_lword(mub_stream *stream, int64_t *position, uint64_t value) {
  mub::write_lword(*stream, position, value);
}

int64_t mub_stream_inflate_lword(const mub_stream *stream, int64_t *position) {
  return mub::read_lword(*stream, position);
}

}  // extern "C"
