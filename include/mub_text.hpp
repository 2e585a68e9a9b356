/**
 * @defgroup text_hpp mub_text.hpp: strings and streams
 * @ingroup hpp
 *
 * mub::string, mub::wchar and mub::stream own the growable buffers of mub_string.h, mub_wchar.h and
 * mub_stream.h; mub::stringx is the view of mub_string.h.
 *
 *     mub::string    chars, NUL-terminated        mub::stream     bytes, with a cursor for fields
 *     mub::wchar     16-bit units, terminated     mub::stringx    a non-owning view of a span of text
 *
 * Texts are passed as std::string_view, wide ones as std::u16string_view, and may lie in the buffer itself.
 * Texts of bytes (string, stringx, stream) compare with each other and with std::string_view, wide ones with
 * each other and with std::u16string_view (==, !=, <, <=, >, >=: byte by byte, or unit by unit). They convert
 * to views; those of bytes can be written to a std::ostream, and all but streams have a std::hash. += and the
 * members that return nothing leave the buffer unchanged if memory runs out: call reserve() first, or compare
 * size(). Every member that enlarges a buffer invalidates views, iterators and pointers into it. To format
 * text, use the C functions, whose formats the compiler checks: `mub_string_format(s.c(), "%d", n)`.
 */
#ifndef MUB_TEXT_HPP
#define MUB_TEXT_HPP

#include <iosfwd>

#include "mub_base.hpp"
#include "mub_stream.h"
#include "mub_string.h"
#include "mub_wchar.h"

