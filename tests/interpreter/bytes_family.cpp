// Byte streams with strings beside them, and the functions of bytes alone, under programs.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <random>

#include "bytes_ops.inc"
#include "core/bytes.h"
#include "core/text_search.h"
#include "interpreter/roles.h"
#include "support/guarded.h"

namespace mub_test {

inline int64_t size_of(std::string_view bytes) { return static_cast<int64_t>(bytes.size()); }

using namespace std::string_view_literals;

// Bytes out of a small alphabet.
std::string drawn_bytes(Program &program) {
  constexpr std::string_view kAlphabets[] = {"ab"sv, "abAB\xE9[@"sv, " \t\n\r\v\0x"sv, "\0\1\x80\xFF"sv};
  const std::string_view alphabet = kAlphabets[program.below(4)];
  std::minstd_rand random(static_cast<uint32_t>(program.below(65536)));
  std::string bytes(clipped(program.below(program.one_in(4) ? 700 : 40)), ' ');
  for (char &byte : bytes) byte = alphabet[(random() >> 8) % alphabet.size()];
  return bytes;
}
char drawn_byte(Program &program) { return "abABx0\0\xFF"[program.below(8)]; }

// What a stream or a string holds: all of its block, with the byte after the capacity.
struct Buffer {
  std::string block;
  int64_t length = 0;
  bool is_string = false;
  void *data = nullptr;

  int64_t capacity() const { return block.empty() ? 0 : size_of(block) - 1; }
  int64_t left(int64_t at) const { return at < 0 || at >= length ? 0 : length - at; }
  std::string part(int64_t at, int64_t count) const {
    count = std::min(count, left(at));
    return count < 1 ? "" : block.substr(clipped(at), clipped(count));
  }
  uint8_t byte(int64_t at) const {
    return at < 0 || at >= capacity() ? 0 : static_cast<uint8_t>(block[clipped(at)]);
  }
  bool expand(int64_t wanted) {
    if (wanted <= capacity()) return true;
    if (wanted > int64_t{1} << 40) return false;
    const int64_t target = std::max(wanted, capacity() + std::max<int64_t>(length / 2, 8));
    block.resize(clipped(is_string ? target / 8 * 8 + 7 : (target + 7) / 8 * 8) + 1);
    return true;
  }
  void shrink(int64_t to) {
    if (block.empty() || to < 0) return;
    length = std::min(to, capacity());
    if (is_string) block[clipped(length)] = 0;
  }
  void put(int64_t at, const std::string &bytes) {
    if (!bytes.empty()) block.replace(clipped(at), bytes.size(), bytes);
  }
  // As much as the content has room for.
  void put_clipped(int64_t at, const std::string &bytes) { put(at, bytes.substr(0, clipped(left(at)))); }
  void set(const std::string &bytes) {
    if (!expand(size_of(bytes))) return;
    put(0, bytes);
    shrink(size_of(bytes));
  }
  bool update(int64_t at, int64_t old_count, const std::string &bytes, int64_t count) {
    int64_t new_length;
    if (at < 0 || old_count < 0 || count < 0 || at > length ||
        __builtin_add_overflow(length, count - old_count, &new_length) || new_length < 0 ||
        !expand(new_length)) {
      return false;
    }
    put(at + count, part(at + old_count, length));
    put(at, bytes.substr(0, clipped(std::max(length, new_length) - at)));
    shrink(new_length);
    return true;
  }
};

template <class R>
struct Slot {
  R record;
  Buffer model;

