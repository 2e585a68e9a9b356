// Splitting a text into the pieces between its separators, and joining pieces into one text.
#ifndef MUB_BYTES_TEXT_PIECES_H
#define MUB_BYTES_TEXT_PIECES_H

#include <cstdint>

#include "bytes/bytes.h"
#include "bytes/number_text.h"
#include "bytes/text_span.h"
#include "bytes/unit_buffer.h"

namespace mub::pieces {

// Calls take(piece, length) for each piece, trimmed of white space, until it returns false. Returns whether
// it took all of them. Empty pieces count, except for an empty last one.
template <class Take>
bool for_each(const char *text, int64_t length, int separator, Take take) {
  while (text != nullptr && length > 0) {
    const int64_t found = bytes::chr(text, length, separator);
    const bool last = found < 0;
    const span::Trimmed piece = span::trimmed(text, last ? length : found);
    if (last) return piece.length == 0 || take(text + piece.start, piece.length);
    if (!take(text + piece.start, piece.length)) return false;
    text += found + 1;
    length -= found + 1;
  }
  return true;
}

// The same with each piece parsed as an integer; an empty piece is 0.
template <class Take>
bool for_each_integer(const char *text, int64_t length, int separator, Take take) {
  return for_each(text, length, separator, [take](const char *piece, int64_t piece_length) {
    return take(number::parse_integer(piece, piece_length).value);
  });
}

// A piece to be written, with the interface of number::IntegerText.
struct BytesText {
  const void *bytes;
  int64_t size;
  int64_t length() const { return size; }
  void write(char *to) const { bytes::move(to, bytes, size); }
};

// The length of a joined text, and the capacity of a string to which the pieces were appended one at a time.
struct Extent {
  int64_t capacity;
  int64_t length = 0;

  void reserve(int64_t wanted) {
    if (wanted > capacity) capacity = buffer::grown_capacity<mub_string>(length, capacity, wanted);
  }
  void append(int64_t added) {
    if (length > kMaxUnits / 2) return;  // GCOVR_EXCL_BR_LINE: avoids overflow; no machine has so much memory
    reserve(length + added);
    length += added;
  }
};

// Makes `out` hold the pieces that walk(visit) visits, with separators between them. If memory runs out,
// `out` keeps what it held; so the total growth, first to `room` and then piece by piece, is computed in
// advance. Leading empty pieces leave no trace, because no separator is put before the first character.
template <class Walk>
void join(mub_string &out, int64_t room, int separator, Walk walk) {
  Extent extent = {out.capacity};
  extent.reserve(room);
  walk([&extent](const auto &piece) {
    if (extent.length > 0) extent.append(1);
    extent.append(piece.length());
  });
  if (extent.capacity > out.capacity && !buffer::regrow(out, extent.capacity)) return;
  int64_t length = 0;
  walk([&out, &length, separator](const auto &piece) {
    if (length > 0) out.data[length++] = static_cast<char>(separator);
    piece.write(out.data + length);
    length += piece.length();
  });
  buffer::shrink(out, length);
}

}  // namespace mub::pieces

#endif