namespace mub {
inline namespace v1 {
namespace detail {

// `view` is the type of texts that members take and return, `stored` the type of units in the record, and
// `unit` that of members: wide units are accessed as char16_t only, because of the aliasing rules.
struct string_traits {
  using c_struct = mub_string;
  using stored = char;
  using unit = char;
  using view = std::string_view;
  static constexpr auto init = mub_string_init;
  static constexpr auto term = mub_string_term;
  static constexpr auto verify = mub_string_verify;
  static constexpr auto memory_bytes = mub_string_memory_bytes;
  static constexpr auto swap = mub_string_swap;
  static constexpr auto clone = mub_string_clone;
  static constexpr auto expand = mub_string_expand;
  static constexpr auto shrink = mub_string_shrink;
  static constexpr auto copy = mub_string_copy;
  static constexpr auto append = mub_string_append;
  static constexpr auto insert = mub_string_insert;
  static constexpr auto update = mub_string_update;
  static constexpr auto erase = mub_string_delete;
  static constexpr auto left = mub_string_left;
  static constexpr auto mid = mub_string_mid;
  static constexpr auto right = mub_string_right;
  static constexpr auto find_unit = mub_string_find_char_pos;
};

struct wchar_traits {
  using c_struct = mub_wchar;
  using stored = std::uint16_t;
  using unit = char16_t;
  using view = std::u16string_view;
  static constexpr auto init = mub_wchar_init;
  static constexpr auto term = mub_wchar_term;
  static constexpr auto verify = mub_wchar_verify;
  static constexpr auto memory_bytes = mub_wchar_memory_bytes;
  static constexpr auto swap = mub_wchar_swap;
  static constexpr auto clone = mub_wchar_clone;
  static constexpr auto expand = mub_wchar_expand;
  static constexpr auto shrink = mub_wchar_shrink;
  static constexpr auto copy = mub_wchar_copy;
  static constexpr auto append = mub_wchar_append;
  static constexpr auto insert = mub_wchar_insert;
  static constexpr auto update = mub_wchar_update;
  static constexpr auto erase = mub_wchar_delete;
  static constexpr auto left = mub_wchar_left;
  static constexpr auto mid = mub_wchar_mid;
  static constexpr auto right = mub_wchar_right;
  static constexpr auto find_unit = mub_wchar_find_char_pos;
};

struct stream_traits {
  using c_struct = mub_stream;
  using stored = std::uint8_t;
  using unit = std::uint8_t;
  using view = std::string_view;
  static constexpr auto init = mub_stream_init;
  static constexpr auto term = mub_stream_term;
  static constexpr auto verify = mub_stream_verify;
  static constexpr auto memory_bytes = mub_stream_memory_bytes;
  static constexpr auto swap = mub_stream_swap;
  static constexpr auto clone = mub_stream_clone;
  static constexpr auto expand = mub_stream_expand;
  static constexpr auto shrink = mub_stream_shrink;
  static constexpr auto copy = mub_stream_copy;
  static constexpr auto append = mub_stream_append;
  static constexpr auto insert = mub_stream_insert;
  static constexpr auto update = mub_stream_update;
  static constexpr auto erase = mub_stream_delete;
  static constexpr auto left = mub_stream_left;
  static constexpr auto mid = mub_stream_mid;
  static constexpr auto right = mub_stream_right;
  static constexpr auto find_unit = mub_stream_find_pos;
};

// Base of the types that convert to a view of their text. The operators take any two types of which one is
// derived from it, and the other converts to its view.
struct textual {};

/** The members that strings, streams and views have in common. */
template <class Derived, class View>
class searchable : public textual {
 public:
  /** Checks whether the content begins with a text or a unit. */
  ///@{
  bool starts_with(View text) const noexcept { return view().substr(0, text.size()) == text; }
  bool starts_with(typename View::value_type unit) const noexcept { return starts_with(View(&unit, 1)); }
  ///@}
  /** Checks whether the content ends with a text or a unit. */
  ///@{
  bool ends_with(View text) const noexcept {
    return view().size() >= text.size() && view().substr(view().size() - text.size()) == text;
  }
  bool ends_with(typename View::value_type unit) const noexcept { return ends_with(View(&unit, 1)); }
  ///@}
  /** Checks whether a text or a unit occurs in the content. */
  ///@{
  bool contains(View text) const noexcept { return view().find(text) != View::npos; }
  bool contains(typename View::value_type unit) const noexcept { return view().find(unit) != View::npos; }
  ///@}

 private:
  View view() const noexcept { return static_cast<const Derived &>(*this).view(); }
};

template <class Text>
constexpr bool is_textual = std::is_base_of_v<textual, Text>;

template <class A, class B>
using common_view = typename std::conditional_t<is_textual<A>, A, B>::view_type;

template <class A, class B, class View = common_view<A, B>>
using if_textual =
    std::enable_if_t<(is_textual<A> || is_textual<B>)&&std::is_convertible_v<const A &, View> &&
                         std::is_convertible_v<const B &, View>,
                     int>;

template <class A, class B, if_textual<A, B> = 0>
bool operator==(const A &a, const B &b) noexcept {
  return common_view<A, B>(a) == common_view<A, B>(b);
}
template <class A, class B, if_textual<A, B> = 0>
bool operator!=(const A &a, const B &b) noexcept {
  return !(a == b);
}
template <class A, class B, if_textual<A, B> = 0>
bool operator<(const A &a, const B &b) noexcept {
  return common_view<A, B>(a) < common_view<A, B>(b);
}
template <class A, class B, if_textual<A, B> = 0>
bool operator>(const A &a, const B &b) noexcept {
  return b < a;
}
template <class A, class B, if_textual<A, B> = 0>
bool operator<=(const A &a, const B &b) noexcept {
  return !(b < a);
}
template <class A, class B, if_textual<A, B> = 0>
bool operator>=(const A &a, const B &b) noexcept {
  return !(a < b);
}

/** Writes the content of a string, a stream or a view. */
template <
    class Char, class CharTraits, class Text,
    std::enable_if_t<is_textual<Text> && std::is_same_v<typename Text::view_type::value_type, Char>, int> = 0>
std::basic_ostream<Char, CharTraits> &operator<<(std::basic_ostream<Char, CharTraits> &out,
                                                 const Text &text) {
  return out << text.view();
}

template <class Text>
struct text_hash {
  std::size_t operator()(const Text &text) const noexcept {
    return std::hash<typename Text::view_type>()(text.view());
  }
};

// The C functions read the first byte of a text even if its length is 0, and that of an empty view may be out
// of bounds.
inline std::int64_t find_empty(std::int64_t start, std::int64_t size) noexcept {
  return start >= 0 && start <= size ? start : -1;
}

template <class Traits>
struct buffer_life {
  using c_struct = typename Traits::c_struct;
  static void init(c_struct *buffer) noexcept { Traits::init(buffer); }
  static void bare(c_struct *buffer) noexcept { Traits::init(buffer); }
  static void release(c_struct *buffer) noexcept { Traits::term(buffer); }
  static constexpr auto verify = Traits::verify;
  static constexpr auto memory_bytes = Traits::memory_bytes;
  static void swap(c_struct *a, c_struct *b) noexcept { Traits::swap(a, b); }
};

/** The members that strings and streams have in common; sizes and positions are in units. */
template <class Derived, class Traits>
class buffer : public owner<Derived, buffer_life<Traits>>,
               public range<Derived>,
               public reversible<Derived>,
               public searchable<Derived, typename Traits::view> {
  using base = owner<Derived, buffer_life<Traits>>;

 public:
  using unit_type = typename Traits::unit;
  using view_type = typename Traits::view;
  using value_type = unit_type;
  using size_type = std::int64_t;
  using difference_type = std::int64_t;
  using reference = unit_type &;
  using const_reference = const unit_type &;
  using iterator = unit_type *;
  using const_iterator = const unit_type *;
  using base::c;

  /** Constructs an empty buffer; nothing is allocated. */
  buffer() noexcept : base(std::in_place) {}

  /** Constructs a buffer with a copy of a text; it is empty if memory ran out. */
  explicit buffer(view_type text) : buffer() { set(text); }

  /** Returns a copy with at least the same capacity; empty if memory ran out. See mub_string_clone(). */
  [[nodiscard]] Derived clone() const {
    Derived copy;
    Traits::clone(c(), copy.c());
    return copy;
  }

  /** Returns the number of units of content. */
  ///@{
  std::int64_t size() const noexcept { return c()->length; }
  std::int64_t length() const noexcept { return c()->length; }
  ///@}
  /** Checks whether there is no content. */
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }
  /** Returns the number of units that fit without another allocation. */
  std::int64_t capacity() const noexcept { return c()->capacity; }

  /** Returns the content, valid until the buffer grows; nullptr while nothing is allocated. */
  ///@{
  unit_type *data() noexcept { return reinterpret_cast<unit_type *>(c()->data); }
  const unit_type *data() const noexcept { return reinterpret_cast<const unit_type *>(c()->data); }
  ///@}

  /** Returns a view of the content, valid until the buffer grows or is released. */
  ///@{
  view_type view() const noexcept {
    return {reinterpret_cast<typename view_type::const_pointer>(c()->data),
            static_cast<std::size_t>(c()->length)};
  }
  operator view_type() const noexcept { return view(); }
  ///@}

  /** Returns the unit at an index from 0 to size() - 1, which is not checked. */
  ///@{
  unit_type &operator[](std::int64_t index) noexcept { return data()[index]; }
  const unit_type &operator[](std::int64_t index) const noexcept { return data()[index]; }
  ///@}

  /** Returns the first or the last unit; the content must not be empty. */
  ///@{
  unit_type &front() noexcept { return data()[0]; }
  const unit_type &front() const noexcept { return data()[0]; }
  unit_type &back() noexcept { return data()[size() - 1]; }
  const unit_type &back() const noexcept { return data()[size() - 1]; }
  ///@}

  /** Iterators over the units of the content, valid until the buffer grows. */
  ///@{
  iterator begin() noexcept { return data(); }
  const_iterator begin() const noexcept { return data(); }
  iterator end() noexcept { return data() + size(); }
  const_iterator end() const noexcept { return data() + size(); }
  ///@}

  /** Makes room for `capacity` units of content; false if memory ran out. See mub_string_expand(). */
  [[nodiscard]] bool reserve(std::int64_t capacity) { return Traits::expand(c(), capacity) != 0; }

  /** Sets the length, which can also be increased up to the capacity; see mub_string_shrink(). */
  void shrink(std::int64_t length) { Traits::shrink(c(), length); }

  /** Sets the length to 0; the capacity is unchanged. */
  void clear() { Traits::shrink(c(), 0); }

  /** Appends a text to the content, which is unchanged if memory runs out; see mub_string_append(). */
  ///@{
  void append(view_type text) { Traits::append(c(), units(text), length_of(text)); }
  Derived &operator+=(view_type text) {
    append(text);
    return static_cast<Derived &>(*this);
  }
  ///@}

  /** Appends a unit; the content is unchanged if memory runs out. */
  ///@{
  void push_back(unit_type unit) {
    Traits::append(c(), reinterpret_cast<const typename Traits::stored *>(&unit), 1);
  }
  Derived &operator+=(unit_type unit) {
    push_back(unit);
    return static_cast<Derived &>(*this);
  }
  ///@}

  /** Removes the last unit; does nothing if there is none. */
  void pop_back() { Traits::shrink(c(), size() - 1); }

  /**
   * Inserts a text before a position. Returns false, and nothing changes, if the position is negative or
   * above size(), the text is empty, or memory ran out. See mub_string_insert().
   */
  bool insert(std::int64_t position, view_type text) {
    return Traits::insert(c(), position, units(text), length_of(text)) != 0;
  }

  /**
   * Replaces `count` units at a position with a text. Returns false, and nothing changes, if the position is
   * negative or above size(), the count is negative, memory ran out or, in a stream, the length would become
   * negative. A count past the end is limited in strings, but not in streams. See mub_string_update(),
   * mub_wchar_update() or mub_stream_update().
   */
  bool update(std::int64_t position, std::int64_t count, view_type text) {
    return Traits::update(c(), position, count, units(text), length_of(text)) != 0;
  }

  /**
   * Removes `count` units at a position; see mub_string_delete(), mub_wchar_delete() or mub_stream_delete().
   */
  void erase(std::int64_t position, std::int64_t count) { Traits::erase(c(), position, count); }

  /** Keeps the first `count` units; see mub_string_left(). */
  void left(std::int64_t count) { Traits::left(c(), count); }
  /** Keeps `count` units from `start` on; see mub_string_mid(). */
  void mid(std::int64_t start, std::int64_t count) { Traits::mid(c(), start, count); }
  /** Keeps the last `count` units; see mub_string_right(). */
  void right(std::int64_t count) { Traits::right(c(), count); }

  /**
   * Returns the index of the first occurrence of a unit at or after `start`; -1 if there is none. The unit 0
   * is never found. See mub_string_find_char_pos().
   */
  std::int64_t find(unit_type unit, std::int64_t start = 0) const {
    return Traits::find_unit(c(), unit, start);
  }

 protected:
  // Texts other than buffers of this kind, which are moved.
  template <class Text>
  using if_text =
      std::enable_if_t<std::is_convertible_v<const Text &, view_type> && !std::is_base_of_v<buffer, Text>>;

  Derived &set(view_type text) {
    Traits::copy(c(), units(text), length_of(text));
    return static_cast<Derived &>(*this);
  }
  static const typename Traits::stored *units(view_type text) noexcept {
    return reinterpret_cast<const typename Traits::stored *>(text.data());
  }
  static std::int64_t length_of(view_type text) noexcept { return static_cast<std::int64_t>(text.size()); }
};

}  // namespace detail

/** @addtogroup text_hpp
 * @{ */

/** A growable string of bytes, which owns its buffer; see mub_string. */
class string : public detail::buffer<string, detail::string_traits> {
 public:
  using buffer::buffer;
  using buffer::find;