  void compare() {
    ASSERT_EQ(record.length, model.length);
    ASSERT_EQ(record.capacity, model.capacity());
    ASSERT_EQ(record.data == nullptr, model.block.empty());
    model.data = record.data;
    ASSERT_EQ(std::string_view(static_cast<char *>(model.data), model.block.size()), model.block);
  }
};

template <class R>
struct WorldOf;
template <>
struct WorldOf<mub_stream> : World {
  WorldOf(Program drawn, Refusals refused) : World(drawn, refused) {
    for (auto &slot : streams) mub_stream_init(&slot.record);
    for (auto &slot : strings) mub_string_init(&slot.record);
    for (auto &slot : strings) slot.model.is_string = true;
  }
  ~WorldOf() {
    for (auto &slot : streams) mub_stream_term(&slot.record);
    for (auto &slot : strings) mub_string_term(&slot.record);
  }
  void compare() {
    for (auto &slot : streams) ASSERT_NO_FATAL_FAILURE(slot.compare());
    for (auto &slot : strings) ASSERT_NO_FATAL_FAILURE(slot.compare());
    self = nullptr;
    is_far = false;
  }
  auto &slot(const mub_stream *) { return streams[program.below(3)]; }
  auto &slot(const mub_string *) { return strings[program.below(2)]; }

