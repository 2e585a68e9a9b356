#include "mub_string.h"

#include <cstdlib>

#include "bytes/number_text.h"
#include "text/text_buffer.h"

namespace mub {
namespace {

using CharOps = UnitOps<char>;

// Replaces the content from `start` on with a number.
void put_integer(mub_string &string, int64_t start, int64_t value) {
  const number::IntegerText text(value);
  const int64_t length = start + text.length();
  if (!buffer::expand(string, length)) return;
  text.write(string.data + start);
  buffer::shrink(string, length);
}

}  // namespace
}  // namespace mub

extern "C" {

void mub_string_init(mub_string *string) { mub::buffer::init(*string); }

void mub_string_term(mub_string *string) { mub::buffer::term(*string); }

int mub_string_is_empty(const mub_string *string) { return mub::buffer::is_empty(*string); }

int mub_string_expand(mub_string *string, int64_t capacity) { return mub::buffer::expand(*string, capacity); }

void mub_string_shrink(mub_string *string, int64_t length) { mub::buffer::shrink(*string, length); }

void mub_string_zero(mub_string *string, int64_t position, int64_t count) {
  mub::buffer::zero(*string, position, count);
}

void mub_string_swap(mub_string *a, mub_string *b) { mub::buffer::swap(*a, *b); }

int mub_string_clone(const mub_string *source, mub_string *destination) {
  return mub::buffer::clone(*source, *destination);
}

int mub_string_verify(const mub_string *string, const char **what) {
  return mub::report(mub::buffer::verify(*string), what);
}

int64_t mub_string_memory_bytes(const mub_string *string) { return mub::buffer::memory_bytes(*string); }

int mub_string_copy(mub_string *string, const char *text, int64_t count) {
  return mub::buffer::copy(*string, text, mub::measured(text, count));
}

void mub_string_copy_char(mub_string *string, int character) { mub::text::copy_unit(*string, character); }

void mub_string_copy_integer(mub_string *string, int64_t value) { mub::put_integer(*string, 0, value); }

void mub_string_copy_long(mub_string *string, int64_t value) { mub::put_integer(*string, 0, value); }

void mub_string_copy_float(mub_string *string, float value) {
  const mub::number::DecimalText text(static_cast<double>(value));
  mub::buffer::copy(*string, text.data(), text.length());
}

void mub_string_copy_double(mub_string *string, double value) {
  const mub::number::DecimalText text(value);
  mub::buffer::copy(*string, text.data(), text.length());
}

void mub_string_append(mub_string *string, const char *text, int64_t count) {
  if (text != nullptr) mub::buffer::append(*string, text, mub::measured(text, count));
}

void mub_string_append_char(mub_string *string, int character) { mub::text::append_unit(*string, character); }

void mub_string_append_integer(mub_string *string, int64_t value) {
  mub::put_integer(*string, string->length, value);
}

void mub_string_append_long(mub_string *string, int64_t value) {
  mub::put_integer(*string, string->length, value);
}

void mub_string_append_float(mub_string *string, float value) {
  const mub::number::DecimalText text(static_cast<double>(value));
  mub::buffer::append(*string, text.data(), text.length());
}

void mub_string_append_double(mub_string *string, double value) {
  const mub::number::DecimalText text(value);
  mub::buffer::append(*string, text.data(), text.length());
}

int64_t mub_string_get_integer(const mub_string *string, int64_t otherwise) {
  if (mub::buffer::is_empty(*string)) return otherwise;
  return static_cast<int>(std::strtol(string->data, nullptr, 10));
}

int64_t mub_string_get_long(const mub_string *string, int64_t otherwise) {
  if (mub::buffer::is_empty(*string)) return otherwise;
  return mub::number::parse_integer(string->data, string->length).value;
}

float mub_string_get_float(const mub_string *string, float otherwise) {
  if (mub::buffer::is_empty(*string)) return otherwise;
  return static_cast<float>(std::strtod(string->data, nullptr));
}

double mub_string_get_double(const mub_string *string, double otherwise) {
  if (mub::buffer::is_empty(*string)) return otherwise;
  return mub::number::parse_decimal(string->data, string->length);
}

int mub_string_get_at(const mub_string *string, int64_t index) {
  return mub::buffer::holds(*string, index) ? static_cast<signed char>(string->data[index]) : -1;
}

void mub_string_set_at(mub_string *string, int64_t index, int character) {
  mub::text::set_at(*string, index, character);
}

void mub_string_make_lower(mub_string *string) {
  mub::span::fold(string->data, string->length, mub::CharOps::lower);
}

void mub_string_make_upper(mub_string *string) {
  mub::span::fold(string->data, string->length, mub::CharOps::upper);
}

int mub_string_compare(const mub_string *string, const char *text, int64_t count) {
  return mub::text::compare(string->data, string->length, text, count, mub::CharOps::compare);
}

int mub_string_icompare(const mub_string *string, const char *text, int64_t count) {
  return mub::text::compare(string->data, string->length, text, count, mub::CharOps::icompare);
}

int64_t mub_string_find_char(const mub_string *string, int character) {
  return mub::span::find_unit(string->data, string->length, character);
}

int64_t mub_string_find_char_pos(const mub_string *string, int character, int64_t start) {
  return mub::span::find_unit(string->data, string->length, character, start);
}

int64_t mub_string_reverse_find(const mub_string *string, int character) {
  return mub::span::find_last_unit(string->data, string->length, character);
}

int64_t mub_string_find(const mub_string *string, const char *text, int64_t count) {
  return mub::text::find(*string, text, count);
}

int64_t mub_string_find_pos(const mub_string *string, const char *text, int64_t count, int64_t start) {
  return mub::text::find(*string, text, count, start);
}

int mub_string_trim(mub_string *string) { return mub::text::trim(*string); }

int64_t mub_string_replace_char(mub_string *string, int from, int to) {
  return mub::text::replace_unit(*string, from, to);
}

int64_t mub_string_replace(mub_string *string, const char *from, const char *to) {
  return mub::text::replace(*string, from, to);
}

int mub_string_insert(mub_string *string, int64_t position, const char *text, int64_t count) {
  return mub::buffer::insert(*string, position, text, mub::measured(text, count));
}

int mub_string_update(mub_string *string, int64_t position, int64_t old_count, const char *text,
                      int64_t count) {
  // Without a text, a negative count is not measured, and is refused.
  const int64_t measured = text == nullptr ? count : mub::measured(text, count);
  return mub::text::update(*string, position, old_count, text, measured);
}

void mub_string_delete(mub_string *string, int64_t position, int64_t count) {
  mub::text::remove(*string, position, count);
}

void mub_string_left(mub_string *string, int64_t count) { mub::buffer::left(*string, count); }

void mub_string_mid(mub_string *string, int64_t start, int64_t count) {
  mub::buffer::mid(*string, start, count);
}

void mub_string_right(mub_string *string, int64_t count) { mub::buffer::right(*string, count); }

int mub_string_left_string(const mub_string *string, int64_t count, mub_string *out) {
  return mub::buffer::left_into(*string, count, *out);
}

int mub_string_mid_string(const mub_string *string, int64_t start, int64_t count, mub_string *out) {
  return mub::buffer::mid_into(*string, start, count, *out);
}

int mub_string_right_string(const mub_string *string, int64_t count, mub_string *out) {
  return mub::buffer::right_into(*string, count, *out);
}
}
