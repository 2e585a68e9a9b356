#include "mub_stream.h"

#include <algorithm>

#include "bytes/bytes.h"
#include "bytes/text_span.h"
#include "bytes/unit_buffer.h"
#include "stream/cursor.h"

namespace mub {
namespace {

// Writes as many bytes as fit before the stream's length; `bytes` may lie in the stream.
void write_clipped(mub_stream &stream, int64_t at, const void *bytes, int64_t count) {
  const int64_t fitting = std::min(count, cursor::bytes_left(stream, at));
  if (fitting > 0 && bytes != nullptr) buffer::move_units(stream.data + at, bytes, fitting);
}

// The body is written first: it may be the stream's own content, which the prefix would change.
template <int kPrefixBytes, class Source>
int64_t write_block(mub_stream &stream, int64_t *position, const Source &source) {
  const int64_t count = source.length;
  int64_t body = *position;
  cursor::advance(&body, kPrefixBytes);
  write_clipped(stream, body, source.data, count);
  cursor::write<kPrefixBytes>(stream, position, static_cast<uint64_t>(count));
  cursor::advance(position, count);
  return *position;
}

template <int kPrefixBytes, class Out>
int64_t read_block(const mub_stream &stream, int64_t *position, Out &out) {
  const auto count = static_cast<int64_t>(cursor::read<kPrefixBytes>(stream, position));
  const int64_t at = cursor::advance(position, count);
  const int64_t available = std::min(count, cursor::bytes_left(stream, at));
  if (available > 0)
    buffer::extract(stream, at, available, out);
  else
    buffer::extract_nothing(out);
  return *position;
}

int64_t find(const mub_stream &stream, int byte, int64_t start) {
  return span::find_unit(reinterpret_cast<const char *>(stream.data), stream.length, byte, start);
}

}  // namespace
}  // namespace mub