  Slot<mub_stream> streams[3];
  Slot<mub_string> strings[2];
  Buffer *self = nullptr;  // the first of this step
  bool is_far = false;     // whether a role of this step has a number that no size can be
};
using Streams = WorldOf<mub_stream>;

// ---- roles: `model` is what want() gets of one

// role mub_stream \* destination = Written<mub_stream>
// role mub_string \* \w+ = Written<mub_string>
// role (const )?mub_stream \* \w+ = Chosen<mub_stream>
// role const mub_string \* \w+ = Chosen<mub_string>
template <class R>
struct Chosen {
  explicit Chosen(Streams &world) : Chosen(world, world.slot(static_cast<R *>(nullptr))) {}
  Chosen(Streams &world, Slot<R> &slot) : record(&slot.record), model(slot.model) {
    if (world.self == nullptr) world.self = &model;
  }
  auto arguments() const { return std::tuple(record); }
  R *record;
  Buffer &model;
};
template <class R>
struct Written : Chosen<R> {
  using Chosen<R>::Chosen;
};
template <class R>
inline constexpr bool kIsWritten<Written<R>> = true;

template <auto kDraw>
struct As {
  explicit As(Streams &world) : model(kDraw(world)) {}
  auto arguments() const { return std::tuple(model); }
  decltype(kDraw(std::declval<Streams &>())) model;
};
// role int64_t size = As<wanted_size>
int64_t wanted_size(Streams &world) {
  const int64_t size = world.program.near(400);
  return size > 1000 ? INT64_MAX - size % 100 : size;
}
// role int64_t (offset|count|length|start|n|index|position|old_count) = As<near>
int64_t near(Streams &world) {
  const int64_t number =
      world.program.near(world.program.one_in(2) ? world.self->length : world.self->capacity());
  world.is_far |= number > INT32_MAX;
  return number;
}
// role (u?int64_t|uint32_t) value = As<word>
uint64_t word(Streams &world) {
  const uint64_t number = world.program.one_in(2) ? ~uint64_t{0} : world.program.word();
  return (number >> world.program.below(64)) + static_cast<uint64_t>(world.program.below(2));
}
// role int byte = As<letter>
int letter(Streams &world) { return drawn_byte(world.program) ^ (world.program.one_in(4) ? 256 : 0); }

// role int64_t \* (position|count) = Position
struct Position {
  explicit Position(Streams &world) : at(world.program.near(world.self->length)), value(at) {
    world.is_far = true;
  }
  auto arguments() { return std::tuple(&value); }
  // Where the cursor comes to, which may wrap.
  int64_t after(int64_t count) const {
    return static_cast<int64_t>(static_cast<uint64_t>(at) + static_cast<uint64_t>(count));
  }
  int64_t at, value;
  Position &model = *this;
};
// role uint8_t \*\* bytes = Pointer
struct Pointer {
  explicit Pointer(Streams &) {}
  auto arguments() { return std::tuple(&model); }
  uint8_t *model = nullptr;
};
// role const void \* bytes;int64_t \w+ = Source
// Bytes, perhaps the stream's own, or none, or more than there is memory for; a negative count measures them.
struct Source {
  explicit Source(Streams &world) : owner(drawn_bytes(world.program)), data(owner.data()), bytes(owner) {
    Program &program = world.program;
    const Buffer *self = world.self;
    const int64_t kind = program.below(16);
    if (kind < 5 && self != nullptr && self->data != nullptr) {
      const int64_t at = program.below(self->capacity() + 1);
      data = static_cast<char *>(self->data) + at;
      bytes = self->block.substr(clipped(at), clipped(program.below(400)));
    }
    count = passed_count = size_of(bytes);
    if (kind == 15) {
      data = nullptr;
      bytes.clear();
      count = passed_count = program.near(2);
    } else if (program.one_in(6)) {
      passed_count = program.one_in(2) ? -1 : INT64_MIN;
      bytes = data;
      count = size_of(bytes);
    } else if (self != nullptr && !world.is_far && program.one_in(16)) {
      constexpr int64_t kHuge[] = {INT64_MAX, INT64_MAX - 64, INT64_MAX - 65, INT64_MAX / 2};
      count = passed_count = kHuge[program.below(4)];
    }
  }
  auto arguments() const { return std::tuple(static_cast<const void *>(data), passed_count); }
  std::string owner;
  const char *data;
  std::string bytes;
  int64_t count, passed_count;
  Source &model = *this;
};

// ---- streams: want() does to the models what an operation does, and gives the result

void want(op::init_, Buffer &s) { mub_free(std::exchange(s, {}).data); }
void want(op::term_, Buffer &s) { s = {}; }
bool want(op::is_empty_, Buffer &s) { return s.length == 0; }
void want(op::zero_, Buffer &s, int64_t at, int64_t count) {
  if (at >= 0 && count > 0 && count <= s.capacity() - at) s.put(at, std::string(clipped(count), '\0'));
}
bool want(op::expand_, Buffer &s, int64_t wanted) { return s.expand(wanted); }
void want(op::shrink_, Buffer &s, int64_t length) { s.shrink(length); }
void want(op::swap_, Buffer &a, Buffer &b) { std::swap(a, b); }
void want(op::swap_string_, Buffer &a, Buffer &b) {
  std::swap(a, b);
  std::swap(a.is_string, b.is_string);
}
void want(op::clone_, Buffer &s, Buffer &out) {
  if (&out != &s && out.expand(s.capacity())) out.set(s.part(0, s.length));
}
void want(op::copy_, Buffer &s, Source &source) {
  if (source.data == nullptr || s.expand(source.count)) s.set(source.bytes);
}
void want(op::append_, Buffer &s, Source &source) {
  if (source.data != nullptr) s.update(s.length, 0, source.bytes, source.count);
}
bool want(op::update_, Buffer &s, int64_t at, int64_t old_count, Source &source) {
  return (source.data != nullptr || source.count < 1) && s.update(at, old_count, source.bytes, source.count);
}
bool want(op::insert_, Buffer &s, int64_t at, Source &source) {
  return source.count > 0 && want(op::update_(), s, at, 0, source);
}
void want(op::delete_, Buffer &s, int64_t at, int64_t count) {
  if (at < 0 || count < 0 || count > s.length - at) return;
  s.put(at, s.part(at + count, s.length));
  s.length -= count;
}
int want(op::get_at_, Buffer &s, int64_t at) { return s.byte(at); }
void want(op::set_at_, Buffer &s, int64_t at, int byte) {
  if (at >= 0 && at < s.capacity()) s.put(at, {static_cast<char>(byte)});
}
int64_t want(op::find_pos_, Buffer &s, int byte, int64_t start) {
  const bool is_sought = (byte & 0xFF) != 0 && start >= 0;
  return is_sought ? index_of(s.part(0, s.length).find(static_cast<char>(byte), clipped(start))) : -1;
}
int64_t want(op::find_, Buffer &s, int byte) { return want(op::find_pos_(), s, byte, 0); }
void want(op::left_, Buffer &s, int64_t count) { s.shrink(s.length > count ? count : -1); }
// "left…", "right…" and "mid…" by the first letter; in place, none of them takes the whole from a right one.
template <class Op>
bool want(Op, Buffer &s, int64_t start, int64_t count, Buffer &out) {
  if (Op::kName[0] == 'r' && count > 0) start = s.length - std::min(count, s.length);
  out.set(start < 0 ? "" : s.part(start, count));
  return true;
}
template <class Op>
bool want(Op op, Buffer &s, int64_t count, Buffer &out) {
  return want(op, s, 0, count, out);
}
void want(op::right_ op, Buffer &s, int64_t count) {
  if (s.length > count) want(op, s, count, s);
}
void want(op::mid_ op, Buffer &s, int64_t start, int64_t count) {
  if (start >= 0) want(op, s, start, count, s);
}

// ---- at the cursor

// What the name of an operation says about its integer.
struct Form {
  explicit Form(std::string_view name) : is_packed(name.find("flate") != name.npos) {
    constexpr std::string_view kNames[] = {"_byte", "_word", "_tword", "_dword", "_xword", "_lword"};
    constexpr int kWidths[] = {1, 2, 3, 4, 6, 8};
    for (int i = 0; i < 6; ++i) width = name.find(kNames[i]) != name.npos ? kWidths[i] : width;
  }
  // Of packed words and dwords the first byte counts the further ones in its highest bits.
  int tag_bits() const { return width / 2; }
  uint64_t mask() const {
    return ~uint64_t{0} >> (64 - 8 * width) >> (is_packed && width < 8 ? tag_bits() : 0);
  }
  int64_t length_of(uint64_t value) const {
    if (!is_packed) return width;
    const int most = width == 8 ? 9 : 1 << tag_bits();
    value &= ~uint64_t{0} >> (64 - 8 * width);
    int length = 1;
    while (length < most && value >> (width == 8 ? 7 * length : 8 * length - tag_bits()) != 0) ++length;
    return length;
  }
  // The value, and how far the cursor moves.
  std::pair<uint64_t, int64_t> decoded(const Buffer &stream, int64_t at) const {
    // The places of a value's bytes in the order in which they are stored, for every number of bytes after the first.
    constexpr std::string_view kUp = "01234567", kDown = "76543210";
    constexpr std::string_view kOfLword[] = {"", "0", "01", "201", "0123", "40123", "450123", "6450123", kUp};
    const auto with = [&](uint64_t value, int64_t first, std::string_view order) {
      for (const char place : order) value |= uint64_t{stream.byte(first++)} << (8 * (place - '0'));
      return value;
    };
    if (!is_packed) return {stream.left(at) < width ? 0 : with(0, at, kUp.substr(0, clipped(width))), width};
    const bool is_lword = width == 8;
    if (at >= stream.length) return {is_lword ? ~uint64_t{0} : 0, 0};
    const unsigned head = stream.byte(at);
    int further = is_lword ? 0 : static_cast<int>(head >> (8 - tag_bits()));
    while (is_lword && further < 8 && (head << further & 0x80) != 0) ++further;
    if (is_lword && further > 0 && stream.left(at) < further + 1) return {~uint64_t{0}, 1};
    const uint64_t top = head & (is_lword ? 0x7Fu >> further : 0xFFu >> tag_bits());
    const std::string_view order = is_lword ? kOfLword[further] : kDown.substr(8 - clipped(further));
    return {with(further < 8 ? top << (8 * further) : 0, at + 1, order), further + 1};
  }
  int width = 0;
  bool is_packed;
};
template <class Op>
uint64_t want(Op, Buffer &s, Position &position) {
  const auto [value, moves] = Form(Op::kName).decoded(s, position.at);
  EXPECT_EQ(position.value, position.after(moves));
  return value;
}
// The bytes that were written are those that give the value back.
template <class Op>
void want(Op, Buffer &s, Position &position, uint64_t value) {
  const Form form(Op::kName);
  const int64_t length = form.length_of(value);
  const bool has_room = s.left(position.at) >= length, stays = form.is_packed && form.width == 8 && !has_room;
  EXPECT_EQ(position.value, stays ? position.at : position.after(length));
  if (!has_room) return;
  s.put(position.at, std::string(static_cast<char *>(s.data) + position.at, clipped(length)));
  EXPECT_EQ(form.decoded(s, position.at), std::pair(value & form.mask(), length));
}
template <class Op>
int64_t want(Op, uint64_t value) {
  return Form(Op::kName).length_of(value);
}
void want(op::set_buffer_, Buffer &s, Position &position, Source &source) {
  EXPECT_EQ(position.value, position.after(source.passed_count));
  if (source.passed_count > 0) s.put_clipped(position.at, source.bytes);
}
int64_t want(op::get_buffer_, Buffer &s, Position &position, uint8_t *bytes, Position &count) {
  const int64_t there = s.left(position.at);
  EXPECT_EQ(bytes, there > 0 ? static_cast<uint8_t *>(s.data) + position.at : nullptr);
  EXPECT_EQ(count.value, there > 0 ? std::min(count.at, there) : 0);
  return position.after(count.at);
}

uint32_t want(op::crc32_, Source &source) {
  uint32_t crc = UINT32_MAX;
  for (const char byte : source.bytes) {
    crc ^= static_cast<uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0);
  }
  return source.passed_count > 0 ? ~crc : 0;
}
uint8_t want(op::check_, Source &source) {
  int all = 0;
  for (const char byte : source.bytes) all ^= byte;
  return static_cast<uint8_t>(source.passed_count > 0 ? all : 0);
}