  /** Replaces the content with a text; the content is unchanged if memory runs out. */
  template <class Text, class = if_text<Text>>
  string &operator=(const Text &text) {
    return set(text);
  }

  /** Returns the NUL-terminated content, valid until the buffer grows; never nullptr. */
  const char *c_str() const noexcept { return c()->data != nullptr ? c()->data : ""; }

  /**
   * Replaces the content with a text. Returns false, and nothing changes, if memory ran out; see
   * mub_string_copy().
   */
  bool assign(std::string_view text) { return mub_string_copy(c(), text.data(), length_of(text)) != 0; }

  /** Appends a character; see mub_string_append_char(). */
  void append_char(char character) { mub_string_append_char(c(), character); }
  /** Appends a number in decimal; see mub_string_append_integer(). */
  void append_integer(std::int64_t value) { mub_string_append_integer(c(), value); }
  /** Appends a number as printf's `%%f` formats it; see mub_string_append_double(). */
  void append_double(double value) { mub_string_append_double(c(), value); }

  /**
   * Returns the integer that the content begins with, `otherwise` if it is empty; see mub_string_get_long().
   */
  std::int64_t get_long(std::int64_t otherwise = 0) const { return mub_string_get_long(c(), otherwise); }
  /**
   * Returns the number that the content begins with, `otherwise` if it is empty; see mub_string_get_double().
   */
  double get_double(double otherwise = 0) const { return mub_string_get_double(c(), otherwise); }

