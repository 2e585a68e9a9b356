#include "mub_wchar.h"

#include "bytes/number_text.h"
#include "bytes/pinned_bytes.h"
#include "text/text_buffer.h"
#include "text/wide_units.h"

namespace mub {
namespace {

using WideOps = UnitOps<uint16_t>;

// A byte, sign-extended.
uint16_t widened(uint8_t byte) { return static_cast<uint16_t>(byte < 0x80 ? byte : 0xFF00 | byte); }

// Replaces the content from `start` on with a narrow text.
void put_widened(mub_wchar &string, int64_t start, const char *text, int64_t count) {
  int64_t length;
  if (__builtin_add_overflow(start, count, &length)) return;
  const PinnedBytes source(text, static_cast<uint64_t>(count), string.data, buffer::block_bytes(string));
  if (source.failed() || !buffer::expand(string, length)) return;
  const uint8_t *bytes = bytes::as_bytes(source.bytes());
  for (int64_t i = 0; i < count; ++i) string.data[start + i] = widened(bytes[i]);
  buffer::shrink(string, length);
}

void put_integer(mub_wchar &string, int64_t start, int64_t value) {
  const number::IntegerText text(value);
  char digits[number::IntegerText::kMaxLength];
  text.write(digits);
  put_widened(string, start, digits, text.length());
}

void put_decimal(mub_wchar &string, int64_t start, double value) {
  const number::DecimalText text(value);
  put_widened(string, start, text.data(), text.length());
}

}  // namespace
}  // namespace mub