// What runs out of memory changes nothing, and says so where it can.
template <class Op, class All, size_t... kRoles>
void check_all(Op op, Streams &world, const All &all, std::index_sequence<kRoles...>) {
  using Result = std::decay_t<std::tuple_element_t<sizeof...(kRoles), All>>;
  if constexpr (std::is_same_v<Result, None>) {
    if (!world.failed) want(op, std::get<kRoles>(all).model...);
  } else {
    const auto wanted =
        world.failed ? Result{0} : static_cast<Result>(want(op, std::get<kRoles>(all).model...));
    EXPECT_EQ(std::get<sizeof...(kRoles)>(all), wanted);
  }
}
template <class Op, class... All>
void check(Op op, Streams &world, All &&...all) {
  check_all(op, world, std::forward_as_tuple(all...), std::make_index_sequence<sizeof...(All) - 1>());
}
// What the string had is not released.
void check(op::clone_string_, Streams &world, Chosen<mub_stream> &s, Written<mub_string> &out,
           const int &result) {
  mub_free(out.model.data);
  out.model = {"", 0, true};
  if (!world.failed) want(op::clone_(), s.model, out.model);
  EXPECT_EQ(result != 0, !world.failed);
}
// Blocks of another record, under a prefix; the cursor moves on even where the record cannot grow.
template <class Op, class Other>
void check(Op, Streams &world, Chosen<mub_stream> &s, Position &position, Other &other,
           const int64_t &result) {
  const Form prefix(Op::kName.find("string") != Op::kName.npos ? "_word" : "_dword");
  int64_t count;
  if (Op::kName[0] == 's') {
    const std::string body = other.model.part(0, other.model.length);
    count = size_of(body);
    s.model.put_clipped(position.after(prefix.width), body);
    for (int i = 0; i < prefix.width && s.model.left(position.at) >= prefix.width; ++i)
      s.model.put(position.at + i, {static_cast<char>(count >> (8 * i))});
  } else {
    count = static_cast<int64_t>(prefix.decoded(s.model, position.at).first);
    if (!world.failed) other.model.set(s.model.part(position.after(prefix.width), count));
  }
  EXPECT_EQ(result, position.after(prefix.width + count));
  EXPECT_EQ(position.value, result);
}