  /** Compares the content with a text; see mub_string_compare(). */
  int compare(std::string_view text) const { return mub_string_compare(c(), text.data(), length_of(text)); }
  /** Compares the content with a text without regard to case; see mub_string_icompare(). */
  int icompare(std::string_view text) const { return mub_string_icompare(c(), text.data(), length_of(text)); }

  /**
   * Returns the index of the first occurrence of a text at or after `start`; -1 if there is none. An empty
   * text is found at `start`, if that is 0 to size(). See mub_string_find_pos().
   */
  std::int64_t find(std::string_view text, std::int64_t start = 0) const {
    if (text.empty()) return detail::find_empty(start, size());
    return mub_string_find_pos(c(), text.data(), length_of(text), start);
  }

  /**
   * Removes white space at both ends, and NULs at the end. Returns whether anything was removed; see
   * mub_string_trim().
   */
  bool trim() { return mub_string_trim(c()) != 0; }

  /** Converts every byte to lower case; see mub_string_make_lower(). */
  void make_lower() { mub_string_make_lower(c()); }
  /** Converts every byte to upper case; see mub_string_make_upper(). */
  void make_upper() { mub_string_make_upper(c()); }

  /**
   * Replaces every occurrence of a NUL-terminated text with another, and returns the number of replacements.
   * Invalidates views and iterators in any case. See mub_string_replace().
   */
  std::int64_t replace(const char *from, const char *to) { return mub_string_replace(c(), from, to); }
};

/** A growable string of 16-bit units, which owns its buffer; see mub_wchar. */
class wchar : public detail::buffer<wchar, detail::wchar_traits> {
 public:
  using buffer::buffer;

