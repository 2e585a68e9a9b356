#include <algorithm>

#include "bytes/number_text.h"
#include "mub_string.h"
#include "text/text_buffer.h"

namespace mub {
namespace {

using CharOps = UnitOps<char>;

// The bytes of a view. If there are none, the start may lie anywhere and is not added.
struct Span {
  explicit Span(const mub_stringx &view)
      : data(view.length > 0 && view.text != nullptr ? view.text + view.start : view.text),
        length(view.text == nullptr ? 0 : view.length) {}

  const char *data;
  int64_t length;
};

// Starts may lie outside the text, wherever the caller asked for, so sums wrap around.
int64_t wrapping_sum(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

int64_t wrapping_difference(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

bool is_empty(const mub_stringx &view) { return view.text == nullptr || view.length == 0; }

bool trim(mub_stringx &view) {
  if (view.text == nullptr) return false;
  const Span whole(view);
  const span::Trimmed kept = span::trimmed(whole.data, whole.length);
  if (kept.length > 0 && kept.length == view.length) return false;
  view.start += kept.start;
  view.length = kept.length;
  return true;
}

void mid(mub_stringx &view, int64_t offset, int64_t count) {
  if (is_empty(view) || offset < 0) return;
  const bool has_bytes = count > 0 && offset < view.length;
  view.length = has_bytes ? std::min(count, view.length - offset) : 0;
  view.start = wrapping_sum(view.start, offset);
}

void right(mub_stringx &view, int64_t count) {
  if (is_empty(view) || view.length <= count) return;
  view.start = wrapping_sum(view.start, wrapping_difference(view.length, count));
  view.length = std::max<int64_t>(count, 0);
}

// A part of a view: its start in the text, and its length.
struct Part {
  int64_t start;
  int64_t length;
  bool same_text_only;  // Not to be stored in a view of another text.
};

Part left_of(const mub_stringx &view, int64_t count) {
  if (is_empty(view) || count < 1) return {view.start, 0, false};
  return {view.start, std::clamp<int64_t>(view.length, 0, count), true};
}

Part mid_of(const mub_stringx &view, int64_t offset, int64_t count) {
  const int64_t start = wrapping_sum(view.start, offset);
  if (is_empty(view) || offset < 0 || count < 1 || offset >= view.length) return {start, 0, false};
  return {start, std::min(count, view.length - offset), true};
}

Part right_of(const mub_stringx &view, int64_t count) {
  Part part = left_of(view, count);
  if (part.length > 0) part.start += view.length - part.length;
  return part;
}

void store(const mub_stringx &view, const Part &part, mub_stringx &out) {
  if (part.same_text_only && out.text != view.text) return;
  out.start = part.start;
  out.length = part.length;
}

// The address is computed as an integer, because that of an empty part may lie outside the text.
void store(const mub_stringx &view, const Part &part, mub_char &out) {
  const uintptr_t address = reinterpret_cast<uintptr_t>(view.text) + static_cast<uintptr_t>(part.start);
  out.data = view.text == nullptr ? nullptr : reinterpret_cast<char *>(address);
  out.length = part.length;
}

}  // namespace
}  // namespace mub

extern "C" {

void mub_stringx_init(mub_stringx *view) { *view = {nullptr, 0, 0}; }

void mub_stringx_term(mub_stringx *view) { *view = {nullptr, 0, 0}; }

int mub_stringx_is_empty(const mub_stringx *view) { return mub::is_empty(*view); }

void mub_stringx_shrink(mub_stringx *view) { *view = {view->text, 0, 0}; }

void mub_stringx_copy(mub_stringx *view, const mub_stringx *other) { *view = *other; }

void mub_stringx_copy_string(mub_stringx *view, const mub_string *string) {
  *view = {string->data, 0, string->length};
}

void mub_stringx_copy_char(mub_stringx *view, const mub_char *other) {
  *view = {other->data, 0, mub::measured(other->data, other->length)};
}

void mub_stringx_swap(mub_stringx *a, mub_stringx *b) { std::swap(*a, *b); }

int mub_stringx_get_at(const mub_stringx *view, int64_t index) {
  const mub::Span span(*view);
  return index >= 0 && index < span.length ? static_cast<signed char>(span.data[index]) : -1;
}

int mub_stringx_compare(const mub_stringx *view, const char *text, int64_t count) {
  const mub::Span span(*view);
  return mub::text::compare(span.data, span.length, text, count, mub::CharOps::compare);
}

int mub_stringx_icompare(const mub_stringx *view, const char *text, int64_t count) {
  const mub::Span span(*view);
  return mub::text::compare(span.data, span.length, text, count, mub::CharOps::icompare);
}

int64_t mub_stringx_find_char(const mub_stringx *view, int character) {
  const mub::Span span(*view);
  return mub::span::find_unit(span.data, span.length, character);
}

int64_t mub_stringx_find_char_pos(const mub_stringx *view, int character, int64_t start) {
  const mub::Span span(*view);
  return mub::span::find_unit(span.data, span.length, character, start);
}

int64_t mub_stringx_reverse_find(const mub_stringx *view, int character) {
  const mub::Span span(*view);
  return mub::span::find_last_unit(span.data, span.length, character);
}

int64_t mub_stringx_find(const mub_stringx *view, const char *text, int64_t count) {
  const mub::Span span(*view);
  return mub::span::find(span.data, span.length, text, count);
}

int64_t mub_stringx_find_pos(const mub_stringx *view, const char *text, int64_t count, int64_t start) {
  const mub::Span span(*view);
  return mub::span::find(span.data, span.length, text, count, start);
}

int mub_stringx_is_long(const mub_stringx *view) {
  const mub::Span span(*view);
  return mub::number::parse_integer(span.data, span.length).is_whole;
}

int64_t mub_stringx_get_long(const mub_stringx *view) {
  const mub::Span span(*view);
  return mub::number::parse_integer(span.data, span.length).value;
}

int mub_stringx_is_float(const mub_stringx *view) {
  const mub::Span span(*view);
  return mub::number::scan_decimal(span.data, span.length).is_whole;
}

double mub_stringx_get_float(const mub_stringx *view) {
  const mub::Span span(*view);
  return mub::number::parse_decimal(span.data, span.length);
}

int mub_stringx_trim(mub_stringx *view) { return mub::trim(*view); }

void mub_stringx_left(mub_stringx *view, int64_t count) {
  if (!mub::is_empty(*view) && view->length > count) view->length = count;
}

void mub_stringx_mid(mub_stringx *view, int64_t offset, int64_t count) { mub::mid(*view, offset, count); }

void mub_stringx_right(mub_stringx *view, int64_t count) { mub::right(*view, count); }

void mub_stringx_left_string(const mub_stringx *view, int64_t count, mub_stringx *out) {
  mub::store(*view, mub::left_of(*view, count), *out);
}

void mub_stringx_mid_string(const mub_stringx *view, int64_t offset, int64_t count, mub_stringx *out) {
  mub::store(*view, mub::mid_of(*view, offset, count), *out);
}

void mub_stringx_right_string(const mub_stringx *view, int64_t count, mub_stringx *out) {
  mub::store(*view, mub::right_of(*view, count), *out);
}

void mub_stringx_left_char(const mub_stringx *view, int64_t count, mub_char *out) {
  mub::store(*view, mub::left_of(*view, count), *out);
}

void mub_stringx_mid_char(const mub_stringx *view, int64_t offset, int64_t count, mub_char *out) {
  mub::store(*view, mub::mid_of(*view, offset, count), *out);
}

void mub_stringx_right_char(const mub_stringx *view, int64_t count, mub_char *out) {
  mub::store(*view, mub::right_of(*view, count), *out);
}
}