// ---- functions of bytes alone: each step draws some, and asks several

struct Pure {};
template <>
struct WorldOf<Pure> : World {
  using World::World;
  void compare() {}
};
using Bare = WorldOf<Pure>;

// A part of `bytes`, in which some may be others.
std::string drawn_like(Program &program, const std::string &bytes) {
  constexpr int64_t kLongest[] = {2, 8, 40, 1000};
  const int64_t at = program.one_in(2) ? program.below(size_of(bytes) + 1) : 0;
  std::string like = bytes.substr(clipped(at), clipped(program.below(kLongest[program.below(4)])));
  for (int64_t i = program.below(3); i > 0 && !like.empty(); --i)
    like[program.word() % like.size()] = drawn_byte(program);
  return like;
}
// The difference of the first bytes that differ, else of the lengths.
int difference(const std::string &a, const std::string &b, int fold(int)) {
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const int difference = fold(static_cast<uint8_t>(a[i])) - fold(static_cast<uint8_t>(b[i]));
    if (difference != 0) return difference;
  }
  return static_cast<int>(size_of(a) - size_of(b));
}
int same(int byte) { return byte; }
int lower(int byte) { return std::tolower(byte); }
int upper(int byte) { return std::toupper(byte); }
// Those that other machines use, too.
mub::bytes::PatternFinder *const kSearches[] = {
    mub::bytes::find_portable,
#if defined(__x86_64__)
    mub::bytes::find_sse2,
#endif
};
int sign(int number) { return (number > 0) - (number < 0); }