  /** Replaces the content with a text; the content is unchanged if memory runs out. */
  template <class Text, class = if_text<Text>>
  wchar &operator=(const Text &text) {
    return set(text);
  }

  /** Replaces the content with a text; it is unchanged if memory runs out. See mub_wchar_copy(). */
  void assign(std::u16string_view text) { set(text); }

  using buffer::append;
  /** Appends a narrow text, whose bytes are widened as signed chars; see mub_wchar_append_str(). */
  void append(std::string_view narrow) {
    mub_wchar_append_str(c(), narrow.data(), static_cast<std::int64_t>(narrow.size()));
  }
  /** Appends a number in decimal; see mub_wchar_append_integer(). */
  void append_integer(std::int64_t value) { mub_wchar_append_integer(c(), value); }

  /** Compares the content with a text; see mub_wchar_compare(). */
  int compare(std::u16string_view text) const { return mub_wchar_compare(c(), units(text), length_of(text)); }
  /** Compares the content with a text without regard to case; see mub_wchar_icompare(). */
  int icompare(std::u16string_view text) const {
    return mub_wchar_icompare(c(), units(text), length_of(text));
  }

  /**
   * Removes white space at both ends, and units of 0 at the end. Returns whether anything was removed; see
   * mub_wchar_trim().
   */
  bool trim() { return mub_wchar_trim(c()) != 0; }
};

/**
 * A growable byte buffer, which owns its block; see mub_stream. Fields are little-endian. They are read and
 * written at a position that the caller keeps and that advances past the field, even if the field does not
 * lie wholly inside the content: then it is read as 0 and not written. Writing a field never enlarges the
 * stream: resize() it first.
 */
class stream : public detail::buffer<stream, detail::stream_traits> {
 public:
  using buffer::buffer;