extern "C" {

void mub_wchar_init(mub_wchar *string) { mub::buffer::init(*string); }

void mub_wchar_term(mub_wchar *string) { mub::buffer::term(*string); }

int mub_wchar_is_empty(const mub_wchar *string) { return mub::buffer::is_empty(*string); }

int mub_wchar_expand(mub_wchar *string, int64_t capacity) { return mub::buffer::expand(*string, capacity); }

void mub_wchar_shrink(mub_wchar *string, int64_t length) { mub::buffer::shrink(*string, length); }

void mub_wchar_zero(mub_wchar *string, int64_t position, int64_t count) {
  mub::buffer::zero(*string, position, count);
}

void mub_wchar_swap(mub_wchar *a, mub_wchar *b) { mub::buffer::swap(*a, *b); }

int mub_wchar_clone(const mub_wchar *source, mub_wchar *destination) {
  return mub::buffer::clone(*source, *destination);
}

int mub_wchar_verify(const mub_wchar *string, const char **what) {
  return mub::report(mub::buffer::verify(*string), what);
}

int64_t mub_wchar_memory_bytes(const mub_wchar *string) { return mub::buffer::memory_bytes(*string); }

void mub_wchar_copy(mub_wchar *string, const uint16_t *text, int64_t count) {
  mub::buffer::copy(*string, text, mub::WideOps::measured(text, count));
}

void mub_wchar_copy_str(mub_wchar *string, const char *text, int64_t count) {
  // NULL is an empty text, and needs no buffer.
  mub::put_widened(*string, 0, text, text == nullptr ? 0 : mub::measured(text, count));
}

void mub_wchar_copy_char(mub_wchar *string, int unit) { mub::text::copy_unit(*string, unit); }

void mub_wchar_copy_integer(mub_wchar *string, int64_t value) { mub::put_integer(*string, 0, value); }

void mub_wchar_copy_long(mub_wchar *string, int64_t value) { mub::put_integer(*string, 0, value); }

void mub_wchar_copy_float(mub_wchar *string, float value) {
  mub::put_decimal(*string, 0, static_cast<double>(value));
}

void mub_wchar_copy_double(mub_wchar *string, double value) { mub::put_decimal(*string, 0, value); }

void mub_wchar_append(mub_wchar *string, const uint16_t *text, int64_t count) {
  if (text != nullptr) mub::buffer::append(*string, text, mub::WideOps::measured(text, count));
}

void mub_wchar_append_str(mub_wchar *string, const char *text, int64_t count) {
  if (text != nullptr) mub::put_widened(*string, string->length, text, mub::measured(text, count));
}

void mub_wchar_append_char(mub_wchar *string, int unit) { mub::text::append_unit(*string, unit); }

void mub_wchar_append_integer(mub_wchar *string, int64_t value) {
  mub::put_integer(*string, string->length, value);
}

void mub_wchar_append_long(mub_wchar *string, int64_t value) {
  mub::put_integer(*string, string->length, value);
}

void mub_wchar_append_float(mub_wchar *string, float value) {
  mub::put_decimal(*string, string->length, static_cast<double>(value));
}

void mub_wchar_append_double(mub_wchar *string, double value) {
  mub::put_decimal(*string, string->length, value);
}

uint16_t mub_wchar_get_at(const mub_wchar *string, int64_t index) {
  return mub::buffer::holds(*string, index) ? string->data[index] : 0;
}

void mub_wchar_set_at(mub_wchar *string, int64_t index, int unit) { mub::text::set_at(*string, index, unit); }

void mub_wchar_make_lower(mub_wchar *string) {
  mub::span::fold(string->data, string->length, mub::WideOps::lower);
}

void mub_wchar_make_upper(mub_wchar *string) {
  mub::span::fold(string->data, string->length, mub::WideOps::upper);
}

int mub_wchar_compare(const mub_wchar *string, const uint16_t *text, int64_t count) {
  return mub::text::compare(string->data, string->length, text, count, mub::WideOps::compare);
}

int mub_wchar_icompare(const mub_wchar *string, const uint16_t *text, int64_t count) {
  return mub::text::compare(string->data, string->length, text, count, mub::WideOps::icompare);
}

int64_t mub_wchar_find_char(const mub_wchar *string, int unit) {
  return mub::span::find_unit(string->data, string->length, unit);
}

int64_t mub_wchar_find_char_pos(const mub_wchar *string, int unit, int64_t start) {
  return mub::span::find_unit(string->data, string->length, unit, start);
}

int64_t mub_wchar_reverse_find(const mub_wchar *string, int unit) {
  return mub::span::find_last_unit(string->data, string->length, unit);
}

int64_t mub_wchar_find(const mub_wchar *string, const uint16_t *text, int64_t count) {
  return mub::text::find(*string, text, count);
}

int64_t mub_wchar_find_pos(const mub_wchar *string, const uint16_t *text, int64_t count, int64_t start) {
  return mub::text::find(*string, text, count, start);
}

int mub_wchar_trim(mub_wchar *string) { return mub::text::trim(*string); }

int64_t mub_wchar_replace_char(mub_wchar *string, int from, int to) {
  return mub::text::replace_unit(*string, from, to);
}

int64_t mub_wchar_replace(mub_wchar *string, const uint16_t *from, const uint16_t *to) {
  return mub::text::replace(*string, from, to);
}

int mub_wchar_insert(mub_wchar *string, int64_t position, const uint16_t *text, int64_t count) {
  return mub::buffer::insert(*string, position, text, count);
}

int mub_wchar_update(mub_wchar *string, int64_t position, int64_t old_count, const uint16_t *text,
                     int64_t count) {
  return mub::text::update(*string, position, old_count, text, count);
}

void mub_wchar_delete(mub_wchar *string, int64_t position, int64_t count) {
  mub::text::remove(*string, position, count);
}

void mub_wchar_left(mub_wchar *string, int64_t count) { mub::buffer::left(*string, count); }

void mub_wchar_mid(mub_wchar *string, int64_t start, int64_t count) {
  mub::buffer::mid(*string, start, count);
}

void mub_wchar_right(mub_wchar *string, int64_t count) { mub::buffer::right(*string, count); }

int mub_wchar_left_wchar(const mub_wchar *string, int64_t count, mub_wchar *out) {
  return mub::buffer::left_into(*string, count, *out);
}

int mub_wchar_mid_wchar(const mub_wchar *string, int64_t start, int64_t count, mub_wchar *out) {
  return mub::buffer::mid_into(*string, start, count, *out);
}

int mub_wchar_right_wchar(const mub_wchar *string, int64_t count, mub_wchar *out) {
  return mub::buffer::right_into(*string, count, *out);
}

int64_t mub_wchar_chr(const uint16_t *units, int64_t length, int unit) {
  return mub::WideOps::chr(units, length, static_cast<uint16_t>(unit));
}

int64_t mub_wchar_rchr(const uint16_t *units, int64_t length, int unit) {
  return mub::WideOps::rchr(units, length, static_cast<uint16_t>(unit));
}

int64_t mub_wchar_str(const uint16_t *units, int64_t length, const uint16_t *needle, int64_t needle_length) {
  return mub::WideOps::find(units, length, needle, needle_length);
}

int mub_wchar_cmp(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length) {
  return mub::WideOps::compare(a, a_length, b, b_length);
}

int mub_wchar_icmp(const uint16_t *a, int64_t a_length, const uint16_t *b, int64_t b_length) {
  return mub::WideOps::icompare(a, a_length, b, b_length);
}
}