// About a and b, counted, as a view and a text, and where neither has a NUL as terminated strings.
void ask(Bare &world) {
  Program &program = world.program;
  const bool is_text = program.one_in(2);
  std::string a = drawn_bytes(program);
  if (is_text) a = a.c_str();
  std::string b = drawn_like(program, a);
  if (is_text) b = b.c_str();
  const Guarded x(a, program.one_in(2)), y(b, program.one_in(2));
  const int64_t first_b = index_of(a.find(b)), start = program.near(size_of(a)),
                starts = x.size() - y.size() + 1;
  const char letter = drawn_byte(program);
  const int64_t first = index_of(a.find(letter)), last = index_of(a.rfind(letter));
  const int order = difference(a, b, same), folded = difference(a, b, lower);
  EXPECT_EQ(mub_mem_chr(x.data(), x.size(), letter ^ 256), first);
  EXPECT_EQ(mub_mem_rchr(x.data(), x.size(), letter ^ 256), last);
  EXPECT_EQ(mub_mem_cmp(x.data(), x.size(), y.data(), y.size()), order);
  EXPECT_EQ(mub_mem_cmp(y.data(), y.size(), x.data(), x.size()), -order);
  EXPECT_EQ(mub_mem_icmp(x.data(), x.size(), y.data(), y.size()), folded);
  EXPECT_EQ(sign(mub::bytes::order(x.data(), x.size(), y.data(), y.size())), sign(order));
  EXPECT_EQ(mub::bytes::equal(x.data(), y.data(), y.size()), a.compare(0, b.size(), b) == 0);
  if (!b.empty()) {
    EXPECT_EQ(mub_mem_str(x.data(), x.size(), y.data(), y.size()), first_b);
  }
  for (auto *const search : kSearches)
    EXPECT_EQ(b.size() > 1 && starts >= 16 ? search(x.bytes(), x.size(), y.bytes(), y.size()) : first_b,
              first_b);

  mub_char view = {x.data(), x.size()};
  const char *text = program.one_in(8) ? nullptr : b.c_str();
  const int64_t count = is_text ? -1 : size_of(b);
  const int unlike = text == nullptr || count == 0 ? 1 : -1;  // which side is empty
  const bool is_like = !a.empty() && unlike < 0, are_empty = a.empty() && unlike > 0;
  EXPECT_EQ(mub_char_compare(&view, text, count), is_like ? order : are_empty ? 0 : unlike);
  EXPECT_EQ(mub_char_icompare(&view, text, count), is_like ? folded : are_empty ? 0 : unlike);
  // A text without a byte stands for its NUL.
  const auto first_from = [&](int64_t at) {
    return text == nullptr || at < 0 ? -1
                                     : index_of(a.find(text, clipped(at), std::max<size_t>(b.size(), 1)));
  };
  EXPECT_EQ(mub_char_find(&view, text, count), first_from(0));
  EXPECT_EQ(mub_char_find_pos(&view, text, count, start), first_from(start));
  EXPECT_EQ(mub_char_find_char(&view, letter ^ 256), letter == 0 ? -1 : first);
  const bool is_sought = letter != 0 && start >= 0;
  EXPECT_EQ(mub_char_find_char_pos(&view, letter, start),
            is_sought ? index_of(a.find(letter, clipped(start))) : -1);
  EXPECT_EQ(mub_char_reverse_find(&view, letter ^ 256), letter == 0 ? -1 : last);
  EXPECT_EQ(mub_char_is_empty(&view), a.empty());

  const char *string = is_text && !program.one_in(8) ? a.c_str() : nullptr;
  const int64_t end = letter == 0 ? size_of(a) : -1;
  const bool are_both = string != nullptr && text != nullptr;
  const int of_null = (string != nullptr ? 1 : 0) - (text != nullptr ? 1 : 0);
  EXPECT_EQ(mub_str_chr(string, letter ^ 256), string == nullptr ? -1 : std::max(first, end));
  EXPECT_EQ(mub_str_rchr(string, letter ^ 256), string == nullptr ? -1 : std::max(last, end));
  EXPECT_EQ(mub_str_str(string, text), are_both ? first_b : -1);
  EXPECT_EQ(sign(mub_str_cmp(string, text)), are_both ? sign(order) : of_null);
  EXPECT_EQ(sign(mub_str_icmp(string, text)), are_both ? sign(folded) : of_null);

  for (const auto &[change, fold] :
       {std::pair(&mub_char_make_lower, &lower), std::pair(&mub_char_make_upper, &upper)}) {
    change(&view);
    for (char &byte : a) byte = static_cast<char>(fold(static_cast<uint8_t>(byte)));
    EXPECT_EQ(std::string(x.data(), a.size()), a);
  }
}