  /** Replaces the content with a text; the content is unchanged if memory runs out. */
  template <class Text, class = if_text<Text>>
  stream &operator=(const Text &text) {
    return set(text);
  }

  /**
   * Replaces the content with a range of bytes; it is unchanged if memory runs out. See mub_stream_copy().
   */
  void assign(std::string_view bytes) { set(bytes); }

  /**
   * Sets the length to `size`, allocating if needed; false, and nothing changes, if memory ran out. New bytes
   * are the spare bytes as they are. A negative size changes nothing, and the result is true. See
   * mub_stream_expand() and mub_stream_shrink().
   */
  [[nodiscard]] bool resize(std::int64_t size) {
    if (!reserve(size)) return false;
    shrink(size);
    return true;
  }

  /** Reads 8, 16, 24, 32, 48 or 64 bits; see mub_stream_get_byte() to mub_stream_get_lword(). */
  ///@{
  std::uint8_t get_byte(std::int64_t &position) const { return mub_stream_get_byte(c(), &position); }
  std::uint16_t get_word(std::int64_t &position) const { return mub_stream_get_word(c(), &position); }
  std::uint32_t get_tword(std::int64_t &position) const { return mub_stream_get_tword(c(), &position); }
  std::uint32_t get_dword(std::int64_t &position) const { return mub_stream_get_dword(c(), &position); }
  std::uint64_t get_xword(std::int64_t &position) const { return mub_stream_get_xword(c(), &position); }
  std::int64_t get_lword(std::int64_t &position) const { return mub_stream_get_lword(c(), &position); }
  ///@}

  /** Writes 8, 16, 24, 32, 48 or 64 bits; see mub_stream_set_byte() to mub_stream_set_lword(). */
  ///@{
  void set_byte(std::int64_t &position, std::uint32_t value) { mub_stream_set_byte(c(), &position, value); }
  void set_word(std::int64_t &position, std::uint32_t value) { mub_stream_set_word(c(), &position, value); }
  void set_tword(std::int64_t &position, std::uint32_t value) { mub_stream_set_tword(c(), &position, value); }
  void set_dword(std::int64_t &position, std::uint32_t value) { mub_stream_set_dword(c(), &position, value); }
  void set_xword(std::int64_t &position, std::uint64_t value) { mub_stream_set_xword(c(), &position, value); }
  void set_lword(std::int64_t &position, std::int64_t value) { mub_stream_set_lword(c(), &position, value); }
  ///@}

