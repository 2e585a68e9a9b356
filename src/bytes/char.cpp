#include "mub_char.h"

#include <cstddef>
#include <cstring>

#include "base/alloc.h"
#include "bytes/number_text.h"
#include "bytes/text_span.h"

namespace mub {
namespace {

using CharOps = UnitOps<char>;

// How many characters may be read: none if `data` is null, whatever the length.
int64_t readable(const mub_char &view) { return view.data == nullptr ? 0 : view.length; }

void trim(mub_char &view) {
  if (view.data == nullptr) return;
  const span::Trimmed kept = span::trimmed(view.data, view.length);
  view.data += kept.start;
  view.length = kept.length;
}

void copy(mub_char &view, const char *text, int64_t count) {
  if (text == nullptr || view.data != nullptr) return;
  const int64_t length = measured(text, count);
  if (length == INT64_MAX) return;
  auto *data = static_cast<char *>(allocate(length + 1, 1));
  if (data == nullptr) return;
  std::memcpy(data, text, static_cast<size_t>(length));
  data[length] = 0;
  view = {data, length};
}

template <class Comparator>
int compare(const mub_char &view, const char *text, int64_t count, Comparator comparator) {
  const bool has_text = text != nullptr && count != 0;
  if (view.data == nullptr || view.length == 0) return has_text ? -1 : 0;
  return has_text ? comparator(view.data, view.length, text, measured(text, count)) : 1;
}

}  // namespace
}  // namespace mub

extern "C" {

mub_char *mub_char_init(mub_char *view) {
  *view = {nullptr, 0};
  return view;
}

mub_char *mub_char_term(mub_char *view) {
  mub::release(view->data);
  return mub_char_init(view);
}

void mub_char_trim(mub_char *view) { mub::trim(*view); }

void mub_char_shrink(mub_char *view, int64_t length) {
  if (view->data != nullptr && length >= 0) view->length = length;
}

int mub_char_is_empty(const mub_char *view) { return view->data == nullptr || view->length == 0; }

int64_t mub_char_length(mub_char *view) {
  view->length = mub::measured(view->data, view->length);
  return view->length;
}

void mub_char_make_lower(mub_char *view) { mub::span::fold(view->data, view->length, mub::CharOps::lower); }

void mub_char_make_upper(mub_char *view) { mub::span::fold(view->data, view->length, mub::CharOps::upper); }

void mub_char_copy(mub_char *view, const char *text, int64_t count) { mub::copy(*view, text, count); }

int mub_char_is_long(const mub_char *view) {
  return mub::number::parse_integer(view->data, mub::readable(*view)).is_whole;
}

int64_t mub_char_get_long(const mub_char *view) {
  return mub::number::parse_integer(view->data, mub::readable(*view)).value;
}

int mub_char_is_float(const mub_char *view) {
  return mub::number::scan_decimal(view->data, mub::readable(*view)).is_whole;
}

double mub_char_get_float(const mub_char *view) {
  return mub::number::parse_decimal(view->data, mub::readable(*view),
                                    [](double value, char code) { return (value * 10.0 + code) - 48.0; });
}

int mub_char_compare(const mub_char *view, const char *text, int64_t count) {
  return mub::compare(*view, text, count, mub::CharOps::compare);
}

int mub_char_icompare(const mub_char *view, const char *text, int64_t count) {
  return mub::compare(*view, text, count, mub::CharOps::icompare);
}

int64_t mub_char_find_char(const mub_char *view, int character) {
  return mub::span::find_unit(view->data, view->length, character);
}

int64_t mub_char_find_char_pos(const mub_char *view, int character, int64_t start) {
  return mub::span::find_unit(view->data, view->length, character, start);
}

int64_t mub_char_reverse_find(const mub_char *view, int character) {
  return mub::span::find_last_unit(view->data, view->length, character);
}

int64_t mub_char_find(const mub_char *view, const char *text, int64_t count) {
  return mub::span::find<char>(view->data, view->length, text, count);
}

int64_t mub_char_find_pos(const mub_char *view, const char *text, int64_t count, int64_t start) {
  return mub::span::find<char>(view->data, view->length, text, count, start);
}
}