// A copy goes byte by byte from low to high, at a distance of 7 or less through other memory.
void copy_and_move(Bare &world) {
  Program &program = world.program;
  std::string copied = drawn_bytes(program) + "abcdefghi";
  while (copied.size() < 600) copied += copied;
  const int64_t from = 20 + program.below(280);
  const int64_t to = program.one_in(2) ? program.below(300) : from + program.below(37) - 18;
  const size_t count = clipped(program.below(program.one_in(2) ? 300 : 24));
  std::string zeroed = copied, by_copy = copied, by_move = copied, moved;
  mub_mem_zero(&zeroed[clipped(to)], static_cast<int64_t>(count));
  EXPECT_EQ(zeroed, std::string(copied).replace(clipped(to), count, count, '\0'));
  mub_mem_copy(&by_copy[clipped(to)], &by_copy[clipped(from)], static_cast<int64_t>(count));
  mub_mem_move(&by_move[clipped(to)], &by_move[clipped(from)], static_cast<int64_t>(count));
  const bool is_near = std::abs(to - from) <= 7;
  if (is_near) copied.replace(clipped(to), count, copied.substr(clipped(from), count));
  for (size_t i = 0; i < count && !is_near; ++i) copied[clipped(to) + i] = copied[clipped(from) + i];
  moved = copied;
  for (size_t i = clipped(from); i < clipped(from) + count && !is_near; ++i)
    if (i < clipped(to) || i >= clipped(to) + count) moved[i] = 0;
  EXPECT_EQ(by_copy, copied);
  EXPECT_EQ(by_move, moved);
}