  /** Returns the CRC-32 of the content; see mub_stream_crc32(). */
  std::uint32_t crc32() const { return mub_stream_crc32(c()->data, c()->length); }
};

/**
 * A non-owning view of a span of text; see mub_stringx. It is copied like a pointer, and must not be used
 * after the text has moved or been released, which is not checked.
 */
class stringx : public detail::range<stringx>,
                public detail::reversible<stringx>,
                public detail::searchable<stringx, std::string_view> {
  template <class Text>
  using if_text = std::enable_if_t<std::is_convertible_v<const Text &, std::string_view> &&
                                   !std::is_base_of_v<stringx, Text>>;

 public:
  using view_type = std::string_view;
  using const_iterator = const char *;

  /** Constructs an empty view. */
  stringx() noexcept { mub_stringx_init(&view_); }
  /** Constructs a view of a whole text, of any type that converts to std::string_view. */
  ///@{
  stringx(std::string_view text) noexcept : view_{text.data(), 0, static_cast<std::int64_t>(text.size())} {}
  template <class Text, class = if_text<Text>>
  stringx(const Text &text) : stringx(static_cast<std::string_view>(text)) {}
  ///@}

  /** Returns the record, for use with the C functions. */
  ///@{
  mub_stringx *c() noexcept { return &view_; }
  const mub_stringx *c() const noexcept { return &view_; }
  ///@}

  /** Returns the span as a view; empty if its length is below 1. */
  ///@{
  std::string_view view() const noexcept {
    if (view_.text == nullptr || view_.length <= 0) return {};
    return {view_.text + view_.start, static_cast<std::size_t>(view_.length)};
  }
  operator std::string_view() const noexcept { return view(); }
  ///@}

  /** Returns the number of bytes in the span; negative if a negative length was stored. */
  std::int64_t size() const noexcept { return view_.length; }
  /** Checks whether there are no bytes in the span. */
  [[nodiscard]] bool empty() const noexcept { return view().empty(); }

  /** Returns the byte at an index from 0 to size() - 1, which is not checked. */
  const char &operator[](std::int64_t index) const noexcept { return view_.text[view_.start + index]; }

  /** Returns the first or the last byte; the span must not be empty. */
  ///@{
  const char &front() const noexcept { return (*this)[0]; }
  const char &back() const noexcept { return (*this)[size() - 1]; }
  ///@}

  /** Iterators over the bytes of the span. */
  ///@{
  const_iterator begin() const noexcept { return view().data(); }
  const_iterator end() const noexcept { return view().data() + view().size(); }
  ///@}

  /** Removes white space at both ends of the span, and NULs at its end; see mub_stringx_trim(). */
  bool trim() { return mub_stringx_trim(&view_) != 0; }

  /** Keeps the first `count` bytes of the span; see mub_stringx_left(). */
  void left(std::int64_t count) { mub_stringx_left(&view_, count); }
  /** Keeps `count` bytes from `offset` on; see mub_stringx_mid(). */
  void mid(std::int64_t offset, std::int64_t count) { mub_stringx_mid(&view_, offset, count); }
  /** Keeps the last `count` bytes of the span; see mub_stringx_right(). */
  void right(std::int64_t count) { mub_stringx_right(&view_, count); }

  /**
   * Returns the index of the first occurrence of a character at or after `start`; -1 if there is none. See
   * mub_stringx_find_char_pos().
   */
  std::int64_t find(char character, std::int64_t start = 0) const {
    return mub_stringx_find_char_pos(&view_, character, start);
  }

  /**
   * Returns the index of the first occurrence of a text at or after `start`; -1 if there is none. An empty
   * text is found at `start`, if that is 0 to size(). See mub_stringx_find_pos().
   */
  std::int64_t find(std::string_view text, std::int64_t start = 0) const {
    if (text.empty()) return detail::find_empty(start, size());
    return mub_stringx_find_pos(&view_, text.data(), static_cast<std::int64_t>(text.size()), start);
  }

  /** Checks whether the whole span is an integer; see mub_stringx_is_long(). */
  bool is_long() const { return mub_stringx_is_long(&view_) != 0; }
  /** Returns the integer that the span begins with; 0 if there is none. See mub_stringx_get_long(). */
  std::int64_t get_long() const { return mub_stringx_get_long(&view_); }

  /** Checks whether the whole span is a decimal number; see mub_stringx_is_float(). */
  bool is_double() const { return mub_stringx_is_float(&view_) != 0; }
  /**
   * Returns the decimal number that the span begins with; 0 if there is none. See mub_stringx_get_float().
   */
  double get_double() const { return mub_stringx_get_float(&view_); }

 private:
  mub_stringx view_;
};

/** @} */

}  // namespace v1
}  // namespace mub

/** @cond */
template <>
struct std::hash<mub::string> : mub::detail::text_hash<mub::string> {};
template <>
struct std::hash<mub::wchar> : mub::detail::text_hash<mub::wchar> {};
template <>
struct std::hash<mub::stringx> : mub::detail::text_hash<mub::stringx> {};
/** @endcond */

#endif