extern "C" {

void mub_stream_init(mub_stream *stream) { mub::buffer::init(*stream); }

void mub_stream_term(mub_stream *stream) { mub::buffer::term(*stream); }

int mub_stream_is_empty(const mub_stream *stream) { return mub::buffer::is_empty(*stream); }

void mub_stream_zero(mub_stream *stream, int64_t offset, int64_t count) {
  mub::buffer::zero(*stream, offset, count);
}

int mub_stream_expand(mub_stream *stream, int64_t size) { return mub::buffer::expand(*stream, size); }

void mub_stream_shrink(mub_stream *stream, int64_t length) { mub::buffer::shrink(*stream, length); }

void mub_stream_swap(mub_stream *a, mub_stream *b) { mub::buffer::swap(*a, *b); }

void mub_stream_swap_string(mub_stream *stream, mub_string *string) { mub::buffer::swap(*stream, *string); }

void mub_stream_clone(const mub_stream *source, mub_stream *destination) {
  mub::buffer::clone(*source, *destination);
}

int mub_stream_verify(const mub_stream *stream, const char **what) {
  return mub::report(mub::buffer::verify(*stream), what);
}

int64_t mub_stream_memory_bytes(const mub_stream *stream) { return mub::buffer::memory_bytes(*stream); }

int mub_stream_clone_string(const mub_stream *source, mub_string *destination) {
  mub::buffer::init(*destination);
  return mub::buffer::clone(*source, *destination);
}

void mub_stream_copy(mub_stream *stream, const void *bytes, int64_t count) {
  mub::buffer::copy(*stream, bytes, mub::measured(bytes, count));
}

void mub_stream_append(mub_stream *stream, const void *bytes, int64_t count) {
  if (bytes != nullptr) mub::buffer::append(*stream, bytes, mub::measured(bytes, count));
}

uint8_t mub_stream_get_at(const mub_stream *stream, int64_t index) {
  return mub::buffer::holds(*stream, index) ? stream->data[index] : 0;
}

void mub_stream_set_at(mub_stream *stream, int64_t index, int byte) {
  if (mub::buffer::holds(*stream, index)) stream->data[index] = static_cast<uint8_t>(byte);
}

uint8_t mub_stream_get_byte(const mub_stream *stream, int64_t *position) {
  return static_cast<uint8_t>(mub::cursor::read<1>(*stream, position));
}

uint16_t mub_stream_get_word(const mub_stream *stream, int64_t *position) {
  return static_cast<uint16_t>(mub::cursor::read<2>(*stream, position));
}

uint32_t mub_stream_get_tword(const mub_stream *stream, int64_t *position) {
  return static_cast<uint32_t>(mub::cursor::read<3>(*stream, position));
}

uint32_t mub_stream_get_dword(const mub_stream *stream, int64_t *position) {
  return static_cast<uint32_t>(mub::cursor::read<4>(*stream, position));
}

uint64_t mub_stream_get_xword(const mub_stream *stream, int64_t *position) {
  return mub::cursor::read<6>(*stream, position);
}

int64_t mub_stream_get_lword(const mub_stream *stream, int64_t *position) {
  return static_cast<int64_t>(mub::cursor::read<8>(*stream, position));
}

void mub_stream_set_byte(mub_stream *stream, int64_t *position, uint32_t value) {
  mub::cursor::write<1>(*stream, position, value);
}

void mub_stream_set_word(mub_stream *stream, int64_t *position, uint32_t value) {
  mub::cursor::write<2>(*stream, position, value);
}

void mub_stream_set_tword(mub_stream *stream, int64_t *position, uint32_t value) {
  mub::cursor::write<3>(*stream, position, value);
}

void mub_stream_set_dword(mub_stream *stream, int64_t *position, uint32_t value) {
  mub::cursor::write<4>(*stream, position, value);
}

void mub_stream_set_xword(mub_stream *stream, int64_t *position, uint64_t value) {
  mub::cursor::write<6>(*stream, position, value);
}

void mub_stream_set_lword(mub_stream *stream, int64_t *position, int64_t value) {
  mub::cursor::write<8>(*stream, position, static_cast<uint64_t>(value));
}

int64_t mub_stream_set_string(mub_stream *stream, int64_t *position, const mub_string *string) {
  return mub::write_block<2>(*stream, position, *string);
}

int64_t mub_stream_get_string(const mub_stream *stream, int64_t *position, mub_string *string) {
  return mub::read_block<2>(*stream, position, *string);
}

int64_t mub_stream_set_stream(mub_stream *stream, int64_t *position, const mub_stream *source) {
  return mub::write_block<4>(*stream, position, *source);
}

int64_t mub_stream_get_stream(const mub_stream *stream, int64_t *position, mub_stream *destination) {
  return mub::read_block<4>(*stream, position, *destination);
}

void mub_stream_set_buffer(mub_stream *stream, int64_t *position, const void *bytes, int64_t count) {
  mub::write_clipped(*stream, mub::cursor::advance(position, count), bytes, count);
}

int64_t mub_stream_get_buffer(const mub_stream *stream, int64_t *position, uint8_t **bytes, int64_t *count) {
  const int64_t at = mub::cursor::advance(position, *count);
  const int64_t available = mub::cursor::bytes_left(*stream, at);
  *bytes = available > 0 ? stream->data + at : nullptr;
  *count = available > 0 ? std::min(*count, available) : 0;
  return *position;
}

int64_t mub_stream_find(const mub_stream *stream, int byte) { return mub::find(*stream, byte, 0); }

int64_t mub_stream_find_pos(const mub_stream *stream, int byte, int64_t start) {
  return mub::find(*stream, byte, start);
}

int mub_stream_insert(mub_stream *stream, int64_t position, const void *bytes, int64_t count) {
  return mub::buffer::insert(*stream, position, bytes, mub::measured(bytes, count));
}

int mub_stream_update(mub_stream *stream, int64_t position, int64_t old_count, const void *bytes,
                      int64_t new_count) {
  return mub::buffer::update(*stream, position, old_count, bytes,
                             bytes == nullptr ? new_count : mub::measured(bytes, new_count));
}

void mub_stream_delete(mub_stream *stream, int64_t position, int64_t count) {
  if (position < 0 || count < 0 || count > stream->length - position) return;
  const int64_t tail = stream->length - position - count;
  mub::buffer::move_units(stream->data + position, stream->data + position + count, tail);
  stream->length -= count;
}

void mub_stream_left(mub_stream *stream, int64_t n) { mub::buffer::left(*stream, n); }

void mub_stream_right(mub_stream *stream, int64_t n) { mub::buffer::right(*stream, n); }

void mub_stream_mid(mub_stream *stream, int64_t start, int64_t n) { mub::buffer::mid(*stream, start, n); }

int mub_stream_left_string(const mub_stream *source, int64_t n, mub_string *destination) {
  return mub::buffer::left_into(*source, n, *destination);
}

int mub_stream_left_stream(const mub_stream *source, int64_t n, mub_stream *destination) {
  return mub::buffer::left_into(*source, n, *destination);
}

int mub_stream_right_string(const mub_stream *source, int64_t n, mub_string *destination) {
  return mub::buffer::right_into(*source, n, *destination);
}

int mub_stream_right_stream(const mub_stream *source, int64_t n, mub_stream *destination) {
  return mub::buffer::right_into(*source, n, *destination);
}

int mub_stream_mid_string(const mub_stream *source, int64_t start, int64_t n, mub_string *destination) {
  return mub::buffer::mid_into(*source, start, n, *destination);
}

int mub_stream_mid_stream(const mub_stream *source, int64_t start, int64_t n, mub_stream *destination) {
  return mub::buffer::mid_into(*source, start, n, *destination);
}

}  // extern "C"