// Copies of a text, of as many of its characters as asked for, or of all of them.
void duplicate(Bare &world) {
  Program &program = world.program;
  const std::string a = drawn_bytes(program).c_str();
  std::string before = drawn_like(program, a).c_str();
  char *string = nullptr;
  mub_str_dup(&string, before.c_str(), -1);
  const char *source = program.one_in(2) ? a.c_str() : string + before.size() / 2;
  std::string copy = source;
  const int64_t length = program.one_in(4) ? -1 : program.below(40);
  mub_char view = {nullptr, 0};
  world.call([&] { mub_char_copy(&view, source, std::min(length, size_of(copy))); });
  EXPECT_EQ(view.data == nullptr, world.failed);
  const std::string part = world.failed ? "" : length < 0 ? copy : copy.substr(0, clipped(length));
  EXPECT_EQ(std::string(world.failed ? "" : view.data), part);
  EXPECT_EQ(view.length, size_of(part));
  mub_char_term(&view);
  world.call([&] { mub_str_dup(&string, source, length); });
  if (length >= 0) copy.resize(clipped(length));
  if (!world.failed) before = copy;
  EXPECT_EQ(std::string(string, before.size() + 1), before + '\0');
  mub_str_dup(&string, nullptr, 5);
  EXPECT_EQ(string, nullptr);
}

void trim(Bare &world) {
  const std::string text = drawn_bytes(world.program);
  const size_t first = text.find_first_not_of(" \t\n\r");
  const bool starts_with_nul = first != text.npos && text[first] == 0,
             is_empty = first == text.npos || starts_with_nul;
  const std::string kept =
      is_empty ? "" : text.substr(first, text.find_last_not_of(" \t\n\r\0"sv) + 1 - first);
  const Guarded bytes(text), terminated(text + '\0');
  mub_char view = {bytes.data(), bytes.size()};
  mub_char_trim(&view);
  EXPECT_EQ(std::string(view.data, clipped(view.length)), kept);
  EXPECT_EQ(view.data - bytes.data(), is_empty ? 0 : index_of(first));
  EXPECT_EQ(std::string(bytes.data(), text.size()), text) << "no byte is written";
  mub_str_trim(terminated.data(), bytes.size());
  EXPECT_EQ(std::string(terminated.data(), kept.size() + 1),
            starts_with_nul ? text.substr(0, 1) : kept + '\0');
  mub_str_trim(terminated.data(), -world.program.below(2));
  EXPECT_EQ(*terminated.data(), 0) << "a length below 1 makes it empty";
}

std::string drawn_digits(Program &program) {
  std::string digits(clipped(program.one_in(3) ? program.below(330) : 0), '0');
  for (int64_t i = program.below(22); i > 0; --i) digits += static_cast<char>('0' + program.below(10));
  return digits;
}
// A text made of known parts. Every step of a decimal number's value rounds, so the model takes the same steps.
void read_numbers(Bare &world) {
  Program &program = world.program;
  const bool is_negative = program.one_in(2), has_point = program.one_in(2);
  const std::string digits = drawn_digits(program), fraction = has_point ? drawn_digits(program) : "";
  const std::string kRests[] = {"", "", "--5", "+1", "e3", " ", "/", ":", has_point ? ".3" : "x"};
  const std::string rest = kRests[program.below(9)];
  uint64_t integer = 0;
  volatile double value = 0.0;
  for (const char digit : digits) {
    integer = integer * 10 + static_cast<uint64_t>(digit - '0');
    value = value * 10.0;
    value = value + digit;
    value = value - 48.0;
  }
  for (size_t place = 0; place < fraction.size() && !digits.empty(); ++place) {
    volatile double part = fraction[place] - '0';
    for (size_t i = 0; i <= place && part != 0; ++i) part = part / 10.0;
    value = value + part;
  }
  const Guarded bytes((is_negative ? "-" : "") + digits + (has_point ? "." : "") + fraction + rest);
  const mub_char view = {bytes.data(), bytes.size()};
  EXPECT_EQ(mub_char_is_long(&view), !digits.empty() && !has_point && rest.empty());
  EXPECT_EQ(mub_char_is_float(&view), !digits.empty() && rest.empty());
  EXPECT_EQ(mub_char_get_long(&view), static_cast<int64_t>(is_negative ? 0 - integer : integer));
  EXPECT_EQ(mub_char_get_float(&view), is_negative ? 0.0 - value : value);
}

// steps of Pure: ask ask copy_and_move duplicate trim read_numbers

}  // namespace mub_test

#include "bytes_steps.inc"
