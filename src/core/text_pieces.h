// Texts that hold several pieces with a separator between each two, read and written.
#ifndef MUB_CORE_TEXT_PIECES_H
#define MUB_CORE_TEXT_PIECES_H

#include <cstdint>

#include "core/bytes.h"
#include "core/text_span.h"
#include "core/unit_buffer.h"

namespace mub::pieces {

// Calls take(piece, length) with each piece, white space around it cut off. Empty ones count, but for the last.
template <class Take>
void for_each(const char *text, int64_t length, int separator, Take take) {
  while (text != nullptr && length > 0) {
    const int64_t found = bytes::chr(text, length, separator);
    const bool last = found < 0;
    const span::Trimmed piece = span::trimmed(text, last ? length : found);
    if (!last || piece.length > 0) take(text + piece.start, piece.length);
    if (last) return;
    text += found + 1;
    length -= found + 1;
  }
}

// Empties `out` and makes room for a text; false when memory runs out, `out` then unchanged.
inline bool begin(mub_string &out, int64_t room) {
  const int64_t old_length = out.length;
  out.length = 0;  // Growth goes by the length of the text to come, not of the one to go.
  const bool has_room = buffer::expand(out, room);
  buffer::shrink(out, has_room ? 0 : old_length);
  return has_room;
}

// Puts a separator behind what is there; empty pieces at the front thus leave no trace.
inline void separate(mub_string &out, int separator) {
  const char unit = static_cast<char>(separator);
  if (!buffer::is_empty(out)) buffer::append(out, &unit, 1);
}

}  // namespace mub::pieces

#endif
